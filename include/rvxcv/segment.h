/* Regions of a picture: distances, filling and labelling. */
#ifndef RVXCV_SEGMENT_H
#define RVXCV_SEGMENT_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Distance transforms ---- */

/* ---- Flood fill ---- */

/* ---- Labelling ---- */

#ifdef __cplusplus
}
#endif

#endif
