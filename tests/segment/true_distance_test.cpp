// The exact distance against the nearest zero pixel, found among all of them, and the root in extended precision.
#include "segment/plain_distance.h"
#include "support/status_table.h"

#include <algorithm>

namespace {

using namespace support;

std::int64_t scratchSize(std::int64_t width, std::int64_t height) {
    return 24 * ((std::max(width, height) + 3) / 4 * 4) + 56;
}

// A call with scratch of exactly the promised size that ends or starts at a guard page.
GuardedImage<float> trueDistances(const GuardedImage<std::uint8_t> &src, GuardedImage<float>::Layout layout = {}) {
    GuardedImage<float> dst(src.width(), src.height(), layout);
    GuardedBuffer scratch(scratchSize(src.width(), src.height()) + layout.skew, layout.guard);
    scratch.spoil();
    EXPECT_EQ(rvxiTrueDistanceTransform_8u32f_C1R(src.data(), src.step(), dst.data(), dst.step(), src.roi(),
                                                  scratch.data() + layout.skew),
              StatusOk);
    return dst;
}

// The nearest zero's squared distance; -1 without one. A few zeros are compared one by one, more of them by rows
// outwards until the row alone is farther.
class Zeros {
public:
    Zeros(const Picture &pixels, std::int64_t width, std::int64_t height) : rows_(static_cast<std::size_t>(height)) {
        for (std::int64_t i = 0; i < width * height; ++i) {
            if (pixels[static_cast<std::size_t>(i)] == 0) {
                rows_[static_cast<std::size_t>(i / width)].push_back(i % width);
                all_.emplace_back(i % width, i / width);
            }
        }
    }

    std::int64_t nearest(std::int64_t x, std::int64_t y) const {
        std::int64_t best = -1;
        const auto consider = [&](std::int64_t u, std::int64_t v) {
            const std::int64_t squared = (u - x) * (u - x) + (v - y) * (v - y);
            best = best < 0 ? squared : std::min(best, squared);
        };
        if (all_.size() < 60) {
            for (const auto &[u, v] : all_) {
                consider(u, v);
            }
            return best;
        }
        const auto height = static_cast<std::int64_t>(rows_.size());
        for (std::int64_t dy = 0; best < 0 || dy * dy < best; ++dy) {
            for (const std::int64_t v : {y - dy, y + dy}) {
                if (v >= 0 && v < height) {
                    const auto &row = rows_[static_cast<std::size_t>(v)];
                    const auto right = std::lower_bound(row.begin(), row.end(), x);
                    if (right != row.end()) {
                        consider(*right, v);
                    }
                    if (right != row.begin()) {
                        consider(*(right - 1), v);
                    }
                }
            }
        }
        return best;
    }

private:
    std::vector<std::vector<std::int64_t>> rows_;
    std::vector<std::pair<std::int64_t, std::int64_t>> all_;
};

float root(std::int64_t squared) {
    return squared < 0 ? 1.84467429741979238e19f : static_cast<float>(std::sqrt(static_cast<long double>(squared)));
}

void expectDistances(const Picture &pixels, std::int64_t width, std::int64_t height, int salt) {
    const Zeros zeros(pixels, width, height);
    const Guard guard = salt % 2 != 0 ? Guard::before : Guard::behind;
    GuardedImage<std::uint8_t> src(width, height, {.padding = salt % 3, .guard = guard});
    draw(src, pixels);
    const auto got = trueDistances(
        src, {.padding = 4 * ((salt + 1) % 3), .guard = guard, .skew = guard == Guard::behind ? salt % 4 : 0});
    ASSERT_TRUE(imageIs(got, [&](auto x, auto y) { return root(zeros.nearest(x, y)); }));
}

void expectDistances(Shape shape, std::int64_t width, std::int64_t height, int salt) {
    Rng rng = makeRng("true distance", static_cast<std::uint64_t>(salt));
    ASSERT_NO_FATAL_FAILURE(expectDistances(picture(shape, width, height, rng), width, height, salt));
}

TEST(TrueDistance, EverySmallSizeAndShape) {
    int salt = 0;
    for (std::int64_t height = 1; height <= 9; ++height) {
        for (std::int64_t width = 1; width <= 10; ++width) {
            for (const Shape shape : allShapes) {
                ASSERT_NO_FATAL_FAILURE(expectDistances(shape, width, height, salt++));
            }
        }
    }
}

TEST(TrueDistance, EveryWidthUpToTwoBlocks) {
    int salt = 0;
    for (std::int64_t width = 1; width <= 70; ++width) {
        for (const Shape shape : allShapes) {
            ASSERT_NO_FATAL_FAILURE(expectDistances(shape, width, 1 + salt % 29, salt));
            ++salt;
        }
    }
}

TEST(TrueDistance, LargerPictures) {
    int salt = 0;
    for (const Shape shape : allShapes) {
        ASSERT_NO_FATAL_FAILURE(expectDistances(shape, 613, 257, ++salt));
        ASSERT_NO_FATAL_FAILURE(expectDistances(shape, 97, 701, ++salt));
    }
    for (const std::uint64_t density : {3u, 30u, 300u, 3000u, 30000u}) {
        Rng rng = makeRng("density", density);
        Picture pixels(701 * 199);
        std::generate(pixels.begin(), pixels.end(), [&] { return static_cast<std::uint8_t>(rng() % density != 0); });
        ASSERT_NO_FATAL_FAILURE(expectDistances(pixels, 701, 199, ++salt));
    }
}

// Far zeros: columns that keep changing places in the envelope, and squares beyond 24, 31 and 32 bits.
TEST(TrueDistance, WideAndTallRegions) {
    int salt = 0;
    for (const auto &[width, height] : {std::pair{16383, 3},
                                        {16384, 2},
                                        {16385, 3},
                                        {20011, 4},
                                        {3, 20011},
                                        {2, 16384},
                                        {50021, 2},
                                        {2, 50021},
                                        {100003, 1},
                                        {1, 100003}}) {
        for (const Shape shape : {Shape::corner, Shape::lastPixel, Shape::center, Shape::none}) {
            ASSERT_NO_FATAL_FAILURE(expectDistances(shape, width, height, ++salt));
        }
        Rng rng = makeRng("wide", static_cast<std::uint64_t>(width));
        Picture pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
        std::generate(pixels.begin(), pixels.end(), [&] { return static_cast<std::uint8_t>(rng() % 9000 != 0); });
        ASSERT_NO_FATAL_FAILURE(expectDistances(pixels, width, height, ++salt));
    }
}

// A line of zeros, straight, bent or stepped, as seen from far away: every column stays in the envelope or few do.
TEST(TrueDistance, LinesOfZeros) {
    for (int salt = 0; salt < 12; ++salt) {
        constexpr std::int64_t width = 201, height = 160;
        Picture pixels(width * height, 1);
        for (std::int64_t x = 0; x < width; ++x) {
            const std::int64_t y = salt < 3   ? salt * 79
                                   : salt < 6 ? (x * x) / (400 * (salt - 2))
                                   : salt < 9 ? x * (salt - 5) / 4
                                              : 5 + x / 7 % 9 * (salt - 8);
            if (y < height) {
                pixels[static_cast<std::size_t>(y * width + x)] = 0;
            }
        }
        ASSERT_NO_FATAL_FAILURE(expectDistances(pixels, width, height, salt));
    }
}

struct Call {
    const void *src;
    std::int32_t srcStep;
    float *dst;
    std::int32_t dstStep;
    RoiSize roi;
    std::uint8_t *buffer;
};

TEST(TrueDistance, StatusesInTheOrderOfTheChecks) {
    GuardedImage<std::uint8_t> src(9, 5);
    GuardedImage<float> dst(9, 5);
    GuardedBuffer buffer(scratchSize(9, 5));
    buffer.spoil();
    Faults<Call> faults;
    faults.nulls(&Call::src, &Call::dst, &Call::buffer).empty(&Call::roi);
    faults.shortSteps(9, &Call::srcStep).shortSteps(36, &Call::dstStep);
    faults.values(StatusBadStep, &Call::roi, {{0x40000001, 5}}).unevenSteps(36, 4, &Call::dstStep);
    expectFaultOrder<Call>(
        {src.data(), src.step(), dst.data(), dst.step(), src.roi(), buffer.data()}, faults,
        [](const Call &c) {
            return rvxiTrueDistanceTransform_8u32f_C1R(static_cast<const std::uint8_t *>(c.src), c.srcStep, c.dst,
                                                       c.dstStep, c.roi, c.buffer);
        },
        [&] {
            std::vector<std::uint8_t> bytes = dst.bytes();
            bytes.insert(bytes.end(), buffer.data(), buffer.data() + buffer.size());
            return bytes;
        });
}

TEST(TrueDistance, ScratchSizes) {
    std::int32_t size = -1;
    for (const RoiSize roi : {RoiSize{1, 1}, {4, 3}, {5, 2}, {640, 480}, {3, 1919}, {89478480, 7}}) {
        ASSERT_EQ(rvxiTrueDistanceTransformGetBufferSize_8u32f_C1R(roi, &size), StatusOk);
        EXPECT_EQ(size, scratchSize(roi.width, roi.height));
    }
}

} // namespace
