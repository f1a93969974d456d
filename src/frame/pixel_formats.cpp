// SPDX-License-Identifier: MIT
#include "frame/pixel_formats.h"

#include "frame/text.h"

namespace lum {

const PixelFormat* find_pixel_format(uint32_t code) {
  for (const PixelFormat& format : kPixelFormats) {
    if (format.code == code) return &format;
  }
  return nullptr;
}

const PixelFormat* find_pixel_format(const char* name) {
  for (const PixelFormat& format : kPixelFormats) {
    if (equal_ignoring_case(format.name, name)) return &format;
  }
  return nullptr;
}

}  // namespace lum

namespace {

// Stores one column of the table, or refuses and stores nothing.
template <typename Value, typename Column>
LumErrorType query(Value* out, uint32_t code, Column column) {
  if (out == nullptr) return LumErrorBadParameter;
  const lum::PixelFormat* format = lum::find_pixel_format(code);
  if (format == nullptr) return LumErrorBadParameter;
  *out = static_cast<Value>(format->*column);
  return LumErrorSuccess;
}

LumErrorType query_kind(uint8_t* out, uint32_t code, lum::ColourKind asked) {
  auto kind = lum::ColourKind::refused;
  const LumErrorType result = query(&kind, code, &lum::PixelFormat::kind);
  if (out == nullptr || result != LumErrorSuccess || kind == lum::ColourKind::refused) {
    return LumErrorBadParameter;
  }
  *out = kind == asked ? 1 : 0;
  return LumErrorSuccess;
}

}  // namespace

int32_t LumBitsPerPixel(uint32_t* out, uint32_t code) {
  return query(out, code, &lum::PixelFormat::bits_per_pixel);
}

int32_t LumBitsPerPixelUsed(uint32_t* out, uint32_t code) {
  return query(out, code, &lum::PixelFormat::bits_used);
}

int32_t LumGetBayerPattern(uint32_t* out, uint32_t code) {
  return query(out, code, &lum::PixelFormat::pattern);
}

int32_t LumGetPixelLayout(uint32_t* out, uint32_t code) {
  return query(out, code, &lum::PixelFormat::layout);
}

int32_t LumGetColorSpace(uint32_t* out, uint32_t code) {
  if (out == nullptr) return LumErrorBadParameter;
  // Kept: a code that is unknown has no colour space, and that is an answer, not a refusal.
  const lum::PixelFormat* format = lum::find_pixel_format(code);
  *out = LumColorSpaceUndefined;
  if (format != nullptr) *out = format->colour_space;
  return LumErrorSuccess;
}

int32_t LumIsColor(uint8_t* out, uint32_t code) {
  return query_kind(out, code, lum::ColourKind::colour);
}

int32_t LumHasBayerPattern(uint8_t* out, uint32_t code) {
  return query_kind(out, code, lum::ColourKind::mosaic);
}
