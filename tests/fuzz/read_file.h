// What the targets share that read files: the input as a file, and what a reader may do with it: return, or say in a
// Failure (or, of the command line, in a usage message) what is wrong. Any other exception is a finding, as is what the
// sanitizers see.
#pragma once

#include "image.h"
#include "options.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

namespace fuzz {

// A file that lives in memory and has a path.
class MemoryFile {
public:
    MemoryFile(const std::uint8_t *data, std::size_t size) : handle_(memfd_create("input", 0)) {
        if (handle_ < 0 || write(handle_, data, size) != static_cast<ssize_t>(size)) {
            std::abort();
        }
    }
    ~MemoryFile() { close(handle_); }
    MemoryFile(const MemoryFile &) = delete;
    MemoryFile &operator=(const MemoryFile &) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(handle_); }

private:
    int handle_;
};

template <class F> void mayFail(F &&read) {
    try {
        read();
    } catch (const tools::Failure &failure) {
        if (std::string(failure.what()).empty()) {
            std::abort();
        }
    } catch (const tools::UsageError &) {
    }
}

// Aborts unless an image is what it says.
inline void checkImage(const tools::Image &image) {
    const auto pixels = static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height);
    if (image.width < 1 || image.height < 1 || (image.channels != 1 && image.channels != 3) ||
        image.pixels.size() != pixels * static_cast<std::size_t>(image.channels)) {
        std::abort();
    }
}

// Pictures of a size that is allowed, and that takes long to no purpose here.
inline bool takesLong(long long width, long long height) {
    return width > 0 && height > 0 && width < 1 << 25 && height < 1 << 25 && width * height > 1 << 20;
}

} // namespace fuzz
