// Derivative and low-pass filters.
#include "harness.h"

namespace {

// Working functions with and without a mask, of 8s, 16s and 32f results.
template <class T, class D, class F, class Q>
void addFilter(bench::Registry &rows, const char *name, F function, Q query, MaskCode mask) {
    rows.add(name, {sizeof(T), sizeof(D)}, [=](RoiSize roi) {
        auto src = bench::image<T>(roi);
        auto dst = bench::image<D>(roi);
        std::int32_t bytes = 0;
        if constexpr (std::is_invocable_v<Q, RoiSize, MaskCode, std::int32_t *>) {
            query(roi, mask, &bytes);
        } else {
            query(roi, &bytes);
        }
        auto buffer = bench::scratch(bytes);
        return [=] {
            constexpr bool masked = std::is_invocable_v<Q, RoiSize, MaskCode, std::int32_t *>;
            std::uint8_t *b = buffer.get();
            if constexpr (std::is_same_v<D, std::int8_t> && masked) {
                function(src->data, src->step, dst->data, dst->step, roi, mask, BorderReplicate, 0, 5, b);
            } else if constexpr (std::is_same_v<D, std::int8_t>) {
                function(src->data, src->step, dst->data, dst->step, roi, BorderReplicate, 0, 5, b);
            } else if constexpr (masked) {
                function(src->data, src->step, dst->data, dst->step, roi, mask, BorderReplicate, 0, b);
            } else {
                function(src->data, src->step, dst->data, dst->step, roi, BorderReplicate, 0, b);
            }
        };
    });
}

#define ROW(T, D, operation, suffix, size)                                                                             \
    addFilter<T, D>(rows, "Filter" #operation "Border_" #suffix "_C1R/" #size,                                         \
                    rvxiFilter##operation##Border_##suffix##_C1R, rvxiFilter##operation##GetBufferSize_##suffix##_C1R, \
                    size == 5 ? Mask5x5 : Mask3x3)

const bench::Family family([](bench::Registry &rows) {
    using U = std::uint8_t;
    using S = std::int8_t;
    using I = std::int16_t;
    using F = float;
    ROW(U, I, SobelVert, 8u16s, 3);
    ROW(U, I, SobelVert, 8u16s, 5);
    ROW(U, I, SobelHoriz, 8u16s, 3);
    ROW(U, I, SobelHoriz, 8u16s, 5);
    ROW(U, I, SobelNegVert, 8u16s, 3);
    ROW(U, I, SobelNegVert, 8u16s, 5);
    ROW(U, I, SobelVertSecond, 8u16s, 3);
    ROW(U, I, SobelVertSecond, 8u16s, 5);
    ROW(U, I, SobelHorizSecond, 8u16s, 3);
    ROW(U, I, SobelHorizSecond, 8u16s, 5);
    ROW(U, I, SobelCross, 8u16s, 3);
    ROW(U, I, SobelCross, 8u16s, 5);
    ROW(U, I, ScharrVert, 8u16s, 3);
    ROW(U, I, ScharrHoriz, 8u16s, 3);
    ROW(U, I, Laplacian, 8u16s, 3);
    ROW(U, I, Laplacian, 8u16s, 5);
    ROW(U, S, SobelVert, 8u8s, 3);
    ROW(U, S, SobelVert, 8u8s, 5);
    ROW(U, S, SobelHoriz, 8u8s, 3);
    ROW(U, S, SobelHoriz, 8u8s, 5);
    ROW(U, S, SobelNegVert, 8u8s, 3);
    ROW(U, S, SobelNegVert, 8u8s, 5);
    ROW(U, S, SobelVertSecond, 8u8s, 3);
    ROW(U, S, SobelVertSecond, 8u8s, 5);
    ROW(U, S, SobelHorizSecond, 8u8s, 3);
    ROW(U, S, SobelHorizSecond, 8u8s, 5);
    ROW(U, S, SobelCross, 8u8s, 3);
    ROW(U, S, SobelCross, 8u8s, 5);
    ROW(U, S, ScharrVert, 8u8s, 3);
    ROW(U, S, ScharrHoriz, 8u8s, 3);
    ROW(U, S, Laplacian, 8u8s, 3);
    ROW(U, S, Laplacian, 8u8s, 5);
    ROW(F, F, SobelVert, 32f, 3);
    ROW(F, F, SobelVert, 32f, 5);
    ROW(F, F, SobelHoriz, 32f, 3);
    ROW(F, F, SobelHoriz, 32f, 5);
    ROW(F, F, SobelNegVert, 32f, 3);
    ROW(F, F, SobelNegVert, 32f, 5);
    ROW(F, F, SobelVertSecond, 32f, 3);
    ROW(F, F, SobelVertSecond, 32f, 5);
    ROW(F, F, SobelHorizSecond, 32f, 3);
    ROW(F, F, SobelHorizSecond, 32f, 5);
    ROW(F, F, SobelCross, 32f, 3);
    ROW(F, F, SobelCross, 32f, 5);
    ROW(F, F, ScharrVert, 32f, 3);
    ROW(F, F, ScharrHoriz, 32f, 3);
    ROW(F, F, Laplacian, 32f, 3);
    ROW(F, F, Laplacian, 32f, 5);
    ROW(U, U, Lowpass, 8u, 3);
    ROW(U, U, Lowpass, 8u, 5);
    ROW(F, F, Lowpass, 32f, 3);
    ROW(F, F, Lowpass, 32f, 5);
});

} // namespace
