// rvxcv scene OUT: renders a frame of a synthetic street.
#include "scene.h"
#include "command.h"
#include "text_file.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace tools {
namespace {

struct Options {
    std::string out, boxes;
    int width = 640, height = 480, frame = 0, cars = 100;
    unsigned seed = 1, street = 0;
};

// What of them lies in the picture, in whole pixels.
void writeBoxes(const Options &options, const Street &street) {
    TextFile file(options.boxes);
    file.print("object,x,y,width,height\n");
    for (const ObjectBox &box : objectBoxes(street, options.frame)) {
        const auto pixel = [](double v, int size, double whole) {
            return static_cast<int>(std::lround(std::clamp(v * size / whole, 0.0, double(size))));
        };
        const int x = pixel(box.left, options.width, 640), y = pixel(box.top, options.height, 480);
        const int width = pixel(box.right, options.width, 640) - x, height = pixel(box.bottom, options.height, 480) - y;
        if (width > 0 && height > 0) {
            file.print("%s,%d,%d,%d,%d\n", box.kind.c_str(), x, y, width, height);
        }
    }
    file.keep();
}

void run(const Options &options) {
    const Street street = makeStreet(options.street, options.cars);
    writeImage(options.out, renderScene(street, options.width, options.height, options.frame, options.seed));
    if (!options.boxes.empty()) {
        writeBoxes(options, street);
    }
}

} // namespace

void addScene(Program &program) {
    auto options = std::make_shared<Options>();
    Command command = program.command("scene", "Render a synthetic street scene with moving objects");
    command.option("OUT", options->out, "Picture to write").required();
    command.option("--street", options->street, "0 is the demo's street, any other number a street of its own")
        .showDefault();
    command.option("--cars", options->cars, "No more cars than this").range(0, 100);
    command.option("--boxes", options->boxes, "List to write: kind and box of every object, as CSV");
    command.option("--frame", options->frame, "Frame number: objects move from frame to frame")
        .range(0, 10000)
        .showDefault();
    command.option("--width", options->width, "Pixels").range(1, 16384).showDefault();
    command.option("--height", options->height, "Pixels").range(1, 16384).showDefault();
    command.option("--seed", options->seed, "Seed of textures and noise").showDefault();
    command.action([options] { run(*options); });
}

} // namespace tools
