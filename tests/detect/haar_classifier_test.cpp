// Records of Haar classifiers, field by field, and the order of their checks.
#include "plain_haar.h"
#include "support/counted_alloc.h"
#include "support/status_table.h"

#include <bit>
#include <cstring>

namespace {

using namespace support;
using namespace detect;

template <class V> class HaarRecords : public testing::Test {};
using Numbers = testing::Types<float, std::int32_t>;
TYPED_TEST_SUITE(HaarRecords, Numbers);

template <class V> V valueOf(HaarNumber number) { return std::bit_cast<V>(number.s32); }

// All features of a record, in its order; the tilted ones have their place in the tag or not.
template <class V>
void expectFeatures(const Record &record, const Features<V> &features, const std::vector<std::size_t> &order,
                    bool placesKept) {
    HaarRectangle *rects = reinterpret_cast<HaarRectangle *>(record->features + features.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        const HaarFeature &got = record->features[i];
        const PlainFeature<V> &want = features[order[i]];
        const bool tilted = want.tilt != Tilt::none;
        EXPECT_EQ(got.tag, (tilted && !placesKept ? 0 : order[i] * 256) + tilted);
        EXPECT_EQ(valueOf<V>(got.threshold), want.threshold);
        EXPECT_EQ(valueOf<V>(got.value1), want.value1);
        EXPECT_EQ(valueOf<V>(got.value2), want.value2);
        EXPECT_EQ(got.rects, rects);
        ASSERT_EQ(got.rectCount, static_cast<std::int32_t>(want.rects.size()));
        for (std::size_t k = 0; k < want.rects.size(); ++k, ++rects) {
            EXPECT_EQ(valueOf<V>(rects->weight), want.weights[k]);
            const auto corners = plainCorners(want.rects[k], want.tilt);
            EXPECT_EQ(std::memcmp(rects->corners, corners.data(), sizeof corners), 0) << "rectangle " << k;
        }
    }
}

TYPED_TEST(HaarRecords, FieldsOfMadeRecords) {
    Rng rng = makeRng("records");
    for (int round = 0; round < 40; ++round) {
        const bool tilted = round % 2 != 0;
        auto features = randomFeatures<TypeParam>(rng, round / 2, {tilted ? Tilt::down : Tilt::none});
        for (PlainFeature<TypeParam> &feature : features) { // most of them -1, or truncated to it
            feature.weights[0] = static_cast<TypeParam>(uniform(rng, 0, 29) == 0 ? -0.75 : -1.75);
        }
        std::vector<std::size_t> order = recordOrder(features);
        if (tilted) {
            std::iota(order.begin(), order.end(), 0);
        }
        CountedAlloc::reset();
        const Record record = makeRecord(features, tilted);
        ASSERT_NE(record, nullptr);
        std::int32_t rects = 0, two = 0, three = 0, right = 0, low = 0, fast = 1;
        ASSERT_NO_FATAL_FAILURE(expectFeatures(record, features, order, true));
        for (const PlainFeature<TypeParam> &feature : features) {
            rects += static_cast<std::int32_t>(feature.rects.size());
            two += feature.rects.size() == 2;
            three += feature.rects.size() == 3;
            fast &= static_cast<int>(feature.weights[0]) == -1;
            for (const Rect2i rect : feature.rects) {
                right = std::max(right, rect.x + rect.width);
                low = std::max(low, rect.y + rect.height + (tilted ? rect.width : 0));
            }
        }
        EXPECT_EQ(CountedAlloc::made, 1);
        EXPECT_EQ(CountedAlloc::largest, 56 + 32 * std::int64_t{record->featureCount} + 36 * rects);
        EXPECT_EQ(reinterpret_cast<char *>(record->features), reinterpret_cast<char *>(record.get()) + 56);
        EXPECT_EQ(record->featureCount, round / 2);
        EXPECT_TRUE(record->rectCount == rects && record->placedRects == rects);
        EXPECT_EQ(record->twoRectCount, two);
        EXPECT_EQ(record->twoOrThreeRectCount, two + three);
        EXPECT_EQ(record->tiltedClassifier, tilted);
        EXPECT_EQ(record->fastFlag, fast);
        RoiSize size{-1, -1};
        EXPECT_EQ(RecordCalls<TypeParam>::size(record.get(), &size), StatusOk);
        EXPECT_TRUE(size.width == right && size.height == low);
    }
}

template <class V> Features<V> oneFeatureOf(const std::vector<Rect2i> &rects, V weight = 1) {
    return {{rects, std::vector<V>(rects.size(), weight), 0, 0, 0}};
}

TYPED_TEST(HaarRecords, TheBoundIsNoUnion) {
    using V = TypeParam;
    const auto boundOf = [](const Features<V> &features, bool tilted = false) {
        const Rect2i b = makeRecord(features, tilted)->bound;
        return std::array{b.x, b.y, b.width, b.height};
    };
    EXPECT_EQ(boundOf(oneFeatureOf<V>({{5, 6, 2, 3}, {0, 0, 3, 4}})), (std::array{0, 0, 3, 4}));
    EXPECT_EQ(boundOf(oneFeatureOf<V>({{2, 3, 5, 2}, {8, 0, 1, 9}}), true), (std::array{2, 0, 7, 9}));
    EXPECT_EQ(boundOf({}), (std::array{0, 0, 0, 0}));
    // Placement order counts, not the caller's: here the feature with two rectangles comes first.
    Features<V> features = oneFeatureOf<V>({{0, 0, 3, 3}});
    features.push_back(oneFeatureOf<V>({{8, 8, 1, 1}, {8, 8, 1, 1}})[0]);
    EXPECT_EQ(boundOf(features), (std::array{0, 0, 3, 3}));
}

TYPED_TEST(HaarRecords, TiltingGoesByTheCallersIndexOnce) {
    Rng rng = makeRng("tilting");
    for (int round = 0; round < 20; ++round) {
        auto features = randomFeatures<TypeParam>(rng, 9, {Tilt::none, Tilt::down, Tilt::up});
        const Record record = makeMixed(features);
        ASSERT_NO_FATAL_FAILURE(expectFeatures(record, features, recordOrder(features), false));
        // Marked again, the tilted ones stay as they are.
        const std::vector<std::uint8_t> all(features.size(), 255);
        ASSERT_EQ(RecordCalls<TypeParam>::tilt(all.data(), 1, record.get()), StatusOk);
        for (PlainFeature<TypeParam> &feature : features) {
            feature.tilt = feature.tilt == Tilt::none ? Tilt::down : feature.tilt;
        }
        ASSERT_NO_FATAL_FAILURE(expectFeatures(record, features, recordOrder(features), false));
    }
    using Calls = RecordCalls<TypeParam>;
    const Record tilted = makeRecord(oneFeatureOf<TypeParam>({{3, 0, 2, 2}}), true);
    const std::uint8_t one = 1;
    RoiSize size;
    EXPECT_EQ(Calls::tilt(&one, 1, tilted.get()), StatusBadArgument);
    EXPECT_EQ(Calls::tilt(nullptr, 1, tilted.get()), StatusNullPointer);
    EXPECT_EQ(Calls::tilt(&one, 1, nullptr), StatusNullPointer);
    EXPECT_EQ(Calls::size(nullptr, &size), StatusNullPointer);
    EXPECT_EQ(Calls::size(tilted.get(), nullptr), StatusNullPointer);
    EXPECT_EQ(Calls::free(nullptr), StatusNullPointer);
}

template <class V> struct InitCall {
    HaarClassifier **output;
    Arrays<V> arrays;
    int missing = -1; // the array that is null
    std::int32_t length;
    bool failingMemory = false;
};

TYPED_TEST(HaarRecords, FaultsInTheirOrder) {
    using V = TypeParam;
    using C = InitCall<V>;
    Rng rng = makeRng("faults");
    for (const bool tilted : {false, true}) {
        HaarClassifier other{}, *output = &other;
        const C good{&output, Arrays<V>(randomFeatures<V>(rng, 4, {Tilt::down})), -1, 4};
        const auto call = [&](const C &c) {
            CountedAlloc::reset(c.failingMemory);
            const StatusCode status = c.arrays.make(tilted, c.output, c.length, c.missing);
            CountedAlloc::reset();
            if (status == StatusOk) {
                EXPECT_EQ(RecordCalls<V>::free(std::exchange(output, &other)), StatusOk);
            }
            return status;
        };
        std::vector<Fault<C>> faults = {{"output", StatusNullPointer, [](C &c) { c.output = nullptr; }}};
        for (int i = 0; i < 6; ++i) {
            faults.push_back({"array " + std::to_string(i), StatusNullPointer, [i](C &c) { c.missing = i; }});
        }
        faults.push_back({"length", StatusBadSize, [](C &c) { c.length = -1; }});
        faults.push_back({"a count", StatusBadSize, [](C &c) { c.arrays.rectCounts.back() = 0; }});
        std::vector<Fault<C>> rectFaults = {
            {"x", StatusBadArgument, [](C &c) { c.arrays.rects.back().x = -1; }},
            {"y", StatusBadArgument, [](C &c) { c.arrays.rects.back().y = -1; }},
            {"width", StatusBadArgument, [](C &c) { c.arrays.rects.back().width = 0; }},
            {"height", StatusBadArgument, [](C &c) { c.arrays.rects.back().height = 0; }}};
        if (!tilted) {
            faults.insert(faults.end(), rectFaults.begin(), rectFaults.end());
        }
        faults.push_back({"memory", StatusNoMemory, [](C &c) { c.failingMemory = true; }});
        const std::int64_t live = CountedAlloc::live;
        expectFaultOrder<C>(good, faults, call, [&] {
            const auto *bytes = reinterpret_cast<const std::uint8_t *>(&output);
            return std::vector<std::uint8_t>(bytes, bytes + sizeof output);
        });
        // Tilted: the rectangles come behind the memory, and their faults empty the output.
        rectFaults.push_back({"left", StatusOk, [](C &c) { c.arrays.rects[0].height = c.arrays.rects[0].x + 2; }});
        for (const Fault<C> &fault : rectFaults) {
            C c = good;
            fault.apply(c);
            EXPECT_EQ(call(c), tilted ? StatusBadArgument : fault.status) << fault.name;
            EXPECT_EQ(std::exchange(output, &other), tilted ? nullptr : &other) << fault.name;
            c.failingMemory = true;
            EXPECT_TRUE(!tilted || call(c) == StatusNoMemory) << fault.name;
        }
        C large = good; // 2^31 bytes of record
        large.arrays.rectCounts.back() = INT32_MAX;
        EXPECT_TRUE(!tilted || call(large) == StatusNoMemory);
        EXPECT_EQ(CountedAlloc::live, live);
    }
}

} // namespace
