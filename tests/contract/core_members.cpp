// The companion library and the frame. What a processor has differs from machine to machine: what is promised about it
// is digested, not what it is.
#include "contract/contract.h"
#include "rvxcore.h"

namespace contract {
namespace {

void cpuFeatures(Run &run, StatusCode (*get)(std::uint64_t *, std::uint32_t *)) {
    std::uint64_t first = ~std::uint64_t{0}, second = 0;
    std::uint32_t registers[4] = {}, again[4] = {};
    run.digest.numbers({get(&first, registers), get(&second, nullptr), get(nullptr, again), get(nullptr, nullptr)});
    run.digest.number(first == second);
    run.digest.number(std::equal(registers, registers + 4, again));
    run.digest.number(first & (RVX_CPU_AVX2 | RVX_CPU_FMA3));
}

void enabledFeatures(Run &run, std::uint64_t (*get)()) {
    std::uint64_t detected = 0;
    run.digest.number(rvxGetCpuFeatures(&detected, nullptr));
    run.digest.number(get() & ~detected);
    run.digest.number(get() & (RVX_CPU_AVX2 | RVX_CPU_FMA3));
}

void allocate(Run &run, void *(*get)(std::int64_t)) {
    for (const std::int64_t bytes :
         {INT64_MIN, INT64_C(-1), INT64_C(0), INT64_C(1), INT64_C(63), INT64_C(64), INT64_C(100001)}) {
        auto *block = static_cast<std::uint8_t *>(get(bytes));
        run.digest.number(block != nullptr);
        run.digest.number(reinterpret_cast<std::uintptr_t>(block) % 64);
        if (block != nullptr) {
            std::memset(block, 0x5b, static_cast<std::size_t>(bytes));
            run.digest.bytes(block, bytes);
            rvxFree(block);
        }
    }
}

void release(Run &run, void (*free)(void *)) {
    free(nullptr);
    free(rvxMalloc(17));
    run.digest.number(1); // what it does is that nothing happens
}

void cacheSize(Run &run, StatusCode (*get)(std::int32_t *)) {
    run.digest.number(get(nullptr));
    std::int32_t bytes = -5;
    const StatusCode status = get(&bytes);
    run.digest.number((status == StatusOk && bytes > 0) || (status == StatusError && bytes == -5));
}

void version(Run &run, const LibVersion *(*get)()) {
    const LibVersion *const record = get();
    run.digest.numbers({record->versionMajor, record->versionMinor, record->versionUpdate, record->revision});
    run.digest.bytes(record->variantCode, sizeof record->variantCode);
    for (const char *text : {record->libraryName, record->versionText, record->buildDateText}) {
        run.digest.bytes(text, static_cast<std::int64_t>(std::strlen(text)));
    }
    run.digest.number(get() == record);
}

} // namespace

void addCore(Members &members) {
    members.insert(members.end(), {
                                      MEMBER(rvxGetCpuFeatures, cpuFeatures),
                                      MEMBER(rvxGetEnabledCpuFeatures, enabledFeatures),
                                      MEMBER(rvxMalloc, allocate),
                                      MEMBER(rvxFree, release),
                                      MEMBER(rvxGetMaxCacheSizeB, cacheSize),
                                      MEMBER(rvxcvGetLibVersion, version),
                                  });
}

} // namespace contract
