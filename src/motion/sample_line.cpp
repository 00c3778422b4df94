// Line sampling: the pixels on a digital straight line. The walk takes no branch that depends on the slope, so it costs
// the same on every line; a pixel is copied as what it is, never with bytes beside it.
//
// With the error term e of the midpoint walk kept in 0 .. 2 major - 1, i steps along the major axis come with
//
//     m(i) = floor(i minor / major + (major - 1) / (2 major))
//
// steps across it. A fraction of 64 bits counts them by its carries: it starts just below 1/2, which is less than one
// unit of 1 / (2 major) too high, and grows by minor / major rounded down. All arguments of m are multiples of that
// unit, which is at least 2^-32: a surplus of less than a unit changes no m(i), and 2^31 losses of 2^-64 do not use it
// up.
#include "frame/api.h"
#include "kernel/checks.h"
#include "kernel/plane.h"

#include <cstdlib>

namespace rvxcv {
namespace {

// A pixel of a fixed size; the compiler makes moves of it that cover just its bytes.
template <int bytes> RVX_INLINE void copyPixel(void *dst, const void *src) { std::memcpy(dst, src, bytes); }

// Differences in 64 bits: they may not fit in 32.
struct Walk {
    std::int64_t major, minor;     // lengths of the two axes
    std::int64_t straight, across; // bytes of a step along the major axis and along the other one
};

template <int pixelBytes> Walk walkBetween(std::int64_t step, Point2i first, Point2i second) {
    const std::int64_t dx = std::int64_t{second.x} - first.x, dy = std::int64_t{second.y} - first.y;
    const std::int64_t alongX = dx < 0 ? -pixelBytes : pixelBytes, alongY = dy < 0 ? -step : step;
    const std::int64_t width = std::abs(dx), height = std::abs(dy);
    return width > height ? Walk{width, height, alongX, alongY} : Walk{height, width, alongY, alongX};
}

// minor / major as a fraction of 64 bits, rounded down, by two divisions of 64 bits; minor is the smaller one.
std::uint64_t fractionOf(std::uint64_t minor, std::uint64_t major) {
    const std::uint64_t high = (minor << 32) / major, rest = (minor << 32) % major;
    return high << 32 | (rest << 32) / major;
}

template <int pixelBytes> void copyLine(std::uint8_t *line, const std::uint8_t *pixel, Walk walk) {
    if (walk.minor == walk.major) {
        walk.minor = 0;
        walk.straight += walk.across;
    }
    if (walk.minor == 0 && (walk.straight == pixelBytes || walk.major == 0)) {
        std::memcpy(line, pixel, static_cast<std::size_t>(walk.major + 1) * pixelBytes);
        return;
    }
    const auto major = static_cast<std::uint64_t>(walk.major);
    const std::uint64_t slope = fractionOf(static_cast<std::uint64_t>(walk.minor), major);
    std::uint64_t fraction = (std::uint64_t{1} << 63) - 1;
    const std::uint8_t *const end = line + walk.major * pixelBytes;
    std::int64_t crossed = 0;
    for (; line != end; line += pixelBytes) {
        // A position by multiplication: a mask or a move made from the carry may wait for the pixel before.
        copyPixel<pixelBytes>(line, pixel + crossed * walk.across);
        crossed += __builtin_add_overflow(fraction, slope, &fraction) ? 1 : 0;
        pixel += walk.straight;
    }
    copyPixel<pixelBytes>(line, pixel + crossed * walk.across);
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
