"""Stages of Haar-like features beside the same sums of pixels, and a cascade's windows."""
import json
import pathlib

import numpy as np
import pytest

import rvxcv
from conftest import Call, CallChecks, picture

CAR = pathlib.Path(__file__).parents[2] / "tools/cascades/car.json"
ROWS, COLUMNS, WINDOW = 30, 41, (14, 12)


def covered(rect, tilt_up=None):
    """The pixels (x, y, weight) of a rectangle; of a tilted one by the corners that its triangles are read from."""
    x, y, w, h, weight = rect
    if tilt_up is None:
        return [(column, row, weight) for row in range(y, y + h) for column in range(x, x + w)]
    if tilt_up:
        x, y, w, h = x + w - h, y - w, h, w  # its top corner, and its sides from there
    columns, rows = np.meshgrid(np.arange(-40, 60), np.arange(-40, 60))
    total = np.zeros(rows.shape, int)
    for sign, tip_x, tip_y in ((1, x + w - h, y + w + h), (-1, x - h, y + h), (-1, x + w, y + w), (1, x, y)):
        total += sign * (abs(columns - 0.5 - tip_x) <= tip_y - rows - 0.5)  # a triangle that ends in two pixels
    assert set(np.unique(total)) == {0, 1} and total.sum() == 2 * w * h
    return [(column, row, weight) for row, column in np.argwhere(total) - 40]


def feature_sums(image, stump, shape, tilt_up):
    """Exact sums of a feature at all places."""
    total = np.zeros(shape)
    for rect in stump.rects:
        for x, y, weight in covered(rect, tilt_up if stump.tilted else None):
            total += float(weight) * image[y:y + shape[0], x:x + shape[1]]
    return total


def expected(image, norm, mask, stumps, threshold, count=None, tilt_up=False, shift=0, blocks=True):
    number = norm.dtype.type
    total = np.zeros(norm.shape, norm.dtype)
    for stump in sorted(stumps, key=lambda stump: {2: 0, 3: 1}.get(len(stump.rects), 2)):
        limit = number(stump.threshold) * norm >> shift if shift else number(stump.threshold) * norm
        below = feature_sums(image, stump, norm.shape, tilt_up) < limit
        total += np.where(below, number(stump.values[0]), number(stump.values[1]))
    count = np.count_nonzero(mask) if count is None else count
    threshold = number(threshold)
    passed = (mask != 0) & (total >= threshold)
    result = np.where(passed, mask, 0)
    if blocks and mask.size <= 8 * count and 4 * count < mask.size:
        whole = norm.shape[1] // 4 * 4
        strictly = (mask[:, :whole] != 0) & (total > threshold)[:, :whole]
        result[:, :whole] = np.where(strictly, 255, 0)
    return result


UPRIGHT = [rvxcv.HaarStump([(0, 0, 12, 10, -1), (4, 0, 4, 10, 3)], 3, (-1, 2)),
           rvxcv.HaarStump([(2, 1, 3, 4, 2), (5, 5, 6, 2, -3), (0, 0, 1, 1, 7)], -8, (0.5, 0.25)),
           rvxcv.HaarStump([(3, 3, 5, 5, 1)], 150, (1, -1)),
           rvxcv.HaarStump([(1, 2, 2, 2, 1), (3, 2, 2, 2, -1), (1, 4, 2, 2, -1), (3, 4, 2, 2, 1)], 0, (0.75, 0))]
TILTED = [rvxcv.HaarStump([(5, 1, 3, 4, -1), (6, 2, 2, 1, 5)], 2, (1, -0.5), tilted=True),
          rvxcv.HaarStump([(7, 0, 6, 3, 1), (6, 1, 2, 2, -4)], -5, (-1, 1), True)]
WHOLE = [stump._replace(values=[int(4 * value) for value in stump.values]) for stump in UPRIGHT + TILTED]


def inputs(dtype, share=1.0):
    image = picture((ROWS, COLUMNS))
    shape = ROWS - WINDOW[1] + 1, COLUMNS - WINDOW[0] + 1
    norm = np.random.default_rng(3).integers(1, 60, shape).astype(dtype)
    mask = np.where(np.random.default_rng(4).random(shape) < share, 7, 0).astype(np.uint8)
    return image, norm, mask


@pytest.mark.parametrize("share", [1.0, 0.2, 0.03])
@pytest.mark.parametrize("sums", ["int32", "float32"])
@pytest.mark.parametrize("stumps", [UPRIGHT, UPRIGHT + TILTED, TILTED], ids=["upright", "mixed", "tilted"])
def test_stages(stumps, sums, share):
    image, norm, mask = inputs("float32", share)
    upright = rvxcv.integral_image(image, dtype=sums)
    tilted = rvxcv.integral_image(image, dtype=sums, tilted=True)
    for threshold in (0.5, 1, -2):
        work = mask.copy()
        count = rvxcv.HaarStage(stumps, threshold).apply(upright, norm, work, tilted=tilted)
        result = expected(image, norm, mask, stumps, threshold, blocks=stumps is UPRIGHT)
        np.testing.assert_array_equal(work, result)
        assert count == np.count_nonzero(result)


def test_stages_of_integers():
    image, norm, mask = inputs("int32")
    upright, tilted = (rvxcv.integral_image(image, dtype="int32", tilted=kind) for kind in (False, True))
    for stumps in (WHOLE, WHOLE[:4]):
        for scale in (0, 3):
            work = mask.copy()
            count = rvxcv.HaarStage(stumps, 4, dtype="int32").apply(upright, norm, work, tilted=tilted, scale=scale)
            result = expected(image, norm, mask, stumps, 4, shift=scale, blocks=len(stumps) == 4)
            np.testing.assert_array_equal(work, result)
            assert count == np.count_nonzero(result)


def test_a_count_of_the_caller():
    image, norm, mask = inputs("float32", 0.2)
    sums = rvxcv.integral_image(image, dtype="int32")
    for count in (1, mask.size // 6, mask.size):
        work = mask.copy()
        rvxcv.HaarStage(UPRIGHT, 1).apply(sums, norm, work, count=count)
        np.testing.assert_array_equal(work, expected(image, norm, mask, UPRIGHT, 1, count))


def test_tilted_upwards():
    image, norm, mask = inputs("float32")
    stumps = [UPRIGHT[0], rvxcv.HaarStump([(6, 5, 3, 4, -1), (6, 6, 2, 1, 5)], 2, (1, -0.5), True)]
    sums, tilted = (rvxcv.integral_image(image, dtype="int32", tilted=kind) for kind in (False, True))
    for some in (stumps, stumps[1:]):
        work = mask.copy()
        rvxcv.HaarStage(some, 0.5, tilt_up=True).apply(sums, norm, work, tilted=tilted)
        np.testing.assert_array_equal(work, expected(image, norm, mask, some, 0.5, tilt_up=True, blocks=False))
    above = rvxcv.HaarStage([rvxcv.HaarStump([(6, 1, 3, 4, 1)], 2, (1, 0), True)], 0, tilt_up=True)
    with pytest.raises(ValueError, match="before its window"):
        above.apply(sums, norm, mask, tilted=tilted)


def test_memory_that_is_not_there_is_not_read():
    image, norm, mask = inputs("float32")
    sums, tilted = (rvxcv.integral_image(image, dtype="int32", tilted=kind) for kind in (False, True))
    stage = rvxcv.HaarStage(UPRIGHT + TILTED, 1)
    assert stage.size == (13, 10) and stage.tilted
    needed = sums[:norm.shape[0] + 10, :norm.shape[1] + 12]
    rvxcv.HaarStage(UPRIGHT, 1).apply(needed, norm, mask.copy())
    for less in (needed[1:], needed[:, 1:]):
        with pytest.raises(ValueError, match="integral must have at least shape"):
            rvxcv.HaarStage(UPRIGHT, 1).apply(less, norm, mask.copy())
    stage.apply(sums, norm, mask.copy(), tilted=tilted)
    for less in (tilted[:norm.shape[0] + 9], tilted[:, :norm.shape[1] + 13]):
        with pytest.raises(ValueError, match="tilted must have at least shape"):
            stage.apply(sums, norm, mask.copy(), tilted=less)


def test_what_is_refused():
    image, norm, mask = inputs("float32")
    sums = rvxcv.integral_image(image, dtype="int32")
    stage = rvxcv.HaarStage(UPRIGHT, 1)
    for error, call in (
            (TypeError, lambda: stage.apply(sums, norm, None)),
            (TypeError, lambda: stage.apply(sums, norm, mask.astype(bool))),
            (ValueError, lambda: stage.apply(sums, norm, mask[1:])),
            (TypeError, lambda: stage.apply(sums, norm.astype("int32"), mask)),
            (TypeError, lambda: stage.apply(sums.astype("float64"), norm, mask)),
            (ValueError, lambda: rvxcv.HaarStage(TILTED, 1).apply(sums, norm, mask)),
            (TypeError, lambda: rvxcv.HaarStage(UPRIGHT, 1, dtype="int32")),
            (TypeError, lambda: rvxcv.HaarStage(UPRIGHT, 1, dtype="float64")),
            (rvxcv.Error, lambda: rvxcv.HaarStage([([(0, 0, 0, 1, 1)], 1, (0, 1))], 1)),
            (rvxcv.Error, lambda: rvxcv.HaarStage([([(0, 0, 1, 3, 1)], 1, (0, 1), True)], 1)),
            (rvxcv.Error, lambda: rvxcv.HaarStage([([], 1, (0, 1))], 1)),
            (ValueError, lambda: rvxcv.HaarCascade({"format": "other"})),
            (ValueError, lambda: rvxcv.HaarCascade({"format": "rvxcv cascade 1", "window": (9, 9), "stages": [],
                                                    "deviation": (0, 0, 10, 9)})),
            (ValueError, lambda: rvxcv.HaarCascade({**json.loads(CAR.read_text()), "tip": 1, "stages": [
                {"threshold": 0, "stumps": [stump._asdict() for stump in TILTED]}]}))):
        with pytest.raises(error):
            call()


def test_a_cascade_is_its_stages():
    cascade = rvxcv.HaarCascade({**json.loads(CAR.read_text()), "contrast": 80})
    assert cascade.object == "car" and cascade.window == (32, 16)
    stages = json.loads(CAR.read_text())["stages"]
    assert [len(stage["stumps"]) for stage in stages] == [stage._record.featureCount for stage in cascade.stages]
    image = np.kron(picture((9, 12)), np.ones((8, 8), np.uint8))
    sums, squares = rvxcv.integral_images(image)
    norm = rvxcv.rect_std(sums[:-1, :-1], squares[:-1, :-1], (1, 1, 30, 14))
    mask = (norm >= 80).astype(np.uint8)
    assert mask.shape == (72 - 15, 96 - 31) and len(cascade.windows(image)) < mask.size
    cascade.stages[2:] = []
    for stage in stages[:2]:
        stumps = [rvxcv.HaarStump(**stump) for stump in stage["stumps"]]
        mask = expected(image, norm, mask, stumps, stage["threshold"])
    places = cascade.windows(image)
    assert 0 < len(places) < mask.size / 2
    np.testing.assert_array_equal(places, np.argwhere(mask)[:, ::-1])
    assert cascade.windows(image[:15]).shape == (0, 2)


IMAGE, NORM, MASK = inputs("float32")
SUMS = rvxcv.integral_image(IMAGE, dtype="float32")
SHARED = rvxcv.HaarStage(UPRIGHT, 1)
CASCADE = rvxcv.HaarCascade(CAR)


def apply(sums, norm, mask):
    return SHARED.apply(sums, norm, mask), mask


def windows(image):
    return CASCADE.windows(image)


class TestCalls(CallChecks):
    calls = [Call(apply, SUMS, NORM, MASK, images=[0, 1], changes=[2]), Call(windows, picture((40, 50)))]
