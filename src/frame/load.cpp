// What happens when the library is loaded, before any exported function can be called.
#include "rvxcore.h"

#include <cstdint>

// Index of the slot table that a build of several processor variants in one file would use. This build has one variant:
// the variable is set here and read by nothing.
extern "C" {
std::int32_t rvxJumpIndexForMergedDLL = 0;
}

namespace {

// A processor without AVX2 is not refused: loading the library and asking for its version work everywhere.
__attribute__((constructor)) void initialise() {
    constexpr std::uint64_t needed = RVX_CPU_AVX2 | RVX_CPU_FMA3;
    rvxGetCpuFeatures(nullptr, nullptr);
    rvxJumpIndexForMergedDLL = (rvxGetEnabledCpuFeatures() & needed) == needed ? 1 : 0;
}

} // namespace
