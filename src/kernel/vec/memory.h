// Loads and stores, whole and partial, with and without widening.
//
// They take a span: Full for all lanes, Part{n} for the first n (1 <= n <= lanes). A partial load reads exactly n
// elements and gives zero in the other lanes; a partial store writes exactly n elements.
#pragma once

#include "kernel/vec/types.h"

namespace rvxcv {

namespace detail {

// The first n of up to 16 bytes, the rest zero: two overlapping narrower loads, joined.
RVX_INLINE __m128i loadBytes16(const void *p, int n) {
    const auto *b = static_cast<const std::uint8_t *>(p);
    if (n >= 16) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i *>(b));
    }
    if (n >= 8) {
        std::uint64_t low, high;
        std::memcpy(&low, b, 8);
        std::memcpy(&high, b + n - 8, 8);
        high = n == 8 ? 0 : high >> (8 * (16 - n));
        return _mm_set_epi64x(static_cast<long long>(high), static_cast<long long>(low));
    }
    std::uint64_t bits = 0;
    if (n >= 4) {
        std::uint32_t low, high;
        std::memcpy(&low, b, 4);
        std::memcpy(&high, b + n - 4, 4);
        bits = low | (static_cast<std::uint64_t>(high) << (8 * (n - 4)));
    } else if (n >= 1) {
        bits = b[0];
        if (n >= 2) {
            std::uint16_t last;
            std::memcpy(&last, b + n - 2, 2);
            bits |= static_cast<std::uint64_t>(last) << (8 * (n - 2));
        }
    }
    return _mm_cvtsi64_si128(static_cast<long long>(bits));
}

RVX_INLINE __m256i loadBytes32(const void *p, int n) {
    const auto *b = static_cast<const std::uint8_t *>(p);
    if (n <= 16) {
        return _mm256_zextsi128_si256(loadBytes16(b, n));
    }
    return _mm256_set_m128i(loadBytes16(b + 16, n - 16), loadBytes16(b, 16));
}

// Stores by halves, so that no byte is written twice and nothing passes through memory.
RVX_INLINE void storeBytes16(void *p, __m128i v, int n) {
    auto *b = static_cast<std::uint8_t *>(p);
    if (n >= 16) {
        _mm_storeu_si128(reinterpret_cast<__m128i *>(b), v);
        return;
    }
    auto bits = static_cast<std::uint64_t>(_mm_cvtsi128_si64(v));
    if (n & 8) {
        std::memcpy(b, &bits, 8);
        b += 8;
        bits = static_cast<std::uint64_t>(_mm_extract_epi64(v, 1));
    }
    if (n & 4) {
        const auto word = static_cast<std::uint32_t>(bits);
        std::memcpy(b, &word, 4);
        b += 4;
        bits >>= 32;
    }
    if (n & 2) {
        const auto half = static_cast<std::uint16_t>(bits);
        std::memcpy(b, &half, 2);
        b += 2;
        bits >>= 16;
    }
    if (n & 1) {
        *b = static_cast<std::uint8_t>(bits);
    }
}

RVX_INLINE void storeBytes32(void *p, __m256i v, int n) {
    auto *b = static_cast<std::uint8_t *>(p);
    if (n <= 16) {
        storeBytes16(b, _mm256_castsi256_si128(v), n);
        return;
    }
    storeBytes16(b, _mm256_castsi256_si128(v), 16);
    storeBytes16(b + 16, _mm256_extracti128_si256(v, 1), n - 16);
}

} // namespace detail

template <class V> RVX_INLINE V load(const typename V::Element *p, Full = {}) {
    return detail::fromRaw<V>(_mm256_loadu_si256(reinterpret_cast<const __m256i *>(p)));
}

template <class V> RVX_INLINE V load(const typename V::Element *p, Part part) {
    return detail::fromRaw<V>(detail::loadBytes32(p, part.n * static_cast<int>(sizeof(typename V::Element))));
}

namespace detail {
// The low lanes of a narrow type, as many as a wider vector holds.
template <int bytes> RVX_INLINE __m128i loadNarrow(const void *p, Full) {
    if constexpr (bytes == 16) {
        return _mm_loadu_si128(static_cast<const __m128i *>(p));
    } else {
        static_assert(bytes == 8);
        std::uint64_t bits;
        std::memcpy(&bits, p, 8);
        return _mm_cvtsi64_si128(static_cast<long long>(bits));
    }
}
} // namespace detail

template <class V> RVX_INLINE void store(typename V::Element *p, V a, Full = {}) {
    _mm256_storeu_si256(reinterpret_cast<__m256i *>(p), detail::raw(a));
}

template <class V> RVX_INLINE void store(typename V::Element *p, V a, Part part) {
    detail::storeBytes32(p, detail::raw(a), part.n * static_cast<int>(sizeof(typename V::Element)));
}

template <class V> RVX_INLINE V load(const float *p, Lanes lanes) {
    static_assert(std::is_same_v<V, F32x8>);
    return {_mm256_maskload_ps(p, lanes.mask)};
}
template <class V> RVX_INLINE V load(const std::int32_t *p, Lanes lanes) {
    static_assert(std::is_same_v<V, I32x8>);
    return {{_mm256_maskload_epi32(p, lanes.mask)}};
}
RVX_INLINE void store(std::int32_t *p, I32x8 a, Lanes lanes) { _mm256_maskstore_epi32(p, lanes.mask, a.v); }
RVX_INLINE void store(float *p, F32x8 a, Lanes lanes) { _mm256_maskstore_ps(p, lanes.mask, a.v); }

// Eight pixels of any type as floats; exact.
template <class Span> RVX_INLINE F32x8 loadF32(const float *p, Span span) { return load<F32x8>(p, span); }

namespace detail {
template <class T> RVX_INLINE __m128i loadEight(const T *p, Full) {
    return loadNarrow<8 * static_cast<int>(sizeof(T))>(p, Full{});
}
template <class T> RVX_INLINE __m128i loadEight(const T *p, Part part) {
    return loadBytes16(p, part.n * static_cast<int>(sizeof(T)));
}
} // namespace detail

// Eight pixels of a narrow type as 32-bit integers.
template <class Span> RVX_INLINE I32x8 loadI32(const std::uint8_t *p, Span span) {
    return {{_mm256_cvtepu8_epi32(detail::loadEight(p, span))}};
}
template <class Span> RVX_INLINE I32x8 loadI32(const std::int8_t *p, Span span) {
    return {{_mm256_cvtepi8_epi32(detail::loadEight(p, span))}};
}
template <class Span> RVX_INLINE I32x8 loadI32(const std::uint16_t *p, Span span) {
    return {{_mm256_cvtepu16_epi32(detail::loadEight(p, span))}};
}
template <class Span> RVX_INLINE I32x8 loadI32(const std::int16_t *p, Span span) {
    return {{_mm256_cvtepi16_epi32(detail::loadEight(p, span))}};
}
template <class T, class Span> RVX_INLINE F32x8 loadF32(const T *p, Span span) {
    return {_mm256_cvtepi32_ps(loadI32(p, span).v)};
}

// Sixteen 8-bit pixels as 16-bit integers.
RVX_INLINE I16x16 loadI16(const std::uint8_t *p, Full = {}) {
    return {{_mm256_cvtepu8_epi16(detail::loadNarrow<16>(p, Full{}))}};
}
RVX_INLINE I16x16 loadI16(const std::uint8_t *p, Part part) {
    return {{_mm256_cvtepu8_epi16(detail::loadBytes16(p, part.n))}};
}
RVX_INLINE I16x16 loadI16(const std::int8_t *p, Full = {}) {
    return {{_mm256_cvtepi8_epi16(detail::loadNarrow<16>(p, Full{}))}};
}
RVX_INLINE I16x16 loadI16(const std::int8_t *p, Part part) {
    return {{_mm256_cvtepi8_epi16(detail::loadBytes16(p, part.n))}};
}
template <class Span> RVX_INLINE I16x16 loadI16(const std::int16_t *p, Span span) { return load<I16x16>(p, span); }

// Sixteen 16-bit lanes stored as bytes.
namespace detail {
RVX_INLINE void storeSixteenBytes(void *p, __m128i v, Full) { _mm_storeu_si128(static_cast<__m128i *>(p), v); }
RVX_INLINE void storeSixteenBytes(void *p, __m128i v, Part part) { storeBytes16(p, v, part.n); }
} // namespace detail

template <class Span> RVX_INLINE void storeSaturated(std::uint8_t *p, I16x16 a, Span span) {
    const __m128i low = _mm256_castsi256_si128(a.v), high = _mm256_extracti128_si256(a.v, 1);
    detail::storeSixteenBytes(p, _mm_packus_epi16(low, high), span);
}
template <class Span> RVX_INLINE void storeSaturated(std::int8_t *p, I16x16 a, Span span) {
    const __m128i low = _mm256_castsi256_si128(a.v), high = _mm256_extracti128_si256(a.v, 1);
    detail::storeSixteenBytes(p, _mm_packs_epi16(low, high), span);
}

// Sixteen bytes of anything, or the first n.
template <class T> RVX_INLINE U8x16 loadHalf(const T *p, Full = {}) {
    return {_mm_loadu_si128(reinterpret_cast<const __m128i *>(p))};
}
template <class T> RVX_INLINE U8x16 loadHalf(const T *p, Part bytes) { return {detail::loadBytes16(p, bytes.n)}; }
template <class T> RVX_INLINE void storeHalf(T *p, U8x16 a, Full = {}) {
    _mm_storeu_si128(reinterpret_cast<__m128i *>(p), a.v);
}
template <class T> RVX_INLINE void storeHalf(T *p, U8x16 a, Part bytes) { detail::storeBytes16(p, a.v, bytes.n); }
// A vector from two halves of 16 bytes, and to two.
template <class V> RVX_INLINE V loadHalves(const typename V::Element *low, const typename V::Element *high) {
    return detail::fromRaw<V>(_mm256_inserti128_si256(_mm256_castsi128_si256(loadHalf(low).v), loadHalf(high).v, 1));
}
template <class V> RVX_INLINE void storeHalves(typename V::Element *low, typename V::Element *high, V a) {
    _mm_storeu_si128(reinterpret_cast<__m128i *>(low), _mm256_castsi256_si128(detail::raw(a)));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(high), _mm256_extracti128_si256(detail::raw(a), 1));
}
RVX_INLINE U8x32 inBothHalves(U8x16 a) { return {{_mm256_broadcastsi128_si256(a.v)}}; }
RVX_INLINE U8x16 reordered(U8x16 a, U8x16 from) { return {_mm_shuffle_epi8(a.v, from.v)}; }

// Past the caches, for results larger than these that are not read again soon: where the address is a multiple of 32,
// and as usual elsewhere. endStreaming makes such stores visible in order, before the function returns.
template <class V> RVX_INLINE void storeStreamed(typename V::Element *p, V a) {
    if ((reinterpret_cast<std::uintptr_t>(p) & 31) == 0) {
        _mm256_stream_si256(reinterpret_cast<__m256i *>(p), detail::raw(a));
    } else {
        store(p, a);
    }
}
// Where the address is known to be a multiple of 16.
template <class V> RVX_INLINE void storeStreamedHalves(typename V::Element *p, V a) {
    if ((reinterpret_cast<std::uintptr_t>(p) & 16) == 0) {
        _mm256_stream_si256(reinterpret_cast<__m256i *>(p), detail::raw(a));
    } else {
        _mm_stream_si128(reinterpret_cast<__m128i *>(p), _mm256_castsi256_si128(detail::raw(a)));
        _mm_stream_si128(reinterpret_cast<__m128i *>(p) + 1, _mm256_extracti128_si256(detail::raw(a), 1));
    }
}
RVX_INLINE void endStreaming() { _mm_sfence(); }

// The same vector, in a register from here on: compilers otherwise load a vector again for every use of it.
template <class V> RVX_INLINE V inRegister(V a) {
    asm("" : "+x"(a.v)); // NOLINT(hicpp-no-assembler)
    return a;
}

// A hint that never faults, whatever the address.
RVX_INLINE void prefetch(const void *p) { _mm_prefetch(static_cast<const char *>(p), _MM_HINT_T0); }

} // namespace rvxcv
