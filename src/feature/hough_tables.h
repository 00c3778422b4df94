// What the line detectors share: the extent of the space of lines, the accumulated angles, and the marked pixels of an
// image.
#pragma once

#include "kernel/base.h"
#include "kernel/plane.h"
#include "kernel/rows.h"
#include "kernel/vec.h"

#include "rvxcv/types.h"

#include <bit>

namespace rvxcv {

// Cells of the space of lines: numbers of rhos and of angles, and the cell of rho = 0. Counts that do not fit in 31
// bits stay at 2^31, which no scratch size survives.
struct HoughSpace {
    std::int64_t rhos, half, angles;

    HoughSpace(RoiSize roi, HoughResolution resolution) {
        const std::int64_t twice = 2 * (std::int64_t{roi.width} + roi.height) + 1;
        rhos = whole(static_cast<float>(twice) / resolution.rho);
        half = (rhos - 1) / 2;
        angles = whole(3.14159f / resolution.theta) + 1;
    }

private:
    static std::int64_t whole(float a) { return a < 0x1p31f ? static_cast<std::int64_t>(a) : std::int64_t{1} << 31; }
};

constexpr bool goodResolution(HoughResolution resolution) { return resolution.rho > 0 && resolution.theta > 0; }

// Calls function(k, angle) for k = 0 .. count - 1. The angle is accumulated in single precision.
template <class Function> void forEachAngle(std::int64_t count, float step, const Function &function) {
    float angle = 0;
    for (std::int64_t k = 0; k < count; ++k, angle += step) {
        function(k, static_cast<double>(angle));
    }
}

// A pixel's coordinates in one word: x below, y above. They need 30 bits at most, because an image whose scratch size
// fits in 31 bits has less than 2^29 pixels.
class PixelCode {
public:
    explicit PixelCode(std::int32_t width) : bits_(std::bit_width(static_cast<std::uint32_t>(width - 1))) {}

    RVX_INLINE std::uint32_t encode(std::int64_t x, std::int64_t y) const {
        return static_cast<std::uint32_t>(y << bits_ | x);
    }
    RVX_INLINE std::int32_t x(std::uint32_t word) const { return static_cast<std::int32_t>(word & mask()); }
    RVX_INLINE std::int32_t y(std::uint32_t word) const { return static_cast<std::int32_t>(word >> bits_); }
    RVX_INLINE F32x8 x(I32x8 words) const { return toF32(maskedBits(words, mask())); }
    RVX_INLINE F32x8 y(I32x8 words) const { return toF32(upperBits(words, bits_)); }

private:
    RVX_INLINE std::uint32_t mask() const { return (1u << bits_) - 1; }
    int bits_;
};

// Walks an image in scan order and calls visit(bits, x, y) for every 32 columns or less: bit i tells whether the pixel
// at (x + i, y) is marked.
template <class Visit> void visitMarks(Plane<const std::uint8_t> src, RoiSize roi, Visit &&visit) {
    for (std::int64_t y = 0; y < roi.height; ++y) {
        const std::uint8_t *const row = src.row(y);
        walkRow<32>(roi.width, [&](std::ptrdiff_t x, auto span) {
            visit(~laneBits(equal(load<U8x32>(row + x, span), splat(std::uint8_t{0}))), x, y);
        });
    }
}

// The same, but visit(x, y) for every marked pixel.
template <class Visit> void visitMarkedPixels(Plane<const std::uint8_t> src, RoiSize roi, Visit &&visit) {
    visitMarks(src, roi, [&](std::uint32_t bits, std::int64_t x, std::int64_t y) {
        for (; bits != 0; bits &= bits - 1) {
            visit(x + std::countr_zero(bits), y);
        }
    });
}

} // namespace rvxcv
