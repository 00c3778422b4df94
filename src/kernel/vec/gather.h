// Elements from eight places at once. A place is an offset in bytes from one base: of 32 bits where all of an image
// lies within 2^31 bytes, else a row number and an offset within the row, joined in 64 bits.
#pragma once

#include "kernel/vec/types.h"

namespace rvxcv {

// Lane i of the 32-bit forms belongs to place i. The 64-bit forms give two vectors, for the places 0, 1, 4, 5 and for
// 2, 3, 6, 7, so that evenInLane and oddInLane of the two give low and high halves in order.
struct NearPlaces {
    __m256i bytes;

    NearPlaces(I32x8 row, std::int64_t step, I32x8 bytesInRow)
        : bytes(_mm256_add_epi32(_mm256_mullo_epi32(row.v, _mm256_set1_epi32(static_cast<std::int32_t>(step))),
                                 bytesInRow.v)) {}

    RVX_INLINE I32x8 gather32(const void *base) const {
        return {{_mm256_i32gather_epi32(static_cast<const int *>(base), bytes, 1)}};
    }
    RVX_INLINE void gather64(const void *base, F32x8 *low, F32x8 *high) const {
        const auto *p = static_cast<const long long *>(base);
        const __m256i sorted = _mm256_permute4x64_epi64(bytes, 0xd8);
        low->v = _mm256_castsi256_ps(_mm256_i32gather_epi64(p, _mm256_castsi256_si128(sorted), 1));
        high->v = _mm256_castsi256_ps(_mm256_i32gather_epi64(p, _mm256_extracti128_si256(sorted, 1), 1));
    }
};

struct FarPlaces {
    __m256i low, high;

    FarPlaces(I32x8 row, std::int64_t step, I32x8 bytesInRow) {
        const __m256i steps = _mm256_set1_epi64x(step);
        const __m256i rows = _mm256_permute4x64_epi64(row.v, 0xd8);
        const __m256i inRow = _mm256_permute4x64_epi64(bytesInRow.v, 0xd8);
        low = place(_mm256_castsi256_si128(rows), steps, _mm256_castsi256_si128(inRow));
        high = place(_mm256_extracti128_si256(rows, 1), steps, _mm256_extracti128_si256(inRow, 1));
    }

    RVX_INLINE I32x8 gather32(const void *base) const {
        const auto *p = static_cast<const int *>(base);
        const __m256i sorted = _mm256_set_m128i(_mm256_i64gather_epi32(p, high, 1), _mm256_i64gather_epi32(p, low, 1));
        return {{_mm256_permute4x64_epi64(sorted, 0xd8)}};
    }
    RVX_INLINE void gather64(const void *base, F32x8 *first, F32x8 *second) const {
        const auto *p = static_cast<const long long *>(base);
        first->v = _mm256_castsi256_ps(_mm256_i64gather_epi64(p, low, 1));
        second->v = _mm256_castsi256_ps(_mm256_i64gather_epi64(p, high, 1));
    }

private:
    static RVX_INLINE __m256i place(__m128i row, __m256i step, __m128i bytesInRow) {
        return _mm256_add_epi64(_mm256_mul_epi32(_mm256_cvtepi32_epi64(row), step), _mm256_cvtepi32_epi64(bytesInRow));
    }
};

// 32-bit lanes shifted down, each by its own number of bits; and 64-bit lanes as gather64 gives them, by the numbers of
// their places in order.
RVX_INLINE I32x8 shiftRightEach(I32x8 a, I32x8 bits) { return {{_mm256_srlv_epi32(a.v, bits.v)}}; }
RVX_INLINE void shiftRightEach64(F32x8 *low, F32x8 *high, I32x8 bits) {
    const __m256i sorted = _mm256_permute4x64_epi64(bits.v, 0xd8);
    low->v = _mm256_castsi256_ps(
        _mm256_srlv_epi64(_mm256_castps_si256(low->v), _mm256_cvtepu32_epi64(_mm256_castsi256_si128(sorted))));
    high->v = _mm256_castsi256_ps(
        _mm256_srlv_epi64(_mm256_castps_si256(high->v), _mm256_cvtepu32_epi64(_mm256_extracti128_si256(sorted, 1))));
}

} // namespace rvxcv
