// The commands that show a family on a picture, against the family's definition on a picture small enough to compute.
#include "program.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

using program::pattern;
using program::run;
using tools::Image;
using tools::readImage;
using tools::writeImage;

TEST(GradientCommand, FiltersOfThePicture) {
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

TEST(GradientCommand, UsageAndFiles) {
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

TEST(OrientationCommand, DirectionsAsColours) {
    const program::Folder folder;
    const auto shown = [&](double degrees, const std::string &options) {
        const double angle = degrees * std::acos(-1.0) / 180;
        Image stripes(80, 60, 1);
        for (int i = 0; i < 80 * 60; ++i) {
            const double along = i % 80 * std::cos(angle) + i / 80 * std::sin(angle);
            *stripes.pixel(i % 80, i / 80) = static_cast<std::uint8_t>(128 + 100 * std::cos(0.4 * along));
        }
        writeImage(folder / "photo.png", stripes);
        const auto result = run("orientation " + folder / "photo.png" + " -o " + folder / "out.png" + options);
        double said = 0;
        EXPECT_EQ(std::sscanf(result.output.c_str(), "strongest change at %lf degrees", &said), 1) << result.output;
        EXPECT_NEAR(said, degrees, 1);
        return readImage(folder / "out.png");
    };
    const auto expect = [&](double degrees, const std::array<bool, 3> &strong) { // red, green, blue
        const Image picture = shown(degrees, " --block 3 --sigma 1");
        for (std::size_t i = 0; i < 3; ++i) {
            const int level = picture.pixel(35, 33)[i];
            EXPECT_TRUE(strong[i] ? level > 130 : level < 90) << degrees << " " << level;
        }
    };
    expect(0, {true, false, false});
    expect(30, {true, true, false});
    expect(60, {false, true, false});
    expect(-30, {true, false, true});
    const Image legend = shown(60, " --legend"); // the ring's right end is red
    EXPECT_TRUE(legend.pixel(73, 40)[0] > 240 && legend.pixel(73, 40)[1] < 40);
    EXPECT_EQ(run("orientation " + folder / "photo.png" + " -o " + folder / "out.png --block 4").exitCode, 2);
}

TEST(MorphCommand, MasksAndOperations) {
    const program::Folder folder;
    for (const int channels : {1, 3}) {
        const Image image = pattern(31, 17, channels);
        writeImage(folder / "a.png", image);
        program::writeText(folder / "mask.pbm", "P1\n3 1\n1 0 1\n");
        ASSERT_EQ(
            run("morph dilate " + folder / "a.png" + " -o " + folder / "d.png --mask " + folder / "mask.pbm").exitCode,
            0);
        ASSERT_EQ(run("morph erode " + folder / "a.png" + " -o " + folder / "e.png --mask cross:3x1").exitCode, 0);
        ASSERT_EQ(run("morph gradient " + folder / "a.png" + " -o " + folder / "g.png --mask rect:3x1").exitCode, 0);
        const Image d = readImage(folder / "d.png"), e = readImage(folder / "e.png"), g = readImage(folder / "g.png");
        for (int y = 0; y < 17; ++y) {
            for (int x = 0; x < 31; ++x) {
                for (int c = 0; c < channels; ++c) {
                    const int left = image.pixel(std::max(x - 1, 0), y)[c], mid = image.pixel(x, y)[c];
                    const int right = image.pixel(std::min(x + 1, 30), y)[c];
                    ASSERT_EQ(d.pixel(x, y)[c], std::max(left, right));
                    ASSERT_EQ(e.pixel(x, y)[c], std::min({left, mid, right}));
                    ASSERT_EQ(g.pixel(x, y)[c], std::max({left, mid, right}) - std::min({left, mid, right}));
                }
            }
        }
    }
    for (const char *operation : {"open", "close", "tophat", "blackhat"}) {
        EXPECT_EQ(run(std::string("morph ") + operation + " " + folder / "a.png" + " -o " +
                      folder / "o.png --mask ellipse:5x7")
                      .exitCode,
                  0);
    }
    EXPECT_EQ(run("morph melt " + folder / "a.png" + " -o " + folder / "o.png").exitCode, 2);
    for (const char *mask : {"rect:0x3", "disc:3x3", "rect:3x", "missing.pbm"}) {
        EXPECT_EQ(run("morph open " + folder / "a.png" + " -o " + folder / "o.png --mask " + mask).exitCode, 1) << mask;
    }
}

// Digits are tens of levels. Channels are on their own: the third has the drawing upside down.
TEST(MorphCommand, Reconstruction) {
    using Rows = std::vector<std::string>;
    const std::pair<const char *, Rows> results[] = {
        {"dilate --mask rect:1x1", {"000008", "077708", "070700", "007300", "000000"}},
        {"fill-holes", {"000008", "077708", "077700", "007300", "000000"}}, // the outline's corner is a diagonal
        {"clear-border", {"000000", "077700", "070700", "007300", "000000"}},
        {"domes --height 40", {"000004", "044404", "040400", "004000", "000000"}}, // the top 40 of 80 and of 70
    };
    const program::Folder folder;
    const auto digit = [](const Rows &rows, int x, int y, int c) {
        return rows[static_cast<std::size_t>(c == 2 ? 4 - y : y)][static_cast<std::size_t>(x)] - '0';
    };
    Image picture(6, 5, 3);
    for (int i = 0; i < 6 * 5 * 3; ++i) {
        picture.pixels[static_cast<std::size_t>(i)] =
            static_cast<std::uint8_t>(10 * digit(results[0].second, i / 3 % 6, i / 18, i % 3));
    }
    writeImage(folder / "a.png", picture);
    for (const auto &[operation, want] : results) {
        const std::string call = std::string("morph ") + operation + " " + folder / "a.png" + " -o " + folder / "o.png";
        ASSERT_EQ(run(call).exitCode, 0);
        const Image got = readImage(folder / "o.png");
        for (int i = 0; i < 6 * 5 * 3; ++i) {
            const int level = 10 * digit(want, i / 3 % 6, i / 18, i % 3);
            ASSERT_EQ(got.pixels[static_cast<std::size_t>(i)], call.find("domes") < 9 ? level * 255 / 40 : level)
                << operation << " at " << i;
        }
    }
    EXPECT_EQ(run("morph domes " + folder / "a.png" + " -o " + folder / "o.png --height 0").exitCode, 2);
}

} // namespace
