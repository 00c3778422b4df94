// A plot of values along a line, as SVG.
#pragma once

#include "colour.h"

namespace tools {

struct Curve {
    std::string name;
    Rgb colour;
    std::vector<double> values; // 0..255
};

// All curves have as many values, at positions that are evenly spread over a length.
void writePlot(const std::string &path, const std::string &title, double length, const std::vector<Curve> &curves);

} // namespace tools
