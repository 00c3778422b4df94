// One Gaussian a pixel. A block of the model holds the means of eight pixels, a vector a channel, and their variances.
#include "motion/foreground_float.h"
#include "motion/foreground_state.h"

namespace rvxcv {
namespace {

template <int channels> struct GaussianKernel {
    GaussianRule<channels> rule;

    template <bool decides, bool learns>
    RVX_INLINE I32x8 operator()(std::uint8_t *model, const FloatSamples<channels> &samples, I32x8 decision) const {
        auto *const values = reinterpret_cast<float *>(model);
        const F32x8 variance = load<F32x8>(values + 8 * channels);
        F32x8 mean[channels], difference[channels];
        for (int c = 0; c < channels; ++c) {
            mean[c] = load<F32x8>(values + 8 * c);
            difference[c] = sub(samples.at[c], mean[c]);
        }
        const F32x8 distance = sumOfProducts(difference, difference), limit = rule.limit(variance);
        const Mask32x8 fresh = equal(variance, splat(0.0f));
        Mask32x8 background = fresh;
        if constexpr (decides) {
            background = either(background, greater(limit, distance));
            decision = foregroundLanes(background);
            if (rule.shadows && laneBits(background) != 0xff) {
                decision = withShadow(decision, rule.inShadow(samples.at, mean, limit));
            }
        } else {
            background = either(background, equal(decision, splat(0)));
        }
        if constexpr (learns) {
            // Without a model the mean is 0: a whole step leads to the sample.
            const F32x8 step = select(fresh, splat(1.0f), select(background, rule.rate, rule.foregroundRate));
            for (int c = 0; c < channels; ++c) {
                store(values + 8 * c, fma(step, difference[c], mean[c]));
            }
            const F32x8 learned =
                rule.learned(variance, distance, keep(background, rule.rate), keep(background, rule.varMin));
            store(values + 8 * channels, select(fresh, rule.varInit, learned));
        }
        return decision;
    }
};

struct GaussianModel {
    using Params = ForegroundGaussianParams;
    using State = ForegroundGaussianState;
    template <int channels> using Samples = FloatSamples<channels>;
    static constexpr std::int32_t tag = 0x4b617392;

    static bool inRange(const Params &params) { return gaussianInRange(params); }
    static std::int64_t pixelBytes(const Params &, int channels) { return 4 * (channels + 1); }
    template <int channels, class Use> static void withKernel(const Params &params, float rate, const Use &use) {
        use(GaussianKernel<channels>{{params, rate}});
    }
    template <int channels> static RVX_INLINE Samples<channels> background(const Params &, const std::uint8_t *model) {
        return loadMeans<channels>(reinterpret_cast<const float *>(model));
    }
};

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiForegroundGaussianGetSize_8u(RoiSize roi, int32_t channels, const ForegroundGaussianParams *params,
                                            int32_t *stateSize) {
    return foregroundSize<GaussianModel>(roi, channels, params, stateSize, stateSize);
}
StatusCode rvxiForegroundGaussianInit_8u(RoiSize roi, int32_t channels, const ForegroundGaussianParams *params,
                                         ForegroundGaussianState *state) {
    return foregroundInit<GaussianModel>(roi, channels, params, state);
}
StatusCode rvxiForegroundGaussian_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                         RoiSize roi, float rate, ForegroundGaussianState *state) {
    return foregroundCall<GaussianModel, 1>(src, srcStep, dst, dstStep, roi, rate, state);
}
StatusCode rvxiForegroundGaussian_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                         RoiSize roi, float rate, ForegroundGaussianState *state) {
    return foregroundCall<GaussianModel, 3>(src, srcStep, dst, dstStep, roi, rate, state);
}
StatusCode rvxiForegroundGaussianUpdate_8u_C1R(const uint8_t *src, int32_t srcStep, const uint8_t *map, int32_t mapStep,
                                               RoiSize roi, float rate, ForegroundGaussianState *state) {
    return foregroundCall<GaussianModel, 1>(src, srcStep, map, mapStep, roi, rate, state);
}
StatusCode rvxiForegroundGaussianUpdate_8u_C3R(const uint8_t *src, int32_t srcStep, const uint8_t *map, int32_t mapStep,
                                               RoiSize roi, float rate, ForegroundGaussianState *state) {
    return foregroundCall<GaussianModel, 3>(src, srcStep, map, mapStep, roi, rate, state);
}
StatusCode rvxiForegroundGaussianGetBackground_8u_C1R(uint8_t *dst, int32_t dstStep, RoiSize roi,
                                                      const ForegroundGaussianState *state) {
    return foregroundBackground<GaussianModel, 1>(dst, dstStep, roi, state);
}
StatusCode rvxiForegroundGaussianGetBackground_8u_C3R(uint8_t *dst, int32_t dstStep, RoiSize roi,
                                                      const ForegroundGaussianState *state) {
    return foregroundBackground<GaussianModel, 3>(dst, dstStep, roi, state);
}
