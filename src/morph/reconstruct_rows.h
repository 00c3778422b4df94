// Scans of reconstruction: growth through the rows, downwards or upwards. Every row grows from the one before it, then
// along itself to the right and to the left, after which nothing more can grow in it. So one scan follows any path that
// does not turn back to the row that it came from.
//
// Along a row every pixel is a clamp of the one before: J(x) = min(mask(x), max(J(x), J(x - 1))). Clamps applied one
// after the other are a clamp again, so those of a vector join in a number of steps that is the logarithm of its lanes,
// and only one value is carried from vector to vector.
#pragma once

#include "kernel/plane.h"
#include "kernel/scratch.h"
#include "morph/growth.h"

#include "rvxcv/types.h"

#include <algorithm>
#include <bit>

namespace rvxcv {

enum class Sweep { right, left };

// The clamps f(v) = limited(top, grown(bottom, v)) of a vector's lanes, applied from lane to lane to the value in all
// lanes of `carry`, which becomes that of the last lane.
template <class G, Sweep sweep, int bytes = static_cast<int>(sizeof(typename G::T))>
RVX_INLINE typename G::V swept(typename G::V bottom, typename G::V top, typename G::V &carry) {
    using V = typename G::V;
    if constexpr (bytes < 16) {
        // Behind what the lane before (or several of them) does.
        const V low = splat(G::low), high = splat(G::high);
        V bottomBefore, topBefore;
        if constexpr (sweep == Sweep::right) {
            bottomBefore = shiftedInLane<16 - bytes>(low, bottom);
            topBefore = shiftedInLane<16 - bytes>(high, top);
        } else {
            bottomBefore = shiftedInLane<bytes>(bottom, low);
            topBefore = shiftedInLane<bytes>(top, high);
        }
        return swept<G, sweep, 2 * bytes>(G::limited(top, G::grown(bottom, bottomBefore)),
                                          G::limited(top, G::grown(bottom, topBefore)), carry);
    } else {
        // The second half behind the first one, then all lanes behind the carry: only two operations depend on it.
        constexpr int last = sweep == Sweep::right ? V::lanes / 2 - 1 : 0;
        constexpr int first = sweep == Sweep::right ? 0 : 1; // half
        const auto lastOf = [](V a, auto half) {
            return repeatedInLane<last>(joinedHalves<decltype(half)::value, decltype(half)::value>(a, a));
        };
        constexpr std::integral_constant<int, first> begun{};
        constexpr std::integral_constant<int, 1 - first> ended{};
        const V bottomBegun = lastOf(bottom, begun), topBegun = lastOf(top, begun);
        const V bottomEnded = G::limited(top, G::grown(bottom, bottomBegun));
        const V topEnded = G::limited(top, G::grown(bottom, topBegun));
        bottom =
            sweep == Sweep::right ? joinedHalves<0, 1>(bottom, bottomEnded) : joinedHalves<0, 1>(bottomEnded, bottom);
        top = sweep == Sweep::right ? joinedHalves<0, 1>(top, topEnded) : joinedHalves<0, 1>(topEnded, top);
        const V result = G::limited(top, G::grown(bottom, carry));
        carry = G::limited(lastOf(top, ended), G::grown(lastOf(bottom, ended), carry));
        return result;
    }
}

// A row in the scratch with a vector's space before and behind it. `put` stores one vector late, so that the one beside
// still finds the old values.
template <class G> class RowBefore {
public:
    using T = typename G::T;
    using V = typename G::V;

    RowBefore(Scratch &scratch, std::int64_t width)
        : row_(scratch.take<T>(V::lanes + roundUp(width, V::lanes) + V::lanes, 32) + V::lanes), width_(width) {}

    void fill(T value) { std::fill(row_ - V::lanes, row_ + roundUp(width_, V::lanes) + V::lanes, value); }

    RVX_INLINE V at(std::int64_t x) const { return load<V>(row_ + x); }
    // The space at x, outside the row, keeps its value.
    RVX_INLINE void begin(std::int64_t x, V value) {
        pending_ = row_ + x;
        late_ = value;
    }
    RVX_INLINE void put(std::int64_t x, V value) {
        store(pending_, late_);
        pending_ = row_ + x;
        late_ = value;
    }
    RVX_INLINE void end() { store(pending_, late_); }
    RVX_INLINE void set(std::int64_t x, V value) { store(row_ + x, value); }

private:
    T *row_, *pending_;
    std::int64_t width_;
    V late_;
};

template <class G, bool eight> class Scans {
public:
    using T = typename G::T;
    using V = typename G::V;

    Scans(Plane<const T> mask, Plane<T> marker, RoiSize roi, Scratch &scratch)
        : mask_(mask), marker_(marker), roi_(roi), words_((std::int64_t{roi.width} + 63) / 64),
          rowSeeds_(scratch.take<std::uint64_t>(words_)), results_(scratch, roi.width), open_(scratch, roi.width) {}

    // The first one also brings the marker below its mask.
    void down() {
        results_.fill(G::low);
        for (std::int64_t y = 0; y < roi_.height; ++y) {
            growRight(y);
            growLeft<false>(y);
        }
    }

    // Sets the bits (by index, of zeros with 16 bytes more) of the pixels from which growth can go on, and returns
    // their number. Growth can only go on downwards: in the other directions the scan leaves nothing to do.
    std::int64_t up(std::uint8_t *seeds) {
        results_.fill(G::low);
        open_.fill(G::high);
        std::int64_t count = 0;
        rowSeeds_[words_ - 1] = 0;
        for (std::int64_t y = roi_.height - 1; y >= 0; --y) {
            growRight(y);
            growLeft<true>(y);
            count += appendRowSeeds(y * roi_.width, seeds);
        }
        return count;
    }

private:
    static RVX_INLINE V filled(V a, Full) { return a; }
    static RVX_INLINE V filled(V a, Part part) { return select(maskOfBits<V>((1u << part.n) - 1), a, splat(G::low)); }

    // Lanes behind the row have the low value as their mask, which nothing gets through.
    template <class Span> RVX_INLINE V limits(std::int64_t x, std::int64_t y, Span span) const {
        return filled(load<V>(mask_.row(y) + x, span), span);
    }

    template <class Combine> static RVX_INLINE V around(const RowBefore<G> &row, std::int64_t x, Combine combine) {
        if constexpr (eight) {
            return combine(combine(row.at(x - 1), row.at(x + 1)), row.at(x));
        } else {
            return row.at(x);
        }
    }

    // From the row before and to the right; the results stay in the scratch.
    void growRight(std::int64_t y) {
        V carry = splat(G::low);
        const auto block = [&](std::int64_t x, auto span) {
            const V mask = limits(x, y, span);
            const V beside = G::grown(load<V>(marker_.row(y) + x, span), around(results_, x, G::grown));
            results_.put(x, swept<G, Sweep::right>(G::limited(mask, beside), mask, carry));
        };
        results_.begin(-V::lanes, carry);
        std::int64_t x = 0;
        for (; x + V::lanes <= roi_.width; x += V::lanes) {
            block(x, Full{});
        }
        if (x < roi_.width) {
            block(x, Part{static_cast<int>(roi_.width - x)});
        }
        results_.end();
    }

    template <bool marksSeeds> void growLeft(std::int64_t y) {
        V carry = splat(G::low);
        const auto block = [&](std::int64_t x, auto span) {
            const V mask = limits(x, y, span);
            const V result = swept<G, Sweep::left>(results_.at(x), mask, carry);
            store(marker_.row(y) + x, result, span);
            results_.set(x, result);
            if constexpr (marksSeeds) {
                markSeeds(x, result, mask);
            }
        };
        std::int64_t x = roundUp(roi_.width, V::lanes) - V::lanes;
        if constexpr (marksSeeds) {
            open_.begin(x + V::lanes, splat(G::high));
        }
        if (roi_.width % V::lanes != 0) {
            block(x, Part{static_cast<int>(roi_.width - x)});
            x -= V::lanes;
        }
        for (; x >= 0; x -= V::lanes) {
            block(x, Full{});
        }
        if constexpr (marksSeeds) {
            open_.end();
        }
    }

    // The open row has what a pixel must exceed to raise those below it; nothing does where these have reached the
    // mask.
    RVX_INLINE void markSeeds(std::int64_t x, V result, V mask) {
        using Bits = std::conditional_t<V::lanes == 32, std::uint32_t,
                                        std::conditional_t<V::lanes == 16, std::uint16_t, std::uint8_t>>;
        const auto bits = static_cast<Bits>(G::beyond(result, around(open_, x, G::limited)));
        std::memcpy(reinterpret_cast<std::uint8_t *>(rowSeeds_) + x / 8, &bits, sizeof bits);
        open_.put(x, select(equal(result, mask), splat(G::high), result));
    }

    // The bits of a row, from `index` on.
    std::int64_t appendRowSeeds(std::int64_t index, std::uint8_t *seeds) const {
        std::int64_t count = 0;
        for (std::int64_t k = 0; k < words_; ++k) {
            const std::uint64_t bits = rowSeeds_[k];
            if (bits == 0) {
                continue;
            }
            const std::int64_t first = index + 64 * k;
            const int shift = static_cast<int>(first & 7);
            auto *const place = reinterpret_cast<std::uint64_t *>(seeds + (first >> 3));
            storeScalar(place, loadScalar(place) | bits << shift);
            seeds[(first >> 3) + 8] |= static_cast<std::uint8_t>(bits >> 1 >> (63 - shift));
            count += std::popcount(bits);
        }
        return count;
    }

    Plane<const T> mask_;
    Plane<T> marker_;
    RoiSize roi_;
    std::int64_t words_;
    std::uint64_t *rowSeeds_;
    RowBefore<G> results_, open_;
};

} // namespace rvxcv
