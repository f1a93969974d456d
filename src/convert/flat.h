// SPDX-License-Identifier: MIT
// Flat conversions: the frame is one run of pixels, so one call of a row kernel does it.
#ifndef LUM_CONVERT_FLAT_H
#define LUM_CONVERT_FLAT_H

#include <stddef.h>
#include <stdint.h>

#include "simd/kernel_table.h"

namespace lum {

// Converts count pixels; a source's own format is a block move, skipped when dst is src.
void convert_flat(const Kernels& kernels, Source source, Sink sink, uint8_t* dst,
                  const uint8_t* src, uint32_t count, const RowArgs& args = {});

// Grey bytes to UYVY: of an odd count the last Y1 is not written.
void mono8_to_uyvy(const Kernels& kernels, uint8_t* dst, const uint8_t* src, uint32_t count);

// Little-endian 16-bit mono with the tint, to the 8-bit sinks.
void mono16_little_endian_tinted(const Kernels& kernels, Sink sink, uint8_t* dst,
                                 const uint8_t* src, uint32_t count);

// dst = src, skipped when they are the same buffer.
void copy_block(uint8_t* dst, const uint8_t* src, size_t bytes);

}  // namespace lum

#endif
