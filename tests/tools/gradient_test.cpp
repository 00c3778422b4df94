// The gradient command: what it writes is the filter's result on the picture, on a grey scale.
#include "program.h"

#include <algorithm>
#include <cmath>

namespace {

using program::pattern;
using program::run;
using tools::Image;
using tools::readImage;
using tools::writeImage;

TEST(Gradient, FiltersOfThePicture) {
    const program::Folder folder;
    const Image photo = pattern(41, 23, 1, 5);
    writeImage(folder / "photo.png", photo);
    const auto at = [&](int x, int y) { return int{*photo.pixel(std::clamp(x, 0, 40), std::clamp(y, 0, 22))}; };
    const auto filtered = [&](const std::string &options) {
        const auto result = run("gradient " + folder / "photo.png" + " -o " + folder / "out.png" + " " + options);
        EXPECT_EQ(result.exitCode, 0) << result.output;
        return readImage(folder / "out.png");
    };
    const auto grey = [](double v) { return static_cast<int>(std::clamp(std::nearbyint(v), 0.0, 255.0)); };

    const Image horizontal = filtered("--filter sobel-horiz --scale 0.125");
    const Image scharr = filtered("--filter scharr-vert --scale 0.03125");
    const Image mean = filtered("--filter lowpass");
    const Image length = filtered("--scale 0.25");
    for (int y = 0; y < 23; ++y) {
        for (int x = 0; x < 41; ++x) {
            const auto row = [&](int dy) { return at(x - 1, y + dy) + 2 * at(x, y + dy) + at(x + 1, y + dy); };
            const auto column = [&](int dx, int centre, int side) {
                return side * at(x + dx, y - 1) + centre * at(x + dx, y) + side * at(x + dx, y + 1);
            };
            const int dy = row(1) - row(-1), dx = column(1, 2, 1) - column(-1, 2, 1);
            ASSERT_EQ(*horizontal.pixel(x, y), grey(128 + dy * 0.125));
            ASSERT_EQ(*scharr.pixel(x, y), grey(128 + (column(1, 10, 3) - column(-1, 10, 3)) * 0.03125));
            const int sum = column(-1, 1, 1) + column(0, 1, 1) + column(1, 1, 1);
            ASSERT_EQ(*mean.pixel(x, y), (sum + 4) / 9);
            ASSERT_NEAR(*length.pixel(x, y), std::min(255.0, std::hypot(dx, dy) * 0.25), 0.51);
        }
    }
}

TEST(Gradient, UsageAndFiles) {
    const program::Folder folder;
    writeImage(folder / "photo.png", pattern(9, 5, 3, 1));
    const std::string call = "gradient " + folder / "photo.png" + " -o " + folder / "out.png";
    EXPECT_EQ(run(call + " --filter laplacian --size 5").exitCode, 0) << "colour pictures are taken as grey";
    EXPECT_EQ(run(call + " --filter prewitt").exitCode, 2);
    EXPECT_EQ(run(call + " --size 4").exitCode, 2);
    EXPECT_EQ(run(call + " --filter scharr-vert --size 5").exitCode, 2);
    EXPECT_EQ(run("gradient " + folder / "photo.png").exitCode, 2) << "no output";
    EXPECT_EQ(run("gradient " + folder / "none.png" + " -o " + folder / "out.png").exitCode, 1);
}

} // namespace
