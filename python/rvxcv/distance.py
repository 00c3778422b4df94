"""Distances to the nearest zero pixel: exact, along paths of weighted steps, and as a marching front."""
from __future__ import annotations

import functools
from collections.abc import Sequence

import numpy as np
import numpy.typing as npt

from ._array import NORMS, Members, apart, check, choose, expect, ffi, lib, output, scratch

__all__ = ["chamfer_costs", "chamfer_distance", "distance_transform", "fast_marching"]

_CHAMFER = {size: Members(f"rvxiDistanceTransform_{size}x{size}_{{}}R") for size in (3, 5)}
_CHAMFER_IN_PLACE = {size: Members(f"rvxiDistanceTransform_{size}x{size}_{{}}IR") for size in (3, 5)}
# Of every result's type: the key of its members, its code, the type of costs.
_RESULTS = {np.dtype(np.uint8): ("8u_C1", "8u", np.int32), np.dtype(np.uint16): ("8u16u_C1", "16u", np.int32),
            np.dtype(np.float32): ("8u32f_C1", "32f", np.float32)}


def _of_mask(function, query, mask, out):
    mask = np.asarray(mask)
    source, step, roi = expect(mask, "mask", "8u_C1")
    out, (target, target_step, _, _) = output(out, "out", mask.shape, "32f")
    apart(mask, out, "out")
    check(function(source, step, target, target_step, roi, scratch(query, roi)))
    return out


def distance_transform(mask: npt.ArrayLike, out: npt.NDArray | None = None) -> npt.NDArray[np.float32]:
    """Exact Euclidean distance of every pixel to the nearest zero pixel.

    Parameters
    ----------
    mask : (H, W) array of uint8 or bool
    out : (H, W) array of float32, optional

    Returns
    -------
    out : (H, W) array of float32
        Each is the float nearest to the exact distance. Without a zero pixel all are 1.8446743e19.

    Notes
    -----
    A. Meijster, J. Roerdink and W. Hesselink, "A General Algorithm for Computing Distance Transforms in Linear Time",
    2000.

    See Also
    --------
    scipy.ndimage.distance_transform_edt : the same in float64.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.distance_transform(np.array([[0, 1, 1, 1], [1, 1, 1, 1]], np.uint8))
    array([[0.       , 1.       , 2.       , 3.       ],
           [1.       , 1.4142135, 2.236068 , 3.1622777]], dtype=float32)
    """
    return _of_mask(lib.rvxiTrueDistanceTransform_8u32f_C1R, lib.rvxiTrueDistanceTransformGetBufferSize_8u32f_C1R, mask,
                    out)


def fast_marching(mask: npt.ArrayLike, out: npt.NDArray | None = None) -> npt.NDArray[np.float32]:
    """When a front that starts at the zero pixels with a speed of one pixel arrives at every pixel.

    Parameters
    ----------
    mask : (H, W) array of uint8 or bool
    out : (H, W) array of float32, optional

    Returns
    -------
    out : (H, W) array of float32
        From a single zero pixel between the Euclidean distance and 1.21 times that, from a straight edge exact.
        Without a zero pixel all are 3.4028235e38.

    Notes
    -----
    J. Sethian, "A fast marching level set method for monotonically advancing fronts", PNAS 93(4), 1996; first order.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.fast_marching(np.array([[0, 1, 1, 1], [1, 1, 1, 1]], np.uint8))
    array([[0.       , 1.       , 2.       , 3.       ],
           [1.       , 1.7071068, 2.5453289, 3.4422305]], dtype=float32)
    """
    return _of_mask(lib.rvxiFastMarching_8u32f_C1R, lib.rvxiFastMarchingGetBufferSize_8u32f_C1R, mask, out)


def chamfer_costs(size: int = 5, norm: str = "l2", dtype: npt.DTypeLike = np.float32) -> npt.NDArray:
    """The usual costs of the steps of a path, as `chamfer_distance` takes them.

    Parameters
    ----------
    size : {3, 5}
    norm : {"l2", "l1", "inf"}
    dtype : {float32, int32}

    Returns
    -------
    costs : (2,) array for ``size=3``, (3,) for 5

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.chamfer_costs(5, "l2", np.int32)
    array([ 5,  7, 11], dtype=int32)
    """
    code = choose(NORMS, norm, "norm")
    costs = np.empty(3 if size == 5 else 2, dtype)
    if costs.dtype == np.float32:
        check(lib.rvxiGetDistanceTransformMask_32f(size, code, ffi.from_buffer("float[]", costs)))
    elif costs.dtype == np.int32:
        check(lib.rvxiGetDistanceTransformMask_32s(size, code, ffi.from_buffer("int32_t[]", costs)))
    else:
        raise TypeError(f"costs are float32 or int32, not {costs.dtype}")
    return costs


def _costs(costs, cost_type):
    return ffi.new("float[3]" if cost_type is np.float32 else "int32_t[3]", costs)


@functools.lru_cache(maxsize=64)
def _usual_costs(size, norm, cost_type):
    return _costs(chamfer_costs(size, norm, cost_type).tolist(), cost_type)


def chamfer_distance(mask: npt.ArrayLike, out: npt.NDArray | None = None, *, size: int = 5, norm: str = "l2",
                     costs: Sequence[float] | None = None, dtype: npt.DTypeLike = np.float32) -> npt.NDArray:
    """Smallest cost of a path of steps from every pixel to the nearest zero pixel.

    Parameters
    ----------
    mask : (H, W) array of uint8 or bool
    out : (H, W) array of uint8, uint16 or float32, optional
        An out of uint8 may be the mask.
    size : {3, 5}
        The mask of steps: 5 adds the knight's steps.
    norm : {"l2", "l1", "inf"}
        Which of the usual costs.
    costs : sequence of 2 (size 3) or 3 (size 5) numbers, optional
        Of a step along an axis, a diagonal one and a knight's one: floats above 0; integers from 1 on for integer
        results. Instead of the usual ones.
    dtype : {float32, uint16, uint8}
        The result's type without ``out``. Integers are limited to their largest value.

    Returns
    -------
    out : (H, W) array

    Notes
    -----
    G. Borgefors, "Distance Transformations in Digital Images", CVGIP 34, 1986.

    See Also
    --------
    scipy.ndimage.distance_transform_cdt : the same for the norms "l1" (taxicab) and "inf" (chessboard).

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.chamfer_distance(np.array([[0, 1, 1, 1]], np.uint8), costs=[3, 4], size=3, dtype=np.uint8)
    array([[0, 3, 6, 9]], dtype=uint8)
    """
    mask = np.asarray(mask)
    source, step, roi = expect(mask, "mask", "8u_C1")
    members = choose(_CHAMFER, size, "size")
    dtype = out.dtype if isinstance(out, np.ndarray) else np.dtype(dtype)
    if dtype not in _RESULTS:
        raise TypeError(f"{'dtype' if out is None else 'out'} must be float32, uint16 or uint8, not {dtype}")
    key, code, cost_type = _RESULTS[dtype]
    if costs is None:
        costs = _usual_costs(size, norm, cost_type)
    elif len(costs) == (size + 1) // 2:
        costs = _costs(list(costs), cost_type)
    else:
        raise ValueError(f"costs must be {(size + 1) // 2} numbers for size {size}, not {len(costs)}")
    out, (target, target_step, _, _) = output(out, "out", mask.shape, code)
    if out is mask:
        check(_CHAMFER_IN_PLACE[size][key](target, target_step, roi, costs))
    else:
        apart(mask, out, "out")
        check(members[key](source, step, target, target_step, roi, costs))
    return out
