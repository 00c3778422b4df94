// Seeded random contents. Every case derives its generator from the base seed and its own name, so that one case
// replays alone.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <random>
#include <string_view>
#include <type_traits>

namespace support {

inline std::uint64_t baseSeed() {
    static const std::uint64_t seed = [] {
        const char *text = std::getenv("RVXCV_SEED");
        return text != nullptr ? std::strtoull(text, nullptr, 10) : 20141009ULL;
    }();
    return seed;
}

// Whether the library is one with sanitizers, which is not optimised and takes its time.
inline bool sanitized() {
    static const bool set = std::getenv("RVXCV_SANITIZED") != nullptr;
    return set;
}

// The step in which the longest series of cases are gone through.
inline int caseStep() { return sanitized() ? 4 : 1; }

using Rng = std::mt19937_64;

inline Rng makeRng(std::string_view name, std::uint64_t salt = 0) {
    std::uint64_t hash = baseSeed() ^ (salt * 0x9e3779b97f4a7c15ULL);
    for (const char c : name) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3ULL;
    }
    return Rng(hash);
}

inline std::int64_t uniform(Rng &rng, std::int64_t low, std::int64_t high) {
    return low + static_cast<std::int64_t>(rng() % static_cast<std::uint64_t>(high - low + 1));
}

// What a generated image holds.
enum class Contents {
    random,   // the whole range of the type; floats -1000..1000
    small,    // a few values around zero: many ties
    nearMax,  // values at the ends of the type's range; floats of magnitude 1e30
    constant, // one value
    special   // random, for floats mixed with NaN, infinities, negative zero and denormals
};
constexpr Contents allContents[] = {Contents::random, Contents::small, Contents::nearMax, Contents::constant,
                                    Contents::special};

template <class T> T randomValue(Rng &rng, Contents contents) {
    if constexpr (std::is_floating_point_v<T>) {
        using Limits = std::numeric_limits<T>;
        const T unit = static_cast<T>(uniform(rng, -1000000, 1000000)) * static_cast<T>(1e-6);
        switch (contents) {
        case Contents::small:
            return static_cast<T>(uniform(rng, -2, 2));
        case Contents::nearMax:
            return unit * static_cast<T>(1e30);
        case Contents::constant:
            return static_cast<T>(37.25);
        case Contents::special: {
            constexpr T values[] = {Limits::quiet_NaN(),  Limits::infinity(), -Limits::infinity(), T{-0.0}, T{0},
                                    Limits::denorm_min(), -Limits::min() / 8, Limits::max()};
            const std::int64_t pick = uniform(rng, 0, 31);
            return pick < 8 ? values[pick] : unit * 1000;
        }
        default:
            return unit * 1000;
        }
    } else {
        constexpr std::int64_t low = std::numeric_limits<T>::min(), high = std::numeric_limits<T>::max();
        switch (contents) {
        case Contents::small:
            return static_cast<T>(uniform(rng, low < 0 ? -2 : 0, 3));
        case Contents::nearMax:
            return static_cast<T>(rng() % 2 != 0 ? high - uniform(rng, 0, 2) : low + uniform(rng, 0, 2));
        case Contents::constant:
            return static_cast<T>(117);
        default:
            return static_cast<T>(uniform(rng, low, high));
        }
    }
}

} // namespace support
