// Absolute differences of two images, and of an image and a constant. Pointwise, exact for integers; the 32f
// difference is rounded once and its sign cleared. A destination may be one of the sources.
#include "frame/api.h"
#include "kernel/checks.h"
#include "kernel/plane.h"
#include "kernel/rows.h"

#include <algorithm>
#include <limits>

namespace rvxcv {
namespace {

template <class T> struct AbsDiffRow {
    const T *first, *second;
    T *dst;

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        store(dst + x, absDiff(load<Vec<T>>(first + x, span), load<Vec<T>>(second + x, span)), span);
    }
};

template <class T> struct AbsDiffConstantRow {
    const T *src;
    T *dst;
    Vec<T> value;

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        store(dst + x, absDiff(load<Vec<T>>(src + x, span), value), span);
    }
};

template <int channels, class T>
StatusCode absDiffImages(const T *src1, std::int32_t src1Step, const T *src2, std::int32_t src2Step, T *dst,
                         std::int32_t dstStep, RoiSize roi) {
    const std::int64_t elements = std::int64_t{roi.width} * channels;
    Checks checks;
    const std::int64_t bytes = rowBytes<T>(elements);
    checks.pointers(src1, src2, dst).size(roi).steps(bytes, src1Step, src2Step, dstStep);
    checks.multiples(sizeof(T), src1Step, src2Step, dstStep);
    if (checks.failed()) {
        return checks.status();
    }
    const Plane first{src1, src1Step}, second{src2, src2Step};
    const Plane out{dst, dstStep};
    const RowShape shape(elements, roi.height, src1Step == bytes && src2Step == bytes && dstStep == bytes);
    for (std::int64_t y = 0; y < shape.height; ++y) {
        walkRow<Vec<T>::lanes>(shape.width, AbsDiffRow<T>{first.row(y), second.row(y), out.row(y)});
    }
    return StatusOk;
}

template <class T>
StatusCode absDiffConstant(const T *src, std::int32_t srcStep, T *dst, std::int32_t dstStep, RoiSize roi, T value) {
    Checks checks;
    const std::int64_t bytes = rowBytes<T>(roi.width);
    checks.pointers(src, dst).size(roi).steps(bytes, srcStep, dstStep);
    checks.multiples(sizeof(T), srcStep, dstStep);
    if (checks.failed()) {
        return checks.status();
    }
    const Plane in{src, srcStep};
    const Plane out{dst, dstStep};
    const RowShape shape(roi.width, roi.height, srcStep == bytes && dstStep == bytes);
    for (std::int64_t y = 0; y < shape.height; ++y) {
        walkRow<Vec<T>::lanes>(shape.width, AbsDiffConstantRow<T>{in.row(y), out.row(y), splat(value)});
    }
    return StatusOk;
}

template <class T> T clampTo(std::int32_t value) {
    return static_cast<T>(std::clamp<std::int32_t>(value, 0, std::numeric_limits<T>::max()));
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiAbsDiff_8u_C1R(const uint8_t *src1, int32_t src1Step, const uint8_t *src2, int32_t src2Step,
                              uint8_t *dst, int32_t dstStep, RoiSize roi) {
    return absDiffImages<1>(src1, src1Step, src2, src2Step, dst, dstStep, roi);
}
StatusCode rvxiAbsDiff_8u_C3R(const uint8_t *src1, int32_t src1Step, const uint8_t *src2, int32_t src2Step,
                              uint8_t *dst, int32_t dstStep, RoiSize roi) {
    return absDiffImages<3>(src1, src1Step, src2, src2Step, dst, dstStep, roi);
}
StatusCode rvxiAbsDiff_16u_C1R(const uint16_t *src1, int32_t src1Step, const uint16_t *src2, int32_t src2Step,
                               uint16_t *dst, int32_t dstStep, RoiSize roi) {
    return absDiffImages<1>(src1, src1Step, src2, src2Step, dst, dstStep, roi);
}
StatusCode rvxiAbsDiff_32f_C1R(const float *src1, int32_t src1Step, const float *src2, int32_t src2Step, float *dst,
                               int32_t dstStep, RoiSize roi) {
    return absDiffImages<1>(src1, src1Step, src2, src2Step, dst, dstStep, roi);
}
StatusCode rvxiAbsDiffC_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                               int32_t value) {
    return absDiffConstant(src, srcStep, dst, dstStep, roi, clampTo<std::uint8_t>(value));
}
StatusCode rvxiAbsDiffC_16u_C1R(const uint16_t *src, int32_t srcStep, uint16_t *dst, int32_t dstStep, RoiSize roi,
                                int32_t value) {
    return absDiffConstant(src, srcStep, dst, dstStep, roi, clampTo<std::uint16_t>(value));
}
StatusCode rvxiAbsDiffC_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                float value) {
    return absDiffConstant(src, srcStep, dst, dstStep, roi, value);
}
