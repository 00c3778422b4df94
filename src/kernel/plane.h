// A plane is a pointer to the first pixel of the region and a row step in bytes. Offsets are formed in 64 bits, so
// images beyond 2^31 bytes work.
#pragma once

#include "kernel/base.h"

namespace rvxcv {

template <class T> struct Plane {
    T *base;
    std::int64_t step;

    RVX_INLINE T *row(std::int64_t y) const { return byteOffset(base, y * step); }
};

template <class T> Plane(T *, std::int32_t) -> Plane<T>;

} // namespace rvxcv
