// SPDX-License-Identifier: MIT
// A pixel for each 2 x 2 cell of a Bayer mosaic.
#ifndef LUM_BAYER_BINNED_H
#define LUM_BAYER_BINNED_H

#include "bayer/mosaic.h"
#include "simd/kernel_table.h"

namespace lum {

// The frame's width and height, both even, are those of the mosaic. Samples beyond the border are
// mirrored about the border sample. Sinks of 8 bits.
void convert_mosaic_binned(const Kernels& kernels, const MosaicFrame& frame);

}  // namespace lum

#endif
