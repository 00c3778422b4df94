// Row kernels of the separable pipeline: filter a run of pixels of one extended row.
//
// A kernel reads `pixels` rounded up to sixteen, plus kernelSize - 1, pixels from the first tap of the first pixel on,
// and writes exactly `pixels` pixels. The driver gives it either the source row itself (then `pixels` is a multiple of
// sixteen, so nothing outside is read) or a patch in the scratch buffer that is long enough.
#pragma once

#include "filter/mirrored_taps.h"

namespace rvxcv {

// A chain of single taps: 32f, 16u (as floats) and the 16-bit sums of the Low members. `taps` is the kernel's length
// when it is fixed, so that the taps stay in registers, and 0 when it is any.
template <class Arithmetic, int channels, int taps> class ChainRow {
public:
    using Sum = typename Arithmetic::Sum;
    static constexpr int unitsTogether = channels == 1 ? 4 : channels; // whose sums are formed side by side

    template <class Tap> ChainRow(const Tap *kernel, std::int32_t kernelSize) : kernel_(kernel), size_(kernelSize) {
        for (int j = 0; j < taps; ++j) {
            fixed_[j] = Arithmetic::tap(kernel + j);
        }
    }

    // The sums of `units` units, from the first tap of the first element on.
    template <int units, class E> RVX_INLINE void sums(Sum (&sum)[units], const E *e) const {
        const auto firstTap = tap(0);
        for (int u = 0; u < units; ++u) {
            sum[u] = Arithmetic::first(firstTap, Arithmetic::value(e + u * unit, Full{}));
        }
        for (int j = 1; j < count(); ++j) {
            const auto nextTap = tap(j);
            e += channels;
            for (int u = 0; u < units; ++u) {
                sum[u] = Arithmetic::next(sum[u], nextTap, Arithmetic::value(e + u * unit, Full{}));
            }
        }
    }

private:
    RVX_INLINE int count() const { return taps != 0 ? taps : size_; }
    RVX_INLINE typename Arithmetic::Tap tap(int j) const {
        if constexpr (taps != 0) {
            return fixed_[j];
        } else {
            return Arithmetic::tap(kernel_ + j);
        }
    }

    const typename Arithmetic::Coefficient *kernel_;
    int size_;
    typename Arithmetic::Tap fixed_[taps != 0 ? taps : 1];
};

// Pairs of 16-bit taps with the integer multiply-add. One channel: neighbouring elements are neighbouring pixels, so a
// load gives the pairs of its even elements and a load one further those of its odd ones. Three channels: the pairs
// come from two loads a pixel apart. Order does not matter to sums that wrap.
template <int channels, int taps> class PairRow {
public:
    using Sum = std::conditional_t<channels == 1, AlternatingSum, InLaneSum>;
    static constexpr int unitsTogether = taps != 0 ? 1 : channels == 1 ? 4 : channels;

    PairRow(const std::int16_t *kernel, std::int32_t kernelSize) : pairs_(kernel, kernelSize) {
        if (kernelSize % 2 != 0) {
            const std::int16_t last = loadScalar(kernel + kernelSize - 1);
            lastEven_ = splatPair(last, 0);
            lastOdd_ = splatPair(0, last);
        }
    }

    template <int units, class E> RVX_INLINE void sums(Sum (&sum)[units], const E *e) const {
        for (int u = 0; u < units; ++u) {
            sum[u] = {splat(0), splat(0)};
        }
        for (int p = 0; p < pairs_.count() / 2; ++p) {
            const I16x16 taps2 = pairs_[p];
            for (int u = 0; u < units; ++u) {
                addPair(sum[u], e + u * unit, taps2);
            }
            e += 2 * channels;
        }
        if (pairs_.count() % 2 != 0) {
            for (int u = 0; u < units; ++u) {
                addLast(sum[u], inRegister(loadI16(e + u * unit, Full{})));
            }
        }
    }

private:
    template <class E> static RVX_INLINE void addPair(AlternatingSum &sum, const E *e, I16x16 taps2) {
        sum.even = add(sum.even, mulAddPairs(loadI16(e, Full{}), taps2));
        sum.odd = add(sum.odd, mulAddPairs(loadI16(e + 1, Full{}), taps2));
    }
    template <class E> static RVX_INLINE void addPair(InLaneSum &sum, const E *e, I16x16 taps2) {
        const I16x16 a = inRegister(loadI16(e, Full{})), b = inRegister(loadI16(e + channels, Full{}));
        sum.low = add(sum.low, mulAddPairs(pairsInLaneLow(a, b), taps2));
        sum.high = add(sum.high, mulAddPairs(pairsInLaneHigh(a, b), taps2));
    }
    // The last tap of an odd number, from the one load whose last element is still in the row.
    RVX_INLINE void addLast(AlternatingSum &sum, I16x16 a) const {
        sum.even = add(sum.even, mulAddPairs(a, lastEven_));
        sum.odd = add(sum.odd, mulAddPairs(a, lastOdd_));
    }
    RVX_INLINE void addLast(InLaneSum &sum, I16x16 a) const {
        sum.low = add(sum.low, mulAddPairs(pairsInLaneLow(a, a), lastEven_));
        sum.high = add(sum.high, mulAddPairs(pairsInLaneHigh(a, a), lastEven_));
    }

    TapPairs<taps, taps / 2> pairs_;
    I16x16 lastEven_, lastOdd_;
};

// A mirrored kernel of odd length over 16-bit elements.
template <int channels, int taps> class MirroredRow {
public:
    using Sum = InLaneSum;
    static constexpr int unitsTogether = taps != 0 ? 1 : 4;

    MirroredRow(const std::int16_t *kernel, std::int32_t kernelSize) : kernel_(kernel, kernelSize) {}

    template <int units> RVX_INLINE void sums(Sum (&sum)[units], const std::int16_t *e) const {
        Sum row[1][units];
        kernel_.sums(row, [&](std::int64_t j, int u) { return loadI16(e + j * channels + u * unit, Full{}); });
        std::copy_n(row[0], units, sum);
    }

private:
    MirroredTaps<taps> kernel_;
};

// ----------------------------------------------------------------------------------------------- a run of pixels

template <int units, class Rounding, class Kernel, class Output, class E, class D, class Span>
RVX_INLINE void filterBlock(const Kernel &kernel, const Output &output, const E *e, D *dst, Span span) {
    typename Kernel::Sum sum[units];
    kernel.template sums<units>(sum, e);
    for (int u = 0; u < units; ++u) {
        output.template store<Rounding>(dst + u * unit, sum[u], span);
    }
}

// A run of pixels: where the first tap of the first one lies, and where the results go.
template <class E, class D> struct Run {
    const E *from;
    D *dst;
    std::int64_t pixels;
};

// Whole blocks of sixteen pixels, several at once where there are many, then the row's last pixels. Kernel and output
// are copies, which no store can change: their constants stay in registers.
template <int channels, class Kernel, class Output, class E, class D>
void filterRuns(const Kernel kernel, const Output output, const Run<E, D> *runs, int count) {
    constexpr int together = Kernel::unitsTogether, wide = 4 / together * together;
    for (const Run<E, D> *run = runs; run < runs + count; ++run) {
        const E *e = run->from;
        D *dst = run->dst;
        std::int64_t rest = run->pixels % unit * channels, x = 0;
        const std::int64_t whole = run->pixels * channels - rest;
        for (; x + wide * unit <= whole; x += wide * unit) {
            for (int u = 0; u < wide; u += together) {
                filterBlock<together, Nearest>(kernel, output, e + x + u * unit, dst + x + u * unit, Full{});
            }
        }
        for (; x < whole; x += unit) {
            filterBlock<1, Nearest>(kernel, output, e + x, dst + x, Full{});
        }
        for (; rest >= unit; x += unit, rest -= unit) {
            filterBlock<1, LastRounding<Output>>(kernel, output, e + x, dst + x, Full{});
        }
        if (rest > 0) {
            filterBlock<1, LastRounding<Output>>(kernel, output, e + x, dst + x, Part{static_cast<int>(rest)});
        }
    }
}

} // namespace rvxcv
