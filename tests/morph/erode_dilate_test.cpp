// Erosion and dilation against the plain definition, for every type, channel count, border and shape of mask, with
// record, work buffer and images in guarded memory of exactly the promised sizes.
#include "morph/plain_morph.h"
#include "support/counted_alloc.h"
#include "support/status_table.h"

#include "rvxcv.h"

namespace {

using namespace support;

template <class T>
using Operation = StatusCode (*)(const T *, std::int32_t, T *, std::int32_t, RoiSize, BorderKind, T, const MorphSpec *,
                                 std::uint8_t *);
template <class T> struct Member {
    int channels;
    PixelTypeCode typeCode;
    StatusCode (*sizes)(std::int32_t, RoiSize, std::int32_t *, std::int32_t *);
    StatusCode (*init)(std::int32_t, const std::uint8_t *, RoiSize, MorphSpec *, std::uint8_t *);
    Operation<T> erode, dilate;
};

#define MEMBER(CHANNELS, TYPE_CODE, SUFFIX)                                                                            \
    {                                                                                                                  \
        CHANNELS, TYPE_CODE, rvxiMorphologyBorderGetSize_##SUFFIX, rvxiMorphologyBorderInit_##SUFFIX,                  \
            rvxiErodeBorder_##SUFFIX, rvxiDilateBorder_##SUFFIX                                                        \
    }
const Member<std::uint8_t> members8u[] = {MEMBER(1, 1, 8u_C1R), MEMBER(3, 1, 8u_C3R), MEMBER(4, 1, 8u_C4R)};
const Member<std::uint16_t> member16u MEMBER(1, 5, 16u_C1R);
const Member<std::int16_t> member16s MEMBER(1, 7, 16s_C1R);
const Member<float> members32f[] = {MEMBER(1, 13, 32f_C1R), MEMBER(3, 13, 32f_C3R), MEMBER(4, 13, 32f_C4R)};

template <class Check> void forEveryMember(const Check &check) {
    for (const auto &member : members8u) {
        check(member);
    }
    check(member16u);
    check(member16s);
    for (const auto &member : members32f) {
        check(member);
    }
}

Mask ellipse(RoiSize size) {
    return maskOf(size, [=](std::int32_t i, std::int32_t j) {
        const double x = (2 * i - size.width + 1) / static_cast<double>(size.width),
                     y = (2 * j - size.height + 1) / static_cast<double>(size.height);
        return x * x + y * y <= 1;
    });
}

// Any mask whose rows are empty or single runs around the centre column.
Mask randomRuns(RoiSize size, Rng &rng) {
    std::vector<std::int32_t> first, last;
    const std::int32_t centre = (size.width - 1) / 2;
    for (std::int32_t j = 0; j < size.height; ++j) {
        first.push_back(static_cast<std::int32_t>(uniform(rng, 0, centre)));
        last.push_back(static_cast<std::int32_t>(
            j > 0 && j < size.height - 1 && uniform(rng, 0, 5) == 0 ? -1 : uniform(rng, centre, size.width - 1)));
    }
    return maskOf(size, [&](std::int32_t i, std::int32_t j) {
        return i >= first[static_cast<std::size_t>(j)] && i <= last[static_cast<std::size_t>(j)];
    });
}

// A mask's record for images up to a width, in guarded memory.
template <class T> struct Record {
    GuardedBuffer spec, buffer;

    static std::pair<std::int32_t, std::int32_t> sizes(const Member<T> &member, std::int32_t width, RoiSize mask) {
        std::int32_t specSize = 0, bufferSize = 0;
        EXPECT_EQ(member.sizes(width, mask, &specSize, &bufferSize), StatusOk);
        return {specSize, bufferSize};
    }
    Record(const Member<T> &member, std::int32_t width, const Mask &mask)
        : spec(sizes(member, width, mask.size).first), buffer(sizes(member, width, mask.size).second) {
        spec.scribble();
        buffer.spoil(0x11);
        EXPECT_EQ(member.init(width, mask.bytes.data(), mask.size, get(), buffer.data()), StatusOk);
    }
    MorphSpec *get() { return reinterpret_cast<MorphSpec *>(spec.data()); }
    MorphSpec fields() const {
        MorphSpec copy;
        std::memcpy(&copy, spec.data(), sizeof copy);
        return copy;
    }
};

// NaN is left out: where it stands, the result is free.
constexpr Contents contentsOf[] = {Contents::random, Contents::small, Contents::nearMax, Contents::constant};

// The image with exactly the margin that the border flags let the mask read.
template <class T> typename GuardedImage<T>::Layout layoutFor(const Mask &mask, Sides sides, int channels, Rng &rng) {
    const Point2i anchor = mask.centre();
    return {.padding = uniform(rng, 0, 2) * static_cast<std::int64_t>(sizeof(T)),
            .guard = rng() % 2 != 0 ? Guard::behind : Guard::before,
            .left = sides.left ? anchor.x * channels : 0,
            .top = sides.top ? anchor.y : 0,
            .right = sides.right ? (mask.size.width - 1 - anchor.x) * channels : 0,
            .bottom = sides.bottom ? mask.size.height - 1 - anchor.y : 0};
}

template <class T>
void check(const Member<T> &member, Record<T> &record, RoiSize roi, const Mask &mask, BorderKind border,
           Contents contents, Rng &rng) {
    const Sides sides = Sides::of(border);
    GuardedImage<T> src(roi.width * member.channels, roi.height, layoutFor<T>(mask, sides, member.channels, rng));
    src.fill(rng, contents);
    const std::vector<Offset> offsets = maskOffsets(mask.bytes, mask.size, mask.centre());
    for (const bool maximum : {false, true}) {
        GuardedImage<T> dst(roi.width * member.channels, roi.height,
                            {.padding = 4, .guard = rng() % 2 != 0 ? Guard::behind : Guard::before});
        ASSERT_EQ((maximum ? member.dilate : member.erode)(src.data(), src.step(), dst.data(), dst.step(), roi, border,
                                                           T{7}, record.get(), record.buffer.data()),
                  StatusOk);
        ASSERT_TRUE(imageIs(
            dst, [&](auto x, auto y) { return plainExtremum(src, member.channels, offsets, maximum, sides, x, y); }))
            << (maximum ? "dilation" : "erosion") << " mask " << mask.size.width << "x" << mask.size.height
            << " border " << border << " channels " << member.channels << " shape " << record.fields().shape;
    }
}

template <class T>
void check(const Member<T> &member, RoiSize roi, const Mask &mask, BorderKind border, Contents contents, Rng &rng) {
    Record<T> record(member, roi.width + static_cast<std::int32_t>(rng() % 3), mask);
    check(member, record, roi, mask, border, contents, rng);
}

BorderKind anyBorder(Rng &rng) {
    const std::int64_t pick = uniform(rng, 0, 40);
    if (pick >= 16 && pick < 18) {
        return static_cast<BorderKind>(BorderInMemory | (pick - 16) << 5);
    }
    return static_cast<BorderKind>(BorderReplicate | (pick < 16 ? pick << 4 : 0));
}

TEST(ErodeDilate, All512MasksOf3x3) {
    forEveryMember([](const auto &member) {
        Rng rng = makeRng("all 3x3", static_cast<unsigned>(member.channels + 8 * member.typeCode));
        for (int bits = 0; bits < 512; ++bits) {
            const Mask mask = maskOf({3, 3}, [=](auto i, auto j) { return (bits >> (3 * j + i) & 1) != 0; });
            check(member,
                  {static_cast<std::int32_t>(uniform(rng, 1, 80)), static_cast<std::int32_t>(uniform(rng, 1, 6))}, mask,
                  BorderReplicate, contentsOf[bits % 4], rng);
            check(member,
                  {static_cast<std::int32_t>(uniform(rng, 1, 80)), static_cast<std::int32_t>(uniform(rng, 1, 6))}, mask,
                  anyBorder(rng), contentsOf[bits % 4], rng);
        }
    });
}

TEST(ErodeDilate, RandomMasksOfEveryShape) {
    forEveryMember([](const auto &member) {
        Rng rng = makeRng("random masks", static_cast<unsigned>(member.channels + 8 * member.typeCode));
        for (int i = 0; i < 240; ++i) {
            const RoiSize size{static_cast<std::int32_t>(uniform(rng, 1, 17)),
                               static_cast<std::int32_t>(uniform(rng, 1, 13))};
            const RoiSize roi{static_cast<std::int32_t>(uniform(rng, 1, i % 3 == 0 ? 20 : 150)),
                              static_cast<std::int32_t>(uniform(rng, 1, 20))};
            const RoiSize hole{static_cast<std::int32_t>(uniform(rng, 0, size.width - 1)),
                               static_cast<std::int32_t>(uniform(rng, 0, size.height - 1))};
            const Mask mask = i % 4 == 0   ? randomMask(size, static_cast<int>(uniform(rng, 0, 100)), rng)
                              : i % 4 == 1 ? randomRuns(size, rng)
                              : i % 4 == 2
                                  ? ellipse(size)
                                  : maskOf(size, [=](auto x, auto y) { return x >= hole.width && y <= hole.height; });
            check(member, roi, mask, anyBorder(rng), contentsOf[i / 4 % 4], rng);
        }
    });
}

TEST(ErodeDilate, EveryBorderOnEveryShape) {
    Rng rng = makeRng("borders");
    const Mask masks[] = {ellipse({7, 5}), maskOf({4, 4}, [](auto, auto) { return true; }), randomMask({6, 5}, 50, rng),
                          maskOf({5, 3}, [](auto, auto) { return false; })};
    forEveryMember([&](const auto &member) {
        for (const Mask &mask : masks) {
            for (const std::int32_t kind : {BorderReplicate, BorderInMemory}) {
                for (std::int32_t flags = 0; flags < 256; flags += 16) {
                    check(member, {static_cast<std::int32_t>(uniform(rng, 1, 70)), 6}, mask, kind | flags,
                          Contents::random, rng);
                }
            }
        }
    });
}

// Windows that are filtered in registers read no byte beyond what the border gives them.
TEST(ErodeDilate, EveryBorderOnSmallRectangles) {
    forEveryMember([&](const auto &member) {
        Rng rng = makeRng("small rectangles", static_cast<unsigned>(member.channels + 8 * member.typeCode));
        for (const RoiSize size : {RoiSize{3, 3}, RoiSize{5, 5}, RoiSize{7, 7}, RoiSize{9, 1}}) {
            const Mask mask = maskOf(size, [](auto, auto) { return true; });
            for (std::int32_t flags = 0; flags < 256; flags += 16) {
                const std::int32_t narrow = 16 + static_cast<std::int32_t>(uniform(rng, 0, 60));
                const std::int32_t height = static_cast<std::int32_t>(uniform(rng, 1, 6));
                check(member, {narrow, height}, mask, BorderReplicate | flags, Contents::random, rng);
                check(member, {512 + narrow, height}, mask, BorderReplicate | flags, Contents::random, rng);
            }
            check(member, {544, 5}, mask, BorderInMemory, Contents::random, rng);
        }
    });
}

TEST(ErodeDilate, MasksLargerThanTheRegion) {
    forEveryMember([](const auto &member) {
        Rng rng = makeRng("large masks", static_cast<unsigned>(member.channels + 8 * member.typeCode));
        for (int i = 0; i < 60; ++i) {
            const RoiSize size{static_cast<std::int32_t>(uniform(rng, 1, i % 3 == 0 ? 150 : 30)),
                               static_cast<std::int32_t>(uniform(rng, 1, i % 3 == 1 ? 60 : 6))};
            const RoiSize roi{static_cast<std::int32_t>(uniform(rng, 1, 25)),
                              static_cast<std::int32_t>(uniform(rng, 1, 8))};
            const Mask mask = i % 3 == 0   ? maskOf(size, [](auto, auto) { return true; })
                              : i % 3 == 1 ? randomRuns(size, rng)
                                           : randomMask(size, 40, rng);
            check(member, roi, mask, i % 2 == 0 ? BorderReplicate : anyBorder(rng), contentsOf[i % 4], rng);
        }
        check(member, {1, 2}, maskOf({1000, 1}, [](auto, auto) { return true; }), BorderReplicate, Contents::random,
              rng);
        check(member, {1, 2}, randomMask({1000, 1}, 50, rng), BorderReplicate, Contents::random, rng);
        check(member, {2, 1}, randomMask({1, 1000}, 50, rng), BorderReplicate, Contents::random, rng);
        check(member, {2, 1}, maskOf({700, 3}, [](auto, auto) { return true; }), BorderReplicate | BorderInMemoryLeft,
              Contents::random, rng);
    });
}

TEST(ErodeDilate, WideImagesAndLargeMasks) {
    Rng rng = makeRng("wide");
    check(members8u[0], {1283, 40}, ellipse({31, 31}), BorderReplicate, Contents::random, rng);
    check(members8u[1], {643, 30}, ellipse({11, 11}), BorderReplicate, Contents::random, rng);
    check(members8u[2], {643, 30}, maskOf({25, 9}, [](auto, auto) { return true; }), BorderReplicate, Contents::random,
          rng);
    check(members8u[2], {300, 9}, maskOf({280, 1}, [](auto, auto) { return true; }), BorderReplicate, Contents::random,
          rng);
    check(members32f[2], {643, 30}, ellipse({11, 9}), BorderInMemory, Contents::random, rng);
    check(member16s, {1283, 30}, randomMask({70, 7}, 50, rng), BorderReplicate, Contents::random, rng);
    // The scratch counts one channel.
    for (const std::int32_t width : {100, 331, 750, 1300, 2000}) {
        for (std::int32_t height = 1; height <= 4; ++height) {
            const Mask mask = maskOf({2 + width % 7, height}, [](auto, auto) { return true; });
            check(members8u[1], {width, 5}, mask, BorderReplicate, Contents::random, rng);
            check(members8u[2], {width, 5}, mask, BorderReplicate, Contents::random, rng);
        }
    }
    for (const std::int32_t height : {64, 65}) {
        check(members8u[0], {200, 40}, randomMask({3, height}, 50, rng), BorderReplicate, Contents::random, rng);
    }
}

// One record serves every region up to its width, erosion and dilation alike, and is never written; steps need not
// count channels; two threads share it.
TEST(ErodeDilate, OneRecordServesEveryRegionUpToItsWidth) {
    forEveryMember([]<class T>(const Member<T> &member) {
        Rng rng = makeRng("regions", static_cast<unsigned>(member.channels + 8 * member.typeCode));
        for (const Mask &mask :
             {ellipse({7, 7}), randomMask({5, 5}, 50, rng), maskOf({5, 7}, [](auto, auto) { return true; })}) {
            Record<T> record(member, 70, mask);
            const std::vector<std::uint8_t> before(record.spec.data(), record.spec.data() + record.spec.size());
            for (std::int32_t width = 1; width <= 70; ++width) {
                check(member, record, {width, 1 + width % 5}, mask, BorderReplicate, Contents::random, rng);
            }
            EXPECT_TRUE(std::equal(before.begin(), before.end(), record.spec.data())) << "the record was written";
        }
    });
}

TEST(ErodeDilate, StepsOfOneChannel) {
    const auto run = []<class T>(const Member<T> &member) {
        Rng rng = makeRng("short steps");
        constexpr std::int32_t width = 37, height = 9;
        for (const Mask &mask :
             {ellipse({7, 7}), randomMask({5, 5}, 50, rng), maskOf({1, 5}, [](auto, auto) { return true; }),
              maskOf({4, 4}, [](auto, auto) { return true; }), maskOf({2, 2}, [](auto, auto) { return false; })}) {
            Record<T> record(member, width, mask);
            const std::int32_t step = width * static_cast<std::int32_t>(sizeof(T));
            const std::size_t elements = static_cast<std::size_t>(width * (height - 1 + member.channels));
            std::vector<T> src(elements), dst(elements), want(elements);
            for (T &value : src) {
                value = randomValue<T>(rng, Contents::random);
            }
            // The same rows, apart from each other.
            GuardedImage<T> apart(width * member.channels, height);
            for (std::int64_t y = 0; y < height; ++y) {
                for (std::int64_t x = 0; x < apart.width(); ++x) {
                    apart.set(x, y, src[static_cast<std::size_t>(y * width + x)]);
                }
            }
            const std::vector<Offset> offsets = maskOffsets(mask.bytes, mask.size, mask.centre());
            for (std::int64_t y = 0; y < height; ++y) {
                for (std::int64_t x = 0; x < apart.width(); ++x) {
                    want[static_cast<std::size_t>(y * width + x)] =
                        plainExtremum(apart, member.channels, offsets, true, {}, x, y);
                }
            }
            ASSERT_EQ(member.dilate(src.data(), step, dst.data(), step, {width, height}, BorderReplicate, T{},
                                    record.get(), record.buffer.data()),
                      StatusOk);
            EXPECT_EQ(dst, want) << "shape " << record.fields().shape << " channels " << member.channels;
        }
    };
    run(members8u[1]);
    run(members8u[2]);
    run(members32f[1]);
    run(members32f[2]);
}

// ------------------------------------------------------------------------------------------------ sizes and records

TEST(MorphRecord, SizesFollowTheFormula) {
    const auto align16 = [](std::int64_t n) { return (n + 15) & ~std::int64_t{15}; };
    const auto expect = [&](auto query, std::int64_t pixelBytes, bool bits) {
        for (const std::int64_t width : {1, 641}) {
            for (const RoiSize mask : {RoiSize{1, 1}, RoiSize{3, 3}, RoiSize{17, 13}, RoiSize{2, 101}}) {
                const std::int64_t mh = mask.height, positions = align16(std::int64_t{mask.width} * mh);
                const std::int64_t rank = 2 * mh * (width * pixelBytes + 32) + 32 * mh + 32;
                const std::int64_t run = (mh * mh + 1) * (width * pixelBytes + 32) + 40 * mh + 40;
                std::int32_t specSize = 0, bufferSize = 0;
                ASSERT_EQ(query(static_cast<std::int32_t>(width), mask, &specSize, &bufferSize), StatusOk);
                EXPECT_EQ(specSize, bits ? 3 * positions + 96 : 33 * positions + 16 * mh + 160);
                EXPECT_EQ(bufferSize, std::max(rank, run) + align16(24 * mh) + positions + 16 * mh + 64);
            }
        }
    };
    expect(rvxiMorphologyBorderGetSize_8u_C1R, 1, false);
    expect(rvxiMorphologyBorderGetSize_8u_C3R, 1, false);
    expect(rvxiMorphologyBorderGetSize_8u_C4R, 1, false);
    expect(rvxiMorphologyBorderGetSize_16u_C1R, 2, false);
    expect(rvxiMorphologyBorderGetSize_16s_C1R, 2, false);
    expect(rvxiMorphologyBorderGetSize_32f_C1R, 4, false);
    expect(rvxiMorphologyBorderGetSize_32f_C3R, 12, false);
    expect(rvxiMorphologyBorderGetSize_32f_C4R, 16, false);
    expect(rvxiMorphologyBorderGetSize_1u_C1R, 1, true);
}

MorphSpec recordOf(const Mask &mask) { return Record<std::uint8_t>(members8u[0], 100, mask).fields(); }

Mask drawn(std::initializer_list<std::string_view> rows) {
    return maskOf({static_cast<std::int32_t>(rows.begin()->size()), static_cast<std::int32_t>(rows.size())},
                  [&](auto i, auto j) { return rows.begin()[j][static_cast<std::size_t>(i)] == 'x'; });
}

TEST(MorphRecord, Shapes) {
    EXPECT_EQ(recordOf(drawn({"x"})).shape, MaskRectangle);
    EXPECT_EQ(recordOf(drawn({"..", ".."})).shape, MaskEmpty);
    EXPECT_EQ(recordOf(drawn({".x.", "xxx", ".x."})).shape, MaskEllipse);
    EXPECT_EQ(recordOf(drawn({"xxx", "x.x", "xxx"})).shape, MaskGeneral);
    // Rows without non-zeros between runs, and a rectangle with a gap.
    EXPECT_EQ(recordOf(drawn({"xxx", "...", "xxx"})).shape, MaskEllipse);
    // Single runs that miss the anchor's column, or the anchor's row outside all of them.
    EXPECT_EQ(recordOf(drawn({"x..", ".xx", ".xx"})).shape, MaskGeneral);
    EXPECT_EQ(recordOf(drawn({".x.", "...", "..."})).shape, MaskRectangle);
    EXPECT_EQ(recordOf(drawn({"...", "...", ".x.", "xxx", "..."})).shape, MaskEllipse);
    EXPECT_EQ(recordOf(drawn({"...", "...", "...", ".x.", "xxx"})).shape, MaskGeneral);
    EXPECT_EQ(recordOf(drawn({"xxx", ".x.", "...", "...", "..."})).shape, MaskGeneral);

    const MorphSpec right = recordOf(drawn({"..x", "..x", "..x"}));
    EXPECT_EQ(right.shape, MaskRectangle);
    EXPECT_TRUE(right.rectangleWidth == 1 && right.rectangleHeight == 3);
    EXPECT_TRUE(right.rectangleAnchorX == -1 && right.rectangleAnchorY == 1);

    const MorphSpec even = recordOf(drawn({"xxxx", "xxxx", "xxxx", "xxxx"}));
    EXPECT_TRUE(even.anchorX == 1 && even.anchorY == 1 && even.rightExtent == 2 && even.bottomExtent == 2);
    EXPECT_TRUE(even.rowBufferBytes == 112 && even.marker == -1 && even.typeCode == PixelType8u);
    EXPECT_EQ(recordOf(drawn({"."})).rowBufferBytes, 0);
}

// The record points into itself; runs and neutral tables say what the mask says.
TEST(MorphRecord, TablesLieInsideTheRecord) {
    Record<std::int16_t> runs(member16s, 9, drawn({".x.", "...", "xxx", ".xx", "..."}));
    const MorphSpec ellipseFields = runs.fields();
    ASSERT_EQ(ellipseFields.runCount, 3);
    const RowRun want[] = {{0, 1, 0, 0}, {2, 3, -1, 0}, {3, 2, 0, 0}};
    EXPECT_EQ(std::memcmp(ellipseFields.runsTable, want, sizeof want), 0);

    Record<std::int16_t> general(member16s, 9, drawn({"x.x"}));
    const MorphSpec fields = general.fields();
    EXPECT_EQ(fields.runsTable, nullptr);
    EXPECT_EQ(fields.maskCopy[0], 1);
    EXPECT_EQ(fields.maskCopy[1], 0);
    std::int16_t low = 0, high = 0;
    std::memcpy(&low, fields.neutralMin, 2);
    std::memcpy(&high, fields.neutralMin + 16, 2);
    EXPECT_TRUE(low == INT16_MIN && high == INT16_MAX) << "the minimum's table";
    std::memcpy(&high, fields.neutralMax, 2);
    std::memcpy(&low, fields.neutralMax + 16, 2);
    EXPECT_TRUE(low == INT16_MIN && high == INT16_MAX) << "the maximum's table";
    for (const std::uint8_t *p : {fields.maskCopy, fields.neutralMin, fields.neutralMax + 3 * 16 - 1}) {
        EXPECT_TRUE(p >= general.spec.data() && p < general.spec.data() + general.spec.size());
    }
}

TEST(MorphRecord, InitStatuses) {
    forEveryMember([]<class T>(const Member<T> &member) {
        const Mask mask = drawn({"x.x", "xxx", "..."});
        const auto [specSize, bufferSize] = Record<T>::sizes(member, 9, mask.size);
        GuardedBuffer spec(specSize), buffer(bufferSize);
        auto *record = reinterpret_cast<MorphSpec *>(spec.data());
        EXPECT_EQ(member.init(0, nullptr, mask.size, record, buffer.data()), StatusNullPointer);
        EXPECT_EQ(member.init(0, mask.bytes.data(), mask.size, nullptr, buffer.data()), StatusNullPointer);
        EXPECT_EQ(member.init(0, mask.bytes.data(), mask.size, record, nullptr), StatusNullPointer);
        EXPECT_EQ(member.init(0, mask.bytes.data(), mask.size, record, buffer.data()), StatusBadSize);
        EXPECT_EQ(member.init(9, mask.bytes.data(), {0, 3}, record, buffer.data()), StatusBadSize);
        EXPECT_EQ(member.init(9, mask.bytes.data(), {3, -1}, record, buffer.data()), StatusBadSize);
    });
}

// --------------------------------------------------------------------------------------------------------- statuses

template <class T> struct Call {
    const T *src;
    T *dst;
    const MorphSpec *spec;
    std::uint8_t *buffer;
    std::int32_t srcStep, dstStep;
    RoiSize roi;
    BorderKind border;
};

TEST(ErodeDilate, StatusesInTheOrderOfTheChecks) {
    forEveryMember([]<class T>(const Member<T> &member) {
        const Mask mask = drawn({"xxx", "xxx", "xxx"});
        Record<T> record(member, 9, mask);
        constexpr auto size = static_cast<std::int32_t>(sizeof(T));
        GuardedImage<T> src(10 * member.channels, 4), dst(10 * member.channels, 4);
        using C = Call<T>;
        Faults<C> faults;
        faults.nulls(&C::src, &C::dst, &C::spec, &C::buffer).empty(&C::roi);
        faults.shortSteps(9 * size, &C::srcStep, &C::dstStep); // of one channel
        faults.unevenSteps(src.step(), sizeof(T), &C::srcStep, &C::dstStep);
        faults.values(StatusBadBorder, &C::border, {BorderConstant | 16, BorderMirror});
        faults.values(StatusBadSize, &C::roi, {{10, 4}}); // wider than the record
        for (const Operation<T> operation : {member.erode, member.dilate}) {
            expectFaultOrder<Call<T>>(
                {src.data(),
                 dst.data(),
                 record.get(),
                 record.buffer.data(),
                 src.step(),
                 dst.step(),
                 {9, 4},
                 BorderReplicate},
                faults,
                [&](const Call<T> &c) {
                    return operation(c.src, c.srcStep, c.dst, c.dstStep, c.roi, c.border, T{}, c.spec, c.buffer);
                },
                [&] { return dst.bytes(); });
        }
    });
}

// -------------------------------------------------------------------------------------------------- older interface

template <class T>
using OlderOperation = StatusCode (*)(const T *, std::int32_t, T *, std::int32_t, RoiSize, BorderKind, MorphState *);
template <class T> struct OlderMember {
    int channels;
    StatusCode (*size)(std::int32_t, const std::uint8_t *, RoiSize, std::int32_t *);
    StatusCode (*init)(std::int32_t, const std::uint8_t *, RoiSize, Point2i, MorphState *);
    StatusCode (*initAlloc)(std::int32_t, const std::uint8_t *, RoiSize, Point2i, MorphState **);
    OlderOperation<T> erode, dilate;
    StatusCode (*sizes)(std::int32_t, RoiSize, std::int32_t *, std::int32_t *); // of the current interface
};

#define OLDER(CHANNELS, SUFFIX)                                                                                        \
    {                                                                                                                  \
        CHANNELS, rvxiMorphologyGetSize_##SUFFIX, rvxiMorphologyInit_##SUFFIX, rvxiMorphologyInitAlloc_##SUFFIX,       \
            rvxiErodeBorderReplicate_##SUFFIX, rvxiDilateBorderReplicate_##SUFFIX,                                     \
            rvxiMorphologyBorderGetSize_##SUFFIX                                                                       \
    }
const OlderMember<std::uint8_t> older8u[] = {OLDER(1, 8u_C1R), OLDER(3, 8u_C3R), OLDER(4, 8u_C4R)};
const OlderMember<float> older32f[] = {OLDER(1, 32f_C1R), OLDER(3, 32f_C3R), OLDER(4, 32f_C4R)};

template <class Check> void forEveryOlderMember(const Check &check) {
    for (const auto &member : older8u) {
        check(member);
    }
    for (const auto &member : older32f) {
        check(member);
    }
}

TEST(OlderErodeDilate, AnyAnchorInCallersAndInLibraryMemory) {
    forEveryOlderMember([]<class T>(const OlderMember<T> &member) {
        Rng rng = makeRng("older", static_cast<unsigned>(member.channels) + 8 * sizeof(T));
        CountedAlloc::reset();
        const std::int64_t liveBefore = CountedAlloc::live;
        for (int i = 0; i < 120; ++i) {
            const RoiSize size{static_cast<std::int32_t>(uniform(rng, 1, 9)),
                               static_cast<std::int32_t>(uniform(rng, 1, 9))};
            const RoiSize hole{static_cast<std::int32_t>(uniform(rng, 0, size.width - 1)),
                               static_cast<std::int32_t>(uniform(rng, 0, size.height - 1))};
            const Mask mask = i % 3 == 0
                                  ? maskOf(size, [=](auto x, auto y) { return x >= hole.width && y >= hole.height; })
                              : i % 3 == 1 ? randomRuns(size, rng)
                                           : randomMask(size, 50, rng);
            const Point2i anchor{static_cast<std::int32_t>(uniform(rng, 0, size.width - 1)),
                                 static_cast<std::int32_t>(uniform(rng, 0, size.height - 1))};
            const RoiSize roi{static_cast<std::int32_t>(uniform(rng, 1, 60)),
                              static_cast<std::int32_t>(uniform(rng, 1, 12))};
            std::int32_t stateSize = 0, specSize = 0, bufferSize = 0;
            ASSERT_EQ(member.size(roi.width, mask.bytes.data(), size, &stateSize), StatusOk);
            ASSERT_EQ(member.sizes(roi.width, size, &specSize, &bufferSize), StatusOk);
            ASSERT_EQ(stateSize, specSize + bufferSize);
            GuardedBuffer memory(stateSize);
            memory.scribble();
            auto *state = reinterpret_cast<MorphState *>(memory.data());
            ASSERT_EQ(member.init(roi.width, mask.bytes.data(), size, anchor, state), StatusOk);
            MorphState *allocated = nullptr;
            ASSERT_EQ(member.initAlloc(roi.width, mask.bytes.data(), size, anchor, &allocated), StatusOk);

            GuardedImage<T> src(roi.width * member.channels, roi.height),
                eroded(roi.width * member.channels, roi.height), dilated(roi.width * member.channels, roi.height);
            src.fill(rng, contentsOf[i % 4]);
            ASSERT_EQ(member.erode(src.data(), src.step(), eroded.data(), eroded.step(), roi, BorderReplicate, state),
                      StatusOk);
            ASSERT_EQ(
                member.dilate(src.data(), src.step(), dilated.data(), dilated.step(), roi, BorderReplicate, allocated),
                StatusOk);
            ASSERT_EQ(rvxiMorphologyFree(allocated), StatusOk);
            const std::vector<Offset> offsets = maskOffsets(mask.bytes, size, anchor);
            ASSERT_TRUE(imageIs(
                eroded, [&](auto x, auto y) { return plainExtremum(src, member.channels, offsets, false, {}, x, y); }));
            ASSERT_TRUE(imageIs(
                dilated, [&](auto x, auto y) { return plainExtremum(src, member.channels, offsets, true, {}, x, y); }));
        }
        EXPECT_EQ(CountedAlloc::live, liveBefore);
        EXPECT_GT(CountedAlloc::made, 0) << "the allocator was not taken over";
    });
}

TEST(OlderErodeDilate, FailedAllocationsLeaveNothing) {
    forEveryOlderMember([](const auto &member) {
        const Mask mask = drawn({".x.", "xxx", ".x."});
        failEveryAllocation<MorphState>(
            [&](MorphState **state) {
                return member.initAlloc(33, mask.bytes.data(), mask.size, {1, 1}, state);
            },
            rvxiMorphologyFree);
    });
    EXPECT_EQ(rvxiMorphologyFree(nullptr), StatusNullPointer);
}

TEST(OlderErodeDilate, StatusesInTheOrderOfTheChecks) {
    forEveryOlderMember([]<class T>(const OlderMember<T> &member) {
        const Mask mask = drawn({"xxx", "xxx", "xxx"});
        std::int32_t stateSize = 0;
        EXPECT_EQ(member.size(0, nullptr, mask.size, &stateSize), StatusNullPointer);
        EXPECT_EQ(member.size(9, mask.bytes.data(), {3, 0}, &stateSize), StatusBadSize);
        ASSERT_EQ(member.size(9, mask.bytes.data(), mask.size, &stateSize), StatusOk);
        GuardedBuffer memory(stateSize);
        auto *state = reinterpret_cast<MorphState *>(memory.data());
        MorphState *allocated = nullptr;
        const auto bothInits = [&](std::int32_t width, const std::uint8_t *bytes, RoiSize size, Point2i anchor) {
            const StatusCode status = member.init(width, bytes, size, anchor, state);
            EXPECT_EQ(member.initAlloc(width, bytes, size, anchor, &allocated), status);
            EXPECT_EQ(allocated, nullptr);
            return status;
        };
        EXPECT_EQ(bothInits(0, nullptr, {0, 0}, {9, 9}), StatusNullPointer);
        EXPECT_EQ(member.init(0, mask.bytes.data(), {0, 0}, {9, 9}, nullptr), StatusNullPointer);
        EXPECT_EQ(member.initAlloc(0, mask.bytes.data(), {0, 0}, {9, 9}, nullptr), StatusNullPointer);
        EXPECT_EQ(bothInits(0, mask.bytes.data(), mask.size, {9, 9}), StatusBadSize);
        EXPECT_EQ(bothInits(9, mask.bytes.data(), {3, 0}, {9, 9}), StatusBadSize);
        for (const Point2i anchor : {Point2i{-1, 0}, Point2i{3, 0}, Point2i{0, -1}, Point2i{0, 3}}) {
            EXPECT_EQ(bothInits(9, mask.bytes.data(), mask.size, anchor), StatusBadAnchor);
        }
        ASSERT_EQ(member.init(9, mask.bytes.data(), mask.size, {0, 2}, state), StatusOk);

        constexpr auto size = static_cast<std::int32_t>(sizeof(T));
        GuardedImage<T> src(10 * member.channels, 4), dst(10 * member.channels, 4);
        struct OlderCall {
            const T *src;
            T *dst;
            MorphState *state;
            std::int32_t srcStep, dstStep;
            RoiSize roi;
            BorderKind border;
        };
        using C = OlderCall;
        Faults<C> faults;
        faults.nulls(&C::src, &C::dst, &C::state).empty(&C::roi).shortSteps(9 * size, &C::srcStep, &C::dstStep);
        faults.unevenSteps(src.step(), sizeof(T), &C::srcStep, &C::dstStep);
        faults.values(StatusBadArgument, &C::border, {BorderInMemory, BorderReplicate | BorderInMemoryTop});
        faults.values(StatusBadSize, &C::roi, {{10, 4}}); // wider than the state
        for (const OlderOperation<T> operation : {member.erode, member.dilate}) {
            expectFaultOrder<OlderCall>(
                {src.data(), dst.data(), state, src.step(), dst.step(), {9, 4}, BorderReplicate}, faults,
                [&](const OlderCall &c) {
                    return operation(c.src, c.srcStep, c.dst, c.dstStep, c.roi, c.border, c.state);
                },
                [&] { return dst.bytes(); });
        }
    });
}

} // namespace
