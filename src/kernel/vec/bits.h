// Bytes as bits: logic, shifts, and vectors at any bit of an address.
#pragma once

#include "kernel/vec/types.h"

namespace rvxcv {

RVX_INLINE U8x32 add(U8x32 a, U8x32 b) { return {{_mm256_add_epi8(a.v, b.v)}}; }
RVX_INLINE U8x32 bitAnd(U8x32 a, U8x32 b) { return {{_mm256_and_si256(a.v, b.v)}}; }
RVX_INLINE U8x32 bitAndNot(U8x32 a, U8x32 b) { return {{_mm256_andnot_si256(b.v, a.v)}}; }
RVX_INLINE U8x32 bitOr(U8x32 a, U8x32 b) { return {{_mm256_or_si256(a.v, b.v)}}; }
RVX_INLINE U8x32 bitXor(U8x32 a, U8x32 b) { return {{_mm256_xor_si256(a.v, b.v)}}; }
RVX_INLINE U16x16 bitAnd(U16x16 a, U16x16 b) { return {{_mm256_and_si256(a.v, b.v)}}; }
RVX_INLINE U16x16 bitAndNot(U16x16 a, U16x16 b) { return {{_mm256_andnot_si256(b.v, a.v)}}; }
RVX_INLINE U16x16 bitOr(U16x16 a, U16x16 b) { return {{_mm256_or_si256(a.v, b.v)}}; }
RVX_INLINE U16x16 bitXor(U16x16 a, U16x16 b) { return {{_mm256_xor_si256(a.v, b.v)}}; }
RVX_INLINE I32x8 bitAnd(I32x8 a, I32x8 b) { return {{_mm256_and_si256(a.v, b.v)}}; }
RVX_INLINE I32x8 bitAndNot(I32x8 a, I32x8 b) { return {{_mm256_andnot_si256(b.v, a.v)}}; }
RVX_INLINE I32x8 bitOr(I32x8 a, I32x8 b) { return {{_mm256_or_si256(a.v, b.v)}}; }
RVX_INLINE bool anyBit(U8x32 a) { return _mm256_testz_si256(a.v, a.v) == 0; }
RVX_INLINE bool anyBit(U16x16 a) { return _mm256_testz_si256(a.v, a.v) == 0; }
// Bit i is the high bit of byte i.
RVX_INLINE std::uint32_t laneBits(U8x32 a) { return static_cast<std::uint32_t>(_mm256_movemask_epi8(a.v)); }
// 256 bits from `bits` bits (0..7) behind the first bit of an address on; reads 33 bytes.
class BitShift {
public:
    BitShift() = default;
    explicit BitShift(int bits) : right_(_mm256_set1_epi64x(bits)), left_(_mm256_set1_epi64x(8 - bits)) {}

    RVX_INLINE U8x32 load(const std::uint8_t *p) const {
        const __m256i low = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(p));
        const __m256i high = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(p + 1));
        return {{_mm256_or_si256(_mm256_srlv_epi64(low, right_), _mm256_sllv_epi64(high, left_))}};
    }

private:
    __m256i right_, left_;
};

// 64-bit lanes shifted, towards later pixels (left) and earlier ones (right) of a bit image; zeros come in.
RVX_INLINE U8x32 shiftBitsLeft(U8x32 a, int bits) { return {{_mm256_slli_epi64(a.v, bits)}}; }
RVX_INLINE U8x32 shiftBitsRight(U8x32 a, int bits) { return {{_mm256_srli_epi64(a.v, bits)}}; }
// The lanes of a one further on, behind the last lane of b; and one back, before the first lane of b.
RVX_INLINE U8x32 afterLast(U8x32 b, U8x32 a) {
    return {{_mm256_alignr_epi8(a.v, _mm256_permute2x128_si256(b.v, a.v, 0x21), 15)}};
}
RVX_INLINE U8x32 beforeFirst(U8x32 a, U8x32 b) {
    return {{_mm256_alignr_epi8(_mm256_permute2x128_si256(a.v, b.v, 0x21), a.v, 1)}};
}
// The bits of b where mask has them, else those of a.
RVX_INLINE U8x32 mergeBits(U8x32 a, U8x32 b, U8x32 mask) {
    return {{_mm256_or_si256(_mm256_andnot_si256(mask.v, a.v), _mm256_and_si256(mask.v, b.v))}};
}

// Fields of 32-bit lanes: the bits of a mask, and those from a place on, moved down.
RVX_INLINE I32x8 maskedBits(I32x8 a, std::uint32_t mask) {
    return {{_mm256_and_si256(a.v, _mm256_set1_epi32(static_cast<std::int32_t>(mask)))}};
}
RVX_INLINE I32x8 upperBits(I32x8 a, int from) { return {{_mm256_srl_epi32(a.v, _mm_cvtsi32_si128(from))}}; }

// The bits of a at the set bits of a mask, moved together at the low end; and the low bits of a, moved to the set bits.
RVX_INLINE std::uint64_t gatherBits(std::uint64_t a, std::uint64_t mask) { return _pext_u64(a, mask); }
RVX_INLINE std::uint64_t scatterBits(std::uint64_t a, std::uint64_t mask) { return _pdep_u64(a, mask); }

} // namespace rvxcv
