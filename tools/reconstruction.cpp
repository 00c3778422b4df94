#include "reconstruction.h"

#include <algorithm>

namespace tools {
namespace {

using Reconstruct = StatusCode (*)(const std::uint8_t *, std::int32_t, std::uint8_t *, std::int32_t, RoiSize, NormKind,
                                   std::uint8_t *);

// Each channel's marker grows inside the channel; the pixels of `marker` and of the result are combined.
template <class Marker, class Combine>
Image eachChannel(const Image &image, Reconstruct reconstruct, const char *name, NormKind norm, const Marker &marker,
                  const Combine &combine) {
    Image result(image.width, image.height, image.channels), limit(image.width, image.height, 1), grown = limit;
    std::int32_t bytes = 0;
    check(rvxiMorphReconstructGetBufferSize_8u_C1R(image.roi(), &bytes), "MorphReconstructGetBufferSize");
    std::vector<std::uint8_t> buffer(static_cast<std::size_t>(bytes));
    for (int channel = 0; channel < image.channels; ++channel) {
        for (int y = 0; y < image.height; ++y) {
            for (int x = 0; x < image.width; ++x) {
                const bool frame = x == 0 || y == 0 || x == image.width - 1 || y == image.height - 1;
                *limit.pixel(x, y) = image.pixel(x, y)[channel];
                *grown.pixel(x, y) = static_cast<std::uint8_t>(marker(*limit.pixel(x, y), frame));
            }
        }
        check(reconstruct(limit.data(), limit.step(), grown.data(), grown.step(), image.roi(), norm, buffer.data()),
              name);
        for (int y = 0; y < image.height; ++y) {
            for (int x = 0; x < image.width; ++x) {
                result.pixel(x, y)[channel] =
                    static_cast<std::uint8_t>(combine(*limit.pixel(x, y), *grown.pixel(x, y)));
            }
        }
    }
    return result;
}

} // namespace

Image fillHoles(const Image &image) {
    return eachChannel(
        image, rvxiMorphReconstructErode_8u_C1IR, "MorphReconstructErode", NormL1,
        [](int value, bool frame) { return frame ? value : 255; }, [](int, int grown) { return grown; });
}

Image clearBorder(const Image &image) {
    return eachChannel(
        image, rvxiMorphReconstructDilate_8u_C1IR, "MorphReconstructDilate", NormInf,
        [](int value, bool frame) { return frame ? value : 0; }, [](int value, int grown) { return value - grown; });
}

Image domes(const Image &image, int height) {
    return eachChannel(
        image, rvxiMorphReconstructDilate_8u_C1IR, "MorphReconstructDilate", NormInf,
        [=](int value, bool) { return std::max(value - height, 0); },
        [=](int value, int grown) { return (value - grown) * 255 / height; });
}

} // namespace tools
