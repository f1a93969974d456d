// SPDX-License-Identifier: MIT
// Packed samples to words and words to bytes.
#include "arguments.h"
#include "convert/direct.h"
#include "lum/lum.h"
#include "row_writer.h"
#include "simd/isa.h"

namespace lum {

void unpack_to_16(const Kernels& kernels, uint8_t* dst, const uint8_t* src, uint32_t count,
                  uint32_t packing, uint32_t shift, uint32_t big_endian) {
  RowArgs args;
  args.shift = shift;
  args.big_endian = big_endian;
  const Packing layout = kPackings[packing];
  const size_t group_bytes = (layout.group_pixels * layout.bits + 7) / 8;
  const auto src_bytes = [&](size_t x) { return x / layout.group_pixels * group_bytes; };
  const auto at = [&](size_t x) { return src + src_bytes(x); };
  const DirectKernels& direct = kernels.direct;
  write_pixels(
      kernels, dst, count, src_bytes(count), {2, layout.group_pixels},
      [&](uint8_t* to, size_t x, size_t n) { direct.unpack[packing](to, at(x), nullptr, n, args); },
      [&](uint8_t* to, size_t x, size_t n) {
        return direct.streamed_unpack[packing](to, at(x), nullptr, n, args);
      });
}

void samples_16_to_8(const Kernels& kernels, uint8_t* dst, const uint8_t* src, uint32_t count,
                     uint32_t shift, uint32_t big_endian) {
  RowArgs args;
  args.shift = shift;
  args.big_endian = big_endian;
  const DirectKernels& direct = kernels.direct;
  if (dst == src) {
    direct.words_to_bytes(dst, src, nullptr, count, args);
    return;
  }
  const auto at = [&](size_t x) { return src + 2 * x; };
  write_pixels(
      kernels, dst, count, size_t{count} * 2, {1, 1},
      [&](uint8_t* to, size_t x, size_t n) { direct.words_to_bytes(to, at(x), nullptr, n, args); },
      [&](uint8_t* to, size_t x, size_t n) {
        return direct.streamed_words_to_bytes(to, at(x), nullptr, n, args);
      });
}

}  // namespace lum

using namespace lum;

uint32_t LumUnpackTo16(uint8_t* dst, const uint8_t* src, uint32_t pixelCount, uint32_t packing,
                       const LumBitDepthInfo* bitDepth) {
  if (dst == nullptr) return bad_parameter(1);
  if (src == nullptr) return bad_parameter(2);
  if (pixelCount == 0) return bad_parameter(3);
  if (packing >= kPackingCount) return kNotImplemented;
  if (pixelCount % kPackings[packing].group_pixels != 0) return bad_parameter(3);
  if (bitDepth == nullptr) return bad_parameter(5);
  if (bitDepth->alignment > 1 || bitDepth->endianness > 1) return kNotImplemented;
  const uint32_t shift = bitDepth->alignment == 0 ? 16 - kPackings[packing].bits : 0;
  unpack_to_16(kernels(), dst, src, pixelCount, packing, shift, bitDepth->endianness);
  return kSuccess;
}

uint32_t LumSamples16To8(uint8_t* dst, const uint8_t* src, uint32_t sampleCount,
                         const LumBitDepthInfo* bitDepth) {
  if (dst == nullptr) return bad_parameter(1);
  if (src == nullptr) return bad_parameter(2);
  if (sampleCount == 0) return bad_parameter(3);
  if (bitDepth == nullptr) return bad_parameter(4);
  const bool at_bottom = bitDepth->alignment == 1;
  if (bitDepth->alignment > 1) return kNotImplemented;
  if (at_bottom && (bitDepth->bitsUsed < 8 || bitDepth->bitsUsed > 16)) return kNotImplemented;
  if (bitDepth->endianness > 1) return kNotImplemented;
  const uint32_t shift = at_bottom ? bitDepth->bitsUsed - 8 : 8;
  samples_16_to_8(kernels(), dst, src, sampleCount, shift, bitDepth->endianness);
  return kSuccess;
}
