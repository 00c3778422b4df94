// Gaussian filters.
#include "harness.h"

namespace {

template <class T> constexpr PixelTypeCode typeOf = 0;
template <> constexpr PixelTypeCode typeOf<std::uint8_t> = PixelType8u;
template <> constexpr PixelTypeCode typeOf<std::uint16_t> = PixelType16u;
template <> constexpr PixelTypeCode typeOf<std::int16_t> = PixelType16s;
template <> constexpr PixelTypeCode typeOf<float> = PixelType32f;

template <class T, class F>
void add(bench::Registry &rows, const char *name, F function, int channels, std::int32_t taps) {
    const std::string row = name + std::string("/taps:") + std::to_string(taps);
    rows.add(row, 2 * sizeof(T) * static_cast<std::size_t>(channels), [=](RoiSize roi) {
        auto src = bench::image<T>(roi, channels);
        auto dst = bench::image<T>(roi, channels);
        std::int32_t specBytes = 0, bufferBytes = 0;
        rvxiFilterGaussianGetBufferSize(roi, taps, typeOf<T>, channels, &specBytes, &bufferBytes);
        auto record = bench::scratch(specBytes);
        auto buffer = bench::scratch(bufferBytes);
        auto *spec = reinterpret_cast<GaussianSpec *>(record.get());
        const float sigma = static_cast<float>(taps) / 5;
        rvxiFilterGaussianInit(roi, taps, BorderReplicate, typeOf<T>, channels, spec, buffer.get(), sigma);
        return [=, keep = record] {
            if constexpr (std::is_invocable_v<F, const T *, std::int32_t, T *, std::int32_t, RoiSize, T, GaussianSpec *,
                                              std::uint8_t *>) {
                function(src->data, src->step, dst->data, dst->step, roi, T{}, spec, buffer.get());
            } else {
                function(src->data, src->step, dst->data, dst->step, roi, nullptr, spec, buffer.get());
            }
        };
    });
}

#define ROW(T, suffix, channels)                                                                                       \
    for (const std::int32_t taps : {3, 5, 7, 15, 31}) {                                                                \
        add<T>(rows, "FilterGaussianBorder_" #suffix, rvxiFilterGaussianBorder_##suffix, channels, taps);              \
    }

const bench::Family family([](bench::Registry &rows) {
    ROW(std::uint8_t, 8u_C1R, 1)
    ROW(std::uint8_t, 8u_C3R, 3)
    ROW(std::uint16_t, 16u_C1R, 1)
    ROW(std::uint16_t, 16u_C3R, 3)
    ROW(std::int16_t, 16s_C1R, 1)
    ROW(std::int16_t, 16s_C3R, 3)
    ROW(float, 32f_C1R, 1)
    ROW(float, 32f_C3R, 3)
});

} // namespace
