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
    // Where the pair of a position inside begins, and what is left of the position. Both are exact, also beyond 2^24.
    RVX_INLINE F32x8 split(F32x8 position, I32x8 *pair) const {
        const I32x8 whole = truncate(position);
        *pair = min(whole, lastPair);
        return add(sub(position, toF32(whole)), toF32(sub(whole, *pair)));
    }
};

} // namespace detail

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
        I32x8 column, row;
        const F32x8 a = columns_.split(x, &column), b = rows_.split(y, &row);
        Pairs upper, lower;
        if constexpr (std::is_void_v<Places>) {
            onePixelEach(row, column, upper, lower);
        } else {
            gathered<Places>(row, column, upper, lower);
        }
        // Samples on a row or a column of pixels are rare, but for a lens that leaves everything where it is.
        if (!std::is_floating_point_v<T> || laneBits(both(inside, either(atEnd(a), atEnd(b)))) == 0) {
            join<false>(inside, a, b, upper, lower, value);
        } else {
            join<true>(inside, a, b, upper, lower, value);
        }
    }

private:
    static constexpr int pixelBytes = channels * static_cast<int>(sizeof(T));
    static constexpr int wordCount = (2 * pixelBytes + 3) / 4;

    struct Pairs {
        F32x8 left[channels], right[channels];
    };
    // The same as they lie in memory, four bytes to a word; bytes behind the pairs are of no use.
    struct Words {
        I32x8 word[wordCount];
    };

    // Neighbours joined a part of the way from the first to the second. Both ends are what they are: integers by
    // themselves, floats where they are looked at.
    static RVX_INLINE Mask32x8 atEnd(F32x8 part) { return either(equal(part, splat(0.0f)), equal(part, splat(1.0f))); }
    template <bool ends> static RVX_INLINE F32x8 joined(F32x8 part, F32x8 first, F32x8 second) {
        const F32x8 value = fma(part, sub(second, first), first);
        if constexpr (ends) {
            return select(equal(part, splat(0.0f)), first, select(equal(part, splat(1.0f)), second, value));
        } else {
            return value;
        }
    }
    template <bool ends>
    static RVX_INLINE void join(Mask32x8 inside, F32x8 a, F32x8 b, const Pairs &upper, const Pairs &lower,
                                F32x8 (&value)[channels]) {
        for (int c = 0; c < channels; ++c) {
            const F32x8 above = joined<ends>(a, upper.left[c], upper.right[c]);
            const F32x8 beneath = joined<ends>(a, lower.left[c], lower.right[c]);
            value[c] = keep(inside, joined<ends>(b, above, beneath));
        }
    }

    std::int64_t below() const { return size_.height > 1 ? plane_.step : 0; }
    static RVX_INLINE I32x8 bytesOf(I32x8 column) {
        if constexpr (pixelBytes == 3) {
            return add(column, add(column, column));
        } else if constexpr (pixelBytes == 6 || pixelBytes == 12) {
            return shiftLeft<pixelBytes / 6>(add(column, add(column, column)));
        } else {
            return shiftLeft<pixelBytes / 2>(column); // 1, 2, 4
        }
    }

    template <class Places> RVX_INLINE void gathered(I32x8 row, I32x8 column, Pairs &upper, Pairs &lower) const {
        Words above, beneath;
        const I32x8 bytes = bytesOf(column);
        const T *const next = byteOffset(plane_.base, below());
        if constexpr (sizeof(T) == 1) {
            // More bytes are read than a pair has; in the last columns those before it.
            const I32x8 from = min(bytes, splat(size_.width * channels - (channels == 1 ? 4 : 8)));
            const I32x8 skip = shiftLeft<3>(sub(bytes, from));
            const Places places(row, plane_.step, from);
            gatheredBytes(places, plane_.base, skip, above);
            gatheredBytes(places, next, skip, beneath);
        } else {
            const Places places(row, plane_.step, bytes);
            gatheredWords(places, plane_.base, above);
            gatheredWords(places, next, beneath);
        }
        upper = pairs(above);
        lower = pairs(beneath);
    }

    template <class Places>
    static RVX_INLINE void gatheredBytes(const Places &places, const T *base, I32x8 skip, Words &words) {
        if constexpr (channels == 1) {
            words.word[0] = shiftRightEach(places.gather32(base), skip);
        } else {
            F32x8 low, high;
            places.gather64(base, &low, &high);
            shiftRightEach64(&low, &high, skip);
            words.word[0] = asInt(evenInLane(low, high));
            words.word[1] = asInt(oddInLane(low, high));
        }
    }

    // Two words at a time from the end; an odd first one alone.
    template <class Places> static RVX_INLINE void gatheredWords(const Places &places, const T *base, Words &words) {
        if constexpr (wordCount % 2 != 0) {
            words.word[0] = places.gather32(base);
        }
        for (int i = wordCount % 2; i < wordCount; i += 2) {
            F32x8 low, high;
            places.gather64(byteOffset(base, 4 * i), &low, &high);
            words.word[i] = asInt(evenInLane(low, high));
            words.word[i + 1] = asInt(oddInLane(low, high));
        }
    }

    template <int element> static RVX_INLINE F32x8 elementOf(const Words &words) {
        constexpr int bit = 8 * element * static_cast<int>(sizeof(T)) % 32;
        const I32x8 word = words.word[element * sizeof(T) / 4];
        if constexpr (sizeof(T) == 4) {
            return asFloat(word);
        } else if constexpr (sizeof(T) == 2) {
            return toF32(bit == 0 ? lowHalves(word) : shiftRightLogical<bit>(word));
        } else {
            return toF32(bit == 24 ? shiftRightLogical<bit>(word) : bitAnd(shiftRightLogical<bit>(word), splat(0xff)));
        }
    }
    static RVX_INLINE Pairs pairs(const Words &words) {
        return [&]<int... c>(std::integer_sequence<int, c...>) {
            return Pairs{{elementOf<c>(words)...}, {elementOf<channels + c>(words)...}};
        }
        (std::make_integer_sequence<int, channels>{});
    }

    // For images of a few columns.
    RVX_INLINE void onePixelEach(I32x8 row, I32x8 column, Pairs &upper, Pairs &lower) const {
        alignas(32) std::int32_t rows[8], columns[8];
        alignas(32) float values[4 * channels][8];
        store(rows, row);
        store(columns, column);
        const std::ptrdiff_t right = size_.width > 1 ? channels : 0;
        for (int i = 0; i < 8; ++i) {
            const T *above = plane_.row(rows[i]) + std::ptrdiff_t{columns[i]} * channels;
            const T *beneath = byteOffset(above, below());
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
