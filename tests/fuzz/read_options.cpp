// What stands in an option as text: points, numbers, sizes, levels. The first byte chooses.
#include "parse.h"
#include "read_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size == 0) {
        return -1;
    }
    const std::string text(reinterpret_cast<const char *>(data + 1), size - 1);
    fuzz::mayFail([&] {
        switch (data[0] % 4) {
        case 0:
            tools::checkInside("--at", tools::parsePoint("--at", text), tools::Image(20, 10, 1));
            break;
        case 1:
            tools::parseNumbers("--at", text);
            break;
        case 2:
            if (const RoiSize s = tools::parseSize("--size", text, 500);
                s.width < 1 || s.height < 1 || s.width > 500 || s.height > 500) {
                std::abort();
            }
            break;
        default:
            if (const std::size_t n = tools::parseLevels("--value", text).size(); n != 1 && n != 3) {
                std::abort();
            }
        }
    });
    return 0;
}
