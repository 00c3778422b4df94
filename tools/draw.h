// Drawing of results on a colour picture.
#pragma once

#include "image.h"

namespace tools {

struct Rgb {
    std::uint8_t r, g, b;
};

// Everything outside the picture is clipped.
void drawPoint(Image &image, int x, int y, Rgb colour);
void drawCircle(Image &image, int x, int y, int radius, Rgb colour);

} // namespace tools
