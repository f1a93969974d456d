// SPDX-License-Identifier: MIT
// Complementary mosaics by windows of three lines and columns: without the half-pixel shift of the
// 2 x 2 blocks. Frames as in cygm.h. Every pixel is computed; lines and columns beyond the frame
// are mirrored about the border ones.
#ifndef LUM_CYGM_CYGM_WINDOW_H
#define LUM_CYGM_CYGM_WINDOW_H

#include <stdint.h>

#include "simd/kernel_table.h"

namespace lum {

// Width even, height a multiple of 4; sinks of 8 bits.
void convert_cygm_3x3(const Kernels& kernels, Sink sink, uint8_t* dst, const uint8_t* src,
                      uint32_t width, uint32_t height);

// A pixel for each block of 2 x 2.
void convert_cygm_binned(const Kernels& kernels, Sink sink, uint8_t* dst, const uint8_t* src,
                         uint32_t width, uint32_t height);

// Luminance alone, before it takes part in any colour.
void convert_cygm_to_luma(const Kernels& kernels, uint8_t* dst, const uint8_t* src, uint32_t width,
                          uint32_t height);

}  // namespace lum

#endif
