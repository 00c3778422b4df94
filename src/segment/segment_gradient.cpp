// Gradient segmentation: a spanning forest of smallest weight, grown from the seeds by Prim's rule.
//
// Beside its label a pixel has a cell with its picture and its level: what an offer must be below to be taken. A pixel
// that is free takes anything and has level 255, which differs from a listed one at 255 only for an offer of 255: its
// label (negative in free pixels) decides. All others have level 0 and take nothing. With lines the label of a listed
// pixel is 0, and it is found when the pixel is taken.
//
// Scratch: labels (4 Q), and cells of two bytes for one channel and four for three; the rest, 9 Q + 4096 less at most
// 70 bytes for the alignment, is the pool of the lists. A small picture has short lists and short words for its places:
// chunks of three entries, 8 bytes each, of which P / 3 + 256 must be there. A larger one has 15 entries in 64 bytes.
#include "frame/api.h"

#include "kernel/scratch.h"
#include "kernel/vec/numbers.h"
#include "segment/level_lists.h"

namespace rvxcv {
namespace {

template <int channels> std::int64_t gradientBytes(RoiSize roi) {
    return saturatedSum(saturatedProduct(framedPixels(roi), channels == 1 ? 15 : 17), 4096);
}

// Framed pixels up to which all places in the pool fit in 16 bits.
constexpr std::int64_t fewPixels = 14000;

// Picture in the lower bytes, level in the highest one.
template <int channels> using Cell = std::conditional_t<channels == 1, std::uint16_t, std::uint32_t>;
template <int channels> constexpr int levelShift = 8 * channels;
constexpr std::int32_t freeLevel = 255;

template <int channels> RVX_INLINE std::uint32_t levelOf(Cell<channels> cell) {
    return std::uint32_t{cell} >> levelShift<channels>;
}
template <int channels> RVX_INLINE Cell<channels> withLevel(Cell<channels> cell, std::uint32_t level) {
    return static_cast<Cell<channels>>((cell & ((1u << levelShift<channels>)-1)) | level << levelShift<channels>);
}
template <int channels> RVX_INLINE I32x8 weights(I32x8 a, I32x8 b) {
    U8x32 most = absDiff(U8x32{{a.v}}, U8x32{{b.v}});
    if constexpr (channels == 3) {
        const I32x8 all{{most.v}};
        most = max(most, max(U8x32{{shiftRightLogical<8>(all).v}}, U8x32{{shiftRightLogical<16>(all).v}}));
    }
    return bitAnd(I32x8{{most.v}}, splat(255));
}

template <int channels, class Lists> class Forest {
public:
    Forest(const LabelFrame &frame, Cell<channels> *cells, const Lists &lists)
        : frame_(frame), cells_(cells), lists_(lists) {}

    void read(Plane<const std::uint8_t> src, Plane<const std::int32_t> markers) {
        const std::int64_t width = frame_.roi.width;
        for (std::int64_t y = 0; y < frame_.roi.height; ++y) {
            const std::uint8_t *const row = src.row(y);
            const std::int32_t *const marks = markers.row(y);
            std::int32_t *const labels = frame_.row(y);
            Cell<channels> *const cells = cells_ + (labels - frame_.cells);
            walkRow<8>(width, [&](std::int64_t x, auto span) {
                const I32x8 mark = load<I32x8>(marks + x, span), zero = splat(0);
                store(labels + x, select(equal(mark, zero), splat(-1), max(mark, zero)), span);
            });
            for (std::int64_t x = 0; x < width; ++x) {
                std::uint32_t cell = labels[x] < 0 ? std::uint32_t{freeLevel} << levelShift<channels> : 0;
                for (int c = 0; c < channels; ++c) {
                    cell |= std::uint32_t{row[x * channels + c]} << (8 * c);
                }
                cells[x] = static_cast<Cell<channels>>(cell);
            }
            cells[-1] = cells[width] = 0;
        }
        const std::int64_t pitch = frame_.pitch, last = framedPixels(frame_.roi) - pitch;
        std::fill(cells_, cells_ + pitch, Cell<channels>{0});
        std::fill(cells_ + last, cells_ + last + pitch, Cell<channels>{0});
        frame_.close();
    }

    template <bool eight, bool lines> void grow(Plane<const std::int32_t> markers) {
        const std::int64_t pitch = frame_.pitch;
        std::int32_t offsets[8] = {}, count = 0;
        forNeighbours<eight>(pitch, [&](std::int64_t offset) { offsets[count++] = static_cast<std::int32_t>(offset); });
        frame_.forSeeds(markers, [&](Place place) { offerAround<eight, lines>(place, offsets); });
        while (!lists_.empty()) {
            std::uint32_t level = 0;
            const Place place = lists_.takeFirst(&level);
            const Place later = lists_.later(level, 4);
            prefetch(cells_ + later - pitch);
            prefetch(cells_ + later);
            prefetch(cells_ + later + pitch);
            prefetch(frame_.cells + later - pitch);
            prefetch(frame_.cells + later);
            prefetch(frame_.cells + later + pitch);
            const Cell<channels> cell = cells_[place];
            if (levelOf<channels>(cell) != level) {
                continue;
            }
            cells_[place] = withLevel<channels>(cell, 0);
            if constexpr (lines) {
                const std::int32_t label = commonLabel<eight>(frame_.cells + place, pitch);
                if (label == 0) {
                    continue;
                }
                frame_.cells[place] = label;
            }
            offerAround<eight, lines>(place, offsets);
        }
    }

private:
    template <bool eight, bool lines> RVX_INLINE void offerAround(Place place, const std::int32_t *offsets) {
        const I32x8 around = cellsAround<eight>(cells_ + place, frame_.pitch);
        const I32x8 offered = weights<channels>(around, splat(static_cast<std::int32_t>(cells_[place])));
        const I32x8 before = shiftRightLogical<levelShift<channels>>(around);
        std::uint32_t taken = laneBits(greater(before, offered));
        const auto highest = laneBits(equal(min(before, offered), splat(freeLevel)));
        if (highest != 0) [[unlikely]] {
            for (int i = 0; i < 8; ++i) {
                const std::int32_t label = frame_.cells[place + static_cast<Place>(offsets[i])];
                taken |= highest & static_cast<std::uint32_t>(label) >> 31 << i;
            }
        }
        std::int32_t levels[8];
        store(levels, offered);
        const std::int32_t label = lines ? 0 : frame_.cells[place];
        for (; taken != 0; taken &= taken - 1) {
            const int i = std::countr_zero(taken);
            const Place to = place + static_cast<Place>(offsets[i]);
            const auto level = static_cast<std::uint32_t>(levels[i]);
            frame_.cells[to] = label;
            cells_[to] = withLevel<channels>(cells_[to], level);
            lists_.append(level, to,
                          [this](Place entry, std::uint32_t of) { return levelOf<channels>(cells_[entry]) == of; });
        }
    }

    // In scan order; of four neighbours the other lanes hold cells that take nothing.
    template <bool eight> static RVX_INLINE I32x8 cellsAround(const Cell<channels> *cell, std::int64_t pitch) {
        const Cell<channels> *const above = cell - pitch, *const below = cell + pitch;
        const auto number = [](Cell<channels> c) { return static_cast<std::int32_t>(c); };
        if constexpr (eight) {
            return numbers(number(above[-1]), number(above[0]), number(above[1]), number(cell[-1]), number(cell[1]),
                           number(below[-1]), number(below[0]), number(below[1]));
        } else {
            return numbers(number(above[0]), number(cell[-1]), number(cell[1]), number(below[0]), 0, 0, 0, 0);
        }
    }

    LabelFrame frame_;
    Cell<channels> *cells_;
    Lists lists_;
};

template <int channels>
StatusCode segmentGradient(const std::uint8_t *src, std::int32_t srcStep, std::int32_t *srcDst, std::int32_t srcDstStep,
                           RoiSize roi, NormKind norm, std::int32_t flags, std::uint8_t *buffer) {
    const StatusCode status =
        segmentChecks<std::uint8_t, channels>(src, srcStep, srcDst, srcDstStep, roi, norm, flags, buffer);
    if (status != StatusOk) {
        return status;
    }
    const std::int64_t pixels = framedPixels(roi);
    Scratch scratch(buffer, gradientBytes<channels>(roi));
    const LabelFrame frame(scratch.take<std::int32_t>(pixels), roi);
    auto *const cells = scratch.take<Cell<channels>>(pixels);
    const Plane<const std::uint8_t> picture{src, srcStep};
    const Plane<const std::int32_t> markers{srcDst, srcDstStep};
    const auto run = [&]<class Index, std::uint32_t chunk>() {
        using Lists = FallingLists<Index, chunk>;
        scratch.take<std::uint8_t>(0, Lists::chunkBytes);
        const std::int64_t chunks = scratch.left() / Lists::chunkBytes;
        Forest<channels, Lists> forest(frame, cells, Lists(scratch.take<Index>(chunks * chunk), chunks));
        forest.read(picture, markers);
        withSegmentMode(norm, flags, [&](auto eight, auto lines) { forest.template grow<eight, lines>(markers); });
    };
    if (pixels <= fewPixels) {
        run.template operator()<std::uint16_t, 4>();
    } else {
        run.template operator()<std::uint32_t, 16>();
    }
    frame.store(Plane{srcDst, srcDstStep});
    return StatusOk;
}

template <int channels> StatusCode gradientGetBufferSize(RoiSize roi, std::int32_t *size) {
    Checks checks;
    checks.pointers(size).size(roi);
    return checks.failed() ? checks.status() : storeSize(gradientBytes<channels>(roi), size);
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiSegmentGradient_8u32s_C1IR(const uint8_t *src, int32_t srcStep, int32_t *srcDst, int32_t srcDstStep,
                                          RoiSize roi, NormKind norm, int32_t flags, uint8_t *buffer) {
    return segmentGradient<1>(src, srcStep, srcDst, srcDstStep, roi, norm, flags, buffer);
}
StatusCode rvxiSegmentGradient_8u32s_C3C1IR(const uint8_t *src, int32_t srcStep, int32_t *srcDst, int32_t srcDstStep,
                                            RoiSize roi, NormKind norm, int32_t flags, uint8_t *buffer) {
    return segmentGradient<3>(src, srcStep, srcDst, srcDstStep, roi, norm, flags, buffer);
}
StatusCode rvxiSegmentGradientGetBufferSize_8u32s_C1R(RoiSize roi, int32_t *size) {
    return gradientGetBufferSize<1>(roi, size);
}
StatusCode rvxiSegmentGradientGetBufferSize_8u32s_C3C1R(RoiSize roi, int32_t *size) {
    return gradientGetBufferSize<3>(roi, size);
}
