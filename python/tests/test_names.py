"""The numbers of the library have their names in Python, too."""
import re

import pytest
from conftest import ROOT

import ppl


def enumerators(header, prefix):
    """Those of the enumeration whose names begin with `prefix`, without it."""
    text = re.sub(r"/\*.*?\*/", "", (ROOT / "helpers" / header).read_text(), flags=re.S)
    found, next_value = {}, 0
    for body in re.findall(r"enum \w+ \{([^}]*)\}", text):
        if not re.match(rf"\s*{prefix}", body):
            continue
        for one in filter(None, map(str.strip, body.split(","))):
            name, value = re.fullmatch(r"(\w+)(?:\s*=\s*(-?\d+))?", one).groups()
            next_value = next_value if value is None else int(value)
            found[name.removeprefix(prefix)] = next_value
            next_value += 1
    return found


@pytest.mark.parametrize(
    "names, header, prefix",
    [
        (ppl.Format, "ppl_qualities.h", "PPL_FORMAT_"),
        (ppl.Quality, "ppl_check.h", "PPL_QUALITY_"),
        (ppl.Call, "ppl_check.h", "PPL_CALL_"),
        (ppl.Note, "ppl_check.h", "PPL_NOTE_"),
    ],
)
def test_every_number_has_its_name(names, header, prefix):
    assert {n.name: n.value for n in names} == enumerators(header, prefix)
