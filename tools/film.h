// The frames of a film, one after the other: pictures in files, or an uncompressed film (YUV4MPEG2) on standard input.
#pragma once

#include "image.h"
#include "options.h"

#include <cstdio>
#include <optional>

namespace tools {

// Frames of an uncompressed film with 8-bit samples. What does not keep to the format ends in a Failure.
class Y4mReader {
public:
    // Reads the header. The name is for messages.
    Y4mReader(std::FILE *file, std::string name);

    // False at the end of the film, which comes between two frames.
    bool next();
    Image grey() const;   // the luma samples as they are
    Image colour() const; // RGB; a film without colours stays grey

    int width() const { return width_; }
    int height() const { return height_; }

private:
    struct Chroma {
        int shiftX = 0, shiftY = 0; // samples per pixel, as shifts
        bool present = true, alpha = false;
    };

    bool readLine(std::string &line);
    void parseHeader(const std::string &line);
    void parseChroma(const std::string &tag);
    [[noreturn]] void fail(const std::string &what) const;

    std::FILE *file_;
    std::string name_;
    int width_ = 0, height_ = 0, frame_ = 0;
    Chroma chroma_;
    bool fullRange_ = false;
    std::size_t chromaWidth_ = 0, chromaHeight_ = 0;
    std::vector<std::uint8_t> samples_; // luma, then both chroma planes, then alpha
};

class Film {
public:
    // Names of pictures, oldest first, or "-" alone for a film on standard input; "-" among others is a usage message
    // (exit code 2). The first frame is the present one.
    explicit Film(const std::vector<std::string> &frames);

    // The next frame; false at the end. All are of the first one's size, or a Failure says which is not.
    bool next();
    // The present frame: its luma, and as it is.
    const Image &grey() const { return grey_; }
    Image picture() const { return stream_ ? stream_->colour() : picture_; }
    // Number of the present frame, from 0.
    int number() const { return number_; }

private:
    std::vector<std::string> names_;
    std::optional<Y4mReader> stream_;
    Image grey_, picture_;
    int number_ = -1;
};

void addFrames(Command &command, std::vector<std::string> &frames);

// Says on standard error how far a long film has come: on a terminal in one line that is written again, otherwise in a
// line every 100 frames.
class Progress {
public:
    explicit Progress(std::string unit) : unit_(std::move(unit)) {}
    ~Progress();
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;
    void show(int frame, std::size_t count);

private:
    std::string unit_;
    bool open_ = false;
};

} // namespace tools
