#include "pyramid.h"

#include <cmath>

namespace tools {
namespace {

// Half the size, with the fixed kernel 1 4 6 4 1.
void halve(const Image &source, Image &result) {
    std::int32_t bytes = 0;
    check(rvxiPyrDownGetBufSize_Gauss5x5(source.width, PixelType8u, source.channels, &bytes), "PyrDownGetBufSize");
    std::vector<std::uint8_t> buffer(static_cast<std::size_t>(bytes));
    check((source.channels == 3 ? rvxiPyrDown_Gauss5x5_8u_C3R : rvxiPyrDown_Gauss5x5_8u_C1R)(
              source.data(), source.step(), result.data(), result.step(), source.roi(), buffer.data()),
          "PyrDown_Gauss5x5");
}

// A Gaussian that leaves what the smaller picture can hold: sigma 1 at rate 2.
std::vector<std::int16_t> kernelFor(float rate) {
    const int reach = std::max(2, static_cast<int>(std::ceil(rate)));
    std::vector<std::int16_t> taps;
    for (int i = -reach; i <= reach; ++i) {
        const double x = i / (0.5 * static_cast<double>(rate));
        taps.push_back(static_cast<std::int16_t>(std::lround(1024 * std::exp(-x * x / 2))));
    }
    return taps;
}

// The given size, at any rate.
void reduce(const Image &source, Image &result, float rate) {
    const std::vector<std::int16_t> kernel = kernelFor(rate);
    const auto taps = static_cast<std::int32_t>(kernel.size());
    const bool colour = source.channels == 3;
    PyramidLayerDownState *state = nullptr;
    check((colour ? rvxiPyramidLayerDownInitAlloc_8u_C3R
                  : rvxiPyramidLayerDownInitAlloc_8u_C1R)(&state, source.roi(), rate, kernel.data(), taps, 2),
          "PyramidLayerDownInitAlloc");
    const StatusCode status = (colour ? rvxiPyramidLayerDown_8u_C3R : rvxiPyramidLayerDown_8u_C1R)(
        source.data(), source.step(), source.roi(), result.data(), result.step(), result.roi(), state);
    (colour ? rvxiPyramidLayerDownFree_8u_C3R : rvxiPyramidLayerDownFree_8u_C1R)(state);
    check(status, "PyramidLayerDown");
}

} // namespace

Pyramid::Pyramid(Image image, float rate, int levels) {
    PyramidRecord *record = nullptr;
    check(rvxiPyramidInitAlloc(&record, levels, image.roi(), rate), "PyramidInitAlloc");
    record_.reset(record);
    const int channels = image.channels;
    levels_.push_back(std::move(image));
    for (std::int32_t i = 0; i <= record->levelCount; ++i) {
        if (i > 0) {
            const RoiSize size = record->roiSizes[i];
            Image next(size.width, size.height, channels);
            if (rate == 2.0f) {
                halve(levels_.back(), next);
            } else {
                reduce(levels_.back(), next, rate);
            }
            levels_.push_back(std::move(next));
        }
        record->images[i] = levels_.back().data(); // stays where it is when the vector grows
        record->steps[i] = levels_.back().step();
    }
}

} // namespace tools
