// The smaller eigenvalue of the gradient covariance in a block around every pixel (Shi and Tomasi, Good Features to
// Track, CVPR 1994).
#include "feature/gradient_covariance.h"

namespace rvxcv {
namespace {

struct SmallerEigenvalues {
    static constexpr int floats = 1;
    Plane<float> dst;
    float halfScale;

    struct Row {
        float *dst;
        F32x8 halfScale;

        template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span, F32x8 a, F32x8 b, F32x8 c) const {
            const TraceAndRoot eigen(a, b, c);
            store(dst + x, mul(halfScale, sub(eigen.trace, eigen.root)), span);
        }
    };
    Row row(std::int64_t y, std::int64_t x) const { return {dst.row(y) + x, splat(halfScale)}; }
};

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiMinEigenVal_8u32f_C1R(const uint8_t *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                     int32_t kernel, int32_t aperture, int32_t block, uint8_t *buffer) {
    return readByKernel<SmallerEigenvalues>(src, srcStep, dst, dstStep, roi, kernel, aperture, block, buffer);
}
StatusCode rvxiMinEigenVal_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                   int32_t kernel, int32_t aperture, int32_t block, uint8_t *buffer) {
    return readByKernel<SmallerEigenvalues>(src, srcStep, dst, dstStep, roi, kernel, aperture, block, buffer);
}
StatusCode rvxiMinEigenValGetBufferSize_8u32f_C1R(RoiSize roi, int32_t aperture, int32_t block, int32_t *size) {
    return queryCovariance<std::uint8_t>(roi, aperture, block, size);
}
StatusCode rvxiMinEigenValGetBufferSize_32f_C1R(RoiSize roi, int32_t aperture, int32_t block, int32_t *size) {
    return queryCovariance<float>(roi, aperture, block, size);
}
