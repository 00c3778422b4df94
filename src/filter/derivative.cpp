// Derivatives of images: Sobel, Scharr and Laplacian filters of 3x3 and 5x5 pixels with every border kind. All are
// separable (the Laplacian is the sum of two separable filters); the masks are drawn in the public header. Integer sums
// are exact in 16 bits; 32f results are bit for bit those of a row stage followed by a column stage.
#include "filter/fixed_filter_sizes.h"
#include "filter/fixed_filters.h"
#include "frame/api.h"

namespace rvxcv {
namespace {

// ------------------------------------------------------------------------------------------------- the filters

// Of integers: a row kernel and a column kernel. Of floats: the same in two stages.
struct SobelVert {
    using Sums3 = Separable<kerDxNeg_3_16s, kerSobel_3_16s>;
    using Sums5 = Separable<kerDxNeg_5_16s, kerSobel_5_16s>;
    using Floats3 = Staged<kerDxNeg_3_32f, kerSobel_3_32f>;
    using Floats5 = Staged<kerDxNeg_5_32f, kerSobel_5_32f>;
};

// In floats the column kernel is the negated one (the signs of zeros show it); among integers it is all the same.
struct SobelNegVert {
    using Sums3 = Separable<kerDx_3_16s, kerSobel_3_16s>;
    using Sums5 = Separable<kerDx_5_16s, kerSobel_5_16s>;
    using Floats3 = Staged<kerDxNeg_3_32f, kerSobelNeg_3_32f>;
    using Floats5 = Staged<kerDxNeg_5_32f, kerSobelNeg_5_32f>;
};

struct SobelHoriz {
    using Sums3 = Separable<kerSobel_3_16s, kerDx_3_16s>;
    using Sums5 = Separable<kerSobel_5_16s, kerDx_5_16s>;
    using Floats3 = Staged<kerSobel_3_32f, kerDx_3_32f>;
    using Floats5 = Staged<kerSobel_5_32f, kerDx_5_32f>;
};

struct SobelVertSecond {
    using Sums3 = Separable<kerD2x_3_16s, kerSobel_3_16s>;
    using Sums5 = Separable<kerD2x_5_16s, kerSobel_5_16s>;
    using Floats3 = Staged<kerD2x_3_32f, kerSobel_3_32f>;
    using Floats5 = Staged<kerD2x_5_32f, kerSobel_5_32f>;
};

struct SobelHorizSecond {
    using Sums3 = Separable<kerSobel_3_16s, kerD2x_3_16s>;
    using Sums5 = Separable<kerSobel_5_16s, kerD2x_5_16s>;
    using Floats3 = Staged<kerSobel_3_32f, kerD2x_3_32f>;
    using Floats5 = Staged<kerSobel_5_32f, kerD2x_5_32f>;
};

struct SobelCross {
    using Sums3 = Separable<kerDxNeg_3_16s, kerDx_3_16s>;
    using Sums5 = Separable<kerDxNeg_5_16s, kerDx_5_16s>;
    using Floats3 = Staged<kerDxNeg_3_32f, kerDx_3_32f>;
    using Floats5 = Staged<kerDxNeg_5_32f, kerDx_5_32f>;
};

struct ScharrVert {
    using Sums3 = Separable<kerDx_3_16s, kerScharr_3_16s>;
    using Floats3 = Staged<kerDx_3_32f, kerScharr_3_32f>;
};

struct ScharrHoriz {
    using Sums3 = Separable<kerScharr_3_16s, kerDx_3_16s>;
    using Floats3 = Staged<kerScharr_3_32f, kerDx_3_32f>;
};

inline constexpr FixedKernel16s<3> twiceBoth{{2, 0, 2}}, lessEight{{0, -8, 0}};

//   2  0  2
//   0 -8  0   =  2 * (corners) - 8 * (centre)
//   2  0  2
struct LaplacianSums3 : ByteFilter {
    static constexpr int taps = 3, planes = 2;

    static RVX_INLINE void along(const std::uint8_t *row, I16x16 (&sums)[planes][parts]) {
        sumAlong<twiceBoth>(row, sums[0]);
        sumAlong<lessEight>(row, sums[1]);
    }
    template <class At> static RVX_INLINE I16x16 down(const At &at) { return add(add(at(0, 0), at(0, 2)), at(1, 1)); }
};

inline constexpr FixedKernel16s<5> smoothPlusSecond{{2, 4, 4, 4, 2}}, secondTimes4{{4, 0, -8, 0, 4}};

//   2  4   4  4  2      With s = row sums by 1 4 6 4 1, d = row sums by 1 0 -2 0 1 and e = s + d, the result is
//   4  0  -8  0  4          s[-2] - 2 s[0] + s[2]  +  d[-2] + 4 d[-1] + 6 d[0] + 4 d[1] + d[2]
//   4 -8 -24 -8  4      =   e[-2] - 2 e[0] + e[2]  +  4 (d[-1] + 2 d[0] + d[1])
//   4  0  -8  0  4      in which the second line needs one row less of d.
//   2  4   4  4  2
struct LaplacianSums5 : ByteFilter {
    static constexpr int taps = 5, planes = 2;

    static RVX_INLINE void along(const std::uint8_t *row, I16x16 (&sums)[planes][parts]) {
        sumAlong<smoothPlusSecond>(row, sums[0]);
        sumAlong<secondTimes4>(row, sums[1]);
    }
    template <class At> static RVX_INLINE I16x16 down(const At &at) {
        return add(exactSum<kerD2x_5_16s>([&](int i) { return at(0, i); }),
                   exactSum<kerSobel_3_16s>([&](int i) { return at(1, i + 1); }));
    }
};

// Both second derivatives, each rounded by its own stages, then added.
template <const auto &smooth, const auto &second, int vectors> struct LaplacianFloats : FloatFilter<vectors> {
    static constexpr int taps = smooth.taps, planes = 2, parts = vectors;

    static RVX_INLINE void along(const float *row, F32x8 (&sums)[planes][parts]) {
        LaplacianFloats::template sumAlong<second>(row, sums[0]);
        LaplacianFloats::template sumAlong<smooth>(row, sums[1]);
    }
    template <class At> static RVX_INLINE F32x8 down(const At &at) {
        return add(chainedSum<smooth>([&](int i) { return at(0, i); }),
                   chainedSum<second>([&](int i) { return at(1, i); }));
    }
};

struct Laplacian {
    using Sums3 = LaplacianSums3;
    using Sums5 = LaplacianSums5;
    using Floats3 = LaplacianFloats<kerSobel_3_32f, kerD2x_3_32f, 2>;
    using Floats5 = LaplacianFloats<kerSobel_5_32f, kerD2x_5_32f, 1>;
};

// ------------------------------------------------------------------------------------------------ the calls

using Call8u8s = FilterCall<std::uint8_t, std::int8_t>;
using Call8u16s = FilterCall<std::uint8_t, std::int16_t>;
using Call32f = FilterCall<float, float>;

template <class Filter> StatusCode derive(const Call8u8s &call, MaskCode mask, std::int32_t divisor) {
    const Checks checks = call.check(divisor).require(isMask(mask), StatusBadMaskSize);
    if (checks.failed()) {
        return checks.status();
    }
    filterByMask<Filter>(call, mask, StoreDivided8s{Division8s(divisor)});
    return StatusOk;
}

template <class Filter> StatusCode derive(const Call8u16s &call, MaskCode mask) {
    const Checks checks = call.check().require(isMask(mask), StatusBadMaskSize);
    if (checks.failed()) {
        return checks.status();
    }
    filterByMask<Filter>(call, mask, Store16s{});
    return StatusOk;
}

template <class Filter> StatusCode derive(const Call32f &call, MaskCode mask) {
    const Checks checks = call.check().require(isMask(mask), StatusBadMaskSize);
    if (checks.failed()) {
        return checks.status();
    }
    filterByMask<Filter>(call, mask);
    return StatusOk;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

// -------------------------------------------------------------------------------------------------- Sobel filters

StatusCode rvxiFilterSobelVertBorder_8u8s_C1R(const uint8_t *src, int32_t srcStep, int8_t *dst, int32_t dstStep,
                                              RoiSize roi, MaskCode mask, BorderKind border, uint8_t borderValue,
                                              int32_t divisor, uint8_t *buffer) {
    return derive<SobelVert>(Call8u8s{src, srcStep, dst, dstStep, roi, border, borderValue, buffer}, mask, divisor);
}
StatusCode rvxiFilterSobelHorizBorder_8u8s_C1R(const uint8_t *src, int32_t srcStep, int8_t *dst, int32_t dstStep,
                                               RoiSize roi, MaskCode mask, BorderKind border, uint8_t borderValue,
                                               int32_t divisor, uint8_t *buffer) {
    return derive<SobelHoriz>(Call8u8s{src, srcStep, dst, dstStep, roi, border, borderValue, buffer}, mask, divisor);
}
StatusCode rvxiFilterSobelVertSecondBorder_8u8s_C1R(const uint8_t *src, int32_t srcStep, int8_t *dst, int32_t dstStep,
                                                    RoiSize roi, MaskCode mask, BorderKind border, uint8_t borderValue,
                                                    int32_t divisor, uint8_t *buffer) {
    return derive<SobelVertSecond>(Call8u8s{src, srcStep, dst, dstStep, roi, border, borderValue, buffer}, mask,
                                   divisor);
}
StatusCode rvxiFilterSobelHorizSecondBorder_8u8s_C1R(const uint8_t *src, int32_t srcStep, int8_t *dst, int32_t dstStep,
                                                     RoiSize roi, MaskCode mask, BorderKind border, uint8_t borderValue,
                                                     int32_t divisor, uint8_t *buffer) {
    return derive<SobelHorizSecond>(Call8u8s{src, srcStep, dst, dstStep, roi, border, borderValue, buffer}, mask,
                                    divisor);
}
StatusCode rvxiFilterSobelNegVertBorder_8u8s_C1R(const uint8_t *src, int32_t srcStep, int8_t *dst, int32_t dstStep,
                                                 RoiSize roi, MaskCode mask, BorderKind border, uint8_t borderValue,
                                                 int32_t divisor, uint8_t *buffer) {
    return derive<SobelNegVert>(Call8u8s{src, srcStep, dst, dstStep, roi, border, borderValue, buffer}, mask, divisor);
}
StatusCode rvxiFilterSobelCrossBorder_8u8s_C1R(const uint8_t *src, int32_t srcStep, int8_t *dst, int32_t dstStep,
                                               RoiSize roi, MaskCode mask, BorderKind border, uint8_t borderValue,
                                               int32_t divisor, uint8_t *buffer) {
    return derive<SobelCross>(Call8u8s{src, srcStep, dst, dstStep, roi, border, borderValue, buffer}, mask, divisor);
}

StatusCode rvxiFilterSobelVertBorder_8u16s_C1R(const uint8_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep,
                                               RoiSize roi, MaskCode mask, BorderKind border, uint8_t borderValue,
                                               uint8_t *buffer) {
    return derive<SobelVert>(Call8u16s{src, srcStep, dst, dstStep, roi, border, borderValue, buffer}, mask);
}
StatusCode rvxiFilterSobelHorizBorder_8u16s_C1R(const uint8_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep,
                                                RoiSize roi, MaskCode mask, BorderKind border, uint8_t borderValue,
                                                uint8_t *buffer) {
    return derive<SobelHoriz>(Call8u16s{src, srcStep, dst, dstStep, roi, border, borderValue, buffer}, mask);
}
StatusCode rvxiFilterSobelVertSecondBorder_8u16s_C1R(const uint8_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep,
                                                     RoiSize roi, MaskCode mask, BorderKind border, uint8_t borderValue,
                                                     uint8_t *buffer) {
    return derive<SobelVertSecond>(Call8u16s{src, srcStep, dst, dstStep, roi, border, borderValue, buffer}, mask);
}
StatusCode rvxiFilterSobelHorizSecondBorder_8u16s_C1R(const uint8_t *src, int32_t srcStep, int16_t *dst,
                                                      int32_t dstStep, RoiSize roi, MaskCode mask, BorderKind border,
                                                      uint8_t borderValue, uint8_t *buffer) {
    return derive<SobelHorizSecond>(Call8u16s{src, srcStep, dst, dstStep, roi, border, borderValue, buffer}, mask);
}
StatusCode rvxiFilterSobelNegVertBorder_8u16s_C1R(const uint8_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep,
                                                  RoiSize roi, MaskCode mask, BorderKind border, uint8_t borderValue,
                                                  uint8_t *buffer) {
    return derive<SobelNegVert>(Call8u16s{src, srcStep, dst, dstStep, roi, border, borderValue, buffer}, mask);
}
StatusCode rvxiFilterSobelCrossBorder_8u16s_C1R(const uint8_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep,
                                                RoiSize roi, MaskCode mask, BorderKind border, uint8_t borderValue,
                                                uint8_t *buffer) {
    return derive<SobelCross>(Call8u16s{src, srcStep, dst, dstStep, roi, border, borderValue, buffer}, mask);
}

StatusCode rvxiFilterSobelVertBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                             RoiSize roi, MaskCode mask, BorderKind border, float borderValue,
                                             uint8_t *buffer) {
    return derive<SobelVert>(Call32f{src, srcStep, dst, dstStep, roi, border, borderValue, buffer}, mask);
}
StatusCode rvxiFilterSobelHorizBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                              RoiSize roi, MaskCode mask, BorderKind border, float borderValue,
                                              uint8_t *buffer) {
    return derive<SobelHoriz>(Call32f{src, srcStep, dst, dstStep, roi, border, borderValue, buffer}, mask);
}
StatusCode rvxiFilterSobelVertSecondBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                                   RoiSize roi, MaskCode mask, BorderKind border, float borderValue,
                                                   uint8_t *buffer) {
    return derive<SobelVertSecond>(Call32f{src, srcStep, dst, dstStep, roi, border, borderValue, buffer}, mask);
}
StatusCode rvxiFilterSobelHorizSecondBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                                    RoiSize roi, MaskCode mask, BorderKind border, float borderValue,
                                                    uint8_t *buffer) {
    return derive<SobelHorizSecond>(Call32f{src, srcStep, dst, dstStep, roi, border, borderValue, buffer}, mask);
}
StatusCode rvxiFilterSobelNegVertBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                                RoiSize roi, MaskCode mask, BorderKind border, float borderValue,
                                                uint8_t *buffer) {
    return derive<SobelNegVert>(Call32f{src, srcStep, dst, dstStep, roi, border, borderValue, buffer}, mask);
}
StatusCode rvxiFilterSobelCrossBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                              RoiSize roi, MaskCode mask, BorderKind border, float borderValue,
                                              uint8_t *buffer) {
    return derive<SobelCross>(Call32f{src, srcStep, dst, dstStep, roi, border, borderValue, buffer}, mask);
}

StatusCode rvxiFilterSobelVertGetBufferSize_8u8s_C1R(RoiSize roi, MaskCode mask, int32_t *size) {
    return querySeparable<std::uint8_t, smallRoom>(roi, mask, size);
}
StatusCode rvxiFilterSobelHorizGetBufferSize_8u8s_C1R(RoiSize roi, MaskCode mask, int32_t *size) {
    return querySeparable<std::uint8_t, smallRoom>(roi, mask, size);
}
StatusCode rvxiFilterSobelVertSecondGetBufferSize_8u8s_C1R(RoiSize roi, MaskCode mask, int32_t *size) {
    return querySeparable<std::uint8_t, smallRoom>(roi, mask, size);
}
StatusCode rvxiFilterSobelHorizSecondGetBufferSize_8u8s_C1R(RoiSize roi, MaskCode mask, int32_t *size) {
    return querySeparable<std::uint8_t, smallRoom>(roi, mask, size);
}
StatusCode rvxiFilterSobelNegVertGetBufferSize_8u8s_C1R(RoiSize roi, MaskCode mask, int32_t *size) {
    return querySeparable<std::uint8_t, smallRoom>(roi, mask, size);
}
StatusCode rvxiFilterSobelCrossGetBufferSize_8u8s_C1R(RoiSize roi, MaskCode mask, int32_t *size) {
    return querySeparable<std::uint8_t, smallRoom>(roi, mask, size);
}

StatusCode rvxiFilterSobelVertGetBufferSize_8u16s_C1R(RoiSize roi, MaskCode mask, int32_t *size) {
    return querySeparable<std::uint8_t, largeRoom>(roi, mask, size);
}
StatusCode rvxiFilterSobelHorizGetBufferSize_8u16s_C1R(RoiSize roi, MaskCode mask, int32_t *size) {
    return querySeparable<std::uint8_t, largeRoom>(roi, mask, size);
}
StatusCode rvxiFilterSobelVertSecondGetBufferSize_8u16s_C1R(RoiSize roi, MaskCode mask, int32_t *size) {
    return querySeparable<std::uint8_t, largeRoom>(roi, mask, size);
}
StatusCode rvxiFilterSobelHorizSecondGetBufferSize_8u16s_C1R(RoiSize roi, MaskCode mask, int32_t *size) {
    return querySeparable<std::uint8_t, largeRoom>(roi, mask, size);
}
StatusCode rvxiFilterSobelNegVertGetBufferSize_8u16s_C1R(RoiSize roi, MaskCode mask, int32_t *size) {
    return querySeparable<std::uint8_t, largeRoom>(roi, mask, size);
}
StatusCode rvxiFilterSobelCrossGetBufferSize_8u16s_C1R(RoiSize roi, MaskCode mask, int32_t *size) {
    return querySeparable<std::uint8_t, largeRoom>(roi, mask, size);
}

StatusCode rvxiFilterSobelVertGetBufferSize_32f_C1R(RoiSize roi, MaskCode mask, int32_t *size) {
    return querySeparable<float, largeRoom>(roi, mask, size);
}
StatusCode rvxiFilterSobelHorizGetBufferSize_32f_C1R(RoiSize roi, MaskCode mask, int32_t *size) {
    return querySeparable<float, largeRoom>(roi, mask, size);
}
StatusCode rvxiFilterSobelVertSecondGetBufferSize_32f_C1R(RoiSize roi, MaskCode mask, int32_t *size) {
    return querySeparable<float, largeRoom>(roi, mask, size);
}
StatusCode rvxiFilterSobelHorizSecondGetBufferSize_32f_C1R(RoiSize roi, MaskCode mask, int32_t *size) {
    return querySeparable<float, largeRoom>(roi, mask, size);
}
StatusCode rvxiFilterSobelNegVertGetBufferSize_32f_C1R(RoiSize roi, MaskCode mask, int32_t *size) {
    return querySeparable<float, largeRoom>(roi, mask, size);
}
StatusCode rvxiFilterSobelCrossGetBufferSize_32f_C1R(RoiSize roi, MaskCode mask, int32_t *size) {
    return querySeparable<float, largeRoom>(roi, mask, size);
}

// ------------------------------------------------------------------------------------------------- Scharr filters

StatusCode rvxiFilterScharrVertBorder_8u8s_C1R(const uint8_t *src, int32_t srcStep, int8_t *dst, int32_t dstStep,
                                               RoiSize roi, BorderKind border, uint8_t borderValue, int32_t divisor,
                                               uint8_t *buffer) {
    return derive<ScharrVert>(Call8u8s{src, srcStep, dst, dstStep, roi, border, borderValue, buffer}, Mask3x3, divisor);
}
StatusCode rvxiFilterScharrHorizBorder_8u8s_C1R(const uint8_t *src, int32_t srcStep, int8_t *dst, int32_t dstStep,
                                                RoiSize roi, BorderKind border, uint8_t borderValue, int32_t divisor,
                                                uint8_t *buffer) {
    return derive<ScharrHoriz>(Call8u8s{src, srcStep, dst, dstStep, roi, border, borderValue, buffer}, Mask3x3,
                               divisor);
}

StatusCode rvxiFilterScharrVertBorder_8u16s_C1R(const uint8_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep,
                                                RoiSize roi, BorderKind border, uint8_t borderValue, uint8_t *buffer) {
    return derive<ScharrVert>(Call8u16s{src, srcStep, dst, dstStep, roi, border, borderValue, buffer}, Mask3x3);
}
StatusCode rvxiFilterScharrHorizBorder_8u16s_C1R(const uint8_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep,
                                                 RoiSize roi, BorderKind border, uint8_t borderValue, uint8_t *buffer) {
    return derive<ScharrHoriz>(Call8u16s{src, srcStep, dst, dstStep, roi, border, borderValue, buffer}, Mask3x3);
}

StatusCode rvxiFilterScharrVertBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                              RoiSize roi, BorderKind border, float borderValue, uint8_t *buffer) {
    return derive<ScharrVert>(Call32f{src, srcStep, dst, dstStep, roi, border, borderValue, buffer}, Mask3x3);
}
StatusCode rvxiFilterScharrHorizBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                               RoiSize roi, BorderKind border, float borderValue, uint8_t *buffer) {
    return derive<ScharrHoriz>(Call32f{src, srcStep, dst, dstStep, roi, border, borderValue, buffer}, Mask3x3);
}

StatusCode rvxiFilterScharrVertGetBufferSize_8u8s_C1R(RoiSize roi, int32_t *size) {
    return querySeparable<std::uint8_t, smallRoom>(roi, Mask3x3, size);
}
StatusCode rvxiFilterScharrHorizGetBufferSize_8u8s_C1R(RoiSize roi, int32_t *size) {
    return querySeparable<std::uint8_t, smallRoom>(roi, Mask3x3, size);
}

StatusCode rvxiFilterScharrVertGetBufferSize_8u16s_C1R(RoiSize roi, int32_t *size) {
    return querySeparable<std::uint8_t, largeRoom>(roi, Mask3x3, size);
}
StatusCode rvxiFilterScharrHorizGetBufferSize_8u16s_C1R(RoiSize roi, int32_t *size) {
    return querySeparable<std::uint8_t, smallRoom>(roi, Mask3x3, size);
}

StatusCode rvxiFilterScharrVertGetBufferSize_32f_C1R(RoiSize roi, int32_t *size) {
    return querySeparable<float, largeRoom>(roi, Mask3x3, size);
}
StatusCode rvxiFilterScharrHorizGetBufferSize_32f_C1R(RoiSize roi, int32_t *size) {
    return querySeparable<float, largeRoom>(roi, Mask3x3, size);
}

// ------------------------------------------------------------------------------------------------------ Laplacian

StatusCode rvxiFilterLaplacianBorder_8u8s_C1R(const uint8_t *src, int32_t srcStep, int8_t *dst, int32_t dstStep,
                                              RoiSize roi, MaskCode mask, BorderKind border, uint8_t borderValue,
                                              int32_t divisor, uint8_t *buffer) {
    return derive<Laplacian>(Call8u8s{src, srcStep, dst, dstStep, roi, border, borderValue, buffer}, mask, divisor);
}

StatusCode rvxiFilterLaplacianBorder_8u16s_C1R(const uint8_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep,
                                               RoiSize roi, MaskCode mask, BorderKind border, uint8_t borderValue,
                                               uint8_t *buffer) {
    return derive<Laplacian>(Call8u16s{src, srcStep, dst, dstStep, roi, border, borderValue, buffer}, mask);
}

StatusCode rvxiFilterLaplacianBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                             RoiSize roi, MaskCode mask, BorderKind border, float borderValue,
                                             uint8_t *buffer) {
    return derive<Laplacian>(Call32f{src, srcStep, dst, dstStep, roi, border, borderValue, buffer}, mask);
}

StatusCode rvxiFilterLaplacianGetBufferSize_8u8s_C1R(RoiSize roi, MaskCode mask, int32_t *size) {
    return queryScratch(roi, mask, size, dividedLaplacianScratch);
}

StatusCode rvxiFilterLaplacianGetBufferSize_8u16s_C1R(RoiSize roi, MaskCode mask, int32_t *size) {
    return queryScratch(roi, mask, size, laplacianScratch<std::uint8_t>);
}

StatusCode rvxiFilterLaplacianGetBufferSize_32f_C1R(RoiSize roi, MaskCode mask, int32_t *size) {
    return queryScratch(roi, mask, size, laplacianScratch<float>);
}
