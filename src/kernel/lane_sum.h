// Sums of doubles in an order that is simple to define and fast to keep: sixteen lanes start at +0.0, and the term of
// the pixel in column x is added to lane x mod 16, rows from top to bottom. Then lane i takes lane i + 8 (i < 8), i + 4
// (i < 4), i + 2 (i < 2) and i + 1 (i < 1). A term of +0.0 changes no lane: that is how a pixel is left out.
#pragma once

#include "kernel/vec.h"

namespace rvxcv {

// Sixteen floats are two vectors that act as one.
struct F32x16 {
    using Element = float;
    static constexpr int lanes = 16;
    F32x8 low, high;
};
// The same, still in memory: what widens them to doubles loads them on the way, which spares the shuffles.
struct F32x16At {
    const float *p;

    RVX_INLINE operator F32x16() const { return {load<F32x8>(p), load<F32x8>(p + 8)}; }
};

RVX_INLINE F64x8 lowToF64(F32x16 a) { return toF64(a.low); }
RVX_INLINE F64x8 highToF64(F32x16 a) { return toF64(a.high); }
RVX_INLINE F64x8 lowToF64(F32x16At a) { return loadF64(a.p); }
RVX_INLINE F64x8 highToF64(F32x16At a) { return loadF64(a.p + 8); }

class LaneSum {
public:
    RVX_INLINE void add(F64x8 low, F64x8 high) {
        low_ = rvxcv::add(low_, low);
        high_ = rvxcv::add(high_, high);
    }
    // The squares of the terms, each fused onto its lane.
    RVX_INLINE void addSquares(F64x8 low, F64x8 high) {
        low_ = fma(low, low, low_);
        high_ = fma(high, high, high_);
    }
    RVX_INLINE double total() const {
        const F64x8 eight = rvxcv::add(low_, high_);
        return laneSum(rvxcv::add(eight.low, eight.high));
    }

private:
    F64x8 low_ = splatEight(0.0), high_ = splatEight(0.0);
};

} // namespace rvxcv
