// Corner candidates without those on edges: a candidate is kept when the smaller eigenvalue of the gradient covariance
// around it is a large enough part of the larger one.
//
// Where most of a strip's pixels are no candidates, the strip engine would compute means that nobody asks for. There
// the map is read in blocks of eight columns, and a block with a candidate is computed alone, straight from the pixels:
// derivatives of sixteen columns, of which the products' sums take what they need by shifts in registers. The sums are
// those of the engine, in its order. Blocks next to the image's first and last columns are left to the engine.
#include "feature/gradient_covariance.h"

#include <utility>

namespace rvxcv {
namespace {

struct KeptCandidates {
    Plane<const std::uint8_t> map;
    Plane<std::uint8_t> dst; // may be the map
    float ratio;

    struct Row {
        const std::uint8_t *map;
        std::uint8_t *dst;
        F32x8 ratio;

        template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span, F32x8 a, F32x8 b, F32x8 c) const {
            const TraceAndRoot eigen(a, b, c);
            const F32x8 smaller = max(sub(eigen.trace, eigen.root), splat(0.0f)), larger = add(eigen.trace, eigen.root);
            storeNarrow(dst + x, keep(greaterEqual(smaller, mul(ratio, larger)), loadI32(map + x, span)), span);
        }
    };
    Row row(std::int64_t y, std::int64_t x) const { return {map.row(y) + x, dst.row(y) + x, splat(ratio)}; }
};

// The means of eight columns alone. The pixels of the columns `around` before the first and behind the last one are
// read and must be in the image; rows outside are replicated: those of pixels, and those of products.
template <class Derivative, int block> struct BlockMeans {
    static constexpr int columns = 8, reach = Derivative::reach, taps = 2 * reach + 1;
    static constexpr int before = 4, around = before + reach; // the derivatives' first column lies `before` the block's
    static_assert(before >= block / 2);
    using Filter = typename Derivative::Integers;

    Plane<const std::uint8_t> image;
    std::int64_t height;

    RVX_INLINE std::int64_t inside(std::int64_t y) const { return std::clamp<std::int64_t>(y, 0, height - 1); }

    RVX_INLINE GradientPair gradient(std::int64_t x, std::int64_t y) const {
        I16x16 sums[taps][Filter::planes];
        const std::uint8_t *rows[taps];
        for (int i = 0; i < taps; ++i) {
            rows[i] = image.row(inside(y + i - reach)) + x - reach;
        }
        for (int i = 0; i < taps; ++i) {
            Filter::vertical([&](int row) { return loadI16(rows[row] + i); }, sums[i]);
        }
        return Filter::horizontal([&](int p, int i) { return sums[i][p]; });
    }

    // The sums over the block's columns of sixteen products.
    template <int... i> static RVX_INLINE F32x8 rowSum(F32x8 low, F32x8 high, std::integer_sequence<int, i...>) {
        const F32x8 shifted[block] = {shiftedIn<4 * (before - block / 2 + i)>(low, high)...};
        return chainedSum<boxKernel<block>>([&](int tap) { return shifted[tap]; });
    }

    RVX_INLINE void compute(std::int64_t x, std::int64_t y, F32x8 (&means)[planes]) const {
        F32x8 sums[block][planes];
        for (int i = 0; i < block; ++i) {
            const GradientPair both = gradient(x - before, inside(y + i - block / 2));
            const F32x8 dx[2] = {toF32(widenLow(both.dx)), toF32(widenHigh(both.dx))};
            const F32x8 dy[2] = {toF32(widenLow(both.dy)), toF32(widenHigh(both.dy))};
            constexpr std::make_integer_sequence<int, block> all;
            sums[i][0] = rowSum(mul(dx[0], dx[0]), mul(dx[1], dx[1]), all);
            sums[i][1] = rowSum(mul(dy[0], dy[0]), mul(dy[1], dy[1]), all);
            sums[i][2] = rowSum(mul(dx[0], dy[0]), mul(dx[1], dy[1]), all);
        }
        for (int p = 0; p < planes; ++p) {
            means[p] = Mean<block * block>{}(chainedSum<boxKernel<block>>([&](int i) { return sums[i][p]; }));
        }
    }
};

// How many blocks of eight columns of a strip hold a candidate.
std::int64_t blocksWithCandidates(const KeptCandidates &candidates, Strip strip, std::int64_t height) {
    std::int64_t count = 0;
    for (std::int64_t y = 0; y < height; ++y) {
        const std::uint8_t *const row = candidates.map.row(y);
        std::int64_t x = strip.first;
        for (; x + 8 <= strip.last; x += 8) {
            count += loadScalar(reinterpret_cast<const std::uint64_t *>(row + x)) != 0;
        }
        for (bool counted = false; x < strip.last && !counted; ++x) {
            counted = row[x] != 0;
            count += counted;
        }
    }
    return count;
}

template <class Derivative, int block>
void suppressInStrip(const CovarianceSource<std::uint8_t> &source, const KeptCandidates &candidates, Strip strip,
                     Scratch scratch) {
    using Means = BlockMeans<Derivative, block>;
    const std::int64_t width = source.roi.width, height = source.roi.height;
    const std::int64_t blocks = blocksWithCandidates(candidates, strip, height);
    if (blocks == 0) {
        for (std::int64_t y = 0; y < height; ++y) {
            std::fill(candidates.dst.row(y) + strip.first, candidates.dst.row(y) + strip.last, std::uint8_t{0});
        }
        return;
    }
    constexpr int worth = 2 + Means::taps * block / 2; // how many of the engine's blocks take as long as one alone
    Strip inner = strip;
    inner.first += strip.first == 0 ? Means::columns : 0;
    inner.last -= strip.last == width ? (strip.last - inner.first) % Means::columns + 2 * Means::columns : 0;
    if (inner.last <= inner.first || worth * blocks * Means::columns > (strip.last - strip.first) * height) {
        readStrip<std::uint8_t, Derivative, block>(source.image, source.roi, strip, candidates, scratch);
        return;
    }
    for (const Strip edge : {Strip{strip.first, inner.first}, Strip{inner.last, strip.last}}) {
        if (edge.first < edge.last) {
            suppressInStrip<Derivative, block>(source, candidates, edge, scratch);
        }
    }
    const Means means{source.image, height};
    for (std::int64_t y = 0; y < height; ++y) {
        const KeptCandidates::Row row = candidates.row(y, 0);
        for (std::int64_t x = inner.first; x < inner.last; x += Means::columns) {
            if (loadScalar(reinterpret_cast<const std::uint64_t *>(row.map + x)) == 0) {
                storeScalar(reinterpret_cast<std::uint64_t *>(row.dst + x), std::uint64_t{0});
                continue;
            }
            F32x8 mean[planes];
            means.compute(x, y, mean);
            row(x, Full{}, mean[0], mean[1], mean[2]);
        }
    }
}

StatusCode lineSuppression(const std::uint8_t *src, std::int32_t srcStep, const std::uint8_t *map, std::int32_t mapStep,
                           std::uint8_t *dst, std::int32_t dstStep, RoiSize roi, std::int32_t filter,
                           std::int32_t aperture, std::int32_t block, float ratio, std::uint8_t *buffer) {
    Checks checks;
    checks.pointers(src, map, dst, buffer).size(roi).steps(roi.width, srcStep, mapStep, dstStep);
    checkFilter(checks, filter, aperture, block).require(ratio >= 0 && ratio <= 1, StatusOutOfRange);
    checks.require(src != dst, StatusInPlaceNotSupported);
    if (checks.failed()) {
        return checks.status();
    }
    const CovarianceSource<std::uint8_t> source{{src, srcStep}, roi, buffer};
    const KeptCandidates candidates{{map, mapStep}, {dst, dstStep}, ratio};
    withFilter(filter, aperture, [&](auto derivative) {
        using Derivative = decltype(derivative);
        const auto suppress = [&](auto size) {
            constexpr int side = decltype(size)::value;
            forEachStrip<std::uint8_t, Derivative, side>(source, [&](Strip strip, Scratch scratch) {
                suppressInStrip<Derivative, side>(source, candidates, strip, scratch);
            });
        };
        block == 3 ? suppress(std::integral_constant<int, 3>{}) : suppress(std::integral_constant<int, 5>{});
    });
    return StatusOk;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiLineSuppression_8u_C1R(const uint8_t *src, int32_t srcStep, const uint8_t *map, int32_t mapStep,
                                      uint8_t *dst, int32_t dstStep, RoiSize roi, int32_t filter, int32_t aperture,
                                      int32_t block, float ratio, uint8_t *buffer) {
    return lineSuppression(src, srcStep, map, mapStep, dst, dstStep, roi, filter, aperture, block, ratio, buffer);
}
StatusCode rvxiLineSuppressionGetBufferSize_8u_C1R(RoiSize roi, int32_t aperture, int32_t block, int32_t *size) {
    return queryCovariance<std::uint8_t>(roi, aperture, block, size);
}
