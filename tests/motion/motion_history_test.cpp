// Motion history against its rule, bit for bit.
#include "support/guarded.h"
#include "support/status_table.h"

#include "rvxcv.h"

#include <bit>
#include <cmath>

namespace {

using namespace support;

constexpr float infinity = std::numeric_limits<float>::infinity(), notANumber = std::numeric_limits<float>::quiet_NaN();

template <class T> using Update = StatusCode (*)(const T *, std::int32_t, float *, std::int32_t, RoiSize, float, float);

// The rule, on the history's bits.
template <class T> std::uint32_t plainHistory(T s, std::uint32_t h, float timestamp, float duration) {
    const float limit = timestamp - duration;
    if (s != 0) {
        return std::bit_cast<std::uint32_t>(timestamp);
    }
    return std::bit_cast<float>(h) < limit ? 0 : h;
}

// A still pixel in two of three; floats have two zeros, and what is hardly a number does move.
template <class T> T silhouettePixel(Rng &rng, Contents contents) {
    if (uniform(rng, 0, 2) == 0) {
        return randomValue<T>(rng, contents);
    }
    if constexpr (std::is_same_v<T, float>) {
        constexpr float values[] = {0.0f, -0.0f, 0.0f, 1e-45f, -1e-45f, notANumber};
        return values[uniform(rng, 0, 5)];
    } else {
        return 0;
    }
}

template <class T> void checkImages(Update<T> function) {
    Rng rng = makeRng("history", sizeof(T));
    const auto run = [&](std::int64_t width, std::int64_t padding, std::int64_t skew, Contents contents, Guard guard,
                         float timestamp, float duration) {
        GuardedImage<T> silhouette(
            width, 3, {.padding = padding * static_cast<std::int64_t>(sizeof(T)), .guard = guard, .skew = skew});
        // The history as bits: NaN payloads, signalling ones too, and negative zeros must survive.
        GuardedImage<std::uint32_t> before(width, 3),
            history(width, 3, {.padding = 4 * padding, .guard = guard, .skew = skew});
        for (std::int64_t y = 0; y < 3; ++y) {
            for (std::int64_t x = 0; x < width; ++x) {
                silhouette.set(x, y, silhouettePixel<T>(rng, contents));
                constexpr std::uint32_t special[] = {0x7fc12345, 0x7f812345, 0xff812345, 0x80000000, 0x00000001};
                const std::int64_t pick = uniform(rng, 0, 15);
                const float edge = timestamp - duration;
                before.set(x, y,
                           pick < 5    ? special[pick]
                           : pick == 5 ? std::bit_cast<std::uint32_t>(edge)
                           : pick == 6 ? std::bit_cast<std::uint32_t>(std::nextafter(edge, -infinity))
                                       : std::bit_cast<std::uint32_t>(randomValue<float>(rng, Contents::random)));
                history.set(x, y, before.at(x, y));
            }
        }
        ASSERT_EQ(function(silhouette.data(), silhouette.step(), reinterpret_cast<float *>(history.data()),
                           history.step(), history.roi(), timestamp, duration),
                  StatusOk);
        ASSERT_TRUE(imageIs(
            history,
            [&](auto x, auto y) { return plainHistory(silhouette.at(x, y), before.at(x, y), timestamp, duration); }))
            << "timestamp " << timestamp << ", duration " << duration;
    };
    for (std::int64_t width = 1; width <= 71; ++width) {
        run(width, width % 3, width % 5, allContents[width % 5], width % 2 != 0 ? Guard::behind : Guard::before,
            static_cast<float>(width) * 7.0f, 100.25f);
    }
    constexpr float times[][2] = {{0.0f, 0.0f},         {250.0f, 0.0f},     {250.0f, -0.0f},   {-250.0f, 10.0f},
                                  {infinity, 1.0f},     {-infinity, 1.0f},  {5.0f, infinity},  {notANumber, 1.0f},
                                  {infinity, infinity}, {5.0f, notANumber}, {16777216, 0.75f}, {-0.0f, 0.0f},
                                  {1e-45f, 0.0f},       {3.5f, 1e-45f}};
    for (const auto &[timestamp, duration] : times) {
        run(301, 1, 0, Contents::random, Guard::behind, timestamp, duration);
        run(41, 0, 0, Contents::small, Guard::behind, timestamp, duration);
    }
}

TEST(MotionHistory, EverySilhouetteMatchesTheRule) {
    checkImages<std::uint8_t>(rvxiUpdateMotionHistory_8u32f_C1IR);
    checkImages<std::uint16_t>(rvxiUpdateMotionHistory_16u32f_C1IR);
    checkImages<float>(rvxiUpdateMotionHistory_32f_C1IR);
}

template <class T> struct Call {
    const T *silhouette;
    float *history;
    std::int32_t silhouetteStep, historyStep;
    RoiSize roi;
    float duration;
};

template <class T> void checkStatuses(Update<T> function) {
    GuardedImage<T> silhouette(9, 2);
    GuardedImage<float> history(9, 2);
    constexpr auto size = static_cast<std::int32_t>(sizeof(T));
    using C = Call<T>;
    Faults<C> faults;
    faults.nulls(&C::silhouette, &C::history).empty(&C::roi);
    faults.shortSteps(9 * size, &C::silhouetteStep).shortSteps(36, &C::historyStep);
    faults.values(StatusBadStep, &C::roi, {{0x40000001, 2}});
    faults.unevenSteps(36, 4, &C::historyStep).unevenSteps(9 * size, size, &C::silhouetteStep);
    faults.values(StatusOutOfRange, &C::duration, {-1.0f, -1e-45f});
    if (size == 1) {
        EXPECT_EQ(function(silhouette.data(), 9, history.data(), 36, {7, 2}, 1.0f, 1.0f), StatusOk);
    }
    expectFaultOrder<C>(
        {silhouette.data(), history.data(), silhouette.step(), history.step(), history.roi(), 1.0f}, faults,
        [&](const C &c) {
            return function(c.silhouette, c.silhouetteStep, c.history, c.historyStep, c.roi, 5.0f, c.duration);
        },
        [&] { return history.bytes(); });
}

TEST(MotionHistory, StatusesInTheOrderOfTheChecks) {
    checkStatuses<std::uint8_t>(rvxiUpdateMotionHistory_8u32f_C1IR);
    checkStatuses<std::uint16_t>(rvxiUpdateMotionHistory_16u32f_C1IR);
    checkStatuses<float>(rvxiUpdateMotionHistory_32f_C1IR);
}

} // namespace
