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

struct Segment {
    Point2i first, last;
    bool operator==(const Segment &s) const {
        return first.x == s.first.x && first.y == s.first.y && last.x == s.last.x && last.y == s.last.y;
    }
    std::int32_t length() const { return std::max(std::abs(last.x - first.x), std::abs(last.y - first.y)); }
};

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

// The pixel at step i (it may be negative) from a pixel in a direction, and those beside it, in the order of the
// search.
std::vector<Point2i> stepPixels(Point2i from, std::int64_t dx, std::int64_t dy, std::int64_t i) {
    const bool steep = std::abs(dy) > std::abs(dx);
    const std::int64_t along = steep ? dy : dx, aside = steep ? dx : dy, n = std::abs(along);
    const auto shorter =
        n == 0 ? 0
               : static_cast<std::int32_t>(std::floor((2.0 * static_cast<double>(i * aside) + static_cast<double>(n)) /
                                                      (2.0 * static_cast<double>(n))));
    const auto longer = static_cast<std::int32_t>(along < 0 ? -i : i);
    std::vector<Point2i> pixels;
    for (const std::int32_t d : {0, 1, -1}) {
        pixels.push_back(steep ? Point2i{from.x + shorter + d, from.y + longer}
                               : Point2i{from.x + longer, from.y + shorter + d});
    }
    return pixels;
}

std::optional<Point2i> markAt(const Image &image, const std::vector<Point2i> &pixels) {
    for (const Point2i &p : pixels) {
        if (isMarked(image, p.x, p.y)) {
            return p;
        }
    }
    return std::nullopt;
}

// The longest run of steps without a mark on the path between the ends.
std::int32_t longestGap(const Image &image, const Segment &s) {
    std::int32_t gap = 0, longest = 0;
    for (std::int32_t i = 0; i <= s.length(); ++i) {
        gap = markAt(image, stepPixels(s.first, s.last.x - s.first.x, s.last.y - s.first.y, i)) ? 0 : gap + 1;
        longest = std::max(longest, gap);
    }
    return longest;
}

class PlainSearch {
public:
    PlainSearch(const Image &image, const Parameters &p) : left_(empty(image.width(), image.height())), p_(p) {
        rhos_ =
            static_cast<std::int64_t>(static_cast<float>(2 * (image.width() + image.height()) + 1) / p.resolution.rho);
        const auto angles = static_cast<std::int64_t>(3.14159f / p.resolution.theta) + 1;
        float angle = 0;
        for (std::int64_t k = 0; k < angles; ++k, angle += p.resolution.theta) {
            cosines_.push_back(static_cast<float>(std::cos(static_cast<double>(angle))));
            sines_.push_back(static_cast<float>(std::sin(static_cast<double>(angle))));
        }
        votes_.resize(static_cast<std::size_t>(rhos_ * angles));
        for (std::int64_t y = 0; y < image.height(); ++y) {
            for (std::int64_t x = 0; x < image.width(); ++x) {
                left_.set(x, y, image.at(x, y));
                if (image.at(x, y) != 0) {
                    pool_.push_back({static_cast<std::int32_t>(x), static_cast<std::int32_t>(y)});
                }
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
                for (const Point2i &beside :
                     stepPixels(segment.first, segment.last.x - segment.first.x, segment.last.y - segment.first.y, i)) {
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
        for (std::int64_t i = 1, missing = 0; missing <= p_.gap && i < 9999; ++i) {
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
        while (longestGap(left_, best) > p_.gap) {
            Point2i mark = best.first;
            for (std::int32_t i = 1, marked = 0; i <= best.length(); ++i) {
                const std::vector<Point2i> pixels =
                    stepPixels(best.first, best.last.x - best.first.x, best.last.y - best.first.y, i);
                const std::optional<Point2i> next = markAt(left_, pixels);
                if (next && i - marked - 1 > p_.gap) {
                    best = marked >= best.length() - i ? Segment{best.first, mark} : Segment{*next, best.last};
                    break;
                }
                mark = next.value_or(mark);
                marked = next ? i : marked;
            }
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

struct Found {
    StatusCode status;
    std::vector<Segment> segments;
};

// With record, segments and scratch that end at guard pages, the record and the scratch at any address.
Found search(const Image &image, const Parameters &p, std::int32_t capacity, int skew = 0) {
    std::int32_t specSize = -1, bufferSize = -1, count = -1;
    EXPECT_EQ(rvxiHoughProbLineGetSize_8u_C1R(image.roi(), p.resolution, &specSize, &bufferSize), StatusOk);
    GuardedBuffer spec(specSize + skew), scratch(bufferSize + skew), list(16 * std::int64_t{capacity});
    scratch.scribble();
    auto *const record = reinterpret_cast<HoughProbLineSpec *>(spec.data());
    EXPECT_EQ(rvxiHoughProbLineInit_8u32f_C1R(image.roi(), p.seed, record, p.resolution), StatusOk);
    const StatusCode status =
        rvxiHoughProbLine_8u32f_C1R(image.data(), image.step(), image.roi(), p.threshold, p.length, p.gap,
                                    reinterpret_cast<Point2i *>(list.data()), capacity, &count, scratch.data(), record);
    Found found{status, std::vector<Segment>(static_cast<std::size_t>(count))};
    std::memcpy(static_cast<void *>(found.segments.data()), list.data(), found.segments.size() * sizeof(Segment));
    return found;
}

void drawSegment(Image &image, const Segment &s) {
    for (std::int32_t i = 0; i <= s.length(); ++i) {
        const Point2i p = stepPixels(s.first, s.last.x - s.first.x, s.last.y - s.first.y, i)[0];
        image.set(p.x, p.y, 200);
    }
}

TEST(HoughProbLine, AgreesWithOnePixelAtATime) {
    Rng rng = makeRng("hough segments");
    int reported = 0;
    for (int i = 0; i < 150; ++i) {
        const std::int64_t width = 1 + i, height = uniform(rng, 1, 60);
        Image image = empty(width, height, {.padding = i % 3, .guard = i % 2 != 0 ? Guard::before : Guard::behind});
        for (std::int64_t n = width * height / uniform(rng, 2, 20); n > 0; --n) {
            image.set(uniform(rng, 0, width - 1), uniform(rng, 0, height - 1), static_cast<std::uint8_t>(1 + n % 255));
        }
        const auto point = [&] {
            return Point2i{static_cast<std::int32_t>(uniform(rng, 0, width - 1)),
                           static_cast<std::int32_t>(uniform(rng, 0, height - 1))};
        };
        for (int k = 0; k < i % 7; ++k) {
            drawSegment(image, {point(), point()});
        }
        const auto extent = static_cast<float>(width + height);
        const float rhos[] = {1, 0.6f, 2.5f, extent, (2 * extent + 1) / 3.9f};
        const Parameters p{{rhos[i % 5], i % 3 == 0 ? 0.0174533f : 0.13f},
                           i - 70,
                           static_cast<std::int32_t>(uniform(rng, 1, i % 5 == 0 ? 120 : 12)),
                           static_cast<std::int32_t>(uniform(rng, 1, 12)),
                           static_cast<std::int32_t>(i % 11 == 0 ? INT32_MAX : uniform(rng, 0, 4))};
        Parameters bounded = p;
        bounded.gap = std::min(p.gap, 300); // longer than any image here
        const std::vector<Segment> want = PlainSearch(image, bounded).run();
        const auto count = static_cast<std::int32_t>(want.size());
        const Found all = search(image, p, count + 1, i % 5);
        ASSERT_EQ(all.status, StatusOk);
        ASSERT_EQ(all.segments, want) << width << "x" << height << " case " << i << " (seed " << baseSeed() << ")";
        for (const Segment &s : want) {
            ASSERT_TRUE(isMarked(image, s.first.x, s.first.y) && isMarked(image, s.last.x, s.last.y));
            ASSERT_LE(longestGap(image, s), p.gap);
            ASSERT_GE(s.length(), p.length);
        }
        if (count > 0) {
            const std::int32_t few = (count + 1) / 2;
            const Found first = search(image, p, few);
            EXPECT_EQ(first.status, StatusResultTruncated);
            EXPECT_EQ(first.segments, std::vector<Segment>(want.begin(), want.begin() + few));
        }
        reported += count;
    }
    EXPECT_GT(reported, 1000);
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
        ASSERT_EQ(found.segments.size(), 1u) << side;
        EXPECT_EQ(found.segments[0].length(), side - 1);
        ++p.threshold;
        EXPECT_EQ(search(image, p, 9).segments.size(), 0u) << side;
    }
}

// A rho behind the last cell counts there. The first cell of the next angle has as many votes of the same pixels.
TEST(HoughProbLine, CoarseRhoStaysInItsRow) {
    Image image = empty(100, 20);
    drawSegment(image, {{95, 0}, {95, 19}});
    EXPECT_EQ(search(image, {{241 / 3.9f, 3.14159f}, 3, 20, 19, 0}, 9).segments.size(), 1u);
    EXPECT_EQ(search(image, {{241 / 3.9f, 3.14159f}, 3, 21, 19, 0}, 9).segments.size(), 0u);
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
        image.set(x, 455, 0); // clears what does not exist
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
            ASSERT_EQ(found.segments, search(image, p, 100).segments);
            ASSERT_EQ(found.segments.size(), drawn.size()) << degrees << " degrees, seed " << seed;
            for (const Segment &want : drawn) {
                const auto near = [](Point2i a, Point2i b) {
                    return std::abs(a.x - b.x) <= 2 && std::abs(a.y - b.y) <= 2;
                };
                EXPECT_EQ(std::count_if(found.segments.begin(), found.segments.end(),
                                        [&](const Segment &s) {
                                            return (near(s.first, want.first) && near(s.last, want.last)) ||
                                                   (near(s.first, want.last) && near(s.last, want.first));
                                        }),
                          1)
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
        {"no height", StatusBadSize, [](auto &c) { c.roi.height = -1; }},
        {"no capacity", StatusBadSize, [](auto &c) { c.capacity = 0; }},
        {"threshold 0", StatusBadArgument, [](auto &c) { c.threshold = 0; }},
        {"length 0", StatusBadArgument, [](auto &c) { c.length = 0; }},
        {"gap -1", StatusBadArgument, [](auto &c) { c.gap = -1; }},
        {"no rho", StatusBadArgument, [&](auto &c) { c.spec = coarseSpec; }},
        {"image too large", StatusBadSize,
         [](auto &c) {
             c.roi = {INT32_MAX, INT32_MAX};
         }},
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
    const auto both = [&](RoiSize roi, HoughResolution resolution, StatusCode query, StatusCode init) {
        EXPECT_EQ(rvxiHoughProbLineGetSize_8u_C1R(roi, resolution, &specSize, &size), query);
        EXPECT_EQ(rvxiHoughProbLineInit_8u32f_C1R(roi, 1, spec, resolution), init);
    };
    EXPECT_EQ(rvxiHoughProbLineGetSize_8u_C1R({0, 0}, {0, 0}, nullptr, &size), StatusNullPointer);
    EXPECT_EQ(rvxiHoughProbLineGetSize_8u_C1R({0, 0}, {0, 0}, &specSize, nullptr), StatusNullPointer);
    EXPECT_EQ(rvxiHoughProbLineInit_8u32f_C1R({0, 0}, 1, nullptr, {0, 0}), StatusNullPointer);
    both({0, 4}, {0, 4}, StatusBadSize, StatusBadSize);
    both({4, -1}, {0, 4}, StatusBadSize, StatusBadSize);
    both({4, 4}, {0, 4}, StatusBadArgument, StatusBadArgument);
    both({4, 4}, {1, NAN}, StatusBadArgument, StatusBadArgument);
    both({4, 4}, {1, 1e-40f}, StatusBadSize, StatusBadSize);
    both({4, 4}, {1e-40f, 4}, StatusBadSize, StatusOk);
    both({1100000000, 1100000000}, {1, 4}, StatusBadSize, StatusOk);
    both({INT32_MAX, INT32_MAX}, {1e-40f, 4}, StatusBadSize, StatusOk);
    both({1 << 15, 1 << 14}, {1, 4}, StatusBadSize, StatusOk);
    EXPECT_EQ(specSize, -1);
    EXPECT_EQ(size, -1);
    both({4, 4}, {1, 4}, StatusOk, StatusOk);
    EXPECT_EQ(specSize, 24);
    EXPECT_EQ(rvxiHoughProbLineGetSize_8u_C1R({640, 480}, {1, 0.01745329f}, &specSize, &size), StatusOk);
    EXPECT_EQ(specSize, 8 * 180 + 16);
    EXPECT_EQ(size, 81 * 480 + 4 * 2241 * 180 + 4 * 640 * 480);
}

} // namespace
