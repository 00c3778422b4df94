/* Camera geometry: lens undistortion. */
#ifndef RVXCV_GEOMETRY_H
#define RVXCV_GEOMETRY_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
