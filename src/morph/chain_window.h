// Minimum and maximum under small windows, straight from the source to the destination, two output rows at a time, one
// in each half of a vector: first down the columns, from the rows that the two share and the one more that each has,
//
//     row y - 1   |
//     row y       | common   (rows y and y + 1 of the output of a window three pixels high)
//     row y + 1   | common
//     row y + 2       |
//
// then along the row, where what is beside a vector's pixels comes from the next vector in registers: the extrema of
// 1, 2, 4, 8 pixels and at last of the window's width (RowChain). No pixel is loaded but from its own place, so few
// loads cross a cache line. Where halves reach over an end of the row, they repeat the edge pixel by a shuffle.
#pragma once

#include "morph/edge_load.h"
#include "morph/window_result.h"

#include <bit>

namespace rvxcv {

// ------------------------------------------------------------------------------------------------------ the chain

// Extrema of `length` pixels along a row from its vectors, given one after the other. What comes out begins `lag`
// vectors before what went in, and is nothing before so many came.
template <class Value, class Op, int pixelBytes, int length> class RowChain {
    static constexpr int known = static_cast<int>(std::bit_ceil(static_cast<unsigned>(length))) / 2;
    static constexpr int shift = (length - known) * pixelBytes;
    using Shorter = RowChain<Value, Op, pixelBytes, known>;

public:
    static constexpr bool exists = shift <= 16 && Shorter::exists; // each half of a vector sees one further half
    static constexpr std::int64_t lag = Shorter::lag + 1;

    RVX_INLINE Value push(Value vector) {
        const Value next = shorter_.push(vector), result = Op::of(last_, shiftedInLane<shift>(last_, next));
        last_ = next;
        return result;
    }

private:
    Shorter shorter_;
    Value last_ = {};
};

template <class Value, class Op, int pixelBytes> class RowChain<Value, Op, pixelBytes, 1> {
public:
    static constexpr bool exists = true;
    static constexpr std::int64_t lag = 0;
    RVX_INLINE Value push(Value vector) { return vector; }
};

// ----------------------------------------------------------------------------------------------- the halves of a row

constexpr std::int64_t halfBytes = 16;

// A row's halves one after another, from `left` bytes before it on: which of them reach over its ends, and how their
// bytes come from the nearest half that may be read.
struct RowHalves {
    struct AtEnd {
        std::int64_t place; // of the half that is read
        U8x32 order;        // of the bytes of either half of a vector
    };
    static constexpr std::int64_t mostBytes = 32; // to either side
    static constexpr int most = mostBytes / halfBytes + 1;

    std::int64_t left, rowBytes;
    int before = 0, behind = 0; // so many reach over the begin and over the end
    AtEnd begin[most], end[most];

    RowHalves(std::int64_t bytes, std::int64_t leftBytes, std::int64_t rightBytes, const Border &border,
              std::int64_t pixelBytes)
        : left(leftBytes), rowBytes(bytes) {
        const std::int64_t from = border.left ? -left : 0, to = rowBytes + (border.right ? rightBytes : 0);
        const EdgePixels edge(pixelBytes);
        // The half at a place from the nearest one that may be read; the edge pixel for what lies further outside.
        const auto half = [&](std::int64_t place) {
            const std::int64_t nearest = std::clamp(place, from, to - halfBytes);
            std::uint8_t order[2 * halfBytes];
            for (std::int64_t j = 0; j < halfBytes; ++j) {
                const std::int64_t k = place - nearest + j, behindEnd = k - halfBytes;
                const std::int64_t last = std::min(2 * halfBytes - rightBytes + behindEnd, 2 * halfBytes - 1);
                order[j] = order[halfBytes + j] =
                    static_cast<std::uint8_t>(k < 0            ? edge.before[left + k]
                                              : behindEnd >= 0 ? edge.behind[last] - halfBytes
                                                               : k);
            }
            return AtEnd{nearest, load<U8x32>(order)};
        };
        std::int64_t place = -left;
        for (; place < 0; place += halfBytes) {
            begin[before++] = half(place);
        }
        for (place += (rowBytes - place) / halfBytes * halfBytes; place < rowBytes + rightBytes; place += halfBytes) {
            end[behind++] = half(place);
        }
    }
};

// ----------------------------------------------------------------------------------------------------- the window

template <class V, class Op> RVX_INLINE auto valueOf(V pixels) {
    if constexpr (std::is_same_v<Op, LeastAndMost>) {
        return Extent<V>(pixels);
    } else {
        return pixels;
    }
}

// The rows around two neighbouring output rows, and extrema down their columns: of the first output row in the low half
// of a vector and of the second one in the high half.
template <class T, class Op, int height> struct TwoWindows {
    using V = Vec<T>;
    using Value = decltype(valueOf<V, Op>(V{}));
    const T *rows[height + 1];

    // loadPair(a, b): a half of each of two rows.
    template <class LoadPair> RVX_INLINE Value half(const LoadPair &loadPair) const {
        Value extremum = valueOf<V, Op>(loadPair(rows[0], rows[height]));
        for (int k = 1; k < height; ++k) {
            extremum = Op::of(extremum, valueOf<V, Op>(loadPair(rows[k], rows[k])));
        }
        return extremum;
    }
    RVX_INLINE Value half(std::int64_t place) const {
        return half(
            [place](const T *a, const T *b) { return loadHalves<V>(byteOffset(a, place), byteOffset(b, place)); });
    }
    RVX_INLINE Value half(const RowHalves::AtEnd &at) const {
        return half([&at](const T *a, const T *b) {
            return shuffledHalves<V>(byteOffset(a, at.place), byteOffset(b, at.place), at.order);
        });
    }
    // Two halves in a row.
    RVX_INLINE void halves(std::int64_t place, Value (&two)[2]) const {
        if constexpr (height == 1) {
            two[0] = half(place);
            two[1] = half(place + halfBytes);
        } else {
            const auto at = [&](int k) { return valueOf<V, Op>(load<V>(byteOffset(rows[k], place))); };
            Value common = at(1);
            for (int k = 2; k < height; ++k) {
                common = Op::of(common, at(k));
            }
            const Value first = Op::of(common, at(0)), second = Op::of(common, at(height));
            two[0] = joinedHalves<0, 0>(first, second);
            two[1] = joinedHalves<1, 1>(first, second);
        }
    }
};

template <class T, class Op, int width, int height, int channels, class Result> class ChainWindow {
    using V = Vec<T>;
    using Rows = TwoWindows<T, Op, height>;
    using Value = typename Rows::Value;
    static constexpr int pixelBytes = channels * static_cast<int>(sizeof(T));
    using Chain = RowChain<Value, Op, pixelBytes, width>;
    static constexpr std::int64_t leastHalves = Chain::lag + 2;

public:
    static constexpr bool exists = Chain::exists;

    static bool applies(const MorphTask<T> &task, Window window) {
        return task.channels == channels && window.right - window.left + 1 == width &&
               window.bottom - window.top + 1 == height && window.left <= 0 && window.right >= 0 &&
               std::max(-window.left, window.right) * pixelBytes <= RowHalves::mostBytes &&
               task.roi.width * pixelBytes >= leastHalves * halfBytes;
    }

    ChainWindow(const MorphTask<T> &task, Window window, Plane<const T> other)
        : task_(task), other_(other), top_(window.top), halves_(task.roi.width * pixelBytes, -window.left * pixelBytes,
                                                                window.right * pixelBytes, task.border, pixelBytes) {}

    void run() const {
        Rows rows;
        for (int k = 2; k <= height; ++k) {
            rows.rows[k] = task_.row(task_.firstRow + top_ + k - 2);
        }
        for (std::int64_t y = task_.firstRow; y < task_.lastRow; y += 2) {
            const std::int64_t next = std::min(y + 1, task_.lastRow - 1);
            for (int k = 0; k < height - 1; ++k) {
                rows.rows[k] = rows.rows[k + 2];
            }
            rows.rows[height - 1] = task_.row(y + top_ + height - 1);
            rows.rows[height] = next > y ? task_.row(y + top_ + height) : rows.rows[0];
            alongRows(rows, {task_.dst.row(y), task_.dst.row(next), other_.row(y), other_.row(next)});
        }
    }

private:
    struct Output {
        T *first, *second;
        const T *firstOther, *secondOther;

        RVX_INLINE void put(std::int64_t x, Value extremum) const {
            const V result = Result::of(
                extremum, [this, x] { return loadHalves<V>(byteOffset(firstOther, x), byteOffset(secondOther, x)); });
            storeHalves(byteOffset(first, x), byteOffset(second, x), result);
        }
        // The first bytes of a half.
        void put(std::int64_t x, Value extremum, Part bytes) const {
            constexpr auto pixels = halfBytes / static_cast<std::int64_t>(sizeof(T));
            T low[pixels], high[pixels];
            const V result = Result::of(extremum, [&] {
                storeHalf(low, loadHalf(byteOffset(firstOther, x), bytes));
                storeHalf(high, loadHalf(byteOffset(secondOther, x), bytes));
                return loadHalves<V>(low, high);
            });
            storeHalves(low, high, result);
            storeHalf(byteOffset(first, x), loadHalf(low), bytes);
            storeHalf(byteOffset(second, x), loadHalf(high), bytes);
        }
    };

    RVX_INLINE void alongRows(const Rows rows, const Output output) const {
        const std::int64_t rowBytes = halves_.rowBytes;
        Chain chain;
        std::int64_t place = -halves_.left, x = -Chain::lag * halfBytes; // where what goes in and what comes out begins
        for (int i = 0; i < halves_.before; ++i, place += halfBytes, x += halfBytes) {
            chain.push(rows.half(halves_.begin[i]));
        }
        for (; x < 0; place += 2 * halfBytes, x += 2 * halfBytes) {
            Value two[2];
            rows.halves(place, two);
            chain.push(two[0]);
            const Value extremum = chain.push(two[1]);
            if (x + halfBytes == 0) {
                output.put(0, extremum);
            }
        }
        constexpr std::int64_t ahead = 192; // the next rows follow too soon to be in the first-level cache
        for (; place + 2 * halfBytes <= rowBytes; place += 2 * halfBytes, x += 2 * halfBytes) {
            Value two[2];
            rows.halves(place, two);
            if constexpr (height > 1) {
                prefetch(byteOffset(rows.rows[height - 1], place + ahead));
                prefetch(byteOffset(rows.rows[height], place + ahead));
                prefetch(byteOffset(output.first, x + ahead));
                prefetch(byteOffset(output.second, x + ahead));
            }
            output.put(x, chain.push(two[0]));
            output.put(x + halfBytes, chain.push(two[1]));
        }
        for (int i = 0; x < rowBytes; place += halfBytes, x += halfBytes) {
            Value next{}; // behind all pixels that count
            if (place + halfBytes <= rowBytes) {
                next = rows.half(place);
            } else if (i < halves_.behind) {
                next = rows.half(halves_.end[i++]);
            }
            const Value extremum = chain.push(next);
            if (x + halfBytes <= rowBytes) {
                output.put(x, extremum);
            } else {
                output.put(x, extremum, Part{static_cast<int>(rowBytes - x)});
            }
        }
    }

    const MorphTask<T> &task_;
    Plane<const T> other_;
    std::int64_t top_;
    RowHalves halves_;
};

} // namespace rvxcv
