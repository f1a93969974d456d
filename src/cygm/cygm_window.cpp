// SPDX-License-Identifier: MIT
#include "cygm/cygm_window.h"

#include "arguments.h"
#include "lum/lum.h"
#include "mirrored_rows.h"
#include "row_writer.h"
#include "simd/isa.h"

namespace lum {
namespace {

// Of the two bytes beside a row a kernel may use the nearer one.
using Strip = MirroredStrip<8, 2>;

// The chroma D of a line, and the lines above and below it: how often it counts in P and in Q, of
// which P + Q is 32 times the red difference to luminance and Q - P the blue one.
struct Share {
  int p, q;
};
constexpr int kLines = 4;  // above, here, below, the one below that
using Shares = Share[kLines];

// By line number modulo 4. D alternates between the two differences from line to line, and its sign
// with green and magenta from one odd line to the next.
constexpr Shares kWindow[4] = {{{1, 2}, {-4, 0}, {1, -2}, {0, 0}},
                               {{-2, 0}, {0, -4}, {-2, 0}, {0, 0}},
                               {{1, -2}, {-4, 0}, {1, 2}, {0, 0}},
                               {{-2, 0}, {0, 4}, {-2, 0}, {0, 0}}};
// Of two lines together, the upper one even: its shares and, one line on, those of the lower one.
constexpr Shares kBlock[2] = {{{1, 2}, {-6, 0}, {1, -6}, {-2, 0}},
                              {{1, -2}, {-6, 0}, {1, 6}, {-2, 0}}};

// Red, green and blue from P and Q, times 2^15: the coefficients of the 2 x 2 blocks added up.
constexpr Share kColours[3] = {{1821, 2509}, {161, -1995}, {-5604, 3686}};

struct Weights {
  int32_t w[3][kLines];
};
constexpr Weights weights(const Shares& shares, bool is_top = false) {
  Weights result{};
  for (int colour = 0; colour < 3; ++colour) {
    for (int line = 0; line < kLines; ++line) {
      const int w = kColours[colour].p * shares[line].p + kColours[colour].q * shares[line].q;
      result.w[colour][line] = is_top && line == 0 ? -w : w;
    }
  }
  return result;
}

// By line number modulo 4, and of line 0, above which the mirrored line 1 stands for one with green
// and magenta the other way round.
constexpr Weights kWindowWeights[5] = {weights(kWindow[0]), weights(kWindow[1]),
                                       weights(kWindow[2]), weights(kWindow[3]),
                                       weights(kWindow[0], true)};
constexpr Weights kBlockWeights[3] = {weights(kBlock[0]), weights(kBlock[1]),
                                      weights(kBlock[0], true)};

// Calls f(x, y, n, line, args) for lines y = 0, step, 2 step ... of every tile of n columns from x
// on; args tells where the lines y - 1 to y + step are. step is 1 or 2.
template <class F>
void each_line(const uint8_t* src, uint32_t width, uint32_t height, uint32_t step, F f) {
  constexpr int kAhead = 4;
  static_assert(kAhead + 3 <= Strip::kRows, "rows y - 1 .. y + kAhead + 1");
  Strip strip(width);
  const auto source_line = [&](int64_t y) {
    const uint32_t line = static_cast<uint32_t>(mirrored(y, height));
    return src + size_t{line / 2 + (line % 2 == 0 ? height / 2 : 0)} * width;
  };
  each_tile(width, height, Strip::kColumns, [&](const Tile& tile) {
    strip.begin(tile.x, tile.columns);
    const int64_t first = tile.begin;
    for (int64_t y = first - 1; y < first + kAhead; ++y) strip.fetch(y, source_line(y));
    const uint8_t* ahead = source_line(first + kAhead);
    RowArgs args;
    for (uint32_t line = tile.begin; line < tile.end; line += step) {
      const int64_t y = line;
      for (uint32_t i = 0; i < step; ++i) {
        strip.fetch(y + kAhead + i, ahead);
        ahead = source_line(y + kAhead + i + 1);
      }
      args.above = strip[y - 1] - strip[y];
      args.below = strip[y + 1] - strip[y];
      args.below2 = strip[y + 2] - strip[y];
      args.ahead_of_a = distance(strip[y], ahead + tile.x);
      f(tile.x, line, tile.columns, strip[y], args);
    }
  });
}

uint32_t check(const void* dst, const void* src, uint32_t width, uint32_t height) {
  if (dst == nullptr) return bad_parameter(1);
  if (src == nullptr) return bad_parameter(2);
  if (width == 0) return bad_parameter(3);
  if (height == 0) return bad_parameter(4);
  if (width % 2 != 0) return bad_parameter(3);
  if (height % 4 != 0) return bad_parameter(4);
  return kSuccess;
}

}  // namespace

void convert_cygm_3x3(const Kernels& kernels, Sink sink, uint8_t* dst, const uint8_t* src,
                      uint32_t width, uint32_t height) {
  const RowKernel kernel = kernels.at(Source::cygm_3x3, sink);
  each_line(src, width, height, 1,
            [&](uint32_t x, uint32_t y, uint32_t n, const uint8_t* line, RowArgs& args) {
              args.matrix = kWindowWeights[y == 0 ? 4 : y % 4].w[0];
              kernel(dst + (size_t{y} * width + x) * pixel_bytes(sink), line, nullptr, n, args);
            });
}

void convert_cygm_binned(const Kernels& kernels, Sink sink, uint8_t* dst, const uint8_t* src,
                         uint32_t width, uint32_t height) {
  RowWriter write(kernels, Source::cygm_binned, sink, size_t{width} * height,
                  size_t{width / 2} * (height / 2));
  each_line(src, width, height, 2,
            [&](uint32_t x, uint32_t y, uint32_t n, const uint8_t* line, RowArgs& args) {
              args.matrix = kBlockWeights[y == 0 ? 2 : y % 4 / 2].w[0];
              const size_t at = size_t{y / 2} * (width / 2) + x / 2;
              write(dst + at * pixel_bytes(sink), line, nullptr, n / 2, args);
            });
}

void convert_cygm_to_luma(const Kernels& kernels, uint8_t* dst, const uint8_t* src, uint32_t width,
                          uint32_t height) {
  const RowKernel kernel = kernels.at(Source::cygm_3x3_luma, Sink::mono8_rec601);
  each_line(src, width, height, 1,
            [&](uint32_t x, uint32_t y, uint32_t n, const uint8_t* line, RowArgs& args) {
              kernel(dst + size_t{y} * width + x, line, nullptr, n, args);
            });
}

}  // namespace lum

using namespace lum;

uint32_t LumIRaw8CYGMImageTransform_3x3(uint8_t* dst, const uint8_t* src, uint32_t width,
                                        uint32_t height, uint32_t formatIndex, uint32_t reserved) {
  (void)reserved;
  if (const uint32_t error = check(dst, src, width, height)) return error;
  if (formatIndex > LUM_FORMAT_UYVY) return kNotImplemented;
  convert_cygm_3x3(kernels(), static_cast<Sink>(formatIndex), dst, src, width, height);
  return kSuccess;
}

uint32_t LumIRaw8CYGMImageTransform_Bin(uint8_t* dst, const uint8_t* src, uint32_t width,
                                        uint32_t height, uint32_t formatIndex, uint32_t reserved) {
  (void)reserved;
  if (const uint32_t error = check(dst, src, width, height)) return error;
  if (formatIndex > LUM_FORMAT_UYVY) return kNotImplemented;
  if (formatIndex == LUM_FORMAT_UYVY && width % 4 != 0) return bad_parameter(3);
  convert_cygm_binned(kernels(), static_cast<Sink>(formatIndex), dst, src, width, height);
  return kSuccess;
}

uint32_t LumIRaw8CYGMToY8(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height) {
  if (const uint32_t error = check(dst, src, width, height)) return error;
  convert_cygm_to_luma(kernels(), dst, src, width, height);
  return kSuccess;
}
