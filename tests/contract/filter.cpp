// The separable pipeline, derivative, low-pass and Gaussian filters, and the colour gradient.
#include "contract/contract.h"

#include <limits>

namespace contract {
namespace {

template <class T> T borderNumber() { return static_cast<T>(std::is_unsigned_v<T> ? 201 : -57); }

// Three elements where the border value is a pointer, one where it is a number.
template <class V> struct BorderValue {
    using Element = std::remove_const_t<std::remove_pointer_t<V>>;
    explicit BorderValue(Sweep &sweep) : elements(sweep, {borderNumber<Element>(), 0, 99}, std::is_pointer_v<V>) {}
    operator V() const {
        if constexpr (std::is_pointer_v<V>) {
            return elements;
        } else {
            return elements[0];
        }
    }
    Numbers<Element> elements;
};

// ------------------------------------------------------------------------------------------------ separable pipeline

struct Kernel {
    std::int32_t size, anchor;
};

template <class K> std::vector<K> taps(std::int32_t size) {
    constexpr int all[] = {3, -7, 12, 25, -2, 9, 1, 4};
    std::vector<K> values;
    for (std::int32_t i = 0; i < size; ++i) {
        values.push_back(static_cast<K>(std::is_unsigned_v<K> && all[i] < 0 ? 40000 : all[i]));
        if constexpr (std::is_floating_point_v<K>) {
            values.back() *= K{0.171875}; // exact
        }
    }
    return values;
}

const std::vector<std::int32_t> divisors = {1, 3, 58};
using PipelineQuery = StatusCode (*)(RoiSize, std::int32_t, std::int32_t *);

template <class S, class D, class K, class V, class Call>
void rowStageOf(Run &run, int channels, PipelineQuery query, std::vector<std::int32_t> badDivisors, const Call &call) {
    Sweep sweep(run);
    Choice<Kernel> kernel(sweep, {{3, 1}, {1, 0}, {2, 0}, {5, 4}, {5, 2}, {8, 3}}, {{0, 0}, {3, 3}, {3, -1}});
    Choice<BorderKind> border(sweep, bordersOf({BorderConstant, BorderReplicate}), {BorderMirror, BorderWrap, 7});
    Choice<std::int32_t> divisor(sweep, divisors, std::move(badDivisors));
    Image<const S> src(sweep, {.channels = channels, .margin = [&] {
                                   const Kernel k = kernel;
                                   return inMemory(border, {k.anchor, 0, k.size - 1 - k.anchor, 0});
                               }});
    Image<D> dst(sweep, {.channels = channels, .faults = false});
    Rows<D> rows(sweep);
    Region roi(sweep);
    Numbers<K> coefficients(sweep, taps<K>(1));
    BorderValue<V> value(sweep);
    Bytes buffer(sweep);
    sweep.before = [&] {
        rows.set(dst, sweep.roi().height);
        coefficients.assign(taps<K>(kernel.value().size));
        std::int32_t size = 0;
        query(sweep.roi(), kernel.value().size, &size);
        buffer.size(size);
    };
    sweep.run([&] {
        const Kernel k = kernel;
        return call(src, src.step, rows, roi, coefficients, k.size, k.anchor, border, value, divisor, buffer);
    });
}

template <class S, class D, class K, class V>
void rowStage(Run &run,
              StatusCode (*f)(const S *, std::int32_t, D *const *, RoiSize, const K *, std::int32_t, std::int32_t,
                              BorderKind, V, std::int32_t, std::uint8_t *),
              int channels, PipelineQuery query) {
    std::vector<std::int32_t> bad = {0};
    if (std::is_unsigned_v<K>) {
        bad.push_back(-3);
    }
    rowStageOf<S, D, K, V>(run, channels, query, bad, f);
}

template <class V>
void rowStageOfFloats(Run &run,
                      StatusCode (*f)(const float *, std::int32_t, float *const *, RoiSize, const float *, std::int32_t,
                                      std::int32_t, BorderKind, V, std::uint8_t *),
                      int channels, PipelineQuery query) {
    rowStageOf<float, float, float, V>(
        run, channels, query, {},
        [f](const float *src, std::int32_t step, float *const *rows, RoiSize roi, const float *kernel,
            std::int32_t size, std::int32_t anchor, BorderKind border, V value, std::int32_t,
            std::uint8_t *buffer) { return f(src, step, rows, roi, kernel, size, anchor, border, value, buffer); });
}

template <class S, class D, class K, class Call>
void columnStageOf(Run &run, int channels, PipelineQuery query, std::vector<std::int32_t> badDivisors,
                   const Call &call) {
    Sweep sweep(run);
    Choice<std::int32_t> kernelSize(sweep, {3, 1, 2, 5, 8}, {0, -1});
    Choice<std::int32_t> divisor(sweep, divisors, std::move(badDivisors));
    Image<const S> src(sweep, {.channels = channels,
                               .size =
                                   [&](RoiSize r) {
                                       return RoiSize{r.width, r.height + kernelSize - 1};
                                   },
                               .faults = false});
    Rows<const S> rows(sweep);
    Image<D> dst(sweep, {.channels = channels});
    Region roi(sweep);
    Numbers<K> coefficients(sweep, taps<K>(1));
    Bytes buffer(sweep);
    sweep.before = [&] {
        rows.set(src, sweep.roi().height + kernelSize - 1);
        coefficients.assign(taps<K>(kernelSize));
        std::int32_t size = 0;
        query(sweep.roi(), kernelSize, &size);
        buffer.size(size);
    };
    sweep.run([&] { return call(rows, dst, dst.step, roi, coefficients, kernelSize, divisor, buffer); });
}

template <class S, class D, class K>
void columnStage(Run &run,
                 StatusCode (*f)(const S *const *, D *, std::int32_t, RoiSize, const K *, std::int32_t, std::int32_t,
                                 std::uint8_t *),
                 int channels, PipelineQuery query) {
    columnStageOf<S, D, K>(run, channels, query, {0}, f);
}

void columnStageOfFloats(Run &run,
                         StatusCode (*f)(const float *const *, float *, std::int32_t, RoiSize, const float *,
                                         std::int32_t, std::uint8_t *),
                         int channels, PipelineQuery query) {
    columnStageOf<float, float, float>(run, channels, query, {},
                                       [f](const float *const *rows, float *dst, std::int32_t step, RoiSize roi,
                                           const float *kernel, std::int32_t size, std::int32_t, std::uint8_t *buffer) {
                                           return f(rows, dst, step, roi, kernel, size, buffer);
                                       });
}

void pipelineSize(Run &run, PipelineQuery query) {
    sizes(run, query, queryRegions(), std::vector<std::int32_t>{1, 3, 8, 4001, 0, -1, INT32_MAX});
}

// -------------------------------------------------------------------------------------------- derivatives, low-pass

using MaskQuery = StatusCode (*)(RoiSize, MaskCode, std::int32_t *);
using RegionQuery = StatusCode (*)(RoiSize, std::int32_t *);

template <class S, class D, class Call, class Query>
void fixedFilter(Run &run, std::vector<MaskCode> masks, std::vector<MaskCode> badMasks,
                 std::vector<std::int32_t> goodDivisors, std::vector<std::int32_t> badDivisors, const Query &query,
                 const Call &call) {
    Sweep sweep(run);
    Choice<MaskCode> mask(sweep, std::move(masks), std::move(badMasks));
    Choice<BorderKind> border(
        sweep, bordersOf({BorderConstant, BorderReplicate, BorderWrap, BorderMirror, BorderMirrorRepeat}),
        {5, BorderReplicate | 256});
    Choice<std::int32_t> divisor(sweep, std::move(goodDivisors), std::move(badDivisors));
    Choice<S> value(sweep, {borderNumber<S>(), S{0}});
    Image<const S> src(sweep, {.margin = [&] { return inMemory(border, mask == Mask3x3 ? 1 : 2); }});
    Image<D> dst(sweep);
    Region roi(sweep);
    Bytes buffer(sweep);
    sweep.before = [&] {
        std::int32_t size = 0;
        query(sweep.roi(), mask, &size);
        buffer.size(size);
    };
    sweep.run([&] { return call(src, src.step, dst, dst.step, roi, mask, border, value, divisor, buffer); });
}

const std::vector<MaskCode> bothMasks = {Mask3x3, Mask5x5}, noMasks = {0, 34};

template <class S, class D>
void masked(Run &run,
            StatusCode (*f)(const S *, std::int32_t, D *, std::int32_t, RoiSize, MaskCode, BorderKind, S,
                            std::uint8_t *),
            MaskQuery query) {
    fixedFilter<S, D>(run, bothMasks, noMasks, {1}, {}, query,
                      [f](const S *src, std::int32_t srcStep, D *dst, std::int32_t dstStep, RoiSize roi, MaskCode mask,
                          BorderKind border, S value, std::int32_t, std::uint8_t *buffer) {
                          return f(src, srcStep, dst, dstStep, roi, mask, border, value, buffer);
                      });
}

void maskedDivided(Run &run,
                   StatusCode (*f)(const std::uint8_t *, std::int32_t, std::int8_t *, std::int32_t, RoiSize, MaskCode,
                                   BorderKind, std::uint8_t, std::int32_t, std::uint8_t *),
                   MaskQuery query) {
    fixedFilter<std::uint8_t, std::int8_t>(run, bothMasks, noMasks, {4, 1, -3}, {0}, query, f);
}

template <class S, class D>
void scharr(Run &run,
            StatusCode (*f)(const S *, std::int32_t, D *, std::int32_t, RoiSize, BorderKind, S, std::uint8_t *),
            RegionQuery query) {
    fixedFilter<S, D>(
        run, {Mask3x3}, {}, {1}, {}, [query](RoiSize roi, MaskCode, std::int32_t *size) { query(roi, size); },
        [f](const S *src, std::int32_t srcStep, D *dst, std::int32_t dstStep, RoiSize roi, MaskCode, BorderKind border,
            S value, std::int32_t,
            std::uint8_t *buffer) { return f(src, srcStep, dst, dstStep, roi, border, value, buffer); });
}

void scharrDivided(Run &run,
                   StatusCode (*f)(const std::uint8_t *, std::int32_t, std::int8_t *, std::int32_t, RoiSize, BorderKind,
                                   std::uint8_t, std::int32_t, std::uint8_t *),
                   RegionQuery query) {
    fixedFilter<std::uint8_t, std::int8_t>(
        run, {Mask3x3}, {}, {4, 1, -3}, {0}, [query](RoiSize roi, MaskCode, std::int32_t *size) { query(roi, size); },
        [f](const std::uint8_t *src, std::int32_t srcStep, std::int8_t *dst, std::int32_t dstStep, RoiSize roi,
            MaskCode, BorderKind border, std::uint8_t value, std::int32_t divisor,
            std::uint8_t *buffer) { return f(src, srcStep, dst, dstStep, roi, border, value, divisor, buffer); });
}

void maskSize(Run &run, MaskQuery query) {
    sizes(run, query, queryRegions(), std::vector<MaskCode>{Mask3x3, Mask5x5, 0, 35});
}

void regionSize(Run &run, RegionQuery query) { sizes(run, query, queryRegions()); }

template <class T> void sobelKernel(Run &run, StatusCode (*f)(T *, std::int32_t, std::int32_t, std::int32_t)) {
    forEach(
        [&](std::int32_t n, std::int32_t order, std::int32_t sign) {
            std::vector<T> kernel(33, static_cast<T>(91));
            run.digest.number(f(kernel.data(), n, order, sign));
            run.digest.number(f(nullptr, n, order, sign));
            for (const T tap : kernel) {
                run.digest.number(tap);
            }
        },
        std::vector<std::int32_t>{1, 3, 5, 7, 31, 0, -3, 4}, std::vector<std::int32_t>{0, 1, 2, 4, 30, 31, -1},
        std::vector<std::int32_t>{1, 0, -1});
}

// ---------------------------------------------------------------------------------------------------------- Gaussian

struct Blur {
    std::int32_t size;
    float sigma;
};
const std::vector<Blur> blurs = {{3, 1.0F}, {5, 0.6F}, {7, 2.3F}};
const float notANumber = std::numeric_limits<float>::quiet_NaN();

template <class T, class V>
void gaussian(Run &run,
              StatusCode (*f)(const T *, std::int32_t, T *, std::int32_t, RoiSize, V, const GaussianSpec *,
                              std::uint8_t *),
              PixelTypeCode type) {
    const int channels = std::is_pointer_v<V> ? 3 : 1;
    Sweep sweep(run);
    Choice<Blur> blur(sweep, blurs);
    Choice<BorderKind> border(sweep, bordersOf({BorderConstant, BorderReplicate}));
    Choice<int> damage(sweep, {0}, {1, 2, 3}); // a record of another type, of an even size, of another border
    Image<const T> src(sweep,
                       {.channels = channels, .margin = [&] { return inMemory(border, blur.value().size / 2); }});
    Image<T> dst(sweep, {.channels = channels});
    Region roi(sweep);
    BorderValue<V> value(sweep);
    Bytes record(sweep), buffer(sweep);
    sweep.before = [&] {
        const Blur b = blur;
        std::int32_t recordSize = 0, bufferSize = 0;
        rvxiFilterGaussianGetBufferSize(sweep.roi(), b.size, type, channels, &recordSize, &bufferSize);
        record.size(recordSize);
        buffer.size(bufferSize);
        rvxiFilterGaussianInit(sweep.roi(), b.size, border, type, channels, record.as<GaussianSpec>(), buffer, b.sigma);
    };
    sweep.run([&] {
        GaussianSpec kept{};
        std::uint8_t *const at = record;
        if (at != nullptr) {
            std::memcpy(&kept, at, sizeof kept);
            GaussianSpec damaged = kept;
            damaged.type = damage == 1 ? PixelType64f : kept.type;
            damaged.kernelSize = damage == 2 ? 4 : kept.kernelSize;
            damaged.border = damage == 3 ? 9 : kept.border;
            std::memcpy(at, &damaged, sizeof damaged);
        }
        const StatusCode status = f(src, src.step, dst, dst.step, roi, value, record.as<GaussianSpec>(), buffer);
        if (at != nullptr) {
            std::memcpy(at, &kept, sizeof kept);
        }
        return status;
    });
}

const std::vector<std::int32_t> kernelSizes = {3, 5, 31, 1, 4, 0, -7, INT32_MAX};
const std::vector<PixelTypeCode> pixelTypes = {
    PixelType8u, PixelType8s, PixelType16u, PixelType16s, PixelType32f, PixelType64f, 0};

void gaussianSizes(Run &run, StatusCode (*query)(RoiSize, std::int32_t, PixelTypeCode, std::int32_t, std::int32_t *,
                                                 std::int32_t *)) {
    twoSizes(run, query, queryRegions(), kernelSizes, pixelTypes, std::vector<std::int32_t>{1, 3, 2, 0});
}

// What the record holds is documented: the fields, the coefficients, each float eight times.
void gaussianInit(Run &run, StatusCode (*init)(RoiSize, std::int32_t, BorderKind, PixelTypeCode, std::int32_t,
                                               GaussianSpec *, std::uint8_t *, float)) {
    forEach(
        [&](RoiSize roi, std::int32_t size, BorderKind border, PixelTypeCode type, std::int32_t channels, float sigma) {
            std::int32_t recordSize = 0, bufferSize = 0;
            rvxiFilterGaussianGetBufferSize(roi, size, type, channels, &recordSize, &bufferSize);
            std::vector<std::uint8_t> record(static_cast<std::size_t>(recordSize) + 4096, 0x5b);
            std::vector<std::uint8_t> buffer(static_cast<std::size_t>(bufferSize) + 64);
            auto *const spec = reinterpret_cast<GaussianSpec *>(record.data());
            const StatusCode status = init(roi, size, border, type, channels, spec, buffer.data(), sigma);
            run.digest.number(status);
            run.digest.number(init(roi, size, border, type, channels, nullptr, buffer.data(), sigma));
            run.digest.number(init(roi, size, border, type, channels, spec, nullptr, sigma));
            if (status == StatusOk) {
                run.digest.numbers({spec->kernelSize, spec->coefficientOffset, spec->type, spec->border, spec->shift});
                run.digest.bytes(record.data() + 32, size * (type == PixelType32f ? 32 : 2));
            } else {
                run.digest.bytes(record.data(), static_cast<std::int64_t>(record.size()));
            }
        },
        std::vector<RoiSize>{{1, 1}, {17, 5}, {0, 3}}, std::vector<std::int32_t>{3, 5, 31, 4, 1},
        std::vector<BorderKind>{BorderConstant, BorderReplicate | BorderInMemoryTop, BorderInMemory, BorderMirror, 5},
        pixelTypes, std::vector<std::int32_t>{1, 3, 2}, std::vector<float>{0.3F, 1, 4.75F, 0, -1, notANumber});
}

void gaussSize(Run &run, StatusCode (*query)(RoiSize, std::int32_t, std::int32_t *)) {
    sizes(run, query, queryRegions(), kernelSizes);
}

void gauss(Run &run, StatusCode (*f)(const float *, std::int32_t, float *, std::int32_t, RoiSize, std::int32_t,
                                     BorderKind, std::uint8_t *, float, float)) {
    Sweep sweep(run);
    Choice<Blur> blur(sweep, blurs, {{4, 1}, {1, 1}, {3, 0}, {3, -2}, {3, notANumber}});
    Choice<BorderKind> border(sweep, bordersOf({BorderConstant, BorderReplicate}), {BorderMirror, 5});
    Image<const float> src(sweep, {.margin = [&] { return inMemory(border, blur.value().size / 2); }});
    Image<float> dst(sweep);
    Region roi(sweep);
    Bytes buffer(sweep);
    sweep.before = [&] {
        std::int32_t size = 0;
        rvxiFilterGaussGetBufferSize_32f_C1R(sweep.roi(), blur.value().size, &size);
        buffer.size(size);
    };
    sweep.run([&] {
        return f(src, src.step, dst, dst.step, roi, blur.value().size, border, buffer, blur.value().sigma, 3.5F);
    });
}

// --------------------------------------------------------------------------------------------------- colour gradient

template <class T>
void colorGradient(Run &run, StatusCode (*f)(const T *, std::int32_t, T *, std::int32_t, RoiSize, NormKind)) {
    Sweep sweep(run);
    Image<const T> src(sweep, {.channels = 3});
    Image<T> dst(sweep);
    Region roi(sweep);
    Choice<NormKind> norm(sweep, {NormInf, NormL1, NormL2}, {3, -1});
    sweep.run([&] { return f(src, src.step, dst, dst.step, roi, norm); });
}

} // namespace

void addFilter(Members &members) {
    const Member table[] = {
        MEMBER(rvxiFilterRowBorderPipeline_16s_C1R, rowStage, 1, rvxiFilterRowBorderPipelineGetBufferSize_16s_C1R),
        MEMBER(rvxiFilterRowBorderPipeline_16s_C3R, rowStage, 3, rvxiFilterRowBorderPipelineGetBufferSize_16s_C3R),
        MEMBER(rvxiFilterRowBorderPipeline_16u_C1R, rowStage, 1, rvxiFilterRowBorderPipelineGetBufferSize_16u_C1R),
        MEMBER(rvxiFilterRowBorderPipeline_16u_C3R, rowStage, 3, rvxiFilterRowBorderPipelineGetBufferSize_16u_C3R),
        MEMBER(rvxiFilterRowBorderPipeline_8u16s_C1R, rowStage, 1, rvxiFilterRowBorderPipelineGetBufferSize_8u16s_C1R),
        MEMBER(rvxiFilterRowBorderPipeline_8u16s_C3R, rowStage, 3, rvxiFilterRowBorderPipelineGetBufferSize_8u16s_C3R),
        MEMBER(rvxiFilterRowBorderPipeline_32f_C1R, rowStageOfFloats, 1,
               rvxiFilterRowBorderPipelineGetBufferSize_32f_C1R),
        MEMBER(rvxiFilterRowBorderPipeline_32f_C3R, rowStageOfFloats, 3,
               rvxiFilterRowBorderPipelineGetBufferSize_32f_C3R),
        MEMBER(rvxiFilterRowBorderPipeline_Low_16s_C1R, rowStage, 1,
               rvxiFilterRowBorderPipelineGetBufferSize_Low_16s_C1R),
        MEMBER(rvxiFilterRowBorderPipeline_Low_16s_C3R, rowStage, 3,
               rvxiFilterRowBorderPipelineGetBufferSize_Low_16s_C3R),
        MEMBER(rvxiFilterRowBorderPipelineGetBufferSize_16s_C1R, pipelineSize),
        MEMBER(rvxiFilterRowBorderPipelineGetBufferSize_16s_C3R, pipelineSize),
        MEMBER(rvxiFilterRowBorderPipelineGetBufferSize_16u_C1R, pipelineSize),
        MEMBER(rvxiFilterRowBorderPipelineGetBufferSize_16u_C3R, pipelineSize),
        MEMBER(rvxiFilterRowBorderPipelineGetBufferSize_8u16s_C1R, pipelineSize),
        MEMBER(rvxiFilterRowBorderPipelineGetBufferSize_8u16s_C3R, pipelineSize),
        MEMBER(rvxiFilterRowBorderPipelineGetBufferSize_32f_C1R, pipelineSize),
        MEMBER(rvxiFilterRowBorderPipelineGetBufferSize_32f_C3R, pipelineSize),
        MEMBER(rvxiFilterRowBorderPipelineGetBufferSize_Low_16s_C1R, pipelineSize),
        MEMBER(rvxiFilterRowBorderPipelineGetBufferSize_Low_16s_C3R, pipelineSize),
        MEMBER(rvxiFilterColumnPipeline_16s_C1R, columnStage, 1, rvxiFilterColumnPipelineGetBufferSize_16s_C1R),
        MEMBER(rvxiFilterColumnPipeline_16s_C3R, columnStage, 3, rvxiFilterColumnPipelineGetBufferSize_16s_C3R),
        MEMBER(rvxiFilterColumnPipeline_16s8u_C1R, columnStage, 1, rvxiFilterColumnPipelineGetBufferSize_16s8u_C1R),
        MEMBER(rvxiFilterColumnPipeline_16s8u_C3R, columnStage, 3, rvxiFilterColumnPipelineGetBufferSize_16s8u_C3R),
        MEMBER(rvxiFilterColumnPipeline_16s8s_C1R, columnStage, 1, rvxiFilterColumnPipelineGetBufferSize_16s8s_C1R),
        MEMBER(rvxiFilterColumnPipeline_16s8s_C3R, columnStage, 3, rvxiFilterColumnPipelineGetBufferSize_16s8s_C3R),
        MEMBER(rvxiFilterColumnPipeline_16u_C1R, columnStage, 1, rvxiFilterColumnPipelineGetBufferSize_16u_C1R),
        MEMBER(rvxiFilterColumnPipeline_16u_C3R, columnStage, 3, rvxiFilterColumnPipelineGetBufferSize_16u_C3R),
        MEMBER(rvxiFilterColumnPipeline_32f_C1R, columnStageOfFloats, 1, rvxiFilterColumnPipelineGetBufferSize_32f_C1R),
        MEMBER(rvxiFilterColumnPipeline_32f_C3R, columnStageOfFloats, 3, rvxiFilterColumnPipelineGetBufferSize_32f_C3R),
        MEMBER(rvxiFilterColumnPipeline_Low_16s_C1R, columnStage, 1, rvxiFilterColumnPipelineGetBufferSize_Low_16s_C1R),
        MEMBER(rvxiFilterColumnPipeline_Low_16s_C3R, columnStage, 3, rvxiFilterColumnPipelineGetBufferSize_Low_16s_C3R),
        MEMBER(rvxiFilterColumnPipelineGetBufferSize_16s_C1R, pipelineSize),
        MEMBER(rvxiFilterColumnPipelineGetBufferSize_16s_C3R, pipelineSize),
        MEMBER(rvxiFilterColumnPipelineGetBufferSize_16s8u_C1R, pipelineSize),
        MEMBER(rvxiFilterColumnPipelineGetBufferSize_16s8u_C3R, pipelineSize),
        MEMBER(rvxiFilterColumnPipelineGetBufferSize_16s8s_C1R, pipelineSize),
        MEMBER(rvxiFilterColumnPipelineGetBufferSize_16s8s_C3R, pipelineSize),
        MEMBER(rvxiFilterColumnPipelineGetBufferSize_16u_C1R, pipelineSize),
        MEMBER(rvxiFilterColumnPipelineGetBufferSize_16u_C3R, pipelineSize),
        MEMBER(rvxiFilterColumnPipelineGetBufferSize_32f_C1R, pipelineSize),
        MEMBER(rvxiFilterColumnPipelineGetBufferSize_32f_C3R, pipelineSize),
        MEMBER(rvxiFilterColumnPipelineGetBufferSize_Low_16s_C1R, pipelineSize),
        MEMBER(rvxiFilterColumnPipelineGetBufferSize_Low_16s_C3R, pipelineSize),
        MEMBER(rvxiFilterSobelVertBorder_8u8s_C1R, maskedDivided, rvxiFilterSobelVertGetBufferSize_8u8s_C1R),
        MEMBER(rvxiFilterSobelHorizBorder_8u8s_C1R, maskedDivided, rvxiFilterSobelHorizGetBufferSize_8u8s_C1R),
        MEMBER(rvxiFilterSobelVertSecondBorder_8u8s_C1R, maskedDivided,
               rvxiFilterSobelVertSecondGetBufferSize_8u8s_C1R),
        MEMBER(rvxiFilterSobelHorizSecondBorder_8u8s_C1R, maskedDivided,
               rvxiFilterSobelHorizSecondGetBufferSize_8u8s_C1R),
        MEMBER(rvxiFilterSobelNegVertBorder_8u8s_C1R, maskedDivided, rvxiFilterSobelNegVertGetBufferSize_8u8s_C1R),
        MEMBER(rvxiFilterSobelCrossBorder_8u8s_C1R, maskedDivided, rvxiFilterSobelCrossGetBufferSize_8u8s_C1R),
        MEMBER(rvxiFilterSobelVertBorder_8u16s_C1R, masked, rvxiFilterSobelVertGetBufferSize_8u16s_C1R),
        MEMBER(rvxiFilterSobelHorizBorder_8u16s_C1R, masked, rvxiFilterSobelHorizGetBufferSize_8u16s_C1R),
        MEMBER(rvxiFilterSobelVertSecondBorder_8u16s_C1R, masked, rvxiFilterSobelVertSecondGetBufferSize_8u16s_C1R),
        MEMBER(rvxiFilterSobelHorizSecondBorder_8u16s_C1R, masked, rvxiFilterSobelHorizSecondGetBufferSize_8u16s_C1R),
        MEMBER(rvxiFilterSobelNegVertBorder_8u16s_C1R, masked, rvxiFilterSobelNegVertGetBufferSize_8u16s_C1R),
        MEMBER(rvxiFilterSobelCrossBorder_8u16s_C1R, masked, rvxiFilterSobelCrossGetBufferSize_8u16s_C1R),
        MEMBER(rvxiFilterSobelVertBorder_32f_C1R, masked, rvxiFilterSobelVertGetBufferSize_32f_C1R),
        MEMBER(rvxiFilterSobelHorizBorder_32f_C1R, masked, rvxiFilterSobelHorizGetBufferSize_32f_C1R),
        MEMBER(rvxiFilterSobelVertSecondBorder_32f_C1R, masked, rvxiFilterSobelVertSecondGetBufferSize_32f_C1R),
        MEMBER(rvxiFilterSobelHorizSecondBorder_32f_C1R, masked, rvxiFilterSobelHorizSecondGetBufferSize_32f_C1R),
        MEMBER(rvxiFilterSobelNegVertBorder_32f_C1R, masked, rvxiFilterSobelNegVertGetBufferSize_32f_C1R),
        MEMBER(rvxiFilterSobelCrossBorder_32f_C1R, masked, rvxiFilterSobelCrossGetBufferSize_32f_C1R),
        MEMBER(rvxiFilterSobelVertGetBufferSize_8u8s_C1R, maskSize),
        MEMBER(rvxiFilterSobelHorizGetBufferSize_8u8s_C1R, maskSize),
        MEMBER(rvxiFilterSobelVertSecondGetBufferSize_8u8s_C1R, maskSize),
        MEMBER(rvxiFilterSobelHorizSecondGetBufferSize_8u8s_C1R, maskSize),
        MEMBER(rvxiFilterSobelNegVertGetBufferSize_8u8s_C1R, maskSize),
        MEMBER(rvxiFilterSobelCrossGetBufferSize_8u8s_C1R, maskSize),
        MEMBER(rvxiFilterSobelVertGetBufferSize_8u16s_C1R, maskSize),
        MEMBER(rvxiFilterSobelHorizGetBufferSize_8u16s_C1R, maskSize),
        MEMBER(rvxiFilterSobelVertSecondGetBufferSize_8u16s_C1R, maskSize),
        MEMBER(rvxiFilterSobelHorizSecondGetBufferSize_8u16s_C1R, maskSize),
        MEMBER(rvxiFilterSobelNegVertGetBufferSize_8u16s_C1R, maskSize),
        MEMBER(rvxiFilterSobelCrossGetBufferSize_8u16s_C1R, maskSize),
        MEMBER(rvxiFilterSobelVertGetBufferSize_32f_C1R, maskSize),
        MEMBER(rvxiFilterSobelHorizGetBufferSize_32f_C1R, maskSize),
        MEMBER(rvxiFilterSobelVertSecondGetBufferSize_32f_C1R, maskSize),
        MEMBER(rvxiFilterSobelHorizSecondGetBufferSize_32f_C1R, maskSize),
        MEMBER(rvxiFilterSobelNegVertGetBufferSize_32f_C1R, maskSize),
        MEMBER(rvxiFilterSobelCrossGetBufferSize_32f_C1R, maskSize),
        MEMBER(rvxiFilterScharrVertBorder_8u8s_C1R, scharrDivided, rvxiFilterScharrVertGetBufferSize_8u8s_C1R),
        MEMBER(rvxiFilterScharrHorizBorder_8u8s_C1R, scharrDivided, rvxiFilterScharrHorizGetBufferSize_8u8s_C1R),
        MEMBER(rvxiFilterScharrVertBorder_8u16s_C1R, scharr, rvxiFilterScharrVertGetBufferSize_8u16s_C1R),
        MEMBER(rvxiFilterScharrHorizBorder_8u16s_C1R, scharr, rvxiFilterScharrHorizGetBufferSize_8u16s_C1R),
        MEMBER(rvxiFilterScharrVertBorder_32f_C1R, scharr, rvxiFilterScharrVertGetBufferSize_32f_C1R),
        MEMBER(rvxiFilterScharrHorizBorder_32f_C1R, scharr, rvxiFilterScharrHorizGetBufferSize_32f_C1R),
        MEMBER(rvxiFilterScharrVertGetBufferSize_8u8s_C1R, regionSize),
        MEMBER(rvxiFilterScharrHorizGetBufferSize_8u8s_C1R, regionSize),
        MEMBER(rvxiFilterScharrVertGetBufferSize_8u16s_C1R, regionSize),
        MEMBER(rvxiFilterScharrHorizGetBufferSize_8u16s_C1R, regionSize),
        MEMBER(rvxiFilterScharrVertGetBufferSize_32f_C1R, regionSize),
        MEMBER(rvxiFilterScharrHorizGetBufferSize_32f_C1R, regionSize),
        MEMBER(rvxiFilterLaplacianBorder_8u8s_C1R, maskedDivided, rvxiFilterLaplacianGetBufferSize_8u8s_C1R),
        MEMBER(rvxiFilterLaplacianBorder_8u16s_C1R, masked, rvxiFilterLaplacianGetBufferSize_8u16s_C1R),
        MEMBER(rvxiFilterLaplacianBorder_32f_C1R, masked, rvxiFilterLaplacianGetBufferSize_32f_C1R),
        MEMBER(rvxiFilterLaplacianGetBufferSize_8u8s_C1R, maskSize),
        MEMBER(rvxiFilterLaplacianGetBufferSize_8u16s_C1R, maskSize),
        MEMBER(rvxiFilterLaplacianGetBufferSize_32f_C1R, maskSize),
        MEMBER(rvxiFilterLowpassBorder_8u_C1R, masked, rvxiFilterLowpassGetBufferSize_8u_C1R),
        MEMBER(rvxiFilterLowpassBorder_32f_C1R, masked, rvxiFilterLowpassGetBufferSize_32f_C1R),
        MEMBER(rvxiFilterLowpassGetBufferSize_8u_C1R, maskSize),
        MEMBER(rvxiFilterLowpassGetBufferSize_32f_C1R, maskSize),
        MEMBER(rvxiGenSobelKernel_16s, sobelKernel),
        MEMBER(rvxiGenSobelKernel_32f, sobelKernel),
        MEMBER(rvxiFilterGaussianGetBufferSize, gaussianSizes),
        MEMBER(rvxiFilterGaussianInit, gaussianInit),
        MEMBER(rvxiFilterGaussianBorder_8u_C1R, gaussian, PixelType8u),
        MEMBER(rvxiFilterGaussianBorder_8u_C3R, gaussian, PixelType8u),
        MEMBER(rvxiFilterGaussianBorder_16u_C1R, gaussian, PixelType16u),
        MEMBER(rvxiFilterGaussianBorder_16u_C3R, gaussian, PixelType16u),
        MEMBER(rvxiFilterGaussianBorder_16s_C1R, gaussian, PixelType16s),
        MEMBER(rvxiFilterGaussianBorder_16s_C3R, gaussian, PixelType16s),
        MEMBER(rvxiFilterGaussianBorder_32f_C1R, gaussian, PixelType32f),
        MEMBER(rvxiFilterGaussianBorder_32f_C3R, gaussian, PixelType32f),
        MEMBER(rvxiFilterGaussGetBufferSize_32f_C1R, gaussSize),
        MEMBER(rvxiFilterGaussBorder_32f_C1R, gauss),
        MEMBER(rvxiGradientColorToGray_8u_C3C1R, colorGradient),
        MEMBER(rvxiGradientColorToGray_16u_C3C1R, colorGradient),
        MEMBER(rvxiGradientColorToGray_32f_C3C1R, colorGradient),
    };
    members.insert(members.end(), std::begin(table), std::end(table));
}

} // namespace contract
