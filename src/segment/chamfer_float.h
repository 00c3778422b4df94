// Chamfer distances in floats: the sequential recurrence, as it stands in the header.
#pragma once

#include "kernel/plane.h"
#include "segment/chamfer_costs.h"

namespace rvxcv {

template <bool knights, int reach> class FloatChamfer {
public:
    FloatChamfer(Plane<const std::uint8_t> src, Plane<float> dst, RoiSize roi, const StepCosts<float> &costs)
        : src_(src), dst_(dst), roi_(roi), costs_(costs) {}

    void run() const {
        pass<true>(true);
        pass<false>(false);
        for (int i = 0; i < 8 && costs_.repeated && pass<true>(false) && pass<false>(false); ++i) {
        }
    }

private:
    template <bool forward> bool pass(bool fromSource) const {
        bool changed = false;
        const std::int64_t w = roi_.width, h = roi_.height, d = forward ? -1 : 1;
        for (std::int64_t i = 0; i < h; ++i) {
            const std::int64_t y = forward ? i : h - 1 - i;
            float *const row = dst_.row(y);
            for (std::int64_t j = 0; j < w; ++j) {
                const std::int64_t x = forward ? j : w - 1 - j;
                const float old = !fromSource           ? loadScalar(row + x)
                                  : src_.row(y)[x] == 0 ? 0.0f
                                                        : std::numeric_limits<float>::max();
                float best = old;
                const auto consider = [&](std::int64_t dx, std::int64_t dy, float cost) {
                    const std::int64_t u = x + dx, v = y + dy;
                    if (u >= 0 && u < w && v >= 0 && v < h) {
                        best = std::min(best, loadScalar(dst_.row(v) + u) + cost);
                    }
                };
                consider(d, 0, costs_.straight);
                consider(0, d, costs_.straight);
                consider(-1, d, costs_.diagonal);
                consider(1, d, costs_.diagonal);
                if constexpr (reach == 4) {
                    consider(2 * d, 0, costs_.two);
                    consider(4 * d, 0, costs_.four);
                }
                if constexpr (knights) {
                    consider(-2, d, costs_.knight);
                    consider(2, d, costs_.knight);
                    consider(-1, 2 * d, costs_.knight);
                    consider(1, 2 * d, costs_.knight);
                }
                changed |= best < old;
                storeScalar(row + x, best);
            }
        }
        return changed;
    }

    Plane<const std::uint8_t> src_;
    Plane<float> dst_;
    RoiSize roi_;
    StepCosts<float> costs_;
};

} // namespace rvxcv
