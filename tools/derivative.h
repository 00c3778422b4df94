// Derivatives of a grey picture for commands that look at them.
#pragma once

#include "image.h"

namespace tools {

// Rows without gaps; the border is replicated. Filters are named as `rvxcv gradient --filter` names them; size is 3 or
// 5 (Scharr filters are 3x3).
std::vector<std::int16_t> derivative(const Image &grey, const std::string &filter, int size);

} // namespace tools
