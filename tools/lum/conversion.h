// SPDX-License-Identifier: MIT
// One conversion through the library's entries, and its result in words.
#ifndef LUM_TOOLS_CONVERSION_H
#define LUM_TOOLS_CONVERSION_H

#include <array>
#include <optional>
#include <string>

#include "catalogue.h"
#include "picture_file.h"

namespace lum_tool {

// Which function answered last, and what.
struct Outcome {
  const char* function;
  int32_t code;
};

struct Conversion {
  enum class Entry {
    descriptors,  // LumImageTransform; for a CYGM frame LumIRaw8CYGMImageTransform
    older,        // LumTransformOLD
    direct_bgr,   // LumIRaw8CYGMToBGR
    cygm_3x3,     // LumIRaw8CYGMImageTransform_3x3
    cygm_binned,  // LumIRaw8CYGMImageTransform_Bin
    cygm_luma,    // LumIRaw8CYGMToY8
    bayer_binned  // LumRaw8ImageTransform_Bin
  };

  enum class Correction {
    none,
    dispatcher,  // LumImageTransform with a matrix entry
    mosaic,      // LumRaw8ImageTransform_CC and its like for 12 and 16 bits
    finished     // LumBGRToBGR_CC after the conversion
  };

  const Source* source = nullptr;
  const Destination* destination = nullptr;
  Entry entry = Entry::descriptors;
  std::optional<uint32_t> debayer;
  std::optional<uint32_t> yuv_encoding;  // through LumYUVToBGR
  std::optional<std::array<float, 9>> matrix;
  bool direct_correction = false;  // a _CC function also where the dispatcher takes the matrix
  bool big_endian = false;
  bool msb_aligned = false;

  Correction correction() const;
  // Width and height of a frame over those of the picture.
  uint32_t divisor() const {
    return entry == Entry::cygm_binned || entry == Entry::bayer_binned ? 2 : 1;
  }

  // What the library would misread or ignore is refused before it is asked: a Failure.
  void check(uint32_t width, uint32_t height) const;

  // The library's answer for a frame of this width and height. Both buffers hold the bytes that
  // frame_bytes() of either side names, the source kSourceSlack more: LumIRaw8CYGMToBGR reads one
  // sample past the last row.
  Outcome run(uint8_t* destination_data, uint8_t* source_data, uint32_t width, uint32_t height);

  // Kept: mono words of which all 16 bits are used are copied as they are, in the byte order of the
  // frame. Whether that is not this machine's.
  bool keeps_foreign_words() const;

  // A destination buffer as a picture of its own width and height, colours in the order of picture
  // files.
  Picture picture(const Bytes& buffer, uint32_t width, uint32_t height) const;

 private:
  Outcome convert(uint8_t* to, uint8_t* from, uint32_t width, uint32_t height) const;
  Outcome by_dispatcher(uint8_t* to, uint8_t* from, uint32_t width, uint32_t height) const;

  Bytes words_;  // of a packed source
};

constexpr size_t kSourceSlack = 16;

constexpr char kLumaName[] = "luma", kLumaDestination[] = "MONO8_REC601";

struct CygmName {
  const char* name;
  Conversion::Entry entry;
};
constexpr CygmName kCygmNames[] = {{"2x2", Conversion::Entry::descriptors},
                                   {"3x3", Conversion::Entry::cygm_3x3},
                                   {"bin", Conversion::Entry::cygm_binned},
                                   {kLumaName, Conversion::Entry::cygm_luma}};
struct YuvName {
  const char* name;
  uint32_t encoding;
};
constexpr YuvName kYuvNames[] = {{"full", 0}, {"studio", 1}, {"studio709", 2}};
constexpr char kBinnedName[] = "bin";  // beside kDebayerNames, which are the library's modes

// A Failure with the result's text when there is one.
void need(const char* function, uint32_t code);

// "0x88000004 Parameter 3 is invalid", "-7 One of the parameters was invalid ...".
std::string result_text(int32_t code);

// The destinations that the library converts to on this way, found by asking it with a tiny frame.
std::vector<const Destination*> reachable(Conversion way);

}  // namespace lum_tool

#endif
