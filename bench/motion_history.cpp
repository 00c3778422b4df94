// Benchmarks of the motion history, with a silhouette that moves in one pixel of four at random, and of sampled lines:
// one line per row of the image, together as many pixels as the image has, so that ns/px is the time of a line's pixel.
#include "harness.h"

#include <algorithm>

namespace {

template <class T, class F> void addHistory(bench::Registry &rows, const char *name, F function) {
    rows.add(name, bench::Traffic::update(sizeof(T), 4), [=](RoiSize roi) {
        auto silhouette = bench::image<T>(roi);
        auto history = bench::image<float>(roi, 1, 2);
        std::for_each_n(silhouette->data, silhouette->elements, [](T &s) { s = s < T{64} ? s : T{0}; });
        return [=] { function(silhouette->data, silhouette->step, history->data, history->step, roi, 255.0f, 100.0f); };
    });
}

// Lines from the left edge to the right one, each with another slope.
template <class T, class F> void addLines(bench::Registry &rows, const char *name, F function, int channels) {
    rows.add(name, 2.0 * sizeof(T) * channels, [=](RoiSize roi) {
        auto src = bench::image<T>(roi, channels);
        auto line = bench::image<T>({roi.width, 1}, channels);
        return [=] {
            for (std::int32_t y = 0; y < roi.height; ++y) {
                const auto end = static_cast<std::int32_t>(std::int64_t{y} * 7919 % roi.height);
                function(src->data, src->step, roi, line->data, {0, y}, {roi.width - 1, end});
            }
        };
    });
}

const bench::Family family([](bench::Registry &rows) {
    addHistory<std::uint8_t>(rows, "UpdateMotionHistory_8u32f_C1IR", rvxiUpdateMotionHistory_8u32f_C1IR);
    addHistory<std::uint16_t>(rows, "UpdateMotionHistory_16u32f_C1IR", rvxiUpdateMotionHistory_16u32f_C1IR);
    addHistory<float>(rows, "UpdateMotionHistory_32f_C1IR", rvxiUpdateMotionHistory_32f_C1IR);
    addLines<std::uint8_t>(rows, "SampleLine_8u_C1R", rvxiSampleLine_8u_C1R, 1);
    addLines<std::uint8_t>(rows, "SampleLine_8u_C3R", rvxiSampleLine_8u_C3R, 3);
    addLines<std::uint16_t>(rows, "SampleLine_16u_C1R", rvxiSampleLine_16u_C1R, 1);
    addLines<std::uint16_t>(rows, "SampleLine_16u_C3R", rvxiSampleLine_16u_C3R, 3);
    addLines<float>(rows, "SampleLine_32f_C1R", rvxiSampleLine_32f_C1R, 1);
    addLines<float>(rows, "SampleLine_32f_C3R", rvxiSampleLine_32f_C3R, 3);
});

} // namespace
