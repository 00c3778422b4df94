// Eigenvalues and eigenvectors of the gradient covariance in a block around every pixel.
//
// The vector of the larger eigenvalue has the direction (d + r, e) and also that of (e, r - d); of the two the one is
// taken whose first (second) part is a sum of two numbers that are not negative, so that nothing cancels.
#include "feature/gradient_covariance.h"
#include "kernel/vec/transpose.h"

namespace rvxcv {
namespace {

struct Eigensystems {
    static constexpr int floats = 6; // a pixel
    Plane<float> dst;
    float halfScale;

    struct Row {
        float *dst;
        F32x8 halfScale;

        template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span, F32x8 a, F32x8 b, F32x8 c) const {
            const TraceAndRoot eigen(a, b, c);
            const F32x8 zero = splat(0.0f), e = add(c, c);
            const Mask32x8 steep = greaterEqual(eigen.difference, zero), none = equal(eigen.root, zero);
            const F32x8 sum = add(eigen.root, abs(eigen.difference)); // d + r, or r - d
            const F32x8 ux = select(steep, sum, abs(e));
            const F32x8 uy = select(steep, e, select(greater(zero, e), negated(sum), sum));
            const F32x8 n = sqrt(fma(ux, ux, mul(uy, uy)));
            const F32x8 x1 = select(none, splat(1.0f), div(ux, n)), y1 = without(div(uy, n), none);
            const F32x8 system[floats] = {mul(halfScale, add(eigen.trace, eigen.root)),
                                          mul(halfScale, sub(eigen.trace, eigen.root)),
                                          x1,
                                          y1,
                                          negated(y1),
                                          x1};
            storeSixes(dst + floats * x, system, span);
        }
    };
    Row row(std::int64_t y, std::int64_t x) const { return {dst.row(y) + floats * x, splat(halfScale)}; }
};

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiEigenValsVecs_8u32f_C1R(const uint8_t *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                       int32_t kernel, int32_t aperture, int32_t block, uint8_t *buffer) {
    return readByKernel<Eigensystems>(src, srcStep, dst, dstStep, roi, kernel, aperture, block, buffer);
}
StatusCode rvxiEigenValsVecs_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                     int32_t kernel, int32_t aperture, int32_t block, uint8_t *buffer) {
    return readByKernel<Eigensystems>(src, srcStep, dst, dstStep, roi, kernel, aperture, block, buffer);
}
StatusCode rvxiEigenValsVecsGetBufferSize_8u32f_C1R(RoiSize roi, int32_t aperture, int32_t block, int32_t *size) {
    return queryCovariance<std::uint8_t>(roi, aperture, block, size);
}
StatusCode rvxiEigenValsVecsGetBufferSize_32f_C1R(RoiSize roi, int32_t aperture, int32_t block, int32_t *size) {
    return queryCovariance<float>(roi, aperture, block, size);
}
