"""From what a sensor delivers to what conversions take, and what can be learnt from a raw frame."""
from __future__ import annotations

from dataclasses import dataclass
from typing import Any, Optional, Union

import numpy as np
import numpy.typing as npt

from . import _ppl
from ._arrays import Bytes, checked_bytes
from ._enums import Pattern, member
from ._errors import Error
from ._settings import Lens

_BYTES, _LITTLE, _BIG, _PACKED_10, _PACKED_12 = range(5)
_SHIFT, _ROUND, _TABLE = range(3)

Black = Union[int, tuple[int, int, int, int]]


def prepare(
    frame: npt.NDArray[Any],
    pattern: Pattern = Pattern.BGGR,
    bits: int = 8,
    *,
    packed_width: Optional[int] = None,
    rounding: bool = True,
    table: Optional[npt.ArrayLike] = None,
) -> Bytes:
    """A sensor's frame as a new frame of bytes with B Gb on even rows and Gr R on odd ones.

    `frame` is (height, width) bytes, or 16-bit words of either byte order that hold `bits` bits, 8 to 16, at their
    lower end. MIPI-packed samples of 10 or 12 bits are (height, bytes of a row) bytes, and `packed_width` is the width.

    Samples of more than 8 bits are rounded, cut off where `rounding` is false, or looked up in `table`, which then has
    an entry for every sample. The picture starts at the first B site of the pattern; the column or row that is then
    missing at the other end is mirrored.
    """
    array = np.asarray(frame)
    pattern = member(Pattern, "pattern", pattern)
    if array.ndim != 2:
        raise Error(f"a frame has the shape (height, width), not {array.shape}")
    width = array.shape[1] if packed_width is None else int(packed_width)
    if packed_width is not None:
        if array.dtype != np.uint8 or bits not in (10, 12):
            raise Error("packed samples are bytes that hold 10 or 12 bits each")
        layout = _PACKED_10 if bits == 10 else _PACKED_12
    elif array.dtype == np.uint8:
        if bits != 8:
            raise Error(f"samples of {bits} bits are 16-bit words (numpy.uint16), or packed with a packed_width")
        layout = _BYTES
    elif array.dtype.kind == "u" and array.dtype.itemsize == 2:
        layout = _LITTLE if array.dtype.newbyteorder("<") == array.dtype else _BIG
    else:
        raise Error(f"samples are bytes or 16-bit words without sign, not {array.dtype}")
    entries: Optional[Bytes] = None
    if table is not None:
        given = np.asarray(table)
        if given.dtype.kind not in "iu" or given.ndim != 1 or not given.size or given.min() < 0 or given.max() > 255:
            raise Error("a table holds whole numbers from 0 to 255")
        entries = given.astype(np.uint8)
    return _ppl.prepare(array, width, int(pattern), layout, int(bits), _ROUND if rounding else _SHIFT, entries)


@dataclass(frozen=True)
class Balance:
    """Gains that make white what is white, as `rgb_gain` takes them, and how unsure they are: a spread below 1 is sure,
    beyond 4 the frame says little."""

    gains: tuple[int, int, int]
    """The smallest is 256."""
    spread: float
    """0 of a grey point."""


def _black(black: Black) -> tuple[int, int, int, int]:
    levels = (black,) * 4 if isinstance(black, (int, np.integer)) else tuple(black)
    if len(levels) != 4 or not all(0 <= v <= 255 for v in levels):
        raise Error("black levels are one number, or those of B, Gb, Gr and R, each from 0 to 255")
    return (int(levels[0]), int(levels[1]), int(levels[2]), int(levels[3]))


def white_balance(
    frame: Bytes, *, black: Black = 0, daylight_gains: tuple[int, int, int] = (397, 256, 346)
) -> Balance:
    """The light of a raw frame, found by the colours in it. `daylight_gains` are those that balance the sensor in
    daylight of 6500 K: take them from a grey card (`grey_point`)."""
    raw = checked_bytes("a Bayer frame", frame, 2)
    return Balance(**_ppl.white_balance(raw, _black(black), tuple(int(g) for g in daylight_gains)))


def grey_point(frame: Bytes, region: tuple[int, int, int, int], *, black: Black = 0) -> Balance:
    """The gains by a region (x, y, width, height) of a raw frame that is known to be grey, a card for example."""
    raw = checked_bytes("a Bayer frame", frame, 2)
    if len(region) != 4 or not all(0 <= v <= 65535 for v in region):
        raise Error(f"a region is x, y, width and height, not {region!r}")
    x, y, width, height = (int(v) for v in region)
    if x + width > raw.shape[1] or y + height > raw.shape[0]:
        raise Error(f"the region ends at {x + width}, {y + height}; the frame at {raw.shape[1]}, {raw.shape[0]}")
    return Balance(**_ppl.grey_point(raw, (x, y, width, height), _black(black)))


def fit_lens(frame: Bytes, *, black: Black = 0) -> Lens:
    """The lens correction that makes a flat frame flat: a raw frame of an evenly lit white surface. Leave `black` at 0
    if the library is to subtract the black level, since it corrects shading first."""
    raw = checked_bytes("a Bayer frame", frame, 2)
    return Lens(**_ppl.fit_lens(raw, _black(black)))


class AutoControl:
    """Exposure and white balance from frame to frame, damped and bounded.

        auto = ppl.AutoControl(exposure=(100, 33000), gain=(1.0, 8.0))
        for raw in frames:
            auto.step(raw, black=12)
            sensor.set(auto.exposure, auto.gain)
            camera.rgb_gain = auto.rgb_gain
    """

    def __init__(
        self,
        exposure: tuple[int, int],
        gain: tuple[float, float] = (1.0, 1.0),
        *,
        flicker: int = 0,
        delay: int = 2,
        daylight_gains: tuple[int, int, int] = (397, 256, 346),
    ) -> None:
        """`exposure`: the shortest and the longest, in any unit. `gain`: the sensor's. `flicker`: exposures above it
        become multiples of it. `delay`: frames that a change takes to show."""
        gains = [round(256 * g) for g in gain]
        if not (1 <= exposure[0] <= exposure[1] < 1 << 24 and 1 <= gains[0] <= gains[1] < 1 << 16):
            raise Error("exposures go from 1 to 2^24 - 1 and gains from 1 / 256 to 255, the smaller one first")
        if not (0 <= flicker < 1 << 24 and 0 <= delay <= 100):
            raise Error("flicker goes from 0 to 2^24 - 1, delay from 0 to 100")
        self._loop = _ppl.Loop(
            int(exposure[0]), int(exposure[1]), gains[0], gains[1], int(flicker), int(delay),
            tuple(int(g) for g in daylight_gains),
        )  # fmt: skip

    def step(self, frame: Bytes, *, black: Black = 0) -> tuple[bool, bool]:
        """Takes a raw frame, before it is converted in place; whether exposure or gain, and whether the balance, have
        changed."""
        return self._loop.step(checked_bytes("a Bayer frame", frame, 2), _black(black))

    @property
    def exposure(self) -> int:
        """For the sensor."""
        return self._loop.exposure

    @property
    def gain(self) -> float:
        """For the sensor."""
        return self._loop.gain

    @property
    def rgb_gain(self) -> tuple[int, int, int]:
        """For `Context.rgb_gain`."""
        return self._loop.rgb_gain
