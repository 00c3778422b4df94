// What morphological reconstruction is good for, on the channels of an 8-bit picture one by one.
#pragma once

#include "image.h"

namespace tools {

// Dark places that bright ones enclose are filled up to the lowest pixel of their rim. An outline one pixel wide holds,
// also where it runs diagonally.
Image fillHoles(const Image &image);

// Takes away what is brighter than its surroundings and touches the frame.
Image clearBorder(const Image &image);

// What rises above its surroundings, as far as its top `height` levels go; these become 0 .. 255.
Image domes(const Image &image, int height);

} // namespace tools
