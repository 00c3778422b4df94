// Drawing of results on a colour picture, with soft edges. Everything outside the picture is clipped.
#pragma once

#include "colour.h"
#include "resample.h"

namespace tools {

// How long a mark's unit is, so that marks are as visible on a large picture as on a small one: 1 up to 400 pixels.
double markUnit(const Image &image);

// A stroke with round ends; of no length, it is a disc.
void drawLine(Image &image, Point2f from, Point2f to, double width, Rgb colour);
// The box's outline, from inside: its outer edge is the box.
void drawBox(Image &image, Box box, double width, Rgb colour);
void drawCircle(Image &image, Point2f centre, double radius, double width, Rgb colour);

// A point of interest: a ring around a dot, both with a dark outline, to be seen on any ground.
void drawMark(Image &image, Point2f at, Rgb ring, Rgb dot);

} // namespace tools
