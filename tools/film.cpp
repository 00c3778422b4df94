#include "film.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>

namespace tools {

// --------------------------------------------------------------------------------------------------- YUV4MPEG2

namespace {

constexpr int largestSide = 1 << 15;
constexpr std::int64_t mostPixels = std::int64_t{1} << 28; // as of pictures: a header alone must not take all memory

std::uint8_t level(double value) { return static_cast<std::uint8_t>(std::clamp(std::lround(value), 0L, 255L)); }

} // namespace

Y4mReader::Y4mReader(std::FILE *file, std::string name) : file_(file), name_(std::move(name)) {
    std::string line;
    if (!readLine(line) || line.rfind("YUV4MPEG2", 0) != 0) {
        fail("not an uncompressed film (YUV4MPEG2); ffmpeg -i FILM -pix_fmt yuv420p -f yuv4mpegpipe - writes one");
    }
    parseHeader(line.substr(9));
    const auto width = static_cast<std::size_t>(width_), height = static_cast<std::size_t>(height_);
    const std::size_t luma = width * height;
    if (chroma_.present) {
        chromaWidth_ = (width + (std::size_t{1} << chroma_.shiftX) - 1) >> chroma_.shiftX;
        chromaHeight_ = (height + (std::size_t{1} << chroma_.shiftY) - 1) >> chroma_.shiftY;
    }
    samples_.resize(luma + 2 * chromaWidth_ * chromaHeight_ + (chroma_.alpha ? luma : 0));
}

void Y4mReader::fail(const std::string &what) const { throw Failure(name_ + ": " + what); }

// Up to the end of the line; false at the end of the stream.
bool Y4mReader::readLine(std::string &line) {
    constexpr std::size_t longest = 4096;
    line.clear();
    for (int c; (c = std::fgetc(file_)) != EOF;) {
        if (c == '\n') {
            return true;
        }
        line.push_back(static_cast<char>(c));
        if (line.size() > longest) {
            fail("broken film: a line does not end");
        }
    }
    if (std::ferror(file_) != 0) {
        fail("cannot read: " + std::string(std::strerror(errno)));
    }
    if (!line.empty()) {
        fail("broken film: it ends in the middle of a line");
    }
    return false;
}

// A letter and a value each, with spaces between them.
void Y4mReader::parseHeader(const std::string &line) {
    std::string chroma = "420jpeg";
    std::size_t at = 0;
    while ((at = line.find_first_not_of(' ', at)) != std::string::npos) {
        const std::size_t end = std::min(line.find(' ', at), line.size());
        const std::string value = line.substr(at + 1, end - at - 1);
        if (line[at] == 'W' || line[at] == 'H') {
            int &side = line[at] == 'W' ? width_ : height_;
            const auto [rest, error] = std::from_chars(value.data(), value.data() + value.size(), side);
            if (error != std::errc() || rest != value.data() + value.size() || side < 1 || side > largestSide) {
                fail("broken film: unreasonable size " + line.substr(at, end - at));
            }
        } else if (line[at] == 'C') {
            chroma = value;
        } else if (line[at] == 'X' && value == "COLORRANGE=FULL") {
            fullRange_ = true;
        }
        at = end;
    }
    if (width_ == 0 || height_ == 0) {
        fail("broken film: its header has no size");
    }
    if (std::int64_t{width_} * height_ > mostPixels) {
        fail("broken film: unreasonable size " + std::to_string(width_) + "x" + std::to_string(height_));
    }
    parseChroma(chroma);
}

void Y4mReader::parseChroma(const std::string &tag) {
    if (tag == "420" || tag == "420jpeg" || tag == "420mpeg2" || tag == "420paldv") {
        chroma_ = {1, 1};
    } else if (tag == "411") {
        chroma_ = {2, 0};
    } else if (tag == "422") {
        chroma_ = {1, 0};
    } else if (tag == "444" || tag == "444alpha") {
        chroma_ = {0, 0, true, tag == "444alpha"};
    } else if (tag == "mono") {
        chroma_ = {0, 0, false};
    } else {
        fail("films of the kind C" + tag +
             " are not supported, only those with 8-bit samples; ffmpeg converts: " + "-pix_fmt yuv420p");
    }
}

bool Y4mReader::next() {
    std::string line;
    if (!readLine(line)) {
        return false;
    }
    if (line != "FRAME" && line.rfind("FRAME ", 0) != 0) {
        fail("broken film: no frame begins behind frame " + std::to_string(frame_));
    }
    ++frame_;
    if (std::fread(samples_.data(), 1, samples_.size(), file_) != samples_.size()) {
        fail("broken film: it ends inside frame " + std::to_string(frame_));
    }
    return true;
}

Image Y4mReader::grey() const {
    Image image(width_, height_, 1);
    std::copy_n(samples_.begin(), image.pixels.size(), image.pixels.begin());
    return image;
}

// ITU-R BT.601. Limited range, as films have it, unless the header says otherwise.
Image Y4mReader::colour() const {
    if (!chroma_.present) {
        return grey();
    }
    Image image(width_, height_, 3);
    const std::size_t luma = static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_);
    const std::size_t plane = chromaWidth_ * chromaHeight_;
    const double zero = fullRange_ ? 0 : 16, gain = fullRange_ ? 1 : 255.0 / 219, gainC = fullRange_ ? 1 : 255.0 / 224;
    std::size_t i = 0;
    for (int y = 0; y < height_; ++y) {
        const std::uint8_t *row = &samples_[luma + static_cast<std::size_t>(y >> chroma_.shiftY) * chromaWidth_];
        for (int x = 0; x < width_; ++x, ++i) {
            const std::uint8_t *at = row + (x >> chroma_.shiftX);
            const double v = (samples_[i] - zero) * gain, u = (at[0] - 128) * gainC, w = (at[plane] - 128) * gainC;
            image.pixels[3 * i] = level(v + 1.402 * w);
            image.pixels[3 * i + 1] = level(v - 0.344136 * u - 0.714136 * w);
            image.pixels[3 * i + 2] = level(v + 1.772 * u);
        }
    }
    return image;
}

// -------------------------------------------------------------------------------------------------------- Film

Film::Film(const std::vector<std::string> &frames) : names_(frames) {
    if (frames.size() == 1 && frames.front() == "-") {
        stream_.emplace(stdin, "standard input");
    } else if (std::count(frames.begin(), frames.end(), "-") != 0) {
        throw UsageError("FRAMES", "- is a whole film and stands alone");
    }
    if (!next()) {
        throw Failure("standard input: the film has no frames");
    }
}

bool Film::next() {
    if (stream_) {
        if (!stream_->next()) {
            return false;
        }
        ++number_;
        grey_ = stream_->grey();
        return true;
    }
    if (number_ + 1 == static_cast<int>(names_.size())) {
        return false;
    }
    ++number_;
    const std::string &name = names_[static_cast<std::size_t>(number_)];
    Image frame = readImage(name);
    if (number_ > 0 && (frame.width != picture_.width || frame.height != picture_.height)) {
        throw Failure(name + " is " + std::to_string(frame.width) + "x" + std::to_string(frame.height) + ", " +
                      names_.front() + " is " + std::to_string(picture_.width) + "x" + std::to_string(picture_.height) +
                      ": the frames must be of one size");
    }
    picture_ = std::move(frame);
    grey_ = toGrey(picture_);
    return true;
}

void addFrames(Command &command, std::vector<std::string> &frames) {
    command
        .option("FRAMES", frames,
                "Pictures of one size, oldest first, or - for an uncompressed film (YUV4MPEG2) on standard input")
        .required();
}

// ---------------------------------------------------------------------------------------------------- Progress

void Progress::show(int frame, std::size_t count) {
    const bool terminal = isatty(STDERR_FILENO) != 0;
    if (frame == 0 || frame % (terminal ? 10 : 100) != 0) {
        return;
    }
    std::fprintf(stderr, "%sframe %d: %zu %s%s", terminal ? "\r" : "", frame, count, unit_.c_str(),
                 terminal ? "   " : "\n");
    open_ = terminal;
}

Progress::~Progress() {
    if (open_) {
        std::fputc('\n', stderr);
    }
}

} // namespace tools
