"""From sensor to frame and back, and what raw frames tell."""
import subprocess

import numpy as np
import pytest
from PIL import Image

import ppl
from ppl import Pattern


def bggr_of(frame, pattern):
    """By hand: start at the first B site, mirror what is then missing."""
    down, right = pattern in (Pattern.GRBG, Pattern.RGGB), pattern in (Pattern.GBRG, Pattern.RGGB)
    out = frame
    if down:
        out = np.concatenate([out[1:], out[-2:-1]])
    if right:
        out = np.concatenate([out[:, 1:], out[:, -2:-1]], axis=1)
    return out


@pytest.mark.parametrize("pattern", list(Pattern))
def test_patterns(noise, pattern):
    assert (ppl.prepare(noise, pattern) == bggr_of(noise, pattern)).all()


@pytest.mark.parametrize("bits", [10, 12, 14, 16])
@pytest.mark.parametrize("order", ["<u2", ">u2"])
def test_words(bits, order):
    words = np.random.default_rng(bits).integers(0, 1 << bits, (6, 37), np.uint16)
    shift = bits - 8
    rounded = np.minimum((words.astype(int) + (1 << shift >> 1)) >> shift, 255)
    assert (ppl.prepare(words.astype(order), bits=bits) == rounded).all()
    assert (ppl.prepare(words.astype(order), bits=bits, rounding=False) == words >> shift).all()
    table = np.random.default_rng(0).integers(0, 256, 1 << bits)
    assert (ppl.prepare(words.astype(order), bits=bits, table=table) == table[words]).all()
    assert (ppl.prepare(np.asfortranarray(words), bits=bits, rounding=False) == words >> shift).all()


def test_packed():
    samples = np.random.default_rng(3).integers(0, 1024, (4, 8), np.uint16)
    rows = []
    for row in samples:
        for group in row.reshape(-1, 4):
            rows += [*(group >> 2), sum(int(v & 3) << 2 * i for i, v in enumerate(group))]
    packed = np.array(rows, np.uint8).reshape(4, 10)
    assert (ppl.prepare(packed, bits=10, packed_width=8, rounding=False) == samples >> 2).all()


@pytest.mark.parametrize(
    "arguments, sentence",
    [
        ((np.zeros((4, 4), np.uint16), Pattern.BGGR, 20), "8 to 16 bits"),
        ((np.zeros((4, 4), np.uint8), Pattern.BGGR, 10), "16-bit words"),
        ((np.zeros((4, 4), np.float32),), "not float32"),
        ((np.zeros((1, 4), np.uint8),), "2 to 65535"),
        ((np.zeros(4, np.uint8),), "has the shape"),
    ],
)
def test_what_is_no_frame(arguments, sentence):
    with pytest.raises(ppl.Error, match=sentence):
        ppl.prepare(*arguments)
    with pytest.raises(ppl.Error, match="entries"):
        ppl.prepare(np.zeros((4, 4), np.uint16), bits=10, table=np.zeros(1000, np.uint8))
    with pytest.raises(ppl.Error, match="rows fit|stride"):
        ppl.prepare(np.zeros((4, 9), np.uint8), bits=10, packed_width=8)


def test_conversion_prepares_on_the_way(noise):
    words = noise.astype(np.uint16) << 2
    with ppl.Context() as c:
        wanted = c.convert(bggr_of(noise, Pattern.RGGB))
        assert (c.convert(words, pattern=Pattern.RGGB, bits=10) == wanted).all()
        with pytest.raises(ppl.Error, match="in place"):
            c.convert(words, bits=10, in_place=True)


def test_simulated_frames_are_those_of_the_tool(tool, tmp_path):
    picture = np.random.default_rng(4).integers(0, 256, (32, 64, 3), np.uint8)
    Image.fromarray(picture).save(tmp_path / "p.png")
    subprocess.run(
        [tool, "simulate", str(tmp_path / "p.png"), "-o", str(tmp_path / "raw"), "--bits", "10", "--noise", "2",
         "--seed", "9", "--pattern", "grbg"],
        check=True, capture_output=True,
    )  # fmt: skip
    frame = ppl.simulate(picture, bits=10, noise=2, seed=9, pattern=Pattern.GRBG)
    assert frame.dtype == np.uint16 and frame.shape == (32, 64)
    assert (np.fromfile(tmp_path / "raw", "<u2").reshape(32, 64) == frame).all()


def test_a_simulated_frame_comes_back():
    picture = np.zeros((64, 128, 3), np.uint8)
    picture[:, :64] = (180, 120, 90)
    picture[:, 64:] = (70, 130, 190)
    with ppl.Context(optical_black_b_gb_gr_r=12, rgb_gain=(397, 256, 346)) as c:
        back = c.convert(ppl.simulate(picture, exposure=255 / 235))
    assert np.abs(back[8:-8, 8:56].astype(int) - (180, 120, 90)).max() < 8
    assert np.abs(back[8:-8, 72:-8].astype(int) - (70, 130, 190)).max() < 8


@pytest.mark.parametrize(
    "settings, sentence",
    [
        ({"kelvin": 100}, "illuminant"),
        ({"bits": 7}, "bits takes"),
        ({"hot": -1}, "hot takes"),
        ({"shading": 2}, "shading"),
    ],
)
def test_simulation_refuses_what_makes_no_sense(settings, sentence):
    with pytest.raises(ppl.Error, match=sentence):
        ppl.simulate(np.zeros((4, 4, 3), np.uint8), **settings)
    with pytest.raises(ppl.Error, match=r"\(height, width, 3\)"):
        ppl.simulate(np.zeros((4, 4), np.uint8))


def grey_card(kelvin, level=150):
    return ppl.simulate(np.full((96, 128, 3), level, np.uint8), kelvin=kelvin)


def test_a_grey_point_balances():
    for kelvin in (2850, 4000, 6504):
        raw = grey_card(kelvin)
        balance = ppl.grey_point(raw, (32, 24, 64, 48), black=12)
        with ppl.Context(optical_black_b_gb_gr_r=12, rgb_gain=balance.gains) as c:
            middle = c.convert(raw)[40:56, 48:80].reshape(-1, 3).mean(axis=0)
        assert np.ptp(middle) < 8, (kelvin, middle)
    with pytest.raises(ppl.Error, match="too small"):
        ppl.grey_point(raw, (0, 0, 8, 8))
    with pytest.raises(ppl.Error, match="the region ends at 164, 64; the frame at 128, 96"):
        ppl.grey_point(raw, (100, 0, 64, 64))


def test_white_balance_of_the_sample(coffee):
    gains = ppl.white_balance(coffee, black=12).gains
    assert abs(gains[0] - 397) < 40 and abs(gains[2] - 346) < 40
    with pytest.raises(ppl.Error, match="black or cut"):
        ppl.white_balance(np.zeros((96, 128), np.uint8))
    with pytest.raises(ppl.Error, match="black levels"):
        ppl.white_balance(coffee, black=300)


def test_a_lens_fitted_from_a_flat_frame_flattens_it():
    flat = ppl.simulate(np.full((240, 320, 3), 150, np.uint8), shading=0.28, black=0)
    lens = ppl.fit_lens(flat)
    with ppl.Context(rgb_gain=(397, 256, 346)) as c:
        shaded = c.convert(flat).astype(int)
        c.lens_correction = lens
        even = c.convert(flat).astype(int)
    assert np.ptp(shaded[::16, ::16, 1]) > 20
    assert np.ptp(even[::16, ::16, 1]) <= 5
    with pytest.raises(ppl.Error, match="not flat"):
        ppl.fit_lens(np.zeros((240, 320), np.uint8))


def test_automatic_control_settles():
    picture = np.full((96, 128, 3), 140, np.uint8)
    picture[::2, 64:] = (180, 90, 60)
    auto = ppl.AutoControl(exposure=(10, 100000), gain=(1.0, 4.0), delay=0)
    for _ in range(60):
        light = np.clip(auto.exposure * auto.gain / 2000, 0.001, 60)
        auto.step(ppl.simulate(picture, exposure=light, kelvin=4000), black=12)
    assert 10 < auto.exposure < 100000
    settled = auto.exposure
    for _ in range(10):
        auto.step(ppl.simulate(picture, exposure=auto.exposure * auto.gain / 2000, kelvin=4000), black=12)
    assert auto.exposure == settled
    assert auto.rgb_gain[1] == 256 or min(auto.rgb_gain) == 256
    for wrong in ({"exposure": (0, 5)}, {"exposure": (9, 5)}, {"exposure": (1, 2), "gain": (2, 1)}):
        with pytest.raises(ppl.Error):
            ppl.AutoControl(**wrong)
