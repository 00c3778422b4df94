// A mixture of Gaussians a pixel. A block of the model holds the components of eight pixels one after the other, in
// order of falling weight, each as vectors: weights, variances, and the means of each channel.
#include "motion/foreground_float.h"
#include "motion/foreground_state.h"

namespace rvxcv {
namespace {

template <int channels> struct Component {
    F32x8 weight, variance;
    FloatSamples<channels> mean;

    static constexpr int floats = (channels + 2) * 8;

    RVX_INLINE void save(float *p) const {
        store(p, weight);
        store(p + 8, variance);
        for (int c = 0; c < channels; ++c) {
            store(p + 16 + 8 * c, mean.at[c]);
        }
    }
};

template <int channels>
RVX_INLINE Component<channels> select(Mask32x8 mask, const Component<channels> &set, const Component<channels> &clear) {
    Component<channels> result;
    result.weight = select(mask, set.weight, clear.weight);
    result.variance = select(mask, set.variance, clear.variance);
    for (int c = 0; c < channels; ++c) {
        result.mean.at[c] = select(mask, set.mean.at[c], clear.mean.at[c]);
    }
    return result;
}

template <int channels, int count> struct MixtureKernel {
    using Samples = FloatSamples<channels>;
    using One = Component<channels>;
    GaussianRule<channels> rule;
    F32x8 backgroundRatio;
    float prior;

    // Components against a sample: the squared distances, and the first component that matches.
    struct Matches {
        F32x8 weight[count], distance[count];
        Mask32x8 first[count], any;
    };

    template <bool decides, bool learns>
    RVX_INLINE I32x8 operator()(std::uint8_t *model, const Samples &samples, I32x8 decision) const {
        auto *const values = reinterpret_cast<float *>(model);
        Matches matches = match(values, samples);
        const Mask32x8 fresh = equal(matches.weight[0], splat(0.0f));
        Mask32x8 background = fresh;
        if constexpr (decides) {
            background = either(background, matchesBackground(matches));
            decision = foregroundLanes(background);
            if (rule.shadows && laneBits(background) != 0xff) {
                decision = withShadow(decision, inShadow(values, matches, samples));
            }
        } else {
            background = either(background, equal(decision, splat(0)));
        }
        if constexpr (learns) {
            learn(values, matches, samples, select(background, rule.rate, rule.foregroundRate));
        }
        return decision;
    }

private:
    static RVX_INLINE F32x8 differences(const float *means, const Samples &samples, F32x8 (&difference)[channels]) {
        for (int c = 0; c < channels; ++c) {
            difference[c] = sub(samples.at[c], load<F32x8>(means + 8 * c));
        }
        return sumOfProducts(difference, difference);
    }

    RVX_INLINE Matches match(const float *values, const Samples &samples) const {
        Matches m;
#pragma GCC unroll 8
        for (int k = 0; k < count; ++k) {
            const float *const component = values + k * One::floats;
            F32x8 difference[channels];
            m.weight[k] = load<F32x8>(component);
            m.distance[k] = differences(component + 16, samples, difference);
            const Mask32x8 matching =
                both(greater(m.weight[k], splat(0.0f)), greater(rule.limit(load<F32x8>(component + 8)), m.distance[k]));
            m.first[k] = k == 0 ? matching : without(matching, m.any);
            m.any = k == 0 ? matching : either(m.any, matching);
        }
        return m;
    }

    // Whether the weights before the matching component leave room for more background.
    RVX_INLINE Mask32x8 matchesBackground(const Matches &m) const {
        F32x8 before = m.weight[0];
        Mask32x8 result = m.first[0];
#pragma GCC unroll 8
        for (int k = 1; k < count; ++k) {
            result = either(result, both(m.first[k], greater(backgroundRatio, before)));
            before = add(before, m.weight[k]);
        }
        return result;
    }

    RVX_INLINE Mask32x8 inShadow(const float *values, const Matches &m, const Samples &samples) const {
        F32x8 before = splat(0.0f);
        Mask32x8 result{before.v};
#pragma GCC unroll 8
        for (int k = 0; k < count; ++k) {
            const float *const component = values + k * One::floats;
            const Mask32x8 counts = both(greater(m.weight[k], splat(0.0f)), greater(backgroundRatio, before));
            const Mask32x8 shadow = rule.inShadow(samples.at, loadMeans<channels>(component + 16).at,
                                                  rule.limit(load<F32x8>(component + 8)));
            result = either(result, both(counts, shadow));
            before = add(before, m.weight[k]);
        }
        return result;
    }

    RVX_INLINE void learn(float *values, Matches &m, const Samples &samples, F32x8 rate) const {
        const F32x8 zero = splat(0.0f), one = splat(1.0f), loss = mul(rate, splat(prior));
        const Mask32x8 active = greater(rate, zero), replaced = without(active, m.any);
        // An empty weight stays at 0, and so does every weight at rate 0 where it is.
        F32x8 matching = zero, total = zero;
#pragma GCC unroll 8
        for (int k = 0; k < count; ++k) {
            const F32x8 towards = sub(keep(m.first[k], one), m.weight[k]);
            m.weight[k] = max(sub(fma(rate, towards, m.weight[k]), loss), zero);
            if (k == count - 1) {
                m.weight[k] = select(replaced, rate, m.weight[k]);
            }
            matching = select(m.first[k], m.weight[k], matching);
            total = k == 0 ? m.weight[0] : add(total, m.weight[k]);
        }
        const F32x8 step = min(div(rate, matching), one), scale = select(active, div(one, total), one);
        // From the last component upwards; the heavier one of two goes on.
        One moving = learned(values, count - 1, m, samples, step, scale);
        moving = select(replaced, One{moving.weight, rule.varInit, samples}, moving);
#pragma GCC unroll 8
        for (int k = count - 1; k > 0; --k) {
            const One next = learned(values, k - 1, m, samples, step, scale);
            const Mask32x8 swaps = greater(moving.weight, next.weight);
            select(swaps, next, moving).save(values + k * One::floats);
            moving = select(swaps, moving, next);
        }
        moving.save(values);
    }

    RVX_INLINE One learned(const float *values, int k, const Matches &m, const Samples &samples, F32x8 step,
                           F32x8 scale) const {
        const float *const component = values + k * One::floats;
        const F32x8 variance = load<F32x8>(component + 8), weight = keep(m.first[k], step);
        F32x8 difference[channels];
        differences(component + 16, samples, difference);
        One result;
        result.weight = mul(m.weight[k], scale);
        result.variance = select(m.first[k], rule.learned(variance, m.distance[k], step), variance);
        for (int c = 0; c < channels; ++c) {
            result.mean.at[c] = fma(weight, difference[c], load<F32x8>(component + 16 + 8 * c));
        }
        return result;
    }
};

struct MixtureModel {
    using Params = FGMMParams;
    using State = FGMMState;
    template <int channels> using Samples = FloatSamples<channels>;
    static constexpr std::int32_t tag = 0x4b617393;

    static bool inRange(const Params &p) {
        return p.components >= 1 && p.components <= 8 && gaussianInRange(p) && p.backgroundRatio > 0 &&
               p.backgroundRatio <= 1 && p.prior >= 0 && p.prior < 1;
    }
    static std::int64_t pixelBytes(const Params &p, int channels) {
        return 4 * std::int64_t{p.components} * (channels + 2);
    }
    template <int channels, class Use> static void withKernel(const Params &params, float rate, const Use &use) {
        withConstant<8>(params.components, [&](auto count) {
            use(MixtureKernel<channels, decltype(count)::value>{
                {params, rate}, splat(params.backgroundRatio), params.prior});
        });
    }
    template <int channels> static RVX_INLINE Samples<channels> background(const Params &, const std::uint8_t *model) {
        return loadMeans<channels>(reinterpret_cast<const float *>(model) + 16);
    }
};

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiFGMMGetSize_8u(RoiSize roi, int32_t channels, const FGMMParams *params, int32_t *stateSize) {
    return foregroundSize<MixtureModel>(roi, channels, params, stateSize, stateSize);
}
StatusCode rvxiFGMMInit_8u(RoiSize roi, int32_t channels, const FGMMParams *params, FGMMState *state) {
    return foregroundInit<MixtureModel>(roi, channels, params, state);
}
StatusCode rvxiFGMM_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi, float rate,
                           FGMMState *state) {
    return foregroundCall<MixtureModel, 1>(src, srcStep, dst, dstStep, roi, rate, state);
}
StatusCode rvxiFGMM_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi, float rate,
                           FGMMState *state) {
    return foregroundCall<MixtureModel, 3>(src, srcStep, dst, dstStep, roi, rate, state);
}
StatusCode rvxiFGMMUpdate_8u_C1R(const uint8_t *src, int32_t srcStep, const uint8_t *map, int32_t mapStep, RoiSize roi,
                                 float rate, FGMMState *state) {
    return foregroundCall<MixtureModel, 1>(src, srcStep, map, mapStep, roi, rate, state);
}
StatusCode rvxiFGMMUpdate_8u_C3R(const uint8_t *src, int32_t srcStep, const uint8_t *map, int32_t mapStep, RoiSize roi,
                                 float rate, FGMMState *state) {
    return foregroundCall<MixtureModel, 3>(src, srcStep, map, mapStep, roi, rate, state);
}
StatusCode rvxiFGMMGetBackground_8u_C1R(uint8_t *dst, int32_t dstStep, RoiSize roi, const FGMMState *state) {
    return foregroundBackground<MixtureModel, 1>(dst, dstStep, roi, state);
}
StatusCode rvxiFGMMGetBackground_8u_C3R(uint8_t *dst, int32_t dstStep, RoiSize roi, const FGMMState *state) {
    return foregroundBackground<MixtureModel, 3>(dst, dstStep, roi, state);
}
