// SPDX-License-Identifier: MIT
#include <dc1394/dc1394.h>

#include "peers/peers.h"

namespace lum::bench {
namespace {

// It makes R, G, B. Where B, G, R is wanted, the mosaic that begins with R is called one that
// begins with B.
struct Mosaic {
  const char* row;
  dc1394color_filter_t pattern;
  dc1394bayer_method_t method;
  const char* name;
  unsigned bits;  // 8: bytes; more: words
  const char* difference;
};

constexpr dc1394color_filter_t kRgb = DC1394_COLOR_FILTER_RGGB, kBgr = DC1394_COLOR_FILTER_BGGR;
constexpr const char* kBlocks = "of two greens the one in the pixel's row";
constexpr const char* kBilinear = "bilinear from 3x3 instead of 2x2 blocks";
constexpr const char* kAnother = "another method";

constexpr Mosaic kMosaics[] = {
    {"bayer8-to-rgb24", kRgb, DC1394_BAYER_METHOD_SIMPLE, "SIMPLE", 8, kBlocks},
    {"bayer8-to-bgr24", kBgr, DC1394_BAYER_METHOD_SIMPLE, "SIMPLE", 8, kBlocks},
    {"bayer8-to-rgb24", kRgb, DC1394_BAYER_METHOD_NEAREST, "NEAREST", 8, "takes one of the greens"},
    {"bayer8-to-bgr24", kBgr, DC1394_BAYER_METHOD_NEAREST, "NEAREST", 8, "takes one of the greens"},
    {"bayer8-to-bgr24", kBgr, DC1394_BAYER_METHOD_BILINEAR, "BILINEAR", 8, kBilinear},
    {"bayer12le-to-rgb48", kRgb, DC1394_BAYER_METHOD_SIMPLE, "SIMPLE", 12, kBlocks},
    {"bayer12le-to-bgr48", kBgr, DC1394_BAYER_METHOD_SIMPLE, "SIMPLE", 12, kBlocks},
    {"bayer8-3x3-to-bgr24", kBgr, DC1394_BAYER_METHOD_BILINEAR, "BILINEAR", 8, "own rounding"},
    {"bayer8-yuv422-to-bgr24", kBgr, DC1394_BAYER_METHOD_HQLINEAR, "HQLINEAR", 8, kAnother},
    {"bayer8-lcaa-to-bgr24", kBgr, DC1394_BAYER_METHOD_VNG, "VNG", 8, kAnother},
    {"bayer8-lcaa-to-bgr24", kBgr, DC1394_BAYER_METHOD_AHD, "AHD", 8, kAnother},
    {"bayer8-lcaav-to-bgr24", kBgr, DC1394_BAYER_METHOD_VNG, "VNG", 8, kAnother},
    {"bayer8-lcaav-to-bgr24", kBgr, DC1394_BAYER_METHOD_AHD, "AHD", 8, kAnother},
    {"bayer8-bin-to-bgr24", kBgr, DC1394_BAYER_METHOD_DOWNSAMPLE, "DOWNSAMPLE", 8,
     "the cell's samples as they are"},
};

Peer peer_of(const Mosaic& m) {
  // This one gets the size of the mosaic and writes half of it.
  const uint32_t times = m.method == DC1394_BAYER_METHOD_DOWNSAMPLE ? 2 : 1;
  Peer peer = {m.row, std::string("bayer_decoding ") + m.name, m.difference,
               [=](uint32_t width, uint32_t height) -> Conversion {
                 const uint32_t w = width * times, h = height * times;
                 if (m.bits == 8) {
                   return [=](uint8_t* dst, uint8_t* src) {
                     dc1394_bayer_decoding_8bit(src, dst, w, h, m.pattern, m.method);
                   };
                 }
                 return [=](uint8_t* dst, uint8_t* src) {
                   dc1394_bayer_decoding_16bit(reinterpret_cast<const uint16_t*>(src),
                                               reinterpret_cast<uint16_t*>(dst), w, h, m.pattern,
                                               m.method, m.bits);
                 };
               }};
  peer.shift = m.bits == 8 ? 0 : 16 - m.bits;
  return peer;
}

using Convert = dc1394error_t (*)(uint8_t* src, uint8_t* dst, uint32_t width, uint32_t height,
                                  uint32_t byte_order, dc1394color_coding_t coding, uint32_t bits);
struct Coding {
  const char* row;
  Convert convert;
  const char* name;
  dc1394color_coding_t coding;
  uint32_t bits;
  const char* difference;
};
constexpr Coding kCodings[] = {
    {"mono8-to-rgb24", dc1394_convert_to_RGB8, "convert_to_RGB8", DC1394_COLOR_CODING_MONO8, 8, ""},
    {"mono16be-to-rgb24", dc1394_convert_to_RGB8, "convert_to_RGB8", DC1394_COLOR_CODING_MONO16, 16,
     "without the low byte's tint"},
    {"mono12be-to-rgb24", dc1394_convert_to_RGB8, "convert_to_RGB8", DC1394_COLOR_CODING_MONO16, 12,
     ""},
    {"yuv411-to-rgb24", dc1394_convert_to_RGB8, "convert_to_RGB8", DC1394_COLOR_CODING_YUV411, 8,
     "truncates instead of rounding"},
    {"yuv422-to-rgb24", dc1394_convert_to_RGB8, "convert_to_RGB8", DC1394_COLOR_CODING_YUV422, 8,
     "truncates instead of rounding"},
    {"yuv444-to-rgb24", dc1394_convert_to_RGB8, "convert_to_RGB8", DC1394_COLOR_CODING_YUV444, 8,
     "truncates instead of rounding"},
    {"mono16be-to-mono8_rec601", dc1394_convert_to_MONO8, "convert_to_MONO8",
     DC1394_COLOR_CODING_MONO16, 16, ""},
    {"mono12be-to-mono8_rec601", dc1394_convert_to_MONO8, "convert_to_MONO8",
     DC1394_COLOR_CODING_MONO16, 12, ""},
    {"yuv411-to-uyvy", dc1394_convert_to_YUV422, "convert_to_YUV422", DC1394_COLOR_CODING_YUV411, 8,
     ""},
    {"yuv444-to-uyvy", dc1394_convert_to_YUV422, "convert_to_YUV422", DC1394_COLOR_CODING_YUV444, 8,
     ""},
};

Peer peer_of(const Coding& c) {
  return {c.row, c.name, c.difference, [=](uint32_t width, uint32_t height) -> Conversion {
            return [=](uint8_t* dst, uint8_t* src) {
              c.convert(src, dst, width, height, DC1394_BYTE_ORDER_UYVY, c.coding, c.bits);
            };
          }};
}

}  // namespace

PeerLibrary dc1394() {
  PeerLibrary library = {"libdc1394", "2", {}};
  for (const Mosaic& m : kMosaics) library.peers.push_back(peer_of(m));
  for (const Coding& c : kCodings) library.peers.push_back(peer_of(c));
  return library;
}

}  // namespace lum::bench
