// Erosion and dilation by a structuring function: the extremum of pixels plus or minus the values of their positions,
// by position_kernel.h. Values of bytes lie in -255..255, so saturated sums are exact: clamping every one of them and
// then taking the extremum is clamping the extremum.
#include "frame/api.h"
#include "kernel/checks.h"
#include "morph/morph_spec.h"
#include "morph/position_kernel.h"

#include <cmath>

namespace rvxcv {
namespace {

constexpr std::int32_t grayMorphTag = 0x4b617391;

// What depends on the pixel type: the values' type, which of them are part of the function, and how they are kept.
template <class T> struct GrayPixel;
template <> struct GrayPixel<std::uint8_t> {
    using Value = std::int32_t;
    static constexpr PixelTypeCode type = PixelType8u;
    static bool isPart(Value value) { return value != INT32_MIN; }
    static bool isValid(Value) { return true; }
    static void keep(GrayMorphEntry &entry, Value value) { entry.value.of8u = std::clamp(value, -255, 255); }
};
template <> struct GrayPixel<float> {
    using Value = float;
    static constexpr PixelTypeCode type = PixelType32f;
    static bool isPart(Value value) { return value != -std::numeric_limits<float>::infinity(); }
    static bool isValid(Value value) { return value < std::numeric_limits<float>::infinity(); } // and no NaN
    static void keep(GrayMorphEntry &entry, Value value) { entry.value.of32f = value; }
};

static_assert(sizeof(GrayMorphSpec) == 32 && sizeof(GrayMorphEntry) == 12);
constexpr std::int64_t graySpecBytes(RoiSize mask) {
    return saturatedSum(saturatedProduct(12, mask.width, mask.height), 32);
}

// Extended rows, a pointer to each, alignment.
template <class T> constexpr std::int64_t grayBufferBytes(std::int64_t roiWidth, RoiSize mask) {
    const std::int64_t row = roundUp(rowBytes<T>(roiWidth + mask.width - 1), 64) + 8;
    return saturatedSum(saturatedProduct(mask.height, row), 64);
}

template <class T> bool graySizesFit(std::int32_t roiWidth, RoiSize mask) {
    return morphSizesValid(roiWidth, mask) && fitsInt32(graySpecBytes(mask)) &&
           fitsInt32(grayBufferBytes<T>(roiWidth, mask));
}

template <class T>
StatusCode graySizes(std::int32_t roiWidth, RoiSize mask, std::int32_t *specSize, std::int32_t *bufferSize) {
    Checks checks;
    checks.pointers(specSize, bufferSize).require(graySizesFit<T>(roiWidth, mask), StatusBadSize);
    if (!checks.failed()) {
        *specSize = static_cast<std::int32_t>(graySpecBytes(mask));
        *bufferSize = static_cast<std::int32_t>(grayBufferBytes<T>(roiWidth, mask));
    }
    return checks.status();
}

GrayMorphEntry *entriesOf(GrayMorphSpec *spec) { return reinterpret_cast<GrayMorphEntry *>(spec + 1); }
const GrayMorphEntry *entriesOf(const GrayMorphSpec *spec) {
    return reinterpret_cast<const GrayMorphEntry *>(spec + 1);
}

template <class T>
StatusCode grayInit(std::int32_t roiWidth, const typename GrayPixel<T>::Value *values, RoiSize mask,
                    GrayMorphSpec *spec) {
    using Pixel = GrayPixel<T>;
    Checks checks;
    checks.pointers(values, spec).require(graySizesFit<T>(roiWidth, mask), StatusBadSize);
    for (std::int64_t k = 0; !checks.failed() && k < morphPositions(mask); ++k) {
        checks.require(Pixel::isValid(loadScalar(values + k)), StatusOutOfRange);
    }
    if (checks.failed()) {
        return checks.status();
    }
    const Point2i anchor = centreAnchor(mask);
    std::int32_t count = 0;
    for (std::int32_t j = 0; j < mask.height; ++j) {
        for (std::int32_t i = 0; i < mask.width; ++i, ++values) {
            const auto value = loadScalar(values);
            if (Pixel::isPart(value)) {
                GrayMorphEntry entry{i - anchor.x, j - anchor.y, {}};
                Pixel::keep(entry, value);
                storeScalar(entriesOf(spec) + count++, entry);
            }
        }
    }
    storeScalar(spec,
                GrayMorphSpec{grayMorphTag, Pixel::type, roiWidth, mask.width, mask.height, anchor.x, anchor.y, count});
    return StatusOk;
}

// Terms: the pixel plus or minus a value, of bytes one that is not negative.
struct RaisedByte {
    U8x32 by;
    RVX_INLINE U8x32 of(U8x32 pixels) const { return addSaturated(pixels, by); }
};
struct LoweredByte {
    U8x32 by;
    RVX_INLINE U8x32 of(U8x32 pixels) const { return subSaturated(pixels, by); }
};
struct RaisedFloat {
    F32x8 by;
    RVX_INLINE F32x8 of(F32x8 pixels) const { return add(pixels, by); }
};

// The positions of a function, in the order of its rows; there is at least one.
template <class T, class Op> class FunctionPositions {
    static constexpr bool dilates = std::is_same_v<Op, Maximum>;

public:
    FunctionPositions(const GrayMorphEntry *entries, std::int64_t count) : entries_(entries), end_(entries + count) {
        const GrayMorphEntry first = loadScalar(entries_);
        reach_ = {first.dx, first.dy, first.dx, loadScalar(end_ - 1).dy};
        forEntries([&](const GrayMorphEntry &entry) {
            reach_.left = std::min<std::int64_t>(reach_.left, entry.dx);
            reach_.right = std::max<std::int64_t>(reach_.right, entry.dx);
        });
    }

    Window reach() const { return reach_; }

    template <class Take> void forRows(const Take &take) const {
        std::int64_t latest = reach_.top - 1;
        forEntries([&](const GrayMorphEntry &entry) {
            if (entry.dy != latest) {
                latest = entry.dy;
                take(latest);
            }
        });
    }

    template <class Take> void forGroups(std::int64_t first, std::int64_t last, const Take &take) const {
        if constexpr (std::is_same_v<T, float>) {
            PositionGroups<RaisedFloat, Take> groups(take);
            forEntries([&](const GrayMorphEntry &entry) {
                if (entry.dx >= first && entry.dx <= last) {
                    const float value = entry.value.of32f;
                    groups.add({entry.dx, entry.dy, {splat(dilates ? value : -value)}});
                }
            });
            groups.flush();
        } else {
            forBytes<RaisedByte>(first, last, 1, take);
            forBytes<LoweredByte>(first, last, -1, take);
        }
    }

private:
    template <class Function> void forEntries(const Function &function) const {
        for (const GrayMorphEntry *entry = entries_; entry != end_; ++entry) {
            function(loadScalar(entry));
        }
    }

    // The positions that raise (sign 1) or lower (sign -1) their pixels.
    template <class Term, class Take>
    void forBytes(std::int64_t first, std::int64_t last, std::int32_t sign, const Take &take) const {
        PositionGroups<Term, Take> groups(take);
        forEntries([&](const GrayMorphEntry &entry) {
            const std::int32_t change = dilates ? entry.value.of8u : -entry.value.of8u;
            if (entry.dx >= first && entry.dx <= last && (sign > 0 ? change >= 0 : change < 0)) {
                groups.add({entry.dx, entry.dy, {splat(static_cast<std::uint8_t>(std::abs(change)))}});
            }
        });
        groups.flush();
    }

    const GrayMorphEntry *entries_, *end_;
    Window reach_;
};

template <class Op, class T>
StatusCode filter(const T *src, std::int32_t srcStep, T *dst, std::int32_t dstStep, RoiSize roi, BorderKind border,
                  T borderValue, const GrayMorphSpec *spec, std::uint8_t *buffer) {
    Checks checks;
    checks.pointers(src, dst, spec, buffer);
    // A record that is none may be shorter than one.
    const bool isOurs =
        !checks.failed() && loadScalar(&spec->tag) == grayMorphTag && loadScalar(&spec->type) == GrayPixel<T>::type;
    checks.require(isOurs, StatusBadContext).size(roi).steps(rowBytes<T>(roi.width), srcStep, dstStep);
    checks.multiples(sizeof(T), srcStep, dstStep);
    const std::int32_t kind = border & 15;
    checks.require(kind == BorderConstant || kind == BorderReplicate || kind == BorderInMemory, StatusBadBorder);
    const GrayMorphSpec fields = isOurs ? loadScalar(spec) : GrayMorphSpec{};
    checks.require(roi.width <= fields.roiWidth, StatusBadSize).require(src != dst, StatusInPlaceNotSupported);
    if (checks.failed()) {
        return checks.status();
    }
    const MorphTask<T> task{Plane{src, srcStep},
                            Plane{dst, dstStep},
                            roi,
                            0,
                            roi.height,
                            1,
                            Border(border),
                            buffer,
                            grayBufferBytes<T>(fields.roiWidth, {fields.maskWidth, fields.maskHeight}),
                            kind == BorderConstant ? &borderValue : nullptr};
    if (fields.count == 0) {
        copyRows(task);
    } else {
        const FunctionPositions<T, Op> positions(entriesOf(spec), fields.count);
        PositionKernel<T, Op, FunctionPositions<T, Op>>(task, positions).run();
    }
    return StatusOk;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiGrayMorphologyGetSize_8u_C1R(int32_t roiWidth, RoiSize maskSize, int32_t *specSize,
                                            int32_t *bufferSize) {
    return graySizes<uint8_t>(roiWidth, maskSize, specSize, bufferSize);
}
StatusCode rvxiGrayMorphologyGetSize_32f_C1R(int32_t roiWidth, RoiSize maskSize, int32_t *specSize,
                                             int32_t *bufferSize) {
    return graySizes<float>(roiWidth, maskSize, specSize, bufferSize);
}
StatusCode rvxiGrayMorphologyInit_8u_C1R(int32_t roiWidth, const int32_t *values, RoiSize maskSize,
                                         GrayMorphSpec *spec) {
    return grayInit<uint8_t>(roiWidth, values, maskSize, spec);
}
StatusCode rvxiGrayMorphologyInit_32f_C1R(int32_t roiWidth, const float *values, RoiSize maskSize,
                                          GrayMorphSpec *spec) {
    return grayInit<float>(roiWidth, values, maskSize, spec);
}
StatusCode rvxiGrayErodeBorder_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                      BorderKind border, uint8_t borderValue, const GrayMorphSpec *spec,
                                      uint8_t *buffer) {
    return filter<Minimum>(src, srcStep, dst, dstStep, roi, border, borderValue, spec, buffer);
}
StatusCode rvxiGrayErodeBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                       BorderKind border, float borderValue, const GrayMorphSpec *spec,
                                       uint8_t *buffer) {
    return filter<Minimum>(src, srcStep, dst, dstStep, roi, border, borderValue, spec, buffer);
}
StatusCode rvxiGrayDilateBorder_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                       BorderKind border, uint8_t borderValue, const GrayMorphSpec *spec,
                                       uint8_t *buffer) {
    return filter<Maximum>(src, srcStep, dst, dstStep, roi, border, borderValue, spec, buffer);
}
StatusCode rvxiGrayDilateBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                        BorderKind border, float borderValue, const GrayMorphSpec *spec,
                                        uint8_t *buffer) {
    return filter<Maximum>(src, srcStep, dst, dstStep, roi, border, borderValue, spec, buffer);
}
