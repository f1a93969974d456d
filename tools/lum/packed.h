// SPDX-License-Identifier: MIT
// Packed samples of 10 and 12 bits: the camera formats that have them, and the bytes of a group.
#ifndef LUM_TOOLS_PACKED_H
#define LUM_TOOLS_PACKED_H

#include <lum/lum.h>

#include <cstdint>

#include "byte_file.h"

namespace lum_tool {

// By the numbers of LumUnpackTo16.
enum Packing : uint32_t { kGige12, kGige10, kPfnc12p, kPfnc10p, kCsi12, kCsi10 };

// Samples that share bytes, and those bytes.
struct PackedGroup {
  uint32_t samples, bytes, bits;
};
constexpr PackedGroup kPackedGroups[] = {{2, 3, 12}, {2, 3, 10}, {2, 3, 12},
                                         {4, 5, 10}, {2, 3, 12}, {4, 5, 10}};

struct PackedFormat {
  const char* name;
  const char* other_name;  // "" when there is none
  uint32_t code;           // of the pixel format naming convention; 0: not listed there
  Packing packing;
  uint32_t words;  // camera format of the same samples as 16-bit words
};

// The 12-bit packing of GigE Vision is also a source of the library's transforms, the others only
// of LumUnpackTo16. The convention leaves out the packing of MIPI CSI-2: those names are of V4L2,
// whose S RGGB is the convention's Bayer RG, with other names as libcamera prints them.
constexpr PackedFormat kPackedFormats[] = {
    {"Mono12Packed", "", LumPixelFormatMono12Packed, kGige12, LumPixelFormatMono12},
    {"BayerGR12Packed", "", LumPixelFormatBayerGR12Packed, kGige12, LumPixelFormatBayerGR12},
    {"BayerRG12Packed", "", LumPixelFormatBayerRG12Packed, kGige12, LumPixelFormatBayerRG12},
    {"BayerGB12Packed", "", LumPixelFormatBayerGB12Packed, kGige12, LumPixelFormatBayerGB12},
    {"BayerBG12Packed", "", LumPixelFormatBayerBG12Packed, kGige12, LumPixelFormatBayerBG12},
    {"Mono10Packed", "", 0x010C0004, kGige10, LumPixelFormatMono10},
    {"BayerGR10Packed", "", 0x010C0026, kGige10, LumPixelFormatBayerGR10},
    {"BayerRG10Packed", "", 0x010C0027, kGige10, LumPixelFormatBayerRG10},
    {"BayerGB10Packed", "", 0x010C0028, kGige10, LumPixelFormatBayerGB10},
    {"BayerBG10Packed", "", 0x010C0029, kGige10, LumPixelFormatBayerBG10},
    {"Mono10p", "", 0x010A0046, kPfnc10p, LumPixelFormatMono10},
    {"BayerGR10p", "", 0x010A0056, kPfnc10p, LumPixelFormatBayerGR10},
    {"BayerRG10p", "", 0x010A0058, kPfnc10p, LumPixelFormatBayerRG10},
    {"BayerGB10p", "", 0x010A0054, kPfnc10p, LumPixelFormatBayerGB10},
    {"BayerBG10p", "", 0x010A0052, kPfnc10p, LumPixelFormatBayerBG10},
    {"Mono12p", "", 0x010C0047, kPfnc12p, LumPixelFormatMono12},
    {"BayerGR12p", "", 0x010C0057, kPfnc12p, LumPixelFormatBayerGR12},
    {"BayerRG12p", "", 0x010C0059, kPfnc12p, LumPixelFormatBayerRG12},
    {"BayerGB12p", "", 0x010C0055, kPfnc12p, LumPixelFormatBayerGB12},
    {"BayerBG12p", "", 0x010C0053, kPfnc12p, LumPixelFormatBayerBG12},
    {"Y10P", "R10_CSI2P", 0, kCsi10, LumPixelFormatMono10},
    {"SGRBG10P", "SGRBG10_CSI2P", 0, kCsi10, LumPixelFormatBayerGR10},
    {"SRGGB10P", "SRGGB10_CSI2P", 0, kCsi10, LumPixelFormatBayerRG10},
    {"SGBRG10P", "SGBRG10_CSI2P", 0, kCsi10, LumPixelFormatBayerGB10},
    {"SBGGR10P", "SBGGR10_CSI2P", 0, kCsi10, LumPixelFormatBayerBG10},
    {"Y12P", "R12_CSI2P", 0, kCsi12, LumPixelFormatMono12},
    {"SGRBG12P", "SGRBG12_CSI2P", 0, kCsi12, LumPixelFormatBayerGR12},
    {"SRGGB12P", "SRGGB12_CSI2P", 0, kCsi12, LumPixelFormatBayerRG12},
    {"SGBRG12P", "SGBRG12_CSI2P", 0, kCsi12, LumPixelFormatBayerGB12},
    {"SBGGR12P", "SBGGR12_CSI2P", 0, kCsi12, LumPixelFormatBayerBG12},
};

// Appends the bytes of a group of samples; the upper bits of a sample beyond the packing's are 0.
void pack_group(Packing packing, const uint32_t* samples, Bytes& out);

// Where --unpack leaves the bits of a word that are not used.
struct WordName {
  const char* name;
  bool at_top;  // the value
};
constexpr WordName kWordNames[] = {{"lsb", false}, {"msb", true}};

// To little-endian words, values at the bottom or at the top. Throws Failure.
void unpack(Packing packing, bool at_top, const uint8_t* packed, uint64_t pixels, Bytes& words);

}  // namespace lum_tool

#endif
