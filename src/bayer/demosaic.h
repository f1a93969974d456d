// SPDX-License-Identifier: MIT
// Frames through the demosaics that look beyond the 2 x 2 block.
#ifndef LUM_BAYER_DEMOSAIC_H
#define LUM_BAYER_DEMOSAIC_H

#include "bayer/mosaic.h"
#include "simd/kernel_table.h"

namespace lum {

enum class DemosaicMode { bilinear, lcaa, lcaav, yuv422 };

// Every pixel is computed, borders included: samples outside the frame are mirrored about the
// border sample. Sinks of 8 bits. The source must not overlap the destination.
void convert_demosaic(const Kernels& kernels, const MosaicFrame& frame, DemosaicMode mode);

}  // namespace lum

#endif
