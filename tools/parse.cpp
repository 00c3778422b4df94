#include "parse.h"

#include "options.h"

#include <charconv>
#include <cmath>

namespace tools {
namespace {

// All of the text as integers with a separator between them; nothing when it is anything else.
std::vector<int> integers(const std::string &text, char separator) {
    std::vector<int> result;
    const char *at = text.data(), *const end = at + text.size();
    for (;;) {
        int value = 0;
        const auto [next, error] = std::from_chars(at, end, value);
        if (error != std::errc()) {
            return {};
        }
        result.push_back(value);
        if (next == end) {
            return result;
        }
        if (*next != separator) {
            return {};
        }
        at = next + 1;
    }
}

} // namespace

Point2i parsePoint(const std::string &option, const std::string &text) {
    const std::vector<int> values = integers(text, ',');
    if (values.size() != 2) {
        throw UsageError(option, text + " is not a point X,Y");
    }
    return {values[0], values[1]};
}

Point2f parseNumbers(const std::string &option, const std::string &text) {
    float values[2] = {};
    const char *at = text.data(), *const end = at + text.size();
    for (int i = 0; i < 2; ++i) {
        const auto [next, error] = std::from_chars(at, end, values[i]);
        const bool endsWell = i == 0 ? next != end && *next == ',' : next == end;
        if (error != std::errc() || !endsWell || !std::isfinite(values[i])) {
            throw UsageError(option, text + " is not a pair of numbers X,Y");
        }
        at = next + 1;
    }
    return {values[0], values[1]};
}

RoiSize parseSize(const std::string &option, const std::string &text, int largest) {
    const std::vector<int> values = integers(text, 'x');
    if (values.size() != 2 || values[0] < 1 || values[1] < 1 || values[0] > largest || values[1] > largest) {
        throw UsageError(option, text + " is not a size WxH with sides from 1 to " + std::to_string(largest));
    }
    return {values[0], values[1]};
}

std::vector<std::uint8_t> parseLevels(const std::string &option, const std::string &text) {
    const std::vector<int> values = integers(text, ',');
    std::vector<std::uint8_t> levels;
    for (const int value : values) {
        if (value >= 0 && value <= 255) {
            levels.push_back(static_cast<std::uint8_t>(value));
        }
    }
    if (levels.size() != values.size() || (levels.size() != 1 && levels.size() != 3)) {
        throw UsageError(option, text + " is neither a level from 0 to 255 nor three of them with commas");
    }
    return levels;
}

void checkInside(const std::string &option, Point2i point, const Image &image) {
    if (point.x < 0 || point.y < 0 || point.x >= image.width || point.y >= image.height) {
        throw Failure(option + " " + std::to_string(point.x) + "," + std::to_string(point.y) +
                      " lies outside the picture, which is " + std::to_string(image.width) + "x" +
                      std::to_string(image.height));
    }
}

} // namespace tools
