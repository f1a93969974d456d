// SPDX-License-Identifier: MIT
#include "convert/rows.h"

#include <stdlib.h>
#include <string.h>

#include <memory>

#include "arguments.h"
#include "lum/lum.h"
#include "row_writer.h"
#include "simd/isa.h"

namespace lum {

void flip_vertical(const Kernels& kernels, uint8_t* image, size_t row_bytes, uint32_t rows) {
  uint8_t* top = image;
  uint8_t* bottom = image + size_t{rows - 1} * row_bytes;
  const ptrdiff_t ahead = size_t{rows} * row_bytes <= kPrefetchAbove ? 0 : kPrefetchDistance;
  for (uint32_t i = 0; i < rows / 2; ++i, top += row_bytes, bottom -= row_bytes) {
    kernels.exchange(top, bottom, row_bytes, ahead);
  }
}

void interlaced_to_progressive(const Kernels& kernels, uint8_t* dst, const uint8_t* src,
                               uint32_t row_bytes, uint32_t height) {
  // Kept: of an odd row length the half is rounded down, so the second field is taken to start
  // height / 2 bytes before the middle of the buffer. 32 bits, as callers' frames are.
  const uint32_t second = height * (row_bytes >> 1);
  const RowCopier copy(kernels, size_t{row_bytes} * height);
  for (size_t i = 0; i < height / 2; ++i) {
    copy(dst + 2 * i * row_bytes, src + second + i * row_bytes, row_bytes);
    copy(dst + (2 * i + 1) * row_bytes, src + i * row_bytes, row_bytes);
  }
}

}  // namespace lum

using namespace lum;

uint32_t LumFlipVertical(uint8_t* image, uint32_t rowBytes, uint32_t rows) {
  if (image == nullptr) return bad_parameter(1);
  if (rowBytes == 0) return bad_parameter(2);
  if (rows < 2) return bad_parameter(3);
  flip_vertical(kernels(), image, rowBytes, rows);
  return kSuccess;
}

uint32_t LumInterlacedToProgressive(uint8_t* destination, uint8_t* source, uint32_t rowBytes,
                                    uint32_t height) {
  if (destination == nullptr) return bad_parameter(1);
  if (source == nullptr) return bad_parameter(2);
  if (height % 2 != 0) return bad_parameter(4);
  if (destination != source) {
    interlaced_to_progressive(kernels(), destination, source, rowBytes, height);
    return kSuccess;
  }
  // In place the lines are written from the top, and the second field lies below them until it is
  // read; only the first field needs a copy.
  const size_t field_bytes = (size_t{height} * rowBytes) >> 1;
  if (field_bytes == 0) return kSuccess;
  struct Free {
    void operator()(uint8_t* p) const { free(p); }
  };
  const std::unique_ptr<uint8_t, Free> first(static_cast<uint8_t*>(malloc(field_bytes)));
  if (first == nullptr) return kOutOfMemory;
  memcpy(first.get(), source, field_bytes);
  const uint8_t* const second = source + field_bytes;
  for (size_t i = 0; i < height / 2; ++i) {
    memmove(destination + 2 * i * rowBytes, second + i * rowBytes, rowBytes);
    memcpy(destination + (2 * i + 1) * rowBytes, first.get() + i * rowBytes, rowBytes);
  }
  return kSuccess;
}
