/** @file
 * The library's version record. */
#ifndef RVXCV_VERSION_H
#define RVXCV_VERSION_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup version Version
 * Which library this is.
 * @{ */

/** What the library says about itself. */
typedef struct LibVersion {
    int32_t versionMajor;      /**< 8 of 8.2.1 */
    int32_t versionMinor;      /**< 2 */
    int32_t versionUpdate;     /**< 1 */
    int32_t revision;          /**< the number in versionText */
    char variantCode[4];       /**< processor variant, "l9" and two zero bytes: AVX2 */
    const char *libraryName;   /**< "rvxCV AVX2 (l9)" */
    const char *versionText;   /**< "8.2.1 (r44077)" */
    const char *buildDateText; /**< "Oct  9 2014": month, day padded with a blank, year */
} LibVersion;

/** The version record: static, read-only, the same object on every call. Runs on any x86-64 processor. */
const LibVersion *rvxcvGetLibVersion(void);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
