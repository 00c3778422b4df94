// rvxcv: runs the library on images.
#include "command.h"

namespace {

using AddCommand = void (*)(tools::Program &);
constexpr AddCommand commands[] = {
    tools::addInfo,    tools::addDiff,    tools::addAverage,   tools::addEdges,      tools::addGradient,
    tools::addCorners, tools::addMorph,   tools::addBlur,      tools::addDeviation,  tools::addDistance,
    tools::addFill,    tools::addLabel,   tools::addProfile,   tools::addPyramid,    tools::addHistory,
    tools::addTrack,   tools::addScene,   tools::addUndistort, tools::addStats,      tools::addCompare,
    tools::addLines,   tools::addDetect,  tools::addTrain,     tools::addForeground, tools::addOrientation,
    tools::addInpaint, tools::addSegment,
};

} // namespace

int main(int argc, char **argv) {
    tools::Program program("rvxcv", "Computer-vision primitives on images (PNG, JPEG, PNM).");
    for (const AddCommand add : commands) {
        add(program);
    }
    return program.run(argc, argv);
}
