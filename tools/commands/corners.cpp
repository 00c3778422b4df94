// rvxcv corners PHOTO -o OUT: the points that can be tracked best, strongest first (Shi and Tomasi): the peaks of the
// corner measure, as long as they are strong enough and far enough from every stronger one.
#include "command.h"
#include "draw.h"

#include <algorithm>
#include <cstdio>
#include <memory>

namespace tools {
namespace {

struct Options {
    std::string photo, out;
    std::size_t count = 200;
    float quality = 0.01f;
    double distance = 10;
    int block = 3;
    bool csv = false;
};

struct Corner {
    Point2i at;
    float strength;
};

std::vector<float> cornerMeasure(const Image &grey, int block) {
    constexpr std::int32_t aperture = 3;
    std::int32_t size = 0;
    check(rvxiMinEigenValGetBufferSize_8u32f_C1R(grey.roi(), aperture, block, &size), "MinEigenValGetBufferSize");
    std::vector<std::uint8_t> scratch(static_cast<std::size_t>(size));
    std::vector<float> measure(grey.pixels.size());
    check(rvxiMinEigenVal_8u32f_C1R(grey.data(), grey.step(), measure.data(), 4 * grey.width, grey.roi(),
                                    MinEigenValSobel, aperture, block, scratch.data()),
          "MinEigenVal");
    return measure;
}

std::vector<Corner> peaksOf(const std::vector<float> &measure, RoiSize roi, float threshold) {
    std::int32_t size = 0, count = 0;
    check(rvxiFindPeaks3x3GetBufferSize_32f_C1R(roi.width, &size), "FindPeaks3x3GetBufferSize");
    std::vector<std::uint8_t> scratch(static_cast<std::size_t>(size));
    std::vector<Point2i> peaks(measure.size());
    check(rvxiFindPeaks3x3_32f_C1R(measure.data(), 4 * roi.width, roi, threshold, peaks.data(),
                                   static_cast<std::int32_t>(peaks.size()), &count, PeakSquare, 1, scratch.data()),
          "FindPeaks3x3");
    std::vector<Corner> corners;
    for (std::int32_t i = 0; i < count; ++i) {
        const Point2i p = peaks[static_cast<std::size_t>(i)];
        const float strength = measure[static_cast<std::size_t>(p.y) * static_cast<std::size_t>(roi.width) +
                                       static_cast<std::size_t>(p.x)];
        if (strength > 0) { // on an edge, rounding may leave a negative smallest value
            corners.push_back({p, strength});
        }
    }
    return corners;
}

// The strongest corners; of two that are closer than the distance the stronger one.
std::vector<Corner> strongest(std::vector<Corner> corners, std::size_t count, double distance) {
    std::stable_sort(corners.begin(), corners.end(),
                     [](const Corner &a, const Corner &b) { return a.strength > b.strength; });
    std::vector<Corner> kept;
    for (const Corner &corner : corners) {
        if (kept.size() == count) {
            break;
        }
        const bool alone = std::none_of(kept.begin(), kept.end(), [&](const Corner &other) {
            const double dx = corner.at.x - other.at.x, dy = corner.at.y - other.at.y;
            return dx * dx + dy * dy < distance * distance;
        });
        if (alone) {
            kept.push_back(corner);
        }
    }
    return kept;
}

void run(const Options &options) {
    if (options.out.empty() && !options.csv) {
        throw Failure("corners: give -o for a picture, --csv for a list, or both");
    }
    const Image photo = readImage(options.photo), grey = toGrey(photo);
    std::vector<Corner> corners;
    if (grey.width >= 3 && grey.height >= 3) { // smaller pictures have no pixel with eight neighbours
        const std::vector<float> measure = cornerMeasure(grey, options.block);
        const float best = *std::max_element(measure.begin(), measure.end());
        corners = strongest(peaksOf(measure, grey.roi(), options.quality * best), options.count, options.distance);
    }
    if (options.csv) {
        std::printf("x,y,strength\n");
        for (const Corner &corner : corners) {
            std::printf("%d,%d,%.9g\n", corner.at.x, corner.at.y, static_cast<double>(corner.strength));
        }
    }
    if (!options.out.empty()) {
        Image picture = toColour(photo);
        for (const Corner &corner : corners) {
            drawCircle(picture, corner.at.x, corner.at.y, 4, {255, 40, 40});
            drawPoint(picture, corner.at.x, corner.at.y, {255, 255, 0});
        }
        writeImage(options.out, picture);
    }
}

} // namespace

void addCorners(CLI::App &program) {
    auto options = std::make_shared<Options>();
    CLI::App *command = program.add_subcommand("corners", "Mark the corners that can be tracked best");
    command->add_option("PHOTO", options->photo, "Picture to search")->required();
    command->add_option("-o,--out", options->out, "Picture to write, with the corners marked");
    command->add_flag("--csv", options->csv, "Print x,y,strength of every corner, strongest first");
    command->add_option("--count", options->count, "Most corners to keep")
        ->check(CLI::Range(1, 1000000))
        ->capture_default_str();
    command->add_option("--quality", options->quality, "Least strength, as a part of the strongest corner's")
        ->check(CLI::Range(0.0f, 1.0f))
        ->capture_default_str();
    command->add_option("--distance", options->distance, "Least distance between corners, in pixels")
        ->check(CLI::Range(0.0, 1e6))
        ->capture_default_str();
    command->add_option("--block", options->block, "Side of the block around each pixel")
        ->check(CLI::IsMember({3, 5}))
        ->capture_default_str();
    command->callback([options] { run(*options); });
}

} // namespace tools
