#include "rolling_ball.h"

#include <cmath>

namespace tools {
namespace {

// How far the ball's surface lies below its top, a negative number, row by row.
std::vector<std::int32_t> ball(int radius) {
    std::vector<std::int32_t> depths;
    for (int y = -radius; y <= radius; ++y) {
        for (int x = -radius; x <= radius; ++x) {
            const double square = static_cast<double>(radius) * radius - x * x - y * y;
            depths.push_back(square < 0 ? INT32_MIN
                                        : static_cast<std::int32_t>(std::lround(std::sqrt(square))) - radius);
        }
    }
    return depths;
}

class Ball {
public:
    Ball(int radius, int width) {
        const std::vector<std::int32_t> depths = ball(radius);
        const RoiSize size{2 * radius + 1, 2 * radius + 1};
        std::int32_t specBytes = 0, bufferBytes = 0;
        check(rvxiGrayMorphologyGetSize_8u_C1R(width, size, &specBytes, &bufferBytes), "GrayMorphologyGetSize");
        spec_.resize(static_cast<std::size_t>(specBytes + 7) / 8);
        buffer_.resize(static_cast<std::size_t>(bufferBytes));
        check(rvxiGrayMorphologyInit_8u_C1R(width, depths.data(), size, spec()), "GrayMorphologyInit");
    }

    // The surface that the ball touches from below (an opening) or from above (a closing).
    Image touched(const Image &surface, bool fromAbove) {
        Image between(surface.width, surface.height, 1), result = between;
        const auto first = fromAbove ? rvxiGrayDilateBorder_8u_C1R : rvxiGrayErodeBorder_8u_C1R;
        const auto second = fromAbove ? rvxiGrayErodeBorder_8u_C1R : rvxiGrayDilateBorder_8u_C1R;
        apply(first, surface, between);
        apply(second, between, result);
        return result;
    }

private:
    template <class Step> void apply(Step step, const Image &from, Image &to) {
        check(step(from.data(), from.step(), to.data(), to.step(), from.roi(), BorderReplicate, 0, spec(),
                   buffer_.data()),
              "rolling-ball");
    }
    GrayMorphSpec *spec() { return reinterpret_cast<GrayMorphSpec *>(spec_.data()); }

    std::vector<std::uint64_t> spec_; // a record stands at a multiple of 8
    std::vector<std::uint8_t> buffer_;
};

} // namespace

Image withoutBackground(const Image &image, int radius, bool light) {
    Ball ball(radius, image.width);
    const auto channels = static_cast<std::size_t>(image.channels);
    Image result(image.width, image.height, image.channels), plane(image.width, image.height, 1);
    for (std::size_t c = 0; c < channels; ++c) {
        for (std::size_t i = 0; i < plane.pixels.size(); ++i) {
            plane.pixels[i] = image.pixels[i * channels + c];
        }
        const Image background = ball.touched(plane, light);
        for (std::size_t i = 0; i < plane.pixels.size(); ++i) {
            const int level = plane.pixels[i] - background.pixels[i]; // of one sign
            result.pixels[i * channels + c] = static_cast<std::uint8_t>(light ? 255 + level : level);
        }
    }
    return result;
}

} // namespace tools
