// SPDX-License-Identifier: MIT
// Filling an image descriptor from a camera pixel format, a destination format or a name.
#include "frame/destination.h"
#include "frame/pixel_formats.h"
#include "frame/text.h"
#include "lum/lum.h"

namespace {

constexpr uint32_t kLittleEndian = 0;
constexpr uint32_t kLowAligned = 1;
constexpr char kOptionalPrefix[] = "Lum";
constexpr uint32_t kOptionalPrefixLength = sizeof(kOptionalPrefix) - 1;

LumErrorType check_descriptor(const LumImage* image) {
  if (image == nullptr) return LumErrorBadParameter;
  return image->size == sizeof(LumImage) ? LumErrorSuccess : LumErrorStructSize;
}

void set_geometry(LumImageInfo& info, uint32_t width, uint32_t height) {
  info.width = width;
  info.height = height;
  info.stride = width;  // Kept: pixels, not bytes. No conversion reads it, existing callers do.
}

}  // namespace

int32_t LumSetImageInfoFromPixelFormat(uint32_t code, uint32_t width, uint32_t height,
                                       LumImage* image) {
  if (const LumErrorType result = check_descriptor(image); result != LumErrorSuccess) {
    return result;
  }
  LumImageInfo& info = image->imageInfo;
  // Kept: the geometry is written before the code is looked up, and stays when the code is unknown.
  set_geometry(info, width, height);
  const lum::PixelFormat* format = lum::find_pixel_format(code);
  if (format == nullptr) return LumErrorBadParameter;
  info.pixelInfo = {format->bits_per_pixel, format->bits_used, kLowAligned,
                    kLittleEndian,          format->layout,    format->pattern};
  info.colorSpace = format->colour_space;
  return LumErrorSuccess;
}

int32_t LumSetImageInfoOutput(uint32_t simpleFormat, uint32_t width, uint32_t height,
                              LumImage* image) {
  if (const LumErrorType result = check_descriptor(image); result != LumErrorSuccess) {
    return result;
  }
  LumImageInfo& info = image->imageInfo;
  // Kept: the geometry is written before the format is judged, and stays when it is refused.
  set_geometry(info, width, height);
  if (simpleFormat >= lum::kDestinations.size()) return LumErrorBadParameter;
  const lum::Destination& row = lum::kDestinations[simpleFormat];
  info.pixelInfo = {row.bits_per_pixel, row.bits_per_pixel, kLowAligned,
                    kLittleEndian,      row.layout,         LumBayerPatternNone};
  info.colorSpace = row.colour_space;
  return LumErrorSuccess;
}

// The names live in constant tables: nothing is built on the first call and nothing can run out, so
// there is nothing to guard between threads and LumErrorResources is never needed.
int32_t LumSetImageInfoFromString(const char* name, uint32_t nameLength, uint32_t width,
                                  uint32_t height, LumImage* image) {
  if (name == nullptr) return LumErrorBadParameter;
  if (const LumErrorType result = check_descriptor(image); result != LumErrorSuccess) {
    return result;
  }
  // Kept: the length decides about the prefix only; the name itself ends at its terminating zero.
  if (nameLength > kOptionalPrefixLength && lum::starts_with_ignoring_case(name, kOptionalPrefix)) {
    name += kOptionalPrefixLength;
  }
  if (const auto format = lum::find_destination(name)) {
    return LumSetImageInfoOutput(*format, width, height, image);
  }
  if (const lum::PixelFormat* format = lum::find_pixel_format(name)) {
    return LumSetImageInfoFromPixelFormat(format->code, width, height, image);
  }
  return LumErrorBadParameter;
}
