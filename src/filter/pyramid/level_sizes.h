// Which sizes the levels of a pyramid have. Every rule is a pair of lengths in one direction; width and height follow
// it on their own.
#pragma once

#include "rvxcv/types.h"

#include <cstdint>

namespace rvxcv {

// NaN is no rate.
constexpr bool isPyramidRate(float rate) { return rate > 1.0f && rate <= 10.0f; }

// The lengths that one step up from `length` may have. They can exceed 32 bits.
struct LengthRange {
    std::int64_t least, most;

    constexpr bool contains(std::int64_t length) const { return length >= least && length <= most; }
};
LengthRange pyramidUpLengths(std::int32_t length, float rate);

// The length from which a step up can reach `length`; smaller than it, except that 1 stays 1.
std::int32_t pyramidDownLength(std::int32_t length, float rate);

inline RoiSize pyramidDownSize(RoiSize roi, float rate) {
    return {pyramidDownLength(roi.width, rate), pyramidDownLength(roi.height, rate)};
}

} // namespace rvxcv
