"""Morphology: ranks, erosion and dilation with any footprint, compound operations, grey surfaces, reconstruction."""
import functools

import numpy as np

from ._array import Members, apart, border_code, check, ffi, lend, need_margin, output, view

__all__ = ["dilate", "ellipse", "erode"]

_GET_SIZE = Members("rvxiMorphologyBorderGetSize_{}R")
_INIT = Members("rvxiMorphologyBorderInit_{}R")
_ERODE = Members("rvxiErodeBorder_{}R")
_DILATE = Members("rvxiDilateBorder_{}R")


def ellipse(width, height):
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
    """An analysed footprint. Read-only, so that threads share it."""

    def __init__(self, key, width, mask, shape):
        height_of_mask, width_of_mask = shape
        sizes = ffi.new("int32_t[2]")
        check(_GET_SIZE[key](width, (width_of_mask, height_of_mask), sizes, sizes + 1))
        self.memory = ffi.new("uint8_t[]", sizes[0])
        self.spec = ffi.cast("MorphSpec *", self.memory)
        self.buffer_size = sizes[1]
        check(_INIT[key](width, mask, (width_of_mask, height_of_mask), self.spec, lend(sizes[1])))


_record = functools.lru_cache(maxsize=64)(_Record)


def _footprint(footprint):
    mask = np.ascontiguousarray(footprint, dtype=np.uint8)
    if mask.ndim != 2 or not mask.size:
        raise ValueError(f"footprint must have shape (height, width), not {mask.shape}")
    return mask.tobytes(), mask.shape


def _apply(members, image, footprint, out, border, inside):
    source, step, roi, key = view(image, "image")
    member = members[key]
    mask, (height, width) = _footprint(footprint)
    code = border_code(border, inside)
    if inside:
        left, top = (width - 1) >> 1, (height - 1) >> 1
        need_margin(image, "image", code, left, top, width - 1 - left, height - 1 - top)
    out, (target, target_step, _, _) = output(out, "out", image.shape, key.split("_")[0])
    apart(image, out, "out")
    record = _record(key, roi[0], mask, (height, width))
    check(member(source, step, target, target_step, roi, code, 0, record.spec, lend(record.buffer_size)))
    return out


def erode(image, footprint, out=None, *, border="replicate", inside=""):
    """Erosion: the minimum of the pixels under a footprint.

    Parameters
    ----------
    image : (H, W) array of uint8, uint16, int16, float32; (H, W, 3) or (H, W, 4) of uint8, float32
        Channels are filtered independently.
    footprint : (h, w) array
        Non-zero elements belong to it; its anchor is ((w - 1) // 2, (h - 1) // 2).
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
    return _apply(_ERODE, image, footprint, out, border, inside)


def dilate(image, footprint, out=None, *, border="replicate", inside=""):
    """Dilation: the maximum of the pixels under a footprint, which is not reflected.

    Parameters and result as of `erode`.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> image = np.array([[0, 0, 7, 0, 0]], np.uint8)
    >>> rvxcv.dilate(image, np.ones((1, 3)))
    array([[0, 7, 7, 7, 0]], dtype=uint8)
    """
    return _apply(_DILATE, image, footprint, out, border, inside)
