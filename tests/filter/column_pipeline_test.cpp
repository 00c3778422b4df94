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

using Column16sC1 = Member<std::int16_t, std::int16_t, std::int16_t, 1, Wrapping, rvxiFilterColumnPipeline_16s_C1R,
                           rvxiFilterColumnPipelineGetBufferSize_16s_C1R, columnC1>;
using Column16sC3 = Member<std::int16_t, std::int16_t, std::int16_t, 3, Wrapping, rvxiFilterColumnPipeline_16s_C3R,
                           rvxiFilterColumnPipelineGetBufferSize_16s_C3R, columnC3>;
using Column16s8uC1 = Member<std::int16_t, std::uint8_t, std::int16_t, 1, Wrapping, rvxiFilterColumnPipeline_16s8u_C1R,
                             rvxiFilterColumnPipelineGetBufferSize_16s8u_C1R, columnC1>;
using Column16s8uC3 = Member<std::int16_t, std::uint8_t, std::int16_t, 3, Wrapping, rvxiFilterColumnPipeline_16s8u_C3R,
                             rvxiFilterColumnPipelineGetBufferSize_16s8u_C3R, columnC3>;
using Column16s8sC1 = Member<std::int16_t, std::int8_t, std::int16_t, 1, Wrapping, rvxiFilterColumnPipeline_16s8s_C1R,
                             rvxiFilterColumnPipelineGetBufferSize_16s8s_C1R, columnC1>;
using Column16s8sC3 = Member<std::int16_t, std::int8_t, std::int16_t, 3, Wrapping, rvxiFilterColumnPipeline_16s8s_C3R,
                             rvxiFilterColumnPipelineGetBufferSize_16s8s_C3R, columnC3>;
using Column16uC1 =
    Member<std::uint16_t, std::uint16_t, std::uint16_t, 1, Fused, rvxiFilterColumnPipeline_16u_C1R,
           rvxiFilterColumnPipelineGetBufferSize_16u_C1R, [](Bytes w, Bytes k) { return 32 * ((w + 3) / 4 + k) + 64; }>;
using Column16uC3 = Member<std::uint16_t, std::uint16_t, std::uint16_t, 3, Fused, rvxiFilterColumnPipeline_16u_C3R,
                           rvxiFilterColumnPipelineGetBufferSize_16u_C3R,
                           [](Bytes w, Bytes k) { return 32 * ((3 * w + 3) / 4 + k) + 64; }>;
using Column32fC1 = Member<float, float, float, 1, Fused, rvxiFilterColumnPipeline_32f_C1R,
                           rvxiFilterColumnPipelineGetBufferSize_32f_C1R, columnFloat>;
using Column32fC3 = Member<float, float, float, 3, Fused, rvxiFilterColumnPipeline_32f_C3R,
                           rvxiFilterColumnPipelineGetBufferSize_32f_C3R, columnFloat>;
using ColumnLowC1 = Member<std::int16_t, std::int16_t, std::int16_t, 1, Low, rvxiFilterColumnPipeline_Low_16s_C1R,
                           rvxiFilterColumnPipelineGetBufferSize_Low_16s_C1R,
                           [](Bytes w, Bytes) { return 12 * ((w + 7) / 8 * 8) + 64; }>;
using ColumnLowC3 = Member<std::int16_t, std::int16_t, std::int16_t, 3, Low, rvxiFilterColumnPipeline_Low_16s_C3R,
                           rvxiFilterColumnPipelineGetBufferSize_Low_16s_C3R,
                           [](Bytes w, Bytes) { return 36 * ((w + 7) / 8 * 8) + 64; }>;

template <class M> class ColumnPipeline : public testing::Test {};
using Members = testing::Types<Column16sC1, Column16sC3, Column16s8uC1, Column16s8uC3, Column16s8sC1, Column16s8sC3,
                               Column16uC1, Column16uC3, Column32fC1, Column32fC3, ColumnLowC1, ColumnLowC3>;
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
    constexpr std::int32_t huge = std::numeric_limits<std::int32_t>::max();
    std::int32_t bytes = 77;
    EXPECT_EQ(M::bufferSize({0, 0}, 0, nullptr), StatusNullPointer);
    EXPECT_EQ(M::bufferSize({0, 1}, 1, &bytes), StatusBadSize);
    EXPECT_EQ(M::bufferSize({1, 0}, 1, &bytes), StatusBadSize);
    EXPECT_EQ(M::bufferSize({1, 1}, 0, &bytes), StatusBadSize);
    EXPECT_EQ(M::bufferSize({huge, 1}, huge, &bytes), StatusBadSize);
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
    std::vector<Fault<Call>> faults{
        {"no row array", StatusNullPointer, [](Call &c) { c.srcRows = nullptr; }},
        {"no destination", StatusNullPointer, [](Call &c) { c.dst = nullptr; }},
        {"no kernel", StatusNullPointer, [](Call &c) { c.kernel = nullptr; }},
        {"no width", StatusBadSize, [](Call &c) { c.roi.width = -5; }},
        {"no height", StatusBadSize, [](Call &c) { c.roi.height = 0; }},
        {"a null row", StatusNullPointer,
         [&](Call &c) {
             c.srcRows = brokenRows;
             c.kernelSize = 3;
         }},
        {"no taps", StatusBadSize, [](Call &c) { c.kernelSize = 0; }},
        {"short step", StatusBadStep,
         [](Call &c) { c.dstStep = static_cast<std::int32_t>(10 * channels * sizeof(D)) - 1; }},
        {"step that would wrap", StatusBadStep, [](Call &c) { c.roi.width = 0x60000000; }},
    };
    if constexpr (sizeof(D) > 1) {
        faults.push_back({"odd step", StatusStepNotMultiple, [](Call &c) { c.dstStep |= 1; }});
    }
    faults.push_back({"no buffer", StatusNullPointer, [](Call &c) { c.buffer = nullptr; }});
    if constexpr (M::divides) {
        faults.push_back({"divisor 0", StatusBadArgument, [](Call &c) { c.divisor = 0; }});
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
