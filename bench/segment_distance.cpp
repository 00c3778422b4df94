// Benchmarks of the distance transforms: pictures with many, few and hardly any zeros, in every order.
#include "harness.h"

#include <cstring>

namespace {

using Draw = void (*)(bench::Image<std::uint8_t> &, RoiSize);

void checkerboard(bench::Image<std::uint8_t> &image, RoiSize roi) {
    for (std::int64_t i = 0; i < image.elements; ++i) {
        image.data[i] = static_cast<std::uint8_t>((i / roi.width + i % roi.width) % 2);
    }
}
// A wall of zeros that winds inwards, eight pixels from turn to turn.
void spiral(bench::Image<std::uint8_t> &image, RoiSize roi) {
    std::memset(image.data, 1, static_cast<std::size_t>(image.elements));
    int left = 0, top = 0, right = roi.width - 1, bottom = roi.height - 1;
    for (; left < right && top < bottom; left += 8, top += 8, right -= 8, bottom -= 8) {
        for (int x = left; x <= right; ++x) {
            image.data[std::int64_t{top} * roi.width + x] = image.data[std::int64_t{bottom} * roi.width + x] = 0;
        }
        for (int y = top; y <= bottom; ++y) {
            image.data[std::int64_t{y} * roi.width + right] = 0;
            image.data[std::int64_t{y} * roi.width + left] = y > top && y < top + 8 ? 1 : 0;
        }
    }
}
template <std::uint32_t one> void noise(bench::Image<std::uint8_t> &image, RoiSize) {
    std::mt19937 rng(3);
    for (std::int64_t i = 0; i < image.elements; ++i) {
        image.data[i] = rng() % one == 0 ? 0 : 255;
    }
}
void corner(bench::Image<std::uint8_t> &image, RoiSize) {
    std::memset(image.data, 1, static_cast<std::size_t>(image.elements));
    image.data[0] = 0;
}
// The dark parts of a photograph.
void scene(bench::Image<std::uint8_t> &image, RoiSize roi) {
    const auto grey = bench::scene(roi);
    for (std::int64_t i = 0; i < image.elements; ++i) {
        image.data[i] = grey->data[i] < 60 ? 0 : 255;
    }
}

struct Content {
    const char *name;
    Draw draw;
};
constexpr Content contents[] = {
    {"tenth", noise<10>},           {"corner", corner}, {"half", noise<2>},   {"scene", scene},
    {"checkerboard", checkerboard}, {"spiral", spiral}, {"rare", noise<1000>}};

template <class T, class Run>
void add(bench::Registry &rows, const std::string &name, const Content &content, Run run) {
    rows.add(name + "_" + content.name, {1, sizeof(T)},
             [=](RoiSize roi) {
                 auto src = bench::image<std::uint8_t>(roi);
                 content.draw(*src, roi);
                 auto dst = bench::image<T>(roi);
                 auto buffer = bench::scratch(24 * (std::max(roi.width, roi.height) + 4) + 56);
                 return [=] { run(src->data, src->step, dst->data, dst->step, roi, buffer.get()); };
             },
             {{4096, 4096}});
}

template <class T, class Cost, class Transform>
void addChamfer(bench::Registry &rows, const std::string &name, Transform transform, Cost a, Cost b, Cost c,
                std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        add<T>(rows, name, contents[i], [=](auto src, auto srcStep, auto dst, auto dstStep, RoiSize roi, auto) {
            const Cost metrics[] = {a, b, c};
            transform(src, srcStep, dst, dstStep, roi, metrics);
        });
    }
}

const bench::Family family([](bench::Registry &rows) {
    using std::int32_t;
    constexpr std::size_t all = std::size(contents);
    addChamfer<std::uint8_t, int32_t>(rows, "DistanceTransform_3x3_8u_C1R", rvxiDistanceTransform_3x3_8u_C1R, 2, 3, 0,
                                      2);
    addChamfer<std::uint8_t, int32_t>(rows, "DistanceTransform_5x5_8u_C1R", rvxiDistanceTransform_5x5_8u_C1R, 5, 7, 11,
                                      2);
    addChamfer<std::uint16_t, int32_t>(rows, "DistanceTransform_3x3_8u16u_C1R", rvxiDistanceTransform_3x3_8u16u_C1R, 2,
                                       3, 0, all);
    addChamfer<std::uint16_t, int32_t>(rows, "DistanceTransform_5x5_8u16u_C1R", rvxiDistanceTransform_5x5_8u16u_C1R, 5,
                                       7, 11, 2);
    addChamfer<float, float>(rows, "DistanceTransform_3x3_8u32f_C1R", rvxiDistanceTransform_3x3_8u32f_C1R, 0.955f,
                             1.3693f, 0, all);
    addChamfer<float, float>(rows, "DistanceTransform_5x5_8u32f_C1R", rvxiDistanceTransform_5x5_8u32f_C1R, 1.0f, 1.4f,
                             2.1969f, all);
    // Costs that two passes do not settle.
    addChamfer<std::uint16_t, int32_t>(rows, "DistanceTransform_3x3_8u16u_C1R_irregular",
                                       rvxiDistanceTransform_3x3_8u16u_C1R, 7, 4, 0, 2);
    addChamfer<std::uint16_t, int32_t>(rows, "DistanceTransform_5x5_8u16u_C1R_irregular",
                                       rvxiDistanceTransform_5x5_8u16u_C1R, 40, 30, 3, 2);
    addChamfer<float, float>(rows, "DistanceTransform_5x5_8u32f_C1R_irregular", rvxiDistanceTransform_5x5_8u32f_C1R,
                             4.1f, 3.2f, 0.7f, 2);
    for (const Content &content : contents) {
        add<float>(rows, "TrueDistanceTransform_8u32f_C1R", content,
                   [](auto src, auto srcStep, auto dst, auto dstStep, RoiSize roi, auto buffer) {
                       rvxiTrueDistanceTransform_8u32f_C1R(src, srcStep, dst, dstStep, roi, buffer);
                   });
    }
});

} // namespace
