// rvxcv edges PHOTO -o OUT: Canny edges of a picture's luma, white on black. Thresholds that are not given are chosen
// from the picture.
#include "command.h"
#include "derivative.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <memory>
#include <optional>

namespace tools {
namespace {

struct Options {
    std::string photo, out, norm = "l2", filter = "sobel";
    int size = 3;
    std::optional<float> low, high;
};

struct Thresholds {
    float low, high;
};

// Where one threshold follows from the other.
constexpr float lowToHigh = 0.4f;

std::vector<float> magnitudes(const Image &grey, const Options &options) {
    const bool scharr = options.filter == "scharr";
    const auto dx = derivative(grey, scharr ? "scharr-vert" : "sobel-neg-vert", options.size);
    const auto dy = derivative(grey, scharr ? "scharr-horiz" : "sobel-horiz", options.size);
    std::vector<float> result(dx.size());
    std::transform(dx.begin(), dx.end(), dy.begin(), result.begin(), [&](float x, float y) {
        return options.norm == "l1" ? std::abs(x) + std::abs(y) : std::hypot(x, y);
    });
    return result;
}

// The value that separates small and large ones best: it maximises the variance between the two classes (N. Otsu, "A
// Threshold Selection Method from Gray-Level Histograms", IEEE SMC 9(1), 1979).
float separation(const std::vector<float> &values) {
    constexpr int bins = 256;
    const float largest = *std::max_element(values.begin(), values.end());
    if (largest <= 0) {
        return 0;
    }
    std::array<double, bins> histogram{};
    for (const float v : values) {
        ++histogram[static_cast<std::size_t>(v / largest * (bins - 1))];
    }
    double sum = 0;
    for (int i = 0; i < bins; ++i) {
        sum += i * histogram[static_cast<std::size_t>(i)];
    }
    const auto count = static_cast<double>(values.size());
    double below = 0, sumBelow = 0, best = -1;
    int split = 0;
    for (int i = 0; i + 1 < bins; ++i) {
        below += histogram[static_cast<std::size_t>(i)];
        sumBelow += i * histogram[static_cast<std::size_t>(i)];
        const double above = count - below;
        if (below > 0 && above > 0) {
            const double distance = sumBelow / below - (sum - sumBelow) / above;
            const double variance = below * above * distance * distance;
            if (variance > best) {
                best = variance;
                split = i + 1;
            }
        }
    }
    return static_cast<float>(split) / (bins - 1) * largest;
}

Thresholds thresholds(const Image &grey, const Options &options) {
    if (options.low && options.high) {
        return {*options.low, *options.high};
    }
    const float high = options.high  ? *options.high
                       : options.low ? *options.low / lowToHigh
                                     : separation(magnitudes(grey, options));
    return {options.low ? *options.low : lowToHigh * high, high};
}

void run(const Options &options) {
    const Image grey = toGrey(readImage(options.photo));
    const std::int32_t filter = options.filter == "scharr" ? CannyFilterScharr : CannyFilterSobel;
    const std::int32_t norm = options.norm == "l1" ? CannyNormL1 : CannyNormL2;
    const MaskCode mask = options.size == 5 ? Mask5x5 : Mask3x3;
    const Thresholds t = thresholds(grey, options);
    std::int32_t bytes = 0;
    check(rvxiCannyBorderGetSize(grey.roi(), filter, mask, PixelType8u, &bytes), "CannyBorderGetSize");
    std::vector<std::uint8_t> buffer(static_cast<std::size_t>(bytes));
    Image edges(grey.width, grey.height, 1);
    check(rvxiCannyBorder_8u_C1R(grey.data(), grey.step(), edges.data(), edges.step(), grey.roi(), filter, mask,
                                 BorderReplicate, 0, norm, buffer.data(), t.low, t.high),
          "CannyBorder");
    writeImage(options.out, edges);
    const auto marked = std::count(edges.pixels.begin(), edges.pixels.end(), 255);
    std::printf("thresholds %g and %g, edges on %.1f %% of the pixels\n", static_cast<double>(t.low),
                static_cast<double>(t.high),
                100.0 * static_cast<double>(marked) / static_cast<double>(edges.pixels.size()));
}

} // namespace

void addEdges(CLI::App &program) {
    auto options = std::make_shared<Options>();
    CLI::App *command = program.add_subcommand("edges", "Find the edges of a picture (Canny)");
    command->add_option("PHOTO", options->photo, "Picture to search")->required();
    command->add_option("-o,--output", options->out, "Picture to write")->required();
    command->add_option("--low", options->low, "Edges continue through gradients from here (default: 0.4 of high)")
        ->check(CLI::NonNegativeNumber);
    command->add_option("--high", options->high, "Edges begin at gradients above (default: chosen from the picture)")
        ->check(CLI::NonNegativeNumber);
    command->add_option("--norm", options->norm, "Length of a gradient: l1 or l2 (Euclidean)")
        ->check(CLI::IsMember({"l1", "l2"}))
        ->capture_default_str();
    command->add_option("--filter", options->filter, "Derivative filter")
        ->check(CLI::IsMember({"sobel", "scharr"}))
        ->capture_default_str();
    command->add_option("--aperture", options->size, "Aperture of the filter (Scharr: 3)")
        ->check(CLI::IsMember({3, 5}))
        ->capture_default_str();
    command->callback([options] {
        if (options->size == 5 && options->filter == "scharr") {
            throw CLI::ValidationError("--aperture", "Scharr filters are 3x3");
        }
        if (options->low && options->high && *options->low > *options->high) {
            throw CLI::ValidationError("--low", "it is above --high");
        }
        run(*options);
    });
}

} // namespace tools
