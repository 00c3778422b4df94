// Conversions between lane types, narrowing in order, and lanes that move.
#pragma once

#include "kernel/vec/arithmetic.h"
#include "kernel/vec/memory.h"

namespace rvxcv {

// The same bits.
RVX_INLINE F32x8 asFloat(I32x8 a) { return {_mm256_castsi256_ps(a.v)}; }
RVX_INLINE I32x8 asInt(F32x8 a) { return {{_mm256_castps_si256(a.v)}}; }
RVX_INLINE F32x8 toF32(I32x8 a) { return {_mm256_cvtepi32_ps(a.v)}; }
// Only for values inside the int32 range: clamp in float first.
RVX_INLINE I32x8 roundToEven(F32x8 a) { return {{_mm256_cvtps_epi32(a.v)}}; }
RVX_INLINE I32x8 truncate(F32x8 a) { return {{_mm256_cvttps_epi32(a.v)}}; }
// The same as floats: whole numbers.
RVX_INLINE F32x8 wholeNearest(F32x8 a) { return {_mm256_round_ps(a.v, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC)}; }
RVX_INLINE F32x8 wholeTowardZero(F32x8 a) { return {_mm256_round_ps(a.v, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC)}; }

// 0, 1, 2 ... 7.
RVX_INLINE I32x8 laneNumbers() { return {{_mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7)}}; }
RVX_INLINE I32x8 widenLow(I16x16 a) { return {{_mm256_cvtepi16_epi32(_mm256_castsi256_si128(a.v))}}; }
RVX_INLINE I32x8 widenHigh(I16x16 a) { return {{_mm256_cvtepi16_epi32(_mm256_extracti128_si256(a.v, 1))}}; }
RVX_INLINE F64x4 widenLow(F32x8 a) { return {_mm256_cvtps_pd(_mm256_castps256_ps128(a.v))}; }
RVX_INLINE F64x4 widenHigh(F32x8 a) { return {_mm256_cvtps_pd(_mm256_extractf128_ps(a.v, 1))}; }
// Lanes in order: first the eight of `low`, then the eight of `high`.
RVX_INLINE I16x16 narrowSaturated(I32x8 low, I32x8 high) {
    return {{_mm256_permute4x64_epi64(_mm256_packs_epi32(low.v, high.v), 0xd8)}};
}
// Lanes 0..255 as the bytes of an integer, lane 0 the lowest.
RVX_INLINE std::uint64_t packedBytes(I32x8 a) {
    const __m128i words = _mm_packs_epi32(_mm256_castsi256_si128(a.v), _mm256_extracti128_si256(a.v, 1));
    return static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_packus_epi16(words, words)));
}
// Eight integers stored as a narrower type that holds them.
template <class Span> RVX_INLINE void storeNarrow(std::uint8_t *p, I32x8 a, Span span) {
    const std::uint64_t bytes = packedBytes(a);
    if constexpr (std::is_same_v<Span, Full>) {
        std::memcpy(p, &bytes, sizeof bytes);
    } else {
        detail::storeBytes16(p, _mm_cvtsi64_si128(static_cast<long long>(bytes)), span.n);
    }
}
template <class Span> RVX_INLINE void storeNarrow(std::uint16_t *p, I32x8 a, Span span) {
    const __m128i words = _mm_packus_epi32(_mm256_castsi256_si128(a.v), _mm256_extracti128_si256(a.v, 1));
    if constexpr (std::is_same_v<Span, Full>) {
        storeHalf(p, U8x16{words});
    } else {
        storeHalf(p, U8x16{words}, Part{2 * span.n});
    }
}

// The bytes of an integer as lanes, and the lanes of a in an order of choice.
RVX_INLINE I32x8 fromPackedBytes(std::uint64_t bytes) {
    return {{_mm256_cvtepu8_epi32(_mm_cvtsi64_si128(static_cast<long long>(bytes)))}};
}
RVX_INLINE I32x8 permuted(I32x8 a, I32x8 lanes) { return {{_mm256_permutevar8x32_epi32(a.v, lanes.v)}}; }
// Pairs (a[i], b[i]) of the lanes 0..3 and 8..11, and of the lanes 4..7 and 12..15: the two halves of each 128-bit
// lane. narrowInLane puts 32-bit results of such pairs back in order.
RVX_INLINE I16x16 pairsInLaneLow(I16x16 a, I16x16 b) { return {{_mm256_unpacklo_epi16(a.v, b.v)}}; }
RVX_INLINE I16x16 pairsInLaneHigh(I16x16 a, I16x16 b) { return {{_mm256_unpackhi_epi16(a.v, b.v)}}; }
RVX_INLINE I16x16 narrowInLane(I32x8 low, I32x8 high) { return {{_mm256_packs_epi32(low.v, high.v)}}; }
// Unsigned lanes widened, or paired as above, by halves of each 128-bit lane; the narrowings in lane put results back.
RVX_INLINE U8x32 pairsInLaneLow(U8x32 a, U8x32 b) { return {{_mm256_unpacklo_epi8(a.v, b.v)}}; }
RVX_INLINE U8x32 pairsInLaneHigh(U8x32 a, U8x32 b) { return {{_mm256_unpackhi_epi8(a.v, b.v)}}; }
RVX_INLINE I16x16 widenInLaneLow(U8x32 a) { return {{_mm256_unpacklo_epi8(a.v, _mm256_setzero_si256())}}; }
RVX_INLINE I16x16 widenInLaneHigh(U8x32 a) { return {{_mm256_unpackhi_epi8(a.v, _mm256_setzero_si256())}}; }
RVX_INLINE I32x8 widenInLaneLow(U16x16 a) { return {{_mm256_unpacklo_epi16(a.v, _mm256_setzero_si256())}}; }
RVX_INLINE I32x8 widenInLaneHigh(U16x16 a) { return {{_mm256_unpackhi_epi16(a.v, _mm256_setzero_si256())}}; }
RVX_INLINE U8x32 narrowUnsignedInLane(I16x16 low, I16x16 high) { return {{_mm256_packus_epi16(low.v, high.v)}}; }
RVX_INLINE I8x32 narrowSignedInLane(I16x16 low, I16x16 high) { return {{_mm256_packs_epi16(low.v, high.v)}}; }
RVX_INLINE U16x16 narrowUnsignedInLane(I32x8 low, I32x8 high) { return {{_mm256_packus_epi32(low.v, high.v)}}; }
// The lanes 0, 2, 4 ... and the lanes 1, 3, 5 ...; interleaveLowHalves puts 32-bit results of such lanes back in order.
RVX_INLINE I32x8 widenEven(I16x16 a) { return mulAddPairs(a, splatPair(1, 0)); }
RVX_INLINE I32x8 widenOdd(I16x16 a) { return {{_mm256_srai_epi32(a.v, 16)}}; }
// The low halves of the 32-bit lanes, alternating: even[0], odd[0], even[1], odd[1] ...
RVX_INLINE I16x16 interleaveLowHalves(I32x8 even, I32x8 odd) {
    return {{_mm256_blend_epi16(even.v, _mm256_slli_epi32(odd.v, 16), 0xaa)}};
}
// Lanes of a and b in turn: those of the first halves, those of the second ones.
RVX_INLINE F32x8 interleavedLow(F32x8 a, F32x8 b) {
    return {_mm256_permute2f128_ps(_mm256_unpacklo_ps(a.v, b.v), _mm256_unpackhi_ps(a.v, b.v), 0x20)};
}
RVX_INLINE F32x8 interleavedHigh(F32x8 a, F32x8 b) {
    return {_mm256_permute2f128_ps(_mm256_unpacklo_ps(a.v, b.v), _mm256_unpackhi_ps(a.v, b.v), 0x31)};
}
// The even (odd) lanes of a, then those of b, but in groups of two: a0 a2 b0 b2 a4 a6 b4 b6; sortedPairs puts them in
// order.
RVX_INLINE F32x8 evenInLane(F32x8 a, F32x8 b) { return {_mm256_shuffle_ps(a.v, b.v, 0x88)}; }
RVX_INLINE F32x8 oddInLane(F32x8 a, F32x8 b) { return {_mm256_shuffle_ps(a.v, b.v, 0xdd)}; }
RVX_INLINE F32x8 sortedPairs(F32x8 a) { return {_mm256_castpd_ps(_mm256_permute4x64_pd(_mm256_castps_pd(a.v), 0xd8))}; }

// The lanes of b whose bit is set in the pattern, else those of a.
template <int pattern> RVX_INLINE F32x8 blended(F32x8 a, F32x8 b) { return {_mm256_blend_ps(a.v, b.v, pattern)}; }
// Lane i is the one of a at place lanes[i], 0..7.
RVX_INLINE F32x8 permuted(F32x8 a, I32x8 lanes) { return {_mm256_permutevar8x32_ps(a.v, lanes.v)}; }
// Lane i is p[index[i]].
RVX_INLINE F32x8 gathered(const float *p, I32x8 index) { return {_mm256_i32gather_ps(p, index.v, 4)}; }

// The low halves of the 32-bit lanes as their values.
RVX_INLINE I32x8 lowHalves(I32x8 a) { return {{_mm256_blend_epi16(a.v, _mm256_setzero_si256(), 0xaa)}}; }
RVX_INLINE U16x16 narrowSaturatedUnsigned(I32x8 low, I32x8 high) {
    return {{_mm256_permute4x64_epi64(_mm256_packus_epi32(low.v, high.v), 0xd8)}};
}

// 1.0 where one of eight mask bytes is non-zero, else 0.0.
template <class Span> RVX_INLINE F32x8 loadSelection(const std::uint8_t *mask, Span span) {
    const __m256i off = _mm256_cmpeq_epi32(loadI32(mask, span).v, _mm256_setzero_si256());
    return {_mm256_andnot_ps(_mm256_castsi256_ps(off), _mm256_set1_ps(1.0f))};
}

// Sixteen bytes with zero where the mask's byte is zero; and eight of sixteen bytes as integers.
RVX_INLINE U8x16 selected(U8x16 mask, U8x16 a) {
    return {_mm_andnot_si128(_mm_cmpeq_epi8(mask.v, _mm_setzero_si128()), a.v)};
}
RVX_INLINE I32x8 widenLow(U8x16 a) { return {{_mm256_cvtepu8_epi32(a.v)}}; }
RVX_INLINE I32x8 widenHigh(U8x16 a) { return {{_mm256_cvtepu8_epi32(_mm_srli_si128(a.v, 8))}}; }

// The bytes of a from `bytes` on (less than a vector), then the first ones of b.
template <int bytes, class V> RVX_INLINE V shiftedIn(V a, V b) {
    static_assert(bytes > 0 && bytes < 32);
    const __m256i low = detail::raw(a), high = detail::raw(b), middle = _mm256_permute2x128_si256(low, high, 0x21);
    __m256i result = middle;
    if constexpr (bytes < 16) {
        result = _mm256_alignr_epi8(middle, low, bytes);
    } else if constexpr (bytes > 16) {
        result = _mm256_alignr_epi8(high, middle, bytes - 16);
    }
    return detail::fromRaw<V>(result);
}

// The same within each half of 16 bytes.
template <int bytes, class V> RVX_INLINE V shiftedInLane(V a, V b) {
    return detail::fromRaw<V>(_mm256_alignr_epi8(detail::raw(b), detail::raw(a), bytes));
}
// One half of a, then one half of b (0 the low one, 1 the high one).
template <int halfOfA, int halfOfB, class V> RVX_INLINE V joinedHalves(V a, V b) {
    return detail::fromRaw<V>(_mm256_permute2x128_si256(detail::raw(a), detail::raw(b), halfOfA | (2 + halfOfB) << 4));
}
// One lane, counted within each half, in all lanes of its half.
template <int lane, class V> RVX_INLINE V repeatedInLane(V a) {
    constexpr int bytes = static_cast<int>(sizeof(typename V::Element));
    static_assert(bytes <= 2 || bytes == 4);
    if constexpr (bytes == 4) {
        return detail::fromRaw<V>(_mm256_shuffle_epi32(detail::raw(a), lane * 0x55));
    } else {
        constexpr short order = bytes == 1 ? lane * 0x101 : (2 * lane + 1) << 8 | 2 * lane;
        return detail::fromRaw<V>(_mm256_shuffle_epi8(detail::raw(a), _mm256_set1_epi16(order)));
    }
}

// Any vector from two halves of 16 bytes, each with its bytes in an order of its own.
template <class V>
RVX_INLINE V shuffledHalves(const typename V::Element *low, const typename V::Element *high, U8x32 order) {
    const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i *>(low));
    const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i *>(high));
    const __m256i bytes = _mm256_shuffle_epi8(_mm256_inserti128_si256(_mm256_castsi128_si256(a), b, 1), order.v);
    return detail::fromRaw<V>(bytes);
}

// A byte of its half each, widened to the lane: four of the low half, four of the high one.
template <int... from> RVX_INLINE I32x8 widenedBytes(U8x32 a) {
    static_assert(sizeof...(from) == 8);
    constexpr std::int32_t zeros = static_cast<std::int32_t>(0x80808000);
    return {{_mm256_shuffle_epi8(a.v, _mm256_setr_epi32((zeros | from)...))}};
}

// The first twelve bytes of both halves, then eight bytes of no use.
RVX_INLINE U8x32 joinedTwelves(U8x32 a) {
    return {{_mm256_permutevar8x32_epi32(a.v, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 0, 0))}};
}

namespace detail {
// The byte order of elements that is the same in both halves of a vector; a place from before 0 stands for zeros.
template <int size, int... from> struct HalfOrder {
    alignas(32) std::uint8_t bytes[32];
    constexpr HalfOrder() : bytes{} {
        constexpr int elements[] = {from...};
        for (int i = 0; i < 32; ++i) {
            const int element = elements[i % 16 / size];
            bytes[i] = static_cast<std::uint8_t>(element < 0 ? 0x80 : element * size + i % size);
        }
    }
};
template <int size, int... from> inline constexpr HalfOrder<size, from...> halfOrder{};
} // namespace detail

// In each half (16 bytes) of a vector: element i is the one that was at place from[i], or zero where that is negative.
template <int... from, class V> RVX_INLINE V reorderedInHalves(V a) {
    constexpr int size = sizeof(typename V::Element);
    constexpr int places[] = {from...};
    static_assert(sizeof...(from) * size == 16);
    if constexpr (size == 4 && (... && (from >= 0))) {
        constexpr int order = places[0] | places[1] << 2 | places[2] << 4 | places[3] << 6;
        return detail::fromRaw<V>(_mm256_shuffle_epi32(detail::raw(a), order));
    } else {
        const auto *order = reinterpret_cast<const __m256i *>(detail::halfOrder<size, from...>.bytes);
        return detail::fromRaw<V>(_mm256_shuffle_epi8(detail::raw(a), _mm256_load_si256(order)));
    }
}

// In each half of a vector: the elements of b whose bit is set in the pattern, else those of a. Two or four bytes.
template <unsigned pattern, class V> RVX_INLINE V mixedInHalves(V a, V b) {
    const __m256i first = detail::raw(a), second = detail::raw(b);
    if constexpr (sizeof(typename V::Element) == 4) {
        return detail::fromRaw<V>(_mm256_blend_epi32(first, second, static_cast<int>(pattern * 0x11)));
    } else {
        static_assert(sizeof(typename V::Element) == 2);
        return detail::fromRaw<V>(_mm256_blend_epi16(first, second, static_cast<int>(pattern)));
    }
}

template <class V> RVX_INLINE V bitsOfAny(V a, V b, V c) {
    return detail::fromRaw<V>(_mm256_or_si256(_mm256_or_si256(detail::raw(a), detail::raw(b)), detail::raw(c)));
}

// Two halves as one vector: the low half of a, then the high half of b; and so on.
template <class V> RVX_INLINE V lowThenHigh(V a, V b) {
    return detail::fromRaw<V>(_mm256_blend_epi32(detail::raw(a), detail::raw(b), 0xf0));
}
template <class V> RVX_INLINE V highThenLow(V a, V b) {
    return detail::fromRaw<V>(_mm256_permute2x128_si256(detail::raw(a), detail::raw(b), 0x21));
}
template <class V> RVX_INLINE V lowThenLow(V a, V b) {
    return detail::fromRaw<V>(_mm256_permute2x128_si256(detail::raw(a), detail::raw(b), 0x20));
}
template <class V> RVX_INLINE V highThenHigh(V a, V b) {
    return detail::fromRaw<V>(_mm256_permute2x128_si256(detail::raw(a), detail::raw(b), 0x31));
}

} // namespace rvxcv
