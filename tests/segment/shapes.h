// Pictures that make filling and labelling work: true where the foreground is.
#pragma once

#include "support/random.h"

#include <cstdint>
#include <vector>

namespace support {

enum class Shape {
    full,
    comb,       // vertical teeth on a bar at the top
    combBelow,  // and on one at the bottom
    rake,       // horizontal teeth on a bar at the right
    serpentine, // one corridor through all rows, one pixel wide
    columns,    // the same through all columns
    spiral,     // one corridor that winds inwards
    checkerboard,
    diagonals, // stripes one pixel wide, touching at corners only
    antidiagonals,
    dots,   // nothing touches anything
    sparse, // noise of a tenth, one half, three fifths and nine tenths
    half,
    dense,
    crowded
};
constexpr Shape allShapes[] = {Shape::full,       Shape::comb,          Shape::combBelow, Shape::rake,
                               Shape::serpentine, Shape::columns,       Shape::spiral,    Shape::checkerboard,
                               Shape::diagonals,  Shape::antidiagonals, Shape::dots,      Shape::sparse,
                               Shape::half,       Shape::dense,         Shape::crowded};

struct Picture {
    std::int64_t width, height;
    std::vector<char> set;

    bool at(std::int64_t x, std::int64_t y) const { return set[static_cast<std::size_t>(y * width + x)] != 0; }
};

// A corridor from the corner inwards, a wall between its turns.
inline void windSpiral(Picture &picture) {
    const auto cell = [&](std::int64_t x, std::int64_t y) -> char & {
        return picture.set[static_cast<std::size_t>(y * picture.width + x)];
    };
    const auto isFree = [&](std::int64_t x, std::int64_t y) {
        return x >= 0 && y >= 0 && x < picture.width && y < picture.height && cell(x, y) == 0;
    };
    std::int64_t x = 0, y = 0, dx = 1, dy = 0;
    cell(0, 0) = 1;
    for (int turns = 0; turns < 2;) {
        const std::int64_t ahead = x + 2 * dx, beyond = y + 2 * dy;
        const bool inside = ahead >= 0 && beyond >= 0 && ahead < picture.width && beyond < picture.height;
        if (isFree(x + dx, y + dy) && (!inside || isFree(ahead, beyond))) {
            x += dx;
            y += dy;
            cell(x, y) = 1;
            turns = 0;
            continue;
        }
        const std::int64_t old = dx;
        dx = -dy;
        dy = old;
        ++turns;
    }
}

inline bool isSet(Shape shape, std::int64_t x, std::int64_t y, std::int64_t width, std::int64_t height, Rng &rng) {
    const std::int64_t percent = uniform(rng, 0, 99);
    switch (shape) {
    case Shape::comb:
        return y == 0 || x % 2 == 0;
    case Shape::combBelow:
        return y == height - 1 || x % 2 == 0;
    case Shape::rake:
        return x == width - 1 || y % 2 == 0;
    case Shape::serpentine:
        return y % 2 == 0 || x == (y % 4 == 1 ? width - 1 : 0);
    case Shape::columns:
        return x % 2 == 0 || y == (x % 4 == 1 ? height - 1 : 0);
    case Shape::checkerboard:
        return (x + y) % 2 == 0;
    case Shape::diagonals:
        return (x + 3 * y) % 4 == 0;
    case Shape::antidiagonals:
        return (x + y) % 3 == 0;
    case Shape::dots:
        return x % 2 == 0 && y % 2 == 0;
    case Shape::sparse:
        return percent < 10;
    case Shape::half:
        return percent < 50;
    case Shape::dense:
        return percent < 60;
    case Shape::crowded:
        return percent < 90;
    default:
        return true;
    }
}

inline Picture draw(Shape shape, std::int64_t width, std::int64_t height, Rng &rng) {
    Picture picture{width, height, std::vector<char>(static_cast<std::size_t>(width * height))};
    if (shape == Shape::spiral) {
        windSpiral(picture);
        return picture;
    }
    for (std::int64_t i = 0; i < width * height; ++i) {
        picture.set[static_cast<std::size_t>(i)] = isSet(shape, i % width, i / width, width, height, rng) ? 1 : 0;
    }
    return picture;
}

// Pixels in the order in which a search of the breadth first takes them, from `seed` (a pixel's number) on; joins(q, p)
// says whether p may follow q. `reached` collects what was found, also before.
template <class Joins>
std::int64_t searchBreadthFirst(std::int64_t width, std::int64_t height, std::int64_t seed, bool eight,
                                std::vector<char> &reached, const Joins &joins) {
    std::vector<std::int64_t> queue{seed};
    reached[static_cast<std::size_t>(seed)] = 1;
    for (std::size_t next = 0; next < queue.size(); ++next) {
        const std::int64_t q = queue[next], x = q % width, y = q / width;
        for (std::int64_t dy = -1; dy <= 1; ++dy) {
            for (std::int64_t dx = -1; dx <= 1; ++dx) {
                const std::int64_t p = q + dy * width + dx;
                if (x + dx < 0 || x + dx >= width || y + dy < 0 || y + dy >= height || (!eight && dx != 0 && dy != 0) ||
                    reached[static_cast<std::size_t>(p)] != 0 || !joins(q, p)) {
                    continue;
                }
                reached[static_cast<std::size_t>(p)] = 1;
                queue.push_back(p);
            }
        }
    }
    return static_cast<std::int64_t>(queue.size());
}

} // namespace support
