// rvxcv orientation PHOTO -o OUT: in which direction a picture changes most, everywhere: the direction as hue,
// coherence (how much of the change goes that way) as saturation, its strength as brightness.
#include "colour.h"
#include "command.h"
#include "draw.h"
#include "smooth.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <numbers>

namespace tools {
namespace {

struct Options {
    std::string photo, out;
    int block = 5;
    float sigma = 0;
    bool legend = false;
};

// As the library writes it for every pixel.
struct Eigensystem {
    float larger, smaller, x, y, acrossX, acrossY;

    float coherence() const { return larger > 0 ? (larger - smaller) / (larger + smaller) : 0; }
};
static_assert(sizeof(Eigensystem) == 24);

std::vector<Eigensystem> eigensystems(const Image &grey, int block) {
    constexpr std::int32_t aperture = 5;
    std::int32_t size = 0;
    check(rvxiEigenValsVecsGetBufferSize_8u32f_C1R(grey.roi(), aperture, block, &size), "EigenValsVecsGetBufferSize");
    std::vector<std::uint8_t> buffer(static_cast<std::size_t>(size));
    std::vector<Eigensystem> result(grey.pixels.size());
    check(rvxiEigenValsVecs_8u32f_C1R(grey.data(), grey.step(), &result[0].larger, 24 * grey.width, grey.roi(),
                                      MinEigenValSobel, aperture, block, buffer.data()),
          "EigenValsVecs");
    return result;
}

// A direction and its opposite are the same, so half a turn goes through all hues.
Rgb colourOf(double x, double y, double coherence, double strength) {
    return hsv(std::atan2(y, x) / std::numbers::pi, coherence, strength);
}

// Full brightness is what all but one pixel in fifty reach; roots, since the eye sees steps in proportion.
Image picture(RoiSize size, const std::vector<Eigensystem> &systems) {
    std::vector<float> strengths(systems.size());
    std::transform(systems.begin(), systems.end(), strengths.begin(), [](const Eigensystem &e) { return e.larger; });
    const auto strong = strengths.begin() + static_cast<std::ptrdiff_t>(strengths.size() * 49 / 50);
    std::nth_element(strengths.begin(), strong, strengths.end());
    const float full = *strong > 0 ? *strong : 1;

    Image result(size.width, size.height, 3);
    std::uint8_t *pixel = result.data();
    for (const Eigensystem &e : systems) {
        const double strength = std::pow(std::min(1.0f, std::max(0.0f, e.larger) / full), 0.25f);
        const Rgb colour = colourOf(e.x, e.y, std::clamp(e.coherence(), 0.0f, 1.0f), strength);
        *pixel++ = colour.r, *pixel++ = colour.g, *pixel++ = colour.b;
    }
    return result;
}

// A ring of all directions in the lower right corner.
void drawLegend(Image &image) {
    const double unit = markUnit(image), outer = 16 * unit, inner = 8 * unit;
    const double middleX = image.width - 1 - outer - 3 * unit, middleY = image.height - 1 - outer - 3 * unit;
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            const double dx = x - middleX, dy = y - middleY, radius = std::hypot(dx, dy);
            if (radius <= outer + unit) {
                const bool ring = radius >= inner && radius <= outer;
                const Rgb colour = ring ? colourOf(dx, dy, 1, 1) : Rgb{0, 0, 0};
                std::uint8_t *pixel = image.pixel(x, y);
                pixel[0] = colour.r, pixel[1] = colour.g, pixel[2] = colour.b;
            }
        }
    }
}

// The direction of the whole picture: directions count as twice their angle, as much as the picture changes there.
void describe(const std::vector<Eigensystem> &systems) {
    double x = 0, y = 0, all = 0;
    for (const Eigensystem &e : systems) {
        const double difference = e.larger - e.smaller;
        x += difference * (e.x * e.x - e.y * e.y);
        y += difference * 2 * e.x * e.y;
        all += e.larger + e.smaller;
    }
    const double coherence = all > 0 ? std::hypot(x, y) / all : 0;
    const double degrees = coherence > 0 ? std::atan2(y, x) * 90 / std::numbers::pi : 0;
    std::printf("strongest change at %.1f degrees, clockwise from the right; coherence %.3f\n", degrees, coherence);
}

void run(const Options &options) {
    Image grey = toGrey(readImage(options.photo));
    if (options.sigma > 0) {
        grey = smoothed(grey, options.sigma);
    }
    const std::vector<Eigensystem> systems = eigensystems(grey, options.block);
    Image result = picture(grey.roi(), systems);
    if (options.legend) {
        drawLegend(result);
    }
    writeImage(options.out, result);
    describe(systems);
}

} // namespace

void addOrientation(Program &program) {
    auto options = std::make_shared<Options>();
    Command command = program.command("orientation", "Show in which direction a picture changes most");
    command.option("PHOTO", options->photo, "Picture to measure").required();
    command.option("-o,--output", options->out, "Picture to write: direction as hue, coherence as saturation")
        .required();
    command.option("--block", options->block, "Side of the block around each pixel").oneOf({3, 5}).showDefault();
    command.option("--sigma", options->sigma, "Blur first, for larger structures").range(0.0, 100.0).showDefault();
    command.flag("--legend", options->legend, "Draw the colours of all directions in a corner");
    command.action([options] { run(*options); });
}

} // namespace tools
