// The fast march against a sorted list, to the bit, and against what is known of its times.
#include "segment/plain_march.h"
#include "support/guarded.h"
#include "support/status_table.h"

#include <rvxcv.h>

namespace {

using namespace support;

std::int64_t scratchSize(std::int64_t w, std::int64_t h) { return 8 * (w + 2) * (h + 2) + 4 * w * h + 64; }

// A call with scratch of exactly the promised size, at any address.
GuardedImage<float> times(const Picture &picture, int salt = 0) {
    const Guard guard = salt % 2 != 0 ? Guard::before : Guard::behind;
    const std::int64_t w = picture.width, h = picture.height, skew = guard == Guard::before ? salt % 8 : 0;
    GuardedImage<std::uint8_t> src(w, h, {.padding = salt % 3, .guard = guard});
    for (std::int64_t i = 0; i < w * h; ++i) {
        src.set(i % w, i / w, static_cast<std::uint8_t>(picture.at(i % w, i / w) ? 1 + i * 37 % 255 : 0));
    }
    GuardedImage<float> dst(w, h, {.padding = 4 * (salt % 4), .guard = guard, .skew = (3 + skew) % 4});
    GuardedBuffer scratch(scratchSize(w, h) + skew, guard);
    scratch.scribble();
    EXPECT_EQ(
        rvxiFastMarching_8u32f_C1R(src.data(), src.step(), dst.data(), dst.step(), src.roi(), scratch.data() + skew),
        StatusOk);
    return dst;
}

void expectPlainTimes(const Picture &picture, int salt) {
    const std::vector<float> want = plainMarch(picture).time;
    ASSERT_TRUE(imageIs(times(picture, salt), [&](std::int64_t x, std::int64_t y) {
        return std::fmin(want[static_cast<std::size_t>(y * picture.width + x)], std::numeric_limits<float>::max());
    })) << salt;
}

TEST(FastMarching, EverySizeAndShape) {
    for (int salt = 0; salt < 300; ++salt) {
        Rng rng = makeRng("march", static_cast<std::uint64_t>(salt));
        const bool large = salt % 23 == 0;
        ASSERT_NO_FATAL_FAILURE(expectPlainTimes(
            draw(allShapes[salt % 15], large ? 203 + salt : 1 + salt / 15, large ? 211 : 1 + salt % 11, rng), salt));
    }
}

TEST(FastMarching, DistancesFromAnEdgeAndFromAPoint) {
    constexpr std::int64_t w = 120, h = 90, cx = 31, cy = 47;
    Picture edge{w, h, std::vector<char>(w * h, 1)}, point = edge;
    std::fill_n(edge.set.begin() + 40 * w, w, 0);
    EXPECT_TRUE(imageIs(times(edge), [](std::int64_t, std::int64_t y) { return std::abs(y - 40); }));
    point.set[cy * w + cx] = 0;
    const auto fromPoint = times(point);
    for (std::int64_t i = 0; i < w * h; ++i) {
        const double t = fromPoint.at(i % w, i / w), dx = std::abs(double(i % w - cx)),
                     dy = std::abs(double(i / w - cy));
        ASSERT_GE(t, std::hypot(dx, dy) * 0.999999);
        ASSERT_LE(t, std::min(1.21 * std::hypot(dx, dy), dx + dy) * 1.000001);
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

TEST(FastMarching, StatusesAndSizes) {
    GuardedImage<std::uint8_t> src(9, 5);
    GuardedImage<float> dst(9, 5);
    GuardedBuffer buffer(scratchSize(9, 5));
    Faults<Call> faults;
    faults.nulls(&Call::src, &Call::dst, &Call::buffer).empty(&Call::roi);
    faults.shortSteps(9, &Call::srcStep).shortSteps(36, &Call::dstStep).unevenSteps(36, 4, &Call::dstStep);
    expectFaultOrder<Call>(
        {src.data(), src.step(), dst.data(), dst.step(), src.roi(), buffer.data()}, faults,
        [](const Call &c) { return rvxiFastMarching_8u32f_C1R(c.src, c.srcStep, c.dst, c.dstStep, c.roi, c.buffer); },
        [&] { return dst.bytes(); });
    std::int32_t size = 0;
    EXPECT_EQ(rvxiFastMarchingGetBufferSize_8u32f_C1R({641, 480}, &size), StatusOk);
    EXPECT_EQ(size, scratchSize(641, 480));
}

} // namespace
