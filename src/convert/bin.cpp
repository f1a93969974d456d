// SPDX-License-Identifier: MIT
// Binning: rows are summed first, then neighbours in the sums, then comes one division a sample.
#include <string.h>

#include <algorithm>

#include "arguments.h"
#include "convert/direct.h"
#include "lum/lum.h"
#include "simd/isa.h"

namespace lum {
namespace {

constexpr size_t kTile = 2048;  // samples of a row at a time, so that the sums stay on the stack

// sums[i] = the sum of `factor` neighbours, channel by channel.
template <class Sum, size_t channels>
void add_neighbours(Sum* sums, size_t pixels, size_t factor) {
  for (size_t i = 0; i < pixels; ++i) {
    const Sum* const from = sums + i * factor * channels;
    Sum total[channels];
    for (size_t c = 0; c < channels; ++c) total[c] = from[c];
    for (size_t k = 1; k < factor; ++k) {
      for (size_t c = 0; c < channels; ++c) {
        total[c] = static_cast<Sum>(total[c] + from[k * channels + c]);
      }
    }
    for (size_t c = 0; c < channels; ++c) sums[i * channels + c] = total[c];
  }
}
template <class Sum>
void add_neighbours(Sum* sums, size_t pixels, size_t factor, uint32_t channels) {
  if (factor == 1) return;
  switch (channels) {
    case 1: return add_neighbours<Sum, 1>(sums, pixels, factor);
    case 2: return add_neighbours<Sum, 2>(sums, pixels, factor);
    case 3: return add_neighbours<Sum, 3>(sums, pixels, factor);
    default: return add_neighbours<Sum, 4>(sums, pixels, factor);
  }
}

template <class Sum>
struct Steps {
  using Add = void (*)(Sum* sums, const uint8_t* row, size_t n, bool first);
  Add add, add_pairs;
  void (*divide)(uint8_t* dst, const Sum* sums, size_t n, uint32_t count);
};

template <class Sum>
void bin_frame(const Steps<Sum>& steps, uint8_t* dst, const uint8_t* src, FrameSize size,
               PixelShape pixel, uint32_t factor_x, uint32_t factor_y) {
  const size_t out_width = size.width / factor_x, out_height = size.height / factor_y;
  const size_t src_row = size.width * pixel.bytes();
  // Of one channel, pairs are summed as they are read.
  const bool pairs = pixel.channels == 1 && factor_x % 2 == 0;
  const size_t tile = kTile / (pixel.channels * factor_x);
  alignas(64) Sum sums[kTile + kBlockSamples];
  for (size_t x = 0; x < out_width; x += tile) {
    const size_t n = std::min(tile, out_width - x);
    const size_t in = n * factor_x * pixel.channels;
    for (size_t y = 0; y < out_height; ++y) {
      const uint8_t* row = src + y * factor_y * src_row + x * factor_x * pixel.bytes();
      for (uint32_t i = 0; i < factor_y; ++i, row += src_row) {
        if (pairs) {
          steps.add_pairs(sums, row, in / 2, i == 0);
        } else {
          steps.add(sums, row, in, i == 0);
        }
      }
      add_neighbours(sums, n, pairs ? factor_x / 2 : factor_x, pixel.channels);
      steps.divide(dst + (y * out_width + x) * pixel.bytes(), sums, n * pixel.channels,
                   factor_x * factor_y);
    }
  }
}

}  // namespace

void bin(const Kernels& kernels, uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
         uint32_t channels, uint32_t sample_bytes, uint32_t factor_x, uint32_t factor_y) {
  const DirectKernels& k = kernels.direct;
  const FrameSize size = {width, height};
  const PixelShape pixel = {channels, sample_bytes};
  if (factor_x == 1 && factor_y == 1) {
    memcpy(dst, src, size_t{width} * height * pixel.bytes());
  } else if (sample_bytes == 1) {
    bin_frame<uint16_t>({k.add8, k.add8_pairs, k.divide8}, dst, src, size, pixel, factor_x, factor_y);
  } else {
    bin_frame<uint32_t>({k.add16, k.add16_pairs, k.divide16}, dst, src, size, pixel, factor_x,
                        factor_y);
  }
}

}  // namespace lum

using namespace lum;

uint32_t LumBin(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height, uint32_t channels,
                uint32_t bytesPerSample, uint32_t factorX, uint32_t factorY) {
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
