// The benchmark harness. A family's file registers rows at static initialisation:
//
//     const bench::Family family([](bench::Registry &rows) {
//         rows.add("AbsDiff_8u_C1R", 3, [](RoiSize roi) {
//             auto a = bench::image<std::uint8_t>(roi), ...;       // inputs live in the returned function
//             return [=] { rvxiAbsDiff_8u_C1R(a->data, ...); };
//         });
//     });
//
// Every row runs at all sizes (and at those of its own, where it names some) and reports, as medians of one run in
// which batches of the operation, of the copy and of the limit alternate: ns/px, GB/s (of the bytes per pixel that the
// row moves at least), `copies`, the ratio to the time of a memcpy of a 32f image of the same size, `limit`, the ratio
// to a plain 256-bit stream that reads and writes as many bytes, and `goal`, the ratio to what goals.cpp asks for
// (above 1: missed; 0: nothing is asked).
#pragma once

#include "rvxcv.h"

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace bench {

// Makes a row's operation for a size; inputs are captured by the returned function.
using MakeOperation = std::function<std::function<void()>(RoiSize)>;

// The bytes per pixel that a row moves at least, each counted once: those read from its sources, those written to its
// destinations, and those of an image that is read and written in place.
struct Traffic {
    double read, written, updated = 0;

    // As many bytes read as written.
    Traffic(double bytes) : read(bytes / 2), written(bytes / 2) {}
    Traffic(double fromSources, double toDestinations) : read(fromSources), written(toDestinations) {}
    static Traffic update(double fromSources, double inPlace) {
        Traffic result(fromSources, 0);
        result.updated = inPlace;
        return result;
    }
    double bytes() const { return read + written + 2 * updated; }
};

class Registry {
public:
    struct Row {
        std::string name;
        Traffic traffic;
        MakeOperation make;
        std::vector<RoiSize> moreSizes;
    };

    void add(std::string name, Traffic traffic, MakeOperation make, std::vector<RoiSize> moreSizes = {}) {
        rows.push_back({std::move(name), traffic, std::move(make), std::move(moreSizes)});
    }

    std::vector<Row> rows;
};

std::vector<void (*)(Registry &)> &families();

struct Family {
    explicit Family(void (*registerRows)(Registry &)) { families().push_back(registerRows); }
};

// What a row should not exceed at 640x480.
struct Goal {
    const char *row;
    double factor;
    enum class Of { copy, limit } of;
};

// The goal of a row, or null.
const Goal *findGoal(const std::string &row);

// A 64-byte aligned image with tight rows (times channels), shared so that operations can be copied.
template <class T> struct Image {
    T *data;
    std::int32_t step;
    std::int64_t elements;

    Image(RoiSize roi, int channels)
        : step(static_cast<std::int32_t>(roi.width * channels * static_cast<int>(sizeof(T)))),
          elements(std::int64_t{roi.width} * channels * roi.height) {
        const auto bytes = (static_cast<std::size_t>(elements) * sizeof(T) + 63) / 64 * 64;
        data = static_cast<T *>(std::aligned_alloc(64, bytes));
    }
    ~Image() { std::free(data); }
    Image(const Image &) = delete;
    Image &operator=(const Image &) = delete;
};

template <class T> using ImagePointer = std::shared_ptr<Image<T>>;

// An image of random contents: the whole range of an integer type, 0..255 for floats.
template <class T> ImagePointer<T> image(RoiSize roi, int channels = 1, std::uint32_t seed = 1) {
    auto result = std::make_shared<Image<T>>(roi, channels);
    std::mt19937 rng(seed);
    for (std::int64_t i = 0; i < result->elements; ++i) {
        if constexpr (std::is_floating_point_v<T>) {
            result->data[i] = static_cast<T>(rng() & 0xffff) / 257;
        } else {
            result->data[i] = static_cast<T>(rng());
        }
    }
    return result;
}

// A smooth scene with edges, texture and a little noise: what a photograph looks like to a filter.
ImagePointer<std::uint8_t> scene(RoiSize roi);

// A scratch buffer.
inline std::shared_ptr<std::uint8_t> scratch(std::int64_t bytes) {
    return {static_cast<std::uint8_t *>(std::aligned_alloc(64, static_cast<std::size_t>((bytes + 127) / 64 * 64))),
            std::free};
}

} // namespace bench
