#!/usr/bin/env python3
"""Counts the bright objects of a picture, such as coins on a table, also where they touch.

The picture is smoothed, divided in light and dark, and cleaned of dust and holes. The distance to the background has a
peak in the middle of every object and a saddle where two of them meet: peaks that rise far enough above their saddles
become markers, and the watershed of the inverted distance cuts along the saddles.

    count_objects.py [PICTURE] [-o RESULT.png] [--depth PIXELS] [--smallest PIXELS] [--dark]
"""
import argparse

import matplotlib
import numpy as np

import rvxcv

matplotlib.use("Agg")
import matplotlib.pyplot as plt


def render(seed=1, shape=(360, 540), count=24):
    """Coins on a dark table: some touch, none covers another by more than a rim. The picture and how many there are."""
    random = np.random.default_rng(seed)
    y, x = np.mgrid[:shape[0], :shape[1]]
    picture = 50 + 20 * (x / shape[1])
    coins = []
    while len(coins) < count:
        radius = random.uniform(18, 34)
        place = random.uniform(radius + 4, shape[0] - radius - 4), random.uniform(radius + 4, shape[1] - radius - 4)
        if all(np.hypot(place[0] - row, place[1] - column) > radius + other - 3 for row, column, other in coins):
            coins.append((*place, radius))
            distance = np.hypot(y - place[0], x - place[1])
            shine = 150 + 60 * (x - place[1] + y - place[0]) / (4 * radius) - 40 * (abs(distance - radius * 0.7) < 2)
            picture = np.where(distance <= radius, shine, picture)
    picture += random.normal(0, 12, shape)
    return np.clip(picture, 0, 255).astype(np.uint8), count


def grey(picture):
    """A picture as matplotlib reads it, as grey levels 0 to 255."""
    if picture.dtype != np.uint8:
        picture = np.rint(picture * 255).astype(np.uint8)
    if picture.ndim == 3:
        picture = np.rint(picture[..., :3] @ [0.299, 0.587, 0.114]).astype(np.uint8)
    return np.ascontiguousarray(picture)


def two_levels(picture):
    """The threshold that divides the grey levels in the two classes farthest apart (N. Otsu, 1979)."""
    counts = np.bincount(picture.ravel(), minlength=256).astype(float)
    below, sums = counts.cumsum(), (counts * np.arange(256)).cumsum()
    above = below[-1] - below
    with np.errstate(divide="ignore", invalid="ignore"):
        apart = below * above * (sums / below - (sums[-1] - sums) / above) ** 2
    apart = np.nan_to_num(apart)
    return int(apart.argmax()) if apart.any() else 255


def find_objects(picture, depth=2.0, smallest=100):
    """Labels of the objects (0 outside of them) and how many there are."""
    smooth = rvxcv.gaussian(picture, 2)
    mask = (smooth > two_levels(smooth)).astype(np.uint8)
    mask = rvxcv.morph_open(mask, rvxcv.ellipse(7, 7))
    # Holes: what the background does not reach from the frame.
    frame = np.ones_like(mask)
    frame[[0, -1]], frame[:, [0, -1]] = mask[[0, -1]], mask[:, [0, -1]]
    mask = rvxcv.reconstruct(frame, mask, method="erosion", connectivity=4)

    distance = rvxcv.distance_transform(mask)
    # Domes are what a marker that is lower by the depth leaves; those that are not as high belong to another one.
    lowered = np.maximum(distance - np.float32(depth), 0)
    domes = distance - rvxcv.reconstruct(lowered, distance)
    tops = (domes >= min(depth, distance.max()) - 1e-3).astype(np.uint8)
    seeds, _ = rvxcv.label(rvxcv.reconstruct(tops, (domes > 0).astype(np.uint8)))

    relief = 65535 - np.minimum(distance * 64, 65535).astype(np.uint16)
    labels = rvxcv.watershed(relief, np.where(mask != 0, seeds, -1).astype(np.int32))
    labels[labels < 0] = 0
    sizes = np.bincount(labels.ravel())
    keep = sizes >= smallest
    keep[0] = False
    numbers = np.cumsum(keep, dtype=np.int32) * keep
    return numbers[labels], int(keep.sum())


def draw(picture, labels, count, path):
    """The picture with a line around every object and its number on it."""
    outlines = rvxcv.mark_boundaries(labels, -1) == -1
    shown = np.stack([picture] * 3, axis=2)
    shown[outlines] = 255, 90, 0
    figure = plt.figure(figsize=(picture.shape[1] / 80, picture.shape[0] / 80 + 0.4), dpi=80, layout="constrained")
    axes = figure.add_subplot()
    axes.imshow(shown)
    axes.set_axis_off()
    axes.set_title(f"{count} objects")
    for number in range(1, count + 1):
        y, x = np.nonzero(labels == number)
        axes.text(x.mean(), y.mean(), str(number), color="white", ha="center", va="center", weight="bold")
    figure.savefig(path)
    plt.close(figure)


def main(arguments=None):
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n", maxsplit=1)[0])
    parser.add_argument("picture", nargs="?", help="PNG or JPEG; coins are rendered without it")
    parser.add_argument("-o", "--output", default="objects.png", help="the picture to write (%(default)s)")
    parser.add_argument("--depth", type=float, default=2.0,
                        help="pixels by which an object's middle is farther from the rim than where it touches another")
    parser.add_argument("--smallest", type=int, default=100, help="pixels of the smallest object")
    parser.add_argument("--dark", action="store_true", help="count dark objects on a bright ground")
    options = parser.parse_args(arguments)
    picture = grey(plt.imread(options.picture)) if options.picture else render()[0]
    labels, count = find_objects(255 - picture if options.dark else picture, options.depth, options.smallest)
    draw(picture, labels, count, options.output)
    print(f"{count} objects")
    for number, size in enumerate(np.bincount(labels.ravel())[1:], 1):
        print(f"object {number}: {size} pixels")


if __name__ == "__main__":
    main()
