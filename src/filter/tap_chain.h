// The float sum of the separable filters. Taps are taken in ascending order; the first one is a plain product (so that
// a negative zero survives), every further one is fused onto the sum. All members whose sums are floats form them
// through these functions, which is why the derivative filters agree bit for bit with a row stage followed by a column
// stage. A tap of zero is not skipped: it turns infinities into NaN and may turn a negative zero into a positive one.
#pragma once

#include "kernel/vec.h"

namespace rvxcv {

RVX_INLINE F32x8 firstTap(F32x8 tap, F32x8 value) { return mul(tap, value); }
RVX_INLINE F32x8 nextTap(F32x8 sum, F32x8 tap, F32x8 value) { return fma(tap, value, sum); }

// The whole chain of a fixed number of taps; `value(i)` is the vector under tap i.
template <int count, class Value> RVX_INLINE F32x8 tapChain(const F32x8 *taps, const Value &value) {
    F32x8 sum = firstTap(taps[0], value(0));
    for (int i = 1; i < count; ++i) {
        sum = nextTap(sum, taps[i], value(i));
    }
    return sum;
}

} // namespace rvxcv
