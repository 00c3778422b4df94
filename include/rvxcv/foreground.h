/** @file
 * Motion: background models. Three models of what a fixed camera sees, with one interface. */
#ifndef RVXCV_FOREGROUND_H
#define RVXCV_FOREGROUND_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup foreground Background models
 * The foreground of a fixed camera, frame by frame: what moves or was left behind.
 *
 *     rvxiForegroundGaussian     one Gaussian a pixel: the fastest; indoor scenes
 *     rvxiFGMM                   a mixture of Gaussians: swaying trees, flicker
 *     rvxiForegroundHistogram    a table of colours with a Bayes decision: backgrounds with few distinct colours
 *
 * The working function decides for each pixel with the model as it is and writes ForegroundNo, ForegroundShadow or
 * ForegroundYes; then, if rate > 0, it learns from the pixel and its own decision. rate = 0 only decides and does not
 * touch the state. Update learns from the pixel and the caller's decision (map byte 0: background, else foreground), so
 * the caller may decide with rate 0, clean the map up (remove specks, add regions where nothing shall be learned) and
 * learn from that. Deciding with rate 0 and then updating with the map obtained equals one call of the working
 * function, to the bit. GetBackground writes the picture of the background.
 *
 * A pixel without a model decides ForegroundNo, and its first sample makes the model, whatever the map says. A good
 * rate for frame n, counted from 0, is max(1 / (n + 1), final rate). Pixels do not depend on each other.
 *
 * Below, s_c is the sample of channel c, C the number of channels, q = 1 for C = 1 and 0.333333343 for C = 3;
 * t2 = threshold threshold; clamp(v) = max(varMin, min(varMax, v)). All of it is single precision, every operation
 * rounds once, fma once for both; a sum over the channels is e0 e0, then fma(e1, e1, .), then fma(e2, e2, .). Rates
 * above 0 and below 1e-30 give results that are not fixed.
 *
 * Shadow (Gaussian, FGMM; off when `shadow` is 0): against a mean m with variance v, num = sum s m, den = sum m m, a
 * pixel is in shadow when den > 0, num < den, num >= shadow den and, with g = num / den and e_c = fma(g, m_c, -s_c),
 * sum e e < (t2 v) (g g): a darker pixel of the same colour (A. Prati, I. Mikic, M. Trivedi, R. Cucchiara, "Detecting
 * Moving Shadows", IEEE PAMI 25(7), 2003). For one channel every darkening down to the ratio counts. For learning it is
 * foreground.
 *
 * Records. 128 bytes, then the model: GetSize tells the bytes of both. A record lies in the caller's memory at an
 * address that is a multiple of 8 (64 is fastest) and holds no pointers: it may be copied with memcpy or written to a
 * file. The fields may be read, not written. Init clears the model. One call at a time may use a record; a failing call
 * leaves it as it was.
 *
 * Status codes of GetSize and Init, in the order of the checks: StatusNullPointer; StatusBadSize (width or height below
 * 1); StatusBadChannelCount (not 1 or 3); StatusOutOfRange (a parameter is NaN or outside its range); StatusBadSize
 * (the size does not fit in 32 bits).
 *
 * Of the working functions and Update: StatusNullPointer; StatusBadContext (not a record of this model); StatusBadSize
 * (roi, then roi not the record's); StatusBadStep (a step does not cover its row); StatusBadChannelCount (the record is
 * one for another number of channels); StatusOutOfRange (rate not in 0..1).
 *
 * Of GetBackground: the same without the rate; then StatusError (no call has learned yet).
 * @{ */

/** Decisions: the values of a map. */
enum {
    ForegroundNo = 0,       /**< background */
    ForegroundShadow = 127, /**< background in shadow */
    ForegroundYes = 255     /**< foreground */
};

/** @defgroup foreground_gaussian Single Gaussian
 * One Gaussian a pixel: the fastest of the three models.
 *
 * C. R. Wren, A. Azarbayejani, T. Darrell, A. P. Pentland, "Pfinder", IEEE PAMI 19(7), 1997. A pixel has a mean a
 * channel and one variance v; v = 0: no model. d_c = s_c - m_c, D = sum d d.
 *
 *     decide                   v = 0 or D < t2 v: ForegroundNo; else shadow or not
 *     learn, no model yet      m = s, v = varInit, at any rate above 0
 *     learn, background        m_c = fma(rate, d_c, m_c), v = clamp(fma(rate, D q - v, v))
 *     learn, foreground        a = rate foregroundRate, m_c = fma(a, d_c, m_c), v is kept
 *
 * The background picture are the means, to nearest even. Ranges: threshold > 0; 0 < varMin <= varInit <= varMax <
 * infinity; foregroundRate 0..1; shadow 0..1 without 1. Size: 128 + 4 (C + 1) roundup8(W) H.
 * @{ */

/** Parameters of the single Gaussian. */
typedef struct ForegroundGaussianParams {
    float threshold;      /**< deviations from the mean up to which a pixel is background; usual: 3 */
    float varInit;        /**< variances in squared levels; usual: 225 */
    float varMin,         /**< usual: 16 */
        varMax;           /**< usual: 1125 */
    float foregroundRate; /**< factor on the rate where foreground is learned; usual: 0.1f */
    float shadow;         /**< darkest shadow as a part of the background; usual: 0, none */
} ForegroundGaussianParams;

/** The head of a record. */
typedef struct ForegroundGaussianState {
    int32_t tag;                     /**< 0x4b617392 */
    int32_t width,                   /**< of the region */
        height,                      /**< of the region */
        channels;                    /**< 1 or 3 */
    int32_t frames;                  /**< calls that learned; stops at INT32_MAX */
    ForegroundGaussianParams params; /**< as given to Init */
    int32_t reserved[21];            /**< 0 */
} ForegroundGaussianState;

/** @name Model of one Gaussian
 * @{ */
/** The model of one Gaussian a pixel: size, start, decision, learning, background picture. */
StatusCode rvxiForegroundGaussianGetSize_8u(RoiSize roi, int32_t channels, const ForegroundGaussianParams *params,
                                            int32_t *stateSize);
StatusCode rvxiForegroundGaussianInit_8u(RoiSize roi, int32_t channels, const ForegroundGaussianParams *params,
                                         ForegroundGaussianState *state);
StatusCode rvxiForegroundGaussian_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                         RoiSize roi, float rate, ForegroundGaussianState *state);
StatusCode rvxiForegroundGaussian_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                         RoiSize roi, float rate, ForegroundGaussianState *state);
StatusCode rvxiForegroundGaussianUpdate_8u_C1R(const uint8_t *src, int32_t srcStep, const uint8_t *map, int32_t mapStep,
                                               RoiSize roi, float rate, ForegroundGaussianState *state);
StatusCode rvxiForegroundGaussianUpdate_8u_C3R(const uint8_t *src, int32_t srcStep, const uint8_t *map, int32_t mapStep,
                                               RoiSize roi, float rate, ForegroundGaussianState *state);
StatusCode rvxiForegroundGaussianGetBackground_8u_C1R(uint8_t *dst, int32_t dstStep, RoiSize roi,
                                                      const ForegroundGaussianState *state);
StatusCode rvxiForegroundGaussianGetBackground_8u_C3R(uint8_t *dst, int32_t dstStep, RoiSize roi,
                                                      const ForegroundGaussianState *state);
/** @} */
/** @} */

/** @defgroup foreground_mixture Mixture of Gaussians
 * Several Gaussians a pixel: backgrounds that sway or flicker.
 *
 * C. Stauffer and W. E. L. Grimson, "Adaptive background mixture models for real-time tracking", CVPR 1999, with the
 * updates of Z. Zivkovic, ICPR 2004. K components, each with a weight w, a variance v and a mean a channel, in order of
 * falling weight; w = 0: empty. D_k as above. k* is the first k with w_k > 0 and D_k < t2 v_k; before(k) = w_0 + ... +
 * w_{k-1}.
 *
 *     decide    w_0 = 0, or k* exists and before(k*) < backgroundRatio: ForegroundNo. Else shadow, where a component
 *               with w_k > 0 and before(k) < backgroundRatio passes the test. Else ForegroundYes.
 *     learn     a = rate (background, or no model yet) or rate foregroundRate (foreground); a = 0: nothing.
 *               1. Every k with w_k > 0 (k < K - 1 only, if there is no k*): w_k = fma(a, o - w_k, w_k) - a prior, o
 *                  being 1 for k* and 0 for others; not above 0: the component becomes empty.
 *               2. k*: rho = min(a / w_k, 1), m_c = fma(rho, d_c, m_c), v = clamp(fma(rho, D q - v, v)).
 *                  No k*: component K - 1 becomes w = a, m = s, v = varInit.
 *               3. Every w_k is multiplied by 1 / (w_0 + ... + w_{K-1}).
 *               4. For k = K - 1 down to 1: if w_k > w_{k-1}, the two components change places.
 *
 * The background picture are the means of component 0, to nearest even. Ranges: those of the single Gaussian;
 * components 1..8; backgroundRatio 0..1 without 0; prior 0..1 without 1. Size: 128 + 4 K (C + 2) roundup8(W) H.
 * @{ */

/** Parameters of the mixture. */
typedef struct FGMMParams {
    int32_t components;    /**< usual: 3 */
    float threshold;       /**< usual: 4 */
    float varInit;         /**< usual: 225 */
    float varMin,          /**< usual: 16 */
        varMax;            /**< usual: 1125 */
    float foregroundRate;  /**< usual: 1 */
    float shadow;          /**< usual: 0.5f */
    float backgroundRatio; /**< part of the time for which a pixel shows its background; usual: 0.9f */
    float prior;           /**< above 0, components that are not seen again vanish; usual: 0 */
} FGMMParams;

/** The head of a record. */
typedef struct FGMMState {
    int32_t tag;          /**< 0x4b617393 */
    int32_t width,        /**< of the region */
        height,           /**< of the region */
        channels;         /**< 1 or 3 */
    int32_t frames;       /**< calls that learned; stops at INT32_MAX */
    FGMMParams params;    /**< as given to Init */
    int32_t reserved[18]; /**< 0 */
} FGMMState;

/** @name Model of several Gaussians
 * @{ */
/** The mixture of Gaussians: size, start, decision, learning, background picture. */
StatusCode rvxiFGMMGetSize_8u(RoiSize roi, int32_t channels, const FGMMParams *params, int32_t *stateSize);
StatusCode rvxiFGMMInit_8u(RoiSize roi, int32_t channels, const FGMMParams *params, FGMMState *state);
StatusCode rvxiFGMM_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi, float rate,
                           FGMMState *state);
StatusCode rvxiFGMM_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi, float rate,
                           FGMMState *state);
StatusCode rvxiFGMMUpdate_8u_C1R(const uint8_t *src, int32_t srcStep, const uint8_t *map, int32_t mapStep, RoiSize roi,
                                 float rate, FGMMState *state);
StatusCode rvxiFGMMUpdate_8u_C3R(const uint8_t *src, int32_t srcStep, const uint8_t *map, int32_t mapStep, RoiSize roi,
                                 float rate, FGMMState *state);
StatusCode rvxiFGMMGetBackground_8u_C1R(uint8_t *dst, int32_t dstStep, RoiSize roi, const FGMMState *state);
StatusCode rvxiFGMMGetBackground_8u_C3R(uint8_t *dst, int32_t dstStep, RoiSize roi, const FGMMState *state);
/** @} */
/** @} */

/** @defgroup foreground_histogram Colour histogram
 * A table of colours a pixel: backgrounds with few distinct colours.
 *
 * L. Li, W. Huang, I. Y. H. Gu, Q. Tian, "Foreground object detection from videos containing complex background", ACM
 * Multimedia 2003, with colours as features. N entries, each with a colour, p (how often seen) and b (how often seen as
 * background; never above p), 16 bits, 65535 standing for always; in order of falling p; p = 0: empty. All in integers.
 * An entry matches when p > 0 and no channel differs by more than tolerance.
 *
 *     decide    P and B = sums of p and b over the matching ones of the first `principal` entries, saturated at 65535.
 *               p_0 = 0 or B > P - B: ForegroundNo, else ForegroundYes.
 *     learn     A = floor((double)rate 65536 + 0.5), within 1..65535; j = the first matching entry of all N, before
 *               step 1. No model yet: entry 0 becomes (s, 65535, 65535), and that is all.
 *               1. Every entry: p = p - (p A >> 16), b = b - (b A >> 16).
 *               2. j exists: p_j + A, and b_j + A if the decision is background, saturated. Else entry N - 1 becomes
 *                  (s, A, A) if the decision is background, (s, A, 0) if not.
 *               3. For i = N - 1 down to 1: if p_i > p_{i-1}, the two entries change places.
 *               4. F = sum of p - b over the first `principal` entries, saturated. F > floor((double)absorb 65535 +
 *                  0.5): b = p - b in every entry: what was foreground for long is background now.
 *
 * Motion that repeats (two colours in turn) is learned from cleaned maps, not from own decisions. The background
 * picture is the colour of the entry with the largest b, the first of equals. Ranges: entries 1..32; principal
 * 1..entries; tolerance 0..255; absorb 0.5..1 (1: nothing is absorbed). Size: 128 + N (C + 4) roundup32(W) H.
 * @{ */

/** Parameters of the histogram. */
typedef struct ForegroundHistogramParams {
    int32_t entries;   /**< usual: 8 */
    int32_t principal; /**< entries that decide; usual: 6 */
    int32_t tolerance; /**< levels; usual: 10 */
    float absorb;      /**< part of the time from which on foreground becomes background; usual: 0.8f */
} ForegroundHistogramParams;

/** The head of a record. */
typedef struct ForegroundHistogramState {
    int32_t tag;                      /**< 0x4b617394 */
    int32_t width,                    /**< of the region */
        height,                       /**< of the region */
        channels;                     /**< 1 or 3 */
    int32_t frames;                   /**< calls that learned; stops at INT32_MAX */
    ForegroundHistogramParams params; /**< as given to Init */
    int32_t reserved[23];             /**< 0 */
} ForegroundHistogramState;

/** @name Model of colours
 * @{ */
/** The table of colours: size, start, decision, learning, background picture. */
StatusCode rvxiForegroundHistogramGetSize_8u(RoiSize roi, int32_t channels, const ForegroundHistogramParams *params,
                                             int32_t *stateSize);
StatusCode rvxiForegroundHistogramInit_8u(RoiSize roi, int32_t channels, const ForegroundHistogramParams *params,
                                          ForegroundHistogramState *state);
StatusCode rvxiForegroundHistogram_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                          RoiSize roi, float rate, ForegroundHistogramState *state);
StatusCode rvxiForegroundHistogram_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                          RoiSize roi, float rate, ForegroundHistogramState *state);
StatusCode rvxiForegroundHistogramUpdate_8u_C1R(const uint8_t *src, int32_t srcStep, const uint8_t *map,
                                                int32_t mapStep, RoiSize roi, float rate,
                                                ForegroundHistogramState *state);
StatusCode rvxiForegroundHistogramUpdate_8u_C3R(const uint8_t *src, int32_t srcStep, const uint8_t *map,
                                                int32_t mapStep, RoiSize roi, float rate,
                                                ForegroundHistogramState *state);
StatusCode rvxiForegroundHistogramGetBackground_8u_C1R(uint8_t *dst, int32_t dstStep, RoiSize roi,
                                                       const ForegroundHistogramState *state);
StatusCode rvxiForegroundHistogramGetBackground_8u_C3R(uint8_t *dst, int32_t dstStep, RoiSize roi,
                                                       const ForegroundHistogramState *state);
/** @} */
/** @} */
/** @} */

#ifdef __cplusplus
}
#endif

#endif
