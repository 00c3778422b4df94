// Erosion and dilation of bit images, for the exported members and for what is built on them.
#pragma once

#include "kernel/border.h"

#include "rvxcv/morph.h"

namespace rvxcv {

// A bit image whose first pixel is bit 0..7 of the byte at base.
template <class Byte> struct BitPlane {
    Byte *base;
    std::int64_t step;
    std::int64_t bit;

    // Any offset, also a negative one, moves the base by whole bytes.
    BitPlane(Byte *first, std::int64_t rowStep, std::int64_t offset)
        : base(first + (offset >> 3)), step(rowStep), bit(offset & 7) {}

    BitPlane at(std::int64_t x, std::int64_t y) const { return {base + y * step, step, bit + x}; }
    Byte *row(std::int64_t y) const { return base + y * step; }
};

// What every step works on: output rows firstRow .. lastRow - 1 of a region. Any scratch of the size that the 1u query
// tells for the region's width, less the mask's, suffices.
struct BitTask {
    BitPlane<const std::uint8_t> src;
    BitPlane<std::uint8_t> dst;
    RoiSize roi;
    std::int64_t firstRow, lastRow;
    Border border;
    std::uint8_t *scratch;
    std::int64_t scratchBytes;
};

void erodeBits(const BitTask &task, const MorphSpec &spec);
void dilateBits(const BitTask &task, const MorphSpec &spec);
// dst = a AND NOT b; dst may be one of them.
void subtractBits(BitPlane<const std::uint8_t> a, BitPlane<const std::uint8_t> b, BitPlane<std::uint8_t> dst,
                  std::int64_t width, std::int64_t rows);

} // namespace rvxcv
