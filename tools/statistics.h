// Statistics of a picture under a mask, channel by channel.
#pragma once

#include "image.h"

namespace tools {

struct Extremum {
    double value = 0;
    Point2i at{-1, -1}; // nowhere, when nothing is selected
};

struct ChannelStatistics {
    double mean = 0, deviation = 0;
    Extremum least, most;
    double l1 = 0, l2 = 0; // norms; that of the largest value is `most`
};

// Of the difference of two pictures: norms, and the same relative to those of the second picture.
struct ChannelDifference {
    double inf = 0, l1 = 0, l2 = 0, relativeInf = 0, relativeL1 = 0, relativeL2 = 0;
    Extremum most;
};

// A mask of the picture's size from a file, or, without a name, everything. What is not black takes part.
Image readMask(const std::string &path, const Image &image);
std::size_t selectedPixels(const Image &mask);

// "grey", or "red", "green" and "blue".
const char *channelName(const Image &image, int channel);

// "(x, y)", or "-" for nowhere.
std::string place(Point2i at);

// Channels count from 0. Two pictures must be of one size and have as many channels.
ChannelStatistics statisticsOf(const Image &image, const Image &mask, int channel);
ChannelDifference differenceOf(const Image &a, const Image &b, const Image &mask, int channel);

} // namespace tools
