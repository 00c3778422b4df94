// The pipeline's row stage against its definition, in guarded memory: every member, kernel lengths around the special
// ones and beyond the row, all borders, misaligned rows, scratch of exactly the promised size.
#include "filter/pipeline_reference.h"
#include "support/status_table.h"

namespace {

using namespace support;
using namespace pipeline;

// ------------------------------------------------------------------------------------------------------ members

// Arguments of every member in one shape: the border value by pointer, always a divisor.
template <class S, class D, class K> struct RowCall {
    const S *src;
    std::int32_t srcStep;
    D *const *dstRows;
    RoiSize roi;
    const K *kernel;
    std::int32_t kernelSize, xAnchor;
    BorderKind border;
    const S *borderValue;
    std::int32_t divisor;
    std::uint8_t *buffer;
};

// scratch: bytes for k taps, as documented.
template <class S_, class D_, class K_, int channels_, class Arithmetic_, auto run, auto size, auto scratch>
struct Member {
    using S = S_;
    using D = D_;
    using K = K_;
    using Arithmetic = Arithmetic_;
    using Call = RowCall<S, D, K>;
    static constexpr int channels = channels_;
    static constexpr bool divides = !std::is_same_v<D, float>;

    static StatusCode filter(const Call &c) {
        const auto with = [&](auto value) {
            if constexpr (divides) {
                return run(c.src, c.srcStep, c.dstRows, c.roi, c.kernel, c.kernelSize, c.xAnchor, c.border, value,
                           c.divisor, c.buffer);
            } else {
                return run(c.src, c.srcStep, c.dstRows, c.roi, c.kernel, c.kernelSize, c.xAnchor, c.border, value,
                           c.buffer);
            }
        };
        if constexpr (channels == 1) {
            return with(*c.borderValue);
        } else {
            return with(c.borderValue);
        }
    }
    static StatusCode bufferSize(RoiSize roi, std::int32_t k, std::int32_t *bytes) { return size(roi, k, bytes); }
    static std::int64_t scratchBytes(std::int64_t k) { return scratch(k); }
};

using Bytes = std::int64_t;
using U8 = std::uint8_t;
using I16 = std::int16_t;
using U16 = std::uint16_t;
// Coefficients are of the type of the results.
#define MEMBER(S, D, ARITHMETIC, CHANNELS, SUFFIX, ...)                                                                \
    Member<S, D, D, CHANNELS, ARITHMETIC, rvxiFilterRowBorderPipeline_##SUFFIX,                                        \
           rvxiFilterRowBorderPipelineGetBufferSize_##SUFFIX, __VA_ARGS__>

template <class M> class RowPipeline : public testing::Test {};
using Members =
    testing::Types<MEMBER(I16, I16, Wrapping, 1, 16s_C1R, [](Bytes k) { return 48 * k + 112; }),
                   MEMBER(I16, I16, Wrapping, 3, 16s_C3R, [](Bytes k) { return 40 * k + 96; }),
                   MEMBER(U16, U16, Fused, 1, 16u_C1R, [](Bytes k) { return 64 * k + 96; }),
                   MEMBER(U16, U16, Fused, 3, 16u_C3R, [](Bytes k) { return 128 * k + 96; }),
                   MEMBER(U8, I16, Wrapping, 1, 8u16s_C1R, [](Bytes k) { return 32 * (k + k / 4) + 2 * k + 66; }),
                   MEMBER(U8, I16, Wrapping, 3, 8u16s_C3R, [](Bytes k) { return 60 * k + 144; }),
                   MEMBER(float, float, Fused, 1, 32f_C1R, [](Bytes k) { return 96 * k + 96; }),
                   MEMBER(float, float, Fused, 3, 32f_C3R, [](Bytes k) { return 288 * k + 96; }),
                   MEMBER(I16, I16, Low, 1, Low_16s_C1R, [](Bytes k) { return 24 * k + 96; }),
                   MEMBER(I16, I16, Low, 3, Low_16s_C3R, [](Bytes k) { return 208 * k + 96; })>;
#undef MEMBER
TYPED_TEST_SUITE(RowPipeline, Members);

// -------------------------------------------------------------------------------------------------- differential

struct Geometry {
    std::int64_t width, height, kernelSize, anchor;
    BorderKind border;
};

template <class M> void compare(const Geometry &g, Contents contents, Rng &rng) {
    using S = typename M::S;
    using D = typename M::D;
    constexpr std::int64_t channels = M::channels;
    const bool memory = (g.border & 15) == BorderInMemory;
    const bool left = memory || (g.border & BorderInMemoryLeft), right = memory || (g.border & BorderInMemoryRight);
    const std::int64_t before = g.anchor, behind = g.kernelSize - 1 - g.anchor;

    GuardedImage<S> src(g.width * channels, g.height,
                        {.padding = uniform(rng, 0, 3) * static_cast<std::int64_t>(sizeof(S)),
                         .guard = uniform(rng, 0, 3) == 0 ? Guard::before : Guard::behind,
                         .left = left ? before * channels : 0,
                         .right = right ? behind * channels : 0,
                         .skew = uniform(rng, 0, 2) == 0 ? 1 : 0});
    src.fill(rng, contents);
    GuardedImage<D> dst(g.width * channels, g.height, {.padding = uniform(rng, 0, 1) * uniform(rng, 0, 65)});
    auto taps = randomTaps<typename M::K, typename M::Arithmetic>(rng, g.kernelSize, contents);
    if constexpr (std::is_same_v<typename M::K, std::uint16_t>) {
        taps.divisor = std::abs(taps.divisor);
    }
    std::vector<S> border(channels);
    for (S &value : border) {
        value = randomValue<S>(rng, contents);
    }

    std::vector<D *> rows;
    for (std::int64_t y = 0; y < g.height; ++y) {
        rows.push_back(reinterpret_cast<D *>(reinterpret_cast<char *>(dst.data()) + y * dst.step()));
    }
    Guarded<D *> guardedRows(rows);
    Guarded<typename M::K> kernel(taps.kernel);
    Guarded<S> borderValue(border);
    OddScratch scratch(M::scratchBytes(g.kernelSize), rng);

    const typename M::Call call{src.data(),
                                src.step(),
                                guardedRows.data(),
                                src.roi(M::channels),
                                kernel.data(),
                                static_cast<std::int32_t>(g.kernelSize),
                                static_cast<std::int32_t>(g.anchor),
                                g.border,
                                borderValue.data(),
                                taps.divisor,
                                scratch.data()};
    ASSERT_EQ(M::filter(call), StatusOk);

    std::vector<S> under(taps.kernel.size());
    const auto expected = [&](std::int64_t element, std::int64_t y) {
        const std::int64_t c = element % channels, pixel = element / channels;
        for (std::int64_t j = 0; j < g.kernelSize; ++j) {
            const std::int64_t x = pixel + j - g.anchor;
            const bool inside = (x >= 0 || left) && (x < g.width || right);
            const std::int64_t nearest = inside ? x : x < 0 ? 0 : g.width - 1;
            const bool constant = !inside && (g.border & 15) == BorderConstant;
            under[static_cast<std::size_t>(j)] =
                constant ? border[static_cast<std::size_t>(c)] : src.at(nearest * channels + c, y);
        }
        return M::Arithmetic::template result<D>(under, taps.kernel, taps.divisor, truncates(pixel, g.width));
    };
    ASSERT_TRUE(imageIs(dst, expected));
    ASSERT_TRUE(scratch.intactBehind());
}

template <class M> void compareAll(const std::vector<std::int64_t> &widths, const std::vector<std::int64_t> &kernels) {
    constexpr BorderKind borders[] = {0, 1, 6, 64, 128, 1 | 64, 1 | 128, 64 | 128, 6 | 16, 1 | 256, 0 | 16 | 32};
    Rng rng = makeRng("row pipeline", static_cast<std::uint64_t>(kernels.front()));
    for (const std::int64_t width : widths) {
        for (const std::int64_t k : kernels) {
            const std::int64_t anchors[] = {0, k / 2, k - 1, uniform(rng, 0, k - 1)};
            const Geometry g{width, uniform(rng, 1, 9), k, anchors[uniform(rng, 0, 3)],
                             borders[uniform(rng, 0, std::ssize(borders) - 1)]};
            const Contents contents = allContents[uniform(rng, 0, std::ssize(allContents) - 1)];
            SCOPED_TRACE(testing::Message() << "width " << width << ", " << k << " taps, anchor " << g.anchor
                                            << ", border " << g.border << ", contents " << static_cast<int>(contents));
            compare<M>(g, contents, rng);
            if (testing::Test::HasFatalFailure()) {
                return;
            }
        }
    }
}

TYPED_TEST(RowPipeline, FollowsItsDefinition) {
    compareAll<TypeParam>(testWidths(), {1, 2, 3, 3, 4, 5, 5, 6, 7, 8, 15, 16, 17});
}

TYPED_TEST(RowPipeline, FiltersWithKernelsLongerThanTheRow) {
    compareAll<TypeParam>({1, 2, 3, 15, 16, 17, 31, 33, 47, 48, 64, 95, 200}, {31, 33, 57, 100, 255, 700});
}

// A region is filtered like the tiles that it is made of, each reading its neighbour from memory; so is rounding, as
// long as every tile but the last has a width that is a multiple of sixteen.
TYPED_TEST(RowPipeline, TilesWithBordersInMemoryGiveTheWhole) {
    using M = TypeParam;
    using S = typename M::S;
    using D = typename M::D;
    constexpr std::int64_t width = 203, k = 9, anchor = 3;
    Rng rng = makeRng("row tiles", M::channels);
    const auto taps = randomTaps<typename M::K, typename M::Arithmetic>(rng, k, Contents::random);
    const std::vector<S> border(M::channels, S{9});
    std::vector<S> src(width * M::channels);
    for (S &value : src) {
        value = randomValue<S>(rng, Contents::random);
    }
    std::vector<D> whole(src.size()), tiles(src.size());
    std::vector<std::uint8_t> scratch(static_cast<std::size_t>(M::scratchBytes(k)));
    const auto filter = [&](std::vector<D> &dst, std::int64_t first, std::int64_t last, BorderKind flags) {
        D *const row = dst.data() + first * M::channels;
        const RoiSize roi{static_cast<std::int32_t>(last - first), 1};
        ASSERT_EQ(
            M::filter({src.data() + first * M::channels, static_cast<std::int32_t>(src.size() * sizeof(S)), &row, roi,
                       taps.kernel.data(), k, anchor, flags, border.data(), std::abs(taps.divisor), scratch.data()}),
            StatusOk);
    };
    filter(whole, 0, width, BorderConstant);
    filter(tiles, 0, 48, BorderConstant | BorderInMemoryRight);
    filter(tiles, 48, 64, BorderInMemory);
    filter(tiles, 64, 144, BorderReplicate | BorderInMemoryLeft | BorderInMemoryRight);
    filter(tiles, 144, width, BorderConstant | BorderInMemoryLeft);
    EXPECT_EQ(std::memcmp(whole.data(), tiles.data(), whole.size() * sizeof(D)), 0);
}

// ------------------------------------------------------------------------------------------------------- checks

// Of 32-bit sums only these have quotients, as floats, that no int32 holds.
TEST(RowPipelineSums, SaturateAtBothEndsUnderDivisorsOfOne) {
    const auto filtered = [](std::int16_t pixel, const std::vector<std::int16_t> &taps, std::int32_t divisor) {
        const std::vector<std::int16_t> src(33, pixel);
        std::vector<std::int16_t> dst(33);
        std::int16_t *const rows[] = {dst.data()};
        std::uint8_t scratch[48 * 3 + 112];
        EXPECT_EQ(rvxiFilterRowBorderPipeline_16s_C1R(src.data(), 66, rows, {33, 1}, taps.data(), 3, 1, BorderReplicate,
                                                      0, divisor, scratch),
                  StatusOk);
        return dst;
    };
    const std::vector<std::int16_t> low(33, -32768), high(33, 32767);
    EXPECT_EQ(filtered(-32768, {-32768, -32768, 0}, 1), low); // -2^31
    EXPECT_EQ(filtered(-32768, {-32768, -32768, 0}, -1), high);
    EXPECT_EQ(filtered(32767, {32767, 32767, 4}, 1), high); // 2^31 - 2
    EXPECT_EQ(filtered(32767, {32767, 32767, 4}, -1), low);
}

TYPED_TEST(RowPipeline, SizesItsScratchByTheKernelAlone) {
    using M = TypeParam;
    for (const std::int32_t k : {1, 2, 3, 4, 5, 7, 8, 31, 1000}) {
        std::int32_t bytes = -1;
        ASSERT_EQ(M::bufferSize({k == 7 ? 1 : 4000, 3}, k, &bytes), StatusOk);
        EXPECT_EQ(bytes, M::scratchBytes(k));
    }
    std::int32_t bytes = 77;
    EXPECT_EQ(M::bufferSize({1, 1}, 0, &bytes), StatusBadSize);
    EXPECT_EQ(bytes, 77);
}

TYPED_TEST(RowPipeline, ChecksItsArgumentsInOrder) {
    using M = TypeParam;
    using S = typename M::S;
    using D = typename M::D;
    using Call = typename M::Call;
    constexpr int channels = M::channels;
    GuardedImage<S> src(10 * channels, 2);
    GuardedImage<D> dst(10 * channels, 2);
    D *rows[] = {dst.data(), dst.data() + 10 * channels}, *brokenRows[] = {dst.data(), nullptr};
    const typename M::K kernel[3] = {1, 2, 1};
    const S border[3] = {1, 2, 3};
    std::vector<std::uint8_t> scratch(static_cast<std::size_t>(M::scratchBytes(3)));

    const Call good{src.data(), src.step(), rows, {10, 2}, kernel, 3, 1, 1, border, 4, scratch.data()};
    constexpr std::int64_t rowBytes = 10 * channels * sizeof(S);
    Faults<Call> faults;
    faults.nulls(&Call::src, &Call::dstRows, &Call::kernel, &Call::buffer).empty(&Call::roi);
    faults.add("a null row", StatusNullPointer, [&](Call &c) { c.dstRows = brokenRows; });
    if constexpr (channels == 3) {
        faults.nulls(&Call::borderValue);
    }
    faults.values(StatusBadSize, &Call::kernelSize, {0}).values(StatusBadAnchor, &Call::xAnchor, {-1});
    faults.add("anchor behind", StatusBadAnchor, [](Call &c) { c.xAnchor = c.kernelSize < 1 ? 0 : c.kernelSize; });
    faults.shortSteps(rowBytes, &Call::srcStep).values(StatusBadStep, &Call::roi, {{0x60000000, 2}});
    faults.unevenSteps(rowBytes, sizeof(S), &Call::srcStep);
    faults.values(StatusBadArgument, &Call::border, {2, 3, 4, 5, 7, 15, 64 | 2});
    if constexpr (M::divides) {
        faults.values(StatusBadArgument, &Call::divisor, {0});
        if constexpr (std::is_same_v<S, std::uint16_t>) {
            faults.values(StatusBadArgument, &Call::divisor, {-1});
        }
    }
    expectFaultOrder<Call>(
        good, faults, [](const Call &c) { return M::filter(c); }, [&] { return dst.bytes(); });

    if constexpr (M::divides && !std::is_same_v<S, std::uint16_t>) {
        Call negative = good;
        negative.divisor = -1;
        EXPECT_EQ(M::filter(negative), StatusOk);
    }
    if constexpr (sizeof(S) == 1) { // odd steps of bytes are fine
        Call odd = good;
        odd.roi = {9, 2};
        odd.srcStep = 9 * channels + 2;
        EXPECT_EQ(M::filter(odd), StatusOk);
    }
}

} // namespace
