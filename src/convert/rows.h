// SPDX-License-Identifier: MIT
// Whole rows rearranged, whatever their pixels are.
#ifndef LUM_CONVERT_ROWS_H
#define LUM_CONVERT_ROWS_H

#include <stddef.h>
#include <stdint.h>

#include "simd/kernel_table.h"

namespace lum {

// Exchanges row i with row rows - 1 - i.
void flip_vertical(const Kernels& kernels, uint8_t* image, size_t row_bytes, uint32_t rows);

// Frame line 2 i from row i of the second field, line 2 i + 1 from row i of the first. Two buffers.
void interlaced_to_progressive(const Kernels& kernels, uint8_t* dst, const uint8_t* src,
                               uint32_t row_bytes, uint32_t height);

}  // namespace lum

#endif
