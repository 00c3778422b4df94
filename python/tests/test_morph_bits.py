"""Bit images: the same as images of bytes 0 and 1, wherever a row begins."""
import numpy as np
import pytest

import rvxcv
from conftest import Call, CallChecks, picture

FUNCTIONS = {name: (getattr(rvxcv, f"{name}_bits"), getattr(rvxcv, bytewise)) for name, bytewise in (
    ("erode", "erode"), ("dilate", "dilate"), ("open", "morph_open"), ("close", "morph_close"),
    ("tophat", "morph_tophat"), ("blackhat", "morph_blackhat"), ("gradient", "morph_gradient"))}


def pack(mask, offset=0, columns=None):
    """The mask's bits after some others, rows filled up with ones."""
    height, width = mask.shape
    columns = columns or (offset + width + 7) // 8
    bits = np.ones((height, 8 * columns), bool)
    bits[:, offset:offset + width] = mask
    return np.packbits(bits, axis=1, bitorder="little")


def unpack(bits, width, offset=0):
    return np.unpackbits(bits, axis=1, bitorder="little")[:, offset:offset + width]


def smooth(shape):
    sparse = picture(shape, bool) & picture(shape, bool, 4)
    return rvxcv.morph_close(sparse, np.ones((2, 2))).astype(bool)


@pytest.mark.parametrize("name", FUNCTIONS)
@pytest.mark.parametrize("width, offset, out_offset", [(1, 0, 0), (8, 0, 3), (67, 5, 0), (64, 13, 9), (300, 0, 0)])
def test_bits_are_as_bytes(name, width, offset, out_offset):
    bitwise, bytewise = FUNCTIONS[name]
    mask = smooth((19, width))
    for footprint in (np.ones((3, 3)), rvxcv.ellipse(6, 5), [[1, 0, 0, 1]]):
        expected = bytewise(mask, footprint)
        bits = pack(mask, offset)
        result = bitwise(bits, width, footprint, offset=offset)
        assert result.shape == (19, (width + 7) // 8)
        np.testing.assert_array_equal(unpack(result, 8 * result.shape[1])[:, :width], expected)
        assert not unpack(result, 8 * result.shape[1])[:, width:].any()
        # Into the middle of other bits, which stay.
        out = pack(np.zeros((19, width)), out_offset, columns=(out_offset + width) // 8 + 2)
        assert bitwise(bits, width, footprint, out, offset=offset, out_offset=out_offset) is out
        np.testing.assert_array_equal(out, pack(expected, out_offset, out.shape[1]))


@pytest.mark.parametrize("name", FUNCTIONS)
def test_sides_in_memory(name):
    bitwise = FUNCTIONS[name][0]
    mask, footprint = smooth((40, 160)), rvxcv.ellipse(11, 5)
    whole = pack(mask)
    result = unpack(bitwise(whole, 160, footprint), 160)
    inner = bitwise(whole[8:30, 2:18], 101, footprint, offset=11, inside="all")
    np.testing.assert_array_equal(unpack(inner, 101), result[8:30, 27:128])
    with pytest.raises(ValueError, match="sides in memory"):
        bitwise(whole[8:30], 150, footprint, offset=4, inside="left")
    with pytest.raises(ValueError, match="sides in memory"):
        bitwise(whole[8:30], 150, footprint, offset=6, inside="right")


def test_what_is_refused():
    bits, square = np.zeros((5, 4), np.uint8), np.ones((3, 3))
    for width, offset in ((33, 0), (32, 1), (0, 0), (4, -1)):
        with pytest.raises(ValueError, match="does not hold"):
            rvxcv.erode_bits(bits, width, square, offset=offset)
    with pytest.raises(ValueError, match="out: a row"):
        rvxcv.erode_bits(bits, 32, square, np.zeros((5, 3), np.uint8))
    with pytest.raises(ValueError, match="rows"):
        rvxcv.erode_bits(bits, 32, square, np.zeros((4, 4), np.uint8))
    with pytest.raises(TypeError, match="uint8"):
        rvxcv.erode_bits(bits.astype("uint16"), 32, square)


def of_72_pixels(bitwise):
    """Without the option ``inside``: the sides in memory of bytes have a test of their own."""
    def function(image, out=None):
        return bitwise(image, 72, rvxcv.ellipse(5, 4), out)

    function.__name__ = bitwise.__name__
    return function


class TestCalls(CallChecks):
    calls = [Call(of_72_pixels(bitwise), picture((21, 9))) for bitwise, _ in FUNCTIONS.values()]
