// rvxcv fill PHOTO --seed X,Y -o OUT: paints the connected region of similar pixels around a seed.
#include "command.h"
#include "parse.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>

namespace tools {
namespace {

struct Options {
    std::string photo, out, seed, range = "0,0", value;
    bool gradient = false;
    int neighbours = 4;
};

struct Deltas {
    std::uint8_t low, high;
};

// A fixed range and a gradient fill differ in the order of their arguments.
using One = StatusCode (*)(std::uint8_t *, std::int32_t, RoiSize, Point2i, std::uint8_t, std::uint8_t, std::uint8_t,
                           ConnectedComponent *, std::uint8_t *);
using Three = StatusCode (*)(std::uint8_t *, std::int32_t, RoiSize, Point2i, const std::uint8_t *, const std::uint8_t *,
                             const std::uint8_t *, ConnectedComponent *, std::uint8_t *);

// What the size queries answer, but beyond 32 bits too: a gradient fill of a large picture needs more than they can
// say.
std::size_t scratchBytes(RoiSize size, bool gradient) {
    const auto width = static_cast<std::size_t>(size.width), height = static_cast<std::size_t>(size.height);
    return gradient ? (width + 2) * (height + 2) + 16 * width * height + 64 : 6 * width * height + 32;
}

ConnectedComponent fill(Image &image, Point2i seed, Deltas deltas, const std::array<std::uint8_t, 3> &value,
                        bool gradient, bool eight) {
    std::vector<std::uint8_t> buffer(scratchBytes(image.roi(), gradient));
    ConnectedComponent region{};
    if (image.channels == 1) {
        const One one = gradient ? (eight ? rvxiFloodFill_Grad8Con_8u_C1IR : rvxiFloodFill_Grad4Con_8u_C1IR)
                                 : (eight ? rvxiFloodFill_Range8Con_8u_C1IR : rvxiFloodFill_Range4Con_8u_C1IR);
        const auto [a, b, c] =
            gradient ? std::array{deltas.low, deltas.high, value[0]} : std::array{value[0], deltas.low, deltas.high};
        check(one(image.data(), image.step(), image.roi(), seed, a, b, c, &region, buffer.data()), "FloodFill");
    } else {
        const Three three = gradient ? (eight ? rvxiFloodFill_Grad8Con_8u_C3IR : rvxiFloodFill_Grad4Con_8u_C3IR)
                                     : (eight ? rvxiFloodFill_Range8Con_8u_C3IR : rvxiFloodFill_Range4Con_8u_C3IR);
        const std::uint8_t low[3] = {deltas.low, deltas.low, deltas.low};
        const std::uint8_t high[3] = {deltas.high, deltas.high, deltas.high};
        check(
            gradient
                ? three(image.data(), image.step(), image.roi(), seed, low, high, value.data(), &region, buffer.data())
                : three(image.data(), image.step(), image.roi(), seed, value.data(), low, high, &region, buffer.data()),
            "FloodFill");
    }
    return region;
}

void run(const Options &options) {
    const Point2i seed = parsePoint("--seed", options.seed);
    const Point2i range = parsePoint("--range", options.range);
    if (range.x < 0 || range.y < 0 || range.x > 255 || range.y > 255) {
        throw UsageError("--range", "both distances are 0 to 255");
    }
    const auto given = options.value.empty() ? std::vector<std::uint8_t>{} : parseLevels("--value", options.value);
    checkPictureName(options.out);
    Image image = readImage(options.photo);
    checkInside("--seed", seed, image);
    std::array<std::uint8_t, 3> value{255, 0, 255};
    if (image.channels == 1) {
        value = {255, 255, 255};
    }
    if (given.size() == 3) {
        image = toColour(image); // a colour on a grey picture makes it a colour picture
        std::copy(given.begin(), given.end(), value.begin());
    } else if (given.size() == 1) {
        value.fill(given[0]);
    }
    const std::uint8_t *start = image.pixel(seed.x, seed.y);
    const bool painted = !std::equal(start, start + image.channels, value.begin());
    const ConnectedComponent region =
        fill(image, seed, {static_cast<std::uint8_t>(range.x), static_cast<std::uint8_t>(range.y)}, value,
             options.gradient, options.neighbours == 8);
    writeImage(options.out, image);
    if (painted || options.gradient) {
        std::printf("area %.0f pixels, rectangle %d,%d %dx%d\n", region.area, region.rect.x, region.rect.y,
                    region.rect.width, region.rect.height);
    } else { // the library paints nothing then and leaves no record
        std::printf("the seed has the value already: nothing is painted\n");
    }
}

} // namespace

void addFill(Program &program) {
    auto options = std::make_shared<Options>();
    Command command = program.command("fill", "Paint the connected region of similar pixels around a seed");
    command.option("PHOTO", options->photo, "Picture to paint in").required();
    command.option("-o,--output", options->out, "Picture to write").required();
    command.option("--seed", options->seed, "X,Y of the pixel to start from").required();
    command
        .option("--range", options->range,
                "LO,HI: how far a pixel may lie below and above the seed's value, in every channel")
        .showDefault();
    command.flag("--gradient", options->gradient, "Compare each pixel with its neighbour, not with the seed");
    command.option("--neighbours", options->neighbours, "4, or 8: diagonal ones too").oneOf({4, 8}).showDefault();
    command.option("--value", options->value, "Level or R,G,B to paint (default: magenta, white in grey pictures)");
    command.action([options] { run(*options); });
}

} // namespace tools
