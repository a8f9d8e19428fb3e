"""Settings: the controls of one camera, as a file and as values.

The file is JSON, the same that the command line tool reads and writes: an object with `"ppl_settings": 1` in it and any
of the controls by the names of the library's calls.
"""
from __future__ import annotations

import difflib
import json
import os
from dataclasses import dataclass, field
from pathlib import Path
from typing import Any, Iterator, Mapping, Optional, Sequence, Union

from . import _ppl
from ._enums import Quality
from ._errors import Error

Value = Union[bool, int, tuple[int, ...]]
_LARGEST_FILE = 1 << 20


@dataclass(frozen=True)
class Control:
    """One control: what it is called, which values it takes, and what it is without being set."""

    name: str
    kind: str
    """`flag` (true or false), `number`, or `numbers` (`count` of them)."""
    count: int
    low: int
    high: int
    standard: Value
    group: str
    what: str

    def checked(self, value: Any, where: str = "") -> Value:
        """The value as it is kept; throws `Error` if the control does not take it."""
        if self.kind == "flag":
            if not _is_flag(value):
                raise Error(f"{where}{self.name} is true or false, not {_shown(value)}")
            return bool(value)
        if self.kind == "number":
            if not _is_whole(value) or not self.low <= value <= self.high:
                wanted = f"a whole number from {self.low} to {self.high}"
                raise Error(f"{where}{self.name} takes {wanted}, not {_shown(value)}")
            return int(value)
        # One black level serves all four sites, but not in a file.
        numbers = [value] * 4 if _is_whole(value) and self.name.startswith("optical_black") and not where else value
        try:
            numbers = list(numbers)
        except TypeError:
            numbers = []
        if len(numbers) != self.count or not all(_is_whole(v) and self.low <= v <= self.high for v in numbers):
            raise Error(
                f"{where}{self.name} takes {self.count} whole numbers from {self.low} to {self.high}, "
                f"not {_shown(value)}"
            )
        return tuple(int(v) for v in numbers)


def _is_flag(value: Any) -> bool:
    return isinstance(value, bool) or type(value).__name__ in ("bool_", "bool")


def _is_whole(value: Any) -> bool:
    return hasattr(value, "__index__") and not _is_flag(value)


def _shown(value: Any) -> str:
    try:
        text = json.dumps(value)
    except RecursionError:
        text = "brackets within brackets"
    except (TypeError, ValueError):
        text = repr(value)
    return text if len(text) <= 60 else text[:57] + "..."


def _table() -> dict[str, Control]:
    table = {}
    for row in _ppl.controls():
        standard: Value = tuple(row["standard"])
        if row["kind"] == "flag":
            standard = bool(row["standard"][0])
        elif row["kind"] == "number":
            standard = int(row["standard"][0])
        table[row["key"]] = Control(
            row["key"], row["kind"], row["count"], row["low"], row["high"], standard, row["group"], row["what"]
        )
    return table


CONTROLS: Mapping[str, Control] = _table()
"""Every control by its name."""

_LENS = {row["key"]: row for row in _ppl.lens_numbers()}


@dataclass(frozen=True)
class Lens:
    """Lens shading: a sample at the squared distance s from the origin is multiplied with
    1 + f1 s / 2^f1_rshift_count - f2 s^2 / 2^f2_rshift_count."""

    f1: int = 16
    f1_rshift_count: int = 24
    f2: int = 16
    f2_rshift_count: int = 44
    origin: Optional[tuple[int, int]] = None
    """Column and row of the optical centre; None for the middle of the frame."""

    def __post_init__(self) -> None:
        _check_lens(self.__dict__, "")

    @property
    def values(self) -> dict[str, Any]:
        """As they stand in a settings file."""
        values: dict[str, Any] = {key: getattr(self, key) for key in _LENS}
        if self.origin is not None:
            values["origin"] = list(self.origin)
        return values


def _check_lens(values: Mapping[str, Any], where: str) -> None:
    for key, value in values.items():
        if key == "origin":
            if value is None:
                continue
            pair = list(value) if isinstance(value, Sequence) and not isinstance(value, str) else []
            if len(pair) != 2 or not all(_is_whole(v) and 0 <= v <= 16384 for v in pair):
                raise Error(f"{where}origin takes column and row, each from 0 to 16384, not {_shown(value)}")
        elif key not in _LENS:
            raise _unknown(key, [*_LENS, "origin"], where)
        elif not _is_whole(value) or not _LENS[key]["low"] <= value <= _LENS[key]["high"]:
            low, high = _LENS[key]["low"], _LENS[key]["high"]
            raise Error(f"{where}{key} takes a whole number from {low} to {high}, not {_shown(value)}")


def _unknown(key: str, known: Sequence[str], where: str) -> Error:
    plain = key.isprintable() and len(key) <= 60
    near = difflib.get_close_matches(key, known, 1, 0.5) if plain else []
    return Error(f"{where}there is no control {key if plain else _shown(key)}" + (f"; did you mean {near[0]}?" if near else ""))


@dataclass
class Settings:
    """The controls of one camera. What is not named keeps the library's default.

        settings = ppl.Settings(rgb_gain=(397, 256, 346), GbGr_correction=True, quality=ppl.Quality.FULL)
        settings.save("camera.json")
    """

    values: dict[str, Value] = field(default_factory=dict)
    """The controls that are set, by name."""
    quality: Optional[int] = None
    """A `Quality` where it has a name."""
    lens_correction: Optional[Lens] = None

    def __init__(
        self,
        values: Optional[Mapping[str, Any]] = None,
        *,
        quality: Optional[int] = None,
        lens_correction: Union[Lens, Mapping[str, Any], None] = None,
        **controls: Any,
    ) -> None:
        self.values, self.quality, self.lens_correction = {}, None, None
        if quality is not None:
            self._set("quality", quality, "")
        if lens_correction is not None:
            self._set("lens_correction", lens_correction, "")
        for name, value in {**(values or {}), **controls}.items():
            self._set(name, value, "")

    def _set(self, name: str, value: Any, where: str) -> None:
        if name == "quality":
            if not _is_whole(value) or not 0 <= value <= 15:
                raise Error(f"{where}quality takes a whole number from 0 to 15, not {_shown(value)}")
            number = int(value)
            self.quality = Quality(number) if number in Quality.__members__.values() else number
        elif name == "lens_correction":
            if not isinstance(value, Lens):
                if not isinstance(value, Mapping):
                    like = '{"f1": 48, "f1_rshift_count": 24}'
                    raise Error(f"{where}lens_correction is an object like {like}, not {_shown(value)}")
                _check_lens(value, where)
                origin = value.get("origin")
                numbers: dict[str, Any] = {key: int(n) for key, n in value.items() if key != "origin"}
                value = Lens(**numbers, origin=None if origin is None else (int(origin[0]), int(origin[1])))
            self.lens_correction = value
        elif name in CONTROLS:
            self.values[name] = CONTROLS[name].checked(value, where)
        else:
            raise _unknown(name, [*CONTROLS, "quality", "lens_correction"], where)

    def __iter__(self) -> Iterator[tuple[str, Value]]:
        return iter(self.values.items())

    def as_json(self) -> str:
        """The text of a settings file."""
        lines = ['"ppl_settings": 1']
        if self.quality is not None:
            lines.append(f'"quality": {int(self.quality)}')
        for name in CONTROLS:
            if name in self.values:
                value = self.values[name]
                lines.append(f'"{name}": {json.dumps(list(value) if isinstance(value, tuple) else value)}')
        if self.lens_correction is not None:
            lines.append(f'"lens_correction": {json.dumps(self.lens_correction.values)}')
        return "{\n  " + ",\n  ".join(lines) + "\n}\n"

    def save(self, path: Union[str, os.PathLike[str]]) -> None:
        """Writes a settings file: whole, or not at all."""
        target = Path(path)
        part = target.with_name(target.name + ".part")
        try:
            part.write_text(self.as_json(), encoding="utf-8")
            os.replace(part, target)
        finally:
            part.unlink(missing_ok=True)

    @classmethod
    def load(cls, path: Union[str, os.PathLike[str]]) -> "Settings":
        """Reads a settings file; throws `Error` with one line that names the file and what would be right."""
        with open(path, "rb") as file:
            text = file.read(_LARGEST_FILE + 1)
        if len(text) > _LARGEST_FILE:
            raise Error(f"{os.fspath(path)} is no settings file: it has more than a megabyte")
        return cls.from_json(text, os.fspath(path))

    @classmethod
    def from_json(cls, text: Union[str, bytes], name: str = "the settings") -> "Settings":
        """From the text of a settings file; `name` is what errors call it."""
        try:
            read = json.loads(text)
        except json.JSONDecodeError as error:
            raise Error(f"{name} is not JSON: {error.msg} in line {error.lineno}") from None
        except (UnicodeDecodeError, RecursionError):
            raise Error(f"{name} is not JSON") from None
        except ValueError:
            raise Error(f"{name} holds a number with too many digits") from None
        if not isinstance(read, dict):
            raise Error(f"{name} holds no settings: it must be an object, {{ ... }}")
        if "ppl_settings" not in read:
            raise Error(f'{name} holds no settings: "ppl_settings": 1 is missing in it')
        if read["ppl_settings"] != 1 or isinstance(read["ppl_settings"], bool):
            version = _shown(read["ppl_settings"])
            raise Error(f"{name} holds settings of version {version}; this package reads version 1")
        settings = cls()
        for key, value in read.items():
            if key == "ppl_settings":
                continue
            settings._set(key, value, f"{name}: ")
        return settings
