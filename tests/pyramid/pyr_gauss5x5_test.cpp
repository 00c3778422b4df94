// The fixed halving and doubling, against the weights written out.
#include "support/bordered.h"
#include "support/guarded.h"
#include "support/status_table.h"

#include "rvxcv.h"

#include <string>
#include <vector>

namespace {

using namespace support;

template <class T>
using Step = StatusCode (*)(const T *, std::int32_t, T *, std::int32_t, RoiSize, std::uint8_t *buffer);
using Query = StatusCode (*)(std::int32_t, PixelTypeCode, std::int32_t, std::int32_t *);

template <class T> struct Member {
    const char *name;
    Step<T> step;
    int channels;
    bool up;
};

template <class T> std::vector<Member<T>> members() {
    if constexpr (std::is_same_v<T, std::uint8_t>) {
        return {{"down 8u C1", rvxiPyrDown_Gauss5x5_8u_C1R, 1, false},
                {"down 8u C3", rvxiPyrDown_Gauss5x5_8u_C3R, 3, false},
                {"up 8u C1", rvxiPyrUp_Gauss5x5_8u_C1R, 1, true},
                {"up 8u C3", rvxiPyrUp_Gauss5x5_8u_C3R, 3, true}};
    } else if constexpr (std::is_same_v<T, std::int8_t>) {
        return {{"down 8s C1", rvxiPyrDown_Gauss5x5_8s_C1R, 1, false},
                {"down 8s C3", rvxiPyrDown_Gauss5x5_8s_C3R, 3, false},
                {"up 8s C1", rvxiPyrUp_Gauss5x5_8s_C1R, 1, true},
                {"up 8s C3", rvxiPyrUp_Gauss5x5_8s_C3R, 3, true}};
    } else {
        return {{"down 32f C1", rvxiPyrDown_Gauss5x5_32f_C1R, 1, false},
                {"down 32f C3", rvxiPyrDown_Gauss5x5_32f_C3R, 3, false},
                {"up 32f C1", rvxiPyrUp_Gauss5x5_32f_C1R, 1, true},
                {"up 32f C3", rvxiPyrUp_Gauss5x5_32f_C3R, 3, true}};
    }
}

std::int64_t mirrored(std::int64_t i, std::int64_t n) { return plainBorderIndex(BorderMirror, false, false, i, n); }

// A line of pixels by the rule; At(i) is pixel i.
template <class At> float halvedFloat(const At &at, std::int64_t x, std::int64_t n) {
    const auto tap = [&](std::int64_t i) -> float { return at(mirrored(2 * x + i, n)); };
    const float outer = tap(-2) + tap(2), inner = tap(-1) + tap(1);
    return std::fma(4.0f, inner, std::fma(6.0f, tap(0), outer));
}
template <class At> float doubledFloat(const At &at, std::int64_t x, std::int64_t n) {
    const std::int64_t k = x / 2;
    const float own = at(k), next = at(std::min(k + 1, n - 1));
    if (x % 2 != 0) {
        return (own + next) * 0.5f;
    }
    return std::fma(6.0f, own, at(k > 0 ? k - 1 : mirrored(-1, n)) + next) * 0.125f;
}
template <class At> int halvedInt(const At &at, std::int64_t x, std::int64_t n) {
    constexpr int weights[] = {1, 4, 6, 4, 1};
    int sum = 0;
    for (std::int64_t i = -2; i <= 2; ++i) {
        sum += weights[i + 2] * at(mirrored(2 * x + i, n));
    }
    return sum;
}
template <class At> int doubledInt(const At &at, std::int64_t x, std::int64_t n) {
    const std::int64_t k = x / 2;
    const int next = at(std::min(k + 1, n - 1));
    return x % 2 != 0 ? 4 * at(k) + 4 * next : at(k > 0 ? k - 1 : mirrored(-1, n)) + 6 * at(k) + next;
}

// Element (x, y) of the result, x counting channels.
template <class T> T expectedElement(const Member<T> &m, const GuardedImage<T> &src, std::int64_t x, std::int64_t y) {
    const std::int64_t channel = x % m.channels, width = src.width() / m.channels, height = src.height();
    const auto pixel = [&](std::int64_t column, std::int64_t row) {
        return src.at(column * m.channels + channel, row);
    };
    if constexpr (std::is_same_v<T, float>) {
        if (m.up) { // rows first
            const auto row = [&](std::int64_t column) {
                return doubledFloat([&](std::int64_t r) { return pixel(column, r); }, y, height);
            };
            return doubledFloat(row, x / m.channels, width);
        }
        const auto column = [&](std::int64_t row) {
            return halvedFloat([&](std::int64_t c) { return pixel(c, row); }, x / m.channels, width);
        };
        return halvedFloat(column, y, height) * (1.0f / 256);
    } else {
        const auto column = [&](std::int64_t row) {
            const auto at = [&](std::int64_t c) -> int { return pixel(c, row); };
            return m.up ? doubledInt(at, x / m.channels, width) : halvedInt(at, x / m.channels, width);
        };
        return static_cast<T>(m.up ? (doubledInt(column, y, height) + 32) >> 6
                                   : (halvedInt(column, y, height) + 128) >> 8);
    }
}

std::int64_t plainScratch(std::int64_t width, int channels, bool up) {
    return up ? (width * 8 * channels + 15) / 16 * 16 * 3 + 64 : (width * 4 * channels + 15) / 16 * 16 * 6 + 64;
}

// `shift` moves the scratch buffer, which still has its exact size, off every alignment.
template <class T>
void checkImage(const Member<T> &m, std::int64_t width, std::int64_t height, Contents contents, int shift) {
    Rng rng = makeRng(m.name, static_cast<std::uint64_t>(width * 1000 + height));
    const Guard guard = shift % 2 != 0 ? Guard::before : Guard::behind;
    const std::int64_t size = sizeof(T), dstWidth = m.up ? 2 * width : (width + 1) / 2;
    GuardedImage<T> src(width * m.channels, height,
                        {.padding = shift % 3 * size, .guard = guard, .skew = shift % 5 == 4 ? 1 : 0});
    GuardedImage<T> dst(dstWidth * m.channels, m.up ? 2 * height : (height + 1) / 2,
                        {.padding = shift % 4 * size, .guard = guard, .skew = shift % 7 == 6 ? 1 : 0});
    src.fill(rng, contents);
    const std::int64_t bytes = plainScratch(width, m.channels, m.up);
    // Behind: the buffer ends at the guard page, wherever it starts. Before: it starts `shift` bytes into a page.
    GuardedBuffer buffer(bytes + (guard == Guard::behind ? 0 : shift), guard);
    buffer.spoil();
    std::uint8_t *scratch = buffer.data() + (guard == Guard::behind ? 0 : shift);
    ASSERT_EQ(m.step(src.data(), src.step(), dst.data(), dst.step(), src.roi(m.channels), scratch), StatusOk);
    ASSERT_TRUE(imageIs(dst, [&](auto x, auto y) { return expectedElement(m, src, x, y); }))
        << m.name << " of " << width << "x" << height;
    for (int i = 0; guard == Guard::before && i < shift; ++i) {
        ASSERT_EQ(buffer.data()[i], static_cast<std::uint8_t>(0xa5 + 31 * i)) << "written before the scratch buffer";
    }
}

template <class T> void checkSizes() {
    for (const Member<T> &m : members<T>()) {
        for (std::int64_t width = 1; width <= 70; ++width) {
            for (const std::int64_t height : {1, 2, 3, 4, 5, 6, 7, 12}) {
                checkImage(m, width, height, allContents[static_cast<std::size_t>(width + height) % 5],
                           static_cast<int>((width * 7 + height) % 64));
            }
        }
        for (std::int64_t height = 8; height <= 70; ++height) {
            checkImage(m, 1 + height % 9, height, Contents::random, static_cast<int>(height % 64));
        }
        for (const Contents contents : allContents) {
            checkImage(m, 517, 9, contents, 1);
            checkImage(m, 130, 33, contents, 8);
        }
    }
}

TEST(PyrGauss5x5, EverySize8u) { checkSizes<std::uint8_t>(); }
TEST(PyrGauss5x5, EverySize8s) { checkSizes<std::int8_t>(); }
TEST(PyrGauss5x5, EverySize32f) { checkSizes<float>(); }

// Results too large for the caches are stored past them.
TEST(PyrGauss5x5, LargeDoubling) {
    checkImage(members<std::uint8_t>()[2], 1056, 2000, Contents::random, 0);
    for (const int shift : {0, 5}) {
        checkImage(members<float>()[2], 1032, 512, Contents::random, shift);
        checkImage(members<float>()[3], 349, 512, Contents::random, shift);
    }
}

template <class T> struct Args {
    const T *src;
    std::int32_t srcStep;
    T *dst;
    std::int32_t dstStep;
    RoiSize roi;
    std::uint8_t *buffer;
};

template <class T> void checkStatuses() {
    constexpr auto size = static_cast<std::int32_t>(sizeof(T));
    for (const Member<T> &m : members<T>()) {
        SCOPED_TRACE(m.name);
        const std::int32_t dstWidth = m.up ? 18 : 5;
        GuardedImage<T> src(9 * m.channels, 3, {.padding = 16}), dst(dstWidth * m.channels, 6, {.padding = 16});
        GuardedBuffer buffer(plainScratch(9, m.channels, m.up));
        using A = Args<T>;
        const std::int32_t srcRow = 9 * m.channels * size, dstRow = dstWidth * m.channels * size;
        Faults<A> faults;
        faults.nulls(&A::src, &A::dst, &A::buffer).empty(&A::roi);
        faults.shortSteps(srcRow, &A::srcStep).shortSteps(dstRow, &A::dstStep);
        faults.values(StatusBadStep, &A::roi, {{1 << 30, 3}});
        faults.unevenSteps(srcRow, size, &A::srcStep).unevenSteps(dstRow, size, &A::dstStep);
        expectFaultOrder<A>(
            {src.data(), src.step(), dst.data(), dst.step(), {9, 3}, buffer.data()}, faults,
            [&](const A &a) { return m.step(a.src, a.srcStep, a.dst, a.dstStep, a.roi, a.buffer); },
            [&] { return dst.bytes(); });
    }
}

TEST(PyrGauss5x5, StatusesInTheOrderOfTheChecks) {
    checkStatuses<std::uint8_t>();
    checkStatuses<std::int8_t>();
    checkStatuses<float>();
}

TEST(PyrGauss5x5, ScratchSizes) {
    for (const bool up : {false, true}) {
        const Query query = up ? rvxiPyrUpGetBufSize_Gauss5x5 : rvxiPyrDownGetBufSize_Gauss5x5;
        std::int32_t bytes = -5;
        for (const std::int32_t width : {1, 2, 3, 7, 640, 1921, 4000000}) {
            for (const int channels : {1, 3}) {
                for (const PixelTypeCode type : {PixelType8u, PixelType8s, PixelType32f}) {
                    EXPECT_EQ(query(width, type, channels, &bytes), StatusOk);
                    EXPECT_EQ(bytes, plainScratch(width, channels, up)) << width << " " << channels;
                }
            }
        }
        bytes = -5;
        EXPECT_EQ(query(4, PixelType16u, 2, &bytes), StatusBadChannelCount);
        EXPECT_EQ(query(4, PixelType8u, 4, &bytes), StatusBadChannelCount);
        EXPECT_EQ(query(4, PixelType16u, 1, &bytes), StatusBadDataType);
        EXPECT_EQ(query(4, PixelType64f, 3, &bytes), StatusBadDataType);
        EXPECT_EQ(bytes, -5) << "written despite a failure";
    }
}

} // namespace
