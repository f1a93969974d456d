// SPDX-License-Identifier: MIT
// Row kernels, level base.
#define LUM_LEVEL base
#include "simd/vec_base.h"
//
#include "simd/kernel_list-inl.h"
