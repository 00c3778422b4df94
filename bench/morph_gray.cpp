// Benchmarks of erosion and dilation by structuring functions.
#include "harness.h"

#include <cmath>
#include <limits>

namespace {

// A ball that fills its square: as many positions as the square has, or only those on the ball.
template <class Value, class Init, class Sizes, class Filter>
void add(bench::Registry &rows, const char *name, int side, bool whole, Sizes sizes, Init init, Filter filter) {
    using T = std::conditional_t<std::is_same_v<Value, float>, float, std::uint8_t>;
    rows.add(name, 2.0 * sizeof(T), [=](RoiSize roi) {
        auto src = bench::image<T>(roi), dst = bench::image<T>(roi);
        const int radius = side / 2;
        const double ball = (whole ? 1.5 : 1.0) * radius;
        std::vector<Value> values;
        for (int i = 0; i < side * side; ++i) {
            const int x = i % side - radius, y = i / side - radius;
            const double square = ball * ball - x * x - y * y;
            const Value outside = std::is_same_v<Value, float> ? -std::numeric_limits<Value>::infinity()
                                                               : std::numeric_limits<Value>::min();
            values.push_back(square < 0 ? outside : static_cast<Value>(8 * (std::sqrt(square) - ball)));
        }
        std::int32_t specSize = 0, bufferSize = 0;
        sizes(roi.width, {side, side}, &specSize, &bufferSize);
        auto spec = bench::scratch(specSize), buffer = bench::scratch(bufferSize);
        auto *record = reinterpret_cast<GrayMorphSpec *>(spec.get());
        init(roi.width, values.data(), {side, side}, record);
        return [=] {
            filter(src->data, src->step, dst->data, dst->step, roi, BorderReplicate, T{},
                   reinterpret_cast<const GrayMorphSpec *>(spec.get()), buffer.get());
        };
    });
}

const bench::Family family([](bench::Registry &rows) {
    const auto add8u = [&](const char *name, int side, bool whole, auto filter) {
        add<std::int32_t>(rows, name, side, whole, rvxiGrayMorphologyGetSize_8u_C1R, rvxiGrayMorphologyInit_8u_C1R,
                          filter);
    };
    const auto add32f = [&](const char *name, int side, bool whole, auto filter) {
        add<float>(rows, name, side, whole, rvxiGrayMorphologyGetSize_32f_C1R, rvxiGrayMorphologyInit_32f_C1R, filter);
    };
    add8u("GrayErode_8u_C1R/5x5", 5, true, rvxiGrayErodeBorder_8u_C1R);
    add8u("GrayDilate_8u_C1R/5x5", 5, true, rvxiGrayDilateBorder_8u_C1R);
    add8u("GrayDilate_8u_C1R/ball21", 21, false, rvxiGrayDilateBorder_8u_C1R);
    add32f("GrayErode_32f_C1R/5x5", 5, true, rvxiGrayErodeBorder_32f_C1R);
    add32f("GrayDilate_32f_C1R/5x5", 5, true, rvxiGrayDilateBorder_32f_C1R);
    add32f("GrayDilate_32f_C1R/ball21", 21, false, rvxiGrayDilateBorder_32f_C1R);
});

} // namespace
