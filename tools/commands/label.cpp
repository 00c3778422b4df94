// rvxcv label PHOTO -o OUT --csv LIST: every connected part of the bright (or dark) pixels in a colour of its own, and
// its area, rectangle and centroid in a list.
#include "colour.h"
#include "command.h"
#include "otsu.h"
#include "text_file.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <memory>
#include <optional>

namespace tools {
namespace {

struct Options {
    std::string photo, out, csv;
    std::optional<int> threshold;
    bool dark = false;
    int neighbours = 8;
    std::int64_t least = 1;
};

struct Part {
    std::int64_t area = 0;
    int left = std::numeric_limits<int>::max(), top = left, right = -1, bottom = -1;
    double sumX = 0, sumY = 0;
};

// Labels from 1 in the order of the parts' first pixels; 0 outside. Returns the number of parts.
std::int32_t labels(const Image &mask, bool eight, std::vector<std::int32_t> &result) {
    std::int32_t bytes = 0, count = 0;
    check(rvxiLabelMarkersGetBufferSize_8u32s_C1R(mask.roi(), &bytes), "LabelMarkersGetBufferSize");
    std::vector<std::uint8_t> buffer(static_cast<std::size_t>(bytes));
    check(rvxiLabelMarkers_8u32s_C1R(mask.data(), mask.step(), result.data(), 4 * mask.width, mask.roi(), 1,
                                     std::numeric_limits<std::int32_t>::max() - 1, eight ? NormInf : NormL1, &count,
                                     buffer.data()),
          "LabelMarkers");
    return count;
}

std::vector<Part> measure(const std::vector<std::int32_t> &label, RoiSize size, std::int32_t count) {
    std::vector<Part> parts(static_cast<std::size_t>(count));
    std::size_t i = 0;
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x, ++i) {
            if (label[i] == 0) {
                continue;
            }
            Part &part = parts[static_cast<std::size_t>(label[i]) - 1];
            ++part.area;
            part.left = std::min(part.left, x);
            part.right = std::max(part.right, x);
            part.top = std::min(part.top, y);
            part.bottom = y;
            part.sumX += x;
            part.sumY += y;
        }
    }
    return parts;
}

void writeList(const std::string &path, const std::vector<Part> &parts, std::int64_t least) {
    TextFile file(path);
    file.print("label,area,x,y,width,height,centroid_x,centroid_y\n");
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const Part &part = parts[i];
        if (part.area >= least) {
            const auto area = static_cast<double>(part.area);
            file.print("%zu,%lld,%d,%d,%d,%d,%.3f,%.3f\n", i + 1, static_cast<long long>(part.area), part.left,
                       part.top, part.right - part.left + 1, part.bottom - part.top + 1, part.sumX / area,
                       part.sumY / area);
        }
    }
    file.keep();
}

void run(const Options &options) {
    if (options.out.empty() && options.csv.empty()) {
        throw Failure("label: give -o for a picture, --csv for a list, or both");
    }
    if (!options.out.empty()) {
        checkPictureName(options.out);
    }
    const Image grey = toGrey(readImage(options.photo));
    const int threshold = options.threshold ? *options.threshold : separation(grey);
    if (!options.threshold && threshold == 0) {
        throw Failure(options.photo + ": one grey level only, nothing to separate; --threshold decides by itself");
    }
    Image mask(grey.width, grey.height, 1);
    std::transform(grey.pixels.begin(), grey.pixels.end(), mask.pixels.begin(), [&](std::uint8_t v) {
        return static_cast<std::uint8_t>((v >= threshold) != options.dark ? 255 : 0);
    });
    std::vector<std::int32_t> label(grey.pixels.size());
    const std::vector<Part> parts = measure(label, grey.roi(), labels(mask, options.neighbours == 8, label));
    if (!options.csv.empty()) {
        writeList(options.csv, parts, options.least);
    }
    if (!options.out.empty()) {
        Image picture(grey.width, grey.height, 3);
        for (std::size_t i = 0; i < label.size(); ++i) {
            const auto number = static_cast<std::size_t>(label[i]);
            if (number != 0 && parts[number - 1].area >= options.least) {
                const Rgb colour = paletteColour(number - 1);
                picture.pixels[3 * i] = colour.r;
                picture.pixels[3 * i + 1] = colour.g;
                picture.pixels[3 * i + 2] = colour.b;
            }
        }
        writeImage(options.out, picture);
    }
    const auto shown =
        std::count_if(parts.begin(), parts.end(), [&](const Part &part) { return part.area >= options.least; });
    std::printf("threshold %d, %lld parts\n", threshold, static_cast<long long>(shown));
}

} // namespace

void addLabel(Program &program) {
    auto options = std::make_shared<Options>();
    Command command = program.command("label", "Tell the connected parts of a picture apart");
    command.option("PHOTO", options->photo, "Picture to take apart").required();
    command.option("-o,--output", options->out, "Picture to write, every part in a colour of its own");
    command.option("--csv", options->csv, "List to write: label, area, rectangle and centroid of every part");
    command
        .option("--threshold", options->threshold,
                "Grey levels from here on are bright (default: chosen from the picture by Otsu's method)")
        .range(0, 256);
    command.flag("--dark", options->dark, "Parts are what is dark, not what is bright");
    command.option("--neighbours", options->neighbours, "4, or 8: parts that touch by a corner are one")
        .oneOf({4, 8})
        .showDefault();
    command.option("--min-area", options->least, "Leave out smaller parts").positive().showDefault();
    command.action([options] { run(*options); });
}

} // namespace tools
