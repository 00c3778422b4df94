"""Linear filters: derivatives, means, Gaussians, any separable kernel; gradients over colour channels."""
from __future__ import annotations

import functools
import operator

import numpy as np
import numpy.typing as npt

from ._array import (CODES, DTYPES, NORMS, Members, apart, border_code, check, choose, constant, ffi, lend, lib,
                     need_margin, output, scratch, view)

__all__ = ["colour_gradient", "convolve_separable", "gaussian", "laplacian", "scharr", "sobel", "sobel_kernel",
           "uniform_filter"]


class _Fixed:
    """One of the filters of fixed masks."""

    def __init__(self, name, sizes=True):
        self.members = Members(f"rvxiFilter{name}Border_{{}}R")
        self.queries = Members(f"rvxiFilter{name}GetBufferSize_{{}}R")
        self.sizes = sizes

    def __call__(self, image, out, size, divisor, border, value, inside, types):
        image = np.asarray(image)
        source, step, roi, key = view(image, "image")
        key, code = types.get((key, divisor is not None), (key, "32f"))
        member = self.members[key]
        if divisor is not None and code == "32f":
            raise ValueError("a divisor is for uint8 images")
        border = border_code(border, inside)
        mask = choose(_MASKS, size, "size")
        if inside:
            radius = size >> 1
            need_margin(image, "image", border, radius, radius, radius, radius)
        out, (target, target_step, _, _) = output(out, "out", image.shape, code)
        apart(image, out, "out")
        masks = (mask,) if self.sizes else ()
        divisors = () if divisor is None else (divisor,)
        buffer = scratch(self.queries[key], roi, *masks)
        check(member(source, step, target, target_step, roi, *masks, border, value, *divisors, buffer))
        return out


_MASKS = {3: lib.Mask3x3, 5: lib.Mask5x5}
_DERIVATIVES = {("8u_C1", False): ("8u16s_C1", "16s"), ("8u_C1", True): ("8u8s_C1", "8s")}
_MEANS = {("8u_C1", False): ("8u_C1", "8u")}
_ACROSS, _DOWN = (1, -1), (0, -2)  # the names of the axes
_BOTH = [pair for one in _ACROSS for other in _DOWN for pair in ((one, other), (other, one))]
_SOBEL = {(axis, order, negated): chosen for axes, order, negated, chosen in (
    (_ACROSS, 1, False, _Fixed("SobelNegVert")), (_ACROSS, 1, True, _Fixed("SobelVert")),
    (_DOWN, 1, False, _Fixed("SobelHoriz")), (_BOTH, 1, False, _Fixed("SobelCross")),
    (_ACROSS, 2, False, _Fixed("SobelVertSecond")), (_DOWN, 2, False, _Fixed("SobelHorizSecond"))) for axis in axes}
_SCHARR = {axis: chosen for axes, chosen in ((_DOWN, _Fixed("ScharrHoriz", sizes=False)),
                                             (_ACROSS, _Fixed("ScharrVert", sizes=False))) for axis in axes}
_LAPLACIAN = _Fixed("Laplacian")
_MEAN = _Fixed("Lowpass")


def sobel(image: npt.ArrayLike, axis: int | tuple[int, int] = 1, out: npt.NDArray | None = None, *, order: int = 1,
          size: int = 3, divisor: int | None = None, negated: bool = False, border: str = "replicate", value: float = 0,
          inside: str = "") -> npt.NDArray:
    """A derivative by a Sobel filter: right minus left along axis 1, below minus above along axis 0.

    Parameters
    ----------
    image : (H, W) array of uint8, float32
    axis : {1, 0, -1, -2, (0, 1)}
        Along which to derive: 1 is across the columns, (0, 1) is once along both, of the opposite sign (the mask is
        ``-1 0 1``, ``0 0 0``, ``1 0 -1``).
    out : (H, W) array of the result's type, optional
        Must not share memory with the image.
    order : {1, 2}
        The first or the second derivative (with (0, 1): 1 along each).
    size : {3, 5}
        The mask's side. Five taps are ``1 4 6 4 1``, ``-1 -2 0 2 1`` and ``1 0 -2 0 1``.
    divisor : int, optional
        For uint8 images: the result is the sum divided by this, saturated to int8. In a row of W pixels the first
        ``W - W % 16`` are rounded to nearest even, the others toward zero.
    negated : bool
        The opposite sign, for the first derivative along axis 1.
    border : {"replicate", "constant", "wrap", "mirror", "reflect"}
        Pixels outside: the nearest of the edge, ``value``, the image repeated, mirrored without or with the edge pixel.
    value : number
        Of the pixels outside with ``border="constant"``.
    inside : str or sequence of str, optional
        Sides whose outside pixels (size // 2) are read from memory, for a slice of a larger image: "left top", "all".

    Returns
    -------
    out : (H, W) array
        int16 (exact) or, with a divisor, int8 of uint8 images; float32 of float32.

    See Also
    --------
    scipy.ndimage.sobel : the same of size 3; the borders are called "nearest", "constant", "wrap", "mirror", "reflect".

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> image = np.array([[0, 0, 9, 9]] * 3, np.uint8)
    >>> rvxcv.sobel(image)[1]
    array([ 0, 36, 36,  0], dtype=int16)
    >>> rvxcv.sobel(image, divisor=4)[1]
    array([0, 9, 9, 0], dtype=int8)
    """
    try:
        chosen = _SOBEL[axis, order, negated]
    except (KeyError, TypeError):
        raise ValueError("axis must be 0 or 1 with order 1 or 2, or (0, 1) with order 1; negated is for order 1 along "
                         "axis 1") from None
    return chosen(image, out, size, divisor, border, value, inside, _DERIVATIVES)


def scharr(image: npt.ArrayLike, axis: int = 1, out: npt.NDArray | None = None, *, divisor: int | None = None,
           border: str = "replicate", value: float = 0, inside: str = "") -> npt.NDArray:
    """A derivative by a Scharr filter, ``3 10 3`` across and ``-1 0 1`` along the axis.

    Parameters and result as of `sobel`.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.scharr(np.array([[0, 0, 9, 9]] * 3, np.uint8))[1]
    array([  0, 144, 144,   0], dtype=int16)
    """
    chosen = choose(_SCHARR, axis, "axis")
    return chosen(image, out, 3, divisor, border, value, inside, _DERIVATIVES)


def laplacian(image: npt.ArrayLike, out: npt.NDArray | None = None, *, size: int = 3, divisor: int | None = None,
              border: str = "replicate", value: float = 0, inside: str = "") -> npt.NDArray:
    """The sum of the second derivatives that `sobel` computes along both axes.

    Of size 3 the mask is ``2 0 2``, ``0 -8 0``, ``2 0 2``. Parameters and result as of `sobel`.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> image = np.zeros((3, 3), np.uint8)
    >>> image[1, 1] = 1
    >>> rvxcv.laplacian(image, border="constant")
    array([[ 2,  0,  2],
           [ 0, -8,  0],
           [ 2,  0,  2]], dtype=int16)
    """
    return _LAPLACIAN(image, out, size, divisor, border, value, inside, _DERIVATIVES)


def uniform_filter(image: npt.ArrayLike, size: int = 3, out: npt.NDArray | None = None, *, border: str = "replicate",
                   value: float = 0, inside: str = "") -> npt.NDArray:
    """The mean of the pixels around each pixel.

    Parameters
    ----------
    image : (H, W) array of uint8, float32
    size : {3, 5}
        Side of the square.
    out : array like the image, optional
        Must not share memory with the image.
    border, value, inside
        As of `sobel`.

    Returns
    -------
    out : array like the image
        uint8: the exact sum, divided and rounded to nearest.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.uniform_filter(np.array([[0, 0, 9, 0, 0]] * 3, np.uint8))[1]
    array([0, 3, 3, 3, 0], dtype=uint8)
    """
    return _MEAN(image, out, size, None, border, value, inside, _MEANS)


def sobel_kernel(size: int, order: int = 1, dtype: npt.DTypeLike = np.float32, *, negated: bool = False) -> npt.NDArray:
    """A one-dimensional Sobel kernel.

    Parameters
    ----------
    size : int
        Odd.
    order : int
        Of the derivative, 0 (smoothing) to size - 1.
    dtype : {float32, int16}
        16-bit taps wrap where they leave the range.
    negated : bool
        Of the opposite sign.

    Examples
    --------
    >>> import rvxcv
    >>> rvxcv.sobel_kernel(5, 1)
    array([-1., -2.,  0.,  2.,  1.], dtype=float32)
    """
    dtype = np.dtype(dtype)
    fill = choose({np.dtype(np.float32): lib.rvxiGenSobelKernel_32f, np.dtype(np.int16): lib.rvxiGenSobelKernel_16s},
                  dtype, "dtype")
    kernel = np.empty(max(operator.index(size), 1), dtype)
    check(fill(ffi.from_buffer("float[]" if dtype.kind == "f" else "int16_t[]", kernel), size, order,
               -1 if negated else 1))
    return kernel


# ------------------------------------------------------------------------------------------------------------- Gaussian

_GAUSSIAN = Members("rvxiFilterGaussianBorder_{}R")
_GAUSSIAN_TYPES = {"8u": lib.PixelType8u, "16u": lib.PixelType16u, "16s": lib.PixelType16s, "32f": lib.PixelType32f}


class _Record:
    """A kernel and how much scratch it takes. Read-only, so that threads share it."""

    def __init__(self, roi, size, sigma, border, key):
        code, channels = key.split("_C")
        sizes = ffi.new("int32_t[2]")
        arguments = _GAUSSIAN_TYPES[code], int(channels)
        check(lib.rvxiFilterGaussianGetBufferSize(roi, size, *arguments, sizes, sizes + 1))
        self.memory = ffi.new("uint8_t[]", sizes[0])
        self.spec = ffi.cast("GaussianSpec *", self.memory)
        self.buffer_size = sizes[1]
        check(lib.rvxiFilterGaussianInit(roi, size, border, *arguments, self.spec, lend(sizes[1]), sigma))


_record = functools.lru_cache(maxsize=64)(_Record)


def gaussian(image: npt.ArrayLike, sigma: float, out: npt.NDArray | None = None, *, size: int | None = None,
             border: str = "replicate", value: float | tuple[float, float, float] = 0, inside: str = "") -> npt.NDArray:
    """A Gaussian blur.

    Parameters
    ----------
    image : (H, W) or (H, W, 3) array of uint8, uint16, int16, float32
    sigma : float
        Standard deviation in pixels, above 0.
    out : array like the image, optional
        Must not share memory with the image.
    size : int, optional
        Taps of the kernel, odd and at least 3; otherwise ``2 * int(4 * sigma + 0.5) + 1``.
    border : {"replicate", "constant"}
        Pixels outside are the nearest of the edge, or ``value``.
    value : number or three numbers
        Of the pixels outside with ``border="constant"``.
    inside : str or sequence of str, optional
        Sides whose outside pixels (size // 2) are read from memory, for a slice of a larger image: "left top", "all".

    Returns
    -------
    out : array like the image

    Notes
    -----
    Integers are filtered with the kernel rounded to multiples of 1/4096 (uint8) or 1/32768, through rows of integers;
    the rounded taps need not add up to 1. In a row of W pixels the first ``W - W % 16`` are rounded to nearest even,
    the others toward zero.

    See Also
    --------
    scipy.ndimage.gaussian_filter : the same of float32 images with ``mode="nearest"``.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> image = np.zeros((9, 9), np.float32)
    >>> image[4, 4] = 100
    >>> rvxcv.gaussian(image, 1, size=3)[4, 3:6].round(2)
    array([12.38, 20.42, 12.38], dtype=float32)
    """
    image = np.asarray(image)
    source, step, roi, key = view(image, "image")
    member = _GAUSSIAN[key]
    code = border_code(border, inside)
    if size is None:
        if not 0 < sigma < 2**20:
            raise ValueError(f"sigma must be above 0 (and below 2**20 if no size is given), not {sigma}")
        size = max(3, 2 * int(4 * sigma + 0.5) + 1)
    if inside:
        radius = size >> 1
        need_margin(image, "image", code, radius, radius, radius, radius)
    out, (target, target_step, _, _) = output(out, "out", image.shape, key.split("_")[0])
    apart(image, out, "out")
    record = _record(roi, size, sigma, code, key)
    check(member(source, step, target, target_step, roi, constant(value, key), record.spec, lend(record.buffer_size)))
    return out


# --------------------------------------------------------------------------------------------------- Separable pipeline

_ROWS = Members("rvxiFilterRowBorderPipeline_{}R"), Members("rvxiFilterRowBorderPipeline_Low_{}R")
_ROWS_SIZE = (Members("rvxiFilterRowBorderPipelineGetBufferSize_{}R"),
              Members("rvxiFilterRowBorderPipelineGetBufferSize_Low_{}R"))
_COLUMNS = Members("rvxiFilterColumnPipeline_{}R"), Members("rvxiFilterColumnPipeline_Low_{}R")
_COLUMNS_SIZE = (Members("rvxiFilterColumnPipelineGetBufferSize_{}R"),
                 Members("rvxiFilterColumnPipelineGetBufferSize_Low_{}R"))
_CTYPES = {"8u": "uint8_t", "8s": "int8_t", "16s": "int16_t", "16u": "uint16_t", "32f": "float"}
_RESULTS = {dtype: code for code, dtype in DTYPES.items()}
_STRIP_BYTES = 512 << 10  # of filtered rows that wait for the column stage: they stay in a cache


class _Stages:
    """The two stages of one combination of types."""

    def __init__(self, key, result, low):
        code, channels = key.split("_")
        self.between = "16s" if code == "8u" else code  # the type of the rows between the stages
        row_key = f"{code if code == self.between else code + self.between}_{channels}"
        column_key = f"{result if result == self.between else self.between + result}_{channels}"
        self.row, self.row_size = _ROWS[low][row_key], _ROWS_SIZE[low][row_key]
        self.column, self.column_size = _COLUMNS[low][column_key], _COLUMNS_SIZE[low][column_key]
        self.pixel = DTYPES[self.between].itemsize * int(channels[1])
        self.taps, self.rows = (ffi.typeof(f"{_CTYPES[self.between]} {kind}") for kind in ("[]", "*[]"))


_stages = functools.lru_cache(maxsize=None)(_Stages)


def _taps(kernel, anchor, stages, name):
    """The library's taps, how many of them lie before the pixel, and how many behind."""
    taps = np.asarray(kernel)
    if taps.ndim != 1 or not taps.size:
        raise ValueError(f"{name} must have shape (taps,), not {taps.shape}")
    exact = np.ascontiguousarray(taps[::-1], DTYPES[stages.between])  # the library's stages correlate
    if stages.between != "32f" and exact.dtype != taps.dtype and (exact != taps[::-1]).any():
        raise ValueError(f"{name}: the taps must be {CODES[stages.between]} numbers")
    if anchor is None:
        anchor = exact.size // 2
    if not 0 <= anchor < exact.size:
        raise ValueError(f"the anchor of {name} must lie in 0 ... {exact.size - 1}, not {anchor}")
    return ffi.from_buffer(stages.taps, exact), exact.size - 1 - anchor, anchor


@functools.lru_cache(maxsize=256)
def _slots(start, stop, first, last, lines, constant):
    """The slots of the ring that hold rows start ... stop - 1; rows outside first ... last - 1 are the border's.

    Slot ``lines``, behind the ring, holds a row of the constant.
    """
    rows = np.arange(start, stop)
    slots = rows.clip(first, last - 1) % lines
    if constant:
        slots[(rows < first) | (rows >= last)] = lines
    return slots.astype(np.uintp)


def convolve_separable(image: npt.ArrayLike, kernel_x: npt.ArrayLike, kernel_y: npt.ArrayLike | None = None,
                       out: npt.NDArray | None = None, *, dtype: npt.DTypeLike | None = None,
                       divisors: tuple[int, int] = (1, 1), anchors: tuple[int | None, int | None] = (None, None),
                       border: str = "replicate", value: float | tuple[float, float, float] = 0, inside: str = "",
                       low: bool = False) -> npt.NDArray:
    """Convolve the rows of an image with one kernel, and the columns with another.

    Parameters
    ----------
    image : (H, W) or (H, W, 3) array of uint8, uint16, int16, float32
    kernel_x : (n,) array of numbers
        Float32 for float32 images; integers in the range of uint16 for uint16 images, of int16 for others.
    kernel_y : (m,) array of numbers, optional
        Otherwise kernel_x.
    out : array of the image's shape, optional
        Must not share memory with the image.
    dtype : optional
        The result's type: of uint8 images uint8, int8 or int16; otherwise the image's type.
    divisors : (int, int)
        Of the sums of rows and of columns; integer images only.
    anchors : (int, int), optional
        The taps that lie on the pixel; n // 2 and m // 2 otherwise.
    border : {"replicate", "constant"}
        Pixels outside are the nearest of the edge, or ``value``.
    value : number or three numbers
        Of the pixels outside with ``border="constant"``.
    inside : str or sequence of str, optional
        Sides whose outside pixels are read from memory, for a slice of a larger image: "left top", "all".
    low : bool
        For int16 images: sums of 16 bits, faster where every partial sum fits. The quotients are integer ones.

    Returns
    -------
    out : array of the image's shape

    Notes
    -----
    The rows in between are int16 of uint8 and int16 images, otherwise of the image's type. The integer sums of both
    stages wrap in 32 bits (of uint16 they are floats); divided, they are saturated and rounded: in a row of W pixels
    the first ``W - W % 16`` to nearest even, the others toward zero. Floats add fused products in one order.

    See Also
    --------
    scipy.ndimage.convolve1d : the same along one axis.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> image = np.array([[0, 0, 16, 0, 0]] * 3, np.uint8)
    >>> rvxcv.convolve_separable(image, [1, 2, 1], divisors=(4, 4))[1]
    array([0, 4, 8, 4, 0], dtype=uint8)
    """
    image = np.asarray(image)
    source, step, (width, height), key = view(image, "image")
    result = key.split("_")[0] if dtype is None else choose(_RESULTS, np.dtype(dtype), "dtype")
    stages = _stages(key, result, bool(low))
    if stages.between != "32f":
        row_divisor, column_divisor = ((divisor,) for divisor in divisors)
    elif tuple(divisors) == (1, 1):
        row_divisor = column_divisor = ()
    else:
        raise ValueError("divisors are for integer images")
    taps_x, left, right = _taps(kernel_x, anchors[0], stages, "kernel_x")
    taps_y, above, below = _taps(kernel_x if kernel_y is None else kernel_y, anchors[1], stages, "kernel_y")
    border = border_code(border, inside)
    need_margin(image, "image", border, left, above, right, below)
    out, (target, target_step, _, _) = output(out, "out", image.shape, result)
    apart(image, out, "out")
    value = constant(value, key)

    # Rows first ... last - 1 are those in memory. Filtered, row r waits for the column stage in slot r % lines.
    first = -above if border & lib.BorderInMemoryTop else 0
    last = height + below if border & lib.BorderInMemoryBottom else height
    pitch = -(-width * stages.pixel // 64) * 64
    strip = min(height, max(16, _STRIP_BYTES // pitch))
    lines = strip + above + below
    memory = lend((lines + 1) * pitch, slot=1)
    ring = int(ffi.cast("uintptr_t", memory))
    base, target = int(ffi.cast("uintptr_t", source)), int(ffi.cast("uintptr_t", target))
    pixels = ffi.typeof(source).item.cname + " *"

    def filter_rows(start, start_step, slots, kind):
        rows, roi = slots * pitch + ring, (width, len(slots))
        check(stages.row(ffi.cast(pixels, start), start_step, ffi.from_buffer(stages.rows, rows), roi, taps_x,
                         len(taps_x), left, kind, value, *row_divisor, scratch(stages.row_size, roi, len(taps_x))))

    fixed = border & 15 == lib.BorderConstant
    if fixed and (first == 0 or last == height):
        flat = np.empty(image.shape[1:], image.dtype)
        flat[...] = value if key.endswith("C1") else tuple(value)
        filter_rows(flat.ctypes.data, flat.nbytes, np.array([lines], np.uintp), lib.BorderConstant)
    made = first
    for y in range(0, height, strip):
        count = min(strip, height - y)
        end = min(last, y + count + below)
        if made < end:
            filter_rows(base + made * step, step, _slots(made, end, first, last, lines, fixed), border)
            made = end
        rows = _slots(y - above, y + count + below, first, last, lines, fixed) * pitch + ring
        roi = width, count
        check(stages.column(ffi.from_buffer(stages.rows, rows),
                            ffi.cast(f"{_CTYPES[result]} *", target + y * target_step), target_step, roi, taps_y,
                            len(taps_y), *column_divisor, scratch(stages.column_size, roi, len(taps_y))))
    return out


# ------------------------------------------------------------------------------------------------------ Colour gradient

_COLOUR_GRADIENT = Members("rvxiGradientColorToGray_{}C1R")


def colour_gradient(image: npt.ArrayLike, norm: str = "l2", out: npt.NDArray | None = None) -> npt.NDArray:
    """The magnitude of a gradient over three colour channels, for detectors that take grey images.

    Parameters
    ----------
    image : (H, W, 3) array of uint8, uint16, float32
        A gradient component (a derivative filter's result) of every channel.
    norm : {"inf", "l1", "l2"}
        The largest magnitude, the sum of magnitudes, the root of the sum of squares; of integers the sums are divided
        by three (so they stay in range) and rounded to nearest.
    out : (H, W) array of the image's type, optional
        Must not share memory with the image.

    Returns
    -------
    out : (H, W) array of the image's type

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.colour_gradient(np.array([[[3, 0, -4]]], np.float32))
    array([[5.]], dtype=float32)
    """
    image = np.asarray(image)
    source, step, roi, key = view(image, "image")
    member = _COLOUR_GRADIENT[key]
    norm = choose(NORMS, norm, "norm")
    out, (target, target_step, _, _) = output(out, "out", roi[::-1], key.split("_")[0])
    apart(image, out, "out")
    check(member(source, step, target, target_step, roi, norm))
    return out
