// Layers one step down: smoothed by a kernel, then sampled at any rate by bilinear interpolation. The kernel and the
// vertical interpolation are one weighted sum of source rows.
#include "filter/pyramid/layer_call.h"
#include "filter/pyramid/layer_rows.h"
#include "filter/pyramid/level_sizes.h"
#include "frame/api.h"

#include <cmath>

namespace rvxcv {
namespace {

struct Down {
    static constexpr bool up = false;

    static RowPlan planRow(LayerState &state, std::int64_t y, std::int64_t height) {
        const double position = static_cast<double>(y) * state.spacing;
        const double limit = static_cast<double>(height - 1);
        const double whole = std::floor(std::min(position, limit));
        const auto row = static_cast<std::int64_t>(whole);
        const auto fraction = static_cast<float>(std::min(position, limit) - whole);
        const std::int64_t size = state.kernelSize;
        const RowPlan plan{row - size / 2, size + (fraction > 0 ? 1 : 0)};
        for (std::int64_t i = 0; i < plan.count; ++i) {
            const float own = i < size ? state.kernel[i] : 0.0f, before = i > 0 ? state.kernel[i - 1] : 0.0f;
            state.rowWeights[i] = fraction > 0 ? own * (1 - fraction) + before * fraction : own;
        }
        return plan;
    }

    static std::int64_t border(std::int64_t i, std::int64_t n) {
        return borderIndex(BorderMirror, false, false, i, n).index;
    }

    // All columns from the one whose position reaches the last source column on are equal.
    static std::int64_t distinctColumns(const LayerState &state, std::int64_t srcWidth, std::int64_t dstWidth) {
        const auto last = static_cast<double>(srcWidth - 1);
        auto column = static_cast<std::int64_t>(std::ceil(last / state.spacing));
        column += static_cast<double>(column) * state.spacing < last ? 1 : 0;
        return std::min(dstWidth, column + 1);
    }
};

// The size that the destination must have.
RoiSize expectedSize(const LayerState &state, RoiSize srcRoi) {
    for (std::int64_t i = 0; i < state.sizeSteps; ++i) {
        if (state.sizes[i].height == srcRoi.height) {
            return state.sizes[i + 1];
        }
    }
    return pyramidDownSize(srcRoi, state.rate);
}

StatusCode init(const LayerRequest &request, PyramidLayerDownState **state) { return initLayer(request, state); }

template <class T, int channels> StatusCode layerDown(const LayerCall<T, channels> &call) {
    Checks checks = call.check();
    if (checks.failed()) {
        return checks.status();
    }
    const RoiSize expected = expectedSize(*call.state, call.srcRoi);
    if (expected.width != call.dstRoi.width || expected.height != call.dstRoi.height) {
        return StatusBadSize;
    }
    call.template run<Down>();
    return StatusOk;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiPyramidLayerDownInitAlloc_8u_C1R(PyramidLayerDownState **state, RoiSize srcRoi, float rate,
                                                const int16_t *kernel, int32_t kernelSize, int32_t mode) {
    return init({false, PixelType8u, 1, srcRoi, rate, kernel, kernelSize, mode}, state);
}
StatusCode rvxiPyramidLayerDownInitAlloc_8u_C3R(PyramidLayerDownState **state, RoiSize srcRoi, float rate,
                                                const int16_t *kernel, int32_t kernelSize, int32_t mode) {
    return init({false, PixelType8u, 3, srcRoi, rate, kernel, kernelSize, mode}, state);
}
StatusCode rvxiPyramidLayerDownInitAlloc_16u_C1R(PyramidLayerDownState **state, RoiSize srcRoi, float rate,
                                                 const int16_t *kernel, int32_t kernelSize, int32_t mode) {
    return init({false, PixelType16u, 1, srcRoi, rate, kernel, kernelSize, mode}, state);
}
StatusCode rvxiPyramidLayerDownInitAlloc_16u_C3R(PyramidLayerDownState **state, RoiSize srcRoi, float rate,
                                                 const int16_t *kernel, int32_t kernelSize, int32_t mode) {
    return init({false, PixelType16u, 3, srcRoi, rate, kernel, kernelSize, mode}, state);
}
StatusCode rvxiPyramidLayerDownInitAlloc_32f_C1R(PyramidLayerDownState **state, RoiSize srcRoi, float rate,
                                                 const float *kernel, int32_t kernelSize, int32_t mode) {
    return init({false, PixelType32f, 1, srcRoi, rate, kernel, kernelSize, mode}, state);
}
StatusCode rvxiPyramidLayerDownInitAlloc_32f_C3R(PyramidLayerDownState **state, RoiSize srcRoi, float rate,
                                                 const float *kernel, int32_t kernelSize, int32_t mode) {
    return init({false, PixelType32f, 3, srcRoi, rate, kernel, kernelSize, mode}, state);
}

StatusCode rvxiPyramidLayerDownFree_8u_C1R(PyramidLayerDownState *state) { return freeLayerState(state); }
StatusCode rvxiPyramidLayerDownFree_8u_C3R(PyramidLayerDownState *state) { return freeLayerState(state); }
StatusCode rvxiPyramidLayerDownFree_16u_C1R(PyramidLayerDownState *state) { return freeLayerState(state); }
StatusCode rvxiPyramidLayerDownFree_16u_C3R(PyramidLayerDownState *state) { return freeLayerState(state); }
StatusCode rvxiPyramidLayerDownFree_32f_C1R(PyramidLayerDownState *state) { return freeLayerState(state); }
StatusCode rvxiPyramidLayerDownFree_32f_C3R(PyramidLayerDownState *state) { return freeLayerState(state); }

StatusCode rvxiPyramidLayerDown_8u_C1R(const uint8_t *src, int32_t srcStep, RoiSize srcRoi, uint8_t *dst,
                                       int32_t dstStep, RoiSize dstRoi, PyramidLayerDownState *state) {
    return layerDown<std::uint8_t, 1>({src, srcStep, srcRoi, dst, dstStep, dstRoi, state});
}
StatusCode rvxiPyramidLayerDown_8u_C3R(const uint8_t *src, int32_t srcStep, RoiSize srcRoi, uint8_t *dst,
                                       int32_t dstStep, RoiSize dstRoi, PyramidLayerDownState *state) {
    return layerDown<std::uint8_t, 3>({src, srcStep, srcRoi, dst, dstStep, dstRoi, state});
}
StatusCode rvxiPyramidLayerDown_16u_C1R(const uint16_t *src, int32_t srcStep, RoiSize srcRoi, uint16_t *dst,
                                        int32_t dstStep, RoiSize dstRoi, PyramidLayerDownState *state) {
    return layerDown<std::uint16_t, 1>({src, srcStep, srcRoi, dst, dstStep, dstRoi, state});
}
StatusCode rvxiPyramidLayerDown_16u_C3R(const uint16_t *src, int32_t srcStep, RoiSize srcRoi, uint16_t *dst,
                                        int32_t dstStep, RoiSize dstRoi, PyramidLayerDownState *state) {
    return layerDown<std::uint16_t, 3>({src, srcStep, srcRoi, dst, dstStep, dstRoi, state});
}
StatusCode rvxiPyramidLayerDown_32f_C1R(const float *src, int32_t srcStep, RoiSize srcRoi, float *dst, int32_t dstStep,
                                        RoiSize dstRoi, PyramidLayerDownState *state) {
    return layerDown<float, 1>({src, srcStep, srcRoi, dst, dstStep, dstRoi, state});
}
StatusCode rvxiPyramidLayerDown_32f_C3R(const float *src, int32_t srcStep, RoiSize srcRoi, float *dst, int32_t dstStep,
                                        RoiSize dstRoi, PyramidLayerDownState *state) {
    return layerDown<float, 3>({src, srcStep, srcRoi, dst, dstStep, dstRoi, state});
}
