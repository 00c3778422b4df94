// Line sampling against the walk in its plainest form.
#include "support/guarded.h"
#include "support/status_table.h"

#include "rvxcv.h"

#include <algorithm>
#include <cstdlib>

namespace {

using namespace support;

template <class T> using Sample = StatusCode (*)(const T *, std::int32_t, RoiSize, T *, Point2i, Point2i);

// The midpoint walk, step by step.
std::vector<Point2i> plainLine(Point2i first, Point2i second) {
    const std::int64_t dx = std::int64_t{second.x} - first.x, dy = std::int64_t{second.y} - first.y;
    const bool alongY = std::abs(dx) <= std::abs(dy);
    const std::int64_t major = alongY ? std::abs(dy) : std::abs(dx), minor = alongY ? std::abs(dx) : std::abs(dy);
    const int xSign = dx < 0 ? -1 : 1, ySign = dy < 0 ? -1 : 1;
    std::vector<Point2i> points;
    Point2i at = first;
    std::int64_t e = major;
    for (std::int64_t i = 0; i <= major; ++i) {
        points.push_back(at);
        e -= 2 * minor;
        if (e < 0) {
            (alongY ? at.x : at.y) += alongY ? xSign : ySign;
            e += 2 * major;
        }
        (alongY ? at.y : at.x) += alongY ? ySign : xSign;
    }
    return points;
}

template <class T>
void checkLine(Sample<T> function, int channels, const GuardedImage<T> &image, Point2i a, Point2i b) {
    const std::vector<Point2i> points = plainLine(a, b);
    GuardedImage<T> line(static_cast<std::int64_t>(points.size()) * channels, 1, {.skew = (a.x + b.y) % 2});
    ASSERT_EQ(function(image.data(), image.step(), image.roi(channels), line.data(), a, b), StatusOk);
    ASSERT_TRUE(imageIs(line,
                        [&](auto e, auto) {
                            const Point2i p = points[static_cast<std::size_t>(e / channels)];
                            return image.at(std::int64_t{p.x} * channels + e % channels, p.y);
                        }))
        << "from (" << a.x << ", " << a.y << ") to (" << b.x << ", " << b.y << ")";
}

// From and to every pixel of small images (all octants, ties, single points), and long lines in large ones.
template <class T> void checkLines(Sample<T> function, int channels) {
    Rng rng = makeRng("line", sizeof(T) * 4 + static_cast<unsigned>(channels));
    const auto point = [](std::int64_t i, std::int64_t width) {
        return Point2i{static_cast<std::int32_t>(i % width), static_cast<std::int32_t>(i / width)};
    };
    for (const Guard guard : {Guard::behind, Guard::before}) {
        GuardedImage<T> small(9 * channels, 8, {.padding = 2 * sizeof(T), .guard = guard, .skew = 1});
        small.fill(rng, Contents::random);
        for (std::int64_t i = 0; i < 72 * 72; ++i) {
            checkLine(function, channels, small, point(i / 72, 9), point(i % 72, 9));
        }
        for (const auto &[width, height] :
             {std::pair{733, 20}, std::pair{30, 517}, std::pair{1, 70}, std::pair{70, 1}}) {
            GuardedImage<T> large(width * channels, height, {.guard = guard});
            large.fill(rng, Contents::random);
            const Point2i right{width - 1, 0}, bottom{0, height - 1}, corner{width - 1, height - 1};
            checkLine(function, channels, large, {0, 0}, corner);
            checkLine(function, channels, large, corner, {0, 0});
            checkLine(function, channels, large, right, bottom);
            checkLine(function, channels, large, bottom, right);
            checkLine(function, channels, large, {0, 0}, right);
            checkLine(function, channels, large, bottom, corner);
            for (int i = 0; i < 20; ++i) {
                checkLine(function, channels, large, point(uniform(rng, 0, width * height - 1), width),
                          point(uniform(rng, 0, width * height - 1), width));
            }
        }
    }
}

TEST(SampleLine, EveryTypeMatchesTheWalk) {
    checkLines<std::uint8_t>(rvxiSampleLine_8u_C1R, 1);
    checkLines<std::uint8_t>(rvxiSampleLine_8u_C3R, 3);
    checkLines<std::uint16_t>(rvxiSampleLine_16u_C1R, 1);
    checkLines<std::uint16_t>(rvxiSampleLine_16u_C3R, 3);
    checkLines<float>(rvxiSampleLine_32f_C1R, 1);
    checkLines<float>(rvxiSampleLine_32f_C3R, 3);
}

// Only the line's pixels are there: rows a whole number of pages apart, each with one readable page, of which the line
// meets the first pixel of one (directly behind a page that is not mapped) or the last one of another (before one).
template <class T> void checkLonePixels(Sample<T> function, int channels) {
    const auto page = static_cast<std::int64_t>(sysconf(_SC_PAGESIZE));
    const std::int64_t pixel = channels * static_cast<std::int64_t>(sizeof(T));
    for (const bool atStart : {true, false}) {
        std::uint8_t line[4 * 12], expected[4 * 12];
        auto *map = static_cast<std::uint8_t *>(
            mmap(nullptr, static_cast<std::size_t>(9 * page), PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        ASSERT_NE(map, MAP_FAILED);
        for (std::int64_t y = 0; y < 4; ++y) {
            std::uint8_t *row = map + (2 * y + 1) * page;
            ASSERT_EQ(mprotect(row, static_cast<std::size_t>(page), PROT_READ | PROT_WRITE), 0);
            for (std::int64_t i = 0; i < page; ++i) {
                row[i] = static_cast<std::uint8_t>(7 * i + 50 * y);
            }
            std::memcpy(expected + y * pixel, atStart ? row : row + page - pixel, static_cast<std::size_t>(pixel));
        }
        std::uint8_t *first = atStart ? map + page : map + 2 * page - pixel;
        ASSERT_EQ(function(reinterpret_cast<const T *>(first), static_cast<std::int32_t>(2 * page), {1, 4},
                           reinterpret_cast<T *>(line), {0, 0}, {0, 3}),
                  StatusOk);
        EXPECT_EQ(std::memcmp(line, expected, static_cast<std::size_t>(4 * pixel)), 0);
        munmap(map, static_cast<std::size_t>(9 * page));
    }
}

TEST(SampleLine, NothingButTheLineIsRead) {
    checkLonePixels<std::uint8_t>(rvxiSampleLine_8u_C1R, 1);
    checkLonePixels<std::uint8_t>(rvxiSampleLine_8u_C3R, 3);
    checkLonePixels<std::uint16_t>(rvxiSampleLine_16u_C1R, 1);
    checkLonePixels<std::uint16_t>(rvxiSampleLine_16u_C3R, 3);
    checkLonePixels<float>(rvxiSampleLine_32f_C1R, 1);
    checkLonePixels<float>(rvxiSampleLine_32f_C3R, 3);
}

// Many addresses on little memory: all blocks of the first half are one block, and those of the second half another.
class TwoBlocks {
public:
    static constexpr std::int64_t block = 1 << 22;

    TwoBlocks(std::int64_t bytes, std::uint8_t first, std::uint8_t second) : bytes_(static_cast<std::size_t>(bytes)) {
        const int file = memfd_create("blocks", 0);
        map_ = static_cast<std::uint8_t *>(
            mmap(nullptr, bytes_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0));
        bool mapped = file >= 0 && ftruncate(file, 2 * block) == 0 && map_ != MAP_FAILED;
        for (std::int64_t at = 0; mapped && at < bytes; at += block) {
            mapped = mmap(map_ + at, block, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED, file,
                          at < bytes / 2 ? 0 : block) != MAP_FAILED;
        }
        if (!mapped) {
            std::abort();
        }
        close(file);
        std::memset(map_, first, block);
        std::memset(map_ + bytes / 2, second, block);
    }
    TwoBlocks(const TwoBlocks &) = delete;
    TwoBlocks &operator=(const TwoBlocks &) = delete;
    ~TwoBlocks() { munmap(map_, bytes_); }

    std::uint8_t *data() { return map_; }
    bool holds(std::uint8_t first, std::uint8_t second) const {
        return std::count(map_, map_ + block, first) == block &&
               std::count(map_ + bytes_ / 2, map_ + bytes_ / 2 + block, second) == block;
    }

private:
    std::size_t bytes_;
    std::uint8_t *map_;
};

// More than 2^30 pixels: twice the difference leaves 32 bits. The line is half in one row and half in the other.
TEST(SampleLine, VeryLongLines) {
    if (sanitized()) {
        GTEST_SKIP() << "takes half a minute";
    }
    constexpr std::int32_t length = (1 << 30) + 2 * TwoBlocks::block;
    TwoBlocks image(std::int64_t{2} * length, 7, 9), line(length, 0, 0);
    ASSERT_EQ(rvxiSampleLine_8u_C1R(image.data(), length, {length, 2}, line.data(), {0, 0}, {length - 1, 1}), StatusOk);
    EXPECT_TRUE(line.holds(7, 9));
}

template <class T> struct Call {
    const T *src;
    T *line;
    std::int32_t step;
    RoiSize roi;
    Point2i first, second;
};

template <class T> void checkStatuses(Sample<T> function, int channels) {
    GuardedImage<T> src(9 * channels, 7), line(9 * channels, 1);
    constexpr auto size = static_cast<std::int32_t>(sizeof(T));
    const std::int32_t row = 9 * channels * size;
    using C = Call<T>;
    Faults<C> faults;
    faults.nulls(&C::src, &C::line).empty(&C::roi).shortSteps(row, &C::step);
    if (channels * size > 1) {
        faults.values(StatusBadStep, &C::roi, {{0x60000000, 7}});
    }
    faults.unevenSteps(row, size, &C::step);
    faults.values(StatusOutOfRange, &C::first, {{-1, 6}, {0, 7}, {INT32_MIN, 6}, {0, INT32_MAX}});
    faults.values(StatusOutOfRange, &C::second, {{8, -1}, {9, 0}, {INT32_MAX, 0}, {8, INT32_MIN}});
    faults.add("far apart", StatusOutOfRange, [](C &c) { c.first.x = INT32_MIN, c.second.x = INT32_MAX; });
    faults.add("far away", StatusOutOfRange, [](C &c) { c.first.y = INT32_MAX, c.second.y = INT32_MIN; });
    expectFaultOrder<C>(
        {src.data(), line.data(), src.step(), src.roi(channels), {0, 6}, {8, 0}}, faults,
        [&](const C &c) { return function(c.src, c.step, c.roi, c.line, c.first, c.second); },
        [&] { return line.bytes(); });
}

TEST(SampleLine, StatusesInTheOrderOfTheChecks) {
    checkStatuses<std::uint8_t>(rvxiSampleLine_8u_C1R, 1);
    checkStatuses<std::uint8_t>(rvxiSampleLine_8u_C3R, 3);
    checkStatuses<std::uint16_t>(rvxiSampleLine_16u_C1R, 1);
    checkStatuses<std::uint16_t>(rvxiSampleLine_16u_C3R, 3);
    checkStatuses<float>(rvxiSampleLine_32f_C1R, 1);
    checkStatuses<float>(rvxiSampleLine_32f_C3R, 3);
}

} // namespace
