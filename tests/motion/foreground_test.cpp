// Background models against their rules, bit for bit: decisions, pictures, and every number of the records.
#include "plain_foreground.h"
#include "support/guarded.h"
#include "support/status_table.h"

#include <cstring>
#include <functional>

namespace {

using namespace support;

// The functions of a model, of one channel and of three.
template <class P, class S> struct Functions {
    using Params = P;
    using State = S;
    StatusCode (*getSize)(RoiSize, std::int32_t, const P *, std::int32_t *);
    StatusCode (*init)(RoiSize, std::int32_t, const P *, S *);
    struct Of {
        StatusCode (*decide)(const std::uint8_t *, std::int32_t, std::uint8_t *, std::int32_t, RoiSize, float, S *);
        StatusCode (*update)(const std::uint8_t *, std::int32_t, const std::uint8_t *, std::int32_t, RoiSize, float,
                             S *);
        StatusCode (*background)(std::uint8_t *, std::int32_t, RoiSize, const S *);
    } c1, c3;

    const Of &of(int channels) const { return channels == 1 ? c1 : c3; }
};

const Functions<ForegroundGaussianParams, ForegroundGaussianState> gaussian{
    rvxiForegroundGaussianGetSize_8u,
    rvxiForegroundGaussianInit_8u,
    {rvxiForegroundGaussian_8u_C1R, rvxiForegroundGaussianUpdate_8u_C1R, rvxiForegroundGaussianGetBackground_8u_C1R},
    {rvxiForegroundGaussian_8u_C3R, rvxiForegroundGaussianUpdate_8u_C3R, rvxiForegroundGaussianGetBackground_8u_C3R}};
const Functions<FGMMParams, FGMMState> mixture{rvxiFGMMGetSize_8u,
                                               rvxiFGMMInit_8u,
                                               {rvxiFGMM_8u_C1R, rvxiFGMMUpdate_8u_C1R, rvxiFGMMGetBackground_8u_C1R},
                                               {rvxiFGMM_8u_C3R, rvxiFGMMUpdate_8u_C3R, rvxiFGMMGetBackground_8u_C3R}};
const Functions<ForegroundHistogramParams, ForegroundHistogramState> histogram{
    rvxiForegroundHistogramGetSize_8u,
    rvxiForegroundHistogramInit_8u,
    {rvxiForegroundHistogram_8u_C1R, rvxiForegroundHistogramUpdate_8u_C1R, rvxiForegroundHistogramGetBackground_8u_C1R},
    {rvxiForegroundHistogram_8u_C3R, rvxiForegroundHistogramUpdate_8u_C3R,
     rvxiForegroundHistogramGetBackground_8u_C3R}};

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr ForegroundGaussianParams usualGaussian{3, 225, 16, 1125, 0.1f, 0};
constexpr FGMMParams usualMixture{3, 4, 225, 16, 1125, 1, 0.5f, 0.9f, 0};
constexpr ForegroundHistogramParams usualHistogram{8, 6, 10, 0.8f};

// A record in exactly the bytes that it asks for, between unmapped pages; or with some bytes behind it, which moves it.
template <class F> struct Record {
    using State = typename F::State;
    const F &functions;
    int channels;
    RoiSize roi;
    GuardedBuffer memory;

    Record(const F &f, RoiSize size, int channelCount, const typename F::Params &params, Guard guard = Guard::behind,
           std::int64_t behind = 0)
        : functions(f), channels(channelCount), roi(size), memory(bytes(f, size, channelCount, params) + behind, guard),
          size_(memory.size() - behind) {
        memory.scribble();
        EXPECT_EQ(f.init(size, channelCount, &params, state()), StatusOk);
    }
    static std::int64_t bytes(const F &f, RoiSize size, int channels, const typename F::Params &params) {
        std::int32_t result = 0;
        EXPECT_EQ(f.getSize(size, channels, &params, &result), StatusOk);
        return result;
    }
    State *state() { return reinterpret_cast<State *>(memory.data()); }
    std::vector<std::uint8_t> content() const { return {memory.data(), memory.data() + size_}; }

    using Image = GuardedImage<std::uint8_t>;
    void decide(const Image &frame, Image &map, float rate) {
        ASSERT_EQ(functions.of(channels).decide(frame.data(), frame.step(), map.data(), map.step(), roi, rate, state()),
                  StatusOk);
    }
    void update(const Image &frame, const Image &map, float rate) {
        ASSERT_EQ(functions.of(channels).update(frame.data(), frame.step(), map.data(), map.step(), roi, rate, state()),
                  StatusOk);
    }
    void background(Image &picture) {
        ASSERT_EQ(functions.of(channels).background(picture.data(), picture.step(), roi, state()), StatusOk);
    }

private:
    std::int64_t size_;
};

// A pixel of a scene with two backgrounds: one of them with noise, darkened, or something else. Calm: noise alone.
Sample sceneSample(Rng &rng, const Sample &base, int channels, bool calm) {
    const std::int64_t kind = calm ? 0 : uniform(rng, 0, 9), noise = kind < 6 ? 6 : 1;
    const double gain = kind == 7 ? static_cast<double>(uniform(rng, 40, 100)) / 100 : 1;
    Sample s{};
    for (std::size_t c = 0; c < static_cast<std::size_t>(channels); ++c) {
        const std::int64_t own = static_cast<std::int64_t>(gain * base[c]) + uniform(rng, -noise, noise);
        const std::int64_t value = kind == 9 ? uniform(rng, 0, 255) : kind == 8 ? 255 - base[c] : own;
        s[c] = static_cast<std::uint8_t>(std::clamp<std::int64_t>(value, 0, 255));
    }
    return s;
}

// One record is driven by single calls, another one, of which the bytes stay the same at another address, by deciding
// and updating apart; both agree with the rules.
template <class Plain, class F>
void checkFrames(const F &functions, const typename F::Params &params, int channels, RoiSize roi, int frames,
                 Guard guard = Guard::behind) {
    Rng rng = makeRng("foreground", static_cast<std::uint64_t>(roi.width * 4 + channels));
    const std::int64_t width = roi.width, height = roi.height;
    Record record(functions, roi, channels, params, guard), other(functions, roi, channels, params, Guard::behind, 8);
    std::vector<Plain> model(static_cast<std::size_t>(width * height), Plain{params, channels});
    ASSERT_EQ(record.memory.size(), 128 + model[0].bytes() * ((width - 1) / Plain::block + 1) * Plain::block * height);
    std::vector<Sample> base(model.size()), now(model.size());
    for (Sample &s : base) {
        s = {static_cast<std::uint8_t>(rng()), static_cast<std::uint8_t>(rng()), static_cast<std::uint8_t>(rng())};
    }
    GuardedImage<std::uint8_t> frame(width * channels, height, {.padding = width % 3, .guard = guard}),
        map(width, height, {.padding = width % 2, .guard = guard}), again(width, height, {.padding = 5}),
        picture(width * channels, height, {.padding = 1, .guard = guard});
    for (int n = 0; n < frames; ++n) {
        constexpr float rates[] = {1, 0.05f, 0.5f, 0.003f, 0.2f};
        // In long films weights sink below the normal floats.
        const bool sinks = frames > 200;
        const float rate = n == 0 || sinks ? 0.4f : n % 7 == 3 ? rates[n / 7 % 5] : 1.0f / static_cast<float>(n + 1);
        for (std::int64_t i = 0; i < width * height; ++i) {
            Sample &s = now[static_cast<std::size_t>(i)];
            s = sceneSample(rng, base[static_cast<std::size_t>(i)], channels,
                            n % 3 == 1 || (sinks && n > 20 && n < 280));
            for (int c = 0; c < channels; ++c) {
                frame.set(i % width * channels + c, i / width, s[static_cast<std::size_t>(c)]);
            }
        }
        const auto decision = [&](auto x, auto y) {
            const auto i = static_cast<std::size_t>(y * width + x);
            return model[i].decide(now[i]);
        };
        const std::vector<std::uint8_t> untouched = other.content();
        other.decide(frame, again, 0);
        other.update(frame, again, 0);
        ASSERT_EQ(other.content(), untouched);
        ASSERT_TRUE(imageIs(again, decision)) << "frame " << n;
        if ((n + frames) % 4 != 2) {
            record.decide(frame, map, rate);
            ASSERT_TRUE(imageIs(map, decision)) << "frame " << n;
        } else { // any bytes but 0 are foreground
            for (std::int64_t i = 0; i < width * height; ++i) {
                again.set(i % width, i / width, static_cast<std::uint8_t>(uniform(rng, 0, 2) == 0 ? rng() : 0));
            }
            record.update(frame, again, rate);
        }
        other.update(frame, again, rate);
        ASSERT_EQ(record.content(), other.content()) << "frame " << n;
        ASSERT_EQ(record.state()->frames, n + 1);
        for (std::int64_t i = 0; i < width * height; ++i) {
            model[static_cast<std::size_t>(i)].learn(now[static_cast<std::size_t>(i)],
                                                     again.at(i % width, i / width) == 0, rate);
        }
    }
    record.background(picture);
    ASSERT_TRUE(imageIs(picture, [&](auto x, auto y) {
        const Sample s = model[static_cast<std::size_t>(y * width + x / channels)].picture();
        return s[static_cast<std::size_t>(x % channels)];
    }));
    if (width % Plain::block == 0) { // no places for pixels that do not exist: the numbers, in whichever order
        std::vector<std::uint32_t> expected, actual;
        for (const Plain &pixel : model) {
            pixel.append(expected);
        }
        const std::vector<std::uint8_t> bytes = record.content();
        constexpr std::size_t size = Plain::block == 8 ? 4 : 1;
        for (std::size_t at = 128; at < bytes.size(); at += size) {
            std::memcpy(&actual.emplace_back(0), &bytes[at], size);
        }
        std::sort(expected.begin(), expected.end());
        std::sort(actual.begin(), actual.end());
        ASSERT_EQ(actual, expected);
    }
}

template <class Plain, class F>
void checkModel(const F &functions, const typename F::Params &usual, const std::vector<typename F::Params> &others) {
    for (const int channels : {1, 3}) {
        for (std::int32_t width = 1; width <= 65; ++width) {
            checkFrames<Plain>(functions, usual, channels, {width, 2}, 9,
                               width % 2 == 0 ? Guard::before : Guard::behind);
        }
        checkFrames<Plain>(functions, usual, channels, {96, 3}, 120);
        checkFrames<Plain>(functions, usual, channels, {64, 1}, 320);
        for (std::size_t i = 0; i < others.size(); ++i) {
            checkFrames<Plain>(functions, others[i], channels, {64, 1}, 102); // learns from a map first
            ASSERT_FALSE(testing::Test::HasFailure()) << "parameters " << i << ", channels " << channels;
        }
    }
}

TEST(Foreground, GaussianMatchesItsRules) {
    checkModel<PlainGaussianModel>(
        gaussian, usualGaussian, {{2, 30, 30, 30, 1, 0.5f}, {2.5f, 100, 1, 3000, 0, 0.7f}, {1e20f, 9, 4, 25, 0.3f, 0}});
}

TEST(Foreground, MixtureMatchesItsRules) {
    std::vector<FGMMParams> others;
    for (std::int32_t components = 1; components <= 8; ++components) {
        const bool odd = components % 2 != 0;
        others.push_back({components, 2.5f, 60, 4, 900, odd ? 0.25f : 1.0f, 0.4f, odd ? 0.5f : 1.0f, odd ? 0.05f : 0});
    }
    others.push_back({3, 3, 225, 16, 1125, 0, 0, 0.7f, 0.999f});
    others.push_back({5, 1.5f, 16, 16, 16, 0, 0.9f, 0.2f, 0.02f});
    others.push_back({2, 2.5f, 60, 4, 900, 1, 0, 0.5f, 0}); // weights of exactly a half
    checkModel<PlainMixtureModel>(mixture, usualMixture, others);
}

TEST(Foreground, HistogramMatchesItsRules) {
    checkModel<PlainHistogramModel>(
        histogram, usualHistogram,
        {{1, 1, 20, 0.5f}, {2, 1, 0, 0.5f}, {3, 3, 255, 0.6f}, {5, 2, 30, 0.75f}, {32, 32, 3, 0.5f}, {4, 4, 12, 1}});
}

// -------------------------------------------------------------------------------------------------------- Behaviour

// Runs a film on small images of one value and returns the last decision of the first pixel.
template <class F>
std::vector<int> film(const F &functions, const typename F::Params &params, int frames, float rate,
                      const std::function<Sample(int)> &sample, bool cleaned = false) {
    Record record(functions, {1, 1}, 3, params);
    GuardedImage<std::uint8_t> frame(3, 1), map(1, 1);
    std::vector<int> decisions;
    for (int n = 0; n < frames; ++n) {
        const Sample s = sample(n);
        for (std::size_t c = 0; c < 3; ++c) {
            frame.set(static_cast<std::int64_t>(c), 0, s[c]);
        }
        record.decide(frame, map, cleaned ? 0 : rate);
        decisions.push_back(map.at(0, 0));
        if (cleaned) {
            map.set(0, 0, 0);
            record.update(frame, map, rate);
        }
    }
    return decisions;
}

TEST(Foreground, TwoValuesInTurnAndShadows) {
    const auto turn = [](int n) { return n % 2 == 0 ? Sample{40, 40, 40} : Sample{200, 180, 160}; };
    const auto foreground = [](const std::vector<int> &decisions) {
        return std::count(decisions.end() - 20, decisions.end(), 255);
    };
    EXPECT_EQ(foreground(film(mixture, usualMixture, 120, 0.02f, turn)), 0);
    EXPECT_GE(foreground(film(gaussian, usualGaussian, 120, 0.02f, turn)), 10);
    EXPECT_EQ(foreground(film(histogram, usualHistogram, 120, 0.02f, turn)), 10);
    EXPECT_EQ(foreground(film(histogram, usualHistogram, 120, 0.02f, turn, true)), 0);
    const auto darker = [](int n) { return n < 40 ? Sample{240, 180, 120} : Sample{168, 126, 84}; };
    EXPECT_EQ(film(mixture, usualMixture, 41, 0.05f, darker).back(), 127);
    const auto redder = [](int n) { return n < 40 ? Sample{240, 180, 120} : Sample{200, 110, 60}; };
    EXPECT_EQ(film(mixture, usualMixture, 41, 0.05f, redder).back(), 255);
}

TEST(Foreground, HistogramAbsorbsWhatStays) {
    const auto parked = [](int n) { return n < 100 ? Sample{50, 60, 70} : Sample{150, 20, 90}; };
    for (const float absorb : {0.5f, 0.8f, 0.9f, 1.0f}) {
        const auto decisions = film(histogram, {8, 6, 10, absorb}, 400, 0.02f, parked);
        const double frames = static_cast<double>(std::count(decisions.begin(), decisions.end(), 255));
        EXPECT_NEAR(frames, absorb < 1 ? -std::log(1 - absorb) / 0.02 : 300, 2) << absorb;
    }
}

// --------------------------------------------------------------------------------------------------------- Statuses

template <class F> struct Call {
    const std::uint8_t *src;
    std::uint8_t *map;
    std::int32_t srcStep, mapStep;
    RoiSize roi;
    float rate;
    typename F::State *state;
    std::int32_t channels;
    typename F::Params params;
    const typename F::Params *given;
};

template <class F>
void checkStatuses(const F &functions, const typename F::Params &usual, int channels,
                   const std::vector<typename F::Params> &bad) {
    using A = Call<F>;
    const RoiSize roi{9, 2};
    Record<F> record(functions, roi, channels, usual), strange(functions, roi, channels, usual),
        otherSize(functions, {9, 3}, channels, usual), otherChannels(functions, roi, 4 - channels, usual),
        unlearned(functions, roi, channels, usual);
    strange.state()->tag ^= 1;
    GuardedImage<std::uint8_t> src(9 * channels, 2), map(9, 2), picture(9 * channels, 2);
    std::int32_t size = -5;
    const A good{src.data(), map.data(), src.step(), map.step(), roi, 0.5f, record.state(), channels, usual, &usual};
    const auto outputs = [&] {
        std::vector<std::uint8_t> all{static_cast<std::uint8_t>(size)};
        for (const auto &more : {map.bytes(), picture.bytes(), record.content(), strange.content(), otherSize.content(),
                                 otherChannels.content(), unlearned.content()}) {
            all.insert(all.end(), more.begin(), more.end());
        }
        return all;
    };
    const auto check = [&](const Faults<A> &faults, const std::function<StatusCode(const A &)> &call) {
        expectFaultOrder<A>(good, faults, call, outputs);
    };
    Faults<A> setUp;
    setUp.nulls(&A::given, &A::state).empty(&A::roi).values(StatusBadChannelCount, &A::channels, {0, 2, 4, -1});
    for (const auto &params : bad) {
        setUp.values(StatusOutOfRange, &A::params, {params});
    }
    setUp.values(StatusBadSize, &A::roi, {{INT32_MAX, INT32_MAX}, {32768, 32768}, {1 << 30, 1}});
    const auto params = [](const A &a) { return a.given == nullptr ? nullptr : &a.params; };
    check(setUp, [&](const A &a) {
        return functions.getSize(a.roi, a.channels, params(a), a.state == nullptr ? nullptr : &size);
    });
    check(setUp, [&](const A &a) { return functions.init(a.roi, a.channels, params(a), a.state); });

    Faults<A> calls, pictures; // which have no map
    calls.nulls(&A::src, &A::map, &A::state);
    pictures.nulls(&A::src, &A::state);
    for (Faults<A> *faults : {&calls, &pictures}) {
        faults->values(StatusBadContext, &A::state, {strange.state()}).empty(&A::roi);
        faults->values(StatusBadSize, &A::state, {otherSize.state()}).values(StatusBadSize, &A::roi, {{8, 2}});
        faults->shortSteps(9 * channels, &A::srcStep);
    }
    calls.shortSteps(9, &A::mapStep).values(StatusBadChannelCount, &A::state, {otherChannels.state()});
    calls.values(StatusOutOfRange, &A::rate, {-0.01f, 1.0001f, nan});
    pictures.values(StatusBadChannelCount, &A::state, {otherChannels.state()});
    pictures.values(StatusError, &A::state, {unlearned.state()});
    const auto &f = functions.of(channels);
    check(calls, [&](const A &a) { return f.decide(a.src, a.srcStep, a.map, a.mapStep, a.roi, a.rate, a.state); });
    check(calls, [&](const A &a) { return f.update(a.src, a.srcStep, a.map, a.mapStep, a.roi, a.rate, a.state); });
    check(pictures, [&](const A &a) {
        return f.background(a.src == nullptr ? nullptr : picture.data(), a.srcStep, a.roi, a.state);
    });
    EXPECT_EQ(record.state()->frames, 2);
    record.state()->frames = INT32_MAX;
    record.decide(src, map, 0.25f);
    EXPECT_EQ(record.state()->frames, INT32_MAX);
    EXPECT_TRUE(record.state()->width == 9 && record.state()->height == 2 && record.state()->channels == channels);
    EXPECT_EQ(std::memcmp(&record.state()->params, &usual, sizeof usual), 0);
}

TEST(Foreground, StatusesInTheOrderOfTheChecks) {
    const std::vector<ForegroundGaussianParams> badGaussians{
        {0, 225, 16, 1125, 0, 0},     {nan, 225, 16, 1125, 0, 0}, {3, 225, 0, 1125, 0, 0},
        {3, 15.9f, 16, 1125, 0, 0},   {3, 225, 16, 224, 0, 0},    {3, 225, 16, HUGE_VALF, 0, 0},
        {3, 225, 16, 1125, 1.01f, 0}, {3, 225, 16, 1125, nan, 0}, {3, 225, 16, 1125, 0, 1},
        {3, 225, 16, 1125, 0, -0.1f}};
    std::vector<FGMMParams> badMixtures{{0, 4, 225, 16, 1125, 1, 0, 1, 0}, {9, 4, 225, 16, 1125, 1, 0, 1, 0},
                                        {3, 4, 225, 16, 1125, 1, 0, 0, 0}, {3, 4, 225, 16, 1125, 1, 0, 1.1f, 0},
                                        {3, 4, 225, 16, 1125, 1, 0, 1, 1}, {3, 4, 225, 16, 1125, 1, 0, 1, nan}};
    for (const auto &g : badGaussians) {
        badMixtures.push_back({3, g.threshold, g.varInit, g.varMin, g.varMax, g.foregroundRate, g.shadow, 1, 0});
    }
    for (const int channels : {1, 3}) {
        checkStatuses(gaussian, usualGaussian, channels, badGaussians);
        checkStatuses(mixture, usualMixture, channels, badMixtures);
        checkStatuses(histogram, usualHistogram, channels,
                      {{33, 6, 10, 1},
                       {0, 0, 10, 1},
                       {8, 9, 10, 1},
                       {8, 0, 10, 1},
                       {8, 6, 256, 1},
                       {8, 6, -1, 1},
                       {8, 6, 10, 0.49f},
                       {8, 6, 10, 1.01f},
                       {8, 6, 10, nan}});
    }
}

} // namespace
