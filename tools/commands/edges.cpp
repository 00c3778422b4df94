// rvxcv edges PHOTO -o OUT: the Canny edges of a picture's luma.
#include "command.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>

namespace tools {
namespace {

struct Options {
    std::string photo, out;
    std::int32_t filter = CannyFilterSobel, norm = CannyNormL2;
    int size = 3;
    float low = -1, high = -1;
};

// The gradient's length, in the norm that the edges use, that a tenth of the pixels exceeds.
float strongGradient(const Image &grey, const Options &options) {
    const MaskCode mask = options.size == 5 ? Mask5x5 : Mask3x3;
    const std::int32_t step = grey.width * 2;
    std::vector<std::int16_t> dx(grey.pixels.size()), dy(grey.pixels.size());
    std::int32_t bytes = 0;
    const auto buffer = [&] { return std::vector<std::uint8_t>(static_cast<std::size_t>(bytes)); };
    if (options.filter == CannyFilterScharr) {
        check(rvxiFilterScharrVertGetBufferSize_8u16s_C1R(grey.roi(), &bytes), "ScharrVert");
        check(rvxiFilterScharrVertBorder_8u16s_C1R(grey.data(), grey.step(), dx.data(), step, grey.roi(),
                                                   BorderReplicate, 0, buffer().data()),
              "ScharrVert");
        check(rvxiFilterScharrHorizGetBufferSize_8u16s_C1R(grey.roi(), &bytes), "ScharrHoriz");
        check(rvxiFilterScharrHorizBorder_8u16s_C1R(grey.data(), grey.step(), dy.data(), step, grey.roi(),
                                                    BorderReplicate, 0, buffer().data()),
              "ScharrHoriz");
    } else {
        check(rvxiFilterSobelVertGetBufferSize_8u16s_C1R(grey.roi(), mask, &bytes), "SobelVert");
        check(rvxiFilterSobelVertBorder_8u16s_C1R(grey.data(), grey.step(), dx.data(), step, grey.roi(), mask,
                                                  BorderReplicate, 0, buffer().data()),
              "SobelVert");
        check(rvxiFilterSobelHorizGetBufferSize_8u16s_C1R(grey.roi(), mask, &bytes), "SobelHoriz");
        check(rvxiFilterSobelHorizBorder_8u16s_C1R(grey.data(), grey.step(), dy.data(), step, grey.roi(), mask,
                                                   BorderReplicate, 0, buffer().data()),
              "SobelHoriz");
    }
    std::vector<float> lengths(dx.size());
    for (std::size_t i = 0; i < lengths.size(); ++i) {
        const auto x = static_cast<float>(dx[i]), y = static_cast<float>(dy[i]);
        lengths[i] = options.norm == CannyNormL1 ? std::fabs(x) + std::fabs(y) : std::hypot(x, y);
    }
    const auto tenth = lengths.begin() + static_cast<std::ptrdiff_t>(lengths.size() * 9 / 10);
    std::nth_element(lengths.begin(), tenth, lengths.end());
    return *tenth;
}

void run(Options options) {
    const Image grey = toGrey(readImage(options.photo));
    if (options.high < 0) {
        const float strong = strongGradient(grey, options);
        options.high = options.low < 0 ? strong : std::max(strong, options.low);
    }
    if (options.low < 0) {
        options.low = 0.4f * options.high;
    }
    if (options.low > options.high) {
        throw Failure("the low threshold is above the high one");
    }
    const MaskCode mask = options.size == 5 ? Mask5x5 : Mask3x3;
    std::int32_t bytes = 0;
    check(rvxiCannyBorderGetSize(grey.roi(), options.filter, mask, PixelType8u, &bytes), "CannyBorderGetSize");
    std::vector<std::uint8_t> buffer(static_cast<std::size_t>(bytes));
    Image edges(grey.width, grey.height, 1);
    check(rvxiCannyBorder_8u_C1R(grey.data(), grey.step(), edges.data(), edges.step(), grey.roi(), options.filter, mask,
                                 BorderReplicate, 0, options.norm, buffer.data(), options.low, options.high),
          "CannyBorder");
    writeImage(options.out, edges);
}

} // namespace

void addEdges(CLI::App &program) {
    const std::map<std::string, std::int32_t> filters{{"sobel", CannyFilterSobel}, {"scharr", CannyFilterScharr}};
    const std::map<std::string, std::int32_t> norms{{"l1", CannyNormL1}, {"l2", CannyNormL2}};
    auto options = std::make_shared<Options>();
    CLI::App *command = program.add_subcommand("edges", "Write the Canny edges of a picture");
    command->add_option("PHOTO", options->photo, "Picture to read")->required();
    command->add_option("-o,--output", options->out, "Picture to write")->required();
    command->add_option("--low", options->low, "Low threshold (default: 0.4 times the high one)")
        ->check(CLI::NonNegativeNumber);
    command->add_option("--high", options->high, "High threshold (default: exceeded by a tenth of the gradients)")
        ->check(CLI::NonNegativeNumber);
    command->add_option("--filter", options->filter, "Derivatives: sobel (default) or scharr")
        ->transform(CLI::CheckedTransformer(filters, CLI::ignore_case));
    command->add_option("--norm", options->norm, "Gradient norm: l1 or l2 (default)")
        ->transform(CLI::CheckedTransformer(norms, CLI::ignore_case));
    command->add_option("--aperture", options->size, "Sobel size")->check(CLI::IsMember({3, 5}))->capture_default_str();
    command->callback([options] { run(*options); });
}

} // namespace tools
