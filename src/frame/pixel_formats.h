// SPDX-License-Identifier: MIT
// The camera pixel formats that the library knows: one table, read by every query, by the look-up
// of names, by the dispatchers and by the tools. A new camera format is a new row here.
#ifndef LUM_FRAME_PIXEL_FORMATS_H
#define LUM_FRAME_PIXEL_FORMATS_H

#include <stdint.h>

#include <array>

#include "lum/lum.h"

namespace lum {

// What LumIsColor and LumHasBayerPattern answer.
enum class ColourKind : uint8_t {
  grey,
  mosaic,  // not colour for LumIsColor: a mosaic becomes colour only by demosaicing
  colour,
  refused,
};

struct PixelFormat {
  const char* name;  // key of LumSetImageInfoFromString, compared without regard to case
  uint32_t code;     // PFNC value
  uint32_t bits_per_pixel;
  uint32_t bits_used;
  LumPixelLayout layout;
  LumBayerPattern pattern;
  LumColorSpace colour_space;
  ColourKind kind;
};

namespace pixel_formats_detail {

constexpr LumBayerPattern kNoPattern = LumBayerPatternNone;
constexpr LumColorSpace kNoSpace = LumColorSpaceUndefined;

constexpr PixelFormat mono(const char* name, uint32_t code, uint32_t bits, uint32_t used,
                           LumPixelLayout layout = LumPixelLayoutMono) {
  return {name, code, bits, used, layout, kNoPattern, kNoSpace, ColourKind::grey};
}

constexpr PixelFormat mosaic(const char* name, uint32_t code, uint32_t bits, uint32_t used,
                             LumBayerPattern pattern, LumPixelLayout layout = LumPixelLayoutRaw) {
  return {name, code, bits, used, layout, pattern, kNoSpace, ColourKind::mosaic};
}

constexpr PixelFormat colour(const char* name, uint32_t code, uint32_t bits, uint32_t used,
                             LumPixelLayout layout, LumColorSpace space = kNoSpace,
                             ColourKind kind = ColourKind::colour) {
  return {name, code, bits, used, layout, kNoPattern, space, kind};
}

constexpr LumBayerPattern kGR = LumBayerPatternGRBG;
constexpr LumBayerPattern kRG = LumBayerPatternRGGB;
constexpr LumBayerPattern kGB = LumBayerPatternGBRG;
constexpr LumBayerPattern kBG = LumBayerPatternBGGR;

constexpr std::array kTable = {
    mono("PixelFormatMono8", LumPixelFormatMono8, 8, 8),
    mono("PixelFormatMono10", LumPixelFormatMono10, 16, 10),
    mono("PixelFormatMono12", LumPixelFormatMono12, 16, 12),
    mono("PixelFormatMono12Packed", LumPixelFormatMono12Packed, 12, 12, LumPixelLayoutMonoPacked),
    mono("PixelFormatMono14", LumPixelFormatMono14, 16, 14),
    mono("PixelFormatMono16", LumPixelFormatMono16, 16, 16),

    mosaic("PixelFormatBayerGR8", LumPixelFormatBayerGR8, 8, 8, kGR),
    mosaic("PixelFormatBayerRG8", LumPixelFormatBayerRG8, 8, 8, kRG),
    mosaic("PixelFormatBayerGB8", LumPixelFormatBayerGB8, 8, 8, kGB),
    mosaic("PixelFormatBayerBG8", LumPixelFormatBayerBG8, 8, 8, kBG),
    mosaic("PixelFormatBayerGR10", LumPixelFormatBayerGR10, 16, 10, kGR),
    mosaic("PixelFormatBayerRG10", LumPixelFormatBayerRG10, 16, 10, kRG),
    mosaic("PixelFormatBayerGB10", LumPixelFormatBayerGB10, 16, 10, kGB),
    mosaic("PixelFormatBayerBG10", LumPixelFormatBayerBG10, 16, 10, kBG),
    mosaic("PixelFormatBayerGR12", LumPixelFormatBayerGR12, 16, 12, kGR),
    mosaic("PixelFormatBayerRG12", LumPixelFormatBayerRG12, 16, 12, kRG),
    mosaic("PixelFormatBayerGB12", LumPixelFormatBayerGB12, 16, 12, kGB),
    mosaic("PixelFormatBayerBG12", LumPixelFormatBayerBG12, 16, 12, kBG),
    mosaic("PixelFormatBayerGR12Packed", LumPixelFormatBayerGR12Packed, 12, 12, kGR,
           LumPixelLayoutRawPacked),
    mosaic("PixelFormatBayerRG12Packed", LumPixelFormatBayerRG12Packed, 12, 12, kRG,
           LumPixelLayoutRawPacked),
    mosaic("PixelFormatBayerGB12Packed", LumPixelFormatBayerGB12Packed, 12, 12, kGB,
           LumPixelLayoutRawPacked),
    mosaic("PixelFormatBayerBG12Packed", LumPixelFormatBayerBG12Packed, 12, 12, kBG,
           LumPixelLayoutRawPacked),
    mosaic("PixelFormatBayerGR16", LumPixelFormatBayerGR16, 16, 16, kGR),
    mosaic("PixelFormatBayerRG16", LumPixelFormatBayerRG16, 16, 16, kRG),
    mosaic("PixelFormatBayerGB16", LumPixelFormatBayerGB16, 16, 16, kGB),
    mosaic("PixelFormatBayerBG16", LumPixelFormatBayerBG16, 16, 16, kBG),

    colour("PixelFormatRgb8", LumPixelFormatRgb8, 24, 24, LumPixelLayoutRGB),
    colour("PixelFormatBgr8", LumPixelFormatBgr8, 24, 24, LumPixelLayoutBGR),
    // Kept: two names, one code. Callers store either name in their settings.
    colour("PixelFormatArgb8", LumPixelFormatArgb8, 32, 32, LumPixelLayoutRGBA),
    colour("PixelFormatRgba8", LumPixelFormatRgba8, 32, 32, LumPixelLayoutRGBA),
    colour("PixelFormatBgra8", LumPixelFormatBgra8, 32, 32, LumPixelLayoutBGRA),
    // Kept: no conversion reads it, and callers see that by the refusal of LumIsColor and
    // LumHasBayerPattern, while the other queries serve those who only need its sizes.
    colour("PixelFormatRgb12", LumPixelFormatRgb12, 48, 36, LumPixelLayoutRGB, kNoSpace,
           ColourKind::refused),
    colour("PixelFormatRgb16", LumPixelFormatRgb16, 48, 48, LumPixelLayoutRGB),
    colour("PixelFormatYuv411", LumPixelFormatYuv411, 12, 12, LumPixelLayoutYUV411,
           LumColorSpaceItuBt601),
    colour("PixelFormatYuv422", LumPixelFormatYuv422, 16, 16, LumPixelLayoutYUV422,
           LumColorSpaceItuBt601),
    colour("PixelFormatYuv444", LumPixelFormatYuv444, 24, 24, LumPixelLayoutYUV444,
           LumColorSpaceItuBt601),
};

}  // namespace pixel_formats_detail

inline constexpr const auto& kPixelFormats = pixel_formats_detail::kTable;

// The row of a code, or null when the code is unknown.
const PixelFormat* find_pixel_format(uint32_t code);

// The row of a zero-terminated name, without regard to case, or null.
const PixelFormat* find_pixel_format(const char* name);

}  // namespace lum

#endif
