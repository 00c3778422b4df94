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

// The float sums of a long row round neither pixel by pixel nor once at the end: groups of eight pixels with an odd sum
// round at each group's last pixel.
TEST(Integral, FloatSumsRoundByGroupsOfEight) {
    constexpr std::int64_t width = 70001;
    Images<float, float> images(false, width, 1, 3);
    float pixelByPixel = 0;
    std::int32_t exact = 0;
    for (std::int64_t x = 0; x < width; ++x) {
        const std::uint8_t pixel = x % 8 == 3 ? 252 : 255;
        images.src.set(x, 0, pixel);
        pixelByPixel += static_cast<float>(pixel);
        exact += pixel;
    }
    ASSERT_EQ(rvxiIntegral_8u32f_C1R(images.src.data(), images.src.step(), images.dst.data(), images.dst.step(),
                                     images.src.roi(), 0.0f),
              StatusOk);
    EXPECT_NE(images.dst.at(width, 1), pixelByPixel);
    EXPECT_NE(images.dst.at(width, 1), static_cast<float>(exact));
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

// Tilted sums are what they are named after: the pixels of a tilted rectangle, also where its corners' triangles reach
// beyond the image.
TEST(Integral, TiltedWindowsHoldTheirPixels) {
    constexpr std::int64_t width = 13, height = 11;
    Rng rng = makeRng("tilted windows");
    Images<std::int32_t, std::int32_t> images(true, width, height, 3);
    images.src.fill(rng, Contents::random);
    ASSERT_EQ(rvxiTiltedIntegral_8u32s_C1R(images.src.data(), images.src.step(), images.dst.data(), images.dst.step(),
                                           images.src.roi(), 99),
              StatusOk);
    // The triangle of element (x, y): two pixels in row y - 2, four in the row above, and so on.
    const auto inTriangle = [](std::int64_t x, std::int64_t y, std::int64_t column, std::int64_t row) {
        const std::int64_t up = y - 2 - row;
        return static_cast<std::int32_t>(up >= 0 && column >= x - 1 - up && column <= x + up);
    };
    for (std::int64_t w = 1; w <= 4; ++w) {
        for (std::int64_t h = 1; h <= 4; ++h) {
            for (std::int64_t y = 1; y + w + h <= height + 1; ++y) {
                for (std::int64_t x = h; x + w <= width; ++x) {
                    std::int32_t want = 0, pixels = 0;
                    for (std::int64_t row = 0; row < height; ++row) {
                        for (std::int64_t column = 0; column < width; ++column) {
                            const std::int32_t inside =
                                inTriangle(x + w - h, y + w + h, column, row) - inTriangle(x - h, y + h, column, row) -
                                inTriangle(x + w, y + w, column, row) + inTriangle(x, y, column, row);
                            want += inside * images.src.at(column, row);
                            pixels += inside;
                        }
                    }
                    const auto at = [&](std::int64_t i, std::int64_t j) { return images.dst.at(i, j); };
                    ASSERT_EQ(pixels, 2 * w * h) << x << ", " << y;
                    ASSERT_EQ(at(x + w - h, y + w + h) - at(x - h, y + h) - at(x + w, y + w) + at(x, y), want);
                }
            }
        }
    }
}

TEST(Integral, ValueIsInEverySum) {
    const std::uint8_t seven = 7, zeros[6] = {};
    std::int32_t square[4];
    ASSERT_EQ(rvxiIntegral_8u32s_C1R(&seven, 1, square, 8, {1, 1}, 0), StatusOk);
    EXPECT_EQ(std::vector<std::int32_t>(square, square + 4), (std::vector<std::int32_t>{0, 0, 0, 7}));

    double all[12];
    std::int32_t sums[12];
    ASSERT_EQ(rvxiSqrIntegral_8u32s64f_C1R(zeros, 3, sums, 16, all, 32, {3, 2}, 5, 0.3), StatusOk);
    for (int i = 0; i < 12; ++i) {
        EXPECT_EQ(sums[i], 5);
        EXPECT_EQ(all[i], 0.3);
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
        std::vector<Fault<C>> faults = {
            {"src", StatusNullPointer, [](C &c) { c.src = nullptr; }},
            {"dst", StatusNullPointer, [](C &c) { c.dst = nullptr; }},
            {"width", StatusBadSize, [](C &c) { c.roi.width = 0; }},
            {"height", StatusBadSize, [](C &c) { c.roi.height = -1; }},
            {"srcStep", StatusBadStep, [](C &c) { c.srcStep = 8; }},
            {"dstStep", StatusBadStep, [](C &c) { c.dstStep = 36; }},
            {"huge width", StatusBadStep, [](C &c) { c.roi.width = INT32_MAX; }},
            {"dst multiple", StatusStepNotMultiple, [&](C &c) { c.dstStep = images.dst.step() + 2; }}};
        if (member.squares) {
            faults.insert(faults.begin(), {"sqr", StatusNullPointer, [](C &c) { c.sqr = nullptr; }});
            faults.insert(faults.end() - 1, {"sqrStep", StatusBadStep, [](C &c) { c.sqrStep = 9 * sizeof(Q); }});
            faults.push_back({"sqr multiple", StatusStepNotMultiple,
                              [&](C &c) { c.sqrStep = images.sqr.step() + static_cast<std::int32_t>(sizeof(Q) / 2); }});
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
    const std::vector<Fault<C>> faults = {{"src", StatusNullPointer, [](C &c) { c.src = nullptr; }},
                                          {"dst", StatusNullPointer, [](C &c) { c.dst = nullptr; }},
                                          {"size", StatusBadSize,
                                           [](C &c) {
                                               c.roi = {5, 0};
                                           }},
                                          {"srcStep", StatusBadStep, [](C &c) { c.srcStep = 19; }},
                                          {"dstStep", StatusBadStep, [](C &c) { c.dstStep = 20; }},
                                          {"src multiple", StatusStepNotMultiple, [](C &c) { c.srcStep = 22; }},
                                          {"dst multiple", StatusStepNotMultiple, [](C &c) { c.dstStep = 25; }}};
    expectFaultOrder<C>(
        {src.data(), src.step(), dst.data(), dst.step(), src.roi()}, faults,
        [](const C &c) { return rvxiIntegral_32f_C1R(c.src, c.srcStep, c.dst, c.dstStep, c.roi); },
        [&] { return dst.bytes(); });
}

} // namespace
