// Benchmarks of FAST corners. At the threshold of 20, with radius 3 and arc 9, 0.75 % of the scene are corners, 0.36 %
// after suppression.
#include "harness.h"

#include <cstring>

namespace {

std::shared_ptr<FastNSpec> fastSpec(std::int32_t radius, std::int32_t arc, std::int32_t threshold, std::int32_t flags) {
    auto spec = std::make_shared<FastNSpec>();
    rvxiFastNInit_8u_C1R(radius, arc, threshold, flags, spec.get());
    return spec;
}

void addFast(bench::Registry &rows, const char *name, std::int32_t radius, std::int32_t arc, std::int32_t threshold,
             std::int32_t flags) {
    rows.add(name, 2, [=](RoiSize roi) {
        auto src = bench::scene(roi), dst = bench::image<std::uint8_t>(roi);
        auto spec = fastSpec(radius, arc, threshold, flags);
        std::int32_t size = 0;
        rvxiFastNGetBufferSize_8u_C1R(roi, &size);
        auto buffer = bench::scratch(size);
        return [=] {
            std::int32_t count = 0;
            rvxiFastN_8u_C1R(src->data, src->step, dst->data, dst->step, roi, &count, spec.get(), buffer.get());
        };
    });
}

void addList(bench::Registry &rows, const char *name, std::uint32_t oneIn) {
    rows.add(name, {1, 0}, [=](RoiSize roi) {
        auto map = bench::image<std::uint8_t>(roi);
        std::mt19937 rng(3);
        for (std::int64_t i = 0; i < map->elements; ++i) {
            map->data[i] = rng() % oneIn == 0 ? 77 : 0;
        }
        auto corners = bench::image<std::int32_t>(roi, 3);
        return [=] {
            std::int32_t count = 0;
            rvxiFastN2DToVec_8u_C1R(map->data, map->step, roi, reinterpret_cast<FastCorner *>(corners->data),
                                    roi.width * roi.height, &count);
        };
    });
}

const bench::Family family([](bench::Registry &rows) {
    addFast(rows, "FastN_8u_C1R_radius3_arc9_suppressed", 3, 9, 20, FastScore | FastNonMax);
    addFast(rows, "FastN_8u_C1R_radius3_arc9_scores", 3, 9, 20, FastScore);
    addFast(rows, "FastN_8u_C1R_radius3_arc9", 3, 9, 20, 0);
    addFast(rows, "FastN_8u_C1R_radius3_arc12_suppressed", 3, 12, 20, FastScore | FastNonMax);
    addFast(rows, "FastN_8u_C1R_radius2_arc7_suppressed", 2, 7, 20, FastScore | FastNonMax);
    addFast(rows, "FastN_8u_C1R_radius1_arc5_suppressed", 1, 5, 20, FastScore | FastNonMax);
    addFast(rows, "FastN_8u_C1R_radius3_arc9_everywhere", 3, 9, 0, FastScore | FastNonMax);
    addList(rows, "FastN2DToVec_8u_C1R", 100);
    addList(rows, "FastN2DToVec_8u_C1R_dense", 4);
});

} // namespace
