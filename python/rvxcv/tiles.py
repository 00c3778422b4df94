"""An image computed as tiles, on threads, with the bits of the whole image.

Each tile is a slice of the image and its neighbours' pixels are the border in memory, so nothing is copied and nothing
differs at the seams. The library's calls release the interpreter lock: threads compute at the same time.
"""
from __future__ import annotations

import concurrent.futures
import functools
import inspect
import os
from collections.abc import Callable, Sequence

import numpy as np

__all__ = ["lengths", "margins", "run", "sides", "takes_inside"]

# The integer filters round the last (width mod 16) pixels of a row in another way than those before. Where tiles begin
# at multiples of 16, these pixels are the image's.
ALIGNMENT = 16

# What takes inside= and is refused all the same: edges are followed through the whole image; pixels of packed bits do
# not begin with their bytes.
WHOLE = frozenset({"canny", "blackhat_bits", "close_bits", "dilate_bits", "erode_bits", "gradient_bits", "open_bits",
                   "tophat_bits"})

# Functions of the package whose pixels depend on nothing but the same pixel of their inputs.
POINTWISE = frozenset({"absdiff", "accumulate", "accumulate_product", "accumulate_square", "accumulate_weighted",
                       "blend"})


def run(function: Callable, *images: np.ndarray, margin, tile: tuple[int, int] | None = None,
        workers: int | None = None, out: np.ndarray | None = None) -> np.ndarray:
    """Compute an image tile by tile on threads.

    Parameters
    ----------
    function : callable
        Called as ``function(*tiles, out=…, inside=…)`` for each tile; ``inside`` names the sides on which the image
        goes on. Functions of this package that take ``inside=`` are of this kind, with their other arguments given by
        `functools.partial`.
    *images : arrays of one height and width
        The inputs; each is cut in the same way.
    margin : int or (left, top, right, bottom)
        Pixels around a tile that its result depends on: for a window of w x h pixels around each pixel w // 2 and
        h // 2, for an opening twice that.
    tile : (height, width), optional
        Size of the tiles; widths are rounded up to a multiple of 16. By default bands of whole rows, up to four to a
        worker.
    workers : int, optional
        Number of threads; by default the processors that this process may use.
    out : array, optional
        Where the result goes, for instance a `numpy.memmap`.

    Returns
    -------
    out : array
        Bit for bit what ``function(*images)`` computes.

    Raises
    ------
    ValueError
        For functions whose pixels may depend on pixels at any distance (edges that are followed, distances, labels,
        fills, sums), for ``border="wrap"``, and for packed bits: their tiles are not parts of the whole image's
        result. Also where the output would be one of the inputs.

    Notes
    -----
    The integer members of the separable pipeline, and the derivative and Gaussian filters built on it, round the last
    (width mod 16) pixels of a row in another way than those before. Tiles begin at multiples of 16, so that these
    pixels are the image's own last ones, and the result is that of the whole image.

    Examples
    --------
    >>> import functools
    >>> import numpy as np, rvxcv
    >>> from rvxcv import tiles
    >>> image = np.random.default_rng(1).integers(0, 256, (100, 200), np.uint8)
    >>> opening = functools.partial(rvxcv.dilate, footprint=rvxcv.ellipse(5, 5))
    >>> whole = opening(image)
    >>> bool((tiles.run(opening, image, margin=2, tile=(32, 48)) == whole).all())
    True
    """
    if not images:
        raise ValueError("run needs an image")
    shape = images[0].shape[:2]
    if any(image.shape[:2] != shape for image in images):
        raise ValueError(f"images must have one height and width, not {[image.shape[:2] for image in images]}")
    around = margins(margin)
    inside = takes_inside(function, around)
    workers = workers or len(os.sched_getaffinity(0))
    if workers < 1:
        raise ValueError(f"workers must be at least 1, not {workers}")
    # Four bands to a worker even out what disturbs one; bands not much higher than the margin would do its rows twice.
    bands = max(-(-shape[0] // (4 * workers)), 16 * (around[1] + around[3]))
    height, width = tile or (min(bands, -(-shape[0] // workers)), shape[1])
    rows = lengths(shape[0], height, 1, around[1], around[3])
    columns = lengths(shape[1], width, ALIGNMENT, around[0], around[2])
    boxes = [(top, left, bottom, right) for top, bottom in _spans(rows) for left, right in _spans(columns)]

    def compute(box, target):
        top, left, bottom, right = box
        parts = [image[top:bottom, left:right] for image in images]
        options = {"inside": sides(box, shape)} if inside else {}
        return function(*parts, out=target, **options)

    if out is None:
        # The first tile tells what the others are.
        first = compute(boxes[0], None)
        out = np.empty(shape + first.shape[2:], first.dtype)
        out[boxes[0][0]:boxes[0][2], boxes[0][1]:boxes[0][3]] = first
        boxes = boxes[1:]
    elif any(np.may_share_memory(out, image) for image in images) and any(around):
        raise ValueError("out must not share memory with an image: neighbouring tiles would read results")
    elif out.shape[:2] != shape:
        raise ValueError(f"out must have height and width {shape}, not {out.shape[:2]}")
    with concurrent.futures.ThreadPoolExecutor(workers) as pool:
        futures = [pool.submit(compute, box, out[box[0]:box[2], box[1]:box[3]]) for box in boxes]
        for future in futures:
            future.result()
    return out


def margins(margin) -> tuple[int, int, int, int]:
    """A margin as (left, top, right, bottom)."""
    around = (margin,) * 4 if np.ndim(margin) == 0 else tuple(margin)
    if len(around) != 4 or any(int(side) != side or side < 0 for side in around):
        raise ValueError(f"margin is a number of pixels or (left, top, right, bottom), not {margin!r}")
    return tuple(int(side) for side in around)


def takes_inside(function: Callable, around: Sequence[int]) -> bool:
    """Whether a function can be told the sides in memory; raises ValueError if its tiles would not be the image's."""
    core = function
    while isinstance(core, functools.partial):
        core = core.func
    name = getattr(core, "__name__", type(core).__name__)
    ours = (getattr(core, "__module__", None) or "").split(".")[0] == __package__
    parameters = inspect.signature(function).parameters
    inside = any(each.name == "inside" or each.kind is each.VAR_KEYWORD for each in parameters.values())
    if ours and name in WHOLE or not inside and (any(around) or ours and name not in POINTWISE):
        raise ValueError(f"{name} is not for tiles: a pixel of its result may depend on pixels at any distance, so "
                         "that tiles would not be parts of the whole image's result")
    if inside and "border" in parameters and parameters["border"].default == "wrap":
        raise ValueError("border='wrap' is not for tiles: the other end of the image is in another tile")
    return inside


def lengths(total: int, wanted: int, alignment: int, before: int, after: int) -> list[int]:
    """Lengths of the parts of ``total`` pixels: the wanted one rounded up to the alignment.

    A part that begins or ends nearer to the image's edge than the margin would miss pixels that no memory holds, or
    that its border mirrors: the first parts are joined until they hold more than ``before`` pixels, the last until
    they hold more than ``after``.
    """
    if wanted < 1:
        raise ValueError(f"tiles must have at least one pixel, not {wanted}")
    length = min(total, -(-wanted // alignment) * alignment)
    parts = [length] * (total // length) + [total % length] * (total % length > 0)
    while len(parts) > 1 and parts[0] <= before:
        parts[:2] = [parts[0] + parts[1]]
    while len(parts) > 1 and parts[-1] <= after:
        parts[-2:] = [parts[-2] + parts[-1]]
    return parts


def sides(box: tuple[int, int, int, int], shape: Sequence[int]) -> str:
    """The sides of a (top, left, bottom, right) on which an image of this shape goes on, as ``inside=`` takes them."""
    top, left, bottom, right = box
    beyond = {"top": top > 0, "left": left > 0, "bottom": bottom < shape[0], "right": right < shape[1]}
    return " ".join(side for side, there in beyond.items() if there)


def _spans(parts):
    ends = np.cumsum(parts).tolist()
    return list(zip([0, *ends[:-1]], ends))
