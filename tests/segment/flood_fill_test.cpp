// Flood fills against a breadth-first search over the values before the fill.
#include "segment/shapes.h"
#include "support/guarded.h"
#include "support/status_table.h"

#include "rvxcv.h"

#include <algorithm>
#include <array>

namespace {

using namespace support;

enum class Rule { plain, range, gradient };

// Every member under one signature: values are pointers, deltas are ignored by plain fills.
template <class T> struct Member {
    const char *name;
    Rule rule;
    bool eight;
    StatusCode (*fill)(T *image, std::int32_t step, RoiSize roi, Point2i seed, const T *newVal, const T *minDelta,
                       const T *maxDelta, ConnectedComponent *region, std::uint8_t *buffer);
};

#define MEMBER(NAME, RULE, EIGHT, T, CALL)                                                                             \
    Member<T> {                                                                                                        \
#NAME, Rule::RULE, EIGHT,                                                                                      \
            [](T * image, std::int32_t step, RoiSize roi, Point2i seed, [[maybe_unused]] const T *n,                   \
               [[maybe_unused]] const T *lo, [[maybe_unused]] const T *hi, ConnectedComponent *region,                 \
               std::uint8_t *buffer) { return NAME CALL; }                                                             \
    }
#define PLAIN(TYPE, CH, T, N)                                                                                          \
    MEMBER(rvxiFloodFill_4Con_##TYPE##_##CH##IR, plain, false, T, (image, step, roi, seed, N, region, buffer)),        \
        MEMBER(rvxiFloodFill_8Con_##TYPE##_##CH##IR, plain, true, T, (image, step, roi, seed, N, region, buffer))
#define RANGE(TYPE, CH, T, ...)                                                                                        \
    MEMBER(rvxiFloodFill_Range4Con_##TYPE##_##CH##IR, range, false, T, (image, step, roi, seed, __VA_ARGS__)),         \
        MEMBER(rvxiFloodFill_Range8Con_##TYPE##_##CH##IR, range, true, T, (image, step, roi, seed, __VA_ARGS__))
#define GRADIENT(TYPE, CH, T, ...)                                                                                     \
    MEMBER(rvxiFloodFill_Grad4Con_##TYPE##_##CH##IR, gradient, false, T,                                               \
           (image, step, roi, seed, __VA_ARGS__, region, buffer)),                                                     \
        MEMBER(rvxiFloodFill_Grad8Con_##TYPE##_##CH##IR, gradient, true, T,                                            \
               (image, step, roi, seed, __VA_ARGS__, region, buffer))
#define ALL_RULES(TYPE, T)                                                                                             \
    PLAIN(TYPE, C1, T, *n), RANGE(TYPE, C1, T, *n, *lo, *hi, region, buffer), GRADIENT(TYPE, C1, T, *lo, *hi, *n)
#define ALL_RULES_C3(TYPE, T)                                                                                          \
    PLAIN(TYPE, C3, T, n), RANGE(TYPE, C3, T, n, lo, hi, region, buffer), GRADIENT(TYPE, C3, T, lo, hi, n)

template <class T, int channels> std::vector<Member<T>> members();
template <> std::vector<Member<std::uint8_t>> members<std::uint8_t, 1>() { return {ALL_RULES(8u, std::uint8_t)}; }
template <> std::vector<Member<std::uint8_t>> members<std::uint8_t, 3>() { return {ALL_RULES_C3(8u, std::uint8_t)}; }
template <> std::vector<Member<std::uint16_t>> members<std::uint16_t, 1>() { return {ALL_RULES(16u, std::uint16_t)}; }
template <> std::vector<Member<std::uint16_t>> members<std::uint16_t, 3>() {
    return {ALL_RULES_C3(16u, std::uint16_t)};
}
template <> std::vector<Member<std::int32_t>> members<std::int32_t, 1>() { return {PLAIN(32s, C1, std::int32_t, *n)}; }
template <> std::vector<Member<float>> members<float, 1>() {
    return {PLAIN(32f, C1, float, *n), RANGE(32f, C1, float, region, buffer, *n, *lo, *hi),
            GRADIENT(32f, C1, float, *lo, *hi, *n)};
}
template <> std::vector<Member<float>> members<float, 3>() { return {ALL_RULES_C3(32f, float)}; }

std::int64_t scratchBytes(Rule rule, std::int64_t w, std::int64_t h) {
    return rule == Rule::gradient ? (w + 2) * (h + 2) + h * 48 * w / 3 + 64 : h * 24 * w / 4 + 32;
}

template <class T> struct Values { std::array<T, 3> newVal, minDelta, maxDelta; };

template <class T> bool within(T p, T q, T minDelta, T maxDelta) {
    if constexpr (std::is_same_v<T, float>) {
        const float low = q - minDelta, high = q + maxDelta;
        return p >= low && p <= high;
    } else {
        return std::int64_t{p} >= std::int64_t{q} - minDelta && std::int64_t{p} <= std::int64_t{q} + maxDelta;
    }
}

// Fills a copy of the image in exactly the memory that it needs, and compares image and record.
template <class T, int channels>
void expectFill(const Member<T> &member, GuardedImage<T> &image, Point2i seed, const Values<T> &values, Guard guard) {
    const std::int64_t width = image.width() / channels, height = image.height();
    const auto element = [&](std::int64_t pixel, int c) {
        return image.at(pixel % width * channels + c, pixel / width);
    };
    const std::int64_t start = seed.y * width + seed.x;
    std::vector<char> reached(static_cast<std::size_t>(width * height));
    std::vector<T> before;
    for (std::int64_t i = 0; i < width * height * channels; ++i) {
        before.push_back(image.at(i % (width * channels), i / (width * channels)));
    }
    const std::int64_t area =
        searchBreadthFirst(width, height, start, member.eight, reached, [&](std::int64_t q, std::int64_t p) {
            bool joins = true;
            for (int c = 0; c < channels; ++c) {
                const auto i = static_cast<std::size_t>(c);
                const T value = element(p, c), from = element(member.rule == Rule::gradient ? q : start, c);
                joins =
                    joins && (member.rule == Rule::plain ? value == from
                                                         : within(value, from, values.minDelta[i], values.maxDelta[i]));
            }
            return joins;
        });
    bool equal = member.rule != Rule::gradient;
    for (int c = 0; c < channels; ++c) {
        equal = equal && element(start, c) == values.newVal[static_cast<std::size_t>(c)];
    }

    GuardedBuffer scratch(scratchBytes(member.rule, width, height), guard);
    scratch.spoil();
    GuardedBuffer output(sizeof(ConnectedComponent));
    output.scribble();
    const std::vector<std::uint8_t> untouched(output.data(), output.data() + output.size());
    // Exactly three elements (or one), in memory that ends behind them.
    std::vector<GuardedBuffer> arguments;
    for (const auto *list : {&values.newVal, &values.minDelta, &values.maxDelta}) {
        arguments.emplace_back(channels * static_cast<std::int64_t>(sizeof(T)));
        std::memcpy(arguments.back().data(), list->data(), channels * sizeof(T));
    }
    const auto argument = [&](std::size_t i) { return reinterpret_cast<const T *>(arguments[i].data()); };
    ASSERT_EQ(member.fill(image.data(), image.step(), image.roi(channels), seed, argument(0), argument(1), argument(2),
                          reinterpret_cast<ConnectedComponent *>(output.data()), scratch.data()),
              StatusOk);
    SCOPED_TRACE(testing::Message() << member.name << " " << width << "x" << height << " seed " << seed.x << ","
                                    << seed.y);
    ASSERT_TRUE(imageIs(image, [&](std::int64_t x, std::int64_t y) {
        const bool painted = !equal && reached[static_cast<std::size_t>(y * width + x / channels)] != 0;
        return painted ? values.newVal[static_cast<std::size_t>(x % channels)]
                       : before[static_cast<std::size_t>(y * width * channels + x)];
    }));
    if (equal) {
        ASSERT_TRUE(std::equal(untouched.begin(), untouched.end(), output.data())) << "the record was written";
        return;
    }
    ConnectedComponent record;
    std::memcpy(&record, output.data(), sizeof record);
    std::int64_t left = width, right = 0, top = height, bottom = 0;
    for (std::int64_t i = 0; i < width * height; ++i) {
        if (reached[static_cast<std::size_t>(i)] != 0) {
            left = std::min(left, i % width);
            right = std::max(right, i % width);
            top = std::min(top, i / width);
            bottom = std::max(bottom, i / width);
        }
    }
    EXPECT_EQ(record.area, static_cast<double>(area));
    EXPECT_EQ(record.rect.x, left);
    EXPECT_EQ(record.rect.y, top);
    EXPECT_EQ(record.rect.width, right - left + 1);
    EXPECT_EQ(record.rect.height, bottom - top + 1);
    for (std::size_t c = 0; c < 3; ++c) {
        ASSERT_TRUE(sameValue(record.value[c], c < channels ? static_cast<double>(values.newVal[c]) : 0.0));
    }
}

template <class T, int channels> GuardedImage<T> makeImage(std::int64_t width, std::int64_t height, int salt) {
    constexpr auto size = static_cast<std::int64_t>(sizeof(T));
    return GuardedImage<T>(width * channels, height,
                           {.padding = size * (salt % 3) * 5,
                            .guard = salt % 2 != 0 ? Guard::before : Guard::behind,
                            .skew = salt % 5 == 4 ? 1 : 0});
}

// Every size up to 9x9, every width beyond two words, some that are large.
template <class Visit> void forSizes(const Visit &visit) {
    int salt = 0;
    for (std::int64_t height = 1; height <= 9; ++height) {
        for (std::int64_t width = 1; width <= 9; ++width) {
            visit(width, height, salt++);
        }
    }
    for (std::int64_t width = 10; width <= 133; ++width) {
        visit(width, 1 + width % 5, salt++);
    }
    for (const std::int64_t width : {1, 2, 3, 4, 5, 31, 64, 65, 200, 321}) {
        visit(width, 67, salt++);
    }
}

Point2i pickSeed(Rng &rng, std::int64_t width, std::int64_t height) {
    return {static_cast<std::int32_t>(uniform(rng, 0, width - 1)),
            static_cast<std::int32_t>(uniform(rng, 0, height - 1))};
}

// Two values that differ in one channel; foreground and background are filled.
template <class T, int channels> void checkShapes() {
    Rng rng = makeRng("fill shapes", sizeof(T) + channels);
    const Values<T> values{{5, 6, 7}, {1, 1, 1}, {1, 1, 1}};
    forSizes([&](std::int64_t width, std::int64_t height, int salt) {
        const bool large = width * height > 100;
        for (const Shape shape : allShapes) {
            if (large && static_cast<int>(shape) % 4 != salt % 4) {
                continue;
            }
            const Picture picture = draw(shape, width, height, rng);
            for (const Member<T> &member : members<T, channels>()) {
                auto image = makeImage<T, channels>(width, height, salt);
                for (std::int64_t i = 0; i < width * height; ++i) {
                    for (int c = 0; c < channels; ++c) {
                        const bool differs = c == salt % channels && !picture.at(i % width, i / width);
                        image.set(i % width * channels + c, i / width, static_cast<T>(differs ? 13 : 10 + c));
                    }
                }
                const Point2i seed = salt % 3 == 0 ? Point2i{0, 0} : pickSeed(rng, width, height);
                ASSERT_NO_FATAL_FAILURE((expectFill<T, channels>(member, image, seed, values, Guard::behind)));
            }
        }
    });
}

// Random values and deltas, equal and different, also such that bounds would wrap; new values inside the range.
template <class T, int channels> void checkContents() {
    Rng rng = makeRng("fill contents", sizeof(T) + channels);
    forSizes([&](std::int64_t width, std::int64_t height, int salt) {
        for (const Contents contents : allContents) {
            for (const Member<T> &member : members<T, channels>()) {
                auto image = makeImage<T, channels>(width, height, salt);
                image.fill(rng, contents);
                const Point2i seed = pickSeed(rng, width, height);
                Values<T> values;
                for (std::size_t c = 0; c < 3; ++c) {
                    const bool whole = contents == Contents::random || contents == Contents::special;
                    const auto share = static_cast<T>(whole ? 2000.0 * std::pow(256.0, int(sizeof(T)) - 2) * .5 : 1.0);
                    const T delta = std::is_same_v<T, float> ? static_cast<T>(whole ? 800 : 1) : share;
                    values.minDelta[c] = salt % 4 == 1 ? T{0} : delta;
                    values.maxDelta[c] = salt % 4 == 2 ? T{0} : delta;
                    if (salt % 7 == 6) {
                        values.maxDelta[c] = std::numeric_limits<T>::max();
                    }
                    values.newVal[c] = salt % 3 == 0
                                           ? image.at(seed.x * channels + static_cast<int>(c) % channels, seed.y)
                                           : randomValue<T>(rng, contents);
                }
                ASSERT_NO_FATAL_FAILURE((expectFill<T, channels>(member, image, seed, values, Guard::before)));
            }
        }
    });
}

TEST(FloodFill, Shapes8u) { checkShapes<std::uint8_t, 1>(); }
TEST(FloodFill, Shapes8uC3) { checkShapes<std::uint8_t, 3>(); }
TEST(FloodFill, Shapes16u) { checkShapes<std::uint16_t, 1>(); }
TEST(FloodFill, Shapes16uC3) { checkShapes<std::uint16_t, 3>(); }
TEST(FloodFill, Shapes32s) { checkShapes<std::int32_t, 1>(); }
TEST(FloodFill, Shapes32f) { checkShapes<float, 1>(); }
TEST(FloodFill, Shapes32fC3) { checkShapes<float, 3>(); }
TEST(FloodFill, Contents8u) { checkContents<std::uint8_t, 1>(); }
TEST(FloodFill, Contents8uC3) { checkContents<std::uint8_t, 3>(); }
TEST(FloodFill, Contents16u) { checkContents<std::uint16_t, 1>(); }
TEST(FloodFill, Contents16uC3) { checkContents<std::uint16_t, 3>(); }
TEST(FloodFill, Contents32s) { checkContents<std::int32_t, 1>(); }
TEST(FloodFill, Contents32f) { checkContents<float, 1>(); }
TEST(FloodFill, Contents32fC3) { checkContents<float, 3>(); }

// A slope that the gradient fill climbs and does not descend, in every direction, also across words.
TEST(FloodFill, GradientsHaveADirection) {
    Rng rng = makeRng("slopes");
    for (const std::int64_t width : {1, 3, 7, 64, 65, 130, 200}) {
        for (int direction = 0; direction < 16; ++direction) {
            for (const Member<std::uint16_t> &member : members<std::uint16_t, 1>()) {
                auto image = makeImage<std::uint16_t, 1>(width, 11, direction);
                for (std::int64_t i = 0; i < width * 11; ++i) {
                    const std::int64_t x = i % width, y = i / width, noise = direction >= 8 ? uniform(rng, 0, 1) : 0;
                    const std::int64_t slope = (direction % 3 - 1) * x + (direction / 3 % 3 - 1) * y;
                    image.set(x, y, static_cast<std::uint16_t>(1000 + slope + noise));
                }
                const Values<std::uint16_t> values{{1000, 0, 0}, {0, 0, 0}, {2, 0, 0}};
                ASSERT_NO_FATAL_FAILURE(
                    (expectFill<std::uint16_t, 1>(member, image, pickSeed(rng, width, 11), values, Guard::behind)));
            }
        }
    }
}

// Larger pictures of every shape, in the types with the most and the fewest lanes.
template <class T, int channels> void checkLarge() {
    Rng rng = makeRng("large", sizeof(T));
    for (const Shape shape : allShapes) {
        const Picture picture = draw(shape, 275, 130, rng);
        for (const Member<T> &member : members<T, channels>()) {
            auto image = makeImage<T, channels>(275, 130, 1);
            for (std::int64_t i = 0; i < image.width() * image.height(); ++i) {
                const std::int64_t x = i % image.width(), y = i / image.width();
                image.set(x, y, static_cast<T>(picture.at(x / channels, y) ? 20 : 40));
            }
            const Values<T> values{{20 + 1, 1, 1}, {3, 3, 3}, {3, 3, 3}};
            ASSERT_NO_FATAL_FAILURE((expectFill<T, channels>(member, image, {0, 0}, values, Guard::behind)));
        }
    }
}
TEST(FloodFill, LargeShapes8u) { checkLarge<std::uint8_t, 1>(); }
TEST(FloodFill, LargeShapes32fC3) { checkLarge<float, 3>(); }

// Beyond four million pixels the engine's scratch is laid out differently.
TEST(FloodFill, HugeImages) {
    Rng rng = makeRng("huge");
    for (const Member<std::uint8_t> &member : members<std::uint8_t, 1>()) {
        if (member.rule != Rule::gradient && member.eight != (member.rule == Rule::plain)) {
            continue; // plain and range fills share an engine
        }
        const Picture picture = draw(member.eight ? Shape::half : Shape::crowded, 4170, 1005, rng);
        auto image = makeImage<std::uint8_t, 1>(4170, 1005, 1);
        for (std::int64_t i = 0; i < 4170 * 1005; ++i) {
            image.set(i % 4170, i / 4170, picture.at(i % 4170, i / 4170) || i == 0 ? 20 : 40);
        }
        const Values<std::uint8_t> values{{21, 0, 0}, {3, 3, 3}, {3, 3, 3}};
        ASSERT_NO_FATAL_FAILURE((expectFill<std::uint8_t, 1>(member, image, {0, 0}, values, Guard::behind)));
    }
}

template <class T> double areaOf(const Member<T> &member, std::vector<T> row, std::int32_t seed, T newVal, T lo, T hi) {
    ConnectedComponent region{};
    std::vector<std::uint8_t> scratch(4096);
    EXPECT_EQ(member.fill(row.data(), static_cast<std::int32_t>(row.size() * sizeof(T)),
                          {static_cast<std::int32_t>(row.size()), 1}, {seed, 0}, &newVal, &lo, &hi, &region,
                          scratch.data()),
              StatusOk);
    return region.area;
}

TEST(FloodFill, FloatsCompareAsIeee) {
    const float nan = std::nanf(""), inf = std::numeric_limits<float>::infinity();
    const auto all = members<float, 1>();
    const Member<float> &plain = all[0], &range = all[2], &gradient = all[4];
    EXPECT_EQ(areaOf(plain, {nan, nan, nan}, 1, 3.0f, 0.0f, 0.0f), 1.0) << "the seed alone";
    EXPECT_EQ(areaOf(plain, {0.0f, -0.0f, 0.0f}, 1, 3.0f, 0.0f, 0.0f), 3.0);
    EXPECT_EQ(areaOf(plain, {0.0f, -0.0f, 0.0f}, 1, 0.0f, 0.0f, 0.0f), 0.0) << "-0 is 0 already";
    EXPECT_EQ(areaOf(range, {1.0f, nan, 1.0f}, 1, 3.0f, inf, inf), 1.0);
    EXPECT_EQ(areaOf(range, {1.0f, 2.0f, nan, 1.0f}, 1, 3.0f, inf, inf), 2.0);
    EXPECT_EQ(areaOf(range, {1.0f, 2.0f, 3.0f}, 1, 9.0f, -1.0f, 1.0f), 2.0) << "the seed is not in its own range";
    EXPECT_EQ(areaOf(gradient, {1.0f, inf, 1.0f}, 1, 3.0f, 1.0f, 1.0f), 1.0);
    EXPECT_EQ(areaOf(gradient, {1.0f, nan, 1.0f}, 0, 3.0f, inf, inf), 1.0);
    // The bound 16777216 + 1 rounds to 16777216.
    EXPECT_EQ(areaOf(range, {16777218.0f, 16777216.0f}, 1, 3.0f, 0.0f, 1.0f), 1.0);
}

// Three-channel steps are checked as those of one channel: rows overlap then, and nothing beyond the last is touched.
TEST(FloodFill, OverlappingRowsOfThreeChannels) {
    for (const Member<std::uint8_t> &member : members<std::uint8_t, 3>()) {
        for (const std::int32_t width : {1, 2, 5, 64, 100}) {
            const std::int32_t height = 7;
            GuardedBuffer pixels((height - 1) * width + 3 * width);
            GuardedBuffer scratch(scratchBytes(member.rule, width, height));
            std::fill(pixels.data(), pixels.data() + pixels.size(), std::uint8_t{9});
            const std::uint8_t newVal[3] = {1, 2, 3}, delta[3] = {255, 255, 255};
            ConnectedComponent region{};
            EXPECT_EQ(member.fill(pixels.data(), width, {width, height}, {0, 0}, newVal, delta, delta, &region,
                                  scratch.data()),
                      StatusOk);
            EXPECT_GE(region.area, width);
            EXPECT_LE(region.area, width * height);
        }
    }
}

template <class T> struct Call {
    T *image;
    std::int32_t step;
    RoiSize roi;
    Point2i seed;
    const T *newVal, *minDelta, *maxDelta;
    ConnectedComponent *region;
    std::uint8_t *buffer;
};

template <class T, int channels> void checkStatuses() {
    using C = Call<T>;
    for (const Member<T> &member : members<T, channels>()) {
        SCOPED_TRACE(member.name);
        auto image = makeImage<T, channels>(9, 6, 0);
        Rng rng = makeRng("fill statuses");
        image.fill(rng, Contents::constant);
        GuardedBuffer output(sizeof(ConnectedComponent)), scratch(scratchBytes(member.rule, 9, 6));
        output.scribble();
        const T newVal[3] = {1, 2, 3}, delta[3] = {1, 1, 1};
        constexpr std::int64_t size = sizeof(T);
        Faults<C> faults;
        faults.nulls(&C::image, &C::region, &C::buffer);
        if (channels == 3) {
            faults.nulls(&C::newVal);
            if (member.rule != Rule::plain) {
                faults.nulls(&C::minDelta, &C::maxDelta);
            }
        }
        faults.empty(&C::roi).shortSteps(9 * size, &C::step); // of one channel
        faults.unevenSteps(9 * size * channels, size, &C::step);
        faults.values(StatusOutOfRange, &C::seed, {{9, 5}, {-1, 5}, {8, 6}, {8, -1}});
        expectFaultOrder<C>(
            {image.data(),
             image.step(),
             image.roi(channels),
             {8, 5},
             newVal,
             delta,
             delta,
             reinterpret_cast<ConnectedComponent *>(output.data()),
             scratch.data()},
            faults,
            [&](const C &c) {
                return member.fill(c.image, c.step, c.roi, c.seed, c.newVal, c.minDelta, c.maxDelta, c.region,
                                   c.buffer);
            },
            [&] {
                std::vector<std::uint8_t> bytes = image.bytes();
                bytes.insert(bytes.end(), output.data(), output.data() + output.size());
                return bytes;
            });
        // Row bytes that wrap in 32 bits.
        ConnectedComponent region{};
        EXPECT_EQ(member.fill(image.data(), 16, {0x7fffffff, 1}, {0, 0}, newVal, delta, delta, &region, scratch.data()),
                  StatusBadStep);
    }
}

TEST(FloodFill, StatusesInTheOrderOfTheChecks) {
    checkStatuses<std::uint8_t, 1>();
    checkStatuses<std::uint8_t, 3>();
    checkStatuses<std::uint16_t, 1>();
    checkStatuses<std::uint16_t, 3>();
    checkStatuses<std::int32_t, 1>();
    checkStatuses<float, 1>();
    checkStatuses<float, 3>();
}

TEST(FloodFill, ScratchSizesAreTruncated) {
    struct Size {
        RoiSize roi;
        std::int64_t members, gradient;
    };
    const Size sizes[] = {{{1, 1}, 38, 89},
                          {{3, 3}, 86, 233},
                          {{640, 480}, 1843232, 5224708},
                          {{65536, 65536}, 32, 262212}, // 6 * 2^32 + 32 and 17 * 2^32 + 4 * 2^16 + 68
                          {{30000, 20000}, -694967264, 1610165476},
                          {{0x7fffffff, 0x7fffffff}, 38, 81}};
    for (const Size &size : sizes) {
        std::int32_t bytes = 0;
        EXPECT_EQ(rvxiFloodFillGetSize(size.roi, &bytes), StatusOk);
        EXPECT_EQ(bytes, static_cast<std::int32_t>(size.members)) << size.roi.width << "x" << size.roi.height;
        EXPECT_EQ(rvxiFloodFillGetSize_Grad(size.roi, &bytes), StatusOk);
        EXPECT_EQ(bytes, static_cast<std::int32_t>(size.gradient)) << size.roi.width << "x" << size.roi.height;
    }
}

} // namespace
