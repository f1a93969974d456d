// SPDX-License-Identifier: MIT
// The destination formats: one row for each LumSimpleImageFormat, in the order of its values. The
// set-up writes a row into a descriptor, the selection finds the row that a descriptor stands for.
#ifndef LUM_FRAME_DESTINATION_H
#define LUM_FRAME_DESTINATION_H

#include <stdint.h>

#include <array>
#include <optional>

#include "lum/lum.h"

namespace lum {

struct Destination {
  const char* name;  // key of LumSetImageInfoFromString, compared without regard to case
  uint32_t bits_per_pixel;
  LumPixelLayout layout;
  LumColorSpace colour_space;
};

inline constexpr std::array<Destination, 11> kDestinations = {{
    {"MONO8_REC601", 8, LumPixelLayoutMono, LumColorSpaceItuBt601},
    {"BGR24", 24, LumPixelLayoutBGR, LumColorSpaceUndefined},
    {"BGRA32", 32, LumPixelLayoutBGRA, LumColorSpaceUndefined},
    {"RGB24", 24, LumPixelLayoutRGB, LumColorSpaceUndefined},
    {"RGBA32", 32, LumPixelLayoutRGBA, LumColorSpaceUndefined},
    {"MONO8_REC709", 8, LumPixelLayoutMono, LumColorSpaceItuBt709},
    {"UYVY", 16, LumPixelLayoutYUV422, LumColorSpaceItuBt601},
    {"MONO16_REC601", 16, LumPixelLayoutMono, LumColorSpaceItuBt601},
    {"MONO16_REC709", 16, LumPixelLayoutMono, LumColorSpaceItuBt709},
    {"BGR48", 48, LumPixelLayoutBGR, LumColorSpaceUndefined},
    {"RGB48", 48, LumPixelLayoutRGB, LumColorSpaceUndefined},
}};

// The name "YUV422" stands for UYVY too.
inline constexpr const char* kUyvyOtherName = "YUV422";

// The format that a destination descriptor selects, or nothing when it selects none.
std::optional<LumSimpleImageFormat> select_destination(const LumImageInfo& info);

// The format of a zero-terminated name, without regard to case, or nothing.
std::optional<LumSimpleImageFormat> find_destination(const char* name);

}  // namespace lum

#endif
