// A stage of Haar features at every selected pixel of an image. Features are evaluated for groups of four blocks of
// eight neighbouring pixels, so that a feature's record is read once for all of them. Where most pixels are selected a
// group is a stretch of 32; elsewhere blocks begin wherever a selected pixel lies, and a group takes the next four,
// whatever their rows. Stretches without any cost a look at their mask bytes.
#include "detect/haar_record.h"
#include "frame/api.h"
#include "kernel/checks.h"
#include "kernel/plane.h"
#include "kernel/vec.h"
#include "kernel/vec/wide.h"

#include "rvxcore.h"

#include <algorithm>
#include <bit>

namespace rvxcv {
namespace {

constexpr int blockPixels = 8;
constexpr int groupBlocks = 4;
constexpr int stretch = groupBlocks * blockPixels;

// ------------------------------------------------------------------------------------------------- the members' rules

RVX_INLINE F32x8 asFloats(F32x8 a) { return a; }
RVX_INLINE F32x8 asFloats(I32x8 a) { return toF32(a); }

// Float records: T is the integral image's type.
template <class T> struct InFloat {
    using Element = T;
    using Norm = float;
    using Total = F32x8;

    F32x8 stageThreshold;

    explicit InFloat(float threshold) : stageThreshold(splat(threshold)) {}

    RVX_INLINE static Total none() { return splat(0.0f); }
    RVX_INLINE static Total weighted(Vec<T> sum, HaarNumber weight) { return mul(asFloats(sum), splat(weight.f32)); }
    RVX_INLINE Mask32x8 below(Total stage) const { return greater(stageThreshold, stage); }
    RVX_INLINE Mask32x8 above(Total stage) const { return greater(stage, stageThreshold); }

    // What a feature adds; the second value with its bits changed into the first one's costs less than a choice.
    struct Value {
        F32x8 threshold, otherwise, change;

        RVX_INLINE Value(const InFloat &, const HaarFeature &feature)
            : threshold(splat(feature.threshold.f32)), otherwise(splat(feature.value2.f32)),
              change(bitXor(splat(feature.value1.f32), otherwise)) {}
        RVX_INLINE Total operator()(Total sum, F32x8 norm) const {
            return bitXor(otherwise, keep(greater(mul(threshold, norm), sum), change));
        }
    };
};

// Integer records: exact sums of products, the deviation scaled.
struct InIntegers {
    using Element = std::int32_t;
    using Norm = std::int32_t;
    using Total = I64x8;

    I64x8 stageThreshold;
    BinaryScale scale;

    InIntegers(std::int32_t threshold, std::int32_t scaleFactor)
        : stageThreshold(splatWide(threshold)), scale(scaleFactor) {}

    RVX_INLINE static Total none() { return splatWide(0); }
    RVX_INLINE static Total weighted(I32x8 sum, HaarNumber weight) { return mulWide(sum, weight.s32); }
    RVX_INLINE Mask32x8 below(Total stage) const { return greater(stageThreshold, stage); }
    RVX_INLINE Mask32x8 above(Total stage) const { return greater(stage, stageThreshold); }

    struct Value {
        const BinaryScale &scale;
        std::int32_t threshold;
        I64x8 otherwise, change;

        RVX_INLINE Value(const InIntegers &rule, const HaarFeature &feature)
            : scale(rule.scale), threshold(feature.threshold.s32), otherwise(splatWide(feature.value2.s32)),
              change(splatWide(feature.value1.s32 ^ feature.value2.s32)) {}
        RVX_INLINE Total operator()(Total sum, I32x8 norm) const {
            return changedWhereGreater(otherwise, change, scale(mulWide(norm, threshold)), sum);
        }
    };
};

// -------------------------------------------------------------------------------------------------- rectangle sums

// Where a rectangle's corners lie, in elements relative to a pixel.
struct CornerOffsets {
    std::int32_t at[4];
};

// Upright features: the offsets from a table of all rectangles in order.
struct FromTable {
    static constexpr bool mixed = false, adjacent = true;
    const CornerOffsets *next;

    RVX_INLINE void take(const HaarRectangle &, int, std::ptrdiff_t (&offsets)[4]) {
        for (int i = 0; i < 4; ++i) {
            offsets[i] = next->at[i];
        }
        ++next;
    }
};
// From the records, in 64 bits; `steps` are those of the images in elements.
template <bool bothImages, bool sideBySide> struct FromRecords {
    static constexpr bool mixed = bothImages, adjacent = sideBySide;
    std::int64_t steps[2];

    RVX_INLINE void take(const HaarRectangle &rect, int image, std::ptrdiff_t (&offsets)[4]) {
        for (int i = 0; i < 4; ++i) {
            offsets[i] = rect.corners[i].y * steps[image] + rect.corners[i].x;
        }
    }
};

template <bool mixed, class V> RVX_INLINE V cornerSum(V a, V b, V c, V d) {
    if constexpr (mixed) {
        return sub(sub(a, b), sub(c, d));
    } else {
        return add(sub(sub(a, b), c), d);
    }
}

// ----------------------------------------------------------------------------------------------------- stage sums

// Four blocks side by side: their first pixels in the upright and the tilted integral image.
template <class Rule> struct Adjacent {
    const typename Rule::Element *pixels[2];
    const typename Rule::Norm *norm;

    RVX_INLINE const auto *pixelsOf(int image, int k) const { return pixels[image] + k * blockPixels; }
    RVX_INLINE const auto *normOf(int k) const { return norm + k * blockPixels; }
};
// Four blocks anywhere.
template <class Rule> struct Scattered {
    const typename Rule::Element *pixels[2][groupBlocks];
    const typename Rule::Norm *norm[groupBlocks];

    RVX_INLINE const auto *pixelsOf(int image, int k) const { return pixels[image][k]; }
    RVX_INLINE const auto *normOf(int k) const { return norm[k]; }
};

template <class Rule, class Corners, class Blocks, class Span>
RVX_INLINE void stageSums(const Rule &rule, const HaarClassifier &classifier, Corners corners, const Blocks &blocks,
                          Span span, typename Rule::Total (&totals)[groupBlocks]) {
    using Pixels = Vec<typename Rule::Element>;
#pragma GCC unroll 4
    for (int k = 0; k < groupBlocks; ++k) {
        totals[k] = Rule::none();
    }
    const HaarFeature *feature = classifier.features, *const end = feature + classifier.featureCount;
    for (; feature != end; ++feature) {
        const int image = Corners::mixed && isTilted(*feature) ? 1 : 0;
        typename Rule::Total sums[groupBlocks];
        // A first sum takes the place of a sum with zero, which differs in a zero's sign at most.
        const auto addRect = [&]<bool first>(const HaarRectangle &rect, std::bool_constant<first>)
            __attribute__((always_inline)) {
            std::ptrdiff_t at[4];
            corners.take(rect, image, at);
#pragma GCC unroll 4
            for (int k = 0; k < groupBlocks; ++k) {
                const auto *p = blocks.pixelsOf(image, k);
                const auto sum = Rule::weighted(
                    cornerSum<Corners::mixed>(load<Pixels>(p + at[0], span), load<Pixels>(p + at[1], span),
                                              load<Pixels>(p + at[2], span), load<Pixels>(p + at[3], span)),
                    rect.weight);
                sums[k] = first ? sum : add(sums[k], sum);
            }
        };
        addRect(feature->rects[0], std::true_type{});
        for (std::int32_t r = 1; r < feature->rectCount; ++r) {
            addRect(feature->rects[r], std::false_type{});
        }
        const typename Rule::Value value(rule, *feature);
#pragma GCC unroll 4
        for (int k = 0; k < groupBlocks; ++k) {
            totals[k] = add(totals[k], value(sums[k], load<Vec<typename Rule::Norm>>(blocks.normOf(k), span)));
        }
    }
}

// -------------------------------------------------------------------------------------------------------- the mask

// Some mask bytes of a block become 0, others 255.
RVX_INLINE void mark(std::uint8_t *mask, std::uint32_t cleared, std::uint32_t filled, Full) {
    constexpr std::uint64_t lowBits = 0x0101010101010101;
    std::uint64_t bytes;
    std::memcpy(&bytes, mask, sizeof bytes);
    bytes = (bytes & ~(scatterBits(cleared, lowBits) * 255)) | scatterBits(filled, lowBits) * 255;
    std::memcpy(mask, &bytes, sizeof bytes);
}
RVX_INLINE void mark(std::uint8_t *mask, std::uint32_t cleared, std::uint32_t filled, Lanes) {
    for (std::uint32_t bits = cleared | filled; bits != 0; bits &= bits - 1) {
        const int i = std::countr_zero(bits);
        mask[i] = (filled >> i & 1) != 0 ? 255 : 0;
    }
}

// The selected pixels among 32 in a row of mask bytes, those behind its end being none.
RVX_INLINE std::uint32_t selectedFrom(const std::uint8_t *mask, std::int64_t x, std::int64_t width) {
    const U8x32 zero = splat(std::uint8_t{0});
    if (x + stretch <= width) {
        return ~laneBits(equal(load<U8x32>(mask + x), zero));
    }
    if (x >= width) {
        return 0;
    }
    if (width >= stretch) {
        return ~laneBits(equal(load<U8x32>(mask + width - stretch), zero)) >> (x + stretch - width);
    }
    return ~laneBits(equal(load<U8x32>(mask, Part{static_cast<int>(width)}), zero));
}

// -------------------------------------------------------------------------------------------------- the whole image

template <class Rule> struct Images {
    Plane<const typename Rule::Element> sum, tilted;
    Plane<const typename Rule::Norm> norm;
    Plane<std::uint8_t> mask;
    RoiSize roi;
    std::int64_t strictColumns; // those in front of it are judged by the rule of blocks
};

template <class Rule, class Corners, class Span> class Judge {
public:
    Judge(const Rule &rule, const HaarClassifier &classifier, const Corners &corners, const Images<Rule> &images,
          Span span)
        : rule_(rule), classifier_(classifier), corners_(corners), images_(images), span_(span),
          denseFrom_(classifier.rectCount <= 6 ? 4 : 16) {}

    // How many pixels pass.
    std::int64_t judge() {
        for (std::int32_t y = 0; y < images_.roi.height; ++y) {
            judgeRow(y);
        }
        judgeQueue();
        if (queued_ != 0) {
            std::fill(queue_ + queued_, queue_ + groupBlocks, Block{queue_[0].x, queue_[0].y, 0});
            queued_ = groupBlocks;
            judgeQueue();
        }
        return passed_;
    }

private:
    struct Block {
        std::int32_t x, y;
        std::uint32_t selected; // the pixels that the block stands for
    };
    static constexpr int fullQueue = 64;

    // Looks at a stretch and the one behind it: blocks reach into that one, unless it is a group of its own.
    void judgeRow(std::int32_t y) {
        const std::uint8_t *mask = images_.mask.row(y);
        const std::int64_t width = images_.roi.width;
        std::uint32_t here = selectedFrom(mask, 0, width);
        bool isGroup = isStretch(0, here);
        for (std::int64_t x = 0; x < width; x += stretch) {
            const std::uint32_t ahead = selectedFrom(mask, x + stretch, width);
            const bool aheadIsGroup = isStretch(x + stretch, ahead);
            if (isGroup) {
                judgeStretch(x, y);
                here = ahead;
            } else {
                const std::uint64_t left = queueBlocks(x, y, here | std::uint64_t{aheadIsGroup ? 0 : ahead} << stretch);
                here = aheadIsGroup ? ahead : static_cast<std::uint32_t>(left >> stretch);
            }
            isGroup = aheadIsGroup;
        }
    }

    // Whether 32 pixels are judged together: where they would take about as many blocks anyway. Stretches lie on one
    // side of the strict columns, which end less than four pixels before the row does.
    bool isStretch(std::int64_t x, std::uint32_t selected) const {
        const bool dense = std::popcount(selected) >= denseFrom_ &&
                           std::bit_width(selected) - std::countr_zero(selected) > 2 * blockPixels;
        return Corners::adjacent && dense && x + stretch <= images_.roi.width;
    }

    void judgeStretch(std::int64_t x, std::int64_t y) {
        if constexpr (Corners::adjacent) {
            typename Rule::Total stage[groupBlocks];
            const Adjacent<Rule> blocks{{images_.sum.row(y) + x, images_.tilted.row(y) + x}, images_.norm.row(y) + x};
            stageSums(rule_, classifier_, corners_, blocks, span_, stage);
            std::uint8_t *mask = images_.mask.row(y) + x;
            const U8x32 zero = splat(std::uint8_t{0}), before = load<U8x32>(mask);
            const U8x32 after = x < images_.strictColumns ? bitAndNot(aboveBytes(stage), equal(before, zero))
                                                          : bitAndNot(before, belowBytes(stage));
            passed_ += stretch - std::popcount(laneBits(equal(after, zero)));
            store(mask, after);
        }
    }

    // Queues blocks for the selected pixels among the first 32, and tells which ones behind them are left.
    std::uint64_t queueBlocks(std::int64_t x, std::int32_t y, std::uint64_t selected) {
        if (selected == 0) {
            return 0;
        }
        // How many there are is hard to predict: two places are written in any case.
        selected = queueBlock(x, y, selected);
        selected = queueBlock(x, y, selected);
        while (static_cast<std::uint32_t>(selected) != 0) {
            selected = queueBlock(x, y, selected);
        }
        if (queued_ >= fullQueue) {
            judgeQueue();
        }
        return selected;
    }
    // A block from the first selected pixel on, if there is one.
    RVX_INLINE std::uint64_t queueBlock(std::int64_t x, std::int32_t y, std::uint64_t selected) {
        const std::int64_t lastStart = std::max(images_.roi.width - blockPixels, 0);
        const auto low = static_cast<std::uint32_t>(selected);
        const int first = std::countr_zero(low);
        const std::int64_t start = std::min(x + first, lastStart);
        queue_[queued_] = {static_cast<std::int32_t>(start), y,
                           static_cast<std::uint32_t>((selected >> first & 0xff) << (x + first - start))};
        queued_ += low != 0;
        return selected & ~(std::uint64_t{low & -low} * 0xff); // without the lowest bit and seven more, or as it is
    }

    // Whole groups; the blocks left over move to the front.
    void judgeQueue() {
        int done = 0;
        for (; done + groupBlocks <= queued_; done += groupBlocks) {
            judgeGroup(queue_ + done);
        }
        std::copy(queue_ + done, queue_ + queued_, queue_);
        queued_ -= done;
    }
    void judgeGroup(const Block *group) {
        Scattered<Rule> blocks;
        for (int k = 0; k < groupBlocks; ++k) {
            blocks.pixels[0][k] = images_.sum.row(group[k].y) + group[k].x;
            blocks.pixels[1][k] = images_.tilted.row(group[k].y) + group[k].x;
            blocks.norm[k] = images_.norm.row(group[k].y) + group[k].x;
        }
        typename Rule::Total stage[groupBlocks];
        stageSums(rule_, classifier_, corners_, blocks, span_, stage);
        // Eight bits for each block.
        std::uint32_t selected = 0, filled = 0;
        for (int k = 0; k < groupBlocks; ++k) {
            selected |= group[k].selected << blockPixels * k;
        }
        std::uint32_t passes = selected & ~laneBits(belowBytes(stage));
        if (images_.strictColumns != 0) {
            std::uint32_t strict = 0;
            for (int k = 0; k < groupBlocks; ++k) {
                const std::int64_t columns = images_.strictColumns - group[k].x;
                strict |= ((1u << std::clamp<std::int64_t>(columns, 0, blockPixels)) - 1) << blockPixels * k;
            }
            filled = selected & strict & laneBits(aboveBytes(stage));
            passes = (passes & ~strict) | filled;
        }
        passed_ += std::popcount(passes);
        const std::uint32_t cleared = selected & ~passes;
        for (int k = 0; k < groupBlocks; ++k) {
            mark(images_.mask.row(group[k].y) + group[k].x, cleared >> blockPixels * k & 0xff,
                 filled >> blockPixels * k & 0xff, span_);
        }
    }

    using Stage = typename Rule::Total[groupBlocks];
    U8x32 belowBytes(const Stage &stage) const {
        return maskBytes(rule_.below(stage[0]), rule_.below(stage[1]), rule_.below(stage[2]), rule_.below(stage[3]));
    }
    U8x32 aboveBytes(const Stage &stage) const {
        return maskBytes(rule_.above(stage[0]), rule_.above(stage[1]), rule_.above(stage[2]), rule_.above(stage[3]));
    }

    const Rule &rule_;
    const HaarClassifier &classifier_;
    const Corners &corners_;
    const Images<Rule> &images_;
    const Span span_;
    const int denseFrom_; // selected pixels among 32; under few features queueing a block costs as much as judging it
    Block queue_[fullQueue + groupBlocks];
    int queued_ = 0;
    std::int64_t passed_ = 0;
};

template <class Rule, class Corners>
std::int64_t judge(const Rule &rule, const HaarClassifier &classifier, const Corners &corners,
                   const Images<Rule> &images) {
    return Judge<Rule, Corners, Full>(rule, classifier, corners, images, Full{}).judge();
}
template <class Rule, bool mixed>
std::int64_t judgeFromRecords(const Rule &rule, const HaarClassifier &classifier, const Images<Rule> &images) {
    const std::int64_t sumStep = images.sum.step / 4, tiltedStep = images.tilted.step / 4;
    if (images.roi.width < blockPixels) {
        using Corners = FromRecords<mixed, false>;
        const Corners corners{{sumStep, tiltedStep}};
        return Judge<Rule, Corners, Lanes>(rule, classifier, corners, images, firstLanes(images.roi.width)).judge();
    }
    return judge(rule, classifier, FromRecords<mixed, mixed>{{sumStep, tiltedStep}}, images);
}

// Whether all offsets fit.
bool fillTable(CornerOffsets *offsets, const HaarClassifier &classifier, std::int64_t step) {
    for (std::int32_t f = 0; f < classifier.featureCount; ++f) {
        const HaarFeature &feature = classifier.features[f];
        for (std::int32_t r = 0; r < feature.rectCount; ++r, ++offsets) {
            for (int i = 0; i < 4; ++i) {
                const std::int64_t offset = feature.rects[r].corners[i].y * step + feature.rects[r].corners[i].x;
                offsets->at[i] = static_cast<std::int32_t>(offset);
                if (offsets->at[i] != offset) {
                    return false;
                }
            }
        }
    }
    return true;
}

// Counts of an eighth of the pixels up to a quarter: blocks of four pixels, judged strictly.
bool byBlocks(std::int32_t count, RoiSize roi) {
    const std::int64_t pixels = std::int64_t{roi.width} * roi.height;
    return std::int64_t{count} * 8 >= pixels && std::int64_t{count} * 4 < pixels;
}

template <class Rule>
StatusCode apply(const typename Rule::Element *sum, std::int32_t sumStep, const typename Rule::Norm *norm,
                 std::int32_t normStep, std::uint8_t *mask, std::int32_t maskStep, RoiSize roi, std::int32_t *count,
                 const HaarClassifier *classifier, const Rule &rule) {
    Checks checks;
    checks.pointers(sum, norm, mask, count, classifier).size(roi);
    checks.steps(rowBytes<float>(roi.width), sumStep, normStep).steps(roi.width, maskStep);
    checks.multiples(sizeof(float), sumStep, normStep);
    if (checks.failed()) {
        return checks.status();
    }
    // The size is documented: the table, and two rows behind it that are spare.
    void *scratch = rvxMalloc(16 * std::int64_t{classifier->rectCount} + 8 * std::int64_t{roi.width});
    if (scratch == nullptr) {
        return StatusNoMemory;
    }
    auto *table = static_cast<CornerOffsets *>(scratch);
    const Images<Rule> images{Plane{sum, sumStep},
                              Plane{sum, sumStep},
                              Plane{norm, normStep},
                              Plane{mask, maskStep},
                              roi,
                              byBlocks(*count, roi) ? roi.width & ~3 : 0};
    const bool tabled = roi.width >= blockPixels && fillTable(table, *classifier, sumStep / 4);
    const std::int64_t passed = tabled ? judge(rule, *classifier, FromTable{table}, images)
                                       : judgeFromRecords<Rule, false>(rule, *classifier, images);
    rvxFree(scratch);
    *count = static_cast<std::int32_t>(passed);
    return StatusOk;
}

template <class Rule>
StatusCode applyMixed(const typename Rule::Element *sum, std::int32_t sumStep, const typename Rule::Element *tilted,
                      std::int32_t tiltedStep, const typename Rule::Norm *norm, std::int32_t normStep,
                      std::uint8_t *mask, std::int32_t maskStep, RoiSize roi, std::int32_t *count,
                      const HaarClassifier *classifier, const Rule &rule) {
    Checks checks;
    checks.pointers(sum, tilted, norm, mask, count, classifier).size(roi);
    checks.steps(rowBytes<float>(roi.width), sumStep, tiltedStep, normStep).steps(roi.width, maskStep);
    checks.multiples(sizeof(float), sumStep, tiltedStep, normStep);
    if (checks.failed()) {
        return checks.status();
    }
    const auto *tiltedOrigin = byteOffset(tilted, tiltedStep) + 1; // element (1, 1)
    const Images<Rule> images{
        Plane{sum, sumStep}, Plane{tiltedOrigin, tiltedStep}, Plane{norm, normStep}, Plane{mask, maskStep}, roi, 0};
    *count = static_cast<std::int32_t>(judgeFromRecords<Rule, true>(rule, *classifier, images));
    return StatusOk;
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiApplyHaarClassifier_32f_C1R(const float *integral, int32_t integralStep, const float *norm,
                                           int32_t normStep, uint8_t *mask, int32_t maskStep, RoiSize roi,
                                           int32_t *count, const HaarClassifier *classifier, float stageThreshold) {
    return apply(integral, integralStep, norm, normStep, mask, maskStep, roi, count, classifier,
                 InFloat<float>(stageThreshold));
}
StatusCode rvxiApplyHaarClassifier_32s32f_C1R(const int32_t *integral, int32_t integralStep, const float *norm,
                                              int32_t normStep, uint8_t *mask, int32_t maskStep, RoiSize roi,
                                              int32_t *count, const HaarClassifier *classifier, float stageThreshold) {
    return apply(integral, integralStep, norm, normStep, mask, maskStep, roi, count, classifier,
                 InFloat<std::int32_t>(stageThreshold));
}
StatusCode rvxiApplyHaarClassifier_32s_C1RSfs(const int32_t *integral, int32_t integralStep, const int32_t *norm,
                                              int32_t normStep, uint8_t *mask, int32_t maskStep, RoiSize roi,
                                              int32_t *count, const HaarClassifier *classifier, int32_t stageThreshold,
                                              int32_t scaleFactor) {
    return apply(integral, integralStep, norm, normStep, mask, maskStep, roi, count, classifier,
                 InIntegers(stageThreshold, scaleFactor));
}
StatusCode rvxiApplyMixedHaarClassifier_32f_C1R(const float *integral, int32_t integralStep, const float *tilted,
                                                int32_t tiltedStep, const float *norm, int32_t normStep, uint8_t *mask,
                                                int32_t maskStep, RoiSize roi, int32_t *count,
                                                const HaarClassifier *classifier, float stageThreshold) {
    return applyMixed(integral, integralStep, tilted, tiltedStep, norm, normStep, mask, maskStep, roi, count,
                      classifier, InFloat<float>(stageThreshold));
}
StatusCode rvxiApplyMixedHaarClassifier_32s32f_C1R(const int32_t *integral, int32_t integralStep, const int32_t *tilted,
                                                   int32_t tiltedStep, const float *norm, int32_t normStep,
                                                   uint8_t *mask, int32_t maskStep, RoiSize roi, int32_t *count,
                                                   const HaarClassifier *classifier, float stageThreshold) {
    return applyMixed(integral, integralStep, tilted, tiltedStep, norm, normStep, mask, maskStep, roi, count,
                      classifier, InFloat<std::int32_t>(stageThreshold));
}
StatusCode rvxiApplyMixedHaarClassifier_32s_C1RSfs(const int32_t *integral, int32_t integralStep, const int32_t *tilted,
                                                   int32_t tiltedStep, const int32_t *norm, int32_t normStep,
                                                   uint8_t *mask, int32_t maskStep, RoiSize roi, int32_t *count,
                                                   const HaarClassifier *classifier, int32_t stageThreshold,
                                                   int32_t scaleFactor) {
    return applyMixed(integral, integralStep, tilted, tiltedStep, norm, normStep, mask, maskStep, roi, count,
                      classifier, InIntegers(stageThreshold, scaleFactor));
}
