// SPDX-License-Identifier: MIT
// Row kernels, level sse41.
#define LUM_LEVEL sse41
#include "simd/vec_sse41.h"
//
#include "simd/kernel_list-inl.h"
