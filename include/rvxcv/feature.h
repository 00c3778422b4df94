/* Feature detection. */
#ifndef RVXCV_FEATURE_H
#define RVXCV_FEATURE_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* --------------------------------------------------------------------------------------------------- Canny edges */

/* Edges by the method of J. Canny, "A Computational Approach to Edge Detection", IEEE PAMI 8(6), 1986: gradient
 * magnitude, suppression of all but local maxima across the edge, and hysteresis with two thresholds. The output is 255
 * on edge pixels and 0 elsewhere.
 *
 * Magnitude m = |dx| + |dy|, or the Euclidean norm where the caller chooses it. A pixel is a candidate when it passes
 * the low threshold and is a local maximum in the direction of its gradient, which is quantised to four: horizontal
 * when |dx| > tan 67.5 degrees |dy| (m greater than its left neighbour's and not less than its right one's), vertical
 * when |dx| < tan 22.5 degrees |dy| (greater than above, not less than below), else one of the diagonals (greater than
 * both). So of two equal neighbours the right or lower one falls, and on a diagonal both. Pixels outside the region
 * have m = 0. Candidates with m > high are edges, and so are all candidates that touch an edge on one of eight sides.
 */

/* Norms of rvxiCannyBorder_8u_C1R and its derivative filters. */
enum { CannyNormL1 = 2, CannyNormL2 = 4, CannyFilterSobel = 2, CannyFilterScharr = 5 };

/* Edges from two derivative images. 16s: pixels with m > low truncated to an integer take part; 32f: with m >= low.
 * Status codes: StatusNullPointer, StatusBadSize, StatusBadStep, StatusStepNotMultiple (derivative steps),
 * StatusBadArgument (low < 0 or low > high). */
StatusCode rvxiCanny_16s8u_C1R(const int16_t *dx, int32_t dxStep, const int16_t *dy, int32_t dyStep, uint8_t *dst,
                               int32_t dstStep, RoiSize roi, float low, float high, uint8_t *buffer);
StatusCode rvxiCanny_32f8u_C1R(const float *dx, int32_t dxStep, const float *dy, int32_t dyStep, uint8_t *dst,
                               int32_t dstStep, RoiSize roi, float low, float high, uint8_t *buffer);

/* Bytes of scratch for the two functions above. With P = (width + 2) * (height + 2): 5 P + 16 width + 160, and
 * 9 P + 16 width + 160 when a side is 65533 or more. StatusNullPointer, StatusBadSize. */
StatusCode rvxiCannyGetSize(RoiSize roi, int32_t *size);

/* Edges of a grey image. The derivatives are dx = right - left and dy = below - above: filter CannyFilterSobel with
 * mask 3x3 or 5x5, or CannyFilterScharr with 3x3. Border kinds: constant, replicate, in memory, side flags. With
 * CannyNormL1 the result equals rvxiCanny_16s8u_C1R on the two derivative images; with CannyNormL2 pixels with m >= low
 * take part.
 * Status codes: StatusBadMaskSize (mask neither 33 nor 55, or 55 with Scharr), StatusNullPointer, StatusBadSize,
 * StatusBadStep, StatusBadArgument (filter, then norm, then low < 0 or low > high), StatusBadBorder. */
StatusCode rvxiCannyBorder_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                  int32_t filter, MaskCode mask, BorderKind border, uint8_t borderValue, int32_t norm,
                                  uint8_t *buffer, float low, float high);

/* Bytes of scratch for rvxiCannyBorder_8u_C1R. With a = 2 for 3x3 and 4 for 5x5, Wa = width + a and Ha = height + a:
 * Wa (Ha + 16) + 4 Wa Ha + 64. The filter and the data type do not change it. StatusNullPointer, StatusBadSize,
 * StatusBadMaskSize. */
StatusCode rvxiCannyBorderGetSize(RoiSize roi, int32_t filter, MaskCode mask, PixelTypeCode type, int32_t *size);

/* ------------------------------------------------------------------------------------------------ Corner measure */

/* The smaller eigenvalue of the gradient covariance in a block around every pixel: the measure of how well a point can
 * be tracked (Shi and Tomasi, Good Features to Track, CVPR 1994). Four steps, with replicated borders in the first and
 * the third:
 *   1. Dx and Dy, the Sobel (3x3, 5x5) or Scharr (3x3) derivatives; of 32f sources in floats, a row stage and a column
 *      stage as in the derivative filters (the five-tap difference subtracts mirrored taps first).
 *   2. A = Dx * Dx, B = Dy * Dy, C = Dx * Dy, each rounded to float once.
 *   3. a, b, c: the means of A, B, C over the block, as rvxiFilterLowpassBorder_32f_C1R forms them.
 *   4. dst = (s * 0.5) * ((a + b) - sqrt(fma(a - b, a - b, 4 * (c * c)))), the scale s being 1 / 4080 (Sobel 3x3),
 *      1 / 65280 (Sobel 5x5) or 1 / 4080 * 0.6125f (Scharr).
 * Both sources are scaled as if pixels ranged from 0 to 255, so that a 32f image of an 8u image's values gives the same
 * measure. A constant image gives exactly 0. Source and destination must not overlap.
 *
 * kernel: MinEigenValSobel or MinEigenValScharr. aperture: 3, or 5 with Sobel. block: 3 or 5.
 *
 * Status codes, in the order of the checks: StatusNullPointer; StatusBadSize (width or height); StatusBadStep;
 * StatusStepNotMultiple; StatusBadArgument (kernel); StatusBadSize (aperture); StatusBadSize (block). */
enum { MinEigenValSobel = 0, MinEigenValScharr = 1 };

StatusCode rvxiMinEigenVal_8u32f_C1R(const uint8_t *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                     int32_t kernel, int32_t aperture, int32_t block, uint8_t *buffer);
StatusCode rvxiMinEigenVal_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                   int32_t kernel, int32_t aperture, int32_t block, uint8_t *buffer);

/* Bytes of scratch for any kernel at this aperture and block. StatusNullPointer; StatusBadSize (width, height, aperture
 * or block, or a size that does not fit). */
StatusCode rvxiMinEigenValGetBufferSize_8u32f_C1R(RoiSize roi, int32_t aperture, int32_t block, int32_t *size);
StatusCode rvxiMinEigenValGetBufferSize_32f_C1R(RoiSize roi, int32_t aperture, int32_t block, int32_t *size);

/* --------------------------------------------------------------------------------------------------- Peak search */

/* Local extrema of a signed response image, at least `border` pixels away from every edge, in scan order (x, y). A
 * pixel v is a peak when |v| > threshold and it is the largest value of its neighbourhood (v > 0) or the smallest (v <=
 * 0; zero counts here, which shows with a negative threshold). Plateaus are not thinned: every pixel that equals the
 * extremum is a peak. 32s: |v| is formed without wrapping: the smallest int32 exceeds every threshold. 32f: v equals
 * the extremum when it differs from it by at most the smallest normal float (1.17549435e-38). An infinite pixel is no
 * peak, nor is NaN; NaN among the neighbours is passed over.
 *
 * neighbourhood: PeakSquare (all eight neighbours) or PeakCross (left, right, above, below). At most `capacity` peaks
 * are stored; the search ends when the list is full, with StatusOk. Where the border leaves no pixel, the count is 0.
 *
 * Status codes, in the order of the checks: StatusNullPointer; StatusBadSize (width, height, capacity or border below
 * 1); StatusBadSize (border greater than half the width or half the height); StatusBadStep (step / 4, truncated, below
 * the width); StatusStepNotMultiple; StatusBadArgument (neighbourhood). */
enum { PeakSquare = 0, PeakCross = 1 };

StatusCode rvxiFindPeaks3x3_32s_C1R(const int32_t *src, int32_t srcStep, RoiSize roi, int32_t threshold, Point2i *peaks,
                                    int32_t capacity, int32_t *count, int32_t neighbourhood, int32_t border,
                                    uint8_t *buffer);
StatusCode rvxiFindPeaks3x3_32f_C1R(const float *src, int32_t srcStep, RoiSize roi, float threshold, Point2i *peaks,
                                    int32_t capacity, int32_t *count, int32_t neighbourhood, int32_t border,
                                    uint8_t *buffer);

/* Bytes of scratch for an image's width: ((width + 5) >> 2) * 128 + 32. StatusNullPointer, StatusBadSize (width below 1
 * or a size that does not fit). */
StatusCode rvxiFindPeaks3x3GetBufferSize_32s_C1R(int32_t width, int32_t *size);
StatusCode rvxiFindPeaks3x3GetBufferSize_32f_C1R(int32_t width, int32_t *size);

#ifdef __cplusplus
}
#endif

#endif
