#!/usr/bin/env python3
"""The capture driver example as a kernel service under Wine.

usage: wine_test.py build-directory-of-the-image work-directory kernel_capture_pictures

Starts the driver, which imports from ppl.sys and makes a picture in its entry; has a user-mode program send frames of
several formats to its device; compares every picture with the one that the Linux library makes. Then stops the
driver and starts it again. Wine tells nothing about interrupt levels, paging, signatures or the order of load
entries. Exit status 77: Wine does not run here.
"""

import os
import pathlib
import shutil
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
IMAGE, WORK, PICTURES = (pathlib.Path(a).resolve() for a in sys.argv[1:4])
EXAMPLE = IMAGE / "examples" / "capture-driver"
PREFIX, FILES = WORK / "prefix", WORK / "files"
DRIVERS = PREFIX / "drive_c" / "windows" / "system32" / "drivers"

environment = {k: v for k, v in os.environ.items() if k != "DISPLAY"}
environment.update(WINEPREFIX=str(PREFIX), WINEARCH="win64", WINEDEBUG="-all", HOME=str(WORK),
                   WINEDLLOVERRIDES="mscoree=d;mshtml=d;winedbg.exe=d")


def run(*command, limit=300):
    """Status, output and messages. They go to files: pipes would stay open as long as Wine's own services live."""
    with open(WORK / "out", "w+", errors="replace") as out, open(WORK / "err", "w+", errors="replace") as err:
        done = subprocess.run(command, env=environment, cwd=FILES, timeout=limit, stdin=subprocess.DEVNULL, stdout=out,
                              stderr=err)
        out.seek(0)
        err.seek(0)
        return done.returncode, out.read().replace("\r", ""), err.read().replace("\r", "")


def tool(*arguments):
    return run("wine", str(EXAMPLE / "capture_tool.exe"), *arguments)


def must(*arguments):
    status, output, errors = tool(*arguments)
    if status != 0:
        sys.exit(f"capture_tool {' '.join(arguments)}: status {status}: {errors.strip()}")
    return output


def same(what, got, wanted):
    got, wanted = (FILES / got).read_bytes(), (FILES / wanted).read_bytes()
    if got != wanted:
        first = next((i for i, (a, b) in enumerate(zip(got, wanted)) if a != b), min(len(got), len(wanted)))
        sys.exit(f"{what}: {len(got)} bytes, {len(wanted)} expected, the first difference at {first}")


def prepare():
    """False if Wine cannot make itself at home."""
    shutil.rmtree(FILES, ignore_errors=True)
    FILES.mkdir(parents=True)
    if not (PREFIX / "system.reg").exists():
        shutil.rmtree(PREFIX, ignore_errors=True)
        try:
            run("wineboot", "--init", limit=600)
            run("wineserver", "-w", limit=600)
        except (OSError, subprocess.TimeoutExpired) as failure:
            print(f"skipped: Wine does not start: {failure}")
            return False
    if not DRIVERS.is_dir():
        print("skipped: Wine has made no Windows directory")
        return False
    run("wineserver", "-p120")  # else Wine ends its services, and with them the driver, between two programs
    if run("wine", "cmd", "/c", "exit 5")[0] != 5:
        print("skipped: Wine runs no 64-bit program")
        return False
    shutil.copy(IMAGE / "ppl.sys", DRIVERS)
    shutil.copy(EXAMPLE / "capture.sys", DRIVERS)
    return True


def check_service():
    must("start", r"C:\windows\system32\drivers\capture.sys")
    must("test", "test.out")
    same("the picture of the driver's entry", "test.out", "test.picture")
    cases = (FILES / "cases.txt").read_text().splitlines()
    for n, line in enumerate(cases):
        frames, *numbers = line.split()
        raws = [f"{n}.{i}.raw" for i in range(int(frames))]
        means = must("convert", *numbers, f"{n}.out", *raws)
        same(f"case {n} ({line})", f"{n}.out", f"{n}.picture")
        if means != (FILES / f"{n}.means").read_text():
            sys.exit(f"case {n} ({line}): {means.strip()}, expected {(FILES / f'{n}.means').read_text().strip()}")
    # Refusals of the library reach the program as errors: too wide, no such quality.
    for refused in ("2037 64 2037 0 0 15 0 0", "64 64 64 0 0 16 0 0"):
        status, _, errors = tool("convert", *refused.split(), "refused.out", "0.0.raw")
        if status == 0 or "refuses the format" not in errors:
            sys.exit(f"format {refused}: status {status}: {errors.strip()}")
    must("stop")
    return len(cases)


def check_fault():
    """A fault in a buffer unwinds through the image to the caller's handler; see fault.c. None without clang."""
    version = next((v for v in range(30, 15, -1) if shutil.which(f"clang-{v}") and shutil.which(f"lld-link-{v}")), None)
    if version is None:
        return None
    kernel32 = subprocess.run(["x86_64-w64-mingw32-gcc", "-print-file-name=libkernel32.a"], check=True, text=True,
                              capture_output=True).stdout.strip()
    subprocess.run([f"clang-{version}", "--target=x86_64-pc-windows-msvc", "-O1", "-ffreestanding", "-c", HERE / "fault.c",
                    "-o", FILES / "fault.obj"], check=True)
    subprocess.run([f"lld-link-{version}", "-nodefaultlib", "-subsystem:console", "-entry:entry",
                    f"-out:{FILES / 'fault.exe'}", FILES / "fault.obj", kernel32], check=True)
    status = run("wine", "fault.exe", r"C:\windows\system32\drivers\ppl.sys")[0]
    if status != 42:
        sys.exit(f"a fault in a buffer does not reach the caller's handler: status {status}")
    return True


def main():
    if not prepare():
        return 77
    status, _, errors = run(str(PICTURES), str(FILES))
    if status != 0:
        sys.exit(f"{PICTURES}: {errors.strip()}")
    try:
        for _ in range(2):
            count = check_service()
        fault = check_fault()
        # The import is real: without ppl.sys the driver does not start.
        (DRIVERS / "ppl.sys").unlink()
        status, _, errors = tool("start", r"C:\windows\system32\drivers\capture.sys")
        if status == 0:
            sys.exit("the driver starts without ppl.sys")
        print(f"capture.sys on {IMAGE / 'ppl.sys'}: test frame and {count} formats, same bytes, twice"
              + ("; a fault in a buffer reaches the caller" if fault else "; no clang, so no test of a fault in a buffer"))
        return 0
    finally:
        run("wineserver", "-k")


if __name__ == "__main__":
    sys.exit(main())
