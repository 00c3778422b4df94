// The commands that smooth and measure: blur, local deviation, motion history, profiles, pyramids.
#include "program.h"

#include "colour.h"

#include <algorithm>
#include <cmath>

namespace {

using program::pattern;
using program::run;
using tools::Image;
using tools::readImage;
using tools::writeImage;

// The pixel of a channel, or the nearest one inside.
int at(const Image &image, int x, int y, int channel = 0) {
    return image.pixel(std::clamp(x, 0, image.width - 1), std::clamp(y, 0, image.height - 1))[channel];
}

// -------------------------------------------------------------------------------------------------------- blur

std::vector<double> gaussian(int size, double sigma) {
    std::vector<double> kernel;
    double sum = 0;
    for (int i = 0; i < size; ++i) {
        const double x = i - size / 2;
        kernel.push_back(std::exp(-x * x / (2 * sigma * sigma)));
        sum += kernel.back();
    }
    for (double &tap : kernel) {
        tap /= sum;
    }
    return kernel;
}

// What becomes of a bright pixel is the kernel itself.
TEST(BlurCommand, IsAGaussianOfSigmaAndSize) {
    const program::Folder folder;
    struct Case {
        const char *options;
        double sigma;
        int size;
    };
    for (const Case &c : {Case{"--sigma 1.2", 1.2, 9}, {"--sigma 4 --size 5", 4, 5}, {"--sigma 2.1", 2.1, 15}}) {
        Image photo(37, 21, 3);
        photo.pixel(18, 10)[1] = 255;
        writeImage(folder / "a.png", photo);
        ASSERT_EQ(run("blur " + folder / "a.png" + " -o " + folder / "out.png " + c.options).exitCode, 0);
        const Image out = readImage(folder / "out.png");
        const std::vector<double> kernel = gaussian(c.size, c.sigma);
        const auto weight = [&](int offset) {
            const int i = offset + c.size / 2;
            return i >= 0 && i < c.size ? kernel[static_cast<std::size_t>(i)] : 0.0;
        };
        for (int i = 0; i < 37 * 21; ++i) {
            const std::uint8_t *pixel = out.pixel(i % 37, i / 37);
            ASSERT_NEAR(pixel[1], 255 * weight(i % 37 - 18) * weight(i / 37 - 10), 1) << c.options << " at " << i;
            ASSERT_TRUE(pixel[0] == 0 && pixel[2] == 0);
        }
    }
}

TEST(BlurCommand, MistakesAreRefused) {
    const program::Folder folder;
    writeImage(folder / "a.png", pattern(9, 9, 1));
    for (const char *options :
         {"", "--sigma 0", "--sigma nan", "--sigma -1", "--sigma 2 --size 4", "--sigma 2 --size 1"}) {
        EXPECT_EQ(run("blur " + folder / "a.png" + " -o " + folder / "out.png " + options).exitCode, 2) << options;
    }
    EXPECT_FALSE(std::filesystem::exists(folder / "out.png"));
}

// --------------------------------------------------------------------------------------------------- deviation

TEST(DeviationCommand, IsTheWindowsDeviation) {
    const program::Folder folder;
    const Image photo = pattern(33, 19, 1, 7);
    writeImage(folder / "a.png", photo);
    ASSERT_EQ(run("deviation " + folder / "a.png" + " --window 5x4 --scale 2 -o " + folder / "out.png").exitCode, 0);
    const Image out = readImage(folder / "out.png");
    for (int y = 0; y < 19; ++y) {
        for (int x = 0; x < 33; ++x) {
            double sum = 0, squares = 0;
            for (int v = y - 2; v < y + 2; ++v) {
                for (int u = x - 2; u <= x + 2; ++u) {
                    sum += at(photo, u, v);
                    squares += at(photo, u, v) * at(photo, u, v);
                }
            }
            const double deviation = std::sqrt(squares / 20 - sum / 20 * sum / 20);
            ASSERT_NEAR(at(out, x, y), std::min(255.0, 2 * deviation), 0.51) << x << "," << y;
        }
    }
}

// A single bright pixel is seen by every window that holds it: as many as a window has pixels, around it, and all with
// the same deviation. On the picture's edges the window is as good as anywhere else.
TEST(DeviationCommand, TiltedWindowsAroundAPoint) {
    const program::Folder folder;
    for (const auto &[width, height] : {std::pair{5, 3}, std::pair{4, 4}, std::pair{1, 6}}) {
        Image photo(41, 37, 1);
        *photo.pixel(20, 18) = 200;
        writeImage(folder / "a.png", photo);
        const std::string window = " --window " + std::to_string(width) + "x" + std::to_string(height);
        ASSERT_EQ(
            run("deviation " + folder / "a.png" + window + " --tilted --scale 1 -o " + folder / "out.png").exitCode, 0);
        const Image out = readImage(folder / "out.png");
        const int area = 2 * width * height;
        const double mean = 200.0 / area, deviation = std::sqrt(200.0 * 200.0 / area - mean * mean);
        int seen = 0;
        double sumX = 0, sumY = 0;
        for (int y = 0; y < 37; ++y) {
            for (int x = 0; x < 41; ++x) {
                if (at(out, x, y) != 0) {
                    EXPECT_NEAR(at(out, x, y), deviation, 0.51);
                    ++seen;
                    sumX += x;
                    sumY += y;
                }
            }
        }
        EXPECT_EQ(seen, area) << window;
        EXPECT_NEAR(sumX / seen, 20, 0.51) << window;
        EXPECT_NEAR(sumY / seen, 18, 0.51) << window;
        Image even(23, 11, 1);
        std::fill(even.pixels.begin(), even.pixels.end(), std::uint8_t{77});
        writeImage(folder / "a.png", even);
        ASSERT_EQ(run("deviation " + folder / "a.png" + window + " --tilted -o " + folder / "out.png").exitCode, 0);
        EXPECT_EQ(readImage(folder / "out.png").pixels, std::vector<std::uint8_t>(23 * 11));
    }
    for (const char *options : {"--window 5", "--window 0x3", "--window 5x1000", "--window 5x3x1", "--scale 0"}) {
        EXPECT_EQ(run("deviation " + folder / "a.png" + " -o " + folder / "none.png " + options).exitCode, 2)
            << options;
    }
    EXPECT_FALSE(std::filesystem::exists(folder / "none.png"));
}

// ----------------------------------------------------------------------------------------------------- history

TEST(HistoryCommand, ColoursTellTheAge) {
    const program::Folder folder;
    std::string names;
    for (int i = 0; i < 6; ++i) { // one column lights up in each frame, and one flickers too little
        Image frame(20, 8, 1);
        for (int y = 0; y < 8; ++y) {
            std::fill_n(frame.pixel(0, y), 20, std::uint8_t{60});
            *frame.pixel(15, y) = static_cast<std::uint8_t>(60 + 30 * (i % 2));
            std::fill_n(frame.pixel(2, y), i, std::uint8_t{160});
        }
        const std::string name = folder / ("f" + std::to_string(i) + ".png");
        writeImage(name, frame);
        names += name + " ";
    }
    const auto result = run("history " + names + "-o " + folder / "out.png --threshold 30 --duration 3");
    ASSERT_EQ(result.exitCode, 0) << result.output;
    EXPECT_NE(result.output.find("6 frames, motion on 20.0 %"), std::string::npos) << result.output;
    const Image out = readImage(folder / "out.png");
    const auto brightness = [&](int x) { return out.pixel(x, 3)[0] + out.pixel(x, 3)[1] + out.pixel(x, 3)[2]; };
    EXPECT_EQ(out.pixel(15, 3)[0], 30) << "no motion: the frame, darkened";
    EXPECT_EQ(out.pixel(10, 3)[2], 20);
    EXPECT_EQ(out.pixel(2, 3)[0], 53) << "moved in frame 1, which is forgotten";
    for (int x = 4; x <= 6; ++x) {
        EXPECT_GT(brightness(x), brightness(x - 1) + 40) << "columns 3 to 6 lit up in frames 2 to 5";
    }
    const tools::Rgb newest = tools::heat(0.95);
    EXPECT_EQ(out.pixel(6, 0)[0], newest.r);
    EXPECT_EQ(out.pixel(6, 0)[1], newest.g);

    ASSERT_EQ(run("history " + names + "-o " + folder / "out.png --threshold 29 --duration 9").exitCode, 0);
    const Image more = readImage(folder / "out.png");
    EXPECT_NE(more.pixel(15, 3)[0], more.pixel(15, 3)[2]) << "a lower threshold sees the flicker";
    EXPECT_NE(more.pixel(2, 3)[0], more.pixel(2, 3)[2]) << "and a longer duration remembers";
    EXPECT_EQ(run("history " + names + "-o " + folder / "x.png --threshold 256").exitCode, 2);
    EXPECT_EQ(run("history " + names + folder / "none.png" + " -o " + folder / "x.png").exitCode, 1);
    EXPECT_FALSE(std::filesystem::exists(folder / "x.png"));
}

// ----------------------------------------------------------------------------------------------------- profile

std::size_t countOf(const std::string &text, const std::string &part) {
    std::size_t n = 0;
    for (std::size_t i = text.find(part); i != std::string::npos; i = text.find(part, i + 1)) {
        ++n;
    }
    return n;
}

TEST(ProfileCommand, ListsThePixelsOnTheLine) {
    const program::Folder folder;
    struct Line {
        int x0, y0, x1, y1;
    };
    const Line lines[] = {{0, 0, 4, 2},  {30, 20, 1, 3}, {5, 19, 9, 0}, {7, 7, 7, 7},
                          {36, 0, 0, 0}, {3, 2, 3, 18},  {2, 2, 9, 9},  {20, 1, 4, 17}};
    for (const int channels : {1, 3}) {
        const Image photo = pattern(37, 21, channels, 9);
        writeImage(folder / "a.png", photo);
        for (const Line &line : lines) {
            const std::string from = std::to_string(line.x0) + "," + std::to_string(line.y0);
            const std::string to = std::to_string(line.x1) + "," + std::to_string(line.y1);
            const auto result = run("profile " + folder / "a.png" + " --from " + from + " --to " + to);
            ASSERT_EQ(result.exitCode, 0) << result.output;
            std::string want = channels == 1 ? "x,y,grey\n" : "x,y,red,green,blue\n";
            const int dx = line.x1 - line.x0, dy = line.y1 - line.y0;
            const int steps = std::max(std::abs(dx), std::abs(dy));
            for (int i = 0; i <= steps; ++i) { // halves keep to the start
                const auto along = [&](int d) {
                    const double exact = steps == 0 ? 0 : double(i) * std::abs(d) / steps;
                    return static_cast<int>(std::ceil(exact - 0.5)) * (d < 0 ? -1 : 1);
                };
                const int x = line.x0 + along(dx), y = line.y0 + along(dy);
                want += std::to_string(x) + "," + std::to_string(y);
                for (int c = 0; c < channels; ++c) {
                    want += "," + std::to_string(at(photo, x, y, c));
                }
                want += "\n";
            }
            ASSERT_EQ(result.output, want) << from << " " << to;
        }
    }
}

TEST(ProfileCommand, PlotsAndMistakes) {
    const program::Folder folder;
    writeImage(folder / "a&b.png", pattern(37, 21, 3, 9));
    const std::string call = "profile '" + folder / "a&b.png" + "' ";
    const auto result = run(call + "--from 0,5 --to 30,5 -o " + folder / "plot.svg --csv " + folder / "list.csv");
    ASSERT_EQ(result.exitCode, 0) << result.output;
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(countOf(program::readText(folder / "list.csv"), "\n"), 32u);
    const std::string plot = program::readText(folder / "plot.svg");
    EXPECT_EQ(countOf(plot, "<polyline"), 3u);
    const std::size_t points = plot.find("points=\"");
    EXPECT_EQ(countOf(plot.substr(points, plot.find("\"/>", points) - points), ","), 31u);
    EXPECT_NE(plot.find("a&amp;b.png"), std::string::npos);
    EXPECT_EQ(plot.substr(plot.size() - 7), "</svg>\n");
    ASSERT_EQ(run(call + "--from 5,5 --to 5,5 -o " + folder / "dot.svg").exitCode, 0);
    EXPECT_EQ(program::readText(folder / "dot.svg").find("nan"), std::string::npos);

    EXPECT_EQ(run(call + "--from 0,5").exitCode, 2);
    EXPECT_EQ(run(call + "--from 0,5 --to 5").exitCode, 2);
    EXPECT_EQ(run(call + "--from 0,5 --to 37,5").exitCode, 1);
    EXPECT_EQ(run(call + "--from=-1,5 --to 3,5").exitCode, 1);
    EXPECT_EQ(run(call + "--from 0,5 --to 3,5 -o " + folder / "x.png").exitCode, 1);
    EXPECT_FALSE(std::filesystem::exists(folder / "x.png"));
}

// ----------------------------------------------------------------------------------------------------- pyramid

TEST(PyramidCommand, LevelsStandBesideEachOther) {
    const program::Folder folder;
    for (const int channels : {1, 3}) {
        const Image photo = pattern(21, 13, channels, 4);
        writeImage(folder / "a.png", photo);
        const auto result = run("pyramid " + folder / "a.png" + " -o " + folder / "out.png");
        ASSERT_EQ(result.exitCode, 0) << result.output;
        EXPECT_EQ(result.output, "6 levels: 21x13 11x7 6x4 3x2 2x1 1x1\n");
        const Image out = readImage(folder / "out.png");
        ASSERT_EQ(out.width, 21 + 11 + 6 + 3 + 2 + 1 + 5 * 2);
        ASSERT_EQ(out.height, 13);
        const auto mirrored = [](int i, int n) { return i < 0 ? -i : i >= n ? 2 * n - 2 - i : i; };
        constexpr int weights[] = {1, 4, 6, 4, 1};
        for (int y = 0; y < 13; ++y) {
            for (int x = 0; x < 21; ++x) {
                for (int c = 0; c < channels; ++c) {
                    ASSERT_EQ(at(out, x, y, c), at(photo, x, y, c));
                    if (x >= 11 || y >= 7) {
                        continue;
                    }
                    int sum = 128;
                    for (int k = 0; k < 25; ++k) {
                        sum += weights[k % 5] * weights[k / 5] *
                               at(photo, mirrored(2 * x + k % 5 - 2, 21), mirrored(2 * y + k / 5 - 2, 13), c);
                    }
                    ASSERT_EQ(at(out, 23 + x, y, c), sum >> 8) << x << "," << y;
                }
            }
        }
        EXPECT_EQ(at(out, 30, 9), 32) << "nothing below a level";
    }
}

TEST(PyramidCommand, AnyRate) {
    const program::Folder folder;
    Image slope(90, 30, 3); // a slope is the same slope on every level, but for the borders
    for (int i = 0; i < 90 * 30; ++i) {
        std::fill_n(slope.pixel(i % 90, i / 90), 3, static_cast<std::uint8_t>(20 + 2 * (i % 90)));
    }
    writeImage(folder / "a.png", slope);
    for (const auto &[rate, width] : {std::pair{1.5, 60}, std::pair{3.0, 30}, std::pair{10.0, 9}}) {
        const auto result =
            run("pyramid " + folder / "a.png" + " --levels 1 -o " + folder / "out.png --rate " + std::to_string(rate));
        ASSERT_EQ(result.exitCode, 0) << result.output;
        const Image out = readImage(folder / "out.png");
        ASSERT_EQ(out.width, 90 + 2 + width);
        const int reach = static_cast<int>(std::ceil(rate)) + 1; // what the kernel mirrors at the borders
        for (int x = 0; x < width; ++x) {
            if (x * rate >= reach && x * rate + reach < 90) {
                ASSERT_NEAR(at(out, 92 + x, 1), 20 + 2 * x * rate, 2) << rate << " at " << x;
            }
        }
    }
    for (const char *options : {"--rate 1", "--rate 10.5", "--rate nan", "--levels 0"}) {
        EXPECT_EQ(run("pyramid " + folder / "a.png" + " -o " + folder / "x.png " + options).exitCode, 2) << options;
    }
    EXPECT_FALSE(std::filesystem::exists(folder / "x.png"));
}

} // namespace
