// Upright integral images of pixels and of their squares. Each row's running sum is complete before its one addition to
// the element above, so a row is a prefix sum, formed in registers, plus the row above.
//
// As long as a running sum is an integer that its type holds exactly, the order of additions shows in no bit: it is
// formed in 32-bit integers and converted once. Only in long rows does that end. Sums of squares then go on from the
// exact sum of the stretch before, in doubles, which hold every sum of a row. Float sums round from then on, once for
// every pixel, and carry a rounded sum from each group of eight pixels to the next.
#include "stats/integral_image.h"

#include "frame/api.h"

#include <algorithm>

namespace rvxcv {
namespace {

// ------------------------------------------------------------------------------------------------- rows of bytes

// The most pixels, in whole blocks, whose sum is at most the largest exact integer.
constexpr std::int64_t exactPixels(std::int64_t largest, std::int64_t term) { return largest / term / 32 * 32; }

// The pointers of the outputs stand at column 1. `before` holds the sum of the pixels before the block, in every lane.
//
// Rows are summed in pairs of pixels: the running sums of the pairs are those of the odd pixels, and without the odd
// pixels themselves those of the even ones. That halves the additions along the row.
template <class T> struct PixelRow {
    const std::uint8_t *src;
    const T *above;
    T *dst;
    I32x8 &before;

    template <int g, class Span> RVX_INLINE void group(std::ptrdiff_t x, I32x8 sums, Span span) const {
        withEight<g>(span, [&](auto part) {
            const Eight<T> running = eightOf<T>(add(sums, before));
            storeEight(dst + x + 8 * g, add(loadEight(above + x + 8 * g, part), running), part);
        });
    }
    // Thirty-two pixels: their sums by sixteens fit in 16 bits.
    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        prefetchOutput<32>(dst + x);
        const U8x32 pixels = load<U8x32>(src + x, span);
        const I16x16 odd = prefixSumsInHalves(addPairs(pixels)), even = sub(odd, oddBytes(pixels));
        const I16x16 first = pairsInLaneLow(even, odd), second = pairsInLaneHigh(even, odd);
        const I32x8 lowEnd = widenLow(second), highEnd = widenHigh(second);
        group<0>(x, widenLow(first), span);
        group<1>(x, lowEnd, span);
        before = add(before, splatLane<7>(lowEnd));
        group<2>(x, widenHigh(first), span);
        group<3>(x, highEnd, span);
        before = add(before, splatLane<7>(highEnd));
    }
};

// Behind the exact sums: groups of eight, whose exact sums are added to a rounded one.
struct RoundedPixelRow {
    const std::uint8_t *src;
    const float *above;
    float *dst;
    F32x8 &before;

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        const F32x8 running = add(toF32(prefixSums(loadI32(src + x, span))), before);
        before = splatLane<7>(running);
        store(dst + x, add(load<F32x8>(above + x, span), running), span);
    }
};

inline void pixelRow(const std::uint8_t *src, const std::int32_t *above, std::int32_t *dst, std::int64_t width) {
    I32x8 before = splat(0);
    walkRow<32>(width, PixelRow<std::int32_t>{src, above, dst, before});
}

inline void pixelRow(const std::uint8_t *src, const float *above, float *dst, std::int64_t width) {
    constexpr std::int64_t exact = exactPixels(1 << 24, 255);
    I32x8 before = splat(0);
    walkRow<32>(std::min(width, exact), PixelRow<float>{src, above, dst, before});
    if (width > exact) {
        F32x8 rounded = toF32(before);
        walkRow<8>(width - exact, RoundedPixelRow{src + exact, above + exact, dst + exact, rounded});
    }
}

// Sixteen squares, in pairs likewise. `later` stretches of a row add the sum of the earlier ones.
template <class T, bool later> struct SquareRow {
    const std::uint8_t *src;
    const T *above;
    T *dst;
    I32x8 &before;
    Eight<T> earlier;

    template <int g, class Span> RVX_INLINE void group(std::ptrdiff_t x, Eight<T> running, Span span) const {
        if constexpr (later) {
            running = add(running, earlier);
        }
        withEight<g>(span, [&](auto part) {
            storeEight(dst + x + 8 * g, add(loadEight(above + x + 8 * g, part), running), part);
        });
    }
    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        prefetchOutput<16>(dst + x);
        const I16x16 pixels = loadI16(src + x, span), oddPixels = bitAnd(pixels, splatPair(0, -1));
        const I32x8 pairs = prefixSums(mulAddPairs(pixels, pixels));
        const I32x8 odd = add(pairs, before), even = sub(odd, mulAddPairs(oddPixels, oddPixels));
        before = add(before, splatLane<7>(pairs));
        const I32x8 first = interleaveInHalvesLow(even, odd), second = interleaveInHalvesHigh(even, odd);
        group<0>(x, lowHalves<T>(first, second), span);
        group<1>(x, highHalves<T>(first, second), span);
    }
};

inline void squareRow(const std::uint8_t *src, const std::int32_t *above, std::int32_t *dst, std::int64_t width) {
    I32x8 before = splat(0);
    walkRow<16>(width, SquareRow<std::int32_t, false>{src, above, dst, before, {}});
}

inline void squareRow(const std::uint8_t *src, const double *above, double *dst, std::int64_t width) {
    constexpr std::int64_t exact = exactPixels(INT32_MAX, 255 * 255);
    I32x8 before = splat(0);
    walkRow<16>(std::min(width, exact), SquareRow<double, false>{src, above, dst, before, {}});
    F64x8 earlier = splatEight(0.0);
    for (std::int64_t x = exact; x < width; x += exact) {
        earlier = add(earlier, toF64(before));
        before = splat(0);
        walkRow<16>(std::min(width - x, exact), SquareRow<double, true>{src + x, above + x, dst + x, before, earlier});
    }
}

// The second output, if any, holds the squares.
template <class T, class... Q>
StatusCode integral(const std::uint8_t *src, std::int32_t srcStep, RoiSize roi, SumImage<T> sum,
                    SumImage<Q>... squares) {
    const StatusCode status = checkIntegral(src, srcStep, roi, 1, sum, squares...);
    if (status != StatusOk) {
        return status;
    }
    const std::int64_t width = roi.width;
    fillRow(sum.dst, width + 1, sum.val);
    (fillRow(squares.dst, width + 1, squares.val), ...);
    for (std::int64_t y = 0; y < roi.height; ++y) {
        const std::uint8_t *row = Plane{src, srcStep}.row(y);
        const auto each = [&](const auto &out, const auto &sumRow) {
            auto *dst = out.plane().row(y + 1);
            storeScalar(dst, out.val);
            sumRow(row, out.plane().row(y) + 1, dst + 1);
        };
        each(sum, [&](auto... rows) { pixelRow(rows..., width); });
        (each(squares, [&](auto... rows) { squareRow(rows..., width); }), ...);
    }
    return StatusOk;
}

// ------------------------------------------------------------------------------------------------- rows of floats

// Float pixels add one by one from the left, and each addition waits for the one before. Eight rows do so side by side,
// one in each lane of the columns; then the rows are added downwards.
constexpr int strip = 8;

struct FloatStrip {
    const float *src[strip]; // where there are fewer rows, the last one again
    float *dst[strip];
    const float *above;
    int rows;
    F32x8 &carry;

    template <class Span> RVX_INLINE void block(std::ptrdiff_t x, Span span, int stored) const {
        F32x8 v[strip];
        for (int i = 0; i < strip; ++i) {
            v[i] = load<F32x8>(src[i] + x, span);
        }
        transpose(v);
        for (F32x8 &column : v) {
            column = carry = add(carry, column);
        }
        transpose(v);
        F32x8 sum = load<F32x8>(above + x, span);
        for (int i = 0; i < stored; ++i) {
            sum = add(sum, v[i]);
            store(dst[i] + x, sum, span);
        }
    }
    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        if (rows == strip) {
            block(x, span, strip);
        } else {
            block(x, span, rows);
        }
    }
};

void integralOfFloats(Plane<const float> src, Plane<float> dst, std::int64_t width, std::int64_t height) {
    fillRow(dst.base, width + 1, 0.0f);
    for (std::int64_t y = 0; y < height; y += strip) {
        const auto rows = static_cast<int>(std::min<std::int64_t>(strip, height - y));
        F32x8 carry = splat(0.0f);
        FloatStrip kernel{{}, {}, dst.row(y) + 1, rows, carry};
        for (int i = 0; i < strip; ++i) {
            const int row = std::min(i, rows - 1);
            float *out = dst.row(y + row + 1);
            storeScalar(out, 0.0f);
            kernel.src[i] = src.row(y + row);
            kernel.dst[i] = out + 1;
        }
        walkRow<8>(width, kernel);
    }
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiIntegral_8u32s_C1R(const uint8_t *src, int32_t srcStep, int32_t *dst, int32_t dstStep, RoiSize roi,
                                  int32_t val) {
    return integral(src, srcStep, roi, SumImage<int32_t>{dst, dstStep, val});
}
StatusCode rvxiIntegral_8u32f_C1R(const uint8_t *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                  float val) {
    return integral(src, srcStep, roi, SumImage<float>{dst, dstStep, val});
}
StatusCode rvxiIntegral_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi) {
    const StatusCode status = checkIntegral(src, srcStep, roi, 1, SumImage<float>{dst, dstStep, 0.0f});
    if (status == StatusOk) {
        integralOfFloats({src, srcStep}, {dst, dstStep}, roi.width, roi.height);
    }
    return status;
}
StatusCode rvxiSqrIntegral_8u32s_C1R(const uint8_t *src, int32_t srcStep, int32_t *dst, int32_t dstStep, int32_t *sqr,
                                     int32_t sqrStep, RoiSize roi, int32_t val, int32_t valSqr) {
    return integral(src, srcStep, roi, SumImage<int32_t>{dst, dstStep, val}, SumImage<int32_t>{sqr, sqrStep, valSqr});
}
StatusCode rvxiSqrIntegral_8u32s64f_C1R(const uint8_t *src, int32_t srcStep, int32_t *dst, int32_t dstStep, double *sqr,
                                        int32_t sqrStep, RoiSize roi, int32_t val, double valSqr) {
    return integral(src, srcStep, roi, SumImage<int32_t>{dst, dstStep, val}, SumImage<double>{sqr, sqrStep, valSqr});
}
StatusCode rvxiSqrIntegral_8u32f64f_C1R(const uint8_t *src, int32_t srcStep, float *dst, int32_t dstStep, double *sqr,
                                        int32_t sqrStep, RoiSize roi, double val, double valSqr) {
    return integral(src, srcStep, roi, SumImage<float>{dst, dstStep, static_cast<float>(val)},
                    SumImage<double>{sqr, sqrStep, valSqr});
}
