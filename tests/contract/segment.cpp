// Distances, filling, labelling, segmentation, speckles and outlines, marching and inpainting.
#include "contract/contract.h"

#include <limits>

namespace contract {
namespace {

const float notANumber = std::numeric_limits<float>::quiet_NaN();
const std::vector<NormKind> twoNorms = {NormInf, NormL1}, badNorms = {NormL2, -1};
using RegionQuery = StatusCode (*)(RoiSize, std::int32_t *);

void regionSize(Run &run, RegionQuery query) { sizes(run, query, queryRegions()); }

void sizeBy(RegionQuery query, RoiSize roi, Bytes &buffer) {
    std::int32_t size = 0;
    query(roi, &size);
    buffer.size(size);
}

// --------------------------------------------------------------------------------------------------------- distances

template <class M> using Costs = std::vector<M>;

// Costs of the usual shape, whose results are exact.
template <class M> std::vector<Costs<M>> usualCosts(int mask) {
    if constexpr (std::is_floating_point_v<M>) {
        return mask == 3 ? std::vector<Costs<M>>{{0.955F, 1.3693F}, {1, 1}, {1, 2}, {1e30F, 3e30F}}
                         : std::vector<Costs<M>>{{1, 1.4F, 2.1969F}, {1, 1, 2}, {0.5F, 0.7F, 1.2F}};
    } else {
        return mask == 3 ? std::vector<Costs<M>>{{2, 3}, {1, 1}, {100, 7}, {INT32_MAX, INT32_MAX}}
                         : std::vector<Costs<M>>{{5, 7, 11}, {1, 1, 2}, {9, 1, 2}, {300, 3, 70000}};
    }
}
template <class M> std::vector<Costs<M>> badCosts(int mask) {
    if constexpr (std::is_floating_point_v<M>) {
        return mask == 3 ? std::vector<Costs<M>>{{0, 1}, {1, -1}, {notANumber, 1}}
                         : std::vector<Costs<M>>{{-0.0F, 1, 1}, {1, 1, notANumber}, {1, -2, 1}};
    } else {
        return mask == 3 ? std::vector<Costs<M>>{{0, 1}, {1, -1}} : std::vector<Costs<M>>{{0, 1, 1}, {1, 1, 0}};
    }
}

template <class T, class M>
using Chamfer = StatusCode (*)(const std::uint8_t *, std::int32_t, T *, std::int32_t, RoiSize, const M *);

// Costs of an unusual shape: a result is within the rounding of as many additions as its path has steps.
void boundedChamfer(Run &run, Chamfer<float, float> f, int mask) {
    const Costs<float> costs = mask == 3 ? Costs<float>{2.3F, 1.1F} : Costs<float>{1.7F, 4.9F, 1.3F};
    Sweep sweep(run, {.sizes = {{17, 7}, {40, 25}}, .large = {0, 0}, .rounds = 1, .combinations = 1, .faulty = false});
    Image<const std::uint8_t> src(sweep, {.picture = fewZeros});
    Image<float> dst(sweep, {.digested = false});
    sweep.after = [&](StatusCode) {
        const RoiSize roi = sweep.roi();
        for (std::int32_t i = 0; i < 6; ++i) {
            const double value = dst.at(i * 7 % roi.width, i * 5 % roi.height);
            const double steps = 2 * (roi.width + roi.height);
            run.values.push_back({value, value * steps / (1 << 23)});
        }
    };
    sweep.run([&] { return f(src, src.step, dst, dst.step, sweep.roi(), costs.data()); });
}

template <class T, class M> void chamfer(Run &run, Chamfer<T, M> f, int mask) {
    Sweep sweep(run);
    Choice<Costs<M>> costs(sweep, usualCosts<M>(mask), badCosts<M>(mask));
    Image<const std::uint8_t> src(sweep, {.picture = fewZeros, .mixed = true});
    Image<T> dst(sweep);
    Region roi(sweep);
    Numbers<int> present(sweep, std::vector<int>{1});
    sweep.run(
        [&] { return f(src, src.step, dst, dst.step, roi, present != nullptr ? costs.value().data() : nullptr); });
    if constexpr (std::is_floating_point_v<T>) {
        boundedChamfer(run, f, mask);
    }
}

void chamferInPlace(Run &run, StatusCode (*f)(std::uint8_t *, std::int32_t, RoiSize, const std::int32_t *), int mask) {
    Sweep sweep(run);
    Choice<Costs<std::int32_t>> costs(sweep, usualCosts<std::int32_t>(mask), badCosts<std::int32_t>(mask));
    Image<std::uint8_t> image(sweep, {.picture = fewZeros, .mixed = true});
    Region roi(sweep);
    Numbers<int> present(sweep, std::vector<int>{1});
    sweep.run([&] { return f(image, image.step, roi, present != nullptr ? costs.value().data() : nullptr); });
}

template <class M> void costsOf(Run &run, StatusCode (*f)(std::int32_t, NormKind, M *)) {
    forEach(
        [&](std::int32_t size, NormKind norm) {
            M costs[3] = {91, 92, 93};
            run.digest.numbers({f(size, norm, costs), f(size, norm, nullptr)});
            run.digest.numbers({costs[0], costs[1], costs[2]});
        },
        std::vector<std::int32_t>{3, 5, 4, 0, 7}, std::vector<NormKind>{NormInf, NormL1, NormL2, 3, -1});
}

void costsOfType(Run &run, StatusCode (*f)(std::int32_t, float *)) {
    for (std::int32_t type = -12; type < 60; ++type) {
        float costs[3] = {91, 92, 93};
        run.digest.numbers({f(type, costs), f(type, nullptr)});
        run.digest.numbers({costs[0], costs[1], costs[2]});
    }
}

// Exact distances and marching times.
void distance(Run &run,
              StatusCode (*f)(const std::uint8_t *, std::int32_t, float *, std::int32_t, RoiSize, std::uint8_t *),
              RegionQuery query) {
    Sweep sweep(run);
    Image<const std::uint8_t> src(sweep, {.picture = run.next() % 2 != 0 ? fewZeros : blocks, .mixed = true});
    Image<float> dst(sweep);
    Region roi(sweep);
    Bytes buffer(sweep);
    sweep.before = [&] { sizeBy(query, sweep.roi(), buffer); };
    sweep.run([&] { return f(src, src.step, dst, dst.step, roi, buffer); });
}

// --------------------------------------------------------------------------------------------------------- flood fill

// A corner, the middle or a point outside: halves of the region's last column and row.
struct Seed {
    std::int32_t x, y;
    Point2i in(RoiSize roi) const {
        const auto place = [](std::int32_t half, std::int32_t n) {
            return half < 0 ? -1 : half > 2 ? n : half * (n - 1) / 2;
        };
        return {place(x, roi.width), place(y, roi.height)};
    }
};
const std::vector<Seed> seeds = {{1, 1}, {0, 0}, {2, 2}, {0, 2}}, badSeeds = {{-1, 1}, {3, 1}, {1, -1}, {1, 3}};

// What a fill receives besides the image: of one channel a value, of three a pointer.
template <class V> struct FillValue {
    using Element = std::remove_const_t<std::remove_pointer_t<V>>;
    FillValue(Sweep &sweep, std::vector<Element> values) : elements(sweep, std::move(values), std::is_pointer_v<V>) {}
    operator V() const {
        if constexpr (std::is_pointer_v<V>) {
            return elements;
        } else {
            return elements[0];
        }
    }
    Numbers<Element> elements;
};

template <class T, class V, class Call> void fill(Run &run, int channels, RegionQuery query, const Call &call) {
    Sweep sweep(run);
    Choice<Seed> seed(sweep, seeds, badSeeds);
    Choice<int> deltas(sweep, {0, 1, 2});
    Image<T> image(sweep, {.channels = channels, .picture = blocks, .mixed = true, .stepChannels = 1});
    Region roi(sweep);
    FillValue<V> value(sweep, {T{60}, T{7}, T{120}}), low(sweep, {T{0}, T{0}, T{0}}), high(sweep, {T{0}, T{0}, T{0}});
    Numbers<ConnectedComponent> region(sweep, 1);
    Bytes buffer(sweep);
    sweep.before = [&] {
        sizeBy(query, sweep.roi(), buffer);
        const T least = static_cast<T>(deltas * 2), most = static_cast<T>(deltas * 60);
        low.elements.assign({least, most, least});
        high.elements.assign({most, least, most});
    };
    sweep.run(
        [&] { return call(image, image.step, roi, seed.value().in(sweep.roi()), value, low, high, region, buffer); });
}

template <class T, class V>
void plainFill(Run &run, StatusCode (*f)(T *, std::int32_t, RoiSize, Point2i, V, ConnectedComponent *, std::uint8_t *),
               int channels) {
    fill<T, V>(run, channels, rvxiFloodFillGetSize,
               [f](T *image, std::int32_t step, RoiSize roi, Point2i seed, V value, V, V, ConnectedComponent *region,
                   std::uint8_t *buffer) { return f(image, step, roi, seed, value, region, buffer); });
}

template <class T, class V>
using ThreeValues = StatusCode (*)(T *, std::int32_t, RoiSize, Point2i, V, V, V, ConnectedComponent *, std::uint8_t *);

template <class T, class V> void rangeFill(Run &run, ThreeValues<T, V> f, int channels) {
    fill<T, V>(run, channels, rvxiFloodFillGetSize, f);
}

void rangeFillOfFloats(Run &run, StatusCode (*f)(float *, std::int32_t, RoiSize, Point2i, ConnectedComponent *,
                                                 std::uint8_t *, float, float, float)) {
    fill<float, float>(run, 1, rvxiFloodFillGetSize,
                       [f](float *image, std::int32_t step, RoiSize roi, Point2i seed, float value, float low,
                           float high, ConnectedComponent *region, std::uint8_t *buffer) {
                           return f(image, step, roi, seed, region, buffer, value, low, high);
                       });
}

template <class T, class V> void gradientFill(Run &run, ThreeValues<T, V> f, int channels) {
    fill<T, V>(run, channels, rvxiFloodFillGetSize_Grad,
               [f](T *image, std::int32_t step, RoiSize roi, Point2i seed, V value, V low, V high,
                   ConnectedComponent *region,
                   std::uint8_t *buffer) { return f(image, step, roi, seed, low, high, value, region, buffer); });
}

// ---------------------------------------------------------------------------------------------------------- labelling

struct Labels {
    std::int32_t first, last;
};
template <class T> std::vector<Labels> goodLabels() {
    const std::int32_t most = sizeof(T) == 1 ? 254 : sizeof(T) == 2 ? 65534 : 2147483646;
    return {{1, most}, {5, 7}, {most, most}};
}
template <class T> std::vector<Labels> badLabels() {
    std::vector<Labels> all = {{0, 9}, {9, 8}};
    all.push_back({1, sizeof(T) == 1 ? 255 : sizeof(T) == 2 ? 65535 : 2147483647});
    return all;
}

template <class T>
void labelInPlace(Run &run, StatusCode (*f)(T *, std::int32_t, RoiSize, std::int32_t, std::int32_t, NormKind,
                                            std::int32_t *, std::uint8_t *)) {
    Sweep sweep(run);
    Choice<Labels> labels(sweep, goodLabels<T>(), badLabels<T>());
    Choice<NormKind> norm(sweep, twoNorms, badNorms);
    Image<T> image(sweep, {.picture = twoLevels, .mixed = true});
    Region roi(sweep);
    Numbers<std::int32_t> count(sweep, 1);
    Bytes buffer(sweep);
    sweep.before = [&] { sizeBy(rvxiFloodFillGetSize, sweep.roi(), buffer); };
    sweep.run(
        [&] { return f(image, image.step, roi, labels.value().first, labels.value().last, norm, count, buffer); });
}

void label(Run &run, StatusCode (*f)(const std::uint8_t *, std::int32_t, std::int32_t *, std::int32_t, RoiSize,
                                     std::int32_t, std::int32_t, NormKind, std::int32_t *, std::uint8_t *)) {
    Sweep sweep(run);
    Choice<Labels> labels(sweep, goodLabels<std::int32_t>(), badLabels<std::int32_t>());
    Choice<NormKind> norm(sweep, twoNorms, badNorms);
    Image<const std::uint8_t> src(sweep, {.picture = twoLevels, .mixed = true});
    Image<std::int32_t> dst(sweep);
    Region roi(sweep);
    Numbers<std::int32_t> count(sweep, 1);
    Bytes buffer(sweep);
    sweep.before = [&] { sizeBy(rvxiLabelMarkersGetBufferSize_8u32s_C1R, sweep.roi(), buffer); };
    sweep.run([&] {
        return f(src, src.step, dst, dst.step, roi, labels.value().first, labels.value().last, norm, count, buffer);
    });
}

// -------------------------------------------------------------------------------------------------------- segmentation

// Some seeds and walls among free pixels.
std::int64_t markers(std::int64_t x, std::int64_t y, std::uint64_t seed) {
    const std::int64_t value = twoLevels(2 * x, 3 * y, seed) % 9;
    return value == 0 || value > 4 ? 0 : value == 4 ? -7 : value + 100 * (x / 9);
}

template <class T>
void segmentation(Run &run,
                  StatusCode (*f)(const T *, std::int32_t, std::int32_t *, std::int32_t, RoiSize, NormKind,
                                  std::int32_t, std::uint8_t *),
                  int channels, RegionQuery query) {
    Sweep sweep(run);
    Choice<NormKind> norm(sweep, twoNorms, badNorms);
    Choice<std::int32_t> flags(sweep, {SegmentNoLines, SegmentLines}, {2, -1});
    Image<const T> src(sweep, {.channels = channels, .picture = run.next() % 2 != 0 ? hills : blocks, .mixed = true});
    Image<std::int32_t> labels(sweep, {.picture = markers});
    Region roi(sweep);
    Bytes buffer(sweep);
    sweep.before = [&] { sizeBy(query, sweep.roi(), buffer); };
    sweep.run([&] { return f(src, src.step, labels, labels.step, roi, norm, flags, buffer); });
}

// ------------------------------------------------------------------------------------------------ speckles and bounds

template <class T>
void speckles(Run &run, StatusCode (*f)(T *, std::int32_t, RoiSize, T, std::int32_t, T, NormKind, std::uint8_t *),
              RegionQuery query) {
    Sweep sweep(run);
    Choice<T> value(sweep, {T{1}, T{60}});
    Choice<std::int32_t> most(sweep, {4, 0, 1, 60}, {-1});
    std::vector<T> badDifferences;
    if constexpr (std::is_signed_v<T>) {
        badDifferences.push_back(T{-1});
    }
    if constexpr (std::is_floating_point_v<T>) {
        badDifferences.push_back(notANumber);
    }
    Choice<T> difference(sweep, {T{1}, T{0}, T{70}}, badDifferences);
    Choice<NormKind> norm(sweep, {NormL1}, {NormInf, NormL2, 9});
    Image<T> image(sweep, {.picture = blocks, .mixed = true});
    Region roi(sweep);
    Bytes buffer(sweep);
    sweep.before = [&] { sizeBy(query, sweep.roi(), buffer); };
    sweep.run([&] { return f(image, image.step, roi, value, most, difference, norm, buffer); });
}

template <class T> void bounds(Run &run, StatusCode (*f)(T *, std::int32_t, RoiSize, T, NormKind)) {
    Sweep sweep(run);
    Choice<T> value(sweep, {T{0}, T{60}, T{99}});
    Choice<NormKind> norm(sweep, twoNorms, badNorms);
    Image<T> image(sweep, {.picture = blocks, .mixed = true});
    Region roi(sweep);
    sweep.run([&] { return f(image, image.step, roi, value, norm); });
}

// --------------------------------------------------------------------------------------------------------- inpainting

const std::vector<std::int32_t> radii = {1, 2, 5}, badRadii = {0, 101};

void inpaintSize(Run &run, StatusCode (*query)(RoiSize, std::int32_t, std::int32_t *)) {
    sizes(run, query, queryRegions(), std::vector<std::int32_t>{1, 5, 100, 101, 0, -1});
}

template <class T>
void inpaint(Run &run,
             StatusCode (*f)(const T *, std::int32_t, const std::uint8_t *, std::int32_t, T *, std::int32_t, RoiSize,
                             std::int32_t, InpaintMethod, std::uint8_t *),
             int channels) {
    Plan plan;
    plan.large = {75, 40};
    Sweep sweep(run, plan);
    Choice<std::int32_t> radius(sweep, radii, badRadii);
    Choice<InpaintMethod> method(sweep, {InpaintMarch, InpaintDiffusion}, {2, -1});
    Choice<bool> inPlace(sweep, {false, true});
    Image<const T> src(sweep, {.channels = channels, .contents = finite, .picture = hills, .mixed = true});
    Image<const std::uint8_t> mask(sweep, {.contents = random | constant, .picture = twoLevels, .mixed = true});
    Image<T> dst(sweep, {.channels = channels, .contents = finite});
    Region roi(sweep);
    Bytes buffer(sweep);
    sweep.before = [&] {
        std::int32_t size = 0;
        rvxiInpaintGetBufferSize_32f_C1MR(sweep.roi(), radius, &size);
        buffer.size(size);
    };
    sweep.run([&] {
        return inPlace ? f(dst, dst.step, mask, mask.step, dst, dst.step, roi, radius, method, buffer)
                       : f(src, src.step, mask, mask.step, dst, dst.step, roi, radius, method, buffer);
    });
}

} // namespace

void addSegment(Members &members) {
    const Member table[] = {
        MEMBER(rvxiGetDistanceTransformMask_32s, costsOf),
        MEMBER(rvxiGetDistanceTransformMask_32f, costsOf),
        MEMBER(rvxiGetDistanceTransformMask, costsOfType),
        MEMBER(rvxiDistanceTransform_3x3_8u_C1R, chamfer, 3),
        MEMBER(rvxiDistanceTransform_5x5_8u_C1R, chamfer, 5),
        MEMBER(rvxiDistanceTransform_3x3_8u_C1IR, chamferInPlace, 3),
        MEMBER(rvxiDistanceTransform_5x5_8u_C1IR, chamferInPlace, 5),
        MEMBER(rvxiDistanceTransform_3x3_8u16u_C1R, chamfer, 3),
        MEMBER(rvxiDistanceTransform_5x5_8u16u_C1R, chamfer, 5),
        MEMBER(rvxiDistanceTransform_3x3_8u32f_C1R, chamfer, 3),
        MEMBER(rvxiDistanceTransform_5x5_8u32f_C1R, chamfer, 5),
        MEMBER(rvxiTrueDistanceTransformGetBufferSize_8u32f_C1R, regionSize),
        MEMBER(rvxiTrueDistanceTransform_8u32f_C1R, distance, rvxiTrueDistanceTransformGetBufferSize_8u32f_C1R),
        MEMBER(rvxiFloodFillGetSize, regionSize),
        MEMBER(rvxiFloodFillGetSize_Grad, regionSize),
        MEMBER(rvxiFloodFill_4Con_8u_C1IR, plainFill, 1),
        MEMBER(rvxiFloodFill_4Con_16u_C1IR, plainFill, 1),
        MEMBER(rvxiFloodFill_4Con_32s_C1IR, plainFill, 1),
        MEMBER(rvxiFloodFill_4Con_32f_C1IR, plainFill, 1),
        MEMBER(rvxiFloodFill_4Con_8u_C3IR, plainFill, 3),
        MEMBER(rvxiFloodFill_4Con_16u_C3IR, plainFill, 3),
        MEMBER(rvxiFloodFill_4Con_32f_C3IR, plainFill, 3),
        MEMBER(rvxiFloodFill_8Con_8u_C1IR, plainFill, 1),
        MEMBER(rvxiFloodFill_8Con_16u_C1IR, plainFill, 1),
        MEMBER(rvxiFloodFill_8Con_32s_C1IR, plainFill, 1),
        MEMBER(rvxiFloodFill_8Con_32f_C1IR, plainFill, 1),
        MEMBER(rvxiFloodFill_8Con_8u_C3IR, plainFill, 3),
        MEMBER(rvxiFloodFill_8Con_16u_C3IR, plainFill, 3),
        MEMBER(rvxiFloodFill_8Con_32f_C3IR, plainFill, 3),
        MEMBER(rvxiFloodFill_Range4Con_8u_C1IR, rangeFill, 1),
        MEMBER(rvxiFloodFill_Range4Con_16u_C1IR, rangeFill, 1),
        MEMBER(rvxiFloodFill_Range4Con_32f_C1IR, rangeFillOfFloats),
        MEMBER(rvxiFloodFill_Range4Con_8u_C3IR, rangeFill, 3),
        MEMBER(rvxiFloodFill_Range4Con_16u_C3IR, rangeFill, 3),
        MEMBER(rvxiFloodFill_Range4Con_32f_C3IR, rangeFill, 3),
        MEMBER(rvxiFloodFill_Range8Con_8u_C1IR, rangeFill, 1),
        MEMBER(rvxiFloodFill_Range8Con_16u_C1IR, rangeFill, 1),
        MEMBER(rvxiFloodFill_Range8Con_32f_C1IR, rangeFillOfFloats),
        MEMBER(rvxiFloodFill_Range8Con_8u_C3IR, rangeFill, 3),
        MEMBER(rvxiFloodFill_Range8Con_16u_C3IR, rangeFill, 3),
        MEMBER(rvxiFloodFill_Range8Con_32f_C3IR, rangeFill, 3),
        MEMBER(rvxiFloodFill_Grad4Con_8u_C1IR, gradientFill, 1),
        MEMBER(rvxiFloodFill_Grad4Con_16u_C1IR, gradientFill, 1),
        MEMBER(rvxiFloodFill_Grad4Con_32f_C1IR, gradientFill, 1),
        MEMBER(rvxiFloodFill_Grad4Con_8u_C3IR, gradientFill, 3),
        MEMBER(rvxiFloodFill_Grad4Con_16u_C3IR, gradientFill, 3),
        MEMBER(rvxiFloodFill_Grad4Con_32f_C3IR, gradientFill, 3),
        MEMBER(rvxiFloodFill_Grad8Con_8u_C1IR, gradientFill, 1),
        MEMBER(rvxiFloodFill_Grad8Con_16u_C1IR, gradientFill, 1),
        MEMBER(rvxiFloodFill_Grad8Con_32f_C1IR, gradientFill, 1),
        MEMBER(rvxiFloodFill_Grad8Con_8u_C3IR, gradientFill, 3),
        MEMBER(rvxiFloodFill_Grad8Con_16u_C3IR, gradientFill, 3),
        MEMBER(rvxiFloodFill_Grad8Con_32f_C3IR, gradientFill, 3),
        MEMBER(rvxiLabelMarkers_8u_C1IR, labelInPlace),
        MEMBER(rvxiLabelMarkers_16u_C1IR, labelInPlace),
        MEMBER(rvxiLabelMarkers_8u32s_C1R, label),
        MEMBER(rvxiLabelMarkersGetBufferSize_8u_C1R, regionSize),
        MEMBER(rvxiLabelMarkersGetBufferSize_16u_C1R, regionSize),
        MEMBER(rvxiLabelMarkersGetBufferSize_8u32s_C1R, regionSize),
        MEMBER(rvxiSegmentWatershed_8u32s_C1IR, segmentation, 1, rvxiSegmentWatershedGetBufferSize_8u32s_C1R),
        MEMBER(rvxiSegmentWatershed_16u32s_C1IR, segmentation, 1, rvxiSegmentWatershedGetBufferSize_16u32s_C1R),
        MEMBER(rvxiSegmentGradient_8u32s_C1IR, segmentation, 1, rvxiSegmentGradientGetBufferSize_8u32s_C1R),
        MEMBER(rvxiSegmentGradient_8u32s_C3C1IR, segmentation, 3, rvxiSegmentGradientGetBufferSize_8u32s_C3C1R),
        MEMBER(rvxiSegmentWatershedGetBufferSize_8u32s_C1R, regionSize),
        MEMBER(rvxiSegmentWatershedGetBufferSize_16u32s_C1R, regionSize),
        MEMBER(rvxiSegmentGradientGetBufferSize_8u32s_C1R, regionSize),
        MEMBER(rvxiSegmentGradientGetBufferSize_8u32s_C3C1R, regionSize),
        MEMBER(rvxiMarkSpeckles_8u_C1IR, speckles, rvxiMarkSpecklesGetBufferSize_8u_C1R),
        MEMBER(rvxiMarkSpeckles_16u_C1IR, speckles, rvxiMarkSpecklesGetBufferSize_16u_C1R),
        MEMBER(rvxiMarkSpeckles_16s_C1IR, speckles, rvxiMarkSpecklesGetBufferSize_16s_C1R),
        MEMBER(rvxiMarkSpeckles_32f_C1IR, speckles, rvxiMarkSpecklesGetBufferSize_32f_C1R),
        MEMBER(rvxiMarkSpecklesGetBufferSize_8u_C1R, regionSize),
        MEMBER(rvxiMarkSpecklesGetBufferSize_16u_C1R, regionSize),
        MEMBER(rvxiMarkSpecklesGetBufferSize_16s_C1R, regionSize),
        MEMBER(rvxiMarkSpecklesGetBufferSize_32f_C1R, regionSize),
        MEMBER(rvxiBoundSegments_8u_C1IR, bounds),
        MEMBER(rvxiBoundSegments_16u_C1IR, bounds),
        MEMBER(rvxiBoundSegments_32s_C1IR, bounds),
        MEMBER(rvxiFastMarching_8u32f_C1R, distance, rvxiFastMarchingGetBufferSize_8u32f_C1R),
        MEMBER(rvxiFastMarchingGetBufferSize_8u32f_C1R, regionSize),
        MEMBER(rvxiInpaint_8u_C1MR, inpaint, 1),
        MEMBER(rvxiInpaint_8u_C3MR, inpaint, 3),
        MEMBER(rvxiInpaint_32f_C1MR, inpaint, 1),
        MEMBER(rvxiInpaintGetBufferSize_8u_C1MR, inpaintSize),
        MEMBER(rvxiInpaintGetBufferSize_8u_C3MR, inpaintSize),
        MEMBER(rvxiInpaintGetBufferSize_32f_C1MR, inpaintSize),
    };
    members.insert(members.end(), std::begin(table), std::end(table));
}

} // namespace contract
