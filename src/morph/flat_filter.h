// Erosion (Minimum) and dilation (Maximum) of some rows of a region, for what is built on them: no checks, any scratch
// of morphBufferBytes for a region at most as wide or somewhat narrower (a kernel that needs more steps aside).
#pragma once

#include "morph/row_extrema.h"

#include "rvxcv/morph.h"

namespace rvxcv {

// Instances: Minimum and Maximum of 8u, 16u, 16s, 32f.
template <class T, class Op> void filterFlat(const MorphTask<T> &task, const MorphSpec &spec);

} // namespace rvxcv
