// What is computed over a tracking window: pixels and derivatives of the previous image, and sums over the next one.
//
// The step d of an iteration solves G d = b with b = sum (I - J) g, where g are the derivatives and J is sampled
// bilinearly from the next image. All pixels of a window are sampled with the same four weights w[k], which sum to 1,
// so that, P[k] being the four whole-pixel shifts,
//
//     b = sum over k of  w[k] * sum (I - P[k]) g.
//
// The eight inner sums do not depend on the fractions: as long as the window stays between the same pixels, an
// iteration costs four products. A window that moves to other pixels costs one pass.
//
// Products are added in float lanes, few enough of them in a row to keep their precision, and the lanes in double.
#pragma once

#include "kernel/vec.h"
#include "motion/optical_flow_state.h"
#include "motion/subpix.h"

namespace rvxcv {

// A part of the window, and the sums over it.
struct WindowPart {
    IndexRange columns, rows;

    bool empty() const { return columns.empty() || rows.empty(); }
    std::int64_t pixels() const { return columns.count() * rows.count(); }
    WindowPart intersected(const WindowPart &other) const {
        return {columns.intersected(other.columns), rows.intersected(other.rows)};
    }
    bool operator==(const WindowPart &) const = default;
};

struct GradientMatrix {
    double xx, xy, yy;
};

// A pixel position with its fractions.
struct SubpixPosition {
    SubpixAxis x, y;
};

template <class T> struct LevelImage {
    Plane<const T> plane;
    RoiSize roi;

    const T *at(std::int64_t x, std::int64_t y) const { return plane.row(y) + x; }
    // Samples of a patch of size x size at a position whose pixels are all in the image.
    WindowPart inside(const SubpixPosition &position, std::int64_t size) const {
        return {position.x.inside(size, roi.width), position.y.inside(size, roi.height)};
    }
};

namespace detail {

// `count` sums in eight float lanes each, moved to doubles before a lane has more than `mostTerms` terms.
template <int count> struct LaneSums {
    static constexpr std::int64_t mostTerms = 64;
    F32x8 lanes[count];
    F64x4 totals[count];
    std::int64_t terms = 0;

    LaneSums() {
        for (int i = 0; i < count; ++i) {
            lanes[i] = splat(0.0f);
            totals[i] = splat(0.0);
        }
    }
    // Room for `more` terms, at most mostTerms.
    RVX_INLINE void makeRoom(std::int64_t more) {
        if (terms + more > mostTerms) {
            flush();
        }
        terms += more;
    }
    RVX_INLINE void flush() {
        for (int i = 0; i < count; ++i) {
            totals[i] = add(totals[i], add(widenLow(lanes[i]), widenHigh(lanes[i])));
            lanes[i] = splat(0.0f);
        }
        terms = 0;
    }
    RVX_INLINE void finish(double (&sums)[count]) {
        flush();
        for (int i = 0; i < count; ++i) {
            sums[i] = laneSum(totals[i]);
        }
    }
};

// Sums in doubles take any number of terms.
struct Unlimited {
    static constexpr std::int64_t mostTerms = INT32_MAX;
    void makeRoom(std::int64_t) {}
};

// Blocks of rows and, within them, strips of eight columns, the last one perhaps narrower: visit(x, span, y, count).
template <class Sums, class Visit>
RVX_INLINE void walkStrips(std::int64_t columns, std::int64_t rows, Sums &sums, const Visit &visit) {
    for (std::int64_t y = 0; y < rows; y += Sums::mostTerms) {
        const std::int64_t count = std::min(rows - y, Sums::mostTerms);
        std::int64_t x = 0;
        for (; x + 8 <= columns; x += 8) {
            sums.makeRoom(count);
            visit(x, Full{}, y, count);
        }
        if (x < columns) {
            sums.makeRoom(count);
            visit(x, firstLanes(static_cast<int>(columns - x)), y, count);
        }
    }
}

// Pixels of an image as floats. Behind the span floats are not read; of integer pixels the caller grants whole vectors.
RVX_INLINE F32x8 loadPixels(const float *p, Full span) { return load<F32x8>(p, span); }
RVX_INLINE F32x8 loadPixels(const float *p, Lanes span) { return load<F32x8>(p, span); }
template <class T, class Span> RVX_INLINE F32x8 loadPixels(const T *p, Span) { return loadF32(p, Full{}); }

template <class T> struct CopyAsFloats {
    const T *src;
    float *dst;

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        store(dst + x, loadF32(src + x, span), span);
    }
};

} // namespace detail

// The window of the previous image at a position: its pixels, its derivatives and their matrix. The image is continued
// by its edge, as a filter with a replicated border continues it.
template <class T>
GradientMatrix takeWindow(const FlowWindow &window, const LevelImage<T> &image, const SubpixPosition &position);

namespace detail {

// The pixels around a window, with one more on every side, then one more for the fractions.
template <class T>
void gatherReplicated(const FlowWindow &window, const LevelImage<T> &image, std::int64_t x, std::int64_t y) {
    const std::int64_t side = window.size + 3, width = image.roi.width, height = image.roi.height;
    const IndexRange columns{std::max<std::int64_t>(-x, 0), std::min(side, width - x) - 1}; // of the image
    for (std::int64_t j = 0; j < side; ++j) {
        const T *const row = image.at(x, std::clamp<std::int64_t>(y + j, 0, height - 1));
        float *const out = window.source + j * side;
        walkRow<8>(columns.count(), CopyAsFloats<T>{row + columns.first, out + columns.first});
        std::fill(out, out + columns.first, out[columns.first]);
        std::fill(out + columns.last + 1, out + side, out[columns.last]);
    }
}

// Scharr derivatives of the patch, divided by 32, so that a slope of 1 per pixel gives 1:
//     dx   -3  0  3      dy   -3 -10 -3
//         -10  0 10            0   0  0      / 32
//          -3  0  3            3  10  3
struct DeriveStrip {
    const FlowWindow &window;
    LaneSums<3> &sums;

    template <class Span>
    RVX_INLINE void operator()(std::int64_t x, Span span, std::int64_t y, std::int64_t count) const {
        const F32x8 side = splat(3.0f / 32.0f), centre = splat(10.0f / 32.0f);
        const auto smoothed = [&](F32x8 a, F32x8 b, F32x8 c) { return fma(centre, b, mul(side, add(a, c))); };
        const std::int64_t patchPitch = window.patchPitch, pitch = window.pitch, at = y * pitch + x;
        const float *in = window.patch + y * patchPitch + x;
        float *pixels = window.pixels + at, *dx = window.dx + at, *dy = window.dy + at;
        // Of a row of the patch: right minus left, and the pixels smoothed across.
        struct Row {
            F32x8 slope, smooth;
        };
        const auto nextRow = [&]() -> Row {
            const F32x8 left = load<F32x8>(in), middle = load<F32x8>(in + 1), right = load<F32x8>(in + 2);
            in += patchPitch;
            return {sub(right, left), smoothed(left, middle, right)};
        };
        F32x8 xx = sums.lanes[0], xy = sums.lanes[1], yy = sums.lanes[2];
        Row above = nextRow(), row = nextRow();
        for (std::int64_t i = 0; i < count; ++i) {
            store(pixels, load<F32x8>(in - patchPitch + 1));
            const Row below = nextRow();
            const F32x8 gx = keep(span, smoothed(above.slope, row.slope, below.slope));
            const F32x8 gy = keep(span, sub(below.smooth, above.smooth));
            store(dx, gx);
            store(dy, gy);
            xx = fma(gx, gx, xx);
            xy = fma(gx, gy, xy);
            yy = fma(gy, gy, yy);
            above = row, row = below;
            pixels += pitch, dx += pitch, dy += pitch;
        }
        sums.lanes[0] = xx, sums.lanes[1] = xy, sums.lanes[2] = yy;
    }
};

} // namespace detail

template <class T>
GradientMatrix takeWindow(const FlowWindow &window, const LevelImage<T> &image, const SubpixPosition &position) {
    const std::int64_t x = position.x.index - 1, y = position.y.index - 1, side = window.size + 3;
    const float a = position.x.fraction, b = position.y.fraction;
    const Plane<float> patch{window.patch, rowBytes<float>(window.patchPitch)};
    if (x >= 0 && y >= 0 && x + side <= image.roi.width && y + side <= image.roi.height) {
        samplePatch(Plane<const T>{image.at(x, y), image.plane.step}, patch, window.size + 2, window.size + 2, a, b);
    } else {
        detail::gatherReplicated(window, image, x, y);
        samplePatch(Plane<const float>{window.source, rowBytes<float>(side)}, patch, window.size + 2, window.size + 2,
                    a, b);
    }
    detail::LaneSums<3> lanes;
    detail::walkStrips(window.size, window.size, lanes, detail::DeriveStrip{window, lanes});
    double sums[3];
    lanes.finish(sums);
    return {sums[0], sums[1], sums[2]};
}

namespace detail {

// The derivatives of a part, eight pixels at a time.
template <class Sums, class AddProducts>
RVX_INLINE void eachGradient(const FlowWindow &window, const WindowPart &part, Sums &sums, const AddProducts &add) {
    const std::int64_t origin = part.rows.first * window.pitch + part.columns.first, pitch = window.pitch;
    walkStrips(part.columns.count(), part.rows.count(), sums,
               [&](std::int64_t x, auto span, std::int64_t y, std::int64_t count) {
                   const std::int64_t first = origin + y * pitch + x;
                   for (std::int64_t at = first; at < first + count * pitch; at += pitch) {
                       add(load<F32x8>(window.dx + at, span), load<F32x8>(window.dy + at, span));
                   }
               });
}

} // namespace detail

// The matrix over a part.
inline GradientMatrix partMatrix(const FlowWindow &window, const WindowPart &part) {
    detail::LaneSums<3> sums;
    detail::eachGradient(window, part, sums, [&](F32x8 dx, F32x8 dy) {
        sums.lanes[0] = fma(dx, dx, sums.lanes[0]);
        sums.lanes[1] = fma(dx, dy, sums.lanes[1]);
        sums.lanes[2] = fma(dy, dy, sums.lanes[2]);
    });
    double totals[3];
    sums.finish(totals);
    return {totals[0], totals[1], totals[2]};
}

// The same with products and sums in double: of a single pixel, or of pixels whose derivatives have one direction, the
// determinant must vanish.
inline GradientMatrix exactMatrix(const FlowWindow &window, const WindowPart &part) {
    detail::Unlimited unlimited;
    F64x4 xx = splat(0.0), xy = xx, yy = xx;
    const auto addFour = [&](F64x4 dx, F64x4 dy) {
        xx = fma(dx, dx, xx);
        xy = fma(dx, dy, xy);
        yy = fma(dy, dy, yy);
    };
    detail::eachGradient(window, part, unlimited, [&](F32x8 dx, F32x8 dy) {
        addFour(widenLow(dx), widenLow(dy));
        addFour(widenHigh(dx), widenHigh(dy));
    });
    return {laneSum(xx), laneSum(xy), laneSum(yy)};
}

// Where the pixels of the next image lie that a part of the window is compared with.
template <class T> struct NextPixels {
    Plane<const T> plane;   // at the part's first pixel
    std::ptrdiff_t right;   // to the right neighbour; 0 where it does not count
    std::int64_t rowsBelow; // 1: there is a row below the part; 0 where it does not count
};

// The eight sums of the part: (I - P[k]) dx and (I - P[k]) dy for the pixel, the right, the lower and the lower right
// one. (Where a neighbour does not count its sums mean nothing, and its weight is 0.)
struct MismatchSums {
    double x[4], y[4];
};

namespace detail {

template <class T> struct CorrelateStrip {
    const NextPixels<T> &next;
    const float *pixels, *dx, *dy; // the window's, at the part's first pixel
    std::int64_t pitch, lastRow;
    LaneSums<8> &sums;

    template <class Span>
    RVX_INLINE void operator()(std::int64_t x, Span span, std::int64_t y, std::int64_t count) const {
        const T *left = next.plane.row(y) + x, *right = left + next.right;
        const std::int64_t step = next.plane.step;
        F32x8 lanes[8];
        std::copy(sums.lanes, sums.lanes + 8, lanes);
        F32x8 upperLeft = loadPixels(left, span), upperRight = loadPixels(right, span);
        std::int64_t at = y * pitch + x;
        for (const std::int64_t end = y + count; y < end; ++y, at += pitch) {
            const std::int64_t down = y < lastRow ? step : 0;
            left = byteOffset(left, down), right = byteOffset(right, down);
            const F32x8 lowerLeft = loadPixels(left, span), lowerRight = loadPixels(right, span);
            const F32x8 pixel = load<F32x8>(pixels + at, span);
            const F32x8 gx = load<F32x8>(dx + at, span), gy = load<F32x8>(dy + at, span);
            const F32x8 differences[4] = {sub(pixel, upperLeft), sub(pixel, upperRight), sub(pixel, lowerLeft),
                                          sub(pixel, lowerRight)};
            for (int k = 0; k < 4; ++k) {
                lanes[2 * k] = fma(differences[k], gx, lanes[2 * k]);
                lanes[2 * k + 1] = fma(differences[k], gy, lanes[2 * k + 1]);
            }
            upperLeft = lowerLeft, upperRight = lowerRight;
        }
        std::copy(lanes, lanes + 8, sums.lanes);
    }
};

template <class T> struct ResidualStrip {
    const NextPixels<T> &next;
    const float *pixels;
    std::int64_t pitch, lastRow;
    F32x8 a, b;
    LaneSums<1> &sums;

    template <class Span>
    RVX_INLINE void operator()(std::int64_t x, Span span, std::int64_t y, std::int64_t count) const {
        const T *row = next.plane.row(y) + x;
        const auto joined = [&] {
            const F32x8 left = loadPixels(row, span);
            return fma(a, sub(loadPixels(row + next.right, span), left), left);
        };
        F32x8 upper = joined(), total = sums.lanes[0];
        std::int64_t at = y * pitch + x;
        for (const std::int64_t end = y + count; y < end; ++y, at += pitch) {
            row = byteOffset(row, y < lastRow ? next.plane.step : 0);
            const F32x8 lower = joined(), sample = fma(b, sub(lower, upper), upper);
            const F32x8 difference = keep(span, sub(load<F32x8>(pixels + at, span), sample));
            total = fma(difference, difference, total);
            upper = lower;
        }
        sums.lanes[0] = total;
    }
};

} // namespace detail

template <class T> MismatchSums correlate(const FlowWindow &window, const WindowPart &part, const NextPixels<T> &next) {
    const std::int64_t at = part.rows.first * window.pitch + part.columns.first;
    detail::LaneSums<8> lanes;
    detail::walkStrips(part.columns.count(), part.rows.count(), lanes,
                       detail::CorrelateStrip<T>{next, window.pixels + at, window.dx + at, window.dy + at, window.pitch,
                                                 part.rows.count() - 1 + next.rowsBelow, lanes});
    double sums[8];
    lanes.finish(sums);
    return {{sums[0], sums[2], sums[4], sums[6]}, {sums[1], sums[3], sums[5], sums[7]}};
}

// The sum of (I - J)^2.
template <class T>
double squaredResidual(const FlowWindow &window, const WindowPart &part, const NextPixels<T> &next,
                       const SubpixPosition &position) {
    detail::LaneSums<1> lanes;
    detail::walkStrips(part.columns.count(), part.rows.count(), lanes,
                       detail::ResidualStrip<T>{next,
                                                window.pixels + part.rows.first * window.pitch + part.columns.first,
                                                window.pitch, part.rows.count() - 1 + next.rowsBelow,
                                                splat(position.x.fraction), splat(position.y.fraction), lanes});
    double sums[1];
    lanes.finish(sums);
    return sums[0];
}

// Calls function(NextPixels) with the pixels that a part of the window at a position is compared with. Integer pixels
// that lie so near to the image's end that whole vectors would leave it are copied.
template <class T, class Function>
auto withNextPixels(const FlowWindow &window, const LevelImage<T> &image, const SubpixPosition &position,
                    const WindowPart &part, const Function &function) {
    const std::int64_t x = position.x.index + part.columns.first, y = position.y.index + part.rows.first;
    const std::int64_t right = position.x.readsNext() ? 1 : 0, below = position.y.readsNext() ? 1 : 0;
    if constexpr (!std::is_same_v<T, float>) {
        if (x + roundUp(part.columns.count(), 8) + right > image.roi.width) {
            const std::int64_t columns = part.columns.count() + right, rows = part.rows.count() + below;
            for (std::int64_t j = 0; j < rows; ++j) {
                walkRow<8>(columns, detail::CopyAsFloats<T>{image.at(x, y + j), window.source + j * columns});
            }
            return function(NextPixels<float>{{window.source, rowBytes<float>(columns)}, right, below});
        }
    }
    return function(NextPixels<T>{{image.at(x, y), image.plane.step}, right, below});
}

} // namespace rvxcv
