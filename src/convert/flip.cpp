// SPDX-License-Identifier: MIT
// Mirrors, quarter turns and copies between pitches.
#include <string.h>

#include <algorithm>
#include <array>
#include <utility>

#include "arguments.h"
#include "convert/direct.h"
#include "convert/flat.h"
#include "lum/lum.h"
#include "simd/isa.h"

namespace lum {
namespace {

// Sizes of pixels that no kernel serves. dst may be src.
template <size_t size>
void reverse_pixels(uint8_t* dst, const uint8_t* src, size_t n) {
  for (size_t left = 0, right = n; left < right--; ++left) {
    uint8_t a[size], b[size];
    memcpy(a, src + left * size, size);
    memcpy(b, src + right * size, size);
    memcpy(dst + right * size, a, size);
    memcpy(dst + left * size, b, size);
  }
}

template <size_t size>
void transpose_pixels(uint8_t* dst, ptrdiff_t dst_stride, const uint8_t* src, ptrdiff_t src_stride,
                      size_t rows, size_t columns) {
  for (size_t column = 0; column < columns; ++column) {
    const uint8_t* from = src + column * size;
    uint8_t* const to = dst + static_cast<ptrdiff_t>(column) * dst_stride;
    for (size_t row = 0; row < rows; ++row, from += src_stride) {
      memcpy(to + row * size, from, size);
    }
  }
}

using Reverse = decltype(&reverse_pixels<1>);
using Transpose = decltype(&transpose_pixels<1>);
template <size_t... sizes>
constexpr std::array<Reverse, sizeof...(sizes)> reverses(std::index_sequence<sizes...>) {
  return {reverse_pixels<sizes + 1>...};
}
template <size_t... sizes>
constexpr std::array<Transpose, sizeof...(sizes)> transposes(std::index_sequence<sizes...>) {
  return {transpose_pixels<sizes + 1>...};
}
constexpr auto kReverses = reverses(std::make_index_sequence<kMaxPixelBytes>());
constexpr auto kTransposes = transposes(std::make_index_sequence<kMaxPixelBytes>());

// Blocks of an image are transposed one after the other, so that the lines of both images that a block
// needs stay in the first-level cache.
constexpr size_t kBlock = 64;

// Three-byte pixels go through blocks of four-byte ones.
class ThreeByteBlocks {
 public:
  explicit ThreeByteBlocks(const Kernels& kernels) : kernels_(kernels) {}
  void transpose(uint8_t* dst, ptrdiff_t dst_stride, const uint8_t* src, ptrdiff_t src_stride,
                 size_t rows, size_t columns) {
    constexpr ptrdiff_t kPitch = kBlock * 4;
    const RowKernel widen = kernels_.at(Source::rgb24, Sink::rgba32);
    const RowKernel narrow = kernels_.at(Source::rgba32, Sink::rgb24);
    for (size_t row = 0; row < rows; ++row) {
      widen(source_[row], src + static_cast<ptrdiff_t>(row) * src_stride, nullptr, columns, {});
    }
    kernels_.direct.transpose[2](transposed_[0], kPitch, source_[0], kPitch, rows, columns);
    for (size_t column = 0; column < columns; ++column) {
      narrow(dst + static_cast<ptrdiff_t>(column) * dst_stride, transposed_[column], nullptr, rows,
             {});
    }
  }

 private:
  const Kernels& kernels_;
  alignas(64) uint8_t source_[kBlock][kBlock * 4] = {};
  alignas(64) uint8_t transposed_[kBlock][kBlock * 4];
};

// Calls block(start, n) for pieces of 0 .. n - 1; the last one is moved back so that it is whole, too.
template <class Block>
void over_blocks(size_t n, Block block) {
  const size_t step = std::min(n, kBlock);
  for (size_t x = 0; x < n; x += step) block(std::min(x, n - step), step);
}

template <class TransposeBlock>
void transpose_image(uint8_t* dst, const uint8_t* src, size_t width, size_t height,
                     size_t pixel_bytes, uint32_t mode, TransposeBlock transpose) {
  ptrdiff_t src_stride = static_cast<ptrdiff_t>(width * pixel_bytes);
  ptrdiff_t dst_stride = static_cast<ptrdiff_t>(height * pixel_bytes);
  if (mode & kMirror) {
    src += static_cast<ptrdiff_t>(height - 1) * src_stride;
    src_stride = -src_stride;
  }
  if (mode & kUpsideDown) {
    dst += static_cast<ptrdiff_t>(width - 1) * dst_stride;
    dst_stride = -dst_stride;
  }
  over_blocks(height, [&](size_t row, size_t rows) {
    over_blocks(width, [&](size_t column, size_t columns) {
      const ptrdiff_t r = static_cast<ptrdiff_t>(row), c = static_cast<ptrdiff_t>(column);
      transpose(dst + c * dst_stride + row * pixel_bytes, dst_stride,
                src + r * src_stride + column * pixel_bytes, src_stride, rows, columns);
    });
  });
}

}  // namespace

void flip(const Kernels& kernels, uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
          uint32_t pixel_bytes, uint32_t mode) {
  const size_t row_bytes = size_t{width} * pixel_bytes;
  if (mode & kTranspose) {
    if (pixel_bytes == 3) {
      ThreeByteBlocks blocks(kernels);
      transpose_image(dst, src, width, height, pixel_bytes, mode,
                      [&](auto... args) { blocks.transpose(args...); });
    } else {
      const DirectKernels& k = kernels.direct;
      const Transpose transpose = pixel_bytes == 1   ? k.transpose[0]
                                  : pixel_bytes == 2 ? k.transpose[1]
                                  : pixel_bytes == 4 ? k.transpose[2]
                                                     : kTransposes[pixel_bytes - 1];
      transpose_image(dst, src, width, height, pixel_bytes, mode, transpose);
    }
    return;
  }
  const Reverse kernel = kernels.direct.reverse[pixel_bytes];
  const Reverse reverse = kernel != nullptr ? kernel : kReverses[pixel_bytes - 1];
  switch (mode) {
    case 0:
      copy_block(dst, src, row_bytes * height);
      break;
    case kMirror:
      for (size_t y = 0; y < height; ++y) {
        reverse(dst + y * row_bytes, src + y * row_bytes, width);
      }
      break;
    case kUpsideDown:
      if (dst == src) {
        for (size_t y = 0; y < height / 2; ++y) {
          kernels.exchange(dst + y * row_bytes, dst + (height - 1 - y) * row_bytes, row_bytes);
        }
      } else {
        for (size_t y = 0; y < height; ++y) {
          memcpy(dst + y * row_bytes, src + (height - 1 - y) * row_bytes, row_bytes);
        }
      }
      break;
    default:  // half a turn is the image as one row, reversed
      reverse(dst, src, size_t{width} * height);
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
    for (size_t i = 0; i < rows; ++i) memcpy(dst + i * dstPitch, src + i * srcPitch, rowBytes);
  } else if (dstPitch <= srcPitch) {
    for (size_t i = 0; i < rows; ++i) memmove(dst + i * dstPitch, src + i * srcPitch, rowBytes);
  } else {
    for (size_t i = rows; i-- > 0;) memmove(dst + i * dstPitch, src + i * srcPitch, rowBytes);
  }
  return kSuccess;
}
