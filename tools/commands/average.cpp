// rvxcv average FRAMES... -o OUT: the running average of frames, as a background model keeps it.
#include "command.h"
#include "film.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace tools {
namespace {

struct Options {
    std::vector<std::string> frames;
    std::string out;
    float alpha = 0.1f;
};

void run(const Options &options) {
    Film film(options.frames);
    const Image first = film.picture();
    // A row of interleaved channels is a row of so many single-channel pixels.
    const RoiSize roi{first.width * first.channels, first.height};
    std::vector<float> average(first.pixels.begin(), first.pixels.end());
    const std::int32_t averageStep = roi.width * static_cast<std::int32_t>(sizeof(float));
    while (film.next()) {
        Image frame = film.picture();
        if (frame.channels != first.channels) {
            frame = first.channels == 3 ? toColour(frame) : toGrey(frame);
        }
        check(rvxiAddWeighted_8u32f_C1IR(frame.data(), frame.step(), average.data(), averageStep, roi, options.alpha),
              "AddWeighted");
    }
    Image result(first.width, first.height, first.channels);
    std::transform(average.begin(), average.end(), result.pixels.begin(),
                   [](float v) { return static_cast<std::uint8_t>(std::clamp(std::nearbyint(v), 0.0f, 255.0f)); });
    writeImage(options.out, result);
}

} // namespace

void addAverage(Program &program) {
    auto options = std::make_shared<Options>();
    Command command = program.command("average", "Write the running average of frames of one size");
    addFrames(command, options->frames);
    command.option("-o,--output", options->out, "Picture to write").required();
    command.option("--alpha", options->alpha, "Weight of each new frame").range(0.0, 1.0).showDefault();
    command.action([options] { run(*options); });
}

} // namespace tools
