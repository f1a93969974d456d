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

constexpr uint32_t kLargestBin = 16;

// Done in this order.
struct Geometry {
  std::optional<FrameSize> bin;   // pixels that become one
  std::optional<FrameSize> size;  // to resize to
  bool nearest = false;
  uint32_t flip = 0;

  bool any() const { return bin || size || flip != 0; }
  FrameSize binned(const FrameSize& picture) const;
  FrameSize finished(const FrameSize& picture) const;
  // A Failure when the library cannot.
  void check(const FrameSize& picture) const;
  void apply(const FrameSize& picture, uint32_t channels, uint32_t sample_bytes,
             Bytes& pixels) const;
};

struct Finish {
  Geometry geometry;
  bool i420 = false;

  // All for a picture of these pixels, which messages call `name`. Grouped YUV has no pixels of its
  // own to move: its geometry is that of its planes.
  void check(const std::string& name, const LumPixelInfo& pixel, const FrameSize& picture) const;
  Bytes applied(const LumPixelInfo& pixel, const FrameSize& picture, const Bytes& pixels) const;
};

// Whether LumImageToI420 takes such pixels.
bool goes_to_i420(const LumPixelInfo& pixel);

}  // namespace lum_tool

#endif
