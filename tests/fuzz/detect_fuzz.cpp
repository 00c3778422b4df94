// Detectors: Haar classifiers.
#include "planes.h"

#include <algorithm>
#include <numeric>

namespace {

using namespace fuzz;

// The caller's arrays for a classifier of a few features.
template <class N> struct Features {
    std::vector<Rect2i> rects;
    std::vector<N> weights, thresholds, value1, value2;
    std::vector<std::int32_t> counts;

    Features(Call &call, bool tilted) {
        const int features = call.in.byte() % 4;
        const std::uint8_t shape = call.in.byte();
        for (int f = 0; f < features; ++f) {
            counts.push_back(shape >= 250 ? call.in.within(1, 3) : 1 + (shape + f) % 4);
            for (int r = 0; r < std::min(counts.back(), 4); ++r) {
                const std::uint8_t place = call.in.byte(), size = call.in.byte();
                Rect2i rect = {place % 16, place / 16, 1 + size % 8, 1 + size / 8 % 8};
                if (tilted && shape % 8 != 7) {
                    rect.height = std::min(rect.height, rect.x + 1);
                }
                if (shape == 249) {
                    rect.width = call.in.any<std::int32_t>();
                }
                rects.push_back(rect);
                weights.push_back(static_cast<N>(r == 0 ? -1 : 2));
            }
            thresholds.push_back(static_cast<N>(call.in.byte() - 100));
            value1.push_back(static_cast<N>(call.in.any<N>()));
            value2.push_back(static_cast<N>(1));
        }
    }

    bool wrong(bool tilted) const {
        return std::any_of(counts.begin(), counts.end(), [](std::int32_t n) { return n < 1; }) ||
               std::any_of(rects.begin(), rects.end(), [&](const Rect2i &r) {
                   return r.width < 1 || r.height < 1 || (tilted && r.height > r.x + 1);
               });
    }
};

template <class N>
using Init = StatusCode (*)(HaarClassifier **, const Rect2i *, const N *, const N *, const N *, const N *,
                            const std::int32_t *, std::int32_t);

constexpr std::initializer_list<StatusCode> haarStatuses = {StatusBadArgument, StatusNoMemory};

template <class N> struct Classifier {
    HaarClassifier *record = nullptr;

    Classifier(Call &call, Init<N> init) {
        const bool tilted = std::string_view(nameOf(init)).starts_with("rvxiTilted");
        const Features<N> f(call, tilted);
        const auto length = static_cast<std::int32_t>(f.counts.size());
        const std::int64_t declared = std::accumulate(f.counts.begin(), f.counts.end(), std::int64_t{0});
        // Counts that say more than there is would be lies, which no function can see.
        if (!f.wrong(false) && declared != static_cast<std::int64_t>(f.rects.size())) {
            throw Abandon();
        }
        Record<HaarClassifier *> made(sizeof(HaarClassifier *));
        made.bind(true);
        *made.data() = nullptr;
        Array<const Rect2i> rects(f.rects);
        Array<const N> weights(f.weights), thresholds(f.thresholds), value1(f.value1), value2(f.value2);
        Array<const std::int32_t> counts(f.counts);
        const StatusCode status = call.run(init, made, rects, weights, thresholds, value1, value2, counts, length);
        if (status >= 0 && f.wrong(tilted)) {
            std::abort();
        }
        if (status < 0) {
            throw Abandon();
        }
        record = *made.data();
    }
    ~Classifier() {
        std::is_same_v<N, float> ? rvxiHaarClassifierFree_32f(record) : rvxiHaarClassifierFree_32s(record);
    }
    Classifier(const Classifier &) = delete;
    Classifier &operator=(const Classifier &) = delete;
};

template <class N> void make(Call &call, Init<N> init) {
    call.documented(haarStatuses);
    call.failuresWrite(); // a tilted initialisation that fails leaves null
    const Classifier<N> classifier(call, init);
}

template <class N> void release(Call &call, StatusCode (*member)(HaarClassifier *), Init<N> init) {
    call.documented(haarStatuses);
    call.failuresWrite();
    Classifier<N> classifier(call, init);
    noteReached(reinterpret_cast<const void *>(member));
}

template <class N> void windowSize(Call &call, StatusCode (*member)(const HaarClassifier *, RoiSize *), Init<N> init) {
    call.documented(haarStatuses);
    call.failuresWrite();
    const Classifier<N> classifier(call, init);
    Record<RoiSize> size(sizeof(RoiSize));
    call.run(member, classifier.record, size);
}

template <class N>
void tilt(Call &call, StatusCode (*member)(const std::uint8_t *, std::int32_t, HaarClassifier *), Init<N> init) {
    call.documented(haarStatuses);
    call.failuresWrite();
    const Classifier<N> classifier(call, init);
    Array<const std::uint8_t> tilted(call.in, classifier.record->featureCount);
    const std::int32_t flag = call.in.byte() % 2;
    call.run(member, tilted, flag, classifier.record);
    call.run(member, tilted, flag, classifier.record);
}

// How far the corners of the upright or tilted features lie from a pixel's own place.
Margin corners(const HaarClassifier &classifier, bool tilted) {
    Margin reach;
    for (std::int32_t f = 0; f < classifier.featureCount; ++f) {
        const HaarFeature &feature = classifier.features[f];
        if (((feature.tag & 1) != 0 || classifier.tiltedClassifier != 0) != tilted) {
            continue;
        }
        for (std::int32_t r = 0; r < feature.rectCount; ++r) {
            for (const Point2i corner : feature.rects[r].corners) {
                const Point2i c = tilted ? Point2i{corner.x + 1, corner.y + 1} : corner;
                reach.left = std::max<std::int64_t>(reach.left, -c.x);
                reach.top = std::max<std::int64_t>(reach.top, -c.y);
                reach.right = std::max<std::int64_t>(reach.right, c.x);
                reach.bottom = std::max<std::int64_t>(reach.bottom, c.y);
            }
        }
    }
    if (reach.left > 4096 || reach.top > 4096 || reach.right > 4096 || reach.bottom > 4096) {
        throw Abandon();
    }
    return reach;
}

template <class E> E stageEnd(Call &call) {
    return std::is_floating_point_v<E> ? static_cast<E>(call.in.real(-20, 20))
                                       : static_cast<E>(call.in.within(-20, 20));
}

template <class S, class N, class M, class... E>
void apply(Call &call,
           StatusCode (*member)(const S *, std::int32_t, const N *, std::int32_t, std::uint8_t *, std::int32_t, RoiSize,
                                std::int32_t *, const HaarClassifier *, E...),
           Init<M> init) {
    call.documented(haarStatuses);
    call.failuresWrite();
    const Classifier<M> classifier(call, init);
    call.failuresWrite(false);
    const RoiSize roi = call.in.roi();
    Image<const S> integral(call.in, Shape{roi, 1, corners(*classifier.record, false)});
    Image<const N> norm(call.in, roi);
    Image<std::uint8_t> mask(call.in, roi);
    // What the stage before told: right or wrong.
    Array<std::int32_t> count(std::vector<std::int32_t>{call.in.within(0, 200) * 10});
    const HaarClassifier *const record = classifier.record;
    [&](auto... end) { call.run(member, integral, norm, mask, roi, count, record, end...); }(stageEnd<E>(call)...);
}

template <class S, class N, class M, class... E>
void applyMixed(Call &call,
                StatusCode (*member)(const S *, std::int32_t, const S *, std::int32_t, const N *, std::int32_t,
                                     std::uint8_t *, std::int32_t, RoiSize, std::int32_t *, const HaarClassifier *,
                                     E...),
                StatusCode (*tiltSome)(const std::uint8_t *, std::int32_t, HaarClassifier *), Init<M> init) {
    call.documented(haarStatuses);
    call.failuresWrite();
    const Classifier<M> classifier(call, init);
    const std::uint8_t which = call.in.byte(), flag = call.in.byte();
    std::vector<std::uint8_t> some;
    for (std::int32_t i = 0; i < classifier.record->featureCount; ++i) {
        some.push_back(which >> (i % 8) & 1);
    }
    Array<const std::uint8_t> tilted(some);
    call.run(tiltSome, tilted, flag % 8 == 7 ? 0 : 1, classifier.record);
    call.failuresWrite(false);
    const RoiSize roi = call.in.roi();
    Image<const S> integral(call.in, Shape{roi, 1, corners(*classifier.record, false)});
    Image<const S> turned(call.in, Shape{roi, 1, corners(*classifier.record, true)});
    Image<const N> norm(call.in, roi);
    Image<std::uint8_t> mask(call.in, roi);
    Array<std::int32_t> count(1);
    const HaarClassifier *const record = classifier.record;
    [&](auto... end) {
        call.run(member, integral, turned, norm, mask, roi, count, record, end...);
    }(stageEnd<E>(call)...);
}

} // namespace

const std::vector<fuzz::Member> fuzz::members = {
    MEMBER(make, rvxiHaarClassifierInitAlloc_32f),
    MEMBER(make, rvxiHaarClassifierInitAlloc_32s),
    MEMBER(make, rvxiTiltedHaarClassifierInitAlloc_32f),
    MEMBER(make, rvxiTiltedHaarClassifierInitAlloc_32s),
    MEMBER(release, rvxiHaarClassifierFree_32f, rvxiHaarClassifierInitAlloc_32f),
    MEMBER(release, rvxiHaarClassifierFree_32s, rvxiHaarClassifierInitAlloc_32s),
    MEMBER(windowSize, rvxiGetHaarClassifierSize_32f, rvxiTiltedHaarClassifierInitAlloc_32f),
    MEMBER(windowSize, rvxiGetHaarClassifierSize_32s, rvxiTiltedHaarClassifierInitAlloc_32s),
    MEMBER(tilt, rvxiTiltHaarFeatures_32f, rvxiHaarClassifierInitAlloc_32f),
    MEMBER(tilt, rvxiTiltHaarFeatures_32s, rvxiHaarClassifierInitAlloc_32s),
    MEMBER(apply, rvxiApplyHaarClassifier_32f_C1R, rvxiHaarClassifierInitAlloc_32f),
    MEMBER(apply, rvxiApplyHaarClassifier_32s32f_C1R, rvxiHaarClassifierInitAlloc_32f),
    MEMBER(apply, rvxiApplyHaarClassifier_32s_C1RSfs, rvxiHaarClassifierInitAlloc_32s),
    MEMBER(applyMixed, rvxiApplyMixedHaarClassifier_32f_C1R, rvxiTiltHaarFeatures_32f, rvxiHaarClassifierInitAlloc_32f),
    MEMBER(applyMixed, rvxiApplyMixedHaarClassifier_32s32f_C1R, rvxiTiltHaarFeatures_32f,
           rvxiHaarClassifierInitAlloc_32f),
    MEMBER(applyMixed, rvxiApplyMixedHaarClassifier_32s_C1RSfs, rvxiTiltHaarFeatures_32s,
           rvxiHaarClassifierInitAlloc_32s),
};
