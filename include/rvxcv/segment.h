/** @file
 * Regions of a picture: distances, filling, labelling, speckles and outlines. */
#ifndef RVXCV_SEGMENT_H
#define RVXCV_SEGMENT_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup segment Regions
 * Distances, filling, labelling, segmentation, speckles and outlines.
 * @{ */

/** @defgroup chamfer Chamfer distances
 * For every pixel of an 8-bit image the distance to the nearest zero pixel.
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
 * StatusBadMetric (a cost below 1, or a float cost that is not above 0: zero of either sign, negative, NaN).
 * @{ */

/** @name Transforms
 * @{ */
/** Distances along paths of steps. */
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
/** @} */

/** @name Usual costs
 * The usual costs of a mask (kerSize 3 or 5): two values for 3x3, three for 5x5.
 *
 *     kerSize  norm          32s         32f
 *        3     NormInf       1 1         1  1
 *        3     NormL1        1 2         1  2
 *        3     NormL2        2 3         0.955  1.3693
 *        5     NormInf       1 1 2       1  1  2
 *        5     NormL1        1 2 3       1  2  3
 *        5     NormL2        5 7 11      1  1.4  2.1969
 *
 * Status codes: StatusNullPointer, StatusBadSize (kerSize), StatusBadArgument (norm).
 * @{ */
/** The usual costs of a mask. */
StatusCode rvxiGetDistanceTransformMask_32s(int32_t kerSize, NormKind norm, int32_t *metrics);
StatusCode rvxiGetDistanceTransformMask_32f(int32_t kerSize, NormKind norm, float *metrics);
/** @} */

/** The float costs of maskType = 10 * kerSize + norm. Status codes: StatusBadArgument (a last digit other than 0, 1 and
 * 2), then as above. */
StatusCode rvxiGetDistanceTransformMask(int32_t maskType, float *metrics);
/** @} */

/** @defgroup true_distance Exact distance
 * The Euclidean distance of every pixel of an 8-bit image to the nearest zero pixel.
 * @{ */

/** The Euclidean distance, exact: every result is the float nearest to the square root of the integer squared distance.
 * In an image without a zero pixel every result is the square root of the largest float, 1.8446743e19. The squared
 * distances of a row are the lower envelope of parabolas over its columns' distances (A. Meijster, J. Roerdink and
 * W. Hesselink, A General Algorithm for Computing Distance Transforms in Linear Time, 2000).
 * Status codes: StatusNullPointer, StatusBadSize, StatusBadStep, StatusStepNotMultiple (dstStep). */
StatusCode rvxiTrueDistanceTransform_8u32f_C1R(const uint8_t *src, int32_t srcStep, float *dst, int32_t dstStep,
                                               RoiSize roi, uint8_t *buffer);

/** Bytes of its scratch buffer, which may start at any address: with n the larger side rounded up to a multiple of 4,
 * 24 n + 56. StatusNullPointer, StatusBadSize. */
StatusCode rvxiTrueDistanceTransformGetBufferSize_8u32f_C1R(RoiSize roi, int32_t *bufferSize);
/** @} */

/** @defgroup flood_fill Flood fill
 * Paints, in place, the connected region that grows from a seed pixel, and says how large it is. A pixel belongs to the
 * region when it is the seed or joins from a pixel of the region that touches it: on one of four sides (4Con), or also
 * at a corner (8Con). What joins is judged on the values before the fill, whatever the new value is:
 *
 *     plain      p == s, where s is the seed's value
 *     range      s - minDelta <= p <= s + maxDelta
 *     gradient   q - minDelta <= p <= q + maxDelta, where q is the value of the pixel from which p is reached; with
 *                different deltas a step may be allowed in one direction only
 *
 * Of three channels all must agree. Bounds of integers do not wrap. Bounds of floats are rounded to float once and all
 * comparisons are those of IEEE 754: a NaN joins nowhere and nothing joins from it, -0.0 equals 0.0. The seed is
 * painted in any case, even when it is NaN or lies outside its own range (a negative delta).
 *
 * Plain and range fills of a seed that already equals newVal (in all channels) return StatusOk at once: nothing is
 * painted and the record keeps its contents. The gradient fill has no such exception.
 *
 * The time is proportional to the pixels of the region and their neighbourhood, whatever its shape; a row that the
 * region or its neighbourhood enters costs a further 32 bytes of scratch for every 64 pixels of its width.
 *
 * For three channels newVal, minDelta and maxDelta point at three elements each. Mind the order of the arguments: new
 * value first in range fills, deltas first in gradient fills, floats last in the range fill of 32f with one channel.
 *
 * Status codes, in the order of the checks: StatusNullPointer (image, region, buffer, and of three channels the
 * values), StatusBadSize, StatusBadStep (step below width times the size of ONE element, for three channels as well:
 * rows that overlap are the caller's business), StatusStepNotMultiple, StatusOutOfRange (seed outside the image).
 * @{ */

/** What was painted. */
typedef struct ConnectedComponent {
    double area;     /**< pixels painted */
    double value[3]; /**< the new value; of one channel value[0], and zeros */
    Rect2i rect;     /**< the smallest rectangle around the painted pixels */
} ConnectedComponent;

/** @name Scratch of the fills
 * Bytes of scratch: 6 width height + 32 for plain and range fills, (width + 2) (height + 2) + 16 width height + 64 for
 * gradient fills. The buffer may start at any address. The sizes are computed in 64 bits and stored in 32: above some
 * 350 (125) million pixels the number that is returned is too small (or negative) and the caller must form it himself.
 * StatusNullPointer, StatusBadSize.
 * @{ */
/** Bytes of scratch. */
StatusCode rvxiFloodFillGetSize(RoiSize roi, int32_t *bufferSize);
StatusCode rvxiFloodFillGetSize_Grad(RoiSize roi, int32_t *bufferSize);
/** @} */

/** @name Plain
 * Plain.
 * @{ */
/** Fills what equals the seed. */
StatusCode rvxiFloodFill_4Con_8u_C1IR(uint8_t *image, int32_t step, RoiSize roi, Point2i seed, uint8_t newVal,
                                      ConnectedComponent *region, uint8_t *buffer);
StatusCode rvxiFloodFill_4Con_16u_C1IR(uint16_t *image, int32_t step, RoiSize roi, Point2i seed, uint16_t newVal,
                                       ConnectedComponent *region, uint8_t *buffer);
StatusCode rvxiFloodFill_4Con_32s_C1IR(int32_t *image, int32_t step, RoiSize roi, Point2i seed, int32_t newVal,
                                       ConnectedComponent *region, uint8_t *buffer);
StatusCode rvxiFloodFill_4Con_32f_C1IR(float *image, int32_t step, RoiSize roi, Point2i seed, float newVal,
                                       ConnectedComponent *region, uint8_t *buffer);
StatusCode rvxiFloodFill_4Con_8u_C3IR(uint8_t *image, int32_t step, RoiSize roi, Point2i seed, const uint8_t *newVal,
                                      ConnectedComponent *region, uint8_t *buffer);
StatusCode rvxiFloodFill_4Con_16u_C3IR(uint16_t *image, int32_t step, RoiSize roi, Point2i seed, const uint16_t *newVal,
                                       ConnectedComponent *region, uint8_t *buffer);
StatusCode rvxiFloodFill_4Con_32f_C3IR(float *image, int32_t step, RoiSize roi, Point2i seed, const float *newVal,
                                       ConnectedComponent *region, uint8_t *buffer);
StatusCode rvxiFloodFill_8Con_8u_C1IR(uint8_t *image, int32_t step, RoiSize roi, Point2i seed, uint8_t newVal,
                                      ConnectedComponent *region, uint8_t *buffer);
StatusCode rvxiFloodFill_8Con_16u_C1IR(uint16_t *image, int32_t step, RoiSize roi, Point2i seed, uint16_t newVal,
                                       ConnectedComponent *region, uint8_t *buffer);
StatusCode rvxiFloodFill_8Con_32s_C1IR(int32_t *image, int32_t step, RoiSize roi, Point2i seed, int32_t newVal,
                                       ConnectedComponent *region, uint8_t *buffer);
StatusCode rvxiFloodFill_8Con_32f_C1IR(float *image, int32_t step, RoiSize roi, Point2i seed, float newVal,
                                       ConnectedComponent *region, uint8_t *buffer);
StatusCode rvxiFloodFill_8Con_8u_C3IR(uint8_t *image, int32_t step, RoiSize roi, Point2i seed, const uint8_t *newVal,
                                      ConnectedComponent *region, uint8_t *buffer);
StatusCode rvxiFloodFill_8Con_16u_C3IR(uint16_t *image, int32_t step, RoiSize roi, Point2i seed, const uint16_t *newVal,
                                       ConnectedComponent *region, uint8_t *buffer);
StatusCode rvxiFloodFill_8Con_32f_C3IR(float *image, int32_t step, RoiSize roi, Point2i seed, const float *newVal,
                                       ConnectedComponent *region, uint8_t *buffer);
/** @} */

/** @name Range
 * Range.
 * @{ */
/** Fills what is near the seed's value. */
StatusCode rvxiFloodFill_Range4Con_8u_C1IR(uint8_t *image, int32_t step, RoiSize roi, Point2i seed, uint8_t newVal,
                                           uint8_t minDelta, uint8_t maxDelta, ConnectedComponent *region,
                                           uint8_t *buffer);
StatusCode rvxiFloodFill_Range4Con_16u_C1IR(uint16_t *image, int32_t step, RoiSize roi, Point2i seed, uint16_t newVal,
                                            uint16_t minDelta, uint16_t maxDelta, ConnectedComponent *region,
                                            uint8_t *buffer);
StatusCode rvxiFloodFill_Range4Con_32f_C1IR(float *image, int32_t step, RoiSize roi, Point2i seed,
                                            ConnectedComponent *region, uint8_t *buffer, float newVal, float minDelta,
                                            float maxDelta);
StatusCode rvxiFloodFill_Range4Con_8u_C3IR(uint8_t *image, int32_t step, RoiSize roi, Point2i seed,
                                           const uint8_t *newVal, const uint8_t *minDelta, const uint8_t *maxDelta,
                                           ConnectedComponent *region, uint8_t *buffer);
StatusCode rvxiFloodFill_Range4Con_16u_C3IR(uint16_t *image, int32_t step, RoiSize roi, Point2i seed,
                                            const uint16_t *newVal, const uint16_t *minDelta, const uint16_t *maxDelta,
                                            ConnectedComponent *region, uint8_t *buffer);
StatusCode rvxiFloodFill_Range4Con_32f_C3IR(float *image, int32_t step, RoiSize roi, Point2i seed, const float *newVal,
                                            const float *minDelta, const float *maxDelta, ConnectedComponent *region,
                                            uint8_t *buffer);
StatusCode rvxiFloodFill_Range8Con_8u_C1IR(uint8_t *image, int32_t step, RoiSize roi, Point2i seed, uint8_t newVal,
                                           uint8_t minDelta, uint8_t maxDelta, ConnectedComponent *region,
                                           uint8_t *buffer);
StatusCode rvxiFloodFill_Range8Con_16u_C1IR(uint16_t *image, int32_t step, RoiSize roi, Point2i seed, uint16_t newVal,
                                            uint16_t minDelta, uint16_t maxDelta, ConnectedComponent *region,
                                            uint8_t *buffer);
StatusCode rvxiFloodFill_Range8Con_32f_C1IR(float *image, int32_t step, RoiSize roi, Point2i seed,
                                            ConnectedComponent *region, uint8_t *buffer, float newVal, float minDelta,
                                            float maxDelta);
StatusCode rvxiFloodFill_Range8Con_8u_C3IR(uint8_t *image, int32_t step, RoiSize roi, Point2i seed,
                                           const uint8_t *newVal, const uint8_t *minDelta, const uint8_t *maxDelta,
                                           ConnectedComponent *region, uint8_t *buffer);
StatusCode rvxiFloodFill_Range8Con_16u_C3IR(uint16_t *image, int32_t step, RoiSize roi, Point2i seed,
                                            const uint16_t *newVal, const uint16_t *minDelta, const uint16_t *maxDelta,
                                            ConnectedComponent *region, uint8_t *buffer);
StatusCode rvxiFloodFill_Range8Con_32f_C3IR(float *image, int32_t step, RoiSize roi, Point2i seed, const float *newVal,
                                            const float *minDelta, const float *maxDelta, ConnectedComponent *region,
                                            uint8_t *buffer);
/** @} */

/** @name Gradient
 * Gradient.
 * @{ */
/** Fills what is reached by small steps. */
StatusCode rvxiFloodFill_Grad4Con_8u_C1IR(uint8_t *image, int32_t step, RoiSize roi, Point2i seed, uint8_t minDelta,
                                          uint8_t maxDelta, uint8_t newVal, ConnectedComponent *region,
                                          uint8_t *buffer);
StatusCode rvxiFloodFill_Grad4Con_16u_C1IR(uint16_t *image, int32_t step, RoiSize roi, Point2i seed, uint16_t minDelta,
                                           uint16_t maxDelta, uint16_t newVal, ConnectedComponent *region,
                                           uint8_t *buffer);
StatusCode rvxiFloodFill_Grad4Con_32f_C1IR(float *image, int32_t step, RoiSize roi, Point2i seed, float minDelta,
                                           float maxDelta, float newVal, ConnectedComponent *region, uint8_t *buffer);
StatusCode rvxiFloodFill_Grad4Con_8u_C3IR(uint8_t *image, int32_t step, RoiSize roi, Point2i seed,
                                          const uint8_t *minDelta, const uint8_t *maxDelta, const uint8_t *newVal,
                                          ConnectedComponent *region, uint8_t *buffer);
StatusCode rvxiFloodFill_Grad4Con_16u_C3IR(uint16_t *image, int32_t step, RoiSize roi, Point2i seed,
                                           const uint16_t *minDelta, const uint16_t *maxDelta, const uint16_t *newVal,
                                           ConnectedComponent *region, uint8_t *buffer);
StatusCode rvxiFloodFill_Grad4Con_32f_C3IR(float *image, int32_t step, RoiSize roi, Point2i seed, const float *minDelta,
                                           const float *maxDelta, const float *newVal, ConnectedComponent *region,
                                           uint8_t *buffer);
StatusCode rvxiFloodFill_Grad8Con_8u_C1IR(uint8_t *image, int32_t step, RoiSize roi, Point2i seed, uint8_t minDelta,
                                          uint8_t maxDelta, uint8_t newVal, ConnectedComponent *region,
                                          uint8_t *buffer);
StatusCode rvxiFloodFill_Grad8Con_16u_C1IR(uint16_t *image, int32_t step, RoiSize roi, Point2i seed, uint16_t minDelta,
                                           uint16_t maxDelta, uint16_t newVal, ConnectedComponent *region,
                                           uint8_t *buffer);
StatusCode rvxiFloodFill_Grad8Con_32f_C1IR(float *image, int32_t step, RoiSize roi, Point2i seed, float minDelta,
                                           float maxDelta, float newVal, ConnectedComponent *region, uint8_t *buffer);
StatusCode rvxiFloodFill_Grad8Con_8u_C3IR(uint8_t *image, int32_t step, RoiSize roi, Point2i seed,
                                          const uint8_t *minDelta, const uint8_t *maxDelta, const uint8_t *newVal,
                                          ConnectedComponent *region, uint8_t *buffer);
StatusCode rvxiFloodFill_Grad8Con_16u_C3IR(uint16_t *image, int32_t step, RoiSize roi, Point2i seed,
                                           const uint16_t *minDelta, const uint16_t *maxDelta, const uint16_t *newVal,
                                           ConnectedComponent *region, uint8_t *buffer);
StatusCode rvxiFloodFill_Grad8Con_32f_C3IR(float *image, int32_t step, RoiSize roi, Point2i seed, const float *minDelta,
                                           const float *maxDelta, const float *newVal, ConnectedComponent *region,
                                           uint8_t *buffer);
/** @} */
/** @} */

/** @defgroup label Labelling
 * Gives every connected component of the pixels that are not zero a label; zeros stay zero. The components are taken in
 * the order of their first pixels (rows from the top, each from the left) and get minLabel, minLabel + 1 ..; after
 * maxLabel comes minLabel again, so that components share labels when there are more of them than labels. count
 * receives the number of components in any case. norm chooses which pixels are connected: NormInf those that touch on
 * one of eight sides, NormL1 on one of four.
 *
 * 8u and 16u work in place; 8u32s leaves the source as it is and writes every pixel of the destination, which must not
 * overlap it. The time is proportional to the pixels, whatever they show.
 *
 * Status codes, in the order of the checks: StatusNullPointer; StatusBadSize; StatusBadStep; StatusStepNotMultiple;
 * StatusBadArgument (minLabel below 1, minLabel above maxLabel, maxLabel above 254, 65534 or 2147483646 for 8u, 16u and
 * 32s); StatusBadArgument (norm).
 * @{ */

/** @name Labels
 * @{ */
/** Labels the connected components. */
StatusCode rvxiLabelMarkers_8u_C1IR(uint8_t *image, int32_t step, RoiSize roi, int32_t minLabel, int32_t maxLabel,
                                    NormKind norm, int32_t *count, uint8_t *buffer);
StatusCode rvxiLabelMarkers_16u_C1IR(uint16_t *image, int32_t step, RoiSize roi, int32_t minLabel, int32_t maxLabel,
                                     NormKind norm, int32_t *count, uint8_t *buffer);
StatusCode rvxiLabelMarkers_8u32s_C1R(const uint8_t *src, int32_t srcStep, int32_t *dst, int32_t dstStep, RoiSize roi,
                                      int32_t minLabel, int32_t maxLabel, NormKind norm, int32_t *count,
                                      uint8_t *buffer);
/** @} */

/** @name Scratch of labelling
 * Bytes of scratch: those of rvxiFloodFillGetSize. StatusNullPointer, StatusBadSize.
 * @{ */
/** Bytes of scratch. */
StatusCode rvxiLabelMarkersGetBufferSize_8u_C1R(RoiSize roi, int32_t *bufferSize);
StatusCode rvxiLabelMarkersGetBufferSize_16u_C1R(RoiSize roi, int32_t *bufferSize);
StatusCode rvxiLabelMarkersGetBufferSize_8u32s_C1R(RoiSize roi, int32_t *bufferSize);
/** @} */
/** @} */

/** @defgroup fast_marching Fast marching
 * Arrival times of a front that moves at one pixel per unit of time.
 *
 * When a front that starts from the zero pixels of an 8-bit image and moves one pixel per unit of time arrives at
 * every pixel (J. Sethian, A fast marching level set method for monotonically advancing fronts, PNAS 93(4), 1996; first
 * order). T is 0 where src is 0; those pixels are accepted from the start. The other pixels wait. When one of its four
 * neighbours is accepted, a waiting pixel takes the smaller of its T and the value that follows, in single precision,
 * from a, the smallest T of the accepted ones among left and right, and b, that among above and below:
 *
 *     one of them without an accepted pixel, or |a - b| >= 1:  the smaller one + 1
 *     otherwise:  max(a, b, 0.5 ((a + b) + sqrt(2 - (a - b) (a - b))))
 *
 * The waiting pixel with the smallest T is accepted next, of equal ones the first in the order of rows and columns, so
 * that every bit of the result is fixed. Distances from a straight edge are exact; from a single zero they lie between
 * the Euclidean distance and 1.21 times that, and nowhere above the city-block distance (up to rounding). Without a
 * zero pixel every result is 3.4028235e38.
 *
 * Status codes: StatusNullPointer, StatusBadSize, StatusBadStep, StatusStepNotMultiple (dstStep).
 * @{ */

/** The arrival times of all pixels. */
StatusCode rvxiFastMarching_8u32f_C1R(const uint8_t *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                      uint8_t *buffer);

/** Bytes of its scratch buffer, which may start at any address: 8 (width + 2) (height + 2) + 4 width height + 64.
 * StatusNullPointer, StatusBadSize. */
StatusCode rvxiFastMarchingGetBufferSize_8u32f_C1R(RoiSize roi, int32_t *bufferSize);
/** @} */

/** @defgroup inpaint Inpainting
 * Repairs a picture: fills the hole, the pixels whose mask byte is not zero, from the pixels around it, and copies the
 * others. dst may be src (with the same step) and must not overlap it otherwise. The hole's pixels of src have no
 * effect on the result, unless the hole is everything: then dst is src. Channels are treated alike and independently.
 * The arithmetic is that of single precision; 8u results are rounded to nearest even and saturated at the end.
 *
 * InpaintMarch (A. Telea, An image inpainting technique based on the fast marching method, Journal of Graphics Tools
 * 9(1), 2004) fills the hole's pixels one by one, in the order in which the fast march from the known pixels accepts
 * them. T is the march's time, 0 at known pixels. The difference of a plane f at p along an axis over the known
 * neighbours is half the difference of the two, or the difference of the one and f(p), or 0. Each known pixel q has a
 * gradient (gx, gy): the differences of the picture over known pixels, taken before anything is filled, and for filled
 * pixels the one given below. With (nx, ny) the differences of T at p, over all known or filled q with
 * 0 < dx^2 + dy^2 <= radius^2, where (dx, dy) = q - p and (rx, ry) = p - q:
 *
 *     il = (float)(1 / sqrt(dx^2 + dy^2)), il2 = (float)(1 / (dx^2 + dy^2)), both in double
 *     w  = (max(|fma(rx, nx, ry ny)| il, 1e-6f) il2) / (1 + |T(p) - T(q)|)
 *     v  = fma(gx, rx, fma(gy, ry, I(q)))
 *     Sw += w,  Sv = fma(w, v, Sv),  Sx = fma(w, gx, Sx),  Sy = fma(w, gy, Sy)
 *
 * I(p) = Sv / Sw, which 8u limits to 0..255, and the gradient of p is (Sx / Sw, Sy / Sw). Each sum has eight lanes that
 * start at +0: q adds to lane (dx + radius) mod 8, row by row; then lane i takes lane i + 4, then i + 2, then i + 1.
 * Unlike in the paper there is no march outside of the hole (T is 0 there), and a filled pixel carries the mean
 * gradient instead of differences of filled values: noise does not grow from ring to ring, and a ramp is restored.
 *
 * InpaintDiffusion gives every pixel of the hole the mean of its four neighbours inside the region, the steady state of
 * the diffusion step of M. Bertalmio, G. Sapiro, V. Caselles and C. Ballester, Image inpainting, SIGGRAPH 2000: a
 * smooth membrane over the hole. First, in the order of the march, u = ((left + right) + (above + below)) (1.0f / n)
 * over the n known or filled neighbours, 0 for the others. Then, with L = 3 ceil(largest T) + 1 and, computed in
 * double, omega = (float)(2 / (1 + sin(pi / (L + 1)))), 2 L sweeps, each over the pixels of the hole with x + y even,
 * then odd: u = fma(omega, m - u, u), m = ((left + right) + (above + below)) (1.0f / n) over the n neighbours inside
 * the region. The residual |u - m| ends below 0.002 for values within 0..255 on ordinary holes, below 0.03 around known
 * pixels that stand alone inside a hole. radius is checked and not used.
 *
 * Status codes, in the order of the checks: StatusNullPointer, StatusBadSize, StatusBadStep, StatusStepNotMultiple
 * (32f: srcStep, dstStep), StatusBadArgument (method), StatusOutOfRange (radius outside 1..100).
 * @{ */

/** @name Repair
 * @{ */
/** Fills the hole. */
StatusCode rvxiInpaint_8u_C1MR(const uint8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, uint8_t *dst,
                               int32_t dstStep, RoiSize roi, int32_t radius, InpaintMethod method, uint8_t *buffer);
StatusCode rvxiInpaint_8u_C3MR(const uint8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, uint8_t *dst,
                               int32_t dstStep, RoiSize roi, int32_t radius, InpaintMethod method, uint8_t *buffer);
StatusCode rvxiInpaint_32f_C1MR(const float *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, float *dst,
                                int32_t dstStep, RoiSize roi, int32_t radius, InpaintMethod method, uint8_t *buffer);
/** @} */

/** @name Scratch of inpainting
 * Bytes of scratch, for both methods and all pixel types; the buffer may start at any address. With
 * Q = (width + 2 radius + 8) (height + 2 radius): 20 Q + 4 width height + 8 (2 radius + 8) (2 radius + 2) + 256.
 * StatusNullPointer, StatusBadSize, StatusOutOfRange (radius).
 * @{ */
/** Bytes of scratch. */
StatusCode rvxiInpaintGetBufferSize_8u_C1MR(RoiSize roi, int32_t radius, int32_t *bufferSize);
StatusCode rvxiInpaintGetBufferSize_8u_C3MR(RoiSize roi, int32_t radius, int32_t *bufferSize);
StatusCode rvxiInpaintGetBufferSize_32f_C1MR(RoiSize roi, int32_t radius, int32_t *bufferSize);
/** @} */
/** @} */

/** @defgroup segmentation Watershed and gradient segmentation
 * Divide a picture among markers: touching cells, objects from a few strokes, the regions of a depth map.
 *
 * srcDst holds the markers and becomes the segmentation. A value above 0 is a seed with that label and a value below 0
 * a wall, which is never flooded and floods nothing; both are kept. 0 is a free pixel. norm says which pixels are
 * neighbours: NormInf the eight around a pixel, NormL1 the four beside it; N(p) are those inside the region, rows from
 * the top, each from the left. With SegmentNoLines every free pixel that a seed reaches gets a label; with SegmentLines
 * pixels where two labels meet stay 0 and separate the regions by a line of one pixel. A pixel that nothing reaches
 * stays 0. Equal arguments give equal labels, ties included, since pixels of a level wait in a first-in first-out list.
 *
 * Watershed floods a relief that the caller made: a gradient, an inverted distance (F. Meyer, Un algorithme optimal
 * pour la ligne de partage des eaux, 1991). The level of the water, cur, begins at 0 and never falls; relief values
 * count by their order alone:
 *
 *     visit p:  for q in N(p), q free and not listed:  without lines label(q) = label(p);
 *                                                      append q to list max(relief(q), cur)
 *     start:    visit every seed, in scan order
 *     repeat:   cur = the lowest level whose list is not empty; take its first pixel p;
 *               with lines: if the labels of N(p) differ, p becomes a line, else label(p) is that label;
 *               unless it is a line, visit p
 *
 * Gradient works on the picture itself: a forest of smallest total weight that is rooted in the seeds (J. Cousty,
 * G. Bertrand, L. Najman and M. Couprie, Watershed Cuts, IEEE PAMI 31(8), 2009), grown by Prim's rule. Neighbours weigh
 * w(p, q) = |picture(p) - picture(q)|, of three channels the largest:
 *
 *     offer q from p:  q free:                           label(q) = label(p), level(q) = w(p, q), append q to that list
 *                      q listed and w(p, q) < level(q):  the same, once q is removed from its list
 *     start:           for every seed p, in scan order: offer each q of N(p) that is neither seed nor wall
 *     repeat:          take the first pixel q of the lowest list that is not empty (levels may fall);
 *                      with lines: if the labels of N(q) differ, q becomes a line, else
 *                      offer each free or listed r of N(q) from q
 *
 * The labels of N(p) are those of seeds and of pixels already taken from a list; walls and lines have none.
 *
 * Status codes, in the order of the checks: StatusNullPointer, StatusBadSize, StatusBadStep, StatusStepNotMultiple,
 * StatusBadArgument (norm), StatusBadArgument (flags: neither SegmentNoLines nor SegmentLines).
 * @{ */

/** @name Segmentations
 * @{ */
/** Divides a picture among markers. */
StatusCode rvxiSegmentWatershed_8u32s_C1IR(const uint8_t *src, int32_t srcStep, int32_t *srcDst, int32_t srcDstStep,
                                           RoiSize roi, NormKind norm, int32_t flags, uint8_t *buffer);
StatusCode rvxiSegmentWatershed_16u32s_C1IR(const uint16_t *src, int32_t srcStep, int32_t *srcDst, int32_t srcDstStep,
                                            RoiSize roi, NormKind norm, int32_t flags, uint8_t *buffer);
StatusCode rvxiSegmentGradient_8u32s_C1IR(const uint8_t *src, int32_t srcStep, int32_t *srcDst, int32_t srcDstStep,
                                          RoiSize roi, NormKind norm, int32_t flags, uint8_t *buffer);
StatusCode rvxiSegmentGradient_8u32s_C3C1IR(const uint8_t *src, int32_t srcStep, int32_t *srcDst, int32_t srcDstStep,
                                            RoiSize roi, NormKind norm, int32_t flags, uint8_t *buffer);
/** @} */

/** @name Scratch of the segmentations
 * Bytes of scratch, which may start at any address. With q = (width + 2) (height + 2): Watershed 9 q + 4096 for 8u and
 * 10 q + 540672 for 16u, Gradient 15 q + 4096 for one channel and 17 q + 4096 for three. StatusNullPointer,
 * StatusBadSize (also when the size does not fit in 32 bits).
 * @{ */
/** Bytes of scratch. */
StatusCode rvxiSegmentWatershedGetBufferSize_8u32s_C1R(RoiSize roi, int32_t *size);
StatusCode rvxiSegmentWatershedGetBufferSize_16u32s_C1R(RoiSize roi, int32_t *size);
StatusCode rvxiSegmentGradientGetBufferSize_8u32s_C1R(RoiSize roi, int32_t *size);
StatusCode rvxiSegmentGradientGetBufferSize_8u32s_C3C1R(RoiSize roi, int32_t *size);
/** @} */
/** @} */

/** @defgroup speckles Speckles
 * Removes small patches from disparity, depth and label images. Two pixels that touch on one of four sides are joined
 * when neither equals newVal and their values differ by at most maxDiff: integers exactly, of floats the difference
 * rounded to float (a NaN joins nothing, and neither does an infinite pixel another one). Connected components of at
 * most maxSize pixels are painted newVal; everything else keeps its value. A float pixel that equals newVal as a number
 * may keep its bits or be painted again (-0.0 and 0.0). The time is proportional to the pixels.
 *
 * Status codes, in the order of the checks: StatusNullPointer; StatusBadSize; StatusBadStep; StatusStepNotMultiple
 * (16u, 16s, 32f); StatusBadNormKind (norm other than NormL1); StatusOutOfRange (maxSize below 0); StatusOutOfRange
 * (maxDiff below 0 or NaN).
 * @{ */

/** @name Removal
 * @{ */
/** Removes small patches. */
StatusCode rvxiMarkSpeckles_8u_C1IR(uint8_t *srcDst, int32_t srcDstStep, RoiSize roi, uint8_t newVal, int32_t maxSize,
                                    uint8_t maxDiff, NormKind norm, uint8_t *buffer);
StatusCode rvxiMarkSpeckles_16u_C1IR(uint16_t *srcDst, int32_t srcDstStep, RoiSize roi, uint16_t newVal,
                                     int32_t maxSize, uint16_t maxDiff, NormKind norm, uint8_t *buffer);
StatusCode rvxiMarkSpeckles_16s_C1IR(int16_t *srcDst, int32_t srcDstStep, RoiSize roi, int16_t newVal, int32_t maxSize,
                                     int16_t maxDiff, NormKind norm, uint8_t *buffer);
StatusCode rvxiMarkSpeckles_32f_C1IR(float *srcDst, int32_t srcDstStep, RoiSize roi, float newVal, int32_t maxSize,
                                     float maxDiff, NormKind norm, uint8_t *buffer);
/** @} */

/** @name Scratch of speckles
 * Bytes of scratch, which may start at any address: 4 width height + 16 width + 64. StatusNullPointer, StatusBadSize.
 * @{ */
/** Bytes of scratch. */
StatusCode rvxiMarkSpecklesGetBufferSize_8u_C1R(RoiSize roi, int32_t *size);
StatusCode rvxiMarkSpecklesGetBufferSize_16u_C1R(RoiSize roi, int32_t *size);
StatusCode rvxiMarkSpecklesGetBufferSize_16s_C1R(RoiSize roi, int32_t *size);
StatusCode rvxiMarkSpecklesGetBufferSize_32f_C1R(RoiSize roi, int32_t *size);
/** @} */
/** @} */

/** @defgroup bounds Segment bounds
 * Outlines segments, in place: a pixel becomes `value` when, in the image as it came, the pixel to its right or the one
 * below differs from it, or (NormInf) the one below to the left or to the right. Pixels outside the region do not
 * count. The outline is one pixel wide and lies on the upper left side of the edge.
 *
 * Status codes, in the order of the checks: StatusNullPointer; StatusBadSize; StatusBadStep; StatusStepNotMultiple
 * (16u, 32s); StatusBadArgument (norm other than NormInf and NormL1).
 * @{ */

/** @name Outlines
 * @{ */
/** Outlines segments. */
StatusCode rvxiBoundSegments_8u_C1IR(uint8_t *srcDst, int32_t srcDstStep, RoiSize roi, uint8_t value, NormKind norm);
StatusCode rvxiBoundSegments_16u_C1IR(uint16_t *srcDst, int32_t srcDstStep, RoiSize roi, uint16_t value, NormKind norm);
StatusCode rvxiBoundSegments_32s_C1IR(int32_t *srcDst, int32_t srcDstStep, RoiSize roi, int32_t value, NormKind norm);
/** @} */
/** @} */
/** @} */

#ifdef __cplusplus
}
#endif

#endif
