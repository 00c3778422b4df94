// Regions: distances, filling, labelling, segmentation, speckles, outlines, inpainting.
#include "planes.h"

#include <algorithm>

namespace {

using namespace fuzz;

// Two costs for 3x3, three for 5x5.
template <class... P> int costCount(StatusCode (*member)(P...)) {
    return std::string_view(nameOf(member)).find("5x5") != std::string_view::npos ? 3 : 2;
}

template <class M> std::vector<M> costs(Call &call, int count) {
    std::vector<M> values;
    for (int i = 0; i < count; ++i) {
        values.push_back(std::is_integral_v<M> ? static_cast<M>(call.in.within(1, 12))
                                               : static_cast<M>(call.in.real(0.5F, 4)));
    }
    return values;
}

template <class D, class M>
void chamfer(Call &call,
             StatusCode (*member)(const std::uint8_t *, std::int32_t, D *, std::int32_t, RoiSize, const M *)) {
    call.documented({StatusBadMetric});
    const RoiSize roi = call.in.roi();
    Image<const std::uint8_t> src(call.in, roi);
    Image<D> dst(call.in, roi);
    Array<const M> metrics(costs<M>(call, costCount(member)));
    call.run(member, src, dst, roi, metrics);
}

void chamfer(Call &call, StatusCode (*member)(std::uint8_t *, std::int32_t, RoiSize, const std::int32_t *)) {
    call.documented({StatusBadMetric});
    const RoiSize roi = call.in.roi();
    Image<std::uint8_t> image(call.in, roi);
    Array<const std::int32_t> metrics(costs<std::int32_t>(call, costCount(member)));
    call.run(member, image, roi, metrics);
}

template <class M> void usualCosts(Call &call, StatusCode (*member)(std::int32_t, NormKind, M *)) {
    call.documented({StatusBadArgument});
    const auto size = call.in.oneOf<std::int32_t>({3, 5, 3, 4});
    const auto norm = call.in.oneOf<NormKind>({NormInf, NormL1, NormL2, 3});
    Array<M> metrics(size == 3 ? 2 : size == 5 ? 3 : 0);
    call.run(member, size, norm, metrics);
}

void usualCosts(Call &call, decltype(&rvxiGetDistanceTransformMask) member) {
    call.documented({StatusBadArgument});
    const auto type = call.in.oneOf<std::int32_t>({30, 31, 32, 50, 51, 52, 33, 40});
    Array<float> metrics(type / 10 == 3 ? 2 : type / 10 == 5 ? 3 : 0);
    call.run(member, type, metrics);
}

// An argument of a fill: the value, a delta, three of them, the record, or the scratch.
template <class T, class... P> void flood(Call &call, StatusCode (*member)(T *, std::int32_t, RoiSize, Point2i, P...)) {
    call.documented({StatusOutOfRange});
    const std::int64_t channels = channelsOf(member);
    const bool gradient = std::string_view(nameOf(member)).find("_Grad") != std::string_view::npos;
    const RoiSize roi = call.in.roi();
    // Steps are checked against one element a pixel: rows of three channels may overlap.
    Image<T> image(call.in, Shape{roi, channels, {}, std::max(roi.width, 0) * static_cast<std::int64_t>(sizeof(T))});
    const std::int32_t x = call.in.within(0, std::clamp(roi.width, 1, 200) - 1);
    const Point2i seed = {x, call.in.within(0, std::clamp(roi.height, 1, 200) - 1)};
    // The query does not tell of sizes that do not fit.
    if (std::int64_t{std::max(roi.width, 0)} * std::max(roi.height, 0) > 1 << 20) {
        throw Abandon();
    }
    const std::int64_t scratch = call.size(gradient ? rvxiFloodFillGetSize_Grad : rvxiFloodFillGetSize, roi);
    [&](auto &&...each) { call.run(member, image, roi, seed, each...); }(parameter<P>(call, scratch)...);
}

template <class T>
void inpaint(Call &call,
             StatusCode (*member)(const T *, std::int32_t, const std::uint8_t *, std::int32_t, T *, std::int32_t,
                                  RoiSize, std::int32_t, InpaintMethod, std::uint8_t *),
             StatusCode (*sizeQuery)(RoiSize, std::int32_t, std::int32_t *)) {
    call.documented({StatusBadArgument, StatusOutOfRange});
    const std::int32_t channels = channelsOf(member);
    const RoiSize roi = call.in.roi();
    const std::int32_t radius = call.in.within(1, 6);
    if (radius > 6 && radius <= 100 && std::int64_t{roi.width} * roi.height > 600) {
        throw Abandon(); // takes long, and is no other case
    }
    Image<const T> src(call.in, roi, channels);
    Image<const std::uint8_t> mask(call.in, roi);
    Image<T> dst(call.in, roi, channels);
    Scratch buffer(call.in, call.size(sizeQuery, roi, radius));
    call.run(member, src, mask, dst, roi, radius, call.in.oneOf<InpaintMethod>({InpaintMarch, InpaintDiffusion}),
             buffer);
}

} // namespace

const std::vector<fuzz::Member> fuzz::members = {
    MEMBER(usualCosts, rvxiGetDistanceTransformMask_32s),
    MEMBER(usualCosts, rvxiGetDistanceTransformMask_32f),
    MEMBER(usualCosts, rvxiGetDistanceTransformMask),
    MEMBER(chamfer, rvxiDistanceTransform_3x3_8u_C1R),
    MEMBER(chamfer, rvxiDistanceTransform_5x5_8u_C1R),
    MEMBER(chamfer, rvxiDistanceTransform_3x3_8u_C1IR),
    MEMBER(chamfer, rvxiDistanceTransform_5x5_8u_C1IR),
    MEMBER(chamfer, rvxiDistanceTransform_3x3_8u16u_C1R),
    MEMBER(chamfer, rvxiDistanceTransform_5x5_8u16u_C1R),
    MEMBER(chamfer, rvxiDistanceTransform_3x3_8u32f_C1R),
    MEMBER(chamfer, rvxiDistanceTransform_5x5_8u32f_C1R),
    MEMBER(query, rvxiTrueDistanceTransformGetBufferSize_8u32f_C1R),
    MEMBER(planes, rvxiTrueDistanceTransform_8u32f_C1R,
           fuzz::ScratchOf{rvxiTrueDistanceTransformGetBufferSize_8u32f_C1R}),
    MEMBER(query, rvxiFloodFillGetSize),
    MEMBER(query, rvxiFloodFillGetSize_Grad),
    MEMBER(flood, rvxiFloodFill_4Con_8u_C1IR),
    MEMBER(flood, rvxiFloodFill_4Con_16u_C1IR),
    MEMBER(flood, rvxiFloodFill_4Con_32s_C1IR),
    MEMBER(flood, rvxiFloodFill_4Con_32f_C1IR),
    MEMBER(flood, rvxiFloodFill_4Con_8u_C3IR),
    MEMBER(flood, rvxiFloodFill_4Con_16u_C3IR),
    MEMBER(flood, rvxiFloodFill_4Con_32f_C3IR),
    MEMBER(flood, rvxiFloodFill_8Con_8u_C1IR),
    MEMBER(flood, rvxiFloodFill_8Con_16u_C1IR),
    MEMBER(flood, rvxiFloodFill_8Con_32s_C1IR),
    MEMBER(flood, rvxiFloodFill_8Con_32f_C1IR),
    MEMBER(flood, rvxiFloodFill_8Con_8u_C3IR),
    MEMBER(flood, rvxiFloodFill_8Con_16u_C3IR),
    MEMBER(flood, rvxiFloodFill_8Con_32f_C3IR),
    MEMBER(flood, rvxiFloodFill_Range4Con_8u_C1IR),
    MEMBER(flood, rvxiFloodFill_Range4Con_16u_C1IR),
    MEMBER(flood, rvxiFloodFill_Range4Con_32f_C1IR),
    MEMBER(flood, rvxiFloodFill_Range4Con_8u_C3IR),
    MEMBER(flood, rvxiFloodFill_Range4Con_16u_C3IR),
    MEMBER(flood, rvxiFloodFill_Range4Con_32f_C3IR),
    MEMBER(flood, rvxiFloodFill_Range8Con_8u_C1IR),
    MEMBER(flood, rvxiFloodFill_Range8Con_16u_C1IR),
    MEMBER(flood, rvxiFloodFill_Range8Con_32f_C1IR),
    MEMBER(flood, rvxiFloodFill_Range8Con_8u_C3IR),
    MEMBER(flood, rvxiFloodFill_Range8Con_16u_C3IR),
    MEMBER(flood, rvxiFloodFill_Range8Con_32f_C3IR),
    MEMBER(flood, rvxiFloodFill_Grad4Con_8u_C1IR),
    MEMBER(flood, rvxiFloodFill_Grad4Con_16u_C1IR),
    MEMBER(flood, rvxiFloodFill_Grad4Con_32f_C1IR),
    MEMBER(flood, rvxiFloodFill_Grad4Con_8u_C3IR),
    MEMBER(flood, rvxiFloodFill_Grad4Con_16u_C3IR),
    MEMBER(flood, rvxiFloodFill_Grad4Con_32f_C3IR),
    MEMBER(flood, rvxiFloodFill_Grad8Con_8u_C1IR),
    MEMBER(flood, rvxiFloodFill_Grad8Con_16u_C1IR),
    MEMBER(flood, rvxiFloodFill_Grad8Con_32f_C1IR),
    MEMBER(flood, rvxiFloodFill_Grad8Con_8u_C3IR),
    MEMBER(flood, rvxiFloodFill_Grad8Con_16u_C3IR),
    MEMBER(flood, rvxiFloodFill_Grad8Con_32f_C3IR),
    MEMBER(planes, rvxiLabelMarkers_8u_C1IR, fuzz::ScratchOf{rvxiLabelMarkersGetBufferSize_8u_C1R}),
    MEMBER(planes, rvxiLabelMarkers_16u_C1IR, fuzz::ScratchOf{rvxiLabelMarkersGetBufferSize_16u_C1R}),
    MEMBER(planes, rvxiLabelMarkers_8u32s_C1R, fuzz::ScratchOf{rvxiLabelMarkersGetBufferSize_8u32s_C1R}),
    MEMBER(query, rvxiLabelMarkersGetBufferSize_8u_C1R),
    MEMBER(query, rvxiLabelMarkersGetBufferSize_16u_C1R),
    MEMBER(query, rvxiLabelMarkersGetBufferSize_8u32s_C1R),
    MEMBER(planes, rvxiSegmentWatershed_8u32s_C1IR, fuzz::ScratchOf{rvxiSegmentWatershedGetBufferSize_8u32s_C1R}),
    MEMBER(planes, rvxiSegmentWatershed_16u32s_C1IR, fuzz::ScratchOf{rvxiSegmentWatershedGetBufferSize_16u32s_C1R}),
    MEMBER(planes, rvxiSegmentGradient_8u32s_C1IR, fuzz::ScratchOf{rvxiSegmentGradientGetBufferSize_8u32s_C1R}),
    MEMBER(planes, rvxiSegmentGradient_8u32s_C3C1IR, fuzz::ScratchOf{rvxiSegmentGradientGetBufferSize_8u32s_C3C1R}),
    MEMBER(query, rvxiSegmentWatershedGetBufferSize_8u32s_C1R),
    MEMBER(query, rvxiSegmentWatershedGetBufferSize_16u32s_C1R),
    MEMBER(query, rvxiSegmentGradientGetBufferSize_8u32s_C1R),
    MEMBER(query, rvxiSegmentGradientGetBufferSize_8u32s_C3C1R),
    MEMBER(planes, rvxiMarkSpeckles_8u_C1IR, fuzz::ScratchOf{rvxiMarkSpecklesGetBufferSize_8u_C1R}),
    MEMBER(planes, rvxiMarkSpeckles_16u_C1IR, fuzz::ScratchOf{rvxiMarkSpecklesGetBufferSize_16u_C1R}),
    MEMBER(planes, rvxiMarkSpeckles_16s_C1IR, fuzz::ScratchOf{rvxiMarkSpecklesGetBufferSize_16s_C1R}),
    MEMBER(planes, rvxiMarkSpeckles_32f_C1IR, fuzz::ScratchOf{rvxiMarkSpecklesGetBufferSize_32f_C1R}),
    MEMBER(query, rvxiMarkSpecklesGetBufferSize_8u_C1R),
    MEMBER(query, rvxiMarkSpecklesGetBufferSize_16u_C1R),
    MEMBER(query, rvxiMarkSpecklesGetBufferSize_16s_C1R),
    MEMBER(query, rvxiMarkSpecklesGetBufferSize_32f_C1R),
    MEMBER(planes, rvxiBoundSegments_8u_C1IR),
    MEMBER(planes, rvxiBoundSegments_16u_C1IR),
    MEMBER(planes, rvxiBoundSegments_32s_C1IR),
    MEMBER(planes, rvxiFastMarching_8u32f_C1R, fuzz::ScratchOf{rvxiFastMarchingGetBufferSize_8u32f_C1R}),
    MEMBER(query, rvxiFastMarchingGetBufferSize_8u32f_C1R),
    MEMBER(inpaint, rvxiInpaint_8u_C1MR, rvxiInpaintGetBufferSize_8u_C1MR),
    MEMBER(inpaint, rvxiInpaint_8u_C3MR, rvxiInpaintGetBufferSize_8u_C3MR),
    MEMBER(inpaint, rvxiInpaint_32f_C1MR, rvxiInpaintGetBufferSize_32f_C1MR),
    MEMBER(query, rvxiInpaintGetBufferSize_8u_C1MR),
    MEMBER(query, rvxiInpaintGetBufferSize_8u_C3MR),
    MEMBER(query, rvxiInpaintGetBufferSize_32f_C1MR),
};
