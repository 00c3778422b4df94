// rvxcv blur PHOTO --sigma S -o OUT: a Gaussian blur.
#include "command.h"
#include "smooth.h"

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

void addBlur(Program &program) {
    auto options = std::make_shared<Options>();
    Command command = program.command("blur", "Blur a picture (Gaussian)");
    command.option("PHOTO", options->photo, "Picture to blur").required();
    command.option("-o,--output", options->out, "Picture to write").required();
    command.option("--sigma", options->sigma, "Standard deviation of the Gaussian, in pixels")
        .required()
        .range(0.05, 100.0);
    command.option("--size", options->size, "Side of the kernel, odd (default: three sigma to each side)")
        .range(3, 601);
    command.action([options] {
        if (options->size != 0 && options->size % 2 == 0) {
            throw UsageError("--size", "it must be odd");
        }
        run(*options);
    });
}

} // namespace tools
