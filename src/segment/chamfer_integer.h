// Chamfer distances of 8 and 16 bits, row by row in whole vectors. The terms of the rows above (below, in the second
// pass) are shifted rows plus a cost. Along the row, the running minimum of a vector is made in steps of 1, 2, 4, 8
// lanes, then from one half to the other and from one vector to the next by the distances to the lanes behind:
// additions saturate, so every order of adding gives the same result.
#pragma once

#include "kernel/plane.h"
#include "kernel/vec.h"
#include "segment/chamfer_costs.h"

namespace rvxcv {

// All bits set: the largest distance, which stands for every pixel outside the region.
template <class T> RVX_INLINE Vec<T> farAway() { return splat(std::numeric_limits<T>::max()); }

// All bits set from lane n on.
template <class T> RVX_INLINE Vec<T> fromLane(int n) {
    alignas(32) static constexpr std::uint8_t edge[64] = {
        0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,
        0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,
        0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff,
        0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff};
    return detail::fromRaw<Vec<T>>(
        _mm256_loadu_si256(reinterpret_cast<const __m256i *>(edge + 32 - static_cast<std::ptrdiff_t>(sizeof(T)) * n)));
}

// A row in vectors; lanes outside the region are far away.
template <class T> class RowBlocks {
    static constexpr int lanes = Vec<T>::lanes;

public:
    explicit RowBlocks(std::int64_t width)
        : count((width + lanes - 1) / lanes), tail_(static_cast<int>(width - (count - 1) * lanes)),
          outside_(fromLane<T>(tail_)) {}

    // Calls function(the block's span).
    template <class Function> RVX_INLINE auto inSpan(std::int64_t block, const Function &function) const {
        return block == count - 1 && tail_ != lanes ? function(Part{tail_}) : function(Full{});
    }
    RVX_INLINE Vec<T> load(const T *row, std::int64_t block) const {
        if (block < 0 || block >= count) {
            return farAway<T>();
        }
        return inSpan(block, [&](auto span) { return bounded(rvxcv::load<Vec<T>>(row + block * lanes, span), span); });
    }
    RVX_INLINE Vec<T> bounded(Vec<T> a, Full) const { return a; }
    RVX_INLINE Vec<T> bounded(Vec<T> a, Part) const { return bitOr(a, outside_); }

    const std::int64_t count;

private:
    int tail_;
    Vec<T> outside_;
};

// Three neighbouring blocks of a row, in the order of travel; without a row, all is far away.
template <class T, bool forward> class NeighbourRow {
    using V = Vec<T>;
    static constexpr int lanes = V::lanes, size = static_cast<int>(sizeof(T));

public:
    RVX_INLINE NeighbourRow(const RowBlocks<T> &blocks, const T *row, std::int64_t first)
        : row_(row), behind_(farAway<T>()), here_(farAway<T>()),
          ahead_(row != nullptr ? blocks.load(row, first) : farAway<T>()) {}

    // On to this block.
    RVX_INLINE void advance(const RowBlocks<T> &blocks, std::int64_t block) {
        behind_ = here_;
        here_ = ahead_;
        ahead_ = row_ != nullptr ? blocks.load(row_, forward ? block + 1 : block - 1) : farAway<T>();
    }
    RVX_INLINE V here() const { return here_; }
    // The smaller one of the neighbours on both sides.
    template <int distance> RVX_INLINE V beside() const {
        const V left = forward ? behind_ : ahead_, right = forward ? ahead_ : behind_;
        return min(shiftedIn<(lanes - distance) * size>(left, here_), shiftedIn<distance * size>(here_, right));
    }

private:
    const T *row_;
    V behind_, here_, ahead_;
};

// The running minimum along a row, in the direction of travel. `reach` is the longest step: 1 or 4 pixels.
template <class T, bool forward, int reach> class RunningMinimum {
    using V = Vec<T>;
    static constexpr int lanes = V::lanes, half = lanes / 2, size = static_cast<int>(sizeof(T));
    static constexpr int last = forward ? half - 1 : 0; // of a half, in the order of travel

public:
    explicit RunningMinimum(const StepCosts<T> &costs) {
        const auto along = [&](int pixels) {
            const std::int64_t cost = std::int64_t{costs.four} * (pixels / 4) + (pixels & 2 ? costs.two : 0) +
                                      (pixels & 1 ? costs.straight : 0);
            return static_cast<T>(std::min<std::int64_t>(cost, std::numeric_limits<T>::max()));
        };
        one_ = splat(along(1));
        two_ = splat(along(2));
        four_ = splat(along(4));
        eight_ = splat(along(8));
        for (int j = 0; j < reach; ++j) {
            T halves[lanes], whole[lanes];
            for (int i = 0; i < lanes; ++i) {
                const int travelled = forward ? i : lanes - 1 - i;
                halves[i] = along(travelled % half + 1 + j);
                whole[i] = along(travelled + 1 + j);
            }
            halfway_[j] = rvxcv::load<V>(halves);
            onward_[j] = rvxcv::load<V>(whole);
        }
        restart();
    }

    RVX_INLINE void restart() {
        for (V &value : behind_) {
            value = farAway<T>();
        }
    }

    RVX_INLINE V operator()(V a) {
        a = withStep<1>(a, one_);
        a = withStep<2>(a, two_);
        a = withStep<4>(a, four_);
        if constexpr (half > 8) {
            a = withStep<8>(a, eight_);
        }
        const V before = forward ? joinedHalves<0, 0>(farAway<T>(), a) : joinedHalves<1, 0>(a, farAway<T>());
        repeatLanes([&](auto lane, int j) { a = min(a, addSaturated(repeatedInLane<lane>(before), halfway_[j])); });
        for (int j = 0; j < reach; ++j) {
            a = min(a, addSaturated(behind_[j], onward_[j]));
        }
        const V end = forward ? joinedHalves<1, 1>(a, a) : joinedHalves<0, 0>(a, a);
        repeatLanes([&](auto lane, int j) { behind_[j] = repeatedInLane<lane>(end); });
        return a;
    }

private:
    template <int step> RVX_INLINE static V withStep(V a, V cost) {
        const V shifted =
            forward ? shiftedInLane<16 - step * size>(farAway<T>(), a) : shiftedInLane<step * size>(a, farAway<T>());
        return min(a, addSaturated(shifted, cost));
    }
    // function(lane, j): the j-th of the lanes that a step reaches beyond a half's end from.
    template <class Function> RVX_INLINE static void repeatLanes(const Function &function) {
        [&]<int... j>(std::integer_sequence<int, j...>) {
            (function(std::integral_constant < int, forward ? last - j : last + j > {}, j), ...);
        }
        (std::make_integer_sequence<int, reach>{});
    }

    V one_, two_, four_, eight_;
    V halfway_[reach], onward_[reach];
    V behind_[reach];
};

template <class T, bool knights, int reach> class IntegerChamfer {
    using V = Vec<T>;
    static constexpr int lanes = V::lanes;

public:
    IntegerChamfer(Plane<const std::uint8_t> src, Plane<T> dst, RoiSize roi, const StepCosts<T> &costs)
        : src_(src), dst_(dst), roi_(roi), costs_(costs), blocks_(roi.width), straight_(splat(costs.straight)),
          diagonal_(splat(costs.diagonal)), knight_(splat(costs.knight)) {}

    void run() const {
        pass<true, Start::source>();
        pass<false, Start::distances>();
        while (costs_.repeated && pass<true, Start::distances>() && pass<false, Start::distances>()) {
        }
    }

private:
    // Whether a distance changed.
    template <bool forward, Start start> bool pass() const {
        RunningMinimum<T, forward, reach> along(costs_);
        V changes = splat(T{0});
        for (std::int64_t i = 0; i < roi_.height; ++i) {
            const std::int64_t y = forward ? i : roi_.height - 1 - i, back = forward ? -1 : 1;
            changes = bitOr(changes, passRow<forward, start>(along, src_.row(y), dst_.row(y),
                                                             i >= 1 ? dst_.row(y + back) : nullptr,
                                                             i >= 2 ? dst_.row(y + 2 * back) : nullptr));
        }
        return anyBit(changes);
    }

    template <bool forward, Start start>
    RVX_INLINE V passRow(RunningMinimum<T, forward, reach> &along, const std::uint8_t *src, T *dst, const T *before,
                         const T *twoBefore) const {
        V changes = splat(T{0});
        const std::int64_t first = forward ? 0 : blocks_.count - 1;
        NeighbourRow<T, forward> near(blocks_, before, first), far(blocks_, knights ? twoBefore : nullptr, first);
        along.restart();
        for (std::int64_t i = 0; i < blocks_.count; ++i) {
            const std::int64_t block = forward ? i : first - i;
            near.advance(blocks_, block);
            V distance = min(addSaturated(near.here(), straight_), addSaturated(near.template beside<1>(), diagonal_));
            if constexpr (knights) {
                far.advance(blocks_, block);
                distance =
                    min(distance, addSaturated(min(near.template beside<2>(), far.template beside<1>()), knight_));
            }
            blocks_.inSpan(block, [&](auto span) {
                T *const place = dst + block * lanes;
                if constexpr (start == Start::source) {
                    distance = bitAndNot(distance, zeros(src + block * lanes, span));
                    store(place, along(blocks_.bounded(distance, span)), span);
                } else {
                    const V old = load<V>(place, span);
                    distance = along(blocks_.bounded(min(distance, old), span));
                    changes = bitOr(changes, bitAndNot(old, distance)); // lanes outside the region are zero in `old`
                    store(place, distance, span);
                }
            });
        }
        return changes;
    }

    // All bits where the source is zero.
    template <class Span> RVX_INLINE static V zeros(const std::uint8_t *src, Span span) {
        if constexpr (sizeof(T) == 1) {
            return equal(load<V>(src, span), splat(T{0}));
        } else {
            return equal(U16x16{{loadI16(src, span).v}}, splat(T{0}));
        }
    }

    Plane<const std::uint8_t> src_;
    Plane<T> dst_;
    RoiSize roi_;
    StepCosts<T> costs_;
    RowBlocks<T> blocks_;
    V straight_, diagonal_, knight_;
};

} // namespace rvxcv
