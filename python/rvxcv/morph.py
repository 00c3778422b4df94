"""Flat morphology: erosion, dilation and compound operations with any footprint, minimum and maximum filters."""
from __future__ import annotations

import functools
from collections.abc import Sequence

import numpy as np
import numpy.typing as npt

from ._array import Members, apart, border_code, check, ffi, lend, need_margin, output, scratch, view

__all__ = ["dilate", "ellipse", "erode", "maximum_filter", "minimum_filter", "morph_blackhat", "morph_close",
           "morph_gradient", "morph_open", "morph_tophat"]

_GET_SIZE = Members("rvxiMorphologyBorderGetSize_{}R")
_INIT = Members("rvxiMorphologyBorderInit_{}R")
ERODE = Members("rvxiErodeBorder_{}R")
DILATE = Members("rvxiDilateBorder_{}R")
_ADV_GET_SIZE = Members("rvxiMorphAdvGetSize_{}R")
_ADV_INIT = Members("rvxiMorphAdvInit_{}R")
OPEN = Members("rvxiMorphOpenBorder_{}R")
CLOSE = Members("rvxiMorphCloseBorder_{}R")
TOPHAT = Members("rvxiMorphTophatBorder_{}R")
BLACKHAT = Members("rvxiMorphBlackhatBorder_{}R")
GRADIENT = Members("rvxiMorphGradientBorder_{}R")
_MINIMUM = Members("rvxiFilterMinBorderReplicate_{}R"), Members("rvxiFilterMinGetBufferSize_{}R")
_MAXIMUM = Members("rvxiFilterMaxBorderReplicate_{}R"), Members("rvxiFilterMaxGetBufferSize_{}R")


def ellipse(width: int, height: int) -> npt.NDArray[np.uint8]:
    """The footprint of a solid ellipse, as (height, width) array of uint8 with 1 inside.

    Examples
    --------
    >>> import rvxcv
    >>> rvxcv.ellipse(5, 3)
    array([[0, 1, 1, 1, 0],
           [1, 1, 1, 1, 1],
           [0, 1, 1, 1, 0]], dtype=uint8)
    """
    y, x = np.ogrid[:height, :width]
    inside = ((2 * x - width + 1) / width) ** 2 + ((2 * y - height + 1) / height) ** 2 <= 1
    return inside.astype(np.uint8)


class _Record:
    """An analysed footprint for images of an extent. Read-only, so that threads share it."""

    def __init__(self, kind, get_size, init, extent, mask, shape):
        size = shape[1], shape[0]
        sizes = ffi.new("int32_t[2]")
        check(get_size(extent, size, sizes, sizes + 1))
        self.memory = ffi.new("uint8_t[]", sizes[0])
        self.spec = ffi.cast(kind, self.memory)
        self.buffer_size = sizes[1]
        check(init(extent, mask, size, self.spec, lend(sizes[1])))


@functools.lru_cache(maxsize=64)
def _flat_record(key, roi_width, mask, shape):
    return _Record("MorphSpec *", _GET_SIZE[key], _INIT[key], roi_width, mask, shape)


@functools.lru_cache(maxsize=64)
def _compound_record(key, roi, mask, shape):
    return _Record("MorphAdvSpec *", _ADV_GET_SIZE[key], _ADV_INIT[key], roi, mask, shape)


def plan(members, key, roi, footprint):
    """What an operation needs: its record, and the pixels that it reads to the left, above, to the right and below."""
    mask = np.asarray(footprint)
    if mask.dtype != np.uint8:
        mask = mask != 0
    if mask.ndim != 2 or not mask.size:
        raise ValueError(f"footprint must have shape (height, width), not {mask.shape}")
    shape = mask.shape
    right, below = shape[1] - 1, shape[0] - 1
    if members is ERODE or members is DILATE:
        record = _flat_record(key, roi[0], mask.tobytes(), shape)
    else:
        record = _compound_record(key, roi, mask.tobytes(), shape)
        if members is not GRADIENT:  # two steps, the second with the footprint turned
            return record, (right, below, right, below)
    left, above = right >> 1, below >> 1
    return record, (left, above, right - left, below - above)


def _apply(members, image, footprint, out, border, inside):
    image = np.asarray(image)
    source, step, roi, key = view(image, "image")
    member = members[key]
    code = border_code(border, inside)
    record, margin = plan(members, key, roi, footprint)
    if inside:
        need_margin(image, "image", code, *margin)
    out, (target, target_step, _, _) = output(out, "out", image.shape, key.split("_")[0])
    apart(image, out, "out")
    check(member(source, step, target, target_step, roi, code, 0, record.spec, lend(record.buffer_size)))
    return out


def erode(image: npt.ArrayLike, footprint: npt.ArrayLike, out: npt.NDArray | None = None, *,
          border: str = "replicate", inside: str | Sequence[str] = "") -> npt.NDArray:
    """Erosion: the minimum of the pixels under a footprint.

    Parameters
    ----------
    image : (H, W) array of uint8, uint16, int16, float32; (H, W, 3) or (H, W, 4) of uint8, float32
        Channels are filtered independently.
    footprint : (h, w) array
        Non-zero elements belong to it; its anchor is ((w - 1) // 2, (h - 1) // 2). Without any the image is copied.
    out : array like the image, optional
        Must not share memory with the image.
    border : {"replicate"}
        Pixels outside are the nearest ones of the edge.
    inside : str or sequence of str, optional
        Sides whose outside pixels are read from memory, for an image that is a slice of a larger one: "left top",
        "all".

    Returns
    -------
    out : array like the image

    See Also
    --------
    scipy.ndimage.grey_erosion : with ``mode="nearest"`` the same for footprints of odd size.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> image = np.array([[9, 9, 1, 9, 9]], np.uint8)
    >>> rvxcv.erode(image, np.ones((1, 3)))
    array([[9, 1, 1, 1, 9]], dtype=uint8)
    """
    return _apply(ERODE, image, footprint, out, border, inside)


def dilate(image: npt.ArrayLike, footprint: npt.ArrayLike, out: npt.NDArray | None = None, *,
           border: str = "replicate", inside: str | Sequence[str] = "") -> npt.NDArray:
    """Dilation: the maximum of the pixels under a footprint, which is not reflected.

    Parameters and result as of `erode`.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> image = np.array([[0, 0, 7, 0, 0]], np.uint8)
    >>> rvxcv.dilate(image, np.ones((1, 3)))
    array([[0, 7, 7, 7, 0]], dtype=uint8)
    """
    return _apply(DILATE, image, footprint, out, border, inside)


def morph_open(image: npt.ArrayLike, footprint: npt.ArrayLike, out: npt.NDArray | None = None, *,
               border: str = "replicate", inside: str | Sequence[str] = "") -> npt.NDArray:
    """Opening: erosion, then dilation with the footprint turned by 180 degrees.

    Parameters and result as of `erode`; sides in memory need w - 1 columns and h - 1 rows.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.morph_open(np.array([[0, 9, 0, 9, 9, 9]], np.uint8), np.ones((1, 3)))
    array([[0, 0, 0, 9, 9, 9]], dtype=uint8)
    """
    return _apply(OPEN, image, footprint, out, border, inside)


def morph_close(image: npt.ArrayLike, footprint: npt.ArrayLike, out: npt.NDArray | None = None, *,
                border: str = "replicate", inside: str | Sequence[str] = "") -> npt.NDArray:
    """Closing: dilation, then erosion with the footprint turned by 180 degrees.

    Parameters and result as of `erode`; sides in memory need w - 1 columns and h - 1 rows.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.morph_close(np.array([[9, 0, 9, 0, 0, 0]], np.uint8), np.ones((1, 3)))
    array([[9, 9, 9, 0, 0, 0]], dtype=uint8)
    """
    return _apply(CLOSE, image, footprint, out, border, inside)


def morph_tophat(image: npt.ArrayLike, footprint: npt.ArrayLike, out: npt.NDArray | None = None, *,
                 border: str = "replicate", inside: str | Sequence[str] = "") -> npt.NDArray:
    """Top-hat: the image minus its opening, at least 0 (int16: saturated).

    Parameters and result as of `erode`; sides in memory need w - 1 columns and h - 1 rows.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.morph_tophat(np.array([[1, 9, 1, 9, 9, 9]], np.uint8), np.ones((1, 3)))
    array([[0, 8, 0, 0, 0, 0]], dtype=uint8)
    """
    return _apply(TOPHAT, image, footprint, out, border, inside)


def morph_blackhat(image: npt.ArrayLike, footprint: npt.ArrayLike, out: npt.NDArray | None = None, *,
                   border: str = "replicate", inside: str | Sequence[str] = "") -> npt.NDArray:
    """Black-hat: the closing minus the image, at least 0 (int16: saturated).

    Parameters and result as of `erode`; sides in memory need w - 1 columns and h - 1 rows.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.morph_blackhat(np.array([[9, 2, 9, 1, 1, 1]], np.uint8), np.ones((1, 3)))
    array([[0, 7, 0, 0, 0, 0]], dtype=uint8)
    """
    return _apply(BLACKHAT, image, footprint, out, border, inside)


def morph_gradient(image: npt.ArrayLike, footprint: npt.ArrayLike, out: npt.NDArray | None = None, *,
                   border: str = "replicate", inside: str | Sequence[str] = "") -> npt.NDArray:
    """Gradient: dilation minus erosion, both with the footprint as given; int16 differences saturate.

    Parameters and result as of `erode`.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.morph_gradient(np.array([[0, 0, 9, 9, 9]], np.uint8), np.ones((1, 3)))
    array([[0, 9, 9, 0, 0]], dtype=uint8)
    """
    return _apply(GRADIENT, image, footprint, out, border, inside)


def _rank(members, image, size, out, anchor):
    image = np.asarray(image)
    source, step, roi, key = view(image, "image")
    height, width = (size, size) if isinstance(size, int) or np.ndim(size) == 0 else size
    member, query = members[0][key], members[1][key]
    if anchor is None:
        anchor = (width - 1) // 2, (height - 1) // 2
    out, (target, target_step, _, _) = output(out, "out", image.shape, key.split("_")[0])
    apart(image, out, "out")
    buffer = scratch(query, roi[0], (width, height))
    check(member(source, step, target, target_step, roi, (width, height), tuple(anchor), buffer))
    return out


def minimum_filter(image: npt.ArrayLike, size: int | tuple[int, int], out: npt.NDArray | None = None, *,
                   anchor: tuple[int, int] | None = None) -> npt.NDArray:
    """Minimum of the pixels under a rectangle; the time hardly grows with its size.

    Parameters
    ----------
    image : (H, W), (H, W, 3) or (H, W, 4) array of uint8, float32
        Channels are filtered independently; pixels outside are the nearest ones of the edge.
    size : int or (height, width)
    out : array like the image, optional
        Must not share memory with the image.
    anchor : (x, y), optional
        The place of the rectangle that is laid on a pixel; ((width - 1) // 2, (height - 1) // 2) unless given.

    Returns
    -------
    out : array like the image

    See Also
    --------
    scipy.ndimage.minimum_filter : with ``mode="nearest"`` the same for odd sizes.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.minimum_filter(np.array([[5, 4, 9, 8, 7]], np.uint8), 3)
    array([[4, 4, 4, 7, 7]], dtype=uint8)
    """
    return _rank(_MINIMUM, image, size, out, anchor)


def maximum_filter(image: npt.ArrayLike, size: int | tuple[int, int], out: npt.NDArray | None = None, *,
                   anchor: tuple[int, int] | None = None) -> npt.NDArray:
    """Maximum of the pixels under a rectangle.

    Parameters and result as of `minimum_filter`.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.maximum_filter(np.array([[5, 4, 9, 8, 7]], np.uint8), (1, 2), anchor=(0, 0))
    array([[5, 9, 9, 8, 7]], dtype=uint8)
    """
    return _rank(_MAXIMUM, image, size, out, anchor)
