// rvxcv train POSITIVES NEGATIVES -o OUT: trains a cascade that `rvxcv detect` finds things with.
#include "command.h"
#include "parse.h"
#include "training.h"

#include <cstdio>
#include <filesystem>
#include <memory>

namespace tools {
namespace {

struct Options {
    std::string positives, negatives, out, window = "32x16";
    TrainingSettings training;
};

void run(Options &options) {
    TrainingSettings &training = options.training;
    training.window = parseSize("--window", options.window, 256);
    if (training.window.width < 8 || training.window.height < 8) {
        throw UsageError("--window", options.window + " is smaller than 8x8");
    }
    const std::filesystem::path folder = std::filesystem::path(options.out).parent_path();
    if (std::error_code error; !folder.empty() && !std::filesystem::is_directory(folder, error)) {
        throw Failure(options.out + ": no such folder"); // before minutes of training
    }
    TrainingReport report;
    const Cascade cascade = trainCascade(
        readPictures(options.positives, training.object), readPictures(options.negatives, training.object), training,
        [](const std::string &line) { std::fprintf(stderr, "%s\n", line.c_str()); }, report);
    writeCascade(options.out, cascade);
    std::printf("%s: %zu stages, %zu stumps\n", options.out.c_str(), cascade.stages.size(), cascade.stumpCount());
    if (report.samples > 0) {
        std::printf("held out: %d of %d objects pass (%.1f %%)\n", report.passed, report.samples,
                    100.0 * report.passed / report.samples);
    }
    if (report.score.objects > 0) {
        std::printf("held out: %d of %d objects found (%.1f %%)\n", report.score.found, report.score.objects,
                    100.0 * report.score.found / report.score.objects);
    }
    if (report.pictures > 0) {
        std::printf("held out: %d false boxes in %d pictures\n", report.score.falseBoxes, report.pictures);
    }
}

} // namespace

void addTrain(Program &program) {
    auto options = std::make_shared<Options>();
    TrainingSettings &training = options->training;
    Command command = program.command("train", "Train a cascade from pictures with and without an object");
    command
        .option("POSITIVES", options->positives,
                "Folder of pictures that show the object and no more, or that have a list of boxes beside them "
                "(NAME.csv with columns x, y, width, height and perhaps object)")
        .required();
    command.option("NEGATIVES", options->negatives, "Folder of pictures without the object").required();
    command.option("-o,--out", options->out, "Cascade to write, as JSON").required();
    command.option("--object", training.object, "What it is called; of lists, only such lines count");
    command.option("--window", options->window, "Size in which the object is learned, WxH").showDefault();
    command.option("--stages", training.stages, "At most so many").range(1, 100).showDefault();
    command.option("--stumps", training.stage.mostStumps, "At most so many in a stage").range(1, 1000).showDefault();
    command.option("--hit-rate", training.stage.hitRate, "Part of the objects that each stage must keep")
        .range(0.5, 1.0)
        .showDefault();
    command.option("--false-alarm", training.stage.falseAlarm, "Part of other windows that a stage may keep")
        .range(0.01, 0.9)
        .showDefault();
    command.option("--features", training.shapes, "So many different features to choose from")
        .range(10, 200000)
        .showDefault();
    command.option("--negatives", training.negatives, "Windows without the object for each stage")
        .range(100, 100000)
        .showDefault();
    command.option("--copies", training.copies, "Windows made of each object, a little beside each other")
        .range(1, 100)
        .showDefault();
    command.option("--contrast", training.contrast, "Least deviation of a window, in grey levels")
        .range(0.5, 128.0)
        .showDefault();
    command.option("--hold-out", training.holdOut, "Part of the pictures to try the cascade on afterwards")
        .range(0.0, 0.9)
        .showDefault();
    command.flag("!--no-tilted", training.tilted, "Upright features only");
    command.flag("!--no-mirror", training.mirror, "Do not mirror every second window: the object has a left side");
    command.option("--seed", training.seed, "The same seed gives the same cascade").showDefault();
    command.action([options] { run(*options); });
}

} // namespace tools
