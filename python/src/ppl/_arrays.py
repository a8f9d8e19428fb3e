"""Arrays as they come in."""
from __future__ import annotations

from typing import Any

import numpy as np
import numpy.typing as npt

from ._errors import Error, Reason

Bytes = npt.NDArray[np.uint8]


def checked_bytes(what: str, frame: Any, dimensions: int) -> Bytes:
    array = np.asarray(frame)
    shape = "(height, width)" if dimensions == 2 else "(height, width, 2)"
    if array.dtype != np.uint8:
        words = array.dtype.kind == "u" and array.dtype.itemsize == 2 and dimensions == 2
        hint = "; words of 10 to 16 bits become bytes by prepare(frame, pattern, bits)" if words else ""
        raise Error(f"{what} holds bytes (numpy.uint8), not {array.dtype}{hint}")
    if array.ndim != dimensions or (dimensions == 3 and array.shape[2] != 2):
        raise Error(f"{what} has the shape {shape}, not {array.shape}")
    if 0 in array.shape:
        raise Error(f"{what} of shape {array.shape} holds nothing", Reason.EMPTY)
    return array
