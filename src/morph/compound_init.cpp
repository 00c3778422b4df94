// Size queries, initialisation and release of compound morphology. The record in memory: the fields, then the record of
// the mask, then that of the turned mask (..InitAlloc keeps these in blocks of their own).
#include "frame/api.h"

#include "kernel/checks.h"
#include "morph/morph_spec.h"

#include "rvxcore.h"

#include <algorithm>

namespace rvxcv {
namespace {

constexpr std::int64_t fieldsBytes = 32;
static_assert(sizeof(MorphAdvSpec) == fieldsBytes);

constexpr bool sidesValid(RoiSize roi, RoiSize maskSize) {
    return roi.width >= 1 && roi.height >= 1 && maskSize.width >= 1 && maskSize.height >= 1;
}

// All sizes that follow from region and mask. Bit images count a byte a pixel.
struct AdvSizes {
    std::int64_t spec, basicSpec, basicBuffer, intermediate;
    bool fit; // in an int32_t, the buffer as a whole too

    AdvSizes(MorphPixel pixel, RoiSize roi, RoiSize maskSize) {
        const std::int64_t width = std::int64_t{roi.width} + maskSize.width - 1;
        const std::int64_t height = std::int64_t{roi.height} + maskSize.height - 1;
        const std::int64_t stride = roundUp(width * pixel.channels * pixel.elementBytes(), 32);
        basicSpec = morphSpecBytes(pixel.typeCode, maskSize);
        basicBuffer = morphBufferBytes(pixel, roi.width, maskSize);
        spec = saturatedSum(saturatedProduct(2, basicSpec), fieldsBytes);
        intermediate = saturatedProduct(stride, height);
        fit = fitsInt32(spec) && fitsInt32(buffer());
    }
    std::int64_t buffer() const { return saturatedSum(intermediate, saturatedProduct(2, basicBuffer)); }
};

StatusCode advSizes(MorphPixel pixel, RoiSize roi, RoiSize maskSize, std::int32_t *specSize, std::int32_t *bufferSize) {
    Checks checks;
    checks.pointers(specSize, bufferSize).require(sidesValid(roi, maskSize), StatusBadSize);
    if (checks.failed()) {
        return checks.status();
    }
    const AdvSizes sizes(pixel, roi, maskSize);
    if (!sizes.fit) {
        return StatusBadSize;
    }
    *specSize = static_cast<std::int32_t>(sizes.spec);
    *bufferSize = static_cast<std::int32_t>(sizes.buffer());
    return StatusOk;
}

void turn(std::uint8_t *mask, RoiSize maskSize) {
    std::reverse(mask, mask + std::int64_t{maskSize.width} * maskSize.height);
}

// The two records' memory is given; fills them and the fields.
void fill(MorphPixel pixel, RoiSize roi, const std::uint8_t *mask, RoiSize maskSize, const AdvSizes &sizes,
          MorphAdvSpec fields, MorphAdvSpec *spec) {
    const Point2i anchor = centreAnchor(maskSize);
    const Point2i turnedAnchor{maskSize.width - 1 - anchor.x, maskSize.height - 1 - anchor.y};
    initMorphSpec(roi.width + maskSize.width - 1, mask, maskSize, anchor, pixel, fields.forward);
    // The record's first field; it may stand at any address, so no member is named.
    std::uint8_t *copy = loadScalar(reinterpret_cast<std::uint8_t *const *>(fields.forward));
    turn(copy, maskSize);
    initMorphSpec(roi.width, copy, maskSize, turnedAnchor, pixel, fields.reflected);
    turn(copy, maskSize);
    fields.intermediateBytes = static_cast<std::int32_t>(sizes.intermediate);
    fields.basicBufferBytes = static_cast<std::int32_t>(sizes.basicBuffer);
    std::memset(fields.intermediate, 0, static_cast<std::size_t>(sizes.intermediate));
    std::memcpy(static_cast<void *>(spec), &fields, sizeof fields);
}

StatusCode advInit(MorphPixel pixel, RoiSize roi, const std::uint8_t *mask, RoiSize maskSize, MorphAdvSpec *spec,
                   std::uint8_t *buffer) {
    Checks checks;
    checks.pointers(mask, spec, buffer).require(sidesValid(roi, maskSize), StatusBadSize);
    if (checks.failed()) {
        return checks.status();
    }
    const AdvSizes sizes(pixel, roi, maskSize);
    if (!sizes.fit) {
        return StatusBadSize;
    }
    auto *record = reinterpret_cast<std::uint8_t *>(spec) + fieldsBytes;
    MorphAdvSpec fields{};
    fields.forward = reinterpret_cast<MorphSpec *>(record);
    fields.reflected = reinterpret_cast<MorphSpec *>(record + sizes.basicSpec);
    fields.intermediate = buffer + 2 * sizes.basicBuffer;
    fill(pixel, roi, mask, maskSize, sizes, fields, spec);
    return StatusOk;
}

void release(MorphAdvSpec *spec) {
    rvxFree(spec->forward);
    rvxFree(spec->reflected);
    rvxFree(spec->intermediate);
    rvxFree(spec);
}

StatusCode advInitAlloc(MorphPixel pixel, MorphAdvSpec **spec, RoiSize roi, const std::uint8_t *mask,
                        RoiSize maskSize) {
    Checks checks;
    checks.pointers(spec, mask).require(sidesValid(roi, maskSize), StatusBadSize);
    if (checks.failed()) {
        return checks.status();
    }
    const AdvSizes sizes(pixel, roi, maskSize);
    if (!sizes.fit) {
        return StatusBadSize;
    }
    auto *made = static_cast<MorphAdvSpec *>(rvxMalloc(fieldsBytes));
    if (made == nullptr) {
        return StatusNoMemory;
    }
    *made = {};
    made->forward = static_cast<MorphSpec *>(rvxMalloc(sizes.basicSpec));
    made->reflected = static_cast<MorphSpec *>(rvxMalloc(sizes.basicSpec));
    made->intermediate = static_cast<std::uint8_t *>(rvxMalloc(sizes.intermediate));
    if (made->forward == nullptr || made->reflected == nullptr || made->intermediate == nullptr) {
        release(made);
        return StatusNoMemory;
    }
    fill(pixel, roi, mask, maskSize, sizes, *made, made);
    *spec = made;
    return StatusOk;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiMorphAdvGetSize_8u_C1R(RoiSize roi, RoiSize maskSize, int32_t *specSize, int32_t *bufferSize) {
    return advSizes({PixelType8u, 1}, roi, maskSize, specSize, bufferSize);
}
StatusCode rvxiMorphAdvGetSize_8u_C3R(RoiSize roi, RoiSize maskSize, int32_t *specSize, int32_t *bufferSize) {
    return advSizes({PixelType8u, 3}, roi, maskSize, specSize, bufferSize);
}
StatusCode rvxiMorphAdvGetSize_8u_C4R(RoiSize roi, RoiSize maskSize, int32_t *specSize, int32_t *bufferSize) {
    return advSizes({PixelType8u, 4}, roi, maskSize, specSize, bufferSize);
}
StatusCode rvxiMorphAdvGetSize_16u_C1R(RoiSize roi, RoiSize maskSize, int32_t *specSize, int32_t *bufferSize) {
    return advSizes({PixelType16u, 1}, roi, maskSize, specSize, bufferSize);
}
StatusCode rvxiMorphAdvGetSize_16s_C1R(RoiSize roi, RoiSize maskSize, int32_t *specSize, int32_t *bufferSize) {
    return advSizes({PixelType16s, 1}, roi, maskSize, specSize, bufferSize);
}
StatusCode rvxiMorphAdvGetSize_32f_C1R(RoiSize roi, RoiSize maskSize, int32_t *specSize, int32_t *bufferSize) {
    return advSizes({PixelType32f, 1}, roi, maskSize, specSize, bufferSize);
}
StatusCode rvxiMorphAdvGetSize_32f_C3R(RoiSize roi, RoiSize maskSize, int32_t *specSize, int32_t *bufferSize) {
    return advSizes({PixelType32f, 3}, roi, maskSize, specSize, bufferSize);
}
StatusCode rvxiMorphAdvGetSize_32f_C4R(RoiSize roi, RoiSize maskSize, int32_t *specSize, int32_t *bufferSize) {
    return advSizes({PixelType32f, 4}, roi, maskSize, specSize, bufferSize);
}
StatusCode rvxiMorphAdvGetSize_1u_C1R(RoiSize roi, RoiSize maskSize, int32_t *specSize, int32_t *bufferSize) {
    return advSizes({PixelType1u, 1}, roi, maskSize, specSize, bufferSize);
}
StatusCode rvxiMorphAdvInit_8u_C1R(RoiSize roi, const uint8_t *mask, RoiSize maskSize, MorphAdvSpec *spec,
                                   uint8_t *buffer) {
    return advInit({PixelType8u, 1}, roi, mask, maskSize, spec, buffer);
}
StatusCode rvxiMorphAdvInit_8u_C3R(RoiSize roi, const uint8_t *mask, RoiSize maskSize, MorphAdvSpec *spec,
                                   uint8_t *buffer) {
    return advInit({PixelType8u, 3}, roi, mask, maskSize, spec, buffer);
}
StatusCode rvxiMorphAdvInit_8u_C4R(RoiSize roi, const uint8_t *mask, RoiSize maskSize, MorphAdvSpec *spec,
                                   uint8_t *buffer) {
    return advInit({PixelType8u, 4}, roi, mask, maskSize, spec, buffer);
}
StatusCode rvxiMorphAdvInit_16u_C1R(RoiSize roi, const uint8_t *mask, RoiSize maskSize, MorphAdvSpec *spec,
                                    uint8_t *buffer) {
    return advInit({PixelType16u, 1}, roi, mask, maskSize, spec, buffer);
}
StatusCode rvxiMorphAdvInit_16s_C1R(RoiSize roi, const uint8_t *mask, RoiSize maskSize, MorphAdvSpec *spec,
                                    uint8_t *buffer) {
    return advInit({PixelType16s, 1}, roi, mask, maskSize, spec, buffer);
}
StatusCode rvxiMorphAdvInit_32f_C1R(RoiSize roi, const uint8_t *mask, RoiSize maskSize, MorphAdvSpec *spec,
                                    uint8_t *buffer) {
    return advInit({PixelType32f, 1}, roi, mask, maskSize, spec, buffer);
}
StatusCode rvxiMorphAdvInit_32f_C3R(RoiSize roi, const uint8_t *mask, RoiSize maskSize, MorphAdvSpec *spec,
                                    uint8_t *buffer) {
    return advInit({PixelType32f, 3}, roi, mask, maskSize, spec, buffer);
}
StatusCode rvxiMorphAdvInit_32f_C4R(RoiSize roi, const uint8_t *mask, RoiSize maskSize, MorphAdvSpec *spec,
                                    uint8_t *buffer) {
    return advInit({PixelType32f, 4}, roi, mask, maskSize, spec, buffer);
}
StatusCode rvxiMorphAdvInit_1u_C1R(RoiSize roi, const uint8_t *mask, RoiSize maskSize, MorphAdvSpec *spec,
                                   uint8_t *buffer) {
    return advInit({PixelType1u, 1}, roi, mask, maskSize, spec, buffer);
}
StatusCode rvxiMorphAdvInitAlloc_8u_C1R(MorphAdvSpec **spec, RoiSize roi, const uint8_t *mask, RoiSize maskSize) {
    return advInitAlloc({PixelType8u, 1}, spec, roi, mask, maskSize);
}
StatusCode rvxiMorphAdvInitAlloc_8u_C3R(MorphAdvSpec **spec, RoiSize roi, const uint8_t *mask, RoiSize maskSize) {
    return advInitAlloc({PixelType8u, 3}, spec, roi, mask, maskSize);
}
StatusCode rvxiMorphAdvInitAlloc_8u_C4R(MorphAdvSpec **spec, RoiSize roi, const uint8_t *mask, RoiSize maskSize) {
    return advInitAlloc({PixelType8u, 4}, spec, roi, mask, maskSize);
}
StatusCode rvxiMorphAdvInitAlloc_32f_C1R(MorphAdvSpec **spec, RoiSize roi, const uint8_t *mask, RoiSize maskSize) {
    return advInitAlloc({PixelType32f, 1}, spec, roi, mask, maskSize);
}
StatusCode rvxiMorphAdvInitAlloc_32f_C3R(MorphAdvSpec **spec, RoiSize roi, const uint8_t *mask, RoiSize maskSize) {
    return advInitAlloc({PixelType32f, 3}, spec, roi, mask, maskSize);
}
StatusCode rvxiMorphAdvInitAlloc_32f_C4R(MorphAdvSpec **spec, RoiSize roi, const uint8_t *mask, RoiSize maskSize) {
    return advInitAlloc({PixelType32f, 4}, spec, roi, mask, maskSize);
}
StatusCode rvxiMorphAdvFree(MorphAdvSpec *spec) {
    if (spec == nullptr) {
        return StatusNullPointer;
    }
    release(spec);
    return StatusOk;
}