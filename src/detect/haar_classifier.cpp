// Records of Haar classifiers: made from arrays of features, tilted, measured, released.
#include "detect/haar_record.h"
#include "frame/alloc.h"
#include "frame/api.h"
#include "kernel/checks.h"
#include "kernel/scratch.h"

#include <algorithm>

namespace rvxcv {
namespace {

// --------------------------------------------------------------------------------------------------- the rectangles

// In 64 bits; corners beyond int32, which no image has, wrap.
struct Box {
    std::int64_t x, y, w, h;

    explicit Box(Rect2i r) : x(r.x), y(r.y), w(r.width), h(r.height) {}
    // The box of an upright rectangle's corners.
    explicit Box(const Point2i (&corners)[4])
        : x(corners[topLeft].x), y(corners[topLeft].y), w(corners[bottomRight].x - x), h(corners[bottomRight].y - y) {}

    bool isUpright() const { return x >= 0 && y >= 0 && w >= 1 && h >= 1; }
    bool isTilted() const { return isUpright() && h <= x + 1; }
};

Point2i corner(std::int64_t x, std::int64_t y) { return {static_cast<std::int32_t>(x), static_cast<std::int32_t>(y)}; }

void setCorners(HaarRectangle &rect, Point2i first, Point2i second, Point2i third, Point2i fourth) {
    rect.corners[0] = first;
    rect.corners[1] = second;
    rect.corners[2] = third;
    rect.corners[3] = fourth;
}

void placeUpright(HaarRectangle &rect, Box b) {
    setCorners(rect, corner(b.x + b.w, b.y + b.h), corner(b.x, b.y + b.h), corner(b.x + b.w, b.y), corner(b.x, b.y));
}

// From the top corner (x, y) down.
void placeTilted(HaarRectangle &rect, Box b) {
    setCorners(rect, corner(b.x + b.w - b.h, b.y + b.w + b.h), corner(b.x - b.h, b.y + b.h),
               corner(b.x + b.w, b.y + b.w), corner(b.x, b.y));
}

// From the bottom corner (x, y + h) up.
void placeTiltedUp(HaarRectangle &rect, Box b) {
    setCorners(rect, corner(b.x, b.y + b.h), corner(b.x - b.h, b.y), corner(b.x + b.w, b.y + b.h - b.w),
               corner(b.x + b.w - b.h, b.y - b.w));
}

// Not a union: while it grows, its width and height are absolute columns and rows, or those of the first rectangle.
class Bound {
public:
    void grow(Box b) {
        if (empty_) {
            box_ = b;
            empty_ = false;
        }
        box_.x = std::min(box_.x, b.x);
        box_.y = std::min(box_.y, b.y);
        if (b.x + b.w > box_.x + box_.w) {
            box_.w = b.x + b.w;
        }
        if (b.y + b.h > box_.y + box_.h) {
            box_.h = b.y + b.h;
        }
    }
    Rect2i finished() const {
        const Point2i origin = corner(box_.x, box_.y), extent = corner(box_.w - box_.x, box_.h - box_.y);
        return {origin.x, origin.y, extent.x, extent.y};
    }

private:
    Box box_{Rect2i{}};
    bool empty_ = true;
};

// ------------------------------------------------------------------------------------------------ making a record

// A caller's features, T the type of weights, thresholds and values.
template <class T> struct Features {
    const Rect2i *rects;
    const T *weights, *thresholds, *value1, *value2;
    const std::int32_t *rectCounts;
    std::int32_t length;
};

// Whether a weight converts to -1.
bool isMinusOne(float weight) { return weight <= -1.0f && weight > -2.0f; }
bool isMinusOne(std::int32_t weight) { return weight == -1; }

// The header, with pointers into the block that follows it; nothing else is in it yet.
HaarClassifier *allocate(std::int32_t features, std::int64_t rects) {
    const std::int64_t bytes = 56 + 32 * std::int64_t{features} + 36 * rects;
    std::uint8_t *block = bytes <= INT32_MAX ? rvxsMalloc_8u(static_cast<std::int32_t>(bytes)) : nullptr;
    if (block == nullptr) {
        return nullptr;
    }
    Scratch areas(block, bytes);
    auto *record = areas.take<HaarClassifier>(1);
    *record = {};
    record->featureCount = features;
    record->rectCount = static_cast<std::int32_t>(rects);
    record->features = areas.take<HaarFeature>(features);
    return record;
}

// Appends features to a record.
template <class T, bool tilted> class Placement {
public:
    Placement(HaarClassifier &record, const Features<T> &source)
        : record_(record), source_(source), feature_(record.features),
          rect_(reinterpret_cast<HaarRectangle *>(record.features + record.featureCount)) {}

    // The caller's feature i, whose rectangles start at `first` in the caller's array.
    bool place(std::int32_t i, std::int64_t first) {
        const std::int32_t count = source_.rectCounts[i];
        *feature_++ = {count,
                       rect_,
                       toNumber(source_.thresholds[i]),
                       toNumber(source_.value1[i]),
                       toNumber(source_.value2[i]),
                       static_cast<std::uint32_t>(i) * 256 | (tilted ? tiltBit : 0)};
        record_.twoRectCount += count == 2;
        record_.twoOrThreeRectCount += count == 2 || count == 3;
        record_.placedRects += count;
        fast_ = fast_ && isMinusOne(source_.weights[first]);
        for (std::int64_t k = first; k < first + count; ++k, ++rect_) {
            const Box box(source_.rects[k]);
            if (tilted && !box.isTilted()) {
                return false;
            }
            (tilted ? placeTilted : placeUpright)(*rect_, box);
            rect_->weight = toNumber(source_.weights[k]);
            bound_.grow(box);
        }
        return true;
    }
    void finish() {
        record_.bound = bound_.finished();
        record_.tiltedClassifier = tilted;
        record_.fastFlag = fast_;
    }

private:
    HaarClassifier &record_;
    const Features<T> &source_;
    HaarFeature *feature_;
    HaarRectangle *rect_;
    Bound bound_;
    bool fast_ = true;
};

// The features with a number of rectangles that `belongs`, in the caller's order.
template <class Placement, class T, class Belongs>
bool placeThose(Placement &placement, const Features<T> &source, const Belongs &belongs) {
    std::int64_t first = 0;
    for (std::int32_t i = 0; i < source.length; first += source.rectCounts[i++]) {
        if (belongs(source.rectCounts[i]) && !placement.place(i, first)) {
            return false;
        }
    }
    return true;
}

template <class T, bool tilted> StatusCode initAlloc(HaarClassifier **classifier, const Features<T> &source) {
    Checks checks;
    checks.pointers(classifier, source.rects, source.weights, source.thresholds, source.value1, source.value2,
                    source.rectCounts);
    checks.require(source.length >= 0, StatusBadSize);
    if (checks.failed()) {
        return checks.status();
    }
    const std::int32_t *const counts = source.rectCounts, *const countsEnd = counts + source.length;
    if (!std::all_of(counts, countsEnd, [](std::int32_t count) { return count >= 1; })) {
        return StatusBadSize;
    }
    std::int64_t rects = 0;
    std::for_each(counts, countsEnd, [&rects](std::int32_t count) { rects += count; });
    const auto isUpright = [](Rect2i rect) { return Box(rect).isUpright(); };
    if (!tilted && !std::all_of(source.rects, source.rects + rects, isUpright)) {
        return StatusBadArgument;
    }
    HaarClassifier *record = allocate(source.length, rects);
    if (record == nullptr) {
        return StatusNoMemory;
    }
    Placement<T, tilted> placement(*record, source);
    if constexpr (tilted) {
        if (!placeThose(placement, source, [](std::int32_t) { return true; })) {
            rvxsFree(record);
            *classifier = nullptr;
            return StatusBadArgument;
        }
    } else {
        placeThose(placement, source, [](std::int32_t n) { return n == 2; });
        placeThose(placement, source, [](std::int32_t n) { return n == 3; });
        placeThose(placement, source, [](std::int32_t n) { return n != 2 && n != 3; });
    }
    placement.finish();
    *classifier = record;
    return StatusOk;
}

// -------------------------------------------------------------------------------------------- the other functions

StatusCode freeRecord(HaarClassifier *classifier) {
    if (classifier == nullptr) {
        return StatusNullPointer;
    }
    rvxsFree(classifier);
    return StatusOk;
}

StatusCode getSize(const HaarClassifier *classifier, RoiSize *size) {
    if (classifier == nullptr || size == nullptr) {
        return StatusNullPointer;
    }
    RoiSize needed{0, 0};
    for (std::int32_t i = 0; i < classifier->featureCount; ++i) {
        const HaarFeature &feature = classifier->features[i];
        for (std::int32_t k = 0; k < feature.rectCount; ++k) {
            needed.width = std::max(needed.width, feature.rects[k].corners[rightmost].x);
            needed.height = std::max(needed.height, feature.rects[k].corners[lowest].y);
        }
    }
    *size = needed;
    return StatusOk;
}

StatusCode tiltFeatures(const std::uint8_t *tilted, std::int32_t flag, HaarClassifier *classifier) {
    if (classifier == nullptr || tilted == nullptr) {
        return StatusNullPointer;
    }
    if (classifier->tiltedClassifier != 0) {
        return StatusBadArgument;
    }
    for (std::int32_t i = 0; i < classifier->featureCount; ++i) {
        HaarFeature &feature = classifier->features[i];
        if (isTilted(feature) || tilted[feature.tag >> 8] == 0) {
            continue;
        }
        feature.tag = tiltBit;
        for (std::int32_t k = 0; k < feature.rectCount; ++k) {
            HaarRectangle &rect = feature.rects[k];
            (flag != 0 ? placeTilted : placeTiltedUp)(rect, Box(rect.corners));
        }
    }
    return StatusOk;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiHaarClassifierInitAlloc_32f(HaarClassifier **classifier, const Rect2i *rects, const float *weights,
                                           const float *thresholds, const float *value1, const float *value2,
                                           const int32_t *rectCounts, int32_t length) {
    return initAlloc<float, false>(classifier, {rects, weights, thresholds, value1, value2, rectCounts, length});
}
StatusCode rvxiHaarClassifierInitAlloc_32s(HaarClassifier **classifier, const Rect2i *rects, const int32_t *weights,
                                           const int32_t *thresholds, const int32_t *value1, const int32_t *value2,
                                           const int32_t *rectCounts, int32_t length) {
    return initAlloc<std::int32_t, false>(classifier, {rects, weights, thresholds, value1, value2, rectCounts, length});
}
StatusCode rvxiTiltedHaarClassifierInitAlloc_32f(HaarClassifier **classifier, const Rect2i *rects, const float *weights,
                                                 const float *thresholds, const float *value1, const float *value2,
                                                 const int32_t *rectCounts, int32_t length) {
    return initAlloc<float, true>(classifier, {rects, weights, thresholds, value1, value2, rectCounts, length});
}
StatusCode rvxiTiltedHaarClassifierInitAlloc_32s(HaarClassifier **classifier, const Rect2i *rects,
                                                 const int32_t *weights, const int32_t *thresholds,
                                                 const int32_t *value1, const int32_t *value2,
                                                 const int32_t *rectCounts, int32_t length) {
    return initAlloc<std::int32_t, true>(classifier, {rects, weights, thresholds, value1, value2, rectCounts, length});
}

StatusCode rvxiHaarClassifierFree_32f(HaarClassifier *classifier) { return freeRecord(classifier); }
StatusCode rvxiHaarClassifierFree_32s(HaarClassifier *classifier) { return freeRecord(classifier); }

StatusCode rvxiGetHaarClassifierSize_32f(const HaarClassifier *classifier, RoiSize *size) {
    return getSize(classifier, size);
}
StatusCode rvxiGetHaarClassifierSize_32s(const HaarClassifier *classifier, RoiSize *size) {
    return getSize(classifier, size);
}

StatusCode rvxiTiltHaarFeatures_32f(const uint8_t *tilted, int32_t flag, HaarClassifier *classifier) {
    return tiltFeatures(tilted, flag, classifier);
}
StatusCode rvxiTiltHaarFeatures_32s(const uint8_t *tilted, int32_t flag, HaarClassifier *classifier) {
    return tiltFeatures(tilted, flag, classifier);
}
