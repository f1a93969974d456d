// SPDX-License-Identifier: MIT
// Frames of an interlaced complementary mosaic. The buffer holds the first field (odd frame lines:
// green and magenta), then the second (even frame lines: cyan and yellow):
//
//   frame line  from                    even column  odd column
//   4 k         second field, 2 k       Cy           Ye
//   4 k + 1     first field,  2 k       G            Mg
//   4 k + 2     second field, 2 k + 1   Cy           Ye
//   4 k + 3     first field,  2 k + 1   Mg           G
#ifndef LUM_CYGM_CYGM_H
#define LUM_CYGM_CYGM_H

#include <stdint.h>

#include "simd/kernel_table.h"

namespace lum {

// Output row y from frame lines y and y + 1; the last row is a byte copy of the row above it.
void convert_cygm(const Kernels& kernels, Sink sink, uint8_t* dst, const uint8_t* src,
                  uint32_t width, uint32_t height);

// To BGR24 with the edges of the older entry: see LumIRaw8CYGMToBGR. Height 8 or more.
void convert_cygm_to_bgr(const Kernels& kernels, uint8_t* dst, const uint8_t* src, uint32_t width,
                         uint32_t height);

}  // namespace lum

#endif
