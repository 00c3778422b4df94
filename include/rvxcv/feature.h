/* Feature detection. */
#ifndef RVXCV_FEATURE_H
#define RVXCV_FEATURE_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* --------------------------------------------------------------------------------------------------- Canny edges */

/* ------------------------------------------------------------------------------------------------ Corner measure */

/* --------------------------------------------------------------------------------------------------- Peak search */

#ifdef __cplusplus
}
#endif

#endif
