"""Every exported function, record and constant of the C libraries, under its own name.

The functions take what their C declarations say: pointers as cffi values, records by value as tuples or cffi values.
``ffi`` makes and converts them. Calls release the interpreter lock. ``include/rvxcv`` documents each function.

>>> import numpy as np
>>> from rvxcv import raw
>>> total = np.zeros((4, 4), np.float32)
>>> frame = np.full((4, 4), 7, np.uint8)
>>> raw.rvxiAdd_8u32f_C1IR(raw.ffi.from_buffer("uint8_t[]", frame), 4,
...                        raw.ffi.from_buffer("float[]", total), 16, (4, 4))
0
>>> float(total.sum())
112.0
"""
from ._raw import ffi, lib

globals().update({name: getattr(lib, name) for name in dir(lib)})
__all__ = ["ffi", "lib", *dir(lib)]
