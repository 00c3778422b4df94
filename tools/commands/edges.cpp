// rvxcv edges PHOTO -o OUT: Canny edges of a picture's luma or of its colours, white on black. Thresholds that are not
// given are chosen from the picture.
#include "canny.h"
#include "command.h"

#include <algorithm>
#include <cstdio>
#include <memory>

namespace tools {
namespace {

struct Options {
    std::string photo, out;
    EdgeSettings edges;
    bool colour = false;
};

void run(const Options &options) {
    const Image photo = readImage(options.photo);
    const Edges edges = findEdges(options.colour ? toColour(photo) : toGrey(photo), options.edges);
    writeImage(options.out, edges.image);
    const auto marked = std::count(edges.image.pixels.begin(), edges.image.pixels.end(), 255);
    std::printf("thresholds %g and %g, edges on %.1f %% of the pixels\n", static_cast<double>(edges.low),
                static_cast<double>(edges.high),
                100.0 * static_cast<double>(marked) / static_cast<double>(edges.image.pixels.size()));
}

} // namespace

void addEdges(Program &program) {
    auto options = std::make_shared<Options>();
    Command command = program.command("edges", "Find the edges of a picture (Canny)");
    command.option("PHOTO", options->photo, "Picture to search").required();
    command.option("-o,--output", options->out, "Picture to write").required();
    command.option("--low", options->edges.low, "Edges continue through gradients from here (default: 0.4 of high)")
        .notNegative();
    command.option("--high", options->edges.high, "Edges begin at gradients above (default: chosen from the picture)")
        .notNegative();
    Option norm = command.option("--norm", options->edges.norm, "Length of a gradient: l1 or l2 (Euclidean)")
                      .oneOf({"l1", "l2"})
                      .showDefault();
    command.flag("--colour", options->colour, "Take the strongest colour channel, not the luma; the norm is l1");
    command.option("--filter", options->edges.filter, "Derivative filter").oneOf({"sobel", "scharr"}).showDefault();
    command.option("--aperture", options->edges.size, "Aperture of the filter (Scharr: 3)").oneOf({3, 5}).showDefault();
    command.action([options, norm] {
        if (options->colour) {
            if (norm.given() && options->edges.norm == "l2") {
                throw UsageError("--norm", "that of colours is l1");
            }
            options->edges.norm = "l1";
        }
        if (options->edges.size == 5 && options->edges.filter == "scharr") {
            throw UsageError("--aperture", "Scharr filters are 3x3");
        }
        if (options->edges.low && options->edges.high && *options->edges.low > *options->edges.high) {
            throw UsageError("--low", "it is above --high");
        }
        run(*options);
    });
}

} // namespace tools
