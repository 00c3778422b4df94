// Edges, corner measures, peaks, FAST corners and lines.
#include "contract/contract.h"

#include <limits>

namespace contract {
namespace {

const float notANumber = std::numeric_limits<float>::quiet_NaN();

void regionSize(Run &run, StatusCode (*query)(RoiSize, std::int32_t *)) { sizes(run, query, queryRegions()); }

// -------------------------------------------------------------------------------------------------------------- Canny

struct Thresholds {
    float low, high;
};
const std::vector<Thresholds> badThresholds = {{-1, 5}, {9, 5}};

template <class T>
void canny(Run &run, StatusCode (*f)(const T *, std::int32_t, const T *, std::int32_t, std::uint8_t *, std::int32_t,
                                     RoiSize, float, float, std::uint8_t *)) {
    Sweep sweep(run);
    Choice<Thresholds> thresholds(sweep, {{20, 45}, {0, 0}, {12, 30}, {33.25F, 40.5F}, {40.25F, 3000}}, badThresholds);
    // Half of the calls on derivatives of a kind, half on anything.
    const Picture picture = [](std::int64_t x, std::int64_t y, std::uint64_t seed) {
        return hills(x + 1, y, seed) - hills(x, y + 1, seed ^ 3);
    };
    Image<const T> dx(sweep, {.contents = finite}), dy(sweep, {.contents = finite}),
        slopeX(sweep, {.picture = picture, .faults = false}), slopeY(sweep, {.picture = picture, .faults = false});
    Image<std::uint8_t> dst(sweep);
    Region roi(sweep);
    Bytes buffer(sweep);
    sweep.before = [&] {
        std::int32_t size = 0;
        rvxiCannyGetSize(sweep.roi(), &size);
        buffer.size(size);
    };
    sweep.run([&] {
        const Thresholds t = thresholds;
        return sweep.turn() % 2 != 0 && !sweep.faulty()
                   ? f(slopeX, slopeX.step, slopeY, slopeY.step, dst, dst.step, roi, t.low, t.high, buffer)
                   : f(dx, dx.step, dy, dy.step, dst, dst.step, roi, t.low, t.high, buffer);
    });
}

struct CannyFilter {
    std::int32_t filter;
    MaskCode mask;
};

void cannyBorder(Run &run, StatusCode (*f)(const std::uint8_t *, std::int32_t, std::uint8_t *, std::int32_t, RoiSize,
                                           std::int32_t, MaskCode, BorderKind, std::uint8_t, std::int32_t,
                                           std::uint8_t *, float, float)) {
    Sweep sweep(run);
    Choice<CannyFilter> filter(sweep,
                               {{CannyFilterSobel, Mask3x3}, {CannyFilterSobel, Mask5x5}, {CannyFilterScharr, Mask3x3}},
                               {{CannyFilterScharr, Mask5x5}, {CannyFilterSobel, 7}, {1, Mask3x3}});
    Choice<std::int32_t> norm(sweep, {CannyNormL1, CannyNormL2}, {0, 3});
    Choice<BorderKind> border(sweep, bordersOf({BorderConstant, BorderReplicate}), {BorderMirror, 7});
    Choice<Thresholds> thresholds(sweep, {{60, 200}, {0, 0}, {45, 90}, {150.5F, 700.25F}}, badThresholds);
    Image<const std::uint8_t> src(sweep, {.picture = run.next() % 2 != 0 ? hills : blocks, .margin = [&] {
                                              return inMemory(border, filter.value().mask == Mask5x5 ? 2 : 1);
                                          }});
    Image<std::uint8_t> dst(sweep);
    Region roi(sweep);
    Bytes buffer(sweep);
    sweep.before = [&] {
        std::int32_t size = 0;
        rvxiCannyBorderGetSize(sweep.roi(), filter.value().filter, filter.value().mask, PixelType8u, &size);
        buffer.size(size);
    };
    sweep.run([&] {
        return f(src, src.step, dst, dst.step, roi, filter.value().filter, filter.value().mask, border, 130, norm,
                 buffer, thresholds.value().low, thresholds.value().high);
    });
}

void cannyBorderSize(Run &run, StatusCode (*query)(RoiSize, std::int32_t, MaskCode, PixelTypeCode, std::int32_t *)) {
    sizes(run, query, queryRegions(), std::vector<std::int32_t>{CannyFilterSobel, CannyFilterScharr, 0},
          std::vector<MaskCode>{Mask3x3, Mask5x5, 0, 34}, std::vector<PixelTypeCode>{PixelType8u, PixelType32f});
}

// ------------------------------------------------------------------------------------------------ gradient covariance

using BlockQuery = StatusCode (*)(RoiSize, std::int32_t, std::int32_t, std::int32_t *);

struct Covariance {
    std::int32_t filter, aperture, block;
};
const std::vector<Covariance> covariances = {{MinEigenValSobel, 3, 3},  {MinEigenValSobel, 5, 3},
                                             {MinEigenValScharr, 3, 3}, {MinEigenValSobel, 3, 5},
                                             {MinEigenValSobel, 5, 5},  {MinEigenValScharr, 3, 5}},
                              badCovariances = {{2, 3, 3},
                                                {MinEigenValScharr, 5, 3},
                                                {MinEigenValSobel, 4, 3},
                                                {MinEigenValSobel, 3, 4},
                                                {7, 4, 4}};
const std::vector<Covariance> filterCovariances = {{DerivativeSobel, 3, 3},   {DerivativeSobel, 5, 3},
                                                   {DerivativeScharr, 3, 3},  {DerivativeCentral, 3, 3},
                                                   {DerivativeSobel, 3, 5},   {DerivativeSobel, 5, 5},
                                                   {DerivativeCentral, 3, 5}, {DerivativeScharr, 3, 5}},
                              badFilterCovariances = {{3, 3, 3},
                                                      {DerivativeScharr, 5, 3},
                                                      {DerivativeSobel, 4, 3},
                                                      {DerivativeCentral, 5, 5},
                                                      {DerivativeSobel, 3, 7},
                                                      {0, 4, 4}};

void blockSize(Run &run, BlockQuery query) {
    sizes(run, query, queryRegions(), std::vector<std::int32_t>{3, 5, 4, 0}, std::vector<std::int32_t>{3, 5, 7, 0});
}

// The smaller eigenvalue; all of them and their vectors.
template <class S>
void eigen(Run &run,
           StatusCode (*f)(const S *, std::int32_t, float *, std::int32_t, RoiSize, std::int32_t, std::int32_t,
                           std::int32_t, std::uint8_t *),
           int floats, BlockQuery query) {
    Sweep sweep(run);
    Choice<Covariance> how(sweep, covariances, badCovariances);
    Image<const S> src(sweep);
    Image<float> dst(sweep, {.channels = floats});
    Region roi(sweep);
    Bytes buffer(sweep);
    sweep.before = [&] {
        std::int32_t size = 0;
        query(sweep.roi(), how.value().aperture, how.value().block, &size);
        buffer.size(size);
    };
    sweep.run([&] {
        return f(src, src.step, dst, dst.step, roi, how.value().filter, how.value().aperture, how.value().block,
                 buffer);
    });
}

template <class S>
void harris(Run &run,
            StatusCode (*f)(const S *, std::int32_t, float *, std::int32_t, RoiSize, std::int32_t, std::int32_t,
                            std::int32_t, float, std::uint8_t *),
            BlockQuery query) {
    Sweep sweep(run);
    Choice<Covariance> how(sweep, filterCovariances, badFilterCovariances);
    Choice<float> k(sweep, {0.04F, 0.15F, 0.01F}, {-1, notANumber});
    Choice<bool> inPlace(sweep, {false}, {true});
    Image<const S> src(sweep);
    Image<float> dst(sweep);
    Region roi(sweep);
    Bytes buffer(sweep);
    sweep.before = [&] {
        std::int32_t size = 0;
        query(sweep.roi(), how.value().aperture, how.value().block, &size);
        buffer.size(size);
    };
    sweep.run([&] {
        const S *const from = inPlace ? reinterpret_cast<const S *>(static_cast<float *>(dst)) : src;
        return f(from, src.step, dst, dst.step, roi, how.value().filter, how.value().aperture, how.value().block, k,
                 buffer);
    });
}

// dst may be the map; it must not be the source.
void lineSuppression(Run &run, StatusCode (*f)(const std::uint8_t *, std::int32_t, const std::uint8_t *, std::int32_t,
                                               std::uint8_t *, std::int32_t, RoiSize, std::int32_t, std::int32_t,
                                               std::int32_t, float, std::uint8_t *)) {
    Sweep sweep(run);
    Choice<Covariance> how(sweep, filterCovariances, badFilterCovariances);
    Choice<float> ratio(sweep, {0.1F, 0, 1, 0.43F}, {-0.5F, 1.5F, notANumber});
    Choice<bool> overMap(sweep, {false, true}), overSource(sweep, {false}, {true});
    Image<std::uint8_t> src(sweep, {.picture = hills});
    Image<const std::uint8_t> map(sweep, {.picture = twoLevels});
    Image<std::uint8_t> dst(sweep, {.picture = twoLevels});
    Region roi(sweep);
    Bytes buffer(sweep);
    sweep.before = [&] {
        std::int32_t size = 0;
        rvxiLineSuppressionGetBufferSize_8u_C1R(sweep.roi(), how.value().aperture, how.value().block, &size);
        buffer.size(size);
    };
    sweep.run([&] {
        const Covariance h = how;
        const std::uint8_t *const from = overMap ? dst : static_cast<const std::uint8_t *>(map);
        return f(src, src.step, from, overMap ? dst.step : map.step, overSource ? src : dst,
                 overSource ? src.step : dst.step, roi, h.filter, h.aperture, h.block, ratio, buffer);
    });
}

// -------------------------------------------------------------------------------------------------------------- peaks

void peakSize(Run &run, StatusCode (*query)(std::int32_t, std::int32_t *)) { sizes(run, query, queryWidths()); }

template <class T>
void peaks(Run &run,
           StatusCode (*f)(const T *, std::int32_t, RoiSize, T, Point2i *, std::int32_t, std::int32_t *, std::int32_t,
                           std::int32_t, std::uint8_t *),
           StatusCode (*query)(std::int32_t, std::int32_t *)) {
    Sweep sweep(run);
    Choice<T> threshold(sweep, {T{0}, T{-1}, T{100}, T{1}});
    Choice<std::int32_t> capacity(sweep, {500, 3, 1}, {0, -1}), neighbourhood(sweep, {PeakSquare, PeakCross}, {2, -1}),
        margin(sweep, {1, 2, 3}, {0, 900});
    Image<const T> src(sweep);
    Region roi(sweep);
    Numbers<Point2i> found(sweep, 500);
    Numbers<std::int32_t> count(sweep, 1);
    Bytes buffer(sweep);
    sweep.before = [&] {
        std::int32_t size = 0;
        query(sweep.roi().width, &size);
        buffer.size(size);
    };
    sweep.run([&] { return f(src, src.step, roi, threshold, found, capacity, count, neighbourhood, margin, buffer); });
}

// --------------------------------------------------------------------------------------------------------------- FAST

struct Circle {
    std::int32_t radius, arc;
};
const std::vector<Circle> circles = {{3, 9}, {3, 12}, {3, 16}, {2, 7}, {2, 12}, {1, 5}, {1, 8}},
                          badCircles = {{0, 9}, {4, 9}, {3, 8}, {3, 17}, {2, 6}, {1, 9}};

void fastSize(Run &run, StatusCode (*query)(std::int32_t, std::int32_t, std::int32_t *)) {
    sizes(run, query, std::vector<std::int32_t>{1, 2, 3, 0, 4, -1},
          std::vector<std::int32_t>{4, 5, 6, 7, 8, 9, 12, 13, 16, 17, 0, -3});
}

void fastInit(Run &run, StatusCode (*init)(std::int32_t, std::int32_t, std::int32_t, std::int32_t, FastNSpec *)) {
    std::vector<Circle> all = circles;
    all.insert(all.end(), badCircles.begin(), badCircles.end());
    forEach(
        [&](const Circle &circle, std::int32_t threshold, std::int32_t flags) {
            FastNSpec spec;
            std::memset(&spec, 0x5b, sizeof spec);
            run.digest.numbers({init(circle.radius, circle.arc, threshold, flags, &spec),
                                init(circle.radius, circle.arc, threshold, flags, nullptr)});
            run.digest.bytes(&spec, sizeof spec); // every byte is documented
        },
        all, std::vector<std::int32_t>{0, 20, 255, 1000, -1},
        std::vector<std::int32_t>{0, FastScore, FastScore | FastNonMax, FastNonMax, 4, -1});
}

void fast(Run &run, StatusCode (*f)(const std::uint8_t *, std::int32_t, std::uint8_t *, std::int32_t, RoiSize,
                                    std::int32_t *, const FastNSpec *, std::uint8_t *)) {
    Sweep sweep(run);
    Choice<Circle> circle(sweep, circles);
    Choice<std::int32_t> threshold(sweep, {0, 12, 40, 255}), flags(sweep, {0, FastScore, FastScore | FastNonMax});
    Choice<bool> untagged(sweep, {false}, {true});
    Choice<bool> picture(sweep, {true, false});
    Image<const std::uint8_t> scene(sweep, {.picture = blocks, .faults = false}), noise(sweep);
    Image<std::uint8_t> dst(sweep);
    Region roi(sweep);
    Numbers<std::int32_t> count(sweep, 1);
    Bytes spec(sweep, 8), buffer(sweep);
    sweep.before = [&] {
        std::int32_t size = 0;
        rvxiFastNGetBufferSize_8u_C1R(sweep.roi(), &size);
        buffer.size(size);
        spec.size(sizeof(FastNSpec));
        rvxiFastNInit_8u_C1R(circle.value().radius, circle.value().arc, threshold, flags, spec.as<FastNSpec>());
    };
    sweep.run([&] {
        FastNSpec changed{};
        const FastNSpec *used = spec.as<FastNSpec>();
        if (untagged && used != nullptr) {
            changed = *used;
            changed.tag ^= 1;
            used = &changed;
        }
        const bool seen = picture && !sweep.faulty();
        return seen ? f(scene, scene.step, dst, dst.step, roi, count, used, buffer)
                    : f(noise, noise.step, dst, dst.step, roi, count, used, buffer);
    });
}

void mapToList(Run &run, StatusCode (*f)(const std::uint8_t *, std::int32_t, RoiSize, FastCorner *, std::int32_t,
                                         std::int32_t *)) {
    Sweep sweep(run);
    Choice<std::int32_t> capacity(sweep, {300, 5, 1}, {0, -1});
    Image<const std::uint8_t> src(sweep, {.picture = twoLevels});
    Region roi(sweep);
    Numbers<FastCorner> corners(sweep, 300);
    Numbers<std::int32_t> count(sweep, 1);
    sweep.run([&] { return f(src, src.step, roi, corners, capacity, count); });
}

// -------------------------------------------------------------------------------------------------------------- lines

constexpr float degree = 0.017453292F;
const std::vector<HoughResolution> resolutions = {{1, 2 * degree}, {0.75F, 5 * degree}, {2, 0.9F * degree}},
                                   badResolutions = {{0, 1},          {1, 0},          {-1, 1},  {1, 4},
                                                     {notANumber, 1}, {1, notANumber}, {1e9F, 1}};

// Lines among a few other pixels.
std::int64_t strokes(std::int64_t x, std::int64_t y, std::uint64_t seed) {
    const auto shift = static_cast<std::int64_t>(seed % 7);
    return x == 4 + shift || y == 2 + shift / 2 || 2 * x + 3 * y == 30 + shift || x - 2 * y == shift ||
                   twoLevels(x * 3, y * 3, seed) % 5 == 1
               ? 1 + (x + y) % 255
               : 0;
}

void lineSize(Run &run, StatusCode (*query)(RoiSize, HoughResolution, std::int32_t, std::int32_t *)) {
    std::vector<HoughResolution> all = resolutions;
    all.insert(all.end(), badResolutions.begin(), badResolutions.end());
    sizes(run, query, queryRegions(), all, std::vector<std::int32_t>{1, 40, 0, -1, INT32_MAX});
}

void linesOf(
    Run &run, bool inRegion,
    const std::function<StatusCode(const std::uint8_t *, std::int32_t, RoiSize, std::int32_t, HoughLine *, std::int32_t,
                                   std::int32_t *, std::uint8_t *, HoughResolution, const HoughLine *)> &f) {
    Sweep sweep(run);
    Choice<HoughResolution> resolution(sweep, resolutions, badResolutions);
    Choice<std::int32_t> threshold(sweep, {3, 1, 8}, {0, -4}), capacity(sweep, {60, 4}, {0, -1});
    using Bounds = std::vector<HoughLine>;
    const std::vector<Bounds> bounds = {
        {{-1000, 0}, {1000, 4}}, {{0, 0.5F}, {12, 1.7F}}, {{5, 0}, {6, 0}}, {{-9, 1.4F}, {40, 3.2F}}};
    const std::vector<Bounds> badBounds = {
        {{1, 0}, {0, 1}}, {{0, 1}, {1, 0}}, {{notANumber, 0}, {1, 1}}, {{0, 0}, {1, notANumber}}};
    Choice<Bounds> region(sweep, inRegion ? bounds : std::vector<Bounds>{bounds[0]},
                          inRegion ? badBounds : std::vector<Bounds>{});
    Image<const std::uint8_t> src(sweep, {.picture = strokes});
    Region roi(sweep);
    Numbers<HoughLine> found(sweep, 60);
    Numbers<std::int32_t> count(sweep, 1);
    Numbers<int> present(sweep, std::vector<int>{1}, inRegion); // null: the region's pointer is
    Bytes buffer(sweep);
    sweep.before = [&] {
        std::int32_t size = 0;
        rvxiHoughLineGetSize_8u_C1R(sweep.roi(), resolution, capacity, &size);
        buffer.size(size);
    };
    sweep.run([&] {
        return f(src, src.step, roi, threshold, found, capacity, count, buffer, resolution,
                 present != nullptr ? region.value().data() : nullptr);
    });
}

void lines(Run &run, StatusCode (*f)(const std::uint8_t *, std::int32_t, RoiSize, std::int32_t, HoughLine *,
                                     std::int32_t, std::int32_t *, std::uint8_t *, HoughResolution)) {
    linesOf(
        run, false,
        [f](const std::uint8_t *src, std::int32_t step, RoiSize roi, std::int32_t threshold, HoughLine *found,
            std::int32_t capacity, std::int32_t *count, std::uint8_t *buffer, HoughResolution resolution,
            const HoughLine *) { return f(src, step, roi, threshold, found, capacity, count, buffer, resolution); });
}

void linesInRegion(Run &run,
                   StatusCode (*f)(const std::uint8_t *, std::int32_t, RoiSize, std::int32_t, HoughLine *, std::int32_t,
                                   std::int32_t *, std::uint8_t *, HoughResolution, const HoughLine *)) {
    linesOf(run, true, f);
}

void segmentSizes(Run &run, StatusCode (*query)(RoiSize, HoughResolution, std::int32_t *, std::int32_t *)) {
    std::vector<HoughResolution> all = resolutions;
    all.insert(all.end(), badResolutions.begin(), badResolutions.end());
    twoSizes(run, query, queryRegions(), all);
}

struct SegmentRule {
    std::int32_t threshold, length, gap;
};

void segments(Run &run,
              StatusCode (*f)(const std::uint8_t *, std::int32_t, RoiSize, std::int32_t, std::int32_t, std::int32_t,
                              Point2i *, std::int32_t, std::int32_t *, std::uint8_t *, const HoughProbLineSpec *)) {
    Sweep sweep(run);
    Choice<HoughResolution> resolution(sweep, resolutions);
    Choice<std::int32_t> rngSeed(sweep, {1, 77, -5}), capacity(sweep, {40, 2}, {0, -1});
    Choice<SegmentRule> rule(sweep, {{4, 3, 1}, {2, 1, 0}, {6, 8, 3}}, {{0, 3, 1}, {4, 0, 1}, {4, 3, -1}});
    Image<const std::uint8_t> src(sweep, {.picture = strokes});
    Region roi(sweep);
    Numbers<Point2i> found(sweep, 80);
    Numbers<std::int32_t> count(sweep, 1);
    Bytes spec(sweep), buffer(sweep);
    sweep.before = [&] {
        std::int32_t specSize = 0, bufferSize = 0;
        rvxiHoughProbLineGetSize_8u_C1R(sweep.roi(), resolution, &specSize, &bufferSize);
        spec.size(specSize);
        buffer.size(bufferSize);
        rvxiHoughProbLineInit_8u32f_C1R(sweep.roi(), rngSeed, spec.as<HoughProbLineSpec>(), resolution);
    };
    sweep.run([&] {
        const SegmentRule r = rule;
        return f(src, src.step, roi, r.threshold, r.length, r.gap, found, capacity, count, buffer,
                 spec.as<HoughProbLineSpec>());
    });
}

// What a record holds is nobody's business: what it makes the search find is digested.
void segmentInit(Run &run, StatusCode (*init)(RoiSize, std::int32_t, HoughProbLineSpec *, HoughResolution)) {
    std::vector<HoughResolution> all = resolutions;
    all.insert(all.end(), badResolutions.begin(), badResolutions.end());
    forEach(
        [&](RoiSize roi, std::int32_t rngSeed, HoughResolution resolution) {
            std::int32_t specSize = 4096, bufferSize = 0;
            const StatusCode query = rvxiHoughProbLineGetSize_8u_C1R(roi, resolution, &specSize, &bufferSize);
            Memory record, scratch, picture;
            auto *const spec = reinterpret_cast<HoughProbLineSpec *>(record.place(specSize, 0, false));
            const StatusCode status = init(roi, rngSeed, spec, resolution);
            run.digest.numbers({status, init(roi, rngSeed, nullptr, resolution)});
            if (status != StatusOk || query != StatusOk) {
                return;
            }
            std::uint8_t *const src = picture.place(static_cast<std::int64_t>(roi.width) * roi.height, 0, false);
            for (std::int64_t i = 0; i < static_cast<std::int64_t>(roi.width) * roi.height; ++i) {
                src[i] = static_cast<std::uint8_t>(strokes(i % roi.width, i / roi.width, 3));
            }
            std::vector<Point2i> found(80, Point2i{91, 92});
            std::int32_t count = -5;
            run.digest.number(rvxiHoughProbLine_8u32f_C1R(src, roi.width, roi, 4, 4, 1, found.data(), 40, &count,
                                                          scratch.place(bufferSize, 0, false), spec));
            run.digest.number(count);
            run.digest.bytes(found.data(), static_cast<std::int64_t>(found.size() * sizeof(Point2i)));
        },
        std::vector<RoiSize>{{1, 1}, {37, 21}, {0, 3}, {4, -1}}, std::vector<std::int32_t>{0, 1, -9}, all);
}

} // namespace

void addFeature(Members &members) {
    const Member table[] = {
        MEMBER(rvxiCanny_16s8u_C1R, canny),
        MEMBER(rvxiCanny_32f8u_C1R, canny),
        MEMBER(rvxiCannyGetSize, regionSize),
        MEMBER(rvxiCannyBorder_8u_C1R, cannyBorder),
        MEMBER(rvxiCannyBorderGetSize, cannyBorderSize),
        MEMBER(rvxiMinEigenVal_8u32f_C1R, eigen, 1, rvxiMinEigenValGetBufferSize_8u32f_C1R),
        MEMBER(rvxiMinEigenVal_32f_C1R, eigen, 1, rvxiMinEigenValGetBufferSize_32f_C1R),
        MEMBER(rvxiMinEigenValGetBufferSize_8u32f_C1R, blockSize),
        MEMBER(rvxiMinEigenValGetBufferSize_32f_C1R, blockSize),
        MEMBER(rvxiFindPeaks3x3_32s_C1R, peaks, rvxiFindPeaks3x3GetBufferSize_32s_C1R),
        MEMBER(rvxiFindPeaks3x3_32f_C1R, peaks, rvxiFindPeaks3x3GetBufferSize_32f_C1R),
        MEMBER(rvxiFindPeaks3x3GetBufferSize_32s_C1R, peakSize),
        MEMBER(rvxiFindPeaks3x3GetBufferSize_32f_C1R, peakSize),
        MEMBER(rvxiEigenValsVecs_8u32f_C1R, eigen, 6, rvxiEigenValsVecsGetBufferSize_8u32f_C1R),
        MEMBER(rvxiEigenValsVecs_32f_C1R, eigen, 6, rvxiEigenValsVecsGetBufferSize_32f_C1R),
        MEMBER(rvxiEigenValsVecsGetBufferSize_8u32f_C1R, blockSize),
        MEMBER(rvxiEigenValsVecsGetBufferSize_32f_C1R, blockSize),
        MEMBER(rvxiHarrisCorner_8u32f_C1R, harris, rvxiHarrisCornerGetBufferSize_8u32f_C1R),
        MEMBER(rvxiHarrisCorner_32f_C1R, harris, rvxiHarrisCornerGetBufferSize_32f_C1R),
        MEMBER(rvxiHarrisCornerGetBufferSize_8u32f_C1R, blockSize),
        MEMBER(rvxiHarrisCornerGetBufferSize_32f_C1R, blockSize),
        MEMBER(rvxiLineSuppression_8u_C1R, lineSuppression),
        MEMBER(rvxiLineSuppressionGetBufferSize_8u_C1R, blockSize),
        MEMBER(rvxiFastNGetSize_8u_C1R, fastSize),
        MEMBER(rvxiFastNInit_8u_C1R, fastInit),
        MEMBER(rvxiFastNGetBufferSize_8u_C1R, regionSize),
        MEMBER(rvxiFastN_8u_C1R, fast),
        MEMBER(rvxiFastN2DToVec_8u_C1R, mapToList),
        MEMBER(rvxiHoughLine_8u32f_C1R, lines),
        MEMBER(rvxiHoughLine_Region_8u32f_C1R, linesInRegion),
        MEMBER(rvxiHoughLineGetSize_8u_C1R, lineSize),
        MEMBER(rvxiHoughProbLine_8u32f_C1R, segments),
        MEMBER(rvxiHoughProbLineInit_8u32f_C1R, segmentInit),
        MEMBER(rvxiHoughProbLineGetSize_8u_C1R, segmentSizes),
    };
    members.insert(members.end(), std::begin(table), std::end(table));
}

} // namespace contract
