// The pipeline's column stage against its definition, in guarded memory: every member, kernel lengths around the
// special ones, few and many output rows, source rows in any order and anywhere, scratch of exactly the promised size.
#include "filter/pipeline_reference.h"
#include "support/status_table.h"

namespace {

using namespace support;
using namespace pipeline;

// ------------------------------------------------------------------------------------------------------ members

// Arguments of every member in one shape: always a divisor.
template <class S, class D, class K> struct ColumnCall {
    const S *const *srcRows;
    D *dst;
    std::int32_t dstStep;
    RoiSize roi;
    const K *kernel;
    std::int32_t kernelSize;
    std::int32_t divisor;
    std::uint8_t *buffer;
};

// scratch: bytes for rows of w pixels and k taps, as documented.
template <class S_, class D_, class K_, int channels_, class Arithmetic_, auto run, auto size, auto scratch>
struct Member {
    using S = S_;
    using D = D_;
    using K = K_;
    using Arithmetic = Arithmetic_;
    using Call = ColumnCall<S, D, K>;
    static constexpr int channels = channels_;
    static constexpr bool divides = !std::is_same_v<D, float>;

    static StatusCode filter(const Call &c) {
        if constexpr (divides) {
            return run(c.srcRows, c.dst, c.dstStep, c.roi, c.kernel, c.kernelSize, c.divisor, c.buffer);
        } else {
            return run(c.srcRows, c.dst, c.dstStep, c.roi, c.kernel, c.kernelSize, c.buffer);
        }
    }
    static StatusCode bufferSize(RoiSize roi, std::int32_t k, std::int32_t *bytes) { return size(roi, k, bytes); }
    static std::int64_t scratchBytes(std::int64_t w, std::int64_t k) { return scratch(w, k); }
};

using Bytes = std::int64_t;
constexpr auto columnC1 = [](Bytes w, Bytes) { return 12 * ((w + 3) / 4 * 4) + 64; };
constexpr auto columnC3 = [](Bytes w, Bytes) { return 36 * ((w + 3) / 4 * 4) + 64; };
constexpr auto columnFloat = [](Bytes, Bytes k) { return 32 * k + 32; };

using I8 = std::int8_t;
using U8 = std::uint8_t;
using I16 = std::int16_t;
using U16 = std::uint16_t;
// Coefficients are of the type of the source rows.
#define MEMBER(S, D, ARITHMETIC, CHANNELS, SUFFIX, ...)                                                                \
    Member<S, D, S, CHANNELS, ARITHMETIC, rvxiFilterColumnPipeline_##SUFFIX,                                           \
           rvxiFilterColumnPipelineGetBufferSize_##SUFFIX, __VA_ARGS__>

template <class M> class ColumnPipeline : public testing::Test {};
using Members = testing::Types<
    MEMBER(I16, I16, Wrapping, 1, 16s_C1R, columnC1), MEMBER(I16, I16, Wrapping, 3, 16s_C3R, columnC3),
    MEMBER(I16, U8, Wrapping, 1, 16s8u_C1R, columnC1), MEMBER(I16, U8, Wrapping, 3, 16s8u_C3R, columnC3),
    MEMBER(I16, I8, Wrapping, 1, 16s8s_C1R, columnC1), MEMBER(I16, I8, Wrapping, 3, 16s8s_C3R, columnC3),
    MEMBER(U16, U16, Fused, 1, 16u_C1R, [](Bytes w, Bytes k) { return 32 * ((w + 3) / 4 + k) + 64; }),
    MEMBER(U16, U16, Fused, 3, 16u_C3R, [](Bytes w, Bytes k) { return 32 * ((3 * w + 3) / 4 + k) + 64; }),
    MEMBER(float, float, Fused, 1, 32f_C1R, columnFloat), MEMBER(float, float, Fused, 3, 32f_C3R, columnFloat),
    MEMBER(I16, I16, Low, 1, Low_16s_C1R, [](Bytes w, Bytes) { return 12 * ((w + 7) / 8 * 8) + 64; }),
    MEMBER(I16, I16, Low, 3, Low_16s_C3R, [](Bytes w, Bytes) { return 36 * ((w + 7) / 8 * 8) + 64; })>;
#undef MEMBER
TYPED_TEST_SUITE(ColumnPipeline, Members);

// -------------------------------------------------------------------------------------------------- differential

template <class M> void compare(std::int64_t width, std::int64_t height, std::int64_t k, Contents contents, Rng &rng) {
    using S = typename M::S;
    using D = typename M::D;
    constexpr std::int64_t channels = M::channels;

    // A few stored rows; the array names them in any order, with repetitions.
    GuardedImage<S> src(
        width * channels, uniform(rng, 1, height + k - 1),
        {.padding = uniform(rng, 0, 5), .guard = uniform(rng, 0, 3) == 0 ? Guard::before : Guard::behind});
    src.fill(rng, contents);
    GuardedImage<D> dst(width * channels, height,
                        {.padding = uniform(rng, 0, 9) * static_cast<std::int64_t>(sizeof(D)),
                         .skew = uniform(rng, 0, 2) == 0 ? 1 : 0});
    std::vector<std::int64_t> order;
    std::vector<const S *> rows;
    for (std::int64_t i = 0; i < height + k - 1; ++i) {
        order.push_back(uniform(rng, 0, src.height() - 1));
        rows.push_back(
            reinterpret_cast<const S *>(reinterpret_cast<const char *>(src.data()) + order.back() * src.step()));
    }
    const auto taps = randomTaps<typename M::K, typename M::Arithmetic>(rng, k, contents);
    Guarded<const S *> guardedRows(rows);
    Guarded<typename M::K> kernel(taps.kernel);
    OddScratch scratch(M::scratchBytes(width, k), rng);

    ASSERT_EQ(M::filter({guardedRows.data(), dst.data(), dst.step(), dst.roi(M::channels), kernel.data(),
                         static_cast<std::int32_t>(k), taps.divisor, scratch.data()}),
              StatusOk);

    std::vector<S> under(taps.kernel.size());
    const auto expected = [&](std::int64_t element, std::int64_t y) {
        for (std::int64_t i = 0; i < k; ++i) {
            under[static_cast<std::size_t>(i)] = src.at(element, order[static_cast<std::size_t>(y + i)]);
        }
        return M::Arithmetic::template result<D>(under, taps.kernel, taps.divisor,
                                                 truncates(element / channels, width));
    };
    ASSERT_TRUE(imageIs(dst, expected));
    ASSERT_TRUE(scratch.intactBehind());
}

template <class M> void compareAll(const std::vector<std::int64_t> &widths, const std::vector<std::int64_t> &kernels) {
    Rng rng = makeRng("column pipeline", static_cast<std::uint64_t>(kernels.front()));
    for (const std::int64_t width : widths) {
        for (const std::int64_t k : kernels) {
            const std::int64_t height = uniform(rng, 1, 9);
            const Contents contents = allContents[uniform(rng, 0, std::ssize(allContents) - 1)];
            SCOPED_TRACE(testing::Message() << "width " << width << ", height " << height << ", " << k
                                            << " taps, contents " << static_cast<int>(contents));
            compare<M>(width, height, k, contents, rng);
            if (testing::Test::HasFatalFailure()) {
                return;
            }
        }
    }
}

TYPED_TEST(ColumnPipeline, FollowsItsDefinition) {
    compareAll<TypeParam>(testWidths(), {1, 2, 3, 3, 4, 5, 5, 6, 7, 8, 15});
}

TYPED_TEST(ColumnPipeline, FiltersWithLongKernels) {
    compareAll<TypeParam>({1, 5, 15, 16, 17, 33, 95}, {31, 57, 100, 255, 700});
}

// ------------------------------------------------------------------------------------------------------- checks

TYPED_TEST(ColumnPipeline, SizesItsScratch) {
    using M = TypeParam;
    for (const std::int32_t width : {1, 2, 3, 4, 5, 7, 8, 9, 16, 1921}) {
        for (const std::int32_t k : {1, 3, 31}) {
            std::int32_t bytes = -1;
            ASSERT_EQ(M::bufferSize({width, 3}, k, &bytes), StatusOk);
            EXPECT_EQ(bytes, M::scratchBytes(width, k));
        }
    }
    std::int32_t bytes = 77;
    EXPECT_EQ(M::bufferSize({1, 1}, 0, &bytes), StatusBadSize);
    EXPECT_EQ(bytes, 77);
}

TYPED_TEST(ColumnPipeline, ChecksItsArgumentsInOrder) {
    using M = TypeParam;
    using S = typename M::S;
    using D = typename M::D;
    using Call = typename M::Call;
    constexpr int channels = M::channels;
    GuardedImage<S> src(10 * channels, 4);
    GuardedImage<D> dst(10 * channels, 2);
    const S *const row = src.data();
    const S *const rows[] = {row, row, row, row}, *const brokenRows[] = {row, row, row, nullptr};
    const typename M::K kernel[3] = {1, 2, 1};
    std::vector<std::uint8_t> scratch(static_cast<std::size_t>(M::scratchBytes(10, 3)));

    const Call good{rows, dst.data(), dst.step(), {10, 2}, kernel, 3, 4, scratch.data()};
    constexpr std::int64_t rowBytes = 10 * channels * sizeof(D);
    Faults<Call> faults;
    faults.nulls(&Call::srcRows, &Call::dst, &Call::kernel).empty(&Call::roi);
    faults.add("a null row", StatusNullPointer, [&](Call &c) {
        c.srcRows = brokenRows;
        c.kernelSize = 3;
    });
    faults.values(StatusBadSize, &Call::kernelSize, {0}).shortSteps(rowBytes, &Call::dstStep);
    faults.values(StatusBadStep, &Call::roi, {{0x60000000, 2}}).unevenSteps(rowBytes, sizeof(D), &Call::dstStep);
    faults.nulls(&Call::buffer);
    if constexpr (M::divides) {
        faults.values(StatusBadArgument, &Call::divisor, {0});
    }
    expectFaultOrder<Call>(
        good, faults, [](const Call &c) { return M::filter(c); }, [&] { return dst.bytes(); });

    Call negative = good;
    negative.divisor = -1;
    EXPECT_EQ(M::filter(negative), StatusOk);
    negative.kernelSize = std::numeric_limits<std::int32_t>::min(); // no row to look at
    EXPECT_EQ(M::filter(negative), StatusBadSize);
}

} // namespace
