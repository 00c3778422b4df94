#include "street.h"

#include "random.h"

#include <algorithm>
#include <cmath>

namespace tools {
namespace {

Street demoStreet() {
    Street street;
    street.houses = {{0, 130, 90, {158, 92, 74}},
                     {130, 235, 150, {196, 178, 140}},
                     {235, 330, 60, {122, 132, 146}},
                     {420, 530, 120, {172, 128, 100}},
                     {530, 640, 40, {106, 112, 124}}};
    street.trees = {{}};
    street.cars = {{120, 372, 1.0, 14, {188, 36, 40}}, {520, 430, 1.35, -20, {38, 84, 170}}};
    street.people = {{430, 300, 1, -5, {228, 176, 40}}};
    street.balls = {{250, 400, 1, 9, 0.5, {210, 90, 30}}};
    return street;
}

Colour around(Random &random, Colour c, double reach) {
    const auto vary = [&](double v) { return std::clamp(v + random.between(-reach, reach), 10.0, 245.0); };
    const double r = vary(c.r), g = vary(c.g), b = vary(c.b);
    return {r, g, b};
}

void addHouses(Street &street, Random &random) {
    for (double left = random.between(-60, 0); left < 640;) {
        House house{left, left + random.between(80, 190), random.between(20, 210), around(random, {150, 128, 108}, 60)};
        left = house.right + (random.chance(0.3) ? random.between(10, 110) : 0);
        house.pitchX = random.between(24, 46);
        house.pitchY = random.between(28, 52);
        const double wide = random.between(0.4, 0.65) * house.pitchX, high = random.between(0.4, 0.6) * house.pitchY;
        house.windowLeft = (house.pitchX - wide) / 2;
        house.windowRight = house.windowLeft + wide;
        house.windowTop = (house.pitchY - high) / 2;
        house.windowBottom = house.windowTop + high;
        street.houses.push_back(house);
    }
}

// Cars in their lanes: the nearer, the larger, but by no strict rule.
void addCars(Street &street, Random &random, int most) {
    const int wanted = std::min(most, 1 + random.below(4));
    constexpr double gap = 6;
    for (int tries = 0; tries < 60 && static_cast<int>(street.cars.size()) < wanted; ++tries) {
        Car car{};
        car.size = random.between(0.55, 1.55);
        car.y = std::min(350 + 75 * (car.size - 0.5) + random.between(-8, 40), 476 - 28 * car.size);
        car.x = random.between(60 * car.size + 3, 637 - 60 * car.size);
        car.facing = random.chance(0.5) ? 1 : -1;
        car.speed = car.facing * random.between(5, 20);
        car.paint = around(random, {125, 125, 125}, 110);
        car.cabinLeft = random.between(-46, -34);
        car.cabinRight = random.between(28, 40);
        car.roof = random.between(-33, -28);
        const bool free = std::all_of(street.cars.begin(), street.cars.end(), [&](const Car &other) {
            return std::fabs(car.x - other.x) > 60 * (car.size + other.size) + gap ||
                   car.y + 28 * car.size + gap < other.y - 33 * other.size ||
                   other.y + 28 * other.size + gap < car.y - 33 * car.size;
        });
        if (free) {
            street.cars.push_back(car);
        }
    }
    std::sort(street.cars.begin(), street.cars.end(), [](const Car &a, const Car &b) { return a.y < b.y; });
}

Street randomStreet(unsigned number, int mostCars) {
    Street street;
    Random random(number);
    street.number = number;
    street.light = random.between(0.6, 1.1);
    street.vanish = random.between(160, 480);
    street.road = around(random, {100, 100, 100}, 25);
    street.skyTop = around(random, {120, 160, 210}, 40);
    street.skyBottom = around(random, {210, 215, 225}, 30);
    addHouses(street, random);
    for (int i = random.below(4); i > 0; --i) {
        street.trees.push_back(
            {random.between(20, 620), random.between(0.7, 1.4), around(random, {84, 118, 62}, 30), random.chance(0.7)});
    }
    for (int i = random.below(4); i > 0; --i) {
        const double left = random.between(0, 600), bottom = random.between(334, 344);
        street.kiosks.push_back({left, left + random.between(20, 90), bottom - random.between(20, 60), bottom,
                                 around(random, {128, 128, 128}, 100)});
    }
    for (int i = random.below(5); i > 0; --i) {
        const double size = random.between(0.8, 1.3);
        street.people.push_back({random.between(20, 620), random.between(334, 346) - 40 * size, size,
                                 random.between(-8, 8), around(random, {128, 128, 128}, 110)});
    }
    for (int i = random.below(3); i > 0; --i) {
        street.balls.push_back({random.between(20, 620), random.between(380, 450), random.between(0.6, 1.3),
                                random.between(-12, 12), random.between(0, 3), around(random, {128, 128, 128}, 110)});
    }
    // Last, so that a street without cars is the same street otherwise.
    addCars(street, random, mostCars);
    return street;
}

} // namespace

Street makeStreet(unsigned number, int mostCars) {
    Street street = number == 0 ? demoStreet() : randomStreet(number, mostCars);
    street.cars.resize(std::min(street.cars.size(), static_cast<std::size_t>(mostCars)));
    return street;
}

double bounce(const Ball &ball, int frame) { return 60 * std::fabs(std::sin(0.9 * frame + ball.phase)); }

std::vector<ObjectBox> objectBoxes(const Street &street, int frame) {
    std::vector<ObjectBox> boxes;
    for (const Person &person : street.people) {
        const double x = person.x + person.speed * frame, y = person.y, s = person.size;
        boxes.push_back({"person", x - 8 * s, y - 34 * s, x + 8 * s, y + 40 * s});
    }
    for (const Car &car : street.cars) {
        const double x = car.x + car.speed * frame, s = car.size;
        boxes.push_back({"car", x - 60 * s, car.y + car.roof * s, x + 60 * s, car.y + 28 * s});
    }
    for (const Ball &ball : street.balls) {
        const double x = ball.x + ball.speed * frame, y = ball.y - bounce(ball, frame), r = 11 * ball.size;
        boxes.push_back({"ball", x - r, y - r, x + r, y + r});
    }
    return boxes;
}

} // namespace tools
