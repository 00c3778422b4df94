// The value that separates small and large ones best.
#pragma once

#include "image.h"

namespace tools {

// Values from here on are the large ones; 0 when there is nothing to separate. Negative values do not occur.
float separation(const std::vector<float> &values);

// The same for the levels of a grey picture: 1..255, or 0 for a picture of one level.
int separation(const Image &grey);

} // namespace tools
