// Films on standard input: every kind of samples is read, what does not keep to the format ends in a message.
#include "program.h"

namespace {

using program::run;
using tools::Image;

// The planes of a frame, filled with a value each.
std::string frame(std::size_t luma, std::size_t chroma, int y, int u = 128, int v = 128) {
    return "FRAME\n" + std::string(luma, static_cast<char>(y)) + std::string(chroma, static_cast<char>(u)) +
           std::string(chroma, static_cast<char>(v));
}

std::string average(const program::Folder &folder, const std::string &options = "") {
    return "average " + options + " - -o " + folder / "out.png" + " < " + folder / "film.y4m";
}

// Odd sizes: chroma planes round up. A plane of the wrong size would shift the second frame's beginning.
TEST(Film, EveryKindOfSamplesIsRead) {
    struct Kind {
        const char *tag;
        std::size_t chroma, alpha;
    };
    const Kind kinds[] = {{"", 6, 0},           {" C420", 6, 0},      {" C420jpeg", 6, 0},
                          {" C420mpeg2", 6, 0}, {" C420paldv", 6, 0}, {" C411 XYSCSS=411", 6, 0},
                          {" C422", 9, 0},      {" C444", 15, 0},     {" C444alpha", 15, 15},
                          {" Cmono", 0, 0}};
    for (const Kind &kind : kinds) {
        const program::Folder folder;
        const std::string alpha(kind.alpha, '\x55');
        program::writeText(folder / "film.y4m", "YUV4MPEG2 W5 H3 F25:1 Ip A1:1" + std::string(kind.tag) + "\n" +
                                                    frame(15, kind.chroma, 16) + alpha + frame(15, kind.chroma, 235) +
                                                    alpha);
        const auto result = run(average(folder, "--alpha 1"));
        ASSERT_EQ(result.exitCode, 0) << kind.tag << result.output;
        const Image last = tools::readImage(folder / "out.png");
        ASSERT_EQ(last.width, 5);
        ASSERT_EQ(last.height, 3);
        const std::uint8_t white = kind.chroma == 0 ? 235 : 255; // without colours the samples are the grey levels
        EXPECT_EQ(last.pixels, std::vector<std::uint8_t>(last.pixels.size(), white)) << kind.tag;
    }
}

TEST(Film, ColoursAndRange) {
    const program::Folder folder;
    struct Case {
        std::string header;
        int y, u, v;
        int r, g, b;
    };
    const Case cases[] = {{"C444", 81, 90, 240, 255, 0, 0}, // the primaries in limited range
                          {"C444", 145, 54, 34, 0, 255, 0},
                          {"C444", 41, 240, 110, 0, 0, 255},
                          {"C444 XCOLORRANGE=FULL", 76, 85, 255, 254, 0, 0},
                          {"C444 XCOLORRANGE=FULL", 16, 128, 128, 16, 16, 16}};
    for (const Case &c : cases) {
        program::writeText(folder / "film.y4m", "YUV4MPEG2 W2 H2 " + c.header + "\n" + frame(4, 4, c.y, c.u, c.v));
        ASSERT_EQ(run(average(folder)).exitCode, 0);
        const Image image = tools::readImage(folder / "out.png");
        const int want[3] = {c.r, c.g, c.b};
        for (int channel = 0; channel < 3; ++channel) {
            EXPECT_NEAR(image.pixel(1, 1)[channel], want[channel], 1) << c.header << " " << c.y;
        }
    }
}

TEST(Film, BrokenFilmsAreRefused) {
    const program::Folder folder;
    const std::string header = "YUV4MPEG2 W4 H2 F25:1 C420jpeg\n", good = frame(8, 2, 100);
    struct Case {
        std::string film, message;
    };
    const Case cases[] = {
        {"", "not an uncompressed film"},
        {"RIFF....AVI \n", "not an uncompressed film"},
        {std::string(5000, 'x'), "a line does not end"},
        {"YUV4MPEG2 W4 H", "in the middle of a line"},
        {"YUV4MPEG2 H2\n" + good, "no size"},
        {"YUV4MPEG2 W0 H2\n" + good, "unreasonable size W0"},
        {"YUV4MPEG2 W4 H2x\n" + good, "unreasonable size H2x"},
        {"YUV4MPEG2 W99999999999 H2\n" + good, "unreasonable size"},
        {"YUV4MPEG2 W32768 H32768\n" + good, "unreasonable size 32768x32768"},
        {"YUV4MPEG2 W4 H2 C420p10\n" + good, "C420p10"},
        {"YUV4MPEG2 W4 H2 Cmono16\n" + good, "8-bit"},
        {header, "no frames"},
        {header + good + "FRA", "in the middle of a line"},
        {header + good + "FRAMES\n" + good, "behind frame 1"},
        {header + good + good.substr(0, good.size() - 1), "inside frame 2"},
    };
    for (const Case &c : cases) {
        program::writeText(folder / "film.y4m", c.film);
        const auto result = run(average(folder));
        EXPECT_EQ(result.exitCode, 1) << c.film.substr(0, 40);
        EXPECT_NE(result.output.find("standard input: "), std::string::npos) << result.output;
        EXPECT_NE(result.output.find(c.message), std::string::npos) << result.output;
        EXPECT_FALSE(std::filesystem::exists(folder / "out.png"));
    }
    program::writeText(folder / "film.y4m", header + good);
    EXPECT_EQ(run("average a.png - -o " + folder / "out.png" + " < " + folder / "film.y4m").exitCode, 2)
        << "a film stands alone";
}

} // namespace
