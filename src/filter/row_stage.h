// The driver of the pipeline's row stage: which pixels of a row are filtered straight from the source, and which from a
// patch, a piece of the extended row that is built in the scratch buffer.
//
//     |  left margin  |              the row's W pixels              |  right margin  |
//                     [ patch ) [ straight from the source ) [ patch )
//
// The scratch buffer's size depends on the kernel alone, so only the pixels near the ends get patches, and those of
// long kernels come in several pieces. Pieces begin at multiples of sixteen pixels, where the rounding rule counts
// from. Where the patch has other elements than the source, all pixels come from patches: a row is then widened once
// rather than once for every tap, which pays where the scratch has room for whole rows.
#pragma once

#include "filter/pipeline_taps.h"
#include "filter/row_kernels.h"
#include "kernel/border.h"

#include <algorithm>

namespace rvxcv {

template <class T, class D> struct RowTask {
    Plane<const T> src;
    D *const *dstRows;
    RoiSize roi;
    std::int64_t kernelSize, anchor;
    Border border;
    const T *borderValue; // one element a channel
};

// The extended row's pixels first..last-1, and zeros in the `padding` pixels behind them.
template <int channels, class E, class T, class D>
void buildPatch(E *patch, const RowTask<T, D> &task, const T *row, std::int64_t first, std::int64_t last,
                std::int64_t padding) {
    const std::int64_t width = task.roi.width;
    const std::int64_t inside = task.border.left ? first : std::clamp<std::int64_t>(0, first, last);
    const std::int64_t outside = task.border.right ? last : std::clamp(width, inside, last);
    const bool constant = task.border.kind == BorderConstant;
    const auto fill = [&](std::int64_t pixels, const T *pixel) {
        E value[channels];
        for (int c = 0; c < channels; ++c) {
            value[c] = static_cast<E>(loadScalar(pixel + c));
        }
        for (; pixels > 0; --pixels, patch += channels) {
            for (int c = 0; c < channels; ++c) {
                storeScalar(patch + c, value[c]);
            }
        }
    };

    fill(inside - first, constant ? task.borderValue : row);
    const std::int64_t elements = (outside - inside) * channels;
    if constexpr (std::is_same_v<E, T>) {
        std::memcpy(static_cast<void *>(patch), row + inside * channels,
                    static_cast<std::size_t>(elements) * sizeof(T));
    } else {
        widenRow(patch, row + inside * channels, elements);
    }
    patch += elements;
    fill(last - outside, constant ? task.borderValue : row + (width - 1) * channels);
    if (padding > 0) {
        std::memset(static_cast<void *>(patch), 0, static_cast<std::size_t>(padding * channels) * sizeof(E));
    }
}

// `patch` has room for `capacity` pixels, at least kernelSize + 15. Patches wait to be filtered until there are
// several: what has just been stored piece by piece is slow to load in vectors.
template <int channels, class Kernel, class Output, class E, class T, class D>
void filterRows(const RowTask<T, D> &task, const Kernel &kernel, const Output &output, E *patch,
                std::int64_t capacity) {
    const std::int64_t width = task.roi.width, before = task.anchor, behind = task.kernelSize - 1 - task.anchor;
    const std::int64_t piece = (capacity - (task.kernelSize - 1)) / unit * unit;
    const std::int64_t bulkLast = (width - (task.border.right ? 0 : behind)) / unit * unit;
    std::int64_t bulkFirst = task.border.left ? 0 : roundUp(before, unit);
    if (bulkFirst >= bulkLast || !std::is_same_v<E, T>) {
        bulkFirst = width; // patches only
    }
    constexpr int mostRuns = 8;
    Run<E, D> runs[mostRuns];
    int waiting = 0;
    std::int64_t used = 0; // pixels of their patches
    for (std::int64_t y = 0; y < task.roi.height; ++y) {
        const T *row = task.src.row(y);
        D *dst = task.dstRows[y];
        for (std::int64_t x = 0; x < width;) {
            if constexpr (std::is_same_v<E, T>) {
                if (x == bulkFirst) {
                    const Run<E, D> bulk{row + (x - before) * channels, dst + x * channels, bulkLast - x};
                    filterRuns<channels>(kernel, output, &bulk, 1);
                    x = bulkLast;
                    continue;
                }
            }
            const std::int64_t pixels = std::min((x < bulkFirst ? bulkFirst : width) - x, piece);
            const std::int64_t padding = roundUp(pixels, unit) - pixels;
            const std::int64_t extended = pixels + task.kernelSize - 1 + padding;
            if (waiting == mostRuns || used + extended > capacity) {
                filterRuns<channels>(kernel, output, runs, waiting);
                waiting = 0;
                used = 0;
            }
            E *const built = patch + used * channels;
            buildPatch<channels>(built, task, row, x - before, x + pixels + behind, padding);
            runs[waiting++] = {built, dst + x * channels, pixels};
            used += extended;
            x += pixels;
        }
    }
    filterRuns<channels>(kernel, output, runs, waiting);
}

} // namespace rvxcv
