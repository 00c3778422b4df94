// Whole images through the fixed filters: the argument checks, the loops over rows, and what becomes of an integer sum.
#pragma once

#include "filter/fixed_filter_sizes.h"
#include "filter/gradient_rows.h"
#include "kernel/checks.h"
#include "kernel/scratch.h"

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

struct Store16s {
    static constexpr Tail tail = Tail::overlap;
    static constexpr bool rereads = false;
    std::int16_t *dst;

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span, I16x16 sum) const {
        store(dst + x, sum, span);
    }
};

// sum * (1 / divisor) in single precision, saturated. Whole blocks of 16 pixels are rounded to nearest even, the width
// modulo 16 at a row's end is truncated: the pipeline's rule, and the reason why this tail must not overlap. Sums of
// these filters are below 2^14 and quotients no larger, so that saturating behind the conversion (16 bits hold every
// quotient) is the same as clamping before it.
//
// Where the two roundings of that product cannot show, integers do the same faster. A quotient that is no tie lies at
// least 1 / (2 * divisor) from the middle between two integers and the roundings move it by less, so it goes to the
// nearest integer either way; odd divisors have no ties, and with powers of two the product is exact. (Ties of other
// even divisors go where the roundings take them.)
class StoreDivided8s {
public:
    static constexpr Tail tail = Tail::partial;
    static constexpr bool rereads = false;

    explicit StoreDivided8s(std::int32_t divisor) : reciprocal_(1.0f / static_cast<float>(divisor)) {
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

    StoreDivided8s at(std::int8_t *row) const {
        StoreDivided8s sink = *this;
        sink.dst_ = row;
        return sink;
    }

    RVX_INLINE void operator()(std::ptrdiff_t x, Full span, I16x16 sum) const {
        switch (method_) {
        case Method::none:
            storeSaturated(dst_ + x, sum, span);
            break;
        case Method::shift: {
            const I16x16 odd = bitAnd(shiftRight(sum, bits_), splat(std::int16_t{1}));
            storeSaturated(dst_ + x, shiftRight(add(add(sum, splat(half_)), odd), bits_), span);
            break;
        }
        case Method::multiply: {
            const I16x16 n = add(abs(sum), splat(half_));
            const U16x16 product = mulHigh(U16x16{{add(n, n).v}}, splat(factor_));
            storeSaturated(dst_ + x, mulSign(I16x16{{shiftRight(product, bits_).v}}, sum), span);
            break;
        }
        case Method::floats:
            storeProduct(x, span, sum, [](F32x8 a) { return roundToEven(a); });
            break;
        }
    }
    RVX_INLINE void operator()(std::ptrdiff_t x, Part span, I16x16 sum) const {
        storeProduct(x, span, sum, [](F32x8 a) { return truncate(a); });
    }

private:
    enum class Method : std::uint8_t { floats, none, shift, multiply };
    static constexpr std::int32_t limit = 1 << 14; // keeps sum + divisor / 2 below 2^15

    template <class Span, class Convert>
    RVX_INLINE void storeProduct(std::ptrdiff_t x, Span span, I16x16 sum, const Convert &convert) const {
        const F32x8 factor = splat(reciprocal_);
        const I32x8 even = convert(mul(toF32(widenEven(sum)), factor)),
                    odd = convert(mul(toF32(widenOdd(sum)), factor));
        storeSaturated(dst_ + x, interleaveLowHalves(even, odd), span);
    }

    std::int8_t *dst_ = nullptr;
    float reciprocal_;
    Method method_ = Method::floats;
    int bits_ = 0;
    std::int16_t half_ = 0;
    std::uint16_t factor_ = 0;
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
    static constexpr Tail tail = Tail::overlap;
    static constexpr bool rereads = false;
    std::uint8_t *dst;

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span, I16x16 sum) const {
        storeSaturated(dst + x, RoundedMean<area>::of(sum), span);
    }
};

// ----------------------------------------------------------------------------------------------- whole images

// An integer filter of an 8u image; `makeSink(row)` says what becomes of a destination row's sums.
template <class Filter, class D, class MakeSink>
void filterImage(const FilterCall<std::uint8_t, D> &call, const MakeSink &makeSink) {
    constexpr int reach = Filter::taps / 2;
    const Border border(call.border);
    const ColumnMargins<reach> margins(border, call.roi.width);
    const BorderedRows<std::uint8_t, reach> source({call.src, call.srcStep}, call.roi, border, call.borderValue,
                                                   call.buffer);
    const Plane dst{call.dst, call.dstStep};
    for (std::int64_t y = 0; y < call.roi.height; ++y) {
        const std::uint8_t *rows[Filter::taps];
        source.around(y, rows);
        filterRow<Filter>(rows, margins, call.borderValue, makeSink(dst.row(y)));
    }
}

// A float filter is a row stage of one or more kernels and a sum over the columns of their results:
//
//     static constexpr int taps, planes;
//     static void rows(row, margins, borderValue, start, count, out);              planes results of one row
//     static F32x8 column(const float *const (&rows)[planes][taps], x, span);

template <const auto &rowKernel, const auto &columnKernel, class Finish = Unscaled> struct Staged {
    static constexpr int taps = rowKernel.taps, planes = 1;

    static RVX_INLINE void rows(const float *source, const ColumnMargins<rowKernel.reach> &margins, float borderValue,
                                std::int64_t start, std::int64_t count, float *const (&out)[planes]) {
        rowStage<rowKernel>(source, margins, borderValue, start, count, out);
    }
    template <class Span>
    static RVX_INLINE F32x8 column(const float *const (&sums)[planes][taps], std::ptrdiff_t x, Span span) {
        return Finish{}(columnSum<columnKernel>(sums[0], x, span));
    }
};

template <class Filter> struct StagedColumns {
    static constexpr bool rereads = false;
    const float *rows[Filter::planes][Filter::taps];
    float *dst;

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        store(dst + x, Filter::column(rows, x, span), span);
    }
};

// A float filter of an image: row stages into a ring of `taps` rows, columns over the ring. A row goes through both
// stages in chunks, so that the newest results are still in the first-level cache; narrow strips over the whole height
// would keep the entire ring there, but read the images in pieces that the processor cannot prefetch, and are slower.
template <class Filter> void filterImage(const FilterCall<float, float> &call) {
    constexpr int taps = Filter::taps, reach = taps / 2, planes = Filter::planes;
    constexpr std::int64_t chunkColumns = 512;
    const std::int64_t width = call.roi.width;
    const Border border(call.border);
    const ColumnMargins<reach> margins(border, width);

    Scratch scratch(call.buffer, intermediateRows<float>(width, taps) * planes);
    // Rows of the ring are an odd number of vectors apart, so that they do not fall on the same cache sets.
    const std::int64_t pitch = roundUp(width, 16) + 8;
    auto *const ring = scratch.take<float>(planes * taps * pitch, 32);
    auto *const constantRow = scratch.take<float>(BorderedRows<float, reach>::constantElements(width));
    const BorderedRows<float, reach> source({call.src, call.srcStep}, call.roi, border, call.borderValue, constantRow);
    const Plane dst{call.dst, call.dstStep};

    float *slots[planes][taps]; // the oldest row first
    for (int i = 0; i < planes * taps; ++i) {
        slots[i / taps][i % taps] = ring + i * pitch;
    }
    for (std::int64_t y = -reach; y < call.roi.height + reach; ++y) {
        for (auto &plane : slots) {
            std::rotate(plane, plane + 1, plane + taps);
        }
        const float *const row = source.row(y);
        for (std::int64_t start = 0; start < width; start += chunkColumns) {
            const std::int64_t count = std::min(width - start, chunkColumns);
            float *newest[planes];
            StagedColumns<Filter> columns;
            for (int p = 0; p < planes; ++p) {
                newest[p] = slots[p][taps - 1] + start;
                for (int i = 0; i < taps; ++i) {
                    columns.rows[p][i] = slots[p][i] + start;
                }
            }
            Filter::rows(row, margins, call.borderValue, start, count, newest);
            if (y >= reach) {
                columns.dst = dst.row(y - reach) + start;
                walkRow<8, Tail::overlap>(count, columns);
            }
        }
    }
}

// The member of a filter for a mask. A filter without a 5x5 form is never asked for it.
template <class Filter, class D, class MakeSink>
void filterByMask(const FilterCall<std::uint8_t, D> &call, MaskCode mask, const MakeSink &makeSink) {
    if constexpr (requires { typename Filter::Sums5; }) {
        if (mask == Mask5x5) {
            return filterImage<typename Filter::Sums5>(call, makeSink);
        }
    }
    filterImage<typename Filter::Sums3>(call, makeSink);
}

template <class Filter> void filterByMask(const FilterCall<float, float> &call, MaskCode mask) {
    if constexpr (requires { typename Filter::Floats5; }) {
        if (mask == Mask5x5) {
            return filterImage<typename Filter::Floats5>(call);
        }
    }
    filterImage<typename Filter::Floats3>(call);
}

} // namespace rvxcv
