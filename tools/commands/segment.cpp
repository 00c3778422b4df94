// rvxcv segment PHOTO -o OUT: a picture divided into regions that grow from markers, by the watershed of its gradient
// or by the picture's own steps. Markers are strokes in another picture, or the minima of the smoothed gradient.
#include "colour.h"
#include "command.h"
#include "derivative.h"
#include "draw.h"
#include "smooth.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <memory>
#include <optional>

namespace tools {
namespace {

struct Options {
    std::string photo, out, markers, method = "watershed", show = "outlines";
    std::optional<float> sigma;
    int neighbours = 8;
};

// Labels from 1 on, and the colour of each; 0 where nothing is marked yet.
struct Regions {
    std::vector<std::int32_t> labels;
    std::vector<Rgb> colours;

    std::int32_t add(Rgb colour) {
        colours.push_back(colour);
        return static_cast<std::int32_t>(colours.size());
    }
};

// The length of the Sobel gradient, of three channels the largest.
Image gradientLength(const Image &image) {
    Image result(image.width, image.height, 1), channel(image.width, image.height, 1);
    const auto channels = static_cast<std::size_t>(image.channels);
    for (std::size_t c = 0; c < channels; ++c) {
        for (std::size_t i = 0; i < channel.pixels.size(); ++i) {
            channel.pixels[i] = image.pixels[channels * i + c];
        }
        const auto dx = derivative(channel, "sobel-neg-vert", 3), dy = derivative(channel, "sobel-horiz", 3);
        for (std::size_t i = 0; i < dx.size(); ++i) {
            const auto length = static_cast<std::uint8_t>(std::min(std::hypot(dx[i], dy[i]), 255.0));
            result.pixels[i] = std::max(result.pixels[i], length);
        }
    }
    return result;
}

// Every flat part that nothing around it is lower than.
Regions minima(const Image &relief) {
    Regions result{std::vector<std::int32_t>(relief.pixels.size()), {}};
    std::vector<bool> seen(relief.pixels.size());
    std::vector<std::size_t> flat;
    for (std::size_t first = 0; first < relief.pixels.size(); ++first) {
        if (seen[first]) {
            continue;
        }
        const std::uint8_t level = relief.pixels[first];
        bool lowest = true;
        flat.assign(1, first);
        seen[first] = true;
        for (std::size_t i = 0; i < flat.size(); ++i) {
            const int x = static_cast<int>(flat[i] % static_cast<std::size_t>(relief.width)),
                      y = static_cast<int>(flat[i] / static_cast<std::size_t>(relief.width));
            for (int v = std::max(y - 1, 0); v <= std::min(y + 1, relief.height - 1); ++v) {
                for (int u = std::max(x - 1, 0); u <= std::min(x + 1, relief.width - 1); ++u) {
                    const auto next = static_cast<std::size_t>(relief.pixel(u, v) - relief.data());
                    lowest = lowest && relief.pixels[next] >= level;
                    if (relief.pixels[next] == level && !seen[next]) {
                        seen[next] = true;
                        flat.push_back(next);
                    }
                }
            }
        }
        if (lowest) {
            const std::int32_t label = result.add(paletteColour(result.colours.size()));
            for (const std::size_t i : flat) {
                result.labels[i] = label;
            }
        }
    }
    return result;
}

// One label for each colour; black marks nothing.
Regions strokes(const std::string &name, const Image &image) {
    constexpr std::size_t most = 4096;
    Regions result{std::vector<std::int32_t>(image.pixels.size() / static_cast<std::size_t>(image.channels)), {}};
    std::map<int, std::int32_t> labels;
    const std::size_t last = static_cast<std::size_t>(image.channels) - 1;
    for (std::size_t i = 0; i < result.labels.size(); ++i) {
        const std::uint8_t *p = image.data() + (last + 1) * i;
        const Rgb colour{p[0], p[last / 2], p[last]};
        const int key = colour.r << 16 | colour.g << 8 | colour.b;
        if (key != 0) {
            std::int32_t &label = labels[key];
            label = label != 0 ? label : result.add(colour);
            result.labels[i] = label;
        }
        if (labels.size() > most) {
            throw Failure(name + ": more than " + std::to_string(most) +
                          " colours; markers are strokes of one colour each on black, not in a JPEG file");
        }
    }
    if (labels.empty()) {
        throw Failure(name + ": everything is black; markers are strokes in colours");
    }
    return result;
}

void grow(const Image &picture, const Image &relief, const Options &options, Regions &regions) {
    const NormKind norm = options.neighbours == 8 ? NormInf : NormL1;
    const bool floods = options.method == "watershed", colour = picture.channels == 3;
    std::int32_t bytes = 0;
    check(floods   ? rvxiSegmentWatershedGetBufferSize_8u32s_C1R(picture.roi(), &bytes)
          : colour ? rvxiSegmentGradientGetBufferSize_8u32s_C3C1R(picture.roi(), &bytes)
                   : rvxiSegmentGradientGetBufferSize_8u32s_C1R(picture.roi(), &bytes),
          "SegmentGetBufferSize");
    std::vector<std::uint8_t> buffer(static_cast<std::size_t>(bytes));
    const auto segment = floods   ? rvxiSegmentWatershed_8u32s_C1IR
                         : colour ? rvxiSegmentGradient_8u32s_C3C1IR
                                  : rvxiSegmentGradient_8u32s_C1IR;
    const Image &source = floods ? relief : picture;
    check(segment(source.data(), source.step(), regions.labels.data(), 4 * picture.width, picture.roi(), norm,
                  SegmentNoLines, buffer.data()),
          "Segment");
}

// Every region in its mean colour.
void paintMeans(Image &picture, const Regions &regions) {
    const auto channels = static_cast<std::size_t>(picture.channels);
    std::vector<double> sums(channels * regions.colours.size()), areas(regions.colours.size());
    const auto first = [&](std::size_t i) { return static_cast<std::size_t>(regions.labels[i]) - 1; };
    for (std::size_t i = 0; i < regions.labels.size(); ++i) {
        ++areas[first(i)];
        for (std::size_t c = 0; c < channels; ++c) {
            sums[channels * first(i) + c] += picture.pixels[channels * i + c];
        }
    }
    for (std::size_t i = 0; i < regions.labels.size(); ++i) {
        for (std::size_t c = 0; c < channels; ++c) {
            picture.pixels[channels * i + c] =
                static_cast<std::uint8_t>(std::lround(sums[channels * first(i) + c] / areas[first(i)]));
        }
    }
}

// The inner side of every region's border in the region's colour, as wide as the picture needs it.
void paintOutlines(Image &picture, const Regions &regions) {
    const int width = picture.width, height = picture.height;
    const int reach = static_cast<int>(std::lround(markUnit(picture))) - 1;
    const auto label = [&](int x, int y) {
        return regions
            .labels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)];
    };
    const auto paintFrom = [&](int x, int y) {
        const Rgb colour = regions.colours[static_cast<std::size_t>(label(x, y)) - 1];
        for (int v = std::max(y - reach, 0); v <= std::min(y + reach, height - 1); ++v) {
            for (int u = std::max(x - reach, 0); u <= std::min(x + reach, width - 1); ++u) {
                if (label(u, v) == label(x, y)) {
                    std::uint8_t *p = picture.pixel(u, v);
                    p[0] = colour.r;
                    p[1] = colour.g;
                    p[2] = colour.b;
                }
            }
        }
    };
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (const auto &[u, v] : {std::pair{x + 1, y}, std::pair{x, y + 1}}) {
                if (u < width && v < height && label(u, v) != label(x, y)) {
                    paintFrom(x, y);
                    paintFrom(u, v);
                }
            }
        }
    }
}

void run(const Options &options) {
    checkPictureName(options.out);
    const Image photo = readImage(options.photo);
    const float sigma = options.sigma ? *options.sigma : static_cast<float>(2 * markUnit(photo));
    const Image smooth = smoothed(photo, sigma), relief = gradientLength(smooth);
    Regions regions;
    if (options.markers.empty()) {
        regions = minima(smoothed(relief, 2 * sigma));
    } else {
        const Image markers = readImage(options.markers);
        checkSameSize(options.photo, photo, options.markers, markers);
        regions = strokes(options.markers, markers);
    }
    grow(smooth, relief, options, regions);
    Image shown = photo;
    if (options.show == "means") {
        paintMeans(shown, regions);
    } else {
        shown = toColour(photo);
        paintOutlines(shown, regions);
    }
    writeImage(options.out, shown);
    std::printf("%zu regions\n", regions.colours.size());
}

} // namespace

void addSegment(Program &program) {
    auto options = std::make_shared<Options>();
    Command command = program.command("segment", "Divide a picture into regions that grow from markers");
    command.option("PHOTO", options->photo, "Picture to divide").required();
    command.option("-o,--output", options->out, "Picture to write").required();
    command.option("--markers", options->markers,
                   "Picture with strokes on black, a colour for each region (default: minima of the gradient)");
    command
        .option("--method", options->method,
                "watershed: flood the gradient; gradient: join neighbours in the order of their difference")
        .oneOf({"watershed", "gradient"})
        .showDefault();
    command
        .option("--sigma", options->sigma,
                "Standard deviation of the smoothing before, in pixels: regions grow with it (default: by size)")
        .range(0.3, 30.0);
    command.option("--show", options->show, "outlines on the picture, or every region in its mean colour")
        .oneOf({"outlines", "means"})
        .showDefault();
    command.option("--neighbours", options->neighbours, "4 or 8").oneOf({4, 8}).showDefault();
    command.action([options] { run(*options); });
}

} // namespace tools
