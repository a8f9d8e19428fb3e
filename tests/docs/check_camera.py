"""The V4L2 example with a camera that is not there: its picture is near that of the sensor's true gains.

    check_camera.py V4L2_PICTURE CAMERA_LIBRARY SAMPLES PPL
"""

import os
import pathlib
import subprocess
import sys
import tempfile


def run(program, camera, samples, picture, *more, **environment):
    return subprocess.run([program, "/dev/made-up-camera", picture, *more], text=True, capture_output=True,
                          env={**os.environ, "LD_PRELOAD": camera,
                               "MADE_UP_FRAME": f"{samples}/coffee_640x480_bggr8.raw", **environment})


def main(program, camera, samples, tool):
    with tempfile.TemporaryDirectory() as folder:
        picture = pathlib.Path(folder, "picture.ppm")
        result = run(program, camera, samples, picture, "12")
        assert result.returncode == 0, result.stderr
        header, pixels = picture.read_bytes()[:15], picture.read_bytes()[15:]
        assert header == b"P6\n640 480\n255\n" and len(pixels) == 640 * 480 * 3, header
        frame = pathlib.Path(folder, "frame.raw")
        frame.write_bytes(pathlib.Path(samples, "coffee_640x480_bggr8.raw").read_bytes())
        shown = pathlib.Path(folder, "shown.ppm")
        subprocess.run([tool, "convert", frame, "-W", "640", "-H", "480", "-o", shown, "--black", "12", "--gains",
                        "397,256,346", "--gbgr"], check=True)
        expected = shown.read_bytes()[-len(pixels):]
        error = sum((a - b) ** 2 for a, b in zip(pixels, expected)) / len(pixels)
        assert error < 400, f"the picture is {error} away from one with the sensor's true white balance"

        none = pathlib.Path(folder, "none.ppm")
        result = run(program, camera, samples, none, MADE_UP_FORMAT="YUYV")
        assert result.returncode == 1 and "no raw Bayer format" in result.stderr and not none.exists(), result
        result = run(program, camera, samples, none, "300")
        assert result.returncode == 2 and "usage" in result.stderr, result
        print(f"mean squared error {error:.1f}")


main(*sys.argv[1:])
