// Bilinear sampling at real coordinates: where a patch lies, which part of it an image covers, and the samples.
//
// A patch around a centre is a grid of unit steps, so one fraction holds for all of its columns and one for all of its
// rows. With the fractions a and b, the image I, and i, j the whole part of a sample's position,
//
//     t(j) = fma(a, I(i + 1, j) - I(i, j), I(i, j))
//     value = fma(b, t(j + 1) - t(j), t(j))
//
// in floats. Where a is 0 the right neighbour does not count and is not read, where b is 0 the lower one is not.
#pragma once

#include "kernel/plane.h"
#include "kernel/rows.h"

#include "rvxcv/types.h"

#include <algorithm>
#include <cmath>

namespace rvxcv {

// First and last index of a part; none when last < first.
struct IndexRange {
    std::int64_t first, last;

    bool empty() const { return last < first; }
    std::int64_t count() const { return last - first + 1; }
    IndexRange intersected(IndexRange other) const {
        return {std::max(first, other.first), std::min(last, other.last)};
    }
    bool operator==(const IndexRange &) const = default;
};

// A patch's position along one axis: of its first sample, in pixels.
struct SubpixAxis {
    std::int64_t index;
    float fraction; // 0..1; 1 where a smaller fraction is rounded to it

    bool readsNext() const { return fraction > 0.0f; }

    // The samples of a patch of `size` whose pixels are all among the image's 0..length - 1.
    IndexRange inside(std::int64_t size, std::int64_t length) const {
        const std::int64_t end = length - (readsNext() ? 1 : 0);
        return {std::max<std::int64_t>(-index, 0), std::min(size, end - index) - 1};
    }
};

// Coordinates beyond this (or NaN) are in no image; up to it every conversion is exact enough and fits.
constexpr double farthestCentre = 1e9;
inline bool isCentre(double coordinate) { return std::fabs(coordinate) <= farthestCentre; }

// Of a patch of `size` samples around a centre.
inline SubpixAxis subpixAxis(double centre, std::int64_t size) {
    const double origin = centre - 0.5 * static_cast<double>(size - 1), whole = std::floor(origin);
    return {static_cast<std::int64_t>(whole), static_cast<float>(origin - whole)};
}

// A part of the way from the first to the second.
RVX_INLINE F32x8 between(F32x8 part, F32x8 first, F32x8 second) { return fma(part, sub(second, first), first); }

// What becomes of a sample before it is stored, in a narrow type to nearest even.
struct AsItIs {
    RVX_INLINE F32x8 operator()(F32x8 sample) const { return sample; }
};
struct Scaled {
    F32x8 factor;
    RVX_INLINE F32x8 operator()(F32x8 sample) const { return mul(sample, factor); }
};

template <class Span> RVX_INLINE void storeSamples(float *dst, const F32x8 (&v)[1], Span span) {
    store(dst, v[0], span);
}
template <class D, class Span> RVX_INLINE void storeSamples(D *dst, const F32x8 (&v)[1], Span span) {
    storeNarrow(dst, roundToEven(v[0]), span);
}
// As many as fill a vector of a narrow type.
RVX_INLINE void storeSamples(std::uint16_t *dst, const F32x8 (&v)[2], Full) {
    store(dst, narrowSaturatedUnsigned(roundToEven(v[0]), roundToEven(v[1])));
}
RVX_INLINE void storeSamples(std::uint8_t *dst, const F32x8 (&v)[4], Full) {
    const I16x16 low = narrowInLane(roundToEven(v[0]), roundToEven(v[1]));
    const I16x16 high = narrowInLane(roundToEven(v[2]), roundToEven(v[3]));
    const I32x8 inOrder = fromPackedBytes(0x0703060205010400);
    store(dst, U8x32{{permuted(I32x8{{narrowUnsignedInLane(low, high).v}}, inOrder).v}});
}

namespace detail {

// Some rows of samples, down in every block of columns, so that the columns of a source row are joined once for the
// samples above and below it. A block is a vector of samples, or several.
template <class S, class D, bool right, bool below, class Rule, int vectors = 1> struct SampleRows {
    static constexpr bool rereads = false; // an image and its samples do not overlap
    const S *src;
    D *dst;
    std::int64_t srcStep, dstStep, rows;
    F32x8 a, b;
    Rule rule;

    template <class Span> static RVX_INLINE F32x8 joined(const S *row, F32x8 a, Span span) {
        const F32x8 left = loadF32(row, span);
        if constexpr (right) {
            return between(a, left, loadF32(row + 1, span));
        } else {
            return left;
        }
    }
    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        const S *in = src + x;
        D *out = dst + x;
        const F32x8 across = a, down = b;
        F32x8 upper[vectors], sample[vectors];
        const auto takeUpper = [&] {
#pragma GCC unroll 4
            for (int i = 0; i < vectors; ++i) {
                upper[i] = joined(in + 8 * i, across, span);
            }
        };
        takeUpper();
        for (std::int64_t y = 1;; ++y) {
            in = byteOffset(in, srcStep);
#pragma GCC unroll 4
            for (int i = 0; i < vectors; ++i) {
                if constexpr (below) {
                    const F32x8 lower = joined(in + 8 * i, across, span);
                    sample[i] = rule(between(down, upper[i], lower));
                    upper[i] = lower;
                } else {
                    sample[i] = rule(upper[i]);
                }
            }
            storeSamples(out, sample, span);
            if (y == rows) {
                return;
            }
            if constexpr (!below) {
                takeUpper();
            }
            out = byteOffset(out, dstStep);
        }
    }
};

// A small patch goes through in one go; a wide one a few rows at a time, which the processor can follow.
constexpr std::int64_t smallWidth = 64, rowsOfWide = 8;

template <class S, class D, bool right, bool below, class Rule>
void sampleRows(Plane<const S> src, Plane<D> dst, std::int64_t columns, std::int64_t rows, float a, float b,
                Rule rule) {
    constexpr int lanes = 32 / static_cast<int>(sizeof(D));
    const bool wide = columns > smallWidth;
    const std::int64_t block = wide ? rowsOfWide : rows;
    const auto rowsFrom = [&]<int vectors>(std::int64_t y, std::integral_constant<int, vectors>) {
        return SampleRows<S, D, right, below, Rule, vectors>{
            src.row(y), dst.row(y), src.step, dst.step, std::min(rows - y, block), splat(a), splat(b), rule};
    };
    for (std::int64_t y = 0; y < rows; y += block) {
        if (lanes == 8 || !wide) {
            walkRow<8, Tail::overlap>(columns, rowsFrom(y, std::integral_constant<int, 1>{}));
            continue;
        }
        const auto sample = rowsFrom(y, std::integral_constant<int, lanes / 8>{});
        for (std::int64_t x = 0; x < columns; x += lanes) {
            sample(std::min(x, columns - lanes), Full{});
        }
    }
}

} // namespace detail

// Calls function(whether the right neighbour counts, whether the lower one does), both as constants.
template <class Function> void withNeighbours(float a, float b, const Function &function) {
    if (a > 0.0f) {
        b > 0.0f ? function(std::true_type{}, std::true_type{}) : function(std::true_type{}, std::false_type{});
    } else {
        b > 0.0f ? function(std::false_type{}, std::true_type{}) : function(std::false_type{}, std::false_type{});
    }
}

// columns x rows samples; src is at the pixel of the first one.
template <class S, class D, class Rule = AsItIs>
void samplePatch(Plane<const S> src, Plane<D> dst, std::int64_t columns, std::int64_t rows, float a, float b,
                 Rule rule = {}) {
    withNeighbours(a, b, [&]<class Right, class Below>(Right, Below) {
        detail::sampleRows<S, D, Right::value, Below::value>(src, dst, columns, rows, a, b, rule);
    });
}

} // namespace rvxcv
