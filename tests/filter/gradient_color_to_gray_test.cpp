// Colour gradient to grey against the formulas, the bytes over every triple.
#include "support/guarded.h"
#include "support/status_table.h"

#include "rvxcv.h"

#include <algorithm>
#include <cmath>

namespace {

using namespace support;

template <class T> struct Member;
template <> struct Member<std::uint8_t> {
    static constexpr auto call = rvxiGradientColorToGray_8u_C3C1R;
    static constexpr std::int64_t factor = 1365, half = 2048, bits = 12;
    // A third of the sum in single precision, its root in double.
    static double meanSquare(std::uint8_t a, std::uint8_t b, std::uint8_t c) {
        return static_cast<double>(static_cast<float>(a * a + b * b + c * c) / 3.0f);
    }
};
template <> struct Member<std::uint16_t> {
    static constexpr auto call = rvxiGradientColorToGray_16u_C3C1R;
    static constexpr std::int64_t factor = 5461, half = 8192, bits = 14;
    static double meanSquare(double a, double b, double c) { return (a * a + b * b + c * c) / 3.0; }
};
template <> struct Member<float> { static constexpr auto call = rvxiGradientColorToGray_32f_C3C1R; };

template <class T> T plain(NormKind norm, T a, T b, T c) {
    const auto larger = [](T first, T second) { return first > second ? first : second; };
    if constexpr (std::is_same_v<T, float>) {
        const float x = std::fabs(a), y = std::fabs(b), z = std::fabs(c);
        return norm == NormInf  ? larger(larger(x, y), z)
               : norm == NormL1 ? x + y + z
                                : std::sqrt(std::fma(c, c, std::fma(b, b, a * a)));
    } else if (norm == NormInf) {
        return larger(larger(a, b), c);
    } else if (norm == NormL1) {
        using M = Member<T>;
        return static_cast<T>(((std::int64_t{a} + b + c) * M::factor + M::half) >> M::bits);
    } else {
        const double root = std::floor(0.5 + std::sqrt(Member<T>::meanSquare(a, b, c)));
        return static_cast<T>(std::min<double>(root, std::numeric_limits<T>::max()));
    }
}

template <class T>
testing::AssertionResult reducesRight(const GuardedImage<T> &src, GuardedImage<T> &dst, NormKind norm) {
    const StatusCode status = Member<T>::call(src.data(), src.step(), dst.data(), dst.step(), dst.roi(), norm);
    if (status != StatusOk) {
        return testing::AssertionFailure() << "status " << status;
    }
    return imageIs(dst,
                   [&](auto x, auto y) {
                       return plain<T>(norm, src.at(3 * x, y), src.at(3 * x + 1, y), src.at(3 * x + 2, y));
                   })
           << ", norm " << norm;
}

template <class T> void checkImages() {
    Rng rng = makeRng("colour gradient", sizeof(T));
    const auto run = [&](std::int64_t width, std::int64_t height, std::int64_t padding, std::int64_t skew,
                         Contents contents, Guard guard) {
        const std::int64_t bytes = padding * static_cast<std::int64_t>(sizeof(T));
        GuardedImage<T> src(3 * width, height, {.padding = bytes, .guard = guard, .skew = skew});
        src.fill(rng, contents);
        for (const NormKind norm : {NormInf, NormL1, NormL2}) {
            GuardedImage<T> tight(width, height, {.guard = guard, .skew = skew}),
                padded(width, height, {.padding = 2 * bytes + 4, .guard = guard});
            ASSERT_TRUE(reducesRight(src, tight, norm));
            ASSERT_TRUE(reducesRight(src, padded, norm));
        }
    };
    for (std::int64_t width = 1; width <= 71; ++width) {
        run(width, 3, width % 3, width % 2, allContents[width % 5], width % 4 < 2 ? Guard::behind : Guard::before);
    }
    for (const Contents contents : allContents) {
        run(1283, 3, 1, 0, contents, Guard::behind);
        run(37, 1, 0, 0, contents, Guard::behind);
    }
}

TEST(GradientColorToGray, EveryTypeAndNormMatchesTheFormula) {
    checkImages<std::uint8_t>();
    checkImages<std::uint16_t>();
    checkImages<float>();
}

TEST(GradientColorToGray, EveryTripleOfBytes) {
    GuardedImage<std::uint8_t> src(3 * 256, 256), dst(256, 256);
    for (int a = 0; a < 256; ++a) {
        for (int b = 0; b < 256; ++b) {
            for (int c = 0; c < 256; ++c) {
                src.set(3 * c, b, static_cast<std::uint8_t>(a));
                src.set(3 * c + 1, b, static_cast<std::uint8_t>(b));
                src.set(3 * c + 2, b, static_cast<std::uint8_t>(c));
            }
        }
        for (const NormKind norm : {NormL1, NormL2}) {
            ASSERT_TRUE(reducesRight(src, dst, norm)) << "first channel " << a;
        }
    }
}

// Triples whose sum of squares lies at the limits between two results r - 1 and r: 3 r (r - 1) and one more.
TEST(GradientColorToGray, SixteenBitRootsAtTheirLimits) {
    Rng rng = makeRng("root limits");
    const auto tripleOf = [&](std::int64_t sum, std::uint16_t *triple) {
        const auto top = std::min<std::int64_t>(65535, static_cast<std::int64_t>(std::sqrt(sum)));
        for (int attempt = 0; attempt < 60; ++attempt) {
            const std::int64_t a = uniform(rng, top / 2, top), rest = sum - a * a;
            std::int64_t c = 65535;
            for (std::int64_t b = 0; b <= 65535 && b * b <= rest; ++b) {
                while (b * b + c * c > rest) {
                    --c;
                }
                if (a * a + b * b + c * c == sum) {
                    triple[0] = static_cast<std::uint16_t>(a);
                    triple[1] = static_cast<std::uint16_t>(b);
                    triple[2] = static_cast<std::uint16_t>(c);
                    return true;
                }
            }
        }
        return false;
    };
    GuardedImage<std::uint16_t> src(3 * 40, 1), dst(40, 1);
    std::int64_t found = 0;
    while (found < 40) {
        const std::int64_t r = found < 20 ? uniform(rng, 60000, 65535) : uniform(rng, 1, 65535);
        std::uint16_t triple[3];
        const std::int64_t above = found % 2;
        if (tripleOf(3 * r * (r - 1) + above, triple)) {
            ASSERT_EQ(plain<std::uint16_t>(NormL2, triple[0], triple[1], triple[2]), r - 1 + above);
            for (int c = 0; c < 3; ++c) {
                src.set(3 * found + c, 0, triple[c]);
            }
            ++found;
        }
    }
    EXPECT_TRUE(reducesRight(src, dst, NormL2));
}

template <class T> struct Call {
    const T *src;
    T *dst;
    std::int32_t srcStep, dstStep;
    RoiSize roi;
    NormKind norm;
};

template <class T> void checkStatuses() {
    GuardedImage<T> src(27, 2), dst(9, 2);
    constexpr auto size = static_cast<std::int32_t>(sizeof(T));
    using C = Call<T>;
    Faults<C> faults;
    faults.nulls(&C::src, &C::dst).empty(&C::roi);
    faults.shortSteps(27 * size, &C::srcStep).shortSteps(9 * size, &C::dstStep);
    faults.values(StatusBadStep, &C::roi, {{0x60000000, 2}});
    faults.unevenSteps(27 * size, size, &C::srcStep).unevenSteps(9 * size, size, &C::dstStep);
    faults.values(StatusBadArgument, &C::norm, {3, -1});
    expectFaultOrder<C>(
        {src.data(), dst.data(), src.step(), dst.step(), dst.roi(), NormL2}, faults,
        [](const C &c) { return Member<T>::call(c.src, c.srcStep, c.dst, c.dstStep, c.roi, c.norm); },
        [&] { return dst.bytes(); });
}

TEST(GradientColorToGray, StatusesInTheOrderOfTheChecks) {
    checkStatuses<std::uint8_t>();
    checkStatuses<std::uint16_t>();
    checkStatuses<float>();
}

} // namespace
