// The corners command: a drawn rectangle has four.
#include "program.h"

#include <algorithm>
#include <cmath>
#include <sstream>

namespace {

using program::run;
using tools::Image;

struct Corner {
    int x, y;
    double strength;
};

std::vector<Corner> parseCsv(const std::string &text) {
    std::istringstream lines(text);
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line, "x,y,strength");
    std::vector<Corner> corners;
    while (std::getline(lines, line)) {
        Corner corner{};
        EXPECT_EQ(std::sscanf(line.c_str(), "%d,%d,%lf", &corner.x, &corner.y, &corner.strength), 3) << line;
        corners.push_back(corner);
    }
    return corners;
}

Image rectangle() {
    Image image(64, 48, 1);
    for (int y = 0; y < 48; ++y) {
        for (int x = 0; x < 64; ++x) {
            *image.pixel(x, y) = x >= 16 && x < 48 && y >= 12 && y < 36 ? 200 : 40;
        }
    }
    return image;
}

class CornerMethod : public testing::TestWithParam<const char *> {};

TEST_P(CornerMethod, FindsTheRectanglesFour) {
    const program::Folder folder;
    writeImage(folder / "a.png", rectangle());
    const auto result =
        run("corners " + folder / "a.png" + " --csv --method " + GetParam() + " -o " + folder / "out.png");
    ASSERT_EQ(result.exitCode, 0) << result.output;
    const auto corners = parseCsv(result.output);
    ASSERT_EQ(corners.size(), 4u) << result.output;
    // Pixels beside a corner score as much as it does, and FAST keeps the first of them.
    const int within = std::string(GetParam()) == "fast" ? 2 : 1;
    for (const int x : {16, 47}) {
        for (const int y : {12, 35}) {
            const auto near = [&](const Corner &c) {
                return std::abs(c.x - x) <= within && std::abs(c.y - y) <= within;
            };
            EXPECT_EQ(std::count_if(corners.begin(), corners.end(), near), 1) << x << " " << y;
        }
    }
    const Image drawn = tools::readImage(folder / "out.png");
    ASSERT_EQ(drawn.channels, 3);
    for (const Corner &corner : corners) {
        EXPECT_EQ(drawn.pixel(corner.x, corner.y)[2], 0) << "the mark is yellow";
        EXPECT_LT(drawn.pixel(corner.x + 5, corner.y)[0], 100) << "the ring has a dark outline";
    }
}
INSTANTIATE_TEST_SUITE_P(All, CornerMethod, testing::Values("min-eigenvalue", "harris", "fast"));

TEST(Corners, CountDistanceAndQualityAreKept) {
    const program::Folder folder;
    ASSERT_EQ(run("scene " + folder / "a.png" + " --width 320 --height 240").exitCode, 0);
    const auto find = [&](const std::string &options) {
        return parseCsv(run("corners " + folder / "a.png" + " --csv " + options).output);
    };
    const auto all = find("--count 100000 --distance 0 --quality 0.05"), few = find("--count 20 --distance 25");
    ASSERT_GT(all.size(), 40u);
    for (std::size_t i = 0; i < all.size(); ++i) {
        ASSERT_GT(all[i].strength, 0.05 * all[0].strength * 0.999);
        ASSERT_TRUE(i == 0 || all[i].strength <= all[i - 1].strength);
    }
    ASSERT_GT(few.size(), 3u);
    ASSERT_LE(few.size(), 20u);
    for (std::size_t i = 0; i < few.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            ASSERT_GE(std::hypot(few[i].x - few[j].x, few[i].y - few[j].y), 25);
        }
    }
}

TEST(Corners, FastThresholdAndArc) {
    const program::Folder folder;
    Image image(60, 40, 1);
    *image.pixel(20, 20) = 90; // a point: every run of the circle differs by 90
    for (int y = 0; y < 40; ++y) {
        *image.pixel(45, y) = 200; // a line: two runs of seven
    }
    writeImage(folder / "a.png", image);
    const auto find = [&](const std::string &options) {
        return parseCsv(run("corners " + folder / "a.png" + " --csv --method fast " + options).output);
    };
    const auto points = find("--threshold 89 --arc 16");
    ASSERT_EQ(points.size(), 1u);
    EXPECT_TRUE(points[0].x == 20 && points[0].y == 20 && points[0].strength == 90);
    EXPECT_TRUE(find("--threshold 90").empty());
    EXPECT_EQ(run("corners " + folder / "a.png" + " --csv --method fast --arc 8").exitCode, 2);
}

TEST(Corners, EdgesOfUse) {
    const program::Folder folder;
    writeImage(folder / "flat.png", Image(20, 20, 3));
    writeImage(folder / "tiny.png", Image(2, 1, 1));
    EXPECT_TRUE(parseCsv(run("corners " + folder / "flat.png" + " --csv").output).empty());
    for (const std::string method : {"harris", "fast"}) {
        EXPECT_TRUE(parseCsv(run("corners " + folder / "tiny.png" + " --csv --method " + method).output).empty());
        EXPECT_TRUE(parseCsv(run("corners " + folder / "flat.png" + " --csv --method " + method).output).empty());
    }
    EXPECT_EQ(run("corners " + folder / "flat.png").exitCode, 1) << "neither a picture nor a list";
    EXPECT_EQ(run("corners " + folder / "flat.png" + " --csv --block 4").exitCode, 2);
    EXPECT_EQ(run("corners " + folder / "flat.png" + " --csv --method sharp").exitCode, 2);
}

} // namespace
