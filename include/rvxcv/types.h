/** @file
 * Shared types of rvxcv: status codes, enumerations and the plain records passed by value. */
#ifndef RVXCV_TYPES_H
#define RVXCV_TYPES_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup types Shared types
 * Status codes, enumerations and records that several families use.
 * @{ */

/** Result of every function. 0 is success, negative values are errors (outputs untouched unless the function says
 * otherwise), positive values are warnings (outputs valid). */
typedef int32_t StatusCode;
/** The values of a StatusCode. */
enum {
    StatusKernelNotSymmetric = 38,     /**< warning: a pyramid kernel is not symmetric; its left half is mirrored */
    StatusResultTruncated = 33,        /**< warning: more results than the output holds; it holds the first ones */
    StatusOk = 0,                      /**< success */
    StatusError = -1,                  /**< a family-specific failure without a code of its own */
    StatusLengthOverflow = -2,         /**< a count of pixels does not fit in 32 bits */
    StatusBadArgument = -5,            /**< a flag word, kind or odd/even requirement is violated */
    StatusBadSize = -6,                /**< a width, height or length is below its minimum */
    StatusEmptyResult = -7,            /**< the search found nothing */
    StatusNullPointer = -8,            /**< a required pointer is null */
    StatusNoMemory = -9,               /**< an internal allocation failed */
    StatusOutOfRange = -11,            /**< a numeric argument or a point lies outside its range */
    StatusBadDataType = -12,           /**< a pixel type code is not one that the function accepts */
    StatusBadStep = -14,               /**< a row step is too small for the row */
    StatusBadContext = -17,            /**< a state record does not carry its tag */
    StatusBadThreshold = -18,          /**< a threshold is negative */
    StatusBadMaskSize = -33,           /**< a mask code or the mask's dimensions are not supported */
    StatusBadAnchor = -34,             /**< the anchor lies outside the mask */
    StatusBadChannelLayout = -47,      /**< the channel count is neither 1 nor 3 */
    StatusBadChannel = -52,            /**< the channel of interest is not 1, 2 or 3 */
    StatusBadChannelCount = -53,       /**< the channel count is not supported */
    StatusBadMetric = -56,             /**< a distance weight is below 1 */
    StatusStepNotMultiple = -108,      /**< a row step is not a multiple of the element size */
    StatusBadBorder = -225,            /**< the border kind is not supported */
    StatusBadNormKind = -229,          /**< the norm kind is not supported */
    StatusBadFilterKind = -230,        /**< the derivative filter kind is not supported */
    StatusInPlaceNotSupported = -9997, /**< source and destination are the same image */
    StatusUnsupportedMode = -9999      /**< an internal mode argument is not supported */
};

/** Pixel type of functions that serve several types. */
typedef int32_t PixelTypeCode;
/** The values of a PixelTypeCode. */
enum {
    PixelType8u = 1,   /**< unsigned, 8 bits */
    PixelType8s = 3,   /**< signed, 8 bits */
    PixelType16u = 5,  /**< unsigned, 16 bits */
    PixelType16s = 7,  /**< signed, 16 bits */
    PixelType32f = 13, /**< float */
    PixelType64f = 19  /**< double */
};

/** Size of a fixed kernel. */
typedef int32_t MaskCode;
/** The values of a MaskCode. */
enum {
    Mask3x3 = 33, /**< 3 x 3 pixels */
    Mask5x5 = 55  /**< 5 x 5 pixels */
};

/** Where pixels outside the region come from: a kind in the low four bits, or-ed with flags for the sides whose
 * outside pixels are read from memory around the region. Each function says which kinds it accepts. On a side in
 * memory a coordinate is kept as it is; on any other side the kind is applied to that coordinate alone, and a
 * constant wins when either coordinate lies outside on a side that is not in memory. */
typedef int32_t BorderKind;
/** The values of a BorderKind, and its flags. */
enum {
    BorderConstant = 0,        /**< the border value */
    BorderReplicate = 1,       /**< the nearest edge pixel:                  aaa|abcd|ddd */
    BorderWrap = 2,            /**< the region repeats periodically:         bcd|abcd|abc */
    BorderMirror = 3,          /**< mirrored, edge pixel not repeated:       dcb|abcd|cba */
    BorderMirrorRepeat = 4,    /**< mirrored, edge pixel repeated:           cba|abcd|dcb */
    BorderInMemory = 6,        /**< all four sides are read from memory */
    BorderInMemoryTop = 16,    /**< flag: above the region */
    BorderInMemoryBottom = 32, /**< flag: below it */
    BorderInMemoryLeft = 64,   /**< flag: on its left */
    BorderInMemoryRight = 128  /**< flag: on its right */
};

/** Derivative filters where a choice of three is offered; Canny's two have the same codes. */
enum {
    DerivativeSobel = 2,  /**< Sobel */
    DerivativeScharr = 5, /**< Scharr */
    DerivativeCentral = 8 /**< difference of the two neighbours */
};

/** Norm or metric; Canny has codes of its own. */
typedef int32_t NormKind;
/** The values of a NormKind. As a metric they say which pixels are neighbours: NormInf eight, NormL1 four. */
enum {
    NormInf = 0, /**< largest magnitude */
    NormL1 = 1,  /**< sum of magnitudes */
    NormL2 = 2   /**< root of the sum of squares */
};

/** How inpainting fills a hole. */
typedef int32_t InpaintMethod;
/** The values of an InpaintMethod. */
enum {
    InpaintMarch = 0,    /**< continues the slopes around the hole, from its rim inward */
    InpaintDiffusion = 1 /**< spans a membrane */
};

/** Flags of the segmentations: whether regions are separated by lines. */
enum {
    SegmentNoLines = 0, /**< regions touch */
    SegmentLines = 1    /**< a line of one pixel runs between regions */
};

/** The size of a region. */
typedef struct RoiSize {
    int32_t width;  /**< pixels */
    int32_t height; /**< pixels */
} RoiSize;

/** A pixel, or an offset between pixels. */
typedef struct Point2i {
    int32_t x; /**< column */
    int32_t y; /**< row */
} Point2i;

/** A point between pixels. */
typedef struct Point2f {
    float x; /**< column */
    float y; /**< row */
} Point2f;

/** A rectangle of pixels. */
typedef struct Rect2i {
    int32_t x;      /**< first column */
    int32_t y;      /**< first row */
    int32_t width;  /**< columns */
    int32_t height; /**< rows */
} Rect2i;

/** Steps of the space of lines: pixels and radians. */
typedef struct HoughResolution {
    float rho;   /**< pixels */
    float theta; /**< radians */
} HoughResolution;

/** The line x cos(theta) + y sin(theta) = rho: its distance from the first pixel, and the direction of its normal. */
typedef struct HoughLine {
    float rho;   /**< pixels */
    float theta; /**< radians */
} HoughLine;
/** @} */

#ifdef __cplusplus
}
#endif

#endif
