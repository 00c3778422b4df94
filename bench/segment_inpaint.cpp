// Benchmarks of the fast march and of inpainting. A row's time is a part for the whole image and a part for each pixel
// that is reached, so the names tell how many of these there are: scratches are 2 % of the picture, a spot is 10 %.
#include "harness.h"

#include <cmath>
#include <cstring>

namespace {

using Draw = void (*)(bench::Image<std::uint8_t> &, RoiSize);

// Slanted lines, three pixels wide.
void scratches(bench::Image<std::uint8_t> &image, RoiSize roi) {
    for (std::int64_t i = 0; i < image.elements; ++i) {
        image.data[i] = (i % roi.width + i / roi.width / 3) % 150 < 3 ? 255 : 0;
    }
}
void spot(bench::Image<std::uint8_t> &image, RoiSize roi) {
    const double radius = std::sqrt(0.1 / 3.14159 * roi.width * roi.height);
    for (std::int64_t i = 0; i < image.elements; ++i) {
        const double dx = static_cast<double>(i % roi.width) - roi.width / 2;
        const double dy = static_cast<double>(i / roi.width) - roi.height / 2;
        image.data[i] = dx * dx + dy * dy < radius * radius ? 255 : 0;
    }
}
void nothing(bench::Image<std::uint8_t> &image, RoiSize) {
    std::memset(image.data, 0, static_cast<std::size_t>(image.elements));
}
// One zero, and a tenth of the pixels.
void corner(bench::Image<std::uint8_t> &image, RoiSize) {
    std::memset(image.data, 1, static_cast<std::size_t>(image.elements));
    image.data[0] = 0;
}
void noise(bench::Image<std::uint8_t> &image, RoiSize) {
    std::mt19937 rng(3);
    for (std::int64_t i = 0; i < image.elements; ++i) {
        image.data[i] = rng() % 10 == 0 ? 0 : 255;
    }
}

struct Content {
    const char *name;
    Draw draw;
};

template <class T, class Function>
void addInpaint(bench::Registry &rows, const std::string &name, int channels, InpaintMethod method, Function inpaint) {
    for (const Content &content : {Content{"scratches", scratches}, {"spot", spot}, {"nothing", nothing}}) {
        const double bytes = channels * static_cast<double>(sizeof(T));
        rows.add(name + (method == InpaintMarch ? "_march/" : "_diffusion/") + content.name, {bytes + 1, bytes},
                 [=](RoiSize roi) {
                     auto src = bench::image<T>(roi, channels), dst = bench::image<T>(roi, channels);
                     auto mask = bench::image<std::uint8_t>(roi);
                     content.draw(*mask, roi);
                     std::int32_t size = 0;
                     rvxiInpaintGetBufferSize_8u_C1MR(roi, 5, &size);
                     auto buffer = bench::scratch(size);
                     return [=] {
                         inpaint(src->data, src->step, mask->data, mask->step, dst->data, dst->step, roi, 5, method,
                                 buffer.get());
                     };
                 });
    }
}

const bench::Family family([](bench::Registry &rows) {
    for (const Content &content : {Content{"corner", corner},
                                   {"noise", noise},
                                   {"scratches", scratches},
                                   {"spot", spot},
                                   {"nothing", nothing}}) {
        rows.add(std::string("FastMarching_8u32f_C1R/") + content.name, {1, 4}, [=](RoiSize roi) {
            auto src = bench::image<std::uint8_t>(roi);
            content.draw(*src, roi);
            auto dst = bench::image<float>(roi);
            std::int32_t size = 0;
            rvxiFastMarchingGetBufferSize_8u32f_C1R(roi, &size);
            auto buffer = bench::scratch(size);
            return [=] { rvxiFastMarching_8u32f_C1R(src->data, src->step, dst->data, dst->step, roi, buffer.get()); };
        });
    }
    for (const InpaintMethod method : {InpaintMarch, InpaintDiffusion}) {
        addInpaint<std::uint8_t>(rows, "Inpaint_8u_C1MR", 1, method, rvxiInpaint_8u_C1MR);
        addInpaint<std::uint8_t>(rows, "Inpaint_8u_C3MR", 3, method, rvxiInpaint_8u_C3MR);
        addInpaint<float>(rows, "Inpaint_32f_C1MR", 1, method, rvxiInpaint_32f_C1MR);
    }
});

} // namespace
