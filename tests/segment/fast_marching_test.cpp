// The fast march against a sorted list, to the bit, and against what is known of its times.
#include "segment/plain_march.h"
#include "support/guarded.h"
#include "support/status_table.h"

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
    scratch.spoil();
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

TEST(FastMarching, DistancesFromAPointAreNotFarOff) {
    Picture point{120, 90, std::vector<char>(120 * 90, 1)};
    point.set[47 * 120 + 31] = 0;
    const auto got = times(point);
    for (std::int64_t i = 0; i < 120 * 90; ++i) {
        const double t = got.at(i % 120, i / 120), dx = std::abs(i % 120 - 31.0), dy = std::abs(i / 120 - 47.0);
        ASSERT_GE(t, std::hypot(dx, dy) * 0.999999);
        ASSERT_LE(t, std::min(1.21 * std::hypot(dx, dy), dx + dy) * 1.000001);
    }
}

TEST(FastMarching, StatusesAndSizes) {
    GuardedImage<std::uint8_t> src(9, 5);
    GuardedImage<float> dst(9, 5);
    GuardedBuffer buffer(scratchSize(9, 5));
    using Call = MarchCall<float>;
    Faults<Call> faults;
    faults.nulls(&Call::mask, &Call::dst, &Call::buffer).empty(&Call::roi);
    faults.shortSteps(9, &Call::maskStep).shortSteps(36, &Call::dstStep).unevenSteps(36, 4, &Call::dstStep);
    expectFaultOrder<Call>(
        {nullptr, 0, src.data(), src.step(), dst.data(), dst.step(), src.roi(), 0, 0, buffer.data()}, faults,
        [](const Call &c) { return rvxiFastMarching_8u32f_C1R(c.mask, c.maskStep, c.dst, c.dstStep, c.roi, c.buffer); },
        [&] { return dst.bytes(); });
    std::int32_t size = 0;
    EXPECT_TRUE(rvxiFastMarchingGetBufferSize_8u32f_C1R({641, 48}, &size) == StatusOk && size == scratchSize(641, 48));
}

} // namespace
