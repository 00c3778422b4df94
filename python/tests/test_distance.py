"""Distances beside scipy's, and beside a shortest-path search."""
import numpy as np
import pytest
import scipy.ndimage as nd
from scipy.sparse import coo_matrix
from scipy.sparse.csgraph import dijkstra

import rvxcv
from conftest import Call, CallChecks, picture


def blobs(shape, seed=0):
    """A mask of which most pixels are set, some far from the zeros."""
    return np.random.default_rng([seed, *shape]).random(shape) > 0.03


MASKS = [np.zeros((1, 1), bool), blobs((1, 40)), blobs((50, 1)), blobs((37, 61)), picture((30, 33), bool)]


@pytest.mark.parametrize("mask", MASKS, ids=lambda mask: str(mask.shape))
def test_exact_distances(mask):
    expected = nd.distance_transform_edt(mask).astype("float32")
    np.testing.assert_array_equal(rvxcv.distance_transform(mask), expected)
    np.testing.assert_array_equal(rvxcv.distance_transform(mask * np.uint8(77)), expected)


def test_masks_without_a_zero():
    ones = np.ones((3, 5), np.uint8)
    assert (rvxcv.distance_transform(ones) == np.sqrt(np.finfo("float32").max)).all()
    assert (rvxcv.fast_marching(ones) == np.finfo("float32").max).all()
    assert (rvxcv.chamfer_distance(ones, dtype="uint16") == 65535).all()


@pytest.mark.parametrize("shape, zero", [((1, 1), (0, 0)), ((1, 90), (0, 30)), ((60, 70), (20, 30))])
def test_marching_from_a_pixel_is_late_by_a_fifth_at_most(shape, zero):
    mask = np.ones(shape, bool)
    mask[zero] = False
    exact, time = rvxcv.distance_transform(mask), rvxcv.fast_marching(mask)
    assert (time >= exact).all() and (time <= exact * 1.22).all()


def test_marching_from_an_edge_is_exact():
    mask = np.ones((20, 31), bool)
    mask[:, 4] = False
    np.testing.assert_array_equal(rvxcv.fast_marching(mask), nd.distance_transform_edt(mask))
    for mask in MASKS:
        assert (rvxcv.fast_marching(mask) <= nd.distance_transform_cdt(mask, "taxicab") * 1.000001).all()


@pytest.mark.parametrize("norm, metric", [("l1", "taxicab"), ("inf", "chessboard")])
@pytest.mark.parametrize("size", [3, 5])
@pytest.mark.parametrize("dtype", ["uint8", "uint16", "float32"])
def test_city_block_and_chessboard(dtype, size, norm, metric):
    for mask in MASKS[:4]:
        expected = nd.distance_transform_cdt(mask, metric)
        result = rvxcv.chamfer_distance(mask, size=size, norm=norm, dtype=dtype)
        assert result.dtype == dtype
        np.testing.assert_array_equal(result, expected)


def shortest_paths(mask, costs):
    """Distances inside the mask by Dijkstra's search over all steps."""
    height, width = mask.shape
    steps = [(0, 1, 0), (1, 0, 0), (1, 1, 1), (1, -1, 1)]
    if len(costs) == 3:
        steps += [(1, 2, 2), (2, 1, 2), (1, -2, 2), (2, -1, 2)]
    number = np.arange(height * width).reshape(height, width)
    links = []
    for dy, dx, kind in steps:
        first = number[:height - dy, max(0, -dx):width - max(0, dx)].ravel()
        links += [(a, a + dy * width + dx, costs[kind]) for a in first]
    rows, columns, values = map(np.array, zip(*links))
    graph = coo_matrix((values, (rows, columns)), shape=(mask.size, mask.size)).tocsr()
    zeros = np.flatnonzero(~mask.ravel())
    return dijkstra(graph, directed=False, indices=zeros, min_only=True).reshape(mask.shape)


@pytest.mark.parametrize("costs", [[3, 4], [5, 7, 11], [2, 9, 3], [1, 1, 100]])
def test_costs(costs):
    mask = blobs((19, 23))
    expected = shortest_paths(mask, costs)
    for dtype in ("uint8", "uint16", "float32"):
        result = rvxcv.chamfer_distance(mask, size=2 * len(costs) - 1, costs=costs, dtype=dtype)
        np.testing.assert_array_equal(result, np.minimum(expected, 255) if dtype == "uint8" else expected)
    usual = rvxcv.chamfer_costs(2 * len(costs) - 1, "l2", "int32")
    np.testing.assert_array_equal(rvxcv.chamfer_distance(mask, size=2 * len(costs) - 1, dtype="uint16"),
                                  shortest_paths(mask, usual.tolist()))


def test_the_usual_float_costs():
    np.testing.assert_array_equal(rvxcv.chamfer_costs(3), np.float32([0.955, 1.3693]))
    np.testing.assert_array_equal(rvxcv.chamfer_costs(5), np.float32([1, 1.4, 2.1969]))


def test_in_place():
    mask = blobs((30, 41)).astype("uint8")
    for size in (3, 5):
        work = mask.copy()
        assert rvxcv.chamfer_distance(work, work, size=size) is work
        np.testing.assert_array_equal(work, rvxcv.chamfer_distance(mask, size=size, dtype="uint8"))


def test_what_is_refused():
    mask = picture((5, 9), bool)
    for error, options in ((ValueError, {"size": 4}), (ValueError, {"norm": "l3"}), (TypeError, {"dtype": "int64"}),
                           (ValueError, {"costs": [1, 2]}), (TypeError, {"costs": [1.5, 2, 3], "dtype": "uint8"}),
                           (rvxcv.Error, {"costs": [0, 1, 2]})):
        with pytest.raises(error):
            rvxcv.chamfer_distance(mask, **options)
    for bad in (picture((5, 9), "uint16"), picture((5, 9, 3))):
        with pytest.raises(TypeError, match="mask must be uint8 with 1 channel"):
            rvxcv.distance_transform(bad)
    memory = np.zeros((10, 48), np.uint8)
    for function in (rvxcv.distance_transform, rvxcv.fast_marching, rvxcv.chamfer_distance):
        with pytest.raises(ValueError, match="share"):
            function(memory[:, :12], memory.view(np.float32))
    with pytest.raises(TypeError, match="costs"):
        rvxcv.chamfer_costs(3, dtype="float64")
    with pytest.raises(rvxcv.Error, match="BadSize"):
        rvxcv.chamfer_costs(4)


MASK = blobs((21, 33)).astype("uint8")


class TestCalls(CallChecks):
    calls = [Call(rvxcv.distance_transform, MASK), Call(rvxcv.fast_marching, MASK), Call(rvxcv.chamfer_distance, MASK),
             Call(rvxcv.chamfer_distance, MASK, size=3, dtype="uint16", name="uint16"),
             Call(rvxcv.chamfer_distance, MASK, dtype="uint8", name="uint8")]
