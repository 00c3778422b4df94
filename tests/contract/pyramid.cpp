// Fixed halving and doubling, level sizes, the descriptor, and layers of any rate.
#include "contract/contract.h"

#include <limits>

namespace contract {
namespace {

const float notANumber = std::numeric_limits<float>::quiet_NaN();

// ------------------------------------------------------------------------------------------------------- fixed steps

using StepQuery = StatusCode (*)(std::int32_t, PixelTypeCode, std::int32_t, std::int32_t *);

RoiSize halved(RoiSize roi) { return {(roi.width + 1) / 2, (roi.height + 1) / 2}; }
RoiSize doubled(RoiSize roi) { return {2 * roi.width, 2 * roi.height}; }

template <class T>
void fixedStep(Run &run, StatusCode (*f)(const T *, std::int32_t, T *, std::int32_t, RoiSize, std::uint8_t *),
               PixelTypeCode type, int channels, StepQuery query, RoiSize (*size)(RoiSize)) {
    Sweep sweep(run);
    Image<const T> src(sweep, {.channels = channels});
    Image<T> dst(sweep, {.channels = channels, .size = size});
    Region roi(sweep);
    Bytes buffer(sweep);
    sweep.before = [&] {
        std::int32_t bytes = 0;
        query(sweep.roi().width, type, channels, &bytes);
        buffer.size(bytes);
    };
    sweep.run([&] { return f(src, src.step, dst, dst.step, roi, buffer); });
}

void stepSizes(Run &run, StepQuery query) {
    sizes(run, query, queryWidths(),
          std::vector<PixelTypeCode>{PixelType8u, PixelType8s, PixelType16u, PixelType32f, PixelType64f, 0},
          std::vector<std::int32_t>{1, 3, 2, 0});
}

// ----------------------------------------------------------------------------------------- level sizes and descriptor

const std::vector<float> rates = {2, 1.5F, 3, 1.25F, 1.4142135F, 2.00001F, 10, 1.0001F},
                         badRates = {1, 0.5F, 10.5F, -2, 0, notANumber};

std::vector<float> allRates() {
    std::vector<float> all = rates;
    all.insert(all.end(), badRates.begin(), badRates.end());
    return all;
}

void downSize(Run &run, StatusCode (*f)(RoiSize, RoiSize *, float)) {
    forEach(
        [&](RoiSize roi, float rate) {
            RoiSize size = {91, 92};
            run.digest.numbers({f(roi, &size, rate), size.width, size.height, f(roi, nullptr, rate)});
        },
        queryRegions(), allRates());
}

void upSize(Run &run, StatusCode (*f)(RoiSize, RoiSize *, RoiSize *, float)) {
    forEach(
        [&](RoiSize roi, float rate) {
            RoiSize least = {91, 92}, most = {93, 94};
            run.digest.numbers({f(roi, &least, &most, rate), least.width, least.height, most.width, most.height,
                                f(roi, nullptr, &most, rate), f(roi, &least, nullptr, rate)});
        },
        queryRegions(), allRates());
}

void recordInit(Run &run, StatusCode (*init)(PyramidRecord **, std::int32_t, RoiSize, float)) {
    forEach(
        [&](RoiSize roi, float rate, std::int32_t level) {
            PyramidRecord *record = nullptr;
            run.digest.numbers({init(&record, level, roi, rate), init(nullptr, level, roi, rate)});
            run.digest.number(record != nullptr);
            if (record == nullptr) {
                return;
            }
            run.digest.number(record->levelCount);
            run.digest.number(record->layerState == nullptr);
            for (std::int32_t i = 0; i <= record->levelCount; ++i) {
                run.digest.number(record->images[i] == nullptr);
                run.digest.numbers({record->roiSizes[i].width, record->roiSizes[i].height, record->steps[i]});
                run.digest.number(record->scales[i]);
            }
            run.digest.number(rvxiPyramidFree(record));
        },
        queryRegions(), allRates(), std::vector<std::int32_t>{1, 4, 60, 0, -1});
}

void recordFree(Run &run, StatusCode (*free)(PyramidRecord *)) {
    PyramidRecord *record = nullptr;
    run.digest.numbers({free(nullptr), rvxiPyramidInitAlloc(&record, 3, {40, 30}, 2), free(record)});
}

// ------------------------------------------------------------------------------------------------------------- layers

// Symmetric kernels; ones whose right half is something else, or whose sum is zero.
template <class K> std::vector<K> layerKernel(int kind) {
    std::vector<std::vector<int>> all = {{1, 4, 6, 4, 1}, {1, 2, 1}, {-1, 3, 9, 14, 9, 3, -1}, {1, 2, 5}, {-1, 2, -1}};
    return {all[static_cast<std::size_t>(kind)].begin(), all[static_cast<std::size_t>(kind)].end()};
}
const std::vector<int> layerKernels = {0, 1, 2, 3, 4};

template <class State, class K>
using LayerInit = StatusCode (*)(State **, RoiSize, float, const K *, std::int32_t, std::int32_t);
template <class State> using LayerFree = StatusCode (*)(State *);
template <class T, class State>
using Layer = StatusCode (*)(const T *, std::int32_t, RoiSize, T *, std::int32_t, RoiSize, State *);

// The size of a layer's destination: down the next level's, up the smallest, the largest or one between.
RoiSize nextSize(const PyramidLayerDownState *, RoiSize roi, float rate, int) {
    RoiSize size = {1, 1};
    rvxiGetPyramidDownROI(roi, &size, rate);
    return size;
}
RoiSize nextSize(const PyramidLayerUpState *, RoiSize roi, float rate, int which) {
    RoiSize least = {1, 1}, most = {1, 1};
    rvxiGetPyramidUpROI(roi, &least, &most, rate);
    return which == 0   ? least
           : which == 1 ? most
                        : RoiSize{(least.width + most.width) / 2, (least.height + most.height) / 2};
}

template <class T, class State, class K>
void layer(Run &run, Layer<T, State> f, int channels, LayerInit<State, K> init, LayerFree<State> free) {
    Plan plan;
    plan.large = {70, 50}; // doubled by ten at most
    Sweep sweep(run, plan);
    Choice<float> rate(sweep, {2, 1.5F, 3, 1.25F, 7.3F});
    Choice<int> kernel(sweep, layerKernels), which(sweep, {0, 1, 2});
    Choice<int> wrongSize(sweep, {0}, {1, -1, 1000});
    const auto size = [&](RoiSize roi) { return nextSize(static_cast<State *>(nullptr), roi, rate, which); };
    Image<const T> src(sweep, {.channels = channels});
    Image<T> dst(sweep, {.channels = channels, .size = size});
    Region srcRoi(sweep), dstRoi(sweep, size);
    Pointer<State> state(sweep);
    std::shared_ptr<State> kept;
    sweep.before = [&] {
        const std::vector<K> taps = layerKernel<K>(kernel);
        State *made = nullptr;
        run.digest.number(init(&made, sweep.roi(), rate, taps.data(), static_cast<std::int32_t>(taps.size()), 2));
        kept = {made, free};
        state.set(made);
    };
    sweep.run([&] {
        // A size that is too small is refused like one that is too large.
        RoiSize target = dstRoi;
        target.width += wrongSize;
        target.height -= wrongSize == -1 ? 1 : 0;
        return f(src, src.step, srcRoi, dst, dst.step, target, state);
    });
}

// What a state does to a small image.
template <class T, class State, class K>
void layerInit(Run &run, LayerInit<State, K> init, int channels, LayerFree<State> free, Layer<T, State> use) {
    forEach(
        [&](RoiSize roi, float rate, int kind, std::int32_t mode) {
            const std::vector<K> taps = layerKernel<K>(kind);
            const auto count = static_cast<std::int32_t>(taps.size());
            State *state = nullptr;
            run.digest.numbers(
                {init(nullptr, roi, rate, taps.data(), count, mode), init(&state, roi, rate, nullptr, count, mode),
                 init(&state, roi, rate, taps.data(), count - 1, mode), init(&state, roi, rate, taps.data(), 1, mode)});
            run.digest.number(state != nullptr);
            run.digest.number(init(&state, roi, rate, taps.data(), count, mode));
            run.digest.number(state != nullptr);
            if (state == nullptr) {
                return;
            }
            const RoiSize size = nextSize(state, roi, rate, 0);
            const auto elements = [&](RoiSize r) {
                return static_cast<std::size_t>(r.width) * static_cast<std::size_t>(r.height * channels);
            };
            const auto step = [&](RoiSize r) { return r.width * channels * static_cast<std::int32_t>(sizeof(T)); };
            std::vector<T> src(elements(roi)), dst(elements(size));
            for (std::size_t i = 0; i < src.size(); ++i) {
                src[i] = static_cast<T>(hills(static_cast<std::int64_t>(i), static_cast<std::int64_t>(i / 5), 3));
            }
            run.digest.number(use(src.data(), step(roi), roi, dst.data(), step(size), size, state));
            for (const T value : dst) {
                run.digest.number(value);
            }
            run.digest.number(free(state));
        },
        std::vector<RoiSize>{{17, 9}, {1, 1}, {0, 4}, {4, -1}}, allRates(), layerKernels,
        std::vector<std::int32_t>{2, 1, 0});
}

template <class State, class K> void layerFree(Run &run, LayerFree<State> free, LayerInit<State, K> init) {
    const std::vector<K> taps = layerKernel<K>(0);
    State *state = nullptr;
    run.digest.numbers({free(nullptr), init(&state, {9, 5}, 2, taps.data(), 5, 2), free(state)});
}

} // namespace

void addPyramid(Members &members) {
    const Member table[] = {
        MEMBER(rvxiPyrDown_Gauss5x5_8u_C1R, fixedStep, PixelType8u, 1, rvxiPyrDownGetBufSize_Gauss5x5, halved),
        MEMBER(rvxiPyrDown_Gauss5x5_8u_C3R, fixedStep, PixelType8u, 3, rvxiPyrDownGetBufSize_Gauss5x5, halved),
        MEMBER(rvxiPyrDown_Gauss5x5_8s_C1R, fixedStep, PixelType8s, 1, rvxiPyrDownGetBufSize_Gauss5x5, halved),
        MEMBER(rvxiPyrDown_Gauss5x5_8s_C3R, fixedStep, PixelType8s, 3, rvxiPyrDownGetBufSize_Gauss5x5, halved),
        MEMBER(rvxiPyrDown_Gauss5x5_32f_C1R, fixedStep, PixelType32f, 1, rvxiPyrDownGetBufSize_Gauss5x5, halved),
        MEMBER(rvxiPyrDown_Gauss5x5_32f_C3R, fixedStep, PixelType32f, 3, rvxiPyrDownGetBufSize_Gauss5x5, halved),
        MEMBER(rvxiPyrUp_Gauss5x5_8u_C1R, fixedStep, PixelType8u, 1, rvxiPyrUpGetBufSize_Gauss5x5, doubled),
        MEMBER(rvxiPyrUp_Gauss5x5_8u_C3R, fixedStep, PixelType8u, 3, rvxiPyrUpGetBufSize_Gauss5x5, doubled),
        MEMBER(rvxiPyrUp_Gauss5x5_8s_C1R, fixedStep, PixelType8s, 1, rvxiPyrUpGetBufSize_Gauss5x5, doubled),
        MEMBER(rvxiPyrUp_Gauss5x5_8s_C3R, fixedStep, PixelType8s, 3, rvxiPyrUpGetBufSize_Gauss5x5, doubled),
        MEMBER(rvxiPyrUp_Gauss5x5_32f_C1R, fixedStep, PixelType32f, 1, rvxiPyrUpGetBufSize_Gauss5x5, doubled),
        MEMBER(rvxiPyrUp_Gauss5x5_32f_C3R, fixedStep, PixelType32f, 3, rvxiPyrUpGetBufSize_Gauss5x5, doubled),
        MEMBER(rvxiPyrDownGetBufSize_Gauss5x5, stepSizes),
        MEMBER(rvxiPyrUpGetBufSize_Gauss5x5, stepSizes),
        MEMBER(rvxiGetPyramidDownROI, downSize),
        MEMBER(rvxiGetPyramidUpROI, upSize),
        MEMBER(rvxiPyramidInitAlloc, recordInit),
        MEMBER(rvxiPyramidFree, recordFree),
        MEMBER(rvxiPyramidLayerDownInitAlloc_8u_C1R, layerInit, 1, rvxiPyramidLayerDownFree_8u_C1R,
               rvxiPyramidLayerDown_8u_C1R),
        MEMBER(rvxiPyramidLayerDownInitAlloc_8u_C3R, layerInit, 3, rvxiPyramidLayerDownFree_8u_C3R,
               rvxiPyramidLayerDown_8u_C3R),
        MEMBER(rvxiPyramidLayerDownInitAlloc_16u_C1R, layerInit, 1, rvxiPyramidLayerDownFree_16u_C1R,
               rvxiPyramidLayerDown_16u_C1R),
        MEMBER(rvxiPyramidLayerDownInitAlloc_16u_C3R, layerInit, 3, rvxiPyramidLayerDownFree_16u_C3R,
               rvxiPyramidLayerDown_16u_C3R),
        MEMBER(rvxiPyramidLayerDownInitAlloc_32f_C1R, layerInit, 1, rvxiPyramidLayerDownFree_32f_C1R,
               rvxiPyramidLayerDown_32f_C1R),
        MEMBER(rvxiPyramidLayerDownInitAlloc_32f_C3R, layerInit, 3, rvxiPyramidLayerDownFree_32f_C3R,
               rvxiPyramidLayerDown_32f_C3R),
        MEMBER(rvxiPyramidLayerDownFree_8u_C1R, layerFree, rvxiPyramidLayerDownInitAlloc_8u_C1R),
        MEMBER(rvxiPyramidLayerDownFree_8u_C3R, layerFree, rvxiPyramidLayerDownInitAlloc_8u_C3R),
        MEMBER(rvxiPyramidLayerDownFree_16u_C1R, layerFree, rvxiPyramidLayerDownInitAlloc_16u_C1R),
        MEMBER(rvxiPyramidLayerDownFree_16u_C3R, layerFree, rvxiPyramidLayerDownInitAlloc_16u_C3R),
        MEMBER(rvxiPyramidLayerDownFree_32f_C1R, layerFree, rvxiPyramidLayerDownInitAlloc_32f_C1R),
        MEMBER(rvxiPyramidLayerDownFree_32f_C3R, layerFree, rvxiPyramidLayerDownInitAlloc_32f_C3R),
        MEMBER(rvxiPyramidLayerDown_8u_C1R, layer, 1, rvxiPyramidLayerDownInitAlloc_8u_C1R,
               rvxiPyramidLayerDownFree_8u_C1R),
        MEMBER(rvxiPyramidLayerDown_8u_C3R, layer, 3, rvxiPyramidLayerDownInitAlloc_8u_C3R,
               rvxiPyramidLayerDownFree_8u_C3R),
        MEMBER(rvxiPyramidLayerDown_16u_C1R, layer, 1, rvxiPyramidLayerDownInitAlloc_16u_C1R,
               rvxiPyramidLayerDownFree_16u_C1R),
        MEMBER(rvxiPyramidLayerDown_16u_C3R, layer, 3, rvxiPyramidLayerDownInitAlloc_16u_C3R,
               rvxiPyramidLayerDownFree_16u_C3R),
        MEMBER(rvxiPyramidLayerDown_32f_C1R, layer, 1, rvxiPyramidLayerDownInitAlloc_32f_C1R,
               rvxiPyramidLayerDownFree_32f_C1R),
        MEMBER(rvxiPyramidLayerDown_32f_C3R, layer, 3, rvxiPyramidLayerDownInitAlloc_32f_C3R,
               rvxiPyramidLayerDownFree_32f_C3R),
        MEMBER(rvxiPyramidLayerUpInitAlloc_8u_C1R, layerInit, 1, rvxiPyramidLayerUpFree_8u_C1R,
               rvxiPyramidLayerUp_8u_C1R),
        MEMBER(rvxiPyramidLayerUpInitAlloc_8u_C3R, layerInit, 3, rvxiPyramidLayerUpFree_8u_C3R,
               rvxiPyramidLayerUp_8u_C3R),
        MEMBER(rvxiPyramidLayerUpInitAlloc_16u_C1R, layerInit, 1, rvxiPyramidLayerUpFree_16u_C1R,
               rvxiPyramidLayerUp_16u_C1R),
        MEMBER(rvxiPyramidLayerUpInitAlloc_16u_C3R, layerInit, 3, rvxiPyramidLayerUpFree_16u_C3R,
               rvxiPyramidLayerUp_16u_C3R),
        MEMBER(rvxiPyramidLayerUpInitAlloc_32f_C1R, layerInit, 1, rvxiPyramidLayerUpFree_32f_C1R,
               rvxiPyramidLayerUp_32f_C1R),
        MEMBER(rvxiPyramidLayerUpInitAlloc_32f_C3R, layerInit, 3, rvxiPyramidLayerUpFree_32f_C3R,
               rvxiPyramidLayerUp_32f_C3R),
        MEMBER(rvxiPyramidLayerUpFree_8u_C1R, layerFree, rvxiPyramidLayerUpInitAlloc_8u_C1R),
        MEMBER(rvxiPyramidLayerUpFree_8u_C3R, layerFree, rvxiPyramidLayerUpInitAlloc_8u_C3R),
        MEMBER(rvxiPyramidLayerUpFree_16u_C1R, layerFree, rvxiPyramidLayerUpInitAlloc_16u_C1R),
        MEMBER(rvxiPyramidLayerUpFree_16u_C3R, layerFree, rvxiPyramidLayerUpInitAlloc_16u_C3R),
        MEMBER(rvxiPyramidLayerUpFree_32f_C1R, layerFree, rvxiPyramidLayerUpInitAlloc_32f_C1R),
        MEMBER(rvxiPyramidLayerUpFree_32f_C3R, layerFree, rvxiPyramidLayerUpInitAlloc_32f_C3R),
        MEMBER(rvxiPyramidLayerUp_8u_C1R, layer, 1, rvxiPyramidLayerUpInitAlloc_8u_C1R, rvxiPyramidLayerUpFree_8u_C1R),
        MEMBER(rvxiPyramidLayerUp_8u_C3R, layer, 3, rvxiPyramidLayerUpInitAlloc_8u_C3R, rvxiPyramidLayerUpFree_8u_C3R),
        MEMBER(rvxiPyramidLayerUp_16u_C1R, layer, 1, rvxiPyramidLayerUpInitAlloc_16u_C1R,
               rvxiPyramidLayerUpFree_16u_C1R),
        MEMBER(rvxiPyramidLayerUp_16u_C3R, layer, 3, rvxiPyramidLayerUpInitAlloc_16u_C3R,
               rvxiPyramidLayerUpFree_16u_C3R),
        MEMBER(rvxiPyramidLayerUp_32f_C1R, layer, 1, rvxiPyramidLayerUpInitAlloc_32f_C1R,
               rvxiPyramidLayerUpFree_32f_C1R),
        MEMBER(rvxiPyramidLayerUp_32f_C3R, layer, 3, rvxiPyramidLayerUpInitAlloc_32f_C3R,
               rvxiPyramidLayerUpFree_32f_C3R),
    };
    members.insert(members.end(), std::begin(table), std::end(table));
}

} // namespace contract
