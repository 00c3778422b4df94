// Plain arithmetic of the separable pipeline, for the tests of its two stages: one element at a time, from the taps and
// the elements under them.
#pragma once

#include "support/guarded.h"

#include "rvxcv.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace pipeline {

// Whether a pixel lies in the last W mod 16 of a row of W pixels, which are truncated.
inline bool truncates(std::int64_t pixel, std::int64_t width) { return pixel >= width - width % 16; }

template <class D> D scaled(float sum, std::int32_t divisor, bool truncate) {
    const float low = std::numeric_limits<D>::min(), high = std::numeric_limits<D>::max();
    const float quotient = std::clamp(sum * (1.0f / static_cast<float>(divisor)), low, high);
    return static_cast<D>(truncate ? std::trunc(quotient) : std::nearbyint(quotient));
}

// Sums that wrap in 32 bits.
struct Wrapping {
    template <class D, class E, class K>
    static D result(const std::vector<E> &under, const std::vector<K> &kernel, std::int32_t divisor, bool truncate) {
        std::uint32_t sum = 0;
        for (std::size_t i = 0; i < kernel.size(); ++i) {
            sum += static_cast<std::uint32_t>(std::int32_t{under[i]} * std::int32_t{kernel[i]});
        }
        return scaled<D>(static_cast<float>(static_cast<std::int32_t>(sum)), divisor, truncate);
    }
};

// Sums in float: a product, then fused multiply-adds.
struct Fused {
    template <class D, class E, class K>
    static D result(const std::vector<E> &under, const std::vector<K> &kernel, std::int32_t divisor, bool truncate) {
        float sum = static_cast<float>(under[0]) * static_cast<float>(kernel[0]);
        for (std::size_t i = 1; i < kernel.size(); ++i) {
            sum = std::fma(static_cast<float>(kernel[i]), static_cast<float>(under[i]), sum);
        }
        if constexpr (std::is_same_v<D, float>) {
            return sum;
        } else {
            return scaled<D>(sum, divisor, truncate);
        }
    }
};

// Sums that wrap in 16 bits, divided as integers.
struct Low {
    template <class D, class E, class K>
    static D result(const std::vector<E> &under, const std::vector<K> &kernel, std::int32_t divisor, bool) {
        std::uint32_t sum = 0;
        for (std::size_t i = 0; i < kernel.size(); ++i) {
            sum += static_cast<std::uint32_t>(std::int32_t{under[i]} * std::int32_t{kernel[i]});
        }
        const std::int64_t wrapped = static_cast<std::int16_t>(sum);
        return static_cast<D>(std::clamp<std::int64_t>(wrapped / divisor, -32768, 32767));
    }
};

// A kernel whose sums, with the divisor, land in and around the destination's range often enough to be telling.
template <class K> struct Taps {
    std::vector<K> kernel;
    std::int32_t divisor;
};

template <class K, class Arithmetic>
Taps<K> randomTaps(support::Rng &rng, std::int64_t size, support::Contents contents) {
    using support::uniform;
    Taps<K> taps{std::vector<K>(static_cast<std::size_t>(size)), 1};
    const bool gentle = uniform(rng, 0, 1) != 0; // small taps and a divisor of about their sum, or anything
    for (K &tap : taps.kernel) {
        if constexpr (std::is_same_v<K, float>) {
            tap = support::randomValue<float>(rng, contents) * 0.125f;
        } else {
            tap = gentle ? static_cast<K>(uniform(rng, std::is_signed_v<K> ? -6 : 0, 9))
                         : support::randomValue<K>(rng, contents);
        }
    }
    const bool signedDivisor = std::is_signed_v<K>;
    constexpr std::int32_t divisors[] = {1, 2, 3, 7, 16, 255, 32768, 1000003, std::numeric_limits<std::int32_t>::max()};
    taps.divisor = gentle ? static_cast<std::int32_t>(uniform(rng, 1, 3 * size)) : divisors[uniform(rng, 0, 8)];
    if (signedDivisor && uniform(rng, 0, 2) == 0) {
        taps.divisor = uniform(rng, 0, 9) == 0 ? std::numeric_limits<std::int32_t>::min() : -taps.divisor;
    }
    return taps;
}

// A copy of a vector that ends at an unmapped page.
template <class T> class Guarded {
public:
    explicit Guarded(const std::vector<T> &values) : buffer_(static_cast<std::int64_t>(values.size() * sizeof(T))) {
        std::memcpy(buffer_.data(), values.data(), values.size() * sizeof(T));
    }
    T *data() { return reinterpret_cast<T *>(buffer_.data()); }

private:
    support::GuardedBuffer buffer_;
};

// Scratch that holds leftovers: it ends at an unmapped page, or stands at some odd address before bytes that must
// survive.
class OddScratch {
public:
    OddScratch(std::int64_t bytes, support::Rng &rng)
        : bytes_(bytes), buffer_(bytes + std::max<std::int64_t>(0, support::uniform(rng, -33, 33))) {
        buffer_.spoil(bytes, 0xa5);
    }
    std::uint8_t *data() { return buffer_.data(); }
    bool intactBehind() const {
        for (std::int64_t i = bytes_; i < buffer_.size(); ++i) {
            if (buffer_.data()[i] != static_cast<std::uint8_t>(0xa5 + 31 * i)) {
                return false;
            }
        }
        return true;
    }

private:
    std::int64_t bytes_;
    support::GuardedBuffer buffer_;
};

inline std::vector<std::int64_t> testWidths() {
    std::vector<std::int64_t> widths;
    for (std::int64_t w = 1; w <= 70; ++w) {
        widths.push_back(w);
    }
    widths.insert(widths.end(), {79, 96, 127, 128, 129, 143, 191, 257, 640, 1021});
    return widths;
}

} // namespace pipeline
