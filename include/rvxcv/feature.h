/** @file
 * Feature detection. */
#ifndef RVXCV_FEATURE_H
#define RVXCV_FEATURE_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup feature Features
 * Edges, corners, peaks and lines.
 * @{ */

/** @defgroup canny Canny edges
 * Thin lines where a picture changes most.
 *
 * Edges by the method of J. Canny, "A Computational Approach to Edge Detection", IEEE PAMI 8(6), 1986: gradient
 * magnitude, suppression of all but local maxima across the edge, and hysteresis with two thresholds. The output is 255
 * on edge pixels and 0 elsewhere.
 *
 * Magnitude m = |dx| + |dy|, or the Euclidean norm where the caller chooses it. A pixel is a candidate when it passes
 * the low threshold and is a local maximum in the direction of its gradient, which is quantised to four: horizontal
 * when |dx| > tan 67.5 degrees |dy| (m greater than its left neighbour's and not less than its right one's), vertical
 * when |dx| < tan 22.5 degrees |dy| (greater than above, not less than below), else one of the diagonals (greater than
 * both). So of two equal neighbours the right or lower one falls, and on a diagonal both. Pixels outside the region
 * have m = 0. Candidates with m > high are edges, and so are all candidates that touch an edge on one of eight sides.
 * @{ */

/** Norms of rvxiCannyBorder_8u_C1R and its derivative filters. */
enum {
    CannyNormL1 = 2,      /**< m = |dx| + |dy| */
    CannyNormL2 = 4,      /**< the Euclidean norm */
    CannyFilterSobel = 2, /**< Sobel, 3x3 or 5x5 */
    CannyFilterScharr = 5 /**< Scharr, 3x3 */
};

/** @name From derivatives
 * Edges from two derivative images. 16s: pixels with m > low truncated to an integer take part; 32f: with m >= low.
 * Status codes: StatusNullPointer, StatusBadSize, StatusBadStep, StatusStepNotMultiple (derivative steps),
 * StatusBadArgument (low < 0 or low > high).
 * @{ */
/** Edges from two derivative images. */
StatusCode rvxiCanny_16s8u_C1R(const int16_t *dx, int32_t dxStep, const int16_t *dy, int32_t dyStep, uint8_t *dst,
                               int32_t dstStep, RoiSize roi, float low, float high, uint8_t *buffer);
StatusCode rvxiCanny_32f8u_C1R(const float *dx, int32_t dxStep, const float *dy, int32_t dyStep, uint8_t *dst,
                               int32_t dstStep, RoiSize roi, float low, float high, uint8_t *buffer);
/** @} */

/** Bytes of scratch for the two functions above. With P = (width + 2) * (height + 2): 5 P + 16 width + 160, and
 * 9 P + 16 width + 160 when a side is 65533 or more. StatusNullPointer, StatusBadSize. */
StatusCode rvxiCannyGetSize(RoiSize roi, int32_t *size);

/** Edges of a grey image. The derivatives are dx = right - left and dy = below - above: filter CannyFilterSobel with
 * mask 3x3 or 5x5, or CannyFilterScharr with 3x3. Border kinds: constant, replicate, in memory, side flags. With
 * CannyNormL1 the result equals rvxiCanny_16s8u_C1R on the two derivative images; with CannyNormL2 pixels with m >= low
 * take part.
 * Status codes: StatusBadMaskSize (mask neither 33 nor 55, or 55 with Scharr), StatusNullPointer, StatusBadSize,
 * StatusBadStep, StatusBadArgument (filter, then norm, then low < 0 or low > high), StatusBadBorder. */
StatusCode rvxiCannyBorder_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                  int32_t filter, MaskCode mask, BorderKind border, uint8_t borderValue, int32_t norm,
                                  uint8_t *buffer, float low, float high);

/** Bytes of scratch for rvxiCannyBorder_8u_C1R. With a = 2 for 3x3 and 4 for 5x5, Wa = width + a and Ha = height + a:
 * Wa (Ha + 16) + 4 Wa Ha + 64. The filter and the data type do not change it. StatusNullPointer, StatusBadSize,
 * StatusBadMaskSize. */
StatusCode rvxiCannyBorderGetSize(RoiSize roi, int32_t filter, MaskCode mask, PixelTypeCode type, int32_t *size);
/** @} */

/** @defgroup corner_measure Corner measure
 * The smaller eigenvalue of the gradient covariance in a block around every pixel: the measure of how well a point can
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
 * StatusStepNotMultiple; StatusBadArgument (kernel); StatusBadSize (aperture); StatusBadSize (block).
 * @{ */

/** Derivatives of the corner measure. */
enum {
    MinEigenValSobel = 0, /**< aperture 3 or 5 */
    MinEigenValScharr = 1 /**< aperture 3 */
};

/** @name Measure
 * @{ */
/** The smaller eigenvalue at every pixel. */
StatusCode rvxiMinEigenVal_8u32f_C1R(const uint8_t *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                     int32_t kernel, int32_t aperture, int32_t block, uint8_t *buffer);
StatusCode rvxiMinEigenVal_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                   int32_t kernel, int32_t aperture, int32_t block, uint8_t *buffer);
/** @} */

/** @name Scratch of the measure
 * Bytes of scratch for any kernel at this aperture and block. StatusNullPointer; StatusBadSize (width, height, aperture
 * or block, or a size that does not fit).
 * @{ */
/** Bytes of scratch. */
StatusCode rvxiMinEigenValGetBufferSize_8u32f_C1R(RoiSize roi, int32_t aperture, int32_t block, int32_t *size);
StatusCode rvxiMinEigenValGetBufferSize_32f_C1R(RoiSize roi, int32_t aperture, int32_t block, int32_t *size);
/** @} */
/** @} */

/** @defgroup eigen Eigenvectors, Harris measure, line suppression
 * Three more readings of the gradient covariance of which the corner measure above is the smaller eigenvalue: a, b, c
 * are formed by its steps 1 to 3. Dx is right minus left and Dy below minus above with every kernel, x points right and
 * y down. The Harris measure and line suppression take their derivatives by one of three filters, with the scale s:
 *
 *     DerivativeSobel     aperture 3 or 5   1 / 4080 or 1 / 65280
 *     DerivativeScharr    aperture 3        1 / 4080 * 0.6125f
 *     DerivativeCentral   aperture 3        1 / 255       right - left and below - above, with replicated edges: a ramp
 *                                                         measures the same as with 3x3 Sobel
 *
 * Below, d = a - b, t = 4 * (c * c), r = sqrt(fma(d, d, t)), tr = a + b, and h = s * 0.5f; every operation on floats is
 * rounded, only what is written fma is fused. Images must not overlap unless a function says so.
 * @{ */

/** @name Eigenvalues and eigenvectors
 * Eigenvalues and eigenvectors: six floats a pixel, l1, l2, x1, y1, x2, y2. l1 = h * (tr + r) is the larger eigenvalue,
 * l2 = h * (tr - r) the smaller one, equal to rvxiMinEigenVal's result to the bit. (x1, y1) is the direction in which
 * the image changes most, of length 1 and with x1 >= 0, and (x2, y2) = (-y1, x1). Where r is 0, (x1, y1) = (1, 0). Else
 * with e = c + c
 *
 *     d >= 0:      u = (d + r, e)
 *     otherwise:   u = (|e|, r - d), or (|e|, -(r - d)) where e < 0
 *     (x1, y1) = (ux / n, uy / n),   n = sqrt(fma(ux, ux, uy * uy)).
 *
 * kernel: MinEigenValSobel or MinEigenValScharr. aperture: 3, or 5 with Sobel. block: 3 or 5.
 * Status codes, in the order of the checks: StatusNullPointer; StatusBadSize (width or height); StatusBadStep (a row of
 * the destination is 24 * width bytes); StatusStepNotMultiple; StatusBadArgument (kernel); StatusBadSize (aperture);
 * StatusBadSize (block).
 * @{ */
/** Eigenvalues and eigenvectors of the gradient covariance. */
StatusCode rvxiEigenValsVecs_8u32f_C1R(const uint8_t *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                       int32_t kernel, int32_t aperture, int32_t block, uint8_t *buffer);
StatusCode rvxiEigenValsVecs_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                     int32_t kernel, int32_t aperture, int32_t block, uint8_t *buffer);
/** @} */

/** @name Harris measure
 * The measure of C. Harris and M. Stephens, "A Combined Corner and Edge Detector", Alvey Vision Conference 1988:
 *
 *     dst = (s * s) * fma(-k, tr * tr, fma(a, b, -(c * c))),
 *
 * that is l1 * l2 - k * (l1 + l2)^2: positive at corners, negative on edges. k is usually 0.04 to 0.06.
 * Status codes, in the order of the checks: StatusNullPointer; StatusBadSize (width or height); StatusBadStep;
 * StatusStepNotMultiple; StatusBadFilterKind; StatusBadSize (aperture); StatusBadSize (block); StatusOutOfRange (k
 * negative or NaN); StatusInPlaceNotSupported (src is dst).
 * @{ */
/** The Harris measure of every pixel. */
StatusCode rvxiHarrisCorner_8u32f_C1R(const uint8_t *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                      int32_t filter, int32_t aperture, int32_t block, float k, uint8_t *buffer);
StatusCode rvxiHarrisCorner_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                    int32_t filter, int32_t aperture, int32_t block, float k, uint8_t *buffer);
/** @} */

/** Corner candidates without those that lie on an edge: a candidate (a pixel of the map that is not zero) is copied to
 * dst where max(tr - r, 0) >= ratio * (tr + r), that is where the smaller eigenvalue is at least `ratio` of the larger;
 * elsewhere dst is 0. A ratio of 0 keeps all, 0.1 is usual; a candidate on a flat spot is kept. dst may be map, with
 * the same step. Few candidates take less time than many.
 * Status codes, in the order of the checks: StatusNullPointer; StatusBadSize (width or height); StatusBadStep;
 * StatusBadFilterKind; StatusBadSize (aperture); StatusBadSize (block); StatusOutOfRange (ratio not in 0..1, or NaN);
 * StatusInPlaceNotSupported (src is dst). */
StatusCode rvxiLineSuppression_8u_C1R(const uint8_t *src, int32_t srcStep, const uint8_t *map, int32_t mapStep,
                                      uint8_t *dst, int32_t dstStep, RoiSize roi, int32_t filter, int32_t aperture,
                                      int32_t block, float ratio, uint8_t *buffer);

/** @name Scratch of the three
 * Bytes of scratch for any kernel or filter at this aperture and block: those of the corner measure (line suppression:
 * of 8u sources). StatusNullPointer; StatusBadSize (width, height, aperture or block, or a size that does not fit).
 * @{ */
/** Bytes of scratch. */
StatusCode rvxiEigenValsVecsGetBufferSize_8u32f_C1R(RoiSize roi, int32_t aperture, int32_t block, int32_t *size);
StatusCode rvxiEigenValsVecsGetBufferSize_32f_C1R(RoiSize roi, int32_t aperture, int32_t block, int32_t *size);
StatusCode rvxiHarrisCornerGetBufferSize_8u32f_C1R(RoiSize roi, int32_t aperture, int32_t block, int32_t *size);
StatusCode rvxiHarrisCornerGetBufferSize_32f_C1R(RoiSize roi, int32_t aperture, int32_t block, int32_t *size);
StatusCode rvxiLineSuppressionGetBufferSize_8u_C1R(RoiSize roi, int32_t aperture, int32_t block, int32_t *size);
/** @} */
/** @} */

/** @defgroup peaks Peak search
 * Local extrema of a signed response image, at least `border` pixels away from every edge, in scan order (x, y). A
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
 * the width); StatusStepNotMultiple; StatusBadArgument (neighbourhood).
 * @{ */

/** Neighbourhoods of a peak. */
enum {
    PeakSquare = 0, /**< all eight neighbours */
    PeakCross = 1   /**< left, right, above, below */
};

/** @name Search
 * @{ */
/** Finds the peaks of a response image. */
StatusCode rvxiFindPeaks3x3_32s_C1R(const int32_t *src, int32_t srcStep, RoiSize roi, int32_t threshold, Point2i *peaks,
                                    int32_t capacity, int32_t *count, int32_t neighbourhood, int32_t border,
                                    uint8_t *buffer);
StatusCode rvxiFindPeaks3x3_32f_C1R(const float *src, int32_t srcStep, RoiSize roi, float threshold, Point2i *peaks,
                                    int32_t capacity, int32_t *count, int32_t neighbourhood, int32_t border,
                                    uint8_t *buffer);
/** @} */

/** @name Scratch of the search
 * Bytes of scratch for an image's width: ((width + 5) >> 2) * 128 + 32. StatusNullPointer, StatusBadSize (width below 1
 * or a size that does not fit).
 * @{ */
/** Bytes of scratch. */
StatusCode rvxiFindPeaks3x3GetBufferSize_32s_C1R(int32_t width, int32_t *size);
StatusCode rvxiFindPeaks3x3GetBufferSize_32f_C1R(int32_t width, int32_t *size);
/** @} */
/** @} */

/** @defgroup fast FAST corners
 * Corners found by looking at a circle around every pixel.
 *
 * Corners found by comparing a pixel p with the points of a circle around it (E. Rosten and T. Drummond, "Machine
 * Learning for High-Speed Corner Detection", ECCV 2006; other circles and arcs as in E. Rosten, R. Porter and T.
 * Drummond, "Faster and Better", IEEE PAMI 32(1), 2010). The circle of radius 1, 2 or 3 has 8, 12 or 16 points, as
 * (dx, dy) clockwise from the top:
 *
 *     1: (0,-1) (1,-1) (1,0) (1,1) (0,1) (-1,1) (-1,0) (-1,-1)
 *     2: (0,-2) (1,-2) (2,-1) (2,0) (2,1) (1,2) (0,2) (-1,2) (-2,1) (-2,0) (-2,-1) (-1,-2)
 *     3: (0,-3) (1,-3) (2,-2) (3,-1) (3,0) (3,1) (2,2) (1,3) (0,3) (-1,3) (-2,2) (-3,1) (-3,0) (-3,-1) (-2,-2) (-1,-3)
 *
 * `arc` is the number of neighbouring points of the closed circle that must agree: 5..8, 7..12 or 9..16. The contrast
 * of such a run is the larger of min(I(q) - I(p)) and min(I(p) - I(q)) over its points q, the score S of the pixel the
 * largest contrast of all runs, at least 0. A pixel is a corner when S > threshold: S - 1 is the largest threshold at
 * which it still is one, and S does not depend on the threshold. Pixels nearer than the radius to an edge of the region
 * are no corners.
 * @{ */

/** Flags of the map. FastScore: corners are marked with their scores instead of 255. FastNonMax, only together with
 * FastScore: a corner stays when its score is greater than those at the four neighbours before it in scan order (above
 * left, above, above right, left) and not less than those at the four behind; what is no corner counts 0. */
enum {
    FastScore = 1, /**< scores instead of 255 */
    FastNonMax = 2 /**< only the strongest of neighbours */
};

/** A corner: where it is and how strong. */
typedef struct FastCorner {
    int32_t x,     /**< column */
        y;         /**< row */
    int32_t score; /**< the map's value, 1..255 */
} FastCorner;

/** Filled by Init; the fields may be read, not written. It stands at a multiple of 8, may be copied, and serves images
 * of any size, in several threads at once. */
typedef struct FastNSpec {
    int32_t tag;         /**< 0x4b617390 */
    int32_t radius,      /**< of the circle */
        points,          /**< of the circle */
        arc;             /**< neighbouring points that must agree */
    int32_t threshold,   /**< a corner's score exceeds it */
        flags;           /**< FastScore, FastNonMax */
    int32_t reserved[2]; /**< 0 */
    int8_t circle[32];   /**< dx, dy of each point, then 0 */
} FastNSpec;

/** Bytes of a record: 64. StatusNullPointer; StatusOutOfRange (radius, then arc). */
StatusCode rvxiFastNGetSize_8u_C1R(int32_t radius, int32_t arc, int32_t *specSize);

/** Fills a record. A threshold of 255 or more finds nothing. Status codes, in the order of the checks:
 * StatusNullPointer; StatusBadArgument (flags outside 0..3, or FastNonMax without FastScore); StatusOutOfRange (radius,
 * then arc); StatusBadThreshold (threshold below 0). */
StatusCode rvxiFastNInit_8u_C1R(int32_t radius, int32_t arc, int32_t threshold, int32_t flags, FastNSpec *spec);

/** Bytes of scratch, with w = width + 2 rounded up to a multiple of 32: 7 w + 64. StatusNullPointer; StatusBadSize
 * (width or height below 1, or a size that does not fit). */
StatusCode rvxiFastNGetBufferSize_8u_C1R(RoiSize roi, int32_t *bufferSize);

/** The map of corners: every pixel of dst is written, with 0 where there is no corner. *count is the number of the
 * others. A region that the circle does not fit into has none. Source and map must not overlap.
 * Status codes, in the order of the checks: StatusNullPointer; StatusBadContext (the record does not carry its tag);
 * StatusBadSize; StatusBadStep. */
StatusCode rvxiFastN_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                            int32_t *count, const FastNSpec *spec, uint8_t *buffer);

/** The pixels of a map that are not 0, in scan order; any map will do. *count is how many were stored.
 * StatusResultTruncated when there are more than `capacity`: the first ones are stored.
 * Status codes, in the order of the checks: StatusNullPointer; StatusBadSize (width, height or capacity below 1);
 * StatusBadStep. */
StatusCode rvxiFastN2DToVec_8u_C1R(const uint8_t *src, int32_t srcStep, RoiSize roi, FastCorner *corners,
                                   int32_t capacity, int32_t *count);
/** @} */

/** @defgroup hough Hough lines
 * Straight lines through the marked pixels of an image.
 *
 * Straight lines in a two-level image (not zero: marked), by the transform of R. O. Duda and P. E. Hart, "Use of the
 * Hough Transformation to Detect Lines and Curves in Pictures", CACM 15(1), 1972. A line is the pair (rho, theta) of
 * x cos(theta) + y sin(theta) = rho; the resolution divides rho and theta into cells.
 *
 * There are nTheta + 1 angles, nTheta = 3.14159f / resolution.theta truncated, and nRho = (2 (width + height) + 1) /
 * resolution.rho truncated, both in single precision; half = (nRho - 1) / 2, truncated. The angles of the tables are
 * accumulated in single precision. With C and S the integer parts of cos(theta) and sin(theta) times 1024 /
 * resolution.rho, the marked pixel (x, y) votes at each angle for the cell
 *
 *     ((q + 512) >> 10) + half,   q = x C + y S rounded to the nearest integer
 *
 * (two products, one sum, in single precision; the shift rounds down). Cells run from -1 to nRho; where rounding in an
 * image of millions of columns could lead past them, the vote goes to the last one. A cell is a peak when its votes
 * exceed the threshold, exceed those at the previous rho and at both neighbouring angles, and are not fewer than those
 * at the next rho. Peaks are sorted by votes, the strongest first; among equals the smaller angle, then the smaller
 * rho comes first.
 * @{ */

/** The strongest lines: rho = resolution.rho * (cell - half), theta = resolution.theta * angle. *lineCount is how many
 * were written. StatusResultTruncated when more peaks were found than maxLineCount.
 * Status codes, in the order of the checks: StatusNullPointer; StatusBadStep (below 1); StatusBadSize (width, height or
 * maxLineCount below 1); StatusBadArgument (resolution.rho not above 0 or above width + height, resolution.theta not
 * above 0 or above 3.14159f, threshold below 1); StatusBadSize (the scratch size would not fit). */
StatusCode rvxiHoughLine_8u32f_C1R(const uint8_t *src, int32_t srcStep, RoiSize roi, int32_t threshold,
                                   HoughLine *lines, int32_t maxLineCount, int32_t *lineCount, uint8_t *buffer,
                                   HoughResolution resolution);

/** Those of all lines with region[0].rho <= rho <= region[1].rho and region[0].theta <= theta <= region[1].theta: the
 * whole result, filtered before the capacity applies. Only the angles that matter are voted for. No line is
 * StatusEmptyResult, with *lineCount 0.
 * Status codes: those of the function above (the region's pointer with the other pointers), then StatusBadArgument
 * (a bound is NaN, or a lower bound is above its upper one). */
StatusCode rvxiHoughLine_Region_8u32f_C1R(const uint8_t *src, int32_t srcStep, RoiSize roi, int32_t threshold,
                                          HoughLine *lines, int32_t maxLineCount, int32_t *lineCount, uint8_t *buffer,
                                          HoughResolution resolution, const HoughLine region[2]);

/** Bytes of scratch for the two functions above: height (4 width + 64) + 16 maxLineCount + 32 + 8 (nTheta + 1) + 16
 * nRho
 * + 256. StatusNullPointer; StatusBadSize (width, height or maxLineCount below 1); StatusBadArgument (a resolution not
 * above 0); StatusBadSize (a size that does not fit). */
StatusCode rvxiHoughLineGetSize_8u_C1R(RoiSize roi, HoughResolution resolution, int32_t maxLineCount, int32_t *size);
/** @} */

/** @defgroup hough_prob Line segments
 * Pieces of straight lines, each with its two ends.
 *
 * Line segments, by the progressive probabilistic transform of J. Matas, C. Galambos and J. Kittler, "Robust Detection
 * of Lines Using the Progressive Probabilistic Hough Transform", CVIU 78, 2000. Marked pixels are taken in a random
 * order and vote for all angles. As soon as the best cell of a pixel holds `threshold` votes (of equal cells, the one
 * with the smallest angle), the line is followed from that pixel in both directions; its pixels are removed from the
 * image, and those that had voted from the cells. Equal arguments give equal segments.
 *
 * A line is followed in unit steps along its longer side. A step is marked when its pixel is, or the one on either side
 * across; runs of unmarked steps between marked ones are at most lineGap long. The direction of the cell is a first
 * guess, corrected by the ends that are found, so a coarse angle does not break a long line. Both ends of a segment are
 * marked pixels, and the rule holds for the path between them: with n = max(|dx|, |dy|), step i (0..n) lies at
 * first + i (last - first) / n, the shorter side rounded to nearest, halves up.
 *
 * The record holds the resolution and the seed of the random order, and may serve images of any size. It is read only
 * by the search. It may lie at any address and be copied.
 * @{ */

/** The record: a resolution and the seed of the random order. */
typedef struct HoughProbLineSpec HoughProbLineSpec;

/** The segments in the order in which they were found, two points each, with max(|dx|, |dy|) >= lineLength.
 * *segmentCount is how many were written. The search ends with StatusResultTruncated as soon as the array is full.
 * Status codes, in the order of the checks: StatusNullPointer; StatusBadStep (below 1); StatusBadSize (width, height or
 * maxSegmentCount below 1); StatusBadArgument (threshold or lineLength below 1, lineGap below 0, or a resolution that
 * is too coarse for this size: nRho is 0); StatusBadSize (the scratch size would not fit). */
StatusCode rvxiHoughProbLine_8u32f_C1R(const uint8_t *src, int32_t srcStep, RoiSize roi, int32_t threshold,
                                       int32_t lineLength, int32_t lineGap, Point2i *segments, int32_t maxSegmentCount,
                                       int32_t *segmentCount, uint8_t *buffer, const HoughProbLineSpec *spec);

/** Fills a record. StatusNullPointer; StatusBadSize (width or height below 1); StatusBadArgument (a resolution not
 * above 0); StatusBadSize (the record's size would not fit). */
StatusCode rvxiHoughProbLineInit_8u32f_C1R(RoiSize roi, int32_t seed, HoughProbLineSpec *spec,
                                           HoughResolution resolution);

/** Bytes of a record, 8 (nTheta + 1) + 16, and of scratch, (width / 8 + 1) height + 4 nRho (nTheta + 1) + 4 width
 * height with width / 8 truncated. Neither is written unless both fit. Status codes as above. */
StatusCode rvxiHoughProbLineGetSize_8u_C1R(RoiSize roi, HoughResolution resolution, int32_t *specSize,
                                           int32_t *bufferSize);
/** @} */
/** @} */

#ifdef __cplusplus
}
#endif

#endif
