"""Regions: flood fill, labels, watershed, speckles, boundaries; and filling holes of a picture."""
from __future__ import annotations

from typing import NamedTuple

import numpy as np
import numpy.typing as npt

from ._array import (DTYPES, Members, apart, apart_or_same, check, choose, constant, expect, ffi, lend, lib, neighbours,
                     output, scratch, view, working_copy)

__all__ = ["Region", "flood_fill", "inpaint", "label", "mark_boundaries", "remove_speckles", "segment_gradient",
           "watershed"]

_FILL = {4: Members("rvxiFloodFill_4Con_{}IR"), 8: Members("rvxiFloodFill_8Con_{}IR")}
_FILL_RANGE = {4: Members("rvxiFloodFill_Range4Con_{}IR"), 8: Members("rvxiFloodFill_Range8Con_{}IR")}
_FILL_GRADIENT = {4: Members("rvxiFloodFill_Grad4Con_{}IR"), 8: Members("rvxiFloodFill_Grad8Con_{}IR")}
_LABEL_IN_PLACE = Members("rvxiLabelMarkers_{}IR")
_LAST_LABELS = {"8u": 254, "16u": 65534, "32s": 2147483646}
_WATERSHED = (Members("rvxiSegmentWatershed_{}IR", by_source=True),
              Members("rvxiSegmentWatershedGetBufferSize_{}R", by_source=True))
_GRADIENT = {  # of three channels the result's stand in the name, too
    "8u_C1": (lib.rvxiSegmentGradient_8u32s_C1IR, lib.rvxiSegmentGradientGetBufferSize_8u32s_C1R),
    "8u_C3": (lib.rvxiSegmentGradient_8u32s_C3C1IR, lib.rvxiSegmentGradientGetBufferSize_8u32s_C3C1R)}
_SPECKLES = Members("rvxiMarkSpeckles_{}IR"), Members("rvxiMarkSpecklesGetBufferSize_{}R")
_BOUND = Members("rvxiBoundSegments_{}IR")
_INPAINT = Members("rvxiInpaint_{}MR"), Members("rvxiInpaintGetBufferSize_{}MR")
_INPAINT_METHODS = {"march": lib.InpaintMarch, "diffusion": lib.InpaintDiffusion}
_CODES = {dtype: code for code, dtype in DTYPES.items()}


class Region(NamedTuple):
    """What a flood fill painted: pixels, and the smallest (x, y, width, height) around them."""

    area: int
    box: tuple[int, int, int, int]


def _fill_scratch(roi):
    # 32 bits of a size query do not hold the sizes of large images.
    return lend(6 * roi[0] * roi[1] + 32)


def flood_fill(image: npt.ArrayLike, seed: tuple[int, int], value, out: npt.NDArray | None = None, *,
               connectivity: int = 8, tolerance=None, reference: str = "seed") -> tuple[npt.NDArray, Region]:
    """Paint the connected region around a seed.

    Parameters
    ----------
    image : (H, W) array of uint8, uint16, float32, and int32 without tolerance; (H, W, 3) of uint8, uint16, float32
    seed : (x, y)
    value : number, or 3 numbers for 3 channels
        The colour to paint.
    out : array like the image, optional
        May be the image, which is then painted in place.
    connectivity : {8, 4}
        Whether pixels that touch at a corner join.
    tolerance : number or (below, above), optional
        How far below and above the reference a pixel may be; each of them a number or one per channel. Without it
        pixels are equal to the seed.
    reference : {"seed", "neighbour"}
        What the tolerance counts from: the seed, or the neighbour from which a pixel is reached.

    Returns
    -------
    out : array like the image
    region : Region
        Its area is 0 if the seed had the value already (but not with "neighbour").

    See Also
    --------
    skimage.segmentation.flood_fill : whose seed is (row, column).

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> image = np.array([[1, 1, 5, 1], [2, 1, 5, 1]], np.uint8)
    >>> rvxcv.flood_fill(image, (0, 0), 9)
    (array([[9, 9, 5, 1],
           [2, 9, 5, 1]], dtype=uint8), Region(area=3, box=(0, 0, 2, 2)))
    >>> rvxcv.flood_fill(image, (0, 0), 9, tolerance=(0, 1))[1].area
    4
    """
    out, (target, step, roi, key) = working_copy(image, out)
    record = ffi.new("ConnectedComponent *")
    place = target, step, roi, tuple(seed)
    painted = constant(value, key)
    if tolerance is None:
        member = choose(_FILL, connectivity, "connectivity")[key]
        check(member(*place, painted, record, _fill_scratch(roi)))
    else:
        below, above = (constant(limit, key) for limit in _pair(tolerance))
        if choose({"seed": True, "neighbour": False}, reference, "reference"):
            member = choose(_FILL_RANGE, connectivity, "connectivity")[key]
            buffer = _fill_scratch(roi)
            if key == "32f_C1":  # an order of its own
                check(member(*place, record, buffer, painted, below, above))
            else:
                check(member(*place, painted, below, above, record, buffer))
        else:
            member = choose(_FILL_GRADIENT, connectivity, "connectivity")[key]
            buffer = lend((roi[0] + 2) * (roi[1] + 2) + 16 * roi[0] * roi[1] + 64)
            check(member(*place, below, above, painted, record, buffer))
    box = record.rect
    return out, Region(int(record.area), (box.x, box.y, box.width, box.height))


def _pair(tolerance):
    """Limits below and above."""
    try:
        count = len(tolerance)
    except TypeError:  # a number
        return tolerance, tolerance
    if count != 2:
        raise ValueError(f"tolerance must be a number or (below, above), not {tolerance!r}")
    return tolerance


def label(mask: npt.ArrayLike, out: npt.NDArray | None = None, *, connectivity: int = 8,
          dtype: npt.DTypeLike | None = None, first: int = 1, last: int | None = None) -> tuple[npt.NDArray, int]:
    """Number the connected components of the pixels that are not zero.

    Parameters
    ----------
    mask : (H, W) array of uint8, bool; uint16
    out : (H, W) array, optional
        Of int32, or of the mask's type: then it may be the mask. uint16 masks have uint16 labels only.
    connectivity : {8, 4}
        Whether pixels that touch at a corner are connected.
    dtype : {int32, uint8, uint16}, optional
        The labels' type without ``out``.
    first, last : int
        The labels to give, in the order of the components' first pixels; after ``last`` comes ``first`` again. The last
        one is at most 254 (uint8), 65534 (uint16) or 2147483646 (int32), and that unless given.

    Returns
    -------
    labels : (H, W) array
        0 where the mask is 0.
    count : int
        The number of components, also when there are more than labels.

    See Also
    --------
    scipy.ndimage.label : the same numbers, with the structure of 8 or 4 neighbours.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.label(np.array([[1, 1, 0, 1], [0, 0, 1, 0]], np.uint8), connectivity=4)
    (array([[1, 1, 0, 2],
           [0, 0, 3, 0]], dtype=int32), 3)
    """
    mask = np.asarray(mask)
    source, step, roi, key = view(mask, "mask")
    if isinstance(out, np.ndarray):
        dtype = out.dtype
    elif dtype is None:
        dtype = np.uint16 if key == "16u_C1" else np.int32
    norm = neighbours(connectivity)
    code = _CODES.get(np.dtype(dtype))
    in_place = _LABEL_IN_PLACE[key]
    if code != key[:-3] and (key, code) != ("8u_C1", "32s"):
        raise TypeError(f"out: labels of uint8 are int32 or uint8, those of uint16 are uint16, not {np.dtype(dtype)}")
    count = ffi.new("int32_t *")
    options = roi, first, _LAST_LABELS[code] if last is None else last, norm, count, _fill_scratch(roi)
    if code == "32s":
        out, (target, target_step, _, _) = output(out, "out", mask.shape, code)
        apart(mask, out, "out")
        check(lib.rvxiLabelMarkers_8u32s_C1R(source, step, target, target_step, *options))
    else:
        out, (target, target_step, _, _) = working_copy(mask, out)
        check(in_place(target, target_step, *options))
    return out, count[0]


def _segment(table, image, markers, out, connectivity, watershed_line):
    image, markers = np.asarray(image), np.asarray(markers)
    source, step, roi, key = view(image, "image")
    member, query = table(key)
    expect(markers, "markers", "32s_C1", roi)
    norm = neighbours(connectivity)
    if out is not None:
        apart(image, out, "out")
    out, (target, target_step, _, _) = working_copy(markers, out)
    flags = lib.SegmentLines if watershed_line else lib.SegmentNoLines
    check(member(source, step, target, target_step, roi, norm, flags, scratch(query, roi)))
    return out


def watershed(image: npt.ArrayLike, markers: npt.ArrayLike, out: npt.NDArray | None = None, *, connectivity: int = 8,
              watershed_line: bool = False) -> npt.NDArray[np.int32]:
    """Divide a relief among markers by flooding it from them.

    Parameters
    ----------
    image : (H, W) array of uint8, uint16
        The relief: a gradient, or an inverted distance.
    markers : (H, W) array of int32
        Seeds of a label above 0, walls below 0, and 0 for pixels to be divided.
    out : (H, W) array of int32, optional
        May be the markers, which then become the result.
    connectivity : {8, 4}
        Whether pixels that touch at a corner are neighbours.
    watershed_line : bool
        Separate the regions by a line of one pixel with label 0.

    Returns
    -------
    out : (H, W) array of int32
        Seeds and walls keep their values; what nothing reaches stays 0.

    Notes
    -----
    F. Meyer, "Un algorithme optimal pour la ligne de partage des eaux", 1991.

    See Also
    --------
    skimage.segmentation.watershed : whose connectivity is 1 (four neighbours) or 2 (eight).

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> relief = np.array([[0, 1, 5, 2, 0]], np.uint8)
    >>> rvxcv.watershed(relief, np.array([[1, 0, 0, 0, 2]], np.int32), watershed_line=True)
    array([[1, 1, 0, 2, 2]], dtype=int32)
    """
    return _segment(lambda key: (_WATERSHED[0][key], _WATERSHED[1][key]), image, markers, out, connectivity,
                    watershed_line)


def segment_gradient(image: npt.ArrayLike, markers: npt.ArrayLike, out: npt.NDArray | None = None, *,
                     connectivity: int = 8, watershed_line: bool = False) -> npt.NDArray[np.int32]:
    """Divide a picture among markers where neighbouring pixels differ most.

    Parameters
    ----------
    image : (H, W) or (H, W, 3) array of uint8
        The picture itself; of three channels the largest difference counts.
    markers, out, connectivity, watershed_line
        As of `watershed`.

    Returns
    -------
    out : (H, W) array of int32

    Notes
    -----
    J. Cousty, G. Bertrand, L. Najman and M. Couprie, "Watershed Cuts", IEEE PAMI 31(8), 2009.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> picture = np.array([[10, 11, 13, 90, 91]], np.uint8)
    >>> rvxcv.segment_gradient(picture, np.array([[1, 0, 0, 0, 2]], np.int32))
    array([[1, 1, 1, 2, 2]], dtype=int32)
    """
    return _segment(_gradient_members, image, markers, out, connectivity, watershed_line)


def _gradient_members(key):
    if key not in _GRADIENT:
        raise TypeError("image must have dtype uint8 and 1 or 3 channels")
    return _GRADIENT[key]


def remove_speckles(image: npt.ArrayLike, max_size: int, max_difference: float, out: npt.NDArray | None = None, *,
                    value: float = 0) -> npt.NDArray:
    """Paint over small patches of a disparity, depth or label image.

    Parameters
    ----------
    image : (H, W) array of uint8, uint16, int16, float32
    max_size : int
        Connected components of at most so many pixels are painted.
    max_difference : number
        Pixels that share a side are connected when they differ by at most this.
    out : array like the image, optional
        May be the image, which is then changed in place.
    value : number
        The colour to paint; pixels of this value are connected to nothing.

    Returns
    -------
    out : array like the image

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.remove_speckles(np.array([[7, 8, 8, 30, 8, 8, 9]], np.uint8), 1, 1)
    array([[7, 8, 8, 0, 8, 8, 9]], dtype=uint8)
    """
    out, (target, step, roi, key) = working_copy(image, out)
    members, queries = _SPECKLES
    member = members[key]
    check(member(target, step, roi, value, max_size, max_difference, lib.NormL1, scratch(queries[key], roi)))
    return out


def mark_boundaries(labels: npt.ArrayLike, value: int, out: npt.NDArray | None = None, *,
                    connectivity: int = 8) -> npt.NDArray:
    """Outline segments by a line of one pixel on the upper left side of each edge.

    Parameters
    ----------
    labels : (H, W) array of uint8, uint16, int32
    value : int
        What a pixel becomes when the one to its right or below differs (connectivity 8: or a lower diagonal one).
    out : array like the labels, optional
        May be the labels, which are then changed in place.
    connectivity : {8, 4}

    Returns
    -------
    out : array like the labels

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.mark_boundaries(np.array([[1, 1, 2, 2, 2, 3]], np.uint8), 255)
    array([[  1, 255,   2,   2, 255,   3]], dtype=uint8)
    """
    norm = neighbours(connectivity)
    out, (target, step, roi, key) = working_copy(labels, out)
    check(_BOUND[key](target, step, roi, value, norm))
    return out


def inpaint(image: npt.ArrayLike, mask: npt.ArrayLike, out: npt.NDArray | None = None, *, radius: int = 3,
            method: str = "march") -> npt.NDArray:
    """Fill the holes of a picture from the pixels around them.

    Parameters
    ----------
    image : (H, W) or (H, W, 3) array of uint8; (H, W) of float32
    mask : (H, W) array of uint8 or bool
        The holes: pixels that are not zero.
    out : array like the image, optional
        May be the image, which is then filled in place.
    radius : int
        How far around a pixel the known ones count, 1 to 100.
    method : {"march", "diffusion"}
        Continue lines of equal brightness from the rim inwards, or span a smooth membrane.

    Returns
    -------
    out : array like the image

    Notes
    -----
    A. Telea, "An image inpainting technique based on the fast marching method", Journal of Graphics Tools 9(1), 2004;
    M. Bertalmio, G. Sapiro, V. Caselles and C. Ballester, "Image inpainting", SIGGRAPH 2000.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> image = np.array([[10, 12, 99, 16, 18]] * 3, np.uint8)
    >>> rvxcv.inpaint(image, image == 99)[1]
    array([10, 12, 14, 16, 18], dtype=uint8)
    """
    image, mask = np.asarray(image), np.asarray(mask)
    source, step, roi, key = view(image, "image")
    members, queries = _INPAINT
    member = members[key]
    hole, hole_step, _ = expect(mask, "mask", "8u_C1", roi)
    method = choose(_INPAINT_METHODS, method, "method")
    out, (target, target_step, _, _) = output(out, "out", image.shape, key.split("_")[0])
    apart(mask, out, "out")
    apart_or_same(image, out, "out")
    buffer = scratch(queries[key], roi, radius)
    check(member(source, step, hole, hole_step, target, target_step, roi, radius, method, buffer))
    return out
