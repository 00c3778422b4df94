// Rank filters against the plain definition: masks, anchors and regions of all proportions, every member, buffers of
// exactly the promised size.
#include "morph/plain_morph.h"
#include "support/status_table.h"

#include "rvxcv.h"

namespace {

using namespace support;

template <class T>
using Filter = StatusCode (*)(const T *, std::int32_t, T *, std::int32_t, RoiSize, RoiSize, Point2i, std::uint8_t *);
using Query = StatusCode (*)(std::int32_t, RoiSize, std::int32_t *);

template <class T> struct Member {
    Filter<T> filter;
    Query query;
    int channels;
    bool maximum;
};

const Member<std::uint8_t> bytes[] = {
    {rvxiFilterMinBorderReplicate_8u_C1R, rvxiFilterMinGetBufferSize_8u_C1R, 1, false},
    {rvxiFilterMinBorderReplicate_8u_C3R, rvxiFilterMinGetBufferSize_8u_C3R, 3, false},
    {rvxiFilterMinBorderReplicate_8u_C4R, rvxiFilterMinGetBufferSize_8u_C4R, 4, false},
    {rvxiFilterMaxBorderReplicate_8u_C1R, rvxiFilterMaxGetBufferSize_8u_C1R, 1, true},
    {rvxiFilterMaxBorderReplicate_8u_C3R, rvxiFilterMaxGetBufferSize_8u_C3R, 3, true},
    {rvxiFilterMaxBorderReplicate_8u_C4R, rvxiFilterMaxGetBufferSize_8u_C4R, 4, true},
};
const Member<float> floats[] = {
    {rvxiFilterMinBorderReplicate_32f_C1R, rvxiFilterMinGetBufferSize_32f_C1R, 1, false},
    {rvxiFilterMinBorderReplicate_32f_C3R, rvxiFilterMinGetBufferSize_32f_C3R, 3, false},
    {rvxiFilterMinBorderReplicate_32f_C4R, rvxiFilterMinGetBufferSize_32f_C4R, 4, false},
    {rvxiFilterMaxBorderReplicate_32f_C1R, rvxiFilterMaxGetBufferSize_32f_C1R, 1, true},
    {rvxiFilterMaxBorderReplicate_32f_C3R, rvxiFilterMaxGetBufferSize_32f_C3R, 3, true},
    {rvxiFilterMaxBorderReplicate_32f_C4R, rvxiFilterMaxGetBufferSize_32f_C4R, 4, true},
};

template <class Check> void forEveryMember(const Check &check) {
    for (const auto &member : bytes) {
        check(member);
    }
    for (const auto &member : floats) {
        check(member);
    }
}

// Two passes of the plain definition: along rows, then along columns.
template <class T>
std::vector<T> plainRectangle(const GuardedImage<T> &src, int channels, RoiSize mask, Point2i anchor, bool maximum) {
    std::vector<Offset> row, column;
    for (std::int32_t i = 0; i < mask.width; ++i) {
        row.push_back({i - anchor.x, 0});
    }
    for (std::int32_t j = 0; j < mask.height; ++j) {
        column.push_back({0, j - anchor.y});
    }
    GuardedImage<T> rows(src.width(), src.height());
    std::vector<T> result;
    for (std::int64_t y = 0; y < src.height(); ++y) {
        for (std::int64_t x = 0; x < src.width(); ++x) {
            rows.set(x, y, plainExtremum(src, channels, row, maximum, {}, x, y));
        }
    }
    for (std::int64_t y = 0; y < src.height(); ++y) {
        for (std::int64_t x = 0; x < src.width(); ++x) {
            result.push_back(plainExtremum(rows, channels, column, maximum, {}, x, y));
        }
    }
    return result;
}

template <class T>
void check(const Member<T> &member, RoiSize roi, RoiSize mask, Point2i anchor, Contents contents, Rng &rng) {
    const std::int64_t padding = uniform(rng, 0, 2) * static_cast<std::int64_t>(sizeof(T));
    const Guard guard = rng() % 2 != 0 ? Guard::behind : Guard::before;
    GuardedImage<T> src(roi.width * member.channels, roi.height, {.padding = padding, .guard = guard}),
        dst(roi.width * member.channels, roi.height, {.padding = 4 - padding % 4, .guard = guard});
    src.fill(rng, contents);
    std::int32_t size = 0;
    ASSERT_EQ(member.query(roi.width, mask, &size), StatusOk);
    GuardedBuffer buffer(size, guard);
    buffer.spoil();
    const std::vector<T> want = plainRectangle(src, member.channels, mask, anchor, member.maximum);
    ASSERT_EQ(member.filter(src.data(), src.step(), dst.data(), dst.step(), roi, mask, anchor, buffer.data()),
              StatusOk);
    ASSERT_TRUE(imageIs(dst, [&](auto x, auto y) { return want[static_cast<std::size_t>(y * dst.width() + x)]; }))
        << "mask " << mask.width << "x" << mask.height << " anchor " << anchor.x << "," << anchor.y << " channels "
        << member.channels << " maximum " << member.maximum;
}

// NaN is left out: where it stands, the result is free.
constexpr Contents contentsOf[] = {Contents::random, Contents::small, Contents::nearMax, Contents::constant};

TEST(RankFilter, EveryMaskWidthAndHeight) {
    forEveryMember([](const auto &member) {
        Rng rng = makeRng("rank masks", static_cast<unsigned>(member.channels) + 16 * member.maximum);
        for (std::int32_t size = 1; size <= 40; ++size) {
            const RoiSize roi{static_cast<std::int32_t>(uniform(rng, 1, 90)),
                              static_cast<std::int32_t>(uniform(rng, 1, 24))};
            check(member, roi, {size, 3}, {size / 2, 1}, contentsOf[size % 4], rng);
            check(member, roi, {3, size}, {1, size / 3}, contentsOf[size % 4], rng);
        }
    });
}

TEST(RankFilter, EveryRegionWidth) {
    forEveryMember([](const auto &member) {
        Rng rng = makeRng("rank widths", static_cast<unsigned>(member.channels) + 16 * member.maximum);
        for (std::int32_t width = 1; width <= 134; ++width) {
            // Sometimes more rows than the kernel for small windows takes at once.
            const std::int32_t height = width % 5 == 0 ? 30 + static_cast<std::int32_t>(rng() % 9) : 5;
            check(member, {width, height}, {3, 3}, {1, 1}, contentsOf[width % 4], rng);
            check(member, {width, height}, {5, 5}, {2, 2}, contentsOf[width % 4], rng);
            check(member, {width, 7}, {7, 5}, {6, 0}, contentsOf[width % 4], rng);
            const std::int32_t row = 2 + width % 16;
            check(member, {width, 3}, {row, 1}, {width * 7 % row, 0}, contentsOf[width % 4], rng);
            check(member, {width, 3}, {row, 1}, {row / 2, 0}, contentsOf[width % 4], rng);
            check(member, {width, height % 6 + 1}, {7, 7}, {width % 7, width * 3 % 7}, contentsOf[width % 4], rng);
        }
    });
}

template <class T> std::int32_t pixelBytes(const Member<T> &member) {
    return static_cast<std::int32_t>(sizeof(T)) * member.channels;
}

// Rows from which on 5x5 pixels have another kernel, with every rest behind the last whole vector.
TEST(RankFilter, LongRowsUnderSmallMasks) {
    forEveryMember([](const auto &member) {
        Rng rng = makeRng("rank long rows", static_cast<unsigned>(member.channels) + 16 * member.maximum);
        const std::int32_t size = pixelBytes(member), least = 512 / size;
        for (std::int32_t i = -2; i < 64 / size + 2; ++i) {
            const std::int32_t turn = i + 2, height = 1 + turn % 4;
            check(member, {least + i, height}, {5, 5}, {2, 2}, contentsOf[turn % 4], rng);
            check(member, {least + i, height}, {5, 5}, {turn % 5, turn * 2 % 5}, contentsOf[turn % 4], rng);
        }
    });
}

TEST(RankFilter, MasksLargerThanTheRegion) {
    forEveryMember([](const auto &member) {
        Rng rng = makeRng("rank large masks", static_cast<unsigned>(member.channels) + 16 * member.maximum);
        for (int i = 0; i < 150; ++i) {
            const RoiSize roi{static_cast<std::int32_t>(uniform(rng, 1, 40)),
                              static_cast<std::int32_t>(uniform(rng, 1, 20))};
            const RoiSize mask{static_cast<std::int32_t>(uniform(rng, 1, i % 3 == 0 ? 8 : 120)),
                               static_cast<std::int32_t>(uniform(rng, 1, i % 5 == 0 ? 4 : 60))};
            const Point2i anchor{static_cast<std::int32_t>(uniform(rng, 0, mask.width - 1)),
                                 static_cast<std::int32_t>(uniform(rng, 0, mask.height - 1))};
            check(member, roi, mask, anchor, contentsOf[i % 4], rng);
        }
        check(member, {1, 3}, {1000, 1}, {999, 0}, Contents::random, rng);
        check(member, {1, 1}, {1000, 1000}, {0, 999}, Contents::random, rng);
    });
}

TEST(RankFilter, WideAndHighMasksOnWideImages) {
    Rng rng = makeRng("rank wide");
    for (const RoiSize mask : {RoiSize{15, 15}, RoiSize{31, 31}, RoiSize{101, 101}, RoiSize{255, 2}, RoiSize{2, 255}}) {
        check(bytes[3], {1283, 150}, mask, {mask.width / 2, mask.height / 2}, Contents::random, rng);
        check(bytes[1], {643, 130}, mask, {mask.width / 2, mask.height / 2}, Contents::random, rng);
        check(floats[5], {643, 130}, mask, {mask.width / 2, 0}, Contents::random, rng);
    }
}

// A NaN may change the pixels whose mask covers it and no other.
TEST(RankFilter, NaNStaysUnderTheMask) {
    Rng rng = makeRng("rank nan");
    GuardedImage<float> src(67, 21), clean(67, 21), dst(67, 21);
    src.fill(rng, Contents::random);
    const RoiSize mask{5, 9};
    std::int32_t size = 0;
    ASSERT_EQ(rvxiFilterMaxGetBufferSize_32f_C1R(67, mask, &size), StatusOk);
    GuardedBuffer buffer(size);
    ASSERT_EQ(rvxiFilterMaxBorderReplicate_32f_C1R(src.data(), src.step(), clean.data(), clean.step(), {67, 21}, mask,
                                                   {2, 4}, buffer.data()),
              StatusOk);
    src.set(33, 10, std::numeric_limits<float>::quiet_NaN());
    ASSERT_EQ(rvxiFilterMaxBorderReplicate_32f_C1R(src.data(), src.step(), dst.data(), dst.step(), {67, 21}, mask,
                                                   {2, 4}, buffer.data()),
              StatusOk);
    ASSERT_TRUE(imageIs(dst, [&](auto x, auto y) {
        return std::abs(x - 33) <= 2 && std::abs(y - 10) <= 4 ? dst.at(x, y) : clean.at(x, y);
    }));
}

TEST(RankFilter, SizesFollowTheFormula) {
    const auto promised = [](std::int64_t width, std::int64_t pixelBytes, std::int64_t height) {
        return 2 * height * (width * pixelBytes + 32) + 32 * height + 32;
    };
    forEveryMember([&]<class T>(const Member<T> &member) {
        const std::int64_t pixelBytes = member.channels * static_cast<std::int64_t>(sizeof(T));
        std::int32_t size = 0;
        for (const RoiSize mask : {RoiSize{1, 1}, RoiSize{7, 3}, RoiSize{1000, 101}}) {
            ASSERT_EQ(member.query(641, mask, &size), StatusOk);
            EXPECT_EQ(size, promised(641, pixelBytes, mask.height));
        }
        EXPECT_EQ(member.query(0, {0, 0}, nullptr), StatusNullPointer);
        EXPECT_EQ(member.query(0, {0, 0}, &size), StatusBadSize);
        EXPECT_EQ(member.query(1, {0, 1}, &size), StatusBadMaskSize);
        EXPECT_EQ(member.query(1, {1, 0}, &size), StatusBadMaskSize);
    });
}

template <class T> struct Call {
    const T *src;
    T *dst;
    std::uint8_t *buffer;
    std::int32_t srcStep, dstStep;
    RoiSize roi, mask;
    Point2i anchor;
};

TEST(RankFilter, StatusesInTheOrderOfTheChecks) {
    forEveryMember([]<class T>(const Member<T> &member) {
        GuardedImage<T> src(9 * member.channels, 4), dst(9 * member.channels, 4);
        std::int32_t size = 0;
        ASSERT_EQ(member.query(9, {3, 5}, &size), StatusOk);
        GuardedBuffer buffer(size);
        const std::int32_t row = src.step();
        using C = Call<T>;
        Faults<C> faults;
        faults.nulls(&C::src, &C::dst, &C::buffer).empty(&C::roi);
        faults.values(StatusBadMaskSize, &C::mask, {{0, 5}, {3, 0}});
        faults.values(StatusBadAnchor, &C::anchor, {{-1, 2}, {3, 2}, {1, -1}, {1, 5}});
        faults.shortSteps(row, &C::srcStep, &C::dstStep).unevenSteps(row, sizeof(T), &C::srcStep, &C::dstStep);
        expectFaultOrder<Call<T>>(
            {src.data(), dst.data(), buffer.data(), row, row, {9, 4}, {3, 5}, {1, 2}}, faults,
            [&](const Call<T> &c) {
                return member.filter(c.src, c.srcStep, c.dst, c.dstStep, c.roi, c.mask, c.anchor, c.buffer);
            },
            [&] { return dst.bytes(); });
    });
}

} // namespace
