// A stage of Haar features at every selected pixel of an image. Selected pixels are gathered into blocks of eight
// neighbours, wherever one begins, and blocks from all rows into groups that read a feature's record once: a full mask
// gives blocks side by side, a sparse one a block for every few survivors, and stretches without any cost a look at
// their mask bytes.
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

    RVX_INLINE Total none() const { return splat(0.0f); }
    RVX_INLINE Total weighted(Vec<T> sum, HaarNumber weight) const { return mul(asFloats(sum), splat(weight.f32)); }
    RVX_INLINE Total value(Total sum, F32x8 norm, const HaarFeature &feature) const {
        const Mask32x8 below = greater(mul(splat(feature.threshold.f32), norm), sum);
        return select(below, splat(feature.value1.f32), splat(feature.value2.f32));
    }
    RVX_INLINE std::uint32_t below(Total stage) const { return laneBits(greater(stageThreshold, stage)); }
    RVX_INLINE std::uint32_t above(Total stage) const { return laneBits(greater(stage, stageThreshold)); }
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

    RVX_INLINE Total none() const { return splatWide(0); }
    RVX_INLINE Total weighted(I32x8 sum, HaarNumber weight) const { return mulWide(sum, weight.s32); }
    RVX_INLINE Total value(Total sum, I32x8 norm, const HaarFeature &feature) const {
        const Mask64x8 below = greater(scale(mulWide(norm, feature.threshold.s32)), sum);
        return select(below, splatWide(feature.value1.s32), splatWide(feature.value2.s32));
    }
    RVX_INLINE std::uint32_t below(Total stage) const { return laneBits(greater(stageThreshold, stage)); }
    RVX_INLINE std::uint32_t above(Total stage) const { return laneBits(greater(stage, stageThreshold)); }
};

// -------------------------------------------------------------------------------------------------- rectangle sums

// Where a rectangle's corners lie, in elements relative to a pixel.
struct CornerOffsets {
    std::int32_t at[4];
};

// Upright features: the offsets from a table of all rectangles in order.
struct FromTable {
    static constexpr bool mixed = false;
    const CornerOffsets *offsets;
    std::int64_t steps[1]{};

    RVX_INLINE std::ptrdiff_t offset(const HaarRectangle &, std::int64_t rect, int, int corner) const {
        return offsets[rect].at[corner];
    }
};
// From the records, in 64 bits; `steps` are those of the images in elements.
template <bool bothImages> struct FromRecords {
    static constexpr bool mixed = bothImages;
    std::int64_t steps[2];

    RVX_INLINE std::ptrdiff_t offset(const HaarRectangle &rect, std::int64_t, int image, int corner) const {
        return rect.corners[corner].y * steps[image] + rect.corners[corner].x;
    }
};

template <bool mixed, class V> RVX_INLINE V cornerSum(V a, V b, V c, V d) {
    if constexpr (mixed) {
        return sub(sub(a, b), sub(c, d));
    } else {
        return add(sub(sub(a, b), c), d);
    }
}

// -------------------------------------------------------------------------------------------------------- a group

// Blocks to be judged: where their first pixels lie in each image, and which of their pixels are meant.
template <class Rule> struct Group {
    using T = typename Rule::Element;
    const T *pixels[2][groupBlocks]; // in the upright and the tilted integral image
    const typename Rule::Norm *norm[groupBlocks];
    std::uint8_t *mask[groupBlocks];
    std::uint32_t selected[groupBlocks];
    std::uint32_t strict[groupBlocks]; // the pixels judged by the rule of blocks
    int count = 0;

    void repeatLast(int k) {
        pixels[0][k] = pixels[0][count - 1];
        pixels[1][k] = pixels[1][count - 1];
        norm[k] = norm[count - 1];
    }
};

template <class Rule, class Corners, class Span>
[[gnu::noinline]] void stageSums(const Rule &rule, const HaarClassifier &classifier, const Corners &corners,
                                 const Group<Rule> &group, Span span, typename Rule::Total (&stage)[groupBlocks]) {
    using T = typename Rule::Element;
    using Total = typename Rule::Total;
    Total totals[groupBlocks];
#pragma GCC unroll 4
    for (int k = 0; k < groupBlocks; ++k) {
        totals[k] = rule.none();
    }
    std::int64_t rectNumber = 0;
    for (std::int32_t f = 0; f < classifier.featureCount; ++f) {
        const HaarFeature &feature = classifier.features[f];
        const int image = Corners::mixed && isTilted(feature) ? 1 : 0;
        const T *const(&pixels)[groupBlocks] = group.pixels[image];
        Total sums[groupBlocks];
#pragma GCC unroll 4
        for (int k = 0; k < groupBlocks; ++k) {
            sums[k] = rule.none();
        }
        for (std::int32_t r = 0; r < feature.rectCount; ++r, ++rectNumber) {
            const HaarRectangle &rect = feature.rects[r];
            const std::ptrdiff_t a = corners.offset(rect, rectNumber, image, 0);
            const std::ptrdiff_t b = corners.offset(rect, rectNumber, image, 1);
            const std::ptrdiff_t c = corners.offset(rect, rectNumber, image, 2);
            const std::ptrdiff_t d = corners.offset(rect, rectNumber, image, 3);
#pragma GCC unroll 4
            for (int k = 0; k < groupBlocks; ++k) {
                const T *p = pixels[k];
                const Vec<T> sum = cornerSum<Corners::mixed>(load<Vec<T>>(p + a, span), load<Vec<T>>(p + b, span),
                                                             load<Vec<T>>(p + c, span), load<Vec<T>>(p + d, span));
                sums[k] = add(sums[k], rule.weighted(sum, rect.weight));
            }
        }
#pragma GCC unroll 4
        for (int k = 0; k < groupBlocks; ++k) {
            const auto norm = load<Vec<typename Rule::Norm>>(group.norm[k], span);
            totals[k] = add(totals[k], rule.value(sums[k], norm, feature));
        }
    }
#pragma GCC unroll 4
    for (int k = 0; k < groupBlocks; ++k) {
        stage[k] = totals[k];
    }
}

// ------------------------------------------------------------------------------------------------------- the mask

constexpr std::uint64_t lowBits = 0x0101010101010101;
RVX_INLINE std::uint64_t bytesOf(std::uint32_t bits) { return scatterBits(bits, lowBits) * 255; }

// Some mask bytes become 0, others 255.
RVX_INLINE void mark(std::uint8_t *mask, std::uint32_t cleared, std::uint32_t filled, Full) {
    std::uint64_t bytes;
    std::memcpy(&bytes, mask, sizeof bytes);
    bytes = (bytes & ~bytesOf(cleared)) | bytesOf(filled);
    std::memcpy(mask, &bytes, sizeof bytes);
}
RVX_INLINE void mark(std::uint8_t *mask, std::uint32_t cleared, std::uint32_t filled, Lanes) {
    for (std::uint32_t bits = cleared | filled; bits != 0; bits &= bits - 1) {
        const int i = std::countr_zero(bits);
        mask[i] = (filled >> i & 1) != 0 ? 255 : 0;
    }
}

// Calls push(column, lanes) for blocks that hold the selected pixels of a row once each: blocks end with the row at the
// latest, unless the row is narrower than a block.
template <class Push> RVX_INLINE void eachBlock(const std::uint8_t *mask, std::int64_t width, const Push &push) {
    constexpr int lanes = U8x32::lanes;
    const U8x32 zero = splat(std::uint8_t{0});
    const int span = static_cast<int>(std::min<std::int64_t>(width, lanes));
    const int lastStart = std::max(span - blockPixels, 0);
    for (std::int64_t x = 0; x < width;) {
        // The last look ends with the row and forgets what was seen before.
        const std::int64_t base = std::min(x, width - span);
        const bool last = base + span == width;
        const U8x32 bytes = span == lanes ? load<U8x32>(mask + base) : load<U8x32>(mask + base, Part{span});
        std::uint32_t selected = ~laneBits(equal(bytes, zero)) & (~std::uint32_t{0} << (x - base));
        x = base + span;
        while (selected != 0) {
            int start = std::countr_zero(selected);
            if (start > lastStart) {
                if (!last) {
                    x = base + start;
                    break;
                }
                start = lastStart;
            }
            push(base + start, selected >> start & 0xff);
            selected &= ~(std::uint32_t{0xff} << start);
        }
    }
}

// -------------------------------------------------------------------------------------------------- the whole image

template <class Rule> struct Images {
    Plane<const typename Rule::Element> sum, tilted;
    Plane<const typename Rule::Norm> norm;
    Plane<std::uint8_t> mask;
    RoiSize roi;
};

template <class Rule, class Corners, class Span> class Judge {
public:
    Judge(const Rule &rule, const HaarClassifier &classifier, const Corners &corners, Span span)
        : rule_(rule), classifier_(classifier), corners_(corners), span_(span) {}

    // The pixels of a row; those in front of strictColumns are judged by the rule of blocks.
    void addRow(const Images<Rule> &images, std::int64_t y, std::int64_t strictColumns) {
        const auto *sum = images.sum.row(y), *tilted = images.tilted.row(y);
        const auto *norm = images.norm.row(y);
        std::uint8_t *mask = images.mask.row(y);
        eachBlock(mask, images.roi.width, [&](std::int64_t x, std::uint32_t selected) {
            const int k = group_.count++;
            group_.pixels[0][k] = sum + x;
            group_.pixels[1][k] = tilted + x;
            group_.norm[k] = norm + x;
            group_.mask[k] = mask + x;
            group_.selected[k] = selected;
            group_.strict[k] = (1u << std::clamp<std::int64_t>(strictColumns - x, 0, blockPixels)) - 1;
            if (group_.count == groupBlocks) {
                finishGroup();
            }
        });
    }
    // How many pixels passed.
    std::int64_t finish() {
        if (group_.count != 0) {
            finishGroup();
        }
        return passed_;
    }

private:
    void finishGroup() {
        for (int k = group_.count; k < groupBlocks; ++k) {
            group_.repeatLast(k);
        }
        typename Rule::Total stage[groupBlocks];
        stageSums(rule_, classifier_, corners_, group_, span_, stage);
        for (int k = 0; k < group_.count; ++k) {
            const std::uint32_t selected = group_.selected[k], strict = group_.strict[k];
            const std::uint32_t passes =
                selected & ((~rule_.below(stage[k]) & ~strict) | (rule_.above(stage[k]) & strict));
            passed_ += std::popcount(passes);
            if (passes != selected || strict != 0) {
                mark(group_.mask[k], selected & ~passes, passes & strict, span_);
            }
        }
        group_.count = 0;
    }

    const Rule &rule_;
    const HaarClassifier &classifier_;
    const Corners &corners_;
    const Span span_;
    Group<Rule> group_;
    std::int64_t passed_ = 0;
};

template <class Rule, class Corners, class Span>
std::int64_t judge(const Rule &rule, const HaarClassifier &classifier, const Corners &corners, Span span,
                   const Images<Rule> &images, std::int64_t strictColumns) {
    Judge<Rule, Corners, Span> judge(rule, classifier, corners, span);
    for (std::int64_t y = 0; y < images.roi.height; ++y) {
        judge.addRow(images, y, strictColumns);
    }
    return judge.finish();
}

template <class Rule, bool mixed>
std::int64_t judgeFromRecords(const Rule &rule, const HaarClassifier &classifier, const Images<Rule> &images,
                              std::int64_t strictColumns) {
    const FromRecords<mixed> corners{{images.sum.step / 4, images.tilted.step / 4}};
    if (images.roi.width < blockPixels) {
        return judge(rule, classifier, corners, firstLanes(images.roi.width), images, strictColumns);
    }
    return judge(rule, classifier, corners, Full{}, images, strictColumns);
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
    // The documented size: room for the table, and two rows that belong to it.
    void *scratch = rvxMalloc(16 * std::int64_t{classifier->rectCount} + 8 * std::int64_t{roi.width});
    if (scratch == nullptr) {
        return StatusNoMemory;
    }
    auto *table = static_cast<CornerOffsets *>(scratch);
    const Images<Rule> images{Plane{sum, sumStep}, Plane{sum, sumStep}, Plane{norm, normStep}, Plane{mask, maskStep},
                              roi};
    const std::int64_t strictColumns = byBlocks(*count, roi) ? roi.width & ~3 : 0;
    const bool tabled = roi.width >= blockPixels && fillTable(table, *classifier, sumStep / 4);
    const std::int64_t passed = tabled ? judge(rule, *classifier, FromTable{table}, Full{}, images, strictColumns)
                                       : judgeFromRecords<Rule, false>(rule, *classifier, images, strictColumns);
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
    const auto *tiltedOrigin = byteOffset(tilted, tiltedStep) + 1;
    const Images<Rule> images{Plane{sum, sumStep}, Plane{tiltedOrigin, tiltedStep}, Plane{norm, normStep},
                              Plane{mask, maskStep}, roi};
    *count = static_cast<std::int32_t>(judgeFromRecords<Rule, true>(rule, *classifier, images, 0));
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
