// The commands on regions of a picture: distances, filling, labelling.
#include "program.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

namespace {

using program::run;
using tools::Image;
using tools::readImage;
using tools::writeImage;

Image flat(int width, int height, int channels, std::uint8_t level) {
    Image image(width, height, channels);
    std::fill(image.pixels.begin(), image.pixels.end(), level);
    return image;
}

void box(Image &image, int x, int y, int width, int height, std::uint8_t level) {
    for (int v = y; v < y + height; ++v) {
        std::fill_n(image.pixel(x, v), width * image.channels, level);
    }
}

std::size_t count(const Image &image, std::uint8_t level) {
    return static_cast<std::size_t>(std::count(image.pixels.begin(), image.pixels.end(), level));
}

// ---------------------------------------------------------------------------------------------------- distance

double distanceOf(const std::string &metric, int dx, int dy) {
    const int most = std::max(dx, dy), least = std::min(dx, dy);
    if (metric == "l2-5x5") {
        return most >= 2 * least ? 2.1969 * least + (most - 2 * least)
                                 : 2.1969 * (most - least) + 1.4 * (2 * least - most);
    }
    return metric == "exact"    ? std::hypot(dx, dy)
           : metric == "l2-3x3" ? 1.3693 * least + 0.955 * (most - least)
           : metric == "city"   ? dx + dy
                                : most;
}

TEST(DistanceCommand, MetricsAroundADarkPixel) {
    const program::Folder folder;
    Image photo = flat(41, 25, 1, 200);
    *photo.pixel(12, 9) = 30;
    writeImage(folder / "a.png", photo);
    for (const std::string metric : {"exact", "l2-5x5", "l2-3x3", "city", "chess"}) {
        const auto result = run("distance " + folder / "a.png" + " --to dark --raw --scale 100 --metric " + metric +
                                " -o " + folder / "out.pgm");
        ASSERT_EQ(result.exitCode, 0) << result.output;
        const std::string file = program::readText(folder / "out.pgm"), header = "P5\n41 25\n65535\n";
        ASSERT_EQ(file.substr(0, header.size()), header);
        ASSERT_EQ(file.size(), header.size() + 2 * photo.pixels.size());
        for (int y = 0; y < 25; ++y) {
            for (int x = 0; x < 41; ++x) {
                const std::size_t i = header.size() + 2 * static_cast<std::size_t>(41 * y + x);
                const int value = 256 * static_cast<std::uint8_t>(file[i]) + static_cast<std::uint8_t>(file[i + 1]);
                ASSERT_NEAR(value, 100 * distanceOf(metric, std::abs(x - 12), std::abs(y - 9)), 0.52) << metric;
            }
        }
    }
    ASSERT_EQ(run("distance " + folder / "a.png" + " --to dark --raw --scale 60000 -o " + folder / "out.png").exitCode,
              0);
    EXPECT_EQ(*readImage(folder / "out.png").pixel(20, 9), 255) << "numbers end at 65535";
}

TEST(DistanceCommand, ColoursFromTheEdgesOn) {
    const program::Folder folder;
    Image photo = flat(60, 50, 3, 40);
    box(photo, 20, 15, 24, 20, 200);
    writeImage(folder / "a.png", photo);
    ASSERT_EQ(run("edges " + folder / "a.png" + " -o " + folder / "edges.png").exitCode, 0);
    const auto result = run("distance " + folder / "a.png" + " -o " + folder / "out.png");
    ASSERT_EQ(result.exitCode, 0) << result.output;
    const Image edges = readImage(folder / "edges.png"), out = readImage(folder / "out.png");
    ASSERT_EQ(out.channels, 3);
    for (int y = 0; y < 50; ++y) {
        for (int x = 0; x < 60; ++x) {
            const std::uint8_t *p = out.pixel(x, y);
            ASSERT_EQ(*edges.pixel(x, y) == 255, p[0] + p[1] + p[2] == 0) << "exactly the edges are black";
        }
    }
    double distance = 0;
    int x = 0, y = 0;
    ASSERT_EQ(std::sscanf(result.output.c_str(), "farthest from an edge: %lf pixels at %d,%d", &distance, &x, &y), 3);
    EXPECT_GT(out.pixel(x, y)[0] + out.pixel(x, y)[1], 500) << "the farthest pixel is brightest";
    EXPECT_NEAR(distance, std::hypot(20, 15), 2) << "a corner of the picture";
}

TEST(DistanceCommand, ThresholdsAndMistakes) {
    const program::Folder folder;
    Image photo = flat(30, 20, 1, 200);
    box(photo, 4, 4, 3, 3, 90);
    box(photo, 20, 10, 3, 3, 150);
    writeImage(folder / "a.png", photo);
    writeImage(folder / "flat.png", flat(9, 9, 1, 80));
    const std::string call = "distance " + folder / "a.png" + " -o " + folder / "out.png ";
    for (const auto &[options, dark] : std::map<std::string, std::size_t>{{"--to dark --raw --threshold 100", 9},
                                                                          {"--to dark --raw --threshold 150", 9},
                                                                          {"--to dark --raw --threshold 151", 18},
                                                                          {"--to dark --raw", 18}}) {
        // Reading reduces to 8 bits: what is small becomes 0, so every distance is scaled beyond that.
        ASSERT_EQ(run(call + options + " --scale 1000").exitCode, 0);
        EXPECT_EQ(count(readImage(folder / "out.png"), 0), dark) << options;
    }
    std::filesystem::remove(folder / "out.png");
    for (const char *options :
         {"--metric l1", "--to light", "--threshold 9", "--to dark --threshold 300", "--scale 0"}) {
        EXPECT_EQ(run(call + options).exitCode, 2) << options;
    }
    const auto none = run("distance " + folder / "flat.png" + " -o " + folder / "out.png");
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_NE(none.output.find("no edges"), std::string::npos) << none.output;
    EXPECT_EQ(run(call + "--to dark --threshold 0").exitCode, 1) << "no dark pixels";
    EXPECT_FALSE(std::filesystem::exists(folder / "out.png"));
    EXPECT_EQ(run("distance " + folder / "a.png" + " --raw -o " + folder / "out.jpg").exitCode, 1);
    EXPECT_FALSE(std::filesystem::exists(folder / "out.jpg"));
}

// -------------------------------------------------------------------------------------------------------- fill

struct Fill {
    const program::Folder &folder;
    std::string output;
    Image image;

    explicit Fill(const program::Folder &in, const std::string &options) : folder(in) {
        const auto result = run("fill " + folder / "a.png" + " -o " + folder / "out.png " + options);
        EXPECT_EQ(result.exitCode, 0) << result.output;
        output = result.output;
        image = readImage(folder / "out.png");
    }
};

TEST(FillCommand, RangeAndNeighbours) {
    const program::Folder folder;
    for (const int channels : {1, 3}) {
        Image photo = flat(30, 20, channels, 10);
        box(photo, 5, 4, 8, 6, 100);
        box(photo, 7, 5, 3, 2, 110);
        box(photo, 13, 10, 4, 5, 95); // touches the first box by a corner
        writeImage(folder / "a.png", photo);
        const std::uint8_t value = channels == 1 ? 255 : 0; // of the second channel: white or magenta
        const auto painted = [&](const Image &image) {
            std::size_t n = 0;
            for (int i = 0; i < 30 * 20; ++i) {
                const std::uint8_t *p = image.pixel(i % 30, i / 30);
                n += p[0] == 255 && p[channels / 2] == value;
            }
            return n;
        };
        const Fill same(folder, "--seed 5,4");
        EXPECT_EQ(same.output, "area 42 pixels, rectangle 5,4 8x6\n");
        EXPECT_EQ(painted(same.image), 42u);
        EXPECT_EQ(same.image.pixel(7, 5)[0], 110);
        EXPECT_EQ(Fill(folder, "--seed 5,4 --range 0,10").output, "area 48 pixels, rectangle 5,4 8x6\n");
        EXPECT_EQ(Fill(folder, "--seed 5,4 --range 10,0").output, "area 42 pixels, rectangle 5,4 8x6\n");
        EXPECT_EQ(Fill(folder, "--seed 5,4 --range 5,10 --neighbours 8").output,
                  "area 68 pixels, rectangle 5,4 12x11\n");
        const Fill all(folder, "--seed 0,0 --range 255,255 --value 7");
        EXPECT_EQ(all.output, "area 600 pixels, rectangle 0,0 30x20\n");
        EXPECT_EQ(count(all.image, 7), all.image.pixels.size());
        EXPECT_NE(Fill(folder, "--seed 5,4 --value 100").output.find("nothing is painted"), std::string::npos);
    }
    writeImage(folder / "a.png", flat(6, 5, 1, 50));
    const Fill coloured(folder, "--seed 2,2 --value 1,2,3");
    ASSERT_EQ(coloured.image.channels, 3);
    EXPECT_EQ(coloured.image.pixel(5, 4)[2], 3);
}

// Every channel must keep to the range, against the neighbour with --gradient.
TEST(FillCommand, GradientFollowsSlopes) {
    const program::Folder folder;
    Image photo(40, 10, 3);
    for (int y = 0; y < 10; ++y) {
        for (int x = 0; x < 40; ++x) {
            photo.pixel(x, y)[0] = static_cast<std::uint8_t>(20 + 3 * x);
            photo.pixel(x, y)[1] = static_cast<std::uint8_t>(200 - 3 * x);
            photo.pixel(x, y)[2] = static_cast<std::uint8_t>(x < 30 ? 50 : 100); // ends the slope
        }
    }
    writeImage(folder / "a.png", photo);
    EXPECT_EQ(Fill(folder, "--seed 10,5 --range 3,3").output, "area 30 pixels, rectangle 9,0 3x10\n");
    EXPECT_EQ(Fill(folder, "--seed 10,5 --range 3,3 --gradient").output, "area 300 pixels, rectangle 0,0 30x10\n");
    EXPECT_EQ(Fill(folder, "--seed 10,5 --range 2,3 --gradient --neighbours 8").output,
              "area 10 pixels, rectangle 10,0 1x10\n");
    Image grey(40, 10, 1); // rises to the right: by 3 is not downhill by 3
    for (int i = 0; i < 400; ++i) {
        grey.pixels[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(20 + 3 * (i % 40));
    }
    writeImage(folder / "a.png", grey);
    EXPECT_EQ(Fill(folder, "--seed 10,5 --range 0,3 --gradient").output, "area 300 pixels, rectangle 10,0 30x10\n");
    EXPECT_EQ(Fill(folder, "--seed 10,5 --range 3,0").output, "area 20 pixels, rectangle 9,0 2x10\n");
}

TEST(FillCommand, MistakesAreRefused) {
    const program::Folder folder;
    writeImage(folder / "a.png", flat(30, 20, 1, 10));
    const std::string call = "fill " + folder / "a.png" + " -o " + folder / "out.png ";
    for (const char *options :
         {"", "--seed 5", "--seed 5,4,3", "--seed 5,x", "--seed 5,4 --range 3", "--seed 5,4 --range 3,256",
          "--seed 5,4 --neighbours 6", "--seed 5,4 --value 256", "--seed 5,4 --value 1,2", "--seed 99999999999,4"}) {
        EXPECT_EQ(run(call + options).exitCode, 2) << options;
    }
    const auto outside = run(call + "--seed 30,0");
    EXPECT_EQ(outside.exitCode, 1);
    EXPECT_NE(outside.output.find("30,0 lies outside the picture, which is 30x20"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(folder / "out.png"));
}

// ------------------------------------------------------------------------------------------------------- label

TEST(LabelCommand, PartsOfADrawnPicture) {
    const program::Folder folder;
    Image photo = flat(40, 30, 3, 20);
    box(photo, 25, 2, 6, 4, 200);
    box(photo, 3, 5, 5, 5, 210);
    box(photo, 8, 10, 2, 8, 190); // touches the part above by a corner
    *photo.pixel(35, 25) = 255;   // of luma 90: dark for Otsu's threshold
    writeImage(folder / "a.png", photo);
    const auto parts = [&](const std::string &options, const std::string &summary) {
        const auto result =
            run("label " + folder / "a.png" + " -o " + folder / "out.png --csv " + folder / "parts.csv " + options);
        EXPECT_EQ(result.exitCode, 0) << result.output;
        EXPECT_NE(result.output.find(summary), std::string::npos) << result.output;
        return program::readText(folder / "parts.csv");
    };
    const std::string head = "label,area,x,y,width,height,centroid_x,centroid_y\n";
    EXPECT_EQ(parts("", ", 2 parts"), head + "1,24,25,2,6,4,27.500,3.500\n2,41,3,5,7,13,6.366,9.537\n");
    const Image picture = readImage(folder / "out.png");
    std::set<std::string> colours;
    for (int i = 0; i < 40 * 30; ++i) {
        const std::uint8_t *p = picture.pixel(i % 40, i / 40);
        const bool bright = photo.pixel(i % 40, i / 40)[1] > 100;
        ASSERT_EQ(p[0] + p[1] + p[2] > 150, bright);
        colours.emplace(reinterpret_cast<const char *>(p), 3);
    }
    EXPECT_EQ(colours.size(), 3u) << "black and a colour for each part";
    EXPECT_EQ(parts("--neighbours 4", ", 3 parts"),
              head + "1,24,25,2,6,4,27.500,3.500\n2,25,3,5,5,5,5.000,7.000\n3,16,8,10,2,8,8.500,13.500\n");
    EXPECT_EQ(parts("--neighbours 4 --min-area 25", ", 1 parts"), head + "2,25,3,5,5,5,5.000,7.000\n");
    EXPECT_EQ(parts("--threshold 205", "threshold 205, 1 parts"), head + "1,25,3,5,5,5,5.000,7.000\n");
    EXPECT_EQ(parts("--dark", ", 1 parts").find("1,1135,0,0,40,30,"), head.size());
}

TEST(LabelCommand, MistakesAreRefused) {
    const program::Folder folder;
    writeImage(folder / "flat.png", flat(10, 10, 1, 50));
    const std::string call = "label " + folder / "flat.png";
    EXPECT_EQ(run(call).exitCode, 1) << "neither a picture nor a list";
    EXPECT_EQ(run(call + " -o " + folder / "out.png").exitCode, 1) << "nothing to separate";
    EXPECT_EQ(run(call + " --threshold 5 --csv " + folder / "no/such/folder.csv").exitCode, 1);
    EXPECT_EQ(run(call + " --threshold 257 -o " + folder / "out.png").exitCode, 2);
    EXPECT_EQ(run(call + " --neighbours 5 -o " + folder / "out.png").exitCode, 2);
    EXPECT_EQ(run(call + " --min-area 0 -o " + folder / "out.png").exitCode, 2);
    EXPECT_FALSE(std::filesystem::exists(folder / "out.png"));
}

// ----------------------------------------------------------------------------------------------------- inpaint

// A ramp of colours with a scratch and a spot of some other colour.
TEST(InpaintCommand, TakesScratchesAwayAndRefusesMistakes) {
    const program::Folder folder;
    Image ramp(80, 60, 3), mask = flat(80, 60, 1, 0);
    for (int i = 0; i < 80 * 60; ++i) {
        const std::uint8_t colour[] = {std::uint8_t(20 + 2 * (i % 80)), std::uint8_t(200 - 3 * (i / 80)), 90};
        std::copy(colour, colour + 3, ramp.pixel(i % 80, i / 80));
    }
    Image broken = ramp;
    for (Image *image : {&mask, &broken}) {
        box(*image, 10, 3, 2, 50, 255);
        box(*image, 40, 20, 12, 15, 1);
    }
    writeImage(folder / "mask.png", mask);
    for (const std::string options : {"", "--radius 3", "--method diffusion"}) {
        const bool grey = options == "--radius 3";
        const Image good = grey ? tools::toGrey(ramp) : ramp;
        writeImage(folder / "broken.png", grey ? tools::toGrey(broken) : broken);
        const auto result = run("inpaint " + folder / "broken.png" + " --mask " + folder / "mask.png" + " -o " +
                                folder / "out.png --show " + folder / "show.png " + options);
        ASSERT_EQ(result.output, "280 of 4800 pixels filled (5.8 %)\n");
        const Image out = readImage(folder / "out.png");
        for (std::size_t i = 0; i < good.pixels.size(); ++i) {
            const bool hole = mask.pixels[i / static_cast<std::size_t>(good.channels)] != 0;
            ASSERT_NEAR(out.pixels[i], good.pixels[i], hole ? 2 : 0) << i << options;
        }
        EXPECT_EQ(readImage(folder / "show.png").pixel(45, 25)[2], 255) << "magenta";
    }
    writeImage(folder / "all.png", flat(80, 60, 1, 255));
    writeImage(folder / "small.png", flat(80, 59, 1, 0));
    const std::string call = "inpaint " + folder / "broken.png" + " -o " + folder / "none.png --mask ";
    EXPECT_EQ(run(call + folder / "mask.png --radius 101").exitCode, 2);
    EXPECT_EQ(run(call + folder / "small.png").exitCode, 1);
    EXPECT_NE(run(call + folder / "all.png").output.find("nothing is left to fill the picture from"),
              std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(folder / "none.png"));
}

// ----------------------------------------------------------------------------------------------------- segment

TEST(SegmentCommand, RegionsFromStrokesAndFromMinima) {
    const program::Folder folder;
    for (const int channels : {1, 3}) {
        Image photo = flat(60, 40, channels, 90), markers = flat(60, 40, 3, 0);
        box(photo, 15, 10, 30, 20, 200);
        box(markers, 25, 18, 6, 2, 250);
        *markers.pixel(2, 2) = *markers.pixel(55, 35) = 255; // red: the same region
        writeImage(folder / "a.png", photo);
        writeImage(folder / "markers.png", markers);
        for (const std::string method : {"watershed", "gradient"}) {
            const std::string call = "segment " + folder / "a.png" + " --sigma 0.5 -o " + folder / "out.png --method ";
            const auto drawn = run(call + method + " --markers " + folder / "markers.png");
            ASSERT_EQ(drawn.output, "2 regions\n");
            Image out = readImage(folder / "out.png");
            EXPECT_EQ(out.pixel(30, 20)[1], 200) << "inside, the picture";
            const int left = *out.pixel(14, 20), right = *out.pixel(15, 20);
            EXPECT_TRUE(left == 255 && right == 250) << "strokes' colours at the edge, " << left << " " << right;
            // Minima give the same two parts.
            ASSERT_EQ(run(call + method + " --show means").output, "2 regions\n");
            out = readImage(folder / "out.png");
            EXPECT_EQ(out.channels, channels);
            EXPECT_NEAR(*out.pixel(30, 20), 200, 8);
            EXPECT_NEAR(*out.pixel(5, 20), 90, 4);
        }
    }
}

TEST(SegmentCommand, MistakesAreRefused) {
    const program::Folder folder;
    writeImage(folder / "a.png", program::pattern(90, 60, 3));
    writeImage(folder / "black.png", flat(90, 60, 1, 0));
    writeImage(folder / "small.png", flat(9, 6, 1, 7));
    const std::string call = "segment " + folder / "a.png" + " -o " + folder / "out.png ";
    for (const char *options : {"--method random", "--neighbours 5", "--sigma 0", "--show all"}) {
        EXPECT_EQ(run(call + options).exitCode, 2) << options;
    }
    for (const char *markers : {"black.png", "small.png", "none.png"}) {
        EXPECT_EQ(run(call + "--markers " + folder / markers).exitCode, 1) << markers;
    }
    EXPECT_FALSE(std::filesystem::exists(folder / "out.png"));
}

} // namespace
