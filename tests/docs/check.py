"""The documents: every command in them is run, or listed here with why not; every link leads somewhere.

    check.py links SOURCES
    check.py commands SOURCES PPL
    check.py times SOURCES

A command is a line of an indented or `sh` block, unless it is listed as none. What stands behind four spaces or `#` is
its comment. Commands of one document run one after the other, in a folder that holds the files they name.

Times of qualities are measured in one place, the tables of docs/speed.md: where they are told again they are the same.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

# How a line begins that is shown there, but is no command.
NO_COMMAND = re.compile(r"FAILED: |\.\.\.|\*\*\* |I420 frame, |"  # what a test prints
                        r"break |run$|print |"  # typed into the debugger
                        r"[RGB] = ")  # formulas
# How a line begins, and why it is not run here.
NOT_RUN = {
    "./demo": "installs packages and builds everything; its commands are those of the tool, which run below",
    "./check": "is what runs this",
    "cmake ": "builds; the way this test was built, tests/configure and tests/install do it",
    "cpack": "tests/install and tests/packages do it",
    "ctest": "is what runs this",
    "scripts/": "rewrites sources, or takes many minutes",
    "bench/": "takes minutes, and its figures are for reading",
    "build/": "a benchmark or a program of the build tree, run by the tests of its own room",
    "node bench/": "takes minutes, and its figures are for reading",
    "gst-launch-1.0": "needs a camera or a display; tests/gst runs the element",
    "platform/kernel-sign.sh": "needs osslsigncode; the test kernel.sign runs it",
    "bcdedit": "is of Windows",
    "python3": "python/tests run the package and its example",
    "pip": "installs for the whole machine; python/check.cmake does it elsewhere",
    "apt": "installs for the whole machine",
    "sudo": "changes the whole machine",
    "npm": "fetches packages; the target web does it",
    "node": "the tests of web/ run it",
    "chromium": "opens a window",
    "c++": "tests/install compiles such a program",
    "cc": "tests/install compiles such a program",
    "gcc": "tests/install compiles such a program",
    "g++": "tests/install compiles such a program",
    "v4l2-ctl": "needs a camera",
    "./v4l2_picture": "needs a camera; example_v4l2_picture runs it with one that a test makes up",
    "examples/": "needs a camera",
    "compare_bayer": "is a test of its own",
    "docker": "needs a daemon",
    "doxygen": "the test docs.reference runs it",
    "valgrind": "takes minutes",
    "callgrind_annotate": "reads what valgrind wrote",
    "qemu-aarch64 -plugin": "needs a plugin that is built by hand; its figures are for reading",
    "gdb": "waits for a person",
    "capture_tool": "is of Windows; the test kernel.wine runs it",
    "git": "there may be no repository",
    "pytest": "python/tests are a test of their own",
    "dpkg": "installs for the whole machine",
}


def documents(sources):
    # Not even looked into: what other tests build there comes and goes meanwhile.
    skip = {"build", "node_modules", "demo-out", ".git"}
    found = []
    for folder, below, files in os.walk(sources):
        below[:] = [name for name in below if name not in skip]
        found += [pathlib.Path(folder, name) for name in files if name.endswith(".md")]
    yield from sorted(found)


def lines_of_code(text):
    """(number, line) of indented and shell blocks, joined where a line goes on behind a backslash."""
    fence, blank, block, joined = None, True, False, ""
    for number, line in enumerate(text.splitlines(), 1):
        if line.lstrip().startswith("```"):
            fence = None if fence is not None else line.strip().strip("`")
            continue
        if fence is not None:
            code = line if fence in ("sh", "bash", "console") else None
        elif line.startswith("    ") and (blank or block):
            code, block = line, True
        else:
            code, block = None, False
        blank = not line.strip()
        if code is None or not code.strip():
            continue
        joined += code.strip()
        if joined.endswith("\\"):
            joined = joined[:-1]
            continue
        yield number, joined
        joined = ""


def commands(text):
    for number, line in lines_of_code(text):
        command = re.split(r" {4,}|\s+#\s", line)[0].strip()
        if not NO_COMMAND.match(command):
            yield number, command


def anchors(text):
    seen = set()
    for heading in re.findall(r"^#+ (.*)$", text, re.M):
        plain = re.sub(r"[^\w\- ]", "", re.sub(r"\[([^]]*)\]\([^)]*\)", r"\1", heading).lower())
        seen.add(plain.replace(" ", "-"))
    return seen


def check_links(sources):
    faults, count = [], 0
    for document in documents(sources):
        text = re.sub(r"```.*?```", "", document.read_text(), flags=re.S)
        text = re.sub(r"`[^`\n]*`", "", text)
        for target in re.findall(r"\]\(([^)\s]+)\)", text):
            if re.match(r"[a-z]+:", target):
                continue
            count += 1
            name, _, anchor = target.partition("#")
            path = (document.parent / name).resolve() if name else document
            where = f"{document.relative_to(sources)}: {target}"
            if not path.exists():
                faults.append(f"{where}: no such file")
            elif anchor and path.suffix == ".md" and anchor not in anchors(path.read_text()):
                faults.append(f"{where}: no such heading")
    print(f"{count} links within the project")
    if count < 20:
        faults.append("hardly a link was found: is the reader of links right?")
    return faults


def check_times(sources):
    """README and which-quality.md name the times of docs/speed.md, with 32-byte registers at 640 x 480."""
    measured = {}
    for name, row in re.findall(r"^\| quality (\d+(?:, medium filter,)?) to I420, 640 × 480 \|(.*)\|$",
                                (sources / "docs/speed.md").read_text(), re.M):
        measured[name] = float(row.split("|")[2])
    faults, told = [], 0

    def compare(where, said, wanted):
        # A digit beyond the last may be a 5, which rounds either way.
        return [] if abs(said - wanted) <= 0.0051 else [f"{where} says {said} ns, docs/speed.md {wanted:.3f}"]

    for document in ("README.md", "docs/which-quality.md"):
        text = (sources / document).read_text()
        table = re.search(r"^\| quality \|.*ns per pixel.*\n\|[-|]+\n((?:\|.*\n)+)", text, re.M)
        seen = set()
        for line in table[1].splitlines():
            cells = [cell.strip() for cell in line.strip("|").split("|")]
            qualities = re.findall(r"\d+", cells[0])
            times = next(re.findall(r"\d\.\d+", cell) for cell in cells[1:] if re.fullmatch(r"[\d., ]+", cell))
            if len(times) != len(qualities):
                faults.append(f"{document}: {len(times)} times for {len(qualities)} qualities: {line}")
                continue
            for quality, said in zip(qualities, times):
                seen.add(quality)
                faults += compare(f"{document}, quality {quality},", float(said), measured[quality])
        told += len(seen)
        left = {name for name in measured if name.isdigit()} - seen
        if left:
            faults.append(f"{document}: no time for {', '.join(sorted(left))}")
        for said in re.findall(r"The medium filter adds (\d\.\d+) ns", text):
            more = measured["0, medium filter,"] - measured["0"]
            faults += compare(f"{document}, the medium filter,", float(said), more)
            told += 1
    print(f"{told} times told as docs/speed.md has them")
    if told < 19:
        faults.append("hardly a time was found: is the reader of tables right?")
    return faults


def scene(folder, sources, tool):
    """The files that documents speak of."""
    samples = sources / "samples"
    for name in ("frame.raw", "flat.raw", "card.raw", samples.name + "/coffee_640x480_bggr8.raw",
                 "coffee_640x480_bggr8.raw"):
        (folder / name).parent.mkdir(exist_ok=True)
        shutil.copy(samples / "coffee_640x480_bggr8.raw", folder / name)
    for name in ("truth.png", "photograph.png", "picture.png", "samples/coffee_640x480.png", "coffee_640x480.png"):
        shutil.copy(samples / "coffee_640x480.png", folder / name)
    (folder / "white.ppm").write_bytes(b"P6 640 480 255\n" + b"\xc8" * (640 * 480 * 3))
    subprocess.run([tool, "convert", folder / "white.ppm", "--skip", "15", "--input", "rgb24", "-W", "640", "-H", "480",
                    "-o", folder / "white.png"], check=True)
    subprocess.run([tool, "simulate", folder / "white.png", "-o", folder / "flat.raw", "--shading", "0.25"], check=True)
    shutil.copy(folder / "flat.raw", folder / "white.raw")
    (folder / "video.raw").write_bytes(b"\x00\x01" * (1280 * 960 * 2))
    (folder / "large.raw").write_bytes(bytes(range(64, 136)) * (2592 * 1944 // 72))
    (folder / "video.yuyv").write_bytes(b"\x50\x80" * (640 * 480 * 3))


def check_commands(sources, tool):
    faults, run, listed = [], 0, 0
    for document in documents(sources):
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            scene(folder, sources, tool)
            (folder / "ppl").symlink_to(tool)
            for number, command in commands(document.read_text()):
                where = f"{document.relative_to(sources)}:{number}: {command}"
                if any(command.startswith(start) for start in NOT_RUN):
                    listed += 1
                    continue
                if not command.startswith("ppl "):
                    faults.append(f"{where}\n  neither run nor listed in {pathlib.Path(__file__).name} with why not")
                    continue
                run += 1
                result = subprocess.run(["bash", "-euo", "pipefail", "-c", command], cwd=folder, text=True,
                                        capture_output=True, env={"PATH": f"{folder}:/usr/bin:/bin"})
                if result.returncode:
                    faults.append(f"{where}\n  ends with {result.returncode}: {result.stderr.strip()}")
            if document.name == "colour.md":
                for standard in ("601", "709"):
                    made, same = (folder / f"{kind}{standard}.i420" for kind in ("bt", "same"))
                    if made.read_bytes() != same.read_bytes():
                        faults.append(f"docs/colour.md: its matrix for BT.{standard} does not make those bytes")
    print(f"{run} commands run, {listed} listed with why not")
    if run < 15:
        faults.append("hardly a command was found: is the reader of blocks right?")
    return faults


if __name__ == "__main__":
    sources = pathlib.Path(sys.argv[2]).resolve()
    if sys.argv[1] == "links":
        found = check_links(sources)
    elif sys.argv[1] == "times":
        found = check_times(sources)
    else:
        found = check_commands(sources, pathlib.Path(sys.argv[3]).resolve())
    print("\n".join(found))
    sys.exit(bool(found))
