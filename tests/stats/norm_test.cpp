// Norms under masks against the plain sums.
#include "stats/masked_images.h"

#include <cmath>

namespace {

using namespace support;

enum class Norm { inf, l1, l2 };
enum class Of { image, difference, relative };

// Norm of value(pixel of a, pixel of b) over the selected pixels.
template <class T, class Value> double plainNorm(Norm norm, const MaskedScene<T> &scene, const Value &value) {
    PlainLanes lanes;
    std::uint64_t sum = 0;
    double largest = 0;
    scene.forSelected(true, [&](std::int64_t x, std::int64_t, T a, T b) {
        const auto v = value(a, b); // float, or an exact integer
        largest = std::fabs(static_cast<double>(v)) > largest ? std::fabs(static_cast<double>(v)) : largest;
        if constexpr (std::is_same_v<T, float>) {
            const auto wide = static_cast<double>(v);
            lanes.lane[x % 16] += norm == Norm::l1 ? std::fabs(wide) : wide * wide;
        } else {
            sum += static_cast<std::uint64_t>(norm == Norm::l1 ? std::abs(v) : v * v);
        }
    });
    const double total = std::is_same_v<T, float> ? lanes.total() : static_cast<double>(sum);
    return norm == Norm::inf ? largest : norm == Norm::l1 ? total : std::sqrt(total);
}

template <class T> double plainNorm(Norm norm, Of what, const MaskedScene<T> &scene) {
    using Exact = std::conditional_t<std::is_same_v<T, float>, float, std::int64_t>;
    const auto difference = [](T a, T b) { return static_cast<Exact>(Exact{a} - Exact{b}); };
    if (what == Of::image) {
        return plainNorm(norm, scene, [](T a, T) { return Exact{a}; });
    }
    const double d = plainNorm(norm, scene, difference);
    if (what == Of::difference) {
        return d;
    }
    const double r = plainNorm(norm, scene, [](T, T b) { return Exact{b}; });
    return d == 0 && r == 0 ? 0 : d / r;
}

// check(member, norm, what) for all 72 members.
template <class Check> void eachMember(const Check &check) {
    const auto row = [&](Norm norm, Of what) { return [=, &check](const auto &member) { check(member, norm, what); }; };
#define EACH_NORM(OPERATION, C1, C3, WHAT)                                                                             \
    EACH_TYPE((memberOf<C1, double>(row(Norm::inf, WHAT))), OPERATION##_Inf, C1MR);                                    \
    EACH_TYPE((memberOf<C1, double>(row(Norm::l1, WHAT))), OPERATION##_L1, C1MR);                                      \
    EACH_TYPE((memberOf<C1, double>(row(Norm::l2, WHAT))), OPERATION##_L2, C1MR);                                      \
    EACH_TYPE((memberOf<C3, double>(row(Norm::inf, WHAT))), OPERATION##_Inf, C3CMR);                                   \
    EACH_TYPE((memberOf<C3, double>(row(Norm::l1, WHAT))), OPERATION##_L1, C3CMR);                                     \
    EACH_TYPE((memberOf<C3, double>(row(Norm::l2, WHAT))), OPERATION##_L2, C3CMR)
    EACH_NORM(rvxiNorm, maskedC1, maskedC3, Of::image);
    EACH_NORM(rvxiNormDiff, pairC1, pairC3, Of::difference);
    EACH_NORM(rvxiNormRel, pairC1, pairC3, Of::relative);
}

TEST(Norm, EveryMemberMatchesThePlainSums) {
    eachMember([]<class T>(const MaskedMember<T, double> &member, Norm norm, Of what) {
        forScenes<T>(member.name, member.shape.ofThree, [&](const MaskedScene<T> &scene) {
            double got = -1;
            ASSERT_EQ(member.call(scene.call(), &got), StatusOk);
            const double want = plainNorm(norm, what, scene);
            ASSERT_TRUE(sameValue(want, got)) << "expected " << want << ", got " << got;
        });
    });
}

TEST(Norm, StatusesInTheOrderOfTheChecks) {
    eachMember([](const auto &member, Norm, Of) { checkMaskedStatuses(member, -5.0); });
}

TEST(Norm, KnownImages) {
    double norm;
    const std::vector<std::uint8_t> white(35, 255), all(35, 1), none(35, 0);
    ASSERT_EQ(rvxiNorm_Inf_8u_C1MR(white.data(), 7, all.data(), 7, {7, 5}, &norm), StatusOk);
    EXPECT_EQ(norm, 255);
    ASSERT_EQ(rvxiNorm_L1_8u_C1MR(white.data(), 7, all.data(), 7, {7, 5}, &norm), StatusOk);
    EXPECT_EQ(norm, 8925);
    ASSERT_EQ(rvxiNorm_L2_8u_C1MR(white.data(), 7, all.data(), 7, {7, 5}, &norm), StatusOk);
    EXPECT_EQ(norm, 255 * std::sqrt(35.0));
    ASSERT_EQ(rvxiNorm_L2_8u_C1MR(white.data(), 7, none.data(), 7, {7, 5}, &norm), StatusOk);
    EXPECT_EQ(norm, 0);
    const std::int8_t lowest = -128, highest = 127;
    ASSERT_EQ(rvxiNorm_Inf_8s_C1MR(&lowest, 1, all.data(), 1, {1, 1}, &norm), StatusOk);
    EXPECT_EQ(norm, 128);
    ASSERT_EQ(rvxiNormDiff_Inf_8s_C1MR(&lowest, 1, &highest, 1, all.data(), 1, {1, 1}, &norm), StatusOk);
    EXPECT_EQ(norm, 255);
}

TEST(Norm, RelativeToNothing) {
    const float one = 1, zero = 0, nan = std::nanf("");
    const std::uint8_t on = 1, off = 0;
    const auto relative = [](const float &a, const float &b, const std::uint8_t &mask) {
        double norm = -1;
        EXPECT_EQ(rvxiNormRel_L2_32f_C1MR(&a, 4, &b, 4, &mask, 1, {1, 1}, &norm), StatusOk);
        return norm;
    };
    EXPECT_EQ(relative(one, one, on), 0);
    EXPECT_EQ(relative(one, zero, on), std::numeric_limits<double>::infinity());
    EXPECT_EQ(relative(zero, zero, on), 0);
    EXPECT_EQ(relative(nan, one, off), 0);
    EXPECT_TRUE(std::isnan(relative(nan, zero, on)));
}

// Rows long enough to fill lanes of 32 bits within one row, and again in the next one.
template <class T, class F> void checkLongRows(const F &l1, const F &l2, T value) {
    const std::int32_t width = 1200007;
    const double square = static_cast<double>(value) * static_cast<double>(value);
    const std::vector<T> image(2 * std::size_t{width}, value);
    const std::vector<std::uint8_t> mask(2 * std::size_t{width}, 9);
    const auto step = static_cast<std::int32_t>(width * sizeof(T));
    for (const std::int32_t rows : {1, 2}) {
        double norm;
        ASSERT_EQ(l1(image.data(), step, mask.data(), width, {width, rows}, &norm), StatusOk);
        EXPECT_EQ(norm, static_cast<double>(value) * width * rows);
        ASSERT_EQ(l2(image.data(), step, mask.data(), width, {width, rows}, &norm), StatusOk);
        EXPECT_EQ(norm, std::sqrt(square * width * rows));
    }
}

TEST(Norm, LongRowsFillNoLane) {
    checkLongRows<std::uint8_t>(rvxiNorm_L1_8u_C1MR, rvxiNorm_L2_8u_C1MR, 255);
    checkLongRows<std::uint16_t>(rvxiNorm_L1_16u_C1MR, rvxiNorm_L2_16u_C1MR, 65535);
    checkLongRows<std::uint16_t>(rvxiNorm_L1_16u_C1MR, rvxiNorm_L2_16u_C1MR, 1);
}

} // namespace
