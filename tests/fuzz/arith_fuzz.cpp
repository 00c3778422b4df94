// Accumulators and absolute differences, and the version record.
#include "planes.h"

namespace {

using namespace fuzz;

void version(Call &, const LibVersion *(*member)()) {
    if (member()->versionMajor != 8) {
        std::abort();
    }
    noteReached(reinterpret_cast<const void *>(member));
}

} // namespace

const std::vector<fuzz::Member> fuzz::members = {
    MEMBER(version, rvxcvGetLibVersion),          MEMBER(planes, rvxiAdd_8u32f_C1IR),
    MEMBER(planes, rvxiAdd_8s32f_C1IR),           MEMBER(planes, rvxiAdd_16u32f_C1IR),
    MEMBER(planes, rvxiAdd_8u32f_C1IMR),          MEMBER(planes, rvxiAdd_8s32f_C1IMR),
    MEMBER(planes, rvxiAdd_16u32f_C1IMR),         MEMBER(planes, rvxiAdd_32f_C1IMR),
    MEMBER(planes, rvxiAddSquare_8u32f_C1IR),     MEMBER(planes, rvxiAddSquare_8s32f_C1IR),
    MEMBER(planes, rvxiAddSquare_16u32f_C1IR),    MEMBER(planes, rvxiAddSquare_32f_C1IR),
    MEMBER(planes, rvxiAddSquare_8u32f_C1IMR),    MEMBER(planes, rvxiAddSquare_8s32f_C1IMR),
    MEMBER(planes, rvxiAddSquare_16u32f_C1IMR),   MEMBER(planes, rvxiAddSquare_32f_C1IMR),
    MEMBER(planes, rvxiAddProduct_8u32f_C1IR),    MEMBER(planes, rvxiAddProduct_8s32f_C1IR),
    MEMBER(planes, rvxiAddProduct_16u32f_C1IR),   MEMBER(planes, rvxiAddProduct_32f_C1IR),
    MEMBER(planes, rvxiAddProduct_8u32f_C1IMR),   MEMBER(planes, rvxiAddProduct_8s32f_C1IMR),
    MEMBER(planes, rvxiAddProduct_16u32f_C1IMR),  MEMBER(planes, rvxiAddProduct_32f_C1IMR),
    MEMBER(planes, rvxiAddWeighted_8u32f_C1IR),   MEMBER(planes, rvxiAddWeighted_8s32f_C1IR),
    MEMBER(planes, rvxiAddWeighted_16u32f_C1IR),  MEMBER(planes, rvxiAddWeighted_32f_C1IR),
    MEMBER(planes, rvxiAddWeighted_8u32f_C1IMR),  MEMBER(planes, rvxiAddWeighted_8s32f_C1IMR),
    MEMBER(planes, rvxiAddWeighted_16u32f_C1IMR), MEMBER(planes, rvxiAddWeighted_32f_C1IMR),
    MEMBER(planes, rvxiAddWeighted_32f_C1R),      MEMBER(planes, rvxiAbsDiff_8u_C1R),
    MEMBER(planes, rvxiAbsDiff_8u_C3R),           MEMBER(planes, rvxiAbsDiff_16u_C1R),
    MEMBER(planes, rvxiAbsDiff_32f_C1R),          MEMBER(planes, rvxiAbsDiffC_8u_C1R),
    MEMBER(planes, rvxiAbsDiffC_16u_C1R),         MEMBER(planes, rvxiAbsDiffC_32f_C1R),
};
