// Minimum and maximum under short windows of one row, straight from the source to the destination, in one of two ways:
//   - two rows at a time, one in each half of a vector, where what is beside a vector's pixels comes from the next
//   vector
//     in registers: the extrema of 1, 2, 4, 8 pixels and at last of the window's length (RowChain);
//   - windows that are too wide for that: up to six pixels from as many loads; more pixels in two steps, by way of a
//     row of shorter extrema in scratch.
// In the first and the last vector of a row, loads that would reach over the edge repeat the edge pixel by a shuffle.
#pragma once

#include "morph/edge_load.h"
#include "morph/row_extrema.h"

#include <bit>

namespace rvxcv {

// Extrema of `length` pixels along a row from its vectors, given one after the other. What comes out begins `lag`
// vectors before what went in, and is nothing before so many came.
template <class V, class Op, int pixelBytes, int length> class RowChain {
    static constexpr int known = static_cast<int>(std::bit_ceil(static_cast<unsigned>(length))) / 2;
    static constexpr int shift = (length - known) * pixelBytes;
    using Shorter = RowChain<V, Op, pixelBytes, known>;

public:
    static constexpr bool exists = shift <= 16 && Shorter::exists; // each half of a vector sees one further half
    static constexpr std::int64_t lag = Shorter::lag + 1;

    RVX_INLINE V push(V vector) {
        const V next = shorter_.push(vector), result = Op::of(last_, shiftedInLane<shift>(last_, next));
        last_ = next;
        return result;
    }

private:
    Shorter shorter_;
    V last_ = {};
};

template <class V, class Op, int pixelBytes> class RowChain<V, Op, pixelBytes, 1> {
public:
    static constexpr bool exists = true;
    static constexpr std::int64_t lag = 0;
    RVX_INLINE V push(V vector) { return vector; }
};

template <class T, class Op> class RowWindow {
    using V = Vec<T>;
    static constexpr std::int64_t vectorBytes = 32, half = 16, mostLength = 16, mostLoads = 6;

public:
    static bool applies(const MorphTask<T> &task, Window window) {
        const std::int64_t bytes = task.pixelBytes(), rowBytes = task.roi.width * bytes;
        return window.top == window.bottom && window.left <= 0 && window.right >= 0 && window.left < window.right &&
               window.right - window.left < mostLength && std::max(-window.left, window.right) * bytes <= vectorBytes &&
               rowBytes >= 3 * vectorBytes && 2 * rowBytes <= task.scratchBytes;
    }

    RowWindow(const MorphTask<T> &task, Window window)
        : task_(task), window_(window), length_(window.right - window.left + 1), n_(task.roi.width * task.channels) {
        const EdgePixels edge(task.pixelBytes());
        for (std::int64_t i = 0; i < -window.left; ++i) {
            begin_[i] = EdgeLoad::atBegin((window.left + i) * task.pixelBytes(), edge);
        }
        for (std::int64_t i = 0; i < window.right; ++i) {
            end_[i] = EdgeLoad::atEnd((i + 1) * task.pixelBytes(), edge);
        }
    }

    void run() const {
        if (!inChains<1>() && !inChains<3>() && !inChains<4>()) {
            fromLoads();
        }
    }

private:
    template <int n> using Constant = std::integral_constant<int, n>;

    // ------------------------------------------------------------------------------------------- from registers

    // Whether a chain for this window exists, and has run.
    template <int channels> bool inChains() const {
        constexpr int pixelBytes = channels * static_cast<int>(sizeof(T));
        bool done = false;
        if (task_.channels == channels && window_.right * pixelBytes <= vectorBytes / 2) {
            withConstant<mostLength>(static_cast<int>(length_), [&]<int length>(Constant<length>) {
                using Chain = RowChain<V, Op, pixelBytes, length>;
                if constexpr (length > 1 && Chain::exists) {
                    twoRows<Chain>();
                    done = true;
                }
            });
        }
        return done;
    }

    template <class Chain> void twoRows() const {
        for (std::int64_t y = task_.firstRow; y < task_.lastRow; y += 2) {
            const std::int64_t y1 = std::min(y + 1, task_.lastRow - 1);
            const T *const row0 = task_.row(y + window_.top), *const row1 = task_.row(y1 + window_.top);
            T *const dst0 = task_.dst.row(y), *const dst1 = task_.dst.row(y1);
            inside<Chain>(row0, row1, dst0, dst1);
            ends(row0, dst0);
            ends(row1, dst1);
        }
    }

    // The output between the first and the last vector, and up to half a vector of the last one.
    template <class Chain> RVX_INLINE void inside(const T *row0, const T *row1, T *dst0, T *dst1) const {
        const std::int64_t n = task_.roi.width * task_.pixelBytes(); // from here on in bytes
        const std::int64_t first = vectorBytes + window_.left * task_.pixelBytes();
        const std::int64_t lastPlace = n - half; // what begins behind it reaches no pixel that counts
        Chain chain;
        const auto pushed = [&](std::int64_t place) {
            return chain.push(loadHalves<V>(byteOffset(row0, place), byteOffset(row1, place)));
        };
        std::int64_t place = first;
        for (std::int64_t i = 0; i < Chain::lag; ++i, place += half) {
            (void)pushed(std::min(place, lastPlace));
        }
        std::int64_t x = vectorBytes;
        for (; place <= lastPlace && x < n - vectorBytes; place += half, x += half) {
            storeHalves(byteOffset(dst0, x), byteOffset(dst1, x), pushed(place));
        }
        for (; x < n - vectorBytes; x += half) {
            storeHalves(byteOffset(dst0, x), byteOffset(dst1, x), pushed(lastPlace));
        }
    }

    // ----------------------------------------------------------------------------------------------- from loads

    void fromLoads() const {
        const std::int64_t known = (length_ + mostLoads - 1) / mostLoads; // 1: a single step
        withConstant<mostLoads>(static_cast<int>((length_ + known - 1) / known), [&]<int loads>(Constant<loads>) {
            const T *from = known > 1 ? shortened(task_.firstRow, known) : nullptr;
            for (std::int64_t y = task_.firstRow; y < task_.lastRow; ++y) {
                const T *row = task_.row(y + window_.top), *next = nullptr;
                if (known > 1) {
                    next = y + 1 < task_.lastRow ? shortened(y + 1, known) : nullptr;
                } else {
                    from = row + V::lanes + window_.left * task_.channels;
                }
                finish<loads>(row, from, task_.dst.row(y), known);
                from = next;
            }
        });
    }

    // Elements of an output row between its first and its last vector, and how far apart its first and last loads are.
    std::int64_t between() const { return n_ - 2 * V::lanes; }
    std::int64_t span(std::int64_t known) const { return (length_ - known) * task_.channels; }

    // Extrema of `known` pixels for one output row: made a row ahead, since what was just stored is slow to be loaded.
    const T *shortened(std::int64_t y, std::int64_t known) const {
        const std::int64_t channels = task_.channels;
        const T *from = task_.row(y + window_.top) + V::lanes + window_.left * channels;
        T *const line = reinterpret_cast<T *>(task_.scratch) + (y % 2) * n_;
        if (known == 2) {
            RowStep<T, Op, 2>{from, line, channels, channels}.overlapping(between() + span(known));
        } else {
            RowStep<T, Op, 3>{from, line, channels, 2 * channels}.overlapping(between() + span(known));
        }
        return line;
    }

    template <int loads> RVX_INLINE void finish(const T *row, const T *from, T *dst, std::int64_t known) const {
        ends(row, dst);
        if constexpr (loads > 1) { // as every length has
            RowStep<T, Op, loads>{from, dst + V::lanes, known * task_.channels, span(known)}.overlapping(between());
        }
    }

    RVX_INLINE void ends(const T *row, T *dst) const {
        const std::int64_t last = n_ - V::lanes;
        store(dst, outerVector(row, task_.border.left ? 0 : -window_.left, 0));
        store(dst + last, outerVector(row + last, 0, task_.border.right ? 0 : window_.right));
    }

    // The extrema around a vector, where the first `begin` and the last `end` loads reach over an edge.
    RVX_INLINE V outerVector(const T *place, std::int64_t begin, std::int64_t end) const {
        V extremum = load<V>(place);
        for (std::int64_t i = 0; i < begin; ++i) {
            extremum = Op::of(extremum, begin_[i].template load<V>(place));
        }
        for (std::int64_t i = window_.left + begin; i <= window_.right - end; ++i) {
            extremum = Op::of(extremum, load<V>(place + i * task_.channels));
        }
        for (std::int64_t i = 0; i < end; ++i) {
            extremum = Op::of(extremum, end_[i].template load<V>(place));
        }
        return extremum;
    }

    const MorphTask<T> &task_;
    Window window_;
    std::int64_t length_, n_;
    EdgeLoad begin_[mostLength], end_[mostLength];
};

} // namespace rvxcv
