// Erosion and dilation with any mask: the extremum over all set positions, some of them at a time, later ones
// continuing from what stands in the destination. Masks that reach at most a vector to either side read straight from
// the source, and by shuffles at the ends of its rows. For others, and for narrow images, rows are extended in scratch;
// any scratch of morphBufferBytes suffices.
#pragma once

#include "kernel/scratch.h"
#include "morph/edge_load.h"
#include "morph/row_extrema.h"

#include "rvxcv/morph.h"

namespace rvxcv {

// Part of an output row: dst[x] = extremum of the pixels at x of some rows.
template <class T, class Op, int count, bool padded> struct PositionRow {
    using V = Vec<T>;
    const T *from[count];
    T *dst;
    bool proceed; // from what dst holds

    template <class Span> RVX_INLINE V at(std::int64_t x, Span span) const {
        V extremum = loadFrom(0, x, span);
        for (int k = 1; k < count; ++k) {
            extremum = Op::of(extremum, loadFrom(k, x, span));
        }
        return extremum;
    }
    template <class Span> RVX_INLINE void put(std::int64_t x, V extremum, Span span) const {
        store(dst + x, proceed ? Op::of(extremum, load<V>(dst + x, span)) : extremum, span);
    }
    template <int vectors, class Span> RVX_INLINE void run(std::int64_t x, Span span) const {
        for (int v = 0; v < vectors; ++v, x += V::lanes) {
            put(x, at(x, span), span);
        }
    }
    template <class Span> RVX_INLINE V loadFrom(int k, std::int64_t x, Span span) const {
        if constexpr (padded) {
            return load<V>(from[k] + x);
        } else {
            return load<V>(from[k] + x, span);
        }
    }
};

template <class T, class Op> class PositionKernel {
    using V = Vec<T>;
    static constexpr std::int64_t vectorBytes = 32;

public:
    PositionKernel(const MorphTask<T> &task, const MorphSpec &spec) : task_(task), spec_(spec) {}

    void run() {
        const std::int64_t bytes = task_.pixelBytes(), left = -std::int64_t{spec_.anchorX} * bytes,
                           right = (std::int64_t{spec_.maskWidth} - 1 - spec_.anchorX) * bytes;
        const bool near = left >= -vectorBytes && left <= vectorBytes && right >= -vectorBytes &&
                          right <= vectorBytes && std::max(-left, right) <= vectorBytes / bytes * bytes;
        if (near && spec_.maskHeight <= mostHeight && task_.roi.width * bytes >= 4 * vectorBytes) {
            inPlace();
        } else {
            extended();
        }
    }

private:
    // A set element of the mask.
    struct Element {
        std::int64_t row, column;
    };
    static constexpr int mostElements = 8;
    static constexpr std::int64_t mostHeight = 64; // of masks that read in place

    // Calls take(elements) for all set elements in `columns` mask columns from i0 on, as many at a time as an array of
    // constant size holds.
    template <class Take> void forElements(std::int64_t i0, std::int64_t columns, const Take &take) const {
        Element elements[mostElements];
        int count = 0;
        const auto takeAll = [&] {
            withConstant<mostElements>(count, [&]<int fixed>(std::integral_constant<int, fixed>) {
                Element copy[fixed];
                std::copy_n(elements, fixed, copy);
                take(copy);
            });
            count = 0;
        };
        for (std::int64_t j = 0; j < spec_.maskHeight; ++j) {
            for (std::int64_t i = i0; i < i0 + columns; ++i) {
                if (spec_.maskCopy[j * spec_.maskWidth + i] != 0) {
                    elements[count++] = {j, i};
                    if (count == mostElements) {
                        takeAll();
                    }
                }
            }
        }
        takeAll();
    }

    // ------------------------------------------------------------------------------------ straight from the source

    static constexpr std::int64_t mostRows = 32; // of output at once

    // The two first and the two last vectors of a source row, between what lies outside: a vector of the edge pixel's
    // repetitions, or as many pixels in memory as the mask reads.
    struct Ends {
        T pixels[6 * V::lanes];
        T *first() { return pixels + V::lanes; }
        T *last() { return pixels + 4 * V::lanes; }
    };
    static constexpr std::int64_t fromFirstToLast = 3 * V::lanes;

    void inPlace() const {
        const std::int64_t repeated = vectorBytes / task_.pixelBytes() * task_.channels;
        const std::int64_t repeatedBytes = repeated * static_cast<std::int64_t>(sizeof(T));
        const std::int64_t left = std::max<std::int64_t>(spec_.anchorX, 0) * task_.channels;
        const std::int64_t right = std::max<std::int64_t>(spec_.rightExtent, 0) * task_.channels;
        const EdgePixels edge(task_.pixelBytes());
        const EdgeLoad before = EdgeLoad::atBegin(-repeatedBytes, edge), behind = EdgeLoad::atEnd(repeatedBytes, edge);
        const std::int64_t n = task_.roi.width * task_.channels;
        const T *rows[mostRows + mostHeight - 1];
        Ends ends[mostRows + mostHeight - 1];
        // All elements while the rows are in the first-level cache.
        constexpr std::int64_t blockBytes = 8 * 1024;
        const std::int64_t block =
            std::clamp<std::int64_t>(blockBytes / (task_.roi.width * task_.pixelBytes()), 1, mostRows);
        for (std::int64_t y = task_.firstRow; y < task_.lastRow; y += block) {
            const std::int64_t count = std::min(task_.lastRow - y, block);
            task_.collect(rows, y - spec_.anchorY, count + spec_.maskHeight - 1);
            for (std::int64_t k = 0; k < count + spec_.maskHeight - 1; ++k) {
                const T *row = rows[k], *last = row + n - V::lanes;
                T *const atFirst = ends[k].first(), *const atLast = ends[k].last();
                if (task_.border.left) {
                    copyElements(atFirst - left, row - left, left);
                } else {
                    store(atFirst - repeated, before.load<V>(row));
                }
                if (task_.border.right) {
                    copyElements(atLast + V::lanes, row + n, right);
                } else {
                    store(atLast + repeated, behind.load<V>(last));
                }
                store(atFirst, load<V>(row));
                store(atFirst + V::lanes, load<V>(row + V::lanes));
                store(atLast - V::lanes, load<V>(last - V::lanes));
                store(atLast, load<V>(last));
            }
            bool proceed = false;
            forElements(0, spec_.maskWidth, [&]<int fixed>(const Element(&elements)[fixed]) {
                rowsInPlace(elements, rows, ends, y, count, proceed);
                proceed = true;
            });
        }
    }

    template <int count>
    void rowsInPlace(const Element (&elements)[count], const T *const *rows, const Ends *ends, std::int64_t y0,
                     std::int64_t rowCount, bool proceed) const {
        const std::int64_t last = task_.roi.width * task_.channels - V::lanes;
        const T *const *rowOf[count];
        std::int64_t x[count];
        PositionRow<T, Op, count, false> inside{}, outside{};
        inside.proceed = outside.proceed = proceed;
        for (int k = 0; k < count; ++k) {
            rowOf[k] = rows + elements[k].row;
            x[k] = (elements[k].column - spec_.anchorX) * task_.channels;
            outside.from[k] = ends[elements[k].row].pixels + V::lanes + x[k];
        }
        T *dst = task_.dst.row(y0);
        for (std::int64_t y = 0; y < rowCount; ++y, dst = byteOffset(dst, task_.dst.step)) {
            for (int k = 0; k < count; ++k) {
                inside.from[k] = rowOf[k][y] + x[k];
            }
            inside.dst = dst;
            std::int64_t i = V::lanes;
            for (; i + 2 * V::lanes <= last; i += 2 * V::lanes) {
                inside.template run<2>(i, Full{});
            }
            for (; i < last; i += V::lanes) {
                inside.template run<1>(std::min(i, last - V::lanes), Full{});
            }
            constexpr auto endsStep = static_cast<std::int64_t>(sizeof(Ends) / sizeof(T));
            inside.put(0, outside.at(y * endsStep, Full{}), Full{});
            inside.put(last, outside.at(y * endsStep + fromFirstToLast, Full{}), Full{});
        }
    }

    // ----------------------------------------------------------------------------------------- from extended rows

    // The most mask columns for which `rows` extended rows fit that are at least one pixel wide, or more if that leaves
    // room for `wanted` pixels.
    std::int64_t columnsAtOnce(std::int64_t room, std::int64_t rows, std::int64_t wanted) const {
        std::int64_t columns = spec_.maskWidth;
        while (columns > 1 && fittingPixels(room, rows, columns - 1, task_.pixelBytes()) < wanted) {
            columns = (columns + 1) / 2;
        }
        return columns;
    }

    // A block of extended source rows serves as many output rows as it has more rows than the mask.
    void extended() const {
        Scratch areas(task_.scratch, task_.scratchBytes);
        auto *const lines = areas.take<std::uint8_t>(0, 32);
        const std::int64_t room = areas.left(), width = task_.roi.width, height = spec_.maskHeight;
        const std::int64_t bytes = task_.pixelBytes();
        const std::int64_t columns = columnsAtOnce(room, height, std::min<std::int64_t>(width, spec_.maskWidth));
        const std::int64_t tile = std::max<std::int64_t>(tilePixels(width, room, height, columns - 1, bytes), 1);
        const std::int64_t lineStep = scratchRowStep(tile + columns - 1, bytes);
        const std::int64_t cachedLines = std::max(64 * 1024 / lineStep, 2 * height);
        const std::int64_t outputs = std::min(room / lineStep, cachedLines) - height + 1;
        for (std::int64_t x0 = 0; x0 < width; x0 += tile) {
            const std::int64_t pixels = std::min(tile, width - x0);
            bool proceed = false;
            for (std::int64_t i0 = 0; i0 < spec_.maskWidth; i0 += columns) {
                const std::int64_t taken = std::min(columns, spec_.maskWidth - i0), from = x0 + i0 - spec_.anchorX;
                const Interval interval(task_.border, width, from, from + pixels + taken - 2);
                bool proceedHere = proceed;
                for (std::int64_t y0 = task_.firstRow; y0 < task_.lastRow; y0 += outputs) {
                    const std::int64_t count = std::min(outputs, task_.lastRow - y0);
                    for (std::int64_t k = 0; k < count + height - 1; ++k) {
                        copyInterval(reinterpret_cast<T *>(lines + k * lineStep), task_.row(y0 + k - spec_.anchorY),
                                     interval, task_.channels);
                    }
                    proceedHere = proceed;
                    forElements(i0, taken, [&]<int fixed>(const Element(&elements)[fixed]) {
                        for (std::int64_t k = 0; k < count; ++k) {
                            PositionRow<T, Op, fixed, true> row{
                                {}, task_.dst.row(y0 + k) + x0 * task_.channels, proceedHere};
                            for (int e = 0; e < fixed; ++e) {
                                row.from[e] = reinterpret_cast<const T *>(lines + (k + elements[e].row) * lineStep) +
                                              (elements[e].column - i0) * task_.channels;
                            }
                            sweep<V::lanes, 2>(pixels * task_.channels, row);
                        }
                        proceedHere = true;
                    });
                }
                proceed = proceedHere;
            }
        }
    }

    const MorphTask<T> &task_;
    const MorphSpec &spec_;
};

} // namespace rvxcv
