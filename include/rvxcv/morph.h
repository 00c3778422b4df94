/** @file
 * Morphology. */
#ifndef RVXCV_MORPH_H
#define RVXCV_MORPH_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup morph Morphology
 * Minima and maxima of neighbourhoods, and what is made of them.
 * @{ */

/** @defgroup rank Rank filters
 * Minimum and maximum of the pixels under a rectangle of maskSize pixels whose anchor is laid on the output pixel;
 * channels are filtered independently, pixels outside the region are the nearest edge pixels. The cost of a pixel
 * hardly grows with the mask. The destination must not overlap the source. Which of a NaN and a number is the smaller
 * or the larger is not fixed; no pixel whose mask covers no NaN is affected.
 *
 * Status codes, in the order of the checks: StatusNullPointer, StatusBadSize (width or height below 1),
 * StatusBadMaskSize (mask width or height below 1), StatusBadAnchor (the anchor lies outside the mask), StatusBadStep
 * (a step does not cover a row), StatusStepNotMultiple (a 32f step is not a multiple of 4).
 *
 * The buffer may start at any address; it holds nothing between calls. Its size, in the order of the checks:
 * StatusNullPointer, StatusBadSize (width below 1), StatusBadMaskSize, StatusBadSize (the size does not fit in an
 * int32_t).
 * @{ */

/** @name Scratch of the minimum and maximum
 * @{ */
/** Bytes of scratch. */
StatusCode rvxiFilterMinGetBufferSize_8u_C1R(int32_t roiWidth, RoiSize maskSize, int32_t *bufferSize);
StatusCode rvxiFilterMinGetBufferSize_8u_C3R(int32_t roiWidth, RoiSize maskSize, int32_t *bufferSize);
StatusCode rvxiFilterMinGetBufferSize_8u_C4R(int32_t roiWidth, RoiSize maskSize, int32_t *bufferSize);
StatusCode rvxiFilterMinGetBufferSize_32f_C1R(int32_t roiWidth, RoiSize maskSize, int32_t *bufferSize);
StatusCode rvxiFilterMinGetBufferSize_32f_C3R(int32_t roiWidth, RoiSize maskSize, int32_t *bufferSize);
StatusCode rvxiFilterMinGetBufferSize_32f_C4R(int32_t roiWidth, RoiSize maskSize, int32_t *bufferSize);
StatusCode rvxiFilterMaxGetBufferSize_8u_C1R(int32_t roiWidth, RoiSize maskSize, int32_t *bufferSize);
StatusCode rvxiFilterMaxGetBufferSize_8u_C3R(int32_t roiWidth, RoiSize maskSize, int32_t *bufferSize);
StatusCode rvxiFilterMaxGetBufferSize_8u_C4R(int32_t roiWidth, RoiSize maskSize, int32_t *bufferSize);
StatusCode rvxiFilterMaxGetBufferSize_32f_C1R(int32_t roiWidth, RoiSize maskSize, int32_t *bufferSize);
StatusCode rvxiFilterMaxGetBufferSize_32f_C3R(int32_t roiWidth, RoiSize maskSize, int32_t *bufferSize);
StatusCode rvxiFilterMaxGetBufferSize_32f_C4R(int32_t roiWidth, RoiSize maskSize, int32_t *bufferSize);
/** @} */

/** @name Minimum and maximum
 * @{ */
/** Minimum or maximum under a rectangle. */
StatusCode rvxiFilterMinBorderReplicate_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                               RoiSize roi, RoiSize maskSize, Point2i anchor, uint8_t *buffer);
StatusCode rvxiFilterMinBorderReplicate_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                               RoiSize roi, RoiSize maskSize, Point2i anchor, uint8_t *buffer);
StatusCode rvxiFilterMinBorderReplicate_8u_C4R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                               RoiSize roi, RoiSize maskSize, Point2i anchor, uint8_t *buffer);
StatusCode rvxiFilterMinBorderReplicate_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                                RoiSize roi, RoiSize maskSize, Point2i anchor, uint8_t *buffer);
StatusCode rvxiFilterMinBorderReplicate_32f_C3R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                                RoiSize roi, RoiSize maskSize, Point2i anchor, uint8_t *buffer);
StatusCode rvxiFilterMinBorderReplicate_32f_C4R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                                RoiSize roi, RoiSize maskSize, Point2i anchor, uint8_t *buffer);
StatusCode rvxiFilterMaxBorderReplicate_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                               RoiSize roi, RoiSize maskSize, Point2i anchor, uint8_t *buffer);
StatusCode rvxiFilterMaxBorderReplicate_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                               RoiSize roi, RoiSize maskSize, Point2i anchor, uint8_t *buffer);
StatusCode rvxiFilterMaxBorderReplicate_8u_C4R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                               RoiSize roi, RoiSize maskSize, Point2i anchor, uint8_t *buffer);
StatusCode rvxiFilterMaxBorderReplicate_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                                RoiSize roi, RoiSize maskSize, Point2i anchor, uint8_t *buffer);
StatusCode rvxiFilterMaxBorderReplicate_32f_C3R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                                RoiSize roi, RoiSize maskSize, Point2i anchor, uint8_t *buffer);
StatusCode rvxiFilterMaxBorderReplicate_32f_C4R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                                RoiSize roi, RoiSize maskSize, Point2i anchor, uint8_t *buffer);
/** @} */
/** @} */

/** @defgroup erode_dilate Erosion and dilation
 * Erosion and dilation with a flat mask: minimum and maximum of the source pixels that the mask's non-zero bytes cover
 * when its anchor is laid on the output pixel:
 *
 *     dilation: dst(x, y) = max of src(x + i - anchor.x, y + j - anchor.y) over all (i, j) with mask[j][i] != 0
 *
 * The mask is not reflected for dilation, channels are processed independently, and a mask without any non-zero byte
 * copies the source. Which of a NaN and a number is the smaller or the larger is not fixed.
 *
 * One analysis of the mask (..Init) serves erosion and dilation of every region up to the given width. Its record is
 * read-only afterwards and points into itself only: threads may share it, each with a work buffer of its own. The
 * destination must not overlap the source.
 * @{ */

/** The code of bit images in a record. */
enum { PixelType1u = 2 /**< packed bits */ };

/** What a mask looks like. */
typedef int32_t MorphMaskShape;
/** The values of a MorphMaskShape. */
enum {
    MaskGeneral = 0,   /**< anything else */
    MaskRectangle = 1, /**< one solid rectangle of non-zeros; the anchor may lie outside it */
    MaskEllipse = 2,   /**< every row empty or one run that holds the anchor's column; the anchor row is not outside */
    MaskEmpty = 3      /**< no non-zero byte */
};

/** The run of non-zeros in one mask row. */
typedef struct RowRun {
    int32_t row;      /**< index of the mask row */
    int32_t length;   /**< non-zeros, one after another */
    int32_t start;    /**< first of them, relative to the anchor column */
    int32_t reserved; /**< 0 */
} RowRun;

/** The analysed mask of the current interface; allocated by the caller with the size that the query tells (more than
 * sizeof: the tables lie behind the fields). Copying it needs its pointers rebound.
 *
 * Neutral tables hold one entry per mask position, of 16 bytes (1u: one byte). neutralMax clips a pixel from above by
 * the minimum of both: entries are the largest value at set positions and the smallest elsewhere. neutralMin clips from
 * below. Entries of 16s are signed; all others are compared as unsigned words (32f: and-ed and or-ed bit by bit). */
typedef struct MorphSpec {
    uint8_t *maskCopy;      /**< the mask's bytes */
    uint8_t *neutralMin;    /**< MaskGeneral and 1u only, else null */
    uint8_t *neutralMax;    /**< likewise */
    void *reserved;         /**< null */
    RowRun *runsTable;      /**< of the non-empty rows; null for MaskGeneral, MaskEmpty and 1u */
    int32_t maskWidth,      /**< of the mask */
        maskHeight;         /**< of the mask */
    int32_t anchorX,        /**< its column in the mask */
        anchorY;            /**< its row in the mask */
    int32_t rightExtent;    /**< maskWidth - anchorX - 1 */
    int32_t bottomExtent;   /**< maskHeight - anchorY - 1 */
    int32_t rowBufferBytes; /**< a row with its margins, rounded up to 16 bytes; 0 for MaskEmpty */
    int32_t zero;           /**< 0 */
    PixelTypeCode typeCode; /**< of the images */
    int32_t channels;       /**< 1, 3 or 4 */
    int32_t roiWidth;       /**< the widest region */
    int32_t marker;         /**< -1 */
    MorphMaskShape shape;   /**< of the mask */
    /* From here on not for 1u, whose tables begin here; the rectangle's fields are zero for other shapes. */
    int32_t rectangleWidth,   /**< of the rectangle */
        rectangleHeight;      /**< of the rectangle */
    int32_t rectangleAnchorX, /**< relative to the rectangle; may lie outside it */
        rectangleAnchorY;     /**< likewise */
    int32_t rectangleZero[2]; /**< 0 */
    int32_t runCount;         /**< entries of runsTable */
} MorphSpec;

/** The record of the older interface: its work buffer lies behind the record's tables, so it serves one call at a
 * time. */
typedef struct MorphState {
    MorphSpec spec; /**< the analysed mask */
} MorphState;

/** @name Sizes of a flat record
 * Sizes of the record and of the work buffer in bytes; the latter also serves ..Init. Status codes, in the order of the
 * checks: StatusNullPointer, StatusBadSize (width, mask width or mask height below 1, or a size that does not fit in an
 * int32_t; then neither is written).
 * @{ */
/** Sizes of the record and of the work buffer. */
StatusCode rvxiMorphologyBorderGetSize_8u_C1R(int32_t roiWidth, RoiSize maskSize, int32_t *specSize,
                                              int32_t *bufferSize);
StatusCode rvxiMorphologyBorderGetSize_8u_C3R(int32_t roiWidth, RoiSize maskSize, int32_t *specSize,
                                              int32_t *bufferSize);
StatusCode rvxiMorphologyBorderGetSize_8u_C4R(int32_t roiWidth, RoiSize maskSize, int32_t *specSize,
                                              int32_t *bufferSize);
StatusCode rvxiMorphologyBorderGetSize_16u_C1R(int32_t roiWidth, RoiSize maskSize, int32_t *specSize,
                                               int32_t *bufferSize);
StatusCode rvxiMorphologyBorderGetSize_16s_C1R(int32_t roiWidth, RoiSize maskSize, int32_t *specSize,
                                               int32_t *bufferSize);
StatusCode rvxiMorphologyBorderGetSize_32f_C1R(int32_t roiWidth, RoiSize maskSize, int32_t *specSize,
                                               int32_t *bufferSize);
StatusCode rvxiMorphologyBorderGetSize_32f_C3R(int32_t roiWidth, RoiSize maskSize, int32_t *specSize,
                                               int32_t *bufferSize);
StatusCode rvxiMorphologyBorderGetSize_32f_C4R(int32_t roiWidth, RoiSize maskSize, int32_t *specSize,
                                               int32_t *bufferSize);
StatusCode rvxiMorphologyBorderGetSize_1u_C1R(int32_t roiWidth, RoiSize maskSize, int32_t *specSize,
                                              int32_t *bufferSize);
/** @} */

/** @name Analysing a mask
 * Analyses a mask: maskSize.height rows of maskSize.width bytes. The anchor is the centre: ((width - 1) >> 1,
 * (height - 1) >> 1). Status codes: StatusNullPointer, StatusBadSize. The buffer is scratch.
 * @{ */
/** Analyses a mask. */
StatusCode rvxiMorphologyBorderInit_8u_C1R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, MorphSpec *spec,
                                           uint8_t *buffer);
StatusCode rvxiMorphologyBorderInit_8u_C3R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, MorphSpec *spec,
                                           uint8_t *buffer);
StatusCode rvxiMorphologyBorderInit_8u_C4R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, MorphSpec *spec,
                                           uint8_t *buffer);
StatusCode rvxiMorphologyBorderInit_16u_C1R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, MorphSpec *spec,
                                            uint8_t *buffer);
StatusCode rvxiMorphologyBorderInit_16s_C1R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, MorphSpec *spec,
                                            uint8_t *buffer);
StatusCode rvxiMorphologyBorderInit_32f_C1R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, MorphSpec *spec,
                                            uint8_t *buffer);
StatusCode rvxiMorphologyBorderInit_32f_C3R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, MorphSpec *spec,
                                            uint8_t *buffer);
StatusCode rvxiMorphologyBorderInit_32f_C4R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, MorphSpec *spec,
                                            uint8_t *buffer);
StatusCode rvxiMorphologyBorderInit_1u_C1R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, MorphSpec *spec,
                                           uint8_t *buffer);
/** @} */

/** @name Erosion and dilation
 * Erodes or dilates a region. border is BorderReplicate or BorderInMemory; flags for sides in memory may be or-ed in.
 * borderValue is not used. Status codes, in the order of the checks: StatusNullPointer, StatusBadSize (width or height
 * below 1), StatusBadStep (a step below the width times the element size, whatever the number of channels),
 * StatusStepNotMultiple (16- and 32-bit pixels), StatusBadBorder (any other kind), StatusBadSize (wider than the
 * record's roiWidth).
 * @{ */
/** Erodes or dilates a region. */
StatusCode rvxiErodeBorder_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                  BorderKind border, uint8_t borderValue, const MorphSpec *spec, uint8_t *buffer);
StatusCode rvxiErodeBorder_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                  BorderKind border, uint8_t borderValue, const MorphSpec *spec, uint8_t *buffer);
StatusCode rvxiErodeBorder_8u_C4R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                  BorderKind border, uint8_t borderValue, const MorphSpec *spec, uint8_t *buffer);
StatusCode rvxiErodeBorder_16u_C1R(const uint16_t *src, int32_t srcStep, uint16_t *dst, int32_t dstStep, RoiSize roi,
                                   BorderKind border, uint16_t borderValue, const MorphSpec *spec, uint8_t *buffer);
StatusCode rvxiErodeBorder_16s_C1R(const int16_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep, RoiSize roi,
                                   BorderKind border, int16_t borderValue, const MorphSpec *spec, uint8_t *buffer);
StatusCode rvxiErodeBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                   BorderKind border, float borderValue, const MorphSpec *spec, uint8_t *buffer);
StatusCode rvxiErodeBorder_32f_C3R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                   BorderKind border, float borderValue, const MorphSpec *spec, uint8_t *buffer);
StatusCode rvxiErodeBorder_32f_C4R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                   BorderKind border, float borderValue, const MorphSpec *spec, uint8_t *buffer);
StatusCode rvxiDilateBorder_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                   BorderKind border, uint8_t borderValue, const MorphSpec *spec, uint8_t *buffer);
StatusCode rvxiDilateBorder_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                   BorderKind border, uint8_t borderValue, const MorphSpec *spec, uint8_t *buffer);
StatusCode rvxiDilateBorder_8u_C4R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                   BorderKind border, uint8_t borderValue, const MorphSpec *spec, uint8_t *buffer);
StatusCode rvxiDilateBorder_16u_C1R(const uint16_t *src, int32_t srcStep, uint16_t *dst, int32_t dstStep, RoiSize roi,
                                    BorderKind border, uint16_t borderValue, const MorphSpec *spec, uint8_t *buffer);
StatusCode rvxiDilateBorder_16s_C1R(const int16_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep, RoiSize roi,
                                    BorderKind border, int16_t borderValue, const MorphSpec *spec, uint8_t *buffer);
StatusCode rvxiDilateBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                    BorderKind border, float borderValue, const MorphSpec *spec, uint8_t *buffer);
StatusCode rvxiDilateBorder_32f_C3R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                    BorderKind border, float borderValue, const MorphSpec *spec, uint8_t *buffer);
StatusCode rvxiDilateBorder_32f_C4R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                    BorderKind border, float borderValue, const MorphSpec *spec, uint8_t *buffer);
/** @} */

/** @name Bit images
 * Bit images: pixel k of a row is bit (bitOffset + k) mod 8 of byte (bitOffset + k) div 8, the least significant bit
 * first. Bytes that a destination row shares with its surroundings keep the other bits. Status codes, in the order of
 * the checks: StatusNullPointer, StatusBadSize (a negative bit offset, width or height below 1), StatusBadStep (below
 * (width + 7) / 8 bytes; the bit offset is not counted), StatusBadBorder, StatusBadSize (wider than the record's
 * roiWidth), StatusInPlaceNotSupported (src equal to dst).
 * @{ */
/** Erodes or dilates a bit image. */
StatusCode rvxiErodeBorder_1u_C1R(const uint8_t *src, int32_t srcStep, int32_t srcBitOffset, uint8_t *dst,
                                  int32_t dstStep, int32_t dstBitOffset, RoiSize roi, BorderKind border,
                                  uint8_t borderValue, const MorphSpec *spec, uint8_t *buffer);
StatusCode rvxiDilateBorder_1u_C1R(const uint8_t *src, int32_t srcStep, int32_t srcBitOffset, uint8_t *dst,
                                   int32_t dstStep, int32_t dstBitOffset, RoiSize roi, BorderKind border,
                                   uint8_t borderValue, const MorphSpec *spec, uint8_t *buffer);
/** @} */

/** @name Older interface: size
 * The older interface: any anchor inside the mask, replicated borders only. Size of a state in bytes; status codes:
 * StatusNullPointer, StatusBadSize.
 * @{ */
/** Size of a state. */
StatusCode rvxiMorphologyGetSize_8u_C1R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, int32_t *stateSize);
StatusCode rvxiMorphologyGetSize_8u_C3R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, int32_t *stateSize);
StatusCode rvxiMorphologyGetSize_8u_C4R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, int32_t *stateSize);
StatusCode rvxiMorphologyGetSize_32f_C1R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, int32_t *stateSize);
StatusCode rvxiMorphologyGetSize_32f_C3R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, int32_t *stateSize);
StatusCode rvxiMorphologyGetSize_32f_C4R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, int32_t *stateSize);
/** @} */

/** @name Older interface: building a state
 * Builds a state in the caller's memory or in memory of the library. Status codes, in the order of the checks:
 * StatusNullPointer, StatusBadSize (width, mask width or height below 1), StatusBadAnchor (outside the mask),
 * StatusNoMemory (nothing stays allocated, *state keeps its value).
 * @{ */
/** Builds a state. */
StatusCode rvxiMorphologyInit_8u_C1R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, Point2i anchor,
                                     MorphState *state);
StatusCode rvxiMorphologyInit_8u_C3R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, Point2i anchor,
                                     MorphState *state);
StatusCode rvxiMorphologyInit_8u_C4R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, Point2i anchor,
                                     MorphState *state);
StatusCode rvxiMorphologyInit_32f_C1R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, Point2i anchor,
                                      MorphState *state);
StatusCode rvxiMorphologyInit_32f_C3R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, Point2i anchor,
                                      MorphState *state);
StatusCode rvxiMorphologyInit_32f_C4R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, Point2i anchor,
                                      MorphState *state);
StatusCode rvxiMorphologyInitAlloc_8u_C1R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, Point2i anchor,
                                          MorphState **state);
StatusCode rvxiMorphologyInitAlloc_8u_C3R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, Point2i anchor,
                                          MorphState **state);
StatusCode rvxiMorphologyInitAlloc_8u_C4R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, Point2i anchor,
                                          MorphState **state);
StatusCode rvxiMorphologyInitAlloc_32f_C1R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, Point2i anchor,
                                           MorphState **state);
StatusCode rvxiMorphologyInitAlloc_32f_C3R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, Point2i anchor,
                                           MorphState **state);
StatusCode rvxiMorphologyInitAlloc_32f_C4R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, Point2i anchor,
                                           MorphState **state);
/** @} */

/** Releases a state made by ..InitAlloc. StatusNullPointer. */
StatusCode rvxiMorphologyFree(MorphState *state);

/** @name Older interface: erosion and dilation
 * Erodes or dilates a region. Status codes, in the order of the checks: StatusNullPointer, StatusBadSize, StatusBadStep
 * (as above), StatusStepNotMultiple (32f), StatusBadArgument (border other than BorderReplicate), StatusBadSize (wider
 * than the state's roiWidth).
 * @{ */
/** Erodes or dilates a region. */
StatusCode rvxiErodeBorderReplicate_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                           RoiSize roi, BorderKind border, MorphState *state);
StatusCode rvxiErodeBorderReplicate_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                           RoiSize roi, BorderKind border, MorphState *state);
StatusCode rvxiErodeBorderReplicate_8u_C4R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                           RoiSize roi, BorderKind border, MorphState *state);
StatusCode rvxiErodeBorderReplicate_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                            BorderKind border, MorphState *state);
StatusCode rvxiErodeBorderReplicate_32f_C3R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                            BorderKind border, MorphState *state);
StatusCode rvxiErodeBorderReplicate_32f_C4R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                            BorderKind border, MorphState *state);
StatusCode rvxiDilateBorderReplicate_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                            RoiSize roi, BorderKind border, MorphState *state);
StatusCode rvxiDilateBorderReplicate_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                            RoiSize roi, BorderKind border, MorphState *state);
StatusCode rvxiDilateBorderReplicate_8u_C4R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                            RoiSize roi, BorderKind border, MorphState *state);
StatusCode rvxiDilateBorderReplicate_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                             RoiSize roi, BorderKind border, MorphState *state);
StatusCode rvxiDilateBorderReplicate_32f_C3R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                             RoiSize roi, BorderKind border, MorphState *state);
StatusCode rvxiDilateBorderReplicate_32f_C4R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                             RoiSize roi, BorderKind border, MorphState *state);
/** @} */
/** @} */

/** @defgroup gray_morph Grey morphology
 * Erosion and dilation by a surface instead of a flat mask: a ball, a paraboloid, a cone. The structuring function is a
 * table of maskSize.height rows of maskSize.width numbers k[j][i], rows one after another, with its anchor at the
 * centre: ((width - 1) >> 1, (height - 1) >> 1). INT32_MIN (8u) or -infinity (32f) marks a position that is not part of
 * it. Over the positions that are part:
 *
 *     dilation: dst(x, y) = max of src(x + i - anchor.x, y + j - anchor.y) + k[j][i]
 *     erosion:  dst(x, y) = min of src(x + i - anchor.x, y + j - anchor.y) - k[j][i]
 *
 * The function is not reflected for dilation: an opening or closing with one that is not symmetric needs it turned by
 * 180 degrees for the second step. Without any position the source is copied. 8u results are exact integers, saturated
 * to 0..255; 32f sums and differences are rounded once each. Which of a NaN and a number is the smaller or the larger,
 * and the sign of a zero, are not fixed; no pixel whose function covers no NaN is affected. (Sternberg, Grayscale
 * morphology, CVGIP 35, 1986.)
 *
 * One record serves erosion and dilation of every region up to the given width. It is read-only after ..Init and holds
 * no pointers: it may be copied and shared by threads, each with a buffer of its own. It stands at a multiple of 8
 * bytes; its table lies behind the fields shown.
 * @{ */

/** The head of a record. */
typedef struct GrayMorphSpec {
    int32_t tag;        /**< 0x4b617391 */
    PixelTypeCode type; /**< PixelType8u or PixelType32f */
    int32_t roiWidth;   /**< the widest region */
    int32_t maskWidth,  /**< of the table */
        maskHeight;     /**< of the table */
    int32_t anchorX,    /**< its column in the table */
        anchorY;        /**< its row in the table */
    int32_t count;      /**< positions that are part; as many entries follow, row by row */
} GrayMorphSpec;

/** An entry of the table: a position relative to the anchor and its value, an int32_t clamped to -255..255 (8u) or a
 * float (32f). */
typedef struct GrayMorphEntry {
    int32_t dx, /**< columns from the anchor */
        dy;     /**< rows from the anchor */
    union {
        int32_t of8u; /**< of 8u records */
        float of32f;  /**< of 32f records */
    } value;          /**< what is added or taken away */
} GrayMorphEntry;

/** @name Sizes of a grey record
 * Sizes of the record and of the buffer, in bytes. The buffer may start at any address and holds nothing between calls.
 * Status codes, in the order of the checks: StatusNullPointer, StatusBadSize (width, mask width or mask height below 1,
 * or a size that does not fit in an int32_t; then neither is written).
 * @{ */
/** Sizes of the record and of the buffer. */
StatusCode rvxiGrayMorphologyGetSize_8u_C1R(int32_t roiWidth, RoiSize maskSize, int32_t *specSize, int32_t *bufferSize);
StatusCode rvxiGrayMorphologyGetSize_32f_C1R(int32_t roiWidth, RoiSize maskSize, int32_t *specSize,
                                             int32_t *bufferSize);
/** @} */

/** @name Making the record
 * Makes the record. 8u values beyond -255..255 act like -255 and 255. Status codes, in the order of the checks:
 * StatusNullPointer, StatusBadSize (as above), StatusOutOfRange (32f: a value is NaN or +infinity).
 * @{ */
/** Makes the record. */
StatusCode rvxiGrayMorphologyInit_8u_C1R(int32_t roiWidth, const int32_t *values, RoiSize maskSize,
                                         GrayMorphSpec *spec);
StatusCode rvxiGrayMorphologyInit_32f_C1R(int32_t roiWidth, const float *values, RoiSize maskSize, GrayMorphSpec *spec);
/** @} */

/** @name Grey erosion and dilation
 * Erosion and dilation. Border kinds: BorderConstant (of borderValue), BorderReplicate and BorderInMemory, with flags
 * for sides in memory; of these, only rows and columns that positions reach are read. The destination must not overlap
 * the source. Status codes, in the order of the checks: StatusNullPointer, StatusBadContext (no record, or one of the
 * other type), StatusBadSize (width or height below 1), StatusBadStep (a step does not cover a row),
 * StatusStepNotMultiple (a 32f step is not a multiple of 4), StatusBadBorder, StatusBadSize (the region is wider than
 * the record's), StatusInPlaceNotSupported (src equals dst).
 * @{ */
/** Erodes or dilates by a structuring function. */
StatusCode rvxiGrayErodeBorder_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                      BorderKind border, uint8_t borderValue, const GrayMorphSpec *spec,
                                      uint8_t *buffer);
StatusCode rvxiGrayErodeBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                       BorderKind border, float borderValue, const GrayMorphSpec *spec,
                                       uint8_t *buffer);
StatusCode rvxiGrayDilateBorder_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                       BorderKind border, uint8_t borderValue, const GrayMorphSpec *spec,
                                       uint8_t *buffer);
StatusCode rvxiGrayDilateBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                        BorderKind border, float borderValue, const GrayMorphSpec *spec,
                                        uint8_t *buffer);
/** @} */
/** @} */

/** @defgroup compound Compound operations
 * Opening, closing, top-hat, black-hat and morphological gradient with a flat mask, from the erosions and dilations
 * above. The record holds two analysed masks: the mask as given, and the mask turned by 180 degrees.
 * @{ */

/** The record: two analysed masks, and what the operations need. */
typedef struct MorphAdvSpec {
    MorphSpec *forward;        /**< the mask, anchor at its centre, for widths up to roi.width + maskSize.width - 1 */
    MorphSpec *reflected;      /**< the mask turned by 180 degrees, its anchor too, for widths up to roi.width */
    uint8_t *intermediate;     /**< an area of intermediateBytes in the initialisation's buffer; no operation uses it */
    int32_t intermediateBytes; /**< of an operation's intermediate image */
    int32_t basicBufferBytes;  /**< of an erosion's or dilation's work buffer for roi.width */
} MorphAdvSpec;

/** @name Sizes of a compound record
 * Sizes in bytes of the record and of the buffer, of the initialisation and of every operation. Status codes, in the
 * order of the checks: StatusNullPointer, StatusBadSize (a side of region or mask below 1, or a size that does not fit
 * in an int32_t; then neither is written).
 * @{ */
/** Sizes of the record and of the buffer. */
StatusCode rvxiMorphAdvGetSize_8u_C1R(RoiSize roi, RoiSize maskSize, int32_t *specSize, int32_t *bufferSize);
StatusCode rvxiMorphAdvGetSize_8u_C3R(RoiSize roi, RoiSize maskSize, int32_t *specSize, int32_t *bufferSize);
StatusCode rvxiMorphAdvGetSize_8u_C4R(RoiSize roi, RoiSize maskSize, int32_t *specSize, int32_t *bufferSize);
StatusCode rvxiMorphAdvGetSize_16u_C1R(RoiSize roi, RoiSize maskSize, int32_t *specSize, int32_t *bufferSize);
StatusCode rvxiMorphAdvGetSize_16s_C1R(RoiSize roi, RoiSize maskSize, int32_t *specSize, int32_t *bufferSize);
StatusCode rvxiMorphAdvGetSize_32f_C1R(RoiSize roi, RoiSize maskSize, int32_t *specSize, int32_t *bufferSize);
StatusCode rvxiMorphAdvGetSize_32f_C3R(RoiSize roi, RoiSize maskSize, int32_t *specSize, int32_t *bufferSize);
StatusCode rvxiMorphAdvGetSize_32f_C4R(RoiSize roi, RoiSize maskSize, int32_t *specSize, int32_t *bufferSize);
StatusCode rvxiMorphAdvGetSize_1u_C1R(RoiSize roi, RoiSize maskSize, int32_t *specSize, int32_t *bufferSize);
/** @} */

/** @name Preparing a record
 * Prepares a record in the caller's memory. The buffer may be released afterwards: gradients, too, keep their
 * intermediate rows in the buffer of the call. StatusNullPointer, StatusBadSize.
 * @{ */
/** Prepares a record in the caller's memory. */
StatusCode rvxiMorphAdvInit_8u_C1R(RoiSize roi, const uint8_t *mask, RoiSize maskSize, MorphAdvSpec *spec,
                                   uint8_t *buffer);
StatusCode rvxiMorphAdvInit_8u_C3R(RoiSize roi, const uint8_t *mask, RoiSize maskSize, MorphAdvSpec *spec,
                                   uint8_t *buffer);
StatusCode rvxiMorphAdvInit_8u_C4R(RoiSize roi, const uint8_t *mask, RoiSize maskSize, MorphAdvSpec *spec,
                                   uint8_t *buffer);
StatusCode rvxiMorphAdvInit_16u_C1R(RoiSize roi, const uint8_t *mask, RoiSize maskSize, MorphAdvSpec *spec,
                                    uint8_t *buffer);
StatusCode rvxiMorphAdvInit_16s_C1R(RoiSize roi, const uint8_t *mask, RoiSize maskSize, MorphAdvSpec *spec,
                                    uint8_t *buffer);
StatusCode rvxiMorphAdvInit_32f_C1R(RoiSize roi, const uint8_t *mask, RoiSize maskSize, MorphAdvSpec *spec,
                                    uint8_t *buffer);
StatusCode rvxiMorphAdvInit_32f_C3R(RoiSize roi, const uint8_t *mask, RoiSize maskSize, MorphAdvSpec *spec,
                                    uint8_t *buffer);
StatusCode rvxiMorphAdvInit_32f_C4R(RoiSize roi, const uint8_t *mask, RoiSize maskSize, MorphAdvSpec *spec,
                                    uint8_t *buffer);
StatusCode rvxiMorphAdvInit_1u_C1R(RoiSize roi, const uint8_t *mask, RoiSize maskSize, MorphAdvSpec *spec,
                                   uint8_t *buffer);
/** @} */

/** @name Preparing a record in memory of the library
 * Prepares a record in memory of the library. Status codes, in the order of the checks: StatusNullPointer,
 * StatusBadSize, StatusNoMemory (nothing stays allocated, *spec keeps its value).
 * @{ */
/** Prepares a record in memory of the library. */
StatusCode rvxiMorphAdvInitAlloc_8u_C1R(MorphAdvSpec **spec, RoiSize roi, const uint8_t *mask, RoiSize maskSize);
StatusCode rvxiMorphAdvInitAlloc_8u_C3R(MorphAdvSpec **spec, RoiSize roi, const uint8_t *mask, RoiSize maskSize);
StatusCode rvxiMorphAdvInitAlloc_8u_C4R(MorphAdvSpec **spec, RoiSize roi, const uint8_t *mask, RoiSize maskSize);
StatusCode rvxiMorphAdvInitAlloc_32f_C1R(MorphAdvSpec **spec, RoiSize roi, const uint8_t *mask, RoiSize maskSize);
StatusCode rvxiMorphAdvInitAlloc_32f_C3R(MorphAdvSpec **spec, RoiSize roi, const uint8_t *mask, RoiSize maskSize);
StatusCode rvxiMorphAdvInitAlloc_32f_C4R(MorphAdvSpec **spec, RoiSize roi, const uint8_t *mask, RoiSize maskSize);
/** @} */

/** Releases a record made by ..InitAlloc. StatusNullPointer. */
StatusCode rvxiMorphAdvFree(MorphAdvSpec *spec);

/** @name Operations
 * Opening: erosion, then dilation with the turned mask. Closing: dilation, then erosion with the turned mask. On a side
 * in memory the first step reaches as far outside the region as the second one reads; on other sides the second step
 * replicates the edge of the first one's result. Top-hat: source minus opening. Black-hat: closing minus source.
 * Gradient: dilation minus erosion, both with the mask as given. Differences saturate: unsigned ones and 32f ones at 0,
 * 16s ones at the type's ends; of bits they are first AND NOT second.
 *
 * Border kinds and steps are those of erosion and dilation; borderValue is not used; the destination must not overlap
 * the source. Status codes, in the order of the checks: StatusNullPointer, StatusBadSize (a side below 1, a negative
 * bit offset), StatusBadStep, StatusStepNotMultiple, StatusBadBorder, StatusBadSize (wider than the record's forward
 * mask, and but for the gradient: wider than the region of the initialisation, or an intermediate image larger than the
 * record's), StatusInPlaceNotSupported (bit images with equal pointers).
 * @{ */
/** Opening, closing, top-hat, black-hat or gradient, as the name says. */
StatusCode rvxiMorphOpenBorder_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                      BorderKind border, uint8_t borderValue, const MorphAdvSpec *spec,
                                      uint8_t *buffer);
StatusCode rvxiMorphOpenBorder_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                      BorderKind border, uint8_t borderValue, const MorphAdvSpec *spec,
                                      uint8_t *buffer);
StatusCode rvxiMorphOpenBorder_8u_C4R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                      BorderKind border, uint8_t borderValue, const MorphAdvSpec *spec,
                                      uint8_t *buffer);
StatusCode rvxiMorphOpenBorder_16u_C1R(const uint16_t *src, int32_t srcStep, uint16_t *dst, int32_t dstStep,
                                       RoiSize roi, BorderKind border, uint16_t borderValue, const MorphAdvSpec *spec,
                                       uint8_t *buffer);
StatusCode rvxiMorphOpenBorder_16s_C1R(const int16_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep, RoiSize roi,
                                       BorderKind border, int16_t borderValue, const MorphAdvSpec *spec,
                                       uint8_t *buffer);
StatusCode rvxiMorphOpenBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                       BorderKind border, float borderValue, const MorphAdvSpec *spec, uint8_t *buffer);
StatusCode rvxiMorphOpenBorder_32f_C3R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                       BorderKind border, float borderValue, const MorphAdvSpec *spec, uint8_t *buffer);
StatusCode rvxiMorphOpenBorder_32f_C4R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                       BorderKind border, float borderValue, const MorphAdvSpec *spec, uint8_t *buffer);
StatusCode rvxiMorphOpenBorder_1u_C1R(const uint8_t *src, int32_t srcStep, int32_t srcBitOffset, uint8_t *dst,
                                      int32_t dstStep, int32_t dstBitOffset, RoiSize roi, BorderKind border,
                                      uint8_t borderValue, const MorphAdvSpec *spec, uint8_t *buffer);
StatusCode rvxiMorphCloseBorder_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                       BorderKind border, uint8_t borderValue, const MorphAdvSpec *spec,
                                       uint8_t *buffer);
StatusCode rvxiMorphCloseBorder_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                       BorderKind border, uint8_t borderValue, const MorphAdvSpec *spec,
                                       uint8_t *buffer);
StatusCode rvxiMorphCloseBorder_8u_C4R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                       BorderKind border, uint8_t borderValue, const MorphAdvSpec *spec,
                                       uint8_t *buffer);
StatusCode rvxiMorphCloseBorder_16u_C1R(const uint16_t *src, int32_t srcStep, uint16_t *dst, int32_t dstStep,
                                        RoiSize roi, BorderKind border, uint16_t borderValue, const MorphAdvSpec *spec,
                                        uint8_t *buffer);
StatusCode rvxiMorphCloseBorder_16s_C1R(const int16_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep, RoiSize roi,
                                        BorderKind border, int16_t borderValue, const MorphAdvSpec *spec,
                                        uint8_t *buffer);
StatusCode rvxiMorphCloseBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                        BorderKind border, float borderValue, const MorphAdvSpec *spec,
                                        uint8_t *buffer);
StatusCode rvxiMorphCloseBorder_32f_C3R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                        BorderKind border, float borderValue, const MorphAdvSpec *spec,
                                        uint8_t *buffer);
StatusCode rvxiMorphCloseBorder_32f_C4R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                        BorderKind border, float borderValue, const MorphAdvSpec *spec,
                                        uint8_t *buffer);
StatusCode rvxiMorphCloseBorder_1u_C1R(const uint8_t *src, int32_t srcStep, int32_t srcBitOffset, uint8_t *dst,
                                       int32_t dstStep, int32_t dstBitOffset, RoiSize roi, BorderKind border,
                                       uint8_t borderValue, const MorphAdvSpec *spec, uint8_t *buffer);
StatusCode rvxiMorphTophatBorder_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                        BorderKind border, uint8_t borderValue, const MorphAdvSpec *spec,
                                        uint8_t *buffer);
StatusCode rvxiMorphTophatBorder_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                        BorderKind border, uint8_t borderValue, const MorphAdvSpec *spec,
                                        uint8_t *buffer);
StatusCode rvxiMorphTophatBorder_8u_C4R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                        BorderKind border, uint8_t borderValue, const MorphAdvSpec *spec,
                                        uint8_t *buffer);
StatusCode rvxiMorphTophatBorder_16u_C1R(const uint16_t *src, int32_t srcStep, uint16_t *dst, int32_t dstStep,
                                         RoiSize roi, BorderKind border, uint16_t borderValue, const MorphAdvSpec *spec,
                                         uint8_t *buffer);
StatusCode rvxiMorphTophatBorder_16s_C1R(const int16_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep,
                                         RoiSize roi, BorderKind border, int16_t borderValue, const MorphAdvSpec *spec,
                                         uint8_t *buffer);
StatusCode rvxiMorphTophatBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                         BorderKind border, float borderValue, const MorphAdvSpec *spec,
                                         uint8_t *buffer);
StatusCode rvxiMorphTophatBorder_32f_C3R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                         BorderKind border, float borderValue, const MorphAdvSpec *spec,
                                         uint8_t *buffer);
StatusCode rvxiMorphTophatBorder_32f_C4R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                         BorderKind border, float borderValue, const MorphAdvSpec *spec,
                                         uint8_t *buffer);
StatusCode rvxiMorphTophatBorder_1u_C1R(const uint8_t *src, int32_t srcStep, int32_t srcBitOffset, uint8_t *dst,
                                        int32_t dstStep, int32_t dstBitOffset, RoiSize roi, BorderKind border,
                                        uint8_t borderValue, const MorphAdvSpec *spec, uint8_t *buffer);
StatusCode rvxiMorphBlackhatBorder_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                          RoiSize roi, BorderKind border, uint8_t borderValue, const MorphAdvSpec *spec,
                                          uint8_t *buffer);
StatusCode rvxiMorphBlackhatBorder_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                          RoiSize roi, BorderKind border, uint8_t borderValue, const MorphAdvSpec *spec,
                                          uint8_t *buffer);
StatusCode rvxiMorphBlackhatBorder_8u_C4R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                          RoiSize roi, BorderKind border, uint8_t borderValue, const MorphAdvSpec *spec,
                                          uint8_t *buffer);
StatusCode rvxiMorphBlackhatBorder_16u_C1R(const uint16_t *src, int32_t srcStep, uint16_t *dst, int32_t dstStep,
                                           RoiSize roi, BorderKind border, uint16_t borderValue,
                                           const MorphAdvSpec *spec, uint8_t *buffer);
StatusCode rvxiMorphBlackhatBorder_16s_C1R(const int16_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep,
                                           RoiSize roi, BorderKind border, int16_t borderValue,
                                           const MorphAdvSpec *spec, uint8_t *buffer);
StatusCode rvxiMorphBlackhatBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                           BorderKind border, float borderValue, const MorphAdvSpec *spec,
                                           uint8_t *buffer);
StatusCode rvxiMorphBlackhatBorder_32f_C3R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                           BorderKind border, float borderValue, const MorphAdvSpec *spec,
                                           uint8_t *buffer);
StatusCode rvxiMorphBlackhatBorder_32f_C4R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                           BorderKind border, float borderValue, const MorphAdvSpec *spec,
                                           uint8_t *buffer);
StatusCode rvxiMorphBlackhatBorder_1u_C1R(const uint8_t *src, int32_t srcStep, int32_t srcBitOffset, uint8_t *dst,
                                          int32_t dstStep, int32_t dstBitOffset, RoiSize roi, BorderKind border,
                                          uint8_t borderValue, const MorphAdvSpec *spec, uint8_t *buffer);
StatusCode rvxiMorphGradientBorder_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                          RoiSize roi, BorderKind border, uint8_t borderValue, const MorphAdvSpec *spec,
                                          uint8_t *buffer);
StatusCode rvxiMorphGradientBorder_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                          RoiSize roi, BorderKind border, uint8_t borderValue, const MorphAdvSpec *spec,
                                          uint8_t *buffer);
StatusCode rvxiMorphGradientBorder_8u_C4R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                          RoiSize roi, BorderKind border, uint8_t borderValue, const MorphAdvSpec *spec,
                                          uint8_t *buffer);
StatusCode rvxiMorphGradientBorder_16u_C1R(const uint16_t *src, int32_t srcStep, uint16_t *dst, int32_t dstStep,
                                           RoiSize roi, BorderKind border, uint16_t borderValue,
                                           const MorphAdvSpec *spec, uint8_t *buffer);
StatusCode rvxiMorphGradientBorder_16s_C1R(const int16_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep,
                                           RoiSize roi, BorderKind border, int16_t borderValue,
                                           const MorphAdvSpec *spec, uint8_t *buffer);
StatusCode rvxiMorphGradientBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                           BorderKind border, float borderValue, const MorphAdvSpec *spec,
                                           uint8_t *buffer);
StatusCode rvxiMorphGradientBorder_32f_C3R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                           BorderKind border, float borderValue, const MorphAdvSpec *spec,
                                           uint8_t *buffer);
StatusCode rvxiMorphGradientBorder_32f_C4R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                           BorderKind border, float borderValue, const MorphAdvSpec *spec,
                                           uint8_t *buffer);
StatusCode rvxiMorphGradientBorder_1u_C1R(const uint8_t *src, int32_t srcStep, int32_t srcBitOffset, uint8_t *dst,
                                          int32_t dstStep, int32_t dstBitOffset, RoiSize roi, BorderKind border,
                                          uint8_t borderValue, const MorphAdvSpec *spec, uint8_t *buffer);
/** @} */
/** @} */

/** @defgroup reconstruct Reconstruction
 * Markers that grow inside a mask.
 *
 * Grows a marker inside a mask until nothing changes (L. Vincent, Morphological Grayscale Reconstruction in Image
 * Analysis, IEEE Transactions on Image Processing 2(2), 1993): holes are filled, objects that touch the frame removed,
 * domes and regional maxima found, and openings keep the shapes of what they keep. src is the mask, the limit; srcDst
 * is the marker and becomes the result, J:
 *
 *     Dilate   J = min(marker, mask); then J = min(largest J of the pixel and its neighbours, mask), everywhere at
 *              once, until nothing changes
 *     Erode    the same with min and max exchanged
 *
 * norm chooses the neighbours: NormInf the eight around a pixel, NormL1 the four beside it. Pixels outside the region
 * take no part. The result is unique, so it does not depend on the order of the work, and every value of it is one of
 * the inputs. Of floats the sign of a zero is not fixed; with a NaN in either image the call ends and writes inside the
 * region, the values are not fixed. src and srcDst may be the same image, which is its own result. The time is
 * proportional to the pixels, whatever they show.
 *
 * Status codes, in the order of the checks: StatusNullPointer; StatusBadSize; StatusBadStep; StatusStepNotMultiple (16u
 * and 32f); StatusBadArgument (norm).
 * @{ */

/** @name Reconstruction
 * @{ */
/** Grows the marker inside the mask. */
StatusCode rvxiMorphReconstructDilate_8u_C1IR(const uint8_t *src, int32_t srcStep, uint8_t *srcDst, int32_t srcDstStep,
                                              RoiSize roi, NormKind norm, uint8_t *buffer);
StatusCode rvxiMorphReconstructDilate_16u_C1IR(const uint16_t *src, int32_t srcStep, uint16_t *srcDst,
                                               int32_t srcDstStep, RoiSize roi, NormKind norm, uint8_t *buffer);
StatusCode rvxiMorphReconstructDilate_32f_C1IR(const float *src, int32_t srcStep, float *srcDst, int32_t srcDstStep,
                                               RoiSize roi, NormKind norm, uint8_t *buffer);
StatusCode rvxiMorphReconstructErode_8u_C1IR(const uint8_t *src, int32_t srcStep, uint8_t *srcDst, int32_t srcDstStep,
                                             RoiSize roi, NormKind norm, uint8_t *buffer);
StatusCode rvxiMorphReconstructErode_16u_C1IR(const uint16_t *src, int32_t srcStep, uint16_t *srcDst,
                                              int32_t srcDstStep, RoiSize roi, NormKind norm, uint8_t *buffer);
StatusCode rvxiMorphReconstructErode_32f_C1IR(const float *src, int32_t srcStep, float *srcDst, int32_t srcDstStep,
                                              RoiSize roi, NormKind norm, uint8_t *buffer);
/** @} */

/** @name Scratch of the reconstruction
 * Bytes of scratch, which may start at any address: 5 width height + 8 width + 2304. StatusNullPointer,
 * StatusBadSize.
 * @{ */
/** Bytes of scratch. */
StatusCode rvxiMorphReconstructGetBufferSize_8u_C1R(RoiSize roi, int32_t *size);
StatusCode rvxiMorphReconstructGetBufferSize_16u_C1R(RoiSize roi, int32_t *size);
StatusCode rvxiMorphReconstructGetBufferSize_32f_C1R(RoiSize roi, int32_t *size);
/** @} */
/** @} */
/** @} */

#ifdef __cplusplus
}
#endif

#endif
