// FAST corners against their definition, pixel by pixel; images, lists and scratch end at unmapped pages.
#include "support/guarded.h"
#include "support/status_table.h"

#include "rvxcv.h"

#include <algorithm>

namespace {

using namespace support;
using Image8u = GuardedImage<std::uint8_t>;

constexpr Point2i circle1[] = {{0, -1}, {1, -1}, {1, 0}, {1, 1}, {0, 1}, {-1, 1}, {-1, 0}, {-1, -1}};
constexpr Point2i circle2[] = {{0, -2}, {1, -2}, {2, -1}, {2, 0},  {2, 1},   {1, 2},
                               {0, 2},  {-1, 2}, {-2, 1}, {-2, 0}, {-2, -1}, {-1, -2}};
constexpr Point2i circle3[] = {{0, -3}, {1, -3}, {2, -2}, {3, -1}, {3, 0},  {3, 1},   {2, 2},   {1, 3},
                               {0, 3},  {-1, 3}, {-2, 2}, {-3, 1}, {-3, 0}, {-3, -1}, {-2, -2}, {-1, -3}};
constexpr const Point2i *circles[] = {nullptr, circle1, circle2, circle3};

struct Detector {
    std::int32_t radius, arc, threshold, flags;
    std::int32_t points() const { return 4 + 4 * radius; }
};

int plainScore(const Image8u &image, std::int64_t x, std::int64_t y, const Detector &detector) {
    const std::int64_t r = detector.radius;
    int score = 0;
    if (x < r || y < r || x >= image.width() - r || y >= image.height() - r) {
        return 0;
    }
    for (std::int32_t first = 0; first < detector.points(); ++first) {
        int brighter = 255, darker = 255;
        for (std::int32_t i = first; i < first + detector.arc; ++i) {
            const Point2i d = circles[r][i % detector.points()];
            const int difference = image.at(x + d.x, y + d.y) - image.at(x, y);
            brighter = std::min(brighter, difference);
            darker = std::min(darker, -difference);
        }
        score = std::max({score, brighter, darker});
    }
    return score;
}

std::vector<std::uint8_t> plainMap(const Image8u &image, const Detector &detector) {
    const std::int64_t w = image.width(), h = image.height();
    std::vector<int> scores;
    for (std::int64_t i = 0; i < w * h; ++i) {
        const int score = plainScore(image, i % w, i / w, detector);
        scores.push_back(score > detector.threshold ? score : 0);
    }
    const auto at = [&](std::int64_t x, std::int64_t y) {
        return x < 0 || y < 0 || x >= w || y >= h ? 0 : scores[static_cast<std::size_t>(y * w + x)];
    };
    std::vector<std::uint8_t> map;
    for (std::int64_t i = 0; i < w * h; ++i) {
        const std::int64_t x = i % w, y = i / w;
        const int s = at(x, y);
        const int before = std::max({at(x - 1, y - 1), at(x, y - 1), at(x + 1, y - 1), at(x - 1, y)});
        const int behind = std::max({at(x + 1, y), at(x - 1, y + 1), at(x, y + 1), at(x + 1, y + 1)});
        const bool stays = (detector.flags & FastNonMax) == 0 || (s > before && s >= behind);
        map.push_back(static_cast<std::uint8_t>(s == 0 || !stays ? 0 : (detector.flags & FastScore) != 0 ? s : 255));
    }
    return map;
}

FastNSpec specOf(const Detector &d) {
    FastNSpec spec;
    EXPECT_EQ(rvxiFastNInit_8u_C1R(d.radius, d.arc, d.threshold, d.flags, &spec), StatusOk);
    return spec;
}

// The scratch begins at any address.
void expectMap(const Image8u &image, const Detector &detector, std::int64_t padding = 0) {
    Image8u dst(image.width(), image.height(), {.padding = padding, .guard = image.guard()});
    const FastNSpec spec = specOf(detector);
    const std::int64_t size = 7 * ((image.width() + 2 + 31) / 32 * 32) + 64, more = image.width() % 32;
    GuardedBuffer scratch(size + more);
    scratch.spoil();
    const std::vector<std::uint8_t> behind(scratch.data() + size, scratch.data() + size + more);
    std::int32_t count = -1;
    ASSERT_EQ(rvxiFastN_8u_C1R(image.data(), image.step(), dst.data(), dst.step(), image.roi(), &count, &spec,
                               scratch.data()),
              StatusOk);
    ASSERT_TRUE(std::equal(behind.begin(), behind.end(), scratch.data() + size)) << "written behind the scratch";
    const std::vector<std::uint8_t> want = plainMap(image, detector);
    ASSERT_TRUE(imageIs(dst, [&](auto x, auto y) { return want[static_cast<std::size_t>(y * image.width() + x)]; }))
        << detector.radius << " " << detector.arc << " " << detector.threshold << " " << detector.flags;
    ASSERT_EQ(count, std::count_if(want.begin(), want.end(), [](auto v) { return v != 0; }));
}

// Mostly flat, with marks of both signs: every arc finds corners, many of them next to each other. Then runs of just
// the arc, or one less, whose contrast is the threshold or one more: each decides alone, whichever its first point is.
void fillMarked(Image8u &image, Rng &rng, std::int64_t oneIn, const Detector &detector) {
    const std::int64_t w = image.width(), h = image.height(), r = detector.radius;
    for (std::int64_t i = 0; i < w * h; ++i) {
        const std::int64_t v = uniform(rng, 1, oneIn) == 1 ? uniform(rng, 0, 255) : uniform(rng, 100, 103);
        image.set(i % w, i / w, static_cast<std::uint8_t>(v));
    }
    for (int run = 0; run < 2 && w > 2 * r && h > 2 * r; ++run) {
        const std::int64_t x = uniform(rng, r, w - r - 1), y = uniform(rng, r, h - r - 1);
        const std::int64_t flat = uniform(rng, 0, 1) * 255;
        const std::int64_t contrast = std::min<std::int64_t>(detector.threshold + uniform(rng, 0, 1), 255);
        const std::int64_t first = uniform(rng, 0, 15), end = first + detector.arc - uniform(rng, 0, 3) / 3;
        for (std::int64_t i = first; i < first + detector.points(); ++i) {
            const Point2i d = circles[r][i % detector.points()];
            image.set(x + d.x, y + d.y, static_cast<std::uint8_t>(i < end ? std::abs(flat - contrast) : flat));
        }
        image.set(x, y, static_cast<std::uint8_t>(flat));
    }
}

TEST(FastCorners, EveryWidthCircleAndFlag) {
    Rng rng = makeRng("fast widths");
    constexpr std::int32_t thresholds[] = {0, 3, 40, 1, 254, 255, 130, 1 << 30};
    int salt = 0;
    for (std::int32_t radius = 1; radius <= 3; ++radius) {
        for (std::int32_t arc = 2 * radius + 3; arc <= 4 + 4 * radius; ++arc) {
            for (std::int64_t width = 1; width <= 75; ++width, ++salt) {
                Image8u image(width, uniform(rng, 1, 13),
                              {.padding = salt % 3 * 5, .guard = salt % 2 != 0 ? Guard::before : Guard::behind});
                const std::int32_t flags = salt % 3 == 2 ? 3 : salt % 3;
                const Detector detector{radius, arc, thresholds[uniform(rng, 0, 7)], flags};
                if (salt % 4 == 3) {
                    image.fill(rng, allContents[salt / 4 % 3]);
                } else {
                    fillMarked(image, rng, 5 + salt % 9, detector);
                }
                ASSERT_NO_FATAL_FAILURE(expectMap(image, detector, salt % 5));
            }
        }
    }
    for (const std::int64_t width : {513, 1031}) {
        Image8u image(width, 40);
        for (const std::int32_t flags : {0, 1, 3}) {
            fillMarked(image, rng, 40, {3, 9, 20, flags});
            ASSERT_NO_FATAL_FAILURE(expectMap(image, {3, 9, 20, flags}));
        }
    }
}

TEST(FastCorners, ListsOfAnyMap) {
    Rng rng = makeRng("fast lists");
    for (int salt = 0; salt < 300; ++salt) {
        const std::int64_t width = salt < 140 ? 1 + salt : uniform(rng, 900, 2200), height = uniform(rng, 1, 5);
        Image8u map(width, height, {.padding = salt % 4});
        std::vector<FastCorner> want;
        const std::int64_t oneIn = salt % 7 == 0 ? 1 : uniform(rng, 1, 60);
        for (std::int32_t y = 0; y < height; ++y) {
            for (std::int32_t x = 0; x < width; ++x) {
                const auto v = static_cast<std::uint8_t>(uniform(rng, 1, oneIn) == 1 ? uniform(rng, 0, 255) : 0);
                map.set(x, y, v);
                if (v != 0) {
                    want.push_back({x, y, v});
                }
            }
        }
        const auto found = static_cast<std::int64_t>(want.size());
        for (const std::int64_t wanted : {found - 1, found, found + 3, found / 2, std::int64_t{1}}) {
            const std::int64_t capacity = std::max<std::int64_t>(wanted, 1);
            GuardedBuffer list(capacity * 12);
            list.scribble();
            const std::vector<std::uint8_t> before(list.data(), list.data() + list.size());
            std::int32_t count = -1;
            ASSERT_EQ(rvxiFastN2DToVec_8u_C1R(map.data(), map.step(), map.roi(),
                                              reinterpret_cast<FastCorner *>(list.data()),
                                              static_cast<std::int32_t>(capacity), &count),
                      found > capacity ? StatusResultTruncated : StatusOk);
            ASSERT_EQ(count, std::min(found, capacity));
            ASSERT_EQ(std::memcmp(list.data(), want.data(), static_cast<std::size_t>(count) * 12), 0) << width;
            ASSERT_TRUE(std::equal(before.begin() + count * 12, before.end(), list.data() + count * 12));
        }
    }
}

TEST(FastCorners, SetUp) {
    std::int32_t size = -1;
    FastNSpec spec;
    for (std::int32_t radius = 0; radius <= 4; ++radius) {
        for (std::int32_t arc = 0; arc <= 18; ++arc) {
            const bool good = radius >= 1 && radius <= 3 && arc >= 2 * radius + 3 && arc <= 4 * radius + 4;
            EXPECT_EQ(rvxiFastNGetSize_8u_C1R(radius, arc, &size), good ? StatusOk : StatusOutOfRange);
            EXPECT_EQ(rvxiFastNInit_8u_C1R(radius, arc, -1, 2, &spec), StatusBadArgument);
            EXPECT_EQ(rvxiFastNInit_8u_C1R(radius, arc, -1, 3, &spec), good ? StatusBadThreshold : StatusOutOfRange);
        }
    }
    EXPECT_EQ(size, 64);
    EXPECT_EQ(rvxiFastNGetSize_8u_C1R(9, 9, nullptr), StatusNullPointer);
    EXPECT_EQ(rvxiFastNInit_8u_C1R(3, 9, 0, 4, nullptr), StatusNullPointer);
    EXPECT_EQ(rvxiFastNInit_8u_C1R(3, 9, 0, -1, &spec), StatusBadArgument);
    spec = specOf({2, 8, 300, 1});
    const FastNSpec want{
        0x4b617390, 2, 12,     8,
        300,        1, {0, 0}, {0, -2, 1, -2, 2, -1, 2, 0, 2, 1, 1, 2, 0, 2, -1, 2, -2, 1, -2, 0, -2, -1, -1, -2}};
    EXPECT_EQ(std::memcmp(&spec, &want, sizeof want), 0);
    for (const std::int32_t width : {30, 31}) {
        EXPECT_EQ(rvxiFastNGetBufferSize_8u_C1R({width, 1}, &size), StatusOk);
        EXPECT_EQ(size, 7 * (width == 30 ? 32 : 64) + 64);
    }
}

struct Call {
    const std::uint8_t *src;
    std::int32_t srcStep;
    std::uint8_t *dst;
    std::int32_t dstStep;
    RoiSize roi;
    std::int32_t *count;
    const FastNSpec *spec;
    std::uint8_t *buffer;
    FastCorner *corners;
    std::int32_t capacity;
};

TEST(FastCorners, StatusesInTheOrderOfTheChecks) {
    Image8u src(40, 9), dst(40, 9);
    const FastNSpec spec = specOf({3, 9, 5, 3}), other{};
    GuardedBuffer scratch(7 * 64 + 64), outputs(4 + 12);
    outputs.scribble();
    auto *const count = reinterpret_cast<std::int32_t *>(outputs.data());
    auto *const corners = reinterpret_cast<FastCorner *>(outputs.data() + 4);
    const Call good{src.data(), 40, dst.data(), 40, src.roi(), count, &spec, scratch.data(), corners, 1};
    const auto written = [&] {
        std::vector<std::uint8_t> bytes = dst.bytes();
        bytes.insert(bytes.end(), outputs.data(), outputs.data() + outputs.size());
        return bytes;
    };
    Faults<Call> faults;
    faults.nulls(&Call::src, &Call::dst, &Call::count, &Call::spec, &Call::buffer);
    faults.values(StatusBadContext, &Call::spec, {&other}).empty(&Call::roi);
    faults.shortSteps(40, &Call::srcStep, &Call::dstStep);
    expectFaultOrder<Call>(
        good, faults,
        [](const Call &c) {
            return rvxiFastN_8u_C1R(c.src, c.srcStep, c.dst, c.dstStep, c.roi, c.count, c.spec, c.buffer);
        },
        written);
    Faults<Call> listFaults;
    listFaults.nulls(&Call::src, &Call::corners, &Call::count).empty(&Call::roi);
    listFaults.values(StatusBadSize, &Call::capacity, {0, -1}).shortSteps(40, &Call::srcStep);
    expectFaultOrder<Call>(
        good, listFaults,
        [](const Call &c) { return rvxiFastN2DToVec_8u_C1R(c.src, c.srcStep, c.roi, c.corners, c.capacity, c.count); },
        written);
}

} // namespace
