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

void addDetect(CLI::App &program) {
    auto options = std::make_shared<Options>();
    CLI::App *command = program.add_subcommand("detect", "Find what a trained cascade knows, in all sizes");
    DetectorSettings &search = options->search;
    command->add_option("CASCADE", options->cascade, "JSON or XML file, or the name of a cascade that came along: car")
        ->required();
    command->add_option("PHOTO", options->photo, "Picture to search")->required();
    command->add_option("-o,--out", options->out, "Picture to write, with boxes drawn");
    command->add_option("--csv", options->csv, "List to write, most hits first; - is standard output");
    command->add_option("--scale-step", search.scaleStep, "From one size searched to the next")
        ->check(CLI::Range(1.01, 4.0))
        ->capture_default_str();
    command->add_option("--hits", search.hits, "Windows that must agree before they count")
        ->check(CLI::Range(1, 1000000))
        ->capture_default_str();
    command
        ->add_option("--smallest", search.smallest, "Least width sought, in pixels; never below the cascade's window")
        ->check(CLI::Range(1, 1000000));
    command->add_option("--largest", search.largest, "Greatest width sought, in pixels")->check(CLI::Range(1, 1000000));
    command->callback([options] { run(*options); });
}

} // namespace tools
