// Whole images through the fixed filters: the argument checks, the filters as the ring of rows takes them, and what
// becomes of their sums.
#pragma once

#include "filter/fixed_filter_sizes.h"
#include "filter/row_ring.h"
#include "kernel/checks.h"

#include <bit>

namespace rvxcv {

// ------------------------------------------------------------------------------------------------------ checks

// Kinds 0 to 4 and 6. Bits above the kind are flags; they must name at least one side.
constexpr bool isFilterBorder(BorderKind border) {
    constexpr BorderKind sides = BorderInMemoryTop | BorderInMemoryBottom | BorderInMemoryLeft | BorderInMemoryRight;
    const std::int32_t kind = border & 15;
    const bool flagged = (border & ~15) != 0;
    return (kind <= BorderMirrorRepeat || kind == BorderInMemory) && (!flagged || (border & sides) != 0);
}

// The arguments that every filter of the family has.
template <class T, class D> struct FilterCall {
    const T *src;
    std::int32_t srcStep;
    D *dst;
    std::int32_t dstStep;
    RoiSize roi;
    BorderKind border;
    T borderValue;
    std::uint8_t *buffer;

    // What comes before the mask; `divisor` is 1 where a filter has none.
    Checks check(std::int32_t divisor = 1) const {
        Checks checks;
        checks.pointers(src, dst, buffer).size(roi).steps(rowBytes<T>(roi.width), srcStep);
        checks.steps(rowBytes<D>(roi.width), dstStep).multiples(sizeof(T), srcStep).multiples(sizeof(D), dstStep);
        checks.require(isFilterBorder(border), StatusBadArgument).require(divisor != 0, StatusBadArgument);
        return checks;
    }
};

// ---------------------------------------------------------------------------------------- what becomes of a sum

// Sums of bytes come as two vectors: those of the strip's even columns and those of the odd ones.

struct Store16s {
    using Element = std::int16_t;
    static constexpr bool truncatesLast = false;

    RVX_INLINE void store(std::int16_t *dst, const I16x16 (&sums)[2]) const {
        const I16x16 low = pairsInLaneLow(sums[0], sums[1]), high = pairsInLaneHigh(sums[0], sums[1]);
        rvxcv::store(dst, lowThenLow(low, high));
        rvxcv::store(dst + 16, highThenHigh(low, high));
    }
};

// sum * (1 / divisor) in single precision, saturated. Whole blocks of 16 pixels are rounded to nearest even, the width
// modulo 16 at a row's end is truncated: the pipeline's rule. Sums of these filters are below 2^14 and quotients no
// larger, so that saturating behind the conversion (16 bits hold every quotient) is the same as clamping before it.
//
// Where the two roundings of that product cannot show, integers do the same faster. A quotient that is no tie lies at
// least 1 / (2 * divisor) from the middle between two integers and the roundings move it by less, so it goes to the
// nearest integer either way; odd divisors have no ties, and with powers of two the product is exact. (Ties of other
// even divisors go where the roundings take them.)
class Division8s {
public:
    enum class Method : std::uint8_t { floats, truncatedFloats, none, shift, multiply };

    explicit Division8s(std::int32_t divisor) : reciprocal_(1.0f / static_cast<float>(divisor)) {
        if (divisor < 1 || divisor >= limit) {
            return;
        }
        const auto d = static_cast<std::uint32_t>(divisor);
        if (std::has_single_bit(d)) {
            method_ = d == 1 ? Method::none : Method::shift;
            bits_ = std::countr_zero(d);
            half_ = static_cast<std::int16_t>(d / 2 - (d > 1 ? 1 : 0));
        } else if (d % 2 != 0) {
            // floor(n / d) = (2 n * factor >> 16) >> bits for all n < 2^15: 2^bits >= d bounds the factor's excess.
            method_ = Method::multiply;
            bits_ = std::bit_width(d);
            half_ = static_cast<std::int16_t>(d / 2);
            factor_ = static_cast<std::uint16_t>(((std::uint32_t{1} << (15 + bits_)) + d - 1) / d);
        }
    }

    Method method() const { return method_; }

    template <Method method> RVX_INLINE I16x16 quotient(I16x16 sum) const {
        if constexpr (method == Method::none) {
            return sum;
        } else if constexpr (method == Method::shift) {
            const I16x16 odd = bitAnd(shiftRight(sum, bits_), splat(std::int16_t{1}));
            return shiftRight(add(add(sum, splat(half_)), odd), bits_);
        } else if constexpr (method == Method::multiply) {
            const I16x16 n = add(abs(sum), splat(half_));
            const U16x16 product = mulHigh(U16x16{{add(n, n).v}}, splat(factor_));
            return mulSign(I16x16{{shiftRight(product, bits_).v}}, sum);
        } else {
            const auto convert = [](F32x8 a) { return method == Method::floats ? roundToEven(a) : truncate(a); };
            const F32x8 factor = splat(reciprocal_);
            return interleaveLowHalves(convert(mul(toF32(widenEven(sum)), factor)),
                                       convert(mul(toF32(widenOdd(sum)), factor)));
        }
    }

private:
    static constexpr std::int32_t limit = 1 << 14; // keeps sum + divisor / 2 below 2^15

    float reciprocal_;
    Method method_ = Method::floats;
    int bits_ = 0;
    std::int16_t half_ = 0;
    std::uint16_t factor_ = 0;
};

template <Division8s::Method method> struct StoreQuotients8s {
    Division8s division;

    RVX_INLINE void store(std::int8_t *dst, const I16x16 (&sums)[2]) const {
        const I8x32 bytes = narrowSignedInLane(division.template quotient<method>(sums[0]),
                                               division.template quotient<method>(sums[1]));
        rvxcv::store(dst, reorderedInHalves<0, 8, 1, 9, 2, 10, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15>(bytes));
    }
};

struct StoreDivided8s {
    using Method = Division8s::Method;
    using Element = std::int8_t;
    static constexpr bool truncatesLast = true;
    Division8s division;

    // Calls function(sink) with a sink that knows its method when it is compiled: decided once, not for every block.
    template <class Function> RVX_INLINE void withMethod(const Function &function) const {
        switch (division.method()) {
        case Method::none:
            return function(StoreQuotients8s<Method::none>{division});
        case Method::shift:
            return function(StoreQuotients8s<Method::shift>{division});
        case Method::multiply:
            return function(StoreQuotients8s<Method::multiply>{division});
        default:
            return function(StoreQuotients8s<Method::floats>{division});
        }
    }
    template <class Function> RVX_INLINE void withTruncation(const Function &function) const {
        function(StoreQuotients8s<Method::truncatedFloats>{division});
    }
};

// The nearest integer to sum / area by multiplication, exact for every sum of `area` bytes. Areas are odd: no ties.
template <int area> struct RoundedMean;

template <> struct RoundedMean<9> { // sum / 9 + 1 / 2 in one rounding multiplication
    static constexpr std::int32_t factor = 3641;
    static constexpr std::int32_t of(std::int32_t sum) { return (sum * factor + (1 << 14)) >> 15; }
    static RVX_INLINE I16x16 of(I16x16 sum) { return mulRounded(sum, splat(std::int16_t{factor})); }
};

template <> struct RoundedMean<25> { // (sum + 12) / 25, rounded down
    static constexpr std::int32_t factor = 5243;
    static constexpr std::int32_t of(std::int32_t sum) { return (((sum + 12) * factor) >> 16) >> 1; }
    static RVX_INLINE I16x16 of(I16x16 sum) {
        const U16x16 numerator{{add(sum, splat(std::int16_t{12})).v}};
        return {{shiftRight<1>(mulHigh(numerator, splat(std::uint16_t{factor}))).v}};
    }
};

template <int area> constexpr bool meansAreExact() {
    for (std::int32_t sum = 0; sum <= 255 * area; ++sum) {
        if (RoundedMean<area>::of(sum) != (2 * sum + area) / (2 * area)) {
            return false;
        }
    }
    return true;
}
static_assert(meansAreExact<9>() && meansAreExact<25>());

template <int area> struct StoreMean8u {
    using Element = std::uint8_t;
    static constexpr bool truncatesLast = false;

    RVX_INLINE void store(std::uint8_t *dst, const I16x16 (&sums)[2]) const {
        const I16x16 even = RoundedMean<area>::of(sums[0]), odd = RoundedMean<area>::of(sums[1]);
        rvxcv::store(dst, U8x32{{bitOr(even, shiftLeft<8>(odd)).v}}); // means are bytes
    }
};

template <int parts> struct Store32f {
    using Element = float;
    static constexpr bool truncatesLast = false;

    RVX_INLINE void store(float *dst, const F32x8 (&sums)[parts]) const {
        for (int i = 0; i < parts; ++i) {
            rvxcv::store(dst + 8 * i, sums[i]);
        }
    }
};

// ------------------------------------------------------------------------------------------------- the filters

// Integer filters of bytes: two vectors of sums, those of the even columns of a strip and those of the odd ones.
struct ByteFilter {
    using Pixel = std::uint8_t;
    using Vector = I16x16;
    static constexpr int parts = 2, columns = 32;
};

// kernel[first] and the coefficient behind it for two neighbouring bytes; those outside the kernel are zero.
template <const auto &kernel, int first> RVX_INLINE I16x16 plusBytePair(I16x16 sum, U8x32 bytes) {
    constexpr int even = first >= 0 ? kernel[first] : 0, odd = first + 1 < kernel.taps ? kernel[first + 1] : 0;
    if constexpr (even == 0 && odd == 0) {
        return sum;
    } else {
        return add(sum, mulAddPairs(bytes, splatBytePair<I8x32>(even, odd)));
    }
}

// Sums along a row of bytes: neighbouring bytes are multiplied and added at once. From byte 2 * j - reach on, the pairs
// lie under the taps 2 * j and 2 * j + 1 of an even column and under the taps 2 * j - 1 and 2 * j of the odd one.
template <const auto &kernel> RVX_INLINE void sumAlong(const std::uint8_t *row, I16x16 (&sums)[2]) {
    const auto bytesAt = [&](int i) {
        const U8x32 bytes = load<U8x32>(row + i - kernel.reach);
        return kernel.taps == 3 ? inRegister(bytes) : bytes; // longer kernels are short of registers
    };
    [&]<int... j>(std::integer_sequence<int, j...>) {
        const U8x32 bytes[] = {bytesAt(2 * j)...};
        I16x16 even = splat(std::int16_t{0}), odd = even;
        ((even = plusBytePair<kernel, 2 * j>(even, bytes[j])), ...);
        ((odd = plusBytePair<kernel, 2 * j - 1>(odd, bytes[j])), ...);
        sums[0] = even;
        sums[1] = odd;
    }
    (std::make_integer_sequence<int, kernel.reach + 1>{});
}

// One separable filter.
template <const auto &row, const auto &column> struct Separable : ByteFilter {
    static constexpr int taps = row.taps, planes = 1;

    static RVX_INLINE void along(const std::uint8_t *source, I16x16 (&sums)[planes][parts]) {
        sumAlong<row>(source, sums[0]);
    }
    template <class At> static RVX_INLINE I16x16 down(const At &at) {
        return exactSum<column>([&](int i) { return at(0, i); });
    }
};

// Float filters: a row stage of one kernel or two, then a column stage.
template <int vectors> struct FloatFilter {
    using Pixel = float;
    using Vector = F32x8;
    static constexpr int parts = vectors, columns = 8 * vectors;

    template <const auto &kernel> static RVX_INLINE void sumAlong(const float *row, F32x8 (&sums)[parts]) {
        for (int part = 0; part < parts; ++part) {
            sums[part] = chainedSum<kernel>([&](int i) { return load<F32x8>(row + 8 * part + i - kernel.reach); });
        }
    }
};

template <const auto &row, const auto &column, class Finish = Unscaled> struct Staged : FloatFilter<2> {
    static constexpr int taps = row.taps, planes = 1;

    static RVX_INLINE void along(const float *source, F32x8 (&sums)[planes][parts]) { sumAlong<row>(source, sums[0]); }
    template <class At> static RVX_INLINE F32x8 down(const At &at) {
        return Finish{}(chainedSum<column>([&](int i) { return at(0, i); }));
    }
};

// ----------------------------------------------------------------------------------------------- whole images

template <class Filter, class T, class D, class Sink> void filterImage(const FilterCall<T, D> &call, const Sink &sink) {
    constexpr int reach = Filter::taps / 2;
    using Rows = BorderedRows<T, reach>;
    const Border border(call.border);
    Scratch scratch(call.buffer, intermediateRows<T>(call.roi.width, Filter::taps) * Filter::planes + smallRoom);
    auto *const constantRow = scratch.take<T>(Rows::constantElements(call.roi.width), 1);
    const Rows source({call.src, call.srcStep}, call.roi, border, call.borderValue, constantRow);
    RowRing<Filter, Sink>(source, {call.dst, call.dstStep}, call.roi, border, call.borderValue, scratch, sink).run();
}

// The member of a filter for a mask. A filter without a 5x5 form is never asked for it.
template <class Filter, class D, class Sink>
void filterByMask(const FilterCall<std::uint8_t, D> &call, MaskCode mask, const Sink &sink) {
    if constexpr (requires { typename Filter::Sums5; }) {
        if (mask == Mask5x5) {
            return filterImage<typename Filter::Sums5>(call, sink);
        }
    }
    filterImage<typename Filter::Sums3>(call, sink);
}

template <class Filter> void filterByMask(const FilterCall<float, float> &call, MaskCode mask) {
    if constexpr (requires { typename Filter::Floats5; }) {
        if (mask == Mask5x5) {
            return filterImage<typename Filter::Floats5>(call, Store32f<Filter::Floats5::parts>{});
        }
    }
    filterImage<typename Filter::Floats3>(call, Store32f<Filter::Floats3::parts>{});
}

} // namespace rvxcv
