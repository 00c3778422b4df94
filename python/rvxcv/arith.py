"""Accumulation of frames into float32 images, and absolute differences."""
from __future__ import annotations

import numbers

import numpy as np
import numpy.typing as npt

from ._array import Members, apart_or_same, check, output, same_layout, view

__all__ = ["absdiff", "accumulate", "accumulate_product", "accumulate_square", "accumulate_weighted", "blend"]

# Of every operation the members without and with a mask.
_SUM = Members("rvxiAdd_{}IR", by_source=True), Members("rvxiAdd_{}IMR", by_source=True)
_SQUARE = Members("rvxiAddSquare_{}IR", by_source=True), Members("rvxiAddSquare_{}IMR", by_source=True)
_PRODUCT = Members("rvxiAddProduct_{}IR", by_source=True), Members("rvxiAddProduct_{}IMR", by_source=True)
_WEIGHTED = Members("rvxiAddWeighted_{}IR", by_source=True), Members("rvxiAddWeighted_{}IMR", by_source=True)
_BLEND = Members("rvxiAddWeighted_{}R")
_DIFFERENCE = Members("rvxiAbsDiff_{}R")
_DIFFERENCE_C = Members("rvxiAbsDiffC_{}R")


def _accumulate(members, images, total, mask, *parameters):
    if total is None:
        raise TypeError("there must be an array to change in place")
    source, step, roi, key = view(images[0], "image")
    arguments = [source, step]
    for other in images[1:]:
        arguments += same_layout(other, "second", roi, key)
    if mask is not None:
        arguments += same_layout(mask, "mask", roi, "8u_C1")
    total, (target, target_step, _, _) = output(total, "total", roi[::-1], "32f")
    for image in images if mask is None else (*images, mask):
        apart_or_same(np.asarray(image), total, "total")
    arguments += target, target_step
    check(members[mask is not None][key](*arguments, roi, *parameters))
    return total


def accumulate(image: npt.ArrayLike, total: npt.NDArray, mask: npt.ArrayLike | None = None) -> npt.NDArray:
    """Add an image to a running sum, in place: ``total += image``.

    Parameters
    ----------
    image : (H, W) array of uint8, int8, uint16; float32 with a mask
    total : (H, W) array of float32
        Changed in place; each sum is rounded once.
    mask : (H, W) array of uint8 or bool, optional
        Pixels whose mask is 0 are not added.

    Returns
    -------
    total : the array given

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> total = np.zeros((2, 3), np.float32)
    >>> rvxcv.accumulate(np.full((2, 3), 5, np.uint8), total)
    array([[5., 5., 5.],
           [5., 5., 5.]], dtype=float32)
    """
    return _accumulate(_SUM, (image,), total, mask)


def accumulate_square(image: npt.ArrayLike, total: npt.NDArray, mask: npt.ArrayLike | None = None) -> npt.NDArray:
    """Add the square of an image to a running sum, in place: ``total += image**2``.

    Parameters and result as of `accumulate`; float32 images with and without a mask.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> total = np.ones((1, 3), np.float32)
    >>> rvxcv.accumulate_square(np.array([[1, 2, 3]], np.uint8), total)
    array([[ 2.,  5., 10.]], dtype=float32)
    """
    return _accumulate(_SQUARE, (image,), total, mask)


def accumulate_product(first: npt.ArrayLike, second: npt.ArrayLike, total: npt.NDArray,
                       mask: npt.ArrayLike | None = None) -> npt.NDArray:
    """Add the product of two images to a running sum, in place: ``total += first * second``.

    Parameters and result as of `accumulate`; both images have one type.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> frame = np.array([[1, 2, 3]], np.uint8)
    >>> rvxcv.accumulate_product(frame, frame[:, ::-1].copy(), np.zeros((1, 3), np.float32))
    array([[3., 4., 3.]], dtype=float32)
    """
    return _accumulate(_PRODUCT, (first, second), total, mask)


def accumulate_weighted(image: npt.ArrayLike, average: npt.NDArray, alpha: float,
                        mask: npt.ArrayLike | None = None) -> npt.NDArray:
    """Move a running average towards an image, in place: ``average += alpha * (image - average)``.

    Parameters
    ----------
    image : (H, W) array of uint8, int8, uint16, float32
    average : (H, W) array of float32
    alpha : float
        The image's weight, used as given.
    mask : (H, W) array of uint8 or bool, optional
        Pixels whose mask is 0 keep their average.

    Returns
    -------
    average : the array given

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.accumulate_weighted(np.array([[8, 0]], np.uint8), np.zeros((1, 2), np.float32), 0.25)
    array([[2., 0.]], dtype=float32)
    """
    return _accumulate(_WEIGHTED, (image,), average, mask, alpha)


def blend(first: npt.ArrayLike, second: npt.ArrayLike, alpha: float, out: npt.NDArray | None = None) -> npt.NDArray:
    """Mix two float32 images: ``alpha * first + (1 - alpha) * second``.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.blend(np.ones((1, 2), np.float32), np.zeros((1, 2), np.float32), 0.75)
    array([[0.75, 0.75]], dtype=float32)
    """
    first, second = np.asarray(first), np.asarray(second)
    source, step, roi, key = view(first, "first")
    member = _BLEND[key]
    other, other_step = same_layout(second, "second", roi, key)
    out, (target, target_step, _, _) = output(out, "out", roi[::-1], "32f")
    apart_or_same(first, out, "out")
    apart_or_same(second, out, "out")
    check(member(source, step, other, other_step, target, target_step, roi, alpha))
    return out


def absdiff(first: npt.ArrayLike, second: npt.ArrayLike | float, out: npt.NDArray | None = None) -> npt.NDArray:
    """Absolute difference of two images, or of an image and a number.

    Parameters
    ----------
    first : (H, W) array of uint8, uint16, float32; (H, W, 3) of uint8
    second : array like the first, or a number
        The integer types clamp a number to their range first; a number needs one channel.
    out : array like the first, optional
        May be one of the inputs.

    Returns
    -------
    out : array like the first
        ``abs(first - second)``, exact for integers.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> image = np.array([[10, 20, 30]], np.uint8)
    >>> rvxcv.absdiff(image, 25)
    array([[15,  5,  5]], dtype=uint8)
    """
    first = np.asarray(first)
    source, step, roi, key = view(first, "first")
    if isinstance(second, numbers.Real):
        member = _DIFFERENCE_C[key]
        out, (target, target_step, _, _) = output(out, "out", first.shape, key.split("_")[0])
        apart_or_same(first, out, "out")
        check(member(source, step, target, target_step, roi, second))
        return out
    second = np.asarray(second)
    member = _DIFFERENCE[key]
    other, other_step = same_layout(second, "second", roi, key)
    out, (target, target_step, _, _) = output(out, "out", first.shape, key.split("_")[0])
    apart_or_same(first, out, "out")
    apart_or_same(second, out, "out")
    check(member(source, step, other, other_step, target, target_step, roi))
    return out
