#!/usr/bin/env python3
"""Learns the tables of helpers/ppl_auto.h from photographs that Debian packages ship, and prints them as C.

Needs python3-numpy, python3-scipy, python3-pil and apt-get. The packages are fetched and unpacked under
build/learn-white-balance, not installed. None of the photographs by which white balance is judged
(bench/white_balance/run) is among them. Takes some ten minutes and 3 GB of memory; the same tables every time, up to
the last place of what the numerical libraries give.

How: each photograph, and random parts of it, is taken back to what a sensor with the library's default colour matrix
and tone curve would have seen, under random lights, exposures and noise. Of each such frame five histograms of colours
are taken, as ppl_auto_white takes them. A light's score is the sum of five tables, looked up at the colours as they
would be under that light; the tables are what makes the expected error of the answer small (and, to a part, the
likelihood of the right light large), smooth and no larger than they need be.
"""
import glob
import io
import os
import re
import struct
import subprocess
import sys

import numpy as np
import scipy.optimize
import scipy.sparse as sparse
from PIL import Image

Image.MAX_IMAGE_PIXELS = None
ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
WORK = os.path.join(ROOT, 'build', 'learn-white-balance')
PACKAGES = ['lomiri-wallpapers-16.04', 'lomiri-wallpapers-20.04', 'palapeli-data', 'plasma-workspace-wallpapers',
            'python3-sklearn', 'gcompris-qt-data']
# What is drawn, not photographed, or says nothing.
LEFT_OUT = re.compile('analogpattern|Infinite-Sea|Fossa')
PLASMA = ['BytheWater', 'ColorfulCups', 'EveningGlow', 'FallenLeaf', 'Kite']
GCOMPRIS = ['categorization', 'details', 'erase', 'explore_farm_animals', 'explore_monuments',
            'explore_world_animals', 'explore_world_music']

LIGHTS, SIDE, PER_OCTAVE, REACH = 32, 16, 4, 2  # tables: 16 x 16, four entries to the octave, from -2 to 2
BINS, BIN_REACH = 96, 3                         # histograms: 16 to the octave, from -3 to 3
BRIGHT = (0.9, 0.98, 0.995)
CHANNELS = 2 + len(BRIGHT)
GAINS = np.array([397 / 256, 1, 346 / 256])
MATRIX = np.array([[389, -15, -120], [-118, 509, -137], [-19, -229, 503]]) / 256
INVERSE = np.linalg.inv(MATRIX)
XYZ_TO_RGB = np.array([[3.2406, -1.5372, -0.4986], [-0.9689, 1.8758, 0.0415], [0.0557, -0.2040, 1.0570]])


def tone_curve():
    """The default tone curve by its rule, within two steps of the table: near enough here."""
    u = np.arange(256) / 255
    a, t, g = 0.102, 0.018, 0.45
    s = ((1 + a) * t ** g - a) / t
    return np.clip(np.round(255 * np.where(u < t, s * u, (1 + a) * np.maximum(u, 1e-9) ** g - a)), 0, 255)


TONE = tone_curve()
SHOWN = np.unique(TONE)
INPUT = np.array([np.mean(np.nonzero(TONE == k)[0]) for k in SHOWN])
INPUT[0] = 0


def light(kelvin):
    """Chromaticity: a black body up to 4,000 K, daylight from 5,000 K, as tools/simulate.cpp has it."""
    u = 1000 / kelvin

    def body():
        x = (((-0.2661239 * u - 0.2343589) * u + 0.8776956) * u + 0.179910 if kelvin < 4000 else
             ((-3.0258469 * u + 2.1070379) * u + 0.2226347) * u + 0.240390)
        y = (((-1.1063814 * x - 1.34811020) * x + 2.18555832) * x - 0.20219683 if kelvin < 2222 else
             ((-0.9549476 * x - 1.37418593) * x + 2.09137015) * x - 0.16748867 if kelvin < 4000 else
             ((3.0817580 * x - 5.87338670) * x + 3.75112997) * x - 0.37001483)
        return np.array([x, y])

    def day():
        x = (((-4.6070 * u + 2.9678) * u + 0.09911) * u + 0.244063 if kelvin <= 7000 else
             ((-2.0064 * u + 1.9018) * u + 0.24748) * u + 0.237040)
        return np.array([x, (-3 * x + 2.870) * x - 0.275])

    if kelvin <= 4000:
        return body()
    if kelvin >= 5000:
        return day()
    return body() + (day() - body()) * (kelvin - 4000) / 1000


def seen(kelvin):
    x, y = light(kelvin)
    return INVERSE @ (XYZ_TO_RGB @ np.array([x / y, 1, (1 - x - y) / y]))


DAYLIGHT = seen(6504)


def illuminant(kelvin):
    w = seen(kelvin) / DAYLIGHT
    return w / w[1]


MIRED = np.linspace(100, 435, LIGHTS)
LINE = np.array([illuminant(1e6 / m) for m in MIRED])
LINE_LOG = np.log2(LINE[:, [0, 2]])


def in_picture(w):
    """Lights in the sensor's colours as the colours of the picture, unit length."""
    p = np.maximum((w * DAYLIGHT) @ MATRIX.T, 1e-4)
    return p / np.linalg.norm(p, axis=-1, keepdims=True)


def photographs():
    """Small copies of all photographs; which of them may be cut up far."""
    os.makedirs(WORK, exist_ok=True)
    for package in PACKAGES:
        if not os.path.isdir(os.path.join(WORK, package)):
            subprocess.run(['apt-get', 'download', '-q', package], cwd=WORK, check=True, stdout=sys.stderr)
            deb = glob.glob(os.path.join(WORK, package + '_*.deb'))[0]
            subprocess.run(['dpkg', '-x', deb, os.path.join(WORK, package)], check=True)
            os.remove(deb)
    files = sorted(glob.glob(WORK + '/lomiri*/usr/share/backgrounds/*.jpg'))
    files += sorted(glob.glob(WORK + '/palapeli-data/usr/share/palapeli/collection/*.jpg'))
    for name in PLASMA:
        files += sorted(glob.glob(f'{WORK}/plasma-*/usr/share/wallpapers/{name}/contents/images/*1600.jpg'))[:1]
    files += sorted(glob.glob(WORK + '/python3-sklearn/**/images/*.jpg', recursive=True))
    large = []
    for name in files:
        if not LEFT_OUT.search(name):
            picture = Image.open(name).convert('RGB')
            picture.thumbnail((1600, 1600), Image.BOX)
            large.append(picture)
    small, known = [], set()
    for name in GCOMPRIS:  # a resource file holds its pictures one after the other, as they are
        for path in sorted(glob.glob(f'{WORK}/gcompris-qt-data/**/{name}.rcc', recursive=True)):
            data = open(path, 'rb').read()
            for found in re.finditer(b'RIFF....WEBP', data, re.DOTALL):
                size = struct.unpack('<I', data[found.start() + 4:found.start() + 8])[0] + 8
                blob = data[found.start():found.start() + size]
                if blob in known:
                    continue
                known.add(blob)
                try:
                    picture = Image.open(io.BytesIO(blob))
                    picture.load()
                except Exception:
                    continue
                if picture.mode == 'RGB' and min(picture.size) >= 150:
                    picture.thumbnail((400, 400))
                    small.append(picture)
    print(len(large), 'large and', len(small), 'small photographs', file=sys.stderr)
    return large, small


def scene(picture, part):
    """320 x 240 cells as a balanced sensor sees them, 0 to 1."""
    if part:
        w, h = picture.size
        x, y, s = part
        picture = picture.crop((int(x * w * (1 - s)), int(y * h * (1 - s)), int(x * w * (1 - s) + s * w),
                                int(y * h * (1 - s) + s * h)))
    w, h = picture.size
    if w * 3 > h * 4:
        n = h * 4 // 3
        picture = picture.crop(((w - n) // 2, 0, (w - n) // 2 + n, h))
    else:
        n = w * 3 // 4
        picture = picture.crop((0, (h - n) // 2, w, (h - n) // 2 + n))
    picture = picture.resize((320, 240), Image.BOX if picture.size[0] > 320 else Image.BILINEAR)
    return np.interp(np.clip(np.asarray(picture, float) @ INVERSE.T, 0, 255), SHOWN, INPUT) / 255


def colour_bins(rgb):
    r = np.log2(rgb[:, 0] * GAINS[0] / rgb[:, 1])
    b = np.log2(rgb[:, 2] * GAINS[2] / rgb[:, 1])
    i = np.clip(((r + BIN_REACH) * 16).astype(int), 0, BINS - 1)
    k = np.clip(((b + BIN_REACH) * 16).astype(int), 0, BINS - 1)
    return i * BINS + k


def histograms(cells, kelvin, exposure, noise, random):
    """As a frame's sample: pairs of blocks of 2 x 2 cells. None if hardly a block is neither dark nor cut."""
    raw = cells * exposure * illuminant(kelvin) / GAINS * 235
    raw = np.clip(np.floor(raw + 12.5 + random.normal(0, noise, raw.shape) * np.array([1, .7, 1])), 0, 255)
    cut = (raw >= 250).reshape(120, 2, 160, 2, 3).any((1, 3, 4))
    sums = np.maximum(raw - 12, 0).reshape(120, 2, 160, 2, 3).sum((1, 3))
    kept = ~cut & (sums.min(-1) >= 4) & (sums.sum(-1) >= 96)
    one, other = sums[1::3, 0:159:3], sums[1::3, 1::3]
    kept_one, kept_other = kept[1::3, 0:159:3], kept[1::3, 1::3]
    all_kept = np.concatenate([one[kept_one], other[kept_other]])
    if len(all_kept) < 30:
        return None
    bins, brightness = colour_bins(all_kept), all_kept @ np.array([1, 2, 1])
    chosen = [bins] + [bins[brightness >= np.quantile(brightness, q)] for q in BRIGHT]
    edges = np.abs(one - other)[kept_one & kept_other]
    edges = edges[(edges.min(1) >= 6) & (edges.sum(1) >= 48)]
    chosen.append(colour_bins(edges) if len(edges) else np.zeros(0, int))
    return [np.unique(c, return_counts=True) for c in chosen]


def features(frames):
    """A row for each frame and light, a column for each entry of each table."""
    rows, columns, values = [], [], []
    for n, frame in enumerate(frames):
        for channel, (bins, counts) in enumerate(frame):
            if not len(bins):
                continue
            weight = np.sqrt(counts)
            weight = weight / weight.sum()
            r = (bins // BINS + .5) / 16 - BIN_REACH
            b = (bins % BINS + .5) / 16 - BIN_REACH
            x = np.clip((r[None] - LINE_LOG[:, :1] + REACH) * PER_OCTAVE - .5, 0, SIDE - 1.001)
            y = np.clip((b[None] - LINE_LOG[:, 1:] + REACH) * PER_OCTAVE - .5, 0, SIDE - 1.001)
            i, k = x.astype(int), y.astype(int)
            fx, fy = x - i, y - k
            row = np.repeat(np.arange(LIGHTS)[:, None] + n * LIGHTS, len(bins), 1)
            for di, dk, share in ((0, 0, (1 - fx) * (1 - fy)), (1, 0, fx * (1 - fy)), (0, 1, (1 - fx) * fy),
                                  (1, 1, fx * fy)):
                rows.append(row.ravel().astype(np.int32))
                columns.append((channel * SIDE * SIDE + (i + di) * SIDE + k + dk).ravel().astype(np.int32))
                values.append((share * weight[None]).ravel().astype(np.float32))
    return sparse.coo_matrix((np.concatenate(values), (np.concatenate(rows), np.concatenate(columns))),
                             shape=(len(frames) * LIGHTS, CHANNELS * SIDE * SIDE)).tocsr()


def neighbours():
    grid = np.arange(SIDE * SIDE).reshape(SIDE, SIDE)
    pairs = np.concatenate([np.stack([grid[1:].ravel(), grid[:-1].ravel()], 1),
                            np.stack([grid[:, 1:].ravel(), grid[:, :-1].ravel()], 1)])
    n = len(pairs)
    one = sparse.coo_matrix((np.tile([1., -1.], n), (np.repeat(np.arange(n), 2), pairs.ravel())),
                            shape=(n, SIDE * SIDE))
    return sparse.block_diag([one] * CHANNELS).tocsr()


def learn(x, errors, weights, smooth=1e-5, small=1e-5, share=0.4):
    n, size, steps, xt = len(errors), x.shape[1], neighbours(), x.T.tocsr()
    wanted = np.exp(-(errors / 2) ** 2 / 2) + 1e-9
    wanted /= wanted.sum(1, keepdims=True)
    weights = weights / weights.sum()

    def loss(all_values):
        table, likely = all_values[:size], all_values[size:]
        score = (x @ table).reshape(n, LIGHTS) + likely
        p = np.exp(score - score.max(1, keepdims=True))
        p /= p.sum(1, keepdims=True)
        expected = (p * errors).sum(1)
        value = (weights * ((share - 1) * (wanted * np.log(p + 1e-12)).sum(1) + share * expected / 2)).sum()
        g = ((1 - share) * (p - wanted) + share / 2 * p * (errors - expected[:, None])) * weights[:, None]
        d, dl = steps @ table, np.diff(likely)
        value += smooth * (d @ d) + small * (table @ table) + 1e-3 * (dl @ dl)
        gt = xt @ g.ravel() + 2 * smooth * (steps.T @ d) + 2 * small * table
        gl = g.sum(0)
        gl[1:] += 2e-3 * dl
        gl[:-1] -= 2e-3 * dl
        return value, np.concatenate([gt, gl])

    return scipy.optimize.minimize(loss, np.zeros(size + LIGHTS), jac=True, method='L-BFGS-B',
                                   options={'maxiter': 140}).x


def main():
    random = np.random.default_rng(7)
    large, small = photographs()
    frames, kelvins, weights = [], [], []
    for pictures, parts, sizes, weight in ((large, 15, (.08, .15, .25, .4, .6), 3.), (small, 3, (.3, .5, .7), 1.)):
        for picture in pictures:
            made = []
            for part in [None] + [(random.random(), random.random(), random.choice(sizes)) for _ in range(parts)]:
                cells = scene(picture, part)
                for kelvin in 1e6 / random.uniform(1e6 / 9500, 1e6 / 2400, 4):
                    frame = histograms(cells, kelvin, random.uniform(.3, 1.05), random.uniform(.3, 1.5), random)
                    if frame:
                        made.append((frame, kelvin))
            frames += [f for f, _ in made]
            kelvins += [k for _, k in made]
            weights += [weight / max(1, len(made))] * len(made)
    print(len(frames), 'frames', file=sys.stderr)
    truth = np.array([illuminant(k) for k in kelvins])
    errors = np.degrees(np.arccos(np.clip(in_picture(truth) @ in_picture(LINE).T, -1, 1)))
    learnt = np.clip(np.round(8 * learn(features(frames), errors, np.array(weights))), -127, 127).astype(int)

    tables, likely = learnt[:-LIGHTS], learnt[-LIGHTS:]
    logs = np.round(LINE_LOG * 256).astype(int)
    print('  static const int16_t lights[3 * PPL_AUTO_LIGHTS] = {')
    rows = ['    ' + '  '.join(f'{logs[k, 0]}, {logs[k, 1]}, {likely[k]},' for k in range(i, i + 4))
            for i in range(0, LIGHTS, 4)]
    print('\n'.join(rows)[:-1] + '};')
    print('  static const int8_t tables[5 * 256] = {')
    rows = ['    ' + ' '.join(f'{v},' for v in tables[i:i + SIDE]) for i in range(0, len(tables), SIDE)]
    print('\n'.join(rows)[:-1] + '};')


if __name__ == '__main__':
    main()
