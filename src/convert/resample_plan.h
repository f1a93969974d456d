// SPDX-License-Identifier: MIT
// The plan of a column tile: which source pixels its pixels lie between and how far, and what the
// kernels that pick need to know.
#ifndef LUM_CONVERT_RESAMPLE_PLAN_H
#define LUM_CONVERT_RESAMPLE_PLAN_H

#include <stddef.h>
#include <stdint.h>

#include <algorithm>

#include "convert/direct.h"
#include "simd/kernel_table.h"

namespace lum {

// Columns are taken in tiles, as wide as the stack permits: rows of the source are then read in
// long runs.
constexpr size_t kTile = 8192;  // bytes of the result
constexpr size_t kTileBytes = kTile + 2 * kBlockSamples;
inline uint32_t tile_pixels(PixelShape pixel) {
  return static_cast<uint32_t>(kTile / pixel.bytes());
}
constexpr size_t kMostReach = 5 * kTile / 2;

constexpr uint64_t kOne = 1u << 16, kHalf = kOne / 2;  // positions are 16.16

// position + index * step, limited to 0 .. (count - 1) << 16; the sum fits 64 bits without a sign.
inline uint64_t position_of(int64_t position, uint32_t step, uint64_t index, uint32_t count) {
  const uint64_t way = index * step;
  const uint64_t back = position < 0 ? static_cast<uint64_t>(-position) : 0;
  if (way < back) return 0;
  const uint64_t p = position < 0 ? way - back : way + static_cast<uint64_t>(position);
  return std::min<uint64_t>(p, uint64_t{count - 1} << 16);
}
inline uint64_t nearest(uint64_t p) { return (p + kHalf) >> 16; }
inline uint16_t fraction(uint64_t p) {
  return static_cast<uint16_t>(static_cast<uint32_t>(p) >> 1 & 0x7FFF);
}
// The next sample, or the same at the end.
inline uint64_t next(uint64_t index, uint32_t count) { return index + (index + 1 < count ? 1 : 0); }

struct Plan {
  uint32_t n;          // pixels
  size_t first;        // where the first one lies in the source row, in bytes
  uint32_t at[kTile];  // where each pixel lies from there on, or each sample
  uint32_t stride;     // 1, or the number of channels
  size_t last;  // linear: where the row's last pixel lies; the others are mixed with the next one
  uint16_t f[kTileBytes];  // by how much, for every sample, or as `mix` takes it
  // What follows is for the kernels that pick, from `from` on, or pick and mix, from `first` on.
  // The latter read the row up to `reach` from there, maybe beyond its end.
  bool picks;
  DirectKernels::PickingMix* mix;
  size_t from, reach;
  uint32_t base[2 * kTileBytes / kLeastSpan];
  uint8_t index[2 * kTileBytes];
};

// n pixels from the one of number `first` on.
void make_plan(Plan& plan, uint64_t first, uint32_t n, uint32_t src_count, PixelShape pixel,
               int64_t position, uint32_t step, Resampling mode);
// Sets plan.mix where the kernels and the step permit.
void add_mixing(Plan& plan, const DirectKernels& kernels, PixelShape pixel);
// Sets plan.picks where the kernels and the step permit.
void add_picks(Plan& plan, const DirectKernels& kernels, PixelShape pixel, size_t row_bytes);

}  // namespace lum

#endif
