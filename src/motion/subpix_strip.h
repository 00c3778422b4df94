// Sub-pixel samples of wide patches, in strips of columns: a source row of the strip is converted to floats and joined
// with its right neighbours once, and what comes of it is kept for the samples below. The strip's rows have a fixed
// size, so the patch may be of any.
#pragma once

#include "motion/subpix.h"

#include <utility>

namespace rvxcv {

namespace detail {

// As many samples as fill a vector of the destination's type.
template <class D> constexpr int samplesOf = 32 / static_cast<int>(sizeof(D));
RVX_INLINE void storeSamples(float *dst, const F32x8 (&v)[1]) { store(dst, v[0]); }
RVX_INLINE void storeSamples(std::uint16_t *dst, const F32x8 (&v)[2]) {
    store(dst, narrowSaturatedUnsigned(roundToEven(v[0]), roundToEven(v[1])));
}
RVX_INLINE void storeSamples(std::uint8_t *dst, const F32x8 (&v)[4]) {
    const I16x16 low = narrowInLane(roundToEven(v[0]), roundToEven(v[1]));
    const I16x16 high = narrowInLane(roundToEven(v[2]), roundToEven(v[3]));
    const I32x8 inOrder = fromPackedBytes(0x0703060205010400);
    store(dst, U8x32{{permuted(I32x8{{narrowUnsignedInLane(low, high).v}}, inOrder).v}});
}

// Calls function(x) for every `lanes` of `columns`, which are not fewer; the last ones may be moved back.
template <int lanes, class Function> RVX_INLINE void everyWhole(std::int64_t columns, const Function &function) {
    std::int64_t x = 0;
    for (; x + lanes <= columns; x += lanes) {
        function(x);
    }
    if (x < columns) {
        function(columns - lanes);
    }
}

} // namespace detail

template <class S, class D> class StripSampler {
public:
    static constexpr std::int64_t narrowest = 64, widest = 512;

    StripSampler(float a, float b) : a_(splat(a)), b_(splat(b)) {}

    template <bool right, bool below, class Rule>
    void sample(Plane<const S> src, Plane<D> dst, std::int64_t columns, std::int64_t rows, Rule rule) {
        const S *in = src.base;
        if constexpr (below) {
            take<right>(in, columns);
            detail::everyWhole<8>(columns, [&](std::int64_t x) { store(upper_ + x, joined<right>(x)); });
        }
        for (std::int64_t y = 0; y < rows; ++y) {
            if (below || y > 0) {
                in = byteOffset(in, src.step);
            }
            take<right>(in, columns);
            D *const out = dst.row(y);
            detail::everyWhole<lanes>(columns, [&](std::int64_t x) {
                F32x8 value[lanes / 8];
#pragma GCC unroll 4
                for (int i = 0; i < lanes / 8; ++i) {
                    value[i] = joined<right>(x + 8 * i);
                    if constexpr (below) {
                        const F32x8 lower = value[i];
                        value[i] = between(b_, load<F32x8>(upper_ + x + 8 * i), lower);
                        store(lower_ + x + 8 * i, lower);
                    }
                    value[i] = rule(value[i]);
                }
                detail::storeSamples(out + x, value);
            });
            std::swap(upper_, lower_);
        }
    }

private:
    static constexpr int lanes = detail::samplesOf<D>;
    static constexpr bool converts = !std::is_same_v<S, float>;

    // A source row's pixels, as floats.
    template <bool right> RVX_INLINE void take(const S *row, std::int64_t columns) {
        if constexpr (converts) {
            detail::everyWhole<8>(columns + (right ? 1 : 0),
                                  [&](std::int64_t x) { store(converted_ + x, loadF32(row + x, Full{})); });
            pixels_ = converted_;
        } else {
            pixels_ = row;
        }
    }
    template <bool right> RVX_INLINE F32x8 joined(std::int64_t x) const {
        const F32x8 left = load<F32x8>(pixels_ + x);
        if constexpr (right) {
            return between(a_, left, load<F32x8>(pixels_ + x + 1));
        } else {
            return left;
        }
    }

    F32x8 a_, b_;
    const float *pixels_ = nullptr;
    alignas(32) float converted_[converts ? widest + 8 : 1];
    alignas(32) float joined_[2][widest];
    float *upper_ = joined_[0], *lower_ = joined_[1];
};

} // namespace rvxcv
