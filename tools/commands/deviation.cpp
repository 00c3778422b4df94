// rvxcv deviation PHOTO --window WxH -o OUT: local contrast: the standard deviation of the grey levels in a window
// around every pixel, upright or turned by 45 degrees.
#include "colour.h"
#include "command.h"
#include "parse.h"

#include <algorithm>
#include <cstdio>
#include <memory>

namespace tools {
namespace {

struct Options {
    std::string photo, out, window = "15x15";
    bool tilted = false;
    double scale = 0;
};

// With so many pixels more on each side, copies of the nearest one.
Image padded(const Image &grey, int left, int top, int right, int bottom) {
    Image result(grey.width + left + right, grey.height + top + bottom, 1);
    for (int y = 0; y < result.height; ++y) {
        const std::uint8_t *row = grey.pixel(0, std::clamp(y - top, 0, grey.height - 1));
        std::uint8_t *out = result.pixel(0, y);
        std::fill_n(out, left, row[0]);
        std::copy_n(row, grey.width, out + left);
        std::fill_n(out + left + grey.width, right, row[grey.width - 1]);
    }
    return result;
}

// The integral images of a picture: `more` rows and columns more than the picture.
struct Integrals {
    std::int32_t sumStep, squareStep;
    std::vector<std::int32_t> sum;
    std::vector<double> square;

    Integrals(const Image &image, int more)
        : sumStep(4 * (image.width + more)), squareStep(8 * (image.width + more)),
          sum(static_cast<std::size_t>(image.width + more) * static_cast<std::size_t>(image.height + more)),
          square(sum.size()) {}
};

std::vector<float> upright(const Image &grey, RoiSize window) {
    const int left = window.width / 2, top = window.height / 2;
    const Image image = padded(grey, left, top, window.width - 1 - left, window.height - 1 - top);
    Integrals integrals(image, 1);
    check(rvxiSqrIntegral_8u32s64f_C1R(image.data(), image.step(), integrals.sum.data(), integrals.sumStep,
                                       integrals.square.data(), integrals.squareStep, image.roi(), 0, 0),
          "SqrIntegral");
    std::vector<float> result(grey.pixels.size());
    check(rvxiRectStdDev_32s32f_C1R(integrals.sum.data(), integrals.sumStep, integrals.square.data(),
                                    integrals.squareStep, result.data(), 4 * grey.width, grey.roi(),
                                    {0, 0, window.width, window.height}),
          "RectStdDev");
    return result;
}

// A turned window hangs from its topmost corner: it reaches `height` pixels to the left of it, `width` to the right and
// the sum of both down.
std::vector<float> tilted(const Image &grey, RoiSize window) {
    const int reach = window.width + window.height, left = (reach + 1) / 2, top = reach / 2;
    const Image image = padded(grey, left, top, reach - left, reach - top);
    Integrals integrals(image, 2);
    check(rvxiTiltedSqrIntegral_8u32s64f_C1R(image.data(), image.step(), integrals.sum.data(), integrals.sumStep,
                                             integrals.square.data(), integrals.squareStep, image.roi(), 0, 0),
          "TiltedSqrIntegral");
    std::vector<float> result(grey.pixels.size());
    check(rvxiTiltedRectStdDev_32s32f_C1R(integrals.sum.data(), integrals.sumStep, integrals.square.data(),
                                          integrals.squareStep, result.data(), 4 * grey.width, grey.roi(),
                                          {window.height, 0, window.width, window.height}),
          "TiltedRectStdDev");
    return result;
}

void run(const Options &options) {
    const RoiSize window = parseSize("--window", options.window, 999);
    const Image grey = toGrey(readImage(options.photo));
    const std::vector<float> deviation = options.tilted ? tilted(grey, window) : upright(grey, window);
    writeImage(options.out, greyPicture(grey.roi(), deviation, 0, options.scale));
    std::printf("largest deviation %.2f grey levels\n",
                static_cast<double>(*std::max_element(deviation.begin(), deviation.end())));
}

} // namespace

void addDeviation(Program &program) {
    auto options = std::make_shared<Options>();
    Command command = program.command("deviation", "Show local contrast: the deviation in a window");
    command.option("PHOTO", options->photo, "Picture to measure").required();
    command.option("-o,--output", options->out, "Picture to write").required();
    command.option("--window", options->window, "WxH of the window in pixels").showDefault();
    command.flag("--tilted", options->tilted, "Turn the window by 45 degrees; its sides then count diagonal steps");
    command.option("--scale", options->scale, "Grey levels per unit; without it the largest value decides").positive();
    command.action([options] { run(*options); });
}

} // namespace tools
