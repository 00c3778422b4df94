// Erosion and dilation: the calls of both generations of the interface. The mask's shape, found at initialisation,
// chooses the kernel; all give the definition's result:
//
//     rectangle   the separable filter of rank_filter.cpp; 3x3 to 7x7 and short rows: small_window.cpp
//     ellipse     run_kernel.h, unless the mask is so small that its positions are fewer steps
//     general     position_kernel.h, which also stands in where a scratch buffer is too small for the others
//     empty       a copy
#include "frame/api.h"
#include "kernel/checks.h"
#include "morph/flat_filter.h"
#include "morph/morph_spec.h"
#include "morph/position_kernel.h"
#include "morph/rank_filter.h"
#include "morph/run_kernel.h"

namespace rvxcv {
namespace {

// The set elements of a mask, row by row.
class MaskPositions {
public:
    explicit MaskPositions(const MorphSpec &spec) : spec_(spec) {}

    Window reach() const { return {-spec_.anchorX, -spec_.anchorY, spec_.rightExtent, spec_.bottomExtent}; }

    template <class Take> void forRows(const Take &take) const {
        for (std::int64_t j = 0; j < spec_.maskHeight; ++j) {
            const std::uint8_t *row = spec_.maskCopy + j * spec_.maskWidth;
            if (std::any_of(row, row + spec_.maskWidth, [](std::uint8_t m) { return m != 0; })) {
                take(j - spec_.anchorY);
            }
        }
    }

    template <class Take> void forGroups(std::int64_t first, std::int64_t last, const Take &take) const {
        PixelOffset places[mostPlaces];
        int count = 0;
        const auto flush = [&] {
            withConstant<mostPlaces>(count, [&]<int fixed>(std::integral_constant<int, fixed>) {
                PixelOffset group[fixed];
                std::copy_n(places, fixed, group);
                take(group, PlainTerms<fixed>{});
            });
            count = 0;
        };
        for (std::int64_t j = 0; j < spec_.maskHeight; ++j) {
            for (std::int64_t i = first + spec_.anchorX; i <= last + spec_.anchorX; ++i) {
                if (isSet(i, j)) {
                    places[count++] = {i - spec_.anchorX, j - spec_.anchorY};
                    if (count == mostPlaces) {
                        flush();
                    }
                }
            }
        }
        flush();
    }

    template <class Take> void forShared(const Take &take) const {
        SharedPlaces shared;
        for (std::int64_t j = 0; j <= spec_.maskHeight; ++j) {
            for (std::int64_t i = 0; i < spec_.maskWidth; ++i) {
                const bool first = j < spec_.maskHeight && isSet(i, j), second = j > 0 && isSet(i, j - 1);
                if (first || second) {
                    shared.add(first && second ? SharedPlaces::underBoth
                               : first         ? SharedPlaces::underFirst
                                               : SharedPlaces::underSecond,
                               {i - spec_.anchorX, j - spec_.anchorY});
                    if (shared.count() == SharedPlaces::most) {
                        take(shared);
                        shared = {};
                    }
                }
            }
        }
        if (shared.count() > 0) {
            take(shared);
        }
    }
    static constexpr bool shares = true;
    std::int64_t count() const {
        return std::count_if(spec_.maskCopy, spec_.maskCopy + std::int64_t{spec_.maskWidth} * spec_.maskHeight,
                             [](std::uint8_t m) { return m != 0; });
    }

private:
    bool isSet(std::int64_t i, std::int64_t j) const { return spec_.maskCopy[j * spec_.maskWidth + i] != 0; }

    const MorphSpec &spec_;
};

template <class T, class Op> bool runShape(const MorphTask<T> &task, const MorphSpec &spec) {
    if (spec.shape == MaskRectangle) {
        return filterWindow<T, Op>(task, rectangleOf(spec));
    }
    if (spec.shape == MaskEllipse) {
        RunKernel<T, Op> kernel(task, spec);
        return kernel.pays(kernel.positions()) && kernel.filter();
    }
    return false;
}

} // namespace

template <class T, class Op> void filterFlat(const MorphTask<T> &task, const MorphSpec &spec) {
    if (spec.shape == MaskEmpty) {
        copyRows(task);
    } else if (!runShape<T, Op>(task, spec)) {
        const MaskPositions positions(spec);
        PositionKernel<T, Op, MaskPositions>(task, positions).run();
    }
}

template void filterFlat<std::uint8_t, Minimum>(const MorphTask<std::uint8_t> &, const MorphSpec &);
template void filterFlat<std::uint8_t, Maximum>(const MorphTask<std::uint8_t> &, const MorphSpec &);
template void filterFlat<std::uint16_t, Minimum>(const MorphTask<std::uint16_t> &, const MorphSpec &);
template void filterFlat<std::uint16_t, Maximum>(const MorphTask<std::uint16_t> &, const MorphSpec &);
template void filterFlat<std::int16_t, Minimum>(const MorphTask<std::int16_t> &, const MorphSpec &);
template void filterFlat<std::int16_t, Maximum>(const MorphTask<std::int16_t> &, const MorphSpec &);
template void filterFlat<float, Minimum>(const MorphTask<float> &, const MorphSpec &);
template void filterFlat<float, Maximum>(const MorphTask<float> &, const MorphSpec &);

namespace {

// All checks are done. Steps need not count channels: destination rows that overlap are made one after another.
template <class Op, int channels, class T>
StatusCode filter(const T *src, std::int32_t srcStep, T *dst, std::int32_t dstStep, RoiSize roi, BorderKind border,
                  const MorphSpec &spec, std::uint8_t *buffer) {
    MorphTask<T> task{
        Plane{src, srcStep}, Plane{dst, dstStep}, roi, 0, roi.height, channels, Border(border), buffer, 0};
    task.scratchBytes =
        morphBufferBytes({spec.typeCode, spec.channels}, spec.roiWidth, {spec.maskWidth, spec.maskHeight});
    if (dstStep >= roi.width * task.pixelBytes()) {
        filterFlat<T, Op>(task, spec);
        return StatusOk;
    }
    for (std::int64_t y = 0; y < roi.height; ++y) {
        task.firstRow = y;
        task.lastRow = y + 1;
        filterFlat<T, Op>(task, spec);
    }
    return StatusOk;
}

template <class T>
Checks imageChecks(const T *src, std::int32_t srcStep, T *dst, std::int32_t dstStep, RoiSize roi, const void *record,
                   const void *buffer) {
    Checks checks;
    checks.pointers(src, dst, record, buffer).size(roi).steps(rowBytes<T>(roi.width), srcStep, dstStep);
    checks.multiples(sizeof(T), srcStep, dstStep);
    return checks;
}

template <class Op, int channels, class T>
StatusCode filterBorder(const T *src, std::int32_t srcStep, T *dst, std::int32_t dstStep, RoiSize roi,
                        BorderKind border, const MorphSpec *spec, std::uint8_t *buffer) {
    Checks checks = imageChecks(src, srcStep, dst, dstStep, roi, spec, buffer);
    checks.require((border & 15) == BorderReplicate || (border & 15) == BorderInMemory, StatusBadBorder);
    if (checks.failed()) {
        return checks.status();
    }
    const MorphSpec fields = readMorphSpec(spec);
    if (roi.width > fields.roiWidth) {
        return StatusBadSize;
    }
    return filter<Op, channels>(src, srcStep, dst, dstStep, roi, border, fields, buffer);
}

template <class Op, int channels, class T>
StatusCode filterReplicate(const T *src, std::int32_t srcStep, T *dst, std::int32_t dstStep, RoiSize roi,
                           BorderKind border, MorphState *state) {
    Checks checks = imageChecks(src, srcStep, dst, dstStep, roi, state, state);
    checks.require(border == BorderReplicate, StatusBadArgument);
    if (checks.failed()) {
        return checks.status();
    }
    const MorphSpec fields = readMorphSpec(specOf(state));
    if (roi.width > fields.roiWidth) {
        return StatusBadSize;
    }
    const std::int64_t specBytes = morphSpecBytes(fields.typeCode, {fields.maskWidth, fields.maskHeight});
    return filter<Op, channels>(src, srcStep, dst, dstStep, roi, border, fields,
                                reinterpret_cast<std::uint8_t *>(state) + specBytes);
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiErodeBorder_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                  BorderKind border, uint8_t, const MorphSpec *spec, uint8_t *buffer) {
    return filterBorder<Minimum, 1>(src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiErodeBorder_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                  BorderKind border, uint8_t, const MorphSpec *spec, uint8_t *buffer) {
    return filterBorder<Minimum, 3>(src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiErodeBorder_8u_C4R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                  BorderKind border, uint8_t, const MorphSpec *spec, uint8_t *buffer) {
    return filterBorder<Minimum, 4>(src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiErodeBorder_16u_C1R(const uint16_t *src, int32_t srcStep, uint16_t *dst, int32_t dstStep, RoiSize roi,
                                   BorderKind border, uint16_t, const MorphSpec *spec, uint8_t *buffer) {
    return filterBorder<Minimum, 1>(src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiErodeBorder_16s_C1R(const int16_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep, RoiSize roi,
                                   BorderKind border, int16_t, const MorphSpec *spec, uint8_t *buffer) {
    return filterBorder<Minimum, 1>(src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiErodeBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                   BorderKind border, float, const MorphSpec *spec, uint8_t *buffer) {
    return filterBorder<Minimum, 1>(src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiErodeBorder_32f_C3R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                   BorderKind border, float, const MorphSpec *spec, uint8_t *buffer) {
    return filterBorder<Minimum, 3>(src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiErodeBorder_32f_C4R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                   BorderKind border, float, const MorphSpec *spec, uint8_t *buffer) {
    return filterBorder<Minimum, 4>(src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiDilateBorder_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                   BorderKind border, uint8_t, const MorphSpec *spec, uint8_t *buffer) {
    return filterBorder<Maximum, 1>(src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiDilateBorder_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                   BorderKind border, uint8_t, const MorphSpec *spec, uint8_t *buffer) {
    return filterBorder<Maximum, 3>(src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiDilateBorder_8u_C4R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                   BorderKind border, uint8_t, const MorphSpec *spec, uint8_t *buffer) {
    return filterBorder<Maximum, 4>(src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiDilateBorder_16u_C1R(const uint16_t *src, int32_t srcStep, uint16_t *dst, int32_t dstStep, RoiSize roi,
                                    BorderKind border, uint16_t, const MorphSpec *spec, uint8_t *buffer) {
    return filterBorder<Maximum, 1>(src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiDilateBorder_16s_C1R(const int16_t *src, int32_t srcStep, int16_t *dst, int32_t dstStep, RoiSize roi,
                                    BorderKind border, int16_t, const MorphSpec *spec, uint8_t *buffer) {
    return filterBorder<Maximum, 1>(src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiDilateBorder_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                    BorderKind border, float, const MorphSpec *spec, uint8_t *buffer) {
    return filterBorder<Maximum, 1>(src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiDilateBorder_32f_C3R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                    BorderKind border, float, const MorphSpec *spec, uint8_t *buffer) {
    return filterBorder<Maximum, 3>(src, srcStep, dst, dstStep, roi, border, spec, buffer);
}
StatusCode rvxiDilateBorder_32f_C4R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                    BorderKind border, float, const MorphSpec *spec, uint8_t *buffer) {
    return filterBorder<Maximum, 4>(src, srcStep, dst, dstStep, roi, border, spec, buffer);
}

StatusCode rvxiErodeBorderReplicate_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                           RoiSize roi, BorderKind border, MorphState *state) {
    return filterReplicate<Minimum, 1>(src, srcStep, dst, dstStep, roi, border, state);
}
StatusCode rvxiErodeBorderReplicate_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                           RoiSize roi, BorderKind border, MorphState *state) {
    return filterReplicate<Minimum, 3>(src, srcStep, dst, dstStep, roi, border, state);
}
StatusCode rvxiErodeBorderReplicate_8u_C4R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                           RoiSize roi, BorderKind border, MorphState *state) {
    return filterReplicate<Minimum, 4>(src, srcStep, dst, dstStep, roi, border, state);
}
StatusCode rvxiErodeBorderReplicate_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                            BorderKind border, MorphState *state) {
    return filterReplicate<Minimum, 1>(src, srcStep, dst, dstStep, roi, border, state);
}
StatusCode rvxiErodeBorderReplicate_32f_C3R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                            BorderKind border, MorphState *state) {
    return filterReplicate<Minimum, 3>(src, srcStep, dst, dstStep, roi, border, state);
}
StatusCode rvxiErodeBorderReplicate_32f_C4R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                            BorderKind border, MorphState *state) {
    return filterReplicate<Minimum, 4>(src, srcStep, dst, dstStep, roi, border, state);
}
StatusCode rvxiDilateBorderReplicate_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                            RoiSize roi, BorderKind border, MorphState *state) {
    return filterReplicate<Maximum, 1>(src, srcStep, dst, dstStep, roi, border, state);
}
StatusCode rvxiDilateBorderReplicate_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                            RoiSize roi, BorderKind border, MorphState *state) {
    return filterReplicate<Maximum, 3>(src, srcStep, dst, dstStep, roi, border, state);
}
StatusCode rvxiDilateBorderReplicate_8u_C4R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                            RoiSize roi, BorderKind border, MorphState *state) {
    return filterReplicate<Maximum, 4>(src, srcStep, dst, dstStep, roi, border, state);
}
StatusCode rvxiDilateBorderReplicate_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                             RoiSize roi, BorderKind border, MorphState *state) {
    return filterReplicate<Maximum, 1>(src, srcStep, dst, dstStep, roi, border, state);
}
StatusCode rvxiDilateBorderReplicate_32f_C3R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                             RoiSize roi, BorderKind border, MorphState *state) {
    return filterReplicate<Maximum, 3>(src, srcStep, dst, dstStep, roi, border, state);
}
StatusCode rvxiDilateBorderReplicate_32f_C4R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                             RoiSize roi, BorderKind border, MorphState *state) {
    return filterReplicate<Maximum, 4>(src, srcStep, dst, dstStep, roi, border, state);
}
