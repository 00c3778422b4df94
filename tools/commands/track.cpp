// rvxcv track FRAMES... -o OUT --csv LIST: corners of the first frame followed through all frames; lost ones are
// replaced.
#include "command.h"
#include "draw.h"
#include "film.h"
#include "text_file.h"
#include "tracker.h"

#include <cmath>
#include <cstdio>
#include <deque>
#include <map>
#include <memory>
#include <optional>

namespace tools {
namespace {

struct Options {
    std::vector<std::string> frames;
    std::string out, csv;
    TrackSettings tracking;
    std::size_t trail = 30;
};

// The points of the last frames, for drawing.
using Trail = std::deque<std::vector<Track>>;

// Paths in colours on a darkened copy of the frame; points that are still followed end in a dot.
Image drawPaths(const Image &frame, const Trail &trail) {
    Image picture = toColour(frame);
    for (std::uint8_t &v : picture.pixels) {
        v = static_cast<std::uint8_t>(v * 2 / 3);
    }
    const double unit = markUnit(picture);
    std::map<std::size_t, Point2f> last;
    for (const std::vector<Track> &points : trail) {
        for (const Track &point : points) {
            const auto before = last.find(point.number);
            if (before != last.end()) {
                drawLine(picture, before->second, point.at, 2 * unit, paletteColour(point.number));
            }
            last[point.number] = point.at;
        }
    }
    for (const Track &point : trail.back()) {
        drawLine(picture, point.at, point.at, 5.5 * unit, {0, 0, 0});
        drawLine(picture, point.at, point.at, 4 * unit, paletteColour(point.number));
    }
    return picture;
}

void run(const Options &options) {
    if (options.out.empty() && options.csv.empty()) {
        throw Failure("track: give -o for a picture, --csv for a list, or both");
    }
    if (!options.out.empty()) {
        checkPictureName(options.out);
    }
    Film film(options.frames);
    std::optional<TextFile> list;
    if (!options.csv.empty()) {
        list.emplace(options.csv);
        list->print("track,frame,x,y,error\n");
    }
    Tracker tracker(options.tracking);
    Trail trail;
    Progress progress("points");
    do {
        tracker.add(film.grey());
        for (const Track &point : tracker.tracks()) {
            if (list) {
                list->print("%zu,%d,%.3f,%.3f,%.3f\n", point.number, film.number(), static_cast<double>(point.at.x),
                            static_cast<double>(point.at.y), static_cast<double>(point.error));
            }
        }
        trail.push_back(tracker.tracks());
        if (trail.size() > options.trail + 1) {
            trail.pop_front();
        }
        progress.show(film.number(), tracker.tracks().size());
    } while (film.next());
    if (list) {
        list->keep();
    }
    if (!options.out.empty()) {
        writeImage(options.out, drawPaths(film.picture(), trail));
    }
    std::printf("%d frames, %zu points in the last one, %zu in all\n", film.number() + 1, tracker.tracks().size(),
                tracker.count());
}

} // namespace

void addTrack(Program &program) {
    auto options = std::make_shared<Options>();
    TrackSettings &tracking = options->tracking;
    Command command = program.command("track", "Follow corners through the frames of a film");
    addFrames(command, options->frames);
    command.option("-o,--output", options->out, "Picture to write: the last frame with the points' paths");
    command.option("--csv", options->csv, "List to write: track, frame, x, y, error; - is standard output");
    addCornerOptions(command, tracking.corners);
    command.option("--window", tracking.window, "Side of the window around a point, in pixels")
        .range(3, 255)
        .showDefault();
    command.option("--levels", tracking.levels, "Levels of the pyramids: each doubles the motion that is found")
        .range(1, 20)
        .showDefault();
    command.option("--max-error", tracking.error, "A point is lost when its window differs by more grey levels")
        .range(0.0, 255.0)
        .showDefault();
    command.option("--trail", options->trail, "Draw the paths of so many last frames").range(0, 100000).showDefault();
    command.action([options] { run(*options); });
}

} // namespace tools
