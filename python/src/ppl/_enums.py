"""Names for the numbers of the library."""
from __future__ import annotations

from enum import IntEnum, IntFlag
from typing import Any, TypeVar

from ._errors import Error

Member = TypeVar("Member", bound=IntEnum)


class Format(IntEnum):
    """What a frame is turned into, and the shape of the array that holds a picture of `width` x `height`."""

    I420 = 0
    """Luma, then U, then V of a quarter of it: (height * 3 / 2, width); see `planes`."""
    YUYV = 1
    """Y0 U Y1 V for two pixels: (height, width, 2), luma first."""
    UYVY = 2
    """U Y0 V Y1 for two pixels: (height, width, 2), chroma first."""
    RGB24 = 3
    """(height, width, 3): red, green, blue, top row first."""
    RGB32 = 4
    """(height, width, 4): blue, green, red, 0, top row first."""


class Quality(IntEnum):
    """How a Bayer frame is reconstructed."""

    DIRECTED_SHARP = 0
    """Edge-directed, sharpened."""
    DIRECTED = 1
    """Edge-directed."""
    BILINEAR = 2
    """Bilinear."""
    CELLS = 3
    """Each 2 x 2 cell by itself: the fastest in colour."""
    RAW = 4
    """The mosaic as it is."""
    FLAT_SHARP = 10
    """As DIRECTED_SHARP, flat areas smoothed."""
    FLAT = 11
    """As DIRECTED, flat areas smoothed."""
    GREY_SHARP = 12
    """The corrected mosaic, sharpened."""
    GREY = 13
    """The corrected mosaic. I420 and RGB24 alone."""
    FULL = 15
    """The default: noise filter, sharpening, chroma smoothing. Not in RGB32."""


class Size(IntEnum):
    """The picture's size beside the frame's."""

    TWICE = -1
    SAME = 0
    HALF = 1


class Pattern(IntEnum):
    """Colours of a sensor's first two sites of its first two rows. Conversions take BGGR; the others are for
    `simulate`."""

    BGGR = 0
    GBRG = 1
    GRBG = 2
    RGGB = 3


class Call(IntEnum):
    """Calls of the library, for `check`."""

    FRAME = 0
    """A Bayer frame, at any decimation and stride."""
    SAME = 1
    HALF = 2
    DOUBLE = 3
    DOUBLE_STRIDE = 4
    STRIDE_4 = 5
    SCALED = 6
    PACKED = 7
    """A packed 4:2:2 frame."""
    PACKED_12_BIT = 8
    RGB24_TO_RGB32 = 9
    FIELDS = 10
    """Two fields, with motion test."""
    FIELDS_NO_MOTION = 11


class Note(IntFlag):
    """What a whole picture may still have about it."""

    ANSWERS_FALSE = 1
    """The C call answers false although the picture is made."""
    MIRRORS_IGNORED = 2
    """A mirror is on and has no effect."""
    MARK = 4
    """A white block moves through the V plane."""
    DARK_COLUMN = 8
    """The last column but one of the doubled picture is half as bright."""
    GHOSTS_BETWEEN = 16
    """In rows between, columns 16 to 31 of each 32 mix in columns 8 to 15."""
    NOT_A_FLIP = 32
    """Mirrored and doubled: pairs of columns, or the row that stands twice, do not flip."""
    ODD_COLUMNS = 64
    """Halved RGB32 under the horizontal mirror shows the odd columns."""
    PALE = 128
    """RGB of qualities 0 and 10 is paler than that of the others."""
    LAST_COLUMN = 256
    """Scaled YUYV: the last columns mix in the start of the next row."""
    LEAVES_COLOURS = 512
    """Qualities 10 and 11 leave colours behind; contexts of this package clear them."""
    ROW_OFF = 1024
    """Halved RGB24 of an odd number of 16 columns: 8 columns of some rows are a row off."""


def member(kind: type[Member], name: str, value: Any) -> Member:
    """The member of an enumeration that a number stands for; throws `Error`, with all that there are, for any other."""
    try:
        return kind(value)
    except ValueError:
        choices = ", ".join(f"{kind.__name__}.{m.name}" for m in kind)
        raise Error(f"{name} is one of {choices}, not {value!r}") from None
