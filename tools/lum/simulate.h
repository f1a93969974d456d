// SPDX-License-Identifier: MIT
// What a camera of a given pixel format would have delivered for a picture.
#ifndef LUM_TOOLS_SIMULATE_H
#define LUM_TOOLS_SIMULATE_H

#include "catalogue.h"
#include "picture_file.h"

namespace lum_tool {

struct SimulatedFrame {
  uint32_t width = 0;  // cropped to what the format's groups and mosaic need
  uint32_t height = 0;
  Bytes bytes;
};

SimulatedFrame simulate_frame(const Picture& picture, const Source& source, bool big_endian,
                              bool msb_aligned);

}  // namespace lum_tool

#endif
