/* Motion and tracking: motion history, line sampling, sub-pixel copies, optical flow. */
#ifndef RVXCV_MOTION_H
#define RVXCV_MOTION_H

#include "pyramid.h"
#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Motion history ---- */

/* A motion history image holds in every pixel the time at which motion was last seen there, 0 where that is longer ago
 * than a duration (J. W. Davis and A. F. Bobick, "The Representation and Recognition of Action Using Temporal
 * Templates", CVPR 1997). One call folds in the silhouette of a frame, an image that is not zero where something moved.
 * With s a pixel of the silhouette and h one of the history, both times in a unit of the caller's:
 *
 *     s != 0                                 h = timestamp
 *     s == 0 and h < timestamp - duration    h = 0
 *     otherwise                              h is kept, bit for bit
 *
 * The difference is formed once, in single precision. 32f silhouettes: -0.0 is no motion, NaN is. A NaN in the history
 * is kept until something moves there.
 *
 * Status codes, in the order of the checks: StatusNullPointer, StatusBadSize (width or height below 1), StatusBadStep
 * (a step does not cover its row), StatusStepNotMultiple (a step is not a multiple of its image's element size),
 * StatusOutOfRange (duration < 0; a NaN passes). */
StatusCode rvxiUpdateMotionHistory_8u32f_C1IR(const uint8_t *silhouette, int32_t silhouetteStep, float *history,
                                              int32_t historyStep, RoiSize roi, float timestamp, float duration);
StatusCode rvxiUpdateMotionHistory_16u32f_C1IR(const uint16_t *silhouette, int32_t silhouetteStep, float *history,
                                               int32_t historyStep, RoiSize roi, float timestamp, float duration);
StatusCode rvxiUpdateMotionHistory_32f_C1IR(const float *silhouette, int32_t silhouetteStep, float *history,
                                            int32_t historyStep, RoiSize roi, float timestamp, float duration);

/* ---- Line sampling ---- */

/* The pixels on the digital straight line from one point to another, both included, in that order, copied into `line`,
 * which has room for max(|x2 - x1|, |y2 - y1|) + 1 pixels. Nothing but these pixels is read.
 *
 * The walk is J. E. Bresenham's ("Algorithm for computer control of a digital plotter", IBM Systems Journal 4(1), 1965)
 * in integers. Its major axis is that of the larger difference, y when they are equal. From one pixel to the next it
 * goes one step along the major axis, and one along the other axis too where the line has passed the midpoint between
 * the two candidates; on the midpoint itself it keeps straight, so the way back may visit other pixels than the way
 * there.
 *
 * Status codes, in the order of the checks: StatusNullPointer, StatusBadSize (width or height below 1), StatusBadStep
 * (the step does not cover the row), StatusStepNotMultiple (the step is not a multiple of the element size),
 * StatusOutOfRange (a point lies outside the region), StatusLengthOverflow (more than 2^31 - 1 pixels). */
StatusCode rvxiSampleLine_8u_C1R(const uint8_t *src, int32_t srcStep, RoiSize roi, uint8_t *line, Point2i first,
                                 Point2i second);
StatusCode rvxiSampleLine_8u_C3R(const uint8_t *src, int32_t srcStep, RoiSize roi, uint8_t *line, Point2i first,
                                 Point2i second);
StatusCode rvxiSampleLine_16u_C1R(const uint16_t *src, int32_t srcStep, RoiSize roi, uint16_t *line, Point2i first,
                                  Point2i second);
StatusCode rvxiSampleLine_16u_C3R(const uint16_t *src, int32_t srcStep, RoiSize roi, uint16_t *line, Point2i first,
                                  Point2i second);
StatusCode rvxiSampleLine_32f_C1R(const float *src, int32_t srcStep, RoiSize roi, float *line, Point2i first,
                                  Point2i second);
StatusCode rvxiSampleLine_32f_C3R(const float *src, int32_t srcStep, RoiSize roi, float *line, Point2i first,
                                  Point2i second);

/* ---- Sub-pixel copies ---- */

/* A patch of an image around a point with real coordinates, sampled bilinearly. With w x h the size of the patch
 * (dstRoi), in double, ox = centre.x - 0.5 (w - 1), ix = floor(ox), a = (float)(ox - ix), and oy, iy, b likewise, the
 * patch pixel (x, y) is, in float,
 *
 *     t(j) = fma(a, I(ix + x + 1, j) - I(ix + x, j), I(ix + x, j))        for j = iy + y and j = iy + y + 1
 *     value = fma(b, t(iy + y + 1) - t(iy + y), t(iy + y))
 *
 * Where a is 0 the right neighbours are not read (t is I), where b is 0 the lower ones are not (the value is t). Source
 * and destination must not overlap.
 *
 * Intersect: only pixels whose samples lie inside the image are written. Column x of the patch is inside when
 * ix + x >= 0 and ix + x (+ 1 where a > 0) <= srcRoi.width - 1, rows likewise; min and max receive the first and the
 * last column and row inside.
 *
 * Status codes, in the order of the checks: StatusNullPointer; StatusBadSize (srcRoi, then dstRoi); StatusBadStep;
 * StatusStepNotMultiple; StatusOutOfRange (a coordinate of the centre is not finite or beyond 1e9 on either side);
 * StatusError (no column or no row is inside; nothing is written). */
StatusCode rvxiCopySubpixIntersect_32f_C1R(const float *src, int32_t srcStep, RoiSize srcRoi, float *dst,
                                           int32_t dstStep, RoiSize dstRoi, Point2f centre, Point2i *min, Point2i *max);

/* ---- Optical flow ---- */

#ifdef __cplusplus
}
#endif

#endif
