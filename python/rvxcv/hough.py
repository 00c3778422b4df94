"""Straight lines and segments of two-level images, by the Hough transform."""
from __future__ import annotations

import functools

import numpy as np
import numpy.typing as npt

from ._array import check, expect, ffi, lib, scratch

__all__ = ["hough_lines", "hough_segments"]

_DEGREE = float(np.pi / 180)


def _search(find, shape, dtype, record, most):
    """The results that ``find(results, capacity, count)`` stores: all of them, or at most ``most``."""
    count = ffi.new("int32_t *")
    capacity = 256 if most is None else most
    while True:
        found = np.empty((max(capacity, 1), *shape), dtype)
        status = find(ffi.from_buffer(record, found), capacity, count)
        if status == lib.StatusEmptyResult:
            return found[:0]
        if status != lib.StatusResultTruncated:
            check(status)
        elif most is None:
            capacity *= 4
            continue
        return found[:count[0]].copy()


def hough_lines(image: npt.ArrayLike, threshold: int, *, rho: float = 1.0, theta: float = _DEGREE,
                region: tuple[tuple[float, float], tuple[float, float]] | None = None,
                max_lines: int | None = None) -> npt.NDArray[np.float32]:
    """Straight lines through the marked pixels of an image.

    Parameters
    ----------
    image : (H, W) array of uint8 or bool
        Marked pixels are not zero.
    threshold : int
        A line passes through more marked pixels; at least 1.
    rho, theta : float
        Steps of the lines' distance (pixels, up to width + height) and direction (radians, up to pi).
    region : ((rho, theta), (rho, theta)), optional
        Only lines from the first to the second of them.
    max_lines : int, optional
        Only the first ones.

    Returns
    -------
    lines : (N, 2) array of float32
        (rho, theta) of x cos(theta) + y sin(theta) = rho; those with the most pixels first.

    Notes
    -----
    R. O. Duda and P. E. Hart, "Use of the Hough Transformation to Detect Lines and Curves in Pictures", CACM 15(1),
    1972.

    See Also
    --------
    skimage.transform.hough_line, skimage.transform.hough_line_peaks

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> image = np.zeros((40, 60), np.uint8)
    >>> image[:, 17] = 1
    >>> rvxcv.hough_lines(image, 30, max_lines=1)
    array([[17.,  0.]], dtype=float32)
    """
    source, step, roi = expect(image, "image", "8u_C1")
    resolution = rho, theta
    bounds = None if region is None else ffi.new("HoughLine[2]", [tuple(bound) for bound in region])

    def find(lines, capacity, count):
        buffer = scratch(lib.rvxiHoughLineGetSize_8u_C1R, roi, resolution, capacity)
        if bounds is None:
            return lib.rvxiHoughLine_8u32f_C1R(source, step, roi, threshold, lines, capacity, count, buffer, resolution)
        return lib.rvxiHoughLine_Region_8u32f_C1R(source, step, roi, threshold, lines, capacity, count, buffer,
                                                  resolution, bounds)

    return _search(find, (2,), np.float32, "HoughLine[]", max_lines)


@functools.lru_cache(maxsize=64)
def _segments_record(roi, rho, theta, seed):
    """A record and its memory. Read-only, so that threads share it."""
    sizes = ffi.new("int32_t[2]")
    check(lib.rvxiHoughProbLineGetSize_8u_C1R(roi, (rho, theta), sizes, sizes + 1))
    memory = ffi.new("uint8_t[]", sizes[0])
    record = ffi.cast("HoughProbLineSpec *", memory)
    check(lib.rvxiHoughProbLineInit_8u32f_C1R(roi, seed, record, (rho, theta)))
    return record, memory


def hough_segments(image: npt.ArrayLike, threshold: int, *, line_length: int = 50, line_gap: int = 10,
                   rho: float = 1.0, theta: float = _DEGREE, seed: int = 0,
                   max_segments: int | None = None) -> npt.NDArray[np.int32]:
    """Line segments along the marked pixels of an image.

    Parameters
    ----------
    image : (H, W) array of uint8 or bool
        Marked pixels are not zero.
    threshold : int
        The votes that make a line be followed; at least 1.
    line_length : int
        The shortest segment, along its longer side; at least 1.
    line_gap : int
        The longest run of unmarked pixels inside a segment.
    rho, theta : float
        Steps of the lines' distance (pixels) and direction (radians).
    seed : int
        Of the random order of pixels; equal arguments give equal segments.
    max_segments : int, optional
        The search ends with so many.

    Returns
    -------
    segments : (N, 2, 2) array of int32
        (x, y) of both ends.

    Notes
    -----
    J. Matas, C. Galambos and J. Kittler, "Robust Detection of Lines Using the Progressive Probabilistic Hough
    Transform", CVIU 78, 2000.

    See Also
    --------
    skimage.transform.probabilistic_hough_line

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> image = np.zeros((40, 60), np.uint8)
    >>> image[3:33, 17] = 1
    >>> np.sort(rvxcv.hough_segments(image, 10, line_length=20), axis=1)
    array([[[17,  3],
            [17, 32]]], dtype=int32)
    """
    source, step, roi = expect(image, "image", "8u_C1")
    record, _ = _segments_record(roi, float(rho), float(theta), seed)
    sizes = ffi.new("int32_t *")

    def find(segments, capacity, count):
        buffer = scratch(lib.rvxiHoughProbLineGetSize_8u_C1R, roi, (rho, theta), sizes)
        return lib.rvxiHoughProbLine_8u32f_C1R(source, step, roi, threshold, line_length, line_gap, segments, capacity,
                                               count, buffer, record)

    return _search(find, (2, 2), np.int32, "Point2i[]", max_segments)
