"""Background models: the foreground of a fixed camera, frame by frame."""
from __future__ import annotations

import threading

import numpy as np
import numpy.typing as npt

from ._array import Members, allocate, apart, check, ffi, lib, output, same_layout, view

__all__ = ["ForegroundGaussian", "ForegroundHistogram", "ForegroundMixture"]


class _Model:
    """What the three models have in common: a record, and who may use it when."""

    def __init__(self, shape, channels, rate, **parameters):
        self.shape = tuple(map(int, shape))
        if len(self.shape) != 2:
            raise ValueError(f"shape must be (height, width), not {shape}")
        self.channels, self.rate = channels, rate
        self._settings = {"channels": channels, "rate": rate, **parameters}
        filled = ffi.new(f"{self._NAME}Params *", parameters)
        size = ffi.new("int32_t *")
        roi = self.shape[::-1]
        check(self._GET_SIZE(roi, channels, filled, size))
        self._size = size[0]
        self._memory = allocate(self._size)
        self._state = ffi.cast(f"{self._NAME}State *", self._memory)
        check(self._INIT(roi, channels, filled, self._state))
        self._lock = threading.Lock()

    def _rate(self, rate):
        return max(1 / (self._state.frames + 1), self.rate) if rate is None else rate

    def _frame(self, image, name="image"):
        source, step, roi, key = view(image, name)
        if roi != self.shape[::-1] or key != f"8u_C{self.channels}":
            raise ValueError(f"{name} must be uint8 of shape {self._layout()}, not {np.asarray(image).dtype} of "
                             f"{np.shape(image)}")
        return source, step, roi, key

    def _layout(self):
        return self.shape if self.channels == 1 else (*self.shape, self.channels)

    def __call__(self, image: npt.ArrayLike, out: npt.NDArray | None = None, *,
                 rate: float | None = None) -> npt.NDArray:
        """Decide where the foreground is, then learn from the image.

        Parameters
        ----------
        image : (H, W) or (H, W, 3) array of uint8
            Of the model's size.
        out : (H, W) array of uint8, optional
            Must not share memory with the image.
        rate : float, optional
            How fast to learn, 0 to 1. 0 only decides. Otherwise ``max(1 / (frames + 1), model.rate)``.

        Returns
        -------
        out : (H, W) array of uint8
            255 where there is foreground, 127 in shadows (if the model looks for them), 0 elsewhere.
        """
        source, step, roi, key = self._frame(image)
        out, (target, target_step, _, _) = output(out, "out", self.shape, "8u")
        apart(np.asarray(image), out, "out")
        with self._lock:
            check(self._MEMBERS[key](source, step, target, target_step, roi, self._rate(rate), self._state))
        return out

    def update(self, image: npt.ArrayLike, foreground: npt.ArrayLike, *, rate: float | None = None) -> None:
        """Learn from an image and a decision: that of a call with ``rate=0``, cleaned up.

        Parameters
        ----------
        image : (H, W) or (H, W, 3) array of uint8
        foreground : (H, W) array of uint8 or bool
            Not 0 where there is foreground.
        rate : float, optional
            As of a call.
        """
        source, step, roi, key = self._frame(image)
        decision = same_layout(foreground, "foreground", roi, "8u_C1")
        with self._lock:
            check(self._UPDATE[key](source, step, *decision, roi, self._rate(rate), self._state))

    def background(self, out: npt.NDArray | None = None) -> npt.NDArray:
        """The picture of the background, (H, W) or (H, W, 3) of uint8. `rvxcv.Error` before anything is learned."""
        out, (target, step, roi, key) = output(out, "out", self._layout(), "8u")
        with self._lock:
            check(self._BACKGROUND[key](target, step, roi, self._state))
        return out

    @property
    def frames(self) -> int:
        """How many frames the model has learned from."""
        return self._state.frames

    def __reduce__(self):
        with self._lock:
            return _restore, (type(self), self.shape, self._settings, bytes(ffi.buffer(self._memory, self._size)))


def _restore(kind, shape, settings, record):
    model = kind.__new__(kind)
    _Model.__init__(model, shape, **settings)
    if len(record) != model._size:
        raise ValueError("not a record of this model")
    ffi.memmove(model._memory, record, model._size)
    return model


class ForegroundGaussian(_Model):
    """One Gaussian per pixel: the fastest model, for indoor scenes.

    Parameters
    ----------
    shape : (height, width)
        Of the images.
    channels : {1, 3}
    rate : float
        How fast to learn in the long run, 0 to 1.
    threshold : float
        Standard deviations from the mean up to which a pixel is background.
    initial_variance, smallest_variance, largest_variance : float
        In squared levels.
    foreground_rate : float
        Factor on the rate where foreground is learned, 0 to 1.
    shadow : float
        The darkest shadow as a part of the background, below 1; 0 looks for none.

    Notes
    -----
    C. R. Wren, A. Azarbayejani, T. Darrell, A. P. Pentland, "Pfinder", IEEE PAMI 19(7), 1997.

    A pixel's first sample makes its model. Threads may share a model; their calls take turns. A model can be pickled
    and copied (`copy.deepcopy`) with all that it has learned.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> model = rvxcv.ForegroundGaussian((2, 3))
    >>> empty = np.full((2, 3), 50, np.uint8)
    >>> for _ in range(5):
    ...     _ = model(empty)
    >>> empty[1, 2] = 200
    >>> model(empty)
    array([[  0,   0,   0],
           [  0,   0, 255]], dtype=uint8)
    """

    _NAME = "ForegroundGaussian"
    _GET_SIZE, _INIT = lib.rvxiForegroundGaussianGetSize_8u, lib.rvxiForegroundGaussianInit_8u
    _MEMBERS = Members("rvxiForegroundGaussian_{}R")
    _UPDATE = Members("rvxiForegroundGaussianUpdate_{}R")
    _BACKGROUND = Members("rvxiForegroundGaussianGetBackground_{}R")

    def __init__(self, shape: tuple[int, int], channels: int = 1, *, rate: float = 0.01, threshold: float = 3,
                 initial_variance: float = 225, smallest_variance: float = 16, largest_variance: float = 1125,
                 foreground_rate: float = 0.1, shadow: float = 0) -> None:
        super().__init__(shape, channels, rate, threshold=threshold, varInit=initial_variance,
                         varMin=smallest_variance, varMax=largest_variance, foregroundRate=foreground_rate,
                         shadow=shadow)


class ForegroundMixture(_Model):
    """A mixture of Gaussians per pixel: for swaying trees and flicker.

    Parameters
    ----------
    shape, channels, rate, threshold, initial_variance, smallest_variance, largest_variance, foreground_rate, shadow
        As of `ForegroundGaussian`.
    components : int
        Gaussians per pixel, 1 to 8.
    background_ratio : float
        Part of the time for which a pixel shows its background, above 0, up to 1.
    prior : float
        Above 0 (and below 1), components that are not seen again vanish.

    Notes
    -----
    C. Stauffer and W. E. L. Grimson, "Adaptive background mixture models for real-time tracking", CVPR 1999, with the
    updates of Z. Zivkovic, ICPR 2004. Threads, pickles and copies as of `ForegroundGaussian`.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> model = rvxcv.ForegroundMixture((1, 2), rate=0.1)
    >>> for level in [50, 90] * 20:  # it flickers
    ...     _ = model(np.full((1, 2), level, np.uint8))
    >>> model(np.array([[90, 200]], np.uint8))
    array([[  0, 255]], dtype=uint8)
    """

    _NAME = "FGMM"
    _GET_SIZE, _INIT = lib.rvxiFGMMGetSize_8u, lib.rvxiFGMMInit_8u
    _MEMBERS = Members("rvxiFGMM_{}R")
    _UPDATE = Members("rvxiFGMMUpdate_{}R")
    _BACKGROUND = Members("rvxiFGMMGetBackground_{}R")

    def __init__(self, shape: tuple[int, int], channels: int = 1, *, rate: float = 0.01, components: int = 3,
                 threshold: float = 4, initial_variance: float = 225, smallest_variance: float = 16,
                 largest_variance: float = 1125, foreground_rate: float = 1, shadow: float = 0.5,
                 background_ratio: float = 0.9, prior: float = 0) -> None:
        super().__init__(shape, channels, rate, components=components, threshold=threshold, varInit=initial_variance,
                         varMin=smallest_variance, varMax=largest_variance, foregroundRate=foreground_rate,
                         shadow=shadow, backgroundRatio=background_ratio, prior=prior)


class ForegroundHistogram(_Model):
    """A table of colours per pixel, with a Bayes decision: for backgrounds of few distinct colours.

    Parameters
    ----------
    shape, channels, rate
        As of `ForegroundGaussian`.
    entries : int
        Colours per pixel, 1 to 32.
    principal : int
        How many of them decide.
    tolerance : int
        Levels by which a channel may differ, 0 to 255.
    absorb : float
        The part of the time from which on foreground becomes background, 0.5 to 1 (never).

    Notes
    -----
    L. Li, W. Huang, I. Y. H. Gu, Q. Tian, "Foreground object detection from videos containing complex background", ACM
    Multimedia 2003, with colours as features. Threads, pickles and copies as of `ForegroundGaussian`.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> model = rvxcv.ForegroundHistogram((1, 2), channels=3)
    >>> wall = np.full((1, 2, 3), 80, np.uint8)
    >>> for _ in range(5):
    ...     _ = model(wall)
    >>> wall[0, 1] = 90, 80, 200
    >>> model(wall)
    array([[  0, 255]], dtype=uint8)
    """

    _NAME = "ForegroundHistogram"
    _GET_SIZE, _INIT = lib.rvxiForegroundHistogramGetSize_8u, lib.rvxiForegroundHistogramInit_8u
    _MEMBERS = Members("rvxiForegroundHistogram_{}R")
    _UPDATE = Members("rvxiForegroundHistogramUpdate_{}R")
    _BACKGROUND = Members("rvxiForegroundHistogramGetBackground_{}R")

    def __init__(self, shape: tuple[int, int], channels: int = 1, *, rate: float = 0.01, entries: int = 8,
                 principal: int = 6, tolerance: int = 10, absorb: float = 0.8) -> None:
        super().__init__(shape, channels, rate, entries=entries, principal=principal, tolerance=tolerance,
                         absorb=absorb)
