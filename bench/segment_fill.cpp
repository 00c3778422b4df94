// Benchmarks of flood fill and marker labelling. A fill works in place: two values take turns, so that every call finds
// the image as the one before left it and nothing has to be restored.
#include "harness.h"

#include <algorithm>
#include <array>
#include <tuple>

namespace {

const std::vector<RoiSize> large{{4096, 4096}};

std::shared_ptr<std::uint8_t> fillScratch(RoiSize roi) {
    return bench::scratch(6 * std::int64_t{roi.width} * roi.height + 32);
}
std::shared_ptr<std::uint8_t> gradientScratch(RoiSize roi) {
    return bench::scratch((std::int64_t{roi.width} + 2) * (roi.height + 2) + 16 * std::int64_t{roi.width} * roi.height +
                          64);
}

// An image of `T` elements from a function of pixel and channel.
template <class T, class Value> bench::ImagePointer<T> drawn(RoiSize roi, int channels, const Value &value) {
    auto image = std::make_shared<bench::Image<T>>(roi, channels);
    for (std::int64_t i = 0; i < image->elements; ++i) {
        const std::int64_t pixel = i / channels;
        image->data[i] =
            static_cast<T>(value(static_cast<int>(pixel % roi.width), static_cast<int>(pixel / roi.width)));
    }
    return image;
}

// One corridor, one pixel wide, that winds inwards from the upper left corner with walls of one pixel.
std::vector<std::uint8_t> spiral(RoiSize roi) {
    std::vector<std::uint8_t> cells(static_cast<std::size_t>(roi.width) * static_cast<std::size_t>(roi.height));
    std::int64_t left = 0, top = 0, right = roi.width - 1, bottom = roi.height - 1;
    const auto dig = [&](std::int64_t x0, std::int64_t y0, std::int64_t x1, std::int64_t y1) {
        for (std::int64_t y = y0; y <= y1; ++y) {
            for (std::int64_t x = x0; x <= x1; ++x) {
                cells[static_cast<std::size_t>(y * roi.width + x)] = 1;
            }
        }
    };
    for (; left <= right && top <= bottom; left += 2, top += 2, right -= 2, bottom -= 2) {
        dig(std::max<std::int64_t>(left - 2, 0), top, right, top);
        dig(right, top, right, bottom);
        dig(left, bottom, right, bottom);
        dig(left, std::min(top + 2, bottom), left, bottom);
    }
    return cells;
}

enum class Content { scene, noise, checkerboard, spiral };
constexpr Content contents[] = {Content::scene, Content::noise, Content::checkerboard, Content::spiral};
const char *nameOf(Content content) {
    constexpr const char *names[] = {"_scene", "_noise", "_checkerboard", "_spiral"};
    return names[static_cast<int>(content)];
}

// Two values: 1 in the foreground. A scene is thresholded, noise has a density of one half.
template <class T> bench::ImagePointer<T> binary(RoiSize roi, Content content, int channels = 1) {
    const auto picture = bench::scene(roi);
    const auto noise = bench::image<std::uint8_t>(roi);
    const auto corridor = spiral(roi);
    return drawn<T>(roi, channels, [&](int x, int y) {
        const std::int64_t i = std::int64_t{y} * roi.width + x;
        switch (content) {
        case Content::scene:
            return picture->data[i] > 110;
        case Content::noise:
            return noise->data[i] >= 128;
        case Content::checkerboard:
            return (x + y) % 2 == 0;
        default:
            return corridor[static_cast<std::size_t>(i)] != 0;
        }
    });
}

// The first pixel of the foreground.
template <class T> Point2i foregroundSeed(const bench::Image<T> &image, RoiSize roi, int channels) {
    for (std::int64_t i = 0; i < image.elements; i += channels) {
        if (image.data[i] != T{0}) {
            return {static_cast<std::int32_t>(i / channels % roi.width),
                    static_cast<std::int32_t>(i / channels / roi.width)};
        }
    }
    return {0, 0};
}

// Plain fills of an image of one value.
template <class T, class Fill> void addWhole(bench::Registry &rows, const char *name, int channels, Fill fill) {
    rows.add(
        std::string(name) + "_whole", bench::Traffic::update(0, 1.0 * sizeof(T) * channels),
        [=](RoiSize roi) {
            auto image = drawn<T>(roi, channels, [](int, int) { return 1; });
            auto buffer = fillScratch(roi);
            std::array<T, 3> value{2, 2, 2};
            return [=]() mutable {
                ConnectedComponent region;
                fill(image->data, image->step, roi, Point2i{roi.width / 2, roi.height / 2}, value.data(), &region,
                     buffer.get());
                value.fill(value[0] == 2 ? T{1} : T{2});
            };
        },
        large);
}

// Plain fills of one component.
void addContent(bench::Registry &rows, Content content) {
    rows.add(
        std::string("FloodFill_8Con_8u_C1IR") + nameOf(content), bench::Traffic::update(0, 1),
        [=](RoiSize roi) {
            auto image = binary<std::uint8_t>(roi, content);
            auto buffer = fillScratch(roi);
            const Point2i seed = foregroundSeed(*image, roi, 1);
            std::uint8_t value = 2;
            return [=]() mutable {
                ConnectedComponent region;
                rvxiFloodFill_8Con_8u_C1IR(image->data, image->step, roi, seed, value, &region, buffer.get());
                value = value == 2 ? 1 : 2;
            };
        },
        large);
}

// Range and gradient fills of a scene. The region's values differ, so every call starts from the scene again: the row
// includes that copy.
template <class T, class Fill> void addScene(bench::Registry &rows, const char *name, int channels, Fill fill) {
    rows.add(
        std::string(name) + "_scene", 3.0 * sizeof(T) * channels,
        [=](RoiSize roi) {
            const auto picture = bench::scene(roi);
            auto source =
                drawn<T>(roi, channels, [&](int x, int y) { return picture->data[std::int64_t{y} * roi.width + x]; });
            auto image = drawn<T>(roi, channels, [](int, int) { return 0; });
            auto buffer = gradientScratch(roi); // the larger of the two
            return [=] {
                std::copy(source->data, source->data + source->elements, image->data);
                ConnectedComponent region;
                fill(image->data, image->step, roi, Point2i{roi.width / 2 + 3, roi.height / 2}, &region, buffer.get());
            };
        },
        large);
}

void addLabels(bench::Registry &rows, Content content) {
    rows.add(
        std::string("LabelMarkers_8u32s_C1R") + nameOf(content), {1, 4},
        [=](RoiSize roi) {
            auto src = binary<std::uint8_t>(roi, content);
            auto dst = drawn<std::int32_t>(roi, 1, [](int, int) { return 0; });
            auto buffer = fillScratch(roi);
            return [=] {
                std::int32_t count = 0;
                rvxiLabelMarkers_8u32s_C1R(src->data, src->step, dst->data, dst->step, roi, 1, INT32_MAX - 1, NormInf,
                                           &count, buffer.get());
            };
        },
        large);
}

// Labels are not zero either: labelling a labelled image finds the same components.
template <class T, class Label> void addLabelsInPlace(bench::Registry &rows, const char *name, Label label) {
    rows.add(std::string(name) + "_scene", bench::Traffic::update(0, sizeof(T)), [=](RoiSize roi) {
        auto image = binary<T>(roi, Content::scene);
        auto buffer = fillScratch(roi);
        return [=] {
            std::int32_t count = 0;
            label(image->data, image->step, roi, 1, 200, NormL1, &count, buffer.get());
        };
    });
}

const bench::Family family([](bench::Registry &rows) {
    addWhole<std::uint8_t>(rows, "FloodFill_4Con_8u_C1IR", 1, [](auto... a) {
        const auto [image, step, roi, seed, value, region, buffer] = std::tuple(a...);
        rvxiFloodFill_4Con_8u_C1IR(image, step, roi, seed, *value, region, buffer);
    });
    addWhole<std::uint16_t>(rows, "FloodFill_8Con_16u_C1IR", 1, [](auto... a) {
        const auto [image, step, roi, seed, value, region, buffer] = std::tuple(a...);
        rvxiFloodFill_8Con_16u_C1IR(image, step, roi, seed, *value, region, buffer);
    });
    addWhole<float>(rows, "FloodFill_4Con_32f_C1IR", 1, [](auto... a) {
        const auto [image, step, roi, seed, value, region, buffer] = std::tuple(a...);
        rvxiFloodFill_4Con_32f_C1IR(image, step, roi, seed, *value, region, buffer);
    });
    addWhole<std::uint8_t>(rows, "FloodFill_4Con_8u_C3IR", 3, rvxiFloodFill_4Con_8u_C3IR);
    for (const Content content : contents) {
        addContent(rows, content);
    }
    addScene<std::uint8_t>(rows, "FloodFill_Range8Con_8u_C1IR", 1, [](auto... a) {
        const auto [image, step, roi, seed, region, buffer] = std::tuple(a...);
        rvxiFloodFill_Range8Con_8u_C1IR(image, step, roi, seed, 255, 40, 40, region, buffer);
    });
    addScene<float>(rows, "FloodFill_Range8Con_32f_C1IR", 1, [](auto... a) {
        const auto [image, step, roi, seed, region, buffer] = std::tuple(a...);
        rvxiFloodFill_Range8Con_32f_C1IR(image, step, roi, seed, region, buffer, 255, 40, 40);
    });
    addScene<std::uint8_t>(rows, "FloodFill_Range8Con_8u_C3IR", 3, [](auto... a) {
        const auto [image, step, roi, seed, region, buffer] = std::tuple(a...);
        constexpr std::uint8_t value[3] = {255, 255, 255}, delta[3] = {40, 40, 40};
        rvxiFloodFill_Range8Con_8u_C3IR(image, step, roi, seed, value, delta, delta, region, buffer);
    });
    addScene<std::uint8_t>(rows, "FloodFill_Grad4Con_8u_C1IR", 1, [](auto... a) {
        const auto [image, step, roi, seed, region, buffer] = std::tuple(a...);
        rvxiFloodFill_Grad4Con_8u_C1IR(image, step, roi, seed, 6, 6, 255, region, buffer);
    });
    addScene<float>(rows, "FloodFill_Grad8Con_32f_C1IR", 1, [](auto... a) {
        const auto [image, step, roi, seed, region, buffer] = std::tuple(a...);
        rvxiFloodFill_Grad8Con_32f_C1IR(image, step, roi, seed, 6, 6, 255, region, buffer);
    });
    addScene<std::uint8_t>(rows, "FloodFill_Grad8Con_8u_C3IR", 3, [](auto... a) {
        const auto [image, step, roi, seed, region, buffer] = std::tuple(a...);
        constexpr std::uint8_t value[3] = {255, 255, 255}, delta[3] = {6, 6, 6};
        rvxiFloodFill_Grad8Con_8u_C3IR(image, step, roi, seed, delta, delta, value, region, buffer);
    });
    for (const Content content : contents) {
        addLabels(rows, content);
    }
    addLabelsInPlace<std::uint8_t>(rows, "LabelMarkers_8u_C1IR", rvxiLabelMarkers_8u_C1IR);
    addLabelsInPlace<std::uint16_t>(rows, "LabelMarkers_16u_C1IR", rvxiLabelMarkers_16u_C1IR);
});

} // namespace
