// What the row and the column stage of the separable pipeline share: the sums of one unit of sixteen elements, and how
// sums become destination elements.
//
// Integer members divide by a product with the reciprocal, clamp while still in float (a sum can exceed every integer
// type), and round by a rule that is part of their results: the first W - W mod 16 pixels of a row to nearest even, the
// last W mod 16 pixels toward zero. So a unit is stored with a rounding as a template argument, and the stages never
// compute a row's last pixels in a vector that overlaps the pixels before them.
#pragma once

#include "filter/tap_chain.h"

#include <algorithm>
#include <limits>

namespace rvxcv {

// Elements that are summed and stored together.
constexpr int unit = 16;

// ------------------------------------------------------------------------------------------------------- sums

struct FloatSum {
    F32x8 first, second; // elements 0..7, 8..15
};
struct LowSum {
    I16x16 all; // wrapping 16-bit sums
};

RVX_INLINE void storeUnit(float *dst, const FloatSum &sum, Full) {
    store(dst, sum.first);
    store(dst + 8, sum.second);
}
RVX_INLINE void storeUnit(float *dst, const FloatSum &sum, Part part) {
    if (part.n < 8) {
        store(dst, sum.first, part);
        return;
    }
    store(dst, sum.first);
    if (part.n > 8) {
        store(dst + 8, sum.second, Part{part.n - 8});
    }
}

// Wrapping 32-bit sums, in the two orders in which pairs of taps are cheapest to form.
struct AlternatingSum {
    I32x8 even, odd; // elements 0, 2, 4 ... and 1, 3, 5 ...
};
struct InLaneSum {
    I32x8 low, high; // elements 0..3 and 8..11, 4..7 and 12..15
};

// -------------------------------------------------------------------------------------------------- the results

struct Nearest {
    static RVX_INLINE I32x8 convert(F32x8 a) { return roundToEven(a); }
    static RVX_INLINE F32x8 whole(F32x8 a) { return wholeNearest(a); }
};
struct Truncated {
    static RVX_INLINE I32x8 convert(F32x8 a) { return truncate(a); }
    static RVX_INLINE F32x8 whole(F32x8 a) { return wholeTowardZero(a); }
};

// How an output rounds a row's last pixels.
template <class Output> using LastRounding = std::conditional_t<Output::truncatesLast, Truncated, Nearest>;

// Sums as they are.
struct Undivided {
    static constexpr bool truncatesLast = false;
    explicit Undivided(std::int32_t) {}

    template <class, class Span> RVX_INLINE void store(float *dst, const FloatSum &sum, Span span) const {
        storeUnit(dst, sum, span);
    }
};

// Sums divided as floats, saturated to D and rounded.
template <class D> class Divided {
public:
    static constexpr bool truncatesLast = true;

    explicit Divided(std::int32_t divisor) : reciprocal_(splat(1.0f / static_cast<float>(divisor))) {
        const bool isOne = divisor == 1 || divisor == -1;
        belowOne_ = isOne ? splat(0x1.fffffep-1f * static_cast<float>(divisor)) : reciprocal_;
    }

    template <class Rounding, class Span> RVX_INLINE void store(D *dst, const FloatSum &sum, Span span) const {
        static_assert(std::is_same_v<D, std::uint16_t>);
        const I32x8 first = quotient<Rounding>(sum.first), second = quotient<Rounding>(sum.second);
        rvxcv::store(dst, narrowSaturatedUnsigned(first, second), span);
    }
    template <class Rounding, class Span> RVX_INLINE void store(D *dst, const AlternatingSum &sum, Span span) const {
        const I32x8 even = whole<Rounding>(sum.even), odd = whole<Rounding>(sum.odd);
        rvxcv::store(dst, reorderedInHalves<0, 4, 1, 5, 2, 6, 3, 7>(narrowInLane(even, odd)), span);
    }
    template <class Rounding, class Span> RVX_INLINE void store(D *dst, const InLaneSum &sum, Span span) const {
        const I16x16 result = narrowInLane(whole<Rounding>(sum.low), whole<Rounding>(sum.high));
        if constexpr (sizeof(D) == 1) {
            storeSaturated(dst, result, span);
        } else {
            rvxcv::store(dst, result, span);
        }
    }

private:
    template <class Rounding> RVX_INLINE I32x8 quotient(F32x8 sum) const {
        constexpr auto high = static_cast<float>(std::numeric_limits<D>::max());
        return Rounding::convert(max(min(mul(sum, reciprocal_), splat(high)), splat(0.0f)));
    }
    // Quotients of 32-bit sums are saturated when they are narrowed. Before, only 2^31 has no int32, which takes a
    // divisor of 1 or -1. The number next to 1 then gives the same nearest integers, as far as they are not saturated.
    template <class Rounding> RVX_INLINE I32x8 whole(I32x8 sum) const {
        if constexpr (std::is_same_v<Rounding, Nearest>) {
            return Rounding::convert(mul(toF32(sum), belowOne_));
        } else {
            return Rounding::convert(min(mul(toF32(sum), reciprocal_), splat(0x1.fffffep30f)));
        }
    }

    F32x8 reciprocal_, belowOne_;
};

// 16-bit sums divided as integers: toward zero in every pixel, saturated (-32768 / -1 is 32767). Exact in float: the
// quotient of |sum| + 1/2 lies at least 1 / (2 |divisor|) from every integer, and two roundings move it by less.
class DividedLow {
public:
    static constexpr bool truncatesLast = false;

    explicit DividedLow(std::int32_t divisor) : reciprocal_(splat(1.0f / static_cast<float>(divisor))) {}

    template <class, class Span> RVX_INLINE void store(std::int16_t *dst, const LowSum &sum, Span span) const {
        const I32x8 low = quotient(widenLow(sum.all)), high = quotient(widenHigh(sum.all));
        rvxcv::store(dst, narrowSaturated(low, high), span);
    }

private:
    RVX_INLINE I32x8 quotient(I32x8 sum) const {
        const F32x8 exact = toF32(sum);
        return truncate(mul(add(exact, copySign(splat(0.5f), exact)), reciprocal_));
    }

    F32x8 reciprocal_;
};

// ----------------------------------------------------------------------------------- sums of one tap at a time

// Arithmetic of the chains: how elements and taps are loaded, and how a product joins a sum.
struct FloatArithmetic {
    using Sum = FloatSum;
    using Coefficient = float;
    using Tap = F32x8;

    static RVX_INLINE F32x8 tap(const float *p) { return splat(loadScalar(p)); }

    template <class T> static RVX_INLINE FloatSum value(const T *p, Full) {
        return {loadF32(p, Full{}), loadF32(p + 8, Full{})};
    }
    template <class T> static RVX_INLINE FloatSum value(const T *p, Part part) {
        if (part.n <= 8) {
            return {loadF32(p, part), splat(0.0f)};
        }
        return {loadF32(p, Full{}), loadF32(p + 8, Part{part.n - 8})};
    }

    static RVX_INLINE FloatSum first(F32x8 tap, const FloatSum &value) {
        return {firstTap(tap, value.first), firstTap(tap, value.second)};
    }
    static RVX_INLINE FloatSum next(const FloatSum &sum, F32x8 tap, const FloatSum &value) {
        return {nextTap(sum.first, tap, value.first), nextTap(sum.second, tap, value.second)};
    }
};

// Low 16 bits of products, wrapping 16-bit sums.
struct LowArithmetic {
    using Sum = LowSum;
    using Coefficient = std::int16_t;
    using Tap = I16x16;

    static RVX_INLINE I16x16 tap(const std::int16_t *p) { return splat(loadScalar(p)); }

    template <class Span> static RVX_INLINE LowSum value(const std::int16_t *p, Span span) {
        return {load<I16x16>(p, span)};
    }

    static RVX_INLINE LowSum first(I16x16 tap, const LowSum &value) { return {mulLow(tap, value.all)}; }
    static RVX_INLINE LowSum next(const LowSum &sum, I16x16 tap, const LowSum &value) {
        return {add(sum.all, mulLow(tap, value.all))};
    }
};

// A kernel's 16-bit taps in pairs, as the integer multiply-add takes them. `taps` is the kernel's length when it is
// fixed: the first `pairs` pairs then stay in registers. 0 when it is any.
template <int taps, int pairs> class TapPairs {
public:
    TapPairs(const std::int16_t *kernel, std::int32_t kernelSize) : kernel_(kernel), size_(kernelSize) {
        for (int p = 0; p < pairs; ++p) {
            fixed_[p] = splatPair(kernel + 2 * p);
        }
    }

    RVX_INLINE int count() const { return taps != 0 ? taps : size_; }
    RVX_INLINE I16x16 operator[](int p) const {
        if constexpr (taps != 0) {
            return fixed_[p];
        } else {
            return splatPair(kernel_ + 2 * p);
        }
    }

private:
    const std::int16_t *kernel_;
    int size_;
    I16x16 fixed_[std::max(pairs, 1)];
};

} // namespace rvxcv
