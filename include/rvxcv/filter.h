/** @file
 * Linear filters. */
#ifndef RVXCV_FILTER_H
#define RVXCV_FILTER_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup filter Linear filters
 * Convolutions, fixed and of any kernel, and the magnitude of a colour gradient.
 * @{ */

/** @defgroup pipeline Separable pipeline
 * A separable filter, strip by strip: the row stage filters rows of an image horizontally into rows of the caller's,
 * the column stage combines such rows vertically. Both take arrays of row pointers, so that a caller keeps a ring of
 * rows and feeds them in any order, and no state is held between calls. examples/strip_blur.c shows the whole dance.
 *
 * Row stage. With E the source row extended by the border, E[xAnchor + x] = src[x]:
 *
 *     dstRows[y][x] = (sum of kernel[j] * E[x + j], j = 0 .. kernelSize - 1) / divisor
 *
 * The kernel is applied in the order given; tap xAnchor lies on pixel x. border & 15 is BorderConstant, BorderReplicate
 * or BorderInMemory; BorderInMemoryLeft and BorderInMemoryRight may be or-ed in and further bits are ignored. On a side
 * in memory the caller provides xAnchor pixels before, or kernelSize - 1 - xAnchor pixels behind, every row. Members of
 * three channels filter each channel with the same kernel; borderValue then points at three elements (and must not be
 * null whatever the border). dstRows holds roi.height pointers; a row buffer has roi.width pixels and is not the
 * source.
 *
 * Column stage. srcRows holds roi.height + kernelSize - 1 pointers, the vertical border arranged by the caller (by
 * repeating pointers, or with rows of its own); dst is none of these rows:
 *
 *     dst[y][x] = (sum of kernel[i] * srcRows[y + i][x], i = 0 .. kernelSize - 1) / divisor
 *
 * Numbers, the same for every kernel length, region and alignment:
 * - 16s, 8u16s, 16s8u, 16s8s: sums in 32 bits that wrap, converted to float; 16u: coefficients are unsigned, sums in
 *   float as for 32f. The sum times 1.0f / (float)divisor is saturated to the destination's type and then rounded to
 *   nearest, ties to even, in the first W - W mod 16 pixels of a row of W, and toward zero in the last W mod 16.
 * - 32f (no divisor): float, taps in ascending order, the first a product, every further one a fused multiply-add.
 * - Low_16s: the low 16 bits of products in wrapping 16-bit sums, exact while every partial sum fits in 16 bits; the
 *   quotient by the divisor is an integer one, toward zero in every pixel, and saturated.
 *
 * Status codes of the row stage, in the order of the checks: StatusNullPointer (source, row array, kernel or buffer),
 * StatusBadSize (region), StatusNullPointer (a row pointer; then, with three channels, the border value), StatusBadSize
 * (kernelSize below 1), StatusBadAnchor (xAnchor outside 0 .. kernelSize - 1), StatusBadStep, StatusStepNotMultiple
 * (not 8u), StatusBadArgument (border kind, or divisor: 0, for 16u also below 0).
 *
 * Of the column stage: StatusNullPointer (row array, destination or kernel), StatusBadSize (region), StatusNullPointer
 * (a row pointer), StatusBadSize (kernelSize below 1), StatusBadStep, StatusStepNotMultiple (not 8u and 8s),
 * StatusNullPointer (buffer), StatusBadArgument (divisor 0).
 *
 * Images, rows and the scratch buffer may stand at any address.
 * @{ */

/** @name Row stage
 * @{ */
/** Filters rows of an image horizontally into rows of the caller. */
StatusCode rvxiFilterRowBorderPipeline_16s_C1R(const int16_t *src, int32_t srcStep, int16_t *const *dstRows,
                                               RoiSize roi, const int16_t *kernel, int32_t kernelSize, int32_t xAnchor,
                                               BorderKind border, int16_t borderValue, int32_t divisor,
                                               uint8_t *buffer);
StatusCode rvxiFilterRowBorderPipeline_16s_C3R(const int16_t *src, int32_t srcStep, int16_t *const *dstRows,
                                               RoiSize roi, const int16_t *kernel, int32_t kernelSize, int32_t xAnchor,
                                               BorderKind border, const int16_t *borderValue, int32_t divisor,
                                               uint8_t *buffer);
StatusCode rvxiFilterRowBorderPipeline_16u_C1R(const uint16_t *src, int32_t srcStep, uint16_t *const *dstRows,
                                               RoiSize roi, const uint16_t *kernel, int32_t kernelSize, int32_t xAnchor,
                                               BorderKind border, uint16_t borderValue, int32_t divisor,
                                               uint8_t *buffer);
StatusCode rvxiFilterRowBorderPipeline_16u_C3R(const uint16_t *src, int32_t srcStep, uint16_t *const *dstRows,
                                               RoiSize roi, const uint16_t *kernel, int32_t kernelSize, int32_t xAnchor,
                                               BorderKind border, const uint16_t *borderValue, int32_t divisor,
                                               uint8_t *buffer);
StatusCode rvxiFilterRowBorderPipeline_8u16s_C1R(const uint8_t *src, int32_t srcStep, int16_t *const *dstRows,
                                                 RoiSize roi, const int16_t *kernel, int32_t kernelSize,
                                                 int32_t xAnchor, BorderKind border, uint8_t borderValue,
                                                 int32_t divisor, uint8_t *buffer);
StatusCode rvxiFilterRowBorderPipeline_8u16s_C3R(const uint8_t *src, int32_t srcStep, int16_t *const *dstRows,
                                                 RoiSize roi, const int16_t *kernel, int32_t kernelSize,
                                                 int32_t xAnchor, BorderKind border, const uint8_t *borderValue,
                                                 int32_t divisor, uint8_t *buffer);
StatusCode rvxiFilterRowBorderPipeline_32f_C1R(const float *src, int32_t srcStep, float *const *dstRows, RoiSize roi,
                                               const float *kernel, int32_t kernelSize, int32_t xAnchor,
                                               BorderKind border, float borderValue, uint8_t *buffer);
StatusCode rvxiFilterRowBorderPipeline_32f_C3R(const float *src, int32_t srcStep, float *const *dstRows, RoiSize roi,
                                               const float *kernel, int32_t kernelSize, int32_t xAnchor,
                                               BorderKind border, const float *borderValue, uint8_t *buffer);
StatusCode rvxiFilterRowBorderPipeline_Low_16s_C1R(const int16_t *src, int32_t srcStep, int16_t *const *dstRows,
                                                   RoiSize roi, const int16_t *kernel, int32_t kernelSize,
                                                   int32_t xAnchor, BorderKind border, int16_t borderValue,
                                                   int32_t divisor, uint8_t *buffer);
StatusCode rvxiFilterRowBorderPipeline_Low_16s_C3R(const int16_t *src, int32_t srcStep, int16_t *const *dstRows,
                                                   RoiSize roi, const int16_t *kernel, int32_t kernelSize,
                                                   int32_t xAnchor, BorderKind border, const int16_t *borderValue,
                                                   int32_t divisor, uint8_t *buffer);
/** @} */

/** @name Column stage
 * @{ */
/** Combines rows vertically. */
StatusCode rvxiFilterColumnPipeline_16s_C1R(const int16_t *const *srcRows, int16_t *dst, int32_t dstStep, RoiSize roi,
                                            const int16_t *kernel, int32_t kernelSize, int32_t divisor,
                                            uint8_t *buffer);
StatusCode rvxiFilterColumnPipeline_16s_C3R(const int16_t *const *srcRows, int16_t *dst, int32_t dstStep, RoiSize roi,
                                            const int16_t *kernel, int32_t kernelSize, int32_t divisor,
                                            uint8_t *buffer);
StatusCode rvxiFilterColumnPipeline_16s8u_C1R(const int16_t *const *srcRows, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                              const int16_t *kernel, int32_t kernelSize, int32_t divisor,
                                              uint8_t *buffer);
StatusCode rvxiFilterColumnPipeline_16s8u_C3R(const int16_t *const *srcRows, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                              const int16_t *kernel, int32_t kernelSize, int32_t divisor,
                                              uint8_t *buffer);
StatusCode rvxiFilterColumnPipeline_16s8s_C1R(const int16_t *const *srcRows, int8_t *dst, int32_t dstStep, RoiSize roi,
                                              const int16_t *kernel, int32_t kernelSize, int32_t divisor,
                                              uint8_t *buffer);
StatusCode rvxiFilterColumnPipeline_16s8s_C3R(const int16_t *const *srcRows, int8_t *dst, int32_t dstStep, RoiSize roi,
                                              const int16_t *kernel, int32_t kernelSize, int32_t divisor,
                                              uint8_t *buffer);
StatusCode rvxiFilterColumnPipeline_16u_C1R(const uint16_t *const *srcRows, uint16_t *dst, int32_t dstStep, RoiSize roi,
                                            const uint16_t *kernel, int32_t kernelSize, int32_t divisor,
                                            uint8_t *buffer);
StatusCode rvxiFilterColumnPipeline_16u_C3R(const uint16_t *const *srcRows, uint16_t *dst, int32_t dstStep, RoiSize roi,
                                            const uint16_t *kernel, int32_t kernelSize, int32_t divisor,
                                            uint8_t *buffer);
StatusCode rvxiFilterColumnPipeline_32f_C1R(const float *const *srcRows, float *dst, int32_t dstStep, RoiSize roi,
                                            const float *kernel, int32_t kernelSize, uint8_t *buffer);
StatusCode rvxiFilterColumnPipeline_32f_C3R(const float *const *srcRows, float *dst, int32_t dstStep, RoiSize roi,
                                            const float *kernel, int32_t kernelSize, uint8_t *buffer);
StatusCode rvxiFilterColumnPipeline_Low_16s_C1R(const int16_t *const *srcRows, int16_t *dst, int32_t dstStep,
                                                RoiSize roi, const int16_t *kernel, int32_t kernelSize, int32_t divisor,
                                                uint8_t *buffer);
StatusCode rvxiFilterColumnPipeline_Low_16s_C3R(const int16_t *const *srcRows, int16_t *dst, int32_t dstStep,
                                                RoiSize roi, const int16_t *kernel, int32_t kernelSize, int32_t divisor,
                                                uint8_t *buffer);
/** @} */

/** @name Scratch
 * Bytes of scratch that a call with this region and kernel length needs; those of the row stage depend on the kernel
 * alone. Status codes: StatusNullPointer, StatusBadSize (region, kernelSize below 1, or a size that does not fit).
 * @{ */
/** Bytes of scratch. */
StatusCode rvxiFilterRowBorderPipelineGetBufferSize_16s_C1R(RoiSize roi, int32_t kernelSize, int32_t *size);
StatusCode rvxiFilterRowBorderPipelineGetBufferSize_16s_C3R(RoiSize roi, int32_t kernelSize, int32_t *size);
StatusCode rvxiFilterRowBorderPipelineGetBufferSize_16u_C1R(RoiSize roi, int32_t kernelSize, int32_t *size);
StatusCode rvxiFilterRowBorderPipelineGetBufferSize_16u_C3R(RoiSize roi, int32_t kernelSize, int32_t *size);
StatusCode rvxiFilterRowBorderPipelineGetBufferSize_8u16s_C1R(RoiSize roi, int32_t kernelSize, int32_t *size);
StatusCode rvxiFilterRowBorderPipelineGetBufferSize_8u16s_C3R(RoiSize roi, int32_t kernelSize, int32_t *size);
StatusCode rvxiFilterRowBorderPipelineGetBufferSize_32f_C1R(RoiSize roi, int32_t kernelSize, int32_t *size);
StatusCode rvxiFilterRowBorderPipelineGetBufferSize_32f_C3R(RoiSize roi, int32_t kernelSize, int32_t *size);
StatusCode rvxiFilterRowBorderPipelineGetBufferSize_Low_16s_C1R(RoiSize roi, int32_t kernelSize, int32_t *size);
StatusCode rvxiFilterRowBorderPipelineGetBufferSize_Low_16s_C3R(RoiSize roi, int32_t kernelSize, int32_t *size);
StatusCode rvxiFilterColumnPipelineGetBufferSize_16s_C1R(RoiSize roi, int32_t kernelSize, int32_t *size);
StatusCode rvxiFilterColumnPipelineGetBufferSize_16s_C3R(RoiSize roi, int32_t kernelSize, int32_t *size);
StatusCode rvxiFilterColumnPipelineGetBufferSize_16s8u_C1R(RoiSize roi, int32_t kernelSize, int32_t *size);
StatusCode rvxiFilterColumnPipelineGetBufferSize_16s8u_C3R(RoiSize roi, int32_t kernelSize, int32_t *size);
StatusCode rvxiFilterColumnPipelineGetBufferSize_16s8s_C1R(RoiSize roi, int32_t kernelSize, int32_t *size);
StatusCode rvxiFilterColumnPipelineGetBufferSize_16s8s_C3R(RoiSize roi, int32_t kernelSize, int32_t *size);
StatusCode rvxiFilterColumnPipelineGetBufferSize_16u_C1R(RoiSize roi, int32_t kernelSize, int32_t *size);
StatusCode rvxiFilterColumnPipelineGetBufferSize_16u_C3R(RoiSize roi, int32_t kernelSize, int32_t *size);
StatusCode rvxiFilterColumnPipelineGetBufferSize_32f_C1R(RoiSize roi, int32_t kernelSize, int32_t *size);
StatusCode rvxiFilterColumnPipelineGetBufferSize_32f_C3R(RoiSize roi, int32_t kernelSize, int32_t *size);
StatusCode rvxiFilterColumnPipelineGetBufferSize_Low_16s_C1R(RoiSize roi, int32_t kernelSize, int32_t *size);
StatusCode rvxiFilterColumnPipelineGetBufferSize_Low_16s_C3R(RoiSize roi, int32_t kernelSize, int32_t *size);
/** @} */
/** @} */

/** @defgroup fixed_filters Derivative and low-pass filters
 * Filters of 3x3 (Mask3x3) or 5x5 (Mask5x5) pixels, Scharr 3x3 only, over a region with a border. Masks are written as
 * they lie over the image, rows top to bottom: each coefficient multiplies the pixel under it. The 5x5 masks are the
 * outer products of the five-tap kernels of the same names:
 *
 *             3 taps     5 taps
 *     smooth  1  2  1    1  4  6  4  1
 *     first  -1  0  1   -1 -2  0  2  1
 *     second  1 -2  1    1  0 -2  0  1
 *     box     1  1  1    1  1  1  1  1
 *
 * Results.
 * - 8u16s: the exact sum.
 * - 8u8s: the exact sum times 1.0f / (float)divisor in single precision, saturated to -128..127. In a row of W pixels
 *   the first W - W % 16 are rounded to nearest even, the last W % 16 are truncated toward zero.
 * - 32f: bit for bit a row stage followed by a column stage of the separable pipeline with these kernels (in each the
 *   first tap is a plain product and every further tap, zeros too, a fused multiply-add).
 *
 * Borders: kinds 0 (borderValue), 1, 2, 3, 4 and 6, with flags 16, 32, 64, 128 for sides whose outside pixels are read
 * from memory (1 pixel for 3x3, 2 for 5x5). Regions smaller than the margin wrap or reflect repeatedly. Bits above the
 * kind are refused unless they name a side.
 *
 * The buffer holds at least the bytes that the filter's GetBufferSize reports; it may start at any address and holds
 * nothing between calls. Source and destination must not overlap.
 *
 * Status codes, in the order of the checks: StatusNullPointer (source, destination or buffer), StatusBadSize,
 * StatusBadStep (a step does not cover its row), StatusStepNotMultiple (16s and 32f images), StatusBadArgument (the
 * border), StatusBadArgument (the divisor is 0), StatusBadMaskSize. GetBufferSize: StatusNullPointer, StatusBadSize
 * (also for a size that does not fit), StatusBadMaskSize.
 * @{ */

/** @name SobelVert
 * Left minus right: a vertical edge from bright to dark is positive.
 *
 *      1  0 -1
 *      2  0 -2
 *      1  0 -1
 * @{ */
/** Left minus right. */
StatusCode rvxiFilterSobelVertBorder_8u8s_C1R(const uint8_t *src, int32_t srcStep, int8_t *dst, int32_t dstStep,
                                              RoiSize roi, MaskCode mask, BorderKind border, uint8_t borderValue,
                                              int32_t divisor, uint8_t *buffer);
StatusCode rvxiFilterSobelVertBorder_8u16s_C1R(const uint8_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep,
                                               RoiSize roi, MaskCode mask, BorderKind border, uint8_t borderValue,
                                               uint8_t *buffer);
StatusCode rvxiFilterSobelVertBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                             RoiSize roi, MaskCode mask, BorderKind border, float borderValue,
                                             uint8_t *buffer);
StatusCode rvxiFilterSobelVertGetBufferSize_8u8s_C1R(RoiSize roi, MaskCode mask, int32_t *size);
StatusCode rvxiFilterSobelVertGetBufferSize_8u16s_C1R(RoiSize roi, MaskCode mask, int32_t *size);
StatusCode rvxiFilterSobelVertGetBufferSize_32f_C1R(RoiSize roi, MaskCode mask, int32_t *size);
/** @} */

/** @name SobelHoriz
 * Below minus above.
 *
 *     -1 -2 -1
 *      0  0  0
 *      1  2  1
 * @{ */
/** Below minus above. */
StatusCode rvxiFilterSobelHorizBorder_8u8s_C1R(const uint8_t *src, int32_t srcStep, int8_t *dst, int32_t dstStep,
                                               RoiSize roi, MaskCode mask, BorderKind border, uint8_t borderValue,
                                               int32_t divisor, uint8_t *buffer);
StatusCode rvxiFilterSobelHorizBorder_8u16s_C1R(const uint8_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep,
                                                RoiSize roi, MaskCode mask, BorderKind border, uint8_t borderValue,
                                                uint8_t *buffer);
StatusCode rvxiFilterSobelHorizBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                              RoiSize roi, MaskCode mask, BorderKind border, float borderValue,
                                              uint8_t *buffer);
StatusCode rvxiFilterSobelHorizGetBufferSize_8u8s_C1R(RoiSize roi, MaskCode mask, int32_t *size);
StatusCode rvxiFilterSobelHorizGetBufferSize_8u16s_C1R(RoiSize roi, MaskCode mask, int32_t *size);
StatusCode rvxiFilterSobelHorizGetBufferSize_32f_C1R(RoiSize roi, MaskCode mask, int32_t *size);
/** @} */

/** @name SobelVertSecond
 * Second derivative along the rows.
 *
 *      1 -2  1
 *      2 -4  2
 *      1 -2  1
 * @{ */
/** Second derivative along the rows. */
StatusCode rvxiFilterSobelVertSecondBorder_8u8s_C1R(const uint8_t *src, int32_t srcStep, int8_t *dst, int32_t dstStep,
                                                    RoiSize roi, MaskCode mask, BorderKind border, uint8_t borderValue,
                                                    int32_t divisor, uint8_t *buffer);
StatusCode rvxiFilterSobelVertSecondBorder_8u16s_C1R(const uint8_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep,
                                                     RoiSize roi, MaskCode mask, BorderKind border, uint8_t borderValue,
                                                     uint8_t *buffer);
StatusCode rvxiFilterSobelVertSecondBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                                   RoiSize roi, MaskCode mask, BorderKind border, float borderValue,
                                                   uint8_t *buffer);
StatusCode rvxiFilterSobelVertSecondGetBufferSize_8u8s_C1R(RoiSize roi, MaskCode mask, int32_t *size);
StatusCode rvxiFilterSobelVertSecondGetBufferSize_8u16s_C1R(RoiSize roi, MaskCode mask, int32_t *size);
StatusCode rvxiFilterSobelVertSecondGetBufferSize_32f_C1R(RoiSize roi, MaskCode mask, int32_t *size);
/** @} */

/** @name SobelHorizSecond
 * Second derivative along the columns.
 *
 *      1  2  1
 *     -2 -4 -2
 *      1  2  1
 * @{ */
/** Second derivative along the columns. */
StatusCode rvxiFilterSobelHorizSecondBorder_8u8s_C1R(const uint8_t *src, int32_t srcStep, int8_t *dst, int32_t dstStep,
                                                     RoiSize roi, MaskCode mask, BorderKind border, uint8_t borderValue,
                                                     int32_t divisor, uint8_t *buffer);
StatusCode rvxiFilterSobelHorizSecondBorder_8u16s_C1R(const uint8_t *src, int32_t srcStep, int16_t *dst,
                                                      int32_t dstStep, RoiSize roi, MaskCode mask, BorderKind border,
                                                      uint8_t borderValue, uint8_t *buffer);
StatusCode rvxiFilterSobelHorizSecondBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                                    RoiSize roi, MaskCode mask, BorderKind border, float borderValue,
                                                    uint8_t *buffer);
StatusCode rvxiFilterSobelHorizSecondGetBufferSize_8u8s_C1R(RoiSize roi, MaskCode mask, int32_t *size);
StatusCode rvxiFilterSobelHorizSecondGetBufferSize_8u16s_C1R(RoiSize roi, MaskCode mask, int32_t *size);
StatusCode rvxiFilterSobelHorizSecondGetBufferSize_32f_C1R(RoiSize roi, MaskCode mask, int32_t *size);
/** @} */

/** @name SobelNegVert
 * Right minus left: SobelVert with the opposite sign.
 *
 *     -1  0  1
 *     -2  0  2
 *     -1  0  1
 * @{ */
/** Right minus left. */
StatusCode rvxiFilterSobelNegVertBorder_8u8s_C1R(const uint8_t *src, int32_t srcStep, int8_t *dst, int32_t dstStep,
                                                 RoiSize roi, MaskCode mask, BorderKind border, uint8_t borderValue,
                                                 int32_t divisor, uint8_t *buffer);
StatusCode rvxiFilterSobelNegVertBorder_8u16s_C1R(const uint8_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep,
                                                  RoiSize roi, MaskCode mask, BorderKind border, uint8_t borderValue,
                                                  uint8_t *buffer);
StatusCode rvxiFilterSobelNegVertBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                                RoiSize roi, MaskCode mask, BorderKind border, float borderValue,
                                                uint8_t *buffer);
StatusCode rvxiFilterSobelNegVertGetBufferSize_8u8s_C1R(RoiSize roi, MaskCode mask, int32_t *size);
StatusCode rvxiFilterSobelNegVertGetBufferSize_8u16s_C1R(RoiSize roi, MaskCode mask, int32_t *size);
StatusCode rvxiFilterSobelNegVertGetBufferSize_32f_C1R(RoiSize roi, MaskCode mask, int32_t *size);
/** @} */

/** @name SobelCross
 * Derivative along both axes.
 *
 *     -1  0  1
 *      0  0  0
 *      1  0 -1
 * @{ */
/** Derivative along both axes. */
StatusCode rvxiFilterSobelCrossBorder_8u8s_C1R(const uint8_t *src, int32_t srcStep, int8_t *dst, int32_t dstStep,
                                               RoiSize roi, MaskCode mask, BorderKind border, uint8_t borderValue,
                                               int32_t divisor, uint8_t *buffer);
StatusCode rvxiFilterSobelCrossBorder_8u16s_C1R(const uint8_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep,
                                                RoiSize roi, MaskCode mask, BorderKind border, uint8_t borderValue,
                                                uint8_t *buffer);
StatusCode rvxiFilterSobelCrossBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                              RoiSize roi, MaskCode mask, BorderKind border, float borderValue,
                                              uint8_t *buffer);
StatusCode rvxiFilterSobelCrossGetBufferSize_8u8s_C1R(RoiSize roi, MaskCode mask, int32_t *size);
StatusCode rvxiFilterSobelCrossGetBufferSize_8u16s_C1R(RoiSize roi, MaskCode mask, int32_t *size);
StatusCode rvxiFilterSobelCrossGetBufferSize_32f_C1R(RoiSize roi, MaskCode mask, int32_t *size);
/** @} */

/** @name ScharrVert
 * Right minus left (the orientation of SobelNegVert), 3x3.
 *
 *     -3  0  3
 *    -10  0 10
 *     -3  0  3
 * @{ */
/** Right minus left. */
StatusCode rvxiFilterScharrVertBorder_8u8s_C1R(const uint8_t *src, int32_t srcStep, int8_t *dst, int32_t dstStep,
                                               RoiSize roi, BorderKind border, uint8_t borderValue, int32_t divisor,
                                               uint8_t *buffer);
StatusCode rvxiFilterScharrVertBorder_8u16s_C1R(const uint8_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep,
                                                RoiSize roi, BorderKind border, uint8_t borderValue, uint8_t *buffer);
StatusCode rvxiFilterScharrVertBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                              RoiSize roi, BorderKind border, float borderValue, uint8_t *buffer);
StatusCode rvxiFilterScharrVertGetBufferSize_8u8s_C1R(RoiSize roi, int32_t *size);
StatusCode rvxiFilterScharrVertGetBufferSize_8u16s_C1R(RoiSize roi, int32_t *size);
StatusCode rvxiFilterScharrVertGetBufferSize_32f_C1R(RoiSize roi, int32_t *size);
/** @} */

/** @name ScharrHoriz
 * Below minus above, 3x3.
 *
 *     -3 -10 -3
 *      0   0  0
 *      3  10  3
 * @{ */
/** Below minus above. */
StatusCode rvxiFilterScharrHorizBorder_8u8s_C1R(const uint8_t *src, int32_t srcStep, int8_t *dst, int32_t dstStep,
                                                RoiSize roi, BorderKind border, uint8_t borderValue, int32_t divisor,
                                                uint8_t *buffer);
StatusCode rvxiFilterScharrHorizBorder_8u16s_C1R(const uint8_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep,
                                                 RoiSize roi, BorderKind border, uint8_t borderValue, uint8_t *buffer);
StatusCode rvxiFilterScharrHorizBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                               RoiSize roi, BorderKind border, float borderValue, uint8_t *buffer);
StatusCode rvxiFilterScharrHorizGetBufferSize_8u8s_C1R(RoiSize roi, int32_t *size);
StatusCode rvxiFilterScharrHorizGetBufferSize_8u16s_C1R(RoiSize roi, int32_t *size);
StatusCode rvxiFilterScharrHorizGetBufferSize_32f_C1R(RoiSize roi, int32_t *size);
/** @} */

/** @name Laplacian
 * The sum of SobelVertSecond and SobelHorizSecond (before division and saturation).
 *
 *      2  0  2        2  4   4  4  2
 *      0 -8  0        4  0  -8  0  4
 *      2  0  2        4 -8 -24 -8  4
 *                     4  0  -8  0  4
 *                     2  4   4  4  2
 * @{ */
/** Sum of the two second derivatives. */
StatusCode rvxiFilterLaplacianBorder_8u8s_C1R(const uint8_t *src, int32_t srcStep, int8_t *dst, int32_t dstStep,
                                              RoiSize roi, MaskCode mask, BorderKind border, uint8_t borderValue,
                                              int32_t divisor, uint8_t *buffer);
StatusCode rvxiFilterLaplacianBorder_8u16s_C1R(const uint8_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep,
                                               RoiSize roi, MaskCode mask, BorderKind border, uint8_t borderValue,
                                               uint8_t *buffer);
StatusCode rvxiFilterLaplacianBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                             RoiSize roi, MaskCode mask, BorderKind border, float borderValue,
                                             uint8_t *buffer);
StatusCode rvxiFilterLaplacianGetBufferSize_8u8s_C1R(RoiSize roi, MaskCode mask, int32_t *size);
StatusCode rvxiFilterLaplacianGetBufferSize_8u16s_C1R(RoiSize roi, MaskCode mask, int32_t *size);
StatusCode rvxiFilterLaplacianGetBufferSize_32f_C1R(RoiSize roi, MaskCode mask, int32_t *size);
/** @} */

/** @name Low-pass
 * The mean over the mask. 8u: the exact sum divided by 9 or 25, rounded to nearest in every pixel. 32f: a row stage and
 * a column stage of ones, the sum multiplied by 1.0f / area.
 * @{ */
/** Mean over the mask. */
StatusCode rvxiFilterLowpassBorder_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                          RoiSize roi, MaskCode mask, BorderKind border, uint8_t borderValue,
                                          uint8_t *buffer);
StatusCode rvxiFilterLowpassBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                           MaskCode mask, BorderKind border, float borderValue, uint8_t *buffer);
StatusCode rvxiFilterLowpassGetBufferSize_8u_C1R(RoiSize roi, MaskCode mask, int32_t *size);
StatusCode rvxiFilterLowpassGetBufferSize_32f_C1R(RoiSize roi, MaskCode mask, int32_t *size);
/** @} */

/** @name Sobel kernels
 * A one-dimensional Sobel kernel of n taps (odd), of derivative order 0 <= order < n, in the filters' orientation
 * (order 1 of 3 taps: -1 0 1); a negative sign negates it. 16s coefficients wrap where they leave 16 bits.
 * StatusNullPointer, then StatusBadSize (n below 1 or even, order out of range).
 * @{ */
/** Makes a one-dimensional Sobel kernel. */
StatusCode rvxiGenSobelKernel_16s(int16_t *dst, int32_t n, int32_t order, int32_t sign);
StatusCode rvxiGenSobelKernel_32f(float *dst, int32_t n, int32_t order, int32_t sign);
/** @} */
/** @} */

/** @defgroup gaussian Gaussian filter
 * A Gaussian blur of odd size K >= 3 and standard deviation sigma (in pixels): the separable pipeline's row stage, then
 * its column stage, with one kernel for both. A record, filled once by rvxiFilterGaussianInit, serves any number of
 * images of one type, from several threads at once if each has a buffer of its own.
 *
 * Kernel. With r = K / 2, for i = 0 .. K - 1 and x = i - r, the exponent in single precision, exp in double:
 *
 *     g[i] = (float)exp(-(x * x) / (sigma * (sigma + sigma)))         S = g[0] + ... + g[K - 1], in float
 *     8u: c[i] = floor(0.5 + 4096 * (g[i] / S))     16u, 16s: floor(0.5 + 32768 * (g[i] / S))     32f: g[i] / S
 *
 * The integer coefficients stay as they were rounded: they need not add up to 4096 or 32768 (K = 3, sigma = 1 of 8u:
 * 1123, 1851, 1123). So a bright image may gain or lose a level.
 *
 * Results. Bit for bit those of the pipeline's stages of the same types, the intermediate rows included: 8u through 16s
 * rows with the divisor 4096, 16u and 16s through rows of their own type with the divisor 32768, 32f through 32f rows.
 * Both integer stages round the first W - W mod 16 pixels of a row of W to nearest even and the last W mod 16 toward
 * zero. (A coefficient of 32768 is +32768 for 16s too.)
 *
 * Borders. Kind 0 (borderValue), 1 or 6, with flags 16, 32, 64, 128 for sides whose outside pixels (r of them) are read
 * from memory. Rows of the constant pass through the row stage like rows of the image. With three channels borderValue
 * points at three elements; it may be null where no constant is used.
 *
 * The record is memory of the caller, specSize bytes at any address: a GaussianSpec, and 32 bytes behind its start the
 * K coefficients, uint16_t or floats, each float eight times. It can be copied like any bytes. The buffer may stand at
 * any address too and holds nothing between calls. Source and destination must not overlap.
 *
 * Status codes, in the order of the checks.
 * - GetBufferSize and Init: StatusNullPointer (a size; the record or the buffer), StatusBadSize, StatusBadArgument (K
 *   below 3 or even), StatusBadDataType, StatusBadChannelLayout (neither 1 nor 3), then Init: StatusBadArgument (sigma
 *   not above 0), StatusBadBorder. GetBufferSize answers StatusBadSize, too, where a size does not fit; then neither is
 *   written.
 * - Border functions: StatusNullPointer (source, destination, record, buffer, a border value that is needed),
 *   StatusBadStep, StatusStepNotMultiple (not 8u), StatusBadSize, StatusBadArgument (K), StatusBadBorder,
 *   StatusBadDataType (the record is for another type).
 * @{ */

/** The head of a filter's record. */
typedef struct GaussianSpec {
    int32_t kernelSize;        /**< K */
    int32_t coefficientOffset; /**< 20: coefficients begin at the next multiple of 16 bytes from the record's start */
    PixelTypeCode type;        /**< PixelType8u, 16u, 16s or 32f */
    BorderKind border;         /**< kind and flags */
    int32_t shift;             /**< the divisor is 1 << shift: 12 for 8u, 15 for 16u and 16s, 0 for 32f */
} GaussianSpec;

/** @name Record
 * @{ */
/** Sizes and contents of a filter's record. */
StatusCode rvxiFilterGaussianGetBufferSize(RoiSize roi, int32_t kernelSize, PixelTypeCode type, int32_t channels,
                                           int32_t *specSize, int32_t *bufferSize);
StatusCode rvxiFilterGaussianInit(RoiSize roi, int32_t kernelSize, BorderKind border, PixelTypeCode type,
                                  int32_t channels, GaussianSpec *spec, uint8_t *buffer, float sigma);
/** @} */

/** @name Filter
 * @{ */
/** Blurs an image. */
StatusCode rvxiFilterGaussianBorder_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                           RoiSize roi, uint8_t borderValue, const GaussianSpec *spec, uint8_t *buffer);
StatusCode rvxiFilterGaussianBorder_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                           RoiSize roi, const uint8_t *borderValue, const GaussianSpec *spec,
                                           uint8_t *buffer);
StatusCode rvxiFilterGaussianBorder_16u_C1R(const uint16_t *src, int32_t srcStep, uint16_t *dst, int32_t dstStep,
                                            RoiSize roi, uint16_t borderValue, const GaussianSpec *spec,
                                            uint8_t *buffer);
StatusCode rvxiFilterGaussianBorder_16u_C3R(const uint16_t *src, int32_t srcStep, uint16_t *dst, int32_t dstStep,
                                            RoiSize roi, const uint16_t *borderValue, const GaussianSpec *spec,
                                            uint8_t *buffer);
StatusCode rvxiFilterGaussianBorder_16s_C1R(const int16_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep,
                                            RoiSize roi, int16_t borderValue, const GaussianSpec *spec,
                                            uint8_t *buffer);
StatusCode rvxiFilterGaussianBorder_16s_C3R(const int16_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep,
                                            RoiSize roi, const int16_t *borderValue, const GaussianSpec *spec,
                                            uint8_t *buffer);
StatusCode rvxiFilterGaussianBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                            float borderValue, const GaussianSpec *spec, uint8_t *buffer);
StatusCode rvxiFilterGaussianBorder_32f_C3R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                            const float *borderValue, const GaussianSpec *spec, uint8_t *buffer);
/** @} */

/** @name In one call
 * The 32f filter in one call, which builds its kernel each time; same results. Status codes, in the order of the
 * checks: StatusNullPointer (source, destination or buffer), StatusBadSize, StatusBadStep, StatusStepNotMultiple,
 * StatusBadArgument (K), StatusBadArgument (sigma not above 0), StatusBadBorder. GetBufferSize: StatusNullPointer,
 * StatusBadSize, StatusBadArgument (K), StatusBadSize where the size does not fit.
 * @{ */
/** The 32f filter in one call, and its scratch. */
StatusCode rvxiFilterGaussGetBufferSize_32f_C1R(RoiSize roi, int32_t kernelSize, int32_t *size);
StatusCode rvxiFilterGaussBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                         int32_t kernelSize, BorderKind border, uint8_t *buffer, float sigma,
                                         float borderValue);
/** @} */
/** @} */

/** @defgroup colour_gradient Colour gradient to grey
 * The magnitude of a gradient over three colour channels: of an image with one gradient component per interleaved
 * channel (a derivative filter's output for each), one number per pixel, so that edge and corner detectors for grey
 * images can go on. With c0, c1, c2 the channels of a pixel, S their sum and Q the sum of their squares:
 *
 *            NormInf                  NormL1                      NormL2
 *     8u     max(c0, c1, c2)          (S * 1365 + 2048) >> 12     floor(0.5 + sqrt(Q / 3))
 *     16u    max(c0, c1, c2)          (S * 5461 + 8192) >> 14     floor(0.5 + sqrt(Q / 3))
 *     32f    max(|c0|, |c1|, |c2|)    |c0| + |c1| + |c2|          sqrt(Q)
 *
 * Integers are averaged over the channels and so stay in their range; floats are not. Integer results are exact. 32f:
 * L1 adds from left to right; L2 is the correctly rounded root of fma(c2, c2, fma(c1, c1, c0 * c0)); the maximum is
 * taken from left to right, max(a, b) = a > b ? a : b. Source and destination must not overlap.
 *
 * Status codes, in the order of the checks: StatusNullPointer, StatusBadSize (width or height below 1), StatusBadStep
 * (a step does not cover its row), StatusStepNotMultiple (a step is not a multiple of the element size),
 * StatusBadArgument (norm is none of NormInf, NormL1, NormL2).
 * @{ */

/** @name Magnitude
 * @{ */
/** The magnitude of a colour gradient. */
StatusCode rvxiGradientColorToGray_8u_C3C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                            RoiSize roi, NormKind norm);
StatusCode rvxiGradientColorToGray_16u_C3C1R(const uint16_t *src, int32_t srcStep, uint16_t *dst, int32_t dstStep,
                                             RoiSize roi, NormKind norm);
StatusCode rvxiGradientColorToGray_32f_C3C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                             RoiSize roi, NormKind norm);
/** @} */
/** @} */
/** @} */

#ifdef __cplusplus
}
#endif

#endif
