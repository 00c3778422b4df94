"""Lines and segments of drawn pictures, also beside scikit-image's."""
import numpy as np
import pytest
import skimage.draw
import skimage.transform

import rvxcv
from conftest import Call, CallChecks

SEGMENTS = [((10, 12), (110, 30)), ((20, 80), (95, 40)), ((60, 5), (60, 90)), ((5, 50), (115, 50))]


def drawn(segments=SEGMENTS, shape=(96, 120)):
    image = np.zeros(shape, np.uint8)
    for (x, y), (x1, y1) in segments:
        image[skimage.draw.line(y, x, y1, x1)] = 255
    return image


def distance_to(line, point):
    rho, theta = line
    return abs(point[0] * np.cos(theta) + point[1] * np.sin(theta) - rho)


def test_drawn_lines_are_found():
    lines = rvxcv.hough_lines(drawn(), 60)
    for segment in SEGMENTS:
        assert any(all(distance_to(line, end) < 1.6 for end in segment) for line in lines), segment
    for line in lines:
        assert any(all(distance_to(line, end) < 4 for end in segment) for segment in SEGMENTS), line
    # The strongest come first.
    assert all(distance_to(lines[0], end) < 1.6 for end in SEGMENTS[3])


def test_the_strongest_line_is_that_of_scikit_image():
    for segment in SEGMENTS:
        image = drawn([segment])
        angles = np.arange(0, 180) * np.pi / 180
        space, _, distances = skimage.transform.hough_line(image, angles)
        _, (theta,), (rho,) = skimage.transform.hough_line_peaks(space, angles, distances, num_peaks=1)
        line = rvxcv.hough_lines(image, 40, max_lines=1)[0]
        assert abs(line[0] - rho) <= 1.5 and abs(line[1] - theta) <= 0.026


def test_regions_and_capacity():
    image = drawn()
    lines = rvxcv.hough_lines(image, 30)
    np.testing.assert_array_equal(rvxcv.hough_lines(image, 30, max_lines=3), lines[:3])
    low, high = (0, 1.4), (80, 1.7)
    chosen = lines[(lines >= low).all(axis=1) & (lines <= high).all(axis=1)]
    assert 0 < len(chosen) < len(lines)
    np.testing.assert_array_equal(rvxcv.hough_lines(image, 30, region=(low, high)), chosen)
    assert rvxcv.hough_lines(image, 30, region=((500, 0), (600, 3))).shape == (0, 2)
    assert rvxcv.hough_lines(np.zeros((5, 5), bool), 1).shape == (0, 2)


def test_long_lists_grow():
    image = (np.random.default_rng(2).random((90, 120)) > 0.9).astype(np.uint8)
    lines = rvxcv.hough_lines(image, 3)
    assert len(lines) > 256
    np.testing.assert_array_equal(rvxcv.hough_lines(image, 3, max_lines=len(lines) + 1), lines)
    image, options = np.tile(image, (2, 2)), {"line_length": 3, "line_gap": 2}
    segments = rvxcv.hough_segments(image, 2, **options)
    assert len(segments) > 256
    many = rvxcv.hough_segments(image, 2, max_segments=len(segments) + 1, **options)
    np.testing.assert_array_equal(many, segments)


@pytest.mark.parametrize("seed", [0, 5])
def test_drawn_segments_are_found(seed):
    apart = [((10, 5), (110, 15)), ((20, 80), (95, 40)), ((5, 20), (5, 90))]
    image = drawn(apart)
    segments = rvxcv.hough_segments(image, 20, line_length=40, line_gap=3, seed=seed)
    assert segments.shape == (3, 2, 2)
    for ends in apart:
        assert any(min(abs(found - order).max() for order in (ends, ends[::-1])) <= 4 for found in segments), ends
    for (x, y), (x1, y1) in segments:
        assert max(abs(x1 - x), abs(y1 - y)) >= 40 and image[y, x] and image[y1, x1]
    np.testing.assert_array_equal(rvxcv.hough_segments(image, 20, line_length=40, line_gap=3, seed=seed), segments)
    first = rvxcv.hough_segments(image, 20, line_length=40, line_gap=3, seed=seed, max_segments=1)
    np.testing.assert_array_equal(first, segments[:1])


def test_what_is_refused():
    image = drawn()
    for error, call in (
            (rvxcv.Error, lambda: rvxcv.hough_lines(image, 0)),
            (rvxcv.Error, lambda: rvxcv.hough_lines(image, 5, rho=0)),
            (rvxcv.Error, lambda: rvxcv.hough_lines(image, 5, theta=4)),
            (rvxcv.Error, lambda: rvxcv.hough_lines(image, 5, max_lines=0)),
            (rvxcv.Error, lambda: rvxcv.hough_lines(image, 5, region=((1, 0), (0, 0)))),
            (TypeError, lambda: rvxcv.hough_lines(image.astype("float32"), 5)),
            (rvxcv.Error, lambda: rvxcv.hough_segments(image, 5, line_gap=-1)),
            (rvxcv.Error, lambda: rvxcv.hough_segments(image, 5, theta=0)),
            (rvxcv.Error, lambda: rvxcv.hough_segments(image, 5, rho=1e6)),
            (rvxcv.Error, lambda: rvxcv.hough_segments(image, 5, max_segments=-3))):
        with pytest.raises(error):
            call()


class TestCalls(CallChecks):
    calls = [Call(rvxcv.hough_lines, drawn(), 40), Call(rvxcv.hough_segments, drawn(), 20, line_length=30)]
