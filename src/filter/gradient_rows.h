// Fixed 3- and 5-tap filters one row at a time, for what is built on derivatives (Canny's gradients, the corner
// measure); the sums and borders serve the derivative filters themselves (row_ring.h), too.
//
// Integer filters of 8u sources (`filterRow`) combine the rows around the output row first, then the columns of that
// one row of sums: the arithmetic is exact in 16 bits, so the order does not matter, and nothing is kept from row to
// row. The sums of a chunk of columns live on the stack and stay in the first-level cache.
//
// Float filters round at every step, and the order is part of their contract: `rowStage` over each source row, then
// `columnSum` over the results of 3 or 5 rows. In both a sum is the first tap's product and a fused multiply-add for
// every further tap, zero taps included (they spread NaN and infinity).
//
// No source row is copied. `BorderedRows` says which row stands for a y outside the region, `ColumnMargins` which
// column for an x outside; the few outputs beside a border that is not in memory are computed one by one.
#pragma once

#include "filter/fixed_kernels.h"
#include "kernel/border.h"
#include "kernel/rows.h"
#include "kernel/vec.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

namespace rvxcv {

// ----------------------------------------------------------------------------------------------------- borders

// The columns up to `reach` beside a row's `width` pixels, looked up once per call.
template <int reach> class ColumnMargins {
public:
    std::int64_t width;
    std::int64_t first, last; // the columns [first, last) can be read from any row where they lie

    ColumnMargins(const Border &border, std::int64_t columns)
        : width(columns), first(border.left ? -reach : 0), last(columns + (border.right ? reach : 0)) {
        for (int i = 0; i < reach; ++i) {
            left_[i] = borderColumn(border, i - reach, columns);
            right_[i] = borderColumn(border, columns + i, columns);
        }
    }

    // The pixel at any column -reach <= x < width + reach.
    template <class T> RVX_INLINE T pixel(const T *row, std::int64_t x, T constant) const {
        if (x >= 0 && x < width) {
            return loadScalar(row + x);
        }
        const BorderIndex &from = x < 0 ? left_[x + reach] : right_[x - width];
        return from.constant ? constant : loadScalar(row + from.index);
    }

private:
    BorderIndex left_[reach], right_[reach];
};

// The rows of an image and those around it. A row of the border's constant is built at `constantRow`, which has room
// for constantElements; it is constant in its margins too.
template <class T, int reach> class BorderedRows {
public:
    static constexpr std::int64_t constantElements(std::int64_t width) { return width + 2 * reach; }

    BorderedRows(Plane<const T> source, RoiSize roi, const Border &border, T value, T *constantRow)
        : source_(source), border_(border), height_(roi.height), constantRow_(constantRow + reach) {
        if (border.kind == BorderConstant && !(border.top && border.bottom)) {
            fillPixels<1>(constantRow, constantElements(roi.width), &value);
        }
    }

    // The row for -reach <= y < height + reach, at column 0; its columns [first, last) of the margins are readable.
    RVX_INLINE const T *row(std::int64_t y) const {
        if (y >= 0 && y < height_) {
            return source_.row(y);
        }
        const BorderIndex from = borderRow(border_, y, height_);
        return from.constant ? constantRow_ : source_.row(from.index);
    }

    // The rows that an output row is computed from.
    RVX_INLINE void around(std::int64_t y, const T *(&rows)[2 * reach + 1]) const {
        for (int i = 0; i <= 2 * reach; ++i) {
            rows[i] = row(y + i - reach);
        }
    }

private:
    Plane<const T> source_;
    Border border_;
    std::int64_t height_;
    const T *constantRow_;
};

// ------------------------------------------------------------------------------ sums: vectors and scalars alike

namespace detail {

template <class V> RVX_INLINE V plus(V a, V b) {
    if constexpr (std::is_arithmetic_v<V>) {
        return a + b;
    } else {
        return add(a, b);
    }
}

template <class V> RVX_INLINE V minus(V a, V b) {
    if constexpr (std::is_arithmetic_v<V>) {
        return a - b;
    } else {
        return sub(a, b);
    }
}

// coefficient * a for the integer kernels.
template <int coefficient, class V> RVX_INLINE V times(V a) {
    static_assert(coefficient > 0);
    if constexpr (std::is_arithmetic_v<V>) {
        return coefficient * a;
    } else if constexpr (coefficient == 1) {
        return a;
    } else if constexpr (coefficient == 2) {
        return add(a, a);
    } else if constexpr ((coefficient & (coefficient - 1)) == 0) {
        return shiftLeft<std::countr_zero(static_cast<unsigned>(coefficient))>(a);
    } else {
        return mulLow(a, splat(static_cast<std::int16_t>(coefficient)));
    }
}

template <int coefficient, class V> RVX_INLINE V plusTimes(V sum, V a) {
    if constexpr (coefficient == 0) {
        return sum;
    } else if constexpr (coefficient < 0) {
        return minus(sum, times<-coefficient>(a));
    } else {
        return plus(sum, times<coefficient>(a));
    }
}

// sum + coefficient * a, rounded once. For the coefficients 1 and -1 an addition and a subtraction do just that.
template <const auto &kernel, int tap, class V> RVX_INLINE V fusedTap(V sum, V a) {
    if constexpr (kernel[tap] == 1) {
        return plus(sum, a);
    } else if constexpr (kernel[tap] == -1) {
        return minus(sum, a);
    } else if constexpr (std::is_arithmetic_v<V>) {
        return std::fma(kernel[tap], a, sum);
    } else {
        return fma(splat(kernel[tap]), a, sum);
    }
}

template <const auto &kernel, class Tap, int... taps>
RVX_INLINE auto fusedTaps(const Tap &tap, std::integer_sequence<int, taps...>) {
    auto sum = tap(0);
    if constexpr (kernel[0] != 1) {
        if constexpr (std::is_arithmetic_v<decltype(sum)>) {
            sum *= kernel[0];
        } else {
            sum = mul(splat(kernel[0]), sum);
        }
    }
    ((sum = fusedTap<kernel, taps + 1>(sum, tap(taps + 1))), ...);
    return sum;
}

} // namespace detail

// The exact integer sum of kernel[i] * tap(i). Mirrored taps have equal coefficients or opposite ones and are joined
// before they are multiplied.
template <const auto &kernel, class Tap> RVX_INLINE auto exactSum(const Tap &tap) {
    using namespace detail;
    constexpr int n = kernel.taps, end = n - 1, middle = n / 2;
    if constexpr (n == 3 && kernel[0] == kernel[end] && kernel[middle] == 2 * kernel[0]) {
        return times<kernel[0]>(plus(plus(tap(0), tap(1)), plus(tap(1), tap(2)))); // neighbouring sums share a pair
    } else if constexpr (kernel[0] == kernel[end]) {
        auto sum = times<kernel[0]>(plus(tap(0), tap(end)));
        if constexpr (n == 5 && kernel[1] != 0) {
            sum = plusTimes<kernel[1]>(sum, plus(tap(1), tap(3)));
        }
        if constexpr (kernel[middle] != 0) {
            sum = plusTimes<kernel[middle]>(sum, tap(middle));
        }
        return sum;
    } else {
        static_assert(kernel[0] == -kernel[end] && kernel[middle] == 0);
        constexpr int plusEnd = kernel[end] > 0 ? end : 0; // where the positive half begins
        auto sum = times<kernel[plusEnd]>(minus(tap(plusEnd), tap(end - plusEnd)));
        if constexpr (n == 5) {
            constexpr int plusInner = plusEnd == end ? 3 : 1;
            sum = plusTimes<kernel[plusInner]>(sum, minus(tap(plusInner), tap(end - plusInner)));
        }
        return sum;
    }
}

// The float sum of a stage: taps in ascending order, the first a plain product, every further one fused onto it.
// Differences of mirrored taps subtract those first, then the inner pair and the zero tap are fused on; central ones
// are just that.
template <const auto &kernel, class Tap> RVX_INLINE auto chainedSum(const Tap &tap) {
    if constexpr (std::is_same_v<decltype(kernel), const MirroredDifference &>) {
        static_assert(kernel[4] == 1 && kernel[3] == -kernel[1] && kernel[2] == 0);
        const auto outer = detail::minus(tap(4), tap(0));
        return detail::fusedTap<kernel, 2>(detail::fusedTap<kernel, 3>(outer, detail::minus(tap(3), tap(1))), tap(2));
    } else if constexpr (std::is_same_v<decltype(kernel), const CentralDifference &>) {
        return detail::minus(tap(2), tap(0));
    } else if constexpr (std::is_same_v<decltype(kernel), const MiddleTap &>) {
        return tap(1);
    } else {
        return detail::fusedTaps<kernel>(tap, std::make_integer_sequence<int, kernel.taps - 1>{});
    }
}

// ------------------------------------------------------------------------------------- integer filters of 8u rows

// A filter says how the rows' pixels at one column become a column's `planes` sums, and how the sums of neighbouring
// columns become the result:
//
//     static constexpr int taps, planes;
//     template <class V, class Tap> static void vertical(const Tap &tap, V (&sums)[planes]);   tap(i): row i
//     template <class Tap> static Result horizontal(const Tap &tap);                           tap(plane, i): column i
//
// `vertical` serves vectors and, beside a border, single ints.

// Both first derivatives: dx = right minus left, dy = below minus above, each smoothed across.
//
//     3x3 Sobel, dx   -1  0  1      dy   -1 -2 -1         Scharr, dx    -3  0  3      dy   -3 -10 -3
//                     -2  0  2            0  0  0                      -10  0 10            0   0  0
//                     -1  0  1            1  2  1                       -3  0  3            3  10  3
struct GradientPair {
    I16x16 dx, dy;
};

template <const auto &smooth, const auto &derive> struct Gradient {
    static constexpr int taps = smooth.taps, planes = 2;

    template <class V, class Tap> static RVX_INLINE void vertical(const Tap &tap, V (&sums)[planes]) {
        sums[0] = exactSum<smooth>(tap);
        sums[1] = exactSum<derive>(tap);
    }
    template <class Tap> static RVX_INLINE GradientPair horizontal(const Tap &tap) {
        return {exactSum<derive>([&](int i) { return tap(0, i); }), exactSum<smooth>([&](int i) { return tap(1, i); })};
    }
};

using SobelGradient3 = Gradient<kerSobel_3_16s, kerDx_3_16s>;
using SobelGradient5 = Gradient<kerSobel_5_16s, kerDx_5_16s>;
using ScharrGradient3 = Gradient<kerScharr_3_16s, kerDx_3_16s>;

// Both, without smoothing.
struct CentralGradient {
    static constexpr int taps = 3, planes = 2;

    template <class V, class Tap> static RVX_INLINE void vertical(const Tap &tap, V (&sums)[planes]) {
        sums[0] = tap(1);
        sums[1] = exactSum<kerDx_3_16s>(tap);
    }
    template <class Tap> static RVX_INLINE GradientPair horizontal(const Tap &tap) {
        return {exactSum<kerDx_3_16s>([&](int i) { return tap(0, i); }), tap(1, 1)};
    }
};

namespace detail {

// The columns of a chunk: a multiple of every block width, small enough for the first-level cache.
constexpr std::int64_t chunkColumns = 1024;

template <class Filter> struct ColumnSums {
    static constexpr int lead = 16; // room for the left margin; column 0 of the chunk is aligned
    alignas(32) std::int16_t plane[Filter::planes][lead + chunkColumns + 32];

    std::int16_t *at(int p, std::int64_t x) { return plane[p] + lead + x; }
    const std::int16_t *at(int p, std::int64_t x) const { return plane[p] + lead + x; }
};

template <class Filter> struct VerticalSums {
    static constexpr bool rereads = false;
    const std::uint8_t *rows[Filter::taps];
    std::int16_t *sums[Filter::planes];

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        I16x16 result[Filter::planes];
        Filter::vertical([&](int i) { return loadI16(rows[i] + x, span); }, result);
        for (int p = 0; p < Filter::planes; ++p) {
            store(sums[p] + x, result[p]); // there is always room for a whole vector
        }
    }
};

template <class Filter, class Sink> struct HorizontalSums {
    static constexpr bool rereads = Sink::rereads;
    const ColumnSums<Filter> &sums;
    const Sink &sink;
    std::int64_t firstColumn;

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        const auto tap = [&](int p, int i) { return load<I16x16>(sums.at(p, x + i - Filter::taps / 2)); };
        sink(firstColumn + x, span, Filter::horizontal(tap));
    }
};

} // namespace detail

// One output row of a filter. rows[i] is the row i - reach below the output row, at column 0. `sink(x, span, result)`
// takes the results of columns x.. block by block, in ascending order (with Tail::overlap the last block of a row may
// repeat columns):
//
//     static constexpr Tail tail;
//     static constexpr bool rereads;                      as row kernels say it
template <class Filter, int reach, class Sink>
RVX_INLINE void filterRow(const std::uint8_t *const (&rows)[2 * reach + 1], const ColumnMargins<reach> &margins,
                          std::uint8_t borderValue, const Sink &sink) {
    static_assert(Filter::taps == 2 * reach + 1);
    detail::ColumnSums<Filter> sums;
    for (std::int64_t start = 0; start < margins.width; start += detail::chunkColumns) {
        const std::int64_t count = std::min(margins.width - start, detail::chunkColumns), end = start + count;
        const std::int64_t first = std::max(start - reach, margins.first), last = std::min(end + reach, margins.last);

        detail::VerticalSums<Filter> vertical;
        for (int i = 0; i < Filter::taps; ++i) {
            vertical.rows[i] = rows[i] + first;
        }
        for (int p = 0; p < Filter::planes; ++p) {
            vertical.sums[p] = sums.at(p, first - start);
        }
        walkRow<16, Tail::overlap>(last - first, vertical);

        const auto outside = [&](std::int64_t x) {
            int result[Filter::planes];
            Filter::vertical([&](int i) { return int{margins.pixel(rows[i], x, borderValue)}; }, result);
            for (int p = 0; p < Filter::planes; ++p) {
                *sums.at(p, x - start) = static_cast<std::int16_t>(result[p]);
            }
        };
        for (std::int64_t x = start - reach; x < first; ++x) {
            outside(x);
        }
        for (std::int64_t x = last; x < end + reach; ++x) {
            outside(x);
        }
        // The lanes behind them are loaded, too, and come to nothing in the end; they shall not be what was never
        // written.
        for (int p = 0; p < Filter::planes; ++p) {
            store(sums.at(p, count + reach), I16x16{});
        }

        walkRow<16, Sink::tail>(count, detail::HorizontalSums<Filter, Sink>{sums, sink, start});
    }
}

// ------------------------------------------------------------------------------------------- float stages

namespace detail {

template <const auto &...kernels> struct RowStage {
    static constexpr bool rereads = false;
    const float *row;
    float *out[sizeof...(kernels)];

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        int k = 0;
        (store(out[k++] + x, chainedSum<kernels>(Tap<kernels.reach, Span>{row + x, span}), span), ...);
    }

    template <int reach, class Span> struct Tap {
        const float *center;
        Span span;
        RVX_INLINE F32x8 operator()(int i) const { return load<F32x8>(center + i - reach, span); }
    };
};

} // namespace detail

// The row stage of one or more kernels of the same length over the columns start.. (count of them) of a row; out[k]
// receives the results of kernel k, column `start` first.
template <const auto &...kernels, int reach>
RVX_INLINE void rowStage(const float *row, const ColumnMargins<reach> &margins, float borderValue, std::int64_t start,
                         std::int64_t count, float *const (&out)[sizeof...(kernels)]) {
    static_assert((... && (kernels.reach == reach)));
    const std::int64_t end = start + count;
    // The columns whose taps all lie in the row.
    const std::int64_t first = std::clamp(margins.first + reach, start, end);
    const std::int64_t last = std::clamp(margins.last - reach, first, end);

    const auto beside = [&](std::int64_t x) {
        const auto tap = [&](int i) { return margins.pixel(row, x + i - reach, borderValue); };
        int k = 0;
        (storeScalar(out[k++] + (x - start), chainedSum<kernels>(tap)), ...);
    };
    for (std::int64_t x = start; x < first; ++x) {
        beside(x);
    }
    if (first < last) {
        detail::RowStage<kernels...> stage{row + first, {}};
        for (std::size_t k = 0; k < sizeof...(kernels); ++k) {
            stage.out[k] = out[k] + (first - start);
        }
        walkRow<8, Tail::overlap>(last - first, stage);
    }
    for (std::int64_t x = last; x < end; ++x) {
        beside(x);
    }
}

// What becomes of a column stage's sum.
struct Unscaled {
    RVX_INLINE F32x8 operator()(F32x8 sum) const { return sum; }
};
// A box filter's mean: the sum times the rounded reciprocal of the area.
template <int area> struct Mean {
    RVX_INLINE F32x8 operator()(F32x8 sum) const { return mul(sum, splat(1.0f / static_cast<float>(area))); }
};

// The sum of a column stage at one block of columns; rows[i] is the row-stage result i rows below the first.
template <const auto &kernel, class Span>
RVX_INLINE F32x8 columnSum(const float *const *rows, std::ptrdiff_t x, Span span) {
    return chainedSum<kernel>([&](int i) { return load<F32x8>(rows[i] + x, span); });
}

} // namespace rvxcv
