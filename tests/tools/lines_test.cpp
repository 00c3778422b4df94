// The lines command: what it lists are the lines and segments that a picture shows.
#include "program.h"

#include "draw.h"

#include <sstream>

namespace {

using program::readText;
using program::run;
using tools::Image;

// Two bars: one upright, one inclined by 30 degrees (its normal by 60).
Image bars() {
    Image image(200, 160, 3);
    tools::drawLine(image, {40, 10}, {40, 150}, 12, {220, 220, 220});
    tools::drawLine(image, {80, 120}, {166.6f, 70}, 12, {220, 220, 220});
    return image;
}

std::vector<std::vector<double>> rows(const std::string &csv, const std::string &head) {
    std::istringstream lines(csv);
    std::string line;
    EXPECT_TRUE(std::getline(lines, line) && line == head) << csv;
    std::vector<std::vector<double>> result;
    while (std::getline(lines, line)) {
        std::istringstream values(line);
        result.emplace_back();
        for (std::string value; std::getline(values, value, ',');) {
            result.back().push_back(std::stod(value));
        }
    }
    return result;
}

TEST(Lines, EdgesOfBars) {
    const program::Folder folder;
    tools::writeImage(folder / "bars.png", bars());
    const auto lines = [&](const std::string &options) {
        const auto result = run("lines " + folder / "bars.png" + " --csv " + folder / "out.csv " + options);
        EXPECT_EQ(result.exitCode, 0) << result.output;
        return rows(readText(folder / "out.csv"), "rho,theta,x0,y0,x1,y1");
    };
    int upright = 0, inclined = 0;
    for (const auto &line : lines("--count 4 --apart 5")) {
        upright += line[1] < 2 && std::abs(std::abs(line[0] - 40) - 6) < 3 ? 1 : 0;
        inclined += std::abs(line[1] - 60) < 3 ? 1 : 0;
    }
    EXPECT_TRUE(upright == 2 && inclined == 2) << upright << ", " << inclined;
    const auto left = lines("--rho 30,38 --theta=-0.5,0.5 -o " + folder / "out.png"); // the bar's left side
    ASSERT_EQ(left.size(), 1u);
    EXPECT_EQ(std::abs(left[0][3] - left[0][5]), 159) << "from the upper to the lower edge";
    EXPECT_EQ(tools::readImage(folder / "out.png").pixel(static_cast<int>(left[0][0]), 155)[0], 255);
    EXPECT_TRUE(lines("--theta 100,110").empty());
}

TEST(Lines, SegmentsOfAnImageOfTwoLevels) {
    const program::Folder folder;
    Image image(120, 60, 1);
    for (int x = 10; x <= 90; ++x) {
        *image.pixel(x, 20) = x % 4 == 0 ? 0 : 1; // one in four is missing
        *image.pixel(x / 3, 50) = 200;
    }
    tools::writeImage(folder / "marks.png", image);
    const std::string call = "lines " + folder / "marks.png" + " --segments --binary --csv - ";
    const auto both = rows(run(call + "--gap 1 --length 20").output, "x0,y0,x1,y1,length");
    ASSERT_EQ(both.size(), 2u);
    for (const auto &s : both) {
        const bool dashed = s[1] == 20;
        EXPECT_EQ(std::min(s[0], s[2]), dashed ? 10 : 3);
        EXPECT_EQ(std::max(s[0], s[2]), dashed ? 90 : 30);
        EXPECT_EQ(s[4], dashed ? 80 : 27);
    }
    EXPECT_EQ(rows(run(call + "--gap 0 --length 20").output, "x0,y0,x1,y1,length").size(), 1u);
}

TEST(Lines, MistakesAreRefused) {
    EXPECT_EQ(run("lines none.png --csv - --rho 5,4").exitCode, 2);
    EXPECT_EQ(run("lines none.png --csv - --segments --rho 1,2").exitCode, 2);
    EXPECT_EQ(run("lines none.png --csv - --length 5").exitCode, 2);
}

} // namespace
