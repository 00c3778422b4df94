// A vector from single numbers, each loaded as it was stored: a vector load of what has just been written number by
// number waits for all of these stores.
#pragma once

#include "kernel/vec/types.h"

namespace rvxcv {

RVX_INLINE I32x8 numbers(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d, std::int32_t e, std::int32_t f,
                         std::int32_t g, std::int32_t h) {
    return {{_mm256_setr_epi32(a, b, c, d, e, f, g, h)}};
}

} // namespace rvxcv
