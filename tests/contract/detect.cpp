// Haar classifiers.
#include "contract/contract.h"

namespace contract {
namespace {

// ------------------------------------------------------------------------------------------------------------ records

// Features of one, two, three and four rectangles inside a window; all of them may be tilted.
constexpr std::int32_t windowWidth = 14, windowHeight = 20;
const std::vector<std::int32_t> rectangleCounts = {2, 3, 1, 2, 4, 3};
const std::vector<Rect2i> rectangles = {{2, 0, 3, 2}, {3, 1, 2, 2}, {4, 2, 2, 3}, {1, 0, 1, 2}, {5, 4, 1, 1},
                                        {0, 0, 4, 1}, {6, 3, 2, 4}, {3, 3, 3, 1}, {2, 2, 2, 2}, {5, 0, 1, 5},
                                        {1, 1, 2, 1}, {7, 5, 1, 3}, {4, 4, 4, 4}, {3, 0, 1, 1}, {6, 6, 2, 2}};

// A feature's weights sum to zero or do not; thresholds and values of either sign.
template <class N> std::vector<N> sequence(std::size_t count, int start) {
    std::vector<N> all;
    for (std::size_t i = 0; i < count; ++i) {
        const int value = (static_cast<int>(i) * 7 + start) % 11 - 5;
        all.push_back(static_cast<N>(value == 0 ? 1 : value) * N(std::is_integral_v<N> ? 3 : 0.375));
    }
    return all;
}

template <class N>
using MakeClassifier = StatusCode (*)(HaarClassifier **, const Rect2i *, const N *, const N *, const N *, const N *,
                                      const std::int32_t *, std::int32_t);
using FreeClassifier = StatusCode (*)(HaarClassifier *);

template <class N> struct Stage {
    std::vector<Rect2i> rects = rectangles;
    std::vector<N> weights = sequence<N>(rectangles.size(), 2), thresholds = sequence<N>(rectangleCounts.size(), 7),
                   below = sequence<N>(rectangleCounts.size(), 1), above = sequence<N>(rectangleCounts.size(), 4);
    std::vector<std::int32_t> counts = rectangleCounts;
    std::int32_t length = static_cast<std::int32_t>(rectangleCounts.size());

    StatusCode make(MakeClassifier<N> f, HaarClassifier **classifier, int null = -1) const {
        const auto or0 = [&](int i, auto *data) { return i == null ? nullptr : data; };
        return f(null == 0 ? nullptr : classifier, or0(1, rects.data()), or0(2, weights.data()),
                 or0(3, thresholds.data()), or0(4, below.data()), or0(5, above.data()), or0(6, counts.data()), length);
    }
};

template <class N> void digestNumber(Digest &digest, HaarNumber number) {
    if constexpr (std::is_integral_v<N>) {
        digest.number(number.s32);
    } else {
        digest.number(number.f32);
    }
}

// The whole block is documented.
template <class N> void digestRecord(Digest &digest, const HaarClassifier *record) {
    digest.numbers({record->featureCount, record->rectCount, record->bound.x, record->bound.y, record->bound.width,
                    record->bound.height, record->tiltedClassifier, record->twoRectCount, record->twoOrThreeRectCount,
                    record->placedRects, record->fastFlag});
    for (std::int32_t i = 0; i < record->featureCount; ++i) {
        const HaarFeature &feature = record->features[i];
        digest.number(feature.rectCount);
        digest.number(feature.tag);
        for (const HaarNumber number : {feature.threshold, feature.value1, feature.value2}) {
            digestNumber<N>(digest, number);
        }
        for (std::int32_t r = 0; r < feature.rectCount; ++r) {
            digestNumber<N>(digest, feature.rects[r].weight);
            for (const Point2i corner : feature.rects[r].corners) {
                digest.numbers({corner.x, corner.y});
            }
        }
    }
}

template <class N> void classifierInit(Run &run, MakeClassifier<N> make, FreeClassifier free) {
    const auto digested = [&](const Stage<N> &stage, int null = -1) {
        HaarClassifier *classifier = nullptr;
        run.digest.number(stage.make(make, &classifier, null));
        run.digest.number(classifier != nullptr);
        if (classifier != nullptr) {
            digestRecord<N>(run.digest, classifier);
            run.digest.number(free(classifier));
        }
    };
    const Stage<N> good;
    digested(good);
    for (std::int32_t length = -1; length < good.length; ++length) {
        Stage<N> shorter = good;
        shorter.length = length;
        digested(shorter);
    }
    std::vector<Stage<N>> faulty(7, good);
    faulty[0].counts[2] = 0;
    faulty[1].counts[0] = -4;
    faulty[2].rects[3].x = -1;
    faulty[3].rects[1].y = -2;
    faulty[4].rects[6].width = 0;
    faulty[5].rects[0].height = 0;
    faulty[6].rects[5].height = 3; // too far to the left where it is tilted
    for (const Stage<N> &stage : faulty) {
        digested(stage);
        for (int null = 0; null < 7; ++null) {
            digested(stage, null);
        }
    }
    Stage<N> other = good;
    other.weights[0] = N{-1}; // the first weights' flag
    digested(other);
}

struct FreeOf {
    FreeClassifier free;
    void operator()(HaarClassifier *classifier) const { free(classifier); }
};
using Classifier = std::unique_ptr<HaarClassifier, FreeOf>;

template <class N> Classifier madeBy(MakeClassifier<N> make, FreeClassifier free, const Stage<N> &stage = {}) {
    HaarClassifier *classifier = nullptr;
    stage.make(make, &classifier);
    return {classifier, {free}};
}

template <class N> void classifierFree(Run &run, FreeClassifier free, MakeClassifier<N> make) {
    run.digest.numbers({free(nullptr), free(madeBy(make, free).release())});
}

template <class N>
void classifierSize(Run &run, StatusCode (*size)(const HaarClassifier *, RoiSize *), MakeClassifier<N> upright,
                    MakeClassifier<N> tilted, FreeClassifier free) {
    for (const auto make : {upright, tilted}) {
        for (std::int32_t length = 0; length <= 6; ++length) {
            Stage<N> stage;
            stage.length = length;
            const Classifier classifier = madeBy(make, free, stage);
            RoiSize window = {91, 92};
            run.digest.numbers({size(classifier.get(), &window), size(nullptr, &window),
                                size(classifier.get(), nullptr), window.width, window.height});
        }
    }
}

template <class N>
void tilt(Run &run, StatusCode (*f)(const std::uint8_t *, std::int32_t, HaarClassifier *), MakeClassifier<N> upright,
          MakeClassifier<N> tilted, FreeClassifier free) {
    const std::uint8_t which[] = {1, 0, 7, 0, 1, 255};
    for (const std::int32_t flag : {0, 1, -3}) {
        const Classifier classifier = madeBy(upright, free), other = madeBy(tilted, free);
        run.digest.numbers({f(nullptr, flag, classifier.get()), f(which, flag, nullptr), f(which, flag, other.get())});
        for (int twice = 0; twice < 2; ++twice) { // what is tilted stays so
            run.digest.number(f(which, flag, classifier.get()));
            digestRecord<N>(run.digest, classifier.get());
        }
    }
}

// -------------------------------------------------------------------------------------------------------- application

RoiSize withWindow(RoiSize roi) { return {roi.width + windowWidth, roi.height + windowHeight}; }

// The integral image, the tilted one, the deviations and the mask; `mixed` tilts half of the features.
template <class N, class I, class S, class Call>
void applied(Run &run, bool mixed, MakeClassifier<N> make, FreeClassifier free, std::vector<std::int32_t> scales,
             const Call &call) {
    const Classifier classifier = madeBy(make, free);
    if (mixed) {
        const std::uint8_t which[] = {1, 0, 1, 0, 1, 0};
        if constexpr (std::is_integral_v<N>) {
            rvxiTiltHaarFeatures_32s(which, 1, classifier.get());
        } else {
            rvxiTiltHaarFeatures_32f(which, 1, classifier.get());
        }
    }
    Sweep sweep(run);
    // Of the pixels: all; from an eighth up to a quarter; none.
    Choice<int> entries(sweep, {0, 1, 2});
    Choice<N> threshold(sweep, {N{0}, N{4}, N{-6}});
    Choice<std::int32_t> scale(sweep, std::move(scales));
    Image<const I> integral(sweep, {.size = withWindow});
    Image<const I> tilted(sweep, {.size = withWindow, .nullable = mixed, .faults = mixed});
    Image<const S> norm(sweep);
    Image<std::uint8_t> mask(sweep, {.picture = twoLevels, .mixed = true});
    Region roi(sweep);
    Numbers<std::int32_t> count(sweep, 1);
    Pointer<const HaarClassifier> record(sweep);
    sweep.before = [&] {
        const std::int32_t pixels = sweep.roi().width * sweep.roi().height;
        count.assign({entries == 0 ? pixels : entries == 1 ? (pixels + 7) / 8 : 0});
        record.set(classifier.get());
    };
    sweep.run([&] {
        return call(integral, integral.step, tilted, tilted.step, norm, norm.step, mask, mask.step, roi, count, record,
                    threshold, scale);
    });
}

template <class I, class S, class N>
void apply(Run &run, StatusCode (*f)(const I *, std::int32_t, const S *, std::int32_t, std::uint8_t *, std::int32_t,
                                     RoiSize, std::int32_t *, const HaarClassifier *, N)) {
    applied<N, I, S>(run, false, rvxiHaarClassifierInitAlloc_32f, rvxiHaarClassifierFree_32f, {0},
                     [f](const I *integral, std::int32_t integralStep, const I *, std::int32_t, const S *norm,
                         std::int32_t normStep, std::uint8_t *mask, std::int32_t maskStep, RoiSize roi,
                         std::int32_t *count, const HaarClassifier *record, N threshold, std::int32_t) {
                         return f(integral, integralStep, norm, normStep, mask, maskStep, roi, count, record,
                                  threshold);
                     });
}

template <class I, class S, class N>
void applyMixed(Run &run,
                StatusCode (*f)(const I *, std::int32_t, const I *, std::int32_t, const S *, std::int32_t,
                                std::uint8_t *, std::int32_t, RoiSize, std::int32_t *, const HaarClassifier *, N)) {
    applied<N, I, S>(run, true, rvxiHaarClassifierInitAlloc_32f, rvxiHaarClassifierFree_32f, {0},
                     [f](const I *integral, std::int32_t integralStep, const I *tilted, std::int32_t tiltedStep,
                         const S *norm, std::int32_t normStep, std::uint8_t *mask, std::int32_t maskStep, RoiSize roi,
                         std::int32_t *count, const HaarClassifier *record, N threshold, std::int32_t) {
                         return f(integral, integralStep, tilted, tiltedStep, norm, normStep, mask, maskStep, roi,
                                  count, record, threshold);
                     });
}

const std::vector<std::int32_t> shifts = {0, 5, -3, 80, -80};
using Integer = std::int32_t;

void applyScaled(Run &run, StatusCode (*f)(const Integer *, std::int32_t, const Integer *, std::int32_t, std::uint8_t *,
                                           std::int32_t, RoiSize, std::int32_t *, const HaarClassifier *, Integer,
                                           std::int32_t)) {
    applied<Integer, Integer, Integer>(
        run, false, rvxiHaarClassifierInitAlloc_32s, rvxiHaarClassifierFree_32s, shifts,
        [f](const Integer *integral, std::int32_t integralStep, const Integer *, std::int32_t, const Integer *norm,
            std::int32_t normStep, std::uint8_t *mask, std::int32_t maskStep, RoiSize roi, std::int32_t *count,
            const HaarClassifier *record, Integer threshold, std::int32_t scale) {
            return f(integral, integralStep, norm, normStep, mask, maskStep, roi, count, record, threshold, scale);
        });
}

void applyMixedScaled(Run &run, StatusCode (*f)(const Integer *, std::int32_t, const Integer *, std::int32_t,
                                                const Integer *, std::int32_t, std::uint8_t *, std::int32_t, RoiSize,
                                                std::int32_t *, const HaarClassifier *, Integer, std::int32_t)) {
    applied<Integer, Integer, Integer>(run, true, rvxiHaarClassifierInitAlloc_32s, rvxiHaarClassifierFree_32s, shifts,
                                       f);
}

} // namespace

void addDetect(Members &members) {
    const Member table[] = {
        MEMBER(rvxiHaarClassifierInitAlloc_32f, classifierInit, rvxiHaarClassifierFree_32f),
        MEMBER(rvxiHaarClassifierInitAlloc_32s, classifierInit, rvxiHaarClassifierFree_32s),
        MEMBER(rvxiTiltedHaarClassifierInitAlloc_32f, classifierInit, rvxiHaarClassifierFree_32f),
        MEMBER(rvxiTiltedHaarClassifierInitAlloc_32s, classifierInit, rvxiHaarClassifierFree_32s),
        MEMBER(rvxiHaarClassifierFree_32f, classifierFree, rvxiHaarClassifierInitAlloc_32f),
        MEMBER(rvxiHaarClassifierFree_32s, classifierFree, rvxiHaarClassifierInitAlloc_32s),
        MEMBER(rvxiGetHaarClassifierSize_32f, classifierSize, rvxiHaarClassifierInitAlloc_32f,
               rvxiTiltedHaarClassifierInitAlloc_32f, rvxiHaarClassifierFree_32f),
        MEMBER(rvxiGetHaarClassifierSize_32s, classifierSize, rvxiHaarClassifierInitAlloc_32s,
               rvxiTiltedHaarClassifierInitAlloc_32s, rvxiHaarClassifierFree_32s),
        MEMBER(rvxiTiltHaarFeatures_32f, tilt, rvxiHaarClassifierInitAlloc_32f, rvxiTiltedHaarClassifierInitAlloc_32f,
               rvxiHaarClassifierFree_32f),
        MEMBER(rvxiTiltHaarFeatures_32s, tilt, rvxiHaarClassifierInitAlloc_32s, rvxiTiltedHaarClassifierInitAlloc_32s,
               rvxiHaarClassifierFree_32s),
        MEMBER(rvxiApplyHaarClassifier_32f_C1R, apply),
        MEMBER(rvxiApplyHaarClassifier_32s32f_C1R, apply),
        MEMBER(rvxiApplyHaarClassifier_32s_C1RSfs, applyScaled),
        MEMBER(rvxiApplyMixedHaarClassifier_32f_C1R, applyMixed),
        MEMBER(rvxiApplyMixedHaarClassifier_32s32f_C1R, applyMixed),
        MEMBER(rvxiApplyMixedHaarClassifier_32s_C1RSfs, applyMixedScaled),
    };
    members.insert(members.end(), std::begin(table), std::end(table));
}

} // namespace contract
