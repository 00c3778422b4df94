// Sums in wider lanes, and what all lanes of a vector come to.
#pragma once

#include "kernel/vec/bits.h"
#include "kernel/vec/convert.h"

namespace rvxcv {

RVX_INLINE I64x4 add(I64x4 a, I64x4 b) { return {{_mm256_add_epi64(a.v, b.v)}}; }
// The sums of eight bytes each.
RVX_INLINE I64x4 byteSums(U8x32 a) { return {{_mm256_sad_epu8(a.v, _mm256_setzero_si256())}}; }
// Two 32-bit lanes each: neighbours as unsigned numbers, lanes i and i + 4 as signed ones.
RVX_INLINE I64x4 pairSumsUnsigned(I32x8 a) {
    return {{_mm256_add_epi64(_mm256_and_si256(a.v, _mm256_set1_epi64x(0xffffffff)), _mm256_srli_epi64(a.v, 32))}};
}
RVX_INLINE I64x4 pairSums(I32x8 a) {
    return {{_mm256_add_epi64(_mm256_cvtepi32_epi64(_mm256_castsi256_si128(a.v)),
                              _mm256_cvtepi32_epi64(_mm256_extracti128_si256(a.v, 1)))}};
}
RVX_INLINE std::int64_t total(I64x4 a) {
    const __m128i pair = _mm_add_epi64(_mm256_castsi256_si128(a.v), _mm256_extracti128_si256(a.v, 1));
    return _mm_cvtsi128_si64(_mm_add_epi64(pair, _mm_unpackhi_epi64(pair, pair)));
}

namespace detail {
template <int bytes, class V, class Operation> RVX_INLINE V joinedInLanes(V a, const Operation &operation) {
    a = operation(a, shiftedInLane<bytes>(a, a));
    if constexpr (bytes > static_cast<int>(sizeof(typename V::Element))) {
        return joinedInLanes<bytes / 2>(a, operation);
    } else {
        return a;
    }
}
} // namespace detail

// All lanes joined by an operation whose order does not matter, such as a minimum.
template <class V, class Operation> RVX_INLINE typename V::Element joinedLanes(V a, const Operation &operation) {
    a = detail::joinedInLanes<8>(operation(a, highThenLow(a, a)), operation);
    typename V::Element first;
    const std::int32_t bits = _mm256_cvtsi256_si32(detail::raw(a));
    std::memcpy(&first, &bits, sizeof first);
    return first;
}

// Four vectors, each summed over its lanes: lane i takes lane i + 4, then i + 2, then i + 1.
RVX_INLINE void foldedSums(F32x8 a, F32x8 b, F32x8 c, F32x8 d, float *sums) {
    const auto halves = [](F32x8 v) { return _mm_add_ps(_mm256_castps256_ps128(v.v), _mm256_extractf128_ps(v.v, 1)); };
    const auto quarters = [](__m128 v, __m128 w) { return _mm_add_ps(_mm_movelh_ps(v, w), _mm_movehl_ps(w, v)); };
    const __m128 ab = quarters(halves(a), halves(b)), cd = quarters(halves(c), halves(d));
    _mm_storeu_ps(sums, _mm_add_ps(_mm_shuffle_ps(ab, cd, 0x88), _mm_shuffle_ps(ab, cd, 0xdd)));
}

} // namespace rvxcv
