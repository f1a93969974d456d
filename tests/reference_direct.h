// SPDX-License-Identifier: MIT
// What the functions of planes, depth and geometry have to write, as plain as reference.h.
#ifndef LUM_TESTS_REFERENCE_DIRECT_H
#define LUM_TESTS_REFERENCE_DIRECT_H

#include <stddef.h>
#include <stdint.h>

#include "convert/direct.h"
#include "lum/lum.h"
#include "reference.h"

namespace lum::reference {

// Samples of one or two bytes, words in little-endian order.
inline int sample(const uint8_t* src, size_t i, size_t bytes) {
  return bytes == 1 ? src[i] : src[2 * i] | src[2 * i + 1] << 8;
}
inline void put_sample(uint8_t* dst, size_t i, size_t bytes, int v) {
  dst[bytes * i] = static_cast<uint8_t>(v);
  if (bytes == 2) dst[2 * i + 1] = static_cast<uint8_t>(v >> 8);
}

// Pixels of a LumPixelLayout: how many share a group, and the bytes of n of them.
size_t layout_group(uint32_t layout);
size_t layout_bytes(uint32_t layout, size_t n);
void yuv_to_bgr(uint8_t* dst, const uint8_t* src, size_t n, uint32_t layout, uint32_t encoding);
void i420(uint8_t* dst, const uint8_t* src, size_t w, size_t h, uint32_t layout);

// n pixels apart and together. Planes lie one after the other, those that are not `present`, bit i
// for plane i, too.
struct Planes {
  size_t n, channels, bytes;
  uint32_t present;
  size_t plane_bytes() const { return n * bytes; }
};
void split(uint8_t* dst, const uint8_t* src, const Planes& planes);
void join(uint8_t* dst, const uint8_t* src, const Planes& planes);

// By packing, as lum.h numbers them.
struct PackedGroup {
  uint32_t pixels;
  size_t bytes;
  uint32_t bits;
};
constexpr PackedGroup kPackedGroups[] = {{2, 3, 12}, {2, 3, 10}, {2, 3, 12},
                                         {4, 5, 10}, {2, 3, 12}, {4, 5, 10}};
void unpack(uint8_t* dst, const uint8_t* src, size_t n, uint32_t packing,
            const LumBitDepthInfo& info);
void words_to_8(uint8_t* dst, const uint8_t* src, size_t n, const LumBitDepthInfo& info);

void flip_image(uint8_t* dst, const uint8_t* src, size_t width, size_t height, size_t bytes,
                uint32_t mode);
void copy_rows(uint8_t* dst, const uint8_t* src, size_t row_bytes, size_t rows, size_t dst_pitch,
               size_t src_pitch);
void bin(uint8_t* dst, const uint8_t* src, size_t width, size_t height, size_t channels,
         size_t bytes, size_t fx, size_t fy);
void resample_row(uint8_t* dst, const uint8_t* src, size_t n, size_t count, PixelShape pixel,
                  int64_t position, int64_t step, uint32_t mode);
void resize(uint8_t* dst, const uint8_t* src, Size to, Size from, PixelShape pixel, uint32_t mode);

}  // namespace lum::reference

#endif
