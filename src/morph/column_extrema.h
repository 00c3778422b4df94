// Extrema along columns: for each of some output rows the extremum of the `height` rows from it on. The operation is
// any that is associative and idempotent: minimum, maximum, and, or.
#pragma once

#include "kernel/vec.h"

#include <algorithm>

namespace rvxcv {

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
            prefetch(row + 2 * vectors * V::lanes);
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

// Three or four rows at a time share the rows between them in registers; higher windows are cut into blocks of their
// own height.
constexpr std::int64_t blockHeight(std::int64_t windowHeight) {
    return windowHeight < 4 ? std::min<std::int64_t>(windowHeight, 2) : windowHeight < 8 ? 4 : windowHeight;
}

template <class T, class Op>
void reduceColumns(const T *const *rows, std::int64_t height, std::int64_t outputs, T *out, std::int64_t outStep,
                   std::int64_t n) {
    constexpr int lanes = Vec<T>::lanes;
    if (outputs == 4 && height >= 4) {
        sweep<lanes, 2>(n, ColumnExtremaFew<T, Op, 4>{rows, height, out, outStep});
    } else if (outputs == 2 && height >= 2) {
        sweep<lanes, 4>(n, ColumnExtremaFew<T, Op, 2>{rows, height, out, outStep});
    } else {
        sweep<lanes, 4>(n, ColumnExtrema<T, Op>{rows, height, outputs, out, outStep});
    }
}

} // namespace rvxcv
