// Marker labelling in two passes over the rows. The first finds the runs of pixels that are not zero, numbers them in
// scan order and joins those of neighbouring rows that touch: a forest in which every run points at an earlier one of
// its component, so that a component's root is the run with its first pixel. The roots then get labels in their order.
// The second pass finds the same runs again and writes their labels.
//
// Rows are words of 64 pixels. Two runs of neighbouring rows touch where one of them starts and the other has a pixel
// (or, at corners, has one just before): each such place is one bit of a word, and the numbers of the two runs are the
// counts of starts up to it. The second pass writes eight pixels at a time: which of the next labels a pixel gets is
// the number of starts among the pixels up to it.
//
// Scratch: one row of words and four bytes per run, of which a row has at most (W + 1) / 2. For W = 1 that is
// 8 + 4 H, else at most W / 8 + 8 + (2 W + 2) H <= W / 8 + 8 + 3 W H; 7 bytes for the alignment: inside 6 W H + 32.
#include "frame/api.h"

#include "kernel/checks.h"
#include "kernel/plane.h"
#include "kernel/scratch.h"
#include "segment/pixel_words.h"
#include "segment/span_fill.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace rvxcv {
namespace {

using Run = std::uint32_t; // number of a run: images of up to 2^33 pixels, whatever they show

template <class T> RVX_INLINE std::uint64_t foreground(const T *row, int n) {
    const auto zero = splat(T{0});
    const std::uint64_t zeros = pixelWord<T, 1>(n, [&](int e, int, auto span) {
        return std::uint64_t{laneBits(inRange(load<Vec<T>>(row + e, span), zero, zero))};
    });
    return ~zeros & lowBits(n);
}

// Pixels whose left neighbour is set, and those that begin a run; `before` is the word to the left.
RVX_INLINE std::uint64_t shifted(std::uint64_t word, std::uint64_t before) { return word << 1 | before >> 63; }
RVX_INLINE std::uint64_t starts(std::uint64_t word, std::uint64_t before) { return word & ~shifted(word, before); }

class RunForest {
public:
    explicit RunForest(Run *parents) : parents_(parents) {}

    Run count() const { return count_; }

    // Runs that touch nothing yet.
    RVX_INLINE void append(int runs) {
        for (int i = 0; i < runs; ++i, ++count_) {
            parents_[count_] = count_;
        }
    }

    RVX_INLINE void join(Run a, Run b) {
        a = root(a);
        b = root(b);
        if (a < b) {
            parents_[b] = a;
        } else {
            parents_[a] = b;
        }
    }

    // Turns parents into labels, in order; a parent has its label before its children. Returns the number of roots.
    std::int32_t label(std::int32_t minLabel, std::int32_t maxLabel) {
        std::int32_t next = minLabel;
        std::uint32_t roots = 0;
        for (Run run = 0; run < count_; ++run) {
            if (parents_[run] != run) {
                parents_[run] = parents_[parents_[run]];
                continue;
            }
            parents_[run] = static_cast<std::uint32_t>(next);
            next = next == maxLabel ? minLabel : next + 1;
            ++roots;
        }
        return static_cast<std::int32_t>(roots);
    }

private:
    // Every second run of the path is tied to its grandparent on the way.
    RVX_INLINE Run root(Run run) {
        while (parents_[run] != run) {
            run = parents_[run] = parents_[parents_[run]];
        }
        return run;
    }

    Run *parents_;
    Run count_ = 0;
};

template <bool eight, class T>
void joinRuns(Plane<const T> src, RoiSize roi, std::uint64_t *row, std::int64_t words, RunForest &forest) {
    std::fill(row, row + words, 0);
    Run firstAbove = 0;
    for (std::int64_t y = 0; y < roi.height; ++y) {
        const Run first = forest.count();
        Run runsAbove = firstAbove, runsHere = first; // started before this word
        std::uint64_t aboveBefore = 0, hereBefore = 0;
        for (std::int64_t k = 0; k < words; ++k) {
            const int n = static_cast<int>(std::min<std::int64_t>(wordPixels, roi.width - k * wordPixels));
            const std::uint64_t above = row[k], here = foreground(src.row(y) + k * wordPixels, n);
            row[k] = here;
            const std::uint64_t startsAbove = starts(above, aboveBefore), startsHere = starts(here, hereBefore);
            std::uint64_t contacts = 0;
            if constexpr (eight) {
                contacts =
                    (startsHere & (above | shifted(above, aboveBefore))) | (startsAbove & shifted(here, hereBefore));
            } else {
                contacts = (startsHere & above) | (startsAbove & here & shifted(here, hereBefore));
            }
            forest.append(std::popcount(startsHere));
            for (; contacts != 0; contacts &= contacts - 1) {
                const std::uint64_t upTo = contacts ^ (contacts - 1);
                forest.join(runsAbove + static_cast<Run>(std::popcount(startsAbove & upTo)) - 1,
                            runsHere + static_cast<Run>(std::popcount(startsHere & upTo)) - 1);
            }
            runsAbove += static_cast<Run>(std::popcount(startsAbove));
            runsHere += static_cast<Run>(std::popcount(startsHere));
            aboveBefore = above;
            hereBefore = here;
        }
        firstAbove = first;
    }
}

// Labels by number of run. A group of eight pixels needs at most five of them: that of the run that is open, and four
// more.
class RunLabels {
public:
    RunLabels(const Run *labels, Run count) : labels_(reinterpret_cast<const std::int32_t *>(labels)), count_(count) {}

    // The label of the last run that started.
    RVX_INLINE std::int32_t current() const { return labels_[started_ - 1]; }
    RVX_INLINE void start(int runs) { started_ += runs; }

    // Eight pixels and which of them start a run. The label before the first one stands for the run that is open when
    // nothing has started; what is read there (still scratch) belongs to no pixel.
    RVX_INLINE I32x8 next(std::uint32_t pixels, std::uint32_t startBits) {
        constexpr std::uint64_t ones = 0x0101010101010101;
        const std::uint64_t startedUpTo = scatterBits(startBits, ones) * ones;
        const std::int32_t *const open = labels_ + started_ - 1;
        const std::int64_t left = count_ + 1 - started_;
        const I32x8 labels = left >= 8 ? load<I32x8>(open) : load<I32x8>(open, Part{static_cast<int>(left)});
        started_ += static_cast<std::int64_t>(startedUpTo >> 56);
        return keep(maskOfBits<I32x8>(pixels), permuted(labels, fromPackedBytes(startedUpTo)));
    }

private:
    const std::int32_t *labels_;
    const std::int64_t count_;
    std::int64_t started_ = 0;
};

// Up to 64 pixels of labels. Labels of narrow types are below their maximum: nothing saturates.
RVX_INLINE void writeLabels(std::int32_t *dst, int n, std::uint64_t pixels, std::uint64_t starts, RunLabels &labels) {
    for (int x = 0; x < n; x += 8) {
        const I32x8 out = labels.next(pixels >> x & 0xff, starts >> x & 0xff);
        if (x + 8 <= n) {
            store(dst + x, out);
        } else {
            store(dst + x, out, Part{n - x});
        }
    }
}
template <class T>
RVX_INLINE void writeLabels(T *dst, int n, std::uint64_t pixels, std::uint64_t starts, RunLabels &labels) {
    const auto put = [](T *p, U16x16 out, auto span) {
        if constexpr (sizeof(T) == 1) {
            storeSaturated(p, I16x16{{out.v}}, span);
        } else {
            store(p, out, span);
        }
    };
    for (int x = 0; x < n; x += 16) {
        const I32x8 low = labels.next(pixels >> x & 0xff, starts >> x & 0xff);
        const I32x8 high = labels.next(pixels >> (x + 8) & 0xff, starts >> (x + 8) & 0xff);
        const U16x16 out = narrowSaturatedUnsigned(low, high);
        if (x + 16 <= n) {
            put(dst + x, out, Full{});
        } else {
            put(dst + x, out, Part{n - x});
        }
    }
}

template <class Src, class Dst>
void writeRows(Plane<const Src> src, Plane<Dst> dst, RoiSize roi, std::int64_t words, RunLabels labels) {
    for (std::int64_t y = 0; y < roi.height; ++y) {
        std::uint64_t before = 0;
        for (std::int64_t k = 0; k < words; ++k) {
            const int n = static_cast<int>(std::min<std::int64_t>(wordPixels, roi.width - k * wordPixels));
            const std::uint64_t here = foreground(src.row(y) + k * wordPixels, n);
            const std::uint64_t newRuns = starts(here, before);
            Dst *const out = dst.row(y) + k * wordPixels;
            before = here;
            if (n == wordPixels && (here == 0 || (here == ~0ull && newRuns <= 1))) {
                labels.start(static_cast<int>(newRuns));
                const Dst value = here == 0 ? Dst{0} : static_cast<Dst>(labels.current());
                paintWord<Dst, 1>(out, n, ~0ull, {value}, {splat(value)});
            } else {
                writeLabels(out, n, here, newRuns, labels);
            }
        }
    }
}

template <class Src, class Dst>
StatusCode labelMarkers(const Src *src, std::int32_t srcStep, Dst *dst, std::int32_t dstStep, RoiSize roi,
                        std::int32_t minLabel, std::int32_t maxLabel, NormKind norm, std::int32_t *count,
                        std::uint8_t *buffer) {
    constexpr std::int64_t marker = std::numeric_limits<Dst>::max();
    Checks checks;
    checks.pointers(src, dst, count, buffer).size(roi);
    checks.steps(rowBytes<Src>(roi.width), srcStep).steps(rowBytes<Dst>(roi.width), dstStep);
    checks.multiples(sizeof(Src), srcStep).multiples(sizeof(Dst), dstStep);
    checks.require(minLabel >= 1 && maxLabel < marker && minLabel <= maxLabel, StatusBadArgument);
    checks.require(norm == NormInf || norm == NormL1, StatusBadArgument);
    if (checks.failed()) {
        return checks.status();
    }
    const std::int64_t words = (std::int64_t{roi.width} + wordPixels - 1) / wordPixels;
    Scratch scratch(buffer, static_cast<std::int64_t>(memberFillBytes(roi)));
    auto *const row = scratch.take<std::uint64_t>(words);
    auto *const runs = scratch.take<Run>((std::int64_t{roi.width} + 1) / 2 * roi.height);
    RunForest forest(runs);
    const Plane<const Src> source{src, srcStep};
    if (norm == NormInf) {
        joinRuns<true>(source, roi, row, words, forest);
    } else {
        joinRuns<false>(source, roi, row, words, forest);
    }
    const std::int32_t components = forest.label(minLabel, maxLabel);
    writeRows<Src, Dst>(source, Plane{dst, dstStep}, roi, words, RunLabels(runs, forest.count()));
    storeScalar(count, components);
    return StatusOk;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiLabelMarkers_8u_C1IR(uint8_t *image, int32_t step, RoiSize roi, int32_t minLabel, int32_t maxLabel,
                                    NormKind norm, int32_t *count, uint8_t *buffer) {
    return labelMarkers(image, step, image, step, roi, minLabel, maxLabel, norm, count, buffer);
}
StatusCode rvxiLabelMarkers_16u_C1IR(uint16_t *image, int32_t step, RoiSize roi, int32_t minLabel, int32_t maxLabel,
                                     NormKind norm, int32_t *count, uint8_t *buffer) {
    return labelMarkers(image, step, image, step, roi, minLabel, maxLabel, norm, count, buffer);
}
StatusCode rvxiLabelMarkers_8u32s_C1R(const uint8_t *src, int32_t srcStep, int32_t *dst, int32_t dstStep, RoiSize roi,
                                      int32_t minLabel, int32_t maxLabel, NormKind norm, int32_t *count,
                                      uint8_t *buffer) {
    return labelMarkers(src, srcStep, dst, dstStep, roi, minLabel, maxLabel, norm, count, buffer);
}

StatusCode rvxiLabelMarkersGetBufferSize_8u_C1R(RoiSize roi, int32_t *bufferSize) {
    return rvxiFloodFillGetSize(roi, bufferSize);
}
StatusCode rvxiLabelMarkersGetBufferSize_16u_C1R(RoiSize roi, int32_t *bufferSize) {
    return rvxiFloodFillGetSize(roi, bufferSize);
}
StatusCode rvxiLabelMarkersGetBufferSize_8u32s_C1R(RoiSize roi, int32_t *bufferSize) {
    return rvxiFloodFillGetSize(roi, bufferSize);
}
