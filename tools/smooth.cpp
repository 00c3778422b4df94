#include "smooth.h"

#include <cmath>

namespace tools {

Image smoothed(const Image &image, float sigma, int size) {
    if (size == 0) {
        size = 2 * static_cast<int>(std::ceil(3 * sigma)) + 1;
    }
    std::int32_t specBytes = 0, bufferBytes = 0;
    check(rvxiFilterGaussianGetBufferSize(image.roi(), size, PixelType8u, image.channels, &specBytes, &bufferBytes),
          "FilterGaussianGetBufferSize");
    std::vector<std::uint8_t> specMemory(static_cast<std::size_t>(specBytes));
    std::vector<std::uint8_t> buffer(static_cast<std::size_t>(bufferBytes));
    auto *spec = reinterpret_cast<GaussianSpec *>(specMemory.data());
    check(rvxiFilterGaussianInit(image.roi(), size, BorderReplicate, PixelType8u, image.channels, spec, buffer.data(),
                                 sigma),
          "FilterGaussianInit");
    Image result(image.width, image.height, image.channels);
    const std::uint8_t border[3] = {}; // replicated borders do not look at it
    check(image.channels == 3
              ? rvxiFilterGaussianBorder_8u_C3R(image.data(), image.step(), result.data(), result.step(), image.roi(),
                                                border, spec, buffer.data())
              : rvxiFilterGaussianBorder_8u_C1R(image.data(), image.step(), result.data(), result.step(), image.roi(),
                                                border[0], spec, buffer.data()),
          "FilterGaussianBorder");
    return result;
}

} // namespace tools
