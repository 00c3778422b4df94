// Three interleaved channels taken apart into a vector each, and put together again: as many pixels as a vector has
// lanes, in order. Elements of one, two or four bytes.
//
// The pixels of three vectors are first sorted so that each half (16 bytes, n elements) works alone: registers r0, r1,
// r2 whose half holds elements 0 .. n-1, n .. 2n-1, 2n .. 3n-1 of n pixels. Element e = 3 * pixel + channel lies at
// place e mod n, and as 3 and n have no common factor, a channel's n elements fall on n different places: two blends
// collect a channel, one shuffle puts it in order. (Eight elements to a half, channels as digits:)
//
//     r0  0 1 2 0 1 2 0 1      collected  0 . . 0 . . 0 .      in order: 0 3 6 1 4 7 2 5
//     r1  2 0 1 2 0 1 2 0      for        . 0 . . 0 . . 0
//     r2  1 2 0 1 2 0 1 2      channel 0  . . 0 . . 0 . .
//
// Blends of single bytes are slow on some processors: there each register is shuffled, with zeros for what comes from
// the others, and the three are joined.
#pragma once

#include "kernel/vec.h"

namespace rvxcv {

template <class V> struct ThreeChannels { V c0, c1, c2; };
template <class V> struct ThreeVectors { V first, second, third; };

namespace detail {

// Registers and channels change roles between the two directions: element i of a half of register r belongs to channel
// (r * n + i) % 3, and element i of channel c lies in register (3 * i + c) / n.
template <class V> inline constexpr int halfLanes = V::lanes / 2;

// The places of a half of register r that hold the channel, as bits.
template <class V> constexpr unsigned channelPlaces(int r, int channel) {
    unsigned places = 0;
    for (int i = 0; i < halfLanes<V>; ++i) {
        places |= (r * halfLanes<V> + i) % 3 == channel ? 1u << i : 0;
    }
    return places;
}

// Where the channel's pixel i of a half lies, and which of the channel's pixels goes to a place: in any register, or -1
// unless it is the register r.
template <class V> constexpr int placeOf(int i, int channel, int r) {
    const int element = 3 * i + channel;
    return r < 0 || element / halfLanes<V> == r ? element % halfLanes<V> : -1;
}
template <class V> constexpr int pixelAt(int place, int channel, int r) {
    for (int i = 0; i < halfLanes<V>; ++i) {
        if (placeOf<V>(i, channel, r) == place) {
            return i;
        }
    }
    return -1;
}

template <class V, int channel, int r, int... i> RVX_INLINE V inOrder(V a, std::integer_sequence<int, i...>) {
    return reorderedInHalves<placeOf<V>(i, channel, r)...>(a);
}
template <class V, int channel, int r, int... i> RVX_INLINE V inPlace(V a, std::integer_sequence<int, i...>) {
    return reorderedInHalves<pixelAt<V>(i, channel, r)...>(a);
}

template <int channel, class V> RVX_INLINE V collectChannel(V r0, V r1, V r2) {
    constexpr std::make_integer_sequence<int, halfLanes<V>> lanes;
    if constexpr (sizeof(typename V::Element) == 1) {
        return bitsOfAny(inOrder<V, channel, 0>(r0, lanes), inOrder<V, channel, 1>(r1, lanes),
                         inOrder<V, channel, 2>(r2, lanes));
    } else {
        const V mixed = mixedInHalves<channelPlaces<V>(1, channel)>(r0, r1);
        return inOrder<V, channel, -1>(mixedInHalves<channelPlaces<V>(2, channel)>(mixed, r2), lanes);
    }
}

// Elements 0, 3, 6 ... of each half, from where its first one lies on: three registers, the last one moved back to end
// with the last element. Elements of two bytes lie apart by seven each time and so in eight different places.
template <class V, int... i>
RVX_INLINE V collectEveryThird(const typename V::Element *low, const typename V::Element *high,
                               std::integer_sequence<int, i...>) {
    constexpr int n = halfLanes<V>;
    if constexpr (n == 8) {
        const V r0 = loadHalves<V>(low, high), r1 = loadHalves<V>(low + n - 1, high + n - 1),
                r2 = loadHalves<V>(low + 2 * n - 2, high + 2 * n - 2);
        return reorderedInHalves<3 * i % (n - 1) + (3 * i == 3 * (n - 1) ? n - 1 : 0)...>(
            mixedInHalves<0x92>(mixedInHalves<0x24>(r0, r1), r2));
    } else {
        const V r0 = loadHalves<V>(low, high), r1 = loadHalves<V>(low + n, high + n),
                r2 = loadHalves<V>(low + 2 * n - 2, high + 2 * n - 2);
        return bitsOfAny(reorderedInHalves<(3 * i < n ? 3 * i : -1)...>(r0),
                         reorderedInHalves<(3 * i >= n && 3 * i < 2 * n ? 3 * i - n : -1)...>(r1),
                         reorderedInHalves<(3 * i >= 2 * n ? 3 * i - 2 * n + 2 : -1)...>(r2));
    }
}

template <class V> RVX_INLINE void spreadChannels(V c0, V c1, V c2, V *r0, V *r1, V *r2) {
    constexpr std::make_integer_sequence<int, halfLanes<V>> lanes;
    if constexpr (sizeof(typename V::Element) == 1) {
        *r0 = bitsOfAny(inPlace<V, 0, 0>(c0, lanes), inPlace<V, 1, 0>(c1, lanes), inPlace<V, 2, 0>(c2, lanes));
        *r1 = bitsOfAny(inPlace<V, 0, 1>(c0, lanes), inPlace<V, 1, 1>(c1, lanes), inPlace<V, 2, 1>(c2, lanes));
        *r2 = bitsOfAny(inPlace<V, 0, 2>(c0, lanes), inPlace<V, 1, 2>(c1, lanes), inPlace<V, 2, 2>(c2, lanes));
    } else {
        const V a = inPlace<V, 0, -1>(c0, lanes), b = inPlace<V, 1, -1>(c1, lanes), c = inPlace<V, 2, -1>(c2, lanes);
        *r0 = mixedInHalves<channelPlaces<V>(0, 2)>(mixedInHalves<channelPlaces<V>(0, 1)>(a, b), c);
        *r1 = mixedInHalves<channelPlaces<V>(1, 2)>(mixedInHalves<channelPlaces<V>(1, 1)>(a, b), c);
        *r2 = mixedInHalves<channelPlaces<V>(2, 2)>(mixedInHalves<channelPlaces<V>(2, 1)>(a, b), c);
    }
}

} // namespace detail

// Three vectors as they lie in memory, taken apart; and back.
template <class V> RVX_INLINE ThreeChannels<V> separated(V first, V second, V third) {
    const V r0 = lowThenHigh(first, second), r1 = highThenLow(first, third), r2 = lowThenHigh(second, third);
    return {detail::collectChannel<0>(r0, r1, r2), detail::collectChannel<1>(r0, r1, r2),
            detail::collectChannel<2>(r0, r1, r2)};
}

template <class V> RVX_INLINE ThreeVectors<V> interleaved(const ThreeChannels<V> &a) {
    V r0, r1, r2;
    detail::spreadChannels(a.c0, a.c1, a.c2, &r0, &r1, &r2);
    // r0, r1, r2 hold the 16-byte pieces 0 and 3, 1 and 4, 2 and 5.
    return {lowThenLow(r0, r1), lowThenHigh(r2, r0), highThenHigh(r1, r2)};
}

// The pixels of the span from p on. A partial load reads exactly its pixels and gives zero in the other lanes.
template <class V> RVX_INLINE ThreeChannels<V> loadChannels(const typename V::Element *p, Full = {}) {
    return separated(load<V>(p), load<V>(p + V::lanes), load<V>(p + 2 * V::lanes));
}

namespace detail {
// The first elements of three vectors, from one on and less than all; zero behind them.
template <class V> RVX_INLINE ThreeVectors<V> loadElements(const typename V::Element *p, int elements) {
    // Whole vectors first; only the last one is partial.
    const int whole = elements / V::lanes, rest = elements % V::lanes;
    const V zero = fromRaw<V>(_mm256_setzero_si256());
    const V last = rest != 0 ? load<V>(p + whole * V::lanes, Part{rest}) : zero;
    ThreeVectors<V> v{last, zero, zero};
    if (whole >= 1) {
        v.first = load<V>(p);
        v.second = last;
    }
    if (whole >= 2) {
        v.second = load<V>(p + V::lanes);
        v.third = last;
    }
    return v;
}
} // namespace detail

template <class V> RVX_INLINE ThreeChannels<V> loadChannels(const typename V::Element *p, Part part) {
    if (part.n == V::lanes) {
        return loadChannels<V>(p);
    }
    const ThreeVectors<V> v = detail::loadElements<V>(p, 3 * part.n);
    return separated(v.first, v.second, v.third);
}

// One channel alone, of the pixels of the span. p points to that channel of the first pixel, and nothing behind the
// same channel of the last one is read: of three vectors two elements less.
template <class V> RVX_INLINE V loadChannel(const typename V::Element *p, Full = {}) {
    constexpr int n = V::lanes;
    if constexpr (std::is_same_v<V, F32x8>) {
        // The same with whole vectors of eight.
        static constexpr std::int32_t places[] = {0, 3, 6, 2, 5, 1, 4, 7};
        const V mixed = blended<0x92>(blended<0x24>(load<V>(p), load<V>(p + n - 1)), load<V>(p + 2 * n - 2));
        return permuted(mixed, load<I32x8>(places));
    } else {
        constexpr int half = n / 2;
        return detail::collectEveryThird<V>(p, p + 3 * half, std::make_integer_sequence<int, half>{});
    }
}

template <class V> RVX_INLINE V loadChannel(const typename V::Element *p, Part part) {
    if (part.n == V::lanes) {
        return loadChannel<V>(p);
    }
    const ThreeVectors<V> v = detail::loadElements<V>(p, 3 * part.n - 2);
    return separated(v.first, v.second, v.third).c0;
}

// The pixels of the span to p on; nothing else is written.
template <class V> RVX_INLINE void storeChannels(typename V::Element *p, const ThreeChannels<V> &a, Full = {}) {
    const ThreeVectors<V> v = interleaved(a);
    store(p, v.first);
    store(p + V::lanes, v.second);
    store(p + 2 * V::lanes, v.third);
}

template <class V> RVX_INLINE void storeChannels(typename V::Element *p, const ThreeChannels<V> &a, Part part) {
    const ThreeVectors<V> v = interleaved(a);
    const int elements = 3 * part.n, whole = elements / V::lanes, rest = elements % V::lanes;
    V last = v.first;
    if (whole >= 1) {
        store(p, v.first);
        last = v.second;
    }
    if (whole >= 2) {
        store(p + V::lanes, v.second);
        last = v.third;
    }
    if (whole >= 3) {
        store(p + 2 * V::lanes, v.third);
    }
    if (rest != 0) {
        store(p + whole * V::lanes, last, Part{rest});
    }
}

// Eight pixels of three bytes as 32-bit lanes, or the first of them.
RVX_INLINE ThreeChannels<I32x8> loadEightPixels(const std::uint8_t *p, Full = {}) {
    const U8x32 halves = loadHalves<U8x32>(p, p + 8); // the pixels of the upper one end with it
    return {widenedBytes<0, 3, 6, 9, 4, 7, 10, 13>(halves), widenedBytes<1, 4, 7, 10, 5, 8, 11, 14>(halves),
            widenedBytes<2, 5, 8, 11, 6, 9, 12, 15>(halves)};
}
RVX_INLINE ThreeChannels<I32x8> loadEightPixels(const std::uint8_t *p, Part part) {
    alignas(32) std::uint8_t pixels[32];
    store(pixels, load<U8x32>(p, Part{3 * part.n}));
    return loadEightPixels(pixels);
}

RVX_INLINE int eightOrPart(Full) { return 8; }
RVX_INLINE int eightOrPart(Part part) { return part.n; }
// The lanes are 0..255.
template <class Span> RVX_INLINE void storeEightPixels(std::uint8_t *p, const ThreeChannels<I32x8> &a, Span span) {
    const I32x8 pixels = bitOr(bitOr(a.c0, shiftLeft<8>(a.c1)), shiftLeft<16>(a.c2));
    const U8x32 bytes = reorderedInHalves<0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1>(U8x32{{pixels.v}});
    store(p, joinedTwelves(bytes), Part{3 * eightOrPart(span)});
}

} // namespace rvxcv
