#!/usr/bin/env python3
"""Computes the deepest stack of every export of a kernel image, and holds it to the limits.

usage: check_stack.py ppl.sys [frame limit [limit in all]]

A kernel stack is 24 KB in all and belongs to everything above the library too. Counted are each function's own
bytes, from the unwind data, and 8 for every return address. Recursion, frames of variable size and code that touches
the stack without unwind data are errors.

An indirect call is taken to reach every function in a level's tables (row, tile, path, output, convert, scaler); if its
address visibly comes from a field of such a table, the functions in that field. All other functions whose address is
taken must be covered by POINTERS below, which tells by their parameters which callers reach them.
"""

import re
import sys

from code_map import CodeMap
from pe_image import Image

TABLE = re.compile(r"\d[a-z]\w*?\d+(?:row|tile|path|output|convert|scaler)_tableE$")
# Callers, and the end of the mangled names of what they call through pointers that the code hands around.
POINTERS = [
    (r"run_walk", r"ERNS_4walkERKNS_5stageEi"),
    (r"output_stage", r"ERNS_13output_writerEiRKNS_13finished_rowsE"),
    (r"run_cells_path", r"ERKNS0_10cell_frameE\w*"),
    (r"5scaleEP11ppl_context|_scaling_stride$", r"P11ppl_contextRKNS0_11scaled_callE"),
]


class StackMap:
    def __init__(self, code):
        self.code, self.image = code, code.image
        self.bad = []
        start, size = self.image.directories[12]
        self.import_slots = range(start, start + size)
        pointers = {a: self.image.pointer(a) for a in self.image.relocations()}
        starts = set(code.starts)
        taken = {t for t in pointers.values() if t in starts}
        taken |= {i.target for f in code.functions for i in f.instructions
                  if i.name.startswith("lea") and i.target in starts}
        self.fields = {}  # offset in a level's table -> functions
        tables = sorted(a for a, n in code.names.items() if not self.image.is_code(a))
        for t, following in zip(tables, tables[1:] + [self.image.size]):
            if TABLE.search(code.names[t]):
                for a in range(t, following, 8):
                    if pointers.get(a) not in starts:
                        break
                    self.fields.setdefault(a - t, set()).add(pointers[a])
        self.table_functions = set().union(*self.fields.values())
        self.handed_around = {t: code.at(t).name for t in taken - self.table_functions}
        for t, name in self.handed_around.items():
            if not any(re.search(signature + r"(\.|$)", name) for _, signature in POINTERS):
                self.complain(f"the address of {name} is taken, and POINTERS does not tell for whom")
        if not self.fields:
            self.complain("no level tables found")
        self.depths, self.active = {}, []
        self.calls = {f.start: self.callees(f) for f in code.functions}

    def complain(self, text):
        if text not in self.bad:
            self.bad.append(text)

    def indirect(self, function, at):
        """The functions that an indirect call or jump can reach; None for a jump inside the function."""
        i = function.instructions[at]
        operand = i.operands.lstrip("*")
        if i.target is not None and i.target in self.import_slots:
            return set()
        if i.name.startswith("jmp") and operand.startswith("%"):
            # A switch: the compilers load a 32-bit distance and add the table's address.
            before = function.instructions[max(0, at - 6):at]
            if any(b.name == "movslq" and "(" in b.operands for b in before):
                return None
        found = {t for t, name in self.handed_around.items()
                 for caller, signature in POINTERS
                 if re.search(caller, function.name) and re.search(signature + r"(\.|$)", name)}
        loads = [operand] if "(" in operand else self.loads(function, at, operand)
        for load in loads:
            m = re.match(r"(0x[0-9a-f]+)?\((%(?!rsp|rip)\w+)\)$", load)
            field = int(m.group(1) or "0", 16) if m else None
            found |= self.fields.get(field, self.table_functions)
        return found

    def loads(self, function, at, register):
        """Where the register may have been loaded from when instruction `at` calls through it."""
        def source(i):
            m = re.match(rf"(.*),{register}$", i.operands)
            return m.group(1) if m and i.name.startswith("mov") else None

        # Within the run of code that ends here, the nearest load; else any in the function.
        joins = {i.target for i in function.instructions if i.name.startswith("j")}
        for i in reversed(function.instructions[:at]):
            if (load := source(i)) is not None:
                return [load]
            if i.address in joins or i.name.startswith(("jmp", "ret")):
                break
        return [load for i in function.instructions if (load := source(i)) is not None] or [""]

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


def plain_name(mangled):
    """The last part of a mangled name."""
    m = re.match(r"_ZN?", mangled)
    parts, rest = [], mangled[m.end():] if m else ""
    while m := re.match(r"L?(\d+)", rest):
        end = m.end() + int(m.group(1))
        parts.append(rest[m.end():end])
        rest = rest[end:]
    return "::".join(p for p in parts if p not in ("ppl", "_GLOBAL__N_1")) or mangled


def main():
    image = Image(sys.argv[1])
    frame_limit, limit = (int(a) for a in (sys.argv[2:] + [2048, 3584])[:2])
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
    shown = set()
    for depth, path, name in found:
        if len(shown) < 5 and tuple(path[-2:]) not in shown:
            shown.add(tuple(path[-2:]))
            print(f"{depth:6d}  {' > '.join(map(plain_name, path))}")
    return 1 if stack.bad else 0


if __name__ == "__main__":
    sys.exit(main())
