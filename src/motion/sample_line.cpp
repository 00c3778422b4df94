// Line sampling: the pixels on a digital straight line. The walk takes no branch that depends on the slope, so it costs
// the same on every line; a pixel is copied as what it is, never with bytes beside it.
#include "frame/api.h"
#include "kernel/checks.h"
#include "kernel/plane.h"

#include <cstdlib>

namespace rvxcv {
namespace {

// A pixel of a fixed size; the compiler makes moves of it that cover just its bytes.
template <int bytes> RVX_INLINE void copyPixel(void *dst, const void *src) { std::memcpy(dst, src, bytes); }

// Differences and error in 64 bits: twice a coordinate may not fit in 32.
struct Walk {
    std::int64_t major, minor;       // lengths of the two axes
    std::int64_t straight, diagonal; // bytes from one pixel to the next
};

template <int pixelBytes> Walk walkBetween(std::int64_t step, Point2i first, Point2i second) {
    const std::int64_t dx = std::int64_t{second.x} - first.x, dy = std::int64_t{second.y} - first.y;
    const std::int64_t alongX = dx < 0 ? -pixelBytes : pixelBytes, alongY = dy < 0 ? -step : step;
    const std::int64_t width = std::abs(dx), height = std::abs(dy);
    return width > height ? Walk{width, height, alongX, alongX + alongY} : Walk{height, width, alongY, alongX + alongY};
}

template <int pixelBytes> void copyLine(std::uint8_t *line, const std::uint8_t *pixel, const Walk &walk) {
    if (walk.minor == 0 && walk.straight == pixelBytes) {
        std::memcpy(line, pixel, static_cast<std::size_t>(walk.major + 1) * pixelBytes);
        return;
    }
    // Both outcomes of a step are formed before it is known which one holds.
    const std::int64_t down = 2 * walk.minor, up = 2 * (walk.major - walk.minor);
    std::int64_t error = walk.major;
    const std::uint8_t *const end = line + walk.major * pixelBytes;
    for (; line != end; line += pixelBytes) {
        copyPixel<pixelBytes>(line, pixel);
        const std::int64_t kept = error - down, passed = error + up;
        const bool passes = __builtin_expect_with_probability(kept < 0, 1, 0.5);
        error = passes ? passed : kept;
        pixel += passes ? walk.diagonal : walk.straight;
    }
    copyPixel<pixelBytes>(line, pixel);
}

template <int channels, class T>
StatusCode sampleLine(const T *src, std::int32_t srcStep, RoiSize roi, T *line, Point2i first, Point2i second) {
    constexpr int pixelBytes = channels * static_cast<int>(sizeof(T));
    const auto inside = [roi](Point2i p) { return p.x >= 0 && p.x < roi.width && p.y >= 0 && p.y < roi.height; };
    const Walk walk = walkBetween<pixelBytes>(srcStep, first, second);
    Checks checks;
    checks.pointers(src, line).size(roi).steps(std::int64_t{roi.width} * pixelBytes, srcStep);
    checks.multiples(sizeof(T), srcStep).require(inside(first) && inside(second), StatusOutOfRange);
    checks.require(walk.major < INT32_MAX, StatusLengthOverflow);
    if (checks.failed()) {
        return checks.status();
    }
    const T *start = Plane{src, srcStep}.row(first.y) + std::int64_t{first.x} * channels;
    copyLine<pixelBytes>(reinterpret_cast<std::uint8_t *>(line), reinterpret_cast<const std::uint8_t *>(start), walk);
    return StatusOk;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiSampleLine_8u_C1R(const uint8_t *src, int32_t srcStep, RoiSize roi, uint8_t *line, Point2i first,
                                 Point2i second) {
    return sampleLine<1>(src, srcStep, roi, line, first, second);
}
StatusCode rvxiSampleLine_8u_C3R(const uint8_t *src, int32_t srcStep, RoiSize roi, uint8_t *line, Point2i first,
                                 Point2i second) {
    return sampleLine<3>(src, srcStep, roi, line, first, second);
}
StatusCode rvxiSampleLine_16u_C1R(const uint16_t *src, int32_t srcStep, RoiSize roi, uint16_t *line, Point2i first,
                                  Point2i second) {
    return sampleLine<1>(src, srcStep, roi, line, first, second);
}
StatusCode rvxiSampleLine_16u_C3R(const uint16_t *src, int32_t srcStep, RoiSize roi, uint16_t *line, Point2i first,
                                  Point2i second) {
    return sampleLine<3>(src, srcStep, roi, line, first, second);
}
StatusCode rvxiSampleLine_32f_C1R(const float *src, int32_t srcStep, RoiSize roi, float *line, Point2i first,
                                  Point2i second) {
    return sampleLine<1>(src, srcStep, roi, line, first, second);
}
StatusCode rvxiSampleLine_32f_C3R(const float *src, int32_t srcStep, RoiSize roi, float *line, Point2i first,
                                  Point2i second) {
    return sampleLine<3>(src, srcStep, roi, line, first, second);
}
