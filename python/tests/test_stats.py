"""Integral images, deviations of windows, norms, means and extrema, beside numpy, scipy and scikit-image."""
import numpy as np
import pytest
from scipy import ndimage
from skimage.transform import integral_image

import rvxcv
from conftest import Call, CallChecks, picture

SHAPES = [(1, 1), (7, 37), (33, 16)]


@pytest.mark.parametrize("shape", SHAPES)
@pytest.mark.parametrize("dtype, out_dtype", [("uint8", "int32"), ("uint8", "float32"), ("float32", "float32")])
def test_integral_image(shape, dtype, out_dtype):
    image = picture(shape, dtype)
    result = rvxcv.integral_image(image, dtype=out_dtype)
    assert result.dtype == out_dtype and not result[0].any() and not result[:, 0].any()
    np.testing.assert_allclose(result[1:, 1:], integral_image(image.astype("float64")), rtol=1e-5, atol=0.5)
    if dtype == "uint8":
        np.testing.assert_array_equal(rvxcv.integral_image(image, dtype=out_dtype, start=5), result + 5)


DTYPES = [("int32", "float64"), ("int32", "int32"), ("float32", "float64")]


def tilted_sums(image):
    """Row by row from the two rows above; the outermost columns are the neighbours of the row above."""
    height, width = image.shape
    result = np.zeros((height + 2, width + 2))
    pixels = np.pad(image, ((0, 0), (0, 1)))
    for row in range(2, height + 2):
        above, two_above = result[row - 1], result[row - 2]
        result[row, 0], result[row, -1] = above[1], above[-2]
        result[row, 1:-1] = pixels[row - 2, :-1] + pixels[row - 2, 1:] + above[:-2] + above[2:] - two_above[1:-1]
    return result


@pytest.mark.parametrize("dtypes", DTYPES)
@pytest.mark.parametrize("shape", SHAPES)
def test_integral_images(shape, dtypes):
    image = picture(shape)
    wide = image.astype("float64")
    sums, squares = rvxcv.integral_images(image, dtypes=dtypes, start=(3, 4))
    assert (sums.dtype, squares.dtype) == dtypes
    np.testing.assert_array_equal(sums[1:, 1:], integral_image(wide) + 3)
    np.testing.assert_array_equal(squares[1:, 1:], integral_image(wide ** 2) + 4)
    sums, squares = rvxcv.integral_images(image, dtypes=dtypes, tilted=True)
    np.testing.assert_array_equal(rvxcv.integral_image(image, dtype=dtypes[0], tilted=True), sums)
    np.testing.assert_array_equal(sums, tilted_sums(wide))
    np.testing.assert_array_equal(squares, tilted_sums(wide ** 2))


@pytest.mark.parametrize("dtypes", DTYPES)
def test_deviations_of_windows(dtypes):
    image = picture((20, 31))
    windows = np.lib.stride_tricks.sliding_window_view(image.astype("float64"), (4, 5))[2:, 3:]
    expected = windows.std(axis=(2, 3))
    result = rvxcv.rect_std(*rvxcv.integral_images(image, dtypes=dtypes), (3, 2, 5, 4))
    np.testing.assert_allclose(result, expected, rtol=0, atol=0.501 if dtypes[1] == "int32" else 1e-3)
    if dtypes[1] == "int32":
        finer = rvxcv.rect_std(*rvxcv.integral_images(image, dtypes=dtypes), (3, 2, 5, 4), scale=-8)
        np.testing.assert_allclose(finer / 256, expected, rtol=0, atol=0.003)


@pytest.mark.parametrize("dtypes", DTYPES)
def test_deviations_of_tilted_windows(dtypes):
    image = picture((20, 31))
    left, top, width, height = 2, 1, 4, 3
    result = rvxcv.rect_std(*rvxcv.integral_images(image, dtypes=dtypes, tilted=True), (left, top, width, height),
                            tilted=True)
    assert result.shape == (20 + 1 - top - width - height, 31 - left - width)
    y, x = np.mgrid[:20, :31]
    for row, column in ((0, 0), (3, 4), (result.shape[0] - 1, 0), (result.shape[0] - 1, result.shape[1] - 1)):
        # Pixel centres in the axes of the window: down to the right and down to the left from its top corner.
        down, across = y + 0.5 - (row + top), x + 0.5 - (column + left + 1)
        right, back = down + across, down - across
        inside = (0 < right) & (right <= 2 * width) & (0 < back) & (back <= 2 * height)
        assert inside.sum() == 2 * width * height
        np.testing.assert_allclose(result[row, column], image[inside].std(), rtol=0,
                                   atol=0.501 if dtypes[1] == "int32" else 1e-3)


IMAGES = [(shape, dtype) for shape in ((1, 1), (7, 37), (7, 37, 3)) for dtype in ("uint8", "int8", "uint16", "float32")]


@pytest.mark.parametrize("mask_type", [None, bool, "uint8"])
@pytest.mark.parametrize("shape, dtype", IMAGES)
def test_numbers(shape, dtype, mask_type):
    image, second = picture(shape, dtype), picture(shape, dtype, seed=1)
    mask = None if mask_type is None else picture(shape[:2], mask_type, seed=2)
    for channel in range(3) if len(shape) == 3 else (None,):
        selection = np.ones(shape[:2], bool) if mask is None else mask != 0
        one, other = ((array if channel is None else array[..., channel]).astype("float64")
                      for array in (image, second))
        pixels, others = one[selection], other[selection]
        options = {"mask": mask, "channel": channel}
        for kind, order in (("inf", np.inf), ("l1", 1), ("l2", 2)):
            size, difference, relative = (np.linalg.norm(values, order) if values.size else 0 for values in
                                          (pixels, pixels - others, others))
            np.testing.assert_allclose(rvxcv.norm(image, kind, **options), size, rtol=1e-6)
            np.testing.assert_allclose(rvxcv.norm_difference(image, second, kind, **options), difference, rtol=1e-6)
            np.testing.assert_allclose(rvxcv.norm_difference(image, second, kind, relative=True, **options),
                                       difference / relative if pixels.size else 0, rtol=1e-6)
        mean, deviation = (pixels.mean(), pixels.std()) if pixels.size else (0, 0)
        np.testing.assert_allclose(rvxcv.mean_std(image, **options), (mean, deviation), rtol=1e-6, atol=1e-9)
        assert rvxcv.mean(image, **options) == rvxcv.mean_std(image, **options)[0]
        expected = (0, 0, (-1, -1), (-1, -1))
        if pixels.size:
            expected = ndimage.extrema(one, selection, 1)
        assert rvxcv.extrema(image, **options) == expected


def test_nothing_selected_and_not_a_number():
    image, none = picture((5, 6), "float32"), np.zeros((5, 6), bool)
    assert rvxcv.norm(image, mask=none) == rvxcv.mean(image, none) == 0
    assert rvxcv.extrema(image, none) == (0, 0, (-1, -1), (-1, -1))
    image[2, 3] = np.nan
    assert np.isnan(rvxcv.norm(image)) and np.isfinite(rvxcv.norm(image, mask=~np.isnan(image)))
    assert rvxcv.extrema(image)[:2] == (np.nanmin(image), np.nanmax(image))


def test_stats_refusals():
    image, colour = picture((5, 6)), picture((5, 6, 3))
    sums, squares = rvxcv.integral_images(image)
    for call in (lambda: rvxcv.norm(colour), lambda: rvxcv.norm(image, channel=0), lambda: rvxcv.norm(image, "l0"),
                 lambda: rvxcv.norm(image, mask=image[:3]), lambda: rvxcv.norm_difference(image, image[:3]),
                 lambda: rvxcv.integral_image(image.astype("float32"), start=1),
                 lambda: rvxcv.rect_std(sums, squares[1:], (0, 0, 1, 1)),
                 lambda: rvxcv.rect_std(sums[..., None], squares[..., None], (0, 0, 1, 1))):
        with pytest.raises(ValueError):
            call()
    for rect, tilted in (((-1, 0, 1, 1), False), ((0, 0, 0, 1), False), ((0, 0, 7, 1), False), ((6, 0, 1, 1), False),
                         ((0, 0, 2, 2), True), ((2, 0, 3, 3), True)):
        with pytest.raises(ValueError):
            rvxcv.rect_std(sums, squares, rect, tilted=tilted)
    for call in (lambda: rvxcv.norm(image.astype("int16")), lambda: rvxcv.norm(image, mask=sums[1:, 1:]),
                 lambda: rvxcv.rect_std(squares, sums, (0, 0, 1, 1)),
                 lambda: rvxcv.integral_image(image.astype("int16")),
                 lambda: rvxcv.integral_images(image, dtypes=("float32", "float32")),
                 lambda: rvxcv.integral_image(image.astype("float32"), tilted=True)):
        with pytest.raises(TypeError):
            call()
    for channel in (-1, 3):
        with pytest.raises(rvxcv.Error, match="StatusBadChannel"):
            rvxcv.mean(colour, channel=channel)


GREY, FLOAT, COLOUR, MASK = (picture((21, 35)), picture((21, 35), "float32"), picture((21, 35, 3)),
                             picture((21, 35), bool))
UPRIGHT, TILTED = rvxcv.integral_images(GREY), rvxcv.integral_images(GREY, dtypes=("int32", "int32"), tilted=True)


class TestCalls(CallChecks):
    calls = [
        Call(rvxcv.integral_image, GREY),
        Call(rvxcv.integral_image, FLOAT, name="float"),
        Call(rvxcv.integral_images, GREY),
        Call(rvxcv.integral_images, GREY, dtypes=("float32", "float64"), tilted=True, name="tilted"),
        Call(rvxcv.rect_std, *UPRIGHT, (2, 3, 5, 4), images=[0, 1]),
        Call(rvxcv.rect_std, *TILTED, (3, 0, 5, 4), images=[0, 1], tilted=True, name="tilted"),
        Call(rvxcv.norm, GREY, "l1", MASK, images=[0, 2]),
        Call(rvxcv.norm_difference, FLOAT, FLOAT * 2, "inf", images=[0, 1]),
        Call(rvxcv.norm_difference, GREY, picture((21, 35), seed=1), relative=True, images=[0, 1], name="relative"),
        Call(rvxcv.mean, FLOAT, MASK, images=[0, 1]),
        Call(rvxcv.mean_std, COLOUR, channel=1),
        Call(rvxcv.extrema, GREY),
        Call(rvxcv.extrema, COLOUR, MASK, images=[0, 1], channel=2, name="colour"),
    ]
