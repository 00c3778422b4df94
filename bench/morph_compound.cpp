// Benchmarks of compound morphology and of bit images.
#include "harness.h"

#include <vector>

namespace {

using Sizes = StatusCode (*)(RoiSize, RoiSize, std::int32_t *, std::int32_t *);
using Init = StatusCode (*)(RoiSize, const std::uint8_t *, RoiSize, MorphAdvSpec *, std::uint8_t *);

// Analysed masks and work buffer for regions of one size.
struct Compound {
    std::shared_ptr<std::uint8_t> spec, initBuffer, buffer;

    Compound(Sizes sizes, Init init, RoiSize roi, RoiSize mask) {
        std::int32_t specSize = 0, bufferSize = 0;
        sizes(roi, mask, &specSize, &bufferSize);
        spec = bench::scratch(specSize);
        initBuffer = bench::scratch(bufferSize);
        buffer = bench::scratch(bufferSize);
        const std::vector<std::uint8_t> bytes(static_cast<std::size_t>(mask.width * mask.height), 1);
        init(roi, bytes.data(), mask, record(), initBuffer.get());
    }
    MorphAdvSpec *record() const { return reinterpret_cast<MorphAdvSpec *>(spec.get()); }
};

template <class T, class F>
void add(bench::Registry &rows, const char *name, int channels, Sizes sizes, Init init, F function) {
    rows.add(name, 2.0 * sizeof(T) * channels, [=](RoiSize roi) {
        auto src = bench::image<T>(roi, channels), dst = bench::image<T>(roi, channels);
        const Compound work(sizes, init, roi, {5, 5});
        return [=] {
            function(src->data, src->step, dst->data, dst->step, roi, BorderReplicate, T{}, work.record(),
                     work.buffer.get());
        };
    });
}

// A row of bits takes an eighth of a row of bytes.
bench::ImagePointer<std::uint8_t> bits(RoiSize roi) {
    return bench::image<std::uint8_t>({(roi.width + 7) / 8, roi.height});
}

template <class F> void addBits(bench::Registry &rows, const char *name, RoiSize mask, F function) {
    rows.add(name, 0.25, [=](RoiSize roi) {
        auto src = bits(roi), dst = bits(roi);
        const Compound work(rvxiMorphAdvGetSize_1u_C1R, rvxiMorphAdvInit_1u_C1R, roi, mask);
        return [=] {
            function(src->data, src->step, 0, dst->data, dst->step, 0, roi, BorderReplicate, std::uint8_t{},
                     work.record(), work.buffer.get());
        };
    });
}

// The forward record of the pair serves a single step.
template <class F> auto singleStep(F function) {
    return [=](auto... arguments) {
        const auto call = [=](auto src, auto srcStep, auto srcBit, auto dst, auto dstStep, auto dstBit, auto roi,
                              auto border, auto value, const MorphAdvSpec *spec, auto buffer) {
            function(src, srcStep, srcBit, dst, dstStep, dstBit, roi, border, value, spec->reflected, buffer);
        };
        call(arguments...);
    };
}

const bench::Family family([](bench::Registry &rows) {
    constexpr auto sizes8 = rvxiMorphAdvGetSize_8u_C1R;
    constexpr auto init8 = rvxiMorphAdvInit_8u_C1R;
    add<std::uint8_t>(rows, "MorphOpenBorder_8u_C1R 5x5", 1, sizes8, init8, rvxiMorphOpenBorder_8u_C1R);
    add<std::uint8_t>(rows, "MorphTophatBorder_8u_C1R 5x5", 1, sizes8, init8, rvxiMorphTophatBorder_8u_C1R);
    add<std::uint8_t>(rows, "MorphGradientBorder_8u_C1R 5x5", 1, sizes8, init8, rvxiMorphGradientBorder_8u_C1R);
    add<std::uint8_t>(rows, "MorphTophatBorder_8u_C3R 5x5", 3, rvxiMorphAdvGetSize_8u_C3R, rvxiMorphAdvInit_8u_C3R,
                      rvxiMorphTophatBorder_8u_C3R);
    add<std::int16_t>(rows, "MorphTophatBorder_16s_C1R 5x5", 1, rvxiMorphAdvGetSize_16s_C1R, rvxiMorphAdvInit_16s_C1R,
                      rvxiMorphTophatBorder_16s_C1R);
    add<float>(rows, "MorphGradientBorder_32f_C1R 5x5", 1, rvxiMorphAdvGetSize_32f_C1R, rvxiMorphAdvInit_32f_C1R,
               rvxiMorphGradientBorder_32f_C1R);
    addBits(rows, "ErodeBorder_1u_C1R 3x3", {3, 3}, singleStep(rvxiErodeBorder_1u_C1R));
    addBits(rows, "DilateBorder_1u_C1R 15x15", {15, 15}, singleStep(rvxiDilateBorder_1u_C1R));
    addBits(rows, "MorphOpenBorder_1u_C1R 5x5", {5, 5}, rvxiMorphOpenBorder_1u_C1R);
    addBits(rows, "MorphTophatBorder_1u_C1R 5x5", {5, 5}, rvxiMorphTophatBorder_1u_C1R);
    addBits(rows, "MorphGradientBorder_1u_C1R 5x5", {5, 5}, rvxiMorphGradientBorder_1u_C1R);
});

} // namespace
