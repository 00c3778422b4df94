"""Computer-vision primitives for 2-D images: numpy arrays in, numpy arrays out.

Images have shape (height, width) or (height, width, channels); slices are images too, without a copy. Points and boxes
are (x, y) and (x, y, width, height), sizes of arrays (height, width). Results go into ``out`` where it is given.
Layouts and types that cannot be used raise ValueError or TypeError, and what the library refuses raises `rvxcv.Error`.
Everything may be called from several threads at once. ``rvxcv.raw`` holds the functions of the C library under their
own names.
"""
from . import (arith, dask_tiles, detect, distance, feature, filter, foreground, geometry, hough, morph, morph_bits,
               morph_grey, motion, pyramid, segment, stats, tiles, version)
from ._array import Error, Warning
from .arith import *
from .detect import *
from .distance import *
from .feature import *
from .filter import *
from .foreground import *
from .geometry import *
from .hough import *
from .morph import *
from .morph_bits import *
from .morph_grey import *
from .motion import *
from .pyramid import *
from .segment import *
from .stats import *
from .version import *

__all__ = ["Error", "Warning", *arith.__all__, *detect.__all__, *distance.__all__, *feature.__all__, *filter.__all__,
           *foreground.__all__, *geometry.__all__, *hough.__all__, *morph.__all__, *morph_bits.__all__,
           *morph_grey.__all__, *motion.__all__, *pyramid.__all__, *segment.__all__, *stats.__all__, *version.__all__]
