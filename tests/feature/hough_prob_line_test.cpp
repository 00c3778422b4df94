// The segment search against the same method in its plainest form: one pixel at a time, one vote after the other.
#include "support/guarded.h"
#include "support/status_table.h"

#include "rvxcv.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <set>

namespace {

using namespace support;
using Image = GuardedImage<std::uint8_t>;

struct Parameters {
    HoughResolution resolution;
    std::int32_t seed, threshold, length, gap;
};

Image empty(std::int64_t width, std::int64_t height, Image::Layout layout = {}) {
    Image image(width, height, layout);
    for (std::int64_t i = 0; i < width * height; ++i) {
        image.set(i % width, i / width, 0);
    }
    return image;
}

bool isMarked(const Image &image, std::int64_t x, std::int64_t y) {
    return x >= 0 && y >= 0 && x < image.width() && y < image.height() && image.at(x, y) != 0;
}

// The pixel at step i from a pixel in a direction, and those beside it, in the order of the search.
std::vector<Point2i> stepPixels(Point2i from, std::int64_t dx, std::int64_t dy, std::int32_t i) {
    const bool steep = std::abs(dy) > std::abs(dx);
    const std::int64_t along = steep ? dy : dx, aside = steep ? dx : dy;
    const double slope = along == 0 ? 0 : static_cast<double>(i * aside) / static_cast<double>(std::abs(along));
    const std::int32_t shorter = static_cast<std::int32_t>(std::floor(slope + 0.5)), longer = along < 0 ? -i : i;
    std::vector<Point2i> pixels;
    for (const std::int32_t d : {shorter, shorter + 1, shorter - 1}) {
        pixels.push_back(steep ? Point2i{from.x + d, from.y + longer} : Point2i{from.x + longer, from.y + d});
    }
    return pixels;
}

struct Segment {
    Point2i first, last;
    bool operator==(const Segment &s) const { return std::memcmp(this, &s, sizeof s) == 0; }
    std::int32_t length() const { return std::max(std::abs(last.x - first.x), std::abs(last.y - first.y)); }
    std::vector<Point2i> step(std::int32_t i) const { return stepPixels(first, last.x - first.x, last.y - first.y, i); }
};

std::optional<Point2i> markAt(const Image &image, const std::vector<Point2i> &pixels) {
    for (const Point2i &p : pixels) {
        if (isMarked(image, p.x, p.y)) {
            return p;
        }
    }
    return std::nullopt;
}

// The last marked step before a gap that is too long on the path between the ends, and the first one behind it.
std::optional<std::pair<int, int>> brokenAt(const Image &image, const Segment &s, std::int32_t gap) {
    for (int i = 1, marked = 0; i <= s.length(); ++i) {
        if (markAt(image, s.step(i))) {
            if (i - marked - 1 > gap) {
                return std::pair(marked, i);
            }
            marked = i;
        }
    }
    return std::nullopt;
}

class PlainSearch {
public:
    PlainSearch(const Image &image, const Parameters &p) : left_(empty(image.width(), image.height())), p_(p) {
        const auto extent = static_cast<float>(2 * (image.width() + image.height()) + 1);
        rhos_ = static_cast<std::int64_t>(extent / p.resolution.rho);
        const auto angles = static_cast<std::int64_t>(3.14159f / p.resolution.theta) + 1;
        float angle = 0;
        for (std::int64_t k = 0; k < angles; ++k, angle += p.resolution.theta) {
            cosines_.push_back(static_cast<float>(std::cos(static_cast<double>(angle))));
            sines_.push_back(static_cast<float>(std::sin(static_cast<double>(angle))));
        }
        votes_.resize(static_cast<std::size_t>(rhos_ * angles));
        for (std::int32_t i = 0; i < image.width() * image.height(); ++i) {
            const Point2i at{i % image.roi().width, i / image.roi().width};
            left_.set(at.x, at.y, image.at(at.x, at.y));
            if (isMarked(image, at.x, at.y)) {
                pool_.push_back(at);
            }
        }
        random_ = static_cast<std::uint32_t>(p.seed);
    }

    std::vector<Segment> run() {
        std::vector<Segment> segments;
        while (!pool_.empty()) {
            std::swap(pool_[random() * pool_.size() >> 32], pool_.back());
            const Point2i pixel = pool_.back();
            pool_.pop_back();
            if (!isMarked(left_, pixel.x, pixel.y)) {
                continue;
            }
            voted_.insert({pixel.x, pixel.y});
            std::size_t best = 0;
            for (std::size_t k = 0; k < cosines_.size(); ++k) {
                best = ++cell(pixel, k) > cell(pixel, best) ? k : best;
            }
            if (cell(pixel, best) < p_.threshold) {
                continue;
            }
            const Segment segment = follow(pixel, best);
            remove(pixel);
            for (std::int32_t i = 0; i <= segment.length(); ++i) {
                for (const Point2i &beside : segment.step(i)) {
                    remove(beside);
                }
            }
            if (segment.length() >= p_.length) {
                segments.push_back(segment);
            }
        }
        return segments;
    }

private:
    std::uint64_t random() {
        std::uint64_t z = random_ += 0x9e3779b97f4a7c15;
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
        z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
        return z >> 32;
    }

    std::int32_t &cell(Point2i p, std::size_t k) {
        const float scale = 1 / p_.resolution.rho;
        const float aside = static_cast<float>(p.y) * (sines_[k] * scale);
        const auto rho =
            static_cast<std::int64_t>(std::nearbyint(std::fma(static_cast<float>(p.x), cosines_[k] * scale, aside)));
        const std::int64_t place = std::clamp<std::int64_t>(rho + (rhos_ - 1) / 2, 0, rhos_ - 1);
        return votes_[k * static_cast<std::size_t>(rhos_) + static_cast<std::size_t>(place)];
    }

    void remove(Point2i p) {
        if (!isMarked(left_, p.x, p.y)) {
            return;
        }
        left_.set(p.x, p.y, 0);
        for (std::size_t k = 0; k < cosines_.size() && voted_.count({p.x, p.y}) != 0; ++k) {
            --cell(p, k);
        }
    }

    Point2i lastMark(Point2i from, std::int64_t dx, std::int64_t dy) {
        Point2i last = from;
        for (std::int32_t i = 1, missing = 0; missing <= p_.gap && i < 999; ++i) {
            const std::optional<Point2i> mark = markAt(left_, stepPixels(from, dx, dy, i));
            missing = mark ? 0 : missing + 1;
            last = mark.value_or(last);
        }
        return last;
    }

    Segment follow(Point2i pixel, std::size_t k) {
        Segment best{pixel, pixel};
        std::int64_t dx = std::lrint(-sines_[k] * 0x1p20f), dy = std::lrint(cosines_[k] * 0x1p20f);
        for (;;) {
            const Segment next{lastMark(pixel, dx, dy), lastMark(pixel, -dx, -dy)};
            if (next.length() <= best.length()) {
                break;
            }
            best = next;
            dx = best.first.x - best.last.x;
            dy = best.first.y - best.last.y;
        }
        while (const auto gap = brokenAt(left_, best, p_.gap)) {
            const Point2i before = *markAt(left_, best.step(gap->first)),
                          behind = *markAt(left_, best.step(gap->second));
            best = gap->first >= best.length() - gap->second ? Segment{best.first, before} : Segment{behind, best.last};
        }
        return best;
    }

    Image left_;
    Parameters p_;
    std::int64_t rhos_;
    std::vector<float> cosines_, sines_;
    std::vector<std::int32_t> votes_;
    std::vector<Point2i> pool_;
    std::set<std::pair<int, int>> voted_;
    std::uint64_t random_;
};

using Found = std::pair<StatusCode, std::vector<Segment>>;

// With record, segments and scratch that end at guard pages, the record and the scratch at any address.
Found search(const Image &image, const Parameters &p, std::int32_t capacity, int skew = 0) {
    std::int32_t specSize = -1, bufferSize = -1, count = -1;
    EXPECT_EQ(rvxiHoughProbLineGetSize_8u_C1R(image.roi(), p.resolution, &specSize, &bufferSize), StatusOk);
    GuardedBuffer spec(specSize + skew), scratch(bufferSize + skew), list(16 * std::int64_t{capacity});
    scratch.spoil();
    auto *const record = reinterpret_cast<HoughProbLineSpec *>(spec.data());
    EXPECT_EQ(rvxiHoughProbLineInit_8u32f_C1R(image.roi(), p.seed, record, p.resolution), StatusOk);
    const StatusCode status =
        rvxiHoughProbLine_8u32f_C1R(image.data(), image.step(), image.roi(), p.threshold, p.length, p.gap,
                                    reinterpret_cast<Point2i *>(list.data()), capacity, &count, scratch.data(), record);
    Found found(status, static_cast<std::size_t>(count));
    std::copy_n(list.data(), found.second.size() * sizeof(Segment),
                reinterpret_cast<std::uint8_t *>(found.second.data()));
    return found;
}

void drawSegment(Image &image, const Segment &s) {
    for (std::int32_t i = 0; i <= s.length(); ++i) {
        image.set(s.step(i)[0].x, s.step(i)[0].y, 200);
    }
}

TEST(HoughProbLine, AgreesWithOnePixelAtATime) {
    Rng rng = makeRng("hough segments");
    int reported = 0;
    for (int i = 0; i < 150; i += caseStep()) {
        const auto pick = [&](std::int64_t low, std::int64_t high) {
            return static_cast<int>(uniform(rng, low, high));
        };
        const int width = 1 + i, height = pick(1, 60);
        Image image = empty(width, height, {.padding = i % 3, .guard = i % 2 != 0 ? Guard::before : Guard::behind});
        const auto point = [&] { return Point2i{pick(0, width - 1), pick(0, height - 1)}; };
        for (int n = width * height / pick(2, 20); n > 0; --n) {
            image.set(pick(0, width - 1), pick(0, height - 1), static_cast<std::uint8_t>(1 + n % 255));
        }
        for (int k = 0; k < i % 7; ++k) {
            drawSegment(image, {point(), point()});
        }
        const auto extent = static_cast<float>(width + height);
        const float rhos[] = {1, 0.6f, 2.5f, extent, (2 * extent + 1) / 3.9f};
        const HoughResolution resolution{rhos[i % 5], i % 3 == 0 ? 0.0174533f : 0.13f};
        const int threshold = pick(1, i % 5 == 0 ? 120 : 12), gap = i % 11 == 0 ? INT32_MAX : pick(0, 4);
        const Parameters p{resolution, i - 70, threshold, pick(1, 12), gap};
        const std::vector<Segment> want = PlainSearch(image, p).run();
        const auto count = static_cast<std::int32_t>(want.size());
        const Found all = search(image, p, count + 1, i % 5);
        ASSERT_EQ(all, Found(StatusOk, want))
            << width << "x" << height << " case " << i << " (seed " << baseSeed() << ")";
        for (const Segment &s : want) {
            ASSERT_TRUE(isMarked(image, s.first.x, s.first.y) && isMarked(image, s.last.x, s.last.y));
            ASSERT_TRUE(!brokenAt(image, s, p.gap) && s.length() >= p.length);
        }
        if (count > 0) {
            const std::int32_t few = (count + 1) / 2;
            EXPECT_EQ(search(image, p, few), Found(StatusResultTruncated, {want.begin(), want.begin() + few}));
        }
        reported += count;
    }
    EXPECT_GT(reported, 1000 / caseStep());
}

// Counters of each width: all pixels vote for the one cell of each angle, and the last of them fills it.
TEST(HoughProbLine, ThresholdIsReached) {
    for (const std::int64_t side : {10, 11, 12, 16, 181, 182, 300}) {
        Image image = empty(side, side);
        for (std::int64_t i = 0; i < side * side; ++i) {
            image.set(i % side, i / side, 1);
        }
        Parameters p{{static_cast<float>(4 * side), 1}, 5, static_cast<std::int32_t>(side * side), 1, 0};
        const Found found = search(image, p, 9);
        ASSERT_EQ(found.second.size(), 1u) << side;
        EXPECT_EQ(found.second[0].length(), side - 1);
        ++p.threshold;
        EXPECT_EQ(search(image, p, 9).second.size(), 0u) << side;
    }
}

// A rho behind the last cell counts there. The first cell of the next angle has as many votes of the same pixels.
TEST(HoughProbLine, CoarseRhoStaysInItsRow) {
    Image image = empty(100, 20);
    drawSegment(image, {{95, 0}, {95, 19}});
    EXPECT_EQ(search(image, {{241 / 3.9f, 3.14159f}, 3, 20, 19, 0}, 9).second.size(), 1u);
    EXPECT_EQ(search(image, {{241 / 3.9f, 3.14159f}, 3, 21, 19, 0}, 9).second.size(), 0u);
}

// Spokes of all directions, long lines that are hardly inclined, a dashed one; and some that are too short.
TEST(HoughProbLine, FindsDrawnSegments) {
    std::vector<Segment> drawn{
        {{5, 468}, {630, 470}}, {{3, 2}, {1, 430}}, {{620, 20}, {638, 455}}, {{20, 6}, {600, 3}}};
    for (int i = 0; i < 18; ++i) {
        const double angle = i * 0.349 + 0.1, far = 120 + 5 * i;
        const auto at = [&](double r) {
            return Point2i{static_cast<std::int32_t>(310 + r * std::cos(angle)),
                           static_cast<std::int32_t>(236 + r * std::sin(angle))};
        };
        drawn.push_back({at(60), at(far)});
    }
    Image image = empty(640, 480);
    for (const Segment &s : drawn) {
        drawSegment(image, s);
    }
    for (std::int32_t x = 60; x < 560; x += 3) {
        image.set(x, 460, 9); // two pixels missing after each one
    }
    drawn.push_back({{60, 460}, {558, 460}});
    for (std::int32_t i = 0; i < 5; ++i) {
        drawSegment(image, {{30 + 20 * i, 40}, {40 + 22 * i, 68}});
    }
    for (const float degrees : {0.5f, 1.0f, 2.0f}) {
        for (std::int32_t seed = 0; seed < 12; ++seed) {
            const Parameters p{{1, degrees * 0.01745329f}, seed, 20, 40, 2};
            const Found found = search(image, p, 100);
            ASSERT_EQ(found.second, search(image, p, 100).second);
            ASSERT_EQ(found.second.size(), drawn.size()) << degrees << " degrees, seed " << seed;
            for (const Segment &want : drawn) {
                const auto matches = [&](const Segment &s) {
                    const auto apart = [](Point2i a, Point2i b) { return Segment{a, b}.length(); };
                    return std::max(apart(s.first, want.first), apart(s.last, want.last)) <= 2 ||
                           std::max(apart(s.first, want.last), apart(s.last, want.first)) <= 2;
                };
                EXPECT_EQ(std::count_if(found.second.begin(), found.second.end(), matches), 1)
                    << want.first.x << "," << want.first.y << " at " << degrees << " degrees, seed " << seed;
            }
        }
    }
}

struct Call {
    const std::uint8_t *src;
    std::int32_t step;
    RoiSize roi;
    std::int32_t threshold, length, gap;
    Point2i *segments;
    std::int32_t capacity;
    std::int32_t *count;
    std::uint8_t *buffer;
    const HoughProbLineSpec *spec;
};

TEST(HoughProbLine, StatusesInTheOrderOfTheChecks) {
    Image image = empty(12, 7);
    drawSegment(image, {{1, 1}, {9, 3}});
    GuardedBuffer outputs(4 + 16 * 5), scratch(100000), record(4000), coarse(4000);
    outputs.scribble();
    auto *const count = reinterpret_cast<std::int32_t *>(outputs.data());
    auto *const spec = reinterpret_cast<HoughProbLineSpec *>(record.data());
    auto *const coarseSpec = reinterpret_cast<HoughProbLineSpec *>(coarse.data());
    ASSERT_EQ(rvxiHoughProbLineInit_8u32f_C1R({12, 7}, 1, spec, {1, 0.1f}), StatusOk);
    ASSERT_EQ(rvxiHoughProbLineInit_8u32f_C1R({12, 7}, 1, coarseSpec, {1e30f, 9}), StatusOk);
    const std::vector<Fault<Call>> faults{
        {"null source", StatusNullPointer, [](auto &c) { c.src = nullptr; }},
        {"null segments", StatusNullPointer, [](auto &c) { c.segments = nullptr; }},
        {"null count", StatusNullPointer, [](auto &c) { c.count = nullptr; }},
        {"null buffer", StatusNullPointer, [](auto &c) { c.buffer = nullptr; }},
        {"null record", StatusNullPointer, [](auto &c) { c.spec = nullptr; }},
        {"step 0", StatusBadStep, [](auto &c) { c.step = 0; }},
        {"no width", StatusBadSize, [](auto &c) { c.roi.width = 0; }},
        {"no capacity", StatusBadSize, [](auto &c) { c.capacity = 0; }},
        {"threshold 0", StatusBadArgument, [](auto &c) { c.threshold = 0; }},
        {"length 0", StatusBadArgument, [](auto &c) { c.length = 0; }},
        {"gap -1", StatusBadArgument, [](auto &c) { c.gap = -1; }},
        {"no rho", StatusBadArgument, [&](auto &c) { c.spec = coarseSpec; }},
        {"image too large", StatusBadSize, [](auto &c) { c.roi.width = c.roi.height = INT32_MAX; }},
    };
    expectFaultOrder<Call>(
        {image.data(), image.step(), image.roi(), 2, 3, 0, reinterpret_cast<Point2i *>(count + 1), 5, count,
         scratch.data(), spec},
        faults,
        [](const Call &c) {
            return rvxiHoughProbLine_8u32f_C1R(c.src, c.step, c.roi, c.threshold, c.length, c.gap, c.segments,
                                               c.capacity, c.count, c.buffer, c.spec);
        },
        [&] { return std::vector<std::uint8_t>(outputs.data(), outputs.data() + outputs.size()); });
}

TEST(HoughProbLine, RecordsAndSizes) {
    std::int32_t specSize = -1, size = -1;
    GuardedBuffer record(8 + 16);
    auto *const spec = reinterpret_cast<HoughProbLineSpec *>(record.data());
    EXPECT_EQ(rvxiHoughProbLineGetSize_8u_C1R({0, 0}, {0, 0}, nullptr, &size), StatusNullPointer);
    EXPECT_EQ(rvxiHoughProbLineGetSize_8u_C1R({0, 0}, {0, 0}, &specSize, nullptr), StatusNullPointer);
    EXPECT_EQ(rvxiHoughProbLineInit_8u32f_C1R({0, 0}, 1, nullptr, {0, 0}), StatusNullPointer);
    const auto expect = [&](RoiSize roi, HoughResolution resolution, StatusCode query, StatusCode init) {
        EXPECT_EQ(rvxiHoughProbLineGetSize_8u_C1R(roi, resolution, &specSize, &size), query);
        EXPECT_EQ(rvxiHoughProbLineInit_8u32f_C1R(roi, 1, spec, resolution), init);
    };
    expect({0, 4}, {0, 4}, StatusBadSize, StatusBadSize);
    expect({4, 4}, {0, 4}, StatusBadArgument, StatusBadArgument);
    expect({4, 4}, {1, NAN}, StatusBadArgument, StatusBadArgument);
    expect({4, 4}, {1, 1e-40f}, StatusBadSize, StatusBadSize);
    expect({4, 4}, {1e-40f, 4}, StatusBadSize, StatusOk);
    expect({1100000000, 1100000000}, {1, 4}, StatusBadSize, StatusOk);
    expect({INT32_MAX, INT32_MAX}, {1e-40f, 4}, StatusBadSize, StatusOk);
    EXPECT_TRUE(specSize == -1 && size == -1);
    EXPECT_EQ(rvxiHoughProbLineGetSize_8u_C1R({640, 480}, {1, 0.01745329f}, &specSize, &size), StatusOk);
    EXPECT_EQ(specSize, 8 * 180 + 16);
    EXPECT_EQ(size, 81 * 480 + 4 * 2241 * 180 + 4 * 640 * 480);
}

} // namespace
