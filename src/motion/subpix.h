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

namespace detail {

RVX_INLINE void storeSample(float *dst, F32x8 value, Full span) { store(dst, value, span); }
RVX_INLINE void storeSample(float *dst, F32x8 value, Part span) { store(dst, value, span); }

// `rows` rows of samples at a time: the columns of a source row are joined once for the samples above and below it.
template <class S, class D, bool right, bool below, int rows> struct SampleRows {
    static constexpr bool rereads = false; // an image and its samples do not overlap
    Plane<const S> src;
    Plane<D> dst;
    F32x8 a, b;

    template <class Span> RVX_INLINE F32x8 joined(int y, std::ptrdiff_t x, Span span) const {
        const S *const row = src.row(y) + x;
        const F32x8 left = loadF32(row, span);
        if constexpr (right) {
            return fma(a, sub(loadF32(row + 1, span), left), left);
        } else {
            return left;
        }
    }
    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        F32x8 upper = joined(0, x, span);
        for (int y = 0; y < rows; ++y) {
            if constexpr (below) {
                const F32x8 lower = joined(y + 1, x, span);
                storeSample(dst.row(y) + x, fma(b, sub(lower, upper), upper), span);
                upper = lower;
            } else {
                storeSample(dst.row(y) + x, y == 0 ? upper : joined(y, x, span), span);
            }
        }
    }
};

template <class S, class D, bool right, bool below>
void sampleRows(Plane<const S> src, Plane<D> dst, std::int64_t columns, std::int64_t rows, float a, float b) {
    constexpr int block = 4;
    std::int64_t y = 0;
    const auto from = [&] { return Plane<const S>{src.row(y), src.step}; };
    const auto to = [&] { return Plane<D>{dst.row(y), dst.step}; };
    for (; y + block <= rows; y += block) {
        walkRow<8, Tail::overlap>(columns, SampleRows<S, D, right, below, block>{from(), to(), splat(a), splat(b)});
    }
    for (; y < rows; ++y) {
        walkRow<8, Tail::overlap>(columns, SampleRows<S, D, right, below, 1>{from(), to(), splat(a), splat(b)});
    }
}

} // namespace detail

// columns x rows samples; src is at the pixel of the first one.
template <class S, class D>
void samplePatch(Plane<const S> src, Plane<D> dst, std::int64_t columns, std::int64_t rows, float a, float b) {
    if (a > 0.0f) {
        b > 0.0f ? detail::sampleRows<S, D, true, true>(src, dst, columns, rows, a, b)
                 : detail::sampleRows<S, D, true, false>(src, dst, columns, rows, a, b);
    } else {
        b > 0.0f ? detail::sampleRows<S, D, false, true>(src, dst, columns, rows, a, b)
                 : detail::sampleRows<S, D, false, false>(src, dst, columns, rows, a, b);
    }
}

} // namespace rvxcv
