/** @file
 * Motion and tracking: motion history, line sampling, sub-pixel copies, optical flow; background models come along. */
#ifndef RVXCV_MOTION_H
#define RVXCV_MOTION_H

#include "foreground.h"
#include "pyramid.h"
#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup motion Motion and tracking
 * What moves from frame to frame; patches and lines of pixels that trackers need.
 * @{ */

/** @defgroup motion_history Motion history
 * Where something moved, and when.
 *
 * A motion history image holds in every pixel the time at which motion was last seen there, 0 where that is longer ago
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
 * StatusOutOfRange (duration < 0; a NaN passes).
 * @{ */

/** @name Update
 * @{ */
/** Folds the silhouette of a frame in. */
StatusCode rvxiUpdateMotionHistory_8u32f_C1IR(const uint8_t *silhouette, int32_t silhouetteStep, float *history,
                                              int32_t historyStep, RoiSize roi, float timestamp, float duration);
StatusCode rvxiUpdateMotionHistory_16u32f_C1IR(const uint16_t *silhouette, int32_t silhouetteStep, float *history,
                                               int32_t historyStep, RoiSize roi, float timestamp, float duration);
StatusCode rvxiUpdateMotionHistory_32f_C1IR(const float *silhouette, int32_t silhouetteStep, float *history,
                                            int32_t historyStep, RoiSize roi, float timestamp, float duration);
/** @} */
/** @} */

/** @defgroup sample_line Line sampling
 * The pixels on the digital straight line from one point to another, both included, in that order, copied into `line`,
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
 * StatusOutOfRange (a point lies outside the region), StatusLengthOverflow (more than 2^31 - 1 pixels).
 * @{ */

/** @name Samples
 * @{ */
/** Copies the pixels on a line. */
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
/** @} */
/** @} */

/** @defgroup subpix Sub-pixel copies
 * A patch of an image around a point with real coordinates, sampled bilinearly. With w x h the size of the patch
 * (dstRoi), in double, ox = centre.x - 0.5 (w - 1), ix = floor(ox), a = (float)(ox - ix), and oy, iy, b likewise, the
 * patch pixel (x, y) is, in float,
 *
 *     t(j) = fma(a, I(ix + x + 1, j) - I(ix + x, j), I(ix + x, j))        for j = iy + y and j = iy + y + 1
 *     value = fma(b, t(iy + y + 1) - t(iy + y), t(iy + y))
 *
 * Where a is 0 the right neighbours are not read (t is I), where b is 0 the lower ones are not (the value is t). 8u and
 * 16u patches are rounded to nearest, halves to even; Sfs: the value times 2^-scaleFactor, likewise, saturated. Source
 * and destination must not overlap.
 *
 * CopySubpix fills the whole patch: the image is continued by its edge, columns and rows each on their own.
 *
 * CopySubpixIntersect: only pixels whose samples lie inside the image are written. Column x of the patch is inside when
 * ix + x >= 0 and ix + x (+ 1 where a > 0) <= srcRoi.width - 1, rows likewise; min and max receive the first and the
 * last column and row inside.
 *
 * Status codes, in the order of the checks: StatusNullPointer; StatusBadSize (srcRoi, then dstRoi); StatusBadStep (src,
 * then dst); StatusStepNotMultiple (of 16-bit and 32-bit images); StatusOutOfRange (a coordinate of the centre is not
 * finite or beyond 1e9 on either side, then scaleFactor outside -16..16); Intersect: StatusError (no column or no row
 * is inside; nothing is written).
 * @{ */

/** @name Copies
 * @{ */
/** Copies a patch, the whole of it or what lies inside. */
StatusCode rvxiCopySubpix_8u_C1R(const uint8_t *src, int32_t srcStep, RoiSize srcRoi, uint8_t *dst, int32_t dstStep,
                                 RoiSize dstRoi, Point2f centre);
StatusCode rvxiCopySubpix_8u32f_C1R(const uint8_t *src, int32_t srcStep, RoiSize srcRoi, float *dst, int32_t dstStep,
                                    RoiSize dstRoi, Point2f centre);
StatusCode rvxiCopySubpix_16u_C1R(const uint16_t *src, int32_t srcStep, RoiSize srcRoi, uint16_t *dst, int32_t dstStep,
                                  RoiSize dstRoi, Point2f centre);
StatusCode rvxiCopySubpix_16u32f_C1R(const uint16_t *src, int32_t srcStep, RoiSize srcRoi, float *dst, int32_t dstStep,
                                     RoiSize dstRoi, Point2f centre);
StatusCode rvxiCopySubpix_32f_C1R(const float *src, int32_t srcStep, RoiSize srcRoi, float *dst, int32_t dstStep,
                                  RoiSize dstRoi, Point2f centre);
StatusCode rvxiCopySubpix_8u16u_C1RSfs(const uint8_t *src, int32_t srcStep, RoiSize srcRoi, uint16_t *dst,
                                       int32_t dstStep, RoiSize dstRoi, Point2f centre, int32_t scaleFactor);
StatusCode rvxiCopySubpixIntersect_8u_C1R(const uint8_t *src, int32_t srcStep, RoiSize srcRoi, uint8_t *dst,
                                          int32_t dstStep, RoiSize dstRoi, Point2f centre, Point2i *min, Point2i *max);
StatusCode rvxiCopySubpixIntersect_8u32f_C1R(const uint8_t *src, int32_t srcStep, RoiSize srcRoi, float *dst,
                                             int32_t dstStep, RoiSize dstRoi, Point2f centre, Point2i *min,
                                             Point2i *max);
StatusCode rvxiCopySubpixIntersect_16u_C1R(const uint16_t *src, int32_t srcStep, RoiSize srcRoi, uint16_t *dst,
                                           int32_t dstStep, RoiSize dstRoi, Point2f centre, Point2i *min, Point2i *max);
StatusCode rvxiCopySubpixIntersect_16u32f_C1R(const uint16_t *src, int32_t srcStep, RoiSize srcRoi, float *dst,
                                              int32_t dstStep, RoiSize dstRoi, Point2f centre, Point2i *min,
                                              Point2i *max);
StatusCode rvxiCopySubpixIntersect_32f_C1R(const float *src, int32_t srcStep, RoiSize srcRoi, float *dst,
                                           int32_t dstStep, RoiSize dstRoi, Point2f centre, Point2i *min, Point2i *max);
StatusCode rvxiCopySubpixIntersect_8u16u_C1RSfs(const uint8_t *src, int32_t srcStep, RoiSize srcRoi, uint16_t *dst,
                                                int32_t dstStep, RoiSize dstRoi, Point2f centre, Point2i *min,
                                                Point2i *max, int32_t scaleFactor);
/** @} */
/** @} */

/** @defgroup optical_flow Optical flow
 * Points followed from one frame to the next.
 *
 * Points followed from one frame to the next by the iterative method of Lucas and Kanade over two pyramids, from the
 * coarsest level to the finest (J.-Y. Bouguet, Pyramidal Implementation of the Lucas Kanade Feature Tracker, 2000).
 *
 * At level L a point is u = prevPoint * scales[L] of the previous pyramid, its guess v = nextPoint * scales[L]
 * (double). I is the window of winSize x winSize samples (bilinear, as rvxiCopySubpixIntersect_32f_C1R takes them) of
 * the previous image around u, Ix and Iy the same samples of its Scharr derivatives divided by 32 (the image continued
 * by its edge), J the window of the next image around v. Only those samples count that lie inside both images; n is
 * their number.
 *
 *   1. G = [sum Ix Ix, sum Ix Iy; sum Ix Iy, sum Iy Iy]. If its determinant is below 2.220446049250313e-16, the point
 *      is lost.
 *   2. b = sum (I - J) (Ix, Iy). The step d solves G d = b; v += d.
 *   3. Done when |d| < threshold; or, from the second step on, when d + previous d is below 0.0003452669770922512 in
 *      both coordinates (an oscillation: half of d is taken back); or after maxIterations steps. Else again from 2, or
 *      from 1 when other samples lie inside both images.
 *
 * Then nextPoint = v / scales[L], and the next finer level starts from there. At level 0 the status becomes 0 and the
 * error sqrt(sum (I - J)^2 / n) of the last window sampled, before the last step.
 *
 * A point is lost at level L when the determinant is too small; when the patch of winSize + 2 pixels around u lies
 * outside the previous image; when the window around v lies outside the next image (as NaN and coordinates beyond 1e9
 * do); when the two have no sample in common (nextPoint is then v / scales[L]); when a step is not a number. Its status
 * is L + 1, its error 0, and nextPoint stays what it was after level L + 1. Statuses above 255 are given as 255.
 *
 * Sums are formed in float lanes and joined in double; images of magnitudes beyond 1e15 lose their points. 8u and 16u
 * images give what 32f images of the same values give, within 0.02 pixel wherever both track. The result for a point
 * depends on nothing but the images, the arguments and the point: not on other points, nor on the state's maxRoi.
 * @{ */

/** Made by InitAlloc. The fields may be read, not written. */
typedef struct OpticalFlowState {
    int32_t maxWidth,        /**< of maxRoi */
        maxHeight;           /**< of maxRoi */
    int32_t one;             /**< 1 */
    PixelTypeCode pixelType; /**< of the images */
    int32_t hint;            /**< kept for the caller */
    int32_t winSize;         /**< side of the window */
    void *work;              /**< work buffer */
} OpticalFlowState;

/** @name Making a state
 * Makes a state for windows of winSize x winSize pixels; images may be of any size. maxRoi is the largest level for
 * which the 32f member allocates derivative images, hint is kept and not used.
 *
 * The work buffer has, in units of four bytes, 12 (winSize + 3)^2 + 17, and with 32f in addition (M being maxRoi with 5
 * more in each direction) 2 M.width M.height and the scratch of rvxiFilterScharrHorizBorder_32f_C1R for M.
 *
 * Status codes, in the order of the checks: StatusNullPointer; StatusBadSize (winSize, maxRoi.height or maxRoi.width
 * below 1); StatusNoMemory (then nothing is kept or written).
 * @{ */
/** Makes a state. */
StatusCode rvxiOpticalFlowPyrLKInitAlloc_8u_C1R(OpticalFlowState **state, RoiSize maxRoi, int32_t winSize,
                                                int32_t hint);
StatusCode rvxiOpticalFlowPyrLKInitAlloc_16u_C1R(OpticalFlowState **state, RoiSize maxRoi, int32_t winSize,
                                                 int32_t hint);
StatusCode rvxiOpticalFlowPyrLKInitAlloc_32f_C1R(OpticalFlowState **state, RoiSize maxRoi, int32_t winSize,
                                                 int32_t hint);
/** @} */

/** @name Releasing a state
 * Releases a state. StatusNullPointer.
 * @{ */
/** Releases a state. */
StatusCode rvxiOpticalFlowPyrLKFree_8u_C1R(OpticalFlowState *state);
StatusCode rvxiOpticalFlowPyrLKFree_16u_C1R(OpticalFlowState *state);
StatusCode rvxiOpticalFlowPyrLKFree_32f_C1R(OpticalFlowState *state);
/** @} */

/** @name Tracking
 * Follows numPoints points. images and steps of both pyramids are the caller's level images, with steps of any size;
 * scales and rates may be any. nextPoints holds the guesses (the previous positions, where nothing better is known) and
 * receives the positions, in pixels of level 0; status and error receive one element per point. maxLevel is the level
 * to start at; a level that one of the pyramids does not have is passed over (the tracking starts at the highest level
 * of both), and at a level without an image all points are lost. The state's work buffer is overwritten: one call at a
 * time.
 *
 * Status codes, in the order of the checks: StatusNullPointer (pyramids, points, status, error, state); StatusBadSize
 * (numPoints or winSize below 1, winSize not the state's); StatusBadArgument (maxLevel below 0, maxIterations below 1,
 * threshold below 0 or NaN). A lost point is no failure of the call.
 * @{ */
/** Follows points from one pyramid to the next. */
StatusCode rvxiOpticalFlowPyrLK_8u_C1R(const PyramidRecord *prevPyramid, const PyramidRecord *nextPyramid,
                                       const Point2f *prevPoints, Point2f *nextPoints, uint8_t *status, float *error,
                                       int32_t numPoints, int32_t winSize, int32_t maxLevel, int32_t maxIterations,
                                       float threshold, OpticalFlowState *state);
StatusCode rvxiOpticalFlowPyrLK_16u_C1R(const PyramidRecord *prevPyramid, const PyramidRecord *nextPyramid,
                                        const Point2f *prevPoints, Point2f *nextPoints, uint8_t *status, float *error,
                                        int32_t numPoints, int32_t winSize, int32_t maxLevel, int32_t maxIterations,
                                        float threshold, OpticalFlowState *state);
StatusCode rvxiOpticalFlowPyrLK_32f_C1R(const PyramidRecord *prevPyramid, const PyramidRecord *nextPyramid,
                                        const Point2f *prevPoints, Point2f *nextPoints, uint8_t *status, float *error,
                                        int32_t numPoints, int32_t winSize, int32_t maxLevel, int32_t maxIterations,
                                        float threshold, OpticalFlowState *state);
/** @} */
/** @} */
/** @} */

#ifdef __cplusplus
}
#endif

#endif
