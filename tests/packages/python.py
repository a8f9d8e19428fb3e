"""The installed package, by either name: the tool's picture, statistics, and an error with its reason."""
import importlib
import sys

import numpy as np

frame, picture, name = sys.argv[1:]
ppl = importlib.import_module(name)

raw = np.fromfile(frame, np.uint8).reshape(480, 640)
with ppl.Context() as camera:
    made = camera.convert(raw, ppl.Format.I420)
    assert np.asarray(made).tobytes() == open(picture, "rb").read(), "not the tool's picture"
    try:
        camera.convert(raw[:, :638])
    except ppl.Error as error:
        assert error.reason.name.startswith("WIDTH_") and "multiple of" in str(error), error
    else:
        raise SystemExit("a width of 638 was taken")
print(f"{name}: ok")
