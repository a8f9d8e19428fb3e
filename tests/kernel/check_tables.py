#!/usr/bin/env python3
"""Checks the tables of a kernel image.

usage: check_tables.py ppl.sys exports.txt

The kernel's loader is strict where others are lenient, and nobody sees its complaints: so every table that it
reads is checked here. What is imported is also the proof that nothing is allocated: there is nothing to call.
"""

import sys

from pe_image import EXECUTE, WRITE, Image

IMPORTS = {"ntoskrnl.exe:KeBugCheckEx"}
LOAD_ENTRIES = {"DllInitialize", "DllUnload"}


def check(image, exports):
    bad = []

    def need(condition, complaint):
        if not condition:
            bad.append(complaint)

    need(image.machine == 0x8664 and image.magic == 0x20b, "not a 64-bit image for x86-64")
    need(image.subsystem == 1, f"subsystem {image.subsystem}, not native")
    need(image.imports() == IMPORTS, f"imports {sorted(image.imports())}, not {sorted(IMPORTS)}")
    need(image.checksum == image.computed_checksum(),
         f"checksum {image.checksum:#x}, should be {image.computed_checksum():#x}")

    module, named, nameless = image.exports()
    names = [name for name, _ in named]
    wanted = set(exports) | LOAD_ENTRIES
    need(module == "ppl.sys", f"the export table calls the module {module}")
    need(set(names) == wanted and len(names) == len(wanted),
         f"exports: missing {sorted(wanted - set(names))}, surplus {sorted(set(names) - wanted)}")
    need(names == sorted(names), "export names are not sorted; the loader looks them up by binary search")
    need(not nameless, f"{len(nameless)} exports without a name")
    start, size = image.directories[0]
    for name, address in named:
        need(not start <= address < start + size, f"export {name} is forwarded")
        need(image.is_code(address), f"export {name} is no code")
    need(image.is_code(image.entry), "the entry point is no code")
    need(image.entry not in [address for _, address in named], "the entry point is exported")

    need(image.section_alignment == 0x1000, f"section alignment {image.section_alignment:#x}")
    following = 0x1000
    for s in image.sections:
        need(s.start == following, f"section {s.name} stands at {s.start:#x}, not at {following:#x}")
        following = s.start + max(s.size, 1) + 0xfff & ~0xfff
        need(not (s.flags & WRITE and s.flags & EXECUTE), f"section {s.name} can be written and executed")
        # Code and data in sections of these names can be paged out or are thrown away after loading.
        need(not s.name.startswith(("PAGE", "INIT")), f"section {s.name} is not resident")
        need(not s.name.startswith((".tls", ".CRT", ".ctors", ".init_array")), f"section {s.name}: nobody runs it")
        need(not s.name.startswith((".debug", "/")), f"section {s.name} would be loaded")
    need(image.size == following, f"image size {image.size:#x}, but the sections end at {following:#x}")
    need(not image.directories[9][1], "thread-local storage")
    need(image.dll_flags & 0x100, "data could be executed (no NX flag)")
    need(image.dll_flags & 0x40, "cannot be moved (no DYNAMIC_BASE flag)")
    need(not image.flags & 1 and image.directories[5][1], "the relocations are missing")
    need(image.directories[2][1], "the version resource is missing")

    ranges = image.unwind_ranges()
    need(ranges, "unwind data is missing")
    need(ranges == sorted(ranges), "unwind data is not sorted")
    for (first, end, _), (after, _, _) in zip(ranges, ranges[1:] + [(image.size, 0, 0)]):
        need(first < end <= after, f"unwind data at {first:#x} is empty or overlaps its neighbour")
        need(image.is_code(first) and image.is_code(end - 1), f"unwind data at {first:#x} is about no code")
    for address in image.relocations():
        need(image.section(image.pointer(address)), f"the pointer at {address:#x} leaves the image")
    return bad


def main():
    image = Image(sys.argv[1])
    exports = open(sys.argv[2]).read().split()
    bad = check(image, exports)
    for complaint in bad:
        print(f"{image.path}: {complaint}")
    print(f"{image.path}: {len(image.data)} bytes, {image.size} in memory, {len(image.exports()[1])} exports, "
          f"{len(image.relocations())} relocations, {len(image.unwind_ranges())} unwind entries")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
