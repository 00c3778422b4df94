// Straight lines: the standard Hough transform. Every marked pixel votes, at every angle, for the line through it;
// cells with more votes than their neighbours are lines.
//
// Two angles are voted at a time, eight pixels a step: they share the pixels' coordinates, and their counters lie in
// different rows. A counter that is incremented again and again makes each increment wait for the one before, so the
// pixels are not taken in scan order, in which neighbours share a line, but from eight parts of the image in turn. Of
// the space only four rows are kept: a row is searched as soon as those on both sides of it are complete.
#include "frame/api.h"

#include "feature/hough_tables.h"
#include "kernel/checks.h"
#include "kernel/scratch.h"

#include <algorithm>
#include <cmath>

namespace rvxcv {
namespace {

std::int64_t scratchBytes(RoiSize roi, HoughResolution resolution, std::int32_t capacity) {
    const HoughSpace space(roi, resolution);
    const std::int64_t pixels = saturatedProduct(4 * std::int64_t{roi.width} + 64, roi.height);
    return saturatedSum(pixels, 16 * std::int64_t{capacity} + 32, 8 * space.angles, 16 * space.rhos + 256);
}

// ------------------------------------------------------------------------------------------------------ the votes

// The marked pixels as words. With m words in each of eight parts, word i of part p lies at 8 i + p; the last places
// hold the pixel (0, 0), whose votes are taken back.
class MarkedPixels {
public:
    MarkedPixels(Plane<const std::uint8_t> src, RoiSize roi, Scratch &scratch) : code_(roi.width) {
        std::int64_t marked = 0;
        visitMarks(src, roi, [&](std::uint32_t bits, std::int64_t, std::int64_t) { marked += std::popcount(bits); });
        blocks_ = (marked + 7) / 8;
        fillers_ = static_cast<std::int32_t>(8 * blocks_ - marked);
        words_ = scratch.take<std::int32_t>(8 * blocks_, 32);
        std::int64_t part = 0, place = 0;
        const auto append = [&](std::uint32_t word) {
            words_[place] = static_cast<std::int32_t>(word);
            place += 8;
            if (place >= 8 * blocks_) {
                place = ++part;
            }
        };
        visitMarkedPixels(src, roi, [&](std::int64_t x, std::int64_t y) { append(code_.encode(x, y)); });
        for (std::int32_t i = 0; i < fillers_; ++i) {
            append(0);
        }
    }

    const PixelCode &code() const { return code_; }
    std::int64_t blocks() const { return blocks_; }
    std::int32_t fillers() const { return fillers_; }
    RVX_INLINE I32x8 block(std::int64_t i) const { return load<I32x8>(words_ + 8 * i); }

private:
    PixelCode code_;
    std::int64_t blocks_;
    std::int32_t fillers_;
    std::int32_t *words_;
};

// From q, in 1024ths, to the place of a cell in its row, which begins with cell -2.
class NarrowCell {
public:
    explicit NarrowCell(const HoughSpace &space) : offset_(static_cast<std::int32_t>((space.half + 2) * 1024 + 512)) {}

    RVX_INLINE I32x8 operator()(F32x8 q) const { return shiftRight<10>(add(roundToEven(q), splat(offset_))); }
    std::int32_t zero() const { return offset_ >> 10; }

private:
    std::int32_t offset_;
};

// Where q may leave the integers, or single precision may lead past the last cell. The fraction of a 1024th of an
// integer is exact.
class WideCell {
public:
    explicit WideCell(const HoughSpace &space)
        : zero_(static_cast<std::int32_t>(space.half + 2)), last_(static_cast<std::int32_t>(space.rhos + 2)) {}

    RVX_INLINE I32x8 operator()(F32x8 q) const {
        const F32x8 cells = mul(wholeNearest(q), splat(1.0f / 1024));
        const F32x8 towardZero = wholeTowardZero(cells);
        const F32x8 below = sub(towardZero, keep(greater(towardZero, cells), splat(1.0f)));
        const Mask32x8 up = greaterEqual(sub(cells, below), splat(0.5f));
        const I32x8 place = add(add(truncate(below), splat(zero_)), keep(up, splat(1)));
        return min(max(place, splat(1)), splat(last_));
    }
    std::int32_t zero() const { return zero_; }

private:
    std::int32_t zero_, last_;
};

// What 64-bit arithmetic would give is given by NarrowCell: its sums fit, and the error of single precision is smaller
// than the distance of the extreme rhos from the last cells, which is that of two and a half pixels.
bool isNarrow(RoiSize roi, const HoughSpace &space) {
    return std::int64_t{roi.width} + roi.height <= 1 << 20 && space.rhos < 1 << 20;
}

struct AngleTables {
    float *cosines, *sines; // in 1024ths of a cell, whole numbers
};

// Two loops, so that the cells pass through memory: one by one out of a vector, they would cost twice as much.
template <int angles, class Cell>
void vote(const MarkedPixels &pixels, const float *cosines, const float *sines, const Cell &cell,
          std::int32_t *const (&rows)[2]) {
    constexpr std::int64_t most = 8;
    std::uint32_t cells[most][angles][8];
    F32x8 cosine[angles], sine[angles];
    for (int a = 0; a < angles; ++a) {
        cosine[a] = splat(cosines[a]);
        sine[a] = splat(sines[a]);
    }
    const PixelCode code = pixels.code();
    for (std::int64_t begin = 0; begin < pixels.blocks(); begin += most) {
        const std::int64_t count = std::min(most, pixels.blocks() - begin);
        for (std::int64_t i = 0; i < count; ++i) {
            const I32x8 words = pixels.block(begin + i);
            const F32x8 x = code.x(words), y = code.y(words);
            for (int a = 0; a < angles; ++a) {
                store(reinterpret_cast<std::int32_t *>(cells[i][a]), cell(add(mul(x, cosine[a]), mul(y, sine[a]))));
            }
        }
        for (std::int64_t i = 0; i < count; ++i) {
            for (int lane = 0; lane < 8; ++lane) {
                for (int a = 0; a < angles; ++a) {
                    ++rows[a][cells[i][a][lane]];
                }
            }
        }
    }
    for (int a = 0; a < angles; ++a) {
        rows[a][cell.zero()] -= pixels.fillers();
    }
}

// Four rows of counters in turn. Cells run from -1 to rhos; one more on both sides is read as a neighbour, and the
// search reads whole vectors.
class CounterRows {
public:
    CounterRows(const HoughSpace &space, Scratch &scratch) : pitch_(space.rhos + 12) {
        counters_ = scratch.take<std::int32_t>(4 * pitch_, 32);
    }
    // Row i, at its cell -2 and at its cell 0.
    std::int32_t *begin(std::int64_t i) const { return counters_ + (i & 3) * pitch_; }
    std::int32_t *row(std::int64_t i) const { return begin(i) + 2; }
    void clear(std::int64_t i) const {
        std::memset(begin(i), 0, static_cast<std::size_t>(pitch_) * sizeof(std::int32_t));
    }

private:
    std::int64_t pitch_;
    std::int32_t *counters_;
};

// ------------------------------------------------------------------------------------------------------ the lines

struct Peak {
    std::int32_t votes, angle, cell;
};

// The order of the results. Peaks are found by angle, then by cell, so equal ones stay in the order of their discovery.
struct Stronger {
    bool operator()(const Peak &a, const Peak &b) const {
        return a.votes != b.votes ? a.votes > b.votes : a.angle != b.angle ? a.angle < b.angle : a.cell < b.cell;
    }
};

// The strongest peaks: a plain list until it is full, from then on a heap with the weakest peak on top.
class PeakList {
public:
    PeakList(std::int32_t capacity, Scratch &scratch) : peaks_(scratch.take<Peak>(capacity)), capacity_(capacity) {}

    void add(const Peak &peak) {
        if (count_ < capacity_) {
            peaks_[count_++] = peak;
            return;
        }
        if (!truncated_) {
            truncated_ = true;
            std::make_heap(peaks_, peaks_ + count_, Stronger{});
        }
        if (peak.votes > peaks_->votes) {
            std::pop_heap(peaks_, peaks_ + count_, Stronger{});
            peaks_[count_ - 1] = peak;
            std::push_heap(peaks_, peaks_ + count_, Stronger{});
        }
    }

    void sort() { std::sort(peaks_, peaks_ + count_, Stronger{}); }
    const Peak &operator[](std::int32_t i) const { return peaks_[i]; }
    std::int32_t count() const { return count_; }
    bool truncated() const { return truncated_; }

private:
    Peak *peaks_;
    std::int32_t capacity_, count_ = 0;
    bool truncated_ = false;
};

// Calls found(votes, cell) for the peaks of a row, from the first cell on.
template <class Found>
void searchRow(const std::int32_t *before, const std::int32_t *row, const std::int32_t *after, std::int64_t rhos,
               std::int32_t threshold, const Found &found) {
    const auto at = [](const std::int32_t *p) { return load<I32x8>(p); };
    for (std::int64_t cell = -1; cell <= rhos; cell += 8) {
        const I32x8 votes = at(row + cell);
        const Mask32x8 enough = greater(votes, splat(threshold));
        if (laneBits(enough) == 0) {
            continue;
        }
        const Mask32x8 inAngle = both(greater(votes, at(before + cell)), greater(votes, at(after + cell)));
        const Mask32x8 inRho = without(greater(votes, at(row + cell - 1)), greater(at(row + cell + 1), votes));
        for (std::uint32_t bits = laneBits(both(enough, both(inAngle, inRho))); bits != 0; bits &= bits - 1) {
            const std::int64_t peak = cell + std::countr_zero(bits);
            found(row[peak], static_cast<std::int32_t>(peak));
        }
    }
}

// What a line must be to count, in the numbers that are returned.
struct Everywhere {
    bool angle(float) const { return true; }
    bool rho(float) const { return true; }
};
struct Region {
    HoughLine low, high;
    bool angle(float theta) const { return theta >= low.theta && theta <= high.theta; }
    bool rho(float rho) const { return rho >= low.rho && rho <= high.rho; }
};

// Angles that count: products with the step never decrease, so they are neighbours.
struct AngleRange {
    std::int64_t first, end;

    template <class Wanted> AngleRange(const HoughSpace &space, float step, const Wanted &wanted) : first(0) {
        const auto counts = [&](std::int64_t k) { return wanted.angle(step * static_cast<float>(k)); };
        while (first < space.angles && !counts(first)) {
            ++first;
        }
        for (end = first; end < space.angles && counts(end);) {
            ++end;
        }
    }
    bool contains(std::int64_t k) const { return k >= first && k < end; }
};

template <class Cell, class Wanted>
void findPeaks(const MarkedPixels &pixels, const HoughSpace &space, const Cell &cell, HoughResolution resolution,
               std::int32_t threshold, const Wanted &wanted, PeakList &list, Scratch &scratch) {
    const AngleRange range(space, resolution.theta, wanted);
    if (range.first == range.end || pixels.blocks() == 0) {
        return;
    }
    // The neighbours of the angles that count are voted as well.
    const std::int64_t first = std::max<std::int64_t>(range.first - 1, 0), end = std::min(range.end + 1, space.angles);
    const AngleTables tables{scratch.take<float>(end - first), scratch.take<float>(end - first)};
    const auto scale = static_cast<double>(1024 / resolution.rho);
    forEachAngle(end, resolution.theta, [&](std::int64_t k, double angle) {
        if (k >= first) {
            tables.cosines[k - first] = static_cast<float>(std::trunc(std::cos(angle) * scale));
            tables.sines[k - first] = static_cast<float>(std::trunc(std::sin(angle) * scale));
        }
    });
    const CounterRows rows(space, scratch);
    const auto search = [&](std::int64_t i) {
        const std::int64_t k = first + i;
        if (!range.contains(k)) {
            return;
        }
        searchRow(rows.row(i - 1), rows.row(i), rows.row(i + 1), space.rhos, threshold,
                  [&](std::int32_t votes, std::int32_t place) {
                      if (wanted.rho(resolution.rho * static_cast<float>(place - space.half))) {
                          list.add({votes, static_cast<std::int32_t>(k), place});
                      }
                  });
    };
    const std::int64_t count = end - first;
    rows.clear(-1);
    for (std::int64_t i = 0; i < count; i += 2) {
        rows.clear(i);
        rows.clear(i + 1);
        std::int32_t *const begins[2] = {rows.begin(i), rows.begin(i + 1)};
        (i + 1 < count ? vote<2, Cell> : vote<1, Cell>)(pixels, tables.cosines + i, tables.sines + i, cell, begins);
        if (i > 0) {
            search(i - 1);
        }
        search(i);
    }
    if (count % 2 == 0) {
        rows.clear(count);
        search(count - 1);
    }
}

// --------------------------------------------------------------------------------------------- checks and members

template <class Wanted>
StatusCode detect(Plane<const std::uint8_t> src, RoiSize roi, std::int32_t threshold, HoughLine *lines,
                  std::int32_t capacity, std::int32_t *lineCount, std::uint8_t *buffer, HoughResolution resolution,
                  const Wanted &wanted) {
    const HoughSpace space(roi, resolution);
    Scratch scratch(buffer, scratchBytes(roi, resolution, capacity));
    PeakList list(capacity, scratch);
    const MarkedPixels pixels(src, roi, scratch);
    if (isNarrow(roi, space)) {
        findPeaks(pixels, space, NarrowCell(space), resolution, threshold, wanted, list, scratch);
    } else {
        findPeaks(pixels, space, WideCell(space), resolution, threshold, wanted, list, scratch);
    }
    list.sort();
    for (std::int32_t i = 0; i < list.count(); ++i) {
        const Peak &peak = list[i];
        storeScalar(lines + i, HoughLine{resolution.rho * static_cast<float>(peak.cell - space.half),
                                         resolution.theta * static_cast<float>(peak.angle)});
    }
    storeScalar(lineCount, list.count());
    return list.truncated() ? StatusResultTruncated : StatusOk;
}

Checks lineChecks(std::int32_t srcStep, RoiSize roi, std::int32_t threshold, std::int32_t capacity,
                  HoughResolution resolution, Checks checks) {
    const auto longestRho = static_cast<float>(std::int64_t{roi.width} + roi.height);
    checks.require(srcStep >= 1, StatusBadStep).size(roi).require(capacity >= 1, StatusBadSize);
    checks.require(goodResolution(resolution) && resolution.rho <= longestRho && resolution.theta <= 3.14159f &&
                       threshold >= 1,
                   StatusBadArgument);
    if (!checks.failed()) {
        checks.require(scratchBytes(roi, resolution, capacity) <= INT32_MAX, StatusBadSize);
    }
    return checks;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiHoughLine_8u32f_C1R(const uint8_t *src, int32_t srcStep, RoiSize roi, int32_t threshold,
                                   HoughLine *lines, int32_t maxLineCount, int32_t *lineCount, uint8_t *buffer,
                                   HoughResolution resolution) {
    const Checks checks =
        lineChecks(srcStep, roi, threshold, maxLineCount, resolution, Checks().pointers(src, lines, lineCount, buffer));
    if (checks.failed()) {
        return checks.status();
    }
    return detect({src, srcStep}, roi, threshold, lines, maxLineCount, lineCount, buffer, resolution, Everywhere{});
}

StatusCode rvxiHoughLine_Region_8u32f_C1R(const uint8_t *src, int32_t srcStep, RoiSize roi, int32_t threshold,
                                          HoughLine *lines, int32_t maxLineCount, int32_t *lineCount, uint8_t *buffer,
                                          HoughResolution resolution, const HoughLine region[2]) {
    Checks checks = lineChecks(srcStep, roi, threshold, maxLineCount, resolution,
                               Checks().pointers(src, lines, lineCount, buffer, region));
    if (checks.failed()) {
        return checks.status();
    }
    const Region wanted{loadScalar(region), loadScalar(region + 1)};
    checks.require(wanted.low.rho <= wanted.high.rho && wanted.low.theta <= wanted.high.theta, StatusBadArgument);
    if (checks.failed()) {
        return checks.status();
    }
    const StatusCode status =
        detect({src, srcStep}, roi, threshold, lines, maxLineCount, lineCount, buffer, resolution, wanted);
    return loadScalar(lineCount) == 0 ? StatusEmptyResult : status;
}

StatusCode rvxiHoughLineGetSize_8u_C1R(RoiSize roi, HoughResolution resolution, int32_t maxLineCount, int32_t *size) {
    Checks checks;
    checks.pointers(size).size(roi).require(maxLineCount >= 1, StatusBadSize);
    checks.require(goodResolution(resolution), StatusBadArgument);
    return checks.failed() ? checks.status() : storeSize(scratchBytes(roi, resolution, maxLineCount), size);
}
