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
#pragma once

#include "kernel/vec.h"

namespace rvxcv {

template <class V> struct ThreeChannels { V c0, c1, c2; };

namespace detail {

// Which of a half's places of register r hold the channel, as bits.
template <class V> constexpr unsigned channelPlaces(int r, int channel) {
    constexpr int n = V::lanes / 2;
    unsigned places = 0;
    for (int i = 0; i < n; ++i) {
        places |= (r * n + i) % 3 == channel ? 1u << i : 0;
    }
    return places;
}

// The pixel whose element of this channel lies at a place of a half.
template <class V> constexpr int pixelAt(int place, int channel) {
    constexpr int n = V::lanes / 2;
    int pixel = 0;
    while ((3 * pixel + channel) % n != place) {
        ++pixel;
    }
    return pixel;
}

template <int channel, class V> RVX_INLINE V collectChannel(V r0, V r1, V r2) {
    const V mixed =
        mixedInHalves<channelPlaces<V>(2, channel)>(mixedInHalves<channelPlaces<V>(1, channel)>(r0, r1), r2);
    return [&]<int... i>(std::integer_sequence<int, i...>) {
        return reorderedInHalves<(3 * i + channel) % (V::lanes / 2)...>(mixed);
    }
    (std::make_integer_sequence<int, V::lanes / 2>{});
}

template <int channel, class V> RVX_INLINE V spreadChannel(V a) {
    return [&]<int... i>(std::integer_sequence<int, i...>) { return reorderedInHalves<pixelAt<V>(i, channel)...>(a); }
    (std::make_integer_sequence<int, V::lanes / 2>{});
}

template <int r, class V> RVX_INLINE V mixChannels(V c0, V c1, V c2) {
    return mixedInHalves<channelPlaces<V>(r, 2)>(mixedInHalves<channelPlaces<V>(r, 1)>(c0, c1), c2);
}

} // namespace detail

// Three vectors as they lie in memory, taken apart; and back.
template <class V> RVX_INLINE ThreeChannels<V> separated(V first, V second, V third) {
    const V r0 = lowThenHigh(first, second), r1 = highThenLow(first, third), r2 = lowThenHigh(second, third);
    return {detail::collectChannel<0>(r0, r1, r2), detail::collectChannel<1>(r0, r1, r2),
            detail::collectChannel<2>(r0, r1, r2)};
}

template <class V> struct ThreeVectors { V first, second, third; };

template <class V> RVX_INLINE ThreeVectors<V> interleaved(const ThreeChannels<V> &a) {
    const V c0 = detail::spreadChannel<0>(a.c0), c1 = detail::spreadChannel<1>(a.c1),
            c2 = detail::spreadChannel<2>(a.c2);
    const V r0 = detail::mixChannels<0>(c0, c1, c2), r1 = detail::mixChannels<1>(c0, c1, c2),
            r2 = detail::mixChannels<2>(c0, c1, c2);
    // r0, r1, r2 hold the 16-byte pieces 0 and 3, 1 and 4, 2 and 5.
    return {lowThenLow(r0, r1), lowThenHigh(r2, r0), highThenHigh(r1, r2)};
}

// The pixels of the span from p on. A partial load reads exactly its pixels and gives zero in the other lanes.
template <class V> RVX_INLINE ThreeChannels<V> loadChannels(const typename V::Element *p, Full = {}) {
    return separated(load<V>(p), load<V>(p + V::lanes), load<V>(p + 2 * V::lanes));
}

template <class V> RVX_INLINE ThreeChannels<V> loadChannels(const typename V::Element *p, Part part) {
    // Whole vectors first; only the last one is partial.
    const int elements = 3 * part.n, whole = elements / V::lanes, rest = elements % V::lanes;
    const V zero = detail::fromRaw<V>(_mm256_setzero_si256());
    const V last = rest != 0 ? load<V>(p + whole * V::lanes, Part{rest}) : zero;
    V v[3] = {last, zero, zero};
    if (whole >= 1) {
        v[0] = load<V>(p);
        v[1] = last;
    }
    if (whole >= 2) {
        v[1] = load<V>(p + V::lanes);
        v[2] = last;
    }
    if (whole >= 3) {
        v[2] = load<V>(p + 2 * V::lanes);
    }
    return separated(v[0], v[1], v[2]);
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

} // namespace rvxcv
