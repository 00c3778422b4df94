// The peak search against its definition, pixel by pixel, with the comparison of floats in double precision.
#include "support/guarded.h"
#include "support/status_table.h"

#include "rvxcv.h"

#include <algorithm>
#include <cmath>

namespace {

using namespace support;

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float normalMin = std::numeric_limits<float>::min();

template <class T>
using FindPeaks = StatusCode (*)(const T *, std::int32_t, RoiSize, T, Point2i *, std::int32_t, std::int32_t *,
                                 std::int32_t, std::int32_t, std::uint8_t *);

template <class T> constexpr FindPeaks<T> findPeaks = nullptr;
template <> constexpr FindPeaks<std::int32_t> findPeaks<std::int32_t> = rvxiFindPeaks3x3_32s_C1R;
template <> constexpr FindPeaks<float> findPeaks<float> = rvxiFindPeaks3x3_32f_C1R;

bool samePoint(const Point2i &a, const Point2i &b) { return a.x == b.x && a.y == b.y; }

// Both types fit in double exactly.
template <class T>
bool plainIsPeak(const GuardedImage<T> &image, std::int64_t x, std::int64_t y, T threshold,
                 std::int32_t neighbourhood) {
    const double v = image.at(x, y);
    double largest = v, smallest = v;
    for (int dy = -1; dy <= 1; ++dy) {
        for (int dx = -1; dx <= 1; ++dx) {
            const double pixel = image.at(x + dx, y + dy);
            if ((neighbourhood == PeakSquare || dx == 0 || dy == 0) && !std::isnan(pixel)) {
                largest = std::max(largest, pixel);
                smallest = std::min(smallest, pixel);
            }
        }
    }
    if (!(std::fabs(v) > static_cast<double>(threshold))) {
        return false;
    }
    constexpr double tie = std::is_same_v<T, float> ? 1.1754943508222875e-38 : 0;
    return v > 0 ? std::fabs(v - largest) <= tie : v <= 0 && std::fabs(v - smallest) <= tie;
}

template <class T>
std::vector<Point2i> plainPeaks(const GuardedImage<T> &image, T threshold, std::int32_t neighbourhood,
                                std::int32_t border) {
    std::vector<Point2i> peaks;
    for (std::int64_t y = border; y <= image.height() - border - 1; ++y) {
        for (std::int64_t x = border; x <= image.width() - border - 1; ++x) {
            if (plainIsPeak(image, x, y, threshold, neighbourhood)) {
                peaks.push_back({static_cast<std::int32_t>(x), static_cast<std::int32_t>(y)});
            }
        }
    }
    return peaks;
}

std::int64_t scratchSize(std::int64_t width) { return ((width + 5) >> 2) * 128 + 32; }

// Runs the search with a list that ends at a guard page, with scratch at an odd address, and compares.
template <class T>
void expectPeaks(const GuardedImage<T> &image, T threshold, std::int32_t neighbourhood, std::int32_t border,
                 std::int64_t capacity) {
    std::vector<Point2i> want = plainPeaks(image, threshold, neighbourhood, border);
    want.resize(std::min(want.size(), static_cast<std::size_t>(capacity)));

    GuardedBuffer list(capacity * static_cast<std::int64_t>(sizeof(Point2i)));
    GuardedBuffer scratch(scratchSize(image.width()));
    list.scribble();
    scratch.spoil();
    const std::vector<std::uint8_t> before(list.data(), list.data() + list.size());
    std::int32_t count = -1;
    ASSERT_EQ(findPeaks<T>(image.data(), image.step(), image.roi(), threshold, reinterpret_cast<Point2i *>(list.data()),
                           static_cast<std::int32_t>(capacity), &count, neighbourhood, border, scratch.data()),
              StatusOk);
    std::vector<Point2i> got(static_cast<std::size_t>(count));
    ASSERT_LE(count, capacity);
    for (std::size_t i = 0; i < got.size(); ++i) {
        std::memcpy(&got[i], list.data() + i * sizeof(Point2i), sizeof(Point2i));
    }
    ASSERT_EQ(count, static_cast<std::int64_t>(want.size()));
    ASSERT_TRUE(std::equal(got.begin(), got.end(), want.begin(), samePoint))
        << image.width() << "x" << image.height() << " border " << border << " threshold " << threshold
        << " neighbourhood " << neighbourhood << " (seed " << baseSeed() << ")";
    const auto stored = static_cast<std::ptrdiff_t>(got.size() * sizeof(Point2i));
    ASSERT_TRUE(std::equal(before.begin() + stored, before.end(), list.data() + stored)) << "written behind the list";
}

template <class T> void checkContents() {
    Rng rng = makeRng("peaks", std::is_same_v<T, float>);
    const T thresholds[] = {0, 1, -1, 2, static_cast<T>(std::numeric_limits<T>::lowest()), 500};
    const auto run = [&](std::int64_t width, std::int64_t height, std::int32_t border, int salt) {
        const auto pick = static_cast<std::size_t>(salt);
        GuardedImage<T> image(width, height,
                              {.padding = 4 * (salt % 3), .guard = salt % 2 != 0 ? Guard::before : Guard::behind});
        image.fill(rng, allContents[pick % 5]);
        const T threshold = thresholds[pick % std::size(thresholds)];
        for (const std::int32_t neighbourhood : {PeakSquare, PeakCross}) {
            ASSERT_NO_FATAL_FAILURE(expectPeaks(image, threshold, neighbourhood, border, width * height));
            ASSERT_NO_FATAL_FAILURE(expectPeaks(image, threshold, neighbourhood, border, 1 + salt % 7));
        }
    };
    int salt = 0;
    for (std::int64_t width = 2; width <= 36; ++width) {
        for (std::int32_t border = 1; 2 * border <= width; ++border) {
            run(width, std::max<std::int64_t>(2 * border, 5), border, salt++);
        }
    }
    for (std::int32_t border = 1; border <= 6; ++border) {
        run(21, 12, border, salt++);
        run(20, 13, border, salt++);
    }
    for (int i = 0; i < 30; ++i) {
        run(257, 9, 1 + i % 3, i);
    }
}

TEST(FindPeaks, ContentsBordersAndCapacities32s) { checkContents<std::int32_t>(); }
TEST(FindPeaks, ContentsBordersAndCapacities32f) { checkContents<float>(); }

template <class T> std::vector<Point2i> search(const GuardedImage<T> &image, T threshold, std::int32_t neighbourhood) {
    std::vector<Point2i> peaks(static_cast<std::size_t>(image.width() * image.height()));
    std::vector<std::uint8_t> scratch(static_cast<std::size_t>(scratchSize(image.width())));
    std::int32_t count = 0;
    EXPECT_EQ(findPeaks<T>(image.data(), image.step(), image.roi(), threshold, peaks.data(),
                           static_cast<std::int32_t>(peaks.size()), &count, neighbourhood, 1, scratch.data()),
              StatusOk);
    peaks.resize(static_cast<std::size_t>(count));
    return peaks;
}

template <class T> GuardedImage<T> filled(std::int64_t width, std::int64_t height, T value) {
    GuardedImage<T> image(width, height);
    for (std::int64_t i = 0; i < width * height; ++i) {
        image.set(i % width, i / width, value);
    }
    return image;
}

// Every pixel of a plateau, up to the threshold; zero counts as not positive and never exceeds a threshold of zero.
TEST(FindPeaks, Plateaus) {
    EXPECT_EQ(search(filled(13, 5, 5), 4, PeakSquare).size(), 33u);
    EXPECT_EQ(search(filled(13, 5, 5), 5, PeakSquare).size(), 0u);
    EXPECT_EQ(search(filled(13, 5, -5.0f), 4.0f, PeakCross).size(), 33u);
    EXPECT_EQ(search(filled(13, 5, 0.0f), 0.0f, PeakSquare).size(), 0u);
    EXPECT_EQ(search(filled(13, 5, -0.0f), -1.0f, PeakSquare).size(), 33u);
    auto minima = filled(3, 3, 0);
    minima.set(0, 1, 7); // zero is the smallest here, and that makes it a peak
    EXPECT_EQ(search(minima, -1, PeakSquare).size(), 1u);
    minima.set(0, 1, -7);
    EXPECT_EQ(search(minima, -1, PeakSquare).size(), 0u);
}

// A corner neighbour outranks the centre in the square and is no part of the cross.
TEST(FindPeaks, CrossLeavesCornersOut) {
    auto image = filled(3, 3, 1);
    image.set(1, 1, 5);
    image.set(2, 2, 6);
    EXPECT_EQ(search(image, 0, PeakSquare).size(), 0u);
    EXPECT_EQ(search(image, 0, PeakCross).size(), 1u);
}

TEST(FindPeaks, SmallestIntegerExceedsEveryThreshold) {
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max(),
                           least = std::numeric_limits<std::int32_t>::min();
    EXPECT_EQ(search(filled(11, 4, least), most, PeakSquare).size(), 18u);
    EXPECT_EQ(search(filled(11, 4, most), most, PeakSquare).size(), 0u);
    EXPECT_EQ(search(filled(11, 4, most), most - 1, PeakSquare).size(), 18u);
    EXPECT_EQ(search(filled(11, 4, 3), least, PeakCross).size(), 18u);
}

// A tie is a difference of at most the smallest normal float, so denormals tie with each other and with zero.
TEST(FindPeaks, TiesWithinTheSmallestNormalFloat) {
    const auto withNeighbour = [](float center, float neighbour, float threshold = -1.0f) {
        auto image = filled(3, 3, center);
        image.set(2, 1, neighbour);
        return search(image, threshold, PeakSquare).size();
    };
    EXPECT_EQ(withNeighbour(1e-45f, 1e-39f), 1u);
    EXPECT_EQ(withNeighbour(1e-45f, normalMin), 1u); // the difference is smaller than the bound
    EXPECT_EQ(withNeighbour(normalMin, 2 * normalMin), 1u);
    EXPECT_EQ(withNeighbour(normalMin, std::nextafter(2 * normalMin, 1.0f)), 0u);
    EXPECT_EQ(withNeighbour(0.0f, -normalMin), 1u);
    EXPECT_EQ(withNeighbour(0.0f, std::nextafter(-normalMin, -1.0f)), 0u);
    EXPECT_EQ(withNeighbour(1.0f, std::nextafter(1.0f, 2.0f)), 0u);
    EXPECT_EQ(withNeighbour(infinity, 1.0f), 0u);
    EXPECT_EQ(withNeighbour(-infinity, 1.0f), 0u);
    EXPECT_EQ(withNeighbour(3.0f, infinity), 0u);
    EXPECT_EQ(withNeighbour(3.0f, std::nanf("")), 1u);
    EXPECT_EQ(withNeighbour(std::nanf(""), 3.0f), 0u);
    EXPECT_EQ(withNeighbour(3.0f, 2.0f, std::nanf("")), 0u);
}

struct Call {
    const void *src;
    std::int32_t step;
    RoiSize roi;
    Point2i *peaks;
    std::int32_t capacity;
    std::int32_t *count;
    std::int32_t neighbourhood, border;
    std::uint8_t *buffer;
};

template <class T> void checkStatuses() {
    auto image = filled<T>(9, 6, 3);
    GuardedBuffer outputs(4 + 40 * 8), scratch(scratchSize(9));
    outputs.scribble();
    auto *const count = reinterpret_cast<std::int32_t *>(outputs.data());
    Faults<Call> faults;
    faults.nulls(&Call::src, &Call::peaks, &Call::count, &Call::buffer).empty(&Call::roi);
    faults.values(StatusBadSize, &Call::capacity, {0}).values(StatusBadSize, &Call::border, {0, 4});
    faults.shortSteps(36, &Call::step).unevenSteps(36, 4, &Call::step);
    faults.values(StatusBadArgument, &Call::neighbourhood, {2, -1});
    expectFaultOrder<Call>(
        {image.data(), image.step(), image.roi(), reinterpret_cast<Point2i *>(count + 1), 40, count, PeakSquare, 3,
         scratch.data()},
        faults,
        [](const Call &c) {
            return findPeaks<T>(static_cast<const T *>(c.src), c.step, c.roi, T{0}, c.peaks, c.capacity, c.count,
                                c.neighbourhood, c.border, c.buffer);
        },
        [&] { return std::vector<std::uint8_t>(outputs.data(), outputs.data() + outputs.size()); });
    EXPECT_EQ(*count, 0) << "a border of half the height leaves nothing to examine";

    // 1.5 is half of 3.
    const auto small = filled<T>(3, 3, 1);
    EXPECT_EQ(findPeaks<T>(small.data(), small.step(), {3, 3}, T{0}, reinterpret_cast<Point2i *>(count + 1), 1, count,
                           0, 2, scratch.data()),
              StatusBadSize);
    // Row bytes that wrap in 32 bits.
    EXPECT_EQ(findPeaks<T>(small.data(), 12, {0x40000003, 3}, T{0}, reinterpret_cast<Point2i *>(count + 1), 1, count, 0,
                           1, scratch.data()),
              StatusBadStep);
}

TEST(FindPeaks, StatusesInTheOrderOfTheChecks) {
    checkStatuses<std::int32_t>();
    checkStatuses<float>();
}

TEST(FindPeaks, ScratchSizes) {
    for (const auto query : {rvxiFindPeaks3x3GetBufferSize_32s_C1R, rvxiFindPeaks3x3GetBufferSize_32f_C1R}) {
        std::int32_t size = -1;
        for (const std::int32_t width : {1, 2, 3, 4, 640, 1919, 60000000}) {
            ASSERT_EQ(query(width, &size), StatusOk);
            EXPECT_EQ(size, scratchSize(width));
        }
    }
}

} // namespace
