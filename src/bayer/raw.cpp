// SPDX-License-Identifier: MIT
// Entry points of the 2 x 2 demosaic: checks and routing.
#include "arguments.h"
#include "bayer/mosaic.h"
#include "lum/lum.h"
#include "simd/isa.h"

using namespace lum;

namespace {

MosaicFrame frame(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                  uint32_t format, uint32_t pattern) {
  return {dst, src, width, height, red_phase(pattern), static_cast<Sink>(format)};
}

void convert_mosaic16(const MosaicFrame& f, uint32_t shift, uint32_t big_endian) {
  const Reduction reduction = reduce_mono16(f.sink, shift, big_endian);
  const bool words = reduction.sink == Sink::mono16_rec601;
  convert_mosaic_reduced(kernels(), f, reduction, words ? Source::mosaic16 : Source::mosaic8);
}

}  // namespace

uint32_t LumRaw8ImageTransform(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                               uint32_t formatIndex, uint32_t bayerPattern) {
  if (const uint32_t error = check_mosaic(dst, src, width, height, bayerPattern)) return error;
  if (formatIndex > LUM_FORMAT_UYVY) return kNotImplemented;
  convert_mosaic8(kernels(), frame(dst, src, width, height, formatIndex, bayerPattern));
  return kSuccess;
}

uint32_t LumRaw12ImageTransform(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                                uint32_t formatIndex, uint32_t bayerPattern) {
  if (const uint32_t error = check_mosaic(dst, src, width, height, bayerPattern)) return error;
  if (formatIndex > LUM_FORMAT_MONO16_REC709 || formatIndex == LUM_FORMAT_UYVY)
    return kNotImplemented;
  convert_mosaic_reduced(kernels(), frame(dst, src, width, height, formatIndex, bayerPattern),
                         kReduceMono12Packed, Source::mosaic8);
  return kSuccess;
}

uint32_t LumRaw16ImageTransform(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                                uint32_t formatIndex, uint32_t bayerPattern) {
  if (const uint32_t error = check_mosaic(dst, src, width, height, bayerPattern)) return error;
  if (formatIndex > LUM_FORMAT_MONO8_REC709) return kNotImplemented;
  constexpr uint32_t kShift = 0, kBigEndian = 1;
  convert_mosaic16(frame(dst, src, width, height, formatIndex, bayerPattern), kShift, kBigEndian);
  return kSuccess;
}

uint32_t LumRaw16ImageTransformEx(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                                  uint32_t formatIndex, const LumBitDepthInfo* bitDepth) {
  if (dst == nullptr) return bad_parameter(1);
  if (src == nullptr) return bad_parameter(2);
  if (bitDepth == nullptr) return bad_parameter(6);
  // The pattern of the record is not checked.
  constexpr uint32_t kAnyPattern = 0;
  if (const uint32_t error = check_mosaic(dst, src, width, height, kAnyPattern)) return error;
  uint32_t shift;
  if (!shift_of(*bitDepth, &shift)) return kNotImplemented;
  if (formatIndex > LUM_FORMAT_BGR48 || formatIndex == LUM_FORMAT_UYVY) return kNotImplemented;
  if (bitDepth->endianness > 1 || !is_supported_shift(shift)) return kNotImplemented;
  convert_mosaic16(frame(dst, src, width, height, formatIndex, bitDepth->bayerPattern), shift,
                   bitDepth->endianness);
  return kSuccess;
}
