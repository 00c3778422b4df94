/** @file
 * Accumulation of frames into 32f images, and absolute differences. */
#ifndef RVXCV_ARITH_H
#define RVXCV_ARITH_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup arith Accumulators and differences
 * Frames added up, averaged and compared.
 *
 * Status codes, in the order of the checks: StatusNullPointer (an image is null), StatusBadSize (width or height
 * below 1), StatusBadStep (a step does not cover the row; computed without wrapping), StatusStepNotMultiple (a step
 * of a 16-bit image is odd, of a 32f image not a multiple of 4). With 16u sources the two step checks are made for
 * the sources (and the mask, which has only the first) before the accumulator's. Images may stand at any address.
 * @{ */

/** @defgroup accumulate Accumulators
 * Sums, squares, products and running averages of frames, with and without a mask.
 * @{ */

/** @name Sums
 * Sum of frames: acc = acc + s, one float addition. Masked: acc = fma(m, s, acc) with m = 1 where the mask byte is
 * non-zero and 0 elsewhere; every pixel is rewritten, so a zero mask byte over an infinite or NaN source pixel gives
 * NaN, and a negative zero may become positive.
 * @{ */
/** Adds a frame to the accumulator. */
StatusCode rvxiAdd_8u32f_C1IR(const uint8_t *src, int32_t srcStep, float *acc, int32_t accStep, RoiSize roi);
StatusCode rvxiAdd_8s32f_C1IR(const int8_t *src, int32_t srcStep, float *acc, int32_t accStep, RoiSize roi);
StatusCode rvxiAdd_16u32f_C1IR(const uint16_t *src, int32_t srcStep, float *acc, int32_t accStep, RoiSize roi);
StatusCode rvxiAdd_8u32f_C1IMR(const uint8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, float *acc,
                               int32_t accStep, RoiSize roi);
StatusCode rvxiAdd_8s32f_C1IMR(const int8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, float *acc,
                               int32_t accStep, RoiSize roi);
StatusCode rvxiAdd_16u32f_C1IMR(const uint16_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, float *acc,
                                int32_t accStep, RoiSize roi);
StatusCode rvxiAdd_32f_C1IMR(const float *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, float *acc,
                             int32_t accStep, RoiSize roi);
/** @} */

/** @name Squares
 * Sum of squares: acc = fma(s, s, acc), rounded once. Masked: acc = fma(m, s * s, acc), the square rounded first.
 * @{ */
/** Adds a frame's squares to the accumulator. */
StatusCode rvxiAddSquare_8u32f_C1IR(const uint8_t *src, int32_t srcStep, float *acc, int32_t accStep, RoiSize roi);
StatusCode rvxiAddSquare_8s32f_C1IR(const int8_t *src, int32_t srcStep, float *acc, int32_t accStep, RoiSize roi);
StatusCode rvxiAddSquare_16u32f_C1IR(const uint16_t *src, int32_t srcStep, float *acc, int32_t accStep, RoiSize roi);
StatusCode rvxiAddSquare_32f_C1IR(const float *src, int32_t srcStep, float *acc, int32_t accStep, RoiSize roi);
StatusCode rvxiAddSquare_8u32f_C1IMR(const uint8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                     float *acc, int32_t accStep, RoiSize roi);
StatusCode rvxiAddSquare_8s32f_C1IMR(const int8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                     float *acc, int32_t accStep, RoiSize roi);
StatusCode rvxiAddSquare_16u32f_C1IMR(const uint16_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                      float *acc, int32_t accStep, RoiSize roi);
StatusCode rvxiAddSquare_32f_C1IMR(const float *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, float *acc,
                                   int32_t accStep, RoiSize roi);
/** @} */

/** @name Products
 * Sum of products of two frames: acc = fma(s1, s2, acc). Masked: acc = fma(m, s1 * s2, acc), the product rounded
 * first.
 * @{ */
/** Adds the products of two frames to the accumulator. */
StatusCode rvxiAddProduct_8u32f_C1IR(const uint8_t *src1, int32_t src1Step, const uint8_t *src2, int32_t src2Step,
                                     float *acc, int32_t accStep, RoiSize roi);
StatusCode rvxiAddProduct_8s32f_C1IR(const int8_t *src1, int32_t src1Step, const int8_t *src2, int32_t src2Step,
                                     float *acc, int32_t accStep, RoiSize roi);
StatusCode rvxiAddProduct_16u32f_C1IR(const uint16_t *src1, int32_t src1Step, const uint16_t *src2, int32_t src2Step,
                                      float *acc, int32_t accStep, RoiSize roi);
StatusCode rvxiAddProduct_32f_C1IR(const float *src1, int32_t src1Step, const float *src2, int32_t src2Step, float *acc,
                                   int32_t accStep, RoiSize roi);
StatusCode rvxiAddProduct_8u32f_C1IMR(const uint8_t *src1, int32_t src1Step, const uint8_t *src2, int32_t src2Step,
                                      const uint8_t *mask, int32_t maskStep, float *acc, int32_t accStep, RoiSize roi);
StatusCode rvxiAddProduct_8s32f_C1IMR(const int8_t *src1, int32_t src1Step, const int8_t *src2, int32_t src2Step,
                                      const uint8_t *mask, int32_t maskStep, float *acc, int32_t accStep, RoiSize roi);
StatusCode rvxiAddProduct_16u32f_C1IMR(const uint16_t *src1, int32_t src1Step, const uint16_t *src2, int32_t src2Step,
                                       const uint8_t *mask, int32_t maskStep, float *acc, int32_t accStep, RoiSize roi);
StatusCode rvxiAddProduct_32f_C1IMR(const float *src1, int32_t src1Step, const float *src2, int32_t src2Step,
                                    const uint8_t *mask, int32_t maskStep, float *acc, int32_t accStep, RoiSize roi);
/** @} */

/** @name Running averages
 * Running average: acc = fma(s - acc, alpha, acc), that is (1 - alpha) * acc + alpha * s with the difference rounded
 * first. Masked: acc = fma(m * alpha, s - acc, acc). alpha is used as given; values outside 0..1 extrapolate.
 * @{ */
/** Moves the accumulator toward a frame. */
StatusCode rvxiAddWeighted_8u32f_C1IR(const uint8_t *src, int32_t srcStep, float *acc, int32_t accStep, RoiSize roi,
                                      float alpha);
StatusCode rvxiAddWeighted_8s32f_C1IR(const int8_t *src, int32_t srcStep, float *acc, int32_t accStep, RoiSize roi,
                                      float alpha);
StatusCode rvxiAddWeighted_16u32f_C1IR(const uint16_t *src, int32_t srcStep, float *acc, int32_t accStep, RoiSize roi,
                                       float alpha);
StatusCode rvxiAddWeighted_32f_C1IR(const float *src, int32_t srcStep, float *acc, int32_t accStep, RoiSize roi,
                                    float alpha);
StatusCode rvxiAddWeighted_8u32f_C1IMR(const uint8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                       float *acc, int32_t accStep, RoiSize roi, float alpha);
StatusCode rvxiAddWeighted_8s32f_C1IMR(const int8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                       float *acc, int32_t accStep, RoiSize roi, float alpha);
StatusCode rvxiAddWeighted_16u32f_C1IMR(const uint16_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                        float *acc, int32_t accStep, RoiSize roi, float alpha);
StatusCode rvxiAddWeighted_32f_C1IMR(const float *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                     float *acc, int32_t accStep, RoiSize roi, float alpha);
/** @} */
/** Blends two images. dst = fma(src1 - src2, alpha, src2): the first source has weight alpha, the second 1 - alpha. */
StatusCode rvxiAddWeighted_32f_C1R(const float *src1, int32_t src1Step, const float *src2, int32_t src2Step, float *dst,
                                   int32_t dstStep, RoiSize roi, float alpha);
/** @} */

/** @defgroup abs_diff Absolute differences
 * How much two images differ, or an image and a constant, pixel by pixel.
 * @{ */

/** @name Of two images
 * Absolute difference of two images: dst = |src1 - src2|, exact for integers; for 32f the difference is rounded and its
 * sign cleared. C3: three interleaved channels.
 * @{ */
/** Absolute difference of two images. */
StatusCode rvxiAbsDiff_8u_C1R(const uint8_t *src1, int32_t src1Step, const uint8_t *src2, int32_t src2Step,
                              uint8_t *dst, int32_t dstStep, RoiSize roi);
StatusCode rvxiAbsDiff_8u_C3R(const uint8_t *src1, int32_t src1Step, const uint8_t *src2, int32_t src2Step,
                              uint8_t *dst, int32_t dstStep, RoiSize roi);
StatusCode rvxiAbsDiff_16u_C1R(const uint16_t *src1, int32_t src1Step, const uint16_t *src2, int32_t src2Step,
                               uint16_t *dst, int32_t dstStep, RoiSize roi);
StatusCode rvxiAbsDiff_32f_C1R(const float *src1, int32_t src1Step, const float *src2, int32_t src2Step, float *dst,
                               int32_t dstStep, RoiSize roi);
/** @} */

/** @name Of an image and a constant
 * Absolute difference of an image and a constant: dst = |src - value|. The integer members clamp the constant to the
 * pixel type's range first.
 * @{ */
/** Absolute difference of an image and a constant. */
StatusCode rvxiAbsDiffC_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                               int32_t value);
StatusCode rvxiAbsDiffC_16u_C1R(const uint16_t *src, int32_t srcStep, uint16_t *dst, int32_t dstStep, RoiSize roi,
                                int32_t value);
StatusCode rvxiAbsDiffC_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                float value);
/** @} */
/** @} */
/** @} */

#ifdef __cplusplus
}
#endif

#endif
