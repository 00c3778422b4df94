// The steps of a layer's destination row, over the row buffers of a state.
#pragma once

#include "filter/pyramid/layer_state.h"
#include "kernel/border.h"
#include "kernel/channels.h"
#include "kernel/plane.h"
#include "kernel/rows.h"
#include "kernel/vec.h"

#include <algorithm>
#include <limits>

namespace rvxcv {

// ---------------------------------------------------------------------------------------- source rows combined

// The first n - 8 * unit elements of a partial block, as far as they fall on this vector.
RVX_INLINE Full unitSpan(Full, int) { return {}; }
RVX_INLINE Part unitSpan(Part span, int unit) { return {std::clamp(span.n - 8 * unit, 0, 8)}; }
RVX_INLINE Full elementSpan(Full, int) { return {}; }
RVX_INLINE Part elementSpan(Part span, int channels) { return {span.n * channels}; }

// The weighted sum of source rows, as floats: one channel in order, three channels in a plane each.
template <class T, int channels> struct CombinedRows {
    static constexpr bool rereads = false;
    static constexpr int units = channels == 1 ? 4 : 3; // vectors of a block
    static constexpr int lanes = units * 8 / channels;

    const void *const *rows; // at the first column
    const float *weights;
    std::int64_t count;
    std::ptrdiff_t firstElement;
    float *out;
    std::int64_t pitch;

    // The buffer has room behind the row: partial blocks store whole vectors.
    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        const auto elements = elementSpan(span, channels);
        const std::ptrdiff_t at = firstElement + x * channels;
        const auto pixels = [&](std::int64_t i, int u) {
            return loadF32(static_cast<const T *>(rows[i]) + at + 8 * u, unitSpan(elements, u));
        };
        F32x8 sums[units];
        for (int u = 0; u < units; ++u) {
            sums[u] = mul(splat(weights[0]), pixels(0, u));
        }
        for (std::int64_t i = 1; i < count; ++i) {
            const F32x8 weight = splat(weights[i]);
            for (int u = 0; u < units; ++u) {
                sums[u] = fma(weight, pixels(i, u), sums[u]);
            }
        }
        if constexpr (channels == 1) {
            for (int u = 0; u < units; ++u) {
                store(out + x + 8 * u, sums[u]);
            }
        } else {
            const ThreeChannels<F32x8> c = separated(sums[0], sums[1], sums[2]);
            store(out + x, c.c0);
            store(out + x + pitch, c.c1);
            store(out + x + 2 * pitch, c.c2);
        }
    }
};

// -------------------------------------------------------------------------------------------------- convolution

// `count` columns, rounded up to whole vectors, of a row convolved with the kernel whose first tap lies on the first
// element. `taps` is the kernel's length, or 0 for any.
template <int taps>
inline void convolveRow(const float *row, float *out, std::int64_t count, const float *kernel, std::int64_t length) {
    const auto block = [&]<int units>(std::int64_t x, std::integral_constant<int, units>) {
        const float *p = row + x;
        F32x8 sums[units];
        for (int u = 0; u < units; ++u) {
            sums[u] = mul(splat(kernel[0]), load<F32x8>(p + 8 * u));
        }
        for (std::int64_t i = 1; i < (taps != 0 ? taps : length); ++i) {
            const F32x8 weight = splat(kernel[i]);
            for (int u = 0; u < units; ++u) {
                sums[u] = fma(weight, load<F32x8>(p + i + 8 * u), sums[u]);
            }
        }
        for (int u = 0; u < units; ++u) {
            store(out + x + 8 * u, sums[u]);
        }
    };
    std::int64_t x = 0;
    for (; x + 32 <= count; x += 32) {
        block(x, std::integral_constant<int, 4>{});
    }
    for (; x < count; x += 8) {
        block(x, std::integral_constant<int, 1>{});
    }
}

// --------------------------------------------------------------------------------------------------- resampling

// How eight columns find their samples: in one vector, in two, or anywhere.
enum class Lookup { oneVector, twoVectors, gather };

template <Lookup lookup> RVX_INLINE F32x8 lookUp(const float *p, I32x8 offsets, Mask32x8 second) {
    if constexpr (lookup == Lookup::oneVector) {
        return permuted(load<F32x8>(p), offsets);
    } else if constexpr (lookup == Lookup::twoVectors) {
        return select(second, permuted(load<F32x8>(p + 8), offsets), permuted(load<F32x8>(p), offsets));
    } else {
        return gathered(p, offsets);
    }
}

template <class T, class Span> RVX_INLINE void storePixels(T *p, F32x8 a, Span span) {
    if constexpr (std::is_same_v<T, float>) {
        store(p, a, span);
    } else {
        constexpr float most = std::numeric_limits<T>::max();
        storeNarrow(p, roundToEven(min(max(a, splat(0.0f)), splat(most))), span);
    }
}

// Eight destination columns from a row of samples, in every plane.
template <class T, int channels, Lookup lookup> struct Resampled {
    static constexpr bool rereads = false;
    const float *row; // at the sample that offset 0 stands for
    std::int64_t pitch;
    const std::int32_t *offsets;
    const float *weights;
    std::int64_t stride; // between the weights of samples
    std::int32_t samples;
    T *dst;

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        const std::int32_t base = offsets[x];
        const I32x8 places = sub(load<I32x8>(offsets + x), splat(base));
        const Mask32x8 second = greater(places, splat(7));
        F32x8 weight = load<F32x8>(weights + x);
        const auto value = [&](int c, std::int32_t t) {
            const F32x8 sample = lookUp<lookup>(row + c * pitch + base + t, places, second);
            // Of floats, a NaN without a weight plays no part.
            return std::is_same_v<T, float> ? keep(notEqual(weight, splat(0.0f)), sample) : sample;
        };
        F32x8 sums[channels];
        for (int c = 0; c < channels; ++c) {
            sums[c] = mul(weight, value(c, 0));
        }
        for (std::int32_t t = 1; t < samples; ++t) {
            weight = load<F32x8>(weights + t * stride + x);
            for (int c = 0; c < channels; ++c) {
                sums[c] = fma(weight, value(c, t), sums[c]);
            }
        }
        if constexpr (channels == 1) {
            storePixels(dst + x, sums[0], span);
        } else {
            const ThreeVectors<F32x8> v = interleaved(ThreeChannels<F32x8>{sums[0], sums[1], sums[2]});
            const auto elements = elementSpan(span, channels);
            T *const p = dst + x * channels;
            storeUnit(p, v.first, elements, 0);
            storeUnit(p + 8, v.second, elements, 1);
            storeUnit(p + 16, v.third, elements, 2);
        }
    }

private:
    static RVX_INLINE void storeUnit(T *p, F32x8 a, Full span, int) { storePixels(p, a, span); }
    static RVX_INLINE void storeUnit(T *p, F32x8 a, Part span, int unit) {
        if (span.n > 8 * unit) {
            storePixels(p, a, unitSpan(span, unit));
        }
    }
};

// ---------------------------------------------------------------------------------------------------- the image

// A destination row's source rows, `count` of them from `first` on, and their weights: those of a state.
struct RowPlan {
    std::int64_t first, count;
};

// Runs a layer. A direction says what differs:
//
//     static constexpr bool up;
//     static RowPlan planRow(LayerState &, std::int64_t y, std::int64_t srcHeight);     weights to rowWeights
//     static std::int64_t border(std::int64_t i, std::int64_t n);                       the pixel for one outside
//     static std::int64_t distinctColumns(const LayerState &, std::int64_t srcWidth, std::int64_t dstWidth);
template <class T, int channels, class Direction> class LayerRun {
public:
    LayerRun(LayerState &state, Plane<const T> src, RoiSize srcRoi, Plane<T> dst, RoiSize dstRoi)
        : state_(state), src_(src), dst_(dst), width_(srcRoi.width), height_(srcRoi.height), dstWidth_(dstRoi.width),
          dstHeight_(dstRoi.height) {}

    void run() {
        const std::int64_t columns = Direction::distinctColumns(state_, width_, dstWidth_);
        for (std::int64_t start = 0; start < columns; start += state_.strip) {
            if (state_.tableStart != start) {
                fillLayerTables(state_, start);
            }
            const std::int64_t count = std::min(state_.strip, columns - start);
            const int reach = layerReach(state_);
            if (Direction::up || reach <= 7) {
                runStrip<Lookup::oneVector>(start, count);
            } else if (reach <= 15) {
                runStrip<Lookup::twoVectors>(start, count);
            } else {
                runStrip<Lookup::gather>(start, count);
            }
        }
        // Columns beyond the source repeat the last one.
        for (std::int64_t y = 0; columns < dstWidth_ && y < dstHeight_; ++y) {
            T *const row = dst_.row(y);
            fillPixels<channels>(row + columns * channels, dstWidth_ - columns, row + (columns - 1) * channels);
        }
    }

private:
    // The source columns of a strip: samples first .. last, read (outside the image too) from .. to, of which the image
    // has to give low .. high. Buffers begin with column `origin`.
    struct Columns {
        std::int64_t first, last, from, to, low, high, origin;
    };

    Columns columnsOf(std::int64_t count) const {
        const std::int64_t half = Direction::up ? 0 : state_.kernelSize / 2;
        Columns c{};
        c.first = state_.tableFirst;
        c.last = c.first + state_.offsets[count - 1] + state_.samples - 1;
        c.from = c.first - half;
        c.to = (Direction::up ? c.last : std::min(c.last, width_ - 1)) + half;
        c.low = std::clamp<std::int64_t>(c.from, 0, width_ - 1);
        c.high = std::clamp<std::int64_t>(c.to, 0, width_ - 1);
        // Mirrored pixels lie inside, as far from the edge as those that they stand for lie outside.
        if (c.from < 0) {
            c.high = std::max(c.high, std::min(-c.from, width_ - 1));
        }
        if (!Direction::up && c.to >= width_) {
            c.low = std::min(c.low, std::max<std::int64_t>(2 * (width_ - 1) - c.to, 0));
        }
        c.origin = std::min(c.from, c.low);
        return c;
    }

    template <Lookup lookup> void runStrip(std::int64_t start, std::int64_t count) {
        const Columns c = columnsOf(count);
        const float *const samples = Direction::up ? state_.combined : state_.convolved;
        Resampled<T, channels, lookup> resampled{samples + (Direction::up ? c.first - c.origin : 0),
                                                 state_.pitch,
                                                 state_.offsets,
                                                 state_.weights,
                                                 state_.strip,
                                                 state_.samples,
                                                 nullptr};
        for (std::int64_t y = 0; y < dstHeight_; ++y) {
            combine(c, y);
            if constexpr (!Direction::up) {
                convolve(c);
            }
            resampled.dst = dst_.row(y) + start * channels;
            walkRow<8, Tail::partial>(count, resampled);
        }
    }

    void combine(const Columns &c, std::int64_t y) const {
        const RowPlan plan = Direction::planRow(state_, y, height_);
        // Rows without weight are left out: what they hold plays no part.
        std::int64_t rows = 0;
        for (std::int64_t i = 0; i < plan.count; ++i) {
            const std::int64_t row = plan.first + i;
            state_.rows[rows] = src_.row(row >= 0 && row < height_ ? row : Direction::border(row, height_));
            state_.rowWeights[rows] = state_.rowWeights[i];
            rows += Direction::up && state_.rowWeights[i] == 0 ? 0 : 1;
        }
        using Kernel = CombinedRows<T, channels>;
        float *const out = state_.combined + (c.low - c.origin);
        walkRow<Kernel::lanes, Tail::overlap>(
            c.high - c.low + 1, Kernel{state_.rows, state_.rowWeights, rows, c.low * channels, out, state_.pitch});
        for (int channel = 0; channel < channels; ++channel) {
            float *const row = state_.combined + channel * state_.pitch - c.origin;
            for (std::int64_t x = c.from; x < std::min<std::int64_t>(c.to + 1, 0); ++x) {
                row[x] = row[Direction::border(x, width_)];
            }
            for (std::int64_t x = std::max(c.from, width_); x <= c.to; ++x) {
                row[x] = row[Direction::border(x, width_)];
            }
        }
    }

    void convolve(const Columns &c) const {
        const std::int64_t end = std::min(c.last, width_ - 1) + 1, count = end - c.first;
        for (int channel = 0; channel < channels; ++channel) {
            const float *const in = state_.combined + channel * state_.pitch + (c.from - c.origin);
            float *const out = state_.convolved + channel * state_.pitch;
            switch (state_.kernelSize) {
            case 3:
                convolveRow<3>(in, out, count, state_.kernel, 3);
                break;
            case 5:
                convolveRow<5>(in, out, count, state_.kernel, 5);
                break;
            default:
                convolveRow<0>(in, out, count, state_.kernel, state_.kernelSize);
                break;
            }
            for (std::int64_t x = count; x <= c.last - c.first; ++x) {
                out[x] = out[count - 1];
            }
        }
    }

    LayerState &state_;
    Plane<const T> src_;
    Plane<T> dst_;
    std::int64_t width_, height_, dstWidth_, dstHeight_;
};

} // namespace rvxcv
