// Image files: what is written reads back; what is broken ends in a message, never in a crash.
#include "program.h"

#include <jpeglib.h>

namespace {

using namespace tools;
using program::pattern;

TEST(ImageFiles, LosslessFormatsReadBack) {
    const program::Folder folder;
    for (const int channels : {1, 3}) {
        for (const char *name : {"a.png", "a.pnm", "b.PNG"}) {
            const Image image = pattern(37, 11, channels);
            writeImage(folder / name, image);
            const Image back = readImage(folder / name);
            EXPECT_EQ(back.channels, channels);
            EXPECT_EQ(back.width, 37);
            EXPECT_EQ(back.pixels, image.pixels) << name;
        }
    }
}

TEST(ImageFiles, JpegKeepsThePicture) {
    const program::Folder folder;
    Image smooth(64, 48, 3);
    for (int y = 0; y < 48; ++y) {
        for (int x = 0; x < 64; ++x) {
            smooth.pixel(x, y)[0] = static_cast<std::uint8_t>(3 * x);
            smooth.pixel(x, y)[1] = static_cast<std::uint8_t>(4 * y);
            smooth.pixel(x, y)[2] = 90;
        }
    }
    writeImage(folder / "a.jpg", smooth);
    const Image back = readImage(folder / "a.jpg");
    ASSERT_EQ(back.pixels.size(), smooth.pixels.size());
    for (std::size_t i = 0; i < back.pixels.size(); ++i) {
        ASSERT_NEAR(back.pixels[i], smooth.pixels[i], 12);
    }
}

TEST(ImageFiles, TextAndBitFormats) {
    const program::Folder folder;
    program::writeText(folder / "a.pbm", "P1\n# a comment\n3 2\n1 0 1\n0 1 0\n");
    EXPECT_EQ(readImage(folder / "a.pbm").pixels, (std::vector<std::uint8_t>{0, 255, 0, 255, 0, 255}));
    program::writeText(folder / "b.pbm", std::string("P4\n10 1\n") + '\xa0' + '\x40');
    EXPECT_EQ(readImage(folder / "b.pbm").pixels,
              (std::vector<std::uint8_t>{0, 255, 0, 255, 255, 255, 255, 255, 255, 0}));
    program::writeText(folder / "c.pgm", "P2 2 1 15 0 15");
    EXPECT_EQ(readImage(folder / "c.pgm").pixels, (std::vector<std::uint8_t>{0, 255}));
    program::writeText(folder / "d.pgm", std::string("P5 1 1 65535\n") + '\x80' + '\x00');
    EXPECT_EQ(readImage(folder / "d.pgm").pixels, (std::vector<std::uint8_t>{128}));
}

// A grey PNG of 16 bits: 0x4000, 0x8000 and 0xffff, without a gamma.
TEST(ImageFiles, SixteenBitPngKeepsItsScale) {
    const program::Folder folder;
    const unsigned char file[] = {
        0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a, 0x00, 0x00, 0x00, 0x0d, 0x49, 0x48, 0x44, 0x52, 0x00, 0x00,
        0x00, 0x03, 0x00, 0x00, 0x00, 0x01, 0x10, 0x00, 0x00, 0x00, 0x00, 0x6e, 0x1b, 0x97, 0x2b, 0x00, 0x00, 0x00,
        0x0f, 0x49, 0x44, 0x41, 0x54, 0x78, 0x9c, 0x63, 0x70, 0x60, 0x68, 0x60, 0xf8, 0xff, 0x1f, 0x00, 0x06, 0x84,
        0x02, 0xbf, 0x87, 0x7c, 0xd0, 0xc2, 0x00, 0x00, 0x00, 0x00, 0x49, 0x45, 0x4e, 0x44, 0xae, 0x42, 0x60, 0x82};
    program::writeText(folder / "a.png", std::string(std::begin(file), std::end(file)));
    EXPECT_EQ(readImage(folder / "a.png").pixels, (std::vector<std::uint8_t>{64, 128, 255}));
}

// Four inks: of files with Adobe's marker what they leave over, else how much of each.
TEST(ImageFiles, JpegsOfFourInksBecomeRgb) {
    const program::Folder folder;
    const auto written = [&](J_COLOR_SPACE space, bool adobe, std::array<JSAMPLE, 4> inks) {
        std::FILE *file = std::fopen((folder / "inks.jpg").c_str(), "wb");
        jpeg_compress_struct info;
        jpeg_error_mgr error;
        info.err = jpeg_std_error(&error);
        jpeg_create_compress(&info);
        jpeg_stdio_dest(&info, file);
        info.image_width = info.image_height = 1;
        info.input_components = 4;
        info.in_color_space = JCS_CMYK;
        jpeg_set_defaults(&info);
        jpeg_set_colorspace(&info, space);
        info.write_Adobe_marker = adobe;
        jpeg_set_quality(&info, 100, TRUE);
        jpeg_start_compress(&info, TRUE);
        JSAMPROW row = inks.data();
        jpeg_write_scanlines(&info, &row, 1);
        jpeg_finish_compress(&info);
        jpeg_destroy_compress(&info);
        std::fclose(file);
        return readImage(folder / "inks.jpg").pixels;
    };
    const auto expectNear = [](const std::vector<std::uint8_t> &pixel, int r, int g, int b) {
        ASSERT_EQ(pixel.size(), 3u);
        EXPECT_TRUE(std::abs(pixel[0] - r) <= 2 && std::abs(pixel[1] - g) <= 2 && std::abs(pixel[2] - b) <= 2)
            << +pixel[0] << " " << +pixel[1] << " " << +pixel[2];
    };
    expectNear(written(JCS_CMYK, false, {255, 51, 0, 102}), 0, 122, 153);
    expectNear(written(JCS_CMYK, true, {0, 204, 255, 153}), 0, 122, 153);
    expectNear(written(JCS_YCCK, true, {0, 204, 255, 153}), 0, 122, 153);
}

TEST(ImageFiles, SixteenBitSamplesAreWrittenAsTheyAre) {
    const program::Folder folder;
    const std::vector<std::uint16_t> samples{0, 1, 255, 256, 40000, 65535};
    writeGrey16(folder / "a.pgm", {3, 2}, samples);
    writeGrey16(folder / "a.png", {3, 2}, samples);
    const char high[] = {0, 0, 0, 1, 0, '\xff', 1, 0, '\x9c', '\x40', '\xff', '\xff'};
    EXPECT_EQ(program::readText(folder / "a.pgm"), "P5\n3 2\n65535\n" + std::string(high, sizeof high));
    EXPECT_EQ(program::readText(folder / "a.png")[24], 16) << "bits of a sample";
    EXPECT_EQ(readImage(folder / "a.png").pixels, (std::vector<std::uint8_t>{0, 0, 1, 1, 156, 255}));
    EXPECT_THROW(writeGrey16(folder / "a.jpg", {3, 2}, samples), Failure);
    EXPECT_THROW(writeGrey16(folder / "no/such/folder.png", {3, 2}, samples), Failure);
}

// Every file cut off at any length is refused with a message that names it.
TEST(ImageFiles, TruncatedFilesAreRefused) {
    const program::Folder folder;
    for (const char *name : {"a.png", "a.jpg", "a.ppm", "a.pgm"}) {
        writeImage(folder / name, pattern(23, 17, 3));
        const std::string whole = program::readText(folder / name);
        ASSERT_GT(whole.size(), 100u);
        for (std::size_t length = 0; length + 2 < whole.size(); length += 1 + length / 7) {
            const std::string cut = folder / "cut";
            program::writeText(cut, whole.substr(0, length));
            try {
                readImage(cut);
                ADD_FAILURE() << name << " cut to " << length << " of " << whole.size() << " bytes was read";
            } catch (const Failure &failure) {
                EXPECT_NE(std::string(failure.what()).find(cut), std::string::npos);
            }
        }
    }
}

TEST(ImageFiles, NonsenseIsRefused) {
    const program::Folder folder;
    for (const char *text : {"P5 0 5 255\n", "P5 99999999 99999999 255\n", "P5 4 4 0\n0000", "P2 2 2 255 1 x 3 4",
                             "P1 2 1 0 x", "P9 1 1 255\n0", "hello", ""}) {
        program::writeText(folder / "x", text);
        EXPECT_THROW(readImage(folder / "x"), Failure) << text;
    }
    EXPECT_THROW(readImage(folder / "missing.png"), Failure);
    EXPECT_THROW(readImage(folder / ""), Failure) << "a folder";
    EXPECT_THROW(writeImage(folder / "no-ending", pattern(2, 2, 1)), Failure);
    EXPECT_THROW(writeImage(folder / "no/such/folder.png", pattern(2, 2, 1)), Failure);
}

} // namespace
