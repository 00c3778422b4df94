// Random numbers that are the same everywhere for the same seed; the standard library's distributions are not.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

namespace tools {

// Steele, Lea, Flood, "Fast splittable pseudorandom number generators", OOPSLA 2014.
class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed) {}

    std::uint64_t bits() {
        std::uint64_t z = (state_ += 0x9e3779b97f4a7c15u);
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
        return z ^ (z >> 31);
    }
    // 0 up to `end`, which is left out and at least 1. The bias is below end / 2^32.
    int below(int end) { return static_cast<int>(((bits() >> 32) * static_cast<std::uint64_t>(end)) >> 32); }
    double between(double low, double high) {
        return low + (high - low) * (static_cast<double>(bits() >> 11) * 0x1p-53);
    }
    bool chance(double part) { return between(0, 1) < part; }

    template <typename T> void shuffle(std::vector<T> &items) {
        for (std::size_t i = items.size(); i > 1; --i) {
            std::swap(items[i - 1], items[static_cast<std::size_t>(below(static_cast<int>(i)))]);
        }
    }

private:
    std::uint64_t state_;
};

} // namespace tools
