// What stands in the synthetic streets. Street 0 is the demo's; every other number is a street of its own. Coordinates
// are those of a picture of 640x480.
#pragma once

#include "colour.h"

#include <string>
#include <vector>

namespace tools {

struct Colour {
    double r, g, b;
};

struct House {
    double left, right, top;
    Colour wall;
    double pitchX = 30, pitchY = 38; // of the windows
    double windowLeft = 9, windowTop = 12, windowRight = 23, windowBottom = 30;
};

struct Tree {
    double x = 372, size = 1;
    Colour leaves = {74, 118, 62};
    bool inFront = false; // of the houses
};

struct Kiosk {
    double left, right, top, bottom;
    Colour wall;
};

// Of size 1, wheels included, it reaches 60 to both sides, 30 up and 28 down.
struct Car {
    double x, y, size, speed;
    Colour paint;
    double facing = 1; // -1: mirrored
    double cabinLeft = -40, cabinRight = 34, roof = -30;
};

struct Person {
    double x, y, size, speed;
    Colour coat;
};

struct Ball {
    double x, y, size, speed, phase;
    Colour colour;
};

struct Street {
    unsigned number = 0;
    double light = 1, vanish = 320; // brightness; column where the lane marks meet
    Colour road = {96, 97, 101}, skyTop = {110, 160, 220}, skyBottom = {205, 222, 238};
    std::vector<House> houses;
    std::vector<Tree> trees;
    std::vector<Kiosk> kiosks;
    std::vector<Car> cars; // from the farthest to the nearest, which hides the others
    std::vector<Person> people;
    std::vector<Ball> balls;
};

// Cars of streets other than the demo's lie within the picture in frame 0 and hide no other car. At most so many cars
// are kept.
Street makeStreet(unsigned number, int mostCars = 100);

struct ObjectBox {
    std::string kind; // car, person, ball
    double left, top, right, bottom;
};

// The boxes of all objects in a frame, hidden or not, also outside the picture.
std::vector<ObjectBox> objectBoxes(const Street &street, int frame);

// How high a ball has bounced, 0 to 60.
double bounce(const Ball &ball, int frame);

} // namespace tools
