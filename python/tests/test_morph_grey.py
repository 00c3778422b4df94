"""Grey morphology beside scipy's, reconstruction beside scikit-image's."""
import numpy as np
import pytest
import scipy.ndimage as nd
from skimage.morphology import reconstruction

import rvxcv
from conftest import Call, CallChecks, picture

Y, X = np.mgrid[-3:4, -4:5]
BALL = -(X ** 2 + 2 * Y ** 2)
SLOPE = picture((5, 3), "int16") // 500
HOLES = picture((7, 9), bool)


def expected(function, image, surface, footprint, **options):
    if function is rvxcv.grey_erode:
        result = nd.grey_erosion(image.astype("float64"), structure=surface, footprint=footprint, **options)
    else:  # scipy's is reflected
        footprint = None if footprint is None else footprint[::-1, ::-1]
        surface = surface[::-1, ::-1]
        result = nd.grey_dilation(image.astype("float64"), structure=surface, footprint=footprint, **options)
    return np.clip(result, 0, 255).astype("uint8") if image.dtype == np.uint8 else result.astype("float32")


@pytest.mark.parametrize("function", [rvxcv.grey_erode, rvxcv.grey_dilate])
@pytest.mark.parametrize("shape, dtype", [((1, 1), "uint8"), ((23, 70), "uint8"), ((17, 41), "float32")])
@pytest.mark.parametrize("surface, footprint", [(BALL, None), (SLOPE, None), (BALL, HOLES)])
def test_surfaces(function, shape, dtype, surface, footprint):
    image = np.rint(picture(shape, dtype)).astype(dtype)
    np.testing.assert_array_equal(function(image, surface, footprint=footprint),
                                  expected(function, image, surface, footprint, mode="nearest"))
    np.testing.assert_array_equal(function(image, surface, footprint=footprint, border="constant", value=77),
                                  expected(function, image, surface, footprint, mode="constant", cval=77))
    if footprint is not None:
        holes = np.where(footprint, surface, -np.inf)
        np.testing.assert_array_equal(function(image, holes), function(image, surface, footprint=footprint))


@pytest.mark.parametrize("function", [rvxcv.grey_erode, rvxcv.grey_dilate])
def test_sides_in_memory(function):
    whole = picture((40, 60), "float32")
    result = function(whole, BALL)
    np.testing.assert_array_equal(function(whole[3:30, 4:50], BALL, inside="all"), result[3:30, 4:50])
    with pytest.raises(ValueError, match="sides in memory"):
        function(whole[2:30, 4:50], BALL, inside="all")


@pytest.mark.parametrize("method", ["dilation", "erosion"])
@pytest.mark.parametrize("connectivity", [8, 4])
@pytest.mark.parametrize("dtype", ["uint8", "uint16", "float32"])
@pytest.mark.parametrize("shape", [(1, 1), (40, 61)])
def test_reconstruction(shape, dtype, connectivity, method):
    mask, marker = picture(shape, dtype), picture(shape, dtype, seed=1)
    limited = (np.minimum if method == "dilation" else np.maximum)(marker, mask)
    if connectivity == 8:
        neighbours = np.ones((3, 3))
    else:
        neighbours = nd.generate_binary_structure(2, 1)
    result = reconstruction(limited, mask, method, footprint=neighbours)
    np.testing.assert_array_equal(rvxcv.reconstruct(marker, mask, method=method, connectivity=connectivity), result)
    assert rvxcv.reconstruct(marker, mask, marker, method=method, connectivity=connectivity) is marker
    np.testing.assert_array_equal(marker, result)


def test_what_is_refused():
    image = picture((9, 9))
    for surface in (np.ones(3), np.ones((0, 1))):
        with pytest.raises(ValueError, match="surface"):
            rvxcv.grey_erode(image, surface)
    with pytest.raises(ValueError, match="whole numbers"):
        rvxcv.grey_erode(image, [[0.5]])
    with pytest.raises(ValueError, match="footprint"):
        rvxcv.grey_erode(image, BALL, footprint=[[1]])
    with pytest.raises(rvxcv.Error, match="OutOfRange"):
        rvxcv.grey_erode(image.astype("float32"), [[np.inf]])
    with pytest.raises(ValueError, match="connectivity must be one of 8, 4"):
        rvxcv.reconstruct(image, image, connectivity=2)
    with pytest.raises(ValueError, match="method"):
        rvxcv.reconstruct(image, image, method="dilate")
    with pytest.raises(ValueError, match="share"):
        rvxcv.reconstruct(image, image[:], image)


GREY, REAL = picture((21, 33)), picture((21, 33), "float32")


class TestCalls(CallChecks):
    calls = [
        Call(rvxcv.grey_erode, GREY, BALL), Call(rvxcv.grey_dilate, REAL, SLOPE, border="constant", value=3),
        Call(rvxcv.reconstruct, GREY, picture((21, 33), seed=4), images=[0, 1]),
    ]
