// The version record.
#include "frame/api.h"

namespace {

// Its pointers need relocation, so it lies where the loader makes memory read-only after relocating.
constexpr LibVersion version = {
    8, 2, 1, 44077, {'l', '9', '\0', '\0'}, "rvxCV AVX2 (l9)", "8.2.1 (r44077)", "Oct  9 2014",
};

} // namespace

const LibVersion *rvxcvGetLibVersion(void) { return &version; }
