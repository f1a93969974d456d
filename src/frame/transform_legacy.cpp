// SPDX-License-Identifier: MIT
// The older dispatcher: the source is told by its camera pixel format alone.
#include "frame/pixel_formats.h"
#include "lum/lum.h"

namespace {

// Kept: camera words with fewer than 16 bits used sit at the bottom of little-endian words, while
// fully used ones go to the plain transforms, which read them as big-endian.
constexpr uint32_t kLowAligned = 1;
constexpr uint32_t kLittleEndian = 0;

using Pixels = const uint8_t*;

uint32_t transform_colour(uint8_t* dst, Pixels src, uint32_t count, uint32_t format,
                          uint32_t code) {
  switch (code) {
    case LumPixelFormatYuv411:
      return LumYUV411ImageTransform(dst, src, count, format);
    case LumPixelFormatYuv422:
      return LumYUV422ImageTransform(dst, src, count, format);
    case LumPixelFormatYuv444:
      return LumYUV444ImageTransform(dst, src, count, format);
    case LumPixelFormatRgb8:
      return LumRGB8ImageTransform(dst, src, count, format);
    case LumPixelFormatBgr8:
      return LumBGR8ImageTransform(dst, src, count, format);
    case LumPixelFormatRgba8:
      return LumRGBA8ImageTransform(dst, src, count, format);
    case LumPixelFormatBgra8:
      return LumBGRA8ImageTransform(dst, src, count, format);
    default:
      return static_cast<uint32_t>(LumErrorBadParameter);
  }
}

uint32_t transform_mono(uint8_t* dst, Pixels src, uint32_t count, uint32_t format,
                        const lum::PixelFormat& source) {
  if (source.bits_per_pixel == 8) return LumY8ImageTransform(dst, src, count, format);
  if (source.bits_per_pixel == 12) return LumY12ImageTransform(dst, src, count, format);
  if (source.bits_per_pixel != 16) return static_cast<uint32_t>(LumErrorBadParameter);
  if (source.bits_used == 16) return LumY16ImageTransform(dst, src, count, format);
  const LumBitDepthInfo depth = {0, kLowAligned, source.bits_used, kLittleEndian, 0};
  return LumY16ImageTransformEx(dst, src, count, format, &depth);
}

uint32_t transform_mosaic(uint8_t* dst, Pixels src, uint32_t width, uint32_t height,
                          uint32_t format, const lum::PixelFormat& source) {
  const uint32_t pattern = source.pattern;
  if (source.bits_per_pixel == 8) {
    return LumRaw8ImageTransform(dst, src, width, height, format, pattern);
  }
  if (source.bits_per_pixel == 12) {
    return LumRaw12ImageTransform(dst, src, width, height, format, pattern);
  }
  if (source.bits_per_pixel != 16) return static_cast<uint32_t>(LumErrorBadParameter);
  if (source.bits_used == 16) {
    return LumRaw16ImageTransform(dst, src, width, height, format, pattern);
  }
  const LumBitDepthInfo depth = {0, kLowAligned, source.bits_used, kLittleEndian, pattern};
  return LumRaw16ImageTransformEx(dst, src, width, height, format, &depth);
}

}  // namespace

int32_t LumTransformOLD(void* destinationData, unsigned formatIndex, void* sourceData,
                        unsigned width, unsigned height, int /*ignoredArgument*/,
                        unsigned pixelFormat) {
  if (destinationData == nullptr || sourceData == nullptr) return LumErrorBadParameter;
  // One look-up answers all queries, so none can fail after this.
  const lum::PixelFormat* source = lum::find_pixel_format(pixelFormat);
  if (source == nullptr) return LumErrorBadParameter;

  auto* dst = static_cast<uint8_t*>(destinationData);
  const auto* src = static_cast<const uint8_t*>(sourceData);
  uint32_t result = static_cast<uint32_t>(LumErrorBadParameter);
  switch (source->kind) {
    case lum::ColourKind::colour:
      result = transform_colour(dst, src, width * height, formatIndex, pixelFormat);
      break;
    case lum::ColourKind::grey:
      result = transform_mono(dst, src, width * height, formatIndex, *source);
      break;
    case lum::ColourKind::mosaic:
      result = transform_mosaic(dst, src, width, height, formatIndex, *source);
      break;
    case lum::ColourKind::refused:
      break;
  }
  return static_cast<int32_t>(result);
}
