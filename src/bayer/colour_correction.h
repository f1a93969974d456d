// SPDX-License-Identifier: MIT
// 2 x 2 demosaic with a colour matrix, as the dispatcher's colour-correction path calls it.
#ifndef LUM_BAYER_COLOUR_CORRECTION_H
#define LUM_BAYER_COLOUR_CORRECTION_H

#include <stdint.h>

namespace lum {

// Coefficients times 1024, rows R, G, B, columns R, G, B. The kernels do not read the kind.
struct ColourMatrix {
  uint32_t kind;
  int32_t m[9];
};

// All: the last column repeats the one before it, the last row is a copy of the row above; fewer than
// 2 rows or columns write nothing. Width and height may be odd except for 12-bit packed samples,
// where an odd width writes nothing. Of the pattern the low two bits count.
void cc_raw8_to_bgr24(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                      uint32_t pattern, const ColourMatrix& matrix);
// BT.601 luminance for both mono formats, from sums of 32 bits that wrap.
void cc_raw8_to_mono8(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                      uint32_t pattern, const ColourMatrix& matrix);
// Words in host order, shifted up by `shift`, any number.
void cc_raw16_to_mono16(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                        uint32_t pattern, uint32_t shift, const ColourMatrix& matrix);
void cc_raw16_to_bgr48(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                       uint32_t pattern, uint32_t shift, const ColourMatrix& matrix);
// All twelve bits of a sample take part.
void cc_raw12_to_bgr24(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                       uint32_t pattern, const ColourMatrix& matrix);
void cc_raw12_to_bgr48(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                       uint32_t pattern, const ColourMatrix& matrix);

}  // namespace lum

#endif
