// 8-bit images of the command-line program, and their files: PNG, JPEG and PNM.
#pragma once

#include "rvxcv.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace tools {

// Anything that the user can mend: a missing or broken file, images of unequal size. The message names the file.
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Rows without gaps, one (grey) or three (RGB) interleaved channels.
struct Image {
    int width = 0, height = 0, channels = 1;
    std::vector<std::uint8_t> pixels;

    Image() = default;
    Image(int w, int h, int c)
        : width(w), height(h), channels(c),
          pixels(static_cast<std::size_t>(w) * static_cast<std::size_t>(h) * static_cast<std::size_t>(c)) {}

    RoiSize roi() const { return {width, height}; }
    std::int32_t step() const { return width * channels; }
    const std::uint8_t *data() const { return pixels.data(); }
    std::uint8_t *data() { return pixels.data(); }
    std::uint8_t *pixel(int x, int y) {
        return pixels.data() +
               (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)) *
                   static_cast<std::size_t>(channels);
    }
    const std::uint8_t *pixel(int x, int y) const { return const_cast<Image *>(this)->pixel(x, y); }
};

// Reads by content: PNG, JPEG or PNM (P1 to P6). Grey files give one channel, all others three; what is transparent
// stands on black, 16-bit samples are reduced to 8.
Image readImage(const std::string &path);

// Writes by ending: .png, .jpg/.jpeg, .pgm (grey), .ppm (RGB), .pnm.
void writeImage(const std::string &path, const Image &image);

// Throws a Failure unless the name has one of these endings: what takes long can find out before.
void checkPictureName(const std::string &path);

// Grey samples of 16 bits as they are, to .png or .pgm. Rows without gaps.
void writeGrey16(const std::string &path, RoiSize size, const std::vector<std::uint16_t> &samples);

// Luma of a colour image (ITU-R BT.601), or the image itself.
Image toGrey(const Image &image);
Image toColour(const Image &image);

// Throws a Failure that names both unless they are of one size.
void checkSameSize(const std::string &firstName, const Image &first, const std::string &secondName,
                   const Image &second);
// The same, and where one is grey and the other is not, both become colour.
void matchShapes(const std::string &firstName, Image &first, const std::string &secondName, Image &second);

// Throws a Failure that names the library's status unless it is StatusOk.
void check(StatusCode status, const char *function);

} // namespace tools
