#!/usr/bin/env python3
"""Holds what ships for Linux to its hardening, by what stands in the files.

usage: check_elf.py --library libppl.so [--static libppl.a] [--program FILE ...]

The library: needs nothing but three memory functions of the C library and the start files' weak symbols; no call of
its own functions by way of a table; every address bound at load and read-only from then on; no executable stack, no
text relocation, nothing both writable and executable; no stack protector.
Programs and plug-ins around it: bound at load and read-only from then on, no executable stack, with a stack protector.
"""

import argparse
import re
import subprocess
import sys

MEMORY = {"memcpy", "memmove", "memset"}
START_FILES = {"_ITM_deregisterTMCloneTable", "_ITM_registerTMCloneTable", "__cxa_finalize", "__gmon_start__"}
PROTECTOR = {"__stack_chk_fail", "__stack_chk_guard"}


def run(*command):
    return subprocess.run(command, check=True, text=True, capture_output=True).stdout


class File:
    def __init__(self, path):
        self.path, self.bad = path, []
        self.dynamic = run("readelf", "-dW", path)
        self.segments = [line.split() for line in run("readelf", "-lW", path).splitlines()
                         if re.match(r"  [A-Z_]+ +0x", line)]
        self.relocations = [line.split() for line in run("readelf", "-rW", path).splitlines()
                            if re.match(r"[0-9a-f]{16}", line)]
        self.undefined = {}  # name -> whether it is weak
        for line in run("nm", "-D", "--undefined-only", "--format=posix", path).splitlines():
            name, kind = line.split()[:2]
            self.undefined[name.split("@")[0]] = kind in "wv"

    def expect(self, condition, text):
        if not condition:
            self.bad.append(text)

    def segment(self, kind):
        return [(s[1:6], "".join(s[6:-1])) for s in self.segments if s[0] == kind]

    def check_load(self):
        self.expect(re.search(r"\((BIND_NOW)\)|FLAGS\).*BIND_NOW|FLAGS_1\).*\bNOW\b", self.dynamic),
                    "addresses are not bound at load")
        self.expect(self.segment("GNU_RELRO"), "no segment becomes read-only after load")
        stack = self.segment("GNU_STACK")
        self.expect(stack and "E" not in stack[0][1], "executable stack")
        self.expect("TEXTREL" not in self.dynamic, "text relocations")
        for _, flags in self.segment("LOAD"):
            self.expect(not ("W" in flags and "E" in flags), "a segment is writable and executable")

    def check_relro_holds_pointers(self):
        """Relocated words lie in what becomes read-only, but for the start files' handle, which points to itself."""
        (where, _), = self.segment("GNU_RELRO")
        start, size = int(where[1], 16), int(where[4], 16)
        outside = [r for r in self.relocations if not start <= int(r[0], 16) < start + size
                   and int(r[0], 16) != int(r[3], 16)]
        self.expect(not outside, f"{len(outside)} relocated words stay writable: {outside[:3]}")

    def check_library(self):
        self.check_load()
        self.check_relro_holds_pointers()
        needed = re.findall(r"\(NEEDED\).*\[(.*)\]", self.dynamic)
        self.expect(needed in ([], ["libc.so.6"]), f"needs {needed}")
        surplus = {n for n, weak in self.undefined.items() if not (n in MEMORY or weak and n in START_FILES)}
        self.expect(not surplus, f"undefined symbols: {sorted(surplus)}")
        own = [r[4] for r in self.relocations if len(r) > 4 and r[4].split("@")[0] not in MEMORY | START_FILES]
        self.expect(not own, f"{len(own)} of its own functions are called by way of a table: {own[:3]}")

    def check_program(self):
        self.check_load()
        self.expect(PROTECTOR & set(self.undefined), "no stack protector")


def check_static(path):
    bad = []
    for line in run("nm", "-A", "--undefined-only", path).splitlines():
        if line.split()[-1] in PROTECTOR:
            bad.append(f"stack protector: {line}")
    return bad


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--library", action="append", required=True)
    parser.add_argument("--static")
    parser.add_argument("--program", action="append", default=[])
    wanted = parser.parse_args()
    found = []
    for path in wanted.library:
        library = File(path)
        library.check_library()
        found += [(path, text) for text in library.bad]
    if wanted.static:
        found += [(wanted.static, text) for text in check_static(wanted.static)]
    for path in wanted.program:
        program = File(path)
        program.check_program()
        found += [(path, text) for text in program.bad]
    for path, text in found:
        print(f"{path}: {text}")
    if not found:
        print(f"{library.path}: {len(library.undefined)} undefined symbols, {len(library.relocations)} relocations, "
              "all read-only after load")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
