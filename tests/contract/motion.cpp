// Motion history, line sampling, sub-pixel copies, optical flow and background models.
#include "rvxcv/motion.h"
#include "contract/contract.h"

#include <limits>

namespace contract {
namespace {

const float notANumber = std::numeric_limits<float>::quiet_NaN(), infinity = std::numeric_limits<float>::infinity();

// ----------------------------------------------------------------------------------------------------- motion history

template <class S>
void history(Run &run, StatusCode (*f)(const S *, std::int32_t, float *, std::int32_t, RoiSize, float, float)) {
    Sweep sweep(run);
    Choice<float> timestamp(sweep, {300, 0, -20.5F}), duration(sweep, {100, 0, 1e30F, notANumber}, {-1, -infinity});
    Image<const S> silhouette(sweep, {.picture = twoLevels, .mixed = true});
    Image<float> image(sweep, {.keepsBits = true});
    Region roi(sweep);
    sweep.run([&] { return f(silhouette, silhouette.step, image, image.step, roi, timestamp, duration); });
}

// ------------------------------------------------------------------------------------------------------ line sampling

// Ends in quarters of the last column and row; beyond 4: outside.
struct Ends {
    Point2i first, second;
    static Point2i in(Point2i quarters, RoiSize roi) {
        const auto place = [](std::int32_t quarter, std::int32_t n) {
            return quarter < 0 ? -1 : quarter > 4 ? n : quarter * (n - 1) / 4;
        };
        return {place(quarters.x, roi.width), place(quarters.y, roi.height)};
    }
};

template <class T>
void sampleLine(Run &run, StatusCode (*f)(const T *, std::int32_t, RoiSize, T *, Point2i, Point2i), int channels) {
    Sweep sweep(run);
    Choice<Ends> ends(sweep, {{{0, 0}, {4, 4}}, {{4, 4}, {0, 0}}, {{1, 4}, {2, 0}}, {{3, 3}, {3, 3}}, {{4, 1}, {0, 2}}},
                      {{{-1, 0}, {2, 2}}, {{0, 5}, {2, 2}}, {{0, 0}, {5, 2}}, {{0, 0}, {1, -1}}});
    Image<const T> src(sweep, {.channels = channels});
    Region roi(sweep);
    Numbers<T> line(sweep, static_cast<std::size_t>(channels));
    sweep.before = [&] { // exactly as long as the line
        const Point2i a = Ends::in(ends.value().first, sweep.roi()), b = Ends::in(ends.value().second, sweep.roi());
        const std::int32_t length = std::max(std::abs(a.x - b.x), std::abs(a.y - b.y)) + 1;
        line.assign(std::vector<T>(static_cast<std::size_t>(length * channels), T{91}));
    };
    sweep.run([&] {
        const Ends e = ends;
        return f(src, src.step, roi, line, Ends::in(e.first, sweep.roi()), Ends::in(e.second, sweep.roi()));
    });
}

// ---------------------------------------------------------------------------------------------------- sub-pixel copies

// In eighths of the image's width and height.
const std::vector<Point2f> centres = {{4, 4}, {3.3F, 5.17F}, {0, 0}, {8, 8}, {-2.5F, 4.1F}, {40, -30}},
                           badCentres = {{notANumber, 1}, {1, infinity}, {-2e9F, 0}, {0, 1.1e9F}};

// The first and the last pixel inside, where the function tells them.
struct Inside {
    explicit Inside(Sweep &sweep) : first(sweep, 1), last(sweep, 1) {}
    Numbers<Point2i> first, last;
};

template <class S, class D, class Call> void patch(Run &run, bool intersects, bool scaled, const Call &call) {
    Sweep sweep(run);
    Choice<Point2f> centre(sweep, centres, badCentres);
    Choice<std::int32_t> scale(sweep,
                               scaled ? std::vector<std::int32_t>{0, 2, -7, 16, -16} : std::vector<std::int32_t>{0},
                               scaled ? std::vector<std::int32_t>{17, -17} : std::vector<std::int32_t>{});
    Choice<RoiSize> sizeOf(sweep, {{9, 5}, {1, 1}, {35, 3}, {4, 12}});
    const auto size = [&](RoiSize) { return sizeOf.value(); };
    Image<const S> src(sweep);
    Image<D> dst(sweep, {.size = size});
    Region srcRoi(sweep), dstRoi(sweep, size);
    std::unique_ptr<Inside> inside;
    if (intersects) {
        inside = std::make_unique<Inside>(sweep);
    }
    sweep.run([&] {
        Point2f at = centre;
        if (at.x > -100 && at.x < 100) {
            at = {at.x * 0.125F * static_cast<float>(sweep.roi().width),
                  at.y * 0.125F * static_cast<float>(sweep.roi().height)};
        }
        return call(src, src.step, srcRoi, dst, dst.step, dstRoi, at,
                    intersects ? static_cast<Point2i *>(inside->first) : nullptr,
                    intersects ? static_cast<Point2i *>(inside->last) : nullptr, scale);
    });
}

template <class S, class D>
void copy(Run &run, StatusCode (*f)(const S *, std::int32_t, RoiSize, D *, std::int32_t, RoiSize, Point2f)) {
    patch<S, D>(run, false, false,
                [f](const S *src, std::int32_t srcStep, RoiSize srcRoi, D *dst, std::int32_t dstStep, RoiSize dstRoi,
                    Point2f centre, Point2i *, Point2i *,
                    std::int32_t) { return f(src, srcStep, srcRoi, dst, dstStep, dstRoi, centre); });
}

template <class S, class D>
void copyScaled(Run &run,
                StatusCode (*f)(const S *, std::int32_t, RoiSize, D *, std::int32_t, RoiSize, Point2f, std::int32_t)) {
    patch<S, D>(run, false, true,
                [f](const S *src, std::int32_t srcStep, RoiSize srcRoi, D *dst, std::int32_t dstStep, RoiSize dstRoi,
                    Point2f centre, Point2i *, Point2i *,
                    std::int32_t scale) { return f(src, srcStep, srcRoi, dst, dstStep, dstRoi, centre, scale); });
}

template <class S, class D>
void intersect(Run &run, StatusCode (*f)(const S *, std::int32_t, RoiSize, D *, std::int32_t, RoiSize, Point2f,
                                         Point2i *, Point2i *)) {
    patch<S, D>(run, true, false,
                [f](const S *src, std::int32_t srcStep, RoiSize srcRoi, D *dst, std::int32_t dstStep, RoiSize dstRoi,
                    Point2f centre, Point2i *min, Point2i *max,
                    std::int32_t) { return f(src, srcStep, srcRoi, dst, dstStep, dstRoi, centre, min, max); });
}

template <class S, class D>
void intersectScaled(Run &run, StatusCode (*f)(const S *, std::int32_t, RoiSize, D *, std::int32_t, RoiSize, Point2f,
                                               Point2i *, Point2i *, std::int32_t)) {
    patch<S, D>(run, true, true, f);
}

// -------------------------------------------------------------------------------------------------------- optical flow

using FlowInit = StatusCode (*)(OpticalFlowState **, RoiSize, std::int32_t, std::int32_t);
using FlowFree = StatusCode (*)(OpticalFlowState *);

void digestState(Digest &digest, const OpticalFlowState *state) {
    digest.numbers({state->maxWidth, state->maxHeight, state->one, state->pixelType, state->hint, state->winSize});
}

void flowInit(Run &run, FlowInit init, FlowFree free) {
    forEach(
        [&](RoiSize roi, std::int32_t window, std::int32_t hint) {
            OpticalFlowState *state = nullptr;
            run.digest.numbers({init(nullptr, roi, window, hint), init(&state, roi, window, hint)});
            run.digest.number(state != nullptr);
            if (state != nullptr) {
                digestState(run.digest, state);
                run.digest.number(free(state));
            }
        },
        std::vector<RoiSize>{{1, 1}, {64, 48}, {0, 3}, {3, -1}}, std::vector<std::int32_t>{1, 7, 21, 0, -1},
        std::vector<std::int32_t>{0, 3, -2});
}

void flowFree(Run &run, FlowFree free, FlowInit init) {
    OpticalFlowState *state = nullptr;
    run.digest.numbers({free(nullptr), init(&state, {20, 20}, 5, 0), free(state)});
}

// A pyramid of a smooth scene that has moved by (dx, dy) quarters of a pixel, made by integers alone.
template <class T> class FlowPyramid {
public:
    FlowPyramid(RoiSize roi, std::int64_t dx, std::int64_t dy) {
        PyramidRecord *made = nullptr;
        rvxiPyramidInitAlloc(&made, 2, roi, 2);
        record_.reset(made);
        for (std::int32_t level = 0; level <= made->levelCount; ++level) {
            const RoiSize size = made->roiSizes[level];
            images_.emplace_back(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height));
            for (std::int64_t y = 0; y < size.height; ++y) {
                for (std::int64_t x = 0; x < size.width; ++x) {
                    images_.back()[static_cast<std::size_t>(y * size.width + x)] =
                        static_cast<T>(scene((x << level) * 4 - dx, (y << level) * 4 - dy));
                }
            }
            made->images[level] = images_.back().data();
            made->steps[level] = size.width * static_cast<std::int32_t>(sizeof(T));
        }
    }
    const PyramidRecord *record() const { return record_.get(); }

private:
    // Of coordinates in quarters of a pixel: bumps of parabolas, 0..250.
    static std::int64_t scene(std::int64_t x, std::int64_t y) {
        const auto bump = [](std::int64_t t, std::int64_t period) {
            const std::int64_t phase = ((t % period) + period) % period;
            return 4 * phase * (period - phase) * 60 / (period * period);
        };
        return bump(x, 52) + bump(y, 44) + bump(x + y, 76) + bump(2 * x - y, 124);
    }
    struct Free {
        void operator()(PyramidRecord *record) const { rvxiPyramidFree(record); }
    };
    std::unique_ptr<PyramidRecord, Free> record_;
    std::vector<std::vector<T>> images_;
};

// Positions and errors have a bound, 0.02 pixel (what types of pixels may differ by); statuses of calls are exact, and
// so are those of points that lie far from being lost or are lost for certain.
template <class T>
void opticalFlow(Run &run,
                 StatusCode (*f)(const PyramidRecord *, const PyramidRecord *, const Point2f *, Point2f *,
                                 std::uint8_t *, float *, std::int32_t, std::int32_t, std::int32_t, std::int32_t, float,
                                 OpticalFlowState *),
                 FlowInit init, FlowFree free, T) {
    const RoiSize roi = {64, 48};
    const FlowPyramid<T> previous(roi, 0, 0), next(roi, 5, -3);
    const std::vector<Point2f> points = {{20, 15},    {30.25F, 24.5F}, {44, 30},   {12.75F, 33},
                                         {50.5F, 12}, {-500, 10},      {30, 4000}, {notANumber, 3}};
    constexpr std::size_t certain = 5; // the first of the lost
    constexpr double bound = 0.02;
    Sweep sweep(run, {.sizes = {{64, 48}}, .large = {0, 0}, .choices = roi, .faults = roi, .rounds = 1});
    Choice<std::int32_t> window(sweep, {9, 15}), badWindow(sweep, {0}, {1, -100}), level(sweep, {2, 0, 9}, {-1}),
        iterations(sweep, {20, 1}, {0}), count(sweep, {static_cast<std::int32_t>(points.size())}, {0, -3});
    Choice<float> threshold(sweep, {0.01F, 0}, {-1, notANumber});
    Pointer<const PyramidRecord> from(sweep), to(sweep);
    Numbers<Point2f> starts(sweep, points), ends(sweep, points);
    Numbers<std::uint8_t> status(sweep, points.size());
    Numbers<float> error(sweep, points.size());
    Pointer<OpticalFlowState> state(sweep);
    ends.digested = error.digested = false;
    std::shared_ptr<OpticalFlowState> kept;
    sweep.before = [&] {
        from.set(previous.record());
        to.set(next.record());
        OpticalFlowState *made = nullptr;
        init(&made, roi, window, 0);
        kept = {made, free};
        state.set(made);
    };
    // Instead of the slots' own digests: bounded values, and what is exact or left untouched.
    sweep.after = [&](StatusCode result) {
        for (std::size_t i = 0; i < points.size(); ++i) {
            const bool bounded = result == StatusOk && i < certain && status[i] == 0;
            run.digest.number(status[i]);
            const Point2f end = ends[i];
            if (bounded) {
                run.values.push_back({end.x, bound});
                run.values.push_back({end.y, bound});
            } else {
                run.digest.numbers({end.x, end.y, error[i]});
            }
        }
        for (std::size_t i = 0; result == StatusOk && i < certain; ++i) {
            if (status[i] == 0) { // the scene changes by at most 60 levels a pixel
                run.values.push_back({error[i], bound * 60});
            }
        }
    };
    sweep.run([&] {
        return f(from, to, starts, ends, status, error, count, window + badWindow, level, iterations, threshold, state);
    });
}

// ---------------------------------------------------------------------------------------------------- background
// models

const ForegroundGaussianParams gaussianParams[] = {{3, 225, 16, 1125, 0.1F, 0}, {2.5F, 40, 4, 90, 1, 0.6F}};
const FGMMParams mixtureParams[] = {{3, 4, 225, 16, 1125, 1, 0.5F, 0.9F, 0}, {5, 2, 80, 9, 400, 0.3F, 0, 0.6F, 0.02F}};
const ForegroundHistogramParams histogramParams[] = {{8, 6, 10, 0.8F}, {3, 2, 40, 0.5F}};

// A model's types, parameters and functions.
template <class S, class P> struct Model {
    StatusCode (*size)(RoiSize, std::int32_t, const P *, std::int32_t *);
    StatusCode (*init)(RoiSize, std::int32_t, const P *, S *);
    const P *params; // two
    StatusCode (*learn[2])(const std::uint8_t *, std::int32_t, std::uint8_t *, std::int32_t, RoiSize, float, S *);
};
const Model<ForegroundGaussianState, ForegroundGaussianParams> gaussianModel = {
    rvxiForegroundGaussianGetSize_8u,
    rvxiForegroundGaussianInit_8u,
    gaussianParams,
    {rvxiForegroundGaussian_8u_C1R, rvxiForegroundGaussian_8u_C3R}};
const Model<FGMMState, FGMMParams> mixtureModel = {
    rvxiFGMMGetSize_8u, rvxiFGMMInit_8u, mixtureParams, {rvxiFGMM_8u_C1R, rvxiFGMM_8u_C3R}};
const Model<ForegroundHistogramState, ForegroundHistogramParams> histogramModel = {
    rvxiForegroundHistogramGetSize_8u,
    rvxiForegroundHistogramInit_8u,
    histogramParams,
    {rvxiForegroundHistogram_8u_C1R, rvxiForegroundHistogram_8u_C3R}};

// A scene with pixels that change their mind.
std::int64_t film(std::int64_t x, std::int64_t y, std::uint64_t frame) {
    const std::int64_t still = 40 + x * 7 % 90 + y * 5 % 60;
    const auto n = static_cast<std::int64_t>(frame % 64);
    const std::int64_t moved = (x + 3 * n) % 16 < 5 && y % 8 < 5 ? 90 + (x + y) % 60 : 0;
    const std::int64_t shade = (x + y + n) % 13 == 0 ? -(still / 4) : (x * 3 + y * 5 + n * 7) % 5 - 2;
    return still + moved + shade;
}

void digestFields(Digest &digest, const void *state) {
    // The tag, the sizes, the channels and the count of frames come first in every record, then the parameters.
    digest.bytes(state, 5 * 4);
}

// A record that has learned some frames.
template <class S, class P> class ModelRecord {
public:
    ModelRecord(Sweep &sweep, const Model<S, P> &model, int channels)
        : kind(sweep, {0, 1}), damage(sweep, {0}, {1, 2, 3}), channels_(channels), sweep_(sweep), model_(model),
          record_(sweep, 8) {}
    void make(bool learned) {
        const RoiSize roi = sweep_.roi();
        std::int32_t size = 0;
        model_.size(roi, channels_, model_.params + kind, &size);
        record_.size(size);
        model_.init(roi, channels_, model_.params + kind, record_.template as<S>());
        std::vector<std::uint8_t> frame(static_cast<std::size_t>(roi.width) * static_cast<std::size_t>(channels_)),
            map(static_cast<std::size_t>(roi.width));
        // Row by row would be other models: whole frames.
        frame.resize(frame.size() * static_cast<std::size_t>(roi.height));
        map.resize(map.size() * static_cast<std::size_t>(roi.height));
        for (std::uint64_t n = 0; learned && n < 4; ++n) {
            for (std::size_t i = 0; i < frame.size(); ++i) {
                const auto pixel = static_cast<std::int64_t>(i) / channels_;
                frame[i] = static_cast<std::uint8_t>(
                    film(pixel % roi.width, pixel / roi.width, n + i % static_cast<std::size_t>(channels_)));
            }
            model_.learn[channels_ / 3](frame.data(), roi.width * channels_, map.data(), roi.width, roi,
                                        1.0F / static_cast<float>(n + 1), record_.template as<S>());
        }
    }
    // Calls with the record, damaged where a fault says so: its tag, its width or its channels.
    template <class Call> StatusCode with(const Call &call) {
        S *const state = record_.template as<S>();
        if (state == nullptr || damage == 0) {
            return call(state);
        }
        const S kept = *state;
        state->tag ^= damage == 1 ? 1 : 0;
        state->width += damage == 2 ? 1 : 0;
        state->channels = damage == 3 ? 4 - channels_ : channels_;
        const StatusCode status = call(state);
        *state = kept;
        return status;
    }
    const S *state() const { return record_.template as<S>(); }
    Choice<int> kind, damage;

private:
    int channels_;
    Sweep &sweep_;
    const Model<S, P> &model_;
    Bytes record_;
};

const std::vector<float> goodRates = {0.25F, 0, 1, 0.01F}, badRates = {-0.5F, 1.5F, notANumber};

// Decides; what was learned shows in the second picture and in the background.
template <class S, class P>
void decide(Run &run,
            StatusCode (*f)(const std::uint8_t *, std::int32_t, std::uint8_t *, std::int32_t, RoiSize, float, S *),
            const Model<S, P> &model, int channels,
            StatusCode (*background)(std::uint8_t *, std::int32_t, RoiSize, const S *)) {
    Sweep sweep(run);
    ModelRecord<S, P> record(sweep, model, channels);
    Choice<float> rate(sweep, goodRates, badRates);
    Image<const std::uint8_t> src(sweep, {.channels = channels, .contents = random, .picture = film, .mixed = true});
    Image<const std::uint8_t> second(sweep, {.channels = channels, .picture = film, .faults = false});
    Image<std::uint8_t> dst(sweep), secondMap(sweep, {.faults = false});
    Image<std::uint8_t> scene(sweep, {.channels = channels, .faults = false});
    Region roi(sweep);
    sweep.before = [&] { record.make(sweep.turn() % 4 != 1); };
    sweep.run([&] {
        const StatusCode status =
            record.with([&](S *state) { return f(src, src.step, dst, dst.step, roi, rate, state); });
        if (status == StatusOk) {
            auto *const state = const_cast<S *>(record.state());
            run.digest.number(f(second, second.step, secondMap, secondMap.step, sweep.roi(), 0.5F, state));
            run.digest.number(background(scene, scene.step, sweep.roi(), state));
            digestFields(run.digest, state);
        }
        return status;
    });
}

template <class S, class P>
void update(Run &run,
            StatusCode (*f)(const std::uint8_t *, std::int32_t, const std::uint8_t *, std::int32_t, RoiSize, float,
                            S *),
            const Model<S, P> &model, int channels,
            StatusCode (*background)(std::uint8_t *, std::int32_t, RoiSize, const S *)) {
    Sweep sweep(run);
    ModelRecord<S, P> record(sweep, model, channels);
    Choice<float> rate(sweep, goodRates, badRates);
    Image<const std::uint8_t> src(sweep, {.channels = channels, .contents = random, .picture = film, .mixed = true});
    Image<const std::uint8_t> map(sweep, {.picture = twoLevels});
    Image<const std::uint8_t> second(sweep, {.channels = channels, .picture = film, .faults = false});
    Image<std::uint8_t> secondMap(sweep, {.faults = false});
    Image<std::uint8_t> scene(sweep, {.channels = channels, .faults = false});
    Region roi(sweep);
    sweep.before = [&] { record.make(sweep.turn() % 4 != 1); };
    sweep.run([&] {
        const StatusCode status =
            record.with([&](S *state) { return f(src, src.step, map, map.step, roi, rate, state); });
        if (status == StatusOk) {
            auto *const state = const_cast<S *>(record.state());
            run.digest.number(
                model.learn[channels / 3](second, second.step, secondMap, secondMap.step, sweep.roi(), 0.5F, state));
            run.digest.number(background(scene, scene.step, sweep.roi(), state));
            digestFields(run.digest, state);
        }
        return status;
    });
}

template <class S, class P>
void getBackground(Run &run, StatusCode (*f)(std::uint8_t *, std::int32_t, RoiSize, const S *),
                   const Model<S, P> &model, int channels) {
    Sweep sweep(run);
    ModelRecord<S, P> record(sweep, model, channels);
    Choice<bool> learned(sweep, {true, true, false});
    Image<std::uint8_t> dst(sweep, {.channels = channels});
    Region roi(sweep);
    sweep.before = [&] { record.make(learned); };
    sweep.run([&] { return record.with([&](const S *state) { return f(dst, dst.step, roi, state); }); });
}

// Parameters beyond their ranges: every field below, above and no number, one at a time.
template <class P> std::vector<P> allParams(const P *good) {
    std::vector<P> all = {good[0], good[1]};
    for (std::size_t at = 0; at < sizeof(P); at += 4) {
        for (const float value : {-1.0F, 0.0F, 1.0F, 1e9F, infinity, notANumber}) {
            P changed = good[0];
            std::memcpy(reinterpret_cast<std::uint8_t *>(&changed) + at, &value, 4);
            all.push_back(changed);
        }
        for (const std::int32_t value : {-1, 0, 1, 33, 256}) {
            P changed = good[0];
            std::memcpy(reinterpret_cast<std::uint8_t *>(&changed) + at, &value, 4);
            all.push_back(changed);
        }
    }
    return all;
}

template <class P>
void modelSize(Run &run, StatusCode (*query)(RoiSize, std::int32_t, const P *, std::int32_t *), const P *params) {
    const std::vector<RoiSize> regions = {{1, 1}, {33, 9}, {1920, 1080}, {0, 3}, {3, -1}, {46341, 46341}};
    sizes(
        run,
        [&](RoiSize roi, std::int32_t channels, const P &p, std::int32_t *size) {
            run.digest.number(query(roi, channels, nullptr, size));
            return query(roi, channels, &p, size);
        },
        regions, std::vector<std::int32_t>{1, 3, 2, 0}, allParams(params));
}

template <class S, class P>
void modelInit(Run &run, StatusCode (*init)(RoiSize, std::int32_t, const P *, S *), const Model<S, P> &model) {
    forEach(
        [&](RoiSize roi, std::int32_t channels, const P &p) {
            std::int32_t size = 128;
            model.size(roi, channels, &p, &size);
            Memory memory;
            auto *const state = reinterpret_cast<S *>(memory.place((size + 7) / 8 * 8, 0, false));
            const StatusCode status = init(roi, channels, &p, state);
            run.digest.numbers({status, init(roi, channels, nullptr, state), init(roi, channels, &p, nullptr)});
            digestFields(run.digest, state);
            run.digest.bytes(&state->params, sizeof(P));
        },
        std::vector<RoiSize>{{1, 1}, {33, 9}, {0, 3}, {3, -1}}, std::vector<std::int32_t>{1, 3, 2},
        allParams(model.params));
}

} // namespace

void addMotion(Members &members) {
    const Member table[] = {
        MEMBER(rvxiUpdateMotionHistory_8u32f_C1IR, history),
        MEMBER(rvxiUpdateMotionHistory_16u32f_C1IR, history),
        MEMBER(rvxiUpdateMotionHistory_32f_C1IR, history),
        MEMBER(rvxiSampleLine_8u_C1R, sampleLine, 1),
        MEMBER(rvxiSampleLine_8u_C3R, sampleLine, 3),
        MEMBER(rvxiSampleLine_16u_C1R, sampleLine, 1),
        MEMBER(rvxiSampleLine_16u_C3R, sampleLine, 3),
        MEMBER(rvxiSampleLine_32f_C1R, sampleLine, 1),
        MEMBER(rvxiSampleLine_32f_C3R, sampleLine, 3),
        MEMBER(rvxiCopySubpix_8u_C1R, copy),
        MEMBER(rvxiCopySubpix_8u32f_C1R, copy),
        MEMBER(rvxiCopySubpix_16u_C1R, copy),
        MEMBER(rvxiCopySubpix_16u32f_C1R, copy),
        MEMBER(rvxiCopySubpix_32f_C1R, copy),
        MEMBER(rvxiCopySubpix_8u16u_C1RSfs, copyScaled),
        MEMBER(rvxiCopySubpixIntersect_8u_C1R, intersect),
        MEMBER(rvxiCopySubpixIntersect_8u32f_C1R, intersect),
        MEMBER(rvxiCopySubpixIntersect_16u_C1R, intersect),
        MEMBER(rvxiCopySubpixIntersect_16u32f_C1R, intersect),
        MEMBER(rvxiCopySubpixIntersect_32f_C1R, intersect),
        MEMBER(rvxiCopySubpixIntersect_8u16u_C1RSfs, intersectScaled),
        MEMBER(rvxiOpticalFlowPyrLKInitAlloc_8u_C1R, flowInit, rvxiOpticalFlowPyrLKFree_8u_C1R),
        MEMBER(rvxiOpticalFlowPyrLKInitAlloc_16u_C1R, flowInit, rvxiOpticalFlowPyrLKFree_16u_C1R),
        MEMBER(rvxiOpticalFlowPyrLKInitAlloc_32f_C1R, flowInit, rvxiOpticalFlowPyrLKFree_32f_C1R),
        MEMBER(rvxiOpticalFlowPyrLKFree_8u_C1R, flowFree, rvxiOpticalFlowPyrLKInitAlloc_8u_C1R),
        MEMBER(rvxiOpticalFlowPyrLKFree_16u_C1R, flowFree, rvxiOpticalFlowPyrLKInitAlloc_16u_C1R),
        MEMBER(rvxiOpticalFlowPyrLKFree_32f_C1R, flowFree, rvxiOpticalFlowPyrLKInitAlloc_32f_C1R),
        MEMBER(rvxiOpticalFlowPyrLK_8u_C1R, opticalFlow, rvxiOpticalFlowPyrLKInitAlloc_8u_C1R,
               rvxiOpticalFlowPyrLKFree_8u_C1R, std::uint8_t{}),
        MEMBER(rvxiOpticalFlowPyrLK_16u_C1R, opticalFlow, rvxiOpticalFlowPyrLKInitAlloc_16u_C1R,
               rvxiOpticalFlowPyrLKFree_16u_C1R, std::uint16_t{}),
        MEMBER(rvxiOpticalFlowPyrLK_32f_C1R, opticalFlow, rvxiOpticalFlowPyrLKInitAlloc_32f_C1R,
               rvxiOpticalFlowPyrLKFree_32f_C1R, float{}),
        MEMBER(rvxiForegroundGaussianGetSize_8u, modelSize, gaussianParams),
        MEMBER(rvxiForegroundGaussianInit_8u, modelInit, gaussianModel),
        MEMBER(rvxiForegroundGaussian_8u_C1R, decide, gaussianModel, 1, rvxiForegroundGaussianGetBackground_8u_C1R),
        MEMBER(rvxiForegroundGaussian_8u_C3R, decide, gaussianModel, 3, rvxiForegroundGaussianGetBackground_8u_C3R),
        MEMBER(rvxiForegroundGaussianUpdate_8u_C1R, update, gaussianModel, 1,
               rvxiForegroundGaussianGetBackground_8u_C1R),
        MEMBER(rvxiForegroundGaussianUpdate_8u_C3R, update, gaussianModel, 3,
               rvxiForegroundGaussianGetBackground_8u_C3R),
        MEMBER(rvxiForegroundGaussianGetBackground_8u_C1R, getBackground, gaussianModel, 1),
        MEMBER(rvxiForegroundGaussianGetBackground_8u_C3R, getBackground, gaussianModel, 3),
        MEMBER(rvxiFGMMGetSize_8u, modelSize, mixtureParams),
        MEMBER(rvxiFGMMInit_8u, modelInit, mixtureModel),
        MEMBER(rvxiFGMM_8u_C1R, decide, mixtureModel, 1, rvxiFGMMGetBackground_8u_C1R),
        MEMBER(rvxiFGMM_8u_C3R, decide, mixtureModel, 3, rvxiFGMMGetBackground_8u_C3R),
        MEMBER(rvxiFGMMUpdate_8u_C1R, update, mixtureModel, 1, rvxiFGMMGetBackground_8u_C1R),
        MEMBER(rvxiFGMMUpdate_8u_C3R, update, mixtureModel, 3, rvxiFGMMGetBackground_8u_C3R),
        MEMBER(rvxiFGMMGetBackground_8u_C1R, getBackground, mixtureModel, 1),
        MEMBER(rvxiFGMMGetBackground_8u_C3R, getBackground, mixtureModel, 3),
        MEMBER(rvxiForegroundHistogramGetSize_8u, modelSize, histogramParams),
        MEMBER(rvxiForegroundHistogramInit_8u, modelInit, histogramModel),
        MEMBER(rvxiForegroundHistogram_8u_C1R, decide, histogramModel, 1, rvxiForegroundHistogramGetBackground_8u_C1R),
        MEMBER(rvxiForegroundHistogram_8u_C3R, decide, histogramModel, 3, rvxiForegroundHistogramGetBackground_8u_C3R),
        MEMBER(rvxiForegroundHistogramUpdate_8u_C1R, update, histogramModel, 1,
               rvxiForegroundHistogramGetBackground_8u_C1R),
        MEMBER(rvxiForegroundHistogramUpdate_8u_C3R, update, histogramModel, 3,
               rvxiForegroundHistogramGetBackground_8u_C3R),
        MEMBER(rvxiForegroundHistogramGetBackground_8u_C1R, getBackground, histogramModel, 1),
        MEMBER(rvxiForegroundHistogramGetBackground_8u_C3R, getBackground, histogramModel, 3),
    };
    members.insert(members.end(), std::begin(table), std::end(table));
}

} // namespace contract
