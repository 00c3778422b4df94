// Integral images, deviations of rectangles, norms, means and extrema.
#include "planes.h"

#include <algorithm>

namespace {

using namespace fuzz;

// Outputs have one row and column more than the source, tilted ones two.
template <class... P> int extra(StatusCode (*member)(P...)) {
    return std::string_view(nameOf(member)).starts_with("rvxiTilted") ? 2 : 1;
}

// A larger region; what is not legal, or not affordable, stays so.
RoiSize grown(RoiSize roi, std::int32_t width, std::int32_t height) {
    constexpr std::int32_t most = INT32_MAX / 2;
    const bool sensible = roi.width > 0 && roi.height > 0 && roi.width < most && roi.height < most;
    return sensible ? RoiSize{roi.width + width, roi.height + height} : roi;
}

template <class S, class D, class... P>
void integral(Call &call, StatusCode (*member)(const S *, std::int32_t, D *, std::int32_t, RoiSize, P...)) {
    const RoiSize roi = call.in.roi();
    Image<const S> src(call.in, roi);
    Image<D> dst(call.in, grown(roi, extra(member), extra(member)));
    call.run(member, src, dst, roi, call.in.any<P>()...);
}

template <class S, class D, class Q, class... P>
void integral(Call &call,
              StatusCode (*member)(const S *, std::int32_t, D *, std::int32_t, Q *, std::int32_t, RoiSize, P...)) {
    const RoiSize roi = call.in.roi();
    Image<const S> src(call.in, roi);
    Image<D> dst(call.in, grown(roi, extra(member), extra(member)));
    Image<Q> sqr(call.in, grown(roi, extra(member), extra(member)));
    call.run(member, src, dst, sqr, roi, call.in.any<P>()...);
}

template <class S, class Q, class D, class... P>
void deviation(Call &call, StatusCode (*member)(const S *, std::int32_t, const Q *, std::int32_t, D *, std::int32_t,
                                                RoiSize, Rect2i, P...)) {
    const bool tilted = extra(member) == 2;
    const RoiSize roi = call.in.roi();
    const Rect2i rect = {call.in.within(tilted ? 8 : 0, 20), call.in.within(0, 8), call.in.within(1, 9),
                         call.in.within(1, 9)};
    const bool wrong = rect.x < 0 || rect.y < 0 || rect.width < 1 || rect.height < 1 ||
                       (tilted && rect.x < std::int64_t{rect.height} - 1);
    call.refuse(wrong);
    // So far the windows of a region reach into the integral images; a step needs not cover a tilted window's last
    // column. No step covers a window that is very wide. Of very high ones no step tells.
    constexpr std::int32_t most = 4096;
    const std::int64_t elements = std::int64_t{roi.width} + rect.x + rect.width;
    const std::int64_t below = std::int64_t{rect.y} + rect.height + (tilted ? std::int64_t{rect.width} + 1 : 0);
    if (!wrong && elements <= most && below > most) {
        throw Abandon();
    }
    RoiSize read = roi;
    if (!wrong && roi.width > 0 && roi.height > 0) {
        read.width = static_cast<std::int32_t>(std::min<std::int64_t>(elements + (tilted ? 1 : 0), INT32_MAX));
        read.height = static_cast<std::int32_t>(std::min<std::int64_t>(roi.height + below, INT32_MAX));
    }
    const std::int64_t least = std::max<std::int64_t>(wrong ? 0 : elements, 0);
    Image<const S> sum(call.in, Shape{read, 1, {}, least * static_cast<std::int64_t>(sizeof(S))});
    Image<const Q> sqr(call.in, Shape{read, 1, {}, least * static_cast<std::int64_t>(sizeof(Q))});
    Image<D> dst(call.in, roi);
    call.run(member, sum, sqr, dst, roi, rect, call.in.any<P>()...);
}

} // namespace

const std::vector<fuzz::Member> fuzz::members = {
    MEMBER(integral, rvxiIntegral_8u32s_C1R),
    MEMBER(integral, rvxiIntegral_8u32f_C1R),
    MEMBER(integral, rvxiIntegral_32f_C1R),
    MEMBER(integral, rvxiSqrIntegral_8u32s_C1R),
    MEMBER(integral, rvxiSqrIntegral_8u32s64f_C1R),
    MEMBER(integral, rvxiSqrIntegral_8u32f64f_C1R),
    MEMBER(integral, rvxiTiltedIntegral_8u32s_C1R),
    MEMBER(integral, rvxiTiltedIntegral_8u32f_C1R),
    MEMBER(integral, rvxiTiltedSqrIntegral_8u32s_C1R),
    MEMBER(integral, rvxiTiltedSqrIntegral_8u32s64f_C1R),
    MEMBER(integral, rvxiTiltedSqrIntegral_8u32f64f_C1R),
    MEMBER(deviation, rvxiRectStdDev_32f_C1R),
    MEMBER(deviation, rvxiRectStdDev_32s32f_C1R),
    MEMBER(deviation, rvxiRectStdDev_32s_C1RSfs),
    MEMBER(deviation, rvxiTiltedRectStdDev_32f_C1R),
    MEMBER(deviation, rvxiTiltedRectStdDev_32s32f_C1R),
    MEMBER(deviation, rvxiTiltedRectStdDev_32s_C1RSfs),
    MEMBER(planes, rvxiNorm_Inf_8u_C1MR),
    MEMBER(planes, rvxiNorm_Inf_8s_C1MR),
    MEMBER(planes, rvxiNorm_Inf_16u_C1MR),
    MEMBER(planes, rvxiNorm_Inf_32f_C1MR),
    MEMBER(planes, rvxiNorm_Inf_8u_C3CMR),
    MEMBER(planes, rvxiNorm_Inf_8s_C3CMR),
    MEMBER(planes, rvxiNorm_Inf_16u_C3CMR),
    MEMBER(planes, rvxiNorm_Inf_32f_C3CMR),
    MEMBER(planes, rvxiNorm_L1_8u_C1MR),
    MEMBER(planes, rvxiNorm_L1_8s_C1MR),
    MEMBER(planes, rvxiNorm_L1_16u_C1MR),
    MEMBER(planes, rvxiNorm_L1_32f_C1MR),
    MEMBER(planes, rvxiNorm_L1_8u_C3CMR),
    MEMBER(planes, rvxiNorm_L1_8s_C3CMR),
    MEMBER(planes, rvxiNorm_L1_16u_C3CMR),
    MEMBER(planes, rvxiNorm_L1_32f_C3CMR),
    MEMBER(planes, rvxiNorm_L2_8u_C1MR),
    MEMBER(planes, rvxiNorm_L2_8s_C1MR),
    MEMBER(planes, rvxiNorm_L2_16u_C1MR),
    MEMBER(planes, rvxiNorm_L2_32f_C1MR),
    MEMBER(planes, rvxiNorm_L2_8u_C3CMR),
    MEMBER(planes, rvxiNorm_L2_8s_C3CMR),
    MEMBER(planes, rvxiNorm_L2_16u_C3CMR),
    MEMBER(planes, rvxiNorm_L2_32f_C3CMR),
    MEMBER(planes, rvxiNormDiff_Inf_8u_C1MR),
    MEMBER(planes, rvxiNormDiff_Inf_8s_C1MR),
    MEMBER(planes, rvxiNormDiff_Inf_16u_C1MR),
    MEMBER(planes, rvxiNormDiff_Inf_32f_C1MR),
    MEMBER(planes, rvxiNormDiff_Inf_8u_C3CMR),
    MEMBER(planes, rvxiNormDiff_Inf_8s_C3CMR),
    MEMBER(planes, rvxiNormDiff_Inf_16u_C3CMR),
    MEMBER(planes, rvxiNormDiff_Inf_32f_C3CMR),
    MEMBER(planes, rvxiNormDiff_L1_8u_C1MR),
    MEMBER(planes, rvxiNormDiff_L1_8s_C1MR),
    MEMBER(planes, rvxiNormDiff_L1_16u_C1MR),
    MEMBER(planes, rvxiNormDiff_L1_32f_C1MR),
    MEMBER(planes, rvxiNormDiff_L1_8u_C3CMR),
    MEMBER(planes, rvxiNormDiff_L1_8s_C3CMR),
    MEMBER(planes, rvxiNormDiff_L1_16u_C3CMR),
    MEMBER(planes, rvxiNormDiff_L1_32f_C3CMR),
    MEMBER(planes, rvxiNormDiff_L2_8u_C1MR),
    MEMBER(planes, rvxiNormDiff_L2_8s_C1MR),
    MEMBER(planes, rvxiNormDiff_L2_16u_C1MR),
    MEMBER(planes, rvxiNormDiff_L2_32f_C1MR),
    MEMBER(planes, rvxiNormDiff_L2_8u_C3CMR),
    MEMBER(planes, rvxiNormDiff_L2_8s_C3CMR),
    MEMBER(planes, rvxiNormDiff_L2_16u_C3CMR),
    MEMBER(planes, rvxiNormDiff_L2_32f_C3CMR),
    MEMBER(planes, rvxiNormRel_Inf_8u_C1MR),
    MEMBER(planes, rvxiNormRel_Inf_8s_C1MR),
    MEMBER(planes, rvxiNormRel_Inf_16u_C1MR),
    MEMBER(planes, rvxiNormRel_Inf_32f_C1MR),
    MEMBER(planes, rvxiNormRel_Inf_8u_C3CMR),
    MEMBER(planes, rvxiNormRel_Inf_8s_C3CMR),
    MEMBER(planes, rvxiNormRel_Inf_16u_C3CMR),
    MEMBER(planes, rvxiNormRel_Inf_32f_C3CMR),
    MEMBER(planes, rvxiNormRel_L1_8u_C1MR),
    MEMBER(planes, rvxiNormRel_L1_8s_C1MR),
    MEMBER(planes, rvxiNormRel_L1_16u_C1MR),
    MEMBER(planes, rvxiNormRel_L1_32f_C1MR),
    MEMBER(planes, rvxiNormRel_L1_8u_C3CMR),
    MEMBER(planes, rvxiNormRel_L1_8s_C3CMR),
    MEMBER(planes, rvxiNormRel_L1_16u_C3CMR),
    MEMBER(planes, rvxiNormRel_L1_32f_C3CMR),
    MEMBER(planes, rvxiNormRel_L2_8u_C1MR),
    MEMBER(planes, rvxiNormRel_L2_8s_C1MR),
    MEMBER(planes, rvxiNormRel_L2_16u_C1MR),
    MEMBER(planes, rvxiNormRel_L2_32f_C1MR),
    MEMBER(planes, rvxiNormRel_L2_8u_C3CMR),
    MEMBER(planes, rvxiNormRel_L2_8s_C3CMR),
    MEMBER(planes, rvxiNormRel_L2_16u_C3CMR),
    MEMBER(planes, rvxiNormRel_L2_32f_C3CMR),
    MEMBER(planes, rvxiMean_8u_C1MR),
    MEMBER(planes, rvxiMean_8s_C1MR),
    MEMBER(planes, rvxiMean_16u_C1MR),
    MEMBER(planes, rvxiMean_32f_C1MR),
    MEMBER(planes, rvxiMean_8u_C3CMR),
    MEMBER(planes, rvxiMean_8s_C3CMR),
    MEMBER(planes, rvxiMean_16u_C3CMR),
    MEMBER(planes, rvxiMean_32f_C3CMR),
    MEMBER(planes, rvxiMean_StdDev_8u_C1R),
    MEMBER(planes, rvxiMean_StdDev_8s_C1R),
    MEMBER(planes, rvxiMean_StdDev_16u_C1R),
    MEMBER(planes, rvxiMean_StdDev_32f_C1R),
    MEMBER(planes, rvxiMean_StdDev_8u_C1MR),
    MEMBER(planes, rvxiMean_StdDev_8s_C1MR),
    MEMBER(planes, rvxiMean_StdDev_16u_C1MR),
    MEMBER(planes, rvxiMean_StdDev_32f_C1MR),
    MEMBER(planes, rvxiMean_StdDev_8u_C3CR),
    MEMBER(planes, rvxiMean_StdDev_8s_C3CR),
    MEMBER(planes, rvxiMean_StdDev_16u_C3CR),
    MEMBER(planes, rvxiMean_StdDev_32f_C3CR),
    MEMBER(planes, rvxiMean_StdDev_8u_C3CMR),
    MEMBER(planes, rvxiMean_StdDev_8s_C3CMR),
    MEMBER(planes, rvxiMean_StdDev_16u_C3CMR),
    MEMBER(planes, rvxiMean_StdDev_32f_C3CMR),
    MEMBER(planes, rvxiMinMaxIndx_8u_C1R),
    MEMBER(planes, rvxiMinMaxIndx_8s_C1R),
    MEMBER(planes, rvxiMinMaxIndx_16u_C1R),
    MEMBER(planes, rvxiMinMaxIndx_32f_C1R),
    MEMBER(planes, rvxiMinMaxIndx_8u_C1MR),
    MEMBER(planes, rvxiMinMaxIndx_8s_C1MR),
    MEMBER(planes, rvxiMinMaxIndx_16u_C1MR),
    MEMBER(planes, rvxiMinMaxIndx_32f_C1MR),
    MEMBER(planes, rvxiMinMaxIndx_8u_C3CR),
    MEMBER(planes, rvxiMinMaxIndx_8s_C3CR),
    MEMBER(planes, rvxiMinMaxIndx_16u_C3CR),
    MEMBER(planes, rvxiMinMaxIndx_32f_C3CR),
    MEMBER(planes, rvxiMinMaxIndx_8u_C3CMR),
    MEMBER(planes, rvxiMinMaxIndx_8s_C3CMR),
    MEMBER(planes, rvxiMinMaxIndx_16u_C3CMR),
    MEMBER(planes, rvxiMinMaxIndx_32f_C3CMR),
};
