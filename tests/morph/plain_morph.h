// The plain definition of erosion and dilation: every output is the extremum over a list of offsets, each coordinate
// replicated on its own unless its side is in memory.
#pragma once

#include "support/guarded.h"

#include <algorithm>
#include <functional>
#include <vector>

namespace support {

struct Offset {
    std::int64_t x, y;
};

// The non-zero positions of a mask relative to its anchor.
inline std::vector<Offset> maskOffsets(const std::vector<std::uint8_t> &mask, RoiSize size, Point2i anchor) {
    std::vector<Offset> offsets;
    for (std::int32_t j = 0; j < size.height; ++j) {
        for (std::int32_t i = 0; i < size.width; ++i) {
            if (mask[static_cast<std::size_t>(j) * static_cast<std::size_t>(size.width) +
                     static_cast<std::size_t>(i)] != 0) {
                offsets.push_back({i - anchor.x, j - anchor.y});
            }
        }
    }
    return offsets;
}

struct Mask {
    RoiSize size;
    std::vector<std::uint8_t> bytes;

    Point2i centre() const { return {(size.width - 1) / 2, (size.height - 1) / 2}; }
    std::vector<Offset> offsets() const { return maskOffsets(bytes, size, centre()); }
};

inline Mask maskOf(RoiSize size, const std::function<bool(std::int32_t, std::int32_t)> &isSet) {
    Mask mask{size, {}};
    for (std::int32_t j = 0; j < size.height; ++j) {
        for (std::int32_t i = 0; i < size.width; ++i) {
            mask.bytes.push_back(isSet(i, j) ? static_cast<std::uint8_t>(1 + (3 * i + 5 * j) % 255) : 0);
        }
    }
    return mask;
}

inline Mask randomMask(RoiSize size, int percent, Rng &rng) {
    return maskOf(size, [&](auto, auto) { return uniform(rng, 0, 99) < percent; });
}

struct Sides {
    bool top = false, bottom = false, left = false, right = false;

    static Sides of(BorderKind border) {
        const bool all = (border & 15) == BorderInMemory;
        return {all || (border & BorderInMemoryTop) != 0, all || (border & BorderInMemoryBottom) != 0,
                all || (border & BorderInMemoryLeft) != 0, all || (border & BorderInMemoryRight) != 0};
    }
};

inline std::int64_t clampSide(std::int64_t i, std::int64_t n, bool before, bool after) {
    return i < 0 && !before ? 0 : i >= n && !after ? n - 1 : i;
}

// Element (x, y) of the result; an empty list copies.
template <class T>
T plainExtremum(const GuardedImage<T> &image, int channels, const std::vector<Offset> &offsets, bool maximum,
                Sides sides, std::int64_t x, std::int64_t y) {
    if (offsets.empty()) {
        return image.at(x, y);
    }
    T result{};
    bool first = true;
    for (const Offset &offset : offsets) {
        const std::int64_t column =
            clampSide(x / channels + offset.x, image.width() / channels, sides.left, sides.right);
        const std::int64_t row = clampSide(y + offset.y, image.height(), sides.top, sides.bottom);
        const T value = image.at(column * channels + x % channels, row);
        if (first || (maximum ? value > result : value < result)) {
            result = value;
        }
        first = false;
    }
    return result;
}

} // namespace support
