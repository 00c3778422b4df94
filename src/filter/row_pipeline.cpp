// The row stage of the separable pipeline: filters rows with a caller's kernel, produces the left and right border, and
// writes each row to storage of its own. The arithmetic stands in pipeline_sums.h, the kernels in row_kernels.h, the
// way along a row in row_stage.h; here are the members, their checks and their scratch sizes.
#include "frame/api.h"

#include "filter/row_stage.h"
#include "kernel/checks.h"
#include "kernel/scratch.h"

namespace rvxcv {
namespace {

// ------------------------------------------------------------------------------------------------------ members

// scratchBytes: the size that a caller provides for a kernel of k taps.
struct AnyDivisorButZero {
    static bool accepts(std::int32_t divisor) { return divisor != 0; }
};

template <int c> struct Row16s : AnyDivisorButZero {
    using Source = std::int16_t;
    using Destination = std::int16_t;
    using Coefficient = std::int16_t;
    using Output = Divided<std::int16_t>;
    template <int taps> using Kernel = PairRow<c, taps>;
    static constexpr int channels = c;
    static constexpr std::int64_t scratchBytes(std::int64_t k) { return c == 1 ? 48 * k + 112 : 40 * k + 96; }
};

template <int c> struct Row8u16s : Row16s<c> {
    using Source = std::uint8_t;
    static constexpr std::int64_t scratchBytes(std::int64_t k) {
        return c == 1 ? 32 * (k + k / 4) + 2 * k + 66 : 60 * k + 144;
    }
};

template <int c> struct RowLow16s : Row16s<c> {
    using Output = DividedLow;
    template <int taps> using Kernel = ChainRow<LowArithmetic, c, taps>;
    static constexpr std::int64_t scratchBytes(std::int64_t k) { return c == 1 ? 24 * k + 96 : 208 * k + 96; }
};

template <int c> struct Row32f {
    using Source = float;
    using Destination = float;
    using Coefficient = float;
    using Output = Undivided;
    template <int taps> using Kernel = ChainRow<FloatArithmetic, c, taps>;
    static constexpr int channels = c;
    static bool accepts(std::int32_t) { return true; }
    static constexpr std::int64_t scratchBytes(std::int64_t k) { return c == 1 ? 96 * k + 96 : 288 * k + 96; }
};

// Coefficients are unsigned; they become floats in the scratch buffer.
template <int c> struct Row16u : Row32f<c> {
    using Source = std::uint16_t;
    using Destination = std::uint16_t;
    using Coefficient = std::uint16_t;
    using Output = Divided<std::uint16_t>;
    static bool accepts(std::int32_t divisor) { return divisor >= 1; }
    static constexpr std::int64_t scratchBytes(std::int64_t k) { return c == 1 ? 64 * k + 96 : 128 * k + 96; }
};

// ------------------------------------------------------------------------------------------------------- checks

constexpr bool acceptsBorder(BorderKind border) {
    const BorderKind kind = border & 15;
    return kind == BorderConstant || kind == BorderReplicate || kind == BorderInMemory;
}

template <class Member>
StatusCode check(const typename Member::Source *src, std::int32_t srcStep, typename Member::Destination *const *dstRows,
                 RoiSize roi, const typename Member::Coefficient *kernel, std::int32_t kernelSize, std::int32_t xAnchor,
                 BorderKind border, const typename Member::Source *borderValue, std::int32_t divisor,
                 const std::uint8_t *buffer) {
    using Source = typename Member::Source;
    Checks checks;
    checks.pointers(src, dstRows, kernel, buffer).size(roi).rowPointers(dstRows, roi.height).pointers(borderValue);
    checks.require(kernelSize >= 1, StatusBadSize);
    checks.require(xAnchor >= 0 && xAnchor < kernelSize, StatusBadAnchor);
    checks.steps(rowBytes<Source>(std::int64_t{roi.width} * Member::channels), srcStep);
    checks.multiples(sizeof(Source), srcStep);
    return checks.require(acceptsBorder(border) && Member::accepts(divisor), StatusBadArgument).status();
}

template <class Member> StatusCode bufferSize(RoiSize roi, std::int32_t kernelSize, std::int32_t *size) {
    const StatusCode status = Checks().pointers(size).size(roi).require(kernelSize >= 1, StatusBadSize).status();
    return status == StatusOk ? storeSize(Member::scratchBytes(kernelSize), size) : status;
}

// ---------------------------------------------------------------------------------------------------- the stage

// Patches are kept short enough to stay in the first-level cache.
constexpr std::int64_t longestPatchBytes = 8192;

template <class Member>
StatusCode
filterRows(const typename Member::Source *src, std::int32_t srcStep, typename Member::Destination *const *dstRows,
           RoiSize roi, const typename Member::Coefficient *kernel, std::int32_t kernelSize, std::int32_t xAnchor,
           BorderKind border, const typename Member::Source *borderValue, std::int32_t divisor, std::uint8_t *buffer) {
    using Source = typename Member::Source;
    const StatusCode status =
        check<Member>(src, srcStep, dstRows, roi, kernel, kernelSize, xAnchor, border, borderValue, divisor, buffer);
    if (status != StatusOk) {
        return status;
    }
    const RowTask<typename Member::Source, typename Member::Destination> task{
        {src, srcStep}, dstRows, roi, kernelSize, xAnchor, Border(border), borderValue};
    Scratch scratch(buffer, Member::scratchBytes(kernelSize));
    const auto *taps = ownTaps(kernel, kernelSize, scratch);
    constexpr std::int64_t pixelBytes = rowBytes<Source>(Member::channels);
    const std::int64_t longest = longestPatchBytes / pixelBytes + kernelSize + unit;
    const std::int64_t capacity = std::min(scratch.left() / pixelBytes, longest);
    auto *patch = scratch.take<Source>(capacity * Member::channels, 1);
    withTapCount<7>(kernelSize, [&](auto count) {
        using Kernel = typename Member::template Kernel<decltype(count)::value>;
        filterRows<Member::channels>(task, Kernel(taps, kernelSize), typename Member::Output(divisor), patch, capacity);
    });
    return StatusOk;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiFilterRowBorderPipeline_16s_C1R(const int16_t *src, int32_t srcStep, int16_t *const *dstRows,
                                               RoiSize roi, const int16_t *kernel, int32_t kernelSize, int32_t xAnchor,
                                               BorderKind border, int16_t borderValue, int32_t divisor,
                                               uint8_t *buffer) {
    return filterRows<Row16s<1>>(src, srcStep, dstRows, roi, kernel, kernelSize, xAnchor, border, &borderValue, divisor,
                                 buffer);
}
StatusCode rvxiFilterRowBorderPipeline_16s_C3R(const int16_t *src, int32_t srcStep, int16_t *const *dstRows,
                                               RoiSize roi, const int16_t *kernel, int32_t kernelSize, int32_t xAnchor,
                                               BorderKind border, const int16_t *borderValue, int32_t divisor,
                                               uint8_t *buffer) {
    return filterRows<Row16s<3>>(src, srcStep, dstRows, roi, kernel, kernelSize, xAnchor, border, borderValue, divisor,
                                 buffer);
}
StatusCode rvxiFilterRowBorderPipeline_16u_C1R(const uint16_t *src, int32_t srcStep, uint16_t *const *dstRows,
                                               RoiSize roi, const uint16_t *kernel, int32_t kernelSize, int32_t xAnchor,
                                               BorderKind border, uint16_t borderValue, int32_t divisor,
                                               uint8_t *buffer) {
    return filterRows<Row16u<1>>(src, srcStep, dstRows, roi, kernel, kernelSize, xAnchor, border, &borderValue, divisor,
                                 buffer);
}
StatusCode rvxiFilterRowBorderPipeline_16u_C3R(const uint16_t *src, int32_t srcStep, uint16_t *const *dstRows,
                                               RoiSize roi, const uint16_t *kernel, int32_t kernelSize, int32_t xAnchor,
                                               BorderKind border, const uint16_t *borderValue, int32_t divisor,
                                               uint8_t *buffer) {
    return filterRows<Row16u<3>>(src, srcStep, dstRows, roi, kernel, kernelSize, xAnchor, border, borderValue, divisor,
                                 buffer);
}
StatusCode rvxiFilterRowBorderPipeline_8u16s_C1R(const uint8_t *src, int32_t srcStep, int16_t *const *dstRows,
                                                 RoiSize roi, const int16_t *kernel, int32_t kernelSize,
                                                 int32_t xAnchor, BorderKind border, uint8_t borderValue,
                                                 int32_t divisor, uint8_t *buffer) {
    return filterRows<Row8u16s<1>>(src, srcStep, dstRows, roi, kernel, kernelSize, xAnchor, border, &borderValue,
                                   divisor, buffer);
}
StatusCode rvxiFilterRowBorderPipeline_8u16s_C3R(const uint8_t *src, int32_t srcStep, int16_t *const *dstRows,
                                                 RoiSize roi, const int16_t *kernel, int32_t kernelSize,
                                                 int32_t xAnchor, BorderKind border, const uint8_t *borderValue,
                                                 int32_t divisor, uint8_t *buffer) {
    return filterRows<Row8u16s<3>>(src, srcStep, dstRows, roi, kernel, kernelSize, xAnchor, border, borderValue,
                                   divisor, buffer);
}
StatusCode rvxiFilterRowBorderPipeline_32f_C1R(const float *src, int32_t srcStep, float *const *dstRows, RoiSize roi,
                                               const float *kernel, int32_t kernelSize, int32_t xAnchor,
                                               BorderKind border, float borderValue, uint8_t *buffer) {
    return filterRows<Row32f<1>>(src, srcStep, dstRows, roi, kernel, kernelSize, xAnchor, border, &borderValue, 1,
                                 buffer);
}
StatusCode rvxiFilterRowBorderPipeline_32f_C3R(const float *src, int32_t srcStep, float *const *dstRows, RoiSize roi,
                                               const float *kernel, int32_t kernelSize, int32_t xAnchor,
                                               BorderKind border, const float *borderValue, uint8_t *buffer) {
    return filterRows<Row32f<3>>(src, srcStep, dstRows, roi, kernel, kernelSize, xAnchor, border, borderValue, 1,
                                 buffer);
}
StatusCode rvxiFilterRowBorderPipeline_Low_16s_C1R(const int16_t *src, int32_t srcStep, int16_t *const *dstRows,
                                                   RoiSize roi, const int16_t *kernel, int32_t kernelSize,
                                                   int32_t xAnchor, BorderKind border, int16_t borderValue,
                                                   int32_t divisor, uint8_t *buffer) {
    return filterRows<RowLow16s<1>>(src, srcStep, dstRows, roi, kernel, kernelSize, xAnchor, border, &borderValue,
                                    divisor, buffer);
}
StatusCode rvxiFilterRowBorderPipeline_Low_16s_C3R(const int16_t *src, int32_t srcStep, int16_t *const *dstRows,
                                                   RoiSize roi, const int16_t *kernel, int32_t kernelSize,
                                                   int32_t xAnchor, BorderKind border, const int16_t *borderValue,
                                                   int32_t divisor, uint8_t *buffer) {
    return filterRows<RowLow16s<3>>(src, srcStep, dstRows, roi, kernel, kernelSize, xAnchor, border, borderValue,
                                    divisor, buffer);
}

StatusCode rvxiFilterRowBorderPipelineGetBufferSize_16s_C1R(RoiSize roi, int32_t kernelSize, int32_t *size) {
    return bufferSize<Row16s<1>>(roi, kernelSize, size);
}
StatusCode rvxiFilterRowBorderPipelineGetBufferSize_16s_C3R(RoiSize roi, int32_t kernelSize, int32_t *size) {
    return bufferSize<Row16s<3>>(roi, kernelSize, size);
}
StatusCode rvxiFilterRowBorderPipelineGetBufferSize_16u_C1R(RoiSize roi, int32_t kernelSize, int32_t *size) {
    return bufferSize<Row16u<1>>(roi, kernelSize, size);
}
StatusCode rvxiFilterRowBorderPipelineGetBufferSize_16u_C3R(RoiSize roi, int32_t kernelSize, int32_t *size) {
    return bufferSize<Row16u<3>>(roi, kernelSize, size);
}
StatusCode rvxiFilterRowBorderPipelineGetBufferSize_8u16s_C1R(RoiSize roi, int32_t kernelSize, int32_t *size) {
    return bufferSize<Row8u16s<1>>(roi, kernelSize, size);
}
StatusCode rvxiFilterRowBorderPipelineGetBufferSize_8u16s_C3R(RoiSize roi, int32_t kernelSize, int32_t *size) {
    return bufferSize<Row8u16s<3>>(roi, kernelSize, size);
}
StatusCode rvxiFilterRowBorderPipelineGetBufferSize_32f_C1R(RoiSize roi, int32_t kernelSize, int32_t *size) {
    return bufferSize<Row32f<1>>(roi, kernelSize, size);
}
StatusCode rvxiFilterRowBorderPipelineGetBufferSize_32f_C3R(RoiSize roi, int32_t kernelSize, int32_t *size) {
    return bufferSize<Row32f<3>>(roi, kernelSize, size);
}
StatusCode rvxiFilterRowBorderPipelineGetBufferSize_Low_16s_C1R(RoiSize roi, int32_t kernelSize, int32_t *size) {
    return bufferSize<RowLow16s<1>>(roi, kernelSize, size);
}
StatusCode rvxiFilterRowBorderPipelineGetBufferSize_Low_16s_C3R(RoiSize roi, int32_t kernelSize, int32_t *size) {
    return bufferSize<RowLow16s<3>>(roi, kernelSize, size);
}
