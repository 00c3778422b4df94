// The foreground command on a film whose moving parts are known.
#include "program.h"

#include <algorithm>
#include <random>

namespace {

using program::run;
using tools::Image;

constexpr int width = 160, height = 90, frames = 40, first = 30;

int stillValue(int x, int y) { return 60 + (x * 7 + y * 13) % 120; }

// A bright square that moves by 20 pixels a frame.
bool inSquare(int frame, int x, int y) {
    const int left = 20 * (frame - first) % 140;
    return frame >= first && x >= left && x < left + 20 && y >= 20 && y < 40;
}

// Below the square is its shadow.
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
        names += folder / ("f" + std::to_string(n) + ".png ");
        writeImage(folder / ("f" + std::to_string(n) + ".png"), frame);
        film += "FRAME\n" + std::string(reinterpret_cast<const char *>(frame.data()), frame.pixels.size());
    }
    program::writeText(folder / "film.y4m", film);
    for (const std::string model : {"mixture", "gaussian", "histogram"}) {
        const std::string command = "foreground --model " + model + " -o " + folder / model + "/out ";
        ASSERT_EQ(run(command + (model == "gaussian" ? "- < " + folder / "film.y4m" : names)).exitCode, 0) << model;
        for (int n = first; n < frames; ++n) {
            const Image map = tools::readImage(folder / (model + "/out/silhouette-00" + std::to_string(n) + ".png"));
            const int shadow = model == "histogram" ? 255 : 127;
            int wrong = 0;
            for (int i = 0; i < width * height; ++i) {
                const int x = i % width, y = i / width;
                wrong += *map.pixel(x, y) != (inSquare(n, x, y) ? 255 : inSquare(n, x, y - 20) ? shadow : 0);
            }
            EXPECT_LE(wrong, model == "gaussian" ? 30 : 3) << model << " " << n;
        }
        const Image background = tools::readImage(folder / (model + "/out/background.png"));
        for (int i = 0; i < width * height; ++i) {
            ASSERT_NEAR(*background.pixel(i % width, i / width), stillValue(i % width, i / width), 9) << model;
        }
    }
    const auto result = run("foreground --clean --threshold 2 " + names + "-o " + folder / "clean");
    EXPECT_NE(result.output.find("40 frames, in the last one foreground on 2."), std::string::npos) << result.output;
    EXPECT_EQ(run("foreground " + names + "-o " + folder / "x --model histogram --shadow 0.5").exitCode, 2);
    EXPECT_EQ(run("foreground " + names + "-o " + folder / "film.y4m").exitCode, 1) << "a file is no folder";
}

} // namespace
