// Peaks of a response image: pixels whose magnitude exceeds a threshold and that are the largest (positive ones) or the
// smallest (others) of their 3x3 square or of their cross. One walk over each row does everything: it reduces the row
// below to maxima and minima of three neighbours, joins them with those of the two rows before, which roll in the
// scratch buffer, and tests the pixels of the row itself. The buffer has room for eight rows; four are used.
//
// NaN is passed over: the vector maximum and minimum return their second operand when one is NaN, so a chain that
// takes a finite second operand first and every pixel as the first one never holds NaN.
#include "frame/api.h"
#include "kernel/checks.h"
#include "kernel/plane.h"
#include "kernel/rows.h"
#include "kernel/scratch.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <utility>

namespace rvxcv {
namespace {

// Elements of one rolling row: room for whole vectors over the columns that are examined, at most width - 2.
constexpr std::int64_t rowElements(std::int32_t width) { return ((std::int64_t{width} + 5) >> 2) * 4; }
constexpr std::int64_t scratchBytes(std::int32_t width) { return 8 * rowElements(width) * 4 + 32; }

// What decides about one pixel, by type.
template <class T> struct PeakRule;

template <> struct PeakRule<std::int32_t> {
    I32x8 above, below;

    // |v| > threshold without forming |v|, which wraps for the smallest integer: v > t or v < -t. Any negative
    // threshold lets every pixel pass, as -1 does.
    explicit PeakRule(std::int32_t threshold)
        : above(splat(std::max(threshold, -1))), below(splat(-std::max(threshold, -1))) {}

    RVX_INLINE Mask32x8 operator()(I32x8 v, I32x8 largest, I32x8 smallest) const {
        const I32x8 extremum = select(greater(v, splat(0)), largest, smallest);
        return both(either(greater(v, above), greater(below, v)), equal(v, extremum));
    }
};

template <> struct PeakRule<float> {
    F32x8 threshold;

    explicit PeakRule(float t) : threshold(splat(t)) {}

    // The rule compares |v - extremum| with the smallest normal float in double precision. Single precision gives the
    // same answer: differences up to twice that bound are exact, and rounding a larger one does not take it below. An
    // infinite pixel is infinity minus infinity away from its extremum, which is NaN: no peak.
    RVX_INLINE Mask32x8 operator()(F32x8 v, F32x8 largest, F32x8 smallest) const {
        const F32x8 extremum = select(greater(v, splat(0.0f)), largest, smallest);
        const Mask32x8 ties = lessEqual(absDiff(v, extremum), splat(std::numeric_limits<float>::min()));
        return both(greater(abs(v), threshold), ties);
    }
};

template <class T> struct Extrema {
    Vec<T> largest, smallest;

    RVX_INLINE void include(Vec<T> pixel) {
        largest = max(pixel, largest);
        smallest = min(pixel, smallest);
    }
    RVX_INLINE void include(Extrema other) {
        largest = max(other.largest, largest);
        smallest = min(other.smallest, smallest);
    }
};

// A chain's start, which must not be NaN.
RVX_INLINE Extrema<std::int32_t> startingFrom(I32x8 pixel) { return {pixel, pixel}; }
RVX_INLINE Extrema<float> startingFrom(F32x8 pixel) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    return {max(pixel, splat(-infinity)), min(pixel, splat(infinity))};
}

template <class T, class Span> RVX_INLINE Extrema<T> ofThree(const T *center, Span span) {
    Extrema<T> result = startingFrom(load<Vec<T>>(center, span));
    result.include(load<Vec<T>>(center - 1, span));
    result.include(load<Vec<T>>(center + 1, span));
    return result;
}

// A row's extrema of three neighbours, in the scratch buffer; stored in whole vectors.
template <class T> struct ExtremaRow {
    T *largest, *smallest;

    RVX_INLINE Extrema<T> at(std::ptrdiff_t x) const { return {load<Vec<T>>(largest + x), load<Vec<T>>(smallest + x)}; }
    RVX_INLINE void set(std::ptrdiff_t x, Extrema<T> extrema) const {
        store(largest + x, extrema.largest);
        store(smallest + x, extrema.smallest);
    }
};

template <class T> struct ReduceRow {
    const T *row;
    ExtremaRow<T> out;

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        out.set(x, ofThree(row + x, span));
    }
};

class PeakList {
public:
    PeakList(Point2i *peaks, std::int32_t capacity) : peaks_(peaks), capacity_(capacity) {}

    // A peak at x + i for every bit i, as long as there is room.
    RVX_INLINE void append(std::uint32_t bits, std::int64_t x, std::int64_t y) {
        for (; bits != 0 && !full(); bits &= bits - 1) {
            storeScalar(peaks_ + count_++,
                        {static_cast<std::int32_t>(x + std::countr_zero(bits)), static_cast<std::int32_t>(y)});
        }
    }
    bool full() const { return count_ == capacity_; }
    std::int32_t count() const { return count_; }

private:
    Point2i *peaks_;
    std::int32_t capacity_, count_ = 0;
};

// The rows' pointers stand at the first column examined.
template <class T> struct SquareRow {
    const T *center, *below;
    ExtremaRow<T> rowAbove, rowHere; // the row above gives its place to the row below
    PeakRule<T> isPeak;

    template <class Span> RVX_INLINE std::uint32_t peaks(std::ptrdiff_t x, Span span) const {
        const Extrema<T> newest = ofThree(below + x, span);
        Extrema<T> extrema = rowAbove.at(x);
        rowAbove.set(x, newest);
        extrema.include(rowHere.at(x));
        extrema.include(newest);
        return laneBits(isPeak(load<Vec<T>>(center + x, span), extrema.largest, extrema.smallest), span);
    }
};

template <class T> struct CrossRow {
    const T *above, *center, *below;
    PeakRule<T> isPeak;

    template <class Span> RVX_INLINE std::uint32_t peaks(std::ptrdiff_t x, Span span) const {
        Extrema<T> extrema = ofThree(center + x, span);
        extrema.include(load<Vec<T>>(above + x, span));
        extrema.include(load<Vec<T>>(below + x, span));
        return laneBits(isPeak(load<Vec<T>>(center + x, span), extrema.largest, extrema.smallest), span);
    }
};

// Lists a row's peaks. Whether a vector has one is hard to foresee, so several of them are one question.
template <class Row>
void listPeaks(const Row &row, std::int64_t columns, PeakList &list, std::int64_t x0, std::int64_t y) {
    std::int64_t x = 0;
    for (; x + 32 <= columns; x += 32) {
        const std::uint32_t low = row.peaks(x, Full{}) | row.peaks(x + 8, Full{}) << 8;
        const std::uint32_t high = row.peaks(x + 16, Full{}) | row.peaks(x + 24, Full{}) << 8;
        list.append(low | high << 16, x0 + x, y);
    }
    for (; x + 8 <= columns; x += 8) {
        list.append(row.peaks(x, Full{}), x0 + x, y);
    }
    if (x < columns) {
        list.append(row.peaks(x, Part{static_cast<int>(columns - x)}), x0 + x, y);
    }
}

// The rows first.. (as many as given) and columns first.. of the image, searched row by row.
template <class T>
void searchSquares(Plane<const T> src, std::int64_t first, std::int64_t columns, std::int64_t rows, PeakRule<T> isPeak,
                   PeakList &list, Scratch scratch, std::int64_t pitch) {
    const auto takeRow = [&] { return scratch.take<T>(pitch, 16); };
    ExtremaRow<T> above{takeRow(), takeRow()}, here{takeRow(), takeRow()};
    walkRow<8>(columns, ReduceRow<T>{src.row(first - 1) + first, above});
    walkRow<8>(columns, ReduceRow<T>{src.row(first) + first, here});
    for (std::int64_t y = first; y < first + rows && !list.full(); ++y) {
        const SquareRow<T> row{src.row(y) + first, src.row(y + 1) + first, above, here, isPeak};
        listPeaks(row, columns, list, first, y);
        std::swap(above, here);
    }
}

template <class T>
void searchCrosses(Plane<const T> src, std::int64_t first, std::int64_t columns, std::int64_t rows, PeakRule<T> isPeak,
                   PeakList &list) {
    for (std::int64_t y = first; y < first + rows && !list.full(); ++y) {
        const CrossRow<T> row{src.row(y - 1) + first, src.row(y) + first, src.row(y + 1) + first, isPeak};
        listPeaks(row, columns, list, first, y);
    }
}

template <class T>
StatusCode findPeaks(const T *src, std::int32_t srcStep, RoiSize roi, T threshold, Point2i *peaks,
                     std::int32_t capacity, std::int32_t *count, std::int32_t neighbourhood, std::int32_t border,
                     std::uint8_t *buffer) {
    const auto tooWide = [&](std::int32_t extent) {
        return static_cast<float>(border) > 0.5f * static_cast<float>(extent);
    };
    Checks checks;
    checks.pointers(src, peaks, count, buffer).size(roi).require(capacity >= 1 && border >= 1, StatusBadSize);
    checks.require(!tooWide(roi.width) && !tooWide(roi.height), StatusBadSize);
    checks.require(srcStep / 4 >= roi.width, StatusBadStep).multiples(sizeof(T), srcStep);
    checks.require(neighbourhood == PeakSquare || neighbourhood == PeakCross, StatusBadArgument);
    if (checks.failed()) {
        return checks.status();
    }
    const std::int64_t columns = std::int64_t{roi.width} - 2 * std::int64_t{border};
    const std::int64_t rows = std::int64_t{roi.height} - 2 * std::int64_t{border};
    PeakList list(peaks, capacity);
    if (columns > 0 && rows > 0) {
        const Plane<const T> image{src, srcStep};
        const PeakRule<T> isPeak(threshold);
        if (neighbourhood == PeakSquare) {
            searchSquares(image, border, columns, rows, isPeak, list, Scratch(buffer, scratchBytes(roi.width)),
                          rowElements(roi.width));
        } else {
            searchCrosses(image, border, columns, rows, isPeak, list);
        }
    }
    storeScalar(count, list.count());
    return StatusOk;
}

StatusCode peakScratch(std::int32_t width, std::int32_t *size) {
    Checks checks;
    checks.pointers(size).require(width >= 1, StatusBadSize);
    return checks.failed() ? checks.status() : storeSize(scratchBytes(width), size);
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiFindPeaks3x3_32s_C1R(const int32_t *src, int32_t srcStep, RoiSize roi, int32_t threshold, Point2i *peaks,
                                    int32_t capacity, int32_t *count, int32_t neighbourhood, int32_t border,
                                    uint8_t *buffer) {
    return findPeaks(src, srcStep, roi, threshold, peaks, capacity, count, neighbourhood, border, buffer);
}
StatusCode rvxiFindPeaks3x3_32f_C1R(const float *src, int32_t srcStep, RoiSize roi, float threshold, Point2i *peaks,
                                    int32_t capacity, int32_t *count, int32_t neighbourhood, int32_t border,
                                    uint8_t *buffer) {
    return findPeaks(src, srcStep, roi, threshold, peaks, capacity, count, neighbourhood, border, buffer);
}
StatusCode rvxiFindPeaks3x3GetBufferSize_32s_C1R(int32_t width, int32_t *size) { return peakScratch(width, size); }
StatusCode rvxiFindPeaks3x3GetBufferSize_32f_C1R(int32_t width, int32_t *size) { return peakScratch(width, size); }
