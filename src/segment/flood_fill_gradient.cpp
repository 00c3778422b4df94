// Gradient flood fills: a pixel joins from a neighbour whose value, before the fill, is near enough.
#include "frame/api.h"

#include "segment/fill_image.h"

namespace rvxcv {
namespace {

template <class V> RVX_INLINE auto lowerBound(V q, V delta) {
    if constexpr (std::is_same_v<V, F32x8>) {
        return sub(q, delta);
    } else {
        return subSaturated(q, delta);
    }
}
template <class V> RVX_INLINE auto upperBound(V q, V delta) {
    if constexpr (std::is_same_v<V, F32x8>) {
        return add(q, delta);
    } else {
        return addSaturated(q, delta);
    }
}

template <class T, int channels> struct GradientImage : PaintedImage<T, channels> {
    using Base = PaintedImage<T, channels>;
    std::array<Vec<T>, channels> below, above;

    GradientImage(const Base &base, const T *minDelta, const T *maxDelta)
        : Base(base), below(repeated(loadPixel<channels>(minDelta))), above(repeated(loadPixel<channels>(maxDelta))) {
        this->steps = stepsFrom;
    }

private:
    static std::uint64_t stepsFrom(const FillImage &image, std::int64_t x, std::int64_t y, int n, int dx, int dy) {
        const auto &self = static_cast<const GradientImage &>(image);
        const T *const from = self.at(x, y), *const to = self.at(x + dx, y + dy);
        return pixelWord<T, channels>(n, [&](int e, int phase, auto span) {
            const auto i = static_cast<std::size_t>(phase);
            const auto q = load<Vec<T>>(from + e, span), p = load<Vec<T>>(to + e, span);
            return std::uint64_t{laneBits(inRange(p, lowerBound(q, self.below[i]), upperBound(q, self.above[i])))};
        });
    }
};

template <int channels, bool eight, class T>
StatusCode fillGradient(T *image, std::int32_t step, RoiSize roi, Point2i seed, const T *minDelta, const T *maxDelta,
                        const T *newVal, ConnectedComponent *region, std::uint8_t *buffer) {
    const bool pointers =
        region != nullptr && buffer != nullptr && newVal != nullptr && minDelta != nullptr && maxDelta != nullptr;
    const Checks checks = checkFill(image, step, roi, seed, pointers);
    if (checks.failed()) {
        return checks.status();
    }
    const GradientImage<T, channels> rule({image, step, roi, newVal}, minDelta, maxDelta);
    storeRegion(region, fillGradients(rule, seed, eight, buffer), rule.value);
    return StatusOk;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiFloodFillGetSize_Grad(RoiSize roi, int32_t *bufferSize) {
    return fillScratch(gradientFillBytes(roi), roi, bufferSize);
}

StatusCode rvxiFloodFill_Grad4Con_8u_C1IR(uint8_t *image, int32_t step, RoiSize roi, Point2i seed, uint8_t minDelta,
                                          uint8_t maxDelta, uint8_t newVal, ConnectedComponent *region,
                                          uint8_t *buffer) {
    return fillGradient<1, false>(image, step, roi, seed, &minDelta, &maxDelta, &newVal, region, buffer);
}
StatusCode rvxiFloodFill_Grad4Con_16u_C1IR(uint16_t *image, int32_t step, RoiSize roi, Point2i seed, uint16_t minDelta,
                                           uint16_t maxDelta, uint16_t newVal, ConnectedComponent *region,
                                           uint8_t *buffer) {
    return fillGradient<1, false>(image, step, roi, seed, &minDelta, &maxDelta, &newVal, region, buffer);
}
StatusCode rvxiFloodFill_Grad4Con_32f_C1IR(float *image, int32_t step, RoiSize roi, Point2i seed, float minDelta,
                                           float maxDelta, float newVal, ConnectedComponent *region, uint8_t *buffer) {
    return fillGradient<1, false>(image, step, roi, seed, &minDelta, &maxDelta, &newVal, region, buffer);
}
StatusCode rvxiFloodFill_Grad4Con_8u_C3IR(uint8_t *image, int32_t step, RoiSize roi, Point2i seed,
                                          const uint8_t *minDelta, const uint8_t *maxDelta, const uint8_t *newVal,
                                          ConnectedComponent *region, uint8_t *buffer) {
    return fillGradient<3, false>(image, step, roi, seed, minDelta, maxDelta, newVal, region, buffer);
}
StatusCode rvxiFloodFill_Grad4Con_16u_C3IR(uint16_t *image, int32_t step, RoiSize roi, Point2i seed,
                                           const uint16_t *minDelta, const uint16_t *maxDelta, const uint16_t *newVal,
                                           ConnectedComponent *region, uint8_t *buffer) {
    return fillGradient<3, false>(image, step, roi, seed, minDelta, maxDelta, newVal, region, buffer);
}
StatusCode rvxiFloodFill_Grad4Con_32f_C3IR(float *image, int32_t step, RoiSize roi, Point2i seed, const float *minDelta,
                                           const float *maxDelta, const float *newVal, ConnectedComponent *region,
                                           uint8_t *buffer) {
    return fillGradient<3, false>(image, step, roi, seed, minDelta, maxDelta, newVal, region, buffer);
}
StatusCode rvxiFloodFill_Grad8Con_8u_C1IR(uint8_t *image, int32_t step, RoiSize roi, Point2i seed, uint8_t minDelta,
                                          uint8_t maxDelta, uint8_t newVal, ConnectedComponent *region,
                                          uint8_t *buffer) {
    return fillGradient<1, true>(image, step, roi, seed, &minDelta, &maxDelta, &newVal, region, buffer);
}
StatusCode rvxiFloodFill_Grad8Con_16u_C1IR(uint16_t *image, int32_t step, RoiSize roi, Point2i seed, uint16_t minDelta,
                                           uint16_t maxDelta, uint16_t newVal, ConnectedComponent *region,
                                           uint8_t *buffer) {
    return fillGradient<1, true>(image, step, roi, seed, &minDelta, &maxDelta, &newVal, region, buffer);
}
StatusCode rvxiFloodFill_Grad8Con_32f_C1IR(float *image, int32_t step, RoiSize roi, Point2i seed, float minDelta,
                                           float maxDelta, float newVal, ConnectedComponent *region, uint8_t *buffer) {
    return fillGradient<1, true>(image, step, roi, seed, &minDelta, &maxDelta, &newVal, region, buffer);
}
StatusCode rvxiFloodFill_Grad8Con_8u_C3IR(uint8_t *image, int32_t step, RoiSize roi, Point2i seed,
                                          const uint8_t *minDelta, const uint8_t *maxDelta, const uint8_t *newVal,
                                          ConnectedComponent *region, uint8_t *buffer) {
    return fillGradient<3, true>(image, step, roi, seed, minDelta, maxDelta, newVal, region, buffer);
}
StatusCode rvxiFloodFill_Grad8Con_16u_C3IR(uint16_t *image, int32_t step, RoiSize roi, Point2i seed,
                                           const uint16_t *minDelta, const uint16_t *maxDelta, const uint16_t *newVal,
                                           ConnectedComponent *region, uint8_t *buffer) {
    return fillGradient<3, true>(image, step, roi, seed, minDelta, maxDelta, newVal, region, buffer);
}
StatusCode rvxiFloodFill_Grad8Con_32f_C3IR(float *image, int32_t step, RoiSize roi, Point2i seed, const float *minDelta,
                                           const float *maxDelta, const float *newVal, ConnectedComponent *region,
                                           uint8_t *buffer) {
    return fillGradient<3, true>(image, step, roi, seed, minDelta, maxDelta, newVal, region, buffer);
}
