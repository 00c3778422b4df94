"""Smooths and cleans a picture that is larger than one would like to hold, tile by tile from file to file.

The picture is a file of raw bytes that is mapped, not read; tiles of it are computed on threads and go straight into
the mapped file of the result. A reduced picture of both is written with matplotlib, the seams of the tiles drawn in.

    stitch_tiles.py OUT.png [WIDTH HEIGHT]
"""
import functools
import pathlib
import sys
import tempfile
import time

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt
import numpy as np

import rvxcv
from rvxcv import tiles

TILE = 1024


def draw(image):
    """Discs in a grid under uneven light, and specks of noise: some rows at a time."""
    height, width = image.shape
    random = np.random.default_rng(3)
    x = np.arange(width)
    for top in range(0, height, TILE):
        y = np.arange(top, min(height, top + TILE))[:, None]
        discs = np.hypot(x % 160 - 80, y % 160 - 80) < 30 + (x // 160 + y // 160) % 5 * 8
        light = 60 + 60 * x / width + 40 * y / height
        band = np.where(discs, light + 80, light)
        specks = random.random(band.shape) < 0.02
        image[top:top + TILE] = np.where(specks, 255, band)


def main(out, width=6000, height=4000):
    with tempfile.TemporaryDirectory() as folder:
        source = np.memmap(pathlib.Path(folder, "source"), np.uint8, "w+", shape=(height, width))
        result = np.memmap(pathlib.Path(folder, "result"), np.uint8, "w+", shape=(height, width))
        draw(source)
        footprint = rvxcv.ellipse(7, 7)
        begin = time.perf_counter()
        # The opening, in two steps: without specks, the discs as they are.
        eroded = np.memmap(pathlib.Path(folder, "eroded"), np.uint8, "w+", shape=(height, width))
        tiles.run(functools.partial(rvxcv.erode, footprint=footprint), source, margin=3, tile=(TILE, TILE), out=eroded)
        tiles.run(functools.partial(rvxcv.dilate, footprint=footprint), eroded, margin=3, tile=(TILE, TILE), out=result)
        seconds = time.perf_counter() - begin
        parts = -(-height // TILE) * -(-width // TILE)
        print(f"{width} x {height} in {parts} tiles: {seconds:.2f} s")
        some = np.s_[TILE - 300:TILE + 300, TILE - 450:TILE + 450] if min(width, height) > TILE + 450 else np.s_[:, :]
        figure, axes = plt.subplots(1, 2, figsize=(12, 4.4), layout="constrained")
        for axis, picture, title in zip(axes, (source, result), ("with specks", "opened by tiles")):
            axis.imshow(picture[some], cmap="gray", vmin=0, vmax=255)
            axis.set_title(title)
            axis.set_axis_off()
        if some[0].start is not None:
            axes[1].axhline(300, color="orange", linewidth=0.6)
            axes[1].axvline(450, color="orange", linewidth=0.6)
        figure.savefig(out, dpi=100)
        # What the tiles hold is what one call gives.
        whole = rvxcv.dilate(rvxcv.erode(np.array(source), footprint), footprint)
        print("the bits of the whole image:", "yes" if np.array_equal(whole, result) else "NO")
        return 0 if np.array_equal(whole, result) else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], *map(int, sys.argv[2:4])))
