// Doubling: every source row becomes two, every column too. Even results take their neighbours with the weights 1 6 1,
// odd ones two pixels with 4 4; an odd result never touches the pixel before it, whatever it holds.
//
// A destination row pair first combines source rows (1 6 1 and 1 1) over the source's width, then columns. Bytes: exact
// in 16 bits; the weights 4 4 are left out of the sums and make the final shift smaller. The even and the odd result of
// a pixel leave as a pair of bytes. Floats: each direction forms 0.125 * (6 b + (a + c)), the multiplication by 6
// fused, or 0.125 * 4 * (b + c).
//
// On the left and at the top a missing pixel is the mirrored one, on the right and at the bottom the last one.
#include "filter/pyramid/pyr_steps.h"
#include "frame/api.h"
#include "kernel/rows.h"
#include "kernel/scratch.h"

#include <algorithm>
#include <cmath>

namespace rvxcv {
namespace {

template <class V> RVX_INLINE void storeWhole(typename V::Element *p, V a, bool streamed) {
    if (streamed) {
        storeStreamed(p, a);
    } else {
        store(p, a);
    }
}

// ------------------------------------------------------------------------------------------------ bytes

template <class T> struct ByteRows {
    static constexpr bool rereads = false;
    const T *before, *at, *behind;
    std::int16_t *even, *odd;

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        const I16x16 a = loadI16(before + x, span), b = loadI16(at + x, span), c = loadI16(behind + x, span);
        store(even + x, add(mulLow(b, splat(std::int16_t{6})), add(a, c)), span);
        store(odd + x, add(b, c), span);
    }
    void pixel(std::ptrdiff_t from, std::ptrdiff_t to) const {
        const int a = +loadScalar(before + from), b = +loadScalar(at + from), c = +loadScalar(behind + from);
        even[to] = static_cast<std::int16_t>(a + 6 * b + c);
        odd[to] = static_cast<std::int16_t>(b + c);
    }
};

// The sums of a row and what is left of their common weight: 64 is 2^shift in even columns, and 4 are left out of odd
// ones.
template <class T, int channels, int shift> struct ByteColumns {
    static constexpr bool rereads = false;
    const std::int16_t *sums;
    T *pairs;
    bool streamed;

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        const I16x16 a = load<I16x16>(sums + x - channels, span), b = load<I16x16>(sums + x, span),
                     c = load<I16x16>(sums + x + channels, span);
        const I16x16 evenHalf = splat(std::int16_t{1 << (shift - 1)}), oddHalf = splat(std::int16_t{1 << (shift - 3)});
        I16x16 even = shiftRight<shift>(add(add(mulLow(b, splat(std::int16_t{6})), add(a, c)), evenHalf));
        const I16x16 odd = shiftRight<shift - 2>(add(add(b, c), oddHalf));
        if constexpr (std::is_signed_v<T>) {
            even = bitAnd(even, splat(std::int16_t{0xff}));
        }
        storePairs(reinterpret_cast<std::int16_t *>(pairs) + x, bitOr(even, shiftLeft<8>(odd)), span);
    }

private:
    RVX_INLINE void storePairs(std::int16_t *p, I16x16 a, Full) const { storeWhole(p, a, streamed); }
    RVX_INLINE void storePairs(std::int16_t *p, I16x16 a, Part span) const { store(p, a, span); }
};

// --------------------------------------------------------------------------------------------- floats

RVX_INLINE F32x8 evenFloat(F32x8 a, F32x8 b, F32x8 c) { return mul(fma(splat(6.0f), b, add(a, c)), splat(0.125f)); }
RVX_INLINE F32x8 oddFloat(F32x8 b, F32x8 c) { return mul(add(b, c), splat(0.5f)); }
inline float evenFloat(float a, float b, float c) { return std::fma(6.0f, b, a + c) * 0.125f; }
inline float oddFloat(float b, float c) { return (b + c) * 0.5f; }

struct FloatRows {
    static constexpr bool rereads = false;
    const float *before, *at, *behind;
    float *even, *odd;

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        const F32x8 a = load<F32x8>(before + x, span), b = load<F32x8>(at + x, span), c = load<F32x8>(behind + x, span);
        store(even + x, evenFloat(a, b, c), span);
        store(odd + x, oddFloat(b, c), span);
    }
    void pixel(std::ptrdiff_t from, std::ptrdiff_t to) const {
        const float a = loadScalar(before + from), b = loadScalar(at + from), c = loadScalar(behind + from);
        even[to] = evenFloat(a, b, c);
        odd[to] = oddFloat(b, c);
    }
};

template <int channels> struct FloatColumns {
    static constexpr bool rereads = false;
    const float *sums;
    float *dst; // one channel: both results of a pixel beside each other
    bool streamed;
    float *even, *odd; // three channels: in rows of their own

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        const F32x8 a = load<F32x8>(sums + x - channels, span), b = load<F32x8>(sums + x, span),
                    c = load<F32x8>(sums + x + channels, span);
        const F32x8 first = evenFloat(a, b, c), second = oddFloat(b, c);
        if constexpr (channels == 1) {
            storeInTurn(dst + 2 * x, first, second, span);
        } else {
            store(even + x, first, span);
            store(odd + x, second, span);
        }
    }

private:
    RVX_INLINE void storeInTurn(float *p, F32x8 a, F32x8 b, Full) const {
        storeWhole(p, interleavedLow(a, b), streamed);
        storeWhole(p + 8, interleavedHigh(a, b), streamed);
    }
    static RVX_INLINE void storeInTurn(float *p, F32x8 a, F32x8 b, Part span) {
        const int n = 2 * span.n;
        store(p, interleavedLow(a, b), Part{std::min(n, 8)});
        if (n > 8) {
            store(p + 8, interleavedHigh(a, b), Part{n - 8});
        }
    }
};

// Pixels of three floats from two rows in turn, four of each at a time: every vector is blended from loads that bring
// an element to its place. Three elements before the first row and behind the second one may be read.
//
//     e0 e1 e2 o0 o1 o2 e3 e4     e5 o3 o4 o5 e6 e7 e8 o6     o7 o8 e9 .. .. o9 .. ..
inline void joinPixels(const float *even, const float *odd, std::int64_t width, float *dst, bool streamed) {
    const auto e = [&](int i) { return load<F32x8>(even + i); };
    const auto o = [&](int i) { return load<F32x8>(odd + i); };
    for (; width >= 4; width -= 4, even += 12, odd += 12, dst += 24) {
        storeWhole(dst, blended<0xc0>(blended<0x38>(e(0), o(-3)), e(-3)), streamed);
        storeWhole(dst + 8, blended<0x80>(blended<0x70>(blended<0x0e>(e(5), o(2)), e(2)), o(-1)), streamed);
        storeWhole(dst + 16, blended<0xe0>(blended<0x1c>(o(7), e(7)), o(4)), streamed);
    }
    for (; width > 0; --width, even += 3, odd += 3, dst += 6) {
        storeHalf(dst, loadHalf(even, Part{12}), Part{12});
        storeHalf(dst + 3, loadHalf(odd, Part{12}), Part{12});
    }
}

// ------------------------------------------------------------------------------------------------ images

template <class T, int channels> class Doubling {
    static constexpr bool floats = std::is_same_v<T, float>;
    using Sum = std::conditional_t<floats, float, std::int16_t>;
    using Rows = std::conditional_t<floats, FloatRows, ByteRows<T>>;
    static constexpr std::int64_t streamedBytes = 8 << 20; // of a destination that no cache near the processor holds

public:
    explicit Doubling(const PyrCall<T, channels> &call)
        : src_{call.src, call.srcStep}, dst_{call.dst, call.dstStep}, width_(call.roi.width), height_(call.roi.height) {
        streamed_ = rowBytes<T>(4 * width_ * height_ * channels) >= streamedBytes;
        Scratch scratch(call.buffer, pyrUpScratch(width_, channels));
        evenSums_ = scratch.take<Sum>((width_ + 2) * channels, 16) + channels;
        oddSums_ = scratch.take<Sum>((width_ + 2) * channels) + channels;
        if constexpr (channels == 3) {
            sorted_ = scratch.take<T>(2 * width_ * channels + (floats ? 0 : 16));
        }
    }

    void run() const {
        for (std::int64_t y = 0; y < height_; ++y) {
            const std::int64_t above = y > 0 ? y - 1 : std::min<std::int64_t>(1, height_ - 1);
            combineRows({src_.row(above), src_.row(y), src_.row(std::min(y + 1, height_ - 1)), evenSums_, oddSums_});
            combineColumns<6>(evenSums_, dst_.row(2 * y));
            combineColumns<4>(oddSums_, dst_.row(2 * y + 1));
        }
        if (streamed_) {
            endStreaming();
        }
    }

private:
    // Both rows of sums, with a pixel more at each end.
    void combineRows(const Rows &rows) const {
        const std::int64_t second = std::min<std::int64_t>(1, width_ - 1) * channels, end = width_ * channels;
        for (int c = 0; c < channels; ++c) {
            rows.pixel(second + c, c - channels);
            rows.pixel(end - channels + c, end + c);
        }
        walkRow<floats ? 8 : 16, Tail::overlap>(end, rows);
    }

    template <int shift> void combineColumns(const Sum *sums, T *dst) const {
        const std::int64_t elements = width_ * channels;
        if constexpr (!floats) {
            T *const pairs = channels == 1 ? dst : sorted_;
            walkRow<16, Tail::overlap>(elements,
                                       ByteColumns<T, channels, shift>{sums, pairs, channels == 1 && streamed_});
            if constexpr (channels == 3) {
                reorderSixes<false>(pairs, dst, 2 * elements, pixelsOfPairs());
            }
        } else {
            float *const even = sorted_, *const odd = channels == 3 ? sorted_ + elements : nullptr;
            walkRow<8, Tail::overlap>(elements, FloatColumns<channels>{sums, dst, streamed_, even, odd});
            if constexpr (channels == 3) {
                joinPixels(even, odd, width_, dst, streamed_);
            }
        }
    }

    Plane<const T> src_;
    Plane<T> dst_;
    std::int64_t width_, height_;
    bool streamed_;
    Sum *evenSums_, *oddSums_;
    T *sorted_ = nullptr;
};

template <class T, int channels> StatusCode pyrUp(const PyrCall<T, channels> &call) {
    const StatusCode status = call.check(std::int64_t{call.roi.width} * 2);
    if (status == StatusOk) {
        Doubling<T, channels>(call).run();
    }
    return status;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiPyrUpGetBufSize_Gauss5x5(int32_t roiWidth, PixelTypeCode pixelType, int32_t channels, int32_t *bufSize) {
    return pyrScratchQuery(pyrUpScratch, roiWidth, pixelType, channels, bufSize);
}

StatusCode rvxiPyrUp_Gauss5x5_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize srcRoi,
                                     uint8_t *buffer) {
    return pyrUp<std::uint8_t, 1>({src, srcStep, dst, dstStep, srcRoi, buffer});
}
StatusCode rvxiPyrUp_Gauss5x5_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize srcRoi,
                                     uint8_t *buffer) {
    return pyrUp<std::uint8_t, 3>({src, srcStep, dst, dstStep, srcRoi, buffer});
}
StatusCode rvxiPyrUp_Gauss5x5_8s_C1R(const int8_t *src, int32_t srcStep, int8_t *dst, int32_t dstStep, RoiSize srcRoi,
                                     uint8_t *buffer) {
    return pyrUp<std::int8_t, 1>({src, srcStep, dst, dstStep, srcRoi, buffer});
}
StatusCode rvxiPyrUp_Gauss5x5_8s_C3R(const int8_t *src, int32_t srcStep, int8_t *dst, int32_t dstStep, RoiSize srcRoi,
                                     uint8_t *buffer) {
    return pyrUp<std::int8_t, 3>({src, srcStep, dst, dstStep, srcRoi, buffer});
}
StatusCode rvxiPyrUp_Gauss5x5_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize srcRoi,
                                      uint8_t *buffer) {
    return pyrUp<float, 1>({src, srcStep, dst, dstStep, srcRoi, buffer});
}
StatusCode rvxiPyrUp_Gauss5x5_32f_C3R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize srcRoi,
                                      uint8_t *buffer) {
    return pyrUp<float, 3>({src, srcStep, dst, dstStep, srcRoi, buffer});
}
