// One engine for statistics over the selected pixels of an image, or of two images: it walks the rows in blocks, takes
// one channel out of three where there are three, and tells a statistic which lanes of a block count.
//
// A statistic is a struct with
//
//     sources                     1 or 2: how many images are read
//     add(first, second, out)     takes a block of each; `out` says which lanes are left out: a vector with all bits of
//                                 these lanes set, or Nothing. Sixteen floats may still lie in memory
//     flush(blocks)               after as many blocks, at most blocksToFlush: 32-bit lanes go to wider sums
//
// Lanes behind the end of a row hold zeros and are left out.
#pragma once

#include "kernel/channels.h"
#include "kernel/checks.h"
#include "kernel/lane_sum.h"
#include "kernel/plane.h"
#include "kernel/rows.h"

#include <algorithm>

namespace rvxcv {

// ------------------------------------------------------------------------------------------------------- arguments

struct Layout {
    bool masked, ofThree;
};
inline constexpr Layout C1R{false, false}, C1MR{true, false}, C3CR{false, true}, C3CMR{true, true};

template <class T> struct MaskedImage {
    const T *first;
    std::int32_t firstStep;
    const T *second; // the first one again, where there is one
    std::int32_t secondStep;
    const std::uint8_t *mask;
    std::int32_t maskStep;
    RoiSize roi;
    std::int32_t channel;
};

template <Layout layout, class T, class... Out>
StatusCode checkMasked(const MaskedImage<T> &image, const Out *...results) {
    const std::int64_t width = image.roi.width;
    Checks checks;
    checks.pointers(image.first, image.second, results...).require(!layout.masked || image.mask, StatusNullPointer);
    checks.size(image.roi).steps(rowBytes<T>(width * (layout.ofThree ? 3 : 1)), image.firstStep, image.secondStep);
    if (layout.masked) {
        checks.steps(width, image.maskStep);
    }
    checks.multiples(sizeof(T), image.firstStep, image.secondStep);
    return checks.require(!layout.ofThree || (image.channel >= 1 && image.channel <= 3), StatusBadChannel).status();
}

// ---------------------------------------------------------------------------------------------------------- blocks

struct Nothing {};
struct Mask32x16 {
    Mask32x8 low, high;
};

// A block of pixels, its lanes as unsigned or float vectors, and the mask of its lanes.
template <class T> struct BlockOf { using type = Vec<T>; };
template <> struct BlockOf<float> { using type = F32x16; };
template <class T> using Block = typename BlockOf<T>::type;
template <class T> struct OutOf { using type = U8x32; };
template <> struct OutOf<std::uint16_t> { using type = U16x16; };
template <> struct OutOf<float> { using type = Mask32x16; };
template <class T> using Out = typename OutOf<T>::type;

// The eight floats of a span's second half, if it has any.
template <class Function> RVX_INLINE F32x8 secondHalf(Full, const Function &function) { return function(Full{}); }
template <class Function> RVX_INLINE F32x8 secondHalf(Part part, const Function &function) {
    return part.n > 8 ? function(Part{part.n - 8}) : splat(0.0f);
}
RVX_INLINE Full firstHalf(Full) { return {}; }
RVX_INLINE Part firstHalf(Part part) { return {part.n < 8 ? part.n : 8}; }

// The pixels from x on; the row begins with the channel that is wanted.
template <Layout layout, class T, class Span> RVX_INLINE auto loadBlock(const T *row, std::ptrdiff_t x, Span span) {
    if constexpr (std::is_same_v<T, float> && !layout.ofThree && std::is_same_v<Span, Full>) {
        return F32x16At{row + x};
    } else if constexpr (std::is_same_v<T, float>) {
        const auto eight = [&](std::ptrdiff_t at, auto part) {
            if constexpr (layout.ofThree) {
                return loadChannel<F32x8>(row + 3 * at, part);
            } else {
                return load<F32x8>(row + at, part);
            }
        };
        return F32x16{eight(x, firstHalf(span)), secondHalf(span, [&](auto part) { return eight(x + 8, part); })};
    } else if constexpr (layout.ofThree) {
        return loadChannel<Vec<T>>(row + 3 * x, span);
    } else {
        return load<Vec<T>>(row + x, span);
    }
}

// The lanes whose mask bytes are zero, those behind the span among them.
template <class T, class Span> RVX_INLINE Out<T> loadOut(const std::uint8_t *mask, Span span) {
    if constexpr (sizeof(T) == 1) {
        return equal(load<U8x32>(mask, span), splat(std::uint8_t{0}));
    } else if constexpr (sizeof(T) == 2) {
        return equal(U16x16{{loadI16(mask, span).v}}, splat(std::uint16_t{0}));
    } else if constexpr (std::is_same_v<Span, Full>) {
        return {equal(loadI32(mask, span), splat(0)), equal(loadI32(mask + 8, span), splat(0))};
    } else {
        const I16x16 words = loadI16(mask, span);
        return {equal(widenLow(words), splat(0)), equal(widenHigh(words), splat(0))};
    }
}

// The lanes behind the span.
template <class T> RVX_INLINE Nothing lanesBehind(Full) { return {}; }
template <class T> RVX_INLINE Out<T> lanesBehind(Part part) {
    const std::uint32_t bits = ~0u << part.n;
    if constexpr (std::is_same_v<T, float>) {
        return {maskOfBits<F32x8>(bits), maskOfBits<F32x8>(bits >> 8)};
    } else {
        return maskOfBits<Out<T>>(bits);
    }
}

template <Layout layout, class T, class Span>
RVX_INLINE auto lanesOut(const std::uint8_t *mask, std::ptrdiff_t x, Span span) {
    if constexpr (layout.masked) {
        return loadOut<T>(mask + x, span);
    } else {
        return lanesBehind<T>(span);
    }
}

// Zero in the lanes that are left out.
template <class V> RVX_INLINE V selected(V a, Nothing) { return a; }
template <class V> RVX_INLINE V selected(V a, V out) { return bitAndNot(a, out); }
RVX_INLINE F32x16 selected(F32x16 a, Mask32x16 out) { return {without(a.low, out.low), without(a.high, out.high)}; }

// How many pixels of a masked image are selected, from the lanes left out.
template <class T> struct Selected {
    I64x4 out{};

    RVX_INLINE void add(Nothing) {}
    RVX_INLINE void add(U8x32 lanes) { out = rvxcv::add(out, byteSums(lanes)); }
    RVX_INLINE void add(U16x16 lanes) { out = rvxcv::add(out, byteSums(U8x32{{lanes.v}})); }
    RVX_INLINE void add(Mask32x16 lanes) {
        add(U8x32{{asInt(F32x8{lanes.low.v}).v}});
        add(U8x32{{asInt(F32x8{lanes.high.v}).v}});
    }
    RVX_INLINE std::int64_t count(std::int64_t blocks) const {
        return blocks * Block<T>::lanes - total(out) / std::int64_t{255 * sizeof(T)};
    }
};

// ------------------------------------------------------------------------------------------------------------ rows

// Lanes of 32 bits hold the sums of as many blocks.
inline constexpr std::int64_t blocksToFlush = 16384;

template <Layout layout, class T, class Statistic> struct BlockKernel {
    const T *first, *second;
    const std::uint8_t *mask;
    Statistic &statistic;

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        if constexpr (layout.masked && std::is_same_v<T, float> && std::is_same_v<Span, Full>) {
            // Masks are regions: blocks that lie wholly inside need no masking, which costs floats a third of their
            // time, and of those wholly outside nothing is read.
            const std::uint32_t zeros = zeroBytes(loadHalf(mask + x));
            if (zeros == 0) {
                addBlock(x, span, Nothing{});
                return;
            }
            if (zeros == 0xffff) {
                const Mask32x8 all = equal(splat(0), splat(0));
                statistic.add(F32x16{}, F32x16{}, Mask32x16{all, all});
                return;
            }
        }
        addBlock(x, span, lanesOut<layout, T>(mask, x, span));
    }

    template <class Span, class O> RVX_INLINE void addBlock(std::ptrdiff_t x, Span span, O out) const {
        const auto a = loadBlock<layout>(first, x, span);
        if constexpr (Statistic::sources == 2) {
            statistic.add(a, loadBlock<layout>(second, x, span), out);
        } else {
            statistic.add(a, a, out);
        }
    }
};

// The planes of an image as rows that begin with the channel that is wanted.
template <Layout layout, class T> struct MaskedPlanes {
    Plane<const T> first, second;
    Plane<const std::uint8_t> mask;

    explicit MaskedPlanes(const MaskedImage<T> &image)
        : first{image.first + offset(image), image.firstStep}, second{image.second + offset(image), image.secondStep},
          mask{image.mask, image.maskStep} {}

    static std::ptrdiff_t offset(const MaskedImage<T> &image) { return layout.ofThree ? image.channel - 1 : 0; }
    const std::uint8_t *maskRow(std::int64_t y) const { return layout.masked ? mask.row(y) : nullptr; }
};

template <Layout layout, class T> bool gapless(const MaskedImage<T> &image) {
    const std::int64_t bytes = rowBytes<T>(std::int64_t{image.roi.width} * (layout.ofThree ? 3 : 1));
    return image.firstStep == bytes && image.secondStep == bytes &&
           (!layout.masked || image.maskStep == image.roi.width);
}

template <Layout layout, class T, class Statistic> Statistic measure(const MaskedImage<T> &image, Statistic statistic) {
    constexpr std::int64_t lanes = Block<T>::lanes;
    const MaskedPlanes<layout, T> planes(image);
    // Sums of doubles depend on the lane: only rows of whole blocks may follow each other as one.
    const bool oneRow = gapless<layout>(image) && (!std::is_same_v<T, float> || image.roi.width % lanes == 0);
    const RowShape shape(image.roi.width, image.roi.height, oneRow);
    std::int64_t room = blocksToFlush;
    for (std::int64_t y = 0; y < shape.height; ++y) {
        for (std::int64_t x = 0; x < shape.width;) {
            const std::int64_t width = std::min(shape.width - x, room * lanes);
            constexpr int perPixel = layout.ofThree ? 3 : 1;
            const BlockKernel<layout, T, Statistic> kernel{planes.first.row(y) + perPixel * x,
                                                           planes.second.row(y) + perPixel * x,
                                                           layout.masked ? planes.maskRow(y) + x : nullptr, statistic};
            walkRow<lanes>(width, kernel);
            x += width;
            room -= (width + lanes - 1) / lanes;
            if (room == 0) {
                statistic.flush(blocksToFlush);
                room = blocksToFlush;
            }
        }
    }
    statistic.flush(blocksToFlush - room);
    return statistic;
}

// The first selected pixel, from the top left row by row; (-1, -1) when there is none.
template <class T> Point2i firstSelected(const MaskedImage<T> &image) {
    const Plane mask{image.mask, image.maskStep};
    for (std::int32_t y = 0; y < image.roi.height; ++y) {
        const std::uint8_t *row = mask.row(y);
        for (std::int64_t x = 0; x < image.roi.width; x += U8x32::lanes) {
            const std::int64_t rest = image.roi.width - x;
            const U8x32 bytes =
                rest >= U8x32::lanes ? load<U8x32>(row + x) : load<U8x32>(row + x, Part{static_cast<int>(rest)});
            const std::uint32_t set = ~laneBits(equal(bytes, splat(std::uint8_t{0})));
            if (set != 0) {
                return {static_cast<std::int32_t>(x) + __builtin_ctz(set), y};
            }
        }
    }
    return {-1, -1};
}

} // namespace rvxcv
