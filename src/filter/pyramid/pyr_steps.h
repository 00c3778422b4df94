// What the fixed halving and doubling share: their checks, the six-byte groups of three channels, and size queries.
#pragma once

#include "kernel/checks.h"
#include "kernel/plane.h"
#include "kernel/vec.h"

#include "rvxcv/types.h"

namespace rvxcv {

// The arguments of a step. The destination's row has dstWidth pixels.
template <class T, int channels> struct PyrCall {
    const T *src;
    std::int32_t srcStep;
    T *dst;
    std::int32_t dstStep;
    RoiSize roi; // of the source
    std::uint8_t *buffer;

    StatusCode check(std::int64_t dstWidth) const {
        Checks checks;
        checks.pointers(src, dst, buffer).size(roi).steps(rowBytes<T>(std::int64_t{roi.width} * channels), srcStep);
        checks.steps(rowBytes<T>(dstWidth * channels), dstStep).multiples(sizeof(T), srcStep, dstStep);
        return checks.status();
    }
};

// Scratch is sized in slots: as many bytes as `perPixel` says for every pixel of a source row, rounded up to sixteen.
// Kernels lay out their areas in what the slots add up to.
constexpr std::int64_t pyrSlotBytes(std::int64_t width, std::int64_t channels, std::int64_t perPixel) {
    return roundUp(saturatedProduct(width, channels, perPixel), 16);
}
constexpr std::int64_t pyrDownScratch(std::int64_t width, std::int64_t channels) {
    return pyrSlotBytes(width, channels, 4) * 6 + 64;
}
constexpr std::int64_t pyrUpScratch(std::int64_t width, std::int64_t channels) {
    return pyrSlotBytes(width, channels, 8) * 3 + 64;
}

inline StatusCode pyrScratchQuery(std::int64_t (*bytes)(std::int64_t, std::int64_t), std::int32_t roiWidth,
                                  PixelTypeCode pixelType, std::int32_t channels, std::int32_t *size) {
    Checks checks;
    checks.pointers(size).require(roiWidth >= 1, StatusBadSize);
    checks.require(channels == 1 || channels == 3, StatusBadChannelCount);
    checks.require(pixelType == PixelType8u || pixelType == PixelType8s || pixelType == PixelType32f,
                   StatusBadDataType);
    return checks.failed() ? checks.status() : storeSize(bytes(roiWidth, channels), size);
}

// Groups of six bytes are two pixels of three channels, or three pairs of bytes that belong to a channel. Two groups at
// a time go from one arrangement to the other; elements 12 .. 15 are of no use.
//
//     a0 b0 c0 a1 b1 c1   <->   a0 a1 b0 b1 c0 c1
RVX_INLINE U8x16 pairsOfPixels() { return {_mm_setr_epi8(0, 3, 1, 4, 2, 5, 6, 9, 7, 10, 8, 11, 0, 0, 0, 0)}; }
RVX_INLINE U8x16 pixelsOfPairs() { return {_mm_setr_epi8(0, 2, 4, 1, 3, 5, 6, 8, 10, 7, 9, 11, 0, 0, 0, 0)}; }

// Reorders `bytes` bytes in groups of six, of which the last may be incomplete. Not a byte more is read or written,
// except that sixteen bytes from the last group on are written where the destination has `room` for them.
template <bool room, class T> inline void reorderSixes(const T *src, T *dst, std::int64_t bytes, U8x16 order) {
    const auto *from = reinterpret_cast<const std::uint8_t *>(src);
    auto *to = reinterpret_cast<std::uint8_t *>(dst);
    const U8x32 orders = inBothHalves(order);
    std::int64_t i = 0;
    for (; i + 32 <= bytes; i += 24) {
        store(to + i, joinedTwelves(shuffledHalves<U8x32>(from + i, from + i + 12, orders)));
    }
    for (; i < bytes; i += 12) {
        const int count = static_cast<int>(bytes - i < 12 ? bytes - i : 12);
        const U8x16 sixes = reordered(loadHalf(from + i, Part{count}), order);
        if constexpr (room) {
            storeHalf(to + i, sixes);
        } else {
            storeHalf(to + i, sixes, Part{count});
        }
    }
}

} // namespace rvxcv
