#include "filter/pyramid/level_sizes.h"

#include "frame/api.h"
#include "kernel/checks.h"

#include <algorithm>

namespace rvxcv {

// All products and quotients are single-precision ones, on purpose: the two ends of the range for a candidate and the
// one above it are formed from the same rounded product, so the ranges leave no gap in which the search below could
// swing between two candidates for ever.
LengthRange pyramidUpLengths(std::int32_t length, float rate) {
    const std::int64_t grown = std::int64_t{length} + 1;
    const auto product = [rate](std::int32_t n) { return static_cast<std::int64_t>(static_cast<float>(n) * rate); };
    return {length == 1 ? 1 : std::max(product(length - 1) + 1, grown), std::max(product(length), grown)};
}

std::int32_t pyramidDownLength(std::int32_t length, float rate) {
    // The quotient never exceeds the length's own rounding to float, which can be 2^31.
    const float quotient = static_cast<float>(length) / rate + 0.5f;
    const auto start = static_cast<std::int64_t>(quotient);
    auto candidate = static_cast<std::int32_t>(std::clamp<std::int64_t>(start, 1, INT32_MAX));
    // At most one step while lengths are exact in float, some hundreds at the far end of 32 bits.
    for (;;) {
        const LengthRange range = pyramidUpLengths(candidate, rate);
        if (length < range.least) {
            --candidate;
        } else if (length > range.most) {
            ++candidate;
        } else {
            return candidate;
        }
    }
}

namespace {

std::int32_t saturated(std::int64_t length) {
    return static_cast<std::int32_t>(std::min<std::int64_t>(length, INT32_MAX));
}

template <class... Out> StatusCode check(RoiSize roi, float rate, const Out *...out) {
    Checks checks;
    checks.pointers(out...).size(roi).require(isPyramidRate(rate), StatusBadArgument);
    return checks.status();
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiGetPyramidDownROI(RoiSize srcRoi, RoiSize *dstRoi, float rate) {
    const StatusCode status = check(srcRoi, rate, dstRoi);
    if (status == StatusOk) {
        *dstRoi = pyramidDownSize(srcRoi, rate);
    }
    return status;
}

StatusCode rvxiGetPyramidUpROI(RoiSize srcRoi, RoiSize *dstRoiMin, RoiSize *dstRoiMax, float rate) {
    const StatusCode status = check(srcRoi, rate, dstRoiMin, dstRoiMax);
    if (status == StatusOk) {
        const LengthRange widths = pyramidUpLengths(srcRoi.width, rate);
        const LengthRange heights = pyramidUpLengths(srcRoi.height, rate);
        *dstRoiMin = {saturated(widths.least), saturated(heights.least)};
        *dstRoiMax = {saturated(widths.most), saturated(heights.most)};
    }
    return status;
}
