// A fast march over a framed plane: the front moves from the accepted pixels into the others, one pixel at a time.
//
// Every pixel has one word of 32 bits. Read as unsigned numbers, the bits of accepted times come first (times are not
// negative), so the smaller of two words is the earlier of two accepted neighbours, or the accepted one, or no time:
//
//     T                  accepted at that time
//     waiting + place    in the heap of waiting pixels, whose place holds the pixel's time
//     untouched          no neighbour is accepted yet
//     outside            the frame
//
// A pixel's number is its place in the plane, so numbers are ordered like rows and columns. The heap holds keys of time
// and number and thereby pixels in the order in which they are accepted. It starts as a sorted list: around the pixels
// that are accepted from the start there are only two times, 0.7071 between two of them and 1 beside one.
#pragma once

#include "kernel/base.h"
#include "kernel/rows.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace rvxcv {

class March {
public:
    static constexpr std::uint32_t waiting = 0x80000000u, untouched = 0xfffffffeu, outside = 0xffffffffu;

    // The heap has room for all pixels that are not accepted from the start.
    March(std::uint32_t *words, std::int64_t stride, std::uint64_t *heap, std::int64_t room)
        : words_(words), heap_(heap), stride_(stride), ones_(heap + room), room_(heap + room) {}

    // Collects the first front from rows of words that are 0, untouched or outside: row by row, `first` being the
    // number of a row's first pixel.
    void collect(std::int64_t first, std::int64_t width) {
        walkRow<8>(width, [&](std::ptrdiff_t x, auto span) {
            const auto *const here = reinterpret_cast<const std::int32_t *>(words_) + first + x;
            const Mask32x8 waits = signs(asFloat(load<I32x8>(here, span)));
            if (laneBits(waits, span) == 0) {
                return;
            }
            const Mask32x8 beside = accepted(here - 1, here + 1, span);
            const Mask32x8 aboveOrBelow = accepted(here - stride_, here + stride_, span);
            const std::uint32_t corners = laneBits(both(waits, both(beside, aboveOrBelow)), span);
            std::uint32_t found = laneBits(both(waits, either(beside, aboveOrBelow)), span);
            for (; found != 0; found &= found - 1) {
                const int lane = std::countr_zero(found);
                const auto number = static_cast<std::uint32_t>(first + x + lane);
                if ((corners >> lane & 1) != 0) {
                    heap_[count_++] = keyOf(0.5f * std::sqrt(2.0f), number);
                } else {
                    *--ones_ = keyOf(1.0f, number);
                }
            }
        });
    }

    // Accepts pixel after pixel; accept(number) is told of each, when its word is its time.
    template <class Accept> void run(const Accept &accept) {
        std::reverse(ones_, room_);
        std::copy(ones_, room_, heap_ + count_);
        count_ += room_ - ones_;
        for (std::int64_t place = 0; place < count_; ++place) {
            put(place, heap_[place]);
        }
        while (count_ > 0) {
            const std::uint64_t key = takeFirst();
            const auto number = static_cast<std::uint32_t>(key);
            words_[number] = static_cast<std::uint32_t>(key >> 32);
            accept(number);
            reach(number - 1);
            reach(number + 1);
            reach(number - stride_);
            reach(number + stride_);
        }
    }

private:
    static std::uint64_t keyOf(float time, std::uint32_t number) {
        return std::uint64_t{std::bit_cast<std::uint32_t>(time)} << 32 | number;
    }

    // Lanes in which one of two words is a time.
    template <class Span> static RVX_INLINE Mask32x8 accepted(const std::int32_t *a, const std::int32_t *b, Span span) {
        return greater(max(load<I32x8>(a, span), load<I32x8>(b, span)), splat(-1));
    }

    void put(std::int64_t place, std::uint64_t key) {
        heap_[place] = key;
        words_[static_cast<std::uint32_t>(key)] = waiting + static_cast<std::uint32_t>(place);
    }

    void rise(std::int64_t place, std::uint64_t key) {
        while (place > 0) {
            const std::int64_t parent = (place - 1) / 2;
            if (heap_[parent] < key) {
                break;
            }
            put(place, heap_[parent]);
            place = parent;
        }
        put(place, key);
    }

    std::uint64_t takeFirst() {
        const std::uint64_t first = heap_[0], last = heap_[--count_];
        if (count_ > 0) {
            // The gap goes down to the bottom, where the last key belongs more often than not.
            std::int64_t gap = 0, child = 1;
            for (; child + 1 < count_; child = 2 * gap + 1) {
                child += heap_[child + 1] < heap_[child] ? 1 : 0;
                put(gap, heap_[child]);
                gap = child;
            }
            if (child < count_) {
                put(gap, heap_[child]);
                gap = child;
            }
            rise(gap, last);
        }
        return first;
    }

    void reach(std::int64_t number) {
        const std::uint32_t word = words_[number];
        if (word < waiting || word == outside) {
            return;
        }
        const std::uint64_t key = keyOf(timeAt(number), static_cast<std::uint32_t>(number));
        if (word == untouched) {
            rise(count_++, key);
        } else if (key < heap_[word - waiting]) {
            rise(word - waiting, key);
        }
    }

    // From the accepted neighbours, of which there is one at least.
    float timeAt(std::int64_t number) const {
        const std::uint32_t a = std::min(words_[number - 1], words_[number + 1]);
        const std::uint32_t b = std::min(words_[number - stride_], words_[number + stride_]);
        const auto early = std::bit_cast<float>(std::min(a, b)), late = std::bit_cast<float>(std::max(a, b));
        if (std::max(a, b) >= waiting || late - early >= 1.0f) {
            return early + 1.0f;
        }
        const float difference = late - early, squared = difference * difference;
        return std::max(0.5f * ((early + late) + std::sqrt(2.0f - squared)), late);
    }

    std::uint32_t *words_;
    std::uint64_t *heap_;
    std::int64_t stride_, count_ = 0;
    std::uint64_t *ones_, *room_; // keys with time 1, from the last one down to the heap's end
};

} // namespace rvxcv
