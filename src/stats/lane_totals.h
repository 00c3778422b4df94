// Totals over blocks of magnitudes: the largest one, and sums of values and of squares, exact for integers and lane
// sums of doubles for floats. Lanes that are left out hold zero.
#pragma once

#include "stats/masked_rows.h"

namespace rvxcv {

// -------------------------------------------------------------------------------------------------------- largest

template <class V> struct Largest {
    V lanes{};

    RVX_INLINE void add(V a) { lanes = max(a, lanes); }
    RVX_INLINE void flush(std::int64_t) {}
    RVX_INLINE double value() const {
        return joinedLanes(lanes, [](V a, V b) { return max(a, b); });
    }
};
// A NaN is passed over: the comparison with it keeps what is there.
template <> struct Largest<F32x16> {
    Largest<F32x8> low, high;

    RVX_INLINE void add(F32x16 a) {
        low.add(a.low);
        high.add(a.high);
    }
    RVX_INLINE void flush(std::int64_t) {}
    RVX_INLINE double value() const { return Largest<F32x8>{max(low.lanes, high.lanes)}.value(); }
};

// ----------------------------------------------------------------------------------------------------------- sums

// The sum of the values, the sum of their squares, or both.
template <class V, bool first, bool second> struct Sums;

template <bool first, bool second> struct Sums<U8x32, first, second> {
    I64x4 lanes{};
    I32x8 squareLanes{};
    std::uint64_t squares = 0;

    RVX_INLINE void add(U8x32 a) {
        if constexpr (first) {
            lanes = rvxcv::add(lanes, byteSums(a));
        }
        if constexpr (second) { // at most 4 * 255 * 255 to a lane
            const I16x16 even{{bitAnd(a, evenBytes()).v}}, odd = oddBytes(a);
            squareLanes = rvxcv::add(squareLanes, rvxcv::add(mulAddPairs(even, even), mulAddPairs(odd, odd)));
        }
    }
    RVX_INLINE void flush(std::int64_t) {
        if constexpr (second) {
            squares += static_cast<std::uint64_t>(total(pairSumsUnsigned(squareLanes)));
            squareLanes = decltype(squareLanes){};
        }
    }
    RVX_INLINE std::uint64_t sum() const { return static_cast<std::uint64_t>(total(lanes)); }
    RVX_INLINE std::uint64_t sumOfSquares() const { return squares; }

private:
    RVX_INLINE static U8x32 evenBytes() { return {{splat(std::int16_t{255}).v}}; }
};

// Signed products of pairs are the only ones there are: with w = v - 32768, v = w + 32768 and v^2 = w^2 + 65536 w +
// 2^30. The sum of two squares w^2 reaches 2^31 and counts as unsigned. What a lane without a pixel adds comes to
// nothing.
template <bool first, bool second> struct Sums<U16x16, first, second> {
    I32x8 lanes{}, squareLanes{}, upperLanes{};
    std::uint64_t values = 0, squares = 0;

    RVX_INLINE void add(U16x16 a) {
        const I16x16 w{{bitXor(a, splat(std::uint16_t{0x8000})).v}};
        lanes = rvxcv::add(lanes, mulAddPairs(w, splat(std::int16_t{1})));
        if constexpr (second) {
            const I32x8 pair = mulAddPairs(w, w);
            squareLanes = rvxcv::add(squareLanes, pair);
            upperLanes = rvxcv::add(upperLanes, shiftRightLogical<16>(pair));
        }
    }
    RVX_INLINE void flush(std::int64_t blocks) {
        const auto linear = static_cast<std::uint64_t>(total(pairSums(lanes)));
        const std::uint64_t count = static_cast<std::uint64_t>(blocks) * U16x16::lanes;
        values += linear + (count << 15);
        lanes = I32x8{};
        if constexpr (second) {
            const I32x8 lower = sub(squareLanes, shiftLeft<16>(upperLanes));
            squares += static_cast<std::uint64_t>(total(pairSumsUnsigned(lower))) + (linear << 16) + (count << 30) +
                       (static_cast<std::uint64_t>(total(pairSumsUnsigned(upperLanes))) << 16);
            squareLanes = upperLanes = I32x8{};
        }
    }
    RVX_INLINE std::uint64_t sum() const { return values; }
    RVX_INLINE std::uint64_t sumOfSquares() const { return squares; }
};

template <bool first, bool second> struct Sums<F32x16, first, second> {
    LaneSum lanes, squareLanes;

    template <class B> RVX_INLINE void add(B a) { add(lowToF64(a), highToF64(a)); }
    RVX_INLINE void add(F64x8 low, F64x8 high) {
        if constexpr (first) {
            lanes.add(low, high);
        }
        if constexpr (second) {
            squareLanes.addSquares(low, high);
        }
    }
    RVX_INLINE void flush(std::int64_t) {}
    RVX_INLINE double sum() const { return lanes.total(); }
    RVX_INLINE double sumOfSquares() const { return squareLanes.total(); }
};

} // namespace rvxcv
