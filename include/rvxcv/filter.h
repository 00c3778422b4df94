/* Linear filters. */
#ifndef RVXCV_FILTER_H
#define RVXCV_FILTER_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* -------------------------------------------------------------------------------------------- Separable pipeline */

/* A separable filter, strip by strip: the row stage filters rows of an image horizontally into rows of the caller's,
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
 * - Low_16s: the low 16 bits of products in wrapping 16-bit sums, exact while every partial sum fits in 16 bits;
 * divided as integers, toward zero, in every pixel, and saturated.
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
 * Images, rows and the scratch buffer may stand at any address. */
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

/* Bytes of scratch that a call with this region and kernel length needs; those of the row stage depend on the kernel
 * alone. Status codes: StatusNullPointer, StatusBadSize (region, kernelSize below 1, or a size that does not fit). */
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

/* ------------------------------------------------------------------------------- Derivative and low-pass filters */

#ifdef __cplusplus
}
#endif

#endif
