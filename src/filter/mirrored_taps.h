// Sums under a mirrored kernel of odd length: the elements under equal taps are added before they are multiplied, and
// the integer multiply-add takes two such sums at once, so that k taps cost about k / 4 multiplications. For elements
// whose sums of two fit in 16 bits.
#pragma once

#include "filter/pipeline_sums.h"

#include <algorithm>

namespace rvxcv {

// `taps` is the kernel's length when it is fixed, so that the taps stay in registers, and 0 when it is any.
template <int taps> class MirroredTaps {
public:
    MirroredTaps(const std::int16_t *kernel, std::int32_t kernelSize) : pairs_(kernel, kernelSize) {
        const int reach = kernelSize / 2;
        last_ = reach % 2 != 0 ? splatPair(kernel + reach - 1) : splatPair(loadScalar(kernel + reach), 0);
    }

    // The sums of a few neighbouring outputs: at(i, u) gives the elements of unit u that lie under tap i of output 0,
    // and under tap i - r of output r.
    template <int outputs, int units, class At>
    RVX_INLINE void sums(InLaneSum (&sum)[outputs][units], const At &at) const {
        const int reach = pairs_.count() / 2, end = pairs_.count() - 1;
        const auto both = [&](int i, int r, int u) { return add(at(r + i, u), at(r + end - i, u)); };
        for (auto &output : sum) {
            for (InLaneSum &s : output) {
                s = {splat(0), splat(0)};
            }
        }
        for (int p = 0; p < reach / 2; ++p) {
            const I16x16 taps2 = pairs_[p];
            for (int u = 0; u < units; ++u) {
                for (int r = 0; r < outputs; ++r) {
                    addPair(sum[r][u], both(2 * p, r, u), both(2 * p + 1, r, u), taps2);
                }
            }
        }
        if (reach % 2 != 0) { // the middle is the last pair's second half
            addLast(sum, at, [&](int r, int u) { return both(reach - 1, r, u); });
        } else {
            addLast(sum, at, [&](int r, int u) { return at(r + reach, u); });
        }
    }

private:
    template <int outputs, int units, class At, class Partner>
    RVX_INLINE void addLast(InLaneSum (&sum)[outputs][units], const At &at, const Partner &partner) const {
        for (int u = 0; u < units; ++u) {
            for (int r = 0; r < outputs; ++r) {
                addPair(sum[r][u], partner(r, u), at(r + pairs_.count() / 2, u), last_);
            }
        }
    }
    static RVX_INLINE void addPair(InLaneSum &sum, I16x16 a, I16x16 b, I16x16 taps2) {
        sum.low = add(sum.low, mulAddPairs(pairsInLaneLow(a, b), taps2));
        sum.high = add(sum.high, mulAddPairs(pairsInLaneHigh(a, b), taps2));
    }

    TapPairs<taps, taps / 4> pairs_;
    I16x16 last_;
};

} // namespace rvxcv
