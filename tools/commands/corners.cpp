// rvxcv corners PHOTO -o OUT: marks or lists the points that can be tracked best, strongest first.
#include "command.h"
#include "corner_search.h"
#include "draw.h"

#include <cstdio>
#include <memory>

namespace tools {
namespace {

struct Options {
    std::string photo, out;
    CornerSettings corners;
    bool csv = false;
};

void run(const Options &options) {
    if (options.out.empty() && !options.csv) {
        throw Failure("corners: give -o for a picture, --csv for a list, or both");
    }
    const Image photo = readImage(options.photo);
    const std::vector<Corner> corners = findCorners(toGrey(photo), options.corners);
    if (options.csv) {
        std::printf("x,y,strength\n");
        for (const Corner &corner : corners) {
            std::printf("%d,%d,%.9g\n", corner.at.x, corner.at.y, static_cast<double>(corner.strength));
        }
    }
    if (!options.out.empty()) {
        Image picture = toColour(photo);
        for (const Corner &corner : corners) {
            const Point2f at{static_cast<float>(corner.at.x), static_cast<float>(corner.at.y)};
            drawMark(picture, at, {255, 40, 40}, {255, 255, 0});
        }
        writeImage(options.out, picture);
    }
}

} // namespace

void addCorners(Program &program) {
    auto options = std::make_shared<Options>();
    Command command = program.command("corners", "Mark the corners that can be tracked best");
    command.option("PHOTO", options->photo, "Picture to search").required();
    command.option("-o,--out", options->out, "Picture to write, with the corners marked");
    command.flag("--csv", options->csv, "Print x,y,strength of every corner, strongest first");
    addCornerOptions(command, options->corners);
    command.action([options] { run(*options); });
}

} // namespace tools
