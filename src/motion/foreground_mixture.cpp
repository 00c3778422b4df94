// A mixture of Gaussians a pixel. A block of the model holds the components of eight pixels in order of falling weight,
// as vectors: all weights first, then of each component the variances and the means of each channel.
#include "motion/foreground_float.h"
#include "motion/foreground_state.h"

namespace rvxcv {
namespace {

template <int channels> struct Component {
    F32x8 weight, variance;
    FloatSamples<channels> mean;
};

RVX_INLINE void swapLanes(Mask32x8 mask, F32x8 &a, F32x8 &b) {
    const F32x8 change = keep(mask, bitXor(a, b));
    a = bitXor(a, change);
    b = bitXor(b, change);
}

// The lighter lanes stay with the one farther down.
template <int channels> RVX_INLINE void orderLanes(Component<channels> &upper, Component<channels> &lower) {
    const Mask32x8 swaps = greater(asInt(lower.weight), asInt(upper.weight)); // as the floats, none being negative
    swapLanes(swaps, upper.weight, lower.weight);
    swapLanes(swaps, upper.variance, lower.variance);
    for (int c = 0; c < channels; ++c) {
        swapLanes(swaps, upper.mean.at[c], lower.mean.at[c]);
    }
}

template <int channels, int count> struct MixtureKernel {
    using Samples = FloatSamples<channels>;
    using One = Component<channels>;
    GaussianRule<channels> rule;
    F32x8 backgroundRatio, prior;
    bool lossless; // prior is 0

    template <bool decides, bool learns>
    RVX_INLINE I32x8 operator()(std::uint8_t *model, const Samples &samples, I32x8 decision) const {
        auto *const values = reinterpret_cast<float *>(model);
        Matches m;
        match(values, 0, samples, m);
        // What mostly is so: every pixel belongs to its first component. The others then lose weight and nothing else,
        // and nothing changes its place: no weight exceeds the one before it before, nor does it after.
        const bool usual = laneBits(m.first[0]) == 0xff;
        if (!usual) {
#pragma GCC unroll 8
            for (int k = 1; k < count; ++k) {
                match(values, k, samples, m);
            }
        }
        Mask32x8 background = m.first[0];
        if constexpr (!decides) {
            background = either(equal(load<F32x8>(values), splat(0.0f)), equal(decision, splat(0)));
        } else if (usual) {
            decision = splat(0);
        } else {
            background = either(equal(load<F32x8>(values), splat(0.0f)), matchesBackground(values, m));
            decision = foregroundLanes(background);
            if (rule.shadows && laneBits(background) != 0xff) {
                decision = withShadow(decision, inShadow(values, samples));
            }
        }
        if constexpr (learns) {
            const F32x8 rate = select(background, rule.rate, rule.foregroundRate);
            usual ? learnFirst(values, m, samples, rate) : learn(values, m, samples, rate);
        }
        return decision;
    }

private:
    // Of every component, the squared distances and where it is the first one that matches.
    struct Matches {
        F32x8 distance[count];
        Mask32x8 first[count], any;
    };

    static RVX_INLINE float *component(float *values, int k) { return values + 8 * (count + k * (channels + 1)); }
    static RVX_INLINE const float *component(const float *values, int k) {
        return values + 8 * (count + k * (channels + 1));
    }

    static RVX_INLINE void differences(const float *means, const Samples &samples, F32x8 (&result)[channels]) {
        for (int c = 0; c < channels; ++c) {
            result[c] = sub(samples.at[c], load<F32x8>(means + 8 * c));
        }
    }

    RVX_INLINE void match(const float *values, int k, const Samples &samples, Matches &m) const {
        const float *const one = component(values, k);
        F32x8 difference[channels];
        differences(one + 8, samples, difference);
        m.distance[k] = sumOfProducts(difference, difference);
        const Mask32x8 matching = both(greater(asInt(load<F32x8>(values + 8 * k)), splat(0)),
                                       greater(rule.limit(load<F32x8>(one)), m.distance[k]));
        m.first[k] = k == 0 ? matching : without(matching, m.any);
        m.any = k == 0 ? matching : either(m.any, matching);
    }

    // Whether the weights before the matching component leave room for more background.
    RVX_INLINE Mask32x8 matchesBackground(const float *values, const Matches &m) const {
        F32x8 before = load<F32x8>(values);
        Mask32x8 result = m.first[0];
#pragma GCC unroll 8
        for (int k = 1; k < count; ++k) {
            result = either(result, both(m.first[k], greater(backgroundRatio, before)));
            before = add(before, load<F32x8>(values + 8 * k));
        }
        return result;
    }

    RVX_INLINE Mask32x8 inShadow(const float *values, const Samples &samples) const {
        F32x8 before = splat(0.0f);
        Mask32x8 result{before.v};
#pragma GCC unroll 8
        for (int k = 0; k < count; ++k) {
            const float *const one = component(values, k);
            const F32x8 weight = load<F32x8>(values + 8 * k);
            const Mask32x8 counts = both(greater(asInt(weight), splat(0)), greater(backgroundRatio, before));
            const Mask32x8 shadow =
                rule.inShadow(samples.at, loadMeans<channels>(one + 8).at, rule.limit(load<F32x8>(one)));
            result = either(result, both(counts, shadow));
            before = add(before, weight);
        }
        return result;
    }

    // The weights of components that are not seen again sink below the normal floats, where rounding keeps them for
    // good and a product takes a hundred times as long. Below 2^-127 they are therefore moved as whole numbers of the
    // least float. A fused sum with 2^23 rounds these as the product is rounded.
    struct Weights {
        F32x8 at[count];    // 0 for a sunken weight
        F32x8 units[count]; // of the least float, of sunken weights alone
        bool sunken = false;

        RVX_INLINE F32x8 scaled(int k, F32x8 scale) const {
            const F32x8 result = mul(at[k], scale);
            if (!sunken) {
                return result;
            }
            const F32x8 base = splat(0x1p23f);
            return asFloat(bitOr(asInt(result), sub(asInt(fma(scale, units[k], base)), asInt(base))));
        }
    };

    // On its way to 0, or to 1 where the component matches; an empty one stays at 0.
    RVX_INLINE void move(const float *values, int k, Mask32x8 matches, F32x8 rate, Weights &weights) const {
        const F32x8 zero = splat(0.0f), base = splat(0x1p23f), loss = mul(rate, prior);
        F32x8 weight = load<F32x8>(values + 8 * k);
        const Mask32x8 low = both(greater(asInt(weight), splat(0)), greater(splat(1 << 22), asInt(weight)));
        const Mask32x8 sunken = without(low, matches);
        weights.units[k] = zero;
        if (lossless && laneBits(sunken) != 0) {
            const F32x8 units = toF32(keep(sunken, asInt(weight)));
            weights.units[k] = sub(fma(negated(rate), units, add(units, base)), base);
            weights.sunken = true;
            weight = without(weight, sunken);
        }
        const F32x8 towards = sub(keep(matches, splat(1.0f)), weight);
        weights.at[k] = max(sub(fma(rate, towards, weight), loss), zero);
    }
    // What makes the sum 1, to which sunken weights add nothing; nothing changes at rate 0.
    static RVX_INLINE F32x8 scaleOf(F32x8 total, F32x8 rate) {
        return select(greater(rate, splat(0.0f)), div(splat(1.0f), total), splat(1.0f));
    }
    static RVX_INLINE F32x8 stepOf(F32x8 rate, F32x8 weight) { return min(div(rate, weight), splat(1.0f)); }

    RVX_INLINE void learnFirst(float *values, const Matches &m, const Samples &samples, F32x8 rate) const {
        Weights weights;
        move(values, 0, m.first[0], rate, weights);
        F32x8 total = weights.at[0];
#pragma GCC unroll 8
        for (int k = 1; k < count; ++k) {
            move(values, k, Mask32x8{splat(0.0f).v}, rate, weights);
            total = add(total, weights.at[k]);
        }
        const F32x8 scale = scaleOf(total, rate);
#pragma GCC unroll 8
        for (int k = 0; k < count; ++k) {
            store(values + 8 * k, weights.scaled(k, scale));
        }
        save(values, 0, learned(values, 0, m, samples, weights.at[0], stepOf(rate, weights.at[0])));
    }

    RVX_INLINE void learn(float *values, const Matches &m, const Samples &samples, F32x8 rate) const {
        const Mask32x8 replaced = without(greater(rate, splat(0.0f)), m.any);
        Weights weights;
        F32x8 matching = splat(0.0f), total = matching;
#pragma GCC unroll 8
        for (int k = 0; k < count; ++k) {
            move(values, k, m.first[k], rate, weights);
            if (k == count - 1) {
                weights.at[k] = select(replaced, rate, weights.at[k]);
                weights.units[k] = without(weights.units[k], replaced);
            }
            matching = add(matching, keep(m.first[k], weights.at[k]));
            total = k == 0 ? weights.at[0] : add(total, weights.at[k]);
        }
        const F32x8 step = stepOf(rate, matching), scale = scaleOf(total, rate);
        // From the last component upwards; the heavier one of two goes on.
        One moving = learned(values, count - 1, m, samples, weights.scaled(count - 1, scale), step);
        moving.variance = select(replaced, rule.varInit, moving.variance);
        for (int c = 0; c < channels; ++c) {
            moving.mean.at[c] = select(replaced, samples.at[c], moving.mean.at[c]);
        }
#pragma GCC unroll 8
        for (int k = count - 1; k > 0; --k) {
            One next = learned(values, k - 1, m, samples, weights.scaled(k - 1, scale), step);
            orderLanes(next, moving);
            store(values + 8 * k, moving.weight);
            save(values, k, moving);
            moving = next;
        }
        store(values, moving.weight);
        save(values, 0, moving);
    }

    RVX_INLINE One learned(const float *values, int k, const Matches &m, const Samples &samples, F32x8 weight,
                           F32x8 step) const {
        const float *const one = component(values, k);
        const F32x8 ownStep = keep(m.first[k], step);
        F32x8 difference[channels];
        differences(one + 8, samples, difference);
        One result;
        result.weight = weight;
        result.variance = rule.learned(load<F32x8>(one), m.distance[k], ownStep, keep(m.first[k], rule.varMin));
        for (int c = 0; c < channels; ++c) {
            result.mean.at[c] = fma(ownStep, difference[c], load<F32x8>(one + 8 + 8 * c));
        }
        return result;
    }
    // Without the weight.
    static RVX_INLINE void save(float *values, int k, const One &one) {
        float *const to = component(values, k);
        store(to, one.variance);
        for (int c = 0; c < channels; ++c) {
            store(to + 8 + 8 * c, one.mean.at[c]);
        }
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
                {params, rate}, splat(params.backgroundRatio), splat(params.prior), params.prior == 0});
        });
    }
    template <int channels> static RVX_INLINE Samples<channels> background(const Params &p, const std::uint8_t *model) {
        return loadMeans<channels>(reinterpret_cast<const float *>(model) + 8 * (p.components + 1));
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
