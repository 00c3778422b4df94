// Gaussian smoothing, for commands that blur and for those that look for large structures.
#pragma once

#include "image.h"

namespace tools {

// `size` is the kernel's side, odd; 0 reaches three sigma to each side. Borders are replicated.
Image smoothed(const Image &image, float sigma, int size = 0);

} // namespace tools
