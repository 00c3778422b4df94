"""Features: Canny edges, corner measures, peaks, FAST corners."""
from __future__ import annotations

import functools
from collections.abc import Sequence

import numpy as np
import numpy.typing as npt

from ._array import (Members, apart, apart_or_same, border_code, check, choose, expect, ffi, lib, need_margin, output,
                     same_layout, scratch, view)

__all__ = ["canny", "canny_from_derivatives", "corner_fast", "corner_harris", "corner_points", "corner_shi_tomasi",
           "find_peaks", "structure_eigen", "suppress_lines"]

_CANNY = Members("rvxiCanny_{}R", by_source=True)
_CANNY_FILTERS = {"sobel": lib.CannyFilterSobel, "scharr": lib.CannyFilterScharr}
_CANNY_NORMS = {"l1": lib.CannyNormL1, "l2": lib.CannyNormL2}
_CANNY_MASKS = {3: lib.Mask3x3, 5: lib.Mask5x5}
_SHI_TOMASI = (Members("rvxiMinEigenVal_{}R", by_source=True),
               Members("rvxiMinEigenValGetBufferSize_{}R", by_source=True))
_EIGEN = (Members("rvxiEigenValsVecs_{}R", by_source=True),
          Members("rvxiEigenValsVecsGetBufferSize_{}R", by_source=True))
_EIGEN_KERNELS = {"sobel": lib.MinEigenValSobel, "scharr": lib.MinEigenValScharr}
_HARRIS = (Members("rvxiHarrisCorner_{}R", by_source=True),
           Members("rvxiHarrisCornerGetBufferSize_{}R", by_source=True))
_KERNELS = {"sobel": lib.DerivativeSobel, "scharr": lib.DerivativeScharr, "central": lib.DerivativeCentral}
_PEAKS = Members("rvxiFindPeaks3x3_{}R"), Members("rvxiFindPeaks3x3GetBufferSize_{}R")
_NEIGHBOURHOODS = {"square": lib.PeakSquare, "cross": lib.PeakCross}


def canny(image: npt.ArrayLike, low: float, high: float, out: npt.NDArray | None = None, *, norm: str = "l2",
          kernel: str = "sobel", size: int = 3, border: str = "replicate", value: int = 0,
          inside: str | Sequence[str] = "") -> npt.NDArray[np.uint8]:
    """Edges of a grey image.

    Parameters
    ----------
    image : (H, W) array of uint8
    low, high : float
        Thresholds of the gradient's magnitude, ``0 <= low <= high``: edges are pixels above ``high``, and those above
        ``low`` that are connected to them. Derivatives are sums: a step of 10 measures 40 with the smallest Sobel
        kernel.
    out : (H, W) array of uint8, optional
        Must not share memory with the image.
    norm : {"l2", "l1"}
        The magnitude: Euclidean, or the sum of the derivatives' absolute values.
    kernel : {"sobel", "scharr"}
    size : {3, 5}
        Of the kernel; 5 with "sobel" only.
    border : {"replicate", "constant"}
    value : int
        The pixels outside with the border "constant".
    inside : str or sequence of str, optional
        Sides whose outside pixels are read from memory, as of `erode`.

    Returns
    -------
    out : (H, W) array of uint8
        255 on edges, else 0.

    Notes
    -----
    J. Canny, "A Computational Approach to Edge Detection", IEEE PAMI 8(6), 1986.

    See Also
    --------
    skimage.feature.canny : with a Gaussian filter before, and thresholds for other derivatives.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> image = np.zeros((3, 6), np.uint8)
    >>> image[:, 3:] = 100
    >>> rvxcv.canny(image, low=40, high=100)
    array([[  0,   0, 255,   0,   0,   0],
           [  0,   0, 255,   0,   0,   0],
           [  0,   0, 255,   0,   0,   0]], dtype=uint8)
    """
    image = np.asarray(image)
    source, step, roi = expect(image, "image", "8u_C1")
    mask = choose(_CANNY_MASKS, size, "size")
    kernel = choose(_CANNY_FILTERS, kernel, "kernel")
    norm = choose(_CANNY_NORMS, norm, "norm")
    code = border_code(border, inside)
    if inside:
        need_margin(image, "image", code, *[size // 2] * 4)
    out, (target, target_step, _, _) = output(out, "out", image.shape, "8u")
    apart(image, out, "out")
    buffer = scratch(lib.rvxiCannyBorderGetSize, roi, kernel, mask, lib.PixelType8u)
    check(lib.rvxiCannyBorder_8u_C1R(source, step, target, target_step, roi, kernel, mask, code, value, norm, buffer,
                                     low, high))
    return out


def canny_from_derivatives(dx: npt.ArrayLike, dy: npt.ArrayLike, low: float, high: float,
                           out: npt.NDArray | None = None) -> npt.NDArray[np.uint8]:
    """Edges from two derivative images, with the magnitude abs(dx) + abs(dy).

    Parameters
    ----------
    dx, dy : (H, W) arrays of int16 or float32
        Right minus left, below minus above.
    low, high : float
        As of `canny`.
    out : (H, W) array of uint8, optional
        Must not share memory with the derivatives.

    Returns
    -------
    out : (H, W) array of uint8
        255 on edges, else 0.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> dx = np.array([[0, 30, 80, 20, 0]], np.int16)
    >>> rvxcv.canny_from_derivatives(dx, np.zeros_like(dx), 10, 50)
    array([[  0,   0, 255,   0,   0]], dtype=uint8)
    """
    dx, dy = np.asarray(dx), np.asarray(dy)
    first, first_step, roi, key = view(dx, "dx")
    member = _CANNY[key]
    second, second_step = same_layout(dy, "dy", roi, key)
    out, (target, target_step, _, _) = output(out, "out", dx.shape, "8u")
    apart(dx, out, "out")
    apart(dy, out, "out")
    buffer = scratch(lib.rvxiCannyGetSize, roi)
    check(member(first, first_step, second, second_step, target, target_step, roi, low, high, buffer))
    return out


def corner_shi_tomasi(image: npt.ArrayLike, out: npt.NDArray | None = None, *, kernel: str = "sobel",
                      aperture: int = 3, block: int = 3) -> npt.NDArray[np.float32]:
    """How well a point can be tracked: the smaller eigenvalue of the gradient covariance in a block around it.

    Parameters
    ----------
    image : (H, W) array of uint8, float32
    out : (H, W) array of float32, optional
        Must not share memory with the image.
    kernel : {"sobel", "scharr"}
    aperture : {3, 5}
        The kernel's size; 5 with "sobel" only.
    block : {3, 5}
        The side of the block.

    Returns
    -------
    out : (H, W) array of float32

    Notes
    -----
    J. Shi and C. Tomasi, "Good Features to Track", CVPR 1994.

    See Also
    --------
    skimage.feature.corner_shi_tomasi : with a Gaussian window and another scale.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> image = np.zeros((9, 9), np.uint8)
    >>> image[4:, 4:] = 200
    >>> response = rvxcv.corner_shi_tomasi(image)
    >>> [int(place) for place in np.unravel_index(response.argmax(), response.shape)]
    [4, 4]
    """
    image = np.asarray(image)
    source, step, roi, key = view(image, "image")
    member, query = _SHI_TOMASI[0][key], _SHI_TOMASI[1][key]
    kernel = choose(_EIGEN_KERNELS, kernel, "kernel")
    out, (target, target_step, _, _) = output(out, "out", image.shape, "32f")
    apart(image, out, "out")
    buffer = scratch(query, roi, aperture, block)
    check(member(source, step, target, target_step, roi, kernel, aperture, block, buffer))
    return out


def structure_eigen(image: npt.ArrayLike, out: npt.NDArray | None = None, *, kernel: str = "sobel", aperture: int = 3,
                    block: int = 3) -> npt.NDArray[np.float32]:
    """Eigenvalues and eigenvectors of the gradient covariance in a block around every pixel.

    Parameters
    ----------
    image : (H, W) array of uint8, float32
    out : (H, W, 6) array of float32, optional
        Must not share memory with the image.
    kernel, aperture, block
        As of `corner_shi_tomasi`.

    Returns
    -------
    out : (H, W, 6) array of float32
        The larger eigenvalue, the smaller one, (x, y) of the direction in which the image changes most, (x, y) of the
        direction across.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> ramp = np.tile(np.arange(0, 80, 10, dtype=np.uint8), (5, 1))
    >>> rvxcv.structure_eigen(ramp)[2, 4, 2:]
    array([ 1.,  0., -0.,  1.], dtype=float32)
    """
    image = np.asarray(image)
    source, step, roi, key = view(image, "image")
    member, query = _EIGEN[0][key], _EIGEN[1][key]
    kernel = choose(_EIGEN_KERNELS, kernel, "kernel")
    shape = roi[1], roi[0], 6
    if out is None:
        out = np.empty(shape, np.float32)
    elif getattr(out, "shape", shape) != shape:
        raise ValueError(f"out must have shape {shape}, not {out.shape}")
    flat = out
    if isinstance(out, np.ndarray):
        flat = out.view()
        try:
            flat.shape = roi[1], 6 * roi[0]
        except AttributeError:
            raise ValueError("out: the pixels of a row and their numbers must stand side by side in memory") from None
    _, (target, target_step, _, _) = output(flat, "out", (roi[1], 6 * roi[0]), "32f")
    apart(image, out, "out")
    buffer = scratch(query, roi, aperture, block)
    check(member(source, step, target, target_step, roi, kernel, aperture, block, buffer))
    return out


def corner_harris(image: npt.ArrayLike, out: npt.NDArray | None = None, *, k: float = 0.05, kernel: str = "sobel",
                  aperture: int = 3, block: int = 3) -> npt.NDArray[np.float32]:
    """The measure of Harris and Stephens: positive at corners, negative on edges.

    Parameters
    ----------
    image : (H, W) array of uint8, float32
    out : (H, W) array of float32, optional
        Must not share memory with the image.
    k : float
        ``det - k * trace**2`` of the gradient covariance; usually 0.04 to 0.06, not negative.
    kernel : {"sobel", "scharr", "central"}
    aperture : {3, 5}
        The kernel's size; 5 with "sobel" only.
    block : {3, 5}
        The side of the block that the covariance is the mean of.

    Returns
    -------
    out : (H, W) array of float32

    Notes
    -----
    C. Harris and M. Stephens, "A Combined Corner and Edge Detector", Alvey Vision Conference 1988.

    See Also
    --------
    skimage.feature.corner_harris : with a Gaussian window and another scale.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> image = np.zeros((9, 9), np.uint8)
    >>> image[4:, 4:] = 200
    >>> response = rvxcv.corner_harris(image)
    >>> bool(response[4, 4] > 0), bool(response[8, 4] < 0)
    (True, True)
    """
    image = np.asarray(image)
    source, step, roi, key = view(image, "image")
    member, query = _HARRIS[0][key], _HARRIS[1][key]
    kernel = choose(_KERNELS, kernel, "kernel")
    out, (target, target_step, _, _) = output(out, "out", image.shape, "32f")
    apart(image, out, "out")
    buffer = scratch(query, roi, aperture, block)
    check(member(source, step, target, target_step, roi, kernel, aperture, block, k, buffer))
    return out


def suppress_lines(image: npt.ArrayLike, candidates: npt.ArrayLike, out: npt.NDArray | None = None, *,
                   ratio: float = 0.1, kernel: str = "sobel", aperture: int = 3,
                   block: int = 3) -> npt.NDArray[np.uint8]:
    """Corner candidates without those that lie on an edge.

    Parameters
    ----------
    image : (H, W) array of uint8
    candidates : (H, W) array of uint8
        Pixels that are not zero, as `corner_fast` marks them.
    out : (H, W) array of uint8, optional
        May be the candidates; must not share memory with the image.
    ratio : float
        What share of the larger eigenvalue the smaller one must be, 0 to 1.
    kernel, aperture, block
        As of `corner_harris`.

    Returns
    -------
    out : (H, W) array of uint8
        The candidates that stay, with their values; else 0.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> image = np.zeros((9, 9), np.uint8)
    >>> image[4:, 4:] = 200
    >>> candidates = np.zeros((9, 9), np.uint8)
    >>> candidates[4, 4] = candidates[8, 4] = 255
    >>> [place.tolist() for place in np.nonzero(rvxcv.suppress_lines(image, candidates))]
    [[4], [4]]
    """
    image, candidates = np.asarray(image), np.asarray(candidates)
    source, step, roi = expect(image, "image", "8u_C1")
    marks, marks_step, _ = expect(candidates, "candidates", "8u_C1", roi)
    kernel = choose(_KERNELS, kernel, "kernel")
    out, (target, target_step, _, _) = output(out, "out", image.shape, "8u")
    apart(image, out, "out")
    apart_or_same(candidates, out, "out")
    buffer = scratch(lib.rvxiLineSuppressionGetBufferSize_8u_C1R, roi, aperture, block)
    check(lib.rvxiLineSuppression_8u_C1R(source, step, marks, marks_step, target, target_step, roi, kernel, aperture,
                                         block, ratio, buffer))
    return out


def find_peaks(response: npt.ArrayLike, threshold: float, *, neighbourhood: str = "square",
               exclude_border: int = 1) -> npt.NDArray[np.int32]:
    """Local extrema of a signed response image.

    Parameters
    ----------
    response : (H, W) array of int32, float32
    threshold : number
        A peak's absolute value is larger.
    neighbourhood : {"square", "cross"}
        A positive peak is the largest of all eight neighbours or of the four beside it, another one the smallest.
        Plateaus are not thinned.
    exclude_border : int
        Peaks are at least so far from every edge; from 1 to half of the smaller side.

    Returns
    -------
    peaks : (N, 2) array of int32
        Their (x, y), row by row.

    See Also
    --------
    skimage.feature.peak_local_max : whose places are (row, column).

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> response = np.zeros((5, 6), np.float32)
    >>> response[1, 4], response[3, 2] = 9, -7
    >>> rvxcv.find_peaks(response, 5)
    array([[4, 1],
           [2, 3]], dtype=int32)
    """
    response = np.asarray(response)
    source, step, roi, key = view(response, "response")
    member, query = _PEAKS[0][key], _PEAKS[1][key]
    neighbourhood = choose(_NEIGHBOURHOODS, neighbourhood, "neighbourhood")
    buffer = scratch(query, roi[0])
    count = ffi.new("int32_t *")
    capacity = 1024
    while True:  # a full list does not tell how many there are
        peaks = np.empty((capacity, 2), np.int32)
        check(member(source, step, roi, threshold, ffi.from_buffer("Point2i[]", peaks), capacity, count, neighbourhood,
                     exclude_border, buffer))
        if count[0] < capacity:
            return peaks[:count[0]].copy()
        capacity *= 4


@functools.lru_cache(maxsize=64)
def _fast_record(radius, arc, threshold, flags):
    """A record of FAST corners and its memory. Read-only, so that threads share it."""
    size = ffi.new("int32_t *")
    check(lib.rvxiFastNGetSize_8u_C1R(radius, arc, size))
    memory = ffi.new("uint8_t[]", size[0])
    record = ffi.cast("FastNSpec *", memory)
    check(lib.rvxiFastNInit_8u_C1R(radius, arc, threshold, flags, record))
    return record, memory


def corner_fast(image: npt.ArrayLike, threshold: int, out: npt.NDArray | None = None, *, radius: int = 3,
                arc: int = 9, scores: bool = True, thin: bool = True) -> npt.NDArray[np.uint8]:
    """Corners whose surrounding circle has an arc that is brighter or darker.

    Parameters
    ----------
    image : (H, W) array of uint8
    threshold : int
        By how much all points of the arc exceed (or stay below) the pixel in its middle; 0 to 254.
    out : (H, W) array of uint8, optional
        Must not share memory with the image.
    radius : {3, 2, 1}
        Of the circle, of 16, 12 or 8 points.
    arc : int
        The points that must agree: 9 to 16, 7 to 12 or 5 to 8.
    scores : bool
        Mark a corner with its score, the smallest difference along the arc, instead of 255.
    thin : bool
        Of neighbouring corners keep the one with the largest score; needs ``scores``.

    Returns
    -------
    out : (H, W) array of uint8
        0 where there is no corner. `corner_points` makes a list of it.

    Notes
    -----
    E. Rosten and T. Drummond, "Machine Learning for High-Speed Corner Detection", ECCV 2006.

    See Also
    --------
    skimage.feature.corner_fast : circles of radius 3 only, with another score.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> image = np.zeros((15, 15), np.uint8)
    >>> image[6:, 6:] = 200
    >>> points, scores = rvxcv.corner_points(rvxcv.corner_fast(image, 20))
    >>> points, scores
    (array([[6, 6]], dtype=int32), array([200], dtype=int32))
    """
    image = np.asarray(image)
    source, step, roi = expect(image, "image", "8u_C1")
    out, (target, target_step, _, _) = output(out, "out", image.shape, "8u")
    apart(image, out, "out")
    record, _ = _fast_record(radius, arc, threshold, lib.FastScore * bool(scores) | lib.FastNonMax * bool(thin))
    buffer = scratch(lib.rvxiFastNGetBufferSize_8u_C1R, roi)
    check(lib.rvxiFastN_8u_C1R(source, step, target, target_step, roi, ffi.new("int32_t *"), record, buffer))
    return out


def corner_points(corners: npt.ArrayLike) -> tuple[npt.NDArray[np.int32], npt.NDArray[np.int32]]:
    """The pixels of a map that are not zero, row by row.

    Parameters
    ----------
    corners : (H, W) array of uint8 or bool

    Returns
    -------
    points : (N, 2) array of int32
        Their (x, y).
    scores : (N,) array of int32
        Their values.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.corner_points(np.array([[0, 0, 7], [9, 0, 0]], np.uint8))
    (array([[2, 0],
           [0, 1]], dtype=int32), array([7, 9], dtype=int32))
    """
    corners = np.asarray(corners)
    source, step, roi = expect(corners, "corners", "8u_C1")
    capacity = max(1, np.count_nonzero(corners))
    found = np.empty((capacity, 3), np.int32)
    count = ffi.new("int32_t *")
    check(lib.rvxiFastN2DToVec_8u_C1R(source, step, roi, ffi.from_buffer("FastCorner[]", found), capacity, count))
    return found[:count[0], :2].copy(), found[:count[0], 2].copy()
