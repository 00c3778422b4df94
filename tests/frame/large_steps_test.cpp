// Four rows with a step of 2^30 bytes: the last ones lie beyond 2^31 bytes. Every room's way through an image gives
// what it gives for the same rows close together.
#include <rvxcv.h>

#include "support/random.h"

#include <gtest/gtest.h>

#include <sys/mman.h>

#include <cstring>
#include <functional>
#include <vector>

namespace {

constexpr std::int32_t largeStep = 1 << 30, closeStep = 1024;
constexpr RoiSize roi{37, 4};

// Four rows of address space, of which only the pages that are touched cost memory. (The record of none is null.)
class Rows {
public:
    explicit Rows(std::int32_t step)
        : step_(step), bytes_(std::size_t{3} * static_cast<std::size_t>(step) + closeStep) {
        void *map = mmap(nullptr, bytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        memory_ = map == MAP_FAILED ? nullptr : static_cast<std::uint8_t *>(map);
    }
    Rows(const Rows &) = delete;
    Rows &operator=(const Rows &) = delete;
    ~Rows() { munmap(memory_, bytes_); }

    bool present() const { return memory_ != nullptr; }
    std::int32_t step() const { return step_; }
    std::uint8_t *row(std::int64_t y) const { return memory_ + y * step_; }
    template <class T> T *as() const { return reinterpret_cast<T *>(memory_); }

private:
    std::int32_t step_;
    std::size_t bytes_;
    std::uint8_t *memory_ = nullptr;
};

using Operation = std::function<StatusCode(const Rows &src, const Rows &dst, std::uint8_t *scratch)>;

// Every combination of close and far rows.
void expectSame(const char *name, const Operation &operation) {
    support::Rng rng = support::makeRng(name);
    std::vector<std::uint8_t> scratch(1 << 16), pixels(4 * closeStep);
    for (std::uint8_t &pixel : pixels) {
        pixel = static_cast<std::uint8_t>(rng() % 4);
    }
    std::vector<std::uint8_t> want;
    for (const auto &[srcStep, dstStep] :
         {std::pair{closeStep, closeStep}, {largeStep, closeStep}, {closeStep, largeStep}}) {
        const Rows src(srcStep), dst(dstStep);
        if (!src.present() || !dst.present()) {
            GTEST_SKIP() << "no address space for 3 GiB";
        }
        for (int y = 0; y < roi.height; ++y) {
            std::memcpy(src.row(y), pixels.data() + y * closeStep, closeStep);
        }
        ASSERT_EQ(operation(src, dst, scratch.data()), StatusOk) << name;
        std::vector<std::uint8_t> got;
        for (int y = 0; y < roi.height; ++y) {
            got.insert(got.end(), dst.row(y), dst.row(y) + closeStep);
        }
        if (want.empty()) {
            want = got;
        }
        EXPECT_EQ(got, want) << name << ", steps " << srcStep << " and " << dstStep;
    }
}
using U8 = std::uint8_t;

TEST(LargeSteps, OffsetsAreFormedIn64Bits) {
    expectSame("absolute differences", [](const Rows &src, const Rows &dst, U8 *) {
        return rvxiAbsDiffC_8u_C1R(src.as<U8>(), src.step(), dst.as<U8>(), dst.step(), roi, 2);
    });
    expectSame("accumulation", [](const Rows &src, const Rows &dst, U8 *) {
        return rvxiAdd_8u32f_C1IR(src.as<U8>(), src.step(), dst.as<float>(), dst.step(), roi);
    });
    expectSame("derivative", [](const Rows &src, const Rows &dst, U8 *scratch) {
        return rvxiFilterSobelVertBorder_8u16s_C1R(src.as<U8>(), src.step(), dst.as<std::int16_t>(), dst.step(), roi,
                                                   Mask3x3, BorderReplicate, 0, scratch);
    });
    expectSame("rank filter", [](const Rows &src, const Rows &dst, U8 *scratch) {
        return rvxiFilterMinBorderReplicate_8u_C1R(src.as<U8>(), src.step(), dst.as<U8>(), dst.step(), roi, {4, 3},
                                                   {1, 1}, scratch);
    });
    expectSame("distance", [](const Rows &src, const Rows &dst, U8 *) {
        const std::int32_t costs[] = {3, 4};
        return rvxiDistanceTransform_3x3_8u_C1R(src.as<U8>(), src.step(), dst.as<U8>(), dst.step(), roi, costs);
    });
    expectSame("exact distance", [](const Rows &src, const Rows &dst, U8 *scratch) {
        return rvxiTrueDistanceTransform_8u32f_C1R(src.as<U8>(), src.step(), dst.as<float>(), dst.step(), roi, scratch);
    });
    expectSame("labels", [](const Rows &src, const Rows &dst, U8 *scratch) {
        std::int32_t count;
        return rvxiLabelMarkers_8u32s_C1R(src.as<U8>(), src.step(), dst.as<std::int32_t>(), dst.step(), roi, 5, 999,
                                          NormL1, &count, scratch);
    });
    expectSame("inpainting", [](const Rows &src, const Rows &dst, U8 *scratch) {
        return rvxiInpaint_8u_C1MR(src.as<U8>(), src.step(), src.as<U8>(), src.step(), dst.as<U8>(), dst.step(), roi, 1,
                                   InpaintDiffusion, scratch);
    });
    expectSame("edges", [](const Rows &src, const Rows &dst, U8 *scratch) {
        return rvxiCannyBorder_8u_C1R(src.as<U8>(), src.step(), dst.as<U8>(), dst.step(), roi, CannyFilterSobel,
                                      Mask3x3, BorderReplicate, 0, CannyNormL1, scratch, 3, 5);
    });
    expectSame("history", [](const Rows &src, const Rows &dst, U8 *) {
        return rvxiUpdateMotionHistory_8u32f_C1IR(src.as<U8>(), src.step(), dst.as<float>(), dst.step(), roi, 5, 1);
    });
    expectSame("halving", [](const Rows &src, const Rows &dst, U8 *scratch) {
        return rvxiPyrDown_Gauss5x5_8u_C1R(src.as<U8>(), src.step(), dst.as<U8>(), dst.step(), roi, scratch);
    });
}

} // namespace
