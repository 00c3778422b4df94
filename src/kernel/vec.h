// Thin vector types over AVX2. Free functions named after what they do; rounding and saturation are in the name. No
// other file uses an _mm256_ intrinsic without saying why.
//
// Loads and stores take a span: Full for all lanes, Part{n} for the first n (1 <= n <= lanes). A partial load reads
// exactly n elements and gives zero in the other lanes; a partial store writes exactly n elements.
#pragma once

#include "kernel/base.h"

#include <immintrin.h>

namespace rvxcv {

struct Full {};
struct Part {
    int n;
};

// ------------------------------------------------------------------------------------------------------ types

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
struct F32x8 {
    using Element = float;
    static constexpr int lanes = 8;
    __m256 v;
};

template <class T> struct VectorOf;
template <> struct VectorOf<std::uint8_t> { using type = U8x32; };
template <> struct VectorOf<std::int8_t> { using type = I8x32; };
template <> struct VectorOf<std::uint16_t> { using type = U16x16; };
template <> struct VectorOf<std::int16_t> { using type = I16x16; };
template <> struct VectorOf<std::int32_t> { using type = I32x8; };
template <> struct VectorOf<float> { using type = F32x8; };
template <class T> using Vec = typename VectorOf<std::remove_const_t<T>>::type;

// ------------------------------------------------------------------------- raw bytes: partial loads and stores

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

// ------------------------------------------------------------------------------------------- loads and stores

template <class V> RVX_INLINE V load(const typename V::Element *p, Full = {}) {
    const __m256i raw = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(p));
    if constexpr (std::is_same_v<V, F32x8>) {
        return {_mm256_castsi256_ps(raw)};
    } else {
        return {{raw}};
    }
}

template <class V> RVX_INLINE V load(const typename V::Element *p, Part part) {
    const __m256i raw = detail::loadBytes32(p, part.n * static_cast<int>(sizeof(typename V::Element)));
    if constexpr (std::is_same_v<V, F32x8>) {
        return {_mm256_castsi256_ps(raw)};
    } else {
        return {{raw}};
    }
}

namespace detail {
template <class V> RVX_INLINE __m256i raw(V a) {
    if constexpr (std::is_same_v<V, F32x8>) {
        return _mm256_castps_si256(a.v);
    } else {
        return a.v;
    }
}

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

// A hint that never faults, whatever the address.
RVX_INLINE void prefetch(const void *p) { _mm_prefetch(static_cast<const char *>(p), _MM_HINT_T0); }

// ------------------------------------------------------------------------------------------------- broadcast

RVX_INLINE F32x8 splat(float a) { return {_mm256_set1_ps(a)}; }
RVX_INLINE I32x8 splat(std::int32_t a) { return {{_mm256_set1_epi32(a)}}; }
RVX_INLINE I16x16 splat(std::int16_t a) { return {{_mm256_set1_epi16(a)}}; }
RVX_INLINE U16x16 splat(std::uint16_t a) { return {{_mm256_set1_epi16(static_cast<short>(a))}}; }
RVX_INLINE U8x32 splat(std::uint8_t a) { return {{_mm256_set1_epi8(static_cast<char>(a))}}; }
RVX_INLINE I8x32 splat(std::int8_t a) { return {{_mm256_set1_epi8(a)}}; }
// Two neighbouring 16-bit values in every 32-bit lane: one operand of mulAddPairs.
RVX_INLINE I16x16 splatPair(std::int16_t even, std::int16_t odd) {
    const auto pair =
        static_cast<std::uint32_t>(static_cast<std::uint16_t>(odd)) << 16 | static_cast<std::uint16_t>(even);
    return {{_mm256_set1_epi32(static_cast<std::int32_t>(pair))}};
}
RVX_INLINE I16x16 splatPair(const std::int16_t *p) {
    return {{_mm256_set1_epi32(loadScalar(reinterpret_cast<const std::int32_t *>(p)))}};
}

// ------------------------------------------------------------------------------------------------- arithmetic

RVX_INLINE F32x8 add(F32x8 a, F32x8 b) { return {_mm256_add_ps(a.v, b.v)}; }
RVX_INLINE F32x8 sub(F32x8 a, F32x8 b) { return {_mm256_sub_ps(a.v, b.v)}; }
RVX_INLINE F32x8 mul(F32x8 a, F32x8 b) { return {_mm256_mul_ps(a.v, b.v)}; }
// a * b + c, rounded once.
RVX_INLINE F32x8 fma(F32x8 a, F32x8 b, F32x8 c) { return {_mm256_fmadd_ps(a.v, b.v, c.v)}; }
RVX_INLINE F32x8 sqrt(F32x8 a) { return {_mm256_sqrt_ps(a.v)}; }
RVX_INLINE F32x8 copySign(F32x8 magnitude, F32x8 sign) {
    return {_mm256_or_ps(magnitude.v, _mm256_and_ps(_mm256_set1_ps(-0.0f), sign.v))};
}
RVX_INLINE F32x8 abs(F32x8 a) { return {_mm256_andnot_ps(_mm256_set1_ps(-0.0f), a.v)}; }
// a < b ? a : b and a > b ? a : b, as the instructions do it: the second operand when one is NaN.
RVX_INLINE F32x8 min(F32x8 a, F32x8 b) { return {_mm256_min_ps(a.v, b.v)}; }
RVX_INLINE F32x8 max(F32x8 a, F32x8 b) { return {_mm256_max_ps(a.v, b.v)}; }

RVX_INLINE I32x8 add(I32x8 a, I32x8 b) { return {{_mm256_add_epi32(a.v, b.v)}}; }
RVX_INLINE I32x8 sub(I32x8 a, I32x8 b) { return {{_mm256_sub_epi32(a.v, b.v)}}; }
RVX_INLINE I32x8 mulLow(I32x8 a, I32x8 b) { return {{_mm256_mullo_epi32(a.v, b.v)}}; }
RVX_INLINE I32x8 abs(I32x8 a) { return {{_mm256_abs_epi32(a.v)}}; }
RVX_INLINE I32x8 min(I32x8 a, I32x8 b) { return {{_mm256_min_epi32(a.v, b.v)}}; }
RVX_INLINE I32x8 max(I32x8 a, I32x8 b) { return {{_mm256_max_epi32(a.v, b.v)}}; }

// Additions and subtractions of 16-bit lanes wrap unless the name says that they saturate.
RVX_INLINE I16x16 add(I16x16 a, I16x16 b) { return {{_mm256_add_epi16(a.v, b.v)}}; }
RVX_INLINE I16x16 sub(I16x16 a, I16x16 b) { return {{_mm256_sub_epi16(a.v, b.v)}}; }
RVX_INLINE I16x16 subSaturated(I16x16 a, I16x16 b) { return {{_mm256_subs_epi16(a.v, b.v)}}; }
RVX_INLINE I16x16 mulLow(I16x16 a, I16x16 b) { return {{_mm256_mullo_epi16(a.v, b.v)}}; }
template <int bits> RVX_INLINE I16x16 shiftLeft(I16x16 a) { return {{_mm256_slli_epi16(a.v, bits)}}; }
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
template <int bits> RVX_INLINE U16x16 shiftRight(U16x16 a) { return {{_mm256_srli_epi16(a.v, bits)}}; }
RVX_INLINE U16x16 subSaturated(U16x16 a, U16x16 b) { return {{_mm256_subs_epu16(a.v, b.v)}}; }
RVX_INLINE U16x16 min(U16x16 a, U16x16 b) { return {{_mm256_min_epu16(a.v, b.v)}}; }
RVX_INLINE U16x16 max(U16x16 a, U16x16 b) { return {{_mm256_max_epu16(a.v, b.v)}}; }

RVX_INLINE U8x32 subSaturated(U8x32 a, U8x32 b) { return {{_mm256_subs_epu8(a.v, b.v)}}; }
RVX_INLINE U8x32 min(U8x32 a, U8x32 b) { return {{_mm256_min_epu8(a.v, b.v)}}; }
RVX_INLINE U8x32 max(U8x32 a, U8x32 b) { return {{_mm256_max_epu8(a.v, b.v)}}; }

// |a - b|: one of the two saturated differences is zero.
RVX_INLINE U8x32 absDiff(U8x32 a, U8x32 b) {
    return {{_mm256_or_si256(_mm256_subs_epu8(a.v, b.v), _mm256_subs_epu8(b.v, a.v))}};
}
RVX_INLINE U16x16 absDiff(U16x16 a, U16x16 b) {
    return {{_mm256_or_si256(_mm256_subs_epu16(a.v, b.v), _mm256_subs_epu16(b.v, a.v))}};
}
RVX_INLINE F32x8 absDiff(F32x8 a, F32x8 b) { return abs(sub(a, b)); }

// Sums of products of neighbouring 16-bit lanes, as 32-bit lanes: a[2i] * b[2i] + a[2i + 1] * b[2i + 1].
RVX_INLINE I32x8 mulAddPairs(I16x16 a, I16x16 b) { return {{_mm256_madd_epi16(a.v, b.v)}}; }

// ------------------------------------------------------------------------------------------------ comparisons

// Eight 32-bit lanes, all bits set or all clear. Comparisons with a NaN clear the lane.
struct Mask32x8 {
    __m256 v;
};

RVX_INLINE Mask32x8 greater(F32x8 a, F32x8 b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_GT_OQ)}; }
RVX_INLINE Mask32x8 lessEqual(F32x8 a, F32x8 b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_LE_OQ)}; }
RVX_INLINE Mask32x8 greater(I32x8 a, I32x8 b) { return {_mm256_castsi256_ps(_mm256_cmpgt_epi32(a.v, b.v))}; }
RVX_INLINE Mask32x8 equal(I32x8 a, I32x8 b) { return {_mm256_castsi256_ps(_mm256_cmpeq_epi32(a.v, b.v))}; }
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
RVX_INLINE F32x8 keep(Mask32x8 mask, F32x8 a) { return {_mm256_and_ps(mask.v, a.v)}; }
RVX_INLINE I32x8 keep(Mask32x8 mask, I32x8 a) { return {{_mm256_and_si256(_mm256_castps_si256(mask.v), a.v)}}; }
RVX_INLINE U8x32 add(U8x32 a, U8x32 b) { return {{_mm256_add_epi8(a.v, b.v)}}; }
RVX_INLINE U8x32 bitAnd(U8x32 a, U8x32 b) { return {{_mm256_and_si256(a.v, b.v)}}; }
RVX_INLINE U8x32 bitAndNot(U8x32 a, U8x32 b) { return {{_mm256_andnot_si256(b.v, a.v)}}; }
RVX_INLINE U8x32 bitOr(U8x32 a, U8x32 b) { return {{_mm256_or_si256(a.v, b.v)}}; }
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
    if constexpr (std::is_same_v<V, F32x8>) {
        return {_mm256_castsi256_ps(result)};
    } else {
        return {{result}};
    }
}

// Any vector from two halves of 16 bytes, each with its bytes in an order of its own.
template <class V>
RVX_INLINE V shuffledHalves(const typename V::Element *low, const typename V::Element *high, U8x32 order) {
    const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i *>(low));
    const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i *>(high));
    const __m256i bytes = _mm256_shuffle_epi8(_mm256_inserti128_si256(_mm256_castsi128_si256(a), b, 1), order.v);
    if constexpr (std::is_same_v<V, F32x8>) {
        return {_mm256_castsi256_ps(bytes)};
    } else {
        return {{bytes}};
    }
}

// All bits of the byte lanes that are equal.
RVX_INLINE U8x32 equal(U8x32 a, U8x32 b) { return {{_mm256_cmpeq_epi8(a.v, b.v)}}; }
// Lanes whose sign bit is set: of a float, of an integer.
RVX_INLINE Mask32x8 signs(F32x8 a) { return {_mm256_castsi256_ps(_mm256_srai_epi32(_mm256_castps_si256(a.v), 31))}; }
RVX_INLINE F32x8 bitXor(F32x8 a, F32x8 b) { return {_mm256_xor_ps(a.v, b.v)}; }
// Lanes in which a bit (a power of two) is set.
RVX_INLINE Mask32x8 hasBit(I32x8 a, std::int32_t bit) {
    const __m256i bits = _mm256_set1_epi32(bit);
    return {_mm256_castsi256_ps(_mm256_cmpeq_epi32(_mm256_and_si256(a.v, bits), bits))};
}

// ------------------------------------------------------------------------------------------------ conversions

RVX_INLINE F32x8 toF32(I32x8 a) { return {_mm256_cvtepi32_ps(a.v)}; }
// Only for values inside the int32 range: clamp in float first.
RVX_INLINE I32x8 roundToEven(F32x8 a) { return {{_mm256_cvtps_epi32(a.v)}}; }
RVX_INLINE I32x8 truncate(F32x8 a) { return {{_mm256_cvttps_epi32(a.v)}}; }
RVX_INLINE I32x8 widenLow(I16x16 a) { return {{_mm256_cvtepi16_epi32(_mm256_castsi256_si128(a.v))}}; }
RVX_INLINE I32x8 widenHigh(I16x16 a) { return {{_mm256_cvtepi16_epi32(_mm256_extracti128_si256(a.v, 1))}}; }
// Lanes in order: first the eight of `low`, then the eight of `high`.
RVX_INLINE I16x16 narrowSaturated(I32x8 low, I32x8 high) {
    return {{_mm256_permute4x64_epi64(_mm256_packs_epi32(low.v, high.v), 0xd8)}};
}
// Lanes 0..255 as the bytes of an integer, lane 0 the lowest.
RVX_INLINE std::uint64_t packedBytes(I32x8 a) {
    const __m128i words = _mm_packs_epi32(_mm256_castsi256_si128(a.v), _mm256_extracti128_si256(a.v, 1));
    return static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_packus_epi16(words, words)));
}
// Pairs (a[i], b[i]) of the lanes 0..3 and 8..11, and of the lanes 4..7 and 12..15: the two halves of each 128-bit
// lane. narrowInLane puts 32-bit results of such pairs back in order.
RVX_INLINE I16x16 pairsInLaneLow(I16x16 a, I16x16 b) { return {{_mm256_unpacklo_epi16(a.v, b.v)}}; }
RVX_INLINE I16x16 pairsInLaneHigh(I16x16 a, I16x16 b) { return {{_mm256_unpackhi_epi16(a.v, b.v)}}; }
RVX_INLINE I16x16 narrowInLane(I32x8 low, I32x8 high) { return {{_mm256_packs_epi32(low.v, high.v)}}; }
// The lanes 0, 2, 4 ... and the lanes 1, 3, 5 ...; interleaveLowHalves puts 32-bit results of such lanes back in order.
RVX_INLINE I32x8 widenEven(I16x16 a) { return mulAddPairs(a, splatPair(1, 0)); }
RVX_INLINE I32x8 widenOdd(I16x16 a) { return {{_mm256_srai_epi32(a.v, 16)}}; }
// The low halves of the 32-bit lanes, alternating: even[0], odd[0], even[1], odd[1] ...
RVX_INLINE I16x16 interleaveLowHalves(I32x8 even, I32x8 odd) {
    return {{_mm256_blend_epi16(even.v, _mm256_slli_epi32(odd.v, 16), 0xaa)}};
}
RVX_INLINE U16x16 narrowSaturatedUnsigned(I32x8 low, I32x8 high) {
    return {{_mm256_permute4x64_epi64(_mm256_packus_epi32(low.v, high.v), 0xd8)}};
}

// 1.0 where one of eight mask bytes is non-zero, else 0.0.
template <class Span> RVX_INLINE F32x8 loadSelection(const std::uint8_t *mask, Span span) {
    const __m256i off = _mm256_cmpeq_epi32(loadI32(mask, span).v, _mm256_setzero_si256());
    return {_mm256_andnot_ps(_mm256_castsi256_ps(off), _mm256_set1_ps(1.0f))};
}

} // namespace rvxcv
