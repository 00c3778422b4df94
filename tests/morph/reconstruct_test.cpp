// Reconstruction against its definition, growth by one pixel everywhere at once until nothing changes, and against
// flood fills where the images have two values.
#include "segment/shapes.h"
#include "support/guarded.h"
#include "support/status_table.h"

#include "rvxcv.h"

#include <algorithm>
#include <ctime>

namespace {

using namespace support;

template <class T> struct Member {
    using Function = StatusCode (*)(const T *, std::int32_t, T *, std::int32_t, RoiSize, NormKind, std::uint8_t *);
    using Query = StatusCode (*)(RoiSize, std::int32_t *);
    Function rising, falling;
    Query size;

    Function of(bool rises) const { return rises ? rising : falling; }
};
template <class T> Member<T> member;
template <>
const Member<std::uint8_t> member<std::uint8_t>{rvxiMorphReconstructDilate_8u_C1IR, rvxiMorphReconstructErode_8u_C1IR,
                                                rvxiMorphReconstructGetBufferSize_8u_C1R};
template <>
const Member<std::uint16_t> member<std::uint16_t>{
    rvxiMorphReconstructDilate_16u_C1IR, rvxiMorphReconstructErode_16u_C1IR, rvxiMorphReconstructGetBufferSize_16u_C1R};
template <>
const Member<float> member<float>{rvxiMorphReconstructDilate_32f_C1IR, rvxiMorphReconstructErode_32f_C1IR,
                                  rvxiMorphReconstructGetBufferSize_32f_C1R};

std::int64_t scratchBytes(std::int64_t width, std::int64_t height) { return 5 * width * height + 8 * width + 2304; }

template <class T>
std::vector<T> plainReconstruction(const std::vector<T> &mask, std::vector<T> marker, std::int64_t width,
                                   std::int64_t height, bool rises, bool eight) {
    const auto further = [&](T a, T b) { return rises ? std::max(a, b) : std::min(a, b); };
    const auto limited = [&](T a, T b) { return rises ? std::min(a, b) : std::max(a, b); };
    const auto at = [&](std::int64_t x, std::int64_t y) { return static_cast<std::size_t>(y * width + x); };
    for (std::size_t i = 0; i < mask.size(); ++i) {
        marker[i] = limited(marker[i], mask[i]);
    }
    // In place, from both ends in turn: the order does not matter.
    const auto grow = [&](std::int64_t i) {
        const std::int64_t x = i % width, y = i / width;
        T best = marker[at(x, y)];
        for (std::int64_t v = std::max<std::int64_t>(y - 1, 0); v <= std::min(y + 1, height - 1); ++v) {
            for (std::int64_t u = std::max<std::int64_t>(x - 1, 0); u <= std::min(x + 1, width - 1); ++u) {
                best = eight || u == x || v == y ? further(best, marker[at(u, v)]) : best;
            }
        }
        marker[at(x, y)] = limited(best, mask[at(x, y)]);
    };
    for (std::vector<T> before; before != marker;) {
        before = marker;
        for (std::int64_t i = 0; i < width * height; ++i) {
            grow(i);
        }
        for (std::int64_t i = width * height - 1; i >= 0; --i) {
            grow(i);
        }
    }
    return marker;
}

enum class Pair {
    noise,     // both the whole range
    plateaus,  // few values: ties and growth over distances
    domes,     // the mask less a constant
    corridors, // rough paths of any width that wind between walls, seeds of all levels along them
    seeds      // single high pixels in a rough mask
};
constexpr Pair allPairs[] = {Pair::noise, Pair::plateaus, Pair::domes, Pair::corridors, Pair::seeds};

template <class T> struct Images { std::vector<T> mask, marker; };

// Levels 0 .. 1000, spread over the type's range so that all bytes of a level count; mirrored for erosion.
template <class T> T levelValue(std::int64_t level, bool rises) {
    level = rises ? level : 1000 - level;
    if constexpr (std::is_same_v<T, float>) {
        return static_cast<float>(level - 500) * 7.03f;
    } else {
        return static_cast<T>(level * std::numeric_limits<T>::max() / 1000);
    }
}

template <class T> Images<T> drawPair(Pair pair, std::int64_t width, std::int64_t height, bool rises, Rng &rng) {
    const bool large = width > 200; // fronts of many levels run through wide corridors and overtake each other
    const std::int64_t scale = large ? 9 : uniform(rng, 1, 4);
    const Picture corridor = draw(Shape::spiral, width / scale + 1, height / scale + 1, rng);
    Images<T> images;
    std::int64_t wave = 500;
    for (std::int64_t i = 0; i < width * height; ++i) {
        std::int64_t mask = uniform(rng, 0, 1000), marker = uniform(rng, 0, 1000);
        switch (pair) {
        case Pair::plateaus:
            mask = mask / 300 * 300;
            marker = marker > 950 ? 600 : 0;
            break;
        case Pair::domes:
            wave = std::clamp<std::int64_t>(wave + uniform(rng, -40, 40), 0, 1000);
            mask = wave;
            marker = std::max<std::int64_t>(wave - 100, 0);
            break;
        case Pair::corridors:
            mask = corridor.at(i % width / scale, i / width / scale) ? 200 + mask * 4 / 5 : 0;
            marker = large ? (uniform(rng, 0, 1999) == 0 ? marker * 3 / 5 : 0) : marker > 970 ? mask : 0;
            break;
        case Pair::seeds:
            mask = 500 + mask / 2;
            marker = marker > 980 ? marker : marker / 4;
            break;
        default:
            break;
        }
        images.mask.push_back(levelValue<T>(mask, rises));
        images.marker.push_back(levelValue<T>(marker, rises));
    }
    return images;
}

// The sign of a zero is not fixed, and with a NaN no value is.
template <class T>
void expectReconstruction(const Images<T> &images, std::int64_t width, std::int64_t height, bool rises, NormKind norm,
                          int salt) {
    constexpr std::int64_t size = sizeof(T);
    const Guard guard = salt % 2 != 0 ? Guard::before : Guard::behind;
    GuardedImage<T> mask(width, height, {.padding = size * (salt % 3), .guard = guard});
    GuardedImage<T> marker(width, height,
                           {.padding = size * (salt % 4), .guard = guard, .skew = salt % 5 == 4 ? 1 : 0});
    bool anyNan = false;
    for (std::size_t i = 0; i < images.mask.size(); ++i) {
        const auto at = static_cast<std::int64_t>(i);
        mask.set(at % width, at / width, images.mask[i]);
        marker.set(at % width, at / width, images.marker[i]);
        anyNan |= images.mask[i] != images.mask[i] || images.marker[i] != images.marker[i];
    }
    const std::vector<std::uint8_t> before = mask.bytes();
    GuardedBuffer scratch(scratchBytes(width, height), salt % 3 == 0 ? Guard::before : Guard::behind);
    scratch.spoil();
    ASSERT_EQ(
        member<T>.of(rises)(mask.data(), mask.step(), marker.data(), marker.step(), marker.roi(), norm, scratch.data()),
        StatusOk);
    ASSERT_EQ(mask.bytes(), before) << "the mask was written";
    ASSERT_TRUE(marker.paddingIntact());
    if (!anyNan) {
        const auto want = plainReconstruction(images.mask, images.marker, width, height, rises, norm == NormInf);
        for (std::int64_t i = 0; i < width * height; ++i) {
            ASSERT_EQ(marker.at(i % width, i / width), want[static_cast<std::size_t>(i)])
                << "pixel " << i << " of " << width << "x" << height << (rises ? " dilate" : " erode") << " norm "
                << norm;
        }
    }
}

template <class T> void checkPairs() {
    Rng rng = makeRng("reconstruct", sizeof(T));
    int salt = 0;
    const auto run = [&](std::int64_t width, std::int64_t height, Pair pair) {
        for (const bool rises : {true, false}) {
            const Images<T> images = drawPair<T>(pair, width, height, rises, rng);
            for (const NormKind norm : {NormInf, NormL1}) {
                ASSERT_NO_FATAL_FAILURE(expectReconstruction(images, width, height, rises, norm, salt++))
                    << "contents " << static_cast<int>(pair);
            }
        }
    };
    constexpr std::int64_t block = 32 / sizeof(T);
    for (const Pair pair : allPairs) {
        for (std::int64_t width = 1; width <= 2 * block + 1; ++width) {
            ASSERT_NO_FATAL_FAILURE(run(width, 1 + width % 7, pair));
        }
        ASSERT_NO_FATAL_FAILURE(run(1, 70, pair));
        ASSERT_NO_FATAL_FAILURE(run(2, 39, pair));
        ASSERT_NO_FATAL_FAILURE(run(77, 61, pair));
    }
    ASSERT_NO_FATAL_FAILURE(run(301, 203, Pair::corridors));
    ASSERT_NO_FATAL_FAILURE(run(301, 203, Pair::domes));
}

TEST(MorphReconstruct, Definition8u) { checkPairs<std::uint8_t>(); }
TEST(MorphReconstruct, Definition16u) { checkPairs<std::uint16_t>(); }
TEST(MorphReconstruct, Definition32f) { checkPairs<float>(); }

// Corridors of width 1 with a seed in every column, each lower than the one before: scans alone advance by a turn each,
// and fronts that do not start with the highest level run over all columns again and again. Compared with one seed, in
// the process's own time.
template <class T> void checkTime(Shape shape) {
    constexpr std::int64_t width = 501, height = 501;
    Rng rng = makeRng("time");
    const Picture picture = draw(shape, width, height, rng);
    const auto end = [&](bool rises) {
        return [&, rises](std::int64_t x, std::int64_t y) { return levelValue<T>(picture.at(x, y) ? 1000 : 0, rises); };
    };
    for (const bool rises : {true, false}) {
        GuardedBuffer scratch(scratchBytes(width, height));
        const auto seconds = [&](int seeds) {
            GuardedImage<T> mask(width, height), marker(width, height);
            for (std::int64_t i = 0; i < width * height; ++i) {
                const std::int64_t x = i % width, y = i / width;
                const bool seed = y == height / 2 && x % 2 == 0 && x / 2 < seeds;
                mask.set(x, y, end(rises)(x, y));
                marker.set(x, y, levelValue<T>(seed ? 1000 - x : 0, rises));
            }
            const std::clock_t start = std::clock();
            EXPECT_EQ(member<T>.of(rises)(mask.data(), mask.step(), marker.data(), marker.step(), marker.roi(), NormL1,
                                          scratch.data()),
                      StatusOk);
            const std::clock_t ticks = std::clock() - start;
            EXPECT_TRUE(imageIs(marker, end(rises)));
            return static_cast<double>(ticks) / CLOCKS_PER_SEC;
        };
        EXPECT_LT(seconds(251), 12 * seconds(1) + 0.01) << (rises ? "dilate" : "erode");
    }
}

TEST(MorphReconstruct, TheTimeIsThatOfThePixels) {
    for (const Shape shape : {Shape::columns, Shape::spiral}) {
        checkTime<std::uint8_t>(shape);
        checkTime<std::uint16_t>(shape);
        checkTime<float>(shape);
    }
}

// Infinities, zeros of both signs and denormals are numbers; with a NaN only the end and the region are promised.
TEST(MorphReconstruct, SpecialFloats) {
    Rng rng = makeRng("special floats");
    for (int round = 0; round < 24; ++round) {
        Images<float> images;
        for (int i = 0; i < 61 * 40; ++i) {
            for (auto *image : {&images.mask, &images.marker}) {
                const float value = randomValue<float>(rng, round % 8 < 4 ? Contents::special : Contents::small);
                image->push_back(value == 1.0f || (round % 4 < 2 && std::isnan(value)) ? -0.0f : value);
            }
        }
        expectReconstruction(images, 61, 40, round % 2 == 0, round % 3 == 0 ? NormL1 : NormInf, round);
    }
}

template <class T> struct Call {
    const T *src;
    std::int32_t srcStep;
    T *srcDst;
    std::int32_t srcDstStep;
    RoiSize roi;
    NormKind norm;
    std::uint8_t *buffer;
};

template <class T> void checkStatuses() {
    using C = Call<T>;
    GuardedImage<T> src(9, 6), dst(9, 6);
    GuardedBuffer scratch(scratchBytes(9, 6));
    Faults<C> faults;
    faults.nulls(&C::src, &C::srcDst, &C::buffer).empty(&C::roi);
    faults.shortSteps(9 * sizeof(T), &C::srcStep, &C::srcDstStep);
    faults.unevenSteps(9 * sizeof(T), sizeof(T), &C::srcStep, &C::srcDstStep);
    faults.values(StatusBadArgument, &C::norm, {NormL2, -1});
    for (const bool rises : {true, false}) {
        expectFaultOrder<C>(
            {src.data(), src.step(), dst.data(), dst.step(), dst.roi(), NormL1, scratch.data()}, faults,
            [&](const C &c) {
                return member<T>.of(rises)(c.src, c.srcStep, c.srcDst, c.srcDstStep, c.roi, c.norm, c.buffer);
            },
            [&] { return dst.bytes(); });
    }
    const auto mask = src.bytes(); // is its own result
    EXPECT_EQ(member<T>.rising(src.data(), src.step(), src.data(), src.step(), src.roi(), NormL1, scratch.data()),
              StatusOk);
    EXPECT_EQ(src.bytes(), mask);
    std::int32_t size = 0;
    EXPECT_EQ(member<T>.size({640, 480}, &size), StatusOk);
    EXPECT_EQ(size, scratchBytes(640, 480));
}

TEST(MorphReconstruct, StatusesInTheOrderOfTheChecks) {
    checkStatuses<std::uint8_t>();
    checkStatuses<std::uint16_t>();
    checkStatuses<float>();
}

} // namespace
