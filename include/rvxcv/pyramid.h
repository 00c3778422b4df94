/** @file
 * Image pyramids: fixed halving and doubling, level sizes and the descriptor, layers of any rate. */
#ifndef RVXCV_PYRAMID_H
#define RVXCV_PYRAMID_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup pyramid Pyramids
 * Smaller and larger versions of an image.
 * @{ */

/** @defgroup pyramid_fixed Fixed halving and doubling
 * Halving: the destination has ((width + 1) / 2) x ((height + 1) / 2) pixels. Pixel (x, y) is the sum of the 5 x 5
 * source pixels around (2x, 2y), weighted in both directions by 1 4 6 4 1, divided by 256. A pixel outside the image is
 * the mirrored one, the edge pixel not repeated (an image one pixel wide or high has only that one).
 *
 * Doubling: the destination has (2 * width) x (2 * height) pixels. In each direction
 *
 *     result 2k      (c[k - 1] + 6 c[k] + c[k + 1]) / 8
 *     result 2k + 1  (4 c[k] + 4 c[k + 1]) / 8                 c[k - 1] plays no part, even if it is a NaN
 *
 * On the left and at the top the missing pixel -1 is pixel 1, on the right and at the bottom pixel `width` (`height`)
 * is the last one.
 *
 * 8u and 8s are exact: one sum over both directions, rounded to nearest, halves up. 32f is single precision; halving
 * forms (a + e) + 6 c + 4 (b + d) of every row, then the same of five such results, then times 1 / 256; doubling forms
 * 0.125 * (6 b + (a + c)) and 0.5 * (b + c) of the rows first, then of the columns. The products are fused with the
 * addition. A constant image keeps its value.
 *
 * `buffer` is scratch of the size that the query gives, at any address. The images must not overlap. Status codes, in
 * the order of the checks: StatusNullPointer, StatusBadSize, StatusBadStep, StatusStepNotMultiple (32f).
 * @{ */

/** @name Halving and doubling
 * @{ */
/** Halves or doubles an image. */
StatusCode rvxiPyrDown_Gauss5x5_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                       RoiSize srcRoi, uint8_t *buffer);
StatusCode rvxiPyrDown_Gauss5x5_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                       RoiSize srcRoi, uint8_t *buffer);
StatusCode rvxiPyrDown_Gauss5x5_8s_C1R(const int8_t *src, int32_t srcStep, int8_t *dst, int32_t dstStep, RoiSize srcRoi,
                                       uint8_t *buffer);
StatusCode rvxiPyrDown_Gauss5x5_8s_C3R(const int8_t *src, int32_t srcStep, int8_t *dst, int32_t dstStep, RoiSize srcRoi,
                                       uint8_t *buffer);
StatusCode rvxiPyrDown_Gauss5x5_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize srcRoi,
                                        uint8_t *buffer);
StatusCode rvxiPyrDown_Gauss5x5_32f_C3R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize srcRoi,
                                        uint8_t *buffer);
StatusCode rvxiPyrUp_Gauss5x5_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize srcRoi,
                                     uint8_t *buffer);
StatusCode rvxiPyrUp_Gauss5x5_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize srcRoi,
                                     uint8_t *buffer);
StatusCode rvxiPyrUp_Gauss5x5_8s_C1R(const int8_t *src, int32_t srcStep, int8_t *dst, int32_t dstStep, RoiSize srcRoi,
                                     uint8_t *buffer);
StatusCode rvxiPyrUp_Gauss5x5_8s_C3R(const int8_t *src, int32_t srcStep, int8_t *dst, int32_t dstStep, RoiSize srcRoi,
                                     uint8_t *buffer);
StatusCode rvxiPyrUp_Gauss5x5_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize srcRoi,
                                      uint8_t *buffer);
StatusCode rvxiPyrUp_Gauss5x5_32f_C3R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize srcRoi,
                                      uint8_t *buffer);
/** @} */

/** @name Scratch
 * Bytes of scratch for a source width, a pixel type (8u, 8s or 32f) and 1 or 3 channels:
 *
 *     down  roundup16(roiWidth * 4 * channels) * 6 + 64
 *     up    roundup16(roiWidth * 8 * channels) * 3 + 64
 *
 * Status codes: StatusNullPointer, StatusBadSize (width below 1), StatusBadChannelCount, StatusBadDataType,
 * StatusBadSize (a size that does not fit).
 * @{ */
/** Bytes of scratch. */
StatusCode rvxiPyrDownGetBufSize_Gauss5x5(int32_t roiWidth, PixelTypeCode pixelType, int32_t channels,
                                          int32_t *bufSize);
StatusCode rvxiPyrUpGetBufSize_Gauss5x5(int32_t roiWidth, PixelTypeCode pixelType, int32_t channels, int32_t *bufSize);
/** @} */
/** @} */

/** @defgroup pyramid_levels Level sizes and the descriptor
 * Two rules say which sizes follow each other in a pyramid of any rate in (1, 10]; both directions of a size follow
 * them on their own. All of it is single-precision arithmetic whose results are truncated toward zero.
 *
 * Up: a level of length n may grow to any length from
 *
 *     1 if n is 1, else max(trunc((n - 1) * rate) + 1, n + 1)     to     max(trunc(n * rate), n + 1).
 *
 * Down: a level of length n shrinks to the candidate max(1, trunc(n / rate + 0.5)), corrected one by one until n lies
 * in the range to which the candidate may grow. So 1 stays 1 and every other length becomes shorter.
 *
 * Lengths that do not fit in 32 bits are given as INT32_MAX. Status codes: StatusNullPointer, StatusBadSize,
 * StatusBadArgument (rate not in (1, 10]).
 * @{ */

/** @name Level sizes
 * @{ */
/** The size of a neighbouring level. */
StatusCode rvxiGetPyramidDownROI(RoiSize srcRoi, RoiSize *dstRoi, float rate);
StatusCode rvxiGetPyramidUpROI(RoiSize srcRoi, RoiSize *dstRoiMin, RoiSize *dstRoiMax, float rate);
/** @} */

/** A pyramid: the sizes of its levels and room to note where they lie. Level 0 is the base; every array has levelCount
 * + 1 entries. The caller stores pointers to level images of its own and their row steps, and may keep a layer state
 * here; the library never writes these fields once the record is made. */
typedef struct PyramidRecord {
    void **images;      /**< first pixels of the levels; null at first */
    RoiSize *roiSizes;  /**< sizes of the levels: the base, and of every further one what rvxiGetPyramidDownROI says */
    double *scales;     /**< 1, and every further one the one before it times 1.0 / rate, in double */
    int32_t *steps;     /**< row steps of the levels in bytes; 0 at first */
    void *layerState;   /**< a slot for the caller's layer state; null at first */
    int32_t levelCount; /**< levels above the base: `level`, or fewer when 1 x 1 is reached */
} PyramidRecord;

/** @name The record
 * Makes a record with at most `level` levels above the base, one allocation. Status codes: StatusNullPointer,
 * StatusBadSize, StatusBadArgument (rate not in (1, 10], level below 1), StatusNoMemory. rvxiPyramidFree releases the
 * record, not the images (StatusNullPointer).
 * @{ */
/** Makes or releases a record. */
StatusCode rvxiPyramidInitAlloc(PyramidRecord **pyramid, int32_t level, RoiSize baseRoi, float rate);
StatusCode rvxiPyramidFree(PyramidRecord *pyramid);
/** @} */
/** @} */

/** @defgroup pyramid_layers Layers of any rate
 * One step of a pyramid at any rate in (1, 10], smoothed by a symmetric kernel of the caller's. A state holds what
 * depends on kernel and rate; made for the size of the largest source, it serves every source size. It holds row
 * buffers too: one state must not serve two calls at the same time. The working functions allocate nothing.
 *
 * The kernel. kernelSize taps (odd, at least 3), the centre at kernelSize / 2, 16-bit integers for 8u and 16u. It is
 * made symmetric from its left half: if the right half is something else (of floats, by more than 1.1754944e-38), the
 * state is made nevertheless and the result is the warning StatusKernelNotSymmetric. Then, with S its sum:
 *
 *     32f        tap / S if |S| > 1.1754944e-38, else the tap itself
 *     down, 8u   (tap * 16384 / S) >> 1, an integer quotient, in units of 1 / 8192    (S = 0: the tap itself, in the
 *     down, 16u  (tap * 16384 / S) >> 2, in units of 1 / 4096                          same units)
 *     up         trunc(8192 * (2 * tap / S) + 0.5) >> 1, a quotient of floats         (S = 0: the tap itself)
 *
 * Down. C is the source convolved with the weights in both directions, a pixel outside the image being the mirrored
 * one, the edge pixel not repeated (repeatedly where the kernel exceeds the image). The result at (x, y) is C at
 * (x * rate, y * rate), bilinear, the position clamped to the last column and row; a fraction of 0 reads no neighbour.
 * A rate within 0.00002 of 2 counts as 2. dstRoi is rvxiGetPyramidDownROI of srcRoi, with one exception: when the
 * kernel is smaller than both sides of the state's size, and a level of the pyramid over that size (not the last one)
 * has the height of srcRoi, it is the size of the level after the first such one, whatever the width of srcRoi.
 *
 * Up. dstRoi lies in the range that rvxiGetPyramidUpROI gives. With w the kernel, linear between its taps and zero
 * beyond them, each direction computes
 *
 *     result(x) = sum over j of w(j * rate - x) * src(j)  /  sum over j of w(j * rate - x)
 *
 * in which a pixel left or above of the image is the mirrored one, and right or below the last one. Where no tap falls
 * on a pixel, or the weights add up to zero, the result is interpolated linearly between the two pixels around it.
 *
 * 8u and 16u: computed in single precision, nothing is rounded or saturated before the end; the result is the nearest
 * integer. 32f: rows are combined first, then columns; sums are fused, in ascending order.
 *
 * Status codes of InitAlloc, in the order of the checks: StatusNullPointer (state, kernel), StatusBadSize (srcRoi),
 * StatusBadArgument (mode not 2, rate, kernelSize), StatusNoMemory, StatusKernelNotSymmetric (38, the state is made).
 * Of Free: StatusNullPointer. Of the working functions: StatusNullPointer, StatusBadSize (srcRoi), StatusBadStep,
 * StatusStepNotMultiple (16u, 32f), StatusBadArgument (the state's rate), StatusBadSize (dstRoi).
 * @{ */

/** A state of the way down. */
typedef struct PyramidLayerDownState PyramidLayerDownState;
/** A state of the way up. */
typedef struct PyramidLayerUpState PyramidLayerUpState;

/** @name Down
 * @{ */
/** Makes, releases or applies a state of the way down. */
StatusCode rvxiPyramidLayerDownInitAlloc_8u_C1R(PyramidLayerDownState **state, RoiSize srcRoi, float rate,
                                                const int16_t *kernel, int32_t kernelSize, int32_t mode);
StatusCode rvxiPyramidLayerDownInitAlloc_8u_C3R(PyramidLayerDownState **state, RoiSize srcRoi, float rate,
                                                const int16_t *kernel, int32_t kernelSize, int32_t mode);
StatusCode rvxiPyramidLayerDownInitAlloc_16u_C1R(PyramidLayerDownState **state, RoiSize srcRoi, float rate,
                                                 const int16_t *kernel, int32_t kernelSize, int32_t mode);
StatusCode rvxiPyramidLayerDownInitAlloc_16u_C3R(PyramidLayerDownState **state, RoiSize srcRoi, float rate,
                                                 const int16_t *kernel, int32_t kernelSize, int32_t mode);
StatusCode rvxiPyramidLayerDownInitAlloc_32f_C1R(PyramidLayerDownState **state, RoiSize srcRoi, float rate,
                                                 const float *kernel, int32_t kernelSize, int32_t mode);
StatusCode rvxiPyramidLayerDownInitAlloc_32f_C3R(PyramidLayerDownState **state, RoiSize srcRoi, float rate,
                                                 const float *kernel, int32_t kernelSize, int32_t mode);
StatusCode rvxiPyramidLayerDownFree_8u_C1R(PyramidLayerDownState *state);
StatusCode rvxiPyramidLayerDownFree_8u_C3R(PyramidLayerDownState *state);
StatusCode rvxiPyramidLayerDownFree_16u_C1R(PyramidLayerDownState *state);
StatusCode rvxiPyramidLayerDownFree_16u_C3R(PyramidLayerDownState *state);
StatusCode rvxiPyramidLayerDownFree_32f_C1R(PyramidLayerDownState *state);
StatusCode rvxiPyramidLayerDownFree_32f_C3R(PyramidLayerDownState *state);
StatusCode rvxiPyramidLayerDown_8u_C1R(const uint8_t *src, int32_t srcStep, RoiSize srcRoi, uint8_t *dst,
                                       int32_t dstStep, RoiSize dstRoi, PyramidLayerDownState *state);
StatusCode rvxiPyramidLayerDown_8u_C3R(const uint8_t *src, int32_t srcStep, RoiSize srcRoi, uint8_t *dst,
                                       int32_t dstStep, RoiSize dstRoi, PyramidLayerDownState *state);
StatusCode rvxiPyramidLayerDown_16u_C1R(const uint16_t *src, int32_t srcStep, RoiSize srcRoi, uint16_t *dst,
                                        int32_t dstStep, RoiSize dstRoi, PyramidLayerDownState *state);
StatusCode rvxiPyramidLayerDown_16u_C3R(const uint16_t *src, int32_t srcStep, RoiSize srcRoi, uint16_t *dst,
                                        int32_t dstStep, RoiSize dstRoi, PyramidLayerDownState *state);
StatusCode rvxiPyramidLayerDown_32f_C1R(const float *src, int32_t srcStep, RoiSize srcRoi, float *dst, int32_t dstStep,
                                        RoiSize dstRoi, PyramidLayerDownState *state);
StatusCode rvxiPyramidLayerDown_32f_C3R(const float *src, int32_t srcStep, RoiSize srcRoi, float *dst, int32_t dstStep,
                                        RoiSize dstRoi, PyramidLayerDownState *state);
/** @} */

/** @name Up
 * @{ */
/** Makes, releases or applies a state of the way up. */
StatusCode rvxiPyramidLayerUpInitAlloc_8u_C1R(PyramidLayerUpState **state, RoiSize srcRoi, float rate,
                                              const int16_t *kernel, int32_t kernelSize, int32_t mode);
StatusCode rvxiPyramidLayerUpInitAlloc_8u_C3R(PyramidLayerUpState **state, RoiSize srcRoi, float rate,
                                              const int16_t *kernel, int32_t kernelSize, int32_t mode);
StatusCode rvxiPyramidLayerUpInitAlloc_16u_C1R(PyramidLayerUpState **state, RoiSize srcRoi, float rate,
                                               const int16_t *kernel, int32_t kernelSize, int32_t mode);
StatusCode rvxiPyramidLayerUpInitAlloc_16u_C3R(PyramidLayerUpState **state, RoiSize srcRoi, float rate,
                                               const int16_t *kernel, int32_t kernelSize, int32_t mode);
StatusCode rvxiPyramidLayerUpInitAlloc_32f_C1R(PyramidLayerUpState **state, RoiSize srcRoi, float rate,
                                               const float *kernel, int32_t kernelSize, int32_t mode);
StatusCode rvxiPyramidLayerUpInitAlloc_32f_C3R(PyramidLayerUpState **state, RoiSize srcRoi, float rate,
                                               const float *kernel, int32_t kernelSize, int32_t mode);
StatusCode rvxiPyramidLayerUpFree_8u_C1R(PyramidLayerUpState *state);
StatusCode rvxiPyramidLayerUpFree_8u_C3R(PyramidLayerUpState *state);
StatusCode rvxiPyramidLayerUpFree_16u_C1R(PyramidLayerUpState *state);
StatusCode rvxiPyramidLayerUpFree_16u_C3R(PyramidLayerUpState *state);
StatusCode rvxiPyramidLayerUpFree_32f_C1R(PyramidLayerUpState *state);
StatusCode rvxiPyramidLayerUpFree_32f_C3R(PyramidLayerUpState *state);
StatusCode rvxiPyramidLayerUp_8u_C1R(const uint8_t *src, int32_t srcStep, RoiSize srcRoi, uint8_t *dst, int32_t dstStep,
                                     RoiSize dstRoi, PyramidLayerUpState *state);
StatusCode rvxiPyramidLayerUp_8u_C3R(const uint8_t *src, int32_t srcStep, RoiSize srcRoi, uint8_t *dst, int32_t dstStep,
                                     RoiSize dstRoi, PyramidLayerUpState *state);
StatusCode rvxiPyramidLayerUp_16u_C1R(const uint16_t *src, int32_t srcStep, RoiSize srcRoi, uint16_t *dst,
                                      int32_t dstStep, RoiSize dstRoi, PyramidLayerUpState *state);
StatusCode rvxiPyramidLayerUp_16u_C3R(const uint16_t *src, int32_t srcStep, RoiSize srcRoi, uint16_t *dst,
                                      int32_t dstStep, RoiSize dstRoi, PyramidLayerUpState *state);
StatusCode rvxiPyramidLayerUp_32f_C1R(const float *src, int32_t srcStep, RoiSize srcRoi, float *dst, int32_t dstStep,
                                      RoiSize dstRoi, PyramidLayerUpState *state);
StatusCode rvxiPyramidLayerUp_32f_C3R(const float *src, int32_t srcStep, RoiSize srcRoi, float *dst, int32_t dstStep,
                                      RoiSize dstRoi, PyramidLayerUpState *state);
/** @} */
/** @} */
/** @} */

#ifdef __cplusplus
}
#endif

#endif
