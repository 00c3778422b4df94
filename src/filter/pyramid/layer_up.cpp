// Layers one step up: a destination pixel is the weighted mean of the source pixels that the kernel, stretched by the
// rate, covers.
#include "filter/pyramid/layer_call.h"
#include "filter/pyramid/layer_rows.h"
#include "filter/pyramid/level_sizes.h"
#include "frame/api.h"

namespace rvxcv {
namespace {

struct Up {
    static constexpr bool up = true;

    static RowPlan planRow(LayerState &state, std::int64_t y, std::int64_t) {
        // Rows follow the same rule as columns: what the tables hold need not be computed.
        if (y < state.tableStart || y >= state.tableStart + state.strip) {
            return {layerSamples(state, y, state.rowWeights, 1), state.samples};
        }
        const std::int64_t i = y - state.tableStart;
        for (std::int32_t t = 0; t < state.samples; ++t) {
            state.rowWeights[t] = state.weights[t * state.strip + i];
        }
        return {state.tableFirst + state.offsets[i], state.samples};
    }

    static std::int64_t border(std::int64_t i, std::int64_t n) {
        return borderIndex(i < 0 ? BorderMirror : BorderReplicate, false, false, i, n).index;
    }

    static std::int64_t distinctColumns(const LayerState &, std::int64_t, std::int64_t dstWidth) { return dstWidth; }
};

StatusCode init(const LayerRequest &request, PyramidLayerUpState **state) { return initLayer(request, state); }

template <class T, int channels> StatusCode layerUp(const LayerCall<T, channels> &call) {
    Checks checks = call.check();
    if (checks.failed()) {
        return checks.status();
    }
    const float rate = call.state->rate;
    if (!pyramidUpLengths(call.srcRoi.width, rate).contains(call.dstRoi.width) ||
        !pyramidUpLengths(call.srcRoi.height, rate).contains(call.dstRoi.height)) {
        return StatusBadSize;
    }
    call.template run<Up>();
    return StatusOk;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiPyramidLayerUpInitAlloc_8u_C1R(PyramidLayerUpState **state, RoiSize srcRoi, float rate,
                                              const int16_t *kernel, int32_t kernelSize, int32_t mode) {
    return init({true, PixelType8u, 1, srcRoi, rate, kernel, kernelSize, mode}, state);
}
StatusCode rvxiPyramidLayerUpInitAlloc_8u_C3R(PyramidLayerUpState **state, RoiSize srcRoi, float rate,
                                              const int16_t *kernel, int32_t kernelSize, int32_t mode) {
    return init({true, PixelType8u, 3, srcRoi, rate, kernel, kernelSize, mode}, state);
}
StatusCode rvxiPyramidLayerUpInitAlloc_16u_C1R(PyramidLayerUpState **state, RoiSize srcRoi, float rate,
                                               const int16_t *kernel, int32_t kernelSize, int32_t mode) {
    return init({true, PixelType16u, 1, srcRoi, rate, kernel, kernelSize, mode}, state);
}
StatusCode rvxiPyramidLayerUpInitAlloc_16u_C3R(PyramidLayerUpState **state, RoiSize srcRoi, float rate,
                                               const int16_t *kernel, int32_t kernelSize, int32_t mode) {
    return init({true, PixelType16u, 3, srcRoi, rate, kernel, kernelSize, mode}, state);
}
StatusCode rvxiPyramidLayerUpInitAlloc_32f_C1R(PyramidLayerUpState **state, RoiSize srcRoi, float rate,
                                               const float *kernel, int32_t kernelSize, int32_t mode) {
    return init({true, PixelType32f, 1, srcRoi, rate, kernel, kernelSize, mode}, state);
}
StatusCode rvxiPyramidLayerUpInitAlloc_32f_C3R(PyramidLayerUpState **state, RoiSize srcRoi, float rate,
                                               const float *kernel, int32_t kernelSize, int32_t mode) {
    return init({true, PixelType32f, 3, srcRoi, rate, kernel, kernelSize, mode}, state);
}

StatusCode rvxiPyramidLayerUpFree_8u_C1R(PyramidLayerUpState *state) { return freeLayerState(state); }
StatusCode rvxiPyramidLayerUpFree_8u_C3R(PyramidLayerUpState *state) { return freeLayerState(state); }
StatusCode rvxiPyramidLayerUpFree_16u_C1R(PyramidLayerUpState *state) { return freeLayerState(state); }
StatusCode rvxiPyramidLayerUpFree_16u_C3R(PyramidLayerUpState *state) { return freeLayerState(state); }
StatusCode rvxiPyramidLayerUpFree_32f_C1R(PyramidLayerUpState *state) { return freeLayerState(state); }
StatusCode rvxiPyramidLayerUpFree_32f_C3R(PyramidLayerUpState *state) { return freeLayerState(state); }

StatusCode rvxiPyramidLayerUp_8u_C1R(const uint8_t *src, int32_t srcStep, RoiSize srcRoi, uint8_t *dst, int32_t dstStep,
                                     RoiSize dstRoi, PyramidLayerUpState *state) {
    return layerUp<std::uint8_t, 1>({src, srcStep, srcRoi, dst, dstStep, dstRoi, state});
}
StatusCode rvxiPyramidLayerUp_8u_C3R(const uint8_t *src, int32_t srcStep, RoiSize srcRoi, uint8_t *dst, int32_t dstStep,
                                     RoiSize dstRoi, PyramidLayerUpState *state) {
    return layerUp<std::uint8_t, 3>({src, srcStep, srcRoi, dst, dstStep, dstRoi, state});
}
StatusCode rvxiPyramidLayerUp_16u_C1R(const uint16_t *src, int32_t srcStep, RoiSize srcRoi, uint16_t *dst,
                                      int32_t dstStep, RoiSize dstRoi, PyramidLayerUpState *state) {
    return layerUp<std::uint16_t, 1>({src, srcStep, srcRoi, dst, dstStep, dstRoi, state});
}
StatusCode rvxiPyramidLayerUp_16u_C3R(const uint16_t *src, int32_t srcStep, RoiSize srcRoi, uint16_t *dst,
                                      int32_t dstStep, RoiSize dstRoi, PyramidLayerUpState *state) {
    return layerUp<std::uint16_t, 3>({src, srcStep, srcRoi, dst, dstStep, dstRoi, state});
}
StatusCode rvxiPyramidLayerUp_32f_C1R(const float *src, int32_t srcStep, RoiSize srcRoi, float *dst, int32_t dstStep,
                                      RoiSize dstRoi, PyramidLayerUpState *state) {
    return layerUp<float, 1>({src, srcStep, srcRoi, dst, dstStep, dstRoi, state});
}
StatusCode rvxiPyramidLayerUp_32f_C3R(const float *src, int32_t srcStep, RoiSize srcRoi, float *dst, int32_t dstStep,
                                      RoiSize dstRoi, PyramidLayerUpState *state) {
    return layerUp<float, 3>({src, srcStep, srcRoi, dst, dstStep, dstRoi, state});
}
