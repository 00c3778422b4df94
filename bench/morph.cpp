// Benchmarks of the rank filters, and of erosion and dilation with masks of every shape.
#include "harness.h"

namespace {

using Mask = std::vector<std::uint8_t>;

Mask rectangle(RoiSize size) { return Mask(static_cast<std::size_t>(size.width * size.height), 1); }

Mask cross(RoiSize size) {
    Mask mask;
    for (int i = 0; i < size.width * size.height; ++i) {
        mask.push_back(i % size.width == size.width / 2 || i / size.width == size.height / 2);
    }
    return mask;
}

Mask ellipse(RoiSize size) {
    Mask mask;
    for (int i = 0; i < size.width * size.height; ++i) {
        const double x = (2 * (i % size.width) - size.width + 1) / static_cast<double>(size.width),
                     y = (2 * (i / size.width) - size.height + 1) / static_cast<double>(size.height);
        mask.push_back(x * x + y * y <= 1);
    }
    return mask;
}

Mask halfFull(RoiSize size) {
    Mask mask;
    std::mt19937 rng(5);
    for (int i = 0; i < size.width * size.height; ++i) {
        mask.push_back(rng() & 1);
    }
    return mask;
}

template <class T, class Q, class F>
void addRank(bench::Registry &rows, const char *name, int channels, RoiSize mask, Q query, F filter) {
    rows.add(name, 2.0 * sizeof(T) * channels, [=](RoiSize roi) {
        auto src = bench::image<T>(roi, channels), dst = bench::image<T>(roi, channels);
        std::int32_t size = 0;
        query(roi.width, mask, &size);
        auto buffer = bench::scratch(size);
        return [=] {
            filter(src->data, src->step, dst->data, dst->step, roi, mask, {mask.width / 2, mask.height / 2},
                   buffer.get());
        };
    });
}

// A member of erosion or dilation with its companions.
template <class Q, class I, class F> struct Operation {
    int channels;
    Q query;
    I init;
    F run;
};

template <class T, class O>
void addMasked(bench::Registry &rows, const char *name, const O &operation, RoiSize maskSize, Mask (*makeMask)(RoiSize),
               BorderKind border = BorderReplicate) {
    const int channels = operation.channels;
    rows.add(name, 2.0 * sizeof(T) * channels, [=](RoiSize roi) {
        // Room for a border in memory: the region is the middle of a larger image.
        const RoiSize whole{roi.width + maskSize.width, roi.height + maskSize.height};
        auto src = bench::image<T>(border == BorderReplicate ? roi : whole, channels);
        auto dst = bench::image<T>(roi, channels);
        const std::int64_t inset =
            border == BorderReplicate
                ? 0
                : (std::int64_t{maskSize.height / 2} * whole.width + maskSize.width / 2) * channels;
        const Mask mask = makeMask(maskSize);
        std::int32_t specSize = 0, bufferSize = 0;
        operation.query(roi.width, maskSize, &specSize, &bufferSize);
        auto spec = bench::scratch(specSize), buffer = bench::scratch(bufferSize);
        operation.init(roi.width, mask.data(), maskSize, reinterpret_cast<MorphSpec *>(spec.get()), buffer.get());
        return [=] {
            operation.run(src->data + inset, src->step, dst->data, dst->step, roi, border, T{},
                          reinterpret_cast<const MorphSpec *>(spec.get()), buffer.get());
        };
    });
}

const bench::Family family([](bench::Registry &rows) {
    addRank<std::uint8_t>(rows, "FilterMin_8u_C1R/3x3", 1, {3, 3}, rvxiFilterMinGetBufferSize_8u_C1R,
                          rvxiFilterMinBorderReplicate_8u_C1R);
    addRank<std::uint8_t>(rows, "FilterMin_8u_C1R/5x1", 1, {5, 1}, rvxiFilterMinGetBufferSize_8u_C1R,
                          rvxiFilterMinBorderReplicate_8u_C1R);
    addRank<std::uint8_t>(rows, "FilterMin_8u_C1R/15x1", 1, {15, 1}, rvxiFilterMinGetBufferSize_8u_C1R,
                          rvxiFilterMinBorderReplicate_8u_C1R);
    addRank<std::uint8_t>(rows, "FilterMax_8u_C3R/5x5", 3, {5, 5}, rvxiFilterMaxGetBufferSize_8u_C3R,
                          rvxiFilterMaxBorderReplicate_8u_C3R);
    addRank<std::uint8_t>(rows, "FilterMax_8u_C4R/5x5", 4, {5, 5}, rvxiFilterMaxGetBufferSize_8u_C4R,
                          rvxiFilterMaxBorderReplicate_8u_C4R);
    addRank<float>(rows, "FilterMin_32f_C1R/7x7", 1, {7, 7}, rvxiFilterMinGetBufferSize_32f_C1R,
                   rvxiFilterMinBorderReplicate_32f_C1R);
    addRank<float>(rows, "FilterMax_32f_C3R/5x5", 3, {5, 5}, rvxiFilterMaxGetBufferSize_32f_C3R,
                   rvxiFilterMaxBorderReplicate_32f_C3R);

    const Operation erode8u{1, rvxiMorphologyBorderGetSize_8u_C1R, rvxiMorphologyBorderInit_8u_C1R,
                            rvxiErodeBorder_8u_C1R};
    const Operation dilate8u{1, rvxiMorphologyBorderGetSize_8u_C1R, rvxiMorphologyBorderInit_8u_C1R,
                             rvxiDilateBorder_8u_C1R};
    const Operation dilate8uC3{3, rvxiMorphologyBorderGetSize_8u_C3R, rvxiMorphologyBorderInit_8u_C3R,
                               rvxiDilateBorder_8u_C3R};
    const Operation dilate8uC4{4, rvxiMorphologyBorderGetSize_8u_C4R, rvxiMorphologyBorderInit_8u_C4R,
                               rvxiDilateBorder_8u_C4R};
    const Operation erode16u{1, rvxiMorphologyBorderGetSize_16u_C1R, rvxiMorphologyBorderInit_16u_C1R,
                             rvxiErodeBorder_16u_C1R};
    const Operation dilate16s{1, rvxiMorphologyBorderGetSize_16s_C1R, rvxiMorphologyBorderInit_16s_C1R,
                              rvxiDilateBorder_16s_C1R};
    const Operation erode32f{1, rvxiMorphologyBorderGetSize_32f_C1R, rvxiMorphologyBorderInit_32f_C1R,
                             rvxiErodeBorder_32f_C1R};
    addMasked<std::uint8_t>(rows, "Erode_8u_C1R/rect3x3", erode8u, {3, 3}, rectangle);
    addMasked<std::uint8_t>(rows, "Dilate_8u_C1R/rect5x5", dilate8u, {5, 5}, rectangle);
    addMasked<std::uint8_t>(rows, "Dilate_8u_C1R/rect15x15", dilate8u, {15, 15}, rectangle);
    addMasked<std::uint8_t>(rows, "Erode_8u_C1R/rect31x31", erode8u, {31, 31}, rectangle);
    addMasked<std::uint8_t>(rows, "Dilate_8u_C1R/rect101x101", dilate8u, {101, 101}, rectangle);
    addMasked<std::uint8_t>(rows, "Dilate_8u_C1R/rect5x5/in_memory", dilate8u, {5, 5}, rectangle, BorderInMemory);
    addMasked<std::uint8_t>(rows, "Erode_8u_C1R/cross3x3", erode8u, {3, 3}, cross);
    addMasked<std::uint8_t>(rows, "Dilate_8u_C1R/ellipse5x5", dilate8u, {5, 5}, ellipse);
    addMasked<std::uint8_t>(rows, "Dilate_8u_C1R/ellipse11x11", dilate8u, {11, 11}, ellipse);
    addMasked<std::uint8_t>(rows, "Dilate_8u_C1R/ellipse31x31", dilate8u, {31, 31}, ellipse);
    addMasked<std::uint8_t>(rows, "Dilate_8u_C1R/random7x7", dilate8u, {7, 7}, halfFull);
    addMasked<std::uint8_t>(rows, "Dilate_8u_C3R/rect3x3", dilate8uC3, {3, 3}, rectangle);
    addMasked<std::uint8_t>(rows, "Dilate_8u_C3R/ellipse11x11", dilate8uC3, {11, 11}, ellipse);
    addMasked<std::uint8_t>(rows, "Dilate_8u_C4R/rect3x3", dilate8uC4, {3, 3}, rectangle);
    addMasked<std::uint8_t>(rows, "Dilate_8u_C4R/rect15x15", dilate8uC4, {15, 15}, rectangle);
    addMasked<std::uint16_t>(rows, "Erode_16u_C1R/rect5x5", erode16u, {5, 5}, rectangle);
    addMasked<std::int16_t>(rows, "Dilate_16s_C1R/ellipse11x11", dilate16s, {11, 11}, ellipse);
    addMasked<float>(rows, "Erode_32f_C1R/rect5x5", erode32f, {5, 5}, rectangle);
    addMasked<float>(rows, "Erode_32f_C1R/random7x7", erode32f, {7, 7}, halfFull);
});

} // namespace
