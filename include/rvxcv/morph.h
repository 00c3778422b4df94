/* Morphology. */
#ifndef RVXCV_MORPH_H
#define RVXCV_MORPH_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* -------------------------------------------------------------------------------------------------- Rank filters */

/* ------------------------------------------------------------------------------------------ Erosion and dilation */

/* ------------------------------------------------------------------------------------------- Compound operations */

#ifdef __cplusplus
}
#endif

#endif
