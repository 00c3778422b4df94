#include "corner_search.h"

#include <algorithm>
#include <cmath>

namespace tools {
namespace {

constexpr const char *minEigenvalue = "min-eigenvalue", *harris = "harris", *fast = "fast";

std::vector<float> cornerMeasure(const Image &grey, const CornerSettings &settings) {
    constexpr std::int32_t aperture = 3;
    constexpr float k = 0.04f;
    std::int32_t size = 0; // that of both measures
    check(rvxiMinEigenValGetBufferSize_8u32f_C1R(grey.roi(), aperture, settings.block, &size),
          "MinEigenValGetBufferSize");
    std::vector<std::uint8_t> scratch(static_cast<std::size_t>(size));
    std::vector<float> measure(grey.pixels.size());
    if (settings.method == harris) {
        check(rvxiHarrisCorner_8u32f_C1R(grey.data(), grey.step(), measure.data(), 4 * grey.width, grey.roi(),
                                         DerivativeSobel, aperture, settings.block, k, scratch.data()),
              "HarrisCorner");
        // Its root has the unit of an eigenvalue, so that a quality means as much as with the other measure.
        std::transform(measure.begin(), measure.end(), measure.begin(),
                       [](float v) { return std::sqrt(std::max(v, 0.0f)); });
    } else {
        check(rvxiMinEigenVal_8u32f_C1R(grey.data(), grey.step(), measure.data(), 4 * grey.width, grey.roi(),
                                        MinEigenValSobel, aperture, settings.block, scratch.data()),
              "MinEigenVal");
    }
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

std::vector<Corner> measuredCorners(const Image &grey, const CornerSettings &settings) {
    const std::vector<float> measure = cornerMeasure(grey, settings);
    const float best = *std::max_element(measure.begin(), measure.end());
    return peaksOf(measure, grey.roi(), settings.quality * best);
}

std::vector<Corner> fastCorners(const Image &grey, const CornerSettings &settings) {
    FastNSpec spec;
    check(rvxiFastNInit_8u_C1R(3, settings.arc, settings.threshold, FastScore | FastNonMax, &spec), "FastNInit");
    std::int32_t size = 0, count = 0;
    check(rvxiFastNGetBufferSize_8u_C1R(grey.roi(), &size), "FastNGetBufferSize");
    std::vector<std::uint8_t> scratch(static_cast<std::size_t>(size));
    Image map(grey.width, grey.height, 1);
    check(rvxiFastN_8u_C1R(grey.data(), grey.step(), map.data(), map.step(), grey.roi(), &count, &spec, scratch.data()),
          "FastN");
    std::vector<FastCorner> found(static_cast<std::size_t>(std::max(count, 1)));
    check(rvxiFastN2DToVec_8u_C1R(map.data(), map.step(), map.roi(), found.data(),
                                  static_cast<std::int32_t>(found.size()), &count),
          "FastN2DToVec");
    const auto end = found.begin() + count;
    const auto weaker = [](const FastCorner &a, const FastCorner &b) { return a.score < b.score; };
    const float best = count > 0 ? static_cast<float>(std::max_element(found.begin(), end, weaker)->score) : 0.0f;
    std::vector<Corner> corners;
    std::for_each(found.begin(), end, [&](const FastCorner &corner) {
        const auto strength = static_cast<float>(corner.score);
        if (strength > settings.quality * best) {
            corners.push_back({{corner.x, corner.y}, strength});
        }
    });
    return corners;
}

// The strongest corners; of two that are closer than the distance the stronger one, and none that is close to a taken
// point.
std::vector<Corner> strongest(std::vector<Corner> corners, const CornerSettings &settings, std::vector<Point2f> taken) {
    std::stable_sort(corners.begin(), corners.end(),
                     [](const Corner &a, const Corner &b) { return a.strength > b.strength; });
    const double least = settings.distance * settings.distance;
    std::vector<Corner> kept;
    for (const Corner &corner : corners) {
        if (kept.size() == settings.count) {
            break;
        }
        const auto x = static_cast<float>(corner.at.x), y = static_cast<float>(corner.at.y);
        const bool alone = std::none_of(taken.begin(), taken.end(), [&](const Point2f &other) {
            const double dx = x - other.x, dy = y - other.y;
            return dx * dx + dy * dy < least;
        });
        if (alone) {
            kept.push_back(corner);
            taken.push_back({x, y});
        }
    }
    return kept;
}

} // namespace

void addCornerOptions(Command &command, CornerSettings &settings) {
    command.option("--method", settings.method, "What measures a corner")
        .oneOf({minEigenvalue, harris, fast})
        .showDefault();
    command.option("--count", settings.count, "Most corners to keep").range(1, 1000000).showDefault();
    command.option("--quality", settings.quality, "Least strength, as a part of the strongest corner's")
        .range(0.0, 1.0)
        .showDefault();
    command.option("--distance", settings.distance, "Least distance between corners, in pixels")
        .range(0.0, 1e6)
        .showDefault();
    command.option("--block", settings.block, "Side of the block around each pixel (not with fast)")
        .oneOf({3, 5})
        .showDefault();
    command.option("--threshold", settings.threshold, "fast: by how much a run of points has to differ from the pixel")
        .range(0, 254)
        .showDefault();
    command.option("--arc", settings.arc, "fast: points of such a run, of sixteen on a circle")
        .range(9, 16)
        .showDefault();
}

std::vector<Corner> findCorners(const Image &grey, const CornerSettings &settings, const std::vector<Point2f> &taken) {
    if (grey.width < 3 || grey.height < 3) { // no pixel has eight neighbours
        return {};
    }
    return strongest(settings.method == fast ? fastCorners(grey, settings) : measuredCorners(grey, settings), settings,
                     taken);
}

} // namespace tools
