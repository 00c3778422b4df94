// Bilinear samples of an image at eight real positions, which may lie anywhere. With the whole parts ix, iy of a
// position, a and b what is left of it, and I the image,
//
//     t(j) = fma(a, I(ix + 1, j) - I(ix, j), I(ix, j))
//     value = fma(b, t(iy + 1) - t(iy), t(iy))
//
// in floats; where a is 0 the right neighbour does not count, where b is 0 the lower one does not. So that nothing
// outside the image is read in its last column, a sample there is taken from the pair before it, with a = 1: its value
// is the right one. Rows likewise.
#pragma once

#include "kernel/plane.h"
#include "kernel/vec.h"

#include <algorithm>
#include <cmath>

namespace rvxcv {

template <int channels> struct SampledPairs { F32x8 left[channels], right[channels]; };

namespace detail {

// One axis of an image: where samples lie inside, and the last pixel that has a neighbour (0 when there is only one).
struct SampledAxis {
    F32x8 end;
    I32x8 lastPair;

    explicit SampledAxis(std::int32_t length) {
        // The largest float that is not beyond the last pixel.
        auto last = static_cast<float>(length - 1);
        if (static_cast<std::int64_t>(last) > length - 1) {
            last = std::nextafter(last, 0.0f);
        }
        end = splat(last);
        lastPair = splat(std::max(length - 2, 0));
    }
    RVX_INLINE Mask32x8 inside(F32x8 position) const { return inRange(position, splat(0.0f), end); }
};

} // namespace detail

// Joins neighbours a part of the way from the first to the second. Integers are exact at both ends by themselves.
template <class T> RVX_INLINE F32x8 joinedSamples(F32x8 part, F32x8 first, F32x8 second) {
    const F32x8 value = fma(part, sub(second, first), first);
    if constexpr (std::is_floating_point_v<T>) {
        return select(equal(part, splat(0.0f)), first, select(equal(part, splat(1.0f)), second, value));
    } else {
        return value;
    }
}

template <class T, int channels> class SampledImage {
public:
    SampledImage(Plane<const T> plane, RoiSize size)
        : plane_(plane), size_(size), columns_(size.width), rows_(size.height) {}

    // A whole group of pixels is read at once, which a narrower image does not have.
    static constexpr int narrowest = sizeof(T) == 1 ? (channels == 1 ? 4 : 3) : 2;
    bool wide() const { return size_.width >= narrowest; }
    // Whether every byte is within the reach of 32-bit offsets.
    bool near() const { return plane_.step * (size_.height - 1) + size_.width * pixelBytes <= INT32_MAX; }

    // Values of all channels; 0 where the position is outside. Places is what reaches all bytes of the image, or void
    // for an image that is not wide.
    template <class Places> RVX_INLINE void at(F32x8 x, F32x8 y, F32x8 (&value)[channels]) const {
        const Mask32x8 inside = both(columns_.inside(x), rows_.inside(y));
        if (laneBits(inside) == 0) {
            for (F32x8 &v : value) {
                v = splat(0.0f);
            }
            return;
        }
        x = keep(inside, x);
        y = keep(inside, y);
        const I32x8 column = min(truncate(x), columns_.lastPair), row = min(truncate(y), rows_.lastPair);
        const F32x8 a = sub(x, toF32(column)), b = sub(y, toF32(row));
        SampledPairs<channels> upper, lower;
        pairs<Places>(row, column, size_.height > 1 ? plane_.step : 0, upper, lower);
        for (int c = 0; c < channels; ++c) {
            value[c] = keep(inside, joinedSamples<T>(b, joinedSamples<T>(a, upper.left[c], upper.right[c]),
                                                     joinedSamples<T>(a, lower.left[c], lower.right[c])));
        }
    }

private:
    static constexpr std::int64_t pixelBytes = channels * static_cast<std::int64_t>(sizeof(T));

    // The pixels at eight places and their right neighbours, in the places' rows and in those `below` bytes further.
    template <class Places>
    RVX_INLINE void pairs(I32x8 row, I32x8 column, std::int64_t below, SampledPairs<channels> &upper,
                          SampledPairs<channels> &lower) const {
        if constexpr (std::is_void_v<Places>) {
            onePixelEach(row, column, below, upper, lower);
        } else if constexpr (sizeof(T) == 1) {
            // More bytes are read than a pair has; in the last columns those before it.
            const I32x8 bytes = mulLow(column, splat(std::int32_t{channels}));
            const I32x8 from = min(bytes, splat(size_.width * channels - (channels == 1 ? 4 : 8)));
            const I32x8 skip = mulLow(sub(bytes, from), splat(8));
            const Places places(row, plane_.step, from);
            bytePairs(places, plane_.base, skip, upper);
            bytePairs(places, byteOffset(plane_.base, below), skip, lower);
        } else {
            const Places places(row, plane_.step, mulLow(column, splat(static_cast<std::int32_t>(pixelBytes))));
            wordPairs(places, plane_.base, upper);
            wordPairs(places, byteOffset(plane_.base, below), lower);
        }
    }

    template <class Places>
    static RVX_INLINE void bytePairs(const Places &places, const T *base, I32x8 skip, SampledPairs<channels> &pair) {
        if constexpr (channels == 1) {
            const I32x8 bits = shiftRightEach(places.gather32(base), skip);
            pair.left[0] = byteOf<0>(bits);
            pair.right[0] = byteOf<1>(bits);
        } else {
            F32x8 low, high;
            places.gather64(base, &low, &high);
            shiftRightEach64(&low, &high, skip);
            const I32x8 first = asInt(evenInLane(low, high)), second = asInt(oddInLane(low, high));
            pair.left[0] = byteOf<0>(first);
            pair.left[1] = byteOf<1>(first);
            pair.left[2] = byteOf<2>(first);
            pair.right[0] = byteOf<3>(first);
            pair.right[1] = byteOf<0>(second);
            pair.right[2] = byteOf<1>(second);
        }
    }

    template <class Places>
    static RVX_INLINE void wordPairs(const Places &places, const T *base, SampledPairs<channels> &pair) {
        F32x8 low, high;
        if constexpr (sizeof(T) == 2 && channels == 1) {
            const I32x8 both = places.gather32(base);
            pair.left[0] = halfOf<0>(both);
            pair.right[0] = halfOf<1>(both);
        } else if constexpr (sizeof(T) == 2) {
            const I32x8 start = places.gather32(base);
            places.gather64(base + 2, &low, &high);
            const I32x8 middle = asInt(evenInLane(low, high)), end = asInt(oddInLane(low, high));
            pair.left[0] = halfOf<0>(start);
            pair.left[1] = halfOf<1>(start);
            pair.left[2] = halfOf<0>(middle);
            pair.right[0] = halfOf<1>(middle);
            pair.right[1] = halfOf<0>(end);
            pair.right[2] = halfOf<1>(end);
        } else {
            F32x8 values[2 * channels];
            for (int i = 0; i < channels; ++i) {
                places.gather64(base + 2 * i, &low, &high);
                values[2 * i] = evenInLane(low, high);
                values[2 * i + 1] = oddInLane(low, high);
            }
            for (int c = 0; c < channels; ++c) {
                pair.left[c] = values[c];
                pair.right[c] = values[channels + c];
            }
        }
    }

    template <int i> static RVX_INLINE F32x8 byteOf(I32x8 a) {
        return toF32(bitAnd(shiftRightBits<8 * i>(a), splat(0xff)));
    }
    template <int i> static RVX_INLINE F32x8 halfOf(I32x8 a) {
        return toF32(i == 0 ? lowHalves(a) : shiftRightBits<16>(a));
    }

    // For images of a few columns.
    RVX_INLINE void onePixelEach(I32x8 row, I32x8 column, std::int64_t below, SampledPairs<channels> &upper,
                                 SampledPairs<channels> &lower) const {
        alignas(32) std::int32_t rows[8], columns[8];
        alignas(32) float values[4 * channels][8];
        store(rows, row);
        store(columns, column);
        const std::ptrdiff_t right = size_.width > 1 ? channels : 0;
        for (int i = 0; i < 8; ++i) {
            const T *above = plane_.row(rows[i]) + std::ptrdiff_t{columns[i]} * channels;
            const T *beneath = byteOffset(above, below);
            for (int c = 0; c < channels; ++c) {
                values[4 * c][i] = static_cast<float>(loadScalar(above + c));
                values[4 * c + 1][i] = static_cast<float>(loadScalar(above + right + c));
                values[4 * c + 2][i] = static_cast<float>(loadScalar(beneath + c));
                values[4 * c + 3][i] = static_cast<float>(loadScalar(beneath + right + c));
            }
        }
        for (int c = 0; c < channels; ++c) {
            upper.left[c] = load<F32x8>(values[4 * c]);
            upper.right[c] = load<F32x8>(values[4 * c + 1]);
            lower.left[c] = load<F32x8>(values[4 * c + 2]);
            lower.right[c] = load<F32x8>(values[4 * c + 3]);
        }
    }

    Plane<const T> plane_;
    RoiSize size_;
    detail::SampledAxis columns_, rows_;
};

} // namespace rvxcv
