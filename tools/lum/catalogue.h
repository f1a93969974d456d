// SPDX-License-Identifier: MIT
// What the tool can be asked for: sources (camera pixel formats, packed ones that are unpacked
// first, and the CYGM frame of the direct functions), destinations and ways of converting. Facts
// about formats are the library's own.
#ifndef LUM_TOOLS_CATALOGUE_H
#define LUM_TOOLS_CATALOGUE_H

#include <lum/lum.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "packed.h"

namespace lum_tool {

struct Source {
  enum class Kind {
    camera,  // the library's transforms take it by its code
    packed,  // LumUnpackTo16 takes it, the transforms take the words that it gives
    cygm
  };
  Kind kind = Kind::camera;
  std::string name;                      // as the pixel format naming convention spells it
  std::vector<std::string> other_names;  // as LumSetImageInfoFromString knows it
  uint32_t code = 0;                     // 0 when it has none
  LumPixelInfo pixel = {};
  LumColorSpace colour_space = LumColorSpaceUndefined;
  std::optional<Packing> packing;
  uint32_t words_code = 0;  // of the format that it is unpacked to

  bool is_cygm() const { return kind == Kind::cygm; }
  // Itself, but of a packed source the format that it is unpacked to.
  const Source& converted() const;
  bool is_mosaic() const;
  bool is_yuv() const;
  bool is_bayer8() const;
  // Width and height have to be multiples of these.
  uint32_t step_x() const;
  uint32_t step_y() const;
  bool fits(uint32_t width, uint32_t height) const;
  uint64_t frame_bytes(uint32_t width, uint32_t height) const;
};

struct Destination {
  std::string name;
  uint32_t index = 0;
  LumPixelInfo pixel = {};

  uint64_t frame_bytes(uint32_t width, uint32_t height) const;
};

const std::vector<Source>& sources();
const std::vector<Destination>& destinations();

// By name, in any case, or by code (decimal or 0x...). Null when there is none.
const Source* find_source(const std::string& text);
const Destination* find_destination(const std::string& text);
// The same, but a Failure that lists the names.
const Source& need_source(const std::string& text);
const Destination& need_destination(const std::string& text);

const char* layout_name(uint32_t layout);
const char* pattern_name(uint32_t pattern);
std::string hex_code(uint32_t code);

struct DebayerName {
  const char* name;
  uint32_t mode;
};
constexpr DebayerName kDebayerNames[] = {{"2x2", LumDebayerMode2x2},
                                         {"3x3", LumDebayerMode3x3},
                                         {"lcaa", LumDebayerModeLCAA},
                                         {"lcaav", LumDebayerModeLCAAV},
                                         {"yuv422", LumDebayerModeYUV422}};

}  // namespace lum_tool

#endif
