// rvxcv detect CASCADE PHOTO -o OUT: draws boxes around what a trained cascade finds.
#include "command.h"
#include "detector.h"
#include "draw.h"
#include "text_file.h"

#include <cstdio>
#include <memory>

namespace tools {
namespace {

struct Options {
    std::string cascade, photo, out, csv;
    DetectorSettings search;
};

void run(const Options &options) {
    if (options.out.empty() && options.csv.empty()) {
        throw Failure("detect: give -o for a picture, --csv for a list, or both");
    }
    if (!options.out.empty()) {
        checkPictureName(options.out);
    }
    const Cascade cascade = readCascade(findCascade(options.cascade));
    const Image photo = readImage(options.photo);
    const std::vector<Detection> found = Detector(cascade).detect(toGrey(photo), options.search);
    if (!options.out.empty()) {
        Image picture = toColour(photo);
        for (const Detection &one : found) {
            drawBox(picture, one.box, 2 * markUnit(picture), {255, 220, 0});
        }
        writeImage(options.out, picture);
    }
    if (!options.csv.empty()) {
        TextFile list(options.csv);
        list.print("x,y,width,height,hits\n");
        for (const auto &[box, hits] : found) {
            list.print("%.1f,%.1f,%.1f,%.1f,%d\n", box.x, box.y, box.width, box.height, hits);
        }
        list.keep();
    }
    if (options.csv != "-") {
        std::printf("%s: %zu found\n", cascade.object.c_str(), found.size());
    }
}

} // namespace

void addDetect(Program &program) {
    auto options = std::make_shared<Options>();
    Command command = program.command("detect", "Find what a trained cascade knows, in all sizes");
    DetectorSettings &search = options->search;
    command.option("CASCADE", options->cascade, "JSON or XML file, or the name of a cascade that came along: car")
        .required();
    command.option("PHOTO", options->photo, "Picture to search").required();
    command.option("-o,--out", options->out, "Picture to write, with boxes drawn");
    command.option("--csv", options->csv, "List to write, most hits first; - is standard output");
    command.option("--scale-step", search.scaleStep, "From one size searched to the next")
        .range(1.01, 4.0)
        .showDefault();
    command.option("--hits", search.hits, "Windows that must agree before they count").range(1, 1000000).showDefault();
    command.option("--smallest", search.smallest, "Least width sought, in pixels; never below the cascade's window")
        .range(1, 1000000);
    command.option("--largest", search.largest, "Greatest width sought, in pixels").range(1, 1000000);
    command.action([options] { run(*options); });
}

} // namespace tools
