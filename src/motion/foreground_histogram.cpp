// A table of colours a pixel. A block of the model holds the entries of 32 pixels one after the other, those seen most
// often first: the colours, a vector of bytes a channel, then p and b, how often an entry was seen at all and as
// background, two vectors of 16 bits each. These two hold the pixels as widening in halves of a vector leaves them.
#include "motion/foreground_state.h"

#include <algorithm>
#include <cmath>

namespace rvxcv {
namespace {

// 32 counters.
struct Counters {
    U16x16 low, high;

    static RVX_INLINE Counters all(std::uint16_t value) { return {splat(value), splat(value)}; }
    static RVX_INLINE Counters load(const std::uint8_t *p) {
        const auto *const words = reinterpret_cast<const std::uint16_t *>(p);
        return {rvxcv::load<U16x16>(words), rvxcv::load<U16x16>(words + 16)};
    }
    RVX_INLINE void save(std::uint8_t *p) const {
        auto *const words = reinterpret_cast<std::uint16_t *>(p);
        store(words, low);
        store(words + 16, high);
    }
    // A mask of bytes, widened.
    static RVX_INLINE Counters mask(U8x32 bytes) {
        return {{{pairsInLaneLow(bytes, bytes).v}}, {{pairsInLaneHigh(bytes, bytes).v}}};
    }
    // Lanes that are all set or all clear, as bytes.
    RVX_INLINE U8x32 maskBytes() const { return {{narrowSignedInLane(I16x16{{low.v}}, I16x16{{high.v}}).v}}; }
};

template <class Operation> RVX_INLINE Counters each(Counters a, Counters b, const Operation &operation) {
    return {operation(a.low, b.low), operation(a.high, b.high)};
}
RVX_INLINE Counters add(Counters a, Counters b) {
    return each(a, b, [](U16x16 x, U16x16 y) { return addSaturated(x, y); });
}
RVX_INLINE Counters sub(Counters a, Counters b) {
    return each(a, b, [](U16x16 x, U16x16 y) { return rvxcv::sub(x, y); });
}
RVX_INLINE Counters max(Counters a, Counters b) {
    return each(a, b, [](U16x16 x, U16x16 y) { return rvxcv::max(x, y); });
}
RVX_INLINE Counters equal(Counters a, Counters b) {
    return each(a, b, [](U16x16 x, U16x16 y) { return rvxcv::equal(x, y); });
}
RVX_INLINE Counters keep(Counters mask, Counters a) {
    return each(mask, a, [](U16x16 x, U16x16 y) { return bitAnd(x, y); });
}
RVX_INLINE Counters without(Counters a, Counters mask) {
    return each(a, mask, [](U16x16 x, U16x16 y) { return bitAndNot(x, y); });
}
RVX_INLINE Counters differing(Counters a, Counters b) {
    return each(a, b, [](U16x16 x, U16x16 y) { return bitXor(x, y); });
}
RVX_INLINE bool allSet(Counters mask) { return laneBits(mask.maskBytes()) == 0xffffffff; }
RVX_INLINE Counters select(Counters mask, Counters set, Counters clear) {
    return {rvxcv::select(mask.low, set.low, clear.low), rvxcv::select(mask.high, set.high, clear.high)};
}
RVX_INLINE Counters decayed(Counters a, U16x16 rate) {
    return {rvxcv::sub(a.low, mulHigh(a.low, rate)), rvxcv::sub(a.high, mulHigh(a.high, rate))};
}

template <int channels> struct Entry {
    ByteSamples<channels> colour;
    Counters p, b;

    static constexpr int places = 32 * channels, bytes = places + 128; // where p lies, and the whole

    static RVX_INLINE Entry load(const std::uint8_t *entry) {
        return {loadColour(entry), Counters::load(entry + places), Counters::load(entry + places + 64)};
    }
    static RVX_INLINE ByteSamples<channels> loadColour(const std::uint8_t *entry) {
        ByteSamples<channels> colour;
        for (int c = 0; c < channels; ++c) {
            colour.at[c] = rvxcv::load<U8x32>(entry + 32 * c);
        }
        return colour;
    }
    RVX_INLINE void save(std::uint8_t *entry) const {
        for (int c = 0; c < channels; ++c) {
            store(entry + 32 * c, colour.at[c]);
        }
        p.save(entry + places);
        b.save(entry + places + 64);
    }
};

template <int channels>
RVX_INLINE ByteSamples<channels> select(U8x32 mask, const ByteSamples<channels> &set,
                                        const ByteSamples<channels> &clear) {
    ByteSamples<channels> result;
    for (int c = 0; c < channels; ++c) {
        result.at[c] = rvxcv::select(mask, set.at[c], clear.at[c]);
    }
    return result;
}

constexpr int mostEntries = 32;

template <int channels> struct HistogramKernel {
    using Samples = ByteSamples<channels>;
    using One = Entry<channels>;
    int entries, principal;
    U8x32 tolerance;
    std::uint16_t rate, limit; // in units of 1 / 65536 and of 1 / 65535

    HistogramKernel(const ForegroundHistogramParams &p, float learningRate)
        : entries(p.entries), principal(p.principal), tolerance(splat(static_cast<std::uint8_t>(p.tolerance))),
          rate(static_cast<std::uint16_t>(std::clamp(nearest(learningRate, 65536), 1, 65535))),
          limit(static_cast<std::uint16_t>(nearest(p.absorb, 65535))) {}

    template <bool decides, bool learns>
    RVX_INLINE U8x32 operator()(std::uint8_t *model, const Samples &samples, U8x32 decision) const {
        const Counters zero = Counters::all(0);
        // Of every entry, where it is the first one that matches.
        alignas(32) std::uint8_t first[mostEntries][32];
        U8x32 found = splat(std::uint8_t{0});
        Counters seen = zero, seenAsBackground = zero;
        for (int i = 0; i < entries && (learns || i < principal); ++i) {
            const std::uint8_t *const entry = model + i * One::bytes;
            const Counters p = Counters::load(entry + One::places);
            const U8x32 matching = bitAndNot(matches(One::loadColour(entry), samples), equal(p, zero).maskBytes());
            if constexpr (learns) {
                store(first[i], bitAndNot(matching, found));
                found = bitOr(found, matching);
            }
            if (decides && i < principal && anyBit(matching)) {
                const Counters mask = Counters::mask(matching);
                seen = add(seen, keep(mask, p));
                seenAsBackground = add(seenAsBackground, keep(mask, Counters::load(entry + One::places + 64)));
            }
        }
        const Counters fresh = equal(Counters::load(model + One::places), zero);
        if constexpr (decides) {
            // b > p - b; no sum of b exceeds the one of p.
            const Counters rest = sub(seen, seenAsBackground);
            const Counters foreground = equal(max(seenAsBackground, rest), rest);
            decision = without(foreground, fresh).maskBytes();
        }
        if constexpr (learns) {
            const U8x32 background = equal(decision, splat(std::uint8_t{0}));
            learn(model, first, found, samples, background, fresh);
        }
        return decision;
    }

private:
    // A part of a whole, halves up.
    static std::int32_t nearest(float part, double whole) {
        return static_cast<std::int32_t>(std::floor(static_cast<double>(part) * whole + 0.5));
    }

    RVX_INLINE U8x32 matches(const Samples &a, const Samples &b) const {
        U8x32 difference = absDiff(a.at[0], b.at[0]);
        for (int c = 1; c < channels; ++c) {
            difference = rvxcv::max(difference, absDiff(a.at[c], b.at[c]));
        }
        return rvxcv::equal(rvxcv::max(difference, tolerance), tolerance);
    }

    RVX_INLINE void learn(std::uint8_t *model, const std::uint8_t (&first)[mostEntries][32], U8x32 found,
                          const Samples &samples, U8x32 background, Counters fresh) const {
        const U16x16 decay = splat(rate);
        const Counters gain = Counters::all(rate), always = Counters::all(65535);
        const Counters backgroundGain = keep(Counters::mask(background), gain);
        // From the last entry upwards; the one seen more often of two goes on. A pixel's first entry, seen always,
        // goes all the way.
        One moving = learned(model, entries - 1, first, decay, gain, backgroundGain);
        const Counters kept = Counters::mask(found);
        moving.colour = select(found, moving.colour, samples);
        moving.p = select(kept, moving.p, select(fresh, always, gain));
        moving.b = select(kept, moving.b, select(fresh, always, backgroundGain));
        Counters foreground = Counters::all(0);
        for (int i = entries - 1; i > 0; --i) {
            One next = learned(model, i - 1, first, decay, gain, backgroundGain);
            const Counters stay = equal(max(moving.p, next.p), next.p);
            if (!allSet(stay)) {
                exchange(stay, next, moving);
            }
            moving.save(model + i * One::bytes);
            if (i < principal) {
                foreground = add(foreground, sub(moving.p, moving.b));
            }
            moving = next;
        }
        moving.save(model);
        foreground = add(foreground, sub(moving.p, moving.b));
        const Counters most = Counters::all(limit), below = equal(max(foreground, most), most);
        if (!allSet(below)) {
            absorb(model, below);
        }
    }

    RVX_INLINE One learned(const std::uint8_t *model, int i, const std::uint8_t (&first)[mostEntries][32], U16x16 decay,
                           Counters gain, Counters backgroundGain) const {
        One entry = One::load(model + i * One::bytes);
        entry.p = decayed(entry.p, decay);
        entry.b = decayed(entry.b, decay);
        const U8x32 lanes = load<U8x32>(first[i]);
        if (anyBit(lanes)) {
            const Counters mask = Counters::mask(lanes);
            entry.p = add(entry.p, keep(mask, gain));
            entry.b = add(entry.b, keep(mask, backgroundGain));
        }
        return entry;
    }

    // Where they do not stay, two entries change places.
    static RVX_INLINE void exchange(Counters stay, One &a, One &b) {
        exchange(stay, a.p, b.p);
        exchange(stay, a.b, b.b);
        const U8x32 bytes = stay.maskBytes();
        for (int c = 0; c < channels; ++c) {
            const U8x32 change = bitAndNot(bitXor(a.colour.at[c], b.colour.at[c]), bytes);
            a.colour.at[c] = bitXor(a.colour.at[c], change);
            b.colour.at[c] = bitXor(b.colour.at[c], change);
        }
    }
    static RVX_INLINE void exchange(Counters stay, Counters &a, Counters &b) {
        const Counters change = without(differing(a, b), stay);
        a = differing(a, change);
        b = differing(b, change);
    }

    // What was foreground for long is background now.
    void absorb(std::uint8_t *model, Counters kept) const {
        for (int i = 0; i < entries; ++i) {
            std::uint8_t *const p = model + i * One::bytes + One::places;
            const Counters b = Counters::load(p + 64);
            select(kept, b, sub(Counters::load(p), b)).save(p + 64);
        }
    }
};

struct HistogramModel {
    using Params = ForegroundHistogramParams;
    using State = ForegroundHistogramState;
    template <int channels> using Samples = ByteSamples<channels>;
    static constexpr std::int32_t tag = 0x4b617394;

    static bool inRange(const Params &p) {
        return p.entries >= 1 && p.entries <= mostEntries && p.principal >= 1 && p.principal <= p.entries &&
               p.tolerance >= 0 && p.tolerance <= 255 && within(p.absorb, 0.5f, 1);
    }
    static std::int64_t pixelBytes(const Params &p, int channels) { return std::int64_t{p.entries} * (channels + 4); }
    template <int channels, class Use> static void withKernel(const Params &params, float rate, const Use &use) {
        use(HistogramKernel<channels>(params, rate));
    }
    template <int channels>
    static RVX_INLINE Samples<channels> background(const Params &params, const std::uint8_t *model) {
        using One = Entry<channels>;
        One best = One::load(model);
        for (int i = 1; i < params.entries; ++i) {
            const One entry = One::load(model + i * One::bytes);
            const Counters most = max(best.b, entry.b), stays = equal(most, best.b);
            best.colour = select(stays.maskBytes(), best.colour, entry.colour);
            best.b = most;
        }
        return best.colour;
    }
};

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiForegroundHistogramGetSize_8u(RoiSize roi, int32_t channels, const ForegroundHistogramParams *params,
                                             int32_t *stateSize) {
    return foregroundSize<HistogramModel>(roi, channels, params, stateSize, stateSize);
}
StatusCode rvxiForegroundHistogramInit_8u(RoiSize roi, int32_t channels, const ForegroundHistogramParams *params,
                                          ForegroundHistogramState *state) {
    return foregroundInit<HistogramModel>(roi, channels, params, state);
}
StatusCode rvxiForegroundHistogram_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                          RoiSize roi, float rate, ForegroundHistogramState *state) {
    return foregroundCall<HistogramModel, 1>(src, srcStep, dst, dstStep, roi, rate, state);
}
StatusCode rvxiForegroundHistogram_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                          RoiSize roi, float rate, ForegroundHistogramState *state) {
    return foregroundCall<HistogramModel, 3>(src, srcStep, dst, dstStep, roi, rate, state);
}
StatusCode rvxiForegroundHistogramUpdate_8u_C1R(const uint8_t *src, int32_t srcStep, const uint8_t *map,
                                                int32_t mapStep, RoiSize roi, float rate,
                                                ForegroundHistogramState *state) {
    return foregroundCall<HistogramModel, 1>(src, srcStep, map, mapStep, roi, rate, state);
}
StatusCode rvxiForegroundHistogramUpdate_8u_C3R(const uint8_t *src, int32_t srcStep, const uint8_t *map,
                                                int32_t mapStep, RoiSize roi, float rate,
                                                ForegroundHistogramState *state) {
    return foregroundCall<HistogramModel, 3>(src, srcStep, map, mapStep, roi, rate, state);
}
StatusCode rvxiForegroundHistogramGetBackground_8u_C1R(uint8_t *dst, int32_t dstStep, RoiSize roi,
                                                       const ForegroundHistogramState *state) {
    return foregroundBackground<HistogramModel, 1>(dst, dstStep, roi, state);
}
StatusCode rvxiForegroundHistogramGetBackground_8u_C3R(uint8_t *dst, int32_t dstStep, RoiSize roi,
                                                       const ForegroundHistogramState *state) {
    return foregroundBackground<HistogramModel, 3>(dst, dstStep, roi, state);
}
