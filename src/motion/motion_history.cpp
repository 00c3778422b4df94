// Motion history: where something moves the time is noted, and what is older than the limit is forgotten. Pointwise and
// in place; kept pixels keep their bits.
#include "frame/api.h"
#include "kernel/checks.h"
#include "kernel/plane.h"
#include "kernel/rows.h"

namespace rvxcv {
namespace {

// Lanes without motion. Floats compare as numbers: -0.0 is still, NaN is not.
template <class T, class Span> RVX_INLINE Mask32x8 still(const T *silhouette, Span span) {
    if constexpr (std::is_same_v<T, float>) {
        return equal(load<F32x8>(silhouette, span), splat(0.0f));
    } else {
        return equal(loadI32(silhouette, span), splat(0));
    }
}

template <class T> struct HistoryRow {
    const T *silhouette;
    float *history;
    F32x8 timestamp, limit;

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        const F32x8 before = load<F32x8>(history + x, span);
        const F32x8 remembered = without(before, greater(limit, before));
        store(history + x, select(still(silhouette + x, span), remembered, timestamp), span);
    }
};

template <class T>
StatusCode updateHistory(const T *silhouette, std::int32_t silhouetteStep, float *history, std::int32_t historyStep,
                         RoiSize roi, float timestamp, float duration) {
    const std::int64_t silhouetteBytes = rowBytes<T>(roi.width), historyBytes = rowBytes<float>(roi.width);
    Checks checks;
    checks.pointers(silhouette, history).size(roi).steps(silhouetteBytes, silhouetteStep);
    checks.steps(historyBytes, historyStep).multiples(sizeof(T), silhouetteStep).multiples(sizeof(float), historyStep);
    checks.require(!(duration < 0.0f), StatusOutOfRange);
    if (checks.failed()) {
        return checks.status();
    }
    const Plane moved{silhouette, silhouetteStep};
    const Plane times{history, historyStep};
    const F32x8 now = splat(timestamp), limit = splat(timestamp - duration);
    const RowShape shape(roi.width, roi.height, silhouetteStep == silhouetteBytes && historyStep == historyBytes);
    for (std::int64_t y = 0; y < shape.height; ++y) {
        walkRow<F32x8::lanes>(shape.width, HistoryRow<T>{moved.row(y), times.row(y), now, limit});
    }
    return StatusOk;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiUpdateMotionHistory_8u32f_C1IR(const uint8_t *silhouette, int32_t silhouetteStep, float *history,
                                              int32_t historyStep, RoiSize roi, float timestamp, float duration) {
    return updateHistory(silhouette, silhouetteStep, history, historyStep, roi, timestamp, duration);
}
StatusCode rvxiUpdateMotionHistory_16u32f_C1IR(const uint16_t *silhouette, int32_t silhouetteStep, float *history,
                                               int32_t historyStep, RoiSize roi, float timestamp, float duration) {
    return updateHistory(silhouette, silhouetteStep, history, historyStep, roi, timestamp, duration);
}
StatusCode rvxiUpdateMotionHistory_32f_C1IR(const float *silhouette, int32_t silhouetteStep, float *history,
                                            int32_t historyStep, RoiSize roi, float timestamp, float duration) {
    return updateHistory(silhouette, silhouetteStep, history, historyStep, roi, timestamp, duration);
}
