// The track command on films whose motion is known.
#include "program.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <sstream>

namespace {

using program::run;
using tools::Image;

struct Sample {
    int frame;
    double x, y, error;
};

using Tracks = std::map<int, std::vector<Sample>>;

// Of the whole list; each track's samples must follow each other frame by frame.
Tracks parseList(const std::string &text) {
    std::istringstream lines(text);
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line, "track,frame,x,y,error");
    Tracks tracks;
    while (std::getline(lines, line)) {
        int number = 0;
        Sample s{};
        EXPECT_EQ(std::sscanf(line.c_str(), "%d,%d,%lf,%lf,%lf", &number, &s.frame, &s.x, &s.y, &s.error), 5) << line;
        std::vector<Sample> &samples = tracks[number];
        EXPECT_TRUE(samples.empty() || samples.back().frame + 1 == s.frame) << line;
        samples.push_back(s);
    }
    return tracks;
}

// A texture that moves by (3.3, -2.1) pixels a frame.
constexpr double moveX = 3.3, moveY = -2.1;

Image textureFrame(int frame) {
    Image image(200, 150, 1);
    for (int y = 0; y < 150; ++y) {
        for (int x = 0; x < 200; ++x) {
            const double u = x - moveX * frame, v = y - moveY * frame;
            const double value = 45 * std::sin(u / 4.1) * std::cos(v / 5.3) + 30 * std::sin((u + 2 * v) / 13) +
                                 25 * std::cos((u - v) / 23) + 12 * std::sin(u * v / 900);
            *image.pixel(x, y) = static_cast<std::uint8_t>(std::lround(128 + value));
        }
    }
    return image;
}

TEST(Track, FollowsAMovingTexture) {
    const program::Folder folder;
    constexpr int frames = 12;
    std::string names, film = "YUV4MPEG2 W200 H150 Cmono\n";
    for (int i = 0; i < frames; ++i) {
        const Image frame = textureFrame(i);
        const std::string name = folder / ("f" + std::to_string(i) + ".png");
        writeImage(name, frame);
        names += name + " ";
        film += "FRAME\n" + std::string(reinterpret_cast<const char *>(frame.data()), frame.pixels.size());
    }
    const std::string options = " --count 60 --distance 12 -o " + folder / "out.png --csv " + folder / "list.csv";
    const auto result = run("track " + names + options);
    ASSERT_EQ(result.exitCode, 0) << result.output;
    const std::string text = program::readText(folder / "list.csv");
    const Tracks tracks = parseList(text);
    std::size_t steps = 0, exact = 0, replaced = 0;
    std::map<int, int> present;
    for (const auto &[number, samples] : tracks) {
        replaced += samples.front().frame > 0;
        EXPECT_EQ(samples.front().error, 0);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            ++present[samples[i].frame];
            if (i > 0) {
                const double offX = samples[i].x - samples[i - 1].x - moveX;
                const double offY = samples[i].y - samples[i - 1].y - moveY;
                ++steps;
                exact += std::hypot(offX, offY) < 0.2;
            }
        }
    }
    ASSERT_EQ(present.size(), static_cast<std::size_t>(frames));
    for (const auto &[frame, count] : present) {
        EXPECT_LE(count, 60);
        EXPECT_GE(count, present[0] / 2) << "frame " << frame;
    }
    EXPECT_GT(steps, 200u);
    EXPECT_GT(static_cast<double>(exact), 0.95 * static_cast<double>(steps));
    EXPECT_GT(replaced, 3u) << "points that leave the picture are replaced";

    const Image out = tools::readImage(folder / "out.png");
    ASSERT_EQ(out.channels, 3);
    int coloured = 0;
    for (int i = 0; i < 200 * 150; ++i) {
        const std::uint8_t *p = out.pixel(i % 200, i / 200);
        coloured += std::abs(p[0] - p[1]) + std::abs(p[1] - p[2]) > 40;
    }
    EXPECT_GT(coloured, 1000) << "paths are drawn";

    program::writeText(folder / "film.y4m", film);
    ASSERT_EQ(run("track -" + options + " < " + folder / "film.y4m").exitCode, 0);
    EXPECT_EQ(program::readText(folder / "list.csv"), text) << "a film is the same as its pictures";
}

TEST(Track, NothingToFollowAndMistakes) {
    const program::Folder folder;
    tools::writeImage(folder / "flat.png", Image(40, 30, 3));
    tools::writeImage(folder / "tiny.png", Image(1, 1, 1));
    tools::writeImage(folder / "other.png", Image(41, 30, 3));
    const std::string flat = folder / "flat.png ", list = " --csv " + folder / "list.csv";
    const auto none = run("track " + flat + flat + flat + "-o " + folder / "out.png" + list);
    EXPECT_EQ(none.exitCode, 0) << none.output;
    EXPECT_NE(none.output.find("3 frames, 0 points"), std::string::npos) << none.output;
    EXPECT_EQ(program::readText(folder / "list.csv"), "track,frame,x,y,error\n");
    EXPECT_EQ(run("track " + folder / "tiny.png " + folder / "tiny.png" + list).exitCode, 0);
    std::filesystem::remove(folder / "list.csv");
    std::filesystem::remove(folder / "out.png");

    EXPECT_EQ(run("track " + flat).exitCode, 1) << "neither a picture nor a list";
    EXPECT_EQ(run("track " + flat + "- " + list).exitCode, 2);
    for (const char *options : {"--window 2", "--levels 0", "--max-error -1", "--count 0", "--trail -1"}) {
        EXPECT_EQ(run("track " + flat + options + list).exitCode, 2) << options;
    }
    EXPECT_EQ(run("track " + flat + "-o " + folder / "out.xyz").exitCode, 1);
    const auto size = run("track " + flat + folder / "other.png" + " -o " + folder / "out.png" + list);
    EXPECT_EQ(size.exitCode, 1);
    EXPECT_NE(size.output.find("one size"), std::string::npos);
    program::writeText(folder / "film.y4m", "YUV4MPEG2 W8 H8 Cmono\nFRAME\n" + std::string(64, 'a') + "FRAME\nshort");
    EXPECT_EQ(run("track - -o " + folder / "out.png" + list + " < " + folder / "film.y4m").exitCode, 1);
    EXPECT_FALSE(std::filesystem::exists(folder / "out.png"));
    EXPECT_FALSE(std::filesystem::exists(folder / "list.csv")) << "half a list is no list";
}

} // namespace
