"""Tiles on threads and on dask give the bits of the whole image."""
import functools
import threading
import time

import numpy as np
import pytest

import rvxcv
from rvxcv import dask_tiles, tiles

da = pytest.importorskip("dask.array")

ERODE = functools.partial(rvxcv.erode, footprint=rvxcv.ellipse(9, 5))
ONE_SIDED = functools.partial(rvxcv.dilate, footprint=np.eye(4, 7, dtype=np.uint8))
GAUSS = functools.partial(rvxcv.gaussian, sigma=1.5, size=7)
# function, image type, channels, margin: those that round by blocks among them
CASES = [(ERODE, np.uint8, 1, (4, 2, 4, 2)), (ERODE, np.uint8, 3, 4), (ERODE, np.float32, 4, 4), (ONE_SIDED, np.uint16, 1, 3),
         (GAUSS, np.uint8, 1, 3), (GAUSS, np.uint8, 3, 3), (GAUSS, np.float32, 1, 3)]


def picture(dtype, channels, shape=(203, 331)):
    values = np.random.default_rng(7).integers(0, 256, shape + (channels,))
    return values.astype(dtype)[:, :, 0] if channels == 1 else values.astype(dtype)


@pytest.mark.parametrize("function, dtype, channels, margin", CASES)
@pytest.mark.parametrize("tile", [None, (1, 1), (64, 100), (17, 331), (203, 32), (1000, 1000)])
def test_threads(function, dtype, channels, margin, tile):
    image = picture(dtype, channels)
    whole = function(image)
    if tile == (1, 1):  # tiles smaller than the margin, of a smaller image
        image, whole = image[:20, :70], function(image[:20, :70])
    np.testing.assert_array_equal(tiles.run(function, image, margin=margin, tile=tile, workers=3), whole)


def test_out_may_be_a_region_of_something_larger():
    image = picture(np.uint8, 1)
    frame = np.full((300, 400), 77, np.uint8)
    out = frame[40:243, 30:361]
    assert tiles.run(ERODE, image, margin=4, out=out) is out
    np.testing.assert_array_equal(out, ERODE(image))
    out[...] = 77
    assert (frame == 77).all()


def test_files_larger_than_wanted_in_memory(tmp_path):
    image = np.memmap(tmp_path / "image", np.uint8, "w+", shape=(500, 640))
    image[...] = picture(np.uint8, 1, (500, 640))
    out = np.memmap(tmp_path / "out", np.uint8, "w+", shape=image.shape)
    tiles.run(ERODE, image, margin=4, tile=(100, 128), out=out)
    np.testing.assert_array_equal(out, ERODE(np.array(image)))


def test_several_images():
    first, second = picture(np.uint8, 1), picture(np.uint8, 1)[::-1].copy()
    np.testing.assert_array_equal(tiles.run(rvxcv.absdiff, first, second, margin=0), rvxcv.absdiff(first, second))


def test_every_worker_works():
    seen = set()

    def slow(tile, out=None, **_):
        seen.add(threading.get_ident())
        time.sleep(0.01)
        return np.copy(tile) if out is None else np.copyto(out, tile)

    image = picture(np.uint8, 1)
    np.testing.assert_array_equal(tiles.run(slow, image, margin=0, workers=3), image)
    assert len(seen) == 4  # the caller computes the first tile


@pytest.mark.parametrize("function, margin, said", [
    (functools.partial(rvxcv.canny, low=10, high=20), 3, "canny takes no inside"),
    (rvxcv.distance_transform, 0, "distance_transform takes no inside"),
    (rvxcv.label, 0, "label takes no inside"),
    (rvxcv.integral_image, 0, "integral_image takes no inside"),
])
def test_functions_that_see_the_whole_image_are_refused(function, margin, said):
    image = picture(np.uint8, 1)
    with pytest.raises(ValueError, match=said):
        tiles.run(function, image, margin=margin)
    with pytest.raises(ValueError, match=said):
        dask_tiles.map_tiles(function, da.from_array(image, 64), margin=margin)


def test_refused_arguments():
    image = picture(np.uint8, 1)
    with pytest.raises(ValueError, match="share memory"):
        tiles.run(ERODE, image, margin=4, out=image)
    for margin in (-1, (1, 2), 1.5):
        with pytest.raises(ValueError, match="margin is"):
            tiles.run(ERODE, image, margin=margin)
    with pytest.raises(ValueError, match="one height and width"):
        tiles.run(rvxcv.absdiff, image, image[1:], margin=0)
    with pytest.raises(ValueError, match="at least one pixel"):
        tiles.run(ERODE, image, margin=4, tile=(0, 5))
    with pytest.raises(ValueError, match="need .* pixels"):  # a margin that is too small is noticed beside the edge
        tiles.run(ERODE, image, margin=0, tile=(1, 331))


def test_an_error_in_a_tile_is_the_callers():
    with pytest.raises(TypeError, match="float64"):
        tiles.run(ERODE, picture(np.float64, 1), margin=4)


@pytest.mark.parametrize("function, dtype, channels, margin", CASES)
@pytest.mark.parametrize("chunks", [(203, 331), (50, 64), (30, 9), (66, 165)])
def test_dask(function, dtype, channels, margin, chunks):
    image = picture(dtype, channels)
    lazy = dask_tiles.map_tiles(function, da.from_array(image, chunks + (channels,) * (channels > 1)), margin=margin)
    assert lazy.shape == image.shape and lazy.dtype == image.dtype
    np.testing.assert_array_equal(lazy.compute(scheduler="threads"), function(image))


def test_dask_on_two_processes():
    distributed = pytest.importorskip("distributed")
    image = picture(np.uint8, 3)
    lazy = dask_tiles.map_tiles(GAUSS, da.from_array(image, (64, 96, 3)), margin=3)
    with distributed.LocalCluster(n_workers=2, threads_per_worker=1, processes=True, dashboard_address=None) as cluster, \
            distributed.Client(cluster) as client:
        np.testing.assert_array_equal(client.compute(lazy).result(), GAUSS(image))
