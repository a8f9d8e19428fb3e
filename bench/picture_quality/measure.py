"""Demosaicers on the same raw frames, each followed by the same colour matrix: PSNR and SSIM against the photograph.

    measure.py PPL LIBRARY DIRECTORY

The raw frames come from `ppl simulate`. The peers get what the library's own reconstruction starts from: the mosaic
behind black level, white balance and tone curve, in 8 bits. Their result goes through the library's colour matrix in
floating point. The pictures of the library are those of `ppl convert` with the same black level and gains.
"""

import ctypes
import pathlib
import subprocess
import sys

import cv2
import numpy as np
from PIL import Image
from skimage.metrics import structural_similarity

MATE = pathlib.Path("/usr/share/backgrounds/mate")
SKIMAGE = pathlib.Path("/usr/lib/python3/dist-packages/skimage/data")
PHOTOGRAPHS = [MATE / "nature" / f"{name}.jpg" for name in
               ("Aqua", "Blinds", "Dune", "FreshFlower", "Garden", "GreenMeadow", "LadyBird", "RainDrops", "Storm",
                "TwoWings", "Wood", "YellowFlower")]
PHOTOGRAPHS += [MATE / "abstract/Elephants.jpg"]
PHOTOGRAPHS += [SKIMAGE / name for name in
                ("astronaut.png", "chelsea.png", "coffee.png", "motorcycle_left.png", "rocket.jpg")]

BLACK, GAINS = 12, (397, 256, 346)
MATRIX = np.array([[389, -15, -120], [-118, 509, -137], [-19, -229, 503]]) / 256
BORDER = 8  # pixels at the frame's edges that do not count: each program has its own way there
SCENES = {"clean": [], "noise": ["--noise", "1", "--shot-noise", "2"]}

OURS = {
    "ppl, quality 15 (the default)": ["-q", "15"],
    "ppl, quality 15, sharpening off": ["-q", "15", "--edge-factor", "0"],
    "ppl, quality 15, sharpening and noise filter off": ["-q", "15", "--edge-factor", "0", "--medium-diff", "0"],
    "ppl, quality 0": ["-q", "0"],
    "ppl, quality 0, sharpening off": ["-q", "0", "--edge-factor", "0"],
    "ppl, quality 1": ["-q", "1"],
    "ppl, quality 10": ["-q", "10"],
    "ppl, quality 11": ["-q", "11"],
    "ppl, quality 2": ["-q", "2"],
    "ppl, quality 3": ["-q", "3"],
}


def photograph(path):
    """Half the size at most, so that what the camera and JPEG did to it is gone; whole cells of 32 x 2."""
    picture = Image.open(path).convert("RGB")
    scale = min(0.5, 640 / picture.width, 480 / picture.height)
    picture = picture.resize((round(picture.width * scale), round(picture.height * scale)), Image.LANCZOS)
    return picture.crop((0, 0, picture.width // 32 * 32, picture.height // 2 * 2))


def tone_curve(library):
    lib = ctypes.CDLL(library)
    lib.ppl_init.restype = ctypes.c_void_p
    lib.ppl_rgb_gamma_table.restype = ctypes.POINTER(ctypes.c_uint8)
    lib.ppl_rgb_gamma_table.argtypes = lib.ppl_free.argtypes = [ctypes.c_void_p]
    context = lib.ppl_init()
    curve = np.array(lib.ppl_rgb_gamma_table(context)[:256], np.uint8)
    lib.ppl_free(context)
    return curve


def balanced(raw, curve):
    """Black level, gain and tone curve, as a camera program would put them into one table for each colour."""
    out = np.empty_like(raw)
    for gain, rows, columns in ((GAINS[2], 0, 0), (GAINS[1], 0, 1), (GAINS[1], 1, 0), (GAINS[0], 1, 1)):
        linear = np.clip(np.arange(256) - BLACK, 0, 255) * gain / 256
        out[rows::2, columns::2] = curve[np.clip(np.rint(linear), 0, 255).astype(int)][raw[rows::2, columns::2]]
    return out


def opencv(code):
    return lambda mosaic, work: cv2.cvtColor(mosaic, code)


def bayer2rgb(mosaic, work):
    height, width = mosaic.shape
    source, result = work / "mosaic.raw", work / "rgbx.raw"
    mosaic.tofile(source)
    subprocess.run(
        ["gst-launch-1.0", "-q", "filesrc", f"location={source}", f"blocksize={mosaic.size}", "!",
         f"video/x-bayer,format=bggr,width={width},height={height},framerate=1/1", "!", "bayer2rgb", "!",
         "video/x-raw,format=RGBx", "!", "filesink", f"location={result}"], check=True)
    return np.fromfile(result, np.uint8).reshape(height, width, 4)[:, :, :3]


PEERS = {
    "OpenCV, bilinear": opencv(cv2.COLOR_BayerBGGR2RGB),
    "OpenCV, variable number of gradients": opencv(cv2.COLOR_BayerBGGR2RGB_VNG),
    "OpenCV, edge-aware": opencv(cv2.COLOR_BayerBGGR2RGB_EA),
    "GStreamer, bayer2rgb": bayer2rgb,
}


def inner(picture):
    return picture[BORDER:-BORDER, BORDER:-BORDER]


def measured_psnr(truth, picture):
    return 10 * np.log10(255 ** 2 / np.mean((inner(truth).astype(float) - inner(picture)) ** 2))


def measured(truth, picture):
    similarity = structural_similarity(inner(truth), inner(picture), channel_axis=2, data_range=255)
    return measured_psnr(truth, picture), similarity


def in_place(truth, colours):
    """The peer's picture, moved by at most one pixel to where it fits best: not all put it where the samples were."""
    moved = [np.roll(colours, (down, right), (0, 1)) for down in (0, -1, 1) for right in (0, -1, 1)]
    return max(moved, key=lambda picture: measured_psnr(truth, picture))


def main(tool, library, directory):
    work = pathlib.Path(directory)
    curve = tone_curve(library)
    results = {name: {scene: [] for scene in SCENES} for name in [*OURS, *PEERS]}
    for path in PHOTOGRAPHS:
        picture = photograph(path)
        png, raw, shown = work / f"{path.stem}.png", work / "frame.raw", work / "shown.png"
        picture.save(png)
        truth = np.asarray(picture)
        for scene, options in SCENES.items():
            subprocess.run([tool, "simulate", png, "-o", raw, "--black", str(BLACK), *options], check=True)
            frame = np.fromfile(raw, np.uint8).reshape(picture.height, picture.width)
            for name, quality in OURS.items():
                subprocess.run([tool, "convert", raw, "-W", str(picture.width), "-H", str(picture.height), "-o", shown,
                                "--black", str(BLACK), "--gains", ",".join(map(str, GAINS)), *quality], check=True)
                results[name][scene].append(measured(truth, np.asarray(Image.open(shown).convert("RGB"))))
            mosaic = balanced(frame, curve)
            for name, peer in PEERS.items():
                colours = np.clip(np.rint(peer(mosaic, work) @ MATRIX.T), 0, 255).astype(np.uint8)
                results[name][scene].append(measured(truth, in_place(truth, colours)))

    print(f"Means over {len(PHOTOGRAPHS)} photographs.\n")
    print("| | PSNR, dB | SSIM | PSNR with noise, dB | SSIM with noise |\n|---|---|---|---|---|")
    for name, of in results.items():
        cells = [f"{np.mean([r[k] for r in of[scene]]):.{digits}f}" for scene in SCENES for k, digits in ((0, 2), (1, 4))]
        print(f"| {name} | {' | '.join(cells)} |")


if __name__ == "__main__":
    main(*sys.argv[1:])
