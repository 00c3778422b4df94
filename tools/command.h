// The commands of the program. A command is one file in commands/: a function that declares its options on a
// subcommand and says what runs. main.cpp lists them.
#pragma once

#include "image.h"

#include <CLI/CLI.hpp>

namespace tools {

void addInfo(CLI::App &program);
void addDiff(CLI::App &program);
void addAverage(CLI::App &program);
void addEdges(CLI::App &program);
void addGradient(CLI::App &program);
void addMorph(CLI::App &program);
void addCorners(CLI::App &program);
void addDistance(CLI::App &program);
void addFill(CLI::App &program);
void addLabel(CLI::App &program);
void addLines(CLI::App &program);
void addBlur(CLI::App &program);
void addDeviation(CLI::App &program);
void addHistory(CLI::App &program);
void addProfile(CLI::App &program);
void addPyramid(CLI::App &program);
void addTrack(CLI::App &program);
void addDetect(CLI::App &program);
void addTrain(CLI::App &program);
void addScene(CLI::App &program);
void addUndistort(CLI::App &program);
void addStats(CLI::App &program);
void addCompare(CLI::App &program);

} // namespace tools
