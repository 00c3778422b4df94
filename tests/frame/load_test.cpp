// What loading the library does, and the version record. The build also runs these tests on an emulated processor
// without AVX, where RVXCV_OLD_PROCESSOR is set.
#include "support/elf_file.h"

#include <rvxcore.h>
#include <rvxcv.h>

#include <gtest/gtest.h>

#include <link.h>

#include <cstdio>
#include <cstdlib>

namespace {

// The library's load address, found by its path.
std::uintptr_t loadAddress() {
    std::uintptr_t address = 0;
    dl_iterate_phdr(
        [](dl_phdr_info *info, std::size_t, void *result) {
            if (std::strstr(info->dlpi_name, "librvxcvl9") != nullptr) {
                *static_cast<std::uintptr_t *>(result) = info->dlpi_addr;
            }
            return 0;
        },
        &address);
    return address;
}

std::int32_t jumpIndex() {
    const support::ElfFile file(RVXCV_LIBRARY_PATH);
    const auto symbol = file.definedSymbols(SHT_SYMTAB).at("rvxJumpIndexForMergedDLL");
#ifndef RVXCV_SANITIZED // which puts a red zone behind it
    EXPECT_EQ(symbol.st_size, sizeof(std::int32_t));
#endif
    EXPECT_NE(loadAddress(), 0U);
    return *reinterpret_cast<const std::int32_t *>(loadAddress() + symbol.st_value);
}

TEST(Load, SetsTheJumpIndexOnAvx2WithFma) {
    const bool expected = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
    EXPECT_EQ(jumpIndex(), expected ? 1 : 0);
}

TEST(Load, OldProcessorIsNotRefused) {
    if (std::getenv("RVXCV_OLD_PROCESSOR") == nullptr) {
        GTEST_SKIP() << "runs on an emulated processor (test frame_old_processor)";
    }
    EXPECT_FALSE(__builtin_cpu_supports("avx"));
    EXPECT_EQ(rvxGetEnabledCpuFeatures() & (RVX_CPU_AVX | RVX_CPU_AVX2 | RVX_CPU_FMA3 | RVX_CPU_AVX512F), 0U);
    EXPECT_EQ(jumpIndex(), 0);
    EXPECT_STREQ(rvxcvGetLibVersion()->versionText, "8.2.1 (r44077)");
}

TEST(Version, RecordHoldsItsValues) {
    const LibVersion *version = rvxcvGetLibVersion();
    ASSERT_NE(version, nullptr);
    EXPECT_EQ(version, rvxcvGetLibVersion());
    EXPECT_EQ(version->versionMajor, 8);
    EXPECT_EQ(version->versionMinor, 2);
    EXPECT_EQ(version->versionUpdate, 1);
    EXPECT_EQ(version->revision, 44077);
    EXPECT_EQ(std::memcmp(version->variantCode, "l9\0\0", 4), 0);
    EXPECT_STREQ(version->libraryName, "rvxCV AVX2 (l9)");
    EXPECT_STREQ(version->versionText, "8.2.1 (r44077)");
    EXPECT_STREQ(version->buildDateText, "Oct  9 2014");
}

// The permissions of the page that holds an address, as /proc/self/maps shows them.
std::string permissions(const void *address) {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        unsigned long begin, end;
        char flags[5];
        if (std::sscanf(line.c_str(), "%lx-%lx %4s", &begin, &end, flags) == 3 &&
            reinterpret_cast<unsigned long>(address) >= begin && reinterpret_cast<unsigned long>(address) < end) {
            return flags;
        }
    }
    return "";
}

TEST(Version, RecordAndStringsAreReadOnly) {
    const LibVersion *version = rvxcvGetLibVersion();
    for (const void *address :
         {static_cast<const void *>(version), static_cast<const void *>(version->libraryName),
          static_cast<const void *>(version->versionText), static_cast<const void *>(version->buildDateText)}) {
        EXPECT_EQ(permissions(address).substr(0, 2), "r-");
    }
}

} // namespace
