// The synthetic street scenes: a textured background, straight and curved edges, objects that move from frame to frame,
// and noise. Deterministic: the same street, frame and seed give the same picture.
#pragma once

#include "image.h"
#include "street.h"

namespace tools {

Image renderScene(const Street &street, int width, int height, int frame, unsigned seed);

} // namespace tools
