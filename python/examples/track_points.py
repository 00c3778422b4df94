#!/usr/bin/env python3
"""Follow corners through a film, and draw their paths.

    track_points.py OUT.png               a drawn scene that turns and grows, so that the error is known
    track_points.py OUT.png FRAME...      pictures of one size, such as the frames of a film

Corners are where the picture changes in two directions: where the smaller eigenvalue of the gradients' products around
a pixel is large. Points are followed from frame to frame; each frame's pyramid is made once and serves twice. A point
counts only if following it back leads to where it came from.
"""
import sys

import matplotlib
import numpy as np
from scipy import ndimage

import rvxcv

matplotlib.use("Agg")
from matplotlib import pyplot  # noqa: E402

WINDOW, LEVELS, MOST_POINTS, BACK_AGAIN = 21, 3, 150, 0.3


def corners(image):
    """The best (x, y) of the largest smaller eigenvalues, none closer than a window to another."""
    smooth = rvxcv.gaussian(image.astype(np.float32), 1.5)
    across, down = rvxcv.sobel(smooth, 1), rvxcv.sobel(smooth, 0)
    xx, xy, yy = (rvxcv.gaussian(product, 3) for product in (across * across, across * down, down * down))
    smaller = (xx + yy - np.sqrt((xx - yy) ** 2 + 4 * xy ** 2)) / 2
    best = (smaller == rvxcv.dilate(smaller, np.ones((WINDOW, WINDOW)))) & (smaller > 0.02 * smaller.max())
    best[:WINDOW] = best[-WINDOW:] = best[:, :WINDOW] = best[:, -WINDOW:] = False
    y, x = np.nonzero(best)
    order = np.argsort(-smaller[y, x])[:MOST_POINTS]
    return np.stack([x[order], y[order]], axis=1).astype(np.float32)


def follow(frames):
    """Paths of the first frame's corners, (frames, points, 2); NaN from where a point is lost."""
    pyramid = rvxcv.Pyramid(frames[0], LEVELS)
    path = [corners(frames[0])]
    for frame in frames[1:]:
        following = rvxcv.Pyramid(frame, LEVELS)
        points, lost, _ = rvxcv.track(pyramid, following, path[-1], window=WINDOW, levels=LEVELS)
        back, lost_again, _ = rvxcv.track(following, pyramid, points, window=WINDOW, levels=LEVELS)
        good = (lost == 0) & (lost_again == 0) & (np.hypot(*(back - path[-1]).T) < BACK_AGAIN)
        path.append(np.where(good[:, None], points, np.float32(np.nan)))
        pyramid = following
    return np.array(path)


ANGLE, GROWTH, SHIFT = 0.01, 1.005, (1.5, -0.8)  # of the drawn scene, from frame to frame


def motion(time, centre):
    """Matrix and offset that take a point (x, y) of the first frame to its place at a time."""
    cos, sin = GROWTH ** time * np.cos(ANGLE * time), GROWTH ** time * np.sin(ANGLE * time)
    matrix = np.array([[cos, -sin], [sin, cos]])
    return matrix, centre - matrix @ centre + np.multiply(SHIFT, time)


def drawn_film(width=320, height=240, length=10):
    random = np.random.default_rng(3)
    scene = sum(ndimage.gaussian_filter(random.normal(size=(height, width)), sigma) * sigma for sigma in (2, 4, 9))
    scene = np.clip(128 + 45 * scene / scene.std(), 0, 255)
    for time in range(length):
        matrix, offset = motion(time, np.array([width, height]) / 2)
        back = np.linalg.inv(matrix)[::-1, ::-1]  # scipy counts (y, x)
        frame = ndimage.affine_transform(scene, back, -back @ offset[::-1], order=3, mode="nearest")
        yield np.rint(np.clip(frame, 0, 255)).astype(np.uint8)


def read(path):
    image = pyplot.imread(path)
    image = image[..., :3].mean(axis=2) if image.ndim == 3 else image
    return np.rint(image if image.max() > 1 else image * 255).astype(np.uint8)


def draw(frame, path, name):
    figure, axes = pyplot.subplots(figsize=(frame.shape[1] / 50, frame.shape[0] / 50))
    axes.imshow(frame, cmap="gray", vmin=0, vmax=255)
    axes.plot(path[..., 0], path[..., 1], color="tab:cyan", linewidth=1)
    axes.scatter(*path[-1].T, s=8, color="tab:orange", zorder=3)
    axes.set(xlim=(-0.5, frame.shape[1] - 0.5), ylim=(frame.shape[0] - 0.5, -0.5))
    axes.set_axis_off()
    figure.savefig(name, dpi=100, bbox_inches="tight", pad_inches=0)
    pyplot.close(figure)


def main(arguments):
    if not arguments:
        raise SystemExit(__doc__)
    output, *names = arguments
    frames = [read(name) for name in names] or list(drawn_film())
    path = follow(frames)
    followed = ~np.isnan(path[-1, :, 0])
    print(f"{followed.sum()} of {len(followed)} points followed through {len(frames)} frames")
    draw(frames[-1], path, output)
    if not names:
        matrix, offset = motion(len(frames) - 1, np.array(frames[0].shape[::-1]) / 2)
        off = np.hypot(*(path[-1] - (path[0] @ matrix.T + offset))[followed].T)
        print(f"median error {np.median(off):.2f} pixels, largest {off.max():.2f}")
        if followed.sum() < 20 or np.median(off) > 0.4:
            raise SystemExit("the points were not followed")


if __name__ == "__main__":
    main(sys.argv[1:])
