// Extrema and their positions against a plain search.
#include "stats/masked_images.h"

#include <cmath>

namespace {

using namespace support;

struct Extrema {
    double min = 0, max = 0;
    Point2i minIndex{-1, -1}, maxIndex{-1, -1};
};

bool same(const Extrema &a, const Extrema &b) {
    return sameValue(a.min, b.min) && sameValue(a.max, b.max) && a.minIndex.x == b.minIndex.x &&
           a.minIndex.y == b.minIndex.y && a.maxIndex.x == b.maxIndex.x && a.maxIndex.y == b.maxIndex.y;
}

std::ostream &operator<<(std::ostream &out, const Extrema &e) {
    return out << e.min << " at " << e.minIndex.x << "," << e.minIndex.y << " and " << e.max << " at " << e.maxIndex.x
               << "," << e.maxIndex.y;
}

template <class T> Extrema plainExtrema(bool masked, const MaskedScene<T> &scene) {
    Extrema found;
    scene.forSelected(masked, [&](std::int64_t x, std::int64_t y, T a, T) {
        const auto v = static_cast<double>(a);
        const Point2i at{static_cast<std::int32_t>(x), static_cast<std::int32_t>(y)};
        if (std::isnan(v)) {
            return;
        }
        if (found.minIndex.x < 0 || v < found.min) {
            found.min = v;
            found.minIndex = at;
        }
        if (found.maxIndex.x < 0 || v > found.max) {
            found.max = v;
            found.maxIndex = at;
        }
    });
    return found;
}

template <class T> using Member = MaskedMember<T, double, double, Point2i, Point2i>;

// check(member) for all members.
template <class Check> void eachMember(const Check &check) {
    EACH_TYPE((memberOf<wholeC1, double, double, Point2i, Point2i>(check)), rvxiMinMaxIndx, C1R);
    EACH_TYPE((memberOf<maskedC1, double, double, Point2i, Point2i>(check)), rvxiMinMaxIndx, C1MR);
    EACH_TYPE((memberOf<wholeC3, double, double, Point2i, Point2i>(check)), rvxiMinMaxIndx, C3CR);
    EACH_TYPE((memberOf<maskedC3, double, double, Point2i, Point2i>(check)), rvxiMinMaxIndx, C3CMR);
}

template <class T> void checkScene(const Member<T> &member, const MaskedScene<T> &scene) {
    Extrema got{-7, -7, {-7, -7}, {-7, -7}};
    ASSERT_EQ(member.call(scene.call(), &got.min, &got.max, &got.minIndex, &got.maxIndex), StatusOk);
    const Extrema want = plainExtrema(member.shape.masked, scene);
    ASSERT_TRUE(same(want, got)) << "expected " << want << ", got " << got;
}

TEST(MinMaxIndx, EveryMemberMatchesThePlainSearch) {
    eachMember([]<class T>(const Member<T> &member) {
        forScenes<T>(member.name, member.shape.ofThree,
                     [&](const MaskedScene<T> &scene) { checkScene(member, scene); });
    });
}

TEST(MinMaxIndx, StatusesInTheOrderOfTheChecks) {
    eachMember([](const auto &member) { checkMaskedStatuses(member, -5.0, -6.0, Point2i{-5, -5}, Point2i{-6, -6}); });
}

// One value everywhere, that which no search beats among them; then two equal extremes, at every column beside a
// block's edge, in one row and in two.
TEST(MinMaxIndx, TheFirstOfEqualPixels) {
    eachMember([]<class T>(const Member<T> &member) {
        using Limits = std::numeric_limits<T>;
        SCOPED_TRACE(member.name);
        Rng rng = makeRng(member.name);
        const T top = Limits::has_infinity ? Limits::infinity() : Limits::max();
        const T bottom = Limits::has_infinity ? -Limits::infinity() : Limits::lowest();
        MaskedScene<T> scene(rng, 97, 2, 5, member.shape.ofThree);
        const auto set = [&](std::int64_t x, std::int64_t y, T value) {
            scene.a.set(x * scene.channels + scene.channel - 1, y, value);
        };
        const auto fill = [&](T value) {
            for (std::int64_t i = 0; i < 2 * 97; ++i) {
                set(i % 97, i / 97, value);
                scene.mask.set(i % 97, i / 97, static_cast<std::uint8_t>(i % 11 == 0 ? 0 : 1 + i % 128));
            }
        };
        for (const T value : {top, bottom, T{0}, static_cast<T>(-T{0}), Limits::quiet_NaN()}) {
            fill(value);
            ASSERT_NO_FATAL_FAILURE(checkScene(member, scene));
            set(96, 1, 1);
            ASSERT_NO_FATAL_FAILURE(checkScene(member, scene)) << "and a last pixel of 1";
        }
        for (std::int64_t x = 0; x < 97; ++x) {
            fill(3);
            set(x, x % 2, 1);
            set(96 - x, 1, x % 3 == 0 ? T{1} : T{9});
            set((x + 40) % 97, 0, 9);
            ASSERT_NO_FATAL_FAILURE(checkScene(member, scene)) << "column " << x;
        }
        fill(3); // zeros of either sign are equal
        set(50, 0, static_cast<T>(-T{0}));
        set(20, 1, T{0});
        ASSERT_NO_FATAL_FAILURE(checkScene(member, scene));
    });
}

} // namespace
