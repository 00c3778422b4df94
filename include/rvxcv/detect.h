/* Trained detectors: cascades of boosted Haar-like features. */
#ifndef RVXCV_DETECT_H
#define RVXCV_DETECT_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
