// Benchmarks of speckles and segment bounds. Both work in place: every call starts from a copy of the picture, which
// the rows include, except where the result is its own result.
#include "harness.h"

#include <algorithm>

namespace {

enum class Content { disparity, noise };

// Surfaces at a few depths with a slope each, cut by the scene's edges; wrong matches and pixels without one here and
// there.
template <class T> bench::ImagePointer<T> disparities(RoiSize roi, Content content) {
    const auto picture = bench::scene(roi);
    const auto noise = bench::image<std::uint16_t>(roi);
    auto image = std::make_shared<bench::Image<T>>(roi, 1);
    for (std::int64_t i = 0; i < image->elements; ++i) {
        const int x = static_cast<int>(i % roi.width), chance = noise->data[i] % 100;
        int value = picture->data[i] / 32 * 16 + x / 64 % 8;
        if (content == Content::noise || chance < 3) {
            value = noise->data[i] / 256 % 128;
        } else if (chance < 8) {
            value = 0;
        }
        image->data[i] = static_cast<T>(value);
    }
    return image;
}

template <class T, class Call>
void addInPlace(bench::Registry &rows, const std::string &name, Content content, std::int64_t scratchPerPixel,
                Call call) {
    rows.add(name, bench::Traffic(2.0 * sizeof(T), 2.0 * sizeof(T)), [=](RoiSize roi) {
        auto source = disparities<T>(roi, content);
        auto image = std::make_shared<bench::Image<T>>(roi, 1);
        auto buffer = bench::scratch(scratchPerPixel * source->elements + 16 * std::int64_t{roi.width} + 64);
        return [=] {
            std::copy(source->data, source->data + source->elements, image->data);
            call(image->data, image->step, roi, buffer.get());
        };
    });
}

template <class T, class Mark> void addSpeckles(bench::Registry &rows, const std::string &name, Mark mark) {
    const auto call = [=](T *image, std::int32_t step, RoiSize roi, std::uint8_t *buffer) {
        mark(image, step, roi, T{0}, 100, T{2}, NormL1, buffer);
    };
    addInPlace<T>(rows, name + "_disparity", Content::disparity, 4, call);
    addInPlace<T>(rows, name + "_noise", Content::noise, 4, call);
}

// Bounds of bounds cost what bounds of labels do: no pixel's work depends on another's. So no copy is needed.
template <class T, class Bound> void addBounds(bench::Registry &rows, const std::string &name, Bound bound) {
    for (const NormKind norm : {NormInf, NormL1}) {
        rows.add(name + (norm == NormInf ? "/8" : "/4"), bench::Traffic::update(0, sizeof(T)), [=](RoiSize roi) {
            auto image = disparities<T>(roi, Content::disparity);
            return [=] { bound(image->data, image->step, roi, T{0}, norm); };
        });
    }
}

const bench::Family family([](bench::Registry &rows) {
    addSpeckles<std::uint8_t>(rows, "MarkSpeckles_8u_C1IR", rvxiMarkSpeckles_8u_C1IR);
    addSpeckles<std::uint16_t>(rows, "MarkSpeckles_16u_C1IR", rvxiMarkSpeckles_16u_C1IR);
    addSpeckles<std::int16_t>(rows, "MarkSpeckles_16s_C1IR", rvxiMarkSpeckles_16s_C1IR);
    addSpeckles<float>(rows, "MarkSpeckles_32f_C1IR", rvxiMarkSpeckles_32f_C1IR);
    addBounds<std::uint8_t>(rows, "BoundSegments_8u_C1IR", rvxiBoundSegments_8u_C1IR);
    addBounds<std::uint16_t>(rows, "BoundSegments_16u_C1IR", rvxiBoundSegments_16u_C1IR);
    addBounds<std::int32_t>(rows, "BoundSegments_32s_C1IR", rvxiBoundSegments_32s_C1IR);
});

} // namespace
