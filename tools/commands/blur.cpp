// rvxcv blur PHOTO --sigma S -o OUT: a Gaussian blur.
#include "command.h"
#include "smooth.h"

#include <cmath>
#include <memory>

namespace tools {
namespace {

struct Options {
    std::string photo, out;
    float sigma = 0;
    int size = 0;
};

void run(const Options &options) {
    writeImage(options.out, smoothed(readImage(options.photo), options.sigma, options.size));
}

} // namespace

void addBlur(CLI::App &program) {
    auto options = std::make_shared<Options>();
    CLI::App *command = program.add_subcommand("blur", "Blur a picture (Gaussian)");
    command->add_option("PHOTO", options->photo, "Picture to blur")->required();
    command->add_option("-o,--output", options->out, "Picture to write")->required();
    command->add_option("--sigma", options->sigma, "Standard deviation of the Gaussian, in pixels")
        ->required()
        ->check(CLI::Range(0.05, 100.0));
    command->add_option("--size", options->size, "Side of the kernel, odd (default: three sigma to each side)")
        ->check(CLI::Range(3, 601));
    command->callback([options] {
        if (options->size != 0 && options->size % 2 == 0) {
            throw CLI::ValidationError("--size", "it must be odd");
        }
        if (std::isnan(options->sigma)) { // passes the range check
            throw CLI::ValidationError("--sigma", "not a number");
        }
        run(*options);
    });
}

} // namespace tools
