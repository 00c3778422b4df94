// Minimum and maximum under short windows of one row that no chain serves (chain_window.h): up to six pixels from as
// many loads; more pixels in two steps, by way of a row of shorter extrema in scratch. In the first and the last vector
// of a row, loads that would reach over the edge repeat the edge pixel by a shuffle.
#pragma once

#include "morph/edge_load.h"
#include "morph/row_extrema.h"

namespace rvxcv {

template <class T, class Op> class RowWindow {
    using V = Vec<T>;
    static constexpr std::int64_t vectorBytes = 32, mostLength = 16, mostLoads = 6;

public:
    static bool applies(const MorphTask<T> &task, Window window) {
        const std::int64_t bytes = task.pixelBytes(), rowBytes = task.roi.width * bytes;
        return window.top == window.bottom && window.left <= 0 && window.right >= 0 && window.left < window.right &&
               window.right - window.left < mostLength && std::max(-window.left, window.right) * bytes <= vectorBytes &&
               rowBytes >= 3 * vectorBytes && 2 * rowBytes <= task.scratchBytes;
    }

    RowWindow(const MorphTask<T> &task, Window window)
        : task_(task), window_(window), length_(window.right - window.left + 1), n_(task.roi.width * task.channels) {
        const EdgePixels edge(task.pixelBytes());
        for (std::int64_t i = 0; i < -window.left; ++i) {
            begin_[i] = EdgeLoad::atBegin((window.left + i) * task.pixelBytes(), edge);
        }
        for (std::int64_t i = 0; i < window.right; ++i) {
            end_[i] = EdgeLoad::atEnd((i + 1) * task.pixelBytes(), edge);
        }
    }

    void run() const {
        const std::int64_t known = (length_ + mostLoads - 1) / mostLoads; // 1: a single step
        withConstant<mostLoads>(static_cast<int>((length_ + known - 1) / known), [&]<int loads>(Constant<loads>) {
            const T *from = known > 1 ? shortened(task_.firstRow, known) : nullptr;
            for (std::int64_t y = task_.firstRow; y < task_.lastRow; ++y) {
                const T *row = task_.row(y + window_.top), *next = nullptr;
                if (known > 1) {
                    next = y + 1 < task_.lastRow ? shortened(y + 1, known) : nullptr;
                } else {
                    from = row + V::lanes + window_.left * task_.channels;
                }
                finish<loads>(row, from, task_.dst.row(y), known);
                from = next;
            }
        });
    }

private:
    template <int n> using Constant = std::integral_constant<int, n>;

    // Elements of an output row between its first and its last vector, and how far apart its first and last loads are.
    std::int64_t between() const { return n_ - 2 * V::lanes; }
    std::int64_t span(std::int64_t known) const { return (length_ - known) * task_.channels; }

    // Extrema of `known` pixels for one output row: made a row ahead, since what was just stored is slow to be loaded.
    const T *shortened(std::int64_t y, std::int64_t known) const {
        const std::int64_t channels = task_.channels;
        const T *from = task_.row(y + window_.top) + V::lanes + window_.left * channels;
        T *const line = reinterpret_cast<T *>(task_.scratch) + (y % 2) * n_;
        if (known == 2) {
            RowStep<T, Op, 2>{from, line, channels, channels}.overlapping(between() + span(known));
        } else {
            RowStep<T, Op, 3>{from, line, channels, 2 * channels}.overlapping(between() + span(known));
        }
        return line;
    }

    template <int loads> RVX_INLINE void finish(const T *row, const T *from, T *dst, std::int64_t known) const {
        ends(row, dst);
        if constexpr (loads > 1) { // as every length has
            RowStep<T, Op, loads>{from, dst + V::lanes, known * task_.channels, span(known)}.overlapping(between());
        }
    }

    RVX_INLINE void ends(const T *row, T *dst) const {
        const std::int64_t last = n_ - V::lanes;
        store(dst, outerVector(row, task_.border.left ? 0 : -window_.left, 0));
        store(dst + last, outerVector(row + last, 0, task_.border.right ? 0 : window_.right));
    }

    // The extrema around a vector, where the first `begin` and the last `end` loads reach over an edge.
    RVX_INLINE V outerVector(const T *place, std::int64_t begin, std::int64_t end) const {
        V extremum = load<V>(place);
        for (std::int64_t i = 0; i < begin; ++i) {
            extremum = Op::of(extremum, begin_[i].template load<V>(place));
        }
        for (std::int64_t i = window_.left + begin; i <= window_.right - end; ++i) {
            extremum = Op::of(extremum, load<V>(place + i * task_.channels));
        }
        for (std::int64_t i = 0; i < end; ++i) {
            extremum = Op::of(extremum, end_[i].template load<V>(place));
        }
        return extremum;
    }

    const MorphTask<T> &task_;
    Window window_;
    std::int64_t length_, n_;
    EdgeLoad begin_[mostLength], end_[mostLength];
};

} // namespace rvxcv
