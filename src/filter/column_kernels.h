// Column kernels of the separable pipeline: filter a unit of sixteen elements, or several, of a few output rows at
// once. Neighbouring output rows share most of their source rows, so each source vector is loaded (and widened or
// paired) once for all of them.
//
// A kernel's sums(sum, source) sets sum[r][u] for every output row r and unit u; row 0 of the source lies under the
// first tap of output row 0.
#pragma once

#include "filter/mirrored_taps.h"

#include <utility>

namespace rvxcv {

// The unit at element x, and the ones behind it, of an array of rows.
template <class T, class Span> struct ColumnSource {
    const T *const *rows;
    std::int64_t x;
    Span span;

    RVX_INLINE const T *at(std::int64_t row, int u) const { return rows[row] + x + u * unit; }
};

// A chain of single taps in ascending order: 32f, 16u and the 16-bit sums of the Low members. `taps` is the kernel's
// length when it is fixed, so that the taps stay in registers, and 0 when it is any.
template <class Arithmetic, int taps> class ChainColumn {
public:
    using Sum = typename Arithmetic::Sum;
    // Output rows that are computed together, and the units of each; alone, a row takes several units.
    static constexpr int rowsTogether = 4;
    static constexpr int unitsTogether = std::is_same_v<Sum, LowSum> ? 2 : 1, unitsAlone = 4;

    template <class Tap> ChainColumn(const Tap *kernel, std::int32_t kernelSize) : kernel_(kernel), size_(kernelSize) {
        for (int i = 0; i < taps; ++i) {
            fixed_[i] = Arithmetic::tap(kernel + i);
        }
    }

    // Source row i lies under tap i - r of output row r: the first and the last source rows are under some of the
    // output rows only.
    template <int rows, int units, class Source>
    RVX_INLINE void sums(Sum (&sum)[rows][units], const Source &source) const {
        if constexpr (taps != 0) {
            addAll(sum, source, std::make_integer_sequence<int, taps + rows - 1>{});
        } else {
            addFirst(sum, source, std::make_integer_sequence<int, rows>{});
            for (int i = rows; i < size_; ++i) {
                addRow<0, rows, false>(sum, source, i);
            }
            addLast(sum, source, std::make_integer_sequence<int, rows - 1>{});
        }
    }

    bool longEnoughFor(int rows) const { return taps != 0 || size_ >= rows; }

private:
    RVX_INLINE typename Arithmetic::Tap tap(int i) const {
        if constexpr (taps != 0) {
            return fixed_[i];
        } else {
            return Arithmetic::tap(kernel_ + i);
        }
    }

    // Source row i joins the sums of the output rows first..last-1; it begins the sum of the last one if that is new.
    template <int first, int last, bool isNew, int rows, int units, class Source>
    RVX_INLINE void addRow(Sum (&sum)[rows][units], const Source &source, int i) const {
        for (int u = 0; u < units; ++u) {
            const Sum value = Arithmetic::value(source.at(i, u), source.span);
            for (int r = first; r < last - isNew; ++r) {
                sum[r][u] = Arithmetic::next(sum[r][u], tap(i - r), value);
            }
            if (isNew) {
                sum[last - 1][u] = Arithmetic::first(tap(0), value);
            }
        }
    }

    // The rows of a fixed kernel, and the first and the last ones of any: written out, so that sums stay in registers.
    template <int rows, int units, class Source, int... i>
    RVX_INLINE void addAll(Sum (&sum)[rows][units], const Source &source, std::integer_sequence<int, i...>) const {
        (addRow<std::max(i - taps + 1, 0), std::min(i + 1, rows), (i < rows)>(sum, source, i), ...);
    }
    template <int rows, int units, class Source, int... i>
    RVX_INLINE void addFirst(Sum (&sum)[rows][units], const Source &source, std::integer_sequence<int, i...>) const {
        (addRow<0, i + 1, true>(sum, source, i), ...);
    }
    template <int rows, int units, class Source, int... i>
    RVX_INLINE void addLast(Sum (&sum)[rows][units], const Source &source, std::integer_sequence<int, i...>) const {
        (addRow<i + 1, rows, false>(sum, source, size_ + i), ...);
    }

    const typename Arithmetic::Coefficient *kernel_;
    int size_;
    typename Arithmetic::Tap fixed_[taps != 0 ? taps : 1];
};

// Pairs of 16-bit taps with the integer multiply-add: source rows 2p and 2p + 1 lie under the taps 2p - r and
// 2p - r + 1 of output row r. Taps outside the kernel are zero there, which changes nothing in a wrapping sum.
template <int taps> class PairColumn {
public:
    using Sum = InLaneSum;
    static constexpr int rowsTogether = 2, unitsTogether = 2, unitsAlone = 4;

    PairColumn(const std::int16_t *kernel, std::int32_t kernelSize) : kernel_(kernel), size_(kernelSize) {
        for (int r = 0; r < rowsTogether; ++r) {
            head_[r] = edgePair(-r);
            tail_[r] = edgePair(kernelSize / 2 * 2 - r);
            for (int p = 0; p < taps / 2; ++p) {
                fixed_[r][p] = edgePair(2 * p - r);
            }
        }
    }

    template <int rows, int units, class Source>
    RVX_INLINE void sums(Sum (&sum)[rows][units], const Source &source) const {
        static_assert(rows <= rowsTogether);
        for (auto &row : sum) {
            for (Sum &s : row) {
                s = {splat(0), splat(0)};
            }
        }
        // Whole pairs of rows 1.. for which every output row has two taps; before and behind them some have one.
        const int pairs = count() / 2;
        if (pairs > 0) {
            addRows(sum, source, 0, 1, [&](int r) { return pairAt<rows>(0, r); });
        }
        for (int p = 1; p < pairs; ++p) {
            addRows(sum, source, 2 * p, 2 * p + 1, [&](int r) { return pairAt<rows>(p, r); });
        }
        if (rows > 1 || count() % 2 != 0) {
            const int last = 2 * pairs, behind = std::min(last + 1, count() + rows - 2);
            addRows(sum, source, last, behind, [&](int r) { return tail_[r]; });
        }
    }

    bool longEnoughFor(int) const { return true; }

private:
    RVX_INLINE int count() const { return taps != 0 ? taps : size_; }

    // The taps t and t + 1, zero outside the kernel.
    I16x16 edgePair(int t) const {
        const auto at = [&](int i) { return i >= 0 && i < size_ ? loadScalar(kernel_ + i) : std::int16_t{0}; };
        return splatPair(at(t), at(t + 1));
    }

    template <int rows> RVX_INLINE I16x16 pairAt(int p, int r) const {
        if constexpr (taps != 0) {
            return fixed_[r][p];
        } else {
            return p == 0 ? head_[r] : splatPair(kernel_ + 2 * p - r);
        }
    }

    template <int rows, int units, class Source, class Pair>
    static RVX_INLINE void addRows(Sum (&sum)[rows][units], const Source &source, int i, int j, const Pair &pair) {
        for (int u = 0; u < units; ++u) {
            const I16x16 a = inRegister(loadI16(source.at(i, u), source.span));
            const I16x16 b = inRegister(loadI16(source.at(j, u), source.span));
            const I16x16 low = pairsInLaneLow(a, b), high = pairsInLaneHigh(a, b);
            for (int r = 0; r < rows; ++r) {
                sum[r][u].low = add(sum[r][u].low, mulAddPairs(low, pair(r)));
                sum[r][u].high = add(sum[r][u].high, mulAddPairs(high, pair(r)));
            }
        }
    }

    const std::int16_t *kernel_;
    int size_;
    I16x16 head_[rowsTogether], tail_[rowsTogether];
    I16x16 fixed_[rowsTogether][taps > 1 ? taps / 2 : 1];
};

// A mirrored kernel of odd length over 16-bit rows.
template <int taps> class MirroredColumn {
public:
    using Sum = InLaneSum;
    static constexpr int rowsTogether = taps != 0 ? 2 : 1, unitsTogether = taps != 0 ? 1 : 4,
                         unitsAlone = unitsTogether;

    MirroredColumn(const std::int16_t *kernel, std::int32_t kernelSize) : kernel_(kernel, kernelSize) {}

    template <int rows, int units, class Source>
    RVX_INLINE void sums(Sum (&sum)[rows][units], const Source &source) const {
        kernel_.sums(sum, [&](std::int64_t i, int u) { return loadI16(source.at(i, u), source.span); });
    }

    bool longEnoughFor(int) const { return true; }

private:
    MirroredTaps<taps> kernel_;
};

} // namespace rvxcv
