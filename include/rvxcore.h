/** @file
 * rvxcore: the companion library of rvxcv. Processor features, aligned memory, cache size. */
#ifndef RVXCORE_H
#define RVXCORE_H

#include <stdint.h>

#include "rvxcv/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup core Companion library
 * Processor features, aligned memory, cache size.
 * @{ */

/* Bits of a feature mask. */
#define RVX_CPU_SSE2 UINT64_C(0x01)    /**< SSE2 */
#define RVX_CPU_SSSE3 UINT64_C(0x02)   /**< SSSE3 */
#define RVX_CPU_SSE42 UINT64_C(0x04)   /**< SSE4.2 */
#define RVX_CPU_AVX UINT64_C(0x08)     /**< AVX */
#define RVX_CPU_AVX2 UINT64_C(0x10)    /**< AVX2 */
#define RVX_CPU_FMA3 UINT64_C(0x20)    /**< fused multiply-add */
#define RVX_CPU_BMI UINT64_C(0x40)     /**< BMI1 and BMI2 */
#define RVX_CPU_AVX512F UINT64_C(0x80) /**< AVX-512 foundation */

/** Detects the processor's features, once per process. features receives the mask, registers the four words that cpuid
 * leaf 1 returns (eax, ebx, ecx, edx); either may be null. Always StatusOk. */
StatusCode rvxGetCpuFeatures(uint64_t *features, uint32_t *registers);

/** The detected features that the operating system has enabled: AVX and later need its support for wide registers. */
uint64_t rvxGetEnabledCpuFeatures(void);

/** A block of the given number of bytes, aligned to 64; null for a count below 1 or when there is no memory. */
void *rvxMalloc(int64_t bytes);

/** Releases a block of rvxMalloc; null is allowed. */
void rvxFree(void *block);

/** The size in bytes of the largest cache of the processor. StatusNullPointer; StatusError when the processor does not
 * tell (nothing is written). */
StatusCode rvxGetMaxCacheSizeB(int32_t *bytes);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
