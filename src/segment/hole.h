// What both methods of inpainting share: the hole of a picture, the time at which the fast march from its known pixels
// reaches each of its pixels, and the order.
//
// All planes have R = radius pixels of frame, and 8 more columns on the right: what is read around a pixel of the
// region lies inside. Times are 0 at known pixels and above 0 in the hole. Their sign bit tells that a pixel is not
// known: it is set in the frame, and in the hole until the pixel is filled.
#pragma once

#include "kernel/channels.h"
#include "kernel/checks.h"
#include "kernel/plane.h"
#include "kernel/scratch.h"
#include "segment/march.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace rvxcv {

inline std::int64_t inpaintScratchBytes(RoiSize roi, std::int64_t radius) {
    const std::int64_t w = roi.width, h = roi.height, r = radius;
    return saturatedSum(saturatedProduct(20, w + 2 * r + 8, h + 2 * r), saturatedProduct(4, w, h),
                        8 * (2 * r + 8) * (2 * r + 2), 256);
}

// A pixel's number in the planes, and where it lies in the region.
struct HolePixel {
    std::int64_t number, x, y;
};

class Hole {
public:
    Hole(RoiSize roi, std::int64_t reach, std::uint8_t *buffer)
        : width(roi.width), height(roi.height), radius(reach), stride(width + 2 * radius + 8),
          planeSize(stride * (height + 2 * radius)), areas_(buffer, inpaintScratchBytes(roi, radius)) {
        words_ = areas_.take<std::uint32_t>(planeSize, 32);
        planes = areas_.take<float>(4 * planeSize, 32);
        // The last plane ends with the marks.
        markColumns_ = (width + markWidth - 1) / markWidth;
        marksSize_ = markColumns_ * ((height + markHeight - 1) / markHeight);
        marks_ = reinterpret_cast<std::uint8_t *>(planes + 4 * planeSize) - marksSize_;
        order_ = areas_.take<std::uint32_t>(width * height, 32);
    }

    const std::int64_t width, height, radius, stride, planeSize;
    // Room for the methods: three planes and most of a fourth one.
    float *planes;

    // The rest of the scratch.
    Scratch &rest() { return areas_; }

    const float *times() const { return reinterpret_cast<const float *>(words_); }
    std::int64_t first() const { return radius * stride + radius; } // the number of the region's first pixel
    std::int64_t firstRow() const { return firstRow_; }
    std::int64_t lastRow() const { return lastRow_; }
    std::int64_t count() const { return count_; }
    float lastTime() const { return std::bit_cast<float>(words_[order_[count_ - 1]] & ~unknown); }

    // False when there is nothing to fill, or nothing to fill it from.
    bool find(Plane<const std::uint8_t> mask, std::int64_t reach) {
        firstRow_ = 0;
        while (firstRow_ < height && !reachesRow(mask.row(firstRow_))) {
            ++firstRow_;
        }
        if (firstRow_ == height) {
            return false;
        }
        lastRow_ = height - 1;
        while (!reachesRow(mask.row(lastRow_))) {
            --lastRow_;
        }
        const std::int64_t above = std::max(firstRow_ - radius - 1, -radius);
        const std::int64_t below = std::min(lastRow_ + radius + 1, height - 1 + radius);
        std::memset(marks_, 0, static_cast<std::size_t>(marksSize_));
        for (std::int64_t y = above; y <= below; ++y) {
            std::uint32_t *const row = words_ + first() + y * stride;
            if (y < 0 || y >= height) {
                std::fill(row - radius, row + width + radius + 8, March::outside);
                continue;
            }
            std::fill(row - radius, row, March::outside);
            takeRow(mask.row(y), row, y, reach);
            std::fill(row + width, row + width + radius + 8, March::outside);
        }
        return count_ < width * height;
    }

    void march() {
        // The methods' planes are not in use yet.
        March march(words_, stride, reinterpret_cast<std::uint64_t *>(planes), width * height);
        for (std::int64_t y = firstRow_; y <= lastRow_; ++y) {
            march.collect(first() + y * stride, width);
        }
        std::uint32_t *next = order_;
        march.run([&](std::uint32_t number) { *next++ = number; });
    }

    // No pixel of the hole is known.
    void forget() {
        for (std::int64_t i = 0; i < count_; ++i) {
            words_[order_[i]] |= unknown;
        }
    }

    void learn(std::int64_t number) { words_[number] &= ~unknown; }
    bool isKnown(std::int64_t number) const { return (words_[number] & unknown) == 0; }
    float time(std::int64_t number) const { return std::bit_cast<float>(words_[number] & ~unknown); }

    // The hole's pixels in the order in which they are reached.
    template <class Function> void forEachPixel(const Function &function) const {
        const auto rowLength = static_cast<std::uint32_t>(stride);
        for (std::int64_t i = 0; i < count_; ++i) {
            const std::uint32_t number = order_[i], y = number / rowLength;
            function(HolePixel{number, number - y * rowLength - radius, y - radius});
        }
    }

    // Calls function(x, y, number, columns) for pieces of rows that together hold all pixels within reach of the hole.
    static constexpr std::int64_t markWidth = 32, markHeight = 8;
    template <class Function> void forEachPiece(const Function &function) const {
        for (std::int64_t y = 0; y < height; ++y) {
            const std::uint8_t *const marked = marks_ + y / markHeight * markColumns_;
            for (std::int64_t i = 0; i < markColumns_; ++i) {
                if (marked[i] != 0) {
                    const std::int64_t x = i * markWidth;
                    function(x, y, first() + y * stride + x, std::min(markWidth, width - x));
                }
            }
        }
    }

private:
    static constexpr std::uint32_t unknown = 0x80000000u;

    bool reachesRow(const std::uint8_t *mask) const {
        U8x32 any = splat(std::uint8_t{0});
        walkRow<32>(width, [&](std::ptrdiff_t x, auto span) { any = bitOr(any, load<U8x32>(mask + x, span)); });
        return anyBit(any);
    }

    void takeRow(const std::uint8_t *mask, std::uint32_t *words, std::int64_t y, std::int64_t reach) {
        const auto untouched = static_cast<std::int32_t>(March::untouched);
        auto *const row = reinterpret_cast<std::int32_t *>(words);
        walkRow<32>(width, [&](std::ptrdiff_t x, auto span) {
            const U8x32 known = equal(load<U8x32>(mask + x, span), splat(std::uint8_t{0}));
            // A part's other lanes are zeros.
            const std::uint32_t bits = ~laneBits(known);
            if (bits != 0) {
                count_ += std::popcount(bits);
                mark(x, y, reach);
            }
            // What is written behind the row is written again.
            for (int g = 0; g < 4; ++g) {
                store(row + x + 8 * g, keep(maskOfBits<I32x8>(bits >> 8 * g), splat(untouched)));
                if (x + 8 * g + 8 >= width) {
                    break;
                }
            }
        });
    }

    void mark(std::int64_t x, std::int64_t y, std::int64_t reach) {
        const std::int64_t left = std::max<std::int64_t>(x - reach, 0) / markWidth;
        // Vectors hold up to seven columns too many, and leftovers there may be slow to calculate with.
        const std::int64_t right = std::min(x + 31 + reach + 7, width - 1) / markWidth;
        const std::int64_t top = std::max<std::int64_t>(y - reach, 0) / markHeight;
        const std::int64_t bottom = std::min(y + reach, height - 1) / markHeight;
        for (std::int64_t row = top; row <= bottom; ++row) {
            std::memset(marks_ + row * markColumns_ + left, 1, static_cast<std::size_t>(right - left + 1));
        }
    }

    Scratch areas_;
    std::uint32_t *words_, *order_;
    std::uint8_t *marks_;
    std::int64_t firstRow_ = 0, lastRow_ = 0, count_ = 0, markColumns_, marksSize_;
};

// A channel of up to 32 pixels as floats; behind the last one up to seven more are written.
template <int channels, class T> void loadPiece(const T *src, std::int64_t columns, float *dst) {
    if constexpr (std::is_same_v<T, float>) {
        static_assert(channels == 1);
        std::memcpy(dst, src, static_cast<std::size_t>(columns) * sizeof(float));
    } else {
        std::uint8_t bytes[32];
        const auto read = [&](auto span) {
            if constexpr (channels == 1) {
                return load<U8x32>(src, span);
            } else {
                return loadChannel<U8x32>(src, span);
            }
        };
        store(bytes, columns == 32 ? read(Full{}) : read(Part{static_cast<int>(columns)}));
        for (std::int64_t x = 0; x < columns; x += 8) {
            store(dst + x, loadF32(bytes + x, Full{}));
        }
    }
}

template <class T> RVX_INLINE void storeResult(T *dst, float value) {
    if constexpr (std::is_same_v<T, float>) {
        storeScalar(dst, value);
    } else {
        *dst = static_cast<std::uint8_t>(std::lrint(std::min(std::max(value, 0.0f), 255.0f)));
    }
}

} // namespace rvxcv
