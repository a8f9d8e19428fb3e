#!/usr/bin/env python3
"""Computes the deepest stack of every export of a kernel image, and holds it to the limits.

usage: check_stack.py ppl.sys [frame limit [limit in all]]

A kernel stack is 24 KB in all and belongs to everything above the library too. Counted are each function's own
bytes, from the unwind data, and 8 for every return address. An indirect call is taken to reach every function
whose address stands in a table or is loaded somewhere; where it goes through a field of a level's tables (tile,
bulk, output, convert, scaler), every function that stands in that field. Recursion, frames of variable size and
code that touches the stack without unwind data are errors.
"""

import re
import sys

from code_map import CodeMap
from pe_image import Image

TABLE = re.compile(r"(?:tile|bulk|output|convert|scaler)_table")


class StackMap:
    def __init__(self, code):
        self.code, self.image = code, code.image
        self.bad = []
        start, size = self.image.directories[12]
        self.import_slots = range(start, start + size)
        pointers = {a: self.image.pointer(a) for a in self.image.relocations()}
        starts = set(code.starts)
        in_tables = {t for t in pointers.values() if t in starts}
        loaded = {i.target for f in code.functions for i in f.instructions
                  if i.name.startswith("lea") and i.target in starts}
        self.reachable = {code.at(t).start for t in in_tables | loaded}
        # offset in a level's table -> functions
        self.fields = {}
        tables = sorted(a for a, n in code.names.items() if not self.image.is_code(a))
        for t, following in zip(tables, tables[1:] + [self.image.size]):
            if TABLE.search(code.names[t]):
                for a in range(t, following, 8):
                    if pointers.get(a) not in starts:
                        break
                    self.fields.setdefault(a - t, set()).add(pointers[a])
        self.depths, self.active = {}, []
        self.calls = {f.start: self.callees(f) for f in code.functions}

    def complain(self, text):
        if text not in self.bad:
            self.bad.append(text)

    def indirect(self, function, at):
        """The functions that an indirect call or jump can reach; None for a jump inside the function."""
        i = function.instructions[at]
        operand = i.operands.lstrip("*")
        if i.target is not None:
            return set() if i.target in self.import_slots else self.reachable
        m = re.match(r"(-?0x[0-9a-f]+)?\((%\w+)\)$", operand)
        if m and self.fields:
            offset = int(m.group(1) or "0", 16)
            if offset in self.fields:
                return self.fields[offset]
        if i.name.startswith("jmp") and operand.startswith("%"):
            # A switch: the compilers load a 32-bit distance and add the table's address.
            before = function.instructions[max(0, at - 6):at]
            if any(b.name == "movslq" and "(" in b.operands for b in before):
                return None
        return self.reachable

    def callees(self, f):
        """(function, bytes of f, with its return address, that are on the stack then): all that f calls or jumps to."""
        frame, found, pushed = f.frame or 0, set(), 0
        for at, i in enumerate(f.instructions):
            name, ops = i.name.split()[-1].rstrip("q"), i.operands
            if name == "push":
                pushed += 8
            elif ops.endswith(",%rsp"):
                m = re.match(r"\$(0x[0-9a-f]+),", ops)
                if name == "sub" and m:
                    pushed += int(m.group(1), 16)
                elif name == "and" and m:
                    frame += (-int(m.group(1), 16)) & 0xffff
                elif not (name == "add" and m or name in ("lea", "mov")):
                    self.complain(f"{f.name}: frame of variable size: {i}")
            if name == "call":
                if f.frame is None:
                    self.complain(f"{f.name}: a call without unwind data: {i}")
                targets = self.indirect(f, at) if "*" in ops else {i.target}
                found |= {(t, 8 + frame) for t in targets}
            elif name.startswith("j"):
                if "*" in ops:
                    found |= {(t, 0) for t in self.indirect(f, at) or ()}
                elif i.target is not None and not f.start <= i.target < f.end:
                    found.add((self.code.at(i.target).start, 0))
        if pushed and f.frame is None:
            self.complain(f"{f.name}: uses the stack without unwind data")
        f.frame_in_all = frame
        return found

    def depth(self, start):
        """Bytes below the caller's stack pointer, return address included, and the path to them."""
        if start in self.depths:
            return self.depths[start]
        f = self.code.at(start)
        if start in self.active:
            names = [self.code.at(a).name for a in self.active[self.active.index(start):]] + [f.name]
            self.complain("recursion: " + " > ".join(names))
            return 0, []
        self.active.append(start)
        best, path = 8 + f.frame_in_all, []
        # A call leaves this frame on the stack; a jump has given it up, and the return address is shared.
        for target, below in self.calls[start]:
            d, p = self.depth(target)
            if below + d > best:
                best, path = below + d, p
        self.active.pop()
        self.depths[start] = best, [f.name] + path
        return self.depths[start]


def main():
    image = Image(sys.argv[1])
    frame_limit, limit = (int(a) for a in (sys.argv[2:] + [2048, 4096])[:2])
    stack = StackMap(CodeMap(image))
    for f in stack.code.functions:
        if f.frame_in_all > frame_limit:
            stack.complain(f"{f.name}: a frame of {f.frame_in_all} bytes")
    found = sorted(((*stack.depth(a), name) for name, a in image.exports()[1]), reverse=True)
    for depth, path, name in found:
        if depth > limit:
            stack.complain(f"{name}: {depth} bytes of stack: {' > '.join(path)}")
    for complaint in stack.bad:
        print(f"{image.path}: {complaint}")
    print(f"{image.path}: deepest stacks in bytes, of {limit}:")
    for depth, path, name in found[:8]:
        print(f"{depth:6d}  {' > '.join(path)}")
    return 1 if stack.bad else 0


if __name__ == "__main__":
    sys.exit(main())
