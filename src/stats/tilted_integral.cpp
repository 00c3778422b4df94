// Integral images tilted by 45 degrees, of pixels and of their squares: an element is the sum of the triangle of pixels
// above it,
//
//     R(X) = s(X - 1) + s(X) + P1(X - 1) + P1(X + 1) - P2(X),
//
// P1 and P2 being the two rows before. No element needs another of its own row, so rows are plain vector work. Sums of
// float and double outputs are formed from left to right as written; the sum of the two pixels is exact.
#include "stats/integral_image.h"

#include "frame/api.h"

namespace rvxcv {
namespace {

// Element X stands at index X - 1 of dst, centre, and src; src[X] is zero behind the row's last pixel.
template <bool squared, class T> struct TiltedRow {
    const std::uint8_t *src;
    const T *left, *right; // of the row above
    const T *centre;       // two rows above
    T *dst;

    // `next` is the span of the pixels src[X].
    template <class Span, class Next> RVX_INLINE void block(std::ptrdiff_t x, Span span, Next next) const {
        prefetchOutput<8>(dst + x);
        const I32x8 terms = add(loadTerms<squared>(src + x, span), loadTerms<squared>(src + x + 1, next));
        Eight<T> sum = eightOf<T>(terms);
        sum = add(sum, loadEight(left + x, span));
        sum = add(sum, loadEight(right + x, span));
        storeEight(dst + x, sub(sum, loadEight(centre + x, span)), span);
    }
};

template <bool squared, class T>
void tiltedRow(const std::uint8_t *src, const SumImage<T> &out, std::int64_t y, std::int64_t width) {
    const T *before = out.plane().row(y), *above = out.plane().row(y + 1);
    T *dst = out.plane().row(y + 2);
    // The edge columns copy their diagonal neighbour of the row above.
    storeScalar(dst, loadScalar(above + 1));
    storeScalar(dst + width + 1, loadScalar(above + width));
    const TiltedRow<squared, T> row{src, above, above + 2, before + 1, dst + 1};
    if (width < 8) {
        const auto n = static_cast<int>(width);
        row.block(0, Part{n}, Part{n - 1});
        return;
    }
    for (std::ptrdiff_t x = 0; x + 8 < width; x += 8) {
        row.block(x, Full{}, Full{});
    }
    row.block(width - 8, Full{}, Part{7}); // in part once more: nothing that it reads is written here
}

// The second output, if any, holds the squares.
template <class T, class... Q>
StatusCode tiltedIntegral(const std::uint8_t *src, std::int32_t srcStep, RoiSize roi, SumImage<T> sum,
                          SumImage<Q>... squares) {
    const StatusCode status = checkIntegral(src, srcStep, roi, 2, sum, squares...);
    if (status != StatusOk) {
        return status;
    }
    const std::int64_t width = roi.width;
    const auto fillTwo = [&](const auto &out) {
        fillRow(out.dst, width + 2, out.val);
        fillRow(out.plane().row(1), width + 2, out.val);
    };
    fillTwo(sum);
    (fillTwo(squares), ...);
    for (std::int64_t y = 0; y < roi.height; ++y) {
        const std::uint8_t *row = Plane{src, srcStep}.row(y);
        tiltedRow<false>(row, sum, y, width);
        (tiltedRow<true>(row, squares, y, width), ...);
    }
    return StatusOk;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiTiltedIntegral_8u32s_C1R(const uint8_t *src, int32_t srcStep, int32_t *dst, int32_t dstStep, RoiSize roi,
                                        int32_t val) {
    return tiltedIntegral(src, srcStep, roi, SumImage<int32_t>{dst, dstStep, val});
}
StatusCode rvxiTiltedIntegral_8u32f_C1R(const uint8_t *src, int32_t srcStep, float *dst, int32_t dstStep, RoiSize roi,
                                        float val) {
    return tiltedIntegral(src, srcStep, roi, SumImage<float>{dst, dstStep, val});
}
StatusCode rvxiTiltedSqrIntegral_8u32s_C1R(const uint8_t *src, int32_t srcStep, int32_t *dst, int32_t dstStep,
                                           int32_t *sqr, int32_t sqrStep, RoiSize roi, int32_t val, int32_t valSqr) {
    return tiltedIntegral(src, srcStep, roi, SumImage<int32_t>{dst, dstStep, val},
                          SumImage<int32_t>{sqr, sqrStep, valSqr});
}
StatusCode rvxiTiltedSqrIntegral_8u32s64f_C1R(const uint8_t *src, int32_t srcStep, int32_t *dst, int32_t dstStep,
                                              double *sqr, int32_t sqrStep, RoiSize roi, int32_t val, double valSqr) {
    return tiltedIntegral(src, srcStep, roi, SumImage<int32_t>{dst, dstStep, val},
                          SumImage<double>{sqr, sqrStep, valSqr});
}
StatusCode rvxiTiltedSqrIntegral_8u32f64f_C1R(const uint8_t *src, int32_t srcStep, float *dst, int32_t dstStep,
                                              double *sqr, int32_t sqrStep, RoiSize roi, double val, double valSqr) {
    return tiltedIntegral(src, srcStep, roi, SumImage<float>{dst, dstStep, static_cast<float>(val)},
                          SumImage<double>{sqr, sqrStep, valSqr});
}
