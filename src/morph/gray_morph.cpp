// Erosion and dilation by a structuring function: the extremum of pixels plus or minus the values of their positions,
// by position_kernel.h. Values of bytes lie in -255..255, so saturated sums are exact: clamping every one of them and
// then taking the extremum is clamping the extremum.
#include "frame/api.h"
#include "kernel/checks.h"
#include "morph/morph_spec.h"
#include "morph/position_kernel.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

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
    static Value valueOf(const GrayMorphEntry &entry) { return entry.value.of8u; }
    static U8x32 operand(Value by) { return splat(static_cast<std::uint8_t>(std::abs(by))); }
};
template <> struct GrayPixel<float> {
    using Value = float;
    static constexpr PixelTypeCode type = PixelType32f;
    static bool isPart(Value value) { return value != -std::numeric_limits<float>::infinity(); }
    static bool isValid(Value value) { return value < std::numeric_limits<float>::infinity(); } // and no NaN
    static void keep(GrayMorphEntry &entry, Value value) { entry.value.of32f = value; }
    static Value valueOf(const GrayMorphEntry &entry) { return entry.value.of32f; }
    static F32x8 operand(Value by) { return splat(by); }
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

// How pixels are changed by a value: bytes are raised or lowered by one that is not negative.
struct RaisedByte {
    static RVX_INLINE U8x32 of(U8x32 pixels, U8x32 by) { return addSaturated(pixels, by); }
};
struct LoweredByte {
    static RVX_INLINE U8x32 of(U8x32 pixels, U8x32 by) { return subSaturated(pixels, by); }
};
struct RaisedFloat {
    static RVX_INLINE F32x8 of(F32x8 pixels, F32x8 by) { return add(pixels, by); }
};

// Every `same` places of a group have one value, which changes their extremum: as rounding and clamping keep the order
// of pixels, that is the extremum of the changed ones.
template <class T, class Change, int count, int same> struct ChangedTerms {
    Vec<T> by[count / same];

    template <class Op, class PixelsAt> RVX_INLINE Vec<T> over(const PixelsAt &pixelsAt) const {
        Vec<T> result{};
        for (int term = 0; term < count / same; ++term) {
            Vec<T> extremum = pixelsAt(term * same);
            for (int k = 1; k < same; ++k) {
                extremum = Op::of(extremum, pixelsAt(term * same + k));
            }
            extremum = Change::of(extremum, by[term]);
            result = term == 0 ? extremum : Op::of(result, extremum);
        }
        return result;
    }
};

// Hands places on in groups: those that have a value in common by eights, fours and twos, as far as that goes.
template <class T, class Change, class Take> class ChangedGroups {
public:
    explicit ChangedGroups(const Take &take) : take_(take) {}

    // At most eight places.
    void add(const PixelOffset *places, int count, Vec<T> by) {
        if (count == mostPlaces) {
            emit<mostPlaces, mostPlaces>(places, &by);
            return;
        }
        if (count & 4) {
            wait<2>(places, by);
        }
        if (count & 2) {
            wait<1>(places + (count & 4), by);
        }
        if (count & 1) {
            wait<0>(places + count - 1, by);
        }
    }

    void flush() {
        split<2>();
        split<1>();
        withConstant<mostPlaces>(
            count_[0], [&]<int fixed>(std::integral_constant<int, fixed>) { emit<fixed, 1>(places_[0], by_[0]); });
    }

private:
    template <int count, int same> void emit(const PixelOffset *places, const Vec<T> *by) const {
        PixelOffset group[count];
        ChangedTerms<T, Change, count, same> terms;
        std::copy_n(places, count, group);
        std::copy_n(by, count / same, terms.by);
        take_(group, terms);
    }
    // 2^level places that have a value in common wait until they are eight.
    template <int level> void wait(const PixelOffset *places, Vec<T> by) {
        constexpr int same = 1 << level;
        std::copy_n(places, same, places_[level] + same * count_[level]);
        by_[level][count_[level]++] = by;
        if (same * count_[level] == mostPlaces) {
            emit<mostPlaces, same>(places_[level], by_[level]);
            count_[level] = 0;
        }
    }
    template <int level> void split() {
        for (int k = 0; k < 2 * count_[level]; ++k) {
            wait<level - 1>(places_[level] + (k << (level - 1)), by_[level][k / 2]);
        }
    }

    const Take &take_;
    PixelOffset places_[3][mostPlaces];
    Vec<T> by_[3][mostPlaces];
    int count_[3] = {};
};

// Some of a function's positions.
template <class T, class Op> class FunctionPositions {
    using Value = typename GrayPixel<T>::Value;

public:
    static constexpr std::int64_t most = 512;
    static constexpr bool shares = false;

    // From the table, row by row. Ordering them by value, so that equal ones meet, pays where there is much to filter.
    FunctionPositions(const GrayMorphEntry *entries, std::int64_t count, bool ordered) : count_(count) {
        const GrayMorphEntry first = loadScalar(entries);
        reach_ = {first.dx, first.dy, first.dx, loadScalar(entries + count - 1).dy};
        for (std::int64_t k = 0; k < count; ++k) {
            const GrayMorphEntry entry = loadScalar(entries + k);
            reach_.left = std::min<std::int64_t>(reach_.left, entry.dx);
            reach_.right = std::max<std::int64_t>(reach_.right, entry.dx);
            if (rowCount_ == 0 || rows_[rowCount_ - 1] != entry.dy) {
                rows_[rowCount_++] = entry.dy;
            }
            const Value value = GrayPixel<T>::valueOf(entry);
            positions_[k] = {entry.dx, entry.dy, std::is_same_v<Op, Maximum> ? value : -value};
        }
        if (ordered) {
            std::sort(positions_, positions_ + count, [](const Position &a, const Position &b) { return a.by < b.by; });
        }
    }

    Window reach() const { return reach_; }

    template <class Take> void forRows(const Take &take) const { std::for_each(rows_, rows_ + rowCount_, take); }

    template <class Take> void forGroups(std::int64_t first, std::int64_t last, const Take &take) const {
        if constexpr (std::is_same_v<T, float>) {
            forChanged<RaisedFloat>(first, last, take, [](float) { return true; });
        } else {
            forChanged<LoweredByte>(first, last, take, [](std::int32_t by) { return by < 0; });
            forChanged<RaisedByte>(first, last, take, [](std::int32_t by) { return by >= 0; });
        }
    }

private:
    struct Position {
        std::int32_t x, y;
        Value by; // what a pixel there is raised by
    };

    // Of the positions that `changes` says yes to.
    template <class Change, class Take, class Changes>
    void forChanged(std::int64_t first, std::int64_t last, const Take &take, const Changes &changes) const {
        ChangedGroups<T, Change, Take> groups(take);
        PixelOffset equal[mostPlaces];
        int count = 0;
        Value by = 0;
        const auto pass = [&] { groups.add(equal, std::exchange(count, 0), GrayPixel<T>::operand(by)); };
        for (std::int64_t k = 0; k < count_; ++k) {
            const Position &position = positions_[k];
            if (position.x < first || position.x > last || !changes(position.by)) {
                continue;
            }
            if (count == mostPlaces || position.by != by) {
                pass();
            }
            by = position.by;
            equal[count++] = {position.x, position.y};
        }
        pass();
        groups.flush();
    }

    std::int64_t count_, rowCount_ = 0;
    Window reach_;
    Position positions_[most];
    std::int32_t rows_[most];
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
        using Positions = FunctionPositions<T, Op>;
        const bool large = std::int64_t{roi.width} * roi.height >= 8192;
        for (std::int64_t k = 0; k < fields.count; k += Positions::most) {
            const Positions some(entriesOf(spec) + k, std::min(fields.count - k, Positions::most), large);
            PositionKernel<T, Op, Positions>(task, some).run(k > 0);
        }
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
