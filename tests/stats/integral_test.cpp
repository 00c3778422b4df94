// Upright and tilted integral images against their plain form.
#include "plain_integral.h"
#include "support/status_table.h"

#include "rvxcv.h"

namespace {

using namespace support;
using namespace stats;

template <class T, class Q> struct Call {
    const std::uint8_t *src;
    std::int32_t srcStep;
    T *dst;
    std::int32_t dstStep;
    Q *sqr;
    std::int32_t sqrStep;
    RoiSize roi;
    T val;
    Q valSqr;
};

// T is the type of the sums, Q that of the squares (of no meaning where there are none).
template <class T, class Q> struct Member {
    const char *name;
    bool tilted, squares;
    StatusCode (*call)(const Call<T, Q> &);
};

#define SUMS(T, TILTED, NAME)                                                                                          \
    Member<T, T> {                                                                                                     \
#NAME, TILTED, false, [](const auto &c) { return NAME(c.src, c.srcStep, c.dst, c.dstStep, c.roi, c.val); }     \
    }
#define SQUARES(T, Q, TILTED, NAME)                                                                                    \
    Member<T, Q> {                                                                                                     \
#NAME, TILTED, true,                                                                                           \
            [](const auto                                                                                              \
                   &c) { return NAME(c.src, c.srcStep, c.dst, c.dstStep, c.sqr, c.sqrStep, c.roi, c.val, c.valSqr); }  \
    }

template <class Check> void eachMember(const Check &check) {
    using I = std::int32_t;
    check(SUMS(I, false, rvxiIntegral_8u32s_C1R));
    check(SUMS(float, false, rvxiIntegral_8u32f_C1R));
    check(SQUARES(I, I, false, rvxiSqrIntegral_8u32s_C1R));
    check(SQUARES(I, double, false, rvxiSqrIntegral_8u32s64f_C1R));
    check(SQUARES(float, double, false, rvxiSqrIntegral_8u32f64f_C1R));
    check(SUMS(I, true, rvxiTiltedIntegral_8u32s_C1R));
    check(SUMS(float, true, rvxiTiltedIntegral_8u32f_C1R));
    check(SQUARES(I, I, true, rvxiTiltedSqrIntegral_8u32s_C1R));
    check(SQUARES(I, double, true, rvxiTiltedSqrIntegral_8u32s64f_C1R));
    check(SQUARES(float, double, true, rvxiTiltedSqrIntegral_8u32f64f_C1R));
}

// Source and outputs of one call; `salt` chooses one image to be padded, the guards, and whether elements are
// misaligned.
template <class T, class Q> struct Images {
    std::int64_t margin;
    Source src;
    GuardedImage<T> dst;
    GuardedImage<Q> sqr;

    Images(bool tilted, std::int64_t width, std::int64_t height, int salt)
        : margin(tilted ? 2 : 1), src(width, height, layout(salt, 0, 5)),
          dst(width + margin, height + margin, layout(salt, 1, 3 * sizeof(T))),
          sqr(width + margin, height + margin, layout(salt, 2, 3 * sizeof(Q))) {}

    struct AnyLayout {
        std::int64_t padding, skew;
        Guard guard;
        template <class Layout> operator Layout() const { return {.padding = padding, .guard = guard, .skew = skew}; }
    };
    static AnyLayout layout(int salt, int image, std::size_t padding) {
        return {salt % 4 == image ? static_cast<std::int64_t>(padding) : 0, salt % 3,
                salt % 2 != 0 ? Guard::before : Guard::behind};
    }

    Call<T, Q> call(T val, Q valSqr) {
        return {src.data(), src.step(), dst.data(), dst.step(), sqr.data(), sqr.step(), src.roi(), val, valSqr};
    }
};

template <class T, class Q> void expectPlain(const Member<T, Q> &member, Images<T, Q> &images, T val, Q valSqr) {
    ASSERT_EQ(member.call(images.call(val, valSqr)), StatusOk) << member.name;
    const auto plain = [&](bool squared, auto value) {
        return member.tilted ? plainTiltedIntegral(images.src, squared, value)
                             : plainIntegral(images.src, squared, value);
    };
    const auto sums = plain(false, val);
    ASSERT_TRUE(imageIs(images.dst, [&](auto x, auto y) { return sums.at(x, y); })) << member.name << " sums";
    if (member.squares) {
        const auto squares = plain(true, valSqr);
        ASSERT_TRUE(imageIs(images.sqr, [&](auto x, auto y) { return squares.at(x, y); })) << member.name << " squares";
    }
}

// Offsets at which additions of sums round, or wrap.
template <class T> T offset(int salt) {
    if constexpr (std::is_floating_point_v<T>) {
        constexpr T values[] = {0, T(0.1), T(3e7), T(-1e15)};
        return values[salt % 4];
    } else {
        constexpr T values[] = {0, 5, std::numeric_limits<T>::max() - 1000, -7};
        return values[salt % 4];
    }
}

TEST(Integral, EveryWidth) {
    eachMember([]<class T, class Q>(const Member<T, Q> &member) {
        Rng rng = makeRng("integral");
        int salt = 0;
        const auto run = [&](std::int64_t width, std::int64_t height, Contents contents) {
            Images<T, Q> images(member.tilted, width, height, salt);
            images.src.fill(rng, contents);
            ASSERT_NO_FATAL_FAILURE(expectPlain(member, images, offset<T>(salt), offset<Q>(salt / 4)));
            ++salt;
        };
        for (std::int64_t width = 1; width <= 70; ++width) {
            for (const std::int64_t height : {1, 2, 5}) {
                ASSERT_NO_FATAL_FAILURE(run(width, height, Contents::random)) << width << "x" << height;
            }
        }
        for (const std::int64_t width : {257, 641, 1923}) {
            ASSERT_NO_FATAL_FAILURE(run(width, 37, Contents::nearMax));
        }
    });
}

// Sums of bright rows: of pixels past 2^24, where floats begin to round, of squares past 2^32.
TEST(Integral, LongBrightRows) {
    eachMember([]<class T, class Q>(const Member<T, Q> &member) {
        Rng rng = makeRng("bright");
        Images<T, Q> images(member.tilted, 132083, 3, 3);
        images.src.fill(rng, Contents::random);
        for (std::int64_t y = 0; y < 2; ++y) {
            for (std::int64_t x = 0; x < images.src.width(); ++x) {
                images.src.set(x, y, y == 0 || rng() % 64 != 0 ? 255 : 254);
            }
        }
        ASSERT_NO_FATAL_FAILURE(expectPlain(member, images, offset<T>(1), offset<Q>(1)));
    });
}

TEST(Integral, FloatPixelsAddFromTheLeft) {
    Rng rng = makeRng("float pixels");
    const auto run = [&](std::int64_t width, std::int64_t height, int salt) {
        const std::int64_t skew = salt % 4;
        GuardedImage<float> src(width, height, {.padding = salt % 3 == 0 ? 12 : 0, .skew = skew});
        GuardedImage<float> dst(
            width + 1, height + 1,
            {.padding = salt % 3 == 1 ? 20 : 0, .guard = salt % 2 != 0 ? Guard::before : Guard::behind, .skew = skew});
        src.fill(rng, allContents[static_cast<std::size_t>(salt) % std::size(allContents)]);
        ASSERT_EQ(rvxiIntegral_32f_C1R(src.data(), src.step(), dst.data(), dst.step(), src.roi()), StatusOk);
        Plain<float> want(width + 1, height + 1, 0.0f);
        for (std::int64_t y = 0; y < height; ++y) {
            float running = 0;
            for (std::int64_t x = 0; x < width; ++x) {
                running += src.at(x, y);
                want.at(x + 1, y + 1) = want.at(x + 1, y) + running;
            }
        }
        ASSERT_TRUE(imageIs(dst, [&](auto x, auto y) { return want.at(x, y); }));
    };
    int salt = 0;
    for (std::int64_t width = 1; width <= 34; ++width) {
        for (const std::int64_t height : {1, 2, 7, 8, 9}) {
            ASSERT_NO_FATAL_FAILURE(run(width, height, salt++)) << width << "x" << height;
        }
    }
    for (std::int64_t height = 1; height <= 26; ++height) {
        ASSERT_NO_FATAL_FAILURE(run(101, height, salt++));
    }
}

// The mixed float members take their float offset in double precision and round it.
TEST(Integral, DoubleOffsetOfFloatSumsIsRounded) {
    const std::uint8_t pixel = 1;
    float sums[9];
    double squares[9];
    ASSERT_EQ(rvxiSqrIntegral_8u32f64f_C1R(&pixel, 1, sums, 8, squares, 16, {1, 1}, 0.1, 0.2), StatusOk);
    EXPECT_EQ(sums[0], 0.1f);
    EXPECT_EQ(sums[3], 0.1f + 1.0f);
    ASSERT_EQ(rvxiTiltedSqrIntegral_8u32f64f_C1R(&pixel, 1, sums, 12, squares, 24, {1, 1}, 0.1, 0.2), StatusOk);
    EXPECT_EQ(sums[5], 0.1f);
    EXPECT_EQ(squares[5], 0.2);
}

TEST(Integral, FaultsInTheirOrder) {
    eachMember([]<class T, class Q>(const Member<T, Q> &member) {
        Images<T, Q> images(member.tilted, 9, 4, 3);
        using C = Call<T, Q>;
        constexpr std::int64_t size = sizeof(T), sqrSize = sizeof(Q);
        const std::int64_t elements = 9 + images.margin;
        Faults<C> faults;
        faults.nulls(&C::src, &C::dst);
        if (member.squares) {
            faults.nulls(&C::sqr);
        }
        faults.empty(&C::roi).shortSteps(9, &C::srcStep).shortSteps(elements * size, &C::dstStep);
        if (member.squares) {
            faults.shortSteps(elements * sqrSize, &C::sqrStep);
        }
        faults.values(StatusBadStep, &C::roi, {{INT32_MAX, 4}}).unevenSteps(elements * size, size, &C::dstStep);
        if (member.squares) {
            faults.unevenSteps(elements * sqrSize, sqrSize, &C::sqrStep);
        }
        expectFaultOrder<C>(images.call(1, 1), faults, member.call, [&] {
            auto bytes = images.dst.bytes();
            const auto more = images.sqr.bytes();
            bytes.insert(bytes.end(), more.begin(), more.end());
            return bytes;
        });
    });
}

TEST(Integral, FaultsOfFloatPixels) {
    struct C {
        const float *src;
        std::int32_t srcStep;
        float *dst;
        std::int32_t dstStep;
        RoiSize roi;
    };
    GuardedImage<float> src(5, 3), dst(6, 4);
    Faults<C> faults;
    faults.nulls(&C::src, &C::dst).empty(&C::roi).shortSteps(20, &C::srcStep).shortSteps(24, &C::dstStep);
    faults.unevenSteps(20, 4, &C::srcStep).unevenSteps(24, 4, &C::dstStep);
    expectFaultOrder<C>(
        {src.data(), src.step(), dst.data(), dst.step(), src.roi()}, faults,
        [](const C &c) { return rvxiIntegral_32f_C1R(c.src, c.srcStep, c.dst, c.dstStep, c.roi); },
        [&] { return dst.bytes(); });
}

} // namespace
