// Scans of reconstruction: growth through the rows, downwards and to the right, or upwards and to the left, each pixel
// from neighbours that the scan has been at.
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

// A row in the scratch with a vector's space before and behind it. It takes results one vector late, so that the vector
// beside still finds the old ones.
template <class G> class RowBefore {
public:
    using T = typename G::T;
    using V = typename G::V;

    RowBefore(Scratch &scratch, std::int64_t width)
        : row_(scratch.take<T>(V::lanes + roundUp(width, V::lanes) + V::lanes, 32) + V::lanes), width_(width) {}

    void fill(T value) { std::fill(row_ - V::lanes, row_ + roundUp(width_, V::lanes) + V::lanes, value); }

    RVX_INLINE V at(std::int64_t x) const { return load<V>(row_ + x); }
    RVX_INLINE void begin() { pending_ = nullptr; }
    RVX_INLINE void put(std::int64_t x, V value) {
        if (pending_ != nullptr) {
            store(pending_, late_);
        }
        pending_ = row_ + x;
        late_ = value;
    }
    RVX_INLINE void end() { store(pending_, late_); }

private:
    T *row_, *pending_ = nullptr;
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
            V carry = splat(G::low);
            results_.begin();
            std::int64_t x = 0;
            for (; x + V::lanes <= roi_.width; x += V::lanes) {
                grow<Sweep::right>(x, y, Full{}, carry);
            }
            if (x < roi_.width) {
                grow<Sweep::right>(x, y, Part{static_cast<int>(roi_.width - x)}, carry);
            }
            results_.end();
        }
    }

    // Sets the bits (by index, of zeros with 16 bytes more) of the pixels from which growth can go on, and returns
    // their number. These look at neighbours that the scan has been at: it leaves nothing to do in the other
    // directions.
    std::int64_t up(std::uint8_t *seeds) {
        results_.fill(G::low);
        open_.fill(G::high);
        std::int64_t count = 0;
        rowSeeds_[words_ - 1] = 0;
        for (std::int64_t y = roi_.height - 1; y >= 0; --y) {
            V carry = splat(G::low), openRight = splat(G::high);
            results_.begin();
            open_.begin();
            std::int64_t x = roundUp(roi_.width, V::lanes) - V::lanes;
            if (roi_.width % V::lanes != 0) {
                growAndMark(x, y, Part{static_cast<int>(roi_.width - x)}, carry, openRight);
                x -= V::lanes;
            }
            for (; x >= 0; x -= V::lanes) {
                growAndMark(x, y, Full{}, carry, openRight);
            }
            results_.end();
            open_.end();
            count += appendRowSeeds(y * roi_.width, seeds);
        }
        return count;
    }

private:
    struct Grown {
        V result, mask;
    };

    static RVX_INLINE V filled(V a, Full) { return a; }
    static RVX_INLINE V filled(V a, Part part) { return select(maskOfBits<V>((1u << part.n) - 1), a, splat(G::low)); }

    template <class Combine> static RVX_INLINE V around(const RowBefore<G> &row, std::int64_t x, Combine combine) {
        if constexpr (eight) {
            return combine(combine(row.at(x - 1), row.at(x + 1)), row.at(x));
        } else {
            return row.at(x);
        }
    }

    // Lanes behind the row have the low value as their mask, which nothing gets through.
    template <Sweep sweep, class Span> RVX_INLINE Grown grow(std::int64_t x, std::int64_t y, Span span, V &carry) {
        T *const p = marker_.row(y) + x;
        const V mask = filled(load<V>(mask_.row(y) + x, span), span);
        const V beside = G::grown(load<V>(p, span), around(results_, x, G::grown));
        const V result = swept<G, sweep>(G::limited(mask, beside), mask, carry);
        store(p, result, span);
        results_.put(x, result);
        return {result, mask};
    }

    template <class Span>
    RVX_INLINE void growAndMark(std::int64_t x, std::int64_t y, Span span, V &carry, V &openRight) {
        const auto [result, mask] = grow<Sweep::left>(x, y, span, carry);
        // What a neighbour must exceed to raise this pixel; nothing does where the mask is reached.
        const V open = select(equal(result, mask), splat(G::high), result);
        const V toTheRight = shiftedIn<static_cast<int>(sizeof(T))>(open, openRight);
        const std::uint32_t bits = G::beyond(result, G::limited(toTheRight, around(open_, x, G::limited)));
        open_.put(x, open);
        openRight = open;
        using Bits = std::conditional_t<V::lanes == 32, std::uint32_t,
                                        std::conditional_t<V::lanes == 16, std::uint16_t, std::uint8_t>>;
        const auto laneSeeds = static_cast<Bits>(bits);
        std::memcpy(reinterpret_cast<std::uint8_t *>(rowSeeds_) + x / 8, &laneSeeds, sizeof laneSeeds);
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
