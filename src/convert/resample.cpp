// SPDX-License-Identifier: MIT
// Resampling: a plan says for each pixel of a column tile which two source pixels it lies between
// and how far; the pixels are gathered by it, and the kernels mix them. Rows of a frame are
// resampled one by one and mixed in pairs. As all of them follow one plan, it is worth a second
// one: pieces of the result whose bytes all come from a short stretch of the source are picked from
// it in one go.
#include <string.h>

#include <algorithm>

#include "arguments.h"
#include "convert/direct.h"
#include "lum/lum.h"
#include "simd/isa.h"

namespace lum {
namespace {

// Columns are taken in tiles, as wide as the stack permits: rows of the source are then read in
// long runs.
constexpr size_t kTile = 4096;  // bytes of the result
constexpr size_t kTileBytes = kTile + 2 * kBlockSamples;
uint32_t tile_pixels(PixelShape pixel) { return static_cast<uint32_t>(kTile / pixel.bytes()); }
constexpr size_t kLeastPiece = 8;  // of the picks of all levels

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
  uint32_t n;        // pixels
  size_t at[kTile];  // where a pixel lies in the source row, in bytes
  size_t last;  // linear: where the row's last pixel lies; the others are mixed with the next one
  uint16_t f[kTile + kBlockSamples];  // by how much, for every sample
  bool picks = false;                 // what follows is filled in
  size_t base[kTileBytes / kLeastPiece];
  uint8_t index[kTileBytes];
};

// Only steps below some two pixels leave a piece's bytes close enough to each other.
void add_picks(Plan& plan, const DirectKernels& k, size_t pixel_bytes, size_t row_bytes) {
  const size_t piece = k.pick_piece, window = 2 * piece;
  const size_t bytes = plan.n * pixel_bytes, whole = (bytes + kBlockSamples - 1) / kBlockSamples;
  if (row_bytes < window) return;
  memset(plan.index, 0, sizeof plan.index);
  for (size_t first = 0; first < whole * kBlockSamples; first += piece) {
    size_t& base = plan.base[first / piece];
    base = 0;
    if (first >= bytes) continue;
    base = std::min(plan.at[first / pixel_bytes], row_bytes - window);
    const size_t end = std::min(first + piece, bytes);
    // Of the last pixel and the next one; behind the row's last one there is none, and none is
    // mixed in.
    const size_t behind = plan.at[(end - 1) / pixel_bytes] + 2 * pixel_bytes;
    if (std::min(behind, row_bytes) > base + window) return;
    for (size_t i = first; i < end; ++i) {
      const size_t source = plan.at[i / pixel_bytes] + i % pixel_bytes;
      plan.index[i] = static_cast<uint8_t>(source - base);
    }
  }
  plan.picks = true;
}

void make_plan(Plan& plan, uint64_t first, uint32_t n, uint32_t src_count, PixelShape pixel,
               int64_t position, uint32_t step, Resampling mode) {
  plan.n = n;
  plan.last = (size_t{src_count} - 1) * pixel.bytes();
  uint16_t* f = plan.f;
  for (uint32_t x = 0; x < n; ++x) {
    const uint64_t p = position_of(position, step, first + x, src_count);
    if (mode == Resampling::nearest) {
      plan.at[x] = nearest(p) * pixel.bytes();
      continue;
    }
    plan.at[x] = (p >> 16) * pixel.bytes();
    for (uint32_t c = 0; c < pixel.channels; ++c) *f++ = fraction(p);
  }
}

// Pixels `skip` bytes on from where they are said to be, but for the last.
template <size_t bytes>
void gather(uint8_t* dst, const uint8_t* src, const Plan& plan, size_t skip) {
  for (size_t x = 0; x < plan.n; ++x) {
    memcpy(dst + x * bytes, src + std::min(plan.at[x] + skip, plan.last), bytes);
  }
}
void gather(uint8_t* dst, const uint8_t* src, const Plan& plan, size_t skip, size_t bytes) {
  switch (bytes) {
    case 1:
      return gather<1>(dst, src, plan, skip);
    case 2:
      return gather<2>(dst, src, plan, skip);
    case 3:
      return gather<3>(dst, src, plan, skip);
    case 4:
      return gather<4>(dst, src, plan, skip);
    case 6:
      return gather<6>(dst, src, plan, skip);
    default:
      return gather<8>(dst, src, plan, skip);
  }
}
void resample_tile(const DirectKernels& k, uint8_t* dst, const uint8_t* src, const Plan& plan,
                   PixelShape pixel, Resampling mode) {
  const size_t bytes = plan.n * pixel.bytes();
  if (mode == Resampling::nearest) {
    if (plan.picks) {
      k.pick(dst, src, plan.base, plan.index, bytes);
    } else {
      gather(dst, src, plan, 0, pixel.bytes());
    }
    return;
  }
  alignas(64) uint8_t a[kTileBytes], b[kTileBytes];
  if (plan.picks) {
    k.pick_pairs(a, b, src, plan.base, plan.index, static_cast<uint8_t>(pixel.bytes()), bytes);
  } else {
    gather(a, src, plan, 0, pixel.bytes());
    gather(b, src, plan, pixel.bytes(), pixel.bytes());
  }
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
      prefetch_below(src_ + y * src_row_);
      resample_tile(kernels_, row, src_ + y * src_row_, plan_, pixel_, Resampling::linear);
      held_[y % 2] = y;
    }
    return row;
  }

 private:
  // Where rows have several tiles the next one begins elsewhere, and the processor does not foresee
  // it.
  void prefetch_below(const uint8_t* row) const {
    constexpr size_t kLine = 64;
    const size_t first = plan_.at[0], end = plan_.at[plan_.n - 1];
    if (end - first > src_row_ / 2) return;
    for (size_t i = first; i < end; i += kLine) __builtin_prefetch(row + src_row_ + i);
  }

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
  const uint32_t tile = tile_pixels(pixel);
  for (uint64_t x = 0; x < dst_count; x += tile) {
    const uint32_t n = static_cast<uint32_t>(std::min<uint64_t>(tile, dst_count - x));
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
  const auto mix =
      pixel.sample_bytes == 1 ? kernels.direct.mix8_evenly : kernels.direct.mix16_evenly;
  Plan plan;
  const uint32_t tile = tile_pixels(pixel);
  for (uint32_t x = 0; x < dst_size.width; x += tile) {
    const uint32_t n = std::min(tile, dst_size.width - x);
    make_plan(plan, x, n, src_size.width, pixel, first_position(step_x), step_x, mode);
    plan.picks = false;
    add_picks(plan, kernels.direct, pixel.bytes(), src_row);
    TileRows rows(kernels.direct, src, src_row, plan, pixel);
    uint8_t* out = dst + x * pixel.bytes();
    for (uint32_t y = 0; y < dst_size.height; ++y, out += dst_row) {
      const uint64_t q = position_of(first_position(step_y), step_y, y, src_size.height);
      if (mode == Resampling::nearest) {
        resample_tile(kernels.direct, out, src + nearest(q) * src_row, plan, pixel, mode);
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
                   uint32_t srcWidth, uint32_t srcHeight, uint32_t channels,
                   uint32_t bytesPerSample, uint32_t mode) {
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
