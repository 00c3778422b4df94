// Gaussian blur of any odd size, with every border: the pipeline's row stage and column stage with one mirrored kernel.
// gauss_spec.h builds the kernel and the record, gauss_rows.h leads the rows through both stages; here are the checks
// and the members.
#include "frame/api.h"

#include "filter/gauss_rows.h"
#include "filter/gauss_spec.h"
#include "filter/pipeline_taps.h"

namespace rvxcv {
namespace {

// ------------------------------------------------------------------------------------------------------- checks

Checks checkSetUp(RoiSize roi, std::int32_t kernelSize, PixelTypeCode type, std::int32_t channels) {
    Checks checks;
    checks.size(roi).require(isGaussianSize(kernelSize), StatusBadArgument);
    checks.require(isGaussianType(type), StatusBadDataType);
    return checks.require(channels == 1 || channels == 3, StatusBadChannelLayout);
}

// Whether the border needs a border value. (No pointer of a member with one channel is ever null.)
bool needsValue(const GaussianSpec *spec) { return spec != nullptr && (loadSpec(spec).border & 15) == BorderConstant; }

template <class T, int channels>
StatusCode check(const GaussianCall<T> &call, const GaussianSpec *spec, const std::uint8_t *buffer) {
    Checks checks;
    checks.pointers(call.src, call.dst, spec, buffer);
    checks.require(call.borderValue != nullptr || !needsValue(spec), StatusNullPointer);
    checks.steps(rowBytes<T>(std::int64_t{call.roi.width} * channels), call.srcStep, call.dstStep);
    checks.multiples(sizeof(T), call.srcStep, call.dstStep).size(call.roi);
    if (checks.failed()) {
        return checks.status();
    }
    const GaussianSpec head = loadSpec(spec);
    checks.require(isGaussianSize(head.kernelSize), StatusBadArgument);
    checks.require(isGaussianBorder(head.border), StatusBadBorder);
    return checks.require(head.type == Gaussian<T, channels>::type, StatusBadDataType).status();
}

// ------------------------------------------------------------------------------------------------------ the call

// The record's coefficients as the sums need them.
template <class T> const auto *ownTaps(const GaussianSpec *spec, const GaussianSpec &head, Scratch &scratch) {
    const std::int64_t k = head.kernelSize;
    if constexpr (std::is_same_v<T, float>) {
        auto *taps = scratch.take<float>(k);
        for (std::int64_t i = 0; i < k; ++i) {
            taps[i] = loadScalar(specCoefficients<float>(spec) + i * broadcast);
        }
        return taps;
    } else if constexpr (std::is_same_v<T, std::uint16_t>) {
        auto *taps = scratch.take<float>(k);
        widenRow(taps, specCoefficients<std::uint16_t>(spec), k);
        for (std::int64_t i = 0; i < k; ++i) {
            taps[i] *= 1.0f / 32768.0f;
        }
        return taps;
    } else {
        return specCoefficients<std::int16_t>(spec);
    }
}

template <class T, int channels>
StatusCode smooth(const GaussianCall<T> &call, const GaussianSpec *spec, std::uint8_t *buffer) {
    using Member = Gaussian<T, channels>;
    const StatusCode status = check<T, channels>(call, spec, buffer);
    if (status != StatusOk) {
        return status;
    }
    const GaussianSpec head = loadSpec(spec);
    if constexpr (std::is_same_v<T, std::int16_t>) {
        // A coefficient of 32768 leaves nothing for the others and does not fit a signed tap.
        const auto *middle = specCoefficients<std::uint16_t>(spec) + head.kernelSize / 2;
        if (loadScalar(middle) == 32768) {
            const Plane src{call.src, call.srcStep};
            const Plane dst{call.dst, call.dstStep};
            for (std::int64_t y = 0; y < call.roi.height; ++y) {
                std::memcpy(static_cast<void *>(dst.row(y)), src.row(y),
                            static_cast<std::size_t>(call.roi.width) * channels * sizeof(T));
            }
            return StatusOk;
        }
    }
    Scratch scratch(buffer, gaussianBytes(call.roi, head.kernelSize, Member::type, channels));
    const auto *taps = ownTaps<T>(spec, head, scratch);
    withTapCount(head.kernelSize, [&](auto count) {
        smooth<T, channels, decltype(count)::value>(call, Border(head.border), taps, head.kernelSize,
                                                    std::int32_t{1} << fixedPointShift(Member::type), scratch);
    });
    return StatusOk;
}

template <int channels, class T>
StatusCode smooth(const T *src, std::int32_t srcStep, T *dst, std::int32_t dstStep, RoiSize roi, const T *borderValue,
                  const GaussianSpec *spec, std::uint8_t *buffer) {
    return smooth<T, channels>({src, srcStep, dst, dstStep, roi, borderValue}, spec, buffer);
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiFilterGaussianGetBufferSize(RoiSize roi, int32_t kernelSize, PixelTypeCode type, int32_t channels,
                                           int32_t *specSize, int32_t *bufferSize) {
    const StatusCode status = Checks().pointers(specSize, bufferSize).failed()
                                  ? StatusNullPointer
                                  : checkSetUp(roi, kernelSize, type, channels).status();
    if (status != StatusOk) {
        return status;
    }
    const std::int64_t spec = specBytes(kernelSize, type), buffer = gaussianBytes(roi, kernelSize, type, channels);
    const bool fits = std::max(spec, buffer) <= INT32_MAX; // of two sizes both are written, or none
    return fits ? storeSize(spec, specSize) | storeSize(buffer, bufferSize) : StatusBadSize;
}
StatusCode rvxiFilterGaussianInit(RoiSize roi, int32_t kernelSize, BorderKind border, PixelTypeCode type,
                                  int32_t channels, GaussianSpec *spec, uint8_t *buffer, float sigma) {
    if (spec == nullptr || buffer == nullptr) {
        return StatusNullPointer;
    }
    Checks checks = checkSetUp(roi, kernelSize, type, channels).require(sigma > 0.0f, StatusBadArgument);
    if (checks.require(isGaussianBorder(border), StatusBadBorder).failed()) {
        return checks.status();
    }
    fillSpec(spec, kernelSize, type, border, sigma);
    return StatusOk;
}

StatusCode rvxiFilterGaussianBorder_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                           RoiSize roi, uint8_t borderValue, const GaussianSpec *spec,
                                           uint8_t *buffer) {
    return smooth<1>(src, srcStep, dst, dstStep, roi, &borderValue, spec, buffer);
}
StatusCode rvxiFilterGaussianBorder_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                           RoiSize roi, const uint8_t *borderValue, const GaussianSpec *spec,
                                           uint8_t *buffer) {
    return smooth<3>(src, srcStep, dst, dstStep, roi, borderValue, spec, buffer);
}
StatusCode rvxiFilterGaussianBorder_16u_C1R(const uint16_t *src, int32_t srcStep, uint16_t *dst, int32_t dstStep,
                                            RoiSize roi, uint16_t borderValue, const GaussianSpec *spec,
                                            uint8_t *buffer) {
    return smooth<1>(src, srcStep, dst, dstStep, roi, &borderValue, spec, buffer);
}
StatusCode rvxiFilterGaussianBorder_16u_C3R(const uint16_t *src, int32_t srcStep, uint16_t *dst, int32_t dstStep,
                                            RoiSize roi, const uint16_t *borderValue, const GaussianSpec *spec,
                                            uint8_t *buffer) {
    return smooth<3>(src, srcStep, dst, dstStep, roi, borderValue, spec, buffer);
}
StatusCode rvxiFilterGaussianBorder_16s_C1R(const int16_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep,
                                            RoiSize roi, int16_t borderValue, const GaussianSpec *spec,
                                            uint8_t *buffer) {
    return smooth<1>(src, srcStep, dst, dstStep, roi, &borderValue, spec, buffer);
}
StatusCode rvxiFilterGaussianBorder_16s_C3R(const int16_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep,
                                            RoiSize roi, const int16_t *borderValue, const GaussianSpec *spec,
                                            uint8_t *buffer) {
    return smooth<3>(src, srcStep, dst, dstStep, roi, borderValue, spec, buffer);
}
StatusCode rvxiFilterGaussianBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                            float borderValue, const GaussianSpec *spec, uint8_t *buffer) {
    return smooth<1>(src, srcStep, dst, dstStep, roi, &borderValue, spec, buffer);
}
StatusCode rvxiFilterGaussianBorder_32f_C3R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                            const float *borderValue, const GaussianSpec *spec, uint8_t *buffer) {
    return smooth<3>(src, srcStep, dst, dstStep, roi, borderValue, spec, buffer);
}

StatusCode rvxiFilterGaussGetBufferSize_32f_C1R(RoiSize roi, int32_t kernelSize, int32_t *size) {
    Checks checks;
    checks.pointers(size).size(roi).require(isGaussianSize(kernelSize), StatusBadArgument);
    return checks.failed() ? checks.status() : storeSize(gaussianOneCallBytes(roi, kernelSize), size);
}
StatusCode rvxiFilterGaussBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                         int32_t kernelSize, BorderKind border, uint8_t *buffer, float sigma,
                                         float borderValue) {
    Checks checks;
    checks.pointers(src, dst, buffer).size(roi).steps(rowBytes<float>(roi.width), srcStep, dstStep);
    checks.multiples(sizeof(float), srcStep, dstStep).require(isGaussianSize(kernelSize), StatusBadArgument);
    checks.require(sigma > 0.0f, StatusBadArgument).require(isGaussianBorder(border), StatusBadBorder);
    if (checks.failed()) {
        return checks.status();
    }
    Scratch scratch(buffer, gaussianOneCallBytes(roi, kernelSize));
    auto *const taps = scratch.take<float>(kernelSize);
    const Bell bell(kernelSize, sigma);
    for (std::int32_t i = 0; i < kernelSize; ++i) {
        taps[i] = bell.weight(i);
    }
    withTapCount(kernelSize, [&](auto count) {
        smooth<float, 1, decltype(count)::value>({src, srcStep, dst, dstStep, roi, &borderValue}, Border(border), taps,
                                                 kernelSize, 1, scratch);
    });
    return StatusOk;
}
