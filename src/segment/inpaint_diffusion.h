// Filling a hole with a membrane: sweeps of over-relaxation until every pixel is the mean of its neighbours.
//
// Red pixels (x + y even) see black ones only and the other way round. Each colour has a plane of its own, in which a
// row's pixels lie side by side: pixel x at place x / 2. The neighbours above and below are then at the same place of
// the other colour's rows, and left and right are at the same place and the one before it, or behind it where x is odd:
//
//     even row   R B R B R B     red      0 1 2
//                                black    0 1 2
//     odd row    B R B R B R     black    0 1 2
//                                red      0 1 2
//
// So eight pixels of one colour are one vector, and no vector reads what the one before it has written. Behind a row's
// pixels there are zeros: the right neighbour of its last pixel, the left one of the next row's first, and what the
// last vector has too much. Another plane per colour holds the part that each neighbour has in the mean, and -1 outside
// the hole.
#pragma once

#include "segment/hole.h"

namespace rvxcv {

// Both colours' values and shares and the list of vectors take (W + 15) (2 H + 2) + W H elements at most, which is less
// than the four planes of (W + 10) (H + 2) or more that the hole has to spare.
class Membrane {
public:
    explicit Membrane(Hole &hole)
        : hole_(hole), stride_((hole.width + 1) / 2 + 7), colourSize_((hole.height + 2) * stride_),
          values_(hole.planes), shares_(values_ + 2 * colourSize_ + 1 - stride_),
          vectors_(reinterpret_cast<std::uint32_t *>(shares_ + stride_ + 2 * hole.height * stride_)) {
        const std::int64_t steps = 3 * static_cast<std::int64_t>(std::ceil(hole.lastTime())) + 1;
        sweeps_ = 2 * steps;
        omega_ = static_cast<float>(2.0 / (1.0 + std::sin(3.14159265358979323846 / static_cast<double>(steps + 1))));
        for (int colour = 0; colour < 2; ++colour) {
            std::fill(sharesOf(colour) + place(0, hole.firstRow()), sharesOf(colour) + place(0, hole.lastRow() + 1),
                      -1.0f);
        }
        hole.forEachPixel([&](const HolePixel &p) {
            const int outside = (p.x == 0) + (p.x == hole.width - 1) + (p.y == 0) + (p.y == hole.height - 1);
            sharesOf(colourOf(p.x, p.y))[place(p.x, p.y)] = shareOf[4 - outside];
        });
        listVectors();
    }

    template <int channels, class T> void run(Plane<const T> src, Plane<T> dst) {
        hole_.forget();
        loadValues<channels>(src);
        hole_.forEachPixel([&](const HolePixel &p) {
            start(p);
            hole_.learn(p.number);
        });
        for (std::int64_t i = 0; i < sweeps_; ++i) {
            sweep<0>();
            sweep<1>();
        }
        hole_.forEachPixel([&](const HolePixel &p) { storeResult(dst.row(p.y) + channels * p.x, value(p)); });
    }

private:
    static constexpr float shareOf[] = {0.0f, 1.0f, 1.0f / 2, 1.0f / 3, 1.0f / 4};

    static std::int64_t colourOf(std::int64_t x, std::int64_t y) { return (x + y) & 1; }
    std::int64_t place(std::int64_t x, std::int64_t y) const { return (y + 1) * stride_ + x / 2; }
    // The shares have no rows above and below the region.
    float *valuesOf(std::int64_t colour) const { return values_ + colour * colourSize_; }
    float *sharesOf(std::int64_t colour) const { return shares_ + colour * hole_.height * stride_; }
    float &value(const HolePixel &p) const { return valuesOf(colourOf(p.x, p.y))[place(p.x, p.y)]; }

    // The vectors that hold the hole's pixels, red ones first: twice their first place, and 1 more where x is odd.
    void listVectors() {
        std::uint32_t *next = vectors_;
        for (int colour = 0; colour < 2; ++colour) {
            for (std::int64_t y = hole_.firstRow(); y <= hole_.lastRow(); ++y) {
                const std::int64_t end = place(0, y) + (hole_.width + 1) / 2;
                for (std::int64_t i = place(0, y); i < end;) {
                    const std::uint32_t found = ~laneBits(signs(load<F32x8>(sharesOf(colour) + i))) & 0xff;
                    if (found == 0) {
                        i += 8;
                        continue;
                    }
                    i += std::countr_zero(found);
                    *next++ = static_cast<std::uint32_t>(2 * i + ((colour + y) & 1));
                    i += 8;
                }
            }
            ends_[colour] = next;
        }
    }

    template <int channels, class T> void loadValues(Plane<const T> src) {
        for (int colour = 0; colour < 2; ++colour) {
            float *const values = valuesOf(colour);
            for (std::int64_t y = hole_.firstRow() - 1; y <= hole_.lastRow() + 1; ++y) {
                const bool inside = y >= 0 && y < hole_.height;
                std::fill(values + place(inside ? hole_.width : 0, y), values + place(0, y + 1), 0.0f);
            }
        }
        hole_.forEachPiece([&](std::int64_t x, std::int64_t y, std::int64_t, std::int64_t columns) {
            float piece[Hole::markWidth] = {};
            loadPiece<channels>(src.row(y) + channels * x, columns, piece);
            float *const even = valuesOf(colourOf(x, y)) + place(x, y);
            float *const odd = valuesOf(colourOf(x + 1, y)) + place(x, y);
            for (std::int64_t i = 0; i < columns; i += 16) {
                const F32x8 low = load<F32x8>(piece + i), high = load<F32x8>(piece + i + 8);
                store(even + i / 2, sortedPairs(evenInLane(low, high)));
                store(odd + i / 2, sortedPairs(oddInLane(low, high)));
            }
        });
    }

    // The mean of the known neighbours.
    void start(const HolePixel &p) {
        const float *const other = valuesOf(1 - colourOf(p.x, p.y));
        const std::int64_t here = place(p.x, p.y), right = here + (p.x & 1);
        int known = 0;
        const auto neighbour = [&](std::int64_t number, std::int64_t at) {
            if (!hole_.isKnown(number)) {
                return 0.0f;
            }
            ++known;
            return other[at];
        };
        const float l = neighbour(p.number - 1, right - 1), r = neighbour(p.number + 1, right);
        const float a = neighbour(p.number - hole_.stride, here - stride_);
        const float b = neighbour(p.number + hole_.stride, here + stride_);
        value(p) = ((l + r) + (a + b)) * shareOf[known];
    }

    template <int colour> void sweep() {
        float *const own = valuesOf(colour);
        const float *const other = valuesOf(1 - colour), *const shares = sharesOf(colour);
        const F32x8 omega = splat(omega_);
        for (const std::uint32_t *v = colour == 0 ? vectors_ : ends_[0]; v != ends_[colour]; ++v) {
            const std::int64_t here = *v >> 1, right = here + (*v & 1);
            const F32x8 l = load<F32x8>(other + right - 1), r = load<F32x8>(other + right);
            const F32x8 a = load<F32x8>(other + here - stride_), b = load<F32x8>(other + here + stride_);
            const F32x8 share = load<F32x8>(shares + here), value = load<F32x8>(own + here);
            const F32x8 mean = mul(add(add(l, r), add(a, b)), share);
            store(own + here, select(signs(share), value, fma(omega, sub(mean, value), value)));
        }
    }

    Hole &hole_;
    const std::int64_t stride_, colourSize_;
    float *values_, *shares_;
    std::uint32_t *vectors_, *ends_[2];
    std::int64_t sweeps_;
    float omega_;
};

} // namespace rvxcv
