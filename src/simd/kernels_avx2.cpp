// SPDX-License-Identifier: MIT
// Row kernels, level avx2.
#define LUM_LEVEL avx2
#include "simd/vec_avx2.h"
//
#include "simd/kernel_list-inl.h"
