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

inline Picture picture(Shape shape, std::int64_t width, std::int64_t height, Rng &rng) {
    Picture result(static_cast<std::size_t>(width * height));
    for (std::int64_t y = 0; y < height; ++y) {
        for (std::int64_t x = 0; x < width; ++x) {
            bool zero = false;
            switch (shape) {
            case Shape::none:
                break;
            case Shape::all:
                zero = true;
                break;
            case Shape::corner:
                zero = x == 0 && y == 0;
                break;
            case Shape::lastPixel:
                zero = x == width - 1 && y == height - 1;
                break;
            case Shape::center:
                zero = x == width / 2 && y == height / 2;
                break;
            case Shape::dense:
                zero = rng() % 2 == 0;
                break;
            case Shape::sparse:
                zero = rng() % 11 == 0;
                break;
            case Shape::rare:
                zero = rng() % 400 == 0;
                break;
            case Shape::checkerboard:
                zero = (x + y) % 2 == 0;
                break;
            case Shape::diagonal:
                zero = (x + y) % 13 == 5;
                break;
            case Shape::comb:
                zero = x % 7 == 3 && y > 2;
                break;
            case Shape::walls:
                zero = y == 0 || (x == width - 1 && y % 3 == 0);
                break;
            }
            result[static_cast<std::size_t>(y * width + x)] = zero ? 0 : static_cast<std::uint8_t>(1 + rng() % 255);
        }
    }
    return result;
}

inline void draw(GuardedImage<std::uint8_t> &image, const Picture &pixels) {
    for (std::int64_t i = 0; i < image.width() * image.height(); ++i) {
        image.set(i % image.width(), i / image.width(), pixels[static_cast<std::size_t>(i)]);
    }
}

} // namespace support
