// The commands that show a family on a picture, against the family's definition on a picture small enough to compute.
#include "program.h"

#include <algorithm>

namespace {

using program::pattern;
using program::run;
using tools::Image;
using tools::readImage;
using tools::writeImage;

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

} // namespace
