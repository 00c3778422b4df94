// rvxcv compare A B: by how much two pictures differ, and where most; for scripts, whether by more than a limit.
#include "command.h"
#include "statistics.h"

#include <algorithm>
#include <cstdio>
#include <memory>

namespace tools {
namespace {

struct Options {
    std::string first, second, mask;
    double most = -1; // no limit
};

void run(const Options &options) {
    Image a = readImage(options.first), b = readImage(options.second);
    matchShapes(options.first, a, options.second, b);
    const Image mask = readMask(options.mask, a);
    std::printf("%dx%d, %zu of %zu pixels\n", a.width, a.height, selectedPixels(mask), mask.pixels.size());
    std::printf("%-7s %8s %8s %8s %8s  %-18s %12s %10s  %8s %8s %8s\n", "channel", "mean A", "mean B", "dev A", "dev B",
                "largest at", "L1", "L2", "rel. Inf", "rel. L1", "rel. L2");
    double largest = 0;
    for (int c = 0; c < a.channels; ++c) {
        const ChannelStatistics ofA = statisticsOf(a, mask, c), ofB = statisticsOf(b, mask, c);
        const ChannelDifference d = differenceOf(a, b, mask, c);
        std::printf("%-7s %8.3f %8.3f %8.3f %8.3f  %3.0f %-14s %12.0f %10.2f  %8.5f %8.5f %8.5f\n", channelName(a, c),
                    ofA.mean, ofB.mean, ofA.deviation, ofB.deviation, d.inf, place(d.most.at).c_str(), d.l1, d.l2,
                    d.relativeInf, d.relativeL1, d.relativeL2);
        largest = std::max(largest, d.inf);
    }
    if (options.most >= 0 && largest > options.most) {
        std::fflush(stdout);
        char text[80];
        std::snprintf(text, sizeof text, " differ by %.0f, more than %g", largest, options.most);
        throw Failure(options.first + " and " + options.second + text);
    }
}

} // namespace

void addCompare(Program &program) {
    auto options = std::make_shared<Options>();
    Command command = program.command("compare", "Print by how much two pictures of one size differ");
    command.option("A", options->first, "First picture").required();
    command.option("B", options->second, "Second picture: what relative norms are relative to").required();
    command.option("--mask", options->mask, "Picture of the same size: only what is not black in it counts");
    command.option("--max-difference", options->most, "End with 1 when any level differs by more").range(0.0, 255.0);
    command.action([options] { run(*options); });
}

} // namespace tools
