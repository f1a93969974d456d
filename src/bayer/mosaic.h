// SPDX-License-Identifier: MIT
// Frames of a Bayer mosaic through the 2 x 2 kernels: phases, last row, reduction of deep samples.
#ifndef LUM_BAYER_MOSAIC_H
#define LUM_BAYER_MOSAIC_H

#include <stdint.h>

#include "simd/kernel_table.h"

namespace lum {

// Where red lies: the parity of its column and of its row.
struct RedPhase {
  uint32_t column, row;
};

// RGGB (0,0), GBRG (0,1), GRBG (1,0), BGGR (1,1) for patterns 0 to 3.
// Kept: of any other value bit 0 is the column and bit 1 the row as they stand, so that all ones is
// BGGR; patterns 1 and 2 have the two the other way round.
constexpr RedPhase red_phase(uint32_t pattern) {
  const uint32_t code = pattern == 1 || pattern == 2 ? 3 - pattern : pattern;
  return {code & 1, (code >> 1) & 1};
}

struct MosaicFrame {
  uint8_t* dst;
  const uint8_t* src;
  uint32_t width, height;  // 2 or more
  RedPhase red;
  Sink sink;
};

// How a deep row becomes a row of bytes or words that the mosaic kernels read: the source and the
// sink of a flat kernel, and its arguments.
struct Reduction {
  Source source;
  Sink sink;
  RowArgs args;
};
// To bytes, or for the 16-bit sinks of words to words in host order with the significant bits on
// top.
Reduction reduce_mono16(Sink sink, uint32_t shift, uint32_t big_endian);
// 12-bit packed samples give their upper eight bits for every sink.
constexpr Reduction kReduceMono12Packed = {Source::mono12_packed, Sink::mono8_rec601, {}};

// Rows 0 to height - 2 from the blocks that begin in them, then a byte copy of row height - 2.
// `mosaic` is the kernel's source, with args.column still to be filled in.
void convert_mosaic8(const Kernels& kernels, const MosaicFrame& frame,
                     Source mosaic = Source::mosaic8, RowArgs args = {});
void convert_mosaic_reduced(const Kernels& kernels, const MosaicFrame& frame,
                            const Reduction& reduction, Source mosaic, RowArgs args = {});

}  // namespace lum

#endif
