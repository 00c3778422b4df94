// Comparisons, the masks that they give, and what is chosen by them.
#pragma once

#include "kernel/vec/arithmetic.h"
#include "kernel/vec/types.h"

namespace rvxcv {

// Eight 32-bit lanes, all bits set or all clear. Comparisons with a NaN clear the lane.
struct Mask32x8 {
    __m256 v;
};

RVX_INLINE Mask32x8 greater(F32x8 a, F32x8 b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_GT_OQ)}; }
RVX_INLINE Mask32x8 lessEqual(F32x8 a, F32x8 b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_LE_OQ)}; }
RVX_INLINE Mask32x8 equal(F32x8 a, F32x8 b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_EQ_OQ)}; }
RVX_INLINE Mask32x8 greater(I32x8 a, I32x8 b) { return {_mm256_castsi256_ps(_mm256_cmpgt_epi32(a.v, b.v))}; }
RVX_INLINE Mask32x8 equal(I32x8 a, I32x8 b) { return {_mm256_castsi256_ps(_mm256_cmpeq_epi32(a.v, b.v))}; }
RVX_INLINE Mask32x8 notEqual(F32x8 a, F32x8 b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_NEQ_UQ)}; }
RVX_INLINE Mask32x8 both(Mask32x8 a, Mask32x8 b) { return {_mm256_and_ps(a.v, b.v)}; }
RVX_INLINE Mask32x8 either(Mask32x8 a, Mask32x8 b) { return {_mm256_or_ps(a.v, b.v)}; }

RVX_INLINE F32x8 select(Mask32x8 mask, F32x8 set, F32x8 clear) { return {_mm256_blendv_ps(clear.v, set.v, mask.v)}; }
RVX_INLINE I32x8 select(Mask32x8 mask, I32x8 set, I32x8 clear) {
    return {{_mm256_blendv_epi8(clear.v, set.v, _mm256_castps_si256(mask.v))}};
}

// Bit i tells lane i; only the lanes of the span.
RVX_INLINE std::uint32_t laneBits(Mask32x8 mask, Full = {}) {
    return static_cast<std::uint32_t>(_mm256_movemask_ps(mask.v));
}
RVX_INLINE std::uint32_t laneBits(Mask32x8 mask, Part part) { return laneBits(mask) & ((1u << part.n) - 1); }

RVX_INLINE Mask32x8 greaterEqual(F32x8 a, F32x8 b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_GE_OQ)}; }
// a without the lanes of b.
RVX_INLINE Mask32x8 without(Mask32x8 a, Mask32x8 b) { return {_mm256_andnot_ps(b.v, a.v)}; }
// a with zero in the lanes of b.
RVX_INLINE F32x8 without(F32x8 a, Mask32x8 b) { return {_mm256_andnot_ps(b.v, a.v)}; }
RVX_INLINE I32x8 without(I32x8 a, Mask32x8 b) { return {{_mm256_andnot_si256(_mm256_castps_si256(b.v), a.v)}}; }
RVX_INLINE F32x8 keep(Mask32x8 mask, F32x8 a) { return {_mm256_and_ps(mask.v, a.v)}; }
RVX_INLINE F32x8 keep(Lanes lanes, F32x8 a) { return {_mm256_and_ps(_mm256_castsi256_ps(lanes.mask), a.v)}; }
RVX_INLINE F32x8 keep(Full, F32x8 a) { return a; }
RVX_INLINE I32x8 keep(Mask32x8 mask, I32x8 a) { return {{_mm256_and_si256(_mm256_castps_si256(mask.v), a.v)}}; }
// All bits of the byte or 16-bit lanes that are equal.
RVX_INLINE U8x32 equal(U8x32 a, U8x32 b) { return {{_mm256_cmpeq_epi8(a.v, b.v)}}; }
RVX_INLINE U16x16 equal(U16x16 a, U16x16 b) { return {{_mm256_cmpeq_epi16(a.v, b.v)}}; }
// Lanes whose sign bit is set: of a float, of an integer.
RVX_INLINE Mask32x8 signs(F32x8 a) { return {_mm256_castsi256_ps(_mm256_srai_epi32(_mm256_castps_si256(a.v), 31))}; }
RVX_INLINE F32x8 bitXor(F32x8 a, F32x8 b) { return {_mm256_xor_ps(a.v, b.v)}; }
RVX_INLINE F32x8 bitOr(F32x8 a, F32x8 b) { return {_mm256_or_ps(a.v, b.v)}; }

// Lanes of 16 bits, all set or all clear, as bits.
RVX_INLINE std::uint32_t laneBits(U16x16 mask) {
    const __m128i bytes = _mm_packs_epi16(_mm256_castsi256_si128(mask.v), _mm256_extracti128_si256(mask.v, 1));
    return static_cast<std::uint32_t>(_mm_movemask_epi8(bytes));
}
// The bytes of half a vector that are zero, as bits.
RVX_INLINE std::uint32_t zeroBytes(U8x16 a) {
    return static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(a.v, _mm_setzero_si128())));
}
// Lanes with low <= a <= high, where low <= high; of floats with any bounds, and never for a NaN.
RVX_INLINE U8x32 inRange(U8x32 a, U8x32 low, U8x32 high) { return equal(min(max(a, low), high), a); }
RVX_INLINE U16x16 inRange(U16x16 a, U16x16 low, U16x16 high) {
    return {{_mm256_cmpeq_epi16(min(max(a, low), high).v, a.v)}};
}
RVX_INLINE Mask32x8 inRange(I32x8 a, I32x8 low, I32x8 high) { return equal(min(max(a, low), high), a); }
RVX_INLINE Mask32x8 inRange(F32x8 a, F32x8 low, F32x8 high) { return both(greaterEqual(a, low), lessEqual(a, high)); }
// The masks of 32 lanes as bytes, in order.
RVX_INLINE U8x32 maskBytes(Mask32x8 a, Mask32x8 b, Mask32x8 c, Mask32x8 d) {
    const __m256i low = _mm256_packs_epi32(_mm256_castps_si256(a.v), _mm256_castps_si256(b.v));
    const __m256i high = _mm256_packs_epi32(_mm256_castps_si256(c.v), _mm256_castps_si256(d.v));
    const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
    return {{_mm256_permutevar8x32_epi32(_mm256_packs_epi16(low, high), order)}};
}
// The mask whose lane i is set when bit i is.
template <class V> RVX_INLINE auto maskOfBits(std::uint32_t bits) {
    const __m256i all = _mm256_set1_epi32(static_cast<std::int32_t>(bits));
    if constexpr (V::lanes == 32) {
        const __m256i byte = _mm256_setr_epi64x(0, 0x0101010101010101, 0x0202020202020202, 0x0303030303030303);
        const __m256i bit = _mm256_set1_epi64x(static_cast<std::int64_t>(0x8040201008040201));
        return U8x32{{_mm256_cmpeq_epi8(_mm256_and_si256(_mm256_shuffle_epi8(all, byte), bit), bit)}};
    } else if constexpr (V::lanes == 16) {
        const __m256i bit = _mm256_setr_epi16(1, 2, 4, 8, 16, 32, 64, 128, 256, 512, 1024, 2048, 4096, 8192, 16384,
                                              static_cast<short>(0x8000));
        const __m256i low = _mm256_set1_epi16(static_cast<short>(bits));
        return U16x16{{_mm256_cmpeq_epi16(_mm256_and_si256(low, bit), bit)}};
    } else {
        const __m256i bit = _mm256_setr_epi32(1, 2, 4, 8, 16, 32, 64, 128);
        return Mask32x8{_mm256_castsi256_ps(_mm256_cmpeq_epi32(_mm256_and_si256(all, bit), bit))};
    }
}
RVX_INLINE U8x32 select(U8x32 mask, U8x32 set, U8x32 clear) { return {{_mm256_blendv_epi8(clear.v, set.v, mask.v)}}; }
RVX_INLINE U16x16 select(U16x16 mask, U16x16 set, U16x16 clear) {
    return {{_mm256_blendv_epi8(clear.v, set.v, mask.v)}};
}

} // namespace rvxcv
