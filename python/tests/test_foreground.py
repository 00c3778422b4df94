"""Background models, beside their formulas: one Gaussian in numpy, and what the others must find in small films."""
import copy
import pickle

import numpy as np
import pytest

import rvxcv
from conftest import Call, CallChecks, picture

MODELS = [rvxcv.ForegroundGaussian, rvxcv.ForegroundMixture, rvxcv.ForegroundHistogram]
SHAPE = (12, 37)


def film(channels, length=30, seed=0):
    """Noise around a background, and something bright that moves from the tenth frame on; where it is."""
    random = np.random.default_rng(seed)
    shape = SHAPE if channels == 1 else (*SHAPE, channels)
    background = random.integers(40, 150, shape)
    for time in range(length):
        frame, mask = background + random.integers(-2, 3, shape), np.zeros(SHAPE, bool)
        if time >= 10:
            mask[3:7, time % 30:time % 30 + 4] = True
            frame[mask] = 230
        yield frame.astype("uint8"), mask


@pytest.mark.parametrize("channels", [1, 3])
@pytest.mark.parametrize("kind", MODELS)
def test_what_moves_is_found(kind, channels):
    model = kind(SHAPE, channels)
    for time, (frame, mask) in enumerate(film(channels)):
        found = model(frame, rate=None if time < 10 else 0.01)
        assert model.frames == time + 1
        if time >= 10:
            np.testing.assert_array_equal(found == 255, mask)
    clean = model.background()[8:].astype(int)  # nothing moved there
    assert abs(clean - frame[8:]).max() <= 4


@pytest.mark.parametrize("channels", [1, 3])
def test_one_gaussian(channels):
    model = rvxcv.ForegroundGaussian(SHAPE, channels, threshold=2.5, foreground_rate=0.5)
    mean = variance = None
    for frame, _ in film(channels):
        wide = np.atleast_3d(frame).astype("float64")
        if mean is None:
            mean, variance, expected = wide, np.full(SHAPE, 225.0), np.zeros(SHAPE, bool)
        else:
            difference = wide - mean
            distance = (difference ** 2).sum(2)
            expected = distance >= 2.5 ** 2 * variance
            mean = mean + np.where(expected, 0.05, 0.1)[..., None] * difference
            learned = (variance + 0.1 * (distance / channels - variance)).clip(16, 1125)
            variance = np.where(expected, variance, learned)
        np.testing.assert_array_equal(model(frame, rate=0.1) != 0, expected)
    np.testing.assert_allclose(np.atleast_3d(model.background()), mean, rtol=0, atol=0.51)


@pytest.mark.parametrize("kind", MODELS)
def test_decide_then_update_is_one_call(kind):
    one, two = kind(SHAPE), kind(SHAPE)
    for frame, _ in film(1):
        found = one(frame, rate=0.1)
        decided = two(frame, rate=0)
        np.testing.assert_array_equal(found, decided)
        two.update(frame, found, rate=0.1)
        np.testing.assert_array_equal(one.background(), two.background())
    assert one.frames == two.frames


def test_shadows():
    model = rvxcv.ForegroundGaussian(SHAPE, shadow=0.5)
    frame = np.full(SHAPE, 200, np.uint8)
    for _ in range(20):
        model(frame)
    frame[:4], frame[4:8] = 130, 30
    found = model(frame, rate=0)
    assert (found[:4] == 127).all() and (found[4:8] == 255).all() and not found[8:].any()


@pytest.mark.parametrize("kind", MODELS)
def test_copies_have_learned(kind):
    model = kind(SHAPE, 3)
    frames = [frame for frame, _ in film(3)]
    for frame in frames[:15]:
        model(frame)
    for twin in (pickle.loads(pickle.dumps(model)), copy.deepcopy(model)):
        assert type(twin) is kind and twin.frames == 15 and twin.rate == model.rate
        np.testing.assert_array_equal(twin.background(), model.background())
        np.testing.assert_array_equal(twin(frames[15], rate=0), model(frames[15], rate=0))
        twin(frames[0])
        assert model.frames == 15


@pytest.mark.parametrize("kind", MODELS)
def test_foreground_refusals(kind):
    model = kind(SHAPE)
    frame = picture(SHAPE)
    with pytest.raises(rvxcv.Error, match="StatusError"):
        model.background()
    for call in (lambda: model(frame[1:]), lambda: model(picture((*SHAPE, 3))), lambda: model(frame.astype("uint16")),
                 lambda: model(frame, frame), lambda: model.update(frame, frame[1:]), lambda: kind((1, 2, 3))):
        with pytest.raises(ValueError):
            call()
    with pytest.raises(TypeError, match="foreground"):
        model.update(frame, frame.astype("float32"))
    for rate in (-0.1, 1.1, np.nan):
        with pytest.raises(rvxcv.Error, match="StatusOutOfRange"):
            model(frame, rate=rate)
    with pytest.raises(rvxcv.Error, match="StatusBadChannelCount"):
        kind(SHAPE, 2)
    with pytest.raises(rvxcv.Error, match="StatusBadSize"):
        kind((0, 5))
    with pytest.raises(rvxcv.Error, match="StatusOutOfRange"):
        kind(SHAPE, **({"tolerance": -1} if kind is rvxcv.ForegroundHistogram else {"threshold": 0}))


SHARED = rvxcv.ForegroundGaussian(SHAPE)
for first, _ in film(1, 12):
    SHARED(first)


def decide(image, out=None):
    return SHARED(image, out, rate=0)


def learn(image, foreground):
    model = rvxcv.ForegroundMixture(SHAPE, 3)
    model.update(image, foreground)
    model.update(image, foreground)
    return model.background()


def background(out=None):
    return SHARED.background(out)


class TestCalls(CallChecks):
    calls = [
        Call(decide, picture(SHAPE)),
        Call(learn, picture((*SHAPE, 3)), picture(SHAPE, bool), images=[0, 1]),
        Call(background, images=()),
    ]
