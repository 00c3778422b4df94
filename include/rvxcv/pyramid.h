/* Image pyramids: fixed halving and doubling, level sizes and the descriptor, layers of any rate. */
#ifndef RVXCV_PYRAMID_H
#define RVXCV_PYRAMID_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Fixed halving and doubling ---- */

/* ---- Level sizes and the descriptor ---- */

/* Two rules say which sizes follow each other in a pyramid of any rate in (1, 10]; both directions of a size follow
 * them on their own. All of it is single-precision arithmetic whose results are truncated toward zero.
 *
 * Up: a level of length n may grow to any length from
 *     1 if n is 1, else max(trunc((n - 1) * rate) + 1, n + 1)     to     max(trunc(n * rate), n + 1).
 * Down: a level of length n shrinks to the candidate max(1, trunc(n / rate + 0.5)), corrected one by one until n lies
 * in the range to which the candidate may grow. So 1 stays 1 and every other length becomes shorter.
 *
 * Lengths that do not fit in 32 bits are given as INT32_MAX. Status codes: StatusNullPointer, StatusBadSize,
 * StatusBadArgument (rate not in (1, 10]). */
StatusCode rvxiGetPyramidDownROI(RoiSize srcRoi, RoiSize *dstRoi, float rate);
StatusCode rvxiGetPyramidUpROI(RoiSize srcRoi, RoiSize *dstRoiMin, RoiSize *dstRoiMax, float rate);

/* A pyramid: the sizes of its levels and room to note where they lie. Level 0 is the base; every array has levelCount
 * + 1 entries. The caller stores pointers to level images of its own and their row steps, and may keep a layer state
 * here; the library never writes these fields once the record is made. */
typedef struct PyramidRecord {
    void **images;      /* first pixels of the levels; null at first */
    RoiSize *roiSizes;  /* sizes of the levels: the base, and of every further one what rvxiGetPyramidDownROI says */
    double *scales;     /* 1, and every further one the one before it times 1.0 / rate, in double */
    int32_t *steps;     /* row steps of the levels in bytes; 0 at first */
    void *layerState;   /* a slot for the caller's layer state; null at first */
    int32_t levelCount; /* levels above the base: `level`, or fewer when 1 x 1 is reached */
} PyramidRecord;

/* Makes a record with at most `level` levels above the base, one allocation. Status codes: StatusNullPointer,
 * StatusBadSize, StatusBadArgument (rate not in (1, 10], level below 1), StatusNoMemory. rvxiPyramidFree releases the
 * record, not the images (StatusNullPointer). */
StatusCode rvxiPyramidInitAlloc(PyramidRecord **pyramid, int32_t level, RoiSize baseRoi, float rate);
StatusCode rvxiPyramidFree(PyramidRecord *pyramid);

/* ---- Layers of any rate ---- */

#ifdef __cplusplus
}
#endif

#endif
