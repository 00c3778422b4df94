// The gradient covariance in a block around every pixel, and whatever is read from it: derivatives, their products, the
// block's means, the result.
//
// The four steps are one pass. The image is worked in strips of columns; row by row a strip's derivatives become three
// rows of products, these become sums over the block's columns, and as soon as the sums of the block's rows are there,
// means and result follow in registers. Only the last few rows of a strip are kept, in the first-level cache: of
// the scratch buffer, which has room for whole planes, little is touched.
//
// Every number is rounded as if the steps were passes over whole planes: the means sum each row first, then the rows,
// and beside the image's edges the products are replicated, not the pixels.
//
// A family says what a result is: `result.row(y, x)` returns what takes the means of the row y from column x on,
//
//     template <class Span> void operator()(std::ptrdiff_t i, Span, F32x8 a, F32x8 b, F32x8 c) const;   columns x + i..
//
// where a, b and c are the means of Dx * Dx, Dy * Dy and Dx * Dy.
#pragma once

#include "filter/gradient_rows.h"
#include "frame/api.h"
#include "kernel/checks.h"
#include "kernel/plane.h"
#include "kernel/scratch.h"

#include <algorithm>

namespace rvxcv {

// ------------------------------------------------------------------------------------------------- derivatives

// Right minus left and below minus above, each smoothed across; the scale takes pixels of 0..255 to 0..1.
struct Sobel3 {
    static constexpr int reach = 1;
    static constexpr float scale = 1.0f / 4080.0f;
    using Integers = SobelGradient3;
    static constexpr const auto &smooth = kerSobel_3_32f;
    static constexpr const auto &derive = kerDx_3_32f;
};
struct Sobel5 {
    static constexpr int reach = 2;
    static constexpr float scale = 1.0f / 65280.0f;
    using Integers = SobelGradient5;
    static constexpr const auto &smooth = kerSobel_5_32f;
    static constexpr const auto &derive = kerDxMirrored_5_32f;
};
struct Scharr3 {
    static constexpr int reach = 1;
    static constexpr float scale = 1.0f / 4080.0f * 0.6125f;
    using Integers = ScharrGradient3;
    static constexpr const auto &smooth = kerScharr_3_32f;
    static constexpr const auto &derive = kerDx_3_32f;
};
struct Central3 {
    static constexpr int reach = 1;
    static constexpr float scale = 1.0f / 255.0f;
    using Integers = CentralGradient;
    static constexpr const auto &smooth = kerMiddle_3_32f;
    static constexpr const auto &derive = kerCentral_3_32f;
};

// Dx * Dx, Dy * Dy and Dx * Dy of a row.
inline constexpr int planes = 3;
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

// ------------------------------------------------------------------------------------------ means and result

template <int block> inline constexpr const auto &boxKernel = kerAvr_3_32f;
template <> inline constexpr const auto &boxKernel<5> = kerAvr_5_32f;

// The sum over a block's columns around each pixel of a row of products.
template <int block> RVX_INLINE F32x8 rowSum(const float *products, std::ptrdiff_t x) {
    return chainedSum<boxKernel<block>>([&](int i) { return load<F32x8>(products + x + i - block / 2); });
}

// Wide enough to keep the rows' overhead small, narrow enough for the first-level cache.
template <int block> inline constexpr std::int64_t stripColumns = block == 3 ? 512 : 256;
// No strip ends closer to the image's end than this, so that what is read beside a strip is in the image.
inline constexpr std::int64_t leastStrip = 16;

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

// The newest row's sums, and with those of the rows before it the means.
template <int block, class ResultRow> struct CovarianceRow {
    SumRow<block> sums;
    const float (*earlier[block - 1])[StripRows<block>::pitch];
    ResultRow result;

    RVX_INLINE F32x8 mean(int p, std::ptrdiff_t x) const {
        const F32x8 newest = sums.sum(p, x);
        const auto row = [&](int i) { return i == block - 1 ? newest : load<F32x8>(earlier[i][p] + x); };
        return Mean<block * block>{}(chainedSum<boxKernel<block>>(row));
    }
    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        const F32x8 a = mean(0, x), b = mean(1, x), c = mean(2, x);
        result(x, span, a, b, c);
    }
};

// The eigenvalues of the matrix a c, c b are half of trace plus and minus root.
struct TraceAndRoot {
    F32x8 difference, trace, root;

    RVX_INLINE TraceAndRoot(F32x8 a, F32x8 b, F32x8 c) : difference(sub(a, b)), trace(add(a, b)) {
        root = sqrt(fma(difference, difference, mul(splat(4.0f), mul(c, c))));
    }
};

struct Strip {
    std::int64_t first, last;
};

template <class T, class Derivative, int block, class Result>
void readStrip(Plane<const T> src, RoiSize roi, Strip strip, const Result &result, Scratch scratch) {
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
        CovarianceRow<block, decltype(result.row(0, 0))> row{sums, {}, result.row(y - reach, strip.first)};
        for (int i = 0; i < block - 1; ++i) {
            // The first row's sums stand for those of the rows above.
            row.earlier[i] = rows.sums[std::max<std::int64_t>(y - (block - 1) + i, 0) % block];
        }
        walkRow<8>(columns, row);
    }
}

// ------------------------------------------------------------------------------------------------------- calls

constexpr bool isBlock(std::int32_t size) { return size == 3 || size == 5; }
constexpr MaskCode maskOf(std::int32_t size) { return size * 11; }

// The scratch size is a contract: planes for all steps, and the largest scratch of the filters that form them.
template <class T>
StatusCode covarianceBytes(RoiSize roi, std::int32_t aperture, std::int32_t block, std::int64_t *bytes) {
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

template <class T>
StatusCode queryCovariance(RoiSize roi, std::int32_t aperture, std::int32_t block, std::int32_t *size) {
    Checks checks;
    checks.pointers(size).size(roi).require(isBlock(aperture) && isBlock(block), StatusBadSize);
    if (checks.failed()) {
        return checks.status();
    }
    std::int64_t bytes;
    const StatusCode status = covarianceBytes<T>(roi, aperture, block, &bytes);
    return status != StatusOk ? status : storeSize(bytes, size);
}

// Checks that end every list: how derivatives and means are formed.
inline Checks &checkWindows(Checks &checks, bool sobel, std::int32_t aperture, std::int32_t block) {
    return checks.require(aperture == 3 || (aperture == 5 && sobel), StatusBadSize)
        .require(isBlock(block), StatusBadSize);
}
inline Checks &checkKernel(Checks &checks, std::int32_t kernel, std::int32_t aperture, std::int32_t block) {
    checks.require(kernel == MinEigenValSobel || kernel == MinEigenValScharr, StatusBadArgument);
    return checkWindows(checks, kernel == MinEigenValSobel, aperture, block);
}
inline Checks &checkFilter(Checks &checks, std::int32_t filter, std::int32_t aperture, std::int32_t block) {
    checks.require(filter == DerivativeSobel || filter == DerivativeScharr || filter == DerivativeCentral,
                   StatusBadFilterKind);
    return checkWindows(checks, filter == DerivativeSobel, aperture, block);
}

// run(Derivative{}) for the derivatives that a kernel or a filter, both valid, stands for.
template <class Run> void withKernel(std::int32_t kernel, std::int32_t aperture, const Run &run) {
    kernel == MinEigenValScharr ? run(Scharr3{}) : aperture == 3 ? run(Sobel3{}) : run(Sobel5{});
}
template <class Run> void withFilter(std::int32_t filter, std::int32_t aperture, const Run &run) {
    filter == DerivativeCentral
        ? run(Central3{})
        : withKernel(filter == DerivativeScharr ? MinEigenValScharr : MinEigenValSobel, aperture, run);
}

template <class T> struct CovarianceSource {
    Plane<const T> image;
    RoiSize roi;
    std::uint8_t *buffer;
};

// handle(strip, scratch) for the strips of an image, from left to right.
template <class T, class Derivative, int block, class Handle>
void forEachStrip(const CovarianceSource<T> &source, const Handle &handle) {
    std::int64_t bytes;
    if (covarianceBytes<T>(source.roi, 2 * Derivative::reach + 1, block, &bytes) != StatusOk) {
        bytes = INT32_MAX; // the size of an image this wide cannot be asked for
    }
    const std::int64_t width = source.roi.width;
    for (Strip strip{0, 0}; strip.first < width; strip.first = strip.last) {
        strip.last = strip.first + stripColumns<block>;
        if (width - strip.last < leastStrip) {
            strip.last = width;
        }
        handle(strip, Scratch(source.buffer, bytes));
    }
}

template <class T, class Derivative, int block, class Result>
void readImage(const CovarianceSource<T> &source, const Result &result) {
    forEachStrip<T, Derivative, block>(source, [&](Strip strip, Scratch scratch) {
        readStrip<T, Derivative, block>(source.image, source.roi, strip, result, scratch);
    });
}
template <class T, class Derivative, class Result>
void readImage(const CovarianceSource<T> &source, Derivative, std::int32_t block, const Result &result) {
    block == 3 ? readImage<T, Derivative, 3>(source, result) : readImage<T, Derivative, 5>(source, result);
}

// The whole call of a family that names its derivatives by a kernel. Its result is made of the destination, with
// Result::floats a pixel, and half the scale.
template <class Result, class T>
StatusCode readByKernel(const T *src, std::int32_t srcStep, float *dst, std::int32_t dstStep, RoiSize roi,
                        std::int32_t kernel, std::int32_t aperture, std::int32_t block, std::uint8_t *buffer) {
    Checks checks;
    checks.pointers(src, dst, buffer).size(roi);
    checks.steps(rowBytes<T>(roi.width), srcStep).steps(Result::floats * rowBytes<float>(roi.width), dstStep);
    checks.multiples(sizeof(T), srcStep).multiples(sizeof(float), dstStep);
    if (checkKernel(checks, kernel, aperture, block).failed()) {
        return checks.status();
    }
    const CovarianceSource<T> source{{src, srcStep}, roi, buffer};
    withKernel(kernel, aperture, [&](auto derivative) {
        readImage(source, derivative, block, Result{{dst, dstStep}, derivative.scale * 0.5f});
    });
    return StatusOk;
}

} // namespace rvxcv
