// Halving by the 5x5 Gaussian 1 4 6 4 1. Every source row is filtered and decimated horizontally, once, into a ring of
// five rows half as wide; every destination row combines five of them.
//
// Bytes: sums are exact in 16 bits, of signed and of unsigned pixels. A destination pixel's five taps are three pairs
// of neighbours with the weights 1 4, 6 4, 1 0, and one instruction multiplies and adds sixteen pairs of bytes. Pixels
// of three channels are first put in pairs of one channel.
//
// Floats: both passes form (a + e) + 6 c + 4 (b + d) in this order, multiplications fused, and the result is scaled by
// 1 / 256. A constant image stays what it is: the partial sums 2, 8 and 16 times a pixel are exact.
#include "filter/pyramid/pyr_steps.h"
#include "frame/api.h"
#include "kernel/border.h"
#include "kernel/rows.h"
#include "kernel/scratch.h"

#include <algorithm>
#include <cmath>

namespace rvxcv {
namespace {

// ------------------------------------------------------------------------------------------------ bytes

template <class T> RVX_INLINE I16x16 weightedPairs(const T *pairs, Full, int even, int odd) {
    if constexpr (std::is_signed_v<T>) {
        return mulAddPairsSaturated(splatBytePair<U8x32>(even, odd), load<I8x32>(pairs));
    } else {
        return mulAddPairsSaturated(load<U8x32>(pairs), splatBytePair<I8x32>(even, odd));
    }
}
template <class T> RVX_INLINE I16x16 weightedPairs(const T *pairs, Part span, int even, int odd) {
    if constexpr (std::is_signed_v<T>) {
        return mulAddPairsSaturated(splatBytePair<U8x32>(even, odd), load<I8x32>(pairs, Part{2 * span.n}));
    } else {
        return mulAddPairsSaturated(load<U8x32>(pairs, Part{2 * span.n}), splatBytePair<I8x32>(even, odd));
    }
}

template <class T, int channels> struct ByteRow {
    static constexpr bool rereads = false;
    const T *pairs; // the pair of the first sum
    std::int16_t *sums;

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        const T *p = pairs + 2 * x;
        const I16x16 first = weightedPairs(p - 2 * channels, span, 1, 4), second = weightedPairs(p, span, 6, 4);
        // Of one channel the pairs are the row itself: the last tap is taken with its left neighbour, not its right
        // one, which may lie behind the row.
        const I16x16 third = channels == 1 ? weightedPairs(p + 1, span, 0, 1) : weightedPairs(p + 6, span, 1, 0);
        store(sums + x, add(add(first, second), third), span);
    }
};

template <class T> struct ByteColumns {
    static constexpr bool rereads = false;
    const std::int16_t *rows[5];
    T *dst;

    // Unsigned sums use all sixteen bits.
    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        const auto row = [&](int i) { return load<I16x16>(rows[i] + x, span); };
        const I16x16 four = add(add(row(1), row(3)), row(2)), two = row(2);
        const I16x16 one = add(add(row(0), row(4)), splat(std::int16_t{128}));
        const I16x16 sum = add(add(one, add(two, two)), shiftLeft<2>(four));
        if constexpr (std::is_signed_v<T>) {
            storeSaturated(dst + x, shiftRight<8>(sum), span);
        } else {
            storeSaturated(dst + x, I16x16{{shiftRight<8>(U16x16{{sum.v}}).v}}, span);
        }
    }
};

// --------------------------------------------------------------------------------------------- floats

RVX_INLINE F32x8 weightedFloats(F32x8 a, F32x8 b, F32x8 c, F32x8 d, F32x8 e) {
    return fma(splat(4.0f), add(b, d), fma(splat(6.0f), c, add(a, e)));
}
RVX_INLINE float weightedFloats(float a, float b, float c, float d, float e) {
    return std::fma(4.0f, b + d, std::fma(6.0f, c, a + e));
}

// Eight even and eight odd elements, those of a vector's halves apart.
struct EvenOdd {
    F32x8 even, odd;

    RVX_INLINE EvenOdd(const float *p, Full) { split(load<F32x8>(p), load<F32x8>(p + 8)); }
    RVX_INLINE EvenOdd(const float *p, Part span) {
        const int n = 2 * span.n;
        split(load<F32x8>(p, Part{std::min(n, 8)}), n > 8 ? load<F32x8>(p + 8, Part{n - 8}) : splat(0.0f));
    }

private:
    RVX_INLINE void split(F32x8 low, F32x8 high) {
        even = evenInLane(low, high);
        odd = oddInLane(low, high);
    }
};

struct FloatRow {
    static constexpr bool rereads = false;
    const float *centre; // of the first sum
    float *sums;

    // The last tap is taken from a load that ends with it, as the odd one.
    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        const float *p = centre + 2 * x;
        const EvenOdd before(p - 2, span), at(p, span), behind(p + 1, span);
        store(sums + x, sortedPairs(weightedFloats(before.even, before.odd, at.even, at.odd, behind.odd)), span);
    }
};

// Three channels: even pixels and odd pixels lie in rows of their own.
struct SplitFloatRow {
    static constexpr bool rereads = false;
    const float *even, *odd; // the pixels of the first sum
    float *sums;

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        const F32x8 b = load<F32x8>(odd + x - 3, span), d = load<F32x8>(odd + x, span);
        const F32x8 a = load<F32x8>(even + x - 3, span), c = load<F32x8>(even + x, span),
                    e = load<F32x8>(even + x + 3, span);
        store(sums + x, weightedFloats(a, b, c, d, e), span);
    }
};

struct FloatColumns {
    static constexpr bool rereads = false;
    const float *rows[5];
    float *dst;

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        const auto row = [&](int i) { return load<F32x8>(rows[i] + x, span); };
        store(dst + x, mul(weightedFloats(row(0), row(1), row(2), row(3), row(4)), splat(1.0f / 256)), span);
    }
};

// Even pixels of three floats to one row, odd ones to another; behind both there is room for one more element.
inline void splitPixels(const float *src, std::int64_t width, float *even, float *odd) {
    std::int64_t x = 0;
    for (; x + 2 < width; x += 2, src += 6, even += 3, odd += 3) {
        storeHalf(even, loadHalf(src));
        storeHalf(odd, loadHalf(src + 3));
    }
    storeHalf(even, loadHalf(src, Part{12}));
    if (x + 1 < width) {
        storeHalf(odd, loadHalf(src + 3, Part{12}));
    }
}

// ------------------------------------------------------------------------------------------------ images

template <class T, int channels> class Halving {
    static constexpr bool floats = std::is_same_v<T, float>;
    using Sum = std::conditional_t<floats, float, std::int16_t>;
    using Columns = std::conditional_t<floats, FloatColumns, ByteColumns<T>>;
    static constexpr std::int64_t ringRows = 5;

public:
    explicit Halving(const PyrCall<T, channels> &call)
        : src_{call.src, call.srcStep}, dst_{call.dst, call.dstStep}, roi_(call.roi), dstWidth_((roi_.width + 1) / 2) {
        Scratch scratch(call.buffer, pyrDownScratch(roi_.width, channels));
        const std::int64_t slot = pyrSlotBytes(roi_.width, channels, 4);
        pitch_ = std::min(roundUp(rowBytes<Sum>(dstWidth_ * channels), 32), slot);
        ring_ = scratch.take<std::uint8_t>(ringRows * pitch_, 32);
        if constexpr (channels == 3) {
            constexpr std::int64_t slack = floats ? 8 : 16;
            sorted_ = scratch.take<T>(roi_.width * channels + slack);
        }
        for (int i = 0; i < 5; ++i) {
            left_[i] = mirrored(i - 2);
            right_[i] = mirrored(2 * (dstWidth_ - 1) + i - 2);
        }
    }

    void run() {
        const std::int64_t dstHeight = (std::int64_t{roi_.height} + 1) / 2;
        std::int64_t filtered = 0; // source rows that went through the first pass
        for (std::int64_t y = 0; y < dstHeight; ++y) {
            for (; filtered < std::min<std::int64_t>(2 * y + 3, roi_.height); ++filtered) {
                filterRow(src_.row(filtered), slot(filtered));
            }
            Columns columns;
            columns.dst = dst_.row(y);
            for (std::int64_t i = 0; i < 5; ++i) {
                columns.rows[i] = slot(borderIndex(BorderMirror, false, false, 2 * y + i - 2, roi_.height).index);
            }
            walkRow<floats ? 8 : 16, Tail::overlap>(dstWidth_ * channels, columns);
        }
    }

private:
    std::int64_t mirrored(std::int64_t x) const {
        return borderIndex(BorderMirror, false, false, x, roi_.width).index * channels;
    }
    Sum *slot(std::int64_t row) const { return reinterpret_cast<Sum *>(ring_ + row % ringRows * pitch_); }

    // One destination pixel beside an edge.
    RVX_INLINE void filterEdge(const T *row, const std::int64_t (&at)[5], Sum *sums) const {
        for (int c = 0; c < channels; ++c) {
            const auto tap = [&](int i) { return loadScalar(row + at[i] + c); };
            if constexpr (floats) {
                sums[c] = weightedFloats(tap(0), tap(1), tap(2), tap(3), tap(4));
            } else {
                sums[c] = static_cast<Sum>(tap(0) + tap(4) + 4 * (tap(1) + tap(3)) + 6 * tap(2));
            }
        }
    }

    // Only the first and the last destination pixel have taps outside the row.
    void filterRow(const T *row, Sum *sums) const {
        filterEdge(row, left_, sums);
        if (dstWidth_ == 1) {
            return;
        }
        filterEdge(row, right_, sums + (dstWidth_ - 1) * channels);
        const std::int64_t inner = (dstWidth_ - 2) * channels;
        if (inner == 0) {
            return;
        }
        if constexpr (!floats && channels == 1) {
            walkRow<16, Tail::overlap>(inner, ByteRow<T, 1>{row + 2, sums + 1});
        } else if constexpr (!floats) {
            reorderSixes<true>(row, sorted_, std::int64_t{roi_.width} * 3, pairsOfPixels());
            walkRow<16, Tail::overlap>(inner, ByteRow<T, 3>{sorted_ + 6, sums + 3});
        } else if constexpr (channels == 1) {
            walkRow<8, Tail::overlap>(inner, FloatRow{row + 2, sums + 1});
        } else {
            float *const odd = sorted_ + dstWidth_ * 3 + 1;
            splitPixels(row, roi_.width, sorted_, odd);
            walkRow<8, Tail::overlap>(inner, SplitFloatRow{sorted_ + 3, odd + 3, sums + 3});
        }
    }

    Plane<const T> src_;
    Plane<T> dst_;
    RoiSize roi_;
    std::int64_t dstWidth_;
    std::int64_t pitch_;
    std::uint8_t *ring_;
    T *sorted_ = nullptr;
    std::int64_t left_[5], right_[5]; // elements that the first and the last destination pixel take
};

template <class T, int channels> StatusCode pyrDown(const PyrCall<T, channels> &call) {
    const StatusCode status = call.check((std::int64_t{call.roi.width} + 1) / 2);
    if (status == StatusOk) {
        Halving<T, channels>(call).run();
    }
    return status;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiPyrDownGetBufSize_Gauss5x5(int32_t roiWidth, PixelTypeCode pixelType, int32_t channels,
                                          int32_t *bufSize) {
    return pyrScratchQuery(pyrDownScratch, roiWidth, pixelType, channels, bufSize);
}

StatusCode rvxiPyrDown_Gauss5x5_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                       RoiSize srcRoi, uint8_t *buffer) {
    return pyrDown<std::uint8_t, 1>({src, srcStep, dst, dstStep, srcRoi, buffer});
}
StatusCode rvxiPyrDown_Gauss5x5_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                       RoiSize srcRoi, uint8_t *buffer) {
    return pyrDown<std::uint8_t, 3>({src, srcStep, dst, dstStep, srcRoi, buffer});
}
StatusCode rvxiPyrDown_Gauss5x5_8s_C1R(const int8_t *src, int32_t srcStep, int8_t *dst, int32_t dstStep, RoiSize srcRoi,
                                       uint8_t *buffer) {
    return pyrDown<std::int8_t, 1>({src, srcStep, dst, dstStep, srcRoi, buffer});
}
StatusCode rvxiPyrDown_Gauss5x5_8s_C3R(const int8_t *src, int32_t srcStep, int8_t *dst, int32_t dstStep, RoiSize srcRoi,
                                       uint8_t *buffer) {
    return pyrDown<std::int8_t, 3>({src, srcStep, dst, dstStep, srcRoi, buffer});
}
StatusCode rvxiPyrDown_Gauss5x5_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize srcRoi,
                                        uint8_t *buffer) {
    return pyrDown<float, 1>({src, srcStep, dst, dstStep, srcRoi, buffer});
}
StatusCode rvxiPyrDown_Gauss5x5_32f_C3R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize srcRoi,
                                        uint8_t *buffer) {
    return pyrDown<float, 3>({src, srcStep, dst, dstStep, srcRoi, buffer});
}
