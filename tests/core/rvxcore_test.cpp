#include "support/elf_file.h"

#include <rvxcore.h>

#include <gtest/gtest.h>

#include <cpuid.h>

#include <algorithm>
#include <cstring>
#include <filesystem>

#if defined(RVXCV_SANITIZED)
// A request that no memory can hold gives null, as without the sanitizer.
extern "C" __attribute__((visibility("default"))) const char *__asan_default_options() {
    return "allocator_may_return_null=1";
}
#endif

namespace {

TEST(CpuFeatures, BitsAreWhatTheCompilersRuntimeFinds) {
    // The compiler's runtime reports what the system has enabled.
    std::uint64_t expected = 0;
    expected |= __builtin_cpu_supports("sse2") ? 0x01 : 0;
    expected |= __builtin_cpu_supports("ssse3") ? 0x02 : 0;
    expected |= __builtin_cpu_supports("sse4.2") ? 0x04 : 0;
    expected |= __builtin_cpu_supports("avx") ? 0x08 : 0;
    expected |= __builtin_cpu_supports("avx2") ? 0x10 : 0;
    expected |= __builtin_cpu_supports("fma") ? 0x20 : 0;
    expected |= __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2") ? 0x40 : 0;
    expected |= __builtin_cpu_supports("avx512f") ? 0x80 : 0;
    EXPECT_EQ(rvxGetEnabledCpuFeatures(), expected);

    std::uint64_t detected = 0;
    EXPECT_EQ(rvxGetCpuFeatures(&detected, nullptr), StatusOk);
    EXPECT_EQ(detected & expected, expected) << "enabled but not detected";
}

TEST(CpuFeatures, RegistersAreThoseOfLeaf1) {
    std::uint32_t registers[4] = {}, expected[4] = {};
    ASSERT_TRUE(__get_cpuid(1, &expected[0], &expected[1], &expected[2], &expected[3]));
    EXPECT_EQ(rvxGetCpuFeatures(nullptr, registers), StatusOk);
    for (std::uint32_t *words : {registers, expected}) {
        words[1] &= 0x00ffffff; // the top byte names the core that the thread ran on
    }
    EXPECT_TRUE(std::equal(registers, registers + 4, expected));
    EXPECT_EQ(rvxGetCpuFeatures(nullptr, nullptr), StatusOk);
}

TEST(Memory, BlocksAreAlignedAndWhole) {
    for (const std::int64_t bytes : {1, 2, 63, 64, 65, 4096, 1 << 20}) {
        void *block = rvxMalloc(bytes);
        ASSERT_NE(block, nullptr) << bytes;
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 64, 0U) << bytes;
        std::memset(block, 0xa5, static_cast<std::size_t>(bytes));
        rvxFree(block);
    }
    rvxFree(nullptr);
}

TEST(Memory, ImpossibleCountsGiveNull) {
    for (const std::int64_t bytes : {std::int64_t{0}, std::int64_t{-1}, INT64_MIN, INT64_MAX, INT64_MAX - 63}) {
        EXPECT_EQ(rvxMalloc(bytes), nullptr) << bytes;
    }
}

// What the system says about the same caches, in bytes; 0 when it does not tell.
std::int64_t largestCacheOfSystem() {
    std::int64_t largest = 0;
    std::error_code error;
    for (const auto &entry : std::filesystem::directory_iterator("/sys/devices/system/cpu/cpu0/cache", error)) {
        std::ifstream in(entry.path() / "size");
        std::int64_t number = 0;
        char unit = 0;
        if (in >> number >> unit) {
            largest = std::max(largest, number * (unit == 'M' ? 1 << 20 : 1 << 10));
        }
    }
    return largest;
}

TEST(CacheSize, IsThatOfTheLargestCache) {
    EXPECT_EQ(rvxGetMaxCacheSizeB(nullptr), StatusNullPointer);
    std::int32_t bytes = -1;
    const StatusCode status = rvxGetMaxCacheSizeB(&bytes);
    if (status == StatusError) {
        EXPECT_EQ(bytes, -1);
        GTEST_SKIP() << "the processor does not tell";
    }
    ASSERT_EQ(status, StatusOk);
    EXPECT_GE(bytes, 16 << 10);
    if (const std::int64_t known = largestCacheOfSystem()) {
        EXPECT_EQ(bytes, known);
    }
}

TEST(CoreLibrary, ExportsItsFiveFunctionsAndNeedsLibcAlone) {
    const support::ElfFile file(RVXCV_CORE_LIBRARY_PATH);
    EXPECT_EQ(file.dynamicStrings(DT_SONAME), std::set<std::string>{"librvxcore.so.8"});
#ifndef RVXCV_SANITIZED // which exports counters and needs a runtime
    EXPECT_EQ(file.definedDynamicNames(),
              (std::set<std::string>{"rvxFree", "rvxGetCpuFeatures", "rvxGetEnabledCpuFeatures", "rvxGetMaxCacheSizeB",
                                     "rvxMalloc"}));
    EXPECT_EQ(file.dynamicStrings(DT_NEEDED), std::set<std::string>{"libc.so.6"});
#endif
}

} // namespace
