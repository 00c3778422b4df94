// Benchmarks of integral images and rectangle deviations.
#include "harness.h"

namespace {

// Outputs with `margin` more rows and columns than the source.
template <class S, class T, class F>
void addIntegral(bench::Registry &rows, const char *name, std::int32_t margin, F function) {
    rows.add(name, {sizeof(S), sizeof(T)}, [=](RoiSize roi) {
        auto src = bench::image<S>(roi);
        auto dst = bench::image<T>({roi.width + margin, roi.height + margin});
        return [=] { function(src->data, src->step, dst->data, dst->step, roi); };
    });
}

template <class T, class Q, class F>
void addSquares(bench::Registry &rows, const char *name, std::int32_t margin, F function) {
    rows.add(name, {1, sizeof(T) + sizeof(Q)}, [=](RoiSize roi) {
        auto src = bench::image<std::uint8_t>(roi);
        auto dst = bench::image<T>({roi.width + margin, roi.height + margin});
        auto sqr = bench::image<Q>({roi.width + margin, roi.height + margin});
        return [=] { function(src->data, src->step, dst->data, dst->step, sqr->data, sqr->step, roi, 0, 0); };
    });
}

// A window of 12x10 pixels, or tilted with sides of 8 and 7.
template <bool tilted, class S, class Q, class D, class F>
void addDeviation(bench::Registry &rows, const char *name, F function) {
    rows.add(name, {sizeof(S) + sizeof(Q), sizeof(D)}, [=](RoiSize roi) {
        const Rect2i rect = tilted ? Rect2i{6, 0, 8, 7} : Rect2i{0, 0, 12, 10};
        auto src = bench::image<std::uint8_t>({roi.width + 16, roi.height + 16});
        auto sum = bench::image<S>({roi.width + 18, roi.height + 18});
        auto sqr = bench::image<Q>({roi.width + 18, roi.height + 18});
        auto dst = bench::image<D>(roi);
        const RoiSize source{roi.width + 16, roi.height + 16};
        if constexpr (std::is_same_v<Q, std::int32_t>) {
            const auto integrate = tilted ? rvxiTiltedSqrIntegral_8u32s_C1R : rvxiSqrIntegral_8u32s_C1R;
            integrate(src->data, src->step, sum->data, sum->step, sqr->data, sqr->step, source, 0, 0);
        } else if constexpr (std::is_same_v<S, std::int32_t>) {
            const auto integrate = tilted ? rvxiTiltedSqrIntegral_8u32s64f_C1R : rvxiSqrIntegral_8u32s64f_C1R;
            integrate(src->data, src->step, sum->data, sum->step, sqr->data, sqr->step, source, 0, 0);
        } else {
            const auto integrate = tilted ? rvxiTiltedSqrIntegral_8u32f64f_C1R : rvxiSqrIntegral_8u32f64f_C1R;
            integrate(src->data, src->step, sum->data, sum->step, sqr->data, sqr->step, source, 0, 0);
        }
        return [=] { function(sum->data, sum->step, sqr->data, sqr->step, dst->data, dst->step, roi, rect); };
    });
}

// The members with one more argument, with none or one of no weight.
template <auto member> constexpr auto withValue = [](auto... arguments) { member(arguments..., 0); };

const bench::Family family([](bench::Registry &rows) {
    using I = std::int32_t;
    addIntegral<std::uint8_t, I>(rows, "Integral_8u32s_C1R", 1, withValue<rvxiIntegral_8u32s_C1R>);
    addIntegral<std::uint8_t, float>(rows, "Integral_8u32f_C1R", 1, withValue<rvxiIntegral_8u32f_C1R>);
    addIntegral<float, float>(rows, "Integral_32f_C1R", 1, rvxiIntegral_32f_C1R);
    addSquares<I, I>(rows, "SqrIntegral_8u32s_C1R", 1, rvxiSqrIntegral_8u32s_C1R);
    addSquares<I, double>(rows, "SqrIntegral_8u32s64f_C1R", 1, rvxiSqrIntegral_8u32s64f_C1R);
    addSquares<float, double>(rows, "SqrIntegral_8u32f64f_C1R", 1, rvxiSqrIntegral_8u32f64f_C1R);
    addIntegral<std::uint8_t, I>(rows, "TiltedIntegral_8u32s_C1R", 2, withValue<rvxiTiltedIntegral_8u32s_C1R>);
    addIntegral<std::uint8_t, float>(rows, "TiltedIntegral_8u32f_C1R", 2, withValue<rvxiTiltedIntegral_8u32f_C1R>);
    addSquares<I, I>(rows, "TiltedSqrIntegral_8u32s_C1R", 2, rvxiTiltedSqrIntegral_8u32s_C1R);
    addSquares<I, double>(rows, "TiltedSqrIntegral_8u32s64f_C1R", 2, rvxiTiltedSqrIntegral_8u32s64f_C1R);
    addSquares<float, double>(rows, "TiltedSqrIntegral_8u32f64f_C1R", 2, rvxiTiltedSqrIntegral_8u32f64f_C1R);
    addDeviation<false, float, double, float>(rows, "RectStdDev_32f_C1R", rvxiRectStdDev_32f_C1R);
    addDeviation<false, I, double, float>(rows, "RectStdDev_32s32f_C1R", rvxiRectStdDev_32s32f_C1R);
    addDeviation<false, I, I, I>(rows, "RectStdDev_32s_C1RSfs", withValue<rvxiRectStdDev_32s_C1RSfs>);
    addDeviation<true, float, double, float>(rows, "TiltedRectStdDev_32f_C1R", rvxiTiltedRectStdDev_32f_C1R);
    addDeviation<true, I, double, float>(rows, "TiltedRectStdDev_32s32f_C1R", rvxiTiltedRectStdDev_32s32f_C1R);
    addDeviation<true, I, I, I>(rows, "TiltedRectStdDev_32s_C1RSfs", withValue<rvxiTiltedRectStdDev_32s_C1RSfs>);
});

} // namespace
