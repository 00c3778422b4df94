"""Halving, doubling and layers of any rate, beside scipy's filters and the documented sums."""
import numpy as np
import pytest
from scipy import ndimage

import rvxcv
from conftest import Call, CallChecks, in_threads, picture

KERNEL = np.array([1, 4, 6, 4, 1])
SHAPES = [(1, 1), (2, 3), (7, 38), (16, 33)]


def by_channel(function, image):
    """A function of planes, applied to each channel of an image, in double precision."""
    planes = np.atleast_3d(image).astype("float64")
    result = np.stack([function(planes[..., channel]) for channel in range(planes.shape[2])], axis=2)
    return result if image.ndim == 3 else result[..., 0]


def rounded(values, dtype):
    return np.floor(values + 0.5) if np.dtype(dtype).kind in "iu" else values


@pytest.mark.parametrize("channels", [(), (3,)])
@pytest.mark.parametrize("dtype", ["uint8", "int8", "float32"])
@pytest.mark.parametrize("shape", SHAPES)
def test_halving_and_doubling(shape, dtype, channels):
    image = picture((*shape, *channels), dtype)

    def half(plane):
        for axis in (0, 1):
            plane = ndimage.correlate1d(plane, KERNEL / 16, axis, mode="mirror")
        return plane[::2, ::2]

    def double(plane):
        for axis in (0, 1):
            c = np.moveaxis(plane, axis, 0)
            before, after = np.concatenate([c[1:2] if len(c) > 1 else c[:1], c[:-1]]), np.concatenate([c[1:], c[-1:]])
            doubled = np.empty((2 * len(c), c.shape[1]))
            doubled[::2], doubled[1::2] = (before + 6 * c + after) / 8, (c + after) / 2
            plane = np.moveaxis(doubled, 0, axis)
        return plane

    for function, reference in ((rvxcv.pyramid_reduce, half), (rvxcv.pyramid_expand, double)):
        result = function(image)
        assert result.dtype == dtype
        expected = rounded(by_channel(reference, image), dtype)
        np.testing.assert_allclose(result, expected, rtol=0, atol=1e-3 if dtype == "float32" else 0)


RATES = [1.25, 2, 2.5]  # exact in single precision, so that the kernel ends at the same pixels


@pytest.mark.parametrize("rate", RATES)
@pytest.mark.parametrize("channels", [(), (3,)])
@pytest.mark.parametrize("dtype", ["uint8", "uint16", "float32"])
def test_layers_down(dtype, channels, rate):
    reduce = rvxcv.PyramidReducer(rate, KERNEL)
    for shape in SHAPES:
        image = picture((*shape, *channels), dtype)

        def sampled(plane):
            for axis in (0, 1):
                plane = ndimage.correlate1d(plane, KERNEL / 16, axis, mode="mirror")
            height, width = rvxcv.reduced_shape(shape, rate)
            y, x = np.meshgrid(np.arange(height) * rate, np.arange(width) * rate, indexing="ij")
            return ndimage.map_coordinates(plane, [y, x], order=1, mode="nearest")

        np.testing.assert_allclose(reduce(image), by_channel(sampled, image), rtol=1e-6,
                                   atol=0.02 if dtype == "float32" else 0.6)


@pytest.mark.parametrize("rate", RATES)
@pytest.mark.parametrize("dtype", ["uint8", "uint16", "float32"])
def test_layers_up(dtype, rate):
    expand = rvxcv.PyramidExpander(rate, KERNEL)
    length = 17
    image = picture((length, length), dtype)
    smallest, largest = rvxcv.expanded_shapes(image.shape, rate)
    result = expand(image)
    assert result.shape == largest
    np.testing.assert_array_equal(expand(image, shape=smallest), result[:smallest[0], :smallest[1]])
    source = np.arange(-4, length + 4)
    distance = source[:, None] * rate - np.arange(largest[0])
    weights = np.interp(distance, np.arange(-2, 3), KERNEL, left=0, right=0)
    weights /= weights.sum(0)
    extended = image.astype("float64")[np.ix_(*[np.where(source < 0, -source, np.minimum(source, length - 1))] * 2)]
    np.testing.assert_allclose(result, weights.T @ extended @ weights, rtol=1e-5,
                               atol=0.01 if dtype == "float32" else 0.6)


def test_pyramid():
    for dtype, rate in (("uint8", 2), ("uint16", 2), ("float32", 1.5)):
        image = picture((50, 71), dtype)
        pyramid = rvxcv.Pyramid(image, 3, rate=rate)
        assert len(pyramid) == 4 and pyramid[0] is image
        np.testing.assert_allclose(pyramid.scales, [1, 1 / rate, rate ** -2, rate ** -3])
        reduce = rvxcv.pyramid_reduce if dtype == "uint8" else rvxcv.PyramidReducer(rate)
        for level, following in zip(pyramid, pyramid[1:]):
            assert following.shape == rvxcv.reduced_shape(level.shape, rate)
            np.testing.assert_array_equal(reduce(level), following)
    assert len(rvxcv.Pyramid(image, 0)) == 1
    assert rvxcv.Pyramid(image, 50)[-1].shape == (1, 1)


def test_pyramid_refusals():
    image = picture((9, 9))
    for rate in (1, 11, np.nan):
        for call in (lambda: rvxcv.reduced_shape((5, 5), rate), lambda: rvxcv.expanded_shapes((5, 5), rate),
                     lambda: rvxcv.PyramidReducer(rate)(image), lambda: rvxcv.Pyramid(image, rate=rate)):
            with pytest.raises(rvxcv.Error, match="StatusBadArgument"):
                call()
    for call in (lambda: rvxcv.Pyramid(image, -1), lambda: rvxcv.PyramidReducer(2, [[1, 2, 1]]),
                 lambda: rvxcv.PyramidReducer(2, [0.25, 0.5, 0.25])(image),
                 lambda: rvxcv.PyramidExpander(2)(image, np.empty((18, 18), np.uint8), shape=(17, 17))):
        with pytest.raises(ValueError):
            call()
    with pytest.raises(rvxcv.Error, match="StatusBadSize"):
        rvxcv.PyramidExpander(2)(image, shape=(20, 20))
    with pytest.raises(rvxcv.Error, match="StatusBadArgument"):
        rvxcv.PyramidReducer(2, [1, 1])(image)
    with pytest.raises(TypeError, match="accepted"):
        rvxcv.pyramid_reduce(picture((9, 9), "uint16"))
    with pytest.warns(rvxcv.Warning, match="StatusKernelNotSymmetric"):
        result = rvxcv.PyramidReducer(2, [1, 2, 0])(image)
    np.testing.assert_array_equal(result, rvxcv.PyramidReducer(2, [1, 2, 1])(image))


def test_states_of_many_sizes():
    reduce = rvxcv.PyramidReducer(2)
    for _ in range(2):
        for length in range(1, 40):
            assert (reduce(np.full((length, 7), 9, np.uint8)) == 9).all()


def test_threads_share_states():
    images = [picture((500, 700), "float32", seed) for seed in range(8)]
    in_threads(rvxcv.PyramidReducer(1.5), images)
    in_threads(rvxcv.PyramidExpander(1.5), images)


REDUCE, EXPAND = rvxcv.PyramidReducer(1.7), rvxcv.PyramidExpander(1.7)


def layer_down(image, out=None):
    return REDUCE(image, out)


def layer_up(image, out=None):
    return EXPAND(image, out, shape=(35, 59))


class TestCalls(CallChecks):
    calls = [
        Call(rvxcv.pyramid_reduce, picture((21, 35, 3))),
        Call(rvxcv.pyramid_expand, picture((21, 35))),
        Call(layer_down, picture((21, 35), "float32")),
        Call(layer_up, picture((21, 35, 3), "uint16")),
    ]
