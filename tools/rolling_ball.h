// Background removal with a rolling ball: slow shading goes, what is smaller than the ball stays.
#pragma once

#include "image.h"

namespace tools {

// Brightness is a surface, one level as high as a pixel is wide, and the ball rolls along its underside: what the ball
// cannot enter stands above the background and is left, on black. On a light background it rolls along the upper side
// and dark things are left, on white. Channels on their own.
Image withoutBackground(const Image &image, int radius, bool light);

} // namespace tools
