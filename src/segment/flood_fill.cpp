// Plain and range flood fills: a member lies between two bounds around the seed's value. The plain fill is the range
// fill whose bounds are the value itself, which for floats is IEEE equality.
#include "frame/api.h"

#include "segment/fill_image.h"

#include <algorithm>
#include <limits>

namespace rvxcv {
namespace {

template <class T, int channels> struct BandImage : PaintedImage<T, channels> {
    using Base = PaintedImage<T, channels>;
    std::array<Vec<T>, channels> low, high;

    BandImage(const Base &base, const Pixel<T, channels> &least, const Pixel<T, channels> &most)
        : Base(base), low(repeated(least)), high(repeated(most)) {
        this->members = membersOf;
    }

private:
    static std::uint64_t membersOf(const FillImage &image, std::int64_t x, std::int64_t y, int n) {
        const auto &self = static_cast<const BandImage &>(image);
        const T *const row = self.at(x, y);
        return pixelWord<T, channels>(n, [&](int e, int phase, auto span) {
            const auto i = static_cast<std::size_t>(phase);
            return std::uint64_t{laneBits(inRange(load<Vec<T>>(row + e, span), self.low[i], self.high[i]))};
        });
    }
};

// Bounds of integers stop at the type's ends.
template <class T> T lowerBound(T seed, T delta) {
    if constexpr (std::is_same_v<T, float>) {
        return seed - delta;
    } else {
        return static_cast<T>(std::max<std::int64_t>(std::int64_t{seed} - delta, std::numeric_limits<T>::min()));
    }
}
template <class T> T upperBound(T seed, T delta) {
    if constexpr (std::is_same_v<T, float>) {
        return seed + delta;
    } else {
        return static_cast<T>(std::min<std::int64_t>(std::int64_t{seed} + delta, std::numeric_limits<T>::max()));
    }
}

// The checks are done; deltas are null for a plain fill.
template <int channels, bool eight, class T>
StatusCode fillBand(T *image, std::int32_t step, RoiSize roi, Point2i seed, const T *newVal, const T *minDelta,
                    const T *maxDelta, ConnectedComponent *region, std::uint8_t *buffer) {
    const PaintedImage<T, channels> painted(image, step, roi, newVal);
    const auto seedValue = loadPixel<channels>(painted.at(seed.x, seed.y));
    if (std::equal(seedValue.begin(), seedValue.end(), painted.value.begin())) {
        return StatusOk;
    }
    auto low = seedValue, high = seedValue;
    if (minDelta != nullptr) {
        const auto below = loadPixel<channels>(minDelta), above = loadPixel<channels>(maxDelta);
        for (std::size_t c = 0; c < channels; ++c) {
            low[c] = lowerBound(seedValue[c], below[c]);
            high[c] = upperBound(seedValue[c], above[c]);
        }
    }
    const BandImage<T, channels> band(painted, low, high);
    storeRegion(region, fillMembers(band, seed, eight, buffer), painted.value);
    return StatusOk;
}

template <int channels, bool eight, class T>
StatusCode fillEqual(T *image, std::int32_t step, RoiSize roi, Point2i seed, const T *newVal,
                     ConnectedComponent *region, std::uint8_t *buffer) {
    const bool pointers = region != nullptr && buffer != nullptr && newVal != nullptr;
    const Checks checks = checkFill(image, step, roi, seed, pointers);
    const T *const noDelta = nullptr;
    return checks.failed()
               ? checks.status()
               : fillBand<channels, eight>(image, step, roi, seed, newVal, noDelta, noDelta, region, buffer);
}

template <int channels, bool eight, class T>
StatusCode fillRange(T *image, std::int32_t step, RoiSize roi, Point2i seed, const T *newVal, const T *minDelta,
                     const T *maxDelta, ConnectedComponent *region, std::uint8_t *buffer) {
    const bool pointers =
        region != nullptr && buffer != nullptr && newVal != nullptr && minDelta != nullptr && maxDelta != nullptr;
    const Checks checks = checkFill(image, step, roi, seed, pointers);
    return checks.failed()
               ? checks.status()
               : fillBand<channels, eight>(image, step, roi, seed, newVal, minDelta, maxDelta, region, buffer);
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiFloodFillGetSize(RoiSize roi, int32_t *bufferSize) {
    return fillScratch(memberFillBytes(roi), roi, bufferSize);
}

StatusCode rvxiFloodFill_4Con_8u_C1IR(uint8_t *image, int32_t step, RoiSize roi, Point2i seed, uint8_t newVal,
                                      ConnectedComponent *region, uint8_t *buffer) {
    return fillEqual<1, false>(image, step, roi, seed, &newVal, region, buffer);
}
StatusCode rvxiFloodFill_4Con_16u_C1IR(uint16_t *image, int32_t step, RoiSize roi, Point2i seed, uint16_t newVal,
                                       ConnectedComponent *region, uint8_t *buffer) {
    return fillEqual<1, false>(image, step, roi, seed, &newVal, region, buffer);
}
StatusCode rvxiFloodFill_4Con_32s_C1IR(int32_t *image, int32_t step, RoiSize roi, Point2i seed, int32_t newVal,
                                       ConnectedComponent *region, uint8_t *buffer) {
    return fillEqual<1, false>(image, step, roi, seed, &newVal, region, buffer);
}
StatusCode rvxiFloodFill_4Con_32f_C1IR(float *image, int32_t step, RoiSize roi, Point2i seed, float newVal,
                                       ConnectedComponent *region, uint8_t *buffer) {
    return fillEqual<1, false>(image, step, roi, seed, &newVal, region, buffer);
}
StatusCode rvxiFloodFill_4Con_8u_C3IR(uint8_t *image, int32_t step, RoiSize roi, Point2i seed, const uint8_t *newVal,
                                      ConnectedComponent *region, uint8_t *buffer) {
    return fillEqual<3, false>(image, step, roi, seed, newVal, region, buffer);
}
StatusCode rvxiFloodFill_4Con_16u_C3IR(uint16_t *image, int32_t step, RoiSize roi, Point2i seed, const uint16_t *newVal,
                                       ConnectedComponent *region, uint8_t *buffer) {
    return fillEqual<3, false>(image, step, roi, seed, newVal, region, buffer);
}
StatusCode rvxiFloodFill_4Con_32f_C3IR(float *image, int32_t step, RoiSize roi, Point2i seed, const float *newVal,
                                       ConnectedComponent *region, uint8_t *buffer) {
    return fillEqual<3, false>(image, step, roi, seed, newVal, region, buffer);
}
StatusCode rvxiFloodFill_8Con_8u_C1IR(uint8_t *image, int32_t step, RoiSize roi, Point2i seed, uint8_t newVal,
                                      ConnectedComponent *region, uint8_t *buffer) {
    return fillEqual<1, true>(image, step, roi, seed, &newVal, region, buffer);
}
StatusCode rvxiFloodFill_8Con_16u_C1IR(uint16_t *image, int32_t step, RoiSize roi, Point2i seed, uint16_t newVal,
                                       ConnectedComponent *region, uint8_t *buffer) {
    return fillEqual<1, true>(image, step, roi, seed, &newVal, region, buffer);
}
StatusCode rvxiFloodFill_8Con_32s_C1IR(int32_t *image, int32_t step, RoiSize roi, Point2i seed, int32_t newVal,
                                       ConnectedComponent *region, uint8_t *buffer) {
    return fillEqual<1, true>(image, step, roi, seed, &newVal, region, buffer);
}
StatusCode rvxiFloodFill_8Con_32f_C1IR(float *image, int32_t step, RoiSize roi, Point2i seed, float newVal,
                                       ConnectedComponent *region, uint8_t *buffer) {
    return fillEqual<1, true>(image, step, roi, seed, &newVal, region, buffer);
}
StatusCode rvxiFloodFill_8Con_8u_C3IR(uint8_t *image, int32_t step, RoiSize roi, Point2i seed, const uint8_t *newVal,
                                      ConnectedComponent *region, uint8_t *buffer) {
    return fillEqual<3, true>(image, step, roi, seed, newVal, region, buffer);
}
StatusCode rvxiFloodFill_8Con_16u_C3IR(uint16_t *image, int32_t step, RoiSize roi, Point2i seed, const uint16_t *newVal,
                                       ConnectedComponent *region, uint8_t *buffer) {
    return fillEqual<3, true>(image, step, roi, seed, newVal, region, buffer);
}
StatusCode rvxiFloodFill_8Con_32f_C3IR(float *image, int32_t step, RoiSize roi, Point2i seed, const float *newVal,
                                       ConnectedComponent *region, uint8_t *buffer) {
    return fillEqual<3, true>(image, step, roi, seed, newVal, region, buffer);
}
StatusCode rvxiFloodFill_Range4Con_8u_C1IR(uint8_t *image, int32_t step, RoiSize roi, Point2i seed, uint8_t newVal,
                                           uint8_t minDelta, uint8_t maxDelta, ConnectedComponent *region,
                                           uint8_t *buffer) {
    return fillRange<1, false>(image, step, roi, seed, &newVal, &minDelta, &maxDelta, region, buffer);
}
StatusCode rvxiFloodFill_Range4Con_16u_C1IR(uint16_t *image, int32_t step, RoiSize roi, Point2i seed, uint16_t newVal,
                                            uint16_t minDelta, uint16_t maxDelta, ConnectedComponent *region,
                                            uint8_t *buffer) {
    return fillRange<1, false>(image, step, roi, seed, &newVal, &minDelta, &maxDelta, region, buffer);
}
StatusCode rvxiFloodFill_Range4Con_32f_C1IR(float *image, int32_t step, RoiSize roi, Point2i seed,
                                            ConnectedComponent *region, uint8_t *buffer, float newVal, float minDelta,
                                            float maxDelta) {
    return fillRange<1, false>(image, step, roi, seed, &newVal, &minDelta, &maxDelta, region, buffer);
}
StatusCode rvxiFloodFill_Range4Con_8u_C3IR(uint8_t *image, int32_t step, RoiSize roi, Point2i seed,
                                           const uint8_t *newVal, const uint8_t *minDelta, const uint8_t *maxDelta,
                                           ConnectedComponent *region, uint8_t *buffer) {
    return fillRange<3, false>(image, step, roi, seed, newVal, minDelta, maxDelta, region, buffer);
}
StatusCode rvxiFloodFill_Range4Con_16u_C3IR(uint16_t *image, int32_t step, RoiSize roi, Point2i seed,
                                            const uint16_t *newVal, const uint16_t *minDelta, const uint16_t *maxDelta,
                                            ConnectedComponent *region, uint8_t *buffer) {
    return fillRange<3, false>(image, step, roi, seed, newVal, minDelta, maxDelta, region, buffer);
}
StatusCode rvxiFloodFill_Range4Con_32f_C3IR(float *image, int32_t step, RoiSize roi, Point2i seed, const float *newVal,
                                            const float *minDelta, const float *maxDelta, ConnectedComponent *region,
                                            uint8_t *buffer) {
    return fillRange<3, false>(image, step, roi, seed, newVal, minDelta, maxDelta, region, buffer);
}
StatusCode rvxiFloodFill_Range8Con_8u_C1IR(uint8_t *image, int32_t step, RoiSize roi, Point2i seed, uint8_t newVal,
                                           uint8_t minDelta, uint8_t maxDelta, ConnectedComponent *region,
                                           uint8_t *buffer) {
    return fillRange<1, true>(image, step, roi, seed, &newVal, &minDelta, &maxDelta, region, buffer);
}
StatusCode rvxiFloodFill_Range8Con_16u_C1IR(uint16_t *image, int32_t step, RoiSize roi, Point2i seed, uint16_t newVal,
                                            uint16_t minDelta, uint16_t maxDelta, ConnectedComponent *region,
                                            uint8_t *buffer) {
    return fillRange<1, true>(image, step, roi, seed, &newVal, &minDelta, &maxDelta, region, buffer);
}
StatusCode rvxiFloodFill_Range8Con_32f_C1IR(float *image, int32_t step, RoiSize roi, Point2i seed,
                                            ConnectedComponent *region, uint8_t *buffer, float newVal, float minDelta,
                                            float maxDelta) {
    return fillRange<1, true>(image, step, roi, seed, &newVal, &minDelta, &maxDelta, region, buffer);
}
StatusCode rvxiFloodFill_Range8Con_8u_C3IR(uint8_t *image, int32_t step, RoiSize roi, Point2i seed,
                                           const uint8_t *newVal, const uint8_t *minDelta, const uint8_t *maxDelta,
                                           ConnectedComponent *region, uint8_t *buffer) {
    return fillRange<3, true>(image, step, roi, seed, newVal, minDelta, maxDelta, region, buffer);
}
StatusCode rvxiFloodFill_Range8Con_16u_C3IR(uint16_t *image, int32_t step, RoiSize roi, Point2i seed,
                                            const uint16_t *newVal, const uint16_t *minDelta, const uint16_t *maxDelta,
                                            ConnectedComponent *region, uint8_t *buffer) {
    return fillRange<3, true>(image, step, roi, seed, newVal, minDelta, maxDelta, region, buffer);
}
StatusCode rvxiFloodFill_Range8Con_32f_C3IR(float *image, int32_t step, RoiSize roi, Point2i seed, const float *newVal,
                                            const float *minDelta, const float *maxDelta, ConnectedComponent *region,
                                            uint8_t *buffer) {
    return fillRange<3, true>(image, step, roi, seed, newVal, minDelta, maxDelta, region, buffer);
}
