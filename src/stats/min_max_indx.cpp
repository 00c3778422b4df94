// The smallest and the largest selected pixel, and where they are. One pass keeps the extrema lane by lane and looks
// after each run of rows whether one was beaten: the last run that did so holds the extremum. A second look, at these
// two runs alone, finds the first pixel that is equal to it.
#include "frame/api.h"
#include "stats/masked_rows.h"

#include <limits>

namespace rvxcv {
namespace {

// ----------------------------------------------------------------------------------------------------------- lanes

// Signed bytes are ordered like unsigned ones once their sign bit is flipped.
template <class V> RVX_INLINE V ordered(V a) { return a; }
RVX_INLINE U8x32 ordered(I8x32 a) { return bitXor(U8x32{{a.v}}, splat(std::uint8_t{0x80})); }

RVX_INLINE F32x16 min(F32x16 a, F32x16 b) { return {rvxcv::min(a.low, b.low), rvxcv::min(a.high, b.high)}; }
RVX_INLINE F32x16 max(F32x16 a, F32x16 b) { return {rvxcv::max(a.low, b.low), rvxcv::max(a.high, b.high)}; }

// All bits set in the lanes that are left out: the largest integer, or a NaN, which no comparison takes.
template <class V> RVX_INLINE V orAllBits(V a, Nothing) { return a; }
template <class V> RVX_INLINE V orAllBits(V a, V out) { return bitOr(a, out); }
RVX_INLINE F32x16 orAllBits(F32x16 a, Mask32x16 out) {
    return {{either({a.low.v}, out.low).v}, {either({a.high.v}, out.high).v}};
}
template <class O> RVX_INLINE F32x16 orZero(F32x16 a, O out) { return orAllBits(a, out); }
template <class V, class O> RVX_INLINE V orZero(V a, O out) { return selected(a, out); }

template <class V> RVX_INLINE V inAllLanes(typename V::Element value) {
    if constexpr (std::is_same_v<V, F32x16>) {
        return {splat(value), splat(value)};
    } else {
        return splat(value);
    }
}

// Lanes that hold the same number, as bits.
template <class V> RVX_INLINE std::uint32_t sameLanes(V a, V b) { return laneBits(equal(a, b)); }
RVX_INLINE std::uint32_t sameLanes(F32x16 a, F32x16 b) {
    return laneBits(equal(a.low, b.low)) | laneBits(equal(a.high, b.high)) << 8;
}
template <class V> inline constexpr std::uint32_t allLanes = ~0u >> (32 - V::lanes);

template <class V, class Operation> RVX_INLINE typename V::Element joined(V a, const Operation &operation) {
    if constexpr (std::is_same_v<V, F32x16>) {
        return joinedLanes(operation(a.low, a.high), operation);
    } else {
        return joinedLanes(a, operation);
    }
}

struct Least {
    template <class V> RVX_INLINE V operator()(V a, V b) const { return min(a, b); }
    template <class V, class O> RVX_INLINE static V neutral(V a, O out) { return orAllBits(a, out); }
    template <class E> static constexpr E start() {
        return std::is_floating_point_v<E> ? std::numeric_limits<E>::infinity() : std::numeric_limits<E>::max();
    }
};
struct Most {
    template <class V> RVX_INLINE V operator()(V a, V b) const { return max(a, b); }
    template <class V, class O> RVX_INLINE static V neutral(V a, O out) { return orZero(a, out); }
    template <class E> static constexpr E start() {
        return std::is_floating_point_v<E> ? -std::numeric_limits<E>::infinity() : std::numeric_limits<E>::min();
    }
};

// One extremum on its way through the runs. Nothing beats the value that it starts with, such as 255 as the smallest
// byte: then no run is known to hold it.
template <class V, class Order> struct Extremum {
    typename V::Element value = Order::template start<typename V::Element>();
    std::int64_t run = -1;
    V lanes = inAllLanes<V>(value), before = lanes;

    template <class O> RVX_INLINE void add(V a, O out) { lanes = Order{}(Order::neutral(a, out), lanes); }
    RVX_INLINE void endRun(std::int64_t y) {
        if (sameLanes(lanes, before) != allLanes<V>) {
            value = joined(lanes, Order{});
            run = y;
            lanes = before = inAllLanes<V>(value);
        }
    }
};

template <class T> using Ordered = decltype(ordered(Block<T>{}));

template <class T> struct Extrema {
    static constexpr int sources = 1;
    Extremum<Ordered<T>, Least> least;
    Extremum<Ordered<T>, Most> most;

    template <class O> RVX_INLINE void add(Block<T> a, Block<T>, O out) {
        least.add(ordered(a), out);
        most.add(ordered(a), out);
    }
};

// ------------------------------------------------------------------------------------------------------------ runs

// Rows without gaps between them are searched in runs of about 512 pixels: narrow images then cost little for each row.
template <Layout layout, class T> class Runs {
public:
    explicit Runs(const MaskedImage<T> &image)
        : planes_(image), width_(image.roi.width), height_(image.roi.height),
          rows_(gapless<layout>(image) ? std::max<std::int64_t>(1, 512 / width_) : 1) {}

    std::int64_t count() const { return (height_ + rows_ - 1) / rows_; }
    std::int64_t pixels(std::int64_t run) const { return std::min(rows_, height_ - run * rows_) * width_; }
    const T *source(std::int64_t run) const { return planes_.first.row(run * rows_); }
    const std::uint8_t *mask(std::int64_t run) const { return planes_.maskRow(run * rows_); }
    Point2i position(std::int64_t run, std::int64_t x) const {
        return {static_cast<std::int32_t>(x % width_), static_cast<std::int32_t>(run * rows_ + x / width_)};
    }

private:
    MaskedPlanes<layout, T> planes_;
    std::int64_t width_, height_, rows_;
};

struct Found {
    double value = 0;
    Point2i at{-1, -1};
};

// The lanes of a block that are equal to a value, as bits.
template <Layout layout, class T, class Span>
RVX_INLINE std::uint32_t matches(const T *row, const std::uint8_t *mask, std::int64_t x, Span span, Ordered<T> value) {
    const Block<T> block = loadBlock<layout>(row, x, span);
    const Ordered<T> pixels = ordered(block);
    const auto out = lanesOut<layout, T>(mask, x, span);
    const std::uint32_t same = sameLanes(pixels, value);
    if constexpr (std::is_same_v<decltype(out), const Nothing>) {
        return same;
    } else if constexpr (std::is_same_v<T, float>) {
        return same & ~(laneBits(out.low) | laneBits(out.high) << 8);
    } else {
        return same & ~laneBits(out);
    }
}

// The first pixel that is equal to the value, in the run that is known to hold it or, if there is none, in any.
template <Layout layout, class T, class E> Found find(const Runs<layout, T> &runs, E value, std::int64_t run) {
    constexpr std::int64_t lanes = Block<T>::lanes;
    const auto wanted = inAllLanes<Ordered<T>>(value);
    for (std::int64_t y = std::max<std::int64_t>(run, 0); y < runs.count(); ++y) {
        const std::int64_t width = runs.pixels(y);
        for (std::int64_t x = 0; x < width; x += lanes) {
            const std::int64_t rest = width - x;
            const std::uint32_t bits =
                rest >= lanes ? matches<layout>(runs.source(y), runs.mask(y), x, Full{}, wanted)
                              : matches<layout>(runs.source(y), runs.mask(y), x, Part{static_cast<int>(rest)}, wanted);
            if (bits != 0) {
                const std::int64_t at = x + __builtin_ctz(bits);
                return {static_cast<double>(loadScalar(runs.source(y) + at * (layout.ofThree ? 3 : 1))),
                        runs.position(y, at)};
            }
        }
    }
    return {};
}

template <Layout layout, class T>
StatusCode minMaxIndx(const MaskedImage<T> &image, double *min, double *max, Point2i *minIndex, Point2i *maxIndex) {
    const StatusCode status = checkMasked<layout>(image, min, max, minIndex, maxIndex);
    if (status != StatusOk) {
        return status;
    }
    const Runs<layout, T> runs(image);
    Extrema<T> extrema;
    for (std::int64_t y = 0; y < runs.count(); ++y) {
        const BlockKernel<layout, T, Extrema<T>> kernel{runs.source(y), runs.source(y), runs.mask(y), extrema};
        walkRow<Block<T>::lanes>(runs.pixels(y), kernel);
        extrema.least.endRun(y);
        extrema.most.endRun(y);
    }
    const Found least = find(runs, extrema.least.value, extrema.least.run);
    const Found most = find(runs, extrema.most.value, extrema.most.run);
    *min = least.value;
    *max = most.value;
    *minIndex = least.at;
    *maxIndex = most.at;
    return StatusOk;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

// Members: the name, the pixel type.
#define MIN_MAX_INDX_C1R(NAME, T)                                                                                      \
    StatusCode NAME(const T *src, int32_t srcStep, RoiSize roi, double *min, double *max, Point2i *minIndex,           \
                    Point2i *maxIndex) {                                                                               \
        return minMaxIndx<C1R, T>({src, srcStep, src, srcStep, nullptr, 0, roi, 1}, min, max, minIndex, maxIndex);     \
    }
#define MIN_MAX_INDX_C1MR(NAME, T)                                                                                     \
    StatusCode NAME(const T *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi, double *min,    \
                    double *max, Point2i *minIndex, Point2i *maxIndex) {                                               \
        return minMaxIndx<C1MR, T>({src, srcStep, src, srcStep, mask, maskStep, roi, 1}, min, max, minIndex,           \
                                   maxIndex);                                                                          \
    }
#define MIN_MAX_INDX_C3CR(NAME, T)                                                                                     \
    StatusCode NAME(const T *src, int32_t srcStep, RoiSize roi, int32_t channel, double *min, double *max,             \
                    Point2i *minIndex, Point2i *maxIndex) {                                                            \
        return minMaxIndx<C3CR, T>({src, srcStep, src, srcStep, nullptr, 0, roi, channel}, min, max, minIndex,         \
                                   maxIndex);                                                                          \
    }
#define MIN_MAX_INDX_C3CMR(NAME, T)                                                                                    \
    StatusCode NAME(const T *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, RoiSize roi,                 \
                    int32_t channel, double *min, double *max, Point2i *minIndex, Point2i *maxIndex) {                 \
        return minMaxIndx<C3CMR, T>({src, srcStep, src, srcStep, mask, maskStep, roi, channel}, min, max, minIndex,    \
                                    maxIndex);                                                                         \
    }

MIN_MAX_INDX_C1R(rvxiMinMaxIndx_8u_C1R, uint8_t)
MIN_MAX_INDX_C1R(rvxiMinMaxIndx_8s_C1R, int8_t)
MIN_MAX_INDX_C1R(rvxiMinMaxIndx_16u_C1R, uint16_t)
MIN_MAX_INDX_C1R(rvxiMinMaxIndx_32f_C1R, float)
MIN_MAX_INDX_C1MR(rvxiMinMaxIndx_8u_C1MR, uint8_t)
MIN_MAX_INDX_C1MR(rvxiMinMaxIndx_8s_C1MR, int8_t)
MIN_MAX_INDX_C1MR(rvxiMinMaxIndx_16u_C1MR, uint16_t)
MIN_MAX_INDX_C1MR(rvxiMinMaxIndx_32f_C1MR, float)
MIN_MAX_INDX_C3CR(rvxiMinMaxIndx_8u_C3CR, uint8_t)
MIN_MAX_INDX_C3CR(rvxiMinMaxIndx_8s_C3CR, int8_t)
MIN_MAX_INDX_C3CR(rvxiMinMaxIndx_16u_C3CR, uint16_t)
MIN_MAX_INDX_C3CR(rvxiMinMaxIndx_32f_C3CR, float)
MIN_MAX_INDX_C3CMR(rvxiMinMaxIndx_8u_C3CMR, uint8_t)
MIN_MAX_INDX_C3CMR(rvxiMinMaxIndx_8s_C3CMR, int8_t)
MIN_MAX_INDX_C3CMR(rvxiMinMaxIndx_16u_C3CMR, uint16_t)
MIN_MAX_INDX_C3CMR(rvxiMinMaxIndx_32f_C3CMR, float)
