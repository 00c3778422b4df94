"""Optical flow on pictures of known motion; motion history, lines and patches, beside numpy, scipy and scikit-image."""
import numpy as np
import pytest
from scipy import ndimage
from skimage.draw import line

import rvxcv
from conftest import Call, CallChecks, in_threads, picture

TYPES = ["uint8", "uint16", "float32"]


@pytest.mark.parametrize("dtype", [bool, *TYPES])
def test_motion_history(dtype):
    silhouette = picture((9, 37), dtype) * (picture((9, 37), seed=1) > 128)
    history = picture((9, 37), "float32", seed=2)
    expected = np.where(silhouette != 0, np.float32(100), np.where(history < 50, 0, history))
    assert rvxcv.update_motion_history(silhouette, history, 100, 50) is history
    np.testing.assert_array_equal(history, expected)
    with pytest.raises(rvxcv.Error, match="StatusOutOfRange"):
        rvxcv.update_motion_history(silhouette, history, 100, -1)
    with pytest.raises(TypeError, match="in place"):
        rvxcv.update_motion_history(silhouette, None, 100, 1)


@pytest.mark.parametrize("channels", [(), (3,)])
@pytest.mark.parametrize("dtype", TYPES)
def test_lines(dtype, channels):
    image = picture((40, 60, *channels), dtype)
    for start, end in (((0, 0), (59, 39)), ((59, 39), (0, 0)), ((3, 7), (3, 7)), ((10, 39), (10, 0)), ((59, 5), (0, 5)),
                       ((5, 38), (31, 1)), ((50, 2), (1, 37))):
        rows, columns = line(start[1], start[0], end[1], end[0])
        np.testing.assert_array_equal(rvxcv.sample_line(image, start, end), image[rows, columns])
    for start, end in (((-1, 0), (5, 5)), ((0, 0), (60, 5)), ((0, 40), (5, 5))):
        with pytest.raises(ValueError, match="60 x 40"):
            rvxcv.sample_line(image, start, end)
    with pytest.raises(ValueError, match="contiguous"):
        rvxcv.sample_line(image, (0, 0), (4, 0), np.repeat(image, 2, axis=1)[0, :10:2])


CENTRES = [(20, 15), (20.25, 15.5), (0, 0), (-3.3, 8.75), (58.9, 41.2)]
PATCHES = [("uint8", "uint8"), ("uint8", "float32"), ("uint8", "uint16"), ("uint16", "uint16"), ("uint16", "float32"),
           ("float32", "float32")]


@pytest.mark.parametrize("dtype, out_dtype", PATCHES)
@pytest.mark.parametrize("centre", CENTRES)
def test_patches(centre, dtype, out_dtype):
    image = picture((40, 60), dtype)
    for shape in ((1, 1), (6, 9), (11, 20)):
        (height, width), (x, y) = shape, np.float32(centre).astype("float64")
        places = np.mgrid[:height, :width] + np.reshape([y - 0.5 * (height - 1), x - 0.5 * (width - 1)], (2, 1, 1))
        expected = ndimage.map_coordinates(image.astype("float64"), places, order=1, mode="nearest")
        atol = 0.02 if out_dtype == "float32" else 0.52
        result = rvxcv.subpixel_patch(image, centre, shape, dtype=out_dtype)
        np.testing.assert_allclose(result, expected, rtol=0, atol=atol)
        within = ((places >= 0) & (places <= np.reshape([39, 59], (2, 1, 1)))).all(axis=0)
        if not within.any():
            with pytest.raises(rvxcv.Error, match="StatusError"):
                rvxcv.subpixel_patch_inside(image, centre, shape, dtype=out_dtype)
            continue
        patch, inside = rvxcv.subpixel_patch_inside(image, centre, shape, dtype=out_dtype)
        mask = np.zeros(shape, bool)
        mask[inside] = True
        np.testing.assert_array_equal(mask, within)
        np.testing.assert_allclose(patch, np.where(mask, expected, 0), rtol=0, atol=atol)
        kept = np.full(shape, 77, out_dtype)
        assert rvxcv.subpixel_patch_inside(image, centre, shape, kept, dtype=out_dtype)[0] is kept
        np.testing.assert_array_equal(kept, np.where(mask, patch, 77))


def test_scaled_patches_and_refusals():
    image = picture((40, 60))
    finer = rvxcv.subpixel_patch(image, (9.3, 8.6), (5, 5), dtype="uint16", scale=-8)
    expected = rvxcv.subpixel_patch(image, (9.3, 8.6), (5, 5), dtype="float32")
    np.testing.assert_allclose(finer / 256, expected, rtol=0, atol=0.003)
    for options in ({"dtype": "float32", "scale": 1}, {"shape": (5, 0)}, {"dtype": "complex64"}):
        with pytest.raises(ValueError):
            rvxcv.subpixel_patch(image, (9, 8), **{"shape": (5, 5), **options})
    for centre in ((np.nan, 1), (1, np.inf), (2e9, 1)):
        with pytest.raises(rvxcv.Error, match="StatusOutOfRange"):
            rvxcv.subpixel_patch(image, centre, (5, 5))
    with pytest.raises(TypeError, match="accepted"):
        rvxcv.subpixel_patch(image, (9, 8), (5, 5), dtype="int16")


def texture(dtype="float32", moved=(0, 0), shape=(120, 160)):
    """A smooth texture with detail of several sizes, anywhere between the pixels."""
    y, x = np.mgrid[:shape[0], :shape[1]].astype("float64")
    x, y = x - moved[0], y - moved[1]
    values = (128 + 40 * np.sin(x / 5) * np.cos(y / 7) + 30 * np.sin((x + 2 * y) / 17) + 25 * np.cos((x - y) / 31))
    return np.rint(values).astype(dtype) if dtype != "float32" else values.astype(dtype)


POINTS = np.array([(40, 40), (80.5, 60.25), (110, 75), (60, 90)], np.float32)


@pytest.mark.parametrize("dtype", TYPES)
@pytest.mark.parametrize("motion", [(0.4, -0.3), (6.3, -4.6), (-9.5, 8.2)])
def test_tracking(dtype, motion):
    before, after = texture(dtype), texture(dtype, motion)
    found, status, error = rvxcv.track(before, after, POINTS, window=21, levels=3)
    assert not status.any() and (error < 3).all()
    np.testing.assert_allclose(found - POINTS, np.broadcast_to(motion, POINTS.shape), rtol=0, atol=0.1)
    pyramids = rvxcv.Pyramid(before, 3), rvxcv.Pyramid(after, 5)
    for one, other in zip((found, status, error), rvxcv.track(*pyramids, POINTS, levels=7)):
        np.testing.assert_array_equal(one, other)
    guessed = rvxcv.track(before, after, POINTS, levels=0, guess=POINTS + np.float32(motion))[0]
    np.testing.assert_allclose(guessed, found, rtol=0, atol=0.1)


def test_points_that_cannot_be_followed():
    before = texture()
    before[:, 130:] = 90  # nothing to see there
    points = [(150, 60), (60, 60), (-500, 3), (np.nan, 10), (1e12, 1)]
    found, status, error = rvxcv.track(before, before, points, levels=2)
    np.testing.assert_array_equal(status != 0, [True, False, True, True, True])
    np.testing.assert_array_equal(error, 0)
    assert status.max() <= 3
    for one in rvxcv.track(before, before, np.empty((0, 2))):
        assert len(one) == 0
    single = rvxcv.Pyramid(before, 0)
    assert not rvxcv.track(single, before, points[1:2], levels=4)[1].any()


def test_tracking_refusals():
    frame = texture()
    for call, error in ((lambda: rvxcv.track(frame, frame.astype("uint8"), POINTS), TypeError),
                        (lambda: rvxcv.track(frame.astype("int8"), frame.astype("int8"), POINTS), TypeError),
                        (lambda: rvxcv.track(frame, frame, POINTS.ravel()), ValueError),
                        (lambda: rvxcv.track(frame, frame, POINTS, guess=POINTS[:2]), ValueError),
                        (lambda: rvxcv.track(frame, frame, POINTS, window=0), rvxcv.Error),
                        (lambda: rvxcv.track(frame, frame, POINTS, iterations=0), rvxcv.Error),
                        (lambda: rvxcv.track(frame, frame, POINTS, levels=-1), ValueError),
                        (lambda: rvxcv.track(frame, frame, POINTS, (None, None, POINTS[:, :1])), ValueError)):
        with pytest.raises(error):
            call()


def test_threads_share_pyramids():
    before, after = rvxcv.Pyramid(texture(), 3), rvxcv.Pyramid(texture(moved=(3, 2)), 3)
    in_threads(lambda motion: rvxcv.track(before, after, np.tile(POINTS, (50, 1)),
                                          guess=np.tile(POINTS + motion, (50, 1))),
               [np.float32(one) for one in range(8)])


GREY, COLOUR, FLOAT = picture((30, 44)), picture((30, 44, 3)), picture((30, 44), "float32")


def patch_inside(image, centre, shape):
    return rvxcv.subpixel_patch_inside(image, centre, shape)


class TestCalls(CallChecks):
    calls = [
        Call(rvxcv.update_motion_history, GREY, FLOAT, 3, 500, changes=[1]),
        Call(rvxcv.sample_line, COLOUR, (0, 29), (43, 0), lists=True),
        Call(rvxcv.subpixel_patch, FLOAT, (20.3, 15.1), (27, 42)),
        Call(patch_inside, GREY, (40.3, 20.1), (9, 12)),
        Call(rvxcv.track, texture("uint8"), texture("uint8", (2, 1)), POINTS, images=[0, 1], lists=True),
    ]
