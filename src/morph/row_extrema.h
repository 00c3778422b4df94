// Running extrema along rows and columns: the steps that rectangles and run masks are made of. Rows are counted in
// elements (pixels times channels) and a shift by one pixel is a shift by `channels` elements.
#pragma once

#include "kernel/border.h"
#include "kernel/plane.h"
#include "kernel/vec.h"

#include <algorithm>
#include <limits>

namespace rvxcv {

// The two operations, on vectors of any type. `neutral` changes nothing.
struct Minimum {
    template <class V> static RVX_INLINE V of(V a, V b) { return min(a, b); }
    template <class T> static constexpr T neutral() {
        return std::is_same_v<T, float> ? std::numeric_limits<T>::infinity() : std::numeric_limits<T>::max();
    }
};
struct Maximum {
    template <class V> static RVX_INLINE V of(V a, V b) { return max(a, b); }
    template <class T> static constexpr T neutral() {
        return std::is_same_v<T, float> ? -std::numeric_limits<T>::infinity() : std::numeric_limits<T>::min();
    }
};

// What every kernel of flat morphology works on: output rows firstRow .. lastRow - 1 of a region, a replicated border
// with any sides in memory, and scratch.
template <class T> struct MorphTask {
    Plane<const T> src;
    Plane<T> dst;
    RoiSize roi;
    std::int64_t firstRow, lastRow;
    std::int64_t channels;
    Border border;
    std::uint8_t *scratch;
    std::int64_t scratchBytes;

    constexpr std::int64_t pixelBytes() const { return channels * static_cast<std::int64_t>(sizeof(T)); }
    std::int64_t column(std::int64_t x) const { return borderColumn(border, x, roi.width).index; }
    const T *row(std::int64_t y) const { return src.row(borderRow(border, y, roi.height).index); }
};

// Scratch rows end with this many bytes of slack, so that steps inside scratch work on whole vectors only.
constexpr std::int64_t rowSlack = 32;

// Calls block<vectors>(x) over whole groups of vectors, block<1>(x) over the rest, the last one moved back to end with
// the row or, in a row shorter than a vector, cut off. For steps that do not read what they write.
template <int lanes, int vectors, class Block> RVX_INLINE void sweep(std::int64_t n, const Block &block) {
    std::int64_t x = 0;
    for (; x + vectors * lanes <= n; x += vectors * lanes) {
        block.template run<vectors>(x, Full{});
    }
    for (; x + lanes <= n; x += lanes) {
        block.template run<1>(x, Full{});
    }
    if (x < n) {
        if (n >= lanes) {
            block.template run<1>(n - lanes, Full{});
        } else {
            block.template run<1>(0, Part{static_cast<int>(n)});
        }
    }
}

// out_k = extremum of rows k .. k + height - 1 for k < outputs <= height (van Herk; Gil and Werman): the rows are cut
// after row height - 1; each window is a suffix of the part before the cut and a prefix of the part behind it. Suffixes
// are left in the output rows, prefixes grow in registers: three loads and two stores for any height.
template <class T, class Op> struct ColumnExtrema {
    using V = Vec<T>;
    const T *const *rows; // height + outputs - 1
    std::int64_t height;
    std::int64_t outputs;
    T *out;
    std::int64_t outStep; // bytes

    template <int vectors, class Span> RVX_INLINE void run(std::int64_t x, Span span) const {
        V extremum[vectors];
        for (int v = 0; v < vectors; ++v) {
            extremum[v] = load<V>(rows[height - 1] + x + v * V::lanes, span);
        }
        for (std::int64_t k = height - 1;;) {
            if (k < outputs) {
                T *to = byteOffset(out, k * outStep) + x;
                for (int v = 0; v < vectors; ++v) {
                    store(to + v * V::lanes, extremum[v], span);
                }
            }
            if (--k < 0) {
                break;
            }
            const T *row = rows[k] + x;
            for (int v = 0; v < vectors; ++v) {
                extremum[v] = Op::of(extremum[v], load<V>(row + v * V::lanes, span));
            }
        }
        for (std::int64_t k = 1; k < outputs; ++k) {
            const T *row = rows[height + k - 1] + x;
            T *to = byteOffset(out, k * outStep) + x;
            for (int v = 0; v < vectors; ++v) {
                const V next = load<V>(row + v * V::lanes, span);
                extremum[v] = k == 1 ? next : Op::of(extremum[v], next);
                store(to + v * V::lanes, Op::of(extremum[v], load<V>(to + v * V::lanes, span)), span);
            }
        }
    }
};

// The same for `outputs` fixed and small: suffixes stay in registers, and the rows common to all outputs are read once.
template <class T, class Op, int outputs> struct ColumnExtremaFew {
    using V = Vec<T>;
    const T *const *rows;
    std::int64_t height; // >= outputs
    T *out;
    std::int64_t outStep;

    template <int vectors, class Span> RVX_INLINE void run(std::int64_t x, Span span) const {
        V suffix[outputs][vectors];
        for (int v = 0; v < vectors; ++v) {
            suffix[outputs - 1][v] = load<V>(rows[outputs - 1] + x + v * V::lanes, span);
        }
        for (std::int64_t k = outputs; k < height; ++k) {
            const T *row = rows[k] + x;
            for (int v = 0; v < vectors; ++v) {
                suffix[outputs - 1][v] = Op::of(suffix[outputs - 1][v], load<V>(row + v * V::lanes, span));
            }
        }
        for (int k = outputs - 2; k >= 0; --k) {
            const T *row = rows[k] + x;
            for (int v = 0; v < vectors; ++v) {
                suffix[k][v] = Op::of(suffix[k + 1][v], load<V>(row + v * V::lanes, span));
            }
        }
        V prefix[vectors];
        for (int k = 0; k < outputs; ++k) {
            T *to = byteOffset(out, k * outStep) + x;
            for (int v = 0; v < vectors; ++v) {
                if (k > 0) {
                    const V next = load<V>(rows[height + k - 1] + x + v * V::lanes, span);
                    prefix[v] = k == 1 ? next : Op::of(prefix[v], next);
                    suffix[k][v] = Op::of(suffix[k][v], prefix[v]);
                }
                store(to + v * V::lanes, suffix[k][v], span);
            }
        }
    }
};

// Repeats one pixel: a few times one by one, many times by vectors or by copying what is there already.
template <class T> RVX_INLINE void repeatPixel(T *dst, std::int64_t pixels, const T *pixel, std::int64_t channels) {
    if (channels == 1) {
        using V = Vec<T>;
        const T value = loadScalar(pixel);
        std::int64_t x = 0;
        if (pixels >= V::lanes) {
            for (; x + V::lanes <= pixels; x += V::lanes) {
                store(dst + x, splat(value));
            }
            store(dst + pixels - V::lanes, splat(value));
            return;
        }
        for (; x < pixels; ++x) {
            storeScalar(dst + x, value);
        }
        return;
    }
    const std::int64_t single = std::min<std::int64_t>(pixels, 4);
    for (std::int64_t x = 0; x < single; ++x) {
        for (std::int64_t c = 0; c < channels; ++c) {
            storeScalar(dst + x * channels + c, loadScalar(pixel + c));
        }
    }
    for (std::int64_t done = single; done < pixels;) {
        const std::int64_t more = std::min(done, pixels - done);
        std::memcpy(static_cast<void *>(dst + done * channels), dst,
                    static_cast<std::size_t>(more * channels) * sizeof(T));
        done += more;
    }
}

// Where the pixels first .. last of a row come from: `columns` pixels from column `from`, at least one, and repetitions
// of the first and of the last of them.
struct Interval {
    std::int64_t before, from, columns, behind;

    template <class T>
    Interval(const MorphTask<T> &task, std::int64_t first, std::int64_t last) : from(task.column(first)) {
        columns = task.column(last) - from + 1;
        before = std::clamp<std::int64_t>(from - first, 0, last - first);
        behind = last - first + 1 - before - columns;
    }
};

template <class T>
inline void copyInterval(T *dst, const T *row, std::int64_t first, std::int64_t last, const MorphTask<T> &task) {
    const Interval interval(task, first, last);
    const std::int64_t channels = task.channels;
    T *pixel = dst + interval.before * channels;
    std::memcpy(static_cast<void *>(pixel), row + interval.from * channels,
                static_cast<std::size_t>(interval.columns * task.pixelBytes()));
    repeatPixel(dst, interval.before, pixel, channels);
    repeatPixel(pixel + interval.columns * channels, interval.behind, pixel + (interval.columns - 1) * channels,
                channels);
}

// How many output pixels' rows fit: `rows` scratch rows of so many pixels and `margin` more, in `bytes`.
constexpr std::int64_t fittingPixels(std::int64_t bytes, std::int64_t rows, std::int64_t margin,
                                     std::int64_t pixelBytes) {
    return (bytes / rows / 32 * 32 - rowSlack) / pixelBytes - margin;
}

// The same, but no more than keeps a block in the second-level cache beside its source rows, unless that makes tiles so
// narrow that the margins weigh.
inline std::int64_t tilePixels(std::int64_t width, std::int64_t bytes, std::int64_t rows, std::int64_t margin,
                               std::int64_t pixelBytes) {
    constexpr std::int64_t cacheBytes = 128 * 1024;
    const std::int64_t cached =
        std::max(fittingPixels(cacheBytes, rows, margin, pixelBytes), std::max(4 * margin, 512 / pixelBytes));
    return std::max<std::int64_t>(std::min({width, fittingPixels(bytes, rows, margin, pixelBytes), cached}), 0);
}

constexpr std::int64_t scratchRowStep(std::int64_t pixels, std::int64_t pixelBytes) {
    return roundUp(pixels * pixelBytes, 32) + rowSlack;
}

// One step along a row: dst[x] = extremum of the `loads` elements src[x], src[x + shift], .., src[x + last], the
// distance between neighbours `shift` except that the last one lies at `last`. Reads whole vectors: src ends with
// slack.
template <class T, class Op, int loads> struct RowStep {
    using V = Vec<T>;
    const T *src;
    T *dst;
    std::int64_t shift, last;

    RVX_INLINE V at(std::int64_t x) const {
        V extremum = load<V>(src + x);
        for (int i = 1; i < loads - 1; ++i) {
            extremum = Op::of(extremum, load<V>(src + x + i * shift));
        }
        return Op::of(extremum, load<V>(src + x + last));
    }
    // Whole vectors in scratch; dst may be src.
    void sloppy(std::int64_t n) const {
        std::int64_t x = 0;
        for (; x + V::lanes < n; x += 2 * V::lanes) {
            const V low = at(x), high = at(x + V::lanes);
            store(dst + x, low);
            store(dst + x + V::lanes, high);
        }
        if (x < n) {
            store(dst + x, at(x));
        }
    }
    // Exactly n elements.
    void exact(std::int64_t n) const {
        std::int64_t x = 0;
        for (; x + 2 * V::lanes <= n; x += 2 * V::lanes) {
            const V low = at(x), high = at(x + V::lanes);
            store(dst + x, low);
            store(dst + x + V::lanes, high);
        }
        if (x + V::lanes <= n) {
            store(dst + x, at(x));
            x += V::lanes;
        }
        if (x < n) {
            store(dst + x, at(x), Part{static_cast<int>(n - x)});
        }
    }
};

// Extrema of `length` pixels take two steps or more where that is fewer loads: extrema of 4, 16, 64 .. times `known`
// pixels replace a row of extrema of `known` pixels until at most six of them make up the length. widenedTo tells their
// length, widenRows forms them in place of the n elements that the row holds; neighbouring scratch rows may be taken
// together as one.
constexpr std::int64_t widenedTo(std::int64_t known, std::int64_t length) {
    while (length > 6 * known) {
        known *= 4;
    }
    return known;
}

template <class T, class Op>
inline void widenRows(T *row, std::int64_t n, std::int64_t known, std::int64_t length, std::int64_t channels) {
    for (; length > 6 * known; known *= 4) {
        n -= 3 * known * channels;
        RowStep<T, Op, 4>{row, row, known * channels, 3 * known * channels}.sloppy(n);
    }
}

// Where a row of extrema goes: into scratch in whole vectors, or into memory of exactly its elements.
enum class Store { sloppy, exact };

// The last step: dst[x] = extremum of `length` pixels, for n elements, from extrema of `known` pixels, at least a sixth
// of the length. The row holds (length - known) * channels elements more, then slack. A sloppy dst may be the row.
template <class T, class Op, Store kind>
inline void finishRow(const T *row, T *dst, std::int64_t n, std::int64_t known, std::int64_t length,
                      std::int64_t channels) {
    const std::int64_t shift = known * channels, last = (length - known) * channels;
    const auto finish = [&](const auto &step) {
        if constexpr (kind == Store::sloppy) {
            step.sloppy(n);
        } else {
            step.exact(n);
        }
    };
    switch ((length + known - 1) / known) {
    case 1:
    case 2:
        return finish(RowStep<T, Op, 2>{row, dst, shift, last});
    case 3:
        return finish(RowStep<T, Op, 3>{row, dst, shift, last});
    case 4:
        return finish(RowStep<T, Op, 4>{row, dst, shift, last});
    case 5:
        return finish(RowStep<T, Op, 5>{row, dst, shift, last});
    default:
        return finish(RowStep<T, Op, 6>{row, dst, shift, last});
    }
}

} // namespace rvxcv
