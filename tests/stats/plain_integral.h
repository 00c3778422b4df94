// Integral images in their plainest form, element by element.
#pragma once

#include "support/guarded.h"

#include <cstdint>
#include <vector>

namespace stats {

// An image of its own, without a step.
template <class T> struct Plain {
    std::int64_t width, height;
    std::vector<T> elements;

    Plain(std::int64_t w, std::int64_t h, T value)
        : width(w), height(h), elements(static_cast<std::size_t>(w * h), value) {}
    T &at(std::int64_t x, std::int64_t y) { return elements[static_cast<std::size_t>(y * width + x)]; }
    T at(std::int64_t x, std::int64_t y) const { return elements[static_cast<std::size_t>(y * width + x)]; }
};

template <class T> T plainAdd(T a, T b) { return a + b; }
template <class T> T plainSub(T a, T b) { return a - b; }
template <> inline std::int32_t plainAdd(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}
template <> inline std::int32_t plainSub(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

using Source = support::GuardedImage<std::uint8_t>;

// A pixel or its square; zero behind the row.
inline std::int32_t term(const Source &src, std::int64_t x, std::int64_t y, bool squared) {
    const std::int32_t pixel = x < src.width() ? src.at(x, y) : 0;
    return squared ? pixel * pixel : pixel;
}

template <class T> Plain<T> plainIntegral(const Source &src, bool squared, T val) {
    Plain<T> out(src.width() + 1, src.height() + 1, val);
    for (std::int64_t y = 0; y < src.height(); ++y) {
        T before = 0, running = 0;
        std::int32_t group = 0;
        for (std::int64_t x = 0; x < src.width(); ++x) {
            if (x % 8 == 0) {
                before = running;
                group = 0;
            }
            group += term(src, x, y, squared);
            running = plainAdd(before, static_cast<T>(group));
            out.at(x + 1, y + 1) = plainAdd(out.at(x + 1, y), running);
        }
    }
    return out;
}

template <class T> Plain<T> plainTiltedIntegral(const Source &src, bool squared, T val) {
    const std::int64_t width = src.width();
    Plain<T> out(width + 2, src.height() + 2, val);
    for (std::int64_t y = 0; y < src.height(); ++y) {
        out.at(0, y + 2) = out.at(1, y + 1);
        for (std::int64_t x = 1; x <= width; ++x) {
            T sum = static_cast<T>(term(src, x - 1, y, squared) + term(src, x, y, squared));
            sum = plainAdd(sum, out.at(x - 1, y + 1));
            sum = plainAdd(sum, out.at(x + 1, y + 1));
            out.at(x, y + 2) = plainSub(sum, out.at(x, y));
        }
        out.at(width + 1, y + 2) = out.at(width, y + 1);
    }
    return out;
}

} // namespace stats
