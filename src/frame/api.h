// What a library source includes to define exported functions: the public header with every exported name carrying the
// variant prefix, so that rvxiX in a source is l9_rvxiX in the object file, checked against its public declaration.
#pragma once

#include "l9_names.h"

#include "rvxcv.h"
