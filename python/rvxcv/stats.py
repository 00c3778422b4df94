"""Statistics: integral images and the deviations read from them; norms, means and extrema, under masks."""
from __future__ import annotations

import operator

import numpy as np
import numpy.typing as npt

from ._array import DTYPES, Members, apart, check, choose, ffi, output, same_layout, view

__all__ = ["extrema", "integral_image", "integral_images", "mean", "mean_std", "norm", "norm_difference", "rect_std"]

_CODES = {dtype: code for code, dtype in DTYPES.items()}

# ------------------------------------------------------------------------------------------------------ Integral images

_INTEGRAL = Members("rvxiIntegral_{}R"), Members("rvxiTiltedIntegral_{}R")
_SQUARES = Members("rvxiSqrIntegral_{}R"), Members("rvxiTiltedSqrIntegral_{}R")


def _result(out, name, image, roi, code, tilted):
    margin = 2 if tilted else 1
    out, (target, step, _, _) = output(out, name, (roi[1] + margin, roi[0] + margin), code)
    apart(image, out, name)
    return out, (target, step)


def integral_image(image: npt.ArrayLike, out: npt.NDArray | None = None, *, dtype: npt.DTypeLike | None = None,
                   start: float = 0, tilted: bool = False) -> npt.NDArray:
    """Sums of all pixels above and to the left, so that the sum of any rectangle takes four of them.

    Parameters
    ----------
    image : (H, W) array of uint8, float32
    out : array of the result's shape and type, optional
        Must not share memory with the image.
    dtype : {int32, float32}, optional
        Of the result: int32 (it wraps) or float32 of uint8 images, float32 of float32 images.
    start : number
        What the first row and column hold, and every sum includes once; 0 for float32 images.
    tilted : bool
        For uint8 images: sums over triangles, for rectangles turned by 45 degrees. An element is the sum of the
        triangle whose lower tip it is.

    Returns
    -------
    out : (H + 1, W + 1) array, or (H + 2, W + 2) if tilted
        The sum of ``image[t:b, l:r]`` is ``out[b, r] - out[t, r] - out[b, l] + out[t, l]``.

    Notes
    -----
    Tilted sums are those of Lienhart and Maydt, "An Extended Set of Haar-like Features for Rapid Object Detection",
    ICIP 2002.

    See Also
    --------
    skimage.transform.integral_image : the same without the first row and column.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.integral_image(np.array([[1, 2], [3, 4]], np.uint8))
    array([[ 0,  0,  0],
           [ 0,  1,  3],
           [ 0,  4, 10]], dtype=int32)
    """
    image = np.asarray(image)
    source, step, roi, key = view(image, "image")
    code, channels = key.split("_")
    wanted = ("32s" if code == "8u" else "32f") if dtype is None else choose(_CODES, np.dtype(dtype), "dtype")
    member = _INTEGRAL[tilted][f"{code if code == wanted else code + wanted}_{channels}"]
    if code == "32f" and start != 0:
        raise ValueError("integral images of float32 images start at 0")
    out, target = _result(out, "out", image, roi, wanted, tilted)
    check(member(source, step, *target, roi, *(() if code == "32f" else (start,))))
    return out


def integral_images(image: npt.ArrayLike, out: tuple[npt.NDArray, npt.NDArray] | None = None, *,
                    dtypes: tuple[npt.DTypeLike, npt.DTypeLike] = (np.int32, np.float64),
                    start: tuple[float, float] = (0, 0), tilted: bool = False) -> tuple[npt.NDArray, npt.NDArray]:
    """The integral images of the pixels and of their squares, as `rect_std` takes them.

    Parameters
    ----------
    image : (H, W) array of uint8
    out : (array, array), optional
        For the two results; they share no memory.
    dtypes : {(int32, float64), (int32, int32), (float32, float64)}
        Of the two results; int32 sums wrap.
    start : (number, number)
        What the first rows and columns hold.
    tilted : bool
        As of `integral_image`.

    Returns
    -------
    sums, squares : (H + 1, W + 1) arrays, or (H + 2, W + 2) if tilted

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> sums, squares = rvxcv.integral_images(np.array([[1, 2, 3]], np.uint8))
    >>> squares[1]
    array([ 0.,  1.,  5., 14.])
    """
    image = np.asarray(image)
    source, step, roi, key = view(image, "image")
    code, channels = key.split("_")
    first, second = (choose(_CODES, np.dtype(dtype), "dtypes") for dtype in dtypes)
    member = _SQUARES[tilted][f"{code}{first}{'' if first == second else second}_{channels}"]
    out = (None, None) if out is None else out
    sums, target = _result(out[0], "out[0]", image, roi, first, tilted)
    squares, target_of_squares = _result(out[1], "out[1]", image, roi, second, tilted)
    apart(sums, squares, "out[1]")
    check(member(source, step, *target, *target_of_squares, roi, *start))
    return sums, squares


_DEVIATION = Members("rvxiRectStdDev_{}R"), Members("rvxiTiltedRectStdDev_{}R")
_DEVIATION_SCALED = Members("rvxiRectStdDev_{}RSfs"), Members("rvxiTiltedRectStdDev_{}RSfs")
_DEVIATION_KEYS = {("32s", "32s"): "32s_C1", ("32s", "64f"): "32s32f_C1", ("32f", "64f"): "32f_C1"}


def rect_std(sums: npt.ArrayLike, squares: npt.ArrayLike, rect: tuple[int, int, int, int],
             out: npt.NDArray | None = None, *, tilted: bool = False, scale: int = 0) -> npt.NDArray:
    """The standard deviation of the pixels in a window, for every position of the window.

    Parameters
    ----------
    sums, squares : (M, N) arrays of (int32, float64), (int32, int32), (float32, float64)
        From `integral_images`, with the same ``tilted``.
    rect : (x, y, width, height)
        The window of the first result pixel; that of pixel (x, y) is moved by (x, y). A tilted window has its top
        corner at (x, y), reaches ``width`` pixels down to the right and ``height`` pixels down to the left, and must
        not leave the picture on the left: ``x >= height - 1``.
    out : array of the result's shape and type, optional
        Must not share memory with the inputs.
    tilted : bool
        Whether windows and sums are turned by 45 degrees.
    scale : int
        For two int32 inputs: the result is ``deviation * 2**-scale``, rounded half up.

    Returns
    -------
    out : array of float32, or int32 of two int32 inputs
        As many windows as fit: ``(M - y - height, N - x - width)`` upright,
        ``(M - 1 - y - width - height, N - 2 - x - width)`` tilted.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> sums, squares = rvxcv.integral_images(np.array([[0, 2, 4, 4, 4]], np.uint8))
    >>> rvxcv.rect_std(sums, squares, (0, 0, 2, 1))
    array([[1., 1., 0., 0.]], dtype=float32)
    """
    sums, squares = np.asarray(sums), np.asarray(squares)
    source, step, (columns, rows), key = view(sums, "sums")
    source_of_squares, step_of_squares, size_of_squares, key_of_squares = view(squares, "squares")
    try:
        member_key = _DEVIATION_KEYS[key[:3], key_of_squares[:3]]
    except KeyError:
        raise TypeError(f"sums and squares must be int32 and float64, int32 and int32 or float32 and float64, not "
                        f"{sums.dtype} and {squares.dtype}") from None
    if sums.ndim != 2 or squares.ndim != 2:
        raise ValueError("sums and squares must have shape (rows, columns)")
    if size_of_squares != (columns, rows):
        raise ValueError(f"squares must have the shape of sums, {sums.shape}, not {squares.shape}")
    x, y, width, height = map(operator.index, rect)
    if x < 0 or y < 0 or width < 1 or height < 1 or tilted and x < height - 1:
        raise ValueError(f"rect must have x, y >= 0 and width, height >= 1 (tilted: x >= height - 1), not {rect}")
    roi = (columns - 2 - x - width, rows - 1 - y - width - height) if tilted else (columns - x - width,
                                                                                   rows - y - height)
    if roi[0] < 1 or roi[1] < 1:
        raise ValueError(f"the window {rect} does not fit into integral images of shape {sums.shape}")
    whole = key_of_squares[:3] == "32s"
    member = (_DEVIATION_SCALED if whole else _DEVIATION)[tilted][member_key]
    out, (target, target_step, _, _) = output(out, "out", roi[::-1], "32s" if whole else "32f")
    apart(sums, out, "out")
    apart(squares, out, "out")
    check(member(source, step, source_of_squares, step_of_squares, target, target_step, roi, (x, y, width, height),
                 *((scale,) if whole else ())))
    return out


# --------------------------------------------------------------------------------------------- Norms, means and extrema


class _Family:
    """Members over one channel: of grey images, and of colour images with the channel's number."""

    def __init__(self, name, without_mask=True):
        self.masked = Members(f"{name}_{{}}MR"), Members(f"{name}_{{}}CMR")
        self.whole = (Members(f"{name}_{{}}R"), Members(f"{name}_{{}}CR")) if without_mask else None

    def __call__(self, images, mask, channel, *results):
        source, step, roi, key = view(images[0], "image")
        colour = not key.endswith("C1")
        if colour == (channel is None):
            raise ValueError("channel (0, 1 or 2) is for images of three channels, and only for them")
        arguments = [source, step]
        for other in images[1:]:
            arguments += same_layout(other, "second", roi, key)
        if mask is None and self.whole is None:
            mask = np.ones(roi[::-1], np.uint8)
        if mask is None:
            member = self.whole[colour][key]
        else:
            member = self.masked[colour][key]
            arguments += same_layout(mask, "mask", roi, "8u_C1")
        check(member(*arguments, roi, *((channel + 1,) if colour else ()), *results))


_NORM = {kind.lower(): _Family(f"rvxiNorm_{kind}", without_mask=False) for kind in ("Inf", "L1", "L2")}
_NORM_DIFFERENCE = {kind.lower(): _Family(f"rvxiNormDiff_{kind}", without_mask=False) for kind in ("Inf", "L1", "L2")}
_NORM_RELATIVE = {kind.lower(): _Family(f"rvxiNormRel_{kind}", without_mask=False) for kind in ("Inf", "L1", "L2")}
_MEAN_MASKED = _Family("rvxiMean", without_mask=False)
_MEAN_STD = _Family("rvxiMean_StdDev")
_EXTREMA = _Family("rvxiMinMaxIndx")


def norm(image: npt.ArrayLike, kind: str = "l2", mask: npt.ArrayLike | None = None, *,
         channel: int | None = None) -> float:
    """The size of an image, all of its pixels being one vector.

    Parameters
    ----------
    image : (H, W) or (H, W, 3) array of uint8, int8, uint16, float32
    kind : {"l2", "l1", "inf"}
        Root of the sum of squares, sum of magnitudes, largest magnitude. Exact for integers before the one rounding;
        "inf" passes NaN over.
    mask : (H, W) array of uint8 or bool, optional
        Pixels whose mask is 0 do not count, even if they are NaN. With none left the norm is 0.
    channel : {0, 1, 2}, optional
        Which channel of a colour image counts.

    Returns
    -------
    norm : float

    See Also
    --------
    numpy.linalg.norm

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.norm(np.array([[3, 4]], np.uint8))
    5.0
    """
    value = ffi.new("double *")
    choose(_NORM, kind, "kind")((image,), mask, channel, value)
    return value[0]


def norm_difference(first: npt.ArrayLike, second: npt.ArrayLike, kind: str = "l2", mask: npt.ArrayLike | None = None,
                    *, channel: int | None = None, relative: bool = False) -> float:
    """The norm of the difference of two images.

    Parameters
    ----------
    first, second : arrays of one shape and type
    kind, mask, channel
        As of `norm`.
    relative : bool
        Divided by the norm of the second; 0 / 0 is 0.

    Returns
    -------
    norm : float

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.norm_difference(np.array([[3, 9]], np.uint8), np.array([[5, 6]], np.uint8), "l1")
    5.0
    """
    value = ffi.new("double *")
    family = choose(_NORM_RELATIVE if relative else _NORM_DIFFERENCE, kind, "kind")
    family((first, second), mask, channel, value)
    return value[0]


def mean(image: npt.ArrayLike, mask: npt.ArrayLike | None = None, *, channel: int | None = None) -> float:
    """The mean of the pixels.

    Parameters
    ----------
    image : (H, W) or (H, W, 3) array of uint8, int8, uint16, float32
    mask : (H, W) array of uint8 or bool, optional
        Pixels whose mask is 0 do not count. With none left the mean is 0.
    channel : {0, 1, 2}, optional
        Which channel of a colour image counts.

    Returns
    -------
    mean : float
        Of integers the exact sum, divided.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.mean(np.array([[1, 2, 9]], np.uint8), [[True, True, False]])
    1.5
    """
    if mask is None:
        return mean_std(image, channel=channel)[0]
    value = ffi.new("double *")
    _MEAN_MASKED((image,), mask, channel, value)
    return value[0]


def mean_std(image: npt.ArrayLike, mask: npt.ArrayLike | None = None, *,
             channel: int | None = None) -> tuple[float, float]:
    """The mean and the standard deviation (of the population) of the pixels.

    Parameters as of `mean`.

    Returns
    -------
    mean, std : float
        Of integers from exact sums.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.mean_std(np.array([[2, 4]], np.uint8))
    (3.0, 1.0)
    """
    values = ffi.new("double[2]")
    _MEAN_STD((image,), mask, channel, values, values + 1)
    return values[0], values[1]


def extrema(image: npt.ArrayLike, mask: npt.ArrayLike | None = None, *,
            channel: int | None = None) -> tuple[float, float, tuple[int, int], tuple[int, int]]:
    """The smallest and the largest pixel, and where they are.

    Parameters as of `mean`. NaN is passed over.

    Returns
    -------
    minimum, maximum : float
    minimum_position, maximum_position : (int, int)
        (row, column) of the first of equals, row by row. With no pixel left the values are 0, the positions (-1, -1).

    See Also
    --------
    scipy.ndimage.extrema

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.extrema(np.array([[5, 3], [8, 3]], np.uint8))
    (3.0, 8.0, (0, 1), (1, 0))
    """
    values, points = ffi.new("double[2]"), ffi.new("Point2i[2]")
    _EXTREMA((image,), mask, channel, values, values + 1, points, points + 1)
    return values[0], values[1], (points[0].y, points[0].x), (points[1].y, points[1].x)
