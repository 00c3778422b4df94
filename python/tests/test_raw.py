"""Every exported name is callable, and the list is the library's own."""
import pathlib
import re

from rvxcv import raw

EXPORTS = pathlib.Path(__file__).parents[2] / "src/frame/exports.def"


def test_every_exported_name_is_callable():
    names = re.findall(r"^EXPORT\((\w+)\)", EXPORTS.read_text(), re.MULTILINE)
    assert len(names) > 700
    assert [name for name in names if not callable(getattr(raw, name, None))] == []
