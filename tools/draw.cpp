#include "draw.h"

#include <algorithm>
#include <cmath>

namespace tools {
namespace {

// Mixes the colour into every pixel of a box by how far it lies inside a shape: `inside` is a signed distance from the
// shape's outline.
template <typename Inside>
void paint(Image &image, double left, double top, double right, double bottom, Rgb colour, Inside inside) {
    const auto first = [](double v, int size) {
        return static_cast<int>(std::clamp(std::floor(v), 0.0, double(size)));
    };
    const auto end = [](double v, int size) {
        return static_cast<int>(std::clamp(std::ceil(v) + 1, 0.0, double(size)));
    };
    const int yEnd = end(bottom, image.height), xEnd = end(right, image.width);
    for (int y = first(top, image.height); y < yEnd; ++y) {
        for (int x = first(left, image.width); x < xEnd; ++x) {
            const double part = std::clamp(inside(x, y) + 0.5, 0.0, 1.0);
            if (part > 0) {
                std::uint8_t *p = image.pixel(x, y);
                const std::uint8_t parts[3] = {colour.r, colour.g, colour.b};
                for (int c = 0; c < 3; ++c) {
                    p[c] = static_cast<std::uint8_t>(std::lround(p[c] + (parts[c] - p[c]) * part));
                }
            }
        }
    }
}

} // namespace

double markUnit(const Image &image) { return std::max(1.0, std::min(image.width, image.height) / 400.0); }

void drawLine(Image &image, Point2f from, Point2f to, double width, Rgb colour) {
    const double x0 = from.x, y0 = from.y, dx = to.x - x0, dy = to.y - y0, length2 = dx * dx + dy * dy;
    const double half = width / 2, reach = half + 1;
    paint(image, std::min(x0, x0 + dx) - reach, std::min(y0, y0 + dy) - reach, std::max(x0, x0 + dx) + reach,
          std::max(y0, y0 + dy) + reach, colour, [&](double x, double y) {
              const double along = length2 > 0 ? std::clamp(((x - x0) * dx + (y - y0) * dy) / length2, 0.0, 1.0) : 0;
              return half - std::hypot(x - x0 - along * dx, y - y0 - along * dy);
          });
}

void drawBox(Image &image, Box box, double width, Rgb colour) {
    // Pixel (0, 0) has its centre at (0, 0) here, but at (0.5, 0.5) in a box.
    const double inset = width / 2 - 0.5;
    const auto left = static_cast<float>(box.x + inset), top = static_cast<float>(box.y + inset);
    const auto right = static_cast<float>(box.x + box.width - 1 - inset);
    const auto bottom = static_cast<float>(box.y + box.height - 1 - inset);
    drawLine(image, {left, top}, {right, top}, width, colour);
    drawLine(image, {right, top}, {right, bottom}, width, colour);
    drawLine(image, {right, bottom}, {left, bottom}, width, colour);
    drawLine(image, {left, bottom}, {left, top}, width, colour);
}

void drawCircle(Image &image, Point2f centre, double radius, double width, Rgb colour) {
    const double cx = centre.x, cy = centre.y, reach = radius + width / 2 + 1;
    paint(image, cx - reach, cy - reach, cx + reach, cy + reach, colour,
          [&](double x, double y) { return width / 2 - std::abs(std::hypot(x - cx, y - cy) - radius); });
}

void drawMark(Image &image, Point2f at, Rgb ring, Rgb dot) {
    constexpr Rgb outline{0, 0, 0};
    const double unit = markUnit(image), radius = 4 * unit;
    drawCircle(image, at, radius, 3.2 * unit, outline);
    drawCircle(image, at, radius, 1.2 * unit, ring);
    drawLine(image, at, at, 3 * unit, outline);
    drawLine(image, at, at, 1.5 * unit, dot);
}

} // namespace tools
