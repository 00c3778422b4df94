// Colours of results: a scale for values, a palette for things that are told apart.
#pragma once

#include "image.h"

namespace tools {

struct Rgb {
    std::uint8_t r, g, b;
};

// From black over violet, red and orange to pale yellow: brighter is more, also in print. Clamped to 0..1.
Rgb heat(double part);

// Hue in turns from red over green and blue, any number; saturation and value from 0 to 1.
Rgb hsv(double hue, double saturation, double value);

// Colours for numbered things: neighbours in number differ clearly, none is dark.
Rgb paletteColour(std::size_t number);

// Values as colours of the heat scale, 0 as black and `largest` as its end. Rows without gaps.
Image heatPicture(RoiSize size, const std::vector<float> &values, float largest);

// Values onto the grey scale from `zero`; without a scale (0) the largest absolute one just reaches its end.
Image greyPicture(RoiSize size, const std::vector<float> &values, float zero, double scale);

} // namespace tools
