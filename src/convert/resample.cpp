// SPDX-License-Identifier: MIT
// Resampling: a plan says for each pixel of a column tile which two source pixels it lies between and
// how far; the pixels are gathered by it, and the kernels mix them. Rows of a frame are resampled one
// by one and mixed in pairs.
#include <string.h>

#include <algorithm>

#include "arguments.h"
#include "convert/direct.h"
#include "lum/lum.h"
#include "simd/isa.h"

namespace lum {
namespace {

constexpr uint32_t kTile = 512;  // pixels
constexpr size_t kTileBytes = kTile * kMaxChannels * 2 + kBlockSamples * 2;

constexpr uint64_t kOne = 1u << 16, kHalf = kOne / 2;  // positions are 16.16

// position + index * step, limited to 0 .. (count - 1) << 16; the sum fits 64 bits without a sign.
uint64_t position_of(int64_t position, uint32_t step, uint64_t index, uint32_t count) {
  const uint64_t way = index * step;
  const uint64_t back = position < 0 ? static_cast<uint64_t>(-position) : 0;
  if (way < back) return 0;
  const uint64_t p = position < 0 ? way - back : way + static_cast<uint64_t>(position);
  return std::min<uint64_t>(p, uint64_t{count - 1} << 16);
}
uint64_t nearest(uint64_t p) { return (p + kHalf) >> 16; }
uint16_t fraction(uint64_t p) { return static_cast<uint16_t>((p >> 1) & 0x7FFF); }
// The next sample, or the same at the end.
uint64_t next(uint64_t index, uint32_t count) { return index + (index + 1 < count ? 1 : 0); }

struct Plan {
  uint32_t n;                // pixels
  size_t at[kTile];          // where a pixel lies in the source row, in bytes
  size_t next[kTile];        // linear: the pixel that it is mixed with
  uint16_t f[kTile * kMaxChannels + kBlockSamples];  // by how much, for every sample
};

void make_plan(Plan& plan, uint64_t first, uint32_t n, uint32_t src_count, PixelShape pixel,
               int64_t position, uint32_t step, Resampling mode) {
  plan.n = n;
  uint16_t* f = plan.f;
  for (uint32_t x = 0; x < n; ++x) {
    const uint64_t p = position_of(position, step, first + x, src_count);
    if (mode == Resampling::nearest) {
      plan.at[x] = nearest(p) * pixel.bytes();
      continue;
    }
    plan.at[x] = (p >> 16) * pixel.bytes();
    plan.next[x] = next(p >> 16, src_count) * pixel.bytes();
    for (uint32_t c = 0; c < pixel.channels; ++c) *f++ = fraction(p);
  }
}

template <size_t bytes>
void gather(uint8_t* dst, const uint8_t* src, const size_t* at, size_t n) {
  for (size_t x = 0; x < n; ++x) memcpy(dst + x * bytes, src + at[x], bytes);
}
void gather(uint8_t* dst, const uint8_t* src, const size_t* at, size_t n, size_t bytes) {
  switch (bytes) {
    case 1: return gather<1>(dst, src, at, n);
    case 2: return gather<2>(dst, src, at, n);
    case 3: return gather<3>(dst, src, at, n);
    case 4: return gather<4>(dst, src, at, n);
    case 6: return gather<6>(dst, src, at, n);
    default: return gather<8>(dst, src, at, n);
  }
}

void resample_tile(const DirectKernels& k, uint8_t* dst, const uint8_t* src, const Plan& plan,
                   PixelShape pixel, Resampling mode) {
  if (mode == Resampling::nearest) {
    gather(dst, src, plan.at, plan.n, pixel.bytes());
    return;
  }
  alignas(64) uint8_t a[kTileBytes], b[kTileBytes];
  gather(a, src, plan.at, plan.n, pixel.bytes());
  gather(b, src, plan.next, plan.n, pixel.bytes());
  const auto mix = pixel.sample_bytes == 1 ? k.mix8 : k.mix16;
  mix(dst, a, b, plan.f, size_t{plan.n} * pixel.channels);
}

// The rows of a tile as they are resampled; neighbouring rows of the result share them.
class TileRows {
 public:
  TileRows(const DirectKernels& kernels, const uint8_t* src, size_t src_row, const Plan& plan,
           PixelShape pixel)
      : kernels_(kernels), src_(src), src_row_(src_row), plan_(plan), pixel_(pixel) {}
  // Stays valid until another two rows have been asked for.
  const uint8_t* row(uint64_t y) {
    uint8_t* const row = rows_[y % 2];
    if (held_[y % 2] != y) {
      resample_tile(kernels_, row, src_ + y * src_row_, plan_, pixel_, Resampling::linear);
      held_[y % 2] = y;
    }
    return row;
  }

 private:
  const DirectKernels& kernels_;
  const uint8_t* src_;
  size_t src_row_;
  const Plan& plan_;
  PixelShape pixel_;
  uint64_t held_[2] = {UINT64_MAX, UINT64_MAX};
  alignas(64) uint8_t rows_[2][kTileBytes];
};

int64_t first_position(uint32_t step) {
  return static_cast<int64_t>(step >> 1) - static_cast<int64_t>(kHalf);
}

}  // namespace

void resample_row(const Kernels& kernels, uint8_t* dst, const uint8_t* src, uint32_t dst_count,
                  uint32_t src_count, PixelShape pixel, int32_t position, uint32_t step,
                  Resampling mode) {
  Plan plan;
  for (uint64_t x = 0; x < dst_count; x += kTile) {
    const uint32_t n = static_cast<uint32_t>(std::min<uint64_t>(kTile, dst_count - x));
    make_plan(plan, x, n, src_count, pixel, position, step, mode);
    resample_tile(kernels.direct, dst + x * pixel.bytes(), src, plan, pixel, mode);
  }
}

void resize(const Kernels& kernels, uint8_t* dst, const uint8_t* src, FrameSize dst_size,
            FrameSize src_size, PixelShape pixel, Resampling mode) {
  const size_t src_row = src_size.width * pixel.bytes(), dst_row = dst_size.width * pixel.bytes();
  if (dst_size.width == src_size.width && dst_size.height == src_size.height) {
    memcpy(dst, src, src_row * src_size.height);
    return;
  }
  const uint32_t step_x = (src_size.width << 16) / dst_size.width;
  const uint32_t step_y = (src_size.height << 16) / dst_size.height;
  const auto mix = pixel.sample_bytes == 1 ? kernels.direct.mix8_evenly : kernels.direct.mix16_evenly;
  Plan plan;
  for (uint32_t x = 0; x < dst_size.width; x += kTile) {
    const uint32_t n = std::min(kTile, dst_size.width - x);
    make_plan(plan, x, n, src_size.width, pixel, first_position(step_x), step_x, mode);
    TileRows rows(kernels.direct, src, src_row, plan, pixel);
    uint8_t* out = dst + x * pixel.bytes();
    for (uint32_t y = 0; y < dst_size.height; ++y, out += dst_row) {
      const uint64_t q = position_of(first_position(step_y), step_y, y, src_size.height);
      if (mode == Resampling::nearest) {
        gather(out, src + nearest(q) * src_row, plan.at, n, pixel.bytes());
        continue;
      }
      const uint8_t* const upper = rows.row(q >> 16);
      if (fraction(q) == 0) {
        memcpy(out, upper, n * pixel.bytes());
      } else {
        const uint8_t* const lower = rows.row(next(q >> 16, src_size.height));
        mix(out, upper, lower, fraction(q), size_t{n} * pixel.channels);
      }
    }
  }
}

}  // namespace lum

using namespace lum;

uint32_t LumResampleRow(uint8_t* dst, const uint8_t* src, uint32_t dstCount, uint32_t srcCount,
                        uint32_t channels, uint32_t bytesPerSample, int32_t position, uint32_t step,
                        uint32_t mode) {
  if (dst == nullptr) return bad_parameter(1);
  if (src == nullptr) return bad_parameter(2);
  if (dstCount == 0) return bad_parameter(3);
  if (srcCount == 0) return bad_parameter(4);
  if (channels == 0 || channels > kMaxChannels) return bad_parameter(5);
  if (bytesPerSample != 1 && bytesPerSample != 2) return bad_parameter(6);
  if (mode >= kResamplingCount) return kNotImplemented;
  resample_row(kernels(), dst, src, dstCount, srcCount, {channels, bytesPerSample}, position, step,
               static_cast<Resampling>(mode));
  return kSuccess;
}

uint32_t LumResize(uint8_t* dst, const uint8_t* src, uint32_t dstWidth, uint32_t dstHeight,
                   uint32_t srcWidth, uint32_t srcHeight, uint32_t channels, uint32_t bytesPerSample,
                   uint32_t mode) {
  constexpr uint32_t kMaxSize = 65535;
  const uint32_t sizes[] = {dstWidth, dstHeight, srcWidth, srcHeight};
  if (dst == nullptr) return bad_parameter(1);
  if (src == nullptr) return bad_parameter(2);
  for (unsigned i = 0; i < 4; ++i) {
    if (sizes[i] == 0 || sizes[i] > kMaxSize) return bad_parameter(3 + i);
  }
  if (channels == 0 || channels > kMaxChannels) return bad_parameter(7);
  if (bytesPerSample != 1 && bytesPerSample != 2) return bad_parameter(8);
  if (mode >= kResamplingCount) return kNotImplemented;
  resize(kernels(), dst, src, {dstWidth, dstHeight}, {srcWidth, srcHeight},
         {channels, bytesPerSample}, static_cast<Resampling>(mode));
  return kSuccess;
}
