// Stages of Haar features against plain loops over pixels, features and corners.
#include "plain_haar.h"
#include "stats/plain_integral.h"
#include "support/counted_alloc.h"
#include "support/status_table.h"

#include <sys/mman.h>

namespace {

using namespace support;
using namespace detect;
using stats::plainAdd, stats::plainSub;

// T: integral images, N: norm, V: record and stage threshold.
template <class T, class N, class V> struct Call {
    const T *sum;
    std::int32_t sumStep;
    const T *tilted;
    std::int32_t tiltedStep;
    const N *norm;
    std::int32_t normStep;
    std::uint8_t *mask;
    std::int32_t maskStep;
    RoiSize roi;
    std::int32_t *count;
    const HaarClassifier *record;
    V threshold;
    std::int32_t scaleFactor;
    bool failingMemory = false;

    StatusCode upright(auto function, auto... more) const {
        return function(sum, sumStep, norm, normStep, mask, maskStep, roi, count, record, threshold, more...);
    }
    StatusCode mixed(auto function, auto... more) const {
        return function(sum, sumStep, tilted, tiltedStep, norm, normStep, mask, maskStep, roi, count, record, threshold,
                        more...);
    }
};

template <class T, class N, class V> struct Member {
    const char *name;
    bool mixed;
    StatusCode (*call)(const Call<T, N, V> &);
};

template <class Check> void eachMember(const Check &check) {
    using Real = Member<float, float, float>;
    using Wrapping = Member<std::int32_t, float, float>;
    using Whole = Member<std::int32_t, std::int32_t, std::int32_t>;
    check(Real{"32f", false, [](auto &c) { return c.upright(rvxiApplyHaarClassifier_32f_C1R); }});
    check(Wrapping{"32s32f", false, [](auto &c) { return c.upright(rvxiApplyHaarClassifier_32s32f_C1R); }});
    check(Whole{"Sfs", false, [](auto &c) { return c.upright(rvxiApplyHaarClassifier_32s_C1RSfs, c.scaleFactor); }});
    check(Real{"mixed 32f", true, [](auto &c) { return c.mixed(rvxiApplyMixedHaarClassifier_32f_C1R); }});
    check(Wrapping{"mixed 32s32f", true, [](auto &c) { return c.mixed(rvxiApplyMixedHaarClassifier_32s32f_C1R); }});
    check(Whole{"mixed Sfs", true,
                [](auto &c) { return c.mixed(rvxiApplyMixedHaarClassifier_32s_C1RSfs, c.scaleFactor); }});
}

// ------------------------------------------------------------------------------------------------------- the rules

std::int64_t scaled(std::int64_t product, std::int32_t bits) {
    if (bits >= 0) {
        return bits > 63 ? (product < 0 ? -1 : 0) : product >> bits;
    }
    return bits < -63 ? 0 : static_cast<std::int64_t>(static_cast<std::uint64_t>(product) << -bits);
}

template <class T, class N, class V> struct Images {
    GuardedImage<T> sum, tilted;
    GuardedImage<N> norm;
    GuardedImage<std::uint8_t> mask;

    // The images end with the last elements that the features reach from the last pixel.
    static Point2i reach(const Features<V> &features, bool tilted) {
        Point2i r{0, 0};
        for (const PlainFeature<V> &feature : features) {
            for (const Rect2i rect : feature.rects) {
                for (const Point2i corner : plainCorners(rect, feature.tilt)) {
                    if ((feature.tilt != Tilt::none) == tilted) {
                        r = {std::max(r.x, corner.x + tilted), std::max(r.y, corner.y + tilted)};
                    }
                }
            }
        }
        return r;
    }
    template <class E> static typename GuardedImage<E>::Layout layout(int salt, int image) {
        return {.padding = salt % 5 == image ? static_cast<std::int64_t>(3 * sizeof(E)) : 0,
                .guard = salt % 2 != 0 ? Guard::before : Guard::behind,
                .skew = salt % 3};
    }
    Images(std::int64_t width, std::int64_t height, Point2i upright, Point2i tilt, int salt)
        : sum(width + upright.x, height + upright.y, layout<T>(salt, 0)),
          tilted(width + tilt.x, height + tilt.y, layout<T>(salt, 1)), norm(width, height, layout<N>(salt, 2)),
          mask(width, height, layout<std::uint8_t>(salt, 3)) {}

    Call<T, N, V> call(std::int32_t *count, const HaarClassifier *record, V threshold, std::int32_t scaleFactor) {
        return {sum.data(),  sum.step(), tilted.data(), tilted.step(), norm.data(), norm.step(), mask.data(),
                mask.step(), mask.roi(), count,         record,        threshold,   scaleFactor};
    }

    static constexpr bool real = std::is_same_v<V, float>;
    // Integers wrap, and then count as signed.
    auto featureSum(const PlainFeature<V> &feature, bool mixed, std::int64_t x, std::int64_t y) const {
        const bool tilt = feature.tilt != Tilt::none;
        std::conditional_t<real, float, std::uint64_t> total = 0;
        for (std::size_t k = 0; k < feature.rects.size(); ++k) {
            T e[4];
            const auto corners = plainCorners(feature.rects[k], feature.tilt);
            for (std::size_t j = 0; j < 4; ++j) {
                e[j] = (tilt ? tilted : sum).at(x + corners[j].x + tilt, y + corners[j].y + tilt);
            }
            const T rect = mixed ? plainSub(plainSub(e[0], e[1]), plainSub(e[2], e[3]))
                                 : plainAdd(plainSub(plainSub(e[0], e[1]), e[2]), e[3]);
            if constexpr (real) {
                total += static_cast<float>(rect) * feature.weights[k];
            } else {
                total += static_cast<std::uint64_t>(std::int64_t{rect} * feature.weights[k]);
            }
        }
        return static_cast<std::conditional_t<real, float, std::int64_t>>(total);
    }
    auto stageSum(const Features<V> &features, bool mixed, std::int64_t x, std::int64_t y,
                  std::int32_t scaleFactor) const {
        std::conditional_t<real, float, std::int64_t> stage = 0;
        for (const std::size_t i : recordOrder(features)) {
            const PlainFeature<V> &feature = features[i];
            const auto total = featureSum(feature, mixed, x, y);
            bool below = false;
            if constexpr (real) {
                below = total < feature.threshold * norm.at(x, y);
            } else {
                below = total < scaled(std::int64_t{feature.threshold} * norm.at(x, y), scaleFactor);
            }
            stage += below ? feature.value1 : feature.value2;
        }
        return stage;
    }
};

// -------------------------------------------------------------------------------------------------- whole images

// Which pixels are selected: some of `percent`, or runs of random length.
void select(GuardedImage<std::uint8_t> &mask, Rng &rng, std::int64_t percent, bool runs) {
    bool on = false;
    for (std::int64_t i = 0, left = 0; i < mask.width() * mask.height(); ++i, --left) {
        if (left <= 0) {
            on = uniform(rng, 0, 99) < percent;
            left = runs ? uniform(rng, 1, 60) : 1;
        }
        mask.set(i % mask.width(), i / mask.width(), static_cast<std::uint8_t>(on ? uniform(rng, 1, 255) : 0));
    }
}

template <class T, class N, class V>
void runCase(const Member<T, N, V> &member, Rng &rng, std::int32_t width, std::int32_t height, int salt) {
    const std::vector tilts = member.mixed ? std::vector{Tilt::none, Tilt::down, Tilt::up} : std::vector{Tilt::none};
    Features<V> features = randomFeatures<V>(rng, salt % 6, tilts);
    using I = Images<T, N, V>;
    I images(width, height, I::reach(features, false), I::reach(features, true), salt);
    const Contents contents = allContents[static_cast<std::size_t>(salt / 3) % 5];
    images.sum.fill(rng, contents);
    images.tilted.fill(rng, contents);
    images.norm.fill(rng, allContents[static_cast<std::size_t>(salt / 2) % 5]);
    constexpr std::int64_t percents[] = {100, 100, 60, 20, 5, 0};
    select(images.mask, rng, percents[salt % 6], salt % 4 == 0);

    const std::int32_t pixels = width * height;
    const std::int32_t counts[] = {pixels,           pixels / 4, (pixels + 7) / 8, pixels / 5, (pixels - 1) / 8,
                                   (pixels - 1) / 4, -1};
    std::int32_t count = counts[rng() % std::size(counts)];
    const bool blocks = !member.mixed && count * 8 >= pixels && count * 4 < pixels;
    constexpr std::int32_t scales[] = {0, 0, 1, 7, 40, 63, 64, 1000, INT32_MAX, -1, -9, -63, -64, INT32_MIN};
    const std::int32_t scaleFactor = scales[rng() % std::size(scales)];
    auto threshold = static_cast<V>(uniform(rng, -2, 2));
    if constexpr (I::real) {
        threshold = uniform(rng, 0, 19) == 0 ? NAN : threshold;
        if (salt % 6 != 0 && salt % 5 < 2) { // a feature that equals its threshold everywhere, to the last bit
            features[0].threshold = 1;
            for (std::int32_t i = 0; i < pixels; ++i) {
                const std::int32_t x = i % width, y = i / width;
                images.norm.set(x, y, images.featureSum(features[0], member.mixed, x, y));
            }
        }
    }
    std::vector<std::uint8_t> want;
    std::int32_t passing = 0;
    for (std::int32_t i = 0; i < pixels; ++i) {
        std::uint8_t byte = images.mask.at(i % width, i / width);
        if (byte != 0) {
            const auto stage = images.stageSum(features, member.mixed, i % width, i / width, scaleFactor);
            const bool inBlock = blocks && i % width / 4 * 4 + 4 <= width;
            const bool passes = inBlock ? stage > threshold : !(threshold > stage);
            byte = !passes ? 0 : inBlock ? 255 : byte;
            passing += passes;
        }
        want.push_back(byte);
    }
    const Record record = makeMixed(features);
    ASSERT_EQ(member.call(images.call(&count, record.get(), threshold, scaleFactor)), StatusOk);
    ASSERT_TRUE(imageIs(images.mask,
                        [&](std::int64_t x, std::int64_t y) { return want[static_cast<std::size_t>(y * width + x)]; }))
        << member.name << " " << features.size() << " features, blocks " << blocks << " scale " << scaleFactor;
    ASSERT_EQ(count, passing) << member.name;
}

TEST(ApplyHaar, EveryWidthOnAnyContents) {
    eachMember([](const auto &member) {
        Rng rng = makeRng(member.name);
        for (int salt = 0; salt < 600; ++salt) {
            ASSERT_NO_FATAL_FAILURE(runCase(member, rng, 1 + salt % 75, 1 + salt % 4, salt)) << "case " << salt;
        }
        for (int salt = 0; salt < 24; ++salt) {
            ASSERT_NO_FATAL_FAILURE(runCase(member, rng, 641, 5, salt)) << "case " << salt;
        }
    });
}

// Rows so far apart that the offsets of a window's corners exceed 32 bits, in elements too.
TEST(ApplyHaar, RowsFarApart) {
    constexpr std::int64_t step = INT64_C(1) << 30, bytes = 10 * step;
    void *map = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(map, MAP_FAILED);
    auto *sum = static_cast<float *>(map);
    for (std::int64_t x = 0; x < 40; ++x) {
        sum[9 * (step / 4) + x] = static_cast<float>(x * x);
    }
    const Record record = makeRecord(Features<float>{{{{0, 0, 2, 9}}, {1}, 1, 0, 1}});
    const std::vector<float> norm(38, 100);
    std::vector<std::uint8_t> mask(38, 1);
    std::int32_t count = 38;
    rvxiApplyHaarClassifier_32f_C1R(sum, step, norm.data(), 152, mask.data(), 38, {38, 1}, &count, record.get(), 1);
    for (std::size_t x = 0; x < mask.size(); ++x) {
        EXPECT_EQ(mask[x], 4 * x + 4 >= 100) << x;
    }
    munmap(map, bytes);
}

// ----------------------------------------------------------------------------------------------- checks and memory

TEST(ApplyHaar, FaultsInTheirOrder) {
    eachMember([]<class T, class N, class V>(const Member<T, N, V> &member) {
        const Features<V> features{{{{0, 0, 2, 2}, {1, 1, 1, 1}}, {V{1}, V{-3}}, 0, 1, -1}};
        const Record record = makeRecord(features);
        Images<T, N, V> images(13, 4, {3, 3}, {3, 3}, 4);
        std::int32_t count = 7;
        using C = Call<T, N, V>;
        const C good = images.call(&count, record.get(), V{0}, 0);
        std::vector<Fault<C>> faults = {
            {"sum", StatusNullPointer, [](C &c) { c.sum = nullptr; }},
            {"norm", StatusNullPointer, [](C &c) { c.norm = nullptr; }},
            {"mask", StatusNullPointer, [](C &c) { c.mask = nullptr; }},
            {"count", StatusNullPointer, [](C &c) { c.count = nullptr; }},
            {"record", StatusNullPointer, [](C &c) { c.record = nullptr; }},
            {"width", StatusBadSize, [](C &c) { c.roi.width = 0; }},
            {"height", StatusBadSize, [](C &c) { c.roi.height = 0; }},
            {"sumStep", StatusBadStep, [](C &c) { c.sumStep = 51; }},
            {"normStep", StatusBadStep, [](C &c) { c.normStep = 51; }},
            {"maskStep", StatusBadStep, [](C &c) { c.maskStep = 12; }},
            {"wide", StatusBadStep, [](C &c) { c.roi.width = 1 << 30; }},
            {"sum multiple", StatusStepNotMultiple, [&](C &c) { c.sumStep = good.sumStep + 2; }},
            {"norm multiple", StatusStepNotMultiple, [&](C &c) { c.normStep = good.normStep + 1; }}};
        const auto call = [&](const C &c) {
            CountedAlloc::reset(c.failingMemory);
            return member.call(c);
        };
        const std::int64_t live = CountedAlloc::live;
        if (member.mixed) {
            faults.insert(faults.begin() + 1, {"tilted", StatusNullPointer, [](C &c) { c.tilted = nullptr; }});
            faults.insert(faults.begin() + 9, {"tiltedStep", StatusBadStep, [](C &c) { c.tiltedStep = 51; }});
            faults.push_back({"tilted multiple", StatusStepNotMultiple, [&](C &c) { c.tiltedStep = 65; }});
        } else {
            faults.push_back({"memory", StatusNoMemory, [](C &c) { c.failingMemory = true; }});
        }
        expectFaultOrder<C>(good, faults, call, [&] {
            auto bytes = images.mask.bytes();
            bytes.push_back(static_cast<std::uint8_t>(count));
            return bytes;
        });
        // The last call was the faultless one.
        EXPECT_EQ(CountedAlloc::made, member.mixed ? 0 : 1) << member.name;
        EXPECT_EQ(CountedAlloc::largest, member.mixed ? 0 : 16 * 2 + 8 * 13) << member.name;
        EXPECT_EQ(CountedAlloc::live, live) << member.name;
    });
}

} // namespace
