// A kernel's taps as both stages of the separable pipeline use them.
#pragma once

#include "kernel/scratch.h"
#include "kernel/vec.h"

namespace rvxcv {

// Kernels of three and five taps have code of their own, with the taps in registers; every other length has count 0.
template <class Stage> void withTapCount(std::int32_t kernelSize, const Stage &stage) {
    switch (kernelSize) {
    case 3:
        return stage(std::integral_constant<int, 3>{});
    case 5:
        return stage(std::integral_constant<int, 5>{});
    default:
        return stage(std::integral_constant<int, 0>{});
    }
}

inline void widenRow(float *dst, const std::uint16_t *src, std::int64_t elements) {
    std::int64_t x = 0;
    for (; x + 8 <= elements; x += 8) {
        store(dst + x, loadF32(src + x, Full{}));
    }
    if (x < elements) {
        const Part rest{static_cast<int>(elements - x)};
        store(dst + x, loadF32(src + x, rest), rest);
    }
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
