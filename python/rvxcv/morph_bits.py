"""Flat morphology of bit images: one bit a pixel, as ``np.packbits(mask, axis=1, bitorder="little")`` makes them."""
from __future__ import annotations

from collections.abc import Sequence

import numpy as np
import numpy.typing as npt

from . import morph
from ._array import apart, border_code, check, lend, need_margin, view

__all__ = ["blackhat_bits", "close_bits", "dilate_bits", "erode_bits", "gradient_bits", "open_bits", "tophat_bits"]


def _bits(array, name, width, offset, writable=False):
    """Pointer, step and rows of a bit image, whose rows must hold the bits."""
    pointer, step, (columns, rows), key = view(array, name, writable)
    if key != "8u_C1":
        raise TypeError(f"{name} must be an array of uint8, 8 pixels each, and have two dimensions")
    if width < 1 or offset < 0 or offset + width > 8 * columns:
        raise ValueError(f"{name}: a row of {columns} bytes does not hold {width} pixels from bit {offset} on")
    return pointer, step, rows


def _apply(members, image, width, footprint, out, offset, out_offset, border, inside):
    image = np.asarray(image)
    source, step, rows = _bits(image, "image", width, offset)
    code = border_code(border, inside)
    record, (left, above, right, below) = morph.plan(members, "1u_C1", (width, rows), footprint)
    if inside:  # bits beside the region in its own bytes count
        spare = 8 * image.shape[1] - offset - width
        need_margin(image, "image (bytes)", code, max(0, left - offset + 7) // 8, above,
                    max(0, right - spare + 7) // 8, below)
    if out is None:
        out = np.zeros((rows, (max(out_offset, 0) + width + 7) // 8), np.uint8)
    target, target_step, out_rows = _bits(out, "out", width, out_offset, True)
    if out_rows != rows:
        raise ValueError(f"out must have {rows} rows, not {out_rows}")
    apart(image, out, "out")
    check(members["1u_C1"](source, step, offset, target, target_step, out_offset, (width, rows), code, 0, record.spec,
                           lend(record.buffer_size)))
    return out


def erode_bits(image: npt.ArrayLike, width: int, footprint: npt.ArrayLike, out: npt.NDArray | None = None, *,
               offset: int = 0, out_offset: int = 0, border: str = "replicate",
               inside: str | Sequence[str] = "") -> npt.NDArray[np.uint8]:
    """Erosion of a bit image: a pixel stays where all pixels under the footprint are set.

    Parameters
    ----------
    image : (H, B) array of uint8
        Pixel k of a row is bit ``(offset + k) % 8``, the least significant first, of byte ``(offset + k) // 8``.
    width : int
        Pixels in a row.
    footprint, border, inside
        As of `erode`.
    out : (H, B') array of uint8, optional
        Must not share memory with the image; its other bits stay as they are, and those of a new one are 0.
    offset, out_offset : int
        The bit of a row's first pixel.

    Returns
    -------
    out : (H, B') array of uint8

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> mask = np.array([[0, 1, 1, 1, 1, 0, 1, 1, 0, 0]])
    >>> bits = np.packbits(mask, axis=1, bitorder="little")
    >>> np.unpackbits(rvxcv.erode_bits(bits, 10, np.ones((1, 3))), axis=1, count=10, bitorder="little")
    array([[0, 0, 1, 1, 0, 0, 0, 0, 0, 0]], dtype=uint8)
    """
    return _apply(morph.ERODE, image, width, footprint, out, offset, out_offset, border, inside)


def dilate_bits(image: npt.ArrayLike, width: int, footprint: npt.ArrayLike, out: npt.NDArray | None = None, *,
                offset: int = 0, out_offset: int = 0, border: str = "replicate",
                inside: str | Sequence[str] = "") -> npt.NDArray[np.uint8]:
    """Dilation of a bit image: a pixel is set where any pixel under the footprint is.

    Parameters and result as of `erode_bits`.
    """
    return _apply(morph.DILATE, image, width, footprint, out, offset, out_offset, border, inside)


def open_bits(image: npt.ArrayLike, width: int, footprint: npt.ArrayLike, out: npt.NDArray | None = None, *,
              offset: int = 0, out_offset: int = 0, border: str = "replicate",
              inside: str | Sequence[str] = "") -> npt.NDArray[np.uint8]:
    """Opening of a bit image: erosion, then dilation with the footprint turned by 180 degrees.

    Parameters and result as of `erode_bits`.
    """
    return _apply(morph.OPEN, image, width, footprint, out, offset, out_offset, border, inside)


def close_bits(image: npt.ArrayLike, width: int, footprint: npt.ArrayLike, out: npt.NDArray | None = None, *,
               offset: int = 0, out_offset: int = 0, border: str = "replicate",
               inside: str | Sequence[str] = "") -> npt.NDArray[np.uint8]:
    """Closing of a bit image: dilation, then erosion with the footprint turned by 180 degrees.

    Parameters and result as of `erode_bits`.
    """
    return _apply(morph.CLOSE, image, width, footprint, out, offset, out_offset, border, inside)


def tophat_bits(image: npt.ArrayLike, width: int, footprint: npt.ArrayLike, out: npt.NDArray | None = None, *,
                offset: int = 0, out_offset: int = 0, border: str = "replicate",
                inside: str | Sequence[str] = "") -> npt.NDArray[np.uint8]:
    """Top-hat of a bit image: what an opening takes away.

    Parameters and result as of `erode_bits`.
    """
    return _apply(morph.TOPHAT, image, width, footprint, out, offset, out_offset, border, inside)


def blackhat_bits(image: npt.ArrayLike, width: int, footprint: npt.ArrayLike, out: npt.NDArray | None = None, *,
                  offset: int = 0, out_offset: int = 0, border: str = "replicate",
                  inside: str | Sequence[str] = "") -> npt.NDArray[np.uint8]:
    """Black-hat of a bit image: what a closing adds.

    Parameters and result as of `erode_bits`.
    """
    return _apply(morph.BLACKHAT, image, width, footprint, out, offset, out_offset, border, inside)


def gradient_bits(image: npt.ArrayLike, width: int, footprint: npt.ArrayLike, out: npt.NDArray | None = None, *,
                  offset: int = 0, out_offset: int = 0, border: str = "replicate",
                  inside: str | Sequence[str] = "") -> npt.NDArray[np.uint8]:
    """Gradient of a bit image: its dilation without its erosion.

    Parameters and result as of `erode_bits`.
    """
    return _apply(morph.GRADIENT, image, width, footprint, out, offset, out_offset, border, inside)
