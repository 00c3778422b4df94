/** @file
 * Trained detectors: cascades of boosted Haar-like features. */
#ifndef RVXCV_DETECT_H
#define RVXCV_DETECT_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup haar Haar classifiers
 * One stage of a cascade (Viola and Jones, "Rapid Object Detection using a Boosted Cascade of Simple Features", CVPR
 * 2001; tilted features: Lienhart and Maydt, "An Extended Set of Haar-like Features for Rapid Object Detection", ICIP
 * 2002), evaluated at every selected pixel of an image. A feature is a weighted sum of rectangle sums, read from an
 * integral image and compared with a threshold times the local deviation (the `norm` image, as the RectStdDev functions
 * of stats.h make it); it contributes one of two values, and the stage passes where their total reaches the stage's
 * threshold. The mask image carries the survivors from stage to stage. A record holds one stage:
 *
 *     rvxiHaarClassifierInitAlloc_32f(&stage, ...);
 *     rvxiApplyHaarClassifier_32f_C1R(sum, sumStep, norm, normStep, mask, maskStep, roi, &count, stage, threshold);
 *     rvxiHaarClassifierFree_32f(stage);
 *
 * Weights, thresholds and values are floats in records of the _32f functions and int32_t in those of the _32s ones.
 * @{ */

/** A number of a record: a float in records of the _32f functions, an integer in those of the _32s ones. */
typedef union HaarNumber {
    float f32;   /**< of _32f records */
    int32_t s32; /**< of _32s records */
} HaarNumber;

/** A rectangle: four elements of the integral image relative to the window's origin (x: column, y: row), and a weight.
 * Upright rectangles: bottom right (x + w, y + h), bottom left (x, y + h), top right (x + w, y), top left (x, y).
 * Tilted ones: bottom (x + w - h, y + w + h), left (x - h, y + h), right (x + w, y + w), top (x, y). */
typedef struct HaarRectangle {
    Point2i corners[4]; /**< in the order above */
    HaarNumber weight;  /**< what its sum is multiplied by */
} HaarRectangle;

/** A feature: its rectangles, its threshold and the two values it may contribute. */
typedef struct HaarFeature {
    int32_t rectCount;    /**< its rectangles */
    HaarRectangle *rects; /**< the first of them */
    HaarNumber threshold; /**< of its sum, in units of the local deviation */
    HaarNumber value1;    /**< what the feature adds below its scaled threshold */
    HaarNumber value2;    /**< and otherwise */
    uint32_t tag;         /**< place in the caller's arrays * 256, + 1 for a tilted feature */
} HaarFeature;

/** The record: one block of 56 + 32 * features + 36 * rectangles bytes, in this order. To be read, not written. */
typedef struct HaarClassifier {
    int32_t featureCount;     /**< features */
    int32_t rectCount;        /**< rectangles of all features */
    HaarFeature *features;    /**< upright: those with two rectangles first, then those with three, then the others */
    Rect2i bound;             /**< a box that grows over the rectangles, see below */
    int32_t tiltedClassifier; /**< 1: made by the tilted InitAlloc */
    int32_t twoRectCount;     /**< features with exactly two rectangles */
    int32_t twoOrThreeRectCount; /**< features with two or three */
    int32_t placedRects;         /**< rectangles in the block */
    int32_t fastFlag;            /**< 1: the first weight of every feature, truncated, is -1; nothing depends on it */
} HaarClassifier;

/** @name Making a record
 * Makes a record from `length` features (0 is allowed): rectCounts[i] rectangles each, which follow each other in
 * `rects` and `weights`. Features keep the caller's order among those with two rectangles, with three, and with any
 * other number. The bound starts as the first rectangle placed; for every rectangle, the first included, its x and y
 * become the smaller ones, its width becomes x + w where that lies beyond bound.x + bound.width, its height y + h
 * likewise; at the end bound.x and bound.y are taken off.
 *
 * Status codes, in the order of the checks: StatusNullPointer; StatusBadSize (length below 0, then a count below 1);
 * StatusBadArgument (a rectangle with x or y below 0 or an extent below 1); StatusNoMemory (also for a block beyond
 * int32). *classifier is written on success only.
 * @{ */
/** Makes a record of upright features. */
StatusCode rvxiHaarClassifierInitAlloc_32f(HaarClassifier **classifier, const Rect2i *rects, const float *weights,
                                           const float *thresholds, const float *value1, const float *value2,
                                           const int32_t *rectCounts, int32_t length);
StatusCode rvxiHaarClassifierInitAlloc_32s(HaarClassifier **classifier, const Rect2i *rects, const int32_t *weights,
                                           const int32_t *thresholds, const int32_t *value1, const int32_t *value2,
                                           const int32_t *rectCounts, int32_t length);
/** @} */

/** @name Making a record of tilted features
 * The same with every feature tilted by 45 degrees, in the caller's order: a rectangle has its top corner at (x, y),
 * reaches w pixels down to the right and h pixels down to the left, and must not reach columns before -1. The bound
 * takes x, y, w and h as they are.
 *
 * Status codes: as above, but memory is asked for before the rectangles are looked at: StatusNoMemory, then
 * StatusBadArgument (also for h > x + 1), which sets *classifier to null.
 * @{ */
/** Makes a record of tilted features. */
StatusCode rvxiTiltedHaarClassifierInitAlloc_32f(HaarClassifier **classifier, const Rect2i *rects, const float *weights,
                                                 const float *thresholds, const float *value1, const float *value2,
                                                 const int32_t *rectCounts, int32_t length);
StatusCode rvxiTiltedHaarClassifierInitAlloc_32s(HaarClassifier **classifier, const Rect2i *rects,
                                                 const int32_t *weights, const int32_t *thresholds,
                                                 const int32_t *value1, const int32_t *value2,
                                                 const int32_t *rectCounts, int32_t length);
/** @} */

/** @name Releasing a record
 * Releases a record. Status: StatusNullPointer.
 * @{ */
/** Releases a record. */
StatusCode rvxiHaarClassifierFree_32f(HaarClassifier *classifier);
StatusCode rvxiHaarClassifierFree_32s(HaarClassifier *classifier);
/** @} */

/** @name Size of the window
 * The window that the classifier needs: the rightmost column and the lowest row among its corners, which for an upright
 * classifier are the largest x + w and y + h. A W x H picture has (W - width + 1) x (H - height + 1) windows. A record
 * without features gives 0 x 0. Status: StatusNullPointer.
 * @{ */
/** Tells the size of the window that the classifier needs. */
StatusCode rvxiGetHaarClassifierSize_32f(const HaarClassifier *classifier, RoiSize *size);
StatusCode rvxiGetHaarClassifierSize_32s(const HaarClassifier *classifier, RoiSize *size);
/** @} */

/** @name Tilting features
 * Tilts the features whose byte in `tilted` (one per feature, in the caller's order) is not zero. With any flag but 0 a
 * rectangle takes the corners of the tilted InitAlloc; with flag 0
 *
 *     bottom (x, y + h), left (x - h, y), right (x + w, y + h - w), top (x + w - h, y - w),
 *
 * which need enough room above and to the left. A tilted feature's tag is 1: it has lost its place, and no later call
 * tilts it again. Status: StatusNullPointer; StatusBadArgument (a record of the tilted InitAlloc).
 * @{ */
/** Tilts features of a record. */
StatusCode rvxiTiltHaarFeatures_32f(const uint8_t *tilted, int32_t flag, HaarClassifier *classifier);
StatusCode rvxiTiltHaarFeatures_32s(const uint8_t *tilted, int32_t flag, HaarClassifier *classifier);
/** @} */

/** @name Evaluating upright features
 * Evaluates upright features at every pixel with a non-zero mask byte. Corners count from the pixel's own place in the
 * integral image, features are taken in the record's order:
 *
 *     rectangle sum = ((bottom right - bottom left) - top right) + top left,
 *     feature sum   = the sum of the rectangle sums times their weights,
 *     feature value = feature sum < threshold * norm ? value1 : value2      (value2 when one is a NaN),
 *     stage sum     = the sum of the feature values.
 *
 * Where stageThreshold > stage sum the mask byte becomes 0; otherwise the pixel is counted and its byte stays. In
 * _32f every operation rounds to float and nothing is fused. _32s32f takes _32f records: rectangle sums wrap in 32
 * bits and are converted to float. _32s_C1RSfs takes _32s records: rectangle sums wrap in 32 bits, products and feature
 * sums are 64-bit integers (they wrap), stage sums too; the feature sum is compared with threshold * norm shifted right
 * by scaleFactor, toward minus infinity, or left when it is negative; any scaleFactor is allowed.
 *
 * `count` is read and written: on entry the number of selected pixels (the stage before tells it), on return the number
 * that passed. The entry value has one effect. From an eighth of the region's pixels (included) up to a quarter
 * (excluded) the first width - width % 4 columns are judged by blocks: a pixel passes only where stage sum >
 * stageThreshold strictly, and its mask byte becomes 255.
 *
 * The integral image needs only the elements that the selected pixels' corners reach, or pixels beside them in the
 * region. Images must not overlap. Status codes, in the order of the checks: StatusNullPointer; StatusBadSize (width or
 * height below 1); StatusBadStep (integral images and norm cover 4 * width bytes, the mask width);
 * StatusStepNotMultiple (integral images and norm, of 4); StatusNoMemory (16 bytes per rectangle and 8 per column are
 * allocated for the time of the call).
 * @{ */
/** Evaluates a stage of upright features at the selected pixels. */
StatusCode rvxiApplyHaarClassifier_32f_C1R(const float *integral, int32_t integralStep, const float *norm,
                                           int32_t normStep, uint8_t *mask, int32_t maskStep, RoiSize roi,
                                           int32_t *count, const HaarClassifier *classifier, float stageThreshold);
StatusCode rvxiApplyHaarClassifier_32s32f_C1R(const int32_t *integral, int32_t integralStep, const float *norm,
                                              int32_t normStep, uint8_t *mask, int32_t maskStep, RoiSize roi,
                                              int32_t *count, const HaarClassifier *classifier, float stageThreshold);
StatusCode rvxiApplyHaarClassifier_32s_C1RSfs(const int32_t *integral, int32_t integralStep, const int32_t *norm,
                                              int32_t normStep, uint8_t *mask, int32_t maskStep, RoiSize roi,
                                              int32_t *count, const HaarClassifier *classifier, int32_t stageThreshold,
                                              int32_t scaleFactor);
/** @} */

/** @name Evaluating upright and tilted features
 * The same for upright and tilted features together: a tilted feature reads the tilted integral image, counting from
 * its element (1, 1), and every rectangle sum is (c0 - c1) - (c2 - c3) of the four corners in order. `tilted` points to
 * element (0, 0). Blocks play no part, `count` is only written, and nothing is allocated.
 * @{ */
/** Evaluates a stage of upright and tilted features at the selected pixels. */
StatusCode rvxiApplyMixedHaarClassifier_32f_C1R(const float *integral, int32_t integralStep, const float *tilted,
                                                int32_t tiltedStep, const float *norm, int32_t normStep, uint8_t *mask,
                                                int32_t maskStep, RoiSize roi, int32_t *count,
                                                const HaarClassifier *classifier, float stageThreshold);
StatusCode rvxiApplyMixedHaarClassifier_32s32f_C1R(const int32_t *integral, int32_t integralStep, const int32_t *tilted,
                                                   int32_t tiltedStep, const float *norm, int32_t normStep,
                                                   uint8_t *mask, int32_t maskStep, RoiSize roi, int32_t *count,
                                                   const HaarClassifier *classifier, float stageThreshold);
StatusCode rvxiApplyMixedHaarClassifier_32s_C1RSfs(const int32_t *integral, int32_t integralStep, const int32_t *tilted,
                                                   int32_t tiltedStep, const int32_t *norm, int32_t normStep,
                                                   uint8_t *mask, int32_t maskStep, RoiSize roi, int32_t *count,
                                                   const HaarClassifier *classifier, int32_t stageThreshold,
                                                   int32_t scaleFactor);
/** @} */
/** @} */

#ifdef __cplusplus
}
#endif

#endif
