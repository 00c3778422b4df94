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
        throw CLI::ValidationError("--window", options.window + " is smaller than 8x8");
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

void addTrain(CLI::App &program) {
    auto options = std::make_shared<Options>();
    TrainingSettings &training = options->training;
    CLI::App *command = program.add_subcommand("train", "Train a cascade from pictures with and without an object");
    command
        ->add_option("POSITIVES", options->positives,
                     "Folder of pictures that show the object and no more, or that have a list of boxes beside them "
                     "(NAME.csv with columns x, y, width, height and perhaps object)")
        ->required();
    command->add_option("NEGATIVES", options->negatives, "Folder of pictures without the object")->required();
    command->add_option("-o,--out", options->out, "Cascade to write, as JSON")->required();
    command->add_option("--object", training.object, "What it is called; of lists, only such lines count");
    command->add_option("--window", options->window, "Size in which the object is learned, WxH")->capture_default_str();
    command->add_option("--stages", training.stages, "At most so many")
        ->check(CLI::Range(1, 100))
        ->capture_default_str();
    command->add_option("--stumps", training.stage.mostStumps, "At most so many in a stage")
        ->check(CLI::Range(1, 1000))
        ->capture_default_str();
    command->add_option("--hit-rate", training.stage.hitRate, "Part of the objects that each stage must keep")
        ->check(CLI::Range(0.5, 1.0))
        ->capture_default_str();
    command->add_option("--false-alarm", training.stage.falseAlarm, "Part of other windows that a stage may keep")
        ->check(CLI::Range(0.01, 0.9))
        ->capture_default_str();
    command->add_option("--features", training.shapes, "So many different features to choose from")
        ->check(CLI::Range(10, 200000))
        ->capture_default_str();
    command->add_option("--negatives", training.negatives, "Windows without the object for each stage")
        ->check(CLI::Range(100, 100000))
        ->capture_default_str();
    command->add_option("--copies", training.copies, "Windows made of each object, a little beside each other")
        ->check(CLI::Range(1, 100))
        ->capture_default_str();
    command->add_option("--contrast", training.contrast, "Least deviation of a window, in grey levels")
        ->check(CLI::Range(0.5, 128.0))
        ->capture_default_str();
    command->add_option("--hold-out", training.holdOut, "Part of the pictures to try the cascade on afterwards")
        ->check(CLI::Range(0.0, 0.9))
        ->capture_default_str();
    command->add_flag("!--no-tilted", training.tilted, "Upright features only");
    command->add_flag("!--no-mirror", training.mirror, "Do not mirror every second window: the object has a left side");
    command->add_option("--seed", training.seed, "The same seed gives the same cascade")->capture_default_str();
    command->callback([options] { run(*options); });
}

} // namespace tools
