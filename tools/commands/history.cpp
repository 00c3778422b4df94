// rvxcv history FRAMES... -o OUT: where something moved and how long ago, in colours over the last frame.
#include "colour.h"
#include "command.h"
#include "film.h"

#include <algorithm>
#include <cstdio>
#include <memory>

namespace tools {
namespace {

struct Options {
    std::vector<std::string> frames;
    std::string out;
    int threshold = 30;
    int duration = 10;
};

void run(const Options &options) {
    checkPictureName(options.out);
    Film film(options.frames);
    Image before = film.grey(), difference(before.width, before.height, 1);
    const RoiSize roi = before.roi();
    const auto duration = static_cast<float>(options.duration);
    std::vector<float> history(before.pixels.size()); // number of the last frame with motion, counted from 1
    Progress progress("frames of history");
    while (film.next()) {
        const Image &now = film.grey();
        check(rvxiAbsDiff_8u_C1R(before.data(), before.step(), now.data(), now.step(), difference.data(),
                                 difference.step(), roi),
              "AbsDiff");
        for (std::uint8_t &v : difference.pixels) {
            v = v > options.threshold ? 255 : 0;
        }
        check(rvxiUpdateMotionHistory_8u32f_C1IR(difference.data(), difference.step(), history.data(), 4 * roi.width,
                                                 roi, static_cast<float>(film.number()), duration),
              "UpdateMotionHistory");
        before = now;
        progress.show(film.number(), static_cast<std::size_t>(options.duration));
    }
    Image picture = toColour(before);
    std::size_t moved = 0;
    for (std::size_t i = 0; i < history.size(); ++i) {
        std::uint8_t *p = &picture.pixels[3 * i];
        if (history[i] > 0) {
            ++moved;
            // The newest motion is brightest; the oldest is still told from the frame.
            const double age = (static_cast<double>(film.number()) - static_cast<double>(history[i])) / (duration + 1);
            const Rgb colour = heat(0.95 - 0.7 * age);
            p[0] = colour.r;
            p[1] = colour.g;
            p[2] = colour.b;
        } else {
            std::fill_n(p, 3, static_cast<std::uint8_t>(before.pixels[i] / 3)); // dark, so that the colours stand out
        }
    }
    writeImage(options.out, picture);
    std::printf("%d frames, motion on %.1f %% of the pixels\n", film.number() + 1,
                100 * static_cast<double>(moved) / static_cast<double>(history.size()));
}

} // namespace

void addHistory(Program &program) {
    auto options = std::make_shared<Options>();
    Command command = program.command("history", "Show where something moved, and how long ago");
    addFrames(command, options->frames);
    command.option("-o,--output", options->out, "Picture to write: bright is new, dark is old").required();
    command.option("--threshold", options->threshold, "Pixels that change by more grey levels have moved")
        .range(0, 255)
        .showDefault();
    command.option("--duration", options->duration, "Frames until motion is forgotten").range(0, 100000).showDefault();
    command.action([options] { run(*options); });
}

} // namespace tools
