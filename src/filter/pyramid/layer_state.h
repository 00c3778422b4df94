// What the layer functions keep between calls: the kernel as weights, the sizes that follow each other, and row
// buffers.
//
// Both directions compute a destination row in the same steps. Source rows are combined with weights (down: kernel and
// vertical interpolation in one sum; up: the kernel's phase) into a row of floats, which is extended by the border.
// Down layers convolve it with the kernel. Then a destination column is a weighted sum of a few neighbours, its
// samples: two (interpolation) or the phase's taps. Which ones they are depends on the column and the rate alone, so
// tables of them last. A row is worked on in strips of columns, for which buffers and tables suffice whatever the
// image's width.
#pragma once

#include "rvxcv/types.h"

#include <cstdint>

namespace rvxcv {

struct LayerState {
    bool up;
    std::int32_t channels;
    float rate;
    double spacing; // down: source pixels per destination pixel; up: destination pixels per source pixel
    std::int32_t kernelSize;
    float *kernel;
    RoiSize *sizes; // down: levels that follow each other; sizes[sizeSteps] is the last one; null without a table
    std::int64_t sizeSteps;

    // The samples of the columns tableStart + i, i < strip: sample t of column i is source column tableFirst +
    // offsets[i]
    // + t and has the weight weights[t * strip + i].
    std::int32_t samples; // of a column
    std::int64_t strip;   // a multiple of eight
    std::int64_t tableStart;
    std::int64_t tableFirst;
    std::int32_t *offsets;
    float *weights;

    // A destination row's source rows: as many as `rowTaps` at most.
    const void **rows;
    float *rowWeights;

    float *combined;  // rows combined, a plane for each channel
    float *convolved; // down: the same, convolved
    std::int64_t pitch;
};

// Eight destination columns that are neighbours have their first samples so far apart at most.
constexpr int layerReach(const LayerState &state) { return state.up ? 7 : static_cast<int>(7 * state.spacing) + 1; }

// The samples of one destination column or row (up): weights a `stride` apart; returns the first sample.
std::int64_t layerSamples(const LayerState &state, std::int64_t x, float *weights, std::int64_t stride);

// Makes the tables hold the columns from `start` on.
void fillLayerTables(LayerState &state, std::int64_t start);

struct LayerRequest {
    bool up;
    PixelTypeCode type;
    std::int32_t channels;
    RoiSize srcRoi;
    float rate;
    const void *kernel;
    std::int32_t kernelSize;
    std::int32_t mode;
};
StatusCode makeLayerState(const LayerRequest &request, LayerState **state);
StatusCode freeLayerState(LayerState *state);

} // namespace rvxcv

// The public names of states: nothing but the common one.
struct PyramidLayerDownState : rvxcv::LayerState {};
struct PyramidLayerUpState : rvxcv::LayerState {};
