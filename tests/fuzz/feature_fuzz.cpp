// Features: edges, corner measures, peaks, FAST corners, straight lines.
#include "planes.h"

#include <algorithm>

namespace {

using namespace fuzz;

void cannyBorder(Call &call, decltype(&rvxiCannyBorder_8u_C1R) member) {
    call.documented({StatusBadMaskSize, StatusBadArgument, StatusBadBorder});
    const RoiSize roi = call.in.roi();
    const auto filter = call.in.oneOf<std::int32_t>({CannyFilterSobel, CannyFilterScharr});
    const auto mask = call.in.oneOf<MaskCode>({Mask3x3, Mask5x5, Mask3x3});
    const BorderKind border = call.in.border({BorderReplicate, BorderConstant, BorderInMemory});
    const std::int64_t reach = mask == Mask5x5 ? 2 : 1;
    Image<const std::uint8_t> src(call.in, Shape{roi, 1, Margin::of(border, {reach, reach, reach, reach})});
    Image<std::uint8_t> dst(call.in, roi);
    Scratch buffer(call.in, call.size(rvxiCannyBorderGetSize, roi, filter, mask, PixelTypeCode{PixelType8u}));
    const std::uint8_t value = call.in.byte();
    const auto norm = call.in.oneOf<std::int32_t>({CannyNormL1, CannyNormL2});
    const float low = call.in.real(0, 200);
    call.run(member, src, dst, roi, filter, mask, border, value, norm, buffer, low, call.in.real(200, 900));
}

// Measures of the gradient covariance: of one image into one, or with a map between them.
using CovarianceSize = StatusCode (*)(RoiSize, std::int32_t, std::int32_t, std::int32_t *);
constexpr std::initializer_list<StatusCode> covarianceStatuses = {StatusBadArgument, StatusBadFilterKind,
                                                                  StatusOutOfRange, StatusInPlaceNotSupported};
template <class E> auto covarianceEnd(Call &call, std::int64_t scratch) {
    if constexpr (std::is_pointer_v<E>) {
        return Scratch(call.in, scratch);
    } else {
        return call.in.real(0, 1); // k or ratio
    }
}

template <class S, class... E>
void covariance(Call &call,
                StatusCode (*member)(const S *, std::int32_t, float *, std::int32_t, RoiSize, std::int32_t,
                                     std::int32_t, std::int32_t, E...),
                CovarianceSize sizeQuery) {
    call.documented(covarianceStatuses);
    const RoiSize roi = call.in.roi();
    // The codes of both ways to name a filter.
    const auto filter = call.in.oneOf<std::int32_t>({0, 1, DerivativeSobel, DerivativeScharr, DerivativeCentral});
    const auto aperture = call.in.oneOf<std::int32_t>({3, 5, 3}), block = call.in.oneOf<std::int32_t>({3, 5});
    const bool vectors = std::string_view(nameOf(member)).starts_with("rvxiEigenValsVecs");
    Image<const S> src(call.in, roi);
    Image<float> dst(call.in, roi, vectors ? 6 : 1);
    const std::int64_t scratch = call.size(sizeQuery, roi, aperture, block);
    [&](auto &&...end) {
        call.run(member, src, dst, roi, filter, aperture, block, end...);
    }(covarianceEnd<E>(call, scratch)...);
}

void lineSuppression(Call &call, decltype(&rvxiLineSuppression_8u_C1R) member) {
    call.documented(covarianceStatuses);
    const RoiSize roi = call.in.roi();
    const auto filter = call.in.oneOf<std::int32_t>({DerivativeSobel, DerivativeScharr, DerivativeCentral});
    const auto aperture = call.in.oneOf<std::int32_t>({3, 5, 3}), block = call.in.oneOf<std::int32_t>({3, 5});
    Image<const std::uint8_t> src(call.in, roi), map(call.in, roi);
    Image<std::uint8_t> dst(call.in, roi);
    Scratch buffer(call.in, call.size(rvxiLineSuppressionGetBufferSize_8u_C1R, roi, aperture, block));
    call.run(member, src, map, dst, roi, filter, aperture, block, call.in.real(0, 1), buffer);
}

// The room that a list of so many places in the region can use.
std::int64_t room(Call &call, std::int32_t capacity, RoiSize roi) {
    call.refuse(capacity < 1);
    const std::int64_t pixels = std::int64_t{std::max(roi.width, 0)} * std::max(roi.height, 0);
    return std::min<std::int64_t>(std::max(capacity, 0), std::min<std::int64_t>(pixels, 1 << 18));
}

template <class T>
void findPeaks(Call &call,
               StatusCode (*member)(const T *, std::int32_t, RoiSize, T, Point2i *, std::int32_t, std::int32_t *,
                                    std::int32_t, std::int32_t, std::uint8_t *),
               StatusCode (*sizeQuery)(std::int32_t, std::int32_t *)) {
    call.documented({StatusBadArgument});
    const RoiSize roi = call.in.roi();
    Image<const T> src(call.in, roi);
    const std::int32_t capacity = call.in.within(1, 100), border = call.in.within(1, 4);
    Array<Point2i> peaks(call.in, room(call, capacity, roi));
    Array<std::int32_t> count(1);
    Scratch buffer(call.in, call.size(sizeQuery, roi.width));
    const T threshold = call.in.any<T>();
    call.run(member, src, roi, threshold, peaks, capacity, count, call.in.oneOf<std::int32_t>({PeakSquare, PeakCross}),
             border, buffer);
}

void fastInit(Call &call, decltype(&rvxiFastNInit_8u_C1R) member) {
    call.documented({StatusBadArgument, StatusOutOfRange, StatusBadThreshold});
    Record<FastNSpec> spec(call.size(rvxiFastNGetSize_8u_C1R, 3, 9));
    const std::int32_t radius = call.in.within(1, 3), arc = call.in.within(5, 16), threshold = call.in.within(0, 200);
    call.run(member, radius, arc, threshold, call.in.within(0, 3), spec);
}

void fast(Call &call, decltype(&rvxiFastN_8u_C1R) member) {
    call.documented({StatusBadContext, StatusBadArgument, StatusOutOfRange, StatusBadThreshold});
    const std::int32_t radius = 1 + call.in.byte() % 3, points = 4 + 4 * radius;
    const std::int32_t arc = points / 2 + 1 + call.in.byte() % (points / 2);
    const std::int32_t threshold = call.in.byte();
    constexpr std::int32_t flags[] = {0, FastScore, FastScore | FastNonMax};
    Record<FastNSpec> spec(call.size(rvxiFastNGetSize_8u_C1R, radius, arc));
    if (call.run(rvxiFastNInit_8u_C1R, radius, arc, threshold, flags[call.in.byte() % 3], spec) < 0) {
        return;
    }
    const RoiSize roi = call.in.roi();
    Image<const std::uint8_t> src(call.in, roi);
    Image<std::uint8_t> dst(call.in, roi);
    Array<std::int32_t> count(1);
    Scratch buffer(call.in, call.size(rvxiFastNGetBufferSize_8u_C1R, roi));
    call.run(member, src, dst, roi, count, std::as_const(spec), buffer);
}

void fastToList(Call &call, decltype(&rvxiFastN2DToVec_8u_C1R) member) {
    call.documented({StatusResultTruncated});
    const RoiSize roi = call.in.roi();
    Image<const std::uint8_t> src(call.in, roi);
    const std::int32_t capacity = call.in.within(1, 100);
    Array<FastCorner> corners(call.in, room(call, capacity, roi));
    Array<std::int32_t> count(1);
    call.run(member, src, roi, corners, capacity, count);
}

// ---------------------------------------------------------------------------------------------------------- Hough
// lines

// Fine angles take time in proportion, and are no other case than coarse ones.
HoughResolution resolution(Call &call) {
    const HoughResolution r = {call.in.real(0.5F, 8), call.in.real(0.01F, 1)};
    if ((r.theta > 0 && r.theta < 0.01F) || (r.rho > 0 && r.rho < 0.05F)) {
        throw Abandon();
    }
    return r;
}

// Rows of any positive step: they may overlap.
constexpr std::int64_t anyStep = 1;

template <class... Region>
void houghLine(Call &call,
               StatusCode (*member)(const std::uint8_t *, std::int32_t, RoiSize, std::int32_t, HoughLine *,
                                    std::int32_t, std::int32_t *, std::uint8_t *, HoughResolution, Region...)) {
    call.documented({StatusBadArgument, StatusEmptyResult, StatusResultTruncated});
    call.failuresWrite(); // no line at all is told by a count of 0
    const RoiSize roi = call.in.roi();
    Image<const std::uint8_t> src(call.in, Shape{.roi = roi, .leastStep = anyStep});
    const std::int32_t threshold = call.in.within(1, 20), capacity = call.in.within(1, 30);
    call.refuse(capacity < 1);
    if (capacity > 1 << 16) {
        throw Abandon();
    }
    const HoughResolution step = resolution(call);
    Array<HoughLine> lines(capacity < 0 ? 0 : capacity);
    Array<std::int32_t> count(1);
    Scratch buffer(call.in, call.size(rvxiHoughLineGetSize_8u_C1R, roi, step, capacity));
    if constexpr (sizeof...(Region) == 1) {
        const float rho = call.in.real(-50, 50), theta = call.in.real(0, 3);
        Array<const HoughLine> region(
            std::vector<HoughLine>{{rho, theta}, {rho + call.in.real(0, 80), theta + call.in.real(0, 3)}});
        call.run(member, src, roi, threshold, lines, capacity, count, buffer, step, region);
    } else {
        call.run(member, src, roi, threshold, lines, capacity, count, buffer, step);
    }
}

void houghProbLine(Call &call, decltype(&rvxiHoughProbLine_8u32f_C1R) member) {
    call.documented({StatusBadArgument, StatusResultTruncated});
    const RoiSize roi = call.in.roi();
    Image<const std::uint8_t> src(call.in, Shape{.roi = roi, .leastStep = anyStep});
    const HoughResolution step = resolution(call);
    const auto sizes = call.sizes(rvxiHoughProbLineGetSize_8u_C1R, roi, step);
    Record<HoughProbLineSpec> spec(sizes.record, false);
    Scratch buffer(call.in, sizes.buffer);
    if (call.run(rvxiHoughProbLineInit_8u32f_C1R, roi, call.in.byte(), spec, step) < 0) {
        return;
    }
    const std::int32_t threshold = call.in.within(1, 20), length = call.in.within(1, 20), gap = call.in.within(0, 8);
    const std::int32_t capacity = call.in.within(1, 30);
    Array<Point2i> segments(2 * room(call, capacity, roi));
    Array<std::int32_t> count(1);
    call.run(member, src, roi, threshold, length, gap, segments, capacity, count, buffer, std::as_const(spec));
}

} // namespace

const std::vector<fuzz::Member> fuzz::members = {
    MEMBER(planes, rvxiCanny_16s8u_C1R, fuzz::ScratchOf{rvxiCannyGetSize}),
    MEMBER(planes, rvxiCanny_32f8u_C1R, fuzz::ScratchOf{rvxiCannyGetSize}),
    MEMBER(cannyBorder, rvxiCannyBorder_8u_C1R),
    MEMBER(query, rvxiCannyGetSize),
    MEMBER(query, rvxiCannyBorderGetSize),
    MEMBER(covariance, rvxiMinEigenVal_8u32f_C1R, rvxiMinEigenValGetBufferSize_8u32f_C1R),
    MEMBER(covariance, rvxiMinEigenVal_32f_C1R, rvxiMinEigenValGetBufferSize_32f_C1R),
    MEMBER(query, rvxiMinEigenValGetBufferSize_8u32f_C1R),
    MEMBER(query, rvxiMinEigenValGetBufferSize_32f_C1R),
    MEMBER(covariance, rvxiEigenValsVecs_8u32f_C1R, rvxiEigenValsVecsGetBufferSize_8u32f_C1R),
    MEMBER(covariance, rvxiEigenValsVecs_32f_C1R, rvxiEigenValsVecsGetBufferSize_32f_C1R),
    MEMBER(query, rvxiEigenValsVecsGetBufferSize_8u32f_C1R),
    MEMBER(query, rvxiEigenValsVecsGetBufferSize_32f_C1R),
    MEMBER(covariance, rvxiHarrisCorner_8u32f_C1R, rvxiHarrisCornerGetBufferSize_8u32f_C1R),
    MEMBER(covariance, rvxiHarrisCorner_32f_C1R, rvxiHarrisCornerGetBufferSize_32f_C1R),
    MEMBER(query, rvxiHarrisCornerGetBufferSize_8u32f_C1R),
    MEMBER(query, rvxiHarrisCornerGetBufferSize_32f_C1R),
    MEMBER(lineSuppression, rvxiLineSuppression_8u_C1R),
    MEMBER(query, rvxiLineSuppressionGetBufferSize_8u_C1R),
    MEMBER(findPeaks, rvxiFindPeaks3x3_32s_C1R, rvxiFindPeaks3x3GetBufferSize_32s_C1R),
    MEMBER(findPeaks, rvxiFindPeaks3x3_32f_C1R, rvxiFindPeaks3x3GetBufferSize_32f_C1R),
    MEMBER(query, rvxiFindPeaks3x3GetBufferSize_32s_C1R),
    MEMBER(query, rvxiFindPeaks3x3GetBufferSize_32f_C1R),
    MEMBER(query, rvxiFastNGetSize_8u_C1R),
    MEMBER(fastInit, rvxiFastNInit_8u_C1R),
    MEMBER(query, rvxiFastNGetBufferSize_8u_C1R),
    MEMBER(fast, rvxiFastN_8u_C1R),
    MEMBER(fastToList, rvxiFastN2DToVec_8u_C1R),
    MEMBER(houghLine, rvxiHoughLine_8u32f_C1R),
    MEMBER(houghLine, rvxiHoughLine_Region_8u32f_C1R),
    MEMBER(query, rvxiHoughLineGetSize_8u_C1R),
    MEMBER(houghProbLine, rvxiHoughProbLine_8u32f_C1R),
    MEMBER(query, rvxiHoughProbLineGetSize_8u_C1R),
};
