// The fast march against a sorted list, to the bit, and against what is known of its times.
#include "segment/plain_march.h"
#include "segment/shapes.h"
#include "support/guarded.h"
#include "support/status_table.h"

#include <rvxcv.h>

namespace {

using namespace support;

std::int64_t scratchSize(std::int64_t width, std::int64_t height) {
    return 8 * (width + 2) * (height + 2) + 4 * width * height + 64;
}

// A call with scratch of exactly the promised size, at any address. Foreground pixels get bytes that are not zero.
GuardedImage<float> times(const Picture &picture, int salt = 0) {
    const Guard guard = salt % 2 != 0 ? Guard::before : Guard::behind;
    GuardedImage<std::uint8_t> src(picture.width, picture.height, {.padding = salt % 3, .guard = guard});
    for (std::int64_t y = 0; y < picture.height; ++y) {
        for (std::int64_t x = 0; x < picture.width; ++x) {
            src.set(x, y, static_cast<std::uint8_t>(picture.at(x, y) ? 1 + (x * 37 + y) % 255 : 0));
        }
    }
    const std::int64_t skew = salt % 8;
    GuardedImage<float> dst(picture.width, picture.height,
                            {.padding = 4 * (salt % 4), .guard = guard, .skew = guard == Guard::behind ? skew % 4 : 0});
    GuardedBuffer scratch(scratchSize(picture.width, picture.height) + skew, guard);
    scratch.scribble();
    EXPECT_EQ(rvxiFastMarching_8u32f_C1R(src.data(), src.step(), dst.data(), dst.step(), src.roi(),
                                         scratch.data() + (guard == Guard::behind ? 0 : skew)),
              StatusOk);
    return dst;
}

void expectPlainTimes(const Picture &picture, int salt) {
    const auto waits = [&](std::int64_t i) { return picture.at(i % picture.width, i / picture.width); };
    const PlainMarch want = plainMarch(picture.width, picture.height, waits);
    ASSERT_TRUE(imageIs(times(picture, salt), [&](std::int64_t x, std::int64_t y) {
        return std::fmin(want.time[static_cast<std::size_t>(y * picture.width + x)], std::numeric_limits<float>::max());
    }));
}

TEST(FastMarching, EverySmallSizeAndShape) {
    int salt = 0;
    for (std::int64_t width = 1; width <= 19; ++width) {
        for (const Shape shape : allShapes) {
            Rng rng = makeRng("march", static_cast<std::uint64_t>(salt));
            ASSERT_NO_FATAL_FAILURE(expectPlainTimes(draw(shape, width, 1 + salt % 11, rng), salt)) << width;
            ++salt;
        }
    }
}

TEST(FastMarching, LargerPictures) {
    int salt = 0;
    for (const std::uint64_t rarity : {2u, 40u, 5000u}) {
        Rng rng = makeRng("rare", rarity);
        Picture picture{307, 211, std::vector<char>(307 * 211)};
        for (char &set : picture.set) {
            set = rng() % rarity != 0 ? 1 : 0;
        }
        ASSERT_NO_FATAL_FAILURE(expectPlainTimes(picture, ++salt));
    }
    Rng rng = makeRng("large");
    for (const Shape shape : {Shape::spiral, Shape::full, Shape::dots}) {
        ASSERT_NO_FATAL_FAILURE(expectPlainTimes(draw(shape, 301, 203, rng), ++salt));
    }
}

TEST(FastMarching, DistancesFromAnEdgeAndFromAPoint) {
    constexpr std::int64_t width = 120, height = 90, cx = 31, cy = 47;
    Picture edge{width, height, std::vector<char>(width * height, 1)}, point = edge;
    std::fill_n(edge.set.begin() + 40 * width, width, 0);
    point.set[cy * width + cx] = 0;
    EXPECT_TRUE(imageIs(times(edge), [](std::int64_t, std::int64_t y) { return std::abs(y - 40); }));
    const auto fromPoint = times(point);
    Picture mirrored{height, width, std::vector<char>(width * height, 1)};
    mirrored.set[cx * height + cy] = 0;
    const auto transposed = times(mirrored);
    for (std::int64_t y = 0; y < height; ++y) {
        for (std::int64_t x = 0; x < width; ++x) {
            const double t = fromPoint.at(x, y), dx = std::abs(double(x - cx)), dy = std::abs(double(y - cy));
            ASSERT_GE(t, std::hypot(dx, dy) * 0.999999);
            ASSERT_LE(t, std::min(1.21 * std::hypot(dx, dy), dx + dy) * 1.000001);
            ASSERT_EQ(transposed.at(y, x), fromPoint.at(x, y));
        }
    }
}

struct Call {
    const std::uint8_t *src;
    std::int32_t srcStep;
    float *dst;
    std::int32_t dstStep;
    RoiSize roi;
    std::uint8_t *buffer;
};

TEST(FastMarching, StatusesInTheOrderOfTheChecks) {
    GuardedImage<std::uint8_t> src(9, 5);
    GuardedImage<float> dst(9, 5);
    GuardedBuffer buffer(scratchSize(9, 5));
    buffer.scribble();
    Faults<Call> faults;
    faults.nulls(&Call::src, &Call::dst, &Call::buffer).empty(&Call::roi);
    faults.shortSteps(9, &Call::srcStep).shortSteps(36, &Call::dstStep);
    faults.values(StatusBadStep, &Call::roi, {{0x40000001, 5}}).unevenSteps(36, 4, &Call::dstStep);
    expectFaultOrder<Call>(
        {src.data(), src.step(), dst.data(), dst.step(), src.roi(), buffer.data()}, faults,
        [](const Call &c) { return rvxiFastMarching_8u32f_C1R(c.src, c.srcStep, c.dst, c.dstStep, c.roi, c.buffer); },
        [&] { return dst.bytes(); });
    std::int32_t size = 0;
    for (const RoiSize roi : {RoiSize{1, 1}, {5, 2}, {640, 480}, {3, 1919}}) {
        ASSERT_EQ(rvxiFastMarchingGetBufferSize_8u32f_C1R(roi, &size), StatusOk);
        EXPECT_EQ(size, scratchSize(roi.width, roi.height));
    }
}

} // namespace
