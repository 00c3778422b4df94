// Sub-pixel copies against the formula in its plainest form, bit for bit; images and patches end at unmapped pages.
#include "support/guarded.h"
#include "support/status_table.h"

#include "rvxcv.h"

#include <algorithm>
#include <cmath>

namespace {

using namespace support;

struct Axis {
    std::int64_t index;
    float fraction;

    Axis(float centre, std::int64_t size) {
        const double origin = static_cast<double>(centre) - 0.5 * static_cast<double>(size - 1);
        index = static_cast<std::int64_t>(std::floor(origin));
        fraction = static_cast<float>(origin - std::floor(origin));
    }
    bool inside(std::int64_t i, std::int64_t length) const {
        return index + i >= 0 && index + i + (fraction > 0 ? 1 : 0) <= length - 1;
    }
};

float plainSample(const GuardedImage<float> &src, std::int64_t i, std::int64_t j, float a, float b) {
    const auto joined = [&](std::int64_t row) {
        return a > 0 ? std::fma(a, src.at(i + 1, row) - src.at(i, row), src.at(i, row)) : src.at(i, row);
    };
    return b > 0 ? std::fma(b, joined(j + 1) - joined(j), joined(j)) : joined(j);
}

// Copies the patch and compares everything: status, the part inside, its pixels, and that no other pixel is written.
void checkPatch(const GuardedImage<float> &src, std::int64_t width, std::int64_t height, Point2f centre,
                GuardedImage<float>::Layout layout = {}) {
    GuardedImage<float> dst(width, height, layout);
    const GuardedImage<float> untouched(width, height, layout);
    const Axis x(centre.x, width), y(centre.y, height);
    std::int64_t firstX = width, lastX = -1, firstY = height, lastY = -1;
    for (std::int64_t i = 0; i < std::max(width, height); ++i) {
        if (i < width && x.inside(i, src.width())) {
            firstX = std::min(firstX, i), lastX = i;
        }
        if (i < height && y.inside(i, src.height())) {
            firstY = std::min(firstY, i), lastY = i;
        }
    }
    const bool some = lastX >= 0 && lastY >= 0;
    Point2i min{-5, -6}, max{-7, -8};
    ASSERT_EQ(rvxiCopySubpixIntersect_32f_C1R(src.data(), src.step(), src.roi(), dst.data(), dst.step(), dst.roi(),
                                              centre, &min, &max),
              some ? StatusOk : StatusError)
        << centre.x << " " << centre.y;
    if (some) {
        ASSERT_TRUE(min.x == firstX && min.y == firstY && max.x == lastX && max.y == lastY)
            << centre.x << " " << centre.y << ": " << min.x << " " << min.y << " " << max.x << " " << max.y;
    } else {
        ASSERT_TRUE(min.x == -5 && min.y == -6 && max.x == -7 && max.y == -8);
    }
    ASSERT_TRUE(imageIs(dst,
                        [&](std::int64_t i, std::int64_t j) {
                            const bool inside = some && i >= firstX && i <= lastX && j >= firstY && j <= lastY;
                            return inside ? plainSample(src, x.index + i, y.index + j, x.fraction, y.fraction)
                                          : untouched.at(i, j);
                        }))
        << centre.x << " " << centre.y << " of " << src.width() << "x" << src.height();
}

float someCoordinate(Rng &rng, std::int64_t length) {
    switch (uniform(rng, 0, 3)) {
    case 0:
        return static_cast<float>(uniform(rng, -3, length + 3));
    case 1:
        return static_cast<float>(uniform(rng, -6, 2 * length + 6)) * 0.5f;
    default:
        return static_cast<float>(uniform(rng, -3000, 1000 * length + 3000)) * 1e-3f;
    }
}

TEST(CopySubpixIntersect, EveryPatchWidthAndEveryPlace) {
    Rng rng = makeRng("subpix widths");
    int salt = 0;
    for (std::int64_t width = 1; width <= 35; ++width) {
        for (int place = 0; place < 24; ++place, ++salt) {
            const Guard guard = salt % 2 != 0 ? Guard::before : Guard::behind;
            GuardedImage<float> src(uniform(rng, 1, 45), uniform(rng, 1, 14),
                                    {.padding = 4 * (salt % 3), .guard = guard, .skew = salt % 5});
            src.fill(rng, allContents[salt % 5]);
            ASSERT_NO_FATAL_FAILURE(checkPatch(src, width, 1 + width % 7,
                                               {someCoordinate(rng, src.width()), someCoordinate(rng, src.height())},
                                               {.padding = 4 * (salt % 2), .guard = guard, .skew = salt % 3}));
        }
    }
}

// A patch that lies exactly in a corner reads up to the last pixel and none behind it; one as large as the image, and a
// larger one; centres between all pixels.
TEST(CopySubpixIntersect, CornersAndPatchesLargerThanTheImage) {
    Rng rng = makeRng("subpix corners");
    for (const Guard guard : {Guard::behind, Guard::before}) {
        GuardedImage<float> src(23, 19, {.padding = 8, .guard = guard});
        src.fill(rng, Contents::random);
        for (const std::int64_t size : {1, 2, 5, 8, 9, 17, 23, 40}) {
            const float half = 0.5f * static_cast<float>(size - 1);
            for (const float fx : {half, 22 - half, half - 1, 23 - half, half + 0.25f, 22 - half - 0.5f}) {
                for (const float fy : {half, 18 - half, half - 1, 19 - half, half + 0.75f, 18 - half - 0.125f}) {
                    ASSERT_NO_FATAL_FAILURE(checkPatch(src, size, size, {fx, fy}, {.guard = guard}));
                }
            }
        }
    }
    GuardedImage<float> wide(1283, 5);
    wide.fill(rng, Contents::random);
    checkPatch(wide, 1283, 5, {641.25f, 2.5f});
    checkPatch(wide, 1283, 5, {641.0f, 2.0f});
}

// Fractions so small that they vanish beside the patch's half size, or round to 1 below zero; far away.
TEST(CopySubpixIntersect, ExtremeCentres) {
    Rng rng = makeRng("subpix extreme");
    GuardedImage<float> src(20, 9);
    src.fill(rng, Contents::random);
    for (const float c : {1e-40f, -1e-40f, 1e-12f, -1e-12f, -0.0f, 8.000001f, 7.9999995f, 1e9f, -1e9f, 3e8f}) {
        ASSERT_NO_FATAL_FAILURE(checkPatch(src, 1, 1, {c, 4}));
        ASSERT_NO_FATAL_FAILURE(checkPatch(src, 6, 5, {c, 4}));
        ASSERT_NO_FATAL_FAILURE(checkPatch(src, 5, 6, {4, c}));
    }
}

// Where a fraction is 0, neighbours do not count, whatever they are.
TEST(CopySubpixIntersect, ZeroFractionsKeepEveryValue) {
    GuardedImage<float> src(9, 2);
    const float values[] = {INFINITY, -INFINITY, NAN, -0.0f, 1e-45f, 3e38f, -3e38f, NAN, 1.0f};
    for (std::int64_t i = 0; i < 18; ++i) {
        src.set(i % 9, i / 9, values[i % 9]);
    }
    GuardedImage<float> dst(9, 1);
    Point2i min, max;
    ASSERT_EQ(rvxiCopySubpixIntersect_32f_C1R(src.data(), src.step(), src.roi(), dst.data(), dst.step(), dst.roi(),
                                              {4, 0}, &min, &max),
              StatusOk);
    EXPECT_TRUE(imageIs(dst, [&](auto x, auto) { return values[x]; }));
}

struct Call {
    const float *src;
    std::int32_t srcStep;
    RoiSize srcRoi;
    float *dst;
    std::int32_t dstStep;
    RoiSize dstRoi;
    Point2f centre;
    Point2i *min, *max;
};

TEST(CopySubpixIntersect, StatusesInTheOrderOfTheChecks) {
    GuardedImage<float> src(9, 4), dst(5, 3);
    Rng rng = makeRng("subpix statuses");
    src.fill(rng, Contents::random);
    Point2i corners[2] = {{-1, -2}, {-3, -4}};
    Faults<Call> faults;
    faults.nulls(&Call::src, &Call::dst, &Call::min, &Call::max).empty(&Call::srcRoi).empty(&Call::dstRoi);
    faults.shortSteps(36, &Call::srcStep).values(StatusBadStep, &Call::srcRoi, {{1 << 30, 4}});
    faults.shortSteps(20, &Call::dstStep).unevenSteps(36, 4, &Call::srcStep).unevenSteps(20, 4, &Call::dstStep);
    faults.values(StatusOutOfRange, &Call::centre,
                  {{NAN, 1.5f}, {4, -INFINITY}, {3e9f, 1.5f}, {4, std::nextafter(-1e9f, -2e9f)}});
    faults.values(StatusError, &Call::centre, {{-3, 1.5f}, {4, 5}});
    const auto call = [](const Call &c) {
        return rvxiCopySubpixIntersect_32f_C1R(c.src, c.srcStep, c.srcRoi, c.dst, c.dstStep, c.dstRoi, c.centre, c.min,
                                               c.max);
    };
    const auto outputs = [&] {
        std::vector<std::uint8_t> bytes = dst.bytes();
        const auto *p = reinterpret_cast<const std::uint8_t *>(corners);
        bytes.insert(bytes.end(), p, p + sizeof corners);
        return bytes;
    };
    expectFaultOrder<Call>(
        {src.data(), src.step(), src.roi(), dst.data(), dst.step(), dst.roi(), {4.25f, 1.5f}, &corners[0], &corners[1]},
        faults, call, outputs);
}

} // namespace
