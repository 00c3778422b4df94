"""What two threads gain: tiles.run with one worker and with two, for filters that compute. Medians, in milliseconds."""
import functools
import statistics
import time

import numpy as np

import rvxcv
from rvxcv import tiles

CASES = {
    "erosion, 15 x 15 diagonal, uint8": (functools.partial(rvxcv.erode, footprint=np.eye(15)), np.uint8, 7),
    "erosion, ellipse 31 x 31, float32": (functools.partial(rvxcv.erode, footprint=rvxcv.ellipse(31, 31)), np.float32,
                                          15),
    "Gaussian 15, uint8": (functools.partial(rvxcv.gaussian, sigma=2.5, size=15), np.uint8, 7),
}


def seconds(function, image, margin, workers, out):
    begin = time.perf_counter()
    tiles.run(function, image, margin=margin, workers=workers, out=out)
    return time.perf_counter() - begin


def main():
    for name, (function, dtype, margin) in CASES.items():
        image = np.random.default_rng(1).integers(0, 256, (2160, 3840)).astype(dtype)
        out = np.empty_like(function(image))
        runs = [(seconds(function, image, margin, 1, out), seconds(function, image, margin, 2, out)) for _ in range(21)]
        one, two = (1e3 * statistics.median(each) for each in zip(*runs))
        print(f"{name:40}{one:8.2f} {two:8.2f}   {two / one:.2f} of one thread's time")


if __name__ == "__main__":
    main()
