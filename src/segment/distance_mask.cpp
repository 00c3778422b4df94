// The usual step costs of the chamfer distances.
#include "frame/api.h"
#include "kernel/checks.h"

namespace rvxcv {
namespace {

// By norm; a 3x3 mask has two costs and a 5x5 mask three.
template <class T> struct UsualCosts;
template <> struct UsualCosts<std::int32_t> {
    static constexpr std::int32_t small[3][2] = {{1, 1}, {1, 2}, {2, 3}};
    static constexpr std::int32_t large[3][3] = {{1, 1, 2}, {1, 2, 3}, {5, 7, 11}};
};
template <> struct UsualCosts<float> {
    static constexpr float small[3][2] = {{1.0f, 1.0f}, {1.0f, 2.0f}, {0.955f, 1.3693f}};
    static constexpr float large[3][3] = {{1.0f, 1.0f, 2.0f}, {1.0f, 2.0f, 3.0f}, {1.0f, 1.4f, 2.1969f}};
};

template <class T> StatusCode usualCosts(std::int32_t kerSize, NormKind norm, T *metrics) {
    Checks checks;
    checks.pointers(metrics).require(kerSize == 3 || kerSize == 5, StatusBadSize);
    checks.require(norm == NormInf || norm == NormL1 || norm == NormL2, StatusBadArgument);
    if (checks.failed()) {
        return checks.status();
    }
    const T *const costs = kerSize == 3 ? UsualCosts<T>::small[norm] : UsualCosts<T>::large[norm];
    for (int i = 0; i < (kerSize == 3 ? 2 : 3); ++i) {
        storeScalar(metrics + i, costs[i]);
    }
    return StatusOk;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiGetDistanceTransformMask_32s(int32_t kerSize, NormKind norm, int32_t *metrics) {
    return usualCosts(kerSize, norm, metrics);
}
StatusCode rvxiGetDistanceTransformMask_32f(int32_t kerSize, NormKind norm, float *metrics) {
    return usualCosts(kerSize, norm, metrics);
}
StatusCode rvxiGetDistanceTransformMask(int32_t maskType, float *metrics) {
    const int32_t norm = maskType % 10;
    return norm < 0 || norm > 2 ? StatusBadArgument : usualCosts(maskType / 10, norm, metrics);
}
