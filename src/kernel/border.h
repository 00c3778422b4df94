// Border-copy primitives: which pixel stands for a coordinate outside the region, and copies that extend a row or an
// image by such pixels. Each coordinate is treated on its own: a side in memory keeps it, any other side applies the
// kind. Margins only, one row, or a whole image: the caller chooses how much is copied.
#pragma once

#include "kernel/plane.h"

#include "rvxcv/types.h"

#include <algorithm>

namespace rvxcv {

// A border argument taken apart. Kind 6 stands for all four sides in memory.
struct Border {
    std::int32_t kind;
    bool top, bottom, left, right; // this side's outside pixels are read from memory

    explicit constexpr Border(BorderKind border)
        : kind(border & 15), top(inMemory(border, BorderInMemoryTop)), bottom(inMemory(border, BorderInMemoryBottom)),
          left(inMemory(border, BorderInMemoryLeft)), right(inMemory(border, BorderInMemoryRight)) {}

private:
    static constexpr bool inMemory(BorderKind border, BorderKind side) {
        return (border & 15) == BorderInMemory || (border & side) != 0;
    }
};

// Where a coordinate's pixel comes from: an index (outside 0..n-1 only on a side in memory) or the constant.
struct BorderIndex {
    std::int64_t index;
    bool constant;
};

// Regions smaller than the margin wrap or reflect repeatedly.
constexpr BorderIndex borderIndex(std::int32_t kind, bool beforeInMemory, bool afterInMemory, std::int64_t i,
                                  std::int64_t n) {
    if ((i >= 0 && i < n) || (i < 0 && beforeInMemory) || (i >= n && afterInMemory)) {
        return {i, false};
    }
    const auto modulo = [](std::int64_t a, std::int64_t period) { return ((a % period) + period) % period; };
    switch (kind) {
    case BorderReplicate:
        return {i < 0 ? 0 : n - 1, false};
    case BorderWrap:
        return {modulo(i, n), false};
    case BorderMirror: {
        const std::int64_t period = n == 1 ? 1 : 2 * n - 2;
        const std::int64_t k = modulo(i, period);
        return {k < n ? k : period - k, false};
    }
    case BorderMirrorRepeat: {
        const std::int64_t k = modulo(i, 2 * n);
        return {k < n ? k : 2 * n - 1 - k, false};
    }
    default:
        return {0, true};
    }
}

constexpr BorderIndex borderColumn(const Border &border, std::int64_t x, std::int64_t width) {
    return borderIndex(border.kind, border.left, border.right, x, width);
}

constexpr BorderIndex borderRow(const Border &border, std::int64_t y, std::int64_t height) {
    return borderIndex(border.kind, border.top, border.bottom, y, height);
}

// Pointers to `count` rows from row `first` on, where the kind replicates, reads memory or gives a row of constants.
template <class T>
inline void collectRows(const T **rows, Plane<const T> src, const Border &border, std::int64_t height,
                        std::int64_t first, std::int64_t count, const T *constants = nullptr) {
    const auto outside = [&](std::int64_t y) {
        const BorderIndex at = borderRow(border, y, height);
        return at.constant ? constants : src.row(at.index);
    };
    const std::int64_t begin = border.top ? first : std::max<std::int64_t>(first, 0);
    const std::int64_t end = border.bottom ? first + count : std::min(first + count, height);
    std::int64_t y = first;
    for (const T *row = outside(first); y < std::min(begin, first + count); ++y) {
        *rows++ = row;
    }
    for (const T *row = src.row(y); y < end; ++y) {
        *rows++ = row;
        row = byteOffset(row, src.step);
    }
    for (const T *row = outside(first + count - 1); y < first + count; ++y) {
        *rows++ = row;
    }
}

template <int channels, class T> inline void fillPixels(T *dst, std::int64_t pixels, const T *value) {
    for (std::int64_t x = 0; x < pixels; ++x, dst += channels) {
        for (int c = 0; c < channels; ++c) {
            storeScalar(dst + c, loadScalar(value + c));
        }
    }
}

} // namespace rvxcv
