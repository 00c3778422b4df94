// Undistortion, statistics and comparisons.
#include "program.h"

#include <algorithm>
#include <cmath>

namespace {

using program::run;
using tools::Image;

// Where a dark line crosses a column, between two rows: the centre of what is darker than the paper.
double lineAt(const Image &image, int x, int top, int bottom) {
    double weights = 0, sum = 0;
    for (int y = top; y < bottom; ++y) {
        const double dark = 244 - image.pixel(x, y)[1];
        weights += dark;
        sum += dark * y;
    }
    return sum / weights;
}

TEST(UndistortCommand, BentLinesComeOutStraight) {
    const program::Folder folder;
    const std::string bent = folder / "bent.png", straight = folder / "straight.png";
    for (const std::string lens : {" --focal 450,450 --k -0.28,0.06", " --focal 450,470 --k -0.2,0 --p 0.01,-0.02"}) {
        ASSERT_EQ(run("undistort --grid 640x480 --bend -o " + bent + lens).exitCode, 0);
        ASSERT_EQ(run("undistort " + bent + " -o " + straight + lens).exitCode, 0);
        const Image before = tools::readImage(bent), after = tools::readImage(straight);
        // Lines are 40 pixels apart, at 20, 60, 100 ...; between them columns are free of upright lines.
        EXPECT_GT(std::abs(lineAt(before, 320, 85, 130) - lineAt(before, 100, 85, 130)), 4) << lens;
        for (int y = 100; y <= 380; y += 40) {
            for (int x = 80; x <= 560; x += 40) {
                ASSERT_NEAR(lineAt(after, x, y - 15, y + 16), y, 0.25) << x << lens;
            }
        }
    }
    // The library's function for pictures and sampling by the map are the same within a level.
    const std::string lens = "undistort " + bent + " --focal 450,450 --centre 300,250.5 --k 0.1,0.02 -o ";
    ASSERT_EQ(run(lens + straight).exitCode, 0);
    ASSERT_EQ(run(lens + (folder / "map.png") + " --p 1e-12,0").exitCode, 0);
    EXPECT_EQ(run("compare " + straight + " " + folder / "map.png" + " --max-difference 1").exitCode, 0);
    EXPECT_EQ(run("undistort " + bent + " --focal 0,450 --k 0,0 -o " + straight).exitCode, 2);
    EXPECT_EQ(run("undistort " + bent + " --focal 450 --k 0,0 -o " + straight).exitCode, 2);
}

TEST(StatsCommand, ColoursUnderAMask) {
    const program::Folder folder;
    Image photo(4, 2, 3), mask(4, 2, 1);
    for (int i = 0; i < 8; ++i) {
        *mask.pixel(i % 4, i / 4) = static_cast<std::uint8_t>(i < 4 ? i : 0); // columns 1 to 3 of the first row
        photo.pixel(i % 4, i / 4)[1] = static_cast<std::uint8_t>(i == 0 ? 255 : 10 * i);
        photo.pixel(i % 4, i / 4)[2] = 7;
    }
    writeImage(folder / "a.png", photo);
    writeImage(folder / "mask.png", mask);
    const auto result = run("stats " + folder / "a.png" + " --csv --mask " + folder / "mask.png");
    ASSERT_EQ(result.exitCode, 0) << result.output;
    EXPECT_EQ(result.output, "channel,pixels,mean,deviation,min,min_x,min_y,max,max_x,max_y,l1,l2\n"
                             "red,3,0,0,0,1,0,0,1,0,0,0\n"
                             "green,3,20,8.1649658092772608,10,1,0,30,3,0,60,37.416573867739416\n"
                             "blue,3,7,0,7,1,0,7,1,0,21,12.124355652982141\n");
    EXPECT_NE(run("stats " + folder / "a.png").output.find("255 (0, 0)"), std::string::npos);
    EXPECT_EQ(run("stats " + folder / "a.png" + " --mask " + folder / "none.png").exitCode, 1);
}

TEST(CompareCommand, SaysWhereAndEndsAsAsked) {
    const program::Folder folder;
    Image a = program::pattern(30, 20, 1), b = a;
    *b.pixel(17, 9) = static_cast<std::uint8_t>(*a.pixel(17, 9) ^ 16);
    writeImage(folder / "a.png", a);
    writeImage(folder / "b.png", b);
    const std::string compare = "compare " + folder / "a.png" + " " + folder / "b.png";
    const auto result = run(compare + " --max-difference 16");
    ASSERT_EQ(result.exitCode, 0) << result.output;
    EXPECT_NE(result.output.find(" 16 (17, 9)"), std::string::npos) << result.output;
    EXPECT_EQ(run(compare + " --max-difference 15").exitCode, 1);
    EXPECT_EQ(run(compare + " --max-difference -1").exitCode, 2);
    *a.pixel(17, 9) = 0; // as a mask: everything but where they differ (and black)
    writeImage(folder / "mask.png", a);
    EXPECT_EQ(run(compare + " --max-difference 0 --mask " + folder / "mask.png").exitCode, 0);
    writeImage(folder / "b.png", Image(30, 21, 1));
    EXPECT_EQ(run(compare).exitCode, 1);
}

} // namespace
