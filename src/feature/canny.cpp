// Canny edges: magnitude, suppression of all but local maxima, hysteresis (J. Canny, PAMI 8(6), 1986).
//
// Rows stream through: a producer computes one row of magnitudes and quantised directions (from derivative images, or
// from an 8u picture whose derivatives never leave the registers), and the row before it is suppressed. Of the whole
// image only bitmaps are kept, of candidates and of edges, and a stack of words that gained edges. L1 magnitudes of
// integers are 16-bit words, the others floats.
#include "frame/api.h"

#include "feature/edge_map.h"
#include "filter/gradient_rows.h"
#include "kernel/checks.h"
#include "kernel/scratch.h"

#include <cmath>
#include <limits>

namespace rvxcv {
namespace {

// -------------------------------------------------------------------------------------------------- directions

// A pixel's direction, one byte: bit 1 tells the diagonals (bit 0: the one through upper right and lower left), else
// bit 0 tells vertical from horizontal.
constexpr std::int32_t diagonalBit = 2, secondBit = 1;

RVX_INLINE I32x8 quantise(Mask32x8 horizontal, Mask32x8 vertical, Mask32x8 signsDiffer) {
    const Mask32x8 straight = either(horizontal, vertical);
    return select(straight, keep(without(vertical, horizontal), splat(secondBit)),
                  add(splat(diagonalBit), keep(signsDiffer, splat(secondBit))));
}

// The 16-bit rule forms |dy| times the constant in double and rounds the product to float. For |dy| <= 32768 the
// product with the constant split into two floats rounds the same (a test tries every |dy| beside its thresholds).
struct SplitConstant {
    float high, low;

    explicit constexpr SplitConstant(double value)
        : high(static_cast<float>(value)), low(static_cast<float>(value - static_cast<double>(high))) {}
    RVX_INLINE F32x8 times(F32x8 a) const { return fma(a, splat(high), mul(a, splat(low))); }
};

struct AnyIntegerRule {
    static RVX_INLINE I16x16 directions(const GradientPair &gradient) {
        return narrowSaturated(eight(widenLow(gradient.dx), widenLow(gradient.dy)),
                               eight(widenHigh(gradient.dx), widenHigh(gradient.dy)));
    }

private:
    static RVX_INLINE I32x8 eight(I32x8 dx, I32x8 dy) {
        constexpr SplitConstant tan67(2.414213562373095), tan22(0.41421356237309503);
        const F32x8 x = toF32(dx), y = toF32(dy), ax = abs(x), ay = abs(y);
        return quantise(greater(ax, tan67.times(ay)), greater(tan22.times(ay), ax), signs(bitXor(x, y)));
    }
};

// Derivatives of at most 4080, from 8u pictures and three taps: for them fractions decide as the rounded products do.
struct SmallIntegerRule {
    static constexpr std::int16_t over = 2378, tan67 = 5741, tan22 = 985;

    // Whether as many |dx| lie on either side of each threshold.
    static constexpr bool exact() {
        for (std::int32_t ay = 0; ay <= 4080; ++ay) {
            const auto product67 = static_cast<float>(2.414213562373095 * ay);
            const auto product22 = static_cast<float>(0.41421356237309503 * ay);
            const std::int32_t notAbove = tan67 * ay / over, below = (tan22 * ay + over - 1) / over;
            if (notAbove != static_cast<std::int32_t>(product67) || static_cast<float>(below) < product22 ||
                (below > 0 && static_cast<float>(below - 1) >= product22)) {
                return false;
            }
        }
        return true;
    }

    static RVX_INLINE I16x16 directions(const GradientPair &gradient) {
        const I16x16 ax = abs(gradient.dx), ay = abs(gradient.dy);
        const I16x16 low = pairsInLaneLow(ax, ay), high = pairsInLaneHigh(ax, ay);
        const auto negative = [&](I16x16 factors) {
            return shiftRight<15>(narrowInLane(mulAddPairs(low, factors), mulAddPairs(high, factors)));
        };
        const I16x16 horizontal = negative(splatPair(-over, tan67)), vertical = negative(splatPair(over, -tan22));
        const I16x16 second = splat(std::int16_t{secondBit});
        const I16x16 signsDiffer = bitAnd(shiftRight<15>(bitXor(gradient.dx, gradient.dy)), second);
        const I16x16 ifDiagonal = bitOr(signsDiffer, splat(std::int16_t{diagonalBit}));
        return bitOr(bitAndNot(ifDiagonal, bitOr(horizontal, vertical)), bitAnd(vertical, second));
    }
};

static_assert(SmallIntegerRule::exact());

struct FloatRule {
    static RVX_INLINE I32x8 direction(F32x8 dx, F32x8 dy) {
        const F32x8 ax = abs(dx), ay = abs(dy);
        return quantise(greater(ax, mul(splat(2.4142137f), ay)), greater(mul(splat(0.41421357f), ay), ax),
                        signs(bitXor(dx, dy)));
    }
};

// -------------------------------------------------------------------------------------------------- magnitudes

// A norm turns derivatives into magnitudes; those that do not pass the low threshold become 0. The 16-bit rule compares
// with the threshold truncated to an integer, as a number, so that no value overflows, and drops equality; the float
// rule keeps it. `high` is the other threshold in terms of the magnitudes: what exceeds it is an edge.

struct AboveTruncated {
    F32x8 low;
    explicit AboveTruncated(float threshold) : low(splat(std::trunc(threshold))) {}
    RVX_INLINE F32x8 apply(F32x8 m) const { return keep(greater(m, low), m); }
};
struct AtLeast {
    F32x8 low;
    explicit AtLeast(float threshold) : low(splat(threshold)) {}
    RVX_INLINE F32x8 apply(F32x8 m) const { return keep(greaterEqual(m, low), m); }
};

struct L1Float {
    using Magnitude = float;
    AboveTruncated threshold;

    explicit L1Float(float low) : threshold(low) {}
    static float high(float threshold) { return threshold; }
    RVX_INLINE void put(float *magnitudes, const GradientPair &gradient, auto span) const {
        const auto magnitude = [&](I32x8 dx, I32x8 dy) { return threshold.apply(toF32(add(abs(dx), abs(dy)))); };
        const I32x8 dx[2] = {widenLow(gradient.dx), widenHigh(gradient.dx)};
        const I32x8 dy[2] = {widenLow(gradient.dy), widenHigh(gradient.dy)};
        withEight<0>(span, [&](auto eight) { store(magnitudes, magnitude(dx[0], dy[0]), eight); });
        withEight<1>(span, [&](auto eight) { store(magnitudes + 8, magnitude(dx[1], dy[1]), eight); });
    }
};

// The sum of squares is exact and rounded to float once. Sums below 2^21, of the 3x3 Sobel filters, have roots that
// differ as floats: they are compared themselves, and so are the thresholds' squares.
template <bool root> struct L2Float {
    using Magnitude = float;
    AtLeast threshold;

    explicit L2Float(float low) : threshold(root ? low : leastSum(low, [low](float m) { return m >= low; })) {}
    static float high(float threshold) {
        return root ? threshold : leastSum(threshold, [threshold](float m) { return m > threshold; }) - 1;
    }
    RVX_INLINE void put(float *magnitudes, const GradientPair &gradient, auto span) const {
        const auto magnitude = [&](I32x8 sum) { return threshold.apply(root ? sqrt(toF32(sum)) : toF32(sum)); };
        const auto squares = [](I16x16 pairs) { return mulAddPairs(pairs, pairs); };
        const I32x8 low = squares(pairsInLaneLow(gradient.dx, gradient.dy));
        const I32x8 high = squares(pairsInLaneHigh(gradient.dx, gradient.dy));
        withEight<0>(span, [&](auto eight) { store(magnitudes, magnitude(lowThenLow(low, high)), eight); });
        withEight<1>(span, [&](auto eight) { store(magnitudes + 8, magnitude(highThenHigh(low, high)), eight); });
    }

private:
    // The least sum whose root passes a test beside the threshold, or one that is not reached.
    template <class Test> static float leastSum(float threshold, const Test &passes) {
        constexpr float mostRoot = 1449, unreached = 1 << 21;
        if (!(threshold < mostRoot)) {
            return unreached;
        }
        float least = threshold > 2 ? std::floor(threshold * threshold) - 2 : 0; // none below passes
        while (!passes(std::sqrt(least))) {
            ++least;
        }
        return least;
    }
};

// L1 magnitudes less 0 or 1 as unsigned words. Magnitudes of any 16-bit derivatives reach 65536, which fits less 1;
// that in turn needs a low threshold of at least 1, so that what passes it stays above 0.
template <int less> struct L1Words {
    using Magnitude = std::uint16_t;
    U16x16 low;

    explicit L1Words(float threshold) : low(splat(limit(threshold))) {}
    static std::uint16_t high(float threshold) { return limit(threshold); }
    RVX_INLINE void put(std::uint16_t *magnitudes, const GradientPair &gradient, auto span) const {
        U16x16 ax = abs(gradient.dx), ay = abs(gradient.dy);
        if constexpr (less == 1) {
            const U16x16 larger = max(ax, ay);
            ay = min(ax, ay);
            ax = subSaturated(larger, splat(std::uint16_t{1}));
        }
        const U16x16 m = add(ax, ay);
        store(magnitudes, bitAndNot(m, equal(subSaturated(m, low), U16x16{})), span);
    }

private:
    // No magnitude exceeds 65535, so that stands for what is larger and for a NaN.
    static std::uint16_t limit(float threshold) {
        return threshold >= 0 && threshold < 65536
                   ? static_cast<std::uint16_t>(static_cast<std::int32_t>(threshold) - less)
                   : 65535;
    }
    static RVX_INLINE U16x16 abs(I16x16 a) { return {{rvxcv::abs(a).v}}; }
};

// ---------------------------------------------------------------------------------------------- rows in scratch

// Three magnitude rows with a zero on both sides, two rows of directions. Vectors of the suppression read behind a row:
// elements of the next row, or the spare ones.
template <class T> class Rows {
public:
    Rows(Scratch &scratch, std::int64_t width) : width_(width) {
        constexpr int spare = Vec<T>::lanes;
        const std::int64_t magnitudes = 3 * (width + 2) + spare, directions = 2 * width + spare;
        magnitudes_ = scratch.take<T>(magnitudes, 1);
        directions_ = scratch.take<std::uint8_t>(directions, 1);
        std::memset(static_cast<void *>(magnitudes_), 0, static_cast<std::size_t>(magnitudes) * sizeof(T));
        std::memset(directions_, 0, static_cast<std::size_t>(directions));
    }

    // Rows -1 .. height, at the first pixel.
    RVX_INLINE T *magnitude(std::int64_t y) const { return magnitudes_ + (y + 3) % 3 * (width_ + 2) + 1; }
    RVX_INLINE std::uint8_t *direction(std::int64_t y) const { return directions_ + y % 2 * width_; }
    void clear(std::int64_t y) const {
        std::memset(static_cast<void *>(magnitude(y)), 0, static_cast<std::size_t>(width_) * sizeof(T));
    }

private:
    std::int64_t width_;
    T *magnitudes_;
    std::uint8_t *directions_;
};

// Takes sixteen integer derivatives at a time and stores their magnitudes and directions.
template <class Norm, class Rule> struct Emit {
    static constexpr Tail tail = Tail::partial;
    static constexpr bool rereads = false;

    typename Norm::Magnitude *magnitudes;
    std::uint8_t *directions;
    Norm norm;

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span, const GradientPair &gradient) const {
        norm.put(magnitudes + x, gradient, span);
        storeSaturated(directions + x, Rule::directions(gradient), span);
    }
};

// --------------------------------------------------------------------------------------------------- producers

// A producer computes a row's magnitudes and directions.

template <class Norm_> struct From16s {
    using Norm = Norm_;
    Plane<const std::int16_t> dx, dy;
    Norm norm;

    struct Kernel {
        const std::int16_t *dx, *dy;
        Emit<Norm, AnyIntegerRule> emit;
        template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
            emit(x, span, {load<I16x16>(dx + x, span), load<I16x16>(dy + x, span)});
        }
    };

    void produce(std::int64_t y, std::int64_t width, typename Norm::Magnitude *magnitudes,
                 std::uint8_t *directions) const {
        walkRow<16>(width, Kernel{dx.row(y), dy.row(y), {magnitudes, directions, norm}});
    }
};

struct From32f {
    struct Norm : AtLeast {
        using AtLeast::AtLeast;
        using Magnitude = float;
        static float high(float threshold) { return threshold; }
    };
    Plane<const float> dx, dy;
    Norm norm;

    struct Kernel {
        const float *dx, *dy;
        float *magnitudes;
        std::uint8_t *directions;
        AtLeast threshold;

        template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
            const F32x8 gx = load<F32x8>(dx + x, span), gy = load<F32x8>(dy + x, span);
            store(magnitudes + x, threshold.apply(add(abs(gx), abs(gy))), span);
            const I32x8 direction = FloatRule::direction(gx, gy);
            storeSaturated(directions + x, narrowSaturated(direction, direction), bytes(span));
        }
        static RVX_INLINE Part bytes(Full) { return {8}; }
        static RVX_INLINE Part bytes(Part part) { return part; }
    };

    void produce(std::int64_t y, std::int64_t width, float *magnitudes, std::uint8_t *directions) const {
        walkRow<8>(width, Kernel{dx.row(y), dy.row(y), magnitudes, directions, norm});
    }
};

template <class Filter, class Norm_> struct From8u {
    using Norm = Norm_;
    using Rule = std::conditional_t<Filter::taps == 3, SmallIntegerRule, AnyIntegerRule>;
    static constexpr int reach = Filter::taps / 2;
    const BorderedRows<std::uint8_t, reach> &source;
    const ColumnMargins<reach> &margins;
    std::uint8_t borderValue;
    Norm norm;

    void produce(std::int64_t y, std::int64_t, typename Norm::Magnitude *magnitudes, std::uint8_t *directions) const {
        const std::uint8_t *rows[Filter::taps];
        source.around(y, rows);
        filterRow<Filter, reach>(rows, margins, borderValue, Emit<Norm, Rule>{magnitudes, directions, norm});
    }
};

// ------------------------------------------------------------------------------------------------- suppression

// Vectors of magnitudes as integers in the same order; floats that are not negative have it in their bits.
template <class T> struct Ordered;

template <> struct Ordered<float> {
    using V = I32x8;
    static RVX_INLINE V of(const float *p) { return asInt(load<F32x8>(p)); }
    static RVX_INLINE V directions(const std::uint8_t *p) { return loadI32(p, Full{}); }
    static RVX_INLINE V oneLess(V a) { return add(a, splat(-1)); }
    static RVX_INLINE V where(V directions, std::int32_t code, V a) { return keep(equal(directions, splat(code)), a); }
    static RVX_INLINE std::uint32_t exceeding(V a, V b) { return laneBits(greater(a, b)); }
    // Nothing exceeds a NaN, nor infinity.
    static V high(float threshold) {
        return asInt(splat(threshold >= 0 ? threshold : std::numeric_limits<float>::infinity()));
    }
};

template <> struct Ordered<std::uint16_t> {
    using V = U16x16;
    static RVX_INLINE V of(const std::uint16_t *p) { return load<V>(p); }
    static RVX_INLINE V directions(const std::uint8_t *p) { return {{loadI16(p).v}}; }
    static RVX_INLINE V oneLess(V a) { return subSaturated(a, splat(std::uint16_t{1})); }
    static RVX_INLINE V where(V directions, std::int32_t code, V a) {
        return bitAnd(equal(directions, splat(static_cast<std::uint16_t>(code))), a);
    }
    static RVX_INLINE std::uint32_t exceeding(V a, V b) { return laneBits(equal(subSaturated(a, b), V{})) ^ 0xffff; }
    static V high(std::uint16_t threshold) { return splat(threshold); }
};

// Row y: puts its candidates and edges into the map. A pixel is kept that exceeds its two neighbours across the edge;
// on a straight line it may equal the second one, which therefore counts one less.
template <class T>
void suppressRow(const Rows<T> &rows, std::int64_t y, std::int64_t width, T high, const EdgeMap &map) {
    using O = Ordered<T>;
    using V = typename O::V;
    const V highest = O::high(high);
    const T *above = rows.magnitude(y - 1), *row = rows.magnitude(y), *below = rows.magnitude(y + 1);
    const std::uint8_t *directions = rows.direction(y);
    for (std::int64_t x = 0; x <= width; x += 32) {
        std::uint32_t candidates = 0, edges = 0;
        const std::int64_t count = std::min<std::int64_t>(width - x, 32);
        for (std::int64_t i = x; i < x + count; i += V::lanes) {
            const V m = O::of(row + i);
            if (O::exceeding(m, V{}) == 0) {
                continue;
            }
            const V direction = O::directions(directions + i);
            const auto across = [&](std::int32_t code, V before, V behind) {
                return O::where(direction, code, max(before, behind));
            };
            const V straight = bitOr(across(0, O::of(row + i - 1), O::oneLess(O::of(row + i + 1))),
                                     across(secondBit, O::of(above + i), O::oneLess(O::of(below + i))));
            const V diagonal = bitOr(across(diagonalBit, O::of(above + i - 1), O::of(below + i + 1)),
                                     across(diagonalBit | secondBit, O::of(above + i + 1), O::of(below + i - 1)));
            const V bound = bitOr(straight, diagonal);
            candidates |= O::exceeding(m, bound) << (i - x);
            edges |= O::exceeding(m, max(bound, highest)) << (i - x);
        }
        const auto inside = static_cast<std::uint32_t>((std::uint64_t{1} << count) - 1);
        map.put(y, x / 32, candidates & inside, edges & inside);
    }
}

// -------------------------------------------------------------------------------------------------- the method

template <class Producer>
void detect(const Producer &producer, Plane<std::uint8_t> dst, RoiSize roi, float high, Scratch &scratch) {
    using Norm = typename Producer::Norm;
    using Magnitude = typename Norm::Magnitude;
    EdgeMap map(scratch, roi);
    const Rows<Magnitude> rows(scratch, roi.width);
    const Magnitude highest = Norm::high(high);
    for (std::int64_t y = 0; y <= roi.height; ++y) {
        if (y < roi.height) {
            producer.produce(y, roi.width, rows.magnitude(y), rows.direction(y));
        } else {
            rows.clear(y);
        }
        if (y > 0) {
            suppressRow(rows, y - 1, roi.width, highest, map);
            map.connect(y - 1);
        }
    }
    for (std::int64_t y = 0; y < roi.height; ++y) {
        map.writeEdges(y, dst.row(y));
    }
}

// --------------------------------------------------------------------------------------------- checks and sizes

constexpr bool goodThresholds(float low, float high) { return !(low < 0 || low > high); }

std::int64_t scratchBytes(RoiSize roi) {
    const std::int64_t width = roi.width, height = roi.height;
    const bool narrow = width < 65533 && height < 65533;
    return saturatedSum(saturatedProduct(narrow ? 5 : 9, width + 2, height + 2), 16 * width + 160);
}

std::int64_t borderScratchBytes(RoiSize roi, MaskCode mask) {
    const std::int64_t extra = mask == Mask3x3 ? 2 : 4;
    const std::int64_t width = roi.width + extra, height = roi.height + extra;
    return saturatedSum(saturatedProduct(width, 5 * height + 16), 64);
}

template <class Producer, class T>
StatusCode fromDerivatives(const T *dx, std::int32_t dxStep, const T *dy, std::int32_t dyStep, std::uint8_t *dst,
                           std::int32_t dstStep, RoiSize roi, float low, float high, std::uint8_t *buffer) {
    Checks checks;
    checks.pointers(dx, dy, dst, buffer).size(roi);
    checks.steps(rowBytes<T>(roi.width), dxStep, dyStep).steps(roi.width, dstStep);
    checks.multiples(sizeof(T), dxStep, dyStep).require(goodThresholds(low, high), StatusBadArgument);
    if (checks.failed()) {
        return checks.status();
    }
    Scratch scratch(buffer, scratchBytes(roi));
    const Producer producer{{dx, dxStep}, {dy, dyStep}, typename Producer::Norm(low)};
    detect(producer, {dst, dstStep}, roi, high, scratch);
    return StatusOk;
}

template <class Filter>
void fromPicture(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, RoiSize roi, const Border &border,
                 std::uint8_t borderValue, std::int32_t norm, Scratch &scratch, float low, float high) {
    constexpr int reach = Filter::taps / 2;
    using Source = BorderedRows<std::uint8_t, reach>;
    auto *constantRow = scratch.take<std::uint8_t>(Source::constantElements(roi.width), 1);
    const Source source(src, roi, border, borderValue, constantRow);
    const ColumnMargins<reach> margins(border, roi.width);
    if (norm == CannyNormL1) {
        const From8u<Filter, L1Words<0>> producer{source, margins, borderValue, L1Words<0>(low)};
        detect(producer, dst, roi, high, scratch);
    } else {
        using Norm = L2Float<!std::is_same_v<Filter, SobelGradient3>>;
        const From8u<Filter, Norm> producer{source, margins, borderValue, Norm(low)};
        detect(producer, dst, roi, high, scratch);
    }
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiCanny_16s8u_C1R(const int16_t *dx, int32_t dxStep, const int16_t *dy, int32_t dyStep, uint8_t *dst,
                               int32_t dstStep, RoiSize roi, float low, float high, uint8_t *buffer) {
    const auto run =
        low < 1 ? fromDerivatives<From16s<L1Float>, int16_t> : fromDerivatives<From16s<L1Words<1>>, int16_t>;
    return run(dx, dxStep, dy, dyStep, dst, dstStep, roi, low, high, buffer);
}

StatusCode rvxiCanny_32f8u_C1R(const float *dx, int32_t dxStep, const float *dy, int32_t dyStep, uint8_t *dst,
                               int32_t dstStep, RoiSize roi, float low, float high, uint8_t *buffer) {
    return fromDerivatives<From32f>(dx, dxStep, dy, dyStep, dst, dstStep, roi, low, high, buffer);
}

StatusCode rvxiCannyGetSize(RoiSize roi, int32_t *size) {
    const StatusCode status = Checks().pointers(size).size(roi).status();
    return status == StatusOk ? storeSize(scratchBytes(roi), size) : status;
}

StatusCode rvxiCannyBorder_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                                  int32_t filter, MaskCode mask, BorderKind border, uint8_t borderValue, int32_t norm,
                                  uint8_t *buffer, float low, float high) {
    const std::int32_t kind = border & 15;
    Checks checks;
    checks.require(mask == Mask3x3 || (mask == Mask5x5 && filter != CannyFilterScharr), StatusBadMaskSize);
    checks.pointers(src, dst, buffer).size(roi).steps(roi.width, srcStep, dstStep);
    checks.require(filter == CannyFilterSobel || filter == CannyFilterScharr, StatusBadArgument);
    checks.require(norm == CannyNormL1 || norm == CannyNormL2, StatusBadArgument);
    checks.require(goodThresholds(low, high), StatusBadArgument);
    checks.require(kind == BorderConstant || kind == BorderReplicate || kind == BorderInMemory, StatusBadBorder);
    if (checks.failed()) {
        return checks.status();
    }
    const auto run = filter == CannyFilterScharr ? fromPicture<ScharrGradient3>
                     : mask == Mask3x3           ? fromPicture<SobelGradient3>
                                                 : fromPicture<SobelGradient5>;
    Scratch scratch(buffer, borderScratchBytes(roi, mask));
    run({src, srcStep}, {dst, dstStep}, roi, Border(border), borderValue, norm, scratch, low, high);
    return StatusOk;
}

StatusCode rvxiCannyBorderGetSize(RoiSize roi, int32_t, MaskCode mask, PixelTypeCode, int32_t *size) {
    Checks checks;
    checks.pointers(size).size(roi).require(mask == Mask3x3 || mask == Mask5x5, StatusBadMaskSize);
    return checks.failed() ? checks.status() : storeSize(borderScratchBytes(roi, mask), size);
}
