// rvxcv distance PHOTO -o OUT: how far every pixel is from the nearest edge or dark pixel, in colours or as numbers.
#include "canny.h"
#include "colour.h"
#include "command.h"
#include "otsu.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <optional>

namespace tools {
namespace {

struct Options {
    std::string photo, out, to = "edges", metric = "exact";
    std::optional<int> threshold;
    bool raw = false;
    double scale = 1;
};

// 0 on the pixels that distances are measured to, 255 elsewhere.
Image targets(const Image &grey, const Options &options) {
    Image mask(grey.width, grey.height, 1);
    if (options.to == "edges") {
        mask = findEdges(grey, {}).image;
        std::transform(mask.pixels.begin(), mask.pixels.end(), mask.pixels.begin(),
                       [](std::uint8_t v) { return static_cast<std::uint8_t>(255 - v); });
    } else {
        const int threshold = options.threshold ? *options.threshold : separation(grey);
        std::transform(grey.pixels.begin(), grey.pixels.end(), mask.pixels.begin(),
                       [=](std::uint8_t v) { return static_cast<std::uint8_t>(v < threshold ? 0 : 255); });
    }
    if (std::find(mask.pixels.begin(), mask.pixels.end(), 0) == mask.pixels.end()) {
        throw Failure(options.photo + ": nothing to measure the distance to: the picture has no " +
                      (options.to == "edges" ? "edges" : "dark pixels"));
    }
    return mask;
}

std::vector<float> distances(const Image &mask, const std::string &metric) {
    std::vector<float> result(mask.pixels.size());
    const std::int32_t step = 4 * mask.width;
    if (metric == "exact") {
        std::int32_t bytes = 0;
        check(rvxiTrueDistanceTransformGetBufferSize_8u32f_C1R(mask.roi(), &bytes),
              "TrueDistanceTransformGetBufferSize");
        std::vector<std::uint8_t> buffer(static_cast<std::size_t>(bytes));
        check(rvxiTrueDistanceTransform_8u32f_C1R(mask.data(), mask.step(), result.data(), step, mask.roi(),
                                                  buffer.data()),
              "TrueDistanceTransform");
        return result;
    }
    const bool wide = metric == "l2-5x5";
    const NormKind norm = metric == "city" ? NormL1 : metric == "chess" ? NormInf : NormL2;
    float costs[3];
    check(rvxiGetDistanceTransformMask_32f(wide ? 5 : 3, norm, costs), "GetDistanceTransformMask");
    check((wide ? rvxiDistanceTransform_5x5_8u32f_C1R : rvxiDistanceTransform_3x3_8u32f_C1R)(
              mask.data(), mask.step(), result.data(), step, mask.roi(), costs),
          "DistanceTransform");
    return result;
}

void run(const Options &options) {
    checkPictureName(options.out);
    const Image mask = targets(toGrey(readImage(options.photo)), options);
    const std::vector<float> distance = distances(mask, options.metric);
    const auto farthest = std::max_element(distance.begin(), distance.end());
    if (options.raw) {
        std::vector<std::uint16_t> samples(distance.size());
        std::transform(distance.begin(), distance.end(), samples.begin(), [&](float v) {
            const double sample = std::nearbyint(static_cast<double>(v) * options.scale);
            return static_cast<std::uint16_t>(std::min(sample, 65535.0));
        });
        writeGrey16(options.out, mask.roi(), samples);
    } else {
        writeImage(options.out, heatPicture(mask.roi(), distance, *farthest));
    }
    const auto at = static_cast<int>(farthest - distance.begin());
    std::printf("farthest from %s: %.2f pixels at %d,%d%s\n", options.to == "edges" ? "an edge" : "a dark pixel",
                static_cast<double>(*farthest), at % mask.width, at / mask.width,
                options.raw ? "" : " (the scale's bright end; black is 0)");
}

} // namespace

void addDistance(Program &program) {
    auto options = std::make_shared<Options>();
    Command command = program.command("distance", "Show how far pixels are from the nearest edge or dark one");
    command.option("PHOTO", options->photo, "Picture to measure").required();
    command.option("-o,--output", options->out, "Picture to write").required();
    command.option("--to", options->to, "What the distance is to: Canny edges or dark pixels")
        .oneOf({"edges", "dark"})
        .showDefault();
    command
        .option("--threshold", options->threshold,
                "Grey levels below are dark (default: chosen from the picture by Otsu's method)")
        .range(0, 256);
    command.option("--metric", options->metric, "exact: Euclidean; the others count steps between neighbours")
        .oneOf({"exact", "l2-5x5", "l2-3x3", "city", "chess"})
        .showDefault();
    command.flag("--raw", options->raw, "Write distances as 16-bit numbers (.png or .pgm) instead of colours");
    command.option("--scale", options->scale, "With --raw: units per pixel of distance")
        .range(1e-3, 65535.0)
        .showDefault();
    command.action([options] {
        if (options->threshold && options->to != "dark") {
            throw UsageError("--threshold", "it is for --to dark");
        }
        run(*options);
    });
}

} // namespace tools
