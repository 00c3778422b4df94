// Filters of 3x3 and 5x5 pixels straight from the source to the destination: strips of a few vectors go down through a
// block of rows. Each source row is summed along itself, from loads at every tap, while the sums of the rows above it
// are still in registers:
//
//     row k      x - 1, x, x + 1  ->  sums along the row  ->  with those of rows k - 1 and k - 2: output row k - 1
//
// A filter says how (V is its vector; `parts` of them make a strip of `columns` pixels):
//
//     using Pixel, Vector;
//     static constexpr int taps, planes, parts, columns;
//     static void along(const Pixel *row, V (&sums)[planes][parts]);       reads taps / 2 pixels to both sides, no more
//     template <class At> static V down(const At &at);                     at(plane, i): the row i below the first
//
// and a sink takes the results of a strip's row:
//
//     using Element;
//     void store(Element *dst, const V (&result)[parts]) const;
//     static constexpr bool truncatesLast;                                 the last width % 16 pixels are for the
//     Sink last() const;                                                   sink that this gives
//
// The strips at both ends of the rows take their source from patches: copies of their pixels with those beside them, as
// the border wants it. So do images narrower than a strip.
#pragma once

#include "filter/gradient_rows.h"
#include "kernel/border.h"

#include <algorithm>

namespace rvxcv {

template <class Filter, class Sink> class ColumnStrips {
    using Pixel = typename Filter::Pixel;
    using V = typename Filter::Vector;
    using Element = typename Sink::Element;
    static constexpr int taps = Filter::taps, reach = taps / 2, columns = Filter::columns, parts = Filter::parts;
    using Rows = BorderedRows<Pixel, reach>;

public:
    ColumnStrips(const Rows &source, Plane<Element> dst, RoiSize roi, const Border &border, Pixel borderValue,
                 const Sink &sink)
        : source_(source), dst_(dst), width_(roi.width), height_(roi.height), border_(border),
          borderValue_(borderValue), sink_(sink) {}

    void run() const {
        const std::int64_t end = Sink::truncatesLast ? width_ / 16 * 16 : width_;
        const Edge left(border_, width_, 0, std::min<std::int64_t>(columns, end));
        const Edge right(border_, width_, std::max<std::int64_t>(end - columns, 0), columns);
        const Edge last(border_, width_, end, width_ - end);
        for (std::int64_t y = 0; y < height_; y += mostRows) {
            const int count = static_cast<int>(std::min(height_ - y, mostRows));
            const Pixel *rows[mostRows + taps - 1];
            for (int k = 0; k < count + taps - 1; ++k) {
                rows[k] = source_.row(y + k - reach);
            }
            if (end > 0) {
                edge(sink_, rows, y, count, left);
            }
            for (std::int64_t x = columns; x < end - columns; x += columns) {
                const std::int64_t from = std::min(x, end - columns - reach);
                strip(sink_, rows, from, count, dst_.row(y) + from, dst_.step);
            }
            if (end > columns) {
                edge(sink_, rows, y, count, right);
            }
            if constexpr (Sink::truncatesLast) {
                if (end < width_) {
                    edge(sink_.last(), rows, y, count, last);
                }
            }
        }
    }

private:
    // Rows at once: enough that the rows above them, which are summed again, do not matter.
    static constexpr std::int64_t mostRows = 32;

    // A strip at an end of the rows, and where the pixels beside it come from.
    struct Edge {
        std::int64_t x;
        int pixels;
        BorderIndex beside[2 * reach]; // on the left, then on the right

        Edge(const Border &border, std::int64_t width, std::int64_t from, std::int64_t count)
            : x(from), pixels(static_cast<int>(count)) {
            for (int i = 0; i < reach; ++i) {
                beside[i] = borderColumn(border, from + i - reach, width);
                beside[reach + i] = borderColumn(border, from + count + i, width);
            }
        }
    };

    void edge(const Sink &sink, const Pixel *const *rows, std::int64_t y, int count, const Edge &edge) const {
        constexpr int lanes = Vec<Pixel>::lanes, pitch = lanes + columns + lanes;
        alignas(32) Pixel patch[(mostRows + taps - 1) * pitch];
        const Pixel *patchRows[mostRows + taps - 1];
        for (int k = 0; k < count + taps - 1; ++k) {
            Pixel *to = patch + k * pitch + lanes;
            copy(to, rows[k] + edge.x, edge.pixels);
            for (int i = 0; i < 2 * reach; ++i) {
                const BorderIndex from = edge.beside[i];
                to[i < reach ? i - reach : edge.pixels + i - reach] =
                    from.constant ? borderValue_ : loadScalar(rows[k] + from.index);
            }
            patchRows[k] = to;
        }
        Element *dst = dst_.row(y) + edge.x;
        if (edge.pixels == columns) {
            strip(sink, patchRows, 0, count, dst, dst_.step);
            return;
        }
        alignas(32) Element results[mostRows * columns];
        strip(sink, patchRows, 0, count, results, columns * sizeof(Element));
        for (int k = 0; k < count; ++k, dst = byteOffset(dst, dst_.step)) {
            std::memcpy(static_cast<void *>(dst), results + k * columns,
                        static_cast<std::size_t>(edge.pixels) * sizeof(Element));
        }
    }

    // A strip's pixels, or the first ones and zeros.
    static RVX_INLINE void copy(Pixel *to, const Pixel *from, int pixels) {
        constexpr int lanes = Vec<Pixel>::lanes;
        if (pixels < columns) {
            std::fill_n(to, columns + reach, Pixel{0});
        }
        for (int i = 0; i < columns; i += lanes) {
            if (i + lanes <= pixels) {
                store(to + i, load<Vec<Pixel>>(from + i));
            } else if (i < pixels) {
                store(to + i, load<Vec<Pixel>>(from + i, Part{pixels - i}));
            }
        }
    }

    // `count` rows of a strip; its first column is column `from` of the source rows.
    void strip(const Sink &sink, const Pixel *const *rows, std::int64_t from, int count, Element *dst,
               std::int64_t dstStep) const {
        Ring ring;
        for (int k = 0; k < taps - 1; ++k) {
            Filter::along(rows[k] + from, ring.sums[k]);
        }
        const Sink constants = sink; // in registers: stores may not be taken to change them
        Down down{rows + taps - 1, rows + taps - 1 + count, from, dst, dstStep};
        while (everyPhase(ring, down, constants, std::make_integer_sequence<int, taps>{})) {
        }
    }

    struct Ring {
        V sums[taps][Filter::planes][parts];
    };
    struct Down {
        const Pixel *const *row, *const *end;
        std::int64_t from;
        Element *dst;
        std::int64_t dstStep;
    };

    // As many output rows as the ring has places, so that each place is a register of its own.
    template <int... phase>
    static RVX_INLINE bool everyPhase(Ring &ring, Down &down, const Sink &sink, std::integer_sequence<int, phase...>) {
        return ((down.row != down.end && (onePhase<phase>(ring, down, sink), true)) && ...);
    }

    template <int phase> static RVX_INLINE void onePhase(Ring &ring, Down &down, const Sink &sink) {
        constexpr std::int64_t ahead = 128; // bytes: the next columns are as far from the prefetcher as the next rows
        const Pixel *row = *down.row++ + down.from;
        prefetch(byteOffset(row, ahead));
        Filter::along(row, ring.sums[(phase + taps - 1) % taps]);
        V result[parts];
        for (int part = 0; part < parts; ++part) {
            result[part] = Filter::down([&](int plane, int i) { return ring.sums[(phase + i) % taps][plane][part]; });
        }
        sink.store(down.dst, result);
        down.dst = byteOffset(down.dst, down.dstStep);
    }

    const Rows &source_;
    Plane<Element> dst_;
    std::int64_t width_, height_;
    Border border_;
    Pixel borderValue_;
    const Sink &sink_;
};

} // namespace rvxcv
