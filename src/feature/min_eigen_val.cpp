// The smaller eigenvalue of the gradient covariance in a block around every pixel (Shi and Tomasi, Good Features to
// Track, CVPR 1994): derivatives, their products, the block's means, the eigenvalue.
//
// The four steps are one pass. The image is worked in strips of columns; row by row a strip's derivatives become three
// rows of products, these become sums over the block's columns, and as soon as the sums of the block's rows are there,
// means and eigenvalue follow in registers. Only the last few rows of a strip are kept, in the first-level cache: of
// the scratch buffer, which has room for whole planes, little is touched.
//
// Every number is rounded as if the steps were passes over whole planes: the means sum each row first, then the rows,
// and beside the image's edges the products are replicated, not the pixels. (The sign of Dx is free: Dx enters squared
// or in a mean that is squared.)
#include "filter/gradient_rows.h"
#include "frame/api.h"
#include "kernel/checks.h"
#include "kernel/plane.h"
#include "kernel/scratch.h"

#include <algorithm>
#include <initializer_list>

namespace rvxcv {
namespace {

// ------------------------------------------------------------------------------------------------- derivatives

struct Sobel3 {
    static constexpr int reach = 1;
    using Integers = SobelGradient3;
    static constexpr const auto &smooth = kerSobel_3_32f;
    static constexpr const auto &derive = kerDx_3_32f;
};
struct Sobel5 {
    static constexpr int reach = 2;
    using Integers = SobelGradient5;
    static constexpr const auto &smooth = kerSobel_5_32f;
    static constexpr const auto &derive = kerDxMirrored_5_32f;
};
struct Scharr3 {
    static constexpr int reach = 1;
    using Integers = ScharrGradient3;
    static constexpr const auto &smooth = kerScharr_3_32f;
    static constexpr const auto &derive = kerDx_3_32f;
};

// Dx * Dx, Dy * Dy and Dx * Dy of a row.
constexpr int planes = 3;
struct ProductRows {
    float *plane[planes];

    RVX_INLINE void set(std::ptrdiff_t x, F32x8 dx, F32x8 dy) const {
        store(plane[0] + x, mul(dx, dx));
        store(plane[1] + x, mul(dy, dy));
        store(plane[2] + x, mul(dx, dy));
    }
};

// The columns of the image whose products a strip needs, and the source rows there. Columns beside the strip that the
// image has are read, those that it does not have are replicated.
template <class T, int reach> struct StripSource {
    Plane<const T> image;
    std::int64_t first, count, height;
    ColumnMargins<reach> margins;

    StripSource(Plane<const T> source, RoiSize roi, std::int64_t firstColumn, std::int64_t lastColumn)
        : image(source), first(firstColumn), count(lastColumn - firstColumn), height(roi.height),
          margins(Border(BorderReplicate | (firstColumn > 0 ? BorderInMemoryLeft : 0) |
                         (lastColumn < roi.width ? BorderInMemoryRight : 0)),
                  count) {}

    const T *row(std::int64_t y) const { return image.row(std::clamp<std::int64_t>(y, 0, height - 1)) + first; }
};

template <class T, class Derivative> class StripProducts;

// 8u: exact in 16 bits.
template <class Derivative> class StripProducts<std::uint8_t, Derivative> {
public:
    using Source = StripSource<std::uint8_t, Derivative::reach>;

    StripProducts(const Source &source, Scratch &) : source_(source) {}

    // Rows in ascending order. Whole vectors are stored.
    void computeRow(std::int64_t y, const ProductRows &products) {
        constexpr int reach = Derivative::reach;
        const std::uint8_t *rows[2 * reach + 1];
        for (int i = 0; i <= 2 * reach; ++i) {
            rows[i] = source_.row(y + i - reach);
        }
        filterRow<typename Derivative::Integers>(rows, source_.margins, std::uint8_t{0}, Multiply{products});
    }

private:
    struct Multiply {
        static constexpr Tail tail = Tail::partial;
        static constexpr bool rereads = false;
        ProductRows products;

        template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span, GradientPair gradient) const {
            products.set(x, toF32(widenLow(gradient.dx)), toF32(widenLow(gradient.dy)));
            products.set(x + 8, toF32(widenHigh(gradient.dx)), toF32(widenHigh(gradient.dy)));
        }
    };

    Source source_;
};

// 32f: the row stages of the last rows roll in the scratch buffer.
template <class Derivative> class StripProducts<float, Derivative> {
public:
    static constexpr int reach = Derivative::reach, taps = 2 * reach + 1;
    using Source = StripSource<float, reach>;

    StripProducts(const Source &source, Scratch &scratch) : source_(source) {
        const std::int64_t pitch = roundUp(source.count, 8) + 8;
        for (int i = 0; i < taps; ++i) {
            derived_[i] = scratch.take<float>(pitch, 32);
            smoothed_[i] = scratch.take<float>(pitch, 32);
        }
        for (std::int64_t y = -reach; y < reach; ++y) {
            appendRow(y);
        }
    }

    void computeRow(std::int64_t y, const ProductRows &products) {
        appendRow(y + reach);
        Multiply multiply{{}, {}, products};
        std::copy(derived_, derived_ + taps, multiply.derived);
        std::copy(smoothed_, smoothed_ + taps, multiply.smoothed);
        walkRow<8>(source_.count, multiply);
    }

private:
    struct Multiply {
        const float *derived[taps], *smoothed[taps];
        ProductRows products;

        template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span) const {
            products.set(x, columnSum<Derivative::smooth>(derived, x, Full{}),
                         columnSum<Derivative::derive>(smoothed, x, Full{}));
        }
    };

    void appendRow(std::int64_t y) {
        std::rotate(derived_, derived_ + 1, derived_ + taps);
        std::rotate(smoothed_, smoothed_ + 1, smoothed_ + taps);
        rowStage<Derivative::derive, Derivative::smooth>(source_.row(y), source_.margins, 0.0f, 0, source_.count,
                                                         {derived_[taps - 1], smoothed_[taps - 1]});
    }

    Source source_;
    float *derived_[taps], *smoothed_[taps];
};

// ------------------------------------------------------------------------------------------ means and eigenvalue

template <int block> constexpr const auto &boxKernel = kerAvr_3_32f;
template <> constexpr const auto &boxKernel<5> = kerAvr_5_32f;

// The sum over a block's columns around each pixel of a row of products.
template <int block> RVX_INLINE F32x8 rowSum(const float *products, std::ptrdiff_t x) {
    return chainedSum<boxKernel<block>>([&](int i) { return load<F32x8>(products + x + i - block / 2); });
}

// Wide enough to keep the rows' overhead small, narrow enough for the first-level cache.
template <int block> constexpr std::int64_t stripColumns = block == 3 ? 512 : 256;
// No strip ends closer to the image's end than this, so that what is read beside a strip is in the image.
constexpr std::int64_t leastStrip = 16;

// A strip's products and sums are at constant distances, so that few registers address all of them; on the stack,
// because the scratch buffer of a narrow image has no room for a whole strip.
template <int block> struct StripRows {
    static constexpr std::int64_t lead = 8; // room for the block's reach; column 0 is aligned
    // The widest strip, and the products beside it, in blocks of 16; an odd number of vectors, so that rows do not
    // share cache sets.
    static constexpr std::int64_t pitch = lead + roundUp(stripColumns<block> + leastStrip + block / 2, 16);

    alignas(32) float products[planes][pitch];
    alignas(32) float sums[block][planes][pitch]; // row y in slot y modulo block
};

template <int block> struct SumRow {
    const float (*products)[StripRows<block>::pitch];
    float (*newest)[StripRows<block>::pitch];

    RVX_INLINE F32x8 sum(int p, std::ptrdiff_t x) const {
        const F32x8 result = rowSum<block>(products[p] + StripRows<block>::lead, x);
        store(newest[p] + x, result);
        return result;
    }
    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span) const { sum(0, x), sum(1, x), sum(2, x); }
};

// The newest row's sums, and with those of the rows before it the result.
template <int block> struct EigenvalueRow {
    SumRow<block> sums;
    const float (*earlier[block - 1])[StripRows<block>::pitch];
    float *dst;
    F32x8 halfScale;

    RVX_INLINE F32x8 mean(int p, std::ptrdiff_t x) const {
        const F32x8 newest = sums.sum(p, x);
        const auto row = [&](int i) { return i == block - 1 ? newest : load<F32x8>(earlier[i][p] + x); };
        return Mean<block * block>{}(chainedSum<boxKernel<block>>(row));
    }
    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        const F32x8 a = mean(0, x), b = mean(1, x), c = mean(2, x);
        const F32x8 difference = sub(a, b);
        const F32x8 discriminant = fma(difference, difference, mul(splat(4.0f), mul(c, c)));
        store(dst + x, mul(halfScale, sub(add(a, b), sqrt(discriminant))), span);
    }
};

struct Strip {
    std::int64_t first, last;
};

template <class T, class Derivative, int block>
void measureStrip(Plane<const T> src, Plane<float> dst, RoiSize roi, Strip strip, float halfScale, Scratch scratch) {
    constexpr int reach = block / 2;
    const std::int64_t columns = strip.last - strip.first;
    const StripSource<T, Derivative::reach> source(src, roi, std::max<std::int64_t>(strip.first - reach, 0),
                                                   std::min<std::int64_t>(strip.last + reach, roi.width));
    StripProducts<T, Derivative> derivatives(source, scratch);

    StripRows<block> rows;
    const std::int64_t before = strip.first - source.first, end = source.first + source.count - strip.first;
    const auto computeProducts = [&](std::int64_t y) {
        ProductRows stored;
        for (int p = 0; p < planes; ++p) {
            stored.plane[p] = rows.products[p] + rows.lead - before;
        }
        derivatives.computeRow(y, stored);
        for (auto &products : rows.products) {
            float *const plane = products + rows.lead;
            std::fill(plane - reach, plane - before, plane[-before]);
            std::fill(plane + end, plane + columns + reach, plane[end - 1]);
        }
    };

    for (std::int64_t y = 0; y < roi.height + reach; ++y) {
        if (y < roi.height) {
            computeProducts(y);
        } // else the last row of products stands for the rows below
        const SumRow<block> sums{rows.products, rows.sums[y % block]};
        if (y < reach) {
            walkRow<8>(columns, sums);
            continue;
        }
        EigenvalueRow<block> row{sums, {}, dst.row(y - reach) + strip.first, splat(halfScale)};
        for (int i = 0; i < block - 1; ++i) {
            // The first row's sums stand for those of the rows above.
            row.earlier[i] = rows.sums[std::max<std::int64_t>(y - (block - 1) + i, 0) % block];
        }
        walkRow<8>(columns, row);
    }
}

// ------------------------------------------------------------------------------------------------------- calls

template <class T> struct Call {
    const T *src;
    std::int32_t srcStep;
    float *dst;
    std::int32_t dstStep;
    RoiSize roi;
    std::int32_t kernel, aperture, block;
    std::uint8_t *buffer;
};

constexpr bool isBlock(std::int32_t size) { return size == 3 || size == 5; }
constexpr MaskCode maskOf(std::int32_t size) { return size * 11; }

// The scratch size is a contract: planes for all steps, and the largest scratch of the filters that form them.
template <class T>
StatusCode scratchBytes(RoiSize roi, std::int32_t aperture, std::int32_t block, std::int64_t *bytes) {
    constexpr bool floats = std::is_same_v<T, float>;
    std::int32_t largest = 0;
    StatusCode status = StatusOk;
    const auto include = [&](auto query, auto... arguments) {
        std::int32_t size = 0;
        if (status == StatusOk) {
            status = query(roi, arguments..., &size);
        }
        largest = std::max(largest, size);
    };
    if constexpr (floats) {
        include(rvxiFilterSobelVertGetBufferSize_32f_C1R, maskOf(aperture));
        include(rvxiFilterSobelHorizGetBufferSize_32f_C1R, maskOf(aperture));
        include(rvxiFilterScharrVertGetBufferSize_32f_C1R);
        include(rvxiFilterScharrHorizGetBufferSize_32f_C1R);
    } else {
        include(rvxiFilterSobelVertGetBufferSize_8u16s_C1R, maskOf(aperture));
        include(rvxiFilterSobelHorizGetBufferSize_8u16s_C1R, maskOf(aperture));
        include(rvxiFilterScharrVertGetBufferSize_8u16s_C1R);
        include(rvxiFilterScharrHorizGetBufferSize_8u16s_C1R);
    }
    include(rvxiFilterLowpassGetBufferSize_32f_C1R, maskOf(block));
    if (status == StatusOk) { // a width whose filters' sizes fit leaves this product far below 2^63
        *bytes = largest + (floats ? 20 : 16) * roundUp(roi.width, 16) * roi.height + 224;
    }
    return status;
}

template <class T> StatusCode queryScratch(RoiSize roi, std::int32_t aperture, std::int32_t block, std::int32_t *size) {
    Checks checks;
    checks.pointers(size).size(roi).require(isBlock(aperture) && isBlock(block), StatusBadSize);
    if (checks.failed()) {
        return checks.status();
    }
    std::int64_t bytes;
    const StatusCode status = scratchBytes<T>(roi, aperture, block, &bytes);
    return status != StatusOk ? status : storeSize(bytes, size);
}

template <class T, class Derivative, int block> void measureImage(const Call<T> &call, float halfScale) {
    std::int64_t bytes;
    if (scratchBytes<T>(call.roi, call.aperture, block, &bytes) != StatusOk) {
        bytes = INT32_MAX; // the size of an image this wide cannot be asked for
    }
    const std::int64_t width = call.roi.width;
    for (Strip strip{0, 0}; strip.first < width; strip.first = strip.last) {
        strip.last = strip.first + stripColumns<block>;
        if (width - strip.last < leastStrip) {
            strip.last = width;
        }
        measureStrip<T, Derivative, block>({call.src, call.srcStep}, {call.dst, call.dstStep}, call.roi, strip,
                                           halfScale, Scratch(call.buffer, bytes));
    }
}

template <class T, class Derivative> void measureByBlock(const Call<T> &call, float scale) {
    call.block == 3 ? measureImage<T, Derivative, 3>(call, scale * 0.5f)
                    : measureImage<T, Derivative, 5>(call, scale * 0.5f);
}

template <class T> StatusCode minEigenVal(const Call<T> &call) {
    const bool scharr = call.kernel == MinEigenValScharr;
    Checks checks;
    checks.pointers(call.src, call.dst, call.buffer).size(call.roi);
    checks.steps(rowBytes<T>(call.roi.width), call.srcStep).steps(rowBytes<float>(call.roi.width), call.dstStep);
    checks.multiples(sizeof(T), call.srcStep).multiples(sizeof(float), call.dstStep);
    checks.require(scharr || call.kernel == MinEigenValSobel, StatusBadArgument);
    checks.require(call.aperture == 3 || (call.aperture == 5 && !scharr), StatusBadSize);
    checks.require(isBlock(call.block), StatusBadSize);
    if (checks.failed()) {
        return checks.status();
    }
    if (scharr) {
        measureByBlock<T, Scharr3>(call, 1.0f / 4080.0f * 0.6125f);
    } else if (call.aperture == 3) {
        measureByBlock<T, Sobel3>(call, 1.0f / 4080.0f);
    } else {
        measureByBlock<T, Sobel5>(call, 1.0f / 65280.0f);
    }
    return StatusOk;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiMinEigenVal_8u32f_C1R(const uint8_t *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                     int32_t kernel, int32_t aperture, int32_t block, uint8_t *buffer) {
    return minEigenVal<std::uint8_t>({src, srcStep, dst, dstStep, roi, kernel, aperture, block, buffer});
}
StatusCode rvxiMinEigenVal_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                   int32_t kernel, int32_t aperture, int32_t block, uint8_t *buffer) {
    return minEigenVal<float>({src, srcStep, dst, dstStep, roi, kernel, aperture, block, buffer});
}
StatusCode rvxiMinEigenValGetBufferSize_8u32f_C1R(RoiSize roi, int32_t aperture, int32_t block, int32_t *size) {
    return queryScratch<std::uint8_t>(roi, aperture, block, size);
}
StatusCode rvxiMinEigenValGetBufferSize_32f_C1R(RoiSize roi, int32_t aperture, int32_t block, int32_t *size) {
    return queryScratch<float>(roi, aperture, block, size);
}
