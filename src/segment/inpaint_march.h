// Filling a hole from its edge inwards: each pixel is a mean of what the known pixels around it lead to expect.
#pragma once

#include "kernel/vec/double.h"
#include "segment/hole.h"

namespace rvxcv {

// A disc of neighbours, in rows of vectors that start `radius` columns before the centre. Weights stand in two tables
// of the same shape; lanes outside the disc, the centre among them, have the sign bit set in the first one.
class Disc {
public:
    Disc(std::int64_t radius, Scratch &areas) : radius_(static_cast<int>(radius)), stride_((2 * radius_ + 8) / 8 * 8) {
        nearness_ = areas.take<float>(stride_ * (2 * radius + 1), 32);
        squaredNearness_ = areas.take<float>(stride_ * (2 * radius + 1), 32);
        toCentre_ = areas.take<float>(stride_, 32);
        for (int x = 0; x < stride_; x += 8) {
            store(toCentre_ + x, toF32(sub(splat(radius_ - x), laneNumbers())));
        }
        const F64x8 one = splatEight(1.0);
        for (int dy = -radius_; dy <= radius_; ++dy) {
            int reach = 0;
            while ((reach + 1) * (reach + 1) + dy * dy <= radius_ * radius_) {
                ++reach;
            }
            const int row = dy + radius_;
            firstVector_[row] = static_cast<std::uint8_t>((radius_ - reach) / 8);
            lastVector_[row] = static_cast<std::uint8_t>((radius_ + reach) / 8);
            for (int x = 0; x < stride_; x += 8) {
                const I32x8 dx = add(laneNumbers(), splat(x - radius_));
                const I32x8 squared = add(mulLow(dx, dx), splat(dy * dy));
                const Mask32x8 inside =
                    both(greater(squared, splat(0)), greater(splat(radius_ * radius_ + 1), squared));
                const F64x8 distance = toF64(squared);
                const std::int64_t place = std::int64_t{row} * stride_ + x;
                store(nearness_ + place, select(inside, toF32(div(one, sqrt(distance))), splat(-1.0f)));
                store(squaredNearness_ + place, select(inside, toF32(div(one, distance)), splat(1.0f)));
            }
        }
    }

    // Calls function(dy, x, place in the tables) for the vectors that hold neighbours.
    template <class Function> RVX_INLINE void forEachVector(const Function &function) const {
        std::int64_t place = 0;
        for (int dy = -radius_; dy <= radius_; ++dy, place += stride_) {
            const int row = dy + radius_;
            for (int i = firstVector_[row]; i <= lastVector_[row]; ++i) {
                function(dy, 8 * i, place + 8 * i);
            }
        }
    }

    const float *nearness() const { return nearness_; }
    const float *squaredNearness() const { return squaredNearness_; }
    const float *toCentre() const { return toCentre_; } // -dx, for every row

private:
    int radius_, stride_;
    float *nearness_, *squaredNearness_, *toCentre_;
    std::uint8_t firstVector_[201], lastVector_[201];
};

// One channel's values and gradients.
class MarchFill {
public:
    MarchFill(Hole &hole, const Disc &disc)
        : hole_(hole), disc_(disc), values_(hole.planes), gradientX_(values_ + hole.planeSize),
          gradientY_(gradientX_ + hole.planeSize) {}

    template <int channels, class T> void run(Plane<const T> src, Plane<T> dst) {
        hole_.forget();
        hole_.forEachPiece([&](std::int64_t x, std::int64_t y, std::int64_t number, std::int64_t columns) {
            loadPiece<channels>(src.row(y) + channels * x, columns, values_ + number);
        });
        hole_.forEachPiece([&](std::int64_t, std::int64_t, std::int64_t number, std::int64_t columns) {
            for (std::int64_t x = 0; x < columns; x += 8) {
                store(gradientX_ + number + x, differences(number + x, 1));
                store(gradientY_ + number + x, differences(number + x, hole_.stride));
            }
        });
        hole_.forEachPixel([&](const HolePixel &p) {
            float value = fill(p.number);
            if constexpr (!std::is_same_v<T, float>) {
                value = std::min(std::max(value, 0.0f), 255.0f);
            }
            values_[p.number] = value;
            hole_.learn(p.number);
            storeResult(dst.row(p.y) + channels * p.x, value);
        });
    }

private:
    // Over known pixels, from the one `away` before to the one `away` behind.
    RVX_INLINE F32x8 differences(std::int64_t number, std::int64_t away) const {
        const float *const value = values_ + number, *const time = hole_.times() + number;
        const Mask32x8 noneBefore = signs(load<F32x8>(time - away)), noneBehind = signs(load<F32x8>(time + away));
        const F32x8 here = load<F32x8>(value);
        const F32x8 before = select(noneBefore, here, load<F32x8>(value - away));
        const F32x8 behind = select(noneBehind, here, load<F32x8>(value + away));
        const F32x8 difference = sub(behind, before);
        const F32x8 oneSided = without(difference, both(noneBefore, noneBehind));
        return select(either(noneBefore, noneBehind), oneSided, mul(difference, splat(0.5f)));
    }

    float timeDifference(std::int64_t number, std::int64_t away) const {
        const float here = hole_.time(number), before = hole_.time(number - away), behind = hole_.time(number + away);
        if (hole_.isKnown(number - away)) {
            return hole_.isKnown(number + away) ? (behind - before) * 0.5f : here - before;
        }
        return hole_.isKnown(number + away) ? behind - here : 0.0f;
    }

    // The value; the gradient is stored.
    float fill(std::int64_t number) {
        const float ny = timeDifference(number, hole_.stride);
        const F32x8 nx = splat(timeDifference(number, 1)), here = splat(hole_.time(number)), one = splat(1.0f);
        F32x8 weights = splat(0.0f), values = weights, slopesX = weights, slopesY = weights;
        disc_.forEachVector([&](int dy, int x, std::int64_t place) {
            const std::int64_t q = number - hole_.radius + dy * hole_.stride + x;
            const F32x8 time = load<F32x8>(hole_.times() + q), nearness = load<F32x8>(disc_.nearness() + place);
            const Mask32x8 left = signs(bitOr(time, nearness));
            const F32x8 rx = load<F32x8>(disc_.toCentre() + x), ry = splat(static_cast<float>(-dy));
            const F32x8 along = mul(abs(fma(rx, nx, mul(ry, splat(ny)))), nearness);
            // No known pixel is reached later than this one.
            const F32x8 weight = div(mul(max(along, splat(1e-6f)), load<F32x8>(disc_.squaredNearness() + place)),
                                     add(one, sub(here, time)));
            // What is left out adds 0 times -0, which changes no sum, whatever lies there.
            const F32x8 nothing = keep(left, splat(-0.0f));
            const auto known = [&](F32x8 a) { return bitOr(without(a, left), nothing); };
            const F32x8 gx = load<F32x8>(gradientX_ + q), gy = load<F32x8>(gradientY_ + q);
            const F32x8 value = fma(gx, rx, fma(gy, ry, load<F32x8>(values_ + q))), w = without(weight, left);
            weights = add(weights, w);
            values = fma(w, known(value), values);
            slopesX = fma(w, known(gx), slopesX);
            slopesY = fma(w, known(gy), slopesY);
        });
        float sums[4];
        foldedSums(weights, values, slopesX, slopesY, sums);
        gradientX_[number] = sums[2] / sums[0];
        gradientY_[number] = sums[3] / sums[0];
        return sums[1] / sums[0];
    }

    Hole &hole_;
    const Disc &disc_;
    float *values_, *gradientX_, *gradientY_;
};

} // namespace rvxcv
