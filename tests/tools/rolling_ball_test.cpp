// Background removal: specks and strokes smaller than the ball survive slow shading, on dark and on light grounds.
#include "program.h"
#include "rolling_ball.h"

namespace {

using tools::Image;

bool isSpeck(int x, int y) { return x >= 70 && x < 75 && y >= 40 && y < 45; }

// A slope of 40 levels, and a speck 60 levels above or below it.
TEST(RollingBall, LeavesSpecksWithoutTheShading) {
    const program::Folder folder;
    const std::string command = "morph rolling-ball " + folder / "shaded.png" + " -o " + folder / "flat.png --radius ";
    for (const int channels : {1, 3}) {
        for (const bool light : {false, true}) {
            Image shaded(160, 90, channels);
            for (std::size_t i = 0; i < shaded.pixels.size(); ++i) {
                const int pixel = static_cast<int>(i) / channels, x = pixel % 160, y = pixel / 160;
                const int speck = isSpeck(x, y) ? (light ? -60 : 60) : 0;
                shaded.pixels[i] =
                    static_cast<std::uint8_t>(100 + 10 * (static_cast<int>(i) % channels) + x / 4 + speck);
            }
            writeImage(folder / "shaded.png", shaded);
            ASSERT_EQ(program::run(command + (light ? "15 --light" : "15")).exitCode, 0);
            const Image flat = tools::readImage(folder / "flat.png");
            ASSERT_EQ(flat.pixels.size(), shaded.pixels.size());
            for (std::size_t i = 0; i < flat.pixels.size(); ++i) {
                const int pixel = static_cast<int>(i) / channels, level = light ? 255 - flat.pixels[i] : flat.pixels[i];
                ASSERT_TRUE(isSpeck(pixel % 160, pixel / 160) ? level >= 55 && level <= 62 : level <= 2) << pixel;
            }
        }
    }
    for (const char *radius : {"0", "256", "x"}) {
        EXPECT_EQ(program::run(command + radius).exitCode, 2);
    }
}

} // namespace
