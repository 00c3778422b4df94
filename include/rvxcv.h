/** @file
 * rvxcv: computer-vision primitives for two-dimensional images (x86-64 with AVX2).
 *
 * Umbrella header: one header per subsystem. Compiles as C99 and as C++17, needs nothing but `stdint.h`.
 *
 * Conventions shared by every function:
 *  - An image is a pointer to the first pixel of the region of interest and a row step in bytes. Sizes are pixels.
 *  - Argument order: source planes, destination planes, region size, operation parameters, scratch buffer or state.
 *  - The result is a StatusCode. Arguments are checked in a fixed order, documented with each family; the first
 *    failing check decides the status, and nothing is written before all checks have passed.
 *  - Only the pixels of the region (and a margin that the caller declares to be in memory) are read, only output
 *    pixels are written. Scratch buffers may start at any address; they hold exactly what the size query reports.
 *  - Every function is reentrant; calls may run at once unless they share an output, a scratch buffer or a state.
 */
#ifndef RVXCV_H
#define RVXCV_H

#include "rvxcv/types.h"

#include "rvxcv/arith.h"
#include "rvxcv/detect.h"
#include "rvxcv/feature.h"
#include "rvxcv/filter.h"
#include "rvxcv/foreground.h"
#include "rvxcv/geometry.h"
#include "rvxcv/morph.h"
#include "rvxcv/motion.h"
#include "rvxcv/pyramid.h"
#include "rvxcv/segment.h"
#include "rvxcv/stats.h"
#include "rvxcv/version.h"

#endif
