"""Regions beside scipy's and scikit-image's, else beside their definitions in plain Python."""
import heapq
import itertools

import numpy as np
import pytest
import scipy.ndimage as nd
import skimage.segmentation

import rvxcv
from conftest import Call, CallChecks, picture

STRUCTURES = {4: nd.generate_binary_structure(2, 1), 8: np.ones((3, 3))}


def few_levels(shape, dtype="uint8", levels=3):
    return (np.random.default_rng([levels, *shape]).integers(0, levels, shape) * 10).astype(dtype)


def component(joined, seed, connectivity):
    labels = nd.label(joined, STRUCTURES[connectivity])[0]
    return labels == labels[seed[1], seed[0]]


@pytest.mark.parametrize("connectivity", [4, 8])
@pytest.mark.parametrize("shape, dtype", [((1, 1), "uint8"), ((31, 70), "uint8"), ((31, 40), "uint16"),
                                          ((31, 40), "int32"), ((31, 40), "float32"), ((31, 40, 3), "uint8"),
                                          ((31, 40, 3), "uint16"), ((31, 40, 3), "float32")])
def test_flood_fill(shape, dtype, connectivity):
    image = few_levels(shape, dtype, 3 if len(shape) == 2 else 2)
    seed = shape[1] // 2, shape[0] // 3
    value = 77 if len(shape) == 2 else (77, 78, 79)
    start = image[seed[1], seed[0]].astype(int)
    cases = [({}, 0, 0)]
    if dtype != "int32":
        below, above = (0, 10) if len(shape) == 2 else (0, np.array([10, 0, 0]))
        cases += [({"tolerance": (below, above)}, below, above), ({"tolerance": 3}, 3, 3)]
    for options, below, above in cases:
        joined = (image >= start - below) & (image <= start + above)
        expected = component(joined if image.ndim == 2 else joined.all(axis=2), seed, connectivity)
        filled, region = rvxcv.flood_fill(image, seed, value, connectivity=connectivity, **options)
        assert filled.dtype == image.dtype
        painted = (filled != image) if image.ndim == 2 else (filled != image).any(axis=2)
        np.testing.assert_array_equal(painted, expected)
        assert (filled[expected] == value).all()
        rows, columns = (np.flatnonzero(expected.any(axis=axis)) for axis in (1, 0))
        assert region.area == expected.sum()
        assert region.box == (columns[0], rows[0], columns[-1] - columns[0] + 1, rows[-1] - rows[0] + 1)


@pytest.mark.parametrize("connectivity", [4, 8])
@pytest.mark.parametrize("dtype, channels", [("uint8", 1), ("uint16", 1), ("float32", 1), ("uint8", 3), ("float32", 3)])
def test_flood_fill_from_neighbour_to_neighbour(dtype, channels, connectivity):
    grey = np.rint(nd.gaussian_filter(np.random.default_rng(3).uniform(0, 255, (40, 50)), 2)).astype(dtype)
    image = grey if channels == 1 else np.repeat(grey[..., None], 3, axis=2)
    below, above = 0, 3  # only upwards, and not too steep
    inside = np.zeros(grey.shape, bool)
    inside[20, 25] = True
    wide = grey.astype(float)
    offsets = [(dy, dx) for dy in (-1, 0, 1) for dx in (-1, 0, 1) if STRUCTURES[connectivity][dy + 1, dx + 1]]
    while True:
        before = inside.copy()
        for dy, dx in offsets:
            come_from = nd.shift(before, (dy, dx), order=0, cval=False)
            step = wide - nd.shift(wide, (dy, dx), order=0, cval=1e9)
            inside |= come_from & (step >= -below) & (step <= above)
        if np.array_equal(before, inside):
            break
    filled, region = rvxcv.flood_fill(image, (25, 20), 255, connectivity=connectivity, tolerance=(below, above),
                                      reference="neighbour")
    np.testing.assert_array_equal(filled == 255, (inside if channels == 1 else np.repeat(inside[..., None], 3, 2)) |
                                  (image == 255))
    assert region.area == inside.sum() > 5


def test_flood_fill_of_a_seed_that_has_the_value():
    assert rvxcv.flood_fill(np.full((4, 4), 9, np.uint8), (1, 1), 9)[1] == rvxcv.Region(0, (0, 0, 0, 0))


def test_flood_fill_refuses():
    image = few_levels((6, 8))
    for seed in ((8, 0), (0, 6), (-1, 0)):
        with pytest.raises(rvxcv.Error, match="OutOfRange"):
            rvxcv.flood_fill(image, seed, 1)
    for error, arguments, options in ((OverflowError, ((0, 0), 256), {}), (TypeError, ((0, 0), 1.5), {}),
                                      (ValueError, ((0, 0), 1), {"tolerance": (1, 2, 3)}),
                                      (ValueError, ((0, 0), 1), {"tolerance": 1, "reference": "edge"}),
                                      (ValueError, ((0, 0), 1), {"connectivity": 6})):
        with pytest.raises(error):
            rvxcv.flood_fill(image, *arguments, **options)
    with pytest.raises(ValueError, match="3 numbers"):
        rvxcv.flood_fill(few_levels((6, 8, 3)), (0, 0), (1, 2))
    with pytest.raises(TypeError, match="int32"):
        rvxcv.flood_fill(image.astype("int32"), (0, 0), 1, tolerance=2)


@pytest.mark.parametrize("connectivity", [4, 8])
@pytest.mark.parametrize("shape", [(1, 1), (1, 90), (40, 61), (64, 64)])
def test_labels(shape, connectivity):
    for mask in (picture(shape, bool), few_levels(shape), np.zeros(shape, bool)):
        expected, number = nd.label(mask, STRUCTURES[connectivity])
        labels, count = rvxcv.label(mask, connectivity=connectivity)
        assert labels.dtype == np.int32 and count == number
        np.testing.assert_array_equal(labels, expected)
        cycled = np.where(expected > 0, (expected - 1) % 19 + 2, 0)
        for work in (mask.astype("uint8"), mask.astype("uint16")):
            result, count = rvxcv.label(work, work, connectivity=connectivity, first=2, last=20)
            assert result is work and count == number
            np.testing.assert_array_equal(work, cycled)


def test_labels_are_of_these_types():
    mask = picture((5, 9))
    assert rvxcv.label(mask, dtype="uint8")[0].dtype == np.uint8
    assert rvxcv.label(mask.astype("uint16"))[0].dtype == np.uint16
    dots = np.zeros((40, 40), np.uint8)
    dots[::2, ::2] = 1  # 400 components
    assert rvxcv.label(dots, dtype="uint8")[0].max() == 254
    for bad, options in ((mask, {"dtype": "uint16"}), (mask.astype("uint16"), {"dtype": "int32"}),
                         (mask.astype("float32"), {}), (mask, {"out": np.zeros((5, 9), np.int64)})):
        with pytest.raises(TypeError):
            rvxcv.label(bad, **options)
    for options in ({"first": 0}, {"first": 5, "last": 4}, {"dtype": "uint8", "last": 255}):
        with pytest.raises(rvxcv.Error, match="BadArgument"):
            rvxcv.label(mask, **options)
    with pytest.raises(ValueError, match="connectivity"):
        rvxcv.label(mask, connectivity=1)


def divide(image, markers, connectivity, line, gradient):
    """Both segmentations as they are defined, with one heap: of equal levels what was appended first comes first."""
    height, width = markers.shape
    labels, taken, last_entry = markers.copy(), markers > 0, {}
    heap, order, water = [], itertools.count(), 0

    def around(p):
        rows, columns = np.nonzero(STRUCTURES[connectivity])
        for y, x in zip(p[0] + rows - 1, p[1] + columns - 1):
            if (y, x) != p and 0 <= y < height and 0 <= x < width:
                yield y, x

    def offer(p):
        for q in around(p):
            if markers[q] != 0 or taken[q]:
                continue
            if gradient:
                level = np.abs(image[p].astype(int) - image[q]).max()
                wanted = q not in last_entry or level < last_entry[q][0]
            else:
                level, wanted = max(image[q], water), q not in last_entry
            if wanted:
                labels[q] = labels[p]
                last_entry[q] = level, next(order)
                heapq.heappush(heap, (*last_entry[q], q))

    for seed in zip(*np.nonzero(markers > 0)):
        offer(seed)
    while heap:
        water, number, p = heapq.heappop(heap)
        if last_entry[p] != (water, number):
            continue
        met = {labels[q] for q in around(p) if taken[q] and labels[q] > 0}
        taken[p] = True
        if line and len(met) > 1:
            labels[p] = 0
        else:
            offer(p)
    return labels


def seeds_and_walls(shape, seed=8):
    markers = np.zeros(shape, np.int32)
    places = np.random.default_rng(seed).choice(markers.size, 20, replace=False)
    markers.flat[places[:8]] = np.arange(8) + 1
    markers.flat[places[8:]] = -5
    return markers


@pytest.mark.parametrize("line", [False, True])
@pytest.mark.parametrize("connectivity", [4, 8])
@pytest.mark.parametrize("function, dtype, channels", [
    (rvxcv.watershed, "uint8", 1), (rvxcv.watershed, "uint16", 1), (rvxcv.segment_gradient, "uint8", 1),
    (rvxcv.segment_gradient, "uint8", 3)])
def test_divisions_as_defined(function, dtype, channels, connectivity, line):
    shape = (25, 31)
    markers = seeds_and_walls(shape)
    noise = picture((*shape, channels) if channels > 1 else shape, dtype)
    for image in (noise, nd.gaussian_filter(noise, 1.5), few_levels(noise.shape, dtype)):
        expected = divide(image, markers, connectivity, line, function is rvxcv.segment_gradient)
        result = function(image, markers, connectivity=connectivity, watershed_line=line)
        np.testing.assert_array_equal(result, expected)
    work = markers.copy()
    assert function(image, work, work, connectivity=connectivity, watershed_line=line) is work
    np.testing.assert_array_equal(work, expected)


@pytest.mark.parametrize("dtype", ["uint8", "uint16"])
def test_watershed_of_basins(dtype):
    """Smooth basins: flooded from their minima they meet at the ridges, wherever ties fall."""
    y, x = np.mgrid[:60, :90]
    centres = [(15, 20), (40, 30), (25, 70)]
    distances = np.stack([np.hypot(y - row, x - column) for row, column in centres])
    image = np.minimum(distances.min(axis=0) * 4, 255).astype(dtype)
    markers = np.zeros(image.shape, np.int32)
    for number, (row, column) in enumerate(centres):
        markers[row, column] = number + 1
    result = rvxcv.watershed(image, markers)
    ordered = np.sort(distances, axis=0)
    clear = (ordered[1] - ordered[0] > 3) & (ordered[0] < 60)
    np.testing.assert_array_equal(result[clear], distances.argmin(axis=0)[clear] + 1)
    np.testing.assert_array_equal(result[clear], skimage.segmentation.watershed(image, markers, 2)[clear])
    markers[:, 45] = -1  # a wall
    walled = rvxcv.watershed(image, markers)
    assert (walled[:, 45] == -1).all() and set(np.unique(walled[:, 46:])) == {3} and 3 not in walled[:, :45]


def test_markers_and_images_that_do_not_fit():
    image, markers = few_levels((6, 8)), np.zeros((6, 8), np.int32)
    for function in (rvxcv.watershed, rvxcv.segment_gradient):
        with pytest.raises(TypeError, match="markers must be int32"):
            function(image, markers.astype("int64").astype("uint8"))
        with pytest.raises(ValueError, match="8 x 6"):
            function(image, markers[:5])
        with pytest.raises(TypeError):
            function(image.astype("float32"), markers)


@pytest.mark.parametrize("dtype", ["uint8", "uint16", "int16", "float32"])
def test_speckles(dtype):
    random = np.random.default_rng(4)
    image = (random.integers(0, 4, (40, 60)) * 10 + random.integers(0, 2, (40, 60)) + 1).astype(dtype)
    expected = image.copy()
    for level in range(4):  # values of a level differ by 1 at most, those of two by 9 at least
        labels, _ = nd.label((image >= 10 * level + 1) & (image <= 10 * level + 2))
        sizes = np.bincount(labels.ravel())
        sizes[0] = 99
        expected[sizes[labels] <= 6] = 0
    np.testing.assert_array_equal(rvxcv.remove_speckles(image, 6, 1), expected)
    assert rvxcv.remove_speckles(image, 6, 1, image) is image
    with pytest.raises(rvxcv.Error, match="OutOfRange"):
        rvxcv.remove_speckles(image, -1, 1)


@pytest.mark.parametrize("connectivity", [4, 8])
@pytest.mark.parametrize("dtype", ["uint8", "uint16", "int32"])
def test_boundaries(dtype, connectivity):
    labels = few_levels((31, 40), dtype)
    padded = np.pad(labels.astype(int), 1, constant_values=-1)
    differs = np.zeros(labels.shape, bool)
    for dy, dx in ((0, 1), (1, 0), (1, 1), (1, -1))[:2 if connectivity == 4 else 4]:
        other = padded[1 + dy:32 + dy, 1 + dx:41 + dx]
        differs |= (other != labels) & (other >= 0)
    expected = np.where(differs, 99, labels)
    np.testing.assert_array_equal(rvxcv.mark_boundaries(labels, 99, connectivity=connectivity), expected)
    assert rvxcv.mark_boundaries(labels, 99, labels, connectivity=connectivity) is labels
    np.testing.assert_array_equal(labels, expected)


@pytest.mark.parametrize("method", ["march", "diffusion"])
@pytest.mark.parametrize("dtype, channels", [("uint8", 1), ("uint8", 3), ("float32", 1)])
def test_inpainting_restores_a_ramp(dtype, channels, method):
    y, x = np.mgrid[:40, :50]
    ramp = (2 * x + y).astype(dtype)
    if channels == 3:
        ramp = np.stack([ramp, 255 - ramp, ramp // 2 + 50], axis=2)
    mask = np.hypot(y - 20, x - 24) < 9
    broken = ramp.copy()
    broken[mask] = 0
    filled = rvxcv.inpaint(broken, mask, radius=4, method=method)
    np.testing.assert_array_equal(filled[~mask], ramp[~mask])
    assert abs(filled[mask].astype(float) - ramp[mask]).max() <= 2
    assert rvxcv.inpaint(broken, mask, broken, radius=4, method=method) is broken
    np.testing.assert_array_equal(broken, filled)


def test_inpainting_refuses():
    image, mask = picture((9, 11)), picture((9, 11), bool)
    for error, arguments, options in ((rvxcv.Error, (image, mask), {"radius": 101}),
                                      (ValueError, (image, mask), {"method": "telea"}),
                                      (ValueError, (image, mask[1:]), {}), (TypeError, (image, image * 1.0), {}),
                                      (TypeError, (picture((9, 11), "uint16"), mask), {})):
        with pytest.raises(error):
            rvxcv.inpaint(*arguments, **options)


def test_outputs_that_share_memory_with_inputs():
    memory = np.zeros((10, 48), np.uint8)
    mask, numbers = memory[:, :12], memory.view(np.int32)
    for call in (lambda: rvxcv.label(mask, numbers), lambda: rvxcv.watershed(mask, numbers.copy(), numbers),
                 lambda: rvxcv.inpaint(mask[1:], np.ones((9, 12), bool), mask[:-1]),
                 lambda: rvxcv.inpaint(mask.copy(), mask, mask)):
        with pytest.raises(ValueError, match="share"):
            call()


def labelled(mask, out=None, **options):
    return rvxcv.label(mask, out, **options)[0]


def filled(image, out=None, **options):
    return rvxcv.flood_fill(image, (9, 5), 200, out, **options)[0]


GREY, MASK, MARKERS = few_levels((21, 33)), picture((21, 33), bool, 2), np.zeros((21, 33), np.int32)
MARKERS[3, 4], MARKERS[15, 30], MARKERS[:, 12] = 1, 2, -1


class TestCalls(CallChecks):
    calls = [
        Call(labelled, GREY), Call(labelled, GREY, dtype="uint8", name="uint8"),
        Call(labelled, GREY.astype("uint16"), name="uint16"), Call(filled, GREY),
        Call(filled, GREY.astype("float32"), tolerance=3.0, name="range"),
        Call(filled, GREY, tolerance=10, reference="neighbour", name="gradient"),
        Call(rvxcv.watershed, GREY, MARKERS, images=[0, 1]),
        Call(rvxcv.segment_gradient, picture((21, 33, 3)), MARKERS, images=[0, 1]),
        Call(rvxcv.remove_speckles, GREY.astype("int16"), 5, 0), Call(rvxcv.mark_boundaries, GREY, 255),
        Call(rvxcv.inpaint, GREY, MASK, images=[0, 1]),
        Call(rvxcv.inpaint, GREY, MASK, method="diffusion", name="diffusion"),
    ]
