// Norms of the selected pixels: of an image, of the difference of two, and of that difference relative to the second
// image. What is added up are magnitudes, so that signed and unsigned pixels share everything behind them.
#include "frame/api.h"
#include "stats/lane_totals.h"

#include <cmath>

namespace rvxcv {
namespace {

// ------------------------------------------------------------------------------------------------------ magnitudes

// Of integers, so that signed and unsigned ones are the same from here on. Floats keep their signs, which only some
// norms have to take away.
template <class V> RVX_INLINE V magnitude(V a) { return a; }
RVX_INLINE U8x32 magnitude(I8x32 a) { return abs(a); }

template <class V> RVX_INLINE auto difference(V a, V b) { return absDiff(a, b); }
RVX_INLINE F32x16 difference(F32x16 a, F32x16 b) { return {sub(a.low, b.low), sub(a.high, b.high)}; }
RVX_INLINE F32x16 difference(F32x16At a, F32x16At b) {
    const F32x16 first = a, second = b;
    return difference(first, second);
}

RVX_INLINE F32x16 abs(F32x16 a) { return {rvxcv::abs(a.low), rvxcv::abs(a.high)}; }

// ----------------------------------------------------------------------------------------------------------- norms

template <class V> struct Inf : Largest<V> {};
template <> struct Inf<F32x16> : Largest<F32x16> {
    RVX_INLINE void add(F32x16 a) { Largest<F32x16>::add(abs(a)); }
};

template <class V> struct L1 : Sums<V, true, false> {
    double value() const { return static_cast<double>(this->sum()); }
};
template <> struct L1<F32x16> : Sums<F32x16, true, false> {
    template <class B> RVX_INLINE void add(B a) { Sums::add(rvxcv::abs(lowToF64(a)), rvxcv::abs(highToF64(a))); }
    double value() const { return sum(); }
};

template <class V> struct L2 : Sums<V, false, true> {
    double value() const { return std::sqrt(static_cast<double>(this->sumOfSquares())); }
};

template <class T> using Magnitudes = decltype(magnitude(Block<T>{}));

template <class T, template <class> class Norm> struct NormOf {
    static constexpr int sources = 1;
    Norm<Magnitudes<T>> norm;

    template <class B, class O> RVX_INLINE void add(B a, B, O out) { norm.add(selected(magnitude(a), out)); }
    RVX_INLINE void flush(std::int64_t blocks) { norm.flush(blocks); }
    double value() const { return norm.value(); }
};

template <class T, template <class> class Norm> struct NormOfDifference {
    static constexpr int sources = 2;
    Norm<Magnitudes<T>> norm;

    template <class B, class O> RVX_INLINE void add(B a, B b, O out) { norm.add(selected(difference(a, b), out)); }
    RVX_INLINE void flush(std::int64_t blocks) { norm.flush(blocks); }
    double value() const { return norm.value(); }
};

template <class T, template <class> class Norm> struct NormRelative {
    static constexpr int sources = 2;
    Norm<Magnitudes<T>> differences, reference;

    template <class B, class O> RVX_INLINE void add(B a, B b, O out) {
        differences.add(selected(difference(a, b), out));
        reference.add(selected(magnitude(b), out));
    }
    RVX_INLINE void flush(std::int64_t blocks) {
        differences.flush(blocks);
        reference.flush(blocks);
    }
    double value() const {
        const double d = differences.value(), r = reference.value();
        return d == 0 && r == 0 ? 0 : d / r;
    }
};

template <Layout layout, template <class, template <class> class> class Statistic, template <class> class Norm, class T>
StatusCode norm(const MaskedImage<T> &image, double *result) {
    const StatusCode status = checkMasked<layout>(image, result);
    if (status == StatusOk) {
        *result = measure<layout>(image, Statistic<T, Norm>{}).value();
    }
    return status;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

// Members: the name, what is measured, the norm, the pixel type.
#define NORM_C1(NAME, STATISTIC, NORM, T)                                                                              \
    StatusCode NAME(const T *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi, double *norm) { \
        return rvxcv::norm<C1MR, STATISTIC, NORM, T>({src, srcStep, src, srcStep, mask, maskStep, roi, 1}, norm);      \
    }
#define NORM_C3(NAME, STATISTIC, NORM, T)                                                                              \
    StatusCode NAME(const T *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi,                 \
                    int32_t channel, double *norm) {                                                                   \
        return rvxcv::norm<C3CMR, STATISTIC, NORM, T>({src, srcStep, src, srcStep, mask, maskStep, roi, channel},      \
                                                      norm);                                                           \
    }
#define NORM_OF_TWO_C1(NAME, STATISTIC, NORM, T)                                                                       \
    StatusCode NAME(const T *src1, int32_t src1Step, const T *src2, int32_t src2Step, const uint8_t *mask,             \
                    int32_t maskStep, RoiSize roi, double *norm) {                                                     \
        return rvxcv::norm<C1MR, STATISTIC, NORM, T>({src1, src1Step, src2, src2Step, mask, maskStep, roi, 1}, norm);  \
    }
#define NORM_OF_TWO_C3(NAME, STATISTIC, NORM, T)                                                                       \
    StatusCode NAME(const T *src1, int32_t src1Step, const T *src2, int32_t src2Step, const uint8_t *mask,             \
                    int32_t maskStep, RoiSize roi, int32_t channel, double *norm) {                                    \
        return rvxcv::norm<C3CMR, STATISTIC, NORM, T>({src1, src1Step, src2, src2Step, mask, maskStep, roi, channel},  \
                                                      norm);                                                           \
    }

NORM_C1(rvxiNorm_Inf_8u_C1MR, NormOf, Inf, uint8_t)
NORM_C1(rvxiNorm_Inf_8s_C1MR, NormOf, Inf, int8_t)
NORM_C1(rvxiNorm_Inf_16u_C1MR, NormOf, Inf, uint16_t)
NORM_C1(rvxiNorm_Inf_32f_C1MR, NormOf, Inf, float)
NORM_C3(rvxiNorm_Inf_8u_C3CMR, NormOf, Inf, uint8_t)
NORM_C3(rvxiNorm_Inf_8s_C3CMR, NormOf, Inf, int8_t)
NORM_C3(rvxiNorm_Inf_16u_C3CMR, NormOf, Inf, uint16_t)
NORM_C3(rvxiNorm_Inf_32f_C3CMR, NormOf, Inf, float)
NORM_C1(rvxiNorm_L1_8u_C1MR, NormOf, L1, uint8_t)
NORM_C1(rvxiNorm_L1_8s_C1MR, NormOf, L1, int8_t)
NORM_C1(rvxiNorm_L1_16u_C1MR, NormOf, L1, uint16_t)
NORM_C1(rvxiNorm_L1_32f_C1MR, NormOf, L1, float)
NORM_C3(rvxiNorm_L1_8u_C3CMR, NormOf, L1, uint8_t)
NORM_C3(rvxiNorm_L1_8s_C3CMR, NormOf, L1, int8_t)
NORM_C3(rvxiNorm_L1_16u_C3CMR, NormOf, L1, uint16_t)
NORM_C3(rvxiNorm_L1_32f_C3CMR, NormOf, L1, float)
NORM_C1(rvxiNorm_L2_8u_C1MR, NormOf, L2, uint8_t)
NORM_C1(rvxiNorm_L2_8s_C1MR, NormOf, L2, int8_t)
NORM_C1(rvxiNorm_L2_16u_C1MR, NormOf, L2, uint16_t)
NORM_C1(rvxiNorm_L2_32f_C1MR, NormOf, L2, float)
NORM_C3(rvxiNorm_L2_8u_C3CMR, NormOf, L2, uint8_t)
NORM_C3(rvxiNorm_L2_8s_C3CMR, NormOf, L2, int8_t)
NORM_C3(rvxiNorm_L2_16u_C3CMR, NormOf, L2, uint16_t)
NORM_C3(rvxiNorm_L2_32f_C3CMR, NormOf, L2, float)
NORM_OF_TWO_C1(rvxiNormDiff_Inf_8u_C1MR, NormOfDifference, Inf, uint8_t)
NORM_OF_TWO_C1(rvxiNormDiff_Inf_8s_C1MR, NormOfDifference, Inf, int8_t)
NORM_OF_TWO_C1(rvxiNormDiff_Inf_16u_C1MR, NormOfDifference, Inf, uint16_t)
NORM_OF_TWO_C1(rvxiNormDiff_Inf_32f_C1MR, NormOfDifference, Inf, float)
NORM_OF_TWO_C3(rvxiNormDiff_Inf_8u_C3CMR, NormOfDifference, Inf, uint8_t)
NORM_OF_TWO_C3(rvxiNormDiff_Inf_8s_C3CMR, NormOfDifference, Inf, int8_t)
NORM_OF_TWO_C3(rvxiNormDiff_Inf_16u_C3CMR, NormOfDifference, Inf, uint16_t)
NORM_OF_TWO_C3(rvxiNormDiff_Inf_32f_C3CMR, NormOfDifference, Inf, float)
NORM_OF_TWO_C1(rvxiNormDiff_L1_8u_C1MR, NormOfDifference, L1, uint8_t)
NORM_OF_TWO_C1(rvxiNormDiff_L1_8s_C1MR, NormOfDifference, L1, int8_t)
NORM_OF_TWO_C1(rvxiNormDiff_L1_16u_C1MR, NormOfDifference, L1, uint16_t)
NORM_OF_TWO_C1(rvxiNormDiff_L1_32f_C1MR, NormOfDifference, L1, float)
NORM_OF_TWO_C3(rvxiNormDiff_L1_8u_C3CMR, NormOfDifference, L1, uint8_t)
NORM_OF_TWO_C3(rvxiNormDiff_L1_8s_C3CMR, NormOfDifference, L1, int8_t)
NORM_OF_TWO_C3(rvxiNormDiff_L1_16u_C3CMR, NormOfDifference, L1, uint16_t)
NORM_OF_TWO_C3(rvxiNormDiff_L1_32f_C3CMR, NormOfDifference, L1, float)
NORM_OF_TWO_C1(rvxiNormDiff_L2_8u_C1MR, NormOfDifference, L2, uint8_t)
NORM_OF_TWO_C1(rvxiNormDiff_L2_8s_C1MR, NormOfDifference, L2, int8_t)
NORM_OF_TWO_C1(rvxiNormDiff_L2_16u_C1MR, NormOfDifference, L2, uint16_t)
NORM_OF_TWO_C1(rvxiNormDiff_L2_32f_C1MR, NormOfDifference, L2, float)
NORM_OF_TWO_C3(rvxiNormDiff_L2_8u_C3CMR, NormOfDifference, L2, uint8_t)
NORM_OF_TWO_C3(rvxiNormDiff_L2_8s_C3CMR, NormOfDifference, L2, int8_t)
NORM_OF_TWO_C3(rvxiNormDiff_L2_16u_C3CMR, NormOfDifference, L2, uint16_t)
NORM_OF_TWO_C3(rvxiNormDiff_L2_32f_C3CMR, NormOfDifference, L2, float)
NORM_OF_TWO_C1(rvxiNormRel_Inf_8u_C1MR, NormRelative, Inf, uint8_t)
NORM_OF_TWO_C1(rvxiNormRel_Inf_8s_C1MR, NormRelative, Inf, int8_t)
NORM_OF_TWO_C1(rvxiNormRel_Inf_16u_C1MR, NormRelative, Inf, uint16_t)
NORM_OF_TWO_C1(rvxiNormRel_Inf_32f_C1MR, NormRelative, Inf, float)
NORM_OF_TWO_C3(rvxiNormRel_Inf_8u_C3CMR, NormRelative, Inf, uint8_t)
NORM_OF_TWO_C3(rvxiNormRel_Inf_8s_C3CMR, NormRelative, Inf, int8_t)
NORM_OF_TWO_C3(rvxiNormRel_Inf_16u_C3CMR, NormRelative, Inf, uint16_t)
NORM_OF_TWO_C3(rvxiNormRel_Inf_32f_C3CMR, NormRelative, Inf, float)
NORM_OF_TWO_C1(rvxiNormRel_L1_8u_C1MR, NormRelative, L1, uint8_t)
NORM_OF_TWO_C1(rvxiNormRel_L1_8s_C1MR, NormRelative, L1, int8_t)
NORM_OF_TWO_C1(rvxiNormRel_L1_16u_C1MR, NormRelative, L1, uint16_t)
NORM_OF_TWO_C1(rvxiNormRel_L1_32f_C1MR, NormRelative, L1, float)
NORM_OF_TWO_C3(rvxiNormRel_L1_8u_C3CMR, NormRelative, L1, uint8_t)
NORM_OF_TWO_C3(rvxiNormRel_L1_8s_C3CMR, NormRelative, L1, int8_t)
NORM_OF_TWO_C3(rvxiNormRel_L1_16u_C3CMR, NormRelative, L1, uint16_t)
NORM_OF_TWO_C3(rvxiNormRel_L1_32f_C3CMR, NormRelative, L1, float)
NORM_OF_TWO_C1(rvxiNormRel_L2_8u_C1MR, NormRelative, L2, uint8_t)
NORM_OF_TWO_C1(rvxiNormRel_L2_8s_C1MR, NormRelative, L2, int8_t)
NORM_OF_TWO_C1(rvxiNormRel_L2_16u_C1MR, NormRelative, L2, uint16_t)
NORM_OF_TWO_C1(rvxiNormRel_L2_32f_C1MR, NormRelative, L2, float)
NORM_OF_TWO_C3(rvxiNormRel_L2_8u_C3CMR, NormRelative, L2, uint8_t)
NORM_OF_TWO_C3(rvxiNormRel_L2_8s_C3CMR, NormRelative, L2, int8_t)
NORM_OF_TWO_C3(rvxiNormRel_L2_16u_C3CMR, NormRelative, L2, uint16_t)
NORM_OF_TWO_C3(rvxiNormRel_L2_32f_C3CMR, NormRelative, L2, float)
