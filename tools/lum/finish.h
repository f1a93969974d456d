// SPDX-License-Identifier: MIT
// What is done to a converted picture before it is written: size, orientation, planes of 4:2:0.
#ifndef LUM_TOOLS_FINISH_H
#define LUM_TOOLS_FINISH_H

#include <optional>
#include <string>

#include "byte_file.h"
#include "catalogue.h"
#include "commands.h"

namespace lum_tool {

struct FlipName {
  const char* name;
  uint32_t mode;  // of LumFlip
};
constexpr FlipName kFlipNames[] = {{"mirror", 1},    {"upside-down", 2}, {"180", 3},
                                   {"transpose", 4}, {"90", 5},          {"270", 6},
                                   {"transverse", 7}};

struct PackingName {
  const char* name;
  uint32_t packing;  // of LumUnpackTo16
};
constexpr PackingName kPackingNames[] = {{"gige", 0}, {"pfnc", 2}, {"mipi", 4}};

struct Finish {
  std::optional<FrameSize> size;
  bool nearest = false;
  uint32_t flip = 0;
  bool i420 = false;

  // A Failure when pixels of this format cannot be treated so.
  void check(const Destination& format, const FrameSize& picture) const;
  FrameSize finished(const FrameSize& picture) const;
  // Changes a picture of this format and size.
  void apply(const Destination& format, const FrameSize& picture, Bytes& pixels) const;
};

// 12-bit packed frames to little-endian words, values in the lower bits.
void unpack_frame(uint32_t packing, const Bytes& frame, uint64_t pixels, Bytes& words);

}  // namespace lum_tool

#endif
