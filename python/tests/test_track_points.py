"""The example that follows points: it runs, its picture shows something, and its numbers are those of the film."""
import pathlib
import re
import subprocess
import sys

import matplotlib.image
import numpy as np

EXAMPLE = pathlib.Path(__file__).parents[1] / "examples/track_points.py"


def run(*arguments):
    return subprocess.run([sys.executable, EXAMPLE, *arguments], capture_output=True, text=True, check=True).stdout


def test_drawn_film_and_files(tmp_path):
    said = run(tmp_path / "film.png")
    followed, points = map(int, re.match(r"(\d+) of (\d+) points followed through 10 frames", said).groups())
    assert points >= followed > 0.8 * points
    drawn = matplotlib.image.imread(tmp_path / "film.png")
    assert drawn.shape[0] > 200 and (drawn.max(axis=2) != drawn.min(axis=2)).any()  # paths in colour over grey
    y, x = np.mgrid[:150, :200]
    for index in range(3):
        frame = 128 + 60 * np.sin((x - 2 * index) / 6) * np.cos((y + index) / 5)
        matplotlib.image.imsave(tmp_path / f"{index}.png", frame, cmap="gray", vmin=0, vmax=255)
    said = run(tmp_path / "files.png", *(tmp_path / f"{index}.png" for index in range(3)))
    followed, points = map(int, re.match(r"(\d+) of (\d+) points followed through 3 frames", said).groups())
    assert followed == points > 5 and (tmp_path / "files.png").exists()
