"""Grey morphology with surfaces, and reconstruction."""
from __future__ import annotations

import functools
from collections.abc import Sequence

import numpy as np
import numpy.typing as npt

from ._array import (Members, apart, border_code, check, choose, ffi, lend, neighbours, need_margin, output,
                     same_layout, scratch, view, working_copy)

__all__ = ["grey_dilate", "grey_erode", "reconstruct"]

_GET_SIZE = Members("rvxiGrayMorphologyGetSize_{}R")
_INIT = Members("rvxiGrayMorphologyInit_{}R")
_ERODE = Members("rvxiGrayErodeBorder_{}R")
_DILATE = Members("rvxiGrayDilateBorder_{}R")
_RECONSTRUCT = {"dilation": Members("rvxiMorphReconstructDilate_{}IR"),
                "erosion": Members("rvxiMorphReconstructErode_{}IR")}
_RECONSTRUCT_SIZE = Members("rvxiMorphReconstructGetBufferSize_{}R")

_TABLES = {"8u": "int32_t[]", "32f": "float[]"}
_NO_PART = -2**31


def _table(surface, footprint, code):
    """The library's table of a surface: levels, and what marks positions that are not part of it."""
    if surface.ndim != 2 or not surface.size:
        raise ValueError(f"surface must have shape (height, width), not {surface.shape}")
    part = surface != -np.inf
    if footprint is not None:
        if footprint.shape != surface.shape:
            raise ValueError(f"footprint must have the surface's shape {surface.shape}, not {footprint.shape}")
        part &= footprint != 0
    if code == "32f":
        return np.where(part, surface, -np.inf).astype(np.float32)
    values = np.where(part, surface, 0)
    if values.dtype.kind not in "iub" and not np.array_equal(values, np.rint(values)):
        raise ValueError("surface: the levels of uint8 images are whole numbers")
    return np.where(part, np.clip(values, -255, 255), _NO_PART).astype(np.int32)  # as the library limits them


class _Record:
    """An analysed surface. Read-only, so that threads share it."""

    def __init__(self, key, roi_width, *contents):
        arrays = [part and np.frombuffer(part[2], part[1]).reshape(part[0]) for part in contents]
        table = _table(*arrays, key[:-3])
        height, width = table.shape
        sizes = ffi.new("int32_t[2]")
        check(_GET_SIZE[key](roi_width, (width, height), sizes, sizes + 1))
        self.memory = ffi.new("uint8_t[]", sizes[0])
        self.spec = ffi.cast("GrayMorphSpec *", self.memory)
        self.buffer_size = sizes[1]
        self.margin = (width - 1) >> 1, (height - 1) >> 1, width >> 1, height >> 1
        check(_INIT[key](roi_width, ffi.from_buffer(_TABLES[key[:-3]], table), (width, height), self.spec))


_record = functools.lru_cache(maxsize=64)(_Record)


def _contents(array):
    """An array as something to look its record up by."""
    array = np.asarray(array)
    return array.shape, array.dtype, array.tobytes()


def _apply(members, image, surface, out, footprint, border, value, inside):
    image = np.asarray(image)
    source, step, roi, key = view(image, "image")
    member = members[key]
    code = border_code(border, inside)
    record = _record(key, roi[0], _contents(surface), None if footprint is None else _contents(footprint))
    if inside:
        need_margin(image, "image", code, *record.margin)
    out, (target, target_step, _, _) = output(out, "out", image.shape, key[:-3])
    apart(image, out, "out")
    check(member(source, step, target, target_step, roi, code, value, record.spec, lend(record.buffer_size)))
    return out


def grey_erode(image: npt.ArrayLike, surface: npt.ArrayLike, out: npt.NDArray | None = None, *,
               footprint: npt.ArrayLike | None = None, border: str = "replicate", value: float = 0,
               inside: str | Sequence[str] = "") -> npt.NDArray:
    """Erosion by a surface: the minimum of pixel minus surface under it.

    Parameters
    ----------
    image : (H, W) array of uint8, float32
    surface : (h, w) array
        Levels to subtract: a ball, a paraboloid, a cone; whole numbers for uint8 images, which saturate. Its anchor is
        ((w - 1) // 2, (h - 1) // 2). Positions of -inf are not part of it.
    out : array like the image, optional
        Must not share memory with the image.
    footprint : (h, w) array, optional
        Positions where it is 0 are not part of the surface.
    border : {"replicate", "constant"}
    value : number
        The pixels outside with the border "constant".
    inside : str or sequence of str, optional
        Sides whose outside pixels are read from memory, as of `erode`.

    Returns
    -------
    out : array like the image

    Notes
    -----
    S. Sternberg, "Grayscale morphology", CVGIP 35, 1986.

    See Also
    --------
    scipy.ndimage.grey_erosion : with ``structure`` and ``mode="nearest"`` the same for surfaces of odd size.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.grey_erode(np.array([[9, 9, 1, 9, 9]], np.uint8), np.array([[-5, 0, -5]]))
    array([[9, 6, 1, 6, 9]], dtype=uint8)
    """
    return _apply(_ERODE, image, surface, out, footprint, border, value, inside)


def grey_dilate(image: npt.ArrayLike, surface: npt.ArrayLike, out: npt.NDArray | None = None, *,
                footprint: npt.ArrayLike | None = None, border: str = "replicate", value: float = 0,
                inside: str | Sequence[str] = "") -> npt.NDArray:
    """Dilation by a surface: the maximum of pixel plus surface under it, which is not reflected.

    Parameters and result as of `grey_erode`.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.grey_dilate(np.array([[1, 1, 9, 1, 1]], np.uint8), np.array([[-5, 0, -5]]))
    array([[1, 4, 9, 4, 1]], dtype=uint8)
    """
    return _apply(_DILATE, image, surface, out, footprint, border, value, inside)


def reconstruct(marker: npt.ArrayLike, mask: npt.ArrayLike, out: npt.NDArray | None = None, *,
                method: str = "dilation", connectivity: int = 8) -> npt.NDArray:
    """Grow a marker inside a mask until nothing changes.

    Parameters
    ----------
    marker : (H, W) array of uint8, uint16, float32
        The start; limited by the mask first.
    mask : array like the marker
        The upper limit, for ``method="erosion"`` the lower one.
    out : array like the marker, optional
        May be the marker, which then becomes the result; must not share memory with the mask.
    method : {"dilation", "erosion"}
    connectivity : {8, 4}
        Whether pixels that touch at a corner are neighbours.

    Returns
    -------
    out : array like the marker

    Notes
    -----
    L. Vincent, "Morphological Grayscale Reconstruction in Image Analysis", IEEE Transactions on Image Processing 2(2),
    1993.

    See Also
    --------
    skimage.morphology.reconstruction

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> mask = np.array([[5, 7, 0, 8, 8]], np.uint8)
    >>> marker = np.array([[0, 6, 0, 0, 0]], np.uint8)
    >>> rvxcv.reconstruct(marker, mask)
    array([[5, 6, 0, 0, 0]], dtype=uint8)
    """
    members = choose(_RECONSTRUCT, method, "method")
    marker, mask = np.asarray(marker), np.asarray(mask)
    _, _, roi, key = view(marker, "marker")
    member = members[key]
    limit, limit_step = same_layout(mask, "mask", roi, key)
    norm = neighbours(connectivity)
    if out is not None:
        apart(mask, out, "out")
    out, (target, target_step, _, _) = working_copy(marker, out)
    buffer = scratch(_RECONSTRUCT_SIZE[key], roi)
    check(member(limit, limit_step, target, target_step, roi, norm, buffer))
    return out
