// The vector types and the spans of loads and stores.
#pragma once

#include "kernel/base.h"

#include <immintrin.h>

namespace rvxcv {

struct Full {};
struct Part {
    int n;
};
// The first n of eight 32-bit lanes as a mask, for loops that come back to the same tail again and again.
struct Lanes {
    __m256i mask;
};
RVX_INLINE Lanes firstLanes(int n) {
    return {_mm256_cmpgt_epi32(_mm256_set1_epi32(n), _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7))};
}

// Calls function(span) for the g-th eight lanes of a longer span, if it reaches them.
template <int g, class Function> RVX_INLINE void withEight(Full, const Function &function) { function(Full{}); }
template <int g, class Function> RVX_INLINE void withEight(Part part, const Function &function) {
    if (part.n >= 8 * g + 8) {
        function(Full{});
    } else if (part.n > 8 * g) {
        function(Part{part.n - 8 * g});
    }
}

namespace detail {
template <class T> struct IntVector {
    using Element = T;
    static constexpr int lanes = 32 / static_cast<int>(sizeof(T));
    __m256i v;
};
} // namespace detail

struct U8x32 : detail::IntVector<std::uint8_t> {};
struct I8x32 : detail::IntVector<std::int8_t> {};
struct U16x16 : detail::IntVector<std::uint16_t> {};
struct I16x16 : detail::IntVector<std::int16_t> {};
struct I32x8 : detail::IntVector<std::int32_t> {};
struct I64x4 : detail::IntVector<std::int64_t> {};
// Half a vector, for groups whose size does not divide a vector.
struct U8x16 {
    using Element = std::uint8_t;
    static constexpr int lanes = 16;
    __m128i v;
};
struct F32x8 {
    using Element = float;
    static constexpr int lanes = 8;
    __m256 v;
};
struct F64x4 {
    using Element = double;
    static constexpr int lanes = 4;
    __m256d v;
};

template <class T> struct VectorOf;
template <> struct VectorOf<std::uint8_t> { using type = U8x32; };
template <> struct VectorOf<std::int8_t> { using type = I8x32; };
template <> struct VectorOf<std::uint16_t> { using type = U16x16; };
template <> struct VectorOf<std::int16_t> { using type = I16x16; };
template <> struct VectorOf<std::int32_t> { using type = I32x8; };
template <> struct VectorOf<std::int64_t> { using type = I64x4; };
template <> struct VectorOf<float> { using type = F32x8; };
template <> struct VectorOf<double> { using type = F64x4; };
template <class T> using Vec = typename VectorOf<std::remove_const_t<T>>::type;

namespace detail {
// Any vector as plain bits, and back.
template <class V> RVX_INLINE __m256i raw(V a) {
    if constexpr (std::is_same_v<V, F32x8>) {
        return _mm256_castps_si256(a.v);
    } else if constexpr (std::is_same_v<V, F64x4>) {
        return _mm256_castpd_si256(a.v);
    } else {
        return a.v;
    }
}
template <class V> RVX_INLINE V fromRaw(__m256i bits) {
    if constexpr (std::is_same_v<V, F32x8>) {
        return {_mm256_castsi256_ps(bits)};
    } else if constexpr (std::is_same_v<V, F64x4>) {
        return {_mm256_castsi256_pd(bits)};
    } else {
        return {{bits}};
    }
}
} // namespace detail

} // namespace rvxcv
