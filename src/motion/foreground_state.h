// What the background models share: the record, the checks, and the walk over an image and its model. A model is a
// struct that describes itself:
//
//     using Params, State                                              of the public header
//     template <int channels> using Samples                            the pixels of a block, below
//     static constexpr std::int32_t tag
//     static bool inRange(const Params &)
//     static std::int64_t pixelBytes(const Params &, int channels)     of the model
//     template <int channels> static void withKernel(const Params &, float rate, const Use &use)     use(kernel)
//     template <int channels> static Samples<channels> background(const Params &, const std::uint8_t *model)
//
// Blocks lie one behind the other, row by row; the last one of a row has places for pixels that do not exist. A kernel
// does one block; if it decides, it ignores the decision that it is given:
//
//     template <bool decides, bool learns> Decision operator()(std::uint8_t *model, const Samples &, Decision) const
#pragma once

#include "frame/api.h"
#include "kernel/channels.h"
#include "kernel/checks.h"
#include "kernel/plane.h"
#include "kernel/vec.h"

#include <algorithm>
#include <cstring>

namespace rvxcv {

// ---------------------------------------------------------------------------------------------------------- Samples

// Eight pixels as floats. Their decisions are lanes of 0, 127 or 255.
template <int channels> struct FloatSamples {
    static constexpr int pixels = 8;
    using Decision = I32x8;
    F32x8 at[channels];

    template <class Span> static RVX_INLINE FloatSamples load(const std::uint8_t *p, Span span) {
        if constexpr (channels == 1) {
            return {loadF32(p, span)};
        } else {
            const ThreeChannels<I32x8> s = loadEightPixels(p, span);
            return {toF32(s.c0), toF32(s.c1), toF32(s.c2)};
        }
    }
    // To nearest even.
    template <class Span> RVX_INLINE void store(std::uint8_t *p, Span span) const {
        if constexpr (channels == 1) {
            storeNarrow(p, roundToEven(at[0]), span);
        } else {
            storeEightPixels(p, {roundToEven(at[0]), roundToEven(at[1]), roundToEven(at[2])}, span);
        }
    }
    template <class Span> static RVX_INLINE Decision loadDecision(const std::uint8_t *map, Span span) {
        return loadI32(map, span);
    }
    template <class Span> static RVX_INLINE void storeDecision(std::uint8_t *map, Decision decision, Span span) {
        storeNarrow(map, decision, span);
    }
};

// Means, a vector each.
template <int channels> RVX_INLINE FloatSamples<channels> loadMeans(const float *means) {
    FloatSamples<channels> result;
    for (int c = 0; c < channels; ++c) {
        result.at[c] = load<F32x8>(means + 8 * c);
    }
    return result;
}

// Thirty-two pixels, a vector a channel. Their decisions are bytes.
template <int channels> struct ByteSamples {
    static constexpr int pixels = 32;
    using Decision = U8x32;
    U8x32 at[channels];

    template <class Span> static RVX_INLINE ByteSamples load(const std::uint8_t *p, Span span) {
        if constexpr (channels == 1) {
            return {rvxcv::load<U8x32>(p, span)};
        } else {
            const ThreeChannels<U8x32> s = loadChannels<U8x32>(p, span);
            return {s.c0, s.c1, s.c2};
        }
    }
    template <class Span> RVX_INLINE void store(std::uint8_t *p, Span span) const {
        if constexpr (channels == 1) {
            rvxcv::store(p, at[0], span);
        } else {
            storeChannels(p, ThreeChannels<U8x32>{at[0], at[1], at[2]}, span);
        }
    }
    template <class Span> static RVX_INLINE Decision loadDecision(const std::uint8_t *map, Span span) {
        return rvxcv::load<U8x32>(map, span);
    }
    template <class Span> static RVX_INLINE void storeDecision(std::uint8_t *map, Decision decision, Span span) {
        rvxcv::store(map, decision, span);
    }
};

// ------------------------------------------------------------------------------------------------------------- Walk

// The first n pixels of a block, which mostly is whole.
template <class Samples> RVX_INLINE Samples loadSamples(const std::uint8_t *p, int n) {
    return n == Samples::pixels ? Samples::load(p, Full{}) : Samples::load(p, Part{n});
}
template <class Samples> RVX_INLINE void storeSamples(std::uint8_t *p, const Samples &samples, int n) {
    n == Samples::pixels ? samples.store(p, Full{}) : samples.store(p, Part{n});
}
template <class Samples> RVX_INLINE auto loadDecision(const std::uint8_t *map, int n) {
    return n == Samples::pixels ? Samples::loadDecision(map, Full{}) : Samples::loadDecision(map, Part{n});
}
template <class Samples> RVX_INLINE void storeDecision(std::uint8_t *map, typename Samples::Decision decision, int n) {
    n == Samples::pixels ? Samples::storeDecision(map, decision, Full{})
                         : Samples::storeDecision(map, decision, Part{n});
}

// Decisions go to a map of bytes, or come from one of constant bytes. The kernel is a copy of its own, which no store
// to the model can change.
template <class Samples, int channels, bool learns, class Kernel, class MapByte>
void walkModel(const Kernel kernel, Plane<const std::uint8_t> src, Plane<MapByte> map, RoiSize roi, std::uint8_t *model,
               std::int64_t blockBytes) {
    for (std::int64_t y = 0; y < roi.height; ++y) {
        const std::uint8_t *const pixels = src.row(y);
        MapByte *const decisions = map.row(y);
        for (std::int64_t x = 0; x < roi.width; x += Samples::pixels, model += blockBytes) {
            const auto n = static_cast<int>(std::min<std::int64_t>(Samples::pixels, roi.width - x));
            const auto samples = loadSamples<Samples>(pixels + x * channels, n);
            if constexpr (std::is_const_v<MapByte>) {
                kernel.template operator()<false, learns>(model, samples, loadDecision<Samples>(decisions + x, n));
            } else {
                const typename Samples::Decision none{};
                storeDecision<Samples>(decisions + x, kernel.template operator()<true, learns>(model, samples, none),
                                       n);
            }
        }
    }
}

// ----------------------------------------------------------------------------------------------------------- Record

constexpr std::int64_t foregroundHeader = 128;

template <class State> RVX_INLINE std::uint8_t *modelOf(State *state) {
    static_assert(sizeof(State) == foregroundHeader);
    return reinterpret_cast<std::uint8_t *>(state) + foregroundHeader;
}
template <class State> RVX_INLINE const std::uint8_t *modelOf(const State *state) {
    static_assert(sizeof(State) == foregroundHeader);
    return reinterpret_cast<const std::uint8_t *>(state) + foregroundHeader;
}

// Whether low <= value <= high; never for a NaN.
constexpr bool within(float value, float low, float high) { return value >= low && value <= high; }

// The parameters of a Gaussian, alone or one of several.
template <class Params> bool gaussianInRange(const Params &p) {
    constexpr float largest = 0x1.fffffep127f;
    return p.threshold > 0 && p.varMin > 0 && p.varMin <= p.varInit && p.varInit <= p.varMax && p.varMax <= largest &&
           within(p.foregroundRate, 0, 1) && within(p.shadow, 0, 1) && p.shadow < 1;
}

template <class Model> std::int64_t blockBytes(int channels, const typename Model::Params &params) {
    return Model::pixelBytes(params, channels) * Model::template Samples<1>::pixels;
}
template <class Model> std::int64_t foregroundBytes(RoiSize roi, int channels, const typename Model::Params &params) {
    const std::int64_t rowBlocks = (roi.width - 1) / Model::template Samples<1>::pixels + 1;
    return saturatedSum(foregroundHeader, saturatedProduct(blockBytes<Model>(channels, params), rowBlocks, roi.height));
}

// The checks of size query and set-up, in their order. The size, if it fits.
template <class Model>
StatusCode foregroundSize(RoiSize roi, int channels, const typename Model::Params *params, const void *result,
                          std::int32_t *bytes) {
    Checks checks;
    checks.pointers(params, result).size(roi).require(channels == 1 || channels == 3, StatusBadChannelCount);
    checks.require(checks.failed() || Model::inRange(*params), StatusOutOfRange);
    return checks.failed() ? checks.status() : storeSize(foregroundBytes<Model>(roi, channels, *params), bytes);
}

template <class Model>
StatusCode foregroundInit(RoiSize roi, int channels, const typename Model::Params *params,
                          typename Model::State *state) {
    std::int32_t bytes = 0;
    const StatusCode status = foregroundSize<Model>(roi, channels, params, state, &bytes);
    if (status == StatusOk) {
        const typename Model::Params kept = *params;
        std::memset(static_cast<void *>(state), 0, static_cast<std::size_t>(bytes));
        *state = {.tag = Model::tag,
                  .width = roi.width,
                  .height = roi.height,
                  .channels = channels,
                  .frames = 0,
                  .params = kept,
                  .reserved = {}};
    }
    return status;
}

// What calls with a record check, up to the steps; a family's own checks follow.
template <class Model, class... Image>
Checks foregroundChecks(RoiSize roi, const typename Model::State *state, const Image *...images) {
    Checks checks;
    checks.pointers(images..., state);
    checks.require(checks.failed() || state->tag == Model::tag, StatusBadContext).size(roi);
    return checks.require(checks.failed() || (roi.width == state->width && roi.height == state->height), StatusBadSize);
}

template <class Model, int channels, class MapByte>
StatusCode foregroundCall(const std::uint8_t *src, std::int32_t srcStep, MapByte *map, std::int32_t mapStep,
                          RoiSize roi, float rate, typename Model::State *state) {
    Checks checks = foregroundChecks<Model>(roi, state, src, map);
    checks.steps(std::int64_t{roi.width} * channels, srcStep).steps(roi.width, mapStep);
    checks.require(checks.failed() || state->channels == channels, StatusBadChannelCount);
    checks.require(within(rate, 0, 1), StatusOutOfRange);
    if (checks.failed()) {
        return checks.status();
    }
    using Samples = typename Model::template Samples<channels>;
    const std::int64_t bytes = blockBytes<Model>(channels, state->params);
    const Plane<const std::uint8_t> samples{src, srcStep};
    const Plane<MapByte> decisions{map, mapStep};
    Model::template withKernel<channels>(state->params, rate, [&](const auto &kernel) {
        if (rate > 0) {
            walkModel<Samples, channels, true>(kernel, samples, decisions, roi, modelOf(state), bytes);
        } else if constexpr (!std::is_const_v<MapByte>) {
            walkModel<Samples, channels, false>(kernel, samples, decisions, roi, modelOf(state), bytes);
        }
    });
    state->frames += rate > 0 && state->frames < INT32_MAX;
    return StatusOk;
}

template <class Model, int channels>
StatusCode foregroundBackground(std::uint8_t *dst, std::int32_t dstStep, RoiSize roi,
                                const typename Model::State *state) {
    Checks checks = foregroundChecks<Model>(roi, state, dst);
    checks.steps(std::int64_t{roi.width} * channels, dstStep);
    checks.require(checks.failed() || state->channels == channels, StatusBadChannelCount);
    checks.require(checks.failed() || state->frames > 0, StatusError);
    if (checks.failed()) {
        return checks.status();
    }
    using Samples = typename Model::template Samples<channels>;
    const Plane picture{dst, dstStep};
    const std::uint8_t *model = modelOf(state); // of every pixel, since a call that learns makes all
    for (std::int64_t y = 0; y < roi.height; ++y) {
        for (std::int64_t x = 0; x < roi.width; x += Samples::pixels) {
            storeSamples(picture.row(y) + x * channels, Model::template background<channels>(state->params, model),
                         static_cast<int>(std::min<std::int64_t>(Samples::pixels, roi.width - x)));
            model += blockBytes<Model>(channels, state->params);
        }
    }
    return StatusOk;
}

} // namespace rvxcv
