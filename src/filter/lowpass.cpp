// The mean of the 3x3 or 5x5 pixels around each pixel, with every border kind. 8u: the exact sum divided by the area,
// rounded to nearest (areas are odd: no ties). 32f: a row stage and a column stage of ones, then one multiplication by
// the rounded reciprocal of the area.
#include "filter/fixed_filter_sizes.h"
#include "filter/fixed_filters.h"
#include "frame/api.h"

namespace rvxcv {
namespace {

struct Box {
    using Sums3 = Separable<kerAvr_3_16s, kerAvr_3_16s>;
    using Sums5 = Separable<kerAvr_5_16s, kerAvr_5_16s>;
    using Floats3 = Staged<kerAvr_3_32f, kerAvr_3_32f, Mean<9>>;
    using Floats5 = Staged<kerAvr_5_32f, kerAvr_5_32f, Mean<25>>;
};

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiFilterLowpassBorder_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                          RoiSize roi, MaskCode mask, BorderKind border, uint8_t borderValue,
                                          uint8_t *buffer) {
    const FilterCall<std::uint8_t, std::uint8_t> call{src, srcStep, dst, dstStep, roi, border, borderValue, buffer};
    const Checks checks = call.check().require(isMask(mask), StatusBadMaskSize);
    if (checks.failed()) {
        return checks.status();
    }
    if (mask == Mask3x3) {
        filterImage<Box::Sums3>(call, StoreMean8u<9>{});
    } else {
        filterImage<Box::Sums5>(call, StoreMean8u<25>{});
    }
    return StatusOk;
}
StatusCode rvxiFilterLowpassBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                           MaskCode mask, BorderKind border, float borderValue, uint8_t *buffer) {
    const FilterCall<float, float> call{src, srcStep, dst, dstStep, roi, border, borderValue, buffer};
    const Checks checks = call.check().require(isMask(mask), StatusBadMaskSize);
    if (checks.failed()) {
        return checks.status();
    }
    filterByMask<Box>(call, mask);
    return StatusOk;
}

StatusCode rvxiFilterLowpassGetBufferSize_8u_C1R(RoiSize roi, MaskCode mask, int32_t *size) {
    return querySeparable<std::uint8_t, largeRoom>(roi, mask, size);
}
StatusCode rvxiFilterLowpassGetBufferSize_32f_C1R(RoiSize roi, MaskCode mask, int32_t *size) {
    return querySeparable<float, smallRoom>(roi, mask, size);
}
