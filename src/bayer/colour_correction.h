// SPDX-License-Identifier: MIT
// Colour matrices: on the 2 x 2 demosaic and on finished pixels.
#ifndef LUM_BAYER_COLOUR_CORRECTION_H
#define LUM_BAYER_COLOUR_CORRECTION_H

#include <stdint.h>

#include "bayer/mosaic.h"
#include "lum/lum.h"
#include "simd/kernel_table.h"

namespace lum {

// Coefficients times 1024, rows R, G, B, columns R, G, B. The kernels do not read the kind.
using ColourMatrix = LumColorCorrection;

constexpr uint32_t kMatrixKind8Bit = 2;
constexpr uint32_t kMatrixKindDeep = 3;

// Coefficients are truncated toward zero; what does not fit saturates, and what is no number is 0.
ColourMatrix make_colour_matrix(uint32_t kind, const float* coefficients);

// Frames of 2 or more rows and columns, to all sinks of 8 bits and, but for raw8, of 16 bits.
void correct_raw8(const Kernels& kernels, const MosaicFrame& frame, const ColourMatrix& matrix);
// 12-bit packed, all twelve bits; the width is even.
void correct_raw12(const Kernels& kernels, const MosaicFrame& frame, const ColourMatrix& matrix);
// Words that are shifted up by `shift`, at most 16.
void correct_raw16(const Kernels& kernels, const MosaicFrame& frame, uint32_t shift,
                   uint32_t big_endian, const ColourMatrix& matrix);
// B, G, R; dst may be src.
void correct_bgr24(const Kernels& kernels, uint8_t* dst, const uint8_t* src, uint32_t count,
                   const ColourMatrix& matrix);
void correct_bgr48(const Kernels& kernels, uint8_t* dst, const uint8_t* src, uint32_t count,
                   const ColourMatrix& matrix);

// What the dispatcher calls. All: the last column repeats the one before it, the last row is a copy
// of the row above; fewer than 2 rows or columns write nothing. Width and height may be odd except
// for 12-bit packed samples, where an odd width writes nothing. Of the pattern the low two bits
// count.
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
