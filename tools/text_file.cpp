#include "text_file.h"

#include "image.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <utility>

namespace tools {

TextFile::TextFile(const std::string &path) : path_(path), file_(path == "-" ? stdout : std::fopen(path.c_str(), "w")) {
    if (file_ == nullptr) {
        throw Failure(path + ": cannot write: " + std::strerror(errno));
    }
}

TextFile::~TextFile() {
    if (file_ != nullptr && file_ != stdout) {
        std::fclose(file_);
        std::error_code ignored;
        if (std::filesystem::symlink_status(path_, ignored).type() == std::filesystem::file_type::regular) {
            std::filesystem::remove(path_, ignored); // never a device such as /dev/stdout
        }
    }
}

void TextFile::print(const char *format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::vfprintf(file_, format, arguments);
    va_end(arguments);
}

void TextFile::keep() {
    bool failed = std::fflush(file_) != 0 || std::ferror(file_) != 0;
    if (!failed && file_ != stdout) {
        failed = std::fclose(std::exchange(file_, nullptr)) != 0;
    }
    if (failed) {
        throw Failure(path_ + ": cannot write: " + std::strerror(errno));
    }
}

} // namespace tools
