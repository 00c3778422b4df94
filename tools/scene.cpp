#include "scene.h"

#include <algorithm>
#include <cmath>

namespace tools {
namespace {

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

bool window(const House &house, double u, double v, double frame) {
    return inBox(u, v, house.windowLeft - frame, house.windowTop - frame, house.windowRight + frame,
                 house.windowBottom + frame);
}

bool drawHouse(const House &house, double x, double y, unsigned seed, Colour &colour) {
    if (!inBox(x, y, house.left, house.top, house.right, 330)) {
        return false;
    }
    const double u = std::fmod(x - house.left, house.pitchX), v = std::fmod(y - house.top, house.pitchY);
    const double bricks = std::fmod(y, 6) < 1 || std::fmod(x + (std::fmod(y, 12) < 6 ? 0 : 5), 10) < 1 ? 0.86 : 1;
    const double lit =
        hash(static_cast<int>((x - house.left) / house.pitchX), static_cast<int>((y - house.top) / house.pitchY), seed);
    colour = y < 300 && window(house, u, v, 0) ? mix({58, 70, 88}, {236, 208, 140}, lit > 0.72 ? 0.9 : 0.15 * lit)
             : y < 300 && window(house, u, v, 2)
                 ? Colour{222, 218, 208}
                 : scaled(house.wall, bricks * (0.92 + 0.16 * texture(x, y, 5, seed + 2)));
    return true;
}

bool drawTree(const Tree &tree, double x, double y, unsigned seed, Colour &colour) {
    const double u = (x - tree.x) / tree.size, v = (y - 330) / tree.size;
    if (inDisc(u, v, 0, -68, 42) || inDisc(u, v, -20, -94, 30) || inDisc(u, v, 22, -92, 28)) {
        colour = scaled(tree.leaves, 0.55 + 0.8 * texture(x, y, 4, seed + 3));
        return true;
    }
    if (inBox(u, v, -4, -40, 6, 0)) {
        colour = scaled({92, 70, 52}, 0.8 + 0.4 * texture(x * 3, y, 4, seed + 4));
        return true;
    }
    return false;
}

Colour background(const Street &street, double x, double y, unsigned seed) {
    if (y > 330) { // road with lane marks, in perspective
        Colour road = scaled(street.road, 0.86 + 0.28 * texture(x, y, 3, seed) * texture(x, y, 17, seed + 1));
        const double depth = (y - 330) / 150, vanish = street.vanish + (x - street.vanish) / (0.35 + depth);
        const bool mark = std::fabs(vanish - street.vanish) < 7 && std::fmod(depth * 40 / (0.4 + depth), 4.0) < 2.2;
        const bool kerb = y < 338;
        return mark ? Colour{225, 222, 205} : kerb ? Colour{150, 148, 140} : road;
    }
    Colour colour{};
    for (const Tree &tree : street.trees) {
        if (tree.inFront && drawTree(tree, x, y, seed, colour)) {
            return colour;
        }
    }
    for (const House &house : street.houses) {
        if (drawHouse(house, x, y, seed, colour)) {
            return colour;
        }
    }
    for (const Tree &tree : street.trees) {
        if (!tree.inFront && drawTree(tree, x, y, seed, colour)) {
            return colour;
        }
    }
    const double cloud = std::clamp(2.2 * texture(x, y * 2, 90, seed + 5) - 0.9, 0.0, 1.0);
    return mix(mix(street.skyTop, street.skyBottom, y / 330), {250, 250, 250}, 0.8 * cloud);
}

void drawPerson(const Person &person, double x, double y, int frame, Colour &colour) {
    const double u = (x - person.x - person.speed * frame) / person.size, v = (y - person.y) / person.size;
    const double stride = (v - 12) * 0.2 * std::sin(frame);
    if (inDisc(u, v, 0, -26, 8) || inBox(u, v, -8, -18, 8, 12) ||
        (v >= 12 && v < 40 && (std::fabs(u - 4 - stride) < 4 || std::fabs(u + 4 + stride) < 4))) {
        colour = v < -18 ? Colour{222, 178, 148} : v < 12 ? person.coat : Colour{48, 52, 80};
    }
}

void drawCar(const Car &car, double x, double y, int frame, Colour &colour) {
    const double u = car.facing * (x - car.x - car.speed * frame) / car.size, v = (y - car.y) / car.size;
    const double middle = (car.cabinLeft + car.cabinRight) / 2, flat = (car.cabinRight - car.cabinLeft) / 2 - 11;
    if (inDisc(u, v, -34, 16, 12) || inDisc(u, v, 34, 16, 12)) {
        colour = inDisc(u, v, -34, 16, 5) || inDisc(u, v, 34, 16, 5) ? Colour{170, 172, 176} : Colour{26, 26, 28};
    } else if (inBox(u, v, -60, -8, 60, 16) || (inBox(u, v, car.cabinLeft, car.roof, car.cabinRight, -7) &&
                                                v > car.roof + 0.6 * (std::fabs(u - middle) - flat))) {
        const bool glass =
            inBox(u, v, car.cabinLeft + 10, car.roof + 4, car.cabinRight - 10, -9) && std::fabs(u - middle) > 2;
        colour = glass ? Colour{150, 178, 196} : scaled(car.paint, 1.15 - 0.012 * (v + 30));
    }
}

void drawBall(const Ball &ball, double x, double y, int frame, Colour &colour) {
    const double cx = ball.x + ball.speed * frame, cy = ball.y - bounce(ball, frame);
    if (inDisc(x, y, cx, cy, 11 * ball.size)) {
        colour = x + y < cx + cy ? Colour{250, 250, 245} : ball.colour;
    }
}

// Whatever is drawn later hides what was drawn before.
Colour sample(const Street &street, double x, double y, int frame, unsigned seed) {
    Colour colour = background(street, x, y, seed);
    for (const Kiosk &kiosk : street.kiosks) {
        if (inBox(x, y, kiosk.left, kiosk.top, kiosk.right, kiosk.bottom)) {
            const bool counter =
                y > kiosk.top + 6 && y < kiosk.bottom - 14 && x > kiosk.left + 4 && x < kiosk.right - 4;
            colour = counter ? Colour{60, 62, 66} : scaled(kiosk.wall, 0.9 + 0.2 * texture(x, y, 6, seed + 6));
        }
    }
    for (const Person &person : street.people) {
        drawPerson(person, x, y, frame, colour);
    }
    for (const Car &car : street.cars) {
        drawCar(car, x, y, frame, colour);
    }
    for (const Ball &ball : street.balls) {
        drawBall(ball, x, y, frame, colour);
    }
    return scaled(colour, street.light);
}

} // namespace

Image renderScene(const Street &street, int width, int height, int frame, unsigned givenSeed) {
    const unsigned seed = givenSeed + 7919 * street.number;
    Image image(width, height, 3);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            // Two by two samples soften the edges as a lens does.
            Colour sum{0, 0, 0};
            for (int k = 0; k < 4; ++k) {
                const double u = (x + 0.25 + 0.5 * (k % 2)) * 640 / width;
                const double v = (y + 0.25 + 0.5 * (k >> 1)) * 480 / height;
                const Colour c = sample(street, u, v, frame, seed);
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
