// rvxcv info: the library's version record, the processor and what of it is used.
#include "command.h"

#include "rvxcore.h"

#include <cstdio>

namespace tools {
namespace {

void printFeatures(const char *title, std::uint64_t features) {
    struct Feature {
        std::uint64_t bit;
        const char *name;
    };
    constexpr Feature names[] = {{RVX_CPU_SSE2, "SSE2"},     {RVX_CPU_SSSE3, "SSSE3"},     {RVX_CPU_SSE42, "SSE4.2"},
                                 {RVX_CPU_AVX, "AVX"},       {RVX_CPU_AVX2, "AVX2"},       {RVX_CPU_FMA3, "FMA3"},
                                 {RVX_CPU_BMI, "BMI1+BMI2"}, {RVX_CPU_AVX512F, "AVX-512F"}};
    std::printf("%-18s", title);
    for (const Feature &feature : names) {
        if ((features & feature.bit) != 0) {
            std::printf(" %s", feature.name);
        }
    }
    std::printf("\n");
}

void run() {
    const LibVersion *version = rvxcvGetLibVersion();
    std::printf("%-18s %s\n", "library", version->libraryName);
    std::printf("%-18s %s, built %s\n", "version", version->versionText, version->buildDateText);
    std::uint64_t detected = 0;
    check(rvxGetCpuFeatures(&detected, nullptr), "rvxGetCpuFeatures");
    printFeatures("processor has", detected);
    printFeatures("system enables", rvxGetEnabledCpuFeatures());
    std::int32_t cache = 0;
    if (rvxGetMaxCacheSizeB(&cache) == StatusOk) {
        std::printf("%-18s %d KiB\n", "largest cache", cache / 1024);
    }
    constexpr std::uint64_t needed = RVX_CPU_AVX2 | RVX_CPU_FMA3;
    const bool runs = (rvxGetEnabledCpuFeatures() & needed) == needed;
    std::printf("%-18s %s\n", "usable here", runs ? "yes" : "no: AVX2 and FMA3 are needed");
}

} // namespace

void addInfo(Program &program) {
    program.command("info", "Print the library's version and the processor's features").action(run);
}

} // namespace tools
