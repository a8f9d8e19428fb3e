"""Raw Bayer frames and decoder frames to finished pictures, with statistics for exposure and white balance.

    import numpy as np
    import ppl

    raw = np.fromfile("frame.raw", np.uint8).reshape(480, 640)
    with ppl.Context(rgb_gain=(397, 256, 346), optical_black_b_gb_gr_r=(12, 12, 12, 12)) as camera:
        picture = camera.convert(raw)                  # (480, 640, 3), red, green, blue, top row first
        print(camera.statistics.whole_frame)

A call that would make no whole picture throws `ppl.Error`, whose sentence says why and what would do; `ppl.check` says
it beforehand.
"""
from __future__ import annotations

from dataclasses import dataclass
from typing import Any, Optional

import numpy as np
import numpy.typing as npt

from . import _ppl
from ._context import Context, LargeStatistics, Statistics, planes, shaped
from ._enums import Call, Format, Note, Pattern, Quality, Size, member
from ._errors import Error, Reason
from ._sensor import AutoControl, Balance, fit_lens, grey_point, prepare, white_balance
from ._settings import CONTROLS, Control, Lens, Settings

__version__ = ".".join(str(n) for n in _ppl.version)
__all__ = [
    "AutoControl", "Balance", "CONTROLS", "Call", "Context", "Control", "Error", "Format", "LargeStatistics", "Lens", "Note",
    "Pattern", "Quality", "Reason", "Settings", "Size", "Statistics", "Verdict", "check", "fit_lens", "grey_point", "planes",
    "prepare", "shaped", "simulate", "white_balance",
]  # fmt: skip


# What help and error messages call them: they are got from here.
for _public in (
    AutoControl, Balance, Call, Context, Control, Error, Format, LargeStatistics, Lens, Note, Pattern, Quality, Reason,
    Settings, Size, Statistics, fit_lens, grey_point, planes, prepare, shaped, white_balance,
):  # fmt: skip
    _public.__module__ = __name__


@dataclass(frozen=True)
class Verdict:
    """What `check` says of a planned call."""

    whole: bool
    """A whole picture comes of it."""
    reason: Reason
    """Why not."""
    sentence: str
    """The same for people."""
    answer: bool
    """What the library's call answers: true does not mean that there is a picture."""
    counted: bool
    """The frame is counted."""
    notes: Note
    """What a whole picture still has about it."""
    width: int
    height: int
    """Of the frame that the destination holds."""
    source_bytes: int
    destination_bytes: int
    scratch_bytes: int
    nearest: Optional[dict[str, Any]]
    """A plan like this one that makes a whole picture, as keyword arguments of `check`."""


def check(
    call: Call = Call.FRAME, format: Format = Format.RGB24, *, width: int, height: int, quality: int = 15, **plan: int
) -> Verdict:
    """Whether a call makes a whole picture, and if not, why, and what would.

    Of Bayer frames besides: decimation, stride (the width), medium_filter, h_mirror, v_mirror, and out_width and
    out_height of scaled calls. Of conversions: input, out_width, out_height, and sized (the size stands already and
    need not be in the library's table).
    """
    said = _ppl.check(
        {"call": call, "format": format, "width": width, "height": height, "quality": quality, **plan}
    )
    reason, notes = Reason(said.pop("reason")), Note(said.pop("notes"))
    return Verdict(reason=reason, notes=notes, **said)


def simulate(
    rgb: npt.NDArray[np.uint8],
    *,
    pattern: Pattern = Pattern.BGGR,
    bits: int = 8,
    black: float = 12,
    gains: tuple[float, float, float] = (397 / 256, 1.0, 346 / 256),
    kelvin: float = 6504,
    exposure: float = 1,
    shading: float = 0,
    centre: tuple[float, float] = (0.5, 0.5),
    green_imbalance: float = 0,
    noise: float = 0,
    shot_noise: float = 0,
    hot: int = 0,
    dead: int = 0,
    seed: int = 1,
) -> npt.NDArray[Any]:
    """The raw frame that a sensor would have delivered for a picture, (height, width, 3) bytes: for tests and for
    learning. Bytes, or 16-bit words where `bits` is 9 to 16. The same arguments give the same frame everywhere, and the
    same as `ppl simulate`.

    black: in steps of the frame. gains: R, G, B that balance the sensor at 6504 K. kelvin: of the light, 2000 to 10000.
    exposure: times the light. shading: share of the light that the furthest corner loses; centre: of the lens, as
    shares of width and height. green_imbalance: how much brighter Gr sites are. noise, shot_noise: standard deviations
    in 1/255 of the range. hot, dead: sites.
    """
    picture = np.asarray(rgb)
    if picture.dtype != np.uint8 or picture.ndim != 3 or picture.shape[2] != 3:
        raise Error(f"a picture is (height, width, 3) bytes, not {picture.shape} of {picture.dtype}")
    for name, value, low, high in (
        ("bits", bits, 8, 16), ("hot", hot, 0, 1 << 30), ("dead", dead, 0, 1 << 30), ("seed", seed, 0, (1 << 64) - 1),
    ):  # fmt: skip
        if not low <= value <= high:
            raise Error(f"{name} takes a whole number from {low} to {high}, not {value}")
    return _ppl.simulate(
        picture, int(member(Pattern, "pattern", pattern)), bits, black, list(gains), kelvin, exposure, shading, list(centre),
        green_imbalance, noise, shot_noise, hot, dead, seed,
    )  # fmt: skip
