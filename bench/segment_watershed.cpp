// Benchmarks of watershed and gradient segmentation of a scene, from seeds 40 pixels apart. Both work in place: every
// row includes a copy of the markers.
#include "harness.h"

#include <algorithm>
#include <string>

namespace {

// The largest less the smallest value of 3x3 pixels; of 16 bits, with the pixel's lower bits behind it.
template <class T> bench::ImagePointer<T> relief(RoiSize roi) {
    const auto picture = bench::scene(roi);
    auto result = std::make_shared<bench::Image<T>>(roi, 1);
    for (int y = 0; y < roi.height; ++y) {
        for (int x = 0; x < roi.width; ++x) {
            int least = 255, most = 0;
            for (int v = std::max(y - 1, 0); v <= std::min(y + 1, roi.height - 1); ++v) {
                for (int u = std::max(x - 1, 0); u <= std::min(x + 1, roi.width - 1); ++u) {
                    const int value = picture->data[std::int64_t{v} * roi.width + u];
                    least = std::min(least, value);
                    most = std::max(most, value);
                }
            }
            const std::int64_t i = std::int64_t{y} * roi.width + x;
            result->data[i] =
                static_cast<T>(sizeof(T) == 1 ? most - least : (most - least) * 256 + picture->data[i] % 64);
        }
    }
    return result;
}

bench::ImagePointer<std::uint8_t> colours(RoiSize roi) {
    const auto picture = bench::scene(roi);
    auto result = std::make_shared<bench::Image<std::uint8_t>>(roi, 3);
    for (std::int64_t i = 0; i < result->elements; ++i) {
        const int value = picture->data[i / 3];
        result->data[i] = static_cast<std::uint8_t>(i % 3 == 0 ? value : i % 3 == 1 ? 255 - value / 2 : value / 3 + 40);
    }
    return result;
}

bench::ImagePointer<std::int32_t> seeds(RoiSize roi) {
    auto result = std::make_shared<bench::Image<std::int32_t>>(roi, 1);
    std::int32_t label = 0;
    for (int y = 0; y < roi.height; ++y) {
        for (int x = 0; x < roi.width; ++x) {
            result->data[std::int64_t{y} * roi.width + x] = x % 40 == 20 && y % 40 == 20 ? ++label : 0;
        }
    }
    return result;
}

template <class Source, class Call>
void add(bench::Registry &rows, const std::string &name, double bytes, Source source, Call call) {
    const struct {
        const char *suffix;
        NormKind norm;
        std::int32_t flags;
    } modes[] = {{"_4", NormL1, SegmentNoLines},
                 {"_8", NormInf, SegmentNoLines},
                 {"_4_lines", NormL1, SegmentLines},
                 {"_8_lines", NormInf, SegmentLines}};
    for (const auto &mode : modes) {
        rows.add(name + mode.suffix, bench::Traffic::update(bytes, 4), [=](RoiSize roi) {
            const auto src = source(roi);
            const auto markers = seeds(roi), labels = seeds(roi);
            const auto buffer = bench::scratch(17 * (std::int64_t{roi.width} + 2) * (roi.height + 2) + 540672);
            return [=] {
                std::copy(markers->data, markers->data + markers->elements, labels->data);
                call(src->data, src->step, labels->data, labels->step, roi, mode.norm, mode.flags, buffer.get());
            };
        });
    }
}

const bench::Family family([](bench::Registry &rows) {
    add(rows, "SegmentWatershed_8u32s_C1IR", 1, relief<std::uint8_t>, rvxiSegmentWatershed_8u32s_C1IR);
    add(rows, "SegmentWatershed_16u32s_C1IR", 2, relief<std::uint16_t>, rvxiSegmentWatershed_16u32s_C1IR);
    add(rows, "SegmentGradient_8u32s_C1IR", 1, bench::scene, rvxiSegmentGradient_8u32s_C1IR);
    add(rows, "SegmentGradient_8u32s_C3C1IR", 3, colours, rvxiSegmentGradient_8u32s_C3C1IR);
});

} // namespace
