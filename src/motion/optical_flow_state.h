// The state of the optical flow: its record is public, its work buffer is laid out here.
#pragma once

#include "filter/fixed_filter_sizes.h"
#include "kernel/checks.h"
#include "kernel/scratch.h"

#include "rvxcv/motion.h"

#include <algorithm>

namespace rvxcv {

// What one point needs at one level. Rows of the window begin at multiples of a vector.
struct FlowWindow {
    std::int64_t size, pitch, patchPitch;
    float *pixels, *dx, *dy; // size x size: the previous image, its derivatives
    float *patch;            // (size + 2) x (size + 2): the previous image with one pixel around
    float *source;           // up to (size + 3) x (size + 3) pixels of an image, for windows across its edges

    FlowWindow(std::int64_t windowSize, void *work) : size(windowSize), pitch(roundUp(size, 8)), patchPitch(pitch + 8) {
        Scratch scratch(work, floats(size) * static_cast<std::int64_t>(sizeof(float)));
        pixels = scratch.take<float>(size * pitch, 32);
        dx = scratch.take<float>(size * pitch, 32);
        dy = scratch.take<float>(size * pitch, 32);
        patch = scratch.take<float>((size + 2) * patchPitch, 32);
        source = scratch.take<float>((size + 3) * (size + 3));
    }

    // (4 n + 12)(n + 3) + (8 n + 24)(n + 3) for the planes, and 17 for their alignment.
    static constexpr std::int64_t floats(std::int64_t n) {
        return saturatedSum(saturatedProduct(12, n + 3, n + 3), std::int64_t{17});
    }
};

// The work buffer's size, in floats. That of the 32f member is a contract: two derivative images of the largest level
// and the scratch of the filter that forms one, beside the window. They are not used: derivatives are formed window by
// window, whatever the level's size, from pixels that are sampled anyway. (Sampling two derivative images instead takes
// as many operations as forming a window's derivatives does, and more loads, before the first image is filtered.) The
// 8u and 16u members allocate the window alone, and a state of any of them has room for all.
template <class T> std::int64_t flowWorkFloats(RoiSize maxRoi, std::int32_t winSize) {
    std::int64_t floats = FlowWindow::floats(winSize);
    if constexpr (std::is_same_v<T, float>) {
        const std::int64_t width = std::int64_t{maxRoi.width} + 5, height = std::int64_t{maxRoi.height} + 5;
        const RoiSize roi{static_cast<std::int32_t>(std::min<std::int64_t>(width, INT32_MAX)), 1};
        const std::int64_t filter = separableScratch<float>(roi, 3, largeRoom) / rowBytes<float>(1);
        floats = saturatedSum(floats, filter, saturatedProduct(2, width, height));
    }
    return floats;
}

} // namespace rvxcv
