"""The example that counts objects: as many as were drawn, also from a file, and a picture of them."""
import importlib.util
import pathlib

import matplotlib.image
import numpy as np
import pytest

SCRIPT = pathlib.Path(__file__).parents[1] / "examples/count_objects.py"
SPEC = importlib.util.spec_from_file_location("count_objects", SCRIPT)
example = importlib.util.module_from_spec(SPEC)
SPEC.loader.exec_module(example)


@pytest.mark.parametrize("seed", [1, 2, 3])
def test_rendered_coins(seed):
    picture, count = example.render(seed)
    labels, found = example.find_objects(picture)
    assert found == count == labels.max()
    sizes = np.bincount(labels.ravel())[1:]
    assert sizes.min() > np.pi * 15 ** 2 and sizes.max() < np.pi * 36 ** 2


def test_the_script(tmp_path, capsys):
    result = tmp_path / "result.png"
    example.main(["-o", str(result)])
    lines = capsys.readouterr().out.splitlines()
    assert lines[0] == "24 objects" and len(lines) == 25
    shown = matplotlib.image.imread(result)
    assert shown.shape[0] >= 360 and shown.shape[1] >= 500
    orange = (abs(shown[..., :3] - np.array([255, 90, 0]) / 255) < 0.15).all(axis=2)
    assert 1000 < orange.sum() < shown[..., 0].size / 10  # the lines around the coins


def test_a_picture_of_colours_with_dark_objects(tmp_path, capsys):
    picture, _ = example.render(4, count=9)
    path = tmp_path / "coins.png"
    matplotlib.image.imsave(path, 255 - np.stack([picture] * 3, axis=2))
    example.main([str(path), "--dark", "-o", str(tmp_path / "result.png")])
    assert capsys.readouterr().out.startswith("9 objects\n")


def test_an_empty_table():
    labels, count = example.find_objects(np.full((40, 50), 9, np.uint8))
    assert count == 0 and not labels.any()
