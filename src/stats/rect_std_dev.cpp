// Standard deviation of the pixels in a window of fixed size, upright or tilted by 45 degrees, at every position: from
// the window's sum and sum of squares, four elements each of the integral images. The members differ in how mean and
// variance round: each has a rule of its own below.
#include "frame/api.h"
#include "kernel/checks.h"
#include "kernel/plane.h"
#include "kernel/rows.h"

#include <algorithm>
#include <bit>

namespace rvxcv {
namespace {

// ------------------------------------------------------------------------------------------- the windows' corners

// Where the corners of a window lie, relative to the destination pixel's element: its sum is a - b - c + d.
struct Corner {
    std::int64_t x, y;
};
struct Corners {
    Corner a, b, c, d;
};

// Top left - top right - bottom left + bottom right.
struct Upright {
    static constexpr bool readable(Rect2i) { return true; }
    static constexpr std::int64_t area(Rect2i r) { return std::int64_t{r.width} * r.height; }
    static constexpr Corners corners(Rect2i r) {
        const std::int64_t left = r.x, top = r.y, right = left + r.width, bottom = top + r.height;
        return {{left, top}, {right, top}, {left, bottom}, {right, bottom}};
    }
};

// Bottom - left - right + top, read from element (1, 1) on:
//
//            top (x, y)              width goes down to the right, height down to the left
//         /             \            .
//     left (x - h,       \           .
//         y + h)     right (x + w, y + w)
//         \             /            .
//      bottom (x + w - h, y + w + h) .
struct Tilted {
    // The left corner lies in column 0 or behind.
    static constexpr bool readable(Rect2i r) { return std::int64_t{r.x} >= std::int64_t{r.height} - 1; }
    static constexpr std::int64_t area(Rect2i r) { return 2 * std::int64_t{r.width} * r.height; }
    static constexpr Corners corners(Rect2i r) {
        const std::int64_t x = r.x + std::int64_t{1}, y = r.y + std::int64_t{1}, w = r.width, h = r.height;
        return {{x + w - h, y + w + h}, {x - h, y + h}, {x + w, y + w}, {x, y}};
    }
};

// The sums of the windows in a row of destination pixels.
template <class T> struct WindowSums {
    const T *a, *b, *c, *d;

    WindowSums(Plane<const T> image, const Corners &corners, std::int64_t y)
        : a(at(image, corners.a, y)), b(at(image, corners.b, y)), c(at(image, corners.c, y)),
          d(at(image, corners.d, y)) {}

    static const T *at(Plane<const T> image, Corner corner, std::int64_t y) {
        return image.row(y + corner.y) + corner.x;
    }
    template <class Span> RVX_INLINE Eight<T> load(std::ptrdiff_t x, Span span) const {
        const Eight<T> differences = sub(sub(loadEight(a + x, span), loadEight(b + x, span)), loadEight(c + x, span));
        return add(differences, loadEight(d + x, span));
    }
};

// ----------------------------------------------------------------------------------------- from sums to deviations

// A negative variance becomes zero.
RVX_INLINE F32x8 rootOf(F32x8 variance) { return sqrt(max(splat(0.0f), variance)); }

// Everything in double, the area as a reciprocal.
struct InDouble {
    F64x8 inverseArea;

    explicit InDouble(std::int64_t area, std::int32_t = 0) : inverseArea(splatEight(1.0 / static_cast<double>(area))) {}

    template <class Sum> RVX_INLINE F32x8 operator()(Sum sum, F64x8 squares) const {
        const F64x8 mean = mul(toF64(sum), inverseArea);
        return rootOf(toF32(sub(mul(squares, inverseArea), mul(mean, mean))));
    }
};

// The mean in float, the variance in double.
struct FloatMean {
    F32x8 area;
    F64x8 areaInDouble;

    explicit FloatMean(std::int64_t a, std::int32_t = 0)
        : area(splat(static_cast<float>(a))), areaInDouble(splatEight(static_cast<double>(a))) {}

    RVX_INLINE F32x8 operator()(I32x8 sum, F64x8 squares) const {
        const F64x8 mean = toF64(div(toF32(sum), area));
        return rootOf(toF32(fma(negated(mean), mean, div(squares, areaInDouble))));
    }
};

// 2^-scaleFactor. Beyond the exponents of normal doubles every deviation but zero is too large or rounds to zero
// anyway, and zero must stay zero: no infinity here.
inline double scale(std::int32_t scaleFactor) {
    const std::int64_t exponent = std::clamp<std::int64_t>(-std::int64_t{scaleFactor}, -1022, 1023);
    return std::bit_cast<double>((exponent + 1023) << 52);
}

// A root as a scaled integer, rounded half up.
struct Scaled {
    F64x8 factor;

    explicit Scaled(std::int32_t scaleFactor) : factor(splatEight(scale(scaleFactor))) {}

    RVX_INLINE I32x8 operator()(F32x8 root) const { return truncate(fma(toF64(root), factor, splatEight(0.5))); }
};

// Mean and variance in float.
struct ScaledInFloat {
    F32x8 area;
    Scaled scaled;

    ScaledInFloat(std::int64_t a, std::int32_t scaleFactor) : area(splat(static_cast<float>(a))), scaled(scaleFactor) {}

    RVX_INLINE I32x8 operator()(I32x8 sum, I32x8 squares) const {
        const F32x8 mean = div(toF32(sum), area);
        return scaled(rootOf(fma(negated(mean), mean, div(toF32(squares), area))));
    }
};

// Both quotients in float, the variance in double, where a negative one becomes zero.
struct ScaledFloatMean {
    F32x8 area;
    Scaled scaled;

    ScaledFloatMean(std::int64_t a, std::int32_t scaleFactor)
        : area(splat(static_cast<float>(a))), scaled(scaleFactor) {}

    RVX_INLINE I32x8 operator()(I32x8 sum, I32x8 squares) const {
        const F64x8 mean = toF64(div(toF32(sum), area));
        const F64x8 variance = fma(negated(mean), mean, toF64(div(toF32(squares), area)));
        return scaled(sqrt(toF32(max(splatEight(0.0), variance))));
    }
};

// ---------------------------------------------------------------------------------------------------- the kernel

template <class Rule, class S, class Q, class D> struct DeviationRow {
    static constexpr bool rereads = false;
    WindowSums<S> sums;
    WindowSums<Q> squares;
    D *dst;
    const Rule &rule;

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        store(dst + x, rule(sums.load(x, span), squares.load(x, span)), span);
    }
};

template <class Window, class Rule, class S, class Q, class D>
StatusCode deviation(const S *sum, std::int32_t sumStep, const Q *sqr, std::int32_t sqrStep, D *dst,
                     std::int32_t dstStep, RoiSize roi, Rect2i rect, std::int32_t scaleFactor = 0) {
    const std::int64_t elements = std::int64_t{roi.width} + rect.x + rect.width;
    Checks checks;
    checks.pointers(sum, sqr, dst)
        .size(roi)
        .steps(rowBytes<S>(elements), sumStep)
        .steps(rowBytes<Q>(elements), sqrStep);
    checks.steps(rowBytes<D>(roi.width), dstStep).multiples(sizeof(S), sumStep, dstStep).multiples(sizeof(Q), sqrStep);
    checks.require(rect.x >= 0 && rect.y >= 0 && rect.width >= 1 && rect.height >= 1 && Window::readable(rect),
                   StatusBadSize);
    if (checks.failed()) {
        return checks.status();
    }
    const Rule rule(Window::area(rect), scaleFactor);
    const Corners corners = Window::corners(rect);
    for (std::int64_t y = 0; y < roi.height; ++y) {
        const DeviationRow<Rule, S, Q, D> row{
            {Plane{sum, sumStep}, corners, y}, {Plane{sqr, sqrStep}, corners, y}, Plane{dst, dstStep}.row(y), rule};
        walkRow<8, Tail::overlap>(roi.width, row);
    }
    return StatusOk;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiRectStdDev_32f_C1R(const float *sum, int32_t sumStep, const double *sqr, int32_t sqrStep, float *dst,
                                  int32_t dstStep, RoiSize roi, Rect2i rect) {
    return deviation<Upright, InDouble>(sum, sumStep, sqr, sqrStep, dst, dstStep, roi, rect);
}
StatusCode rvxiRectStdDev_32s32f_C1R(const int32_t *sum, int32_t sumStep, const double *sqr, int32_t sqrStep,
                                     float *dst, int32_t dstStep, RoiSize roi, Rect2i rect) {
    return deviation<Upright, InDouble>(sum, sumStep, sqr, sqrStep, dst, dstStep, roi, rect);
}
StatusCode rvxiRectStdDev_32s_C1RSfs(const int32_t *sum, int32_t sumStep, const int32_t *sqr, int32_t sqrStep,
                                     int32_t *dst, int32_t dstStep, RoiSize roi, Rect2i rect, int32_t scaleFactor) {
    return deviation<Upright, ScaledInFloat>(sum, sumStep, sqr, sqrStep, dst, dstStep, roi, rect, scaleFactor);
}
StatusCode rvxiTiltedRectStdDev_32f_C1R(const float *sum, int32_t sumStep, const double *sqr, int32_t sqrStep,
                                        float *dst, int32_t dstStep, RoiSize roi, Rect2i rect) {
    return deviation<Tilted, InDouble>(sum, sumStep, sqr, sqrStep, dst, dstStep, roi, rect);
}
StatusCode rvxiTiltedRectStdDev_32s32f_C1R(const int32_t *sum, int32_t sumStep, const double *sqr, int32_t sqrStep,
                                           float *dst, int32_t dstStep, RoiSize roi, Rect2i rect) {
    return deviation<Tilted, FloatMean>(sum, sumStep, sqr, sqrStep, dst, dstStep, roi, rect);
}
StatusCode rvxiTiltedRectStdDev_32s_C1RSfs(const int32_t *sum, int32_t sumStep, const int32_t *sqr, int32_t sqrStep,
                                           int32_t *dst, int32_t dstStep, RoiSize roi, Rect2i rect,
                                           int32_t scaleFactor) {
    return deviation<Tilted, ScaledFloatMean>(sum, sumStep, sqr, sqrStep, dst, dstStep, roi, rect, scaleFactor);
}
