// Speckles in two passes over the rows. The first cuts the rows into runs of joined pixels, numbers these in scan order
// and joins those of neighbouring rows: a forest in which every run points at an earlier one of its component, whose
// root counts the pixels. Then each run is told whether its component is small, and the second pass finds the same runs
// again and paints them.
//
// Rows are words of 64 pixels. A pixel that is joined with the one above is a contact of their two runs, and it is a
// new one unless the pixels to the left make the same. Pixels that equal the new value make runs among themselves, so
// that empty areas cost little; painting them changes nothing.
//
// Scratch: four bytes a run, of which there are at most as many as pixels, and three bits a pixel of a row, in words of
// eight bytes: at most 4 P + 24 (W / 64 + 1) + 7 bytes.
#include "frame/api.h"

#include "kernel/checks.h"
#include "kernel/plane.h"
#include "kernel/scratch.h"
#include "segment/pixel_words.h"

#include <algorithm>
#include <bit>

namespace rvxcv {
namespace {

constexpr std::int64_t specklesBytes(RoiSize roi) {
    return saturatedSum(saturatedProduct(4, roi.width, roi.height), 16 * std::int64_t{roi.width} + 64);
}

// A root holds minus the pixels of its component, any other run the number of an earlier one of it.
class ComponentForest {
public:
    using Run = std::int32_t;

    explicit ComponentForest(Run *runs) : runs_(runs) {}

    Run count() const { return count_; }
    RVX_INLINE void append(std::int64_t pixels) { runs_[count_++] = static_cast<Run>(-pixels); }

    RVX_INLINE void join(Run a, Run b) {
        a = root(a);
        b = root(b);
        if (a == b) {
            return;
        }
        const Run first = std::min(a, b), second = std::max(a, b);
        runs_[first] += runs_[second];
        runs_[second] = first;
    }

    // Turns every run into 1 when its component has at most `most` pixels, else into 0. Earlier runs are done first.
    void markSmall(std::int32_t most) {
        for (Run run = 0; run < count_; ++run) {
            const Run parent = runs_[run];
            runs_[run] = parent < 0 ? static_cast<Run>(parent >= -most) : runs_[parent];
        }
    }
    bool isSmall(Run run) const { return runs_[run] != 0; }

private:
    // Every second run of the path is tied to its grandparent on the way.
    RVX_INLINE Run root(Run run) {
        for (;;) {
            const Run parent = runs_[run];
            if (parent < 0) {
                return run;
            }
            const Run grandparent = runs_[parent];
            if (grandparent < 0) {
                return parent;
            }
            run = runs_[run] = grandparent;
        }
    }

    Run *runs_;
    Run count_ = 0;
};

// Signed pixels are looked at as unsigned ones: only their differences need the sign.
template <class T> using Stored = std::conditional_t<std::is_same_v<T, std::int16_t>, std::uint16_t, T>;

// Lanes that differ by at most maxDiff, as bits.
template <class T> class Nearness {
public:
    using V = Vec<Stored<T>>;

    explicit Nearness(T maxDiff) : most_(splat(static_cast<Stored<T>>(maxDiff))) {}

    RVX_INLINE std::uint32_t operator()(V a, V b) const {
        if constexpr (std::is_same_v<T, float>) {
            return laneBits(lessEqual(absDiff(a, b), most_));
        } else {
            if constexpr (std::is_same_v<T, std::int16_t>) { // both moved up by 32768
                const V lift = splat(std::uint16_t{0x8000});
                a = bitXor(a, lift);
                b = bitXor(b, lift);
            }
            const V distance = absDiff(a, b);
            return laneBits(equal(min(distance, most_), distance));
        }
    }

private:
    V most_;
};

template <class T> class Speckles {
public:
    using Pixel = Stored<T>;
    using V = Vec<Pixel>;
    using Run = ComponentForest::Run;

    Speckles(Plane<Pixel> image, RoiSize roi, Pixel newVal, T maxDiff, std::uint8_t *buffer)
        : image_(image), roi_(roi), newVal_(newVal), newVals_(splat(newVal)), near_(maxDiff),
          words_((std::int64_t{roi.width} + wordPixels - 1) / wordPixels), scratch_(buffer, specklesBytes(roi)),
          starts_(scratch_.take<std::uint64_t>(words_)), startsAbove_(scratch_.take<std::uint64_t>(words_)),
          contacts_(scratch_.take<std::uint64_t>(words_)),
          forest_(scratch_.take<Run>(std::int64_t{roi.width} * roi.height)) {}

    void mark(std::int32_t maxSize) {
        Run firstAbove = 0;
        for (std::int64_t y = 0; y < roi_.height; ++y) {
            const Run first = forest_.count();
            findRuns(y, y > 0);
            appendRuns();
            if (y > 0) {
                joinRuns(firstAbove, first);
            }
            std::swap(starts_, startsAbove_);
            firstAbove = first;
        }
        forest_.markSmall(maxSize);
        Run run = 0;
        for (std::int64_t y = 0; y < roi_.height; ++y) {
            findRuns(y, false);
            run = paint(y, run);
        }
    }

private:
    int pixelsOf(std::int64_t word) const {
        return static_cast<int>(std::min<std::int64_t>(wordPixels, roi_.width - word * wordPixels));
    }

    RVX_INLINE std::uint32_t isNew(V pixels) const { return laneBits(equal(pixels, newVals_)); }

    // The pixels before those at p. Nothing lies before the first ones of a row.
    template <class Span> static RVX_INLINE V before(const Pixel *p, V pixels, bool firstOfRow, Span span) {
        return firstOfRow ? shiftedIn<32 - static_cast<int>(sizeof(T))>(pixels, pixels) : load<V>(p - 1, span);
    }

    // The words of the starts of runs and, if asked for, of contacts with the row above.
    void findRuns(std::int64_t y, bool above) {
        std::uint64_t newBefore = 0;
        for (std::int64_t k = 0; k < words_; ++k) {
            const Pixel *const p = image_.row(y) + k * wordPixels;
            const int n = pixelsOf(k);
            const std::uint64_t fresh =
                pixelWord<Pixel, 1>(n,
                                    [&](int e, int, auto span) { return std::uint64_t{isNew(load<V>(p + e, span))}; }) &
                lowBits(n);
            const std::uint64_t likeBefore = pixelWord<Pixel, 1>(n, [&](int e, int, auto span) {
                const V pixels = load<V>(p + e, span);
                return std::uint64_t{near_(pixels, before(p + e, pixels, k == 0 && e == 0, span))};
            });
            const std::uint64_t oneIsNew = fresh ^ (fresh << 1 | newBefore);
            std::uint64_t starts = (~likeBefore | oneIsNew) & lowBits(n);
            if (k == 0) {
                starts |= 1;
            }
            starts_[k] = starts;
            newBefore = fresh >> 63;
            if (above) {
                const Pixel *const q = image_.row(y - 1) + k * wordPixels;
                const std::uint64_t likeAbove = pixelWord<Pixel, 1>(n, [&](int e, int, auto span) {
                    return std::uint64_t{near_(load<V>(p + e, span), load<V>(q + e, span))};
                });
                const std::uint64_t newAbove = pixelWord<Pixel, 1>(
                    n, [&](int e, int, auto span) { return std::uint64_t{isNew(load<V>(q + e, span))}; });
                contacts_[k] = likeAbove & ~fresh & ~newAbove & lowBits(n);
            }
        }
    }

    void appendRuns() {
        std::int64_t start = 0;
        for (std::int64_t k = 0; k < words_; ++k) {
            for (std::uint64_t bits = k == 0 ? starts_[k] & ~1ull : starts_[k]; bits != 0; bits &= bits - 1) {
                const std::int64_t next = k * wordPixels + std::countr_zero(bits);
                forest_.append(next - start);
                start = next;
            }
        }
        forest_.append(roi_.width - start);
    }

    void joinRuns(Run firstAbove, Run firstHere) {
        Run runsAbove = firstAbove - 1, runsHere = firstHere - 1; // the runs that are open at the start of a word
        std::uint64_t contactBefore = 0;
        for (std::int64_t k = 0; k < words_; ++k) {
            const std::uint64_t above = startsAbove_[k], here = starts_[k], contacts = contacts_[k];
            std::uint64_t bits = contacts & (~(contacts << 1 | contactBefore) | above | here);
            for (; bits != 0; bits &= bits - 1) {
                const std::uint64_t upTo = bits ^ (bits - 1);
                forest_.join(runsAbove + std::popcount(above & upTo), runsHere + std::popcount(here & upTo));
            }
            contactBefore = contacts >> 63;
            runsAbove += std::popcount(above);
            runsHere += std::popcount(here);
        }
    }

    // Paints the small runs of a row, of which `run` is the first; returns the first one of the next row.
    Run paint(std::int64_t y, Run run) {
        bool small = false;
        for (std::int64_t k = 0; k < words_; ++k) {
            const int n = pixelsOf(k);
            // A change between painting and not is a change of all pixels behind it.
            std::uint64_t painted = small ? lowBits(n) : 0;
            for (std::uint64_t bits = starts_[k]; bits != 0; bits &= bits - 1) {
                const bool next = forest_.isSmall(run++);
                painted ^= next != small ? lowBits(n) & -(bits & -bits) : 0;
                small = next;
            }
            if (painted != 0) {
                paintWord<Pixel, 1>(image_.row(y) + k * wordPixels, n, painted, {newVal_}, {newVals_});
            }
        }
        return run;
    }

    Plane<Pixel> image_;
    RoiSize roi_;
    Pixel newVal_;
    V newVals_;
    Nearness<T> near_;
    std::int64_t words_;
    Scratch scratch_;
    std::uint64_t *starts_, *startsAbove_, *contacts_;
    ComponentForest forest_;
};

template <class T>
StatusCode markSpeckles(T *srcDst, std::int32_t step, RoiSize roi, T newVal, std::int32_t maxSize, T maxDiff,
                        NormKind norm, std::uint8_t *buffer) {
    Checks checks;
    checks.pointers(srcDst, buffer).size(roi).steps(rowBytes<T>(roi.width), step).multiples(sizeof(T), step);
    checks.require(norm == NormL1, StatusBadNormKind);
    checks.require(maxSize >= 0, StatusOutOfRange);
    checks.require(maxDiff >= T{0}, StatusOutOfRange);
    if (!checks.failed()) {
        const Plane image{reinterpret_cast<Stored<T> *>(srcDst), step};
        Speckles<T>(image, roi, static_cast<Stored<T>>(newVal), maxDiff, buffer).mark(maxSize);
    }
    return checks.status();
}

StatusCode specklesSize(RoiSize roi, std::int32_t *size) {
    Checks checks;
    checks.pointers(size).size(roi);
    return checks.failed() ? checks.status() : storeSize(specklesBytes(roi), size);
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiMarkSpeckles_8u_C1IR(uint8_t *srcDst, int32_t srcDstStep, RoiSize roi, uint8_t newVal, int32_t maxSize,
                                    uint8_t maxDiff, NormKind norm, uint8_t *buffer) {
    return markSpeckles(srcDst, srcDstStep, roi, newVal, maxSize, maxDiff, norm, buffer);
}
StatusCode rvxiMarkSpeckles_16u_C1IR(uint16_t *srcDst, int32_t srcDstStep, RoiSize roi, uint16_t newVal,
                                     int32_t maxSize, uint16_t maxDiff, NormKind norm, uint8_t *buffer) {
    return markSpeckles(srcDst, srcDstStep, roi, newVal, maxSize, maxDiff, norm, buffer);
}
StatusCode rvxiMarkSpeckles_16s_C1IR(int16_t *srcDst, int32_t srcDstStep, RoiSize roi, int16_t newVal, int32_t maxSize,
                                     int16_t maxDiff, NormKind norm, uint8_t *buffer) {
    return markSpeckles(srcDst, srcDstStep, roi, newVal, maxSize, maxDiff, norm, buffer);
}
StatusCode rvxiMarkSpeckles_32f_C1IR(float *srcDst, int32_t srcDstStep, RoiSize roi, float newVal, int32_t maxSize,
                                     float maxDiff, NormKind norm, uint8_t *buffer) {
    return markSpeckles(srcDst, srcDstStep, roi, newVal, maxSize, maxDiff, norm, buffer);
}

StatusCode rvxiMarkSpecklesGetBufferSize_8u_C1R(RoiSize roi, int32_t *size) { return specklesSize(roi, size); }
StatusCode rvxiMarkSpecklesGetBufferSize_16u_C1R(RoiSize roi, int32_t *size) { return specklesSize(roi, size); }
StatusCode rvxiMarkSpecklesGetBufferSize_16s_C1R(RoiSize roi, int32_t *size) { return specklesSize(roi, size); }
StatusCode rvxiMarkSpecklesGetBufferSize_32f_C1R(RoiSize roi, int32_t *size) { return specklesSize(roi, size); }
