// Rectangular windows around an output pixel, and where their columns come from at the border.
#pragma once

#include "kernel/border.h"

#include <algorithm>

namespace rvxcv {

// The pixels that an output pixel depends on, as offsets from it, first and last included. Offsets of either sign: the
// output pixel itself need not be among them.
struct Window {
    std::int64_t left, top, right, bottom;

    bool operator==(const Window &) const = default;
};

// Where replication makes offsets beyond the far edge equal to it, larger windows are the same window.
inline Window trimmed(Window w, RoiSize roi, const Border &border) {
    const auto trim = [](std::int64_t &first, std::int64_t &last, std::int64_t size, bool before, bool after) {
        const std::int64_t low = before ? INT64_MIN : 1 - size, high = after ? INT64_MAX : size - 1;
        first = std::clamp(first, low, high);
        last = std::clamp(last, low, high);
    };
    trim(w.left, w.right, roi.width, border.left, border.right);
    trim(w.top, w.bottom, roi.height, border.top, border.bottom);
    return w;
}

// Where the pixels first .. last of a row come from: `columns` pixels from column `from`, between `before` and `behind`
// pixels that repeat the first and the last of them (then there is at least one) or are constants (then there may be
// none).
struct Interval {
    std::int64_t before, from, columns, behind;

    Interval(const Border &border, std::int64_t width, std::int64_t first, std::int64_t last) {
        const std::int64_t pixels = last - first + 1;
        if (border.kind == BorderConstant) {
            from = border.left ? first : std::max<std::int64_t>(first, 0);
            columns = std::max<std::int64_t>((border.right ? last + 1 : std::min(last + 1, width)) - from, 0);
            before = columns > 0 ? from - first : pixels;
        } else {
            from = borderColumn(border, first, width).index;
            columns = borderColumn(border, last, width).index - from + 1;
            before = std::clamp<std::int64_t>(from - first, 0, last - first);
        }
        behind = pixels - before - columns;
    }
};

} // namespace rvxcv
