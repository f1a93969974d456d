// SPDX-License-Identifier: MIT
// Planes, depth and geometry: the image loops behind the entry points, whose arguments they take
// unchecked and with the kernels of any level.
#ifndef LUM_CONVERT_DIRECT_H
#define LUM_CONVERT_DIRECT_H

#include <stdint.h>

#include "simd/kernel_table.h"

namespace lum {

enum class YuvEncoding : uint32_t { full601, studio601, studio709 };
constexpr uint32_t kYuvEncodingCount = 3;
void yuv_to_bgr(const Kernels& kernels, Source source, YuvEncoding encoding, uint8_t* dst,
                const uint8_t* src, uint32_t count);

// What a layout needs to go to 4:2:0: the source and its kernel.
bool i420_source(uint32_t layout, Source* source);
void image_to_i420(const Kernels& kernels, uint32_t layout, uint8_t* dst, const uint8_t* src,
                   uint32_t width, uint32_t height);
void packed_to_planar(const Kernels& kernels, uint8_t* const* planes, const uint8_t* src,
                      uint32_t count, uint32_t channels, uint32_t sample_bytes);
void planar_to_packed(const Kernels& kernels, uint8_t* dst, const uint8_t* const* planes,
                      uint32_t count, uint32_t channels, uint32_t sample_bytes);

struct Packing {
  uint32_t bits, group_pixels;
};
constexpr uint32_t kPackingCount = 6;
constexpr Packing kPackings[kPackingCount] = {{12, 2}, {10, 2}, {12, 2}, {10, 4}, {12, 2}, {10, 4}};
void unpack_to_16(const Kernels& kernels, uint8_t* dst, const uint8_t* src, uint32_t count,
                  uint32_t packing, uint32_t shift, uint32_t big_endian);
void samples_16_to_8(const Kernels& kernels, uint8_t* dst, const uint8_t* src, uint32_t count,
                     uint32_t shift, uint32_t big_endian);

// The sum that a flip's mode is.
constexpr uint32_t kMirror = 1, kUpsideDown = 2, kTranspose = 4;
void flip(const Kernels& kernels, uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
          uint32_t pixel_bytes, uint32_t mode);
// The modes with kTranspose.
void transpose(const Kernels& kernels, uint8_t* dst, const uint8_t* src, size_t width,
               size_t height, size_t pixel_bytes, uint32_t mode);

constexpr uint32_t kMaxBinFactor = 16;
void bin(const Kernels& kernels, uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
         uint32_t channels, uint32_t sample_bytes, uint32_t factor_x, uint32_t factor_y);

enum class Resampling : uint32_t { nearest, linear };
constexpr uint32_t kResamplingCount = 2;
// Pixels of `channels` samples of `sample_bytes` each.
struct PixelShape {
  uint32_t channels, sample_bytes;
  constexpr size_t bytes() const { return size_t{channels} * sample_bytes; }
};
void resample_row(const Kernels& kernels, uint8_t* dst, const uint8_t* src, uint32_t dst_count,
                  uint32_t src_count, PixelShape pixel, int32_t position, uint32_t step,
                  Resampling mode);
struct FrameSize {
  uint32_t width, height;
};
void resize(const Kernels& kernels, uint8_t* dst, const uint8_t* src, FrameSize dst_size,
            FrameSize src_size, PixelShape pixel, Resampling mode);

}  // namespace lum

#endif
