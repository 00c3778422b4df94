// Erosion and dilation by structuring functions against the plain definition, with record, buffer and images in guarded
// memory of exactly the promised sizes and margins.
#include "support/bordered.h"
#include "support/status_table.h"

#include "rvxcv.h"

#include <array>
#include <limits>

namespace {

using namespace support;

template <class T> struct Member {
    using Value = std::conditional_t<std::is_same_v<T, float>, float, std::int32_t>;
    using Operation = StatusCode (*)(const T *, std::int32_t, T *, std::int32_t, RoiSize, BorderKind, T,
                                     const GrayMorphSpec *, std::uint8_t *);
    PixelTypeCode type;
    Value nowhere; // marks a position that is not part
    StatusCode (*sizes)(std::int32_t, RoiSize, std::int32_t *, std::int32_t *);
    StatusCode (*init)(std::int32_t, const Value *, RoiSize, GrayMorphSpec *);
    Operation erode, dilate;
};

#define MEMBER(TYPE, NOWHERE, SUFFIX)                                                                                  \
    {                                                                                                                  \
        TYPE, NOWHERE, rvxiGrayMorphologyGetSize_##SUFFIX, rvxiGrayMorphologyInit_##SUFFIX,                            \
            rvxiGrayErodeBorder_##SUFFIX, rvxiGrayDilateBorder_##SUFFIX                                                \
    }
const Member<std::uint8_t> bytes MEMBER(PixelType8u, INT32_MIN, 8u_C1R);
const Member<float> floats MEMBER(PixelType32f, -std::numeric_limits<float>::infinity(), 32f_C1R);

template <class Check> void forBoth(const Check &check) {
    check(bytes);
    check(floats);
}

template <class T> struct Term {
    std::int64_t x, y;
    typename Member<T>::Value value;
};

// A structuring function: its table, and the list of its terms relative to the anchor.
template <class T> struct Function {
    using Value = typename Member<T>::Value;
    RoiSize size;
    std::vector<Value> table;
    std::vector<Term<T>> terms;

    template <class ValueAt> Function(const Member<T> &member, RoiSize s, const ValueAt &valueAt) : size(s) {
        for (std::int32_t j = 0; j < s.height; ++j) {
            for (std::int32_t i = 0; i < s.width; ++i) {
                const Value value = static_cast<Value>(valueAt(i, j));
                table.push_back(value);
                if (value != member.nowhere) {
                    terms.push_back({i - (s.width - 1) / 2, j - (s.height - 1) / 2, value});
                }
            }
        }
    }
};

std::int32_t pick(Rng &rng, std::int64_t low, std::int64_t high) {
    return static_cast<std::int32_t>(uniform(rng, low, high));
}

template <class T> Function<T> randomFunction(const Member<T> &member, RoiSize size, std::int64_t percent, Rng &rng) {
    const std::int64_t limit = std::array{2, 30, 300}[rng() % 3]; // many equal ones; bytes beyond 255
    const auto value = [&](auto, auto) {
        using Value = typename Member<T>::Value;
        return uniform(rng, 0, 99) < percent ? static_cast<Value>(pick(rng, -limit, limit)) : member.nowhere;
    };
    return {member, size, value};
}

// The record stands at a multiple of 8 bytes, as near to the guard as that allows; the buffer at any address.
template <class T> struct Record {
    GuardedBuffer memory, buffer;

    // Of the record and of the buffer.
    static RoiSize sizes(const Member<T> &member, std::int32_t width, RoiSize mask) {
        RoiSize sizes{};
        EXPECT_EQ(member.sizes(width, mask, &sizes.width, &sizes.height), StatusOk);
        return sizes;
    }
    Record(const Member<T> &member, std::int32_t width, const Function<T> &function)
        : memory((sizes(member, width, function.size).width + 7) / 8 * 8),
          buffer(sizes(member, width, function.size).height + width % 2) {
        memory.scribble();
        buffer.spoil(0x11);
        EXPECT_EQ(member.init(width, function.table.data(), function.size, get()), StatusOk);
    }
    GrayMorphSpec *get() { return reinterpret_cast<GrayMorphSpec *>(memory.data()); }
};

template <class T>
void check(const Member<T> &member, Record<T> &record, RoiSize roi, const Function<T> &function, BorderKind border,
           Contents contents, Rng &rng) {
    using Layout = typename GuardedImage<T>::Layout;
    Layout layout{.padding = pick(rng, 0, 2) * static_cast<std::int64_t>(sizeof(T)),
                  .guard = rng() % 2 != 0 ? Guard::behind : Guard::before};
    const auto widen = [&](std::int64_t &margin, BorderKind side, std::int64_t reach) {
        margin = (border & 15) == BorderInMemory || (border & side) != 0 ? std::max(margin, reach) : 0;
    };
    for (const Term<T> &term : function.terms) {
        widen(layout.left, BorderInMemoryLeft, -term.x);
        widen(layout.top, BorderInMemoryTop, -term.y);
        widen(layout.right, BorderInMemoryRight, term.x);
        widen(layout.bottom, BorderInMemoryBottom, term.y);
    }
    GuardedImage<T> src(roi.width, roi.height, layout);
    src.fill(rng, contents);
    const auto borderValue = randomValue<T>(rng, contents);
    for (const bool dilates : {false, true}) {
        GuardedImage<T> dst(roi.width, roi.height, Layout{.padding = sizeof(T), .guard = layout.guard});
        ASSERT_EQ((dilates ? member.dilate : member.erode)(src.data(), src.step(), dst.data(), dst.step(), roi, border,
                                                           borderValue, record.get(), record.buffer.data()),
                  StatusOk);
        const auto expected = [&](auto x, auto y) {
            using Sum = std::conditional_t<std::is_same_v<T, float>, float, std::int64_t>;
            std::vector<Sum> sums;
            for (const Term<T> &term : function.terms) {
                const Sum pixel = borderedPixel(src, x + term.x, y + term.y, border, borderValue);
                sums.push_back(dilates ? pixel + term.value : pixel - term.value);
            }
            const Sum sum = sums.empty() ? src.at(x, y)
                                         : *(dilates ? std::max_element(sums.begin(), sums.end())
                                                     : std::min_element(sums.begin(), sums.end()));
            return std::is_same_v<T, float> ? sum : std::clamp<Sum>(sum, 0, 255);
        };
        ASSERT_TRUE(imageIs(dst, expected))
            << (dilates ? "dilation" : "erosion") << ", function " << function.size.width << "x" << function.size.height
            << ", border " << border;
    }
}

template <class T>
void check(const Member<T> &member, RoiSize roi, const Function<T> &function, BorderKind border, Contents contents,
           Rng &rng) {
    Record<T> record(member, roi.width + pick(rng, 0, 2), function);
    check(member, record, roi, function, border, contents, rng);
}

constexpr Contents contentsOf[] = {Contents::random, Contents::small, Contents::nearMax, Contents::constant};

TEST(GrayMorph, EveryWidthWithOneRecord) {
    forBoth([]<class T>(const Member<T> &member) {
        Rng rng = makeRng("gray widths", sizeof(T));
        for (const RoiSize size : {RoiSize{1, 1}, RoiSize{5, 5}, RoiSize{8, 3}}) {
            const Function<T> function = randomFunction(member, size, 80, rng);
            Record<T> record(member, 300, function);
            const std::vector<std::uint8_t> before(record.memory.data(), record.memory.data() + record.memory.size());
            for (std::int32_t width = 1; width <= 300; width += width < 200 ? 1 : 7) {
                const std::int32_t height = 1 + width % 6;
                check(member, record, {width, height}, function, BorderReplicate, Contents::random, rng);
                check(member, record, {width, height}, function, BorderInMemory, Contents::small, rng);
            }
            EXPECT_TRUE(std::equal(before.begin(), before.end(), record.memory.data())) << "the record was written";
        }
    });
}

// Rows in memory around the region are not touched where no position is: here they cannot be.
TEST(GrayMorph, RowsWithoutPositionsAreNotRead) {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const auto step = static_cast<std::int32_t>(page);
    GuardedBuffer image(5 * step);
    std::memset(image.data(), 10, 5 * page);
    ASSERT_EQ(mprotect(image.data() + page, 3 * page, PROT_NONE), 0); // all but the rows 2 above and 2 below
    for (const std::int32_t width : {20, 200}) {
        const Function<std::uint8_t> function(bytes, {1, 5}, [](auto, auto j) { return j % 4 == 0 ? j : INT32_MIN; });
        Record<std::uint8_t> record(bytes, width, function);
        GuardedImage<std::uint8_t> dst(width, 1);
        ASSERT_EQ(bytes.dilate(image.data() + 2 * page, step, dst.data(), dst.step(), dst.roi(), BorderInMemory, 0,
                               record.get(), record.buffer.data()),
                  StatusOk);
        EXPECT_TRUE(imageIs(dst, [](auto, auto) { return 14; }));
    }
}

TEST(GrayMorph, BordersFunctionsAndRegions) {
    forBoth([]<class T>(const Member<T> &member) {
        Rng rng = makeRng("gray shapes", sizeof(T));
        for (const BorderKind border : bordersOf({BorderConstant, BorderReplicate, BorderInMemory})) {
            for (int i = 0; i < 8; ++i) {
                // Also wider than a vector, than the region, than the buffer of a few rows.
                const RoiSize size{pick(rng, 1, i == 0 ? 160 : 20), pick(rng, 1, i == 1 ? 80 : 12)};
                const RoiSize roi{pick(rng, 1, i % 3 == 0 ? 20 : 330), pick(rng, 1, 24)};
                check(member, roi, randomFunction(member, size, pick(rng, 0, i % 2 == 0 ? 100 : 5), rng), border,
                      contentsOf[i / 2], rng);
            }
            // So large that equal values are taken together.
            const RoiSize size{pick(rng, 1, border < 32 ? 40 : 9), pick(rng, 1, border < 32 ? 30 : 4)};
            check(member, {821 + pick(rng, 0, 40), 10}, randomFunction(member, size, 100, rng), border,
                  Contents::random, rng);
        }
        for (const RoiSize size : {RoiSize{1000, 1}, RoiSize{1, 1000}, RoiSize{300, 2}, RoiSize{67, 2}}) {
            check(member, {1, 2}, randomFunction(member, size, 30, rng), BorderConstant, Contents::random, rng);
            check(member, {770, 1}, randomFunction(member, size, 30, rng), BorderReplicate, Contents::random, rng);
        }
    });
}

TEST(GrayMorph, ExtremeValuesOfBytes) {
    Rng rng = makeRng("gray extremes");
    const std::int32_t values[] = {INT32_MIN, INT32_MIN + 1, -256, -255, -1, 0, 1, 255, 256, INT32_MAX};
    for (const Contents contents : contentsOf) {
        for (const std::int32_t value : values) {
            check(bytes, {150, 3}, {bytes, {3, 2}, [=](auto, auto) { return value; }}, BorderConstant, contents, rng);
        }
        check(bytes, {150, 3}, {bytes, {10, 1}, [&](auto i, auto) { return values[i]; }}, BorderReplicate, contents,
              rng);
    }
}

// A NaN disturbs no pixel whose function does not cover it.
TEST(GrayMorph, NanStaysUnderItsFunction) {
    Rng rng = makeRng("gray nan");
    const Function<float> function = randomFunction(floats, {5, 3}, 100, rng);
    Record<float> record(floats, 60, function);
    GuardedImage<float> src(60, 9), dst(60, 9), disturbed(60, 9);
    src.fill(rng, Contents::random);
    const auto run = [&](GuardedImage<float> &to) {
        return floats.erode(src.data(), src.step(), to.data(), to.step(), src.roi(), BorderReplicate, 0.0f,
                            record.get(), record.buffer.data());
    };
    ASSERT_EQ(run(dst), StatusOk);
    src.set(31, 4, std::numeric_limits<float>::quiet_NaN());
    ASSERT_EQ(run(disturbed), StatusOk);
    EXPECT_TRUE(imageIs(disturbed, [&](auto x, auto y) {
        return std::abs(x - 31) <= 2 && std::abs(y - 4) <= 1 ? disturbed.at(x, y) : dst.at(x, y);
    }));
}

// ------------------------------------------------------------------------------------------------ sizes and statuses

TEST(GrayMorph, SizesAndRecord) {
    forBoth([]<class T>(const Member<T> &member) {
        for (const RoiSize size : {RoiSize{1, 1}, RoiSize{4, 7}, RoiSize{60, 3}}) {
            for (const std::int32_t width : {1, 64, 65, 641}) {
                const std::int64_t row = (width + size.width - 1) * static_cast<std::int64_t>(sizeof(T));
                const RoiSize sizes = Record<T>::sizes(member, width, size);
                EXPECT_EQ(sizes.width, 32 + 12 * size.width * size.height);
                EXPECT_EQ(sizes.height, size.height * ((row + 63) / 64 * 64 + 8) + 64);
            }
        }
        const Function<T> function(member, {4, 2}, [&](auto i, auto j) {
            return i == 3 ? member.nowhere : static_cast<typename Member<T>::Value>(i == 0 ? 300 : -100 * j);
        });
        Record<T> record(member, 17, function);
        const GrayMorphSpec *const spec = record.get();
        EXPECT_EQ(spec->tag, 0x4b617391);
        EXPECT_TRUE(spec->type == member.type && spec->roiWidth == 17 && spec->maskWidth == 4 && spec->maskHeight == 2);
        EXPECT_TRUE(spec->anchorX == 1 && spec->anchorY == 0 && spec->count == 6);
        const auto *entries = reinterpret_cast<const GrayMorphEntry *>(spec + 1);
        EXPECT_TRUE(entries[3].dx == -1 && entries[3].dy == 1 && entries[4].dx == 0 && entries[4].dy == 1);
        EXPECT_TRUE(member.type == PixelType8u ? entries[3].value.of8u == 255 : entries[3].value.of32f == 300.0f);
    });
}

template <class T> struct Call {
    const T *src;
    T *dst;
    const GrayMorphSpec *spec;
    std::uint8_t *buffer;
    std::int32_t srcStep, dstStep;
    RoiSize roi;
    BorderKind border;
};

template <class T> struct InitCall {
    std::int32_t roiWidth;
    const typename Member<T>::Value *values;
    RoiSize mask;
    GrayMorphSpec *spec;
};

TEST(GrayMorph, StatusesInTheOrderOfTheChecks) {
    forBoth([]<class T>(const Member<T> &member) {
        const Function<T> function(member, {3, 3}, [](auto, auto) { return 1; });
        Record<T> record(member, 9, function);
        Record<std::uint8_t> ofBytes(bytes, 9, {bytes, {3, 3}, [](auto, auto) { return 1; }});
        Record<float> ofFloats(floats, 9, {floats, {3, 3}, [](auto, auto) { return 1; }});
        GuardedBuffer tooShort(4); // no record: nothing behind its tag is read
        tooShort.scribble(0);
        GuardedImage<T> src(10, 4), dst(10, 4);
        constexpr auto size = static_cast<std::int32_t>(sizeof(T));
        constexpr RoiSize roi{9, 4};
        constexpr BorderKind border = BorderConstant | BorderInMemoryTop;
        using C = Call<T>;
        Faults<C> faults;
        faults.nulls(&C::src, &C::dst, &C::spec, &C::buffer);
        faults.values(StatusBadContext, &C::spec,
                      {reinterpret_cast<const GrayMorphSpec *>(tooShort.data()),
                       member.type == PixelType8u ? ofFloats.get() : ofBytes.get()});
        faults.empty(&C::roi).shortSteps(9 * size, &C::srcStep, &C::dstStep);
        faults.unevenSteps(src.step(), sizeof(T), &C::srcStep, &C::dstStep);
        faults.values(StatusBadBorder, &C::border, {BorderWrap, BorderMirror | BorderInMemoryTop, 7});
        faults.values(StatusBadSize, &C::roi, {{10, 4}}); // wider than the record
        faults.values(StatusInPlaceNotSupported, &C::src, {dst.data()});
        for (const auto operation : {member.erode, member.dilate}) {
            expectFaultOrder<C>(
                {src.data(), dst.data(), record.get(), record.buffer.data(), src.step(), dst.step(), roi, border},
                faults,
                [&](const C &c) {
                    return operation(c.src, c.srcStep, c.dst, c.dstStep, c.roi, c.border, T{}, c.spec, c.buffer);
                },
                [&] { return dst.bytes(); });
        }

        using I = InitCall<T>;
        Faults<I> initFaults;
        initFaults.nulls(&I::values, &I::spec).values(StatusBadSize, &I::roiWidth, {0, -5, INT32_MAX}).empty(&I::mask);
        initFaults.values(StatusBadSize, &I::mask, {{20000, 20000}});
        std::vector<typename Member<T>::Value> bad = function.table, worse = function.table;
        if (member.type == PixelType32f) {
            bad.back() = std::numeric_limits<typename Member<T>::Value>::quiet_NaN();
            worse.back() = std::numeric_limits<typename Member<T>::Value>::infinity();
            initFaults.values(StatusOutOfRange, &I::values, {bad.data(), worse.data()});
        }
        Record<T> other(member, 9, function);
        expectFaultOrder<I>(
            {9, function.table.data(), function.size, other.get()}, initFaults,
            [&](const I &c) { return member.init(c.roiWidth, c.values, c.mask, c.spec); },
            [&] { return std::vector(other.memory.data(), other.memory.data() + other.memory.size()); });
    });
}

} // namespace
