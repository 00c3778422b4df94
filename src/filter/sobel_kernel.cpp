// One-dimensional Sobel kernels of any odd length: n - 1 passes over a kernel that starts as a single 1 at its end and
// grows to the front by one element each, first the passes that smooth (convolution with 1 1), then the `order` ones
// that differentiate (convolution with -1 1).
#include "frame/api.h"
#include "kernel/checks.h"

namespace rvxcv {
namespace {

// The integer kernel wraps where its binomial coefficients leave 16 bits.
template <class T, class Sum> StatusCode generateSobel(T *dst, std::int32_t n, std::int32_t order, std::int32_t sign) {
    Checks checks;
    checks.pointers(dst).require(n >= 1 && n % 2 != 0 && order >= 0 && order < n, StatusBadSize);
    if (checks.failed()) {
        return checks.status();
    }
    for (std::int32_t i = 0; i < n; ++i) {
        storeScalar(dst + i, static_cast<T>(i == n - 1));
    }
    for (std::int32_t pass = 0; pass < n - 1; ++pass) {
        const bool smooths = pass < n - 1 - order;
        for (std::int32_t i = n - 2 - pass; i <= n - 2; ++i) {
            const Sum here = loadScalar(dst + i), next = loadScalar(dst + i + 1);
            storeScalar(dst + i, static_cast<T>(smooths ? here + next : here - next));
        }
    }
    for (std::int32_t i = 0; sign < 0 && i < n; ++i) {
        storeScalar(dst + i, static_cast<T>(-Sum{loadScalar(dst + i)}));
    }
    return StatusOk;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiGenSobelKernel_16s(int16_t *dst, int32_t n, int32_t order, int32_t sign) {
    return generateSobel<std::int16_t, std::int32_t>(dst, n, order, sign);
}
StatusCode rvxiGenSobelKernel_32f(float *dst, int32_t n, int32_t order, int32_t sign) {
    return generateSobel<float, float>(dst, n, order, sign);
}
