// rvxcv: runs the library on images. Exit codes: 0 done, 1 a file or its content, 2 the command line.
#include "command.h"

#include <cstdio>

namespace {

using AddCommand = void (*)(CLI::App &);
constexpr AddCommand commands[] = {
    tools::addInfo,    tools::addDiff,   tools::addAverage,   tools::addEdges,     tools::addGradient,
    tools::addCorners, tools::addMorph,  tools::addBlur,      tools::addDeviation, tools::addDistance,
    tools::addFill,    tools::addLabel,  tools::addProfile,   tools::addPyramid,   tools::addHistory,
    tools::addTrack,   tools::addScene,  tools::addUndistort, tools::addStats,     tools::addCompare,
    tools::addLines,   tools::addDetect, tools::addTrain,
};

} // namespace

int main(int argc, char **argv) {
    CLI::App program("Computer-vision primitives on images (PNG, JPEG, PNM).", "rvxcv");
    program.require_subcommand(1);
    for (const AddCommand add : commands) {
        add(program);
    }
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return program.exit(error) == 0 ? 0 : 2;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "rvxcv: %s\n", error.what());
        return 1;
    }
    return 0;
}
