// Canny edges: magnitude, suppression of all but local maxima, hysteresis (J. Canny, PAMI 8(6), 1986).
//
// Rows stream through: a producer computes one row of magnitudes and quantised directions (from derivative images, or
// from an 8u picture whose derivatives never leave the registers), and the row before it is suppressed. Of the whole
// image only the byte map of candidates and the stack of edge pixels are kept. Magnitudes are floats for all members:
// L1 magnitudes of 16-bit derivatives are at most 65536, so exact.
#include "frame/api.h"

#include "filter/gradient_rows.h"
#include "kernel/checks.h"
#include "kernel/scratch.h"

#include <bit>
#include <cmath>

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

struct IntegerRule {
    static RVX_INLINE I32x8 direction(F32x8 dx, F32x8 dy) {
        constexpr SplitConstant tan67(2.414213562373095), tan22(0.41421356237309503);
        const F32x8 ax = abs(dx), ay = abs(dy);
        return quantise(greater(ax, tan67.times(ay)), greater(tan22.times(ay), ax), signs(bitXor(dx, dy)));
    }
};

struct FloatRule {
    static RVX_INLINE I32x8 direction(F32x8 dx, F32x8 dy) {
        const F32x8 ax = abs(dx), ay = abs(dy);
        return quantise(greater(ax, mul(splat(2.4142137f), ay)), greater(mul(splat(0.41421357f), ay), ax),
                        signs(bitXor(dx, dy)));
    }
};

// -------------------------------------------------------------------------------------------------- magnitudes

struct L1 {
    static RVX_INLINE F32x8 magnitude(I32x8 dx, I32x8 dy) { return toF32(add(abs(dx), abs(dy))); }
    static RVX_INLINE F32x8 magnitude(F32x8 dx, F32x8 dy) { return add(abs(dx), abs(dy)); }
};

// The sum of squares is exact and rounded to float once.
struct L2 {
    static RVX_INLINE F32x8 magnitude(I32x8 dx, I32x8 dy) { return sqrt(toF32(add(mulLow(dx, dx), mulLow(dy, dy)))); }
};

// Magnitudes that do not pass the low threshold become 0. The 16-bit rule compares with the threshold truncated to an
// integer, as a number, so that no value overflows, and drops equality; the float rule keeps it.
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

// ---------------------------------------------------------------------------------------------- rows in scratch

// Three magnitude rows with a zero on both sides, two rows of directions. Blocks of the suppression read up to seven
// elements behind a row: those of the next row, or the spare ones.
class Rows {
public:
    Rows(Scratch &scratch, std::int64_t width) : width_(width) {
        constexpr int spare = 8;
        const std::int64_t magnitudes = 3 * (width + 2) + spare, directions = 2 * width + spare;
        magnitudes_ = scratch.take<float>(magnitudes, 1);
        directions_ = scratch.take<std::uint8_t>(directions, 1);
        std::memset(static_cast<void *>(magnitudes_), 0, static_cast<std::size_t>(magnitudes) * sizeof(float));
        std::memset(directions_, 0, static_cast<std::size_t>(directions));
    }

    // Rows -1 .. height, at the first pixel.
    RVX_INLINE float *magnitude(std::int64_t y) const { return magnitudes_ + (y + 3) % 3 * (width_ + 2) + 1; }
    RVX_INLINE std::uint8_t *direction(std::int64_t y) const { return directions_ + y % 2 * width_; }
    void clear(std::int64_t y) const {
        std::memset(static_cast<void *>(magnitude(y)), 0, static_cast<std::size_t>(width_) * sizeof(float));
    }

private:
    std::int64_t width_;
    float *magnitudes_;
    std::uint8_t *directions_;
};

// Takes sixteen integer derivatives at a time and stores their magnitudes and directions.
template <class Norm, class Threshold> struct EmitIntegers {
    static constexpr Tail tail = Tail::partial;
    static constexpr bool rereads = false;

    float *magnitudes;
    std::uint8_t *directions;
    Threshold threshold;

    RVX_INLINE void operator()(std::ptrdiff_t x, Full span, const GradientPair &gradient) const {
        const I32x8 first = eight(x, span, widenLow(gradient.dx), widenLow(gradient.dy));
        const I32x8 second = eight(x + 8, span, widenHigh(gradient.dx), widenHigh(gradient.dy));
        storeSaturated(directions + x, narrowSaturated(first, second), span);
    }
    RVX_INLINE void operator()(std::ptrdiff_t x, Part span, const GradientPair &gradient) const {
        const I32x8 first = eight(x, Part{span.n < 8 ? span.n : 8}, widenLow(gradient.dx), widenLow(gradient.dy));
        I32x8 second = first;
        if (span.n > 8) {
            second = eight(x + 8, Part{span.n - 8}, widenHigh(gradient.dx), widenHigh(gradient.dy));
        }
        storeSaturated(directions + x, narrowSaturated(first, second), span);
    }

private:
    template <class Span> RVX_INLINE I32x8 eight(std::ptrdiff_t x, Span span, I32x8 dx, I32x8 dy) const {
        store(magnitudes + x, threshold.apply(Norm::magnitude(dx, dy)), span);
        return IntegerRule::direction(toF32(dx), toF32(dy));
    }
};

using EmitL1 = EmitIntegers<L1, AboveTruncated>;
using EmitL2 = EmitIntegers<L2, AtLeast>;

// --------------------------------------------------------------------------------------------------- producers

// A producer computes a row's magnitudes and directions.

struct From16s {
    Plane<const std::int16_t> dx, dy;
    AboveTruncated threshold;

    struct Kernel {
        const std::int16_t *dx, *dy;
        EmitL1 emit;
        template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
            emit(x, span, {load<I16x16>(dx + x, span), load<I16x16>(dy + x, span)});
        }
    };

    void produce(std::int64_t y, std::int64_t width, float *magnitudes, std::uint8_t *directions) const {
        walkRow<16>(width, Kernel{dx.row(y), dy.row(y), {magnitudes, directions, threshold}});
    }
};

struct From32f {
    Plane<const float> dx, dy;
    AtLeast threshold;

    struct Kernel {
        const float *dx, *dy;
        float *magnitudes;
        std::uint8_t *directions;
        AtLeast threshold;

        template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
            const F32x8 gx = load<F32x8>(dx + x, span), gy = load<F32x8>(dy + x, span);
            store(magnitudes + x, threshold.apply(L1::magnitude(gx, gy)), span);
            const I32x8 direction = FloatRule::direction(gx, gy);
            storeSaturated(directions + x, narrowSaturated(direction, direction), bytes(span));
        }
        static RVX_INLINE Part bytes(Full) { return {8}; }
        static RVX_INLINE Part bytes(Part part) { return part; }
    };

    void produce(std::int64_t y, std::int64_t width, float *magnitudes, std::uint8_t *directions) const {
        walkRow<8>(width, Kernel{dx.row(y), dy.row(y), magnitudes, directions, threshold});
    }
};

template <class Filter, class Emit> struct From8u {
    static constexpr int reach = Filter::taps / 2;
    const BorderedRows<std::uint8_t, reach> &source;
    const ColumnMargins<reach> &margins;
    std::uint8_t borderValue;
    decltype(Emit::threshold) threshold;

    void produce(std::int64_t y, std::int64_t, float *magnitudes, std::uint8_t *directions) const {
        const std::uint8_t *rows[Filter::taps];
        source.around(y, rows);
        filterRow<Filter, reach>(rows, margins, borderValue, Emit{magnitudes, directions, threshold});
    }
};

// ------------------------------------------------------------------------------------- suppression, hysteresis

// The state of every pixel, one byte, in a ring of nothing; and the stack of edge pixels whose neighbours are still to
// be looked at. Strong pixels are edges from the beginning. After every row the few weak candidates that touch an edge
// are found by comparing whole rows, and edges grow from those, while the rows around are in the cache.
class EdgeMap {
public:
    static constexpr std::uint8_t weak = 0x80, edge = 0x40;

    EdgeMap(Scratch &scratch, RoiSize roi) : width_(roi.width), stride_(std::int64_t{roi.width} + 2) {
        constexpr int spare = 8; // blocks of eight are stored whole
        map_ = scratch.take<std::uint8_t>(stride_ * (std::int64_t{roi.height} + 2) + spare, 1);
        clear(-1);
        clear(0);
        stack_ = scratch.take<std::uint32_t>(std::int64_t{roi.width} * roi.height, 1);
    }

    // Rows -1 .. height, at the first pixel.
    std::uint8_t *row(std::int64_t y) const { return map_ + (y + 1) * stride_ + 1; }
    void clear(std::int64_t y) const { std::memset(row(y) - 1, 0, static_cast<std::size_t>(stride_)); }

    // Row y has been made: whatever is connected with an edge in the rows up to y becomes an edge.
    void connect(std::int64_t y) {
        clear(y + 1); // growth looks at it
        walkRow<32>(width_, Touching{*this, row(y)});
        grow();
    }

    void writeEdges(std::int64_t y, std::uint8_t *dst) const { walkRow<32>(width_, Write{row(y), dst}); }

private:
    struct Touching {
        EdgeMap &map;
        std::uint8_t *states;

        template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
            std::uint8_t *const here = states + x, *const above = here - map.stride_;
            const auto at = [&](const std::uint8_t *p) { return load<U8x32>(p, span); };
            const U8x32 row = at(here), rowAbove = at(above);
            const U8x32 beside = bitOr(at(here - 1), at(here + 1));
            const U8x32 besideAbove = bitOr(at(above - 1), at(above + 1));
            pushAll(here, weakBeside(row, bitOr(beside, bitOr(rowAbove, besideAbove))));
            pushAll(above, weakBeside(rowAbove, bitOr(row, beside)));
        }

    private:
        // Twice an edge is the bit of a weak candidate.
        static RVX_INLINE std::uint32_t weakBeside(U8x32 states, U8x32 neighbours) {
            return laneBits(bitAnd(states, add(neighbours, neighbours)));
        }
        RVX_INLINE void pushAll(std::uint8_t *first, std::uint32_t bits) const {
            for (; bits != 0; bits &= bits - 1) {
                map.push(first + std::countr_zero(bits));
            }
        }
    };

    struct Write {
        const std::uint8_t *states;
        std::uint8_t *dst;
        template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
            store(dst + x, equal(load<U8x32>(states + x, span), splat(edge)), span);
        }
    };

    // Every pixel is pushed at most once.
    RVX_INLINE void push(std::uint8_t *at) {
        *at = edge;
        storeScalar(stack_ + depth_++, static_cast<std::uint32_t>(at - map_));
    }

    void grow() {
        while (depth_ > 0) {
            std::uint8_t *const at = map_ + loadScalar(stack_ + --depth_);
            for (std::uint8_t *three : {at - stride_ - 1, at - 1, at + stride_ - 1}) {
                if (((three[0] | three[1] | three[2]) & weak) != 0) {
                    for (int i = 0; i < 3; ++i) {
                        if (three[i] == weak) {
                            push(three + i);
                        }
                    }
                }
            }
        }
    }

    std::uint8_t *map_;
    std::int64_t width_, stride_;
    std::uint32_t *stack_;
    std::int64_t depth_ = 0;
};

// Row y: writes the states of its pixels to the map.
void suppress(const Rows &rows, std::int64_t y, std::int64_t width, float high, const EdgeMap &map) {
    const float *above = rows.magnitude(y - 1), *row = rows.magnitude(y), *below = rows.magnitude(y + 1);
    const std::uint8_t *directions = rows.direction(y);
    std::uint8_t *states = map.row(y);
    const auto block = [](const float *p) { return load<F32x8>(p); };
    for (std::int64_t x = 0; x < width; x += 8) {
        const F32x8 m = block(row + x);
        const int n = width - x < 8 ? static_cast<int>(width - x) : 8;
        const Mask32x8 candidates = greater(m, splat(0.0f));
        std::uint64_t bytes = 0;
        if (laneBits(candidates) != 0) {
            const I32x8 direction = loadI32(directions + x, Full{});
            const Mask32x8 diagonal = hasBit(direction, diagonalBit), second = hasBit(direction, secondBit);
            const F32x8 before = select(diagonal, select(second, block(above + x + 1), block(above + x - 1)),
                                        select(second, block(above + x), block(row + x - 1)));
            const F32x8 behind = select(diagonal, select(second, block(below + x - 1), block(below + x + 1)),
                                        select(second, block(below + x), block(row + x + 1)));
            // Equality with the second neighbour kills on a diagonal only.
            const Mask32x8 beatsBehind = without(greaterEqual(m, behind), both(diagonal, lessEqual(m, behind)));
            const Mask32x8 kept = both(candidates, both(greater(m, before), beatsBehind));
            const I32x8 state =
                select(greater(m, splat(high)), splat(std::int32_t{EdgeMap::edge}), splat(std::int32_t{EdgeMap::weak}));
            bytes = packedBytes(keep(kept, state)) & ~std::uint64_t{0} >> (8 * (8 - n));
        }
        std::memcpy(states + x, &bytes, 8);
    }
}

// -------------------------------------------------------------------------------------------------- the method

template <class Producer>
void detect(const Producer &producer, Plane<std::uint8_t> dst, RoiSize roi, float high, Scratch &scratch) {
    EdgeMap map(scratch, roi);
    const Rows rows(scratch, roi.width);
    for (std::int64_t y = 0; y <= roi.height; ++y) {
        if (y < roi.height) {
            producer.produce(y, roi.width, rows.magnitude(y), rows.direction(y));
        } else {
            rows.clear(y);
        }
        if (y > 0) {
            suppress(rows, y - 1, roi.width, high, map);
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
    const Producer producer{{dx, dxStep}, {dy, dyStep}, decltype(Producer::threshold)(low)};
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
        const From8u<Filter, EmitL1> producer{source, margins, borderValue, AboveTruncated(low)};
        detect(producer, dst, roi, high, scratch);
    } else {
        const From8u<Filter, EmitL2> producer{source, margins, borderValue, AtLeast(low)};
        detect(producer, dst, roi, high, scratch);
    }
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiCanny_16s8u_C1R(const int16_t *dx, int32_t dxStep, const int16_t *dy, int32_t dyStep, uint8_t *dst,
                               int32_t dstStep, RoiSize roi, float low, float high, uint8_t *buffer) {
    return fromDerivatives<From16s>(dx, dxStep, dy, dyStep, dst, dstStep, roi, low, high, buffer);
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
