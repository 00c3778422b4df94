// Benchmarks of the colour gradient's reduction to grey: a row per type and norm.
#include "harness.h"

namespace {

template <class T, class F> void addReduction(bench::Registry &rows, const char *name, F function, NormKind norm) {
    rows.add(name, {3 * sizeof(T), sizeof(T)}, [=](RoiSize roi) {
        auto src = bench::image<T>(roi, 3);
        auto dst = bench::image<T>(roi);
        return [=] { function(src->data, src->step, dst->data, dst->step, roi, norm); };
    });
}

const bench::Family family([](bench::Registry &rows) {
    addReduction<std::uint8_t>(rows, "GradientColorToGray_8u_C3C1R/Inf", rvxiGradientColorToGray_8u_C3C1R, NormInf);
    addReduction<std::uint8_t>(rows, "GradientColorToGray_8u_C3C1R/L1", rvxiGradientColorToGray_8u_C3C1R, NormL1);
    addReduction<std::uint8_t>(rows, "GradientColorToGray_8u_C3C1R/L2", rvxiGradientColorToGray_8u_C3C1R, NormL2);
    addReduction<std::uint16_t>(rows, "GradientColorToGray_16u_C3C1R/Inf", rvxiGradientColorToGray_16u_C3C1R, NormInf);
    addReduction<std::uint16_t>(rows, "GradientColorToGray_16u_C3C1R/L1", rvxiGradientColorToGray_16u_C3C1R, NormL1);
    addReduction<std::uint16_t>(rows, "GradientColorToGray_16u_C3C1R/L2", rvxiGradientColorToGray_16u_C3C1R, NormL2);
    addReduction<float>(rows, "GradientColorToGray_32f_C3C1R/Inf", rvxiGradientColorToGray_32f_C3C1R, NormInf);
    addReduction<float>(rows, "GradientColorToGray_32f_C3C1R/L1", rvxiGradientColorToGray_32f_C3C1R, NormL1);
    addReduction<float>(rows, "GradientColorToGray_32f_C3C1R/L2", rvxiGradientColorToGray_32f_C3C1R, NormL2);
});

} // namespace
