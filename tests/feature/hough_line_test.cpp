// The standard line search against its definition, with one counter for every cell that is hit.
#include "support/guarded.h"
#include "support/status_table.h"

#include "rvxcv.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace {

using namespace support;
using Image = GuardedImage<std::uint8_t>;

struct PlainPeak {
    int votes;
    HoughLine line;
    std::int64_t cell, cells;
};

std::vector<PlainPeak> plainPeaks(const Image &image, int threshold, HoughResolution resolution) {
    const auto rhos =
        static_cast<std::int64_t>(static_cast<float>(2 * (image.width() + image.height()) + 1) / resolution.rho);
    const auto thetas = static_cast<std::int64_t>(3.14159f / resolution.theta);
    const std::int64_t half = (rhos - 1) / 2;
    std::vector<std::map<std::int64_t, int>> votes(static_cast<std::size_t>(thetas) + 3); // angle -1 and one too many
    float theta = 0;
    for (std::int64_t k = 0; k <= thetas; ++k, theta += resolution.theta) {
        const double scale = 1024 / resolution.rho;
        const auto c = static_cast<float>(static_cast<std::int64_t>(std::cos(static_cast<double>(theta)) * scale));
        const auto s = static_cast<float>(static_cast<std::int64_t>(std::sin(static_cast<double>(theta)) * scale));
        for (std::int64_t y = 0; y < image.height(); ++y) {
            for (std::int64_t x = 0; x < image.width(); ++x) {
                if (image.at(x, y) != 0) {
                    const float xc = static_cast<float>(x) * c, ys = static_cast<float>(y) * s, q = xc + ys;
                    const std::int64_t cell = ((std::llrint(q) + 512) >> 10) + half;
                    ++votes[static_cast<std::size_t>(k + 1)][std::clamp<std::int64_t>(cell, -1, rhos)];
                }
            }
        }
    }
    std::vector<PlainPeak> peaks;
    for (std::size_t row = 1; row + 1 < votes.size(); ++row) {
        const auto at = [&](std::size_t r, std::int64_t cell) {
            const auto found = votes[r].find(cell);
            return found == votes[r].end() ? 0 : found->second;
        };
        for (const auto &[cell, v] : votes[row]) {
            if (v > threshold && v > at(row, cell - 1) && v >= at(row, cell + 1) && v > at(row - 1, cell) &&
                v > at(row + 1, cell)) {
                const HoughLine line{resolution.rho * static_cast<float>(cell - half),
                                     resolution.theta * static_cast<float>(row - 1)};
                peaks.push_back({v, line, cell, rhos});
            }
        }
    }
    std::stable_sort(peaks.begin(), peaks.end(), [](const auto &a, const auto &b) { return a.votes > b.votes; });
    return peaks;
}

std::int64_t scratchSize(const Image &image, HoughResolution resolution, std::int32_t capacity) {
    const auto rhos =
        static_cast<std::int64_t>(static_cast<float>(2 * (image.width() + image.height()) + 1) / resolution.rho);
    const auto thetas = static_cast<std::int64_t>(3.14159f / resolution.theta);
    return image.height() * (4 * image.width() + 64) + 16 * std::int64_t{capacity} + 32 + 2 * 4 * (thetas + 1) +
           12 * rhos + 176 + 4 * rhos + 80;
}

// Runs the search, with a region where there is one, with lines and scratch that end at guard pages.
void expectLines(const Image &image, int threshold, HoughResolution resolution, std::int32_t capacity,
                 std::vector<PlainPeak> want, const HoughLine *region = nullptr, int skew = 0) {
    if (region != nullptr) {
        std::erase_if(want, [&](const PlainPeak &p) {
            return !(p.line.rho >= region[0].rho && p.line.rho <= region[1].rho && p.line.theta >= region[0].theta &&
                     p.line.theta <= region[1].theta);
        });
    }
    const bool truncated = want.size() > static_cast<std::size_t>(capacity);
    want.resize(std::min(want.size(), static_cast<std::size_t>(capacity)));
    GuardedBuffer lines(std::int64_t{capacity} * 8), scratch(scratchSize(image, resolution, capacity) + skew);
    scratch.spoil();
    std::int32_t count = -1;
    auto *const list = reinterpret_cast<HoughLine *>(lines.data());
    const StatusCode status =
        region != nullptr ? rvxiHoughLine_Region_8u32f_C1R(image.data(), image.step(), image.roi(), threshold, list,
                                                           capacity, &count, scratch.data(), resolution, region)
                          : rvxiHoughLine_8u32f_C1R(image.data(), image.step(), image.roi(), threshold, list, capacity,
                                                    &count, scratch.data(), resolution);
    const bool none = region != nullptr && want.empty();
    const auto same = [](const PlainPeak &peak, const HoughLine &line) {
        return std::memcmp(&peak.line, &line, sizeof line) == 0;
    };
    ASSERT_EQ(status, truncated ? StatusResultTruncated : none ? StatusEmptyResult : StatusOk);
    ASSERT_TRUE(count == std::ssize(want) && std::equal(want.begin(), want.end(), list, same))
        << image.width() << "x" << image.height() << " rho " << resolution.rho << " theta " << resolution.theta
        << " threshold " << threshold << " capacity " << capacity << " (seed " << baseSeed() << ")";
}

// One pixel in `sparse` marked, with any byte that is not zero, fewer on the left, and a straight row and column.
Image marked(Rng &rng, std::int64_t width, std::int64_t height, int sparse, Image::Layout layout = {}) {
    Image image(width, height, layout);
    const std::int64_t fullColumn = uniform(rng, 0, 2 * width), fullRow = uniform(rng, 0, 2 * height);
    const std::int64_t dense = uniform(rng, 0, width);
    for (std::int64_t y = 0; y < height; ++y) {
        for (std::int64_t x = 0; x < width; ++x) {
            const bool set = x == fullColumn || y == fullRow || uniform(rng, 1, x < dense ? 8 * sparse : sparse) == 1;
            image.set(x, y, static_cast<std::uint8_t>(set ? uniform(rng, 1, 255) : 0));
        }
    }
    return image;
}

TEST(HoughLine, SizesResolutionsAndCapacities) {
    Rng rng = makeRng("hough lines");
    bool first = false, last = false;
    int salt = 0;
    for (std::int64_t width = 1; width <= 67; width += caseStep(), ++salt) {
        const std::int64_t height = 1 + salt * 7 % 19;
        const Image image = marked(rng, width, height, 1 + salt % 6,
                                   {.padding = salt % 3, .guard = salt % 2 != 0 ? Guard::before : Guard::behind});
        const auto extent = static_cast<float>(width + height);
        for (const HoughResolution resolution : {HoughResolution{1, 0.0174533f},
                                                 {0.7f, 0.1f},
                                                 {extent, 0.05f},
                                                 {extent * 0.43f, 3.14159f},
                                                 {(2 * extent + 1) / 3.9f, 0.9f}}) {
            for (const int threshold : {1, 3}) {
                const std::vector<PlainPeak> want = plainPeaks(image, threshold, resolution);
                const auto count = static_cast<std::int32_t>(want.size());
                for (const std::int32_t capacity : {1, std::max(1, count - 1), std::max(1, count), count + 5}) {
                    ASSERT_NO_FATAL_FAILURE(
                        expectLines(image, threshold, resolution, capacity, want, nullptr, salt % 5));
                }
                for (const PlainPeak &peak : want) {
                    first |= peak.cell == -1;
                    last |= peak.cell == peak.cells;
                }
            }
        }
    }
    EXPECT_TRUE(first && last) << "a cell next to the ends of the row has won";
}

TEST(HoughLine, Regions) {
    Rng rng = makeRng("hough regions");
    for (int i = 0; i < 60; ++i) {
        const Image image = marked(rng, 20 + i, 33, 4);
        const HoughResolution resolution{1, i % 2 == 0 ? 0.03f : 0.4f};
        const std::vector<PlainPeak> all = plainPeaks(image, 4, resolution);
        ASSERT_FALSE(all.empty());
        const auto any = [&] { return all[static_cast<std::size_t>(uniform(rng, 0, std::ssize(all) - 1))].line; };
        const HoughLine a = any(), b = any(); // bounds that are hit exactly
        const HoughLine corners[2] = {{std::min(a.rho, b.rho), std::min(a.theta, b.theta)},
                                      {std::max(a.rho, b.rho), std::max(a.theta, b.theta)}};
        const HoughLine single[2] = {a, a}, everything[2] = {{-1e30f, -INFINITY}, {INFINITY, 9}};
        const HoughLine nothing[2] = {{0, -2}, {50, -1}},
                        between[2] = {{-99, 0.5f * resolution.theta}, {99, 0.9f * resolution.theta}};
        for (const HoughLine *region : {corners, single, everything, nothing, between}) {
            ASSERT_NO_FATAL_FAILURE(expectLines(image, 4, resolution, 1000, all, region));
            ASSERT_NO_FATAL_FAILURE(expectLines(image, 4, resolution, 2, all, region));
        }
    }
}

// Sums of single precision, which a fused one would not give; q beyond 32 bits; more than a million columns.
TEST(HoughLine, WideImagesAndFineRhos) {
    Rng rng = makeRng("hough wide");
    const auto check = [](const Image &image, HoughResolution resolution) {
        expectLines(image, 1, resolution, 20000, plainPeaks(image, 1, resolution));
    };
    ASSERT_NO_FATAL_FAILURE(check(marked(rng, 24001, 7, 2), {0.05f, 0.15f}));
    ASSERT_NO_FATAL_FAILURE(check(marked(rng, 40, 4, 2), {2e-5f, 0.3f}));
    ASSERT_NO_FATAL_FAILURE(check(marked(rng, 2500, 1, 2), {0.0004f, 0.2f}));
    ASSERT_NO_FATAL_FAILURE(check(marked(rng, (1 << (sanitized() ? 16 : 20)) + 5, 1, 50), {2.5f, 1.5f}));
}

struct Call {
    const std::uint8_t *src;
    std::int32_t step;
    RoiSize roi;
    std::int32_t threshold;
    HoughLine *lines;
    std::int32_t capacity;
    std::int32_t *count;
    std::uint8_t *buffer;
    HoughResolution resolution;
    const HoughLine *region;
};

TEST(HoughLine, StatusesInTheOrderOfTheChecks) {
    Rng rng = makeRng("hough statuses");
    const Image image = marked(rng, 9, 6, 3);
    const HoughLine region[2] = {{-99, 0}, {99, 4}}, turned[2] = {{0, 1}, {5, 0.5f}}, unordered[2] = {{NAN, 0}, {5, 1}};
    GuardedBuffer outputs(4 + 3 * 8), scratch(scratchSize(image, {1, 0.1f}, 3));
    outputs.scribble();
    auto *const count = reinterpret_cast<std::int32_t *>(outputs.data());
    std::vector<Fault<Call>> faults{
        {"null source", StatusNullPointer, [](auto &c) { c.src = nullptr; }},
        {"null lines", StatusNullPointer, [](auto &c) { c.lines = nullptr; }},
        {"null count", StatusNullPointer, [](auto &c) { c.count = nullptr; }},
        {"null buffer", StatusNullPointer, [](auto &c) { c.buffer = nullptr; }},
        {"step 0", StatusBadStep, [](auto &c) { c.step = 0; }},
        {"no width", StatusBadSize, [](auto &c) { c.roi.width = 0; }},
        {"no capacity", StatusBadSize, [](auto &c) { c.capacity = 0; }},
        {"rho 0", StatusBadArgument, [](auto &c) { c.resolution.rho = 0; }},
        {"rho NaN", StatusBadArgument, [](auto &c) { c.resolution.rho = NAN; }},
        {"rho beyond the image", StatusBadArgument, [](auto &c) { c.resolution.rho = 15.00001f; }},
        {"theta 0", StatusBadArgument, [](auto &c) { c.resolution.theta = -0.0f; }},
        {"theta beyond pi", StatusBadArgument, [](auto &c) { c.resolution.theta = 3.1415903f; }},
        {"threshold 0", StatusBadArgument, [](auto &c) { c.threshold = 0; }},
        {"rho tiny", StatusBadSize, [](auto &c) { c.resolution.rho = 1e-40f; }},
        {"theta tiny", StatusBadSize, [](auto &c) { c.resolution.theta = 1e-40f; }},
    };
    const Call good{image.data(), image.step(),   image.roi(), 3,     reinterpret_cast<HoughLine *>(count + 1), 3,
                    count,        scratch.data(), {1, 0.1f},   region};
    const auto bytes = [&] { return std::vector<std::uint8_t>(outputs.data(), outputs.data() + outputs.size()); };
    const auto anywhere = [](const Call &c) {
        return rvxiHoughLine_8u32f_C1R(c.src, c.step, c.roi, c.threshold, c.lines, c.capacity, c.count, c.buffer,
                                       c.resolution);
    };
    expectFaultOrder<Call>(good, faults, anywhere, bytes);
    outputs.scribble();
    faults.insert(faults.begin(), {"null region", StatusNullPointer, [](auto &c) { c.region = nullptr; }});
    faults.push_back({"region turned", StatusBadArgument, [&](auto &c) { c.region = turned; }});
    faults.push_back({"region NaN", StatusBadArgument, [&](auto &c) { c.region = unordered; }});
    const auto inRegion = [](const Call &c) {
        return rvxiHoughLine_Region_8u32f_C1R(c.src, c.step, c.roi, c.threshold, c.lines, c.capacity, c.count, c.buffer,
                                              c.resolution, c.region);
    };
    expectFaultOrder<Call>(good, faults, inRegion, bytes);
}

TEST(HoughLine, ScratchSizes) {
    std::int32_t size = -1;
    const auto expect = [&](RoiSize roi, HoughResolution resolution, std::int32_t capacity, StatusCode status) {
        EXPECT_EQ(rvxiHoughLineGetSize_8u_C1R(roi, resolution, capacity, &size), status);
    };
    EXPECT_EQ(rvxiHoughLineGetSize_8u_C1R({0, 1}, {0, 0}, 0, nullptr), StatusNullPointer);
    expect({0, 1}, {0, 1}, 1, StatusBadSize);
    expect({1, 1}, {0, 1}, 0, StatusBadSize);
    expect({1, 1}, {-1, 1}, 1, StatusBadArgument);
    expect({1, 1}, {1, NAN}, 1, StatusBadArgument);
    for (const RoiSize roi : {RoiSize{INT32_MAX, INT32_MAX}, {1100000000, 1100000000}, {1 << 15, 1 << 14}}) {
        expect(roi, {1, 1}, 1, StatusBadSize);
    }
    expect({9, 9}, {1e-7f, 1}, 1, StatusBadSize);
    expect({9, 9}, {1, 1e-9f}, 1, StatusBadSize);
    expect({9, 9}, {1, 1}, 1 << 27, StatusBadSize);
    EXPECT_EQ(size, -1);
    expect({640, 480}, {1, 0.01745329f}, 100, StatusOk);
    EXPECT_EQ(size, 480 * 2624 + 1632 + 8 * 180 + 16 * 2241 + 256);
}

} // namespace
