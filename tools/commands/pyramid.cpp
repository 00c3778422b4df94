// rvxcv pyramid PHOTO -o OUT: all levels of a picture's pyramid beside each other.
#include "pyramid.h"
#include "command.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>

namespace tools {
namespace {

struct Options {
    std::string photo, out;
    float rate = 2;
    int levels = 100;
};

void run(const Options &options) {
    checkPictureName(options.out);
    const Pyramid pyramid(readImage(options.photo), options.rate, options.levels);
    const Image &base = pyramid.levels().front();
    constexpr int gap = 2;
    std::int64_t width = -gap;
    for (const Image &level : pyramid.levels()) {
        width += level.width + gap;
    }
    if (width * base.height > 1 << 28 || width > 1000000) {
        throw Failure(options.photo + ": all levels beside each other are " + std::to_string(width) +
                      " pixels wide: ask for fewer with --levels, or for a higher --rate");
    }
    Image picture(static_cast<int>(width), base.height, base.channels);
    std::fill(picture.pixels.begin(), picture.pixels.end(), std::uint8_t{32});
    int x = 0;
    for (const Image &level : pyramid.levels()) {
        for (int y = 0; y < level.height; ++y) {
            std::copy_n(level.pixel(0, y), level.step(), picture.pixel(x, y));
        }
        x += level.width + gap;
    }
    writeImage(options.out, picture);
    std::printf("%zu levels:", pyramid.levels().size());
    for (const Image &level : pyramid.levels()) {
        std::printf(" %dx%d", level.width, level.height);
    }
    std::printf("\n");
}

} // namespace

void addPyramid(Program &program) {
    auto options = std::make_shared<Options>();
    Command command = program.command("pyramid", "Show all levels of a picture's pyramid");
    command.option("PHOTO", options->photo, "Picture to reduce").required();
    command.option("-o,--output", options->out, "Picture to write").required();
    command.option("--rate", options->rate, "How many times smaller each level is: above 1, up to 10").showDefault();
    command.option("--levels", options->levels, "Most levels above the picture itself").range(1, 100).showDefault();
    command.action([options] {
        if (!(options->rate > 1 && options->rate <= 10)) {
            throw UsageError("--rate", "it must be above 1, up to 10");
        }
        run(*options);
    });
}

} // namespace tools
