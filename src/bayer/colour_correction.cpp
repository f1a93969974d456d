// SPDX-License-Identifier: MIT
#include "bayer/colour_correction.h"

#include <algorithm>

#include "bayer/mosaic.h"
#include "simd/isa.h"

namespace lum {
namespace {

constexpr uint32_t kMatrixScale = 10;  // the coefficients' 1024
// 12-bit samples to bytes: four bits more.
constexpr uint32_t kScale12To8 = kMatrixScale + 4;

// The largest sum of absolute coefficients in a row with which samples of `bits` bits stay within a
// signed 32-bit sum.
constexpr int64_t largest_row(unsigned bits) { return (int64_t{1} << 31) / ((int64_t{1} << bits) - 1); }

bool needs_wide_sums(const ColourMatrix& matrix, unsigned sample_bits) {
  for (int row = 0; row < 3; ++row) {
    int64_t sum = 0;
    for (int column = 0; column < 3; ++column) {
      const int64_t m = matrix.m[3 * row + column];
      if (m != static_cast<int16_t>(m)) return true;
      sum += m < 0 ? -m : m;
    }
    if (sum > largest_row(sample_bits)) return true;
  }
  return false;
}

RowArgs correction(const ColourMatrix& matrix, uint32_t scale, unsigned sample_bits) {
  RowArgs args;
  args.matrix = matrix.m;
  args.scale = scale;
  args.wide = needs_wide_sums(matrix, sample_bits);
  return args;
}

void correct_raw16(const MosaicFrame& f, uint32_t shift, const ColourMatrix& matrix) {
  if (f.width < 2 || f.height < 2) return;
  constexpr uint32_t kAllOut = 16;  // a shift by more leaves no bit either
  convert_mosaic_reduced(kernels(), f, reduce_mono16(f.sink, std::min(shift, kAllOut), 0),
                         Source::mosaic16_corrected, correction(matrix, kMatrixScale, 16));
}

void correct_raw12(const MosaicFrame& f, const ColourMatrix& matrix) {
  if (f.width < 2 || f.height < 2 || f.width % 2 != 0) return;
  const bool to_words = f.sink >= Sink::mono16_rec601;
  Reduction reduction = {Source::mono12_packed, Sink::mono16_rec601, {}};
  reduction.args.shift = to_words ? 4 : 0;
  convert_mosaic_reduced(kernels(), f, reduction, Source::mosaic16_corrected,
                         to_words ? correction(matrix, kMatrixScale, 16)
                                  : correction(matrix, kScale12To8, 12));
}

}  // namespace

void cc_raw8_to_bgr24(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                      uint32_t pattern, const ColourMatrix& matrix) {
  if (width < 2 || height < 2) return;
  convert_mosaic8(kernels(), {dst, src, width, height, red_phase(pattern & 3), Sink::bgr24},
                  Source::mosaic8_corrected, correction(matrix, kMatrixScale, 8));
}

void cc_raw8_to_mono8(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                      uint32_t pattern, const ColourMatrix& matrix) {
  if (width < 2 || height < 2) return;
  // Kept: this path reads the parities straight from the pattern, so that patterns 1 and 2 mean each
  // other's mosaic here.
  const RedPhase red = {pattern & 1, (pattern >> 1) & 1};
  convert_mosaic8(kernels(), {dst, src, width, height, red, Sink::mono8_rec601},
                  Source::mosaic8_wrapped, correction(matrix, kMatrixScale, 8));
}

void cc_raw16_to_mono16(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                        uint32_t pattern, uint32_t shift, const ColourMatrix& matrix) {
  correct_raw16({dst, src, width, height, red_phase(pattern & 3), Sink::mono16_rec601}, shift, matrix);
}

void cc_raw16_to_bgr48(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                       uint32_t pattern, uint32_t shift, const ColourMatrix& matrix) {
  correct_raw16({dst, src, width, height, red_phase(pattern & 3), Sink::bgr48}, shift, matrix);
}

void cc_raw12_to_bgr24(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                       uint32_t pattern, const ColourMatrix& matrix) {
  correct_raw12({dst, src, width, height, red_phase(pattern & 3), Sink::bgr24}, matrix);
}

void cc_raw12_to_bgr48(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                       uint32_t pattern, const ColourMatrix& matrix) {
  correct_raw12({dst, src, width, height, red_phase(pattern & 3), Sink::bgr48}, matrix);
}

}  // namespace lum
