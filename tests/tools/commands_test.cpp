// The commands as a user runs them.
#include "program.h"

#include <cmath>

namespace {

using program::pattern;
using program::run;
using tools::Image;
using tools::readImage;
using tools::writeImage;

TEST(Program, HelpUsageAndExitCodes) {
    EXPECT_EQ(run("--help").exitCode, 0);
    EXPECT_EQ(run("average --help").exitCode, 0);
    EXPECT_EQ(run("").exitCode, 2);
    EXPECT_EQ(run("frobnicate").exitCode, 2);
    EXPECT_EQ(run("diff one.png").exitCode, 2);
    EXPECT_EQ(run("average a.png -o b.png --alpha 2").exitCode, 2);
    EXPECT_EQ(run("average a.png -o b.png --alpha nan").exitCode, 2);
    const auto info = run("info");
    EXPECT_EQ(info.exitCode, 0);
    EXPECT_NE(info.output.find("rvxCV AVX2 (l9)"), std::string::npos);
    EXPECT_NE(info.output.find("8.2.1 (r44077)"), std::string::npos);
}

TEST(Program, DiffIsTheAbsoluteDifference) {
    const program::Folder folder;
    for (const int channels : {1, 3}) {
        const Image a = pattern(33, 9, channels, 1), b = pattern(33, 9, channels, 2);
        writeImage(folder / "a.png", a);
        writeImage(folder / "b.png", b);
        ASSERT_EQ(run("diff " + folder / "a.png" + " " + folder / "b.png" + " " + folder / "d.png").exitCode, 0);
        const Image d = readImage(folder / "d.png");
        for (std::size_t i = 0; i < d.pixels.size(); ++i) {
            ASSERT_EQ(d.pixels[i], std::abs(a.pixels[i] - b.pixels[i]));
        }
    }
}

TEST(Program, AverageFollowsTheFrames) {
    const program::Folder folder;
    const Image frames[] = {pattern(19, 7, 3, 1), pattern(19, 7, 3, 2), pattern(19, 7, 3, 3)};
    std::string names;
    for (int i = 0; i < 3; ++i) {
        const std::string name = folder / ("f" + std::to_string(i) + ".png");
        writeImage(name, frames[i]);
        names += name + " ";
    }
    ASSERT_EQ(run("average " + names + "-o " + folder / "avg.png" + " --alpha 0.25").exitCode, 0);
    const Image average = readImage(folder / "avg.png");
    for (std::size_t i = 0; i < average.pixels.size(); ++i) {
        double want = frames[0].pixels[i];
        for (int f = 1; f < 3; ++f) {
            want += 0.25 * (frames[f].pixels[i] - want);
        }
        ASSERT_NEAR(average.pixels[i], want, 0.5001);
    }
}

TEST(Program, FailuresAreMessages) {
    const program::Folder folder;
    writeImage(folder / "a.png", pattern(8, 8, 1));
    writeImage(folder / "b.png", pattern(9, 8, 1));
    program::writeText(folder / "broken.png", program::readText(folder / "a.png").substr(0, 40));
    struct Case {
        std::string arguments, message;
    };
    const Case cases[] = {
        {"diff " + folder / "a.png" + " " + folder / "b.png" + " " + folder / "d.png", "one size"},
        {"diff " + folder / "a.png" + " " + folder / "none.png" + " " + folder / "d.png", "cannot open"},
        {"diff " + folder / "a.png" + " " + folder / "broken.png" + " " + folder / "d.png", "broken PNG"},
        {"diff " + folder / "a.png" + " " + folder / "a.png" + " " + folder / "d.xyz", "cannot tell the format"},
        {"average " + folder / "a.png" + " " + folder / "b.png" + " -o " + folder / "d.png", "one size"},
    };
    for (const Case &c : cases) {
        const auto result = run(c.arguments);
        EXPECT_EQ(result.exitCode, 1) << c.arguments;
        EXPECT_NE(result.output.find(c.message), std::string::npos) << result.output;
        EXPECT_FALSE(std::filesystem::exists(folder / "d.png"));
    }
}

TEST(Program, SceneIsDeterministicAndMoves) {
    const program::Folder folder;
    const auto render = [&](const std::string &name, const std::string &options) {
        EXPECT_EQ(run("scene " + folder / name + " --width 160 --height 120 " + options).exitCode, 0);
        return readImage(folder / name).pixels;
    };
    const auto first = render("a.ppm", ""), again = render("b.ppm", ""), next = render("c.ppm", "--frame 1");
    EXPECT_EQ(first, again);
    std::size_t moved = 0;
    for (std::size_t i = 0; i < first.size(); ++i) {
        moved += std::abs(first[i] - next[i]) > 40;
    }
    EXPECT_GT(moved, first.size() / 200);
    EXPECT_LT(moved, first.size() / 5);
}

} // namespace
