// The analysis of a flat mask, shared by every pixel type and by both generations of the interface: the sizes of record
// and work buffer, the record's arrangement in memory, and the four shapes. Everything takes its sizes in 64 bits.
#pragma once

#include "kernel/base.h"
#include "kernel/checks.h"

#include "rvxcv/morph.h"

#include <limits>

namespace rvxcv {

// What the sizes and the analysis need to know of a pixel type. The work buffers of 8u (and of bit images) are sized as
// one channel, whatever the image has.
struct MorphPixel {
    PixelTypeCode typeCode;
    std::int32_t channels;

    constexpr std::int64_t elementBytes() const {
        return typeCode == PixelType32f ? 4 : typeCode == PixelType16u || typeCode == PixelType16s ? 2 : 1;
    }
    constexpr std::int64_t sizedBytes() const { return elementBytes() == 1 ? 1 : elementBytes() * channels; }
};

constexpr std::int64_t align16(std::int64_t n) { return roundUp(n, 16); }

// The scratch of a rank filter: a ring of twice as many rows as the mask has, and pointers to rows.
constexpr std::int64_t rankBufferBytes(std::int64_t width, std::int64_t pixelBytes, std::int64_t height) {
    return saturatedSum(saturatedProduct(2, height, width * pixelBytes + 32), 32 * height + 32);
}

// The scratch of the row-run kernel: for every mask row a ring of extrema.
constexpr std::int64_t ellipseBufferBytes(std::int64_t width, std::int64_t pixelBytes, std::int64_t height) {
    return saturatedSum(saturatedProduct(height * height + 1, width * pixelBytes + 32), 40 * height + 40);
}

constexpr std::int64_t morphPositions(RoiSize mask) { return std::int64_t{mask.width} * mask.height; }

constexpr std::int64_t morphSpecBytes(PixelTypeCode typeCode, RoiSize mask) {
    const std::int64_t positions = align16(morphPositions(mask));
    const std::int64_t fixed = typeCode == PixelType1u ? 96 : 16 * std::int64_t{mask.height} + 160;
    return saturatedSum(saturatedProduct(typeCode == PixelType1u ? 3 : 33, positions), fixed);
}

constexpr std::int64_t morphBufferBytes(MorphPixel pixel, std::int64_t roiWidth, RoiSize mask) {
    const std::int64_t height = mask.height, bytes = pixel.sizedBytes();
    const std::int64_t rank = rankBufferBytes(roiWidth, bytes, height);
    const std::int64_t ellipse = ellipseBufferBytes(roiWidth, bytes, height);
    return saturatedSum(rank > ellipse ? rank : ellipse, align16(24 * height), align16(morphPositions(mask)),
                        16 * height + 64);
}

constexpr bool fitsInt32(std::int64_t bytes) { return bytes <= std::numeric_limits<std::int32_t>::max(); }

// The checks of both interfaces' sizes: -6 when one of them is below 1.
constexpr bool morphSizesValid(std::int32_t roiWidth, RoiSize mask) {
    return roiWidth >= 1 && mask.width >= 1 && mask.height >= 1;
}

constexpr Point2i centreAnchor(RoiSize mask) { return {(mask.width - 1) >> 1, (mask.height - 1) >> 1}; }

// Analyses the mask into the record; arguments are valid and the record has morphSpecBytes. Any anchor will do, also
// one outside the mask. A record may stand at any address: it is written and read through copies of its fields.
// 1u records only tell the empty shape from the general one.
void initMorphSpec(std::int32_t roiWidth, const std::uint8_t *mask, RoiSize maskSize, Point2i anchor, MorphPixel pixel,
                   MorphSpec *spec);

// A state begins with its record. No member is named, because a state may stand at any address.
inline MorphSpec *specOf(MorphState *state) { return reinterpret_cast<MorphSpec *>(state); }

// The record's fields. (A 1u record's fields end with the shape; the copy's rest is then meaningless.)
inline MorphSpec readMorphSpec(const MorphSpec *spec) { return loadScalar(spec); }

} // namespace rvxcv
