// Benchmarks of reconstruction. The marker becomes the result, so every call starts from a copy of it: the rows include
// that copy.
#include "harness.h"

#include <algorithm>

namespace {

// A picture with as many levels as the type holds: the scene, its noise in the bits behind the eighth.
template <class T> bench::ImagePointer<T> photograph(RoiSize roi) {
    const auto picture = bench::scene(roi);
    const auto noise = bench::image<std::uint8_t>(roi);
    auto image = std::make_shared<bench::Image<T>>(roi, 1);
    for (std::int64_t i = 0; i < image->elements; ++i) {
        const int level = picture->data[i], fine = noise->data[i];
        if constexpr (sizeof(T) == 1) {
            image->data[i] = picture->data[i];
        } else if constexpr (sizeof(T) == 2) {
            image->data[i] = static_cast<T>(256 * level + fine);
        } else {
            image->data[i] = static_cast<T>(level) + static_cast<T>(fine) / 256;
        }
    }
    return image;
}

// One corridor of width 1 through all rows, and a seed at its start: scans alone advance by a row each.
template <class T> bench::ImagePointer<T> serpentine(RoiSize roi) {
    auto image = std::make_shared<bench::Image<T>>(roi, 1);
    for (std::int64_t i = 0; i < image->elements; ++i) {
        const std::int64_t x = i % roi.width, y = i / roi.width;
        const bool open = x % 2 == 0 || y == (x % 4 == 1 ? roi.height - 1 : 0);
        image->data[i] = open ? T{100} : T{1};
    }
    return image;
}

template <class T, class Reconstruct, class MarkerOf>
void add(bench::Registry &rows, const std::string &name, NormKind norm, Reconstruct reconstruct,
         bench::ImagePointer<T> (*picture)(RoiSize), MarkerOf markerOf) {
    rows.add(
        name + (norm == NormInf ? "/8" : "/4"), bench::Traffic(2.0 * sizeof(T), 2.0 * sizeof(T)), [=](RoiSize roi) {
            const auto mask = picture(roi);
            auto start = std::make_shared<bench::Image<T>>(roi, 1), marker = std::make_shared<bench::Image<T>>(roi, 1);
            for (std::int64_t i = 0; i < mask->elements; ++i) {
                start->data[i] = markerOf(roi, i % roi.width, i / roi.width, mask->data[i]);
            }
            const auto buffer = bench::scratch(5 * mask->elements + 8 * std::int64_t{roi.width} + 2304);
            return [=] {
                std::copy(start->data, start->data + start->elements, marker->data);
                reconstruct(mask->data, mask->step, marker->data, marker->step, roi, norm, buffer.get());
            };
        });
}

template <class T, class Reconstruct>
void addRows(bench::Registry &rows, const char *type, Reconstruct dilate, Reconstruct erode) {
    const std::string suffix = std::string("_") + type + "_C1IR_";
    const T height = static_cast<T>(sizeof(T) == 2 ? 20 * 256 : 20);
    for (const NormKind norm : {NormInf, NormL1}) {
        add<T>(rows, "MorphReconstructDilate" + suffix + "domes", norm, dilate, photograph<T>,
               [=](RoiSize, std::int64_t, std::int64_t, T value) {
                   return static_cast<T>(std::max(value, height) - height);
               });
        add<T>(rows, "MorphReconstructErode" + suffix + "holes", norm, erode, photograph<T>,
               [](RoiSize roi, std::int64_t x, std::int64_t y, T value) {
                   const bool frame = x == 0 || y == 0 || x == roi.width - 1 || y == roi.height - 1;
                   return frame ? value : static_cast<T>(65535);
               });
    }
    add<T>(rows, "MorphReconstructDilate" + suffix + "corridor", NormL1, dilate, serpentine<T>,
           [](RoiSize, std::int64_t x, std::int64_t y, T) { return x == 0 && y == 0 ? T{100} : T{0}; });
}

const bench::Family family([](bench::Registry &rows) {
    addRows<std::uint8_t>(rows, "8u", rvxiMorphReconstructDilate_8u_C1IR, rvxiMorphReconstructErode_8u_C1IR);
    addRows<std::uint16_t>(rows, "16u", rvxiMorphReconstructDilate_16u_C1IR, rvxiMorphReconstructErode_16u_C1IR);
    addRows<float>(rows, "32f", rvxiMorphReconstructDilate_32f_C1IR, rvxiMorphReconstructErode_32f_C1IR);
});

} // namespace
