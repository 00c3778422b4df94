/* Processor features, aligned memory and cache size. Runs on any x86-64 processor and needs libc alone. */
#define _POSIX_C_SOURCE 200112L

#include "rvxcore.h"

#include <cpuid.h>
#include <pthread.h>
#include <stddef.h>
#include <stdlib.h>

#define EXPORTED __attribute__((visibility("default")))

enum { blockAlignment = 64 };

/* ------------------------------------------------------------------------------------------ processor features */

static pthread_once_t detection = PTHREAD_ONCE_INIT;
static uint64_t detectedFeatures;
static uint64_t enabledFeatures;
static uint32_t leaf1Registers[4];

/* The register states that the operating system saves and restores (XCR0); 0 when it does not use xsave. */
static uint64_t savedStates(uint32_t leaf1Ecx) {
    uint32_t low, high;
    if (!(leaf1Ecx & bit_OSXSAVE)) {
        return 0;
    }
    __asm__ volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return (uint64_t)high << 32 | low;
}

static void detect(void) {
    static const uint64_t ymmStates = 0x06; /* xmm and upper halves of ymm */
    static const uint64_t zmmStates = 0xe6; /* those, mask registers and zmm */
    uint32_t eax = 0, ebx = 0, ecx = 0, edx = 0;
    uint32_t ebx7 = 0, unused;
    uint64_t features = 0, needsYmm, needsZmm, states;

    if (!__get_cpuid(1, &eax, &ebx, &ecx, &edx)) {
        return;
    }
    leaf1Registers[0] = eax;
    leaf1Registers[1] = ebx;
    leaf1Registers[2] = ecx;
    leaf1Registers[3] = edx;
    if (!__get_cpuid_count(7, 0, &unused, &ebx7, &unused, &unused)) {
        ebx7 = 0;
    }

    features |= edx & bit_SSE2 ? RVX_CPU_SSE2 : 0;
    features |= ecx & bit_SSSE3 ? RVX_CPU_SSSE3 : 0;
    features |= ecx & bit_SSE4_2 ? RVX_CPU_SSE42 : 0;
    features |= ecx & bit_AVX ? RVX_CPU_AVX : 0;
    features |= ecx & bit_FMA ? RVX_CPU_FMA3 : 0;
    features |= ebx7 & bit_AVX2 ? RVX_CPU_AVX2 : 0;
    features |= (ebx7 & bit_BMI) && (ebx7 & bit_BMI2) ? RVX_CPU_BMI : 0;
    features |= ebx7 & bit_AVX512F ? RVX_CPU_AVX512F : 0;
    detectedFeatures = features;

    /* The bit manipulation instructions work on general registers and need no help of the system. */
    needsYmm = RVX_CPU_AVX | RVX_CPU_AVX2 | RVX_CPU_FMA3 | RVX_CPU_AVX512F;
    needsZmm = RVX_CPU_AVX512F;
    states = savedStates(ecx);
    if ((states & ymmStates) != ymmStates) {
        features &= ~needsYmm;
    }
    if ((states & zmmStates) != zmmStates) {
        features &= ~needsZmm;
    }
    enabledFeatures = features;
}

EXPORTED StatusCode rvxGetCpuFeatures(uint64_t *features, uint32_t *registers) {
    pthread_once(&detection, detect);
    if (features) {
        *features = detectedFeatures;
    }
    if (registers) {
        for (int i = 0; i < 4; ++i) {
            registers[i] = leaf1Registers[i];
        }
    }
    return StatusOk;
}

EXPORTED uint64_t rvxGetEnabledCpuFeatures(void) {
    pthread_once(&detection, detect);
    return enabledFeatures;
}

/* ---------------------------------------------------------------------------------------------- aligned memory */

EXPORTED void *rvxMalloc(int64_t bytes) {
    void *block = NULL;
    if (bytes < 1 || posix_memalign(&block, blockAlignment, (size_t)bytes) != 0) {
        return NULL;
    }
    return block;
}

EXPORTED void rvxFree(void *block) { free(block); }

/* -------------------------------------------------------------------------------------------------- cache size */

/* The largest cache of a leaf (4, or 0x8000001d where that is missing) that describes one cache per subleaf. */
static uint64_t largestListedCache(uint32_t leaf) {
    uint64_t largest = 0;
    for (uint32_t i = 0; i < 16; ++i) {
        uint32_t eax, ebx, ecx, edx;
        uint64_t bytes;
        if (!__get_cpuid_count(leaf, i, &eax, &ebx, &ecx, &edx) || (eax & 31) == 0) {
            break;
        }
        bytes = ((uint64_t)(ebx >> 22) + 1) * (((ebx >> 12) & 0x3ff) + 1) * ((ebx & 0xfff) + 1) * ((uint64_t)ecx + 1);
        largest = bytes > largest ? bytes : largest;
    }
    return largest;
}

/* The older leaf with the sizes of the second and third level. */
static uint64_t largestSummedUpCache(void) {
    uint32_t eax, ebx, ecx, edx;
    uint64_t second, third;
    if (!__get_cpuid(0x80000006, &eax, &ebx, &ecx, &edx)) {
        return 0;
    }
    second = (uint64_t)(ecx >> 16) << 10;
    third = (uint64_t)(edx >> 18) << 19;
    return third > second ? third : second;
}

EXPORTED StatusCode rvxGetMaxCacheSizeB(int32_t *bytes) {
    uint64_t largest;
    if (!bytes) {
        return StatusNullPointer;
    }
    largest = largestListedCache(4);
    if (largest == 0) {
        largest = largestListedCache(0x8000001d);
    }
    if (largest == 0) {
        largest = largestSummedUpCache();
    }
    if (largest == 0) {
        return StatusError;
    }
    *bytes = largest > INT32_MAX ? INT32_MAX : (int32_t)largest;
    return StatusOk;
}
