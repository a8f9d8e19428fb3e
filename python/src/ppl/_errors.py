"""What is thrown where there would be no picture."""
from __future__ import annotations

from enum import IntEnum

from . import _ppl


class Reason(IntEnum):
    """Why no whole picture comes of a call. NONE: one does, or something else is wrong, as the sentence says."""

    NONE = 0
    UNKNOWN_CALL = 1
    SIZE_REFUSED = 2
    EMPTY = 3
    SIZES_NOT_IN_TABLE = 4
    SIZES_DISAGREE = 5
    OUTPUT_TOO_LARGE = 6
    SOURCE_MISALIGNED = 7
    DESTINATION_MISALIGNED = 8
    SCRATCH_MISALIGNED = 9
    P3_ONLY = 10
    STRIDE_BELOW_WIDTH = 11
    QUALITY_ONLY_COUNTS = 12
    QUALITY_NOT_IN_FORMAT = 13
    RAW_AT_THIS_SIZE = 14
    GREY_NOT_DOUBLED = 15
    QUARTER_SIZE = 16
    RGB32_NOT_DOUBLED = 17
    NOT_CONVERTED_TO_RGB = 18
    ROWS_BETWEEN = 19
    ONE_MIRROR = 20
    STRIDE_NOT_WIDTH = 21
    BLACK_LINES = 22
    WIDTH_16 = 23
    WIDTH_32 = 24
    WIDTH_64 = 25
    HEIGHT_2 = 26
    HEIGHT_4 = 27
    FORMAT_NOT_SCALED = 28
    SCALED_WIDTH_32 = 29
    SCALED_HEIGHT_2 = 30
    SCALED_DOWN = 31
    SCALED_TOO_LARGE = 32
    NO_SUCH_CONVERSION = 33
    NO_V_PLANE = 34
    ONLY_COUNTED = 35
    DECIMATION_NOT_CONVERTED = 36
    UYVY_NOT_DOUBLED = 37
    LINES_NOT_DRAWN = 38
    LINES_LOST = 39
    LINES_SHIFT_RGB24 = 40
    LINES_ODD = 41
    ROWS_ODD = 42
    LEFT_AT_FULL_SIZE = 43

    @property
    def sentence(self) -> str:
        """What is wrong, and what would be right."""
        return _ppl.reason_text(int(self))


class Error(Exception):
    """A call that can't be made, or a value that is refused. `str()` is a sentence that says what would be right."""

    def __init__(self, sentence: str, reason: int = 0) -> None:
        super().__init__(sentence)
        self.reason = Reason(reason)
        """Why no picture comes, as a value."""
