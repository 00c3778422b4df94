#include "colour.h"

#include <algorithm>
#include <cmath>

namespace tools {
namespace {

std::uint8_t level(double value) { return static_cast<std::uint8_t>(std::clamp(std::nearbyint(value), 0.0, 255.0)); }

} // namespace

Rgb heat(double part) {
    struct Stop {
        double r, g, b;
    };
    constexpr Stop stops[] = {{0, 0, 0},      {40, 11, 84},   {101, 21, 110}, {159, 42, 99},  {212, 72, 66},
                              {245, 125, 21}, {250, 175, 25}, {245, 219, 80}, {252, 255, 190}};
    constexpr int last = static_cast<int>(std::size(stops)) - 1;
    const double at = std::clamp(part, 0.0, 1.0) * last;
    const int i = std::min(static_cast<int>(at), last - 1);
    const double t = at - i;
    const Stop &a = stops[i], &b = stops[i + 1];
    return {level(a.r + (b.r - a.r) * t), level(a.g + (b.g - a.g) * t), level(a.b + (b.b - a.b) * t)};
}

Rgb hsv(double hue, double saturation, double value) {
    const double sixths = (hue - std::floor(hue)) * 6;
    const auto part = [&](double shift) {
        const double k = std::fmod(sixths + shift, 6.0);
        return level(255 * value * (1 - saturation * std::clamp(std::min(k, 4 - k), 0.0, 1.0)));
    };
    return {part(5), part(3), part(1)};
}

// Hues a golden section of the circle apart, in turn strong and pale.
Rgb paletteColour(std::size_t number) {
    return hsv(static_cast<double>(number) * 0.61803398875, number % 2 == 0 ? 0.9 : 0.6,
               number % 3 == 0 ? 1 : 225.0 / 255);
}

Image heatPicture(RoiSize size, const std::vector<float> &values, float largest) {
    Image result(size.width, size.height, 3);
    for (std::size_t i = 0; i < values.size(); ++i) {
        const Rgb colour = heat(largest > 0 ? static_cast<double>(values[i]) / static_cast<double>(largest) : 0);
        result.pixels[3 * i] = colour.r;
        result.pixels[3 * i + 1] = colour.g;
        result.pixels[3 * i + 2] = colour.b;
    }
    return result;
}

Image greyPicture(RoiSize size, const std::vector<float> &values, float zero, double scale) {
    float largest = 1;
    for (const float v : values) {
        largest = std::max(largest, std::abs(v));
    }
    const float factor = scale > 0 ? static_cast<float>(scale) : (255.0f - zero) / largest;
    Image result(size.width, size.height, 1);
    std::transform(values.begin(), values.end(), result.pixels.begin(), [=](float v) {
        return static_cast<std::uint8_t>(std::clamp(std::nearbyint(zero + v * factor), 0.0f, 255.0f));
    });
    return result;
}

} // namespace tools
