"""Derivatives, means, Gaussians and separable kernels, beside scipy's."""
import numpy as np
import pytest
from scipy import ndimage

import rvxcv
from conftest import Call, CallChecks, in_threads, picture
from rvxcv import filter as module

MODES = {"replicate": "nearest", "constant": "constant", "wrap": "wrap", "mirror": "mirror", "reflect": "reflect"}
SMOOTH, FIRST, SECOND = ({3: [1, 2, 1], 5: [1, 4, 6, 4, 1]}, {3: [-1, 0, 1], 5: [-1, -2, 0, 2, 1]},
                         {3: [1, -2, 1], 5: [1, 0, -2, 0, 1]})
SCHARR = {3: [3, 10, 3]}
NEGATIVE = {size: [-tap for tap in taps] for size, taps in FIRST.items()}
KERNELS = [  # function, options, kernels along axis 0 and axis 1
    (rvxcv.sobel, {"axis": 1}, SMOOTH, FIRST), (rvxcv.sobel, {"axis": 0}, FIRST, SMOOTH),
    (rvxcv.sobel, {"axis": 1, "order": 2}, SMOOTH, SECOND), (rvxcv.sobel, {"axis": -2, "order": 2}, SECOND, SMOOTH),
    (rvxcv.sobel, {"axis": (-1, 0)}, FIRST, NEGATIVE), (rvxcv.sobel, {"negated": True}, SMOOTH, NEGATIVE),
    (rvxcv.scharr, {"axis": -1}, SCHARR, FIRST), (rvxcv.scharr, {"axis": 0}, FIRST, SCHARR),
]


def correlated(image, down, across, mode, value):
    wide = image.astype("float64")
    return ndimage.correlate1d(ndimage.correlate1d(wide, down, 0, mode=mode, cval=value), across, 1, mode=mode,
                               cval=value * sum(down))


def divided(sums, divisor, dtype):
    """The documented quotient: rounded to even, in the last W % 16 pixels of a row of W toward zero."""
    limits = np.iinfo(dtype)
    scaled = (sums.astype("float32") * (np.float32(1) / np.float32(divisor))).clip(limits.min, limits.max)
    bulk = sums.shape[1] // 16 * 16
    return np.concatenate([np.rint(scaled[:, :bulk]), np.trunc(scaled[:, bulk:])], axis=1).astype(dtype)


@pytest.mark.parametrize("border", MODES)
@pytest.mark.parametrize("function, options, down, across", KERNELS)
def test_derivatives(function, options, down, across, border):
    for size in sorted(set(down) & set(across)):
        options = {**options, "border": border, "value": 7, **({"size": size} if function is rvxcv.sobel else {})}
        for shape in ((1, 1), (7, 37), (16, 64)):
            image = picture(shape)
            expected = correlated(image, down[size], across[size], MODES[border], 7)
            result = function(image, **options)
            assert result.dtype == "int16"
            np.testing.assert_array_equal(result, expected)
            np.testing.assert_array_equal(function(image, divisor=9, **options), divided(expected, 9, "int8"))
            image = picture(shape, "float32")
            expected = correlated(image, down[size], across[size], MODES[border], 7)
            np.testing.assert_allclose(function(image, **options), expected, rtol=0, atol=0.1)


def test_derivatives_are_those_of_scipy():
    image = picture((9, 40), "float32")
    for axis in (0, 1, -1):
        np.testing.assert_allclose(rvxcv.sobel(image, axis, border="reflect"), ndimage.sobel(image, axis), atol=0.01)


@pytest.mark.parametrize("size", [3, 5])
@pytest.mark.parametrize("dtype", ["uint8", "float32"])
def test_laplacian_and_mean(dtype, size):
    image = picture((9, 40), dtype)
    expected = rvxcv.sobel(image, 1, order=2, size=size) + rvxcv.sobel(image, 0, order=2, size=size)
    np.testing.assert_allclose(rvxcv.laplacian(image, size=size), expected, rtol=0, atol=0.1)
    mean = ndimage.uniform_filter(image.astype("float64"), size, mode="mirror")
    mean = np.rint(mean) if dtype == "uint8" else mean
    np.testing.assert_allclose(rvxcv.uniform_filter(image, size, border="mirror"), mean, rtol=0, atol=1e-3)


def test_kernels():
    np.testing.assert_array_equal(rvxcv.sobel_kernel(7, 2, "int16"), np.poly1d([1, -2, 1]) * np.poly1d([1, 4, 6, 4, 1]))
    np.testing.assert_array_equal(rvxcv.sobel_kernel(3, negated=True), [1, 0, -1])
    for arguments, error in (((4,), rvxcv.Error), ((3, 3), rvxcv.Error), ((0,), rvxcv.Error), ((-1,), rvxcv.Error),
                             ((3, 1, "float64"), ValueError)):
        with pytest.raises(error):
            rvxcv.sobel_kernel(*arguments)


@pytest.mark.parametrize("border", ["replicate", "constant"])
@pytest.mark.parametrize("channels", [(), (3,)])
@pytest.mark.parametrize("dtype", ["uint8", "uint16", "int16", "float32"])
@pytest.mark.parametrize("sigma", [0.7, 2.5])
def test_gaussian(dtype, channels, border, sigma):
    image = picture((19, 37, *channels), dtype)
    value = (3, 50, 100)[:len(channels) * 3] or 50
    result = rvxcv.gaussian(image, sigma, border=border, value=value)
    planes = np.atleast_3d(image).astype("float64")
    expected = np.stack([ndimage.gaussian_filter(planes[..., c], sigma, mode=MODES[border], cval=np.ravel(value)[c])
                         for c in range(planes.shape[2])], axis=2).reshape(image.shape)
    atol = {"uint8": 2.5, "uint16": 40, "int16": 20, "float32": 0.01}[dtype]  # the rounding of the integers' taps
    np.testing.assert_allclose(result, expected, rtol=0, atol=atol)


def test_a_gaussian_of_any_size():
    image = picture((30, 40), "float32")
    expected = ndimage.gaussian_filter(image, 3, truncate=7 / 3, mode="nearest")
    np.testing.assert_allclose(rvxcv.gaussian(image, 3, size=15), expected, rtol=0, atol=0.01)
    for sigma, size in ((0, None), (-1, 3), (np.nan, None), (np.inf, None)):
        with pytest.raises((ValueError, rvxcv.Error)):
            rvxcv.gaussian(image, sigma, size=size)
    for size in (1, 4, -3):
        with pytest.raises(rvxcv.Error, match="StatusBadArgument"):
            rvxcv.gaussian(image, 1, size=size)
    with pytest.raises(rvxcv.Error, match="StatusBadBorder"):
        rvxcv.gaussian(image, 1, border="wrap")
    with pytest.raises(ValueError, match="3 numbers"):
        rvxcv.gaussian(picture((5, 5, 3)), 1, value=(1, 2))


def convolved(image, kernel_x, kernel_y, anchors, mode, value):
    result = image.astype("float64")
    for axis, kernel, anchor in ((1, kernel_x, anchors[0]), (0, kernel_y, anchors[1])):
        origin = 0 if anchor is None else anchor - len(kernel) // 2
        result = ndimage.convolve1d(result, kernel, axis, mode=mode, cval=value, origin=origin)
        value = value * sum(kernel)
    return result


@pytest.mark.parametrize("border", ["replicate", "constant"])
@pytest.mark.parametrize("anchors", [(None, None), (0, 2), (3, 0)])
@pytest.mark.parametrize("dtype, channels", [("uint8", 1), ("uint8", 3), ("int16", 1), ("uint16", 3), ("float32", 1),
                                             ("float32", 3)])
def test_separable(monkeypatch, dtype, channels, anchors, border):
    kernel_x, kernel_y = [1, 2, 0, 5], [4, 3, 1]
    for shape in ((1, 1), (2, 40), (50, 21)):
        image = picture((*shape, channels) if channels == 3 else shape, dtype) // 64
        out_dtype = "int16" if dtype == "uint8" else dtype
        planes = np.atleast_3d(image)
        expected = np.stack([convolved(planes[..., c], kernel_x, kernel_y, anchors, MODES[border], 3)
                             for c in range(channels)], axis=2).reshape(image.shape)
        for strip_bytes in (1, module._STRIP_BYTES):
            monkeypatch.setattr(module, "_STRIP_BYTES", strip_bytes)
            result = rvxcv.convolve_separable(image, kernel_x, kernel_y, dtype=out_dtype, anchors=anchors,
                                              border=border, value=3)
            np.testing.assert_allclose(result, expected, rtol=1e-5, atol=1e-3 if dtype == "float32" else 0)


@pytest.mark.parametrize("dtype", ["uint8", "int8", "int16"])
def test_separable_quotients_of_bytes(dtype):
    image, kernel = picture((40, 37)), np.array([1, -2, 3])
    rows = divided(ndimage.convolve1d(image.astype(int), kernel, 1, mode="nearest"), 2, "int16")
    expected = divided(ndimage.convolve1d(rows.astype(int), kernel, 0, mode="nearest"), 3, dtype)
    np.testing.assert_array_equal(rvxcv.convolve_separable(image, kernel, dtype=dtype, divisors=(2, 3)), expected)


def test_separable_in_sixteen_bits():
    image = picture((40, 37), "int16") // 256
    expected = rvxcv.convolve_separable(image, [1, 2, 1], [1, 0, -1])
    np.testing.assert_array_equal(rvxcv.convolve_separable(image, [1, 2, 1], [1, 0, -1], low=True), expected)
    quotient = rvxcv.convolve_separable(image, [1, 2, 1], [1], divisors=(3, 1), low=True)
    sums = ndimage.convolve1d(image, [1, 2, 1], 1, mode="nearest")
    np.testing.assert_array_equal(quotient, np.trunc(sums / 3))


def test_separable_refusals():
    image = picture((8, 9))
    for arguments, options, error in (
            (([0.5, 1],), {}, ValueError), (([40000],), {}, ValueError), (([[1]],), {}, ValueError),
            (([],), {}, ValueError), (([1, 1],), {"anchors": (2, 0)}, ValueError),
            (([1],), {"dtype": "uint16"}, TypeError),
            (([1],), {"dtype": "complex64"}, ValueError), (([1],), {"low": True}, TypeError),
            (([1],), {"divisors": (0, 1)}, rvxcv.Error), (([1],), {"border": "wrap"}, rvxcv.Error)):
        with pytest.raises(error):
            rvxcv.convolve_separable(image, *arguments, **options)
    with pytest.raises(ValueError, match="share"):
        rvxcv.convolve_separable(image, [1], out=image)
    with pytest.raises(ValueError, match="divisors"):
        rvxcv.convolve_separable(picture((8, 9), "float32"), [1], divisors=(2, 1))


@pytest.mark.parametrize("dtype", ["uint8", "uint16", "float32"])
def test_colour_gradient(dtype):
    image = picture((9, 37, 3), dtype)
    wide = abs(image.astype("float64"))
    share = 1 if dtype == "float32" else 3
    for norm, expected in (("inf", wide.max(2)), ("l1", wide.sum(2) / share),
                           ("l2", np.sqrt((wide ** 2).sum(2) / share))):
        result = rvxcv.colour_gradient(image, norm)
        np.testing.assert_allclose(result, expected, rtol=0 if share == 3 else 1e-6,
                                   atol=8 if dtype == "uint16" else 0.6)


def test_filter_refusals():
    image = picture((8, 9))
    for call in (lambda: rvxcv.sobel(image, 2), lambda: rvxcv.sobel(image, (0, 1), order=2),
                 lambda: rvxcv.sobel(image, 0, negated=True), lambda: rvxcv.sobel(image, size=7),
                 lambda: rvxcv.sobel(image.astype("float32"), divisor=2), lambda: rvxcv.scharr(image, (0, 1)),
                 lambda: rvxcv.sobel(image, border="nearest"), lambda: rvxcv.sobel(image, inside="above"),
                 lambda: rvxcv.colour_gradient(picture((3, 3, 3)), "l3")):
        with pytest.raises(ValueError):
            call()
    for call in (lambda: rvxcv.sobel(picture((8, 9), "int16")), lambda: rvxcv.uniform_filter(picture((8, 9, 3)))):
        with pytest.raises(TypeError, match="accepted: .*uint8"):
            call()


def test_threads_have_scratch_of_their_own():
    images = [picture((300, 400), "float32", seed) for seed in range(8)]
    in_threads(lambda image: rvxcv.gaussian(image, 5), images)
    in_threads(lambda image: rvxcv.convolve_separable(image, np.arange(31)), images)


GREY, FLOAT, COLOUR = picture((24, 45)), picture((24, 45), "float32"), picture((24, 45, 3))


class TestCalls(CallChecks):
    calls = [
        Call(rvxcv.sobel, GREY),
        Call(rvxcv.sobel, FLOAT, (0, 1), size=5, border="mirror", name="cross"),
        Call(rvxcv.sobel, GREY, 0, divisor=4, at_ends=1, name="divided"),
        Call(rvxcv.scharr, GREY),
        Call(rvxcv.laplacian, FLOAT, size=5, border="constant", value=3),
        Call(rvxcv.uniform_filter, GREY, 5),
        Call(rvxcv.gaussian, FLOAT, 1, size=9),
        Call(rvxcv.gaussian, COLOUR, 1.5, size=5, border="constant", value=(1, 2, 3), at_ends=2, name="colour"),
        Call(rvxcv.convolve_separable, GREY, np.array([1, 2, 3]), divisors=(3, 5), at_ends=2),
        Call(rvxcv.convolve_separable, FLOAT, np.array([1, 2, 3, 4]), border="constant", value=9, name="float"),
        Call(rvxcv.colour_gradient, COLOUR),
    ]
