/* Motion and tracking: motion history, line sampling, sub-pixel copies, optical flow. */
#ifndef RVXCV_MOTION_H
#define RVXCV_MOTION_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Motion history ---- */

/* ---- Line sampling ---- */

/* ---- Sub-pixel copies ---- */

/* ---- Optical flow ---- */

#ifdef __cplusplus
}
#endif

#endif
