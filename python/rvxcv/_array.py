"""How arrays become the pointers, steps and sizes that the library takes, and how its statuses become exceptions.

Every function of the package is built from these pieces:

* ``view`` checks an array's layout and tells pointer, row step, region and key ("8u_C1", "32f_C3"), without a copy;
* ``output`` does the same for ``out=``, or makes the array;
* ``Members`` finds the functions of one family by key;
* ``scratch`` asks a size query and lends this thread's scratch memory;
* ``working_copy`` makes what a function shall change in place;
* ``check`` turns a status into an exception or a warning;
* ``border_code`` and ``need_margin`` serve ``border=`` and ``inside=``.
"""
import math
import re
import threading
import warnings

import numpy as np

from ._raw import ffi, lib

CODES = {"8u": "uint8", "8s": "int8", "16u": "uint16", "16s": "int16", "32s": "int32", "32f": "float32",
         "64f": "float64"}
DTYPES = {code: np.dtype(name) for code, name in CODES.items()}
_CHANNELS = (1, 2, 3, 4)
_KEYS = {dtype: [f"{code}_C{channels}" for channels in (0, *_CHANNELS)] for code, dtype in DTYPES.items()}
_KEYS[np.dtype(bool)] = _KEYS[DTYPES["8u"]]  # a mask: True is 1
_POINTERS = {dtype: ffi.typeof(f"{'double' if code == '64f' else 'float' if code == '32f' else name + '_t'}[]")
             for (code, name), dtype in zip(CODES.items(), DTYPES.values())}
_POINTERS[np.dtype(bool)] = _POINTERS[DTYPES["8u"]]
_INT32_MAX = 2**31 - 1
_from_buffer = ffi.from_buffer
_ndarray = np.ndarray


class Error(RuntimeError):
    """A function of the library failed: ``status`` is its code, ``name`` the code's name ("StatusBadSize")."""

    def __init__(self, status):
        self.status = status
        self.name = _STATUS_NAMES.get(status, "unknown")
        super().__init__(f"{self.name} ({status})")

    def __reduce__(self):
        return Error, (self.status,)


class Warning(UserWarning):  # as numpy's own warnings: rvxcv.Warning
    """A function of the library succeeded with a remark, such as a truncated result."""


_STATUS_NAMES = {getattr(lib, name): name for name in dir(lib) if re.match(r"Status[A-Z]", name)}


def check(status):
    """Raises `Error` for a negative status and warns for a positive one."""
    if status < 0:
        raise Error(status)
    if status > 0:
        warnings.warn(f"{_STATUS_NAMES.get(status, status)}", Warning, stacklevel=3)


def view(array, name, writable=False):
    """Pointer, step in bytes, (width, height) and key of an image, of its own memory.

    An image has shape (height, width) or (height, width, channels); its pixels stand side by side in a row, and its
    rows at any distance that holds them, so a region (a slice) is an image too. ``writable`` is for outputs.
    """
    if not isinstance(array, _ndarray):
        if writable:
            raise TypeError(f"{name} must be a numpy array, not {type(array).__name__}")
        array = np.asarray(array)
    dtype = array.dtype
    itemsize = dtype.itemsize
    if array.ndim == 2:
        height, width = array.shape
        step, inner = array.strides
        pixel = itemsize
        channels = 1
    elif array.ndim == 3:
        height, width, channels = array.shape
        step, inner, innermost = array.strides
        pixel = itemsize * channels
        if innermost != itemsize and channels != 1:
            raise ValueError(f"{name}: the channels of a pixel must stand side by side in memory (stride {itemsize}, "
                             f"not {innermost})")
    else:
        raise ValueError(f"{name} must have shape (height, width) or (height, width, channels), not {array.shape}")
    try:
        key = _KEYS[dtype][channels]
    except (KeyError, IndexError):
        raise TypeError(f"{name}: {_describe(array)} is not supported; pixels are "
                        f"{', '.join(CODES.values())} in native byte order, with 1 to 4 channels") from None
    if width < 1 or height < 1 or channels < 1:
        raise ValueError(f"{name} must not be empty, but has shape {array.shape}")
    if inner != pixel and width != 1:
        raise ValueError(f"{name}: the pixels of a row must stand side by side in memory (stride {pixel}, not {inner})")
    if step < width * pixel:
        if height != 1:
            raise ValueError(f"{name}: rows must follow each other without overlapping (a stride of at least "
                             f"{width * pixel}, not {step})")
        step = width * pixel
    if step > _INT32_MAX or width > _INT32_MAX or height > _INT32_MAX:
        raise ValueError(f"{name}: sizes and row strides must be below 2**31")
    try:
        return _from_buffer(_POINTERS[dtype], array[0], writable), step, (width, height), key
    except (ValueError, BufferError):
        if writable and not array.flags.writeable:
            raise ValueError(f"{name} is read-only") from None
        raise


def output(out, name, shape, code):
    """The array of a result and its view: ``out`` if it is given and fits, else a new one.

    ``shape`` is (height, width) or (height, width, channels), ``code`` the type's code ("8u").
    """
    dtype = DTYPES[code]
    if out is None:
        out = np.empty(shape, dtype)
    elif not isinstance(out, _ndarray):
        raise TypeError(f"{name} must be a numpy array, not {type(out).__name__}")
    elif out.dtype is not dtype and out.dtype != dtype:
        raise TypeError(f"{name} must have dtype {dtype}, not {out.dtype}")
    elif out.shape != shape:
        raise ValueError(f"{name} must have shape {shape}, not {out.shape}")
    return out, view(out, name, True)


def working_copy(image, out):
    """The array that a function shall change, which holds the image, and its view: ``out`` or a new one."""
    image = np.asarray(image)
    key = view(image, "image")[3]
    out, seen = output(out, "out", image.shape, key[:key.index("_")])
    if out is not image:
        np.copyto(out, image)
    return out, seen


def same_layout(array, name, roi, key):
    """Pointer and step of a second image that must have the size and the type of the first."""
    pointer, step, other, other_key = view(array, name)
    if other_key != key:
        raise TypeError(f"{name} must have the first image's type, but is {_describe(array)}")
    if other != roi:
        raise ValueError(f"{name} must be {roi[0]} x {roi[1]} (width x height), not {other[0]} x {other[1]}")
    return pointer, step


def apart(first, second, name):
    """Refuses an output that shares memory with an input, for functions that do not work in place."""
    if isinstance(first, _ndarray) and isinstance(second, _ndarray) and first is not second and first.base is None \
            and second.base is None:
        return  # both own their memory; the usual case without numpy's search
    if np.may_share_memory(first, second) and np.shares_memory(first, second, max_work=1000):
        raise ValueError(f"{name} must not share memory with the input")


def apart_or_same(first, second, name):
    """Refuses an output that shares a part of its memory with an input, for functions that work in place."""
    if first is second or first.base is None and second.base is None:
        return
    if first.strides == second.strides and first.dtype == second.dtype and \
            first.__array_interface__["data"][0] == second.__array_interface__["data"][0]:
        return
    apart(first, second, name)


def _describe(array):
    channels = array.shape[2] if array.ndim == 3 else 1
    return f"{array.dtype} with {channels} channel{'s' if channels != 1 else ''}"


def _describe_key(key):
    types, channels = key.rsplit("_C", 1)
    names = ["packed bits" if code == "1u" else CODES[code] for code in re.findall(r"\d+[usf]", types)]
    return f"{' to '.join(names)} with {channels} channel{'s' if channels != '1' else ''}"


REACHED = set()  # the functions of all tables: tests compare them with the library's list


class Members(dict):
    """The functions of one family by key: ``{}`` of the pattern is the types and channels in their names.

    ``Members("rvxiAbsDiff_{}R")["8u_C1"]`` is rvxiAbsDiff_8u_C1R. Names with two types have keys such as "8u16s_C1";
    with ``by_source`` they have the source's, "8u_C1". A key that is not there is a TypeError that tells what is.
    """

    def __init__(self, pattern, by_source=False):
        before, after = pattern.split("{}")
        matcher = re.compile(re.escape(before) + r"(?P<types>(?:\d+[usf])+)(?P<channels>_A?C\d)" + re.escape(after))
        for name in dir(lib):
            match = matcher.fullmatch(name)
            if match:
                types = match["types"]
                if by_source:
                    types = re.match(r"\d+[usf]", types)[0]
                key = types + match["channels"]
                if key in self:
                    raise LookupError(f"{pattern}: more than one member for {key}")
                self[key] = getattr(lib, name)
                REACHED.add(name)
        if not self:
            raise LookupError(f"{pattern}: no such function")

    def __missing__(self, key):
        raise TypeError(f"{_describe_key(key)} is not supported here; accepted: "
                        f"{'; '.join(_describe_key(accepted) for accepted in self)}")


class _Scratch(threading.local):
    def __init__(self):
        self.size = ffi.new("int32_t *")
        self.blocks = {}


_scratch = _Scratch()
_KEPT_BYTES = 64 << 20


def scratch(query, *arguments, slot=0):
    """Scratch memory of this thread, of the size that ``query(*arguments, &size)`` tells.

    It holds until the thread's next call with the same slot.
    """
    local = _scratch
    check(query(*arguments, local.size))
    return lend(local.size[0], slot)


def allocate(size):
    """Memory of the caller's own, aligned to 64 bytes, which is released with the last reference to it."""
    block = lib.rvxMalloc(size)
    if not block:
        raise MemoryError(f"{size} bytes")
    return ffi.gc(ffi.cast("uint8_t *", block), lib.rvxFree, size)


def lend(size, slot=0):
    """The thread's scratch memory, of at least this many bytes."""
    blocks = _scratch.blocks
    kept = blocks.get(slot)
    if kept is not None and kept[0] >= size:
        return kept[1]
    rounded = max(4096, size)
    block = allocate(rounded)
    if rounded <= _KEPT_BYTES:
        blocks[slot] = rounded, block
    return block


_BORDERS = {"constant": lib.BorderConstant, "replicate": lib.BorderReplicate, "wrap": lib.BorderWrap,
            "mirror": lib.BorderMirror, "reflect": lib.BorderMirrorRepeat}
_SIDES = {"top": lib.BorderInMemoryTop, "bottom": lib.BorderInMemoryBottom, "left": lib.BorderInMemoryLeft,
          "right": lib.BorderInMemoryRight}
_border_codes = {(border, ""): code for border, code in _BORDERS.items()}


def border_code(border, inside=""):
    """The library's code of a border kind and of the sides that are in memory.

    ``inside`` names the sides, as "left top" or as a sequence; "all" is all four.
    """
    if not isinstance(inside, str):
        inside = " ".join(sorted(inside))
    code = _border_codes.get((border, inside))
    if code is None:
        if border not in _BORDERS:
            raise ValueError(f"border must be one of {', '.join(_BORDERS)}, not {border!r}")
        sides = set(_SIDES) if inside == "all" else set(inside.split())
        if not sides <= set(_SIDES):
            raise ValueError(f"inside names sides ({', '.join(_SIDES)}) or is 'all', not {inside!r}")
        code = _BORDERS[border]
        for side in sides:
            code |= _SIDES[side]
        _border_codes[border, inside] = code
    return code


def need_margin(array, name, code, left, top, right, bottom):
    """Makes sure that the pixels that a border in memory promises around a region are in memory.

    ``code`` is from `border_code`; the margin counts only on the sides that it names.
    """
    wanted = [left if code & lib.BorderInMemoryLeft else 0, top if code & lib.BorderInMemoryTop else 0,
              right if code & lib.BorderInMemoryRight else 0, bottom if code & lib.BorderInMemoryBottom else 0]
    if not any(wanted):
        return
    have = _room_around(array, wanted)
    if any(there < need for there, need in zip(have, wanted)):
        raise ValueError(f"{name}: the sides in memory need {wanted} pixels (left, top, right, bottom) around the "
                         f"region, and the array it is a slice of has {have}")


def _room_around(array, wanted):
    """Pixels to the left, above, to the right and below in the array of which this one is a slice.

    Of memory without rows (a file, a buffer that was reshaped) all that can be told is whether it holds what is wanted.
    """
    room = None
    flat = [0, 0, 0, 0]
    step, pixel = array.strides[:2]
    height, width = array.shape[:2]
    address = _address(array)
    owner = array.base
    while isinstance(owner, _ndarray):
        # Rows of the same pixels, of which the slice may have left out some: every other row, for instance. Pixels or
        # rows that share memory have nothing beside them.
        if owner.ndim in (2, 3) and owner.strides[1] == pixel and owner.strides[0] >= owner.shape[1] * pixel \
                and pixel >= array.itemsize * math.prod(array.shape[2:]) and step % owner.strides[0] == 0:
            every = step // owner.strides[0]
            above, rest = divmod(address - _address(owner), owner.strides[0])
            left = rest // pixel
            below = owner.shape[0] - 1 - above - (height - 1) * every
            room = [left, above // every, owner.shape[1] - left - width, below // every]
        elif owner.ndim == 1 and owner.flags.c_contiguous and (wanted[0] + width + wanted[2]) * pixel <= step:
            before = address - _address(owner)
            last = before + (height - 1 + wanted[3]) * step + (width + wanted[2]) * pixel
            if before >= wanted[1] * step + wanted[0] * pixel and last <= owner.nbytes:
                flat = wanted
        owner = owner.base
    return room or flat


def _address(array):
    return array.__array_interface__["data"][0]


def choose(choices, value, name):
    """What an option's word stands for: ``choices[value]``."""
    try:
        return choices[value]
    except (KeyError, TypeError):
        raise ValueError(f"{name} must be one of {', '.join(map(repr, choices))}, not {value!r}") from None


NORMS = {"inf": lib.NormInf, "l1": lib.NormL1, "l2": lib.NormL2}
_CONSTANTS = {code: ffi.typeof(f"{pointer.item.cname}[3]") for code, pointer in
              ((code, _POINTERS[dtype]) for code, dtype in DTYPES.items())}


def constant(value, key):
    """A border value as the members of this key take it: a number, or an array of one element per channel."""
    if key.endswith("C1"):
        return value
    if np.ndim(value) == 0:
        value = (value,) * 3
    elif len(value) != 3:
        raise ValueError(f"value must be a number or 3 numbers, not {value!r}")
    return ffi.new(_CONSTANTS[key.split("_")[0]], tuple(value))


def listed(out, name, shape, code):
    """A result that is a list of numbers, all side by side: ``out`` if it is given and fits or a new array; pointer."""
    dtype = DTYPES[code]
    if out is None:
        out = np.empty(shape, dtype)
    elif not isinstance(out, _ndarray):
        raise TypeError(f"{name} must be a numpy array, not {type(out).__name__}")
    elif out.dtype != dtype:
        raise TypeError(f"{name} must have dtype {dtype}, not {out.dtype}")
    elif out.shape != shape:
        raise ValueError(f"{name} must have shape {shape}, not {out.shape}")
    elif not out.flags.c_contiguous:
        raise ValueError(f"{name} must be contiguous")
    elif not out.flags.writeable:
        raise ValueError(f"{name} is read-only")
    return out, _from_buffer(_POINTERS[dtype], out.reshape(-1), True)


_NEIGHBOURS = {8: lib.NormInf, 4: lib.NormL1}


def neighbours(connectivity):
    """The library's norm for the pixels that count as neighbours: 8, or only the 4 that share a side."""
    return choose(_NEIGHBOURS, connectivity, "connectivity")


def expect(array, name, key, roi=None):
    """Pointer, step and region of an image that must have one layout (and size), such as a mask."""
    pointer, step, own, own_key = view(array, name)
    if own_key != key:
        raise TypeError(f"{name} must be {_describe_key(key)}, not {_describe(np.asarray(array))}")
    if roi is not None and own != roi:
        raise ValueError(f"{name} must be {roi[0]} x {roi[1]} (width x height), not {own[0]} x {own[1]}")
    return pointer, step, own
