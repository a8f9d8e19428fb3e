"""Controls, settings files and statistics."""
import json
import pickle
import pydoc
import subprocess

import numpy as np
import pytest

import ppl
from ppl import CONTROLS, Lens, Quality, Settings


def test_controls_start_at_their_defaults_and_read_back():
    with ppl.Context() as c:
        assert c.quality == Quality.FULL and c.lens_correction is None
        for name, control in CONTROLS.items():
            assert getattr(c, name) == control.standard, name
            setattr(c, name, control.standard)
        c.rgb_gain = [300, 256, 400]
        c.sat = np.int64(300)
        c.h_mirror = np.bool_(True)
        assert (c.rgb_gain, c.sat, c.h_mirror) == ((300, 256, 400), 300, True)
        assert "rgb_gain" in dir(c)
        c.reset()
        assert c.rgb_gain == (256, 256, 256)


def test_controls_reach_the_picture(noise):
    with ppl.Context() as c:
        plain = c.convert(noise)
        c.h_mirror = True
        assert (c.convert(noise)[:, ::-1] != plain).mean() < 0.5 and (c.convert(noise) != plain).any()
        c.h_mirror = False
        assert (c.convert(noise) == plain).all()
        c.sat = 0
        grey = c.convert(noise)
        assert (np.ptp(grey.astype(int), axis=2) <= 1).all()


@pytest.mark.parametrize(
    "name, value, sentence",
    [
        ("rgb_gain", (256, 2048, 256), "rgb_gain takes 3 whole numbers from 0 to 2047"),
        ("rgb_gain", (256, 256), "3 whole numbers"),
        ("rgb_gain", 256, "3 whole numbers"),
        ("rgb_gain", "256,256,256", "3 whole numbers"),
        ("sat", 513, "sat takes a whole number from 0 to 512, not 513"),
        ("sat", 1.5, "not 1.5"),
        ("sat", True, "not true"),
        ("h_mirror", 1, "true or false"),
        ("quality", 16, "from 0 to 15"),
        ("lens_correction", 7, "is an object"),
        ("lens_correction", {"f1": 1e9}, "f1 takes a whole number"),
        ("lens_correction", {"f3": 1}, "there is no control f3; did you mean f"),
    ],
)
def test_wrong_values_are_told_and_change_nothing(name, value, sentence):
    with ppl.Context() as c:
        before = getattr(c, name)
        with pytest.raises(ppl.Error, match=sentence.replace("(", r"\(")):
            setattr(c, name, value)
        assert getattr(c, name) == before


def test_unknown_names():
    with ppl.Context() as c:
        with pytest.raises(AttributeError):
            c.saturation = 3
        with pytest.raises(AttributeError):
            c.saturation
        with pytest.raises(AttributeError, match="a context has no rgb_gains to set; did you mean rgb_gain?"):
            c.rgb_gains = 3
        with pytest.raises(AttributeError, match="a context has no gama; did you mean gamma?"):
            c.gama
    with pytest.raises(ppl.Error, match="there is no control rgb_gains; did you mean rgb_gain?"):
        ppl.Context(rgb_gains=(1, 2, 3))
    # A context that could not be set up is not lost.
    contexts = [ppl.Context() for _ in range(8)]
    for c in contexts:
        c.close()


def test_help_names_every_control_and_names_are_those_of_the_package():
    text = pydoc.plain(pydoc.render_doc(ppl.Context))
    for control in ppl.CONTROLS.values():
        assert f"{control.name}: {control.what.split()[0]}" in text, control.name
    assert max(len(line) for line in ppl.Context.__doc__.splitlines()) <= 120
    for name in ppl.__all__:
        public = getattr(ppl, name)
        if hasattr(public, "__module__"):
            assert public.__module__ == "ppl", name
    assert pickle.loads(pickle.dumps(ppl.Format.I420)) is ppl.Format.I420
    assert pickle.loads(pickle.dumps(ppl.Lens(f1=3))) == ppl.Lens(f1=3)


def test_lens_correction_fits_the_frame(noise):
    with ppl.Context() as c:
        plain = c.convert(noise)
        c.lens_correction = Lens(4000, 24, 0)
        corrected = c.convert(noise)
        assert (corrected != plain).any()
        c.convert(np.zeros((96, 256), np.uint8))
        assert (c.convert(noise) == corrected).all(), "the table follows the frame's size"
        c.lens_correction = None
        assert (c.convert(noise) == plain).all()


def test_tone(noise):
    with ppl.Context() as c:
        assert c.tone.shape == (256,) and c.tone[255] == 255
        c.tone = np.arange(256)
        assert (c.tone == np.arange(256)).all()
        c.gamma = 0
        assert c.tone[16] == 55
        for wrong in (np.arange(255), np.arange(256) * 2, np.linspace(0, 1, 256)):
            with pytest.raises(ppl.Error, match="256 entries"):
                c.tone = wrong


def test_settings_files_are_those_of_the_tool(tool, tmp_path):
    path = tmp_path / "camera.json"
    settings = Settings(
        rgb_gain=(397, 256, 346), optical_black_b_gb_gr_r=12, GbGr_correction=True, sat=300, quality=Quality.DIRECTED,
        lens_correction=Lens(48, 24, 0, 44, origin=(320, 240)),
    )  # fmt: skip
    settings.save(path)
    command = [tool, "settings", "--settings", str(path)]
    again = subprocess.run(command, capture_output=True, text=True, check=True).stdout
    assert json.loads(again) == json.loads(path.read_text())
    assert Settings.load(path) == settings
    with ppl.Context(settings) as c:
        assert c.settings == settings
        assert c.quality == Quality.DIRECTED and c.sat == 300


def test_every_control_survives_a_file(tool, tmp_path):
    full = Settings({name: control.standard for name, control in CONTROLS.items()}, quality=15)
    path = tmp_path / "all.json"
    full.save(path)
    subprocess.run([tool, "settings", "--settings", str(path)], capture_output=True, check=True)
    assert Settings.load(path) == full
    assert list(tmp_path.iterdir()) == [path]


@pytest.mark.parametrize(
    "text, sentence",
    [
        ("", "is not JSON"),
        ("[1]", "holds no settings"),
        ("{}", '"ppl_settings": 1 is missing'),
        ('{"ppl_settings": 2}', "version 2"),
        ('{"ppl_settings": 1, "gain": 3}', "there is no control gain"),
        ('{"ppl_settings": 1, "sat": "much"}', 'sat takes a whole number from 0 to 512, not "much"'),
        ('{"ppl_settings": 1, "rgb_gain": [1, 2]}', "rgb_gain takes 3 whole numbers"),
        ('{"ppl_settings": 1, "optical_black_b_gb_gr_r": 12}', "takes 4 whole numbers"),
        ('{"ppl_settings": 1, "h_mirror": 1}', "true or false"),
        ('{"ppl_settings": 1, "lens_correction": {"origin": [1]}}', "origin takes column and row"),
        ('{"ppl_settings": 1, "quality": 99}', "from 0 to 15"),
        ("[" * 100000, "is not JSON"),
        (b"\xff\xfe\x00", "is not JSON"),
        ('{"ppl_settings": 1, "sat": %s}' % ("1" * 5000), "a number with too many digits"),
        ('{"ppl_settings": 1, "sat": 1e999}', "not Infinity"),
        ('{"ppl_settings": 1, "sa\\nt": 1}', 'there is no control "sa\\nt"'),
        ('{"ppl_settings": 1, "lens_correction": {"\\n": 1}}', 'there is no control "\\n"'),
        ('{"ppl_settings": 1, "%s": 1}' % ("x" * 900000), "there is no control"),
        (" " * (1 << 21), "more than a megabyte"),
    ],
)
def test_broken_settings_files_say_what_is_wrong(tmp_path, text, sentence):
    path = tmp_path / "broken.json"
    path.write_bytes(text if isinstance(text, bytes) else text.encode())
    with pytest.raises(ppl.Error) as e:
        Settings.load(path)
    assert sentence in str(e.value) and "broken.json" in str(e.value) and "\n" not in str(e.value)
    assert len(str(e.value)) < len(str(path)) + 200


def test_settings_that_can_not_be_written_leave_nothing(tmp_path):
    with pytest.raises(OSError):
        Settings().save(tmp_path / "none" / "camera.json")
    (tmp_path / "folder").mkdir()
    with pytest.raises(OSError):
        Settings().save(tmp_path / "folder")
    assert [p.name for p in tmp_path.iterdir()] == ["folder"]


def test_statistics_are_arrays_of_their_own(library, noise):
    from conftest import aligned

    source, out = aligned(noise.size), aligned(noise.size * 2)
    source[:] = noise.reshape(-1)
    library("BaylorToI420MMX", source, out, 128, 48)
    with ppl.Context() as c:
        c.convert(noise, ppl.Format.I420)
        s = c.statistics
        for name, figure in (
            ("whole_frame", s.whole_frame), ("all_sub_windows", s.all_windows),
            ("outside_all_sub_windows", s.outside), ("whole_frame_4pts", s.centre_4_points),
            ("whole_frame_central8", s.centre_8),
        ):  # fmt: skip
            assert (figure * 256 == library.words(f"ppl_rgb_means_{name}", 3)).all(), name
        assert (s.windows.reshape(-1) * 256 == library.words("ppl_rgb_means_sub_windows", 144)).all()
        assert (s.green_histogram == library.words("ppl_g_histogram", 256)).all() and s.green_histogram.any()
        assert s.windows.shape == (6, 8, 3) and s.exposure_cells > 0
        before = s.whole_frame.copy()
        c.convert(np.zeros_like(noise))
        assert (s.whole_frame == before).all()
        c.collect_statistics(False)
        c.convert(noise)
        assert not c.statistics.whole_frame.any()
