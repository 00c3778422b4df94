// Means and deviations against the plain formulas.
#include "stats/masked_images.h"

#include <cmath>

namespace {

using namespace support;

struct Moments {
    double mean = 0, stdDev = 0;
};

template <class T> Moments plainMoments(bool masked, const MaskedScene<T> &scene) {
    __extension__ using Wide = unsigned __int128;
    std::int64_t n = 0, sum = 0;
    std::uint64_t squares = 0;
    double pivot = 0;
    PlainLanes differences, squaresOfDifferences;
    scene.forSelected(masked, [&](std::int64_t x, std::int64_t, T a, T) {
        pivot = n++ == 0 ? static_cast<double>(a) : pivot;
        if constexpr (std::is_same_v<T, float>) {
            const double d = static_cast<double>(a) - pivot;
            differences.lane[x % 16] += d;
            squaresOfDifferences.lane[x % 16] = std::fma(d, d, squaresOfDifferences.lane[x % 16]);
        } else {
            sum += a;
            squares += static_cast<std::uint64_t>(std::int64_t{a} * a);
        }
    });
    if (n == 0) {
        return {};
    }
    const auto count = static_cast<double>(n);
    if constexpr (std::is_same_v<T, float>) {
        const double d = differences.total(), e = squaresOfDifferences.total(), q = d / count, product = d * q;
        const double variance = (e - product) / count;
        return {pivot + q, std::sqrt(variance < 0 ? 0 : variance)};
    }
    const auto magnitude = static_cast<std::uint64_t>(std::abs(sum));
    const Wide variance = Wide(static_cast<std::uint64_t>(n)) * squares - Wide(magnitude) * magnitude;
    return {static_cast<double>(sum) / count, std::sqrt(static_cast<double>(variance)) / count};
}

// check(member) for the members that give a mean alone, and for the others.
template <class Check> void eachMean(const Check &check) {
    EACH_TYPE((memberOf<maskedC1, double>(check)), rvxiMean, C1MR);
    EACH_TYPE((memberOf<maskedC3, double>(check)), rvxiMean, C3CMR);
}
template <class Check> void eachDeviation(const Check &check) {
    EACH_TYPE((memberOf<wholeC1, double, double>(check)), rvxiMean_StdDev, C1R);
    EACH_TYPE((memberOf<maskedC1, double, double>(check)), rvxiMean_StdDev, C1MR);
    EACH_TYPE((memberOf<wholeC3, double, double>(check)), rvxiMean_StdDev, C3CR);
    EACH_TYPE((memberOf<maskedC3, double, double>(check)), rvxiMean_StdDev, C3CMR);
}

void expectMoments(const Moments &want, double mean, double stdDev) {
    ASSERT_TRUE(sameValue(want.mean, mean)) << "expected mean " << want.mean << ", got " << mean;
    ASSERT_TRUE(sameValue(want.stdDev, stdDev)) << "expected deviation " << want.stdDev << ", got " << stdDev;
}

TEST(Mean, EveryMemberMatchesThePlainFormulas) {
    eachMean([]<class T>(const MaskedMember<T, double> &member) {
        forScenes<T>(member.name, member.shape.ofThree, [&](const MaskedScene<T> &scene) {
            double mean = -1;
            ASSERT_EQ(member.call(scene.call(), &mean), StatusOk);
            const Moments want = plainMoments(true, scene);
            ASSERT_NO_FATAL_FAILURE(expectMoments(want, mean, want.stdDev));
        });
    });
    eachDeviation([]<class T>(const MaskedMember<T, double, double> &member) {
        forScenes<T>(member.name, member.shape.ofThree, [&](const MaskedScene<T> &scene) {
            double mean = -1, stdDev = -1;
            ASSERT_EQ(member.call(scene.call(), &mean, &stdDev), StatusOk);
            ASSERT_NO_FATAL_FAILURE(expectMoments(plainMoments(member.shape.masked, scene), mean, stdDev));
        });
    });
}

TEST(Mean, StatusesInTheOrderOfTheChecks) {
    eachMean([](const auto &member) { checkMaskedStatuses(member, -5.0); });
    eachDeviation([](const auto &member) { checkMaskedStatuses(member, -5.0, -6.0); });
}

template <class T> Moments momentsOf(const std::vector<T> &row) {
    Moments result{-1, -1};
    const RoiSize roi{static_cast<std::int32_t>(row.size()), 1};
    const auto step = static_cast<std::int32_t>(row.size() * sizeof(T));
    if constexpr (std::is_same_v<T, float>) {
        EXPECT_EQ(rvxiMean_StdDev_32f_C1R(row.data(), step, roi, &result.mean, &result.stdDev), StatusOk);
    } else if constexpr (std::is_same_v<T, std::uint16_t>) {
        EXPECT_EQ(rvxiMean_StdDev_16u_C1R(row.data(), step, roi, &result.mean, &result.stdDev), StatusOk);
    } else {
        EXPECT_EQ(rvxiMean_StdDev_8u_C1R(row.data(), step, roi, &result.mean, &result.stdDev), StatusOk);
    }
    return result;
}

TEST(Mean, KnownRows) {
    std::vector<std::uint8_t> ramp(256);
    for (std::size_t i = 0; i < 256; ++i) {
        ramp[i] = static_cast<std::uint8_t>(i);
    }
    const Moments ofRamp = momentsOf(ramp), constant = momentsOf(std::vector<float>(100, 0.1f));
    EXPECT_EQ(ofRamp.mean, 127.5);
    EXPECT_EQ(ofRamp.stdDev, std::sqrt(5461.25));
    EXPECT_EQ(constant.mean, static_cast<double>(0.1f));
    EXPECT_EQ(constant.stdDev, 0);
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(momentsOf<float>({1, infinity}).mean, infinity);
    EXPECT_TRUE(std::isnan(momentsOf<float>({1, infinity}).stdDev));
    EXPECT_TRUE(std::isnan(momentsOf<float>({infinity, 1}).mean));
}

// The pivot keeps the cancellation bounded: a small deviation on a large mean, against sums in 128-bit floats.
TEST(Mean, SmallDeviationOnALargeMean) {
    Rng rng = makeRng("deviation");
    std::vector<float> row(100003);
    __float128 sum = 0, squares = 0;
    for (float &v : row) {
        v = 1e6f + static_cast<float>(uniform(rng, -1000, 1000)) * 1e-4f;
        sum += v;
        squares += static_cast<__float128>(v) * v;
    }
    const auto n = static_cast<__float128>(row.size());
    const double want = std::sqrt(static_cast<double>((squares - sum * sum / n) / n));
    EXPECT_NEAR(momentsOf(row).stdDev / want, 1, 1e-9);
}

// n * Q - S * S beyond 64 bits, and lanes of 32 bits that fill within a row.
TEST(Mean, LargeImages) {
    std::vector<std::uint8_t> bytes(36000000, 0);
    std::fill(bytes.begin() + 18000000, bytes.end(), std::uint8_t{255});
    EXPECT_EQ(momentsOf(bytes).mean, 127.5);
    EXPECT_EQ(momentsOf(bytes).stdDev, 127.5);
    std::vector<std::uint16_t> words(1200006, 65535);
    EXPECT_EQ(momentsOf(words).mean, 65535);
    EXPECT_EQ(momentsOf(words).stdDev, 0);
    std::fill(words.begin(), words.begin() + 600003, std::uint16_t{0});
    EXPECT_EQ(momentsOf(words).mean, 32767.5);
    EXPECT_EQ(momentsOf(words).stdDev, 32767.5);
}

} // namespace
