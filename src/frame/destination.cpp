// SPDX-License-Identifier: MIT
#include "frame/destination.h"

#include "frame/text.h"

namespace lum {

std::optional<LumSimpleImageFormat> select_destination(const LumImageInfo& info) {
  LumColorSpace space = info.colorSpace;
  if (space == LumColorSpaceUndefined) space = LumColorSpaceItuBt601;
  LumPixelLayout layout = info.pixelInfo.pixelLayout;
  // Kept: a mono descriptor whose colour space is none of the three is judged as RGB. Callers that
  // leave other values in the field rely on it: with 24 bits they get RGB24, with 48 RGB48.
  if (layout == LumPixelLayoutMono && space > LumColorSpaceItuBt601) layout = LumPixelLayoutRGB;

  for (LumSimpleImageFormat format = 0; format < kDestinations.size(); ++format) {
    const Destination& row = kDestinations[format];
    if (row.layout != layout) continue;
    // The colour space tells the two mono formats of one width apart and matters to no other.
    if (layout == LumPixelLayoutMono && row.colour_space != space) continue;
    // Kept: UYVY is the only YUV output, so its width is not looked at; callers leave it 0.
    if (layout != LumPixelLayoutYUV422 && row.bits_per_pixel != info.pixelInfo.bitsPerPixel) {
      continue;
    }
    return format;
  }
  return std::nullopt;
}

std::optional<LumSimpleImageFormat> find_destination(const char* name) {
  for (LumSimpleImageFormat format = 0; format < kDestinations.size(); ++format) {
    if (equal_ignoring_case(kDestinations[format].name, name)) return format;
  }
  if (equal_ignoring_case(kUyvyOtherName, name)) return LUM_FORMAT_UYVY;
  return std::nullopt;
}

}  // namespace lum
