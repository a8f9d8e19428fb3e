"""The code of a kernel image as functions with instructions, stack frames, calls and jumps.

Everything is read from the linked image itself: instructions from the disassembly, frame sizes from the unwind
data. Names, for the reader's sake and to tell the levels apart, come from the linker: `nm` of the unstripped image
(GCC) or the map (lld).
"""

import bisect
import os
import re
import subprocess

OBJDUMP, NM = "x86_64-w64-mingw32-objdump", "x86_64-w64-mingw32-nm"


class Instruction:
    __slots__ = ("address", "name", "operands", "target")

    def __init__(self, address, name, operands, target):
        self.address, self.name, self.operands = address, name, operands
        self.target = target  # of a direct call or jump, or the address in a %rip operand

    def __str__(self):
        return f"{self.address:#x}: {self.name} {self.operands}"


class Function:
    def __init__(self, start, name):
        self.start, self.name, self.end = start, name, 0
        self.instructions = []
        self.frame = None  # bytes below the return address; None: no unwind data, hence none


LINE = re.compile(r"^\s*([0-9a-f]+):\t(\S+)\s*(.*)$")
PREFIXES = {"rep", "repz", "repnz", "lock", "data16", "cs", "ds", "es", "ss", "fs", "gs", "bnd", "notrack",
            "addr32"}
REX = re.compile(r"rex\.\w+$")


def disassemble(image):
    out = subprocess.run([OBJDUMP, "-d", "-w", "--no-show-raw-insn", image.path], check=True, text=True,
                         capture_output=True, env={**os.environ, "LC_ALL": "C"}).stdout
    found = []
    for line in out.splitlines():
        m = LINE.match(line)
        if not m:
            continue
        name, rest = m.group(2), m.group(3)
        while REX.match(name) and rest:  # a prefix without effect
            name, _, rest = rest.partition(" ")
            rest = rest.strip()
        while name.split()[-1] in PREFIXES and rest:
            following = rest.split(None, 1)
            name, rest = f"{name} {following[0]}", following[1] if len(following) > 1 else ""
        target = None
        comment = re.search(r"# (?:0x)?([0-9a-f]+)", rest)
        if comment:
            target, rest = int(comment.group(1), 16) - image.base, rest[:comment.start()].strip()
        rest = re.sub(r"\s*<[^>]*>", "", rest).strip()
        if re.match(r"^(call|jmp|j[a-z]+)$", name.split()[-1]) and re.match(r"^(0x)?[0-9a-f]+$", rest):
            target = int(rest, 16) - image.base
        found.append(Instruction(int(m.group(1), 16) - image.base, name, rest, target))
    return found


def symbols(image):
    """Address to name."""
    directory = os.path.dirname(image.path)
    full, names = os.path.join(directory, "ppl.full"), {}
    if os.path.exists(full):
        out = subprocess.run([NM, full], check=True, text=True, capture_output=True).stdout
        for line in out.splitlines():
            parts = line.split()
            if len(parts) == 3 and not parts[2].startswith(".") and parts[1] in "TtRrDdBb":
                names.setdefault(int(parts[0], 16) - image.base, parts[2])
        return names
    for line in open(os.path.join(directory, "ppl.map")):
        m = re.match(r"^ ([0-9a-f]{4}):([0-9a-f]{8}) ([0-9a-f]{8})H \.text\$(\S+)", line)
        if m and int(m.group(3), 16):
            start = image.sections[int(m.group(1), 16) - 1].start
            names.setdefault(start + int(m.group(2), 16), m.group(4))
        m = re.match(r"^ ([0-9a-f]{4}):([0-9a-f]{8})\s+(\S+)\s+([0-9a-f]{16})", line)
        if m and m.group(1) != "0000":
            names.setdefault(int(m.group(4), 16) - image.base, m.group(3))
    return names


class CodeMap:
    def __init__(self, image):
        self.image = image
        self.names = symbols(image)
        # GNU ld puts two lists of pointers behind the code; they are empty (-1, 0) or nobody would walk them.
        lists = {a for a, n in self.names.items() if n in ("__CTOR_LIST__", "__DTOR_LIST__")}
        self.lists_empty = all(image.data[image.offset(a):][:16] == b"\xff" * 8 + bytes(8) for a in lists)
        instructions = [i for i in disassemble(image) if not any(a <= i.address < a + 16 for a in lists)]
        ranges = image.unwind_ranges()
        starts = {a for a in self.names if image.is_code(a)}
        starts |= {a for _, a in image.exports()[1]} | {first for first, _, _ in ranges}
        starts |= {i.target for i in instructions if i.name == "call" and i.target is not None and "*" not in i.operands}
        known = {i.address for i in instructions}
        self.starts = sorted(a for a in starts if a in known)
        self.functions = [Function(a, self.names.get(a, f"code_{a:x}")) for a in self.starts]
        for f, end in zip(self.functions, self.starts[1:] + [image.size]):
            f.end = end
        for i in instructions:
            at = bisect.bisect_right(self.starts, i.address) - 1
            if at >= 0:
                self.functions[at].instructions.append(i)
        firsts = [r[0] for r in ranges]
        for f in self.functions:
            at = bisect.bisect_right(firsts, f.start) - 1
            if at >= 0 and ranges[at][0] <= f.start < ranges[at][1]:
                f.frame = ranges[at][2]

    def at(self, address):
        """The function that holds an address."""
        i = bisect.bisect_right(self.starts, address) - 1
        return self.functions[i] if i >= 0 else None
