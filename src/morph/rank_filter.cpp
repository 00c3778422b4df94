// Rank filters: minimum and maximum under a rectangle. The frequent small ones are in small_window.h and row_window.h.
// For the others, separable: a block of output rows is first reduced along the columns, straight from the source, into
// scratch rows that have room for the margins; the margins repeat the edge pixels; then each scratch row is reduced
// along itself into the destination. Wide images are cut into tiles of columns so that a block stays in the cache, or
// in a scratch buffer that was sized for fewer channels.
#include "frame/api.h"

#include "kernel/checks.h"
#include "kernel/scratch.h"
#include "morph/morph_spec.h"
#include "morph/rank_filter.h"
#include "morph/row_extrema.h"
#include "morph/row_window.h"

namespace rvxcv {
namespace {

// `count` lines of extended pixels to output rows y0 .. They follow each other without gaps: steps inside scratch take
// them as one.
template <class T, class Op>
void reduceRows(const MorphTask<T> &task, Window window, bool twoParts, T *lines, std::int64_t lineElements,
                std::int64_t x0, std::int64_t pixels, std::int64_t y0, std::int64_t count) {
    const std::int64_t channels = task.channels, n = pixels * channels, gaps = (count - 1) * lineElements;
    // Extrema of some pixels that the last step makes those of `length` from.
    const auto widen = [&](std::int64_t length) {
        const std::int64_t elements = gaps + n + (length - 1) * channels;
        const std::int64_t known = doubleRows<T, Op>(lines, elements, length, channels);
        widenRows<T, Op>(lines, elements - (known - 1) * channels, known, length, channels);
        return widenedTo(known, length);
    };
    std::int64_t length = window.right - window.left + 1;
    if (twoParts) {
        length = 1 - window.left;
        const std::int64_t known = widen(length);
        for (std::int64_t k = 0; k < count; ++k) {
            T *const line = lines + k * lineElements;
            finishRow<T, Op, Store::sloppy>(line, line, n, known, length, channels);
            repeatPixel(line + n, window.right, line + n - channels, channels);
        }
        length = 1 + window.right;
    }
    const std::int64_t known = widen(length);
    for (std::int64_t k = 0; k < count; ++k) {
        finishRow<T, Op, Store::exact>(lines + k * lineElements, task.dst.row(y0 + k) + x0 * channels, n, known, length,
                                       channels);
    }
}

} // namespace

template <class T, class Op> bool filterWindow(const MorphTask<T> &task, Window window) {
    window = trimmed(window, task.roi, task.border);
    if (filterSmallWindow<T, Op, Extremum>(task, window, {task.dst.base, task.dst.step})) {
        return true;
    }
    if (RowWindow<T, Op>::applies(task, window)) {
        RowWindow<T, Op>(task, window).run();
        return true;
    }
    const std::int64_t channels = task.channels, roiWidth = task.roi.width;
    const std::int64_t width = window.right - window.left + 1, height = window.bottom - window.top + 1;
    // A column alone needs no scratch row.
    const bool columnOnly = window.left == 0 && window.right == 0;
    // A window wider than the region reaches an edge from everywhere: it is done as a window to the left, then one to
    // the right on its result, which together need less room.
    const bool twoParts = width > roiWidth && !task.border.left && !task.border.right;
    const std::int64_t margin = twoParts ? std::max(-window.left, window.right) : width - 1;

    // Row pointers first, then the scratch rows; fewer rows at a time when they do not fit.
    std::int64_t blockRows = std::min<std::int64_t>(blockHeight(height), task.lastRow - task.firstRow);
    const std::int64_t pointerBytes = (blockRows + height - 1) * static_cast<std::int64_t>(sizeof(T *));
    if (pointerBytes + 64 > task.scratchBytes) {
        return false;
    }
    Scratch areas(task.scratch, task.scratchBytes);
    const T **rows = areas.take<const T *>(blockRows + height - 1);
    auto *const memory = areas.take<std::uint8_t>(0);
    const std::int64_t room = task.scratchBytes - (memory - task.scratch) - 31;
    std::int64_t tileWidth = roiWidth, lineStep = 0;
    if (!columnOnly) {
        const std::int64_t enough = twoParts ? roiWidth : std::min(roiWidth, margin);
        while (blockRows > 1 && fittingPixels(room, blockRows, margin, task.pixelBytes()) < enough) {
            blockRows /= 2;
        }
        tileWidth = tilePixels(roiWidth, room, blockRows, margin, task.pixelBytes());
        if (twoParts) {
            tileWidth = fittingPixels(room, blockRows, margin, task.pixelBytes()) >= roiWidth ? roiWidth : 0;
        }
        if (tileWidth < 1) {
            return false;
        }
        lineStep = scratchRowStep(tileWidth + margin, task.pixelBytes());
    }

    for (std::int64_t x0 = 0; x0 < roiWidth; x0 += tileWidth) {
        const std::int64_t pixels = std::min(tileWidth, roiWidth - x0), n = pixels * channels;
        const Interval source = twoParts
                                    ? Interval(task.border, roiWidth, 0, roiWidth - 1)
                                    : Interval(task.border, roiWidth, x0 + window.left, x0 + pixels - 1 + window.right);
        const std::int64_t before = twoParts ? -window.left : source.before;
        // The pixels behind the left margin stand at multiples of the vector size.
        const auto address =
            reinterpret_cast<std::uintptr_t>(memory) + static_cast<std::uintptr_t>(before * task.pixelBytes());
        T *const lines = reinterpret_cast<T *>(memory + (-address & 31));
        const std::int64_t lineElements = lineStep / static_cast<std::int64_t>(sizeof(T));

        for (std::int64_t y0 = task.firstRow; y0 < task.lastRow; y0 += blockRows) {
            const std::int64_t outputs = std::min(blockRows, task.lastRow - y0);
            collectRows(rows, {task.src.base + source.from * channels, task.src.step}, task.border, task.roi.height,
                        y0 + window.top, outputs + height - 1);
            if (columnOnly) {
                reduceColumns<T, Op>(rows, height, outputs, task.dst.row(y0) + x0 * channels, task.dst.step, n);
                continue;
            }
            T *const pixel = lines + before * channels;
            reduceColumns<T, Op>(rows, height, outputs, pixel, lineStep, source.columns * channels);
            for (std::int64_t k = 0; k < outputs; ++k) {
                T *const line = lines + k * lineElements, *const edge = pixel + k * lineElements;
                repeatPixel(line, before, edge, channels);
                repeatPixel(edge + source.columns * channels, source.behind, edge + (source.columns - 1) * channels,
                            channels);
            }
            // A few lines at a time go through the steps along them, while they are in the first-level cache.
            constexpr std::int64_t groupBytes = 8 * 1024;
            const std::int64_t groupLines = std::max<std::int64_t>(groupBytes / lineStep, 1);
            for (std::int64_t k = 0; k < outputs; k += groupLines) {
                reduceRows<T, Op>(task, window, twoParts, lines + k * lineElements, lineElements, x0, pixels, y0 + k,
                                  std::min(groupLines, outputs - k));
            }
        }
    }
    return true;
}

template bool filterWindow<std::uint8_t, Minimum>(const MorphTask<std::uint8_t> &, Window);
template bool filterWindow<std::uint8_t, Maximum>(const MorphTask<std::uint8_t> &, Window);
template bool filterWindow<std::uint16_t, Minimum>(const MorphTask<std::uint16_t> &, Window);
template bool filterWindow<std::uint16_t, Maximum>(const MorphTask<std::uint16_t> &, Window);
template bool filterWindow<std::int16_t, Minimum>(const MorphTask<std::int16_t> &, Window);
template bool filterWindow<std::int16_t, Maximum>(const MorphTask<std::int16_t> &, Window);
template bool filterWindow<float, Minimum>(const MorphTask<float> &, Window);
template bool filterWindow<float, Maximum>(const MorphTask<float> &, Window);

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
    const MorphTask<T> task{
        Plane{src, srcStep}, Plane{dst, dstStep}, roi, 0, roi.height, channels, Border(BorderReplicate), buffer, bytes};
    const bool done = filterWindow<T, Op>(task, window);
    return done ? StatusOk : StatusError; // the promised size always suffices
}

} // namespace
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
