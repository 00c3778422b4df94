// Image pyramids: fixed halving and doubling, the descriptor, layers of any rate.
#include "planes.h"

namespace {

using namespace fuzz;

RoiSize halved(RoiSize roi) { return {roi.width / 2 + roi.width % 2, roi.height / 2 + roi.height % 2}; }
RoiSize doubled(RoiSize roi) {
    const auto twice = [](std::int32_t n) { return n > INT32_MAX / 2 ? INT32_MAX : n < 0 ? -1 : 2 * n; };
    return {twice(roi.width), twice(roi.height)};
}

template <class T>
void step5x5(Call &call, StatusCode (*member)(const T *, std::int32_t, T *, std::int32_t, RoiSize, std::uint8_t *),
             StatusCode (*sizeQuery)(std::int32_t, PixelTypeCode, std::int32_t, std::int32_t *),
             RoiSize (*other)(RoiSize)) {
    const std::int32_t channels = channelsOf(member);
    const PixelTypeCode type = std::is_same_v<T, std::uint8_t>  ? PixelType8u
                               : std::is_same_v<T, std::int8_t> ? PixelType8s
                                                                : PixelType32f;
    const RoiSize roi = call.in.roi();
    Image<const T> src(call.in, roi, channels);
    Image<T> dst(call.in, other(roi), channels);
    Scratch buffer(call.in, call.size(sizeQuery, roi.width, type, channels));
    call.run(member, src, dst, roi, buffer);
}

float rateOf(Call &call) {
    const std::uint8_t choice = call.in.byte();
    return choice < 64 ? 2.0F : choice < 240 ? 1.0F + static_cast<float>(choice - 60) / 20 : call.in.any<float>();
}

void record(Call &call, decltype(&rvxiPyramidInitAlloc) member) {
    call.documented({StatusBadArgument, StatusNoMemory});
    Record<PyramidRecord *> pyramid(sizeof(PyramidRecord *));
    const std::int32_t levels = call.in.within(1, 12);
    const RoiSize roi = call.in.roi();
    const float rate = rateOf(call);
    if (levels > 4096 && rate < 1.01F) {
        throw Abandon(); // every level is counted, so this takes long
    }
    if (call.run(member, pyramid, levels, roi, rate) >= 0) {
        const PyramidRecord &made = **pyramid.data();
        // All that the record points to must be there.
        for (std::int32_t i = 0; i <= made.levelCount; ++i) {
            if (made.images[i] != nullptr || made.steps[i] != 0 || made.roiSizes[i].width < 1 || made.scales[i] > 1) {
                std::abort();
            }
        }
        rvxiPyramidFree(*pyramid.data());
    }
}

void recordFree(Call &call, decltype(&rvxiPyramidFree) member) {
    PyramidRecord *pyramid = nullptr;
    if (rvxiPyramidInitAlloc(&pyramid, 3, RoiSize{17, 9}, 2) == StatusOk) {
        if (call.run(member, pyramid) < 0) {
            member(pyramid); // the pointer was made null
        }
    }
}

template <class T, class K, class State>
void layer(Call &call, StatusCode (*member)(const T *, std::int32_t, RoiSize, T *, std::int32_t, RoiSize, State *),
           StatusCode (*init)(State **, RoiSize, float, const K *, std::int32_t, std::int32_t),
           StatusCode (*release)(State *)) {
    call.documented({StatusBadArgument, StatusNoMemory, StatusKernelNotSymmetric});
    constexpr bool down = std::is_same_v<State, PyramidLayerDownState>;
    const std::int32_t channels = channelsOf(member);
    const RoiSize largest = call.in.roi();
    const float rate = rateOf(call);
    const std::int32_t taps = call.in.byte() < 240 ? 3 + 2 * (call.in.byte() % 6) : call.in.within(0, 16);
    if (taps > 1024) {
        throw Abandon();
    }
    const std::int32_t mode = call.in.byte() < 250 ? 2 : call.in.any<std::int32_t>();
    Record<State *> state(sizeof(State *));
    Array<const K> kernel(call.in, taps);
    if (call.run(init, state, largest, rate, kernel, taps, mode) < 0) {
        return;
    }
    struct Guard {
        State *state;
        StatusCode (*release)(State *);
        ~Guard() { release(state); }
    } const guard{*state.data(), release};
    // The state serves every source size.
    const RoiSize roi = call.in.byte() < 160 ? largest : call.in.roi();
    RoiSize dstRoi = {1, 1}, ignored;
    if constexpr (down) {
        rvxiGetPyramidDownROI(roi, &dstRoi, rate);
    } else {
        rvxiGetPyramidUpROI(roi, &ignored, &dstRoi, rate);
    }
    const std::uint8_t choice = call.in.byte();
    dstRoi = choice < 200   ? dstRoi
             : choice < 240 ? RoiSize{dstRoi.width - choice % 3, dstRoi.height + choice % 2}
                            : call.in.roi();
    Image<const T> src(call.in, roi, channels);
    Image<T> dst(call.in, dstRoi, channels);
    call.run(member, src, roi, dst, dstRoi, *state.data());
    noteReached(reinterpret_cast<const void *>(release));
}

} // namespace

const std::vector<fuzz::Member> fuzz::members = {
    MEMBER(step5x5, rvxiPyrDown_Gauss5x5_8u_C1R, rvxiPyrDownGetBufSize_Gauss5x5, halved),
    MEMBER(step5x5, rvxiPyrDown_Gauss5x5_8u_C3R, rvxiPyrDownGetBufSize_Gauss5x5, halved),
    MEMBER(step5x5, rvxiPyrDown_Gauss5x5_8s_C1R, rvxiPyrDownGetBufSize_Gauss5x5, halved),
    MEMBER(step5x5, rvxiPyrDown_Gauss5x5_8s_C3R, rvxiPyrDownGetBufSize_Gauss5x5, halved),
    MEMBER(step5x5, rvxiPyrDown_Gauss5x5_32f_C1R, rvxiPyrDownGetBufSize_Gauss5x5, halved),
    MEMBER(step5x5, rvxiPyrDown_Gauss5x5_32f_C3R, rvxiPyrDownGetBufSize_Gauss5x5, halved),
    MEMBER(step5x5, rvxiPyrUp_Gauss5x5_8u_C1R, rvxiPyrUpGetBufSize_Gauss5x5, doubled),
    MEMBER(step5x5, rvxiPyrUp_Gauss5x5_8u_C3R, rvxiPyrUpGetBufSize_Gauss5x5, doubled),
    MEMBER(step5x5, rvxiPyrUp_Gauss5x5_8s_C1R, rvxiPyrUpGetBufSize_Gauss5x5, doubled),
    MEMBER(step5x5, rvxiPyrUp_Gauss5x5_8s_C3R, rvxiPyrUpGetBufSize_Gauss5x5, doubled),
    MEMBER(step5x5, rvxiPyrUp_Gauss5x5_32f_C1R, rvxiPyrUpGetBufSize_Gauss5x5, doubled),
    MEMBER(step5x5, rvxiPyrUp_Gauss5x5_32f_C3R, rvxiPyrUpGetBufSize_Gauss5x5, doubled),
    MEMBER(query, rvxiPyrDownGetBufSize_Gauss5x5),
    MEMBER(query, rvxiPyrUpGetBufSize_Gauss5x5),
    MEMBER(query, rvxiGetPyramidDownROI),
    MEMBER(query, rvxiGetPyramidUpROI),
    MEMBER(record, rvxiPyramidInitAlloc),
    MEMBER(recordFree, rvxiPyramidFree),
    MEMBER(layer, rvxiPyramidLayerDown_8u_C1R, rvxiPyramidLayerDownInitAlloc_8u_C1R, rvxiPyramidLayerDownFree_8u_C1R),
    MEMBER(layer, rvxiPyramidLayerDown_8u_C3R, rvxiPyramidLayerDownInitAlloc_8u_C3R, rvxiPyramidLayerDownFree_8u_C3R),
    MEMBER(layer, rvxiPyramidLayerDown_16u_C1R, rvxiPyramidLayerDownInitAlloc_16u_C1R,
           rvxiPyramidLayerDownFree_16u_C1R),
    MEMBER(layer, rvxiPyramidLayerDown_16u_C3R, rvxiPyramidLayerDownInitAlloc_16u_C3R,
           rvxiPyramidLayerDownFree_16u_C3R),
    MEMBER(layer, rvxiPyramidLayerDown_32f_C1R, rvxiPyramidLayerDownInitAlloc_32f_C1R,
           rvxiPyramidLayerDownFree_32f_C1R),
    MEMBER(layer, rvxiPyramidLayerDown_32f_C3R, rvxiPyramidLayerDownInitAlloc_32f_C3R,
           rvxiPyramidLayerDownFree_32f_C3R),
    MEMBER(layer, rvxiPyramidLayerUp_8u_C1R, rvxiPyramidLayerUpInitAlloc_8u_C1R, rvxiPyramidLayerUpFree_8u_C1R),
    MEMBER(layer, rvxiPyramidLayerUp_8u_C3R, rvxiPyramidLayerUpInitAlloc_8u_C3R, rvxiPyramidLayerUpFree_8u_C3R),
    MEMBER(layer, rvxiPyramidLayerUp_16u_C1R, rvxiPyramidLayerUpInitAlloc_16u_C1R, rvxiPyramidLayerUpFree_16u_C1R),
    MEMBER(layer, rvxiPyramidLayerUp_16u_C3R, rvxiPyramidLayerUpInitAlloc_16u_C3R, rvxiPyramidLayerUpFree_16u_C3R),
    MEMBER(layer, rvxiPyramidLayerUp_32f_C1R, rvxiPyramidLayerUpInitAlloc_32f_C1R, rvxiPyramidLayerUpFree_32f_C1R),
    MEMBER(layer, rvxiPyramidLayerUp_32f_C3R, rvxiPyramidLayerUpInitAlloc_32f_C3R, rvxiPyramidLayerUpFree_32f_C3R),
};
