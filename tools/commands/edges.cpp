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

void addEdges(CLI::App &program) {
    auto options = std::make_shared<Options>();
    CLI::App *command = program.add_subcommand("edges", "Find the edges of a picture (Canny)");
    command->add_option("PHOTO", options->photo, "Picture to search")->required();
    command->add_option("-o,--output", options->out, "Picture to write")->required();
    command
        ->add_option("--low", options->edges.low, "Edges continue through gradients from here (default: 0.4 of high)")
        ->check(CLI::NonNegativeNumber);
    command
        ->add_option("--high", options->edges.high, "Edges begin at gradients above (default: chosen from the picture)")
        ->check(CLI::NonNegativeNumber);
    CLI::Option *norm = command->add_option("--norm", options->edges.norm, "Length of a gradient: l1 or l2 (Euclidean)")
                            ->check(CLI::IsMember({"l1", "l2"}))
                            ->capture_default_str();
    command->add_flag("--colour", options->colour, "Take the strongest colour channel, not the luma; the norm is l1");
    command->add_option("--filter", options->edges.filter, "Derivative filter")
        ->check(CLI::IsMember({"sobel", "scharr"}))
        ->capture_default_str();
    command->add_option("--aperture", options->edges.size, "Aperture of the filter (Scharr: 3)")
        ->check(CLI::IsMember({3, 5}))
        ->capture_default_str();
    command->callback([options, norm] {
        if (options->colour) {
            if (norm->count() != 0 && options->edges.norm == "l2") {
                throw CLI::ValidationError("--norm", "that of colours is l1");
            }
            options->edges.norm = "l1";
        }
        if (options->edges.size == 5 && options->edges.filter == "scharr") {
            throw CLI::ValidationError("--aperture", "Scharr filters are 3x3");
        }
        if (options->edges.low && options->edges.high && *options->edges.low > *options->edges.high) {
            throw CLI::ValidationError("--low", "it is above --high");
        }
        run(*options);
    });
}

} // namespace tools
