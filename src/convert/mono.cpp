// SPDX-License-Identifier: MIT
// Entry points of the mono sources: checks and routing.
#include "convert/mono.h"

#include "arguments.h"
#include "convert/flat.h"
#include "lum/lum.h"
#include "simd/isa.h"

namespace lum {
namespace {

uint32_t check_flat(const void* dst, const void* src, uint32_t count) {
  if (dst == nullptr) return bad_parameter(1);
  if (src == nullptr) return bad_parameter(2);
  if (count == 0) return bad_parameter(3);
  return kSuccess;
}

uint32_t check_y16(const void* dst, const void* src, uint32_t count, uint32_t format) {
  if (const uint32_t error = check_flat(dst, src, count)) return error;
  if (format > LUM_FORMAT_MONO16_REC709 || format == LUM_FORMAT_UYVY) return kNotImplemented;
  return kSuccess;
}

bool is_mono16(uint32_t format) {
  return format == LUM_FORMAT_MONO16_REC601 || format == LUM_FORMAT_MONO16_REC709;
}

}  // namespace

uint32_t y16_little_endian_image_transform(uint8_t* dst, const uint8_t* src, uint32_t count,
                                           uint32_t format) {
  if (const uint32_t error = check_y16(dst, src, count, format)) return error;
  if (is_mono16(format)) {
    copy_block(dst, src, size_t{count} * 2);
  } else {
    mono16_little_endian_tinted(kernels(), static_cast<Sink>(format), dst, src, count);
  }
  return kSuccess;
}

}  // namespace lum

using namespace lum;

uint32_t LumY8ImageTransform(uint8_t* dst, const uint8_t* src, uint32_t count,
                             uint32_t formatIndex) {
  if (const uint32_t error = check_flat(dst, src, count)) return error;
  if (formatIndex > LUM_FORMAT_UYVY) return kNotImplemented;
  if (formatIndex == LUM_FORMAT_UYVY) {
    mono8_to_uyvy(kernels(), dst, src, count);
  } else {
    convert_flat(kernels(), Source::mono8, static_cast<Sink>(formatIndex), dst, src, count);
  }
  return kSuccess;
}

uint32_t LumY12ImageTransform(uint8_t* dst, const uint8_t* src, uint32_t count,
                              uint32_t formatIndex) {
  if (dst == nullptr) return bad_parameter(1);
  if (src == nullptr) return bad_parameter(2);
  if (count % 2 != 0) return bad_parameter(3);  // Kept: no pixels at all are fine
  if (formatIndex > LUM_FORMAT_MONO8_REC709) return kNotImplemented;
  convert_flat(kernels(), Source::mono12_packed, static_cast<Sink>(formatIndex), dst, src, count);
  return kSuccess;
}

uint32_t LumY16ImageTransform(uint8_t* dst, const uint8_t* src, uint32_t count,
                              uint32_t formatIndex) {
  if (const uint32_t error = check_y16(dst, src, count, formatIndex)) return error;
  if (is_mono16(formatIndex)) {
    copy_block(dst, src, size_t{count} * 2);  // Kept: the words stay big-endian.
  } else {
    convert_flat(kernels(), Source::mono16_tinted, static_cast<Sink>(formatIndex), dst, src, count);
  }
  return kSuccess;
}

uint32_t LumY16ImageTransformEx(uint8_t* dst, const uint8_t* src, uint32_t count,
                                uint32_t formatIndex, const LumBitDepthInfo* bitDepth) {
  if (const uint32_t error = check_flat(dst, src, count)) return error;
  RowArgs args;
  args.big_endian = 1;
  if (bitDepth != nullptr) {
    if (!shift_of(*bitDepth, &args.shift)) return kNotImplemented;
    args.big_endian = bitDepth->endianness;
  }
  if (formatIndex > LUM_FORMAT_BGR48 || formatIndex == LUM_FORMAT_UYVY) return kNotImplemented;
  if (args.big_endian > 1 || !is_supported_shift(args.shift)) return kNotImplemented;
  convert_flat(kernels(), Source::mono16, static_cast<Sink>(formatIndex), dst, src, count, args);
  return kSuccess;
}
