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

struct Gradient {
    std::vector<std::int16_t> dx, dy;
};

Gradient gradient(const Image &grey, const EdgeSettings &settings) {
    const bool scharr = settings.filter == "scharr";
    return {derivative(grey, scharr ? "scharr-vert" : "sobel-neg-vert", settings.size),
            derivative(grey, scharr ? "scharr-horiz" : "sobel-horiz", settings.size)};
}

Gradient strongestGradient(const Image &colour, const EdgeSettings &settings) {
    Gradient strongest;
    Image channel(colour.width, colour.height, 1);
    for (int c = 0; c < colour.channels; ++c) {
        for (std::size_t i = 0; i < channel.pixels.size(); ++i) {
            channel.pixels[i] = colour.pixels[i * 3 + static_cast<std::size_t>(c)];
        }
        const Gradient g = gradient(channel, settings);
        if (c == 0) {
            strongest = g;
        }
        for (std::size_t i = 0; i < g.dx.size(); ++i) {
            if (std::abs(g.dx[i]) + std::abs(g.dy[i]) > std::abs(strongest.dx[i]) + std::abs(strongest.dy[i])) {
                strongest.dx[i] = g.dx[i];
                strongest.dy[i] = g.dy[i];
            }
        }
    }
    return strongest;
}

std::vector<float> magnitudes(const Gradient &g, const EdgeSettings &settings) {
    std::vector<float> result(g.dx.size());
    std::transform(g.dx.begin(), g.dx.end(), g.dy.begin(), result.begin(), [&](float x, float y) {
        return settings.norm == "l1" ? std::abs(x) + std::abs(y) : std::hypot(x, y);
    });
    return result;
}

Thresholds thresholds(const Gradient &g, const EdgeSettings &settings) {
    if (settings.low && settings.high) {
        return {*settings.low, *settings.high};
    }
    const float high = settings.high  ? *settings.high
                       : settings.low ? *settings.low / lowToHigh
                                      : separation(magnitudes(g, settings));
    return {settings.low ? *settings.low : lowToHigh * high, high};
}

} // namespace

Edges findEdges(const Image &picture, const EdgeSettings &settings) {
    const bool colour = picture.channels == 3;
    const Gradient g = colour ? strongestGradient(picture, settings) : gradient(picture, settings);
    const Thresholds t = thresholds(g, settings);
    Edges edges{Image(picture.width, picture.height, 1), t.low, t.high};
    Image &out = edges.image;
    std::int32_t bytes = 0;
    const std::int32_t filter = settings.filter == "scharr" ? CannyFilterScharr : CannyFilterSobel;
    const std::int32_t norm = settings.norm == "l1" ? CannyNormL1 : CannyNormL2;
    const MaskCode mask = settings.size == 5 ? Mask5x5 : Mask3x3;
    check(colour ? rvxiCannyGetSize(picture.roi(), &bytes)
                 : rvxiCannyBorderGetSize(picture.roi(), filter, mask, PixelType8u, &bytes),
          "CannyGetSize");
    std::vector<std::uint8_t> buffer(static_cast<std::size_t>(bytes));
    const std::int32_t step = 2 * picture.width;
    check(colour ? rvxiCanny_16s8u_C1R(g.dx.data(), step, g.dy.data(), step, out.data(), out.step(), picture.roi(),
                                       t.low, t.high, buffer.data())
                 : rvxiCannyBorder_8u_C1R(picture.data(), picture.step(), out.data(), out.step(), picture.roi(), filter,
                                          mask, BorderReplicate, 0, norm, buffer.data(), t.low, t.high),
          "Canny");
    return edges;
}

} // namespace tools
