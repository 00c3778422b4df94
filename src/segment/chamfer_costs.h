// The steps of a chamfer distance, made ready for passes over the rows.
//
// Two passes find the cheapest path when it can be walked as steps of the first pass (down, or to the right), then
// steps of the second one. That holds when of all steps only two neighbouring ones, straight and knight or knight and
// diagonal, make up a cheapest path to any place: the costs are regular. For others a row needs more steps along
// itself: where diagonal or knight steps are cheap, a path along a row zigzags, and every other step of it would belong
// to the other pass. Two diagonal steps are one step of two pixels, two knight steps one of four, and every zigzag is
// made of these; in regions of one row there is no room for them.
//
// Without knight steps that is all. With knight steps that are cheap, paths also step back and forth in other ways
// (three knight steps make a straight one) as far as the region's edges leave room. Such detours are few in a
// path, however long it is, so the passes are repeated until nothing changes: five passes at most were seen to change
// anything, in regions of 2 x 2 to 300 x 3 pixels with costs from 1 to 200.
#pragma once

#include "kernel/base.h"

#include "rvxcv/types.h"

#include <algorithm>
#include <limits>

namespace rvxcv {

// What a pass begins with: the picture, or the distances that an earlier pass left.
enum class Start { source, distances };

template <class T> struct StepCosts {
    T straight, diagonal, knight;
    T two, four;    // steps of two and four pixels along a row
    bool knights;   // there are knight steps
    bool shortcuts; // two and four are less than two and four straight steps
    bool repeated;  // two passes may not be enough
};

// Costs in the type of the caller's ones, made wide enough for sums; as results in T, limited to its largest value.
template <class T, class Cost> StepCosts<T> stepCosts(const Cost *metrics, int maskSize, RoiSize roi) {
    using Sum = std::conditional_t<std::is_same_v<Cost, float>, float, std::int64_t>;
    const auto limited = [](Sum cost) {
        return std::is_same_v<T, float> ? static_cast<T>(cost)
                                        : static_cast<T>(std::min<Sum>(cost, std::numeric_limits<T>::max()));
    };
    // Comparisons in double precision: sums of a few costs are exact unless they differ by many orders of magnitude.
    const double a = static_cast<double>(loadScalar(metrics)), b = static_cast<double>(loadScalar(metrics + 1));
    const double c = maskSize == 5 ? static_cast<double>(loadScalar(metrics + 2)) : 0;
    const double corner = std::min(2 * a, b);
    const bool room = roi.width >= 2 && roi.height >= 2;
    const bool knights = maskSize == 5 && room && !(c >= a + corner);
    const bool regular = !room || (a <= b && (!knights || (2 * a <= c && 3 * corner <= 2 * c)));

    Sum straight = loadScalar(metrics), diagonal = loadScalar(metrics + 1);
    const Sum knight = knights ? Sum{loadScalar(metrics + 2)} : Sum{std::numeric_limits<T>::max()};
    Sum two = 2 * straight, four = 4 * straight;
    if (!regular) {
        diagonal = std::min(diagonal, 2 * straight);
        if (knights && roi.width >= 3 && roi.height >= 3) {
            const Sum around = straight + knight;
            straight = std::min(straight, diagonal + knight);
            diagonal = std::min(diagonal, around);
        }
        two = 2 * std::min(straight, diagonal);
        four = knights ? std::min(2 * two, 2 * knight) : 2 * two;
    }
    return {limited(straight), limited(diagonal), limited(knight), limited(two),
            limited(four),     knights,           !regular,        knights && !regular};
}

} // namespace rvxcv
