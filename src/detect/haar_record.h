// The record of a Haar classifier in memory, shared by the functions that make, change and apply it.
#pragma once

#include "frame/api.h"
#include "kernel/base.h"

#include <cstddef>

namespace rvxcv {

// The layout is a contract: callers read it, and its size is what InitAlloc asks for.
static_assert(sizeof(HaarClassifier) == 56 && sizeof(HaarFeature) == 32 && sizeof(HaarRectangle) == 36);
static_assert(offsetof(HaarClassifier, features) == 8 && offsetof(HaarFeature, rects) == 8);

// The slots of a rectangle's corners: those of an upright one / of a tilted one.
enum HaarCorner { bottomRight = 0, bottomLeft = 1, topRight = 2, topLeft = 3, lowest = 0, rightmost = 2 };

constexpr std::uint32_t tiltBit = 1;
RVX_INLINE bool isTilted(const HaarFeature &feature) { return (feature.tag & tiltBit) != 0; }

RVX_INLINE HaarNumber toNumber(float value) { return {.f32 = value}; }
RVX_INLINE HaarNumber toNumber(std::int32_t value) { return {.s32 = value}; }

} // namespace rvxcv
