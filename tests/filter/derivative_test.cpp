// Derivative and low-pass filters against plain sums over an explicitly bordered image.
#include "filter/derivative_members.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace {

using namespace derivative;
using namespace support;

std::int64_t reachOf(MaskCode mask) { return mask == Mask5x5 ? 2 : 1; }

// The exact sum of an 8u filter at (x, y).
template <class D>
int plainSum(const Member<std::uint8_t, D> &m, MaskCode mask, const GuardedImage<std::uint8_t> &src, std::int64_t x,
             std::int64_t y, BorderKind border, std::uint8_t value) {
    const std::int64_t reach = reachOf(mask);
    int sum = 0;
    for (std::int64_t i = -reach; i <= reach; ++i) {
        for (std::int64_t j = -reach; j <= reach; ++j) {
            int coefficient = 0;
            for (const Separation &s : m.filter) {
                coefficient += s.row(mask)[static_cast<std::size_t>(j + reach)] *
                               s.column(mask)[static_cast<std::size_t>(i + reach)];
            }
            sum += coefficient * borderedPixel(src, x + j, y + i, border, value);
        }
    }
    return sum;
}

// One output pixel of each type.
std::int16_t plainResult(const Member<std::uint8_t, std::int16_t> &m, MaskCode mask,
                         const GuardedImage<std::uint8_t> &src, std::int64_t x, std::int64_t y, BorderKind border,
                         std::uint8_t value, std::int32_t) {
    return static_cast<std::int16_t>(std::clamp(plainSum(m, mask, src, x, y, border, value), -32768, 32767));
}

std::int8_t plainResult(const Member<std::uint8_t, std::int8_t> &m, MaskCode mask,
                        const GuardedImage<std::uint8_t> &src, std::int64_t x, std::int64_t y, BorderKind border,
                        std::uint8_t value, std::int32_t divisor) {
    const float product =
        static_cast<float>(plainSum(m, mask, src, x, y, border, value)) * (1.0f / static_cast<float>(divisor));
    const float clamped = std::clamp(product, -128.0f, 127.0f);
    const bool inBlock = x < src.width() / 16 * 16;
    return static_cast<std::int8_t>(inBlock ? std::nearbyint(clamped) : std::trunc(clamped));
}

std::uint8_t plainResult(const Member<std::uint8_t, std::uint8_t> &m, MaskCode mask,
                         const GuardedImage<std::uint8_t> &src, std::int64_t x, std::int64_t y, BorderKind border,
                         std::uint8_t value, std::int32_t) {
    const double area = mask == Mask5x5 ? 25 : 9;
    return static_cast<std::uint8_t>(std::floor(plainSum(m, mask, src, x, y, border, value) / area + 0.5));
}

// Row stage, column stage: the first tap a product, the others fused.
float plainResult(const Member<float, float> &m, MaskCode mask, const GuardedImage<float> &src, std::int64_t x,
                  std::int64_t y, BorderKind border, float value, std::int32_t) {
    const std::int64_t reach = reachOf(mask), taps = 2 * reach + 1;
    const auto chain = [&](const Kernel &kernel, const auto &tap) {
        float sum = static_cast<float>(kernel[0]) * tap(std::int64_t{0});
        for (std::int64_t i = 1; i < taps; ++i) {
            sum = std::fma(static_cast<float>(kernel[static_cast<std::size_t>(i)]), tap(i), sum);
        }
        return sum;
    };
    const auto separable = [&](const Separation &s) {
        return chain(s.column(mask), [&](std::int64_t i) {
            return chain(s.row(mask), [&](std::int64_t j) {
                return borderedPixel(src, x + j - reach, y + i - reach, border, value);
            });
        });
    };
    float result = separable(m.filter[0]);
    if (m.filter.size() == 2) {
        result += separable(m.filter[1]);
    }
    if (m.name == "Lowpass_32f") {
        result *= 1.0f / static_cast<float>(taps * taps);
    }
    return result;
}

struct Case {
    std::int64_t width, height;
    BorderKind border;
    Contents contents = Contents::random;
    std::int64_t padding = 0;
    Guard guard = Guard::behind;
    std::int32_t divisor = 1;
};

template <class T, class D> void checkCase(const Member<T, D> &m, MaskCode mask, const Case &c, Rng &rng) {
    GuardedImage<T> src(
        c.width, c.height,
        marginLayout<T>(c.border, reachOf(mask), c.padding * static_cast<std::int64_t>(sizeof(T)), c.guard));
    GuardedImage<D> dst(c.width, c.height,
                        {.padding = c.padding * static_cast<std::int64_t>(sizeof(D)), .guard = c.guard});
    src.fill(rng, c.contents);
    const T value = randomValue<T>(rng, c.contents);
    std::int32_t bytes = -1;
    ASSERT_EQ(m.size(dst.roi(), mask, &bytes), StatusOk);
    GuardedBuffer scratch(bytes, c.guard);
    scratch.spoil();
    ASSERT_EQ(m.run({src.data(), src.step(), dst.data(), dst.step(), dst.roi(), mask, c.border, value, c.divisor,
                     scratch.data()}),
              StatusOk);
    ASSERT_TRUE(
        imageIs(dst, [&](std::int64_t x,
                         std::int64_t y) { return plainResult(m, mask, src, x, y, c.border, value, c.divisor); }))
        << m.name << " mask " << mask << " border " << c.border << " divisor " << c.divisor << " contents "
        << static_cast<int>(c.contents);
}

constexpr std::int32_t divisors[] = {1, 2, 3, 4, 8, 16, 32, 48, 100, -1, -7, 1000003, INT32_MIN, INT32_MAX};

template <class T, class D> void checkEverySize() {
    const std::vector<BorderKind> borders = bordersOf({0, 1, 2, 3, 4});
    for (const Member<T, D> &m : members<T, D>()) {
        Rng rng = makeRng(m.name);
        std::size_t n = static_cast<std::size_t>(rng() % 1000);
        for (const MaskCode mask : m.masks()) {
            const auto next = [&](std::int64_t width, std::int64_t height) {
                n += 1;
                checkCase(m, mask,
                          {.width = width,
                           .height = height,
                           .border = borders[n * 7 % borders.size()],
                           .contents = allContents[n % 5],
                           .padding = static_cast<std::int64_t>(n % 3) * 5,
                           .guard = n % 4 == 0 ? Guard::before : Guard::behind,
                           .divisor = divisors[n % std::size(divisors)]},
                          rng);
            };
            for (std::int64_t width = 1; width <= 70; ++width) {
                next(width, 1 + static_cast<std::int64_t>(n % 6));
                next(width, 1 + static_cast<std::int64_t>(n % 7));
            }
            // Across the chunks and strips that wide rows are worked in.
            for (const std::int64_t width : {511, 512, 513, 520, 1023, 1024, 1025, 1041, 1537, 2051}) {
                next(width, 3);
            }
            ASSERT_FALSE(testing::Test::HasFatalFailure());
        }
    }
}

TEST(Derivative, EverySize8u8s) { checkEverySize<std::uint8_t, std::int8_t>(); }
TEST(Derivative, EverySize8u16s) { checkEverySize<std::uint8_t, std::int16_t>(); }
TEST(Derivative, EverySize32f) { checkEverySize<float, float>(); }
TEST(Derivative, EverySizeLowpass8u) { checkEverySize<std::uint8_t, std::uint8_t>(); }

// Integer shortcuts of the division: powers of two, odd and other divisors, and those beyond every sum. The Laplacian
// has the largest sums, the 3x3 Sobel filter many ties.
TEST(Derivative, ManyDivisors) {
    std::vector<std::int32_t> many{8191, 8192, 8193, 16383, 16384, 16385, 28559, 28560, 28561, 65536, 65537};
    for (std::int32_t divisor = 1; divisor <= 257; ++divisor) {
        many.push_back(divisor);
        many.push_back(-divisor);
    }
    for (std::int32_t divisor = 300; divisor < 8000; divisor = divisor * 5 / 4 + 1) {
        many.push_back(divisor);
    }
    const auto all = members<std::uint8_t, std::int8_t>();
    Rng rng = makeRng("divisors");
    for (const std::int32_t divisor : many) {
        for (const Contents contents : {Contents::random, Contents::nearMax}) {
            checkCase(all[0], Mask3x3,
                      {.width = 64, .height = 12, .border = 1, .contents = contents, .divisor = divisor}, rng);
            checkCase(all[8], Mask5x5,
                      {.width = 64, .height = 6, .border = 1, .contents = contents, .divisor = divisor}, rng);
        }
        ASSERT_FALSE(testing::Test::HasFatalFailure());
    }
}

// Every border kind with every set of sides in memory, at sizes below, at and above the margin, and wide ones.
template <class T, class D> void checkEveryBorder() {
    for (const Member<T, D> &m : members<T, D>()) {
        Rng rng = makeRng(m.name, 2);
        for (const MaskCode mask : m.masks()) {
            for (const BorderKind border : bordersOf({0, 1, 2, 3, 4})) {
                for (const RoiSize roi : {RoiSize{1, 1}, {2, 1}, {1, 2}, {3, 2}, {4, 5}, {5, 4}, {21, 6}}) {
                    checkCase(m, mask, {.width = roi.width, .height = roi.height, .border = border, .divisor = 5}, rng);
                }
            }
            for (const BorderKind border : {0, 1, 2, 3, 4, 6}) {
                checkCase(m, mask, {.width = 1100, .height = 2, .border = border, .divisor = 9}, rng);
            }
            ASSERT_FALSE(testing::Test::HasFatalFailure());
        }
    }
}

TEST(Derivative, EveryBorder8u8s) { checkEveryBorder<std::uint8_t, std::int8_t>(); }
TEST(Derivative, EveryBorder8u16s) { checkEveryBorder<std::uint8_t, std::int16_t>(); }
TEST(Derivative, EveryBorder32f) { checkEveryBorder<float, float>(); }
TEST(Derivative, EveryBorderLowpass8u) { checkEveryBorder<std::uint8_t, std::uint8_t>(); }

// A single bright pixel shows the mask, turned by 180 degrees: the masks of the public header.
TEST(Derivative, MasksOfTheHeader) {
    const std::map<std::string, std::vector<int>> masks{{"SobelVert_8u16s", {1, 0, -1, 2, 0, -2, 1, 0, -1}},
                                                        {"SobelNegVert_8u16s", {-1, 0, 1, -2, 0, 2, -1, 0, 1}},
                                                        {"SobelHoriz_8u16s", {-1, -2, -1, 0, 0, 0, 1, 2, 1}},
                                                        {"SobelVertSecond_8u16s", {1, -2, 1, 2, -4, 2, 1, -2, 1}},
                                                        {"SobelHorizSecond_8u16s", {1, 2, 1, -2, -4, -2, 1, 2, 1}},
                                                        {"SobelCross_8u16s", {-1, 0, 1, 0, 0, 0, 1, 0, -1}},
                                                        {"ScharrVert_8u16s", {-3, 0, 3, -10, 0, 10, -3, 0, 3}},
                                                        {"ScharrHoriz_8u16s", {-3, -10, -3, 0, 0, 0, 3, 10, 3}},
                                                        {"Laplacian_8u16s", {2, 0, 2, 0, -8, 0, 2, 0, 2}}};
    const std::vector<int> laplacian5{2, 4, 4, 4, 2, 4, 0, -8, 0, 4, 4, -8, -24, -8, 4, 4, 0, -8, 0, 4, 2, 4, 4, 4, 2};
    std::uint8_t src[49] = {};
    src[24] = 1;
    const auto check = [&](const auto &m, MaskCode mask, const std::vector<int> &want) {
        std::int16_t dst[49];
        std::vector<std::uint8_t> buffer(8192);
        ASSERT_EQ(m.run({src, 7, dst, 14, {7, 7}, mask, BorderReplicate, 0, 1, buffer.data()}), StatusOk);
        const int side = mask == Mask5x5 ? 5 : 3, reach = side / 2;
        for (int i = 0; i < side; ++i) {
            for (int j = 0; j < side; ++j) {
                EXPECT_EQ(dst[(3 + reach - i) * 7 + 3 + reach - j], want[static_cast<std::size_t>(i * side + j)])
                    << m.name << " row " << i << " column " << j;
            }
        }
    };
    for (const auto &m : members<std::uint8_t, std::int16_t>()) {
        check(m, Mask3x3, masks.at(m.name));
        if (m.name == "Laplacian_8u16s") {
            check(m, Mask5x5, laplacian5);
        }
    }
}

// Every sum that a box of bytes can have is divided to the nearest integer.
TEST(Derivative, LowpassOfEverySum) {
    for (const std::int32_t side : {3, 5}) {
        const std::int32_t area = side * side, sums = 255 * area + 1;
        const RoiSize roi{sums * side, side};
        std::vector<std::uint8_t> src(static_cast<std::size_t>(roi.width) * static_cast<std::size_t>(side)),
            dst(src.size());
        for (std::int32_t sum = 0; sum < sums; ++sum) {
            for (std::int32_t k = 0, left = sum; k < area; ++k) {
                const std::int32_t pixel = std::min(left, 255);
                src[static_cast<std::size_t>(k / side * roi.width + sum * side + k % side)] =
                    static_cast<std::uint8_t>(pixel);
                left -= pixel;
            }
        }
        const MaskCode mask = side == 3 ? Mask3x3 : Mask5x5;
        std::int32_t bytes = 0;
        ASSERT_EQ(rvxiFilterLowpassGetBufferSize_8u_C1R(roi, mask, &bytes), StatusOk);
        std::vector<std::uint8_t> buffer(static_cast<std::size_t>(bytes));
        ASSERT_EQ(rvxiFilterLowpassBorder_8u_C1R(src.data(), roi.width, dst.data(), roi.width, roi, mask,
                                                 BorderReplicate, 0, buffer.data()),
                  StatusOk);
        for (std::int32_t sum = 0; sum < sums; ++sum) {
            ASSERT_EQ(dst[static_cast<std::size_t>(side / 2 * roi.width + sum * side + side / 2)],
                      (2 * sum + area) / (2 * area))
                << "sum " << sum << " of " << area;
        }
    }
}

} // namespace
