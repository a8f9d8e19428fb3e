#!/usr/bin/env python3
"""Every function of the header is exported, every export is declared, and every parameter has a name.

usage: header_names.py ppl.h exports.txt
"""
import re
import sys


def main():
    header, exports = open(sys.argv[1]).read(), open(sys.argv[2]).read().split()
    header = re.sub(r"/\*.*?\*/", "", header, flags=re.S)
    bad, names = [], []
    for line in re.findall(r"^PPL_API ([^;]*);", header, flags=re.M):
        name, parameters = re.fullmatch(r"[\w\s*]*?(\w+)\((.*)\)", line, flags=re.S).groups()
        names.append(name)
        if parameters == "void":
            continue
        for parameter in parameters.split(","):
            if not re.fullmatch(r"(const )?\w+ \*?\w+", parameter.strip()):
                bad.append(f"{name}: '{parameter.strip()}' has no name")
            elif parameter.strip() in ("const ppl_context *", "ppl_context *"):
                bad.append(f"{name}: a context without a name")
    bad += [f"{name}: declared, not exported" for name in sorted(set(names) - set(exports))]
    bad += [f"{name}: exported, not declared" for name in sorted(set(exports) - set(names))]
    bad += [f"{name}: declared twice" for name in sorted({n for n in names if names.count(n) > 1})]
    print("\n".join(bad) or f"{len(names)} functions, each exported, each parameter named")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
