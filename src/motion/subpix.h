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
struct Interval {
    std::int64_t first, last;

    bool empty() const { return last < first; }
    std::int64_t count() const { return last - first + 1; }
    Interval intersected(Interval other) const { return {std::max(first, other.first), std::min(last, other.last)}; }
    bool operator==(const Interval &) const = default;
};

// A patch's position along one axis: of its first sample, in pixels.
struct SubpixAxis {
    std::int64_t index;
    float fraction; // 0..1; 1 where a smaller fraction is rounded to it

    bool readsNext() const { return fraction > 0.0f; }

    // The samples of a patch of `size` whose pixels are all among the image's 0..length - 1.
    Interval inside(std::int64_t size, std::int64_t length) const {
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

template <class Span> RVX_INLINE void storeSample(float *dst, F32x8 value, Span span) { store(dst, value, span); }
template <class D, class Span> RVX_INLINE void storeSample(D *dst, F32x8 value, Span span) {
    storeNarrow(dst, roundToEven(value), span);
}

namespace detail {

// Some rows of samples, down in every block of columns, so that the columns of a source row are joined once for the
// samples above and below it.
template <class S, class D, bool right, bool below, class Rule> struct SampleRows {
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
        F32x8 upper = joined(in, across, span);
        for (std::int64_t y = 1;; ++y) {
            in = byteOffset(in, srcStep);
            if constexpr (below) {
                const F32x8 lower = joined(in, across, span);
                storeSample(out, rule(between(down, upper, lower)), span);
                if (y == rows) {
                    return;
                }
                upper = lower;
            } else {
                storeSample(out, rule(upper), span);
                if (y == rows) {
                    return;
                }
                upper = joined(in, across, span);
            }
            out = byteOffset(out, dstStep);
        }
    }
};

template <class S, class D, bool right, bool below, class Rule>
void sampleRows(Plane<const S> src, Plane<D> dst, std::int64_t columns, std::int64_t rows, float a, float b,
                Rule rule) {
    // A small patch in one go; of a wide one few rows at a time, which the processor can follow.
    const std::int64_t block = columns <= 64 ? rows : 4;
    for (std::int64_t y = 0; y < rows; y += block) {
        walkRow<8, Tail::overlap>(columns, SampleRows<S, D, right, below, Rule>{src.row(y), dst.row(y), src.step,
                                                                                dst.step, std::min(rows - y, block),
                                                                                splat(a), splat(b), rule});
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
