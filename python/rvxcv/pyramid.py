"""Image pyramids: halving and doubling, layers of any rate, pyramids of levels."""
from __future__ import annotations

import threading
from collections.abc import Sequence

import numpy as np
import numpy.typing as npt

from ._array import CODES, Members, apart, check, ffi, lib, output, scratch, view

__all__ = ["Pyramid", "PyramidExpander", "PyramidReducer", "expanded_shapes", "pyramid_expand", "pyramid_reduce",
           "reduced_shape"]

_DOWN = Members("rvxiPyrDown_Gauss5x5_{}R")
_UP = Members("rvxiPyrUp_Gauss5x5_{}R")
_TYPES = {code: getattr(lib, f"PixelType{code}") for code in CODES if code != "32s"}


def _step(members, query, image, out, size_of):
    image = np.asarray(image)
    source, step, roi, key = view(image, "image")
    member = members[key]
    code, channels = key.split("_C")
    out, (target, target_step, _, _) = output(out, "out", (*map(size_of, image.shape[:2]), *image.shape[2:]), code)
    apart(image, out, "out")
    check(member(source, step, target, target_step, roi, scratch(query, roi[0], _TYPES[code], int(channels))))
    return out


def pyramid_reduce(image: npt.ArrayLike, out: npt.NDArray | None = None) -> npt.NDArray:
    """Half the size: every second pixel of the image smoothed by ``1 4 6 4 1`` along both axes.

    Parameters
    ----------
    image : (H, W) or (H, W, 3) array of uint8, int8, float32
        Pixels outside are mirrored, without the edge pixel.
    out : array of the image's type, optional
        Must not share memory with the image.

    Returns
    -------
    out : ((H + 1) // 2, (W + 1) // 2) or ((H + 1) // 2, (W + 1) // 2, 3) array
        Integers are rounded to nearest, halves up.

    See Also
    --------
    skimage.transform.pyramid_reduce

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.pyramid_reduce(np.array([[0, 0, 16, 0, 0]], np.uint8))
    array([[2, 6, 2]], dtype=uint8)
    """
    return _step(_DOWN, lib.rvxiPyrDownGetBufSize_Gauss5x5, image, out, lambda length: (length + 1) // 2)


def pyramid_expand(image: npt.ArrayLike, out: npt.NDArray | None = None) -> npt.NDArray:
    """Twice the size, smoothed by ``1 4 6 4 1`` along both axes.

    Parameters
    ----------
    image : (H, W) or (H, W, 3) array of uint8, int8, float32
    out : array of the image's type, optional
        Must not share memory with the image.

    Returns
    -------
    out : (2 H, 2 W) or (2 H, 2 W, 3) array
        Integers are rounded to nearest, halves up.

    See Also
    --------
    skimage.transform.pyramid_expand

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> rvxcv.pyramid_expand(np.array([[0, 0, 8, 0, 0]], np.uint8))[0]
    array([0, 0, 1, 4, 6, 4, 1, 0, 0, 0], dtype=uint8)
    """
    return _step(_UP, lib.rvxiPyrUpGetBufSize_Gauss5x5, image, out, lambda length: 2 * length)


def reduced_shape(shape: tuple[int, int], rate: float) -> tuple[int, int]:
    """The (height, width) of the level above one of this shape, in a pyramid of a rate above 1, up to 10.

    Examples
    --------
    >>> import rvxcv
    >>> rvxcv.reduced_shape((480, 641), 2)
    (240, 321)
    """
    size = ffi.new("RoiSize *")
    check(lib.rvxiGetPyramidDownROI((shape[1], shape[0]), size, rate))
    return size.height, size.width


def expanded_shapes(shape: tuple[int, int], rate: float) -> tuple[tuple[int, int], tuple[int, int]]:
    """The smallest and the largest (height, width) of the level below one of this shape.

    Examples
    --------
    >>> import rvxcv
    >>> rvxcv.expanded_shapes((240, 321), 2)
    ((479, 641), (480, 642))
    """
    sizes = ffi.new("RoiSize[2]")
    check(lib.rvxiGetPyramidUpROI((shape[1], shape[0]), sizes, sizes + 1, rate))
    return (sizes[0].height, sizes[0].width), (sizes[1].height, sizes[1].width)


# --------------------------------------------------------------------------------------------------- Layers of any rate

_LINEAR = 2  # the one mode
_KEPT_STATES = 16


class _Layer:
    """States of one direction, a rate and a kernel, by image size and type. They are for one call at a time."""

    def __init__(self, rate, kernel):
        self.rate, self.kernel = float(rate), np.asarray(kernel)
        if self.kernel.ndim != 1:
            raise ValueError(f"kernel must have shape (taps,), not {self.kernel.shape}")
        self._states = {}
        self._lock = threading.Lock()

    def _state(self, roi, key):
        state = self._states.get((roi, key))
        if state is None:
            whole = not key.startswith("32f")
            taps = np.ascontiguousarray(self.kernel, np.int16 if whole else np.float32)
            if whole and not np.array_equal(taps, self.kernel):
                raise ValueError("the taps for integer images must be int16 numbers")
            made = ffi.new(f"{self._STATE} **")
            status = self._INIT[key](made, roi, self.rate, ffi.from_buffer("int16_t[]" if whole else "float[]", taps),
                                     taps.size, _LINEAR)
            if status >= 0:
                if len(self._states) >= _KEPT_STATES:
                    self._states.clear()
                state = self._states[roi, key] = ffi.gc(made[0], self._FREE[key])
            check(status)
        return state

    def _apply(self, image, shape, out):
        source, step, roi, key = view(image, "image")
        member = self._MEMBERS[key]
        out, (target, target_step, size, _) = output(out, "out", (*shape, *image.shape[2:]), key.split("_")[0])
        apart(image, out, "out")
        with self._lock:
            check(member(source, step, roi, target, target_step, size, self._state(roi, key)))
        return out


class PyramidReducer(_Layer):
    """One step up a pyramid of any rate: smooth by a kernel, then sample.

    Parameters
    ----------
    rate : float
        Above 1, up to 10.
    kernel : (n,) array of numbers, optional
        Symmetric, n odd and at least 3; integers for integer images. It need not add up to 1. If it is not symmetric,
        its left half counts, and `rvxcv.Warning` is given.

    Notes
    -----
    Threads may share an object; their calls take turns. It keeps what it computed for the last sizes of images.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> reduce = rvxcv.PyramidReducer(1.5)
    >>> reduce(np.full((6, 9), 7, np.uint8)).shape
    (4, 6)
    """

    _STATE = "PyramidLayerDownState"
    _INIT = Members("rvxiPyramidLayerDownInitAlloc_{}R")
    _FREE = Members("rvxiPyramidLayerDownFree_{}R")
    _MEMBERS = Members("rvxiPyramidLayerDown_{}R")

    def __init__(self, rate: float, kernel: npt.ArrayLike = (1, 4, 6, 4, 1)) -> None:
        super().__init__(rate, kernel)

    def __call__(self, image: npt.ArrayLike, out: npt.NDArray | None = None) -> npt.NDArray:
        """The level above an image.

        Parameters
        ----------
        image : (H, W) or (H, W, 3) array of uint8, uint16, float32
            Pixels outside are mirrored, without the edge pixel.
        out : array of the image's type, optional
            Must not share memory with the image.

        Returns
        -------
        out : array of ``reduced_shape((H, W), rate)``
        """
        image = np.asarray(image)
        view(image, "image")
        return self._apply(image, reduced_shape(image.shape[:2], self.rate), out)


class PyramidExpander(_Layer):
    """One step down a pyramid of any rate: smooth by a kernel between the pixels.

    Parameters and notes as of `PyramidReducer`.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> expand = rvxcv.PyramidExpander(1.5)
    >>> expand(np.full((4, 6), 7, np.uint8)).shape
    (6, 9)
    """

    _STATE = "PyramidLayerUpState"
    _INIT = Members("rvxiPyramidLayerUpInitAlloc_{}R")
    _FREE = Members("rvxiPyramidLayerUpFree_{}R")
    _MEMBERS = Members("rvxiPyramidLayerUp_{}R")

    def __init__(self, rate: float, kernel: npt.ArrayLike = (1, 4, 6, 4, 1)) -> None:
        super().__init__(rate, kernel)

    def __call__(self, image: npt.ArrayLike, out: npt.NDArray | None = None, *,
                 shape: tuple[int, int] | None = None) -> npt.NDArray:
        """The level below an image.

        Parameters
        ----------
        image : (H, W) or (H, W, 3) array of uint8, uint16, float32
        out : array of the image's type, optional
            Must not share memory with the image.
        shape : (int, int), optional
            The result's height and width, in the range of `expanded_shapes`; otherwise those of out, or the largest.

        Returns
        -------
        out : array of that shape
        """
        image = np.asarray(image)
        view(image, "image")
        if shape is None:
            shape = expanded_shapes(image.shape[:2], self.rate)[1] if out is None else np.shape(out)[:2]
        return self._apply(image, tuple(shape), out)


# -------------------------------------------------------------------------------------------------------------- Pyramid

_KERNEL = (1, 4, 6, 4, 1)


class Pyramid(Sequence):
    """A picture in ever smaller sizes, as `track` takes it: a sequence of levels.

    Parameters
    ----------
    image : (H, W) array of uint8, uint16, float32; (H, W, 3) as well
        Level 0, without a copy: it must not change while the pyramid is used.
    levels : int
        How many levels there are above level 0, if 1 x 1 is not reached before.
    rate : float
        From one level to the next, above 1, up to 10.
    kernel : (n,) array of numbers
        As of `PyramidReducer`.

    Attributes
    ----------
    scales : tuple of float
        Of every level: its size divided by that of level 0, as the rate has it.

    Notes
    -----
    Threads may share a pyramid.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> pyramid = rvxcv.Pyramid(np.zeros((100, 201), np.uint8), levels=3)
    >>> [level.shape for level in pyramid]
    [(100, 201), (50, 101), (25, 51), (13, 26)]
    """

    def __init__(self, image: npt.ArrayLike, levels: int = 4, *, rate: float = 2,
                 kernel: npt.ArrayLike = _KERNEL) -> None:
        image = np.asarray(image)
        _, _, roi, self._key = view(image, "image")
        if levels < 0:
            raise ValueError(f"levels must not be negative, but is {levels}")
        made = ffi.new("PyramidRecord **")
        check(lib.rvxiPyramidInitAlloc(made, max(levels, 1), roi, rate))
        self._record = ffi.gc(made[0], lib.rvxiPyramidFree)
        halving = rate == 2 and self._key in _DOWN and np.array_equal(kernel, _KERNEL)
        reduce = pyramid_reduce if halving else PyramidReducer(rate, kernel)
        images = [image]
        for _ in range(min(levels, self._record.levelCount)):
            images.append(reduce(images[-1]))
        self._levels = tuple(images)
        self._views = [view(level, "image") for level in images]
        for index, (pointer, step, size, _) in enumerate(self._views):
            expected = self._record.roiSizes[index]
            if size != (expected.width, expected.height):
                raise RuntimeError(f"level {index} has an unexpected size")  # others would read what is not there
            self._record.images[index] = pointer
            self._record.steps[index] = step
        self.scales = tuple(self._record.scales[index] for index in range(len(images)))

    def __len__(self) -> int:
        return len(self._levels)

    def __getitem__(self, index):
        return self._levels[index]
