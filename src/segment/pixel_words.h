// Words of pixels: 64 pixels of a row as the bits of an integer, pixel i the bit i. A question about pixels is asked in
// vectors of elements; of three channels all must say yes.
#pragma once

#include "kernel/vec.h"

#include <array>
#include <utility>

namespace rvxcv {

constexpr int wordPixels = 64;

// Bits 0 .. n - 1.
RVX_INLINE std::uint64_t lowBits(int n) { return n >= wordPixels ? ~0ull : (1ull << n) - 1; }

// The pixels of 192 elements in three words: every third bit, from the first on, and back.
namespace detail {
constexpr std::uint64_t thirdsFrom0 = 0x9249249249249249, thirdsFrom2 = 0x4924924924924924,
                        thirdsFrom1 = 0x2492492492492492; // the first pixel of the words 0, 1 and 2

RVX_INLINE std::uint64_t allOfThree(const std::array<std::uint64_t, 3> &e) {
    const std::uint64_t a = e[0] & (e[0] >> 1 | e[1] << 63) & (e[0] >> 2 | e[1] << 62);
    const std::uint64_t b = e[1] & (e[1] >> 1 | e[2] << 63) & (e[1] >> 2 | e[2] << 62);
    const std::uint64_t c = e[2] & e[2] >> 1 & e[2] >> 2;
    return gatherBits(a, thirdsFrom0) | gatherBits(b, thirdsFrom2) << 22 | gatherBits(c, thirdsFrom1) << 43;
}

RVX_INLINE std::array<std::uint64_t, 3> tripled(std::uint64_t pixels) {
    const std::uint64_t a = scatterBits(pixels, thirdsFrom0), b = scatterBits(pixels >> 22, thirdsFrom2),
                        c = scatterBits(pixels >> 43, thirdsFrom1);
    return {a | a << 1 | a << 2, b | b << 1 | b << 2 | a >> 63 | a >> 62, c | c << 1 | c << 2 | b >> 63 | b >> 62};
}
} // namespace detail

// The first n pixels (1 to 64) for which test(e, phase, span) says yes in all channels. It returns bits for the
// elements e ..; phase tells which channel the first of them belongs to: vector number modulo 3.
template <class T, int channels, class Test> RVX_INLINE std::uint64_t pixelWord(int n, const Test &test) {
    constexpr int lanes = Vec<T>::lanes;
    std::array<std::uint64_t, channels> words{};
    const auto put = [&](int e, std::uint64_t bits) { words[static_cast<std::size_t>(e / 64)] |= bits << (e % 64); };
    if (n == wordPixels) {
        [&]<int... vector>(std::integer_sequence<int, vector...>) {
            (put(vector * lanes, test(vector * lanes, channels == 1 ? 0 : vector % 3, Full{})), ...);
        }
        (std::make_integer_sequence<int, wordPixels * channels / lanes>{});
    } else {
        const int elements = n * channels;
        int e = 0, phase = 0;
        for (; e + lanes <= elements; e += lanes, phase = channels == 1 || phase == 2 ? 0 : phase + 1) {
            put(e, test(e, phase, Full{}));
        }
        if (e < elements) {
            put(e, test(e, phase, Part{elements - e}) & lowBits(elements - e));
        }
    }
    if constexpr (channels == 1) {
        return words[0];
    } else {
        return detail::allOfThree(words);
    }
}

// Writes a value to the pixels of a word. Elements between them are written with what they hold.
template <class T, int channels>
RVX_INLINE void paintWord(T *p, int n, std::uint64_t pixels, const std::array<T, channels> &value,
                          const std::array<Vec<T>, channels> &pattern) {
    constexpr int lanes = Vec<T>::lanes;
    if (pixels == ~0ull) {
        for (int i = 0; i < wordPixels * channels / lanes; ++i) {
            store(p + i * lanes, pattern[static_cast<std::size_t>(i % channels)]);
        }
        return;
    }
    if ((pixels & (pixels - 1)) == 0) {
        T *const pixel = p + channels * __builtin_ctzll(pixels);
        for (int c = 0; c < channels; ++c) {
            storeScalar(pixel + c, value[static_cast<std::size_t>(c)]);
        }
        return;
    }
    std::array<std::uint64_t, channels> words;
    if constexpr (channels == 1) {
        words = {pixels};
    } else {
        words = detail::tripled(pixels);
    }
    const int elements = n * channels;
    for (int e = 0, phase = 0; e < elements; e += lanes, phase = phase == channels - 1 ? 0 : phase + 1) {
        const auto bits =
            static_cast<std::uint32_t>(words[static_cast<std::size_t>(e / 64)] >> (e % 64) & lowBits(lanes));
        if (bits == 0) {
            continue;
        }
        const Vec<T> painted = pattern[static_cast<std::size_t>(phase)];
        const auto blend = [&](auto span) {
            store(p + e, select(maskOfBits<Vec<T>>(bits), painted, load<Vec<T>>(p + e, span)), span);
        };
        if (bits == lowBits(lanes)) {
            store(p + e, painted);
        } else if (e + lanes <= elements) {
            blend(Full{});
        } else {
            blend(Part{elements - e});
        }
    }
}

// The vectors of a row that repeats three (or one) values: vector i of the row is pattern[i mod 3].
template <class T, std::size_t channels>
RVX_INLINE std::array<Vec<T>, channels> repeated(const std::array<T, channels> &value) {
    constexpr std::size_t lanes = Vec<T>::lanes;
    T row[channels * lanes];
    for (std::size_t i = 0; i < channels * lanes; ++i) {
        row[i] = value[i % channels];
    }
    std::array<Vec<T>, channels> pattern;
    for (std::size_t i = 0; i < channels; ++i) {
        pattern[i] = load<Vec<T>>(row + i * lanes);
    }
    return pattern;
}

} // namespace rvxcv
