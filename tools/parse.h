// Pairs of numbers on the command line. What is not of the form ends in a usage message (exit code 2).
#pragma once

#include "image.h"

namespace tools {

// "X,Y". The option's name is for the message.
Point2i parsePoint(const std::string &option, const std::string &text);
// "X,Y" with decimals; neither is infinite.
Point2f parseNumbers(const std::string &option, const std::string &text);
// "WxH", both from 1 to `largest`.
RoiSize parseSize(const std::string &option, const std::string &text, int largest);
// Numbers from 0 to 255 with commas between them, one or three.
std::vector<std::uint8_t> parseLevels(const std::string &option, const std::string &text);

// Throws a Failure that names the option unless the point lies in the picture.
void checkInside(const std::string &option, Point2i point, const Image &image);

} // namespace tools
