// Eight pixels against the mean and the variance of a Gaussian. Sums over channels are chains of fused additions.
#pragma once

#include "kernel/vec.h"

namespace rvxcv {

template <int channels> RVX_INLINE F32x8 sumOfProducts(const F32x8 (&a)[channels], const F32x8 (&b)[channels]) {
    F32x8 sum = mul(a[0], b[0]);
    for (int c = 1; c < channels; ++c) {
        sum = fma(a[c], b[c], sum);
    }
    return sum;
}

// What holds for all pixels of a call.
template <int channels> struct GaussianRule {
    F32x8 squaredThreshold, varInit, varMin, varMax, shadow;
    F32x8 rate, foregroundRate; // of background and of foreground
    bool shadows;

    template <class Params>
    GaussianRule(const Params &p, float learningRate)
        : squaredThreshold(splat(p.threshold * p.threshold)), varInit(splat(p.varInit)), varMin(splat(p.varMin)),
          varMax(splat(p.varMax)), shadow(splat(p.shadow)), rate(splat(learningRate)),
          foregroundRate(splat(learningRate * p.foregroundRate)), shadows(p.shadow > 0) {}

    // The squared distance up to which a sample belongs to a Gaussian.
    RVX_INLINE F32x8 limit(F32x8 variance) const { return mul(squaredThreshold, variance); }

    // The variance after a sample at a squared distance; `least` is varMin, or 0 in lanes whose weight is 0.
    RVX_INLINE F32x8 learned(F32x8 variance, F32x8 distance, F32x8 weight, F32x8 least) const {
        const F32x8 mean = channels == 1 ? distance : mul(distance, splat(0.333333343f));
        return max(least, min(varMax, fma(weight, sub(mean, variance), variance)));
    }

    // A darker pixel of the same colour.
    RVX_INLINE Mask32x8 inShadow(const F32x8 (&samples)[channels], const F32x8 (&means)[channels],
                                 F32x8 distanceLimit) const {
        const F32x8 num = sumOfProducts(samples, means), den = sumOfProducts(means, means), gain = div(num, den);
        F32x8 rest[channels];
        for (int c = 0; c < channels; ++c) {
            rest[c] = fma(gain, means[c], negated(samples[c]));
        }
        const Mask32x8 darker =
            both(both(greater(den, splat(0.0f)), greater(den, num)), greaterEqual(num, mul(shadow, den)));
        return both(darker, greater(mul(distanceLimit, mul(gain, gain)), sumOfProducts(rest, rest)));
    }
};

// Decisions as lanes of 0, 127 or 255, from what is background and what else is in shadow.
RVX_INLINE I32x8 foregroundLanes(Mask32x8 background) { return without(splat(255), background); }
RVX_INLINE I32x8 withShadow(I32x8 decision, Mask32x8 shadow) {
    return bitAnd(decision, select(shadow, splat(127), splat(255)));
}

} // namespace rvxcv
