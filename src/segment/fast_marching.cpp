// Arrival times of a front that starts from the zero pixels, by the fast march.
#include "frame/api.h"
#include "kernel/checks.h"
#include "kernel/plane.h"
#include "kernel/scratch.h"
#include "segment/march.h"

#include <cstring>
#include <limits>

namespace rvxcv {
namespace {

std::int64_t scratchBytes(RoiSize roi) {
    const std::int64_t w = roi.width, h = roi.height;
    return saturatedSum(saturatedProduct(8, w + 2, h + 2), saturatedProduct(4, w, h), 64);
}

void fastMarching(Plane<const std::uint8_t> src, Plane<float> dst, RoiSize roi, std::uint8_t *buffer) {
    const std::int64_t w = roi.width, h = roi.height, stride = w + 2;
    // The keys take twice the room of a heap of numbers; that a waiting pixel's word is its place makes up for it.
    Scratch areas(buffer, scratchBytes(roi));
    auto *const words = areas.take<std::uint32_t>(stride * (h + 2), 8);
    auto *const heap = areas.take<std::uint64_t>(w * h);
    std::uint32_t *const inside = words + stride + 1;
    March march(words, stride, heap, w * h);
    std::fill(words, inside, March::outside);
    for (std::int64_t y = 0; y <= h; ++y) {
        if (y < h) {
            const std::uint8_t *const row = src.row(y);
            auto *const rowWords = reinterpret_cast<std::int32_t *>(inside + y * stride);
            walkRow<8>(w, [&](std::ptrdiff_t x, auto span) {
                const Mask32x8 set = greater(loadI32(row + x, span), splat(0));
                store(rowWords + x, keep(set, splat(static_cast<std::int32_t>(March::untouched))), span);
            });
            std::fill_n(inside + y * stride + w, 2, March::outside);
        } else {
            std::fill(inside + h * stride, words + stride * (h + 2), March::outside);
        }
        // While its words and those above and below are at hand.
        if (y > 0) {
            march.collect(y * stride + 1, w);
        }
    }
    march.run([](std::uint32_t) {});
    const bool started = inside[0] != March::untouched;
    for (std::int64_t y = 0; y < h; ++y) {
        float *const row = dst.row(y);
        if (started) {
            std::memcpy(row, inside + y * stride, static_cast<std::size_t>(w) * sizeof(float));
        } else {
            walkRow<8>(w, [&](std::ptrdiff_t x, auto span) {
                store(row + x, splat(std::numeric_limits<float>::max()), span);
            });
        }
    }
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiFastMarching_8u32f_C1R(const uint8_t *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                      uint8_t *buffer) {
    Checks checks;
    checks.pointers(src, dst, buffer).size(roi);
    checks.steps(roi.width, srcStep).steps(rowBytes<float>(roi.width), dstStep).multiples(sizeof(float), dstStep);
    if (checks.failed()) {
        return checks.status();
    }
    fastMarching({src, srcStep}, {dst, dstStep}, roi, buffer);
    return StatusOk;
}
StatusCode rvxiFastMarchingGetBufferSize_8u32f_C1R(RoiSize roi, int32_t *bufferSize) {
    Checks checks;
    checks.pointers(bufferSize).size(roi);
    return checks.failed() ? checks.status() : storeSize(scratchBytes(roi), bufferSize);
}
