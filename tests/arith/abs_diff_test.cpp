// Absolute differences against the plain formula.
#include "support/guarded.h"
#include "support/status_table.h"

#include "rvxcv.h"

#include <algorithm>
#include <cmath>

namespace {

using namespace support;

template <class T> T plainAbsDiff(T a, T b) {
    if constexpr (std::is_same_v<T, float>) {
        return std::fabs(a - b);
    } else {
        return static_cast<T>(std::abs(static_cast<int>(a) - static_cast<int>(b)));
    }
}

template <class T>
using Binary = StatusCode (*)(const T *, std::int32_t, const T *, std::int32_t, T *, std::int32_t, RoiSize);

template <class T> void checkImages(Binary<T> function, int channels) {
    Rng rng = makeRng("absdiff", sizeof(T) * 4 + static_cast<unsigned>(channels));
    // Any of the three may be padded beside tight ones: bits of `padded`.
    const auto run = [&](std::int64_t width, std::int64_t height, std::int64_t padded, Contents contents, Guard guard) {
        constexpr auto size = static_cast<std::int64_t>(sizeof(T));
        GuardedImage<T> a(width * channels, height, {.padding = (padded & 1) * size, .guard = guard}),
            b(width * channels, height, {.padding = (padded & 2) * size, .guard = guard}),
            dst(width * channels, height, {.padding = (padded & 4) * size, .guard = guard});
        a.fill(rng, contents);
        b.fill(rng, contents);
        const auto want = [&](auto x, auto y) { return plainAbsDiff(a.at(x, y), b.at(x, y)); };
        ASSERT_EQ(function(a.data(), a.step(), b.data(), b.step(), dst.data(), dst.step(), dst.roi(channels)),
                  StatusOk);
        ASSERT_TRUE(imageIs(dst, want));

        // In place over the first source.
        GuardedImage<T> second(width * channels, height, {.padding = (padded & 1) * size, .guard = guard});
        for (std::int64_t y = 0; y < height; ++y) {
            for (std::int64_t x = 0; x < width * channels; ++x) {
                second.set(x, y, a.at(x, y));
            }
        }
        ASSERT_EQ(function(second.data(), second.step(), b.data(), b.step(), second.data(), second.step(),
                           second.roi(channels)),
                  StatusOk);
        ASSERT_TRUE(imageIs(second, want)) << "in place";
    };
    for (std::int64_t width = 1; width <= 67; ++width) {
        run(width, 3, width % 8, allContents[width % 5], width % 2 != 0 ? Guard::behind : Guard::before);
    }
    for (const Contents contents : allContents) {
        run(1283, 4, 7, contents, Guard::behind);
    }
}

TEST(AbsDiff, EveryTypeMatchesTheFormula) {
    checkImages<std::uint8_t>(rvxiAbsDiff_8u_C1R, 1);
    checkImages<std::uint8_t>(rvxiAbsDiff_8u_C3R, 3);
    checkImages<std::uint16_t>(rvxiAbsDiff_16u_C1R, 1);
    checkImages<float>(rvxiAbsDiff_32f_C1R, 1);
}

template <class T, class V, class F> void checkConstant(F function, std::initializer_list<V> values) {
    Rng rng = makeRng("absdiffc", sizeof(T));
    for (const V value : values) {
        for (std::int64_t width = 1; width <= 67; width += 3) {
            GuardedImage<T> src(width, 2, {.padding = width / 3 % 2 * 8}),
                dst(width, 2, {.padding = width / 6 % 2 * 4});
            src.fill(rng, allContents[static_cast<std::size_t>(width) % 5]);
            ASSERT_EQ(function(src.data(), src.step(), dst.data(), dst.step(), dst.roi(), value), StatusOk);
            T constant;
            if constexpr (std::is_same_v<T, float>) {
                constant = value;
            } else {
                constant = static_cast<T>(std::clamp<V>(value, 0, std::numeric_limits<T>::max()));
            }
            ASSERT_TRUE(imageIs(dst, [&](auto x, auto y) { return plainAbsDiff(src.at(x, y), constant); }))
                << "value " << value;
        }
    }
}

TEST(AbsDiffC, IntegerConstantsAreClampedFloatsAreNot) {
    checkConstant<std::uint8_t, std::int32_t>(rvxiAbsDiffC_8u_C1R, {-5, INT32_MIN, 0, 77, 255, 300, INT32_MAX});
    checkConstant<std::uint16_t, std::int32_t>(rvxiAbsDiffC_16u_C1R, {-5, INT32_MIN, 0, 4711, 65535, 70000, INT32_MAX});
    checkConstant<float, float>(rvxiAbsDiffC_32f_C1R,
                                {-5.5f, 0.0f, -0.0f, 1e30f, std::numeric_limits<float>::infinity(), std::nanf("")});
}

template <class T> struct Call {
    const T *a, *b;
    T *dst;
    std::int32_t aStep, bStep, dstStep;
    RoiSize roi;
};

// With a constant instead of the second image its faults are none.
template <class T> void checkStatuses(Binary<T> function, int channels, bool constant = false) {
    GuardedImage<T> a(9 * channels, 2), b(9 * channels, 2), dst(9 * channels, 2);
    constexpr auto size = static_cast<std::int32_t>(sizeof(T));
    const std::int32_t row = 9 * channels * size;
    using C = Call<T>;
    Faults<C> faults;
    faults.nulls(&C::a, &C::dst);
    if (!constant) {
        faults.nulls(&C::b);
    }
    faults.empty(&C::roi).shortSteps(row, &C::aStep, &C::dstStep);
    if (!constant) {
        faults.shortSteps(row, &C::bStep).unevenSteps(row, size, &C::bStep);
    }
    faults.unevenSteps(row, size, &C::aStep, &C::dstStep);
    expectFaultOrder<Call<T>>(
        {a.data(), b.data(), dst.data(), a.step(), b.step(), dst.step(), dst.roi(channels)}, faults,
        [&](const Call<T> &c) { return function(c.a, c.aStep, c.b, c.bStep, c.dst, c.dstStep, c.roi); },
        [&] { return dst.bytes(); });
}

TEST(AbsDiff, StatusesInTheOrderOfTheChecks) {
    checkStatuses<std::uint8_t>(rvxiAbsDiff_8u_C1R, 1);
    checkStatuses<std::uint8_t>(rvxiAbsDiff_8u_C3R, 3);
    checkStatuses<std::uint16_t>(rvxiAbsDiff_16u_C1R, 1);
    checkStatuses<float>(rvxiAbsDiff_32f_C1R, 1);
}

TEST(AbsDiffC, StatusesInTheOrderOfTheChecks) {
    checkStatuses<std::uint8_t>([](auto src, auto srcStep, auto, auto, auto dst, auto dstStep,
                                   auto roi) { return rvxiAbsDiffC_8u_C1R(src, srcStep, dst, dstStep, roi, 7); },
                                1, true);
    checkStatuses<std::uint16_t>([](auto src, auto srcStep, auto, auto, auto dst, auto dstStep,
                                    auto roi) { return rvxiAbsDiffC_16u_C1R(src, srcStep, dst, dstStep, roi, 7); },
                                 1, true);
    checkStatuses<float>([](auto src, auto srcStep, auto, auto, auto dst, auto dstStep,
                            auto roi) { return rvxiAbsDiffC_32f_C1R(src, srcStep, dst, dstStep, roi, 7); },
                         1, true);
}

} // namespace
