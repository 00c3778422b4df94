"""Sums of frames and absolute differences, beside numpy's."""
import numpy as np
import pytest

import rvxcv
from conftest import Call, CallChecks, picture

SHAPES = [(1, 1), (5, 37), (16, 64)]
MASKS = [None, bool, "uint8"]


def masked(mask, shape):
    return None if mask is None else picture(shape, mask, seed=5)


def selected(mask, values):
    return values if mask is None else np.where(mask != 0, values, 0)


@pytest.mark.parametrize("mask", MASKS)
@pytest.mark.parametrize("dtype", ["uint8", "int8", "uint16", "float32"])
@pytest.mark.parametrize("shape", SHAPES)
def test_accumulation(shape, dtype, mask):
    image, second = picture(shape, dtype), picture(shape, dtype, seed=1)
    start = picture(shape, "float32", seed=2)
    mask = masked(mask, shape)
    wide, wide_second, wide_start = (array.astype("float64") for array in (image, second, start))
    expected = {
        rvxcv.accumulate: ((image,), (), wide_start + selected(mask, wide)),
        rvxcv.accumulate_square: ((image,), (), wide_start + selected(mask, wide ** 2)),
        rvxcv.accumulate_product: ((image, second), (), wide_start + selected(mask, wide * wide_second)),
        rvxcv.accumulate_weighted: ((image,), (0.25,), wide_start + selected(mask, 0.25 * (wide - wide_start))),
    }
    for function, (images, parameters, result) in expected.items():
        if function is rvxcv.accumulate and dtype == "float32" and mask is None:
            continue  # numpy adds these as well
        total = start.copy()
        assert function(*images, total, *parameters, mask=mask) is total
        np.testing.assert_allclose(total, result, rtol=1e-6, atol=1e-3)


@pytest.mark.parametrize("shape, dtype", [((5, 37), "uint8"), ((5, 37, 3), "uint8"), ((5, 37), "uint16"),
                                          ((5, 37), "float32")])
def test_absdiff(shape, dtype):
    first, second = picture(shape, dtype), picture(shape, dtype, seed=1)
    expected = abs(first.astype("float32") - second.astype("float32")).astype(dtype)
    np.testing.assert_array_equal(rvxcv.absdiff(first, second), expected)


@pytest.mark.parametrize("number", [-3, 0, 77, 300, 2**17])
@pytest.mark.parametrize("dtype", ["uint8", "uint16", "float32"])
def test_absdiff_of_a_number(dtype, number):
    image = picture((3, 37), dtype)
    clamped = number if dtype == "float32" else np.clip(number, 0, np.iinfo(dtype).max)
    expected = abs(image.astype("float32") - np.float32(clamped)).astype(dtype)
    np.testing.assert_array_equal(rvxcv.absdiff(image, number), expected)


def test_what_is_not_supported_is_said():
    with pytest.raises(TypeError, match="int16 with 1 channel is not .*accepted: .*uint8 with 3 channels"):
        rvxcv.absdiff(picture((2, 3), "int16"), picture((2, 3), "int16"))
    with pytest.raises(ValueError, match="3 x 2"):
        rvxcv.absdiff(picture((2, 3)), picture((2, 4)))
    with pytest.raises(TypeError, match="first image's type"):
        rvxcv.absdiff(picture((2, 3)), picture((2, 3), "float32"))
    with pytest.raises(TypeError, match="in place"):
        rvxcv.accumulate(picture((2, 3)), None)
    with pytest.raises(ValueError, match="total"):
        rvxcv.accumulate(picture((2, 3)), np.zeros((3, 2), np.float32))


def test_a_sum_of_itself():
    rows = picture((9, 37), "float32")
    expected = rows + rows * rows
    np.testing.assert_allclose(rvxcv.accumulate_square(rows, rows), expected, rtol=1e-6)
    for image, mask in ((rows[1:], None), (picture((8, 37)), rows.view(np.uint8)[:8, :37])):
        with pytest.raises(ValueError, match="share"):
            rvxcv.accumulate_square(image, rows[:-1], mask)


GREY, TOTAL, MASK = picture((21, 33)), picture((21, 33), "float32", 1), picture((21, 33), bool, 2)


class TestCalls(CallChecks):
    calls = [
        Call(rvxcv.accumulate, GREY, TOTAL, changes=[1]),
        Call(rvxcv.accumulate, GREY, TOTAL, MASK, images=[0, 2], changes=[1], name="masked"),
        Call(rvxcv.accumulate_square, GREY, TOTAL, changes=[1]),
        Call(rvxcv.accumulate_product, GREY, GREY, TOTAL, images=[0, 1], changes=[2]),
        Call(rvxcv.accumulate_weighted, GREY, TOTAL, 0.25, changes=[1]),
        Call(rvxcv.blend, TOTAL, TOTAL * 2, 0.25, images=[0, 1]),
        Call(rvxcv.absdiff, GREY, picture((21, 33), seed=3), images=[0, 1]),
        Call(rvxcv.absdiff, GREY, 33, name="number"),
    ]
