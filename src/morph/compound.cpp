// Opening, closing, top-hat, black-hat and morphological gradient. The work goes strip by strip: some rows of the first
// step, the rows of the second step that they suffice for, and the difference, while all of them are in the cache.
//
//     work buffer:   first step's scratch | second step's scratch | intermediate image
//
// On a side in memory the first step is computed as far outside the region as the second one reads.
#include "frame/api.h"

#include "kernel/checks.h"
#include "kernel/rows.h"
#include "morph/bit_morph.h"
#include "morph/flat_filter.h"
#include "morph/morph_spec.h"
#include "morph/rank_filter.h"

#include <algorithm>

namespace rvxcv {
namespace {

// ------------------------------------------------------------------------------------- the two kinds of images

// What the drivers need of an image type: planes, single steps over some rows, and differences of rows.

template <class T, int channels> struct Pixels {
    using Source = Plane<const T>;
    using Destination = Plane<T>;

    static constexpr std::int64_t rowBytes(std::int64_t width) {
        return width * channels * static_cast<std::int64_t>(sizeof(T));
    }
    static Destination intermediate(std::uint8_t *area, std::int64_t stride) {
        return {reinterpret_cast<T *>(area), stride};
    }
    static Source readable(Destination plane) { return {plane.base, plane.step}; }
    template <class P> static P moved(P plane, std::int64_t x, std::int64_t y) {
        return {plane.row(y) + x * channels, plane.step};
    }

    template <class Op>
    static void step(Source src, Destination dst, RoiSize roi, std::int64_t first, std::int64_t last,
                     const Border &border, const MorphSpec &spec, std::uint8_t *scratch, std::int64_t scratchBytes) {
        filterFlat<T, Op>({src, dst, roi, first, last, channels, border, scratch, scratchBytes}, spec);
    }

    // A step and a difference from its result, or the other way round, in one go; false where that is not to be had.
    template <class Op, class Result>
    static bool stepAndSubtract(Source src, Destination dst, RoiSize roi, std::int64_t first, std::int64_t last,
                                const Border &border, const MorphSpec &spec, Source other) {
        return spec.shape == MaskRectangle &&
               filterSmallWindow<T, Op, Result>({src, dst, roi, first, last, channels, border, nullptr, 0},
                                                rectangleOf(spec), other);
    }

    struct Difference {
        const T *first, *second;
        T *dst;
        template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
            store(dst + x, differenceOf(load<Vec<T>>(first + x, span), load<Vec<T>>(second + x, span)), span);
        }
    };
    static void subtract(Source first, Source second, Destination dst, std::int64_t width, std::int64_t rows) {
        for (std::int64_t y = 0; y < rows; ++y) {
            walkRow<Vec<T>::lanes>(width * channels, Difference{first.row(y), second.row(y), dst.row(y)});
        }
    }
    // Rows that overlap (steps need not count channels) are finished one after another.
    static bool rowsOverlap(Destination dst, std::int64_t width) { return dst.step < rowBytes(width); }
};

struct Bits {
    using Source = BitPlane<const std::uint8_t>;
    using Destination = BitPlane<std::uint8_t>;

    static constexpr std::int64_t rowBytes(std::int64_t width) { return (width + 7) >> 3; }
    static Destination intermediate(std::uint8_t *area, std::int64_t stride) { return {area, stride, 0}; }
    static Source readable(Destination plane) { return {plane.base, plane.step, plane.bit}; }
    template <class P> static P moved(P plane, std::int64_t x, std::int64_t y) { return plane.at(x, y); }

    template <class Op>
    static void step(Source src, Destination dst, RoiSize roi, std::int64_t first, std::int64_t last,
                     const Border &border, const MorphSpec &spec, std::uint8_t *scratch, std::int64_t scratchBytes) {
        const BitTask task{src, dst, roi, first, last, border, scratch, scratchBytes};
        std::is_same_v<Op, Minimum> ? erodeBits(task, spec) : dilateBits(task, spec);
    }
    template <class, class>
    static bool stepAndSubtract(Source, Destination, RoiSize, std::int64_t, std::int64_t, const Border &,
                                const MorphSpec &, Source) {
        return false;
    }
    static void subtract(Source first, Source second, Destination dst, std::int64_t width, std::int64_t rows) {
        subtractBits(first, second, dst, width, rows);
    }
    // Rows may share bytes, of which each keeps the other's bits.
    static bool rowsOverlap(Destination, std::int64_t) { return false; }
};

// ------------------------------------------------------------------------------------------------ the drivers

template <class Images> struct Call {
    typename Images::Source src;
    typename Images::Destination dst;
    RoiSize roi;
    Border border;
    MorphAdvSpec fields;
    MorphSpec forward, reflected;
    std::uint8_t *buffer;

    std::uint8_t *secondScratch() const { return buffer + fields.basicBufferBytes; }
    std::uint8_t *intermediate() const { return buffer + 2 * std::int64_t{fields.basicBufferBytes}; }

    // Output rows computed at once: enough of them for the rows that a step reads twice not to matter.
    std::int64_t stripRows(std::int64_t stride) const {
        constexpr std::int64_t stripBytes = 64 * 1024;
        const std::int64_t rows = std::max(stripBytes / stride, 4 * std::int64_t{forward.maskHeight});
        return Images::rowsOverlap(dst, roi.width) ? 1 : rows;
    }
};

enum class Subtract { nothing, resultFromSource, sourceFromResult };

template <class Images, class First, class Second, Subtract subtraction>
StatusCode openClose(const Call<Images> &call) {
    const RoiSize roi = call.roi;
    const MorphSpec &second = call.reflected;
    const Border &border = call.border;
    std::int64_t left = border.left ? second.anchorX : 0, top = border.top ? second.anchorY : 0;
    const std::int64_t right = border.right ? second.rightExtent : 0;
    const std::int64_t bottom = border.bottom ? second.bottomExtent : 0;
    std::int64_t width = roi.width + left + right, height = roi.height + top + bottom;
    const std::int64_t stride = roundUp(Images::rowBytes(width), 32);
    if (roi.width > second.roiWidth || stride > call.fields.intermediateBytes ||
        height > call.fields.intermediateBytes / stride) {
        return StatusBadSize;
    }
    if (second.shape == MaskEmpty) { // two copies, which read nothing outside the region
        left = top = 0;
        width = roi.width;
        height = roi.height;
    }
    const RoiSize enlarged{static_cast<std::int32_t>(width), static_cast<std::int32_t>(height)};
    const auto outer = Images::moved(call.src, -left, -top);

    // Rows of the first step, kept .. made - 1: only those that the second step reads for the strip, always in the same
    // memory, which stays in the cache.
    const std::int64_t strip = call.stripRows(stride);
    std::int64_t kept = 0, made = 0;
    for (std::int64_t y0 = 0; y0 < roi.height; y0 += strip) {
        const std::int64_t y1 = std::min<std::int64_t>(y0 + strip, roi.height);
        const std::int64_t from = std::max<std::int64_t>(y0 + top - second.anchorY, 0);
        const std::int64_t needed = std::min(y1 + top + second.bottomExtent, height);
        std::memmove(call.intermediate(), call.intermediate() + (from - kept) * stride,
                     static_cast<std::size_t>((made - from) * stride));
        kept = from;
        const auto between = Images::intermediate(call.intermediate() - kept * stride, stride);
        const auto inner = Images::readable(Images::moved(between, left, top));
        if (needed > made) {
            Images::template step<First>(outer, between, enlarged, made, needed, border, call.forward, call.buffer,
                                         call.fields.basicBufferBytes);
            made = needed;
        }
        if constexpr (subtraction != Subtract::nothing) {
            using Result =
                std::conditional_t<subtraction == Subtract::resultFromSource, OtherLessExtremum, ExtremumLessOther>;
            if (Images::template stepAndSubtract<Second, Result>(inner, call.dst, roi, y0, y1, border, second,
                                                                 call.src)) {
                continue;
            }
        }
        Images::template step<Second>(inner, call.dst, roi, y0, y1, border, second, call.secondScratch(),
                                      call.fields.basicBufferBytes);
        const auto src = Images::moved(call.src, 0, y0);
        const auto dst = Images::moved(call.dst, 0, y0);
        if constexpr (subtraction == Subtract::resultFromSource) {
            Images::subtract(src, Images::readable(dst), dst, roi.width, y1 - y0);
        } else if constexpr (subtraction == Subtract::sourceFromResult) {
            Images::subtract(Images::readable(dst), src, dst, roi.width, y1 - y0);
        }
    }
    return StatusOk;
}

// The dilated strip lies in the call's own buffer, so gradients with one record may run at once and need nothing of the
// initialisation's buffer.
template <class Images> StatusCode gradient(const Call<Images> &call) {
    const RoiSize roi = call.roi;
    const std::int64_t stride = roundUp(Images::rowBytes(roi.width), 32);
    const std::int64_t room = call.fields.intermediateBytes / stride; // at least one row: the width was checked
    const std::int64_t strip = std::min(call.stripRows(stride), room);
    for (std::int64_t y0 = 0; y0 < roi.height; y0 += strip) {
        const std::int64_t y1 = std::min<std::int64_t>(y0 + strip, roi.height);
        const auto dilated = Images::intermediate(call.intermediate() - y0 * stride, stride);
        if (Images::template stepAndSubtract<LeastAndMost, MostLessLeast>(call.src, call.dst, roi, y0, y1, call.border,
                                                                          call.forward, Images::readable(dilated))) {
            continue;
        }
        Images::template step<Maximum>(call.src, dilated, roi, y0, y1, call.border, call.forward, call.buffer,
                                       call.fields.basicBufferBytes);
        Images::template step<Minimum>(call.src, call.dst, roi, y0, y1, call.border, call.forward, call.buffer,
                                       call.fields.basicBufferBytes);
        const auto dst = Images::moved(call.dst, 0, y0);
        Images::subtract(Images::readable(Images::moved(dilated, 0, y0)), Images::readable(dst), dst, roi.width,
                         y1 - y0);
    }
    return StatusOk;
}

// --------------------------------------------------------------------------------------------------- the checks

constexpr bool acceptsBorder(BorderKind border) {
    return (border & 15) == BorderReplicate || (border & 15) == BorderInMemory;
}

// A record's fields; one of a bit image ends with the shape.
MorphSpec readSpec(const MorphSpec *spec, bool bits) {
    MorphSpec fields{};
    std::memcpy(&fields, spec, bits ? offsetof(MorphSpec, rectangleWidth) : sizeof fields);
    return fields;
}

template <class Images, StatusCode run(const Call<Images> &), class T>
StatusCode operate(const T *src, std::int32_t srcStep, T *dst, std::int32_t dstStep, RoiSize roi, BorderKind border,
                   const MorphAdvSpec *spec, std::uint8_t *buffer) {
    Checks checks;
    checks.pointers(src, dst, spec, buffer).size(roi).steps(rowBytes<T>(roi.width), srcStep, dstStep);
    checks.multiples(sizeof(T), srcStep, dstStep).require(acceptsBorder(border), StatusBadBorder);
    if (checks.failed()) {
        return checks.status();
    }
    const MorphAdvSpec fields = loadScalar(spec);
    const Call<Images> call{{src, srcStep},
                            {dst, dstStep},
                            roi,
                            Border(border),
                            fields,
                            readSpec(fields.forward, false),
                            readSpec(fields.reflected, false),
                            buffer};
    return roi.width > call.forward.roiWidth ? StatusBadSize : run(call);
}

template <StatusCode run(const Call<Bits> &)>
StatusCode operateBits(const std::uint8_t *src, std::int32_t srcStep, std::int32_t srcBit, std::uint8_t *dst,
                       std::int32_t dstStep, std::int32_t dstBit, RoiSize roi, BorderKind border,
                       const MorphAdvSpec *spec, std::uint8_t *buffer) {
    Checks checks;
    checks.pointers(src, dst, spec, buffer).require(srcBit >= 0 && dstBit >= 0, StatusBadSize).size(roi);
    checks.steps(Bits::rowBytes(roi.width), srcStep, dstStep).require(acceptsBorder(border), StatusBadBorder);
    if (checks.failed()) {
        return checks.status();
    }
    const MorphAdvSpec fields = loadScalar(spec);
    const Call<Bits> call{
        {src, srcStep, srcBit},         {dst, dstStep, dstBit},           roi,   Border(border), fields,
        readSpec(fields.forward, true), readSpec(fields.reflected, true), buffer};
    checks.require(roi.width <= call.forward.roiWidth, StatusBadSize).require(src != dst, StatusInPlaceNotSupported);
    return checks.failed() ? checks.status() : run(call);
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiMorphOpenBorder_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                      BorderKind border, uint8_t, const MorphAdvSpec *spec, uint8_t *buffer) {
    return operate<Pixels<std::uint8_t, 1>, &openClose<Pixels<std::uint8_t, 1>, Minimum, Maximum, Subtract::nothing>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphOpenBorder_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                      BorderKind border, uint8_t, const MorphAdvSpec *spec, uint8_t *buffer) {
    return operate<Pixels<std::uint8_t, 3>, &openClose<Pixels<std::uint8_t, 3>, Minimum, Maximum, Subtract::nothing>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphOpenBorder_8u_C4R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                      BorderKind border, uint8_t, const MorphAdvSpec *spec, uint8_t *buffer) {
    return operate<Pixels<std::uint8_t, 4>, &openClose<Pixels<std::uint8_t, 4>, Minimum, Maximum, Subtract::nothing>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphOpenBorder_16u_C1R(const uint16_t *src, int32_t srcStep, uint16_t *dst, int32_t dstStep,
                                       RoiSize roi, BorderKind border, uint16_t, const MorphAdvSpec *spec,
                                       uint8_t *buffer) {
    return operate<Pixels<std::uint16_t, 1>, &openClose<Pixels<std::uint16_t, 1>, Minimum, Maximum, Subtract::nothing>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphOpenBorder_16s_C1R(const int16_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep, RoiSize roi,
                                       BorderKind border, int16_t, const MorphAdvSpec *spec, uint8_t *buffer) {
    return operate<Pixels<std::int16_t, 1>, &openClose<Pixels<std::int16_t, 1>, Minimum, Maximum, Subtract::nothing>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphOpenBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                       BorderKind border, float, const MorphAdvSpec *spec, uint8_t *buffer) {
    return operate<Pixels<float, 1>, &openClose<Pixels<float, 1>, Minimum, Maximum, Subtract::nothing>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphOpenBorder_32f_C3R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                       BorderKind border, float, const MorphAdvSpec *spec, uint8_t *buffer) {
    return operate<Pixels<float, 3>, &openClose<Pixels<float, 3>, Minimum, Maximum, Subtract::nothing>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphOpenBorder_32f_C4R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                       BorderKind border, float, const MorphAdvSpec *spec, uint8_t *buffer) {
    return operate<Pixels<float, 4>, &openClose<Pixels<float, 4>, Minimum, Maximum, Subtract::nothing>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphOpenBorder_1u_C1R(const uint8_t *src, int32_t srcStep, int32_t srcBitOffset, uint8_t *dst,
                                      int32_t dstStep, int32_t dstBitOffset, RoiSize roi, BorderKind border, uint8_t,
                                      const MorphAdvSpec *spec, uint8_t *buffer) {
    return operateBits<&openClose<Bits, Minimum, Maximum, Subtract::nothing>>(src, srcStep, srcBitOffset, dst, dstStep,
                                                                              dstBitOffset, roi, border, spec, buffer);
}
StatusCode rvxiMorphCloseBorder_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                       BorderKind border, uint8_t, const MorphAdvSpec *spec, uint8_t *buffer) {
    return operate<Pixels<std::uint8_t, 1>, &openClose<Pixels<std::uint8_t, 1>, Maximum, Minimum, Subtract::nothing>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphCloseBorder_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                       BorderKind border, uint8_t, const MorphAdvSpec *spec, uint8_t *buffer) {
    return operate<Pixels<std::uint8_t, 3>, &openClose<Pixels<std::uint8_t, 3>, Maximum, Minimum, Subtract::nothing>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphCloseBorder_8u_C4R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                       BorderKind border, uint8_t, const MorphAdvSpec *spec, uint8_t *buffer) {
    return operate<Pixels<std::uint8_t, 4>, &openClose<Pixels<std::uint8_t, 4>, Maximum, Minimum, Subtract::nothing>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphCloseBorder_16u_C1R(const uint16_t *src, int32_t srcStep, uint16_t *dst, int32_t dstStep,
                                        RoiSize roi, BorderKind border, uint16_t, const MorphAdvSpec *spec,
                                        uint8_t *buffer) {
    return operate<Pixels<std::uint16_t, 1>, &openClose<Pixels<std::uint16_t, 1>, Maximum, Minimum, Subtract::nothing>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphCloseBorder_16s_C1R(const int16_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep, RoiSize roi,
                                        BorderKind border, int16_t, const MorphAdvSpec *spec, uint8_t *buffer) {
    return operate<Pixels<std::int16_t, 1>, &openClose<Pixels<std::int16_t, 1>, Maximum, Minimum, Subtract::nothing>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphCloseBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                        BorderKind border, float, const MorphAdvSpec *spec, uint8_t *buffer) {
    return operate<Pixels<float, 1>, &openClose<Pixels<float, 1>, Maximum, Minimum, Subtract::nothing>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphCloseBorder_32f_C3R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                        BorderKind border, float, const MorphAdvSpec *spec, uint8_t *buffer) {
    return operate<Pixels<float, 3>, &openClose<Pixels<float, 3>, Maximum, Minimum, Subtract::nothing>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphCloseBorder_32f_C4R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                        BorderKind border, float, const MorphAdvSpec *spec, uint8_t *buffer) {
    return operate<Pixels<float, 4>, &openClose<Pixels<float, 4>, Maximum, Minimum, Subtract::nothing>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphCloseBorder_1u_C1R(const uint8_t *src, int32_t srcStep, int32_t srcBitOffset, uint8_t *dst,
                                       int32_t dstStep, int32_t dstBitOffset, RoiSize roi, BorderKind border, uint8_t,
                                       const MorphAdvSpec *spec, uint8_t *buffer) {
    return operateBits<&openClose<Bits, Maximum, Minimum, Subtract::nothing>>(src, srcStep, srcBitOffset, dst, dstStep,
                                                                              dstBitOffset, roi, border, spec, buffer);
}
StatusCode rvxiMorphTophatBorder_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                        BorderKind border, uint8_t, const MorphAdvSpec *spec, uint8_t *buffer) {
    return operate<Pixels<std::uint8_t, 1>,
                   &openClose<Pixels<std::uint8_t, 1>, Minimum, Maximum, Subtract::resultFromSource>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphTophatBorder_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                        BorderKind border, uint8_t, const MorphAdvSpec *spec, uint8_t *buffer) {
    return operate<Pixels<std::uint8_t, 3>,
                   &openClose<Pixels<std::uint8_t, 3>, Minimum, Maximum, Subtract::resultFromSource>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphTophatBorder_8u_C4R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                        BorderKind border, uint8_t, const MorphAdvSpec *spec, uint8_t *buffer) {
    return operate<Pixels<std::uint8_t, 4>,
                   &openClose<Pixels<std::uint8_t, 4>, Minimum, Maximum, Subtract::resultFromSource>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphTophatBorder_16u_C1R(const uint16_t *src, int32_t srcStep, uint16_t *dst, int32_t dstStep,
                                         RoiSize roi, BorderKind border, uint16_t, const MorphAdvSpec *spec,
                                         uint8_t *buffer) {
    return operate<Pixels<std::uint16_t, 1>,
                   &openClose<Pixels<std::uint16_t, 1>, Minimum, Maximum, Subtract::resultFromSource>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphTophatBorder_16s_C1R(const int16_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep,
                                         RoiSize roi, BorderKind border, int16_t, const MorphAdvSpec *spec,
                                         uint8_t *buffer) {
    return operate<Pixels<std::int16_t, 1>,
                   &openClose<Pixels<std::int16_t, 1>, Minimum, Maximum, Subtract::resultFromSource>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphTophatBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                         BorderKind border, float, const MorphAdvSpec *spec, uint8_t *buffer) {
    return operate<Pixels<float, 1>, &openClose<Pixels<float, 1>, Minimum, Maximum, Subtract::resultFromSource>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphTophatBorder_32f_C3R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                         BorderKind border, float, const MorphAdvSpec *spec, uint8_t *buffer) {
    return operate<Pixels<float, 3>, &openClose<Pixels<float, 3>, Minimum, Maximum, Subtract::resultFromSource>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphTophatBorder_32f_C4R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                         BorderKind border, float, const MorphAdvSpec *spec, uint8_t *buffer) {
    return operate<Pixels<float, 4>, &openClose<Pixels<float, 4>, Minimum, Maximum, Subtract::resultFromSource>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphTophatBorder_1u_C1R(const uint8_t *src, int32_t srcStep, int32_t srcBitOffset, uint8_t *dst,
                                        int32_t dstStep, int32_t dstBitOffset, RoiSize roi, BorderKind border, uint8_t,
                                        const MorphAdvSpec *spec, uint8_t *buffer) {
    return operateBits<&openClose<Bits, Minimum, Maximum, Subtract::resultFromSource>>(
        src, srcStep, srcBitOffset, dst, dstStep, dstBitOffset, roi, border, spec, buffer);
}
StatusCode rvxiMorphBlackhatBorder_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                          RoiSize roi, BorderKind border, uint8_t, const MorphAdvSpec *spec,
                                          uint8_t *buffer) {
    return operate<Pixels<std::uint8_t, 1>,
                   &openClose<Pixels<std::uint8_t, 1>, Maximum, Minimum, Subtract::sourceFromResult>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphBlackhatBorder_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                          RoiSize roi, BorderKind border, uint8_t, const MorphAdvSpec *spec,
                                          uint8_t *buffer) {
    return operate<Pixels<std::uint8_t, 3>,
                   &openClose<Pixels<std::uint8_t, 3>, Maximum, Minimum, Subtract::sourceFromResult>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphBlackhatBorder_8u_C4R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                          RoiSize roi, BorderKind border, uint8_t, const MorphAdvSpec *spec,
                                          uint8_t *buffer) {
    return operate<Pixels<std::uint8_t, 4>,
                   &openClose<Pixels<std::uint8_t, 4>, Maximum, Minimum, Subtract::sourceFromResult>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphBlackhatBorder_16u_C1R(const uint16_t *src, int32_t srcStep, uint16_t *dst, int32_t dstStep,
                                           RoiSize roi, BorderKind border, uint16_t, const MorphAdvSpec *spec,
                                           uint8_t *buffer) {
    return operate<Pixels<std::uint16_t, 1>,
                   &openClose<Pixels<std::uint16_t, 1>, Maximum, Minimum, Subtract::sourceFromResult>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphBlackhatBorder_16s_C1R(const int16_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep,
                                           RoiSize roi, BorderKind border, int16_t, const MorphAdvSpec *spec,
                                           uint8_t *buffer) {
    return operate<Pixels<std::int16_t, 1>,
                   &openClose<Pixels<std::int16_t, 1>, Maximum, Minimum, Subtract::sourceFromResult>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphBlackhatBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                           BorderKind border, float, const MorphAdvSpec *spec, uint8_t *buffer) {
    return operate<Pixels<float, 1>, &openClose<Pixels<float, 1>, Maximum, Minimum, Subtract::sourceFromResult>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphBlackhatBorder_32f_C3R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                           BorderKind border, float, const MorphAdvSpec *spec, uint8_t *buffer) {
    return operate<Pixels<float, 3>, &openClose<Pixels<float, 3>, Maximum, Minimum, Subtract::sourceFromResult>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphBlackhatBorder_32f_C4R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                           BorderKind border, float, const MorphAdvSpec *spec, uint8_t *buffer) {
    return operate<Pixels<float, 4>, &openClose<Pixels<float, 4>, Maximum, Minimum, Subtract::sourceFromResult>>(
        src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiMorphBlackhatBorder_1u_C1R(const uint8_t *src, int32_t srcStep, int32_t srcBitOffset, uint8_t *dst,
                                          int32_t dstStep, int32_t dstBitOffset, RoiSize roi, BorderKind border,
                                          uint8_t, const MorphAdvSpec *spec, uint8_t *buffer) {
    return operateBits<&openClose<Bits, Maximum, Minimum, Subtract::sourceFromResult>>(
        src, srcStep, srcBitOffset, dst, dstStep, dstBitOffset, roi, border, spec, buffer);
}
StatusCode rvxiMorphGradientBorder_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                          RoiSize roi, BorderKind border, uint8_t, const MorphAdvSpec *spec,
                                          uint8_t *buffer) {
    return operate<Pixels<std::uint8_t, 1>, &gradient<Pixels<std::uint8_t, 1>>>(src, srcStep, dst, dstStep, roi, border,
                                                                                spec, buffer);
}
StatusCode rvxiMorphGradientBorder_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                          RoiSize roi, BorderKind border, uint8_t, const MorphAdvSpec *spec,
                                          uint8_t *buffer) {
    return operate<Pixels<std::uint8_t, 3>, &gradient<Pixels<std::uint8_t, 3>>>(src, srcStep, dst, dstStep, roi, border,
                                                                                spec, buffer);
}
StatusCode rvxiMorphGradientBorder_8u_C4R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                          RoiSize roi, BorderKind border, uint8_t, const MorphAdvSpec *spec,
                                          uint8_t *buffer) {
    return operate<Pixels<std::uint8_t, 4>, &gradient<Pixels<std::uint8_t, 4>>>(src, srcStep, dst, dstStep, roi, border,
                                                                                spec, buffer);
}
StatusCode rvxiMorphGradientBorder_16u_C1R(const uint16_t *src, int32_t srcStep, uint16_t *dst, int32_t dstStep,
                                           RoiSize roi, BorderKind border, uint16_t, const MorphAdvSpec *spec,
                                           uint8_t *buffer) {
    return operate<Pixels<std::uint16_t, 1>, &gradient<Pixels<std::uint16_t, 1>>>(src, srcStep, dst, dstStep, roi,
                                                                                  border, spec, buffer);
}
StatusCode rvxiMorphGradientBorder_16s_C1R(const int16_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep,
                                           RoiSize roi, BorderKind border, int16_t, const MorphAdvSpec *spec,
                                           uint8_t *buffer) {
    return operate<Pixels<std::int16_t, 1>, &gradient<Pixels<std::int16_t, 1>>>(src, srcStep, dst, dstStep, roi, border,
                                                                                spec, buffer);
}
StatusCode rvxiMorphGradientBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                           BorderKind border, float, const MorphAdvSpec *spec, uint8_t *buffer) {
    return operate<Pixels<float, 1>, &gradient<Pixels<float, 1>>>(src, srcStep, dst, dstStep, roi, border, spec,
                                                                  buffer);
}
StatusCode rvxiMorphGradientBorder_32f_C3R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                           BorderKind border, float, const MorphAdvSpec *spec, uint8_t *buffer) {
    return operate<Pixels<float, 3>, &gradient<Pixels<float, 3>>>(src, srcStep, dst, dstStep, roi, border, spec,
                                                                  buffer);
}
StatusCode rvxiMorphGradientBorder_32f_C4R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                           BorderKind border, float, const MorphAdvSpec *spec, uint8_t *buffer) {
    return operate<Pixels<float, 4>, &gradient<Pixels<float, 4>>>(src, srcStep, dst, dstStep, roi, border, spec,
                                                                  buffer);
}
StatusCode rvxiMorphGradientBorder_1u_C1R(const uint8_t *src, int32_t srcStep, int32_t srcBitOffset, uint8_t *dst,
                                          int32_t dstStep, int32_t dstBitOffset, RoiSize roi, BorderKind border,
                                          uint8_t, const MorphAdvSpec *spec, uint8_t *buffer) {
    return operateBits<&gradient<Bits>>(src, srcStep, srcBitOffset, dst, dstStep, dstBitOffset, roi, border, spec,
                                        buffer);
}