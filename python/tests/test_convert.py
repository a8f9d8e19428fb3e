"""Pictures: the bytes of the library in the shapes that Format tells, nothing copied that need not be, and an error
with the reason where there is no picture."""
import subprocess
import threading

import numpy as np
import pytest
from conftest import aligned

import ppl
from ppl import Format, Quality, Reason, Size

WRAPPERS = {Size.SAME: "", Size.HALF: "_deci_2_1", Size.TWICE: "_intp_1_2"}
NAMES = {Format.I420: "I420", Format.YUYV: "YUYV", Format.UYVY: "UYVY", Format.RGB24: "RGB24", Format.RGB32: "RGB32"}


def by_the_library(library, raw, format, size, quality):
    height, width = raw.shape
    library("ppl_set_quality", quality)
    source = aligned(raw.size)
    source[:] = raw.reshape(-1)
    w, h = (2 * width, 2 * height) if size == Size.TWICE else (width >> size, height >> size)
    picture = aligned(int(w * h * {Format.I420: 1.5, Format.RGB24: 3, Format.RGB32: 4}.get(format, 2)))
    assert library(f"BaylorTo{NAMES[format]}MMX{WRAPPERS[size]}", source, picture, width, height) == 1
    return picture, w, h, source


@pytest.mark.parametrize("format", list(Format))
@pytest.mark.parametrize("size", [Size.SAME, Size.HALF])
def test_pictures_are_those_of_the_library(library, noise, format, size):
    quality = Quality.BILINEAR if format == Format.RGB32 else Quality.FULL
    wanted, w, h, worked = by_the_library(library, noise, format, size, quality)
    with ppl.Context(rgb_gain=(256, 256, 256)) as c:
        c.quality = quality
        before = noise.copy()
        got = c.convert(noise, format, size)
        assert (noise == before).all(), "the caller's frame is not touched"
        means = c.statistics.whole_frame
    if format == Format.I420:
        assert got.shape == (h * 3 // 2, w)
        assert (got.reshape(-1) == wanted).all()
    elif format in (Format.YUYV, Format.UYVY):
        assert (got == wanted.reshape(h, w, 2)).all()
    elif format == Format.RGB24:
        assert (got == wanted.reshape(h, w, 3)[::-1, :, ::-1]).all()
    else:
        assert (got == wanted.reshape(h, w, 4)[::-1]).all()
    assert (means == library.words("ppl_rgb_means_whole_frame", 3) / 256).all()


def test_twice_the_size(library, noise):
    wanted, w, h, _ = by_the_library(library, noise, Format.I420, Size.TWICE, Quality.DIRECTED)
    with ppl.Context() as c:
        c.quality = Quality.DIRECTED
        assert (c.convert(noise, Format.I420, Size.TWICE).reshape(-1) == wanted).all()


def test_in_place_works_on_the_callers_memory_with_its_stride(library, noise):
    wanted, _, _, worked = by_the_library(library, noise, Format.YUYV, Size.SAME, Quality.FULL)
    memory = aligned(48 * 160, 7).reshape(48, 160)
    frame = memory[:, :128]
    frame[:] = noise
    with ppl.Context() as c:
        got = c.convert(frame, Format.YUYV, in_place=True)
    assert (got.reshape(-1) == wanted).all()
    assert (frame.reshape(-1) == worked).all() and (memory[:, 128:] == 7).all()
    with ppl.Context() as c, pytest.raises(ppl.Error, match="writable"):
        frame.flags.writeable = False
        c.convert(frame, Format.YUYV, in_place=True)


def test_into_an_array_of_the_callers(library, noise):
    wanted, _, _, _ = by_the_library(library, noise, Format.RGB24, Size.SAME, Quality.FULL)
    out = aligned(128 * 48 * 3)
    with ppl.Context() as c:
        assert c.convert(noise, Format.RGB24, out=out) is out
        assert (out == wanted).all()
        with pytest.raises(ppl.Error, match="the picture needs 18432 bytes, its buffer has 100"):
            c.convert(noise, Format.RGB24, out=aligned(100))


def test_frames_of_any_layout_in_memory(noise):
    with ppl.Context() as c:
        wanted = c.convert(noise)
        assert (c.convert(np.asfortranarray(noise)) == wanted).all()
        wide = np.zeros((96, 256), np.uint8)
        wide[::2, ::2] = noise
        assert (c.convert(wide[::2, ::2]) == wanted).all()
        assert (c.convert(noise[::-1][::-1]) == wanted).all()


def test_pictures_outlive_their_context(noise):
    with ppl.Context() as c:
        picture = c.convert(noise)
        kept = picture.copy()
    assert (picture == kept).all()


def test_planes_are_views(noise):
    with ppl.Context() as c:
        picture = c.convert(noise, Format.I420)
    y, u, v = ppl.planes(picture)
    assert y.shape == (48, 128) and u.shape == v.shape == (24, 64)
    assert all(np.shares_memory(p, picture) for p in (y, u, v))
    assert (np.concatenate([p.reshape(-1) for p in (y, u, v)]) == picture.reshape(-1)).all()
    with pytest.raises(ppl.Error, match="I420"):
        ppl.planes(picture[:-1])


def test_scaled(library, noise):
    source, scratch, wanted = aligned(48 * 128), aligned(48 * 128 * 2), aligned(160 * 60 * 3 // 2)
    source[:] = noise.reshape(-1)
    library("BaylorToI420MMX_scaling_stride", source, 128, 48, 128, wanted, 160, 60, scratch)
    with ppl.Context() as c:
        assert (c.convert_scaled(noise, 160, 60).reshape(-1) == wanted).all()
        with pytest.raises(ppl.Error) as e:
            c.convert_scaled(noise, 150, 60)
        assert e.value.reason == Reason.SCALED_WIDTH_32 and "160 x 60 would do" in str(e.value)


def test_decoder_frames(library):
    rng = np.random.default_rng(2)
    frame = rng.integers(0, 256, (32, 64, 2), np.uint8)
    fields = [rng.integers(0, 256, (16, 64, 2), np.uint8) for _ in range(3)]

    def copy(a):
        b = aligned(a.size)
        b[:] = a.reshape(-1)
        return b

    library("ppl_new_frame_sizes", 64, 32, 64, 32, 0)
    wanted = aligned(64 * 32 * 3 // 2)
    library("UYVYToI420MMX", copy(frame), wanted, 64, 32, 64, 32)
    weave = aligned(64 * 32 * 3)
    library("IntlYUYVToRGB24MMX", *(copy(f) for f in fields), weave, 64, 32, 64, 32)
    with ppl.Context() as c:
        assert (c.convert_packed(frame, Format.UYVY, Format.I420).reshape(-1) == wanted).all()
        earlier, kept, later = fields
        got = c.deinterlace(kept, later, earlier)
        assert (got == weave.reshape(32, 64, 3)[::-1, :, ::-1]).all()
        plain = c.deinterlace(kept, later, format=Format.YUYV)
        assert (plain[::2] == kept).all() and (plain[1::2] == later).all()
        with pytest.raises(ppl.Error, match="same shape"):
            c.deinterlace(kept, later[:-1])
        with pytest.raises(ppl.Error) as e:
            c.convert_packed(frame, Format.UYVY, Format.YUYV)
        assert e.value.reason == Reason.NO_SUCH_CONVERSION
        with pytest.raises(ppl.Error, match="YUYV or UYVY"):
            c.convert_packed(frame, Format.RGB24)


def test_large_frames_are_the_tools_pictures(tool, coffee, tmp_path):
    raw = np.tile(coffee, (5, 5))[:1944, :2592].copy()
    raw.tofile(tmp_path / "large.raw")
    kept = raw.copy()
    with ppl.Context(rgb_gain=(397, 256, 346), lens_correction=ppl.Lens(f1=48, f1_rshift_count=26, f2=0)) as c:
        cases = (Format.RGB24, Size.SAME, 2592, 0), (Format.I420, Size.HALF, 2560, 1)
        for format, size, columns, decimation in cases:
            name = format.name.lower()
            if size == Size.HALF:
                raw[:, :2560].tofile(tmp_path / "large.raw")
            subprocess.run(
                [tool, "convert", tmp_path / "large.raw", "-W", str(columns), "-H", "1944", "--gains", "397,256,346",
                 "--lens-f1", "48", "--lens-shift1", "26", "--lens-f2", "0", "--decimation", str(decimation),
                 "--format", name, "-o", tmp_path / name], check=True)  # fmt: skip
            picture, measured = c.convert_large(raw[:, :columns], format, size)
            wanted = np.fromfile(tmp_path / name, np.uint8)
            height, width = (n >> int(size) for n in (1944, columns))
            assert (picture == ppl.shaped(wanted, format, width, height)).all()
            assert (raw == kept).all()
            # Of the sample in one piece, which the frame repeats, means are much the same.
            assert measured.exposure_cells == pytest.approx(columns * 1944 / 4, rel=0.05)
            assert measured.exposure.mean() == pytest.approx(measured.whole_frame.mean(), rel=0.1)
        with pytest.raises(ppl.Error, match="needs|multiple of 32"):
            c.convert_large(raw[:, :2590])
        with pytest.raises(ppl.Error, match="not doubled"):
            c.convert_large(raw, size=Size.TWICE)


def test_large_frames_are_measured_as_wholes():
    raw = np.full((256, 2688), 180, np.uint8)
    raw[:, :1344] = 60
    with ppl.Context() as c:
        measured = c.convert_large(raw)[1]
    assert measured.qualified == pytest.approx([120, 120, 120], abs=3)
    assert measured.qualified_cells == pytest.approx(256 * 2688 / 4, rel=0.05)


def test_black_lines_and_the_12_bit_layout(library):
    random = np.random.default_rng(5)
    kept, later = random.integers(0, 256, (2, 16, 64, 2), np.uint8)
    with ppl.Context() as c:
        plain = c.deinterlace(kept, later, format=Format.UYVY)
        lined = c.deinterlace(kept, later, format=Format.UYVY, black_lines=(3, 5))
        assert lined.shape == (40, 64, 2) and (lined[3:35] == plain).all()
        assert (lined[:3] == (128, 16)).all() and (lined[35:] == (128, 16)).all()
        with pytest.raises(ppl.Error) as e:
            c.deinterlace(kept, later, format=Format.I420, black_lines=(3, 5))
        assert e.value.reason == Reason.LINES_ODD
        with pytest.raises(ppl.Error, match="from 0 to 2048"):
            c.deinterlace(kept, later, black_lines=(-1, 0))

        packed = random.integers(0, 256, (8, 96), np.uint8)
        wanted, source = aligned(64 * 8 * 3 // 2, 128), aligned(packed.size)
        source[:] = packed.reshape(-1)
        library("ppl_new_frame_sizes", 64, 8, 64, 8, 0)
        assert library("UYVYYYYYToI420MMX", source, wanted, 64, 8, 64, 8)
        made = c.convert_12_bit(packed)
        assert made.shape == (12, 64) and (made.reshape(-1) == wanted).all()
        assert (made[0, :4] == packed[0, :8:2]).all()
        with pytest.raises(ppl.Error, match="multiple of 48 bytes"):
            c.convert_12_bit(packed[:, :72])


@pytest.mark.parametrize(
    "frame, sentence",
    [
        (np.zeros((48, 128), np.uint16), r"holds bytes .* words of 10 to 16 bits become bytes by prepare\("),
        (np.zeros((48, 128, 3), np.uint8), "has the shape"),
        (np.zeros((0, 128), np.uint8), "holds nothing"),
        (np.zeros((48, 100), np.uint8), "the width must be a multiple of 16; 96 x 48 would do"),
        (np.zeros((47, 128), np.uint8), "the height must be a multiple of 2"),
        (np.zeros((48, 4096), np.uint8), "widths go up to 2036 .* convert_large takes larger frames"),
        ("picture.png", "holds bytes"),
        (None, "holds bytes"),
    ],
)
def test_frames_that_make_no_picture_say_why(frame, sentence):
    with ppl.Context() as c:
        with pytest.raises(ppl.Error, match=sentence):
            c.convert(frame)


@pytest.mark.parametrize(
    "given, sentence",
    [
        ({"format": "RGB24"}, "format is one of Format.I420, .* Format.RGB32, not 'RGB24'"),
        ({"format": 9}, "not 9"),
        ({"size": "half"}, "size is one of Size.TWICE, Size.SAME, Size.HALF, not 'half'"),
        ({"pattern": "rggb"}, "pattern is one of Pattern.BGGR, .* not 'rggb'"),
        ({"out": np.zeros((48, 128, 3))}, r"out is an array of bytes \(numpy.uint8\)"),
    ],
)
def test_arguments_that_are_none_say_what_there_is(noise, given, sentence):
    with ppl.Context() as c, pytest.raises(ppl.Error, match=sentence):
        c.convert(noise, **given)
    if "pattern" in given:
        for call in ppl.prepare, lambda picture, pattern: ppl.simulate(np.dstack([picture] * 3), pattern=pattern):
            with pytest.raises(ppl.Error, match=sentence):
                call(noise, pattern=given["pattern"])


def test_large_frames_of_other_sensors_are_prepared_on_the_way():
    words = np.random.default_rng(2).integers(0, 1 << 12, (64, 2112), np.uint16)
    with ppl.Context() as c:
        made = c.convert_large(words, pattern=ppl.Pattern.RGGB, bits=12)[0]
        assert (made == c.convert_large(ppl.prepare(words, ppl.Pattern.RGGB, 12))[0]).all()


def test_the_reason_stands_in_the_error(noise):
    with ppl.Context() as c:
        with pytest.raises(ppl.Error) as e:
            c.convert(noise, Format.RGB32)
    assert e.value.reason == Reason.QUALITY_NOT_IN_FORMAT
    assert "quality 0 would do" in str(e.value)


def test_check_agrees_with_what_happens(noise):
    for format in Format:
        for quality in range(16):
            verdict = ppl.check(format=format, width=128, height=48, quality=quality)
            with ppl.Context() as c:
                c.quality = quality
                try:
                    c.convert(noise, format)
                    made = True
                except ppl.Error as error:
                    made = False
                    assert error.reason == verdict.reason and verdict.sentence in str(error)
            assert made == verdict.whole, (format, quality)
            if not verdict.whole:
                assert verdict.nearest is not None and ppl.check(**verdict.nearest).whole
    with pytest.raises(ppl.Error, match="a plan has no colour"):
        ppl.check(width=64, height=32, colour=1)
    with pytest.raises(ppl.Error, match="width takes a number"):
        ppl.check(width=-1, height=32)


def test_reasons_and_notes_are_those_of_the_library():
    from ppl import _ppl

    assert {r.name: int(r) for r in Reason if r} == _ppl.REASONS
    assert _ppl.reason_text(len(_ppl.REASONS) + 1) == "no such reason"
    sentences = [r.sentence for r in Reason]
    assert len(set(sentences)) == len(sentences) and "no such reason" not in sentences
    assert ppl.check(format=Format.RGB32, width=64, height=32, quality=0).notes == ppl.Note.PALE


def test_contexts_are_eight_and_close():
    contexts = [ppl.Context() for _ in range(8)]
    with pytest.raises(ppl.Error, match="all eight contexts are in use"):
        ppl.Context()
    contexts[0].close()
    contexts[0].close()
    assert contexts[0].closed
    with pytest.raises(ppl.Error, match="closed"):
        contexts[0].convert(np.zeros((48, 128), np.uint8))
    ppl.Context().close()
    for c in contexts:
        c.close()


def test_threads_share_nothing_they_should_not(coffee):
    with ppl.Context() as c:
        wanted = c.convert(coffee)
    failures = []

    def work(context):
        for _ in range(10):
            if not (context.convert(coffee) == wanted).all():
                failures.append(context)

    own = [ppl.Context() for _ in range(3)]
    shared = ppl.Context()
    threads = [threading.Thread(target=work, args=(c,)) for c in [*own, shared, shared]]
    for t in threads:
        t.start()
    for t in threads:
        t.join()
    for c in [*own, shared]:
        c.close()
    assert not failures
