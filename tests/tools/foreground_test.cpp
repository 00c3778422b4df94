// The foreground command on a film whose moving parts are known.
#include "program.h"

#include <algorithm>
#include <random>

namespace {

using program::run;
using tools::Image;

constexpr int width = 160, height = 90, frames = 40, first = 30;

int stillValue(int x, int y) { return 60 + (x * 7 + y * 13) % 120; }

// A bright square that moves by 20 pixels a frame, and its shadow below it.
bool inSquare(int frame, int x, int y) {
    const int left = 20 * (frame - first) % 140;
    return frame >= first && x >= left && x < left + 20 && y >= 20 && y < 40;
}

Image filmFrame(int frame) {
    std::mt19937 rng(static_cast<unsigned>(frame));
    Image image(width, height, 1);
    for (int i = 0; i < width * height; ++i) {
        const int x = i % width, y = i / width, value = stillValue(x, y);
        const int shown = inSquare(frame, x, y) ? value + 65 : inSquare(frame, x, y - 20) ? value * 7 / 10 : value;
        *image.pixel(x, y) = static_cast<std::uint8_t>(shown + static_cast<int>(rng() % 5) - 2);
    }
    return image;
}

TEST(ForegroundCommand, SilhouettesShadowsAndBackground) {
    const program::Folder folder;
    std::string names, film = "YUV4MPEG2 W160 H90 Cmono\n";
    for (int n = 0; n < frames; ++n) {
        const Image frame = filmFrame(n);
        const std::string name = folder / ("f" + std::to_string(100 + n) + ".png");
        writeImage(name, frame);
        names += name + " ";
        film += "FRAME\n" + std::string(reinterpret_cast<const char *>(frame.data()), frame.pixels.size());
    }
    program::writeText(folder / "film.y4m", film);
    const auto silhouette = [&](const std::string &out, int n) {
        return tools::readImage(folder / (out + "/silhouette-00" + std::to_string(n) + ".png"));
    };
    for (const std::string model : {"mixture", "gaussian", "histogram"}) {
        const std::string options = " --model " + model + " -o ";
        const auto result = run("foreground " + names + options + folder / ("deep/" + model));
        ASSERT_EQ(result.exitCode, 0) << result.output;
        EXPECT_NE(result.output.find("40 frames, in the last one foreground on"), std::string::npos) << result.output;
        ASSERT_EQ(run("foreground -" + options + folder / "film" + " < " + folder / "film.y4m").exitCode, 0);
        for (int n = first; n < frames; ++n) {
            const Image map = silhouette("deep/" + model, n);
            EXPECT_EQ(map.pixels, silhouette("film", n).pixels) << "a film is the same as its pictures";
            int wrong = 0;
            for (int i = 0; i < width * height; ++i) {
                const int x = i % width, y = i / width, shadow = model == "histogram" ? 255 : 127;
                const int want = inSquare(n, x, y) ? 255 : inSquare(n, x, y - 20) ? shadow : 0;
                wrong += *map.pixel(x, y) != want;
            }
            EXPECT_LE(wrong, model == "gaussian" ? 30 : 3) << model << " " << n;
        }
        const Image background = tools::readImage(folder / ("deep/" + model + "/background.png"));
        for (int i = 0; i < width * height; ++i) {
            ASSERT_NEAR(*background.pixel(i % width, i / width), stillValue(i % width, i / width), 9) << model;
        }
    }
    // Specks are gone, what is larger is there.
    ASSERT_EQ(run("foreground --clean --threshold 2 " + names + "-o " + folder / "clean").exitCode, 0);
    const Image map = silhouette("clean", frames - 1);
    EXPECT_NEAR(static_cast<double>(std::count(map.pixels.begin(), map.pixels.end(), 255)), 400, 40);

    EXPECT_EQ(run("foreground " + names + "-o " + folder / "x --model histogram --shadow 0.5").exitCode, 2);
    EXPECT_EQ(run("foreground " + names + "-o " + folder / "x --rate 0").exitCode, 2);
    EXPECT_EQ(run("foreground " + names + "-o " + folder / "film.y4m").exitCode, 1) << "a file is no folder";
    EXPECT_EQ(run("foreground " + folder / "none.png" + " -o " + folder / "x").exitCode, 1);
}

} // namespace
