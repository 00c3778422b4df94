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

std::vector<Fault<SetUpArgs>> setUpFaults() {
    std::vector<Fault<SetUpArgs>> faults{
        {"first pointer", StatusNullPointer, [](SetUpArgs &a) { a.first = nullptr; }},
        {"second pointer", StatusNullPointer, [](SetUpArgs &a) { a.second = nullptr; }},
        {"no width", StatusBadSize, [](SetUpArgs &a) { a.roi.width = 0; }},
        {"negative height", StatusBadSize, [](SetUpArgs &a) { a.roi.height = -7; }},
    };
    for (const std::int32_t k : {1, 4, 0, -3, INT32_MIN}) {
        faults.push_back({"K " + std::to_string(k), StatusBadArgument, [=](SetUpArgs &a) { a.kernelSize = k; }});
    }
    for (const PixelTypeCode type : {0, 3, 19, -1}) {
        faults.push_back({"type " + std::to_string(type), StatusBadDataType, [=](SetUpArgs &a) { a.type = type; }});
    }
    for (const std::int32_t channels : {0, 2, 4, -1}) {
        faults.push_back({std::to_string(channels) + " channels", StatusBadChannelLayout,
                          [=](SetUpArgs &a) { a.channels = channels; }});
    }
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

    std::vector<Fault<SetUpArgs>> faults = setUpFaults();
    for (const float sigma : {0.0f, -0.0f, -1.0f, std::numeric_limits<float>::quiet_NaN()}) {
        faults.push_back({"sigma " + std::to_string(sigma), StatusBadArgument, [=](SetUpArgs &a) { a.sigma = sigma; }});
    }
    for (const BorderKind border : {2, 3, 4, 5, 7, 8, 15, 256, 257, 1 | 512, -1, INT32_MIN}) {
        faults.push_back(
            {"border " + std::to_string(border), StatusBadBorder, [=](SetUpArgs &a) { a.border = border; }});
    }
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
    std::vector<Fault<A>> faults{
        {"null source", StatusNullPointer, [](A &a) { a.src = nullptr; }},
        {"null destination", StatusNullPointer, [](A &a) { a.dst = nullptr; }},
        {"null record", StatusNullPointer, [](A &a) { a.spec = nullptr; }},
        {"null buffer", StatusNullPointer, [](A &a) { a.buffer = nullptr; }},
    };
    if (channels == 3) { // applied last: a spoiled record may need no value
        faults.push_back({"null value", StatusNullPointer, [=](A &a) {
                              a.value = nullptr;
                              a.spec = good->get();
                          }});
    }
    faults.push_back({"short source step", StatusBadStep, [=](A &a) { a.srcStep = rowBytes - 1; }});
    faults.push_back({"short destination step", StatusBadStep, [=](A &a) { a.dstStep = rowBytes - 1; }});
    faults.push_back({"negative step", StatusBadStep, [](A &a) { a.srcStep = -64; }});
    if (sizeof(T) > 1) {
        faults.push_back({"odd source step", StatusStepNotMultiple, [=](A &a) { a.srcStep = rowBytes + 1; }});
        faults.push_back({"odd destination step", StatusStepNotMultiple,
                          [=](A &a) { a.dstStep = rowBytes + static_cast<std::int32_t>(sizeof(T)) / 2; }});
    }
    faults.push_back({"no height", StatusBadSize, [](A &a) { a.roi.height = 0; }});
    faults.push_back({"negative height", StatusBadSize, [](A &a) { a.roi.height = -1; }});
    for (const std::int32_t k : {4, 1, 0, -5}) {
        const auto spec = record([=](GaussianSpec &s) { s.kernelSize = k; });
        faults.push_back({"K " + std::to_string(k), StatusBadArgument, [=](A &a) { a.spec = spec->get(); }});
    }
    for (const BorderKind border : {2, 3, 5, 7, 256, -1}) {
        const auto spec = record([=](GaussianSpec &s) { s.border = border; });
        faults.push_back({"border " + std::to_string(border), StatusBadBorder, [=](A &a) { a.spec = spec->get(); }});
    }
    for (const PixelTypeCode type : {PixelType8u, PixelType16u, PixelType16s, PixelType32f}) {
        if (type != Type<T>::code) {
            const auto spec = record([=](GaussianSpec &s) { s.type = type; });
            faults.push_back(
                {"record of type " + std::to_string(type), StatusBadDataType, [=](A &a) { a.spec = spec->get(); }});
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
    EXPECT_EQ(rvxiFilterGaussGetBufferSize_32f_C1R({0, 4}, 4, nullptr), StatusNullPointer);
    EXPECT_EQ(rvxiFilterGaussGetBufferSize_32f_C1R({0, 4}, 4, &bytes), StatusBadSize);
    EXPECT_EQ(rvxiFilterGaussGetBufferSize_32f_C1R({4, 4}, 4, &bytes), StatusBadArgument);
    EXPECT_EQ(rvxiFilterGaussGetBufferSize_32f_C1R({4, 4}, 1, &bytes), StatusBadArgument);
    EXPECT_EQ(rvxiFilterGaussGetBufferSize_32f_C1R({INT32_MAX, 1}, 3, &bytes), StatusBadSize) << "does not fit";
    EXPECT_EQ(rvxiFilterGaussGetBufferSize_32f_C1R({INT32_MAX, 1}, INT32_MAX, &bytes), StatusBadSize);
    EXPECT_EQ(bytes, -5) << "written despite a failure";
    ASSERT_EQ(rvxiFilterGaussGetBufferSize_32f_C1R({19, 4}, 5, &bytes), StatusOk);
    GuardedBuffer buffer(bytes);
    using A = OneCall;
    expectFaultOrder<A>(
        {src.data(), src.step(), dst.data(), dst.step(), dst.roi(), 5, 1, buffer.data(), 1.0f},
        {{"null source", StatusNullPointer, [](A &a) { a.src = nullptr; }},
         {"null destination", StatusNullPointer, [](A &a) { a.dst = nullptr; }},
         {"null buffer", StatusNullPointer, [](A &a) { a.buffer = nullptr; }},
         {"no width", StatusBadSize, [](A &a) { a.roi.width = 0; }},
         {"no height", StatusBadSize, [](A &a) { a.roi.height = 0; }},
         {"short source step", StatusBadStep, [](A &a) { a.srcStep = 75; }},
         {"short destination step", StatusBadStep, [](A &a) { a.dstStep = 72; }},
         {"odd source step", StatusStepNotMultiple, [](A &a) { a.srcStep = 78; }},
         {"odd destination step", StatusStepNotMultiple, [](A &a) { a.dstStep = 81; }},
         {"even K", StatusBadArgument, [](A &a) { a.kernelSize = 6; }},
         {"K of 1", StatusBadArgument, [](A &a) { a.kernelSize = 1; }},
         {"sigma 0", StatusBadArgument, [](A &a) { a.sigma = 0; }},
         {"negative sigma", StatusBadArgument, [](A &a) { a.sigma = -2; }},
         {"border 2", StatusBadBorder, [](A &a) { a.border = 2; }},
         {"border 256", StatusBadBorder, [](A &a) { a.border = 256; }}},
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

TEST(GaussianCalls, SizesThatDoNotFit) {
    std::int32_t spec = -5, buffer = -5;
    const auto query = [&](RoiSize roi, std::int32_t k, PixelTypeCode type) {
        return rvxiFilterGaussianGetBufferSize(roi, k, type, 3, &spec, &buffer);
    };
    for (const PixelTypeCode type : {PixelType8u, PixelType16u, PixelType16s, PixelType32f}) {
        EXPECT_EQ(query({INT32_MAX, 1}, 3, type), StatusBadSize);
        EXPECT_EQ(query({60000000, 1}, 3, type), StatusBadSize);
        EXPECT_EQ(query({1, 1}, 20001, type), StatusBadSize) << "the buffer, not the record";
        EXPECT_EQ(query({INT32_MAX, INT32_MAX}, INT32_MAX, type), StatusBadSize);
    }
    EXPECT_EQ(spec, -5);
    EXPECT_EQ(buffer, -5);
}

} // namespace
