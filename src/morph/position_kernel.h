// Erosion and dilation with any mask: the extremum over all set positions, position by position, for as many vectors at
// a time as fit in registers. Where every column under the mask exists, pixels are read straight from the source;
// elsewhere from a ring of extended rows in scratch. The mask is taken 64 columns at a time, as one bit word per mask
// row; further columns continue from what stands in the destination. Any scratch of morphBufferBytes suffices.
#pragma once

#include "kernel/scratch.h"
#include "morph/row_extrema.h"

#include "rvxcv/morph.h"

#include <bit>

namespace rvxcv {

// One output row. rows[j] + i * channels is the pixel under mask position (i, j) of the row's first output pixel.
template <class T, class Op, bool padded> struct PositionRow {
    using V = Vec<T>;
    const T *const *rows;
    const std::uint64_t *bits; // of each mask row
    std::int64_t maskRows;
    std::int64_t channels;
    T *dst;
    bool proceed; // from what dst holds

    template <int vectors, class Span> RVX_INLINE void run(std::int64_t x, Span span) const {
        V extremum[vectors];
        for (int v = 0; v < vectors; ++v) {
            extremum[v] = proceed ? load<V>(dst + x + v * V::lanes, span) : splat(Op::template neutral<T>());
        }
        for (std::int64_t j = 0; j < maskRows; ++j) {
            const T *row = rows[j] + x;
            for (std::uint64_t rest = bits[j]; rest != 0; rest &= rest - 1) {
                const T *at = row + std::countr_zero(rest) * channels;
                for (int v = 0; v < vectors; ++v) {
                    if constexpr (padded) {
                        extremum[v] = Op::of(extremum[v], load<V>(at + v * V::lanes));
                    } else {
                        extremum[v] = Op::of(extremum[v], load<V>(at + v * V::lanes, span));
                    }
                }
            }
        }
        for (int v = 0; v < vectors; ++v) {
            store(dst + x + v * V::lanes, extremum[v], span);
        }
    }
};

template <class T, class Op> class PositionKernel {
public:
    // The mask of the record. scratch: two pointers and a word for every mask row, then extended rows.
    PositionKernel(const MorphTask<T> &task, const MorphSpec &spec) : task_(task), spec_(spec) {
        Scratch areas(task.scratch, task.scratchBytes);
        rows_ = areas.take<const T *>(2 * std::int64_t{spec.maskHeight});
        bits_ = areas.take<std::uint64_t>(spec.maskHeight);
        lines_ = areas.take<std::uint8_t>(0, 32);
        room_ = task.scratchBytes - (lines_ - task.scratch);
    }

    void run() {
        // Output columns whose whole mask exists.
        const std::int64_t width = task_.roi.width;
        std::int64_t first = task_.border.left ? 0 : std::clamp<std::int64_t>(spec_.anchorX, 0, width);
        std::int64_t last = task_.border.right ? width : std::clamp<std::int64_t>(width - spec_.rightExtent, 0, width);
        if ((last - first) * task_.channels < Vec<T>::lanes && !(first == 0 && last == width)) {
            first = last = width;
        }
        overColumns(first, last, 64, [&](std::int64_t i0, std::int64_t) { interior(first, last, i0); });
        edge(0, first);
        edge(last, width);
    }

private:
    // For the mask's columns from i0 on, `most` at a time, and the output columns first .. last - 1.
    template <class Visit>
    void overColumns(std::int64_t first, std::int64_t last, std::int64_t most, const Visit &visit) {
        for (std::int64_t i0 = 0; first < last && i0 < spec_.maskWidth; i0 += most) {
            const std::int64_t columns = std::min<std::int64_t>(most, spec_.maskWidth - i0);
            for (std::int64_t j = 0; j < spec_.maskHeight; ++j) {
                bits_[j] = 0;
                for (std::int64_t i = 0; i < columns; ++i) {
                    const bool set = spec_.maskCopy[j * spec_.maskWidth + i0 + i] != 0;
                    bits_[j] |= static_cast<std::uint64_t>(set) << i;
                }
            }
            visit(i0, columns);
        }
    }

    void interior(std::int64_t first, std::int64_t last, std::int64_t i0) {
        for (std::int64_t y = task_.firstRow; y < task_.lastRow; ++y) {
            for (std::int64_t j = 0; j < spec_.maskHeight; ++j) {
                rows_[j] = task_.row(y + j - spec_.anchorY) + (first + i0 - spec_.anchorX) * task_.channels;
            }
            outputRow<false>(rows_, y, first, last, i0);
        }
    }

    // Tiles of columns; the ring holds the extended source rows under the mask, and its pointers stand in the array
    // twice, so that those of an output row follow each other.
    void edge(std::int64_t first, std::int64_t last) {
        const std::int64_t height = spec_.maskHeight, bytes = task_.pixelBytes();
        std::int64_t most = std::min(spec_.maskWidth, 64);
        while (most > 1 && fittingPixels(room_, height, most - 1, bytes) < std::min(last - first, most)) {
            most /= 2;
        }
        const std::int64_t tile = std::max<std::int64_t>(tilePixels(last - first, room_, height, most - 1, bytes), 1);
        const std::int64_t lineStep = scratchRowStep(tile + most - 1, bytes);
        for (std::int64_t k = 0; k < 2 * height; ++k) {
            rows_[k] = reinterpret_cast<const T *>(lines_ + k % height * lineStep);
        }
        for (std::int64_t x0 = first; x0 < last; x0 += tile) {
            const std::int64_t x1 = std::min(x0 + tile, last);
            overColumns(x0, x1, most, [&](std::int64_t i0, std::int64_t columns) {
                const std::int64_t from = x0 + i0 - spec_.anchorX;
                std::int64_t made = task_.firstRow - spec_.anchorY;
                for (std::int64_t y = task_.firstRow, slot = 0; y < task_.lastRow; ++y) {
                    for (; made <= y + spec_.bottomExtent; ++made) {
                        const std::int64_t into = (made - task_.firstRow + spec_.anchorY) % height;
                        copyInterval(reinterpret_cast<T *>(lines_ + into * lineStep), task_.row(made), from,
                                     from + x1 - x0 + columns - 2, task_);
                    }
                    outputRow<true>(rows_ + slot, y, x0, x1, i0);
                    slot = slot + 1 == height ? 0 : slot + 1;
                }
            });
        }
    }

    template <bool padded>
    void outputRow(const T *const *rows, std::int64_t y, std::int64_t first, std::int64_t last, std::int64_t i0) {
        const std::int64_t channels = task_.channels;
        const PositionRow<T, Op, padded> row{
            rows, bits_, spec_.maskHeight, channels, task_.dst.row(y) + first * channels, i0 != 0};
        sweep<Vec<T>::lanes, 4>((last - first) * channels, row);
    }

    const MorphTask<T> &task_;
    const MorphSpec &spec_;
    const T **rows_;
    std::uint64_t *bits_;
    std::uint8_t *lines_;
    std::int64_t room_;
};

} // namespace rvxcv
