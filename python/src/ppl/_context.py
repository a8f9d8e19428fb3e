"""Contexts: controls, conversions, statistics."""
from __future__ import annotations

import difflib
import textwrap
from dataclasses import dataclass, fields
from types import TracebackType
from typing import Any, Optional, Union

import numpy as np
import numpy.typing as npt

from . import _ppl
from ._enums import Format, Pattern, Quality, Size, member
from ._arrays import Bytes, checked_bytes as _bytes
from ._errors import Error, Reason
from ._sensor import prepare
from ._settings import CONTROLS, Lens, Settings, Value

Means = npt.NDArray[np.float64]


@dataclass(frozen=True)
class Statistics:
    """What was measured on the last Bayer frame. Means are in steps of a sample, 0 to 255, red, green, blue.

    `qualified` and the histograms are linear in the light; all other means are taken by halves before and behind the
    tone curve, and are linear where that is the identity (`Context.tone`).

    Arrays of three: whole_frame, all_windows, outside, centre_4_points, centre_4, centre_8, centre_16, exposure,
    qualified. windows is (6, 8, 3), the histograms are (256,). exposure_cells and qualified_cells are counts.
    """

    whole_frame: Means
    """(3,)"""
    windows: Means
    """(6, 8, 3): the grid. Cells hold more or fewer samples by their place: compare a cell with the same of a flat
    frame."""
    all_windows: Means
    """(3,): the mean of the grid."""
    outside: Means
    """(3,): what no window holds, divided as if it were one."""
    centre_4_points: Means
    """(3,): of the four windows in the middle."""
    centre_4: Means
    """(3,): of all windows, those in the middle counting up to 4 times."""
    centre_8: Means
    centre_16: Means
    exposure: Means
    """(3,): of the 2 x 2 cells within `qAE_RGB_min_max`."""
    exposure_cells: int
    """How many of the frame's they are, estimated."""
    qualified: Means
    """(3,): of the 2 x 2 cells within the `qual_..._min_max` ranges. Linear."""
    qualified_cells: int
    red_histogram: npt.NDArray[np.uint32]
    """(256,): of means over eight cells. Linear."""
    green_histogram: npt.NDArray[np.uint32]
    blue_histogram: npt.NDArray[np.uint32]


@dataclass(frozen=True)
class LargeStatistics:
    """What was measured on a frame that was converted in parts: those of `Statistics` that parts can be put together
    of. Means are in steps of a sample, red, green, blue."""

    whole_frame: Means
    exposure: Means
    exposure_cells: int
    qualified: Means
    qualified_cells: int


class Context:
    """One of the library's eight contexts, with all controls at their defaults.

        with ppl.Context(rgb_gain=(397, 256, 346)) as camera:
            picture = camera.convert(raw)             # (height, width) bytes to (height, width, 3)

    Controls are attributes by the names of `ppl.CONTROLS`; `quality` and `lens_correction` besides. A context may be
    used from any thread; calls on it run one after the other, and conversions without the interpreter's lock.
    """

    def __init__(self, settings: Optional[Settings] = None, **controls: Any) -> None:
        object.__setattr__(self, "_settings", Settings())
        object.__setattr__(self, "_lens_size", None)
        object.__setattr__(self, "_context", _ppl.Context())
        try:
            if settings is not None:
                self.apply(settings)
            if controls:
                self.apply(Settings(**controls))
        except BaseException:
            self.close()
            raise

    _context: _ppl.Context
    _settings: Settings
    _lens_size: Optional[tuple[int, int]]

    # ---- Life

    def close(self) -> None:
        """Gives the context back. Doing it twice is harmless."""
        self._context.close()

    @property
    def closed(self) -> bool:
        return self._context.closed

    def __enter__(self) -> "Context":
        return self

    def __exit__(
        self, kind: Optional[type[BaseException]], value: Optional[BaseException], trace: Optional[TracebackType]
    ) -> None:
        self.close()

    # ---- Controls

    def apply(self, settings: Settings) -> None:
        """Sets what the settings name; all else stays."""
        if settings.quality is not None:
            self.quality = settings.quality
        for name, value in settings:
            self._set(name, value)
        if settings.lens_correction is not None:
            self.lens_correction = settings.lens_correction

    @property
    def settings(self) -> Settings:
        """What has been set, as a copy."""
        s = self._settings
        return Settings(s.values, quality=s.quality, lens_correction=s.lens_correction)

    def reset(self) -> None:
        """All controls to their defaults."""
        self._context.reset()
        object.__setattr__(self, "_settings", Settings())
        object.__setattr__(self, "_lens_size", None)

    @property
    def quality(self) -> int:
        """How frames are reconstructed: a `Quality`, where the number has a name."""
        return Quality.FULL if self._settings.quality is None else self._settings.quality

    @quality.setter
    def quality(self, value: int) -> None:
        kept = Settings(quality=value)
        self._context.set_quality(int(value))
        self._settings.quality = kept.quality

    @property
    def lens_correction(self) -> Optional[Lens]:
        """Lens shading, None where it is off. The table is made for the size of the frames as they come."""
        return self._settings.lens_correction

    @lens_correction.setter
    def lens_correction(self, value: Union[Lens, dict[str, Any], None]) -> None:
        self._settings.lens_correction = None if value is None else Settings(lens_correction=value).lens_correction
        object.__setattr__(self, "_lens_size", None)
        self._context.no_lens()

    @property
    def tone(self) -> Bytes:
        """The tone curve in force, 256 bytes. Setting `gamma` puts another in its place."""
        return self._context.tone()

    @tone.setter
    def tone(self, table: npt.ArrayLike) -> None:
        curve = np.asarray(table)
        if curve.shape != (256,) or curve.dtype.kind not in "iu" or curve.min() < 0 or curve.max() > 255:
            raise Error("a tone curve has 256 entries, whole numbers from 0 to 255")
        self._context.set_tone(curve.astype(np.uint8))

    def collect_statistics(self, on: bool) -> None:
        """Whether frames are measured; they are by default. Without, they take less time."""
        self._context.collect_statistics(bool(on))

    def _set(self, name: str, value: Any) -> None:
        kept = CONTROLS[name].checked(value)
        self._context.set(name, [int(v) for v in (kept if isinstance(kept, tuple) else (kept,))])
        self._settings.values[name] = kept

    def __getattr__(self, name: str) -> Value:
        if name in CONTROLS:
            return self._settings.values.get(name, CONTROLS[name].standard)
        raise AttributeError(f"a context has no {name}{_meant(name)}")

    def __setattr__(self, name: str, value: Any) -> None:
        if name in CONTROLS:
            self._set(name, value)
        elif name in ("quality", "lens_correction", "tone"):
            object.__setattr__(self, name, value)
        else:
            raise AttributeError(f"a context has no {name} to set{_meant(name)}")

    def __dir__(self) -> list[str]:
        return sorted([*super().__dir__(), *CONTROLS])

    # ---- Frames

    def convert(
        self,
        frame: Bytes,
        format: Format = Format.RGB24,
        size: Size = Size.SAME,
        *,
        pattern: Pattern = Pattern.BGGR,
        bits: int = 8,
        in_place: bool = False,
        out: Optional[Bytes] = None,
    ) -> Bytes:
        """A Bayer frame to a picture: (height, width) bytes with B Gb on even rows and Gr R on odd ones, or with
        another pattern, or 16-bit words of so many bits, which `prepare` then turns into such a frame.

        The library works in the frame's own memory. Unless `in_place` is true that is a copy. In place the frame must
        be writable, its rows may lie apart, and it holds the corrected mosaic afterwards; nothing is copied then.

        The picture is a new array of the shape that `Format` tells. `out`, an array of as many bytes in any shape, is
        filled instead, as the library stores pictures: RGB bottom row and blue first.
        """
        format, size = member(Format, "format", format), member(Size, "size", size)
        if out is not None and (not isinstance(out, np.ndarray) or out.dtype != np.uint8):
            raise Error("out is an array of bytes (numpy.uint8)")
        prepared = _prepared(frame, pattern, bits)
        if prepared is not None:
            if in_place:
                raise Error("frames of another pattern or of more than 8 bits are not converted in place")
            frame, in_place = prepared, True
        raw = _bytes("a Bayer frame", frame, 2)
        self._fit_lens(raw)
        try:
            made = self._context.convert(raw, int(format), int(size), in_place, out)
        except Error as refused:
            if refused.reason != Reason.SIZE_REFUSED:
                raise
            raise Error(f"{refused}, and convert_large takes larger frames, in parts", refused.reason) from None
        height, width = (_extent(n, size) for n in raw.shape)
        return out if out is not None else shaped(made, format, width, height)

    def convert_scaled(self, frame: Bytes, width: int, height: int, format: Format = Format.I420) -> Bytes:
        """A Bayer frame to a picture of any larger size, bilinear, in I420 or YUYV."""
        format = member(Format, "format", format)
        raw = _bytes("a Bayer frame", frame, 2)
        self._fit_lens(raw)
        made = self._context.convert_scaled(raw, int(format), int(width), int(height))
        return shaped(made, format, width, height)

    def convert_large(
        self,
        frame: Bytes,
        format: Format = Format.RGB24,
        size: Size = Size.SAME,
        *,
        pattern: Pattern = Pattern.BGGR,
        bits: int = 8,
    ) -> tuple[Bytes, LargeStatistics]:
        """A Bayer frame of more than 2016 x 2048 samples, up to 64 parts of 1984 x 2048, to the picture that one call
        would make of it, and what was measured. Same and half size; widths that are multiples of 32 and even heights,
        of 64 and 4 for half size. The frame is only read; `pattern` and `bits` are those of `convert`. `statistics` is
        that of the last part afterwards."""
        format, size = member(Format, "format", format), member(Size, "size", size)
        prepared = _prepared(frame, pattern, bits)
        raw = _bytes("a Bayer frame", frame if prepared is None else prepared, 2)
        self._fit_lens(raw)
        made, measured = self._context.convert_large(raw, int(format), int(size))
        height, width = (_extent(n, size) for n in raw.shape)
        means = ("whole_frame", "exposure", "qualified")
        said = LargeStatistics(**{k: v / 256.0 if k in means else v for k, v in measured.items()})
        return shaped(made, format, width, height), said

    def convert_12_bit(self, frame: Bytes) -> Bytes:
        """A decoder's frame of the 12-bit layout, (height, width * 3 / 2) bytes, to I420. The library mixes the chroma
        into the U plane and makes no V plane; V is 128 here."""
        packed = _bytes("a frame of the 12-bit layout", frame, 2)
        height, row = packed.shape
        if row % 48:
            raise Error(f"rows of the 12-bit layout have a multiple of 48 bytes, for 32 pixels each, not {row}")
        return shaped(self._context.convert_12_bit(packed), Format.I420, row // 3 * 2, height)

    def convert_packed(self, frame: Bytes, input: Format = Format.YUYV, format: Format = Format.RGB24) -> Bytes:
        """A decoder's frame, (height, width, 2) bytes of YUYV or UYVY, to I420 or RGB24."""
        packed = _bytes("a packed frame", frame, 3)
        format = member(Format, "format", format)
        made = self._context.convert_packed(packed, _packing(input), int(format))
        return shaped(made, format, packed.shape[1], packed.shape[0])

    def deinterlace(
        self,
        kept: Bytes,
        later: Bytes,
        earlier: Optional[Bytes] = None,
        *,
        input: Format = Format.YUYV,
        format: Format = Format.RGB24,
        black_lines: tuple[int, int] = (0, 0),
    ) -> Bytes:
        """Two fields, (height / 2, width, 2) bytes each, to a frame: `kept` gives the even rows, `later` the odd ones.
        Where the chroma of `later` differs from that of `earlier`, the later field of the frame before, it is taken
        from `kept`; without `earlier` the fields are woven as they stand. `black_lines`: rows above and below that make
        the picture higher; not in RGB24, in I420 even numbers."""
        even, odd = _bytes("a field", kept, 3), _bytes("a field", later, 3)
        before = None if earlier is None else _bytes("a field", earlier, 3)
        if even.shape != odd.shape or (before is not None and before.shape != even.shape):
            raise Error("all fields must have the same shape")
        format = member(Format, "format", format)
        top, bottom = black_lines
        if not (0 <= top <= 2048 and 0 <= bottom <= 2048):
            raise Error(f"black lines go from 0 to 2048 above and below, not {top} and {bottom}")
        made = self._context.deinterlace(before, even, odd, _packing(input), int(format), top, bottom)
        return shaped(made, format, even.shape[1], top + 2 * even.shape[0] + bottom)

    def _fit_lens(self, frame: Bytes) -> None:
        lens = self._settings.lens_correction
        height, width = frame.shape
        if lens is None or self._lens_size == (width, height):
            return
        x, y = lens.origin if lens.origin is not None else (width // 2, height // 2)
        self._context.lens(width, height, x, y, lens.f1, lens.f1_rshift_count, lens.f2, lens.f2_rshift_count)
        object.__setattr__(self, "_lens_size", (width, height))

    # ---- Statistics

    @property
    def frames(self) -> int:
        """Frames that this context has counted, its earlier owners' included."""
        return self._context.frames()

    @property
    def statistics(self) -> Statistics:
        """What was measured on the last Bayer frame, as arrays of its own."""
        raw = self._context.statistics()
        kept = ("exposure_cells", "qualified_cells", "red_histogram", "green_histogram", "blue_histogram")
        return Statistics(
            **{f.name: raw[f.name] if f.name in kept else raw[f.name] / 256.0 for f in fields(Statistics)}
        )


def _listed() -> str:
    """The controls, as `help(Context)` shows them."""
    lines = []
    for c in CONTROLS.values():
        standard = ", ".join(str(v) for v in c.standard) if isinstance(c.standard, tuple) else c.standard
        each = f"{c.count} numbers, each " if c.kind == "numbers" else ""
        takes = "true or false" if c.kind == "flag" else f"{each}{c.low} to {c.high}, default {standard}"
        lines.append(textwrap.fill(f"{c.name}: {c.what} ({takes})", 96, initial_indent="    ", subsequent_indent=" " * 8))
    return "\n".join(lines)


Context.__doc__ = f"{Context.__doc__}\n    The controls:\n\n{_listed()}\n    "


def _prepared(frame: npt.NDArray[Any], pattern: Pattern, bits: int) -> Optional[Bytes]:
    """The frame as the library takes it, or None where it is that already."""
    pattern = member(Pattern, "pattern", pattern)
    return None if pattern == Pattern.BGGR and bits == 8 else prepare(frame, pattern, bits)


def _meant(name: str) -> str:
    near = difflib.get_close_matches(name, [*CONTROLS, "quality", "lens_correction", "tone"], 1)
    return f"; did you mean {near[0]}?" if near else ""


def _packing(input: int) -> int:
    if input not in (Format.YUYV, Format.UYVY):
        raise Error("decoder frames are YUYV or UYVY")
    return int(input)


def _extent(n: int, size: int) -> int:
    return 2 * n if size == Size.TWICE else n >> int(size)


def shaped(picture: Bytes, format: Format, width: int, height: int) -> Bytes:
    """A picture's bytes as the library stores them, seen in the shape that `Format` tells. Nothing is copied."""
    if format == Format.I420:
        whole = width % 2 == 0 and height % 2 == 0
        return picture.reshape(height * 3 // 2, width) if whole else picture
    if format in (Format.YUYV, Format.UYVY):
        return picture.reshape(height, width, 2)
    if format == Format.RGB24:
        return picture.reshape(height, width, 3)[::-1, :, ::-1]
    return picture.reshape(height, width, 4)[::-1]


def planes(picture: Bytes) -> tuple[Bytes, Bytes, Bytes]:
    """The Y, U and V of an I420 picture, as views of it."""
    if picture.ndim != 2 or picture.shape[0] % 3 or not picture.flags.c_contiguous:
        raise Error("an I420 picture has the shape (height * 3 / 2, width)")
    width, height = picture.shape[1], picture.shape[0] * 2 // 3
    flat, n = picture.reshape(-1), width * height
    half = (height // 2, width // 2)
    return flat[:n].reshape(height, width), flat[n : n + n // 4].reshape(half), flat[n + n // 4 :].reshape(half)
