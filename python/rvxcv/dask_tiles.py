"""Dask arrays computed tile by tile: images that no memory holds, on the workers that are there.

Needs dask (Debian: python3-dask, python3-distributed), which the package itself does not.
"""
from __future__ import annotations

from collections.abc import Callable

import numpy as np

from . import tiles

__all__ = ["map_tiles"]


def map_tiles(function: Callable, image, *, margin, dtype=None, tile: tuple[int, int] | None = None):
    """Compute a dask array tile by tile, with the bits of the whole image.

    Parameters
    ----------
    function : callable
        As for `rvxcv.tiles.run`. On a cluster of processes it must be picklable: a function of this package, or a
        `functools.partial` of one.
    image : dask array of shape (height, width) or (height, width, channels)
        Its chunks are the tiles; chunks that are smaller than the margin or not aligned to 16 columns are joined.
    margin : int or (left, top, right, bottom)
        As for `rvxcv.tiles.run`.
    dtype : dtype, optional
        Of the result; by default found by computing a small image.
    tile : (height, width), optional
        Size of the tiles; by default that of the first chunk.

    Returns
    -------
    result : dask array of the image's shape, not computed yet

    Raises
    ------
    ValueError
        As `rvxcv.tiles.run`.

    Examples
    --------
    >>> import functools
    >>> import dask.array as da, numpy as np, rvxcv
    >>> from rvxcv import dask_tiles
    >>> image = np.random.default_rng(1).integers(0, 256, (100, 200), np.uint8)
    >>> eroding = functools.partial(rvxcv.erode, footprint=rvxcv.ellipse(5, 5))
    >>> result = dask_tiles.map_tiles(eroding, da.from_array(image, (40, 64)), margin=2)
    >>> bool((result.compute() == eroding(image)).all())
    True
    """
    import dask.array as da

    around = tiles.margins(margin)
    inside = tiles.takes_inside(function, around)
    left, top, right, bottom = around
    # One number an axis: the overlap is taken as wide as the wider of two margins, and no chunk may be smaller.
    depth = {0: max(top, bottom), 1: max(left, right)}
    height, width = tile or image.chunksize[:2]
    rows = tuple(tiles.lengths(image.shape[0], max(height, depth[0] + 1), 1, depth[0], depth[0]))
    columns = tuple(tiles.lengths(image.shape[1], max(width, depth[1] + 1), tiles.ALIGNMENT, depth[1], depth[1]))
    image = image.rechunk((rows, columns, *((size,) for size in image.shape[2:])))
    sample = function(np.zeros((1, 1) + image.shape[2:], image.dtype))
    result_chunks = (rows, columns, *((size,) for size in sample.shape[2:]))

    def compute(block, block_info=None):
        place, count = block_info[0]["chunk-location"], block_info[0]["num-chunks"]
        before = [depth[axis] if place[axis] > 0 else 0 for axis in (0, 1)]
        after = [depth[axis] if place[axis] < count[axis] - 1 else 0 for axis in (0, 1)]
        box = (before[0], before[1], block.shape[0] - after[0], block.shape[1] - after[1])
        block = np.ascontiguousarray(block)
        options = {"inside": tiles.sides(box, block.shape)} if inside else {}
        return function(block[box[0]:box[2], box[1]:box[3]], **options)

    return da.map_overlap(compute, image, depth=depth, boundary="none", trim=False, chunks=result_chunks,
                          dtype=dtype or sample.dtype, meta=np.empty((0,) * sample.ndim, dtype or sample.dtype))
