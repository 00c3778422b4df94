// Pyramidal Lucas-Kanade optical flow: points followed from one frame to the next, from the coarsest level of two
// pyramids to the finest (Bouguet, Pyramidal Implementation of the Lucas Kanade Feature Tracker, 2000).
//
// A point is followed through all levels before the next one; points do not depend on each other. What a window costs
// and how the sums are formed is in optical_flow_window.h.
#include "frame/api.h"
#include "motion/optical_flow_window.h"

#include "rvxcore.h"

namespace rvxcv {
namespace {

constexpr double leastDeterminant = 2.220446049250313e-16;
constexpr double oscillation = 0.0003452669770922512;

struct Vector {
    double x, y;
};

struct Limits {
    std::int32_t iterations;
    double threshold;
};

struct Solver {
    GradientMatrix matrix{};
    double determinant = 0;

    Solver() = default;
    explicit Solver(const GradientMatrix &m) : matrix(m), determinant(m.xx * m.yy - m.xy * m.xy) {}

    // Float products are good enough unless the determinant is what they leave of a much larger number.
    bool isReliable() const { return determinant > 1e-3 * (matrix.xx * matrix.yy); }
    bool isRegular() const { return determinant >= leastDeterminant; } // and not NaN
    Vector solve(Vector b) const {
        return {(matrix.yy * b.x - matrix.xy * b.y) / determinant, (matrix.xx * b.y - matrix.xy * b.x) / determinant};
    }
};

SubpixPosition windowPosition(Vector centre, std::int64_t size) {
    return {subpixAxis(centre.x, size), subpixAxis(centre.y, size)};
}
bool isPosition(Vector v) { return isCentre(v.x) && isCentre(v.y); }

// b at a position, from the sums of the pixels between which it lies.
Vector mismatch(const MismatchSums &sums, const SubpixPosition &position) {
    const double a = position.x.fraction, b = position.y.fraction;
    const auto combined = [&](const double(&s)[4]) {
        const double upper = s[0] + a * (s[1] - s[0]), lower = s[2] + a * (s[3] - s[2]);
        return upper + b * (lower - upper);
    };
    return {combined(sums.x), combined(sums.y)};
}

// One point at one level.
template <class T> class LevelTracker {
public:
    enum class Result : std::uint8_t {
        tracked,
        lost,
        apart // lost, but its position counts
    };

    LevelTracker(const FlowWindow &window, const LevelImage<T> &prev, const LevelImage<T> &next)
        : window_(window), prev_(prev), next_(next) {}

    // v is the guess and becomes the position.
    Result track(Vector u, Vector &v, const Limits &limits) {
        if (!isPosition(u)) {
            return Result::lost;
        }
        const SubpixPosition from = windowPosition(u, window_.size);
        if (prev_.inside({{from.x.index - 1, from.x.fraction}, {from.y.index - 1, from.y.fraction}}, window_.size + 2)
                .empty()) {
            return Result::lost;
        }
        const GradientMatrix whole = takeWindow(window_, prev_, from);
        const WindowPart valid = prev_.inside(from, window_.size);
        const WindowPart all{{0, window_.size - 1}, {0, window_.size - 1}};

        Vector previous{};
        Solver solver;
        MismatchSums sums{};
        for (std::int32_t k = 1;; ++k) {
            if (!isPosition(v)) {
                return Result::lost;
            }
            const SubpixPosition position = windowPosition(v, window_.size);
            const WindowPart sampled = next_.inside(position, window_.size);
            if (sampled.empty()) {
                return Result::lost;
            }
            const WindowPart common = valid.intersected(sampled);
            if (common.empty()) {
                return Result::apart;
            }
            const bool otherPart = k == 1 || !(common == part_);
            if (otherPart) {
                solver = Solver(common == all ? whole : partMatrix(window_, common));
                if (!solver.isReliable()) {
                    solver = Solver(exactMatrix(window_, common));
                }
                if (!solver.isRegular()) {
                    return Result::lost;
                }
            }
            if (otherPart || !sharesPixels(position, last_)) {
                sums = withNextPixels(window_, next_, position, common,
                                      [&](const auto &pixels) { return correlate(window_, common, pixels); });
            }
            part_ = common;
            last_ = position;

            const Vector d = solver.solve(mismatch(sums, position));
            v = {v.x + d.x, v.y + d.y};
            if (!isPosition(v)) {
                return Result::lost;
            }
            if (d.x * d.x + d.y * d.y < limits.threshold * limits.threshold) {
                return Result::tracked;
            }
            if (k > 1 && std::fabs(d.x + previous.x) < oscillation && std::fabs(d.y + previous.y) < oscillation) {
                v = {v.x - 0.5 * d.x, v.y - 0.5 * d.y};
                return Result::tracked;
            }
            if (k >= limits.iterations) {
                return Result::tracked;
            }
            previous = d;
        }
    }

    // Of the last window sampled.
    float error() const {
        const double sum = withNextPixels(window_, next_, last_, part_, [&](const auto &pixels) {
            return squaredResidual(window_, part_, pixels, last_);
        });
        return sum > 0 ? static_cast<float>(std::sqrt(sum / static_cast<double>(part_.pixels()))) : 0.0f;
    }

private:
    static bool sharesPixels(const SubpixAxis &a, const SubpixAxis &b) {
        return a.index == b.index && a.readsNext() == b.readsNext();
    }
    static bool sharesPixels(const SubpixPosition &a, const SubpixPosition &b) {
        return sharesPixels(a.x, b.x) && sharesPixels(a.y, b.y);
    }

    const FlowWindow &window_;
    LevelImage<T> prev_, next_;
    WindowPart part_;     // the samples that counted last
    SubpixPosition last_; // where they were taken
};

template <class T> LevelImage<T> levelImage(const PyramidRecord &pyramid, std::int32_t level) {
    const auto *pixels = static_cast<const T *>(pyramid.images[level]);
    const RoiSize roi = pixels != nullptr ? pyramid.roiSizes[level] : RoiSize{0, 0};
    return {{pixels, pyramid.steps[level]}, roi};
}

Vector scaled(Point2f point, double scale) {
    return {static_cast<double>(point.x) * scale, static_cast<double>(point.y) * scale};
}
Point2f unscaled(Vector v, double scale) { return {static_cast<float>(v.x / scale), static_cast<float>(v.y / scale)}; }

struct Outcome {
    std::int32_t status;
    float error;
};

// A point through all levels; next is its guess and becomes its position.
template <class T>
Outcome trackPoint(const FlowWindow &window, const PyramidRecord &prevPyramid, const PyramidRecord &nextPyramid,
                   std::int32_t top, Point2f prev, Point2f &next, const Limits &limits) {
    for (std::int32_t level = top; level >= 0; --level) {
        using Tracker = LevelTracker<T>;
        Tracker tracker(window, levelImage<T>(prevPyramid, level), levelImage<T>(nextPyramid, level));
        const double scale = prevPyramid.scales[level];
        Vector v = scaled(next, scale);
        const auto result = tracker.track(scaled(prev, scale), v, limits);
        if (result != Tracker::Result::lost) {
            next = unscaled(v, scale);
        }
        if (result != Tracker::Result::tracked) {
            return {level + 1, 0.0f};
        }
        if (level == 0) {
            return {0, tracker.error()};
        }
    }
    return {top + 1, 0.0f}; // pyramids without levels
}

template <class T>
StatusCode trackPoints(const PyramidRecord *prevPyramid, const PyramidRecord *nextPyramid, const Point2f *prevPoints,
                       Point2f *nextPoints, std::uint8_t *status, float *error, std::int32_t numPoints,
                       std::int32_t winSize, std::int32_t maxLevel, std::int32_t maxIterations, float threshold,
                       OpticalFlowState *state) {
    Checks checks;
    checks.pointers(prevPyramid, nextPyramid, prevPoints, nextPoints, status, error, state);
    checks.require(numPoints >= 1 && winSize >= 1, StatusBadSize);
    if (!checks.failed()) { // there is a state to look into
        checks.require(winSize == state->winSize, StatusBadSize);
    }
    checks.require(maxLevel >= 0 && maxIterations >= 1 && threshold >= 0.0f, StatusBadArgument);
    if (checks.failed()) {
        return checks.status();
    }
    const FlowWindow window(winSize, state->work);
    const std::int32_t top = std::min({maxLevel, prevPyramid->levelCount, nextPyramid->levelCount});
    for (std::int64_t i = 0; i < numPoints; ++i) {
        Point2f next = nextPoints[i];
        const Outcome outcome =
            trackPoint<T>(window, *prevPyramid, *nextPyramid, top, prevPoints[i], next, {maxIterations, threshold});
        nextPoints[i] = next;
        status[i] = static_cast<std::uint8_t>(std::min(outcome.status, 255));
        error[i] = outcome.error;
    }
    return StatusOk;
}

template <class T>
StatusCode makeState(OpticalFlowState **state, RoiSize maxRoi, std::int32_t winSize, std::int32_t hint,
                     PixelTypeCode type) {
    Checks checks;
    checks.pointers(state).require(winSize >= 1, StatusBadSize).size(maxRoi);
    if (checks.failed()) {
        return checks.status();
    }
    auto *made = static_cast<OpticalFlowState *>(rvxMalloc(sizeof(OpticalFlowState)));
    if (made == nullptr) {
        return StatusNoMemory;
    }
    const std::int64_t bytes = saturatedProduct(flowWorkFloats<T>(maxRoi, winSize), rowBytes<float>(1));
    *made = {maxRoi.width, maxRoi.height, 1, type, hint, winSize, rvxMalloc(bytes)};
    if (made->work == nullptr) {
        rvxFree(made);
        return StatusNoMemory;
    }
    *state = made;
    return StatusOk;
}

StatusCode freeState(OpticalFlowState *state) {
    if (state == nullptr) {
        return StatusNullPointer;
    }
    rvxFree(state->work);
    rvxFree(state);
    return StatusOk;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiOpticalFlowPyrLKInitAlloc_8u_C1R(OpticalFlowState **state, RoiSize maxRoi, int32_t winSize,
                                                int32_t hint) {
    return makeState<std::uint8_t>(state, maxRoi, winSize, hint, PixelType8u);
}
StatusCode rvxiOpticalFlowPyrLKInitAlloc_16u_C1R(OpticalFlowState **state, RoiSize maxRoi, int32_t winSize,
                                                 int32_t hint) {
    return makeState<std::uint16_t>(state, maxRoi, winSize, hint, PixelType16u);
}
StatusCode rvxiOpticalFlowPyrLKInitAlloc_32f_C1R(OpticalFlowState **state, RoiSize maxRoi, int32_t winSize,
                                                 int32_t hint) {
    return makeState<float>(state, maxRoi, winSize, hint, PixelType32f);
}

StatusCode rvxiOpticalFlowPyrLKFree_8u_C1R(OpticalFlowState *state) { return freeState(state); }
StatusCode rvxiOpticalFlowPyrLKFree_16u_C1R(OpticalFlowState *state) { return freeState(state); }
StatusCode rvxiOpticalFlowPyrLKFree_32f_C1R(OpticalFlowState *state) { return freeState(state); }

StatusCode rvxiOpticalFlowPyrLK_8u_C1R(const PyramidRecord *prevPyramid, const PyramidRecord *nextPyramid,
                                       const Point2f *prevPoints, Point2f *nextPoints, uint8_t *status, float *error,
                                       int32_t numPoints, int32_t winSize, int32_t maxLevel, int32_t maxIterations,
                                       float threshold, OpticalFlowState *state) {
    return trackPoints<std::uint8_t>(prevPyramid, nextPyramid, prevPoints, nextPoints, status, error, numPoints,
                                     winSize, maxLevel, maxIterations, threshold, state);
}
StatusCode rvxiOpticalFlowPyrLK_16u_C1R(const PyramidRecord *prevPyramid, const PyramidRecord *nextPyramid,
                                        const Point2f *prevPoints, Point2f *nextPoints, uint8_t *status, float *error,
                                        int32_t numPoints, int32_t winSize, int32_t maxLevel, int32_t maxIterations,
                                        float threshold, OpticalFlowState *state) {
    return trackPoints<std::uint16_t>(prevPyramid, nextPyramid, prevPoints, nextPoints, status, error, numPoints,
                                      winSize, maxLevel, maxIterations, threshold, state);
}
StatusCode rvxiOpticalFlowPyrLK_32f_C1R(const PyramidRecord *prevPyramid, const PyramidRecord *nextPyramid,
                                        const Point2f *prevPoints, Point2f *nextPoints, uint8_t *status, float *error,
                                        int32_t numPoints, int32_t winSize, int32_t maxLevel, int32_t maxIterations,
                                        float threshold, OpticalFlowState *state) {
    return trackPoints<float>(prevPyramid, nextPyramid, prevPoints, nextPoints, status, error, numPoints, winSize,
                              maxLevel, maxIterations, threshold, state);
}
