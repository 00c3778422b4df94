/** @file
 * Camera geometry: lens undistortion. */
#ifndef RVXCV_GEOMETRY_H
#define RVXCV_GEOMETRY_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup undistort Lens undistortion
 * Makes straight lines straight that a lens has bent.
 *
 * A camera with focal lengths fx, fy and principal point (cx, cy), in pixels, whose lens bends straight lines: radially
 * (k1, k2) and tangentially (p1, p2) (D. C. Brown, "Close-Range Camera Calibration", Photogrammetric Engineering 37(8),
 * 1971). The pixel in column x and row y of the picture without distortion stands, in the picture that was taken, at
 *
 *     xn = (x - cx) * (1 / fx)     yn = (y - cy) * (1 / fy)     r2 = xn * xn + yn * yn
 *     t  = ((k2 * r2 + k1) * r2 + (2 * p2) * xn) + (2 * p1) * yn
 *     sx = (t * (x - cx) + (fx * p2) * r2) + x
 *     sy = (t * (y - cy) + (fy * p1) * r2) + y
 *
 * All of it is in single precision, every operation rounded on its own, x and y converted to the nearest float; the
 * reciprocals are rounded, too. When p1 and p2 are both zero, their terms are left out altogether, which shows where r2
 * is infinite. NaN and infinities go through the formulas as written.
 *
 * buffer is optional scratch of the size that rvxiUndistortGetSize reports. Results are the same with it and without,
 * and so is the speed: the functions need none and leave it alone. Nothing is allocated.
 * @{ */

/** Writes (width rounded up to a multiple of 4) * 24 + 32 bytes.
 *
 * Status codes, in the order of the checks: StatusNullPointer; StatusBadSize (width or height below 1, or the result
 * does not fit in 32 bits). */
StatusCode rvxiUndistortGetSize(RoiSize roi, int32_t *bufSize);

/** Two maps of the size of the picture: sx and sy of every pixel. Maps of 131072 pixels or more, both at addresses and
 * with steps that are multiples of 16, are written past the caches. The maps must not overlap.
 *
 * Status codes, in the order of the checks: StatusNullPointer (a map is null); StatusBadSize (width or height below 1);
 * StatusBadStep (a step does not cover its row); StatusStepNotMultiple (a step is not a multiple of 4);
 * StatusBadArgument (fx or fy is zero, of either sign; a NaN passes). */
StatusCode rvxiCreateMapCameraUndistort_32f_C1R(float *xMap, int32_t xMapStep, float *yMap, int32_t yMapStep,
                                                RoiSize roi, uint8_t *buffer, float fx, float fy, float cx, float cy,
                                                float k1, float k2, float p1, float p2);

/** @name Images
 * The picture without radial distortion: every pixel of dst is src sampled at (sx, sy) of the formulas without p1, p2.
 * With I the source, ix and iy the whole parts of sx and sy, a = sx - ix and b = sy - iy, in floats,
 *
 *     t(j) = fma(a, I(ix + 1, j) - I(ix, j), I(ix, j))        for j = iy and j = iy + 1
 *     value = fma(b, t(iy + 1) - t(iy), t(iy))
 *
 * for every channel alike; 8u and 16u results are the integers nearest to the value, halves to even. Where a is 0 the
 * right neighbour does not count (t is I), where b is 0 the lower one does not (the value is t): a lens without
 * distortion leaves every pixel as it is. A pixel becomes 0 unless 0 <= sx <= width - 1 and 0 <= sy <= height - 1, so
 * NaN positions give 0. src and dst must not overlap.
 *
 * Status codes, in the order of the checks: StatusNullPointer (src or dst is null); StatusBadSize (width or height
 * below 1); StatusBadStep (a step does not cover its row); 32f: StatusStepNotMultiple (a step is not a multiple of 4;
 * steps of 16u images may be odd); StatusBadArgument (fx or fy is zero, of either sign; a NaN passes).
 * @{ */
/** The picture without radial distortion. */
StatusCode rvxiUndistortRadial_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                      uint8_t *buffer, float fx, float fy, float cx, float cy, float k1, float k2);
StatusCode rvxiUndistortRadial_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                      uint8_t *buffer, float fx, float fy, float cx, float cy, float k1, float k2);
StatusCode rvxiUndistortRadial_16u_C1R(const uint16_t *src, int32_t srcStep, uint16_t *dst, int32_t dstStep,
                                       RoiSize roi, uint8_t *buffer, float fx, float fy, float cx, float cy, float k1,
                                       float k2);
StatusCode rvxiUndistortRadial_16u_C3R(const uint16_t *src, int32_t srcStep, uint16_t *dst, int32_t dstStep,
                                       RoiSize roi, uint8_t *buffer, float fx, float fy, float cx, float cy, float k1,
                                       float k2);
StatusCode rvxiUndistortRadial_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                       uint8_t *buffer, float fx, float fy, float cx, float cy, float k1, float k2);
StatusCode rvxiUndistortRadial_32f_C3R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                       uint8_t *buffer, float fx, float fy, float cx, float cy, float k1, float k2);
/** @} */
/** @} */

#ifdef __cplusplus
}
#endif

#endif
