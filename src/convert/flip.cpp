// SPDX-License-Identifier: MIT
// Mirrors and copies between pitches.
#include <string.h>

#include "arguments.h"
#include "convert/direct.h"
#include "convert/flat.h"
#include "convert/rows.h"
#include "lum/lum.h"
#include "row_writer.h"
#include "simd/isa.h"

namespace lum {
namespace {

// Each of `rows` rows of n pixels in reverse order.
void reverse_rows(const Kernels& kernels, uint8_t* dst, const uint8_t* src, size_t n, size_t rows,
                  uint32_t pixel_bytes) {
  const auto reverse = kernels.direct.reverse[pixel_bytes];
  const auto streamed = kernels.direct.streamed_reverse[pixel_bytes];
  const size_t row_bytes = n * pixel_bytes;
  if (dst == src || !is_streamed(kernels, 2 * row_bytes * rows)) {
    reverse(dst, src, n, rows);
    return;
  }
  StagedLines staged(kernels);
  for (size_t y = 0; y < rows; ++y) {
    const uint8_t* const end = src + (y + 1) * row_bytes;
    stream_pixels(
        staged, dst + y * row_bytes, n, {pixel_bytes, 1},
        [&](uint8_t* to, size_t x, size_t count) {
          reverse(to, end - (x + count) * pixel_bytes, count, 1);
        },
        [&](uint8_t* to, size_t x, size_t count) {
          return streamed != nullptr ? streamed(to, end - x * pixel_bytes, count) : 0;
        });
  }
  staged.finish();
}

}  // namespace

void flip(const Kernels& kernels, uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
          uint32_t pixel_bytes, uint32_t mode) {
  const size_t row_bytes = size_t{width} * pixel_bytes;
  if (mode & kTranspose) {
    transpose(kernels, dst, src, width, height, pixel_bytes, mode);
    return;
  }
  switch (mode) {
    case 0:
      copy_block(dst, src, row_bytes * height);
      break;
    case kMirror:
      reverse_rows(kernels, dst, src, width, height, pixel_bytes);
      break;
    case kUpsideDown:
      if (dst == src) {
        flip_vertical(kernels, dst, row_bytes, height);
      } else {
        const RowCopier copy(kernels, row_bytes * height);
        for (size_t y = 0; y < height; ++y) {
          copy(dst + y * row_bytes, src + (height - 1 - y) * row_bytes, row_bytes);
        }
      }
      break;
    default:  // half a turn is the image as one row, reversed
      reverse_rows(kernels, dst, src, size_t{width} * height, 1, pixel_bytes);
  }
}

}  // namespace lum

using namespace lum;

uint32_t LumFlip(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                 uint32_t bytesPerPixel, uint32_t mode) {
  if (dst == nullptr) return bad_parameter(1);
  if (src == nullptr) return bad_parameter(2);
  if (width == 0) return bad_parameter(3);
  if (height == 0) return bad_parameter(4);
  if (bytesPerPixel == 0 || bytesPerPixel > kMaxPixelBytes) return bad_parameter(5);
  if (mode > (kMirror | kUpsideDown | kTranspose)) return kNotImplemented;
  if (dst == src && (mode & kTranspose) != 0) return bad_parameter(2);
  flip(kernels(), dst, src, width, height, bytesPerPixel, mode);
  return kSuccess;
}

uint32_t LumCopyRows(uint8_t* dst, const uint8_t* src, uint32_t rowBytes, uint32_t rows,
                     uint32_t dstPitch, uint32_t srcPitch) {
  if (dst == nullptr) return bad_parameter(1);
  if (src == nullptr) return bad_parameter(2);
  if (rowBytes == 0) return bad_parameter(3);
  if (rows == 0) return bad_parameter(4);
  if (dstPitch < rowBytes) return bad_parameter(5);
  if (srcPitch < rowBytes) return bad_parameter(6);
  if (dst != src) {
    const RowCopier copy(kernels(), size_t{rowBytes} * rows);
    for (size_t i = 0; i < rows; ++i) copy(dst + i * dstPitch, src + i * srcPitch, rowBytes);
  } else if (dstPitch <= srcPitch) {
    for (size_t i = 0; i < rows; ++i) memmove(dst + i * dstPitch, src + i * srcPitch, rowBytes);
  } else {
    for (size_t i = rows; i-- > 0;) memmove(dst + i * dstPitch, src + i * srcPitch, rowBytes);
  }
  return kSuccess;
}
