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

// Some rows of samples, down in every block of columns, so that the columns of a source row are joined once for the
// samples above and below it.
template <class S, class D, bool right, bool below> struct SampleRows {
    static constexpr bool rereads = false; // an image and its samples do not overlap
    const S *src;
    D *dst;
    std::int64_t srcStep, dstStep, rows;
    F32x8 a, b;

    template <class Span> static RVX_INLINE F32x8 joined(const S *row, F32x8 a, Span span) {
        const F32x8 left = loadF32(row, span);
        if constexpr (right) {
            return fma(a, sub(loadF32(row + 1, span), left), left);
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
                storeSample(out, fma(down, sub(lower, upper), upper), span);
                if (y == rows) {
                    return;
                }
                upper = lower;
            } else {
                storeSample(out, upper, span);
                if (y == rows) {
                    return;
                }
                upper = joined(in, across, span);
            }
            out = byteOffset(out, dstStep);
        }
    }
};

template <class S, class D, bool right, bool below>
void sampleRows(Plane<const S> src, Plane<D> dst, std::int64_t columns, std::int64_t rows, float a, float b) {
    // A small patch in one go; of a wide one few rows at a time, which the processor can follow.
    const std::int64_t block = columns <= 64 ? rows : 4;
    for (std::int64_t y = 0; y < rows; y += block) {
        walkRow<8, Tail::overlap>(columns,
                                  SampleRows<S, D, right, below>{src.row(y), dst.row(y), src.step, dst.step,
                                                                 std::min(rows - y, block), splat(a), splat(b)});
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
