// The exact Euclidean distance to the nearest zero pixel: distances along the columns, then for every row the lower
// envelope of the parabolas (q - p)^2 + g(p)^2 over its columns p, then the root.
//
// Everything before the root is integer arithmetic, so nothing depends on how far apart columns are. Sides up to 16384
// have squared distances below 2^29 and rows are done in vectors of 32-bit lanes:
//
//   - Where zeros are near, a pixel's columns are compared from the nearest one outwards until no farther one can win.
//   - Where they are not, the envelope is built. A parabola is a point (p, h) with h = p^2 + g(p)^2, and the envelope's
//     parabolas are the corners of the lower convex hull (which is why a point above a chord can be dropped at once, in
//     vectors, whatever else is dropped). Each of them covers an interval of pixels.
//
// Larger regions take the envelope in 64 bits, one column at a time.
#include "frame/api.h"
#include "kernel/checks.h"
#include "kernel/plane.h"
#include "kernel/rows.h"
#include "kernel/scratch.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace rvxcv {
namespace {

std::int64_t scratchBytes(RoiSize roi) { return 24 * roundUp(std::max(roi.width, roi.height), 4) + 56; }

__extension__ using Int128 = __int128;

float rootOf(std::int64_t squared) {
    // Rounding twice is harmless: an integer's root that is no float's midpoint is farther from it than the first
    // rounding goes, in double precision up to 2^53 and in extended precision beyond.
    return squared < INT64_C(1) << 53 ? static_cast<float>(std::sqrt(static_cast<double>(squared)))
                                      : static_cast<float>(__builtin_sqrtl(static_cast<long double>(squared)));
}

// Sides beyond 16384.
void largeTrueDistance(Plane<const std::uint8_t> src, Plane<float> dst, RoiSize roi, std::uint8_t *buffer) {
    constexpr std::int32_t none = INT32_MAX; // a column without a zero
    const std::int64_t w = roi.width, h = roi.height;
    std::int32_t *const below = reinterpret_cast<std::int32_t *>(buffer);
    std::int32_t *const column = below + w;
    std::int32_t *const height = column + w;
    for (std::int64_t y = 0; y < h; ++y) {
        auto *const row = reinterpret_cast<std::int32_t *>(dst.row(y));
        const std::uint8_t *const pixels = src.row(y);
        for (std::int64_t x = 0; x < w; ++x) {
            const std::int32_t above = y > 0 ? loadScalar(byteOffset(row, -dst.step) + x) : none;
            storeScalar(row + x, pixels[x] == 0 ? 0 : above == none ? none : above + 1);
        }
    }
    for (std::int64_t x = 0; x < w; ++x) {
        storeScalar(below + x, none);
    }
    for (std::int64_t y = h - 1; y >= 0; --y) {
        float *const row = dst.row(y);
        std::int64_t count = 0;
        for (std::int64_t x = 0; x < w; ++x) {
            std::int32_t g = loadScalar(reinterpret_cast<std::int32_t *>(row) + x);
            const std::int32_t next = loadScalar(below + x);
            g = std::min(g, next == none ? none : next + 1);
            storeScalar(below + x, g);
            if (g == none) {
                continue;
            }
            const auto point = [&](std::int64_t i) {
                const std::int64_t p = loadScalar(column + i), gp = loadScalar(height + i);
                return std::pair(p, p * p + gp * gp);
            };
            const std::int64_t hull = x * x + std::int64_t{g} * g;
            while (count >= 2) {
                const auto [u, hu] = point(count - 2);
                const auto [v, hv] = point(count - 1);
                if (static_cast<Int128>(hv - hu) * (x - v) < static_cast<Int128>(hull - hv) * (v - u)) {
                    break;
                }
                --count;
            }
            storeScalar(column + count, static_cast<std::int32_t>(x));
            storeScalar(height + count, g);
            ++count;
        }
        std::int64_t k = 0;
        for (std::int64_t x = 0; x < w; ++x) {
            if (count == 0) {
                storeScalar(row + x, std::sqrt(std::numeric_limits<float>::max()));
                continue;
            }
            const auto squared = [&](std::int64_t i) {
                const std::int64_t dx = x - loadScalar(column + i), dy = loadScalar(height + i);
                return dx * dx + dy * dy;
            };
            while (k + 1 < count && squared(k + 1) <= squared(k)) {
                ++k;
            }
            storeScalar(row + x, rootOf(squared(k)));
        }
    }
}

constexpr float farAway = std::numeric_limits<float>::max(); // the squared distance without a zero

// Sides up to this give squared distances below `unreached`.
constexpr std::int32_t largestSide = 16384;
constexpr std::int32_t noZero = 23171; // a column without a zero: its square exceeds every squared distance
constexpr std::int32_t unreached = noZero * noZero;
// How far columns are compared one by one. Beyond that the envelope is cheaper.
constexpr std::int64_t nearby = 48;

// The nearest floats to the roots of integers below 2^30. Those below 2^24 are floats.
RVX_INLINE F32x8 roots(I32x8 squared) {
    if (laneBits(greater(squared, splat(1 << 24))) == 0) {
        return sqrt(toF32(squared));
    }
    return toF32(sqrt(toF64(squared)));
}

// The integers of a column distance live in the bytes of the float that takes their place.
RVX_INLINE std::int32_t *asIntegers(float *row) { return reinterpret_cast<std::int32_t *>(row); }

// Distances to the nearest zero above, from those of the row above.
struct CountDown {
    const std::uint8_t *src;
    const std::int32_t *above;
    std::int32_t *dst;

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        const I32x8 next = min(add(load<I32x8>(above + x, span), splat(1)), splat(noZero));
        store(dst + x, keep(greater(loadI32(src + x, span), splat(0)), next), span);
    }
};

// The same from below, joined with those from above, and their squares.
struct CountUp {
    const std::int32_t *row;
    std::int32_t *below, *squares;
    I32x8 *least;

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        const I32x8 next = add(load<I32x8>(below + x, span), splat(1));
        const I32x8 nearest = min(load<I32x8>(row + x, span), next);
        store(below + x, nearest, span);
        const I32x8 squared = mulLow(nearest, nearest);
        store(squares + x, squared, span);
        *least = min(*least, bounded(squared, span));
    }
    RVX_INLINE static I32x8 bounded(I32x8 a, Full) { return a; }
    RVX_INLINE static I32x8 bounded(I32x8 a, Part part) {
        return select(greater(splat(part.n), laneNumbers()), a, splat(unreached));
    }
};

class RowOfColumns {
public:
    RowOfColumns(RoiSize roi, std::uint8_t *buffer) : width_(roi.width), margin_(std::min(nearby, width_ - 1)) {
        Scratch areas(buffer, scratchBytes(roi));
        below_ = areas.take<std::int32_t>(width_);
        corners_ = areas.take<std::int32_t>(width_);
        squares_ = areas.take<std::int32_t>(width_ + 2 * margin_ + 8) + margin_;
        std::fill(below_, below_ + width_, noZero);
        std::fill(squares_ - margin_, squares_, unreached);
        std::fill(squares_ + width_, squares_ + width_ + margin_ + 8, unreached);
    }

    // A row of columns without zeros, until the first row is taken.
    const std::int32_t *withoutZeros() const { return below_; }

    // Takes the next row's distances from above. False when no column has a zero.
    bool take(const std::int32_t *row) {
        I32x8 least = splat(unreached);
        walkRow<8>(width_, CountUp{row, below_, squares_, &least});
        least_ = leastLane(least);
        return least_ != unreached;
    }

    void finish(float *dst) {
        if (rowsToEnvelope_ > 0 || !compareNearby(dst)) {
            rowsToEnvelope_ = rowsToEnvelope_ > 0 ? rowsToEnvelope_ - 1 : 8;
            coverByEnvelope(dst, buildEnvelope());
        }
    }

private:
    static std::int32_t leastLane(I32x8 a) {
        std::int32_t lanes[8];
        store(lanes, a);
        return *std::min_element(lanes, lanes + 8);
    }

    // False as soon as some pixel needs columns that are farther away.
    bool compareNearby(float *dst) const {
        std::int64_t x = 0;
        for (; x + 32 <= width_; x += 32) {
            if (!compareBlock<4>(dst + x, x, Full{})) {
                return false;
            }
        }
        for (; x + 8 <= width_; x += 8) {
            if (!compareBlock<1>(dst + x, x, Full{})) {
                return false;
            }
        }
        return x == width_ || compareBlock<1>(dst + x, x, Part{static_cast<int>(width_ - x)});
    }

    template <int vectors, class Span> RVX_INLINE bool compareBlock(float *dst, std::int64_t x, Span span) const {
        const std::int32_t *const here = squares_ + x;
        I32x8 best[vectors];
        for (int v = 0; v < vectors; ++v) {
            best[v] = load<I32x8>(here + 8 * v);
        }
        for (std::int64_t away = 1;; ++away) {
            const I32x8 square = splat(static_cast<std::int32_t>(away * away));
            // No column from here on can be nearer than this.
            const I32x8 bound = add(square, splat(least_));
            I32x8 worst = best[0];
            for (int v = 1; v < vectors; ++v) {
                worst = max(worst, best[v]);
            }
            if (laneBits(greater(worst, bound), span) == 0) {
                break;
            }
            if (away > margin_) {
                if (margin_ == width_ - 1) {
                    break;
                }
                return false;
            }
            for (int v = 0; v < vectors; ++v) {
                const I32x8 beside = min(load<I32x8>(here + 8 * v - away), load<I32x8>(here + 8 * v + away));
                best[v] = min(best[v], add(beside, square));
            }
        }
        for (int v = 0; v < vectors; ++v) {
            store(dst + 8 * v, roots(best[v]), span);
        }
        return true;
    }

    std::int64_t height(std::int64_t p) const { return p * p + squares_[p]; }

    // The number of corners.
    std::int64_t buildEnvelope() {
        std::int64_t count = 0, u = 0, v = 0, hu = 0, hv = 0; // the last two corners
        for (std::int64_t x = 0; x < width_; x += 8) {
            for (std::uint32_t bits = candidates(x); bits != 0; bits &= bits - 1) {
                const std::int64_t p = x + std::countr_zero(bits), hp = height(p);
                while (count >= 2 && (hv - hu) * (p - v) >= (hp - hv) * (v - u)) {
                    --count;
                    v = u;
                    hv = hu;
                    if (count >= 2) {
                        u = corners_[count - 2];
                        hu = height(u);
                    }
                }
                corners_[count++] = static_cast<std::int32_t>(p);
                u = v;
                hu = hv;
                v = p;
                hv = hp;
            }
        }
        return count;
    }

    // Of eight columns those below the chords of their neighbours at the same distance on both sides.
    RVX_INLINE std::uint32_t candidates(std::int64_t x) const {
        const I32x8 here = load<I32x8>(squares_ + x), twice = add(here, here);
        Mask32x8 kept = greater(splat(unreached), here);
        for (std::int64_t away = 1; away <= std::min<std::int64_t>(margin_, 16); away *= 2) {
            const I32x8 sides = add(load<I32x8>(squares_ + x - away), load<I32x8>(squares_ + x + away));
            kept = both(kept, greater(add(sides, splat(static_cast<std::int32_t>(2 * away * away))), twice));
        }
        return laneBits(kept);
    }

    void coverByEnvelope(float *dst, std::int64_t count) const {
        std::int64_t x = 0, p = corners_[0];
        for (std::int64_t k = 0; k < count && x < width_; ++k) {
            std::int64_t end = width_, next = p;
            if (k + 1 < count) {
                next = corners_[k + 1];
                // The first pixel that the next one covers. The quotient is far enough from an integer, or one.
                const double meet =
                    std::ceil(static_cast<double>(height(next) - height(p)) / static_cast<double>(2 * (next - p)));
                end = std::clamp<std::int64_t>(static_cast<std::int64_t>(meet), 0, width_);
            }
            const I32x8 square = splat(squares_[p]);
            // What is written beyond the end is written again.
            for (; x < end; x += 8) {
                const I32x8 away = add(laneNumbers(), splat(static_cast<std::int32_t>(x - p)));
                const F32x8 distance = roots(add(mulLow(away, away), square));
                if (x + 8 <= width_) {
                    store(dst + x, distance);
                } else {
                    store(dst + x, distance, Part{static_cast<int>(width_ - x)});
                }
            }
            x = std::max(std::min(x, end), std::int64_t{0});
            p = next;
        }
    }

    std::int64_t width_, margin_;
    std::int32_t *below_, *corners_, *squares_;
    std::int32_t least_ = 0;
    int rowsToEnvelope_ = 0;
};

void trueDistance(Plane<const std::uint8_t> src, Plane<float> dst, RoiSize roi, std::uint8_t *buffer) {
    if (std::max(roi.width, roi.height) > largestSide) {
        largeTrueDistance(src, dst, roi, buffer);
        return;
    }
    RowOfColumns columns(roi, buffer);
    for (std::int64_t y = 0; y < roi.height; ++y) {
        const std::int32_t *const above = y == 0 ? columns.withoutZeros() : asIntegers(dst.row(y - 1));
        walkRow<8>(roi.width, CountDown{src.row(y), above, asIntegers(dst.row(y))});
    }
    for (std::int64_t y = roi.height - 1; y >= 0; --y) {
        if (!columns.take(asIntegers(dst.row(y)))) {
            // No column has a zero: there is none at all.
            for (std::int64_t row = 0; row < roi.height; ++row) {
                walkRow<8>(roi.width,
                           [&](std::ptrdiff_t x, auto span) { store(dst.row(row) + x, sqrt(splat(farAway)), span); });
            }
            return;
        }
        columns.finish(dst.row(y));
    }
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiTrueDistanceTransform_8u32f_C1R(const uint8_t *src, int32_t srcStep, float *dst, int32_t dstStep,
                                               RoiSize roi, uint8_t *buffer) {
    Checks checks;
    checks.pointers(src, dst, buffer).size(roi);
    checks.steps(roi.width, srcStep).steps(rowBytes<float>(roi.width), dstStep).multiples(sizeof(float), dstStep);
    if (checks.failed()) {
        return checks.status();
    }
    trueDistance({src, srcStep}, {dst, dstStep}, roi, buffer);
    return StatusOk;
}
StatusCode rvxiTrueDistanceTransformGetBufferSize_8u32f_C1R(RoiSize roi, int32_t *bufferSize) {
    Checks checks;
    checks.pointers(bufferSize).size(roi);
    return checks.failed() ? checks.status() : storeSize(scratchBytes(roi), bufferSize);
}
