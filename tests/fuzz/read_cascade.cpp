// Cascades, JSON and XML: what is accepted must be what the detector can work with.
#include "detector.h"
#include "read_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    fuzz::mayFail([&] {
        const tools::Cascade cascade = tools::readCascade(fuzz::MemoryFile(data, size).path());
        if (cascade.window.width > 64 || cascade.window.height > 64 || cascade.stumpCount() > 20) {
            return; // takes long, and is no other case
        }
        tools::Image picture(cascade.window.width + 9, cascade.window.height + 3, 1);
        for (std::size_t i = 0; i < picture.pixels.size(); ++i) {
            picture.pixels[i] = static_cast<std::uint8_t>(i * i >> 2);
        }
        tools::Detector(cascade).windows(picture);
    });
    return 0;
}
