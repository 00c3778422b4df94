// The arguments that layers of both directions have, and the checks before the destination's size.
#pragma once

#include "filter/pyramid/layer_rows.h"
#include "filter/pyramid/level_sizes.h"
#include "kernel/checks.h"

namespace rvxcv {

template <class T, int channels> struct LayerCall {
    const T *src;
    std::int32_t srcStep;
    RoiSize srcRoi;
    T *dst;
    std::int32_t dstStep;
    RoiSize dstRoi;
    LayerState *state;

    Checks check() const {
        Checks checks;
        checks.pointers(src, dst, state).size(srcRoi);
        checks.steps(rowBytes<T>(std::int64_t{srcRoi.width} * channels), srcStep);
        checks.steps(rowBytes<T>(std::int64_t{dstRoi.width} * channels), dstStep);
        checks.multiples(sizeof(T), srcStep, dstStep);
        return checks.failed() ? checks : checks.require(isPyramidRate(state->rate), StatusBadArgument);
    }

    template <class Direction> void run() const {
        LayerRun<T, channels, Direction>(*state, {src, srcStep}, srcRoi, {dst, dstStep}, dstRoi).run();
    }
};

template <class State> StatusCode initLayer(const LayerRequest &request, State **state) {
    LayerState *made = nullptr;
    const StatusCode status = makeLayerState(request, state == nullptr ? nullptr : &made);
    if (status >= StatusOk) {
        *state = static_cast<State *>(made);
    }
    return status;
}

} // namespace rvxcv
