// Pixels outside a region, for references: each coordinate walks from the edge outward one pixel at a time, as the
// pictures in the public header show it.
#pragma once

#include "support/guarded.h"

#include <cstdint>
#include <vector>

namespace support {

// The index that stands for coordinate i of n pixels, or -1000000 for the constant. A side in memory keeps i.
inline std::int64_t plainBorderIndex(std::int32_t kind, bool before, bool after, std::int64_t i, std::int64_t n) {
    constexpr std::int64_t constant = -1000000;
    if ((i < 0 && before) || (i >= n && after)) {
        return i;
    }
    std::int64_t at = i < 0 ? 0 : i >= n ? n - 1 : i;
    const std::int64_t outside = i < 0 ? -i : i >= n ? i - (n - 1) : 0;
    std::int64_t direction = i < 0 ? 1 : -1;
    for (std::int64_t step = 0; step < outside; ++step) {
        const bool turns = at + direction < 0 || at + direction >= n;
        switch (kind) {
        case BorderConstant:
            return constant;
        case BorderReplicate:
            break;
        case BorderWrap: // away from the region, re-entering at the other end
            at = (at - direction + n) % n;
            break;
        case BorderMirror: // back into the region, turning on the edge pixels
            direction = turns ? -direction : direction;
            at += n == 1 ? 0 : direction;
            break;
        case BorderMirrorRepeat: // the same, staying on an edge pixel once
            if (step == 0) {
                break;
            }
            if (turns) {
                direction = -direction;
            } else {
                at += direction;
            }
            break;
        default:
            ADD_FAILURE() << "no such border kind: " << kind;
            return constant;
        }
    }
    return at;
}

// The pixel (x, y) of a bordered image, inside or outside its region.
template <class T>
T borderedPixel(const GuardedImage<T> &image, std::int64_t x, std::int64_t y, BorderKind border, T value) {
    const std::int32_t kind = border & 15;
    const auto inMemory = [&](BorderKind side) { return kind == BorderInMemory || (border & side) != 0; };
    const std::int64_t column =
        plainBorderIndex(kind, inMemory(BorderInMemoryLeft), inMemory(BorderInMemoryRight), x, image.width());
    const std::int64_t row =
        plainBorderIndex(kind, inMemory(BorderInMemoryTop), inMemory(BorderInMemoryBottom), y, image.height());
    return column == -1000000 || row == -1000000 ? value : image.at(column, row);
}

// Every kind (as the caller lists them) with every set of sides in memory, and kind 6.
inline std::vector<BorderKind> bordersOf(std::initializer_list<BorderKind> kinds) {
    std::vector<BorderKind> all;
    for (const BorderKind kind : kinds) {
        for (BorderKind sides = 0; sides < 256; sides += 16) {
            all.push_back(kind | sides);
        }
    }
    all.push_back(BorderInMemory);
    return all;
}

// The layout of an image that owns exactly the margin that a border reads from memory.
template <class T>
typename GuardedImage<T>::Layout marginLayout(BorderKind border, std::int64_t margin, std::int64_t padding,
                                              Guard guard) {
    const auto side = [&](BorderKind flag) {
        return (border & 15) == BorderInMemory || (border & flag) != 0 ? margin : 0;
    };
    return {.padding = padding,
            .guard = guard,
            .left = side(BorderInMemoryLeft),
            .top = side(BorderInMemoryTop),
            .right = side(BorderInMemoryRight),
            .bottom = side(BorderInMemoryBottom)};
}

} // namespace support
