// What compound operations make of the extrema of a window.
#pragma once

#include "morph/row_extrema.h"

namespace rvxcv {

// The two extrema of a window side by side, for what needs both: an operation and its values.
template <class V> struct Extent {
    V least, most;

    Extent() = default;
    RVX_INLINE Extent(V least_, V most_) : least(least_), most(most_) {}
    explicit RVX_INLINE Extent(V pixels) : least(pixels), most(pixels) {}
};
struct LeastAndMost {
    template <class V> using Value = Extent<V>;
    template <class V> static RVX_INLINE Extent<V> of(Extent<V> a, Extent<V> b) {
        return {min(a.least, b.least), max(a.most, b.most)};
    }
};
template <int bytes, class V> RVX_INLINE Extent<V> shiftedInLane(Extent<V> a, Extent<V> b) {
    return {shiftedInLane<bytes>(a.least, b.least), shiftedInLane<bytes>(a.most, b.most)};
}
template <int halfOfA, int halfOfB, class V> RVX_INLINE Extent<V> joinedHalves(Extent<V> a, Extent<V> b) {
    return {joinedHalves<halfOfA, halfOfB>(a.least, b.least), joinedHalves<halfOfA, halfOfB>(a.most, b.most)};
}

// What becomes of an extremum before it is stored, beside the pixels of another image that other() gives: nothing, or a
// difference.
struct Extremum {
    template <class V, class Other> static RVX_INLINE V of(V extremum, const Other &) { return extremum; }
};
struct OtherLessExtremum {
    template <class V, class Other> static RVX_INLINE V of(V extremum, const Other &other) {
        return differenceOf(other(), extremum);
    }
};
struct ExtremumLessOther {
    template <class V, class Other> static RVX_INLINE V of(V extremum, const Other &other) {
        return differenceOf(extremum, other());
    }
};
struct MostLessLeast {
    template <class V, class Other> static RVX_INLINE V of(Extent<V> extent, const Other &) {
        return differenceOf(extent.most, extent.least);
    }
};

} // namespace rvxcv
