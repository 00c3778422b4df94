// Accumulators and absolute differences.
#include "contract/contract.h"

namespace contract {
namespace {

const std::vector<float> alphas = {0.25F, 0.7F, 0, 1, -1.5F};

template <class S> void accumulate(Run &run, StatusCode (*f)(const S *, std::int32_t, float *, std::int32_t, RoiSize)) {
    Sweep sweep(run);
    Image<const S> src(sweep);
    Image<float> acc(sweep);
    Region roi(sweep);
    sweep.run([&] { return f(src, src.step, acc, acc.step, roi); });
}

template <class S>
void accumulateMasked(Run &run, StatusCode (*f)(const S *, std::int32_t, const std::uint8_t *, std::int32_t, float *,
                                                std::int32_t, RoiSize)) {
    Sweep sweep(run);
    Image<const S> src(sweep);
    Image<const std::uint8_t> mask(sweep, {.picture = twoLevels});
    Image<float> acc(sweep);
    Region roi(sweep);
    sweep.run([&] { return f(src, src.step, mask, mask.step, acc, acc.step, roi); });
}

// Products, and absolute differences.
template <class S, class D>
void ofTwo(Run &run, StatusCode (*f)(const S *, std::int32_t, const S *, std::int32_t, D *, std::int32_t, RoiSize),
           int channels = 1) {
    Sweep sweep(run);
    Image<const S> src1(sweep, {.channels = channels}), src2(sweep, {.channels = channels});
    Image<D> dst(sweep, {.channels = channels});
    Region roi(sweep);
    sweep.run([&] { return f(src1, src1.step, src2, src2.step, dst, dst.step, roi); });
}

template <class S>
void ofTwoMasked(Run &run, StatusCode (*f)(const S *, std::int32_t, const S *, std::int32_t, const std::uint8_t *,
                                           std::int32_t, float *, std::int32_t, RoiSize)) {
    Sweep sweep(run);
    Image<const S> src1(sweep), src2(sweep);
    Image<const std::uint8_t> mask(sweep, {.picture = twoLevels});
    Image<float> acc(sweep);
    Region roi(sweep);
    sweep.run([&] { return f(src1, src1.step, src2, src2.step, mask, mask.step, acc, acc.step, roi); });
}

template <class S>
void weighted(Run &run, StatusCode (*f)(const S *, std::int32_t, float *, std::int32_t, RoiSize, float)) {
    Sweep sweep(run);
    Image<const S> src(sweep);
    Image<float> acc(sweep);
    Region roi(sweep);
    Choice<float> alpha(sweep, alphas);
    sweep.run([&] { return f(src, src.step, acc, acc.step, roi, alpha); });
}

template <class S>
void weightedMasked(Run &run, StatusCode (*f)(const S *, std::int32_t, const std::uint8_t *, std::int32_t, float *,
                                              std::int32_t, RoiSize, float)) {
    Sweep sweep(run);
    Image<const S> src(sweep);
    Image<const std::uint8_t> mask(sweep, {.picture = twoLevels});
    Image<float> acc(sweep);
    Region roi(sweep);
    Choice<float> alpha(sweep, alphas);
    sweep.run([&] { return f(src, src.step, mask, mask.step, acc, acc.step, roi, alpha); });
}

void weightedOfTwo(Run &run, StatusCode (*f)(const float *, std::int32_t, const float *, std::int32_t, float *,
                                             std::int32_t, RoiSize, float)) {
    Sweep sweep(run);
    Image<const float> src1(sweep), src2(sweep);
    Image<float> dst(sweep);
    Region roi(sweep);
    Choice<float> alpha(sweep, alphas);
    sweep.run([&] { return f(src1, src1.step, src2, src2.step, dst, dst.step, roi, alpha); });
}

template <class T, class Value>
void fromConstant(Run &run, StatusCode (*f)(const T *, std::int32_t, T *, std::int32_t, RoiSize, Value)) {
    Sweep sweep(run);
    Image<const T> src(sweep);
    Image<T> dst(sweep);
    Region roi(sweep);
    Choice<Value> value(sweep, {Value{77}, Value{0}, Value{-9}, Value{255}, Value{300}, Value{70000}});
    sweep.run([&] { return f(src, src.step, dst, dst.step, roi, value); });
}

} // namespace

void addArith(Members &members) {
    const Member table[] = {
        MEMBER(rvxiAdd_8u32f_C1IR, accumulate),
        MEMBER(rvxiAdd_8s32f_C1IR, accumulate),
        MEMBER(rvxiAdd_16u32f_C1IR, accumulate),
        MEMBER(rvxiAdd_8u32f_C1IMR, accumulateMasked),
        MEMBER(rvxiAdd_8s32f_C1IMR, accumulateMasked),
        MEMBER(rvxiAdd_16u32f_C1IMR, accumulateMasked),
        MEMBER(rvxiAdd_32f_C1IMR, accumulateMasked),
        MEMBER(rvxiAddSquare_8u32f_C1IR, accumulate),
        MEMBER(rvxiAddSquare_8s32f_C1IR, accumulate),
        MEMBER(rvxiAddSquare_16u32f_C1IR, accumulate),
        MEMBER(rvxiAddSquare_32f_C1IR, accumulate),
        MEMBER(rvxiAddSquare_8u32f_C1IMR, accumulateMasked),
        MEMBER(rvxiAddSquare_8s32f_C1IMR, accumulateMasked),
        MEMBER(rvxiAddSquare_16u32f_C1IMR, accumulateMasked),
        MEMBER(rvxiAddSquare_32f_C1IMR, accumulateMasked),
        MEMBER(rvxiAddProduct_8u32f_C1IR, ofTwo),
        MEMBER(rvxiAddProduct_8s32f_C1IR, ofTwo),
        MEMBER(rvxiAddProduct_16u32f_C1IR, ofTwo),
        MEMBER(rvxiAddProduct_32f_C1IR, ofTwo),
        MEMBER(rvxiAddProduct_8u32f_C1IMR, ofTwoMasked),
        MEMBER(rvxiAddProduct_8s32f_C1IMR, ofTwoMasked),
        MEMBER(rvxiAddProduct_16u32f_C1IMR, ofTwoMasked),
        MEMBER(rvxiAddProduct_32f_C1IMR, ofTwoMasked),
        MEMBER(rvxiAddWeighted_8u32f_C1IR, weighted),
        MEMBER(rvxiAddWeighted_8s32f_C1IR, weighted),
        MEMBER(rvxiAddWeighted_16u32f_C1IR, weighted),
        MEMBER(rvxiAddWeighted_32f_C1IR, weighted),
        MEMBER(rvxiAddWeighted_8u32f_C1IMR, weightedMasked),
        MEMBER(rvxiAddWeighted_8s32f_C1IMR, weightedMasked),
        MEMBER(rvxiAddWeighted_16u32f_C1IMR, weightedMasked),
        MEMBER(rvxiAddWeighted_32f_C1IMR, weightedMasked),
        MEMBER(rvxiAddWeighted_32f_C1R, weightedOfTwo),
        MEMBER(rvxiAbsDiff_8u_C1R, ofTwo),
        MEMBER(rvxiAbsDiff_8u_C3R, ofTwo, 3),
        MEMBER(rvxiAbsDiff_16u_C1R, ofTwo),
        MEMBER(rvxiAbsDiff_32f_C1R, ofTwo),
        MEMBER(rvxiAbsDiffC_8u_C1R, fromConstant),
        MEMBER(rvxiAbsDiffC_16u_C1R, fromConstant),
        MEMBER(rvxiAbsDiffC_32f_C1R, fromConstant),
    };
    members.insert(members.end(), std::begin(table), std::end(table));
}

} // namespace contract
