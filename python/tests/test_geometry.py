"""Undistortion, beside the formulas in double precision and scipy's interpolation."""
import numpy as np
import pytest
from scipy import ndimage

import rvxcv
from conftest import Call, CallChecks, picture

SHAPE, FOCAL, CENTRE = (40, 61), (50, 47), (31.5, 18.25)


def places(radial, tangential=(0, 0)):
    (fx, fy), (cx, cy), (k1, k2), (p1, p2) = FOCAL, CENTRE, radial, tangential
    y, x = np.mgrid[:SHAPE[0], :SHAPE[1]].astype("float64")
    u, v = (x - cx) / fx, (y - cy) / fy
    square = u * u + v * v
    bent = 1 + k1 * square + k2 * square ** 2
    return (cx + fx * (u * bent + 2 * p1 * u * v + p2 * (square + 2 * u * u)),
            cy + fy * (v * bent + p1 * (square + 2 * v * v) + 2 * p2 * u * v))


@pytest.mark.parametrize("radial, tangential", [((0, 0), (0, 0)), ((-0.2, 0.05), (0, 0)), ((0.1, 0), (0.01, -0.02))])
def test_maps(radial, tangential):
    for result, expected in zip(rvxcv.undistort_maps(SHAPE, FOCAL, CENTRE, radial, tangential),
                                places(radial, tangential)):
        np.testing.assert_allclose(result, expected, rtol=0, atol=1e-4)


@pytest.mark.parametrize("channels", [(), (3,)])
@pytest.mark.parametrize("dtype", ["uint8", "uint16", "float32"])
@pytest.mark.parametrize("radial", [(0, 0), (-0.2, 0.05), (0.3, 0.1)])
def test_undistort(radial, dtype, channels):
    image = picture((*SHAPE, *channels), dtype)
    result = rvxcv.undistort(image, FOCAL, CENTRE, radial)
    if radial == (0, 0):
        np.testing.assert_array_equal(result, image)
        return
    x, y = rvxcv.undistort_maps(SHAPE, FOCAL, CENTRE, radial)
    inside = (0 <= x) & (x <= SHAPE[1] - 1) & (0 <= y) & (y <= SHAPE[0] - 1)
    assert inside.any() and (radial[0] < 0 or not inside.all())
    for plane, own in zip(np.moveaxis(np.atleast_3d(image), 2, 0), np.moveaxis(np.atleast_3d(result), 2, 0)):
        expected = np.where(inside, ndimage.map_coordinates(plane.astype("float64"), [y, x], order=1), 0)
        np.testing.assert_allclose(own, expected, rtol=0, atol=0.05 if dtype == "float32" else 0.7)


def test_geometry_refusals():
    image = picture(SHAPE)
    for focal in ((0, 1), (1, -0.0)):
        for call in (lambda: rvxcv.undistort(image, focal, CENTRE, (0, 0)),
                     lambda: rvxcv.undistort_maps(SHAPE, focal, CENTRE)):
            with pytest.raises(rvxcv.Error, match="StatusBadArgument"):
                call()
    with pytest.raises(TypeError, match="accepted"):
        rvxcv.undistort(picture(SHAPE, "int16"), FOCAL, CENTRE, (0, 0))
    with pytest.raises(ValueError):
        rvxcv.undistort_maps((0, 5), FOCAL, CENTRE)
    same = np.empty(SHAPE, np.float32)
    with pytest.raises(ValueError, match="share"):
        rvxcv.undistort_maps(SHAPE, FOCAL, CENTRE, out=(same, same))


class TestCalls(CallChecks):
    calls = [
        Call(rvxcv.undistort, picture((21, 35)), FOCAL, (17, 10), (0.1, 0.01)),
        Call(rvxcv.undistort, picture((21, 35, 3), "float32"), FOCAL, (17, 10), (0.1, 0.01), name="colour"),
        Call(rvxcv.undistort_maps, SHAPE, FOCAL, CENTRE, (0.1, 0), (0.01, 0), images=()),
    ]
