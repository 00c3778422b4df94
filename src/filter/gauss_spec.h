// What a Gaussian filter is set up from: the kernel, the record that holds it, and the scratch sizes,
// which are contracts, fixed to the byte.
#pragma once

#include "frame/api.h"
#include "kernel/checks.h"

#include <algorithm>
#include <cmath>

namespace rvxcv {

// ------------------------------------------------------------------------------------------------------ the kernel

constexpr bool isGaussianSize(std::int32_t kernelSize) { return kernelSize >= 3 && kernelSize % 2 != 0; }

constexpr bool isGaussianBorder(BorderKind border) {
    constexpr BorderKind sides = BorderInMemoryTop | BorderInMemoryBottom | BorderInMemoryLeft | BorderInMemoryRight;
    const BorderKind kind = border & ~sides;
    return kind == BorderConstant || kind == BorderReplicate || kind == BorderInMemory;
}

// The bell exp(-x^2 / 2 sigma^2) of `size` taps and its float sum: the exponent in single precision, exp in double.
class Bell {
public:
    Bell(std::int32_t size, float sigma) : reach_(size / 2), width_(sigma * (sigma + sigma)) {
        for (std::int32_t i = 0; i < size; ++i) {
            sum_ += at(i);
        }
    }

    // The middle is exp(0) even where the square of a very small sigma is 0.
    float at(std::int32_t i) const {
        const auto x = static_cast<float>(i - reach_);
        return i == reach_ ? 1.0f : static_cast<float>(std::exp(static_cast<double>(-(x * x) / width_)));
    }
    float weight(std::int32_t i) const { return at(i) / sum_; }

    // The weight in units of 1 / 2^shift.
    std::uint16_t fixedPoint(std::int32_t i, std::int32_t shift) const {
        const auto one = static_cast<float>(std::int32_t{1} << shift);
        return static_cast<std::uint16_t>(std::floor(0.5 + static_cast<double>(one * weight(i))));
    }

private:
    std::int32_t reach_;
    float width_, sum_ = 0.0f;
};

// ------------------------------------------------------------------------------------------------------ the record

// The coefficients stand at a fixed distance from the record's start, whatever its address: it can be copied.
constexpr std::int64_t coefficientsAt = roundUp(sizeof(GaussianSpec), 16);
constexpr std::int32_t broadcast = 8; // how often a float coefficient is written

constexpr bool isGaussianType(PixelTypeCode type) {
    return type == PixelType8u || type == PixelType16u || type == PixelType16s || type == PixelType32f;
}
constexpr std::int32_t fixedPointShift(PixelTypeCode type) {
    return type == PixelType8u ? 12 : type == PixelType32f ? 0 : 15;
}

// Room for `kernelSize` coefficients; that of the integer types is more than they fill.
constexpr std::int64_t specBytes(std::int32_t kernelSize, PixelTypeCode type) {
    return type == PixelType32f ? 32 * std::int64_t{kernelSize} + 32 : 16 * std::int64_t{kernelSize} + 36;
}

inline void fillSpec(GaussianSpec *spec, std::int32_t kernelSize, PixelTypeCode type, BorderKind border, float sigma) {
    const std::int32_t shift = fixedPointShift(type);
    const GaussianSpec head{kernelSize, sizeof(GaussianSpec), type, border, shift};
    std::memcpy(static_cast<void *>(spec), &head, sizeof head);

    const Bell bell(kernelSize, sigma);
    auto *const table = reinterpret_cast<std::uint8_t *>(spec) + coefficientsAt;
    for (std::int32_t i = 0; i < kernelSize; ++i) {
        if (type == PixelType32f) {
            auto *const copies = reinterpret_cast<float *>(table) + std::int64_t{i} * broadcast;
            const float weight = bell.weight(i);
            for (std::int32_t copy = 0; copy < broadcast; ++copy) {
                storeScalar(copies + copy, weight);
            }
        } else {
            storeScalar(reinterpret_cast<std::uint16_t *>(table) + i, bell.fixedPoint(i, shift));
        }
    }
}

inline GaussianSpec loadSpec(const GaussianSpec *spec) {
    GaussianSpec head;
    std::memcpy(&head, static_cast<const void *>(spec), sizeof head);
    return head;
}

template <class Coefficient> const Coefficient *specCoefficients(const GaussianSpec *spec) {
    return reinterpret_cast<const Coefficient *>(reinterpret_cast<const std::uint8_t *>(spec) + coefficientsAt);
}

// ------------------------------------------------------------------------------------------------------ scratch

// What the row and the column stage ask for, or the largest number where that does not fit.
inline std::int64_t stageBytes(RoiSize roi, std::int32_t kernelSize, PixelTypeCode type, std::int32_t channels) {
    using Query = StatusCode (*)(RoiSize, std::int32_t, std::int32_t *);
    struct Stages {
        PixelTypeCode type;
        Query row[2], column[2]; // one channel, three channels
    };
    constexpr Stages stages[] = {
        {PixelType8u,
         {rvxiFilterRowBorderPipelineGetBufferSize_8u16s_C1R, rvxiFilterRowBorderPipelineGetBufferSize_8u16s_C3R},
         {rvxiFilterColumnPipelineGetBufferSize_16s8u_C1R, rvxiFilterColumnPipelineGetBufferSize_16s8u_C3R}},
        {PixelType16u,
         {rvxiFilterRowBorderPipelineGetBufferSize_16u_C1R, rvxiFilterRowBorderPipelineGetBufferSize_16u_C3R},
         {rvxiFilterColumnPipelineGetBufferSize_16u_C1R, rvxiFilterColumnPipelineGetBufferSize_16u_C3R}},
        {PixelType16s,
         {rvxiFilterRowBorderPipelineGetBufferSize_16s_C1R, rvxiFilterRowBorderPipelineGetBufferSize_16s_C3R},
         {rvxiFilterColumnPipelineGetBufferSize_16s_C1R, rvxiFilterColumnPipelineGetBufferSize_16s_C3R}},
        {PixelType32f,
         {rvxiFilterRowBorderPipelineGetBufferSize_32f_C1R, rvxiFilterRowBorderPipelineGetBufferSize_32f_C3R},
         {rvxiFilterColumnPipelineGetBufferSize_32f_C1R, rvxiFilterColumnPipelineGetBufferSize_32f_C3R}}};
    for (const Stages &s : stages) {
        if (s.type == type) {
            std::int32_t row = 0, column = 0;
            const bool fits = s.row[channels / 3](roi, kernelSize, &row) == StatusOk &&
                              s.column[channels / 3](roi, kernelSize, &column) == StatusOk;
            return fits ? std::int64_t{row} + 32 + column + 32 : INT64_MAX;
        }
    }
    return INT64_MAX;
}

// Rows of intermediate results, row pointers, and the stages' scratch.
inline std::int64_t gaussianBytes(RoiSize roi, std::int32_t kernelSize, PixelTypeCode type, std::int32_t channels) {
    const std::int64_t k = kernelSize, rows = std::min<std::int64_t>(roi.height, k) + k;
    const std::int64_t row = roundUp((roi.width + k) * channels, 8);
    std::int64_t areas = 0;
    if (type == PixelType32f) {
        areas = saturatedSum(saturatedProduct(4, row, k), 32, saturatedProduct(4, row, rows), 64);
    } else {
        const std::int64_t extended = roundUp((roi.width + k - 1) * channels, 8);
        areas = saturatedSum(saturatedProduct(2, row, rows), 64, saturatedProduct(2, extended, k / 2 * 2), 2 * 16);
    }
    return saturatedSum(areas, stageBytes(roi, kernelSize, type, channels), 8 * rows + 32);
}

// The one-call variant: the same without regard to the height, and the kernel.
inline std::int64_t gaussianOneCallBytes(RoiSize roi, std::int32_t kernelSize) {
    const std::int64_t k = kernelSize, w = roi.width;
    const std::int64_t kernel = 16 * ((k + 3) / 4) + 32;
    const std::int64_t extended = 2 * (saturatedProduct(32, (w + k + 7) / 8, k) / 2);
    const std::int64_t rows = saturatedProduct(32, (w + k + 3) / 4, k);
    const std::int64_t stages = stageBytes(roi, kernelSize, PixelType32f, 1);
    return saturatedSum(kernel, extended, rows, 64, stages, 8 * (k + k) + 32);
}

} // namespace rvxcv
