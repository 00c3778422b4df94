"""Every exported function is reached by the friendly layer, or stands here with the reason why not."""
import ast
import importlib
import pathlib
import re

import pytest

import rvxcv
from rvxcv import _array

ROOT = pathlib.Path(__file__).parents[2]

# What a later interface or the layer itself replaces: patterns of whole names, and why. One that no name needs is an
# error, too.
EXCEPTIONS = {
    r"rvxi(Erode|Dilate)BorderReplicate_\w+": "the older interface; erode and dilate use the current one",
    r"rvxiMorphology(GetSize|Init|InitAlloc)_\w+|rvxiMorphologyFree": "states of the older interface",
    r"rvxiMorphAdvInitAlloc_\w+|rvxiMorphAdvFree": "records stand in memory of the layer",
    r"rvxiGetDistanceTransformMask": "the _32f one under another code",
    r"rvxiFilterGauss(GetBufferSize|Border)_32f_C1R": "builds its kernel at each call; gaussian keeps the prepared one",
    r"rvxiUndistortGetSize": "scratch that the functions do without",
    r"rvxiLabelMarkersGetBufferSize_\w+|rvxiFloodFillGetSize(_Grad)?":
        "32 bits do not hold the sizes for large images; the layer computes them as documented",
}


def exported(header):
    """The functions that a header declares and the library exports."""
    names = re.findall(r"^EXPORT\((\w+)\)", (ROOT / "src/frame/exports.def").read_text(), re.MULTILINE)
    declared = set(re.findall(r"\brvx\w+(?=\()", (ROOT / "include/rvxcv" / header).read_text()))
    return [name for name in names if name in declared]


def reached():
    """The functions of all tables, and those that the package's modules name as lib.NAME."""
    names = set(_array.REACHED)
    for path in pathlib.Path(rvxcv.__file__).parent.glob("*.py"):
        names |= {node.attr for node in ast.walk(ast.parse(path.read_text())) if isinstance(node, ast.Attribute)
                  and isinstance(node.value, ast.Name) and node.value.id == "lib"}
    return names


HEADERS = sorted(path.name for path in (ROOT / "include/rvxcv").glob("*.h") if exported(path.name))


@pytest.mark.parametrize("header", HEADERS)
def test_every_function_is_reached(header):
    known = reached()
    names = [name for name in exported(header) if not any(re.fullmatch(pattern, name) for pattern in EXCEPTIONS)]
    assert [name for name in names if name not in known] == []


@pytest.mark.parametrize("pattern", EXCEPTIONS)
def test_exceptions_are_needed(pattern):
    names = {name for header in HEADERS for name in exported(header) if re.fullmatch(pattern, name)}
    assert names and not names & reached()


def test_headers_hold_the_whole_list():
    listed = re.findall(r"^EXPORT\(", (ROOT / "src/frame/exports.def").read_text(), re.MULTILINE)
    assert sum(len(exported(header)) for header in HEADERS) == len(listed)


OWN_NAMESPACES = ("raw", "tiles", "dask_tiles")


def test_public_names_stand_in_one_module_each():
    stems = [path.stem for path in pathlib.Path(rvxcv.__file__).parent.glob("*.py")]
    modules = [importlib.import_module(f"rvxcv.{stem}") for stem in stems
               if stem[0] != "_" and stem not in OWN_NAMESPACES]
    names = [name for module in modules for name in getattr(module, "__all__", [])]
    assert sorted(names) == sorted(set(names))
    assert [name for name in names if not hasattr(rvxcv, name)] == []
