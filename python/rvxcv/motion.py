"""Motion: optical flow, motion history, pixels on a line, patches between pixels."""
from __future__ import annotations

import threading

import numpy as np
import numpy.typing as npt

from ._array import DTYPES, Members, apart, check, choose, ffi, listed, output, view
from .pyramid import Pyramid

__all__ = ["sample_line", "subpixel_patch", "subpixel_patch_inside", "track", "update_motion_history"]

_CODES = {dtype: code for code, dtype in DTYPES.items()}

# ------------------------------------------------------------------------------------------------------ Motion history

_HISTORY = Members("rvxiUpdateMotionHistory_{}IR", by_source=True)


def update_motion_history(silhouette: npt.ArrayLike, history: npt.NDArray, timestamp: float,
                          duration: float) -> npt.NDArray:
    """Note in an image when motion was last seen, in place.

    Parameters
    ----------
    silhouette : (H, W) array of uint8, bool, uint16, float32
        Not zero where something moves now.
    history : (H, W) array of float32
        Changed in place: ``timestamp`` where something moves; elsewhere 0 if what it held is older than ``duration``.
    timestamp : float
        Now, in any unit.
    duration : float
        Not negative.

    Returns
    -------
    history : the array given

    Notes
    -----
    J. W. Davis and A. F. Bobick, "The Representation and Recognition of Action Using Temporal Templates", CVPR 1997.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> history = np.array([[1, 5, 9]], np.float32)
    >>> rvxcv.update_motion_history(np.array([[0, 0, 1]], np.uint8), history, 10, 6)
    array([[ 0.,  5., 10.]], dtype=float32)
    """
    source, step, roi, key = view(silhouette, "silhouette")
    member = _HISTORY[key]
    if history is None:
        raise TypeError("history must be an array, which is changed in place")
    history, (target, target_step, _, _) = output(history, "history", roi[::-1], "32f")
    apart(np.asarray(silhouette), history, "history")
    check(member(source, step, target, target_step, roi, timestamp, duration))
    return history


# ------------------------------------------------------------------------------------------------------- Line sampling

_LINE = Members("rvxiSampleLine_{}R")


def sample_line(image: npt.ArrayLike, start: tuple[int, int], end: tuple[int, int],
                out: npt.NDArray | None = None) -> npt.NDArray:
    """The pixels on the straight line from one pixel to another, both included.

    Parameters
    ----------
    image : (H, W) or (H, W, 3) array of uint8, uint16, float32
    start, end : (x, y)
        Pixels of the image.
    out : array of the result's shape and type, contiguous, optional

    Returns
    -------
    out : (N,) or (N, 3) array of the image's type
        ``N = max(abs(x2 - x1), abs(y2 - y1)) + 1``

    Notes
    -----
    J. E. Bresenham, "Algorithm for computer control of a digital plotter", IBM Systems Journal 4(1), 1965.

    See Also
    --------
    skimage.draw.line, skimage.measure.profile_line

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.sample_line(np.arange(12, dtype=np.uint8).reshape(3, 4), (0, 0), (3, 2))
    array([ 0,  5,  6, 11], dtype=uint8)
    """
    image = np.asarray(image)
    source, step, roi, key = view(image, "image")
    member = _LINE[key]
    (x1, y1), (x2, y2) = start, end
    length = max(abs(int(x2) - int(x1)), abs(int(y2) - int(y1))) + 1
    if not (0 <= x1 < roi[0] and 0 <= x2 < roi[0] and 0 <= y1 < roi[1] and 0 <= y2 < roi[1]):
        raise ValueError(f"start and end must be pixels (x, y) of an image of {roi[0]} x {roi[1]}, not {start}, {end}")
    out, line = listed(out, "out", (length, *image.shape[2:]), key.split("_")[0])
    apart(image, out, "out")
    check(member(source, step, roi, line, (x1, y1), (x2, y2)))
    return out


# --------------------------------------------------------------------------------------------------- Sub-pixel copies

_PATCH = Members("rvxiCopySubpix_{}R")
_PATCH_SCALED = Members("rvxiCopySubpix_{}RSfs")
_PATCH_INSIDE = Members("rvxiCopySubpixIntersect_{}R")
_PATCH_INSIDE_SCALED = Members("rvxiCopySubpixIntersect_{}RSfs")


def _patch(members, scaled, image, centre, shape, out, dtype, scale, *results):
    image = np.asarray(image)
    source, step, roi, key = view(image, "image")
    code, channels = key.split("_")
    result = code if dtype is None else choose(_CODES, np.dtype(dtype), "dtype")
    with_scale = (code, result) == ("8u", "16u")
    member = (scaled if with_scale else members)[f"{code if code == result else code + result}_{channels}"]
    if scale and not with_scale:
        raise ValueError("scale is for uint16 patches of uint8 images")
    height, width = shape
    out, (target, target_step, size, _) = output(out, "out", (height, width), result)
    apart(image, out, "out")
    x, y = centre
    check(member(source, step, roi, target, target_step, size, (x, y), *results, *((scale,) if with_scale else ())))
    return out


def subpixel_patch(image: npt.ArrayLike, centre: tuple[float, float], shape: tuple[int, int],
                   out: npt.NDArray | None = None, *, dtype: npt.DTypeLike | None = None,
                   scale: int = 0) -> npt.NDArray:
    """A patch of an image around a point between pixels, interpolated linearly.

    Parameters
    ----------
    image : (H, W) array of uint8, uint16, float32
        Continued by its edge.
    centre : (x, y)
        Of the patch, in pixels of the image; finite, below 1e9.
    shape : (height, width)
        Of the patch.
    out : array of the patch's shape and type, optional
        Must not share memory with the image.
    dtype : optional
        The patch's type: the image's, or float32; of uint8 images uint16 as well.
    scale : int
        For uint16 patches of uint8 images: the values are multiplied by ``2**-scale``, -16 ... 16.

    Returns
    -------
    out : array
        Integers are rounded to nearest, halves to even.

    See Also
    --------
    scipy.ndimage.map_coordinates : of order 1 and ``mode="nearest"``.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.subpixel_patch(np.array([[0, 10, 20, 30]], np.uint8), (1.25, 0), (1, 2), dtype=np.float32)
    array([[ 7.5, 17.5]], dtype=float32)
    """
    return _patch(_PATCH, _PATCH_SCALED, image, centre, shape, out, dtype, scale)


def subpixel_patch_inside(image: npt.ArrayLike, centre: tuple[float, float], shape: tuple[int, int],
                          out: npt.NDArray | None = None, *, dtype: npt.DTypeLike | None = None,
                          scale: int = 0) -> tuple[npt.NDArray, tuple[slice, slice]]:
    """The part of a patch (see `subpixel_patch`) that is made of pixels of the image alone.

    Parameters as of `subpixel_patch`.

    Returns
    -------
    out : array
        The patch. Pixels for which the image has none are not written; they are 0 if no out was given.
    inside : (slice, slice)
        ``out[inside]`` is the part that was written. If there is none, `rvxcv.Error` ("StatusError") is raised.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> patch, inside = rvxcv.subpixel_patch_inside(np.array([[5, 6, 7]], np.uint8), (0, 0), (1, 3))
    >>> patch, patch[inside]
    (array([[0, 5, 6]], dtype=uint8), array([[5, 6]], dtype=uint8))
    """
    image = np.asarray(image)
    if out is None:
        out = np.zeros(shape, image.dtype if dtype is None else dtype)
    corners = ffi.new("Point2i[2]")
    _patch(_PATCH_INSIDE, _PATCH_INSIDE_SCALED, image, centre, shape, out, dtype, scale, corners, corners + 1)
    first, last = corners
    return out, (slice(first.y, last.y + 1), slice(first.x, last.x + 1))


# --------------------------------------------------------------------------------------------------------- Optical flow

_FLOW_INIT = Members("rvxiOpticalFlowPyrLKInitAlloc_{}R")
_FLOW_FREE = Members("rvxiOpticalFlowPyrLKFree_{}R")
_FLOW = Members("rvxiOpticalFlowPyrLK_{}R")
_flow_states = threading.local()


def _flow_state(key, window):
    """This thread's work memory for windows of this size. It is the window's alone: images may be of any size."""
    states = _flow_states.__dict__
    state = states.get((key, window))
    if state is None:
        made = ffi.new("OpticalFlowState **")
        check(_FLOW_INIT[key](made, (1, 1), window, 0))
        states.clear()
        state = states[key, window] = ffi.gc(made[0], _FLOW_FREE[key])
    return state


def _points(points, name):
    array = np.array(points, np.float32)  # a copy: out may be the caller's points
    if array.ndim != 2 or array.shape[1] != 2:
        raise ValueError(f"{name} must have shape (N, 2), not {array.shape}")
    return array


def track(previous: npt.ArrayLike | Pyramid, following: npt.ArrayLike | Pyramid, points: npt.ArrayLike,
          out: tuple[npt.NDArray, npt.NDArray, npt.NDArray] | None = None, *, window: int = 21, levels: int = 4,
          guess: npt.ArrayLike | None = None, iterations: int = 20,
          threshold: float = 0.01) -> tuple[npt.NDArray, npt.NDArray, npt.NDArray]:
    """Follow points from one frame to the next, by optical flow over two pyramids.

    Parameters
    ----------
    previous, following : (H, W) arrays of uint8, uint16, float32, or `Pyramid` of such
        Of one type. For a film make the pyramid of every frame once.
    points : (N, 2) array
        Positions (x, y) in the previous frame.
    out : (array, array, array), optional
        For the results; contiguous.
    window : int
        Side of the square around a point that is compared.
    levels : int
        To start at, above level 0 (the frame itself), or the highest that both pyramids have.
    guess : (N, 2) array, optional
        Positions in the following frame, where something is known; otherwise those in the previous one.
    iterations : int
        Steps on each level, at most.
    threshold : float
        In pixels: a shorter step is the last.

    Returns
    -------
    points : (N, 2) array of float32
        Positions in the following frame. Of a lost point: where it was when it was lost.
    status : (N,) array of uint8
        0 where the point was followed through all levels; otherwise the level that lost it, plus 1.
    error : (N,) array of float32
        Root of the mean squared difference of the two windows; 0 of lost points.

    Notes
    -----
    J.-Y. Bouguet, "Pyramidal Implementation of the Lucas Kanade Feature Tracker", 2000.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> y, x = np.mgrid[:60, :80]
    >>> frame = (128 + 60 * np.sin(x / 5) * np.cos(y / 4)).astype(np.float32)
    >>> points, status, error = rvxcv.track(frame[:, 3:], frame[:, :-3], [(30, 30)], levels=2)
    >>> points.round(1), status
    (array([[33., 30.]], dtype=float32), array([0], dtype=uint8))
    """
    previous, following = (frame if isinstance(frame, Pyramid) else Pyramid(frame, levels)
                           for frame in (previous, following))
    key = previous._key
    member = _FLOW[key]
    if following._key != key:
        raise TypeError(f"the frames must be of one type, not {previous[0].dtype} and {following[0].dtype}")
    start = _points(points, "points")
    first_guess = start if guess is None else _points(guess, "guess")
    if first_guess.shape != start.shape:
        raise ValueError(f"guess must have the points' shape {start.shape}, not {first_guess.shape}")
    count = len(start)
    out = (None, None, None) if out is None else out
    found, found_pointer = listed(out[0], "out[0]", (count, 2), "32f")
    status, status_pointer = listed(out[1], "out[1]", (count,), "8u")
    error, error_pointer = listed(out[2], "out[2]", (count,), "32f")
    for name, one, other in (("out[1]", found, status), ("out[2]", found, error), ("out[2]", status, error)):
        apart(one, other, name)
    found[...] = first_guess
    if count:
        level = min(levels, len(previous) - 1, len(following) - 1)
        check(member(previous._record, following._record, ffi.from_buffer("Point2f[]", start),
                     ffi.cast("Point2f *", found_pointer), status_pointer, error_pointer, count, window, level,
                     iterations, threshold, _flow_state(key, window)))
    return found, status, error
