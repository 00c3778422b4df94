// Chamfer distances to the nearest zero pixel.
#include "frame/api.h"

#include "kernel/checks.h"
#include "segment/chamfer_float.h"
#include "segment/chamfer_integer.h"

namespace rvxcv {
namespace {

template <class T, bool knights, int reach> struct Chamfer : IntegerChamfer<T, knights, reach> {
    using IntegerChamfer<T, knights, reach>::IntegerChamfer;
};
template <bool knights, int reach> struct Chamfer<float, knights, reach> : FloatChamfer<knights, reach> {
    using FloatChamfer<knights, reach>::FloatChamfer;
};

template <int maskSize, class T, class Cost>
StatusCode chamferDistance(const std::uint8_t *src, std::int32_t srcStep, T *dst, std::int32_t dstStep, RoiSize roi,
                           const Cost *metrics) {
    Checks checks;
    checks.pointers(src, dst, metrics).size(roi);
    checks.steps(roi.width, srcStep).steps(rowBytes<T>(roi.width), dstStep).multiples(sizeof(T), dstStep);
    for (int i = 0; !checks.failed() && i < (maskSize == 5 ? 3 : 2); ++i) {
        const Cost cost = loadScalar(metrics + i);
        checks.require(std::is_same_v<Cost, float> ? cost > 0 : cost >= 1, StatusBadMetric);
    }
    if (checks.failed()) {
        return checks.status();
    }
    const StepCosts<T> costs = stepCosts<T>(metrics, maskSize, roi);
    const Plane from{src, srcStep};
    const Plane to{dst, dstStep};
    if (costs.knights) {
        if (costs.shortcuts) {
            Chamfer<T, true, 4>(from, to, roi, costs).run();
        } else {
            Chamfer<T, true, 1>(from, to, roi, costs).run();
        }
    } else if (costs.shortcuts) {
        Chamfer<T, false, 4>(from, to, roi, costs).run();
    } else {
        Chamfer<T, false, 1>(from, to, roi, costs).run();
    }
    return StatusOk;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiDistanceTransform_3x3_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                            RoiSize roi, const int32_t *metrics) {
    return chamferDistance<3>(src, srcStep, dst, dstStep, roi, metrics);
}
StatusCode rvxiDistanceTransform_5x5_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                            RoiSize roi, const int32_t *metrics) {
    return chamferDistance<5>(src, srcStep, dst, dstStep, roi, metrics);
}
StatusCode rvxiDistanceTransform_3x3_8u_C1IR(uint8_t *srcDst, int32_t step, RoiSize roi, const int32_t *metrics) {
    return chamferDistance<3>(srcDst, step, srcDst, step, roi, metrics);
}
StatusCode rvxiDistanceTransform_5x5_8u_C1IR(uint8_t *srcDst, int32_t step, RoiSize roi, const int32_t *metrics) {
    return chamferDistance<5>(srcDst, step, srcDst, step, roi, metrics);
}
StatusCode rvxiDistanceTransform_3x3_8u16u_C1R(const uint8_t *src, int32_t srcStep, uint16_t *dst, int32_t dstStep,
                                               RoiSize roi, const int32_t *metrics) {
    return chamferDistance<3>(src, srcStep, dst, dstStep, roi, metrics);
}
StatusCode rvxiDistanceTransform_5x5_8u16u_C1R(const uint8_t *src, int32_t srcStep, uint16_t *dst, int32_t dstStep,
                                               RoiSize roi, const int32_t *metrics) {
    return chamferDistance<5>(src, srcStep, dst, dstStep, roi, metrics);
}
StatusCode rvxiDistanceTransform_3x3_8u32f_C1R(const uint8_t *src, int32_t srcStep, float *dst, int32_t dstStep,
                                               RoiSize roi, const float *metrics) {
    return chamferDistance<3>(src, srcStep, dst, dstStep, roi, metrics);
}
StatusCode rvxiDistanceTransform_5x5_8u32f_C1R(const uint8_t *src, int32_t srcStep, float *dst, int32_t dstStep,
                                               RoiSize roi, const float *metrics) {
    return chamferDistance<5>(src, srcStep, dst, dstStep, roi, metrics);
}
