// SPDX-License-Identifier: MIT
// Row kernels, level avx512.
#define LUM_LEVEL avx512
#include "simd/vec_avx512.h"
//
#include "simd/kernel_list-inl.h"
