/* Linear filters. */
#ifndef RVXCV_FILTER_H
#define RVXCV_FILTER_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* -------------------------------------------------------------------------------------------- Separable pipeline */

/* ------------------------------------------------------------------------------- Derivative and low-pass filters */

#ifdef __cplusplus
}
#endif

#endif
