// Colour gradient to grey: the norm over three interleaved channels. Pointwise; three vectors are taken apart into one
// per channel, and each norm is written once per type.
//
// The integer L2 norms are roots of a third of a sum of squares S, rounded to the nearest integer r:
//
//     r >= k   when   sqrt(S / 3) >= k - 1/2   when   S >= 3 k (k - 1) + 3/4   when   S > 3 k (k - 1)
//
// as S is an integer. So S may be off by half a unit on either side of the limit without a change in r. The root of
// (S + 1/4) / 3 puts the limit midway between two integers: for bytes single precision is then good enough (the test
// goes through all S); 16-bit pixels compare integers where the single-precision root is not sure.
#include "frame/api.h"
#include "kernel/channels.h"
#include "kernel/checks.h"
#include "kernel/plane.h"
#include "kernel/rows.h"

namespace rvxcv {
namespace {

struct LargestChannel {
    template <class V> static RVX_INLINE V of(const ThreeChannels<V> &a) { return max(max(a.c0, a.c1), a.c2); }
    static RVX_INLINE F32x8 of(const ThreeChannels<F32x8> &a) { return max(max(abs(a.c0), abs(a.c1)), abs(a.c2)); }
};

struct SumOfChannels {
    // * 1365 / 2^12 with the half added is * 10920 / 2^15 rounded, ties up.
    static RVX_INLINE U8x32 of(const ThreeChannels<U8x32> &a) {
        const I16x16 third = splat(std::int16_t{8 * 1365});
        const I8x32 ones = splat(std::int8_t{1});
        const I16x16 low = add(mulAddPairs(pairsInLaneLow(a.c0, a.c1), ones), widenInLaneLow(a.c2));
        const I16x16 high = add(mulAddPairs(pairsInLaneHigh(a.c0, a.c1), ones), widenInLaneHigh(a.c2));
        return narrowUnsignedInLane(mulRounded(low, third), mulRounded(high, third));
    }
    // The sum is its low 16 bits and at most two carries. * 5461 / 2^14 is * 21844 / 2^16; a carry brings 21844.
    static RVX_INLINE U16x16 of(const ThreeChannels<U16x16> &a) {
        const U16x16 factor = splat(std::uint16_t{4 * 5461});
        const U16x16 two = add(a.c0, a.c1), low = add(two, a.c2);
        // Each -1 where nothing was carried.
        const U16x16 spared = add(equal(two, addSaturated(a.c0, a.c1)), equal(low, addSaturated(two, a.c2)));
        const U16x16 carries = mulLow(add(spared, splat(std::uint16_t{2})), factor);
        return add(add(mulHigh(low, factor), shiftRight<15>(mulLow(low, factor))), carries);
    }
    static RVX_INLINE F32x8 of(const ThreeChannels<F32x8> &a) { return add(add(abs(a.c0), abs(a.c1)), abs(a.c2)); }
};

struct RootOfSquares {
    static RVX_INLINE U8x32 of(const ThreeChannels<U8x32> &a) {
        const U8x32 low = pairsInLaneLow(a.c0, a.c1), high = pairsInLaneHigh(a.c0, a.c1);
        const U8x32 none = splat(std::uint8_t{0});
        const U8x32 thirdLow = pairsInLaneLow(a.c2, none), thirdHigh = pairsInLaneHigh(a.c2, none);
        const I16x16 first = narrowInLane(root(widenInLaneLow(low), widenInLaneLow(thirdLow)),
                                          root(widenInLaneHigh(low), widenInLaneHigh(thirdLow)));
        const I16x16 second = narrowInLane(root(widenInLaneLow(high), widenInLaneLow(thirdHigh)),
                                           root(widenInLaneHigh(high), widenInLaneHigh(thirdHigh)));
        return narrowUnsignedInLane(first, second);
    }
    static RVX_INLINE U16x16 of(const ThreeChannels<U16x16> &a) {
        const F32x8 lowRoot = sqrt(
                        squares(toF32(widenInLaneLow(a.c0)), toF32(widenInLaneLow(a.c1)), toF32(widenInLaneLow(a.c2)))),
                    highRoot = sqrt(squares(toF32(widenInLaneHigh(a.c0)), toF32(widenInLaneHigh(a.c1)),
                                            toF32(widenInLaneHigh(a.c2))));
        // The single-precision root is off by less than 1/60 (of 65535): rounded with 1/32 less and 1/32 more it gives
        // r twice, or r and a neighbour. Then S lies within 2^15 of the limit 3 r (r + 1) of the smaller one, and 16
        // bits that wrap tell on which side.
        const I16x16 least = rounded(lowRoot, highRoot, 0.5f - 1.0f / 32);
        const I16x16 most = rounded(lowRoot, highRoot, 0.5f + 1.0f / 32);
        const I16x16 c0{{a.c0.v}}, c1{{a.c1.v}}, c2{{a.c2.v}};
        const I16x16 sum = add(add(mulLow(c0, c0), mulLow(c1, c1)), mulLow(c2, c2));
        const I16x16 limit = mulLow(least, add(add(least, least), add(least, splat(std::int16_t{3}))));
        const I16x16 beyond = shiftRight(sub(limit, sum), 15);
        return {{add(least, bitAnd(sub(most, least), beyond)).v}};
    }
    static RVX_INLINE F32x8 of(const ThreeChannels<F32x8> &a) { return sqrt(squares(a.c0, a.c1, a.c2)); }

private:
    static RVX_INLINE F32x8 squares(F32x8 c0, F32x8 c1, F32x8 c2) { return fma(c2, c2, fma(c1, c1, mul(c0, c0))); }

    // Bytes, as pairs of c0 and c1, and of c2 and nothing.
    static RVX_INLINE I32x8 root(I16x16 pairs, I16x16 third) {
        const I32x8 sum = add(mulAddPairs(pairs, pairs), mulAddPairs(third, third));
        return roundToEven(sqrt(fma(toF32(sum), splat(1.0f / 3), splat(1.0f / 12))));
    }

    static RVX_INLINE I16x16 rounded(F32x8 low, F32x8 high, float bias) {
        const F32x8 third = splat(0.577350269f); // the root of 1/3
        return {
            {narrowUnsignedInLane(truncate(fma(low, third, splat(bias))), truncate(fma(high, third, splat(bias)))).v}};
    }
};

template <class T, class Norm> struct GradientRow {
    static constexpr bool rereads = false;
    static constexpr int srcAhead = 3072, dstAhead = 1024;
    const T *src;
    T *dst;

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        // The processor's own look-ahead ends with the page.
        prefetch(byteOffset(src + 3 * x, srcAhead));
        prefetch(byteOffset(src + 3 * x, srcAhead + 64));
        prefetch(byteOffset(dst + x, dstAhead));
        store(dst + x, Norm::of(loadChannels<Vec<T>>(src + 3 * x, span)), span);
    }
};

template <class Norm, class T> void reduceRows(Plane<const T> src, Plane<T> dst, const RowShape &shape) {
    for (std::int64_t y = 0; y < shape.height; ++y) {
        walkRow<Vec<T>::lanes, Tail::overlap>(shape.width, GradientRow<T, Norm>{src.row(y), dst.row(y)});
    }
}

template <class T>
StatusCode colorToGray(const T *src, std::int32_t srcStep, T *dst, std::int32_t dstStep, RoiSize roi, NormKind norm) {
    const std::int64_t srcBytes = rowBytes<T>(3 * std::int64_t{roi.width}), dstBytes = rowBytes<T>(roi.width);
    Checks checks;
    checks.pointers(src, dst).size(roi).steps(srcBytes, srcStep).steps(dstBytes, dstStep);
    checks.multiples(sizeof(T), srcStep, dstStep);
    checks.require(norm == NormInf || norm == NormL1 || norm == NormL2, StatusBadArgument);
    if (checks.failed()) {
        return checks.status();
    }
    const Plane<const T> in{src, srcStep};
    const Plane<T> out{dst, dstStep};
    const RowShape shape(roi.width, roi.height, srcStep == srcBytes && dstStep == dstBytes);
    switch (norm) {
    case NormInf:
        reduceRows<LargestChannel>(in, out, shape);
        break;
    case NormL1:
        reduceRows<SumOfChannels>(in, out, shape);
        break;
    default:
        reduceRows<RootOfSquares>(in, out, shape);
        break;
    }
    return StatusOk;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiGradientColorToGray_8u_C3C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                            RoiSize roi, NormKind norm) {
    return colorToGray(src, srcStep, dst, dstStep, roi, norm);
}
StatusCode rvxiGradientColorToGray_16u_C3C1R(const uint16_t *src, int32_t srcStep, uint16_t *dst, int32_t dstStep,
                                             RoiSize roi, NormKind norm) {
    return colorToGray(src, srcStep, dst, dstStep, roi, norm);
}
StatusCode rvxiGradientColorToGray_32f_C3C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                             RoiSize roi, NormKind norm) {
    return colorToGray(src, srcStep, dst, dstStep, roi, norm);
}
