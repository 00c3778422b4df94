"""Flat morphology beside scipy's: footprints of any shape, compound operations, rank filters."""
import numpy as np
import pytest
import scipy.ndimage as nd

import rvxcv
from conftest import Call, CallChecks, picture

LAYOUTS = [((1, 1), "uint8"), ((23, 70), "uint8"), ((9, 41, 3), "uint8"), ((9, 41, 4), "uint8"), ((23, 37), "uint16"),
           ((23, 37), "int16"), ((23, 37), "float32"), ((9, 21, 3), "float32"), ((9, 21, 4), "float32")]
FOOTPRINTS = {
    "row": np.ones((1, 5)), "square": np.ones((3, 3), bool), "ellipse": rvxcv.ellipse(7, 5),
    "corner": np.array([[1, 1, 0], [1, 0, 0], [0, 0, 0]]), "holes": picture((5, 7), bool, 3).astype(float) / 2,
    "far": np.array([[0, 0, 0, 0, 256]]),
}


def channels(function, image, footprint, **options):
    """A scipy filter of each channel by itself, with the nearest pixels outside."""
    planes = image.reshape(*image.shape[:2], -1)
    footprint = np.asarray(footprint) != 0
    return np.stack([function(planes[..., i], footprint=footprint, mode="nearest", **options)
                     for i in range(planes.shape[2])], axis=-1).reshape(image.shape)


def low(image, footprint):
    return channels(nd.minimum_filter, image, footprint)


def high(image, footprint):
    return channels(nd.maximum_filter, image, footprint)


def difference(first, second):
    kind = first.dtype
    if kind.kind == "f":
        return np.maximum(first - second, 0)
    lowest = -2**15 if kind == np.int16 else 0
    return np.clip(first.astype(int) - second, lowest, np.iinfo(kind).max).astype(kind)


@pytest.mark.parametrize("name", FOOTPRINTS)
@pytest.mark.parametrize("shape, dtype", LAYOUTS)
def test_operations(shape, dtype, name):
    image, footprint = picture(shape, dtype), FOOTPRINTS[name]
    turned = np.asarray(footprint)[::-1, ::-1]
    opened, closed = high(low(image, footprint), turned), low(high(image, footprint), turned)
    expected = {
        rvxcv.erode: low(image, footprint), rvxcv.dilate: high(image, footprint),
        rvxcv.morph_open: opened, rvxcv.morph_close: closed,
        rvxcv.morph_tophat: difference(image, opened), rvxcv.morph_blackhat: difference(closed, image),
        rvxcv.morph_gradient: difference(high(image, footprint), low(image, footprint)),
    }
    for function, result in expected.items():
        np.testing.assert_array_equal(function(image, footprint), result, function.__name__)


def test_an_empty_footprint_copies():
    image = picture((5, 9))
    np.testing.assert_array_equal(rvxcv.erode(image, np.zeros((3, 3))), image)
    np.testing.assert_array_equal(rvxcv.morph_open(image, np.zeros((3, 3))), image)


@pytest.mark.parametrize("width, height", [(1, 1), (2, 5), (9, 9), (12, 3)])
def test_ellipse(width, height):
    y, x = np.mgrid[:height, :width]
    squared = ((x + 0.5) / width - 0.5) ** 2 + ((y + 0.5) / height - 0.5) ** 2
    assert np.array_equal(rvxcv.ellipse(width, height), squared <= 0.25 + 1e-12)


@pytest.mark.parametrize("function", [rvxcv.erode, rvxcv.dilate, rvxcv.morph_open, rvxcv.morph_close,
                                      rvxcv.morph_tophat, rvxcv.morph_blackhat, rvxcv.morph_gradient])
def test_sides_in_memory(function):
    whole, footprint = picture((40, 60)), rvxcv.ellipse(6, 5)
    result = function(whole, footprint)
    inner = whole[8:30, 10:50]
    np.testing.assert_array_equal(function(inner, footprint, inside="all"), result[8:30, 10:50])
    at_edge = whole[:30, 10:]
    np.testing.assert_array_equal(function(at_edge, footprint, inside=("left", "bottom")), result[:30, 10:])
    with pytest.raises(ValueError, match="sides in memory"):
        function(whole[1:, 1:], footprint, inside="top")
    overlapping = np.ndarray((10, 10), np.uint8, bytearray(19), strides=(1, 1))  # nothing lies beside its rows
    with pytest.raises(ValueError, match="sides in memory"):
        function(overlapping[8:9], np.ones((3, 1)), inside="all")
    with pytest.raises(rvxcv.Error, match="BadBorder"):
        function(whole, footprint, border="wrap")


@pytest.mark.parametrize("function, depths", [(rvxcv.erode, (2, 1, 3, 2)), (rvxcv.morph_gradient, (2, 1, 3, 2)),
                                              (rvxcv.morph_open, (5, 3, 5, 3)), (rvxcv.morph_tophat, (5, 3, 5, 3))])
def test_how_much_must_be_in_memory(function, depths):
    whole, footprint = picture((40, 60)), rvxcv.ellipse(6, 4)
    for side, depth, cut in zip(("left", "top", "right", "bottom"), depths,
                                (lambda n: np.s_[:, n:], lambda n: np.s_[n:], lambda n: np.s_[:, :-n],
                                 lambda n: np.s_[:-n])):
        function(whole[cut(depth)], footprint, inside=side)
        if depth > 1:
            with pytest.raises(ValueError, match="sides in memory"):
                function(whole[cut(depth - 1)], footprint, inside=side)


@pytest.mark.parametrize("shape, dtype", [case for case in LAYOUTS if case[1] in ("uint8", "float32")])
@pytest.mark.parametrize("height, width", [(1, 1), (3, 3), (5, 9), (4, 2), (31, 1)])
def test_rank_filters(height, width, shape, dtype):
    image = picture(shape, dtype)
    for anchor in (None, (width - 1, 0)):
        x, y = anchor or ((width - 1) // 2, (height - 1) // 2)
        options = {"origin": (y - height // 2, x - width // 2)}
        footprint = np.ones((height, width))
        lowest = rvxcv.minimum_filter(image, (height, width), anchor=anchor)
        highest = rvxcv.maximum_filter(image, (height, width), anchor=anchor)
        np.testing.assert_array_equal(lowest, channels(nd.minimum_filter, image, footprint, **options))
        np.testing.assert_array_equal(highest, channels(nd.maximum_filter, image, footprint, **options))


def test_what_is_refused():
    image = picture((9, 9))
    with pytest.raises(TypeError, match="int32 with 1 channel is not .*packed bits"):
        rvxcv.erode(image.astype("int32"), np.ones((3, 3)))
    for footprint in (np.ones(3), np.ones((0, 3))):
        with pytest.raises(ValueError, match="footprint"):
            rvxcv.dilate(image, footprint)
    with pytest.raises(rvxcv.Error, match="BadAnchor"):
        rvxcv.minimum_filter(image, 3, anchor=(3, 0))
    with pytest.raises(rvxcv.Error, match="BadMaskSize"):
        rvxcv.maximum_filter(image, 0)
    with pytest.raises(ValueError, match="share"):
        rvxcv.morph_open(image, np.ones((3, 3)), out=image)


GREY, COLOUR = picture((21, 33)), picture((21, 33, 3), "float32")
ROUND = rvxcv.ellipse(5, 4)


class TestCalls(CallChecks):
    calls = [
        Call(rvxcv.erode, GREY, ROUND), Call(rvxcv.dilate, COLOUR, ROUND), Call(rvxcv.morph_open, GREY, ROUND),
        Call(rvxcv.morph_close, GREY.astype("uint16"), ROUND), Call(rvxcv.morph_tophat, COLOUR, ROUND),
        Call(rvxcv.morph_blackhat, GREY.astype("int16"), ROUND), Call(rvxcv.morph_gradient, GREY, ROUND),
        Call(rvxcv.minimum_filter, GREY, (4, 5)), Call(rvxcv.maximum_filter, COLOUR, 7),
    ]
