// Background removal: specks and strokes smaller than the ball survive slow shading, on dark and on light grounds.
#include "program.h"
#include "rolling_ball.h"

namespace {

using tools::Image;

// A slope of 40 levels, and a speck of 5x5 pixels, 60 levels above or below it.
Image shaded(int channels, int sign) {
    Image image(160, 90, channels);
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            const bool speck = x >= 70 && x < 75 && y >= 40 && y < 45;
            for (int c = 0; c < channels; ++c) {
                image.pixel(x, y)[c] = static_cast<std::uint8_t>(100 + 10 * c + x / 4 + (speck ? sign * 60 : 0));
            }
        }
    }
    return image;
}

TEST(RollingBall, LeavesSpecksWithoutTheShading) {
    const program::Folder folder;
    for (const int channels : {1, 3}) {
        for (const bool light : {false, true}) {
            writeImage(folder / "shaded.png", shaded(channels, light ? -1 : 1));
            const std::string options = light ? " --radius 15 --light" : " --radius 15";
            ASSERT_EQ(
                program::run("morph rolling-ball " + folder / "shaded.png" + " -o " + folder / "flat.png" + options)
                    .exitCode,
                0);
            const Image flat = tools::readImage(folder / "flat.png");
            ASSERT_EQ(flat.channels, channels);
            for (int y = 0; y < flat.height; ++y) {
                for (int x = 0; x < flat.width; ++x) {
                    const bool speck = x >= 70 && x < 75 && y >= 40 && y < 45;
                    for (int c = 0; c < channels; ++c) {
                        const int level = light ? 255 - flat.pixel(x, y)[c] : flat.pixel(x, y)[c];
                        ASSERT_TRUE(speck ? level >= 55 && level <= 62 : level <= 2)
                            << x << ", " << y << ": " << level << (light ? " below" : " above");
                    }
                }
            }
        }
    }
    for (const char *radius : {"0", "256", "x"}) {
        EXPECT_EQ(program::run("morph rolling-ball " + folder / "shaded.png" + " -o " + folder / "flat.png --radius " +
                               radius)
                      .exitCode,
                  2);
    }
}

} // namespace
