// Benchmarks of Haar classifiers: stages of features with two rectangles in windows of 24x24, on a full mask and where
// one pixel in five or twenty is selected. About half of the pixels pass; the mask is restored by a copy before every
// call.
#include "harness.h"

#include <cmath>
#include <cstring>
#include <vector>

namespace {

constexpr std::int32_t window = 24;

std::int32_t below(std::mt19937 &rng, std::int32_t limit) {
    return static_cast<std::int32_t>(rng() % static_cast<std::uint32_t>(limit));
}

// A box and its right half, as in a detector of edges; tilted boxes stay inside the window as well.
template <class Number> std::shared_ptr<HaarClassifier> makeStage(std::int32_t features, bool mixed) {
    std::mt19937 rng(5);
    std::vector<Rect2i> rects;
    std::vector<Number> weights, thresholds, value1, value2;
    const std::vector<std::int32_t> counts(static_cast<std::size_t>(features), 2);
    std::vector<std::uint8_t> tilted;
    for (std::int32_t i = 0; i < features; ++i) {
        const bool tilt = mixed && i % 2 != 0;
        const std::int32_t half = 1 + below(rng, tilt ? 4 : 9), height = 2 + below(rng, tilt ? 5 : 17);
        const std::int32_t x = tilt ? height + below(rng, 6) : below(rng, window - 2 * half);
        const std::int32_t y = below(rng, window - height - (tilt ? 2 * half : 0));
        rects.insert(rects.end(), {{x, y, 2 * half, height}, {x + half, y + (tilt ? half : 0), half, height}});
        weights.insert(weights.end(), {-1, 2});
        thresholds.push_back(static_cast<Number>(below(rng, 9) - 4));
        value1.push_back(static_cast<Number>(1 + below(rng, 100)));
        value2.push_back(static_cast<Number>(-1 - below(rng, 100)));
        tilted.push_back(tilt);
    }
    HaarClassifier *made = nullptr;
    if constexpr (std::is_same_v<Number, float>) {
        rvxiHaarClassifierInitAlloc_32f(&made, rects.data(), weights.data(), thresholds.data(), value1.data(),
                                        value2.data(), counts.data(), features);
        rvxiTiltHaarFeatures_32f(tilted.data(), 1, made);
    } else {
        rvxiHaarClassifierInitAlloc_32s(&made, rects.data(), weights.data(), thresholds.data(), value1.data(),
                                        value2.data(), counts.data(), features);
        rvxiTiltHaarFeatures_32s(tilted.data(), 1, made);
    }
    return {made, rvxiHaarClassifierFree_32f};
}

template <class T> void integrate(RoiSize size, const bench::Image<T> &sum, const bench::Image<T> &tilted) {
    const auto picture = bench::scene(size);
    if constexpr (std::is_same_v<T, float>) {
        rvxiIntegral_8u32f_C1R(picture->data, picture->step, sum.data, sum.step, size, 0);
        rvxiTiltedIntegral_8u32f_C1R(picture->data, picture->step, tilted.data, tilted.step, size, 0);
    } else {
        rvxiIntegral_8u32s_C1R(picture->data, picture->step, sum.data, sum.step, size, 0);
        rvxiTiltedIntegral_8u32s_C1R(picture->data, picture->step, tilted.data, tilted.step, size, 0);
    }
}

// T: integral images, N: norm, Number: the record. function(sum, tilted, norm, mask, roi, count, stage).
template <class T, class N, class Number, class F>
void addMember(bench::Registry &rows, const std::string &name, bool mixed, F function) {
    for (const int oneIn : {1, 5, 20}) {
        for (const std::int32_t features : {1, 10, 50}) {
            const std::string row = name + " 1/" + std::to_string(oneIn) + "/features:" + std::to_string(features);
            rows.add(row, sizeof(T) + sizeof(N) + 2, [=](RoiSize roi) {
                const RoiSize size{roi.width + window, roi.height + window};
                auto sum = bench::image<T>({size.width + 1, size.height + 1});
                auto tilted = bench::image<T>({size.width + 2, size.height + 2});
                integrate(size, *sum, *tilted);
                auto norm = bench::image<N>(roi);
                for (std::int64_t i = 0; i < norm->elements; ++i) {
                    norm->data[i] = static_cast<N>(1000 + i % 5000);
                }
                auto selected = bench::image<std::uint8_t>(roi), mask = bench::image<std::uint8_t>(roi);
                std::mt19937 rng(9);
                std::int32_t count = 0;
                for (std::int64_t i = 0; i < selected->elements; ++i) {
                    selected->data[i] = static_cast<int>(rng() >> 8) % oneIn == 0 ? 1 : 0;
                    count += selected->data[i];
                }
                auto stage = makeStage<Number>(features, mixed);
                return [=] {
                    std::memcpy(mask->data, selected->data, static_cast<std::size_t>(mask->elements));
                    std::int32_t passed = count;
                    function(*sum, *tilted, *norm, *mask, roi, &passed, stage.get());
                };
            });
        }
    }
}

// The members with one more argument, the scale factor.
template <auto member> constexpr auto scaled = [](auto... arguments) { return member(arguments..., 4); };

template <class T, class N, class Number, class F>
void addUpright(bench::Registry &rows, const char *name, F function) {
    addMember<T, N, Number>(rows, name, false, [=](auto &sum, auto &, auto &norm, auto &mask, auto... others) {
        function(sum.data, sum.step, norm.data, norm.step, mask.data, mask.step, others..., Number{0});
    });
}
template <class T, class N, class Number, class F> void addMixed(bench::Registry &rows, const char *name, F function) {
    addMember<T, N, Number>(rows, name, true, [=](auto &sum, auto &tilted, auto &norm, auto &mask, auto... others) {
        function(sum.data, sum.step, tilted.data, tilted.step, norm.data, norm.step, mask.data, mask.step, others...,
                 Number{0});
    });
}

const bench::Family family([](bench::Registry &rows) {
    using I = std::int32_t;
    addUpright<float, float, float>(rows, "ApplyHaarClassifier_32f_C1R", rvxiApplyHaarClassifier_32f_C1R);
    addUpright<I, float, float>(rows, "ApplyHaarClassifier_32s32f_C1R", rvxiApplyHaarClassifier_32s32f_C1R);
    addUpright<I, I, I>(rows, "ApplyHaarClassifier_32s_C1RSfs", scaled<rvxiApplyHaarClassifier_32s_C1RSfs>);
    addMixed<float, float, float>(rows, "ApplyMixedHaarClassifier_32f_C1R", rvxiApplyMixedHaarClassifier_32f_C1R);
    addMixed<I, float, float>(rows, "ApplyMixedHaarClassifier_32s32f_C1R", rvxiApplyMixedHaarClassifier_32s32f_C1R);
    addMixed<I, I, I>(rows, "ApplyMixedHaarClassifier_32s_C1RSfs", scaled<rvxiApplyMixedHaarClassifier_32s_C1RSfs>);
});

} // namespace
