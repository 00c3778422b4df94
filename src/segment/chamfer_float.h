// Chamfer distances in floats. Each value is one rounded addition onto its neighbour's, so a row cannot be summed up in
// another order, and a row's chain of additions takes its time. Instead 8 (or 16) rows run at once, one in each lane,
// every row a few pixels behind the one before it: what a pixel needs of the rows before is then what the lane before
// computed some steps ago. Blocks of 8 x 8 pixels are transposed on the way in and out.
//
//     step t:  lane 0   pixel t of the first row
//              lane 1   pixel t - skew of the second row
//              lane 2   pixel t - 2 skew of the third row ...
//
// In the second pass, rows and pixels are counted from the end.
#pragma once

#include "kernel/plane.h"
#include "kernel/vec.h"
#include "kernel/vec/transpose.h"
#include "segment/chamfer_costs.h"

namespace rvxcv {

template <bool knights, int reach> class FloatChamfer {
    static constexpr float farAway = std::numeric_limits<float>::max();
    static constexpr int sideways = knights ? 2 : 1; // columns that a step from the row before goes
    static constexpr int skew = sideways + 2;        // the value that is needed first is two steps old
    static constexpr int tile = 8;                   // steps

public:
    FloatChamfer(Plane<const std::uint8_t> src, Plane<float> dst, RoiSize roi, const StepCosts<float> &costs)
        : src_(src), dst_(dst), width_(roi.width), height_(roi.height), costs_(costs) {}

    void run() const {
        if (reach == 1 && width_ >= 96 && height_ > 8) {
            pass<true, Start::source, 2>();
            pass<false, Start::distances, 2>();
            return;
        }
        pass<true, Start::source, 1>();
        pass<false, Start::distances, 1>();
        if constexpr (knights && reach > 1) {
            // Rounding may make one more order of the same steps cheaper by its last bit, again and again. A search
            // over integer costs 1 .. 200 in narrow and wide regions found no path that needs more than five passes:
            // twice as many are enough, and the rest is rounding.
            for (int round = 0; round < 4 && costs_.repeated; ++round) {
                if (!pass<true, Start::distances, 1>() || !pass<false, Start::distances, 1>()) {
                    break;
                }
            }
        }
    }

private:
    template <Start start> using Input = std::conditional_t<start == Start::source, std::uint8_t, float>;

    // The values of some steps before the present tile, and of its own: at(j) is that of step j of the tile.
    template <int before, int size> struct History {
        F32x8 values[before + size];

        RVX_INLINE F32x8 &at(int j) { return values[before + j]; }
        RVX_INLINE void clear() {
            for (F32x8 &value : values) {
                value = splat(farAway);
            }
        }
        RVX_INLINE void nextTile() {
            for (int j = 0; j + tile < before + size; ++j) {
                values[j] = values[j + tile];
            }
        }
    };
    struct Wave {
        History<4, tile> here;             // the lanes' own rows
        History<3, tile + sideways> above; // the same column, one row before
        History<1, tile + 1> twoAbove;

        RVX_INLINE void clear() {
            here.clear();
            above.clear();
            twoAbove.clear();
        }
        RVX_INLINE void nextTile() {
            here.nextTile();
            above.nextTile();
            twoAbove.nextTile();
        }
    };

    // Where a tile's pixels are: in the image, or in blocks of their own where the tile reaches beyond it.
    template <Start start, int rows> struct Places {
        const Input<start> *in[rows];
        float *out[rows];
        const float *above, *twoAbove;
        Input<start> inBlock[rows][tile];
        float outBlock[rows][tile];
        float aboveBlock[tile], twoAboveBlock[tile];
    };

    // Whether a distance changed.
    template <bool forward, Start start, int vectors> bool pass() const {
        bool changed = false;
        for (std::int64_t first = 0; first < height_; first += 8 * vectors) {
            changed |= passBand<forward, start, vectors>(first);
        }
        return changed;
    }

    template <bool forward> RVX_INLINE std::int64_t rowAt(std::int64_t i) const {
        return forward ? i : height_ - 1 - i;
    }
    // The first of `tile` pixels in memory.
    template <bool forward> RVX_INLINE std::int64_t columnAt(std::int64_t u) const {
        return forward ? u : width_ - tile - u;
    }

    // The pixels u .. of a row, in the order of memory, as far as they exist; the others are left alone.
    template <bool forward, class T> void copyTile(T *to, const T *row, std::int64_t u) const {
        const std::int64_t x = columnAt<forward>(u);
        for (std::int64_t k = std::max<std::int64_t>(0, -x); k < tile && x + k < width_; ++k) {
            storeScalar(to + k, loadScalar(row + x + k));
        }
    }

    template <bool forward, Start start, int vectors> bool passBand(std::int64_t first) const {
        constexpr int rows = 8 * vectors;
        const int live = static_cast<int>(std::min<std::int64_t>(rows, height_ - first));
        const float *const above = first >= 1 ? dst_.row(rowAt<forward>(first - 1)) : nullptr;
        const float *const twoAbove = first >= 2 ? dst_.row(rowAt<forward>(first - 2)) : nullptr;
        Wave waves[vectors];
        for (Wave &wave : waves) {
            wave.clear();
        }
        const auto pixel = [&](const float *row, std::int64_t u) {
            return row != nullptr && u < width_ ? loadScalar(row + (forward ? u : width_ - 1 - u)) : farAway;
        };
        for (int j = 0; j < sideways; ++j) {
            waves[0].above.at(j) = withFirst(splat(farAway), splat(pixel(above, j)));
        }
        waves[0].twoAbove.at(0) = withFirst(splat(farAway), splat(pixel(twoAbove, 0)));

        Places<start, rows> places;
        for (float &value : places.aboveBlock) {
            value = farAway;
        }
        for (float &value : places.twoAboveBlock) {
            value = farAway;
        }
        Mask32x8 changes[vectors];
        for (Mask32x8 &change : changes) {
            change = greater(splat(0), splat(0));
        }
        for (std::int64_t t = 0; t < width_ + skew * (live - 1); t += tile) {
            // The row before the band; beyond its end nothing that is read there matters to pixels of the region.
            const auto rowPlace = [&](const float *row, std::int64_t u, float *block) -> const float * {
                if (row == nullptr) {
                    return block;
                }
                if (u + tile <= width_) {
                    return row + columnAt<forward>(u);
                }
                for (int k = 0; k < tile; ++k) {
                    block[k] = farAway;
                }
                copyTile<forward>(block, row, u);
                return block;
            };
            places.above = rowPlace(above, t + sideways, places.aboveBlock);
            places.twoAbove = rowPlace(knights ? twoAbove : nullptr, t + 1, places.twoAboveBlock);
            const auto inputRow = [&](int i) {
                const std::int64_t y = rowAt<forward>(first + i);
                if constexpr (start == Start::source) {
                    return src_.row(y);
                } else {
                    return static_cast<const float *>(dst_.row(y));
                }
            };
            if (live == rows && t - skew * (rows - 1) >= 0 && t + tile <= width_) {
                for (int i = 0; i < rows; ++i) {
                    const std::int64_t x = columnAt<forward>(t - skew * i);
                    places.in[i] = inputRow(i) + x;
                    places.out[i] = dst_.row(rowAt<forward>(first + i)) + x;
                }
                passTile<forward, start, vectors, false>(waves, places, t, changes);
                continue;
            }
            bool cut[rows];
            for (int i = 0; i < rows; ++i) {
                const std::int64_t u = t - skew * i;
                const bool inside = i < live && u >= 0 && u + tile <= width_;
                cut[i] = i < live && !inside && u + tile > 0 && u < width_;
                places.in[i] = inside ? inputRow(i) + columnAt<forward>(u) : places.inBlock[i];
                places.out[i] =
                    inside ? dst_.row(rowAt<forward>(first + i)) + columnAt<forward>(u) : places.outBlock[i];
                if (!inside) {
                    for (auto &value : places.inBlock[i]) {
                        value = static_cast<Input<start>>(1);
                    }
                }
                if (cut[i]) {
                    copyTile<forward>(places.inBlock[i], inputRow(i), u);
                }
            }
            passTile<forward, start, vectors, true>(waves, places, t, changes);
            for (int i = 0; i < rows; ++i) {
                if (cut[i]) {
                    const std::int64_t x = columnAt<forward>(t - skew * i);
                    float *const row = dst_.row(rowAt<forward>(first + i)) + x;
                    for (std::int64_t k = std::max<std::int64_t>(0, -x); k < tile && x + k < width_; ++k) {
                        storeScalar(row + k, places.outBlock[i][k]);
                    }
                }
            }
        }
        std::uint32_t changed = 0;
        for (int v = 0; v < vectors; ++v) {
            const int lanes = std::clamp(live - 8 * v, 0, 8);
            changed |= lanes > 0 ? laneBits(changes[v], Part{lanes}) : 0;
        }
        return changed != 0;
    }

    // `cut`: some lanes are outside the region in some steps.
    template <bool forward, Start start, int vectors, bool cut>
    RVX_INLINE void passTile(Wave (&waves)[vectors], const Places<start, 8 * vectors> &places, std::int64_t t,
                             Mask32x8 (&changes)[vectors]) const {
        const F32x8 straight = splat(costs_.straight), diagonal = splat(costs_.diagonal), knight = splat(costs_.knight);
        F32x8 initial[vectors][tile], results[vectors][tile];
        for (int v = 0; v < vectors; ++v) {
            const auto &in = reinterpret_cast<const Input<start> *const(&)[8]>(places.in[8 * v]);
            if constexpr (start == Start::source) {
                loadTransposed(in, splat(farAway), initial[v]);
            } else {
                loadTransposed(in, initial[v]);
            }
        }
#pragma GCC unroll 8
        for (int k = 0; k < tile; ++k) {
            const int place = forward ? k : tile - 1 - k;
            F32x8 firstAbove = splat(loadScalar(places.above + place)), firstTwoAbove = firstAbove;
            if constexpr (knights) {
                firstTwoAbove = splat(loadScalar(places.twoAbove + place));
            }
            for (int v = 0; v < vectors; ++v) {
                Wave &wave = waves[v];
                const F32x8 turned = rotated(wave.here.at(k - 2));
                wave.above.at(k + sideways) = withFirst(turned, firstAbove);
                firstAbove = turned;
                F32x8 least = add(min(wave.above.at(k - 1), wave.above.at(k + 1)), diagonal);
                least = min(least, add(wave.above.at(k), straight));
                if constexpr (knights) {
                    const F32x8 turnedTwice = rotated(wave.above.at(k - 3));
                    wave.twoAbove.at(k + 1) = withFirst(turnedTwice, firstTwoAbove);
                    firstTwoAbove = turnedTwice;
                    const F32x8 near = min(wave.above.at(k - 2), wave.above.at(k + 2));
                    const F32x8 far = min(wave.twoAbove.at(k - 1), wave.twoAbove.at(k + 1));
                    least = min(least, add(min(near, far), knight));
                }
                if constexpr (reach > 1) {
                    least = min(least, add(wave.here.at(k - 2), splat(costs_.two)));
                    least = min(least, add(wave.here.at(k - 4), splat(costs_.four)));
                }
                least = min(least, initial[v][place]);
                F32x8 value = min(least, add(wave.here.at(k - 1), straight));
                if constexpr (cut) {
                    // Far beyond either end is as good as just beyond.
                    const std::int64_t left = std::min<std::int64_t>(t + k - skew * 8 * v, 1 << 20);
                    const std::int64_t right = std::min<std::int64_t>(width_ - (t + k) + skew * 8 * v, 1 << 20);
                    const I32x8 lag = mulLow(laneNumbers(), splat(std::int32_t{skew}));
                    const Mask32x8 begun = greater(splat(static_cast<std::int32_t>(left + 1)), lag);
                    const Mask32x8 notOver = greater(add(lag, splat(static_cast<std::int32_t>(right))), splat(0));
                    value = select(both(begun, notOver), value, splat(farAway));
                    if constexpr (start == Start::distances && reach > 1) {
                        changes[v] = either(changes[v], both(both(begun, notOver), greater(initial[v][place], value)));
                    }
                } else if constexpr (start == Start::distances && reach > 1) {
                    changes[v] = either(changes[v], greater(initial[v][place], value));
                }
                wave.here.at(k) = value;
                results[v][place] = value;
            }
        }
        for (int v = 0; v < vectors; ++v) {
            storeTransposed(reinterpret_cast<float *const(&)[8]>(places.out[8 * v]), results[v]);
            waves[v].nextTile();
        }
    }

    Plane<const std::uint8_t> src_;
    Plane<float> dst_;
    std::int64_t width_, height_;
    StepCosts<float> costs_;
};

} // namespace rvxcv
