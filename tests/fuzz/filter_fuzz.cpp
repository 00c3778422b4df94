// Linear filters: the separable pipeline, derivatives and low-pass filters, the Gaussian, colour gradients.
#include "planes.h"

namespace {

using namespace fuzz;

// ------------------------------------------------------------------------------------------------------------ pipeline

// Rows of an image as a list of pointers. The list is read before steps are checked.
template <class T> std::vector<T *> rowPointers(Image<T> &image, std::int64_t count, bool entitled) {
    if (count > 512) {
        throw Abandon();
    }
    image.bind(entitled);
    std::vector<T *> rows;
    for (std::int64_t y = 0; y < count; ++y) {
        const auto address = reinterpret_cast<std::uintptr_t>(image.data());
        rows.push_back(reinterpret_cast<T *>(address + static_cast<std::uintptr_t>(entitled ? y * image.step() : 0)));
    }
    return rows;
}

// A border value: a number, or three of them.
template <class V> auto borderValue(Call &call) {
    if constexpr (std::is_pointer_v<V>) {
        return Array<std::remove_pointer_t<V>>(call.in, 3);
    } else {
        return call.in.any<V>();
    }
}

// The divisor where there is one, and the scratch.
template <class R> auto pipelineEnd(Call &call, std::int64_t scratch) {
    if constexpr (std::is_pointer_v<R>) {
        return Scratch(call.in, scratch);
    } else {
        return call.in.oneOf<R>({1, 2, 16, -3, 4096, 0});
    }
}

std::int32_t taps(Call &call) {
    const std::int32_t count = call.in.within(1, 20);
    if (count > 4096) {
        throw Abandon();
    }
    call.refuse(count < 1);
    return count;
}

template <class S, class D, class K, class V, class... R>
void rowStage(Call &call,
              StatusCode (*member)(const S *, std::int32_t, D *const *, RoiSize, const K *, std::int32_t, std::int32_t,
                                   BorderKind, V, R...),
              StatusCode (*sizeQuery)(RoiSize, std::int32_t, std::int32_t *)) {
    call.documented({StatusBadArgument, StatusBadAnchor});
    const std::int64_t channels = channelsOf(member);
    const RoiSize roi = call.in.roi();
    const std::int32_t count = taps(call), anchor = call.in.within(0, count < 1 || count > 200 ? 0 : count - 1);
    call.refuse(anchor < 0 || anchor >= count);
    const bool inside = anchor >= 0 && anchor < count;
    const BorderKind border = call.in.border({BorderReplicate, BorderConstant, BorderInMemory});
    Margin reach;
    if (inside) {
        reach = {anchor, 0, count - 1 - anchor, 0};
    }
    Image<const S> src(call.in, Shape{roi, channels, Margin::of(border, reach)});
    Image<D> rows(call.in, Shape{.roi = roi, .channels = channels, .unseen = true});
    const bool entitled = src.legal() && rows.legal() && inside;
    call.refuse(!entitled);
    Array<D *const> list(rowPointers(rows, roi.width < 1 ? 0 : roi.height, entitled));
    call.watch(rows);
    Array<const K> kernel(call.in, count);
    const std::int64_t scratch = call.size(sizeQuery, roi, count);
    auto value = borderValue<V>(call);
    [&](auto &&...end) {
        call.run(member, src, list, roi, kernel, count, anchor, border, value, end...);
    }(pipelineEnd<R>(call, scratch)...);
}

template <class S, class D, class K, class... R>
void columnStage(Call &call,
                 StatusCode (*member)(const S *const *, D *, std::int32_t, RoiSize, const K *, std::int32_t, R...),
                 StatusCode (*sizeQuery)(RoiSize, std::int32_t, std::int32_t *)) {
    call.documented({StatusBadArgument});
    const std::int64_t channels = channelsOf(member);
    const RoiSize roi = call.in.roi();
    const std::int32_t count = taps(call);
    const std::int64_t rowCount = std::int64_t{roi.height} + count - 1;
    Image<D> dst(call.in, roi, channels);
    if (roi.height > 512) {
        throw Abandon();
    }
    const RoiSize read = {roi.width, static_cast<std::int32_t>(rowCount)};
    Image<const S> rows(call.in, Shape{.roi = read, .channels = channels, .unseen = true});
    const bool entitled = dst.legal() && rows.legal();
    call.refuse(!entitled);
    Array<const S *const> list(rowPointers(rows, roi.width < 1 || roi.height < 1 ? 0 : rowCount, entitled));
    call.watch(rows);
    Array<const K> kernel(call.in, count);
    const std::int64_t scratch = call.size(sizeQuery, roi, count);
    [&](auto &&...end) { call.run(member, list, dst, roi, kernel, count, end...); }(pipelineEnd<R>(call, scratch)...);
}

// -------------------------------------------------------------------------------------------------------- fixed
// filters

constexpr std::initializer_list<BorderKind> fixedBorders = {BorderReplicate, BorderConstant,     BorderWrap,
                                                            BorderMirror,    BorderMirrorRepeat, BorderInMemory};

template <class S, class D, class V, class... R>
void fixedFilter(Call &call,
                 StatusCode (*member)(const S *, std::int32_t, D *, std::int32_t, RoiSize, MaskCode, BorderKind, V,
                                      R...),
                 StatusCode (*sizeQuery)(RoiSize, MaskCode, std::int32_t *)) {
    call.documented({StatusBadArgument, StatusBadMaskSize});
    const RoiSize roi = call.in.roi();
    const MaskCode mask = call.in.oneOf<MaskCode>({Mask3x3, Mask5x5});
    const BorderKind border = call.in.border(fixedBorders);
    const std::int64_t reach = mask == Mask5x5 ? 2 : 1;
    Image<const S> src(call.in, Shape{roi, 1, Margin::of(border, {reach, reach, reach, reach})});
    Image<D> dst(call.in, roi);
    const std::int64_t scratch = call.size(sizeQuery, roi, mask);
    const V value = call.in.any<V>();
    [&](auto &&...end) {
        call.run(member, src, dst, roi, mask, border, value, end...);
    }(pipelineEnd<R>(call, scratch)...);
}

template <class S, class D, class V, class... R>
void fixedFilter(Call &call,
                 StatusCode (*member)(const S *, std::int32_t, D *, std::int32_t, RoiSize, BorderKind, V, R...),
                 StatusCode (*sizeQuery)(RoiSize, std::int32_t *)) {
    call.documented({StatusBadArgument});
    const RoiSize roi = call.in.roi();
    const BorderKind border = call.in.border(fixedBorders);
    Image<const S> src(call.in, Shape{roi, 1, Margin::of(border, {1, 1, 1, 1})});
    Image<D> dst(call.in, roi);
    const std::int64_t scratch = call.size(sizeQuery, roi);
    const V value = call.in.any<V>();
    [&](auto &&...end) { call.run(member, src, dst, roi, border, value, end...); }(pipelineEnd<R>(call, scratch)...);
}

template <class T> void sobelKernel(Call &call, StatusCode (*member)(T *, std::int32_t, std::int32_t, std::int32_t)) {
    const std::int32_t n = 1 + 2 * call.in.within(0, 15) - call.in.byte() / 240;
    if (n > 400 && n % 2 == 1) {
        throw Abandon();
    }
    const std::int32_t order = call.in.within(0, 6);
    call.refuse(n < 1 || n % 2 == 0 || order < 0 || order >= n);
    Array<T> dst(call.in, n < 1 ? 0 : n);
    call.run(member, dst, n, order, call.in.oneOf<std::int32_t>({1, -1, 0}));
}

// -------------------------------------------------------------------------------------------------------------
// Gaussian

template <class T> constexpr PixelTypeCode typeCode() {
    return std::is_same_v<T, std::uint8_t>    ? PixelType8u
           : std::is_same_v<T, std::uint16_t> ? PixelType16u
           : std::is_same_v<T, std::int16_t>  ? PixelType16s
                                              : PixelType32f;
}

template <class T, class V>
void gaussian(Call &call, StatusCode (*member)(const T *, std::int32_t, T *, std::int32_t, RoiSize, V,
                                               const GaussianSpec *, std::uint8_t *)) {
    call.documented({StatusBadArgument, StatusBadDataType, StatusBadChannelLayout, StatusBadBorder});
    const std::int32_t channels = channelsOf(member);
    const RoiSize roi = call.in.roi();
    const std::int32_t size = 3 + 2 * (call.in.byte() % 8) - (call.in.byte() >= 250 ? 1 : 0);
    const auto type = call.in.oneOf<PixelTypeCode>({typeCode<T>(), typeCode<T>(), typeCode<T>(), PixelType32f});
    const BorderKind border = call.in.border({BorderReplicate, BorderConstant, BorderInMemory});
    const std::int64_t reach = size / 2;
    const auto sizes = call.sizes(rvxiFilterGaussianGetBufferSize, roi, size, type, channels);
    Record<GaussianSpec> spec(sizes.record, false);
    Scratch buffer(call.in, sizes.buffer);
    Image<const T> src(call.in, Shape{roi, channels, Margin::of(border, {reach, reach, reach, reach})});
    Image<T> dst(call.in, roi, channels);
    if (call.run(rvxiFilterGaussianInit, roi, size, border, type, channels, spec, buffer, call.in.real(0.1F, 9)) < 0) {
        return;
    }
    call.nullsAllowed();
    auto value = borderValue<V>(call);
    call.run(member, src, dst, roi, value, std::as_const(spec), buffer);
}

void gaussInOne(Call &call, decltype(&rvxiFilterGaussBorder_32f_C1R) member) {
    call.documented({StatusBadArgument, StatusBadBorder});
    const RoiSize roi = call.in.roi();
    const std::int32_t size = 3 + 2 * (call.in.byte() % 8) - (call.in.byte() >= 250 ? 1 : 0);
    const BorderKind border = call.in.border({BorderReplicate, BorderConstant, BorderInMemory});
    const std::int64_t reach = size / 2;
    Scratch buffer(call.in, call.size(rvxiFilterGaussGetBufferSize_32f_C1R, roi, size));
    Image<const float> src(call.in, Shape{roi, 1, Margin::of(border, {reach, reach, reach, reach})});
    Image<float> dst(call.in, roi);
    const float sigma = call.in.real(0.1F, 9);
    call.run(member, src, dst, roi, size, border, buffer, sigma, call.in.any<float>());
}

} // namespace

const std::vector<fuzz::Member> fuzz::members = {
    MEMBER(rowStage, rvxiFilterRowBorderPipeline_16s_C1R, rvxiFilterRowBorderPipelineGetBufferSize_16s_C1R),
    MEMBER(rowStage, rvxiFilterRowBorderPipeline_16s_C3R, rvxiFilterRowBorderPipelineGetBufferSize_16s_C3R),
    MEMBER(rowStage, rvxiFilterRowBorderPipeline_16u_C1R, rvxiFilterRowBorderPipelineGetBufferSize_16u_C1R),
    MEMBER(rowStage, rvxiFilterRowBorderPipeline_16u_C3R, rvxiFilterRowBorderPipelineGetBufferSize_16u_C3R),
    MEMBER(rowStage, rvxiFilterRowBorderPipeline_8u16s_C1R, rvxiFilterRowBorderPipelineGetBufferSize_8u16s_C1R),
    MEMBER(rowStage, rvxiFilterRowBorderPipeline_8u16s_C3R, rvxiFilterRowBorderPipelineGetBufferSize_8u16s_C3R),
    MEMBER(rowStage, rvxiFilterRowBorderPipeline_32f_C1R, rvxiFilterRowBorderPipelineGetBufferSize_32f_C1R),
    MEMBER(rowStage, rvxiFilterRowBorderPipeline_32f_C3R, rvxiFilterRowBorderPipelineGetBufferSize_32f_C3R),
    MEMBER(rowStage, rvxiFilterRowBorderPipeline_Low_16s_C1R, rvxiFilterRowBorderPipelineGetBufferSize_Low_16s_C1R),
    MEMBER(rowStage, rvxiFilterRowBorderPipeline_Low_16s_C3R, rvxiFilterRowBorderPipelineGetBufferSize_Low_16s_C3R),
    MEMBER(query, rvxiFilterRowBorderPipelineGetBufferSize_16s_C1R),
    MEMBER(query, rvxiFilterRowBorderPipelineGetBufferSize_16s_C3R),
    MEMBER(query, rvxiFilterRowBorderPipelineGetBufferSize_16u_C1R),
    MEMBER(query, rvxiFilterRowBorderPipelineGetBufferSize_16u_C3R),
    MEMBER(query, rvxiFilterRowBorderPipelineGetBufferSize_8u16s_C1R),
    MEMBER(query, rvxiFilterRowBorderPipelineGetBufferSize_8u16s_C3R),
    MEMBER(query, rvxiFilterRowBorderPipelineGetBufferSize_32f_C1R),
    MEMBER(query, rvxiFilterRowBorderPipelineGetBufferSize_32f_C3R),
    MEMBER(query, rvxiFilterRowBorderPipelineGetBufferSize_Low_16s_C1R),
    MEMBER(query, rvxiFilterRowBorderPipelineGetBufferSize_Low_16s_C3R),
    MEMBER(columnStage, rvxiFilterColumnPipeline_16s_C1R, rvxiFilterColumnPipelineGetBufferSize_16s_C1R),
    MEMBER(columnStage, rvxiFilterColumnPipeline_16s_C3R, rvxiFilterColumnPipelineGetBufferSize_16s_C3R),
    MEMBER(columnStage, rvxiFilterColumnPipeline_16s8u_C1R, rvxiFilterColumnPipelineGetBufferSize_16s8u_C1R),
    MEMBER(columnStage, rvxiFilterColumnPipeline_16s8u_C3R, rvxiFilterColumnPipelineGetBufferSize_16s8u_C3R),
    MEMBER(columnStage, rvxiFilterColumnPipeline_16s8s_C1R, rvxiFilterColumnPipelineGetBufferSize_16s8s_C1R),
    MEMBER(columnStage, rvxiFilterColumnPipeline_16s8s_C3R, rvxiFilterColumnPipelineGetBufferSize_16s8s_C3R),
    MEMBER(columnStage, rvxiFilterColumnPipeline_16u_C1R, rvxiFilterColumnPipelineGetBufferSize_16u_C1R),
    MEMBER(columnStage, rvxiFilterColumnPipeline_16u_C3R, rvxiFilterColumnPipelineGetBufferSize_16u_C3R),
    MEMBER(columnStage, rvxiFilterColumnPipeline_32f_C1R, rvxiFilterColumnPipelineGetBufferSize_32f_C1R),
    MEMBER(columnStage, rvxiFilterColumnPipeline_32f_C3R, rvxiFilterColumnPipelineGetBufferSize_32f_C3R),
    MEMBER(columnStage, rvxiFilterColumnPipeline_Low_16s_C1R, rvxiFilterColumnPipelineGetBufferSize_Low_16s_C1R),
    MEMBER(columnStage, rvxiFilterColumnPipeline_Low_16s_C3R, rvxiFilterColumnPipelineGetBufferSize_Low_16s_C3R),
    MEMBER(query, rvxiFilterColumnPipelineGetBufferSize_16s_C1R),
    MEMBER(query, rvxiFilterColumnPipelineGetBufferSize_16s_C3R),
    MEMBER(query, rvxiFilterColumnPipelineGetBufferSize_16s8u_C1R),
    MEMBER(query, rvxiFilterColumnPipelineGetBufferSize_16s8u_C3R),
    MEMBER(query, rvxiFilterColumnPipelineGetBufferSize_16s8s_C1R),
    MEMBER(query, rvxiFilterColumnPipelineGetBufferSize_16s8s_C3R),
    MEMBER(query, rvxiFilterColumnPipelineGetBufferSize_16u_C1R),
    MEMBER(query, rvxiFilterColumnPipelineGetBufferSize_16u_C3R),
    MEMBER(query, rvxiFilterColumnPipelineGetBufferSize_32f_C1R),
    MEMBER(query, rvxiFilterColumnPipelineGetBufferSize_32f_C3R),
    MEMBER(query, rvxiFilterColumnPipelineGetBufferSize_Low_16s_C1R),
    MEMBER(query, rvxiFilterColumnPipelineGetBufferSize_Low_16s_C3R),
    MEMBER(fixedFilter, rvxiFilterSobelVertBorder_8u8s_C1R, rvxiFilterSobelVertGetBufferSize_8u8s_C1R),
    MEMBER(fixedFilter, rvxiFilterSobelHorizBorder_8u8s_C1R, rvxiFilterSobelHorizGetBufferSize_8u8s_C1R),
    MEMBER(fixedFilter, rvxiFilterSobelVertSecondBorder_8u8s_C1R, rvxiFilterSobelVertSecondGetBufferSize_8u8s_C1R),
    MEMBER(fixedFilter, rvxiFilterSobelHorizSecondBorder_8u8s_C1R, rvxiFilterSobelHorizSecondGetBufferSize_8u8s_C1R),
    MEMBER(fixedFilter, rvxiFilterSobelNegVertBorder_8u8s_C1R, rvxiFilterSobelNegVertGetBufferSize_8u8s_C1R),
    MEMBER(fixedFilter, rvxiFilterSobelCrossBorder_8u8s_C1R, rvxiFilterSobelCrossGetBufferSize_8u8s_C1R),
    MEMBER(fixedFilter, rvxiFilterSobelVertBorder_8u16s_C1R, rvxiFilterSobelVertGetBufferSize_8u16s_C1R),
    MEMBER(fixedFilter, rvxiFilterSobelHorizBorder_8u16s_C1R, rvxiFilterSobelHorizGetBufferSize_8u16s_C1R),
    MEMBER(fixedFilter, rvxiFilterSobelVertSecondBorder_8u16s_C1R, rvxiFilterSobelVertSecondGetBufferSize_8u16s_C1R),
    MEMBER(fixedFilter, rvxiFilterSobelHorizSecondBorder_8u16s_C1R, rvxiFilterSobelHorizSecondGetBufferSize_8u16s_C1R),
    MEMBER(fixedFilter, rvxiFilterSobelNegVertBorder_8u16s_C1R, rvxiFilterSobelNegVertGetBufferSize_8u16s_C1R),
    MEMBER(fixedFilter, rvxiFilterSobelCrossBorder_8u16s_C1R, rvxiFilterSobelCrossGetBufferSize_8u16s_C1R),
    MEMBER(fixedFilter, rvxiFilterSobelVertBorder_32f_C1R, rvxiFilterSobelVertGetBufferSize_32f_C1R),
    MEMBER(fixedFilter, rvxiFilterSobelHorizBorder_32f_C1R, rvxiFilterSobelHorizGetBufferSize_32f_C1R),
    MEMBER(fixedFilter, rvxiFilterSobelVertSecondBorder_32f_C1R, rvxiFilterSobelVertSecondGetBufferSize_32f_C1R),
    MEMBER(fixedFilter, rvxiFilterSobelHorizSecondBorder_32f_C1R, rvxiFilterSobelHorizSecondGetBufferSize_32f_C1R),
    MEMBER(fixedFilter, rvxiFilterSobelNegVertBorder_32f_C1R, rvxiFilterSobelNegVertGetBufferSize_32f_C1R),
    MEMBER(fixedFilter, rvxiFilterSobelCrossBorder_32f_C1R, rvxiFilterSobelCrossGetBufferSize_32f_C1R),
    MEMBER(query, rvxiFilterSobelVertGetBufferSize_8u8s_C1R),
    MEMBER(query, rvxiFilterSobelHorizGetBufferSize_8u8s_C1R),
    MEMBER(query, rvxiFilterSobelVertSecondGetBufferSize_8u8s_C1R),
    MEMBER(query, rvxiFilterSobelHorizSecondGetBufferSize_8u8s_C1R),
    MEMBER(query, rvxiFilterSobelNegVertGetBufferSize_8u8s_C1R),
    MEMBER(query, rvxiFilterSobelCrossGetBufferSize_8u8s_C1R),
    MEMBER(query, rvxiFilterSobelVertGetBufferSize_8u16s_C1R),
    MEMBER(query, rvxiFilterSobelHorizGetBufferSize_8u16s_C1R),
    MEMBER(query, rvxiFilterSobelVertSecondGetBufferSize_8u16s_C1R),
    MEMBER(query, rvxiFilterSobelHorizSecondGetBufferSize_8u16s_C1R),
    MEMBER(query, rvxiFilterSobelNegVertGetBufferSize_8u16s_C1R),
    MEMBER(query, rvxiFilterSobelCrossGetBufferSize_8u16s_C1R),
    MEMBER(query, rvxiFilterSobelVertGetBufferSize_32f_C1R),
    MEMBER(query, rvxiFilterSobelHorizGetBufferSize_32f_C1R),
    MEMBER(query, rvxiFilterSobelVertSecondGetBufferSize_32f_C1R),
    MEMBER(query, rvxiFilterSobelHorizSecondGetBufferSize_32f_C1R),
    MEMBER(query, rvxiFilterSobelNegVertGetBufferSize_32f_C1R),
    MEMBER(query, rvxiFilterSobelCrossGetBufferSize_32f_C1R),
    MEMBER(fixedFilter, rvxiFilterScharrVertBorder_8u8s_C1R, rvxiFilterScharrVertGetBufferSize_8u8s_C1R),
    MEMBER(fixedFilter, rvxiFilterScharrHorizBorder_8u8s_C1R, rvxiFilterScharrHorizGetBufferSize_8u8s_C1R),
    MEMBER(fixedFilter, rvxiFilterScharrVertBorder_8u16s_C1R, rvxiFilterScharrVertGetBufferSize_8u16s_C1R),
    MEMBER(fixedFilter, rvxiFilterScharrHorizBorder_8u16s_C1R, rvxiFilterScharrHorizGetBufferSize_8u16s_C1R),
    MEMBER(fixedFilter, rvxiFilterScharrVertBorder_32f_C1R, rvxiFilterScharrVertGetBufferSize_32f_C1R),
    MEMBER(fixedFilter, rvxiFilterScharrHorizBorder_32f_C1R, rvxiFilterScharrHorizGetBufferSize_32f_C1R),
    MEMBER(query, rvxiFilterScharrVertGetBufferSize_8u8s_C1R),
    MEMBER(query, rvxiFilterScharrHorizGetBufferSize_8u8s_C1R),
    MEMBER(query, rvxiFilterScharrVertGetBufferSize_8u16s_C1R),
    MEMBER(query, rvxiFilterScharrHorizGetBufferSize_8u16s_C1R),
    MEMBER(query, rvxiFilterScharrVertGetBufferSize_32f_C1R),
    MEMBER(query, rvxiFilterScharrHorizGetBufferSize_32f_C1R),
    MEMBER(fixedFilter, rvxiFilterLaplacianBorder_8u8s_C1R, rvxiFilterLaplacianGetBufferSize_8u8s_C1R),
    MEMBER(fixedFilter, rvxiFilterLaplacianBorder_8u16s_C1R, rvxiFilterLaplacianGetBufferSize_8u16s_C1R),
    MEMBER(fixedFilter, rvxiFilterLaplacianBorder_32f_C1R, rvxiFilterLaplacianGetBufferSize_32f_C1R),
    MEMBER(query, rvxiFilterLaplacianGetBufferSize_8u8s_C1R),
    MEMBER(query, rvxiFilterLaplacianGetBufferSize_8u16s_C1R),
    MEMBER(query, rvxiFilterLaplacianGetBufferSize_32f_C1R),
    MEMBER(fixedFilter, rvxiFilterLowpassBorder_8u_C1R, rvxiFilterLowpassGetBufferSize_8u_C1R),
    MEMBER(fixedFilter, rvxiFilterLowpassBorder_32f_C1R, rvxiFilterLowpassGetBufferSize_32f_C1R),
    MEMBER(query, rvxiFilterLowpassGetBufferSize_8u_C1R),
    MEMBER(query, rvxiFilterLowpassGetBufferSize_32f_C1R),
    MEMBER(sobelKernel, rvxiGenSobelKernel_16s),
    MEMBER(sobelKernel, rvxiGenSobelKernel_32f),
    MEMBER(query, rvxiFilterGaussianGetBufferSize),
    MEMBER(gaussian, rvxiFilterGaussianBorder_8u_C1R),
    MEMBER(gaussian, rvxiFilterGaussianBorder_8u_C3R),
    MEMBER(gaussian, rvxiFilterGaussianBorder_16u_C1R),
    MEMBER(gaussian, rvxiFilterGaussianBorder_16u_C3R),
    MEMBER(gaussian, rvxiFilterGaussianBorder_16s_C1R),
    MEMBER(gaussian, rvxiFilterGaussianBorder_16s_C3R),
    MEMBER(gaussian, rvxiFilterGaussianBorder_32f_C1R),
    MEMBER(gaussian, rvxiFilterGaussianBorder_32f_C3R),
    MEMBER(query, rvxiFilterGaussGetBufferSize_32f_C1R),
    MEMBER(gaussInOne, rvxiFilterGaussBorder_32f_C1R),
    MEMBER(planes, rvxiGradientColorToGray_8u_C3C1R),
    MEMBER(planes, rvxiGradientColorToGray_16u_C3C1R),
    MEMBER(planes, rvxiGradientColorToGray_32f_C3C1R),
};
