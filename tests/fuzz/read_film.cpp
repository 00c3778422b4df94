// Uncompressed films.
#include "film.h"
#include "read_file.h"

#include <algorithm>
#include <memory>

namespace {

// The largest size that a header could mean: see takesLong().
bool claimsMuch(const std::string &header) {
    long long sides[2] = {0, 0};
    for (std::size_t at = 0; at + 1 < header.size() && header[at] != '\n'; ++at) {
        if (header[at] == 'W' || header[at] == 'H') {
            long long &side = sides[header[at] == 'H'];
            side = std::max(side, std::strtoll(header.c_str() + at + 1, nullptr, 10));
        }
    }
    return fuzz::takesLong(sides[0], sides[1]);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size == 0 || claimsMuch(std::string(reinterpret_cast<const char *>(data), size))) {
        return -1;
    }
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(fmemopen(const_cast<std::uint8_t *>(data), size, "rb"),
                                                                std::fclose);
    fuzz::mayFail([&] {
        tools::Y4mReader film(file.get(), "film");
        while (film.next()) {
            fuzz::checkImage(film.grey());
            fuzz::checkImage(film.colour());
        }
    });
    return 0;
}
