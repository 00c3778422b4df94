// Running sums along the lanes of a vector, and lanes exchanged between vectors.
#pragma once

#include "kernel/vec/arithmetic.h"

namespace rvxcv {

template <int lane> RVX_INLINE I32x8 splatLane(I32x8 a) {
    return {{_mm256_permutevar8x32_epi32(a.v, _mm256_set1_epi32(lane))}};
}
template <int lane> RVX_INLINE F32x8 splatLane(F32x8 a) {
    return {_mm256_permutevar8x32_ps(a.v, _mm256_set1_epi32(lane))};
}

// Lane i of each half is the sum of that half's lanes 0..i. Every step adds the sums to themselves, twice as far on.
RVX_INLINE I16x16 prefixSumsInHalves(I16x16 a) {
    a = add(a, {{_mm256_slli_si256(a.v, 2)}});
    a = add(a, {{_mm256_slli_si256(a.v, 4)}});
    return add(a, {{_mm256_slli_si256(a.v, 8)}});
}

// Lane i is the sum of the lanes 0..i.
RVX_INLINE I32x8 prefixSums(I32x8 a) {
    a = add(a, {{_mm256_slli_si256(a.v, 4)}});
    a = add(a, {{_mm256_slli_si256(a.v, 8)}});
    const __m256i halfSums = _mm256_shuffle_epi32(a.v, 0xff);
    return add(a, {{_mm256_permute2x128_si256(halfSums, halfSums, 0x08)}}); // zeros, then the low half's sum
}

// Neighbouring bytes, unsigned: their sums, and the second one of each two.
RVX_INLINE I16x16 addPairs(U8x32 a) { return {{_mm256_maddubs_epi16(a.v, _mm256_set1_epi8(1))}}; }
RVX_INLINE I16x16 oddBytes(U8x32 a) { return {{_mm256_srli_epi16(a.v, 8)}}; }

// Lanes of a and b in turn, within each half: its two low ones, its two high ones.
RVX_INLINE I32x8 interleaveInHalvesLow(I32x8 a, I32x8 b) { return {{_mm256_unpacklo_epi32(a.v, b.v)}}; }
RVX_INLINE I32x8 interleaveInHalvesHigh(I32x8 a, I32x8 b) { return {{_mm256_unpackhi_epi32(a.v, b.v)}}; }

// Eight vectors as the rows of a square, mirrored at its diagonal.
RVX_INLINE void transpose(F32x8 (&row)[8]) {
    __m256 pair[8], four[8];
    for (int i = 0; i < 8; i += 2) {
        pair[i] = _mm256_unpacklo_ps(row[i].v, row[i + 1].v);
        pair[i + 1] = _mm256_unpackhi_ps(row[i].v, row[i + 1].v);
    }
    for (int i = 0; i < 8; i += 4) {
        four[i] = _mm256_shuffle_ps(pair[i], pair[i + 2], 0x44);
        four[i + 1] = _mm256_shuffle_ps(pair[i], pair[i + 2], 0xee);
        four[i + 2] = _mm256_shuffle_ps(pair[i + 1], pair[i + 3], 0x44);
        four[i + 3] = _mm256_shuffle_ps(pair[i + 1], pair[i + 3], 0xee);
    }
    for (int i = 0; i < 4; ++i) {
        row[i].v = _mm256_permute2f128_ps(four[i], four[i + 4], 0x20);
        row[i + 4].v = _mm256_permute2f128_ps(four[i], four[i + 4], 0x31);
    }
}

} // namespace rvxcv
