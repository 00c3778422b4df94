// Layers of any rate, against convolution, interpolation and weighted means in double precision.
#include "support/bordered.h"
#include "support/counted_alloc.h"
#include "support/guarded.h"
#include "support/status_table.h"

#include "rvxcv.h"

#include <cmath>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using namespace support;

template <class T> using TapOf = std::conditional_t<std::is_same_v<T, float>, float, std::int16_t>;

template <class T, class State> struct Member {
    const char *name;
    int channels;
    StatusCode (*init)(State **, RoiSize, float, const TapOf<T> *, std::int32_t, std::int32_t);
    StatusCode (*run)(const T *, std::int32_t, RoiSize, T *, std::int32_t, RoiSize, State *);
    StatusCode (*free)(State *);
};

#define MEMBER(direction, suffix)                                                                                      \
    {                                                                                                                  \
#direction " " #suffix, std::string_view(#suffix).ends_with("C3R") ? 3 : 1,                                    \
            rvxiPyramidLayer##direction##InitAlloc_##suffix, rvxiPyramidLayer##direction##_##suffix,                   \
            rvxiPyramidLayer##direction##Free_##suffix                                                                 \
    }

template <class T, class State> std::vector<Member<T, State>> members() {
    constexpr bool down = std::is_same_v<State, PyramidLayerDownState>;
    if constexpr (std::is_same_v<T, std::uint8_t> && down) {
        return {MEMBER(Down, 8u_C1R), MEMBER(Down, 8u_C3R)};
    } else if constexpr (std::is_same_v<T, std::uint16_t> && down) {
        return {MEMBER(Down, 16u_C1R), MEMBER(Down, 16u_C3R)};
    } else if constexpr (down) {
        return {MEMBER(Down, 32f_C1R), MEMBER(Down, 32f_C3R)};
    } else if constexpr (std::is_same_v<T, std::uint8_t>) {
        return {MEMBER(Up, 8u_C1R), MEMBER(Up, 8u_C3R)};
    } else if constexpr (std::is_same_v<T, std::uint16_t>) {
        return {MEMBER(Up, 16u_C1R), MEMBER(Up, 16u_C3R)};
    } else {
        return {MEMBER(Up, 32f_C1R), MEMBER(Up, 32f_C3R)};
    }
}

// Calls check(member) for both channel counts of the three types.
template <class State, class Check> void everyMember(const Check &check) {
    const auto all = [&](auto zero) {
        using T = decltype(zero);
        for (const auto &m : members<T, State>()) {
            SCOPED_TRACE(m.name);
            check(m, zero);
        }
    };
    all(std::uint8_t{});
    all(std::uint16_t{});
    all(0.0f);
}

// ------------------------------------------------------------------------------------------------ the reference

// The kernel as weights: integers by the rules of integers, floats as quotients.
template <class T> std::vector<double> weightsOf(const std::vector<int> &taps, bool up) {
    const std::size_t n = taps.size();
    std::vector<double> weights(n);
    long sum = taps[n / 2];
    for (std::size_t i = 0; i < n / 2; ++i) {
        sum += 2L * taps[i];
    }
    for (std::size_t i = 0; i <= n / 2; ++i) {
        const long tap = taps[i];
        double weight = static_cast<double>(tap);
        if (std::is_same_v<T, float>) {
            weight = sum != 0 ? weight / static_cast<double>(sum) : weight;
        } else if (up) {
            weight = sum != 0 ? std::floor(std::trunc(16384 * (weight / static_cast<double>(sum)) + 0.5) / 2) : weight;
        } else {
            const int bits = std::is_same_v<T, std::uint8_t> ? 13 : 12;
            const long quotient = sum != 0 ? (tap * 16384 / sum) >> (14 - bits) : tap;
            weight = std::ldexp(static_cast<double>(quotient), -bits);
        }
        weights[i] = weights[n - 1 - i] = weight;
    }
    return weights;
}

// What a line of results is made of: source pixels with weights.
using Mix = std::vector<std::pair<std::int64_t, double>>;

// A rate of almost 2 counts as 2.
Mix downMix(const std::vector<double> &kernel, double anyRate, std::int64_t x, std::int64_t n) {
    const double rate = std::fabs(anyRate - 2) <= 0.00002 ? 2 : anyRate;
    const auto half = static_cast<std::int64_t>(kernel.size() / 2);
    const double position = std::min(static_cast<double>(x) * rate, static_cast<double>(n - 1));
    const auto whole = static_cast<std::int64_t>(position);
    const double fraction = position - static_cast<double>(whole);
    Mix mix;
    for (std::int64_t side = 0; side < (fraction > 0 ? 2 : 1); ++side) {
        for (std::int64_t i = -half; i <= half; ++i) {
            mix.emplace_back(plainBorderIndex(BorderMirror, false, false, whole + side + i, n),
                             kernel[static_cast<std::size_t>(i + half)] * (side == 0 ? 1 - fraction : fraction));
        }
    }
    return mix;
}

Mix upMix(const std::vector<double> &kernel, double rate, std::int64_t x, std::int64_t n) {
    const double half = static_cast<double>(kernel.size() / 2);
    const auto pixel = [n](std::int64_t j) {
        return plainBorderIndex(j < 0 ? BorderMirror : BorderReplicate, false, false, j, n);
    };
    Mix mix;
    double sum = 0;
    const auto reach = static_cast<std::int64_t>(half) + 2;
    const auto near = static_cast<std::int64_t>(static_cast<double>(x) / rate);
    for (std::int64_t j = near - reach; j <= near + reach; ++j) {
        const double place = static_cast<double>(j) * rate - static_cast<double>(x) + half;
        if (place < 0 || place > 2 * half) {
            continue;
        }
        const auto i = static_cast<std::size_t>(place);
        const double fraction = place - static_cast<double>(i);
        const double weight = fraction > 0 ? kernel[i] * (1 - fraction) + kernel[i + 1] * fraction : kernel[i];
        if (weight != 0) {
            mix.emplace_back(pixel(j), weight);
            sum += weight;
        }
    }
    if (sum == 0) {
        const double fraction = static_cast<double>(x) / rate - static_cast<double>(near);
        return {{pixel(near), 1 - fraction}, {pixel(near + 1), fraction}};
    }
    for (auto &entry : mix) {
        entry.second /= sum;
    }
    return mix;
}

RoiSize downSize(RoiSize roi, float rate) {
    RoiSize size{};
    EXPECT_EQ(rvxiGetPyramidDownROI(roi, &size, rate), StatusOk);
    return size;
}

// ------------------------------------------------------------------------------------------------- the comparison

struct Shape {
    std::vector<int> taps;
    float rate;
    RoiSize base; // what the state is made for
};

std::vector<std::vector<int>> kernels() {
    return {{1, 4, 6, 4, 1},
            {1, 2, 1},
            {0, 1, 0},
            {-1, 2, -1},           // adds up to zero: kept as it is
            {-3, -7, 29, -7, -3},  // sharpens: intermediates exceed every pixel
            {-900, 1801, -900},    // weights that no 16 bits hold
            {2, 3, 5, 7, 5, 3, 2}, // any other length
            {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1},
            {30000, -5, 3, -5, 30000}};
}

template <class T, class State> State *makeState(const Member<T, State> &m, const Shape &shape, StatusCode want) {
    std::vector<TapOf<T>> taps(shape.taps.begin(), shape.taps.end());
    State *state = nullptr;
    EXPECT_EQ(m.init(&state, shape.base, shape.rate, taps.data(), static_cast<std::int32_t>(taps.size()), 2), want);
    return state;
}

// One image through a state.
template <class T, class State>
void checkImage(const Member<T, State> &m, State *state, const Shape &shape, RoiSize srcRoi, RoiSize dstRoi,
                Contents contents) {
    constexpr bool up = std::is_same_v<State, PyramidLayerUpState>;
    Rng rng = makeRng(m.name, static_cast<std::uint64_t>(srcRoi.width * 977 + srcRoi.height));
    const auto pick = rng();
    const std::int64_t size = sizeof(T);
    const Guard guard = pick % 2 != 0 ? Guard::behind : Guard::before;
    GuardedImage<T> src(srcRoi.width * m.channels, srcRoi.height,
                        {.padding = static_cast<std::int64_t>(pick / 2 % 3) * size,
                         .guard = guard,
                         .skew = static_cast<std::int64_t>(pick / 8 % 2)});
    GuardedImage<T> dst(dstRoi.width * m.channels, dstRoi.height,
                        {.padding = static_cast<std::int64_t>(pick / 16 % 3) * size,
                         .guard = guard,
                         .skew = static_cast<std::int64_t>(pick / 64 % 2)});
    src.fill(rng, contents);
    CountedAlloc::reset();
    ASSERT_EQ(m.run(src.data(), src.step(), srcRoi, dst.data(), dst.step(), dstRoi, state), StatusOk);
    ASSERT_EQ(CountedAlloc::made, 0);

    const std::vector<double> kernel = weightsOf<T>(shape.taps, up);
    const auto mixes = [&](std::int64_t count, std::int64_t n) {
        std::vector<Mix> all;
        for (std::int64_t i = 0; i < count; ++i) {
            all.push_back(up ? upMix(kernel, shape.rate, i, n) : downMix(kernel, shape.rate, i, n));
        }
        return all;
    };
    const std::vector<Mix> columns = mixes(dstRoi.width, srcRoi.width), rows = mixes(dstRoi.height, srcRoi.height);
    for (std::int64_t y = 0; y < dstRoi.height; ++y) {
        // Rows first, as sums and as sums of magnitudes.
        std::vector<double> sums(static_cast<std::size_t>(srcRoi.width * m.channels)), sizes(sums);
        for (const auto &[row, weight] : rows[static_cast<std::size_t>(y)]) {
            for (std::size_t x = 0; x < sums.size(); ++x) {
                const double term = weight * static_cast<double>(src.at(static_cast<std::int64_t>(x), row));
                sums[x] += term;
                sizes[x] += std::fabs(term);
            }
        }
        for (std::int64_t x = 0; x < dstRoi.width * m.channels; ++x) {
            double want = 0, magnitude = 0;
            for (const auto &[column, weight] : columns[static_cast<std::size_t>(x / m.channels)]) {
                const auto at = static_cast<std::size_t>(column * m.channels + x % m.channels);
                want += weight * sums[at];
                magnitude += std::fabs(weight) * sizes[at];
            }
            const auto got = static_cast<double>(dst.at(x, y));
            double tolerance = 5e-6 * magnitude + 1e-30;
            if constexpr (!std::is_same_v<T, float>) {
                want = std::clamp(want, 0.0, static_cast<double>(std::numeric_limits<T>::max()));
                tolerance = 0.5 + 3e-6 * magnitude;
            }
            const bool same = std::isfinite(want) ? std::fabs(got - want) <= tolerance : !std::isfinite(got);
            ASSERT_TRUE(same) << srcRoi.width << "x" << srcRoi.height << " to " << dstRoi.width << "x" << dstRoi.height
                              << " at rate " << shape.rate << ", " << shape.taps.size() << " taps from "
                              << shape.taps[0] << ", element (" << x << ", " << y << "): got " << got << ", want "
                              << want << " (seed " << baseSeed() << ")";
        }
    }
    ASSERT_TRUE(dst.paddingIntact());
}

constexpr float rates[] = {1.1f, 1.25f, 1.5f, 4.0f / 3, 1.9f, 2.0f, 2.00001f, 2.1f, 2.5f, 3.0f, 4.7f, 10.0f};

template <class T, class State> void checkSizes(const Member<T, State> &m, const Shape &shape, int step) {
    constexpr bool up = std::is_same_v<State, PyramidLayerUpState>;
    State *state = makeState(m, shape, StatusOk);
    ASSERT_NE(state, nullptr);
    for (std::int32_t width = 1; width <= shape.base.width; width += step) {
        const RoiSize src{width, 1 + (width * 5 + static_cast<std::int32_t>(shape.rate * 10)) % shape.base.height};
        const Contents contents = allContents[static_cast<std::size_t>(width) % 4];
        if constexpr (up) {
            RoiSize least{}, most{};
            ASSERT_EQ(rvxiGetPyramidUpROI(src, &least, &most, shape.rate), StatusOk);
            checkImage(m, state, shape, src, least, contents);
            checkImage(m, state, shape, src, most, contents);
        } else {
            // The state knows the heights of its own levels; any other size follows from itself.
            RoiSize want = downSize(src, shape.rate), level = shape.base;
            const auto length = static_cast<std::int32_t>(shape.taps.size());
            while (length < shape.base.width && length < shape.base.height && (level.width > 1 || level.height > 1)) {
                const RoiSize next = downSize(level, shape.rate);
                if (level.height == src.height) {
                    want = next;
                    break;
                }
                level = next;
            }
            checkImage(m, state, shape, src, want, contents);
        }
        if (testing::Test::HasFatalFailure()) {
            break;
        }
    }
    EXPECT_EQ(m.free(state), StatusOk);
}

TEST(PyramidLayerDown, EveryKernelAndRate) {
    everyMember<PyramidLayerDownState>([](const auto &m, auto) {
        for (const std::vector<int> &taps : kernels()) {
            for (const float rate : rates) {
                checkSizes(m, {taps, rate, {71, 13}}, 5);
            }
        }
        checkSizes(m, {{1, 4, 6, 4, 1}, 1.5f, {71, 40}}, 1);
        checkSizes(m, {{1, 2, 1}, 2.0f, {71, 40}}, 1);
        checkSizes(m, {{1, 2, 4, 8, 4, 2, 1}, 3.3f, {50, 20}}, 1);
    });
}

TEST(PyramidLayerUp, EveryKernelAndRate) {
    everyMember<PyramidLayerUpState>([](const auto &m, auto) {
        for (const std::vector<int> &taps : kernels()) {
            for (const float rate : rates) {
                if (taps[0] == -1 && rate != 2.0f) {
                    continue; // weights that all but cancel: no result is worth comparing
                }
                checkSizes(m, {taps, rate, {31, 9}}, 5);
            }
        }
        checkSizes(m, {{1, 4, 6, 4, 1}, 1.5f, {40, 9}}, 1);
        checkSizes(m, {{1, 4, 6, 4, 1}, 2.0f, {40, 9}}, 1);
    });
}

// Rows longer than a strip, in a state made for a tiny image too: buffers do not depend on the size.
TEST(PyramidLayer, LongRows) {
    for (const float rate : {1.1f, 1.5f, 2.0f, 7.5f}) {
        for (const RoiSize base : {RoiSize{9000, 5}, RoiSize{6, 5}}) { // too low for a table of sizes
            everyMember<PyramidLayerDownState>([&](const auto &m, auto) {
                const Shape shape{{1, 4, 6, 4, 1}, rate, base};
                auto *state = makeState(m, shape, StatusOk);
                checkImage(m, state, shape, {9000, 4}, downSize({9000, 4}, rate), Contents::random);
                checkImage(m, state, shape, {8997, 5}, downSize({8997, 5}, rate), Contents::random);
                EXPECT_EQ(m.free(state), StatusOk);
            });
            everyMember<PyramidLayerUpState>([&](const auto &m, auto) {
                const Shape shape{{1, 4, 6, 4, 1}, rate, base};
                auto *state = makeState(m, shape, StatusOk);
                RoiSize least{}, most{};
                rvxiGetPyramidUpROI({6001, 2}, &least, &most, rate);
                checkImage(m, state, shape, {6001, 2}, most, Contents::random);
                EXPECT_EQ(m.free(state), StatusOk);
            });
        }
    }
}

// A long kernel on images that it exceeds, mirrored over and over.
TEST(PyramidLayer, LongKernels) {
    std::vector<int> taps(401);
    for (std::size_t i = 0; i < taps.size(); ++i) {
        taps[i] = 1 + static_cast<int>(std::min(i, taps.size() - 1 - i) % 17);
    }
    for (const float rate : {1.2f, 2.0f, 3.1f}) {
        everyMember<PyramidLayerDownState>([&](const auto &m, auto) { checkSizes(m, {taps, rate, {60, 5}}, 13); });
        everyMember<PyramidLayerUpState>([&](const auto &m, auto) { checkSizes(m, {taps, rate, {60, 5}}, 13); });
    }
}

// Only heights are looked up: a source may be narrower than the level, or as narrow as the destination.
TEST(PyramidLayerDown, DestinationsWiderThanTheSource) {
    for (const float rate : {1.5f, 2.0f, 4.0f}) {
        everyMember<PyramidLayerDownState>([&](const auto &m, auto) {
            const Shape shape{{1, 4, 6, 4, 1}, rate, {100, 40}};
            auto *state = makeState(m, shape, StatusOk);
            for (const std::int32_t width : {1, 2, 3, 20, 99, 300}) {
                checkImage(m, state, shape, {width, 40}, downSize({100, 40}, rate), Contents::random);
            }
            EXPECT_EQ(m.free(state), StatusOk);
        });
    }
}

// A pixel that has no weight plays no part, whatever it holds.
TEST(PyramidLayer, NaNReachesItsWeights) {
    constexpr float kernel[] = {1, 4, 6, 4, 1};
    GuardedImage<float> src(64, 5);
    for (std::int64_t i = 0; i < 320; ++i) {
        src.set(i % 64, i / 64, i % 64 == 32 ? NAN : 2.0f);
    }
    PyramidLayerDownState *down = nullptr;
    ASSERT_EQ(rvxiPyramidLayerDownInitAlloc_32f_C1R(&down, {64, 4}, 1.5f, kernel, 5, 2), StatusOk);
    const RoiSize roi = downSize({64, 5}, 1.5f);
    GuardedImage<float> small(roi.width, roi.height);
    ASSERT_EQ(rvxiPyramidLayerDown_32f_C1R(src.data(), src.step(), src.roi(), small.data(), small.step(), roi, down),
              StatusOk);
    for (std::int64_t x = 0; x < roi.width; ++x) { // taps from floor(1.5 x) - 2 to ceil(1.5 x) + 2
        EXPECT_EQ(std::isnan(small.at(x, 0)), x * 3 / 2 - 2 <= 32 && (x * 3 + 1) / 2 + 2 >= 32) << x;
    }
    EXPECT_EQ(rvxiPyramidLayerDownFree_32f_C1R(down), StatusOk);

    PyramidLayerUpState *up = nullptr;
    ASSERT_EQ(rvxiPyramidLayerUpInitAlloc_32f_C1R(&up, {64, 5}, 2.0f, kernel, 5, 2), StatusOk);
    GuardedImage<float> large(128, 10);
    ASSERT_EQ(rvxiPyramidLayerUp_32f_C1R(src.data(), src.step(), src.roi(), large.data(), large.step(), {128, 10}, up),
              StatusOk);
    for (std::int64_t x = 0; x < 128; ++x) {
        EXPECT_EQ(std::isnan(large.at(x, 3)), x >= 62 && x <= 66) << x;
    }
    EXPECT_EQ(rvxiPyramidLayerUpFree_32f_C1R(up), StatusOk);
}

// ------------------------------------------------------------------------------------------------------ set-up

template <class State> void checkAsymmetric() {
    everyMember<State>([](const auto &m, auto zero) {
        using T = decltype(zero);
        constexpr bool up = std::is_same_v<State, PyramidLayerUpState>;
        Shape shape{{1, 4, 6, 4, 2}, 1.5f, {30, 20}};
        State *state = makeState(m, shape, StatusKernelNotSymmetric);
        ASSERT_NE(state, nullptr) << "the warning comes with a state";
        shape.taps = {1, 4, 6, 4, 1}; // the left half counts
        RoiSize least{}, most{};
        rvxiGetPyramidUpROI(shape.base, &least, &most, 1.5f);
        checkImage<T, State>(m, state, shape, shape.base, up ? most : downSize(shape.base, 1.5f), Contents::random);
        EXPECT_EQ(m.free(state), StatusOk);
    });
}

TEST(PyramidLayerInit, AsymmetricKernelsAreMirrored) {
    checkAsymmetric<PyramidLayerDownState>();
    checkAsymmetric<PyramidLayerUpState>();
}

// Floats may differ by the smallest normal number, and a sum of that size is no divisor.
TEST(PyramidLayerInit, TheSmallestFloat) {
    const auto status = [](float left, float right) {
        const float kernel[] = {left, 1, right};
        PyramidLayerDownState *state = nullptr;
        const StatusCode result = rvxiPyramidLayerDownInitAlloc_32f_C1R(&state, {9, 9}, 2.0f, kernel, 3, 2);
        EXPECT_EQ(rvxiPyramidLayerDownFree_32f_C1R(state), StatusOk);
        return result;
    };
    constexpr float tiny = std::numeric_limits<float>::min();
    EXPECT_EQ(status(0, tiny), StatusOk);
    EXPECT_EQ(status(0, std::nextafter(tiny, 1.0f)), StatusKernelNotSymmetric);
    EXPECT_EQ(status(0.25f, std::nextafter(0.25f, 1.0f)), StatusKernelNotSymmetric);

    for (const float sum : {tiny, -tiny, std::nextafter(tiny, 1.0f)}) {
        const float kernel[] = {0, sum, 0};
        PyramidLayerDownState *state = nullptr;
        ASSERT_EQ(rvxiPyramidLayerDownInitAlloc_32f_C1R(&state, {2, 2}, 2.0f, kernel, 3, 2), StatusOk);
        const float src[] = {8, 8, 8, 8};
        float dst = 0;
        EXPECT_EQ(rvxiPyramidLayerDown_32f_C1R(src, 8, {2, 2}, &dst, 4, {1, 1}, state), StatusOk);
        EXPECT_EQ(dst, std::fabs(sum) > tiny ? 8.0f : 0.0f) << sum;
        EXPECT_EQ(rvxiPyramidLayerDownFree_32f_C1R(state), StatusOk);
    }
}

template <class State> void checkInit() {
    everyMember<State>([](const auto &m, auto zero) {
        using Tap = TapOf<decltype(zero)>;
        const Tap kernel[] = {1, 4, 6, 4, 1};
        failEveryAllocation<State>([&](State **s) { return m.init(s, {40, 30}, 1.5f, kernel, 5, 2); }, m.free);
        EXPECT_EQ(m.free(nullptr), StatusNullPointer);

        struct Args {
            State **state;
            RoiSize roi;
            float rate;
            const Tap *kernel;
            std::int32_t size, mode;
        };
        Faults<Args> faults;
        faults.nulls(&Args::state, &Args::kernel).empty(&Args::roi);
        faults.values(StatusBadArgument, &Args::mode, {0, 1, 3, -2});
        faults.values(StatusBadArgument, &Args::rate, {1.0f, -3.0f, 10.00001f, NAN});
        faults.values(StatusBadArgument, &Args::size, {4, 1, 2, 0, -5, INT32_MIN});
        State *state = nullptr;
        const std::int64_t live = CountedAlloc::live;
        expectFaultOrder<Args>(
            {&state, {8, 9}, 10.0f, kernel, 5, 2}, faults,
            [&](const Args &a) { return m.init(a.state, a.roi, a.rate, a.kernel, a.size, a.mode); },
            [&] {
                const auto *bytes = reinterpret_cast<const std::uint8_t *>(&state);
                return std::vector<std::uint8_t>(bytes, bytes + sizeof state);
            });
        EXPECT_EQ(m.free(state), StatusOk);
        EXPECT_EQ(CountedAlloc::live, live);
    });
}

TEST(PyramidLayerInit, StatusesAndFailingAllocations) {
    checkInit<PyramidLayerDownState>();
    checkInit<PyramidLayerUpState>();
}

template <class State> void checkCallStatuses() {
    everyMember<State>([](const auto &m, auto zero) {
        using T = decltype(zero);
        constexpr bool up = std::is_same_v<State, PyramidLayerUpState>;
        constexpr auto size = static_cast<std::int32_t>(sizeof(T));
        struct Args {
            const T *src;
            std::int32_t srcStep;
            RoiSize srcRoi;
            T *dst;
            std::int32_t dstStep;
            RoiSize dstRoi;
            State *state;
        };
        State *state = makeState(m, {{1, 4, 6, 4, 1}, 1.5f, {12, 9}}, StatusOk);
        const RoiSize to = up ? RoiSize{18, 13} : RoiSize{8, 6};
        GuardedImage<T> src(12 * m.channels, 9, {.padding = 8}), dst(to.width * m.channels, to.height, {.padding = 8});
        const std::int32_t srcRow = 12 * m.channels * size, dstRow = to.width * m.channels * size;
        Faults<Args> faults;
        faults.nulls(&Args::src, &Args::dst, &Args::state).empty(&Args::srcRoi).shortSteps(srcRow, &Args::srcStep);
        faults.values(StatusBadStep, &Args::dstStep, {-dstRow});
        faults.unevenSteps(srcRow, size, &Args::srcStep).unevenSteps(dstRow, size, &Args::dstStep);
        // Too low, too high, too narrow, without columns.
        faults.values(StatusBadSize, &Args::dstRoi,
                      {{to.width, to.height - 1},
                       {to.width, to.height + 1},
                       {to.width - (up ? 2 : 1), to.height},
                       {-1, to.height}});
        expectFaultOrder<Args>(
            {src.data(), src.step(), {12, 9}, dst.data(), dst.step(), to, state}, faults,
            [&](const Args &a) { return m.run(a.src, a.srcStep, a.srcRoi, a.dst, a.dstStep, a.dstRoi, a.state); },
            [&] { return dst.bytes(); });
        EXPECT_EQ(m.run(src.data(), src.step(), {12, 9}, dst.data(), dstRow - size, to, state), StatusBadStep);
        EXPECT_EQ(m.free(state), StatusOk);
    });
}

TEST(PyramidLayer, StatusesInTheOrderOfTheChecks) {
    checkCallStatuses<PyramidLayerDownState>();
    checkCallStatuses<PyramidLayerUpState>();
}

} // namespace
