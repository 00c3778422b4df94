"""Trained detectors: cascades of boosted Haar-like features."""
from __future__ import annotations

import json
import os
from collections.abc import Iterable, Mapping, Sequence
from typing import NamedTuple

import numpy as np
import numpy.typing as npt

from ._array import Members, apart, check, expect, ffi, lib, output, view
from .stats import integral_image, integral_images, rect_std

__all__ = ["HaarCascade", "HaarStage", "HaarStump"]

# By the type of a record's numbers: how they are passed, and the functions that make, turn, measure and release it.
_RECORDS = {
    np.dtype(np.float32): ("float[]", lib.rvxiHaarClassifierInitAlloc_32f, lib.rvxiTiltedHaarClassifierInitAlloc_32f,
                           lib.rvxiTiltHaarFeatures_32f, lib.rvxiGetHaarClassifierSize_32f,
                           lib.rvxiHaarClassifierFree_32f),
    np.dtype(np.int32): ("int32_t[]", lib.rvxiHaarClassifierInitAlloc_32s, lib.rvxiTiltedHaarClassifierInitAlloc_32s,
                         lib.rvxiTiltHaarFeatures_32s, lib.rvxiGetHaarClassifierSize_32s,
                         lib.rvxiHaarClassifierFree_32s),
}
# By the same type: members for upright features, for both kinds together, and the code of deviations.
_APPLY = {
    np.dtype(np.float32): (Members("rvxiApplyHaarClassifier_{}R", by_source=True),
                           Members("rvxiApplyMixedHaarClassifier_{}R", by_source=True), "32f"),
    np.dtype(np.int32): (Members("rvxiApplyHaarClassifier_{}RSfs"), Members("rvxiApplyMixedHaarClassifier_{}RSfs"),
                         "32s"),
}


class HaarStump(NamedTuple):
    """A feature: a weighted sum of rectangles, compared with a threshold, adds one of two values.

    ``rects`` holds (x, y, width, height, weight) each; the first of the ``values`` is added where the sum is below the
    threshold times the deviation, else the second. In a tilted one, rectangles are turned by 45 degrees: (x, y) is the
    top corner, the width counts down to the right, the height down to the left.
    """

    rects: Sequence[Sequence[float]]
    threshold: float
    values: Sequence[float]
    tilted: bool = False


class HaarStage:
    """One stage of a cascade, evaluated at every selected place of an image.

    A stage does not change, so that threads may share it.

    Parameters
    ----------
    stumps : sequence of HaarStump, of mappings with its fields, or of tuples
    threshold : number
        A place passes where the sum of all values is at least this.
    dtype : {float32, int32}
        The type of weights, thresholds and values.
    tilt_up : bool
        Rectangles of tilted stumps are turned around their lower left corner (x, y + height) instead: the bottom corner
        lies there, the height counts up to the left, the width up to the right.

    Attributes
    ----------
    size : (width, height)
        The window: the rightmost column and the lowest row that rectangles reach.

    Notes
    -----
    P. Viola and M. Jones, "Rapid Object Detection using a Boosted Cascade of Simple Features", CVPR 2001; R. Lienhart
    and J. Maydt, "An Extended Set of Haar-like Features for Rapid Object Detection", ICIP 2002.

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> image = np.full((8, 12), 40, np.uint8)
    >>> image[:, 5:7] = 200  # a bright bar, two pixels wide
    >>> bar = rvxcv.HaarStump([(0, 0, 6, 4, -1), (2, 0, 2, 4, 3)], 24, (0, 1))
    >>> stage = rvxcv.HaarStage([bar], 1)
    >>> stage.size
    (6, 4)
    >>> sums, squares = rvxcv.integral_images(image)
    >>> deviation = rvxcv.rect_std(sums, squares, (0, 0, 6, 4))
    >>> places = np.ones(deviation.shape, np.uint8)
    >>> stage.apply(sums, deviation, places)
    5
    >>> places[0]
    array([0, 0, 0, 1, 0, 0, 0], dtype=uint8)
    """

    def __init__(self, stumps: Iterable[HaarStump | Mapping | tuple], threshold: float, *,
                 dtype: npt.DTypeLike = np.float32, tilt_up: bool = False):
        stumps = [HaarStump(**stump) if isinstance(stump, Mapping) else HaarStump(*stump) for stump in stumps]
        self._dtype = np.dtype(dtype)
        if self._dtype not in _RECORDS:
            raise TypeError(f"dtype must be float32 or int32, not {dtype}")
        numbers, make, make_tilted, tilt, measure, free = _RECORDS[self._dtype]
        self.threshold = threshold
        rects = [rect for stump in stumps for rect in stump.rects]
        tilted = [bool(stump.tilted) for stump in stumps]
        all_tilted = bool(stumps) and all(tilted) and not tilt_up
        record = ffi.new("HaarClassifier **")
        check((make_tilted if all_tilted else make)(
            record, ffi.new("Rect2i[]", [tuple(rect[:4]) for rect in rects]),
            ffi.new(numbers, [rect[4] for rect in rects]), ffi.new(numbers, [stump.threshold for stump in stumps]),
            ffi.new(numbers, [stump.values[0] for stump in stumps]),
            ffi.new(numbers, [stump.values[1] for stump in stumps]),
            ffi.new("int32_t[]", [len(stump.rects) for stump in stumps]), len(stumps)))
        self._record = ffi.gc(record[0], free)
        if any(tilted) and not all_tilted:
            check(tilt(ffi.new("uint8_t[]", tilted), 0 if tilt_up else 1, self._record))
        size = ffi.new("RoiSize *")
        check(measure(self._record, size))
        self.size = size.width, size.height
        self.tilted = any(tilted)
        self._reach = self._corners(False), self._corners(True)

    def _corners(self, tilted):
        """The first and the last column and row of the corners of upright or tilted features, or None."""
        record = self._record
        every = record.tiltedClassifier != 0
        corners = [(corner.x, corner.y) for feature in record.features[0:record.featureCount]
                   if (every or feature.tag & 1 != 0) == tilted
                   for rect in feature.rects[0:feature.rectCount] for corner in rect.corners]
        return corners and (*np.min(corners, axis=0).tolist(), *np.max(corners, axis=0).tolist())

    def _need(self, tilted, name, roi, size):
        """Makes sure that all places' corners lie in an integral image; those of tilted features count from (1, 1)."""
        if not self._reach[tilted]:
            return
        left, top, right, bottom = self._reach[tilted]
        if left + tilted < 0 or top + tilted < 0:
            raise ValueError(f"{name}: a rectangle of the stage begins {-min(left, top)} pixels before its window")
        wanted = roi[0] + right + tilted, roi[1] + bottom + tilted
        if size[0] < wanted[0] or size[1] < wanted[1]:
            raise ValueError(f"{name} must have at least shape {wanted[::-1]} for {roi[1]} x {roi[0]} places, not "
                             f"{size[::-1]}")

    def apply(self, integral: npt.ArrayLike, deviation: npt.ArrayLike, mask: npt.NDArray[np.uint8], *,
              tilted: npt.ArrayLike | None = None, count: int | None = None, scale: int = 0) -> int:
        """Keep the selected places that pass.

        Parameters
        ----------
        integral : (M, N) array of float32 or int32 (a float32 stage); int32 (an int32 stage)
            The image's `integral_image`, at least (H + window height, W + window width).
        deviation : (H, W) array of the stage's dtype
            What thresholds are multiplied by, as `rect_std` makes it.
        mask : (H, W) array of uint8
            Places that are not zero are selected; in place, those that do not pass become 0.
        tilted : (M + 1, N + 1) array like the integral image
            The tilted integral image, for stages with tilted stumps.
        count : int, optional
            How many places are selected. From an eighth up to a quarter of all of them, places of whole blocks of four
            columns pass only where the sum exceeds the threshold, and become 255. Counted unless given.
        scale : int
            For int32 stages: thresholds times deviations are divided by ``2**scale``.

        Returns
        -------
        count : int
            How many places have passed.
        """
        integral, deviation = np.asarray(integral), np.asarray(deviation)
        sums, sums_step, size, key = view(integral, "integral")
        upright, mixed, code = _APPLY[self._dtype]
        member = (mixed if self.tilted else upright)[key]
        norm, norm_step, roi = expect(deviation, "deviation", f"{code}_C1")
        if mask is None:
            raise TypeError("mask must be a numpy array, not None")
        mask, (marks, marks_step, _, _) = output(mask, "mask", roi[::-1], "8u")
        self._need(False, "integral", roi, size)
        images = [sums, sums_step]
        if self.tilted:
            if tilted is None:
                raise ValueError("tilted: a stage with tilted stumps needs the tilted integral image")
            pointer, step, tilted_size = expect(tilted, "tilted", key)
            self._need(True, "tilted", roi, tilted_size)
            apart(np.asarray(tilted), mask, "mask")
            images += [pointer, step]
        apart(integral, mask, "mask")
        apart(deviation, mask, "mask")
        number = ffi.new("int32_t *", int(np.count_nonzero(mask)) if count is None else count)
        rest = [] if code == "32f" else [scale]
        check(member(*images, norm, norm_step, marks, marks_step, roi, number, self._record, self.threshold, *rest))
        return number[0]


class HaarCascade:
    """A trained detector, of the size of its window. It does not change, so that threads may share it.

    Parameters
    ----------
    cascade : mapping, str or path
        The contents of a cascade file as docs/cascades.md describes it, or the file's name.

    Attributes
    ----------
    window : (width, height)
    stages : list of HaarStage

    Examples
    --------
    >>> import numpy as np, rvxcv
    >>> image = np.full((8, 12), 40, np.uint8)
    >>> image[2:6, 5:7] = 200
    >>> bar = {"rects": [[0, 0, 6, 4, -1], [2, 0, 2, 4, 3]], "threshold": 24, "values": [0, 1]}
    >>> cascade = rvxcv.HaarCascade({"format": "rvxcv cascade 1", "window": [6, 4], "deviation": [0, 0, 6, 4],
    ...                              "contrast": 1, "stages": [{"threshold": 1, "stumps": [bar]}]})
    >>> cascade.windows(image).tolist()
    [[3, 1], [3, 2], [3, 3]]
    """

    def __init__(self, cascade: Mapping | str | os.PathLike):
        if not isinstance(cascade, Mapping):
            with open(cascade, encoding="utf-8") as file:
                cascade = json.load(file)
        if cascade.get("format") != "rvxcv cascade 1":
            raise ValueError(f"not a cascade: its format is {cascade.get('format')!r}, not 'rvxcv cascade 1'")
        self.window = tuple(cascade["window"])
        self.object = cascade.get("object", "")
        self._deviation = tuple(cascade["deviation"])
        x, y, width, height = self._deviation
        if min(x, y) < 0 or min(width, height) < 1 or x + width > self.window[0] or y + height > self.window[1]:
            raise ValueError(f"the deviation's rectangle {self._deviation} is not part of the window {self.window}")
        self._contrast = cascade.get("contrast", 0)
        self.stages = [HaarStage(stage["stumps"], stage["threshold"]) for stage in cascade["stages"]]
        self._tilted = any(stage.tilted for stage in self.stages)
        if self._tilted and cascade.get("tip", 2) != 2:
            raise ValueError("tilted stumps must have been trained with triangles of tip 2, as the library's")

    def windows(self, image: npt.ArrayLike) -> npt.NDArray[np.int32]:
        """The windows that pass all stages, of the cascade's own size; make the image smaller to find larger objects.

        Parameters
        ----------
        image : (H, W) array of uint8

        Returns
        -------
        places : (N, 2) array of int32
            (x, y) of their upper left corners, row by row.
        """
        _, _, (columns, rows) = expect(image, "image", "8u_C1")
        shape = rows - self.window[1] + 1, columns - self.window[0] + 1
        if min(shape) < 1:
            return np.empty((0, 2), np.int32)
        sums, squares = integral_images(image)  # as integers: floats would round sums of large images
        x, y, w, h = self._deviation
        norm = rect_std(sums[:shape[0] + y + h, :shape[1] + x + w], squares[:shape[0] + y + h, :shape[1] + x + w],
                        self._deviation)
        mask = (norm >= self._contrast).astype(np.uint8)
        count = int(np.count_nonzero(mask))
        tilted = integral_image(image, dtype=np.int32, tilted=True) if self._tilted else None
        for stage in self.stages:
            if count == 0:
                break
            count = stage.apply(sums, norm, mask, tilted=tilted, count=count)
        return np.argwhere(mask)[:, ::-1].astype(np.int32)
