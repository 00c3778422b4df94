// The exact Euclidean distance to the nearest zero pixel: distances along the columns, then for every row the lower
// envelope of the parabolas (q - p)^2 + g(p)^2 over its columns p, then the root.
//
// A parabola is a point (p, h) with h = p^2 + g(p)^2, and the envelope's parabolas are the points of the lower convex
// hull. Everything is integer arithmetic, so nothing depends on how far apart the columns are.
#include "frame/api.h"
#include "kernel/checks.h"
#include "kernel/plane.h"
#include "kernel/scratch.h"
#include "kernel/vec.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace rvxcv {
namespace {

std::int64_t scratchBytes(RoiSize roi) { return 24 * roundUp(std::max(roi.width, roi.height), 4) + 56; }

__extension__ using Int128 = __int128;

constexpr std::int32_t none = INT32_MAX; // a column without a zero

float rootOf(std::int64_t squared) {
    // Rounding twice is harmless: an integer's root that is no float's midpoint is farther from it than the first
    // rounding goes, in double precision up to 2^53 and in extended precision beyond.
    return squared < INT64_C(1) << 53 ? static_cast<float>(std::sqrt(static_cast<double>(squared)))
                                      : static_cast<float>(__builtin_sqrtl(static_cast<long double>(squared)));
}

void trueDistance(Plane<const std::uint8_t> src, Plane<float> dst, RoiSize roi, std::uint8_t *buffer) {
    const std::int64_t w = roi.width, h = roi.height;
    std::int32_t *const below = reinterpret_cast<std::int32_t *>(buffer);
    std::int32_t *const column = below + w;
    std::int32_t *const height = column + w;
    for (std::int64_t y = 0; y < h; ++y) {
        auto *const row = reinterpret_cast<std::int32_t *>(dst.row(y));
        const std::uint8_t *const pixels = src.row(y);
        for (std::int64_t x = 0; x < w; ++x) {
            const std::int32_t above = y > 0 ? loadScalar(byteOffset(row, -dst.step) + x) : none;
            storeScalar(row + x, pixels[x] == 0 ? 0 : above == none ? none : above + 1);
        }
    }
    for (std::int64_t x = 0; x < w; ++x) {
        storeScalar(below + x, none);
    }
    for (std::int64_t y = h - 1; y >= 0; --y) {
        float *const row = dst.row(y);
        std::int64_t count = 0;
        for (std::int64_t x = 0; x < w; ++x) {
            std::int32_t g = loadScalar(reinterpret_cast<std::int32_t *>(row) + x);
            const std::int32_t next = loadScalar(below + x);
            g = std::min(g, next == none ? none : next + 1);
            storeScalar(below + x, g);
            if (g == none) {
                continue;
            }
            const auto point = [&](std::int64_t i) {
                const std::int64_t p = loadScalar(column + i), gp = loadScalar(height + i);
                return std::pair(p, p * p + gp * gp);
            };
            const std::int64_t hull = x * x + std::int64_t{g} * g;
            while (count >= 2) {
                const auto [u, hu] = point(count - 2);
                const auto [v, hv] = point(count - 1);
                if (static_cast<Int128>(hv - hu) * (x - v) < static_cast<Int128>(hull - hv) * (v - u)) {
                    break;
                }
                --count;
            }
            storeScalar(column + count, static_cast<std::int32_t>(x));
            storeScalar(height + count, g);
            ++count;
        }
        std::int64_t k = 0;
        for (std::int64_t x = 0; x < w; ++x) {
            if (count == 0) {
                storeScalar(row + x, std::sqrt(std::numeric_limits<float>::max()));
                continue;
            }
            const auto squared = [&](std::int64_t i) {
                const std::int64_t dx = x - loadScalar(column + i), dy = loadScalar(height + i);
                return dx * dx + dy * dy;
            };
            while (k + 1 < count && squared(k + 1) <= squared(k)) {
                ++k;
            }
            storeScalar(row + x, rootOf(squared(k)));
        }
    }
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiTrueDistanceTransform_8u32f_C1R(const uint8_t *src, int32_t srcStep, float *dst, int32_t dstStep,
                                               RoiSize roi, uint8_t *buffer) {
    Checks checks;
    checks.pointers(src, dst, buffer).size(roi);
    checks.steps(roi.width, srcStep).steps(rowBytes<float>(roi.width), dstStep).multiples(sizeof(float), dstStep);
    if (checks.failed()) {
        return checks.status();
    }
    trueDistance({src, srcStep}, {dst, dstStep}, roi, buffer);
    return StatusOk;
}
StatusCode rvxiTrueDistanceTransformGetBufferSize_8u32f_C1R(RoiSize roi, int32_t *bufferSize) {
    Checks checks;
    checks.pointers(bufferSize).size(roi);
    return checks.failed() ? checks.status() : storeSize(scratchBytes(roi), bufferSize);
}
