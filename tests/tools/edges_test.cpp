// The edges command: what it writes is Canny's result on the picture, and it finds sensible thresholds itself.
#include "program.h"

#include <algorithm>

namespace {

using program::run;
using tools::Image;

// A bright disc on a dark slope, with a little noise.
Image disc() {
    Image image(96, 80, 1);
    unsigned noise = 1;
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            noise = noise * 1664525u + 1013904223u;
            const bool inside = (x - 48) * (x - 48) + (y - 40) * (y - 40) < 25 * 25;
            *image.pixel(x, y) = static_cast<std::uint8_t>((inside ? 180 : 40) + x / 8 + static_cast<int>(noise >> 30));
        }
    }
    return image;
}

std::vector<std::uint8_t> canny(const Image &image, std::int32_t filter, MaskCode mask, std::int32_t norm, float low,
                                float high) {
    std::int32_t bytes = 0;
    EXPECT_EQ(rvxiCannyBorderGetSize(image.roi(), filter, mask, PixelType8u, &bytes), StatusOk);
    std::vector<std::uint8_t> buffer(static_cast<std::size_t>(bytes)), result(image.pixels.size());
    EXPECT_EQ(rvxiCannyBorder_8u_C1R(image.data(), image.step(), result.data(), image.step(), image.roi(), filter, mask,
                                     BorderReplicate, 0, norm, buffer.data(), low, high),
              StatusOk);
    return result;
}

TEST(Edges, OptionsReachTheLibrary) {
    const program::Folder folder;
    const Image photo = disc();
    tools::writeImage(folder / "photo.png", photo);
    const auto edges = [&](const std::string &options) {
        const auto result = run("edges " + folder / "photo.png" + " -o " + folder / "out.png" + " " + options);
        EXPECT_EQ(result.exitCode, 0) << result.output;
        return tools::readImage(folder / "out.png").pixels;
    };
    EXPECT_EQ(edges("--low 5 --high 12"), canny(photo, CannyFilterSobel, Mask3x3, CannyNormL2, 5, 12));
    EXPECT_EQ(edges("--high 10"), canny(photo, CannyFilterSobel, Mask3x3, CannyNormL2, 4, 10));
    EXPECT_EQ(edges("--low 4"), canny(photo, CannyFilterSobel, Mask3x3, CannyNormL2, 4, 10));
    EXPECT_EQ(edges("--low 5 --high 12 --norm l1"), canny(photo, CannyFilterSobel, Mask3x3, CannyNormL1, 5, 12));
    EXPECT_EQ(edges("--low 60 --high 90 --aperture 5"), canny(photo, CannyFilterSobel, Mask5x5, CannyNormL2, 60, 90));
    EXPECT_EQ(edges("--low 25 --high 50 --filter scharr"),
              canny(photo, CannyFilterScharr, Mask3x3, CannyNormL2, 25, 50));
}

// With every filter and norm: a ring around the disc and nothing else. A flat picture has no edges.
TEST(Edges, ThresholdsComeFromThePicture) {
    const program::Folder folder;
    tools::writeImage(folder / "photo.png", disc());
    for (const std::string options :
         {"", "--norm l1", "--aperture 5", "--filter scharr", "--filter scharr --norm l1"}) {
        ASSERT_EQ(run("edges " + folder / "photo.png" + " -o " + folder / "out.png " + options).exitCode, 0);
        const Image out = tools::readImage(folder / "out.png");
        for (int y = 0; y < out.height; ++y) {
            for (int x = 0; x < out.width; ++x) {
                const int r2 = (x - 48) * (x - 48) + (y - 40) * (y - 40);
                ASSERT_TRUE(*out.pixel(x, y) == 0 || (r2 > 22 * 22 && r2 < 28 * 28)) << options << " " << x << "," << y;
            }
        }
        EXPECT_GT(std::count(out.pixels.begin(), out.pixels.end(), 255), 100) << options;
    }
    tools::writeImage(folder / "flat.png", Image(20, 10, 3));
    ASSERT_EQ(run("edges " + folder / "flat.png" + " -o " + folder / "out.png").exitCode, 0);
    EXPECT_EQ(tools::readImage(folder / "out.png").pixels, std::vector<std::uint8_t>(200));
}

// Of grey in three channels every one is the strongest. A red disc on a green ground of equal luma shows in no grey.
TEST(Edges, ColoursHaveEdgesOfTheirOwn) {
    const program::Folder folder;
    const Image grey = disc();
    Image red(grey.width, grey.height, 3);
    for (std::size_t i = 0; i < grey.pixels.size(); ++i) {
        const bool inside = grey.pixels[i] > 110;
        const std::uint8_t colour[3] = {static_cast<std::uint8_t>(inside ? 200 : 20),
                                        static_cast<std::uint8_t>(inside ? 20 : 112), 60};
        std::copy_n(colour, 3, red.pixels.begin() + static_cast<std::ptrdiff_t>(3 * i));
    }
    tools::writeImage(folder / "grey.png", grey);
    tools::writeImage(folder / "red.png", red);
    const auto edges = [&](const std::string &options) {
        const auto result = run("edges -o " + folder / "out.png " + folder / options);
        EXPECT_EQ(result.exitCode, 0) << result.output;
        return tools::readImage(folder / "out.png").pixels;
    };
    EXPECT_EQ(edges("grey.png --colour --low 9 --high 25"), canny(grey, CannyFilterSobel, Mask3x3, CannyNormL1, 9, 25));
    EXPECT_EQ(edges("red.png --high 100"), std::vector<std::uint8_t>(grey.pixels.size()));
    const auto marked = edges("red.png --high 100 --colour");
    EXPECT_GT(std::count(marked.begin(), marked.end(), 255), 100);
}

TEST(Edges, MistakesAreRefused) {
    const program::Folder folder;
    tools::writeImage(folder / "photo.png", disc());
    const std::string call = "edges " + folder / "photo.png" + " -o " + folder / "out.png ";
    for (const char *options : {"--aperture 7", "--aperture 5 --filter scharr", "--norm l3", "--filter prewitt",
                                "--low -1", "--low 5 --high 4", "--colour --norm l2"}) {
        EXPECT_EQ(run(call + options).exitCode, 2) << options;
        EXPECT_FALSE(std::filesystem::exists(folder / "out.png")) << options;
    }
    EXPECT_EQ(run("edges " + folder / "photo.png").exitCode, 2) << "no output";
    EXPECT_EQ(run("edges " + folder / "none.png" + " -o " + folder / "out.png").exitCode, 1);
}

} // namespace
