// Deviations of windows against the formulas of each member, on integral images and on arbitrary ones.
#include "plain_integral.h"
#include "support/status_table.h"

#include "rvxcv.h"

#include <cmath>

namespace {

using namespace support;
using namespace stats;

template <class S, class Q, class D> struct Call {
    const S *sum;
    std::int32_t sumStep;
    const Q *sqr;
    std::int32_t sqrStep;
    D *dst;
    std::int32_t dstStep;
    RoiSize roi;
    Rect2i rect;
    std::int32_t scaleFactor;
};

enum class Rule { inDouble, floatMean, scaledInFloat, scaledFloatMean };

template <class S, class Q, class D> struct Member {
    const char *name;
    bool tilted;
    Rule rule;
    StatusCode (*call)(const Call<S, Q, D> &);
};

#define PLAIN(S, TILTED, RULE, NAME)                                                                                   \
    Member<S, double, float> {                                                                                         \
#NAME, TILTED, RULE,                                                                                           \
            [](const auto &c) { return NAME(c.sum, c.sumStep, c.sqr, c.sqrStep, c.dst, c.dstStep, c.roi, c.rect); }    \
    }
#define SCALED(TILTED, RULE, NAME)                                                                                     \
    Member<I, I, I> {                                                                                                  \
#NAME, TILTED, RULE, [](const auto &c) {                                                         \
                         return NAME(c.sum, c.sumStep, c.sqr, c.sqrStep, c.dst, c.dstStep, c.roi, c.rect,              \
                                     c.scaleFactor);                                                                   \
                     }                     \
    }

template <class Check> void eachMember(const Check &check) {
    using I = std::int32_t;
    check(PLAIN(float, false, Rule::inDouble, rvxiRectStdDev_32f_C1R));
    check(PLAIN(I, false, Rule::inDouble, rvxiRectStdDev_32s32f_C1R));
    check(SCALED(false, Rule::scaledInFloat, rvxiRectStdDev_32s_C1RSfs));
    check(PLAIN(float, true, Rule::inDouble, rvxiTiltedRectStdDev_32f_C1R));
    check(PLAIN(I, true, Rule::floatMean, rvxiTiltedRectStdDev_32s32f_C1R));
    check(SCALED(true, Rule::scaledFloatMean, rvxiTiltedRectStdDev_32s_C1RSfs));
}

// ---------------------------------------------------------------------------------------------------- the formulas

template <class T> T windowSum(const GuardedImage<T> &image, bool tilted, Rect2i r, std::int64_t x, std::int64_t y) {
    x += r.x;
    y += r.y;
    const auto at = [&](std::int64_t i, std::int64_t j) {
        return tilted ? image.at(x + i + 1, y + j + 1) : image.at(x + i, y + j);
    };
    const std::int64_t w = r.width, h = r.height;
    const T a = tilted ? at(w - h, w + h) : at(0, 0), b = tilted ? at(-h, h) : at(w, 0);
    const T c = tilted ? at(w, w) : at(0, h), d = tilted ? at(0, 0) : at(w, h);
    return plainAdd(plainSub(plainSub(a, b), c), d);
}

template <class T> T notNegative(T variance) { return variance < 0 ? T{0} : variance; }

std::int32_t scaledRoot(float root, std::int32_t scaleFactor) {
    const auto exponent = static_cast<int>(std::min<std::int64_t>(-std::int64_t{scaleFactor}, 5000));
    const double value = root == 0 ? 0.5 : std::fma(static_cast<double>(root), std::ldexp(1.0, exponent), 0.5);
    return value < 2147483648.0 ? static_cast<std::int32_t>(value) : INT32_MIN;
}

template <class D, class S, class Q>
D deviation(Rule rule, S sum, Q squares, std::int64_t area, std::int32_t scaleFactor) {
    const auto floatArea = static_cast<float>(area);
    const auto doubleArea = static_cast<double>(area);
    if constexpr (std::is_same_v<D, float>) {
        double variance = 0;
        if (rule == Rule::inDouble) {
            const double inverse = 1.0 / doubleArea, mean = static_cast<double>(sum) * inverse;
            const double square = mean * mean;
            variance = squares * inverse - square;
        } else {
            const float mean = static_cast<float>(sum) / floatArea;
            variance = std::fma(-static_cast<double>(mean), static_cast<double>(mean), squares / doubleArea);
        }
        return std::sqrt(notNegative(static_cast<float>(variance)));
    } else {
        const float mean = static_cast<float>(sum) / floatArea, quotient = static_cast<float>(squares) / floatArea;
        if (rule == Rule::scaledInFloat) {
            return scaledRoot(std::sqrt(notNegative(std::fma(-mean, mean, quotient))), scaleFactor);
        }
        const double variance =
            std::fma(-static_cast<double>(mean), static_cast<double>(mean), static_cast<double>(quotient));
        return scaledRoot(std::sqrt(static_cast<float>(notNegative(variance))), scaleFactor);
    }
}

std::int64_t area(bool tilted, Rect2i r) { return (tilted ? 2 : 1) * std::int64_t{r.width} * r.height; }

// ------------------------------------------------------------------------------------------------------- the images

// Images that end with the last element read; `salt` chooses the padded one, the guards and the alignment.
template <class S, class Q, class D> struct Images {
    GuardedImage<S> sum;
    GuardedImage<Q> sqr;
    GuardedImage<D> dst;

    static std::int64_t columns(bool tilted, std::int64_t width, Rect2i r) {
        return width + r.x + r.width + (tilted ? 1 : 0);
    }
    static std::int64_t rows(bool tilted, std::int64_t height, Rect2i r) {
        return height + r.y + r.height + (tilted ? r.width + 1 : 0);
    }
    template <class T> static typename GuardedImage<T>::Layout layout(int salt, int image) {
        return {.padding = salt % 4 == image ? static_cast<std::int64_t>(3 * sizeof(T)) : 0,
                .guard = salt % 2 != 0 ? Guard::before : Guard::behind,
                .skew = salt % 3};
    }

    Images(bool tilted, std::int64_t width, std::int64_t height, Rect2i r, int salt)
        : sum(columns(tilted, width, r), rows(tilted, height, r), layout<S>(salt, 0)),
          sqr(columns(tilted, width, r), rows(tilted, height, r), layout<Q>(salt, 1)),
          dst(width, height, layout<D>(salt, 2)) {}

    // Integral images of a picture (offsets included), as a caller would have them.
    void integrate(bool tilted, const Source &picture) {
        const auto fill = [&](auto &image, bool squared) {
            using T = decltype(image.at(0, 0));
            const auto values =
                tilted ? plainTiltedIntegral<T>(picture, squared, 3) : plainIntegral<T>(picture, squared, 3);
            for (std::int64_t y = 0; y < image.height(); ++y) {
                for (std::int64_t x = 0; x < image.width(); ++x) {
                    image.set(x, y, values.at(x, y));
                }
            }
        };
        fill(sum, false);
        fill(sqr, true);
    }

    Call<S, Q, D> call(Rect2i rect, std::int32_t scaleFactor) {
        return {sum.data(), sum.step(), sqr.data(), sqr.step(), dst.data(), dst.step(), dst.roi(), rect, scaleFactor};
    }
};

template <class S, class Q, class D>
void expectFormula(const Member<S, Q, D> &member, Images<S, Q, D> &images, Rect2i rect, std::int32_t scaleFactor) {
    ASSERT_EQ(member.call(images.call(rect, scaleFactor)), StatusOk) << member.name;
    ASSERT_TRUE(imageIs(images.dst,
                        [&](std::int64_t x, std::int64_t y) {
                            return deviation<D>(member.rule, windowSum(images.sum, member.tilted, rect, x, y),
                                                windowSum(images.sqr, member.tilted, rect, x, y),
                                                area(member.tilted, rect), scaleFactor);
                        }))
        << member.name << " window " << rect.x << ", " << rect.y << " " << rect.width << "x" << rect.height << " scale "
        << scaleFactor;
}

Rect2i randomWindow(Rng &rng) {
    const auto height = static_cast<std::int32_t>(uniform(rng, 1, 6));
    return {height - 1 + static_cast<std::int32_t>(uniform(rng, 0, 3)), static_cast<std::int32_t>(uniform(rng, 0, 2)),
            static_cast<std::int32_t>(uniform(rng, 1, 7)), height};
}

TEST(RectStdDev, EveryWidthOnPictures) {
    eachMember([]<class S, class Q, class D>(const Member<S, Q, D> &member) {
        Rng rng = makeRng("pictures");
        int salt = 0;
        const auto run = [&](std::int64_t width, std::int64_t height) {
            const Rect2i rect = randomWindow(rng);
            Images<S, Q, D> images(member.tilted, width, height, rect, salt);
            // A tilted integral image has a margin of two, an upright one of one; both have room to spare.
            Source picture(images.sum.width() + 1, images.sum.height() + 1);
            picture.fill(rng, allContents[static_cast<std::size_t>(salt) % 4]);
            images.integrate(member.tilted, picture);
            ASSERT_NO_FATAL_FAILURE(expectFormula(member, images, rect, salt % 7 - 4));
            ++salt;
        };
        for (std::int64_t width = 1; width <= 70; ++width) {
            ASSERT_NO_FATAL_FAILURE(run(width, 3)) << width;
        }
        ASSERT_NO_FATAL_FAILURE(run(641, 9));
        ASSERT_NO_FATAL_FAILURE(run(1923, 2));
    });
}

// Sums that wrap, variances below zero, NaN, infinities: the formulas hold for any elements.
TEST(RectStdDev, ArbitraryElements) {
    eachMember([]<class S, class Q, class D>(const Member<S, Q, D> &member) {
        Rng rng = makeRng("arbitrary");
        for (int salt = 0; salt < 60; ++salt) {
            const Rect2i rect = randomWindow(rng);
            Images<S, Q, D> images(member.tilted, 33, 4, rect, salt);
            // Small sums beside large squares: most variances are positive.
            images.sum.fill(rng, salt % 3 == 0 ? Contents::small : allContents[static_cast<std::size_t>(salt) % 5]);
            images.sqr.fill(rng, allContents[static_cast<std::size_t>(salt / 5) % 5]);
            ASSERT_NO_FATAL_FAILURE(expectFormula(member, images, rect, salt % 31 - 15));
        }
    });
}

TEST(RectStdDev, ScaleFactorsToTheExtremes) {
    eachMember([]<class S, class Q, class D>(const Member<S, Q, D> &member) {
        if constexpr (std::is_same_v<D, std::int32_t>) {
            Rng rng = makeRng("scales");
            const Rect2i rect{2, 0, 3, 2};
            for (const std::int32_t scaleFactor :
                 {0, 1, 7, 31, 1022, 1023, 1074, 1100, INT32_MAX, -1, -20, -24, -27, -1023, -1024, -1100, INT32_MIN}) {
                Images<S, Q, D> images(member.tilted, 17, 2, rect, 3);
                Source picture(images.sum.width() + 1, images.sum.height() + 1);
                picture.fill(rng, Contents::random);
                for (std::int64_t x = 0; x < 12; ++x) { // windows without deviation, too
                    for (std::int64_t y = 0; y < picture.height(); ++y) {
                        picture.set(x, y, 9);
                    }
                }
                images.integrate(member.tilted, picture);
                ASSERT_NO_FATAL_FAILURE(expectFormula(member, images, rect, scaleFactor));
                ASSERT_EQ(images.dst.at(0, 0), 0);
            }
        }
    });
}

TEST(RectStdDev, FaultsInTheirOrder) {
    eachMember([]<class S, class Q, class D>(const Member<S, Q, D> &member) {
        const Rect2i rect{3, 2, 4, 4};
        Images<S, Q, D> images(member.tilted, 9, 4, rect, 3);
        using C = Call<S, Q, D>;
        const C good = images.call(rect, 0);
        constexpr std::int64_t sumSize = sizeof(S), sqrSize = sizeof(Q);
        const std::int64_t elements = good.roi.width + rect.x + rect.width;
        Faults<C> faults;
        faults.nulls(&C::sum, &C::sqr, &C::dst).empty(&C::roi);
        faults.values(StatusBadStep, &C::sumStep, {4}).values(StatusBadStep, &C::sqrStep, {8});
        faults.shortSteps(good.roi.width * std::int64_t{sizeof(D)}, &C::dstStep);
        faults.values(StatusBadStep, &C::rect, {{3, 2, INT32_MAX, 4}});
        faults.unevenSteps(good.sumStep, sumSize, &C::sumStep).unevenSteps(good.sqrStep, sqrSize, &C::sqrStep);
        faults.unevenSteps(good.dstStep, sizeof(D), &C::dstStep);
        faults.values(StatusBadSize, &C::rect, {{-1, 2, 4, 4}, {3, -1, 4, 4}, {3, 2, 0, 4}, {3, 2, 4, 0}});
        if (member.tilted) {
            faults.values(StatusBadSize, &C::rect, {{2, 2, 4, 4}}); // the left corner
        }
        expectFaultOrder<C>(good, faults, member.call, [&] { return images.dst.bytes(); });
        C least = good;
        least.sumStep = static_cast<std::int32_t>(elements * sumSize);
        least.sqrStep = static_cast<std::int32_t>(elements * sqrSize);
        EXPECT_EQ(member.call(least), StatusOk);
        for (const auto step : {&C::sumStep, &C::sqrStep}) {
            C tooSmall = least;
            tooSmall.*step -= 8;
            EXPECT_EQ(member.call(tooSmall), StatusBadStep);
        }
    });
}

} // namespace
