// Double precision, where a contract asks for it. Eight doubles are two vectors that act as one, so that they stand
// beside eight floats or eight integers in a kernel.
#pragma once

#include "kernel/vec/arithmetic.h"
#include "kernel/vec/convert.h"
#include "kernel/vec/memory.h"

namespace rvxcv {

RVX_INLINE F64x4 div(F64x4 a, F64x4 b) { return {_mm256_div_pd(a.v, b.v)}; }
// a > b ? a : b, as the instruction does it: the second operand when one is NaN.
RVX_INLINE F64x4 max(F64x4 a, F64x4 b) { return {_mm256_max_pd(a.v, b.v)}; }

struct F64x8 {
    using Element = double;
    static constexpr int lanes = 8;
    F64x4 low, high;
};

RVX_INLINE F64x8 splatEight(double a) { return {splat(a), splat(a)}; }
RVX_INLINE F64x8 add(F64x8 a, F64x8 b) { return {add(a.low, b.low), add(a.high, b.high)}; }
RVX_INLINE F64x8 sub(F64x8 a, F64x8 b) { return {sub(a.low, b.low), sub(a.high, b.high)}; }
RVX_INLINE F64x8 mul(F64x8 a, F64x8 b) { return {mul(a.low, b.low), mul(a.high, b.high)}; }
RVX_INLINE F64x8 div(F64x8 a, F64x8 b) { return {div(a.low, b.low), div(a.high, b.high)}; }
RVX_INLINE F64x8 max(F64x8 a, F64x8 b) { return {max(a.low, b.low), max(a.high, b.high)}; }
RVX_INLINE F64x8 sqrt(F64x8 a) { return {sqrt(a.low), sqrt(a.high)}; }
RVX_INLINE F64x8 negated(F64x8 a) {
    const __m256d sign = _mm256_set1_pd(-0.0);
    return {{_mm256_xor_pd(a.low.v, sign)}, {_mm256_xor_pd(a.high.v, sign)}};
}
// a * b + c, rounded once.
RVX_INLINE F64x8 fma(F64x8 a, F64x8 b, F64x8 c) { return {fma(a.low, b.low, c.low), fma(a.high, b.high, c.high)}; }

// Exact.
RVX_INLINE F64x4 lowToF64(I32x8 a) { return {_mm256_cvtepi32_pd(_mm256_castsi256_si128(a.v))}; }
RVX_INLINE F64x4 highToF64(I32x8 a) { return {_mm256_cvtepi32_pd(_mm256_extracti128_si256(a.v, 1))}; }
RVX_INLINE F64x8 toF64(I32x8 a) { return {lowToF64(a), highToF64(a)}; }
RVX_INLINE F64x8 toF64(F32x8 a) { return {widenLow(a), widenHigh(a)}; }
// Eight floats in memory as doubles.
RVX_INLINE F64x8 loadF64(const float *p) {
    return {{_mm256_cvtps_pd(_mm_loadu_ps(p))}, {_mm256_cvtps_pd(_mm_loadu_ps(p + 4))}};
}
RVX_INLINE F64x8 abs(F64x8 a) {
    const __m256d sign = _mm256_set1_pd(-0.0);
    return {{_mm256_andnot_pd(sign, a.low.v)}, {_mm256_andnot_pd(sign, a.high.v)}};
}
// Rounded to nearest even.
RVX_INLINE F32x8 toF32(F64x8 a) { return {_mm256_set_m128(_mm256_cvtpd_ps(a.high.v), _mm256_cvtpd_ps(a.low.v))}; }
// Toward zero; what does not fit, and NaN, gives the smallest integer.
RVX_INLINE I32x8 truncate(F64x8 a) {
    return {{_mm256_set_m128i(_mm256_cvttpd_epi32(a.high.v), _mm256_cvttpd_epi32(a.low.v))}};
}

// Eight elements of any 32- or 64-bit type: one vector, or two.
template <class T> struct EightOf { using type = Vec<T>; };
template <> struct EightOf<double> { using type = F64x8; };
template <class T> using Eight = typename EightOf<std::remove_const_t<T>>::type;

template <class T, class Span> RVX_INLINE Eight<T> loadEight(const T *p, Span span) { return load<Vec<T>>(p, span); }
RVX_INLINE F64x8 loadEight(const double *p, Full) { return {load<F64x4>(p), load<F64x4>(p + 4)}; }
RVX_INLINE F64x8 loadEight(const double *p, Part part) {
    if (part.n <= 4) {
        return {load<F64x4>(p, part), splat(0.0)};
    }
    return {load<F64x4>(p), load<F64x4>(p + 4, Part{part.n - 4})};
}

template <class T, class V, class Span> RVX_INLINE void storeEight(T *p, V a, Span span) { store(p, a, span); }
RVX_INLINE void storeEight(double *p, F64x8 a, Full) {
    store(p, a.low);
    store(p + 4, a.high);
}
RVX_INLINE void storeEight(double *p, F64x8 a, Part part) {
    if (part.n <= 4) {
        store(p, a.low, part);
        return;
    }
    store(p, a.low);
    store(p + 4, a.high, Part{part.n - 4});
}

// Eight integers as any of these types.
template <class T> RVX_INLINE Eight<T> eightOf(I32x8 a) {
    if constexpr (std::is_same_v<T, double>) {
        return toF64(a);
    } else if constexpr (std::is_same_v<T, float>) {
        return toF32(a);
    } else {
        return a;
    }
}
// The same of the low halves of two vectors, and of the high ones.
template <class T> RVX_INLINE Eight<T> lowHalves(I32x8 a, I32x8 b) {
    if constexpr (std::is_same_v<T, double>) {
        return {lowToF64(a), lowToF64(b)};
    } else {
        return eightOf<T>({{_mm256_permute2x128_si256(a.v, b.v, 0x20)}});
    }
}
template <class T> RVX_INLINE Eight<T> highHalves(I32x8 a, I32x8 b) {
    if constexpr (std::is_same_v<T, double>) {
        return {highToF64(a), highToF64(b)};
    } else {
        return eightOf<T>({{_mm256_permute2x128_si256(a.v, b.v, 0x31)}});
    }
}
template <class T> RVX_INLINE Eight<T> splatEightOf(T value) {
    if constexpr (std::is_same_v<T, double>) {
        return splatEight(value);
    } else {
        return splat(value);
    }
}

} // namespace rvxcv
