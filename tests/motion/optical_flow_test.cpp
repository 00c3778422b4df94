// The optical flow against its plain form, and on scenes with known motion. Level images end at unmapped pages and have
// steps of any size.
#include "motion/plain_flow.h"
#include "support/counted_alloc.h"
#include "support/status_table.h"

#include <numeric>
#include <tuple>

namespace {

using namespace flow;

template <class T> struct Functions;
#define FUNCTIONS(T, TYPE)                                                                                             \
    template <> struct Functions<T> {                                                                                  \
        static constexpr auto init = rvxiOpticalFlowPyrLKInitAlloc_##TYPE##_C1R;                                       \
        static constexpr auto free = rvxiOpticalFlowPyrLKFree_##TYPE##_C1R;                                            \
        static constexpr auto track = rvxiOpticalFlowPyrLK_##TYPE##_C1R;                                               \
    }
FUNCTIONS(std::uint8_t, 8u);
FUNCTIONS(std::uint16_t, 16u);
FUNCTIONS(float, 32f);

template <class T> StatusCode initAlloc(OpticalFlowState **state, RoiSize maxRoi, std::int32_t winSize) {
    return Functions<T>::init(state, maxRoi, winSize, 7);
}
template <class T> StatusCode freeState(OpticalFlowState *state) { return Functions<T>::free(state); }
template <class T, class... Arguments> StatusCode track(Arguments... arguments) {
    return Functions<T>::track(arguments...);
}

struct Tracks {
    std::vector<Point2f> positions;
    std::vector<std::uint8_t> status;
    std::vector<float> error;
};

template <class T>
Tracks follow(Pyramid<T> &prev, Pyramid<T> &next, const std::vector<Point2f> &points, std::vector<Point2f> guesses,
              const Parameters &p, RoiSize maxRoi = {100, 100}) {
    Tracks result{std::move(guesses), std::vector<std::uint8_t>(points.size(), 0xaa),
                  std::vector<float>(points.size(), -1.0f)};
    OpticalFlowState *state = nullptr;
    EXPECT_EQ(initAlloc<T>(&state, maxRoi, static_cast<std::int32_t>(p.winSize)), StatusOk);
    const PyramidRecord prevRecord = prev.record(), nextRecord = next.record();
    EXPECT_EQ(track<T>(&prevRecord, &nextRecord, points.data(), result.positions.data(), result.status.data(),
                       result.error.data(), static_cast<std::int32_t>(points.size()),
                       static_cast<std::int32_t>(p.winSize), static_cast<std::int32_t>(p.maxLevel),
                       static_cast<std::int32_t>(p.maxIterations), static_cast<float>(p.threshold), state),
              StatusOk);
    EXPECT_EQ(freeState<T>(state), StatusOk);
    return result;
}

double distance(Point2f a, Point2f b) {
    return std::hypot(static_cast<double>(a.x) - static_cast<double>(b.x),
                      static_cast<double>(a.y) - static_cast<double>(b.y));
}

// Small images in every relation to the window: points inside, at the edges and beside; rates 1.5, 2 and 3; few
// iterations and many; thresholds that stop at once, late and never.
template <class T> void checkAgainstPlainForm() {
    Rng rng = makeRng("plain flow", sizeof(T));
    int compared = 0, tracked = 0, cases = 0;
    for (int round = 0; round < 90; ++round) {
        const Texture texture(rng);
        const double rate = round % 3 == 0 ? 2 : round % 3 == 1 ? 1.5 : 3;
        const std::int64_t width = uniform(rng, 1, 70), height = uniform(rng, 1, 50), levels = uniform(rng, 0, 2);
        const Position shift{static_cast<double>(uniform(rng, -2000, 2000)) * 1e-3,
                             static_cast<double>(uniform(rng, -2000, 2000)) * 1e-3};
        Pyramid<T> prev(render(width, height, [&](Position p) { return texture.at(p); }), levels, rate);
        Pyramid<T> next(render(width + round % 3, height - (height > 1 && round % 5 == 0 ? 1 : 0),
                               [&](Position p) {
                                   return texture.at({p.x - shift.x, p.y - shift.y});
                               }),
                        levels, rate);
        const Parameters p{uniform(rng, 1, round % 4 == 0 ? 35 : 15), levels, uniform(rng, 1, 12),
                           round % 3 == 0   ? 0.0
                           : round % 3 == 1 ? 0.03
                                            : 0.5};
        std::vector<Point2f> points, guesses;
        for (int i = 0; i < 12; ++i) {
            const float x = static_cast<float>(uniform(rng, -8000, 1000 * width + 8000)) * 1e-3f;
            const float y = static_cast<float>(uniform(rng, -8000, 1000 * height + 8000)) * 1e-3f;
            points.push_back(i % 3 == 0 ? Point2f{std::round(x), std::round(y)} : Point2f{x, y});
            guesses.push_back({points.back().x + static_cast<float>(uniform(rng, -1, 1)),
                               points.back().y + static_cast<float>(uniform(rng, -1, 1))});
        }
        const Tracks got = follow(prev, next, points, guesses, p);
        const PlainFlow<T> plain(prev, next);
        for (std::size_t i = 0; i < points.size(); ++i) {
            const Tracked want = plain.follow(points[i], guesses[i], p);
            // What rounding does to this point: small windows can be chaotic.
            double scatter = 0, errorScatter = 0;
            bool fragile = want.fragile;
            for (const Position d : {Position{2e-7, 2e-7}, {2e-7, -2e-7}, {-2e-7, 2e-7}, {-2e-7, -2e-7}}) {
                Parameters rounded = p;
                rounded.disturbance = d;
                const Tracked other = plain.follow(points[i], guesses[i], rounded);
                scatter = std::max(scatter, distance(want.position, other.position));
                errorScatter = std::max(errorScatter, std::fabs(want.error - other.error));
                fragile |= other.fragile || other.status != want.status;
            }
            ++cases;
            if (fragile || !(scatter < 2e-4)) {
                continue;
            }
            ++compared;
            tracked += want.status == 0;
            const std::string where = "round " + std::to_string(round) + " point " + std::to_string(i) + " window " +
                                      std::to_string(p.winSize) + " of " + std::to_string(width) + "x" +
                                      std::to_string(height) + " rate " + std::to_string(rate);
            ASSERT_EQ(got.status[i], want.status) << where;
            ASSERT_LT(distance(got.positions[i], want.position), 5e-5 + 20 * scatter) << where;
            ASSERT_NEAR(static_cast<double>(got.error[i]), want.error, 1e-4 + 20 * errorScatter) << where;
        }
    }
    EXPECT_GT(compared, cases / 2);
    EXPECT_GT(tracked, cases / 8);
}

TEST(OpticalFlow, MatchesThePlainForm8u) { checkAgainstPlainForm<std::uint8_t>(); }
TEST(OpticalFlow, MatchesThePlainForm16u) { checkAgainstPlainForm<std::uint16_t>(); }
TEST(OpticalFlow, MatchesThePlainForm32f) { checkAgainstPlainForm<float>(); }

// p of the previous frame is at motion(p) of the next one, which shows the texture at back(p).
struct Motion {
    const char *name;
    std::function<Position(Position)> motion, back;
};

std::vector<Motion> motions() {
    std::vector<Motion> all;
    for (const Position d : {Position{0.3, -0.7}, Position{3.5, 1.25}, Position{-12.4, 9.1}, Position{24.0, -18.0}}) {
        all.push_back({"translation",
                       [=](Position p) {
                           return Position{p.x + d.x, p.y + d.y};
                       },
                       [=](Position p) {
                           return Position{p.x - d.x, p.y - d.y};
                       }});
    }
    const auto turned = [](Position p, double angle, double zoom) {
        const double x = p.x - 160, y = p.y - 120, c = zoom * std::cos(angle), s = zoom * std::sin(angle);
        return Position{160 + c * x - s * y, 120 + s * x + c * y};
    };
    all.push_back(
        {"rotation", [=](Position p) { return turned(p, 0.02, 1); }, [=](Position p) { return turned(p, -0.02, 1); }});
    all.push_back(
        {"zoom", [=](Position p) { return turned(p, 0, 1.02); }, [=](Position p) { return turned(p, 0, 1 / 1.02); }});
    return all;
}

// Of points whose windows stay inside both frames.
void expectAccurate(const Tracks &tracks, const std::vector<Point2f> &points, const Motion &motion, const char *what) {
    std::vector<double> errors;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const Position truth = motion.motion({points[i].x, points[i].y});
        if (truth.x < 12 || truth.y < 12 || truth.x > 308 || truth.y > 228) {
            continue;
        }
        const Point2f rounded{static_cast<float>(truth.x), static_cast<float>(truth.y)};
        errors.push_back(tracks.status[i] == 0 ? distance(tracks.positions[i], rounded) : 1e9);
    }
    ASSERT_GT(errors.size(), 40u);
    std::sort(errors.begin(), errors.end());
    EXPECT_LT(errors[errors.size() / 2], 0.05) << motion.name << " " << what;
    EXPECT_LT(errors[errors.size() * 95 / 100], 0.2) << motion.name << " " << what;
}

TEST(OpticalFlow, FollowsKnownMotionsWithinAFractionOfAPixel) {
    Rng rng = makeRng("flow scenes");
    const Texture texture(rng);
    const Image frame = render(320, 240, [&](Position p) { return texture.at(p); });
    const std::vector<Point2f> points = corners(frame, 22, 14);
    const Parameters p{21, 3, 20, 0.01};
    for (const Motion &motion : motions()) {
        const Image moved = render(320, 240, [&](Position q) { return texture.at(motion.back(q)); });
        Pyramid<float> prev(frame, 3, 2), next(moved, 3, 2);
        const Tracks floats = follow(prev, next, points, points, p);
        expectAccurate(floats, points, motion, "32f");
        Pyramid<std::uint8_t> prev8(frame, 3, 2), next8(moved, 3, 2);
        const Tracks bytes = follow(prev8, next8, points, points, p);
        expectAccurate(bytes, points, motion, "8u");
        Pyramid<std::uint16_t> prev16(frame, 3, 2, 200), next16(moved, 3, 2, 200);
        const Tracks words = follow(prev16, next16, points, points, p);
        expectAccurate(words, points, motion, "16u");

        // The same values as floats.
        Pyramid<float> prev8f(frame, 0, 2), next8f(moved, 0, 2);
        prev8f = Pyramid<float>(prev8.levels[0], 0, 2), next8f = Pyramid<float>(next8.levels[0], 0, 2);
        for (std::size_t l = 1; l < 4; ++l) {
            prev8f.add(prev8.levels[l], prev8.scale(l)), next8f.add(next8.levels[l], next8.scale(l));
        }
        const Tracks same = follow(prev8f, next8f, points, points, p);
        for (std::size_t i = 0; i < points.size(); ++i) {
            if (same.status[i] == 0 && bytes.status[i] == 0) {
                ASSERT_LT(distance(same.positions[i], bytes.positions[i]), 0.02) << motion.name << " " << i;
            }
        }
        const Position centre = motion.motion({160, 120});
        if (std::hypot(centre.x - 160, centre.y - 120) > 20) {
            continue; // too far for what these pyramids have at their top
        }
        for (const double rate : {1.5, 3.0}) {
            Pyramid<std::uint8_t> prevAny(frame, rate < 2 ? 4 : 2, rate), nextAny(moved, rate < 2 ? 4 : 2, rate);
            Parameters any = p;
            any.maxLevel = rate < 2 ? 4 : 2;
            expectAccurate(follow(prevAny, nextAny, points, points, any), points, motion, "another rate");
        }
    }
}

// Neither other points, nor their order, nor the largest level of the state change a point's result.
TEST(OpticalFlow, PointsDoNotDependOnEachOtherNorOnTheState) {
    Rng rng = makeRng("flow independence");
    const Texture texture(rng);
    const Image frame = render(150, 110, [&](Position p) { return texture.at(p); });
    const Image moved = render(150, 110, [&](Position p) { return texture.at({p.x - 2.3, p.y + 1.2}); });
    Pyramid<float> prev(frame, 2, 2), next(moved, 2, 2);
    std::vector<Point2f> points = corners(frame, 14, 3);
    points.push_back({-50, 3});
    points.push_back({NAN, 3});
    const Parameters p{13, 2, 10, 0.01};
    const Tracks all = follow(prev, next, points, points, p, {1, 1});
    const std::vector<Point2f> reversed(points.rbegin(), points.rend());
    // Levels as large as the state's in one direction only, in both, in none.
    for (const RoiSize maxRoi : {RoiSize{75, 1}, RoiSize{1, 55}, RoiSize{38, 28}, RoiSize{150, 110}, RoiSize{900, 2}}) {
        const Tracks again = follow(prev, next, reversed, reversed, p, maxRoi);
        for (std::size_t i = 0; i < points.size(); ++i) {
            const std::size_t j = points.size() - 1 - i;
            ASSERT_TRUE(sameValue(all.positions[i].x, again.positions[j].x));
            ASSERT_TRUE(sameValue(all.positions[i].y, again.positions[j].y));
            ASSERT_EQ(all.status[i], again.status[j]);
            ASSERT_EQ(all.error[i], again.error[j]);
        }
    }
}

TEST(OpticalFlow, PointsThatCannotBeFollowedAreLost) {
    Rng rng = makeRng("lost points");
    const Texture texture(rng);
    // The left third is flat, in the middle there is one straight edge, the right part has texture.
    const auto scene = [&](Position p) { return p.x < 70 ? 100.0 : texture.at(p); };
    const Image frame = render(210, 120, scene);
    const Image moved = render(210, 120, [&](Position p) { return scene({p.x - 6, p.y}); });
    Pyramid<float> prev(frame, 2, 2), next(moved, 2, 2);
    const Parameters p{11, 2, 20, 0.01};
    const float inf = INFINITY;
    const std::vector<Point2f> points{{20, 50}, {150, 60}, {NAN, 60}, {150, inf}, {3e9f, 60}, {-400, 60}, {150, 60}};
    std::vector<Point2f> guesses = points;
    guesses[6] = {NAN, 60};
    const Tracks tracks = follow(prev, next, points, guesses, p);
    EXPECT_EQ(tracks.status[1], 0);
    EXPECT_NEAR(tracks.positions[1].x, 156, 0.1);
    for (const std::size_t lost : {0u, 2u, 3u, 4u, 5u, 6u}) {
        EXPECT_EQ(tracks.status[lost], 3) << lost;
        EXPECT_EQ(tracks.error[lost], 0.0f) << lost;
        EXPECT_TRUE(sameValue(tracks.positions[lost].x, guesses[lost].x) &&
                    sameValue(tracks.positions[lost].y, guesses[lost].y))
            << lost;
    }
    // Flat on level 0 alone: the position of level 1 is kept.
    Pyramid<float> flatPrev(render(210, 120, [](Position) { return 50.0; }), 0, 2);
    Pyramid<float> flatNext(render(210, 120, [](Position) { return 50.0; }), 0, 2);
    for (std::size_t l = 1; l < 3; ++l) {
        flatPrev.add(prev.levels[l], prev.scale(l)), flatNext.add(next.levels[l], next.scale(l));
    }
    const Tracks coarse = follow(flatPrev, flatNext, {{150, 60}}, {{150, 60}}, p);
    EXPECT_EQ(coarse.status[0], 1);
    EXPECT_EQ(coarse.error[0], 0.0f);
    EXPECT_NEAR(coarse.positions[0].x, 156, 0.6);

    // A window of one pixel has no two directions; nor has what is left of a window in the image's corner.
    const Tracks single = follow(prev, next, {{150, 60}, {150.4f, 60.3f}}, {{150, 60}, {150, 60}}, {1, 0, 5, 0.01});
    EXPECT_EQ(single.status[0], 1);
    EXPECT_EQ(single.status[1], 1);
    const Tracks corner = follow(prev, next, {{214, 124}}, {{214, 124}}, {11, 0, 5, 0.01});
    EXPECT_EQ(corner.status[0], 1);
}

// The determinant's limit is absolute: a float image may be faint, but not fainter.
TEST(OpticalFlow, FaintImagesTrack) {
    Rng rng = makeRng("faint");
    const Texture texture(rng);
    const Image frame = render(80, 60, [&](Position p) { return texture.at(p); });
    const Image moved = render(80, 60, [&](Position p) { return texture.at({p.x - 1.5, p.y - 0.5}); });
    for (const double factor : {1e-5, 1e-8}) {
        Pyramid<float> prev(frame, 0, 2, factor), next(moved, 0, 2, factor);
        const Tracks tracks = follow(prev, next, {{40, 30}}, {{40, 30}}, {15, 0, 20, 0.01});
        if (factor > 1e-7) {
            EXPECT_EQ(tracks.status[0], 0);
            EXPECT_NEAR(tracks.positions[0].x, 41.5, 0.05);
            EXPECT_NEAR(tracks.positions[0].y, 30.5, 0.05);
        } else {
            EXPECT_EQ(tracks.status[0], 1);
        }
    }
}

// Pixels under a fraction of 0, or outside the part that counts, have no effect, whatever they are.
TEST(OpticalFlow, PixelsThatDoNotCountMayBeAnything) {
    Rng rng = makeRng("nan around");
    const Texture texture(rng);
    Image frame = render(40, 40, [&](Position p) { return texture.at(p); });
    Image spoilt = frame;
    for (std::int64_t i = 0; i < 40; ++i) {
        spoilt.at(i, 0) = spoilt.at(0, i) = NAN;
        spoilt.at(i, 26) = spoilt.at(26, i) = INFINITY; // right of and below a window of 11 around (20, 20)
    }
    Pyramid<float> prev(frame, 0, 2), next(spoilt, 0, 2);
    const Tracks same = follow(prev, next, {{20, 20}}, {{20, 20}}, {11, 0, 1, 0});
    EXPECT_EQ(same.status[0], 0);
    EXPECT_EQ(same.positions[0].x, 20.0f);
    EXPECT_EQ(same.positions[0].y, 20.0f);
    EXPECT_EQ(same.error[0], 0.0f);
    const Tracks nan = follow(prev, next, {{20, 22}}, {{20, 22}}, {11, 0, 5, 0});
    EXPECT_EQ(nan.status[0], 1);
    EXPECT_EQ(nan.positions[0].y, 22.0f);
}

TEST(OpticalFlow, LevelsThatAPyramidDoesNotHave) {
    Rng rng = makeRng("levels");
    const Texture texture(rng);
    const Image frame = render(90, 70, [&](Position p) { return texture.at(p); });
    Pyramid<std::uint8_t> prev(frame, 2, 2), next(frame, 1, 2);
    const std::vector<Point2f> points{{45, 30}};
    const Tracks tracks = follow(prev, next, points, points, {9, 9, 5, 0.01});
    EXPECT_EQ(tracks.status[0], 0);
    EXPECT_EQ(tracks.positions[0].x, 45.0f);
    EXPECT_EQ(tracks.error[0], 0.0f);

    // A level without an image, and a level number that a byte cannot hold.
    OpticalFlowState *state = nullptr;
    ASSERT_EQ(initAlloc<std::uint8_t>(&state, {5, 5}, 9), StatusOk);
    PyramidRecord prevRecord = prev.record(), nextRecord = next.record();
    void *images[2] = {nextRecord.images[0], nullptr};
    nextRecord.images = images;
    Point2f position = points[0];
    std::uint8_t status = 99;
    float error = -1;
    EXPECT_EQ(track<std::uint8_t>(&prevRecord, &nextRecord, points.data(), &position, &status, &error, 1, 9, 1, 5,
                                  0.01f, state),
              StatusOk);
    EXPECT_EQ(status, 2);
    EXPECT_EQ(error, 0.0f);
    EXPECT_EQ(freeState<std::uint8_t>(state), StatusOk);

    Pyramid<float> deep(frame, 0, 2);
    for (int i = 1; i < 300; ++i) {
        deep.add(Image(1, 1), 0.01);
    }
    EXPECT_EQ(follow(deep, deep, points, points, {9, 299, 5, 0.01}).status[0], 255);
}

struct MakeCall {
    OpticalFlowState **state;
    RoiSize maxRoi;
    std::int32_t winSize;
};

template <class T> void checkStates() {
    OpticalFlowState *state = nullptr;
    Faults<MakeCall> faults;
    faults.nulls(&MakeCall::state).values(StatusBadSize, &MakeCall::winSize, {0}).empty(&MakeCall::maxRoi);
    faults.values(StatusNoMemory, &MakeCall::winSize, {INT32_MAX}); // more than there is
    expectFaultOrder<MakeCall>(
        {&state, {64, 48}, 21}, faults,
        [](const MakeCall &c) {
            const StatusCode status = initAlloc<T>(c.state, c.maxRoi, c.winSize);
            if (status == StatusOk) {
                EXPECT_EQ(freeState<T>(*c.state), StatusOk);
            }
            return status;
        },
        [&] {
            const auto *p = reinterpret_cast<const std::uint8_t *>(&state);
            return std::vector<std::uint8_t>(p, p + sizeof state);
        });
    EXPECT_EQ(freeState<T>(nullptr), StatusNullPointer);
    EXPECT_EQ(failEveryAllocation<OpticalFlowState>(
                  [](OpticalFlowState **made) {
                      return initAlloc<T>(made, {64, 48}, 21);
                  },
                  freeState<T>),
              2);

    CountedAlloc::reset();
    ASSERT_EQ(initAlloc<T>(&state, {64, 48}, 5), StatusOk);
    std::int32_t filter = 0;
    ASSERT_EQ(rvxiFilterScharrVertGetBufferSize_32f_C1R({69, 53}, &filter), StatusOk);
    const std::int64_t window = (4 * 5 + 12) * (5 + 3) + (8 * 5 + 24) * (5 + 3) + 17;
    const bool floats = std::is_same_v<T, float>;
    EXPECT_EQ(CountedAlloc::largest, floats ? 4 * (window + 2 * 69 * 53) + filter : 4 * window);
    EXPECT_EQ(state->maxWidth, 64);
    EXPECT_EQ(state->maxHeight, 48);
    EXPECT_EQ(state->one, 1);
    EXPECT_EQ(state->pixelType, (std::is_same_v<T, float> ? PixelType32f
                                 : sizeof(T) == 1         ? PixelType8u
                                                          : PixelType16u));
    EXPECT_EQ(state->hint, 7);
    EXPECT_EQ(state->winSize, 5);
    EXPECT_EQ(freeState<T>(state), StatusOk);
}

TEST(OpticalFlow, States) {
    checkStates<std::uint8_t>();
    checkStates<std::uint16_t>();
    checkStates<float>();
}

struct TrackCall {
    const PyramidRecord *prev, *next;
    const Point2f *prevPoints;
    Point2f *nextPoints;
    std::uint8_t *status;
    float *error;
    std::int32_t numPoints, winSize, maxLevel, maxIterations;
    float threshold;
    OpticalFlowState *state;
};

template <class T> void checkStatuses() {
    Pyramid<T> pyramid(render(30, 20, [](Position p) { return p.x + p.y; }), 1, 2);
    const PyramidRecord record = pyramid.record();
    OpticalFlowState *state = nullptr;
    ASSERT_EQ(initAlloc<T>(&state, {30, 20}, 5), StatusOk);
    struct {
        Point2f position{9, 9};
        float error = -1;
        std::uint8_t status[4] = {9, 9, 9, 9};
    } outputs;
    const Point2f point{9, 9};
    using C = TrackCall;
    Faults<C> faults;
    faults.nulls(&C::prev, &C::next, &C::prevPoints, &C::nextPoints, &C::status, &C::error, &C::state);
    faults.values(StatusBadSize, &C::numPoints, {0}).values(StatusBadSize, &C::winSize, {0, 7});
    faults.values(StatusBadArgument, &C::maxLevel, {-1}).values(StatusBadArgument, &C::maxIterations, {0});
    faults.values(StatusBadArgument, &C::threshold, {-1e-6f, NAN});
    expectFaultOrder<TrackCall>(
        {&record, &record, &point, &outputs.position, outputs.status, &outputs.error, 1, 5, 1, 4, 0.0f, state}, faults,
        [](const TrackCall &c) {
            return track<T>(c.prev, c.next, c.prevPoints, c.nextPoints, c.status, c.error, c.numPoints, c.winSize,
                            c.maxLevel, c.maxIterations, c.threshold, c.state);
        },
        [&] {
            const auto *p = reinterpret_cast<const std::uint8_t *>(&outputs);
            return std::vector<std::uint8_t>(p, p + sizeof outputs);
        });
    EXPECT_EQ(freeState<T>(state), StatusOk);
}

TEST(OpticalFlow, StatusesInTheOrderOfTheChecks) {
    checkStatuses<std::uint8_t>();
    checkStatuses<std::uint16_t>();
    checkStatuses<float>();
}

} // namespace
