// Radial lens undistortion: maps of the positions from which a picture is sampled, and pictures sampled there.
#include "frame/api.h"
#include "geometry/lens.h"
#include "geometry/sampling.h"
#include "kernel/channels.h"
#include "kernel/checks.h"
#include "kernel/plane.h"
#include "kernel/rows.h"

#include <algorithm>

namespace rvxcv {
namespace {

// ------------------------------------------------------------------------------------------------------------- Maps

// What holds for columns, kept for the rows below.
class KeptColumns {
public:
    static constexpr std::int64_t most = 512;

    KeptColumns(const LensColumns &columns, std::int64_t first, std::int64_t count) {
        for (std::int64_t x = 0; x < count; x += 8) {
            const LensColumns::Block block = columns.at(first + x);
            store(x_ + x, block.x);
            store(dx_ + x, block.dx);
            store(xn2_ + x, block.xn2);
            store(tangent_ + x, block.tangent);
        }
    }
    RVX_INLINE LensColumns::Block at(std::ptrdiff_t x) const {
        return {load<F32x8>(x_ + x), load<F32x8>(dx_ + x), load<F32x8>(xn2_ + x), load<F32x8>(tangent_ + x)};
    }

private:
    alignas(64) float x_[most], dx_[most], xn2_[most], tangent_[most];
};

// Sixteen columns of a row: a line of a cache in both maps, written in one go, which stores past the caches need.
template <bool tangential, bool streamed> struct MapKernel {
    static constexpr bool rereads = false;
    const KeptColumns &columns;
    LensRow row;
    float *xMap, *yMap;

    RVX_INLINE void operator()(std::ptrdiff_t x, Full) const {
        const LensPositions a = row.template at<tangential>(columns.at(x));
        const LensPositions b = row.template at<tangential>(columns.at(x + 8));
        put(xMap + x, a.x);
        put(xMap + x + 8, b.x);
        put(yMap + x, a.y);
        put(yMap + x + 8, b.y);
    }
    RVX_INLINE void operator()(std::ptrdiff_t x, Part part) const {
        eight(x, part, std::integral_constant<int, 0>{});
        eight(x, part, std::integral_constant<int, 1>{});
    }

private:
    static RVX_INLINE void put(float *p, F32x8 a) {
        if constexpr (streamed) {
            storeStreamedHalves(p, a);
        } else {
            store(p, a);
        }
    }
    template <int g> RVX_INLINE void eight(std::ptrdiff_t x, Part part, std::integral_constant<int, g>) const {
        withEight<g>(part, [&](auto span) {
            const LensPositions a = row.template at<tangential>(columns.at(x + 8 * g));
            store(xMap + x + 8 * g, a.x, span);
            store(yMap + x + 8 * g, a.y, span);
        });
    }
};

template <bool tangential, bool streamed>
void createMap(const Lens &lens, Plane<float> xMap, Plane<float> yMap, RoiSize roi) {
    const LensColumns columns(lens);
    for (std::int64_t x = 0; x < roi.width; x += KeptColumns::most) {
        const std::int64_t count = std::min(roi.width - x, KeptColumns::most);
        const KeptColumns kept(columns, x, count);
        for (std::int64_t y = 0; y < roi.height; ++y) {
            walkRow<16, streamed ? Tail::partial : Tail::overlap>(
                count, MapKernel<tangential, streamed>{kept, LensRow(lens, y), xMap.row(y) + x, yMap.row(y) + x});
        }
    }
}

// Large maps do not stay in the caches anyway; past them go blocks whose address is a multiple of 16 in every row.
bool pastCaches(Plane<float> xMap, Plane<float> yMap, RoiSize roi) {
    const auto bits = reinterpret_cast<std::uintptr_t>(xMap.base) | reinterpret_cast<std::uintptr_t>(yMap.base) |
                      static_cast<std::uintptr_t>(xMap.step) | static_cast<std::uintptr_t>(yMap.step);
    return bits % 16 == 0 && std::int64_t{roi.width} * roi.height >= 131072;
}

// ----------------------------------------------------------------------------------------------------------- Images

RVX_INLINE void storeRounded(float *p, const F32x8 (&value)[1], Full) { store(p, value[0]); }
RVX_INLINE void storeRounded(float *p, const F32x8 (&value)[1], Part part) { store(p, value[0], part); }
template <class T, class Span> RVX_INLINE void storeRounded(T *p, const F32x8 (&value)[1], Span span) {
    storeNarrow(p, roundToEven(value[0]), span);
}
template <class Span> RVX_INLINE void storeRounded(float *p, const F32x8 (&value)[3], Span span) {
    storeChannels(p, ThreeChannels<F32x8>{value[0], value[1], value[2]}, span);
}
template <class Span> RVX_INLINE void storeRounded(std::uint8_t *p, const F32x8 (&value)[3], Span span) {
    storeEightPixels(p, {roundToEven(value[0]), roundToEven(value[1]), roundToEven(value[2])}, span);
}
template <class Span> RVX_INLINE void storeRounded(std::uint16_t *p, const F32x8 (&value)[3], Span span) {
    const ThreeVectors<I32x8> v =
        interleaved(ThreeChannels<I32x8>{roundToEven(value[0]), roundToEven(value[1]), roundToEven(value[2])});
    const int elements = 3 * eightOrPart(span);
    store(p, narrowSaturatedUnsigned(v.first, v.second), Part{std::min(elements, 16)});
    if (elements > 16) {
        store(p + 16, narrowSaturatedUnsigned(v.third, v.third), Part{elements - 16});
    }
}

template <class T, int channels, class Places> struct UndistortKernel {
    static constexpr bool rereads = false; // source and destination do not overlap
    const SampledImage<T, channels> &src;
    LensColumns columns;
    LensRow row;
    T *dst;

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        const LensPositions position = row.at<false>(columns.at(x));
        F32x8 value[channels];
        src.template at<Places>(position.x, position.y, value);
        storeRounded(dst + x * channels, value, span);
    }
};

template <class T, int channels, class Places>
void undistortRows(const SampledImage<T, channels> &src, Plane<T> dst, RoiSize roi, const Lens &lens) {
    for (std::int64_t y = 0; y < roi.height; ++y) {
        walkRow<8, Tail::overlap>(
            roi.width, UndistortKernel<T, channels, Places>{src, LensColumns(lens), LensRow(lens, y), dst.row(y)});
    }
}

// ----------------------------------------------------------------------------------------------------------- Checks

template <class T>
Checks checkImages(const T *first, std::int32_t firstStep, const T *second, std::int32_t secondStep, RoiSize roi,
                   int channels, const Lens &lens) {
    Checks checks;
    checks.pointers(first, second).size(roi);
    checks.steps(rowBytes<T>(std::int64_t{roi.width} * channels), firstStep, secondStep);
    checks.multiples(sizeof(T) == 4 ? 4 : 1, firstStep, secondStep); // steps of 16u images may be odd
    checks.require(lens.valid(), StatusBadArgument);
    return checks;
}

template <class T, int channels>
StatusCode undistort(const T *src, std::int32_t srcStep, T *dst, std::int32_t dstStep, RoiSize roi, const Lens &lens) {
    const Checks checks = checkImages<T>(src, srcStep, dst, dstStep, roi, channels, lens);
    if (checks.failed()) {
        return checks.status();
    }
    const SampledImage<T, channels> image(Plane<const T>{src, srcStep}, roi);
    const Plane<T> out{dst, dstStep};
    if (!image.wide()) {
        undistortRows<T, channels, void>(image, out, roi, lens);
    } else if (image.near()) {
        undistortRows<T, channels, NearPlaces>(image, out, roi, lens);
    } else {
        undistortRows<T, channels, FarPlaces>(image, out, roi, lens);
    }
    return StatusOk;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

// Nothing needs scratch: what could be kept of a column is formed as fast as it would be read.

StatusCode rvxiUndistortGetSize(RoiSize roi, int32_t *bufSize) {
    Checks checks;
    checks.pointers(bufSize).size(roi);
    return checks.failed() ? checks.status() : storeSize(roundUp(roi.width, 4) * 24 + 32, bufSize);
}

StatusCode rvxiCreateMapCameraUndistort_32f_C1R(float *xMap, int32_t xMapStep, float *yMap, int32_t yMapStep,
                                                RoiSize roi, uint8_t *, float fx, float fy, float cx, float cy,
                                                float k1, float k2, float p1, float p2) {
    const Lens lens{fx, fy, cx, cy, k1, k2, p1, p2};
    const Checks checks = checkImages<float>(xMap, xMapStep, yMap, yMapStep, roi, 1, lens);
    if (checks.failed()) {
        return checks.status();
    }
    const Plane<float> x{xMap, xMapStep}, y{yMap, yMapStep};
    if (pastCaches(x, y, roi)) {
        lens.tangential() ? createMap<true, true>(lens, x, y, roi) : createMap<false, true>(lens, x, y, roi);
        endStreaming();
    } else {
        lens.tangential() ? createMap<true, false>(lens, x, y, roi) : createMap<false, false>(lens, x, y, roi);
    }
    return StatusOk;
}

StatusCode rvxiUndistortRadial_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                      uint8_t *, float fx, float fy, float cx, float cy, float k1, float k2) {
    return undistort<std::uint8_t, 1>(src, srcStep, dst, dstStep, roi, {fx, fy, cx, cy, k1, k2, 0.0f, 0.0f});
}
StatusCode rvxiUndistortRadial_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                      uint8_t *, float fx, float fy, float cx, float cy, float k1, float k2) {
    return undistort<std::uint8_t, 3>(src, srcStep, dst, dstStep, roi, {fx, fy, cx, cy, k1, k2, 0.0f, 0.0f});
}
StatusCode rvxiUndistortRadial_16u_C1R(const uint16_t *src, int32_t srcStep, uint16_t *dst, int32_t dstStep,
                                       RoiSize roi, uint8_t *, float fx, float fy, float cx, float cy, float k1,
                                       float k2) {
    return undistort<std::uint16_t, 1>(src, srcStep, dst, dstStep, roi, {fx, fy, cx, cy, k1, k2, 0.0f, 0.0f});
}
StatusCode rvxiUndistortRadial_16u_C3R(const uint16_t *src, int32_t srcStep, uint16_t *dst, int32_t dstStep,
                                       RoiSize roi, uint8_t *, float fx, float fy, float cx, float cy, float k1,
                                       float k2) {
    return undistort<std::uint16_t, 3>(src, srcStep, dst, dstStep, roi, {fx, fy, cx, cy, k1, k2, 0.0f, 0.0f});
}
StatusCode rvxiUndistortRadial_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                       uint8_t *, float fx, float fy, float cx, float cy, float k1, float k2) {
    return undistort<float, 1>(src, srcStep, dst, dstStep, roi, {fx, fy, cx, cy, k1, k2, 0.0f, 0.0f});
}
StatusCode rvxiUndistortRadial_32f_C3R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                       uint8_t *, float fx, float fy, float cx, float cy, float k1, float k2) {
    return undistort<float, 3>(src, srcStep, dst, dstStep, roi, {fx, fy, cx, cy, k1, k2, 0.0f, 0.0f});
}
