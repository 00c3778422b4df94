// Minimum and maximum under a rectangle, for the rank filters and for erosion and dilation with solid rectangles.
#pragma once

#include "morph/window_result.h"

#include "rvxcv/morph.h"

namespace rvxcv {

// Filters rows of a region. False, and nothing is written, when the scratch is too small: never with replicated sides
// and rankBufferBytes of scratch for the window's size. Instances: Minimum and Maximum of 8u, 16u, 16s, 32f.
template <class T, class Op> bool filterWindow(const MorphTask<T> &task, Window window);

// The same for the window's frequent sizes alone, with a step behind it (small_window.cpp): false, and nothing is
// written, for any other window. `other` has the destination's coordinates and is not the destination. Instances: the
// results that compound operations have; LeastAndMost for the difference of both.
template <class T, class Op, class Result>
bool filterSmallWindow(const MorphTask<T> &task, Window window, Plane<const T> other);

// A record's rectangle as a window.
inline Window rectangleOf(const MorphSpec &spec) {
    const std::int64_t left = -std::int64_t{spec.rectangleAnchorX}, top = -std::int64_t{spec.rectangleAnchorY};
    return {left, top, left + spec.rectangleWidth - 1, top + spec.rectangleHeight - 1};
}

} // namespace rvxcv
