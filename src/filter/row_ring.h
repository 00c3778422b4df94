// Filters of 3x3 and 5x5 pixels in one pass over the rows. Each source row is summed along itself, from loads at every
// tap; with the sums of the rows above it, which wait in a ring of rows, that makes an output row:
//
//     row k      x - 1, x, x + 1  ->  sums along the row  ->  with those of rows k - 1 and k - 2: output row k - 1
//
// The image is read and written in the order of its addresses, which the processor's prefetchers follow best; the ring
// stays in the nearest caches. (Strips down through many rows need no ring, but come to slow memory in small pieces.)
//
// A filter says how (V is its vector; `parts` of them make a block of `columns` pixels):
//
//     using Pixel, Vector;
//     static constexpr int taps, planes, parts, columns;
//     static void along(const Pixel *row, V (&sums)[planes][parts]);       reads taps / 2 pixels to both sides, no more
//     template <class At> static V down(const At &at);                     at(plane, i): the row i below the first
//
// and a sink takes the results of a row in a block:
//
//     using Element;
//     static constexpr bool truncatesLast;
//     void store(Element *dst, const V (&results)[parts]) const;
//
// One that truncates a row's last width % 16 pixels has, in the place of store, `withMethod` and `withTruncation`,
// which call a function with such a sink for the other pixels and for those.
//
// The blocks at both ends of the rows take their pixels from patches: copies with the pixels beside them, as the border
// wants it. So do images narrower than a block.
#pragma once

#include "filter/gradient_rows.h"
#include "kernel/border.h"
#include "kernel/scratch.h"

#include <algorithm>

namespace rvxcv {

template <class Filter, class Sink> class RowRing {
    using Pixel = typename Filter::Pixel;
    using V = typename Filter::Vector;
    using Element = typename Sink::Element;
    static constexpr int taps = Filter::taps, reach = taps / 2, columns = Filter::columns, parts = Filter::parts;
    using Rows = BorderedRows<Pixel, reach>;

    // The sums of one row in one block: what the ring is made of.
    struct Sums {
        V v[Filter::planes][parts];
    };

public:
    // `scratch` gives the ring, and a row for the results behind the last one of an odd number.
    RowRing(const Rows &source, Plane<Element> dst, RoiSize roi, const Border &border, Pixel borderValue,
            Scratch &scratch, const Sink &sink)
        : source_(source), dst_(dst), width_(roi.width), height_(roi.height),
          end_(Sink::truncatesLast ? width_ / 16 * 16 : width_), borderValue_(borderValue),
          sink_(sink), edges_{{border, width_, 0, std::min<std::int64_t>(columns, end_)},
                              {border, width_, std::max<std::int64_t>(end_ - columns, 0), end_ > columns ? columns : 0},
                              {border, width_, end_, width_ - end_}} {
        for (Sums *&sums : ring_) {
            sums = scratch.take<Sums>(width_ / columns + (Sink::truncatesLast ? 3 : 1), alignof(Sums));
        }
        spareRow_ = scratch.take<Element>(width_, 1);
    }

    void run() {
        for (int k = 0; k < taps - 1; ++k) {
            firstSums(source_.row(k - reach), ring_[k]);
        }
        for (std::int64_t y = 0; y < height_; y += rows) {
            outputRows(y);
        }
    }

private:
    static constexpr int rows = 4; // output rows at once: they share what they take from the ring
    static_assert(rows >= taps - 1);
    static constexpr int edgeCount = Sink::truncatesLast ? 3 : 2;

    // A block at an end of the rows, and where the pixels beside it come from.
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

    // An edge's pixels with those beside it.
    class Patch {
    public:
        void build(const Pixel *row, const Edge &edge, Pixel borderValue) {
            Pixel *to = pixels_ + lanes;
            if (edge.pixels < columns) {
                std::fill_n(to, columns + reach, Pixel{0});
            }
            for (int i = 0; i < columns; i += lanes) {
                if (i + lanes <= edge.pixels) {
                    store(to + i, load<Vec<Pixel>>(row + edge.x + i));
                } else if (i < edge.pixels) {
                    store(to + i, load<Vec<Pixel>>(row + edge.x + i, Part{edge.pixels - i}));
                }
            }
            for (int i = 0; i < 2 * reach; ++i) {
                const BorderIndex from = edge.beside[i];
                to[i < reach ? i - reach : edge.pixels + i - reach] =
                    from.constant ? borderValue : loadScalar(row + from.index);
            }
        }
        const Pixel *row() const { return pixels_ + lanes; }

    private:
        static constexpr int lanes = Vec<Pixel>::lanes;
        alignas(32) Pixel pixels_[lanes + columns + lanes];
    };

    // Calls block(index, x) for every block whose source pixels all lie in the row; the last one is moved back.
    template <class Block> RVX_INLINE void forInnerBlocks(const Block &block) const {
        std::int64_t index = edgeCount;
        const std::int64_t last = end_ - columns - reach;
        for (std::int64_t x = columns; x < last + reach; x += columns) {
            block(index++, std::min(x, last));
        }
    }

    // The sums of a row above the first output row.
    void firstSums(const Pixel *row, Sums *sums) const {
        for (int e = 0; e < edgeCount; ++e) {
            if (edges_[e].pixels > 0) {
                Patch patch;
                patch.build(row, edges_[e], borderValue_);
                Filter::along(patch.row(), sums[e].v);
            }
        }
        forInnerBlocks([&](std::int64_t index, std::int64_t x) { Filter::along(row + x, sums[index].v); });
    }

    void outputRows(std::int64_t y) {
        const Pixel *source[rows];
        Element *dst[rows];
        Patch patches[edgeCount][rows];
        for (int k = 0; k < rows; ++k) {
            const bool isSpare = y + k >= height_;
            source[k] = isSpare ? source[0] : source_.row(y + k + reach);
            dst[k] = isSpare ? spareRow_ : dst_.row(y + k);
            for (int e = 0; e < edgeCount; ++e) {
                if (edges_[e].pixels > 0) {
                    patches[e][k].build(source[k], edges_[e], borderValue_);
                }
            }
        }
        innerBlocks(source, dst);
        for (int e = 0; e < edgeCount; ++e) {
            if (edges_[e].pixels > 0) {
                edgeBlock(patches[e], e, dst);
            }
        }
    }

    void innerBlocks(const Pixel *const (&source)[rows], Element *const (&dst)[rows]) const {
        withSink(false, [&](const auto &sink) { innerBlocks(source, dst, sink); });
    }

    // The sink is a copy, as the rest, and so in registers: stores may not be taken to change it.
    template <class AnySink>
    void innerBlocks(const Pixel *const (&source)[rows], Element *const (&dst)[rows], const AnySink sink) const {
        Sums *ring[taps - 1];
        std::copy_n(ring_, taps - 1, ring);
        const std::int64_t nextRows = rows * dst_.step;
        forInnerBlocks([&](std::int64_t index, std::int64_t x) {
            const Pixel *from[rows];
            Element *to[rows];
            for (int k = 0; k < rows; ++k) {
                from[k] = source[k] + x;
                to[k] = dst[k] + x;
                prefetch(byteOffset(to[k], nextRows)); // a store waits for its line as long as a load does
            }
            filterBlock(from, ring, index, to, sink);
        });
    }

    // Calls function(sink) with the sink of the blocks before the last one, or of that one.
    template <class Function> RVX_INLINE void withSink(bool isLast, const Function &function) const {
        if constexpr (!Sink::truncatesLast) {
            function(sink_);
        } else if (isLast) {
            sink_.withTruncation(function);
        } else {
            sink_.withMethod(function);
        }
    }

    void edgeBlock(const Patch (&patches)[rows], int e, Element *const (&dst)[rows]) const {
        const Edge &edge = edges_[e];
        const bool isWhole = edge.pixels == columns;
        alignas(32) Element results[rows][columns];
        const Pixel *from[rows];
        Element *to[rows];
        for (int k = 0; k < rows; ++k) {
            from[k] = patches[k].row();
            to[k] = isWhole ? dst[k] + edge.x : results[k];
        }
        withSink(e == 2, [&](const auto &sink) { filterBlock(from, ring_, e, to, sink); });
        for (int k = 0; k < rows && !isWhole; ++k) {
            std::memcpy(static_cast<void *>(dst[k] + edge.x), results[k],
                        static_cast<std::size_t>(edge.pixels) * sizeof(Element));
        }
    }

    // One block, a row after the other, so that few sums are needed at a time. The rows of the ring make room for the
    // newest ones.
    template <class AnySink>
    static RVX_INLINE void filterBlock(const Pixel *const (&source)[rows], Sums *const (&ring)[taps - 1],
                                       std::int64_t index, Element *const (&dst)[rows], const AnySink &sink) {
        Sums window[taps - 1 + rows];
        for (int i = 0; i < taps - 1; ++i) {
            window[i] = ring[i][index];
        }
        for (int k = 0; k < rows; ++k) {
            Filter::along(source[k], window[taps - 1 + k].v);
            V results[parts];
            for (int part = 0; part < parts; ++part) {
                results[part] = Filter::down([&](int plane, int i) { return window[k + i].v[plane][part]; });
            }
            sink.store(dst[k], results);
        }
        for (int i = 0; i < taps - 1; ++i) {
            ring[i][index] = window[rows + i];
        }
    }

    const Rows &source_;
    Plane<Element> dst_;
    std::int64_t width_, height_, end_;
    Pixel borderValue_;
    Sink sink_;
    Edge edges_[3];
    Sums *ring_[taps - 1]; // the oldest row first
    Element *spareRow_;
};

} // namespace rvxcv
