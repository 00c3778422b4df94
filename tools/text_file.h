// A text file as a result: lists and plots. What is not kept, because something failed on the way, is removed again.
#pragma once

#include <cstdio>
#include <string>

namespace tools {

class TextFile {
public:
    // "-" is standard output. Throws a Failure when the file cannot be written.
    explicit TextFile(const std::string &path);
    ~TextFile();
    TextFile(const TextFile &) = delete;
    TextFile &operator=(const TextFile &) = delete;

    // printf's formats. They are independent of the locale, which the program never sets.
    [[gnu::format(printf, 2, 3)]] void print(const char *format, ...);
    // Everything is written: throws a Failure when it is not on disk.
    void keep();

private:
    std::string path_;
    std::FILE *file_;
};

} // namespace tools
