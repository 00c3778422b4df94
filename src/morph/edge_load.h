// Vectors at the ends of a row, with the edge pixel repeated for what lies outside it: two halves of the row, shuffled.
#pragma once

#include "kernel/vec.h"

#include <algorithm>

namespace rvxcv {

// Which bytes of a row's first and last vector stand for the bytes outside.
struct EdgePixels {
    std::uint8_t before[32], behind[32];

    // Pixels of at most 16 bytes.
    explicit EdgePixels(std::int64_t pixelBytes) {
        for (std::int64_t j = 0, k = 0; j < 32; ++j, k = k + 1 == pixelBytes ? 0 : k + 1) {
            before[j] = static_cast<std::uint8_t>(k);
            behind[31 - j] = static_cast<std::uint8_t>(31 - k);
        }
    }
};

// A vector that begins `offset` bytes (at most 32 either way) from a row's begin, or from a vector before its end.
class EdgeLoad {
public:
    EdgeLoad() = default;

    static EdgeLoad atBegin(std::int64_t offset, const EdgePixels &edge) {
        return {offset, std::max<std::int64_t>(offset, 0), std::max<std::int64_t>(offset + half, 0),
                [&edge](int j, int from) { return from < 0 ? edge.before[j] : from; }};
    }
    static EdgeLoad atEnd(std::int64_t offset, const EdgePixels &edge) {
        return {offset, std::min(offset, half), std::min(offset + half, half),
                [&edge](int j, int from) { return from >= 2 * half ? edge.behind[j] : from; }};
    }

    template <class V> RVX_INLINE V load(const typename V::Element *place) const {
        return shuffledHalves<V>(byteOffset(place, low_), byteOffset(place, high_), order_);
    }

private:
    static constexpr std::int64_t half = 16;

    // source(j, from): the byte that becomes byte j, `from` if it lies on the row.
    template <class Source>
    EdgeLoad(std::int64_t offset, std::int64_t low, std::int64_t high, const Source &source) : low_(low), high_(high) {
        std::uint8_t order[2 * half];
        for (int j = 0; j < 2 * half; ++j) {
            order[j] = static_cast<std::uint8_t>(source(j, j + static_cast<int>(offset)) -
                                                 static_cast<int>(j < half ? low : high));
        }
        order_ = rvxcv::load<U8x32>(order);
    }

    std::int64_t low_, high_; // where the halves begin
    U8x32 order_;
};

} // namespace rvxcv
