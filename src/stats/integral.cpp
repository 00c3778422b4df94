// Upright integral images of pixels and of their squares. Each row's running sum is complete before its one addition to
// the element above, so a row is a prefix sum, formed in registers in groups of eight pixels, plus the row above.
//
// A running sum of 8-bit pixels or squares is an integer that a double always holds, and a float up to 2^24: there the
// order of additions shows in no bit, and what is carried from group to group is an integer or a sum that no rounding
// touches. Rows with more than 65792 pixels continue in floats, whose carry rounds.
#include "stats/integral_image.h"

#include "frame/api.h"

#include <algorithm>

namespace rvxcv {
namespace {

// ------------------------------------------------------------------------------- what goes from group to group

// The sum of the row before the group is added to the group's own running sums.
struct IntegerCarry {
    I32x8 before = splat(0);

    template <class T> RVX_INLINE Eight<T> advance(I32x8 group) {
        const I32x8 running = add(group, before);
        before = add(before, splatLane<7>(group));
        return eightOf<T>(running);
    }
};

struct FloatCarry {
    F32x8 before;

    template <class T> RVX_INLINE F32x8 advance(I32x8 group) {
        const F32x8 running = add(toF32(group), before);
        before = splatLane<7>(running);
        return running;
    }
};

struct DoubleCarry {
    F64x4 before = splat(0.0);

    template <class T> RVX_INLINE F64x8 advance(I32x8 group) {
        const F64x8 sums = toF64(group), running{add(sums.low, before), add(sums.high, before)};
        before = add(before, splatLane<3>(sums.high)); // exact, and shorter to wait for than the running sum
        return running;
    }
};

// ------------------------------------------------------------------------------------------------- rows of bytes

// The pointers of the outputs stand at column 1.
template <class T, class Carry> struct PixelRow {
    const std::uint8_t *src;
    const T *above;
    T *dst;
    Carry &carry;

    template <class Span> RVX_INLINE void group(std::ptrdiff_t x, I32x8 sums, Span span) const {
        const Eight<T> running = carry.template advance<T>(sums);
        storeEight(dst + x, add(loadEight(above + x, span), running), span);
    }
    // Sixteen pixels: their sums by eights fit in 16 bits.
    RVX_INLINE void operator()(std::ptrdiff_t x, Full) const {
        const I16x16 sums = prefixSumsInHalves(loadI16(src + x));
        group(x, widenLow(sums), Full{});
        group(x + 8, widenHigh(sums), Full{});
    }
    RVX_INLINE void operator()(std::ptrdiff_t x, Part part) const {
        const I16x16 sums = prefixSumsInHalves(loadI16(src + x, part));
        group(x, widenLow(sums), Part{std::min(part.n, 8)});
        if (part.n > 8) {
            group(x + 8, widenHigh(sums), Part{part.n - 8});
        }
    }
};

template <class T, class Carry> struct SquareRow {
    const std::uint8_t *src;
    const T *above;
    T *dst;
    Carry &carry;

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        const Eight<T> running = carry.template advance<T>(prefixSums(loadTerms<true>(src + x, span)));
        storeEight(dst + x, add(loadEight(above + x, span), running), span);
    }
};

template <class T> void squareRow(const std::uint8_t *src, const T *above, T *dst, std::int64_t width) {
    std::conditional_t<std::is_same_v<T, double>, DoubleCarry, IntegerCarry> carry;
    walkRow<8>(width, SquareRow<T, decltype(carry)>{src, above, dst, carry});
}

inline void pixelRow(const std::uint8_t *src, const std::int32_t *above, std::int32_t *dst, std::int64_t width) {
    IntegerCarry carry;
    walkRow<16>(width, PixelRow<std::int32_t, IntegerCarry>{src, above, dst, carry});
}

inline void pixelRow(const std::uint8_t *src, const float *above, float *dst, std::int64_t width) {
    constexpr std::int64_t mostExact = (1 << 24) / 255 / 16 * 16; // pixels whose sum any float holds
    IntegerCarry carry;
    walkRow<16>(std::min(width, mostExact), PixelRow<float, IntegerCarry>{src, above, dst, carry});
    if (width > mostExact) {
        FloatCarry rounded{toF32(carry.before)};
        walkRow<16>(width - mostExact,
                    PixelRow<float, FloatCarry>{src + mostExact, above + mostExact, dst + mostExact, rounded});
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
