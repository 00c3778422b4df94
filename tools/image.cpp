#include "image.h"

#include <png.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>

#include <jpeglib.h>

namespace tools {
namespace {

constexpr std::int64_t maxPixels = std::int64_t{1} << 28;

Image makeImage(const std::string &path, std::int64_t width, std::int64_t height, int channels) {
    if (width < 1 || height < 1 || width > 1 << 24 || height > 1 << 24 || width * height > maxPixels) {
        throw Failure(path + ": unreasonable size " + std::to_string(width) + "x" + std::to_string(height));
    }
    return {static_cast<int>(width), static_cast<int>(height), channels};
}

std::vector<std::uint8_t> readFile(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        throw Failure(path + ": cannot open: " + std::strerror(errno));
    }
    try {
        return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    } catch (const std::ios_base::failure &) { // a folder opens but does not read
        throw Failure(path + ": cannot read: " + std::strerror(errno));
    }
}

// ------------------------------------------------------------------------------------------------------- PNG

Image readPng(const std::string &path, const std::vector<std::uint8_t> &bytes) {
    png_image header;
    std::memset(&header, 0, sizeof header);
    header.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_memory(&header, bytes.data(), bytes.size()) == 0) {
        throw Failure(path + ": broken PNG: " + header.message);
    }
    const bool colour = (header.format & PNG_FORMAT_FLAG_COLOR) != 0;
    header.format = colour ? PNG_FORMAT_RGB : PNG_FORMAT_GRAY;
    // Samples of 16 bits are on the scale of those of 8, not linear in light, unless the file tells.
    header.flags |= PNG_IMAGE_FLAG_16BIT_sRGB;
    try {
        Image image = makeImage(path, header.width, header.height, colour ? 3 : 1);
        const png_color black = {0, 0, 0};
        if (png_image_finish_read(&header, &black, image.data(), image.step(), nullptr) == 0) {
            throw Failure(path + ": broken PNG: " + header.message);
        }
        return image;
    } catch (...) {
        png_image_free(&header);
        throw;
    }
}

void writePng(const std::string &path, const Image &image) {
    png_image header;
    std::memset(&header, 0, sizeof header);
    header.version = PNG_IMAGE_VERSION;
    header.width = static_cast<png_uint_32>(image.width);
    header.height = static_cast<png_uint_32>(image.height);
    header.format = image.channels == 3 ? PNG_FORMAT_RGB : PNG_FORMAT_GRAY;
    if (png_image_write_to_file(&header, path.c_str(), 0, image.data(), image.step(), nullptr) == 0) {
        throw Failure(path + ": cannot write: " + header.message);
    }
}

// The simple interface above takes samples of 16 bits as linear in light and says so in the file. These are plain
// numbers. The library reports errors by a call that must not return.
void writePng16(const std::string &path, RoiSize size, const std::vector<std::uint8_t> &bytes) {
    std::FILE *const file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) {
        throw Failure(path + ": cannot write: " + std::strerror(errno));
    }
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png != nullptr ? png_create_info_struct(png) : nullptr;
    if (info == nullptr || setjmp(png_jmpbuf(png)) != 0) {
        png_destroy_write_struct(&png, &info);
        std::fclose(file);
        throw Failure(path + ": cannot write");
    }
    png_init_io(png, file);
    png_set_IHDR(png, info, static_cast<png_uint_32>(size.width), static_cast<png_uint_32>(size.height), 16,
                 PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    const std::size_t row = 2 * static_cast<std::size_t>(size.width);
    for (std::size_t y = 0; y < static_cast<std::size_t>(size.height); ++y) {
        png_write_row(png, &bytes[y * row]);
    }
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    if (std::fclose(file) != 0) {
        throw Failure(path + ": cannot write: " + std::strerror(errno));
    }
}

// ------------------------------------------------------------------------------------------------------- JPEG

// libjpeg reports errors by a call that must not return; it jumps back to the function that called the library.
struct JpegError {
    jpeg_error_mgr manager;
    std::jmp_buf back;
    char message[JMSG_LENGTH_MAX];
};

void jpegExit(j_common_ptr info) {
    auto *error = reinterpret_cast<JpegError *>(info->err);
    info->err->format_message(info, error->message);
    std::longjmp(error->back, 1);
}

// A warning is a broken file too: libjpeg would fill a truncated picture with grey.
void jpegMessage(j_common_ptr info, int level) {
    if (level < 0) {
        jpegExit(info);
    }
}

void prepare(JpegError &error) {
    jpeg_std_error(&error.manager);
    error.manager.error_exit = jpegExit;
    error.manager.emit_message = jpegMessage;
}

// Cyan, magenta, yellow and black to red, green and blue. Files with Adobe's marker hold what the inks leave over.
void toRgb(const std::vector<std::uint8_t> &inks, bool inverted, std::uint8_t *rgb) {
    const auto left = [&](std::size_t i) { return inverted ? inks[i] : 255 - inks[i]; };
    for (std::size_t i = 0; i < inks.size(); i += 4) {
        for (std::size_t c = 0; c < 3; ++c) {
            *rgb++ = static_cast<std::uint8_t>((left(i + c) * left(i + 3) + 127) / 255);
        }
    }
}

Image readJpeg(const std::string &path, const std::vector<std::uint8_t> &bytes) {
    jpeg_decompress_struct info;
    JpegError error;
    Image image; // outlives the jump, as does a row of inks
    std::vector<std::uint8_t> inkRow;
    info.err = &error.manager;
    prepare(error);
    if (setjmp(error.back) != 0) {
        jpeg_destroy_decompress(&info);
        throw Failure(path + ": broken JPEG: " + error.message);
    }
    jpeg_create_decompress(&info);
    jpeg_mem_src(&info, bytes.data(), static_cast<unsigned long>(bytes.size()));
    jpeg_read_header(&info, TRUE);
    const bool inks = info.jpeg_color_space == JCS_CMYK || info.jpeg_color_space == JCS_YCCK;
    info.out_color_space = inks ? JCS_CMYK : info.jpeg_color_space == JCS_GRAYSCALE ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_start_decompress(&info);
    try {
        image = makeImage(path, info.output_width, info.output_height, inks ? 3 : info.output_components);
        inkRow.resize(inks ? 4 * std::size_t{info.output_width} : 0);
    } catch (...) {
        jpeg_destroy_decompress(&info);
        throw;
    }
    while (info.output_scanline < info.output_height) {
        std::uint8_t *pixels = image.pixel(0, static_cast<int>(info.output_scanline));
        JSAMPROW row = inks ? inkRow.data() : pixels;
        jpeg_read_scanlines(&info, &row, 1);
        if (inks) {
            toRgb(inkRow, info.saw_Adobe_marker != 0, pixels);
        }
    }
    jpeg_finish_decompress(&info);
    jpeg_destroy_decompress(&info);
    return image;
}

void writeJpeg(const std::string &path, const Image &image) {
    std::FILE *const file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) {
        throw Failure(path + ": cannot write: " + std::strerror(errno));
    }
    jpeg_compress_struct info;
    JpegError error;
    info.err = &error.manager;
    prepare(error);
    if (setjmp(error.back) != 0) {
        jpeg_destroy_compress(&info);
        std::fclose(file);
        throw Failure(path + ": cannot write: " + error.message);
    }
    jpeg_create_compress(&info);
    jpeg_stdio_dest(&info, file);
    info.image_width = static_cast<JDIMENSION>(image.width);
    info.image_height = static_cast<JDIMENSION>(image.height);
    info.input_components = image.channels;
    info.in_color_space = image.channels == 3 ? JCS_RGB : JCS_GRAYSCALE;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, 95, TRUE);
    jpeg_start_compress(&info, TRUE);
    while (info.next_scanline < info.image_height) {
        auto *row = const_cast<JSAMPROW>(image.pixel(0, static_cast<int>(info.next_scanline)));
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    if (std::fclose(file) != 0) {
        throw Failure(path + ": cannot write: " + std::strerror(errno));
    }
}

// -------------------------------------------------------------------------------------------------------- PNM

class PnmReader {
public:
    PnmReader(const std::string &path, const std::vector<std::uint8_t> &bytes) : path_(path), bytes_(bytes) {}

    Image read() {
        const int kind = bytes_[1] - '0'; // 1 to 6
        const bool bits = kind == 1 || kind == 4, colour = kind == 3 || kind == 6, text = kind <= 3;
        at_ = 2;
        const int width = number(), height = number();
        max_ = bits ? 1 : number();
        if (max_ < 1 || max_ > 65535) {
            throw Failure(path_ + ": broken PNM: maximum value " + std::to_string(max_));
        }
        Image image = makeImage(path_, width, height, colour ? 3 : 1);
        if (!text) {
            ++at_; // the one white-space character behind the header
        }
        if (bits && !text) {
            readBits(image);
        } else {
            for (std::uint8_t &sample : image.pixels) {
                const int value = !text ? binary() : bits ? bit() : number();
                sample = bits ? (value != 0 ? 0 : 255) // in PBM, 1 is black
                              : static_cast<std::uint8_t>((std::min(value, max_) * 255 + max_ / 2) / max_);
            }
        }
        return image;
    }

private:
    std::uint8_t next() {
        if (at_ >= bytes_.size()) {
            throw Failure(path_ + ": broken PNM: the file ends too early");
        }
        return bytes_[at_++];
    }

    void skipSpace() {
        while (at_ < bytes_.size() && (std::isspace(bytes_[at_]) != 0 || bytes_[at_] == '#')) {
            if (bytes_[at_] == '#') {
                while (at_ < bytes_.size() && bytes_[at_] != '\n') {
                    ++at_;
                }
            } else {
                ++at_;
            }
        }
    }

    int number() {
        skipSpace();
        std::uint8_t c = next();
        if (std::isdigit(c) == 0) {
            throw Failure(path_ + ": broken PNM: a number is missing");
        }
        int value = 0;
        for (;; c = next()) {
            value = value * 10 + (c - '0');
            if (value > 1 << 24) {
                throw Failure(path_ + ": broken PNM: a number is too large");
            }
            if (at_ >= bytes_.size() || std::isdigit(bytes_[at_]) == 0) {
                return value;
            }
        }
    }

    int bit() {
        skipSpace();
        const std::uint8_t c = next();
        if (c != '0' && c != '1') {
            throw Failure(path_ + ": broken PNM: neither 0 nor 1");
        }
        return c - '0';
    }

    int binary() {
        const int high = next();
        return max_ < 256 ? high : high * 256 + next();
    }

    void readBits(Image &image) {
        for (int y = 0; y < image.height; ++y) {
            std::uint8_t byte = 0;
            for (int x = 0; x < image.width; ++x) {
                byte = x % 8 == 0 ? next() : static_cast<std::uint8_t>(byte << 1);
                *image.pixel(x, y) = (byte & 0x80) != 0 ? 0 : 255;
            }
        }
    }

    const std::string &path_;
    const std::vector<std::uint8_t> &bytes_;
    std::size_t at_ = 0;
    int max_ = 255;
};

void writePnm(const std::string &path, const char *kind, RoiSize size, int largest,
              const std::vector<std::uint8_t> &bytes) {
    std::ofstream out(path, std::ios::binary);
    out << kind << '\n' << size.width << ' ' << size.height << '\n' << largest << '\n';
    out.write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    out.close();
    if (!out) {
        throw Failure(path + ": cannot write: " + std::strerror(errno));
    }
}

void writePnm(const std::string &path, const Image &image) {
    writePnm(path, image.channels == 3 ? "P6" : "P5", image.roi(), 255, image.pixels);
}

enum class Format { Png, Jpeg, Pgm, Ppm, Pnm };

Format formatOf(const std::string &path) {
    const std::size_t dot = path.rfind('.');
    std::string ending = dot == std::string::npos ? "" : path.substr(dot);
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    struct Known {
        const char *ending;
        Format format;
    };
    constexpr Known known[] = {{".png", Format::Png}, {".jpg", Format::Jpeg}, {".jpeg", Format::Jpeg},
                               {".pgm", Format::Pgm}, {".ppm", Format::Ppm},  {".pnm", Format::Pnm}};
    for (const Known &entry : known) {
        if (ending == entry.ending) {
            return entry.format;
        }
    }
    throw Failure(path + ": cannot tell the format: end the name in .png, .jpg, .pgm, .ppm or .pnm");
}

} // namespace

Image readImage(const std::string &path) {
    const std::vector<std::uint8_t> bytes = readFile(path);
    constexpr std::uint8_t pngMagic[4] = {0x89, 'P', 'N', 'G'};
    if (bytes.size() >= 4 && std::equal(std::begin(pngMagic), std::end(pngMagic), bytes.begin())) {
        return readPng(path, bytes);
    }
    if (bytes.size() >= 3 && bytes[0] == 0xff && bytes[1] == 0xd8) {
        return readJpeg(path, bytes);
    }
    if (bytes.size() >= 3 && bytes[0] == 'P' && bytes[1] >= '1' && bytes[1] <= '6') {
        return PnmReader(path, bytes).read();
    }
    throw Failure(path + ": neither PNG, JPEG nor PNM, or cut off at its beginning");
}

void writeImage(const std::string &path, const Image &image) {
    switch (formatOf(path)) {
    case Format::Png:
        writePng(path, image);
        break;
    case Format::Jpeg:
        writeJpeg(path, image);
        break;
    case Format::Pgm:
        writePnm(path, toGrey(image));
        break;
    case Format::Ppm:
        writePnm(path, toColour(image));
        break;
    case Format::Pnm:
        writePnm(path, image);
        break;
    }
}

void checkPictureName(const std::string &path) { formatOf(path); }

void writeGrey16(const std::string &path, RoiSize size, const std::vector<std::uint16_t> &samples) {
    const Format format = formatOf(path);
    std::vector<std::uint8_t> bytes; // both formats store the high byte first
    bytes.reserve(2 * samples.size());
    for (const std::uint16_t sample : samples) {
        bytes.push_back(static_cast<std::uint8_t>(sample >> 8));
        bytes.push_back(static_cast<std::uint8_t>(sample & 0xff));
    }
    if (format == Format::Png) {
        writePng16(path, size, bytes);
    } else if (format == Format::Pgm) {
        writePnm(path, "P5", size, 65535, bytes);
    } else {
        throw Failure(path + ": samples of 16 bits go to .png or .pgm");
    }
}

Image toGrey(const Image &image) {
    if (image.channels == 1) {
        return image;
    }
    Image grey(image.width, image.height, 1);
    for (std::size_t i = 0; i < grey.pixels.size(); ++i) {
        const std::uint8_t *p = &image.pixels[3 * i];
        grey.pixels[i] = static_cast<std::uint8_t>((299 * p[0] + 587 * p[1] + 114 * p[2] + 500) / 1000);
    }
    return grey;
}

Image toColour(const Image &image) {
    if (image.channels == 3) {
        return image;
    }
    Image colour(image.width, image.height, 3);
    for (std::size_t i = 0; i < image.pixels.size(); ++i) {
        std::fill_n(&colour.pixels[3 * i], 3, image.pixels[i]);
    }
    return colour;
}

void checkSameSize(const std::string &firstName, const Image &first, const std::string &secondName,
                   const Image &second) {
    if (first.width != second.width || first.height != second.height) {
        throw Failure(firstName + " is " + std::to_string(first.width) + "x" + std::to_string(first.height) + ", " +
                      secondName + " is " + std::to_string(second.width) + "x" + std::to_string(second.height) +
                      ": the images must be of one size");
    }
}

void matchShapes(const std::string &firstName, Image &first, const std::string &secondName, Image &second) {
    checkSameSize(firstName, first, secondName, second);
    if (first.channels != second.channels) {
        first = toColour(first);
        second = toColour(second);
    }
}

void check(StatusCode status, const char *function) {
    struct Name {
        StatusCode status;
        const char *name;
    };
    constexpr Name names[] = {{StatusError, "StatusError"},         {StatusBadArgument, "StatusBadArgument"},
                              {StatusBadSize, "StatusBadSize"},     {StatusNullPointer, "StatusNullPointer"},
                              {StatusNoMemory, "StatusNoMemory"},   {StatusOutOfRange, "StatusOutOfRange"},
                              {StatusBadStep, "StatusBadStep"},     {StatusBadMaskSize, "StatusBadMaskSize"},
                              {StatusBadAnchor, "StatusBadAnchor"}, {StatusStepNotMultiple, "StatusStepNotMultiple"},
                              {StatusBadBorder, "StatusBadBorder"}};
    if (status >= StatusOk) {
        return;
    }
    for (const Name &known : names) {
        if (known.status == status) {
            throw Failure(std::string(function) + " answered " + known.name);
        }
    }
    throw Failure(std::string(function) + " answered status " + std::to_string(status));
}

} // namespace tools
