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

// Pointers to `count` rows from row `first` on, where the kind replicates or reads memory.
template <class T>
inline void collectRows(const T **rows, Plane<const T> src, const Border &border, std::int64_t height,
                        std::int64_t first, std::int64_t count) {
    const auto index = [&](std::int64_t y) { return borderRow(border, y, height).index; };
    const std::int64_t begin = border.top ? first : std::max<std::int64_t>(first, 0);
    const std::int64_t end = border.bottom ? first + count : std::min(first + count, height);
    std::int64_t y = first;
    for (const T *row = src.row(index(first)); y < std::min(begin, first + count); ++y) {
        *rows++ = row;
    }
    for (const T *row = src.row(y); y < end; ++y) {
        *rows++ = row;
        row = byteOffset(row, src.step);
    }
    for (const T *row = src.row(index(first + count - 1)); y < first + count; ++y) {
        *rows++ = row;
    }
}

// The pixels [first, last) of an extended row, one by one; for margins, which are short. `value` is one pixel.
template <int channels, class T>
inline void copyMargin(T *dst, const T *row, std::int64_t first, std::int64_t last, std::int64_t width,
                       const Border &border, const T *value) {
    for (std::int64_t x = first; x < last; ++x, dst += channels) {
        const BorderIndex from = borderColumn(border, x, width);
        const T *pixel = from.constant ? value : row + from.index * channels;
        for (int c = 0; c < channels; ++c) {
            storeScalar(dst + c, loadScalar(pixel + c));
        }
    }
}

// A row with `left` pixels before it and `right` behind it; dst points at the first of the left margin.
template <int channels, class T>
inline void extendRow(T *dst, const T *row, std::int64_t width, std::int64_t left, std::int64_t right,
                      const Border &border, const T *value) {
    copyMargin<channels>(dst, row, -left, 0, width, border, value);
    std::memcpy(static_cast<void *>(dst + left * channels), row,
                static_cast<std::size_t>(width * channels) * sizeof(T));
    copyMargin<channels>(dst + (left + width) * channels, row, width, width + right, width, border, value);
}

template <int channels, class T> inline void fillPixels(T *dst, std::int64_t pixels, const T *value) {
    for (std::int64_t x = 0; x < pixels; ++x, dst += channels) {
        for (int c = 0; c < channels; ++c) {
            storeScalar(dst + c, loadScalar(value + c));
        }
    }
}

// Row y (inside or outside the region) of an image, extended; a row that is constant is so including its margins.
template <int channels, class T>
inline void extendImageRow(T *dst, Plane<const T> src, RoiSize roi, std::int64_t y, std::int64_t left,
                           std::int64_t right, const Border &border, const T *value) {
    const BorderIndex from = borderRow(border, y, roi.height);
    if (from.constant) {
        fillPixels<channels>(dst, left + roi.width + right, value);
    } else {
        extendRow<channels>(dst, src.row(from.index), roi.width, left, right, border, value);
    }
}

struct Margins {
    std::int64_t left, top, right, bottom;
};

// A whole image with margins; dst points at the first pixel of the top left margin.
template <int channels, class T>
inline void extendImage(Plane<T> dst, Plane<const T> src, RoiSize roi, const Margins &margins, const Border &border,
                        const T *value) {
    for (std::int64_t y = -margins.top; y < roi.height + margins.bottom; ++y) {
        extendImageRow<channels>(dst.row(y + margins.top), src, roi, y, margins.left, margins.right, border, value);
    }
}

} // namespace rvxcv
