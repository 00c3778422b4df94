// Rank filters: minimum and maximum under a rectangle. Separable: a block of output rows is first reduced along the
// columns, straight from the source, into scratch rows that have room for the margins; the margins repeat the edge
// pixels; then each scratch row is reduced along itself into the destination. Wide images are cut into tiles of columns
// so that a block stays in the cache, or in a scratch buffer that was sized for fewer channels.
#include "morph/rank_filter.h"

#include "frame/api.h"
#include "kernel/checks.h"
#include "kernel/scratch.h"
#include "morph/morph_spec.h"
#include "morph/row_extrema.h"

namespace rvxcv {
namespace {

constexpr std::int64_t cacheBytes = 128 * 1024; // of scratch rows: with the source rows, well inside the second level

// Where replication makes offsets beyond the far edge equal to it, larger windows are the same window.
Window trimmed(Window w, RoiSize roi, const Border &border) {
    const auto trim = [](std::int64_t &first, std::int64_t &last, std::int64_t size, bool before, bool after) {
        const std::int64_t low = before ? INT64_MIN : 1 - size, high = after ? INT64_MAX : size - 1;
        first = std::clamp(first, low, high);
        last = std::clamp(last, low, high);
    };
    trim(w.left, w.right, roi.width, border.left, border.right);
    trim(w.top, w.bottom, roi.height, border.top, border.bottom);
    return w;
}

// How a region is cut: output rows at a time, output pixels at a time, and the bytes of a scratch row.
struct Tiling {
    std::int64_t rows;
    std::int64_t pixels;
    std::int64_t rowStep;
};

// Each scratch row has `margin` pixels beside the output's. No pixels: the scratch is too small.
Tiling chooseTiling(std::int64_t width, std::int64_t margin, bool wholeWidth, std::int64_t rows,
                    std::int64_t pixelBytes, std::int64_t scratchBytes) {
    const auto fitting = [&](std::int64_t bytes) { return (bytes / rows / 32 * 32 - rowSlack) / pixelBytes - margin; };
    const std::int64_t enough = wholeWidth ? width : std::min(width, margin);
    while (rows > 1 && fitting(scratchBytes) < enough) {
        rows /= 2;
    }
    std::int64_t pixels = std::min(width, fitting(scratchBytes));
    if (wholeWidth) {
        pixels = pixels < width ? 0 : width;
    } else {
        const std::int64_t cached = std::max(fitting(cacheBytes), std::max(4 * margin, 512 / pixelBytes));
        pixels = std::max<std::int64_t>(std::min(pixels, cached), 0);
    }
    return {rows, pixels, roundUp((pixels + margin) * pixelBytes, 32) + rowSlack};
}

// Three or four rows at a time share the rows between them in registers; higher windows are cut into blocks of their
// own height.
constexpr std::int64_t blockHeight(std::int64_t windowHeight) {
    return windowHeight < 4 ? std::min<std::int64_t>(windowHeight, 2) : windowHeight < 8 ? 4 : windowHeight;
}

template <class T, class Op>
void reduceColumns(const T *const *rows, std::int64_t height, std::int64_t outputs, T *out, std::int64_t outStep,
                   std::int64_t n) {
    constexpr int lanes = Vec<T>::lanes;
    if (outputs == 4 && height >= 4) {
        sweep<lanes, 2>(n, ColumnExtremaFew<T, Op, 4>{rows, height, out, outStep});
    } else if (outputs == 2 && height >= 2) {
        sweep<lanes, 4>(n, ColumnExtremaFew<T, Op, 2>{rows, height, out, outStep});
    } else {
        sweep<lanes, 4>(n, ColumnExtrema<T, Op>{rows, height, outputs, out, outStep});
    }
}

} // namespace

template <class T, class Op>
bool filterWindow(Plane<const T> src, Plane<T> dst, RoiSize roi, int channels, Window window, const Border &border,
                  std::uint8_t *scratch, std::int64_t scratchBytes) {
    window = trimmed(window, roi, border);
    const std::int64_t width = window.right - window.left + 1, height = window.bottom - window.top + 1;
    const auto pixelBytes = static_cast<std::int64_t>(channels * sizeof(T));
    // A column alone needs no scratch row.
    const bool columnOnly = window.left == 0 && window.right == 0;
    // A window wider than the region reaches an edge from everywhere: it is done as a window to the left, then one to
    // the right on its result, which together need less room.
    const bool twoParts = width > roi.width && !border.left && !border.right;
    const std::int64_t margin = twoParts ? std::max(-window.left, window.right) : width - 1;

    // Row pointers first, then the scratch rows.
    const std::int64_t blockRows = std::min<std::int64_t>(blockHeight(height), roi.height);
    const std::int64_t pointerBytes = (blockRows + height - 1) * static_cast<std::int64_t>(sizeof(T *));
    if (pointerBytes + 64 > scratchBytes) {
        return false;
    }
    Scratch areas(scratch, scratchBytes);
    const T **rows = areas.take<const T *>(blockRows + height - 1);
    auto *lines = areas.take<std::uint8_t>(0, 32);
    const std::int64_t room = scratchBytes - (lines - scratch);
    const Tiling tiling = columnOnly ? Tiling{blockRows, roi.width, 0}
                                     : chooseTiling(roi.width, margin, twoParts, blockRows, pixelBytes, room);
    if (tiling.pixels < 1) {
        return false;
    }

    for (std::int64_t x0 = 0; x0 < roi.width; x0 += tiling.pixels) {
        const std::int64_t pixels = std::min(tiling.pixels, roi.width - x0), n = pixels * channels;
        // The source columns under the windows that exist, and how many repetitions stand beside them.
        const std::int64_t wantedFirst = twoParts ? 0 : x0 + window.left;
        const std::int64_t wantedLast = twoParts ? roi.width - 1 : x0 + pixels - 1 + window.right;
        const std::int64_t first = borderColumn(border, wantedFirst, roi.width).index;
        const std::int64_t last = borderColumn(border, wantedLast, roi.width).index;
        const std::int64_t before = first - wantedFirst, behind = wantedLast - last;
        const std::int64_t columns = last - first + 1;

        for (std::int64_t y0 = 0; y0 < roi.height; y0 += tiling.rows) {
            const std::int64_t outputs = std::min(tiling.rows, roi.height - y0);
            for (std::int64_t k = 0; k < outputs + height - 1; ++k) {
                rows[k] = src.row(borderRow(border, y0 + window.top + k, roi.height).index) + first * channels;
            }
            if (columnOnly) {
                reduceColumns<T, Op>(rows, height, outputs, dst.row(y0) + x0 * channels, dst.step, n);
                continue;
            }
            const std::int64_t leftPart = twoParts ? -window.left : before;
            reduceColumns<T, Op>(rows, height, outputs, reinterpret_cast<T *>(lines) + leftPart * channels,
                                 tiling.rowStep, columns * channels);
            for (std::int64_t k = 0; k < outputs; ++k) {
                T *line = reinterpret_cast<T *>(lines + k * tiling.rowStep);
                T *out = dst.row(y0 + k) + x0 * channels;
                T *pixel = line + leftPart * channels;
                repeatPixel(line, leftPart, pixel, channels);
                if (twoParts) {
                    rowExtrema<T, Op>(line, line, n, 1 - window.left, channels);
                    repeatPixel(line + n, window.right, line + n - channels, channels);
                    rowExtrema<T, Op>(line, out, n, 1 + window.right, channels);
                } else {
                    repeatPixel(pixel + columns * channels, behind, pixel + (columns - 1) * channels, channels);
                    rowExtrema<T, Op>(line, out, n, width, channels);
                }
            }
        }
    }
    return true;
}

#define RVX_INSTANTIATE(T, Op)                                                                                         \
    template bool filterWindow<T, Op>(Plane<const T>, Plane<T>, RoiSize, int, Window, const Border &, std::uint8_t *,  \
                                      std::int64_t);
RVX_INSTANTIATE(std::uint8_t, Minimum)
RVX_INSTANTIATE(std::uint8_t, Maximum)
RVX_INSTANTIATE(std::uint16_t, Minimum)
RVX_INSTANTIATE(std::uint16_t, Maximum)
RVX_INSTANTIATE(std::int16_t, Minimum)
RVX_INSTANTIATE(std::int16_t, Maximum)
RVX_INSTANTIATE(float, Minimum)
RVX_INSTANTIATE(float, Maximum)
#undef RVX_INSTANTIATE

namespace {

template <class T, int channels>
StatusCode rankSize(std::int32_t roiWidth, RoiSize maskSize, std::int32_t *bufferSize) {
    Checks checks;
    checks.pointers(bufferSize).require(roiWidth >= 1, StatusBadSize);
    checks.require(maskSize.width >= 1 && maskSize.height >= 1, StatusBadMaskSize);
    if (checks.failed()) {
        return checks.status();
    }
    return storeSize(rankBufferBytes(roiWidth, rowBytes<T>(channels), maskSize.height), bufferSize);
}

template <class Op, int channels, class T>
StatusCode rankFilter(const T *src, std::int32_t srcStep, T *dst, std::int32_t dstStep, RoiSize roi, RoiSize maskSize,
                      Point2i anchor, std::uint8_t *buffer) {
    Checks checks;
    checks.pointers(src, dst, buffer).size(roi);
    checks.require(maskSize.width >= 1 && maskSize.height >= 1, StatusBadMaskSize);
    checks.require(anchor.x >= 0 && anchor.x < maskSize.width && anchor.y >= 0 && anchor.y < maskSize.height,
                   StatusBadAnchor);
    checks.steps(rowBytes<T>(std::int64_t{roi.width} * channels), srcStep, dstStep);
    checks.multiples(sizeof(T), srcStep, dstStep);
    if (checks.failed()) {
        return checks.status();
    }
    const Window window{-std::int64_t{anchor.x}, -std::int64_t{anchor.y}, std::int64_t{maskSize.width} - 1 - anchor.x,
                        std::int64_t{maskSize.height} - 1 - anchor.y};
    const std::int64_t bytes = rankBufferBytes(roi.width, rowBytes<T>(channels), maskSize.height);
    const bool done = filterWindow<T, Op>(Plane{src, srcStep}, Plane{dst, dstStep}, roi, channels, window,
                                          Border(BorderReplicate), buffer, bytes);
    return done ? StatusOk : StatusError; // the promised size always suffices
}

} // namespace

StatusCode ownrvxiFilterMinGetBufferSize_16u_C1R(std::int32_t roiWidth, RoiSize maskSize, std::int32_t *bufferSize) {
    return rankSize<std::uint16_t, 1>(roiWidth, maskSize, bufferSize);
}
StatusCode ownrvxiFilterMaxGetBufferSize_16u_C1R(std::int32_t roiWidth, RoiSize maskSize, std::int32_t *bufferSize) {
    return rankSize<std::uint16_t, 1>(roiWidth, maskSize, bufferSize);
}
StatusCode ownrvxiFilterMinBorderReplicate_16u_C1R(const std::uint16_t *src, std::int32_t srcStep, std::uint16_t *dst,
                                                   std::int32_t dstStep, RoiSize roi, RoiSize maskSize, Point2i anchor,
                                                   std::uint8_t *buffer) {
    return rankFilter<Minimum, 1>(src, srcStep, dst, dstStep, roi, maskSize, anchor, buffer);
}
StatusCode ownrvxiFilterMaxBorderReplicate_16u_C1R(const std::uint16_t *src, std::int32_t srcStep, std::uint16_t *dst,
                                                   std::int32_t dstStep, RoiSize roi, RoiSize maskSize, Point2i anchor,
                                                   std::uint8_t *buffer) {
    return rankFilter<Maximum, 1>(src, srcStep, dst, dstStep, roi, maskSize, anchor, buffer);
}
StatusCode ownrvxiFilterMinBorderReplicate_16s_C1R(const std::int16_t *src, std::int32_t srcStep, std::int16_t *dst,
                                                   std::int32_t dstStep, RoiSize roi, RoiSize maskSize, Point2i anchor,
                                                   std::uint8_t *buffer) {
    return rankFilter<Minimum, 1>(src, srcStep, dst, dstStep, roi, maskSize, anchor, buffer);
}
StatusCode ownrvxiFilterMaxBorderReplicate_16s_C1R(const std::int16_t *src, std::int32_t srcStep, std::int16_t *dst,
                                                   std::int32_t dstStep, RoiSize roi, RoiSize maskSize, Point2i anchor,
                                                   std::uint8_t *buffer) {
    return rankFilter<Maximum, 1>(src, srcStep, dst, dstStep, roi, maskSize, anchor, buffer);
}
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiFilterMinGetBufferSize_8u_C1R(int32_t roiWidth, RoiSize maskSize, int32_t *bufferSize) {
    return rankSize<uint8_t, 1>(roiWidth, maskSize, bufferSize);
}
StatusCode rvxiFilterMinGetBufferSize_8u_C3R(int32_t roiWidth, RoiSize maskSize, int32_t *bufferSize) {
    return rankSize<uint8_t, 3>(roiWidth, maskSize, bufferSize);
}
StatusCode rvxiFilterMinGetBufferSize_8u_C4R(int32_t roiWidth, RoiSize maskSize, int32_t *bufferSize) {
    return rankSize<uint8_t, 4>(roiWidth, maskSize, bufferSize);
}
StatusCode rvxiFilterMinGetBufferSize_32f_C1R(int32_t roiWidth, RoiSize maskSize, int32_t *bufferSize) {
    return rankSize<float, 1>(roiWidth, maskSize, bufferSize);
}
StatusCode rvxiFilterMinGetBufferSize_32f_C3R(int32_t roiWidth, RoiSize maskSize, int32_t *bufferSize) {
    return rankSize<float, 3>(roiWidth, maskSize, bufferSize);
}
StatusCode rvxiFilterMinGetBufferSize_32f_C4R(int32_t roiWidth, RoiSize maskSize, int32_t *bufferSize) {
    return rankSize<float, 4>(roiWidth, maskSize, bufferSize);
}
StatusCode rvxiFilterMaxGetBufferSize_8u_C1R(int32_t roiWidth, RoiSize maskSize, int32_t *bufferSize) {
    return rankSize<uint8_t, 1>(roiWidth, maskSize, bufferSize);
}
StatusCode rvxiFilterMaxGetBufferSize_8u_C3R(int32_t roiWidth, RoiSize maskSize, int32_t *bufferSize) {
    return rankSize<uint8_t, 3>(roiWidth, maskSize, bufferSize);
}
StatusCode rvxiFilterMaxGetBufferSize_8u_C4R(int32_t roiWidth, RoiSize maskSize, int32_t *bufferSize) {
    return rankSize<uint8_t, 4>(roiWidth, maskSize, bufferSize);
}
StatusCode rvxiFilterMaxGetBufferSize_32f_C1R(int32_t roiWidth, RoiSize maskSize, int32_t *bufferSize) {
    return rankSize<float, 1>(roiWidth, maskSize, bufferSize);
}
StatusCode rvxiFilterMaxGetBufferSize_32f_C3R(int32_t roiWidth, RoiSize maskSize, int32_t *bufferSize) {
    return rankSize<float, 3>(roiWidth, maskSize, bufferSize);
}
StatusCode rvxiFilterMaxGetBufferSize_32f_C4R(int32_t roiWidth, RoiSize maskSize, int32_t *bufferSize) {
    return rankSize<float, 4>(roiWidth, maskSize, bufferSize);
}

StatusCode rvxiFilterMinBorderReplicate_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                               RoiSize roi, RoiSize maskSize, Point2i anchor, uint8_t *buffer) {
    return rankFilter<Minimum, 1>(src, srcStep, dst, dstStep, roi, maskSize, anchor, buffer);
}
StatusCode rvxiFilterMinBorderReplicate_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                               RoiSize roi, RoiSize maskSize, Point2i anchor, uint8_t *buffer) {
    return rankFilter<Minimum, 3>(src, srcStep, dst, dstStep, roi, maskSize, anchor, buffer);
}
StatusCode rvxiFilterMinBorderReplicate_8u_C4R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                               RoiSize roi, RoiSize maskSize, Point2i anchor, uint8_t *buffer) {
    return rankFilter<Minimum, 4>(src, srcStep, dst, dstStep, roi, maskSize, anchor, buffer);
}
StatusCode rvxiFilterMinBorderReplicate_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                                RoiSize roi, RoiSize maskSize, Point2i anchor, uint8_t *buffer) {
    return rankFilter<Minimum, 1>(src, srcStep, dst, dstStep, roi, maskSize, anchor, buffer);
}
StatusCode rvxiFilterMinBorderReplicate_32f_C3R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                                RoiSize roi, RoiSize maskSize, Point2i anchor, uint8_t *buffer) {
    return rankFilter<Minimum, 3>(src, srcStep, dst, dstStep, roi, maskSize, anchor, buffer);
}
StatusCode rvxiFilterMinBorderReplicate_32f_C4R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                                RoiSize roi, RoiSize maskSize, Point2i anchor, uint8_t *buffer) {
    return rankFilter<Minimum, 4>(src, srcStep, dst, dstStep, roi, maskSize, anchor, buffer);
}
StatusCode rvxiFilterMaxBorderReplicate_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                               RoiSize roi, RoiSize maskSize, Point2i anchor, uint8_t *buffer) {
    return rankFilter<Maximum, 1>(src, srcStep, dst, dstStep, roi, maskSize, anchor, buffer);
}
StatusCode rvxiFilterMaxBorderReplicate_8u_C3R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                               RoiSize roi, RoiSize maskSize, Point2i anchor, uint8_t *buffer) {
    return rankFilter<Maximum, 3>(src, srcStep, dst, dstStep, roi, maskSize, anchor, buffer);
}
StatusCode rvxiFilterMaxBorderReplicate_8u_C4R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep,
                                               RoiSize roi, RoiSize maskSize, Point2i anchor, uint8_t *buffer) {
    return rankFilter<Maximum, 4>(src, srcStep, dst, dstStep, roi, maskSize, anchor, buffer);
}
StatusCode rvxiFilterMaxBorderReplicate_32f_C1R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                                RoiSize roi, RoiSize maskSize, Point2i anchor, uint8_t *buffer) {
    return rankFilter<Maximum, 1>(src, srcStep, dst, dstStep, roi, maskSize, anchor, buffer);
}
StatusCode rvxiFilterMaxBorderReplicate_32f_C3R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                                RoiSize roi, RoiSize maskSize, Point2i anchor, uint8_t *buffer) {
    return rankFilter<Maximum, 3>(src, srcStep, dst, dstStep, roi, maskSize, anchor, buffer);
}
StatusCode rvxiFilterMaxBorderReplicate_32f_C4R(const float *src, int32_t srcStep, float *dst, int32_t dstStep,
                                                RoiSize roi, RoiSize maskSize, Point2i anchor, uint8_t *buffer) {
    return rankFilter<Maximum, 4>(src, srcStep, dst, dstStep, roi, maskSize, anchor, buffer);
}
