// A kernel's taps as both stages of the separable pipeline use them.
#pragma once

#include "kernel/rows.h"
#include "kernel/scratch.h"

namespace rvxcv {

// Kernels of three and five taps (up to `most`) have code of their own, with the taps in registers; every other length
// has count 0.
template <int most = 5, class Stage> void withTapCount(std::int32_t kernelSize, const Stage &stage) {
    switch (kernelSize) {
    case 3:
        return stage(std::integral_constant<int, 3>{});
    case 5:
        return stage(std::integral_constant<int, 5>{});
    case 7:
        return stage(std::integral_constant < int, most >= 7 ? 7 : 0 > {});
    default:
        return stage(std::integral_constant<int, 0>{});
    }
}

// Rows as the sums need them.
inline void widenRow(float *dst, const std::uint16_t *src, std::int64_t elements) {
    walkRow<8>(elements, [=](std::int64_t x, auto span) { store(dst + x, loadF32(src + x, span), span); });
}
inline void widenRow(std::int16_t *dst, const std::uint8_t *src, std::int64_t elements) {
    walkRow<16>(elements, [=](std::int64_t x, auto span) { store(dst + x, loadI16(src + x, span), span); });
}

// Taps as the sums need them: the caller's own, or unsigned ones as floats in the scratch buffer.
template <class Coefficient> const Coefficient *ownTaps(const Coefficient *kernel, std::int32_t, Scratch &) {
    return kernel;
}
inline const float *ownTaps(const std::uint16_t *kernel, std::int32_t kernelSize, Scratch &scratch) {
    auto *taps = scratch.take<float>(kernelSize, 1);
    widenRow(taps, kernel, kernelSize);
    return taps;
}

} // namespace rvxcv
