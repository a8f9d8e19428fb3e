"""scripts/random_comparison with made-up programs: rounds, totals, going on, and a case that differs."""
import os
import re
import subprocess
import sys
import tempfile

SCRIPT = sys.argv[1]
# Families one and two, 3 frames a case at 4 levels; two's seed 95 differs where the file "broken" is there.
PROGRAM = """#!/bin/sh
if [ "$1" = --list ]; then echo exports; echo one; echo two; exit; fi
here=$(dirname "$0"); echo "$1 $3" >> "$here/calls"
failed=0
if [ "$1" = two ] && [ "$3" -le 95 ] && [ $(($3 + $5)) -gt 95 ] && [ -e "$here/broken" ]; then
  echo "FAILED: $0 two --seed 95"; failed=1
fi
echo "$1: $5 cases, $((3 * $5)) frames at 4 levels, $failed failed"
exit $failed
"""


def check(holds, what):
    if not holds:
        sys.exit(f"random_comparison: {what}")


with tempfile.TemporaryDirectory() as build:
    tests = os.path.join(build, "tests")
    os.mkdir(tests)

    def run(*words):
        calls = os.path.join(tests, "calls")
        if os.path.exists(calls):
            os.remove(calls)
        done = subprocess.run([SCRIPT, "--build", build, "--log", os.path.join(build, "log"), "--jobs", "2", *words],
                              capture_output=True, text=True)
        made = sorted(open(calls).read().split("\n")[:-1]) if os.path.exists(calls) else []
        return done.returncode, done.stdout + done.stderr, made

    status, out, _ = run()
    check(status == 1 and "is not built: cmake" in out, f"says nothing of programs that are missing: {out}")
    for name in "compare_bayer", "compare_convert":
        with open(os.path.join(tests, name), "w") as f:
            f.write(PROGRAM + f"# {name}\n")
        os.chmod(f.name, 0o755)

    # A round is four stretches of 40 cases of 3 frames: 480.
    status, out, made = run("--frames", "481")
    check(status == 0, out)
    check(made == sorted(f"{family} {first}" for family in ("one", "two") for first in (1, 1, 41, 41)), made)
    check(re.search(r"^960 random frames of 4 families at 4 levels, seeds 1 to 80: 0 cases differ$", out, re.M), out)
    check(re.search(r"^bayer one +80 +240 +0$", out, re.M), out)

    # What is done is not done again; more frames are the next seeds.
    open(os.path.join(tests, "broken"), "w").close()
    status, out, made = run("--frames", "960")
    check((status, made) == (0, []), f"{made} {out}")
    status, out, made = run("--frames", "961")
    check(made == ["one 81", "one 81", "two 81", "two 81"], made)
    check(status == 1 and "two --seed 95" in out, out)
    check("1,440 random frames of 4 families at 4 levels, seeds 1 to 120: 2 cases differ" in out, out)

    # Other programs begin anew, and so does another first seed.
    with open(os.path.join(tests, "compare_bayer"), "a") as f:
        f.write("# another\n")
    os.remove(os.path.join(tests, "broken"))
    status, out, made = run("--frames", "1", "--seed", "1001")
    check(status == 0 and made == ["one 1001", "one 1001", "two 1001", "two 1001"], made)
    check("480 random frames" in out and "seeds 1001 to 1040" in out, out)

    # One family by itself, of whichever program has it.
    status, out, made = run("--frames", "1", "--seed", "2001", "--family", "two")
    check(status == 0 and made == ["two 2001", "two 2001"], f"{made} {out}")
    check("240 random frames of 2 families" in out, out)
    status, out, made = run("--frames", "1", "--family", "three")
    check(status == 1 and made == [] and "there is no family three; there are one, two" in out, out)
