// Hysteresis: which candidates are connected with a strong one.
#pragma once

#include "kernel/base.h"
#include "kernel/rows.h"
#include "kernel/scratch.h"
#include "kernel/vec.h"

#include "rvxcv/types.h"

#include <bit>
#include <cstring>
#include <type_traits>

namespace rvxcv {

// Two bitmaps, a bit per pixel: the candidates, and those of them that are edges. Strong candidates are edges from the
// beginning. Rows end with at least one clear bit and follow each other, so that a bit's neighbours are where they are
// for every bit, also at the ends of a row.
//
// After every row the edges beside its candidates spread along its words, eight words at a time. What else was reached,
// words above and to the side, grows word by word from a stack, while the rows around are in the cache.
class EdgeMap {
public:
    EdgeMap(Scratch &scratch, RoiSize roi) : width_(roi.width), words_(roi.width / 32 + 1) {
        // A row above, a row below, and the word before.
        const std::int64_t all = words_ * (std::int64_t{roi.height} + 2) + 1;
        auto *const memory = scratch.take<std::int32_t>(2 * all, 1);
        std::memset(static_cast<void *>(memory), 0, static_cast<std::size_t>(2 * all) * sizeof *memory);
        candidates_ = memory + 1 + words_;
        edges_ = candidates_ + all;
        stack_ = scratch.take<std::uint32_t>(std::int64_t{roi.width} * roi.height, 1);
    }

    // The pixels from 32 k on of row y.
    RVX_INLINE void put(std::int64_t y, std::int64_t k, std::uint32_t candidates, std::uint32_t edges) const {
        storeScalar(candidates_ + y * words_ + k, static_cast<std::int32_t>(candidates));
        storeScalar(edges_ + y * words_ + k, static_cast<std::int32_t>(edges));
    }

    // Row y has been put: whatever is connected with an edge in the rows up to y becomes an edge.
    void connect(std::int64_t y) {
        eights(Spread{candidates_ + y * words_, edges_ + y * words_, words_});
        eights(Touching{*this, y * words_});
        grow();
    }

    void writeEdges(std::int64_t y, std::uint8_t *dst) const { walkRow<32>(width_, Write{edges_ + y * words_, dst}); }

private:
    template <class Kernel> void eights(const Kernel &kernel) const {
        std::int64_t k = 0;
        for (; k + 8 <= words_; k += 8) {
            kernel(k, Full{});
        }
        if (k + 1 == words_) {
            kernel(k, Part{1}); // loaded as it was stored
        } else if (k < words_) {
            kernel(k, firstLanes(static_cast<int>(words_ - k)));
        }
    }

    // The words to the side of some words, where they touch them; and all that touches them from above or below.
    template <class Span> static RVX_INLINE I32x8 sideways(const std::int32_t *words, Span span) {
        return bitOr(shiftRightLogical<31>(load<I32x8>(words - 1, span)), shiftLeft<31>(load<I32x8>(words + 1, span)));
    }
    template <class Span> static RVX_INLINE I32x8 widened(const std::int32_t *words, Span span) {
        const I32x8 word = load<I32x8>(words, span);
        return bitOr(bitOr(word, sideways(words, span)), bitOr(shiftLeft<1>(word), shiftRightLogical<1>(word)));
    }

    // Seeds grow along the runs of candidates that they are in, 1, 2, 4 .. pixels at a time.
    struct Spread {
        const std::int32_t *candidates;
        std::int32_t *edges;
        std::int64_t words;

        template <class Span> RVX_INLINE void operator()(std::ptrdiff_t k, Span span) const {
            const I32x8 runs = load<I32x8>(candidates + k, span);
            const I32x8 reached = bitOr(widened(edges + k - words, span), sideways(edges + k, span));
            const I32x8 seeds = bitAnd(runs, bitOr(reached, load<I32x8>(edges + k, span)));
            I32x8 left = seeds, right = seeds, leftRuns = runs, rightRuns = runs;
            const auto step = [&]<int n>(std::integral_constant<int, n>) {
                left = bitOr(left, bitAnd(leftRuns, shiftLeft<n>(left)));
                right = bitOr(right, bitAnd(rightRuns, shiftRightLogical<n>(right)));
                leftRuns = bitAnd(leftRuns, shiftLeft<n>(leftRuns));
                rightRuns = bitAnd(rightRuns, shiftRightLogical<n>(rightRuns));
            };
            step(std::integral_constant<int, 1>{});
            step(std::integral_constant<int, 2>{});
            step(std::integral_constant<int, 4>{});
            step(std::integral_constant<int, 8>{});
            step(std::integral_constant<int, 16>{});
            store(edges + k, bitOr(left, right), span);
        }
    };

    // Finds the words of a row and of the row above that the row's edges reach.
    struct Touching {
        EdgeMap &map;
        std::int64_t row;

        template <class Span> RVX_INLINE void operator()(std::ptrdiff_t k, Span span) const {
            const std::int64_t here = row + k, above = here - map.words_;
            const std::int32_t *const edges = map.edges_ + here;
            const I32x8 weak = map.weakAt(here, span), weakAbove = map.weakAt(above, span);
            const I32x8 touched = bitOr(bitAnd(weak, sideways(edges, span)), bitAnd(weakAbove, widened(edges, span)));
            for (std::uint32_t bits = ~laneBits(equal(touched, I32x8{})) & 0xff; bits != 0; bits &= bits - 1) {
                const int i = std::countr_zero(bits);
                const std::uint32_t word = map.edgesAt(here + i);
                const std::uint32_t beside = map.edgesAt(here + i - 1) >> 31 | map.edgesAt(here + i + 1) << 31;
                map.reach(here + i, beside);
                map.reach(above + i, beside | word | word << 1 | word >> 1);
            }
        }
    };

    struct Write {
        const std::int32_t *edges;
        std::uint8_t *dst;
        template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
            store(dst + x, maskOfBits<U8x32>(static_cast<std::uint32_t>(loadScalar(edges + x / 32))), span);
        }
    };

    template <class Span> RVX_INLINE I32x8 weakAt(std::int64_t k, Span span) const {
        return bitAndNot(load<I32x8>(candidates_ + k, span), load<I32x8>(edges_ + k, span));
    }
    RVX_INLINE std::uint32_t edgesAt(std::int64_t k) const {
        return static_cast<std::uint32_t>(loadScalar(edges_ + k));
    }

    // Bits of word k lie beside edges. Every word on the stack has gained an edge: they are at most the pixels.
    RVX_INLINE void reach(std::int64_t k, std::uint32_t bits) {
        const auto runs = static_cast<std::uint32_t>(loadScalar(candidates_ + k));
        const std::uint32_t edges = edgesAt(k);
        std::uint32_t seeds = bits & runs & ~edges;
        if (seeds == 0) {
            return;
        }
        seeds |= runs & ~(runs + seeds); // the carry runs along
        for (std::uint32_t n = 1, rest = runs; n < 32; n *= 2) {
            seeds |= rest & seeds >> n;
            rest &= rest >> n;
        }
        storeScalar(edges_ + k, static_cast<std::int32_t>(edges | seeds));
        storeScalar(stack_ + depth_++, static_cast<std::uint32_t>(k));
    }

    void grow() {
        while (depth_ > 0) {
            const std::int64_t k = loadScalar(stack_ + --depth_);
            const std::uint32_t word = edgesAt(k), beside = word | word << 1 | word >> 1;
            reach(k - words_, beside);
            reach(k + words_, beside);
            if (word >> 31 != 0) {
                reach(k + 1 - words_, 1);
                reach(k + 1, 1);
                reach(k + 1 + words_, 1);
            }
            if ((word & 1) != 0) {
                reach(k - 1 - words_, 1u << 31);
                reach(k - 1, 1u << 31);
                reach(k - 1 + words_, 1u << 31);
            }
        }
    }

    std::int64_t width_, words_;
    std::int32_t *candidates_, *edges_;
    std::uint32_t *stack_;
    std::int64_t depth_ = 0;
};

} // namespace rvxcv
