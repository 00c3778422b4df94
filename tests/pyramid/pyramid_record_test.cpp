// Level sizes and the pyramid descriptor, against the rules written out in single precision.
#include "support/counted_alloc.h"
#include "support/random.h"
#include "support/status_table.h"

#include "rvxcv.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace {

using namespace support;

struct Range {
    std::int64_t least, most;
};

std::int64_t truncated(float value) { return static_cast<std::int64_t>(std::trunc(value)); }

Range plainUp(std::int64_t n, float rate) {
    const float all = static_cast<float>(n) * rate, others = static_cast<float>(n - 1) * rate;
    return {n == 1 ? 1 : std::max(truncated(others) + 1, n + 1), std::max(truncated(all), n + 1)};
}

// Both directions in one loop, height first, as long as a pass changes something.
RoiSize plainDown(RoiSize src, float rate) {
    const auto start = [rate](std::int32_t n) {
        const float quotient = static_cast<float>(n) / rate;
        return std::max<std::int64_t>(1, truncated(quotient + 0.5f));
    };
    std::int64_t width = start(src.width), height = start(src.height);
    for (bool changed = true; changed;) {
        changed = false;
        const Range rows = plainUp(height, rate), columns = plainUp(width, rate);
        if (src.height < rows.least) {
            --height, changed = true;
        } else if (src.height > rows.most) {
            ++height, changed = true;
        }
        if (src.width < columns.least) {
            --width, changed = true;
        } else if (src.width > columns.most) {
            ++width, changed = true;
        }
    }
    return {static_cast<std::int32_t>(width), static_cast<std::int32_t>(height)};
}

std::vector<float> rates() {
    std::vector<float> all{std::nextafter(1.0f, 2.0f),
                           1.00001f,
                           1.0009765625f,
                           10.0f,
                           std::nextafter(10.0f, 1.0f),
                           std::sqrt(2.0f),
                           1.1f,
                           1.2f,
                           1.7f,
                           4.0f / 3.0f};
    for (int i = 1; i <= 180; ++i) {
        all.push_back(1.0f + 0.05f * static_cast<float>(i));
    }
    return all;
}

void expectSizes(RoiSize src, float rate) {
    RoiSize down{}, least{}, most{};
    ASSERT_EQ(rvxiGetPyramidDownROI(src, &down, rate), StatusOk);
    ASSERT_EQ(rvxiGetPyramidUpROI(src, &least, &most, rate), StatusOk);
    const RoiSize want = plainDown(src, rate);
    const Range rows = plainUp(src.height, rate), columns = plainUp(src.width, rate);
    const auto stored = [](std::int64_t n) { return std::min<std::int64_t>(n, INT32_MAX); };
    ASSERT_TRUE(down.width == want.width && down.height == want.height)
        << src.width << "x" << src.height << " at " << rate << " gives " << down.width << "x" << down.height
        << " instead of " << want.width << "x" << want.height;
    ASSERT_TRUE(least.width == stored(columns.least) && least.height == stored(rows.least) &&
                most.width == stored(columns.most) && most.height == stored(rows.most))
        << src.width << "x" << src.height << " at " << rate;
}

TEST(PyramidSizes, FollowTheRulesAtEveryRate) {
    for (const float rate : rates()) {
        for (std::int32_t n = 1; n <= 700; ++n) {
            expectSizes({n, 701 - n}, rate);
        }
    }
}

// Where float no longer holds every integer, candidates are corrected more than once.
TEST(PyramidSizes, HugeLengths) {
    Rng rng = makeRng("huge lengths");
    for (const float rate : rates()) {
        for (const std::int32_t n : {1 << 24, (1 << 24) + 1, (1 << 25) + 3, INT32_MAX, INT32_MAX - 63}) {
            expectSizes({n, static_cast<std::int32_t>(uniform(rng, 1 << 24, INT32_MAX))}, rate);
        }
    }
}

TEST(PyramidSizes, KnownPairs) {
    RoiSize down{}, least{}, most{};
    EXPECT_EQ(rvxiGetPyramidDownROI({10, 10}, &down, 2.0f), StatusOk);
    EXPECT_EQ(down.width, 5);
    EXPECT_EQ(down.height, 5);
    EXPECT_EQ(rvxiGetPyramidUpROI({5, 1}, &least, &most, 2.0f), StatusOk);
    EXPECT_EQ(least.width, 9);
    EXPECT_EQ(most.width, 10);
    EXPECT_EQ(least.height, 1);
    EXPECT_EQ(most.height, 2);
    EXPECT_EQ(rvxiGetPyramidUpROI({1, 7}, &least, &most, 3.7f), StatusOk);
    EXPECT_EQ(least.width, 1);
    EXPECT_EQ(most.width, 3);
}

void expectRecord(RoiSize base, std::int32_t level, float rate) {
    SCOPED_TRACE(testing::Message() << base.width << "x" << base.height << ", " << level << " levels, rate " << rate);
    PyramidRecord *record = nullptr;
    ASSERT_EQ(rvxiPyramidInitAlloc(&record, level, base, rate), StatusOk);
    RoiSize roi = base;
    double scale = 1.0;
    std::int32_t i = 0;
    for (;; ++i) {
        ASSERT_EQ(record->images[i], nullptr);
        ASSERT_EQ(record->steps[i], 0);
        ASSERT_EQ(record->scales[i], scale) << "level " << i;
        ASSERT_TRUE(record->roiSizes[i].width == roi.width && record->roiSizes[i].height == roi.height) << i;
        if (i == level || (roi.width == 1 && roi.height == 1)) {
            break;
        }
        roi = plainDown(roi, rate);
        scale = scale * (1.0 / static_cast<double>(rate));
    }
    EXPECT_EQ(record->levelCount, i);
    EXPECT_EQ(record->layerState, nullptr);
    for (const void *array : {static_cast<void *>(record->images), static_cast<void *>(record->roiSizes),
                              static_cast<void *>(record->scales), static_cast<void *>(record->steps)}) {
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(array) % 8, 0u);
    }
    EXPECT_EQ(rvxiPyramidFree(record), StatusOk);
}

TEST(PyramidRecord, LevelsOfEveryRate) {
    for (const float rate : rates()) {
        for (const RoiSize base : {RoiSize{640, 480}, {1, 1}, {1, 77}, {1000, 3}, {17, 16}}) {
            expectRecord(base, 3, rate);
            expectRecord(base, 2000, rate);
        }
    }
    expectRecord({16, 16}, 1, 2.0f);
    expectRecord({INT32_MAX, 1}, 40, 1.5f);
    // Two thousand million levels fit between this base and one pixel; nobody pays for those that are not wanted.
    expectRecord({INT32_MAX, INT32_MAX}, 5, std::nextafter(1.0f, 2.0f));
}

TEST(PyramidRecord, FailingAllocations) {
    failEveryAllocation<PyramidRecord>(
        [](PyramidRecord **p) {
            return rvxiPyramidInitAlloc(p, 3, {64, 48}, 1.5f);
        },
        rvxiPyramidFree);
    EXPECT_EQ(rvxiPyramidFree(nullptr), StatusNullPointer);
}

struct Args {
    void *first, *second;
    RoiSize roi;
    float rate;
    std::int32_t level;
};

template <class Call> void expectStatuses(bool second, bool level, void *out, std::size_t bytes, const Call &call) {
    Faults<Args> faults;
    faults.nulls(&Args::first);
    if (second) {
        faults.nulls(&Args::second);
    }
    faults.empty(&Args::roi)
        .values(StatusBadArgument, &Args::rate, {1.0f, 0.5f, -2.0f, std::nextafter(10.0f, 11.0f), INFINITY, NAN});
    if (level) {
        faults.values(StatusBadArgument, &Args::level, {0, -1, INT32_MIN});
    }
    auto *first = static_cast<std::uint8_t *>(out);
    std::memset(out, 0x5a, 2 * bytes);
    expectFaultOrder<Args>({first, first + bytes, {8, 9}, 10.0f, 1}, faults, call,
                           [&] { return std::vector<std::uint8_t>(first, first + 2 * bytes); });
}

TEST(PyramidRecord, StatusesInTheOrderOfTheChecks) {
    RoiSize sizes[2];
    expectStatuses(false, false, sizes, sizeof(RoiSize),
                   [](const Args &a) { return rvxiGetPyramidDownROI(a.roi, static_cast<RoiSize *>(a.first), a.rate); });
    expectStatuses(true, false, sizes, sizeof(RoiSize), [](const Args &a) {
        return rvxiGetPyramidUpROI(a.roi, static_cast<RoiSize *>(a.first), static_cast<RoiSize *>(a.second), a.rate);
    });
    PyramidRecord *records[2];
    expectStatuses(false, true, records, sizeof(PyramidRecord *), [](const Args &a) {
        return rvxiPyramidInitAlloc(static_cast<PyramidRecord **>(a.first), a.level, a.roi, a.rate);
    });
    EXPECT_EQ(rvxiPyramidFree(records[0]), StatusOk);
}

} // namespace
