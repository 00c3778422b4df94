// Pictures: PNG, JPEG and PNM, which are masks and markers too.
#include "read_file.h"

#include <algorithm>
#include <cstdio>

namespace {

// The size that a file claims to have, as far as it is worth passing over: see takesLong().
bool claimsMuch(const std::uint8_t *data, std::size_t size) {
    const auto big = [&](std::size_t at, int bytes) {
        long long value = 0;
        for (int i = 0; i < bytes; ++i) {
            value = value << 8 | data[at + static_cast<std::size_t>(i)];
        }
        return value;
    };
    if (size >= 24 && data[0] == 0x89) {
        return fuzz::takesLong(big(16, 4), big(20, 4));
    }
    if (size > 2 && data[0] == 'P') {
        long long width = 0, height = 0;
        const std::string text(reinterpret_cast<const char *>(data + 2), std::min<std::size_t>(size - 2, 64));
        return std::sscanf(text.c_str(), "%lld %lld", &width, &height) == 2 && fuzz::takesLong(width, height);
    }
    for (std::size_t at = 0; at + 9 < size; ++at) { // a frame header of a JPEG
        if (data[at] == 0xff && data[at + 1] >= 0xc0 && data[at + 1] <= 0xcf &&
            fuzz::takesLong(big(at + 7, 2), big(at + 5, 2))) {
            return true;
        }
    }
    return false;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (claimsMuch(data, size)) {
        return -1;
    }
    fuzz::mayFail([&] {
        const tools::Image image = tools::readImage(fuzz::MemoryFile(data, size).path());
        fuzz::checkImage(image);
        fuzz::checkImage(tools::toGrey(image));
        fuzz::checkImage(tools::toColour(image));
    });
    return 0;
}
