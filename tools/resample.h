// A grey picture, or a box of it, in another size.
#pragma once

#include "image.h"

namespace tools {

struct Box {
    double x, y, width, height; // pixels; pixel (i, j) reaches from i to i + 1 and from j to j + 1
};

// Every pixel is a mean with weights that fall off linearly over one pixel of the result (of the picture, where the
// result is finer). Outside the picture its edge continues.
Image resample(const Image &grey, Box box, RoiSize size);

} // namespace tools
