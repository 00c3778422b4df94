"""Tiles on threads and on dask give the bits of the whole image."""
import functools
import inspect
import threading
import time

import numpy as np
import pytest

import rvxcv
from rvxcv import dask_tiles, tiles

da = pytest.importorskip("dask.array")

ERODE = functools.partial(rvxcv.erode, footprint=rvxcv.ellipse(9, 5))
ONE_SIDED = np.eye(4, 7, dtype=np.uint8)  # reaches 3, 1 pixels to the left and up, 3, 2 to the right and down
SURFACE = -np.hypot(*np.ogrid[-2:3, -3:4]).astype(np.float32)
BOX = np.ones((3, 5), np.uint8)
# Function, image type, channels, margin: every function that takes inside=, those that round by blocks among them.
CASES = [(ERODE, np.uint8, 1, (4, 2, 4, 2)), (ERODE, np.uint8, 3, 4), (ERODE, np.float32, 4, 4),
         (functools.partial(rvxcv.dilate, footprint=ONE_SIDED), np.uint16, 1, (3, 1, 3, 2)),
         (functools.partial(rvxcv.grey_erode, surface=SURFACE), np.float32, 1, 3),
         (functools.partial(rvxcv.grey_dilate, surface=SURFACE.astype(np.int32), border="constant", value=70), np.uint8,
          1, 3),
         (functools.partial(rvxcv.morph_open, footprint=BOX), np.uint8, 1, 4),
         (functools.partial(rvxcv.morph_close, footprint=ONE_SIDED), np.float32, 3, 6),
         (functools.partial(rvxcv.morph_gradient, footprint=BOX), np.uint8, 3, 2),
         (functools.partial(rvxcv.morph_tophat, footprint=ONE_SIDED), np.uint16, 1, 6),
         (functools.partial(rvxcv.morph_blackhat, footprint=BOX), np.uint8, 1, 4),
         (functools.partial(rvxcv.gaussian, sigma=1.5, size=7), np.uint8, 1, 3),
         (functools.partial(rvxcv.gaussian, sigma=1.5, size=7, border="constant", value=(9, 99, 199)), np.uint8, 3, 3),
         (functools.partial(rvxcv.gaussian, sigma=1.5, size=7), np.float32, 1, 3),
         (functools.partial(rvxcv.sobel, divisor=3, size=5), np.uint8, 1, 2),
         (functools.partial(rvxcv.sobel, axis=0, border="reflect"), np.float32, 1, 1),
         (functools.partial(rvxcv.scharr, divisor=7, border="mirror"), np.uint8, 1, 1),
         (functools.partial(rvxcv.laplacian, size=5, border="constant", value=100), np.uint8, 1, 2),
         (functools.partial(rvxcv.uniform_filter, size=5), np.uint8, 1, 2),
         (functools.partial(rvxcv.convolve_separable, kernel_x=[1, 5, -2, 8, 3]), np.float32, 3, 2),
         (functools.partial(rvxcv.convolve_separable, kernel_x=[1, 5, 2, 8, 3], divisors=(7, 5)), np.uint8, 1, 2)]
GAUSS = CASES[11][0]


def test_every_function_with_neighbours_in_memory_is_here_or_refused():
    functions = {name for name in rvxcv.__all__ if callable(getattr(rvxcv, name))
                 and not isinstance(getattr(rvxcv, name), type)
                 and "inside" in inspect.signature(getattr(rvxcv, name)).parameters}
    assert functions == {function.func.__name__ for function, *_ in CASES} | tiles.WHOLE


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


def test_memory_without_rows():
    image = picture(np.uint8, 1)
    flat = np.frombuffer(image.tobytes(), np.uint8).reshape(image.shape)
    np.testing.assert_array_equal(tiles.run(ERODE, flat, margin=4, tile=(50, 64)), ERODE(image))
    for region in (np.s_[1:50, 9:99], np.s_[150:202, 9:99], np.s_[50:100, 0:331]):  # nothing above, below, beside
        with pytest.raises(ValueError, match="need"):
            rvxcv.erode(flat[region], rvxcv.ellipse(9, 5), inside="all")


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
    (functools.partial(rvxcv.canny, low=10, high=20), 3, "canny is not for tiles"),
    (rvxcv.distance_transform, 0, "distance_transform is not for tiles"),
    (rvxcv.label, 0, "label is not for tiles"),
    (rvxcv.integral_image, 0, "integral_image is not for tiles"),
    (functools.partial(rvxcv.sobel, border="wrap"), 1, "wrap"),
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
@pytest.mark.parametrize("chunks", [(50, 64), (66, 165)])
def test_dask(function, dtype, channels, margin, chunks):
    image = picture(dtype, channels)
    lazy = dask_tiles.map_tiles(function, da.from_array(image, chunks + (channels,) * (channels > 1)), margin=margin)
    whole = function(image)
    assert lazy.shape == whole.shape and lazy.dtype == whole.dtype
    np.testing.assert_array_equal(lazy.compute(scheduler="threads"), whole)


def test_dask_on_two_processes():
    distributed = pytest.importorskip("distributed")
    image = picture(np.uint8, 3)
    lazy = dask_tiles.map_tiles(GAUSS, da.from_array(image, (64, 96, 3)), margin=3)
    options = {"n_workers": 2, "threads_per_worker": 1, "processes": True, "dashboard_address": None}
    with distributed.LocalCluster(**options) as cluster, distributed.Client(cluster) as client:
        np.testing.assert_array_equal(client.compute(lazy).result(), GAUSS(image))
