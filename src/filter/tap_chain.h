// The float sum of the separable pipeline. Taps are taken in ascending order; the first one is a plain product (so that
// a negative zero survives), every further one is fused onto the sum. The fixed kernels of gradient_rows.h take theirs
// in the same order, so that derivative filters agree bit for bit with a row stage followed by a column stage (a test
// compares them). A tap of zero is not skipped: it turns infinities into NaN and may turn a negative zero into a
// positive one.
#pragma once

#include "kernel/vec.h"

namespace rvxcv {

RVX_INLINE F32x8 firstTap(F32x8 tap, F32x8 value) { return mul(tap, value); }
RVX_INLINE F32x8 nextTap(F32x8 sum, F32x8 tap, F32x8 value) { return fma(tap, value, sum); }

} // namespace rvxcv
