"""The rooms and what each may know: no #include goes upward.

    check.py SOURCES            every #include of every source
    check.py SOURCES --added    the same with an upward arrow added, which must not pass
"""

import pathlib
import re
import sys

# Lowest first. A room may include from itself and from the rooms of the lines above its own, not from its neighbour.
ROOMS = (
    ("simd",),
    ("record",),
    ("rows",),
    ("tile",),
    ("output", "convert"),
    ("paths",),
    ("controls", "frame"),
    ("platform",),
)
FOR_ALL = ("include", "helpers")  # headers for callers, that every room may include; they know each other alone
# Programs and bindings know those headers and what is named here, and no room of the library.
CALLERS = {"tools": (), "gst": (), "python": (), "web": ("tools",), "examples": ()}
TESTS = ("tests", "bench", "fuzz")  # know everything; nothing else knows them

FLOOR = {room: floor for floor, rooms in enumerate(ROOMS) for room in rooms}
SOURCE = (".h", ".hpp", ".c", ".cpp")
INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*["<]([^">]+)[">]', re.MULTILINE)


def is_test(path):
    return bool({*path.parts} & {*TESTS, "test"}) or path.stem.endswith("_test")


def may_include(room, other):
    if room == other or other in FOR_ALL or other in CALLERS.get(room, ()):
        return True
    return room in FLOOR and other in FLOOR and FLOOR[other] < FLOOR[room]


def found(path, name, sources):
    """The source of this tree that an #include names; None for those of the system."""
    for folder in (path.parent, pathlib.Path(), *map(pathlib.Path, FOR_ALL)):
        if folder / name in sources:
            return folder / name
    return None


def mistakes(sources):
    """`sources`: the text of every source by its path from the top of the tree."""
    for path, text in sorted(sources.items()):
        room = path.parts[0]
        if room not in (*FLOOR, *FOR_ALL, *CALLERS, *TESTS):
            yield f"{path}: there is no room {room} in the table of {pathlib.Path(__file__).name}"
        elif not is_test(path):
            for name in INCLUDE.findall(text):
                other = found(path, name, sources)
                if other and (is_test(other) or not may_include(room, other.parts[0])):
                    yield f"{path} includes {other}: {room}/ may not know {other.parts[0]}/"


def read(top):
    rooms = [p for p in top.iterdir() if p.is_dir() and not p.name.startswith(".") and p.name != "build"]
    files = [p for room in rooms for p in room.rglob("*") if p.suffix in SOURCE and "node_modules" not in p.parts]
    return {p.relative_to(top): p.read_text() for p in files}


def main():
    sources = read(pathlib.Path(sys.argv[1]))
    if sys.argv[2:] == ["--added"]:
        # One for each kind: to a room above, to a neighbour, from a caller's program, to a test.
        for at, name in (("tile/walk.h", "paths/qualities.h"), ("output/output.h", "convert/row_sink.h"),
                         ("tools/bayer.cpp", "record/format.h"), ("frame/pool.cpp", "tests/support/level.h")):
            changed = {**sources, pathlib.Path(at): sources[pathlib.Path(at)] + f'#include "{name}"\n'}
            seen = [m for m in mistakes(changed) if m.startswith(f"{at} includes {name}")]
            if len(seen) != 1:
                sys.exit(f"{at} could include {name}, and this test would pass")
            print("seen:", seen[0])
        return
    if len(sources) < 100:
        sys.exit(f"only {len(sources)} sources in {sys.argv[1]}: not the whole tree")
    wrong = list(mistakes(sources))
    print(*wrong, f"{len(sources)} sources, {len(wrong)} upward", sep="\n")
    sys.exit(1 if wrong else 0)


main()
