"""Makes the reference of the headers, and looks whether all of it is there.

    make.py SOURCES DOXYGEN DOXYFILE FOLDER

Doxygen counts a warning as an error, and a member without documentation as a warning. What it never saw it can't warn
of: so each function that a header declares or defines is looked up among those that it documented.
"""

import pathlib
import re
import shutil
import subprocess
import sys
import xml.etree.ElementTree as tree

sys.dont_write_bytecode = True
from filter import functions_of  # noqa: E402

sources, doxygen, doxyfile, folder = sys.argv[1:]
folder = pathlib.Path(folder)
shutil.rmtree(folder, ignore_errors=True)
folder.mkdir(parents=True)
made = subprocess.run([doxygen, doxyfile], capture_output=True, text=True)
if made.returncode or made.stderr.strip():
    sys.exit(made.stderr or f"{doxygen} ended with {made.returncode}")

root = pathlib.Path(sources)
headers = [root / "include/ppl.h", *sorted((root / "helpers").glob("*.h"))]
wanted = {name for header in headers for name in functions_of(header)}
exports = set((root / "cmake/exports.txt").read_text().split())
wanted |= exports
documented = {member.findtext("name") for member in tree.parse(folder / "ppl.tag").iter("member")
              if member.get("kind") == "function"}
missing = sorted(wanted - documented)
if missing or len(wanted) <= len(exports):
    sys.exit("not in the reference: " + ", ".join(missing or ["the helpers"]))
if not {"convert", "deinterlace"} <= documented:
    sys.exit("not in the reference: ppl.hpp")
print(f"{len(wanted)} functions of C: {folder / 'html' / 'index.html'}")
