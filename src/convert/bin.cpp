// SPDX-License-Identifier: MIT
// Binning. Where a kernel makes the means in registers, that is all; elsewhere rows are summed in
// memory (in pairs of neighbours where the factor is even), then what neighbours are left, then
// comes one division a sample.
#include <string.h>

#include <algorithm>

#include "arguments.h"
#include "convert/direct.h"
#include "lum/lum.h"
#include "simd/isa.h"

namespace lum {
namespace {

// Samples of a row at a time, so that the sums stay in the first-level cache and on the stack.
constexpr size_t kTile = 1024;
constexpr size_t kTileRoom = kTile + kBlockSamples;

template <class Sum>
struct Steps {
  using Add = void (*)(Sum* sums, const uint8_t* row, size_t n, bool first);
  Add add, add_pairs;
  void (*add_sums)(Sum* sums, const Sum* more, size_t n);
  void (*halve)(Sum* sums, size_t n);
  void (*divide)(uint8_t* dst, const Sum* sums, size_t n, uint32_t count);
};

// sums[i] = the sum of 3 neighbours, for n sums of 16 bits: those of a three-channel row, so to
// speak. 32-bit sums have no such kernel, and need it less.
void add_threes(const DirectKernels& kernels, const Steps<uint16_t>& steps, uint16_t* sums,
                size_t n) {
  alignas(64) uint16_t parts[3][kTileRoom];
  uint8_t* planes[3];
  for (size_t i = 0; i < 3; ++i) planes[i] = reinterpret_cast<uint8_t*>(parts[i]);
  kernels.split[1][1](planes, reinterpret_cast<const uint8_t*>(sums), n);
  for (size_t i = 1; i < 3; ++i) steps.add_sums(parts[0], parts[i], n);
  memcpy(sums, parts[0], n * sizeof(uint16_t));
}

// sums[i] = the sum of `factor` neighbours, for n sums: by halves as far as that goes. With what is
// odd then, the windows that begin at every sample double in width, and where the factor is odd on
// the way a single sample is added; every factor-th of them is kept. To pick those one by one is
// not what takes the time.
template <class Sum>
void add_neighbours(const DirectKernels& kernels, const Steps<Sum>& steps, Sum* sums, size_t n,
                    uint32_t factor) {
  for (; factor % 2 == 0; factor /= 2) steps.halve(sums, n * (factor / 2));
  if (factor == 1) return;
  if constexpr (sizeof(Sum) == 2) {
    if (factor == 3) return add_threes(kernels, steps, sums, n);
  }
  const size_t samples = n * factor;
  alignas(64) Sum single[kTileRoom];
  memcpy(single, sums, samples * sizeof(Sum));
  uint32_t bit = 1;
  while (bit * 2 <= factor) bit *= 2;
  for (uint32_t width = 1; bit > 1;) {
    steps.add_sums(sums, sums + width, samples);
    bit /= 2;
    width *= 2;
    if ((factor & bit) != 0) steps.add_sums(sums, single + width++, samples);
  }
  for (size_t i = 0; i < n; ++i) sums[i] = sums[i * factor];
}

template <class Sum>
class Binning {
 public:
  Binning(const DirectKernels& kernels, const Steps<Sum>& steps, PixelShape pixel,
          uint32_t factor_x, uint32_t factor_y, size_t src_row)
      : kernels_(kernels),
        steps_(steps),
        pixel_(pixel),
        factor_x_(factor_x),
        factor_y_(factor_y),
        src_row_(src_row) {}

  // n pixels of the result, from factor_y rows.
  void row(uint8_t* dst, const uint8_t* src, size_t n) {
    const bool planes = pixel_.channels > 1 && factor_x_ > 1;
    const size_t samples_of_pixel = planes ? 1 : pixel_.channels;
    const size_t tile = kTile / (factor_x_ * samples_of_pixel);
    for (size_t x = 0; x < n; x += tile) {
      const size_t pixels = std::min(tile, n - x);
      uint8_t* const to = dst + x * pixel_.bytes();
      const uint8_t* const from = src + x * factor_x_ * pixel_.bytes();
      if (planes) {
        by_planes(to, from, pixels);
      } else {
        for (uint32_t i = 0; i < factor_y_; ++i) {
          add(sums_[0], from + i * src_row_, pixels * factor_x_ * samples_of_pixel, i == 0);
        }
        finish(to, sums_[0], pixels * samples_of_pixel);
      }
    }
  }

 private:
  // Neighbours of one channel lie side by side in planes only.
  void by_planes(uint8_t* dst, const uint8_t* src, size_t pixels) {
    uint8_t* planes[kMaxChannels];
    for (size_t c = 0; c < kMaxChannels; ++c) planes[c] = planes_[c];
    const uint32_t channels = pixel_.channels;
    for (uint32_t i = 0; i < factor_y_; ++i) {
      kernels_.split[pixel_.sample_bytes - 1][channels - 2](planes, src + i * src_row_,
                                                            pixels * factor_x_);
      for (size_t c = 0; c < channels; ++c) {
        add(sums_[c], planes[c], pixels * factor_x_, i == 0);
      }
    }
    for (size_t c = 0; c < channels; ++c) finish(planes[c], sums_[c], pixels);
    kernels_.join[pixel_.sample_bytes - 1][channels - 2](dst, planes, pixels);
  }

  bool pairs() const { return factor_x_ % 2 == 0; }
  // n samples of a row; where it can be, in pairs.
  void add(Sum* sums, const uint8_t* row, size_t n, bool first) const {
    if (pairs()) {
      steps_.add_pairs(sums, row, n / 2, first);
    } else {
      steps_.add(sums, row, n, first);
    }
  }
  void finish(uint8_t* dst, Sum* sums, size_t n) const {
    add_neighbours(kernels_, steps_, sums, n, pairs() ? factor_x_ / 2 : factor_x_);
    steps_.divide(dst, sums, n, factor_x_ * factor_y_);
  }

  const DirectKernels& kernels_;
  const Steps<Sum> steps_;
  const PixelShape pixel_;
  const uint32_t factor_x_, factor_y_;
  const size_t src_row_;
  alignas(64) Sum sums_[kMaxChannels][kTileRoom];
  alignas(64) uint8_t planes_[kMaxChannels][kTileRoom * 2];
};

template <class Sum>
void bin_frame(const DirectKernels& kernels, const Steps<Sum>& steps, uint8_t* dst,
               const uint8_t* src, FrameSize size, PixelShape pixel, uint32_t factor_x,
               uint32_t factor_y) {
  const size_t n = size.width / factor_x, src_row = size.width * pixel.bytes();
  Binning<Sum> binning(kernels, steps, pixel, factor_x, factor_y, src_row);
  for (size_t y = 0; y < size.height / factor_y; ++y) {
    binning.row(dst + y * n * pixel.bytes(), src + y * factor_y * src_row, n);
  }
}

bool bin_in_registers(const DirectKernels& kernels, uint8_t* dst, const uint8_t* src,
                      FrameSize size, PixelShape pixel, uint32_t factor_x, uint32_t factor_y) {
  if ((factor_x & (factor_x - 1)) != 0) return false;
  const size_t src_row = size.width * pixel.bytes();
  size_t n = size.width / factor_x;
  const size_t dst_row = n * pixel.bytes();
  if (factor_x == 1) {  // what channel a sample belongs to does not matter
    n *= pixel.channels;
    pixel.channels = 1;
  }
  const auto bin_row =
      kernels.bin[pixel.sample_bytes - 1][pixel.channels - 1][__builtin_ctz(factor_x)];
  if (bin_row == nullptr || n < kBlockSamples) return false;
  for (size_t y = 0; y < size.height / factor_y; ++y) {
    bin_row(dst + y * dst_row, src + y * factor_y * src_row, src_row, n, factor_y);
  }
  return true;
}

}  // namespace

void bin(const Kernels& kernels, uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
         uint32_t channels, uint32_t sample_bytes, uint32_t factor_x, uint32_t factor_y) {
  const DirectKernels& k = kernels.direct;
  const FrameSize size = {width, height};
  const PixelShape pixel = {channels, sample_bytes};
  if (factor_x == 1 && factor_y == 1) {
    memcpy(dst, src, size_t{width} * height * pixel.bytes());
    return;
  }
  if (bin_in_registers(k, dst, src, size, pixel, factor_x, factor_y)) return;
  if (sample_bytes == 1) {
    bin_frame<uint16_t>(k, {k.add8, k.add8_pairs, k.add_sums16, k.halve16, k.divide8}, dst, src,
                        size, pixel, factor_x, factor_y);
  } else {
    bin_frame<uint32_t>(k, {k.add16, k.add16_pairs, k.add_sums32, k.halve32, k.divide16}, dst, src,
                        size, pixel, factor_x, factor_y);
  }
}

}  // namespace lum

using namespace lum;

uint32_t LumBin(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                uint32_t channels, uint32_t bytesPerSample, uint32_t factorX, uint32_t factorY) {
  if (dst == nullptr) return bad_parameter(1);
  if (src == nullptr) return bad_parameter(2);
  if (width == 0) return bad_parameter(3);
  if (height == 0) return bad_parameter(4);
  if (channels == 0 || channels > kMaxChannels) return bad_parameter(5);
  if (bytesPerSample != 1 && bytesPerSample != 2) return bad_parameter(6);
  if (factorX == 0 || factorX > kMaxBinFactor) return bad_parameter(7);
  if (factorY == 0 || factorY > kMaxBinFactor) return bad_parameter(8);
  if (width < factorX) return bad_parameter(3);
  if (height < factorY) return bad_parameter(4);
  bin(kernels(), dst, src, width, height, channels, bytesPerSample, factorX, factorY);
  return kSuccess;
}
