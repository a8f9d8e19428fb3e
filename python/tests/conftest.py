"""The library itself, the tool and the sample, to compare with. CTest says where they are."""
import ctypes
import os
import pathlib

import numpy as np
import pytest

ROOT = pathlib.Path(os.environ.get("PPL_ROOT", pathlib.Path(__file__).resolve().parents[2]))


class Library:
    """libppl.so through ctypes: what the package must give the same bytes as."""

    def __init__(self, path):
        self.calls = ctypes.CDLL(path)
        self.calls.ppl_init.restype = ctypes.c_void_p
        self.context = ctypes.c_void_p(self.calls.ppl_init())

    def __call__(self, name, *arguments):
        def plain(a):
            return ctypes.c_void_p(a.ctypes.data) if isinstance(a, np.ndarray) else ctypes.c_int64(int(a))

        call = getattr(self.calls, name)
        call.restype = ctypes.c_uint8
        return call(self.context, *(plain(a) for a in arguments))

    def words(self, name, n):
        call = getattr(self.calls, name)
        call.restype = ctypes.POINTER(ctypes.c_uint32)
        return np.ctypeslib.as_array(call(self.context), (n,)).copy()

    def close(self):
        self.calls.ppl_reset_all_controls(self.context)
        self.calls.ppl_free(self.context)


def aligned(n, fill=0):
    memory = np.full(n + 64, fill, np.uint8)
    start = -memory.ctypes.data % 64
    return memory[start : start + n]


@pytest.fixture
def library():
    path = os.environ.get("PPL_LIBRARY", str(ROOT / "build" / "release" / "libppl.so"))
    if not os.path.exists(path):
        pytest.skip(f"{path} is not built")
    library = Library(path)
    yield library
    library.close()


@pytest.fixture
def tool():
    path = os.environ.get("PPL_TOOL", str(ROOT / "build" / "release" / "tools" / "ppl"))
    if not os.path.exists(path):
        pytest.skip(f"{path} is not built")
    return path


@pytest.fixture
def coffee():
    return np.fromfile(ROOT / "samples" / "coffee_640x480_bggr8.raw", np.uint8).reshape(480, 640)


@pytest.fixture
def noise():
    return np.random.default_rng(1).integers(0, 256, (48, 128), np.uint8)
