/* Statistics: integral images and the deviations read from them. */
#ifndef RVXCV_STATS_H
#define RVXCV_STATS_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* -------------------------------------------------------------------------------------------------- Integral images */

/* Integral images of a W x H source: each element is a sum of source pixels, so that the sum of any rectangle takes
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
 * before (it is exact up to 2^24: the groups show in rows of more than 65793 pixels only). */
StatusCode rvxiIntegral_8u32s_C1R(const uint8_t *src, int32_t srcStep, int32_t *dst, int32_t dstStep, RoiSize roi,
                                  int32_t val);
StatusCode rvxiIntegral_8u32f_C1R(const uint8_t *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                  float val);
/* Of 32f pixels: the row's sum adds pixel by pixel from the left, each sum rounded. Row 0 and column 0 are 0. */
StatusCode rvxiIntegral_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi);

/* Sums of the pixels in dst and of their squares in sqr. */
StatusCode rvxiSqrIntegral_8u32s_C1R(const uint8_t *src, int32_t srcStep, int32_t *dst, int32_t dstStep, int32_t *sqr,
                                     int32_t sqrStep, RoiSize roi, int32_t val, int32_t valSqr);
StatusCode rvxiSqrIntegral_8u32s64f_C1R(const uint8_t *src, int32_t srcStep, int32_t *dst, int32_t dstStep, double *sqr,
                                        int32_t sqrStep, RoiSize roi, int32_t val, double valSqr);
StatusCode rvxiSqrIntegral_8u32f64f_C1R(const uint8_t *src, int32_t srcStep, float *dst, int32_t dstStep, double *sqr,
                                        int32_t sqrStep, RoiSize roi, double val, double valSqr);

/* Tilted by 45 degrees (Lienhart and Maydt, "An Extended Set of Haar-like Features for Rapid Object Detection", ICIP
 * 2002): an output has H + 2 rows of W + 2 elements, an element being the sum of the triangle of pixels whose lower tip
 * it is. Rows 0 and 1 are val; every further row R comes from source row s and the output rows P1 and P2, one and two
 * above:
 *
 *     R(X) = s(X - 1) + s(X) + P1(X - 1) + P1(X + 1) - P2(X)     for X = 1 ... W, with s(W) = 0,
 *     R(0) = P1(1),  R(W + 1) = P1(W).
 *
 * 32s: sums wrap modulo 2^32. 32f and 64f: the sum of the two pixels (or squares) is exact, the other three steps are
 * made in this order and each rounds. */
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

/* ---------------------------------------------------------------------------------------------- Rectangle deviation */

/* Standard deviation of the pixels in a window, for every position: destination pixel (x, y) stands for the window
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
 * below rect.height - 1, where the left corner would lie before the first column). */
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

#ifdef __cplusplus
}
#endif

#endif
