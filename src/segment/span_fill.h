// The one engine of all flood fills. It knows an image as words of 64 pixels and asks its owner three things: which
// pixels of a word are members, which steps between neighbouring pixels the gradient rule allows, and to paint.
#pragma once

#include "kernel/base.h"

#include "rvxcv/types.h"

namespace rvxcv {

// What the engine needs of an image. n is 1 to 64, and pixels (x, y) .. (x + n - 1, y) lie inside.
struct FillImage {
    RoiSize roi;
    // Bit i: pixel (x + i, y) is a member. For plain and range fills.
    std::uint64_t (*members)(const FillImage &image, std::int64_t x, std::int64_t y, int n);
    // Bit i: pixel (x + i + dx, y + dy) may be joined from pixel (x + i, y); both lie inside. For gradient fills.
    std::uint64_t (*steps)(const FillImage &image, std::int64_t x, std::int64_t y, int n, int dx, int dy);
    // Paints the pixels of the bits that are set (at least one).
    void (*paint)(const FillImage &image, std::int64_t x, std::int64_t y, int n, std::uint64_t pixels);
};

struct FilledRegion {
    std::int64_t area, left, top, right, bottom; // right and bottom are included
};

constexpr std::uint64_t memberFillBytes(RoiSize roi) {
    return 6 * static_cast<std::uint64_t>(roi.width) * static_cast<std::uint64_t>(roi.height) + 32;
}
constexpr std::uint64_t gradientFillBytes(RoiSize roi) {
    const auto w = static_cast<std::uint64_t>(roi.width), h = static_cast<std::uint64_t>(roi.height);
    return (w + 2) * (h + 2) + 16 * w * h + 64;
}

// Fills from a seed; the buffer has memberFillBytes or gradientFillBytes and starts anywhere.
FilledRegion fillMembers(const FillImage &image, Point2i seed, bool eightNeighbours, std::uint8_t *buffer);
FilledRegion fillGradients(const FillImage &image, Point2i seed, bool eightNeighbours, std::uint8_t *buffer);

} // namespace rvxcv
