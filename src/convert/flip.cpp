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

// Sizes of pixels that no kernel serves.
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

using Transpose = decltype(&transpose_pixels<1>);
template <size_t... sizes>
constexpr std::array<Transpose, sizeof...(sizes)> transposes(std::index_sequence<sizes...>) {
  return {transpose_pixels<sizes + 1>...};
}
constexpr auto kTransposes = transposes(std::make_index_sequence<kMaxPixelBytes>());

// Images are transposed block by block. A block's rows are copied to the stack first: at the
// distance of image rows they would push one another out of the cache before they are used up.
// Three channels are split into planes on the way and joined behind it.
constexpr size_t kBlockColumns = 64;
constexpr size_t kBlockBytes = kBlockColumns * 256;
constexpr size_t kMostBlockBytes = kBlockColumns * 64 * kMaxPixelBytes;
// Many rows make long runs in the destination, each of which is on another page.
constexpr size_t block_rows(size_t element_bytes) {
  return std::max<size_t>(kBlockBytes / kBlockColumns / element_bytes, 64);
}

class Blocks {
 public:
  Blocks(const Kernels& kernels, size_t pixel_bytes)
      : kernels_(kernels.direct),
        size_(pixel_bytes),
        planes_(pixel_bytes == 3 ? 3 : 1),
        element_(pixel_bytes / planes_),
        transpose_(kernel_of(kernels.direct, element_)) {}

  size_t rows() const { return block_rows(element_); }

  void transpose(uint8_t* dst, ptrdiff_t dst_stride, const uint8_t* src, ptrdiff_t src_stride,
                 size_t rows, size_t columns) {
    const size_t pitch = kBlockColumns * element_;
    for (size_t row = 0; row < rows; ++row) {
      const uint8_t* const from = src + static_cast<ptrdiff_t>(row) * src_stride;
      prefetch_right(from, columns * size_);
      if (planes_ == 1) {
        memcpy(source_ + row * pitch, from, columns * size_);
      } else {
        uint8_t* to[3];
        for (size_t i = 0; i < 3; ++i) to[i] = source_ + i * kBlockBytes + row * pitch;
        kernels_.split[element_ - 1][1](to, from, columns);
      }
    }
    prefetch_below(dst, dst_stride, rows * size_, columns);
    if (planes_ == 1) {
      transpose_(dst, dst_stride, source_, static_cast<ptrdiff_t>(pitch), rows, columns);
    } else {
      join(dst, dst_stride, rows, columns);
    }
  }

 private:
  static Transpose kernel_of(const DirectKernels& k, size_t element_bytes) {
    return element_bytes == 1   ? k.transpose[0]
           : element_bytes == 2 ? k.transpose[1]
           : element_bytes == 4 ? k.transpose[2]
                                : kTransposes[element_bytes - 1];
  }

  void join(uint8_t* dst, ptrdiff_t dst_stride, size_t rows, size_t columns) {
    const size_t src_pitch = kBlockColumns * element_, pitch = block_rows(element_) * element_;
    for (size_t i = 0; i < 3; ++i) {
      transpose_(transposed_ + i * kBlockBytes, static_cast<ptrdiff_t>(pitch),
                 source_ + i * kBlockBytes, static_cast<ptrdiff_t>(src_pitch), rows, columns);
    }
    for (size_t column = 0; column < columns; ++column) {
      const uint8_t* from[3];
      for (size_t i = 0; i < 3; ++i) from[i] = transposed_ + i * kBlockBytes + column * pitch;
      kernels_.join[element_ - 1][1](dst + static_cast<ptrdiff_t>(column) * dst_stride, from, rows);
    }
  }

  // The next block is the one to the right in the source, below in the destination.
  static constexpr size_t kLine = 64;
  static void prefetch_right(const uint8_t* row, size_t bytes) {
    for (size_t line = 0; line < bytes; line += kLine) __builtin_prefetch(row + bytes + line);
  }
  static void prefetch_below(uint8_t* dst, ptrdiff_t stride, size_t bytes, size_t columns) {
    for (size_t i = columns; i < 2 * columns; ++i) {
      uint8_t* const row = dst + static_cast<ptrdiff_t>(i) * stride;
      for (size_t line = 0; line < bytes; line += kLine) __builtin_prefetch(row + line, 1);
    }
  }

  const DirectKernels& kernels_;
  const size_t size_, planes_, element_;
  const Transpose transpose_;
  alignas(64) uint8_t source_[std::max(kMostBlockBytes, 3 * kBlockBytes)];
  alignas(64) uint8_t transposed_[3 * kBlockBytes];
};

// Calls block(start, n) for pieces of 0 .. n - 1; the last one is moved back so that it is whole,
// too.
template <class Block>
void over_blocks(size_t n, size_t most, Block block) {
  const size_t step = std::min(n, most);
  for (size_t x = 0; x < n; x += step) block(std::min(x, n - step), step);
}

void transpose_image(const Kernels& kernels, uint8_t* dst, const uint8_t* src, size_t width,
                     size_t height, size_t pixel_bytes, uint32_t mode) {
  Blocks blocks(kernels, pixel_bytes);
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
  over_blocks(height, blocks.rows(), [&](size_t row, size_t rows) {
    over_blocks(width, kBlockColumns, [&](size_t column, size_t columns) {
      const ptrdiff_t r = static_cast<ptrdiff_t>(row), c = static_cast<ptrdiff_t>(column);
      blocks.transpose(dst + c * dst_stride + row * pixel_bytes, dst_stride,
                       src + r * src_stride + column * pixel_bytes, src_stride, rows, columns);
    });
  });
}

}  // namespace

void flip(const Kernels& kernels, uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
          uint32_t pixel_bytes, uint32_t mode) {
  const size_t row_bytes = size_t{width} * pixel_bytes;
  if (mode & kTranspose) {
    transpose_image(kernels, dst, src, width, height, pixel_bytes, mode);
    return;
  }
  const auto reverse = kernels.direct.reverse[pixel_bytes];
  switch (mode) {
    case 0:
      copy_block(dst, src, row_bytes * height);
      break;
    case kMirror:
      reverse(dst, src, width, height);
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
      reverse(dst, src, size_t{width} * height, 1);
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
