// The driver of the pipeline's column stage: a few output rows at a time, along the row in units of sixteen elements.
// The taps are read from the caller's kernel and the sums stay in registers, so the scratch buffer is hardly needed.
#pragma once

#include "filter/column_kernels.h"
#include "kernel/plane.h"

#include "rvxcv/types.h"

namespace rvxcv {

template <class T, class D> struct ColumnTask {
    const T *const *srcRows;
    Plane<D> dst;
    RoiSize roi;
};

template <class Rounding, int rows, int units, class Kernel, class Output, class T, class D, class Span>
RVX_INLINE void filterBlock(const ColumnTask<T, D> &task, const Kernel &kernel, const Output &output, std::int64_t y,
                            std::int64_t x, Span span) {
    typename Kernel::Sum sum[rows][units];
    kernel.sums(sum, ColumnSource<T, Span>{task.srcRows + y, x, span});
    for (int r = 0; r < rows; ++r) {
        D *dst = task.dst.row(y + r) + x;
        for (int u = 0; u < units; ++u) {
            output.template store<Rounding>(dst + u * unit, sum[r][u], span);
        }
    }
}

// The last n < 16 elements of a row that has at least sixteen: the sums are those of the unit that ends with the row,
// but only the last n are stored, for the others round differently.
template <int rows, class Kernel, class Output, class T, class D>
RVX_INLINE void filterEnd(const ColumnTask<T, D> &task, const Kernel &kernel, const Output &output, std::int64_t y,
                          std::int64_t end, std::int64_t n) {
    typename Kernel::Sum sum[rows][1];
    kernel.sums(sum, ColumnSource<T, Full>{task.srcRows + y, end - unit, Full{}});
    for (int r = 0; r < rows; ++r) {
        D results[unit];
        output.template store<LastRounding<Output>>(results, sum[r][0], Full{});
        std::memcpy(static_cast<void *>(task.dst.row(y + r) + end - n), results + unit - n,
                    static_cast<std::size_t>(n) * sizeof(D));
    }
}

// Task, kernel and output are copies, which no store can change: their members stay in registers.
template <int channels, int rows, int units, class Kernel, class Output, class T, class D>
void filterStrip(const ColumnTask<T, D> task, const Kernel kernel, const Output output, std::int64_t y) {
    const std::int64_t elements = std::int64_t{task.roi.width} * channels;
    std::int64_t rest = task.roi.width % unit * channels, x = 0;
    const std::int64_t whole = elements - rest;
    for (; x + units * unit <= whole; x += units * unit) {
        filterBlock<Nearest, rows, units>(task, kernel, output, y, x, Full{});
    }
    if constexpr (units > 1) {
        for (; x < whole; x += unit) {
            filterBlock<Nearest, rows, 1>(task, kernel, output, y, x, Full{});
        }
    }
    for (; rest >= unit; x += unit, rest -= unit) {
        filterBlock<LastRounding<Output>, rows, 1>(task, kernel, output, y, x, Full{});
    }
    if (rest > 0 && elements >= unit) {
        filterEnd<rows>(task, kernel, output, y, elements, rest);
    } else if (rest > 0) {
        for (int r = 0; r < rows; ++r) {
            const Part part{static_cast<int>(rest)};
            filterBlock<LastRounding<Output>, 1, 1>(task, kernel, output, y + r, x, part);
        }
    }
}

template <int channels, class Kernel, class Output, class T, class D>
void filterColumns(const ColumnTask<T, D> &task, const Kernel &kernel, const Output &output) {
    constexpr int together = Kernel::rowsTogether;
    std::int64_t y = 0;
    if (kernel.longEnoughFor(together)) {
        for (; y + together <= task.roi.height; y += together) {
            filterStrip<channels, together, Kernel::unitsTogether>(task, kernel, output, y);
        }
    }
    for (; y < task.roi.height; ++y) {
        filterStrip<channels, 1, Kernel::unitsAlone>(task, kernel, output, y);
    }
}

} // namespace rvxcv
