// What the distance tests share: pictures of zero and other pixels, and calls behind guard pages.
#pragma once

#include "support/guarded.h"

#include "rvxcv.h"

#include <cstdint>
#include <vector>

namespace support {

using Picture = std::vector<std::uint8_t>; // row by row; zero or not

enum class Shape { none, all, corner, lastPixel, center, dense, sparse, rare, checkerboard, diagonal, comb, walls };
constexpr Shape allShapes[] = {Shape::none,         Shape::all,      Shape::corner, Shape::lastPixel,
                               Shape::center,       Shape::dense,    Shape::sparse, Shape::rare,
                               Shape::checkerboard, Shape::diagonal, Shape::comb,   Shape::walls};

inline bool isZero(Shape shape, std::int64_t x, std::int64_t y, std::int64_t width, std::int64_t height, Rng &rng) {
    switch (shape) {
    case Shape::all:
        return true;
    case Shape::corner:
        return x == 0 && y == 0;
    case Shape::lastPixel:
        return x == width - 1 && y == height - 1;
    case Shape::center:
        return x == width / 2 && y == height / 2;
    case Shape::dense:
        return rng() % 2 == 0;
    case Shape::sparse:
        return rng() % 11 == 0;
    case Shape::rare:
        return rng() % 400 == 0;
    case Shape::checkerboard:
        return (x + y) % 2 == 0;
    case Shape::diagonal:
        return (x + y) % 13 == 5;
    case Shape::comb:
        return x % 7 == 3 && y > 2;
    case Shape::walls:
        return y == 0 || (x == width - 1 && y % 3 == 0);
    default:
        return false;
    }
}

inline Picture picture(Shape shape, std::int64_t width, std::int64_t height, Rng &rng) {
    Picture result(static_cast<std::size_t>(width * height));
    for (std::int64_t i = 0; i < width * height; ++i) {
        const bool zero = isZero(shape, i % width, i / width, width, height, rng);
        result[static_cast<std::size_t>(i)] = zero ? 0 : static_cast<std::uint8_t>(1 + rng() % 255);
    }
    return result;
}

inline void draw(GuardedImage<std::uint8_t> &image, const Picture &pixels) {
    for (std::int64_t i = 0; i < image.width() * image.height(); ++i) {
        image.set(i % image.width(), i / image.width(), pixels[static_cast<std::size_t>(i)]);
    }
}

} // namespace support
