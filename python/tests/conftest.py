"""What the tests of every module share: pictures, and checks of everything that all friendly functions have in common.

A module's tests hold one line per function; the checks below run for each of them:

    class TestCalls(CallChecks):
        calls = [Call(rvxcv.erode, picture((21, 33)), np.ones((3, 3))),
                 Call(rvxcv.accumulate, picture((21, 33)), picture((21, 33), "float32"), changes=[1])]
"""
import concurrent.futures
import ctypes
import inspect
import mmap

import numpy as np
import pytest


def picture(shape, dtype="uint8", seed=0):
    """Random pixels over the whole range of an integer type, -1000 ... 1000 of a floating type."""
    random = np.random.default_rng([seed, *shape])
    dtype = np.dtype(dtype)
    if dtype == bool:
        return random.random(shape) < 0.5
    if dtype.kind == "f":
        return random.uniform(-1000, 1000, shape).astype(dtype)
    limits = np.iinfo(dtype)
    return random.integers(limits.min, limits.max, shape, dtype, endpoint=True)


def same(result, expected):
    """Equal bits: of an array, a number, or a sequence of them."""
    if isinstance(expected, (tuple, list)):
        assert type(result) is type(expected) and len(result) == len(expected)
        for one, other in zip(result, expected):
            same(one, other)
    else:
        assert getattr(result, "dtype", None) == getattr(expected, "dtype", None)
        np.testing.assert_array_equal(result, expected)


class Call:
    """A friendly function and arguments that it takes.

    ``images`` are the positions of the arguments that must be images, ``changes`` of those that it changes in place.
    ``name`` tells calls of one function apart; a function of the test's own may stand for the method of an object.
    ``at_ends`` is by how much results may differ with a pixel's distance from its row's end (which decides how it is
    rounded). ``lists`` is for results that are lists of numbers, not images: their out must be contiguous.
    """

    def __init__(self, function, *arguments, images=(0,), changes=(), name="", at_ends=0, lists=False, **options):
        self.function, self.arguments, self.options = function, arguments, options
        self.images = sorted({*images, *changes})
        self.changes, self.at_ends, self.lists = changes, at_ends, lists
        self.name = f"{function.__name__}{'-' if name else ''}{name}"
        parameters = inspect.signature(function).parameters
        self.takes_out, self.takes_inside = "out" in parameters, "inside" in parameters

    def run(self, lay=np.copy, **options):
        """The result from copies of all arrays, which ``lay`` makes; those that may not change must not."""
        arguments = [lay(value) if isinstance(value, np.ndarray) else value for value in self.arguments]
        result = self.function(*arguments, **self.options, **options)
        for position, (after, before) in enumerate(zip(arguments, self.arguments)):
            if isinstance(before, np.ndarray) and position not in self.changes:
                np.testing.assert_array_equal(after, before, f"argument {position} has changed")
        return result

    def with_argument(self, position, value, **options):
        arguments = [np.copy(argument) if isinstance(argument, np.ndarray) else argument for argument in self.arguments]
        arguments[position] = value
        return self.function(*arguments, **self.options, **options)


def in_threads(function, arguments):
    """The function of every argument from four threads at once must be what it is alone."""
    expected = [function(argument) for argument in arguments]
    with concurrent.futures.ThreadPoolExecutor(4) as threads:
        for result, one in zip(threads.map(function, arguments * 4), expected * 4):
            same(result, one)


def pytest_generate_tests(metafunc):
    calls = getattr(metafunc.cls, "calls", ())
    if "call" in metafunc.fixturenames:
        metafunc.parametrize("call", calls, ids=lambda call: call.name)
    if "call_with_out" in metafunc.fixturenames:
        metafunc.parametrize("call_with_out", [call for call in calls if call.takes_out], ids=lambda call: call.name)
    if "call_with_inside" in metafunc.fixturenames:
        metafunc.parametrize("call_with_inside", [call for call in calls if call.takes_inside],
                             ids=lambda call: call.name)
    if "call_and_image" in metafunc.fixturenames:
        pairs = [(call, position) for call in calls for position in call.images]
        metafunc.parametrize("call_and_image", pairs, ids=lambda pair: f"{pair[0].name}-{pair[1]}")


def in_a_larger_array(array):
    """The same contents as a slice of an array of other contents: rows with a distance, and something around."""
    margins = [(3, 2)] * min(array.ndim, 2) + [(0, 0)] * (array.ndim - 2)
    whole = picture([size + sum(margin) for size, margin in zip(array.shape, margins)], array.dtype, seed=99)
    inner = whole[tuple(slice(before, before + size) for (before, _), size in zip(margins, array.shape))]
    inner[...] = array
    return inner


def _beside_a_guard_page(array, at_end):
    page = mmap.PAGESIZE
    data = -(-max(array.nbytes, 1) // page) * page
    memory = mmap.mmap(-1, data + 2 * page)
    start = ctypes.addressof(ctypes.c_char.from_buffer(memory))
    protect = ctypes.CDLL(None, use_errno=True).mprotect
    for guard in (start, start + page + data):
        assert protect(ctypes.c_void_p(guard), ctypes.c_size_t(page), 0) == 0
    offset = page + (data - array.nbytes if at_end else 0)
    copy = np.frombuffer(memory, array.dtype, array.size, offset).reshape(array.shape)
    copy[...] = array
    return copy


def before_a_guard_page(array):
    """A copy whose end is the end of the memory that may be touched: whoever reads or writes behind it dies."""
    return _beside_a_guard_page(array, at_end=True)


def behind_a_guard_page(array):
    return _beside_a_guard_page(array, at_end=False)


def _outs(result, lay):
    """Arrays of a result's shapes and types, of other contents."""
    if isinstance(result, tuple):
        return tuple(_outs(one, lay) for one in result)
    return lay(picture(result.shape, result.dtype, seed=7))


def _identical(result, out):
    if isinstance(out, tuple):
        return len(result) == len(out) and all(map(_identical, result, out))
    return result is out


def _one_array(image, result):
    """The image as out, where it can be one."""
    image = image.copy()
    return image, image if (image.shape, image.dtype) == (result.shape, result.dtype) else None


def _same_start(image, result, distance=0):
    """An out that begins where the image begins, or behind that."""
    distance -= distance % 8
    memory = np.empty(max(image.nbytes, distance + result.nbytes), np.uint8)
    copy = memory[:image.nbytes].view(image.dtype).reshape(image.shape)
    copy[...] = image
    return copy, memory[distance:distance + result.nbytes].view(result.dtype).reshape(result.shape)


def _halfway(image, result):
    return _same_start(image, result, image.nbytes // 2)


LAYS = [in_a_larger_array, before_a_guard_page, behind_a_guard_page]


class CallChecks:
    """The checks of all calls of a module, for its test class to inherit."""

    calls = []

    @pytest.mark.parametrize("lay", LAYS, ids=lambda lay: lay.__name__)
    def test_layouts(self, call, lay):
        same(call.run(lay), call.run())

    @pytest.mark.parametrize("lay", LAYS, ids=lambda lay: lay.__name__)
    def test_out(self, call_with_out, lay):
        expected = call_with_out.run()
        out = _outs(expected, lay)
        whole = [one.base for one in (out if isinstance(out, tuple) else (out,))]
        around = [np.copy(one) for one in whole if isinstance(one, np.ndarray)]
        if call_with_out.lists and lay is in_a_larger_array:
            with pytest.raises(ValueError, match="contiguous"):
                call_with_out.run(out=out)
            return
        result = call_with_out.run(out=out)
        assert _identical(result, out)
        same(result, expected)
        if lay is in_a_larger_array:
            for now, before, one in zip(whole, around, out if isinstance(out, tuple) else (out,)):
                one[...] = 0
                before[3:3 + one.shape[0], 3:3 + one.shape[1]] = 0
                np.testing.assert_array_equal(now, before, "written beside out")

    def test_out_of_other_kinds(self, call_with_out):
        outs = _outs(call_with_out.run(), np.copy)
        for position in range(len(outs) if isinstance(outs, tuple) else 1):
            good = outs[position] if isinstance(outs, tuple) else outs
            read_only = good.copy()
            read_only.flags.writeable = False
            for bad, error in ((np.concatenate([good, good[:1]]), ValueError), (good.astype("complex64"), TypeError),
                               (good.tolist(), TypeError), (read_only, ValueError)):
                out = (*outs[:position], bad, *outs[position + 1:]) if isinstance(outs, tuple) else bad
                with pytest.raises(error, match="out"):
                    call_with_out.run(out=out)

    @pytest.mark.parametrize("overlap", [_one_array, _same_start, _halfway])
    def test_out_over_an_input(self, call_with_out, overlap):
        """Refused, or as right as anywhere."""
        call, expected = call_with_out, call_with_out.run()
        results = expected if isinstance(expected, tuple) else (expected,)
        for position in call.images:
            for index, result in enumerate(results):
                image, out = overlap(call.arguments[position], result)
                outs = (*(None,) * index, out, *(None,) * (len(results) - index - 1))
                try:
                    result = call.with_argument(position, image, out=outs if isinstance(expected, tuple) else out)
                except ValueError as error:
                    assert "share" in str(error)
                else:
                    same(result, expected)

    def test_regions_with_their_surroundings_in_memory(self, call_with_inside):
        call, depth = call_with_inside, 4

        def run(top, bottom, left, right, inside):
            arguments = [value[top:bottom, left:right] if position in call.images else value
                         for position, value in enumerate(call.arguments)]
            return call.function(*arguments, **{**call.options, "inside": inside})

        height, width = call.arguments[0].shape[:2]
        whole = call.run()
        for top, left in ((depth, depth), (0, depth), (depth, 0)):
            bottom, right = height - depth + top % depth, width - depth + left % depth
            inside = [side for side, there in (("top", top), ("left", left), ("bottom", bottom < height),
                                               ("right", right < width)) if there]
            result, expected = run(top, bottom, left, right, inside), whole[top:bottom, left:right]
            if call.at_ends:
                np.testing.assert_allclose(result, expected, rtol=0, atol=call.at_ends)
            else:
                same(result, expected)
        for side in ("top", "left", "bottom", "right"):
            with pytest.raises(ValueError, match="around the region"):
                run(0, height, 0, width, side)

    def test_images_that_cannot_be_passed(self, call_and_image):
        call, position = call_and_image
        image = call.arguments[position]
        for bad, error in ((image[::-1], ValueError), (np.repeat(image, 2, axis=1)[:, ::2], ValueError),
                           (image.astype("complex64"), TypeError), (image.ravel(), ValueError),
                           (image[:0], ValueError), (image.astype(image.dtype.newbyteorder()), TypeError)):
            if bad.dtype != image.dtype or error is ValueError:
                with pytest.raises(error):
                    call.with_argument(position, bad)

    def test_threads(self):
        expected = [call.run() for call in self.calls]
        with concurrent.futures.ThreadPoolExecutor(4) as threads:
            rounds = [[threads.submit(call.run) for call in self.calls] for _ in range(4)]
            for results in rounds:
                for result, one in zip(results, expected):
                    same(result.result(), one)
