// rvxcv undistort PHOTO --focal FX,FY --k K1,K2 -o OUT: the picture as a lens would show it that leaves straight lines
// straight; or, with --bend, the other way.
#include "command.h"
#include "draw.h"
#include "parse.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>

namespace tools {
namespace {

struct Options {
    std::string photo, out, grid, focal, centre, k, p = "0,0";
    bool bend = false;
};

struct Lens {
    Point2f focal, centre, k, p;

    // Where the camera shows what stands at (x, y) without the lens.
    void bend(double x, double y, double *sx, double *sy) const {
        const double dx = x - static_cast<double>(centre.x), dy = y - static_cast<double>(centre.y);
        const double xn = dx / static_cast<double>(focal.x), yn = dy / static_cast<double>(focal.y);
        const double p1 = static_cast<double>(p.x), p2 = static_cast<double>(p.y), r2 = xn * xn + yn * yn;
        const double t = (static_cast<double>(k.y) * r2 + static_cast<double>(k.x)) * r2 + 2 * p2 * xn + 2 * p1 * yn;
        *sx = x + t * dx + static_cast<double>(focal.x) * p2 * r2;
        *sy = y + t * dy + static_cast<double>(focal.y) * p1 * r2;
    }
};

// From where every pixel is taken.
struct Map {
    std::vector<float> x, y;
    explicit Map(const Image &image)
        : x(static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height)), y(x.size()) {}
};

Point2i pixelAt(const Image &image, std::size_t number) {
    const auto width = static_cast<std::size_t>(image.width);
    return {static_cast<std::int32_t>(number % width), static_cast<std::int32_t>(number / width)};
}

bool inside(const Image &image, double x, double y) {
    return x >= 0 && y >= 0 && x <= image.width - 1 && y <= image.height - 1; // and no NaN
}

Map straightening(const Image &image, const Lens &lens) {
    Map map(image);
    const auto step = static_cast<std::int32_t>(sizeof(float)) * image.width;
    check(rvxiCreateMapCameraUndistort_32f_C1R(map.x.data(), step, map.y.data(), step, image.roi(), nullptr,
                                               lens.focal.x, lens.focal.y, lens.centre.x, lens.centre.y, lens.k.x,
                                               lens.k.y, lens.p.x, lens.p.y),
          "CreateMapCameraUndistort");
    return map;
}

// The lens itself: each position is corrected until the lens shows it at the pixel. Nowhere, where that does not end.
Map bending(const Image &image, const Lens &lens) {
    Map map(image);
    for (std::size_t i = 0; i < map.x.size(); ++i) {
        const Point2i pixel = pixelAt(image, i);
        const double u = pixel.x, v = pixel.y;
        double x = u, y = v, error = 1;
        for (int step = 0; step < 100 && error > 1e-4; ++step) {
            double sx, sy;
            lens.bend(x, y, &sx, &sy);
            x += u - sx;
            y += v - sy;
            error = std::hypot(u - sx, v - sy);
        }
        map.x[i] = error <= 1e-4 ? static_cast<float>(x) : NAN;
        map.y[i] = static_cast<float>(y);
    }
    return map;
}

Image sampled(const Image &image, const Map &map) {
    Image result(image.width, image.height, image.channels);
    for (std::size_t i = 0; i < map.x.size(); ++i) {
        const double x = static_cast<double>(map.x[i]), y = static_cast<double>(map.y[i]);
        if (!inside(image, x, y)) {
            continue;
        }
        const int left = static_cast<int>(x), top = static_cast<int>(y);
        const int right = std::min(left + 1, image.width - 1), bottom = std::min(top + 1, image.height - 1);
        const double a = x - left, b = y - top;
        for (int c = 0; c < image.channels; ++c) {
            const double above = image.pixel(left, top)[c] * (1 - a) + image.pixel(right, top)[c] * a;
            const double below = image.pixel(left, bottom)[c] * (1 - a) + image.pixel(right, bottom)[c] * a;
            result.pixels[i * static_cast<std::size_t>(image.channels) + static_cast<std::size_t>(c)] =
                static_cast<std::uint8_t>(std::lround(above * (1 - b) + below * b));
        }
    }
    return result;
}

Image undistorted(const Image &image, const Lens &lens) {
    Image result(image.width, image.height, image.channels);
    const auto function = image.channels == 3 ? rvxiUndistortRadial_8u_C3R : rvxiUndistortRadial_8u_C1R;
    check(function(image.data(), image.step(), result.data(), result.step(), image.roi(), nullptr, lens.focal.x,
                   lens.focal.y, lens.centre.x, lens.centre.y, lens.k.x, lens.k.y),
          "UndistortRadial");
    return result;
}

// Dark lines on paper, sixteen squares to a row.
Image gridPicture(RoiSize size) {
    Image image(size.width, size.height, 3);
    std::fill(image.pixels.begin(), image.pixels.end(), std::uint8_t{244});
    const double square = size.width / 16.0, width = std::max(1.5, square / 12);
    const auto right = static_cast<float>(size.width), bottom = static_cast<float>(size.height);
    for (double x = square / 2; x < size.width; x += square) {
        drawLine(image, {static_cast<float>(x), -9}, {static_cast<float>(x), bottom + 9}, width, {40, 60, 110});
    }
    for (double y = square / 2; y < size.height; y += square) {
        drawLine(image, {-9, static_cast<float>(y)}, {right + 9, static_cast<float>(y)}, width, {150, 50, 40});
    }
    return image;
}

void run(const Options &options) {
    Lens lens{
        parseNumbers("--focal", options.focal), {}, parseNumbers("--k", options.k), parseNumbers("--p", options.p)};
    if (lens.focal.x == 0 || lens.focal.y == 0) {
        throw UsageError("--focal", "a focal length is not 0");
    }
    const Image image =
        options.grid.empty() ? readImage(options.photo) : gridPicture(parseSize("--grid", options.grid, 16384));
    lens.centre = options.centre.empty()
                      ? Point2f{static_cast<float>(image.width - 1) / 2, static_cast<float>(image.height - 1) / 2}
                      : parseNumbers("--centre", options.centre);
    const Map map = options.bend ? bending(image, lens) : straightening(image, lens);
    // The library's function for pictures knows radial lenses; whatever else there is comes from the map.
    const bool radial = !options.bend && lens.p.x == 0 && lens.p.y == 0;
    writeImage(options.out, radial ? undistorted(image, lens) : sampled(image, map));

    double shift = 0;
    std::size_t outside = 0;
    for (std::size_t i = 0; i < map.x.size(); ++i) {
        const double x = static_cast<double>(map.x[i]), y = static_cast<double>(map.y[i]);
        if (inside(image, x, y)) {
            const Point2i pixel = pixelAt(image, i);
            shift = std::max(shift, std::hypot(x - pixel.x, y - pixel.y));
        } else {
            ++outside;
        }
    }
    std::printf("pixels moved by up to %.1f; %.1f %% of the picture come from outside and are black\n", shift,
                100.0 * static_cast<double>(outside) / static_cast<double>(map.x.size()));
}

} // namespace

void addUndistort(Program &program) {
    auto options = std::make_shared<Options>();
    Command command = program.command("undistort", "Make straight lines straight that a lens has bent");
    command.option("PHOTO", options->photo, "Picture that the camera took");
    command.option("--grid", options->grid, "A grid of straight lines of WxH pixels instead of a photo")
        .excludes("PHOTO");
    command.option("-o,--output", options->out, "Picture to write").required();
    command.option("--focal", options->focal, "FX,FY: focal lengths in pixels").required();
    command.option("--centre", options->centre, "CX,CY: principal point in pixels; without it the middle");
    command.option("--k", options->k, "K1,K2: radial coefficients").required();
    command.option("--p", options->p, "P1,P2: tangential coefficients").showDefault();
    command.flag("--bend", options->bend, "The other way: bend the picture as such a lens does");
    command.action([options] {
        if (options->photo.empty() && options->grid.empty()) {
            throw UsageError("PHOTO", "give a picture or --grid");
        }
        run(*options);
    });
}

} // namespace tools
