// SPDX-License-Identifier: MIT
#include "cygm/cygm.h"

#include <string.h>

#include "arguments.h"
#include "lum/lum.h"
#include "simd/isa.h"

namespace lum {
namespace {

// The frame lines of the output rows y, y even, and y + 1, as the kernels take them: lines y and
// y + 2 hold cyan and yellow and follow each other in the second field, line y + 1 of the first
// field is between them.
struct Lines {
  const uint8_t* cyan_yellow;
  const uint8_t* green_magenta;
  RowArgs args;
};

Lines lines_of_rows(const uint8_t* src, uint32_t width, uint32_t height, uint32_t y) {
  const uint8_t* const second_field = src + size_t{height / 2} * width;
  Lines lines;
  lines.cyan_yellow = second_field + size_t{y / 2} * width;
  lines.green_magenta = src + size_t{y / 2} * width;
  lines.args.column = y % 4 == 2 ? 1 : 0;
  return lines;
}

}  // namespace

void convert_cygm(const Kernels& kernels, Sink sink, uint8_t* dst, const uint8_t* src,
                  uint32_t width, uint32_t height) {
  const RowKernel kernel = kernels.at(Source::cygm, sink);
  const size_t row_bytes = width * pixel_bytes(sink);
  for (uint32_t y = 0; y + 1 < height; y += 2) {
    Lines lines = lines_of_rows(src, width, height, y);
    lines.args.rows = y + 2 < height ? 2 : 1;
    kernel(dst, lines.cyan_yellow, lines.green_magenta, width, lines.args);
    dst += lines.args.rows * row_bytes;
  }
  memcpy(dst, dst - row_bytes, row_bytes);
}

void convert_cygm_to_bgr(const Kernels& kernels, uint8_t* dst, const uint8_t* src, uint32_t width,
                         uint32_t height) {
  constexpr size_t kBytes = 3;
  const RowKernel kernel = kernels.at(Source::cygm, Sink::bgr24);
  const size_t row_bytes = size_t{width} * kBytes;
  const uint32_t computed = height - 4;
  for (uint32_t y = 0; y < computed; y += 2) {
    uint8_t* const row = dst + y * row_bytes;
    Lines lines = lines_of_rows(src, width, height, y);
    lines.args.rows = 2;
    kernel(row, lines.cyan_yellow, lines.green_magenta, width, lines.args);
    // Kept: the last pixel is not the copy of its neighbour that the kernel makes; its block takes
    // the sample that follows the row end in the buffer. A row of the four columns from width - 2
    // on has that pixel as its second; the fourth column is padding.
    RowArgs alone = lines.args;
    alone.rows = 1;
    const uint8_t* from = lines.cyan_yellow + width - 2;
    uint8_t* last = row + row_bytes - kBytes;
    for (int i = 0; i < 2; ++i, from += width, last += row_bytes) {
      uint8_t a[4] = {}, b[4] = {}, pixels[4 * kBytes];
      memcpy(a, from, 3);
      memcpy(b, lines.green_magenta + width - 2, 3);
      kernel(pixels, a, b, 4, alone);
      memcpy(last, pixels + kBytes, kBytes);
    }
  }
  // Kept: the last rows repeat what was computed, the very last is not written, and a width of 2
  // has no such repetition.
  if (width <= 3) return;
  uint8_t* const bottom = dst + computed * row_bytes;
  memcpy(bottom, bottom - row_bytes, row_bytes);
  memcpy(bottom + row_bytes, bottom - row_bytes, 2 * row_bytes);
}

}  // namespace lum

using namespace lum;

uint32_t LumIRaw8CYGMImageTransform(uint8_t* dst, const uint8_t* src, uint32_t width,
                                    uint32_t height, uint32_t formatIndex, uint32_t reserved) {
  (void)reserved;
  if (dst == nullptr) return bad_parameter(1);
  if (src == nullptr) return bad_parameter(2);
  if (width == 0) return bad_parameter(3);
  if (height == 0) return bad_parameter(4);
  if (width % 2 != 0) return bad_parameter(3);
  if (height % 4 != 0) return bad_parameter(4);
  if (formatIndex > LUM_FORMAT_UYVY) return kNotImplemented;
  convert_cygm(kernels(), static_cast<Sink>(formatIndex), dst, src, width, height);
  return kSuccess;
}

uint32_t LumIRaw8CYGMToBGR(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height) {
  if (dst == nullptr) return bad_parameter(1);
  if (src == nullptr) return bad_parameter(2);
  if (width % 2 != 0) return bad_parameter(3);
  // A height of 4 has no row of which the bottom ones could be copies.
  if (height % 4 != 0 || height == 4) return bad_parameter(4);
  if (width == 0 || height == 0) return kSuccess;
  convert_cygm_to_bgr(kernels(), dst, src, width, height);
  return kSuccess;
}
