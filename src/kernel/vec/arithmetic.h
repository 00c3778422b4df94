// One value in all lanes; sums, products, extrema. Integer lanes wrap unless the name says that they saturate.
#pragma once

#include "kernel/vec/types.h"

namespace rvxcv {

RVX_INLINE F32x8 splat(float a) { return {_mm256_set1_ps(a)}; }
RVX_INLINE I32x8 splat(std::int32_t a) { return {{_mm256_set1_epi32(a)}}; }
RVX_INLINE I16x16 splat(std::int16_t a) { return {{_mm256_set1_epi16(a)}}; }
RVX_INLINE U16x16 splat(std::uint16_t a) { return {{_mm256_set1_epi16(static_cast<short>(a))}}; }
RVX_INLINE U8x32 splat(std::uint8_t a) { return {{_mm256_set1_epi8(static_cast<char>(a))}}; }
RVX_INLINE I8x32 splat(std::int8_t a) { return {{_mm256_set1_epi8(a)}}; }
// Two neighbouring bytes in every 16-bit lane, -128..127: one operand of mulAddPairsSaturated.
template <class V> RVX_INLINE V splatBytePair(int even, int odd) {
    return {{_mm256_set1_epi16(static_cast<short>(odd * 256 + (even & 0xff)))}};
}
// Two neighbouring 16-bit values in every 32-bit lane: one operand of mulAddPairs.
RVX_INLINE I16x16 splatPair(std::int16_t even, std::int16_t odd) {
    const auto pair =
        static_cast<std::uint32_t>(static_cast<std::uint16_t>(odd)) << 16 | static_cast<std::uint16_t>(even);
    return {{_mm256_set1_epi32(static_cast<std::int32_t>(pair))}};
}
RVX_INLINE I16x16 splatPair(const std::int16_t *p) {
    return {{_mm256_set1_epi32(loadScalar(reinterpret_cast<const std::int32_t *>(p)))}};
}

RVX_INLINE F32x8 add(F32x8 a, F32x8 b) { return {_mm256_add_ps(a.v, b.v)}; }
RVX_INLINE F32x8 sub(F32x8 a, F32x8 b) { return {_mm256_sub_ps(a.v, b.v)}; }
RVX_INLINE F32x8 mul(F32x8 a, F32x8 b) { return {_mm256_mul_ps(a.v, b.v)}; }
RVX_INLINE F32x8 div(F32x8 a, F32x8 b) { return {_mm256_div_ps(a.v, b.v)}; }
// a * b + c, rounded once.
RVX_INLINE F32x8 fma(F32x8 a, F32x8 b, F32x8 c) { return {_mm256_fmadd_ps(a.v, b.v, c.v)}; }
RVX_INLINE F32x8 sqrt(F32x8 a) { return {_mm256_sqrt_ps(a.v)}; }
RVX_INLINE F32x8 copySign(F32x8 magnitude, F32x8 sign) {
    return {_mm256_or_ps(magnitude.v, _mm256_and_ps(_mm256_set1_ps(-0.0f), sign.v))};
}
RVX_INLINE F32x8 negated(F32x8 a) { return {_mm256_xor_ps(a.v, _mm256_set1_ps(-0.0f))}; }
RVX_INLINE F32x8 abs(F32x8 a) { return {_mm256_andnot_ps(_mm256_set1_ps(-0.0f), a.v)}; }
// a < b ? a : b and a > b ? a : b, as the instructions do it: the second operand when one is NaN.
RVX_INLINE F32x8 min(F32x8 a, F32x8 b) { return {_mm256_min_ps(a.v, b.v)}; }
RVX_INLINE F32x8 max(F32x8 a, F32x8 b) { return {_mm256_max_ps(a.v, b.v)}; }

RVX_INLINE I32x8 add(I32x8 a, I32x8 b) { return {{_mm256_add_epi32(a.v, b.v)}}; }
RVX_INLINE I32x8 sub(I32x8 a, I32x8 b) { return {{_mm256_sub_epi32(a.v, b.v)}}; }
RVX_INLINE I32x8 mulLow(I32x8 a, I32x8 b) { return {{_mm256_mullo_epi32(a.v, b.v)}}; }
template <int bits> RVX_INLINE I32x8 shiftRight(I32x8 a) { return {{_mm256_srai_epi32(a.v, bits)}}; }
template <int bits> RVX_INLINE I32x8 shiftRightLogical(I32x8 a) { return {{_mm256_srli_epi32(a.v, bits)}}; }
template <int bits> RVX_INLINE I32x8 shiftLeft(I32x8 a) { return {{_mm256_slli_epi32(a.v, bits)}}; }
RVX_INLINE I32x8 abs(I32x8 a) { return {{_mm256_abs_epi32(a.v)}}; }
RVX_INLINE I32x8 min(I32x8 a, I32x8 b) { return {{_mm256_min_epi32(a.v, b.v)}}; }
RVX_INLINE I32x8 max(I32x8 a, I32x8 b) { return {{_mm256_max_epi32(a.v, b.v)}}; }

// Additions and subtractions of 16-bit lanes wrap unless the name says that they saturate.
RVX_INLINE I16x16 add(I16x16 a, I16x16 b) { return {{_mm256_add_epi16(a.v, b.v)}}; }
RVX_INLINE I16x16 sub(I16x16 a, I16x16 b) { return {{_mm256_sub_epi16(a.v, b.v)}}; }
RVX_INLINE I16x16 subSaturated(I16x16 a, I16x16 b) { return {{_mm256_subs_epi16(a.v, b.v)}}; }
RVX_INLINE I16x16 mulLow(I16x16 a, I16x16 b) { return {{_mm256_mullo_epi16(a.v, b.v)}}; }
template <int bits> RVX_INLINE I16x16 shiftLeft(I16x16 a) { return {{_mm256_slli_epi16(a.v, bits)}}; }
template <int bits> RVX_INLINE I16x16 shiftRight(I16x16 a) { return {{_mm256_srai_epi16(a.v, bits)}}; }
RVX_INLINE I16x16 min(I16x16 a, I16x16 b) { return {{_mm256_min_epi16(a.v, b.v)}}; }
RVX_INLINE I16x16 max(I16x16 a, I16x16 b) { return {{_mm256_max_epi16(a.v, b.v)}}; }

// The high halves of the 32-bit products.
RVX_INLINE U16x16 mulHigh(U16x16 a, U16x16 b) { return {{_mm256_mulhi_epu16(a.v, b.v)}}; }
// Shifts by a count known at run time (below 16): arithmetic for signed lanes, logical for unsigned ones.
RVX_INLINE I16x16 shiftRight(I16x16 a, int bits) { return {{_mm256_sra_epi16(a.v, _mm_cvtsi32_si128(bits))}}; }
RVX_INLINE U16x16 shiftRight(U16x16 a, int bits) { return {{_mm256_srl_epi16(a.v, _mm_cvtsi32_si128(bits))}}; }
// a * b / 2^15, rounded to nearest, ties up.
RVX_INLINE I16x16 mulRounded(I16x16 a, I16x16 b) { return {{_mm256_mulhrs_epi16(a.v, b.v)}}; }
RVX_INLINE I16x16 abs(I16x16 a) { return {{_mm256_abs_epi16(a.v)}}; }
// a times the sign of b: -1, 0 or 1.
RVX_INLINE I16x16 mulSign(I16x16 a, I16x16 b) { return {{_mm256_sign_epi16(a.v, b.v)}}; }
RVX_INLINE I16x16 bitAnd(I16x16 a, I16x16 b) { return {{_mm256_and_si256(a.v, b.v)}}; }
RVX_INLINE I16x16 bitOr(I16x16 a, I16x16 b) { return {{_mm256_or_si256(a.v, b.v)}}; }
RVX_INLINE I16x16 bitXor(I16x16 a, I16x16 b) { return {{_mm256_xor_si256(a.v, b.v)}}; }
RVX_INLINE I16x16 bitAndNot(I16x16 a, I16x16 b) { return {{_mm256_andnot_si256(b.v, a.v)}}; }
template <int bits> RVX_INLINE U16x16 shiftRight(U16x16 a) { return {{_mm256_srli_epi16(a.v, bits)}}; }
RVX_INLINE U16x16 add(U16x16 a, U16x16 b) { return {{_mm256_add_epi16(a.v, b.v)}}; }
RVX_INLINE U16x16 sub(U16x16 a, U16x16 b) { return {{_mm256_sub_epi16(a.v, b.v)}}; }
RVX_INLINE U16x16 addSaturated(U16x16 a, U16x16 b) { return {{_mm256_adds_epu16(a.v, b.v)}}; }
RVX_INLINE U16x16 mulLow(U16x16 a, U16x16 b) { return {{_mm256_mullo_epi16(a.v, b.v)}}; }
RVX_INLINE U16x16 subSaturated(U16x16 a, U16x16 b) { return {{_mm256_subs_epu16(a.v, b.v)}}; }
RVX_INLINE U16x16 min(U16x16 a, U16x16 b) { return {{_mm256_min_epu16(a.v, b.v)}}; }
RVX_INLINE U16x16 max(U16x16 a, U16x16 b) { return {{_mm256_max_epu16(a.v, b.v)}}; }

RVX_INLINE U8x32 addSaturated(U8x32 a, U8x32 b) { return {{_mm256_adds_epu8(a.v, b.v)}}; }
RVX_INLINE U8x32 subSaturated(U8x32 a, U8x32 b) { return {{_mm256_subs_epu8(a.v, b.v)}}; }
RVX_INLINE U8x32 min(U8x32 a, U8x32 b) { return {{_mm256_min_epu8(a.v, b.v)}}; }
RVX_INLINE U8x32 max(U8x32 a, U8x32 b) { return {{_mm256_max_epu8(a.v, b.v)}}; }

// Of -128, too: 128.
RVX_INLINE U8x32 abs(I8x32 a) { return {{_mm256_abs_epi8(a.v)}}; }
// |a - b|: one of the two saturated differences is zero.
RVX_INLINE U8x32 absDiff(U8x32 a, U8x32 b) {
    return {{_mm256_or_si256(_mm256_subs_epu8(a.v, b.v), _mm256_subs_epu8(b.v, a.v))}};
}
RVX_INLINE U16x16 absDiff(U16x16 a, U16x16 b) {
    return {{_mm256_or_si256(_mm256_subs_epu16(a.v, b.v), _mm256_subs_epu16(b.v, a.v))}};
}
RVX_INLINE U8x32 absDiff(I8x32 a, I8x32 b) {
    return {{_mm256_sub_epi8(_mm256_max_epi8(a.v, b.v), _mm256_min_epi8(a.v, b.v))}};
}
RVX_INLINE F32x8 absDiff(F32x8 a, F32x8 b) { return abs(sub(a, b)); }

// Sums of products of neighbouring 16-bit lanes, as 32-bit lanes: a[2i] * b[2i] + a[2i + 1] * b[2i + 1].
RVX_INLINE I32x8 mulAddPairs(I16x16 a, I16x16 b) { return {{_mm256_madd_epi16(a.v, b.v)}}; }
// The same of neighbouring bytes, as 16-bit lanes.
RVX_INLINE I16x16 mulAddPairsSaturated(U8x32 a, I8x32 b) { return {{_mm256_maddubs_epi16(a.v, b.v)}}; }

// The same of unsigned bytes and small signed ones, as 16-bit lanes that saturate.
RVX_INLINE I16x16 mulAddPairs(U8x32 a, I8x32 b) { return {{_mm256_maddubs_epi16(a.v, b.v)}}; }

RVX_INLINE F64x4 splat(double a) { return {_mm256_set1_pd(a)}; }
RVX_INLINE F64x4 add(F64x4 a, F64x4 b) { return {_mm256_add_pd(a.v, b.v)}; }
RVX_INLINE F64x4 sub(F64x4 a, F64x4 b) { return {_mm256_sub_pd(a.v, b.v)}; }
RVX_INLINE F64x4 mul(F64x4 a, F64x4 b) { return {_mm256_mul_pd(a.v, b.v)}; }
RVX_INLINE F64x4 sqrt(F64x4 a) { return {_mm256_sqrt_pd(a.v)}; }
RVX_INLINE F64x4 fma(F64x4 a, F64x4 b, F64x4 c) { return {_mm256_fmadd_pd(a.v, b.v, c.v)}; }
// (lane 0 + lane 2) + (lane 1 + lane 3).
RVX_INLINE double laneSum(F64x4 a) {
    const __m128d pairs = _mm_add_pd(_mm256_castpd256_pd128(a.v), _mm256_extractf128_pd(a.v, 1));
    return _mm_cvtsd_f64(_mm_add_sd(pairs, _mm_unpackhi_pd(pairs, pairs)));
}

} // namespace rvxcv
