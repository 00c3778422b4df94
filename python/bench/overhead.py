"""What the friendly layer costs: small images beside scipy and numpy, large ones beside the bare C call.

Prints a table. Every time is the shortest of many; calls that are compared take turns. All calls write into `out`, and
the bare call gets pointers, sizes and scratch memory that are made once.
"""
import timeit

import numpy as np
from scipy import ndimage

import rvxcv
from rvxcv import raw
from rvxcv.raw import ffi

FOOTPRINT = np.ones((3, 3), np.uint8)
TYPES = {"uint8": "uint8_t[]", "int16": "int16_t[]", "int32": "int32_t[]", "float32": "float[]"}


def pointer(array):
    return ffi.from_buffer(TYPES[array.dtype.name], array)


def layout(array):
    return pointer(array), array.strides[0]


def scratch(query, *arguments):
    size = ffi.new("int32_t *")
    query(*arguments, size)
    return ffi.new("uint8_t[]", size[0])


class Row:
    """A function on an image of a type: friendly, the same by numpy or scipy, and what the bare C call takes."""

    def __init__(self, name, dtype, out_dtype, friendly, other, bare):
        self.name, self.dtype, self.out_dtype = name, dtype, out_dtype
        self.friendly, self.other, self.bare = friendly, other, bare

    def arrays(self, height, width):
        random = np.random.default_rng(1)
        margin = 1 if self.name == "integral_image" else 0
        return (random.integers(0, 256, (height, width)).astype(self.dtype),
                np.empty((height + margin, width + margin), self.out_dtype))


def gaussian_record(roi):
    sizes = ffi.new("int32_t[2]")
    raw.rvxiFilterGaussianGetBufferSize(roi, 9, raw.PixelType32f, 1, sizes, sizes + 1)
    memory, buffer = ffi.new("uint8_t[]", sizes[0]), ffi.new("uint8_t[]", sizes[1])
    spec = ffi.cast("GaussianSpec *", memory)
    raw.rvxiFilterGaussianInit(roi, 9, raw.BorderReplicate, raw.PixelType32f, 1, spec, buffer, 1)
    return memory, spec, buffer


def erosion_record(width):
    sizes = ffi.new("int32_t[2]")
    raw.rvxiMorphologyBorderGetSize_8u_C1R(width, (3, 3), sizes, sizes + 1)
    memory, buffer = ffi.new("uint8_t[]", sizes[0]), ffi.new("uint8_t[]", sizes[1])
    spec = ffi.cast("MorphSpec *", memory)
    raw.rvxiMorphologyBorderInit_8u_C1R(width, FOOTPRINT.tobytes(), (3, 3), spec, buffer)
    return memory, spec, buffer


# The functions of `bare` make a call without arguments, from image, out and their (width, height).
def bare_absdiff(image, out, roi):
    return lambda a=layout(image), o=layout(out): raw.rvxiAbsDiff_8u_C1R(*a, *a, *o, roi)


def bare_sobel(image, out, roi):
    buffer = scratch(raw.rvxiFilterSobelNegVertGetBufferSize_8u16s_C1R, roi, raw.Mask3x3)
    arguments = *layout(image), *layout(out), roi, raw.Mask3x3, raw.BorderReplicate, 0, buffer
    return lambda: raw.rvxiFilterSobelNegVertBorder_8u16s_C1R(*arguments)


def bare_mean(image, out, roi):
    buffer = scratch(raw.rvxiFilterLowpassGetBufferSize_8u_C1R, roi, raw.Mask5x5)
    arguments = *layout(image), *layout(out), roi, raw.Mask5x5, raw.BorderReplicate, 0, buffer
    return lambda: raw.rvxiFilterLowpassBorder_8u_C1R(*arguments)


def bare_gaussian(image, out, roi):
    memory, spec, buffer = gaussian_record(roi)
    arguments = *layout(image), *layout(out), roi, 0, spec, buffer
    return lambda kept=memory: raw.rvxiFilterGaussianBorder_32f_C1R(*arguments)


def bare_erosion(image, out, roi):
    memory, spec, buffer = erosion_record(roi[0])
    arguments = *layout(image), *layout(out), roi, raw.BorderReplicate, 0, spec, buffer
    return lambda kept=memory: raw.rvxiErodeBorder_8u_C1R(*arguments)


def bare_integral(image, out, roi):
    arguments = *layout(image), *layout(out), roi, 0
    return lambda: raw.rvxiIntegral_8u32s_C1R(*arguments)


def bare_statistics(image, out, roi):
    values = ffi.new("double[2]")
    arguments = *layout(image), roi, values, values + 1
    return lambda: raw.rvxiMean_StdDev_8u_C1R(*arguments)


ROWS = [
    Row("absdiff", "uint8", "uint8", lambda image, out: rvxcv.absdiff(image, image, out),
        lambda image, out: np.subtract(image, image, out), bare_absdiff),
    Row("sobel", "uint8", "int16", lambda image, out: rvxcv.sobel(image, 1, out),
        lambda image, out: ndimage.sobel(image, 1, out, mode="nearest"), bare_sobel),
    Row("uniform_filter 5x5", "uint8", "uint8", lambda image, out: rvxcv.uniform_filter(image, 5, out),
        lambda image, out: ndimage.uniform_filter(image, 5, out, mode="nearest"), bare_mean),
    Row("gaussian, 9 taps", "float32", "float32", lambda image, out: rvxcv.gaussian(image, 1, out, size=9),
        lambda image, out: ndimage.gaussian_filter(image, 1, 0, out, mode="nearest"), bare_gaussian),
    Row("erode 3x3", "uint8", "uint8", lambda image, out: rvxcv.erode(image, FOOTPRINT, out),
        lambda image, out: ndimage.grey_erosion(image, footprint=FOOTPRINT, output=out, mode="nearest"), bare_erosion),
    Row("integral_image", "uint8", "int32", rvxcv.integral_image,
        lambda image, out: np.cumsum(np.cumsum(image, 0, np.int32), 1, out=out[1:, 1:]), bare_integral),
    Row("mean_std", "uint8", "uint8", lambda image, out: rvxcv.mean_std(image),
        lambda image, out: (image.mean(), image.std()), bare_statistics),
]


def shortest(calls, number, repeat):
    """The shortest time of each call, in seconds; they take turns."""
    times = [[timeit.timeit(call, number=number) / number for call in calls] for _ in range(repeat)]
    return [min(column) for column in zip(*times)]


def main():
    print(f"{'':20}{'16 x 16, us':^28}{'1920 x 1080, us':^36}")
    print(f"{'':20}{'friendly':>10}{'numpy, scipy':>14}    {'friendly':>10}{'C call':>10}{'ratio':>8}")
    for row in ROWS:
        image, out = row.arrays(16, 16)
        small = shortest([lambda: row.friendly(image, out), lambda: row.other(image, out)], 1000, 15)
        image, out = row.arrays(1080, 1920)
        bare = row.bare(image, out, (1920, 1080))
        assert bare() in (None, 0)
        large = shortest([lambda: row.friendly(image, out), bare], 1, 200)
        print(f"{row.name:20}{small[0] * 1e6:10.2f}{small[1] * 1e6:14.2f}    "
              f"{large[0] * 1e6:10.0f}{large[1] * 1e6:10.0f}{large[0] / large[1]:8.3f}")


if __name__ == "__main__":
    main()
