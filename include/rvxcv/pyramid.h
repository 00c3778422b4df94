/* Image pyramids: fixed halving and doubling, level sizes and the descriptor, layers of any rate. */
#ifndef RVXCV_PYRAMID_H
#define RVXCV_PYRAMID_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Fixed halving and doubling ---- */

/* ---- Level sizes and the descriptor ---- */

/* ---- Layers of any rate ---- */

#ifdef __cplusplus
}
#endif

#endif
