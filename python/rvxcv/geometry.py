"""Camera geometry: pictures without the distortion of their lens."""
from __future__ import annotations

import numpy as np
import numpy.typing as npt

from ._array import Members, apart, check, ffi, lib, output, view

__all__ = ["undistort", "undistort_maps"]

_UNDISTORT = Members("rvxiUndistortRadial_{}R")


def undistort(image: npt.ArrayLike, focal: tuple[float, float], centre: tuple[float, float],
              radial: tuple[float, float], out: npt.NDArray | None = None) -> npt.NDArray:
    """A picture without radial distortion.

    Parameters
    ----------
    image : (H, W) or (H, W, 3) array of uint8, uint16, float32
    focal : (fx, fy)
        Focal lengths, in pixels, not 0.
    centre : (cx, cy)
        Principal point, in pixels.
    radial : (k1, k2)
        The pixel at a distance r from the centre (in focal lengths) comes from ``1 + k1 * r**2 + k2 * r**4`` times its
        place.
    out : array like the image, optional
        Must not share memory with the image.

    Returns
    -------
    out : array like the image
        Interpolated linearly, integers rounded to nearest; 0 where the picture does not reach.

    Notes
    -----
    D. C. Brown, "Close-Range Camera Calibration", Photogrammetric Engineering 37(8), 1971.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.undistort(np.array([[1, 2, 3, 4, 5]], np.float32), (2, 2), (2, 0), (-0.25, 0))
    array([[1.5   , 2.0625, 3.    , 3.9375, 4.5   ]], dtype=float32)
    """
    image = np.asarray(image)
    source, step, roi, key = view(image, "image")
    member = _UNDISTORT[key]
    out, (target, target_step, _, _) = output(out, "out", image.shape, key.split("_")[0])
    apart(image, out, "out")
    (fx, fy), (cx, cy), (k1, k2) = focal, centre, radial
    check(member(source, step, target, target_step, roi, ffi.NULL, fx, fy, cx, cy, k1, k2))
    return out


def undistort_maps(shape: tuple[int, int], focal: tuple[float, float], centre: tuple[float, float],
                   radial: tuple[float, float] = (0, 0), tangential: tuple[float, float] = (0, 0),
                   out: tuple[npt.NDArray, npt.NDArray] | None = None) -> tuple[npt.NDArray, npt.NDArray]:
    """Where the pixels of the picture without distortion stand in the picture that was taken.

    Parameters
    ----------
    shape : (height, width)
        Of both pictures.
    focal, centre, radial
        As of `undistort`.
    tangential : (p1, p2)
        The lens' tangential distortion.
    out : (array, array), optional
        For the two results; they share no memory.

    Returns
    -------
    x, y : (H, W) arrays of float32
        ``scipy.ndimage.map_coordinates(image, [y, x])`` is the picture without distortion.

    Examples
    --------
    >>> import rvxcv
    >>> x, y = rvxcv.undistort_maps((1, 5), (2, 2), (2, 0), (-0.25, 0))
    >>> x
    array([[0.5   , 1.0625, 2.    , 2.9375, 3.5   ]], dtype=float32)
    """
    height, width = shape
    out = (None, None) if out is None else out
    x, (x_target, x_step, roi, _) = output(out[0], "out[0]", (height, width), "32f")
    y, (y_target, y_step, _, _) = output(out[1], "out[1]", (height, width), "32f")
    apart(x, y, "out[1]")
    check(lib.rvxiCreateMapCameraUndistort_32f_C1R(x_target, x_step, y_target, y_step, roi, ffi.NULL, *focal, *centre,
                                                   *radial, *tangential))
    return x, y
