// Memory that ends (and begins) at unmapped pages, and images in it. Reading or writing one byte behind the last pixel
// (or before the first one) faults; the bytes between rows hold a pattern that must survive.
#pragma once

#include "support/random.h"

#include "rvxcv/types.h"

#include <gtest/gtest.h>

#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <vector>

#if __has_include(<valgrind/memcheck.h>)
#include <valgrind/memcheck.h>
#else
#define VALGRIND_MAKE_MEM_UNDEFINED(address, bytes) static_cast<void>(0)
#endif

namespace support {

enum class Guard {
    behind, // the last byte lies directly before an unmapped page
    before  // the first byte lies directly behind an unmapped page
};

class GuardedBuffer {
public:
    explicit GuardedBuffer(std::int64_t bytes, Guard guard = Guard::behind) : bytes_(bytes) {
        const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        const std::size_t inner = (static_cast<std::size_t>(bytes) + page - 1) / page * page;
        mapped_ = inner + 2 * page;
        map_ = static_cast<std::uint8_t *>(
            mmap(nullptr, mapped_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0));
        if (map_ == MAP_FAILED || (inner != 0 && mprotect(map_ + page, inner, PROT_READ | PROT_WRITE) != 0)) {
            std::abort();
        }
        data_ = guard == Guard::behind ? map_ + page + inner - bytes : map_ + page;
    }
    GuardedBuffer(const GuardedBuffer &) = delete;
    GuardedBuffer &operator=(const GuardedBuffer &) = delete;
    GuardedBuffer(GuardedBuffer &&other) noexcept
        : map_(other.map_), mapped_(other.mapped_), data_(other.data_), bytes_(other.bytes_) {
        other.map_ = nullptr;
    }
    ~GuardedBuffer() {
        if (map_ != nullptr) {
            munmap(map_, mapped_);
        }
    }

    std::uint8_t *data() { return data_; }
    const std::uint8_t *data() const { return data_; }
    std::int64_t size() const { return bytes_; }

    // Fills with a pattern that can be recognised.
    void scribble(std::uint8_t seed = 0xa5) {
        for (std::int64_t i = 0; i < bytes_; ++i) {
            data_[i] = static_cast<std::uint8_t>(seed + 31 * i);
        }
    }

    // For scratch: fills with something that is not zero, and valgrind takes it (or its first bytes, where those behind
    // must survive) for memory that was never written.
    void spoil(std::uint8_t seed = 0xa5) { spoil(bytes_, seed); }
    void spoil(std::int64_t scratchBytes, std::uint8_t seed) {
        scribble(seed);
        VALGRIND_MAKE_MEM_UNDEFINED(data_, scratchBytes);
    }

private:
    std::uint8_t *map_;
    std::size_t mapped_;
    std::uint8_t *data_;
    std::int64_t bytes_;
};

// An image of `width` elements a row (pixels times channels) with `padding` bytes between rows, none behind the last
// one, and optionally `margin` pixels around that belong to the image (for borders in memory). Elements may be
// misaligned: they are accessed by memcpy only.
template <class T> class GuardedImage {
public:
    struct Layout {
        std::int64_t padding = 0; // bytes between the end of a row and the next one
        Guard guard = Guard::behind;
        std::int64_t left = 0, top = 0, right = 0, bottom = 0; // margin in memory, in elements and rows
        std::int64_t skew = 0; // bytes behind the last row, before the guard: misaligns every element
    };

    GuardedImage(std::int64_t width, std::int64_t height, Layout layout = {})
        : width_(width), height_(height), layout_(layout),
          step_((width + layout.left + layout.right) * static_cast<std::int64_t>(sizeof(T)) + layout.padding),
          buffer_((height + layout.top + layout.bottom) * step_ - layout.padding + layout.skew, layout.guard) {
        buffer_.scribble(0x5b);
    }

    // The first element of the region. Pass it to the library; do not dereference it (it may be misaligned).
    T *data() { return reinterpret_cast<T *>(buffer_.data() + offset(0, 0)); }
    const T *data() const { return reinterpret_cast<const T *>(buffer_.data() + offset(0, 0)); }
    std::int32_t step() const { return static_cast<std::int32_t>(step_); }
    std::int64_t width() const { return width_; }
    std::int64_t height() const { return height_; }
    Guard guard() const { return layout_.guard; }
    RoiSize roi(int channels = 1) const {
        return {static_cast<std::int32_t>(width_ / channels), static_cast<std::int32_t>(height_)};
    }

    // x and y may lie in the margin.
    T at(std::int64_t x, std::int64_t y) const {
        T value;
        std::memcpy(&value, buffer_.data() + offset(x, y), sizeof value);
        return value;
    }
    void set(std::int64_t x, std::int64_t y, T value) {
        std::memcpy(buffer_.data() + offset(x, y), &value, sizeof value);
    }

    void fill(Rng &rng, Contents contents) {
        for (std::int64_t y = -layout_.top; y < height_ + layout_.bottom; ++y) {
            for (std::int64_t x = -layout_.left; x < width_ + layout_.right; ++x) {
                set(x, y, randomValue<T>(rng, contents));
            }
        }
    }

    // Every byte of the image, padding included: to check that a failed call writes nothing.
    std::vector<std::uint8_t> bytes() const { return {buffer_.data(), buffer_.data() + buffer_.size()}; }

    // Whether the bytes between rows still hold their pattern.
    bool paddingIntact() const {
        const std::int64_t rowBytes = step_ - layout_.padding;
        for (std::int64_t i = 0; i < buffer_.size(); ++i) {
            if (i % step_ >= rowBytes && buffer_.data()[i] != static_cast<std::uint8_t>(0x5b + 31 * i)) {
                return false;
            }
        }
        return true;
    }

private:
    std::int64_t offset(std::int64_t x, std::int64_t y) const {
        return (y + layout_.top) * step_ + (x + layout_.left) * static_cast<std::int64_t>(sizeof(T));
    }

    std::int64_t width_, height_;
    Layout layout_;
    std::int64_t step_;
    GuardedBuffer buffer_;
};

// Two values are the same: equal bits, or both NaN (which NaN comes out of an operation on two is not fixed).
template <class T> bool sameValue(T a, T b) {
    if constexpr (std::is_floating_point_v<T>) {
        if (std::isnan(a) || std::isnan(b)) {
            return std::isnan(a) && std::isnan(b);
        }
    }
    return std::memcmp(&a, &b, sizeof a) == 0;
}

// Compares an image with the function expected(x, y) over elements; tells the first difference and checks the padding.
template <class T, class Expected>
testing::AssertionResult imageIs(const GuardedImage<T> &actual, const Expected &expected) {
    for (std::int64_t y = 0; y < actual.height(); ++y) {
        for (std::int64_t x = 0; x < actual.width(); ++x) {
            const T want = static_cast<T>(expected(x, y)), got = actual.at(x, y);
            if (!sameValue(want, got)) {
                return testing::AssertionFailure() << "first difference at element (" << x << ", " << y << ") of "
                                                   << actual.width() << "x" << actual.height() << ": expected " << +want
                                                   << ", got " << +got << " (seed " << baseSeed() << ")";
            }
        }
    }
    if (!actual.paddingIntact()) {
        return testing::AssertionFailure() << "bytes between rows were written";
    }
    return testing::AssertionSuccess();
}

} // namespace support
