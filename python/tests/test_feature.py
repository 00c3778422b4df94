"""Features beside their definitions in numpy and, on clear pictures, beside scikit-image's."""
import numpy as np
import pytest
import scipy.ndimage as nd
import skimage.feature

import rvxcv
from conftest import Call, CallChecks, picture

SMOOTHING = {("sobel", 3): [1, 2, 1], ("sobel", 5): [1, 4, 6, 4, 1], ("scharr", 3): [3, 10, 3], ("central", 3): [1]}
DIFFERENCE = {3: [-1, 0, 1], 5: [-1, -2, 0, 2, 1]}
SCALE = {("sobel", 3): 1 / 4080, ("sobel", 5): 1 / 65280, ("scharr", 3): 0.6125 / 4080, ("central", 3): 1 / 255}
KERNELS = list(SCALE)


def gradient(image, kernel, size, **border):
    """Right minus left and below minus above, smoothed across."""
    wide = image.astype(float)
    smooth, difference = SMOOTHING[kernel, size], DIFFERENCE[size]
    border = border or {"mode": "nearest"}
    return tuple(nd.correlate(wide, np.outer(*pair).astype(float), **border)
                 for pair in ((smooth, difference), (difference, smooth)))


def blobs(shape, seed=0):
    """A smooth picture with edges in all directions."""
    noise = nd.gaussian_filter(np.random.default_rng([seed, *shape]).random(shape), 3)
    return ((noise > 0.5) * 120 + nd.uniform_filter(noise, 5) * 200).astype(np.uint8)


def hysteresis(dx, dy, magnitude, passes, high):
    m = np.pad(magnitude, 1)
    height, width = dx.shape

    def beside(x, y):
        return m[1 + y:1 + y + height, 1 + x:1 + x + width]

    across, down = abs(dx), abs(dy)
    tangent = np.tan(np.pi / 8)
    horizontal, vertical = across * tangent > down, across < down * tangent
    falling = ~horizontal & ~vertical & (dx * dy > 0)
    rising = ~horizontal & ~vertical & ~falling
    largest = (horizontal & (magnitude > beside(-1, 0)) & (magnitude >= beside(1, 0))) | \
        (vertical & (magnitude > beside(0, -1)) & (magnitude >= beside(0, 1))) | \
        (falling & (magnitude > beside(-1, -1)) & (magnitude > beside(1, 1))) | \
        (rising & (magnitude > beside(1, -1)) & (magnitude > beside(-1, 1)))
    candidates = largest & passes
    labels, _ = nd.label(candidates, np.ones((3, 3)))
    chosen = np.unique(labels[candidates & (magnitude > high)])
    return np.where(candidates & np.isin(labels, chosen), 255, 0)


@pytest.mark.parametrize("norm", ["l1", "l2"])
@pytest.mark.parametrize("kernel, size", [("sobel", 3), ("sobel", 5), ("scharr", 3)])
@pytest.mark.parametrize("shape", [(1, 1), (31, 40), (60, 97)])
def test_canny(shape, kernel, size, norm):
    image = blobs(shape)
    scale = sum(SMOOTHING[kernel, size]) * sum(DIFFERENCE[size][-(size // 2):])
    low, high = 10.3 * scale, 30.7 * scale
    for border, options in (({"mode": "nearest"}, {}),
                            ({"mode": "constant", "cval": 90}, {"border": "constant", "value": 90})):
        dx, dy = gradient(image, kernel, size, **border)
        magnitude = abs(dx) + abs(dy) if norm == "l1" else np.hypot(dx, dy)
        expected = hysteresis(dx, dy, magnitude, magnitude > (int(low) if norm == "l1" else low), high)
        edges = rvxcv.canny(image, low, high, norm=norm, kernel=kernel, size=size, **options)
        np.testing.assert_array_equal(edges, expected)
    if shape[0] > 1:
        assert 0.01 < (edges != 0).mean() < 0.3


@pytest.mark.parametrize("dtype", ["int16", "float32"])
def test_canny_from_derivatives(dtype):
    dx, dy = (derivative.astype(dtype) for derivative in gradient(blobs((50, 61)), "sobel", 3))
    magnitude = abs(dx.astype(float)) + abs(dy)
    passes = magnitude > 40 if dtype == "int16" else magnitude >= 40
    np.testing.assert_array_equal(rvxcv.canny_from_derivatives(dx, dy, 40, 100),
                                  hysteresis(dx.astype(float), dy.astype(float), magnitude, passes, 100))


def test_canny_finds_the_edges_that_scikit_image_finds():
    y, x = np.mgrid[:80, :100]
    image = np.where((np.hypot(y - 40, x - 35) < 25) | ((x > 70) & (x < 90) & (y > 15) & (y < 60)), 200, 40)
    image = np.rint(nd.gaussian_filter(image.astype(float), 1)).astype(np.uint8)
    ours = rvxcv.canny(image, 100, 300) != 0
    theirs = skimage.feature.canny(image, sigma=1, low_threshold=10, high_threshold=30)
    assert ours.sum() > 200
    for one, other in ((ours, theirs), (theirs, ours)):  # the other side of the step at most
        assert nd.distance_transform_edt(~other)[one].max() <= 1.5


def test_canny_with_sides_in_memory():
    whole = blobs((50, 61))
    inner = whole[2:40, 2:50]
    dx, dy = gradient(whole, "sobel", 5)
    dx, dy = dx[2:40, 2:50], dy[2:40, 2:50]
    magnitude = np.hypot(dx, dy)
    expected = hysteresis(dx, dy, magnitude, magnitude >= 500.5, 1500.5)
    np.testing.assert_array_equal(rvxcv.canny(inner, 500.5, 1500.5, size=5, inside="all"), expected)
    with pytest.raises(ValueError, match="sides in memory"):
        rvxcv.canny(whole[1:], 1, 2, size=5, inside="top")


def covariance(image, kernel, aperture, block):
    dx, dy = gradient(image, kernel, aperture)
    return [nd.uniform_filter(product, block, mode="nearest") * SCALE[kernel, aperture]
            for product in (dx * dx, dx * dy, dy * dy)]


@pytest.mark.parametrize("kernel, aperture", KERNELS)
@pytest.mark.parametrize("block", [3, 5])
@pytest.mark.parametrize("dtype", ["uint8", "float32"])
@pytest.mark.parametrize("shape", [(1, 1), (31, 40)])
def test_corner_measures(shape, dtype, block, kernel, aperture):
    image = blobs(shape).astype(dtype)
    options = {"kernel": kernel, "aperture": aperture, "block": block}
    a, c, b = covariance(image, kernel, aperture, block)
    tolerance = {"rtol": 1e-4, "atol": 1e-5 * max((a + b).max(), 1)}
    np.testing.assert_allclose(rvxcv.corner_harris(image, k=0.06, **options),
                               a * b - c * c - 0.06 * (a + b) ** 2, rtol=1e-4, atol=1e-5 * max(((a + b) ** 2).max(), 1))
    if kernel == "central":
        return
    values, vectors = np.linalg.eigh(np.moveaxis(np.array([[a, c], [c, b]]), (0, 1), (2, 3)))
    smaller = rvxcv.corner_shi_tomasi(image, **options)
    np.testing.assert_allclose(smaller, values[..., 0], **tolerance)
    both = rvxcv.structure_eigen(image, **options)
    np.testing.assert_allclose(both[..., 0], values[..., 1], **tolerance)
    np.testing.assert_array_equal(both[..., 1], smaller)
    clear = values[..., 1] - values[..., 0] > 1e-3 * values[..., 1].max()
    along = abs((both[..., 2:4] * vectors[..., 1]).sum(axis=2))
    np.testing.assert_allclose(along[clear], 1, atol=1e-4)
    np.testing.assert_array_equal(both[..., 4:], np.stack([-both[..., 3], both[..., 2]], axis=2))


@pytest.mark.parametrize("kernel, aperture", KERNELS)
def test_suppression_of_lines(kernel, aperture):
    image, candidates = blobs((40, 50)), picture((40, 50))
    a, c, b = covariance(image, kernel, aperture, 3)
    root = np.sqrt((a - b) ** 2 + 4 * c * c)
    left = a + b - root - 0.1 * (a + b + root)
    result = rvxcv.suppress_lines(image, candidates, kernel=kernel, aperture=aperture)
    clear = abs(left) > 1e-4 * (a + b)
    np.testing.assert_array_equal(result[clear], np.where(left >= 0, candidates, 0)[clear])
    assert clear.mean() > 0.5 and 0.05 < (result[clear] != 0).mean() < 0.95
    assert rvxcv.suppress_lines(image, candidates, candidates, kernel=kernel, aperture=aperture) is candidates
    np.testing.assert_array_equal(candidates, result)


@pytest.mark.parametrize("neighbourhood", ["square", "cross"])
@pytest.mark.parametrize("border", [1, 4])
@pytest.mark.parametrize("dtype", ["int32", "float32"])
@pytest.mark.parametrize("shape", [(9, 8), (90, 160)])
def test_peaks(shape, dtype, border, neighbourhood):
    response = np.random.default_rng(6).integers(-50, 51, shape).astype(dtype)
    footprint = np.ones((3, 3)) if neighbourhood == "square" else nd.generate_binary_structure(2, 1)
    largest = response == nd.maximum_filter(response, footprint=footprint)
    smallest = response == nd.minimum_filter(response, footprint=footprint)
    for threshold in (20, -1):
        expected = (abs(response) > threshold) & np.where(response > 0, largest, smallest)
        expected[:border] = expected[-border:] = expected[:, :border] = expected[:, -border:] = False
        peaks = rvxcv.find_peaks(response, threshold, neighbourhood=neighbourhood, exclude_border=border)
        np.testing.assert_array_equal(peaks, np.argwhere(expected)[:, ::-1])
    if shape[0] > 9 and border == 1:
        assert len(peaks) > 1024  # the list has grown


CIRCLES = {
    1: "0,-1 1,-1 1,0 1,1 0,1 -1,1 -1,0 -1,-1",
    2: "0,-2 1,-2 2,-1 2,0 2,1 1,2 0,2 -1,2 -2,1 -2,0 -2,-1 -1,-2",
    3: "0,-3 1,-3 2,-2 3,-1 3,0 3,1 2,2 1,3 0,3 -1,3 -2,2 -3,1 -3,0 -3,-1 -2,-2 -1,-3"}


def fast_scores(image, radius, arc):
    points = [tuple(map(int, point.split(","))) for point in CIRCLES[radius].split()]
    padded = np.pad(image.astype(int), radius)
    height, width = image.shape
    circle = np.stack([padded[radius + y:radius + y + height, radius + x:radius + x + width] for x, y in points])
    circle -= image
    closed = np.concatenate([circle, circle[:arc - 1]])
    runs = np.stack([closed[i:i + arc] for i in range(len(points))])
    scores = np.maximum(np.maximum(runs.min(axis=1), (-runs).min(axis=1)).max(axis=0), 0)
    inner = np.zeros_like(scores)
    inner[radius:height - radius, radius:width - radius] = 1
    return scores * inner


@pytest.mark.parametrize("radius, arc", [(1, 5), (1, 8), (2, 7), (2, 12), (3, 9), (3, 12), (3, 16)])
@pytest.mark.parametrize("shape", [(5, 4), (40, 61)])
def test_fast_corners(shape, radius, arc):
    noise = np.random.default_rng(9).random(shape)
    for image in (picture(shape), np.where(noise > 0.97, 255, noise * 60).astype(np.uint8)):
        scores = fast_scores(image, radius, arc)
        scores[scores <= 20] = 0
        np.testing.assert_array_equal(rvxcv.corner_fast(image, 20, radius=radius, arc=arc, thin=False), scores)
        marks = rvxcv.corner_fast(image, 20, radius=radius, arc=arc, scores=False, thin=False)
        np.testing.assert_array_equal(marks, np.where(scores, 255, 0))
        m = np.pad(scores, 1)
        before = [m[:-2, :-2], m[:-2, 1:-1], m[:-2, 2:], m[1:-1, :-2]]
        behind = [m[2:, 2:], m[2:, 1:-1], m[2:, :-2], m[1:-1, 2:]]
        thin = np.where((scores > np.max(before, axis=0)) & (scores >= np.max(behind, axis=0)), scores, 0)
        result = rvxcv.corner_fast(image, 20, radius=radius, arc=arc)
        np.testing.assert_array_equal(result, thin)
        points, values = rvxcv.corner_points(result)
        np.testing.assert_array_equal(points, np.argwhere(thin)[:, ::-1])
        np.testing.assert_array_equal(values, thin[thin > 0])


def test_fast_corners_are_those_of_scikit_image():
    image = blobs((60, 80))
    ours = rvxcv.corner_fast(image, 25, arc=12, thin=False) != 0
    theirs = skimage.feature.corner_fast(image.astype(float), 12, 25) > 0
    assert ours.any()
    np.testing.assert_array_equal(ours, theirs)


def test_what_is_refused():
    grey, real = picture((9, 12)), picture((9, 12), "float32")
    for error, call in (
            (TypeError, lambda: rvxcv.canny(real, 1, 2)), (rvxcv.Error, lambda: rvxcv.canny(grey, 2, 1)),
            (rvxcv.Error, lambda: rvxcv.canny(grey, 1, 2, size=5, kernel="scharr")),
            (rvxcv.Error, lambda: rvxcv.canny(grey, 1, 2, border="wrap")),
            (ValueError, lambda: rvxcv.canny(grey, 1, 2, size=7)),
            (ValueError, lambda: rvxcv.canny(grey, 1, 2, norm="inf")),
            (OverflowError, lambda: rvxcv.canny(grey, 1, 2, border="constant", value=256)),
            (ValueError, lambda: rvxcv.canny_from_derivatives(real, real[1:], 1, 2)),
            (TypeError, lambda: rvxcv.canny_from_derivatives(real, real.astype("int16"), 1, 2)),
            (ValueError, lambda: rvxcv.corner_shi_tomasi(grey, kernel="central")),
            (rvxcv.Error, lambda: rvxcv.corner_shi_tomasi(grey, aperture=7)),
            (rvxcv.Error, lambda: rvxcv.corner_harris(grey, k=-1)),
            (rvxcv.Error, lambda: rvxcv.corner_harris(grey, block=4)),
            (rvxcv.Error, lambda: rvxcv.suppress_lines(grey, grey.copy(), ratio=2)),
            (ValueError, lambda: rvxcv.suppress_lines(grey, grey[1:])),
            (ValueError, lambda: rvxcv.structure_eigen(grey, np.zeros((9, 12, 5), np.float32))),
            (ValueError, lambda: rvxcv.structure_eigen(grey, np.zeros((9, 12, 12), np.float32)[:, :, ::2])),
            (rvxcv.Error, lambda: rvxcv.find_peaks(real, 1, exclude_border=5)),
            (TypeError, lambda: rvxcv.find_peaks(grey, 1)),
            (rvxcv.Error, lambda: rvxcv.corner_fast(grey, 20, radius=4)),
            (rvxcv.Error, lambda: rvxcv.corner_fast(grey, 20, scores=False)),
            (rvxcv.Error, lambda: rvxcv.corner_fast(grey, -1))):
        with pytest.raises(error):
            call()


def test_outputs_that_share_memory_with_inputs():
    memory = np.zeros((10, 288), np.uint8)
    grey, real = memory[:, :12], memory.view(np.float32)[:, :12]
    derivative, other = memory.view(np.int16)[:, :12], np.zeros((10, 12), np.int16)
    for call in (lambda: rvxcv.canny_from_derivatives(derivative, other, 1, 2, grey),
                 lambda: rvxcv.canny_from_derivatives(other, derivative, 1, 2, grey),
                 lambda: rvxcv.corner_shi_tomasi(grey, real), lambda: rvxcv.corner_harris(grey, real),
                 lambda: rvxcv.structure_eigen(grey, memory.view(np.float32).reshape(10, 12, 6)),
                 lambda: rvxcv.suppress_lines(grey, grey.copy(), grey),
                 lambda: rvxcv.suppress_lines(grey[1:].copy(), grey[1:], grey[:-1])):
        with pytest.raises(ValueError, match="share"):
            call()


GREY, REAL = blobs((21, 33)), picture((21, 33), "float32")


def edges(image, out=None):  # without sides in memory: magnitudes outside are 0 there, too
    return rvxcv.canny(image, 40, 100, out)


class TestCalls(CallChecks):
    calls = [
        Call(edges, GREY), Call(rvxcv.canny_from_derivatives, REAL, REAL * 2, 40, 100, images=[0, 1]),
        Call(rvxcv.corner_shi_tomasi, GREY), Call(rvxcv.corner_harris, REAL), Call(rvxcv.structure_eigen, GREY),
        Call(rvxcv.suppress_lines, GREY, picture((21, 33)), images=[0, 1]), Call(rvxcv.find_peaks, REAL, 100),
        Call(rvxcv.corner_fast, picture((21, 33)), 20), Call(rvxcv.corner_points, GREY),
    ]
