// Running extrema along rows: the steps that rectangles and run masks are made of. Rows are counted in elements (pixels
// times channels) and a shift by one pixel is a shift by `channels` elements.
#pragma once

#include "kernel/plane.h"
#include "morph/column_extrema.h"
#include "morph/window.h"

#include <algorithm>
#include <limits>
#include <utility>

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

// Differences as compound operations have them: of integers saturated, of floats at least zero, but a NaN stays.
template <class V> RVX_INLINE V differenceOf(V a, V b) {
    if constexpr (std::is_same_v<V, F32x8>) {
        return max(splat(0.0f), sub(a, b));
    } else {
        return subSaturated(a, b);
    }
}

// What every kernel of morphology works on: output rows firstRow .. lastRow - 1 of a region, a replicated border with
// any sides in memory, and scratch. Kernels that serve constant borders, too, say so.
template <class T> struct MorphTask {
    Plane<const T> src;
    Plane<T> dst;
    RoiSize roi;
    std::int64_t firstRow, lastRow;
    std::int64_t channels;
    Border border;
    std::uint8_t *scratch;
    std::int64_t scratchBytes;
    const T *constant = nullptr; // the pixel outside, where the border is constant

    constexpr std::int64_t pixelBytes() const { return channels * static_cast<std::int64_t>(sizeof(T)); }
    const T *row(std::int64_t y) const { return src.row(borderRow(border, y, roi.height).index); }
    void collect(const T **rows, std::int64_t first, std::int64_t count) const {
        collectRows(rows, src, border, roi.height, first, count);
    }
};

// Scratch rows end with this many bytes of slack, so that steps inside scratch work on whole vectors only.
constexpr std::int64_t rowSlack = 32;

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
        } else if (pixels > 0) {
            store(dst, splat(value), Part{static_cast<int>(pixels)});
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

// Few elements, mostly: a call costs more than they do.
template <class T> RVX_INLINE void copyElements(T *dst, const T *src, std::int64_t n) {
    using V = Vec<T>;
    if (n >= 16 * V::lanes) {
        std::memcpy(static_cast<void *>(dst), src, static_cast<std::size_t>(n) * sizeof(T));
    } else if (n >= V::lanes) {
        for (std::int64_t x = 0; x + V::lanes < n; x += V::lanes) {
            store(dst + x, load<V>(src + x));
        }
        store(dst + n - V::lanes, load<V>(src + n - V::lanes));
    } else if (n > 0) {
        const Part part{static_cast<int>(n)};
        store(dst, load<V>(src, part), part);
    }
}

// What an empty mask does.
template <class T> inline void copyRows(const MorphTask<T> &task) {
    for (std::int64_t y = task.firstRow; y < task.lastRow; ++y) {
        std::memmove(static_cast<void *>(task.dst.row(y)), task.src.row(y),
                     static_cast<std::size_t>(task.roi.width * task.pixelBytes()));
    }
}

template <class T>
inline void copyInterval(T *dst, const T *row, const Interval &interval, std::int64_t channels,
                         const T *constant = nullptr) {
    T *const first = dst + interval.before * channels, *const end = first + interval.columns * channels;
    copyElements(first, row + interval.from * channels, interval.columns * channels);
    repeatPixel(dst, interval.before, constant != nullptr ? constant : first, channels);
    repeatPixel(end, interval.behind, constant != nullptr ? constant : end - channels, channels);
}

// How many output pixels' rows fit: `rows` scratch rows of so many pixels and `margin` more, in `bytes`.
constexpr std::int64_t fittingPixels(std::int64_t bytes, std::int64_t rows, std::int64_t margin,
                                     std::int64_t pixelBytes) {
    return (bytes / rows / 32 * 32 - rowSlack) / pixelBytes - margin;
}

// The same, but no more than keeps a block in a cache (the second-level one beside its source rows), unless that makes
// tiles so narrow that the margins weigh.
inline std::int64_t tilePixels(std::int64_t width, std::int64_t bytes, std::int64_t rows, std::int64_t margin,
                               std::int64_t pixelBytes, std::int64_t cacheBytes = 128 * 1024) {
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
    // Exactly n elements, at least a vector, without reading behind the last one's; dst is not src.
    void overlapping(std::int64_t n) const {
        std::int64_t x = 0;
        for (; x + 2 * V::lanes <= n; x += 2 * V::lanes) {
            store(dst + x, at(x));
            store(dst + x + V::lanes, at(x + V::lanes));
        }
        for (; x < n; x += V::lanes) {
            const std::int64_t from = std::min(x, n - V::lanes);
            store(dst + from, at(from));
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

// Extrema of 2, 4, 8 .. pixels, a stage each, all of them in registers. The first stage loads its pixels twice; each
// further one joins a vector with the one behind it, so it is a vector behind the stage before. In place of the n
// elements that the row holds, by whole vectors.
template <class T, class Op, int pixelBytes, int stages> inline void doubleRows(T *row, std::int64_t n) {
    using V = Vec<T>;
    constexpr std::int64_t pixel = pixelBytes / static_cast<std::int64_t>(sizeof(T));
    const std::int64_t vectors = (n - pixel + V::lanes - 1) / V::lanes;
    const auto pairs = [row](std::int64_t k) {
        return Op::of(load<V>(row + k * V::lanes), load<V>(row + k * V::lanes + pixel));
    };
    V latest[stages] = {V{}, pairs(0)}; // that each stage has taken
    const auto pass = [&]<int... stage>(V next, std::integer_sequence<int, stage...>) {
        const auto join = [&]<int s>(std::integral_constant<int, s>) {
            const V joined = Op::of(latest[s], shiftedIn<(pixelBytes << s)>(latest[s], next));
            latest[s] = next;
            next = joined;
        };
        (join(std::integral_constant<int, stage + 1>{}), ...);
        return next;
    };
    constexpr int behind = stages - 1;
    constexpr auto further = std::make_integer_sequence<int, behind>{};
    std::int64_t k = 1;
    for (; k < behind; ++k) {
        pass(k < vectors ? pairs(k) : latest[1], further);
    }
    for (; k + 1 < vectors; k += 2) {
        const V first = pass(pairs(k), further), second = pass(pairs(k + 1), further);
        store(row + (k - behind) * V::lanes, first);
        store(row + (k + 1 - behind) * V::lanes, second);
    }
    if (k < vectors) {
        store(row + (k - behind) * V::lanes, pass(pairs(k), further));
        ++k;
    }
    for (; k < vectors + behind; ++k) { // nothing that counts lies behind the last vector
        store(row + (k - behind) * V::lanes, pass(latest[1], further));
    }
}

// As many stages as make up the length, or as shifts of less than a vector allow. Tells the length of the extrema; the
// row's last length - 1 pixels are none.
template <class T, class Op, int pixelBytes>
inline std::int64_t doubleRowsOfPixels(T *row, std::int64_t n, std::int64_t length) {
    const auto reaches = [&](int stages) { return length >= 2 << stages; }; // one more would not be too many
    if constexpr (pixelBytes << 4 < 32) {
        if (reaches(4)) {
            return doubleRows<T, Op, pixelBytes, 5>(row, n), 32;
        }
    }
    if constexpr (pixelBytes << 3 < 32) {
        if (reaches(3)) {
            return doubleRows<T, Op, pixelBytes, 4>(row, n), 16;
        }
    }
    if constexpr (pixelBytes << 2 < 32) {
        if (reaches(2)) {
            return doubleRows<T, Op, pixelBytes, 3>(row, n), 8;
        }
    }
    if constexpr (pixelBytes << 1 < 32) {
        return doubleRows<T, Op, pixelBytes, 2>(row, n), 4;
    } else {
        return 1;
    }
}

template <class T, class Op>
inline std::int64_t doubleRows(T *row, std::int64_t n, std::int64_t length, std::int64_t channels) {
    constexpr int bytes = sizeof(T);
    if (length <= 6) {
        return 1;
    }
    switch (channels) {
    case 1:
        return doubleRowsOfPixels<T, Op, bytes>(row, n, length);
    case 3:
        return doubleRowsOfPixels<T, Op, 3 * bytes>(row, n, length);
    case 4:
        return doubleRowsOfPixels<T, Op, 4 * bytes>(row, n, length);
    default:
        return 1;
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
