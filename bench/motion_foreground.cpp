// Benchmarks of the background models, learning: a noisy still scene through which something and its shadow move,
// a tenth of the picture.
#include "harness.h"

#include <algorithm>
#include <vector>

namespace {

using Frames = std::vector<bench::ImagePointer<std::uint8_t>>;

Frames film(RoiSize roi, int channels) {
    const auto still = bench::scene(roi);
    std::mt19937 rng(7);
    Frames frames;
    for (int n = 0; n < 8; ++n) {
        auto frame = std::make_shared<bench::Image<std::uint8_t>>(roi, channels);
        const int side = std::max(1, roi.height / 5), left = n * roi.width / 9, top = n % 4 * side;
        for (std::int64_t i = 0; i < frame->elements; ++i) {
            const std::int64_t pixel = i / channels, x = pixel % roi.width - left, y = pixel / roi.width - top;
            const int colour = static_cast<int>(i % channels) * 20, noise = static_cast<int>(rng() % 5) - 2;
            const int value = std::clamp(still->data[pixel] - colour, 2, 253) + noise;
            const bool inside = x >= 0 && x < 2 * side && y >= 0;
            frame->data[i] = static_cast<std::uint8_t>(inside && y < side       ? 255 - value
                                                       : inside && y < 2 * side ? value * 7 / 10
                                                                                : value);
        }
        frames.push_back(std::move(frame));
    }
    return frames;
}

// The bytes per pixel that learning reads and writes in place.
template <class Params, class GetSize, class Init, class Decide>
void add(bench::Registry &rows, const char *name, int channels, const Params &params, double modelBytes,
         GetSize getSize, Init init, Decide decide, float rate = 0.01f) {
    bench::Traffic traffic(channels, 1);
    traffic.updated = rate > 0 ? modelBytes : 0;
    traffic.read += rate > 0 ? 0 : modelBytes;
    rows.add(name, traffic, [=](RoiSize roi) {
        const Frames frames = film(roi, channels);
        auto map = bench::image<std::uint8_t>(roi);
        std::int32_t size = 0;
        getSize(roi, channels, &params, &size);
        auto memory = bench::scratch(size);
        const auto state = [=] {
            if constexpr (std::is_same_v<Params, FGMMParams>) {
                return reinterpret_cast<FGMMState *>(memory.get());
            } else if constexpr (std::is_same_v<Params, ForegroundGaussianParams>) {
                return reinterpret_cast<ForegroundGaussianState *>(memory.get());
            } else {
                return reinterpret_cast<ForegroundHistogramState *>(memory.get());
            }
        };
        init(roi, channels, &params, state());
        const auto step = [=](std::size_t n, float r) {
            const auto &frame = frames[n % frames.size()];
            decide(frame->data, frame->step, map->data, map->step, roi, r, state());
        };
        for (std::size_t n = 0; n < 40; ++n) {
            step(n, std::max(1 / static_cast<float>(n + 1), 0.01f));
        }
        return [=, n = std::size_t{0}]() mutable { step(n++, rate); };
    });
}

constexpr ForegroundGaussianParams gaussian{3, 225, 16, 1125, 0.1f, 0};
constexpr FGMMParams mixture{3, 4, 225, 16, 1125, 1, 0.5f, 0.9f, 0};
constexpr ForegroundHistogramParams histogram{8, 6, 10, 0.8f};

const bench::Family family([](bench::Registry &rows) {
    add(rows, "ForegroundGaussian_8u_C1R", 1, gaussian, 8, rvxiForegroundGaussianGetSize_8u,
        rvxiForegroundGaussianInit_8u, rvxiForegroundGaussian_8u_C1R);
    add(rows, "ForegroundGaussian_8u_C3R", 3, gaussian, 16, rvxiForegroundGaussianGetSize_8u,
        rvxiForegroundGaussianInit_8u, rvxiForegroundGaussian_8u_C3R);
    add(rows, "FGMM_8u_C1R", 1, mixture, 36, rvxiFGMMGetSize_8u, rvxiFGMMInit_8u, rvxiFGMM_8u_C1R);
    add(rows, "FGMM_8u_C3R", 3, mixture, 60, rvxiFGMMGetSize_8u, rvxiFGMMInit_8u, rvxiFGMM_8u_C3R);
    add(rows, "FGMM_8u_C1R/decide", 1, mixture, 36, rvxiFGMMGetSize_8u, rvxiFGMMInit_8u, rvxiFGMM_8u_C1R, 0);
    add(rows, "ForegroundHistogram_8u_C1R", 1, histogram, 40, rvxiForegroundHistogramGetSize_8u,
        rvxiForegroundHistogramInit_8u, rvxiForegroundHistogram_8u_C1R);
    add(rows, "ForegroundHistogram_8u_C3R", 3, histogram, 56, rvxiForegroundHistogramGetSize_8u,
        rvxiForegroundHistogramInit_8u, rvxiForegroundHistogram_8u_C3R);
});

} // namespace
