// The corner measure of C. Harris and M. Stephens (A Combined Corner and Edge Detector, Alvey Vision Conference 1988):
// determinant and trace of the gradient covariance, without a square root.
#include "feature/gradient_covariance.h"

namespace rvxcv {
namespace {

struct HarrisMeasure {
    Plane<float> dst;
    float squaredScale, k;

    struct Row {
        float *dst;
        F32x8 squaredScale, minusK;

        template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span, F32x8 a, F32x8 b, F32x8 c) const {
            const F32x8 trace = add(a, b), determinant = fma(a, b, negated(mul(c, c)));
            store(dst + x, mul(squaredScale, fma(minusK, mul(trace, trace), determinant)), span);
        }
    };
    Row row(std::int64_t y, std::int64_t x) const { return {dst.row(y) + x, splat(squaredScale), splat(-k)}; }
};

template <class T>
StatusCode harrisCorner(const T *src, std::int32_t srcStep, float *dst, std::int32_t dstStep, RoiSize roi,
                        std::int32_t filter, std::int32_t aperture, std::int32_t block, float k, std::uint8_t *buffer) {
    Checks checks;
    checks.pointers(src, dst, buffer).size(roi);
    checks.steps(rowBytes<T>(roi.width), srcStep).steps(rowBytes<float>(roi.width), dstStep);
    checks.multiples(sizeof(T), srcStep).multiples(sizeof(float), dstStep);
    checkFilter(checks, filter, aperture, block).require(k >= 0, StatusOutOfRange);
    checks.require(static_cast<const void *>(src) != dst, StatusInPlaceNotSupported);
    if (checks.failed()) {
        return checks.status();
    }
    const CovarianceSource<T> source{{src, srcStep}, roi, buffer};
    withFilter(filter, aperture, [&](auto derivative) {
        readImage(source, derivative, block, HarrisMeasure{{dst, dstStep}, derivative.scale * derivative.scale, k});
    });
    return StatusOk;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiHarrisCorner_8u32f_C1R(const uint8_t *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                      int32_t filter, int32_t aperture, int32_t block, float k, uint8_t *buffer) {
    return harrisCorner(src, srcStep, dst, dstStep, roi, filter, aperture, block, k, buffer);
}
StatusCode rvxiHarrisCorner_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                    int32_t filter, int32_t aperture, int32_t block, float k, uint8_t *buffer) {
    return harrisCorner(src, srcStep, dst, dstStep, roi, filter, aperture, block, k, buffer);
}
StatusCode rvxiHarrisCornerGetBufferSize_8u32f_C1R(RoiSize roi, int32_t aperture, int32_t block, int32_t *size) {
    return queryCovariance<std::uint8_t>(roi, aperture, block, size);
}
StatusCode rvxiHarrisCornerGetBufferSize_32f_C1R(RoiSize roi, int32_t aperture, int32_t block, int32_t *size) {
    return queryCovariance<float>(roi, aperture, block, size);
}
