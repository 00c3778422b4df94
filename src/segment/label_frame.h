// What the two segmentations share: the framed copy of the labels, and the neighbours of a pixel in it.
//
// A frame of one pixel around the region answers for what lies outside. Labels are any number above 0, so what is no
// label has the numbers up to 0: 0 itself for whatever is neither free nor labelled (frame, walls, lines, pixels that
// wait for their label), negative ones for free pixels.
#pragma once

#include "kernel/checks.h"
#include "kernel/plane.h"
#include "kernel/rows.h"
#include "kernel/vec.h"

#include "rvxcv/types.h"

#include <algorithm>
#include <bit>

namespace rvxcv {

using Place = std::uint32_t; // of a pixel in the framed copy

inline std::int64_t framedPixels(RoiSize roi) {
    return saturatedProduct(std::int64_t{roi.width} + 2, std::int64_t{roi.height} + 2);
}

// Labels in a frame. The scratch behind them holds at least four bytes more, which may be read and mean nothing.
struct LabelFrame {
    std::int32_t *cells;
    std::int64_t pitch; // cells
    RoiSize roi;

    LabelFrame(std::int32_t *area, RoiSize size) : cells(area), pitch(std::int64_t{size.width} + 2), roi(size) {}

    RVX_INLINE std::int32_t *row(std::int64_t y) const { return cells + (y + 1) * pitch + 1; }

    // Zeros around the region, once its rows are written.
    void close() const {
        std::fill(cells, cells + pitch, 0);
        std::fill(row(roi.height) - 1, row(roi.height) - 1 + pitch, 0);
        for (std::int64_t y = 0; y < roi.height; ++y) {
            row(y)[-1] = 0;
            row(y)[roi.width] = 0;
        }
    }

    // Calls visit(place) for every pixel whose marker is a seed, in scan order.
    template <class Visit> RVX_INLINE void forSeeds(Plane<const std::int32_t> markers, const Visit &visit) const {
        for (std::int64_t y = 0; y < roi.height; ++y) {
            const std::int32_t *const marks = markers.row(y);
            const auto first = static_cast<Place>(row(y) - cells);
            walkRow<8>(roi.width, [&](std::int64_t x, auto span) {
                auto seeds = laneBits(greater(load<I32x8>(marks + x, span), splat(0)));
                for (; seeds != 0; seeds &= seeds - 1) {
                    visit(first + static_cast<Place>(x + std::countr_zero(seeds)));
                }
            });
        }
    }

    // Labels of free pixels back into the image: walls stay, and what has no label is 0.
    void store(Plane<std::int32_t> image) const {
        for (std::int64_t y = 0; y < roi.height; ++y) {
            std::int32_t *const out = image.row(y);
            const std::int32_t *const labels = row(y);
            walkRow<8>(roi.width, [&](std::int64_t x, auto span) {
                const I32x8 marks = load<I32x8>(out + x, span), zero = splat(0);
                const I32x8 label = max(load<I32x8>(labels + x, span), zero);
                rvxcv::store(out + x, select(greater(zero, marks), marks, label), span);
            });
        }
    }
};

// Calls function(offset) for the neighbours of a pixel in a frame with that many cells a row, in scan order.
template <bool eight, class Function> RVX_INLINE void forNeighbours(std::int64_t pitch, const Function &function) {
    if constexpr (eight) {
        function(-pitch - 1);
    }
    function(-pitch);
    if constexpr (eight) {
        function(-pitch + 1);
    }
    function(std::int64_t{-1});
    function(std::int64_t{1});
    if constexpr (eight) {
        function(pitch - 1);
    }
    function(pitch);
    if constexpr (eight) {
        function(pitch + 1);
    }
}

// The label of the cells above 0 around a cell, of which there is one at least; 0 if they differ. Cell by cell: they
// have just been written one by one, and a vector of them would wait for the stores.
template <bool eight> RVX_INLINE std::int32_t commonLabel(const std::int32_t *cell, std::int64_t pitch) {
    std::int32_t most = 0;
    std::uint32_t least = ~0u; // of labels less 1, which is below 2^31 for labels alone
    forNeighbours<eight>(
        pitch, [&](std::int64_t offset) __attribute__((always_inline)) {
            most = std::max(most, cell[offset]);
            least = std::min(least, static_cast<std::uint32_t>(cell[offset]) - 1);
        });
    return static_cast<std::uint32_t>(most) - 1 == least ? most : 0;
}

template <class T, int channels>
StatusCode segmentChecks(const T *src, std::int32_t srcStep, const std::int32_t *srcDst, std::int32_t srcDstStep,
                         RoiSize roi, NormKind norm, std::int32_t flags, const std::uint8_t *buffer) {
    Checks checks;
    checks.pointers(src, srcDst, buffer).size(roi);
    checks.steps(rowBytes<T>(std::int64_t{roi.width} * channels), srcStep);
    checks.steps(rowBytes<std::int32_t>(roi.width), srcDstStep);
    checks.multiples(sizeof(T), srcStep).multiples(sizeof(std::int32_t), srcDstStep);
    checks.require(norm == NormInf || norm == NormL1, StatusBadArgument);
    checks.require(flags == SegmentNoLines || flags == SegmentLines, StatusBadArgument);
    return checks.status();
}

// Calls run(eight, lines) with constants, so that no loop over pixels asks for them.
template <class Run> void withSegmentMode(NormKind norm, std::int32_t flags, const Run &run) {
    const auto withLines = [&](auto eight) {
        if (flags == SegmentLines) {
            run(eight, std::true_type{});
        } else {
            run(eight, std::false_type{});
        }
    };
    if (norm == NormInf) {
        withLines(std::true_type{});
    } else {
        withLines(std::false_type{});
    }
}

} // namespace rvxcv
