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

template <class V>
void expectFeature(const HaarFeature &got, const PlainFeature<V> &want, std::uint32_t tag, Tilt tilt) {
    EXPECT_EQ(got.tag, tag);
    EXPECT_EQ(valueOf<V>(got.threshold), want.threshold);
    EXPECT_EQ(valueOf<V>(got.value1), want.value1);
    EXPECT_EQ(valueOf<V>(got.value2), want.value2);
    ASSERT_EQ(got.rectCount, static_cast<std::int32_t>(want.rects.size()));
    for (std::size_t k = 0; k < want.rects.size(); ++k) {
        EXPECT_EQ(valueOf<V>(got.rects[k].weight), want.weights[k]);
        const auto corners = plainCorners(want.rects[k], tilt);
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_EQ(got.rects[k].corners[i].x, corners[i].x) << "rectangle " << k << " corner " << i;
            EXPECT_EQ(got.rects[k].corners[i].y, corners[i].y) << "rectangle " << k << " corner " << i;
        }
    }
}

TYPED_TEST(HaarRecords, FieldsOfMadeRecords) {
    Rng rng = makeRng("records");
    for (int round = 0; round < 40; ++round) {
        const bool tilted = round % 2 != 0;
        const Features<TypeParam> features =
            randomFeatures<TypeParam>(rng, round / 2, {tilted ? Tilt::down : Tilt::none});
        std::vector<std::size_t> order = recordOrder(features);
        if (tilted) {
            std::iota(order.begin(), order.end(), 0);
        }
        CountedAlloc::reset();
        const Record record = makeRecord(features, tilted);
        ASSERT_NE(record, nullptr);
        std::int32_t rects = 0, two = 0, three = 0, right = 0, low = 0;
        const HaarRectangle *next = reinterpret_cast<HaarRectangle *>(record->features + features.size());
        for (std::size_t i = 0; i < order.size(); ++i) {
            const PlainFeature<TypeParam> &feature = features[order[i]];
            const auto tag = static_cast<std::uint32_t>(order[i] * 256 + tilted);
            EXPECT_EQ(record->features[i].rects, next);
            ASSERT_NO_FATAL_FAILURE(expectFeature(record->features[i], feature, tag, tilted ? Tilt::down : Tilt::none));
            next += feature.rects.size();
            rects += static_cast<std::int32_t>(feature.rects.size());
            two += feature.rects.size() == 2;
            three += feature.rects.size() == 3;
            for (const Rect2i rect : feature.rects) {
                right = std::max(right, rect.x + rect.width);
                low = std::max(low, rect.y + rect.height + (tilted ? rect.width : 0));
            }
        }
        EXPECT_EQ(CountedAlloc::made, 1);
        EXPECT_EQ(CountedAlloc::largest, 56 + 32 * std::int64_t{record->featureCount} + 36 * rects);
        EXPECT_EQ(reinterpret_cast<char *>(record->features), reinterpret_cast<char *>(record.get()) + 56);
        EXPECT_EQ(record->featureCount, round / 2);
        EXPECT_EQ(record->rectCount, rects);
        EXPECT_EQ(record->placedRects, rects);
        EXPECT_EQ(record->twoRectCount, two);
        EXPECT_EQ(record->twoOrThreeRectCount, two + three);
        EXPECT_EQ(record->tiltedClassifier, tilted);
        RoiSize size{-1, -1};
        EXPECT_EQ(RecordCalls<TypeParam>::size(record.get(), &size), StatusOk);
        EXPECT_EQ(size.width, right);
        EXPECT_EQ(size.height, low);
    }
}

template <class V> Features<V> oneFeatureOf(const std::vector<Rect2i> &rects, V weight = 1) {
    return {{rects, std::vector<V>(rects.size(), weight), 0, 0, 0}};
}

TYPED_TEST(HaarRecords, TheBoundIsNoUnion) {
    const auto expectBound = [](const Record &record, Rect2i want) {
        EXPECT_EQ(std::memcmp(&record->bound, &want, sizeof want), 0)
            << record->bound.x << ", " << record->bound.y << ", " << record->bound.width << ", "
            << record->bound.height;
    };
    using V = TypeParam;
    expectBound(makeRecord(oneFeatureOf<V>({{5, 6, 2, 3}, {0, 0, 3, 4}})), {0, 0, 3, 4});
    expectBound(makeRecord(oneFeatureOf<V>({{0, 1, 3, 4}, {5, 6, 2, 3}})), {0, 1, 7, 8});
    expectBound(makeRecord(oneFeatureOf<V>({{4, 4, 9, 9}})), {4, 4, 5, 5});
    expectBound(makeRecord(oneFeatureOf<V>({{2, 3, 5, 2}, {8, 0, 1, 9}}), true), {2, 0, 7, 9});
    expectBound(makeRecord(Features<V>{}), {0, 0, 0, 0});
    // Placement order counts, not the caller's: here the feature with two rectangles comes first.
    Features<V> features = oneFeatureOf<V>({{0, 0, 3, 3}});
    features.push_back(oneFeatureOf<V>({{8, 8, 1, 1}, {8, 8, 1, 1}})[0]);
    expectBound(makeRecord(features), {0, 0, 3, 3});
}

TYPED_TEST(HaarRecords, FastFlagLooksAtFirstWeights) {
    const auto flag = [](std::vector<TypeParam> weights) {
        Features<TypeParam> features = oneFeatureOf<TypeParam>({{0, 0, 1, 1}}, -1);
        features.push_back(oneFeatureOf<TypeParam>({{0, 0, 1, 1}, {1, 1, 1, 1}})[0]);
        features[1].weights = std::move(weights);
        return makeRecord(features)->fastFlag;
    };
    EXPECT_EQ(flag({-1, 2}), 1);
    EXPECT_EQ(flag({2, -1}), 0);
    EXPECT_EQ(flag({-2, 2}), 0);
    if constexpr (std::is_same_v<TypeParam, float>) {
        EXPECT_EQ(flag({-1.75f, 2}), 1);
        EXPECT_EQ(flag({-0.75f, 2}), 0);
        EXPECT_EQ(flag({std::nanf(""), 2}), 0);
    }
}

TYPED_TEST(HaarRecords, TiltingGoesByTheCallersIndexOnce) {
    Rng rng = makeRng("tilting");
    for (int round = 0; round < 20; ++round) {
        const auto features = randomFeatures<TypeParam>(rng, 9, {Tilt::none, Tilt::down, Tilt::up});
        const Record record = makeMixed(features);
        const std::vector<std::uint8_t> all(features.size(), 255);
        for (const bool again : {false, true}) {
            const std::vector<std::size_t> order = recordOrder(features);
            for (std::size_t i = 0; i < order.size(); ++i) {
                const PlainFeature<TypeParam> &feature = features[order[i]];
                const Tilt tilt = again && feature.tilt == Tilt::none ? Tilt::down : feature.tilt;
                const auto tag = static_cast<std::uint32_t>(order[i] * 256);
                ASSERT_NO_FATAL_FAILURE(
                    expectFeature(record->features[i], feature, tilt == Tilt::none ? tag : 1, tilt));
            }
            ASSERT_EQ(RecordCalls<TypeParam>::tilt(all.data(), 1, record.get()), StatusOk);
        }
    }
    const Record tilted = makeRecord(oneFeatureOf<TypeParam>({{3, 0, 2, 2}}), true);
    const std::uint8_t one = 1;
    EXPECT_EQ(RecordCalls<TypeParam>::tilt(&one, 1, tilted.get()), StatusBadArgument);
    EXPECT_EQ(RecordCalls<TypeParam>::tilt(nullptr, 1, tilted.get()), StatusNullPointer);
    EXPECT_EQ(RecordCalls<TypeParam>::tilt(&one, 1, nullptr), StatusNullPointer);
    EXPECT_EQ(RecordCalls<TypeParam>::tilt(&one, 1, makeRecord(Features<TypeParam>{}).get()), StatusOk);
    RoiSize size;
    EXPECT_EQ(RecordCalls<TypeParam>::size(nullptr, &size), StatusNullPointer);
    EXPECT_EQ(RecordCalls<TypeParam>::size(tilted.get(), nullptr), StatusNullPointer);
    EXPECT_EQ(RecordCalls<TypeParam>::free(nullptr), StatusNullPointer);
}

template <class V> struct InitCall {
    bool hasOutput = true;
    const Rect2i *rects;
    const V *weights, *thresholds, *value1, *value2;
    const std::int32_t *counts;
    std::int32_t length;
    bool failingMemory = false;
};

TYPED_TEST(HaarRecords, FaultsInTheirOrder) {
    using V = TypeParam;
    using C = InitCall<V>;
    Rng rng = makeRng("faults");
    const Arrays<V> a(randomFeatures<V>(rng, 4, {Tilt::down}));
    const C good{true,
                 a.rects.data(),
                 a.weights.data(),
                 a.thresholds.data(),
                 a.value1.data(),
                 a.value2.data(),
                 a.rectCounts.data(),
                 a.length()};
    for (const bool tilted : {false, true}) {
        HaarClassifier other{}, *output = &other;
        const auto call = [&](const C &c) {
            CountedAlloc::reset(c.failingMemory);
            const auto make = tilted ? RecordCalls<V>::makeTilted : RecordCalls<V>::make;
            const StatusCode status = make(c.hasOutput ? &output : nullptr, c.rects, c.weights, c.thresholds, c.value1,
                                           c.value2, c.counts, c.length);
            CountedAlloc::reset();
            if (status == StatusOk) {
                EXPECT_EQ(RecordCalls<V>::free(std::exchange(output, &other)), StatusOk);
            }
            return status;
        };
        std::vector<std::vector<Rect2i>> spoilt;
        const auto badRect = [&](auto spoil) {
            spoilt.push_back(a.rects);
            spoil(spoilt.back().back());
            return [rects = spoilt.back()](C &c) { c.rects = rects.data(); };
        };
        auto counts = a.rectCounts;
        counts.back() = 0;
        std::vector<Fault<C>> rectFaults = {{"x", StatusBadArgument, badRect([](Rect2i &r) { r.x = -1; })},
                                            {"y", StatusBadArgument, badRect([](Rect2i &r) { r.y = -1; })},
                                            {"width", StatusBadArgument, badRect([](Rect2i &r) { r.width = 0; })},
                                            {"height", StatusBadArgument, badRect([](Rect2i &r) { r.height = 0; })}};
        std::vector<Fault<C>> faults = {{"output", StatusNullPointer, [](C &c) { c.hasOutput = false; }},
                                        {"rects", StatusNullPointer, [](C &c) { c.rects = nullptr; }},
                                        {"weights", StatusNullPointer, [](C &c) { c.weights = nullptr; }},
                                        {"thresholds", StatusNullPointer, [](C &c) { c.thresholds = nullptr; }},
                                        {"value1", StatusNullPointer, [](C &c) { c.value1 = nullptr; }},
                                        {"value2", StatusNullPointer, [](C &c) { c.value2 = nullptr; }},
                                        {"counts", StatusNullPointer, [](C &c) { c.counts = nullptr; }},
                                        {"length", StatusBadSize, [](C &c) { c.length = -1; }},
                                        {"a count", StatusBadSize, [&](C &c) { c.counts = counts.data(); }}};
        const Fault<C> memory{"memory", StatusNoMemory, [](C &c) { c.failingMemory = true; }};
        if (!tilted) {
            faults.insert(faults.end(), rectFaults.begin(), rectFaults.end());
        }
        faults.push_back(memory);
        const std::int64_t live = CountedAlloc::live;
        expectFaultOrder<C>(good, faults, call, [&] {
            const auto *bytes = reinterpret_cast<const std::uint8_t *>(&output);
            return std::vector<std::uint8_t>(bytes, bytes + sizeof output);
        });
        if (tilted) { // the rectangles come last, and their faults empty the output
            rectFaults.push_back({"left", StatusBadArgument, badRect([](Rect2i &r) { r.height = r.x + 2; })});
            for (const Fault<C> &fault : rectFaults) {
                output = &other;
                C c = good;
                fault.apply(c);
                EXPECT_EQ(call(c), StatusBadArgument) << fault.name;
                EXPECT_EQ(output, nullptr) << fault.name;
            }
            C c = good;
            rectFaults[0].apply(c);
            memory.apply(c);
            EXPECT_EQ(call(c), StatusNoMemory);
        }
        EXPECT_EQ(CountedAlloc::live, live);
    }
}

// 2^31 bytes of record: as many rectangles as there are only in the count.
TYPED_TEST(HaarRecords, BlocksBeyondInt32AreNoMemory) {
    Arrays<TypeParam> a(oneFeatureOf<TypeParam>({{3, 0, 2, 2}}));
    a.rectCounts[0] = INT32_MAX;
    HaarClassifier *record = nullptr;
    CountedAlloc::reset();
    EXPECT_EQ(RecordCalls<TypeParam>::makeTilted(&record, a.rects.data(), a.weights.data(), a.thresholds.data(),
                                                 a.value1.data(), a.value2.data(), a.rectCounts.data(), 1),
              StatusNoMemory);
    EXPECT_EQ(CountedAlloc::made, 0);
}

} // namespace
