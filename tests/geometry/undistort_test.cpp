// Lens undistortion against the formulas in their plainest form, bit for bit; every image ends (or begins) at an
// unmapped page.
#include "support/guarded.h"
#include "support/status_table.h"

#include "rvxcv.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

using namespace support;

struct Lens {
    float fx, fy, cx, cy, k1, k2, p1 = 0, p2 = 0;
};

struct Position {
    float x, y;
};

Position plainPosition(const Lens &lens, std::int64_t column, std::int64_t row) {
    const auto x = static_cast<float>(column), y = static_cast<float>(row);
    const float dx = x - lens.cx, dy = y - lens.cy;
    const float perFx = 1.0f / lens.fx, perFy = 1.0f / lens.fy;
    const float xn = dx * perFx, yn = dy * perFy;
    const float r2 = xn * xn + yn * yn;
    float t = (lens.k2 * r2 + lens.k1) * r2;
    if (lens.p1 == 0.0f && lens.p2 == 0.0f) {
        return {t * dx + x, t * dy + y};
    }
    t = (t + 2.0f * lens.p2 * xn) + 2.0f * lens.p1 * yn;
    const float gx = lens.fx * lens.p2, gy = lens.fy * lens.p1;
    return {(t * dx + gx * r2) + x, (t * dy + gy * r2) + y};
}

// Lenses that bend a picture of this size a little, as it is, far out of the picture, to infinity and to nowhere.
Lens someLens(Rng &rng, std::int64_t width, std::int64_t height) {
    const auto unit = [&] { return static_cast<float>(uniform(rng, -1000, 1000)) * 1e-3f; };
    const auto w = static_cast<float>(width), h = static_cast<float>(height);
    Lens lens{0.9f * w + 1,  0.8f * w + 1, (0.5f + 0.2f * unit()) * w, (0.5f + 0.2f * unit()) * h,
              0.4f * unit(), 0.1f * unit()};
    float *const member[] = {&lens.fx, &lens.fy, &lens.cx, &lens.cy, &lens.k1, &lens.k2};
    constexpr float special[] = {NAN, INFINITY, -INFINITY, 1e-42f, 1e38f, -3.4e38f, 1e-30f, 3e9f};
    switch (uniform(rng, 0, 7)) {
    case 0: // whole pixels, the last row and column included
        lens.k1 = lens.k2 = 0;
        break;
    case 1:
        *member[uniform(rng, 0, 5)] = special[uniform(rng, 0, 7)];
        break;
    case 2:
        lens.k1 *= 1e6f;
        lens.k2 *= 1e20f;
        break;
    case 3: // whole and half pixels: ties, and positions exactly on the edges
        lens = {1,     1, static_cast<float>(uniform(rng, 0, width)), static_cast<float>(uniform(rng, 0, height)),
                -0.5f, 0};
        break;
    case 4: // mirrored
        lens.fx = -lens.fx;
        lens.k1 = -2;
        break;
    default:
        break;
    }
    return lens;
}

Lens withTangents(Rng &rng, Lens lens) {
    constexpr float tangents[] = {0.0f, -0.0f, 1e-3f, -0.02f, 1e-45f, 3e38f, NAN, INFINITY};
    lens.p1 = tangents[uniform(rng, 0, 7)];
    lens.p2 = tangents[uniform(rng, 0, 7)];
    return lens;
}

StatusCode createMap(GuardedImage<float> &x, GuardedImage<float> &y, std::uint8_t *buffer, const Lens &lens) {
    return rvxiCreateMapCameraUndistort_32f_C1R(x.data(), x.step(), y.data(), y.step(), x.roi(), buffer, lens.fx,
                                                lens.fy, lens.cx, lens.cy, lens.k1, lens.k2, lens.p1, lens.p2);
}

GuardedBuffer reportedBuffer(RoiSize roi) {
    std::int32_t bytes = -1;
    EXPECT_EQ(rvxiUndistortGetSize(roi, &bytes), StatusOk);
    EXPECT_EQ(bytes, (roi.width + 3) / 4 * 4 * 24 + 32);
    return GuardedBuffer(bytes);
}

void checkMap(std::int64_t width, std::int64_t height, const Lens &lens, GuardedImage<float>::Layout xLayout,
              GuardedImage<float>::Layout yLayout, bool buffered) {
    GuardedImage<float> x(width, height, xLayout), y(width, height, yLayout);
    GuardedBuffer buffer = reportedBuffer(x.roi());
    ASSERT_EQ(createMap(x, y, buffered ? buffer.data() : nullptr, lens), StatusOk);
    const auto told = testing::Message() << lens.fx << " " << lens.fy << " " << lens.cx << " " << lens.cy << " "
                                         << lens.k1 << " " << lens.k2 << " " << lens.p1 << " " << lens.p2;
    ASSERT_TRUE(imageIs(x, [&](auto i, auto j) { return plainPosition(lens, i, j).x; })) << told;
    ASSERT_TRUE(imageIs(y, [&](auto i, auto j) { return plainPosition(lens, i, j).y; })) << told;
}

TEST(CreateMapCameraUndistort, EveryWidthAndLens) {
    Rng rng = makeRng("lens maps");
    for (std::int64_t width = 1; width <= 37; ++width) {
        for (int salt = 0; salt < 24; ++salt) {
            const Lens lens = withTangents(rng, someLens(rng, width, 5));
            ASSERT_NO_FATAL_FAILURE(checkMap(width, 1 + salt % 5, salt % 3 != 0 ? lens : someLens(rng, width, 5),
                                             {.padding = 4 * (salt % 3), .skew = salt % 5},
                                             {.padding = 4 * (salt % 2), .guard = Guard::before}, salt % 2 != 0));
        }
    }
}

// From 131072 pixels on, aligned rows are written past the caches.
TEST(CreateMapCameraUndistort, LargeMapsOnEveryAlignment) {
    Rng rng = makeRng("large maps");
    for (const std::int64_t width : {512, 516, 525, 1283}) {
        const Lens radial = someLens(rng, width, 257), tangential = withTangents(rng, radial);
        const std::int64_t toSixteen = (4 - width % 4) % 4 * 4;
        for (const auto &[padding, skew] : {std::array{0, 0}, {16, 16}, {4, 0}, {0, 8}}) {
            ASSERT_NO_FATAL_FAILURE(checkMap(width, 257, radial, {.padding = toSixteen, .guard = Guard::before},
                                             {.padding = toSixteen + padding, .skew = skew}, true));
            ASSERT_NO_FATAL_FAILURE(checkMap(width, 257, tangential, {.padding = toSixteen + padding, .skew = skew},
                                             {.padding = toSixteen, .guard = Guard::before}, false));
        }
    }
}

// Columns are numbers, not steps: beyond 2^24 the nearest floats.
TEST(CreateMapCameraUndistort, ColumnsBeyondExactFloats) {
    GuardedImage<float> x((1 << 24) + 21, 1), y(x.width(), 1);
    const Lens lens{3e6f, 2e6f, 8e6f, 1, -0.01f, 0.002f, 1e-4f, -2e-4f};
    ASSERT_EQ(createMap(x, y, nullptr, lens), StatusOk);
    for (std::int64_t i = (1 << 24) - 20; i < x.width(); ++i) {
        ASSERT_EQ(x.at(i, 0), plainPosition(lens, i, 0).x) << i;
        ASSERT_EQ(y.at(i, 0), plainPosition(lens, i, 0).y) << i;
    }
}

// ----------------------------------------------------------------------------------------------------------- Images

template <class T>
using Undistort = StatusCode (*)(const T *, int32_t, T *, int32_t, RoiSize, uint8_t *, float, float, float, float,
                                 float, float);

template <class T_, int channels_, Undistort<T_> function_> struct Member {
    using T = T_;
    static constexpr int channels = channels_;
    static constexpr Undistort<T> function = function_;
};
using Members = testing::Types<
    Member<std::uint8_t, 1, rvxiUndistortRadial_8u_C1R>, Member<std::uint8_t, 3, rvxiUndistortRadial_8u_C3R>,
    Member<std::uint16_t, 1, rvxiUndistortRadial_16u_C1R>, Member<std::uint16_t, 3, rvxiUndistortRadial_16u_C3R>,
    Member<float, 1, rvxiUndistortRadial_32f_C1R>, Member<float, 3, rvxiUndistortRadial_32f_C3R>>;

// `pixel(x, y)` is the source's channel of interest.
template <class T, class Pixel>
T plainSample(const Pixel &pixel, Position at, std::int64_t width, std::int64_t height) {
    if (!(at.x >= 0 && at.y >= 0 && static_cast<double>(at.x) <= static_cast<double>(width - 1) &&
          static_cast<double>(at.y) <= static_cast<double>(height - 1))) {
        return 0;
    }
    const auto ix = static_cast<std::int64_t>(at.x), iy = static_cast<std::int64_t>(at.y);
    const float a = at.x - static_cast<float>(ix), b = at.y - static_cast<float>(iy);
    const auto joined = [&](std::int64_t row) {
        const auto left = static_cast<float>(pixel(ix, row));
        return a > 0 ? std::fma(a, static_cast<float>(pixel(ix + 1, row)) - left, left) : left;
    };
    const float upper = joined(iy), value = b > 0 ? std::fma(b, joined(iy + 1) - upper, upper) : upper;
    return std::is_floating_point_v<T> ? static_cast<T>(value) : static_cast<T>(std::nearbyintf(value));
}

template <class M> class UndistortRadial : public testing::Test {
public:
    using T = typename M::T;
    using Image = GuardedImage<T>;

    static StatusCode call(const T *src, std::int32_t srcStep, Image &dst, std::uint8_t *buffer, const Lens &lens) {
        return M::function(src, srcStep, dst.data(), dst.step(), dst.roi(M::channels), buffer, lens.fx, lens.fy,
                           lens.cx, lens.cy, lens.k1, lens.k2);
    }
    static testing::AssertionResult isUndistorted(const Image &dst, const Image &src, const Lens &lens) {
        return imageIs(dst, [&](std::int64_t i, std::int64_t j) {
            const std::int64_t x = i / M::channels, channel = i % M::channels;
            return plainSample<T>([&](auto u, auto v) { return src.at(u * M::channels + channel, v); },
                                  plainPosition(lens, x, j), src.width() / M::channels, src.height());
        });
    }
    static void check(std::int64_t width, std::int64_t height, Rng &rng, int salt) {
        // Steps of 16u images may be odd.
        const int unit = sizeof(T) == 4 ? 4 : 1;
        const Guard guard = salt % 2 != 0 ? Guard::before : Guard::behind;
        Image src(width * M::channels, height, {.padding = unit * (salt % 3), .guard = guard, .skew = salt % 7 % 5});
        Image dst(width * M::channels, height, {.padding = unit * (salt % 2), .guard = guard, .skew = salt % 3});
        src.fill(rng, allContents[salt % 5]);
        const Lens lens = someLens(rng, width, height);
        GuardedBuffer buffer = reportedBuffer(dst.roi(M::channels));
        buffer.spoil();
        ASSERT_EQ(call(src.data(), src.step(), dst, salt % 4 < 2 ? buffer.data() : nullptr, lens), StatusOk);
        ASSERT_TRUE(isUndistorted(dst, src, lens))
            << lens.fx << " " << lens.fy << " " << lens.cx << " " << lens.cy << " " << lens.k1 << " " << lens.k2;
    }
};
TYPED_TEST_SUITE(UndistortRadial, Members);

TYPED_TEST(UndistortRadial, EverySizeAndLens) {
    Rng rng = makeRng("undistort sizes");
    int salt = 0;
    for (std::int64_t width = 1; width <= 37; ++width) {
        for (std::int64_t height = 1; height <= 24; ++height, ++salt) {
            ASSERT_NO_FATAL_FAILURE(TestFixture::check(width, height, rng, salt));
        }
    }
    for (const std::int64_t width : {125, 643, 1283}) {
        for (int again = 0; again < 8; ++again, ++salt) {
            ASSERT_NO_FATAL_FAILURE(TestFixture::check(width, 61, rng, salt));
        }
    }
}

// Rows so far apart that offsets do not fit in 32 bits; only the rows themselves are ever touched.
TYPED_TEST(UndistortRadial, RowsFarApart) {
    using Element = typename TypeParam::T;
    Rng rng = makeRng("undistort far");
    const Lens lens{40, 30, 20, 2, -0.1f, 0.01f};
    GuardedImage<Element> src(43 * TypeParam::channels, 5), dst(src.width(), 5);
    src.fill(rng, Contents::random);
    constexpr std::int32_t step = 1 << 30;
    GuardedBuffer far(4 * std::int64_t{step} + src.step());
    for (std::int64_t y = 0; y < 5; ++y) {
        std::memcpy(far.data() + y * step, src.data() + y * src.width(), static_cast<std::size_t>(src.step()));
    }
    ASSERT_EQ(this->call(reinterpret_cast<const Element *>(far.data()), step, dst, nullptr, lens), StatusOk);
    EXPECT_TRUE(this->isUndistorted(dst, src, lens));
}

// The last columns of very wide images are no floats: the nearest ones may lie outside.
TEST(UndistortRadialWide, ColumnsBeyondExactFloats) {
    if (sanitized()) {
        GTEST_SKIP() << "takes half a minute";
    }
    Rng rng = makeRng("undistort wide");
    for (const std::int64_t width : {(1 << 24) + 3, (1 << 24) + 4}) {
        GuardedImage<std::uint8_t> src(width, 2), dst(width, 2);
        src.fill(rng, Contents::random);
        const Lens lens{3e6f, 2e6f, 8e6f, 1, width % 2 != 0 ? 0.0f : -1e-8f, 0};
        ASSERT_EQ(rvxiUndistortRadial_8u_C1R(src.data(), src.step(), dst.data(), dst.step(), src.roi(), nullptr,
                                             lens.fx, lens.fy, lens.cx, lens.cy, lens.k1, lens.k2),
                  StatusOk);
        for (std::int64_t i = 0; i < 80; ++i) {
            const std::int64_t x = width - 1 - i / 2, y = i % 2;
            ASSERT_EQ(dst.at(x, y), plainSample<std::uint8_t>([&](auto u, auto v) { return src.at(u, v); },
                                                              plainPosition(lens, x, y), width, 2))
                << x << " of " << width;
        }
    }
}

// ----------------------------------------------------------------------------------------------------------- Checks

struct Call {
    const void *first;
    std::int32_t firstStep;
    void *second;
    std::int32_t secondStep;
    RoiSize roi;
    Lens lens;
};

// The faults in order; `multiple` where steps must be multiples of 4. 2^30 pixels a row wrap in 32 bits.
std::vector<Fault<Call>> faultsOf(bool multiple) {
    std::vector<Fault<Call>> faults = {
        {"first null", StatusNullPointer, [](Call &c) { c.first = nullptr; }},
        {"second null", StatusNullPointer, [](Call &c) { c.second = nullptr; }},
        {"no width", StatusBadSize, [](Call &c) { c.roi.width = 0; }},
        {"negative height", StatusBadSize, [](Call &c) { c.roi.height = -1; }},
        {"first step", StatusBadStep, [](Call &c) { c.firstStep = 4; }},
        {"second step", StatusBadStep, [](Call &c) { c.secondStep = 4; }},
        {"wide", StatusBadStep, [](Call &c) { c.roi.width = INT32_MAX; }},
    };
    if (multiple) {
        faults.push_back({"odd first step", StatusStepNotMultiple, [](Call &c) { c.firstStep |= 2; }});
        faults.push_back({"odd second step", StatusStepNotMultiple, [](Call &c) { c.secondStep |= 1; }});
    }
    faults.push_back({"fx 0", StatusBadArgument, [](Call &c) { c.lens.fx = -0.0f; }});
    faults.push_back({"fy 0", StatusBadArgument, [](Call &c) { c.lens.fy = 0.0f; }});
    return faults;
}

TYPED_TEST(UndistortRadial, StatusesInOrder) {
    using Element = typename TypeParam::T;
    GuardedImage<Element> src(5 * TypeParam::channels, 3), dst(5 * TypeParam::channels, 3);
    const Call good{src.data(),           src.step(), dst.data(), dst.step(), src.roi(TypeParam::channels),
                    {4, 4, 2, 1, 0.1f, 0}};
    expectFaultOrder<Call>(
        good, faultsOf(sizeof(Element) == 4),
        [](const Call &c) {
            return TypeParam::function(static_cast<const Element *>(c.first), c.firstStep,
                                       static_cast<Element *>(c.second), c.secondStep, c.roi, nullptr, c.lens.fx,
                                       c.lens.fy, c.lens.cx, c.lens.cy, c.lens.k1, c.lens.k2);
        },
        [&] { return dst.bytes(); });
}

TEST(CreateMapCameraUndistort, StatusesInOrder) {
    GuardedImage<float> x(5, 3), y(5, 3);
    const Call good{x.data(), x.step(), y.data(), y.step(), x.roi(), {4, 4, 2, 1, 0.1f, 0}};
    expectFaultOrder<Call>(
        good, faultsOf(true),
        [&](const Call &c) {
            auto *first = c.first != nullptr ? x.data() : nullptr;
            return rvxiCreateMapCameraUndistort_32f_C1R(first, c.firstStep, static_cast<float *>(c.second),
                                                        c.secondStep, c.roi, nullptr, c.lens.fx, c.lens.fy, c.lens.cx,
                                                        c.lens.cy, c.lens.k1, c.lens.k2, 0, 0);
        },
        [&] {
            std::vector<std::uint8_t> bytes = x.bytes(), more = y.bytes();
            bytes.insert(bytes.end(), more.begin(), more.end());
            return bytes;
        });
}

TEST(UndistortGetSize, StatusesAndSaturation) {
    std::int32_t bytes = -3;
    EXPECT_EQ(rvxiUndistortGetSize({0, 5}, nullptr), StatusNullPointer);
    EXPECT_EQ(rvxiUndistortGetSize({0, 5}, &bytes), StatusBadSize);
    EXPECT_EQ(rvxiUndistortGetSize({5, 0}, &bytes), StatusBadSize);
    EXPECT_EQ(rvxiUndistortGetSize({89478481, 1}, &bytes), StatusBadSize);
    EXPECT_EQ(rvxiUndistortGetSize({INT32_MAX, INT32_MAX}, &bytes), StatusBadSize);
    EXPECT_EQ(bytes, -3);
    EXPECT_EQ(rvxiUndistortGetSize({89478480, INT32_MAX}, &bytes), StatusOk); // 24 bytes a column
    EXPECT_EQ(bytes, 89478480 * 24 + 32);
}

} // namespace
