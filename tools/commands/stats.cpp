// rvxcv stats PHOTO: mean, deviation, extrema with their positions and norms of every channel.
#include "command.h"
#include "statistics.h"

#include <cstdio>
#include <memory>

namespace tools {
namespace {

struct Options {
    std::string photo, mask;
    bool csv = false;
};

void run(const Options &options) {
    const Image image = readImage(options.photo), mask = readMask(options.mask, image);
    const std::size_t pixels = selectedPixels(mask);
    if (options.csv) {
        std::printf("channel,pixels,mean,deviation,min,min_x,min_y,max,max_x,max_y,l1,l2\n");
    } else {
        std::printf("%dx%d, %zu of %zu pixels\n", image.width, image.height, pixels, mask.pixels.size());
        std::printf("%-7s %8s %10s  %-18s %-18s %12s %12s\n", "channel", "mean", "deviation", "least at", "most at",
                    "L1", "L2");
    }
    for (int c = 0; c < image.channels; ++c) {
        const ChannelStatistics s = statisticsOf(image, mask, c);
        if (options.csv) {
            std::printf("%s,%zu,%.17g,%.17g,%.0f,%d,%d,%.0f,%d,%d,%.0f,%.17g\n", channelName(image, c), pixels, s.mean,
                        s.deviation, s.least.value, s.least.at.x, s.least.at.y, s.most.value, s.most.at.x, s.most.at.y,
                        s.l1, s.l2);
        } else {
            std::printf("%-7s %8.3f %10.3f  %3.0f %-14s %3.0f %-14s %12.0f %12.2f\n", channelName(image, c), s.mean,
                        s.deviation, s.least.value, place(s.least.at).c_str(), s.most.value, place(s.most.at).c_str(),
                        s.l1, s.l2);
        }
    }
}

} // namespace

void addStats(Program &program) {
    auto options = std::make_shared<Options>();
    Command command = program.command("stats", "Print mean, deviation, extrema and norms of every channel");
    command.option("PHOTO", options->photo, "Picture to measure").required();
    command.option("--mask", options->mask, "Picture of the same size: only what is not black in it counts");
    command.flag("--csv", options->csv, "Print a list with commas and all digits");
    command.action([options] { run(*options); });
}

} // namespace tools
