// FAST corners, 32 pixels at a time. The contrast of a run of points q around a pixel p, whose pixels are bytes, is
//
//     max(min over the run of I(q) - I(p), I(p) - max over the run of I(q))
//
// so the score is max(bright - I(p), I(p) - dark), saturated at 0, where `bright` is the largest minimum of all runs
// and `dark` the smallest maximum: everything stays in unsigned bytes. Runs are longer than half of the circle, so
// four points of it tell that most pixels are no corners; the runs are looked at where a block of pixels has one left.
//
// A corner map goes straight to the destination; with suppression three rows of scores roll in the scratch buffer.
#include "frame/api.h"
#include "kernel/checks.h"
#include "kernel/plane.h"
#include "kernel/rows.h"
#include "kernel/scratch.h"

#include <algorithm>
#include <bit>

namespace rvxcv {
namespace {

constexpr std::int32_t fastTag = 0x4b617390;
constexpr int largestRadius = 3;
constexpr int pointsOf(int radius) { return 4 + 4 * radius; }

// dx, dy of each point, clockwise from the top.
constexpr std::int8_t circles[largestRadius][32] = {
    {0, -1, 1, -1, 1, 0, 1, 1, 0, 1, -1, 1, -1, 0, -1, -1},
    {0, -2, 1, -2, 2, -1, 2, 0, 2, 1, 1, 2, 0, 2, -1, 2, -2, 1, -2, 0, -2, -1, -1, -2},
    {0, -3, 1, -3, 2, -2, 3, -1, 3, 0, 3, 1, 2, 2, 1, 3, 0, 3, -1, 3, -2, 2, -3, 1, -3, 0, -3, -1, -2, -2, -1, -3}};

// ------------------------------------------------------------------------------------------------ scores of a row

// The points' minima and maxima change places between runs that are brighter than the pixel and runs that are darker.
struct Brighter {
    static RVX_INLINE U8x32 inRun(U8x32 a, U8x32 b) { return min(a, b); }
    static RVX_INLINE U8x32 ofRuns(U8x32 a, U8x32 b) { return max(a, b); }
};
struct Darker {
    static RVX_INLINE U8x32 inRun(U8x32 a, U8x32 b) { return max(a, b); }
    static RVX_INLINE U8x32 ofRuns(U8x32 a, U8x32 b) { return min(a, b); }
};

// The circles around 32 neighbouring pixels. rows[0] is the row `radius` above them.
template <int radius, int arc> class CircleBlock {
public:
    static constexpr int points = pointsOf(radius), half = points / 2;

    RVX_INLINE CircleBlock(const std::uint8_t *const *rows, std::ptrdiff_t x)
        : rows_(rows), x_(x), pixel_(load<U8x32>(rows[radius] + x)) {}

    // No score is above this, since of four points at quarters of the circle a run holds two neighbours, or three when
    // it is three quarters long or longer.
    template <int first> RVX_INLINE U8x32 bound() const {
        const U8x32 q[4] = {point<first>(), point<first + half / 2>(), point<first + half>(),
                            point<first + half + half / 2>()};
        return contrast(boundOf<Brighter>(q), boundOf<Darker>(q));
    }
    RVX_INLINE U8x32 score() const {
        return [&]<int... i>(std::integer_sequence<int, i...>) {
            const U8x32 q[points] = {point<i>()...};
            return contrast(best<Brighter>(q), best<Darker>(q));
        }
        (std::make_integer_sequence<int, points>{});
    }

private:
    template <int i> RVX_INLINE U8x32 point() const {
        constexpr std::int8_t dx = circles[radius - 1][2 * i], dy = circles[radius - 1][2 * i + 1];
        return load<U8x32>(rows_[radius + dy] + x_ + dx);
    }
    RVX_INLINE U8x32 contrast(U8x32 bright, U8x32 dark) const {
        return max(subSaturated(bright, pixel_), subSaturated(pixel_, dark));
    }
    template <class Kind> static RVX_INLINE U8x32 boundOf(const U8x32 (&q)[4]) {
        const U8x32 two = Kind::inRun(Kind::ofRuns(q[0], q[2]), Kind::ofRuns(q[1], q[3]));
        if constexpr (arc < 3 * (points / 4)) {
            return two;
        } else {
            return Kind::inRun(two, Kind::ofRuns(Kind::inRun(q[0], q[2]), Kind::inRun(q[1], q[3])));
        }
    }
    template <class Kind, class... V> static RVX_INLINE U8x32 joined(U8x32 first, V... more) {
        ((first = Kind::inRun(first, more)), ...);
        return first;
    }

    // Two runs that begin side by side share all points but one each, so runs are taken in pairs: of the points
    // between, which begin at an odd place 2 k + 1, windows of 2, 4, 8 .. of them are joined.
    template <class Kind> static RVX_INLINE U8x32 best(const U8x32 (&q)[points]) {
        if constexpr (arc == points) {
            return [&]<int... i>(std::integer_sequence<int, i...>) { return joined<Kind>(q[i]...); }
            (std::make_integer_sequence<int, points>{});
        } else {
            U8x32 window[half];
#pragma GCC unroll 8
            for (int k = 0; k < half; ++k) {
                window[k] = Kind::inRun(q[2 * k + 1], q[(2 * k + 2) % points]);
            }
            extend<Kind, 2>(q, window);
            U8x32 result{};
#pragma GCC unroll 8
            for (int k = 0; k < half; ++k) {
                const U8x32 runs = Kind::inRun(window[k], Kind::ofRuns(q[2 * k], q[(2 * k + arc) % points]));
                result = k == 0 ? runs : Kind::ofRuns(result, runs);
            }
            return result;
        }
    }
    // Windows of `length` become windows of arc - 1.
    template <class Kind, int length> static RVX_INLINE void extend(const U8x32 (&q)[points], U8x32 (&window)[half]) {
        constexpr int rest = arc - 1 - length, step = std::min(length, rest) / 2;
        if constexpr (step > 0) {
            U8x32 longer[half];
#pragma GCC unroll 8
            for (int k = 0; k < half; ++k) {
                longer[k] = Kind::inRun(window[k], window[(k + step) % half]);
            }
#pragma GCC unroll 8
            for (int k = 0; k < half; ++k) {
                window[k] = longer[k];
            }
            extend<Kind, length + 2 * step>(q, window);
        } else if constexpr (rest == 1) {
#pragma GCC unroll 8
            for (int k = 0; k < half; ++k) {
                window[k] = Kind::inRun(window[k], q[(2 * k + arc - 1) % points]);
            }
        }
    }

    const std::uint8_t *const *rows_;
    std::ptrdiff_t x_;
    U8x32 pixel_;
};

// How corners are marked.
struct Marking {
    U8x32 threshold, fill; // fill: joined to the score

    explicit Marking(const FastNSpec &spec)
        : threshold(splat(static_cast<std::uint8_t>(std::min(spec.threshold, 255)))),
          fill(splat(static_cast<std::uint8_t>((spec.flags & FastScore) != 0 ? 0 : 255))) {}
};

RVX_INLINE U8x32 zeroLanes(U8x32 a) { return equal(a, splat(std::uint8_t{0})); }

// The marks of `columns` pixels, at least a vector of them, all of which have a circle; tells how many are corners.
template <int radius, int arc>
std::int64_t markRow(const std::uint8_t *const *rows, std::int64_t columns, std::uint8_t *out, const Marking &marking) {
    // Four points leave so many blocks with short runs on the large circle that a branch is often guessed wrong.
    constexpr bool asksOnce = radius == 3 && arc < 12;
    const U8x32 threshold = marking.threshold, fill = marking.fill;
    std::int64_t count = 0;
    for (std::int64_t x = 0; x < columns; x += 32) {
        const std::int64_t at = std::min(x, columns - 32); // the last block is moved back
        const CircleBlock<radius, arc> block(rows, at);
        U8x32 marks = splat(std::uint8_t{0});
        U8x32 bound = block.template bound<0>();
        if (asksOnce || anyBit(subSaturated(bound, threshold))) {
            bound = min(bound, block.template bound<(radius + 1) / 2>());
        }
        if (anyBit(subSaturated(bound, threshold))) {
            const U8x32 score = block.score(), none = zeroLanes(subSaturated(score, threshold));
            marks = bitAndNot(bitOr(score, fill), none);
            count += std::popcount(~laneBits(none) >> (x - at));
        }
        store(out + at, marks);
    }
    return count;
}

using MarkRow = std::int64_t (*)(const std::uint8_t *const *, std::int64_t, std::uint8_t *, const Marking &);

template <int radius, int... more> constexpr MarkRow pickArc(int arc, std::integer_sequence<int, more...>) {
    constexpr int least = pointsOf(radius) / 2 + 1;
    constexpr MarkRow byArc[] = {markRow<radius, least + more>...};
    return byArc[arc - least];
}
template <int radius> MarkRow pickArc(int arc) {
    return pickArc<radius>(arc, std::make_integer_sequence<int, pointsOf(radius) / 2>{});
}
MarkRow pickMarkRow(const FastNSpec &spec) {
    return spec.radius == 1 ? pickArc<1>(spec.arc) : spec.radius == 2 ? pickArc<2>(spec.arc) : pickArc<3>(spec.arc);
}

// ------------------------------------------------------------------------------------------------------- the image

// Marks rows of an image one after another. Rows in which less than a vector of pixels have a circle are copied to
// where whole vectors may be read.
class RowMarker {
public:
    RowMarker(Plane<const std::uint8_t> src, RoiSize roi, const FastNSpec &spec)
        : src_(src), width_(roi.width), columns_(roi.width - 2 * spec.radius), radius_(spec.radius),
          markRow_(pickMarkRow(spec)), marking_(spec) {
        for (int y = 0; narrow() && y < 2 * radius_; ++y) {
            copyRow(y);
        }
    }

    // Row y, which has circles; out is at its first column. From one call to the next y grows by one.
    std::int64_t mark(std::int64_t y, std::uint8_t *out) {
        const std::uint8_t *rows[2 * largestRadius + 1];
        if (narrow()) {
            copyRow(y + radius_);
        }
        for (int i = 0; i <= 2 * radius_; ++i) {
            const std::int64_t row = y - radius_ + i;
            rows[i] = (narrow() ? copies_[row % copyCount] : src_.row(row)) + radius_;
        }
        out += radius_;
        if (!narrow()) {
            return markRow_(rows, columns_, out, marking_);
        }
        std::uint8_t marks[32];
        markRow_(rows, 32, marks, marking_);
        const Part span{static_cast<int>(columns_)};
        const U8x32 inside = load<U8x32>(marks, span);
        store(out, inside, span);
        return std::popcount(~laneBits(zeroLanes(inside)));
    }

private:
    static constexpr int copyCount = 2 * largestRadius + 1;

    bool narrow() const { return columns_ < 32; }
    void copyRow(std::int64_t y) { std::memcpy(copies_[y % copyCount], src_.row(y), static_cast<std::size_t>(width_)); }

    Plane<const std::uint8_t> src_;
    std::int64_t width_, columns_;
    int radius_;
    MarkRow markRow_;
    Marking marking_;
    std::uint8_t copies_[copyCount][64] = {};
};

void clearRow(std::uint8_t *row, std::int64_t bytes) { std::memset(row, 0, static_cast<std::size_t>(bytes)); }

// The corners of a row that are stronger than their neighbours before them and not weaker than those behind. All rows
// begin at the pixel left of the region and are followed by zeros.
struct StrongestOfRow {
    const std::uint8_t *above, *here, *below;
    std::uint8_t *dst;
    std::int64_t *count;

    template <class Span> RVX_INLINE void operator()(std::ptrdiff_t x, Span span) const {
        const auto at = [x](const std::uint8_t *row, int place) { return load<U8x32>(row + x + place); };
        U8x32 corners = at(here, 1);
        if (anyBit(corners)) {
            const U8x32 before = max(max(at(above, 0), at(above, 1)), max(at(above, 2), at(here, 0)));
            const U8x32 behind = max(max(at(below, 0), at(below, 1)), max(at(below, 2), at(here, 2)));
            const U8x32 falls = bitOr(zeroLanes(subSaturated(corners, before)), subSaturated(behind, corners));
            corners = bitAnd(corners, zeroLanes(falls));
            *count += std::popcount(~laneBits(zeroLanes(corners)));
        }
        store(dst + x, corners, span);
    }
};

constexpr std::int64_t scoreRowBytes(std::int64_t width) { return roundUp(width + 2, 32); }
constexpr std::int64_t scratchBytes(std::int64_t width) { return 7 * scoreRowBytes(width) + 64; }

// The marks of all rows that have circles, without suppression.
std::int64_t markRows(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, RoiSize roi, const FastNSpec &spec) {
    RowMarker marker(src, roi, spec);
    std::int64_t count = 0;
    for (std::int64_t y = spec.radius; y < roi.height - spec.radius; ++y) {
        std::uint8_t *out = dst.row(y);
        for (int i = 0; i < spec.radius; ++i) {
            out[i] = out[roi.width - 1 - i] = 0;
        }
        count += marker.mark(y, out);
    }
    return count;
}

std::int64_t markStrongest(Plane<const std::uint8_t> src, Plane<std::uint8_t> dst, RoiSize roi, const FastNSpec &spec,
                           Scratch scratch) {
    const std::int64_t pitch = scoreRowBytes(roi.width) + 32; // whole vectors may be read from every place
    std::uint8_t *const scores = scratch.take<std::uint8_t>(3 * pitch, 32);
    clearRow(scores, 3 * pitch);
    const auto rowOf = [=](std::int64_t y) { return scores + y % 3 * pitch; };
    RowMarker marker(src, roi, spec);
    std::int64_t count = 0, marked = 0;
    for (std::int64_t y = spec.radius; y <= roi.height - spec.radius; ++y) {
        const std::int64_t markedAbove = marked;
        if (y < roi.height - spec.radius) {
            marked = marker.mark(y, rowOf(y) + 1);
        } else {
            clearRow(rowOf(y), pitch);
        }
        if (y == spec.radius) {
            continue;
        }
        if (markedAbove == 0) {
            clearRow(dst.row(y - 1), roi.width);
        } else {
            walkRow<32>(roi.width, StrongestOfRow{rowOf(y - 2), rowOf(y - 1), rowOf(y), dst.row(y - 1), &count});
        }
    }
    return count;
}

StatusCode findCorners(const std::uint8_t *src, std::int32_t srcStep, std::uint8_t *dst, std::int32_t dstStep,
                       RoiSize roi, std::int32_t *count, const FastNSpec *spec, std::uint8_t *buffer) {
    Checks checks;
    checks.pointers(src, dst, count, spec, buffer);
    checks.require(spec != nullptr && spec->tag == fastTag, StatusBadContext).size(roi);
    checks.steps(roi.width, srcStep, dstStep);
    if (checks.failed()) {
        return checks.status();
    }
    const Plane<const std::uint8_t> from{src, srcStep};
    const Plane<std::uint8_t> to{dst, dstStep};
    const bool fits = std::min(roi.width, roi.height) > 2 * spec->radius;
    const std::int64_t margin = fits ? spec->radius : roi.height;
    for (std::int64_t y = 0; y < roi.height; ++y) {
        if (y < margin || y >= roi.height - margin) {
            clearRow(to.row(y), roi.width);
        }
    }
    std::int64_t found = 0;
    if (fits && (spec->flags & FastNonMax) != 0) {
        found = markStrongest(from, to, roi, *spec, Scratch(buffer, scratchBytes(roi.width)));
    } else if (fits) {
        found = markRows(from, to, roi, *spec);
    }
    storeScalar(count, static_cast<std::int32_t>(found));
    return StatusOk;
}

// -------------------------------------------------------------------------------------------------- lists of corners

// The places of a row's pixels that are not zero, for part of a row at a time. How many there are among 64 pixels is
// hard to foresee, so two places are always written and further ones are rare.
class MarkedPlaces {
public:
    static constexpr std::int64_t mostPixels = 1024;

    RVX_INLINE void find(const std::uint8_t *row, std::int64_t pixels) {
        count_ = 0;
        std::int64_t x = 0;
        for (; x + 64 <= pixels; x += 64) {
            append(marked(row + x, Full{}) | marked(row + x + 32, Full{}) << 32, x);
        }
        for (; x < pixels; x += 32) {
            append(pixels - x >= 32 ? marked(row + x, Full{}) : marked(row + x, Part{static_cast<int>(pixels - x)}), x);
        }
    }
    std::int64_t count() const { return count_; }
    std::int32_t operator[](std::int64_t i) const { return places_[i]; }

private:
    template <class Span> static RVX_INLINE std::uint64_t marked(const std::uint8_t *p, Span span) {
        return ~laneBits(zeroLanes(load<U8x32>(p, span)));
    }
    RVX_INLINE void append(std::uint64_t bits, std::int64_t x) {
        appendLowest(bits, x);
        appendLowest(bits, x);
        while (bits != 0) {
            appendLowest(bits, x);
        }
    }
    RVX_INLINE void appendLowest(std::uint64_t &bits, std::int64_t x) {
        places_[count_] = static_cast<std::int32_t>(x + std::countr_zero(bits));
        count_ += bits != 0 ? 1 : 0;
        bits &= bits - 1;
    }

    std::int64_t count_ = 0;
    std::int32_t places_[mostPixels + 2];
};

StatusCode listCorners(const std::uint8_t *src, std::int32_t srcStep, RoiSize roi, FastCorner *corners,
                       std::int32_t capacity, std::int32_t *count) {
    Checks checks;
    checks.pointers(src, corners, count).size(roi).require(capacity >= 1, StatusBadSize).steps(roi.width, srcStep);
    if (checks.failed()) {
        return checks.status();
    }
    const Plane<const std::uint8_t> map{src, srcStep};
    MarkedPlaces places;
    std::int64_t stored = 0;
    bool complete = true;
    for (std::int32_t y = 0; y < roi.height && complete; ++y) {
        const std::uint8_t *row = map.row(y);
        for (std::int64_t x = 0; x < roi.width && complete; x += MarkedPlaces::mostPixels) {
            places.find(row + x, std::min(MarkedPlaces::mostPixels, roi.width - x));
            const std::int64_t fitting = std::min(places.count(), capacity - stored);
            for (std::int64_t i = 0; i < fitting; ++i) {
                const std::int64_t at = x + places[i];
                // One by one: a record put together elsewhere would be loaded before its parts are stored.
                auto *const fields = reinterpret_cast<std::int32_t *>(corners + stored + i);
                storeScalar(fields, static_cast<std::int32_t>(at));
                storeScalar(fields + 1, y);
                storeScalar(fields + 2, std::int32_t{row[at]});
            }
            stored += fitting;
            complete = fitting == places.count();
        }
    }
    storeScalar(count, static_cast<std::int32_t>(stored));
    return complete ? StatusOk : StatusResultTruncated;
}

// ------------------------------------------------------------------------------------------------------------ set-up

void checkCircle(Checks &checks, std::int32_t radius, std::int32_t arc) {
    const bool known = radius >= 1 && radius <= largestRadius;
    checks.require(known, StatusOutOfRange);
    checks.require(known && arc > pointsOf(radius) / 2 && arc <= pointsOf(radius), StatusOutOfRange);
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiFastNGetSize_8u_C1R(int32_t radius, int32_t arc, int32_t *specSize) {
    Checks checks;
    checks.pointers(specSize);
    checkCircle(checks, radius, arc);
    return checks.failed() ? checks.status() : storeSize(sizeof(FastNSpec), specSize);
}
StatusCode rvxiFastNInit_8u_C1R(int32_t radius, int32_t arc, int32_t threshold, int32_t flags, FastNSpec *spec) {
    Checks checks;
    checks.pointers(spec).require(flags >= 0 && flags <= 3 && flags != FastNonMax, StatusBadArgument);
    checkCircle(checks, radius, arc);
    checks.require(threshold >= 0, StatusBadThreshold);
    if (checks.failed()) {
        return checks.status();
    }
    *spec = {fastTag, radius, pointsOf(radius), arc, threshold, flags, {}, {}};
    std::copy_n(circles[radius - 1], sizeof spec->circle, spec->circle);
    return StatusOk;
}
StatusCode rvxiFastNGetBufferSize_8u_C1R(RoiSize roi, int32_t *bufferSize) {
    Checks checks;
    checks.pointers(bufferSize).size(roi);
    return checks.failed() ? checks.status() : storeSize(scratchBytes(roi.width), bufferSize);
}
StatusCode rvxiFastN_8u_C1R(const uint8_t *src, int32_t srcStep, uint8_t *dst, int32_t dstStep, RoiSize roi,
                            int32_t *count, const FastNSpec *spec, uint8_t *buffer) {
    return findCorners(src, srcStep, dst, dstStep, roi, count, spec, buffer);
}
StatusCode rvxiFastN2DToVec_8u_C1R(const uint8_t *src, int32_t srcStep, RoiSize roi, FastCorner *corners,
                                   int32_t capacity, int32_t *count) {
    return listCorners(src, srcStep, roi, corners, capacity, count);
}
