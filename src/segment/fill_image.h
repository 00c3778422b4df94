// A caller's image as the fill engine sees it, and what all flood fills have in common: checks and record.
#pragma once

#include "kernel/checks.h"
#include "kernel/plane.h"
#include "segment/pixel_words.h"
#include "segment/span_fill.h"

#include "rvxcv/segment.h"

namespace rvxcv {

template <class T, int channels> using Pixel = std::array<T, channels>;

template <int channels, class T> RVX_INLINE Pixel<T, channels> loadPixel(const T *p) {
    Pixel<T, channels> pixel;
    for (std::size_t c = 0; c < channels; ++c) {
        pixel[c] = loadScalar(p + c);
    }
    return pixel;
}

// An image that is painted with one value. What derives from it knows the rule.
template <class T, int channels> struct PaintedImage : FillImage {
    Plane<T> plane;
    Pixel<T, channels> value;
    std::array<Vec<T>, channels> pattern;

    PaintedImage(T *image, std::int32_t step, RoiSize size, const T *newVal)
        : FillImage{size, nullptr, nullptr, paintPixels}, plane{image, step}, value(loadPixel<channels>(newVal)),
          pattern(repeated(value)) {}

    T *at(std::int64_t x, std::int64_t y) const { return plane.row(y) + x * channels; }

private:
    static void paintPixels(const FillImage &image, std::int64_t x, std::int64_t y, int n, std::uint64_t pixels) {
        const auto &self = static_cast<const PaintedImage &>(image);
        paintWord<T, channels>(self.at(x, y), n, pixels, self.value, self.pattern);
    }
};

template <class T> Checks checkFill(T *image, std::int32_t step, RoiSize roi, Point2i seed, bool pointers) {
    Checks checks;
    checks.pointers(image).require(pointers, StatusNullPointer).size(roi);
    checks.steps(rowBytes<T>(roi.width), step).multiples(sizeof(T), step);
    return checks.require(seed.x >= 0 && seed.x < roi.width && seed.y >= 0 && seed.y < roi.height, StatusOutOfRange);
}

// A size query: unlike others it truncates to 32 bits.
inline StatusCode fillScratch(std::uint64_t bytes, RoiSize roi, std::int32_t *size) {
    Checks checks;
    checks.pointers(size).size(roi);
    if (!checks.failed()) {
        *size = static_cast<std::int32_t>(static_cast<std::uint32_t>(bytes));
    }
    return checks.status();
}

template <class T, std::size_t channels>
void storeRegion(ConnectedComponent *region, const FilledRegion &filled, const Pixel<T, channels> &value) {
    ConnectedComponent record{};
    record.area = static_cast<double>(filled.area);
    for (std::size_t c = 0; c < channels; ++c) {
        record.value[c] = static_cast<double>(value[c]);
    }
    record.rect = {static_cast<std::int32_t>(filled.left), static_cast<std::int32_t>(filled.top),
                   static_cast<std::int32_t>(filled.right - filled.left + 1),
                   static_cast<std::int32_t>(filled.bottom - filled.top + 1)};
    storeScalar(region, record);
}

} // namespace rvxcv
