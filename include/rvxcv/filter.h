#ifndef RVXCV_FILTER_H
#define RVXCV_FILTER_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
