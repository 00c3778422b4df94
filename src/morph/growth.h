// The two directions of reconstruction as one: growth rises in dilation and falls in erosion. "Low" is the end of the
// type's range that growth comes from, "high" the other one.
#pragma once

#include "kernel/vec.h"

#include <limits>

namespace rvxcv {

template <class T> constexpr T lowest() {
    return std::is_floating_point_v<T> ? -std::numeric_limits<T>::infinity() : std::numeric_limits<T>::lowest();
}
template <class T> constexpr T highest() {
    return std::is_floating_point_v<T> ? std::numeric_limits<T>::infinity() : std::numeric_limits<T>::max();
}

template <class Pixel, bool rises> struct Growth {
    using T = Pixel;
    using V = Vec<T>;
    static constexpr T low = rises ? lowest<T>() : highest<T>(), high = rises ? highest<T>() : lowest<T>();

    static RVX_INLINE V grown(V a, V b) {
        if constexpr (rises) {
            return max(a, b);
        } else {
            return min(a, b);
        }
    }
    static RVX_INLINE V limited(V a, V b) {
        if constexpr (rises) {
            return min(a, b);
        } else {
            return max(a, b);
        }
    }
    static RVX_INLINE bool isBelow(T a, T b) { return rises ? a < b : b < a; }

    // Lanes of a beyond those of b, as bits.
    static RVX_INLINE std::uint32_t beyond(V a, V b) {
        if constexpr (std::is_same_v<T, float>) {
            return rises ? laneBits(greater(a, b)) : laneBits(greater(b, a));
        } else {
            constexpr auto all = static_cast<std::uint32_t>((1ull << V::lanes) - 1);
            return ~laneBits(equal(grown(a, b), b)) & all;
        }
    }

    // Unsigned numbers in the order of growth.
    static RVX_INLINE std::uint32_t key(T value) {
        std::uint32_t bits = 0;
        if constexpr (std::is_same_v<T, float>) {
            std::memcpy(&bits, &value, sizeof bits);
            bits ^= static_cast<std::uint32_t>(static_cast<std::int32_t>(bits) >> 31) | 0x80000000;
            return rises ? bits : ~bits;
        } else {
            bits = value;
            return rises ? bits : std::uint32_t{std::numeric_limits<T>::max()} - bits;
        }
    }
};

} // namespace rvxcv
