// Extrema over any list of positions around an output pixel, each pixel plain or changed by a term of its position:
// some positions at a time, later ones continuing from what stands in the destination. Positions that reach at most a
// vector to either side are read straight from the source, at the ends of its rows by way of copies between what lies
// outside. For others, and for narrow images, rows are extended in scratch. Borders may be constant (one channel).
//
// A list of positions has
//
//     Window reach()                     which columns and rows around an output pixel it looks at, at most
//     forRows(take)                      take(y) for every row around an output pixel in which a position is, ascending
//     forGroups(first, last, take)       take(positions) for those in columns first .. last, in arrays of constant size
#pragma once

#include "kernel/scratch.h"
#include "morph/edge_load.h"
#include "morph/row_extrema.h"

namespace rvxcv {

// A position relative to the output pixel, and what becomes of the pixel there: Term::of(vector of pixels).
template <class Term> struct Position {
    std::int64_t x, y;
    Term term;
};

// The pixel itself.
struct PlainTerm {
    template <class V> RVX_INLINE V of(V pixels) const { return pixels; }
};

// Hands positions on, as many at a time as an array of constant size holds.
template <class Term, class Take> class PositionGroups {
public:
    explicit PositionGroups(const Take &take) : take_(take) {}

    void add(const Position<Term> &position) {
        waiting_[count_++] = position;
        if (count_ == most) {
            flush();
        }
    }
    void flush() {
        withConstant<most>(count_, [&]<int fixed>(std::integral_constant<int, fixed>) {
            Position<Term> group[fixed];
            std::copy_n(waiting_, fixed, group);
            take_(group);
        });
        count_ = 0;
    }

private:
    static constexpr int most = 8;
    const Take &take_;
    Position<Term> waiting_[most];
    int count_ = 0;
};

// Part of an output row: dst[x] = extremum of the pixels at x of some rows.
template <class T, class Op, class Term, int count, bool padded> struct PositionRow {
    using V = Vec<T>;
    Term terms[count];
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
            return terms[k].of(load<V>(from[k] + x));
        } else {
            return terms[k].of(load<V>(from[k] + x, span));
        }
    }
};

template <class T, class Op, class Positions> class PositionKernel {
    using V = Vec<T>;
    static constexpr std::int64_t vectorBytes = 32;

public:
    PositionKernel(const MorphTask<T> &task, const Positions &positions)
        : task_(task), positions_(positions), reach_(positions.reach()), height_(reach_.bottom - reach_.top + 1) {}

    void run() const {
        const std::int64_t bytes = task_.pixelBytes(), left = reach_.left * bytes, right = reach_.right * bytes;
        const std::int64_t far = vectorBytes / bytes * bytes; // repetitions of an edge pixel in a vector
        const bool near = left >= -far && left <= vectorBytes && right >= -vectorBytes && right <= far;
        if (near && height_ <= mostHeight && task_.roi.width * bytes >= 4 * vectorBytes) {
            inPlace();
        } else {
            extended();
        }
    }

private:
    // Calls take(k) once for every source row k, counted from the first one in reach, that `count` output rows need.
    template <class Take> void forSourceRows(std::int64_t count, const Take &take) const {
        std::int64_t k = 0;
        positions_.forRows([&](std::int64_t y) {
            for (k = std::max(k, y - reach_.top); k < y - reach_.top + count; ++k) {
                take(k);
            }
        });
    }

    // ------------------------------------------------------------------------------------ straight from the source

    static constexpr std::int64_t mostHeight = 64; // of lists of positions that read in place
    static constexpr std::int64_t mostRows = 32;   // of output at once

    // The two first and the two last vectors of a source row, beside a vector of what lies outside. Sides in memory
    // need no copy.
    struct Ends {
        T pixels[6 * V::lanes];
        T *first() { return pixels + V::lanes; }
        T *last() { return pixels + 4 * V::lanes; }
    };
    static constexpr std::int64_t fromFirstToLast = 3 * V::lanes;

    void inPlace() const {
        const std::int64_t repeated = vectorBytes / task_.pixelBytes() * task_.channels;
        const std::int64_t repeatedBytes = repeated * static_cast<std::int64_t>(sizeof(T));
        const EdgePixels edge(task_.pixelBytes());
        const EdgeLoad before = EdgeLoad::atBegin(-repeatedBytes, edge), behind = EdgeLoad::atEnd(repeatedBytes, edge);
        const std::int64_t n = task_.roi.width * task_.channels;
        const T *const constants = constantRow();
        const T *rows[mostRows + mostHeight - 1];
        Ends ends[mostRows + mostHeight - 1];
        // All positions while the rows are in the first-level cache.
        constexpr std::int64_t blockBytes = 8 * 1024;
        const std::int64_t block =
            std::clamp<std::int64_t>(blockBytes / (task_.roi.width * task_.pixelBytes()), 1, mostRows);
        for (std::int64_t y = task_.firstRow; y < task_.lastRow; y += block) {
            const std::int64_t count = std::min(task_.lastRow - y, block);
            collectRows(rows, task_.src, task_.border, task_.roi.height, y + reach_.top, count + height_ - 1,
                        constants);
            forSourceRows(count, [&](std::int64_t k) {
                const T *row = rows[k], *last = row + n - V::lanes;
                T *const atFirst = ends[k].first(), *const atLast = ends[k].last();
                if (!task_.border.left) {
                    store(atFirst - repeated, constants != nullptr ? load<V>(constants) : before.load<V>(row));
                    store(atFirst, load<V>(row));
                    store(atFirst + V::lanes, load<V>(row + V::lanes));
                }
                if (!task_.border.right) {
                    store(atLast + repeated, constants != nullptr ? load<V>(constants) : behind.load<V>(last));
                    store(atLast - V::lanes, load<V>(last - V::lanes));
                    store(atLast, load<V>(last));
                }
            });
            bool proceed = false;
            positions_.forGroups(reach_.left, reach_.right, [&](const auto &group) {
                rowsInPlace(group, rows, ends, y, count, proceed);
                proceed = true;
            });
        }
    }

    // What stands for the rows above and below the region, and beside them; null where the border is not constant.
    const T *constantRow() const {
        if (task_.constant == nullptr) {
            return nullptr;
        }
        const std::int64_t left = std::min<std::int64_t>(reach_.left, 0);
        const std::int64_t right = std::max<std::int64_t>(reach_.right, 0);
        T *const row = reinterpret_cast<T *>(task_.scratch);
        repeatPixel(row, task_.roi.width + right - left, task_.constant, 1);
        return row - left;
    }

    template <class Term, int count>
    void rowsInPlace(const Position<Term> (&group)[count], const T *const *rows, const Ends *ends, std::int64_t y0,
                     std::int64_t rowCount, bool proceed) const {
        const std::int64_t n = task_.roi.width * task_.channels;
        const std::int64_t begin = task_.border.left ? 0 : V::lanes, end = task_.border.right ? n : n - V::lanes;
        const T *const *rowOf[count];
        std::int64_t x[count];
        PositionRow<T, Op, Term, count, false> inside{}, outside{};
        inside.proceed = outside.proceed = proceed;
        for (int k = 0; k < count; ++k) {
            rowOf[k] = rows + (group[k].y - reach_.top);
            x[k] = group[k].x * task_.channels;
            outside.from[k] = ends[group[k].y - reach_.top].pixels + V::lanes + x[k];
            inside.terms[k] = outside.terms[k] = group[k].term;
        }
        T *dst = task_.dst.row(y0);
        for (std::int64_t y = 0; y < rowCount; ++y, dst = byteOffset(dst, task_.dst.step)) {
            for (int k = 0; k < count; ++k) {
                inside.from[k] = rowOf[k][y] + x[k];
            }
            inside.dst = outside.dst = dst;
            std::int64_t i = begin;
            for (; i + 2 * V::lanes <= end; i += 2 * V::lanes) {
                inside.template run<2>(i, Full{});
            }
            for (; i < end; i += V::lanes) {
                inside.template run<1>(std::min(i, end - V::lanes), Full{});
            }
            constexpr auto endsStep = static_cast<std::int64_t>(sizeof(Ends) / sizeof(T));
            if (!task_.border.left) {
                inside.put(0, outside.at(y * endsStep, Full{}), Full{});
            }
            if (!task_.border.right) {
                inside.put(end, outside.at(y * endsStep + fromFirstToLast, Full{}), Full{});
            }
        }
    }

    // ----------------------------------------------------------------------------------------- from extended rows

    // The most columns of positions for which `rows` extended rows fit that are at least one pixel wide, or more if
    // that leaves room for `wanted` pixels.
    std::int64_t columnsAtOnce(std::int64_t room, std::int64_t rows, std::int64_t wanted) const {
        std::int64_t columns = reach_.right - reach_.left + 1;
        while (columns > 1 && fittingPixels(room, rows, columns - 1, task_.pixelBytes()) < wanted) {
            columns = (columns + 1) / 2;
        }
        return columns;
    }

    // A block of extended source rows serves as many output rows as it has more rows than the positions reach.
    void extended() const {
        Scratch areas(task_.scratch, task_.scratchBytes);
        auto *const lines = areas.take<std::uint8_t>(0, 32);
        const std::int64_t room = areas.left(), width = task_.roi.width, reached = reach_.right - reach_.left + 1;
        const std::int64_t bytes = task_.pixelBytes();
        const std::int64_t columns = columnsAtOnce(room, height_, std::min(width, reached));
        const std::int64_t tile = std::max<std::int64_t>(tilePixels(width, room, height_, columns - 1, bytes), 1);
        const std::int64_t lineStep = scratchRowStep(tile + columns - 1, bytes);
        const std::int64_t cachedLines = std::max(64 * 1024 / lineStep, 2 * height_);
        const std::int64_t outputs = std::min(room / lineStep, cachedLines) - height_ + 1;
        for (std::int64_t x0 = 0; x0 < width; x0 += tile) {
            const std::int64_t pixels = std::min(tile, width - x0);
            bool proceed = false;
            for (std::int64_t first = reach_.left; first <= reach_.right; first += columns) {
                const std::int64_t last = std::min(first + columns - 1, reach_.right);
                const Interval interval(task_.border, width, x0 + first, x0 + pixels - 1 + last);
                bool proceedHere = proceed;
                for (std::int64_t y0 = task_.firstRow; y0 < task_.lastRow; y0 += outputs) {
                    const std::int64_t count = std::min(outputs, task_.lastRow - y0);
                    forSourceRows(count, [&](std::int64_t k) {
                        extendRow(reinterpret_cast<T *>(lines + k * lineStep), y0 + k + reach_.top, interval,
                                  pixels + last - first);
                    });
                    proceedHere = proceed;
                    positions_.forGroups(first, last, [&]<class Term, int fixed>(const Position<Term>(&group)[fixed]) {
                        PositionRow<T, Op, Term, fixed, true> row{};
                        row.proceed = proceedHere;
                        for (std::int64_t k = 0; k < count; ++k) {
                            row.dst = task_.dst.row(y0 + k) + x0 * task_.channels;
                            for (int e = 0; e < fixed; ++e) {
                                const std::int64_t line = k + group[e].y - reach_.top;
                                row.from[e] = reinterpret_cast<const T *>(lines + line * lineStep) +
                                              (group[e].x - first) * task_.channels;
                                row.terms[e] = group[e].term;
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

    void extendRow(T *line, std::int64_t y, const Interval &interval, std::int64_t pixels) const {
        const BorderIndex at = borderRow(task_.border, y, task_.roi.height);
        if (at.constant) {
            repeatPixel(line, pixels, task_.constant, task_.channels);
        } else {
            copyInterval(line, task_.src.row(at.index), interval, task_.channels, task_.constant);
        }
    }

    const MorphTask<T> &task_;
    const Positions &positions_;
    Window reach_;
    std::int64_t height_;
};

} // namespace rvxcv
