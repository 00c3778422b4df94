/* Statistics: integral images and the deviations read from them. */
#ifndef RVXCV_STATS_H
#define RVXCV_STATS_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Integral images ---- */

/* ---- Rectangle deviation ---- */

#ifdef __cplusplus
}
#endif

#endif
