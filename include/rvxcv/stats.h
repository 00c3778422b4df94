/** @file
 * Statistics: integral images and the deviations read from them; norms, means, deviations and extrema under masks. */
#ifndef RVXCV_STATS_H
#define RVXCV_STATS_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup stats Statistics
 * Sums, deviations, norms and extrema.
 * @{ */

/** @defgroup integral Integral images
 * Integral images of a W x H source: each element is a sum of source pixels, so that the sum of any rectangle takes
 * four elements. `val` (`valSqr` for the squares) is the value that the first row and column hold and that every sum
 * includes once; a 32f output takes a double val rounded to float. Outputs must not overlap the source or each other.
 *
 * Status codes, in the order of the checks: StatusNullPointer; StatusBadSize (width or height below 1); StatusBadStep
 * (a step that does not cover its row; an upright output has W + 1 elements a row, a tilted one W + 2);
 * StatusStepNotMultiple (a 32-bit image's step is not a multiple of 4, or a 64f image's not one of 8).
 *
 * Upright: an output has H + 1 rows of W + 1 elements. Row 0 and column 0 are val, and
 *
 *     S(X + 1, Y + 1) = S(X + 1, Y) + (s(0, Y) + ... + s(X, Y)),
 *
 * the sum of the row being complete before its one addition to the element above. 32s: sums wrap modulo 2^32. 64f: sums
 * of squares of a row are exact, the addition rounds once. 32f of 8u pixels: the row's sum is formed in groups of
 * eight, each pixel's exact integer sum within its group being added to the float sum at the last pixel of the group
 * before (it is exact up to 2^24: the groups show in rows of more than 65793 pixels only).
 * @{ */

/** @name Upright
 * @{ */
/** Sums of 8u pixels. */
StatusCode rvxiIntegral_8u32s_C1R(const uint8_t *src, int32_t srcStep, int32_t *dst, int32_t dstStep, RoiSize roi,
                                  int32_t val);
StatusCode rvxiIntegral_8u32f_C1R(const uint8_t *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                  float val);
/** @} */
/** Of 32f pixels: the row's sum adds pixel by pixel from the left, each sum rounded. Row 0 and column 0 are 0. */
StatusCode rvxiIntegral_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi);

/** @name Sums and squares
 * Sums of the pixels in dst and of their squares in sqr.
 * @{ */
/** Sums of pixels and of their squares. */
StatusCode rvxiSqrIntegral_8u32s_C1R(const uint8_t *src, int32_t srcStep, int32_t *dst, int32_t dstStep, int32_t *sqr,
                                     int32_t sqrStep, RoiSize roi, int32_t val, int32_t valSqr);
StatusCode rvxiSqrIntegral_8u32s64f_C1R(const uint8_t *src, int32_t srcStep, int32_t *dst, int32_t dstStep, double *sqr,
                                        int32_t sqrStep, RoiSize roi, int32_t val, double valSqr);
StatusCode rvxiSqrIntegral_8u32f64f_C1R(const uint8_t *src, int32_t srcStep, float *dst, int32_t dstStep, double *sqr,
                                        int32_t sqrStep, RoiSize roi, double val, double valSqr);
/** @} */

/** @name Tilted
 * Tilted by 45 degrees (Lienhart and Maydt, "An Extended Set of Haar-like Features for Rapid Object Detection", ICIP
 * 2002): an output has H + 2 rows of W + 2 elements, an element being the sum of the triangle of pixels whose lower tip
 * it is. Rows 0 and 1 are val; every further row R comes from source row s and the output rows P1 and P2, one and two
 * above:
 *
 *     R(X) = s(X - 1) + s(X) + P1(X - 1) + P1(X + 1) - P2(X)     for X = 1 ... W, with s(W) = 0,
 *     R(0) = P1(1),  R(W + 1) = P1(W).
 *
 * 32s: sums wrap modulo 2^32. 32f and 64f: the sum of the two pixels (or squares) is exact, the other three steps are
 * made in this order and each rounds.
 * @{ */
/** Sums over triangles. */
StatusCode rvxiTiltedIntegral_8u32s_C1R(const uint8_t *src, int32_t srcStep, int32_t *dst, int32_t dstStep, RoiSize roi,
                                        int32_t val);
StatusCode rvxiTiltedIntegral_8u32f_C1R(const uint8_t *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                        float val);
StatusCode rvxiTiltedSqrIntegral_8u32s_C1R(const uint8_t *src, int32_t srcStep, int32_t *dst, int32_t dstStep,
                                           int32_t *sqr, int32_t sqrStep, RoiSize roi, int32_t val, int32_t valSqr);
StatusCode rvxiTiltedSqrIntegral_8u32s64f_C1R(const uint8_t *src, int32_t srcStep, int32_t *dst, int32_t dstStep,
                                              double *sqr, int32_t sqrStep, RoiSize roi, int32_t val, double valSqr);
StatusCode rvxiTiltedSqrIntegral_8u32f64f_C1R(const uint8_t *src, int32_t srcStep, float *dst, int32_t dstStep,
                                              double *sqr, int32_t sqrStep, RoiSize roi, double val, double valSqr);
/** @} */
/** @} */

/** @defgroup rect_std_dev Rectangle deviation
 * Standard deviation of the pixels in a window, for every position: destination pixel (x, y) stands for the window
 * `rect` moved by (x, y). `sum` and `sqr` point to element (0, 0) of the integral images of pixels and squares; `roi`
 * is the size of the destination. A negative variance (rounding can make it slightly negative) becomes 0; windows of
 * equal pixels have deviation 0, or some millionths where the area's reciprocal rounds.
 *
 * Upright windows read the elements with columns x + rect.x and x + rect.x + rect.width in the rows y + rect.y and
 * y + rect.y + rect.height, as ((top left - top right) - bottom left) + bottom right; their area A is
 * rect.width * rect.height. Tilted windows have their top corner at (rect.x, rect.y), reach rect.width pixels down to
 * the right and rect.height pixels down to the left, and hold A = 2 * rect.width * rect.height pixels; with X = x +
 * rect.x + 1 and Y = y + rect.y + 1, w and h they read ((bottom - left) - right) + top at the elements
 *
 *     bottom (X + w - h, Y + w + h), left (X - h, Y + h), right (X + w, Y + w), top (X, Y),
 *
 * the last row being roi.height + rect.y + w + h and the last column roi.width + rect.x + w at most.
 *
 * Window sums S of 32f images are formed in float, sums Q of 64f images in double; those of 32s images wrap and then
 * count as signed. In the formulas below every operation rounds in the precision named, fma is rounded once, and the
 * variance is narrowed to float, then its sign is tested, then the float square root is taken:
 *
 *     RectStdDev_32f, RectStdDev_32s32f, TiltedRectStdDev_32f: in double, mean = S * (1 / A),
 *         variance = Q * (1 / A) - mean * mean.
 *     TiltedRectStdDev_32s32f: mean = (float)S / (float)A in float; in double, variance = fma(-mean, mean, Q / A).
 *     RectStdDev_32s_C1RSfs: in float, mean = S / A, variance = fma(-mean, mean, Q / A).
 *     TiltedRectStdDev_32s_C1RSfs: mean = S / A and Q / A in float; variance = fma(-mean, mean, Q / A) in double, its
 *         sign tested there.
 *
 * Sfs members: dst = fma(root, 2^-scaleFactor, 0.5) in double, truncated toward zero (the deviation rounded half up).
 * What exceeds the int32 range gives INT32_MIN. Any scaleFactor is allowed; a deviation of 0 stays 0.
 *
 * Status codes, in the order of the checks: StatusNullPointer; StatusBadSize (width or height of roi); StatusBadStep
 * (steps of sum and sqr cover roi.width + rect.x + rect.width elements, that of dst roi.width); StatusStepNotMultiple
 * (as above); StatusBadSize (rect.x or rect.y negative, rect.width or rect.height below 1; tilted windows also: rect.x
 * below rect.height - 1, where the left corner would lie before the first column).
 * @{ */

/** @name Deviations
 * @{ */
/** Standard deviation in a window, everywhere. */
StatusCode rvxiRectStdDev_32f_C1R(const float *sum, int32_t sumStep, const double *sqr, int32_t sqrStep, float *dst,
                                  int32_t dstStep, RoiSize roi, Rect2i rect);
StatusCode rvxiRectStdDev_32s32f_C1R(const int32_t *sum, int32_t sumStep, const double *sqr, int32_t sqrStep,
                                     float *dst, int32_t dstStep, RoiSize roi, Rect2i rect);
StatusCode rvxiRectStdDev_32s_C1RSfs(const int32_t *sum, int32_t sumStep, const int32_t *sqr, int32_t sqrStep,
                                     int32_t *dst, int32_t dstStep, RoiSize roi, Rect2i rect, int32_t scaleFactor);
StatusCode rvxiTiltedRectStdDev_32f_C1R(const float *sum, int32_t sumStep, const double *sqr, int32_t sqrStep,
                                        float *dst, int32_t dstStep, RoiSize roi, Rect2i rect);
StatusCode rvxiTiltedRectStdDev_32s32f_C1R(const int32_t *sum, int32_t sumStep, const double *sqr, int32_t sqrStep,
                                           float *dst, int32_t dstStep, RoiSize roi, Rect2i rect);
StatusCode rvxiTiltedRectStdDev_32s_C1RSfs(const int32_t *sum, int32_t sumStep, const int32_t *sqr, int32_t sqrStep,
                                           int32_t *dst, int32_t dstStep, RoiSize roi, Rect2i rect,
                                           int32_t scaleFactor);
/** @} */
/** @} */

/** @defgroup norms Norms under masks
 * Size of an image, of a difference of two images, or of a difference relative to its second image. A pixel takes part
 * when its mask byte is not zero; what lies under a zero byte has no effect, a NaN neither. C3C members look at one
 * channel (1, 2 or 3) of three; the mask has one byte a pixel. With v a selected pixel (its difference src1 - src2):
 *
 *     Inf   largest |v|: exact for integers; 32f: m = 0, then m = |v| wherever |v| > m, so NaN is passed over
 *     L1    sum of |v|: exact in 64 bits for integers and converted once; 32f: lane sum of (double)|v|
 *     L2    square root of the sum of v * v: exact in 64 bits below 2^32 pixels and converted once; 32f: lane sum of
 *           the squares, which are exact in double
 *
 * 32f differences are rounded to float, those of integers are exact. Among 32f pixels a NaN makes L1 and L2 NaN,
 * otherwise an infinity makes them infinite. With nothing selected a norm is 0 and the status StatusOk. The two sources
 * may be the same image.
 *
 * Lane sums: sixteen sums start at +0.0; the pixel in column x is added to sum x mod 16, rows from top to bottom. Then
 * sum i takes sum i + 8 (i < 8), i + 4 (i < 4), i + 2 (i < 2), i + 1 (i < 1), in this order.
 *
 * Status codes, in the order of the checks: StatusNullPointer; StatusBadSize (width or height below 1); StatusBadStep
 * (a step that does not cover its row, all channels counted); StatusStepNotMultiple (a 16u or 32f image's step is not a
 * multiple of the element size); StatusBadChannel.
 * @{ */

/** @name Of an image
 * @{ */
/** Norm of an image. */
StatusCode rvxiNorm_Inf_8u_C1MR(const uint8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi,
                                double *norm);
StatusCode rvxiNorm_Inf_8s_C1MR(const int8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi,
                                double *norm);
StatusCode rvxiNorm_Inf_16u_C1MR(const uint16_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                 RoiSize roi, double *norm);
StatusCode rvxiNorm_Inf_32f_C1MR(const float *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi,
                                 double *norm);
StatusCode rvxiNorm_Inf_8u_C3CMR(const uint8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                 RoiSize roi, int32_t channel, double *norm);
StatusCode rvxiNorm_Inf_8s_C3CMR(const int8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi,
                                 int32_t channel, double *norm);
StatusCode rvxiNorm_Inf_16u_C3CMR(const uint16_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                  RoiSize roi, int32_t channel, double *norm);
StatusCode rvxiNorm_Inf_32f_C3CMR(const float *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi,
                                  int32_t channel, double *norm);
StatusCode rvxiNorm_L1_8u_C1MR(const uint8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi,
                               double *norm);
StatusCode rvxiNorm_L1_8s_C1MR(const int8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi,
                               double *norm);
StatusCode rvxiNorm_L1_16u_C1MR(const uint16_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                RoiSize roi, double *norm);
StatusCode rvxiNorm_L1_32f_C1MR(const float *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi,
                                double *norm);
StatusCode rvxiNorm_L1_8u_C3CMR(const uint8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi,
                                int32_t channel, double *norm);
StatusCode rvxiNorm_L1_8s_C3CMR(const int8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi,
                                int32_t channel, double *norm);
StatusCode rvxiNorm_L1_16u_C3CMR(const uint16_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                 RoiSize roi, int32_t channel, double *norm);
StatusCode rvxiNorm_L1_32f_C3CMR(const float *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi,
                                 int32_t channel, double *norm);
StatusCode rvxiNorm_L2_8u_C1MR(const uint8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi,
                               double *norm);
StatusCode rvxiNorm_L2_8s_C1MR(const int8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi,
                               double *norm);
StatusCode rvxiNorm_L2_16u_C1MR(const uint16_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                RoiSize roi, double *norm);
StatusCode rvxiNorm_L2_32f_C1MR(const float *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi,
                                double *norm);
StatusCode rvxiNorm_L2_8u_C3CMR(const uint8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi,
                                int32_t channel, double *norm);
StatusCode rvxiNorm_L2_8s_C3CMR(const int8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi,
                                int32_t channel, double *norm);
StatusCode rvxiNorm_L2_16u_C3CMR(const uint16_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                 RoiSize roi, int32_t channel, double *norm);
StatusCode rvxiNorm_L2_32f_C3CMR(const float *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi,
                                 int32_t channel, double *norm);
/** @} */

/** @name Of a difference
 * Of the difference src1 - src2.
 * @{ */
/** Norm of a difference. */
StatusCode rvxiNormDiff_Inf_8u_C1MR(const uint8_t *src1, int32_t src1Step, const uint8_t *src2, int32_t src2Step,
                                    const uint8_t *mask, int32_t maskStep, RoiSize roi, double *norm);
StatusCode rvxiNormDiff_Inf_8s_C1MR(const int8_t *src1, int32_t src1Step, const int8_t *src2, int32_t src2Step,
                                    const uint8_t *mask, int32_t maskStep, RoiSize roi, double *norm);
StatusCode rvxiNormDiff_Inf_16u_C1MR(const uint16_t *src1, int32_t src1Step, const uint16_t *src2, int32_t src2Step,
                                     const uint8_t *mask, int32_t maskStep, RoiSize roi, double *norm);
StatusCode rvxiNormDiff_Inf_32f_C1MR(const float *src1, int32_t src1Step, const float *src2, int32_t src2Step,
                                     const uint8_t *mask, int32_t maskStep, RoiSize roi, double *norm);
StatusCode rvxiNormDiff_Inf_8u_C3CMR(const uint8_t *src1, int32_t src1Step, const uint8_t *src2, int32_t src2Step,
                                     const uint8_t *mask, int32_t maskStep, RoiSize roi, int32_t channel, double *norm);
StatusCode rvxiNormDiff_Inf_8s_C3CMR(const int8_t *src1, int32_t src1Step, const int8_t *src2, int32_t src2Step,
                                     const uint8_t *mask, int32_t maskStep, RoiSize roi, int32_t channel, double *norm);
StatusCode rvxiNormDiff_Inf_16u_C3CMR(const uint16_t *src1, int32_t src1Step, const uint16_t *src2, int32_t src2Step,
                                      const uint8_t *mask, int32_t maskStep, RoiSize roi, int32_t channel,
                                      double *norm);
StatusCode rvxiNormDiff_Inf_32f_C3CMR(const float *src1, int32_t src1Step, const float *src2, int32_t src2Step,
                                      const uint8_t *mask, int32_t maskStep, RoiSize roi, int32_t channel,
                                      double *norm);
StatusCode rvxiNormDiff_L1_8u_C1MR(const uint8_t *src1, int32_t src1Step, const uint8_t *src2, int32_t src2Step,
                                   const uint8_t *mask, int32_t maskStep, RoiSize roi, double *norm);
StatusCode rvxiNormDiff_L1_8s_C1MR(const int8_t *src1, int32_t src1Step, const int8_t *src2, int32_t src2Step,
                                   const uint8_t *mask, int32_t maskStep, RoiSize roi, double *norm);
StatusCode rvxiNormDiff_L1_16u_C1MR(const uint16_t *src1, int32_t src1Step, const uint16_t *src2, int32_t src2Step,
                                    const uint8_t *mask, int32_t maskStep, RoiSize roi, double *norm);
StatusCode rvxiNormDiff_L1_32f_C1MR(const float *src1, int32_t src1Step, const float *src2, int32_t src2Step,
                                    const uint8_t *mask, int32_t maskStep, RoiSize roi, double *norm);
StatusCode rvxiNormDiff_L1_8u_C3CMR(const uint8_t *src1, int32_t src1Step, const uint8_t *src2, int32_t src2Step,
                                    const uint8_t *mask, int32_t maskStep, RoiSize roi, int32_t channel, double *norm);
StatusCode rvxiNormDiff_L1_8s_C3CMR(const int8_t *src1, int32_t src1Step, const int8_t *src2, int32_t src2Step,
                                    const uint8_t *mask, int32_t maskStep, RoiSize roi, int32_t channel, double *norm);
StatusCode rvxiNormDiff_L1_16u_C3CMR(const uint16_t *src1, int32_t src1Step, const uint16_t *src2, int32_t src2Step,
                                     const uint8_t *mask, int32_t maskStep, RoiSize roi, int32_t channel, double *norm);
StatusCode rvxiNormDiff_L1_32f_C3CMR(const float *src1, int32_t src1Step, const float *src2, int32_t src2Step,
                                     const uint8_t *mask, int32_t maskStep, RoiSize roi, int32_t channel, double *norm);
StatusCode rvxiNormDiff_L2_8u_C1MR(const uint8_t *src1, int32_t src1Step, const uint8_t *src2, int32_t src2Step,
                                   const uint8_t *mask, int32_t maskStep, RoiSize roi, double *norm);
StatusCode rvxiNormDiff_L2_8s_C1MR(const int8_t *src1, int32_t src1Step, const int8_t *src2, int32_t src2Step,
                                   const uint8_t *mask, int32_t maskStep, RoiSize roi, double *norm);
StatusCode rvxiNormDiff_L2_16u_C1MR(const uint16_t *src1, int32_t src1Step, const uint16_t *src2, int32_t src2Step,
                                    const uint8_t *mask, int32_t maskStep, RoiSize roi, double *norm);
StatusCode rvxiNormDiff_L2_32f_C1MR(const float *src1, int32_t src1Step, const float *src2, int32_t src2Step,
                                    const uint8_t *mask, int32_t maskStep, RoiSize roi, double *norm);
StatusCode rvxiNormDiff_L2_8u_C3CMR(const uint8_t *src1, int32_t src1Step, const uint8_t *src2, int32_t src2Step,
                                    const uint8_t *mask, int32_t maskStep, RoiSize roi, int32_t channel, double *norm);
StatusCode rvxiNormDiff_L2_8s_C3CMR(const int8_t *src1, int32_t src1Step, const int8_t *src2, int32_t src2Step,
                                    const uint8_t *mask, int32_t maskStep, RoiSize roi, int32_t channel, double *norm);
StatusCode rvxiNormDiff_L2_16u_C3CMR(const uint16_t *src1, int32_t src1Step, const uint16_t *src2, int32_t src2Step,
                                     const uint8_t *mask, int32_t maskStep, RoiSize roi, int32_t channel, double *norm);
StatusCode rvxiNormDiff_L2_32f_C3CMR(const float *src1, int32_t src1Step, const float *src2, int32_t src2Step,
                                     const uint8_t *mask, int32_t maskStep, RoiSize roi, int32_t channel, double *norm);
/** @} */

/** @name Relative
 * NormDiff(src1, src2) / Norm(src2), a division of doubles. 0 / 0 is 0: equal images, or nothing selected. Any other
 * difference from an image of norm 0 is infinite, or NaN where the difference is.
 * @{ */
/** Relative norm of a difference. */
StatusCode rvxiNormRel_Inf_8u_C1MR(const uint8_t *src1, int32_t src1Step, const uint8_t *src2, int32_t src2Step,
                                   const uint8_t *mask, int32_t maskStep, RoiSize roi, double *norm);
StatusCode rvxiNormRel_Inf_8s_C1MR(const int8_t *src1, int32_t src1Step, const int8_t *src2, int32_t src2Step,
                                   const uint8_t *mask, int32_t maskStep, RoiSize roi, double *norm);
StatusCode rvxiNormRel_Inf_16u_C1MR(const uint16_t *src1, int32_t src1Step, const uint16_t *src2, int32_t src2Step,
                                    const uint8_t *mask, int32_t maskStep, RoiSize roi, double *norm);
StatusCode rvxiNormRel_Inf_32f_C1MR(const float *src1, int32_t src1Step, const float *src2, int32_t src2Step,
                                    const uint8_t *mask, int32_t maskStep, RoiSize roi, double *norm);
StatusCode rvxiNormRel_Inf_8u_C3CMR(const uint8_t *src1, int32_t src1Step, const uint8_t *src2, int32_t src2Step,
                                    const uint8_t *mask, int32_t maskStep, RoiSize roi, int32_t channel, double *norm);
StatusCode rvxiNormRel_Inf_8s_C3CMR(const int8_t *src1, int32_t src1Step, const int8_t *src2, int32_t src2Step,
                                    const uint8_t *mask, int32_t maskStep, RoiSize roi, int32_t channel, double *norm);
StatusCode rvxiNormRel_Inf_16u_C3CMR(const uint16_t *src1, int32_t src1Step, const uint16_t *src2, int32_t src2Step,
                                     const uint8_t *mask, int32_t maskStep, RoiSize roi, int32_t channel, double *norm);
StatusCode rvxiNormRel_Inf_32f_C3CMR(const float *src1, int32_t src1Step, const float *src2, int32_t src2Step,
                                     const uint8_t *mask, int32_t maskStep, RoiSize roi, int32_t channel, double *norm);
StatusCode rvxiNormRel_L1_8u_C1MR(const uint8_t *src1, int32_t src1Step, const uint8_t *src2, int32_t src2Step,
                                  const uint8_t *mask, int32_t maskStep, RoiSize roi, double *norm);
StatusCode rvxiNormRel_L1_8s_C1MR(const int8_t *src1, int32_t src1Step, const int8_t *src2, int32_t src2Step,
                                  const uint8_t *mask, int32_t maskStep, RoiSize roi, double *norm);
StatusCode rvxiNormRel_L1_16u_C1MR(const uint16_t *src1, int32_t src1Step, const uint16_t *src2, int32_t src2Step,
                                   const uint8_t *mask, int32_t maskStep, RoiSize roi, double *norm);
StatusCode rvxiNormRel_L1_32f_C1MR(const float *src1, int32_t src1Step, const float *src2, int32_t src2Step,
                                   const uint8_t *mask, int32_t maskStep, RoiSize roi, double *norm);
StatusCode rvxiNormRel_L1_8u_C3CMR(const uint8_t *src1, int32_t src1Step, const uint8_t *src2, int32_t src2Step,
                                   const uint8_t *mask, int32_t maskStep, RoiSize roi, int32_t channel, double *norm);
StatusCode rvxiNormRel_L1_8s_C3CMR(const int8_t *src1, int32_t src1Step, const int8_t *src2, int32_t src2Step,
                                   const uint8_t *mask, int32_t maskStep, RoiSize roi, int32_t channel, double *norm);
StatusCode rvxiNormRel_L1_16u_C3CMR(const uint16_t *src1, int32_t src1Step, const uint16_t *src2, int32_t src2Step,
                                    const uint8_t *mask, int32_t maskStep, RoiSize roi, int32_t channel, double *norm);
StatusCode rvxiNormRel_L1_32f_C3CMR(const float *src1, int32_t src1Step, const float *src2, int32_t src2Step,
                                    const uint8_t *mask, int32_t maskStep, RoiSize roi, int32_t channel, double *norm);
StatusCode rvxiNormRel_L2_8u_C1MR(const uint8_t *src1, int32_t src1Step, const uint8_t *src2, int32_t src2Step,
                                  const uint8_t *mask, int32_t maskStep, RoiSize roi, double *norm);
StatusCode rvxiNormRel_L2_8s_C1MR(const int8_t *src1, int32_t src1Step, const int8_t *src2, int32_t src2Step,
                                  const uint8_t *mask, int32_t maskStep, RoiSize roi, double *norm);
StatusCode rvxiNormRel_L2_16u_C1MR(const uint16_t *src1, int32_t src1Step, const uint16_t *src2, int32_t src2Step,
                                   const uint8_t *mask, int32_t maskStep, RoiSize roi, double *norm);
StatusCode rvxiNormRel_L2_32f_C1MR(const float *src1, int32_t src1Step, const float *src2, int32_t src2Step,
                                   const uint8_t *mask, int32_t maskStep, RoiSize roi, double *norm);
StatusCode rvxiNormRel_L2_8u_C3CMR(const uint8_t *src1, int32_t src1Step, const uint8_t *src2, int32_t src2Step,
                                   const uint8_t *mask, int32_t maskStep, RoiSize roi, int32_t channel, double *norm);
StatusCode rvxiNormRel_L2_8s_C3CMR(const int8_t *src1, int32_t src1Step, const int8_t *src2, int32_t src2Step,
                                   const uint8_t *mask, int32_t maskStep, RoiSize roi, int32_t channel, double *norm);
StatusCode rvxiNormRel_L2_16u_C3CMR(const uint16_t *src1, int32_t src1Step, const uint16_t *src2, int32_t src2Step,
                                    const uint8_t *mask, int32_t maskStep, RoiSize roi, int32_t channel, double *norm);
StatusCode rvxiNormRel_L2_32f_C3CMR(const float *src1, int32_t src1Step, const float *src2, int32_t src2Step,
                                    const uint8_t *mask, int32_t maskStep, RoiSize roi, int32_t channel, double *norm);
/** @} */
/** @} */

/** @defgroup means Means and deviations
 * Mean and standard deviation (of the population: divided by n) of the n selected pixels; without a mask, of all. With
 * nothing selected everything is 0 and the status StatusOk. Masks, channels, lane sums and status codes as for norms.
 *
 * Integers: S and Q are the exact sums of v and v * v (64 bits; Q below 2^32 pixels).
 *
 *     mean = S / n,  stdDev = sqrt(V) / n,  V = n * Q - S * S exactly, in 128 bits, converted once
 *
 * 32f: p is the first selected pixel, from the top left row by row, and d = (double)v - (double)p. D is the lane sum of
 * d; the lanes of E take fma(d, d, lane) and are joined like a lane sum.
 *
 *     q = D / n,  mean = p + q,  var = (E - D * q) / n, a negative one becomes 0,  stdDev = sqrt(var)
 *
 * Every operation rounds in double. NaN and infinity go through the formulas. Mean and Mean_StdDev give the same mean,
 * to the bit. The relative error of var is below n * (n + 16) * 2^-54, and near 2^-50 on pictures.
 * @{ */

/** @name Means
 * @{ */
/** Mean, or mean and standard deviation. */
StatusCode rvxiMean_8u_C1MR(const uint8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi,
                            double *mean);
StatusCode rvxiMean_8s_C1MR(const int8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi,
                            double *mean);
StatusCode rvxiMean_16u_C1MR(const uint16_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi,
                             double *mean);
StatusCode rvxiMean_32f_C1MR(const float *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi,
                             double *mean);
StatusCode rvxiMean_8u_C3CMR(const uint8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi,
                             int32_t channel, double *mean);
StatusCode rvxiMean_8s_C3CMR(const int8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi,
                             int32_t channel, double *mean);
StatusCode rvxiMean_16u_C3CMR(const uint16_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi,
                              int32_t channel, double *mean);
StatusCode rvxiMean_32f_C3CMR(const float *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi,
                              int32_t channel, double *mean);
StatusCode rvxiMean_StdDev_8u_C1R(const uint8_t *src, int32_t srcStep, RoiSize roi, double *mean, double *stdDev);
StatusCode rvxiMean_StdDev_8s_C1R(const int8_t *src, int32_t srcStep, RoiSize roi, double *mean, double *stdDev);
StatusCode rvxiMean_StdDev_16u_C1R(const uint16_t *src, int32_t srcStep, RoiSize roi, double *mean, double *stdDev);
StatusCode rvxiMean_StdDev_32f_C1R(const float *src, int32_t srcStep, RoiSize roi, double *mean, double *stdDev);
StatusCode rvxiMean_StdDev_8u_C1MR(const uint8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                   RoiSize roi, double *mean, double *stdDev);
StatusCode rvxiMean_StdDev_8s_C1MR(const int8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                   RoiSize roi, double *mean, double *stdDev);
StatusCode rvxiMean_StdDev_16u_C1MR(const uint16_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                    RoiSize roi, double *mean, double *stdDev);
StatusCode rvxiMean_StdDev_32f_C1MR(const float *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                    RoiSize roi, double *mean, double *stdDev);
StatusCode rvxiMean_StdDev_8u_C3CR(const uint8_t *src, int32_t srcStep, RoiSize roi, int32_t channel, double *mean,
                                   double *stdDev);
StatusCode rvxiMean_StdDev_8s_C3CR(const int8_t *src, int32_t srcStep, RoiSize roi, int32_t channel, double *mean,
                                   double *stdDev);
StatusCode rvxiMean_StdDev_16u_C3CR(const uint16_t *src, int32_t srcStep, RoiSize roi, int32_t channel, double *mean,
                                    double *stdDev);
StatusCode rvxiMean_StdDev_32f_C3CR(const float *src, int32_t srcStep, RoiSize roi, int32_t channel, double *mean,
                                    double *stdDev);
StatusCode rvxiMean_StdDev_8u_C3CMR(const uint8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                    RoiSize roi, int32_t channel, double *mean, double *stdDev);
StatusCode rvxiMean_StdDev_8s_C3CMR(const int8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                    RoiSize roi, int32_t channel, double *mean, double *stdDev);
StatusCode rvxiMean_StdDev_16u_C3CMR(const uint16_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                     RoiSize roi, int32_t channel, double *mean, double *stdDev);
StatusCode rvxiMean_StdDev_32f_C3CMR(const float *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                     RoiSize roi, int32_t channel, double *mean, double *stdDev);
/** @} */
/** @} */

/** @defgroup extrema Extrema
 * The smallest and the largest selected pixel and their positions (x, y), x counting pixels: of equal ones the first,
 * from the top left row by row. -0.0 and +0.0 are equal: the value is that of the first one. NaN is passed over. With
 * nothing selected, or nothing but NaN, both values are 0.0, both positions (-1, -1) and the status StatusOk. Masks,
 * channels and status codes as for norms.
 * @{ */

/** @name Extrema
 * @{ */
/** Smallest and largest pixel and their positions. */
StatusCode rvxiMinMaxIndx_8u_C1R(const uint8_t *src, int32_t srcStep, RoiSize roi, double *min, double *max,
                                 Point2i *minIndex, Point2i *maxIndex);
StatusCode rvxiMinMaxIndx_8s_C1R(const int8_t *src, int32_t srcStep, RoiSize roi, double *min, double *max,
                                 Point2i *minIndex, Point2i *maxIndex);
StatusCode rvxiMinMaxIndx_16u_C1R(const uint16_t *src, int32_t srcStep, RoiSize roi, double *min, double *max,
                                  Point2i *minIndex, Point2i *maxIndex);
StatusCode rvxiMinMaxIndx_32f_C1R(const float *src, int32_t srcStep, RoiSize roi, double *min, double *max,
                                  Point2i *minIndex, Point2i *maxIndex);
StatusCode rvxiMinMaxIndx_8u_C1MR(const uint8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                  RoiSize roi, double *min, double *max, Point2i *minIndex, Point2i *maxIndex);
StatusCode rvxiMinMaxIndx_8s_C1MR(const int8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                  RoiSize roi, double *min, double *max, Point2i *minIndex, Point2i *maxIndex);
StatusCode rvxiMinMaxIndx_16u_C1MR(const uint16_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                   RoiSize roi, double *min, double *max, Point2i *minIndex, Point2i *maxIndex);
StatusCode rvxiMinMaxIndx_32f_C1MR(const float *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                   RoiSize roi, double *min, double *max, Point2i *minIndex, Point2i *maxIndex);
StatusCode rvxiMinMaxIndx_8u_C3CR(const uint8_t *src, int32_t srcStep, RoiSize roi, int32_t channel, double *min,
                                  double *max, Point2i *minIndex, Point2i *maxIndex);
StatusCode rvxiMinMaxIndx_8s_C3CR(const int8_t *src, int32_t srcStep, RoiSize roi, int32_t channel, double *min,
                                  double *max, Point2i *minIndex, Point2i *maxIndex);
StatusCode rvxiMinMaxIndx_16u_C3CR(const uint16_t *src, int32_t srcStep, RoiSize roi, int32_t channel, double *min,
                                   double *max, Point2i *minIndex, Point2i *maxIndex);
StatusCode rvxiMinMaxIndx_32f_C3CR(const float *src, int32_t srcStep, RoiSize roi, int32_t channel, double *min,
                                   double *max, Point2i *minIndex, Point2i *maxIndex);
StatusCode rvxiMinMaxIndx_8u_C3CMR(const uint8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                   RoiSize roi, int32_t channel, double *min, double *max, Point2i *minIndex,
                                   Point2i *maxIndex);
StatusCode rvxiMinMaxIndx_8s_C3CMR(const int8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                   RoiSize roi, int32_t channel, double *min, double *max, Point2i *minIndex,
                                   Point2i *maxIndex);
StatusCode rvxiMinMaxIndx_16u_C3CMR(const uint16_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                    RoiSize roi, int32_t channel, double *min, double *max, Point2i *minIndex,
                                    Point2i *maxIndex);
StatusCode rvxiMinMaxIndx_32f_C3CMR(const float *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                    RoiSize roi, int32_t channel, double *min, double *max, Point2i *minIndex,
                                    Point2i *maxIndex);
/** @} */
/** @} */
/** @} */

#ifdef __cplusplus
}
#endif

#endif
