// Watershed by flooding from markers: F. Meyer's algorithm on a framed copy, in which a free pixel holds the
// complement of its relief (negative), a labelled one its label, and all others 0. With lines a pixel that is listed
// waits at 0 for its label; without, it has it at once.
//
// 65536 levels are as many as the picture has: values are replaced by their ranks among those that occur, which a
// bitmap of the values gives, since only their order counts.
//
// Scratch: two tables of a word per level; the framed copy; the lists, a word per pixel. With 8 bits four tables of
// 256, for counting in four places at a time. 8 Q - 4 (Q - P) + 4096 + 3 for the alignment is below 9 Q + 4096; the 16
// bits' bitmap and its counts take 12288 of the 16384 bytes that are left beside two tables of 65536 words.
#include "frame/api.h"

#include "kernel/scratch.h"
#include "segment/level_lists.h"

namespace rvxcv {
namespace {

template <class T> std::int64_t watershedBytes(RoiSize roi) {
    const std::int64_t pixels = framedPixels(roi);
    return sizeof(T) == 1 ? saturatedSum(saturatedProduct(pixels, 9), 4096)
                          : saturatedSum(saturatedProduct(pixels, 10), 540672);
}

// Eight cells from their complemented relief and their markers.
template <class Span> RVX_INLINE void mark(std::int32_t *cells, I32x8 relief, const std::int32_t *markers, Span span) {
    const I32x8 marks = load<I32x8>(markers, span), zero = splat(0);
    store(cells, select(equal(marks, zero), relief, max(marks, zero)), span);
}

// The framed copy and the lists; the lists' places follow the copy, so that reading past its end stays inside.
RisingLists prepare(Plane<const std::uint8_t> src, Plane<const std::int32_t> markers, RoiSize roi, Scratch &scratch,
                    LabelFrame *frame) {
    constexpr std::uint32_t levels = 256;
    auto *const counts = scratch.take<std::uint32_t>(4 * levels);
    *frame = LabelFrame(scratch.take<std::int32_t>(framedPixels(roi)), roi);
    auto *const places = scratch.take<Place>(std::int64_t{roi.width} * roi.height);
    std::fill(counts, counts + 4 * levels, 0);
    for (std::int64_t y = 0; y < roi.height; ++y) {
        const std::uint8_t *const row = src.row(y);
        const std::int32_t *const marks = markers.row(y);
        std::int32_t *const cells = frame->row(y);
        std::int64_t x = 0;
        for (; x + 4 <= roi.width; x += 4) {
            ++counts[row[x]];
            ++counts[levels + row[x + 1]];
            ++counts[2 * levels + row[x + 2]];
            ++counts[3 * levels + row[x + 3]];
        }
        for (; x < roi.width; ++x) {
            ++counts[row[x]];
        }
        walkRow<8>(roi.width, [&](std::int64_t i, auto span) {
            mark(cells + i, sub(splat(-1), loadI32(row + i, span)), marks + i, span);
        });
    }
    for (std::uint32_t level = 0; level < levels; ++level) {
        counts[level] += counts[levels + level] + counts[2 * levels + level] + counts[3 * levels + level];
    }
    return {counts, counts + levels, levels, places};
}

// Ranks of 16-bit values among those that occur.
class Ranks {
public:
    static constexpr std::int64_t words = 1024;

    Ranks(Plane<const std::uint16_t> src, RoiSize roi, std::uint64_t *present, std::uint32_t *before)
        : present_(present), before_(before) {
        std::fill(present, present + words, 0);
        for (std::int64_t y = 0; y < roi.height; ++y) {
            const std::uint16_t *const row = src.row(y);
            for (std::int64_t x = 0; x < roi.width; ++x) {
                const std::uint16_t value = loadScalar(row + x);
                present[value / 64] |= 1ull << value % 64;
            }
        }
        for (std::int64_t word = 0; word < words; ++word) {
            before[word] = count_;
            count_ += static_cast<std::uint32_t>(std::popcount(present[word]));
        }
    }

    std::uint32_t count() const { return count_; }
    RVX_INLINE std::uint32_t of(std::uint16_t value) const {
        const std::uint64_t lower = present_[value / 64] & ((1ull << value % 64) - 1);
        return before_[value / 64] + static_cast<std::uint32_t>(std::popcount(lower));
    }

private:
    const std::uint64_t *present_;
    const std::uint32_t *before_;
    std::uint32_t count_ = 0;
};

RisingLists prepare(Plane<const std::uint16_t> src, Plane<const std::int32_t> markers, RoiSize roi, Scratch &scratch,
                    LabelFrame *frame) {
    auto *const present = scratch.take<std::uint64_t>(Ranks::words);
    auto *const before = scratch.take<std::uint32_t>(Ranks::words);
    const Ranks ranks(src, roi, present, before);
    auto *const counts = scratch.take<std::uint32_t>(2 * std::int64_t{ranks.count()});
    *frame = LabelFrame(scratch.take<std::int32_t>(framedPixels(roi)), roi);
    auto *const places = scratch.take<Place>(std::int64_t{roi.width} * roi.height);
    std::fill(counts, counts + ranks.count(), 0);
    for (std::int64_t y = 0; y < roi.height; ++y) {
        const std::uint16_t *const row = src.row(y);
        const std::int32_t *const marks = markers.row(y);
        std::int32_t *const cells = frame->row(y);
        for (std::int64_t x = 0; x < roi.width; ++x) {
            const std::uint32_t rank = ranks.of(loadScalar(row + x));
            ++counts[rank];
            cells[x] = ~static_cast<std::int32_t>(rank);
        }
        walkRow<8>(roi.width,
                   [&](std::int64_t i, auto span) { mark(cells + i, load<I32x8>(cells + i, span), marks + i, span); });
    }
    return {counts, counts + ranks.count(), ranks.count(), places};
}

// Free neighbours that were found, in their order, with what their cells held. They wait here for a few pixels before
// they go to their lists: every neighbour is written and the count says whether it stays, so that no branch asks
// which neighbours are free, and the loop over those that are does not end with every pixel.
template <bool eight> class Found {
public:
    static constexpr int pixels = 32; // that may be visited before the lists get them

    RVX_INLINE void visit(std::int32_t *cell, Place place, std::int64_t pitch, std::int32_t given) {
        forNeighbours<eight>(
            pitch, [&](std::int64_t offset) __attribute__((always_inline)) {
                const std::int32_t held = cell[offset];
                entries_[count_] = {place + static_cast<Place>(offset), held};
                count_ += static_cast<std::uint32_t>(held) >> 31;
                cell[offset] = held < 0 ? given : held;
            });
    }

    RVX_INLINE void appendTo(const RisingLists &lists, std::uint32_t level) {
        for (std::uint32_t i = 0; i < count_; ++i) {
            lists.append(std::max(~static_cast<std::uint32_t>(entries_[i].held), level), entries_[i].place);
        }
        count_ = 0;
    }

private:
    struct Entry {
        Place place;
        std::int32_t held;
    };
    Entry entries_[(eight ? 8 : 4) * pixels + 1]; // one more than can stay
    std::uint32_t count_ = 0;
};

template <bool eight, bool lines>
void flood(const LabelFrame &frame, const RisingLists &lists, Plane<const std::int32_t> markers) {
    const std::int64_t pitch = frame.pitch;
    std::int32_t *const cells = frame.cells;
    Found<eight> found;
    frame.forSeeds(markers, [&](Place place) {
        found.visit(cells + place, place, pitch, lines ? 0 : cells[place]);
        found.appendTo(lists, 0);
    });
    lists.run<Found<eight>::pixels>(
        [&](const Place *places, std::uint32_t n, std::uint32_t waiting, std::uint32_t level) {
            for (std::uint32_t i = 1; i <= n; ++i) {
                const Place place = *(places - i);
                const Place next = *(places - std::min(i + 16, waiting));
                prefetch(cells + next - pitch);
                prefetch(cells + next);
                prefetch(cells + next + pitch);
                std::int32_t *const cell = cells + place;
                if constexpr (lines) {
                    const std::int32_t label = commonLabel<eight>(cell, pitch);
                    if (label == 0) {
                        continue;
                    }
                    *cell = label;
                }
                found.visit(cell, place, pitch, lines ? 0 : *cell);
            }
            found.appendTo(lists, level);
        });
}

template <class T>
StatusCode segmentWatershed(const T *src, std::int32_t srcStep, std::int32_t *srcDst, std::int32_t srcDstStep,
                            RoiSize roi, NormKind norm, std::int32_t flags, std::uint8_t *buffer) {
    const StatusCode status = segmentChecks<T, 1>(src, srcStep, srcDst, srcDstStep, roi, norm, flags, buffer);
    if (status != StatusOk) {
        return status;
    }
    Scratch scratch(buffer, watershedBytes<T>(roi));
    LabelFrame frame(nullptr, roi);
    const Plane<const std::int32_t> markers{srcDst, srcDstStep};
    const RisingLists lists = prepare(Plane<const T>{src, srcStep}, markers, roi, scratch, &frame);
    frame.close();
    withSegmentMode(norm, flags, [&](auto eight, auto lines) { flood<eight, lines>(frame, lists, markers); });
    frame.store(Plane{srcDst, srcDstStep});
    return StatusOk;
}

template <class T> StatusCode watershedGetBufferSize(RoiSize roi, std::int32_t *size) {
    Checks checks;
    checks.pointers(size).size(roi);
    return checks.failed() ? checks.status() : storeSize(watershedBytes<T>(roi), size);
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiSegmentWatershed_8u32s_C1IR(const uint8_t *src, int32_t srcStep, int32_t *srcDst, int32_t srcDstStep,
                                           RoiSize roi, NormKind norm, int32_t flags, uint8_t *buffer) {
    return segmentWatershed(src, srcStep, srcDst, srcDstStep, roi, norm, flags, buffer);
}
StatusCode rvxiSegmentWatershed_16u32s_C1IR(const uint16_t *src, int32_t srcStep, int32_t *srcDst, int32_t srcDstStep,
                                            RoiSize roi, NormKind norm, int32_t flags, uint8_t *buffer) {
    return segmentWatershed(src, srcStep, srcDst, srcDstStep, roi, norm, flags, buffer);
}
StatusCode rvxiSegmentWatershedGetBufferSize_8u32s_C1R(RoiSize roi, int32_t *size) {
    return watershedGetBufferSize<uint8_t>(roi, size);
}
StatusCode rvxiSegmentWatershedGetBufferSize_16u32s_C1R(RoiSize roi, int32_t *size) {
    return watershedGetBufferSize<uint16_t>(roi, size);
}
