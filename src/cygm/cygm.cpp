// SPDX-License-Identifier: MIT
#include "cygm/cygm.h"

#include <string.h>

#include "arguments.h"
#include "lum/lum.h"
#include "row_writer.h"
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

// The last pixels of the older form's rows `begin` to `end` - 1, at most kRowsAtOnce, from a
// multiple of 4 on. Kept: such a pixel is not the copy of its neighbour that the kernel makes; its
// block takes the sample that follows the row end in the buffer. Rows with the same order of green
// and magenta lend four columns each to one row, from width - 2 on, which has that pixel as their
// second; the fourth column is padding.
constexpr uint32_t kRowsAtOnce = 32;
void convert_last_column(RowKernel kernel, uint8_t* dst, const uint8_t* src, uint32_t width,
                         uint32_t height, uint32_t begin, uint32_t end) {
  constexpr size_t kColumns = 4, kBytes = 3, kMost = kRowsAtOnce / 2 * kColumns;
  for (uint32_t first = begin; first < begin + 4 && first < end; first += 2) {
    uint8_t a[kMost] = {}, b[kMost] = {}, pixels[kMost * kBytes];
    size_t n = 0;
    for (uint32_t y = first; y < end; y += 4) {
      const Lines lines = lines_of_rows(src, width, height, y);
      for (size_t row = 0; row < 2; ++row, n += kColumns) {
        memcpy(a + n, lines.cyan_yellow + (row + 1) * width - 2, 3);
        memcpy(b + n, lines.green_magenta + width - 2, 3);
      }
    }
    kernel(pixels, a, b, n, lines_of_rows(src, width, height, first).args);
    const uint8_t* pixel = pixels + kBytes;
    for (uint32_t y = first; y < end; y += 4) {
      for (size_t row = 0; row < 2; ++row, pixel += kColumns * kBytes) {
        memcpy(dst + ((y + row + 1) * width - 1) * kBytes, pixel, kBytes);
      }
    }
  }
}

}  // namespace

void convert_cygm(const Kernels& kernels, Sink sink, uint8_t* dst, const uint8_t* src,
                  uint32_t width, uint32_t height) {
  const size_t row_bytes = width * pixel_bytes(sink), pixels = size_t{width} * height;
  RowWriter write(kernels, Source::cygm, sink, pixels, pixels);
  for (uint32_t y = 0; y + 1 < height; y += 2) {
    Lines lines = lines_of_rows(src, width, height, y);
    const uint32_t rows = y + 2 < height ? 2 : 1;
    lines.args.rows = write.streams() ? 1 : rows;  // those that are streamed, one by one
    for (uint32_t row = 0; row < rows; row += lines.args.rows) {
      write(dst, lines.cyan_yellow, lines.green_magenta, width, lines.args);
      lines.cyan_yellow += width;
      dst += lines.args.rows * row_bytes;
    }
  }
  write.finish();
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
    const uint32_t done = y + 2;
    if (done % kRowsAtOnce == 0 || done == computed) {
      const uint32_t begin = (done - 1) / kRowsAtOnce * kRowsAtOnce;
      convert_last_column(kernel, dst, src, width, height, begin, done);
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
