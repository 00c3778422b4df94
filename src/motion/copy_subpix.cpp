// Patches around points with real coordinates, sampled bilinearly. Inside the image the samples are the tracker's; a
// whole patch has up to nine parts, since before the first and behind the last column and row of the image it is
// continued by its edge: such rows are samples of an image whose rows are all the same, such columns one sample a row.
#include "frame/api.h"
#include "kernel/checks.h"
#include "motion/subpix.h"

namespace rvxcv {
namespace {

// What every copy has; S and D are the pixel types.
template <class S, class D> struct PatchCall {
    const S *src;
    std::int32_t srcStep;
    RoiSize srcRoi;
    D *dst;
    std::int32_t dstStep;
    RoiSize dstRoi;
    Point2f centre;

    // `more` are the pointers that a member has beside the images.
    template <class... More> Checks check(const More *...more) const {
        Checks checks;
        checks.pointers(src, dst, more...).size(srcRoi).size(dstRoi);
        checks.steps(rowBytes<S>(srcRoi.width), srcStep).steps(rowBytes<D>(dstRoi.width), dstStep);
        checks.multiples(sizeof(S), srcStep).multiples(sizeof(D), dstStep);
        checks.require(isCentre(centre.x) && isCentre(centre.y), StatusOutOfRange);
        return checks;
    }
};

// A scale factor's power of two, as a rule for samples; of any factor, since it is formed before the factor is checked.
bool isScaleFactor(std::int32_t scaleFactor) { return scaleFactor >= -16 && scaleFactor <= 16; }
Scaled scaledBy(std::int32_t scaleFactor) { return {splat(std::scalbln(1.0f, -long{scaleFactor}))}; }

template <class S, class D, class Rule> class PatchCopy {
public:
    PatchCopy(const PatchCall<S, D> &call, Rule rule)
        : src_{call.src, call.srcStep}, dst_{call.dst, call.dstStep}, srcRoi_(call.srcRoi), dstRoi_(call.dstRoi),
          x_(subpixAxis(call.centre.x, call.dstRoi.width)), y_(subpixAxis(call.centre.y, call.dstRoi.height)),
          rule_(rule) {}

    StatusCode intersection(Point2i *min, Point2i *max) const {
        const IndexRange columns = x_.inside(dstRoi_.width, srcRoi_.width);
        const IndexRange rows = y_.inside(dstRoi_.height, srcRoi_.height);
        if (columns.empty() || rows.empty()) {
            return StatusError;
        }
        sampleRows(columns, rows, y_.index + rows.first, src_.step);
        *min = {static_cast<std::int32_t>(columns.first), static_cast<std::int32_t>(rows.first)};
        *max = {static_cast<std::int32_t>(columns.last), static_cast<std::int32_t>(rows.last)};
        return StatusOk;
    }

    void whole() const {
        const Parts parts = partsOf(y_, dstRoi_.height, srcRoi_.height);
        acrossAllColumns(parts.before, 0, 0);
        acrossAllColumns(parts.inside, y_.index + parts.inside.first, src_.step);
        acrossAllColumns(parts.behind, srcRoi_.height - 1, 0);
    }

private:
    // Of a patch's columns or rows: those that are samples of the first pixel alone, those with neighbours in the
    // image, those of the last pixel.
    struct Parts {
        IndexRange before, inside, behind;
    };
    static Parts partsOf(SubpixAxis axis, std::int64_t size, std::int64_t length) {
        const std::int64_t next = axis.readsNext() ? 1 : 0;
        const std::int64_t first = std::clamp<std::int64_t>(-axis.index, 0, size);
        const std::int64_t end = std::clamp(length - next - axis.index, first, size);
        return {{0, first - 1}, {first, end - 1}, {end, size - 1}};
    }

    // Rows of the patch; the first of them is sampled at row j of the source and, `step` bytes on, at the one below it.
    void acrossAllColumns(IndexRange rows, std::int64_t j, std::int64_t step) const {
        if (rows.empty()) {
            return;
        }
        const Parts parts = partsOf(x_, dstRoi_.width, srcRoi_.width);
        fillColumns(parts.before, rows, src_.row(j), step);
        if (!parts.inside.empty()) {
            sampleRows(parts.inside, rows, j, step);
        }
        fillColumns(parts.behind, rows, src_.row(j) + srcRoi_.width - 1, step);
    }

    struct FillRow {
        D *dst;
        F32x8 value;
        template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
            const F32x8 samples[] = {value};
            storeSamples(dst + x, samples, span);
        }
    };
    // Every column has the sample between a pixel of the edge and the same one again, by the formula: it is no number
    // where that is infinite.
    void fillColumns(IndexRange columns, IndexRange rows, const S *edge, std::int64_t step) const {
        if (columns.empty()) {
            return;
        }
        withNeighbours(x_.fraction, y_.fraction, [&]<class Right, class Below>(Right, Below) {
            const auto joined = [&](const S *p) {
                const F32x8 pixel = splat(static_cast<float>(loadScalar(p)));
                return Right::value ? between(splat(x_.fraction), pixel, pixel) : pixel;
            };
            for (std::int64_t y = rows.first; y <= rows.last; ++y, edge = byteOffset(edge, step)) {
                F32x8 value = joined(edge);
                if constexpr (Below::value) {
                    value = between(splat(y_.fraction), value, joined(byteOffset(edge, step)));
                }
                walkRow<8>(columns.count(), FillRow{dst_.row(y) + columns.first, rule_(value)});
            }
        });
    }

    // Columns inside the image.
    void sampleRows(IndexRange columns, IndexRange rows, std::int64_t j, std::int64_t step) const {
        const Plane<const S> src{src_.row(j) + x_.index + columns.first, step};
        const Plane<D> dst{dst_.row(rows.first) + columns.first, dst_.step};
        samplePatch(src, dst, columns.count(), rows.count(), x_.fraction, y_.fraction, rule_);
    }

    Plane<const S> src_;
    Plane<D> dst_;
    RoiSize srcRoi_, dstRoi_;
    SubpixAxis x_, y_;
    Rule rule_;
};

template <class S, class D, class Rule>
StatusCode copyPatch(const PatchCall<S, D> &call, const Checks &checks, Rule rule) {
    if (checks.failed()) {
        return checks.status();
    }
    PatchCopy<S, D, Rule>(call, rule).whole();
    return StatusOk;
}
template <class S, class D, class Rule>
StatusCode copyIntersection(const PatchCall<S, D> &call, const Checks &checks, Point2i *min, Point2i *max, Rule rule) {
    return checks.failed() ? checks.status() : PatchCopy<S, D, Rule>(call, rule).intersection(min, max);
}

template <class S, class D> StatusCode copyPatch(const PatchCall<S, D> &call) {
    return copyPatch(call, call.check(), AsItIs{});
}
template <class S, class D> StatusCode copyIntersection(const PatchCall<S, D> &call, Point2i *min, Point2i *max) {
    return copyIntersection(call, call.check(min, max), min, max, AsItIs{});
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiCopySubpix_8u_C1R(const uint8_t *src, int32_t srcStep, RoiSize srcRoi, uint8_t *dst, int32_t dstStep,
                                 RoiSize dstRoi, Point2f centre) {
    return copyPatch<uint8_t, uint8_t>({src, srcStep, srcRoi, dst, dstStep, dstRoi, centre});
}
StatusCode rvxiCopySubpix_8u32f_C1R(const uint8_t *src, int32_t srcStep, RoiSize srcRoi, float *dst, int32_t dstStep,
                                    RoiSize dstRoi, Point2f centre) {
    return copyPatch<uint8_t, float>({src, srcStep, srcRoi, dst, dstStep, dstRoi, centre});
}
StatusCode rvxiCopySubpix_16u_C1R(const uint16_t *src, int32_t srcStep, RoiSize srcRoi, uint16_t *dst, int32_t dstStep,
                                  RoiSize dstRoi, Point2f centre) {
    return copyPatch<uint16_t, uint16_t>({src, srcStep, srcRoi, dst, dstStep, dstRoi, centre});
}
StatusCode rvxiCopySubpix_16u32f_C1R(const uint16_t *src, int32_t srcStep, RoiSize srcRoi, float *dst, int32_t dstStep,
                                     RoiSize dstRoi, Point2f centre) {
    return copyPatch<uint16_t, float>({src, srcStep, srcRoi, dst, dstStep, dstRoi, centre});
}
StatusCode rvxiCopySubpix_32f_C1R(const float *src, int32_t srcStep, RoiSize srcRoi, float *dst, int32_t dstStep,
                                  RoiSize dstRoi, Point2f centre) {
    return copyPatch<float, float>({src, srcStep, srcRoi, dst, dstStep, dstRoi, centre});
}
StatusCode rvxiCopySubpix_8u16u_C1RSfs(const uint8_t *src, int32_t srcStep, RoiSize srcRoi, uint16_t *dst,
                                       int32_t dstStep, RoiSize dstRoi, Point2f centre, int32_t scaleFactor) {
    const PatchCall<uint8_t, uint16_t> call{src, srcStep, srcRoi, dst, dstStep, dstRoi, centre};
    Checks checks = call.check();
    checks.require(isScaleFactor(scaleFactor), StatusOutOfRange);
    return copyPatch(call, checks, scaledBy(scaleFactor));
}
StatusCode rvxiCopySubpixIntersect_8u_C1R(const uint8_t *src, int32_t srcStep, RoiSize srcRoi, uint8_t *dst,
                                          int32_t dstStep, RoiSize dstRoi, Point2f centre, Point2i *min, Point2i *max) {
    return copyIntersection<uint8_t, uint8_t>({src, srcStep, srcRoi, dst, dstStep, dstRoi, centre}, min, max);
}
StatusCode rvxiCopySubpixIntersect_8u32f_C1R(const uint8_t *src, int32_t srcStep, RoiSize srcRoi, float *dst,
                                             int32_t dstStep, RoiSize dstRoi, Point2f centre, Point2i *min,
                                             Point2i *max) {
    return copyIntersection<uint8_t, float>({src, srcStep, srcRoi, dst, dstStep, dstRoi, centre}, min, max);
}
StatusCode rvxiCopySubpixIntersect_16u_C1R(const uint16_t *src, int32_t srcStep, RoiSize srcRoi, uint16_t *dst,
                                           int32_t dstStep, RoiSize dstRoi, Point2f centre, Point2i *min,
                                           Point2i *max) {
    return copyIntersection<uint16_t, uint16_t>({src, srcStep, srcRoi, dst, dstStep, dstRoi, centre}, min, max);
}
StatusCode rvxiCopySubpixIntersect_16u32f_C1R(const uint16_t *src, int32_t srcStep, RoiSize srcRoi, float *dst,
                                              int32_t dstStep, RoiSize dstRoi, Point2f centre, Point2i *min,
                                              Point2i *max) {
    return copyIntersection<uint16_t, float>({src, srcStep, srcRoi, dst, dstStep, dstRoi, centre}, min, max);
}
StatusCode rvxiCopySubpixIntersect_32f_C1R(const float *src, int32_t srcStep, RoiSize srcRoi, float *dst,
                                           int32_t dstStep, RoiSize dstRoi, Point2f centre, Point2i *min,
                                           Point2i *max) {
    return copyIntersection<float, float>({src, srcStep, srcRoi, dst, dstStep, dstRoi, centre}, min, max);
}
StatusCode rvxiCopySubpixIntersect_8u16u_C1RSfs(const uint8_t *src, int32_t srcStep, RoiSize srcRoi, uint16_t *dst,
                                                int32_t dstStep, RoiSize dstRoi, Point2f centre, Point2i *min,
                                                Point2i *max, int32_t scaleFactor) {
    const PatchCall<uint8_t, uint16_t> call{src, srcStep, srcRoi, dst, dstStep, dstRoi, centre};
    Checks checks = call.check(min, max);
    checks.require(isScaleFactor(scaleFactor), StatusOutOfRange);
    return copyIntersection(call, checks, min, max, scaledBy(scaleFactor));
}
