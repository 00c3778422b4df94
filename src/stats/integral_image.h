// What upright and tilted integral images share: their outputs, the checks, rows of one value, pixels as terms of sums.
#pragma once

#include "kernel/checks.h"
#include "kernel/plane.h"
#include "kernel/rows.h"

namespace rvxcv {

// One output: the image and the value that every sum includes.
template <class T> struct SumImage {
    T *dst;
    std::int32_t step;
    T val;

    Plane<T> plane() const { return {dst, step}; }
};

// The outputs have `margin` more columns than the source.
template <class S, class... T>
StatusCode checkIntegral(const S *src, std::int32_t srcStep, RoiSize roi, std::int64_t margin,
                         const SumImage<T> &...out) {
    Checks checks;
    checks.pointers(src, out.dst...).size(roi).steps(rowBytes<S>(roi.width), srcStep);
    (checks.steps(rowBytes<T>(roi.width + margin), out.step), ...);
    checks.multiples(sizeof(S), srcStep);
    (checks.multiples(sizeof(T), out.step), ...);
    return checks.status();
}

// Outputs are larger than what is computed from: the time goes into waiting for their memory, unless it is asked for in
// time. `elements` of it, a kilobyte on.
template <int elements, class T> RVX_INLINE void prefetchOutput(const T *dst) {
    for (int byte = 0; byte < elements * static_cast<int>(sizeof(T)); byte += 64) {
        prefetch(byteOffset(dst, 1024 + byte));
    }
}

template <class T> struct FillRow {
    T *dst;
    Eight<T> value;

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        storeEight(dst + x, value, span);
    }
};

template <class T> void fillRow(T *dst, std::int64_t elements, T value) {
    walkRow<8>(elements, FillRow<T>{dst, splatEightOf(value)});
}

// Eight pixels or their squares.
template <bool squared, class Span> RVX_INLINE I32x8 loadTerms(const std::uint8_t *p, Span span) {
    const I32x8 pixels = loadI32(p, span);
    if constexpr (squared) {
        const I16x16 halves{{pixels.v}}; // the odd ones are zero
        return mulAddPairs(halves, halves);
    } else {
        return pixels;
    }
}

} // namespace rvxcv
