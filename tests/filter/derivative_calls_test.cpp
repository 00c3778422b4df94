// Statuses and scratch sizes of the derivative and low-pass filters, and the Sobel kernel generator.
#include "filter/derivative_members.h"

#include "support/status_table.h"

#include <map>

namespace {

using namespace derivative;
using namespace support;

template <class T, class D> void checkStatuses() {
    for (const Member<T, D> &m : members<T, D>()) {
        GuardedImage<T> src(19, 4, {.padding = 8});
        GuardedImage<D> dst(19, 4, {.padding = 8});
        GuardedBuffer buffer(8192);
        using A = Args<T, D>;
        constexpr std::int64_t srcRow = 19 * sizeof(T), dstRow = 19 * sizeof(D);
        Faults<A> faults;
        faults.nulls(&A::src, &A::dst, &A::buffer).empty(&A::roi);
        faults.shortSteps(srcRow, &A::srcStep).shortSteps(dstRow, &A::dstStep);
        faults.values(StatusBadStep, &A::srcStep, {-64});
        faults.unevenSteps(srcRow, sizeof(T), &A::srcStep).unevenSteps(dstRow, sizeof(D), &A::dstStep);
        faults.values(StatusBadArgument, &A::border,
                      {5, 7, 15, 5 | 16, 7 | 240, 256 | 1, 512, 6 | 1024, -1, INT32_MIN});
        if constexpr (std::is_same_v<D, std::int8_t>) {
            faults.values(StatusBadArgument, &A::divisor, {0});
        }
        if (m.hasMask) {
            faults.values(StatusBadMaskSize, &A::mask, {35, 0, 3, 53, -33});
        }
        SCOPED_TRACE(m.name);
        expectFaultOrder<A>(
            {src.data(), src.step(), dst.data(), dst.step(), dst.roi(), 33, BorderReplicate, 0, 1, buffer.data()},
            faults, m.run, [&] { return dst.bytes(); });
        // A step must cover the row even where its bytes would wrap in 32 bits.
        if (sizeof(T) > 1) {
            EXPECT_EQ(m.run({src.data(), 64, dst.data(), 64, {1 << 30, 1}, 33, BorderReplicate, 0, 1, buffer.data()}),
                      StatusBadStep);
        }
    }
}

TEST(DerivativeCalls, StatusesInTheOrderOfTheChecks) {
    checkStatuses<std::uint8_t, std::int8_t>();
    checkStatuses<std::uint8_t, std::int16_t>();
    checkStatuses<std::uint8_t, std::uint8_t>();
    checkStatuses<float, float>();
}

// Flags beside a kind, bits above the flags beside a flag, and odd steps of 8u sources are fine.
TEST(DerivativeCalls, WhatIsAccepted) {
    GuardedImage<std::uint8_t> src(5, 5, {.padding = 2, .left = 2, .top = 2, .right = 2, .bottom = 2});
    GuardedImage<std::int16_t> dst(5, 5);
    GuardedBuffer buffer(8192);
    for (const BorderKind border : {0, 1, 2, 3, 4, 6, 16, 1 | 32, 2 | 64, 6 | 16, 128 | 256 | 3, 0x7fffff00 | 240}) {
        EXPECT_EQ(rvxiFilterLaplacianBorder_8u16s_C1R(src.data(), src.step(), dst.data(), dst.step(), dst.roi(), 55,
                                                      border, 0, buffer.data()),
                  StatusOk)
            << border;
    }
}

struct Sizes {
    std::vector<std::int32_t> of3x3, of5x5; // at 1x1, 17x3 and 640x480
};

template <class T, class D> void checkSizes(const std::map<std::string, Sizes> &table) {
    constexpr RoiSize rois[] = {{1, 1}, {17, 3}, {640, 480}};
    for (const Member<T, D> &m : members<T, D>()) {
        SCOPED_TRACE(m.name);
        const Sizes &sizes = table.contains(m.name) ? table.at(m.name) : table.at("others");
        for (std::size_t i = 0; i < 3; ++i) {
            std::int32_t bytes = 0;
            EXPECT_EQ(m.size(rois[i], 33, &bytes), StatusOk);
            EXPECT_EQ(bytes, sizes.of3x3[i]) << "3x3 at " << rois[i].width;
            if (m.hasMask) {
                EXPECT_EQ(m.size(rois[i], 55, &bytes), StatusOk);
                EXPECT_EQ(bytes, sizes.of5x5[i]) << "5x5 at " << rois[i].width;
            }
        }

        std::int32_t bytes = -5;
        if (m.hasMask) {
            EXPECT_EQ(m.size({4, 4}, 35, &bytes), StatusBadMaskSize);
            EXPECT_EQ(m.size({INT32_MAX, 1}, 35, &bytes), StatusBadMaskSize);
        }
        EXPECT_EQ(bytes, -5) << "written despite a failure";
    }
}

// Computed by hand from the parts: 42 (50) bytes a column for 16-bit intermediates, twice that for floats and for the
// Laplacian; then the constants; then 168 (268) and 12 roundup4(W) + 64, or 512 (768) for floats.
TEST(DerivativeCalls, ScratchSizes) {
    checkSizes<std::uint8_t, std::int8_t>({{"others", {{1328, 2192, 35168}, {1604, 2596, 40436}}},
                                           {"Laplacian_8u8s", {{2344, 3880, 62392}, {2860, 4812, 687260}}}});
    checkSizes<std::uint8_t, std::int16_t>({{"others", {{1392, 2256, 35232}, {1668, 2660, 40500}}},
                                            {"ScharrHoriz_8u16s", {{1328, 2192, 35168}, {}}},
                                            {"Laplacian_8u16s", {{2344, 3880, 62392}, {2796, 4588, 72828}}}});
    checkSizes<std::uint8_t, std::uint8_t>({{"others", {{1392, 2256, 35232}, {1668, 2660, 40500}}}});
    checkSizes<float, float>({{"others", {{2296, 3640, 54712}, {2856, 4456, 65256}}},
                              {"Lowpass_32f", {{2232, 3576, 54648}, {2792, 4392, 65192}}},
                              {"Laplacian_32f", {{3920, 6608, 108752}, {4784, 7984, 129584}}}});
}

// (1 1)^(n - 1 - order) convolved with (-1 1)^order, in integers that do not overflow.
std::vector<std::int64_t> plainSobelKernel(std::int32_t n, std::int32_t order) {
    std::vector<std::int64_t> kernel{1};
    for (std::int32_t pass = 0; pass < n - 1; ++pass) {
        std::vector<std::int64_t> longer(kernel.size() + 1);
        for (std::size_t i = 0; i < kernel.size(); ++i) {
            longer[i] += pass < order ? -kernel[i] : kernel[i];
            longer[i + 1] += kernel[i];
        }
        kernel = longer;
    }
    return kernel;
}

TEST(SobelKernel, EveryOrderOfManyLengths) {
    for (std::int32_t n = 1; n <= 25; n += 2) {
        for (std::int32_t order = 0; order < n; ++order) {
            const std::vector<std::int64_t> want = plainSobelKernel(n, order);
            for (const std::int32_t sign : {1, 0, -1, INT32_MIN}) {
                const std::int64_t factor = sign < 0 ? -1 : 1;
                GuardedBuffer ints(2 * n), floats(4 * n);
                ASSERT_EQ(rvxiGenSobelKernel_16s(reinterpret_cast<std::int16_t *>(ints.data()), n, order, sign), 0);
                ASSERT_EQ(rvxiGenSobelKernel_32f(reinterpret_cast<float *>(floats.data()), n, order, sign), 0);
                for (std::int32_t i = 0; i < n; ++i) {
                    std::int16_t k;
                    float f;
                    std::memcpy(&k, ints.data() + 2 * i, 2);
                    std::memcpy(&f, floats.data() + 4 * i, 4);
                    const std::int64_t w = factor * want[static_cast<std::size_t>(i)];
                    ASSERT_EQ(k, static_cast<std::int16_t>(w)) << n << " taps, order " << order << ", tap " << i;
                    ASSERT_EQ(f, static_cast<float>(w)) << n << " taps, order " << order << ", tap " << i;
                }
            }
        }
    }
}

TEST(SobelKernel, Statuses) {
    std::int16_t ints[3] = {7, 7, 7};
    float floats[3] = {7, 7, 7};
    const auto both = [&](std::int32_t n, std::int32_t order, StatusCode want) {
        EXPECT_EQ(rvxiGenSobelKernel_16s(ints, n, order, 1), want);
        EXPECT_EQ(rvxiGenSobelKernel_32f(floats, n, order, 1), want);
        EXPECT_EQ(rvxiGenSobelKernel_16s(nullptr, n, order, 1), StatusNullPointer);
        EXPECT_EQ(rvxiGenSobelKernel_32f(nullptr, n, order, 1), StatusNullPointer);
        EXPECT_EQ(ints[2], 7);
        EXPECT_EQ(floats[2], 7);
    };
    for (const std::int32_t n : {4, 0, -1, -3, INT32_MIN}) {
        both(n, 0, StatusBadSize);
    }
    both(3, -1, StatusBadSize);
    both(3, 3, StatusBadSize);
    both(1, 1, StatusBadSize);
}

} // namespace
