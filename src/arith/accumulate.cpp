// Accumulators: running sums, squares, products and weighted averages of frames in a 32f image.
//
// Sources become floats exactly; each update then is the rounding sequence that the header states, bit for bit, in
// every pixel. The masked forms multiply by m = 0 or 1 instead of skipping: they rewrite unselected pixels too, and
// round differently from the unmasked ones. docs/numbers.md explains why that is kept.
#include "frame/api.h"
#include "kernel/checks.h"
#include "kernel/plane.h"
#include "kernel/rows.h"

namespace rvxcv {
namespace {

// ------------------------------------------------------------------------------------------------- operations

// One update of eight accumulator pixels d by sources a and b (the same one for single-source operations).
struct Sum {
    static F32x8 update(F32x8 a, F32x8, F32x8 d, F32x8) { return add(d, a); }
    static F32x8 update(F32x8 m, F32x8 a, F32x8, F32x8 d, F32x8) { return fma(m, a, d); }
};

struct Square {
    static F32x8 update(F32x8 a, F32x8, F32x8 d, F32x8) { return fma(a, a, d); }
    static F32x8 update(F32x8 m, F32x8 a, F32x8, F32x8 d, F32x8) { return fma(m, mul(a, a), d); }
};

struct Product {
    static F32x8 update(F32x8 a, F32x8 b, F32x8 d, F32x8) { return fma(a, b, d); }
    static F32x8 update(F32x8 m, F32x8 a, F32x8 b, F32x8 d, F32x8) { return fma(m, mul(a, b), d); }
};

struct Weighted {
    static F32x8 update(F32x8 a, F32x8, F32x8 d, F32x8 alpha) { return fma(sub(a, d), alpha, d); }
    static F32x8 update(F32x8 m, F32x8 a, F32x8, F32x8 d, F32x8 alpha) { return fma(mul(m, alpha), sub(a, d), d); }
};

// --------------------------------------------------------------------------------------------------- the kernel

template <class T> struct Sources {
    Plane<const T> first, second;
    Plane<const std::uint8_t> mask; // base null: unmasked
    Plane<float> acc;
};

template <class Operation, bool masked, class T> struct AccumulateRow {
    const T *first, *second;
    const std::uint8_t *mask;
    float *acc;
    F32x8 alpha;

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        const F32x8 a = loadF32(first + x, span), b = loadF32(second + x, span), d = load<F32x8>(acc + x, span);
        if constexpr (masked) {
            store(acc + x, Operation::update(loadSelection(mask + x, span), a, b, d, alpha), span);
        } else {
            store(acc + x, Operation::update(a, b, d, alpha), span);
        }
    }
};

// Unsigned bytes and their products are exact floats, and zero times one of them is a positive zero, as a product with
// m = 0 is: the masked update of such sources is the plain one of a source whose unselected bytes are zero. So the mask
// is applied to bytes. A negative zero in the accumulator becomes positive either way.
template <class Operation> struct SelectedBytesRow {
    const std::uint8_t *first, *second;
    const std::uint8_t *mask;
    float *acc;

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        const U8x16 a = selected(loadHalf(mask + x, span), loadHalf(first + x, span));
        const auto update = [&](F32x8 eight, std::ptrdiff_t at, auto lanes) {
            const F32x8 b = loadF32(second + at, lanes), d = load<F32x8>(acc + at, lanes);
            store(acc + at, Operation::update(eight, b, d, F32x8{}), lanes);
        };
        withEight<0>(span, [&](auto lanes) { update(toF32(widenLow(a)), x, lanes); });
        withEight<1>(span, [&](auto lanes) { update(toF32(widenHigh(a)), x + 8, lanes); });
    }
};

template <class T> bool gapless(const Sources<T> &image, bool masked, RoiSize roi) {
    const std::int64_t width = roi.width, sourceBytes = rowBytes<T>(width);
    return image.first.step == sourceBytes && image.second.step == sourceBytes && image.acc.step == 4 * width &&
           (!masked || image.mask.step == width);
}

template <class Operation, bool masked, class T> void accumulate(const Sources<T> &image, RoiSize roi, float alpha) {
    const RowShape shape(roi.width, roi.height, gapless(image, masked, roi));
    for (std::int64_t y = 0; y < shape.height; ++y) {
        if constexpr (masked && std::is_same_v<T, std::uint8_t> && !std::is_same_v<Operation, Weighted>) {
            walkRow<2 * F32x8::lanes>(shape.width, SelectedBytesRow<Operation>{image.first.row(y), image.second.row(y),
                                                                               image.mask.row(y), image.acc.row(y)});
        } else {
            const AccumulateRow<Operation, masked, T> row{image.first.row(y), image.second.row(y),
                                                          masked ? image.mask.row(y) : nullptr, image.acc.row(y),
                                                          splat(alpha)};
            walkRow<F32x8::lanes, Tail::partial, 4>(shape.width, row);
        }
    }
}

// --------------------------------------------------------------------------------------------------- the checks

// Steps of one element size are tested together; a 16u group comes whole before the accumulator. The mask's step is
// tested with the sources'.
template <class T>
StatusCode check(const T *first, std::int32_t firstStep, const T *second, std::int32_t secondStep, bool masked,
                 const std::uint8_t *mask, std::int32_t maskStep, const float *acc, std::int32_t accStep, RoiSize roi) {
    Checks checks;
    checks.pointers(first, second, acc).require(!masked || mask != nullptr, StatusNullPointer).size(roi);
    checks.steps(rowBytes<T>(roi.width), firstStep, secondStep);
    if (masked) {
        checks.steps(rowBytes<std::uint8_t>(roi.width), maskStep);
    }
    if constexpr (sizeof(T) == 2) {
        checks.multiples(sizeof(T), firstStep, secondStep);
    }
    checks.steps(rowBytes<float>(roi.width), accStep);
    if constexpr (sizeof(T) == 4) {
        checks.multiples(sizeof(float), firstStep, secondStep);
    }
    return checks.multiples(sizeof(float), accStep).status();
}

// --------------------------------------------------------------------------------------- one shape per interface

template <class Operation, class T>
StatusCode update(const T *first, std::int32_t firstStep, const T *second, std::int32_t secondStep, float *acc,
                  std::int32_t accStep, RoiSize roi, float alpha = 0.0f) {
    const StatusCode status = check(first, firstStep, second, secondStep, false, nullptr, 0, acc, accStep, roi);
    if (status == StatusOk) {
        accumulate<Operation, false, T>({{first, firstStep}, {second, secondStep}, {nullptr, 0}, {acc, accStep}}, roi,
                                        alpha);
    }
    return status;
}

template <class Operation, class T>
StatusCode updateMasked(const T *first, std::int32_t firstStep, const T *second, std::int32_t secondStep,
                        const std::uint8_t *mask, std::int32_t maskStep, float *acc, std::int32_t accStep, RoiSize roi,
                        float alpha = 0.0f) {
    const StatusCode status = check(first, firstStep, second, secondStep, true, mask, maskStep, acc, accStep, roi);
    if (status == StatusOk) {
        accumulate<Operation, true, T>({{first, firstStep}, {second, secondStep}, {mask, maskStep}, {acc, accStep}},
                                       roi, alpha);
    }
    return status;
}

// dst = fma(a - b, alpha, b)
struct BlendRow {
    const float *first, *second;
    float *dst;
    F32x8 alpha;

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        const F32x8 a = load<F32x8>(first + x, span), b = load<F32x8>(second + x, span);
        store(dst + x, fma(sub(a, b), alpha, b), span);
    }
};

} // namespace
} // namespace rvxcv

using namespace rvxcv;

// ---------------------------------------------------------------------------------------------------------- Add
StatusCode rvxiAdd_8u32f_C1IR(const uint8_t *src, int32_t srcStep, float *acc, int32_t accStep, RoiSize roi) {
    return update<Sum>(src, srcStep, src, srcStep, acc, accStep, roi);
}
StatusCode rvxiAdd_8s32f_C1IR(const int8_t *src, int32_t srcStep, float *acc, int32_t accStep, RoiSize roi) {
    return update<Sum>(src, srcStep, src, srcStep, acc, accStep, roi);
}
StatusCode rvxiAdd_16u32f_C1IR(const uint16_t *src, int32_t srcStep, float *acc, int32_t accStep, RoiSize roi) {
    return update<Sum>(src, srcStep, src, srcStep, acc, accStep, roi);
}
StatusCode rvxiAdd_8u32f_C1IMR(const uint8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, float *acc,
                               int32_t accStep, RoiSize roi) {
    return updateMasked<Sum>(src, srcStep, src, srcStep, mask, maskStep, acc, accStep, roi);
}
StatusCode rvxiAdd_8s32f_C1IMR(const int8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, float *acc,
                               int32_t accStep, RoiSize roi) {
    return updateMasked<Sum>(src, srcStep, src, srcStep, mask, maskStep, acc, accStep, roi);
}
StatusCode rvxiAdd_16u32f_C1IMR(const uint16_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, float *acc,
                                int32_t accStep, RoiSize roi) {
    return updateMasked<Sum>(src, srcStep, src, srcStep, mask, maskStep, acc, accStep, roi);
}
StatusCode rvxiAdd_32f_C1IMR(const float *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, float *acc,
                             int32_t accStep, RoiSize roi) {
    return updateMasked<Sum>(src, srcStep, src, srcStep, mask, maskStep, acc, accStep, roi);
}
// ---------------------------------------------------------------------------------------------------- AddSquare
StatusCode rvxiAddSquare_8u32f_C1IR(const uint8_t *src, int32_t srcStep, float *acc, int32_t accStep, RoiSize roi) {
    return update<Square>(src, srcStep, src, srcStep, acc, accStep, roi);
}
StatusCode rvxiAddSquare_8s32f_C1IR(const int8_t *src, int32_t srcStep, float *acc, int32_t accStep, RoiSize roi) {
    return update<Square>(src, srcStep, src, srcStep, acc, accStep, roi);
}
StatusCode rvxiAddSquare_16u32f_C1IR(const uint16_t *src, int32_t srcStep, float *acc, int32_t accStep, RoiSize roi) {
    return update<Square>(src, srcStep, src, srcStep, acc, accStep, roi);
}
StatusCode rvxiAddSquare_32f_C1IR(const float *src, int32_t srcStep, float *acc, int32_t accStep, RoiSize roi) {
    return update<Square>(src, srcStep, src, srcStep, acc, accStep, roi);
}
StatusCode rvxiAddSquare_8u32f_C1IMR(const uint8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                     float *acc, int32_t accStep, RoiSize roi) {
    return updateMasked<Square>(src, srcStep, src, srcStep, mask, maskStep, acc, accStep, roi);
}
StatusCode rvxiAddSquare_8s32f_C1IMR(const int8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                     float *acc, int32_t accStep, RoiSize roi) {
    return updateMasked<Square>(src, srcStep, src, srcStep, mask, maskStep, acc, accStep, roi);
}
StatusCode rvxiAddSquare_16u32f_C1IMR(const uint16_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                      float *acc, int32_t accStep, RoiSize roi) {
    return updateMasked<Square>(src, srcStep, src, srcStep, mask, maskStep, acc, accStep, roi);
}
StatusCode rvxiAddSquare_32f_C1IMR(const float *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, float *acc,
                                   int32_t accStep, RoiSize roi) {
    return updateMasked<Square>(src, srcStep, src, srcStep, mask, maskStep, acc, accStep, roi);
}
// --------------------------------------------------------------------------------------------------- AddProduct
StatusCode rvxiAddProduct_8u32f_C1IR(const uint8_t *src1, int32_t src1Step, const uint8_t *src2, int32_t src2Step,
                                     float *acc, int32_t accStep, RoiSize roi) {
    return update<Product>(src1, src1Step, src2, src2Step, acc, accStep, roi);
}
StatusCode rvxiAddProduct_8s32f_C1IR(const int8_t *src1, int32_t src1Step, const int8_t *src2, int32_t src2Step,
                                     float *acc, int32_t accStep, RoiSize roi) {
    return update<Product>(src1, src1Step, src2, src2Step, acc, accStep, roi);
}
StatusCode rvxiAddProduct_16u32f_C1IR(const uint16_t *src1, int32_t src1Step, const uint16_t *src2, int32_t src2Step,
                                      float *acc, int32_t accStep, RoiSize roi) {
    return update<Product>(src1, src1Step, src2, src2Step, acc, accStep, roi);
}
StatusCode rvxiAddProduct_32f_C1IR(const float *src1, int32_t src1Step, const float *src2, int32_t src2Step, float *acc,
                                   int32_t accStep, RoiSize roi) {
    return update<Product>(src1, src1Step, src2, src2Step, acc, accStep, roi);
}
StatusCode rvxiAddProduct_8u32f_C1IMR(const uint8_t *src1, int32_t src1Step, const uint8_t *src2, int32_t src2Step,
                                      const uint8_t *mask, int32_t maskStep, float *acc, int32_t accStep, RoiSize roi) {
    return updateMasked<Product>(src1, src1Step, src2, src2Step, mask, maskStep, acc, accStep, roi);
}
StatusCode rvxiAddProduct_8s32f_C1IMR(const int8_t *src1, int32_t src1Step, const int8_t *src2, int32_t src2Step,
                                      const uint8_t *mask, int32_t maskStep, float *acc, int32_t accStep, RoiSize roi) {
    return updateMasked<Product>(src1, src1Step, src2, src2Step, mask, maskStep, acc, accStep, roi);
}
StatusCode rvxiAddProduct_16u32f_C1IMR(const uint16_t *src1, int32_t src1Step, const uint16_t *src2, int32_t src2Step,
                                       const uint8_t *mask, int32_t maskStep, float *acc, int32_t accStep,
                                       RoiSize roi) {
    return updateMasked<Product>(src1, src1Step, src2, src2Step, mask, maskStep, acc, accStep, roi);
}
StatusCode rvxiAddProduct_32f_C1IMR(const float *src1, int32_t src1Step, const float *src2, int32_t src2Step,
                                    const uint8_t *mask, int32_t maskStep, float *acc, int32_t accStep, RoiSize roi) {
    return updateMasked<Product>(src1, src1Step, src2, src2Step, mask, maskStep, acc, accStep, roi);
}
// -------------------------------------------------------------------------------------------------- AddWeighted
StatusCode rvxiAddWeighted_8u32f_C1IR(const uint8_t *src, int32_t srcStep, float *acc, int32_t accStep, RoiSize roi,
                                      float alpha) {
    return update<Weighted>(src, srcStep, src, srcStep, acc, accStep, roi, alpha);
}
StatusCode rvxiAddWeighted_8s32f_C1IR(const int8_t *src, int32_t srcStep, float *acc, int32_t accStep, RoiSize roi,
                                      float alpha) {
    return update<Weighted>(src, srcStep, src, srcStep, acc, accStep, roi, alpha);
}
StatusCode rvxiAddWeighted_16u32f_C1IR(const uint16_t *src, int32_t srcStep, float *acc, int32_t accStep, RoiSize roi,
                                       float alpha) {
    return update<Weighted>(src, srcStep, src, srcStep, acc, accStep, roi, alpha);
}
StatusCode rvxiAddWeighted_32f_C1IR(const float *src, int32_t srcStep, float *acc, int32_t accStep, RoiSize roi,
                                    float alpha) {
    return update<Weighted>(src, srcStep, src, srcStep, acc, accStep, roi, alpha);
}
StatusCode rvxiAddWeighted_8u32f_C1IMR(const uint8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                       float *acc, int32_t accStep, RoiSize roi, float alpha) {
    return updateMasked<Weighted>(src, srcStep, src, srcStep, mask, maskStep, acc, accStep, roi, alpha);
}
StatusCode rvxiAddWeighted_8s32f_C1IMR(const int8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                       float *acc, int32_t accStep, RoiSize roi, float alpha) {
    return updateMasked<Weighted>(src, srcStep, src, srcStep, mask, maskStep, acc, accStep, roi, alpha);
}
StatusCode rvxiAddWeighted_16u32f_C1IMR(const uint16_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                        float *acc, int32_t accStep, RoiSize roi, float alpha) {
    return updateMasked<Weighted>(src, srcStep, src, srcStep, mask, maskStep, acc, accStep, roi, alpha);
}
StatusCode rvxiAddWeighted_32f_C1IMR(const float *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep,
                                     float *acc, int32_t accStep, RoiSize roi, float alpha) {
    return updateMasked<Weighted>(src, srcStep, src, srcStep, mask, maskStep, acc, accStep, roi, alpha);
}
// -------------------------------------------------------------------------------- weighted sum of two images
StatusCode rvxiAddWeighted_32f_C1R(const float *src1, int32_t src1Step, const float *src2, int32_t src2Step, float *dst,
                                   int32_t dstStep, RoiSize roi, float alpha) {
    const StatusCode status = check(src1, src1Step, src2, src2Step, false, nullptr, 0, dst, dstStep, roi);
    if (status != StatusOk) {
        return status;
    }
    const Sources<float> image{{src1, src1Step}, {src2, src2Step}, {nullptr, 0}, {dst, dstStep}};
    const RowShape shape(roi.width, roi.height, gapless(image, false, roi));
    for (std::int64_t y = 0; y < shape.height; ++y) {
        walkRow<F32x8::lanes>(shape.width,
                              BlendRow{image.first.row(y), image.second.row(y), image.acc.row(y), splat(alpha)});
    }
    return StatusOk;
}
