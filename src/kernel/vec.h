// Thin vector types over AVX2, sorted by purpose. Free functions named after what they do; rounding and saturation are
// in the name. No other file uses an _mm256_ intrinsic without saying why.
#pragma once

#include "kernel/vec/types.h"

#include "kernel/vec/arithmetic.h"
#include "kernel/vec/bits.h"
#include "kernel/vec/compare.h"
#include "kernel/vec/convert.h"
#include "kernel/vec/double.h"
#include "kernel/vec/gather.h"
#include "kernel/vec/lanes.h"
#include "kernel/vec/memory.h"
#include "kernel/vec/sums.h"
