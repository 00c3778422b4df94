// Blocks of 8 x 8 elements and of 8 x 6, between rows in memory and one vector per column.
#pragma once

#include "kernel/vec/memory.h"
#include "kernel/vec/types.h"

namespace rvxcv {

// columns[k] holds element k of every row.
RVX_INLINE void loadTransposed(const float *const (&rows)[8], F32x8 (&columns)[8]) {
    for (int half = 0; half < 2; ++half) {
        __m256 r[4];
        for (int i = 0; i < 4; ++i) {
            r[i] = _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(rows[i] + 4 * half)),
                                        _mm_loadu_ps(rows[i + 4] + 4 * half), 1);
        }
        const __m256 a = _mm256_unpacklo_ps(r[0], r[1]), b = _mm256_unpackhi_ps(r[0], r[1]);
        const __m256 c = _mm256_unpacklo_ps(r[2], r[3]), d = _mm256_unpackhi_ps(r[2], r[3]);
        columns[4 * half] = {_mm256_shuffle_ps(a, c, 0x44)};
        columns[4 * half + 1] = {_mm256_shuffle_ps(a, c, 0xee)};
        columns[4 * half + 2] = {_mm256_shuffle_ps(b, d, 0x44)};
        columns[4 * half + 3] = {_mm256_shuffle_ps(b, d, 0xee)};
    }
}

RVX_INLINE void storeTransposed(float *const (&rows)[8], const F32x8 (&columns)[8]) {
    for (int half = 0; half < 2; ++half) {
        const F32x8 *const k = columns + 4 * half;
        const __m256 a = _mm256_unpacklo_ps(k[0].v, k[1].v), b = _mm256_unpackhi_ps(k[0].v, k[1].v);
        const __m256 c = _mm256_unpacklo_ps(k[2].v, k[3].v), d = _mm256_unpackhi_ps(k[2].v, k[3].v);
        const __m256 r[4] = {_mm256_shuffle_ps(a, c, 0x44), _mm256_shuffle_ps(a, c, 0xee),
                             _mm256_shuffle_ps(b, d, 0x44), _mm256_shuffle_ps(b, d, 0xee)};
        for (int i = 0; i < 4; ++i) {
            _mm_storeu_ps(rows[i] + 4 * half, _mm256_castps256_ps128(r[i]));
            _mm_storeu_ps(rows[i + 4] + 4 * half, _mm256_extractf128_ps(r[i], 1));
        }
    }
}

// The value where the byte is not zero, else 0.
RVX_INLINE void loadTransposed(const std::uint8_t *const (&rows)[8], F32x8 value, F32x8 (&columns)[8]) {
    __m128i r[8];
    for (int i = 0; i < 8; ++i) {
        std::uint64_t bytes;
        std::memcpy(&bytes, rows[i], 8);
        r[i] = _mm_cvtsi64_si128(static_cast<long long>(bytes));
    }
    const __m128i a = _mm_unpacklo_epi8(r[0], r[1]), b = _mm_unpacklo_epi8(r[2], r[3]);
    const __m128i c = _mm_unpacklo_epi8(r[4], r[5]), d = _mm_unpacklo_epi8(r[6], r[7]);
    const __m128i low[2] = {_mm_unpacklo_epi16(a, b), _mm_unpackhi_epi16(a, b)};
    const __m128i high[2] = {_mm_unpacklo_epi16(c, d), _mm_unpackhi_epi16(c, d)};
    for (int i = 0; i < 4; ++i) {
        const __m128i pair =
            i % 2 == 0 ? _mm_unpacklo_epi32(low[i / 2], high[i / 2]) : _mm_unpackhi_epi32(low[i / 2], high[i / 2]);
        const __m128i zeros = _mm_cmpeq_epi8(pair, _mm_setzero_si128());
        const __m256i first = _mm256_cvtepi8_epi32(zeros), second = _mm256_cvtepi8_epi32(_mm_srli_si128(zeros, 8));
        columns[2 * i] = {_mm256_andnot_ps(_mm256_castsi256_ps(first), value.v)};
        columns[2 * i + 1] = {_mm256_andnot_ps(_mm256_castsi256_ps(second), value.v)};
    }
}

namespace detail {
// The lanes of six vectors in turn: element 6 * i + k of the result is lane i of the k-th. Pairs of neighbours move as
// one; halves[0..5] hold their 16-byte pieces 0 and 6, 1 and 7, and so on.
RVX_INLINE void interleaveSixes(const F32x8 (&a)[6], F32x8 (&result)[6]) {
    __m256d low[3], high[3]; // of each pair of vectors the lanes 0, 1, 4, 5 and the lanes 2, 3, 6, 7
    for (int i = 0; i < 3; ++i) {
        low[i] = _mm256_castps_pd(_mm256_unpacklo_ps(a[2 * i].v, a[2 * i + 1].v));
        high[i] = _mm256_castps_pd(_mm256_unpackhi_ps(a[2 * i].v, a[2 * i + 1].v));
    }
    const __m256d halves[6] = {_mm256_unpacklo_pd(low[0], low[1]),       _mm256_shuffle_pd(low[2], low[0], 0xa),
                               _mm256_unpackhi_pd(low[1], low[2]),       _mm256_unpacklo_pd(high[0], high[1]),
                               _mm256_shuffle_pd(high[2], high[0], 0xa), _mm256_unpackhi_pd(high[1], high[2])};
    for (int i = 0; i < 3; ++i) {
        const __m256d first = halves[2 * i], second = halves[2 * i + 1];
        result[i] = {_mm256_castpd_ps(_mm256_permute2f128_pd(first, second, 0x20))};
        result[i + 3] = {_mm256_castpd_ps(_mm256_permute2f128_pd(first, second, 0x31))};
    }
}
} // namespace detail

// Six floats of every lane of the span, one from each vector; nothing else is written.
RVX_INLINE void storeSixes(float *p, const F32x8 (&a)[6], Full) {
    F32x8 rows[6];
    detail::interleaveSixes(a, rows);
    for (int i = 0; i < 6; ++i) {
        store(p + 8 * i, rows[i]);
    }
}
RVX_INLINE void storeSixes(float *p, const F32x8 (&a)[6], Part part) {
    F32x8 rows[6];
    detail::interleaveSixes(a, rows);
    for (int i = 0, elements = 6 * part.n; elements > 0; ++i, elements -= 8) {
        if (elements >= 8) {
            store(p + 8 * i, rows[i]);
        } else {
            store(p + 8 * i, rows[i], Part{elements});
        }
    }
}

// The lanes one further on, the last one in lane 0; and with lane 0 taken from b.
RVX_INLINE F32x8 rotated(F32x8 a) { return {_mm256_permutevar8x32_ps(a.v, _mm256_setr_epi32(7, 0, 1, 2, 3, 4, 5, 6))}; }
RVX_INLINE F32x8 withFirst(F32x8 a, F32x8 b) { return {_mm256_blend_ps(a.v, b.v, 1)}; }

} // namespace rvxcv
