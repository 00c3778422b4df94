// Four doubles, where a contract asks for double precision.
#pragma once

#include "kernel/vec/memory.h"

namespace rvxcv {

struct F64x4 {
    using Element = double;
    static constexpr int lanes = 4;
    __m256d v;
};
template <> struct VectorOf<double> { using type = F64x4; };

template <class Span> RVX_INLINE F64x4 loadF64(const double *p, Span span) {
    return {_mm256_castsi256_pd(detail::raw(load<F32x8>(reinterpret_cast<const float *>(p), Span{span})))};
}

RVX_INLINE F64x4 splat(double a) { return {_mm256_set1_pd(a)}; }
RVX_INLINE F64x4 add(F64x4 a, F64x4 b) { return {_mm256_add_pd(a.v, b.v)}; }
RVX_INLINE F64x4 sub(F64x4 a, F64x4 b) { return {_mm256_sub_pd(a.v, b.v)}; }
RVX_INLINE F64x4 mul(F64x4 a, F64x4 b) { return {_mm256_mul_pd(a.v, b.v)}; }
RVX_INLINE F64x4 div(F64x4 a, F64x4 b) { return {_mm256_div_pd(a.v, b.v)}; }
// a * b + c, rounded once.
RVX_INLINE F64x4 fma(F64x4 a, F64x4 b, F64x4 c) { return {_mm256_fmadd_pd(a.v, b.v, c.v)}; }
RVX_INLINE F64x4 sqrt(F64x4 a) { return {_mm256_sqrt_pd(a.v)}; }
// a > b ? a : b, as the instruction does it: the second operand when one is NaN.
RVX_INLINE F64x4 max(F64x4 a, F64x4 b) { return {_mm256_max_pd(a.v, b.v)}; }

} // namespace rvxcv
