// SPDX-License-Identifier: MIT
// Entry points of the YUV sources: checks and routing.
#include "arguments.h"
#include "convert/flat.h"
#include "lum/lum.h"
#include "simd/isa.h"

using namespace lum;

namespace {

uint32_t convert_yuv(Source source, uint8_t* dst, const uint8_t* src, uint32_t count,
                     uint32_t format) {
  const uint32_t group = kSources[static_cast<size_t>(source)].group_pixels;
  if (dst == nullptr) return bad_parameter(1);
  if (src == nullptr) return bad_parameter(2);
  if (count == 0 || count % group != 0) return bad_parameter(3);
  if (format > LUM_FORMAT_UYVY) return kNotImplemented;
  if (format == LUM_FORMAT_UYVY && count % 2 != 0) return bad_parameter(3);
  convert_flat(kernels(), source, static_cast<Sink>(format), dst, src, count);
  return kSuccess;
}

}  // namespace

uint32_t LumYUV411ImageTransform(uint8_t* dst, const uint8_t* src, uint32_t count,
                                 uint32_t formatIndex) {
  return convert_yuv(Source::yuv411, dst, src, count, formatIndex);
}

uint32_t LumYUV422ImageTransform(uint8_t* dst, const uint8_t* src, uint32_t count,
                                 uint32_t formatIndex) {
  return convert_yuv(Source::yuv422, dst, src, count, formatIndex);
}

uint32_t LumYUV444ImageTransform(uint8_t* dst, const uint8_t* src, uint32_t count,
                                 uint32_t formatIndex) {
  return convert_yuv(Source::yuv444, dst, src, count, formatIndex);
}
