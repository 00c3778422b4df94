// Erosion and dilation with any mask: the extremum over all set positions, position by position, for as many vectors at
// a time as fit in registers. A position is an offset from the first pixel under the mask: with a constant distance
// between rows, one list of offsets serves every output row. Pixels are read straight from the source where the whole
// mask lies on it, elsewhere from a block of extended rows in scratch; narrow images are extended altogether, which is
// cheaper than their edges. Any scratch of morphBufferBytes suffices: the mask's columns are taken as many at a time as
// fit, later ones continuing from what stands in the destination.
#pragma once

#include "kernel/scratch.h"
#include "morph/row_extrema.h"

#include "rvxcv/morph.h"

namespace rvxcv {

// One output row: dst[x] = extremum of first[x + offset] over the offsets (in bytes).
template <class T, class Op, bool padded> struct PositionRow {
    using V = Vec<T>;
    const T *first;
    const std::int64_t *offsets;
    std::int64_t count;
    T *dst;
    bool proceed; // from what dst holds

    template <int vectors, class Span> RVX_INLINE void run(std::int64_t x, Span span) const {
        V extremum[vectors];
        for (int v = 0; v < vectors; ++v) {
            extremum[v] = proceed ? load<V>(dst + x + v * V::lanes, span) : splat(Op::template neutral<T>());
        }
        const T *under = first + x;
        for (std::int64_t k = 0; k < count; ++k) {
            const T *at = byteOffset(under, offsets[k]);
            for (int v = 0; v < vectors; ++v) {
                if constexpr (padded) {
                    extremum[v] = Op::of(extremum[v], load<V>(at + v * V::lanes));
                } else {
                    extremum[v] = Op::of(extremum[v], load<V>(at + v * V::lanes, span));
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
    PositionKernel(const MorphTask<T> &task, const MorphSpec &spec) : task_(task), spec_(spec) {
        offsets_ = Scratch(task.scratch, task.scratchBytes).take<std::int64_t>(0);
        room_ = task.scratchBytes - (reinterpret_cast<std::uint8_t *>(offsets_) - task.scratch) - 31;
    }

    void run() {
        const std::int64_t width = task_.roi.width, height = task_.roi.height;
        // Output columns and rows whose whole mask lies on the source.
        std::int64_t left = task_.border.left ? 0 : spec_.anchorX;
        std::int64_t right = task_.border.right ? width : width - spec_.rightExtent;
        const std::int64_t top = std::max<std::int64_t>(task_.firstRow, task_.border.top ? 0 : spec_.anchorY);
        const std::int64_t bottom =
            std::min<std::int64_t>(task_.lastRow, task_.border.bottom ? height : height - spec_.bottomExtent);
        constexpr std::int64_t worthwhile = 2048; // bytes of a row read in place
        if ((right - left) * task_.pixelBytes() < worthwhile || bottom <= top) {
            extended(0, width, task_.firstRow, task_.lastRow);
            return;
        }
        inPlace(left, right, top, bottom);
        extended(0, width, task_.firstRow, top);
        extended(0, width, bottom, task_.lastRow);
        extended(0, left, top, bottom);
        extended(right, width, top, bottom);
    }

private:
    // The offsets of the set positions in mask columns i0 .. i0 + columns - 1, from the pixel under column i0.
    std::int64_t listOffsets(std::int64_t i0, std::int64_t columns, std::int64_t rowStep) {
        std::int64_t count = 0;
        for (std::int64_t j = 0; j < spec_.maskHeight; ++j) {
            for (std::int64_t i = 0; i < columns; ++i) {
                if (spec_.maskCopy[j * spec_.maskWidth + i0 + i] != 0) {
                    offsets_[count++] = j * rowStep + i * task_.pixelBytes();
                }
            }
        }
        return count;
    }

    // The most mask columns whose lists fit beside `rows` extended rows at least one pixel wide, or more if that leaves
    // room for `wanted` pixels.
    std::int64_t columnsAtOnce(std::int64_t rows, std::int64_t wanted) const {
        std::int64_t columns = spec_.maskWidth;
        while (columns > 1 &&
               fittingPixels(room_ - listBytes(columns), rows, columns - 1, task_.pixelBytes()) < wanted) {
            columns = (columns + 1) / 2;
        }
        return columns;
    }
    std::int64_t listBytes(std::int64_t columns) const {
        return spec_.maskHeight * columns * static_cast<std::int64_t>(sizeof(std::int64_t));
    }

    void inPlace(std::int64_t left, std::int64_t right, std::int64_t top, std::int64_t bottom) {
        const std::int64_t columns =
            std::clamp<std::int64_t>(room_ / (8 * std::int64_t{spec_.maskHeight}), 1, spec_.maskWidth);
        for (std::int64_t i0 = 0; i0 < spec_.maskWidth; i0 += columns) {
            const std::int64_t count = listOffsets(i0, std::min(columns, spec_.maskWidth - i0), task_.src.step);
            for (std::int64_t y = top; y < bottom; ++y) {
                const T *first = task_.src.row(y - spec_.anchorY) + (left + i0 - spec_.anchorX) * task_.channels;
                outputRow<false>(first, count, y, left, right, i0);
            }
        }
    }

    // A block of extended source rows serves as many output rows as it has more rows than the mask.
    void extended(std::int64_t left, std::int64_t right, std::int64_t top, std::int64_t bottom) {
        if (left >= right || top >= bottom) {
            return;
        }
        const std::int64_t height = spec_.maskHeight, bytes = task_.pixelBytes();
        const std::int64_t columns = columnsAtOnce(height, std::min<std::int64_t>(right - left, spec_.maskWidth));
        Scratch areas(offsets_, room_ + 31);
        areas.take<std::int64_t>(height * columns);
        auto *const lines = areas.take<std::uint8_t>(0, 32);
        const std::int64_t room = room_ - listBytes(columns);
        const std::int64_t tile = std::max<std::int64_t>(tilePixels(right - left, room, height, columns - 1, bytes), 1);
        const std::int64_t lineStep = scratchRowStep(tile + columns - 1, bytes);
        const std::int64_t cachedLines = std::max(64 * 1024 / lineStep, 2 * height);
        const std::int64_t outputs = std::min(room / lineStep, cachedLines) - height + 1;
        for (std::int64_t x0 = left; x0 < right; x0 += tile) {
            const std::int64_t x1 = std::min(x0 + tile, right);
            for (std::int64_t i0 = 0; i0 < spec_.maskWidth; i0 += columns) {
                const std::int64_t taken = std::min(columns, spec_.maskWidth - i0);
                const std::int64_t count = listOffsets(i0, taken, lineStep);
                const std::int64_t from = x0 + i0 - spec_.anchorX, to = from + x1 - x0 + taken - 2;
                for (std::int64_t y0 = top; y0 < bottom; y0 += outputs) {
                    const std::int64_t y1 = std::min(y0 + outputs, bottom);
                    for (std::int64_t k = 0; k < y1 - y0 + height - 1; ++k) {
                        copyInterval(reinterpret_cast<T *>(lines + k * lineStep), task_.row(y0 + k - spec_.anchorY),
                                     from, to, task_);
                    }
                    for (std::int64_t y = y0; y < y1; ++y) {
                        outputRow<true>(reinterpret_cast<const T *>(lines + (y - y0) * lineStep), count, y, x0, x1, i0);
                    }
                }
            }
        }
    }

    template <bool padded>
    void outputRow(const T *first, std::int64_t count, std::int64_t y, std::int64_t left, std::int64_t right,
                   std::int64_t i0) {
        const std::int64_t channels = task_.channels;
        sweep<Vec<T>::lanes, 4>(
            (right - left) * channels,
            PositionRow<T, Op, padded>{first, offsets_, count, task_.dst.row(y) + left * channels, i0 != 0});
    }

    const MorphTask<T> &task_;
    const MorphSpec &spec_;
    std::int64_t *offsets_;
    std::int64_t room_;
};

} // namespace rvxcv
