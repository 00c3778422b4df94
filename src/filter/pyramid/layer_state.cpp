#include "filter/pyramid/layer_state.h"

#include "filter/pyramid/level_sizes.h"
#include "kernel/checks.h"
#include "kernel/scratch.h"

#include "rvxcore.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace rvxcv {
namespace {

constexpr float smallest = std::numeric_limits<float>::min();

// ------------------------------------------------------------------------------------------------ kernel

// The left half and the centre decide; whether the right half is their mirror image.
template <class Tap> bool isSymmetric(const Tap *kernel, std::int64_t size) {
    bool symmetric = true;
    for (std::int64_t i = 0; i < size / 2; ++i) {
        const Tap left = loadScalar(kernel + i), right = loadScalar(kernel + size - 1 - i);
        if constexpr (std::is_same_v<Tap, float>) {
            symmetric = symmetric && !(std::fabs(left - right) > smallest);
        } else {
            symmetric = symmetric && left == right;
        }
    }
    return symmetric;
}

template <class Tap, class Sum> Sum symmetricSum(const Tap *kernel, std::int64_t size) {
    Sum left = 0;
    for (std::int64_t i = 0; i < size / 2; ++i) {
        left += loadScalar(kernel + i);
    }
    return 2 * left + loadScalar(kernel + size / 2);
}

// The integer weight of a tap, from a sum that is not zero. Weights of sharpening kernels may exceed 16 bits.
std::int64_t integerWeight(bool up, PixelTypeCode type, std::int64_t tap, std::int64_t sum) {
    if (!up) {
        return (tap * (1 << 14) / sum) >> (type == PixelType8u ? 1 : 2);
    }
    const float quotient = static_cast<float>(tap) / static_cast<float>(sum);
    const float doubled = 8192.0f * (2.0f * quotient) + 0.5f; // truncated, also below zero
    return static_cast<std::int64_t>(doubled) >> 1;
}

void fillIntegerKernel(const LayerRequest &request, float *weights) {
    const auto *kernel = static_cast<const std::int16_t *>(request.kernel);
    const std::int64_t size = request.kernelSize, sum = symmetricSum<std::int16_t, std::int64_t>(kernel, size);
    const float unit = request.up ? 1.0f : request.type == PixelType8u ? 1.0f / 8192 : 1.0f / 4096;
    for (std::int64_t i = 0; i <= size / 2; ++i) {
        const std::int64_t tap = loadScalar(kernel + i);
        const std::int64_t weight = sum == 0 ? tap : integerWeight(request.up, request.type, tap, sum);
        weights[i] = weights[size - 1 - i] = static_cast<float>(weight) * unit;
    }
}

void fillFloatKernel(const LayerRequest &request, float *weights) {
    const auto *kernel = static_cast<const float *>(request.kernel);
    const std::int64_t size = request.kernelSize;
    const auto sum = symmetricSum<float, float>(kernel, size);
    for (std::int64_t i = 0; i <= size / 2; ++i) {
        const float tap = loadScalar(kernel + i);
        weights[i] = weights[size - 1 - i] = std::fabs(sum) > smallest ? tap / sum : tap;
    }
}

// ------------------------------------------------------------------------------------------------- sizes

// Steps from a size down to 1 x 1. A level is looked up by its height, and the first of that height counts: nothing
// behind the successor of the first level of height 1 is ever found.
template <class Visit> std::int64_t levelSteps(RoiSize roi, float rate, const Visit &visit) {
    std::int64_t steps = 0;
    visit(roi);
    for (bool flat = false; !flat && (roi.width > 1 || roi.height > 1); ++steps) {
        flat = roi.height == 1;
        roi = pyramidDownSize(roi, rate);
        visit(roi);
    }
    return steps;
}

std::int32_t sampleCount(const LayerState &state) {
    if (!state.up) {
        return state.spacing == std::trunc(state.spacing) ? 1 : 2;
    }
    // So many multiples of the rate fit between the kernel's ends; never less than interpolation needs.
    const double reach = state.kernelSize - 1;
    return std::max(2, static_cast<std::int32_t>(reach / state.spacing * (1 + 1e-12)) + 1);
}

// The columns of a strip: as many as a destination row has, unless tables and buffers leave the nearer caches.
std::int64_t stripColumns(const LayerState &state, std::int32_t srcWidth) {
    constexpr std::int64_t mostWeights = 1 << 14, mostColumns = 1 << 12;
    const std::int64_t wanted =
        state.up ? pyramidUpLengths(srcWidth, state.rate).most : pyramidDownLength(srcWidth, state.rate);
    const std::int64_t most = std::min(mostWeights / state.samples,
                                       state.up ? mostColumns : static_cast<std::int64_t>(mostColumns / state.spacing));
    return std::clamp<std::int64_t>(roundUp(wanted, 8), 8, std::max<std::int64_t>(16, most / 8 * 8));
}

// Elements of a row buffer: the strip's samples, the kernel beside them, and whole vectors behind.
std::int64_t bufferPitch(const LayerState &state) {
    const double perColumn = state.up ? 1 / state.spacing : state.spacing;
    const auto columns = static_cast<std::int64_t>(static_cast<double>(state.strip) * perColumn) + 2;
    return roundUp(columns + state.samples + 2 * std::int64_t{state.kernelSize} + 64, 16);
}

struct LayerBytes {
    std::int64_t total = 0;
    template <class T> void add(std::int64_t count) { total += roundUp(rowBytes<T>(count), 64); }
};

} // namespace

std::int64_t layerSamples(const LayerState &state, std::int64_t x, float *weights, std::int64_t stride) {
    const auto at = static_cast<double>(x);
    if (!state.up) {
        const double position = at * state.spacing, whole = std::floor(position);
        weights[0] = 1.0f;
        if (state.samples > 1) {
            weights[0] = static_cast<float>(1 - (position - whole));
            weights[stride] = static_cast<float>(position - whole);
        }
        return static_cast<std::int64_t>(whole);
    }
    const std::int32_t reach = state.kernelSize / 2;
    const double half = reach, rate = state.spacing;
    auto first = static_cast<std::int64_t>(std::ceil((at - half) / rate));
    // The quotient is rounded, products are what decides.
    first -= static_cast<double>(first - 1) * rate - at >= -half ? 1 : 0;
    first += static_cast<double>(first) * rate - at < -half ? 1 : 0;
    // The pixel before the position is a sample even where the kernel is too short for it, so that the first samples of
    // neighbouring columns never go back.
    const double position = at / rate, whole = std::floor(position);
    const auto left = static_cast<std::int64_t>(whole);
    first = std::min(first, left);
    const auto weightAt = [&](std::int64_t j) {
        const double place = static_cast<double>(j) * rate - at + half; // 0 is the kernel's first tap
        if (place < 0 || place > 2 * half) {
            return 0.0;
        }
        const auto i = static_cast<std::int64_t>(place);
        const double fraction = place - static_cast<double>(i);
        const double next = fraction > 0 ? static_cast<double>(state.kernel[i + 1]) : 0.0;
        return static_cast<double>(state.kernel[i]) * (1 - fraction) + next * fraction;
    };
    double sum = 0;
    for (std::int32_t t = 0; t < state.samples; ++t) {
        sum += weightAt(first + t);
    }
    if (sum != 0) {
        for (std::int32_t t = 0; t < state.samples; ++t) {
            weights[t * stride] = static_cast<float>(weightAt(first + t) / sum);
        }
        return first;
    }
    // Interpolation between the two pixels around the position.
    for (std::int32_t t = 0; t < state.samples; ++t) {
        const std::int64_t j = first + t;
        const double weight = j == left ? 1 - (position - whole) : j == left + 1 ? position - whole : 0.0;
        weights[t * stride] = static_cast<float>(weight);
    }
    return first;
}

void fillLayerTables(LayerState &state, std::int64_t start) {
    state.tableStart = start;
    for (std::int64_t i = 0; i < state.strip; ++i) {
        const std::int64_t first = layerSamples(state, start + i, state.weights + i, state.strip);
        if (i == 0) {
            state.tableFirst = first;
        }
        state.offsets[i] = static_cast<std::int32_t>(first - state.tableFirst);
    }
}

StatusCode makeLayerState(const LayerRequest &request, LayerState **state) {
    Checks checks;
    checks.pointers(state, request.kernel).size(request.srcRoi);
    checks.require(request.mode == 2 && isPyramidRate(request.rate) && request.kernelSize >= 3 &&
                       request.kernelSize % 2 != 0,
                   StatusBadArgument);
    if (checks.failed()) {
        return checks.status();
    }

    LayerState made{};
    made.up = request.up;
    made.channels = request.channels;
    made.rate = request.rate;
    made.spacing = static_cast<double>(request.rate);
    if (!request.up && std::fabs(made.spacing - 2.0) <= 0.00002) {
        made.spacing = 2.0;
    }
    made.kernelSize = request.kernelSize;
    made.samples = sampleCount(made);
    made.strip = stripColumns(made, request.srcRoi.width);
    made.pitch = bufferPitch(made);
    const bool hasSizes =
        !request.up && request.kernelSize < request.srcRoi.width && request.kernelSize < request.srcRoi.height;
    made.sizeSteps = hasSizes ? levelSteps(request.srcRoi, request.rate, [](RoiSize) {}) : 0;

    const std::int64_t entries = hasSizes ? made.sizeSteps + 1 : 0;
    const std::int64_t rowTaps = std::max(std::int64_t{request.kernelSize} + 1, std::int64_t{made.samples});
    const std::int64_t combined = made.pitch * made.channels, convolved = request.up ? 0 : combined;
    LayerBytes bytes;
    bytes.add<LayerState>(1);
    bytes.add<float>(made.kernelSize);
    bytes.add<RoiSize>(entries);
    bytes.add<std::int32_t>(made.strip);
    bytes.add<float>(made.strip * made.samples);
    bytes.add<const void *>(rowTaps);
    bytes.add<float>(rowTaps);
    bytes.add<float>(combined);
    bytes.add<float>(convolved);
    void *block = rvxMalloc(bytes.total);
    if (block == nullptr) {
        return StatusNoMemory;
    }

    Scratch areas(block, bytes.total);
    auto *result = areas.take<LayerState>(1, 64);
    made.kernel = areas.take<float>(made.kernelSize, 64);
    made.sizes = hasSizes ? areas.take<RoiSize>(entries, 64) : nullptr;
    made.offsets = areas.take<std::int32_t>(made.strip, 64);
    made.weights = areas.take<float>(made.strip * made.samples, 64);
    made.rows = areas.take<const void *>(rowTaps, 64);
    made.rowWeights = areas.take<float>(rowTaps, 64);
    made.combined = areas.take<float>(combined, 64);
    made.convolved = areas.take<float>(convolved, 64);

    bool symmetric;
    if (request.type == PixelType32f) {
        fillFloatKernel(request, made.kernel);
        symmetric = isSymmetric(static_cast<const float *>(request.kernel), made.kernelSize);
    } else {
        fillIntegerKernel(request, made.kernel);
        symmetric = isSymmetric(static_cast<const std::int16_t *>(request.kernel), made.kernelSize);
    }
    if (hasSizes) {
        RoiSize *next = made.sizes;
        levelSteps(request.srcRoi, request.rate, [&next](RoiSize roi) { *next++ = roi; });
    }
    fillLayerTables(made, 0);
    *result = made;
    *state = result;
    return symmetric ? StatusOk : StatusKernelNotSymmetric;
}

StatusCode freeLayerState(LayerState *state) {
    if (state == nullptr) {
        return StatusNullPointer;
    }
    rvxFree(state);
    return StatusOk;
}

} // namespace rvxcv
