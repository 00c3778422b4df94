// Speckles against a search from every pixel.
#include "segment/shapes.h"
#include "support/guarded.h"
#include "support/status_table.h"

#include "rvxcv.h"

namespace {

using namespace support;

template <class T> struct Member {
    StatusCode (*mark)(T *, std::int32_t, RoiSize, T, std::int32_t, T, NormKind, std::uint8_t *);
    StatusCode (*size)(RoiSize, std::int32_t *);
};
template <class T> Member<T> member;
template <>
const Member<std::uint8_t> member<std::uint8_t>{rvxiMarkSpeckles_8u_C1IR, rvxiMarkSpecklesGetBufferSize_8u_C1R};
template <>
const Member<std::uint16_t> member<std::uint16_t>{rvxiMarkSpeckles_16u_C1IR, rvxiMarkSpecklesGetBufferSize_16u_C1R};
template <>
const Member<std::int16_t> member<std::int16_t>{rvxiMarkSpeckles_16s_C1IR, rvxiMarkSpecklesGetBufferSize_16s_C1R};
template <> const Member<float> member<float>{rvxiMarkSpeckles_32f_C1IR, rvxiMarkSpecklesGetBufferSize_32f_C1R};

std::int64_t scratchBytes(std::int64_t width, std::int64_t height) { return 4 * width * height + 16 * width + 64; }

template <class T> bool joins(T a, T b, T newVal, T maxDiff) {
    using Exact = std::conditional_t<std::is_same_v<T, float>, float, std::int64_t>;
    return a != newVal && b != newVal && std::abs(Exact{a} - Exact{b}) <= Exact{maxDiff};
}

template <class T>
std::vector<T> plainSpeckles(const std::vector<T> &image, std::int64_t width, std::int64_t height, T newVal,
                             std::int32_t maxSize, T maxDiff) {
    std::vector<T> result = image;
    std::vector<char> reached(image.size());
    for (std::int64_t i = 0; i < width * height; ++i) {
        if (reached[static_cast<std::size_t>(i)] != 0) {
            continue;
        }
        std::vector<std::int64_t> component{i};
        searchBreadthFirst(width, height, i, false, reached, [&](std::int64_t q, std::int64_t p) {
            const bool joined =
                joins(image[static_cast<std::size_t>(q)], image[static_cast<std::size_t>(p)], newVal, maxDiff);
            if (joined) {
                component.push_back(p);
            }
            return joined;
        });
        for (const std::int64_t p : component) {
            if (static_cast<std::int64_t>(component.size()) <= maxSize) {
                result[static_cast<std::size_t>(p)] = newVal;
            }
        }
    }
    return result;
}

template <class T>
void expectSpeckles(const std::vector<T> &pixels, std::int64_t width, std::int64_t height, T newVal,
                    std::int32_t maxSize, T maxDiff, int salt) {
    const Guard guard = salt % 2 != 0 ? Guard::before : Guard::behind;
    GuardedImage<T> image(
        width, height,
        {.padding = static_cast<std::int64_t>(sizeof(T)) * (salt % 3), .guard = guard, .skew = salt % 5 == 4 ? 1 : 0});
    for (std::int64_t i = 0; i < width * height; ++i) {
        image.set(i % width, i / width, pixels[static_cast<std::size_t>(i)]);
    }
    GuardedBuffer scratch(scratchBytes(width, height), salt % 3 == 0 ? Guard::before : Guard::behind);
    scratch.spoil();
    SCOPED_TRACE(testing::Message() << width << "x" << height << " new " << +newVal << " size " << maxSize << " diff "
                                    << +maxDiff);
    ASSERT_EQ(member<T>.mark(image.data(), image.step(), image.roi(), newVal, maxSize, maxDiff, NormL1, scratch.data()),
              StatusOk);
    const auto want = plainSpeckles(pixels, width, height, newVal, maxSize, maxDiff);
    ASSERT_TRUE(
        imageIs(image, [&](std::int64_t x, std::int64_t y) { return want[static_cast<std::size_t>(y * width + x)]; }));
}

template <class T> void checkContents() {
    Rng rng = makeRng("speckles", sizeof(T) + std::is_signed_v<T>);
    int salt = 0;
    // Few values make components of every size; of the special ones a NaN joins nothing.
    const auto noise = [&](std::int64_t width, std::int64_t height, Contents contents) {
        std::vector<T> pixels;
        for (std::int64_t i = 0; i < width * height; ++i) {
            const T value = randomValue<T>(rng, contents);
            // A zero of the other sign may be painted or not.
            pixels.push_back(uniform(rng, 0, 2) != 0 && i > 0 ? pixels.back() : value == T{0} ? T{0} : value);
        }
        const std::int32_t sizes[] = {0, 1, 2, 5, 30, INT32_MAX};
        using Limits = std::numeric_limits<T>;
        const T highest = Limits::has_infinity ? Limits::infinity() : Limits::max();
        const T diffs[] = {T{0}, T{1}, static_cast<T>(std::is_same_v<T, float> ? 700 : 90), highest};
        const T newVals[] = {T{0}, T{2}, highest, pixels[pixels.size() / 2]};
        expectSpeckles<T>(pixels, width, height, newVals[uniform(rng, 0, 3)], sizes[salt % 6], diffs[salt % 4], salt);
        ++salt;
    };
    for (const Contents contents : allContents) {
        for (std::int64_t width = 1; width <= 131; ++width) {
            ASSERT_NO_FATAL_FAILURE(noise(width, 1 + width % 6, contents));
        }
        for (int round = 0; round < 6; ++round) {
            ASSERT_NO_FATAL_FAILURE(noise(1 + 2 * round, 90, contents));
            ASSERT_NO_FATAL_FAILURE(noise(193, 70, contents));
        }
    }
    for (const Shape shape : allShapes) {
        const Picture picture = draw(shape, 101, 65, rng);
        const std::vector<T> pixels(picture.set.begin(), picture.set.end());
        ASSERT_NO_FATAL_FAILURE(expectSpeckles<T>(pixels, 101, 65, T{0}, 60, T{0}, ++salt));
        ASSERT_NO_FATAL_FAILURE(expectSpeckles<T>(pixels, 101, 65, T{7}, 1, T{0}, ++salt));
    }
}

TEST(MarkSpeckles, Contents8u) { checkContents<std::uint8_t>(); }
TEST(MarkSpeckles, Contents16u) { checkContents<std::uint16_t>(); }
TEST(MarkSpeckles, Contents16s) { checkContents<std::int16_t>(); }
TEST(MarkSpeckles, Contents32f) { checkContents<float>(); }

template <class T> struct Call {
    T *srcDst;
    std::int32_t step;
    RoiSize roi;
    T newVal;
    std::int32_t maxSize;
    T maxDiff;
    NormKind norm;
    std::uint8_t *buffer;
};

template <class T> void checkStatuses() {
    using C = Call<T>;
    GuardedImage<T> image(9, 6);
    GuardedBuffer scratch(scratchBytes(9, 6));
    Faults<C> faults;
    faults.nulls(&C::srcDst, &C::buffer).empty(&C::roi).shortSteps(9 * sizeof(T), &C::step);
    faults.unevenSteps(9 * sizeof(T), sizeof(T), &C::step);
    faults.values(StatusBadNormKind, &C::norm, {NormInf, NormL2}).values(StatusOutOfRange, &C::maxSize, {-1});
    if constexpr (std::is_signed_v<T>) {
        faults.values(StatusOutOfRange, &C::maxDiff, {T{-1}});
    }
    if constexpr (std::is_same_v<T, float>) {
        faults.values(StatusOutOfRange, &C::maxDiff, {std::numeric_limits<float>::quiet_NaN()});
    }
    expectFaultOrder<C>(
        {image.data(), image.step(), image.roi(), T{1}, 3, T{1}, NormL1, scratch.data()}, faults,
        [](const C &c) {
            return member<T>.mark(c.srcDst, c.step, c.roi, c.newVal, c.maxSize, c.maxDiff, c.norm, c.buffer);
        },
        [&] { return image.bytes(); });
    std::int32_t size = 0;
    EXPECT_EQ(member<T>.size({640, 480}, &size), StatusOk);
    EXPECT_EQ(size, scratchBytes(640, 480));
}

TEST(MarkSpeckles, StatusesInTheOrderOfTheChecks) {
    checkStatuses<std::uint8_t>();
    checkStatuses<std::uint16_t>();
    checkStatuses<std::int16_t>();
    checkStatuses<float>();
}

} // namespace
