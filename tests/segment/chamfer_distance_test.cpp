// Chamfer distances against the cheapest paths, found step by step; floats with fractional costs against the two
// sequential passes that define them.
#include "segment/plain_distance.h"
#include "support/status_table.h"

#include <algorithm>
#include <array>

namespace {

using namespace support;

constexpr float largest = std::numeric_limits<float>::max();
constexpr float infinity = std::numeric_limits<float>::infinity();

struct Step {
    int dx, dy, kind; // 0 straight, 1 diagonal, 2 knight
};

std::vector<Step> steps(int maskSize) {
    std::vector<Step> all;
    for (int dy = -2; dy <= 2; ++dy) {
        for (int dx = -2; dx <= 2; ++dx) {
            const int length = dx * dx + dy * dy;
            if (length == 1 || length == 2 || (length == 5 && maskSize == 5)) {
                all.push_back({dx, dy, length == 1 ? 0 : length == 2 ? 1 : 2});
            }
        }
    }
    return all;
}

// The cost of the cheapest path to every pixel, in doubles: exact for integer costs. -1: none leads there.
std::vector<double> cheapestPaths(const Picture &pixels, std::int64_t width, std::int64_t height, int maskSize,
                                  const std::array<double, 3> &costs) {
    constexpr double never = std::numeric_limits<double>::infinity();
    std::vector<double> cost(pixels.size());
    std::transform(pixels.begin(), pixels.end(), cost.begin(), [](auto p) { return p == 0 ? 0 : never; });
    const std::vector<Step> all = steps(maskSize);
    // From every corner in turn, until nothing changes.
    for (bool changed = true; changed;) {
        changed = false;
        for (std::int64_t i = 0; i < 4 * height * width; ++i) {
            const std::int64_t turn = i / (height * width), at = i % (height * width);
            const std::int64_t y = turn & 1 ? height - 1 - at / width : at / width;
            const std::int64_t x = turn & 2 ? width - 1 - at % width : at % width;
            double &here = cost[static_cast<std::size_t>(y * width + x)];
            for (const Step &s : all) {
                const std::int64_t u = x - s.dx, v = y - s.dy;
                if (u < 0 || u >= width || v < 0 || v >= height) {
                    continue;
                }
                const double with =
                    cost[static_cast<std::size_t>(v * width + u)] + costs[static_cast<std::size_t>(s.kind)];
                if (with < here) {
                    here = with;
                    changed = true;
                }
            }
        }
    }
    std::replace(cost.begin(), cost.end(), never, -1.0);
    return cost;
}

// The two passes of the header.
std::vector<float> twoPasses(const Picture &pixels, std::int64_t width, std::int64_t height, int maskSize,
                             const std::array<float, 3> &costs) {
    std::vector<float> distance(pixels.size());
    std::transform(pixels.begin(), pixels.end(), distance.begin(), [](auto p) { return p == 0 ? 0.0f : largest; });
    const std::vector<Step> all = steps(maskSize);
    for (const int direction : {1, -1}) {
        for (std::int64_t i = 0; i < width * height; ++i) {
            const std::int64_t at = direction > 0 ? i : width * height - 1 - i, x = at % width, y = at / width;
            for (const Step &s : all) {
                const std::int64_t u = x - s.dx, v = y - s.dy;
                const bool visited = direction * s.dy > 0 || (s.dy == 0 && direction * s.dx > 0);
                if (visited && u >= 0 && u < width && v >= 0 && v < height) {
                    const float with =
                        distance[static_cast<std::size_t>(v * width + u)] + costs[static_cast<std::size_t>(s.kind)];
                    distance[static_cast<std::size_t>(at)] = std::min(distance[static_cast<std::size_t>(at)], with);
                }
            }
        }
    }
    return distance;
}

template <class T> using CostOf = std::conditional_t<std::is_same_v<T, float>, float, std::int32_t>;
template <class T>
using Transform = StatusCode (*)(const std::uint8_t *, std::int32_t, T *, std::int32_t, RoiSize, const CostOf<T> *);

Transform<std::uint8_t> member(std::uint8_t, int maskSize) {
    return maskSize == 3 ? rvxiDistanceTransform_3x3_8u_C1R : rvxiDistanceTransform_5x5_8u_C1R;
}
Transform<std::uint16_t> member(std::uint16_t, int maskSize) {
    return maskSize == 3 ? rvxiDistanceTransform_3x3_8u16u_C1R : rvxiDistanceTransform_5x5_8u16u_C1R;
}
Transform<float> member(float, int maskSize) {
    return maskSize == 3 ? rvxiDistanceTransform_3x3_8u32f_C1R : rvxiDistanceTransform_5x5_8u32f_C1R;
}

template <class T> std::string named(int maskSize, const std::array<CostOf<T>, 3> &costs) {
    return std::to_string(maskSize) + "x" + std::to_string(maskSize) + " " + std::to_string(8 * sizeof(T)) +
           " bits, costs " + std::to_string(costs[0]) + " " + std::to_string(costs[1]) + " " + std::to_string(costs[2]);
}

// A call with the costs, and only as many as the mask has, before a guard page.
template <class T>
GuardedImage<T> distances(const GuardedImage<std::uint8_t> &src, int maskSize, const std::array<CostOf<T>, 3> &costs,
                          typename GuardedImage<T>::Layout layout = {}) {
    GuardedImage<T> dst(src.width(), src.height(), layout);
    GuardedImage<CostOf<T>> metrics(maskSize == 3 ? 2 : 3, 1, {.skew = layout.skew});
    for (std::int64_t i = 0; i < metrics.width(); ++i) {
        metrics.set(i, 0, costs[static_cast<std::size_t>(i)]);
    }
    EXPECT_EQ(member(T{}, maskSize)(src.data(), src.step(), dst.data(), dst.step(), src.roi(), metrics.data()),
              StatusOk);
    return dst;
}

template <class T> T limited(double cost) {
    constexpr double limit = std::numeric_limits<T>::max();
    return cost < 0 || cost > limit ? std::numeric_limits<T>::max() : static_cast<T>(cost);
}

template <class T>
void expectCheapest(const Picture &pixels, std::int64_t width, std::int64_t height, int maskSize,
                    const std::array<std::int32_t, 3> &costs, const std::vector<double> &want, int salt = 0) {
    const Guard guard = salt % 2 != 0 ? Guard::before : Guard::behind;
    GuardedImage<std::uint8_t> src(width, height, {.padding = salt % 3, .guard = guard});
    draw(src, pixels);
    std::array<CostOf<T>, 3> given;
    std::transform(costs.begin(), costs.end(), given.begin(), [](auto c) { return static_cast<CostOf<T>>(c); });
    constexpr auto size = static_cast<std::int64_t>(sizeof(T));
    const auto got = distances<T>(src, maskSize, given,
                                  {.padding = size * ((salt + 1) % 3),
                                   .guard = guard,
                                   .skew = guard == Guard::behind && salt % 4 == 0 ? size / 2 : 0});
    const auto at = [&](std::int64_t x, std::int64_t y) {
        return limited<T>(want[static_cast<std::size_t>(y * width + x)]);
    };
    ASSERT_TRUE(imageIs(got, at)) << named<T>(maskSize, given);
    if constexpr (std::is_same_v<T, std::uint8_t>) {
        const auto inPlace = maskSize == 3 ? rvxiDistanceTransform_3x3_8u_C1IR : rvxiDistanceTransform_5x5_8u_C1IR;
        ASSERT_EQ(inPlace(src.data(), src.step(), src.roi(), given.data()), StatusOk);
        ASSERT_TRUE(imageIs(src, at)) << "in place, " << named<T>(maskSize, given);
    }
}

void expectAllCheapest(Shape shape, std::int64_t width, std::int64_t height, int maskSize,
                       const std::array<std::int32_t, 3> &costs, int salt) {
    Rng rng = makeRng("chamfer", static_cast<std::uint64_t>(salt));
    const Picture pixels = picture(shape, width, height, rng);
    const std::vector<double> want =
        cheapestPaths(pixels, width, height, maskSize,
                      {static_cast<double>(costs[0]), static_cast<double>(costs[1]), static_cast<double>(costs[2])});
    ASSERT_NO_FATAL_FAILURE(expectCheapest<std::uint8_t>(pixels, width, height, maskSize, costs, want, salt));
    ASSERT_NO_FATAL_FAILURE(expectCheapest<std::uint16_t>(pixels, width, height, maskSize, costs, want, salt));
    ASSERT_NO_FATAL_FAILURE(expectCheapest<float>(pixels, width, height, maskSize, costs, want, salt));
}

// Costs of every kind of shape: usual ones; cheap diagonals; cheap knights; all alike; each far above the others.
constexpr std::array<std::int32_t, 3> costTable[] = {
    {1, 1, 2}, {1, 2, 3},  {5, 7, 11},  {2, 3, 5},   {3, 4, 7},  {5, 7, 10}, {2, 1, 9},
    {7, 2, 5}, {9, 4, 40}, {10, 10, 1}, {40, 30, 1}, {1, 40, 1}, {40, 1, 1}, {10, 9, 13},
    {4, 6, 7}, {3, 4, 4},  {6, 5, 4},   {2, 2, 3},   {3, 7, 5},  {13, 5, 9},
};

TEST(ChamferDistance, EverySmallSizeAndShape) {
    int salt = 0;
    for (std::int64_t height = 1; height <= 6; ++height) {
        for (std::int64_t width = 1; width <= 7; ++width) {
            for (const auto &costs : costTable) {
                const Shape shape = allShapes[static_cast<std::size_t>(salt) % std::size(allShapes)];
                for (const int maskSize : {3, 5}) {
                    ASSERT_NO_FATAL_FAILURE(expectAllCheapest(shape, width, height, maskSize, costs, salt));
                    ASSERT_NO_FATAL_FAILURE(expectAllCheapest(Shape::corner, width, height, maskSize, costs, salt));
                }
                ++salt;
            }
        }
    }
}

// Every triple of small costs where steps have little room: from a corner and from inside.
TEST(ChamferDistance, EveryRatioOfCostsInNarrowRegions) {
    int salt = 0;
    for (const auto &[width, height] : {std::pair{2, 23}, {21, 2}, {3, 19}, {19, 3}, {3, 3}, {4, 4}, {11, 5}, {6, 9}}) {
        for (std::int32_t a = 1; a <= 6; ++a) {
            for (std::int32_t b = 1; b <= 6; ++b) {
                for (std::int32_t c = 1; c <= 9; ++c) {
                    const Shape shape = ++salt % 2 != 0 ? Shape::corner : salt % 4 != 0 ? Shape::rare : Shape::center;
                    ASSERT_NO_FATAL_FAILURE(expectAllCheapest(shape, width, height, 5, {a, b, c}, salt));
                }
            }
        }
    }
}

TEST(ChamferDistance, EveryWidthUpToTwoBlocks) {
    int salt = 0;
    for (std::int64_t width = 1; width <= 67; ++width) {
        for (const Shape shape : {Shape::corner, Shape::sparse, Shape::lastPixel, Shape::rare}) {
            const auto &costs = costTable[static_cast<std::size_t>(salt) % std::size(costTable)];
            ASSERT_NO_FATAL_FAILURE(expectAllCheapest(shape, width, 5 + salt % 14, 3 + salt % 4 / 2 * 2, costs, salt));
            ++salt;
        }
    }
}

TEST(ChamferDistance, LargerPictures) {
    int salt = 0;
    for (const Shape shape : allShapes) {
        for (const int maskSize : {3, 5}) {
            for (const std::size_t pick : {0u, 2u, 6u, 9u, 16u}) {
                ASSERT_NO_FATAL_FAILURE(expectAllCheapest(shape, 131, 37, maskSize, costTable[pick], ++salt));
            }
        }
    }
    ASSERT_NO_FATAL_FAILURE(expectAllCheapest(Shape::lastPixel, 1031, 3, 5, {3, 2, 4}, ++salt));
    ASSERT_NO_FATAL_FAILURE(expectAllCheapest(Shape::lastPixel, 2, 517, 5, {9, 5, 2}, ++salt));
    ASSERT_NO_FATAL_FAILURE(expectAllCheapest(Shape::corner, 517, 2, 5, {9, 5, 2}, ++salt));
}

// Sums and multiples of large costs pass the limit, and 32 bits.
TEST(ChamferDistance, CostsUpToTheLargestInteger) {
    constexpr std::int32_t most = INT32_MAX;
    const std::array<std::int32_t, 3> table[] = {
        {most, most, most}, {1, most, most},       {most, 1, most}, {most, most, 1},         {most, 2, 3},
        {255, 254, 200},    {65535, 40000, 30000}, {100, 150, 240}, {most / 2 + 1, most, 3}, {200, 255, 410}};
    int salt = 0;
    for (const auto &costs : table) {
        for (const auto &[width, height] : {std::pair{9, 7}, {70, 3}, {1, 5}, {2, 2}}) {
            for (const int maskSize : {3, 5}) {
                Rng rng = makeRng("large costs", static_cast<std::uint64_t>(++salt));
                const Picture pixels = picture(Shape::lastPixel, width, height, rng);
                const auto want = cheapestPaths(pixels, width, height, maskSize,
                                                {double(costs[0]), double(costs[1]), double(costs[2])});
                ASSERT_NO_FATAL_FAILURE(
                    expectCheapest<std::uint8_t>(pixels, width, height, maskSize, costs, want, salt));
                ASSERT_NO_FATAL_FAILURE(
                    expectCheapest<std::uint16_t>(pixels, width, height, maskSize, costs, want, salt));
            }
        }
    }
}

void expectTwoPasses(Shape shape, std::int64_t width, std::int64_t height, int maskSize,
                     const std::array<float, 3> &costs, int salt, int passesOf = 0) {
    Rng rng = makeRng("passes", static_cast<std::uint64_t>(salt));
    const Picture pixels = picture(shape, width, height, rng);
    GuardedImage<std::uint8_t> src(width, height, {.padding = salt % 3});
    draw(src, pixels);
    const auto got = distances<float>(
        src, maskSize, costs, {.padding = 4 * (salt % 2), .guard = salt % 5 < 2 ? Guard::before : Guard::behind});
    const auto want = twoPasses(pixels, width, height, passesOf == 0 ? maskSize : passesOf, costs);
    ASSERT_TRUE(imageIs(got, [&](auto x, auto y) { return want[static_cast<std::size_t>(y * width + x)]; }))
        << named<float>(maskSize, costs);
}

constexpr std::array<float, 3> fractions[] = {{0.955f, 1.3693f, 9.0f}, {1.0f, 1.4f, 2.1969f},
                                              {0.1f, 0.15f, 0.23f},    {1.0f, 1.4142135f, 2.236068f},
                                              {3.3f, 4.7f, 7.3f},      {1e-3f, 1.7e-3f, 2.6e-3f}};

TEST(ChamferDistance, FloatBitsAreThoseOfTwoPasses) {
    int salt = 0;
    for (std::int64_t width = 1; width <= 70; ++width) {
        for (const int maskSize : {3, 5}) {
            for (const Shape shape : {Shape::corner, Shape::sparse, Shape::lastPixel, Shape::center}) {
                const auto &costs = fractions[static_cast<std::size_t>(salt) % std::size(fractions)];
                ASSERT_NO_FATAL_FAILURE(expectTwoPasses(shape, width, 1 + salt % 41, maskSize, costs, salt));
                ++salt;
            }
        }
    }
    for (std::int64_t height = 1; height <= 67; ++height) {
        ASSERT_NO_FATAL_FAILURE(expectTwoPasses(Shape::corner, 150, height, 5, fractions[1], ++salt));
        ASSERT_NO_FATAL_FAILURE(expectTwoPasses(Shape::rare, 133, height, 3, fractions[0], ++salt));
    }
    for (const Shape shape : allShapes) {
        for (const auto &costs : fractions) {
            ASSERT_NO_FATAL_FAILURE(expectTwoPasses(shape, 217, 41, 3, costs, ++salt));
            ASSERT_NO_FATAL_FAILURE(expectTwoPasses(shape, 217, 41, 5, costs, ++salt));
        }
    }
}

// Costs at the ends of the float range; none gives NaN or infinity.
TEST(ChamferDistance, FloatCostsWithoutMeasure) {
    const std::array<float, 3> table[] = {{infinity, infinity, infinity}, {1.0f, infinity, infinity},
                                          {infinity, 1.0f, infinity},     {infinity, infinity, 1.0f},
                                          {largest, largest, largest},    {1e-45f, 1e-45f, 1e-45f},
                                          {3e38f, 3e38f, 3e38f},          {infinity, 1.0f, 1.0f}};
    int salt = 0;
    for (const auto &costs : table) {
        for (const auto &[width, height] : {std::pair{1, 1}, {1, 9}, {9, 1}, {2, 9}, {9, 2}, {3, 3}, {40, 21}}) {
            for (const int maskSize : {3, 5}) {
                Rng rng = makeRng("no measure", static_cast<std::uint64_t>(++salt));
                const Picture pixels = picture(salt % 2 != 0 ? Shape::corner : Shape::sparse, width, height, rng);
                GuardedImage<std::uint8_t> src(width, height);
                draw(src, pixels);
                const auto want = cheapestPaths(pixels, width, height, maskSize,
                                                {double(costs[0]), double(costs[1]), double(costs[2])});
                ASSERT_TRUE(imageIs(distances<float>(src, maskSize, costs), [&](auto x, auto y) {
                    return limited<float>(want[static_cast<std::size_t>(y * src.width() + x)]);
                })) << named<float>(maskSize, costs);
            }
        }
    }
}

// Knight steps that cannot shorten a path leave the 3x3 transform, whatever its shape.
TEST(ChamferDistance, LargeMaskHandsOver) {
    for (int salt = 0; salt < 20; ++salt) {
        ASSERT_NO_FATAL_FAILURE(expectTwoPasses(Shape::sparse, 77, 31, 5, {1.1f, 1.5f, 2.7f}, salt, 3));
        ASSERT_NO_FATAL_FAILURE(expectTwoPasses(Shape::corner, 77, 31, 5, {1.0f, 1.0f, 5.0f}, salt, 3));
        ASSERT_NO_FATAL_FAILURE(expectTwoPasses(Shape::corner, 39, 45, 5, {1.1f, 9.0f, 3.4f}, salt, 3));
    }
}

struct Call {
    const void *src;
    std::int32_t srcStep;
    void *dst;
    std::int32_t dstStep;
    RoiSize roi;
    const void *metrics;
};

template <class T> Faults<Call> callFaults(bool inPlace, int maskSize) {
    constexpr std::int64_t size = sizeof(T);
    Faults<Call> faults;
    if (!inPlace) {
        faults.nulls(&Call::src);
    }
    faults.nulls(&Call::dst, &Call::metrics).empty(&Call::roi);
    if (!inPlace) {
        faults.shortSteps(9, &Call::srcStep);
    }
    faults.shortSteps(size * 9, &Call::dstStep).values(StatusBadStep, &Call::roi, {{0x40000001, 5}});
    faults.unevenSteps(size * 9, size, &Call::dstStep);
    static constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    static constexpr CostOf<T> zero = 0;
    static constexpr CostOf<T> bad[][3] = {{zero, 1, 1}, {1, zero, 1}, {1, 1, zero}, {-1, 1, 1}, {1, -3, 1}};
    static constexpr float badFloats[][3] = {{-0.0f, 1, 1}, {nan, 1, 1}, {1, nan, 1}, {1, 1, nan}, {1, -infinity, 1}};
    for (int i = 0; i < 5; ++i) {
        if (maskSize == 5 || i != 2) {
            faults.values(StatusBadMetric, &Call::metrics, {bad[i]});
        }
        if (std::is_same_v<T, float> && (maskSize == 5 || i != 3)) {
            faults.values(StatusBadMetric, &Call::metrics, {badFloats[i]});
        }
    }
    return faults;
}

template <class T> void checkStatuses(int maskSize) {
    GuardedImage<std::uint8_t> src(9, 5);
    GuardedImage<T> dst(9, 5);
    const CostOf<T> metrics[3] = {1, 1, 2};
    expectFaultOrder<Call>(
        {src.data(), src.step(), dst.data(), dst.step(), src.roi(), metrics}, callFaults<T>(false, maskSize),
        [&](const Call &c) {
            return member(T{}, maskSize)(static_cast<const std::uint8_t *>(c.src), c.srcStep, static_cast<T *>(c.dst),
                                         c.dstStep, c.roi, static_cast<const CostOf<T> *>(c.metrics));
        },
        [&] { return dst.bytes(); });
}

TEST(ChamferDistance, StatusesInTheOrderOfTheChecks) {
    for (const int maskSize : {3, 5}) {
        checkStatuses<std::uint8_t>(maskSize);
        checkStatuses<std::uint16_t>(maskSize);
        checkStatuses<float>(maskSize);
        GuardedImage<std::uint8_t> image(9, 5);
        const std::int32_t metrics[3] = {1, 1, 2};
        const auto inPlace = maskSize == 3 ? rvxiDistanceTransform_3x3_8u_C1IR : rvxiDistanceTransform_5x5_8u_C1IR;
        expectFaultOrder<Call>(
            {nullptr, 0, image.data(), image.step(), image.roi(), metrics}, callFaults<std::uint8_t>(true, maskSize),
            [&](const Call &c) {
                return inPlace(static_cast<std::uint8_t *>(c.dst), c.dstStep, c.roi,
                               static_cast<const std::int32_t *>(c.metrics));
            },
            [&] { return image.bytes(); });
    }
}

TEST(DistanceMask, UsualCosts) {
    const std::int32_t integers[6][3] = {{1, 1, -7}, {1, 2, -7}, {2, 3, -7}, {1, 1, 2}, {1, 2, 3}, {5, 7, 11}};
    const std::uint32_t floats[6][3] = {{0x3f800000, 0x3f800000, 0},          {0x3f800000, 0x40000000, 0},
                                        {0x3f747ae1, 0x3faf4539, 0},          {0x3f800000, 0x3f800000, 0x40000000},
                                        {0x3f800000, 0x40000000, 0x40400000}, {0x3f800000, 0x3fb33333, 0x400c9a02}};
    for (std::int32_t i = 0; i < 6; ++i) {
        const std::int32_t kerSize = i < 3 ? 3 : 5, norm = i % 3;
        std::int32_t metrics[3] = {-7, -7, -7};
        EXPECT_EQ(rvxiGetDistanceTransformMask_32s(kerSize, norm, metrics), StatusOk);
        EXPECT_TRUE(std::equal(metrics, metrics + 3, integers[i])) << kerSize << " " << norm;
        float costs[2][3] = {};
        EXPECT_EQ(rvxiGetDistanceTransformMask_32f(kerSize, norm, costs[0]), StatusOk);
        EXPECT_EQ(rvxiGetDistanceTransformMask(10 * kerSize + norm, costs[1]), StatusOk);
        EXPECT_EQ(std::memcmp(costs[0], floats[i], sizeof costs[0]), 0) << kerSize << " " << norm;
        EXPECT_EQ(std::memcmp(costs[1], floats[i], sizeof costs[1]), 0) << kerSize << " " << norm;
    }
}

TEST(DistanceMask, StatusesInTheOrderOfTheChecks) {
    std::int32_t integers[3] = {-7, -7, -7};
    float floats[3] = {-7, -7, -7};
    EXPECT_EQ(rvxiGetDistanceTransformMask_32s(4, 3, nullptr), StatusNullPointer);
    EXPECT_EQ(rvxiGetDistanceTransformMask_32f(4, 3, nullptr), StatusNullPointer);
    EXPECT_EQ(rvxiGetDistanceTransformMask(53, nullptr), StatusBadArgument);
    EXPECT_EQ(rvxiGetDistanceTransformMask(42, nullptr), StatusNullPointer);
    for (const std::int32_t kerSize : {-3, 0, 2, 4, 6, 33, 55}) {
        EXPECT_EQ(rvxiGetDistanceTransformMask_32s(kerSize, 3, integers), StatusBadSize);
        EXPECT_EQ(rvxiGetDistanceTransformMask_32f(kerSize, 3, floats), StatusBadSize);
    }
    for (const std::int32_t norm : {-1, 3, 4}) {
        EXPECT_EQ(rvxiGetDistanceTransformMask_32s(3, norm, integers), StatusBadArgument);
        EXPECT_EQ(rvxiGetDistanceTransformMask_32f(5, norm, floats), StatusBadArgument);
    }
    for (const std::int32_t maskType : {53, 39, 43, -1, -31, INT32_MAX, INT32_MIN}) {
        EXPECT_EQ(rvxiGetDistanceTransformMask(maskType, floats), StatusBadArgument) << maskType;
    }
    for (const std::int32_t maskType : {42, 0, 2, 101, -30, -50}) {
        EXPECT_EQ(rvxiGetDistanceTransformMask(maskType, floats), StatusBadSize) << maskType;
    }
    EXPECT_EQ(integers[0], -7);
    EXPECT_EQ(floats[0], -7);
}

} // namespace
