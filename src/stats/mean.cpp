// Means and standard deviations of the selected pixels. Integers: exact sums, so that no order matters. Floats: lane
// sums of the differences from the first selected pixel, which keeps the cancellation in the variance small.
#include "frame/api.h"
#include "stats/lane_totals.h"

#include <cmath>

namespace rvxcv {
namespace {

struct Moments {
    double mean = 0, stdDev = 0;
};

// -------------------------------------------------------------------------------------------------------- integers

// Signed bytes are shifted to unsigned ones, which the mean takes back and the deviation does not see.
template <class V> RVX_INLINE V asUnsigned(V a) { return a; }
RVX_INLINE U8x32 asUnsigned(I8x32 a) { return bitXor(U8x32{{a.v}}, splat(std::uint8_t{0x80})); }
template <class T> constexpr std::int64_t shiftOf = std::is_signed_v<T> ? 128 : 0;

__extension__ using Wide = unsigned __int128;

template <Layout layout, bool deviation, class T> struct MomentSums {
    static constexpr int sources = 1;
    Sums<Out<T>, true, deviation> sums;
    Selected<T> selection;
    std::int64_t blocks = 0;

    template <class O> RVX_INLINE void add(Block<T> a, Block<T>, O out) {
        sums.add(selected(asUnsigned(a), out));
        if constexpr (layout.masked) {
            selection.add(out);
        }
    }
    RVX_INLINE void flush(std::int64_t count) {
        sums.flush(count);
        blocks += count;
    }
    Moments moments(std::int64_t pixels) const {
        const std::int64_t n = layout.masked ? selection.count(blocks) : pixels;
        if (n == 0) {
            return {};
        }
        const std::uint64_t sum = sums.sum();
        Moments result;
        result.mean = static_cast<double>(static_cast<std::int64_t>(sum) - shiftOf<T> * n) / static_cast<double>(n);
        if constexpr (deviation) {
            const Wide variance = Wide(n) * sums.sumOfSquares() - Wide(sum) * sum;
            result.stdDev = std::sqrt(static_cast<double>(variance)) / static_cast<double>(n);
        }
        return result;
    }
};

template <Layout layout, bool deviation, class T> Moments moments(const MaskedImage<T> &image) {
    return measure<layout>(image, MomentSums<layout, deviation, T>{})
        .moments(std::int64_t{image.roi.width} * image.roi.height);
}

// ---------------------------------------------------------------------------------------------------------- floats

// In place of a pixel that is left out stands the pivot, whose difference is 0. An infinite pivot, or a NaN, makes its
// own difference NaN, and both sums with it.
template <Layout layout, bool deviation> struct PivotSums {
    static constexpr int sources = 1;
    float pivot;
    Sums<F32x16, true, deviation> sums;
    Selected<float> selection;
    std::int64_t blocks = 0;

    template <class B> RVX_INLINE B orPivot(B a, Nothing) const { return a; }
    RVX_INLINE F32x16 orPivot(F32x16 a, Mask32x16 out) const {
        return {select(out.low, splat(pivot), a.low), select(out.high, splat(pivot), a.high)};
    }
    template <class B, class O> RVX_INLINE void add(B a, B, O out) {
        const auto v = orPivot(a, out);
        const F64x8 p = splatEight(pivot);
        sums.add(sub(lowToF64(v), p), sub(highToF64(v), p));
        if constexpr (layout.masked) {
            selection.add(out);
        }
    }
    RVX_INLINE void flush(std::int64_t count) { blocks += count; }
    Moments moments(std::int64_t pixels) const {
        const auto n = static_cast<double>(layout.masked ? selection.count(blocks) : pixels);
        const double sum = sums.sum(), q = sum / n;
        Moments result;
        result.mean = pivot + q;
        if constexpr (deviation) {
            const double product = sum * q, variance = (sums.sumOfSquares() - product) / n;
            result.stdDev = std::sqrt(variance < 0 ? 0 : variance); // a NaN stays
        }
        return result;
    }
};

template <Layout layout, bool deviation> Moments moments(const MaskedImage<float> &image) {
    Point2i first{0, 0};
    if constexpr (layout.masked) {
        first = firstSelected(image);
        if (first.y < 0) {
            return {};
        }
    }
    const std::ptrdiff_t x = std::ptrdiff_t{first.x} * (layout.ofThree ? 3 : 1);
    const float pivot = loadScalar(MaskedPlanes<layout, float>(image).first.row(first.y) + x);
    return measure<layout>(image, PivotSums<layout, deviation>{pivot, {}, {}})
        .moments(std::int64_t{image.roi.width} * image.roi.height);
}

// --------------------------------------------------------------------------------------------------------- members

template <Layout layout, class T> StatusCode mean(const MaskedImage<T> &image, double *mean) {
    const StatusCode status = checkMasked<layout>(image, mean);
    if (status == StatusOk) {
        *mean = moments<layout, false>(image).mean;
    }
    return status;
}

template <Layout layout, class T> StatusCode meanStdDev(const MaskedImage<T> &image, double *mean, double *stdDev) {
    const StatusCode status = checkMasked<layout>(image, mean, stdDev);
    if (status == StatusOk) {
        const Moments result = moments<layout, true>(image);
        *mean = result.mean;
        *stdDev = result.stdDev;
    }
    return status;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

// Members: the name, the pixel type.
#define MEAN_C1MR(NAME, T)                                                                                             \
    StatusCode NAME(const T *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi, double *mean) { \
        return rvxcv::mean<C1MR, T>({src, srcStep, src, srcStep, mask, maskStep, roi, 1}, mean);                       \
    }
#define MEAN_C3CMR(NAME, T)                                                                                            \
    StatusCode NAME(const T *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi,                 \
                    int32_t channel, double *mean) {                                                                   \
        return rvxcv::mean<C3CMR, T>({src, srcStep, src, srcStep, mask, maskStep, roi, channel}, mean);                \
    }
#define MEAN_STD_DEV_C1R(NAME, T)                                                                                      \
    StatusCode NAME(const T *src, int32_t srcStep, RoiSize roi, double *mean, double *stdDev) {                        \
        return meanStdDev<C1R, T>({src, srcStep, src, srcStep, nullptr, 0, roi, 1}, mean, stdDev);                     \
    }
#define MEAN_STD_DEV_C1MR(NAME, T)                                                                                     \
    StatusCode NAME(const T *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi, double *mean,   \
                    double *stdDev) {                                                                                  \
        return meanStdDev<C1MR, T>({src, srcStep, src, srcStep, mask, maskStep, roi, 1}, mean, stdDev);                \
    }
#define MEAN_STD_DEV_C3CR(NAME, T)                                                                                     \
    StatusCode NAME(const T *src, int32_t srcStep, RoiSize roi, int32_t channel, double *mean, double *stdDev) {       \
        return meanStdDev<C3CR, T>({src, srcStep, src, srcStep, nullptr, 0, roi, channel}, mean, stdDev);              \
    }
#define MEAN_STD_DEV_C3CMR(NAME, T)                                                                                    \
    StatusCode NAME(const T *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi,                 \
                    int32_t channel, double *mean, double *stdDev) {                                                   \
        return meanStdDev<C3CMR, T>({src, srcStep, src, srcStep, mask, maskStep, roi, channel}, mean, stdDev);         \
    }

MEAN_C1MR(rvxiMean_8u_C1MR, uint8_t)
MEAN_C1MR(rvxiMean_8s_C1MR, int8_t)
MEAN_C1MR(rvxiMean_16u_C1MR, uint16_t)
MEAN_C1MR(rvxiMean_32f_C1MR, float)
MEAN_C3CMR(rvxiMean_8u_C3CMR, uint8_t)
MEAN_C3CMR(rvxiMean_8s_C3CMR, int8_t)
MEAN_C3CMR(rvxiMean_16u_C3CMR, uint16_t)
MEAN_C3CMR(rvxiMean_32f_C3CMR, float)
MEAN_STD_DEV_C1R(rvxiMean_StdDev_8u_C1R, uint8_t)
MEAN_STD_DEV_C1R(rvxiMean_StdDev_8s_C1R, int8_t)
MEAN_STD_DEV_C1R(rvxiMean_StdDev_16u_C1R, uint16_t)
MEAN_STD_DEV_C1R(rvxiMean_StdDev_32f_C1R, float)
MEAN_STD_DEV_C1MR(rvxiMean_StdDev_8u_C1MR, uint8_t)
MEAN_STD_DEV_C1MR(rvxiMean_StdDev_8s_C1MR, int8_t)
MEAN_STD_DEV_C1MR(rvxiMean_StdDev_16u_C1MR, uint16_t)
MEAN_STD_DEV_C1MR(rvxiMean_StdDev_32f_C1MR, float)
MEAN_STD_DEV_C3CR(rvxiMean_StdDev_8u_C3CR, uint8_t)
MEAN_STD_DEV_C3CR(rvxiMean_StdDev_8s_C3CR, int8_t)
MEAN_STD_DEV_C3CR(rvxiMean_StdDev_16u_C3CR, uint16_t)
MEAN_STD_DEV_C3CR(rvxiMean_StdDev_32f_C3CR, float)
MEAN_STD_DEV_C3CMR(rvxiMean_StdDev_8u_C3CMR, uint8_t)
MEAN_STD_DEV_C3CMR(rvxiMean_StdDev_8s_C3CMR, int8_t)
MEAN_STD_DEV_C3CMR(rvxiMean_StdDev_16u_C3CMR, uint16_t)
MEAN_STD_DEV_C3CMR(rvxiMean_StdDev_32f_C3CMR, float)
