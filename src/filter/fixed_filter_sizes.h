// Scratch sizes of the fixed filters. They are contracts, fixed to the byte: 15 + 2 * taps rows of intermediate results
// of the width rounded up to 16 pixels, some room for kernels and row pointers, and what the separable pipeline's row
// and column stages ask for at this kernel length. The kernels use far less.
#pragma once

#include "frame/api.h"
#include "kernel/checks.h"

namespace rvxcv {

// The intermediate rows are 16s for 8u sources and 32f for 32f ones.
template <class T> constexpr std::int64_t intermediateBytes = std::is_same_v<T, float> ? 4 : 2;

// What the row and column stages ask for. (Where that does not fit, the rows above it do not fit either.)
template <class T> std::int64_t pipelineScratch(RoiSize roi, std::int32_t taps) {
    std::int32_t row = 0, column = 0;
    if constexpr (std::is_same_v<T, float>) {
        rvxiFilterRowBorderPipelineGetBufferSize_32f_C1R(roi, taps, &row);
        rvxiFilterColumnPipelineGetBufferSize_32f_C1R(roi, taps, &column);
    } else {
        rvxiFilterRowBorderPipelineGetBufferSize_8u16s_C1R(roi, taps, &row);
        rvxiFilterColumnPipelineGetBufferSize_16s_C1R(roi, taps, &column);
    }
    return std::int64_t{row} + column;
}

template <class T> constexpr std::int64_t intermediateRows(std::int64_t width, std::int32_t taps) {
    return roundUp(width, 16) * intermediateBytes<T> * (15 + 2 * taps);
}

// One separable filter. T is the source type; `room` differs between members.
constexpr std::int64_t smallRoom = 304, largeRoom = 368;
template <class T> std::int64_t separableScratch(RoiSize roi, std::int32_t taps, std::int64_t room) {
    return intermediateRows<T>(roi.width, taps) + 24 * taps + room + pipelineScratch<T>(roi, taps);
}

// The Laplacian, two separable filters side by side.
template <class T> std::int64_t laplacianScratch(RoiSize roi, std::int32_t taps) {
    return 2 * intermediateRows<T>(roi.width, taps) + 48 * taps + 576 + pipelineScratch<T>(roi, taps);
}

// The 5x5 Laplacian with 8s results also counts an image of 16-bit sums.
inline std::int64_t dividedLaplacianScratch(RoiSize roi, std::int32_t taps) {
    const std::int64_t sums = taps == 5 ? saturatedSum(saturatedProduct(2, roundUp(roi.width, 16), roi.height), 32) : 0;
    return saturatedSum(laplacianScratch<std::uint8_t>(roi, taps), sums);
}

constexpr bool isMask(MaskCode mask) { return mask == Mask3x3 || mask == Mask5x5; }
constexpr std::int32_t maskTaps(MaskCode mask) { return mask == Mask3x3 ? 3 : 5; }

// A size query; `bytes(roi, taps)` is the formula.
template <class Bytes> StatusCode queryScratch(RoiSize roi, MaskCode mask, std::int32_t *size, const Bytes &bytes) {
    Checks checks;
    checks.pointers(size).size(roi).require(isMask(mask), StatusBadMaskSize);
    return checks.failed() ? checks.status() : storeSize(bytes(roi, maskTaps(mask)), size);
}

template <class T, std::int64_t room> StatusCode querySeparable(RoiSize roi, MaskCode mask, std::int32_t *size) {
    return queryScratch(roi, mask, size,
                        [](RoiSize r, std::int32_t taps) { return separableScratch<T>(r, taps, room); });
}

} // namespace rvxcv
