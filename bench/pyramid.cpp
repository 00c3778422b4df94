// Pyramids: fixed steps and layers, both per source pixel.
#include "harness.h"

#include <string>

namespace {

template <class T, class Step, class Query>
void addStep(bench::Registry &rows, const char *name, Step step, Query query, int channels, bool up) {
    const double bytes = static_cast<double>(sizeof(T)) * channels;
    rows.add(name, {bytes, bytes * (up ? 4 : 0.25)}, [=](RoiSize roi) {
        const RoiSize to =
            up ? RoiSize{2 * roi.width, 2 * roi.height} : RoiSize{(roi.width + 1) / 2, (roi.height + 1) / 2};
        auto src = bench::image<T>(roi, channels), dst = bench::image<T>(to, channels);
        std::int32_t size = 0;
        query(roi.width, PixelType8u, channels, &size);
        auto buffer = bench::scratch(size);
        return [=] { step(src->data, src->step, dst->data, dst->step, roi, buffer.get()); };
    });
}

template <class T, class State, class Tap, class Init, class Run, class Free>
void addLayer(bench::Registry &rows, const std::string &name, Init init, Run run, Free free, int channels, bool up,
              float rate, std::vector<Tap> kernel) {
    const double area = 1.0 / rate / rate;
    const double bytes = static_cast<double>(sizeof(T)) * channels;
    rows.add(name, {bytes, bytes * (up ? 1 / area : area)}, [=](RoiSize roi) {
        RoiSize to{}, least{};
        if (up) {
            rvxiGetPyramidUpROI(roi, &least, &to, rate);
        } else {
            rvxiGetPyramidDownROI(roi, &to, rate);
        }
        auto src = bench::image<T>(roi, channels), dst = bench::image<T>(to, channels);
        State *made = nullptr;
        init(&made, roi, rate, kernel.data(), static_cast<std::int32_t>(kernel.size()), 2);
        const std::shared_ptr<State> state(made, free);
        return [=] { run(src->data, src->step, roi, dst->data, dst->step, to, state.get()); };
    });
}

#define STEP(T, direction, suffix, channels, up)                                                                       \
    addStep<T>(rows, "Pyr" #direction "_Gauss5x5_" #suffix, rvxiPyr##direction##_Gauss5x5_##suffix,                    \
               rvxiPyr##direction##GetBufSize_Gauss5x5, channels, up)

#define LAYER(T, Tap, direction, suffix, channels, up, rate, ...)                                                      \
    addLayer<T, PyramidLayer##direction##State, Tap>(                                                                  \
        rows, "PyramidLayer" #direction "_" #suffix "/" #rate, rvxiPyramidLayer##direction##InitAlloc_##suffix,        \
        rvxiPyramidLayer##direction##_##suffix, rvxiPyramidLayer##direction##Free_##suffix, channels, up, rate,        \
        __VA_ARGS__)

#define LAYERS(T, Tap, suffix, channels)                                                                               \
    LAYER(T, Tap, Down, suffix, channels, false, 1.5f, {1, 4, 6, 4, 1});                                               \
    LAYER(T, Tap, Down, suffix, channels, false, 2.0f, {1, 4, 6, 4, 1});                                               \
    LAYER(T, Tap, Down, suffix, channels, false, 3.0f, {1, 4, 6, 4, 1});                                               \
    LAYER(T, Tap, Up, suffix, channels, true, 1.5f, {1, 4, 6, 4, 1});                                                  \
    LAYER(T, Tap, Up, suffix, channels, true, 2.0f, {1, 4, 6, 4, 1})

const bench::Family family([](bench::Registry &rows) {
    using U = std::uint8_t;
    using S = std::int8_t;
    using W = std::uint16_t;
    using I = std::int16_t;
    using F = float;
    STEP(U, Down, 8u_C1R, 1, false);
    STEP(U, Down, 8u_C3R, 3, false);
    STEP(S, Down, 8s_C1R, 1, false);
    STEP(S, Down, 8s_C3R, 3, false);
    STEP(F, Down, 32f_C1R, 1, false);
    STEP(F, Down, 32f_C3R, 3, false);
    STEP(U, Up, 8u_C1R, 1, true);
    STEP(U, Up, 8u_C3R, 3, true);
    STEP(S, Up, 8s_C1R, 1, true);
    STEP(S, Up, 8s_C3R, 3, true);
    STEP(F, Up, 32f_C1R, 1, true);
    STEP(F, Up, 32f_C3R, 3, true);
    LAYERS(U, I, 8u_C1R, 1);
    LAYERS(U, I, 8u_C3R, 3);
    LAYERS(W, I, 16u_C1R, 1);
    LAYERS(W, I, 16u_C3R, 3);
    LAYERS(F, F, 32f_C1R, 1);
    LAYERS(F, F, 32f_C3R, 3);
});

} // namespace
