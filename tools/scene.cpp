#include "scene.h"

#include <algorithm>
#include <cmath>

namespace tools {
namespace {

struct Colour {
    double r, g, b;
};

Colour mix(Colour a, Colour b, double t) {
    return {a.r + (b.r - a.r) * t, a.g + (b.g - a.g) * t, a.b + (b.b - a.b) * t};
}

Colour scaled(Colour c, double f) { return {c.r * f, c.g * f, c.b * f}; }

// A hash of integer coordinates, 0..1: texture and noise that do not depend on the order of drawing.
double hash(int x, int y, unsigned seed) {
    unsigned h = static_cast<unsigned>(x) * 0x8da6b343u ^ static_cast<unsigned>(y) * 0xd8163841u ^ seed * 0xcb1ab31fu;
    h = (h ^ (h >> 15)) * 0x2c1b3c6du;
    h = (h ^ (h >> 12)) * 0x297a2d39u;
    return static_cast<double>((h ^ (h >> 15)) & 0xffff) / 65535.0;
}

// Smooth noise of a cell size.
double texture(double x, double y, double cell, unsigned seed) {
    const double u = x / cell, v = y / cell;
    const int i = static_cast<int>(std::floor(u)), j = static_cast<int>(std::floor(v));
    const double s = u - i, t = v - j, a = s * s * (3 - 2 * s), b = t * t * (3 - 2 * t);
    const double top = hash(i, j, seed) * (1 - a) + hash(i + 1, j, seed) * a;
    const double bottom = hash(i, j + 1, seed) * (1 - a) + hash(i + 1, j + 1, seed) * a;
    return top * (1 - b) + bottom * b;
}

bool inBox(double x, double y, double left, double top, double right, double bottom) {
    return x >= left && x < right && y >= top && y < bottom;
}

bool inDisc(double x, double y, double cx, double cy, double r) {
    return (x - cx) * (x - cx) + (y - cy) * (y - cy) < r * r;
}

// Coordinates are those of a 640x480 picture.
Colour background(double x, double y, unsigned seed) {
    if (y > 330) { // road with lane marks, in perspective
        Colour road = scaled({96, 97, 101}, 0.86 + 0.28 * texture(x, y, 3, seed) * texture(x, y, 17, seed + 1));
        const double depth = (y - 330) / 150, vanish = 320 + (x - 320) / (0.35 + depth);
        const bool mark = std::fabs(vanish - 320) < 7 && std::fmod(depth * 40 / (0.4 + depth), 4.0) < 2.2;
        const bool kerb = y < 338;
        return mark ? Colour{225, 222, 205} : kerb ? Colour{150, 148, 140} : road;
    }
    struct House {
        double left, right, top;
        Colour wall;
    };
    constexpr House houses[] = {{0, 130, 90, {158, 92, 74}},
                                {130, 235, 150, {196, 178, 140}},
                                {235, 330, 60, {122, 132, 146}},
                                {420, 530, 120, {172, 128, 100}},
                                {530, 640, 40, {106, 112, 124}}};
    for (const House &house : houses) {
        if (!inBox(x, y, house.left, house.top, house.right, 330)) {
            continue;
        }
        const double u = std::fmod(x - house.left, 30), v = std::fmod(y - house.top, 38);
        const bool window = inBox(u, v, 9, 12, 23, 30) && y < 300;
        const bool frame = inBox(u, v, 7, 10, 25, 32) && y < 300;
        const double bricks = std::fmod(y, 6) < 1 || std::fmod(x + (std::fmod(y, 12) < 6 ? 0 : 5), 10) < 1 ? 0.86 : 1;
        const double lit = hash(static_cast<int>((x - house.left) / 30), static_cast<int>((y - house.top) / 38), seed);
        return window  ? mix({58, 70, 88}, {236, 208, 140}, lit > 0.72 ? 0.9 : 0.15 * lit)
               : frame ? Colour{222, 218, 208}
                       : scaled(house.wall, bricks * (0.92 + 0.16 * texture(x, y, 5, seed + 2)));
    }
    if (inDisc(x, y, 372, 262, 42) || inDisc(x, y, 352, 236, 30) || inDisc(x, y, 394, 238, 28)) { // a tree
        return scaled({74, 118, 62}, 0.55 + 0.8 * texture(x, y, 4, seed + 3));
    }
    if (inBox(x, y, 368, 290, 378, 330)) {
        return scaled({92, 70, 52}, 0.8 + 0.4 * texture(x * 3, y, 4, seed + 4));
    }
    const double cloud = std::clamp(2.2 * texture(x, y * 2, 90, seed + 5) - 0.9, 0.0, 1.0);
    return mix(mix({110, 160, 220}, {205, 222, 238}, y / 330), {250, 250, 250}, 0.8 * cloud);
}

// The moving objects; false where there is none.
bool objects(double x, double y, int frame, Colour &colour) {
    struct Car {
        double x, y, size, speed;
        Colour paint;
    };
    constexpr Car cars[] = {{120, 372, 1.0, 14, {188, 36, 40}}, {520, 430, 1.35, -20, {38, 84, 170}}};
    bool hit = false;
    for (const Car &car : cars) {
        const double u = (x - car.x - car.speed * frame) / car.size, v = (y - car.y) / car.size;
        if (inDisc(u, v, -34, 16, 12) || inDisc(u, v, 34, 16, 12)) {
            colour = inDisc(u, v, -34, 16, 5) || inDisc(u, v, 34, 16, 5) ? Colour{170, 172, 176} : Colour{26, 26, 28};
            hit = true;
        } else if (inBox(u, v, -60, -8, 60, 16) ||
                   (inBox(u, v, -40, -30, 34, -7) && v > -30 + 0.6 * (std::fabs(u + 3) - 26))) {
            const bool glass = inBox(u, v, -30, -26, 24, -9) && std::fabs(u + 3) > 2;
            colour = glass ? Colour{150, 178, 196} : scaled(car.paint, 1.15 - 0.012 * (v + 30));
            hit = true;
        }
    }
    const double step = 9.0 * frame, bounce = std::fabs(std::sin(0.9 * frame + 0.5));
    const double px = x - 430 + 5.0 * frame, py = y - 300; // a person
    if (inDisc(px, py, 0, -26, 8) || inBox(px, py, -8, -18, 8, 12) ||
        (py >= 12 && py < 40 &&
         (std::fabs(px - 4 - (py - 12) * 0.2 * std::sin(frame)) < 4 ||
          std::fabs(px + 4 + (py - 12) * 0.2 * std::sin(frame)) < 4))) {
        colour = py < -18 ? Colour{222, 178, 148} : py < 12 ? Colour{228, 176, 40} : Colour{48, 52, 80};
        hit = true;
    }
    if (inDisc(x, y, 250 + step, 400 - 60 * bounce, 11)) { // a ball
        colour = x + y < 650 + step - 60 * bounce ? Colour{250, 250, 245} : Colour{210, 90, 30};
        hit = true;
    }
    return hit;
}

} // namespace

Image renderScene(int width, int height, int frame, unsigned seed) {
    Image image(width, height, 3);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            // Two by two samples soften the edges as a lens does.
            Colour sum{0, 0, 0};
            for (int k = 0; k < 4; ++k) {
                const double u = (x + 0.25 + 0.5 * (k % 2)) * 640 / width;
                const double v = (y + 0.25 + 0.5 * (k >> 1)) * 480 / height;
                Colour c = background(u, v, seed);
                objects(u, v, frame, c);
                sum = {sum.r + c.r / 4, sum.g + c.g / 4, sum.b + c.b / 4};
            }
            const double parts[3] = {sum.r, sum.g, sum.b};
            for (int c = 0; c < 3; ++c) {
                const unsigned salt = seed * 31 + static_cast<unsigned>(frame * 3 + c) + 100;
                const double noise = 6 * (hash(x, y, salt) + hash(y, x, salt + 7) - 1);
                image.pixel(x, y)[c] = static_cast<std::uint8_t>(std::clamp(std::lround(parts[c] + noise), 0L, 255L));
            }
        }
    }
    return image;
}

} // namespace tools
