#include "canny.h"

#include "derivative.h"
#include "otsu.h"

#include <algorithm>
#include <cmath>

namespace tools {
namespace {

struct Thresholds {
    float low, high;
};

// Where one threshold follows from the other.
constexpr float lowToHigh = 0.4f;

std::vector<float> magnitudes(const Image &grey, const EdgeSettings &settings) {
    const bool scharr = settings.filter == "scharr";
    const auto dx = derivative(grey, scharr ? "scharr-vert" : "sobel-neg-vert", settings.size);
    const auto dy = derivative(grey, scharr ? "scharr-horiz" : "sobel-horiz", settings.size);
    std::vector<float> result(dx.size());
    std::transform(dx.begin(), dx.end(), dy.begin(), result.begin(), [&](float x, float y) {
        return settings.norm == "l1" ? std::abs(x) + std::abs(y) : std::hypot(x, y);
    });
    return result;
}

Thresholds thresholds(const Image &grey, const EdgeSettings &settings) {
    if (settings.low && settings.high) {
        return {*settings.low, *settings.high};
    }
    const float high = settings.high  ? *settings.high
                       : settings.low ? *settings.low / lowToHigh
                                      : separation(magnitudes(grey, settings));
    return {settings.low ? *settings.low : lowToHigh * high, high};
}

} // namespace

Edges findEdges(const Image &grey, const EdgeSettings &settings) {
    const std::int32_t filter = settings.filter == "scharr" ? CannyFilterScharr : CannyFilterSobel;
    const std::int32_t norm = settings.norm == "l1" ? CannyNormL1 : CannyNormL2;
    const MaskCode mask = settings.size == 5 ? Mask5x5 : Mask3x3;
    const Thresholds t = thresholds(grey, settings);
    std::int32_t bytes = 0;
    check(rvxiCannyBorderGetSize(grey.roi(), filter, mask, PixelType8u, &bytes), "CannyBorderGetSize");
    std::vector<std::uint8_t> buffer(static_cast<std::size_t>(bytes));
    Edges edges{Image(grey.width, grey.height, 1), t.low, t.high};
    check(rvxiCannyBorder_8u_C1R(grey.data(), grey.step(), edges.image.data(), edges.image.step(), grey.roi(), filter,
                                 mask, BorderReplicate, 0, norm, buffer.data(), t.low, t.high),
          "CannyBorder");
    return edges;
}

} // namespace tools
