// SPDX-License-Identifier: MIT
#include "bayer/colour_correction.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

#include "arguments.h"
#include "convert/flat.h"
#include "simd/isa.h"

namespace lum {
namespace {

constexpr uint32_t kMatrixScale = 10;  // the coefficients' 1024
static_assert(kScale12To8 == kMatrixScale + 4 + kShift12To8 && kScale16To8 == kMatrixScale + 8,
              "to bytes: as many bits more as samples have");

bool is_deep(Sink sink) { return sink >= Sink::mono16_rec601; }

// The largest sum of absolute coefficients in a row with which samples of `bits` bits stay within a
// signed 32-bit sum.
constexpr int64_t largest_row(unsigned bits) {
  return (int64_t{1} << 31) / ((int64_t{1} << bits) - 1);
}

bool needs_wide_sums(const ColourMatrix& matrix, unsigned sample_bits) {
  for (int row = 0; row < 3; ++row) {
    int64_t sum = 0;
    for (int column = 0; column < 3; ++column) {
      const int64_t m = matrix.coefficients[3 * row + column];
      if (m != static_cast<int16_t>(m)) return true;
      sum += m < 0 ? -m : m;
    }
    if (sum > largest_row(sample_bits)) return true;
  }
  return false;
}

RowArgs correction(const ColourMatrix& matrix, uint32_t scale, unsigned sample_bits) {
  RowArgs args;
  args.matrix = matrix.coefficients;
  args.scale = scale;
  args.wide = needs_wide_sums(matrix, sample_bits);
  return args;
}

// Truncates toward zero; what does not fit saturates, and what is no number is 0.
int32_t to_fixed_point(float coefficient) {
  constexpr float kOne = 1 << kMatrixScale;
  constexpr float kLimit = 2147483648.0f;   // 2^31, the first float that is too large
  const float scaled = coefficient * kOne;  // exact but for an overflow to infinity
  if (scaled >= kLimit) return std::numeric_limits<int32_t>::max();
  if (scaled < -kLimit) return std::numeric_limits<int32_t>::min();
  return scaled == scaled ? static_cast<int32_t>(scaled) : 0;
}

bool is_matrix(const LumColorCorrection* matrix) {
  return matrix != nullptr && (matrix->kind == kMatrixKind8Bit || matrix->kind == kMatrixKindDeep);
}

MosaicFrame frame(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                  uint32_t format, uint32_t pattern) {
  return {dst, src, width, height, red_phase(pattern), static_cast<Sink>(format)};
}

// Words in host order to 16-bit sinks, of any size and shift.
void correct_words(const MosaicFrame& f, uint32_t shift, const ColourMatrix& matrix) {
  constexpr uint32_t kAllOut = 16;  // a shift by more leaves no bit either
  if (f.width < 2 || f.height < 2) return;
  correct_raw16(kernels(), f, std::min(shift, kAllOut), 0, matrix);
}

void correct_packed(const MosaicFrame& f, const ColourMatrix& matrix) {
  if (f.width < 2 || f.height < 2 || f.width % 2 != 0) return;
  correct_raw12(kernels(), f, matrix);
}

}  // namespace

ColourMatrix make_colour_matrix(uint32_t kind, const float* coefficients) {
  ColourMatrix result{};
  result.kind = kind;
  for (int i = 0; i < 9; ++i) result.coefficients[i] = to_fixed_point(coefficients[i]);
  return result;
}

void correct_raw8(const Kernels& kernels, const MosaicFrame& f, const ColourMatrix& matrix) {
  convert_mosaic8(kernels, f, Source::mosaic8_corrected, correction(matrix, kMatrixScale, 8));
}

void correct_raw12(const Kernels& kernels, const MosaicFrame& f, const ColourMatrix& matrix) {
  const bool deep = is_deep(f.sink);
  Reduction reduction = {Source::mono12_packed, Sink::mono16_rec601, {}};
  reduction.args.shift = deep ? 4 : kShift12To8;
  if (deep) {
    convert_mosaic_reduced(kernels, f, reduction, Source::mosaic16_corrected,
                           correction(matrix, kMatrixScale, 16));
  } else {
    convert_mosaic_reduced(kernels, f, reduction, Source::mosaic12_corrected,
                           correction(matrix, kScale12To8, 12 + kShift12To8));
  }
}

void correct_raw16(const Kernels& kernels, const MosaicFrame& f, uint32_t shift,
                   uint32_t big_endian, const ColourMatrix& matrix) {
  const Reduction to_words = reduce_mono16(Sink::mono16_rec601, shift, big_endian);
  convert_mosaic_reduced(kernels, f, to_words, Source::mosaic16_corrected,
                         correction(matrix, is_deep(f.sink) ? kMatrixScale : kScale16To8, 16));
}

void correct_bgr24(const Kernels& kernels, uint8_t* dst, const uint8_t* src, uint32_t count,
                   const ColourMatrix& matrix) {
  convert_flat(kernels, Source::bgr24_corrected, Sink::bgr24, dst, src, count,
               correction(matrix, kMatrixScale, 8));
}

void correct_bgr48(const Kernels& kernels, uint8_t* dst, const uint8_t* src, uint32_t count,
                   const ColourMatrix& matrix) {
  convert_flat(kernels, Source::bgr48_corrected, Sink::bgr48, dst, src, count,
               correction(matrix, kMatrixScale, 16));
}

void cc_raw8_to_bgr24(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                      uint32_t pattern, const ColourMatrix& matrix) {
  if (width < 2 || height < 2) return;
  correct_raw8(kernels(), frame(dst, src, width, height, LUM_FORMAT_BGR24, pattern & 3), matrix);
}

void cc_raw8_to_mono8(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                      uint32_t pattern, const ColourMatrix& matrix) {
  if (width < 2 || height < 2) return;
  // Kept: this path reads the parities straight from the pattern, so that patterns 1 and 2 mean
  // each other's mosaic here.
  const RedPhase red = {pattern & 1, (pattern >> 1) & 1};
  convert_mosaic8(kernels(), {dst, src, width, height, red, Sink::mono8_rec601},
                  Source::mosaic8_wrapped, correction(matrix, kMatrixScale, 8));
}

void cc_raw16_to_mono16(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                        uint32_t pattern, uint32_t shift, const ColourMatrix& matrix) {
  correct_words(frame(dst, src, width, height, LUM_FORMAT_MONO16_REC601, pattern & 3), shift,
                matrix);
}

void cc_raw16_to_bgr48(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                       uint32_t pattern, uint32_t shift, const ColourMatrix& matrix) {
  correct_words(frame(dst, src, width, height, LUM_FORMAT_BGR48, pattern & 3), shift, matrix);
}

void cc_raw12_to_bgr24(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                       uint32_t pattern, const ColourMatrix& matrix) {
  correct_packed(frame(dst, src, width, height, LUM_FORMAT_BGR24, pattern & 3), matrix);
}

void cc_raw12_to_bgr48(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                       uint32_t pattern, const ColourMatrix& matrix) {
  correct_packed(frame(dst, src, width, height, LUM_FORMAT_BGR48, pattern & 3), matrix);
}

}  // namespace lum

using namespace lum;

uint32_t LumCreateColorCorrectionMatrix_Int8(LumColorCorrection** matrix,
                                             const float* coefficients) {
  if (matrix == nullptr) return bad_parameter(1);
  if (coefficients == nullptr) return bad_parameter(2);
  const bool finite =
      std::all_of(coefficients, coefficients + 9, [](float v) { return std::isfinite(v); });
  if (!finite) return bad_parameter(2);
  auto* const created = new (std::nothrow) LumColorCorrection;
  if (created == nullptr) return kOutOfMemory;
  *created = make_colour_matrix(kMatrixKind8Bit, coefficients);
  *matrix = created;
  return kSuccess;
}

uint32_t LumDestroyColorCorrection(LumColorCorrection* matrix) {
  if (matrix == nullptr) return bad_parameter(1);
  delete matrix;
  return kSuccess;
}

uint32_t LumRaw8ToBGR_CC(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                         uint32_t bayerPattern, const LumColorCorrection* matrix) {
  if (const uint32_t error = check_mosaic(dst, src, width, height, bayerPattern)) return error;
  if (!is_matrix(matrix)) return bad_parameter(6);
  correct_raw8(kernels(), frame(dst, src, width, height, LUM_FORMAT_BGR24, bayerPattern), *matrix);
  return kSuccess;
}

uint32_t LumRaw8ImageTransform_CC(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                                  uint32_t formatIndex, uint32_t bayerPattern,
                                  const LumColorCorrection* matrix) {
  if (const uint32_t error = check_mosaic(dst, src, width, height, bayerPattern)) return error;
  if (formatIndex > LUM_FORMAT_UYVY) return kNotImplemented;
  if (!is_matrix(matrix)) return bad_parameter(7);
  correct_raw8(kernels(), frame(dst, src, width, height, formatIndex, bayerPattern), *matrix);
  return kSuccess;
}

uint32_t LumRaw12ImageTransform_CC(uint8_t* dst, const uint8_t* src, uint32_t width,
                                   uint32_t height, uint32_t formatIndex, uint32_t bayerPattern,
                                   const LumColorCorrection* matrix) {
  if (const uint32_t error = check_mosaic(dst, src, width, height, bayerPattern)) return error;
  if (formatIndex > LUM_FORMAT_RGB48) return kNotImplemented;
  if (!is_matrix(matrix)) return bad_parameter(7);
  correct_raw12(kernels(), frame(dst, src, width, height, formatIndex, bayerPattern), *matrix);
  return kSuccess;
}

uint32_t LumRaw16ImageTransform_CC(uint8_t* dst, const uint8_t* src, uint32_t width,
                                   uint32_t height, uint32_t formatIndex,
                                   const LumBitDepthInfo* bitDepth,
                                   const LumColorCorrection* matrix) {
  if (dst == nullptr) return bad_parameter(1);
  if (src == nullptr) return bad_parameter(2);
  if (bitDepth == nullptr) return bad_parameter(6);
  // The pattern is the record's, with a code of its own.
  constexpr uint32_t kAnyPattern = 0;
  if (const uint32_t error = check_mosaic(dst, src, width, height, kAnyPattern)) return error;
  uint32_t shift;
  if (!shift_of(*bitDepth, &shift)) return kNotImplemented;
  constexpr uint32_t kLargestShift = 8;  // of bytes in words
  if (shift > kLargestShift || bitDepth->bayerPattern > LumBayerPatternBGGR) return kNotImplemented;
  if (formatIndex > LUM_FORMAT_RGB48 || bitDepth->endianness > 1) return kNotImplemented;
  if (!is_matrix(matrix)) return bad_parameter(7);
  correct_raw16(kernels(), frame(dst, src, width, height, formatIndex, bitDepth->bayerPattern),
                shift, bitDepth->endianness, *matrix);
  return kSuccess;
}

uint32_t LumBGRToBGR_CC(uint8_t* dst, const uint8_t* src, uint32_t pixelCount,
                        uint32_t bytesPerSample, const LumColorCorrection* matrix) {
  if (dst == nullptr) return bad_parameter(1);
  if (src == nullptr) return bad_parameter(2);
  if (pixelCount == 0) return bad_parameter(3);
  if (bytesPerSample != 1 && bytesPerSample != 2) return bad_parameter(4);
  if (!is_matrix(matrix)) return bad_parameter(5);
  (bytesPerSample == 1 ? correct_bgr24 : correct_bgr48)(kernels(), dst, src, pixelCount, *matrix);
  return kSuccess;
}
