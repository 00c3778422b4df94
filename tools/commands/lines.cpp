// rvxcv lines PHOTO -o OUT --csv LIST: straight lines through the edges of a picture, or segments of them, drawn on the
// picture and listed.
#include "canny.h"
#include "command.h"
#include "draw.h"
#include "smooth.h"
#include "text_file.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <memory>
#include <optional>

namespace tools {
namespace {

constexpr double degree = 3.14159265358979323846 / 180;

struct Options {
    std::string photo, out, csv;
    EdgeSettings edges;
    bool binary = false, segments = false;
    float rhoStep = 1, thetaStep = 1; // pixels, degrees
    std::vector<float> rho, theta;    // lowest and highest; empty: all
    std::optional<int> votes, count, length, gap;
    std::optional<double> apart;
    int seed = 1;
    std::optional<float> sigma;
};

// A line of the search with what the picture shows of it, or a segment (rho and theta are nothing).
struct Line {
    Point2f from, to;
    float rho = 0, theta = 0;
};

HoughResolution resolution(const Options &options) {
    return {options.rhoStep, static_cast<float>(options.thetaStep * degree)};
}

// The part of a line inside the picture. A line that only passes by a corner shows a point.
Line clipped(HoughLine line, RoiSize size) {
    const double c = std::cos(line.theta), s = std::sin(line.theta), x = line.rho * c, y = line.rho * s;
    double low = -std::numeric_limits<double>::infinity(), high = -low;
    const auto clip = [&](double start, double slope, double end) {
        if (std::abs(slope) > 1e-12) {
            low = std::max(low, std::min(-start / slope, (end - start) / slope));
            high = std::min(high, std::max(-start / slope, (end - start) / slope));
        }
    };
    clip(x, -s, size.width - 1);
    clip(y, c, size.height - 1);
    const auto at = [&](double t) { return Point2f{static_cast<float>(x - t * s), static_cast<float>(y + t * c)}; };
    return {at(low), at(std::max(low, high)), line.rho, line.theta};
}

double distance(Point2f p, const Line &line) {
    return std::abs(p.x * std::cos(line.theta) + p.y * std::sin(line.theta) - line.rho);
}

// The strongest lines of the picture that do not stay close to a stronger one.
std::vector<Line> findLines(const Image &marks, const Options &options, int votes, double apart, std::size_t count) {
    constexpr std::int32_t capacity = 20000;
    const HoughResolution step = resolution(options);
    std::int32_t bytes = 0, found = 0;
    check(rvxiHoughLineGetSize_8u_C1R(marks.roi(), step, capacity, &bytes), "HoughLineGetSize");
    std::vector<std::uint8_t> buffer(static_cast<std::size_t>(bytes));
    std::vector<HoughLine> lines(capacity);
    constexpr float most = std::numeric_limits<float>::max();
    HoughLine region[2] = {{-most, -most}, {most, most}};
    for (std::size_t i = 0; i < 2; ++i) {
        region[i].rho = options.rho.empty() ? region[i].rho : options.rho[i];
        region[i].theta = options.theta.empty() ? region[i].theta
                                                : static_cast<float>(static_cast<double>(options.theta[i]) * degree);
    }
    const StatusCode status = rvxiHoughLine_Region_8u32f_C1R(
        marks.data(), marks.step(), marks.roi(), votes, lines.data(), capacity, &found, buffer.data(), step, region);
    if (status != StatusEmptyResult && status != StatusResultTruncated) {
        check(status, "HoughLine_Region");
    }
    std::vector<Line> kept;
    for (std::size_t i = 0; i < static_cast<std::size_t>(found) && kept.size() < count; ++i) {
        const Line line = clipped(lines[i], marks.roi());
        const bool close = std::any_of(kept.begin(), kept.end(), [&](const Line &stronger) {
            return distance(line.from, stronger) < apart && distance(line.to, stronger) < apart;
        });
        if (!close) {
            kept.push_back(line);
        }
    }
    return kept;
}

std::vector<Line> findSegments(const Image &marks, const Options &options, int votes, int length, int gap,
                               std::size_t count) {
    std::int32_t specBytes = 0, bytes = 0, found = 0;
    check(rvxiHoughProbLineGetSize_8u_C1R(marks.roi(), resolution(options), &specBytes, &bytes),
          "HoughProbLineGetSize");
    std::vector<std::uint8_t> record(static_cast<std::size_t>(specBytes)), buffer(static_cast<std::size_t>(bytes));
    auto *spec = reinterpret_cast<HoughProbLineSpec *>(record.data());
    check(rvxiHoughProbLineInit_8u32f_C1R(marks.roi(), options.seed, spec, resolution(options)), "HoughProbLineInit");
    std::vector<Point2i> ends(2 * count);
    const StatusCode status =
        rvxiHoughProbLine_8u32f_C1R(marks.data(), marks.step(), marks.roi(), votes, length, gap, ends.data(),
                                    static_cast<std::int32_t>(count), &found, buffer.data(), spec);
    if (status != StatusResultTruncated) {
        check(status, "HoughProbLine");
    }
    std::vector<Line> segments;
    for (std::size_t i = 0; i < static_cast<std::size_t>(found); ++i) {
        const auto point = [](Point2i p) { return Point2f{static_cast<float>(p.x), static_cast<float>(p.y)}; };
        segments.push_back({point(ends[2 * i]), point(ends[2 * i + 1])});
    }
    return segments;
}

void writeList(const Options &options, const std::vector<Line> &lines) {
    TextFile file(options.csv);
    file.print(options.segments ? "x0,y0,x1,y1,length\n" : "rho,theta,x0,y0,x1,y1\n");
    for (const Line &line : lines) {
        const double x0 = line.from.x, y0 = line.from.y, x1 = line.to.x, y1 = line.to.y;
        if (options.segments) {
            file.print("%g,%g,%g,%g,%.2f\n", x0, y0, x1, y1, std::hypot(x1 - x0, y1 - y0));
        } else {
            file.print("%.9g,%.7g,%.2f,%.2f,%.2f,%.2f\n", static_cast<double>(line.rho), line.theta / degree, x0, y0,
                       x1, y1);
        }
    }
    file.keep();
}

// Bright on a dark seam, so that lines are seen on every picture; segments in colours that tell neighbours apart.
void draw(const Image &photo, const Options &options, const std::vector<Line> &lines) {
    Image picture = toColour(photo);
    const double unit = markUnit(picture);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const Rgb colour = options.segments ? paletteColour(i) : Rgb{255, 60, 40};
        drawLine(picture, lines[i].from, lines[i].to, 3.2 * unit, {0, 0, 0});
        drawLine(picture, lines[i].from, lines[i].to, 1.6 * unit, colour);
    }
    writeImage(options.out, picture);
}

// Fine texture has edges of all directions, in which lines are found that nobody sees.
Image edges(const Image &photo, const Options &options) {
    const Image grey = toGrey(photo);
    const float sigma = options.sigma.value_or(static_cast<float>(0.7 * markUnit(photo)));
    return findEdges(sigma > 0 ? smoothed(grey, sigma) : grey, options.edges).image;
}

void run(const Options &options) {
    if (options.out.empty() && options.csv.empty()) {
        throw Failure("lines: give -o for a picture, --csv for a list, or both");
    }
    if (!options.out.empty()) {
        checkPictureName(options.out);
    }
    const Image photo = readImage(options.photo);
    const Image marks = options.binary ? toGrey(photo) : edges(photo, options);
    // What is left open grows with the picture.
    const int side = std::min(marks.width, marks.height);
    std::vector<Line> lines;
    if (options.segments) {
        lines = findSegments(marks, options, options.votes.value_or(std::max(10, side / 16)),
                             options.length.value_or(std::max(10, side / 16)),
                             options.gap.value_or(std::max(2, side / 200)),
                             static_cast<std::size_t>(options.count.value_or(2000)));
    } else {
        lines = findLines(marks, options, options.votes.value_or(std::max(10, side / 8)),
                          options.apart.value_or(side / 24.0), static_cast<std::size_t>(options.count.value_or(20)));
    }
    if (!options.csv.empty()) {
        writeList(options, lines);
    }
    if (!options.out.empty()) {
        draw(photo, options, lines);
    }
    if (options.csv != "-") {
        std::printf("%zu %s\n", lines.size(), options.segments ? "segments" : "lines");
    }
}

void checkRange(const char *option, const std::vector<float> &range) {
    if (!range.empty() && !(range[0] <= range[1])) {
        throw UsageError(option, "the first number is above the second one");
    }
}

} // namespace

void addLines(Program &program) {
    auto options = std::make_shared<Options>();
    Command command = program.command("lines", "Find straight lines (Hough)");
    command.option("PHOTO", options->photo, "Picture to search").required();
    command.option("-o,--output", options->out, "Picture to write, with the lines drawn");
    command.option("--csv", options->csv, "List to write (- is standard output), the strongest line first");
    command.flag("--segments", options->segments, "Segments with their ends instead of whole lines");
    command.flag("--binary", options->binary, "Search the pixels that are not black, not the picture's edges");
    command.option("--sigma", options->sigma, "Smooth the picture first (default: from its size; 0: not at all)")
        .range(0.0, 100.0);
    command.option("--low", options->edges.low, "Edges continue through gradients from here").notNegative();
    command.option("--high", options->edges.high, "Edges begin at gradients above (default: from the picture)")
        .notNegative();
    command.option("--votes", options->votes, "Pixels that a line needs (default: from the picture's size)").positive();
    command.option("--count", options->count, "At most so many (default: 20 lines, 2000 segments)").range(1, 1000000);
    command.option("--rho-step", options->rhoStep, "Resolution of a line's distance from the corner, in pixels")
        .positive()
        .showDefault();
    command.option("--theta-step", options->thetaStep, "Resolution of the direction of its normal, in degrees")
        .positive()
        .showDefault();
    command.option("--rho", options->rho, "Lines with these distances only: LOW,HIGH in pixels")
        .pair()
        .excludes("--segments");
    command.option("--theta", options->theta, "Lines with these directions only: LOW,HIGH in degrees, 0..180")
        .pair()
        .excludes("--segments");
    command.option("--apart", options->apart, "Leave out lines that stay closer than this to a stronger one")
        .notNegative()
        .excludes("--segments");
    command.option("--length", options->length, "Segments are at least so long, in pixels")
        .positive()
        .needs("--segments");
    command.option("--gap", options->gap, "They bridge so many missing pixels").notNegative().needs("--segments");
    command.option("--seed", options->seed, "Of the random order of the search").needs("--segments");
    command.action([options] {
        if (options->edges.low && options->edges.high && *options->edges.low > *options->edges.high) {
            throw UsageError("--low", "it is above --high");
        }
        checkRange("--rho", options->rho);
        checkRange("--theta", options->theta);
        run(*options);
    });
}

} // namespace tools
