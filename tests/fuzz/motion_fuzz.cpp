// Motion: history, line sampling, sub-pixel copies, optical flow, background models.
#include "planes.h"

#include <algorithm>
#include <memory>

namespace {

using namespace fuzz;

template <class T>
void sampleLine(Call &call, StatusCode (*member)(const T *, std::int32_t, RoiSize, T *, Point2i, Point2i)) {
    call.documented({StatusOutOfRange, StatusLengthOverflow});
    const std::int64_t channels = channelsOf(member);
    const RoiSize roi = call.in.roi();
    Image<const T> src(call.in, roi, channels);
    const auto point = [&] {
        const std::int32_t x = call.in.within(0, std::clamp(roi.width, 1, 240) - 1);
        return Point2i{x, call.in.within(0, std::clamp(roi.height, 1, 240) - 1)};
    };
    const Point2i first = point(), second = point();
    const auto outside = [&](Point2i p) { return p.x < 0 || p.y < 0 || p.x >= roi.width || p.y >= roi.height; };
    call.refuse(outside(first) || outside(second));
    const std::int64_t length =
        std::max(std::abs(std::int64_t{first.x} - second.x), std::abs(std::int64_t{first.y} - second.y));
    Array<T> line(call.in, src.legal() && length < 1 << 16 ? (length + 1) * channels : 0);
    call.run(member, src, roi, line, first, second);
}

// ------------------------------------------------------------------------------------------------------ sub-pixel
// copies

template <class E> auto subpixEnd(Call &call) {
    if constexpr (std::is_pointer_v<E>) {
        return Record<Point2i>(sizeof(Point2i));
    } else {
        return call.in.within(-3, 3);
    }
}

template <class S, class D, class... E>
void copySubpix(Call &call,
                StatusCode (*member)(const S *, std::int32_t, RoiSize, D *, std::int32_t, RoiSize, Point2f, E...)) {
    call.documented({StatusOutOfRange, StatusError});
    const RoiSize roi = call.in.roi(), patch = call.in.roi();
    Image<const S> src(call.in, roi);
    Image<D> dst(call.in, patch);
    const float x = call.in.real(-20, 110);
    const Point2f centre = {x, call.in.real(-20, 80)};
    [&](auto &&...end) { call.run(member, src, roi, dst, patch, centre, end...); }(subpixEnd<E>(call)...);
}

// ----------------------------------------------------------------------------------------------------------- optical
// flow

struct PyramidDeleter {
    PyramidRecord *record = nullptr;
    ~PyramidDeleter() {
        if (record != nullptr) {
            rvxiPyramidFree(record);
        }
    }
};

// The levels of a pyramid, each of the exact size; now and then one is missing.
template <class T> struct Levels {
    PyramidDeleter pyramid;
    std::vector<std::unique_ptr<Image<const T>>> images;

    Levels(Call &call, RoiSize roi, std::int32_t count, float rate) {
        if (rvxiPyramidInitAlloc(&pyramid.record, count, roi, rate) != StatusOk) {
            throw Abandon();
        }
        PyramidRecord &made = *pyramid.record;
        for (std::int32_t i = 0; i <= made.levelCount; ++i) {
            images.push_back(std::make_unique<Image<const T>>(call.in, Shape{.roi = made.roiSizes[i], .unseen = true}));
            Image<const T> &image = *images.back();
            image.bind(true);
            call.watch(image);
            made.images[i] =
                call.in.byte() >= 250 ? nullptr : const_cast<void *>(static_cast<const void *>(image.data()));
            made.steps[i] = image.step();
        }
    }
};

template <class T>
void opticalFlow(Call &call, decltype(&rvxiOpticalFlowPyrLK_8u_C1R) member,
                 StatusCode (*init)(OpticalFlowState **, RoiSize, std::int32_t, std::int32_t),
                 StatusCode (*release)(OpticalFlowState *), T) {
    call.documented({StatusBadArgument, StatusNoMemory});
    RoiSize roi = {1 + call.in.byte() % 60, 1 + call.in.byte() % 48};
    const std::int32_t winSize = call.in.within(1, 12);
    Record<OpticalFlowState *> state(sizeof(OpticalFlowState *));
    const RoiSize largest = call.in.byte() < 200 ? roi : call.in.roi();
    if (call.run(init, state, largest, winSize, 0) < 0) {
        return;
    }
    struct Guard {
        OpticalFlowState *state;
        StatusCode (*release)(OpticalFlowState *);
        ~Guard() { release(state); }
    } const guard{*state.data(), release};
    const std::int32_t levels = 1 + call.in.byte() % 2;
    Levels<T> previous(call, roi, levels, 2);
    if (call.in.byte() >= 220) {
        roi = {1 + call.in.byte() % 60, 1 + call.in.byte() % 48};
    }
    Levels<T> next(call, roi, levels, 2);
    const std::int32_t count = call.in.within(1, 4);
    call.refuse(count < 1);
    if (count > 1000) {
        throw Abandon();
    }
    std::vector<Point2f> points;
    for (std::int32_t i = 0; i < count; ++i) {
        const float x = call.in.real(-5, 65);
        points.push_back({x, call.in.real(-5, 53)});
    }
    Array<const Point2f> from(points);
    Array<Point2f> to(points);
    Array<std::uint8_t> status(count);
    Array<float> error(count);
    const std::int32_t size = call.in.byte() < 240 ? winSize : call.in.within(1, 12), level = call.in.within(0, 3);
    const std::int32_t iterations = call.in.byte() < 240 ? 1 + call.in.byte() % 10 : -call.in.byte();
    const float threshold = call.in.real(0, 0.5F);
    const PyramidRecord *const before = previous.pyramid.record, *const after = next.pyramid.record;
    call.run(member, before, after, from, to, status, error, count, size, level, iterations, threshold, *state.data());
    noteReached(reinterpret_cast<const void *>(release));
}

// ------------------------------------------------------------------------------------------------------ background
// models

ForegroundGaussianParams usual(Call &call, const ForegroundGaussianParams *) {
    ForegroundGaussianParams p = {3, 225, 16, 1125, 0.1F, 0};
    p.threshold = call.in.real(0.5F, 8);
    p.varInit = call.in.real(16, 1125);
    p.foregroundRate = call.in.real(0, 1);
    p.shadow = call.in.real(0, 0.9F);
    return p;
}
FGMMParams usual(Call &call, const FGMMParams *) {
    FGMMParams p = {3, 4, 225, 16, 1125, 1, 0.5F, 0.9F, 0};
    p.components = call.in.within(1, 8);
    p.threshold = call.in.real(0.5F, 8);
    p.shadow = call.in.real(0, 0.9F);
    p.prior = call.in.real(0, 0.5F);
    return p;
}
ForegroundHistogramParams usual(Call &call, const ForegroundHistogramParams *) {
    ForegroundHistogramParams p = {8, 6, 10, 0.8F};
    p.entries = call.in.within(1, 16);
    p.principal = call.in.byte() < 200 ? std::min(p.entries, 1 + call.in.byte() % 8) : call.in.within(1, 8);
    p.tolerance = call.in.within(0, 100);
    p.absorb = call.in.real(0.5F, 1);
    return p;
}

template <class Params, class State> struct Model {
    StatusCode (*size)(RoiSize, std::int32_t, const Params *, std::int32_t *);
    StatusCode (*init)(RoiSize, std::int32_t, const Params *, State *);
    StatusCode (*update)(const std::uint8_t *, std::int32_t, const std::uint8_t *, std::int32_t, RoiSize, float,
                         State *);
    StatusCode (*background)(std::uint8_t *, std::int32_t, RoiSize, const State *);
};

// Decides, learns and shows the background, several times over.
template <class Params, class State>
void foreground(Call &call,
                StatusCode (*member)(const std::uint8_t *, std::int32_t, std::uint8_t *, std::int32_t, RoiSize, float,
                                     State *),
                Model<Params, State> model) {
    call.documented({StatusBadChannelCount, StatusOutOfRange, StatusBadContext, StatusError});
    const std::int32_t channels = channelsOf(member);
    const std::int32_t made = call.in.byte() < 240 ? channels : call.in.within(1, 4);
    const RoiSize roi = call.in.roi();
    Array<const Params> params(std::vector<Params>{usual(call, static_cast<const Params *>(nullptr))});
    Record<State> state(call.size(model.size, roi, made, params));
    if (call.run(model.init, roi, made, params, state) < 0) {
        return;
    }
    const RoiSize other = call.in.byte() < 240 ? roi : call.in.roi();
    Image<const std::uint8_t> src(call.in, other, channels), map(call.in, other);
    Image<std::uint8_t> dst(call.in, other), picture(call.in, other, channels);
    // Each on its own: a call may be wrong where the next one, with other images, is right.
    for (Memory *const image : std::initializer_list<Memory *>{&src, &map, &dst, &picture}) {
        image->bind(image->legal());
    }
    for (int frame = 0; frame < 3; ++frame) {
        call.run(member, src, dst, other, call.in.real(0, 1), state);
        call.run(model.update, src, map, other, call.in.real(0, 1), state);
        call.run(model.background, picture, other, std::as_const(state));
    }
}

} // namespace

const std::vector<fuzz::Member> fuzz::members = {
    MEMBER(planes, rvxiUpdateMotionHistory_8u32f_C1IR),
    MEMBER(planes, rvxiUpdateMotionHistory_16u32f_C1IR),
    MEMBER(planes, rvxiUpdateMotionHistory_32f_C1IR),
    MEMBER(sampleLine, rvxiSampleLine_8u_C1R),
    MEMBER(sampleLine, rvxiSampleLine_8u_C3R),
    MEMBER(sampleLine, rvxiSampleLine_16u_C1R),
    MEMBER(sampleLine, rvxiSampleLine_16u_C3R),
    MEMBER(sampleLine, rvxiSampleLine_32f_C1R),
    MEMBER(sampleLine, rvxiSampleLine_32f_C3R),
    MEMBER(copySubpix, rvxiCopySubpix_8u_C1R),
    MEMBER(copySubpix, rvxiCopySubpix_8u32f_C1R),
    MEMBER(copySubpix, rvxiCopySubpix_16u_C1R),
    MEMBER(copySubpix, rvxiCopySubpix_16u32f_C1R),
    MEMBER(copySubpix, rvxiCopySubpix_32f_C1R),
    MEMBER(copySubpix, rvxiCopySubpix_8u16u_C1RSfs),
    MEMBER(copySubpix, rvxiCopySubpixIntersect_8u_C1R),
    MEMBER(copySubpix, rvxiCopySubpixIntersect_8u32f_C1R),
    MEMBER(copySubpix, rvxiCopySubpixIntersect_16u_C1R),
    MEMBER(copySubpix, rvxiCopySubpixIntersect_16u32f_C1R),
    MEMBER(copySubpix, rvxiCopySubpixIntersect_32f_C1R),
    MEMBER(copySubpix, rvxiCopySubpixIntersect_8u16u_C1RSfs),
    MEMBER(opticalFlow, rvxiOpticalFlowPyrLK_8u_C1R, rvxiOpticalFlowPyrLKInitAlloc_8u_C1R,
           rvxiOpticalFlowPyrLKFree_8u_C1R, std::uint8_t{}),
    MEMBER(opticalFlow, rvxiOpticalFlowPyrLK_16u_C1R, rvxiOpticalFlowPyrLKInitAlloc_16u_C1R,
           rvxiOpticalFlowPyrLKFree_16u_C1R, std::uint16_t{}),
    MEMBER(opticalFlow, rvxiOpticalFlowPyrLK_32f_C1R, rvxiOpticalFlowPyrLKInitAlloc_32f_C1R,
           rvxiOpticalFlowPyrLKFree_32f_C1R, float{}),
    MEMBER(foreground, rvxiForegroundGaussian_8u_C1R,
           Model<ForegroundGaussianParams, ForegroundGaussianState>{
               rvxiForegroundGaussianGetSize_8u, rvxiForegroundGaussianInit_8u, rvxiForegroundGaussianUpdate_8u_C1R,
               rvxiForegroundGaussianGetBackground_8u_C1R}),
    MEMBER(foreground, rvxiForegroundGaussian_8u_C3R,
           Model<ForegroundGaussianParams, ForegroundGaussianState>{
               rvxiForegroundGaussianGetSize_8u, rvxiForegroundGaussianInit_8u, rvxiForegroundGaussianUpdate_8u_C3R,
               rvxiForegroundGaussianGetBackground_8u_C3R}),
    MEMBER(foreground, rvxiFGMM_8u_C1R,
           Model<FGMMParams, FGMMState>{rvxiFGMMGetSize_8u, rvxiFGMMInit_8u, rvxiFGMMUpdate_8u_C1R,
                                        rvxiFGMMGetBackground_8u_C1R}),
    MEMBER(foreground, rvxiFGMM_8u_C3R,
           Model<FGMMParams, FGMMState>{rvxiFGMMGetSize_8u, rvxiFGMMInit_8u, rvxiFGMMUpdate_8u_C3R,
                                        rvxiFGMMGetBackground_8u_C3R}),
    MEMBER(foreground, rvxiForegroundHistogram_8u_C1R,
           Model<ForegroundHistogramParams, ForegroundHistogramState>{
               rvxiForegroundHistogramGetSize_8u, rvxiForegroundHistogramInit_8u, rvxiForegroundHistogramUpdate_8u_C1R,
               rvxiForegroundHistogramGetBackground_8u_C1R}),
    MEMBER(foreground, rvxiForegroundHistogram_8u_C3R,
           Model<ForegroundHistogramParams, ForegroundHistogramState>{
               rvxiForegroundHistogramGetSize_8u, rvxiForegroundHistogramInit_8u, rvxiForegroundHistogramUpdate_8u_C3R,
               rvxiForegroundHistogramGetBackground_8u_C3R}),
};
