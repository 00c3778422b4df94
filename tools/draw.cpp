#include "draw.h"

namespace tools {

void drawPoint(Image &image, int x, int y, Rgb colour) {
    if (x < 0 || y < 0 || x >= image.width || y >= image.height) {
        return;
    }
    std::uint8_t *p = image.pixel(x, y);
    p[0] = colour.r;
    p[1] = colour.g;
    p[2] = colour.b;
}

// Midpoint circle.
void drawCircle(Image &image, int cx, int cy, int radius, Rgb colour) {
    int x = radius, y = 0, error = 1 - radius;
    while (x >= y) {
        for (const int sx : {-1, 1}) {
            for (const int sy : {-1, 1}) {
                drawPoint(image, cx + sx * x, cy + sy * y, colour);
                drawPoint(image, cx + sx * y, cy + sy * x, colour);
            }
        }
        ++y;
        if (error < 0) {
            error += 2 * y + 1;
        } else {
            --x;
            error += 2 * (y - x) + 1;
        }
    }
}

} // namespace tools
