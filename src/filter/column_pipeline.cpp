// The column stage of the separable pipeline: combines rows, given by an array of pointers, with a caller's kernel. The
// arithmetic stands in pipeline_sums.h, the kernels in column_kernels.h, the way through the image in column_stage.h;
// here are the members, their checks and their scratch sizes.
#include "frame/api.h"

#include "filter/column_stage.h"
#include "filter/pipeline_taps.h"
#include "kernel/checks.h"
#include "kernel/scratch.h"

namespace rvxcv {
namespace {

// ------------------------------------------------------------------------------------------------------ members

// scratchBytes: the size that a caller provides for rows of w pixels and a kernel of k taps.
template <class D, int c> struct Column16s {
    using Source = std::int16_t;
    using Destination = D;
    using Coefficient = std::int16_t;
    using Output = Divided<D>;
    template <int taps> using Kernel = PairColumn<taps>;
    static constexpr int channels = c;
    static constexpr std::int64_t scratchBytes(std::int64_t w, std::int64_t) { return 12 * c * roundUp(w, 4) + 64; }
};

template <int c> struct ColumnLow16s : Column16s<std::int16_t, c> {
    using Output = DividedLow;
    template <int taps> using Kernel = ChainColumn<LowArithmetic, taps>;
    static constexpr std::int64_t scratchBytes(std::int64_t w, std::int64_t) { return 12 * c * roundUp(w, 8) + 64; }
};

template <int c> struct Column32f {
    using Source = float;
    using Destination = float;
    using Coefficient = float;
    using Output = Undivided;
    template <int taps> using Kernel = ChainColumn<FloatArithmetic, taps>;
    static constexpr int channels = c;
    static constexpr std::int64_t scratchBytes(std::int64_t, std::int64_t k) { return 32 * k + 32; }
};

// Coefficients are unsigned; they become floats in the scratch buffer.
template <int c> struct Column16u : Column32f<c> {
    using Source = std::uint16_t;
    using Destination = std::uint16_t;
    using Coefficient = std::uint16_t;
    using Output = Divided<std::uint16_t>;
    static constexpr std::int64_t scratchBytes(std::int64_t w, std::int64_t k) {
        return 32 * ((c * w + 3) / 4 + k) + 64;
    }
};

// ------------------------------------------------------------------------------------------------------- checks

template <class Member>
StatusCode check(const typename Member::Source *const *srcRows, const typename Member::Destination *dst,
                 std::int32_t dstStep, RoiSize roi, const typename Member::Coefficient *kernel, std::int32_t kernelSize,
                 std::int32_t divisor, const std::uint8_t *buffer) {
    using Destination = typename Member::Destination;
    Checks checks;
    checks.pointers(srcRows, dst, kernel).size(roi).rowPointers(srcRows, std::int64_t{roi.height} + kernelSize - 1);
    checks.require(kernelSize >= 1, StatusBadSize);
    checks.steps(rowBytes<Destination>(std::int64_t{roi.width} * Member::channels), dstStep);
    checks.multiples(sizeof(Destination), dstStep);
    return checks.pointers(buffer).require(divisor != 0, StatusBadArgument).status();
}

template <class Member> StatusCode bufferSize(RoiSize roi, std::int32_t kernelSize, std::int32_t *size) {
    const StatusCode status = Checks().pointers(size).size(roi).require(kernelSize >= 1, StatusBadSize).status();
    return status == StatusOk ? storeSize(Member::scratchBytes(roi.width, kernelSize), size) : status;
}

// ---------------------------------------------------------------------------------------------------- the stage

template <class Member>
StatusCode filterColumns(const typename Member::Source *const *srcRows, typename Member::Destination *dst,
                         std::int32_t dstStep, RoiSize roi, const typename Member::Coefficient *kernel,
                         std::int32_t kernelSize, std::int32_t divisor, std::uint8_t *buffer) {
    const StatusCode status = check<Member>(srcRows, dst, dstStep, roi, kernel, kernelSize, divisor, buffer);
    if (status != StatusOk) {
        return status;
    }
    const ColumnTask<typename Member::Source, typename Member::Destination> task{srcRows, {dst, dstStep}, roi};
    Scratch scratch(buffer, Member::scratchBytes(roi.width, kernelSize));
    const auto *taps = ownTaps(kernel, kernelSize, scratch);
    withTapCount(kernelSize, [&](auto count) {
        using Kernel = typename Member::template Kernel<decltype(count)::value>;
        filterColumns<Member::channels>(task, Kernel(taps, kernelSize), typename Member::Output(divisor));
    });
    return StatusOk;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiFilterColumnPipeline_16s_C1R(const int16_t *const *srcRows, int16_t *dst, int32_t dstStep, RoiSize roi,
                                            const int16_t *kernel, int32_t kernelSize, int32_t divisor,
                                            uint8_t *buffer) {
    return filterColumns<Column16s<int16_t, 1>>(srcRows, dst, dstStep, roi, kernel, kernelSize, divisor, buffer);
}
StatusCode rvxiFilterColumnPipeline_16s_C3R(const int16_t *const *srcRows, int16_t *dst, int32_t dstStep, RoiSize roi,
                                            const int16_t *kernel, int32_t kernelSize, int32_t divisor,
                                            uint8_t *buffer) {
    return filterColumns<Column16s<int16_t, 3>>(srcRows, dst, dstStep, roi, kernel, kernelSize, divisor, buffer);
}
StatusCode rvxiFilterColumnPipeline_16s8u_C1R(const int16_t *const *srcRows, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                              const int16_t *kernel, int32_t kernelSize, int32_t divisor,
                                              uint8_t *buffer) {
    return filterColumns<Column16s<uint8_t, 1>>(srcRows, dst, dstStep, roi, kernel, kernelSize, divisor, buffer);
}
StatusCode rvxiFilterColumnPipeline_16s8u_C3R(const int16_t *const *srcRows, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                              const int16_t *kernel, int32_t kernelSize, int32_t divisor,
                                              uint8_t *buffer) {
    return filterColumns<Column16s<uint8_t, 3>>(srcRows, dst, dstStep, roi, kernel, kernelSize, divisor, buffer);
}
StatusCode rvxiFilterColumnPipeline_16s8s_C1R(const int16_t *const *srcRows, int8_t *dst, int32_t dstStep, RoiSize roi,
                                              const int16_t *kernel, int32_t kernelSize, int32_t divisor,
                                              uint8_t *buffer) {
    return filterColumns<Column16s<int8_t, 1>>(srcRows, dst, dstStep, roi, kernel, kernelSize, divisor, buffer);
}
StatusCode rvxiFilterColumnPipeline_16s8s_C3R(const int16_t *const *srcRows, int8_t *dst, int32_t dstStep, RoiSize roi,
                                              const int16_t *kernel, int32_t kernelSize, int32_t divisor,
                                              uint8_t *buffer) {
    return filterColumns<Column16s<int8_t, 3>>(srcRows, dst, dstStep, roi, kernel, kernelSize, divisor, buffer);
}
StatusCode rvxiFilterColumnPipeline_16u_C1R(const uint16_t *const *srcRows, uint16_t *dst, int32_t dstStep, RoiSize roi,
                                            const uint16_t *kernel, int32_t kernelSize, int32_t divisor,
                                            uint8_t *buffer) {
    return filterColumns<Column16u<1>>(srcRows, dst, dstStep, roi, kernel, kernelSize, divisor, buffer);
}
StatusCode rvxiFilterColumnPipeline_16u_C3R(const uint16_t *const *srcRows, uint16_t *dst, int32_t dstStep, RoiSize roi,
                                            const uint16_t *kernel, int32_t kernelSize, int32_t divisor,
                                            uint8_t *buffer) {
    return filterColumns<Column16u<3>>(srcRows, dst, dstStep, roi, kernel, kernelSize, divisor, buffer);
}
StatusCode rvxiFilterColumnPipeline_32f_C1R(const float *const *srcRows, float *dst, int32_t dstStep, RoiSize roi,
                                            const float *kernel, int32_t kernelSize, uint8_t *buffer) {
    return filterColumns<Column32f<1>>(srcRows, dst, dstStep, roi, kernel, kernelSize, 1, buffer);
}
StatusCode rvxiFilterColumnPipeline_32f_C3R(const float *const *srcRows, float *dst, int32_t dstStep, RoiSize roi,
                                            const float *kernel, int32_t kernelSize, uint8_t *buffer) {
    return filterColumns<Column32f<3>>(srcRows, dst, dstStep, roi, kernel, kernelSize, 1, buffer);
}
StatusCode rvxiFilterColumnPipeline_Low_16s_C1R(const int16_t *const *srcRows, int16_t *dst, int32_t dstStep,
                                                RoiSize roi, const int16_t *kernel, int32_t kernelSize, int32_t divisor,
                                                uint8_t *buffer) {
    return filterColumns<ColumnLow16s<1>>(srcRows, dst, dstStep, roi, kernel, kernelSize, divisor, buffer);
}
StatusCode rvxiFilterColumnPipeline_Low_16s_C3R(const int16_t *const *srcRows, int16_t *dst, int32_t dstStep,
                                                RoiSize roi, const int16_t *kernel, int32_t kernelSize, int32_t divisor,
                                                uint8_t *buffer) {
    return filterColumns<ColumnLow16s<3>>(srcRows, dst, dstStep, roi, kernel, kernelSize, divisor, buffer);
}

StatusCode rvxiFilterColumnPipelineGetBufferSize_16s_C1R(RoiSize roi, int32_t kernelSize, int32_t *size) {
    return bufferSize<Column16s<int16_t, 1>>(roi, kernelSize, size);
}
StatusCode rvxiFilterColumnPipelineGetBufferSize_16s_C3R(RoiSize roi, int32_t kernelSize, int32_t *size) {
    return bufferSize<Column16s<int16_t, 3>>(roi, kernelSize, size);
}
StatusCode rvxiFilterColumnPipelineGetBufferSize_16s8u_C1R(RoiSize roi, int32_t kernelSize, int32_t *size) {
    return bufferSize<Column16s<uint8_t, 1>>(roi, kernelSize, size);
}
StatusCode rvxiFilterColumnPipelineGetBufferSize_16s8u_C3R(RoiSize roi, int32_t kernelSize, int32_t *size) {
    return bufferSize<Column16s<uint8_t, 3>>(roi, kernelSize, size);
}
StatusCode rvxiFilterColumnPipelineGetBufferSize_16s8s_C1R(RoiSize roi, int32_t kernelSize, int32_t *size) {
    return bufferSize<Column16s<int8_t, 1>>(roi, kernelSize, size);
}
StatusCode rvxiFilterColumnPipelineGetBufferSize_16s8s_C3R(RoiSize roi, int32_t kernelSize, int32_t *size) {
    return bufferSize<Column16s<int8_t, 3>>(roi, kernelSize, size);
}
StatusCode rvxiFilterColumnPipelineGetBufferSize_16u_C1R(RoiSize roi, int32_t kernelSize, int32_t *size) {
    return bufferSize<Column16u<1>>(roi, kernelSize, size);
}
StatusCode rvxiFilterColumnPipelineGetBufferSize_16u_C3R(RoiSize roi, int32_t kernelSize, int32_t *size) {
    return bufferSize<Column16u<3>>(roi, kernelSize, size);
}
StatusCode rvxiFilterColumnPipelineGetBufferSize_32f_C1R(RoiSize roi, int32_t kernelSize, int32_t *size) {
    return bufferSize<Column32f<1>>(roi, kernelSize, size);
}
StatusCode rvxiFilterColumnPipelineGetBufferSize_32f_C3R(RoiSize roi, int32_t kernelSize, int32_t *size) {
    return bufferSize<Column32f<3>>(roi, kernelSize, size);
}
StatusCode rvxiFilterColumnPipelineGetBufferSize_Low_16s_C1R(RoiSize roi, int32_t kernelSize, int32_t *size) {
    return bufferSize<ColumnLow16s<1>>(roi, kernelSize, size);
}
StatusCode rvxiFilterColumnPipelineGetBufferSize_Low_16s_C3R(RoiSize roi, int32_t kernelSize, int32_t *size) {
    return bufferSize<ColumnLow16s<3>>(roi, kernelSize, size);
}
