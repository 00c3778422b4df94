"""The example that follows points: it runs, its picture shows something, and its numbers are those of the film."""
import importlib.util
import pathlib
import re

import matplotlib.image
import numpy as np
import pytest

EXAMPLE = pathlib.Path(__file__).parents[1] / "examples/track_points.py"


@pytest.fixture(name="run")
def runner(capsys):
    spec = importlib.util.spec_from_file_location("track_points", EXAMPLE)
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)

    def run(*arguments):
        module.main([str(argument) for argument in arguments])
        return capsys.readouterr().out

    return run


def test_a_drawn_film(run, tmp_path):
    said = run(tmp_path / "film.png")
    followed, points = map(int, re.match(r"(\d+) of (\d+) points followed through 10 frames", said).groups())
    assert points >= followed > 0.8 * points
    drawn = matplotlib.image.imread(tmp_path / "film.png")
    assert drawn.shape[0] > 200 and (drawn.max(axis=2) != drawn.min(axis=2)).any()  # paths in colour over grey


def test_frames_from_files(run, tmp_path):
    y, x = np.mgrid[:150, :200]
    for index in range(3):
        frame = 128 + 60 * np.sin((x - 2 * index) / 6) * np.cos((y + index) / 5)
        matplotlib.image.imsave(tmp_path / f"{index}.png", frame, cmap="gray", vmin=0, vmax=255)
    said = run(tmp_path / "files.png", *(tmp_path / f"{index}.png" for index in range(3)))
    followed, points = map(int, re.match(r"(\d+) of (\d+) points followed through 3 frames", said).groups())
    assert followed == points > 5 and (tmp_path / "files.png").exists()
    with pytest.raises(SystemExit):
        run()
