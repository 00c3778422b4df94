/* Morphology. */
#ifndef RVXCV_MORPH_H
#define RVXCV_MORPH_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* -------------------------------------------------------------------------------------------------- Rank filters */

/* Minimum and maximum of the pixels under a rectangle of maskSize pixels whose anchor is laid on the output pixel;
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
 * int32_t). */
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

/* ------------------------------------------------------------------------------------------ Erosion and dilation */

/* Erosion and dilation with a flat mask: minimum and maximum of the source pixels that the mask's non-zero bytes cover
 * when its anchor is laid on the output pixel:
 *
 *     dilation: dst(x, y) = max of src(x + i - anchor.x, y + j - anchor.y) over all (i, j) with mask[j][i] != 0
 *
 * The mask is not reflected for dilation, channels are processed independently, and a mask without any non-zero byte
 * copies the source. Which of a NaN and a number is the smaller or the larger is not fixed.
 *
 * One analysis of the mask (..Init) serves erosion and dilation of every region up to the given width. Its record is
 * read-only afterwards and points into itself only: threads may share it, each with a work buffer of its own. The
 * destination must not overlap the source. */

/* The code of bit images in a record. */
enum { PixelType1u = 2 };

/* What a mask looks like. */
typedef int32_t MorphMaskShape;
enum {
    MaskGeneral = 0,   /* anything else */
    MaskRectangle = 1, /* one solid rectangle of non-zeros; the anchor may lie outside it */
    MaskEllipse = 2,   /* every row empty or one run that holds the anchor's column; the anchor row is not outside */
    MaskEmpty = 3      /* no non-zero byte */
};

/* The run of non-zeros in one mask row. */
typedef struct RowRun {
    int32_t row;      /* index of the mask row */
    int32_t length;   /* non-zeros, one after another */
    int32_t start;    /* first of them, relative to the anchor column */
    int32_t reserved; /* 0 */
} RowRun;

/* The analysed mask of the current interface; allocated by the caller with the size that the query tells (more than
 * sizeof: the tables lie behind the fields). Copying it needs its pointers rebound.
 *
 * Neutral tables hold one entry per mask position, of 16 bytes (1u: one byte). neutralMax clips a pixel from above by
 * the minimum of both: entries are the largest value at set positions and the smallest elsewhere. neutralMin clips from
 * below. Entries of 16s are signed; all others are compared as unsigned words (32f: and-ed and or-ed bit by bit). */
typedef struct MorphSpec {
    uint8_t *maskCopy;   /* the mask's bytes */
    uint8_t *neutralMin; /* MaskGeneral and 1u only, else null */
    uint8_t *neutralMax;
    void *reserved;    /* null */
    RowRun *runsTable; /* of the non-empty rows; null for MaskGeneral, MaskEmpty and 1u */
    int32_t maskWidth, maskHeight;
    int32_t anchorX, anchorY;
    int32_t rightExtent;    /* maskWidth - anchorX - 1 */
    int32_t bottomExtent;   /* maskHeight - anchorY - 1 */
    int32_t rowBufferBytes; /* a row with its margins, rounded up to 16 bytes; 0 for MaskEmpty */
    int32_t zero;           /* 0 */
    PixelTypeCode typeCode;
    int32_t channels;
    int32_t roiWidth; /* the widest region */
    int32_t marker;   /* -1 */
    MorphMaskShape shape;
    /* From here on not for 1u, whose tables begin here; the rectangle's fields are zero for other shapes. */
    int32_t rectangleWidth, rectangleHeight;
    int32_t rectangleAnchorX, rectangleAnchorY; /* relative to the rectangle; may lie outside it */
    int32_t rectangleZero[2];
    int32_t runCount; /* entries of runsTable */
} MorphSpec;

/* The record of the older interface: its work buffer lies behind the record's tables, so it serves one call at a
 * time. */
typedef struct MorphState {
    MorphSpec spec;
} MorphState;

/* Sizes of the record and of the work buffer in bytes; the latter also serves ..Init. Status codes, in the order of the
 * checks: StatusNullPointer, StatusBadSize (width, mask width or mask height below 1, or a size that does not fit in an
 * int32_t; then neither is written). */
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

/* Analyses a mask: maskSize.height rows of maskSize.width bytes. The anchor is the centre: ((width - 1) >> 1,
 * (height - 1) >> 1). Status codes: StatusNullPointer, StatusBadSize. The buffer is scratch. */
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

/* Erodes or dilates a region. border is BorderReplicate or BorderInMemory; flags for sides in memory may be or-ed in.
 * borderValue is not used. Status codes, in the order of the checks: StatusNullPointer, StatusBadSize (width or height
 * below 1), StatusBadStep (a step below the width times the element size, whatever the number of channels),
 * StatusStepNotMultiple (16- and 32-bit pixels), StatusBadBorder (any other kind), StatusBadSize (wider than the
 * record's roiWidth). */
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

/* The older interface: any anchor inside the mask, replicated borders only. Size of a state in bytes; status codes:
 * StatusNullPointer, StatusBadSize. */
StatusCode rvxiMorphologyGetSize_8u_C1R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, int32_t *stateSize);
StatusCode rvxiMorphologyGetSize_8u_C3R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, int32_t *stateSize);
StatusCode rvxiMorphologyGetSize_8u_C4R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, int32_t *stateSize);
StatusCode rvxiMorphologyGetSize_32f_C1R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, int32_t *stateSize);
StatusCode rvxiMorphologyGetSize_32f_C3R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, int32_t *stateSize);
StatusCode rvxiMorphologyGetSize_32f_C4R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, int32_t *stateSize);

/* Builds a state in the caller's memory or in memory of the library. Status codes, in the order of the checks:
 * StatusNullPointer, StatusBadSize (width, mask width or height below 1), StatusBadAnchor (outside the mask),
 * StatusNoMemory (nothing stays allocated, *state keeps its value). */
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

/* Releases a state made by ..InitAlloc. StatusNullPointer. */
StatusCode rvxiMorphologyFree(MorphState *state);

/* Erodes or dilates a region. Status codes, in the order of the checks: StatusNullPointer, StatusBadSize, StatusBadStep
 * (as above), StatusStepNotMultiple (32f), StatusBadArgument (border other than BorderReplicate), StatusBadSize (wider
 * than the state's roiWidth). */
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

/* ------------------------------------------------------------------------------------------- Compound operations */

#ifdef __cplusplus
}
#endif

#endif
