// Extrema over any list of positions around an output pixel, each pixel plain or changed by a term of its position:
// some positions at a time, later ones continuing from what stands in the destination. Positions that reach at most a
// vector to either side are read straight from the source, at the ends of its rows by way of copies between what lies
// outside. For others, and for narrow images, rows are extended in scratch. Borders may be constant (one channel).
//
// A list of positions has
//
//     Window reach()                which columns and rows around an output pixel it looks at, at most
//     forRows(take)                 take(y) for every row around an output pixel in which a position is, ascending
//     forGroups(first, last, take)  take(places, terms) for those in columns first .. last: arrays of constant size,
//                                   and what becomes of their pixels
//
// Terms make one vector of a group's pixels: over<Op>(pixelsAt) with pixelsAt(k) a vector of those at place k.
//
// `shares` tells that all pixels are plain. Then two neighbouring output rows share the loads of what lies under both,
// unless there are so few positions that one group takes them, and the list has
//
//     count()                       how many positions
//     forShared(take)               take(SharedPlaces), as many at a time as these hold
#pragma once

#include "kernel/scratch.h"
#include "morph/edge_load.h"
#include "morph/row_extrema.h"

namespace rvxcv {

// A position relative to the output pixel.
struct PixelOffset {
    std::int64_t x, y;
};

// The pixels themselves.
template <int count> struct PlainTerms {
    template <class Op, class PixelsAt> RVX_INLINE auto over(const PixelsAt &pixelsAt) const {
        auto extremum = pixelsAt(0);
        for (int k = 1; k < count; ++k) {
            extremum = Op::of(extremum, pixelsAt(k));
        }
        return extremum;
    }
};

// Positions are taken as many at a time as a group holds at most.
constexpr int mostPlaces = 8;

// Part of an output row: dst[x] = extremum of the pixels at x of some rows.
template <class T, class Op, class Terms, int count, bool padded> struct PositionRow {
    using V = Vec<T>;
    Terms terms;
    const T *from[count];
    T *dst;
    bool proceed; // from what dst holds

    template <class Span> RVX_INLINE V at(std::int64_t x, Span span) const {
        return terms.template over<Op>([&](int k) { return loadFrom(k, x, span); });
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

// Where the source pixels of two neighbouring output rows are, relative to the first one: those under both rows, under
// the first one alone, under the second one alone.
struct SharedPlaces {
    static constexpr int most = 128;
    enum Under { underBoth, underFirst, underSecond };
    struct List {
        PixelOffset places[most];
        int count = 0;
    };
    List lists[3];

    void add(Under under, PixelOffset place) {
        List &list = lists[under];
        list.places[list.count++] = place;
    }
    int count() const { return lists[underBoth].count + lists[underFirst].count + lists[underSecond].count; }
};

// Part of two neighbouring output rows, or of one.
template <class T, class Op> struct SharedRows {
    using V = Vec<T>;
    struct List {
        const T *from[SharedPlaces::most];
        int count;

        template <int vectors> RVX_INLINE void join(V (&extremum)[vectors], std::int64_t x) const {
            for (int k = 0; k < count; ++k) {
                const T *pixels = from[k] + x;
                for (int v = 0; v < vectors; ++v) {
                    extremum[v] = Op::of(extremum[v], load<V>(pixels + v * V::lanes));
                }
            }
        }
    };
    List lists[3];

    // Neighbouring vectors from x on, to element `to` of the output rows; the second row may be null.
    template <int vectors> RVX_INLINE void run(std::int64_t x, T *row, T *next, std::int64_t to, bool proceed) const {
        V common[vectors];
        std::fill_n(common, vectors, V(splat(Op::template neutral<T>())));
        lists[SharedPlaces::underBoth].join(common, x);
        const auto finish = [&](T *dst, const List &own) {
            V extremum[vectors];
            for (int v = 0; v < vectors; ++v) {
                extremum[v] = proceed ? Op::of(common[v], load<V>(dst + v * V::lanes)) : common[v];
            }
            own.join(extremum, x);
            for (int v = 0; v < vectors; ++v) {
                store(dst + v * V::lanes, extremum[v]);
            }
        };
        finish(row + to, lists[SharedPlaces::underFirst]);
        if (next != nullptr) {
            finish(next + to, lists[SharedPlaces::underSecond]);
        }
    }
};

template <class T, class Op, class Positions> class PositionKernel {
    using V = Vec<T>;
    static constexpr std::int64_t vectorBytes = 32;
    static constexpr std::int64_t cacheBytes = 48 * 1024; // of the first level, for what all positions are taken from

public:
    PositionKernel(const MorphTask<T> &task, const Positions &positions)
        : task_(task), positions_(positions), reach_(positions.reach()), height_(reach_.bottom - reach_.top + 1) {}

    // `proceed`: from what the destination holds.
    void run(bool proceed = false) const {
        const std::int64_t bytes = task_.pixelBytes(), left = reach_.left * bytes, right = reach_.right * bytes;
        const std::int64_t far = vectorBytes / bytes * bytes; // repetitions of an edge pixel in a vector
        if (left >= -far && right <= far && height_ <= mostHeight && task_.roi.width * bytes >= 4 * vectorBytes) {
            inPlace(proceed);
        } else {
            extended(proceed);
        }
    }

private:
    // Whole pairs of vectors, as few tiles as if each had at most so many elements, and all of about one size.
    static std::int64_t evenTile(std::int64_t elements, std::int64_t most) {
        const std::int64_t tiles = (elements + most - 1) / most;
        return roundUp((elements + tiles - 1) / tiles, 2 * V::lanes);
    }

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

    void inPlace(bool proceedAtFirst) const {
        if constexpr (Positions::shares) {
            if (positions_.count() <= mostPlaces) {
                return eachRow(proceedAtFirst);
            }
            bool proceed = proceedAtFirst;
            positions_.forShared([&](const SharedPlaces &shared) {
                overTiles([&](const Tile &tile) { rowPairs(shared, tile, proceed); });
                proceed = true;
            });
        } else {
            eachRow(proceedAtFirst);
        }
    }

    void eachRow(bool proceedAtFirst) const {
        overTiles([&](const Tile &tile) {
            bool proceed = proceedAtFirst;
            positions_.forGroups(reach_.left, reach_.right, [&](const auto &places, const auto &terms) {
                rowsInPlace(places, terms, tile, proceed);
                proceed = true;
            });
        });
    }

    // Some output rows from element `begin` to `end`, the source rows from the first one in reach on, and their ends.
    struct Tile {
        const T *const *rows;
        const Ends *ends;
        std::int64_t y, rowCount, begin, end;
        bool atLeft, atRight; // a first and a last vector lie before and behind these elements
    };

    template <class Work> void overTiles(const Work &work) const {
        const std::int64_t repeated = vectorBytes / task_.pixelBytes() * task_.channels;
        const std::int64_t repeatedBytes = repeated * static_cast<std::int64_t>(sizeof(T));
        const EdgePixels edge(task_.pixelBytes());
        const EdgeLoad before = EdgeLoad::atBegin(-repeatedBytes, edge), behind = EdgeLoad::atEnd(repeatedBytes, edge);
        const std::int64_t n = task_.roi.width * task_.channels;
        const T *const constants = constantRow();
        const T *rows[mostRows + mostHeight - 1];
        Ends ends[mostRows + mostHeight - 1];
        // Rows and columns of output at once.
        constexpr std::int64_t blockBytes = 8 * 1024, leastTile = 2048;
        const std::int64_t widthBytes = task_.roi.width * task_.pixelBytes();
        const std::int64_t block = std::clamp<std::int64_t>(blockBytes / std::min(widthBytes, leastTile), 1, mostRows);
        const std::int64_t tileBytes = std::max(cacheBytes * 2 / 3 / (height_ + block - 1), leastTile);
        const std::int64_t begin = task_.border.left ? 0 : V::lanes, end = task_.border.right ? n : n - V::lanes;
        const std::int64_t tile = evenTile(end - begin, tileBytes / static_cast<std::int64_t>(sizeof(T)));
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
            for (std::int64_t x = begin; x < end; x += tile) {
                const bool last = x + tile >= end;
                work(Tile{rows, ends, y, count, x, last ? end : x + tile, x == begin && !task_.border.left,
                          last && !task_.border.right});
            }
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

    static constexpr auto endsStep = static_cast<std::int64_t>(sizeof(Ends) / sizeof(T));

    template <class Terms, int count>
    void rowsInPlace(const PixelOffset (&places)[count], const Terms &terms, const Tile &tile, bool proceed) const {
        const T *const *rowOf[count];
        std::int64_t x[count];
        PositionRow<T, Op, Terms, count, false> inside{terms, {}, nullptr, proceed}, outside = inside;
        for (int k = 0; k < count; ++k) {
            rowOf[k] = tile.rows + (places[k].y - reach_.top);
            x[k] = places[k].x * task_.channels;
            outside.from[k] = tile.ends[places[k].y - reach_.top].pixels + V::lanes + x[k];
        }
        const std::int64_t begin = tile.begin, end = tile.end, rowCount = tile.rowCount;
        const bool atLeft = tile.atLeft, atRight = tile.atRight;
        T *dst = task_.dst.row(tile.y);
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
            if (atLeft) {
                inside.put(0, outside.at(y * endsStep, Full{}), Full{});
            }
            if (atRight) {
                inside.put(end, outside.at(y * endsStep + fromFirstToLast, Full{}), Full{});
            }
        }
    }

    // Two output rows at a time, which share loads.
    void rowPairs(const SharedPlaces &shared, const Tile &tile, bool proceed) const {
        constexpr int together = 6;
        SharedRows<T, Op> inside, outside;
        for (std::int64_t y = 0; y < tile.rowCount; y += 2) {
            T *const dst = task_.dst.row(tile.y + y);
            T *const next = y + 1 < tile.rowCount ? byteOffset(dst, task_.dst.step) : nullptr;
            for (int under = 0; under < (next != nullptr ? 3 : 2); ++under) {
                const auto &places = shared.lists[under];
                auto &insideList = inside.lists[under], &outsideList = outside.lists[under];
                insideList.count = outsideList.count = places.count;
                for (int k = 0; k < places.count; ++k) {
                    const std::int64_t row = y + places.places[k].y - reach_.top;
                    const std::int64_t x = places.places[k].x * task_.channels;
                    insideList.from[k] = tile.rows[row] + x;
                    outsideList.from[k] = tile.ends[row].pixels + V::lanes + x;
                }
            }
            std::int64_t x = tile.begin;
            for (; x + together * V::lanes <= tile.end; x += together * V::lanes) {
                inside.template run<together>(x, dst, next, x, proceed);
            }
            for (; x < tile.end; x += V::lanes) {
                const std::int64_t from = std::min(x, tile.end - V::lanes);
                inside.template run<1>(from, dst, next, from, proceed);
            }
            if (tile.atLeft) {
                outside.template run<1>(0, dst, next, 0, proceed);
            }
            if (tile.atRight) {
                outside.template run<1>(fromFirstToLast, dst, next, tile.end, proceed);
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
    void extended(bool proceedAtFirst) const {
        Scratch areas(task_.scratch, task_.scratchBytes);
        auto *const lines = areas.take<std::uint8_t>(0, 32);
        const std::int64_t room = areas.left(), width = task_.roi.width, reached = reach_.right - reach_.left + 1;
        const std::int64_t bytes = task_.pixelBytes();
        const std::int64_t columns = columnsAtOnce(room, height_, std::min(width, reached));
        const std::int64_t most =
            std::max<std::int64_t>(tilePixels(width, room, height_, columns - 1, bytes, cacheBytes), 1);
        const std::int64_t tile = std::min(most, evenTile(width, most));
        const std::int64_t lineStep = scratchRowStep(tile + columns - 1, bytes);
        const std::int64_t cachedLines = std::max(cacheBytes * 4 / 3 / lineStep, height_);
        const std::int64_t outputs = std::min(room / lineStep, cachedLines) - height_ + 1;
        for (std::int64_t x0 = 0; x0 < width; x0 += tile) {
            const std::int64_t pixels = std::min(tile, width - x0);
            bool proceed = proceedAtFirst;
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
                    positions_.forGroups(
                        first, last,
                        [&]<class Terms, int fixed>(const PixelOffset(&places)[fixed], const Terms &terms) {
                            PositionRow<T, Op, Terms, fixed, true> row{terms, {}, nullptr, proceedHere};
                            for (std::int64_t k = 0; k < count; ++k) {
                                row.dst = task_.dst.row(y0 + k) + x0 * task_.channels;
                                for (int e = 0; e < fixed; ++e) {
                                    const std::int64_t line = k + places[e].y - reach_.top;
                                    row.from[e] = reinterpret_cast<const T *>(lines + line * lineStep) +
                                                  (places[e].x - first) * task_.channels;
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
