// The Gaussian filter's record, statuses and sizes.
#include "filter/gauss_members.h"

#include "support/status_table.h"

#include <memory>

namespace {

using namespace gauss;

// ------------------------------------------------------------------------------------------------------ the record

template <class T> void expectRecord(std::int32_t k, float sigma, BorderKind border) {
    Record<T> record({5, 4}, k, border, 1, sigma);
    ASSERT_EQ(record.status, StatusOk);
    const std::vector<std::uint8_t> bytes = record.contents();
    const auto word = [&](std::size_t at) {
        std::int32_t value;
        std::memcpy(&value, bytes.data() + at, sizeof value);
        return value;
    };
    const std::int32_t head[] = {k, 20, Type<T>::code, border, Type<T>::shift};
    for (std::size_t i = 0; i < std::size(head); ++i) {
        ASSERT_EQ(word(4 * i), head[i]) << "field " << i;
    }
    // The coefficients, and not a byte behind them.
    using K = typename Type<T>::K;
    const auto kernel = plainKernel<T>(k, sigma);
    constexpr std::size_t copies = std::is_same_v<T, float> ? 8 : 1;
    std::size_t at = 32;
    for (const K tap : kernel) {
        for (std::size_t copy = 0; copy < copies; ++copy, at += sizeof(K)) {
            ASSERT_EQ(std::memcmp(bytes.data() + at, &tap, sizeof tap), 0) << "coefficient at byte " << at;
        }
    }
    for (; at < bytes.size(); ++at) {
        ASSERT_EQ(bytes[at], static_cast<std::uint8_t>(0xa5 + 31 * at)) << "byte " << at;
    }
}

TEST(GaussianCalls, RecordsAreLaidOutAsDocumented) {
    for (const std::int32_t k : {3, 5, 17, 4001}) {
        for (const float sigma : {0.2f, 1.0f, 2.75f, 1e19f}) {
            for (const BorderKind border : {0, 1 | 16 | 128, 6}) {
                expectRecord<std::uint8_t>(k, sigma, border);
                expectRecord<std::uint16_t>(k, sigma, border);
                expectRecord<std::int16_t>(k, sigma, border);
                expectRecord<float>(k, sigma, border);
            }
        }
    }
}

TEST(GaussianCalls, KnownCoefficients) {
    const auto coefficients = [](auto record) {
        const std::vector<std::uint8_t> bytes = record.contents();
        std::vector<std::uint16_t> taps;
        for (std::size_t at = 32; at < 38; at += 2) {
            taps.push_back(static_cast<std::uint16_t>(bytes.at(at) | bytes.at(at + 1) << 8));
        }
        return taps;
    };
    using Taps = std::vector<std::uint16_t>;
    EXPECT_EQ(coefficients(Record<std::uint8_t>({9, 9}, 3, 1, 1, 1.0f)), (Taps{1123, 1851, 1123}));
    EXPECT_EQ(coefficients(Record<std::uint16_t>({9, 9}, 3, 1, 1, 1.0f)), (Taps{8981, 14807, 8981}));
    EXPECT_EQ(coefficients(Record<std::int16_t>({9, 9}, 3, 1, 3, 1.0f)), (Taps{8981, 14807, 8981}));
    // A sigma whose square is 0 leaves the middle alone.
    EXPECT_EQ(coefficients(Record<std::uint8_t>({9, 9}, 3, 1, 1, 1e-30f)), (Taps{0, 4096, 0}));
    EXPECT_EQ(coefficients(Record<std::int16_t>({9, 9}, 3, 1, 1, 1e-30f)), (Taps{0, 32768, 0}));
}

// ------------------------------------------------------------------------------------------------------- statuses

struct SetUpArgs {
    RoiSize roi;
    std::int32_t kernelSize;
    BorderKind border;
    PixelTypeCode type;
    std::int32_t channels;
    void *first, *second; // record and buffer, or the two sizes
    float sigma;
};

Faults<SetUpArgs> setUpFaults() {
    using A = SetUpArgs;
    Faults<A> faults;
    faults.nulls(&A::first, &A::second).empty(&A::roi);
    faults.values(StatusBadArgument, &A::kernelSize, {1, 4, 0, -3, INT32_MIN});
    faults.values(StatusBadDataType, &A::type, {0, 3, 19, -1});
    faults.values(StatusBadChannelLayout, &A::channels, {0, 2, 4, -1});
    return faults;
}

TEST(GaussianCalls, StatusesOfSetUp) {
    std::int32_t sizes[2] = {-5, -5};
    expectFaultOrder<SetUpArgs>(
        {{7, 7}, 5, 1, PixelType16u, 3, &sizes[0], &sizes[1], 1.0f}, setUpFaults(),
        [](const SetUpArgs &a) {
            return rvxiFilterGaussianGetBufferSize(a.roi, a.kernelSize, a.type, a.channels,
                                                   static_cast<std::int32_t *>(a.first),
                                                   static_cast<std::int32_t *>(a.second));
        },
        [&] {
            const auto *bytes = reinterpret_cast<const std::uint8_t *>(sizes);
            return std::vector<std::uint8_t>(bytes, bytes + sizeof sizes);
        });

    Faults<SetUpArgs> faults = setUpFaults();
    faults.values(StatusBadArgument, &SetUpArgs::sigma, {0.0f, -0.0f, -1.0f, std::numeric_limits<float>::quiet_NaN()});
    faults.values(StatusBadBorder, &SetUpArgs::border, {2, 3, 4, 5, 7, 8, 15, 256, 257, 1 | 512, -1, INT32_MIN});
    GuardedBuffer record(16 * 5 + 36), buffer(1);
    record.scribble();
    expectFaultOrder<SetUpArgs>(
        {{7, 7}, 5, 6 | 16, PixelType16u, 3, record.data(), buffer.data(), 1.0f}, faults,
        [](const SetUpArgs &a) {
            return rvxiFilterGaussianInit(a.roi, a.kernelSize, a.border, a.type, a.channels,
                                          static_cast<GaussianSpec *>(a.first), static_cast<std::uint8_t *>(a.second),
                                          a.sigma);
        },
        [&] { return std::vector<std::uint8_t>(record.data(), record.data() + record.size()); });
}

template <class T> void checkStatuses(int channels) {
    SCOPED_TRACE(testing::Message() << "type " << Type<T>::code << ", channels " << channels);
    const Run<T> run = Type<T>::member(channels);
    GuardedImage<T> src(19 * channels, 4, {.padding = 8}), dst(19 * channels, 4, {.padding = 8});
    const RoiSize roi = src.roi(channels);
    GuardedBuffer buffer(Record<T>::bytes(roi, 5, channels, true));
    const T values[3] = {};
    const auto record = [&](auto spoil) {
        auto spec = std::make_shared<Record<T>>(roi, 5, BorderConstant, channels, 1.0f);
        spoil(*spec->get());
        return spec;
    };
    const auto good = record([](GaussianSpec &) {});
    const auto rowBytes = static_cast<std::int32_t>(19 * channels * sizeof(T));
    using A = Args<T>;
    Faults<A> faults;
    faults.nulls(&A::src, &A::dst, &A::spec, &A::buffer);
    if (channels == 3) { // applied last: a spoiled record may need no value
        faults.add("null value", StatusNullPointer, [=](A &a) {
            a.value = nullptr;
            a.spec = good->get();
        });
    }
    faults.shortSteps(rowBytes, &A::srcStep, &A::dstStep).values(StatusBadStep, &A::srcStep, {-64});
    faults.unevenSteps(rowBytes, sizeof(T), &A::srcStep, &A::dstStep);
    faults.values(StatusBadSize, &A::roi, {{19, 0}, {19, -1}});
    const auto spoiledRecord = [&](StatusCode status, auto spoil) {
        const auto spec = record(spoil);
        faults.add("record", status, [=](A &a) { a.spec = spec->get(); });
    };
    for (const std::int32_t k : {4, 1, 0, -5}) {
        spoiledRecord(StatusBadArgument, [=](GaussianSpec &s) { s.kernelSize = k; });
    }
    for (const BorderKind border : {2, 3, 5, 7, 256, -1}) {
        spoiledRecord(StatusBadBorder, [=](GaussianSpec &s) { s.border = border; });
    }
    for (const PixelTypeCode type : {PixelType8u, PixelType16u, PixelType16s, PixelType32f}) {
        if (type != Type<T>::code) {
            spoiledRecord(StatusBadDataType, [=](GaussianSpec &s) { s.type = type; });
        }
    }
    expectFaultOrder<A>({src.data(), src.step(), dst.data(), dst.step(), roi, values, good->get(), buffer.data()},
                        faults, run, [&] { return dst.bytes(); });

    // Of two faults in the record the kernel size is seen first.
    const auto both = record([](GaussianSpec &s) { s.kernelSize = 4, s.border = 2, s.type = 0; });
    const auto later = record([](GaussianSpec &s) { s.border = 2, s.type = 0; });
    const A args{src.data(), src.step(), dst.data(), dst.step(), roi, values, both->get(), buffer.data()};
    EXPECT_EQ(run(args), StatusBadArgument);
    A laterArgs = args;
    laterArgs.spec = later->get();
    EXPECT_EQ(run(laterArgs), StatusBadBorder);
    // Every step covers a row without pixels.
    A empty = args;
    empty.roi.width = 0;
    EXPECT_EQ(run(empty), StatusBadSize);
    empty.srcStep = -64;
    EXPECT_EQ(run(empty), StatusBadStep);
    // A step must cover the row even where its bytes would wrap in 32 bits.
    A wide = args;
    wide.roi = {1 << 30, 1};
    if (sizeof(T) * static_cast<std::size_t>(channels) > 1) {
        EXPECT_EQ(run(wide), StatusBadStep);
    }
    if (channels == 3) { // nothing is constant here
        for (const BorderKind border : {1, 6}) {
            GuardedImage<T> inner(9, 1, {.left = 6, .top = 2, .right = 6, .bottom = 2}), out(9, 1);
            Record<T> spec({3, 1}, 5, border, 3, 1.0f);
            EXPECT_EQ(
                run({inner.data(), inner.step(), out.data(), out.step(), {3, 1}, nullptr, spec.get(), buffer.data()}),
                StatusOk);
        }
    }
}

TEST(GaussianCalls, StatusesInTheOrderOfTheChecks) {
    for (const int channels : {1, 3}) {
        checkStatuses<std::uint8_t>(channels);
        checkStatuses<std::uint16_t>(channels);
        checkStatuses<std::int16_t>(channels);
        checkStatuses<float>(channels);
    }
}

struct OneCall {
    const float *src;
    std::int32_t srcStep;
    float *dst;
    std::int32_t dstStep;
    RoiSize roi;
    std::int32_t kernelSize;
    BorderKind border;
    std::uint8_t *buffer;
    float sigma;
};

TEST(GaussianCalls, StatusesOfTheOneCallVariant) {
    GuardedImage<float> src(19, 4, {.padding = 8}), dst(19, 4, {.padding = 8});
    std::int32_t bytes = -5;
    EXPECT_EQ(rvxiFilterGaussGetBufferSize_32f_C1R({4, 4}, 4, &bytes), StatusBadArgument);
    EXPECT_EQ(rvxiFilterGaussGetBufferSize_32f_C1R({4, 4}, 1, &bytes), StatusBadArgument);
    EXPECT_EQ(bytes, -5) << "written despite a failure";
    ASSERT_EQ(rvxiFilterGaussGetBufferSize_32f_C1R({19, 4}, 5, &bytes), StatusOk);
    GuardedBuffer buffer(bytes);
    using A = OneCall;
    Faults<A> faults;
    faults.nulls(&A::src, &A::dst, &A::buffer).empty(&A::roi).shortSteps(76, &A::srcStep, &A::dstStep);
    faults.unevenSteps(76, 4, &A::srcStep, &A::dstStep).values(StatusBadArgument, &A::kernelSize, {6, 1});
    faults.values(StatusBadArgument, &A::sigma, {0, -2}).values(StatusBadBorder, &A::border, {2, 256});
    expectFaultOrder<A>(
        {src.data(), src.step(), dst.data(), dst.step(), dst.roi(), 5, 1, buffer.data(), 1.0f}, faults,
        [](const A &a) {
            return rvxiFilterGaussBorder_32f_C1R(a.src, a.srcStep, a.dst, a.dstStep, a.roi, a.kernelSize, a.border,
                                                 a.buffer, a.sigma, 0.0f);
        },
        [&] { return dst.bytes(); });
}

// ---------------------------------------------------------------------------------------------------------- sizes

// Computed from the documented parts. At 1x1 with 3 taps, 17x3 with 5, 640x480 with 15, 30x2 with 31.
TEST(GaussianCalls, Sizes) {
    struct Row {
        PixelTypeCode type;
        std::int32_t channels;
        std::int32_t buffers[4];
    };
    constexpr Row rows[] = {
        {PixelType8u, 1, {600, 1404, 66576, 10312}},   {PixelType8u, 3, {948, 3148, 197764, 26860}},
        {PixelType16u, 1, {800, 1632, 64880, 11912}},  {PixelType16u, 3, {1088, 3296, 191536, 29496}},
        {PixelType16s, 1, {688, 1488, 66736, 10568}},  {PixelType16s, 3, {840, 3000, 197416, 26192}},
        {PixelType32f, 1, {960, 2272, 120560, 20936}}, {PixelType32f, 3, {1760, 5728, 359600, 57608}},
    };
    struct Shape {
        RoiSize roi;
        std::int32_t kernelSize, oneCall;
    };
    constexpr Shape shapes[] = {{{1, 1}, 3, 960}, {{17, 3}, 5, 2512}, {{640, 480}, 15, 120624}, {{30, 2}, 31, 28720}};
    for (std::size_t i = 0; i < 4; ++i) {
        const auto [roi, k, oneCall] = shapes[i];
        for (const Row &row : rows) {
            std::int32_t spec = -1, buffer = -1;
            EXPECT_EQ(rvxiFilterGaussianGetBufferSize(roi, k, row.type, row.channels, &spec, &buffer), StatusOk);
            EXPECT_EQ(spec, row.type == PixelType32f ? 32 * k + 32 : 16 * k + 36);
            EXPECT_EQ(buffer, row.buffers[i]) << "type " << row.type << ", channels " << row.channels << ", case " << i;
        }
        std::int32_t size = -1;
        EXPECT_EQ(rvxiFilterGaussGetBufferSize_32f_C1R(roi, k, &size), StatusOk);
        EXPECT_EQ(size, oneCall) << "case " << i;
    }
}

} // namespace
