// Accumulators against the plain formulas, over widths, steps, alignments and contents, all in guarded memory.
#include "support/guarded.h"
#include "support/status_table.h"

#include "rvxcv.h"

#include <cmath>

namespace {

using namespace support;

template <class T> struct Call {
    const T *a;
    std::int32_t aStep;
    const T *b;
    std::int32_t bStep;
    const std::uint8_t *mask;
    std::int32_t maskStep;
    float *acc;
    std::int32_t accStep;
    RoiSize roi;
    float alpha;
};

template <class T> using Function = StatusCode (*)(const Call<T> &);

enum class Op { add, square, product, weighted, blend };

// The formulas, one pixel.
float expected(Op op, bool masked, float a, float b, bool selected, float d, float alpha) {
    const float m = selected ? 1.0f : 0.0f;
    switch (op) {
    case Op::add:
        return masked ? std::fma(m, a, d) : d + a;
    case Op::square:
        return masked ? std::fma(m, a * a, d) : std::fma(a, a, d);
    case Op::product:
        return masked ? std::fma(m, a * b, d) : std::fma(a, b, d);
    case Op::weighted:
        return masked ? std::fma(m * alpha, a - d, d) : std::fma(a - d, alpha, d);
    default:
        return std::fma(a - b, alpha, b);
    }
}

template <class T> struct Member {
    const char *name;
    Op op;
    bool masked;
    Function<T> call;
};

#define UNARY(T, OP, NAME)                                                                                             \
    Member<T> {                                                                                                        \
#NAME, OP, false, [](const Call <T> &c) { return NAME(c.a, c.aStep, c.acc, c.accStep, c.roi); }                \
    }
#define UNARY_MASKED(T, OP, NAME)                                                                                      \
    Member<T> {                                                                                                        \
#NAME, OP, true,                                                                                               \
            [](const Call <T> &c) { return NAME(c.a, c.aStep, c.mask, c.maskStep, c.acc, c.accStep, c.roi); }          \
    }
#define BINARY(T, OP, NAME)                                                                                            \
    Member<T> {                                                                                                        \
#NAME, OP, false, [](const Call <T> &c) { return NAME(c.a, c.aStep, c.b, c.bStep, c.acc, c.accStep, c.roi); }  \
    }
#define BINARY_MASKED(T, OP, NAME)                                                                                     \
    Member<T> {                                                                                                        \
#NAME, OP, true,                                                                                               \
            [](const Call <T>                                                                                          \
                   &c) { return NAME(c.a, c.aStep, c.b, c.bStep, c.mask, c.maskStep, c.acc, c.accStep, c.roi); }       \
    }
#define WEIGHTED(T, NAME)                                                                                              \
    Member<T> {                                                                                                        \
#NAME, Op::weighted, false,                                                                                    \
            [](const Call <T> &c) { return NAME(c.a, c.aStep, c.acc, c.accStep, c.roi, c.alpha); }                     \
    }
#define WEIGHTED_MASKED(T, NAME)                                                                                       \
    Member<T> {                                                                                                        \
#NAME, Op::weighted, true,                                                                                     \
            [](const Call <T> &c) { return NAME(c.a, c.aStep, c.mask, c.maskStep, c.acc, c.accStep, c.roi, c.alpha); } \
    }

#define INTEGERS(T, TYPE)                                                                                              \
    UNARY(T, Op::add, rvxiAdd_##TYPE##32f_C1IR), UNARY_MASKED(T, Op::add, rvxiAdd_##TYPE##32f_C1IMR),                  \
        UNARY(T, Op::square, rvxiAddSquare_##TYPE##32f_C1IR),                                                          \
        UNARY_MASKED(T, Op::square, rvxiAddSquare_##TYPE##32f_C1IMR),                                                  \
        BINARY(T, Op::product, rvxiAddProduct_##TYPE##32f_C1IR),                                                       \
        BINARY_MASKED(T, Op::product, rvxiAddProduct_##TYPE##32f_C1IMR),                                               \
        WEIGHTED(T, rvxiAddWeighted_##TYPE##32f_C1IR), WEIGHTED_MASKED(T, rvxiAddWeighted_##TYPE##32f_C1IMR)

template <class T> std::vector<Member<T>> members() {
    if constexpr (std::is_same_v<T, std::uint8_t>) {
        return {INTEGERS(T, 8u)};
    } else if constexpr (std::is_same_v<T, std::int8_t>) {
        return {INTEGERS(T, 8s)};
    } else {
        return {INTEGERS(T, 16u)};
    }
}

template <> std::vector<Member<float>> members() {
    using T = float;
    return {UNARY_MASKED(T, Op::add, rvxiAdd_32f_C1IMR),
            UNARY(T, Op::square, rvxiAddSquare_32f_C1IR),
            UNARY_MASKED(T, Op::square, rvxiAddSquare_32f_C1IMR),
            BINARY(T, Op::product, rvxiAddProduct_32f_C1IR),
            BINARY_MASKED(T, Op::product, rvxiAddProduct_32f_C1IMR),
            WEIGHTED(T, rvxiAddWeighted_32f_C1IR),
            WEIGHTED_MASKED(T, rvxiAddWeighted_32f_C1IMR),
            Member<T>{"rvxiAddWeighted_32f_C1R", Op::blend, false, [](const Call<T> &c) {
                          return rvxiAddWeighted_32f_C1R(c.a, c.aStep, c.b, c.bStep, c.acc, c.accStep, c.roi, c.alpha);
                      }}};
}

// Arguments and the images behind them.
template <class T> struct Case {
    GuardedImage<T> a, b;
    GuardedImage<std::uint8_t> mask;
    GuardedImage<float> acc;

    static constexpr std::int64_t size = static_cast<std::int64_t>(sizeof(T));

    // Any of the images may be padded beside tight ones: bits of `padded`.
    Case(std::int64_t width, std::int64_t height, std::int64_t padded, Guard guard, Contents contents, Rng &rng)
        : a(width, height, {.padding = (padded & 1) * size, .guard = guard}),
          b(width, height, {.padding = (padded & 2) * size, .guard = guard}),
          mask(width, height, {.padding = padded & 4, .guard = guard}),
          acc(width, height, {.padding = padded & 8, .guard = guard}) {
        a.fill(rng, contents);
        b.fill(rng, contents);
        acc.fill(rng, contents == Contents::small ? Contents::random : contents);
        for (std::int64_t y = 0; y < height; ++y) {
            for (std::int64_t x = 0; x < width; ++x) {
                mask.set(x, y, static_cast<std::uint8_t>(rng() % 3 == 0 ? 0 : rng() % 256));
            }
        }
    }

    Call<T> call(float alpha) {
        return {a.data(),    a.step(),   b.data(),   b.step(),  mask.data(),
                mask.step(), acc.data(), acc.step(), acc.roi(), alpha};
    }
};

template <class T> void checkMember(const Member<T> &member, Case<T> &images, float alpha) {
    const std::int64_t width = images.acc.width(), height = images.acc.height();
    std::vector<float> want(static_cast<std::size_t>(width * height));
    for (std::int64_t y = 0; y < height; ++y) {
        for (std::int64_t x = 0; x < width; ++x) {
            want[static_cast<std::size_t>(y * width + x)] =
                expected(member.op, member.masked, static_cast<float>(images.a.at(x, y)),
                         static_cast<float>(images.b.at(x, y)), images.mask.at(x, y) != 0, images.acc.at(x, y), alpha);
        }
    }
    ASSERT_EQ(member.call(images.call(alpha)), StatusOk) << member.name;
    ASSERT_TRUE(imageIs(images.acc,
                        [&](std::int64_t x, std::int64_t y) { return want[static_cast<std::size_t>(y * width + x)]; }))
        << member.name << " alpha " << alpha;
}

template <class T> class Accumulate : public testing::Test {};
using SourceTypes = testing::Types<std::uint8_t, std::int8_t, std::uint16_t, float>;
TYPED_TEST_SUITE(Accumulate, SourceTypes);

TYPED_TEST(Accumulate, EveryWidthStepAndContentsMatchTheFormula) {
    Rng rng = makeRng("accumulate");
    for (const Member<TypeParam> &member : members<TypeParam>()) {
        for (std::int64_t width = 1; width <= 37; ++width) {
            for (const std::int64_t padded : {2 * width, 2 * width + 1}) {
                const auto contents = allContents[static_cast<std::size_t>(rng() % std::size(allContents))];
                const Guard guard = rng() % 2 != 0 ? Guard::behind : Guard::before;
                Case<TypeParam> images(width, 3, padded % 16, guard, contents, rng);
                checkMember(member, images, 0.37f);
            }
        }
        for (const Contents contents : allContents) {
            Case<TypeParam> images(641, 5, 15, Guard::behind, contents, rng);
            checkMember(member, images, 0.1f);
        }
    }
}

TYPED_TEST(Accumulate, AlphaIsUsedAsGiven) {
    Rng rng = makeRng("alpha");
    for (const Member<TypeParam> &member : members<TypeParam>()) {
        for (const float alpha : {0.0f, 1.0f, -0.5f, 3.0f, std::numeric_limits<float>::infinity(), std::nanf("")}) {
            Case<TypeParam> images(19, 2, 0, Guard::behind, Contents::special, rng);
            checkMember(member, images, alpha);
        }
    }
}

// The accumulator may stand at any byte address: base pointers one to three bytes off.
TYPED_TEST(Accumulate, AccumulatorAtAnyByteAddress) {
    Rng rng = makeRng("misaligned");
    constexpr std::int64_t width = 45, height = 2;
    for (const Member<TypeParam> &member : members<TypeParam>()) {
        for (std::int64_t off = 1; off < 4; ++off) {
            Case<TypeParam> images(width, height, 0, Guard::behind, Contents::random, rng);
            // The end of the memory is aligned, so its beginning is `off` bytes short of a multiple of four.
            GuardedBuffer memory(width * height * 4 + off);
            std::uint8_t *const base = memory.data();
            std::memcpy(base, images.acc.data(), width * height * 4);
            Call<TypeParam> call = images.call(0.25f);
            call.acc = reinterpret_cast<float *>(base);
            ASSERT_EQ(member.call(call), StatusOk);
            checkMember(member, images, 0.25f);
            EXPECT_EQ(std::memcmp(base, images.acc.data(), width * height * 4), 0) << member.name << " offset " << off;
        }
    }
}

TYPED_TEST(Accumulate, StatusesInTheOrderOfTheChecks) {
    Rng rng = makeRng("status");
    using T = TypeParam;
    for (const Member<T> &member : members<T>()) {
        const bool binary = member.op == Op::product || member.op == Op::blend;
        Case<T> images(9, 3, 15, Guard::behind, Contents::random, rng);
        constexpr auto size = static_cast<std::int32_t>(sizeof(T));
        using C = Call<T>;
        Faults<C> faults;
        faults.nulls(&C::a, &C::acc);
        if (binary) {
            faults.nulls(&C::b);
        }
        if (member.masked) {
            faults.nulls(&C::mask);
        }
        faults.empty(&C::roi).shortSteps(9 * size, &C::aStep);
        if (binary) {
            faults.shortSteps(9 * size, &C::bStep);
        }
        if (member.masked) {
            faults.shortSteps(9, &C::maskStep);
        }
        if (size == 2) { // 16u comes whole before the accumulator
            faults.unevenSteps(9 * size, size, &C::aStep).shortSteps(36, &C::accStep);
        } else {
            faults.shortSteps(36, &C::accStep).unevenSteps(9 * size, size, &C::aStep);
        }
        faults.unevenSteps(36, 4, &C::accStep);
        SCOPED_TRACE(member.name);
        expectFaultOrder<Call<T>>(
            images.call(0.5f), faults, [&](const Call<T> &c) { return member.call(c); },
            [&] { return images.acc.bytes(); });

        C huge = images.call(0.5f);
        huge.roi.width = 0x40000001; // row bytes beyond int32
        EXPECT_EQ(member.call(huge), StatusBadStep);
    }
}

// A zero mask byte does not protect a pixel: it is rewritten with d + 0 * x.
TEST(AccumulateMask, UnselectedPixelsAreRewritten) {
    const float infinity = std::numeric_limits<float>::infinity();
    const float src[3] = {infinity, -1.0f, 5.0f};
    const std::uint8_t mask[3] = {0, 0, 7};
    float acc[3] = {1.0f, -0.0f, 2.0f};
    ASSERT_EQ(rvxiAdd_32f_C1IMR(src, 12, mask, 3, acc, 12, {3, 1}), StatusOk);
    EXPECT_TRUE(std::isnan(acc[0]));
    EXPECT_EQ(acc[1], 0.0f);
    EXPECT_TRUE(std::signbit(acc[1])); // -0 + 0 * -1 = -0 + -0
    EXPECT_EQ(acc[2], 7.0f);
}

// 16u squares do not fit a float's precision: the unmasked sum rounds once, the masked one twice.
TEST(AccumulateMask, MaskedSquareRoundsTwice) {
    const std::uint16_t src = 65533, other = 65531;
    const std::uint8_t mask = 1;
    int differences = 0;
    for (int i = 1; i < 1000; ++i) {
        float plain = static_cast<float>(i) * 0.37f, masked = plain;
        ASSERT_EQ(rvxiAddProduct_16u32f_C1IR(&src, 2, &other, 2, &plain, 4, {1, 1}), StatusOk);
        ASSERT_EQ(rvxiAddProduct_16u32f_C1IMR(&src, 2, &other, 2, &mask, 1, &masked, 4, {1, 1}), StatusOk);
        differences += plain != masked;
    }
    EXPECT_GT(differences, 0);
}

} // namespace
