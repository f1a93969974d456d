// SPDX-License-Identifier: MIT
// Entry points of the RGB family: checks and routing.
#include "arguments.h"
#include "convert/flat.h"
#include "lum/lum.h"
#include "simd/isa.h"

using namespace lum;

namespace {

uint32_t convert_colour(Source source, uint8_t* dst, const uint8_t* src, uint32_t count,
                        uint32_t format) {
  if (dst == nullptr) return bad_parameter(1);
  if (src == nullptr) return bad_parameter(2);
  if (format > LUM_FORMAT_MONO8_REC709) return kNotImplemented;
  convert_flat(kernels(), source, static_cast<Sink>(format), dst, src, count);
  return kSuccess;
}

}  // namespace

uint32_t LumRGB8ImageTransform(uint8_t* dst, const uint8_t* src, uint32_t count,
                               uint32_t formatIndex) {
  return convert_colour(Source::rgb24, dst, src, count, formatIndex);
}

uint32_t LumBGR8ImageTransform(uint8_t* dst, const uint8_t* src, uint32_t count,
                               uint32_t formatIndex) {
  return convert_colour(Source::bgr24, dst, src, count, formatIndex);
}

uint32_t LumRGBA8ImageTransform(uint8_t* dst, const uint8_t* src, uint32_t count,
                                uint32_t formatIndex) {
  return convert_colour(Source::rgba32, dst, src, count, formatIndex);
}

uint32_t LumBGRA8ImageTransform(uint8_t* dst, const uint8_t* src, uint32_t count,
                                uint32_t formatIndex) {
  return convert_colour(Source::bgra32, dst, src, count, formatIndex);
}
