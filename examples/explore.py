"""A raw frame, cell by cell, from samples to pictures: a program, and a notebook in editors that know "# %%".

    python3 examples/explore.py [FRAME.raw WIDTH HEIGHT] [FOLDER]

Pictures go to the folder, "explore-out" if none is named.
"""
# %% A raw frame: bytes, B and Gb on even rows, Gr and R on odd ones
import pathlib
import sys

import numpy as np
from PIL import Image, ImageDraw

import ppl

arguments = sys.argv[1:]
if len(arguments) >= 3:
    name, width, height, *arguments = arguments
else:
    name, width, height = pathlib.Path(__file__).parent.parent / "samples" / "coffee_640x480_bggr8.raw", 640, 480
out = pathlib.Path(arguments[0] if arguments else "explore-out")
out.mkdir(parents=True, exist_ok=True)
raw = np.fromfile(name, np.uint8).reshape(int(height), int(width))
print(f"{name}: {raw.shape[1]} x {raw.shape[0]}, samples from {raw.min()} to {raw.max()}")


def save(picture, file):
    Image.fromarray(np.ascontiguousarray(picture)).save(out / file)
    print(f"  {out / file}")


# %% Without any setting: the colours are the sensor's, and black is grey
with ppl.Context() as camera:
    plain = camera.convert(raw)

# %% White balance: the light is found by the colours in the frame
black = 12
balance = ppl.white_balance(raw, black=black)
print(f"gains {balance.gains}, unsure by {balance.spread:.1f}")

settings = ppl.Settings(
    optical_black_b_gb_gr_r=black,
    rgb_gain=balance.gains,
    GbGr_correction=True,
    lens_correction=ppl.Lens(f1=48, f1_rshift_count=24, f2=0),
    # Histograms of all cells, not of the nearly grey ones alone.
    **{f"qual_{difference}_min_max": (-510, 510) for difference in ("BmGb", "GrmR", "BmGb_p_GrmR", "BmGb_m_GrmR")},
)
with ppl.Context(settings) as camera:
    balanced = camera.convert(raw)
    statistics = camera.statistics
print("means of the frame:", np.round(statistics.whole_frame, 1))
save(np.hstack([plain, balanced]), "balance.png")
settings.save(out / "camera.json")

# %% Every quality on the same piece of the frame, three times as large
top, left = (raw.shape[0] // 2) & ~1, (raw.shape[1] // 3) & ~1
pieces = []
with ppl.Context(settings) as camera:
    for quality in ppl.Quality:
        camera.quality = quality
        # One format that all of them have; its luma and colour differences back to RGB.
        y, u, v = (p.astype(int) for p in ppl.planes(camera.convert(raw, ppl.Format.I420)))
        u, v = (np.kron(p, np.ones((2, 2), int)) - 128 for p in (u, v))
        rgb = np.stack([y + v, y - 0.509 * v - 0.194 * u, y + u], axis=2)
        piece = np.clip(rgb, 0, 255).astype(np.uint8)[top : top + 64, left : left + 96]
        tile = Image.fromarray(np.kron(piece, np.ones((3, 3, 1), np.uint8)))
        name = f"{int(quality)} {quality.name.lower()}"
        ImageDraw.Draw(tile).text((4, 4), name, "white", stroke_width=2, stroke_fill="black")
        pieces.append(np.asarray(tile))
pieces += [np.zeros_like(pieces[0])] * (-len(pieces) % 4)
save(np.vstack([np.hstack(pieces[i : i + 4]) for i in range(0, len(pieces), 4)]), "qualities.png")

# %% What an exposure control reads: the grid of means, and the histograms
grid = np.clip(statistics.windows / statistics.windows.max() * 255, 0, 255).astype(np.uint8)
sheet = Image.new("RGB", (8 * 48 + 16 + 512, 6 * 48), "white")
sheet.paste(Image.fromarray(grid).resize((8 * 48, 6 * 48), Image.Resampling.NEAREST))
draw = ImageDraw.Draw(sheet)
for counts, colour in (
    (statistics.red_histogram, "red"), (statistics.green_histogram / 2, "green"), (statistics.blue_histogram, "blue"),
):  # fmt: skip
    shares = np.sqrt(counts / max(counts[1:].max(), 1))
    points = [(8 * 48 + 16 + 2 * i, 6 * 48 - 1 - min(shares[i], 1) * 280) for i in range(256)]
    draw.line(points, fill=colour, width=2)
save(np.asarray(sheet), "statistics.png")

# %% The way back: what the sensor would have seen of the picture under a lamp, and that balanced again
lamp = ppl.simulate(np.ascontiguousarray(balanced), kelvin=2850, noise=2, seed=1)
with ppl.Context(optical_black_b_gb_gr_r=black, rgb_gain=balance.gains) as camera:
    under_lamp = camera.convert(lamp)
    camera.rgb_gain = ppl.white_balance(lamp, black=black).gains
    again = camera.convert(lamp)
save(np.hstack([under_lamp, again]), "lamp.png")
