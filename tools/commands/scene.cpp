// rvxcv scene OUT: renders a frame of the demo's synthetic street.
#include "scene.h"
#include "command.h"

#include <memory>

namespace tools {
namespace {

struct Options {
    std::string out;
    int width = 640, height = 480, frame = 0;
    unsigned seed = 1;
};

} // namespace

void addScene(CLI::App &program) {
    auto options = std::make_shared<Options>();
    CLI::App *command = program.add_subcommand("scene", "Render a synthetic street scene with moving objects");
    command->add_option("OUT", options->out, "Picture to write")->required();
    command->add_option("--frame", options->frame, "Frame number: objects move from frame to frame")
        ->check(CLI::Range(0, 10000))
        ->capture_default_str();
    command->add_option("--width", options->width, "Pixels")->check(CLI::Range(1, 16384))->capture_default_str();
    command->add_option("--height", options->height, "Pixels")->check(CLI::Range(1, 16384))->capture_default_str();
    command->add_option("--seed", options->seed, "Seed of textures and noise")->capture_default_str();
    command->callback([options] {
        writeImage(options->out, renderScene(options->width, options->height, options->frame, options->seed));
    });
}

} // namespace tools
