// Eight 64-bit integers, where a contract asks for exact products: the results of the lanes 0, 2, 4, 6 of 32-bit
// vectors, and of their lanes 1, 3, 5, 7. Sums wrap.
#pragma once

#include "kernel/vec/compare.h"
#include "kernel/vec/types.h"

#include <algorithm>

namespace rvxcv {

struct I64x8 {
    I64x4 even, odd;
};

RVX_INLINE I64x8 splatWide(std::int64_t a) {
    const I64x4 all{{_mm256_set1_epi64x(a)}};
    return {all, all};
}
RVX_INLINE I64x8 add(I64x8 a, I64x8 b) {
    return {{{_mm256_add_epi64(a.even.v, b.even.v)}}, {{_mm256_add_epi64(a.odd.v, b.odd.v)}}};
}
// Exact.
RVX_INLINE I64x8 mulWide(I32x8 a, I32x8 b) {
    const __m256i odd = _mm256_mul_epi32(_mm256_srli_epi64(a.v, 32), _mm256_srli_epi64(b.v, 32));
    return {{{_mm256_mul_epi32(a.v, b.v)}}, {{odd}}};
}
RVX_INLINE I64x8 mulWide(I32x8 a, std::int32_t b) {
    const __m256i all = _mm256_set1_epi32(b);
    return {{{_mm256_mul_epi32(a.v, all)}}, {{_mm256_mul_epi32(_mm256_srli_epi64(a.v, 32), all)}}};
}
RVX_INLINE Mask32x8 greater(I64x8 a, I64x8 b) {
    const __m256i even = _mm256_cmpgt_epi64(a.even.v, b.even.v), odd = _mm256_cmpgt_epi64(a.odd.v, b.odd.v);
    return {_mm256_castsi256_ps(_mm256_blend_epi32(even, odd, 0xaa))};
}
// a, and where b > c a with the bits of `change` flipped.
RVX_INLINE I64x8 changedWhereGreater(I64x8 a, I64x8 change, I64x8 b, I64x8 c) {
    const __m256i even = _mm256_and_si256(_mm256_cmpgt_epi64(b.even.v, c.even.v), change.even.v);
    const __m256i odd = _mm256_and_si256(_mm256_cmpgt_epi64(b.odd.v, c.odd.v), change.odd.v);
    return {{{_mm256_xor_si256(a.even.v, even)}}, {{_mm256_xor_si256(a.odd.v, odd)}}};
}

// Division by 2^bits toward minus infinity, for any number of bits; a negative one multiplies, and what does not fit in
// 64 bits is lost.
class BinaryScale {
public:
    explicit BinaryScale(std::int32_t bits)
        : right_(_mm_cvtsi64_si128(std::clamp(bits, 0, 63))),
          left_(_mm_cvtsi64_si128(bits < 0 ? std::min(-std::int64_t{bits}, std::int64_t{64}) : 0)),
          bias_(_mm256_srl_epi64(_mm256_set1_epi64x(INT64_MIN), right_)) {}

    RVX_INLINE I64x8 operator()(I64x8 a) const { return {{{scaled(a.even.v)}}, {{scaled(a.odd.v)}}}; }

private:
    // There is no arithmetic shift of 64-bit lanes: the sign travels as a bias.
    RVX_INLINE __m256i scaled(__m256i a) const {
        const __m256i biased = _mm256_xor_si256(a, _mm256_set1_epi64x(INT64_MIN));
        return _mm256_sll_epi64(_mm256_sub_epi64(_mm256_srl_epi64(biased, right_), bias_), left_);
    }
    __m128i right_, left_;
    __m256i bias_;
};

} // namespace rvxcv
