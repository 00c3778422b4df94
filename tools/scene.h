// The synthetic street scene of the demo: a textured background, straight and curved edges, objects that move from
// frame to frame, and noise. Deterministic: the same frame and seed give the same picture.
#pragma once

#include "image.h"

namespace tools {

Image renderScene(int width, int height, int frame, unsigned seed);

} // namespace tools
