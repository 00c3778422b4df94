// Features in their plainest form, the arrays in which a caller hands them over, and the records made from them.
#pragma once

#include "support/random.h"

#include "rvxcv.h"

#include <algorithm>
#include <array>
#include <memory>
#include <numeric>
#include <vector>

namespace detect {

using support::Rng;
using support::uniform;

enum class Tilt { none, down, up }; // down: as by the tilted InitAlloc or flag 1; up: as by flag 0

// V: the type of weights, thresholds and values.
template <class V> struct PlainFeature {
    std::vector<Rect2i> rects;
    std::vector<V> weights;
    V threshold, value1, value2;
    Tilt tilt = Tilt::none;
};
template <class V> using Features = std::vector<PlainFeature<V>>;

inline std::array<Point2i, 4> plainCorners(Rect2i r, Tilt tilt) {
    const std::int32_t x = r.x, y = r.y, w = r.width, h = r.height;
    if (tilt == Tilt::none) {
        return {{{x + w, y + h}, {x, y + h}, {x + w, y}, {x, y}}};
    }
    return tilt == Tilt::down
               ? std::array<Point2i, 4>{{{x + w - h, y + w + h}, {x - h, y + h}, {x + w, y + w}, {x, y}}}
               : std::array<Point2i, 4>{{{x, y + h}, {x - h, y}, {x + w, y + h - w}, {x + w - h, y - w}}};
}

// Rectangles that keep their tilted corners at -1 or behind.
inline Rect2i randomRect(Rng &rng, Tilt tilt) {
    const auto w = static_cast<std::int32_t>(uniform(rng, 1, 6)), h = static_cast<std::int32_t>(uniform(rng, 1, 5));
    const std::int32_t left = tilt == Tilt::none ? 0 : h - 1, top = tilt == Tilt::up ? w - 1 : 0;
    return {left + static_cast<std::int32_t>(uniform(rng, 0, 4)), top + static_cast<std::int32_t>(uniform(rng, 0, 3)),
            w, h};
}

// Values are small, so that stage sums often equal a stage threshold; some weights and thresholds are not.
template <class V> Features<V> randomFeatures(Rng &rng, std::int64_t count, const std::vector<Tilt> &tilts) {
    using support::Contents;
    const auto small = [&](int most) { return static_cast<V>(uniform(rng, -most, most)); };
    const auto any = [&](Contents large) { return rng() % 9 == 0 ? support::randomValue<V>(rng, large) : small(3); };
    Features<V> features(static_cast<std::size_t>(count));
    for (PlainFeature<V> &feature : features) {
        feature.tilt = tilts[rng() % tilts.size()];
        for (std::int64_t rects = uniform(rng, 1, 5); rects != 0; --rects) {
            feature.rects.push_back(randomRect(rng, feature.tilt));
            feature.weights.push_back(any(Contents::random));
        }
        feature.threshold = any(Contents::nearMax);
        feature.value1 = small(2);
        feature.value2 = small(2);
    }
    return features;
}

// The places of the features in an upright record: two rectangles, three, any other number.
template <class V> std::vector<std::size_t> recordOrder(const Features<V> &features) {
    std::vector<std::size_t> order(features.size());
    std::iota(order.begin(), order.end(), 0);
    const auto group = [&](std::size_t i) {
        const std::size_t rects = features[i].rects.size();
        return rects == 2 ? 0 : rects == 3 ? 1 : 2;
    };
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return group(a) < group(b); });
    return order;
}

template <class V> struct RecordCalls {
    static constexpr auto make = rvxiHaarClassifierInitAlloc_32f, makeTilted = rvxiTiltedHaarClassifierInitAlloc_32f;
    static constexpr auto free = rvxiHaarClassifierFree_32f;
    static constexpr auto tilt = rvxiTiltHaarFeatures_32f;
    static constexpr auto size = rvxiGetHaarClassifierSize_32f;
};
template <> struct RecordCalls<std::int32_t> {
    static constexpr auto make = rvxiHaarClassifierInitAlloc_32s, makeTilted = rvxiTiltedHaarClassifierInitAlloc_32s;
    static constexpr auto free = rvxiHaarClassifierFree_32s;
    static constexpr auto tilt = rvxiTiltHaarFeatures_32s;
    static constexpr auto size = rvxiGetHaarClassifierSize_32s;
};

// A caller's arrays, and the call that hands them over: all but one of them, if one is said to be missing.
template <class V> struct Arrays {
    std::vector<Rect2i> rects;
    std::vector<V> weights, thresholds, value1, value2;
    std::vector<std::int32_t> rectCounts;

    explicit Arrays(const Features<V> &features) {
        for (const PlainFeature<V> &feature : features) {
            rects.insert(rects.end(), feature.rects.begin(), feature.rects.end());
            weights.insert(weights.end(), feature.weights.begin(), feature.weights.end());
            thresholds.push_back(feature.threshold);
            value1.push_back(feature.value1);
            value2.push_back(feature.value2);
            rectCounts.push_back(static_cast<std::int32_t>(feature.rects.size()));
        }
    }
    StatusCode make(bool tilted, HaarClassifier **record, std::int32_t length, int missing = -1) const {
        const auto given = [&](int i, const auto &array) { return missing == i ? nullptr : array.data(); };
        return (tilted ? RecordCalls<V>::makeTilted
                       : RecordCalls<V>::make)(record, given(0, rects), given(1, weights), given(2, thresholds),
                                               given(3, value1), given(4, value2), given(5, rectCounts), length);
    }
};

using Record = std::unique_ptr<HaarClassifier, StatusCode (*)(HaarClassifier *)>;

// Null when it fails. The arrays hold one feature more than is asked for: they are never empty.
template <class V> Record makeRecord(Features<V> features, bool tilted = false) {
    const auto length = static_cast<std::int32_t>(features.size());
    features.push_back({{Rect2i{}}, {V{}}, 0, 0, 0});
    HaarClassifier *record = nullptr;
    Arrays<V>(features).make(tilted, &record, length);
    return {record, RecordCalls<V>::free};
}

// Upright features, then those marked tilted in both ways.
template <class V> Record makeMixed(const Features<V> &features) {
    Record record = makeRecord(features);
    for (const Tilt tilt : {Tilt::down, Tilt::up}) {
        std::vector<std::uint8_t> marks(features.size() + 1);
        std::transform(features.begin(), features.end(), marks.begin(),
                       [&](const auto &feature) { return feature.tilt == tilt ? 0x80 : 0; });
        RecordCalls<V>::tilt(marks.data(), tilt == Tilt::down ? -7 : 0, record.get());
    }
    return record;
}

} // namespace detect
