// Minimum and maximum under windows of 3x3 pixels, and of 5x5 where rows are short or pixels wide (chain_window.h has
// the others), straight from the source to the destination: vector by vector down the rows. A source row is combined
// along itself from as many loads as the window has columns, and the rows above it are still in registers:
//
//     row k      x - 1, x, x + 1  ->  extremum along the row  ->  with those of rows k - 1 and k - 2: output row k - 1
//
// In the first and the last vector of a row, loads that would reach over the edge repeat the edge pixel by a shuffle.
#pragma once

#include "morph/edge_load.h"
#include "morph/window_result.h"

namespace rvxcv {

template <class T, class Op, int side, class Result> class SmallWindow {
    using V = Vec<T>;
    static constexpr std::int64_t vectorBytes = 32, reach = side / 2;

public:
    static bool applies(const MorphTask<T> &task, Window window) {
        const std::int64_t margin = reach * task.pixelBytes();
        return window == Window{-reach, -reach, reach, reach} && margin <= vectorBytes &&
               task.roi.width * task.pixelBytes() >= vectorBytes + std::max(vectorBytes, 2 * margin);
    }

    SmallWindow(const MorphTask<T> &task, Plane<const T> other)
        : task_(task), other_(other), pixelBytes_(task.pixelBytes()), rowBytes_(task.roi.width * pixelBytes_) {
        const EdgePixels edge(pixelBytes_);
        for (int i = 0; i < side; ++i) {
            loads_.offsets[i] = (i - reach) * pixelBytes_;
        }
        for (int i = 0; i < reach; ++i) {
            loads_.begin[i] = EdgeLoad::atBegin((i - reach) * pixelBytes_, edge);
            loads_.end[i] = EdgeLoad::atEnd((i + 1) * pixelBytes_, edge);
        }
    }

    void run() const {
        // Output rows at once: fewer of long rows, which are each on a page of their own.
        constexpr std::int64_t most = 32;
        const std::int64_t block = rowBytes_ > 2048 ? most / 2 : most;
        for (std::int64_t y = task_.firstRow; y < task_.lastRow; y += block) {
            const std::int64_t count = std::min(task_.lastRow - y, block);
            const T *rows[most + side - 1];
            task_.collect(rows, y - reach, count + side - 1);
            filter(rows, y, count);
        }
    }

private:
    void filter(const T *const *rows, std::int64_t y, std::int64_t count) const {
        const Loads loads = loads_; // in registers: stores may not be taken to change it
        // The extremum along the row around each pixel of a vector.
        const auto inside = [&loads](const T *row) {
            V extremum = load<V>(row);
            for (int i = 0; i < side; ++i) {
                extremum = i == reach ? extremum : Op::of(extremum, load<V>(byteOffset(row, loads.offsets[i])));
            }
            return extremum;
        };
        const auto atBegin = [&loads](const T *row) {
            V extremum = load<V>(row);
            for (int i = 0; i < reach; ++i) {
                extremum = Op::of(extremum, loads.begin[i].template load<V>(row));
                extremum = Op::of(extremum, load<V>(byteOffset(row, loads.offsets[reach + 1 + i])));
            }
            return extremum;
        };
        const auto atEnd = [&loads](const T *row) {
            V extremum = load<V>(row);
            for (int i = 0; i < reach; ++i) {
                extremum = Op::of(extremum, load<V>(byteOffset(row, loads.offsets[i])));
                extremum = Op::of(extremum, loads.end[i].template load<V>(row));
            }
            return extremum;
        };
        std::int64_t x = 0; // bytes
        if (!task_.border.left) {
            downRows<1>(rows, y, 0, count, atBegin);
            x = vectorBytes;
        }
        const std::int64_t lastVector = rowBytes_ - vectorBytes;
        for (; x + 2 * vectorBytes <= lastVector; x += 2 * vectorBytes) {
            downRows<2>(rows, y, x, count, inside);
        }
        for (; x < lastVector; x += vectorBytes) {
            downRows<1>(rows, y, std::min(x, lastVector - reach * pixelBytes_), count, inside);
        }
        if (task_.border.right) {
            downRows<1>(rows, y, lastVector, count, inside);
        } else {
            downRows<1>(rows, y, lastVector, count, atEnd);
        }
    }

    // Neighbouring vectors of every output row, from byte x on; alongRow gives the extremum along a source row.
    template <int vectors, class AlongRow>
    RVX_INLINE void downRows(const T *const *rows, std::int64_t y, std::int64_t x, std::int64_t count,
                             const AlongRow &alongRow) const {
        constexpr std::int64_t ahead = 128; // the next columns are as far from the prefetcher as the next rows
        constexpr bool outAhead = side == 3 || sizeof(T) > 1; // 5x5 bytes compute longer than their rows take to come
        V above[side - 1][vectors], next[vectors], common[vectors];
        for (int k = 0; k < side - 1; ++k) {
            for (int v = 0; v < vectors; ++v) {
                above[k][v] = alongRow(byteOffset(rows[k], x) + v * V::lanes);
            }
        }
        T *out = byteOffset(task_.dst.row(y), x);
        const T *other = byteOffset(other_.row(y), x);
        const std::int64_t outStep = task_.dst.step, otherStep = other_.step;
        for (std::int64_t k = 0; k < count; k += 2) {
            // Two output rows share all source rows but the first and the last.
            const T *row = byteOffset(rows[k + side - 1], x);
            prefetch(byteOffset(row, ahead));
            if constexpr (outAhead) {
                prefetch(byteOffset(out, ahead));
            }
            for (int v = 0; v < vectors; ++v) {
                common[v] = next[v] = alongRow(row + v * V::lanes);
                for (int i = 1; i < side - 1; ++i) {
                    common[v] = Op::of(common[v], above[i][v]);
                }
                const auto otherPixels = [&] { return load<V>(other + v * V::lanes); };
                store(out + v * V::lanes, Result::of(Op::of(common[v], above[0][v]), otherPixels));
            }
            out = byteOffset(out, outStep);
            other = byteOffset(other, otherStep);
            if (k + 1 == count) {
                return;
            }
            row = byteOffset(rows[k + side], x);
            prefetch(byteOffset(row, ahead));
            if constexpr (outAhead) {
                prefetch(byteOffset(out, ahead));
            }
            for (int v = 0; v < vectors; ++v) {
                const V last = alongRow(row + v * V::lanes);
                const auto otherPixels = [&] { return load<V>(other + v * V::lanes); };
                store(out + v * V::lanes, Result::of(Op::of(common[v], last), otherPixels));
                for (int i = 0; i < side - 3; ++i) {
                    above[i][v] = above[i + 2][v];
                }
                above[side - 3][v] = next[v];
                above[side - 2][v] = last;
            }
            out = byteOffset(out, outStep);
            other = byteOffset(other, otherStep);
        }
    }

    // Where a row is loaded from for each column of the window, in bytes, and its loads at the ends of the row.
    struct Loads {
        std::int64_t offsets[side];
        EdgeLoad begin[reach], end[reach];
    };

    const MorphTask<T> &task_;
    Plane<const T> other_;
    std::int64_t pixelBytes_, rowBytes_;
    Loads loads_;
};

} // namespace rvxcv
