// Marker labelling against its definition: pixels in scan order, a breadth-first search from each that is not labelled.
#include "segment/shapes.h"
#include "support/guarded.h"
#include "support/status_table.h"

#include "rvxcv.h"

#include <algorithm>

namespace {

using namespace support;

struct Labelled {
    std::vector<std::int32_t> labels;
    std::int32_t count = 0;
};

Labelled plainLabels(const Picture &picture, std::int32_t minLabel, std::int32_t maxLabel, bool eight) {
    const std::int64_t pixels = picture.width * picture.height;
    Labelled result{std::vector<std::int32_t>(static_cast<std::size_t>(pixels))};
    std::vector<char> reached(static_cast<std::size_t>(pixels));
    std::int32_t label = minLabel;
    for (std::int64_t i = 0; i < pixels; ++i) {
        if (picture.set[static_cast<std::size_t>(i)] == 0 || reached[static_cast<std::size_t>(i)] != 0) {
            continue;
        }
        result.labels[static_cast<std::size_t>(i)] = label;
        searchBreadthFirst(picture.width, picture.height, i, eight, reached, [&](std::int64_t, std::int64_t at) {
            const auto p = static_cast<std::size_t>(at);
            result.labels[p] = picture.set[p] != 0 ? label : 0;
            return picture.set[p] != 0;
        });
        ++result.count;
        label = label + 1 > maxLabel ? minLabel : label + 1;
    }
    return result;
}

// In place, the image is the destination and the source is not looked at.
StatusCode label(const std::uint8_t *, std::int32_t, std::uint8_t *image, std::int32_t step, RoiSize roi,
                 std::int32_t low, std::int32_t high, NormKind norm, std::int32_t *count, std::uint8_t *buffer) {
    return rvxiLabelMarkers_8u_C1IR(image, step, roi, low, high, norm, count, buffer);
}
StatusCode label(const std::uint16_t *, std::int32_t, std::uint16_t *image, std::int32_t step, RoiSize roi,
                 std::int32_t low, std::int32_t high, NormKind norm, std::int32_t *count, std::uint8_t *buffer) {
    return rvxiLabelMarkers_16u_C1IR(image, step, roi, low, high, norm, count, buffer);
}
StatusCode label(const std::uint8_t *src, std::int32_t srcStep, std::int32_t *dst, std::int32_t dstStep, RoiSize roi,
                 std::int32_t low, std::int32_t high, NormKind norm, std::int32_t *count, std::uint8_t *buffer) {
    return rvxiLabelMarkers_8u32s_C1R(src, srcStep, dst, dstStep, roi, low, high, norm, count, buffer);
}

template <class Src, class Dst> constexpr bool inPlace = std::is_same_v<Src, Dst>;

template <class Src, class Dst>
void expectLabels(const Picture &picture, std::int32_t minLabel, std::int32_t maxLabel, NormKind norm, Rng &rng,
                  int salt) {
    const std::int64_t width = picture.width, height = picture.height;
    const Guard guard = salt % 2 != 0 ? Guard::before : Guard::behind;
    GuardedImage<Src> src(width, height,
                          {.padding = static_cast<std::int64_t>(sizeof(Src)) * (salt % 3), .guard = guard});
    GuardedImage<Dst> dst(width, height,
                          {.padding = static_cast<std::int64_t>(sizeof(Dst)) * (salt % 4),
                           .guard = guard,
                           .skew = salt % 5 == 4 ? 1 : 0});
    for (std::int64_t i = 0; i < width * height; ++i) {
        constexpr std::int64_t most = std::numeric_limits<Src>::max();
        const std::int64_t values[] = {1, most, most / 2 + 1, uniform(rng, 1, most)};
        const auto value =
            static_cast<Src>(picture.at(i % width, i / width) ? values[uniform(rng, 0, 3)] : std::int64_t{0});
        src.set(i % width, i / width, value);
        if constexpr (inPlace<Src, Dst>) {
            dst.set(i % width, i / width, value);
        }
    }
    const std::vector<std::uint8_t> source = src.bytes();
    GuardedBuffer scratch(6 * width * height + 32, salt % 3 == 0 ? Guard::before : Guard::behind);
    scratch.spoil();
    std::int32_t count = -1;
    ASSERT_EQ(label(src.data(), src.step(), dst.data(), dst.step(), dst.roi(), minLabel, maxLabel, norm, &count,
                    scratch.data()),
              StatusOk);
    const Labelled want = plainLabels(picture, minLabel, maxLabel, norm == NormInf);
    SCOPED_TRACE(testing::Message() << width << "x" << height << " norm " << norm << " labels " << minLabel << ".."
                                    << maxLabel);
    ASSERT_EQ(count, want.count);
    ASSERT_TRUE(imageIs(
        dst, [&](std::int64_t x, std::int64_t y) { return want.labels[static_cast<std::size_t>(y * width + x)]; }));
    ASSERT_EQ(src.bytes(), source) << "the source was written";
}

template <class Src, class Dst> void checkPictures() {
    Rng rng = makeRng("labels", sizeof(Dst));
    int salt = 0;
    const auto run = [&](std::int64_t width, std::int64_t height, Shape shape) {
        const Picture picture = draw(shape, width, height, rng);
        const auto most = static_cast<std::int32_t>(std::numeric_limits<Dst>::max() - 1);
        const std::int32_t ranges[][2] = {{1, most}, {7, 7}, {most - 3, most}, {100, 131}};
        const auto &range = ranges[salt % 4];
        for (const NormKind norm : {NormInf, NormL1}) {
            ASSERT_NO_FATAL_FAILURE((expectLabels<Src, Dst>(picture, range[0], range[1], norm, rng, salt)));
        }
        ++salt;
    };
    for (const Shape shape : allShapes) {
        for (std::int64_t height = 1; height <= 6; ++height) {
            for (std::int64_t width = 1; width <= 9; ++width) {
                ASSERT_NO_FATAL_FAILURE(run(width, height, shape));
            }
        }
        for (const std::int64_t width : {15, 16, 17, 31, 33, 63, 64, 65, 127, 128, 129, 150, 192, 193}) {
            ASSERT_NO_FATAL_FAILURE(run(width, 9, shape));
        }
        for (const std::int64_t width : {1, 2, 3, 40}) {
            ASSERT_NO_FATAL_FAILURE(run(width, 70, shape));
        }
        ASSERT_NO_FATAL_FAILURE(run(260, 90, shape));
    }
}

TEST(LabelMarkers, Pictures8u) { checkPictures<std::uint8_t, std::uint8_t>(); }
TEST(LabelMarkers, Pictures16u) { checkPictures<std::uint16_t, std::uint16_t>(); }
TEST(LabelMarkers, Pictures8u32s) { checkPictures<std::uint8_t, std::int32_t>(); }

TEST(LabelMarkers, LabelsWrapAndTheCountDoesNot) {
    std::vector<std::uint8_t> image{255, 0, 1, 0, 2, 0, 3, 0, 254};
    std::vector<std::uint8_t> scratch(6 * 9 + 32);
    std::int32_t count = 0;
    EXPECT_EQ(rvxiLabelMarkers_8u_C1IR(image.data(), 9, {9, 1}, 253, 254, NormL1, &count, scratch.data()), StatusOk);
    EXPECT_EQ(count, 5);
    EXPECT_EQ(image, (std::vector<std::uint8_t>{253, 0, 254, 0, 253, 0, 254, 0, 253}));
}

template <class T> struct Call {
    const std::uint8_t *src;
    std::int32_t srcStep;
    T *dst;
    std::int32_t dstStep;
    RoiSize roi;
    std::int32_t minLabel, maxLabel;
    NormKind norm;
    std::int32_t *count;
    std::uint8_t *buffer;
};

template <class T> void checkStatuses() {
    using C = Call<T>;
    constexpr bool two = sizeof(T) == 4; // source and destination
    using Src = std::conditional_t<two, std::uint8_t, T>;
    GuardedImage<std::uint8_t> src(9, 6);
    GuardedImage<T> dst(9, 6);
    GuardedBuffer output(4), scratch(6 * 54 + 32);
    output.scribble();
    constexpr std::int64_t size = sizeof(T);
    Faults<C> faults;
    if (two) {
        faults.nulls(&C::src);
    }
    faults.nulls(&C::dst, &C::count, &C::buffer).empty(&C::roi);
    if (two) {
        faults.shortSteps(9, &C::srcStep);
    }
    faults.shortSteps(9 * size, &C::dstStep).unevenSteps(9 * size, size, &C::dstStep);
    faults.values(StatusBadArgument, &C::minLabel, {0});
    faults.add("no labels", StatusBadArgument, [](C &c) { c.maxLabel = c.minLabel - 1; });
    // The marker is no label.
    faults.values(StatusBadArgument, &C::maxLabel, {static_cast<std::int32_t>(std::numeric_limits<T>::max())});
    faults.values(StatusBadArgument, &C::norm, {NormL2, -1});
    expectFaultOrder<C>(
        {src.data(), src.step(), dst.data(), dst.step(), dst.roi(), 3,
         static_cast<std::int32_t>(std::numeric_limits<T>::max() - 1), NormL1,
         reinterpret_cast<std::int32_t *>(output.data()), scratch.data()},
        faults,
        [](const C &c) {
            return label(reinterpret_cast<const Src *>(c.src), c.srcStep, c.dst, c.dstStep, c.roi, c.minLabel,
                         c.maxLabel, c.norm, c.count, c.buffer);
        },
        [&] {
            std::vector<std::uint8_t> bytes = dst.bytes();
            bytes.insert(bytes.end(), output.data(), output.data() + output.size());
            return bytes;
        });
    std::int32_t count = 0;
    EXPECT_EQ(label(reinterpret_cast<const Src *>(src.data()), 4, dst.data(), 4, {0x7fffffff, 1}, 1, 2, NormL1, &count,
                    scratch.data()),
              StatusBadStep)
        << "row bytes that wrap";
}

TEST(LabelMarkers, StatusesInTheOrderOfTheChecks) {
    checkStatuses<std::uint8_t>();
    checkStatuses<std::uint16_t>();
    checkStatuses<std::int32_t>();
}

TEST(LabelMarkers, ScratchSizesAreThoseOfTheFloodFill) {
    for (const auto query : {rvxiLabelMarkersGetBufferSize_8u_C1R, rvxiLabelMarkersGetBufferSize_16u_C1R,
                             rvxiLabelMarkersGetBufferSize_8u32s_C1R}) {
        std::int32_t size = -1;
        EXPECT_EQ(query({1, 1}, &size), StatusOk);
        EXPECT_EQ(size, 38);
        EXPECT_EQ(query({1920, 1080}, &size), StatusOk);
        EXPECT_EQ(size, 12441632);
    }
}

} // namespace
