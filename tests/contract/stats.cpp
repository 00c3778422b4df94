// Integral images, deviations in windows, norms, means and extrema.
#include "contract/contract.h"

namespace contract {
namespace {

// --------------------------------------------------------------------------------------------------- integral images

template <int More> RoiSize grown(RoiSize roi) { return {roi.width + More, roi.height + More}; }
const auto upright = grown<1>, tilted = grown<2>;
using Grow = RoiSize (*)(RoiSize);

template <class D>
void integral(Run &run, StatusCode (*f)(const std::uint8_t *, std::int32_t, D *, std::int32_t, RoiSize, D), Grow size) {
    Sweep sweep(run);
    Image<const std::uint8_t> src(sweep);
    Image<D> dst(sweep, {.size = size});
    Region roi(sweep);
    Choice<D> value(sweep, {D{0}, D{-7}, D{2000000000}});
    sweep.run([&] { return f(src, src.step, dst, dst.step, roi, value); });
}

void integralOfFloats(Run &run, StatusCode (*f)(const float *, std::int32_t, float *, std::int32_t, RoiSize)) {
    Sweep sweep(run);
    Image<const float> src(sweep);
    Image<float> dst(sweep, {.size = upright});
    Region roi(sweep);
    sweep.run([&] { return f(src, src.step, dst, dst.step, roi); });
}

template <class D, class Q, class V, class W>
void squareIntegral(Run &run,
                    StatusCode (*f)(const std::uint8_t *, std::int32_t, D *, std::int32_t, Q *, std::int32_t, RoiSize,
                                    V, W),
                    Grow size) {
    Sweep sweep(run);
    Image<const std::uint8_t> src(sweep);
    Image<D> dst(sweep, {.size = size});
    Image<Q> sqr(sweep, {.size = size});
    Region roi(sweep);
    Choice<V> value(sweep, {V{0}, V{-7}, V{2000000000}});
    Choice<W> squareValue(sweep, {W{0}, W{12345}, W{-3}});
    sweep.run([&] { return f(src, src.step, dst, dst.step, sqr, sqr.step, roi, value, squareValue); });
}

// --------------------------------------------------------------------------------------------------------- deviations

const std::vector<Rect2i> windows = {{0, 0, 1, 1}, {0, 0, 3, 2}, {2, 1, 4, 4}, {1, 3, 7, 1}},
                          badWindows = {{-1, 0, 2, 2}, {0, -1, 2, 2}, {0, 0, 0, 2}, {0, 0, 2, -1}};
const std::vector<Rect2i> tiltedWindows = {{0, 0, 1, 1}, {2, 0, 3, 2}, {5, 1, 2, 4}, {3, 2, 6, 1}};

// What the windows reach, and what the documented steps cover. The images hold sums of real pictures in one half of the
// calls and anything in the others.
struct Windows {
    Windows(Sweep &sweep, bool isTilted)
        : tilted(isTilted), window(sweep, isTilted ? tiltedWindows : windows, badWindows) {}
    RoiSize size(RoiSize roi) const {
        const Rect2i w = window;
        return tilted ? RoiSize{roi.width + w.x + w.width + 1, roi.height + w.y + w.width + w.height + 1}
                      : RoiSize{roi.width + w.x + w.width, roi.height + w.y + w.height};
    }
    bool tilted;
    Choice<Rect2i> window;
};

// Integral images of a picture, with its squares.
template <class D, class Q> void sumUp(Image<D> &sum, Image<Q> &sqr, RoiSize size, bool isTilted, std::uint64_t seed) {
    std::vector<std::uint8_t> picture(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height));
    for (std::size_t i = 0; i < picture.size(); ++i) {
        picture[i] = static_cast<std::uint8_t>(
            hills(static_cast<std::int64_t>(i) % size.width, static_cast<std::int64_t>(i) / size.width, seed));
    }
    const std::int32_t more = isTilted ? 2 : 1;
    const RoiSize inner = {size.width - more, size.height - more};
    const auto at = [&](std::int64_t x, std::int64_t y) -> std::int64_t {
        return x >= 0 && y >= 0 && x < inner.width && y < inner.height
                   ? picture[static_cast<std::size_t>(y * size.width + x)]
                   : 0;
    };
    for (std::int32_t y = 0; y < size.height; ++y) {
        for (std::int32_t x = 0; x < size.width; ++x) {
            const auto element = [&](auto &image, auto power) {
                using T = std::decay_t<decltype(image.at(0, 0))>;
                const auto of = [&](std::int64_t column, std::int64_t row) {
                    return row < 0 || column < 0 || column >= size.width
                               ? std::int64_t{0}
                               : static_cast<std::int64_t>(image.at(column, row));
                };
                std::int64_t value = 0;
                if (!isTilted && x > 0 && y > 0) {
                    value = of(x, y - 1) + of(x - 1, y) - of(x - 1, y - 1) + power(at(x - 1, y - 1));
                } else if (isTilted && y > 1) {
                    value = x == 0                ? of(1, y - 1)
                            : x == size.width - 1 ? of(x - 1, y - 1)
                                                  : power(at(x - 1, y - 2)) + power(at(x, y - 2)) + of(x - 1, y - 1) +
                                                        of(x + 1, y - 1) - of(x, y - 2);
                }
                image.set(x, y, static_cast<T>(value));
            };
            element(sum, [](std::int64_t v) { return v; });
            element(sqr, [](std::int64_t v) { return v * v; });
        }
    }
}

template <class D, class Q, class T, class Call>
void deviationOf(Run &run, bool isTilted, std::vector<std::int32_t> scales, const Call &call) {
    Sweep sweep(run);
    Windows windowsOf(sweep, isTilted);
    Choice<std::int32_t> scale(sweep, std::move(scales));
    const auto size = [&](RoiSize roi) { return windowsOf.size(roi); };
    Image<D> sum(sweep, {.size = size});
    Image<Q> sqr(sweep, {.size = size});
    Image<T> dst(sweep);
    Region roi(sweep);
    sweep.before = [&] {
        if (sweep.turn() % 2 == 0) {
            sumUp(sum, sqr, size(sweep.roi()), isTilted, run.next());
        }
    };
    sweep.run([&] { return call(sum, sum.step, sqr, sqr.step, dst, dst.step, roi, windowsOf.window, scale); });
}

template <class D, class Q, class T>
void deviation(Run &run,
               StatusCode (*f)(const D *, std::int32_t, const Q *, std::int32_t, T *, std::int32_t, RoiSize, Rect2i),
               bool isTilted) {
    deviationOf<D, Q, T>(run, isTilted, {0},
                         [f](const D *sum, std::int32_t sumStep, const Q *sqr, std::int32_t sqrStep, T *dst,
                             std::int32_t dstStep, RoiSize roi, Rect2i window,
                             std::int32_t) { return f(sum, sumStep, sqr, sqrStep, dst, dstStep, roi, window); });
}

void scaledDeviation(Run &run,
                     StatusCode (*f)(const std::int32_t *, std::int32_t, const std::int32_t *, std::int32_t,
                                     std::int32_t *, std::int32_t, RoiSize, Rect2i, std::int32_t),
                     bool isTilted) {
    deviationOf<std::int32_t, std::int32_t, std::int32_t>(run, isTilted, {0, 2, -3, -40, 70}, f);
}

// ------------------------------------------------------------------------------- norms, means and extrema under masks

const std::vector<std::int32_t> goodChannels = {1, 2, 3}, badChannels = {0, 4};

using Doubles = Numbers<double>;
using Points = Numbers<Point2i>;

template <class T>
void norm(Run &run, StatusCode (*f)(const T *, std::int32_t, const std::uint8_t *, std::int32_t, RoiSize, double *)) {
    Sweep sweep(run);
    Image<const T> src(sweep);
    Image<const std::uint8_t> mask(sweep, {.picture = twoLevels});
    Region roi(sweep);
    Doubles value(sweep, 1);
    sweep.run([&] { return f(src, src.step, mask, mask.step, roi, value); });
}

template <class T>
void channelNorm(Run &run, StatusCode (*f)(const T *, std::int32_t, const std::uint8_t *, std::int32_t, RoiSize,
                                           std::int32_t, double *)) {
    Sweep sweep(run);
    Image<const T> src(sweep, {.channels = 3});
    Image<const std::uint8_t> mask(sweep, {.picture = twoLevels});
    Region roi(sweep);
    Choice<std::int32_t> channel(sweep, goodChannels, badChannels);
    Doubles value(sweep, 1);
    sweep.run([&] { return f(src, src.step, mask, mask.step, roi, channel, value); });
}

// Of two images; the same one twice is allowed.
template <class T>
void normOfTwo(Run &run, StatusCode (*f)(const T *, std::int32_t, const T *, std::int32_t, const std::uint8_t *,
                                         std::int32_t, RoiSize, double *)) {
    Sweep sweep(run);
    Image<const T> src1(sweep), src2(sweep);
    Image<const std::uint8_t> mask(sweep, {.picture = twoLevels});
    Region roi(sweep);
    Doubles value(sweep, 1);
    Choice<bool> same(sweep, {false, false, true});
    sweep.run([&] {
        return same ? f(src1, src1.step, src1, src1.step, mask, mask.step, roi, value)
                    : f(src1, src1.step, src2, src2.step, mask, mask.step, roi, value);
    });
}

template <class T>
void channelNormOfTwo(Run &run, StatusCode (*f)(const T *, std::int32_t, const T *, std::int32_t, const std::uint8_t *,
                                                std::int32_t, RoiSize, std::int32_t, double *)) {
    Sweep sweep(run);
    Image<const T> src1(sweep, {.channels = 3}), src2(sweep, {.channels = 3});
    Image<const std::uint8_t> mask(sweep, {.picture = twoLevels});
    Region roi(sweep);
    Choice<std::int32_t> channel(sweep, goodChannels, badChannels);
    Doubles value(sweep, 1);
    Choice<bool> same(sweep, {false, false, true});
    sweep.run([&] {
        return same ? f(src1, src1.step, src1, src1.step, mask, mask.step, roi, channel, value)
                    : f(src1, src1.step, src2, src2.step, mask, mask.step, roi, channel, value);
    });
}

// Mean and deviation; extrema and their places: the outputs stand at the end of the arguments.
template <class... Outputs> struct Results;
template <> struct Results<double *, double *> {
    explicit Results(Sweep &sweep) : first(sweep, 1), second(sweep, 1) {}
    template <class Call> StatusCode operator()(const Call &call) const { return call(first, second); }
    Doubles first, second;
};
template <> struct Results<double *, double *, Point2i *, Point2i *> {
    explicit Results(Sweep &sweep) : least(sweep, 1), most(sweep, 1), leastAt(sweep, 1), mostAt(sweep, 1) {}
    template <class Call> StatusCode operator()(const Call &call) const { return call(least, most, leastAt, mostAt); }
    Doubles least, most;
    Points leastAt, mostAt;
};

template <class T, class... Out> void measure(Run &run, StatusCode (*f)(const T *, std::int32_t, RoiSize, Out...)) {
    Sweep sweep(run);
    Image<const T> src(sweep);
    Region roi(sweep);
    Results<Out...> results(sweep);
    sweep.run([&] { return results([&](Out... out) { return f(src, src.step, roi, out...); }); });
}

template <class T, class... Out>
void measureMasked(Run &run,
                   StatusCode (*f)(const T *, std::int32_t, const std::uint8_t *, std::int32_t, RoiSize, Out...)) {
    Sweep sweep(run);
    Image<const T> src(sweep);
    Image<const std::uint8_t> mask(sweep, {.picture = twoLevels});
    Region roi(sweep);
    Results<Out...> results(sweep);
    sweep.run([&] { return results([&](Out... out) { return f(src, src.step, mask, mask.step, roi, out...); }); });
}

template <class T, class... Out>
void measureChannel(Run &run, StatusCode (*f)(const T *, std::int32_t, RoiSize, std::int32_t, Out...)) {
    Sweep sweep(run);
    Image<const T> src(sweep, {.channels = 3});
    Region roi(sweep);
    Choice<std::int32_t> channel(sweep, goodChannels, badChannels);
    Results<Out...> results(sweep);
    sweep.run([&] { return results([&](Out... out) { return f(src, src.step, roi, channel, out...); }); });
}

template <class T, class... Out>
void measureMaskedChannel(Run &run, StatusCode (*f)(const T *, std::int32_t, const std::uint8_t *, std::int32_t,
                                                    RoiSize, std::int32_t, Out...)) {
    Sweep sweep(run);
    Image<const T> src(sweep, {.channels = 3});
    Image<const std::uint8_t> mask(sweep, {.picture = twoLevels});
    Region roi(sweep);
    Choice<std::int32_t> channel(sweep, goodChannels, badChannels);
    Results<Out...> results(sweep);
    sweep.run(
        [&] { return results([&](Out... out) { return f(src, src.step, mask, mask.step, roi, channel, out...); }); });
}

} // namespace

void addStats(Members &members) {
    const Member table[] = {
        MEMBER(rvxiIntegral_8u32s_C1R, integral, upright),
        MEMBER(rvxiIntegral_8u32f_C1R, integral, upright),
        MEMBER(rvxiIntegral_32f_C1R, integralOfFloats),
        MEMBER(rvxiSqrIntegral_8u32s_C1R, squareIntegral, upright),
        MEMBER(rvxiSqrIntegral_8u32s64f_C1R, squareIntegral, upright),
        MEMBER(rvxiSqrIntegral_8u32f64f_C1R, squareIntegral, upright),
        MEMBER(rvxiTiltedIntegral_8u32s_C1R, integral, tilted),
        MEMBER(rvxiTiltedIntegral_8u32f_C1R, integral, tilted),
        MEMBER(rvxiTiltedSqrIntegral_8u32s_C1R, squareIntegral, tilted),
        MEMBER(rvxiTiltedSqrIntegral_8u32s64f_C1R, squareIntegral, tilted),
        MEMBER(rvxiTiltedSqrIntegral_8u32f64f_C1R, squareIntegral, tilted),
        MEMBER(rvxiRectStdDev_32f_C1R, deviation, false),
        MEMBER(rvxiRectStdDev_32s32f_C1R, deviation, false),
        MEMBER(rvxiRectStdDev_32s_C1RSfs, scaledDeviation, false),
        MEMBER(rvxiTiltedRectStdDev_32f_C1R, deviation, true),
        MEMBER(rvxiTiltedRectStdDev_32s32f_C1R, deviation, true),
        MEMBER(rvxiTiltedRectStdDev_32s_C1RSfs, scaledDeviation, true),
        MEMBER(rvxiNorm_Inf_8u_C1MR, norm),
        MEMBER(rvxiNorm_Inf_8s_C1MR, norm),
        MEMBER(rvxiNorm_Inf_16u_C1MR, norm),
        MEMBER(rvxiNorm_Inf_32f_C1MR, norm),
        MEMBER(rvxiNorm_Inf_8u_C3CMR, channelNorm),
        MEMBER(rvxiNorm_Inf_8s_C3CMR, channelNorm),
        MEMBER(rvxiNorm_Inf_16u_C3CMR, channelNorm),
        MEMBER(rvxiNorm_Inf_32f_C3CMR, channelNorm),
        MEMBER(rvxiNorm_L1_8u_C1MR, norm),
        MEMBER(rvxiNorm_L1_8s_C1MR, norm),
        MEMBER(rvxiNorm_L1_16u_C1MR, norm),
        MEMBER(rvxiNorm_L1_32f_C1MR, norm),
        MEMBER(rvxiNorm_L1_8u_C3CMR, channelNorm),
        MEMBER(rvxiNorm_L1_8s_C3CMR, channelNorm),
        MEMBER(rvxiNorm_L1_16u_C3CMR, channelNorm),
        MEMBER(rvxiNorm_L1_32f_C3CMR, channelNorm),
        MEMBER(rvxiNorm_L2_8u_C1MR, norm),
        MEMBER(rvxiNorm_L2_8s_C1MR, norm),
        MEMBER(rvxiNorm_L2_16u_C1MR, norm),
        MEMBER(rvxiNorm_L2_32f_C1MR, norm),
        MEMBER(rvxiNorm_L2_8u_C3CMR, channelNorm),
        MEMBER(rvxiNorm_L2_8s_C3CMR, channelNorm),
        MEMBER(rvxiNorm_L2_16u_C3CMR, channelNorm),
        MEMBER(rvxiNorm_L2_32f_C3CMR, channelNorm),
        MEMBER(rvxiNormDiff_Inf_8u_C1MR, normOfTwo),
        MEMBER(rvxiNormDiff_Inf_8s_C1MR, normOfTwo),
        MEMBER(rvxiNormDiff_Inf_16u_C1MR, normOfTwo),
        MEMBER(rvxiNormDiff_Inf_32f_C1MR, normOfTwo),
        MEMBER(rvxiNormDiff_Inf_8u_C3CMR, channelNormOfTwo),
        MEMBER(rvxiNormDiff_Inf_8s_C3CMR, channelNormOfTwo),
        MEMBER(rvxiNormDiff_Inf_16u_C3CMR, channelNormOfTwo),
        MEMBER(rvxiNormDiff_Inf_32f_C3CMR, channelNormOfTwo),
        MEMBER(rvxiNormDiff_L1_8u_C1MR, normOfTwo),
        MEMBER(rvxiNormDiff_L1_8s_C1MR, normOfTwo),
        MEMBER(rvxiNormDiff_L1_16u_C1MR, normOfTwo),
        MEMBER(rvxiNormDiff_L1_32f_C1MR, normOfTwo),
        MEMBER(rvxiNormDiff_L1_8u_C3CMR, channelNormOfTwo),
        MEMBER(rvxiNormDiff_L1_8s_C3CMR, channelNormOfTwo),
        MEMBER(rvxiNormDiff_L1_16u_C3CMR, channelNormOfTwo),
        MEMBER(rvxiNormDiff_L1_32f_C3CMR, channelNormOfTwo),
        MEMBER(rvxiNormDiff_L2_8u_C1MR, normOfTwo),
        MEMBER(rvxiNormDiff_L2_8s_C1MR, normOfTwo),
        MEMBER(rvxiNormDiff_L2_16u_C1MR, normOfTwo),
        MEMBER(rvxiNormDiff_L2_32f_C1MR, normOfTwo),
        MEMBER(rvxiNormDiff_L2_8u_C3CMR, channelNormOfTwo),
        MEMBER(rvxiNormDiff_L2_8s_C3CMR, channelNormOfTwo),
        MEMBER(rvxiNormDiff_L2_16u_C3CMR, channelNormOfTwo),
        MEMBER(rvxiNormDiff_L2_32f_C3CMR, channelNormOfTwo),
        MEMBER(rvxiNormRel_Inf_8u_C1MR, normOfTwo),
        MEMBER(rvxiNormRel_Inf_8s_C1MR, normOfTwo),
        MEMBER(rvxiNormRel_Inf_16u_C1MR, normOfTwo),
        MEMBER(rvxiNormRel_Inf_32f_C1MR, normOfTwo),
        MEMBER(rvxiNormRel_Inf_8u_C3CMR, channelNormOfTwo),
        MEMBER(rvxiNormRel_Inf_8s_C3CMR, channelNormOfTwo),
        MEMBER(rvxiNormRel_Inf_16u_C3CMR, channelNormOfTwo),
        MEMBER(rvxiNormRel_Inf_32f_C3CMR, channelNormOfTwo),
        MEMBER(rvxiNormRel_L1_8u_C1MR, normOfTwo),
        MEMBER(rvxiNormRel_L1_8s_C1MR, normOfTwo),
        MEMBER(rvxiNormRel_L1_16u_C1MR, normOfTwo),
        MEMBER(rvxiNormRel_L1_32f_C1MR, normOfTwo),
        MEMBER(rvxiNormRel_L1_8u_C3CMR, channelNormOfTwo),
        MEMBER(rvxiNormRel_L1_8s_C3CMR, channelNormOfTwo),
        MEMBER(rvxiNormRel_L1_16u_C3CMR, channelNormOfTwo),
        MEMBER(rvxiNormRel_L1_32f_C3CMR, channelNormOfTwo),
        MEMBER(rvxiNormRel_L2_8u_C1MR, normOfTwo),
        MEMBER(rvxiNormRel_L2_8s_C1MR, normOfTwo),
        MEMBER(rvxiNormRel_L2_16u_C1MR, normOfTwo),
        MEMBER(rvxiNormRel_L2_32f_C1MR, normOfTwo),
        MEMBER(rvxiNormRel_L2_8u_C3CMR, channelNormOfTwo),
        MEMBER(rvxiNormRel_L2_8s_C3CMR, channelNormOfTwo),
        MEMBER(rvxiNormRel_L2_16u_C3CMR, channelNormOfTwo),
        MEMBER(rvxiNormRel_L2_32f_C3CMR, channelNormOfTwo),
        MEMBER(rvxiMean_8u_C1MR, norm),
        MEMBER(rvxiMean_8s_C1MR, norm),
        MEMBER(rvxiMean_16u_C1MR, norm),
        MEMBER(rvxiMean_32f_C1MR, norm),
        MEMBER(rvxiMean_8u_C3CMR, channelNorm),
        MEMBER(rvxiMean_8s_C3CMR, channelNorm),
        MEMBER(rvxiMean_16u_C3CMR, channelNorm),
        MEMBER(rvxiMean_32f_C3CMR, channelNorm),
        MEMBER(rvxiMean_StdDev_8u_C1R, measure),
        MEMBER(rvxiMean_StdDev_8s_C1R, measure),
        MEMBER(rvxiMean_StdDev_16u_C1R, measure),
        MEMBER(rvxiMean_StdDev_32f_C1R, measure),
        MEMBER(rvxiMean_StdDev_8u_C1MR, measureMasked),
        MEMBER(rvxiMean_StdDev_8s_C1MR, measureMasked),
        MEMBER(rvxiMean_StdDev_16u_C1MR, measureMasked),
        MEMBER(rvxiMean_StdDev_32f_C1MR, measureMasked),
        MEMBER(rvxiMean_StdDev_8u_C3CR, measureChannel),
        MEMBER(rvxiMean_StdDev_8s_C3CR, measureChannel),
        MEMBER(rvxiMean_StdDev_16u_C3CR, measureChannel),
        MEMBER(rvxiMean_StdDev_32f_C3CR, measureChannel),
        MEMBER(rvxiMean_StdDev_8u_C3CMR, measureMaskedChannel),
        MEMBER(rvxiMean_StdDev_8s_C3CMR, measureMaskedChannel),
        MEMBER(rvxiMean_StdDev_16u_C3CMR, measureMaskedChannel),
        MEMBER(rvxiMean_StdDev_32f_C3CMR, measureMaskedChannel),
        MEMBER(rvxiMinMaxIndx_8u_C1R, measure),
        MEMBER(rvxiMinMaxIndx_8s_C1R, measure),
        MEMBER(rvxiMinMaxIndx_16u_C1R, measure),
        MEMBER(rvxiMinMaxIndx_32f_C1R, measure),
        MEMBER(rvxiMinMaxIndx_8u_C1MR, measureMasked),
        MEMBER(rvxiMinMaxIndx_8s_C1MR, measureMasked),
        MEMBER(rvxiMinMaxIndx_16u_C1MR, measureMasked),
        MEMBER(rvxiMinMaxIndx_32f_C1MR, measureMasked),
        MEMBER(rvxiMinMaxIndx_8u_C3CR, measureChannel),
        MEMBER(rvxiMinMaxIndx_8s_C3CR, measureChannel),
        MEMBER(rvxiMinMaxIndx_16u_C3CR, measureChannel),
        MEMBER(rvxiMinMaxIndx_32f_C3CR, measureChannel),
        MEMBER(rvxiMinMaxIndx_8u_C3CMR, measureMaskedChannel),
        MEMBER(rvxiMinMaxIndx_8s_C3CMR, measureMaskedChannel),
        MEMBER(rvxiMinMaxIndx_16u_C3CMR, measureMaskedChannel),
        MEMBER(rvxiMinMaxIndx_32f_C3CMR, measureMaskedChannel),
    };
    members.insert(members.end(), std::begin(table), std::end(table));
}

} // namespace contract
