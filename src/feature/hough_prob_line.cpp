// Line segments: the progressive probabilistic Hough transform.
//
// Pixels are drawn in a random order, vote, and stop the search as soon as one of their cells is full; then the line is
// followed in the image. Voting one pixel after the other would touch a cache line of the cells for every vote. So a
// batch of pixels votes angle by angle, and when one of them fills a cell, the votes of those behind it are taken back:
// the result is that of one pixel at a time. Between batches a cell holds less votes than the threshold, so counters
// are as narrow as the threshold allows.
#include "frame/api.h"

#include "feature/hough_tables.h"
#include "kernel/checks.h"

#include <algorithm>
#include <cmath>
#include <limits>

// The record: this, then the cosines, then the sines.
struct HoughProbLineSpec {
    HoughResolution resolution;
    std::int32_t seed, angles;
};

namespace rvxcv {
namespace {

std::int64_t specBytes(std::int64_t angles) {
    return static_cast<std::int64_t>(sizeof(HoughProbLineSpec)) + 8 * angles;
}

std::int64_t maskPitch(RoiSize roi) { return roi.width / 8 + 1; }

std::int64_t scratchBytes(RoiSize roi, const HoughSpace &space) {
    return saturatedSum(saturatedProduct(maskPitch(roi), roi.height), saturatedProduct(4 * space.rhos, space.angles),
                        saturatedProduct(4 * std::int64_t{roi.width}, roi.height));
}

// ----------------------------------------------------------------------------------------- the pixels of the image

// One bit for every pixel that is still there.
class PixelMask {
public:
    PixelMask(std::uint8_t *bits, RoiSize roi) : bits_(bits), pitch_(maskPitch(roi)), roi_(roi) {}

    // 32 pixels of a row from a multiple of 32 on, in rising order.
    void set(std::uint32_t pixels, std::int64_t x, std::int64_t y) const {
        const std::int64_t bytes = std::min<std::int64_t>(4, pitch_ - x / 8);
        std::memcpy(bits_ + y * pitch_ + x / 8, &pixels, static_cast<std::size_t>(bytes));
    }
    bool inside(Point2i p) const { return p.x >= 0 && p.y >= 0 && p.x < roi_.width && p.y < roi_.height; }
    bool besideOrInside(Point2i p) const { return p.x >= -1 && p.y >= -1 && p.x <= roi_.width && p.y <= roi_.height; }
    bool contains(Point2i p) const { return (*byte(p) >> (p.x & 7) & 1) != 0; }
    void remove(Point2i p) const { *byte(p) &= static_cast<std::uint8_t>(~(1 << (p.x & 7))); }

private:
    std::uint8_t *byte(Point2i p) const { return bits_ + p.y * pitch_ + (p.x >> 3); }

    std::uint8_t *bits_;
    std::int64_t pitch_;
    RoiSize roi_;
};

// The pixels that were not drawn yet, a word each, in no order. The highest bit of word i has nothing to do with the
// word: it tells whether pixel i of the image has voted.
class PixelPool {
public:
    PixelPool(std::uint8_t *words, RoiSize roi, std::int32_t seed)
        : words_(reinterpret_cast<std::uint32_t *>(words)), width_(roi.width), code_(roi.width),
          random_(static_cast<std::uint32_t>(seed)) {}

    // In scan order.
    void append(std::int64_t x, std::int64_t y) {
        storeScalar(words_ + y * width_ + x, 0u); // not in use yet: no pixel comes later in the list than in the image
        storeScalar(words_ + left_++, code_.encode(x, y));
    }
    bool empty() const { return left_ == 0; }
    Point2i draw() {
        const auto place = static_cast<std::int64_t>(static_cast<std::uint64_t>(left_) * random32() >> 32);
        std::uint32_t *const drawn = words_ + place;
        const std::uint32_t word = loadScalar(drawn), last = loadScalar(words_ + --left_);
        storeScalar(drawn, (word & voted) | (last & ~voted));
        return {code_.x(word & ~voted), code_.y(word & ~voted)};
    }

    bool hasVoted(Point2i p) const { return (loadScalar(words_ + place(p)) & voted) != 0; }
    void setVoted(Point2i p) const { storeScalar(words_ + place(p), loadScalar(words_ + place(p)) | voted); }

private:
    static constexpr std::uint32_t voted = 0x80000000;
    std::int64_t place(Point2i p) const { return p.y * width_ + p.x; }

    // The generator of G. L. Steele, D. Lea and C. H. Flood, "Fast Splittable Pseudorandom Number Generators",
    // OOPSLA 2014.
    std::uint32_t random32() {
        std::uint64_t z = random_ += 0x9e3779b97f4a7c15;
        z = (z ^ z >> 30) * 0xbf58476d1ce4e5b9;
        z = (z ^ z >> 27) * 0x94d049bb133111eb;
        return static_cast<std::uint32_t>(z >> 32);
    }

    std::uint32_t *words_;
    std::int64_t width_;
    PixelCode code_;
    std::uint64_t random_;
    std::int64_t left_ = 0;
};

// ------------------------------------------------------------------------------------------------------ the votes

// Pixels that vote together; whole vectors of coordinates can be loaded from any of them on.
class Batch {
public:
    // Narrow counters have room for as many votes above the threshold.
    static constexpr int most = 128;

    int count() const { return count_; }
    bool full() const { return count_ == most; }
    Point2i operator[](int i) const { return points_[i]; }
    RVX_INLINE F32x8 x(int i) const { return load<F32x8>(x_ + i); }
    RVX_INLINE F32x8 y(int i) const { return load<F32x8>(y_ + i); }

    void append(Point2i p) {
        points_[count_] = p;
        x_[count_] = static_cast<float>(p.x);
        y_[count_++] = static_cast<float>(p.y);
    }
    void clear() { count_ = 0; }

    // Drops the first pixels, and those that are not there any more.
    void drop(int first, const PixelMask &mask) {
        const int end = std::exchange(count_, 0);
        for (int i = first; i < end; ++i) {
            if (mask.contains(points_[i])) {
                append(points_[i]);
            }
        }
    }

private:
    Point2i points_[most];
    float x_[most + 8] = {}, y_[most + 8] = {};
    int count_ = 0;
};

// The space of lines, a row of counters for each angle, at any address. They begin below the half of their range by the
// threshold, so that the highest bit tells a cell that is full.
template <class Counter> class Votes {
public:
    static constexpr Counter full = Counter{1} << (std::numeric_limits<Counter>::digits - 1);

    Votes(std::uint8_t *counters, const HoughSpace &space, const HoughProbLineSpec *spec, std::int32_t threshold)
        : counters_(reinterpret_cast<Counter *>(counters)), rhos_(space.rhos), angles_(loadScalar(spec).angles),
          cosines_(reinterpret_cast<const float *>(spec + 1)),
          sines_(cosines_ + angles_), cells_{splat(1 / loadScalar(spec).resolution.rho),
                                             splat(static_cast<std::int32_t>(space.half)),
                                             splat(static_cast<std::int32_t>(space.rhos - 1))} {
        Counter *const cells = counters_;
        const auto begin = static_cast<Counter>(full - static_cast<Counter>(threshold));
        for (std::int64_t i = 0, count = rhos_ * angles_; i < count; ++i) {
            storeScalar(cells + i, begin);
        }
    }

    // The loops are functions of their own: inside the search, registers run out.
    [[gnu::noinline]] void cast(const Batch &batch) {
        const int count = batch.count();
        std::uint32_t cells[Batch::most + 8];
        for (int group = 0; group < groups; ++group) {
            suspect_[group] = false;
            for (std::int64_t k = firstAngle(group); k < firstAngle(group + 1); ++k) {
                findCells(batch, k, cells);
                Counter *const row = counters_ + k * rhos_;
                Counter any = 0;
                for (int i = 0; i < count; ++i) {
                    any |= change(row + cells[i], 1);
                }
                suspect_[group] |= any >= full;
            }
        }
    }
    [[gnu::noinline]] void takeBack(const Batch &batch) const {
        const int count = batch.count();
        std::uint32_t cells[Batch::most + 8];
        for (std::int64_t k = 0; k < angles_; ++k) {
            findCells(batch, k, cells);
            Counter *const row = counters_ + k * rhos_;
            for (int i = 0; i < count; ++i) {
                change(row + cells[i], -1);
            }
        }
    }

    // Of the pixels cast last, in their order, the first one that filled a cell, or their number; and the first angle
    // of those at which it did. No cell held more votes at that time.
    struct Filling {
        int pixel;
        std::int64_t angle;
    };
    [[gnu::noinline]] Filling firstFilling(const Batch &batch) {
        const int count = batch.count();
        Filling first{count, 0};
        std::uint32_t cells[Batch::most + 8];
        for (int group = 0; group < groups; ++group) {
            if (!suspect_[group]) {
                continue;
            }
            suspect_[group] = false; // and for good, as votes are only taken back now
            for (std::int64_t k = firstAngle(group); k < firstAngle(group + 1); ++k) {
                findCells(batch, k, cells);
                Counter *const row = counters_ + k * rhos_;
                Counter any = 0;
                for (int i = 0; i < count; ++i) {
                    any |= loadScalar(row + cells[i]);
                }
                if (any >= full) {
                    suspect_[group] = true;
                    const int pixel = firstToFill(row, cells, count);
                    first = pixel < first.pixel ? Filling{pixel, k} : first;
                }
            }
        }
        return first;
    }

    // Of the lines at an angle.
    Point2i direction(std::int64_t k) const {
        const auto fixed = [](float a) { return static_cast<std::int32_t>(std::lrint(a * 0x1p20f)); };
        return {fixed(-loadScalar(sines_ + k)), fixed(loadScalar(cosines_ + k))};
    }

private:
    // The nearest cell at an angle. What a coarse rho leads to next to the first or last one counts there.
    struct Cells {
        F32x8 perPixel;
        I32x8 half, last;

        RVX_INLINE I32x8 operator()(F32x8 x, F32x8 y, F32x8 cosine, F32x8 sine) const {
            const F32x8 rho = fma(x, mul(cosine, perPixel), mul(y, mul(sine, perPixel)));
            return min(max(add(roundToEven(rho), half), splat(0)), last);
        }
    };

    // The cells pass through memory: one by one out of a vector, they would cost twice as much.
    RVX_INLINE void findCells(const Batch &batch, std::int64_t k, std::uint32_t *cells) const {
        const F32x8 cosine = splat(loadScalar(cosines_ + k)), sine = splat(loadScalar(sines_ + k));
        for (int i = 0, count = batch.count(); i < count; i += 8) {
            store(reinterpret_cast<std::int32_t *>(cells + i), cells_(batch.x(i), batch.y(i), cosine, sine));
        }
    }
    static RVX_INLINE Counter change(Counter *cell, int by) {
        const auto votes = static_cast<Counter>(loadScalar(cell) + static_cast<Counter>(by));
        storeScalar(cell, votes);
        return votes;
    }
    // Takes votes back in reverse order to see which one filled a cell, and casts them again.
    static int firstToFill(Counter *row, const std::uint32_t *cells, int count) {
        int first = count;
        for (int i = count - 1; i >= 0; --i) {
            first = change(row + cells[i], -1) == full - 1 ? i : first;
        }
        for (int i = 0; i < count; ++i) {
            change(row + cells[i], 1);
        }
        return first;
    }

    // Groups of angles in which a cell may be full; of a single angle unless there are many.
    static constexpr int groups = 256;
    std::int64_t firstAngle(int group) const {
        return std::min((angles_ + groups - 1) / groups * std::int64_t{group}, angles_);
    }

    Counter *counters_;
    std::int64_t rhos_, angles_;
    const float *cosines_, *sines_;
    Cells cells_;
    bool suspect_[groups] = {};
};

// ------------------------------------------------------------------------------------------- following a line

std::int32_t longerSide(Point2i d) { return std::max(std::abs(d.x), std::abs(d.y)); }
Point2i operator-(Point2i a, Point2i b) { return {a.x - b.x, a.y - b.y}; }
Point2i operator-(Point2i a) { return {-a.x, -a.y}; }

// Goes from a pixel in unit steps along the longer side of a direction, the shorter one rounded to nearest, halves up.
class Path {
public:
    Path(Point2i from, Point2i direction)
        : at_(from), steep_(std::abs(direction.y) > std::abs(direction.x)),
          forward_((steep_ ? direction.y : direction.x) < 0 ? -1 : 1),
          twiceSteps_(2 * std::int64_t{longerSide(direction)}),
          twiceAside_(2 * std::int64_t{steep_ ? direction.x : direction.y}), rest_(twiceSteps_ / 2) {}

    void step() {
        rest_ += twiceAside_;
        const std::int32_t aside = rest_ >= twiceSteps_ ? 1 : rest_ < 0 ? -1 : 0;
        rest_ -= aside * twiceSteps_;
        at_ = steep_ ? Point2i{at_.x + aside, at_.y + forward_} : Point2i{at_.x + forward_, at_.y + aside};
    }

    Point2i at() const { return at_; }
    // The pixel of this step, and those on both sides of it.
    static constexpr int width = 3;
    Point2i across(int i) const {
        const std::int32_t d = i == 2 ? -1 : i;
        return steep_ ? Point2i{at_.x + d, at_.y} : Point2i{at_.x, at_.y + d};
    }

private:
    Point2i at_;
    bool steep_;
    std::int32_t forward_;
    std::int64_t twiceSteps_, twiceAside_, rest_;
};

struct Segment {
    Point2i first, last;
    std::int32_t length() const { return longerSide(last - first); }
};

class Follower {
public:
    Follower(const PixelMask &mask, std::int32_t gap) : mask_(mask), gap_(gap) {}

    // The line through a pixel. As long as it grows it is followed again, in the direction of the ends found.
    Segment follow(Point2i pixel, Point2i direction) const {
        Segment segment{pixel, pixel};
        for (;;) {
            const Segment next{lastMark(pixel, direction), lastMark(pixel, -direction)};
            if (next.length() <= segment.length()) {
                return straight(segment);
            }
            segment = next;
            direction = segment.first - segment.last;
        }
    }

    // Calls visit(pixel) for all that is there on the path of a segment and beside it.
    template <class Visit> void forEachMark(const Segment &segment, const Visit &visit) const {
        Path path(segment.first, segment.last - segment.first);
        for (std::int32_t i = 0; i <= segment.length(); ++i, path.step()) {
            for (int k = 0; k < Path::width; ++k) {
                const Point2i p = path.across(k);
                if (isMark(p)) {
                    visit(p);
                }
            }
        }
    }

private:
    bool isMark(Point2i p) const { return mask_.inside(p) && mask_.contains(p); }
    bool findMark(const Path &path, Point2i &mark) const {
        for (int k = 0; k < Path::width; ++k) {
            if (isMark(path.across(k))) {
                mark = path.across(k);
                return true;
            }
        }
        return false;
    }

    Point2i lastMark(Point2i from, Point2i direction) const {
        Path path(from, direction);
        for (std::int32_t missing = 0; missing <= gap_ && mask_.besideOrInside(path.at()); ++missing) {
            path.step();
            while (findMark(path, from)) {
                missing = 0;
                path.step();
            }
        }
        return from;
    }

    // The ends may lie beside the path that was followed, so the path between them is another one: where it has a gap
    // that is too long, the longer part remains.
    Segment straight(Segment segment) const {
        for (;;) {
            const std::int32_t length = segment.length();
            Path path(segment.first, segment.last - segment.first);
            Point2i mark = segment.first;
            std::int32_t marked = 0; // the last step that was
            for (std::int32_t i = 1; i <= length; ++i) {
                path.step();
                Point2i next;
                if (!findMark(path, next)) {
                    continue;
                }
                if (i - marked - 1 > gap_) {
                    segment = marked >= length - i ? Segment{segment.first, mark} : Segment{next, segment.last};
                    break;
                }
                mark = next;
                marked = i;
            }
            if (marked == length) {
                return segment;
            }
        }
    }

    const PixelMask &mask_;
    std::int32_t gap_;
};

// ------------------------------------------------------------------------------------------------------ the search

struct Search {
    std::int32_t length, gap;
    Point2i *segments;
    std::int32_t capacity;
};

template <class Counter>
std::int32_t findSegments(const Search &search, const PixelMask &mask, PixelPool &pool, Votes<Counter> votes) {
    const Follower follower(mask, search.gap);
    Batch batch, removed;
    int size = Batch::most;
    std::int32_t found = 0;
    const auto takeBackRemoved = [&] {
        votes.takeBack(removed);
        removed.clear();
    };
    const auto remove = [&](Point2i p) {
        mask.remove(p);
        if (pool.hasVoted(p)) {
            removed.append(p);
            if (removed.full()) {
                takeBackRemoved();
            }
        }
    };
    for (;;) {
        batch.clear();
        while (batch.count() < size && !pool.empty()) {
            const Point2i p = pool.draw();
            if (mask.contains(p)) {
                pool.setVoted(p);
                batch.append(p);
            }
        }
        if (batch.count() == 0) {
            return found;
        }
        votes.cast(batch);
        int lines = 0;
        for (;; ++lines) {
            const auto [filling, angle] = votes.firstFilling(batch);
            if (filling == batch.count()) {
                break;
            }
            const Point2i pixel = batch[filling];
            const Segment segment = follower.follow(pixel, votes.direction(angle));
            follower.forEachMark(segment, remove);
            if (mask.contains(pixel)) {
                remove(pixel);
            }
            takeBackRemoved();
            batch.drop(filling + 1, mask);
            if (segment.length() >= search.length) {
                storeScalar(search.segments + 2 * std::int64_t{found}, segment.first);
                storeScalar(search.segments + 2 * std::int64_t{found} + 1, segment.last);
                if (++found == search.capacity) {
                    return found;
                }
            }
        }
        // A line makes the batch's cells be looked at again: where there are many lines, batches are small.
        size = lines > 8 ? std::max(size / 2, 1) : lines < 3 ? std::min(2 * size, Batch::most) : size;
    }
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiHoughProbLine_8u32f_C1R(const uint8_t *src, int32_t srcStep, RoiSize roi, int32_t threshold,
                                       int32_t lineLength, int32_t lineGap, Point2i *segments, int32_t maxSegmentCount,
                                       int32_t *segmentCount, uint8_t *buffer, const HoughProbLineSpec *spec) {
    Checks checks;
    checks.pointers(src, segments, segmentCount, buffer, spec).require(srcStep >= 1, StatusBadStep).size(roi);
    checks.require(maxSegmentCount >= 1, StatusBadSize);
    checks.require(threshold >= 1 && lineLength >= 1 && lineGap >= 0, StatusBadArgument);
    if (checks.failed()) {
        return checks.status();
    }
    const HoughProbLineSpec record = loadScalar(spec);
    const HoughSpace space(roi, record.resolution);
    checks.require(space.rhos >= 1, StatusBadArgument).require(scratchBytes(roi, space) <= INT32_MAX, StatusBadSize);
    if (checks.failed()) {
        return checks.status();
    }
    std::uint8_t *const counters = buffer, *const words = counters + 4 * space.rhos * space.angles;
    const PixelMask mask(words + 4 * std::int64_t{roi.width} * roi.height, roi);
    PixelPool pool(words, roi, record.seed);
    visitMarks({src, srcStep}, roi, [&](std::uint32_t bits, std::int64_t x, std::int64_t y) {
        mask.set(bits, x, y);
        for (; bits != 0; bits &= bits - 1) {
            pool.append(x + std::countr_zero(bits), y);
        }
    });
    const Search search{lineLength, lineGap, segments, maxSegmentCount};
    const auto run = [&](auto zero) {
        return findSegments(search, mask, pool, Votes<decltype(zero)>(counters, space, spec, threshold));
    };
    const std::int32_t found = threshold <= Votes<std::uint8_t>::full    ? run(std::uint8_t{0})
                               : threshold <= Votes<std::uint16_t>::full ? run(std::uint16_t{0})
                                                                         : run(std::uint32_t{0});
    storeScalar(segmentCount, found);
    return found == maxSegmentCount ? StatusResultTruncated : StatusOk;
}

StatusCode rvxiHoughProbLineInit_8u32f_C1R(RoiSize roi, int32_t seed, HoughProbLineSpec *spec,
                                           HoughResolution resolution) {
    Checks checks;
    checks.pointers(spec).size(roi).require(goodResolution(resolution), StatusBadArgument);
    if (checks.failed()) {
        return checks.status();
    }
    const HoughSpace space(roi, resolution);
    if (specBytes(space.angles) > INT32_MAX) {
        return StatusBadSize;
    }
    storeScalar(spec, HoughProbLineSpec{resolution, seed, static_cast<std::int32_t>(space.angles)});
    auto *const cosines = reinterpret_cast<float *>(spec + 1), *const sines = cosines + space.angles;
    forEachAngle(space.angles, resolution.theta, [&](std::int64_t k, double angle) {
        storeScalar(cosines + k, static_cast<float>(std::cos(angle)));
        storeScalar(sines + k, static_cast<float>(std::sin(angle)));
    });
    return StatusOk;
}

StatusCode rvxiHoughProbLineGetSize_8u_C1R(RoiSize roi, HoughResolution resolution, int32_t *specSize,
                                           int32_t *bufferSize) {
    Checks checks;
    checks.pointers(specSize, bufferSize).size(roi).require(goodResolution(resolution), StatusBadArgument);
    if (checks.failed()) {
        return checks.status();
    }
    const HoughSpace space(roi, resolution);
    const std::int64_t buffer = scratchBytes(roi, space);
    const StatusCode status = buffer > INT32_MAX ? StatusBadSize : storeSize(specBytes(space.angles), specSize);
    return status == StatusOk ? storeSize(buffer, bufferSize) : status;
}
