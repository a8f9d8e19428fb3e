#!/usr/bin/env python3
"""Checks the object files of a kernel image: nothing in them needs code that runs at start, or a thread's storage.

usage: check_objects.py build-directory

A namespace-scope vector constant that is not a constant expression becomes a constructor, which in a driver nobody
runs: the constant would stay zero. The linkers say nothing.
"""

import pathlib
import re
import subprocess
import sys

RUN_AT_START = re.compile(r"^\.(ctors|dtors|init_array|fini_array|CRT|tls)")


def main():
    objects = [o for o in sorted(pathlib.Path(sys.argv[1], "CMakeFiles").rglob("*.obj")) if ".dir/" in str(o)]
    bad = 0
    for o in objects:
        out = subprocess.run(["x86_64-w64-mingw32-objdump", "-h", str(o)], check=True, text=True,
                             capture_output=True).stdout
        sections = [line.split()[1] for line in out.splitlines() if re.match(r"^\s*\d+ ", line)]
        for name in filter(RUN_AT_START.match, sections):
            print(f"{o}: section {name}: it would have to be run at start, and nobody does")
            bad += 1
    print(f"{len(objects)} objects, {bad} with something to run at start")
    return 1 if bad or not objects else 0


if __name__ == "__main__":
    sys.exit(main())
