// The commands of the program. A command is one file in commands/: a function that declares its options on a
// subcommand and says what runs. main.cpp lists them.
#pragma once

#include "image.h"
#include "options.h"

namespace tools {

void addInfo(Program &program);
void addDiff(Program &program);
void addAverage(Program &program);
void addEdges(Program &program);
void addGradient(Program &program);
void addOrientation(Program &program);
void addMorph(Program &program);
void addCorners(Program &program);
void addDistance(Program &program);
void addFill(Program &program);
void addInpaint(Program &program);
void addLabel(Program &program);
void addLines(Program &program);
void addBlur(Program &program);
void addDeviation(Program &program);
void addForeground(Program &program);
void addHistory(Program &program);
void addProfile(Program &program);
void addPyramid(Program &program);
void addTrack(Program &program);
void addDetect(Program &program);
void addTrain(Program &program);
void addScene(Program &program);
void addSegment(Program &program);
void addUndistort(Program &program);
void addStats(Program &program);
void addCompare(Program &program);

} // namespace tools
