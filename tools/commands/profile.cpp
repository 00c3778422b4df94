// rvxcv profile PHOTO --from X,Y --to X,Y: the pixels on a line, as a list and as a plot.
#include "command.h"
#include "parse.h"
#include "plot.h"
#include "text_file.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace tools {
namespace {

struct Options {
    std::string photo, out, csv, from, to;
};

std::vector<std::uint8_t> sample(const Image &image, Point2i from, Point2i to) {
    const int samples = std::max(std::abs(to.x - from.x), std::abs(to.y - from.y)) + 1;
    std::vector<std::uint8_t> line(static_cast<std::size_t>(samples * image.channels));
    check((image.channels == 3 ? rvxiSampleLine_8u_C3R : rvxiSampleLine_8u_C1R)(image.data(), image.step(), image.roi(),
                                                                                line.data(), from, to),
          "SampleLine");
    return line;
}

// Where the sample with this number lies: one step along the longer side each, and of the shorter side as much as is
// due, halves rounded down.
Point2i position(Point2i from, Point2i to, std::int64_t number) {
    const std::int64_t dx = std::int64_t{to.x} - from.x, dy = std::int64_t{to.y} - from.y;
    const std::int64_t major = std::max(std::abs(dx), std::abs(dy)), minor = std::min(std::abs(dx), std::abs(dy));
    const std::int64_t across = major == 0 ? 0 : (2 * number * minor + major - 1) / (2 * major);
    const bool alongX = std::abs(dx) > std::abs(dy);
    const std::int64_t x = alongX ? number : across, y = alongX ? across : number;
    return {static_cast<std::int32_t>(from.x + (dx < 0 ? -x : x)),
            static_cast<std::int32_t>(from.y + (dy < 0 ? -y : y))};
}

void writeList(const std::string &path, const std::vector<std::uint8_t> &line, int channels, Point2i from, Point2i to) {
    TextFile file(path);
    file.print(channels == 3 ? "x,y,red,green,blue\n" : "x,y,grey\n");
    for (std::size_t i = 0; i < line.size(); i += static_cast<std::size_t>(channels)) {
        const Point2i at = position(from, to, static_cast<std::int64_t>(i) / channels);
        file.print("%d,%d,%d", at.x, at.y, line[i]);
        if (channels == 3) {
            file.print(",%d,%d", line[i + 1], line[i + 2]);
        }
        file.print("\n");
    }
    file.keep();
}

void run(const Options &options) {
    const Point2i from = parsePoint("--from", options.from), to = parsePoint("--to", options.to);
    if (!options.out.empty() && !options.out.ends_with(".svg")) {
        throw Failure(options.out + ": the plot is an SVG: end the name in .svg");
    }
    const Image image = readImage(options.photo);
    checkInside("--from", from, image);
    checkInside("--to", to, image);
    const std::vector<std::uint8_t> line = sample(image, from, to);
    if (!options.csv.empty() || options.out.empty()) {
        writeList(options.csv.empty() ? "-" : options.csv, line, image.channels, from, to);
    }
    if (options.out.empty()) {
        return;
    }
    std::vector<Curve> curves{{"grey", {40, 40, 40}, {}}};
    if (image.channels == 3) {
        curves = {{"red", {214, 39, 40}, {}}, {"green", {30, 140, 50}, {}}, {"blue", {31, 100, 200}, {}}};
    }
    for (std::size_t i = 0; i < line.size(); ++i) {
        curves[i % curves.size()].values.push_back(line[i]);
    }
    writePlot(options.out, options.photo + " from " + options.from + " to " + options.to,
              std::hypot(to.x - from.x, to.y - from.y), curves);
}

} // namespace

void addProfile(Program &program) {
    auto options = std::make_shared<Options>();
    Command command = program.command("profile", "List or plot the pixels on a line");
    command.option("PHOTO", options->photo, "Picture to read").required();
    command.option("--from", options->from, "X,Y of the first pixel").required();
    command.option("--to", options->to, "X,Y of the last pixel").required();
    command.option("--csv", options->csv, "List to write, - is standard output (the default without a plot)");
    command.option("-o,--output", options->out, "Plot to write (.svg)");
    command.action([options] { run(*options); });
}

} // namespace tools
