/* Regions of a picture: distances, filling and labelling. */
#ifndef RVXCV_SEGMENT_H
#define RVXCV_SEGMENT_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Distance transforms ---- */

/* For every pixel of an 8-bit image the distance to the nearest zero pixel.
 *
 * Chamfer transforms (G. Borgefors, Distance Transformations in Digital Images, CVGIP 34, 1986) measure along paths of
 * steps between pixels of the region: horizontal and vertical ones cost metrics[0] = a, diagonal ones metrics[1] = b,
 * and with a 5x5 mask knight steps (one pixel along one axis, two along the other) metrics[2] = c:
 *
 *           b  a  b            .  c  .  c  .
 *           a  0  a            c  b  a  b  c
 *           b  a  b            .  a  0  a  .
 *                              c  b  a  b  c
 *                              .  c  .  c  .
 *
 * The result is the smallest cost of any path inside the region, for every choice of positive costs and every size of
 * the region. 8u and 16u results are limited to 255 and 65535. A float result is limited to the largest float, which is
 * also the result of pixels that no path reaches; costs may be infinite.
 *
 * Float results are sums of rounded additions, step by step along the path. With costs of the usual shape (a <= b for
 * 3x3; 2a <= c, 3 min(2a, b) <= 2c and a <= b for 5x5; a 5x5 transform whose c is at least a + min(2a, b) is the 3x3
 * transform) they are, bit for bit, those of two sequential passes: over the rows from the top, left to right, in which
 * a pixel that is not zero takes the smallest of the largest float and, for each neighbour already visited, that
 * neighbour's value plus the step, rounded; then over the rows from the bottom, right to left, with the mirrored
 * neighbours and the pixel's own value. For other costs they may differ from the exact sum by the rounding of as many
 * additions as the path has steps; sums that are integers below 2^24 are exact.
 *
 * Status codes: StatusNullPointer, StatusBadSize, StatusBadStep, StatusStepNotMultiple (16u and 32f destinations),
 * StatusBadMetric (a cost below 1, or a float cost that is not above 0: zero of either sign, negative, NaN). */
StatusCode rvxiDistanceTransform_3x3_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                            RoiSize roi, const int32_t *metrics);
StatusCode rvxiDistanceTransform_5x5_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                            RoiSize roi, const int32_t *metrics);
StatusCode rvxiDistanceTransform_3x3_8u_C1IR(uint8_t *srcDst, int32_t step, RoiSize roi, const int32_t *metrics);
StatusCode rvxiDistanceTransform_5x5_8u_C1IR(uint8_t *srcDst, int32_t step, RoiSize roi, const int32_t *metrics);
StatusCode rvxiDistanceTransform_3x3_8u16u_C1R(const uint8_t *src, int32_t srcStep, uint16_t *dst, int32_t dstStep,
                                               RoiSize roi, const int32_t *metrics);
StatusCode rvxiDistanceTransform_5x5_8u16u_C1R(const uint8_t *src, int32_t srcStep, uint16_t *dst, int32_t dstStep,
                                               RoiSize roi, const int32_t *metrics);
StatusCode rvxiDistanceTransform_3x3_8u32f_C1R(const uint8_t *src, int32_t srcStep, float *dst, int32_t dstStep,
                                               RoiSize roi, const float *metrics);
StatusCode rvxiDistanceTransform_5x5_8u32f_C1R(const uint8_t *src, int32_t srcStep, float *dst, int32_t dstStep,
                                               RoiSize roi, const float *metrics);

/* The usual costs of a mask (kerSize 3 or 5): two values for 3x3, three for 5x5.
 *
 *     kerSize  norm          32s         32f
 *        3     NormInf       1 1         1  1
 *        3     NormL1        1 2         1  2
 *        3     NormL2        2 3         0.955  1.3693
 *        5     NormInf       1 1 2       1  1  2
 *        5     NormL1        1 2 3       1  2  3
 *        5     NormL2        5 7 11      1  1.4  2.1969
 *
 * Status codes: StatusNullPointer, StatusBadSize (kerSize), StatusBadArgument (norm). */
StatusCode rvxiGetDistanceTransformMask_32s(int32_t kerSize, NormKind norm, int32_t *metrics);
StatusCode rvxiGetDistanceTransformMask_32f(int32_t kerSize, NormKind norm, float *metrics);

/* The float costs of maskType = 10 * kerSize + norm. Status codes: StatusBadArgument (a last digit other than 0, 1 and
 * 2), then as above. */
StatusCode rvxiGetDistanceTransformMask(int32_t maskType, float *metrics);

/* The Euclidean distance, exact: every result is the float nearest to the square root of the integer squared distance.
 * In an image without a zero pixel every result is the square root of the largest float, 1.8446743e19. The squared
 * distances of a row are the lower envelope of parabolas over its columns' distances (A. Meijster, J. Roerdink and
 * W. Hesselink, A General Algorithm for Computing Distance Transforms in Linear Time, 2000).
 * Status codes: StatusNullPointer, StatusBadSize, StatusBadStep, StatusStepNotMultiple (dstStep). */
StatusCode rvxiTrueDistanceTransform_8u32f_C1R(const uint8_t *src, int32_t srcStep, float *dst, int32_t dstStep,
                                               RoiSize roi, uint8_t *buffer);

/* Bytes of its scratch buffer, which may start at any address: with n the larger side rounded up to a multiple of 4,
 * 24 n + 56. StatusNullPointer, StatusBadSize. */
StatusCode rvxiTrueDistanceTransformGetBufferSize_8u32f_C1R(RoiSize roi, int32_t *bufferSize);

/* ---- Flood fill ---- */

/* ---- Labelling ---- */

#ifdef __cplusplus
}
#endif

#endif
