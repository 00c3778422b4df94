// Patches around points with real coordinates, sampled bilinearly.
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

template <class S, class D> StatusCode copyIntersection(const PatchCall<S, D> &call, Point2i *min, Point2i *max) {
    Checks checks = call.check(min, max);
    if (checks.failed()) {
        return checks.status();
    }
    const SubpixAxis x = subpixAxis(call.centre.x, call.dstRoi.width),
                     y = subpixAxis(call.centre.y, call.dstRoi.height);
    const Interval columns = x.inside(call.dstRoi.width, call.srcRoi.width);
    const Interval rows = y.inside(call.dstRoi.height, call.srcRoi.height);
    if (columns.empty() || rows.empty()) {
        return StatusError;
    }
    const Plane<const S> src{call.src, call.srcStep};
    const Plane<D> dst{call.dst, call.dstStep};
    samplePatch(Plane<const S>{src.row(y.index + rows.first) + x.index + columns.first, src.step},
                Plane<D>{dst.row(rows.first) + columns.first, dst.step}, columns.count(), rows.count(), x.fraction,
                y.fraction);
    *min = {static_cast<std::int32_t>(columns.first), static_cast<std::int32_t>(rows.first)};
    *max = {static_cast<std::int32_t>(columns.last), static_cast<std::int32_t>(rows.last)};
    return StatusOk;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiCopySubpixIntersect_32f_C1R(const float *src, int32_t srcStep, RoiSize srcRoi, float *dst,
                                           int32_t dstStep, RoiSize dstRoi, Point2f centre, Point2i *min,
                                           Point2i *max) {
    return copyIntersection<float, float>({src, srcStep, srcRoi, dst, dstStep, dstRoi, centre}, min, max);
}
