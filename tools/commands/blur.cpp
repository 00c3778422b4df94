// rvxcv blur PHOTO --sigma S -o OUT: a Gaussian blur.
#include "command.h"

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
    const Image image = readImage(options.photo);
    const int size = options.size != 0 ? options.size : 2 * static_cast<int>(std::ceil(3 * options.sigma)) + 1;
    std::int32_t specBytes = 0, bufferBytes = 0;
    check(rvxiFilterGaussianGetBufferSize(image.roi(), size, PixelType8u, image.channels, &specBytes, &bufferBytes),
          "FilterGaussianGetBufferSize");
    std::vector<std::uint8_t> specMemory(static_cast<std::size_t>(specBytes));
    std::vector<std::uint8_t> buffer(static_cast<std::size_t>(bufferBytes));
    auto *spec = reinterpret_cast<GaussianSpec *>(specMemory.data());
    check(rvxiFilterGaussianInit(image.roi(), size, BorderReplicate, PixelType8u, image.channels, spec, buffer.data(),
                                 options.sigma),
          "FilterGaussianInit");
    Image result(image.width, image.height, image.channels);
    const std::uint8_t border[3] = {}; // replicated borders do not look at it
    check(image.channels == 3
              ? rvxiFilterGaussianBorder_8u_C3R(image.data(), image.step(), result.data(), result.step(), image.roi(),
                                                border, spec, buffer.data())
              : rvxiFilterGaussianBorder_8u_C1R(image.data(), image.step(), result.data(), result.step(), image.roi(),
                                                border[0], spec, buffer.data()),
          "FilterGaussianBorder");
    writeImage(options.out, result);
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
