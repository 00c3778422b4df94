// Size queries and initialisation of erosion and dilation, both generations of the interface.
#include "frame/api.h"
#include "kernel/checks.h"
#include "morph/morph_spec.h"

#include "rvxcore.h"

namespace rvxcv {
namespace {

StatusCode borderSizes(MorphPixel pixel, std::int32_t roiWidth, RoiSize maskSize, std::int32_t *specSize,
                       std::int32_t *bufferSize) {
    Checks checks;
    checks.pointers(specSize, bufferSize).require(morphSizesValid(roiWidth, maskSize), StatusBadSize);
    if (checks.failed()) {
        return checks.status();
    }
    const std::int64_t spec = morphSpecBytes(pixel.typeCode, maskSize);
    const std::int64_t buffer = morphBufferBytes(pixel, roiWidth, maskSize);
    if (!fitsInt32(spec) || !fitsInt32(buffer)) {
        return StatusBadSize;
    }
    *specSize = static_cast<std::int32_t>(spec);
    *bufferSize = static_cast<std::int32_t>(buffer);
    return StatusOk;
}

StatusCode borderInit(MorphPixel pixel, std::int32_t roiWidth, const std::uint8_t *mask, RoiSize maskSize,
                      MorphSpec *spec, std::uint8_t *buffer) {
    Checks checks;
    checks.pointers(mask, spec, buffer).require(morphSizesValid(roiWidth, maskSize), StatusBadSize);
    if (checks.failed()) {
        return checks.status();
    }
    initMorphSpec(roiWidth, mask, maskSize, centreAnchor(maskSize), pixel, spec);
    return StatusOk;
}

std::int64_t stateBytes(MorphPixel pixel, std::int32_t roiWidth, RoiSize maskSize) {
    return saturatedSum(morphSpecBytes(pixel.typeCode, maskSize), morphBufferBytes(pixel, roiWidth, maskSize));
}

StatusCode olderSize(MorphPixel pixel, std::int32_t roiWidth, const std::uint8_t *mask, RoiSize maskSize,
                     std::int32_t *size) {
    Checks checks;
    checks.pointers(mask, size).require(morphSizesValid(roiWidth, maskSize), StatusBadSize);
    return checks.failed() ? checks.status() : storeSize(stateBytes(pixel, roiWidth, maskSize), size);
}

template <class State>
StatusCode olderChecks(std::int32_t roiWidth, const std::uint8_t *mask, RoiSize maskSize, Point2i anchor,
                       const State *state) {
    Checks checks;
    checks.pointers(mask, state).require(morphSizesValid(roiWidth, maskSize), StatusBadSize);
    checks.require(anchor.x >= 0 && anchor.x < maskSize.width && anchor.y >= 0 && anchor.y < maskSize.height,
                   StatusBadAnchor);
    return checks.status();
}

StatusCode stateInit(MorphPixel pixel, std::int32_t roiWidth, const std::uint8_t *mask, RoiSize maskSize,
                     Point2i anchor, MorphState *state) {
    const StatusCode status = olderChecks(roiWidth, mask, maskSize, anchor, state);
    if (status == StatusOk) {
        initMorphSpec(roiWidth, mask, maskSize, anchor, pixel, specOf(state));
    }
    return status;
}

StatusCode stateInitAlloc(MorphPixel pixel, std::int32_t roiWidth, const std::uint8_t *mask, RoiSize maskSize,
                          Point2i anchor, MorphState **state) {
    const StatusCode status = olderChecks(roiWidth, mask, maskSize, anchor, state);
    if (status != StatusOk) {
        return status;
    }
    auto *made = static_cast<MorphState *>(rvxMalloc(stateBytes(pixel, roiWidth, maskSize)));
    if (made == nullptr) {
        return StatusNoMemory;
    }
    initMorphSpec(roiWidth, mask, maskSize, anchor, pixel, specOf(made));
    *state = made;
    return StatusOk;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiMorphologyBorderGetSize_8u_C1R(int32_t roiWidth, RoiSize maskSize, int32_t *specSize,
                                              int32_t *bufferSize) {
    return borderSizes({PixelType8u, 1}, roiWidth, maskSize, specSize, bufferSize);
}
StatusCode rvxiMorphologyBorderGetSize_8u_C3R(int32_t roiWidth, RoiSize maskSize, int32_t *specSize,
                                              int32_t *bufferSize) {
    return borderSizes({PixelType8u, 3}, roiWidth, maskSize, specSize, bufferSize);
}
StatusCode rvxiMorphologyBorderGetSize_8u_C4R(int32_t roiWidth, RoiSize maskSize, int32_t *specSize,
                                              int32_t *bufferSize) {
    return borderSizes({PixelType8u, 4}, roiWidth, maskSize, specSize, bufferSize);
}
StatusCode rvxiMorphologyBorderGetSize_16u_C1R(int32_t roiWidth, RoiSize maskSize, int32_t *specSize,
                                               int32_t *bufferSize) {
    return borderSizes({PixelType16u, 1}, roiWidth, maskSize, specSize, bufferSize);
}
StatusCode rvxiMorphologyBorderGetSize_16s_C1R(int32_t roiWidth, RoiSize maskSize, int32_t *specSize,
                                               int32_t *bufferSize) {
    return borderSizes({PixelType16s, 1}, roiWidth, maskSize, specSize, bufferSize);
}
StatusCode rvxiMorphologyBorderGetSize_32f_C1R(int32_t roiWidth, RoiSize maskSize, int32_t *specSize,
                                               int32_t *bufferSize) {
    return borderSizes({PixelType32f, 1}, roiWidth, maskSize, specSize, bufferSize);
}
StatusCode rvxiMorphologyBorderGetSize_32f_C3R(int32_t roiWidth, RoiSize maskSize, int32_t *specSize,
                                               int32_t *bufferSize) {
    return borderSizes({PixelType32f, 3}, roiWidth, maskSize, specSize, bufferSize);
}
StatusCode rvxiMorphologyBorderGetSize_32f_C4R(int32_t roiWidth, RoiSize maskSize, int32_t *specSize,
                                               int32_t *bufferSize) {
    return borderSizes({PixelType32f, 4}, roiWidth, maskSize, specSize, bufferSize);
}
StatusCode rvxiMorphologyBorderGetSize_1u_C1R(int32_t roiWidth, RoiSize maskSize, int32_t *specSize,
                                              int32_t *bufferSize) {
    return borderSizes({PixelType1u, 1}, roiWidth, maskSize, specSize, bufferSize);
}

StatusCode rvxiMorphologyBorderInit_8u_C1R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, MorphSpec *spec,
                                           uint8_t *buffer) {
    return borderInit({PixelType8u, 1}, roiWidth, mask, maskSize, spec, buffer);
}
StatusCode rvxiMorphologyBorderInit_8u_C3R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, MorphSpec *spec,
                                           uint8_t *buffer) {
    return borderInit({PixelType8u, 3}, roiWidth, mask, maskSize, spec, buffer);
}
StatusCode rvxiMorphologyBorderInit_8u_C4R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, MorphSpec *spec,
                                           uint8_t *buffer) {
    return borderInit({PixelType8u, 4}, roiWidth, mask, maskSize, spec, buffer);
}
StatusCode rvxiMorphologyBorderInit_16u_C1R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, MorphSpec *spec,
                                            uint8_t *buffer) {
    return borderInit({PixelType16u, 1}, roiWidth, mask, maskSize, spec, buffer);
}
StatusCode rvxiMorphologyBorderInit_16s_C1R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, MorphSpec *spec,
                                            uint8_t *buffer) {
    return borderInit({PixelType16s, 1}, roiWidth, mask, maskSize, spec, buffer);
}
StatusCode rvxiMorphologyBorderInit_32f_C1R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, MorphSpec *spec,
                                            uint8_t *buffer) {
    return borderInit({PixelType32f, 1}, roiWidth, mask, maskSize, spec, buffer);
}
StatusCode rvxiMorphologyBorderInit_32f_C3R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, MorphSpec *spec,
                                            uint8_t *buffer) {
    return borderInit({PixelType32f, 3}, roiWidth, mask, maskSize, spec, buffer);
}
StatusCode rvxiMorphologyBorderInit_32f_C4R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, MorphSpec *spec,
                                            uint8_t *buffer) {
    return borderInit({PixelType32f, 4}, roiWidth, mask, maskSize, spec, buffer);
}
StatusCode rvxiMorphologyBorderInit_1u_C1R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, MorphSpec *spec,
                                           uint8_t *buffer) {
    return borderInit({PixelType1u, 1}, roiWidth, mask, maskSize, spec, buffer);
}

StatusCode rvxiMorphologyGetSize_8u_C1R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, int32_t *stateSize) {
    return olderSize({PixelType8u, 1}, roiWidth, mask, maskSize, stateSize);
}
StatusCode rvxiMorphologyGetSize_8u_C3R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, int32_t *stateSize) {
    return olderSize({PixelType8u, 3}, roiWidth, mask, maskSize, stateSize);
}
StatusCode rvxiMorphologyGetSize_8u_C4R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, int32_t *stateSize) {
    return olderSize({PixelType8u, 4}, roiWidth, mask, maskSize, stateSize);
}
StatusCode rvxiMorphologyGetSize_32f_C1R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, int32_t *stateSize) {
    return olderSize({PixelType32f, 1}, roiWidth, mask, maskSize, stateSize);
}
StatusCode rvxiMorphologyGetSize_32f_C3R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, int32_t *stateSize) {
    return olderSize({PixelType32f, 3}, roiWidth, mask, maskSize, stateSize);
}
StatusCode rvxiMorphologyGetSize_32f_C4R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, int32_t *stateSize) {
    return olderSize({PixelType32f, 4}, roiWidth, mask, maskSize, stateSize);
}

StatusCode rvxiMorphologyInit_8u_C1R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, Point2i anchor,
                                     MorphState *state) {
    return stateInit({PixelType8u, 1}, roiWidth, mask, maskSize, anchor, state);
}
StatusCode rvxiMorphologyInit_8u_C3R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, Point2i anchor,
                                     MorphState *state) {
    return stateInit({PixelType8u, 3}, roiWidth, mask, maskSize, anchor, state);
}
StatusCode rvxiMorphologyInit_8u_C4R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, Point2i anchor,
                                     MorphState *state) {
    return stateInit({PixelType8u, 4}, roiWidth, mask, maskSize, anchor, state);
}
StatusCode rvxiMorphologyInit_32f_C1R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, Point2i anchor,
                                      MorphState *state) {
    return stateInit({PixelType32f, 1}, roiWidth, mask, maskSize, anchor, state);
}
StatusCode rvxiMorphologyInit_32f_C3R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, Point2i anchor,
                                      MorphState *state) {
    return stateInit({PixelType32f, 3}, roiWidth, mask, maskSize, anchor, state);
}
StatusCode rvxiMorphologyInit_32f_C4R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, Point2i anchor,
                                      MorphState *state) {
    return stateInit({PixelType32f, 4}, roiWidth, mask, maskSize, anchor, state);
}

StatusCode rvxiMorphologyInitAlloc_8u_C1R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, Point2i anchor,
                                          MorphState **state) {
    return stateInitAlloc({PixelType8u, 1}, roiWidth, mask, maskSize, anchor, state);
}
StatusCode rvxiMorphologyInitAlloc_8u_C3R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, Point2i anchor,
                                          MorphState **state) {
    return stateInitAlloc({PixelType8u, 3}, roiWidth, mask, maskSize, anchor, state);
}
StatusCode rvxiMorphologyInitAlloc_8u_C4R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, Point2i anchor,
                                          MorphState **state) {
    return stateInitAlloc({PixelType8u, 4}, roiWidth, mask, maskSize, anchor, state);
}
StatusCode rvxiMorphologyInitAlloc_32f_C1R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, Point2i anchor,
                                           MorphState **state) {
    return stateInitAlloc({PixelType32f, 1}, roiWidth, mask, maskSize, anchor, state);
}
StatusCode rvxiMorphologyInitAlloc_32f_C3R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, Point2i anchor,
                                           MorphState **state) {
    return stateInitAlloc({PixelType32f, 3}, roiWidth, mask, maskSize, anchor, state);
}
StatusCode rvxiMorphologyInitAlloc_32f_C4R(int32_t roiWidth, const uint8_t *mask, RoiSize maskSize, Point2i anchor,
                                           MorphState **state) {
    return stateInitAlloc({PixelType32f, 4}, roiWidth, mask, maskSize, anchor, state);
}

StatusCode rvxiMorphologyFree(MorphState *state) {
    if (state == nullptr) {
        return StatusNullPointer;
    }
    rvxFree(state);
    return StatusOk;
}
