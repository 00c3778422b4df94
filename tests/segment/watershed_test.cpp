// Watershed and gradient segmentation against their texts, with plain lists.
#include "support/guarded.h"
#include "support/status_table.h"

#include "rvxcv.h"

#include <algorithm>
#include <array>
#include <deque>
#include <functional>
#include <map>
#include <numeric>

namespace {

using namespace support;

using Labels = std::vector<std::int32_t>;

struct Grid {
    std::int64_t width, height;
    bool eight;

    std::size_t pixels() const { return static_cast<std::size_t>(width * height); }

    // N(p), in scan order.
    std::vector<std::size_t> around(std::size_t p) const {
        std::vector<std::size_t> result;
        const auto x = static_cast<std::int64_t>(p) % width, y = static_cast<std::int64_t>(p) / width;
        for (std::int64_t dy = -1; dy <= 1; ++dy) {
            for (std::int64_t dx = -1; dx <= 1; ++dx) {
                const bool beside = dx == 0 || dy == 0, self = dx == 0 && dy == 0;
                if (!self && (eight || beside) && x + dx >= 0 && x + dx < width && y + dy >= 0 && y + dy < height) {
                    result.push_back(static_cast<std::size_t>((y + dy) * width + x + dx));
                }
            }
        }
        return result;
    }
};

// A picture of up to three channels, element by element.
struct Picture {
    int channels = 1;
    std::vector<int> values;

    int weight(std::size_t p, std::size_t q) const {
        int most = 0;
        const auto n = static_cast<std::size_t>(channels);
        for (std::size_t c = 0; c < n; ++c) {
            most = std::max(most, std::abs(values[n * p + c] - values[n * q + c]));
        }
        return most;
    }
};

enum class State { free, listed, taken, line, wall };

struct Flood {
    Grid grid;
    bool lines;
    Labels labels;
    std::vector<State> states;
    std::map<int, std::deque<std::size_t>> lists;

    Flood(const Grid &g, bool separated, const Labels &markers)
        : grid(g), lines(separated), labels(markers), states(markers.size(), State::free) {
        for (std::size_t p = 0; p < markers.size(); ++p) {
            states[p] = markers[p] > 0 ? State::taken : markers[p] < 0 ? State::wall : State::free;
        }
    }

    // The first pixel of the lowest list, which becomes a line or gets its label.
    std::size_t take() {
        auto &list = lists.begin()->second;
        const std::size_t p = list.front();
        list.pop_front();
        if (list.empty()) {
            lists.erase(lists.begin());
        }
        states[p] = State::taken;
        if (lines) {
            std::int32_t label = 0;
            for (const std::size_t q : grid.around(p)) {
                if (states[q] == State::taken && q != p) {
                    if (label != 0 && label != labels[q]) {
                        states[p] = State::line;
                    }
                    label = labels[q];
                }
            }
            labels[p] = states[p] == State::line ? 0 : label;
        }
        return p;
    }
};

Labels plainWatershed(const Grid &grid, const std::vector<int> &relief, const Labels &markers, bool lines) {
    Flood flood(grid, lines, markers);
    const auto visit = [&](std::size_t p, int level) {
        for (const std::size_t q : grid.around(p)) {
            if (flood.states[q] == State::free) {
                flood.states[q] = State::listed;
                flood.labels[q] = lines ? 0 : flood.labels[p];
                flood.lists[std::max(relief[q], level)].push_back(q);
            }
        }
    };
    for (std::size_t p = 0; p < markers.size(); ++p) {
        if (markers[p] > 0) {
            visit(p, 0);
        }
    }
    while (!flood.lists.empty()) {
        const int level = flood.lists.begin()->first;
        const std::size_t p = flood.take();
        if (flood.states[p] != State::line) {
            visit(p, level);
        }
    }
    return flood.labels;
}

// `total` receives the sum of level(q) over the pixels that got a label.
Labels plainGradient(const Grid &grid, const Picture &picture, const Labels &markers, bool lines, std::int64_t *total) {
    Flood flood(grid, lines, markers);
    std::vector<int> levels(markers.size());
    const auto offer = [&](std::size_t p, std::size_t q) {
        const int w = picture.weight(p, q);
        if (flood.states[q] == State::listed && w < levels[q]) {
            auto &list = flood.lists[levels[q]];
            list.erase(std::find(list.begin(), list.end(), q));
            if (list.empty()) {
                flood.lists.erase(levels[q]);
            }
        } else if (flood.states[q] != State::free) {
            return;
        }
        flood.states[q] = State::listed;
        flood.labels[q] = lines ? 0 : flood.labels[p];
        levels[q] = w;
        flood.lists[w].push_back(q);
    };
    for (std::size_t p = 0; p < markers.size(); ++p) {
        for (const std::size_t q : markers[p] > 0 ? grid.around(p) : std::vector<std::size_t>{}) {
            offer(p, q);
        }
    }
    *total = 0;
    while (!flood.lists.empty()) {
        const std::size_t q = flood.take();
        if (flood.states[q] != State::line) {
            *total += levels[q];
            for (const std::size_t r : grid.around(q)) {
                offer(q, r);
            }
        }
    }
    return flood.labels;
}

template <class T, int channelCount, bool isWatershed, auto function, auto sizeQuery, int perPixel, int more>
struct Member {
    using Element = T;
    static constexpr int channels = channelCount;
    static constexpr bool floods = isWatershed;
    static constexpr auto call = function;
    static constexpr auto query = sizeQuery;
    static std::int64_t bytes(std::int64_t framed) { return perPixel * framed + more; }
};
using Watershed8u = Member<std::uint8_t, 1, true, rvxiSegmentWatershed_8u32s_C1IR,
                           rvxiSegmentWatershedGetBufferSize_8u32s_C1R, 9, 4096>;
using Watershed16u = Member<std::uint16_t, 1, true, rvxiSegmentWatershed_16u32s_C1IR,
                            rvxiSegmentWatershedGetBufferSize_16u32s_C1R, 10, 540672>;
using GradientC1 = Member<std::uint8_t, 1, false, rvxiSegmentGradient_8u32s_C1IR,
                          rvxiSegmentGradientGetBufferSize_8u32s_C1R, 15, 4096>;
using GradientC3 = Member<std::uint8_t, 3, false, rvxiSegmentGradient_8u32s_C3C1IR,
                          rvxiSegmentGradientGetBufferSize_8u32s_C3C1R, 17, 4096>;

template <class M> Labels plain(const Grid &grid, const Picture &picture, const Labels &markers, bool lines) {
    if constexpr (M::floods) {
        return plainWatershed(grid, picture.values, markers, lines);
    } else {
        std::int64_t total = 0;
        return plainGradient(grid, picture, markers, lines, &total);
    }
}

// Runs the library on guarded memory whose layout `salt` varies, one part at a time.
template <class M>
Labels segment(const Grid &grid, const Picture &picture, const Labels &markers, bool lines, int salt = 0) {
    using T = typename M::Element;
    const Guard guard = salt % 2 != 0 ? Guard::before : Guard::behind;
    constexpr std::int64_t size = sizeof(T);
    GuardedImage<T> src(grid.width * M::channels, grid.height,
                        {.padding = salt % 5 == 1 ? 6 * size : 0, .guard = guard, .skew = salt % 5 == 2 ? 1 : 0});
    GuardedImage<std::int32_t> image(
        grid.width, grid.height, {.padding = salt % 5 == 3 ? 12 : 0, .guard = guard, .skew = salt % 5 == 4 ? 1 : 0});
    const std::int64_t width = grid.width, elements = width * M::channels;
    for (std::size_t e = 0; e < picture.values.size(); ++e) {
        const auto i = static_cast<std::int64_t>(e);
        src.set(i % elements, i / elements, static_cast<T>(picture.values[e]));
    }
    for (std::size_t p = 0; p < markers.size(); ++p) {
        image.set(static_cast<std::int64_t>(p) % width, static_cast<std::int64_t>(p) / width, markers[p]);
    }
    const std::vector<std::uint8_t> source = src.bytes();
    std::int32_t bytes = 0;
    EXPECT_EQ(M::query(image.roi(), &bytes), StatusOk);
    EXPECT_EQ(bytes, M::bytes((grid.width + 2) * (grid.height + 2)));
    const int shift = salt % 3 == 0 ? salt % 4 : 0; // else it ends with its page
    GuardedBuffer scratch(bytes + shift, salt % 3 == 0 ? Guard::before : Guard::behind);
    scratch.spoil(static_cast<std::uint8_t>(salt));
    EXPECT_EQ(M::call(src.data(), src.step(), image.data(), image.step(), image.roi(), grid.eight ? NormInf : NormL1,
                      lines ? SegmentLines : SegmentNoLines, scratch.data() + shift),
              StatusOk);
    EXPECT_EQ(src.bytes(), source) << "the source was written";
    EXPECT_TRUE(image.paddingIntact());
    Labels result(markers.size());
    for (std::size_t p = 0; p < markers.size(); ++p) {
        result[p] = image.at(static_cast<std::int64_t>(p) % width, static_cast<std::int64_t>(p) / width);
    }
    return result;
}

// Few levels (many ties), all of them, the ends of the range, hills.
template <class T> Picture randomPicture(const Grid &grid, int channels, int kind, Rng &rng) {
    constexpr std::int64_t most = std::numeric_limits<T>::max();
    Picture picture{channels, std::vector<int>(grid.pixels() * static_cast<std::size_t>(channels))};
    for (std::size_t i = 0; i < picture.values.size(); ++i) {
        const std::int64_t p = static_cast<std::int64_t>(i) / channels, x = p % grid.width, y = p / grid.width;
        const std::int64_t values[] = {uniform(rng, 0, 2), uniform(rng, 0, most), uniform(rng, 0, 1) * most,
                                       (x * x / 8 + y * 7 + uniform(rng, 0, 3)) % (most / 2)};
        picture.values[i] = static_cast<int>(values[kind % 4]);
    }
    return picture;
}

// Labels from the whole range, also equal ones; some walls, of any value below 0.
Labels randomMarkers(const Grid &grid, int salt, Rng &rng) {
    constexpr std::int32_t seeds[] = {1, 2, 0x7fffffff, 0x7ffffffe, 256, 65536, 77},
                           walls[] = {-1, -256, -65536, INT32_MIN, INT32_MIN + 1};
    const std::int64_t rarity = std::array<std::int64_t, 4>{3, 12, 40, 1000}[static_cast<std::size_t>(salt % 4)];
    Labels markers(grid.pixels());
    for (std::int32_t &marker : markers) {
        const std::int64_t pick = uniform(rng, 0, rarity);
        marker = pick == 0 ? seeds[uniform(rng, 0, 6)] : pick == 1 && salt % 3 != 0 ? walls[uniform(rng, 0, 4)] : 0;
    }
    markers[static_cast<std::size_t>(uniform(rng, 0, static_cast<std::int64_t>(grid.pixels()) - 1))] = 5;
    return markers;
}

template <class M>
void expectText(const Grid &grid, const Picture &picture, const Labels &markers, bool lines, int salt = 0) {
    const Labels want = plain<M>(grid, picture, markers, lines), got = segment<M>(grid, picture, markers, lines, salt);
    const auto first = std::mismatch(want.begin(), want.end(), got.begin()).first - want.begin();
    ASSERT_EQ(first, std::ssize(want)) << "differs in column " << first % grid.width << " of " << grid.width << "x"
                                       << grid.height << ", eight " << grid.eight << ", lines " << lines << ", case "
                                       << salt << " (seed " << baseSeed() << ")";
}

template <class M> class Segment : public testing::Test {};
using Members = testing::Types<Watershed8u, Watershed16u, GradientC1, GradientC3>;
TYPED_TEST_SUITE(Segment, Members, );

TYPED_TEST(Segment, RandomPicturesAgainstTheText) {
    using T = typename TypeParam::Element;
    Rng rng = makeRng("segment", sizeof(T) + TypeParam::channels);
    int salt = 0;
    const auto run = [&](std::int64_t width, std::int64_t height) {
        for (const bool eight : {false, true}) {
            for (const bool lines : {false, true}) {
                const Grid grid{width, height, eight};
                const Picture picture = randomPicture<T>(grid, TypeParam::channels, salt / 3, rng);
                const Labels markers = randomMarkers(grid, salt, rng);
                ASSERT_NO_FATAL_FAILURE(expectText<TypeParam>(grid, picture, markers, lines, salt));
                ++salt;
            }
        }
    };
    for (const std::int64_t width : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 24, 33}) {
        for (const std::int64_t height : {1, 2, 3, 7}) {
            ASSERT_NO_FATAL_FAILURE(run(width, height));
        }
    }
    for (const std::int64_t width : {1, 2, 63, 64, 65, 127, 131}) {
        ASSERT_NO_FATAL_FAILURE(run(width, 40));
    }
    for (int i = 0; i < 3; ++i) {
        ASSERT_NO_FATAL_FAILURE(run(211, 97));
    }
}

// What no list shows: no seed changes nothing; one reaches everything but what walls enclose; values count by order.
TYPED_TEST(Segment, SeedsWallsAndLevels) {
    using T = typename TypeParam::Element;
    Rng rng = makeRng("seeds", sizeof(T) + TypeParam::channels);
    const Grid grid{31, 23, true};
    Picture picture = randomPicture<T>(grid, TypeParam::channels, 0, rng);
    Labels markers(grid.pixels());
    markers[5] = -7;
    EXPECT_EQ(segment<TypeParam>(grid, picture, markers, true), markers);
    for (std::size_t y = 0; y < 23; ++y) {
        markers[31 * y + 20] = INT32_MIN;
    }
    markers[40] = INT32_MAX;
    Labels want = markers;
    for (std::size_t p = 0; p < want.size(); ++p) {
        want[p] = want[p] == 0 && p % 31 < 20 ? INT32_MAX : want[p];
    }
    EXPECT_EQ(segment<TypeParam>(grid, picture, markers, true), want);
    EXPECT_EQ(segment<TypeParam>(grid, picture, markers, false), want);
    markers[300] = 9;
    markers[500] = 8;
    const Labels before = segment<TypeParam>(grid, picture, markers, true);
    for (int &value : picture.values) {
        value =
            TypeParam::floods ? static_cast<int>(value * value * (std::numeric_limits<T>::max() / 9) + 5) : value * 9;
    }
    EXPECT_EQ(segment<TypeParam>(grid, picture, markers, true), before);
}

// Two overlapping discs: the inverted distance to the outside has its ridge in column 40.
TEST(Watershed, OverlappingDiscs) {
    constexpr std::int64_t width = 81, height = 51;
    const auto inside = [](std::int64_t x, std::int64_t y) {
        const std::int64_t dy = (y - 25) * (y - 25);
        return (x - 25) * (x - 25) + dy <= 18 * 18 || (x - 55) * (x - 55) + dy <= 18 * 18;
    };
    for (const bool eight : {false, true}) {
        const Grid grid{width, height, eight};
        Picture relief{1, std::vector<int>(grid.pixels())};
        Labels markers(grid.pixels(), -1);
        for (std::int64_t p = 0; p < width * height; ++p) {
            double nearest = 1e9;
            for (std::int64_t q = 0; q < width * height; ++q) {
                if (!inside(q % width, q / width)) {
                    nearest = std::min(nearest, std::hypot(p % width - q % width, p / width - q / width));
                }
            }
            relief.values[static_cast<std::size_t>(p)] = 255 - static_cast<int>(8 * nearest);
            markers[static_cast<std::size_t>(p)] = inside(p % width, p / width) ? 0 : -1;
        }
        markers[25 * width + 25] = 1;
        markers[25 * width + 55] = 2;
        for (const bool lines : {false, true}) {
            const Labels labels = segment<Watershed8u>(grid, relief, markers, lines);
            EXPECT_EQ(std::count(labels.begin(), labels.end(), 1), lines ? 961 : 980);
            EXPECT_EQ(std::count(labels.begin(), labels.end(), 2), 961);
            EXPECT_EQ(std::count(labels.begin(), labels.end(), 0), lines ? 19 : 0);
            EXPECT_EQ(labels[25 * width + 40], lines ? 0 : 1);
        }
    }
}

// The pixels' levels add up to the weight of a minimum spanning tree in which all seeds are one (Kruskal). This is a
// test of the reference, to which all results are compared.
TEST(Gradient, LevelsAddUpToTheSmallestTotal) {
    Rng rng = makeRng("kruskal");
    for (const bool eight : {false, true}) {
        const Grid grid{29, 31, eight};
        const Picture picture = randomPicture<std::uint8_t>(grid, 1, 1, rng);
        Labels markers(grid.pixels());
        for (std::size_t i = 7; i < markers.size(); i += 97) {
            markers[i] = static_cast<std::int32_t>(i);
        }
        std::vector<std::array<std::size_t, 3>> edges;
        std::vector<std::size_t> parents(grid.pixels());
        std::iota(parents.begin(), parents.end(), 0);
        for (std::size_t p = 0; p < markers.size(); ++p) {
            parents[p] = markers[p] > 0 ? 7 : p;
            for (const std::size_t q : grid.around(p)) {
                edges.push_back({static_cast<std::size_t>(picture.weight(p, q)), p, q});
            }
        }
        std::sort(edges.begin(), edges.end());
        const std::function<std::size_t(std::size_t)> root = [&](std::size_t p) {
            return parents[p] == p ? p : root(parents[p]);
        };
        std::int64_t want = 0, total = 0;
        for (const auto &[w, p, q] : edges) {
            if (root(p) != root(q)) {
                parents[root(p)] = root(q);
                want += static_cast<std::int64_t>(w);
            }
        }
        plainGradient(grid, picture, markers, false, &total);
        EXPECT_EQ(total, want);
    }
}

// Rows of seeds offer each pixel between them six levels, one below the other, so that there are more entries in the
// lists than these have room for; and a part of them at random.
template <class M> void checkCrowdedLists() {
    constexpr std::int64_t width = 40, height = 1700, channels = M::channels;
    Rng rng = makeRng("crowded", channels);
    const Grid grid{width, height, true};
    for (const int noise : {0, 1}) {
        Picture picture{static_cast<int>(channels),
                        std::vector<int>(static_cast<std::size_t>(width * height * channels))};
        Labels markers(grid.pixels());
        for (std::size_t p = 0; p < markers.size(); ++p) {
            const std::int64_t x = static_cast<std::int64_t>(p) % width, row = static_cast<std::int64_t>(p) / width;
            const bool seed = row % 2 == 0, other = noise != 0 && !seed && uniform(rng, 0, 3) == 0;
            markers[p] = seed ? static_cast<std::int32_t>(p + 1) : 0;
            const std::int64_t value = other  ? uniform(rng, 0, 255)
                                       : seed ? 255 - row / 2 % 60 * 3 - row / 120 * 2 - x
                                              : 0;
            for (std::size_t c = 0; c < channels; ++c) {
                picture.values[p * channels + c] = static_cast<int>(value);
            }
        }
        expectText<M>(grid, picture, markers, false);
        for (std::int32_t &marker : markers) {
            marker = marker != 0 ? marker / 400 + 1 : 0; // otherwise everything is a line
        }
        expectText<M>(grid, picture, markers, true);
    }
}
TEST(Gradient, CrowdedLists) {
    checkCrowdedLists<GradientC1>();
    checkCrowdedLists<GradientC3>();
}

template <class T> struct Call {
    const T *src;
    std::int32_t srcStep;
    std::int32_t *srcDst;
    std::int32_t srcDstStep;
    RoiSize roi;
    NormKind norm;
    std::int32_t flags;
    std::uint8_t *buffer;
};

TYPED_TEST(Segment, StatusesInTheOrderOfTheChecks) {
    using T = typename TypeParam::Element;
    using C = Call<T>;
    constexpr std::int64_t rowBytes = 9 * TypeParam::channels * static_cast<std::int64_t>(sizeof(T));
    GuardedImage<T> src(9 * TypeParam::channels, 6);
    GuardedImage<std::int32_t> image(9, 6);
    GuardedBuffer scratch(TypeParam::bytes(11 * 8));
    Faults<C> faults;
    faults.nulls(&C::src, &C::srcDst, &C::buffer).empty(&C::roi);
    faults.shortSteps(rowBytes, &C::srcStep).shortSteps(36, &C::srcDstStep);
    faults.unevenSteps(rowBytes, sizeof(T), &C::srcStep).unevenSteps(36, 4, &C::srcDstStep);
    faults.values(StatusBadArgument, &C::norm, {NormL2, -1}).values(StatusBadArgument, &C::flags, {2, -1});
    expectFaultOrder<C>(
        {src.data(), src.step(), image.data(), image.step(), image.roi(), NormL1, SegmentLines, scratch.data()}, faults,
        [](const C &c) {
            return TypeParam::call(c.src, c.srcStep, c.srcDst, c.srcDstStep, c.roi, c.norm, c.flags, c.buffer);
        },
        [&] { return image.bytes(); });
    std::int32_t size = -1;
    EXPECT_EQ(TypeParam::query({9, 6}, nullptr), StatusNullPointer);
    EXPECT_EQ(TypeParam::query({0, 6}, &size), StatusBadSize);
}

} // namespace
