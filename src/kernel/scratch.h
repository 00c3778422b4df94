// Carves aligned areas out of a caller's scratch buffer. The buffer may start at any address; the size is a contract,
// and debug builds assert that it is kept.
#pragma once

#include "kernel/base.h"

#include <cassert>

namespace rvxcv {

class Scratch {
public:
    Scratch(void *buffer, std::int64_t promisedBytes)
        : next_(static_cast<std::uint8_t *>(buffer)), end_(next_ + promisedBytes) {}

    // `count` elements of T, the first at a multiple of `alignment` bytes (a power of two).
    template <class T> T *take(std::int64_t count, std::int64_t alignment = static_cast<std::int64_t>(alignof(T))) {
        const auto address = reinterpret_cast<std::uintptr_t>(next_);
        const auto mask = static_cast<std::uintptr_t>(alignment - 1);
        std::uint8_t *area = next_ + (((address + mask) & ~mask) - address);
        next_ = area + count * static_cast<std::int64_t>(sizeof(T));
        assert(next_ <= end_);
        return reinterpret_cast<T *>(area);
    }

    // Bytes that are not taken yet.
    std::int64_t left() const { return end_ - next_; }

private:
    std::uint8_t *next_;
    std::uint8_t *end_;
};

} // namespace rvxcv
